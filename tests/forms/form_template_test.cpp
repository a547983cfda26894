// What templates may say, and that they speak of elements that there are.
#include "forms/domain_terms.h"
#include "forms/form_template.h"
#include "forms/form_values.h"
#include "schema_model/built_in_folders.h"
#include "schema_model/schema_model.h"
#include "support/case_file.h"

#include <algorithm>
#include <map>

namespace conferix {
namespace {

using tests::TCase;

/// A template of a case, whose lines are written with "\n".
std::vector<std::string> Faults(const TCase& c) {
    std::string text = "guia consulta\nleiaute 3.00.00- retrato\n";
    for (const auto& [line, unused] : c.Inputs)
        text += line + "\n";
    try {
        CheckPaths(*ParseForm(c.Section == "inteiro" ? text.substr(text.find("retrato") + 8) : text, "modelo",
                              "modelo.txt"));
    } catch (const EInvalidForm& error) {
        return {error.what()};
    }
    return {};
}

TEST(FormTemplates, FaultsNameFileAndLine) {
    for (const TCase& c : tests::Cases("forms/modelos.casos"))
        tests::ExpectLines(c, Faults(c));
}

TEST(FormTemplates, ValuesAreShownAsTheFormsShowThem) {
    const std::map<std::string, TFormFormat> formats = {
        {"valor", TFormFormat::Money},       {"fator", TFormFormat::Factor},
        {"inteiro", TFormFormat::Integer},   {"quantidade", TFormFormat::Quantity},
        {"data", TFormFormat::Date},         {"hora", TFormFormat::Time},
        {"datahora", TFormFormat::DateTime}, {"sn", TFormFormat::YesNo},
        {"texto", TFormFormat::Text}};
    for (const TCase& c : tests::Cases("forms/valores.casos"))
        for (const auto& [value, shown] : c.Inputs)
            EXPECT_EQ(FormatFormValue(formats.at(c.Section), value), shown) << c;
}

/// The model that describes the messages of a version.
const TSchemaModel& ModelOf(std::string_view version) {
    static const auto models = LoadSchemaModels(SchemaModelFolder());
    for (const auto& model : models)
        if (model->FileName(version).starts_with("tissV") &&
            std::ranges::find(model->Versions(), version) != model->Versions().end())
            return *model;
    throw std::logic_error("no such version");
}

TEST(FormTemplates, SpeakOfElementsThatThereAre) {
    const std::vector<std::string> versions = [] {
        std::vector<std::string> all = ModelOf("2.02.03").Versions();
        const auto& newer = ModelOf("4.03.00").Versions();
        all.insert(all.end(), newer.begin(), newer.end());
        return all;
    }();
    const TFormSet forms = InstalledForms();
    ASSERT_EQ(forms.size(), 6U);
    for (const auto& form : forms) {
        for (const std::string& version : versions)
            EXPECT_NE(form->VariantFor(version), nullptr) << form->Name << ' ' << version;
        EXPECT_NO_THROW(CheckPaths(*form)) << form->Name;
    }
}

TEST(DomainTerms, AreOfCodesThatTheStandardHas) {
    const std::map<std::string, const char*> types = {{"23", "dm_caraterAtendimento"},
                                                      {"25", "dm_outrasDespesas"},
                                                      {"26", "dm_conselhoProfissional"},
                                                      {"35", "dm_grauPart"},
                                                      {"36", "dm_indicadorAcidente"},
                                                      {"39", "dm_motivoSaida"},
                                                      {"41", "dm_regimeInternacao"},
                                                      {"42", "dm_regiao"},
                                                      {"48", "dm_tecnicaUtilizada"},
                                                      {"50", "dm_tipoAtendimento"},
                                                      {"51", "dm_tipoAtendimentoOdonto"},
                                                      {"52", "dm_tipoConsulta"},
                                                      {"55", "dm_tipoFaturamento"},
                                                      {"57", "dm_tipoInternacao"},
                                                      {"59", "dm_UF"},
                                                      {"60", "dm_unidadeMedida"},
                                                      {"61", "dm_viaDeAcesso"},
                                                      {"76", "dm_regimeAtendimento"},
                                                      {"77", "dm_saudeOcupacional"},
                                                      {"87", "dm_tabela"}};
    const TDomainTerms terms = TDomainTerms::Installed();
    EXPECT_EQ(terms.Find("36", "9"), "N\xC3\xA3o acidente");
    EXPECT_EQ(terms.Find("36", "7"), "");
    for (const auto& entry : terms.All()) {
        const TModelSimpleType* type = ModelOf("4.03.00").SimpleType(types.at(entry.first.first));
        ASSERT_NE(type, nullptr) << entry.first.first;
        EXPECT_TRUE(std::ranges::any_of(
            type->Codes, [&](const TModelTerm& code) { return code.Text == entry.first.second; }))
            << entry.first.first << ' ' << entry.first.second;
    }
}

} // namespace
} // namespace conferix
