#include "report/rule_search.h"

#include "data/plain_text.h"

#include <algorithm>
#include <sstream>
#include <string>

namespace conferix {

namespace {

/// Whether each word begins one of a plain text.
bool HoldsAll(const std::string& text, const std::vector<std::string>& words) {
    const std::string padded = ' ' + text;
    return std::ranges::all_of(
        words, [&](const std::string& word) { return padded.find(' ' + word) != std::string::npos; });
}

std::vector<std::string> WordsOf(std::string_view search) {
    std::vector<std::string> words;
    std::istringstream stream(PlainText(search));
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

} // namespace

std::vector<const TRuleText*> SearchRuleTitles(const TRuleGuide& guide, std::string_view words) {
    const std::vector<std::string> sought = WordsOf(words);
    std::vector<const TRuleText*> found;
    for (const TRuleText& text : guide.Texts())
        if (!sought.empty() && HoldsAll(PlainText(text.Title), sought))
            found.push_back(&text);
    return found;
}

std::vector<const TRuleText*> SearchRuleTexts(const TRuleGuide& guide, std::string_view words) {
    const std::vector<std::string> sought = WordsOf(words);
    std::vector<const TRuleText*> found;
    std::vector<const TRuleText*> further;
    for (const TRuleText& text : guide.Texts()) {
        const std::string title = PlainText(text.Title);
        if (HoldsAll(title, sought)) {
            found.push_back(&text);
            continue;
        }
        std::string whole = title + ' ' + PlainText(text.Markdown());
        for (const std::string& rule : text.Rules)
            whole += ' ' + PlainText(rule);
        if (HoldsAll(whole, sought))
            further.push_back(&text);
    }
    found.insert(found.end(), further.begin(), further.end());
    return found;
}

} // namespace conferix
