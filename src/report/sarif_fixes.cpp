#include "report/sarif_fixes.h"

#include "platform/utf8.h"
#include "validation/structure_solver.h"
#include "xml/xml_position.h"
#include "xml/xml_writer.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace conferix {

namespace {

// A correction of structure costs a validation by the schema.
constexpr std::size_t kMostSolved = 20; ///< of a file
constexpr std::size_t kMostBytes = std::size_t{1} << 20;

/// Where the text between the tags of an element stands; nothing for one that holds more than plain text.
std::optional<TJson> ContentRegion(const TXmlNode& element, std::string_view document) {
    const std::string_view source =
        document.substr(element.ByteStart(), element.ByteEnd() - element.ByteStart());
    char quote = 0;
    std::size_t begin = 0;
    for (; begin < source.size() && (quote != 0 || source[begin] != '>'); ++begin)
        if (quote == 0 && (source[begin] == '"' || source[begin] == '\''))
            quote = source[begin];
        else if (source[begin] == quote)
            quote = 0;
    const std::size_t end = source.find('<', ++begin);
    if (end == std::string_view::npos || source.substr(end, 2) != "</")
        return std::nullopt;
    TPositionCounter counter(source);
    const auto place = [&](std::size_t offset) {
        const TXmlPlace inside = counter.PlaceOf(offset);
        return std::pair(element.Line() + inside.Line - 1,
                         inside.Line == 1 ? element.LinePos() + inside.LinePos - 1 : inside.LinePos);
    };
    const auto [startLine, startColumn] = place(begin);
    const auto [endLine, endColumn] = place(end);
    return TJson{{"startLine", startLine},
                 {"startColumn", startColumn},
                 {"endLine", endLine},
                 {"endColumn", endColumn}};
}

TJson Replacement(const TJson& region, std::string_view text) {
    return {{"deletedRegion", region}, {"insertedContent", {{"text", text}}}};
}

/// The one part of a text in which another differs from it, and what stands there in the other.
TJson ChangedPart(std::string_view before, std::string_view after) {
    const std::size_t shorter = std::min(before.size(), after.size());
    std::size_t same = 0;
    while (same < shorter && before[same] == after[same])
        ++same;
    while (same > 0 && same < before.size() && !StartsCharacter(before[same]))
        --same;
    std::size_t end = 0; // bytes that are the same at the end
    while (end < shorter - same && before[before.size() - 1 - end] == after[after.size() - 1 - end])
        ++end;
    while (end > 0 && !StartsCharacter(before[before.size() - end]))
        --end;
    TPositionCounter counter(before);
    const TXmlPlace first = counter.PlaceOf(same);
    const TXmlPlace last = counter.PlaceOf(before.size() - end);
    return Replacement({{"startLine", first.Line},
                        {"startColumn", first.LinePos},
                        {"endLine", last.Line},
                        {"endColumn", last.LinePos}},
                       after.substr(same, after.size() - end - same));
}

} // namespace

TJson SarifMessage(std::string_view text) {
    std::string plain(text);
    std::erase(plain, '\r');
    return {{"text", plain}};
}

TJson TSarifFixes::Of(const TXmlMessage& message) {
    TJson fixes = TJson::array();
    for (std::size_t i = 0; i < message.Solvers().size(); ++i) {
        const ISolver& solver = *message.Solvers()[i];
        std::optional<TJson> replacement = ValueChange(solver);
        if (!replacement && dynamic_cast<const TStructureSolver*>(&solver) != nullptr)
            replacement = StructureChange(message, i);
        if (!replacement)
            continue;
        const TJson change = {{"artifactLocation", {{"uri", uri_}}},
                              {"replacements", TJson::array({*std::move(replacement)})}};
        fixes.push_back({{"description", SarifMessage(solver.Description())},
                         {"artifactChanges", TJson::array({change})}});
    }
    return fixes;
}

std::optional<TJson> TSarifFixes::ValueChange(const ISolver& solver) const {
    const TXmlNode* target = solver.Target();
    if (target == nullptr || target->ByteEnd() == 0)
        return std::nullopt;
    const std::optional<std::string> text = solver.Replacement();
    const std::optional<TJson> region = ContentRegion(*target, *file_.Text);
    if (!text || !region)
        return std::nullopt;
    return Replacement(*region, EscapeXml(*text, false));
}

std::optional<TJson> TSarifFixes::StructureChange(const TXmlMessage& message, std::size_t solver) {
    if (!file_.ValidateSchema || file_.Text->size() > kMostBytes || ++solved_ > kMostSolved)
        return std::nullopt;
    const TValidateArgs fresh = file_.ValidateSchema(); // solving changes its tree
    const auto same = std::ranges::find_if(fresh.AllMessages, [&](const auto& other) {
        return other->Line() == message.Line() && other->LinePos() == message.LinePos() &&
               other->Reason() == message.Reason() && other->Solvers().size() == message.Solvers().size();
    });
    if (same == fresh.AllMessages.end())
        return std::nullopt;
    const std::string solved = (*same)->Solvers()[solver]->SolvedXml();
    if (solved == *file_.Text)
        return std::nullopt;
    return ChangedPart(*file_.Text, solved);
}

} // namespace conferix
