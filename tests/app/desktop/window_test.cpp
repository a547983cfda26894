#include "app/cli/cli.h"
#include "app/desktop/background.h"
#include "app/desktop/correction_dialog.h"
#include "app/desktop/document_tab.h"
#include "app/desktop/guide_print_dialog.h"
#include "app/desktop/listing_dialog.h"
#include "app/desktop/main_window.h"
#include "app/desktop/message_panel.h"
#include "app/desktop/notice_bar.h"
#include "app/desktop/notice_bell.h"
#include "app/desktop/page_view.h"
#include "app/desktop/patience.h"
#include "app/desktop/ready_memory.h"
#include "app/desktop/xml_editor.h"
#include "app/dialogs/dialog_test.h"
#include "platform/platform.h"
#include "validation/solver.h"

#include <QAccessible>
#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDesktopServices>
#include <QDropEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QListView>
#include <QMenuBar>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPrinter>
#include <QRadioButton>
#include <QScrollBar>
#include <QSemaphore>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableView>
#include <QTableWidget>
#include <QTextBrowser>
#include <QToolButton>
#include <QTreeView>

#include <algorithm>
#include <atomic>
#include <memory>
#include <set>
#include <sstream>

namespace conferix {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

const char* const kFaulty = "spsadt-3.05.00-valores-errados.xml";

class Window : public TDialogTest {
  protected:
    Window() {
        window_ = std::make_unique<TMainWindow>();
        window_->resize(1280, 720);
        window_->show();
    }

    /// A copy of an example, which tests may change.
    std::string Copy(const std::string& example, const std::string& name = "lote.xml") const {
        std::filesystem::copy_file(Example(example), folder_ / name);
        return folder_ / name;
    }
    void Write(const std::string& name, const std::string& bytes) const {
        WriteFileAtomically(folder_ / name, bytes);
    }
    std::string Bytes(const std::string& name = "lote.xml") const { return ReadWholeFile(folder_ / name); }

    TDocumentTab& Open(const std::string& name) {
        window_->OpenFiles({ToQt(name)});
        WaitForVerdict();
        return Tab();
    }
    TDocumentTab& Tab() const { return *window_->CurrentTab(); }
    void WaitForVerdict() const {
        Wait([&] { return Tab().Result().has_value() && !Tab().Editor()->IsLoading(); });
    }
    /// An action as the user finds it in the menus: what it does at once; what it posts waits for events.
    void Trigger(const char* name) const {
        auto* const action = window_->findChild<QAction*>(QString::fromLatin1(name));
        ASSERT_NE(action, nullptr) << name;
        ASSERT_TRUE(action->isEnabled()) << name;
        action->trigger();
    }
    void Do(const char* name) const {
        Trigger(name);
        QCoreApplication::processEvents();
    }
    std::string StatusOf(const char* label) const {
        return FromQt(window_->findChild<QLabel*>(QString::fromLatin1(label))->text());
    }
    int Tabs() const { return window_->findChild<QTabWidget*>(QStringLiteral("arquivos"))->count(); }
    std::string Text() const { return *Tab().Editor()->Snapshot(); }
    const TXmlMessages& Messages() const { return Tab().Messages()->Messages(); }
    /// The first message with a correction that is accepted.
    std::size_t MessageWith(const std::function<bool(const TXmlMessage&)>& accepts) const {
        const auto found = std::ranges::find_if(Messages(), [&](const auto& message) {
            return !message->Solvers().empty() && accepts(*message);
        });
        EXPECT_NE(found, Messages().end());
        return static_cast<std::size_t>(found - Messages().begin());
    }
    void Type(const char* text) const {
        Tab().Editor()->setFocus();
        QTest::keyClicks(Tab().Editor()->viewport(), QString::fromUtf8(text));
    }
    void Drop(const QStringList& names) const {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& name : names)
            urls << QUrl::fromLocalFile(name);
        data.setUrls(urls);
        QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        // On the text of a file, where there is one: it must not take the names for its own.
        QApplication::sendEvent(Tabs() == 0 ? window_.get() : Tab().Editor()->viewport(), &enter);
        QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(window_.get(), &drop);
        QCoreApplication::processEvents();
    }

    /// What the command answers, with the names of files as the window says them.
    std::string Command(const std::vector<std::string>& words) const {
        std::istringstream in;
        std::ostringstream out;
        std::ostringstream err;
        EXPECT_EQ(RunCli(words, {in, out, err}), kExitValid) << err.str();
        std::string answer = out.str();
        const std::string folder = folder_.Path().string() + "/";
        for (std::size_t at = 0; (at = answer.find(folder, at)) != std::string::npos;)
            answer.erase(at, folder.size());
        return answer;
    }

    const TEnvironment tuss_{"CONFERIX_TUSS", CONFERIX_TUSS_DB};
    std::unique_ptr<TMainWindow> window_;
};

TEST_F(Window, WalksFromMessageToPlaceAndCorrectsOneInOneStep) {
    TDocumentTab& tab = Open(Copy(kFaulty));
    const std::string before = Text();
    EXPECT_EQ(StatusOf("estado"), "Inválido");
    EXPECT_THAT(StatusOf("tipo"), HasSubstr("versão 3.05.00"));
    EXPECT_EQ(StatusOf("codificacao"), "ISO-8859-1 (Windows-1252)");

    // From message to place by key, forwards in the order of the text, and back.
    std::vector<int> lines;
    tab.Editor()->GoTo(1, 1);
    for (int i = 0; i < 3; ++i) {
        Do("proximaMensagem");
        lines.push_back(tab.Editor()->CurrentLine());
        EXPECT_EQ(tab.Editor()->CurrentLine(), Messages()[*tab.Messages()->Current()]->Line());
        EXPECT_EQ(tab.Editor()->CurrentLinePos(), Messages()[*tab.Messages()->Current()]->LinePos());
    }
    EXPECT_TRUE(std::ranges::is_sorted(lines));
    Do("mensagemAnterior");
    EXPECT_LE(tab.Editor()->CurrentLine(), lines[2]);
    // Errors come round and round; with them hidden, warnings do.
    const auto goesRound = [&](TMessageType type) {
        const auto count = static_cast<std::size_t>(
            std::ranges::count(Messages(), type, [](const auto& message) { return message->MsgType(); }));
        std::set<std::size_t> seen;
        for (std::size_t i = 0; i <= count; ++i) {
            Do("proximaMensagem");
            seen.insert(*tab.Messages()->Current());
            EXPECT_EQ(Messages()[*tab.Messages()->Current()]->MsgType(), type);
        }
        EXPECT_EQ(seen.size(), count);
    };
    goesRound(TMessageType::mtError);
    auto* const errors = window_->findChild<QToolButton*>(QStringLiteral("filtroErros"));
    errors->click();
    goesRound(TMessageType::mtWarning);
    errors->click();

    // Of a message without a correction is said that it has none.
    const auto bare =
        std::ranges::find_if(Messages(), [](const auto& found) { return found->Solvers().empty(); });
    ASSERT_NE(bare, Messages().end());
    tab.Messages()->Select(static_cast<std::size_t>(bare - Messages().begin()));
    Do("corrigir");
    EXPECT_TRUE(tab.Notices()->IsShown(QStringLiteral("correcao")));
    EXPECT_TRUE(Text() == before);

    // Enter leads into the editor; a second one at once changes nothing.
    const std::size_t wrong = MessageWith([](const TXmlMessage& message) {
        return dynamic_cast<const TUpdateNodeValueSolver*>(message.Solvers().front().get()) != nullptr;
    });
    const TXmlMessage& message = *Messages()[wrong];
    const int line = message.Line();
    const std::string value =
        dynamic_cast<const TUpdateNodeValueSolver&>(*message.Solvers().front()).NewValue();
    tab.Messages()->Select(wrong);
    tab.Messages()->List()->setFocus();
    QTest::keyClick(tab.Messages()->List(), Qt::Key_Return);
    QTest::keyClick(tab.Editor(), Qt::Key_Return);
    EXPECT_EQ(tab.Editor()->CurrentLine(), line);
    EXPECT_TRUE(Text() == before);

    const auto row = tab.Messages()->Focus();
    const std::size_t count = Messages().size();
    Do("corrigir");
    WaitForVerdict();
    EXPECT_TRUE(Text() != before);
    EXPECT_THAT(FromQt(tab.Editor()->text(line - 1)), HasSubstr(">" + value + "<"));
    EXPECT_LT(Messages().size(), count);
    EXPECT_EQ(tab.Editor()->CurrentLine(), line);
    EXPECT_EQ(tab.Messages()->Focus()->Place, row->Place);
    EXPECT_EQ(StatusOf("estado"), "Modificado, Inválido");
    EXPECT_TRUE(Bytes() == ReadWholeFile(Example(kFaulty))) << "nothing is written before it is saved";

    Do("desfazer");
    EXPECT_TRUE(Text() == before);
    EXPECT_EQ(StatusOf("estado"), "Inválido antes da alteração") << "it is the file's text again";
    EXPECT_FALSE(window_->isWindowModified());
    WaitForVerdict(); // by itself, after a pause
    EXPECT_EQ(Messages().size(), count);
    Do("refazer");
    Do("salvar");
    EXPECT_FALSE(window_->isWindowModified());
    Do("desfazer");
    EXPECT_TRUE(window_->isWindowModified()) << "the file holds the correction";
}

TEST_F(Window, ChoosesAmongCorrectionsAndCancels) {
    std::string bytes = ReadWholeFile(Example("odonto-3.05.00-valido.xml")); // letters beyond ASCII
    const std::size_t hash = bytes.find(":hash>") + 6;
    bytes.replace(hash, bytes.find('<', hash) - hash, std::string(32, '0'));
    Write("lote.xml", bytes);
    TDocumentTab& tab = Open(folder_ / "lote.xml");
    const std::string before = Text();
    tab.Messages()->Select(
        MessageWith([](const TXmlMessage& message) { return message.Solvers().size() == 3; }));
    Visit([](QDialog& dialog) { Press(dialog, "Cancelar"); });
    Do("corrigir");
    EXPECT_TRUE(Text() == before);
    EXPECT_EQ(StatusOf("estado"), "Inválido");
    Visit([](QDialog& dialog) { Press(dialog, "OK"); });
    Do("corrigir");
    WaitForVerdict();
    EXPECT_TRUE(Text() != before);
}

TEST_F(Window, ShowsWhatAnotherEncodingChanges) {
    const std::string right = ReadWholeFile(Example("odonto-3.05.00-valido.xml")); // in UTF-8
    std::string misread = right;
    misread.replace(misread.find("UTF-8"), 5, "ISO-8859-1");
    Write("lote.xml", misread);
    Open(folder_ / "lote.xml");
    for (const char* answer : {"Cancelar", "Salvar"}) {
        EXPECT_TRUE(Bytes() == misread);
        Visit([answer](QDialog& dialog) {
            EXPECT_THAT(FromQt(Find<QPlainTextEdit>(dialog, "O que muda").toPlainText()),
                        HasSubstr("\"versÃ£o\" passa a \"versão\"."));
            Press(dialog, answer);
        });
        Do("UTF-8");
    }
    EXPECT_TRUE(Bytes() == right);
}

TEST_F(Window, CorrectsAllAfterALookAtTheDifferenceAndSaves) {
    std::string faulty = ReadWholeFile(Example(kFaulty)); // with a long line beside one that is corrected
    faulty.insert(faulty.find('\n', faulty.find("<ans:valorTotal>")),
                  "<!-- " + std::string(400, 'x') + " -->");
    Write("lote.xml", faulty);
    TDocumentTab& tab = Open(folder_ / "lote.xml");
    const std::string before = Text();
    const auto ready = [](QDialog& dialog) {
        Wait([&] { return Find<QPushButton>(dialog, "Corrigir").isEnabled(); });
        const auto& left = Find<QTreeView>(dialog, "Diferenças no texto: antes");
        const auto& right = Find<QTreeView>(dialog, "Diferenças no texto: depois");
        EXPECT_GT(left.model()->rowCount(), 0);
        // What is long is scrolled to, on both sides at once.
        Wait([&] { return left.horizontalScrollBar()->maximum() > 0; }); // once the rows are laid out
        left.horizontalScrollBar()->setValue(left.horizontalScrollBar()->maximum());
        EXPECT_EQ(right.horizontalScrollBar()->value(), left.horizontalScrollBar()->value());
        return Find<QTableView>(dialog, "Correções").model();
    };
    Visit([&](QDialog& dialog) {
        ready(dialog);
        Press(dialog, "Cancelar");
    });
    Do("corrigirTudo");
    EXPECT_TRUE(Text() == before);

    // What is not ticked stays as it is.
    std::string kept;
    Visit([&](QDialog& dialog) {
        auto* const corrections = ready(dialog);
        const int rows = corrections->rowCount();
        int row = 0; // of a value
        while (corrections->index(row, TCorrectionModel::kBefore).data().toString().isEmpty())
            ++row;
        kept = FromQt(corrections->index(row, TCorrectionModel::kBefore).data().toString());
        corrections->setData(corrections->index(row, 0), Qt::Unchecked, Qt::CheckStateRole);
        ready(dialog);
        EXPECT_LE(corrections->rowCount(), rows + 1);
        Press(dialog, "Corrigir");
    });
    Do("corrigirTudo");
    WaitForVerdict();
    EXPECT_TRUE(Text() != before);
    EXPECT_NE(Text().find(">" + kept + "<"), std::string::npos);
    EXPECT_EQ(StatusOf("estado"), "Modificado, Inválido");

    Visit([&](QDialog& dialog) {
        ready(dialog);
        Press(dialog, "Corrigir");
    });
    Do("corrigirTudo");
    WaitForVerdict();
    EXPECT_EQ(StatusOf("estado"), "Modificado, Válido");
    Do("salvar");
    EXPECT_EQ(StatusOf("estado"), "Válido");
    EXPECT_FALSE(Bytes() == faulty);
    Do("recarregar");
    WaitForVerdict();
    EXPECT_EQ(StatusOf("estado"), "Válido");
    // One step each.
    EXPECT_FALSE(tab.Editor()->isUndoAvailable());
}

TEST_F(Window, AsksBeforeChangesAreLost) {
    Open(Copy(kFaulty));
    const std::string original = Bytes();
    Type("<!-- a -->");
    Answer({"Cancelar"});
    Do("fechar");
    EXPECT_EQ(Tabs(), 1);
    Answer({"Cancelar"});
    EXPECT_FALSE(window_->close());
    Answer({"Descartar"});
    Do("fechar");
    EXPECT_EQ(Tabs(), 0);
    EXPECT_TRUE(Bytes() == original);
    EXPECT_THAT(TakeTold(), testing::Each(HasSubstr("\"lote.xml\" foi alterado. Salvar as alterações?")));

    Open(folder_ / "lote.xml");
    Type(" ");
    Answer({"Salvar"});
    EXPECT_TRUE(window_->close());
    EXPECT_TRUE(Bytes() == " " + original);
}

TEST_F(Window, AsksOnceForAllChangedFiles) {
    const std::string original = ReadWholeFile(Example(kFaulty));
    for (const char* name : {"a.xml", "b.xml", "c.xml"}) {
        Open(Copy(kFaulty, name));
        if (*name != 'b')
            Type(" ");
    }
    Answer({"Cancelar"});
    EXPECT_FALSE(window_->close());
    EXPECT_EQ(Tabs(), 3);
    EXPECT_THAT(TakeTold(),
                ElementsAre(testing::AllOf(HasSubstr("2 arquivos foram alterados."), HasSubstr("/a.xml\n"),
                                           HasSubstr("/c.xml"), testing::Not(HasSubstr("/b.xml")))));
    Answer({"Salvar todos"});
    EXPECT_TRUE(window_->close());
    EXPECT_TRUE(Bytes("a.xml") == " " + original);
    EXPECT_TRUE(Bytes("b.xml") == original);
    EXPECT_TRUE(Bytes("c.xml") == " " + original);
}

TEST_F(Window, ScreenReadersReadTheText) {
    TXmlEditor* const editor = Open(Copy("odonto-3.05.00-valido.xml")).Editor(); // letters beyond ASCII
    auto* const text = QAccessible::queryAccessibleInterface(editor)->textInterface();
    ASSERT_NE(text, nullptr);
    for (int step = 0; step < 2; ++step) { // the second time after a change
        const QString whole = ToQt(Text());
        EXPECT_EQ(text->characterCount(), whole.size());
        const QStringList lines = whole.split(QLatin1Char('\n'));
        int start = 0;
        for (int line = 1; line < static_cast<int>(lines.size());
             start += static_cast<int>(lines[line++ - 1].size()) + 1) {
            editor->GoTo(line, 1);
            ASSERT_EQ(text->cursorPosition(), start);
            int from = 0;
            int to = 0;
            ASSERT_EQ(text->textAtOffset(start, QAccessible::LineBoundary, &from, &to),
                      lines[line - 1] + QLatin1Char('\n'));
            ASSERT_EQ(text->text(from, to), whole.mid(from, to - from));
        }
        editor->GoTo(3, 1);
        editor->insert(QStringLiteral("ação 𝛼\n")); // a letter of two units
    }
}

TEST_F(Window, TakesFilesThatAreDropped) {
    const QStringList names = {ToQt(Copy(kFaulty, "a.xml")),
                               ToQt(Copy("monitoramento-1.06.00-valido.xml", "b.xml")),
                               ToQt(Copy("odonto-3.05.00-com-erros.xml", "c.xml"))};
    Drop(names);
    EXPECT_EQ(Tabs(), 3);
    WaitForVerdict();
    Drop({names[1], ToQt(folder_.Path().string())}); // again, and the folder of all
    EXPECT_EQ(Tabs(), 3);
    EXPECT_EQ(window_->Controllers().Count(), 3U);
    Answer({"OK"});
    Drop({ToQt((folder_ / "nenhum.xml").string())});
    EXPECT_EQ(Tabs(), 3);
    EXPECT_THAT(TakeTold(), ElementsAre(HasSubstr("nenhum.xml\" não existe.")));
    EXPECT_TRUE(window_->close());
}

TEST_F(Window, NeverOverwritesWhatOthersChanged) {
    const TDocumentTab& tab = Open(Copy(kFaulty));
    Type(" ");
    Write("lote.xml", "<outro/>");
    Wait([&] { return tab.Notices()->IsShown(QStringLiteral("disco")); });
    Answer({"Cancelar"});
    Do("salvar");
    EXPECT_EQ(Bytes(), "<outro/>");
    EXPECT_TRUE(tab.Controller().Modified());
    Answer({"Substituir"});
    Do("salvar");
    EXPECT_TRUE(Bytes() == " " + ReadWholeFile(Example(kFaulty)));
    EXPECT_FALSE(tab.Controller().Modified());

    Write("lote.xml", "<terceiro/>");
    Wait([&] { return tab.Notices()->IsShown(QStringLiteral("disco")); });
    Press(tab, "Recarregar");
    Wait([&] { return Text() == "<terceiro/>"; });

    // Its text would be lost with it.
    std::filesystem::remove(folder_ / "lote.xml");
    Answer({"Cancelar", "Salvar"});
    Do("fechar");
    EXPECT_EQ(Tabs(), 1);
    Do("fechar");
    EXPECT_EQ(Tabs(), 0);
    EXPECT_EQ(Bytes(), "<terceiro/>");
}

TEST_F(Window, ShowsFilesThatAreHardToShow) {
    std::string oneLine = ReadWholeFile(Example(kFaulty));
    std::erase(oneLine, '\n');
    while (oneLine.size() < 50'000)
        oneLine.insert(oneLine.find("<ans:cabecalho"), "<!-- " + std::string(900, 'x') + " -->");
    Write("linha.xml", oneLine);
    const TDocumentTab& tab = Open(folder_ / "linha.xml");
    EXPECT_TRUE(tab.Notices()->IsShown(QStringLiteral("formatado")));
    EXPECT_GT(tab.Editor()->LineCount(), 200);
    EXPECT_FALSE(tab.Controller().Modified());
    const std::size_t findings = Messages().size();
    Do("fechar"); // asks nothing
    EXPECT_TRUE(ReadWholeFile(folder_ / "linha.xml") == oneLine);

    Open(Copy(kFaulty));
    EXPECT_EQ(Messages().size(), findings) << "line breaks change no finding";
    Do("fechar");

    std::string crowded = ReadWholeFile(Example("consulta-4.01.00-valido.xml"));
    std::erase(crowded, '\n');
    Write("linha.xml", crowded);
    Open(folder_ / "linha.xml");
    EXPECT_EQ(Tab().Editor()->LineCount(), 1);
    const std::string inOneLine = Text();
    Press(Tab(), "Formatar");
    WaitForVerdict();
    EXPECT_GT(Tab().Editor()->LineCount(), 50);
    EXPECT_FALSE(Tab().Notices()->IsShown(QStringLiteral("formatado")));
    Do("desfazer");
    EXPECT_TRUE(Text() == inOneLine);
    Do("fechar"); // asks nothing

    Write("bytes.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>\xC3\xA7 \xE7\xFF</a>\n");
    window_->OpenFiles({ToQt((folder_ / "bytes.xml").string())});
    Wait([&] { return !Messages().empty(); });
    EXPECT_EQ(Messages().front()->Line(), 2);
    EXPECT_TRUE(Tab().Editor()->isReadOnly());
    EXPECT_THAT(FromQt(window_->windowTitle()), HasSubstr("(Inválido)"));
    EXPECT_FALSE(window_->findChild<QAction*>(QStringLiteral("salvar"))->isEnabled());
    EXPECT_TRUE(window_->close());
}

TEST_F(Window, LargeTextsStayWhole) {
    std::string lines;
    while (lines.size() < TReadyMemory::Least)
        lines += "<linha numero=\"" + std::to_string(lines.size()) + "\"/>\n";
    const auto before = std::make_shared<const std::string>("<antes>\n" + lines + "</antes>\n");
    const auto after = std::make_shared<const std::string>("<depois>\n" + lines + lines + "</depois>\n");
    TXmlEditor editor;
    editor.Load(after, true);
    editor.Load(before, true); // the first has not been shown yet
    Wait([&] { return !editor.IsLoading(); });
    TPatience patience(&editor, {}, TPatience::TStop::No);
    editor.ReplaceBy(after, patience);
    const auto shown = [&editor] {
        QByteArray bytes(static_cast<int>(editor.SendScintilla(TXmlEditor::SCI_GETLENGTH)) + 1, ' ');
        editor.SendScintilla(TXmlEditor::SCI_GETTEXT, static_cast<unsigned long>(bytes.size()), bytes.data());
        return bytes.chopped(1).toStdString();
    };
    EXPECT_TRUE(shown() == *after);
    editor.Undo([] { return true; });
    EXPECT_TRUE(shown() == *before);

    const TReadyMemory ready(2, TReadyMemory::Least);
    const std::vector<char> first(TReadyMemory::Least);
    void* second = TReadyMemory::Take(TReadyMemory::Least);
    EXPECT_NE(second, nullptr);
    operator delete(second);
    EXPECT_EQ(TReadyMemory::Take(TReadyMemory::Least), nullptr) << "the first went to the vector";
}

TEST_F(Window, IsPaintedWhateverIsDoneBeside) {
    QSemaphore end;
    std::atomic<int> ended = 0;
    const int threads = ThreadsBeside().maxThreadCount();
    for (int i = 0; i < threads; ++i)
        RunBeside(
            window_.get(), [&] { return end.tryAcquire(1, 20'000) ? 0 : ++ended; }, [](auto) {});
    EXPECT_FALSE(window_->grab().isNull()); // large areas are painted by several threads
    EXPECT_EQ(ended, 0) << "the window was not painted before";
    end.release(threads);
    ThreadsBeside().waitForDone();
}

TEST_F(Window, FiltersSortsAndGroupsMessages) {
    TDocumentTab& tab = Open(Copy("monitoramento-1.06.00-com-erros.xml"));
    const TMessageTable& table = tab.Messages()->Model().Table();
    const auto& panel = *tab.Messages();
    const std::size_t all = Messages().size();
    EXPECT_EQ(table.ShownCount(), all);
    EXPECT_LE(table.RowCount(), all);
    for (std::size_t row = 0; row < table.RowCount(); ++row)
        if (table.MemberCount(row) > 1) {
            EXPECT_THAT(table.GroupText(row), testing::ContainsRegex("[1-9][0-9]* (guias|vezes)"));
            EXPECT_THAT(table.GroupText(row), testing::Not(HasSubstr(" 0 vezes")));
        }
    panel.findChild<QComboBox*>(QStringLiteral("agrupar"))->setCurrentIndex(2);
    EXPECT_EQ(table.RowCount(), all);
    panel.List()->sortByColumn(static_cast<int>(TMessageColumn::Line), Qt::DescendingOrder);
    for (std::size_t i = 1; i < all; ++i)
        EXPECT_GE(Messages()[table.Shown(i - 1)]->Line(), Messages()[table.Shown(i)]->Line());
    Find<QLineEdit>(panel, "Filtrar por texto").setText(QStringLiteral("CÓDIGO"));
    Wait([&] { return table.ShownCount() < all; });
    EXPECT_GT(table.ShownCount(), 0U);
    for (std::size_t i = 0; i < table.ShownCount(); ++i)
        EXPECT_THAT(SearchText(Messages()[table.Shown(i)]->Reason()) + table.Digest().Key(table.Shown(i)),
                    HasSubstr("codigo"));
    // Hiding is of now alone.
    panel.List()->selectAll();
    tab.Messages()->HideSelected();
    EXPECT_EQ(table.ShownCount(), 0U);
    tab.Messages()->ShowHidden();
    EXPECT_GT(table.ShownCount(), 0U);
    EXPECT_EQ(Messages().size(), all);
}

TEST_F(Window, StopsAValidation) {
    const TDocumentTab& tab = Open(Copy(kFaulty));
    Trigger("validar");
    ASSERT_TRUE(tab.Session().IsValidating());
    Do("parar");
    EXPECT_EQ(StatusOf("estado"), "Não validado");
    EXPECT_TRUE(Messages().empty());
    QTest::qWait(300); // what was running tells nothing any more
    EXPECT_EQ(StatusOf("estado"), "Não validado");
    EXPECT_FALSE(tab.Editor()->isReadOnly());
}

TEST_F(Window, ShowsChosenGuidesAndSavesThePdfOfTheCommand) {
    const std::string file = Copy("spsadt-3.05.00-valido.xml");
    Open(file);
    Visit([&](QDialog& shown) {
        auto& dialog = dynamic_cast<TFGuidePrint&>(shown);
        ExpectNames(dialog);
        auto& page = Find<QSpinBox>(dialog, "Página");
        auto& guides = Find<QListView>(dialog, "Guias");
        EXPECT_EQ(page.maximum(), 3);
        EXPECT_TRUE(dialog.SavePdf(folder_ / "todas.pdf"));
        EXPECT_TRUE(Bytes("todas.pdf") == Command({"imprimir", file}));
        Find<QCheckBox>(dialog, "Com a descrição dos códigos").setChecked(true);
        EXPECT_TRUE(dialog.SavePdf(folder_ / "termos.pdf"));
        EXPECT_TRUE(Bytes("termos.pdf") == Command({"imprimir", file, "--com-descricao"}));

        // From page to page, and from the list to a guide.
        auto& view = *dialog.findChild<TPageView*>();
        view.setFocus();
        QTest::keyClick(&view, Qt::Key_End);
        EXPECT_EQ(page.value(), 3);
        QTest::keyClick(&view, Qt::Key_PageUp);
        EXPECT_EQ(page.value(), 2);
        guides.setCurrentIndex(guides.model()->index(1, 0));
        EXPECT_THAT(FromQt(view.accessibleName()), HasSubstr("Guia 20000002, "));
        auto& zoom = Find<QComboBox>(dialog, "Tamanho na tela");
        zoom.setCurrentIndex(zoom.findText("75 %"));
        EXPECT_EQ(view.Percent(), 75);

        QPrinter printer;
        printer.setOutputFileName(ToQt((folder_ / "impresso.pdf").string()));
        dialog.PrintOn(printer, 0, 2);
        EXPECT_THAT(Bytes("impresso.pdf"), HasSubstr("/Count 3"));
        EXPECT_EQ(dialog.Pages().Errors(), 0U);

        Press(dialog, "Desmarcar todas");
        EXPECT_FALSE(Find<QPushButton>(dialog, "Imprimir...").isEnabled());
        EXPECT_FALSE(Find<QPushButton>(dialog, "Salvar PDF...").isEnabled());
        guides.setFocus();
        QTest::keyClick(&guides, Qt::Key_Space);
        auto& form = Find<QComboBox>(dialog, "Formulário");
        form.setCurrentIndex(form.findData(QStringLiteral("spsadt")));
        EXPECT_TRUE(dialog.SavePdf(folder_ / "uma.pdf"));
        EXPECT_TRUE(Bytes("uma.pdf") == Command({"imprimir", file, "--guia", "20000002", "--formulario",
                                                 "spsadt", "--com-descricao"}));
        dialog.reject();
    });
    Do("imprimirGuias");
    Answer({"OK"});
    Open(Copy("monitoramento-1.06.00-valido.xml", "outro.xml"));
    Do("imprimirGuias");
    EXPECT_THAT(TakeTold(), ElementsAre(HasSubstr("Este arquivo não tem guias a imprimir")));
}

TEST_F(Window, LeadsFromAMessageToItsBox) {
    TDocumentTab& tab = Open(Copy(kFaulty));
    const auto show = [&](const char* element, std::size_t times) {
        std::size_t at = 0;
        for (std::size_t i = 0; i < times; ++i)
            at = Text().find(element, at + 1);
        const auto line =
            static_cast<int>(std::ranges::count(std::string_view(Text()).substr(0, at), '\n')) + 1;
        const auto about = std::ranges::find(Messages(), line, [](const auto& m) { return m->Line(); });
        if (about != Messages().end())
            tab.Messages()->Select(static_cast<std::size_t>(about - Messages().begin()));
        else
            tab.Editor()->GoTo(line, 1);
        window_->activateWindow(); // again, after a dialog
        EXPECT_TRUE(QTest::qWaitForWindowActive(window_.get()));
        tab.Editor()->setFocus();
        Do("mostrarNoFormulario");
    };
    const std::size_t wrong =
        MessageWith([](const TXmlMessage& message) { return message.Reason().starts_with("O valor"); });
    Visit([&](QDialog& dialog) {
        auto& view = *dialog.findChild<TPageView*>();
        EXPECT_THAT(FromQt(view.accessibleName()), HasSubstr("Assinalado: "));
        // The mark is no matter of colour alone: it leaves a frame and an arrow in a picture without colours.
        const QImage marked = view.viewport()->grab().toImage().convertToFormat(QImage::Format_Grayscale8);
        view.Mark({});
        EXPECT_NE(marked, view.viewport()->grab().toImage().convertToFormat(QImage::Format_Grayscale8));
        dialog.reject();
    });
    tab.Messages()->Select(wrong);
    tab.Messages()->List()->setFocus();
    Do("mostrarNoFormulario");
    EXPECT_TRUE(TakeTold().empty());
    Answer({"OK"});
    show("<ans:tipoTransacao>", 1);
    EXPECT_THAT(TakeTold(), ElementsAre(HasSubstr("está fora das guias")));
    Type("<");
    Answer({"OK"});
    Do("mostrarNoFormulario");
    EXPECT_THAT(TakeTold(), ElementsAre(HasSubstr("Valide o arquivo antes (F5).")));
}

TEST_F(Window, ListsCopiesAndSavesAsTheCommandDoes) {
    const std::string file = Copy(kFaulty);
    Open(file);
    Visit([&](QDialog& shown) {
        auto& dialog = dynamic_cast<TFListings&>(shown);
        auto& kind = Find<QComboBox>(dialog, "Listagem");
        auto& order = Find<QComboBox>(dialog, "Ordem");
        const auto ready = [&] { return Find<QPushButton>(dialog, "Salvar...").isEnabled(); };
        ExpectNames(dialog);
        for (const char* listing :
             {"capa", "procedimentos", "despesas", "profissionais", "entrega", "guias"}) {
            kind.setCurrentIndex(kind.findData(QLatin1String(listing)));
            Wait(ready);
            for (const char* format : {"csv", "json"}) {
                EXPECT_TRUE(dialog.Save(folder_ / (std::string("l.") + format)));
                EXPECT_EQ(Bytes(std::string("l.") + format),
                          Command({"listar", listing, file, "--formato", format}));
            }
        }
        const auto values = [&] {
            std::vector<std::string> guides;
            for (int row = 0; row < dialog.Model().rowCount() - 1; ++row)
                guides.push_back(FromQt(dialog.Model().index(row, 0).data().toString()));
            return guides;
        };
        const auto before = values();
        order.setCurrentIndex(order.findData(static_cast<int>(TListingOrder::Valor)));
        Wait(ready);
        EXPECT_TRUE(std::ranges::is_permutation(values(), before));

        auto& table = Find<QTableView>(dialog, "Linhas da listagem");
        table.selectRow(0);
        table.setFocus();
        QTest::keyClick(&table, Qt::Key_C, Qt::ControlModifier);
        const QStringList copied = QGuiApplication::clipboard()->text().split(QLatin1Char('\n'));
        EXPECT_EQ(copied.size(), 3);
        EXPECT_TRUE(copied[0].startsWith(QStringLiteral("Nº da guia\t")));
        EXPECT_EQ(copied[0].count(QLatin1Char('\t')), dialog.Model().columnCount() - 1);
        EXPECT_EQ(copied[1].section(QLatin1Char('\t'), 0, 0), ToQt(values()[0]));
        EXPECT_THAT(FromQt(copied[1]), testing::ContainsRegex("\t[0-9.]+,[0-9][0-9]"));
        dialog.Copy();
        Answer({"OK"});
        EXPECT_FALSE(dialog.Save(folder_ / "l.doc"));
        EXPECT_THAT(TakeTold(), ElementsAre(HasSubstr("termine em .csv, .html ou .pdf")));
        dialog.reject();
    });
    Do("listagens");
}

/// Takes the addresses that are opened.
class TBrowser : public QObject {
    Q_OBJECT

  public:
    TBrowser() { QDesktopServices::setUrlHandler(QStringLiteral("https"), this, "Open"); }
    ~TBrowser() override { QDesktopServices::unsetUrlHandler(QStringLiteral("https")); }
    QStringList Opened;

  public slots:
    void Open(const QUrl& url) { Opened << url.toString(); }
};

TEST_F(Window, TellsByItsBellWhatHappened) {
    auto& bell = *window_->findChild<TNoticeBell*>();
    const auto unread = [&] { return bell.text().toInt(); };
    Wait([&] { return unread() == 2; }); // the standard and the tables at hand
    EXPECT_EQ(bell.accessibleName(), "Avisos: 2 por ler");

    const std::string file = Copy("spsadt-3.05.00-valido.xml");
    Open(file);
    Visit([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Return); });
    Visit([](QDialog& dialog) {
        dialog.findChildren<QRadioButton*>().back()->click();
        Press(dialog, "OK");
    });
    Do("converter");
    Wait([&] { return unread() == 3; });
    Visit([&](QDialog& dialog) {
        dynamic_cast<QFileDialog&>(dialog).setDirectory(ToQt(folder_.Path().string()));
        QMetaObject::invokeMethod(&dialog, "accept");
    });
    Do("validarPasta");
    Wait([&] { return unread() == 4; });

    TBrowser browser;
    bell.Note([](TNoticeBox& box) {
        box.Add({.Subject = "x", .Key = "1", .Title = "Sem cifra", .Address = "http://exemplo.br/"});
        box.Add({.Subject = "x", .Key = "2", .Title = "Norma", .Address = "https://exemplo.br/n"});
    });
    Visit([&](QDialog& dialog) {
        ExpectNames(dialog);
        auto& table = Find<QTableWidget>(dialog, "Avisos");
        auto& open = Find<QPushButton>(dialog, "Abrir endereço");
        EXPECT_EQ(table.rowCount(), 6);
        EXPECT_THAT(FromQt(table.item(3, 3)->text()), HasSubstr("com pontos em aberto"));
        EXPECT_TRUE(browser.Opened.isEmpty());
        Press(dialog, "Abrir endereço");
        EXPECT_EQ(browser.Opened, QStringList(QStringLiteral("https://exemplo.br/n")));
        table.selectRow(1);
        EXPECT_FALSE(open.isEnabled());
        Press(dialog, "Marcar como lido");
        EXPECT_EQ(table.item(1, 0)->text(), "Lido");
        table.setFocus();
        QTest::keyClick(&table, Qt::Key_Delete);
        EXPECT_EQ(table.rowCount(), 5);
        Find<QCheckBox>(dialog, "Só os não lidos").setChecked(true);
        EXPECT_EQ(table.rowCount(), 5);
        dialog.reject();
    });
    Press(*window_, "Avisos: 6 por ler");
    EXPECT_EQ(unread(), 5);
    Visit([&](QDialog& dialog) {
        Press(dialog, "Marcar todos como lidos");
        EXPECT_EQ(Find<QTableWidget>(dialog, "Avisos").rowCount(), 0) << "only the unread ones, as before";
        dialog.reject();
    });
    Do("avisos");
    EXPECT_EQ(bell.text(), "");
    EXPECT_THAT(Command({"avisos"}), HasSubstr("Não há avisos novos"));
}

TEST_F(Window, SearchesAndReplacesByKeysAlone) {
    Write("lote.xml", "<a>pera e Pera e peras e pera</a>");
    TDocumentTab& tab = Open(folder_ / "lote.xml");
    Do("substituir");
    const auto press = [](int key) {
        QTest::keyClick(QApplication::focusWidget(), static_cast<Qt::Key>(key));
        QCoreApplication::processEvents();
    };
    const auto type = [](const char* text) {
        QTest::keyClicks(QApplication::focusWidget(), QString::fromUtf8(text));
    };
    type("pera");
    press(Qt::Key_Return);
    EXPECT_EQ(tab.Editor()->selectedText(), "pera");
    press(Qt::Key_Tab);
    type("uva");
    press(Qt::Key_Return); // that which was found; the next is of another case
    EXPECT_EQ(Text(), "<a>uva e Pera e peras e pera</a>");
    EXPECT_EQ(tab.Editor()->selectedText(), "Pera");
    for (const char* option : {"Maiúsculas e minúsculas", "Palavra inteira"}) {
        for (QCheckBox* box : window_->findChildren<QCheckBox*>())
            if (FromQt(box->text().remove(QLatin1Char('&'))) == option)
                QTest::keyClick(box, Qt::Key_Space);
    }
    Press(*window_, "Substituir todas");
    EXPECT_EQ(Text(), "<a>uva e Pera e peras e uva</a>");
    Do("desfazer");
    Do("desfazer");
    EXPECT_EQ(Text(), "<a>pera e Pera e peras e pera</a>");
    Find<QLineEdit>(*window_, "Localizar").setFocus();
    press(Qt::Key_Escape);
    EXPECT_EQ(QApplication::focusWidget(), tab.Editor());
}

/// The controls of a window that somebody who does not see it has to tell apart.
TEST_F(Window, EveryControlHasANameAndEveryActionAKeyOrAMenu) {
    Open(Copy(kFaulty));
    Do("substituir");
    for (const QWidget* control : window_->findChildren<QWidget*>()) {
        const bool counts = control->focusPolicy() != Qt::NoFocus && control->isVisible() &&
                            !control->objectName().startsWith(QLatin1String("qt_")) &&
                            control->focusProxy() == nullptr;
        if (counts && qobject_cast<const QTabBar*>(control) == nullptr &&
            qobject_cast<const QMenuBar*>(control) == nullptr) {
            EXPECT_FALSE(NameOf(*control).isEmpty())
                << control->metaObject()->className() << " " << FromQt(control->objectName()) << " in "
                << control->parentWidget()->metaObject()->className();
        }
    }
    QMap<QKeySequence, QString> keys;
    for (const QAction* menu : window_->menuBar()->actions()) {
        QSet<QChar> marks;
        for (const QAction* action : menu->menu()->actions()) {
            if (action->isSeparator())
                continue;
            const qsizetype mark = action->text().indexOf(QLatin1Char('&'));
            ASSERT_GE(mark, 0) << FromQt(action->text());
            const QChar letter = action->text()[mark + 1].toLower();
            EXPECT_FALSE(marks.contains(letter)) << FromQt(menu->text() + action->text());
            marks.insert(letter);
            if (!action->shortcut().isEmpty()) {
                EXPECT_EQ(keys.value(action->shortcut()), QString()) << FromQt(action->text());
            }
            keys.insert(action->shortcut(), action->shortcut().isEmpty() ? QString() : action->text());
        }
    }
    // Round the parts of a tab by key alone, and back to where it began.
    Tab().Editor()->setFocus();
    const QWidget* const first = QApplication::focusWidget();
    int steps = 0;
    do
        Do("proximaParte");
    while (QApplication::focusWidget() != first && ++steps < 10);
    EXPECT_EQ(steps, 3);
    // The help is one of the parts while it is there; Esc ends it.
    const auto inHelp = [&] {
        const QWidget* const focus = QApplication::focusWidget();
        return focus != nullptr && focus->accessibleName() == QLatin1String("Texto da regra");
    };
    Do("ajudaRegra");
    EXPECT_TRUE(inHelp());
    for (int i = 0; i < 5; ++i)
        Do("proximaParte");
    EXPECT_TRUE(inHelp());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
    Wait([&] { return QApplication::focusWidget() == first; });

    // A message that comes from no rule is explained all the same.
    Write("cortado.xml", "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a><b");
    Open(folder_ / "cortado.xml");
    Tab().Messages()->Select(0);
    Do("ajudaRegra");
    EXPECT_THAT(FromQt(Find<QTextBrowser>(*window_, "Texto da regra").toPlainText()),
                testing::AllOf(HasSubstr(Messages()[0]->Reason()), HasSubstr("Como corrigir")));
}

} // namespace
} // namespace conferix

#include "window_test.moc"
