#include "app/structure_repair.h"

#include "app/structure_judge.h"
#include "validation/validation_message.h"

#include <algorithm>
#include <map>
#include <set>
#include <tuple>
#include <utility>

namespace conferix {

namespace {

using TXmlPtr = std::shared_ptr<const std::string>;
using TStage = TStructureSolver::TStage;
using TObjection = TStructureJudge::TObjection;

/// A correction may reveal what another one mends.
constexpr int kMaxPasses = 5;
/// Tries of one stage: enough for a few wrong corrections among any number of right ones.
constexpr int kMaxTries = 40;

/// Finds out which corrections of one stage can be applied together.
class TStageRepair {
  public:
    explicit TStageRepair(TStructureJudge& judge) : judge_(judge) {
        for (std::size_t i = 0; i < judge_.Count(); ++i) {
            auto& pending = groups_[judge_.GroupOf(i)].Pending;
            if (pending.empty())
                pending.emplace_back();
            pending.front().push_back(i);
        }
    }

    /// The last try in which all was right; null when there was none.
    std::unique_ptr<TStructureJudge::TVerdict> Run() {
        for (int tries = 0; tries < kMaxTries && HasPending(); ++tries)
            Advance();
        for (auto& [number, group] : groups_)
            for (const auto& chunk : group.Pending)
                for (const std::size_t i : chunk)
                    refused_[i].Reason = "não foi possível conferi-la separada das outras";
        if (best_ == nullptr || bestChosen_ != Chosen(false))
            if (const std::vector<std::size_t> accepted = Chosen(false); !accepted.empty())
                TryAccepted(accepted);
        return std::move(best_);
    }

    /// Why corrections were not applied.
    const std::map<std::size_t, TObjection>& Refused() const { return refused_; }

  private:
    using TChunk = std::vector<std::size_t>;
    struct TGroup {
        TChunk Accepted;
        std::vector<TChunk> Pending; ///< the last one is tried next
    };

    bool HasPending() const {
        return std::any_of(groups_.begin(), groups_.end(),
                           [](const auto& group) { return !group.second.Pending.empty(); });
    }

    TChunk Chosen(bool withPending) const {
        TChunk chosen;
        for (const auto& [number, group] : groups_) {
            chosen.insert(chosen.end(), group.Accepted.begin(), group.Accepted.end());
            if (withPending && !group.Pending.empty())
                chosen.insert(chosen.end(), group.Pending.back().begin(), group.Pending.back().end());
        }
        std::sort(chosen.begin(), chosen.end());
        return chosen;
    }

    void Advance() {
        const TChunk chosen = Chosen(true);
        TStructureJudge::TVerdict verdict = judge_.Try(chosen);
        // An error for which no group on trial is to blame speaks against all of them.
        const bool blamed = std::ranges::any_of(verdict.Objections, [this](const auto& objection) {
            return !groups_[objection.first].Pending.empty();
        });
        for (auto& [number, group] : groups_) {
            if (group.Pending.empty())
                continue;
            TChunk chunk = std::move(group.Pending.back());
            group.Pending.pop_back();
            const auto objection = verdict.Objections.find(number);
            if (verdict.Right || (blamed && objection == verdict.Objections.end())) {
                group.Accepted.insert(group.Accepted.end(), chunk.begin(), chunk.end());
            } else if (chunk.size() == 1) {
                refused_[chunk.front()] = blamed ? objection->second : verdict.Whole;
            } else {
                const auto middle = chunk.begin() + static_cast<std::ptrdiff_t>(chunk.size() / 2);
                group.Pending.emplace_back(middle, chunk.end());
                group.Pending.emplace_back(chunk.begin(), middle);
            }
        }
        if (verdict.Right)
            Keep(std::move(verdict), chosen);
    }

    void TryAccepted(const TChunk& accepted) {
        TStructureJudge::TVerdict verdict = judge_.Try(accepted);
        if (verdict.Right)
            return Keep(std::move(verdict), accepted);
        for (const std::size_t i : accepted)
            if (!std::binary_search(bestChosen_.begin(), bestChosen_.end(), i))
                refused_[i] = verdict.Whole;
    }

    void Keep(TStructureJudge::TVerdict verdict, TChunk chosen) {
        best_ = std::make_unique<TStructureJudge::TVerdict>(std::move(verdict));
        bestChosen_ = std::move(chosen);
    }

    TStructureJudge& judge_;
    std::map<std::size_t, TGroup> groups_;
    std::map<std::size_t, TObjection> refused_;
    std::unique_ptr<TStructureJudge::TVerdict> best_;
    TChunk bestChosen_;
};

class TStructureRun {
  public:
    TStructureRun(const TValidadorController& controller, TXmlPtr xml,
                  const std::vector<std::string>& enabledValidations, const TStructureRepair& what)
        : controller_(controller), enabledValidations_(enabledValidations), what_(what),
          checked_(controller.ValidateStructure(xml)) {
        result_.Xml = std::move(xml);
    }

    TCorrectionResult Run() {
        const std::shared_ptr<const TXmlMessage> otherVersion = OtherVersion();
        const TXmlPtr before = result_.Xml;
        Repair();
        // Of a file of another version, what has no name in common would stay: half of each version helps
        // nobody.
        if (otherVersion != nullptr && HasStructuralErrors()) {
            result_ = {before, {}, {}};
            TCorrectionRecord left;
            left.Message = otherVersion;
            left.Description = "Consertar a estrutura";
            left.Reason = "o conteúdo parece ser de outra versão, e só uma parte se consertaria; corrija a "
                          "versão no cabeçalho, ou converta o arquivo (conferix converter)";
            result_.LeftOut.push_back(std::move(left));
        }
        return std::move(result_);
    }

  private:
    using TRefusal = std::tuple<std::string, std::string, std::string>;

    /// What was said of a file whose content is of another version; null for none.
    std::shared_ptr<const TXmlMessage> OtherVersion() const {
        for (const auto& message : checked_.AllMessages)
            if (message->Kind() == TFindingKind::Layout && message->NumeroGuia().empty())
                return message;
        return nullptr;
    }

    bool HasStructuralErrors() const {
        return std::ranges::any_of(checked_.AllMessages, [](const auto& message) {
            const TFindingKind kind = message->Kind();
            return message->IsFailure() &&
                   (kind == TFindingKind::Structure || kind == TFindingKind::UnknownElement ||
                    kind == TFindingKind::Misplaced);
        });
    }

    void Repair() {
        bool changed = checked_.ArquivoTiss != nullptr;
        for (int pass = 0; pass < kMaxPasses && changed; ++pass) {
            changed = false;
            refused_.clear();
            result_.LeftOut.clear();
            for (const TStage stage : TStructureSolver::kStages)
                if (stage != TStage::Losses || what_.WithLoss)
                    while (RunStage(stage))
                        changed = true;
        }
    }

    /// What a value means when it can be read, rules find out; what other stages reveal was there before.
    TStructureJudge::TErrorsAsked ErrorsAskedOf(TStage stage) const {
        if (stage != TStage::Values)
            return {};
        return {[this](const TXmlPtr& xml) {
                    TValidateArgs found = controller_.FailuresOf(xml, enabledValidations_);
                    std::erase_if(found.AllMessages,
                                  [](const auto& message) { return RuleName(*message).ends_with(".hash"); });
                    return found;
                },
                [this](const TXmlMessage& message) {
                    return !what_.AmountsNext || std::ranges::all_of(message.Solvers(), [](const auto& of) {
                        return dynamic_cast<const TStructureSolver*>(of.get()) != nullptr;
                    });
                }};
    }

    static TRefusal RefusalOf(const TXmlMessage& message, const std::string& description) {
        return {message.Cause(), message.NumeroGuia(), description};
    }

    /// Applies what can be of a stage; true when something was.
    bool RunStage(TStage stage) {
        TStructureJudge judge(
            controller_, result_.Xml, checked_,
            [&](const TXmlMessage& message, const TStructureSolver& solver) {
                return solver.Stage() == stage &&
                       (refused_.empty() || refused_.count(RefusalOf(message, solver.Description())) == 0);
            },
            ErrorsAskedOf(stage));
        if (judge.Count() == 0)
            return false;
        TStageRepair repair(judge);
        auto best = repair.Run();
        if (!repair.Refused().empty())
            Refuse(judge, repair.Refused());
        const bool changed = best != nullptr && *best->Xml != *result_.Xml;
        if (changed) {
            result_.Xml = best->Xml;
            result_.Applied.insert(result_.Applied.end(), best->Records.begin(), best->Records.end());
            checked_ = std::move(best->Checked);
        } else {
            judge.Restore();
        }
        return changed;
    }

    void Refuse(TStructureJudge& judge, const std::map<std::size_t, TObjection>& refused) {
        std::vector<std::size_t> candidates;
        candidates.reserve(refused.size());
        for (const auto& [candidate, objection] : refused)
            candidates.push_back(candidate);
        std::vector<TCorrectionRecord> records = judge.RecordsOf(candidates);
        auto next = refused.begin();
        for (TCorrectionRecord& record : records) {
            const TObjection& objection = (next++)->second;
            record.Reason = objection.Reason;
            record.NewError = objection.NewError;
            if (objection.IsCorrectable && !what_.AmountsNext)
                record.Reason += ", que com --todas também se corrigem";
            refused_.insert(RefusalOf(*record.Message, record.Description));
            result_.LeftOut.push_back(std::move(record));
        }
    }

    const TValidadorController& controller_;
    const std::vector<std::string>& enabledValidations_;
    TStructureRepair what_;
    TValidateArgs checked_;
    TCorrectionResult result_;
    std::set<TRefusal> refused_;
};

} // namespace

TCorrectionResult RepairStructure(TValidadorController& controller, const TXmlPtr& xml,
                                  const std::vector<std::string>& enabledValidations,
                                  const TStructureRepair& what) {
    TCorrectionResult result = TStructureRun(controller, xml, enabledValidations, what).Run();
    if (!result.Applied.empty())
        controller.Modify();
    controller.Validate(result.Xml, enabledValidations);
    return result;
}

} // namespace conferix
