// What the model knows of elements over the versions: sentences for users, and the names that the bindings
// use.
#include "schema_model/element_history.h"
#include "support/case_file.h"
#include "support/support.h"
#include "xml/bindings/lote_guias_names.h"

#include <gmock/gmock.h>

#include <functional>
#include <set>

namespace conferix {
namespace {

std::filesystem::path Models() {
    return std::filesystem::path(CONFERIX_FONTE) / "resources/schema_model";
}

std::vector<std::string_view> Split(std::string_view path) {
    std::vector<std::string_view> names;
    while (!path.empty()) {
        const std::size_t length = std::min(path.find('/'), path.size());
        if (length > 0)
            names.push_back(path.substr(0, length));
        path.remove_prefix(std::min(length + 1, path.size()));
    }
    return names;
}

TEST(ElementHistory, TellsInWhichVersionsAnElementExists) {
    const TElementHistory history(LoadSchemaModels(Models()));
    for (const tests::TCase& test : tests::Cases("schema_model/history.txt"))
        for (const auto& [file, path] : test.Inputs) {
            const TElementHistory::TSentence said = history.Sentence(file, Split(path));
            EXPECT_EQ(said.Text, test.Expected.empty() ? "" : test.Expected.front()) << test;
            EXPECT_EQ(said.Removed, said.Text.starts_with("deixou")) << test;
        }
}

TEST(ElementHistory, KnowsRenamedElementsAndContentOfAnotherVersion) {
    const TElementHistory history(LoadSchemaModels(Models()));
    using TRelation = TElementHistory::TRelation;
    const auto header = Split("mensagemTISS/cabecalho");
    EXPECT_EQ(history.Relation("tissV3_05_00.xsd", header, "versaoPadrao", "Padrao"), TRelation::Renamed);
    EXPECT_EQ(history.Relation("tissV3_02_01.xsd", header, "Padrao", "versaoPadrao"), TRelation::Renamed);
    EXPECT_EQ(history.Relation("tissV3_05_00.xsd", header, "versaoPadrao", "origem"), TRelation::Distinct);
    EXPECT_EQ(history.Relation("tissV3_05_00.xsd", header, "intruso", "Padrao"), TRelation::None);

    const auto content = [&](const char* file, const std::vector<const char*>& attendance,
                             const char* named) {
        TElementPaths paths;
        for (const char* name : {"mensagemTISS", "prestadorParaOperadora", "loteGuias", "guiasTISS",
                                 "guiaConsulta", "dadosAtendimento"})
            paths.Entries.push_back({paths.Entries.empty() ? 0 : paths.Entries.size() - 1, name});
        const std::size_t parent = paths.Entries.size() - 1;
        for (const char* name : attendance)
            paths.Entries.push_back({parent, name});
        return history.VersionOfContent(file, paths, named);
    };
    const std::vector<const char*> of4 = {"indicacaoAcidente", "regimeAtendimento", "dataAtendimento",
                                          "saudeOcupacional",  "tipoConsulta",      "procedimento"};
    const std::vector<const char*> of3 = {"indicacaoAcidente", "dataAtendimento", "tipoConsulta",
                                          "procedimento"};
    EXPECT_EQ(content("tissV3_05_00.xsd", of4, ""), "4.00.00");
    EXPECT_EQ(content("tissV4_01_00.xsd", of4, ""), "");
    EXPECT_EQ(content("tissV4_01_00.xsd", of3, ""), "");               // one missing element says little,
    EXPECT_EQ(content("tissV4_01_00.xsd", of3, "3.04.01"), "3.04.01"); // unless the file says it too
    EXPECT_EQ(content("tissV4_01_00.xsd", of3, "4.02.00"), "");
}

TEST(ElementHistory, MissesWhatGroupsDemand) {
    const TElementHistory history(
        {TSchemaModel::Parse("arquivo a%.xsd\nespaco urn:a\nversoes 1.00.00 2.00.00\nelemento a\n  b "
                             "xs:string\n  c xs:string [1.00.00]\n"
                             "  sequencia [2.00.00]\n    d xs:string\n    todos\n      e xs:string\n    "
                             "escolha\n      f xs:string\n",
                             "m.txt", {})});
    TElementPaths paths;
    paths.Entries = {{0, "a"}, {0, "b"}};
    EXPECT_EQ(history.VersionOfContent("a2_00_00.xsd", paths, ""), "") << "two too few against one";
    paths.Entries.push_back({0, "c"});
    EXPECT_EQ(history.VersionOfContent("a2_00_00.xsd", paths, ""), "1.00.00");
}

/// Looks names up in the published versions of a range.
class TNomes {
  public:
    TNomes(std::string first, std::string last) : first_(std::move(first)), last_(std::move(last)) {}

    /// Expects a path below the lot to exist in a version at least; an empty name means that there is none.
    void Expect(const std::string& below, std::string_view name) const {
        if (name.empty())
            return;
        const std::string path =
            "mensagemTISS/prestadorParaOperadora/loteGuias/" + below + "/" + std::string(name);
        EXPECT_TRUE(Exists(path)) << first_ << " " << path;
    }
    const std::string& Ultima() const { return last_; }
    bool Exists(const std::string& path) const {
        for (const auto& model : models_)
            for (const std::string& versao : model->Versions())
                if (versao >= first_ && versao <= last_ && !model->IsApproximate(versao) &&
                    PathExists(*model, versao, Split(path)))
                    return true;
        return false;
    }

  private:
    std::string first_;
    std::string last_;
    std::vector<std::shared_ptr<const TSchemaModel>> models_ = LoadSchemaModels(Models());
};

void ExpectItems(const TNomes& names, const std::string& guia, const TItemListNames& list) {
    if (list.Item.empty())
        return;
    const std::string container = guia + "/" + std::string(list.Container);
    names.Expect(container, list.Item);
    const std::string item = container + "/" + std::string(list.Item);
    const TItemNames& v = list.Values;
    // The tables of 3.x are shared; items have had their number since 3.04.00.
    if (names.Ultima() >= "3.04.00")
        names.Expect(item, v.SequencialItem);
    for (const std::string_view name :
         {v.DataExecucao, v.CodigoTabela, v.CodigoProcedimento, v.CodigoDespesa, v.QuantidadeExecutada,
          v.ReducaoAcrescimo, v.ValorUnitario, v.ValorTotal})
        names.Expect(item, name);
}

void ExpectGuia(const TNomes& names, const std::string& guia, const TGuiaNames& of) {
    names.Expect(guia, of.NumeroGuia);
    names.Expect(guia, of.ValorTotalGuia);
    ExpectItems(names, guia, of.Procedimentos);
    ExpectItems(names, guia, of.Despesas);
    const TValorTotalNames& total = of.ValorTotal;
    for (const std::string_view name :
         {total.Procedimentos, total.Diarias, total.TaxasAlugueis, total.Materiais, total.Medicamentos,
          total.Opme, total.GasesMedicinais, total.TotalGeral})
        if (!name.empty())
            names.Expect(guia + "/" + std::string(total.Grupo), name);
}

TEST(Bindings, NamesOfLotsExistInTheVersionsThatUseThem) {
    struct TCase {
        const TLoteGuiasNames& Nomes;
        std::string Primeira, Ultima;
    };
    // 3.01.00 was never published and takes the names of both its neighbours.
    const TCase cases[] = {{kLoteGuiasV2, "2.01.03", "2.02.03"},
                           {kLoteGuiasV3_00, "3.00.00", "3.00.01"},
                           {kLoteGuiasV3_01, "3.00.00", "3.02.00"},
                           {kLoteGuiasV3_02, "3.02.00", "9.99.99"}};
    for (const TCase& test : cases) {
        const TNomes names(test.Primeira, test.Ultima);
        names.Expect("", test.Nomes.NumeroLote);
        const std::string container(test.Nomes.GuiasTiss);
        for (const auto& kind : test.Nomes.Guias) {
            for (const TGuiaNames& guia : kind) {
                std::vector<std::string> places;
                if (test.Nomes.Grupos.empty())
                    places.push_back(container + "/" + std::string(guia.Elemento));
                for (const std::string_view group : test.Nomes.Grupos) {
                    std::string place =
                        container + "/" + std::string(group) + "/" + std::string(guia.Elemento);
                    if (names.Exists("mensagemTISS/prestadorParaOperadora/loteGuias/" + place))
                        places.push_back(std::move(place));
                }
                EXPECT_EQ(places.size(), 1U) << guia.Elemento;
                for (const std::string& place : places)
                    ExpectGuia(names, place, guia);
            }
        }
    }
}

/// All "parent/child" pairs of elements of a kind of document, over its versions.
std::set<std::string> Pairs(const TSchemaModel& model) {
    std::set<std::string> pairs;
    std::function<void(const std::string&, const std::vector<TModelNode>&, int)> nodes;
    const std::function<void(const std::string&, const std::vector<TModelTerm>&, int)> types =
        [&](const std::string& parent, const std::vector<TModelTerm>& names, int depth) {
            for (const TModelTerm& name : names)
                if (const TModelComplexType* type = model.ComplexType(name.Text)) {
                    nodes(parent, type->Children, depth + 1);
                    types(parent, type->Bases, depth + 1);
                }
        };
    nodes = [&](const std::string& parent, const std::vector<TModelNode>& children, int depth) {
        ASSERT_LT(depth, 100);
        for (const TModelNode& child : children) {
            const bool element = child.Kind == TModelNode::TKind::Element;
            if (element && !pairs.insert(parent + "/" + child.Name).second && child.Children.empty() &&
                child.Bases.empty())
                continue;
            const std::string& within = element ? child.Name : parent;
            nodes(within, child.Children, depth + 1);
            types(within, child.Types, depth + 1);
            types(within, child.Bases, depth + 1);
        }
    };
    nodes("", model.Elements(), 0);
    return pairs;
}

TEST(Bindings, NamesOfTheMonitoringGuideExistInTheModel) {
    const std::set<std::string> pairs = Pairs(*TSchemaModel::Load(Models() / "monitoramento.txt"));
    std::set<std::string> names;
    for (const std::string& pair : pairs)
        names.insert(pair.substr(pair.find('/') + 1));
    const std::string source =
        ReadTestFile(std::filesystem::path(CONFERIX_FONTE) / "src/xml/bindings/guia_monitoramento_binding.h");
    int checked = 0;
    std::size_t end = 0;
    for (std::size_t quote = source.find('"'); quote != std::string::npos;
         quote = source.find('"', end + 1)) {
        end = source.find('"', quote + 1);
        const std::string before = source.substr(0, source.find_last_not_of(" \n", quote - 1) + 1);
        if (!before.ends_with("Field(") && !before.ends_with("Node(),"))
            continue;
        const std::string text = source.substr(quote + 1, end - quote - 1);
        const auto path = Split(text);
        EXPECT_TRUE(names.contains(std::string(path.front()))) << text;
        for (std::size_t i = 1; i < path.size(); ++i)
            EXPECT_TRUE(pairs.contains(std::string(path[i - 1]) + "/" + std::string(path[i]))) << text;
        ++checked;
    }
    EXPECT_GT(checked, 60);
}

} // namespace
} // namespace conferix
