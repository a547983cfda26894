#include "app/desktop/dialogs/cell_table.h"
#include "app/desktop/dialogs/configuracoes_dialog.h"
#include "app/desktop/dialogs/schemas_page.h"
#include "app/desktop/dialogs/terminology_page.h"
#include "app/desktop/dialogs/updates_page.h"
#include "app/desktop/dialogs/work_bar.h"
#include "app/dialogs/dialog_test.h"
#include "app/http_server.h"
#include "data/sha256.h"
#include "support/test_zip.h"

#include <QComboBox>
#include <QDropEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTimer>

#include <fmt/format.h>

namespace conferix {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// Rows of a table, cells joined by "|".
std::vector<std::string> RowsOf(const QWidget& in, const char* table, int columns) {
    std::vector<std::string> rows;
    for (TCellTable* found : in.findChildren<TCellTable*>()) {
        if (found->accessibleName() != QString::fromUtf8(table))
            continue;
        for (int row = 0; row < found->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < columns; ++column)
                cells << found->item(row, column)->text();
            rows.push_back(FromQt(cells.join(u'|')));
        }
    }
    return rows;
}

std::string LabelsOf(const QWidget& in) {
    QStringList texts;
    for (const QLabel* label : in.findChildren<QLabel*>())
        texts << label->text();
    return FromQt(texts.join(u'\n'));
}

class FConfiguracoes : public TDialogTest {
  protected:
    static void WaitFor(TWorkBar& work) {
        Wait([&] { return !work.Running(); });
    }
    /// Files that are let go over a widget.
    static void Drop(QWidget& on, const std::vector<std::filesystem::path>& files) {
        QMimeData data;
        QList<QUrl> urls;
        for (const std::filesystem::path& file : files)
            urls << QUrl::fromLocalFile(ToQt(file.string()));
        data.setUrls(urls);
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&on, &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent drop({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&on, &drop);
    }
    static const QPushButton& Button(const QWidget& in, const char* name) {
        return Find<QPushButton>(in, name);
    }

    const TEnvironment tuss_{"CONFERIX_TUSS", std::nullopt};
};

TEST_F(FConfiguracoes, ImportsTerminologyThatIsDroppedAndFindsItsTerms) {
    TFConfiguracoes dialog(TSettingsPage::Terminologia);
    dialog.show();
    TTerminologyPage& page = dialog.Terminologia();
    EXPECT_EQ(dialog.findChild<QTabWidget*>()->currentWidget(), &page);
    WaitFor(page.Work());
    EXPECT_THAT(LabelsOf(page), HasSubstr("Não foi possível abrir a base de terminologia"))
        << "there is none yet";
    Visit([](QDialog& result) {
        EXPECT_EQ(result.windowTitle(), "Resultado da importação");
        EXPECT_THAT(RowsOf(result, "Mudanças por tabela", 5),
                    AllOf(Contains("22|12|0|2|0"), Contains("64|6|0|0|0")));
        EXPECT_THAT(FromQt(Find<QPlainTextEdit>(result, "Observações").toPlainText()),
                    HasSubstr("Sem terminologia, não foi usado: "));
        Press(result, "Fechar");
    });
    std::filesystem::copy(Example("terminologia"), folder_ / "publicado");
    WriteTestFile(folder_ / "publicado/leia.csv", "a;b\n1;2\n");
    Drop(page, {folder_ / "publicado"});
    EXPECT_FALSE(Button(page, "Importar arquivos...").isEnabled()) << "one import at a time";
    Wait([&] { return dialog.HasChanged(); });
    WaitFor(page.Work());
    EXPECT_TRUE(std::filesystem::exists(folder_ / "dados/tuss.db"));
    EXPECT_THAT(RowsOf(page, "Tabelas da terminologia", 4),
                AllOf(Contains("22|Procedimentos e eventos em saúde|Instalada|12"),
                      Contains("87|Tabelas de terminologia|Não instalada|")));
    EXPECT_THAT(LabelsOf(page), HasSubstr("Não instaladas: 63, 87, municípios."));

    ExpectNames(dialog);
    const auto search = [&](const char* words) {
        Find<QLineEdit>(page, "Procurar termos").setText(words);
        Wait([&] { return !page.findChild<QTimer*>({}, Qt::FindDirectChildrenOnly)->isActive(); });
        return RowsOf(page, "Termos encontrados", 4);
    };
    EXPECT_THAT(search("avaliacao CONSULT"), Contains(HasSubstr("22|")));
    EXPECT_THAT(search("22900016"), ElementsAre(HasSubstr("22|22900016|")));
    EXPECT_THAT(search("av"), IsEmpty());
    EXPECT_THAT(LabelsOf(page), HasSubstr("ao menos 3 letras"));
    EXPECT_THAT(search("nenhuma destas"), IsEmpty());
    EXPECT_THAT(LabelsOf(page), HasSubstr("Nenhum termo encontrado."));
    auto& tables = Find<QComboBox>(page, "Tabela em que procurar");
    tables.setCurrentIndex(tables.findData("18"));
    EXPECT_THAT(search("22900016"), IsEmpty());

    Answer({"Não", "Sim", "Sim", "OK"});
    Press(page, "Voltar à base original");
    EXPECT_TRUE(std::filesystem::exists(folder_ / "dados/tuss.db"));
    Press(page, "Voltar à base original");
    EXPECT_FALSE(std::filesystem::exists(folder_ / "dados/tuss.db"));
    WaitFor(page.Work());
    Press(page, "Voltar à base original");
    EXPECT_EQ(TakeTold().back(), "Terminologia|Não há importações a desfazer.");
    WaitFor(page.Work());
}

TEST_F(FConfiguracoes, TellsWhyNothingWasImportedAndStopsOnRequest) {
    WriteTestFile(folder_ / "nada.zip", "PK isto não é um ZIP");
    TFConfiguracoes dialog(TSettingsPage::Terminologia);
    dialog.show();
    TTerminologyPage& page = dialog.Terminologia();
    WaitFor(page.Work());
    Answer({"OK"});
    page.Import({folder_ / "nada.zip"});
    WaitFor(page.Work());
    EXPECT_THAT(TakeTold(), ElementsAre(AllOf(HasSubstr("Terminologia|"), HasSubstr("nada.zip"))));
    EXPECT_FALSE(dialog.HasChanged());
    // Closing asks while something is being imported.
    std::string big = "Código do Termo;Termo;Data de início de vigência\n";
    for (int i = 0; i < 200'000; ++i)
        big += fmt::format("{};Procedimento {};2020-01-01\n", 10'000'000 + i, i);
    WriteTestFile(folder_ / "Tabela 22.csv", big);
    WaitFor(page.Work());
    page.Import({folder_ / "Tabela 22.csv"});
    Answer({"Não", "OK"});
    dialog.close();
    EXPECT_TRUE(dialog.isVisible());
    Press(page, "Parar");
    WaitFor(page.Work());
    EXPECT_THAT(TakeTold(), ElementsAre(HasSubstr("trabalho em andamento"), HasSubstr("interrompida")));
    EXPECT_FALSE(std::filesystem::exists(folder_ / "dados/tuss.db"));
    WaitFor(page.Work());
}

TEST_F(FConfiguracoes, ImportsSchemasAndGoesBackToTheBuiltInOnes) {
    const std::string schema =
        ReadTestFile(std::filesystem::path(CONFERIX_FONTE) / "tests/support/small.xsd");
    WriteZip(folder_ / "bom.zip", {{"a/tissV4_01_00.xsd", schema}});
    WriteZip(folder_ / "misto.zip", {{"a/tissV4_01_00.xsd", schema}, {"a/tissV3_05_00.xsd", "<x/>"}});
    WriteZip(folder_ / "outro.zip", {{"leia.txt", "nada"}});
    TFConfiguracoes dialog(TSettingsPage::Schemas);
    dialog.show();
    TSchemasPage& page = dialog.Schemas();
    WaitFor(page.Work());
    EXPECT_THAT(RowsOf(page, "Schemas das versões", 4),
                AllOf(Contains("Mensagem TISS|4.01.00|Embutido|tissV4_01_00.xsd"),
                      Contains(HasSubstr("aproximado"))));
    const struct {
        const char* File;
        std::vector<const char*> Told;
        const char* Row;
    } cases[] = {
        {"outro.zip", {"Não há schemas do padrão TISS"}, "4.01.00|Embutido|"},
        {"falta.zip", {"falta.zip"}, "4.01.00|Embutido|"},
        {"misto.zip",
         {"1 arquivo instalado", "Não podem ser usados:", "tissV3_05_00.xsd"},
         "4.01.00|Importado|"},
        {"bom.zip", {"1 arquivo instalado.\nMensagem TISS: 4.01.00"}, "4.01.00|Importado|"},
    };
    for (const auto& c : cases) {
        Answer({"OK"});
        Drop(page, {folder_ / c.File});
        WaitFor(page.Work()); // the import
        WaitFor(page.Work()); // the list
        const std::vector<std::string> told = TakeTold();
        ASSERT_EQ(told.size(), 1U) << c.File;
        for (const char* text : c.Told)
            EXPECT_THAT(told[0], HasSubstr(text)) << c.File;
        EXPECT_THAT(RowsOf(page, "Schemas das versões", 4), Contains(HasSubstr(c.Row))) << c.File;
    }
    EXPECT_TRUE(dialog.HasChanged());
    auto* const table = page.findChild<TCellTable*>();
    EXPECT_FALSE(Button(page, "Voltar ao embutido").isEnabled());
    for (int row = 0; row < table->rowCount(); ++row)
        if (table->item(row, 3)->text() == "tissV4_01_00.xsd")
            table->selectRow(row);
    EXPECT_TRUE(Button(page, "Voltar ao embutido").isEnabled());
    Answer({"Sim"});
    Press(page, "Voltar ao embutido");
    EXPECT_THAT(TakeTold(), ElementsAre(HasSubstr("da versão 4.01.00 serão removidos")));
    WaitFor(page.Work());
    EXPECT_THAT(RowsOf(page, "Schemas das versões", 4), Contains(HasSubstr("4.01.00|Embutido|")));
}

TEST_F(FConfiguracoes, ChecksForUpdatesAndInstallsThem) {
    {
        TUpdatesPage page;
        EXPECT_THAT(LabelsOf(page), HasSubstr("Nenhum endereço de atualização está configurado"));
        page.Check();
        WaitFor(page.Work());
        EXPECT_THAT(LabelsOf(page), HasSubstr("seção Atualizacao, chave Endereco"));
    }
    const std::string schema =
        ReadTestFile(std::filesystem::path(CONFERIX_FONTE) / "tests/support/small.xsd");
    WriteZip(folder_ / "bom.zip", {{"tissV4_01_00.xsd", schema}});
    WriteZip(folder_ / "ruim.zip", {{"leia.txt", "nada"}});
    THttpServer server([&](const std::string& target) {
        if (target != "/lista")
            return THttpAnswer{.Body = ReadTestFile(folder_ / target.substr(1))};
        std::string packages;
        for (const char* name : {"ruim", "bom"}) {
            const auto file = folder_ / (std::string(name) + ".zip");
            packages +=
                fmt::format(R"({}{{"nome": "{}", "tipo": "schemas", "versao": "4.01.00", "tamanho": {},
                                        "sha256": "{}", "endereco": "{}.zip"}})",
                            packages.empty() ? "" : ",", name, std::filesystem::file_size(file),
                            Sha256OfFile(file), name);
        }
        return THttpAnswer{.Body = "{\"pacotes\": [" + packages + "]}"};
    });
    WriteTestFile(folder_ / "Conferix.ini", "[Atualizacao]\nEndereco=" + server.Url("/lista") + "\n");
    TUpdatesPage page;
    bool changed = false;
    QObject::connect(&page, &TUpdatesPage::Changed, [&] { changed = true; });
    EXPECT_FALSE(Button(page, "Instalar").isEnabled());
    Press(page, "Verificar atualizações");
    WaitFor(page.Work());
    EXPECT_THAT(RowsOf(page, "Pacotes", 3), ElementsAre("ruim|schemas|4.01.00", "bom|schemas|4.01.00"));
    EXPECT_FALSE(changed);
    Press(page, "Instalar");
    WaitFor(page.Work());
    EXPECT_TRUE(changed);
    EXPECT_THAT(RowsOf(page, "Pacotes", 5),
                ElementsAre(HasSubstr("|Disponível"), AllOf(HasSubstr("bom|"), HasSubstr("|Instalado"))));
    EXPECT_THAT(LabelsOf(page), AllOf(HasSubstr("ruim 4.01.00: "), Not(HasSubstr("bom 4.01.00: "))));
    EXPECT_TRUE(std::filesystem::exists(folder_ / "dados/schemas/tiss/tissV4_01_00.xsd"));
}

} // namespace
} // namespace conferix
