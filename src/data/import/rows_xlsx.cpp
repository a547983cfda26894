#include "data/import/cell_text.h"
#include "data/import/import_errors.h"
#include "data/import/row_reader.h"

#include <expat.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <memory>
#include <optional>

namespace conferix {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kWorkbookPart = "xl/workbook.xml";
constexpr std::size_t kBlockBytes = 65536;
constexpr std::size_t kMaxTokenBytes = 4 << 20;
constexpr std::size_t kMaxCellBytes = 32768; // what spreadsheets allow
constexpr std::size_t kMaxColumns = 256;
constexpr std::size_t kSharedBlockBytes = 1 << 20;
constexpr std::size_t kMaxSharedBytes = 256 << 20; // a full sheet of a million rows has some 150 MB
constexpr std::size_t kMaxSharedTexts = 8'000'000;

std::string_view LocalName(const char* name) {
    const std::string_view text = name;
    const std::size_t colon = text.rfind(':');
    return colon == std::string_view::npos ? text : text.substr(colon + 1);
}

/// The value of an attribute, whatever its prefix; none when it is absent.
std::optional<std::string_view> Attribute(const char** attributes, std::string_view name) {
    for (; *attributes != nullptr; attributes += 2) {
        if (LocalName(*attributes) == name) {
            return attributes[1];
        }
    }
    return std::nullopt;
}

/// Reads a part of a workbook piece by piece. The handlers only collect: what they collected is worked on
/// between two pieces, since nothing may be thrown through the parser.
class TPartParser {
  public:
    TPartParser(IByteSource& source, const fs::path& name)
        : source_(source), name_(name), parser_(XML_ParserCreate(nullptr)) {
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(
            parser_.get(),
            [](void* self, const char* element, const char** attributes) {
                ++static_cast<TPartParser*>(self)->events_;
                static_cast<TPartParser*>(self)->OnStart(LocalName(element), attributes);
            },
            [](void* self, const char* element) {
                ++static_cast<TPartParser*>(self)->events_;
                static_cast<TPartParser*>(self)->OnEnd(LocalName(element));
            });
        XML_SetCharacterDataHandler(parser_.get(), [](void* self, const char* text, int length) {
            ++static_cast<TPartParser*>(self)->events_;
            static_cast<TPartParser*>(self)->OnText({text, static_cast<std::size_t>(length)});
        });
        // No workbook has a document type, which is where entities come from.
        XML_SetStartDoctypeDeclHandler(
            parser_.get(), [](void* self, const char*, const char*, const char*, int) {
                XML_StopParser(static_cast<TPartParser*>(self)->parser_.get(), XML_FALSE);
            });
    }
    TPartParser(const TPartParser&) = delete;
    TPartParser& operator=(const TPartParser&) = delete;
    virtual ~TPartParser() = default;

    /// Reads the next piece; false at the end.
    bool ReadPiece() {
        void* buffer = XML_GetBuffer(parser_.get(), static_cast<int>(kBlockBytes));
        if (buffer == nullptr) {
            throw std::bad_alloc();
        }
        const std::size_t got = source_.Read(static_cast<char*>(buffer), kBlockBytes);
        const std::size_t before = events_;
        const bool isLast = got < kBlockBytes;
        if (XML_ParseBuffer(parser_.get(), static_cast<int>(got), isLast ? XML_TRUE : XML_FALSE) !=
            XML_STATUS_OK) {
            throw EInvalidPublication(name_, "a planilha está danificada (linha " +
                                                 std::to_string(XML_GetCurrentLineNumber(parser_.get())) +
                                                 " do XML)");
        }
        bytes_ += got;
        silent_ = events_ == before ? silent_ + got : 0;
        if (silent_ > kMaxTokenBytes) {
            throw EInvalidPublication(name_, "a planilha está danificada");
        }
        return !isLast;
    }
    std::uint64_t Bytes() const { return bytes_; }

  protected:
    virtual void OnStart(std::string_view element, const char** attributes) = 0;
    virtual void OnEnd(std::string_view element) = 0;
    virtual void OnText(std::string_view text) = 0;

    const fs::path& Name() const { return name_; }

  private:
    struct TFree {
        void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
    };

    IByteSource& source_;
    fs::path name_;
    std::unique_ptr<XML_ParserStruct, TFree> parser_;
    std::size_t events_ = 0;
    std::size_t silent_ = 0;
    std::uint64_t bytes_ = 0;
};

/// Elements with their attributes; for the small parts.
class TElementList : public TPartParser {
  public:
    using TPartParser::TPartParser;
    struct TElement {
        std::string Name;
        std::map<std::string, std::string, std::less<>> Attributes; ///< by local name

        std::string_view Value(std::string_view attribute) const {
            const auto found = Attributes.find(attribute);
            return found == Attributes.end() ? std::string_view() : found->second;
        }
    };
    std::vector<TElement> Elements;

  protected:
    void OnStart(std::string_view element, const char** attributes) override {
        constexpr std::size_t kMaxElements = 10'000;
        if (Elements.size() == kMaxElements) {
            return;
        }
        TElement& added = Elements.emplace_back();
        added.Name = element;
        for (; *attributes != nullptr; attributes += 2) {
            added.Attributes.emplace(LocalName(*attributes), attributes[1]);
        }
    }
    void OnEnd(std::string_view) override {}
    void OnText(std::string_view) override {}
};

/// The shared texts of a workbook.
class TSharedTexts : public TPartParser {
  public:
    using TPartParser::TPartParser;
    /// Those of the last piece.
    std::vector<std::string> texts;

  protected:
    void OnStart(std::string_view element, const char**) override {
        if (element == "si") {
            text_.clear();
        } else if (element == "rPh") {
            inReading_ = true; // how East Asian letters are read aloud
        } else if (element == "t") {
            inText_ = !inReading_;
        }
    }
    void OnEnd(std::string_view element) override {
        if (element == "t") {
            inText_ = false;
        } else if (element == "rPh") {
            inReading_ = false;
        } else if (element == "si") {
            texts.emplace_back(TrimBlanks(text_));
        }
    }
    void OnText(std::string_view text) override {
        if (inText_ && text_.size() < kMaxCellBytes) {
            text_ += text;
        }
    }

  private:
    std::string text_;
    bool inText_ = false;
    bool inReading_ = false;
};

enum class TCellType { Number, Shared, Text, Date, Invalid, None };

/// The rows of a sheet.
class TSheetRows : public TPartParser {
  public:
    using TPartParser::TPartParser;
    struct TRawCell {
        std::size_t Column = 0;
        TCellType Type = TCellType::Number;
        std::string Text;
    };
    struct TRawRow {
        std::uint64_t Number = 0;
        std::vector<TRawCell> Cells;
    };
    /// Those of the last piece that have a cell with content.
    std::vector<TRawRow> Rows;

  protected:
    void OnStart(std::string_view element, const char** attributes) override {
        if (element == "row") {
            StartRow(attributes);
        } else if (element == "c") {
            StartCell(attributes);
        } else if (element == "v" || element == "t") {
            inValue_ = true;
        } else if (element == "rPh") {
            cell_.Type = TCellType::None;
        }
    }

    void OnEnd(std::string_view element) override {
        if (element == "v" || element == "t") {
            inValue_ = false;
        } else if (element == "c") {
            if (cell_.Type != TCellType::None && !cell_.Text.empty() && cell_.Column < kMaxColumns) {
                row_.Cells.push_back(std::move(cell_));
            }
            cell_ = {};
        } else if (element == "row" && !row_.Cells.empty()) {
            Rows.push_back(std::move(row_));
            row_ = {Rows.back().Number, {}};
        }
    }

    void OnText(std::string_view text) override {
        if (inValue_ && cell_.Text.size() < kMaxCellBytes) {
            cell_.Text += text;
        }
    }

  private:
    void StartRow(const char** attributes) {
        std::uint64_t number = row_.Number + 1;
        if (const auto text = Attribute(attributes, "r")) {
            std::from_chars(text->data(), text->data() + text->size(), number);
        }
        row_.Number = number;
        row_.Cells.clear();
        nextColumn_ = 0;
    }

    void StartCell(const char** attributes) {
        cell_ = {};
        cell_.Column = nextColumn_;
        if (const auto place = Attribute(attributes, "r")) {
            std::size_t column = 0;
            for (const char c : *place) {
                if (c < 'A' || c > 'Z' || column > kMaxColumns) {
                    break;
                }
                column = column * 26 + static_cast<std::size_t>(c - 'A') + 1;
            }
            cell_.Column = column > 0 ? column - 1 : nextColumn_;
        }
        nextColumn_ = cell_.Column + 1;
        const std::string_view type = Attribute(attributes, "t").value_or("n");
        cell_.Type = type == "s"                            ? TCellType::Shared
                     : type == "inlineStr" || type == "str" ? TCellType::Text
                     : type == "d"                          ? TCellType::Date
                     : type == "n"                          ? TCellType::Number
                                                            : TCellType::Invalid; // errors, true and false
    }

    TRawRow row_;
    TRawCell cell_;
    std::size_t nextColumn_ = 0;
    bool inValue_ = false;
};

/// The path in the archive of a target that is relative to "xl/", or absolute.
std::string PartPath(std::string_view target) {
    return target.starts_with('/') ? std::string(target.substr(1)) : "xl/" + std::string(target);
}

std::vector<TElementList::TElement> ReadElements(const TZipArchive& archive, std::string_view part) {
    const TZipEntry* entry = archive.Find(part);
    if (entry == nullptr) {
        return {};
    }
    const auto source = archive.Open(*entry);
    TElementList list(*source, archive.Name());
    while (list.ReadPiece()) {
    }
    return std::move(list.Elements);
}

} // namespace

TWorkbook::TWorkbook(TZipArchive& archive) : archive_(archive) {
    ReadSheetList();
    ReadSharedTexts();
}

bool TWorkbook::IsWorkbook(const TZipArchive& archive) {
    return archive.Find(kWorkbookPart) != nullptr;
}

void TWorkbook::ReadSheetList() {
    std::map<std::string, std::string, std::less<>> targets;
    for (const auto& element : ReadElements(archive_, "xl/_rels/workbook.xml.rels")) {
        if (element.Name == "Relationship") {
            targets.emplace(element.Value("Id"), PartPath(element.Value("Target")));
        }
    }
    for (const auto& element : ReadElements(archive_, kWorkbookPart)) {
        if (element.Name == "workbookPr") {
            const std::string_view date1904 = element.Value("date1904");
            if (date1904 == "1" || date1904 == "true") {
                throw EInvalidPublication(archive_.Name(), "a planilha conta as datas a partir de 1904; "
                                                           "salve-a com o sistema de datas de 1900");
            }
        } else if (element.Name == "sheet") {
            const auto target = targets.find(element.Value("id"));
            const TZipEntry* entry = target == targets.end() ? nullptr : archive_.Find(target->second);
            if (entry == nullptr) {
                throw EInvalidPublication(archive_.Name(), "a planilha está danificada (falta a folha \"" +
                                                               std::string(element.Value("name")) + "\")");
            }
            sheets_.push_back({std::string(element.Value("name")), entry->Index, entry->Bytes});
        }
    }
}

void TWorkbook::ReadSharedTexts() {
    const TZipEntry* entry = archive_.Find("xl/sharedStrings.xml");
    if (entry == nullptr) {
        return;
    }
    const auto source = archive_.Open(*entry);
    TSharedTexts reader(*source, archive_.Name());
    bool more = true;
    while (more) {
        more = reader.ReadPiece();
        for (const std::string& text : reader.texts) {
            AddSharedText(text);
        }
        reader.texts.clear();
    }
}

void TWorkbook::AddSharedText(std::string_view text) {
    if (blocks_.empty() || blocks_.back().size() + text.size() > kSharedBlockBytes) {
        if (blocks_.size() * kSharedBlockBytes >= kMaxSharedBytes || shared_.size() >= kMaxSharedTexts) {
            throw EInvalidPublication(archive_.Name(), "a planilha tem textos demais");
        }
        blocks_.emplace_back().reserve(kSharedBlockBytes);
    }
    std::string& block = blocks_.back();
    shared_.push_back({static_cast<std::uint32_t>(blocks_.size() - 1),
                       static_cast<std::uint32_t>(block.size()), static_cast<std::uint32_t>(text.size())});
    block += text;
}

std::string_view TWorkbook::SharedText(std::string_view index) const {
    std::size_t number = shared_.size();
    std::from_chars(index.data(), index.data() + index.size(), number);
    if (number >= shared_.size()) {
        throw EInvalidPublication(archive_.Name(), "a planilha está danificada (texto que não existe)");
    }
    const TPlace& place = shared_[number];
    return std::string_view(blocks_[place.Block]).substr(place.Offset, place.Length);
}

void TWorkbook::ReadRows(const TSheet& sheet, const TRowHandler& onRow,
                         const std::function<void(std::uint64_t)>& onBytes) const {
    TZipEntry entry;
    for (const TZipEntry& candidate : archive_.Entries()) {
        if (candidate.Index == sheet.Entry) {
            entry = candidate;
        }
    }
    const auto source = archive_.Open(entry);
    TSheetRows reader(*source, archive_.Name() / PathFromText(sheet.Name));
    TRow row;
    bool more = true;
    while (more) {
        more = reader.ReadPiece();
        onBytes(reader.Bytes());
        for (TSheetRows::TRawRow& raw : reader.Rows) {
            row.Number = raw.Number;
            row.Cells.clear();
            for (TSheetRows::TRawCell& cell : raw.Cells) {
                if (row.Cells.size() <= cell.Column) {
                    row.Cells.resize(cell.Column + 1);
                }
                TCell& filled = row.Cells[cell.Column];
                filled.IsNumber = cell.Type == TCellType::Number;
                filled.IsInvalid = cell.Type == TCellType::Invalid;
                if (cell.Type == TCellType::Shared) {
                    filled.Text = SharedText(cell.Text);
                } else {
                    filled.Text = TrimBlanks(cell.Text);
                }
            }
            if (!onRow(row)) {
                return;
            }
        }
        reader.Rows.clear();
    }
}

} // namespace conferix
