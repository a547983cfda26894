// The menus, tool bar and keys of the main window.
#include "app/desktop/main_window.h"

#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/dialogs/file_choice.h"
#include "app/desktop/dialogs/proxy_settings_dialog.h"
#include "app/desktop/dialogs/report_print.h"
#include "app/desktop/document_tab.h"
#include "app/desktop/information_panel.h"
#include "app/desktop/search_bar.h"
#include "app/desktop/theme.h"
#include "app/desktop/xml_editor.h"

#include <QAction>
#include <QInputDialog>
#include <QMenuBar>
#include <QTabWidget>
#include <QToolBar>

namespace conferix {

template<class Slot>
QAction* TMainWindow::Add(const char* name, const QString& text, const QKeySequence& keys, TNeeds needs,
                          Slot slot) {
    auto* action = new QAction(text, this);
    action->setObjectName(QString::fromLatin1(name));
    action->setShortcut(keys);
    connect(action, &QAction::triggered, this, slot);
    menu_->addAction(action);
    actions_.emplace_back(action, needs);
    return action;
}

QAction* TMainWindow::AddForTab(const char* name, const QString& text, const QKeySequence& keys,
                                std::function<void(TDocumentTab&)> action, TNeeds needs) {
    return Add(name, text, keys, needs, [this, action = std::move(action)] {
        if (TDocumentTab* tab = CurrentTab())
            action(*tab);
    });
}

void TMainWindow::BuildMenus() {
    BuildFileMenu();
    BuildEditMenu();
    BuildViewMenu();
    BuildValidationMenu();
    BuildSettingsMenu();
    BuildHelpMenu();
    auto* bar = addToolBar(QStringLiteral("Barra de ferramentas"));
    bar->setObjectName(QStringLiteral("barra"));
    bar->setAccessibleName(bar->windowTitle());
    const std::initializer_list<std::pair<const char*, const char*>> shown = {
        {"abrir", "abrir"},
        {"salvar", "salvar"},
        {nullptr, nullptr},
        {"validar", "validar"},
        {"parar", "parar"},
        {nullptr, nullptr},
        {"mensagemAnterior", "anterior"},
        {"proximaMensagem", "proxima"},
        {nullptr, nullptr},
        {"corrigir", "corrigir"},
        {"corrigirTudo", "corrigir-tudo"},
        {"converter", "converter"}};
    for (const auto& [name, icon] : shown) {
        if (name == nullptr) {
            bar->addSeparator();
        } else if (auto* action = findChild<QAction*>(QString::fromLatin1(name))) {
            action->setIcon(IconOf(QString::fromLatin1(icon)));
            bar->addAction(action);
        }
    }
}

void TMainWindow::BuildFileMenu() {
    menu_ = menuBar()->addMenu(QStringLiteral("&Arquivo"));
    Add("abrir", QStringLiteral("&Abrir..."), QKeySequence::Open, TNeeds::Nothing, &TMainWindow::ChooseFiles);
    recent_ = menu_->addMenu(QStringLiteral("Abrir rece&ntes"));
    recent_->setObjectName(QStringLiteral("recentes"));
    connect(recent_, &QMenu::aboutToShow, this, &TMainWindow::FillRecentFiles);
    Add("abrirPasta", QStringLiteral("Abrir &pasta..."), {}, TNeeds::Nothing, &TMainWindow::OpenFolder);
    AddForTab("recarregar", QStringLiteral("Recarre&gar"), {}, [this](TDocumentTab& tab) {
        if (!tab.Controller().Modified() ||
            AskYesNo(this, QStringLiteral("Recarregar"), "As alterações feitas aqui se perdem. Confirma?"))
            tab.Reload();
    });
    menu_->addSeparator();
    AddForTab("salvar", QStringLiteral("&Salvar"), QKeySequence::Save, [](TDocumentTab& tab) { tab.Save(); });
    AddForTab("salvarComo", QStringLiteral("Salvar &como..."), QKeySequence(QStringLiteral("Ctrl+Shift+S")),
              [](TDocumentTab& tab) { tab.SaveAs(); });
    QMenu* file = menu_;
    menu_ = file->addMenu(QStringLiteral("Salvar com co&dificação"));
    for (const char* encoding : {"ISO-8859-1", "UTF-8"})
        AddForTab(encoding, QString::fromLatin1(encoding), {},
                  [name = QString::fromLatin1(encoding)](TDocumentTab& tab) { tab.SaveWithEncoding(name); });
    menu_ = file;
    menu_->addSeparator();
    Add("imprimir", QStringLiteral("&Imprimir o relatório..."), QKeySequence::Print, TNeeds::OpenFile,
        [this] { WithResult([this](const TFileResult& result) { PrintReport(this, result); }); });
    Add("pdf", QStringLiteral("Relatório &em PDF..."), {}, TNeeds::OpenFile,
        [this] { WithResult([this](const TFileResult& result) { AskAndSaveReportPdf(this, result); }); });
    Add("imprimirGuias", QStringLiteral("Imprimir g&uias..."), QKeySequence(QStringLiteral("Ctrl+Shift+P")),
        TNeeds::OpenFile, [this] { ShowGuides(); });
    Add("listagens", QStringLiteral("&Listagens..."), QKeySequence(QStringLiteral("Ctrl+Shift+R")),
        TNeeds::OpenFile, &TMainWindow::ShowListings);
    Add("historico", QStringLiteral("&Histórico de validações..."), {}, TNeeds::Nothing,
        &TMainWindow::ShowHistory);
    menu_->addSeparator();
    Add("fechar", QStringLiteral("&Fechar"), QKeySequence(QStringLiteral("Ctrl+W")), TNeeds::Tab,
        [this] { CloseTab(tabs_->currentIndex()); });
    Add("sair", QStringLiteral("Sai&r"), QKeySequence(QStringLiteral("Ctrl+Q")), TNeeds::Nothing,
        [this] { close(); });
}

void TMainWindow::BuildEditMenu() {
    menu_ = menuBar()->addMenu(QStringLiteral("&Editar"));
    AddForTab("desfazer", QStringLiteral("&Desfazer"), QKeySequence::Undo,
              [](TDocumentTab& tab) { tab.Undo(); });
    AddForTab("refazer", QStringLiteral("&Refazer"), QKeySequence(QStringLiteral("Ctrl+Shift+Z")),
              [](TDocumentTab& tab) { tab.Redo(); });
    menu_->addSeparator();
    AddForTab(
        "localizar", QStringLiteral("&Localizar..."), QKeySequence::Find,
        [](TDocumentTab& tab) { tab.Search()->Open(false); }, TNeeds::Tab);
    AddForTab("substituir", QStringLiteral("&Substituir..."), QKeySequence(QStringLiteral("Ctrl+H")),
              [](TDocumentTab& tab) { tab.Search()->Open(true); });
    AddForTab(
        "localizarProxima", QStringLiteral("Localizar &próxima"), QKeySequence(QStringLiteral("F3")),
        [](TDocumentTab& tab) { tab.Search()->FindNext(); }, TNeeds::Tab);
    AddForTab(
        "localizarAnterior", QStringLiteral("Localizar &anterior"), QKeySequence(QStringLiteral("Shift+F3")),
        [](TDocumentTab& tab) { tab.Search()->FindPrevious(); }, TNeeds::Tab);
    menu_->addSeparator();
    Add("irParaLinha", QStringLiteral("&Ir para a linha..."), QKeySequence(QStringLiteral("Ctrl+G")),
        TNeeds::Tab, &TMainWindow::GoToLine);
    AddForTab(
        "irParaMarca", QStringLiteral("Ir para a &marca correspondente"),
        QKeySequence(QStringLiteral("Ctrl+B")), [](TDocumentTab& tab) { tab.Editor()->GoToMatchingTag(); },
        TNeeds::Tab);
    AddForTab("formatar", QStringLiteral("&Formatar"), QKeySequence(QStringLiteral("Ctrl+Shift+F")),
              [](TDocumentTab& tab) { tab.Format(); });
}

void TMainWindow::BuildViewMenu() {
    menu_ = menuBar()->addMenu(QStringLiteral("E&xibir"));
    AddForTab(
        "aumentar", QStringLiteral("&Aumentar o texto"), QKeySequence(QStringLiteral("Ctrl++")),
        [](TDocumentTab& tab) { tab.Editor()->zoomIn(); }, TNeeds::Tab);
    AddForTab(
        "diminuir", QStringLiteral("&Diminuir o texto"), QKeySequence(QStringLiteral("Ctrl+-")),
        [](TDocumentTab& tab) { tab.Editor()->zoomOut(); }, TNeeds::Tab);
    AddForTab(
        "tamanhoNormal", QStringLiteral("Tamanho &normal"), QKeySequence(QStringLiteral("Ctrl+0")),
        [](TDocumentTab& tab) { tab.Editor()->zoomTo(0); }, TNeeds::Tab);
    menu_->addSeparator();
    AddForTab(
        "dobrarTudo", QStringLiteral("&Recolher tudo"), {},
        [](TDocumentTab& tab) { tab.Editor()->foldAll(false); }, TNeeds::Tab);
    AddForTab(
        "desdobrarTudo", QStringLiteral("&Expandir tudo"), {},
        [](TDocumentTab& tab) { tab.Editor()->clearFolds(); }, TNeeds::Tab);
    menu_->addSeparator();
    AddForTab(
        "painelInformacoes", QStringLiteral("Mostrar ou esconder as &informações"),
        QKeySequence(QStringLiteral("Ctrl+I")),
        [](TDocumentTab& tab) {
            auto* panel = static_cast<QWidget*>(tab.Informations());
            panel->setVisible(!panel->isVisible());
        },
        TNeeds::Tab);
    Add("proximaParte", QStringLiteral("&Próxima parte da janela"), QKeySequence(QStringLiteral("F6")),
        TNeeds::Nothing, [this] { GoRound(true); });
    Add("parteAnterior", QStringLiteral("Parte an&terior da janela"),
        QKeySequence(QStringLiteral("Shift+F6")), TNeeds::Nothing, [this] { GoRound(false); });
    const auto goTab = [this](int by) {
        if (tabs_->count() > 0)
            tabs_->setCurrentIndex((tabs_->currentIndex() + by + tabs_->count()) % tabs_->count());
    };
    Add("proximoArquivo", QStringLiteral("Próximo ar&quivo"), QKeySequence(QStringLiteral("Ctrl+Tab")),
        TNeeds::Tab, [goTab] { goTab(1); });
    Add("arquivoAnterior", QStringLiteral("Arquivo anteri&or"),
        QKeySequence(QStringLiteral("Ctrl+Shift+Tab")), TNeeds::Tab, [goTab] { goTab(-1); });
}

void TMainWindow::BuildValidationMenu() {
    menu_ = menuBar()->addMenu(QStringLiteral("&Validação"));
    AddForTab("validar", QStringLiteral("&Validar"), QKeySequence(QStringLiteral("F5")),
              [](TDocumentTab& tab) { tab.Validate(); });
    AddForTab("parar", QStringLiteral("&Parar"), QKeySequence(QStringLiteral("Shift+F5")),
              [](TDocumentTab& tab) { tab.StopValidation(); });
    menu_->addSeparator();
    AddForTab(
        "proximaMensagem", QStringLiteral("P&róxima mensagem"), QKeySequence(QStringLiteral("F8")),
        [](TDocumentTab& tab) { tab.GoToMessage(true); }, TNeeds::Tab);
    AddForTab(
        "mensagemAnterior", QStringLiteral("Mensagem &anterior"), QKeySequence(QStringLiteral("Shift+F8")),
        [](TDocumentTab& tab) { tab.GoToMessage(false); }, TNeeds::Tab);
    AddForTab("mostrarNoFormulario", QStringLiteral("Mostrar no &formulário..."),
              QKeySequence(QStringLiteral("F7")),
              [this](TDocumentTab& tab) { ShowGuides(tab.PlaceAtCaret()); });
    menu_->addSeparator();
    AddForTab("corrigir", QStringLiteral("&Corrigir..."), QKeySequence(QStringLiteral("Alt+Return")),
              [](TDocumentTab& tab) { tab.CorrectAtCaret(); });
    AddForTab("corrigirTudo", QStringLiteral("Corrigir &tudo..."),
              QKeySequence(QStringLiteral("Ctrl+Shift+C")), [](TDocumentTab& tab) { tab.CorrectAll({}); });
    AddForTab("converter", QStringLiteral("Converter versã&o..."), {},
              [](TDocumentTab& tab) { tab.Convert(); });
    menu_->addSeparator();
    Add("validarPasta", QStringLiteral("Vali&dar pasta..."), {}, TNeeds::Nothing,
        &TMainWindow::ValidateFolder);
}

void TMainWindow::BuildSettingsMenu() {
    menu_ = menuBar()->addMenu(QStringLiteral("&Configurações"));
    Add("regras", QStringLiteral("&Ativar/Desativar Validações..."), {}, TNeeds::Nothing,
        [this] { ShowRules({}); });
    menu_->addSeparator();
    Add("terminologia", QStringLiteral("&Terminologia..."), {}, TNeeds::Nothing,
        [this] { ShowSettings(TSettingsPage::Terminologia); });
    Add("schemas", QStringLiteral("&Schemas..."), {}, TNeeds::Nothing,
        [this] { ShowSettings(TSettingsPage::Schemas); });
    Add("atualizacoes", QStringLiteral("Verificar atuali&zações..."), {}, TNeeds::Nothing,
        [this] { ShowSettings(TSettingsPage::Atualizacoes); });
    menu_->addSeparator();
    Add("proxy", QStringLiteral("Configurações de &Proxy..."), {}, TNeeds::Nothing,
        [this] { TFProxySettings::Abrir(this); });
}

void TMainWindow::BuildHelpMenu() {
    menu_ = menuBar()->addMenu(QStringLiteral("Aj&uda"));
    Add("ajudaRegra", QStringLiteral("Ajuda sobre a &regra"), QKeySequence(QStringLiteral("F1")),
        TNeeds::Nothing, &TMainWindow::ShowHelpOnMessage);
    Add("avisos", QStringLiteral("A&visos..."), QKeySequence(QStringLiteral("Ctrl+Shift+N")), TNeeds::Nothing,
        &TMainWindow::ShowNotices);
    Add("exemplo", QStringLiteral("Abrir um &exemplo"), {}, TNeeds::Nothing, &TMainWindow::OpenExample);
    menu_->addSeparator();
    Add("sobre", QStringLiteral("&Sobre o Conferix"), {}, TNeeds::Nothing, &TMainWindow::ShowAbout);
}

void TMainWindow::ChooseFiles() {
    OpenFiles(AskForFiles(this, QStringLiteral("Abrir"),
                          QStringLiteral("Arquivos TISS (*.xml *.xte);;Todos os arquivos (*)"), true));
}

void TMainWindow::GoToLine() {
    TDocumentTab* tab = CurrentTab();
    if (tab == nullptr)
        return;
    bool chosen = false;
    const int line =
        QInputDialog::getInt(this, QStringLiteral("Ir para a linha"), QStringLiteral("Linha:"),
                             tab->Editor()->CurrentLine(), 1, tab->Editor()->LineCount(), 1, &chosen);
    if (!chosen)
        return;
    tab->Editor()->GoTo(line, 1);
    tab->Editor()->setFocus();
}

} // namespace conferix
