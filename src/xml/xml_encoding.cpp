#include "xml/xml_encoding.h"

#include "platform/utf8.h"
#include "xml/ansi.h"
#include "xml/cut_text.h"
#include "xml/xml_node.h"
#include "xml/xml_position.h"

#include <fmt/format.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <utility>
#include <vector>

namespace conferix {

namespace {

constexpr std::string_view kUtf8Bom = "\xEF\xBB\xBF";
constexpr const char* kAnsi = "windows-1252";
constexpr const char* kAscii = "US-ASCII";

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

/// The converter's name for a declared encoding: letters of ISO-8859-1 files are Windows-1252's.
std::string ConverterName(std::string_view declared) {
    std::string upper = Upper(declared);
    if (upper.empty() || upper == "UTF-8" || upper == "UTF8")
        return "UTF-8";
    if (upper == "ISO-8859-1" || upper == "ISO8859-1" || upper == "ISO_8859-1" || upper == "LATIN1" ||
        upper == "WINDOWS-1252" || upper == "CP1252")
        return kAnsi;
    if (upper == "US-ASCII" || upper == "ASCII")
        return kAscii;
    return upper;
}

/// True for UTF-8, UTF-16, US-ASCII and the single-byte families ISO-8859, Windows-125x, IBM850 and
/// Macintosh. Others give no text back as it was (UTF-7, HZ) or are no one's in this trade.
bool IsAccepted(const std::string& name) {
    constexpr std::string_view kFamilies[] = {"ISO-8859-", "WINDOWS-125"};
    constexpr std::string_view kSingle[] = {"UTF-8",    "UTF-16", "UTF-16LE", "UTF-16BE",
                                            "US-ASCII", "IBM850", "IBM-850",  "MACINTOSH"};
    UErrorCode status = U_ZERO_ERROR;
    const std::uint16_t count = ucnv_countAliases(name.c_str(), &status);
    for (std::uint16_t i = 0; U_SUCCESS(status) && i < count; ++i) {
        const char* alias = ucnv_getAlias(name.c_str(), i, &status);
        const std::string upper = Upper(alias != nullptr ? alias : "");
        if (std::ranges::find(kSingle, upper) != std::end(kSingle) ||
            std::ranges::any_of(kFamilies,
                                [&](std::string_view family) { return upper.starts_with(family); }))
            return true;
    }
    return false;
}

std::shared_ptr<const TXmlMessage> FaultAt(std::string_view textBefore, const std::string& reason) {
    const TXmlPlace place = TPositionCounter(textBefore).PlaceOf(textBefore.size());
    return TXmlMessage::CreateError(reason, {}, place.Line, place.LinePos, place.FilePos);
}

[[noreturn]] void RaiseAt(std::string_view textBefore, const std::string& reason) {
    throw EXmlEncoding(FaultAt(textBefore, reason));
}

[[noreturn]] void RefuseEncoding(std::string_view declared) {
    RaiseAt({}, fmt::format("A codificação {}, declarada no arquivo, não é aceita. Use \"ISO-8859-1\" ou "
                            "\"UTF-8\".",
                            QuoteText(declared)));
}

[[noreturn]] void RefuseUtf32() {
    RaiseAt({}, "O arquivo está gravado em UTF-32, que não é aceita. Salve-o novamente em \"ISO-8859-1\" ou "
                "\"UTF-8\".");
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

/// Why a text with a malformed byte is not what it is taken for.
std::shared_ptr<const TXmlMessage> Utf8Fault(std::string_view text, std::size_t at,
                                             const TUtf8Reason& reason) {
    return FaultAt(text.substr(0, at),
                   fmt::format("{} contém um byte ({:02X}) que não é texto nessa codificação. {}",
                               reason.Text, static_cast<unsigned char>(text[at]), reason.Remedy));
}

std::shared_ptr<const TXmlMessage> AsciiFault(std::string_view text, std::string_view declared) {
    const std::size_t at = FindNonAscii(text);
    if (at == text.size())
        return nullptr;
    return FaultAt(
        text.substr(0, at),
        fmt::format("O arquivo declara a codificação {}, mas contém um byte ({:02X}) que não é texto "
                    "nessa codificação. Declare a que ele usa, por exemplo "
                    "encoding=\"ISO-8859-1\", ou salve o arquivo em UTF-8.",
                    declared, static_cast<unsigned char>(text[at])));
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
    if (!IsAccepted(name) || !converter.Open())
        RefuseEncoding(declared);
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

/// The characters of an encoding of one byte each; nothing for another one.
std::optional<TCodePage> CodePageOf(const std::string& name) {
    if (name == kAnsi)
        return TCodePage::Ansi();
    const TConverter converter(name);
    if (!IsAccepted(name) || !converter.Open() || ucnv_getMaxCharSize(converter.Get()) != 1 || name == kAscii)
        return std::nullopt;
    std::array<char32_t, TCodePage::kSize> characters{};
    for (std::size_t i = 0; i < characters.size(); ++i) {
        const char byte = static_cast<char>(0x80 + i);
        std::array<UChar, 2> unit{};
        UErrorCode status = U_ZERO_ERROR;
        ucnv_toUChars(converter.Get(), unit.data(), static_cast<std::int32_t>(unit.size()), &byte, 1,
                      &status);
        constexpr UChar kNone = 0xFFFD;
        characters[i] = U_SUCCESS(status) && unit[0] != kNone ? unit[0] : 0;
    }
    return TCodePage(characters);
}

/// UTF-16 without mark shows in the bytes of "<". Refuses UTF-32.
const char* SniffWide(std::string_view bytes) {
    if (bytes.size() < 4)
        return nullptr;
    const std::string_view four = bytes.substr(0, 4);
    if (four == std::string_view("<\0\0\0", 4) || four == std::string_view("\0\0\0<", 4))
        RefuseUtf32();
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

    /// The place in words: " em <nome>", ", em um comentário,"; empty outside of all.
    std::string Where() const {
        if (place_ == TPlace::Literal && end_ != "]]>")
            return end_ == "-->" ? ", em um comentário," : ", em uma instrução,";
        if (place_ == TPlace::Tag)
            return ", em um nome,";
        return (place_ == TPlace::Literal ? ", em uma seção CDATA" : "") +
               (open_.empty() ? std::string() : fmt::format(" em <{}>", CutText(open_.back()))) +
               (place_ == TPlace::Literal ? "," : "");
    }

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
                Open(rest.substr(1));
            break;
        case TPlace::Tag:
            if (rest.front() == '"' || rest.front() == '\'') {
                quote_ = rest.front();
                place_ = TPlace::Quoted;
            } else if (rest.front() == '>') {
                place_ = TPlace::Text;
                if (last_ == '/' && !open_.empty())
                    open_.pop_back();
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
        last_ = rest.front();
        tail_ += rest.front();
        ++seen_;
        const std::size_t keep = end_.empty() ? 0 : end_.size() - 1;
        if (tail_.size() > keep)
            tail_.erase(0, tail_.size() - keep);
    }

  private:
    enum class TPlace { Text, Tag, Quoted, Literal };

    static std::string_view LocalName(std::string_view name) { return name.substr(name.find(':') + 1); }

    void Open(std::string_view tag) {
        place_ = TPlace::Tag;
        if (!tag.starts_with('/'))
            open_.push_back(LocalName(tag.substr(0, tag.find_first_of(" \t\r\n/>"))));
        else if (!open_.empty())
            open_.pop_back();
    }

    void Until(std::string_view end) {
        place_ = TPlace::Literal;
        end_ = end;
        seen_ = 0;
        tail_.clear();
    }

    TPlace place_ = TPlace::Text;
    char quote_ = 0;
    char last_ = 0;
    std::vector<std::string_view> open_; ///< names of the elements around the place
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
    if (!IsAccepted(name) || !encoder.Open())
        RefuseEncoding(DeclaredEncoding(text));
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
    : EXmlEncoding(TXmlMessages{std::move(message)}) {}

EXmlEncoding::EXmlEncoding(TXmlMessages messages)
    : std::runtime_error(messages.front()->Msg()), messages_(std::move(messages)) {}

namespace {

bool BeginsWithDeclaration(std::string_view text) {
    return text.starts_with("<?xml") && text.size() >= 6 && IsXmlSpace(text[5]);
}

/// The XML declaration of a text, without the mark that ends it; empty for none.
std::string_view DeclarationOf(std::string_view text) {
    // White space before the declaration is a fault of its own, which the parser tells.
    text = FromDeclaration(text);
    return BeginsWithDeclaration(text) ? text.substr(0, text.find("?>")) : std::string_view();
}

/// The value of a pseudo-attribute of a declaration; a null view without it.
std::string_view DeclaredValue(std::string_view declaration, std::string_view name) {
    const std::size_t at = declaration.find(name);
    if (at == std::string_view::npos)
        return {};
    const std::size_t open = declaration.find_first_of("\"'", at);
    if (open == std::string_view::npos)
        return {};
    const std::size_t close = declaration.find(declaration[open], open + 1);
    if (close == std::string_view::npos)
        return {};
    return declaration.substr(open + 1, close - open - 1);
}

/// True of what may stand as the name of an encoding, and of no name.
bool IsEncodingName(std::string_view name) {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    return name.empty() || (isLetter(name.front()) && std::ranges::all_of(name, [&](char c) {
                                return isLetter(c) || (c >= '0' && c <= '9') || c == '.' || c == '_' ||
                                       c == '-';
                            }));
}

} // namespace

std::string_view FromDeclaration(std::string_view text) {
    std::string_view rest = text;
    while (!rest.empty() && IsXmlSpace(rest.front()))
        rest.remove_prefix(1);
    return BeginsWithDeclaration(rest) ? rest : text;
}

std::string_view DeclaredEncoding(std::string_view text) {
    return DeclaredValue(DeclarationOf(text), "encoding");
}

std::string_view DeclaredVersion(std::string_view text) {
    return DeclaredValue(DeclarationOf(text), "version");
}

std::string DeclareEncoding(std::string_view text, std::string_view encoding) {
    const std::string_view declaration = DeclarationOf(text);
    if (declaration.empty())
        return fmt::format("<?xml version=\"1.0\" encoding=\"{}\"?>\n{}", encoding, text);
    std::string result(text);
    const std::string_view version = DeclaredValue(declaration, "version");
    if (const std::string_view old = DeclaredValue(declaration, "encoding"); old.data() != nullptr)
        result.replace(static_cast<std::size_t>(old.data() - text.data()), old.size(), encoding);
    else if (version.data() != nullptr)
        result.insert(static_cast<std::size_t>(version.data() - text.data()) + version.size() + 1,
                      fmt::format(" encoding=\"{}\"", encoding));
    return result;
}

namespace {

/// The same fault, with the bytes that keep it from being mended.
std::shared_ptr<const TXmlMessage> Unmendable(const TXmlMessage& fault, std::string_view bytes,
                                              const std::vector<std::size_t>& unknown) {
    constexpr std::size_t kNamed = 5;
    TPositionCounter position(bytes);
    std::string named;
    for (std::size_t i = 0; i < std::min(unknown.size(), kNamed); ++i)
        named +=
            fmt::format("{}{:02X} na linha {}", i == 0 ? "" : ", ",
                        static_cast<unsigned char>(bytes[unknown[i]]), position.PlaceOf(unknown[i]).Line);
    if (unknown.size() > kNamed)
        named += fmt::format(" e mais {}", unknown.size() - kNamed);
    return TXmlMessage::CreateError(
        fmt::format("{} Nenhuma correção é oferecida, porque não se sabe que {}: {}. Escreva de novo o texto "
                    "ali.",
                    fault.Reason(), unknown.size() == 1 ? "letra é este byte" : "letras são estes bytes",
                    named),
        fault.SrcText(), fault.Line(), fault.LinePos(), fault.FilePos());
}

/// Bytes that are no text in the declared encoding, in the one that they seem to be in.
TXmlText Guess(std::string& bytes, std::shared_ptr<const TXmlMessage> fault, TXmlUndecodable undecodable) {
    if (undecodable == TXmlUndecodable::Refused)
        throw EXmlEncoding(std::move(fault));
    if (FindMalformedUtf8(bytes) == bytes.size())
        return {std::move(bytes), {"UTF-8", false, std::move(fault)}};
    if (IsPlainlyAnsi(bytes))
        return {AnsiToUtf8(bytes), {kAnsi, false, std::move(fault)}};
    TMixedText mixed = ReadMixed(bytes);
    if (!mixed.Unknown.empty())
        throw EXmlEncoding(Unmendable(*fault, bytes, mixed.Unknown));
    return {std::move(mixed.Text), {"UTF-8", false, std::move(fault), true}};
}

/// `spend`: bytes that are not the text themselves may become it all the same.
TXmlText Decode(std::string& bytes, TXmlUndecodable undecodable, bool spend) {
    RefuseForeignFiles(bytes);
    for (const TBom& bom : kBoms) {
        if (!std::string_view(bytes).starts_with(bom.Bytes))
            continue;
        if (std::string_view(bom.Encoding).starts_with("UTF-32"))
            RefuseUtf32();
        TXmlText result{{}, {bom.Encoding, true, nullptr}};
        if (result.Encoding.Name == "UTF-8") {
            result.Text = bytes.substr(bom.Bytes.size());
            const TUtf8Look look = LookAtUtf8(result.Text);
            if (look.Malformed != result.Text.size())
                return Guess(result.Text, Utf8Fault(result.Text, look.Malformed, kUtf8Bom8), undecodable);
            result.Encoding.Once = !look.MayBeTwice;
        } else {
            result.Text = ToUtf8(std::string_view(bytes).substr(bom.Bytes.size()), bom.Encoding, {});
        }
        return result;
    }
    if (const char* wide = SniffWide(bytes))
        return {ToUtf8(bytes, wide, {}), {wide, false, nullptr}};
    const std::string_view declared = DeclaredEncoding(bytes);
    if (!IsEncodingName(declared))
        RaiseAt({},
                fmt::format("A declaração XML (<?xml ...?>) está malformada: {} não pode ser o nome de uma "
                            "codificação. Declare encoding=\"ISO-8859-1\" ou encoding=\"UTF-8\".",
                            QuoteText(declared)));
    const std::string name = ConverterName(declared);
    if (name == "UTF-8") {
        const TUtf8Look look = LookAtUtf8(bytes);
        if (look.Malformed != bytes.size())
            return Guess(bytes,
                         Utf8Fault(bytes, look.Malformed, declared.empty() ? kUndeclared : kDeclaredUtf8),
                         undecodable);
        return {std::move(bytes), {name, false, nullptr, false, !look.MayBeTwice}};
    }
    if (name == kAscii) {
        if (auto fault = AsciiFault(bytes, declared))
            return Guess(bytes, std::move(fault), undecodable);
        return {std::move(bytes), {name, false, nullptr}};
    }
    if (name.starts_with("UTF-16"))
        return Guess(bytes,
                     FaultAt({}, fmt::format("O arquivo declara a codificação {}, mas não está gravado nela. "
                                             "Declare a que ele usa, por exemplo encoding=\"ISO-8859-1\", "
                                             "ou salve o arquivo novamente.",
                                             declared)),
                     undecodable);
    if (name == kAnsi && IsAscii(bytes))
        return {std::move(bytes), {name, false, nullptr, false, true}};
    if (name == kAnsi) {
        TAnsiText decoded = spend ? DecodeAnsi(std::move(bytes)) : DecodeAnsi(std::string_view(bytes));
        return {std::move(decoded.Text), {name, false, nullptr, false, !decoded.MayBeUtf8}};
    }
    try {
        return {ToUtf8(bytes, name, declared), {name, false, nullptr}};
    } catch (const EXmlEncoding& error) {
        if (!IsAccepted(name) || FindMalformedUtf8(bytes) != bytes.size())
            throw;
        return Guess(bytes, error.Message(), undecodable);
    }
}

} // namespace

TXmlText DecodeXml(std::string bytes, TXmlUndecodable undecodable) {
    return Decode(bytes, undecodable, true);
}

TXmlText TakeXml(std::string& bytes, TXmlUndecodable undecodable) {
    return Decode(bytes, undecodable, false);
}

TXmlEncoding EncodingToWrite(std::string_view text, const TXmlEncoding& original) {
    const bool wide = original.Name.starts_with("UTF-16");
    return {original.Bom || wide ? original.Name : ConverterName(DeclaredEncoding(text)), original.Bom,
            nullptr};
}

namespace {

/// True when a text that was read is the one that was meant, where a reference may stand for a character.
bool IsSameText(std::string_view read, std::string_view meant) {
    while (!meant.empty()) {
        const auto [readAt, meantAt] = std::ranges::mismatch(read, meant);
        read.remove_prefix(static_cast<std::size_t>(readAt - read.begin()));
        meant.remove_prefix(static_cast<std::size_t>(meantAt - meant.begin()));
        if (meant.empty())
            break;
        UChar32 c = 0;
        std::int32_t next = 0;
        U8_NEXT(reinterpret_cast<const std::uint8_t*>(meant.data()), next,
                static_cast<std::int32_t>(std::min<std::size_t>(meant.size(), 4)), c);
        const std::string reference = fmt::format("&#{};", static_cast<std::uint32_t>(c));
        if (c < 0x80 || !read.starts_with(reference))
            return false;
        read.remove_prefix(reference.size());
        meant.remove_prefix(static_cast<std::size_t>(next));
    }
    return read.empty();
}

bool IsReadAs(const std::string& bytes, std::string_view text) {
    try {
        return IsSameText(DecodeXml(bytes).Text, text);
    } catch (const EXmlEncoding&) {
        return false;
    }
}

} // namespace

std::string EncodeXml(std::string_view text, const TXmlEncoding& original) {
    const std::string name = EncodingToWrite(text, original).Name;
    std::string bytes;
    if (original.Bom)
        for (const TBom& bom : kBoms)
            if (name == bom.Encoding)
                bytes = bom.Bytes;
    if (name == "UTF-8" || ((name == kAnsi || name == kAscii) && IsAscii(text)))
        bytes.append(text);
    else
        bytes += EncodeThrough(text, name);
    if (!IsReadAs(bytes, text))
        RaiseAt({},
                fmt::format("O texto não seria lido de volta como está se fosse gravado na codificação {}. "
                            "Declare a codificação UTF-8 e grave novamente.",
                            name));
    return bytes;
}

namespace {

/// The word around a place of a text, as people recognise it: without the marks of sections and comments.
std::string_view WordAt(std::string_view text, std::size_t at) {
    constexpr std::string_view kEnds = " \t\r\n<>\"'=&;,.()/![]?";
    const std::size_t before = text.find_last_of(kEnds, at);
    const std::size_t start = before == std::string_view::npos ? 0 : before + 1;
    std::string_view word = text.substr(start, std::min(text.find_first_of(kEnds, at), text.size()) - start);
    while (word.starts_with('-'))
        word.remove_prefix(1);
    while (word.ends_with('-'))
        word.remove_suffix(1);
    return word;
}

TKeptUtf8 KeptOf(const TXmlMisreading& misreading) {
    return misreading.Partly ? TKeptUtf8::Signs : TKeptUtf8::Nothing;
}

} // namespace

std::optional<TXmlMisreading> FindMisreading(std::string_view text, const TXmlEncoding& encoding) {
    using TKind = TXmlMisreading::TKind;
    const std::string_view declared = DeclaredEncoding(text);
    const auto found = [&](TKind kind, std::size_t at) {
        TXmlMisreading misreading{kind, std::string(declared), {}, {}, {}, {}, {}, 0, false, 0};
        misreading.Read = std::string(at < text.size() ? WordAt(text, at) : std::string_view{});
        misreading.Meant = misreading.Read;
        misreading.Place = TPositionCounter(text).PlaceOf(at);
        return misreading;
    };
    if (encoding.Fault != nullptr)
        return found(TKind::Guessed, FindNonAscii(text));
    const bool wide = encoding.Name.starts_with("UTF-16");
    const bool agrees = wide ? Upper(declared).starts_with(encoding.Name.substr(0, 6))
                             : ConverterName(declared) == encoding.Name;
    if ((encoding.Bom || wide) && !declared.empty() && !agrees)
        return found(TKind::BomAgainstDeclaration, FindNonAscii(text));
    const std::string name = EncodingToWrite(text, encoding).Name;
    const bool unicode = name.starts_with("UTF-");
    if (encoding.Once || (unicode && !LookAtUtf8(text).MayBeTwice))
        return std::nullopt;
    const auto page = CodePageOf(unicode ? kAnsi : name);
    const auto letters = page ? FindMisreadUtf8(text, *page) : std::nullopt;
    if (!letters)
        return std::nullopt;
    TXmlMisreading misreading = found(unicode ? TKind::Utf8Twice : TKind::Utf8AsOneByte, letters->First);
    misreading.Page = unicode ? kAnsi : name;
    misreading.Partly = !letters->Mostly;
    const TKeptUtf8 kept = KeptOf(misreading);
    for (std::string meant = MeantAsUtf8(text, *page, kept);
         LookAtUtf8(meant).MayBeTwice && FindMisreadUtf8(meant, TCodePage::Ansi());
         meant = MeantAsUtf8(meant, TCodePage::Ansi(), kept))
        ++misreading.Again;
    misreading.Meant = MeantText(misreading.Read, misreading);
    if (letters->Kept != TMisreadUtf8::kNone) {
        misreading.Kept = MeantText(WordAt(text, letters->Kept), misreading);
        misreading.KeptLine = TPositionCounter(text).PlaceOf(letters->Kept).Line;
    }
    return misreading;
}

std::string MeantText(std::string_view text, const TXmlMisreading& misreading) {
    if (IsAscii(text))
        return std::string(text);
    const auto page = misreading.OfLetters() ? CodePageOf(misreading.Page) : std::nullopt;
    std::string meant = page ? MeantAsUtf8(text, *page, KeptOf(misreading)) : std::string(text);
    for (int i = 0; i < misreading.Again; ++i)
        meant = MeantAsUtf8(meant, TCodePage::Ansi(), KeptOf(misreading));
    return meant;
}

TXmlMessages WordsToChange(std::string_view text, const TXmlMisreading& misreading) {
    TXmlMessages words;
    const std::string meant = MeantText(text, misreading);
    TPositionCounter position(text);
    const auto endOfRun = [](std::string_view in, std::size_t at) {
        while (at < in.size() && static_cast<unsigned char>(in[at]) >= 0x80)
            ++at;
        return at;
    };
    const char* last = nullptr; // the word that was told
    // What is ASCII stands in both alike.
    for (std::size_t at = 0, other = 0;;) {
        const std::size_t plain = FindNonAscii(text.substr(at));
        at += plain;
        other += plain;
        if (at == text.size())
            return words;
        const std::size_t end = endOfRun(text, at);
        const std::size_t otherEnd = endOfRun(meant, other);
        if (text.substr(at, end - at) != std::string_view(meant).substr(other, otherEnd - other)) {
            const std::string_view read = WordAt(text, at);
            if (const char* before = std::exchange(last, read.data()); before != read.data()) {
                const TXmlPlace place = position.PlaceOf(at);
                words.push_back(TXmlMessage::CreateInfo(
                    fmt::format("{} passa a {}.", QuoteText(read), QuoteText(WordAt(meant, other))),
                    std::string(read), place.Line, place.LinePos, place.FilePos));
            }
        }
        at = end;
        other = otherEnd;
    }
}

namespace {

/// What an encoding holds beyond ASCII: ISO-8859-1 by its strict name without the signs of Windows-1252.
TCodePage PageToWrite(std::string_view encoding) {
    const std::string upper = Upper(encoding);
    const std::string name = ConverterName(encoding);
    if (name != kAnsi || upper == "WINDOWS-1252" || upper == "CP1252")
        if (const auto page = CodePageOf(name))
            return *page;
    return CodePageOf("ISO-8859-1").value_or(TCodePage::Ansi());
}

} // namespace

TXmlRecoding RecodeXml(std::string_view text, std::string_view encoding) {
    TXmlRecoding result{DeclareEncoding(text, encoding), {}};
    if (ConverterName(encoding) == "UTF-8" || IsAscii(text))
        return result;
    const std::string declared = std::exchange(result.Text, {});
    TPositionCounter position(declared);
    TMarkupState state;
    std::size_t stateAt = 0;
    TXmlMessages unwritable;
    const TCodePage page = PageToWrite(encoding);
    ForEachCharacter(declared, [&](UChar32 c, std::string_view piece) {
        if (c < 0x80 || (c >= 0xA0 && page.ByteOf(static_cast<char32_t>(c)) != 0)) {
            result.Text += piece;
            return;
        }
        const auto at = static_cast<std::size_t>(piece.data() - declared.data());
        for (; stateAt < at; ++stateAt)
            state.Read(std::string_view(declared).substr(stateAt));
        const TXmlPlace place = position.PlaceOf(at);
        const std::string lacking =
            fmt::format("O caractere \"{}\"{} não existe na codificação {}", piece, state.Where(), encoding);
        if (!state.ReferenceAllowed()) {
            unwritable.push_back(TXmlMessage::CreateError(
                lacking + " e não pode ser gravado ali. Remova o caractere ou grave em UTF-8.",
                std::string(piece), place.Line, place.LinePos, place.FilePos));
            return;
        }
        const std::string reference = fmt::format("&#{};", static_cast<std::uint32_t>(c));
        result.Replaced.push_back(
            TXmlMessage::CreateInfo(fmt::format("{}; no lugar dele fica {}.", lacking, reference),
                                    std::string(piece), place.Line, place.LinePos, place.FilePos));
        result.Text += reference;
    });
    if (!unwritable.empty()) {
        unwritable.insert(unwritable.end(), result.Replaced.begin(), result.Replaced.end());
        throw EXmlEncoding(std::move(unwritable));
    }
    return result;
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
