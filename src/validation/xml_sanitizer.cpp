#include "validation/xml_sanitizer.h"

#include "xml/xml_parser.h"
#include "xml/xml_scanner.h"
#include "xml/xml_writer.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

namespace conferix {

namespace {

/// Likenesses that no decomposition gives, sorted by code point.
constexpr std::array<std::pair<char32_t, char>, 62> kLikeness = {{
    {0x00A1, '!'},  {0x00A2, 'c'},  {0x00A4, '$'}, {0x00A5, 'Y'},  {0x00A6, '|'},  {0x00A9, 'C'},
    {0x00AB, '<'},  {0x00AD, '-'},  {0x00AE, 'R'}, {0x00B4, '\''}, {0x00B7, '.'},  {0x00B8, ','},
    {0x00BB, '>'},  {0x00C6, 'A'},  {0x00D0, 'D'}, {0x00D7, 'x'},  {0x00D8, 'O'},  {0x00E6, 'a'},
    {0x00F0, 'd'},  {0x00F8, 'o'},  {0x0110, 'D'}, {0x0111, 'd'},  {0x0126, 'H'},  {0x0127, 'h'},
    {0x0131, 'i'},  {0x0141, 'L'},  {0x0142, 'l'}, {0x0152, 'O'},  {0x0153, 'o'},  {0x0166, 'T'},
    {0x0167, 't'},  {0x0180, 'b'},  {0x0192, 'f'}, {0x02B9, '\''}, {0x02BA, '"'},  {0x02BC, '\''},
    {0x02C6, '^'},  {0x02C8, '\''}, {0x02CB, '`'}, {0x02DC, '~'},  {0x2010, '-'},  {0x2011, '-'},
    {0x2012, '-'},  {0x2013, '-'},  {0x2014, '-'}, {0x2015, '-'},  {0x2018, '\''}, {0x2019, '\''},
    {0x201A, '\''}, {0x201B, '\''}, {0x201C, '"'}, {0x201D, '"'},  {0x201E, '"'},  {0x2022, '.'},
    {0x2026, '.'},  {0x2032, '\''}, {0x2033, '"'}, {0x2039, '<'},  {0x203A, '>'},  {0x2044, '/'},
    {0x2122, 'T'},  {0x2212, '-'},
}};

bool IsMark(UChar32 c) {
    return u_charType(c) == U_NON_SPACING_MARK;
}

/// The base character of a compatibility decomposition, when that is one ASCII character and marks.
char BaseCharacter(UChar32 c) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizer = icu::Normalizer2::getNFKDInstance(status);
    icu::UnicodeString decomposed;
    if (U_FAILURE(status) || normalizer->getDecomposition(c, decomposed) == 0)
        return 0;
    char base = 0;
    for (std::int32_t i = 0; i < decomposed.length(); i = decomposed.moveIndex32(i, 1)) {
        const UChar32 part = decomposed.char32At(i);
        if (IsMark(part))
            continue;
        if (part >= 0x80 || base != 0)
            return 0;
        base = static_cast<char>(part);
    }
    return base;
}

char Likeness(UChar32 c) {
    const auto code = static_cast<char32_t>(c);
    const auto* entry = std::lower_bound(kLikeness.begin(), kLikeness.end(), code,
                                         [](const auto& item, char32_t key) { return item.first < key; });
    if (entry != kLikeness.end() && entry->first == code)
        return entry->second;
    const char base = BaseCharacter(c);
    return base != 0 ? base : '?';
}

bool IsRemoved(char c) {
    const auto code = static_cast<unsigned char>(c);
    return code < 32 && c != '\n' && c != '\r';
}

} // namespace

std::string TXmlSanitizer::StripAccents(std::string_view value) {
    std::string out;
    out.reserve(value.size());
    const auto* data = reinterpret_cast<const std::uint8_t*>(value.data());
    const auto length = static_cast<std::int32_t>(value.size());
    bool afterLetter = false;
    for (std::int32_t at = 0; at < length;) {
        UChar32 c = 0;
        U8_NEXT_OR_FFFD(data, at, length, c);
        // The accent of a letter that is written as letter and accent goes with the letter.
        if (IsMark(c) && afterLetter)
            continue;
        const char plain = c < 0x80 ? static_cast<char>(c) : Likeness(c);
        afterLetter = (plain >= 'a' && plain <= 'z') || (plain >= 'A' && plain <= 'Z');
        out += plain;
    }
    return out;
}

namespace {

/// What cleaning does to a piece of a value, wherever the piece stands in it.
std::string SanitizePiece(std::string_view value) {
    std::string kept;
    kept.reserve(value.size());
    std::copy_if(value.begin(), value.end(), std::back_inserter(kept), [](char c) { return !IsRemoved(c); });
    std::string spaced;
    spaced.reserve(kept.size());
    for (std::size_t i = 0; i < kept.size(); ++i) {
        if (kept[i] == '\r' && i + 1 < kept.size() && kept[i + 1] == '\n')
            continue;
        spaced += kept[i] == '\r' || kept[i] == '\n' ? ' ' : kept[i];
    }
    return TXmlSanitizer::StripAccents(spaced);
}

void TrimStart(std::string& text) {
    text.erase(0, text.find_first_not_of(' '));
}

void TrimEnd(std::string& text) {
    text.erase(text.find_last_not_of(' ') + 1);
}

/// Cleans a value that comments, instructions or CDATA sections interrupt: piece by piece, so that each stays
/// where it stands, and trimmed where the value begins and ends.
void SanitizePieces(TXmlNode& tag) {
    std::vector<std::pair<TXmlNode*, std::string>> pieces;
    for (TXmlNode* child = tag.FirstChild(); child != nullptr; child = child->NextSibling())
        if (child->Kind() == TXmlNodeKind::xnText)
            pieces.emplace_back(child, SanitizePiece(child->Value()));
    for (auto piece = pieces.begin(); piece != pieces.end(); ++piece) {
        TrimStart(piece->second);
        if (!piece->second.empty())
            break;
    }
    for (auto piece = pieces.rbegin(); piece != pieces.rend(); ++piece) {
        TrimEnd(piece->second);
        if (!piece->second.empty())
            break;
    }
    for (const auto& [node, clean] : pieces)
        if (clean != node->Value())
            node->SetValue(clean);
}

} // namespace

std::string TXmlSanitizer::SanitizeNodeValue(std::string_view value) {
    std::string clean = SanitizePiece(value);
    TrimStart(clean);
    TrimEnd(clean);
    return clean;
}

void TXmlSanitizer::Sanitize(TXmlDocument& document) {
    TXmlMappingScanner::Scan(document.Root(), [](TXmlNode& node, bool&) {
        if (!node.IsTag() || !node.HasValue())
            return;
        if (node.FirstChild() != nullptr) {
            SanitizePieces(node);
            return;
        }
        const std::string clean = SanitizeNodeValue(node.Value());
        if (clean != node.Value())
            node.SetValue(clean);
    });
}

std::string TXmlSanitizer::SanitizeXml(const std::string& xml) {
    const TXmlParseResult parsed = TXmlParser::Parse(xml);
    if (parsed.Document == nullptr)
        return xml;
    Sanitize(*parsed.Document);
    return WriteXml(*parsed.Document);
}

} // namespace conferix
