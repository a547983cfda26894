#include "app/desktop/main_window.h"

#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/document_tab.h"
#include "app/desktop/notice_bell.h"
#include "app/desktop/patience.h"
#include "app/desktop/theme.h"
#include "app/desktop/welcome_page.h"
#include "app/desktop/window_settings.h"
#include "app/desktop/xml_editor.h"
#include "app/installation.h"
#include "app/notices.h"
#include "platform/platform.h"

#include <QAction>
#include <QCloseEvent>
#include <QDirIterator>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QScreen>
#include <QSettings>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTabWidget>

namespace conferix {

namespace {

/// The TISS files of a folder and those below it.
QStringList FilesOf(const QString& folder) {
    QStringList files;
    QDirIterator found(folder, {QStringLiteral("*.xml"), QStringLiteral("*.xte")}, QDir::Files,
                       QDirIterator::Subdirectories);
    while (found.hasNext())
        files << found.next();
    files.sort();
    return files;
}

/// A folder of more files is not opened without asking.
constexpr qsizetype kManyFiles = 20;
constexpr QSize kFirstSize(1280, 720);
/// Names of changed files that a question lists.
constexpr qsizetype kNamesAsked = 15;

} // namespace

TMainWindow::TMainWindow()
    : pages_(new QStackedWidget), tabs_(new QTabWidget), welcome_(new TWelcomePage),
      history_(std::make_unique<TFileHistory>(TDatabase(), [this](const std::string& reason) {
          statusBar()->showMessage(ToQt(reason), 20'000);
      })) {
    setWindowTitle(QStringLiteral("Conferix"));
    setWindowIcon(ProgramIcon());
    setAcceptDrops(true);
    tabs_->setObjectName(QStringLiteral("arquivos"));
    tabs_->setAccessibleName(QStringLiteral("Arquivos abertos"));
    tabs_->setTabsClosable(true);
    tabs_->setMovable(true);
    tabs_->setDocumentMode(true);
    pages_->addWidget(welcome_);
    pages_->addWidget(tabs_);
    setCentralWidget(pages_);
    BuildMenus();
    BuildStatusBar();
    controllers_.AtachObserver([this](TControllerOperation operation, const std::string& name,
                                      const auto& controller) { OnController(operation, name, controller); });
    connect(tabs_, &QTabWidget::tabCloseRequested, this, &TMainWindow::CloseTab);
    connect(tabs_, &QTabWidget::currentChanged, this, &TMainWindow::UpdateActions);
    connect(welcome_, &TWelcomePage::OpenWanted, this, &TMainWindow::ChooseFiles);
    connect(welcome_, &TWelcomePage::ExampleWanted, this,
            [this] { findChild<QAction*>(QStringLiteral("exemplo"))->trigger(); });
    RestoreLayout();
    UpdateActions();
}

TMainWindow::~TMainWindow() = default;

void TMainWindow::BuildStatusBar() {
    const auto label = [this](const char* name, const char* accessible, int stretch) {
        auto* made = new QLabel;
        made->setObjectName(QString::fromLatin1(name));
        made->setAccessibleDescription(QString::fromUtf8(accessible));
        statusBar()->addPermanentWidget(made, stretch);
        return made;
    };
    state_ = label("estado", "Estado do arquivo", 1);
    kind_ = label("tipo", "Tipo e versão do arquivo", 0);
    encoding_ = label("codificacao", "Codificação do arquivo", 0);
    position_ = label("posicao", "Posição no texto", 0);
    bell_ = new TNoticeBell;
    statusBar()->addPermanentWidget(bell_);
    connect(bell_, &QToolButton::clicked, this, &TMainWindow::ShowNotices);
    bell_->NoteInstalled();
}

TDocumentTab* TMainWindow::TabAt(int index) const {
    return qobject_cast<TDocumentTab*>(tabs_->widget(index));
}

TDocumentTab* TMainWindow::CurrentTab() const {
    return TabAt(tabs_->currentIndex());
}

int TMainWindow::IndexOf(const IValidadorController& controller) const {
    for (int index = 0; index < tabs_->count(); ++index)
        if (&TabAt(index)->Controller() == &controller)
            return index;
    return -1;
}

void TMainWindow::OpenFiles(const QStringList& names) {
    QStringList files;
    for (const QString& name : names) {
        if (!QFileInfo(name).isDir()) {
            files << name;
            continue;
        }
        const QStringList found = FilesOf(name);
        if (found.isEmpty())
            ShowError(this, QStringLiteral("A pasta \"%1\" não contém arquivos *.xml nem *.xte.").arg(name));
        if (found.size() <= kManyFiles ||
            AskYesNo(this, QStringLiteral("Abrir pasta"),
                     FromQt(QStringLiteral("A pasta tem %1 arquivos. Abrir todos?").arg(found.size()))))
            files += found;
    }
    for (const QString& file : files)
        OpenFile(file);
}

void TMainWindow::OpenFile(const QString& name) {
    const QFileInfo file(name);
    const QString path = file.absoluteFilePath();
    for (std::size_t i = 0; i < controllers_.Count(); ++i) {
        const int index = IndexOf(*controllers_.GetController(i));
        if (index >= 0 && QFileInfo(TabAt(index)->FileName()) == file)
            return tabs_->setCurrentIndex(index);
    }
    if (!file.exists() && !file.isSymLink())
        return ShowError(this, QStringLiteral("O arquivo \"%1\" não existe.").arg(path));
    auto controller = std::make_shared<TValidadorController>(InstalledTerminology());
    controller->SetSchemaFolder(InstalledSchemas());
    controllers_.AddController(FromQt(path), controller);
}

void TMainWindow::OnController(TControllerOperation operation, const std::string& fileName,
                               const TControllerManager::TControllerPtr& controller) {
    const int index = IndexOf(*controller);
    switch (operation) {
    case TControllerOperation::coAdded:
        return AddTab(ToQt(fileName), controller);
    case TControllerOperation::coRemoved:
        if (QWidget* tab = tabs_->widget(index)) {
            tabs_->removeTab(index);
            tab->deleteLater();
        }
        break;
    case TControllerOperation::coRenamed:
        break;
    }
    UpdateActions();
}

void TMainWindow::AddTab(const QString& fileName, const TControllerManager::TControllerPtr& controller) {
    auto* tab = new TDocumentTab(controller, fileName, controllers_);
    if (const TDocumentTab* other = CurrentTab())
        tab->RestoreState(other->SaveState());
    else
        tab->RestoreState(WindowSettings()->value(QStringLiteral("aba")).toByteArray());
    connect(tab, &TDocumentTab::Changed, this, [this, tab] { UpdateTab(tab); });
    connect(tab, &TDocumentTab::Unreadable, this, [this, tab](const QString& reason) {
        history_->Forget(FromQt(tab->FileName()));
        controllers_.RemoveController(FromQt(tab->FileName()));
        ShowError(this, reason);
    });
    connect(tab, &TDocumentTab::Validated, this,
            [this, tab](const TValidateArgs& result) { NoteValidated(*tab, result); });
    connect(tab, &TDocumentTab::FileSaved, this,
            [this, tab] { history_->NoteOpened(FromQt(tab->FileName())); });
    connect(tab, &TDocumentTab::RuleSwitchWanted, this, &TMainWindow::ShowRules);
    connect(tab, &TDocumentTab::HelpWanted, this, &TMainWindow::ShowHelp);
    connect(tab, &TDocumentTab::SettingsWanted, this, &TMainWindow::ShowSettings);
    connect(tab, &TDocumentTab::BoxWanted, this,
            [this](int line, int linePos) { ShowGuides(std::pair(line, linePos)); });
    connect(tab, &TDocumentTab::Converted, this, [this, tab](const QString& to, std::size_t openPoints) {
        if (openPoints != 0)
            bell_->Note([&](TNoticeBox& box) {
                NoteConversions(box,
                                {{FromQt(QFileInfo(tab->FileName()).fileName()), FromQt(to), openPoints}});
            });
    });
    history_->NoteOpened(FromQt(fileName));
    tabs_->setCurrentIndex(tabs_->addTab(tab, QString()));
    tab->Load();
    UpdateTab(tab);
    UpdateActions();
    tab->Editor()->setFocus();
}

void TMainWindow::CloseTab(int index) {
    TDocumentTab* tab = TabAt(index);
    if (tab == nullptr)
        return;
    SaveLayout();
    if (tab->Close())
        controllers_.RemoveController(FromQt(tab->FileName()));
}

void TMainWindow::UpdateTab(TDocumentTab* tab) {
    const int index = tabs_->indexOf(tab);
    if (index < 0)
        return;
    const QString name =
        QFileInfo(tab->FileName()).fileName().replace(QLatin1Char('&'), QStringLiteral("&&")); // no keys
    const QString title = tab->Controller().Modified() ? name + QLatin1Char('*') : name;
    if (tabs_->tabText(index) != title)
        tabs_->setTabText(index, title);
    tabs_->setTabIcon(index, tab->StateIcon());
    tabs_->setTabToolTip(index, tab->FileName() + QLatin1Char('\n') + tab->StateText());
    if (tab == CurrentTab())
        UpdateActions();
}

void TMainWindow::UpdateActions() {
    const TDocumentTab* tab = CurrentTab();
    const bool open = tab != nullptr && tab->Session().IsOpen();
    for (const auto& [action, needs] : actions_)
        action->setEnabled(needs == TNeeds::Nothing || (needs == TNeeds::Tab ? tab != nullptr : open));
    pages_->setCurrentWidget(tab != nullptr ? static_cast<QWidget*>(tabs_) : welcome_);
    if (tab == nullptr) {
        setWindowTitle(QStringLiteral("Conferix"));
        for (QLabel* label : {state_, kind_, encoding_, position_})
            label->clear();
        return;
    }
    const QString state = tab->StateText();
    setWindowTitle(QStringLiteral("%1[*] (%2) - Conferix").arg(QFileInfo(tab->FileName()).fileName(), state));
    setWindowModified(tab->Controller().Modified());
    state_->setText(state);
    QStringList kind = {tab->KindText(), tab->VersionText()};
    kind.removeAll(QString());
    kind_->setText(kind.join(QStringLiteral(", ")));
    encoding_->setText(tab->EncodingText());
    position_->setText(tab->PositionText());
}

void TMainWindow::closeEvent(QCloseEvent* event) {
    if (TPatience::IsWaited())
        return event->ignore();
    SaveLayout();
    event->setAccepted(CloseAll());
}

bool TMainWindow::CloseAll() {
    std::vector<TDocumentTab*> changed;
    QStringList names;
    for (int index = 0; index < tabs_->count(); ++index)
        if (TabAt(index)->IsUnsaved()) {
            changed.push_back(TabAt(index));
            names << TabAt(index)->FileName();
        }
    bool discard = false;
    if (changed.size() > 1) {
        QString list = names.mid(0, kNamesAsked).join(QLatin1Char('\n'));
        if (names.size() > kNamesAsked)
            list += QStringLiteral("\ne mais %1").arg(names.size() - kNamesAsked);
        const int answer = Ask(
            this, QStringLiteral("Sair"),
            QStringLiteral("%1 arquivos foram alterados. Salvar as alterações?\n\n").arg(names.size()) + list,
            {QStringLiteral("&Salvar todos"), QStringLiteral("&Descartar as alterações")});
        if (answer < 0)
            return false;
        discard = answer == 1;
        for (TDocumentTab* tab : changed)
            if (!discard && !tab->Save())
                return false;
    }
    while (tabs_->count() > 0) {
        TDocumentTab* tab = TabAt(0);
        tabs_->setCurrentIndex(0);
        if (!tab->Close(discard))
            return false;
        controllers_.RemoveController(FromQt(tab->FileName()));
    }
    return true;
}

void TMainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
}

void TMainWindow::dropEvent(QDropEvent* event) {
    QStringList names;
    for (const QUrl& url : event->mimeData()->urls())
        if (url.isLocalFile())
            names << url.toLocalFile();
    event->acceptProposedAction();
    OpenFiles(names);
}

void TMainWindow::changeEvent(QEvent* event) {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        for (int index = 0; index < tabs_->count(); ++index)
            TabAt(index)->CheckDisk();
}

void TMainWindow::SaveLayout() const {
    const auto settings = WindowSettings();
    settings->setValue(QStringLiteral("janela"), saveGeometry());
    settings->setValue(QStringLiteral("barras"), saveState());
    if (const TDocumentTab* tab = CurrentTab())
        settings->setValue(QStringLiteral("aba"), tab->SaveState());
}

void TMainWindow::RestoreLayout() {
    const auto settings = WindowSettings();
    if (!restoreGeometry(settings->value(QStringLiteral("janela")).toByteArray()))
        resize(kFirstSize.boundedTo(screen()->availableGeometry().size()));
    restoreState(settings->value(QStringLiteral("barras")).toByteArray());
}

} // namespace conferix
