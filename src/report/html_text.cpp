#include "report/html_text.h"

#include "report/console.h"

#include <fmt/format.h>

#include <algorithm>

namespace conferix {

namespace {

std::string Escaped(std::string_view text) {
    std::string html;
    html.reserve(text.size());
    for (const char c : text) {
        switch (c) {
        case '&':
            html += "&amp;";
            break;
        case '<':
            html += "&lt;";
            break;
        case '>':
            html += "&gt;";
            break;
        case '"':
            html += "&quot;";
            break;
        default:
            html += c;
        }
    }
    return html;
}

/// A text of our own in which marks set off names and values.
std::string Marked(std::string_view text) {
    std::string html;
    for (bool code = false;; code = !code) {
        const std::size_t end = text.find('`');
        const std::string piece = Escaped(text.substr(0, end));
        html += code ? "<code>" + piece + "</code>" : piece;
        if (end == std::string_view::npos)
            return html;
        text.remove_prefix(end + 1);
    }
}

/// A part of a line of a file; tabs of any width would tear the excerpt apart.
std::string PartOfLine(std::string_view text) {
    std::string blanks;
    for (const char c : text)
        blanks += c == '\t' ? std::string("  ") : std::string(1, c);
    return HtmlText(blanks);
}

std::size_t Indent(const TExcerptLine& line) {
    const std::size_t first = line.Before.find_first_not_of(" \t");
    return std::min(first, line.Before.size());
}

} // namespace

std::string HtmlText(std::string_view text) {
    return Escaped(Visible(text));
}

std::string HtmlLines(std::string_view text) {
    std::string html;
    for (;;) {
        const std::size_t end = text.find("\r\n");
        html += HtmlText(text.substr(0, end));
        if (end == std::string_view::npos)
            return html;
        html += "<br>";
        text.remove_prefix(end + 2);
    }
}

std::string HtmlBlocks(const std::vector<TGuideBlock>& blocks) {
    std::string html;
    bool inList = false;
    for (const TGuideBlock& block : blocks) {
        const bool item = block.Kind == TGuideBlock::TKind::Item;
        if (item != inList)
            html += item ? "<ul>\n" : "</ul>\n";
        inList = item;
        switch (block.Kind) {
        case TGuideBlock::TKind::Paragraph:
            html += "<p>" + Marked(block.Text) + "</p>\n";
            break;
        case TGuideBlock::TKind::Item:
            html += "<li>" + Marked(block.Text) + "</li>\n";
            break;
        case TGuideBlock::TKind::Code:
            html += "<pre>" + Escaped(block.Text) + "</pre>\n";
            break;
        case TGuideBlock::TKind::Quote:
            html += "<blockquote><p>" + HtmlLines(block.Text) + "</p></blockquote>\n";
            break;
        }
    }
    return inList ? html + "</ul>\n" : html;
}

std::string HtmlExcerpt(const std::vector<TExcerptLine>& lines) {
    if (lines.empty())
        return {};
    std::size_t indent = std::string_view::npos;
    for (const TExcerptLine& line : lines)
        if (line.CutBefore)
            indent = 0;
        else if (!line.Marked.empty() || Indent(line) != line.Before.size()) // no blank line
            indent = std::min(indent, Indent(line));
    std::string html = "<pre class=\"trecho\">";
    for (const TExcerptLine& line : lines) {
        const bool found = !line.Marked.empty();
        html += fmt::format("<span class=\"linha{}\"><span class=\"numero\">{}{}</span><span "
                            "class=\"codigo\">{}{}",
                            found ? " aqui" : "", found ? "▶ " : "", line.Number, line.CutBefore ? "… " : "",
                            PartOfLine(line.Before.substr(std::min(indent, line.Before.size()))));
        if (found)
            html += "<mark>" + PartOfLine(line.Marked) + "</mark>" + PartOfLine(line.After);
        html += line.CutAfter ? " …</span></span>" : "</span></span>";
    }
    return html + "</pre>\n";
}

} // namespace conferix
