#include "xml/xml_encoding.h"

#include "platform/utf8.h"
#include "xml/cut_text.h"
#include "xml/xml_node.h"
#include "xml/xml_position.h"

#include <fmt/format.h>
#include <unicode/ucnv.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>

namespace conferix {

namespace {

constexpr std::string_view kUtf8Bom = "\xEF\xBB\xBF";
constexpr const char* kAnsi = "windows-1252";

struct TBom {
    std::string_view Bytes;
    const char* Encoding;
};
constexpr std::array<TBom, 5> kBoms = {{{kUtf8Bom, "UTF-8"},
                                        {{"\xFF\xFE\x00\x00", 4}, "UTF-32LE"},
                                        {{"\x00\x00\xFE\xFF", 4}, "UTF-32BE"},
                                        {"\xFF\xFE", "UTF-16LE"},
                                        {"\xFE\xFF", "UTF-16BE"}}};

class TConverter {
  public:
    explicit TConverter(const std::string& name) {
        UErrorCode status = U_ZERO_ERROR;
        converter_ = ucnv_open(name.c_str(), &status);
        if (U_FAILURE(status))
            converter_ = nullptr;
    }
    ~TConverter() {
        if (converter_ != nullptr)
            ucnv_close(converter_);
    }
    TConverter(const TConverter&) = delete;
    TConverter& operator=(const TConverter&) = delete;
    bool Open() const { return converter_ != nullptr; }
    UConverter* Get() const { return converter_; }

  private:
    UConverter* converter_ = nullptr;
};

bool IsAscii(std::string_view text) {
    return FindNonAscii(text) == text.size();
}

std::string Upper(std::string_view text) {
    std::string upper(text);
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return upper;
}

/// The converter's name for a declared encoding: letters of ISO-8859-1 and US-ASCII files are Windows-1252's.
std::string ConverterName(std::string_view declared) {
    std::string upper = Upper(declared);
    if (upper.empty() || upper == "UTF-8" || upper == "UTF8")
        return "UTF-8";
    if (upper == "ISO-8859-1" || upper == "ISO8859-1" || upper == "ISO_8859-1" || upper == "LATIN1" ||
        upper == "WINDOWS-1252" || upper == "CP1252" || upper == "US-ASCII" || upper == "ASCII")
        return kAnsi;
    return upper;
}

[[noreturn]] void RaiseAt(std::string_view textBefore, const std::string& reason) {
    const TXmlPlace place = TPositionCounter(textBefore).PlaceOf(textBefore.size());
    throw EXmlEncoding(TXmlMessage::CreateError(reason, {}, place.Line, place.LinePos, place.FilePos));
}

/// Why a text is taken for UTF-8, as the beginning of a sentence, and what to do when it is not.
struct TUtf8Reason {
    std::string_view Text;
    std::string_view Remedy;
};
constexpr TUtf8Reason kDeclaredUtf8 = {
    "O arquivo declara a codificação UTF-8, mas",
    "Salve o arquivo novamente em UTF-8, ou declare a codificação que ele usa (por exemplo "
    "encoding=\"ISO-8859-1\")."};
constexpr TUtf8Reason kUndeclared = {
    "O arquivo não declara a codificação e por isso deveria estar em UTF-8, mas",
    "Declare na primeira linha a codificação que ele usa, por exemplo <?xml version=\"1.0\" "
    "encoding=\"ISO-8859-1\"?>, ou salve o arquivo em UTF-8."};
constexpr TUtf8Reason kUtf8Bom8 = {"O arquivo começa com a marca de UTF-8 (BOM), mas",
                                   "Salve o arquivo novamente em UTF-8, ou sem a marca."};

void CheckUtf8(std::string_view text, const TUtf8Reason& reason) {
    if (const std::size_t at = FindMalformedUtf8(text); at < text.size())
        RaiseAt(text.substr(0, at),
                fmt::format("{} contém um byte ({:02X}) que não é texto nessa codificação. {}", reason.Text,
                            static_cast<unsigned char>(text[at]), reason.Remedy));
}

/// Files that people take for the XML: how they begin, and what they are.
struct TForeignFile {
    std::string_view Start;
    std::string_view Sentence;
};
constexpr std::string_view kCompressed = "O arquivo está compactado (ZIP ou semelhante) e não é um XML. "
                                         "Extraia o XML de dentro dele e abra o arquivo "
                                         "extraído.";
constexpr std::string_view kPdf = "O arquivo é um PDF, não um XML. Peça o arquivo XML a quem o enviou.";
constexpr std::string_view kProgram = "O arquivo é um programa, não um XML.";
constexpr std::string_view kImage = "O arquivo é uma imagem, não um XML.";
constexpr TForeignFile kForeignFiles[] = {
    {"PK\x03\x04", kCompressed},
    {"PK\x05\x06", kCompressed},
    {"\x1F\x8B", kCompressed},
    {"Rar!", kCompressed},
    {"7z\xBC\xAF", kCompressed},
    {"%PDF", kPdf},
    {"MZ", kProgram},
    {"\x7F"
     "ELF",
     kProgram},
    {"\x89PNG", kImage},
    {"\xFF\xD8\xFF", kImage},
    {"GIF8", kImage},
    {"\xD0\xCF\x11\xE0", "O arquivo é um documento ou planilha do Office, não um XML."},
    {"{\\rtf", "O arquivo é um documento RTF, não um XML."},
};

void RefuseForeignFiles(std::string_view bytes) {
    for (const TForeignFile& kind : kForeignFiles)
        if (bytes.starts_with(kind.Start))
            RaiseAt({}, std::string(kind.Sentence));
}

/// Decodes through the converter; on a malformed byte the text before it tells the line.
std::string ToUtf8(std::string_view bytes, const std::string& name, std::string_view declared) {
    const TConverter converter(name);
    if (!converter.Open())
        RaiseAt({},
                fmt::format("A codificação \"{}\", declarada no arquivo, não é conhecida. Use \"ISO-8859-1\" "
                            "ou \"UTF-8\".",
                            declared));
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setToUCallBack(converter.Get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
    const TConverter utf8("UTF-8");
    std::string text;
    std::array<UChar, 8192> pivot{};
    UChar* pivotSource = pivot.data();
    UChar* pivotTarget = pivot.data();
    const char* source = bytes.data();
    const char* sourceEnd = bytes.data() + bytes.size();
    std::array<char, 16384> buffer{};
    bool reset = true;
    do {
        char* target = buffer.data();
        status = U_ZERO_ERROR;
        ucnv_convertEx(utf8.Get(), converter.Get(), &target, buffer.data() + buffer.size(), &source,
                       sourceEnd, pivot.data(), &pivotSource, &pivotTarget, pivot.data() + pivot.size(),
                       static_cast<UBool>(reset), true, &status);
        reset = false;
        text.append(buffer.data(), static_cast<std::size_t>(target - buffer.data()));
    } while (status == U_BUFFER_OVERFLOW_ERROR);
    if (U_FAILURE(status)) {
        // What was decoded before the malformed byte still waits in the pivot.
        for (const UChar* at = pivotSource; at < pivotTarget; ++at)
            if (!U16_IS_TRAIL(*at))
                text += *at == '\n' || *at == '\r' ? static_cast<char>(*at) : ' ';
        RaiseAt(text,
                fmt::format("O arquivo contém bytes que não são texto na codificação {}. Salve o arquivo "
                            "novamente nessa codificação, ou corrija a declaração.",
                            declared.empty() ? std::string_view(name) : declared));
    }
    return text;
}

/// What Windows-1252 has at 0x80 to 0x9F; its five free places are the control characters of Unicode there.
constexpr std::array<char16_t, 32> kAnsiSpecials = {
    0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

/// Decodes Windows-1252, which every byte is.
std::string AnsiToUtf8(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 8);
    while (true) {
        const std::size_t plain = FindNonAscii(bytes);
        text.append(bytes, 0, plain);
        if (plain == bytes.size())
            return text;
        const auto byte = static_cast<unsigned char>(bytes[plain]);
        const unsigned c = byte < 0xA0 ? kAnsiSpecials[byte - 0x80U] : byte;
        if (c < 0x800) {
            text += static_cast<char>(0xC0U | (c >> 6U));
        } else {
            text += static_cast<char>(0xE0U | (c >> 12U));
            text += static_cast<char>(0x80U | ((c >> 6U) & 0x3FU));
        }
        text += static_cast<char>(0x80U | (c & 0x3FU));
        bytes.remove_prefix(plain + 1);
    }
}

/// UTF-16 and UTF-32 without mark show in the bytes of "<".
const char* SniffWide(std::string_view bytes) {
    if (bytes.size() < 4)
        return nullptr;
    const std::string_view four = bytes.substr(0, 4);
    if (four == std::string_view("<\0\0\0", 4))
        return "UTF-32LE";
    if (four == std::string_view("\0\0\0<", 4))
        return "UTF-32BE";
    if (four.substr(0, 2) == std::string_view("<\0", 2))
        return "UTF-16LE";
    if (four.substr(0, 2) == std::string_view("\0<", 2))
        return "UTF-16BE";
    return nullptr;
}

/// Follows markup through a text, to know whether a place is text or attribute value, where a reference
/// may stand, or a name, comment, instruction or CDATA section, where none may.
class TMarkupState {
  public:
    bool ReferenceAllowed() const { return place_ == TPlace::Text || place_ == TPlace::Quoted; }

    void Read(std::string_view rest) {
        switch (place_) {
        case TPlace::Text:
            if (rest.starts_with("<!--"))
                Until("-->");
            else if (rest.starts_with("<![CDATA["))
                Until("]]>");
            else if (rest.starts_with("<?"))
                Until("?>");
            else if (rest.starts_with("<"))
                place_ = TPlace::Tag;
            break;
        case TPlace::Tag:
            if (rest.front() == '"' || rest.front() == '\'') {
                quote_ = rest.front();
                place_ = TPlace::Quoted;
            } else if (rest.front() == '>') {
                place_ = TPlace::Text;
            }
            break;
        case TPlace::Quoted:
            if (rest.front() == quote_)
                place_ = TPlace::Tag;
            break;
        case TPlace::Literal:
            if (rest.front() == end_.back() && seen_ >= end_.size() - 1 &&
                tail_ == end_.substr(0, end_.size() - 1))
                place_ = TPlace::Text;
            break;
        }
        tail_ += rest.front();
        ++seen_;
        const std::size_t keep = end_.empty() ? 0 : end_.size() - 1;
        if (tail_.size() > keep)
            tail_.erase(0, tail_.size() - keep);
    }

  private:
    enum class TPlace { Text, Tag, Quoted, Literal };

    void Until(std::string_view end) {
        place_ = TPlace::Literal;
        end_ = end;
        seen_ = 0;
        tail_.clear();
    }

    TPlace place_ = TPlace::Text;
    char quote_ = 0;
    std::string_view end_;
    std::string tail_;
    std::size_t seen_ = 0;
};

/// Bytes of one character; empty when the encoding does not hold it.
class TCharacterEncoder {
  public:
    explicit TCharacterEncoder(const std::string& name) : converter_(name) {
        UErrorCode status = U_ZERO_ERROR;
        if (converter_.Open())
            ucnv_setFromUCallBack(converter_.Get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                                  &status);
    }
    bool Open() const { return converter_.Open(); }

    std::string Encode(UChar32 c) {
        std::array<UChar, 2> units{};
        std::int32_t count = 0;
        if (c > 0xFFFF) {
            units[0] = static_cast<UChar>(0xD7C0 + (c >> 10));
            units[1] = static_cast<UChar>(0xDC00 + (c & 0x3FF));
            count = 2;
        } else {
            units[0] = static_cast<UChar>(c);
            count = 1;
        }
        UErrorCode status = U_ZERO_ERROR;
        std::array<char, 16> bytes{};
        const std::int32_t length =
            ucnv_fromUChars(converter_.Get(), bytes.data(), static_cast<std::int32_t>(bytes.size()),
                            units.data(), count, &status);
        return U_FAILURE(status) ? std::string()
                                 : std::string(bytes.data(), static_cast<std::size_t>(length));
    }

  private:
    TConverter converter_;
};

/// Splits a text in UTF-8 into characters: calls visit(code point, bytes).
template<class Visit>
void ForEachCharacter(std::string_view text, Visit&& visit) {
    const auto* data = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t at = 0; at < length;) {
        const std::int32_t start = at;
        UChar32 c = 0;
        U8_NEXT_OR_FFFD(data, at, length, c);
        visit(c, text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(at - start)));
    }
}

std::string EncodeThrough(std::string_view text, const std::string& name) {
    TCharacterEncoder encoder(name);
    if (!encoder.Open())
        RaiseAt({},
                fmt::format("A codificação \"{}\", declarada no XML, não é conhecida. Use \"ISO-8859-1\" ou "
                            "\"UTF-8\".",
                            DeclaredEncoding(text)));
    const bool asciiKept = encoder.Encode('<') == "<";
    std::string bytes;
    bytes.reserve(text.size());
    TMarkupState state; // brought up to a character only when that one needs a reference
    std::size_t stateAt = 0;
    ForEachCharacter(text, [&](UChar32 c, std::string_view piece) {
        if (asciiKept && c < 0x80) {
            bytes += piece;
            return;
        }
        const std::string encoded = encoder.Encode(c);
        if (!encoded.empty()) {
            bytes += encoded;
            return;
        }
        const auto at = static_cast<std::size_t>(piece.data() - text.data());
        for (; stateAt < at; ++stateAt)
            state.Read(text.substr(stateAt));
        if (!state.ReferenceAllowed())
            RaiseAt(text.substr(0, at),
                    fmt::format(
                        "O caractere \"{}\" não existe na codificação {} e não pode ser gravado em um nome, "
                        "comentário ou seção CDATA. Remova o caractere ou declare a codificação UTF-8.",
                        piece, DeclaredEncoding(text)));
        bytes += fmt::format("&#{};", static_cast<std::uint32_t>(c));
    });
    return bytes;
}

} // namespace

EXmlEncoding::EXmlEncoding(std::shared_ptr<const TXmlMessage> message)
    : std::runtime_error(message->Msg()), message_(std::move(message)) {}

std::string_view DeclaredEncoding(std::string_view text) {
    // White space before the declaration is a fault of its own, which the parser tells.
    while (!text.empty() && IsXmlSpace(text.front()))
        text.remove_prefix(1);
    if (!text.starts_with("<?xml") || text.size() < 6 || !IsXmlSpace(text[5]))
        return {};
    const std::string_view declaration = text.substr(0, text.find("?>"));
    const std::size_t name = declaration.find("encoding");
    if (name == std::string_view::npos)
        return {};
    const std::size_t open = declaration.find_first_of("\"'", name);
    if (open == std::string_view::npos)
        return {};
    const std::size_t close = declaration.find(declaration[open], open + 1);
    if (close == std::string_view::npos)
        return {};
    return declaration.substr(open + 1, close - open - 1);
}

TXmlText DecodeXml(std::string bytes) {
    return TakeXml(bytes);
}

TXmlText TakeXml(std::string& bytes) {
    RefuseForeignFiles(bytes);
    for (const TBom& bom : kBoms) {
        if (!std::string_view(bytes).starts_with(bom.Bytes))
            continue;
        TXmlText result{{}, {bom.Encoding, true}};
        if (result.Encoding.Name == "UTF-8") {
            result.Text = bytes.substr(bom.Bytes.size());
            CheckUtf8(result.Text, kUtf8Bom8);
        } else {
            result.Text = ToUtf8(std::string_view(bytes).substr(bom.Bytes.size()), bom.Encoding, {});
        }
        return result;
    }
    if (const char* wide = SniffWide(bytes))
        return {ToUtf8(bytes, wide, {}), {wide, false}};
    const std::string_view declared = DeclaredEncoding(bytes);
    const std::string name = ConverterName(declared);
    if (name == "UTF-8") {
        CheckUtf8(bytes, declared.empty() ? kUndeclared : kDeclaredUtf8);
        return {std::move(bytes), {name, false}};
    }
    if (name.starts_with("UTF-16") || name.starts_with("UTF-32"))
        RaiseAt({}, fmt::format(
                        "O arquivo declara a codificação {}, mas não está gravado nela. Declare a que ele "
                        "usa, por exemplo encoding=\"ISO-8859-1\", ou salve o arquivo novamente.",
                        declared));
    if (name == kAnsi && IsAscii(bytes))
        return {std::move(bytes), {name, false}};
    std::string text = name == kAnsi ? AnsiToUtf8(bytes) : ToUtf8(bytes, name, declared);
    return {std::move(text), {name, false}};
}

std::string EncodeXml(std::string_view text, const TXmlEncoding& original) {
    const bool wide = original.Name.starts_with("UTF-16") || original.Name.starts_with("UTF-32");
    const std::string name = original.Bom || wide ? original.Name : ConverterName(DeclaredEncoding(text));
    std::string bytes;
    if (original.Bom)
        for (const TBom& bom : kBoms)
            if (name == bom.Encoding)
                bytes = bom.Bytes;
    if (name == "UTF-8" || (name == kAnsi && IsAscii(text)))
        return bytes.append(text);
    return bytes + EncodeThrough(text, name);
}

namespace {

/// The word around a place of a text, as people recognise it.
std::string_view WordAt(std::string_view text, std::size_t at) {
    constexpr std::string_view kEnds = " \t\r\n<>\"'=&;,.()/";
    const std::size_t before = text.find_last_of(kEnds, at);
    const std::size_t start = before == std::string_view::npos ? 0 : before + 1;
    return text.substr(start, std::min(text.find_first_of(kEnds, at), text.size()) - start);
}

/// True when the letters of a text that was read as Windows-1252 are, byte for byte, letters in UTF-8 that
/// Windows-1252 has too. Ends at the first letter that is not.
bool WasWrittenInUtf8(std::string_view text) {
    TCharacterEncoder encoder(kAnsi);
    std::string bytes; // of the run of letters being read
    const auto runIsUtf8 = [&] {
        bool good = true;
        std::int32_t at = 0;
        const auto length = static_cast<std::int32_t>(bytes.size());
        while (good && at < length) {
            UChar32 c = 0;
            U8_NEXT(reinterpret_cast<const std::uint8_t*>(bytes.data()), at, length, c);
            good = c >= 0 && !encoder.Encode(c).empty();
        }
        bytes.clear();
        return good;
    };
    for (std::size_t at = 0; at < text.size();) {
        const auto first = static_cast<unsigned char>(text[at]);
        if (first < 0x80) {
            if (!bytes.empty() && !runIsUtf8())
                return false;
            ++at;
            continue;
        }
        std::int32_t next = 0;
        UChar32 c = 0;
        const std::string_view rest = text.substr(at, 4);
        U8_NEXT(reinterpret_cast<const std::uint8_t*>(rest.data()), next,
                static_cast<std::int32_t>(rest.size()), c);
        const std::string byte = c >= 0 ? encoder.Encode(c) : std::string();
        if (byte.size() != 1)
            return false;
        bytes += byte;
        at += static_cast<std::size_t>(next);
    }
    return bytes.empty() || runIsUtf8();
}

} // namespace

TXmlMessages CheckEncoding(std::string_view text, const TXmlEncoding& encoding) {
    TXmlMessages messages;
    const std::string_view declared = DeclaredEncoding(text);
    const bool wide = encoding.Name.starts_with("UTF-16") || encoding.Name.starts_with("UTF-32");
    const bool agrees = wide ? Upper(declared).starts_with(encoding.Name.substr(0, 6))
                             : ConverterName(declared) == encoding.Name;
    if (encoding.Bom && !declared.empty() && !agrees) {
        messages.push_back(TXmlMessage::CreateWarn(
            fmt::format("O arquivo começa com a marca de {0} (BOM), mas declara a codificação {1}. Foi lido "
                        "como {0}; outros leitores podem recusá-lo ou lê-lo de outro modo. Declare "
                        "encoding=\"{2}\" ou grave o arquivo em {1}, sem a marca.",
                        encoding.Name, CutText(declared), wide ? encoding.Name.substr(0, 6) : encoding.Name),
            std::string(declared), 1, 1, 0));
        return messages;
    }
    if (encoding.Bom || ConverterName(declared) != kAnsi)
        return messages;
    const std::size_t at = FindNonAscii(text);
    if (at == text.size() || !WasWrittenInUtf8(text))
        return messages;
    const std::string_view word = WordAt(text, at);
    const TXmlPlace place = TPositionCounter(text).PlaceOf(at);
    messages.push_back(TXmlMessage::CreateWarn(
        fmt::format(
            "O arquivo declara a codificação {0}, mas foi gravado em UTF-8: lê-se {1} onde deve estar "
            "{2}. Grave o arquivo em {0}, ou declare encoding=\"UTF-8\".",
            declared, QuoteText(word), QuoteText(EncodeAnsi(word))),
        CutText(word), place.Line, place.LinePos, place.FilePos));
    return messages;
}

std::string EncodeAnsi(std::string_view text) {
    if (IsAscii(text))
        return std::string(text);
    TCharacterEncoder encoder(kAnsi);
    std::string bytes;
    bytes.reserve(text.size());
    ForEachCharacter(text, [&](UChar32 c, std::string_view piece) {
        if (c < 0x80) {
            bytes += piece;
            return;
        }
        const std::string encoded = encoder.Encode(c);
        bytes += encoded.empty() ? std::string("?") : encoded;
    });
    return bytes;
}

} // namespace conferix
