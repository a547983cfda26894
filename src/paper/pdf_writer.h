// Pages as a PDF file, written while they come: memory does not grow with their number.
#pragma once

#include "paper/drawing.h"

#include <cstdint>
#include <iosfwd>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// Writes a PDF 1.5 file. Text is set in the standard faces Helvetica and Helvetica-Bold, which every viewer
/// has, in the characters of Windows-1252 ("?" for others), so that it can be searched and copied. Equal
/// calls give equal bytes. The stream's state tells whether writing succeeded.
class TPdfWriter {
  public:
    /// `title`: of the document, shown by viewers.
    TPdfWriter(std::ostream& out, std::string_view title);
    TPdfWriter(const TPdfWriter&) = delete;
    TPdfWriter& operator=(const TPdfWriter&) = delete;
    ~TPdfWriter();

    /// A bookmark that leads to the page that is added next; `level` 0 or 1, below the last one of level 0.
    void AddBookmark(std::string_view title, int level = 0);
    void AddPage(const TPaperPage& page);
    /// Writes what stands at the end of the file. To be called once, after at least one page.
    void Finish();

  private:
    class TDeflater;
    struct TBookmark {
        std::string Title;
        int Level;
        std::uint32_t Page; ///< object
    };
    /// What a common drawing became.
    struct TKept {
        std::weak_ptr<const TDrawing> Drawing;
        float PageHeight;
        std::uint32_t Object;
    };

    std::uint32_t NewObject();
    void Begin(std::uint32_t object);
    void WriteObject(std::uint32_t object, std::string_view content);
    void WriteStream(std::uint32_t object, std::string_view dictionary, std::string_view content);
    std::uint32_t ObjectOf(const std::shared_ptr<const TDrawing>& drawing, const TPaperPage& page);
    std::uint32_t ObjectOf(const std::shared_ptr<const TPaperImage>& image);
    /// Adds a drawing to the content; `used`: what it shows of other objects.
    void AppendDrawing(const TDrawing& drawing, float pageHeight, std::set<std::uint32_t>& used);
    void EndGroup();
    void WriteBookmarks(std::uint32_t outlines);
    void Put(std::string_view bytes);

    std::ostream& out_;
    std::unique_ptr<TDeflater> deflater_;
    std::string content_;
    std::uint64_t written_ = 0;
    std::vector<std::uint64_t> offsets_; ///< of the objects, from 1 on
    std::map<const TDrawing*, TKept> kept_;
    std::map<std::shared_ptr<const TPaperImage>, std::uint32_t> images_;
    std::vector<std::uint32_t> groups_; ///< nodes of the page tree
    std::uint32_t group_ = 0;           ///< the open one; 0: none
    std::vector<std::uint32_t> pagesOfGroup_;
    std::vector<std::uint32_t> countsOfGroups_;
    std::vector<TBookmark> bookmarks_;
    std::size_t pendingBookmarks_ = 0; ///< those at the end that still lead nowhere
};

} // namespace conferix
