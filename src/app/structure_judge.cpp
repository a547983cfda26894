#include "app/structure_judge.h"

#include "app/correction_policy.h"
#include "xml/xml_document.h"
#include "xml/xml_writer.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <unordered_set>

namespace conferix {

namespace {

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t end = std::min(text.find('\n', start), text.size());
        lines.push_back(text.substr(start, end - start));
        start = end + 1;
    }
    return lines;
}

/// What tells an error of the schema, or one that kept the schema from being asked.
std::string CauseOf(const TXmlMessage& message) {
    return message.Cause().empty() ? message.Reason() : message.Cause();
}

/// A finding as the end of a sentence.
std::string SentenceOf(const TXmlMessage& message) {
    std::string sentence = message.Msg();
    while (sentence.ends_with('.'))
        sentence.pop_back();
    return sentence;
}

/// Calls visit(node, message) for each finding of a text, with the node of the tree from which the text was
/// written: the tags of both are the same.
template<class Visit>
void VisitFindings(const TValidateArgs& checked, const TXmlDocument& tree, const Visit& visit) {
    const TFindingMap findings(*checked.ArquivoTiss->Xml(), checked.AllMessages);
    auto entry = findings.Entries().begin();
    TTagNumber number = 0;
    for (const TXmlNode* node = &tree.Root(); node != nullptr && entry != findings.Entries().end();
         node = node->NextInWalk(&tree.Root())) {
        if (!node->IsTag())
            continue;
        for (; entry != findings.Entries().end() && entry->Number == number; ++entry)
            visit(*node, *entry->Message);
        ++number;
    }
}

} // namespace

TStructureJudge::TStructureJudge(const TValidadorController& controller, TXmlPtr xml, TValidateArgs& checked,
                                 TAdmits admits, TErrorsAsked errors)
    : controller_(controller), xml_(std::move(xml)), admits_(std::move(admits)), checked_(checked),
      errors_(std::move(errors)) {
    Fresh();
    if (picked_.empty())
        return;
    MakeGroups();
    before_ = Count(checked_, *checked_.ArquivoTiss->Xml(), ScopesOf(picked_));
    for (const TPicked& picked : picked_)
        causesOf_.push_back(LinesOf(CauseOf(*picked.Message)));
}

const std::vector<TStructureJudge::TPicked>& TStructureJudge::Fresh() {
    if (used_)
        checked_ = controller_.ValidateStructure(xml_);
    else if (!picked_.empty())
        return picked_;
    used_ = false;
    picked_.clear();
    std::unordered_set<const TXmlNode*> targets; // two findings may demand the same value
    for (const auto& message : checked_.AllMessages)
        for (const auto& solver : message->Solvers())
            if (auto repair = std::dynamic_pointer_cast<TStructureSolver>(solver);
                repair != nullptr && admits_(*message, *repair)) {
                if (repair->Target() == nullptr || targets.insert(repair->Target()).second)
                    picked_.push_back({message, std::move(repair)});
                break;
            }
    return picked_;
}

void TStructureJudge::MakeGroups() {
    std::vector<std::size_t> heads(picked_.size()); // of each candidate's group, one that comes no later
    std::iota(heads.begin(), heads.end(), std::size_t{0});
    const auto headOf = [&](std::size_t candidate) {
        while (heads[candidate] != candidate)
            candidate = heads[candidate] = heads[heads[candidate]];
        return candidate;
    };
    std::unordered_map<const TXmlNode*, std::size_t> owners;
    for (std::size_t i = 0; i < picked_.size(); ++i)
        for (const TXmlNode* node : picked_[i].Solver->Scope()) {
            const std::size_t owner = headOf(owners.try_emplace(node, i).first->second);
            const std::size_t own = headOf(i);
            heads[std::max(owner, own)] = std::min(owner, own);
        }
    for (std::size_t i = 0; i < picked_.size(); ++i)
        groups_.push_back(headOf(i));
}

TStructureJudge::TScopes TStructureJudge::ScopesOf(const std::vector<TPicked>& picked) const {
    TScopes scopes;
    for (std::size_t i = 0; i < picked.size(); ++i)
        for (const TXmlNode* node : picked[i].Solver->Scope())
            scopes.emplace(node, groups_[i]);
    return scopes;
}

std::size_t TStructureJudge::GroupAround(const TXmlNode* node, const TScopes& scopes) {
    for (; node != nullptr; node = node->Parent())
        if (const auto found = scopes.find(node); found != scopes.end())
            return found->second;
    return kNoGroup;
}

TStructureJudge::TCauses TStructureJudge::Count(const TValidateArgs& checked, const TXmlDocument& tree,
                                                const TScopes& scopes) {
    TCauses causes;
    const auto add = [&](const TXmlMessage& message, std::size_t group) {
        for (std::string& cause : LinesOf(CauseOf(message))) {
            TFound& found = causes[std::move(cause)];
            ++found.Count;
            ++found.Groups[group];
            found.Last[group] = &message;
        }
    };
    if (checked.ArquivoTiss == nullptr) {
        for (const auto& message : checked.AllMessages)
            add(*message, kNoGroup);
        return causes;
    }
    VisitFindings(checked, tree, [&](const TXmlNode& node, const TXmlMessage& message) {
        add(message, GroupAround(&node, scopes));
    });
    return causes;
}

TStructureJudge::TErrors TStructureJudge::CountErrors(const TValidateArgs& found, const TXmlDocument& tree,
                                                      const TScopes& scopes) const {
    TErrors errors;
    if (found.ArquivoTiss != nullptr)
        VisitFindings(found, tree, [&](const TXmlNode& node, const TXmlMessage& message) {
            TErrorsOfGroup& ofGroup = errors[GroupAround(&node, scopes)];
            ofGroup.Number.first += errors_.WillStay(message) ? 1 : 0;
            ++ofGroup.Number.second;
            TSentence& sentence = ofGroup.Sentences[message.Reason()];
            ++sentence.Count;
            sentence.Last = &message;
        });
    return errors;
}

TStructureJudge::TErrorsOfGroup TStructureJudge::SumOf(const TErrors& errors) {
    TErrorsOfGroup sum;
    for (const auto& [group, ofGroup] : errors) {
        sum.Number.first += ofGroup.Number.first;
        sum.Number.second += ofGroup.Number.second;
        for (const auto& [text, sentence] : ofGroup.Sentences) {
            sum.Sentences[text].Count += sentence.Count;
            sum.Sentences[text].Last = sentence.Last;
        }
    }
    return sum;
}

TStructureJudge::TObjection TStructureJudge::MoreErrors(const TErrorsOfGroup& before,
                                                        const TErrorsOfGroup& after) {
    std::vector<const TXmlMessage*> fresh;
    for (const auto& [text, sentence] : after.Sentences) {
        const auto known = before.Sentences.find(text);
        if (known == before.Sentences.end() || known->second.Count < sentence.Count)
            fresh.push_back(sentence.Last);
    }
    std::ranges::sort(fresh, {}, [](const TXmlMessage* message) { return message->FilePos(); });
    TObjection objection{.Reason = "o arquivo ficaria com mais erros"};
    if (fresh.empty())
        return objection;
    objection.NewError = SentenceOf(*fresh.front());
    if (fresh.size() > 1)
        objection.NewError += fmt::format(" (e mais {})", fresh.size() - 1);
    objection.IsCorrectable = std::ranges::all_of(fresh, [](const TXmlMessage* message) {
        return std::ranges::any_of(message->Solvers(), [](const auto& solver) {
            return dynamic_cast<const TStructureSolver*>(solver.get()) == nullptr;
        });
    });
    return objection;
}

void TStructureJudge::CompareErrors(const TErrors& after, TVerdict& verdict) const {
    const auto numberOf = [](const TErrors& errors) {
        TErrorCount sum;
        for (const auto& [group, ofGroup] : errors) {
            sum.first += ofGroup.Number.first;
            sum.second += ofGroup.Number.second;
        }
        return sum;
    };
    if (numberOf(after) <= numberOf(*errorsBefore_))
        return;
    verdict.Right = false;
    verdict.Whole = MoreErrors(SumOf(*errorsBefore_), SumOf(after));
    for (const auto& [group, ofGroup] : after) {
        const auto known = errorsBefore_->find(group);
        const TErrorsOfGroup& before = known != errorsBefore_->end() ? known->second : TErrorsOfGroup();
        if (group != kNoGroup && ofGroup.Number > before.Number)
            verdict.Objections.emplace(group, MoreErrors(before, ofGroup));
    }
}

TStructureJudge::TVerdict TStructureJudge::Try(const std::vector<std::size_t>& chosen) {
    TVerdict verdict;
    const std::vector<TPicked>& picked = Fresh();
    const TScopes scopes = ScopesOf(picked);
    const TXmlDocument& tree = *checked_.ArquivoTiss->Xml();
    if (errors_.Find && !errorsBefore_)
        errorsBefore_ = CountErrors(errors_.Find(xml_), tree, scopes);
    verdict.Records = RecordsOf(chosen);
    used_ = true;
    for (const std::size_t i : chosen)
        picked[i].Solver->Solve();
    for (std::size_t i = 0; i < chosen.size(); ++i)
        if (const TXmlNode* target = picked[chosen[i]].Solver->Target())
            verdict.Records[i].After = target->Value();
    verdict.Xml = std::make_shared<const std::string>(WriteXml(tree));
    verdict.Checked = controller_.ValidateStructure(verdict.Xml);
    Compare(Count(verdict.Checked, tree, scopes), chosen, verdict);
    if (errors_.Find && verdict.Right) {
        const TValidateArgs found = errors_.Find(verdict.Xml);
        CompareErrors(CountErrors(found, tree, scopes), verdict);
    }
    return verdict;
}

std::vector<TCorrectionRecord> TStructureJudge::RecordsOf(const std::vector<std::size_t>& candidates) {
    const std::vector<TPicked>& picked = Fresh();
    std::vector<TCorrectionRecord> records;
    records.reserve(candidates.size());
    for (const std::size_t i : candidates)
        records.push_back(RecordOf(picked[i].Message, *picked[i].Solver));
    return records;
}

void TStructureJudge::Compare(const TCauses& after, const std::vector<std::size_t>& chosen,
                              TVerdict& verdict) const {
    TCauses corrected;
    for (const std::size_t i : chosen)
        for (const std::string& cause : causesOf_[i]) {
            TFound& found = corrected[cause];
            ++found.Count;
            ++found.Groups[groups_[i]];
        }
    const auto countIn = [](const TCauses& causes, const std::string& cause, std::size_t group) {
        const auto found = causes.find(cause);
        if (found == causes.end())
            return std::size_t{0};
        const auto inGroup = found->second.Groups.find(group);
        return inGroup != found->second.Groups.end() ? inGroup->second : 0;
    };
    verdict.Right = true;
    for (const auto& [cause, found] : after) {
        const auto known = before_.find(cause);
        const auto gone = corrected.find(cause);
        const std::size_t own = gone != corrected.end() ? gone->second.Count : 0;
        if (found.Count + own <= (known != before_.end() ? known->second.Count : 0))
            continue;
        const bool first = std::exchange(verdict.Right, false);
        for (const auto& [group, count] : found.Groups) {
            TObjection objection;
            const std::size_t mended = countIn(corrected, cause, group);
            if (mended > 0)
                objection.Reason = "o erro continuaria";
            else
                objection.NewError = SentenceOf(*found.Last.at(group));
            if (group != kNoGroup && count + mended > countIn(before_, cause, group))
                verdict.Objections.emplace(group, objection);
            if (first && mended == 0)
                verdict.Whole = std::move(objection);
        }
    }
}

} // namespace conferix
