// Where everything of a form stands on its page, before any guide is printed on it.
#pragma once

#include "forms/form_template.h"
#include "paper/drawing.h"
#include "paper/text_fit.h"

#include <memory>
#include <string_view>
#include <vector>

namespace conferix {

/// A box with its place; `Value` is what its value may fill.
struct TPlacedBox {
    const TFormBox* Box;
    TPaperRect Frame;
    TPaperRect Value;
    TTextStyle Style;
    bool LastPage = false;
};

struct TPlacedTable {
    const TFormTable* Table;
    float ItemHeight;
    std::vector<TPlacedBox> Columns; ///< of all bands, at the place of the first item
};

/// The page of a form in a version of the standard. Refers to the template, which has to outlive it.
struct TFormGeometry {
    float Width = 0;
    float Height = 0;
    std::shared_ptr<const TDrawing> Form; ///< frames, bars and labels
    std::vector<TPlacedBox> Boxes;        ///< but for those of tables; the guide's number is the first
    std::vector<TPlacedTable> Tables;
    TPaperRect Sheet;  ///< of "Folha 1/2"
    TPaperRect Footer; ///< below the frame
};

/// Lays out a form. `blank`: with combs to write into. Raises EInvalidForm for a form that its page does not
/// hold.
TFormGeometry LayOutForm(const TFormTemplate& form, const TFormVariant& variant, std::string_view version,
                         bool blank);

} // namespace conferix
