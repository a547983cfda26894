#include "xml/name_likeness.h"

#include <algorithm>
#include <vector>

namespace conferix {

namespace {

constexpr std::size_t kMaxComparedName = 64;

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

} // namespace

bool SameButForCase(std::string_view left, std::string_view right) {
    return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                      [](char a, char b) { return Lower(a) == Lower(b); });
}

std::size_t EditDistance(std::string_view left, std::string_view right, std::size_t limit) {
    if (std::max(left.size(), right.size()) - std::min(left.size(), right.size()) > limit)
        return limit + 1;
    std::vector<std::size_t> row(right.size() + 1);
    for (std::size_t j = 0; j < row.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= left.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const std::size_t changed = diagonal + (Lower(left[i - 1]) == Lower(right[j - 1]) ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, changed});
        }
    }
    return std::min(row.back(), limit + 1);
}

std::size_t NameSlips(std::string_view left, std::string_view right) {
    if (SameButForCase(left, right))
        return 0;
    const std::size_t shorter = std::min(left.size(), right.size());
    const std::size_t longer = std::max(left.size(), right.size());
    const std::size_t slips = shorter < 6 ? 1 : 2;
    if (shorter < 4 || longer > kMaxComparedName)
        return kNotAlike;
    const std::size_t distance = EditDistance(left, right, slips);
    return distance <= slips ? distance : kNotAlike;
}

TXmlNode* ChildMeant(TXmlNode& parent, std::string_view localName) {
    if (TXmlNode* child = parent.Child(localName))
        return child;
    TXmlNode* nearest = nullptr;
    std::size_t least = kNotAlike;
    for (TXmlNode& child : parent.ChildTags())
        if (const std::size_t slips = NameSlips(child.LocalName(), localName); slips < least) {
            least = slips;
            nearest = &child;
        }
    return nearest;
}

} // namespace conferix
