// The guides of one file on their forms, page by page as they are looked at.
#pragma once

#include "app/guide_forms.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace conferix {

/// What of a file is to be printed, and how.
struct TGuideChoice {
    std::vector<bool> Guides; ///< by their place in the file; empty: all
    std::string Form;         ///< name of a form; empty: all that a guide has
    bool Terms = false;       ///< codes with what they stand for
    bool ErrorsBelow = true;  ///< the number of errors of the file below the frame
};

/// Where what somebody looks for stands on the pages.
struct TBoxPlace {
    std::size_t Page = 0;           ///< 0-based
    std::vector<TPaperRect> Frames; ///< of the boxes; one or more
    std::string Text;               ///< "42 - Valor Total (R$)"
};

/// A place of a file has no box on a form; the text says why.
class ENoBox : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The pages of a file's guides. A page is laid out when it is asked for. For one thread; uses the document
/// alone.
class TGuidePages {
  public:
    /// Guides of a file, all of them chosen. `errors`: how many the file has, where that is known. Raises
    /// EInvalidForm, EFileNotRead.
    TGuidePages(std::shared_ptr<const IArquivoTiss> file, std::optional<std::size_t> errors,
                std::filesystem::path terminology);

    const std::vector<TFormGuide>& Guides() const { return guides_; }
    /// "10000001 - Guia de Consulta"
    std::string GuideTitle(std::size_t guide) const;
    /// Names and titles of the forms that the guides are printed on.
    const std::vector<std::pair<std::string, std::string>>& Forms() const { return forms_; }
    std::optional<std::size_t> Errors() const { return errors_; }
    /// What the file has beside these guides that is not printed, in sentences; empty where there is nothing.
    std::vector<std::string> NotPrinted() const;

    const TGuideChoice& Choice() const { return choice_; }
    /// Raises what the terminology raises, where codes are wanted with what they stand for.
    void Choose(TGuideChoice choice);

    /// Pages of the guides that are chosen.
    std::size_t Count() const { return sheets_.size(); }
    /// How many guides these are; fewer than were chosen where some lack the form.
    std::size_t PrintedGuides() const { return printed_; }
    /// Page 0-based. Valid until the next one is asked for.
    const TFormPage& Page(std::size_t page);
    /// The guide of a page, by its place in the file.
    std::size_t GuideOf(std::size_t page) const;
    /// Page on which a guide begins; nothing for one that is not printed.
    std::optional<std::size_t> FirstPageOf(std::size_t guide) const;
    /// The same, or the page of the next one that is printed; the last page where there is none, 0 without
    /// pages.
    std::size_t NearestPageOf(std::size_t guide) const;
    /// "Guia 10000001, Guia de Consulta, folha 1 de 2"
    std::string PageTitle(std::size_t page) const;

    /// The box of the element at a place (1-based) of the text, or beside it in the line; of an element that
    /// holds others the boxes of these. All guides and forms are chosen for it. Raises ENoBox.
    TBoxPlace FindBox(std::int64_t line, std::int64_t linePos);

  private:
    std::shared_ptr<const IArquivoTiss> file_;
    std::optional<std::size_t> errors_;
    std::filesystem::path terminology_;
    TFormSet templates_;
    std::vector<TFormGuide> guides_;
    std::vector<std::pair<std::string, std::string>> forms_;
    TGuideChoice choice_;
    TFormPrinter printer_;
    std::vector<TFormSheet> all_;    ///< pages of all guides on all forms
    std::vector<TFormSheet> sheets_; ///< those that are chosen
    std::size_t printed_ = 0;
};

} // namespace conferix
