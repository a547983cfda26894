// What printing guides on their forms needs of a file and of what is installed.
#pragma once

#include "forms/form_printer.h"
#include "model/arquivo_tiss.h"
#include "paper/pdf_writer.h"

#include <filesystem>
#include <iosfwd>
#include <string_view>
#include <vector>

namespace conferix {

/// The billing guides of a file in the order of the document; none of a file that is no lot of guides.
std::vector<TFormGuide> FormGuidesOf(const IArquivoTiss& file);

/// What codes stand for: in the domain tables that come with the program, else in a terminology. For one
/// thread. Raises EFileNotRead.
TTermText FormTermsOf(const std::filesystem::path& terminology);

/// Printed guides as a PDF document with a bookmark a guide, below it one an annex.
class TGuidePdf {
  public:
    explicit TGuidePdf(std::ostream& out, std::string_view title = "Guias TISS") : pdf_(out, title) {}

    /// What follows is of another file.
    void BeginFile() { last_ = nullptr; }
    /// Pages in the order in which they were printed; an empty form gets no bookmark.
    void Add(const TFormPage& page);
    /// To be called once, after at least one page.
    void Finish() { pdf_.Finish(); }

  private:
    TPdfWriter pdf_;
    const TXmlNode* last_ = nullptr; ///< the guide of the last bookmark of the file
};

} // namespace conferix
