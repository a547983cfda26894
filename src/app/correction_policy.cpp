#include "app/correction_policy.h"

#include "platform/format_settings.h"
#include "validation/hash_rule.h"
#include "xml/cut_text.h"
#include "xml/lower_case.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <string_view>
#include <vector>

namespace conferix {

namespace {

/// Elements in which guides stand, in lower case.
constexpr std::array<std::string_view, 5> kContainersOfGuides = {"guiastiss", "guias", "guiafaturamento",
                                                                 "guiarevisaoglosa", "operadoraparaans"};
/// How the names of amounts, quantities and factors begin, in lower case, in all versions.
constexpr std::array<std::string_view, 4> kAmountNames = {"valor", "quantidade", "qtd", "reducao"};
/// Values that decide in which sum an item counts, or whether it is there twice.
constexpr std::array<std::string_view, 3> kItemNames = {"codigodespesa", "tipodespesa", "sequencialitem"};

bool DecidesWhatIsSummed(const TXmlNode& node) {
    return std::ranges::find(kItemNames, LowerCase(node.LocalName())) != kItemNames.end();
}

bool IsAmount(const TXmlNode& node) {
    const std::string lower = LowerCase(node.LocalName());
    return std::ranges::any_of(kAmountNames,
                               [&lower](std::string_view start) { return lower.starts_with(start); });
}

/// The child of `ancestor` that is a node or holds it; null for the ancestor itself and for nodes outside.
const TXmlNode* BranchOf(const TXmlNode& ancestor, const TXmlNode& node) {
    const TXmlNode* at = &node;
    if (at == &ancestor)
        return nullptr;
    while (at != nullptr && at->Parent() != &ancestor)
        at = at->Parent();
    return at;
}

/// Of what the total of an item is made of, what is no number: nobody knows whether the total is right. Null
/// for none, and for other amounts.
const TXmlNode* UnreadableFactor(const TXmlNode& amount) {
    if (amount.LocalName() != "valorTotal")
        return nullptr;
    for (const TXmlNode& sibling : amount.Parent()->ChildTags())
        if (IsAmount(sibling) && sibling.FirstChildTag() == nullptr && !ParseDecimal(sibling.Value()))
            return &sibling;
    return nullptr;
}

std::string At(const TXmlMessage& message) {
    return message.Line() > 0 ? fmt::format(" (linha {})", message.Line()) : std::string();
}

} // namespace

TFindingMap::TFindingMap(const TXmlDocument& document, const TXmlMessages& messages) {
    std::multimap<std::int32_t, std::shared_ptr<const TXmlMessage>> byPlace;
    for (const auto& message : messages)
        if (message->IsFailure() && message->Line() > 0)
            byPlace.emplace(message->FilePos(), message);
    TTagNumber number = 0;
    TEntry last{nullptr, 0, false, nullptr};
    auto next = byPlace.begin();
    const auto take = [&](bool atTag) {
        if (last.Node != nullptr) {
            entries_.push_back({last.Node, last.Number, atTag, next->second});
            if (atTag)
                byNode_.try_emplace(last.Node, next->second.get());
        }
        ++next;
    };
    const TXmlNode& root = document.Root();
    for (const TXmlNode* node = &root; node != nullptr && next != byPlace.end();
         node = node->NextInWalk(&root)) {
        if (!node->IsTag())
            continue;
        const std::int32_t filePos = document.PlaceOf(node->ByteStart()).FilePos;
        while (next != byPlace.end() && next->first < filePos)
            take(false); // stray text behind the last tag
        last = {node, number++, false, nullptr};
        while (next != byPlace.end() && next->first == filePos)
            take(true);
    }
    while (next != byPlace.end())
        take(false);
}

const TXmlMessage* TFindingMap::At(const TXmlNode& node) const {
    const auto found = byNode_.find(&node);
    return found != byNode_.end() ? found->second : nullptr;
}

const TXmlNode& GuiaOf(const TXmlNode& node) {
    const TXmlNode* top = &node;
    for (const TXmlNode* at = &node; at->Parent() != nullptr && at->Parent()->IsTag(); at = at->Parent()) {
        if (std::ranges::find(kContainersOfGuides, LowerCase(at->Parent()->LocalName())) !=
            kContainersOfGuides.end())
            return *at;
        top = at->Parent();
    }
    return *top;
}

std::string MisreadRefusal(const ISolver& solver, const TXmlMessages& messages) {
    const bool misread = dynamic_cast<const THashSolver*>(&solver) != nullptr &&
                         std::ranges::any_of(messages, [](const auto& message) {
                             return message->Kind() == TFindingKind::Misread;
                         });
    return misread ? "o texto do arquivo não se lê como foi escrito; corrija antes a codificação"
                   : std::string();
}

TCorrectionPolicy::TCorrectionPolicy(const TXmlDocument& document, const TXmlMessages& messages,
                                     const std::set<TTagNumber>& leftAlone)
    : findings_(document, messages), messages_(messages) {
    TTagNumber number = 0;
    const TXmlNode& root = document.Root();
    for (const TXmlNode* node = &root; node != nullptr && !leftAlone.empty(); node = node->NextInWalk(&root))
        if (node->IsTag() && leftAlone.count(number++) != 0)
            leftAlone_.insert(node);
    stray_ = findings_.Stray([this](const TXmlNode& node) { return HoldsAmounts(node); });
    std::vector<const TUpdateNodeValueSolver*> solvers;
    std::unordered_map<const TXmlNode*, std::string_view> demanded;
    for (const auto& message : messages)
        for (const auto& offered : message->Solvers())
            if (const auto* solver = dynamic_cast<const TUpdateNodeValueSolver*>(offered.get())) {
                solvers.push_back(solver);
                const auto [known, added] = demanded.try_emplace(solver->Target(), solver->NewValue());
                if (!added && known->second != solver->NewValue())
                    contested_.insert(solver->Target());
            }
    for (const TUpdateNodeValueSolver* solver : solvers)
        if (solver->Computation() && solver->Computation()->Scope != nullptr)
            if (std::string refusal = OwnRefusal(*solver); !refusal.empty())
                refusedScopes_.try_emplace(solver->Computation()->Scope, std::move(refusal));
}

std::string TCorrectionPolicy::Refusal(const ISolver& solver) const {
    const auto* update = dynamic_cast<const TUpdateNodeValueSolver*>(&solver);
    if (update == nullptr)
        return MisreadRefusal(solver, messages_);
    std::string own = OwnRefusal(*update);
    if (!own.empty() || !update->Computation())
        return own;
    const auto scope = refusedScopes_.find(update->Computation()->Scope);
    return scope != refusedScopes_.end() ? "os valores só mudam juntos, e em um deles " + scope->second
                                         : std::string();
}

std::string TCorrectionPolicy::OwnRefusal(const TUpdateNodeValueSolver& solver) const {
    if (contested_.count(solver.Target()) != 0)
        return "as regras pedem valores diferentes para o mesmo elemento";
    if (!solver.Computation())
        return {};
    for (const TXmlNode* operand : solver.Computation()->Operands)
        if (const TXmlMessage* finding = FindingOf(*operand))
            return fmt::format("<{}>, de que o valor depende, está errado{}", CutText(operand->LocalName()),
                               At(*finding));
    for (const TXmlNode* operand : solver.Computation()->Operands)
        if (const TXmlNode* factor = UnreadableFactor(*operand)) {
            const TXmlMessage* finding = findings_.At(*factor);
            return fmt::format("<{}>, de que o valor depende, não pode ser lido{}",
                               CutText(factor->LocalName()), finding != nullptr ? At(*finding) : "");
        }
    return solver.Computation()->Amount ? AmountRefusal(solver) : std::string();
}

std::string TCorrectionPolicy::AmountRefusal(const TUpdateNodeValueSolver& solver) const {
    const TXmlNode* scope = solver.Computation()->Scope;
    if (scope != nullptr) {
        if (const TXmlMessage* finding = StructureFinding(*scope))
            return "há erro no que se soma" + At(*finding);
        if (stray_ != nullptr)
            return "há itens fora do lugar" + At(*stray_);
    }
    const std::optional<double> before = ParseDecimal(solver.Target()->Value());
    const std::optional<double> after = ParseDecimal(solver.NewValue());
    if (!after || !std::isfinite(*after))
        return "o valor calculado não é um número";
    if (*after < 0)
        return fmt::format("o valor calculado, {}, é negativo", solver.NewValue());
    if (*after == 0 && before && *before > 0)
        return "o valor passaria a zero";
    if (leftAlone_.count(&GuiaOf(*solver.Target())) != 0)
        return "a guia ficaria com outro erro; corrija antes o que ela tem de errado";
    return {};
}

const TXmlMessage* TCorrectionPolicy::FindingOf(const TXmlNode& operand) const {
    // Of an element that is there twice, the second is reported and the first is read.
    for (const TXmlNode& sibling : operand.Parent()->ChildTags())
        if (sibling.LocalName() == operand.LocalName())
            if (const TXmlMessage* finding = findings_.At(sibling))
                return finding;
    return nullptr;
}

const TXmlMessage* TCorrectionPolicy::StructureFinding(const TXmlNode& scope) const {
    const auto [known, added] = structure_.try_emplace(&scope, nullptr);
    if (!added)
        return known->second;
    const auto begin =
        std::ranges::lower_bound(findings_.Entries(), scope.ByteStart(), {},
                                 [](const TFindingMap::TEntry& entry) { return entry.Node->ByteStart(); });
    for (auto entry = begin; entry != findings_.Entries().end() && entry->Node->ByteStart() < scope.ByteEnd();
         ++entry) {
        const TXmlNode* branch = BranchOf(scope, *entry->Node);
        if (branch == nullptr)
            continue;
        if (Touches(*entry, *branch)) {
            known->second = entry->Message.get();
            break;
        }
    }
    return known->second;
}

bool TCorrectionPolicy::Touches(const TFindingMap::TEntry& entry, const TXmlNode& branch) const {
    switch (entry.Message->Kind()) {
    case TFindingKind::Structure:
    case TFindingKind::Misplaced:
        return HoldsAmounts(branch);
    case TFindingKind::UnknownElement:
        return HoldsAmounts(*entry.Node);
    default:
        // An item as a whole: one that is there twice.
        return DecidesWhatIsSummed(*entry.Node) ||
               (entry.Node->FirstChildTag() != nullptr && HoldsAmounts(*entry.Node));
    }
}

bool TCorrectionPolicy::HoldsAmounts(const TXmlNode& node) const {
    const auto [known, added] = holdsAmounts_.try_emplace(&node, false);
    if (added)
        for (const TXmlNode* at = &node; at != nullptr && !known->second; at = at->NextInWalk(&node))
            known->second = at->IsTag() && (IsAmount(*at) || DecidesWhatIsSummed(*at));
    return known->second;
}

} // namespace conferix
