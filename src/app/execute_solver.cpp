#include "app/execute_solver.h"

#include "app/application_log.h"
#include "app/correction_policy.h"
#include "validation/structure_solver.h"
#include "validation/validation_message.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <unordered_map>
#include <utility>

namespace conferix {

namespace {

/// More rounds than there are rules whose corrections depend on one another.
constexpr int kMaxRounds = 1000;

using TSolverPtr = std::shared_ptr<ISolver>;

bool IsOfStructure(const TSolverPtr& solver) {
    return dynamic_cast<const TStructureSolver*>(solver.get()) != nullptr;
}

/// The one correction, or the one that is chosen; null for none.
TSolverPtr PickSolver(const std::vector<TSolverPtr>& solvers, const TSolverChoice& choose) {
    if (solvers.size() <= 1)
        return solvers.empty() ? nullptr : solvers.front();
    const std::optional<std::size_t> choice = choose(solvers);
    return choice && *choice < solvers.size() ? solvers[*choice] : nullptr;
}

/// A correction that was picked for a message.
struct TPicked {
    std::shared_ptr<const TXmlMessage> Message;
    TSolverPtr Solver;
};

/// Corrections of one rule that can be applied before the text is validated again.
struct TBatch {
    std::string Rule;
    bool SetValues = false; ///< each sets one value
    std::vector<TPicked> Corrections;
};

/// The corrections of the errors that the policy admits, in their order. Values that one rule corrects do not
/// depend on each other, so that they are corrected together; those of another rule may, and wait for the
/// next validation. `leftOut`: takes the others.
std::vector<TBatch> BatchesOf(const TXmlMessages& messages, const TSolverChoice& choose,
                              const TCorrectionFilter& admits, const TCorrectionPolicy& policy,
                              std::vector<TCorrectionRecord>& leftOut) {
    std::vector<TBatch> batches;
    for (const auto& message : messages) {
        if (!message->IsFailure())
            continue;
        std::vector<TSolverPtr> solvers = message->Solvers();
        std::erase_if(solvers, IsOfStructure);
        TPicked picked{message, PickSolver(solvers, choose)};
        if (picked.Solver == nullptr || (admits && !admits(*message, *picked.Solver)))
            continue;
        if (std::string refusal = policy.Refusal(*picked.Solver); !refusal.empty()) {
            leftOut.push_back(RecordOf(picked.Message, *picked.Solver));
            leftOut.back().Reason = std::move(refusal);
            continue;
        }
        TBatch batch{RuleName(*message),
                     dynamic_cast<const TUpdateNodeValueSolver*>(picked.Solver.get()) != nullptr,
                     {std::move(picked)}};
        const auto same = std::find_if(batches.begin(), batches.end(), [&](const TBatch& other) {
            return other.SetValues && batch.SetValues && other.Rule == batch.Rule;
        });
        if (same == batches.end())
            batches.push_back(std::move(batch));
        else if (std::none_of(same->Corrections.begin(), same->Corrections.end(), [&](const TPicked& other) {
                     return other.Solver->Target() == batch.Corrections.front().Solver->Target();
                 })) // two findings may demand the same value
            same->Corrections.push_back(std::move(batch.Corrections.front()));
    }
    return batches;
}

/// Applies a batch; answers the text and adds what was done to the records.
std::string Solve(const TBatch& batch, std::vector<TCorrectionRecord>& records) {
    const std::size_t first = records.size();
    for (const TPicked& picked : batch.Corrections) {
        records.push_back(RecordOf(picked.Message, *picked.Solver));
        if (&picked != &batch.Corrections.back())
            picked.Solver->Solve();
    }
    std::string text = batch.Corrections.back().Solver->SolvedXml();
    for (std::size_t i = 0; i < batch.Corrections.size(); ++i)
        if (const TXmlNode* target = batch.Corrections[i].Solver->Target())
            records[first + i].After = target->Value();
    return text;
}

using TXmlPtr = std::shared_ptr<const std::string>;

/// The last texts of a correction, by which rules are found out that contradict each other.
class TCorrectionTrail {
  public:
    /// A text, and the number of corrections that led to it.
    struct TState {
        TXmlPtr Xml;
        std::size_t Corrections = 0;
    };

    /// True for a rule whose corrections only undo those of another, or of its own.
    bool IsGivenUp(const std::string& rule) const { return givenUp_.count(rule) != 0; }

    /// Takes the state that a rule made of `before`; answers the one to go on with. Where a text comes back,
    /// the rules since then are given up, and what they did is taken back.
    TState Next(const TState& before, const std::string& rule, TState after) {
        steps_.push_back({before, rule});
        if (steps_.size() > kKept)
            steps_.erase(steps_.begin());
        const auto back = std::find_if(steps_.begin(), steps_.end(),
                                       [&](const TStep& step) { return *step.Before.Xml == *after.Xml; });
        if (back == steps_.end())
            return after;
        // What undoes itself stays as it was before the first of those rules.
        for (auto step = back; step != steps_.end(); ++step)
            givenUp_.insert(step->Rule);
        const auto first = std::find_if(steps_.begin(), steps_.end(),
                                        [&](const TStep& step) { return IsGivenUp(step.Rule); });
        after = first->Before;
        steps_.clear();
        return after;
    }

  private:
    static constexpr std::size_t kKept = 4;

    struct TStep {
        TState Before;
        std::string Rule;
    };

    std::vector<TStep> steps_;
    std::set<std::string> givenUp_;
};

/// What tells one error of a validation from another: its rule, its element and its sentence without the
/// amounts, since one rule may demand two things of an element.
using TErrorKey = std::tuple<std::string, TTagNumber, std::string>;
using TErrorCounts = std::map<TErrorKey, std::size_t>;

TErrorKey KeyOf(const TFindingMap::TEntry& entry) {
    std::string sentence = entry.Message->Reason();
    std::erase_if(sentence, [](char c) { return (c >= '0' && c <= '9') || c == '.' || c == '-'; });
    return {RuleName(*entry.Message), entry.Number, std::move(sentence)};
}

/// One run over a text, from its first validation to the last.
class TCorrectionPass {
  public:
    TCorrectionPass(TValidadorController& controller, const std::vector<std::string>& enabledValidations,
                    const TSolverChoice& choose, const TCorrectionFilter& admits,
                    const std::set<TTagNumber>& leftAlone)
        : controller_(controller), enabled_(enabledValidations), choose_(choose), admits_(admits),
          leftAlone_(leftAlone) {}

    TCorrectionResult Run(TXmlPtr xml) {
        TCorrectionTrail::TState state{std::move(xml), 0};
        Validate(state.Xml);
        before_ = CountErrors();
        for (int round = 0; round < kMaxRounds; ++round)
            if (!Advance(state))
                break;
        result_.Xml = state.Xml;
        return std::move(result_);
    }

    /// The guides in which a correction of amounts left an error that was not there before.
    std::set<TTagNumber> GuidesMadeWorse() const {
        std::set<TTagNumber> worse;
        if (File() == nullptr || touched_.empty())
            return worse;
        const TXmlDocument& document = *File()->Xml();
        std::unordered_map<const TXmlNode*, TTagNumber> guides;
        TTagNumber number = 0;
        const TXmlNode& root = document.Root();
        for (const TXmlNode* node = &root; node != nullptr; node = node->NextInWalk(&root))
            if (node->IsTag() && touched_.count(number++) != 0)
                guides.emplace(node, number - 1);
        TErrorCounts seen;
        const TFindingMap findings(document, Messages());
        for (const TFindingMap::TEntry& entry : findings.Entries()) {
            const TErrorKey key = KeyOf(entry);
            const auto known = before_.find(key);
            if (const auto guide = guides.find(&GuiaOf(*entry.Node));
                ++seen[key] > (known != before_.end() ? known->second : 0) && guide != guides.end())
                worse.insert(guide->second);
        }
        return worse;
    }

  private:
    const TXmlMessages& Messages() const {
        return controller_.Events().OnValidate.Current().ValidationMessages;
    }
    const std::shared_ptr<const IArquivoTiss>& File() const {
        return controller_.Events().OnValidate.Current().ArquivoTiss;
    }
    void Validate(const TXmlPtr& xml) { controller_.Validate(xml, enabled_); }

    TErrorCounts CountErrors() const {
        TErrorCounts counts;
        if (File() == nullptr)
            return counts;
        const TFindingMap findings(*File()->Xml(), Messages());
        for (const TFindingMap::TEntry& entry : findings.Entries())
            ++counts[KeyOf(entry)];
        return counts;
    }

    /// Applies the next batch that changes something; false when there is none.
    bool Advance(TCorrectionTrail::TState& state) {
        if (File() == nullptr)
            return false;
        const TXmlMessages messages = Messages();
        const std::shared_ptr<const IArquivoTiss> file = File();
        const TCorrectionPolicy policy(*file->Xml(), messages, leftAlone_);
        result_.LeftOut.clear();
        for (const TBatch& batch : BatchesOf(messages, choose_, admits_, policy, result_.LeftOut)) {
            if (trail_.IsGivenUp(batch.Rule)) {
                for (const TPicked& picked : batch.Corrections) {
                    result_.LeftOut.push_back(RecordOf(picked.Message, *picked.Solver));
                    result_.LeftOut.back().Reason =
                        "as regras pedem valores diferentes para o mesmo elemento";
                }
                continue;
            }
            RememberGuides(*file->Xml(), batch);
            std::vector<TCorrectionRecord> done = result_.Applied;
            auto text = std::make_shared<const std::string>(Solve(batch, done));
            if (*text == *state.Xml)
                continue;
            state = trail_.Next(state, batch.Rule, {std::move(text), done.size()});
            result_.Applied = std::move(done);
            result_.Applied.resize(std::min(result_.Applied.size(), state.Corrections));
            controller_.Modify();
            Validate(state.Xml);
            return true;
        }
        return false;
    }

    /// Keeps the numbers of the guides of which amounts are corrected.
    void RememberGuides(const TXmlDocument& document, const TBatch& batch) {
        std::set<const TXmlNode*> guides;
        for (const TPicked& picked : batch.Corrections)
            if (const auto* update = dynamic_cast<const TUpdateNodeValueSolver*>(picked.Solver.get());
                update != nullptr && update->Computation())
                guides.insert(&GuiaOf(*update->Target()));
        TTagNumber number = 0;
        const TXmlNode& root = document.Root();
        for (const TXmlNode* node = &root; node != nullptr && !guides.empty();
             node = node->NextInWalk(&root)) {
            if (!node->IsTag())
                continue;
            if (guides.erase(node) != 0)
                touched_.insert(number);
            ++number;
        }
    }

    TValidadorController& controller_;
    const std::vector<std::string>& enabled_;
    const TSolverChoice& choose_;
    const TCorrectionFilter& admits_;
    const std::set<TTagNumber>& leftAlone_;
    TCorrectionTrail trail_;
    TCorrectionResult result_;
    TErrorCounts before_;
    std::set<TTagNumber> touched_;
};

/// Has every finding listed as long as it lives: what is left to correct and what a value rests on is known
/// only from all of them.
class TUnlimitedFindings {
  public:
    explicit TUnlimitedFindings(TValidadorController& controller)
        : controller_(controller), before_(controller.FindingLimits()) {
        controller_.SetFindingLimits(TFindingLimits::None());
    }
    TUnlimitedFindings(const TUnlimitedFindings&) = delete;
    TUnlimitedFindings& operator=(const TUnlimitedFindings&) = delete;
    ~TUnlimitedFindings() { controller_.SetFindingLimits(before_); }

  private:
    TValidadorController& controller_;
    TFindingLimits before_;
};

/// Corrects the encoding of a file whose bytes are no text in the one that it declares.
TCorrectionResult MendEncoding(TValidadorController& controller, const TXmlPtr& xml,
                               const std::vector<std::string>& enabledValidations,
                               const TSolverChoice& choose, const TCorrectionFilter& admits) {
    TCorrectionResult result{xml, {}, {}};
    if (controller.Encoding().Fault == nullptr)
        return result;
    controller.Validate(xml, enabledValidations);
    const TValidateArgs& found = controller.Events().OnValidate.Current();
    if (found.ArquivoTiss == nullptr)
        return result;
    for (const auto& message : found.ValidationMessages) {
        const TSolverPtr solver = message->IsFailure() ? PickSolver(message->Solvers(), choose) : nullptr;
        if (solver == nullptr || solver->Encoding() == nullptr || (admits && !admits(*message, *solver)))
            continue;
        result.Xml = std::make_shared<const std::string>(solver->SolvedXml());
        result.Applied.push_back(RecordOf(message, *solver));
        controller.SetEncoding(*solver->Encoding());
        controller.Modify();
        break;
    }
    return result;
}

} // namespace

TCorrectionRecord RecordOf(std::shared_ptr<const TXmlMessage> message, const ISolver& solver) {
    const TXmlNode* target = solver.Target();
    return {std::move(message),
            solver.Name(),
            solver.Description(),
            target != nullptr ? std::string(target->LocalName()) : std::string(),
            target != nullptr ? std::string(target->Value()) : std::string(),
            {},
            {}};
}

void LogCorrections(const std::string& fileName, const std::vector<TCorrectionRecord>& records) {
    std::map<std::pair<std::string, std::string>, std::size_t> counts;
    for (const TCorrectionRecord& record : records)
        ++counts[{RuleName(*record.Message), record.Solver}];
    for (const auto& [key, count] : counts)
        LogCorrections(fileName, key.first, key.second, count);
}

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
    const TSolverPtr solver = PickSolver(message->Solvers(), handlers.Choose);
    if (solver == nullptr)
        return false;
    TCorrectionRecord record = RecordOf(message, *solver);
    const auto xml = std::make_shared<const std::string>(solver->SolvedXml());
    if (solver->Encoding() != nullptr)
        controller.SetEncoding(*solver->Encoding());
    if (const TXmlNode* target = solver->Target())
        record.After = target->Value();
    LogCorrections(controller.FileName(), {record});
    handlers.Corrected(record, xml);
    controller.Modify();
    if (handlers.Validate)
        handlers.Validate(xml);
    else
        controller.Validate(xml, enabledValidations);
    return true;
}

TCorrectionResult CorrectAll(TValidadorController& controller, const std::shared_ptr<const std::string>& xml,
                             const std::vector<std::string>& enabledValidations, const TSolverChoice& choose,
                             const TCorrectionFilter& admits) {
    const TUnlimitedFindings unlimited(controller);
    std::set<TTagNumber> leftAlone;
    const TCorrectionResult mended = MendEncoding(controller, xml, enabledValidations, choose, admits);
    for (;;) {
        TCorrectionPass pass(controller, enabledValidations, choose, admits, leftAlone);
        TCorrectionResult result = pass.Run(mended.Xml);
        result.Applied.insert(result.Applied.begin(), mended.Applied.begin(), mended.Applied.end());
        const std::size_t known = leftAlone.size();
        leftAlone.merge(pass.GuidesMadeWorse());
        if (leftAlone.size() == known) {
            LogCorrections(controller.FileName(), result.Applied);
            return result;
        }
    }
}

} // namespace conferix
