#include "xml/plain_reader.h"

#include "xml/text_scan.h"
#include "xml/tree_maker.h"

#include <array>
#include <optional>
#include <utility>
#include <vector>

namespace conferix {

namespace {

constexpr std::array<bool, 256> kNameChars = [] {
    std::array<bool, 256> table{};
    for (const char c :
         std::string_view("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_:-."))
        table.at(static_cast<unsigned char>(c)) = true;
    return table;
}();

bool IsNameChar(char c) {
    return kNameChars[static_cast<unsigned char>(c)];
}

bool IsNameStart(char c) {
    return IsNameChar(c) && !(c >= '0' && c <= '9') && c != '-' && c != '.';
}

/// True for the characters that XML allows.
constexpr bool IsXmlChar(std::uint32_t code) {
    return code == '\t' || code == '\n' || code == '\r' || (code >= 0x20 && code < 0xD800) ||
           (code >= 0xE000 && code < 0xFFFE) || (code >= 0x10000 && code <= 0x10FFFF);
}

void AppendUtf8(std::string& text, std::uint32_t code) {
    const auto add = [&text](std::uint32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (code < 0x80) {
        add(code);
    } else if (code < 0x800) {
        add(0xC0U | code >> 6);
        add(0x80U | (code & 0x3FU));
    } else if (code < 0x10000) {
        add(0xE0U | code >> 12);
        add(0x80U | (code >> 6 & 0x3FU));
        add(0x80U | (code & 0x3FU));
    } else {
        add(0xF0U | code >> 18);
        add(0x80U | (code >> 12 & 0x3FU));
        add(0x80U | (code >> 6 & 0x3FU));
        add(0x80U | (code & 0x3FU));
    }
}

/// Length of the character at `at`, a byte from 0x80; 0 where there is none that XML allows.
std::size_t Utf8Length(const char* at, const char* end) {
    const auto byte = [at](std::size_t i) { return static_cast<unsigned char>(at[i]); };
    const std::size_t length = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
    if (byte(0) < 0xC2 || byte(0) > 0xF4 || static_cast<std::size_t>(end - at) < length)
        return 0;
    std::uint32_t code = byte(0) & (0xFFU >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0U) != 0x80U)
            return 0;
        code = code << 6 | (byte(i) & 0x3FU);
    }
    constexpr std::array<std::uint32_t, 5> kLeast = {0, 0, 0x80, 0x800, 0x10000};
    return code >= kLeast.at(length) && IsXmlChar(code) ? length : 0;
}

} // namespace

/// One pass over a text. Every step answers false where the parser has to decide.
class TXmlPlainReader : private TXmlTreeMaker {
  public:
    explicit TXmlPlainReader(std::shared_ptr<const std::string> text)
        : TXmlTreeMaker(std::move(text)), first_(document_->Text().data()),
          end_(first_ + document_->Text().size()), at_(first_) {}

    std::shared_ptr<TXmlDocument> Read() {
        if (!Declaration() || !Outside() || at_ == end_ || !Element() || !Outside() || at_ != end_ ||
            NamespaceFault() != nullptr)
            return nullptr;
        return document_;
    }

  private:
    /// A text between two marks: a stretch of the parsed text, or gathered in `joined_`.
    struct TRun {
        const char* Start = nullptr; ///< null while there is none
        const char* Piece = nullptr; ///< what is not gathered yet
        bool Joined = false;
        bool Blank = true; ///< nothing but white space so far
    };

    std::uint32_t Offset(const char* at) const { return static_cast<std::uint32_t>(at - first_); }
    bool StartsWith(std::string_view mark) const {
        return static_cast<std::size_t>(end_ - at_) >= mark.size() &&
               EqualBytes(at_, mark.data(), mark.size());
    }

    /// Passes the character at `at_`, one that ends plain text, where it is allowed anywhere.
    bool PassSpecial() {
        const auto byte = static_cast<unsigned char>(*at_);
        if (byte >= 0x80) {
            const std::size_t length = Utf8Length(at_, end_);
            if (length == 0)
                return false;
            at_ += length;
            return true;
        }
        ++at_;
        return byte >= 0x20 || IsXmlSpace(static_cast<char>(byte));
    }

    void PassSpace() {
        while (at_ != end_ && IsXmlSpace(*at_))
            ++at_;
    }

    /// A name of ASCII characters, passed; empty where there is none.
    std::string_view PassName() {
        const char* const start = at_;
        if (at_ == end_ || !IsNameStart(*at_))
            return {};
        while (at_ != end_ && IsNameChar(*at_))
            ++at_;
        return {start, static_cast<std::size_t>(at_ - start)};
    }

    /// The name at `at_`, passed; null where there is none. What followed the last name before is tried
    /// first.
    const TXmlName* PassTagName() {
        if (followers_.size() <= last_)
            followers_.resize(last_ + 64, nullptr);
        if (const TXmlName* likely = followers_[last_]; likely != nullptr) {
            const std::size_t length = likely->Qualified.size();
            if (static_cast<std::size_t>(end_ - at_) > length && !IsNameChar(at_[length]) &&
                EqualBytes(at_, likely->Qualified.data(), length)) {
                at_ += length;
                return likely;
            }
        }
        const std::string_view text = PassName();
        if (text.empty())
            return nullptr;
        const TXmlName* name = document_->InternName(text);
        followers_[last_] = name;
        return name;
    }

    /// Adds a node at `at_`, whose end is not known yet.
    TXmlNode* Append(TXmlNodeKind kind) {
        const std::uint32_t start = Offset(at_);
        return TXmlTreeMaker::Append(kind, start, start);
    }

    /// A stretch of the text with its line ends as "\n", as XML demands.
    std::string_view Normalised(const char* start, const char* end) {
        const std::string_view text(start, static_cast<std::size_t>(end - start));
        if (text.find('\r') == std::string_view::npos)
            return text;
        std::string normalised;
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] != '\r')
                normalised.push_back(text[i]);
            else if (i + 1 == text.size() || text[i + 1] != '\n') // else the line feed stands for both
                normalised.push_back('\n');
        }
        return document_->arena_.Copy(normalised);
    }

    void StartRun() {
        if (run_.Start != nullptr)
            return;
        run_.Start = run_.Piece = at_;
    }

    /// Gathers the run's last piece, which ends at `at_`.
    void Gather() {
        if (!run_.Joined)
            joined_.clear();
        run_.Joined = true;
        joined_.append(run_.Piece, at_);
    }

    /// The run's content; it ends at `at_`.
    std::string_view RunText() {
        if (!run_.Joined)
            return {run_.Start, static_cast<std::size_t>(at_ - run_.Start)};
        joined_.append(run_.Piece, at_);
        return document_->arena_.Copy(joined_);
    }

    /// Ends a run that stands before another node. White space is layout there, unless it may belong to a
    /// text that comments, instructions or CDATA sections interrupt.
    void FlushRun(bool keepSpace) {
        if (run_.Start == nullptr)
            return;
        if (keepSpace || !run_.Blank) {
            const std::string_view content = RunText();
            SetContent(TXmlTreeMaker::Append(TXmlNodeKind::xnText, Offset(run_.Start), Offset(at_)), content);
        }
        run_ = {};
    }

    /// Passes text up to the next "<".
    bool Text() {
        StartRun();
        while (true) {
            const char* const plain = at_;
            at_ = FindPlainTextEnd(at_, end_);
            if (run_.Blank)
                for (const char* c = plain; c != at_ && run_.Blank; ++c)
                    run_.Blank = *c == ' ';
            if (at_ == end_)
                return false;
            switch (*at_) {
            case '<':
                return true;
            case '&':
                if (!GatherReference())
                    return false;
                break;
            case ']':
                run_.Blank = false;
                if (StartsWith("]]>"))
                    return false;
                ++at_;
                break;
            case '\r':
                Gather();
                joined_.push_back('\n');
                at_ += StartsWith("\r\n") ? 2 : 1;
                run_.Piece = at_;
                break;
            case '\t':
            case '\n':
                ++at_;
                break;
            default:
                run_.Blank = false;
                if (!PassSpecial())
                    return false;
            }
        }
    }

    bool GatherReference() {
        Gather();
        const std::optional<std::uint32_t> code = PassReference();
        if (!code)
            return false;
        AppendUtf8(joined_, *code);
        // A referenced blank is text like any other to the eye of the tree: only what it is counts.
        run_.Blank = run_.Blank && *code < 0x80 && IsXmlSpace(static_cast<char>(*code));
        run_.Piece = at_;
        return true;
    }

    /// The character that the reference at `at_` stands for.
    std::optional<std::uint32_t> PassReference() {
        constexpr std::ptrdiff_t kLongest = 12;
        const char* stop = at_ + 1;
        while (stop != end_ && stop - at_ < kLongest && *stop != ';')
            ++stop;
        if (stop == end_ || *stop != ';')
            return std::nullopt;
        const std::string_view name(at_ + 1, static_cast<std::size_t>(stop - at_ - 1));
        at_ = stop + 1;
        if (name.starts_with('#'))
            return NumberedCharacter(name.substr(1));
        constexpr std::pair<std::string_view, char> kNames[] = {
            {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
        for (const auto& [known, character] : kNames)
            if (name == known)
                return static_cast<unsigned char>(character);
        return std::nullopt;
    }

    static std::optional<std::uint32_t> NumberedCharacter(std::string_view digits) {
        const std::uint32_t base = digits.starts_with('x') ? 16 : 10;
        if (base == 16)
            digits.remove_prefix(1);
        if (digits.empty())
            return std::nullopt;
        std::uint32_t code = 0;
        for (const char c : digits) {
            const std::uint32_t digit = c >= '0' && c <= '9'   ? static_cast<std::uint32_t>(c - '0')
                                        : c >= 'a' && c <= 'f' ? static_cast<std::uint32_t>(c - 'a') + 10
                                        : c >= 'A' && c <= 'F' ? static_cast<std::uint32_t>(c - 'A') + 10
                                                               : base;
            if (digit >= base)
                return std::nullopt;
            code = code * base + digit;
            if (code > 0x10FFFF)
                return std::nullopt;
        }
        return IsXmlChar(code) ? std::optional(code) : std::nullopt;
    }

    /// The content up to `mark`, which is passed too; null where it does not come or a character is not
    /// allowed.
    const char* PassUpTo(std::string_view mark) {
        while (at_ != end_) {
            if (*at_ == mark.front() && StartsWith(mark)) {
                const char* const stop = at_;
                at_ += mark.size();
                return stop;
            }
            if (!PassSpecial())
                return nullptr;
        }
        return nullptr;
    }

    bool Comment() {
        FlushRun(true);
        TXmlNode* node = Append(TXmlNodeKind::xnComment);
        at_ += 4;
        const char* const start = at_;
        const char* const stop = PassUpTo("--");
        if (stop == nullptr || at_ == end_ || *at_ != '>')
            return false;
        ++at_;
        SetContent(node, Normalised(start, stop));
        node->byteEnd_ = Offset(at_);
        return true;
    }

    bool Instruction() {
        FlushRun(true);
        TXmlNode* node = Append(TXmlNodeKind::xnInstruction);
        at_ += 2;
        const std::string_view target = PassName();
        const bool reserved = target.size() == 3 && (target[0] | 0x20) == 'x' && (target[1] | 0x20) == 'm' &&
                              (target[2] | 0x20) == 'l';
        if (target.empty() || reserved || at_ == end_ || (!IsXmlSpace(*at_) && *at_ != '?'))
            return false;
        const bool separated = IsXmlSpace(*at_);
        PassSpace();
        const char* const start = at_;
        const char* const stop = PassUpTo("?>");
        if (stop == nullptr || (!separated && stop != start))
            return false;
        node->name_ = document_->InternName(target);
        NoteSpecial(node);
        SetContent(node, Normalised(start, stop));
        node->byteEnd_ = Offset(at_);
        return true;
    }

    bool CData() {
        FlushRun(true);
        TXmlNode* node = Append(TXmlNodeKind::xnCData);
        at_ += 9;
        const char* const start = at_;
        const char* const stop = PassUpTo("]]>");
        if (stop == nullptr)
            return false;
        SetContent(node, Normalised(start, stop));
        node->byteEnd_ = Offset(at_);
        return true;
    }

    /// The XML declaration, where the text begins with one.
    bool Declaration() {
        if (!StartsWith("<?xml") || end_ - at_ < 6 || !IsXmlSpace(at_[5]))
            return true;
        TXmlNode* node = Append(TXmlNodeKind::xnDeclaration);
        at_ += 5;
        PassSpace();
        const std::optional<std::string_view> version = DeclaredValue("version");
        if (!version || *version != "1.0")
            return false;
        if (const auto encoding = DeclaredValue("encoding");
            encoding &&
            (encoding->empty() || (((*encoding)[0] | 0x20) < 'a') || (((*encoding)[0] | 0x20) > 'z')))
            return false;
        if (const auto standalone = DeclaredValue("standalone");
            standalone && *standalone != "yes" && *standalone != "no")
            return false;
        if (!StartsWith("?>"))
            return false;
        at_ += 2;
        node->byteEnd_ = Offset(at_);
        return true;
    }

    /// The value of a pseudo-attribute at `at_`, passed with the space behind it; nothing, and nothing
    /// passed, where another stands there.
    std::optional<std::string_view> DeclaredValue(std::string_view name) {
        if (!StartsWith(name) || static_cast<std::size_t>(end_ - at_) < name.size() + 3)
            return std::nullopt;
        const char* value = at_ + name.size();
        if (value[0] != '=' || (value[1] != '"' && value[1] != '\''))
            return std::nullopt;
        const char quote = value[1];
        value += 2;
        const char* stop = value;
        while (stop != end_ && IsNameChar(*stop) && *stop != ':')
            ++stop;
        if (stop == end_ || *stop != quote)
            return std::nullopt;
        // Without space only the end may follow.
        if (stop + 1 == end_ || (!IsXmlSpace(stop[1]) && stop[1] != '?'))
            return std::nullopt;
        at_ = stop + 1;
        PassSpace();
        return std::string_view(value, static_cast<std::size_t>(stop - value));
    }

    /// What may stand beside the document element.
    bool Outside() {
        while (true) {
            PassSpace();
            if (at_ == end_ || *at_ != '<')
                return at_ == end_;
            if (StartsWith("<!--")) {
                if (!Comment())
                    return false;
            } else if (StartsWith("<?")) {
                if (!Instruction())
                    return false;
            } else {
                return open_.back().Node->FirstChildTag() == nullptr;
            }
        }
    }

    /// The document element with all that it holds.
    bool Element() {
        if (!StartTag())
            return false;
        while (open_.size() > 1) {
            if (at_ == end_)
                return false;
            if (*at_ != '<') {
                if (!Text())
                    return false;
                continue;
            }
            if (end_ - at_ < 2)
                return false;
            const char next = at_[1];
            const bool taken = next == '/'          ? EndTag()
                               : next == '?'        ? Instruction()
                               : next != '!'        ? StartTag()
                               : StartsWith("<!--") ? Comment()
                                                    : StartsWith("<![CDATA[") && CData();
            if (!taken)
                return false;
        }
        return true;
    }

    bool StartTag() {
        FlushRun(AfterInterruption());
        TXmlNode* node = Append(TXmlNodeKind::xnTag);
        ++at_;
        const TXmlName* name = PassTagName();
        if (name == nullptr || at_ == end_)
            return false;
        node->name_ = name;
        last_ = name->Id * 2;
        if (*at_ != '>' && !Attributes(node))
            return false;
        // Attributes ends at the end of the tag.
        const bool empty = *at_ == '/';
        if (empty && (++at_ == end_ || *at_ != '>'))
            return false;
        ++at_;
        node->byteEnd_ = Offset(at_);
        if (empty)
            last_ = name->Id * 2 + 1;
        else
            open_.push_back({node, nullptr});
        return true;
    }

    /// Passes attributes up to the ">" or "/" of their tag.
    bool Attributes(TXmlNode* node) {
        TXmlAttribute** link = nullptr;
        ++tag_;
        for (std::int32_t index = 0;; ++index) {
            const bool separated = at_ != end_ && IsXmlSpace(*at_);
            PassSpace();
            if (at_ == end_)
                return false;
            if (*at_ == '>' || *at_ == '/')
                return true;
            const std::string_view text = PassName();
            if (!separated || text.empty())
                return false;
            auto* attribute = document_->arena_.New<TXmlAttribute>();
            attribute->name_ = document_->InternName(text);
            if (seenIn_.size() <= attribute->name_->Id)
                seenIn_.resize(attribute->name_->Id + 64, 0);
            if (std::exchange(seenIn_[attribute->name_->Id], tag_) == tag_)
                return false; // twice in one tag
            PassSpace();
            if (at_ == end_ || *at_ != '=')
                return false;
            ++at_;
            PassSpace();
            if (!AttributeValue(*attribute))
                return false;
            attribute->sourceIndex_ = index;
            if (index == 0)
                NoteSpecial(node);
            *(link != nullptr ? link : node->AttributesOf(document_->arena_)) = attribute;
            link = &attribute->next_;
        }
    }

    bool AttributeValue(TXmlAttribute& attribute) {
        if (at_ == end_ || (*at_ != '"' && *at_ != '\''))
            return false;
        const char quote = *at_++;
        const char* const start = at_;
        const char* piece = at_;
        bool joined = false;
        const auto gather = [&] {
            if (!joined)
                joined_.clear();
            joined = true;
            joined_.append(piece, at_);
        };
        while (at_ != end_ && *at_ != quote) {
            if (*at_ == '<')
                return false;
            if (*at_ == '&') {
                gather();
                const std::optional<std::uint32_t> code = PassReference();
                if (!code)
                    return false;
                AppendUtf8(joined_, *code);
                piece = at_;
            } else if (*at_ != ' ' && IsXmlSpace(*at_)) {
                gather();
                joined_.push_back(' ');
                at_ += StartsWith("\r\n") ? 2 : 1;
                piece = at_;
            } else if (!PassSpecial()) {
                return false;
            }
        }
        if (at_ == end_)
            return false;
        if (joined) {
            joined_.append(piece, at_);
            attribute.value_ = document_->arena_.Copy(joined_);
        } else if (at_ != start) {
            attribute.value_ = {start, static_cast<std::size_t>(at_ - start)};
        }
        ++at_;
        return true;
    }

    bool EndTag() {
        TXmlNode* node = open_.back().Node;
        if (node->firstChild_ == nullptr) {
            if (run_.Start != nullptr)
                SetContent(node, RunText());
            run_ = {};
        } else {
            FlushRun(AfterInterruption());
            JoinPieces(node);
        }
        at_ += 2;
        const std::string_view name = node->QualifiedName();
        if (!StartsWith(name))
            return false;
        at_ += name.size();
        PassSpace();
        if (at_ == end_ || *at_ != '>')
            return false;
        ++at_;
        node->byteEnd_ = Offset(at_);
        last_ = node->name_->Id * 2 + 1;
        open_.pop_back();
        return true;
    }

    const char* first_;
    const char* end_;
    const char* at_;
    TRun run_;
    std::string joined_;
    std::vector<const TXmlName*>
        followers_; ///< by the last tag: twice its name's identifier, one more for its end
    std::uint32_t last_ = 0;
    std::vector<std::uint32_t> seenIn_; ///< by an attribute name's identifier: the last tag that has it
    std::uint32_t tag_ = 0;
};

std::shared_ptr<TXmlDocument> ReadPlainXml(std::shared_ptr<const std::string> text) {
    return TXmlPlainReader(std::move(text)).Read();
}

} // namespace conferix
