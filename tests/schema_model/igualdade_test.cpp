// The schemas that come with the program say what the published ones say.
#include "schema_model/comparacao.h"
#include "schema_model/esquema_modelo.h"
#include "schema_model/esquema_xsd.h"
#include "support/support.h"
#include "xml/schema/schema_messages.h"
#include "xml/schema/schema_set.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <set>

namespace conferix {
namespace {

/// The schemas of all versions in a folder of their own.
class TEsquemasGerados : public testing::Test {
  protected:
    static void SetUpTestSuite() {
        folder_ = std::make_unique<TTemporaryFolder>();
        for (const auto& model :
             LoadModelos(std::filesystem::path(CONFERIX_FONTE) / "resources/schema_model")) {
            for (const std::string& versao : model->Versoes()) {
                WriteTestFile(folder_->Path() / model->NomeArquivo(versao), EsquemaXsd(*model, versao));
                files_[model->NomeArquivo(versao)] = {versao, model->Aproximada(versao)};
            }
            for (const auto& [prefix, imported] : model->Importados())
                WriteTestFile(folder_->Path() / imported->NomeArquivo({}), EsquemaXsd(*imported, {}));
        }
    }
    static void TearDownTestSuite() { folder_.reset(); }

    struct TFile {
        std::string Versao;
        bool Aproximado = false;
    };
    static inline std::unique_ptr<TTemporaryFolder> folder_;
    static inline std::map<std::string, TFile> files_;
};

/// Where the generated schemas differ on purpose.
struct TDesvio {
    std::string_view Arquivos; ///< beginning of the file's name
    std::string_view Onde;     ///< end of the difference's path, or what is published
    std::string_view Motivo;
};
constexpr TDesvio kDesvios[] = {
    {"tissV2_", "/valorDesconto (st_valorMonetario): tipo",
     "a type without name that restricts nothing is replaced by the type that it restricts"},
    {"tissV2_", "tipo derivado ct_diariaProrrogacaoAutorizada", "no element is of this type"},
    {"tissV3_00_01", "tipo derivado ct_solicitacaoProcedimento", "no element is of this type"},
    {"tissV3_0", "tipo derivado Signature",
     "the sets were published with either edition of the file that names the signature's type; their "
     "elements "
     "are of the other name, assinaturaDigital"},
    {"tissMonitoramentoQualidadeV", ": elementos globais",
     "XML Signature is imported, but no element refers to it"},
};

bool Wanted(const std::string& file, const TDiferenca& difference) {
    for (const TDesvio& deviation : kDesvios)
        if (file.starts_with(deviation.Arquivos) &&
            (difference.Caminho.ends_with(deviation.Onde) || difference.Publicado == deviation.Onde))
            return true;
    return false;
}

TEST_F(TEsquemasGerados, CadaPadraoTemUmaFraseSemExpressaoRegular) {
    std::set<std::string> patterns;
    for (const auto& [name, file] : files_) {
        const auto set = TSchemaSet::Load(folder_->Path() / name);
        for (const auto& type : set->SimpleTypes())
            for (const TSchemaPattern& pattern : type->Facets.Patterns)
                patterns.insert(pattern.Text);
    }
    EXPECT_GE(patterns.size(), 16U);
    for (const std::string& pattern : patterns) {
        TSchemaFault fault;
        fault.Code = TSchemaFaultCode::WrongPattern;
        fault.Name = "x";
        fault.Bound = pattern;
        EXPECT_EQ(TSchemaMessages::Sentence(fault).find(pattern), std::string::npos) << pattern;
    }
}

TEST_F(TEsquemasGerados, SaoIguaisAosPublicados) {
    const auto published = PublishedSchemas();
    if (!published)
        GTEST_SKIP() << "a pasta dos schemas publicados não existe nesta máquina";
    std::size_t compared = 0;
    for (const auto& [name, file] : files_) {
        if (!std::filesystem::exists(*published / name)) {
            EXPECT_TRUE(file.Aproximado) << name;
            continue;
        }
        EXPECT_FALSE(file.Aproximado) << name;
        ++compared;
        const auto theirs = TSchemaSet::Load(*published / name);
        const auto ours = TSchemaSet::Load(folder_->Path() / name);
        for (const TDiferenca& difference : CompararEsquemas(*theirs, *ours))
            if (!Wanted(name, difference))
                ADD_FAILURE() << name << ": " << difference.Caminho
                              << "\n  publicado: " << difference.Publicado
                              << "\n  gerado:    " << difference.Gerado;
    }
    EXPECT_EQ(compared, 28U);
}

TEST_F(TEsquemasGerados, AComparacaoMostraOQueMudouEntreVersoes) {
    struct TCase {
        std::string Antes, Depois, Caminho, Publicado, Gerado;
    };
    const std::vector<TCase> cases = {
        {"tissV4_00_01", "tissV4_01_00", "cabecalho/Padrao (dm_versao): códigos", "", "4.01.00"},
        {"tissV4_01_00", "tissV4_02_00", "/valorTotalProc (st_decimal10-2): totalDigits", "8", "10"},
        {"tissV3_05_00", "tissV4_00_00", "/prestadorParaOperadora: filhos", "", "envioDocumentos 0..1; "},
        {"tissV4_02_00", "tissV4_03_00", "/CNPJ (st_CNPJ): pattern", "[0-9]{14}\n", "[A-Z0-9]{12}[0-9]{2}\n"},
        {"tissV2_01_03", "tissV2_02_01", "/descricaoGlosa (st_descricaoGlosa): maxLength", "100", "500"},
    };
    for (const TCase& test : cases) {
        const auto differences =
            CompararEsquemas(*TSchemaSet::Load(folder_->Path() / (test.Antes + ".xsd")),
                             *TSchemaSet::Load(folder_->Path() / (test.Depois + ".xsd")));
        const bool found =
            std::any_of(differences.begin(), differences.end(), [&](const TDiferenca& difference) {
                return difference.Caminho.ends_with(test.Caminho) &&
                       difference.Publicado.ends_with(test.Publicado) &&
                       difference.Gerado.ends_with(test.Gerado);
            });
        EXPECT_TRUE(found) << test.Depois << " " << test.Caminho;
    }
}

TEST(Comparacao, VeTambemOQueOsNomesDosFilhosNaoMostram) {
    const TTemporaryFolder folder;
    const auto load = [&folder](const std::string& name, const std::string& content) {
        WriteTestFile(folder.Path() / name,
                      "<schema xmlns='http://www.w3.org/2001/XMLSchema'><element name='e'" + content +
                          "</element></schema>");
        return TSchemaSet::Load(folder.Path() / name);
    };
    const std::string children =
        "<element name='a' type='string' minOccurs='0'/><element name='b' type='string'/>";
    const auto type = [](const std::string& inner) { return "><complexType>" + inner + "</complexType>"; };
    const auto base = load("a.xsd", type("<sequence>" + children + "</sequence>"));
    struct TCase {
        std::string Conteudo;
        std::vector<TDiferenca> Diferencas;
    };
    const std::vector<TCase> cases = {
        {type("<sequence>" + children + "</sequence>"), {}},
        {type("<choice>" + children + "</choice>"),
         {{"e: depois da posição 0", " 0 1", "fim 0 1"}, {"e: depois da posição 1", " 1", "fim"}}},
        {" nillable='true'" + type("<sequence>" + children + "</sequence>"), {{"e: nulo", "não", "sim"}}},
        {type("<sequence>" + children + "</sequence><attribute name='c' type='string'/>"),
         {{"e: atributos", "", "{}c?-/-"}}},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const auto other = load("b" + std::to_string(i) + ".xsd", cases[i].Conteudo);
        EXPECT_THAT(CompararEsquemas(*base, *other), testing::UnorderedElementsAreArray(cases[i].Diferencas))
            << i;
    }
}

TEST_F(TEsquemasGerados, CompilamEmTodasAsVersoesDoPrograma) {
    for (const TArquivoTissClass& version : TArquivoTissFactory::Classes()) {
        std::string name(version.Versao);
        ReplaceAll(name, ".", "_");
        name = (name.starts_with("1") ? "tissMonitoramentoV" : "tissV") + name + ".xsd";
        ASSERT_TRUE(files_.contains(name)) << name;
        EXPECT_NO_THROW(TSchemaSet::Load(folder_->Path() / name)) << name;
    }
}

} // namespace
} // namespace conferix
