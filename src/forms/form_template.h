// Forms as data: what a template file says. The notation is described in docs/formularios.md.
#pragma once

#include "paper/paper_image.h"
#include "paper/text_fit.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace conferix {

/// A template that cannot be understood; the text names file and line.
class EInvalidForm : public std::runtime_error {
  public:
    /// Line 1-based.
    EInvalidForm(const std::string& file, int line, const std::string& reason);
};

/// Versions of the standard from one to another, both included; an empty end is open.
struct TFormVersions {
    std::string First;
    std::string Last;

    bool Contains(std::string_view version) const;
};

/// How a value is printed.
enum class TFormFormat : std::uint8_t {
    Text,
    Integer,
    Quantity, ///< up to four decimals
    Factor,   ///< two decimals
    Money,
    Date,
    Time,
    DateTime,
    YesNo,
    Code,
    Line, ///< number of the line, where the file does not name one
    Signature
};

/// What several paths of a box mean.
enum class TFormCombination : std::uint8_t {
    First, ///< the first that a guide has is printed
    All,   ///< all, with " - " between them
    Sum
};

/// Local names from a guide or an item down; ".." goes up.
using TFormPath = std::vector<std::string>;

/// A box, or a column of a table.
struct TFormBox {
    std::string Number; ///< empty for none
    std::string Label;
    float Width = 0; ///< percent of the frame
    TFormFormat Format = TFormFormat::Text;
    int Size = 0;                   ///< characters, for the combs of an empty form; 0: none
    std::vector<std::string> Codes; ///< tables that its codes are of
    std::vector<TFormPath> Paths;   ///< none: always empty
    TFormCombination Combination = TFormCombination::First;
    int Occurrence = 1;          ///< of elements that repeat, 1-based; 0: all, one after the other
    std::vector<TFormPath> Term; ///< of table and code whose term fills the box where the file has none
    TFormVersions Versions;
    int SourceLine = 0;
};

/// A grey bar with a title.
struct TFormSection {
    std::string Title;
};
struct TFormRow {
    float Height = 0;      ///< millimetres
    bool LastPage = false; ///< filled on the last page of a guide alone
    bool Grey = false;
    std::vector<TFormBox> Boxes;
};
/// Repeated lines. What goes beyond a page's goes to further pages.
struct TFormTable {
    TFormPath Items;  ///< of the elements that are lines; empty: lines that nobody fills
    int Lines = 0;    ///< a page
    float Height = 0; ///< of a print line, millimetres
    int SourceLine = 0;
    /// Print lines of an item; the labels of the first stand above the table, those of others in each item.
    std::vector<std::vector<TFormBox>> Bands;
};
/// Places for a date and a signature each, in two rows.
struct TFormSeries {
    std::string Number;
    std::string Label;
    int Places = 0;
    float Height = 0;
};
struct TFormText {
    std::string Text;
    float Height = 0;
};
struct TFormImage {
    std::shared_ptr<const TPaperImage> Image;
    float Height = 0; ///< the width follows from it
    TAcross Across = TAcross::Left;
};
using TFormBlock = std::variant<TFormSection, TFormRow, TFormTable, TFormSeries, TFormText, TFormImage>;

/// The form as it is in some versions.
struct TFormVariant {
    TFormVersions Versions;
    bool Landscape = false;
    std::string Title;
    std::shared_ptr<const TPaperImage> Logo; ///< at the left of the header; null: none
    std::string Operator;                    ///< beside the logo; empty: nothing
    TFormBox GuideNumber;
    std::vector<TFormBlock> Blocks;
    int SourceLine = 0;
};

/// A form.
struct TFormTemplate {
    std::string Name;     ///< of the file, without extension
    std::string FileName; ///< for messages
    std::string Title;
    std::vector<std::string> Guides; ///< kinds of guide, as "spsadt"
    TFormPath Needs;                 ///< an annex is printed where a guide has this element; empty: no annex
    int NeedsSourceLine = 0;
    std::vector<TFormVariant> Variants;

    bool IsAnnex() const { return !Needs.empty(); }
    /// Null where the form does not exist in a version.
    const TFormVariant* VariantFor(std::string_view version) const;
};

/// Reads a template. `name`: of the file without extension; pictures are looked for in the file's folder.
/// Raises EInvalidForm.
std::shared_ptr<const TFormTemplate> ParseForm(std::string_view text, const std::string& name,
                                               const std::string& fileName);

/// Forms, those of guides before annexes.
using TFormSet = std::vector<std::shared_ptr<const TFormTemplate>>;

/// Refuses a template with a path that no guide of its layout's versions has. Raises EInvalidForm.
void CheckPaths(const TFormTemplate& form);

/// The templates of a folder (*.txt), each replaced by the file of the same name in another folder, which may
/// be missing and may hold further ones; the paths of these are checked. Raises EInvalidForm, EFileNotRead.
TFormSet LoadForms(const std::filesystem::path& delivered, const std::filesystem::path& replacing);
/// Those that come with the program, and the user's.
TFormSet InstalledForms();

} // namespace conferix
