// conferix esquemas listar, importar and remover, as a user runs them.
#include "app/cli/cli.h"
#include "support/command_test.h"
#include "support/small_lote.h"
#include "support/support.h"
#include "support/test_zip.h"
#include "xml/schema/schema_files.h"

#include <gmock/gmock.h>

#include <array>
#include <map>

namespace conferix {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class ComandosDeSchemas : public TCommandTest {
  protected:
    std::filesystem::path Installed(const std::string& name) const {
        return File("dados/schemas/tiss/" + name);
    }

    /// Validates by the schemas that come with the program.
    TCommandResult Validar(const std::string& xml) const {
        WriteTestFile(File("arquivo.xml"), xml);
        return Run({"validar", File("arquivo.xml"), "--terminologia", CONFERIX_TUSS_DB});
    }
    TCommandResult Importar(const std::string& origem) const {
        return Run({"esquemas", "importar", File(origem)});
    }

    /// What is listed of a main schema, by its file name.
    std::map<std::string, json> List() const {
        std::map<std::string, json> rows;
        for (const json& row : RunJson({"esquemas", "listar"}))
            rows[row["arquivo"]] = row;
        return rows;
    }
    std::string Origin(const std::string& file) const { return List()[file]["origem"]; }
};

TEST_F(ComandosDeSchemas, EveryVersionIsServedFromTheFirstRun) {
    const auto rows = List();
    EXPECT_EQ(rows.size(), 34U);
    std::vector<std::string> approximate;
    for (const auto& [file, row] : rows) {
        EXPECT_EQ(row["origem"], "embutido") << file;
        EXPECT_EQ(row["compila"], true) << row;
        if (row["aproximado"])
            approximate.push_back(row["versao"]);
    }
    EXPECT_THAT(approximate, ElementsAre("1.04.00", "1.04.01", "1.05.00", "3.00.00", "3.01.00", "3.03.00"));
    EXPECT_THAT(
        Run({"esquemas", "listar"}).Out,
        HasSubstr(
            "\n  mensagem      3.00.00  tissV3_00_00.xsd                       embutido, aproximado\n"));
}

TEST_F(ComandosDeSchemas, FilesAreValidatedWithoutAnySchemaInstalled) {
    std::string xml = ReadTestFile(Example("spsadt-3.05.00-valido.xml"));
    EXPECT_EQ(Validar(xml).Status, kExitValid);
    EXPECT_FALSE(std::filesystem::exists(File("dados"))) << "a check writes nothing there";
    const std::string end = "</ans:dadosAtendimento>";
    ASSERT_NE(xml.find(end), std::string::npos);
    ReplaceAll(xml, end, "<ans:regimeAtendimento>01</ans:regimeAtendimento>" + end);
    const TCommandResult result = Validar(xml);
    EXPECT_EQ(result.Status, kExitInvalid);
    EXPECT_THAT(result.Out, HasSubstr(" em <dadosAtendimento>: só existe a partir da versão 4.00.00."));
}

TEST_F(ComandosDeSchemas, APackageIsImportedByBareNamesAndRemovedAgain) {
    // The folder's name is in code page 850.
    WriteZip(File("pacote.zip"),
             {{"Padr\xC6o Comunica\x87\xC6o/040100/tissV4_01_00.xsd", std::string(kSmallSchema)},
              {"Padr\xC6o Comunica\x87\xC6o/040100/leia.wsdl", "x"},
              {"Padr\xC6o Comunica\x87\xC6o/040100/solto.xsd", "<schema/>"}});
    std::filesystem::create_directories(Installed("importacao-0")); // of a killed import
    WriteTestFile(Installed("importacao-0") / "trava", "");
    const TCommandResult result = Importar("pacote.zip");
    EXPECT_EQ(result.Err, "");
    EXPECT_EQ(result.Status, kExitValid);
    EXPECT_EQ(result.Out, "1 arquivo instalado em " + Installed("").parent_path().make_preferred().string() +
                              "\nVersões que usam o schema publicado (mensagem): 4.01.00\n");
    EXPECT_EQ(ReadTestFile(Installed("tissV4_01_00.xsd")), kSmallSchema);
    std::vector<std::string> left;
    for (const auto& entry : std::filesystem::directory_iterator(Installed("")))
        left.push_back(entry.path().filename().string());
    EXPECT_THAT(left, ElementsAre("tissV4_01_00.xsd"));
    EXPECT_EQ(Origin("tissV4_01_00.xsd"), "importado");
    EXPECT_EQ(Origin("tissV4_00_00.xsd"), "embutido");

    const TCommandResult removed = Run({"esquemas", "remover", "4.01.00"});
    EXPECT_EQ(removed.Out, "mensagem 4.01.00: volta a usar o schema embutido\n");
    EXPECT_EQ(removed.Status, kExitValid);
    EXPECT_EQ(Origin("tissV4_01_00.xsd"), "embutido");
    const TCommandResult again = Run({"esquemas", "remover", "4.01.00"});
    EXPECT_EQ(again.Status, kExitInvalid);
    EXPECT_EQ(again.Err, "conferix: erro: a versão 4.01.00 não tem schema importado\n");
}

TEST_F(ComandosDeSchemas, RemovingKeepsWhatOtherImportedSetsNeed) {
    const std::string include =
        "<schema xmlns=\"http://www.w3.org/2001/XMLSchema\" targetNamespace=\"urn:t\"><include "
        "schemaLocation=\"comum.xsd\"/><include schemaLocation=\"so.xsd\"/><element name=\"e\"/></schema>";
    const std::string part = "<schema xmlns=\"http://www.w3.org/2001/XMLSchema\" targetNamespace=\"urn:t\"/>";
    std::string other = include;
    ReplaceAll(other, "<include schemaLocation=\"so.xsd\"/>", "");
    std::filesystem::create_directory(File("origem"));
    WriteTestFile(File("origem/tissV4_01_00.xsd"), include);
    WriteTestFile(File("origem/tissV4_02_00.xsd"), other);
    WriteTestFile(File("origem/comum.xsd"), part);
    WriteTestFile(File("origem/so.xsd"), part);
    EXPECT_THAT(Importar("origem").Out, StartsWith("4 arquivos instalados em "));
    EXPECT_EQ(Run({"esquemas", "remover", "4.01.00"}).Status, kExitValid);
    EXPECT_FALSE(std::filesystem::exists(Installed("so.xsd")));
    EXPECT_TRUE(std::filesystem::exists(Installed("comum.xsd")));
    EXPECT_EQ(Origin("tissV4_02_00.xsd"), "importado");
}

TEST_F(ComandosDeSchemas, PackagesThatAreNotToBeUnpackedAreRefusedWhole) {
    const TTestEntry good{"tissV4_01_00.xsd", std::string(kSmallSchema)};
    const std::string zeros(25'000'000, ' ');
    struct TCase {
        std::vector<TTestEntry> Entradas;
        std::string Motivo;
    };
    std::vector<TTestEntry> many;
    for (int i = 0; i < 10'001; ++i)
        many.push_back({std::to_string(i), ""});
    const std::vector<TCase> cases = {
        {{good, {"../fora.xsd", "x"}}, "o pacote contém um caminho que sai da pasta: \"../fora.xsd\""},
        {{good, {"a/../../fora.txt", "x"}},
         "o pacote contém um caminho que sai da pasta: \"a/../../fora.txt\""},
        {{good, {"a\\..\\fora.xsd", "x"}},
         "o pacote contém um caminho que sai da pasta: \"a\\..\\fora.xsd\""},
        {{good, {"/etc/fora.xsd", "x"}}, "o pacote contém um caminho que sai da pasta: \"/etc/fora.xsd\""},
        {{good, {"a/tiss.xsd:oculto.xsd", "x"}},
         "o pacote contém um nome que não é o de um arquivo no Windows: \"a/tiss.xsd:oculto.xsd\""},
        {{good, {"nul.v4/Com1 .xsd", "x"}},
         "o pacote contém um nome que não é o de um arquivo no Windows: \"nul.v4/Com1 .xsd\""},
        {{good, {"C:fora.xsd", "x"}}, "o pacote contém um caminho que sai da pasta: \"C:fora.xsd\""},
        {{good, {"Padr\xC6o.xsd", "/etc/passwd", true}}, "o pacote contém um atalho: \"Padrão.xsd\""},
        {{good, {"grande.xsd", zeros}}, "o pacote é grande demais para conter schemas: \"grande.xsd\""},
        {many, "o pacote contém arquivos demais"},
    };
    for (const TCase& test : cases) {
        WriteZip(File("pacote.zip"), test.Entradas);
        const TCommandResult result = Importar("pacote.zip");
        EXPECT_EQ(result.Status, kExitUnreadable) << test.Motivo;
        EXPECT_EQ(result.Err, "conferix: erro: " + File("pacote.zip") + ": " + test.Motivo + "\n");
        EXPECT_THAT(result.Out, IsEmpty());
        EXPECT_TRUE(std::filesystem::is_empty(Installed(""))) << test.Motivo;
    }
    WriteTestFile(File("pacote.zip"), "PK, mas não é um pacote");
    EXPECT_EQ(Importar("pacote.zip").Err,
              "conferix: erro: " + File("pacote.zip") +
                  ": não é um arquivo ZIP válido; ele pode ter chegado incompleto, baixe-o de novo\n");
    WriteZip(File("pacote.zip"), {{"leia.txt", "x"}});
    EXPECT_THAT(Importar("pacote.zip").Err, HasSubstr("não há schemas do padrão TISS"));
}

TEST_F(ComandosDeSchemas, ASetThatDoesNotCompileStaysOutside) {
    std::string broken(kSmallSchema);
    ReplaceAll(broken, "<element ", "<elemento ");
    WriteZip(File("pacote.zip"),
             {{"a/tissV4_01_00.xsd", std::string(kSmallSchema)}, {"a/tissV4_02_00.xsd", broken}});
    const TCommandResult result = Importar("pacote.zip");
    EXPECT_EQ(result.Status, kExitInvalid);
    EXPECT_THAT(result.Err, StartsWith("conferix: erro: tissV4_02_00.xsd: "));
    EXPECT_THAT(result.Out, HasSubstr("(mensagem): 4.01.00\n"));
    EXPECT_EQ(Origin("tissV4_02_00.xsd"), "embutido");
}

TEST_F(ComandosDeSchemas, BothEditionsOfTheSignatureServeBothTheirFolders) {
    const auto file = [](const std::string& space, const std::string& content) {
        return "<schema xmlns=\"http://www.w3.org/2001/XMLSchema\" xmlns:t=\"urn:t\" xmlns:ds=\"" +
               std::string(kSignatureNamespace) + "\" targetNamespace=\"" + space + "\">" + content +
               "</schema>";
    };
    std::vector<TTestEntry> entries;
    for (const auto& [folder, name, main] :
         {std::array<std::string, 3>{"1/", "assinaturaDigital", "tissV3_02_00.xsd"},
          std::array<std::string, 3>{"2/", "Signature", "tissV4_03_00.xsd"}}) {
        entries.push_back({folder + "ds.xsd",
                           file(std::string(kSignatureNamespace), "<complexType name=\"SignatureType\"/>")});
        entries.push_back({folder + "assinatura.xsd",
                           file("urn:t", "<complexType name=\"" + name +
                                             "\"><complexContent><extension base=\"ds:SignatureType\"/>"
                                             "</complexContent></complexType>")});
        entries.push_back(
            {folder + main, file("urn:t", "<import namespace=\"" + std::string(kSignatureNamespace) +
                                              "\" schemaLocation=\"ds.xsd\"/><include schemaLocation=\""
                                              "assinatura.xsd\"/><element name=\"e\" type=\"t:" +
                                              name + "\"/>")});
    }
    WriteZip(File("pacote.zip"), entries);
    const TCommandResult result = Importar("pacote.zip");
    EXPECT_EQ(result.Err, "");
    EXPECT_THAT(result.Out, HasSubstr("(mensagem): 3.02.00, 4.03.00\n"));
    for (const std::string name : {"tissV3_02_00.xsd", "tissV4_03_00.xsd"}) {
        EXPECT_EQ(List()[name]["origem"], "importado");
        EXPECT_EQ(List()[name]["compila"], true);
    }
}

TEST_F(ComandosDeSchemas, TheRegulatorsPackageIsImportedAsItIsPublished) {
    const auto published = PublishedSchemas();
    const auto package =
        published.value_or("").parent_path() / "schemas-zip" / "Componente_de_Comunicacao.zip";
    if (!published || !std::filesystem::exists(package))
        GTEST_SKIP() << "o pacote publicado não existe nesta máquina";
    const TCommandResult result = Run({"esquemas", "importar", package.string()});
    EXPECT_EQ(result.Err, "");
    EXPECT_EQ(result.Status, kExitValid);
    EXPECT_THAT(result.Out, HasSubstr("(mensagem): 4.03.00\n"));
    EXPECT_THAT(result.Out, HasSubstr("(monitoramento): 1.06.00\n"));
}

} // namespace
} // namespace conferix
