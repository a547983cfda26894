// Runs the cases of this folder: what is read of a document, told in lines.
#pragma once

#include "model/documents.h"
#include "support/case_file.h"

#include <string>
#include <string_view>
#include <utility>

namespace conferix::tests {

/// Puts the two texts of an input in the place of {1} and {2}. What begins like XML is left as it is, other
/// texts are in the notation of Xml().
inline std::string DocumentText(std::string_view around, const std::pair<std::string, std::string>& input) {
    std::string text;
    for (std::size_t at = 0; at < around.size(); ++at) {
        const bool first = around.substr(at, 3) == "{1}";
        if (first || around.substr(at, 3) == "{2}") {
            text += first ? input.first : input.second;
            at += 2;
        } else {
            text += around[at];
        }
    }
    return text.starts_with('<') ? text : Xml(text);
}

/// Compares what `describe` makes of the section and of each input of a case with the lines that are
/// expected.
template<class Describe>
void ExpectCases(const std::string& file, Describe describe) {
    for (const TCase& c : Cases("model/" + file)) {
        std::string expected;
        for (const std::string& line : c.Expected)
            expected += line + "\n";
        for (const auto& input : c.Inputs)
            EXPECT_EQ(describe(c.Section, input), expected) << c << "\nin " << input.first;
    }
}

/// The same for sections that are the document around an input; `describe` takes the document's text.
template<class Describe>
void ExpectDocuments(const std::string& file, Describe describe) {
    ExpectCases(file, [&](std::string_view section, const auto& input) {
        return describe(DocumentText(section.empty() ? "{1}" : section, input));
    });
}

} // namespace conferix::tests
