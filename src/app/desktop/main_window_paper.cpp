// What the main window puts on paper, and the program's notices.
#include "app/desktop/main_window.h"

#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/document_tab.h"
#include "app/desktop/guide_print_dialog.h"
#include "app/desktop/listing_dialog.h"
#include "app/desktop/notice_bell.h"
#include "app/desktop/notices_dialog.h"
#include "app/desktop/patience.h"
#include "app/tiss_file.h"
#include "data/database_tuss.h"

namespace conferix {

void TMainWindow::ShowGuides(std::optional<std::pair<int, int>> place) {
    WithResult([&](const TFileResult& result) {
        try {
            std::optional<std::size_t> errors;
            if (result.Validation.Verified)
                errors = result.Validation.Counts.Failures();
            std::unique_ptr<TGuidePages> pages;
            {
                TPatience patience(this, QStringLiteral("Preparando as guias..."), TPatience::TStop::No);
                // A tree of its own: the one of the messages is another's when the file is validated again.
                pages = patience.Await(
                    [file = TTissFile(result.Text, CurrentTab()->Controller().Encoding()), errors] {
                        return std::make_unique<TGuidePages>(file.Load(), errors,
                                                             TDatabaseTuss().DatabaseFileName());
                    });
            }
            if (pages->Guides().empty())
                return ShowError(this, QStringLiteral("Este arquivo não tem guias a imprimir; são impressos "
                                                      "lotes de guias."));
            std::optional<TBoxPlace> box;
            if (place)
                box = pages->FindBox(place->first, place->second);
            TFGuidePrint dialog(std::move(pages), CurrentTab()->FileName(), this);
            if (box)
                dialog.ShowBox(*box);
            dialog.exec();
        } catch (const ENoBox& error) {
            ShowNotice(this, QStringLiteral("Mostrar no formulário"), error.what());
        } catch (const std::exception& error) { // no XML, or a template of the user's that is wrong
            ShowError(this, ToQt(error.what()));
        }
    });
}

void TMainWindow::ShowListings() {
    WithResult([this](const TFileResult& result) {
        TFListings(TTissFile(result.Text, CurrentTab()->Controller().Encoding()), CurrentTab()->FileName(),
                   this)
            .exec();
    });
}

void TMainWindow::ShowNotices() {
    try {
        TFNotices(this).exec();
    } catch (const std::exception& error) { // there is no data folder
        ShowError(this, ToQt(error.what()));
    }
    bell_->Count();
}

} // namespace conferix
