#include "listing/guide_head.h"

#include "model/unidade_federativa.h"

#include <algorithm>
#include <array>
#include <utility>

namespace conferix {

namespace {

/// What is passed over: the items, and what speaks of others than who attended.
constexpr std::array<std::string_view, 9> kApart = {"procedimentosExecutados",
                                                    "procedimentosRealizados",
                                                    "procedimentosExamesRealizados",
                                                    "outrasDespesas",
                                                    "OPMUtilizada",
                                                    "OPMUtilizadas",
                                                    "dadosSolicitante",
                                                    "odontoInicial",
                                                    "diagnosticosSaidaInternacao"};

/// Elements that name a professional who attended. What stands beside the name belongs to it.
constexpr std::array<std::string_view, 5> kNames = {"nomeProf", "nomeProfissional", "nomeExecutante",
                                                    "nomeProfExec2", "nomeProfExec"};

/// Where the parts of a professional stand, the first that has a value.
struct TPart {
    std::string_view TProfissional::*Part;
    std::string_view Name;
};
constexpr std::array<TPart, 17> kParts = {{{&TProfissional::Conselho, "conselho"},
                                           {&TProfissional::Conselho, "conselhoProfissional"},
                                           {&TProfissional::Conselho, "conselhoProfissional/siglaConselho"},
                                           {&TProfissional::Numero, "numeroConselhoProfissional"},
                                           {&TProfissional::Numero, "conselhoProfissional/numeroConselho"},
                                           {&TProfissional::Numero, "croExec2"},
                                           {&TProfissional::Numero, "croExec"},
                                           {&TProfissional::Uf, "UF"},
                                           {&TProfissional::Uf, "conselhoProfissional/ufConselho"},
                                           {&TProfissional::Uf, "ufExec2"},
                                           {&TProfissional::Uf, "ufExec"},
                                           {&TProfissional::Cbo, "CBOS"},
                                           {&TProfissional::Cbo, "CBO"},
                                           {&TProfissional::Cbo, "cbos"},
                                           {&TProfissional::Cbo, "cbo"},
                                           {&TProfissional::Cbo, "cbosExec2"},
                                           {&TProfissional::Cbo, "cbosExec"}}};

/// The fields of the head. Of two names of one field the first that the guide has counts; of dates of the
/// guide the one that stands first here.
constexpr std::array<std::pair<std::string_view, std::string_view TGuiaHead::*>, 7> kFields = {
    {{"numeroGuiaOperadora", &TGuiaHead::NumeroOperadora},
     {"senha", &TGuiaHead::Senha},
     {"senhaAutorizacao", &TGuiaHead::Senha},
     {"numeroCarteira", &TGuiaHead::Carteira},
     {"nomeBeneficiario", &TGuiaHead::Beneficiario},
     {"dataAtendimento", &TGuiaHead::DataAtendimento},
     {"dataHoraAtendimento", &TGuiaHead::DataAtendimento}}};
constexpr std::array<std::string_view, 7> kDates = {
    "dataInicioFaturamento", "dataHoraInternacao", "dataTerminoTrat", "dataTerminoTratamento",
    "dataAutorizacao",       "dataSolicitacao",    "dataEmissaoGuia"};

// The professional councils by the codes of domain table 26.
constexpr std::array<std::pair<std::string_view, std::string_view>, 9> kCouncils = {{{"01", "CRAS"},
                                                                                     {"02", "COREN"},
                                                                                     {"03", "CRF"},
                                                                                     {"04", "CRFA"},
                                                                                     {"05", "CREFITO"},
                                                                                     {"06", "CRM"},
                                                                                     {"07", "CRN"},
                                                                                     {"08", "CRO"},
                                                                                     {"09", "CRP"}}};

bool IsAmong(std::string_view name, std::span<const std::string_view> names) {
    return std::ranges::find(names, name) != names.end();
}

/// The day of a date or of a date with time.
std::string_view DayOf(std::string_view text) {
    constexpr std::size_t kDayLength = 10;
    return text.substr(0, kDayLength);
}

/// The next node of a walk that does not go into this one.
const TXmlNode* NextBeside(const TXmlNode* node, const TXmlNode* root) {
    while (node != root && node->NextSibling() == nullptr)
        node = node->Parent();
    return node == root ? nullptr : node->NextSibling();
}

/// Adds the professional whose name an element is, if it is one.
void AppendProfissional(const TXmlNode& name, std::vector<TProfissional>& found) {
    if (!name.LocalName().starts_with("nome") || !IsAmong(name.LocalName(), kNames) || name.Value().empty())
        return;
    const TXmlNode& beside = *name.Parent();
    // A dental guide names whom it is contracted with, too.
    if (name.LocalName() == "nomeProfExec" && !ValueOf(beside.Child("nomeProfExec2")).empty())
        return;
    TProfissional professional{.Nome = name.Value()};
    for (const TPart& part : kParts)
        if (std::string_view& into = professional.*part.Part; into.empty())
            into = ValueOf(beside.Find(part.Name));
    if (name.LocalName().starts_with("nomeProfExec"))
        professional.Conselho = "CRO";
    found.push_back(professional);
}

} // namespace

std::string TProfissional::Text() const {
    const std::string code = (Conselho.size() == 1 ? "0" : "") + std::string(Conselho); // as in 3.02
    const auto* council = std::ranges::find(kCouncils, code, [](const auto& pair) { return pair.first; });
    std::string text(Nome);
    if (!Numero.empty()) {
        text.append(", ").append(council != kCouncils.end() ? council->second : Conselho);
        text.append(Conselho.empty() ? "" : " ").append(Numero);
        const bool letters = Uf.empty() || Uf.front() < '0' || Uf.front() > '9' || OtherCodeOfUf(Uf).empty();
        text.append(Uf.empty() ? "" : " ").append(letters ? Uf : OtherCodeOfUf(Uf));
    }
    if (!Cbo.empty())
        text.append(", CBO ").append(Cbo);
    return text;
}

TGuiaHead ReadGuiaHead(const IGuiaTiss& guia) {
    TGuiaHead head;
    std::size_t date = kDates.size();
    const TXmlNode* root = guia.Node();
    for (const TXmlNode* node = root->NextInWalk(root); node != nullptr;) {
        if (!node->IsTag() || IsAmong(node->LocalName(), kApart)) {
            node = NextBeside(node, root);
            continue;
        }
        const std::string_view name = node->LocalName();
        for (const auto& [field, member] : kFields)
            if (name == field && (head.*member).empty())
                head.*member = node->Value();
        if (const auto rank = static_cast<std::size_t>(std::ranges::find(kDates, name) - kDates.begin());
            rank < date && !node->Value().empty()) {
            date = rank;
            head.Data = DayOf(node->Value());
        }
        AppendProfissional(*node, head.Profissionais);
        node = node->NextInWalk(root);
    }
    head.DataAtendimento = DayOf(head.DataAtendimento);
    return head;
}

std::vector<TProfissional> ProfissionaisOf(const TXmlNode& item) {
    std::vector<TProfissional> found;
    for (const TXmlNode* node = item.NextInWalk(&item); node != nullptr; node = node->NextInWalk(&item))
        if (node->IsTag())
            AppendProfissional(*node, found);
    return found;
}

} // namespace conferix
