#include "validation/structure_order.h"

#include "xml/schema/compiled_schema.h"
#include "xml/xml_node.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string_view>
#include <vector>

namespace conferix {

namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

/// The place of a name in the order of a content; kNone for a name that it does not know.
std::size_t RankOf(const TSchemaComplexType& content, std::string_view name) {
    const auto& positions = content.Automaton.Positions;
    const auto found = std::find_if(positions.begin(), positions.end(), [name](const TSchemaPosition& p) {
        return p.Element != nullptr && p.Element->Name == name;
    });
    return found != positions.end() ? static_cast<std::size_t>(found - positions.begin()) : kNone;
}

struct TSibling {
    TXmlNode* Node;
    std::size_t Rank;
};

/// The most siblings that stand in order already, the others left out.
std::vector<TSibling> InOrder(const std::vector<TSibling>& siblings) {
    std::vector<std::size_t> ends; // of the shortest-ranked run of each length, its last sibling
    std::vector<std::size_t> before(siblings.size(), kNone);
    for (std::size_t i = 0; i < siblings.size(); ++i) {
        const auto place =
            std::upper_bound(ends.begin(), ends.end(), siblings[i].Rank,
                             [&](std::size_t rank, std::size_t end) { return rank < siblings[end].Rank; });
        before[i] = place == ends.begin() ? kNone : *(place - 1);
        if (place == ends.end())
            ends.push_back(i);
        else
            *place = i;
    }
    std::vector<TSibling> kept;
    for (std::size_t at = ends.empty() ? kNone : ends.back(); at != kNone; at = before[at])
        kept.push_back(siblings[at]);
    std::reverse(kept.begin(), kept.end());
    return kept;
}

std::vector<TSibling> KnownChildren(const TSchemaComplexType& content, TXmlNode& parent,
                                    const TXmlNode* except) {
    std::vector<TSibling> known;
    for (TXmlNode& node : parent.ChildTags())
        if (const std::size_t rank = RankOf(content, node.LocalName()); &node != except && rank != kNone)
            known.push_back({&node, rank});
    return known;
}

/// Puts a child before a sibling, null: at the end.
void Move(TXmlNode& child, TXmlNode* before) {
    if (before == &child)
        return;
    TXmlNode& parent = *child.Parent();
    child.Remove();
    parent.InsertChild(child, before);
}

} // namespace

void PlaceChild(const TSchemaComplexType& content, TXmlNode& child) {
    TXmlNode& parent = *child.Parent();
    const std::size_t rank = RankOf(content, child.LocalName());
    const std::vector<TSibling> siblings = InOrder(KnownChildren(content, parent, &child));
    if (rank == kNone || siblings.empty())
        return;
    const auto next = std::find_if(siblings.begin(), siblings.end(),
                                   [rank](const TSibling& sibling) { return sibling.Rank > rank; });
    // It stands right where every sibling before it may come before it, and every one after it after it.
    bool passed = false;
    bool stands = true;
    auto inOrder = siblings.begin();
    for (const TXmlNode& node : parent.ChildTags()) {
        passed = passed || &node == &child;
        if (inOrder == siblings.end() || inOrder->Node != &node)
            continue;
        stands = stands && (passed ? inOrder->Rank >= rank : inOrder->Rank <= rank);
        ++inOrder;
    }
    if (!stands)
        Move(child, next != siblings.end() ? next->Node : siblings.back().Node->NextSibling());
}

void SortChildren(const TSchemaComplexType& content, TXmlNode& parent) {
    const std::vector<TSibling> all = KnownChildren(content, parent, nullptr);
    std::vector<TSibling> placed = InOrder(all);
    std::set<const TXmlNode*> stands;
    for (const TSibling& sibling : placed)
        stands.insert(sibling.Node);
    for (const TSibling& sibling : all) {
        if (stands.count(sibling.Node) != 0)
            continue;
        const auto next = std::find_if(placed.begin(), placed.end(),
                                       [&](const TSibling& other) { return other.Rank > sibling.Rank; });
        Move(*sibling.Node, next != placed.end() ? next->Node : placed.back().Node->NextSibling());
        placed.insert(next, sibling);
    }
}

} // namespace conferix
