#include "listing/monitoring_listing.h"

#include "listing/cells.h"
#include "listing/lot_guides.h"
#include "model/tiss_utils.h"
#include "rules/monitoring/guia_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>

namespace conferix {

namespace {

using enum TCellKind;

constexpr TListingColumn kGuiasColumns[] = {
    {"guia", "Guia"},
    {"guiaOperadora", "Nº na operadora"},
    {"registro", "Tipo de registro"},
    {"evento", "Tipo de evento"},
    {"executante", "Executante"},
    {"data", "Data", Date},
    {"itens", "Itens", Count},
    {"valorInformado", "Valor informado", Money},
    {"valorCalculado", "Soma dos itens", Money},
    {"diferenca", "Diferença", Money},
    {"valorProcessado", "Valor processado", Money},
    {"valorGlosa", "Valor glosado", Money},
    {"valorPago", "Valor pago", Money},
    {"valorPagoItens", "Pago nos itens", Money},
};
constexpr TListingColumn kSumsColumns[] = {
    {"chave", "Grupo"},
    {"guias", "Guias", Count},
    {"itens", "Itens", Count},
    {"valorInformado", "Valor informado", Money},
    {"valorProcessado", "Valor processado", Money},
    {"valorGlosa", "Valor glosado", Money},
    {"valorPago", "Valor pago", Money},
};
constexpr TListingColumn kProcedimentosColumns[] = {
    {"tabela", "Tabela"},
    {"codigo", "Código ou grupo"},
    {"guias", "Guias", Count},
    {"quantidadeInformada", "Quantidade informada", Quantity},
    {"valorInformado", "Valor informado", Money},
    {"quantidadePaga", "Quantidade paga", Quantity},
    {"valorPago", "Valor pago", Money},
};
constexpr TListingColumn kDespesasColumns[] = {
    {"tipo", "Pago por"},
    {"guias", "Guias", Count},
    {"valorPago", "Valor pago", Money},
};

/// The parts of what was paid for a guide, as its totals tell them.
constexpr std::pair<std::string_view, TNumberField TGuiaFields::*> kPaid[] = {
    {"Procedimentos", &TGuiaFields::ValorTotalPagoProcedimentos},
    {"Diárias", &TGuiaFields::ValorTotalDiarias},
    {"Taxas", &TGuiaFields::ValorTotalTaxas},
    {"Materiais", &TGuiaFields::ValorTotalMateriais},
    {"OPME", &TGuiaFields::ValorTotalOPME},
    {"Medicamentos", &TGuiaFields::ValorTotalMedicamentos},
};

/// What a code stands for, after the code itself where it is none of these.
std::string Named(std::string_view code, std::initializer_list<std::string_view> names) {
    if (code.size() == 1 && code.front() >= '1' &&
        static_cast<std::size_t>(code.front() - '1') < names.size())
        return std::string(names.begin()[code.front() - '1']);
    return std::string(code);
}

std::string EventoText(std::string_view code) {
    return Named(code, {"Consulta", "SP/SADT", "Resumo de internação", "Odontologia", "Honorários"});
}

std::string RegistroText(std::string_view code) {
    return Named(code, {"Inclusão", "Alteração", "Exclusão"});
}

std::string_view DataOf(const TGuiaFields& guia) {
    const std::string_view data = guia.DataRealizacao.Field.Text();
    return data.empty() ? guia.DataInicialFaturamento.Field.Text() : data;
}

/// "2026-01" of a day; empty for what is none.
std::string MonthOf(const TGuiaFields& guia) {
    constexpr std::size_t kMonthLength = 7;
    const std::string_view data = DataOf(guia);
    return ParseIsoDate(data) ? std::string(data.substr(0, kMonthLength)) : std::string();
}

/// The sums of some guides.
struct TSums {
    std::size_t Guias = 0;
    std::size_t Itens = 0;
    TDecimalSum Informado;
    TDecimalSum Processado;
    TDecimalSum Glosa;
    TDecimalSum Pago;

    void Add(const TGuiaFields& guia) {
        ++Guias;
        Itens += guia.Itens.size();
        Informado.Add(guia.ValorTotalInformado.Value.value_or(0));
        Processado.Add(guia.ValorProcessado.Value.value_or(0));
        Glosa.Add(guia.ValorGlosaGuia.Value.value_or(0));
        Pago.Add(guia.ValorPagoGuia.Value.value_or(0));
    }
    TListingRow Row(std::string_view title, TListingMemory& memory) const {
        return memory.Row({memory.Text(title), CountCell(Guias), CountCell(Itens),
                           NumberCell(Informado.Value()), NumberCell(Processado.Value()),
                           NumberCell(Glosa.Value()), NumberCell(Pago.Value())});
    }
};

/// Sums of items.
struct TAmounts {
    TDecimalSum Informada;
    TDecimalSum Informado;
    TDecimalSum Paga;
    TDecimalSum Pago;

    void Add(const TItemFields& item) {
        Informada.Add(item.QuantidadeInformada.Value.value_or(0));
        Informado.Add(item.ValorInformado.Value.value_or(0));
        Paga.Add(item.QuantidadePaga.Value.value_or(0));
        Pago.Add(item.ValorPagoProc.Value.value_or(0));
    }
};

/// Makes the listings of one monitoring file.
class TMonitoringListing {
  public:
    TMonitoringListing(const IMonitoramento& file, TListingOrder order, TFileListing& listing)
        : file_(file), order_(order), listing_(listing), memory_(*listing.Memory) {}

    void List(TListingKind kind) {
        CheckContents();
        WriteHead();
        switch (kind) {
        case TListingKind::Guias:
            Guias();
            break;
        case TListingKind::Capa:
        case TListingKind::Profissionais:
            Sums(kind == TListingKind::Capa);
            break;
        case TListingKind::Procedimentos:
            Procedimentos();
            break;
        case TListingKind::Despesas:
            Despesas();
            break;
        case TListingKind::Entrega:
            throw ENotListed("um arquivo de monitoramento não tem protocolo de entrega; as guias dele são "
                             "enviadas à ANS, sem papel");
        }
        WriteTotals(kind);
        if (illegible_ != 0)
            listing_.Notes.push_back(IlegiveisText(illegible_));
        if (file_.Lote().SemMovimento())
            listing_.Notes.emplace_back("O arquivo declara que não há movimento.");
    }

  private:
    void WriteHead() {
        std::string month(file_.Lote().CompetenciaLote().Text());
        constexpr std::size_t kYear = 4;
        if (month.size() == kYear + 2)
            month = month.substr(kYear) + '/' + month.substr(0, kYear);
        listing_.Head = {
            {"operadora", "Operadora (registro ANS)", std::string(TTissUtils::RegistroANS(*file_.Xml()))},
            {"competencia", "Competência", std::move(month)},
            {"lote", "Nº do lote", std::string(file_.Lote().NumeroLote().Text())},
        };
    }

    /// Hands each guide on, and adds it to the totals.
    template<class Action>
    void ForEachGuia(Action&& action) {
        TGuiaReader reader;
        TGuiaFields guia;
        for (const TGuiaMonitoramento& each : file_.Lote().GuiasMonitoramento()) {
            reader.Read(each, guia);
            LeaveOutIlegiveis(guia);
            sums_.Add(guia);
            const std::optional<double> sum = SomaDosItens(guia, &TItemFields::ValorInformado);
            itens_.Add(sum.value_or(0));
            unknownSum_ = unknownSum_ || !sum;
            if (DifferenceOf(guia.ValorTotalInformado.Value, sum) || IsPaidOtherwise(guia))
                ++differing_;
            action(guia);
        }
    }

    /// What is no number, or too large to be added up, is counted and no longer told.
    void LeaveOutIlegiveis(TGuiaFields& guia) {
        const auto check = [this](TNumberField& field) {
            if (IsIlegivel(field.Field)) {
                field.Value.reset();
                ++illegible_;
            }
        };
        for (const auto field : {&TGuiaFields::ValorTotalInformado, &TGuiaFields::ValorProcessado,
                                 &TGuiaFields::ValorGlosaGuia, &TGuiaFields::ValorPagoGuia})
            check(guia.*field);
        for (const auto& [title, field] : kPaid)
            check(guia.*field);
        for (TItemFields& item : guia.Itens)
            for (const auto field : {&TItemFields::QuantidadeInformada, &TItemFields::ValorInformado,
                                     &TItemFields::QuantidadePaga, &TItemFields::ValorPagoProc})
                check(item.*field);
    }

    /// An amount of the items added up; nothing where one of them cannot be read.
    static std::optional<double> SomaDosItens(const TGuiaFields& guia, TNumberField TItemFields::*amount) {
        for (const TItemFields& item : guia.Itens)
            if (IsIlegivel((item.*amount).Field))
                return std::nullopt;
        return guia.SumOfItens(amount);
    }

    /// Whether what was paid for a guide is not what was paid for its items.
    static bool IsPaidOtherwise(const TGuiaFields& guia) {
        return DifferenceOf(guia.ValorPagoGuia.Value, SomaDosItens(guia, &TItemFields::ValorPagoProc))
            .has_value();
    }

    /// Refuses a file with other contents alone; where they stand beside guides, says that they are not
    /// listed.
    void CheckContents() {
        constexpr std::array<std::array<std::string_view, 3>, 3> kOthers = {
            {{"fornecimentoDiretoMonitoramento", "fornecimento direto", "fornecimentos diretos"},
             {"outraRemuneracaoMonitoramento", "outra remuneração", "outras remunerações"},
             {"valorPreestabelecidoMonitoramento", "valor preestabelecido", "valores preestabelecidos"}}};
        const TXmlNode* contents = file_.Lote().Node()->Find("Mensagem/operadoraParaANS");
        if (contents == nullptr)
            throw ENotListed(
                "o arquivo não tem o que a operadora envia à ANS, só o que a ANS responde; não há "
                "guias a listar");
        std::string others;
        for (const auto& [element, one, many] : kOthers) {
            std::size_t count = 0;
            for (const TXmlNode& child : contents->ChildTags())
                count += child.LocalName() == element ? 1 : 0;
            if (count != 0)
                others += fmt::format("{}{} {}", others.empty() ? "" : ", ", count, count == 1 ? one : many);
        }
        const bool hasGuides = contents->Child("guiaMonitoramento") != nullptr;
        if (!hasGuides && !file_.Lote().SemMovimento())
            throw ENotListed(others.empty()
                                 ? std::string("o arquivo não tem guias a listar")
                                 : fmt::format("o arquivo não tem guias, só {}, e as listagens são "
                                               "de guias",
                                               others));
        if (!others.empty())
            listing_.Notes.push_back(
                fmt::format("O arquivo tem também {}; as listagens são só das guias.", others));
    }

    /// The totals of the guides; under rows that are sums of other amounts than these, those of the rows
    /// first.
    void WriteTotals(TListingKind kind) {
        const auto add = [this](std::string_view key, std::string_view label, TCellKind cell,
                                std::optional<double> value) {
            listing_.Totals.push_back({key, label, cell, value, false, {}});
        };
        add("guias", "Guias", Count, static_cast<double>(sums_.Guias));
        if (kind == TListingKind::Procedimentos) {
            add("quantidadeInformada", "Quantidade informada", Quantity, rows_.Informada.Value());
            add("valorInformado", "Valor informado", Money, rows_.Informado.Value());
            add("quantidadePaga", "Quantidade paga", Quantity, rows_.Paga.Value());
            add("valorPago", "Valor pago", Money, rows_.Pago.Value());
            add("valorInformadoGuias", "Valor informado nas guias", Money, sums_.Informado.Value());
            add("valorPagoGuias", "Valor pago nas guias", Money, sums_.Pago.Value());
            return AddDiffering();
        }
        if (kind == TListingKind::Despesas) {
            add("valorPago", "Valor pago", Money, rows_.Pago.Value());
            add("valorPagoGuias", "Valor pago nas guias", Money, sums_.Pago.Value());
            return;
        }
        add("itens", "Itens", Count, static_cast<double>(sums_.Itens));
        add("valorInformado", "Valor informado", Money, sums_.Informado.Value());
        add("valorCalculado", "Soma dos itens", Money,
            unknownSum_ ? std::nullopt : std::optional(itens_.Value()));
        add("valorProcessado", "Valor processado", Money, sums_.Processado.Value());
        add("valorGlosa", "Valor glosado", Money, sums_.Glosa.Value());
        add("valorPago", "Valor pago", Money, sums_.Pago.Value());
        AddDiffering();
    }

    void AddDiffering() {
        listing_.Totals.push_back({"guiasComDiferenca",
                                   "Guias com diferença",
                                   Count,
                                   static_cast<double>(differing_),
                                   differing_ != 0,
                                   {}});
    }

    void Guias() {
        listing_.Columns = kGuiasColumns;
        std::vector<TListingRow>& rows = listing_.Groups.emplace_back().Rows;
        ForEachGuia([&](const TGuiaFields& guia) {
            const std::optional<double> sum = SomaDosItens(guia, &TItemFields::ValorInformado);
            const std::optional<double> difference = DifferenceOf(guia.ValorTotalInformado.Value, sum);
            rows.push_back(memory_.Row(
                {memory_.Text(guia.Guia.Identificacao()), memory_.Text(guia.NumeroGuiaOperadora.Text()),
                 memory_.Text(RegistroText(guia.TipoRegistro.Text())),
                 memory_.Text(EventoText(guia.TipoEventoAtencao.Text())),
                 memory_.Text(guia.CodigoCNPJ_CPF.Text()), memory_.Text(DataOf(guia)),
                 CountCell(guia.Itens.size()), NumberCell(guia.ValorTotalInformado.Value), NumberCell(sum),
                 NumberCell(difference), NumberCell(guia.ValorProcessado.Value),
                 NumberCell(guia.ValorGlosaGuia.Value), NumberCell(guia.ValorPagoGuia.Value),
                 NumberCell(SomaDosItens(guia, &TItemFields::ValorPagoProc))},
                difference.has_value() || IsPaidOtherwise(guia)));
        });
        Sort(rows);
    }

    void Sort(std::vector<TListingRow>& rows) const {
        constexpr std::size_t kGuia = 0;
        constexpr std::size_t kData = 5;
        constexpr std::size_t kInformado = 7;
        const auto text = [](const TListingRow& row, std::size_t column) { return row.Cells[column].Text(); };
        if (order_ == TListingOrder::Guia)
            std::ranges::stable_sort(rows, [&](const TListingRow& a, const TListingRow& b) {
                return IsNumeroBefore(text(a, kGuia), text(b, kGuia));
            });
        else if (order_ == TListingOrder::Data)
            std::ranges::stable_sort(rows, {}, [&](const TListingRow& row) { return text(row, kData); });
        else if (order_ == TListingOrder::Valor)
            std::ranges::stable_sort(rows, std::ranges::greater(), [&](const TListingRow& row) {
                return row.Cells[kInformado].Number().value_or(0);
            });
    }

    /// Sums by provider; of the cover also by kind of event and by month.
    void Sums(bool cover) {
        listing_.Columns = kSumsColumns;
        std::map<std::string, TSums> byEvent;
        std::map<std::string, TSums> byMonth;
        std::map<std::string, TSums> byProvider;
        ForEachGuia([&](const TGuiaFields& guia) {
            byProvider[std::string(guia.CodigoCNPJ_CPF.Text())].Add(guia);
            if (!cover)
                return;
            byEvent[std::string(guia.TipoEventoAtencao.Text())].Add(guia);
            byMonth[MonthOf(guia)].Add(guia);
        });
        if (cover) {
            AddSums("Por tipo de evento", byEvent, [](const std::string& code) { return EventoText(code); });
            AddSums("Por mês do atendimento", byMonth, [](const std::string& month) {
                return month.empty() ? month : month.substr(5) + '/' + month.substr(0, 4);
            });
        }
        AddSums("Por prestador", byProvider, [](const std::string& provider) { return provider; });
    }

    template<class Title>
    void AddSums(std::string title, const std::map<std::string, TSums>& sums, const Title& titleOf) {
        TListingGroup& group = listing_.Groups.emplace_back();
        group.Title = std::move(title);
        std::vector<std::pair<std::string, TSums>> rows(sums.begin(), sums.end());
        if (order_ == TListingOrder::Valor)
            std::ranges::stable_sort(rows, std::ranges::greater(),
                                     [](const auto& row) { return row.second.Informado.Value(); });
        for (const auto& [key, sum] : rows)
            group.Rows.push_back(sum.Row(key.empty() ? std::string("não informado") : titleOf(key), memory_));
    }

    void Procedimentos() {
        struct TSum : TAmounts {
            std::size_t Guias = 0;
            std::size_t Last = 0; ///< number of the guide that was counted last
        };
        listing_.Columns = kProcedimentosColumns;
        std::map<std::pair<std::string_view, std::string_view>, TSum> sums;
        ForEachGuia([&](const TGuiaFields& guia) {
            for (const TItemFields& item : guia.Itens) {
                const std::string_view code = item.CodigoProcedimento.Text();
                TSum& sum =
                    sums[{item.CodigoTabela.Text(), code.empty() ? item.GrupoProcedimento.Text() : code}];
                sum.Guias += std::exchange(sum.Last, sums_.Guias) == sums_.Guias ? 0 : 1;
                sum.Add(item);
                rows_.Add(item);
            }
        });
        std::vector<std::pair<std::pair<std::string_view, std::string_view>, TSum>> rows(sums.begin(),
                                                                                         sums.end());
        if (order_ == TListingOrder::Valor)
            std::ranges::stable_sort(rows, std::ranges::greater(),
                                     [](const auto& row) { return row.second.Informado.Value(); });
        TListingGroup& group = listing_.Groups.emplace_back();
        for (const auto& [code, sum] : rows)
            group.Rows.push_back(
                memory_.Row({memory_.Text(code.first), memory_.Text(code.second), CountCell(sum.Guias),
                             NumberCell(sum.Informada.Value()), NumberCell(sum.Informado.Value()),
                             NumberCell(sum.Paga.Value()), NumberCell(sum.Pago.Value())}));
    }

    void Despesas() {
        struct TSum {
            std::size_t Guias = 0;
            TDecimalSum Pago;
        };
        listing_.Columns = kDespesasColumns;
        std::array<TSum, std::size(kPaid)> sums;
        ForEachGuia([&](const TGuiaFields& guia) {
            for (std::size_t i = 0; i < std::size(kPaid); ++i) {
                const double value = (guia.*kPaid[i].second).Value.value_or(0);
                sums[i].Guias += value != 0 ? 1 : 0;
                sums[i].Pago.Add(value);
                rows_.Pago.Add(value);
            }
        });
        TListingGroup& group = listing_.Groups.emplace_back();
        for (std::size_t i = 0; i < std::size(kPaid); ++i)
            group.Rows.push_back(memory_.Row(
                {TListingCell(kPaid[i].first), CountCell(sums[i].Guias), NumberCell(sums[i].Pago.Value())}));
    }

    const IMonitoramento& file_;
    TListingOrder order_;
    TFileListing& listing_;
    TListingMemory& memory_; ///< the listing's
    TSums sums_;
    TAmounts rows_; ///< of all rows, where they are sums of items or of parts of what was paid
    TDecimalSum itens_;
    bool unknownSum_ = false; ///< of the items of a guide
    std::size_t differing_ = 0;
    std::size_t illegible_ = 0;
};

} // namespace

void ListMonitoring(const IMonitoramento& file, TListingKind kind, TListingOrder order,
                    TFileListing& listing) {
    if (order == TListingOrder::Beneficiario)
        throw ENotListed("as guias de um arquivo de monitoramento não têm o nome do beneficiário; use "
                         "--ordem guia, data ou valor");
    if (kind == TListingKind::Profissionais && (order == TListingOrder::Guia || order == TListingOrder::Data))
        throw ENotListed(
            "de um arquivo de monitoramento, profissionais soma por prestador; use --ordem valor");
    TMonitoringListing(file, order, listing).List(kind);
}

} // namespace conferix
