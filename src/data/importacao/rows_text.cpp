#include "data/importacao/cell_text.h"
#include "data/importacao/importacao_erros.h"
#include "data/importacao/row_reader.h"

#include <csv.h>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <new>

namespace conferix {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kHeadBytes = 65536;
constexpr std::size_t kMaxRecordBytes = 1 << 20; // more is a quotation mark that nobody closed
constexpr std::size_t kMaxCells = 1000;

bool IsUtf8(std::string_view text) {
    std::int32_t length = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(nullptr, 0, &length, text.data(), static_cast<std::int32_t>(text.size()), &status);
    return status == U_BUFFER_OVERFLOW_ERROR || U_SUCCESS(status);
}

std::string Decoded(std::string_view bytes) {
    const bool isAscii =
        std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (isAscii || IsUtf8(bytes)) {
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

/// Divides a text into rows. Each is known by the line on which it begins.
class TTextParser {
  public:
    TTextParser(char divider, const fs::path& name) : name_(name) {
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
        while (!bytes.empty()) {
            const std::size_t end = bytes.find_first_of("\r\n");
            const std::string_view line = bytes.substr(0, end == std::string_view::npos ? end : end + 1);
            bytes.remove_prefix(line.size());
            const bool isBlank = line == "\r" || line == "\n";
            pending_ += isBlank && pending_ == 0 ? 0 : line.size();
            if (pending_ > kMaxRecordBytes) {
                throw EPublicacaoInvalida(name_, "as aspas abertas na linha " + std::to_string(row_.number) +
                                                     " não se fecham");
            }
            if (csv_parse(&parser_, line.data(), line.size(), &AddCell, &EndRow, this) != line.size()) {
                throw std::bad_alloc();
            }
            line_ += line.back() == '\n' ? 1 : 0;
            if (!GiveRow(onRow)) {
                return false;
            }
        }
        return true;
    }

    void Finish(const TRowHandler& onRow) {
        if (csv_fini(&parser_, &AddCell, &EndRow, this) != 0) {
            throw std::bad_alloc();
        }
        GiveRow(onRow);
    }

  private:
    static void AddCell(void* text, std::size_t length, void* self) {
        auto& cells = static_cast<TTextParser*>(self)->row_.cells;
        if (cells.size() < kMaxCells) {
            cells.push_back({Decoded({static_cast<const char*>(text), length}), false});
        }
    }
    static void EndRow(int /*end*/, void* self) { static_cast<TTextParser*>(self)->ended_ = true; }

    bool GiveRow(const TRowHandler& onRow) {
        if (!ended_) {
            row_.number = pending_ == 0 ? line_ : row_.number; // after blank lines
            return true;
        }
        const bool goesOn = onRow(row_);
        row_.cells.clear();
        row_.number = line_;
        ended_ = false;
        pending_ = 0;
        return goesOn;
    }

    csv_parser parser_{};
    fs::path name_;
    TRow row_{1, {}};
    std::uint64_t line_ = 1;
    std::size_t pending_ = 0;
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
