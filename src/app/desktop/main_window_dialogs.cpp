// What the main window opens beside its files: dialogs, help, reports.
#include "app/desktop/main_window.h"

#include "app/desktop/dialogs/batch_dialog.h"
#include "app/desktop/dialogs/configuracao_validacoes_dialog.h"
#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/dialogs/file_choice.h"
#include "app/desktop/dialogs/history_dialog.h"
#include "app/desktop/dialogs/rule_help.h"
#include "app/desktop/document_tab.h"
#include "app/desktop/file_session.h"
#include "app/desktop/message_panel.h"
#include "app/desktop/notice_bell.h"
#include "app/desktop/xml_editor.h"
#include "app/installation.h"
#include "app/notices.h"
#include "app/program_versions.h"

#include <QApplication>
#include <QDir>
#include <QDockWidget>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QScreen>
#include <QShortcut>
#include <QStackedWidget>
#include <QTabWidget>

#include <algorithm>

namespace conferix {

namespace {

constexpr int kHelpWidth = 430; ///< beside the text

/// A file with faults that comes with the program, beside its other shared files or in its source; empty
/// where there is none.
QString ExampleFile() {
    const QDir program(QApplication::applicationDirPath());
    for (const char* folder : {"../share/conferix/exemplos", "../../../exemplos"}) {
        const QFileInfo example(program.filePath(QString::fromLatin1(folder)) +
                                QStringLiteral("/spsadt-3.05.00-valores-errados.xml"));
        if (example.exists())
            return example.canonicalFilePath();
    }
    return {};
}

} // namespace

void TMainWindow::OpenFolder() {
    const QString folder = AskForFolder(this, QStringLiteral("Abrir pasta"));
    if (!folder.isEmpty())
        OpenFiles({folder});
}

void TMainWindow::OpenExample() {
    const QString example = ExampleFile();
    if (example.isEmpty())
        ShowError(this, QStringLiteral("O exemplo não está instalado."));
    else
        OpenFiles({example});
}

void TMainWindow::FillRecentFiles() {
    recent_->clear();
    for (const std::string& file : history_->RecentFiles()) {
        const QString name = ToQt(file);
        recent_->addAction(QString(name).replace(QLatin1Char('&'), QStringLiteral("&&")), this, [this, name] {
            if (!QFileInfo::exists(name))
                history_->Forget(FromQt(name));
            OpenFiles({name});
        });
    }
    if (recent_->isEmpty())
        recent_->addAction(QStringLiteral("Nenhum arquivo"))->setEnabled(false);
}

void TMainWindow::NoteValidated(const TDocumentTab& tab, const TValidateArgs& result) {
    TValidationRecord record;
    record.File = FromQt(tab.FileName());
    record.Versao = tab.Controller().VersaoTiss();
    if (result.Verified)
        record.Valid = result.Counts.Failures() == 0;
    record.Errors = static_cast<std::int64_t>(result.Counts.Failures());
    record.Warnings = static_cast<std::int64_t>(result.Counts.Warnings());
    history_->NoteValidated(record);
}

void TMainWindow::ValidateFolder() {
    const QString folder = AskForFolder(this, QStringLiteral("Validar pasta"));
    if (folder.isEmpty())
        return;
    try {
        auto batch = std::make_unique<TBatchValidation>(
            TFileValidator(InstalledSchemas(), InstalledTerminology(), EnabledRules()),
            ExpandFolders({FromQt(folder)}, true));
        auto* dialog = new TFBatchValidation(std::move(batch), this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        connect(dialog, &TFBatchValidation::OpenRequested, this,
                [this](const QString& file) { OpenFiles({file}); });
        connect(dialog, &TFBatchValidation::Validated, this, [this, dialog, folder](std::size_t row) {
            const TBatchRow& done = dialog->Batch().Rows()[row];
            TValidationRecord record;
            record.File = done.File;
            record.Versao = done.Versao;
            if (done.Verdict && *done.Verdict != TVerdict::NotVerified)
                record.Valid = *done.Verdict == TVerdict::Valid;
            record.Errors = static_cast<std::int64_t>(done.Errors);
            record.Warnings = static_cast<std::int64_t>(done.Warnings);
            history_->NoteValidated(record);
            if (dialog->Batch().Finished())
                bell_->Note([&](TNoticeBox& box) {
                    const TReportTotals& totals = dialog->Batch().Totals();
                    NoteBatch(box, {FromQt(QDir(folder).dirName()), totals.Of(TVerdict::Valid),
                                    totals.Of(TVerdict::Invalid), totals.Of(TVerdict::NotVerified)});
                });
        });
        dialog->show();
        dialog->Start();
    } catch (const std::exception& error) {
        ShowError(this, ToQt(error.what()));
    }
}

void TMainWindow::ValidateAll() {
    for (int index = 0; index < tabs_->count(); ++index)
        qobject_cast<TDocumentTab*>(tabs_->widget(index))->Validate();
}

void TMainWindow::ShowRules(const QString& rule) {
    if (TFConfiguracaoValidacoes::Abrir(this, FromQt(rule)))
        ValidateAll();
}

void TMainWindow::ShowSettings(TSettingsPage page) {
    if (TFConfiguracoes::Abrir(this, page))
        ValidateAll();
    bell_->NoteInstalled();
}

void TMainWindow::ShowHistory() {
    TFHistory dialog(*history_, this);
    dialog.exec();
    if (!dialog.Chosen().isEmpty())
        OpenFiles({dialog.Chosen()});
}

TRuleHelp& TMainWindow::OpenHelp() {
    if (helpDock_ == nullptr) {
        help_ = new TRuleHelp;
        helpDock_ = new QDockWidget(help_->windowTitle(), this);
        helpDock_->setObjectName(QStringLiteral("ajuda"));
        helpDock_->setWidget(help_);
        addDockWidget(Qt::RightDockWidgetArea, helpDock_);
        const QRect there = screen()->availableGeometry();
        if (pages_->minimumSizeHint().width() + kHelpWidth <= there.width()) {
            resizeDocks({helpDock_}, {kHelpWidth}, Qt::Horizontal);
        } else { // no room beside the text
            helpDock_->setFloating(true);
            helpDock_->resize(there.width() / 2, there.height() * 2 / 3);
            helpDock_->move(there.center().x(), there.top());
        }
        restoreDockWidget(helpDock_);
        auto* const escape = new QShortcut(QKeySequence(Qt::Key_Escape), helpDock_);
        escape->setContext(Qt::WidgetWithChildrenShortcut);
        connect(escape, &QShortcut::activated, this, &TMainWindow::CloseHelp);
    }
    if (QWidget* const focus = QApplication::focusWidget();
        focus != nullptr && !helpDock_->isAncestorOf(focus))
        beforeHelp_ = focus;
    helpDock_->show();
    helpDock_->raise();
    if (helpDock_->isFloating())
        help_->activateWindow();
    help_->Page()->setFocus(Qt::OtherFocusReason);
    return *help_;
}

void TMainWindow::CloseHelp() {
    if (helpDock_->isFloating())
        activateWindow();
    helpDock_->close();
    if (beforeHelp_ != nullptr && beforeHelp_->isVisible())
        beforeHelp_->setFocus(Qt::OtherFocusReason);
}

void TMainWindow::ShowHelp(const QString& rule) {
    if (!OpenHelp().ShowRule(FromQt(rule)))
        ShowError(this, QStringLiteral("Não há texto sobre a regra %1.").arg(rule));
}

void TMainWindow::ShowHelpOnMessage() {
    const TDocumentTab* tab = CurrentTab();
    const auto message = tab != nullptr ? tab->MessageAtCaret() : std::nullopt;
    TRuleHelp& help = OpenHelp();
    if (message)
        help.ShowMessage(*tab->Messages()->Messages()[*message]);
}

void TMainWindow::GoRound(bool forwards) {
    QWidget* const help = helpDock_ != nullptr && helpDock_->isVisible() ? help_->Page() : nullptr;
    if (TDocumentTab* tab = CurrentTab())
        tab->GoRound(forwards, help);
    else if (help != nullptr)
        help->setFocus(Qt::TabFocusReason);
}

void TMainWindow::WithResult(const std::function<void(const TFileResult&)>& action) {
    const TDocumentTab* tab = CurrentTab();
    const auto result = tab != nullptr ? tab->Result() : std::nullopt;
    if (result)
        action(*result);
    else
        ShowError(this, QStringLiteral("Valide o arquivo antes (F5)."));
}

void TMainWindow::ShowAbout() {
    QString text = QStringLiteral("Conferix %1\n\n").arg(QStringLiteral(CONFERIX_VERSAO));
    for (const auto& [what, which] : ProgramVersions(InstalledSchemas()))
        text += ToQt(what) + QStringLiteral(": ") + ToQt(which) + QLatin1Char('\n');
    text += QStringLiteral("\nConfere arquivos XML do padrão TISS.\nLicença: GPL-3.0-or-later. Ajuda: %1")
                .arg(QLatin1String(kSupportAddress));
    QMessageBox box(QMessageBox::NoIcon, QStringLiteral("Sobre o Conferix"), text, QMessageBox::NoButton,
                    this);
    box.setIconPixmap(windowIcon().pixmap(QSize(64, 64), devicePixelRatioF()));
    box.setTextFormat(Qt::PlainText);
    box.addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
    box.exec();
}

} // namespace conferix
