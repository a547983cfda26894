#include "paper/pdf_writer.h"

#include "paper/ansi_text.h"
#include "platform/utf8.h"

#include <fmt/format.h>
#include <zlib.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <new>
#include <ostream>
#include <set>

namespace conferix {

namespace {

/// Objects with a fixed number.
enum TFixedObject : std::uint32_t {
    kCatalog = 1,
    kPages,
    kInfo,
    kRegular,
    kBold,
    kFonts,
    kFixedObjects = kFonts
};

constexpr std::size_t kPagesOfGroup = 64;
// Pages are some kilobytes: larger tables would only take longer to clear for each.
constexpr int kWindowBits = 13;
constexpr int kMemoryLevel = 6;
constexpr std::size_t kKeptDrawings = 64; ///< beyond them, those that are gone are forgotten

/// Millimetres in hundredths of points. Away from zero at halves, as lround, which is a call.
std::int32_t Hundredths(float millimetres) {
    const float exact = millimetres * (100.0F / kMillimetresPerPoint);
    return static_cast<std::int32_t>(exact < 0 ? exact - 0.5F : exact + 0.5F);
}

/// Appends them as points and a blank.
void AppendHundredths(std::string& to, std::int32_t hundredths) {
    char text[24];
    char* end = text;
    if (hundredths < 0) {
        *end++ = '-';
        hundredths = -hundredths;
    }
    end = std::to_chars(end, std::end(text), hundredths / 100).ptr;
    if (const auto rest = static_cast<char>(hundredths % 100); rest != 0) {
        *end++ = '.';
        *end++ = static_cast<char>('0' + rest / 10);
        if (rest % 10 != 0)
            *end++ = static_cast<char>('0' + rest % 10);
    }
    *end++ = ' ';
    to.append(text, end);
}

/// Appends millimetres as points with two decimals and a blank.
void AppendPoints(std::string& to, float millimetres) {
    AppendHundredths(to, Hundredths(millimetres));
}

void AppendRectangle(std::string& to, const TPaperRect& place, float pageHeight) {
    AppendPoints(to, place.X);
    AppendPoints(to, pageHeight - place.Bottom());
    AppendPoints(to, place.Width);
    AppendPoints(to, place.Height);
    to += "re ";
}

void AppendString(std::string& to, std::string_view text) {
    to += '(';
    const auto isPlain = [](char c) { return c >= ' ' && c <= '~' && c != '(' && c != ')' && c != '\\'; };
    if (std::ranges::all_of(text, isPlain)) { // as nearly all texts are
        to.append(text) += ')';
        return;
    }
    std::size_t from = to.size();
    AppendAnsi(to, text);
    for (; from < to.size(); ++from)
        if (const char c = to[from]; c == '(' || c == ')' || c == '\\')
            to.insert(from++, 1, '\\');
        else if (static_cast<unsigned char>(c) < 0x20)
            to[from] = ' ';
    to += ')';
}

/// A text for a dictionary, in UTF-16.
std::string TextString(std::string_view text) {
    std::string hex = "<FEFF";
    while (!text.empty()) {
        const char32_t c = TakeCharacter(text);
        if (c >= 0x10000)
            hex += fmt::format("{:04X}{:04X}", 0xD800 + ((c - 0x10000) >> 10U),
                               0xDC00 + ((c - 0x10000) & 0x3FFU));
        else
            hex += fmt::format("{:04X}", static_cast<std::uint32_t>(c));
    }
    return hex + '>';
}

void AppendFrames(std::string& to, const TDrawing& drawing, float pageHeight) {
    int ground = 0;
    float pen = -1;
    for (const TPaperFrame& frame : drawing.Frames) {
        if (frame.Ground != 255) {
            if (frame.Ground != ground)
                to += fmt::format("{:.3f} g ", frame.Ground / 255.0);
            ground = frame.Ground;
            AppendRectangle(to, frame.Place, pageHeight);
            to += "f\n";
        }
        if (frame.Pen > 0) {
            if (frame.Pen != pen) {
                AppendPoints(to, frame.Pen);
                to += "w ";
            }
            pen = frame.Pen;
            AppendRectangle(to, frame.Place, pageHeight);
            to += "S\n";
        }
    }
    if (ground != 0)
        to += "0 g\n";
}

void AppendLines(std::string& to, const TDrawing& drawing, float pageHeight) {
    float pen = -1;
    for (const TPaperLine& line : drawing.Lines) {
        if (line.Pen != pen) {
            AppendPoints(to, line.Pen);
            to += "w ";
        }
        pen = line.Pen;
        AppendPoints(to, line.X1);
        AppendPoints(to, pageHeight - line.Y1);
        to += "m ";
        AppendPoints(to, line.X2);
        AppendPoints(to, pageHeight - line.Y2);
        to += "l S\n";
    }
}

void AppendTexts(std::string& to, const TDrawing& drawing, float pageHeight) {
    if (drawing.Texts.empty())
        return;
    to += "BT\n";
    std::int32_t x = 0; // whole hundredths, so that rounding does not add up from one text to the next
    std::int32_t y = 0;
    float size = -1;
    TPaperFace face = TPaperFace::Regular;
    for (const TPaperText& text : drawing.Texts) {
        if (text.Size != size || text.Face != face) {
            size = text.Size;
            face = text.Face;
            to += face == TPaperFace::Bold ? "/B " : "/R ";
            AppendPoints(to, size * kMillimetresPerPoint);
            to += "Tf ";
        }
        const std::int32_t left = Hundredths(text.X);
        const std::int32_t base = Hundredths(pageHeight - text.Baseline);
        AppendHundredths(to, left - x);
        AppendHundredths(to, base - y);
        to += "Td ";
        x = left;
        y = base;
        AppendString(to, text.Text);
        to += "Tj\n";
    }
    to += "ET\n";
}

/// The dictionary of the drawings and pictures that a page or a drawing shows.
std::string DictionaryOf(const std::set<std::uint32_t>& used) {
    std::string dictionary = "/XObject<<";
    for (const std::uint32_t object : used)
        dictionary += fmt::format("/X{0} {0} 0 R", object);
    return dictionary + ">>";
}

} // namespace

/// Compresses one piece after the other.
class TPdfWriter::TDeflater {
  public:
    TDeflater() {
        if (deflateInit2(&stream_, Z_BEST_SPEED, Z_DEFLATED, kWindowBits, kMemoryLevel, Z_DEFAULT_STRATEGY) !=
            Z_OK)
            throw std::bad_alloc();
    }
    TDeflater(const TDeflater&) = delete;
    TDeflater& operator=(const TDeflater&) = delete;
    ~TDeflater() { deflateEnd(&stream_); }

    /// Holds until the next call.
    std::string_view Deflate(std::string_view content) {
        deflateReset(&stream_);
        const std::size_t most = deflateBound(&stream_, static_cast<uLong>(content.size()));
        if (buffer_.size() < most)
            buffer_.resize(most);
        stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
        stream_.avail_in = static_cast<uInt>(content.size());
        stream_.next_out = reinterpret_cast<Bytef*>(buffer_.data());
        stream_.avail_out = static_cast<uInt>(buffer_.size());
        deflate(&stream_, Z_FINISH);
        return std::string_view(buffer_).substr(0, buffer_.size() - stream_.avail_out);
    }

  private:
    z_stream stream_{};
    std::string buffer_;
};

TPdfWriter::TPdfWriter(std::ostream& out, std::string_view title)
    : out_(out), deflater_(std::make_unique<TDeflater>()), offsets_(kFixedObjects) {
    Put("%PDF-1.5\n%\xE2\xE3\xCF\xD3\n");
    WriteObject(kInfo, fmt::format("<</Title{}/Producer(Conferix)>>", TextString(title)));
    constexpr auto font = "<</Type/Font/Subtype/Type1/BaseFont/{}/Encoding/WinAnsiEncoding>>";
    WriteObject(kRegular, fmt::format(fmt::runtime(font), "Helvetica"));
    WriteObject(kBold, fmt::format(fmt::runtime(font), "Helvetica-Bold"));
    WriteObject(kFonts, fmt::format("<</R {} 0 R/B {} 0 R>>", +kRegular, +kBold));
}

TPdfWriter::~TPdfWriter() = default;

void TPdfWriter::AddBookmark(std::string_view title, int level) {
    bookmarks_.push_back({std::string(title), level, 0});
    ++pendingBookmarks_;
}

void TPdfWriter::AddPage(const TPaperPage& page) {
    if (group_ == 0)
        group_ = NewObject();
    content_.clear();
    std::string resources = fmt::format("/Font {} 0 R", +kFonts);
    std::set<std::uint32_t> used;
    if (!page.Common.empty()) {
        std::vector<std::uint32_t> objects;
        for (const auto& drawing : page.Common)
            objects.push_back(ObjectOf(drawing, page)); // uses content_
        content_.clear();
        for (const std::uint32_t object : objects) {
            used.insert(object);
            content_ += fmt::format("/X{} Do\n", object);
        }
    }
    AppendDrawing(page.Own, page.Height, used);
    resources += DictionaryOf(used);
    const std::uint32_t contents = NewObject();
    WriteStream(contents, "", content_);
    const std::uint32_t object = NewObject();
    WriteObject(
        object,
        fmt::format(
            "<</Type/Page/Parent {} 0 R/MediaBox[0 0 {:.2f} {:.2f}]/Resources<<{}>>/Contents {} 0 R>>",
            group_, page.Width / kMillimetresPerPoint, page.Height / kMillimetresPerPoint, resources,
            contents));
    for (; pendingBookmarks_ > 0; --pendingBookmarks_)
        bookmarks_[bookmarks_.size() - pendingBookmarks_].Page = object;
    pagesOfGroup_.push_back(object);
    if (pagesOfGroup_.size() == kPagesOfGroup)
        EndGroup();
}

void TPdfWriter::Finish() {
    if (!pagesOfGroup_.empty())
        EndGroup();
    std::string kids;
    std::uint32_t count = 0;
    for (std::size_t i = 0; i < groups_.size(); ++i) {
        kids += fmt::format("{} 0 R ", groups_[i]);
        count += countsOfGroups_[i];
    }
    WriteObject(kPages, fmt::format("<</Type/Pages/Count {}/Kids[{}]>>", count, kids));
    std::string outlines;
    if (!bookmarks_.empty()) {
        const std::uint32_t object = NewObject();
        WriteBookmarks(object);
        outlines = fmt::format("/Outlines {} 0 R/PageMode/UseOutlines", object);
    }
    WriteObject(
        kCatalog,
        fmt::format("<</Type/Catalog/Pages {} 0 R/Lang(pt-BR){}/ViewerPreferences<</DisplayDocTitle true>>>>",
                    +kPages, outlines));
    const std::uint64_t start = written_;
    std::string table = fmt::format("xref\n0 {}\n0000000000 65535 f \n", offsets_.size() + 1);
    for (const std::uint64_t offset : offsets_)
        table += fmt::format("{:010} 00000 n \n", offset);
    Put(table);
    Put(fmt::format("trailer\n<</Size {}/Root {} 0 R/Info {} 0 R>>\nstartxref\n{}\n%%EOF\n",
                    offsets_.size() + 1, +kCatalog, +kInfo, start));
}

std::uint32_t TPdfWriter::NewObject() {
    offsets_.push_back(0);
    return static_cast<std::uint32_t>(offsets_.size());
}

void TPdfWriter::Begin(std::uint32_t object) {
    offsets_[object - 1] = written_;
    Put(fmt::format("{} 0 obj\n", object));
}

void TPdfWriter::WriteObject(std::uint32_t object, std::string_view content) {
    Begin(object);
    Put(content);
    Put("\nendobj\n");
}

void TPdfWriter::WriteStream(std::uint32_t object, std::string_view dictionary, std::string_view content) {
    const std::string_view bytes = deflater_->Deflate(content);
    Begin(object);
    Put(fmt::format("<<{}/Filter/FlateDecode/Length {}>>\nstream\n", dictionary, bytes.size()));
    Put(bytes);
    Put("\nendstream\nendobj\n");
}

std::uint32_t TPdfWriter::ObjectOf(const std::shared_ptr<const TDrawing>& drawing, const TPaperPage& page) {
    TKept& kept = kept_[drawing.get()];
    if (kept.Object != 0 && kept.PageHeight == page.Height && !kept.Drawing.expired())
        return kept.Object;
    kept = {drawing, page.Height, NewObject()};
    content_.clear();
    std::set<std::uint32_t> used;
    AppendDrawing(*drawing, page.Height, used);
    WriteStream(kept.Object,
                fmt::format("/Type/XObject/Subtype/Form/BBox[0 0 {:.2f} {:.2f}]/Resources<</Font {} 0 R{}>>",
                            page.Width / kMillimetresPerPoint, page.Height / kMillimetresPerPoint, +kFonts,
                            DictionaryOf(used)),
                content_);
    const std::uint32_t object = kept.Object;
    if (kept_.size() > kKeptDrawings)
        std::erase_if(kept_, [](const auto& entry) { return entry.second.Drawing.expired(); });
    return object;
}

void TPdfWriter::AppendDrawing(const TDrawing& drawing, float pageHeight, std::set<std::uint32_t>& used) {
    AppendFrames(content_, drawing, pageHeight);
    for (const TPaperPicture& picture : drawing.Pictures) {
        const std::uint32_t object = ObjectOf(picture.Image);
        used.insert(object);
        content_ += "q ";
        AppendPoints(content_, picture.Place.Width);
        content_ += "0 0 ";
        AppendPoints(content_, picture.Place.Height);
        AppendPoints(content_, picture.Place.X);
        AppendPoints(content_, pageHeight - picture.Place.Bottom());
        content_ += fmt::format("cm /X{} Do Q\n", object);
    }
    AppendLines(content_, drawing, pageHeight);
    AppendTexts(content_, drawing, pageHeight);
}

std::uint32_t TPdfWriter::ObjectOf(const std::shared_ptr<const TPaperImage>& image) {
    const auto [entry, isNew] = images_.try_emplace(image, 0);
    if (isNew) {
        entry->second = NewObject();
        WriteStream(entry->second,
                    fmt::format("/Type/XObject/Subtype/Image/Width {}/Height {}/ColorSpace/DeviceRGB"
                                "/BitsPerComponent 8",
                                image->Width, image->Height),
                    image->Pixels);
    }
    return entry->second;
}

void TPdfWriter::EndGroup() {
    std::string kids;
    for (const std::uint32_t page : pagesOfGroup_)
        kids += fmt::format("{} 0 R ", page);
    WriteObject(group_, fmt::format("<</Type/Pages/Parent {} 0 R/Count {}/Kids[{}]>>", +kPages,
                                    pagesOfGroup_.size(), kids));
    groups_.push_back(group_);
    countsOfGroups_.push_back(static_cast<std::uint32_t>(pagesOfGroup_.size()));
    group_ = 0;
    pagesOfGroup_.clear();
}

void TPdfWriter::WriteBookmarks(std::uint32_t outlines) {
    // The items get consecutive objects in their order.
    const std::uint32_t first = static_cast<std::uint32_t>(offsets_.size()) + 1;
    const auto count = static_cast<std::uint32_t>(bookmarks_.size());
    for (std::uint32_t i = 0; i < count; ++i)
        NewObject();
    struct TItem {
        std::uint32_t Parent, Previous, Next, First, Last, Count;
    };
    std::vector<TItem> items(count + 1, {outlines, 0, 0, 0, 0, 0}); // the last stands for the whole
    TItem& root = items.back();
    std::uint32_t top = count; // the open item of level 0
    for (std::uint32_t i = 0; i < count; ++i) {
        const bool below = bookmarks_[i].Level > 0 && top != count;
        TItem& parent = below ? items[top] : root;
        items[i].Parent = below ? first + top : outlines;
        items[i].Previous = parent.Last;
        if (parent.Last != 0)
            items[parent.Last - first].Next = first + i;
        else
            parent.First = first + i;
        parent.Last = first + i;
        ++parent.Count;
        if (!below)
            top = i;
    }
    const auto link = [](const char* name, std::uint32_t object) {
        return object != 0 ? fmt::format("/{} {} 0 R", name, object) : std::string();
    };
    for (std::uint32_t i = 0; i < count; ++i) {
        const TItem& item = items[i];
        const std::string children = item.Count != 0 ? fmt::format("/Count -{}", item.Count) : std::string();
        WriteObject(first + i,
                    fmt::format("<</Title{}/Parent {} 0 R{}{}{}{}{}/Dest[{} 0 R/Fit]>>",
                                TextString(bookmarks_[i].Title), item.Parent, link("Prev", item.Previous),
                                link("Next", item.Next), link("First", item.First), link("Last", item.Last),
                                children, bookmarks_[i].Page));
    }
    WriteObject(outlines, fmt::format("<</Type/Outlines{}{}/Count {}>>", link("First", root.First),
                                      link("Last", root.Last), root.Count));
}

void TPdfWriter::Put(std::string_view bytes) {
    out_.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    written_ += bytes.size();
}

} // namespace conferix
