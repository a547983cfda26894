// Documents made from the generated schemas, whole and damaged: our engine's verdict by the generated schema
// is that of two other validators by the published one.
#include "schema_model/arbitro_xerces.h"
#include "support/published_schemas.h"
#include "xml/schema/schema_generator.h"
#include "xml/schema/schema_messages.h"
#include "xml/schema/schema_referee.h"
#include "xml/schema/schema_validator.h"
#include "xml/xml_parser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

namespace conferix {
namespace {

constexpr long kDocuments = 20400; ///< over all versions; CONFERIX_AMOSTRAS names another count
constexpr int kMutantsPerDocument = 9;

long DocumentsPerVersion(std::size_t versions) {
    const char* named = std::getenv("CONFERIX_AMOSTRAS");
    const long all = named != nullptr ? std::max(1L, std::strtol(named, nullptr, 10)) : kDocuments;
    return (all + static_cast<long>(versions) - 1) / static_cast<long>(versions);
}

std::vector<std::string> MainSchemas() {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(CONFERIX_ESQUEMAS_GERADOS))
        if (entry.path().extension() == ".xsd" &&
            !entry.path().filename().string().starts_with("tissAssinatura"))
            names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

/// The reasons against a document, empty when it is valid.
std::string OwnReason(const TSchemaSet& set, const std::string& text) {
    const TXmlParseResult parsed = TXmlParser::Parse(text);
    if (parsed.Document == nullptr)
        return "malformado";
    std::string reason;
    for (const TSchemaFault& fault : TSchemaValidator(set).Validate(*parsed.Document))
        reason += TSchemaMessages::Sentence(fault) + "\n";
    return reason;
}

/// Known errors of the referees, in which the other one alone is asked.
/// Xerces-C 3.2 keeps an xsi:nil that stands on an element that only a wildcard admits, and blames the
/// element after it.
bool XercesErrs(const std::string& done) {
    return done == "xsi:nil em <qualquer>";
}
/// libxml2 2.9 takes up its count anew in the second branch of a pattern like [A-Z0-9]{12}[0-9]{2}|[0-9]{11},
/// and so accepts values of 22 digits.
bool LibXmlErrs(const std::string& ours, const std::string& theirs) {
    return theirs.empty() && ours.find("}|[0-9]{11}.") != std::string::npos;
}

/// A referee with the published schema, or with the generated one where it cannot load that.
template<class TReferee>
std::unique_ptr<TReferee> MakeReferee(const std::filesystem::path& published,
                                      const std::filesystem::path& generated) {
    if (std::filesystem::exists(published)) {
        try {
            return std::make_unique<TReferee>(published.string());
        } catch (const std::runtime_error&) {
            std::cout << published.filename().string() << ": não carregado; vale o gerado\n";
        }
    }
    return std::make_unique<TReferee>(generated.string());
}

class Amostras : public testing::TestWithParam<std::string> {};

TEST_P(Amostras, TemOMesmoVeredictoDosOutrosValidadores) {
    const auto folder = PublishedSchemas();
    if (!folder)
        GTEST_SKIP() << "a pasta dos schemas publicados não existe nesta máquina";
    const std::string file = GetParam() + ".xsd";
    const auto generated = std::filesystem::path(CONFERIX_ESQUEMAS_GERADOS) / file;
    const auto set = TSchemaSet::Load(generated);
    const auto libxml = MakeReferee<TLibXmlReferee>(*folder / file, generated);
    const auto xerces = MakeReferee<TXercesReferee>(*folder / file, generated);
    long count = 0;
    long invalid = 0;
    int differences = 0;
    const auto judge = [&](const std::string& done, const std::string& text) {
        const std::string ours = OwnReason(*set, text);
        const std::string theirs = libxml->Reason(text);
        const std::string others = xerces->Reason(text);
        ++count;
        invalid += ours.empty() ? 0 : 1;
        const bool libxmlAgrees = ours.empty() == theirs.empty();
        const bool xercesAgrees = ours.empty() == others.empty();
        if ((libxmlAgrees || (xercesAgrees && LibXmlErrs(ours, theirs))) &&
            (xercesAgrees || (libxmlAgrees && XercesErrs(done))))
            return;
        ++differences;
        ADD_FAILURE() << done << "\nconferix: " << ours << "\nlibxml2: " << theirs << "\nXerces-C: " << others
                      << "\n"
                      << text.substr(0, 4000);
    };
    const long wanted = DocumentsPerVersion(MainSchemas().size());
    std::set<std::string> kinds;
    for (std::uint64_t seed = 1; count < wanted && differences < 3; ++seed) {
        TSchemaGenerator generator(*set, seed);
        const auto tree = generator.Document();
        judge("documento inteiro", generator.Serialize(*tree));
        for (const auto& side : tree->Children)
            if (!side->Children.empty())
                kinds.insert(side->Name + "/" + side->Children.front()->Name);
        for (int i = 0; i < kMutantsPerDocument && count < wanted; ++i) {
            const auto mutant = tree->Clone();
            const std::string done = generator.Mutate(*mutant);
            judge(done, generator.Serialize(*mutant));
        }
    }
    RecordProperty("documentos", static_cast<int>(count));
    RecordProperty("invalidos", static_cast<int>(invalid));
    RecordProperty("mensagens", static_cast<int>(kinds.size()));
    if (wanted >= 500) {
        EXPECT_GT(invalid, count / 2) << "o dano tem de ser dano";
    }
}

INSTANTIATE_TEST_SUITE_P(Versoes, Amostras, testing::ValuesIn(MainSchemas()),
                         [](const auto& instance) { return instance.param; });

} // namespace
} // namespace conferix
