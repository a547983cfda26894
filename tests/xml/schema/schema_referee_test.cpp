#include "xml/schema/schema_generator.h"
#include "xml/schema/schema_messages.h"
#include "xml/schema/schema_referee.h"
#include "xml/schema/schema_support.h"

#include <gtest/gtest.h>

#include <fstream>

namespace conferix {
namespace {

constexpr int kDocuments = 40;
constexpr int kMutantsPerDocument = 30;

/// The reasons against a document, empty when it is valid.
std::string OwnReason(const TSchemaSet& set, const std::string& text) {
    const auto document = ParseDocument(text);
    if (document == nullptr)
        return "not well-formed";
    std::string reason;
    for (const TSchemaFault& fault : TSchemaValidator(set).Validate(*document))
        reason += TSchemaMessages::Sentence(fault) + "\n";
    return reason;
}

void ReportDifference(const std::string& name, const std::string& done, const std::string& text,
                      const std::string& own, const std::string& other) {
    const auto path = std::filesystem::temp_directory_path() / ("conferix-divergencia-" + name + ".xml");
    std::ofstream(path, std::ios::binary) << text;
    ADD_FAILURE() << done << "\ndocument: " << path << "\nours: " << (own.empty() ? "valid" : own)
                  << "\nreferee: " << (other.empty() ? "valid" : other);
}

class TSchemaReferee : public testing::TestWithParam<const char*> {};

TEST_P(TSchemaReferee, AgreesOnGeneratedDocumentsAndMutants) {
    const auto folder = PublishedSchemas();
    if (!folder)
        GTEST_SKIP() << "the published schemas are not at hand (CONFERIX_ESQUEMAS_PUBLICADOS)";
    const auto path = *folder / (std::string(GetParam()) + ".xsd");
    const auto set = TSchemaSet::Load(path);
    const TLibXmlReferee referee(path.string());
    int invalid = 0;
    int mutants = 0;
    for (int seed = 1; seed <= kDocuments && !HasFailure(); ++seed) {
        TSchemaGenerator generator(*set, static_cast<std::uint64_t>(seed));
        const auto tree = generator.Document();
        const std::string valid = generator.Serialize(*tree);
        const std::string own = OwnReason(*set, valid);
        const std::string other = referee.Reason(valid);
        if (!own.empty() || !other.empty())
            ReportDifference(GetParam(), "sem dano", valid, own, other);
        for (int i = 0; i < kMutantsPerDocument; ++i, ++mutants) {
            const auto mutant = tree->Clone();
            const std::string done = generator.Mutate(*mutant);
            const std::string text = generator.Serialize(*mutant);
            const std::string ours = OwnReason(*set, text);
            const std::string theirs = referee.Reason(text);
            invalid += theirs.empty() ? 0 : 1;
            if (ours.empty() != theirs.empty())
                ReportDifference(GetParam(), done, text, ours, theirs);
        }
    }
    RecordProperty("mutants", mutants);
    RecordProperty("invalid", invalid);
    EXPECT_GT(invalid, mutants / 2) << "the damage has to be damage";
}

INSTANTIATE_TEST_SUITE_P(Versions, TSchemaReferee,
                         testing::Values("tissV2_02_03", "tissV3_05_00", "tissV4_03_00",
                                         "tissMonitoramentoV1_03_00"),
                         [](const auto& instance) { return std::string(instance.param); });

} // namespace
} // namespace conferix
