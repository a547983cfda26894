#include "app/guide_numbers.h"

#include "xml/xml_node.h"

#include <algorithm>
#include <iterator>

namespace conferix {

std::vector<TFormGuide> TGuideNumbers::Choose(std::vector<TFormGuide> guides) {
    if (IsAll())
        return guides;
    std::set<std::string> numbers;
    for (const TFormGuide& guide : guides)
        numbers.insert(guide.Number);
    std::erase_if(guides, [&](const TFormGuide& guide) {
        if (wanted_.contains(guide.Number)) {
            found_.insert(guide.Number);
            return false;
        }
        const std::string other(ValueOf(guide.Node->FirstDescendant("numeroGuiaOperadora")));
        if (!wanted_.contains(other) || numbers.contains(other))
            return true;
        found_.insert(other);
        byOperator_.emplace(other, guide.Number);
        return false;
    });
    return guides;
}

std::vector<std::string> TGuideNumbers::Missing() const {
    std::vector<std::string> missing;
    std::ranges::set_difference(wanted_, found_, std::back_inserter(missing));
    return missing;
}

} // namespace conferix
