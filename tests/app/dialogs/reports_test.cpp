#include "app/config.h"
#include "app/desktop/dialogs/batch_dialog.h"
#include "app/desktop/dialogs/history_dialog.h"
#include "app/desktop/dialogs/report_print.h"
#include "app/desktop/dialogs/rule_help.h"
#include "app/dialogs/dialog_test.h"
#include "app/missing_data.h"
#include "data/tuss_connection.h"
#include "report/rule_search.h"
#include "schema_model/built_in_folders.h"
#include "validator/rule_list.h"

#include <QAbstractTextDocumentLayout>
#include <QComboBox>
#include <QLineEdit>
#include <QPdfWriter>
#include <QProgressBar>
#include <QSignalSpy>
#include <QTableView>
#include <QTableWidget>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextDocument>
#include <QTreeWidget>

#include <nlohmann/json.hpp>

namespace conferix {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

TFileValidator Validator() {
    TConfig config;
    config.SetDefaultInitialConfig();
    return {TSchemaFolder({}, BuiltInSchemaFolder()),
            TDBConnectionFactory([] { return TTussConnection::InMemory(); }), config.EnabledValidations()};
}

class FBatchValidation : public TDialogTest {
  protected:
    FBatchValidation() {
        std::filesystem::create_directories(folder_ / "lotes/b");
        std::filesystem::copy(Example("consulta-4.01.00-valido.xml"), folder_ / "lotes/1.xml");
        std::filesystem::copy(Example("consulta-4.01.00-com-erros.xml"), folder_ / "lotes/2.xml");
        std::filesystem::copy(Example("consulta-4.01.00-valido.xml"), folder_ / "lotes/b/3.XML");
        WriteTestFile(folder_ / "lotes/4.xml", "<x>");
        WriteTestFile(folder_ / "lotes/leia.txt", "nada");
    }
    std::unique_ptr<TBatchValidation> Batch(const std::string& also = {}) const {
        std::vector<std::string> names = {(folder_ / "lotes").string()};
        if (!also.empty())
            names.push_back(also);
        return std::make_unique<TBatchValidation>(Validator(), ExpandFolders(names, true));
    }
    static std::vector<std::string> Rows(const QAbstractItemModel& model,
                                         std::initializer_list<int> columns) {
        std::vector<std::string> rows;
        for (int row = 0; row < model.rowCount(); ++row) {
            QStringList cells;
            for (const int column : columns)
                cells << model.index(row, column).data().toString();
            rows.push_back(FromQt(cells.join(u'|')));
        }
        return rows;
    }
};

TEST_F(FBatchValidation, ValidatesAFolderFileByFileAndOpensARow) {
    TFBatchValidation dialog(Batch((folder_ / "falta.xml").string()));
    QSignalSpy opened(&dialog, &TFBatchValidation::OpenRequested);
    dialog.show();
    ExpectNames(dialog);
    auto& table = Find<QTableView>(dialog, "Arquivos");
    EXPECT_THAT(Rows(*table.model(), {0, 1}), Contains("1.xml|Na fila"));
    EXPECT_FALSE(Find<QPushButton>(dialog, "Salvar relatório...").isEnabled());
    dialog.Start();
    Wait([&] { return dialog.Batch().Done() == 2; });
    Press(dialog, "Parar"); // between two files
    EXPECT_FALSE(dialog.Running());
    const std::size_t done = dialog.Batch().Done();
    QTest::qWait(50);
    EXPECT_EQ(dialog.Batch().Done(), done);
    EXPECT_EQ(Find<QProgressBar>(dialog, "Andamento").value(), static_cast<int>(done));
    Press(dialog, "Continuar");
    Wait([&] { return dialog.Batch().Finished(); });
    EXPECT_THAT(Rows(*table.model(), {0, 1, 2, 4, 5}),
                ElementsAre("1.xml|Válido|4.01.00|0|1", "2.xml|Inválido|4.01.00|6|1", "4.xml|Inválido||1|0",
                            "3.XML|Válido|4.01.00|0|1", "falta.xml|Não verificado||1|0"));
    EXPECT_THAT(Rows(*table.model(), {6}),
                ElementsAre("", "Guia 10000001 está também em 1.xml, linha 27, e mais 2", "",
                            HasSubstr("está também em 1.xml, linha"), "o arquivo não existe"));
    EXPECT_EQ(dialog.findChild<QLabel*>()->text(), "5 arquivos: 2 válidos, 2 inválidos, 1 não verificado");
    table.sortByColumn(TBatchModel::kErrors, Qt::DescendingOrder);
    table.setCurrentIndex(table.model()->index(0, 0));
    dialog.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&dialog));
    table.setFocus();
    QTest::keyClick(&table, Qt::Key_Return);
    ASSERT_EQ(opened.size(), 1);
    EXPECT_EQ(opened[0][0].toString(), ToQt((folder_ / "lotes/2.xml").string()));
    auto& shown = Find<QComboBox>(dialog, "Mostrar");
    shown.setCurrentIndex(shown.findText("Válidos"));
    EXPECT_THAT(Rows(*table.model(), {0}), testing::UnorderedElementsAre("1.xml", "3.XML"));
}

TEST_F(FBatchValidation, SavesTheReportOfWhatIsDone) {
    TFBatchValidation dialog(Batch());
    dialog.show();
    dialog.Start();
    Wait([&] { return dialog.Batch().Done() == 2; });
    dialog.Stop();
    ASSERT_TRUE(dialog.SaveReport(folder_ / "r.json"));
    ASSERT_TRUE(dialog.SaveReport(folder_ / "r.csv"));
    EXPECT_THAT(ReadTestFile(folder_ / "r.csv"), AllOf(HasSubstr("2.xml"), HasSubstr("10000003")));
    const auto report = nlohmann::json::parse(ReadTestFile(folder_ / "r.json"));
    ASSERT_EQ(report.size(), dialog.Batch().Done());
    EXPECT_EQ(report[0]["valido"], true);
    EXPECT_EQ(report[1]["valido"], false);
    EXPECT_EQ(report[1]["erros"], 6);
    Answer({"OK"});
    EXPECT_FALSE(dialog.SaveReport(folder_ / "falta/r.json"));
    EXPECT_THAT(TakeTold(), ElementsAre(HasSubstr("r.json")));
}

TEST_F(FBatchValidation, AFolderWithoutFilesIsSaid) {
    std::filesystem::create_directory(folder_ / "vazia");
    TFBatchValidation dialog(
        std::make_unique<TBatchValidation>(Validator(), ExpandFolders({(folder_ / "vazia").string()}, true)));
    dialog.show();
    dialog.Start();
    Wait([&] { return dialog.Batch().Finished(); });
    EXPECT_THAT(Rows(*Find<QTableView>(dialog, "Arquivos").model(), {0, 1, 6}),
                ElementsAre("vazia|Não verificado|a pasta não contém arquivos *.xml nem *.xte"));
}

class FReport : public TDialogTest {};

TEST_F(FReport, HoldsTheFindingsGuideByGuideAndBecomesAPdf) {
    const TFileResult result = Validator().ValidateFile(Example("consulta-4.01.00-com-erros.xml").string());
    const std::string text = FromQt(PrintableReport(result)->toPlainText());
    EXPECT_THAT(text, AllOf(HasSubstr("consulta-4.01.00-com-erros.xml"), HasSubstr("10000002"),
                            HasSubstr("porém o esperado é 180.01"), HasSubstr("Alterar o valor para 180.01"),
                            Not(HasSubstr("font-size")), Not(HasSubstr("exemplos/"))));
    EXPECT_LT(text.find("10000001"), text.find("10000003"));
    SaveReportPdf(result, folder_ / "r.pdf");
    const std::string pdf = ReadTestFile(folder_ / "r.pdf");
    EXPECT_THAT(pdf, AllOf(testing::StartsWith("%PDF-"), HasSubstr("/Title")));
    EXPECT_GT(pdf.size(), 5'000U);
    EXPECT_THROW(SaveReportPdf(result, folder_ / "falta/r.pdf"), EFileNotWritten);
}

/// Whoever gets it has no command line, and turns pages.
TEST_F(FReport, NamesNoCommandsAndLeavesNoHeadingAlone) {
    for (const char* example : {"consulta-4.01.00-com-erros.xml", "spsadt-3.05.00-valores-errados.xml",
                                "monitoramento-1.06.00-com-erros.xml", "odonto-3.05.00-com-erros.xml"}) {
        const auto report = PrintableReport(Validator().ValidateFile(Example(example).string()));
        EXPECT_THAT(FromQt(report->toPlainText()), Not(HasSubstr("conferix "))) << example;
        QPdfWriter paper(ToQt((folder_ / "p.pdf").string()));
        for (const int height : {200, 247, 297}) {
            paper.setPageSize(QPageSize(QSizeF(210, height), QPageSize::Millimeter));
            const auto pages = Paginated(*report, paper);
            const auto pageOf = [&](const QTextBlock& block) {
                const QTextLine line = block.layout()->lineAt(0);
                return static_cast<int>((pages->documentLayout()->blockBoundingRect(block).top() +
                                         (line.isValid() ? line.rect().center().y() : 0)) /
                                        pages->pageSize().height());
            };
            int headings = 0;
            for (QTextBlock block = pages->begin(); block.next().isValid(); block = block.next()) {
                if (block.blockFormat().headingLevel() == 0)
                    continue;
                ++headings;
                EXPECT_EQ(pageOf(block), pageOf(block.next())) << example << ": " << FromQt(block.text());
            }
            EXPECT_GT(headings, 5);
        }
    }
}

TEST_F(FReport, MessagesTellWhereWhatIsMissingIsImported) {
    // A version of which no schema was published.
    std::string approximate = ReadTestFile(Example("spsadt-3.05.00-valido.xml"));
    for (std::size_t at = 0; (at = approximate.find("3.05.00")) != std::string::npos;)
        approximate.replace(at, 7, "3.03.00");
    WriteTestFile(folder_ / "aproximado.xml", approximate);
    const struct {
        std::filesystem::path File;
        TMissingData Missing;
        std::size_t Least;
    } cases[] = {{Example("consulta-4.01.00-com-erros.xml"), TMissingData::Terminology, 1},
                 {Example("monitoramento-1.06.00-valido.xml"), TMissingData::Terminology, 2},
                 {folder_ / "aproximado.xml", TMissingData::Schema, 1}};
    for (const auto& c : cases) {
        std::size_t count = 0;
        const TFileResult result = Validator().ValidateFile(c.File.string());
        for (const auto& message : result.Validation.ValidationMessages) {
            const TMissingData missing = MissingDataOf(*message);
            count += missing == c.Missing ? 1 : 0;
            EXPECT_EQ(missing == TMissingData::Nothing,
                      message->Reason().find("instalada") == std::string::npos &&
                          message->Reason().find("importe-o") == std::string::npos)
                << message->Reason();
            EXPECT_THAT(TextForWindow(message->Reason()), Not(HasSubstr("conferix ")));
        }
        EXPECT_GE(count, c.Least) << c.File;
    }
}

class FRuleHelp : public TDialogTest {
  protected:
    static std::vector<std::string> Titles(const TRuleHelp& help) {
        std::vector<std::string> titles;
        const auto* const list = help.findChild<QTreeWidget*>();
        for (int family = 0; family < list->topLevelItemCount(); ++family)
            for (int i = 0; i < list->topLevelItem(family)->childCount(); ++i)
                titles.push_back(FromQt(list->topLevelItem(family)->child(i)->text(0)));
        return titles;
    }
};

TEST_F(FRuleHelp, ShowsThePageOfEachRuleAndFindsItByWords) {
    TRuleHelp help;
    help.show();
    ExpectNames(help);
    EXPECT_EQ(help.Shown(), nullptr);
    const std::size_t all = Titles(help).size();
    EXPECT_EQ(all, TRuleGuide::Instance().Texts().size());
    for (const TListedRule& rule : ListRules()) {
        ASSERT_TRUE(help.ShowRule(rule.Rule->Name)) << rule.Rule->Name;
        EXPECT_THAT(help.Shown()->Rules, Contains(rule.Rule->Name));
        EXPECT_THAT(FromQt(Find<QTextBrowser>(help, "Texto da regra").toPlainText()),
                    Not(HasSubstr("conferix ")));
    }
    EXPECT_FALSE(help.ShowRule("tiss.nenhuma"));
    help.ShowRule("tiss.mensagem.hash");
    const auto& page = Find<QTextBrowser>(help, "Texto da regra");
    EXPECT_THAT(FromQt(page.toPlainText()), HasSubstr(help.Shown()->Title));
    EXPECT_EQ(help.findChild<QTreeWidget*>()->currentItem()->text(0), ToQt(help.Shown()->Title));

    auto& words = Find<QLineEdit>(help, "Procurar nas regras");
    words.setText("HÁSH md5");
    EXPECT_THAT(Titles(help), Contains(help.Shown()->Title));
    EXPECT_LT(Titles(help).size(), all);
    words.setText("xyzxyz");
    EXPECT_THAT(Titles(help), IsEmpty());
    EXPECT_TRUE(help.ShowRule("tiss.mensagem.hash")) << "F1 finds what the search has left out";
    EXPECT_EQ(Titles(help).size(), all);
    EXPECT_EQ(SearchRuleTexts(TRuleGuide::Instance(), " ,; ").size(), all);
}

class FHistory : public TDialogTest {};

TEST_F(FHistory, ListsValidationsAndForgetsThemOnRequest) {
    TFileHistory history{TDatabase(folder_ / "conferix.db")};
    history.NoteValidated({"/lotes/a.xml", "", "4.01.00", false, 6, 1});
    history.NoteValidated({"/lotes/b.xml", "", "", std::nullopt, 0, 0});
    TFHistory dialog(history);
    dialog.show();
    ExpectNames(dialog);
    const auto& table = *dialog.findChild<QTableWidget*>();
    ASSERT_EQ(table.rowCount(), 2);
    QStringList cells;
    for (int column = 1; column < table.columnCount(); ++column)
        cells << table.item(1, column)->text();
    EXPECT_EQ(cells, QStringList({"a.xml", "Inválido", "4.01.00", "6", "1", "/lotes"}));
    Answer({"Não"});
    Press(dialog, "Limpar histórico");
    Press(dialog, "Abrir");
    EXPECT_EQ(dialog.Chosen(), "/lotes/b.xml");
    TFHistory again(history);
    again.show();
    Answer({"Sim"});
    Press(again, "Limpar histórico");
    EXPECT_THAT(history.Validations(), IsEmpty());
    EXPECT_FALSE(Find<QPushButton>(again, "Abrir").isEnabled());
}

} // namespace
} // namespace conferix
