// Documents made from every schema that comes with the program, whole and damaged, get libxml2's verdict.
#include "xml/schema/schema_generator.h"
#include "xml/schema/schema_referee.h"
#include "xml/schema/schema_support.h"

#include <gmock/gmock.h>

namespace conferix {
namespace {

constexpr int kDocuments = 12;
constexpr int kMutantsPerDocument = 16;

/// libxml2 2.9 takes up its count anew in the second branch of a pattern like [A-Z0-9]{12}[0-9]{2}|[0-9]{11},
/// and so accepts values of 22 digits.
bool RefereeErrs(const std::vector<std::string>& ours, const std::string& theirs) {
    return theirs.empty() && ours.size() == 1 &&
           ours.front().find("ou um CPF (11 algarismos)") != std::string::npos;
}

class TSchemaReferee : public testing::TestWithParam<std::filesystem::path> {};

TEST_P(TSchemaReferee, AgreesOnGeneratedDocumentsAndMutants) {
    const auto set = TSchemaSet::Load(GetParam());
    const TLibXmlReferee referee(GetParam().string());
    int invalid = 0;
    const auto judge = [&](const std::string& done, const std::string& text) {
        const std::vector<std::string> ours = Sentences(*set, text);
        const std::string theirs = referee.Reason(text);
        invalid += theirs.empty() ? 0 : 1;
        EXPECT_TRUE(ours.empty() == theirs.empty() || RefereeErrs(ours, theirs))
            << done << "\nours: " << testing::PrintToString(ours) << "\nreferee: " << theirs << "\n"
            << text.substr(0, 4000);
    };
    for (std::uint64_t seed = 1; seed <= kDocuments && !HasFailure(); ++seed) {
        TSchemaGenerator generator(*set, seed);
        const auto tree = generator.Document();
        const std::string whole = generator.Serialize(*tree);
        EXPECT_THAT(Sentences(*set, whole), testing::IsEmpty()) << whole;
        judge("sem dano", whole);
        for (int i = 0; i < kMutantsPerDocument; ++i) {
            const auto mutant = tree->Clone();
            const std::string done = generator.Mutate(*mutant);
            judge(done, generator.Serialize(*mutant));
        }
    }
    EXPECT_GT(invalid, kDocuments * kMutantsPerDocument / 2) << "the damage has to be damage";
}

INSTANTIATE_TEST_SUITE_P(Versions, TSchemaReferee, testing::ValuesIn(MainSchemas(CONFERIX_ESQUEMAS_GERADOS)),
                         [](const auto& instance) { return instance.param.stem().string(); });

} // namespace
} // namespace conferix
