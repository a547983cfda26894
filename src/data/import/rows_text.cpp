#include "data/import/cell_text.h"
#include "data/import/import_errors.h"
#include "data/import/row_reader.h"
#include "platform/utf8.h"

#include <csv.h>
#include <unicode/ucnv.h>

#include <new>

namespace conferix {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kHeadBytes = 65536;
constexpr std::size_t kMaxLineBytes = 1 << 20;
// A quoted cell that goes on for longer is a quotation mark that nobody closed.
constexpr std::size_t kMaxRecordBytes = 65536;
constexpr std::size_t kMaxRecordLines = 200;
constexpr std::size_t kMaxCells = 1000;

std::string Decoded(std::string_view bytes) {
    if (FindMalformedUtf8(bytes) == bytes.size()) {
        return std::string(TrimBlanks(bytes));
    }
    std::string text(bytes.size() * 3 + 1, '\0');
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        ucnv_convert("UTF-8", "windows-1252", text.data(), static_cast<std::int32_t>(text.size()),
                     bytes.data(), static_cast<std::int32_t>(bytes.size()), &status);
    text.resize(U_SUCCESS(status) ? static_cast<std::size_t>(length) : 0);
    return std::string(TrimBlanks(text));
}

/// Divides a text into rows. Each is known by the line on which it begins. A quoted cell may go on over
/// several lines; where the next one looks like a row, or none closes the quotation marks, the first line
/// becomes a row with a defect and the reading goes on with the second.
class TTextParser {
  public:
    TTextParser(char divider, const fs::path& name) : name_(name), divider_(divider) {
        if (csv_init(&parser_, CSV_APPEND_NULL) != 0) {
            throw std::bad_alloc();
        }
        csv_set_delim(&parser_, static_cast<unsigned char>(divider));
        constexpr std::size_t kBlock = 4096;
        csv_set_blk_size(&parser_, kBlock);
    }
    TTextParser(const TTextParser&) = delete;
    TTextParser& operator=(const TTextParser&) = delete;
    ~TTextParser() { csv_free(&parser_); }

    /// Takes bytes in pieces of any size; false when `onRow` wants no more.
    bool Parse(std::string_view bytes, const TRowHandler& onRow) {
        text_ += bytes;
        if (!ReadLines(onRow)) {
            return false;
        }
        text_.erase(0, begin_);
        next_ -= begin_;
        begin_ = 0;
        if (text_.size() - next_ > kMaxLineBytes) {
            throw EInvalidPublication(name_, "a linha " + std::to_string(line_) + " é longa demais");
        }
        return true;
    }

    void Finish(const TRowHandler& onRow) {
        text_ += '\n';
        bool goesOn = ReadLines(onRow);
        while (goesOn && next_ > begin_) {
            goesOn = GiveUpLine(onRow) && ReadLines(onRow);
        }
    }

  private:
    static void AddCell(void* text, std::size_t length, void* self) {
        auto& cells = static_cast<TTextParser*>(self)->row_.Cells;
        if (cells.size() < kMaxCells) {
            cells.push_back({Decoded({static_cast<const char*>(text), length}), false, false});
        }
    }
    static void EndRow(int /*end*/, void* self) { static_cast<TTextParser*>(self)->ended_ = true; }

    bool ReadLines(const TRowHandler& onRow) {
        bool goesOn = true;
        while (goesOn) {
            const std::size_t end = text_.find_first_of("\r\n", next_);
            if (end == std::string::npos) {
                break;
            }
            const std::string_view line = std::string_view(text_).substr(next_, end + 1 - next_);
            const bool isContinued = next_ > begin_;
            goesOn = isContinued && (recordLines_ == kMaxRecordLines || next_ - begin_ > kMaxRecordBytes ||
                                     LooksLikeRow(line))
                         ? GiveUpLine(onRow)
                         : ReadLine(line, onRow);
        }
        return goesOn;
    }

    bool ReadLine(std::string_view line, const TRowHandler& onRow) {
        const bool isBlank = next_ == begin_ && line.find_first_not_of(" \t\r\n") == std::string_view::npos;
        if (csv_parse(&parser_, line.data(), line.size(), &AddCell, &EndRow, this) != line.size()) {
            throw std::bad_alloc();
        }
        next_ += line.size();
        line_ += line.back() == '\n' ? 1 : 0;
        ++recordLines_;
        if (!ended_ && !isBlank) {
            return true; // within quotation marks
        }
        const bool goesOn = !ended_ || onRow(row_);
        lastCells_ = ended_ ? row_.Cells.size() : lastCells_;
        BeginRecord();
        return goesOn;
    }

    /// Tells that the first line of the present record cannot be divided, and goes back to the second.
    bool GiveUpLine(const TRowHandler& onRow) {
        csv_fini(&parser_, nullptr, nullptr, nullptr);
        next_ = text_.find_first_of("\r\n", begin_) + 1;
        next_ += text_[next_ - 1] == '\r' && next_ < text_.size() && text_[next_] == '\n' ? 1 : 0;
        line_ = row_.Number + (text_[next_ - 1] == '\n' ? 1 : 0);
        const TRow defective{row_.Number, {}, "as aspas abertas nesta linha não se fecham"};
        BeginRecord();
        return onRow(defective);
    }

    void BeginRecord() {
        begin_ = next_;
        recordLines_ = 0;
        row_.Number = line_;
        row_.Cells.clear();
        ended_ = false;
    }

    /// Whether a line that continues a quoted cell is rather a row of its own: up to the closing quotation
    /// mark it has as many dividers as the row before, or a cell that begins with a quotation mark, or
    /// begins with a number as long as the one with which the record begins.
    bool LooksLikeRow(std::string_view line) const {
        std::size_t dividers = 0;
        bool beginsCell = true;
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (line[i] == '"') {
                const bool isDoubled = i + 1 < line.size() && line[i + 1] == '"';
                if (!isDoubled && ClosesCell(line.substr(i + 1))) {
                    break;
                }
                if (!isDoubled && beginsCell) {
                    return true;
                }
                i += isDoubled ? 1 : 0;
            }
            beginsCell = line[i] == divider_;
            dividers += beginsCell ? 1 : 0;
        }
        const std::size_t number = LeadingNumber(line);
        return dividers >= std::max<std::size_t>(lastCells_, 2) - 1 ||
               (dividers > 0 && number > 0 &&
                number == LeadingNumber(std::string_view(text_).substr(begin_)));
    }

    bool ClosesCell(std::string_view rest) const {
        const std::size_t next = rest.find_first_not_of(divider_ == '\t' ? " " : " \t");
        return next == std::string_view::npos || rest[next] == divider_ || rest[next] == '\r' ||
               rest[next] == '\n';
    }

    /// The digits of the first cell when it has nothing else; else 0.
    std::size_t LeadingNumber(std::string_view line) const {
        const std::size_t digits = std::min(line.find_first_not_of("0123456789"), line.size());
        return digits < line.size() && line[digits] == divider_ ? digits : 0;
    }

    csv_parser parser_{};
    fs::path name_;
    char divider_;
    std::string text_;      ///< what is not read yet, and before it the lines of the present record
    std::size_t begin_ = 0; ///< of the present record, in `text_`
    std::size_t next_ = 0;  ///< line to be read
    std::size_t recordLines_ = 0;
    std::uint64_t line_ = 1; ///< number of the line to be read
    std::size_t lastCells_ = 0;
    TRow row_{1, {}, {}};
    bool ended_ = false;
};

/// The divider with which one of the first lines is a header; 0 for none.
char FindDivider(const std::string& head, const fs::path& name, const TIsHeader& isHeader) {
    for (const char divider : {';', '\t', ',', '|'}) {
        bool found = false;
        const TRowHandler look = [&](const TRow& row) {
            found = isHeader(row);
            return !found;
        };
        TTextParser parser(divider, name);
        if (parser.Parse(head, look)) {
            parser.Finish(look);
        }
        if (found) {
            return divider;
        }
    }
    return '\0';
}

} // namespace

void ReadTextRows(IByteSource& source, const fs::path& name, const TIsHeader& isHeader,
                  const TRowHandler& onRow) {
    constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
    TPeekSource raw(source, kUtf8Mark.size());
    std::unique_ptr<IByteSource> decoded;
    if (raw.Head().starts_with("\xFF\xFE") || raw.Head().starts_with("\xFE\xFF")) {
        decoded = NewUtf8Source(raw, raw.Head().front() == '\xFF' ? "UTF-16LE" : "UTF-16BE", name);
        raw.Skip(2);
    } else if (raw.Head() == kUtf8Mark) {
        raw.Skip(kUtf8Mark.size());
    }
    TPeekSource text(decoded ? *decoded : raw, kHeadBytes);
    if (text.Head().find('\0') != std::string::npos) {
        return;
    }
    const char divider = FindDivider(text.Head(), name, isHeader);
    if (divider == '\0') {
        return;
    }
    TTextParser parser(divider, name);
    std::string block(kHeadBytes, '\0');
    while (const std::size_t got = text.Read(block.data(), block.size())) {
        if (!parser.Parse({block.data(), got}, onRow)) {
            return;
        }
    }
    parser.Finish(onRow);
}

} // namespace conferix
