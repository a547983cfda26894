#include "rules/findings.h"
#include "support/case_file.h"
#include "support/support.h"

namespace conferix::tests {
namespace {

TEST(NamespaceRule, JudgesAndRepairsWhatTheCasesHold) {
    const auto judge = [](const std::string& xml) {
        return Mensagens("tiss.mensagem.namespace", *LoadTiss(xml), nullptr);
    };
    for (const TCase& c : Cases("validation/namespace.casos")) {
        const std::string& xml = c.Inputs.front().first;
        std::vector<std::string> found;
        std::shared_ptr<ISolver> solver;
        for (const auto& message : judge(xml)) {
            found.push_back(Descrito(*message));
            EXPECT_EQ(message->Line(), 0) << c;
            if (!message->Solvers().empty())
                solver = message->Solvers().front();
        }
        if (solver != nullptr) {
            const std::string solved = solver->SolvedXml();
            found.push_back(solved);
            EXPECT_EQ(solver->SolvedXml(), solved) << c << " twice";
            for (const auto& message : judge(solved))
                EXPECT_TRUE(!message->IsFailure() || solved == xml) << message->Reason() << c;
        }
        ExpectLines(c, found);
    }
}

} // namespace
} // namespace conferix::tests
