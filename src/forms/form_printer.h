// Guides on their forms, page by page.
#pragma once

#include "forms/form_geometry.h"
#include "forms/form_template.h"
#include "paper/drawing.h"
#include "xml/xml_node.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

/// A guide to be printed.
struct TFormGuide {
    const TXmlNode* Node;
    std::string_view Kind; ///< as templates name it, "spsadt"
    std::string Number;    ///< by which people know it
};

/// Where a value came to stand. A box that is made of several elements has several of these.
struct TFormPlace {
    const TFormBox* Box;
    TPaperRect Frame;
    const TXmlNode* Node; ///< of the value, or of a part of it
};

/// A printed page; valid until the next one is made.
struct TFormPage {
    TPaperPage Paper;
    std::vector<TFormPlace> Places;    ///< of the page's values
    const TFormGuide* Guide = nullptr; ///< null on an empty form
    const TFormTemplate* Form = nullptr;
    std::size_t Sheet = 0; ///< of the guide's pages of this form, from 1 on
};
using TFormSink = std::function<void(const TFormPage&)>;

/// A page that is to be printed.
struct TFormSheet {
    const TFormGuide* Guide;
    const TFormTemplate* Form;
    const TFormGeometry* Geometry;
    std::size_t Sheet;  ///< of the guide's pages of this form, from 1 on
    std::size_t Sheets; ///< how many these are
};

/// What came of printing guides.
struct TFormPrinted {
    std::size_t Pages = 0;
    std::vector<const TFormGuide*> Without; ///< guides that have no such form, or none at all
};

/// Those of the guides that none of these pages is of. Pages of a guide stand together, in the order of the
/// guides.
std::vector<const TFormGuide*> GuidesWithoutPages(std::span<const TFormGuide> guides,
                                                  std::span<const TFormSheet> sheets);

/// What a code of a table stands for; empty where it is not known.
using TTermText = std::function<std::string(std::string_view table, std::string_view code)>;

struct TFormOptions {
    std::string Only;                  ///< name of a form; empty: all that a guide has
    TTermText Terms;                   ///< codes are printed with their text, where given
    std::optional<std::size_t> Errors; ///< told below the frame, unless 0
};

/// Prints guides. For one thread.
class TFormPrinter {
  public:
    TFormPrinter(TFormSet forms, TFormOptions options)
        : forms_(std::move(forms)), options_(std::move(options)) {}

    const TFormSet& Forms() const { return forms_; }
    void SetOptions(TFormOptions options) {
        options_ = std::move(options);
        common_ = {};
    }
    void SetErrors(std::optional<std::size_t> errors) { options_.Errors = errors; }

    /// Prints guides of one file one after another, each with its annexes, and hands over each page. Raises
    /// EInvalidForm.
    TFormPrinted Print(std::span<const TFormGuide> guides, std::string_view version, const TFormSink& sink);
    /// The pages that these guides take, to be printed one by one as long as guides and printer live. Raises
    /// EInvalidForm.
    std::vector<TFormSheet> Sheets(std::span<const TFormGuide> guides, std::string_view version);
    /// Prints a page of these; those of a guide one after another are printed faster. `number` (from 1 on)
    /// and `pages` stand at its foot. The page is valid until the next one is made.
    const TFormPage& PrintSheet(const TFormSheet& sheet, std::size_t number, std::size_t pages);
    /// Prints an empty form to be filled in by hand. Raises EInvalidForm.
    void PrintBlank(const TFormTemplate& form, const TFormVariant& variant, std::string_view version,
                    const TFormSink& sink);

  private:
    /// What all pages of a guide have in common.
    struct TCommon {
        const TFormGuide* Guide = nullptr;
        const TFormGeometry* Geometry = nullptr;
        std::shared_ptr<TDrawing> Head;
        std::vector<TFormPlace> Places;
        std::vector<std::vector<const TXmlNode*>> Rows; ///< of each table
    };

    const TFormGeometry& Geometry(const TFormTemplate& form, const TFormVariant& variant,
                                  std::string_view version);
    const TCommon& CommonOf(const TFormSheet& sheet);
    void AddValues(const std::vector<TPlacedBox>& boxes, const TXmlNode& guide, bool lastPage,
                   TDrawing& drawing, std::vector<TFormPlace>& places) const;
    void AddLines(const TPlacedTable& placed, std::span<const TXmlNode* const> rows, std::size_t first,
                  TFormPage& page) const;
    /// Goes on from the number of the last item. `line` 0-based.
    static std::size_t NumberOfEmptyLine(const TFormBox& box, std::span<const TXmlNode* const> rows,
                                         std::size_t line);
    void AddFooter(const TFormGeometry& geometry, std::size_t number, std::size_t pages,
                   TDrawing& drawing) const;
    /// The text of a box, and the elements that it comes from; those of a sum have boxes of their own.
    struct TBoxValue {
        std::string Text = {};
        const TXmlNode* Node = nullptr;           ///< the first of them
        std::vector<const TXmlNode*> Others = {}; ///< the further ones
    };
    /// `terms`: what codes are printed with.
    static TBoxValue ValueOfBox(const TFormBox& box, const TXmlNode& node, const TTermText& terms);
    static void AddPlaces(const TFormBox& box, const TPaperRect& frame, const TBoxValue& value,
                          std::vector<TFormPlace>& places);
    /// Prints a value; a code whose text its box does not hold legibly is printed alone.
    void AddValue(const TFormBox& box, const TXmlNode& node, const TPaperRect& area, const TTextStyle& style,
                  std::string_view text, TDrawing& drawing) const;

    TFormSet forms_;
    TFormOptions options_;
    std::map<std::pair<const TFormVariant*, std::string>, TFormGeometry> geometries_;
    TCommon common_; ///< of the guide that was printed last
    TFormPage page_;
};

} // namespace conferix
