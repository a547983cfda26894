#include "schema_model/built_in_folders.h"
#include "support/command_test.h"

#include <random>
#include <set>

namespace conferix {
namespace {

class BadInput : public TCommandTest {
  protected:
    BadInput() {
        options_ = {"--terminologia", CONFERIX_TUSS_DB, "--esquemas", BuiltInSchemaFolder().string()};
    }

    /// Validates bytes from standard input and answers the report; every end but a report is a failure.
    nlohmann::json Judge(const std::string& bytes) const {
        const TCommandResult result = Run({"validar", "-", "--formato", "json"}, bytes);
        EXPECT_TRUE(result.Status == kExitValid || result.Status == kExitInvalid) << result.Err;
        nlohmann::json report = result.Json()[0];
        EXPECT_EQ(report["valido"].get<bool>(), result.Status == kExitValid);
        EXPECT_FALSE(report["mensagens"].empty());
        return report;
    }
};

std::vector<std::string> Seeds() {
    std::set<std::filesystem::path> files; // in the same order on all machines
    for (const auto& entry : std::filesystem::directory_iterator(Example("")))
        if (entry.path().extension() == ".xml")
            files.insert(entry.path());
    std::vector<std::string> seeds;
    for (const auto& file : files)
        seeds.push_back(ReadTestFile(file));
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

TEST_F(BadInput, MutatedFilesEndInMessages) {
    const std::vector<std::string> seeds = Seeds();
    ASSERT_FALSE(seeds.empty());
    std::mt19937 random(20261121);
    int refused = 0;
    for (int i = 0; i < 300; ++i) {
        std::string bytes = seeds[static_cast<std::size_t>(i) % seeds.size()];
        for (auto changes = 1 + random() % 3; changes > 0; --changes)
            bytes = Mutate(std::move(bytes), random);
        refused += Judge(bytes)["xmlValido"].get<bool>() ? 0 : 1;
        if (HasFailure()) {
            ADD_FAILURE() << "change " << i << ":\n" << bytes;
            return;
        }
    }
    // Both roads are walked: texts that do not parse, and documents that the rules judge.
    EXPECT_GT(refused, 20);
    EXPECT_LT(refused, 290);
}

TEST_F(BadInput, ExtremesEndInMessages) {
    constexpr int kDepth = 60'000; // beyond what calls could go down
    std::string deep;
    std::string closing;
    for (int i = 0; i < kDepth; ++i) {
        deep += "<a>";
        closing += "</a>";
    }
    const std::string monitoring =
        "<mensagemEnvioANS><cabecalho><identificacaoTransacao><tipoTransacao>MONITORAMENTO</tipoTransacao></"
        "identificacaoTransacao><versaoPadrao>1.06.00</versaoPadrao></cabecalho>";
    const std::string head = "<mensagemTISS><cabecalho><Padrao>4.01.00</Padrao></cabecalho>";
    const std::string cases[] = {
        "",
        "<?xml version='1.0' encoding='HZ'?><a/>",
        "<?xml version='1.0' encoding='" + std::string(100'000, 'U') + "'?><a/>",
        std::string(1, '\0'),
        std::string("<\0a\0/\0>\0", 8),
        "\xFE\xFF",
        deep,
        head + "<a b='" + std::string(3'000'000, 'x') + "'/></mensagemTISS>",
        head + "<epilogo><hash>" + std::string(3'000'000, 'f') + "</hash></epilogo></mensagemTISS>",
        "<!DOCTYPE a SYSTEM 'http://example.invalid/x.dtd'><a/>",
        "<!DOCTYPE a [<!ENTITY a '&b;&b;'><!ENTITY b '&a;'>]><a>&a;</a>",
        "<mensagemTISS/>",
        // A reference is no way around the rules.
        "<mensagemTISS><cabecalho><Padrao>4.01&#46;00</Padrao></cabecalho></mensagemTISS>",
        "<mensagemEnvioANS/>",
        "<x:mensagemTISS><x:cabecalho><x:Padrao>4.01.00</x:Padrao></x:cabecalho></x:mensagemTISS>",
    };
    for (const std::string& bytes : cases)
        EXPECT_FALSE(Judge(bytes)["valido"].get<bool>()) << bytes.substr(0, 80);
    // Of many findings the first are listed, with the first of some further causes, and all are counted.
    std::string unknown;
    for (int i = 0; i < 30'000; ++i)
        unknown += "<x" + std::to_string(i) + " xmlns:p" + std::to_string(i) + "='u'/>";
    const nlohmann::json many = Judge(monitoring + unknown + "</mensagemEnvioANS>");
    EXPECT_GE(many["erros"], 30'000);
    EXPECT_GE(many["naoListadas"], 19'000);
    EXPECT_EQ(many["mensagens"].size(), many["erros"].get<std::size_t>() + many["avisos"].get<std::size_t>() -
                                            many["naoListadas"].get<std::size_t>() + 1);
    // One that is known for what it is, so that all rules walk it.
    EXPECT_EQ(Judge(monitoring + deep + closing + "</mensagemEnvioANS>")["versao"], "1.06.00");
}

} // namespace
} // namespace conferix
