#include "app/execute_solver.h"

#include "app/application_log.h"
#include "validation/validation_message.h"

#include <algorithm>
#include <set>

namespace conferix {

namespace {

/// More rounds than there are rules whose corrections depend on one another.
constexpr int kMaxRounds = 1000;

using TSolverPtr = std::shared_ptr<ISolver>;

/// The one correction of a message, or the one that is chosen; null for none.
TSolverPtr PickSolver(const TXmlMessage& message, const TSolverChoice& choose) {
    const std::vector<TSolverPtr>& solvers = message.Solvers();
    if (solvers.size() <= 1)
        return solvers.empty() ? nullptr : solvers.front();
    const std::optional<std::size_t> choice = choose(solvers);
    return choice && *choice < solvers.size() ? solvers[*choice] : nullptr;
}

bool IsError(const TXmlMessage& message) {
    return message.MsgType() == TMessageType::mtError || message.MsgType() == TMessageType::mtFatal;
}

std::string RuleOf(const TXmlMessage& message) {
    const auto* finding = dynamic_cast<const TValidationMessage*>(&message);
    return finding != nullptr && finding->HasValidation() ? finding->Validation().Name : std::string();
}

/// Corrections of one rule that can be applied before the text is validated again.
struct TBatch {
    std::string Rule;
    bool SetValues = false; ///< each sets one value
    std::vector<TSolverPtr> Solvers;
};

/// The corrections of the errors, in their order. Values that one rule corrects do not depend on each other,
/// so that they are corrected together; those of another rule may, and wait for the next validation.
std::vector<TBatch> BatchesOf(const TXmlMessages& messages, const TSolverChoice& choose) {
    std::vector<TBatch> batches;
    for (const auto& message : messages) {
        TSolverPtr solver = IsError(*message) ? PickSolver(*message, choose) : nullptr;
        if (solver == nullptr)
            continue;
        TBatch batch{RuleOf(*message),
                     dynamic_cast<const TUpdateNodeValueSolver*>(solver.get()) != nullptr,
                     {std::move(solver)}};
        const auto same = std::find_if(batches.begin(), batches.end(), [&](const TBatch& other) {
            return other.SetValues && batch.SetValues && other.Rule == batch.Rule;
        });
        if (same == batches.end())
            batches.push_back(std::move(batch));
        else
            same->Solvers.push_back(std::move(batch.Solvers.front()));
    }
    return batches;
}

std::string Solve(const TBatch& batch) {
    for (std::size_t i = 0; i + 1 < batch.Solvers.size(); ++i)
        batch.Solvers[i]->Solve();
    return batch.Solvers.back()->SolvedXml();
}

using TXmlPtr = std::shared_ptr<const std::string>;

/// The last texts of a correction, by which rules are found out that contradict each other.
class TCorrectionTrail {
  public:
    /// True for a rule whose corrections only undo those of another, or of its own.
    bool IsGivenUp(const std::string& rule) const { return givenUp_.count(rule) != 0; }

    /// Takes the text that a rule made of `before`; answers the text to go on with. Where a text comes back,
    /// the rules since then are given up, and the least of the texts since then is kept: the same one
    /// whichever of them the correction had started with.
    TXmlPtr Next(const TXmlPtr& before, const std::string& rule, TXmlPtr after) {
        steps_.push_back({before, rule});
        if (steps_.size() > kKept)
            steps_.erase(steps_.begin());
        const auto back = std::find_if(steps_.begin(), steps_.end(),
                                       [&](const TStep& step) { return *step.Before == *after; });
        for (auto step = back; step != steps_.end(); ++step) {
            givenUp_.insert(step->Rule);
            if (*step->Before < *after)
                after = step->Before;
        }
        if (back != steps_.end())
            steps_.clear();
        return after;
    }

  private:
    static constexpr std::size_t kKept = 4;

    struct TStep {
        TXmlPtr Before;
        std::string Rule;
    };

    std::vector<TStep> steps_;
    std::set<std::string> givenUp_;
};

} // namespace

bool ExecuteSolver(TValidadorController& controller, const TXmlMessages& messages,
                   const std::string& messageId, const std::vector<std::string>& enabledValidations,
                   const TSolverHandlers& handlers) {
    const auto found = std::find_if(messages.begin(), messages.end(),
                                    [&](const auto& message) { return message->Id() == messageId; });
    if (found == messages.end() || !controller.FileStateFlags().Contains(TFileStateFlag::sfAberto))
        return false;
    // A copy: the message outlives the list, which a validation renews.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
    const std::shared_ptr<const TXmlMessage> message = *found;
    const TSolverPtr solver = PickSolver(*message, handlers.Choose);
    if (solver == nullptr)
        return false;
    const auto xml = std::make_shared<const std::string>(solver->SolvedXml());
    LogCorrections(controller.FileName(), RuleOf(*message), solver->Name(), 1);
    handlers.Corrected(*message, *solver, xml);
    controller.Modify();
    controller.Validate(xml, enabledValidations);
    return true;
}

TCorrectionResult CorrectAll(TValidadorController& controller, std::shared_ptr<const std::string> xml,
                             const std::vector<std::string>& enabledValidations,
                             const TSolverChoice& choose) {
    TCorrectionResult result{std::move(xml)};
    TCorrectionTrail trail;
    controller.Validate(result.Xml, enabledValidations);
    for (int round = 0; round < kMaxRounds; ++round) {
        const TXmlMessages messages = controller.Events().OnValidate.Current().ValidationMessages;
        TXmlPtr solved;
        for (const TBatch& batch : BatchesOf(messages, choose)) {
            if (trail.IsGivenUp(batch.Rule))
                continue;
            auto text = std::make_shared<const std::string>(Solve(batch));
            if (*text == *result.Xml)
                continue;
            solved = trail.Next(result.Xml, batch.Rule, std::move(text));
            result.Corrections += batch.Solvers.size();
            LogCorrections(controller.FileName(), batch.Rule, batch.Solvers.front()->Name(),
                           batch.Solvers.size());
            break;
        }
        if (solved == nullptr)
            break;
        result.Xml = std::move(solved);
        controller.Modify();
        controller.Validate(result.Xml, enabledValidations);
    }
    return result;
}

} // namespace conferix
