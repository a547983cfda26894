#include "data/db_utils.h"

#include <set>

namespace conferix {

std::string TDBParam::ValueText() const {
    return Value.value_or("NULL");
}

void TDBUtils::MakeNamesUnique(std::vector<TDBParam>& params) {
    std::set<std::string> given;
    for (const TDBParam& param : params) {
        given.insert(param.Name);
    }
    std::set<std::string> seen;
    for (TDBParam& param : params) {
        std::string name = param.Name;
        for (int counter = 1; seen.count(name) > 0 || (counter > 1 && given.count(name) > 0); ++counter) {
            name = param.Name + "_" + std::to_string(counter);
        }
        seen.insert(name);
        param.Name = name;
    }
}

std::string TDBUtils::Describe(const std::vector<TDBParam>& params) {
    std::string text;
    for (const TDBParam& param : params) {
        text += (text.empty() ? "" : ", ") + param.Name + " = " + param.ValueText();
    }
    return text;
}

} // namespace conferix
