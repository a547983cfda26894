#include "app/desktop/document_tab.h"

#include "app/config.h"
#include "app/conversion_choice.h"
#include "app/desktop/background.h"
#include "app/desktop/correction_dialog.h"
#include "app/desktop/dialogs/dialog_parts.h"
#include "app/desktop/dialogs/file_choice.h"
#include "app/desktop/dialogs/recoding_dialog.h"
#include "app/desktop/dialogs/solver_select.h"
#include "app/desktop/dialogs/version_converter_dialogs.h"
#include "app/desktop/information_panel.h"
#include "app/desktop/notice_bar.h"
#include "app/desktop/patience.h"
#include "app/desktop/search_bar.h"
#include "app/desktop/theme.h"
#include "app/desktop/xml_editor.h"
#include "app/installation.h"
#include "app/line_layout.h"
#include "app/recoding.h"
#include "model/tiss_kinds.h"

#include <QBoxLayout>
#include <QDataStream>
#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QLocale>
#include <QSplitter>
#include <QTabWidget>
#include <QTimer>
#include <QTreeView>

#include <algorithm>
#include <utility>

namespace conferix {

namespace {

/// Texts up to this are validated again while they are edited, after a pause.
constexpr std::size_t kValidatedWhileTyping = 2'000'000;
constexpr int kTypingPause = 1'000;
/// A second Enter that follows a first by less does nothing: it was meant for the list.
constexpr int kSecondEnter = 400;
/// Width of the lines of a text that is shown as it came.
constexpr std::size_t kWrapWidth = 200;

} // namespace

TDocumentTab::TDocumentTab(const std::shared_ptr<IValidadorController>& controller, const QString& fileName,
                           TControllerManager& manager, QWidget* parent)
    : QWidget(parent), session_(new TFileSession(controller, fileName, this)), manager_(manager),
      notices_(new TNoticeBar), editor_(new TXmlEditor), search_(new TSearchBar(editor_)),
      messages_(new TMessagePanel(QStringLiteral("Mensagens da validação"))),
      informations_(new TInformationPanel), typing_(new QTimer(this)), watcher_(new QFileSystemWatcher(this)),
      lists_(new QTabWidget) {
    BuildViews();
    Subscribe();
    typing_->setSingleShot(true);
    typing_->setInterval(kTypingPause);
    connect(typing_, &QTimer::timeout, this, &TDocumentTab::Validate);
    connect(watcher_, &QFileSystemWatcher::fileChanged, this, &TDocumentTab::CheckDisk);
    connect(session_, &TFileSession::ReadDone, this, &TDocumentTab::ShowRead);
    connect(session_, &TFileSession::ReadFailed, this, &TDocumentTab::Unreadable);
    connect(session_, &TFileSession::NotValidated, this, [this](const QString& reason) {
        messages_->ShowNothing({});
        notices_->Show(QStringLiteral("configuracao"),
                       QStringLiteral("O arquivo não foi validado. ") + reason);
    });
    connect(editor_, &TXmlEditor::Edited, this, &TDocumentTab::OnEdited);
    connect(editor_, &TXmlEditor::BackAtSaved, this, &TDocumentTab::OnBackAtSaved);
    connect(editor_, &TXmlEditor::Moved, this, &TDocumentTab::Changed);
    connect(editor_, &TXmlEditor::Loaded, this, &TDocumentTab::Changed);
    connect(messages_, &TMessagePanel::Shown, this, [this] {
        editor_->SetPlaces(messages_->Messages(), [this](std::size_t message) {
            const TXmlMessage& found = *messages_->Messages()[message];
            return SeverityName(found.MsgType()) + QStringLiteral(": ") + ReasonOf(found);
        });
        GoBackToPlace();
    });
    connect(messages_, &TMessagePanel::Selected, this, &TDocumentTab::SelectPlace);
    connect(messages_, &TMessagePanel::Activated, this, &TDocumentTab::ActivatePlace);
    connect(messages_, &TMessagePanel::CorrectionWanted, this,
            [this](std::size_t message, std::size_t solver) { Correct(message, solver); });
    connect(messages_, &TMessagePanel::RuleCorrectionWanted, this, &TDocumentTab::CorrectAll);
    connect(messages_, &TMessagePanel::RuleSwitchWanted, this, &TDocumentTab::RuleSwitchWanted);
    connect(messages_, &TMessagePanel::HelpWanted, this, &TDocumentTab::HelpWanted);
    connect(messages_, &TMessagePanel::SettingsWanted, this, &TDocumentTab::SettingsWanted);
    connect(messages_, &TMessagePanel::BoxWanted, this, &TDocumentTab::BoxWanted);
}

TDocumentTab::~TDocumentTab() {
    for (const auto& unsubscribe : unsubscribe_)
        unsubscribe();
}

void TDocumentTab::BuildViews() {
    auto* text = new QWidget;
    auto* textRows = new QVBoxLayout(text);
    textRows->setContentsMargins(0, 0, 0, 0);
    textRows->setSpacing(0);
    textRows->addWidget(notices_);
    textRows->addWidget(editor_, 1);
    textRows->addWidget(search_);
    columns_ = new QSplitter(Qt::Horizontal);
    columns_->addWidget(text);
    columns_->addWidget(informations_);
    columns_->setStretchFactor(0, 1);
    columns_->setSizes({1000, 330});
    rows_ = new QSplitter(Qt::Vertical);
    rows_->addWidget(columns_);
    lists_->setDocumentMode(true);
    lists_->setTabBarAutoHide(true);
    lists_->setAccessibleName(QStringLiteral("Listas de mensagens"));
    lists_->addTab(messages_, QStringLiteral("Mensagens"));
    rows_->addWidget(lists_);
    rows_->setStretchFactor(0, 1);
    rows_->setSizes({400, 280});
    rows_->setChildrenCollapsible(false);
    auto* all = new QVBoxLayout(this);
    all->setContentsMargins(4, 4, 4, 0);
    all->addWidget(rows_);
}

void TDocumentTab::Subscribe() {
    const auto subscribe = [this](auto& event, auto observer) {
        const int number = event.Subscribe(std::move(observer));
        unsubscribe_.push_back(
            [&event, number, controller = session_->SharedController()] { event.Unsubscribe(number); });
    };
    TValidatorEvents& events = Controller().Events();
    subscribe(events.OnStateChange, [this](const TStateChangeArgs&) { emit Changed(); });
    // An event keeps what it told: what is large is taken out.
    subscribe(events.OnFileOpen, [this](TFileOpenArgs& args) {
        args.SharedContent.reset();
        editor_->Load(read_.Shown, read_.Highlighted);
        Watch();
    });
    subscribe(events.OnFileSave, [this](TFileSaveArgs& args) {
        args.SharedContent.reset();
        Watch();
        NoteSaved();
        emit FileSaved();
    });
    subscribe(events.OnFileClose, [this](TFileCloseArgs& args) { OnClose(args); });
    subscribe(events.OnValidate, [this](TValidateArgs& result) { ShowResult(std::move(result)); });
}

void TDocumentTab::ShowRead(const TReadFile& read) {
    read_ = read;
    edited_ = false;
    asItCame_ = false;
    for (const char* notice : {"disco", "formatado", "correcao"})
        notices_->Hide(QString::fromLatin1(notice));
    if (!read.File) {
        editor_->SetEditable(false);
        editor_->Load(read.Shown, false);
        notices_->Show(
            QStringLiteral("codificacao"),
            QStringLiteral("Este arquivo tem bytes que não são texto na codificação declarada. Ele é "
                           "mostrado só para leitura; o lugar está na lista de mensagens."));
        messages_->ShowMessages({read.Fault});
        emit Changed();
        return;
    }
    editor_->SetEditable(true);
    session_->Open(read);
    read_ = {}; // the controller and the editor have what they need
    NoteSaved();
    if (read.CrowdedLines)
        notices_->Show(
            QStringLiteral("formatado"),
            QStringLiteral(
                "O arquivo tem muitos elementos em uma só linha. Quebras de linha e recuos não mudam "
                "nenhum valor nem o hash."),
            {{QStringLiteral("&Formatar"), [this] { Format(); }}});
    if (read.Formatted)
        notices_->Show(
            QStringLiteral("formatado"),
            QStringLiteral(
                "O arquivo tem linhas muito longas e é mostrado com quebras de linha, que não mudam "
                "nenhum valor nem o hash. O arquivo só muda se for salvo."),
            {{QStringLiteral("Mostrar como veio"), [this] { ShowAsItCame(); }}});
    Validate();
}

void TDocumentTab::ShowAsItCame() {
    if (Controller().Modified()) {
        ShowError(this, QStringLiteral("O texto foi alterado. Salve ou recarregue o arquivo antes."));
        return;
    }
    asItCame_ = true;
    StopValidation();
    editor_->SetEditable(false);
    try {
        const TTissFile file = TTissFile::Read(PathFromText(FromQt(FileName())), TXmlUndecodable::Guessed);
        editor_->Load(std::make_shared<const std::string>(WrapLines(*file.Text(), kWrapWidth)), false);
    } catch (const std::runtime_error& error) {
        ShowError(this, ToQt(error.what()));
    }
    notices_->Show(
        QStringLiteral("formatado"),
        QStringLiteral("O arquivo como veio, só para leitura: as linhas longas continuam na linha de baixo."),
        {{QStringLiteral("Formatar"), [this] { Reload(); }}});
    messages_->ShowNothing(QStringLiteral("Formate o arquivo para validá-lo."));
    emit Changed();
}

void TDocumentTab::Reload() {
    result_.reset();
    Close(true);
    session_->Read();
}

void TDocumentTab::Validate() {
    typing_->stop();
    if (!session_->IsOpen() || asItCame_)
        return;
    if (TPatience::IsWaited())
        return typing_->start();
    notices_->Hide(QStringLiteral("configuracao"));
    edited_ = false;
    // Two trees of a large file are one too many.
    const auto last = std::make_shared<std::optional<TValidateArgs>>(std::exchange(result_, std::nullopt));
    const std::shared_ptr<const std::string> text = editor_->Snapshot();
    if (text->size() > kValidatedWhileTyping)
        editor_->SetEditable(false);
    session_->Validate(text, last);
}

void TDocumentTab::StopValidation() {
    if (!session_->IsValidating())
        return;
    result_.reset();
    Controller().StopValidation();
    editor_->SetEditable(!asItCame_);
    messages_->ShowNothing(QStringLiteral("A validação foi interrompida. Pressione F5 para validar."));
}

void TDocumentTab::ShowResult(TValidateArgs told) {
    LetGoBeside(std::exchange(result_, std::move(told)));
    const TValidateArgs& result = *result_;
    editor_->SetEditable(true);
    wasJudged_ = result.Verified;
    wasValid_ = result.FileStateFlags.Contains(TFileStateFlag::sfValido);
    kind_ = result.ArquivoTiss != nullptr ? ToQt(KindOf(result.ArquivoTiss->TipoArquivo()).Title) : QString();
    messages_->ShowMessages(result.ValidationMessages);
    informations_->ShowInformations(result.ArquivoTiss != nullptr ? result.ArquivoTiss->Informations()
                                                                  : TInformations{});
    emit Validated(result);
}

void TDocumentTab::OnEdited() {
    if (!session_->IsOpen())
        return;
    const bool first = !std::exchange(edited_, true);
    notices_->Hide(QStringLiteral("correcao"));
    if (correcting_) // what follows is told by who corrects
        return;
    if (session_->IsValidating())
        Controller().StopValidation();
    Controller().Modify();
    if (editor_->length() <= static_cast<int>(kValidatedWhileTyping))
        typing_->start();
    if (first) // of the many changes of one step
        emit Changed();
}

void TDocumentTab::NoteSaved() {
    editor_->NoteSaved();
    savedEncoding_ = Controller().Encoding();
}

void TDocumentTab::OnBackAtSaved() {
    const TXmlEncoding& now = Controller().Encoding();
    if (session_->IsOpen() && now.Name == savedEncoding_.Name && now.Bom == savedEncoding_.Bom)
        Controller().Unmodify();
}

bool TDocumentTab::IsUpToDate() {
    if (session_->IsValidating() || asItCame_ || !session_->IsOpen())
        return false;
    if (!edited_ && result_)
        return true;
    Validate(); // corrections are made to the text that was judged
    return false;
}

void TDocumentTab::GoBackToPlace() {
    if (!back_ || session_->IsValidating())
        return;
    const TPlaceBefore place = *std::exchange(back_, std::nullopt);
    goingBack_ = true;
    messages_->Restore(place.Row);
    goingBack_ = false;
    if (place.Line > 0)
        editor_->GoTo(place.Line, place.LinePos);
}

void TDocumentTab::SelectPlace(std::size_t message) {
    notices_->Hide(QStringLiteral("correcao"));
    if (goingBack_)
        return;
    const TXmlMessage& found = *messages_->Messages()[message];
    if (const int line = editor_->Places().LineOf(message); line > 0 && !asItCame_)
        editor_->GoTo(line, found.LinePos());
}

void TDocumentTab::ActivatePlace(std::size_t message) {
    SelectPlace(message);
    editor_->setFocus();
    editor_->IgnoreEnter(kSecondEnter);
}

std::optional<std::size_t> TDocumentTab::MessageAtCaret() const {
    const auto [first, last] = editor_->Places().OnLines(editor_->CurrentLine(), editor_->CurrentLine());
    const auto current = messages_->Current();
    for (std::size_t i = first; i < last; ++i)
        if (editor_->Places().All()[i].Message == current)
            return current;
    if (editor_->hasFocus() && first < last)
        return editor_->Places().All()[first].Message;
    return current;
}

std::pair<int, int> TDocumentTab::PlaceAtCaret() const {
    const auto message = MessageAtCaret();
    if (message)
        if (const TXmlMessage& found = *messages_->Messages()[*message];
            !editor_->hasFocus() || found.Line() == editor_->CurrentLine())
            return {found.Line(), found.LinePos()};
    return {editor_->CurrentLine(), editor_->CurrentLinePos()};
}

void TDocumentTab::GoToMessage(bool next) {
    const TMessageTable& table = messages_->Model().Table();
    const auto isError = [](const TMessagePlace& place) {
        return place.Type == TMessageType::mtError || place.Type == TMessageType::mtFatal;
    };
    std::vector<TMessagePlace> places;
    for (std::size_t message = 0; message < messages_->Messages().size(); ++message)
        if (const TXmlMessage& found = *messages_->Messages()[message]; found.Line() <= 0)
            places.push_back({message, 0, 0, found.MsgType()}); // of the file as a whole
    std::ranges::copy(editor_->Places().All(), std::back_inserter(places));
    std::erase_if(places, [&](const TMessagePlace& place) { return !table.Find(place.Message); });
    if (std::ranges::any_of(places, isError))
        std::erase_if(places, [&](const TMessagePlace& place) { return !isError(place); });
    if (places.empty())
        return;
    const auto here = std::pair(editor_->CurrentLine(), editor_->CurrentLinePos());
    const auto place = [](const TMessagePlace& of) { return std::pair(int{of.Line}, int{of.LinePos}); };
    std::size_t target = 0;
    const auto current = messages_->Current();
    const auto at = std::ranges::find_if(places, [&](const TMessagePlace& of) {
        return of.Message == current && (of.Line == here.first || of.Line == 0);
    });
    if (at != places.end()) { // of several at one place each in its turn
        const auto index = static_cast<std::size_t>(at - places.begin());
        target = (index + (next ? 1 : places.size() - 1)) % places.size();
    } else {
        const auto after = next ? std::ranges::upper_bound(places, here, {}, place)
                                : std::ranges::lower_bound(places, here, {}, place);
        const auto index = static_cast<std::size_t>(after - places.begin());
        target = (index + (next ? 0 : places.size() - 1)) % places.size();
    }
    messages_->Select(places[target].Message);
    SelectPlace(places[target].Message);
}

void TDocumentTab::CorrectAtCaret() {
    const auto message = MessageAtCaret();
    if (!message)
        return;
    const TXmlMessages& all = messages_->Messages();
    const auto offers = [&](std::size_t of) { return !all[of]->Solvers().empty(); };
    if (offers(*message))
        return Correct(*message);
    const int line = editor_->Places().LineOf(*message);
    const auto [first, last] = editor_->Places().OnLines(line, line);
    for (std::size_t i = first; i < last; ++i)
        if (const TMessagePlace& place = editor_->Places().All()[i];
            place.LinePos == all[*message]->LinePos() && offers(place.Message))
            return Correct(place.Message);
    notices_->Show(QStringLiteral("correcao"),
                   QStringLiteral("Esta mensagem não tem correção automática: altere o texto. F1 diz como."));
}

void TDocumentTab::Correct(std::size_t message, std::optional<std::size_t> solver) {
    if (!IsUpToDate())
        return;
    const TXmlMessages all = messages_->Messages(); // the list is renewed on the way
    const TXmlMessage& chosen = *all[message];
    const TPlaceBefore place{messages_->Focus(), chosen.Line(), chosen.LinePos()};
    const TSolverChoice choose =
        solver ? TSolverChoice([solver](const auto&) { return solver; }) : TFSolverSelect::ChoiceBy(this);
    TSolverHandlers handlers{choose,
                             [this, &place](const TCorrectionRecord&, const TXmlPtr& xml) {
                                 back_ = place;
                                 TPatience patience(this, QStringLiteral("Corrigindo..."),
                                                    TPatience::TStop::No);
                                 PutText(xml, patience);
                                 messages_->ShowNothing({});
                             },
                             [this](const TXmlPtr&) { Validate(); }};
    ExecuteSolver(Controller(), all, chosen.Id(), {}, handlers);
}

void TDocumentTab::CorrectAll(const QString& rule) {
    if (!IsUpToDate())
        return;
    const auto ofSchema = [](const QString& name) { return name.endsWith(QLatin1String(".schema")); };
    TCorrectionRequest request;
    request.Rule = FromQt(rule);
    request.Structure = ofSchema(rule);
    try {
        TFCorrectionPreview dialog(
            [file = TTissFile(editor_->Snapshot(), Controller().Encoding()),
             enabled = EnabledRules()](const TCorrectionRequest& wanted) {
                return PreviewCorrections(file, InstalledSchemas(), InstalledTerminology(), enabled, wanted);
            },
            request, this);
        if (dialog.exec() != QDialog::Accepted)
            return;
        const TCorrectionPreview& preview = *dialog.Preview();
        if (*preview.Before != *editor_->Snapshot())
            return;
        back_ = TPlaceBefore{messages_->Focus(), editor_->CurrentLine(), editor_->CurrentLinePos()};
        LogCorrections(FromQt(FileName()), preview.Applied);
        Controller().SetEncoding(preview.Encoding);
        TakeText(preview.After);
    } catch (const EInvalidConfig& error) {
        ShowError(this, ToQt(error.what()));
    }
}

void TDocumentTab::Convert() {
    if (!IsUpToDate())
        return;
    if (result_->ArquivoTiss == nullptr) {
        ShowError(
            this,
            QStringLiteral(
                "Só um lote de guias que foi lido pode ser convertido. Corrija antes os erros da lista."));
        return;
    }
    const auto request = AskConversion(this, *result_->ArquivoTiss);
    if (!request)
        return;
    editor_->SetEditable(false);
    RunBeside(
        this,
        // A tree of its own: the one of the messages belongs to the user interface.
        [file = TTissFile(editor_->Snapshot(), Controller().Encoding()), wanted = *request] {
            return ConvertLote(*file.Load(), wanted.Target, wanted.Options, InstalledSchemas());
        },
        [this](TOutcome<TConvertedLote> lote) {
            editor_->SetEditable(true);
            try {
                ShowConverted(lote.Take());
            } catch (const std::exception& error) {
                ShowError(this, ToQt(error.what()));
            }
        });
}

void TDocumentTab::ShowConverted(const TConvertedLote& lote) {
    if (notes_ == nullptr) {
        notes_ = new TMessagePanel(QStringLiteral("Notas da conversão"));
        connect(notes_, &TMessagePanel::Selected, this, [this](std::size_t note) {
            const TXmlMessage& found = *notes_->Messages()[note];
            if (found.Line() > 0)
                editor_->GoTo(found.Line(), found.LinePos());
        });
        connect(notes_, &TMessagePanel::Activated, this, [this] {
            editor_->setFocus();
            editor_->IgnoreEnter(kSecondEnter);
        });
        connect(notes_, &TMessagePanel::BoxWanted, this, &TDocumentTab::BoxWanted);
        lists_->addTab(notes_, QString());
    }
    const TXmlMessages notes = MessagesOf(lote);
    lists_->setTabText(1, QStringLiteral("Conversão %1 → %2: %3 notas")
                              .arg(ToQt(lote.From), ToQt(lote.To), QLocale().toString(notes.size())));
    notes_->ShowMessages(notes);
    TakeText(std::make_shared<const std::string>(lote.Xml));
    if (!notes.empty())
        lists_->setCurrentIndex(1);
    emit Converted(ToQt(lote.To), static_cast<std::size_t>(std::ranges::count(
                                      lote.Notes, TConversionNoteType::ntPending, &TConversionNote::Type)));
}

std::optional<TFileResult> TDocumentTab::Result() const {
    if (!result_ || edited_ || session_->IsValidating())
        return std::nullopt;
    return TFileResult{*result_, Controller().VersaoTiss(), editor_->Snapshot(), {}};
}

void TDocumentTab::TakeText(const TXmlPtr& text) {
    {
        TPatience patience(this, QStringLiteral("Alterando o texto..."), TPatience::TStop::No);
        PutText(text, patience);
    }
    messages_->ShowNothing({});
    Controller().Modify();
    Validate();
}

void TDocumentTab::PutText(const TXmlPtr& text, TPatience& patience) {
    correcting_ = true;
    editor_->ReplaceBy(text, patience);
    correcting_ = false;
}

void TDocumentTab::Format() {
    if (!session_->IsOpen() || asItCame_)
        return;
    TXmlPtr formatted;
    {
        TPatience patience(this, QStringLiteral("Formatando..."), TPatience::TStop::Offered);
        formatted = patience.Await(
            [text = editor_->Snapshot()] { return std::make_shared<const std::string>(FormatXml(*text)); });
        if (!patience.Go())
            return;
    }
    notices_->Hide(QStringLiteral("formatado"));
    if (*formatted != *editor_->Snapshot())
        TakeText(formatted);
}

void TDocumentTab::Undo() {
    TPatience patience(this, QStringLiteral("Desfazendo..."), TPatience::TStop::No);
    editor_->Undo([&patience] { return patience.Go(); });
}

void TDocumentTab::Redo() {
    TPatience patience(this, QStringLiteral("Refazendo..."), TPatience::TStop::No);
    editor_->Redo([&patience] { return patience.Go(); });
}

bool TDocumentTab::Save() {
    return session_->IsOpen() && SaveTo(FileName());
}

bool TDocumentTab::SaveAs() {
    if (!session_->IsOpen())
        return false;
    const QString name = AskForSaveName(this, QStringLiteral("Salvar como"), FileName(),
                                        QStringLiteral("Arquivos TISS (*.xml *.xte);;Todos os arquivos (*)"),
                                        QStringLiteral("xml"));
    return !name.isEmpty() && SaveTo(name);
}

bool TDocumentTab::SaveTo(const QString& fileName) {
    const QString before = FileName();
    try {
        if (fileName != before && manager_.Contains(FromQt(fileName))) {
            ShowError(this, QStringLiteral("\"%1\" está aberto em outra aba. Feche-a antes.").arg(fileName));
            return false;
        }
        session_->Save(editor_->Snapshot(), fileName, this);
    } catch (const EFileChanged& error) {
        const int answer =
            Ask(this, QStringLiteral("Salvar"),
                ToQt(error.what()) +
                    QStringLiteral("\n\nSubstituir o que está no disco pelo texto desta janela?"),
                {QStringLiteral("Salvar &como..."), QStringLiteral("&Substituir")});
        if (answer == 0)
            return SaveAs();
        if (answer != 1)
            return false;
        Controller().AcceptChangeOnDisk();
        return SaveTo(fileName);
    } catch (const std::runtime_error& error) { // EFileNotWritten, EXmlEncoding
        ShowError(this, ToQt(error.what()));
        return false;
    }
    manager_.UpdateFileName(FromQt(before), FromQt(fileName));
    Watch();
    notices_->Hide(QStringLiteral("disco"));
    emit Changed();
    return true;
}

bool TDocumentTab::SaveWithEncoding(const QString& encoding) {
    if (!session_->IsOpen() || asItCame_)
        return false;
    try {
        TXmlRecoding recoding = RecodeFile(*editor_->Snapshot(), Controller().Encoding(), FromQt(encoding));
        if (!recoding.Replaced.empty() &&
            TFRecoding(encoding, recoding.Replaced, this).exec() != QDialog::Accepted)
            return false;
        Controller().SetEncoding(EncodingToWrite(recoding.Text, {}));
        TakeText(std::make_shared<const std::string>(std::move(recoding.Text)));
    } catch (const EXmlEncoding& error) {
        constexpr std::size_t kTold = 10;
        const TRecodingList list = ListRecoding(error.Messages(), kTold);
        QStringList told;
        for (const std::string& line : list.Lines)
            told << ToQt(line);
        if (list.Further != 0)
            told << QStringLiteral("e mais %1").arg(QLocale().toString(list.Further));
        ShowError(this, told.join(QLatin1Char('\n')));
        return false;
    }
    return Save();
}

bool TDocumentTab::Close(bool discard) {
    if (!session_->IsOpen())
        return true;
    discarding_ = discard;
    Controller().CloseFile();
    discarding_ = false;
    return !session_->IsOpen();
}

bool TDocumentTab::IsUnsaved() const {
    return session_->IsOpen() && (Controller().Modified() || !QFileInfo::exists(FileName()));
}

void TDocumentTab::OnClose(TFileCloseArgs& args) {
    if (discarding_ || !IsUnsaved())
        return;
    const bool removed = !QFileInfo::exists(FileName());
    const QString what = removed
                             ? QStringLiteral("\"%1\" foi removido do disco. Salvar o texto que está aqui?")
                             : QStringLiteral("\"%1\" foi alterado. Salvar as alterações?");
    const int answer = Ask(this, QStringLiteral("Fechar"), what.arg(QFileInfo(FileName()).fileName()),
                           {QStringLiteral("&Salvar"), QStringLiteral("&Descartar")});
    if (answer == 0 && removed)
        Controller().AcceptChangeOnDisk(); // nothing is there to be overwritten
    if (answer < 0 || (answer == 0 && !Save()))
        args.CanClose = false;
}

void TDocumentTab::Watch() {
    if (!watcher_->files().isEmpty())
        watcher_->removePaths(watcher_->files());
    watcher_->addPath(FileName());
}

void TDocumentTab::CheckDisk() {
    if (!session_->IsOpen() || session_->IsReading() || TPatience::IsWaited())
        return;
    if (!Controller().ChangedOnDisk()) {
        Watch(); // a file that was replaced is another one to watch
        return;
    }
    if (notices_->IsShown(QStringLiteral("disco")))
        return;
    const QString what = QFileInfo::exists(FileName())
                             ? QStringLiteral("O arquivo foi alterado por outro programa.")
                             : QStringLiteral("O arquivo foi removido do disco.");
    notices_->Show(QStringLiteral("disco"), what + QStringLiteral(" Nada é gravado sobre ele sem perguntar."),
                   {{QStringLiteral("&Recarregar"), [this] {
                         if (!Controller().Modified() ||
                             AskYesNo(this, QStringLiteral("Recarregar"),
                                      "As alterações feitas aqui se perdem. Confirma?"))
                             Reload();
                     }}});
}

void TDocumentTab::GoRound(bool forwards, QWidget* after) {
    const std::vector<QWidget*> parts = {editor_, messages_->List(), messages_->Details(), informations_,
                                         after};
    std::vector<QWidget*> there;
    std::ranges::copy_if(parts, std::back_inserter(there),
                         [](const QWidget* part) { return part != nullptr && part->isVisible(); });
    const auto at = std::ranges::find_if(there, [](const QWidget* part) { return part->hasFocus(); });
    const std::size_t count = there.size();
    const auto index = static_cast<std::size_t>(at - there.begin());
    if (count == 0)
        return;
    QWidget* const part = there[at == there.end() ? 0 : (index + (forwards ? 1 : count - 1)) % count];
    if (!part->isActiveWindow()) // a panel may have a window of its own
        part->activateWindow();
    part->setFocus(Qt::TabFocusReason);
}

QString TDocumentTab::StateText() const {
    const TFileStateFlags flags = Controller().FileStateFlags();
    QStringList states;
    if (session_->IsReading() || editor_->IsLoading())
        states << QStringLiteral("Abrindo...");
    if (flags.Contains(TFileStateFlag::sfModificado))
        states << QStringLiteral("Modificado");
    if (flags.Contains(TFileStateFlag::sfValidando))
        states << QStringLiteral("Validando...");
    else if (flags.Contains(TFileStateFlag::sfValidado))
        states << (!wasJudged_ ? QStringLiteral("Não verificado")
                   : wasValid_ ? QStringLiteral("Válido")
                               : QStringLiteral("Inválido")) +
                      (edited_ ? QStringLiteral(" antes da alteração") : QString());
    else if (flags.Contains(TFileStateFlag::sfAberto))
        states << QStringLiteral("Não validado");
    else if (IsUndecodable())
        states << QStringLiteral("Inválido");
    return states.join(QStringLiteral(", "));
}

bool TDocumentTab::IsUndecodable() const {
    return !session_->IsOpen() && !session_->IsReading() && !editor_->IsLoading() &&
           !messages_->Messages().empty();
}

QIcon TDocumentTab::StateIcon() const {
    const TFileStateFlags flags = Controller().FileStateFlags();
    if (flags.Contains(TFileStateFlag::sfValidando))
        return IconOf(QStringLiteral("espera"));
    if (IsUndecodable())
        return SeverityIcon(TMessageType::mtError);
    if (!flags.Contains(TFileStateFlag::sfValidado))
        return IconOf(QStringLiteral("arquivo"));
    if (!wasJudged_)
        return SeverityIcon(TMessageType::mtWarning);
    return SeverityIcon(wasValid_ ? TMessageType::mtSuccess : TMessageType::mtError);
}

QString TDocumentTab::KindText() const {
    return kind_;
}

QString TDocumentTab::VersionText() const {
    const QString version = ToQt(Controller().VersaoTiss());
    return version.isEmpty() ? version : QStringLiteral("versão ") + version;
}

QString TDocumentTab::EncodingText() const {
    // What declares itself ISO-8859-1 is held as the set of letters that contains it.
    if (session_->IsOpen() && Controller().Encoding().Name == "windows-1252")
        return QStringLiteral("ISO-8859-1 (Windows-1252)");
    return session_->IsOpen() ? ToQt(Controller().Encoding().Name) : QString();
}

QString TDocumentTab::PositionText() const {
    return QStringLiteral("linha %1, coluna %2")
        .arg(QLocale().toString(editor_->CurrentLine()), QLocale().toString(editor_->CurrentLinePos()));
}

QByteArray TDocumentTab::SaveState() const {
    QByteArray state;
    QDataStream stream(&state, QIODevice::WriteOnly);
    stream << columns_->saveState() << rows_->saveState() << messages_->SaveState();
    return state;
}

void TDocumentTab::RestoreState(const QByteArray& state) {
    QDataStream stream(state);
    QByteArray columns;
    QByteArray rows;
    QByteArray list;
    stream >> columns >> rows >> list;
    if (stream.status() != QDataStream::Ok)
        return;
    columns_->restoreState(columns);
    rows_->restoreState(rows);
    messages_->RestoreState(list);
}

} // namespace conferix
