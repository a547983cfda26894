#include "app/cli/cli.h"
#include "support/suporte.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <random>
#include <sstream>

namespace conferix {
namespace {

/// Validates bytes from standard input and answers the report; every end but a report is a failure.
nlohmann::json Validate(const std::string& bytes) {
    std::istringstream in(bytes);
    std::ostringstream out;
    std::ostringstream err;
    std::vector<std::string> words = {"validar",       "-", "--formato", "json", "--terminologia",
                                      CONFERIX_TUSS_DB};
    if (const auto schemas = PublishedSchemas())
        words.insert(words.end(), {"--esquemas", schemas->string()});
    const int status = RunCli(words, {in, out, err});
    EXPECT_TRUE(status == kExitValid || status == kExitInvalid) << status << err.str();
    const nlohmann::json report = nlohmann::json::parse(out.str());
    EXPECT_EQ(report[0]["valido"].get<bool>(), status == kExitValid);
    EXPECT_FALSE(report[0]["mensagens"].empty());
    return report[0];
}

std::vector<std::string> Seeds() {
    std::vector<std::string> seeds;
    for (const auto& entry : std::filesystem::directory_iterator(Example("")))
        if (entry.path().extension() == ".xml")
            seeds.push_back(ReadTestFile(entry.path()));
    return seeds;
}

/// One seeded change of bytes: flip, cut, repeat, delete, or a piece of markup put anywhere.
std::string Mutate(std::string bytes, std::mt19937& random) {
    static const std::string kPieces[] = {"<",
                                          ">",
                                          "&",
                                          "]]>",
                                          "<!--",
                                          "<![CDATA[",
                                          "</a>",
                                          "<a>",
                                          "\"",
                                          std::string(1, '\0'),
                                          "\xFF",
                                          "\xC3",
                                          "&#0;",
                                          "<?xml?>",
                                          "<!DOCTYPE a [<!ENTITY b 'c'>]>",
                                          "xmlns=''",
                                          "ans:",
                                          "\r",
                                          "99999999999999999999"};
    const auto place = [&] { return bytes.empty() ? 0 : random() % bytes.size(); };
    switch (random() % 6) {
    case 0:
        if (!bytes.empty())
            bytes[place()] = static_cast<char>(random() % 256);
        break;
    case 1:
        bytes.resize(place());
        break;
    case 2: {
        const std::size_t start = place();
        bytes.insert(place(), bytes.substr(start, random() % 400));
        break;
    }
    case 3:
        bytes.erase(place(), random() % 60);
        break;
    default:
        bytes.insert(place(), kPieces[random() % std::size(kPieces)]);
    }
    return bytes;
}

TEST(BadInput, MutatedFilesEndInMessages) {
    const std::vector<std::string> seeds = Seeds();
    ASSERT_FALSE(seeds.empty());
    std::mt19937 random(20261121);
    int refused = 0;
    for (int i = 0; i < 400; ++i) {
        std::string bytes = seeds[static_cast<std::size_t>(i) % seeds.size()];
        for (auto changes = 1 + random() % 3; changes > 0; --changes)
            bytes = Mutate(std::move(bytes), random);
        refused += Validate(bytes)["xmlValido"].get<bool>() ? 0 : 1;
        if (HasFailure()) {
            ADD_FAILURE() << "change " << i << ":\n" << bytes;
            return;
        }
    }
    // Both roads are walked: texts that do not parse, and documents that the rules judge.
    EXPECT_GT(refused, 20);
    EXPECT_LT(refused, 380);
}

TEST(BadInput, ExtremesEndInMessages) {
    std::string deep;
    for (int i = 0; i < 300000; ++i)
        deep += "<a>";
    const std::string head = "<mensagemTISS><cabecalho><Padrao>4.01.00</Padrao></cabecalho>";
    std::string deepLot = head + deep;
    for (int i = 0; i < 300000; ++i)
        deepLot += "</a>";
    const std::string cases[] = {
        "",
        std::string(1, '\0'),
        std::string("<\0a\0/\0>\0", 8),
        "\xFE\xFF",
        deep,
        deepLot + "</mensagemTISS>",
        head + "<a b='" + std::string(30000000, 'x') + "'/></mensagemTISS>",
        head + "<epilogo><hash>" + std::string(30000000, 'f') + "</hash></epilogo></mensagemTISS>",
        "<!DOCTYPE a SYSTEM 'http://example.invalid/x.dtd'><a/>",
        "<!DOCTYPE a [<!ENTITY a '&b;&b;'><!ENTITY b '&a;'>]><a>&a;</a>",
        "<mensagemTISS/>",
        "<mensagemEnvioANS/>",
        "<x:mensagemTISS><x:cabecalho><x:Padrao>4.01.00</x:Padrao></x:cabecalho></x:mensagemTISS>",
    };
    for (const std::string& bytes : cases)
        EXPECT_FALSE(Validate(bytes)["valido"].get<bool>()) << bytes.substr(0, 80);
}

TEST(BadInput, ANumericReferenceIsNoWayAroundTheRules) {
    EXPECT_FALSE(
        Validate("<mensagemTISS><cabecalho><Padrao>4.01&#46;00</Padrao></cabecalho></mensagemTISS>")["valido"]
            .get<bool>());
}

} // namespace
} // namespace conferix
