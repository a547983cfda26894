#include "listing/lot_listing.h"

#include "data/plain_text.h"
#include "listing/cells.h"
#include "listing/lot_guides.h"
#include "model/tiss_utils.h"
#include "rules/totalizer_validations.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <utility>

namespace conferix {

namespace {

using enum TCellKind;

constexpr TListingColumn kGuiasColumns[] = {
    {"guia", "Nº da guia"},
    {"guiaOperadora", "Nº na operadora"},
    {"senha", "Senha"},
    {"tipo", "Tipo de guia"},
    {"data", "Data", Date},
    {"carteira", "Carteira"},
    {"beneficiario", "Beneficiário"},
    {"profissional", "Profissional"},
    {"itens", "Itens", Count},
    {"valorInformado", "Valor informado", Money},
    {"valorCalculado", "Valor calculado", Money},
    {"diferenca", "Diferença", Money},
};
constexpr TListingColumn kCapaColumns[] = {
    {"composicao", "Composição"},
    {"valorInformado", "Valor informado", Money},
    {"valorCalculado", "Valor calculado", Money},
    {"diferenca", "Diferença", Money},
    {"guiasComDiferenca", "Guias com diferença", Count},
};
constexpr TListingColumn kProcedimentosColumns[] = {
    {"tabela", "Tabela"},
    {"codigo", "Código"},
    {"descricao", "Descrição"},
    {"guias", "Guias", Count},
    {"quantidade", "Quantidade", Quantity},
    {"valorTotal", "Valor total", Money},
};
constexpr TListingColumn kDespesasColumns[] = {
    {"codigo", "Código"},
    {"tipo", "Tipo de despesa"},
    {"itens", "Itens", Count},
    {"quantidade", "Quantidade", Quantity},
    {"valorInformado", "Valor informado", Money},
    {"valorCalculado", "Valor calculado", Money},
    {"diferenca", "Diferença", Money},
    {"guiasComDiferenca", "Guias com diferença", Count, false, "diferencas"},
};
constexpr TListingColumn kProfissionaisColumns[] = {
    {"guia", "Nº da guia"},
    {"data", "Data", Date},
    {"carteira", "Carteira"},
    {"beneficiario", "Beneficiário"},
    {"tabela", "Tabela"},
    {"codigo", "Código"},
    {"descricao", "Descrição"},
    {"quantidade", "Quantidade", Quantity, true},
    {"valorUnitario", "Valor unitário", Money},
    {"valorTotal", "Valor total", Money, true},
};
constexpr TListingColumn kEntregaColumns[] = {
    {"ordem", "Nº", Count},
    {"guia", "Nº da guia"},
    {"tipo", "Tipo de guia"},
    {"data", "Data", Date},
    {"carteira", "Carteira"},
    {"beneficiario", "Beneficiário"},
    {"valor", "Valor informado", Money, false, "valorInformado"},
};

/// A category of expenses as listings tell of it: code of domain table 25, in 2.x one digit.
struct TCategoriaListada {
    const TCategoriaDespesa& Categoria;
    std::string_view Codigo;
    std::string_view CodigoV2;
    std::string_view Titulo;
};
const std::array<TCategoriaListada, 6> kCategorias = {{
    {kGasesMedicinais, "01", "1", "Gases medicinais"},
    {kMedicamentos, "02", "2", "Medicamentos"},
    {kMateriais, "03", "3", "Materiais"},
    {kDiarias, "05", "5", "Diárias"},
    {kTaxasAlugueis, "07", "4, 6", "Taxas e aluguéis"},
    {kOpme, "08", "", "OPME"},
}};

/// A sum of those amounts that are known; nothing where none is.
class TKnownSum {
  public:
    void Add(const std::optional<double>& amount) {
        sum_.Add(amount.value_or(0));
        ++(amount ? terms_ : unknown_);
    }
    std::optional<double> Value() const { return terms_ == 0 ? std::nullopt : std::optional(sum_.Value()); }
    /// The same, but zero where there was nothing to add.
    std::optional<double> ValueOrZero() const { return unknown_ == 0 ? sum_.Value() : Value(); }
    std::size_t Terms() const { return terms_; }

  private:
    TDecimalSum sum_;
    std::size_t terms_ = 0;
    std::size_t unknown_ = 0;
};

/// Declared totals beside the sums that they stand for, guide by guide.
class TBalance {
  public:
    /// `judged`: whether a rule holds the two to be the same.
    void Add(std::optional<double> declared, std::optional<double> computed, bool judged = true) {
        declared = Addable(declared);
        computed = Addable(computed);
        declared_.Add(declared);
        computed_.Add(computed);
        partial_ = partial_ || (declared && !computed);
        judged_ = judged_ || (judged && declared && computed);
        if (const std::optional<double> difference = DifferenceOf(declared, computed); judged && difference) {
            difference_.Add(*difference);
            ++differing_;
        }
    }
    std::optional<double> Declared() const { return declared_.Value(); }
    /// Nothing where the sum of one of the declared totals is not known.
    std::optional<double> Computed() const { return partial_ ? std::nullopt : computed_.Value(); }
    std::optional<double> Difference() const {
        return differing_ == 0 ? std::nullopt : std::optional(difference_.Value());
    }
    std::size_t Differing() const { return differing_; }
    /// Whether a total was declared whose sum is not known.
    bool IsPartial() const { return partial_; }
    /// How many of the declared totals differ; nothing where none was judged.
    std::optional<double> DifferingOfJudged() const {
        return judged_ ? std::optional(static_cast<double>(differing_)) : std::nullopt;
    }
    /// Whether each of so many guides had a sum.
    bool HasComputedAll(std::size_t guides) const { return computed_.Terms() == guides; }
    /// True for a total that nothing is said of, or nothing but zeros.
    bool IsEmpty() const { return Declared().value_or(0) == 0 && Computed().value_or(0) == 0; }

  private:
    TKnownSum declared_;
    TKnownSum computed_;
    TDecimalSum difference_;
    std::size_t differing_ = 0;
    bool judged_ = false;
    bool partial_ = false; ///< a total without a sum was declared
};

std::string TiposText(const std::vector<TGuiaListada>& guias) {
    std::set<TEnumTipoGuia> tipos;
    for (const TGuiaListada& guia : guias)
        tipos.insert(guia.Guia.TipoGuia());
    std::string text;
    for (const TEnumTipoGuia tipo : tipos)
        text.append(text.empty() ? "" : ", ").append(TipoGuiaTitle(tipo));
    return text;
}

/// Months of the attendances, as "03/2026" or "02/2026 a 03/2026".
std::string ReferenciaText(const std::vector<TGuiaListada>& guias) {
    std::set<std::string> months;
    for (const TGuiaListada& guia : guias)
        if (const std::optional<TDate> date = ParseIsoDate(guia.Data))
            months.insert(fmt::format("{:04}-{:02}", static_cast<int>(date->year()),
                                      static_cast<unsigned>(date->month())));
    const auto text = [](const std::string& month) { return month.substr(5) + '/' + month.substr(0, 4); };
    if (months.empty())
        return {};
    return months.size() == 1 ? text(*months.begin())
                              : text(*months.begin()) + " a " + text(*months.rbegin());
}

std::string_view ProfissionalOf(const TGuiaListada& guia) {
    if (!guia.Head.Profissionais.empty())
        return guia.Head.Profissionais.front().Nome;
    if (guia.Guia.TipoGuia() != TEnumTipoGuia::tgConsulta)
        for (const TProcedimentoListado& procedimento : ProcedimentosOf(guia.Guia))
            if (const std::vector<TProfissional> team = ProfissionaisOf(*procedimento.Node); !team.empty())
                return team.front().Nome;
    return {};
}

/// Makes the listings of one lot.
class TLotListing {
  public:
    TLotListing(const IMensagemTiss& message, TListingOrder order, TFileListing& listing)
        : message_(message), judged_(message.Versao() >= kTotaisDesdeVersao), listing_(listing),
          memory_(*listing.Memory), guias_(GuiasOf(message.LoteGuias(), message.Versao(), order)),
          order_(order) {}

    void List(TListingKind kind) {
        CheckContents();
        WriteHead();
        NoteLeftOut(kind);
        listing_.Groups.emplace_back();
        switch (kind) {
        case TListingKind::Guias:
            return Guias();
        case TListingKind::Capa:
            return Capa();
        case TListingKind::Procedimentos:
            return Procedimentos();
        case TListingKind::Despesas:
            return Despesas();
        case TListingKind::Profissionais:
            return Profissionais();
        case TListingKind::Entrega:
            return Entrega();
        }
    }

  private:
    void WriteHead() {
        const TXmlDocument& document = *message_.Xml();
        std::string prestador(TTissUtils::NomeContratado(document));
        if (prestador.empty())
            prestador = TTissUtils::CodigoContratado(document);
        listing_.Head = {
            {"lote", "Nº do lote", std::string(message_.LoteGuias().NumeroLote().Text())},
            {"tipo", "Tipo de guia", TiposText(guias_)},
            {"operadora", "Operadora (registro ANS)", std::string(TTissUtils::RegistroANS(document))},
            {"prestador", "Prestador", std::move(prestador)},
        };
    }

    /// Refuses a lot without guides; says what stands in it and is not read.
    void CheckContents() {
        const std::vector<std::string> texts = message_.LoteGuias().GuiasNaoLidas().Textos("listad");
        if (guias_.empty())
            throw ENotListed(fmt::format("o lote não tem guias a listar{}{}", texts.empty() ? "" : ": ",
                                         fmt::join(texts, " ")));
        listing_.Notes.insert(listing_.Notes.end(), texts.begin(), texts.end());
    }

    /// Sums that leave something out say so.
    void NoteLeftOut(TListingKind kind) {
        std::size_t illegible = 0;
        std::size_t untold = 0;
        std::size_t untoldItems = 0;
        for (const TGuiaListada& guia : guias_) {
            illegible += guia.Ilegiveis;
            untold += guia.SemTotal ? 1 : 0;
            untoldItems += guia.ItensSemTotal;
        }
        if (illegible != 0)
            listing_.Notes.push_back(IlegiveisText(illegible));
        if (untold != 0)
            listing_.Notes.push_back(
                untold == 1
                    ? "1 guia não informa o seu valor total, que falta no valor informado."
                    : fmt::format("{} guias não informam o seu valor total, que falta no valor informado.",
                                  untold));
        if (untoldItems != 0 && kind != TListingKind::Entrega)
            listing_.Notes.push_back(
                untoldItems == 1
                    ? "1 item não informa o seu valor total; as somas em que ele entra ficam em branco ou "
                      "sem ele."
                    : fmt::format(
                          "{} itens não informam o seu valor total; as somas em que eles entram ficam em "
                          "branco ou sem eles.",
                          untoldItems));
    }

    void AddRow(std::initializer_list<TListingCell> cells, bool differs = false) {
        listing_.Groups.back().Rows.push_back(memory_.Row(cells, differs));
    }
    TListingCell TextCell(std::string_view text) { return memory_.Text(text); }

    void AddTotal(std::string_view key, std::string_view label, TCellKind kind, std::optional<double> value,
                  bool differs = false) {
        listing_.Totals.push_back({key, label, kind, value, differs, {}});
    }

    /// Number of guides, their totals, and in how many these differ.
    void AddTotals(const TBalance& balance) {
        AddTotal("guias", "Guias", Count, static_cast<double>(guias_.size()));
        AddTotal("valorInformado", "Valor informado", Money, balance.Declared());
        AddTotal("valorCalculado", "Valor calculado", Money,
                 balance.HasComputedAll(guias_.size()) ? balance.Computed() : std::nullopt);
        AddTotal("guiasComDiferenca", "Guias com diferença", Count, balance.DifferingOfJudged(),
                 balance.Differing() != 0);
    }

    TBalance TotalGeral() const {
        TBalance balance;
        for (const TGuiaListada& guia : guias_)
            balance.Add(guia.Informado, guia.Calculado);
        return balance;
    }

    void Guias() {
        listing_.Columns = kGuiasColumns;
        for (const TGuiaListada& guia : guias_) {
            const std::optional<double> difference = DifferenceOf(guia.Informado, guia.Calculado);
            AddRow({TextCell(guia.Guia.NumeroMostrado()), TextCell(guia.Head.NumeroOperadora),
                    TextCell(guia.Head.Senha), TListingCell(TipoGuiaTitle(guia.Guia.TipoGuia())),
                    TextCell(guia.Data), TextCell(guia.Head.Carteira), TextCell(guia.Head.Beneficiario),
                    TextCell(ProfissionalOf(guia)), CountCell(guia.Itens), NumberCell(guia.Informado),
                    NumberCell(guia.Calculado), NumberCell(difference)},
                   difference.has_value());
        }
        AddTotals(TotalGeral());
    }

    void Entrega() {
        listing_.Columns = kEntregaColumns;
        std::size_t number = 0;
        for (const TGuiaListada& guia : guias_)
            AddRow({CountCell(++number), TextCell(guia.Guia.NumeroMostrado()),
                    TListingCell(TipoGuiaTitle(guia.Guia.TipoGuia())), TextCell(guia.Data),
                    TextCell(guia.Head.Carteira), TextCell(guia.Head.Beneficiario),
                    NumberCell(guia.Informado)});
        AddTotal("guias", "Guias", Count, static_cast<double>(guias_.size()));
        AddTotal("valorInformado", "Valor informado", Money, TotalGeral().Declared());
        listing_.Signatures = true;
    }

    void AddBalance(std::string_view title, const TBalance& balance) {
        AddRow({TextCell(title), NumberCell(balance.Declared()), NumberCell(balance.Computed()),
                NumberCell(balance.Difference()), NumberCell(balance.DifferingOfJudged())},
               balance.Differing() != 0);
    }

    void Capa() {
        listing_.Columns = kCapaColumns;
        const TXmlDocument& document = *message_.Xml();
        listing_.Head.push_back({"versao", "Versão do padrão", listing_.Versao});
        listing_.Head.push_back(
            {"transacao", "Sequencial da transação", std::string(TTissUtils::SequencialTransacao(document))});
        listing_.Head.push_back({"referencia", "Mês de referência", ReferenciaText(guias_)});
        for (const auto& [key, label] :
             {std::pair("protocolo", "Protocolo"), std::pair("previsaoPagamento", "Previsão de pagamento"),
              std::pair("observacoes", "Observações")})
            listing_.Head.push_back({key, label, {}, true}); // the operator's answer: filled in by hand
        TBalance procedures;
        std::array<TBalance, kCategorias.size()> categories;
        for (const TGuiaListada& guia : guias_) {
            const std::optional<TValorTotalGuia> totals = TotaisOf(guia.Guia);
            if (!totals)
                continue;
            const TItensDaGuia itens = ItensOf(guia.Guia);
            procedures.Add(totals->ValorProcedimentos().Number(), SomaDe(itens.Procedimentos));
            for (std::size_t i = 0; i < kCategorias.size(); ++i)
                AddCategoria(kCategorias[i].Categoria, totals, itens.Despesas, categories[i]);
        }
        if (!procedures.IsEmpty())
            AddBalance("Procedimentos", procedures);
        for (std::size_t i = 0; i < kCategorias.size(); ++i)
            if (!categories[i].IsEmpty())
                AddBalance(kCategorias[i].Titulo, categories[i]);
        const TBalance all = TotalGeral();
        AddBalance("Total geral", all);
        AddTotals(all);
    }

    void Procedimentos() {
        struct TSum {
            std::string_view Descricao;
            std::size_t Guias = 0;
            TKnownSum Quantidade;
            TKnownSum Valor;
            const IGuiaTiss* Last = nullptr;
        };
        listing_.Columns = kProcedimentosColumns;
        std::map<std::pair<std::string_view, std::string_view>, TSum> sums;
        TKnownSum quantity;
        TKnownSum all;
        TBalance balance;
        for (const TGuiaListada& guia : guias_) {
            TDecimalSum ofGuide;
            for (const TProcedimentoListado& procedimento : ProcedimentosOf(guia.Guia)) {
                TSum& sum = sums[{procedimento.Tabela, procedimento.Codigo}];
                sum.Guias += std::exchange(sum.Last, &guia.Guia) == &guia.Guia ? 0 : 1;
                if (sum.Descricao.empty())
                    sum.Descricao = procedimento.Descricao;
                sum.Quantidade.Add(procedimento.Quantidade);
                sum.Valor.Add(procedimento.ValorTotal);
                quantity.Add(procedimento.Quantidade);
                ofGuide.Add(procedimento.ValorTotal.value_or(0));
                all.Add(procedimento.ValorTotal);
            }
            AddProcedimentosOf(guia, ofGuide.Value(), balance);
        }
        std::vector<std::pair<std::pair<std::string_view, std::string_view>, TSum>> rows(sums.begin(),
                                                                                         sums.end());
        if (order_ == TListingOrder::Valor)
            std::ranges::stable_sort(rows, std::ranges::greater(),
                                     [](const auto& row) { return row.second.Valor.Value().value_or(0); });
        for (const auto& [code, sum] : rows)
            AddRow({TextCell(code.first), TextCell(code.second), TextCell(sum.Descricao),
                    CountCell(sum.Guias), NumberCell(sum.Quantidade.Value()), NumberCell(sum.Valor.Value())});
        AddTotal("guias", "Guias", Count, static_cast<double>(guias_.size()));
        AddTotal("quantidade", "Quantidade", Quantity, quantity.ValueOrZero());
        AddTotal("valorTotal", "Valor dos procedimentos", Money, all.ValueOrZero());
        AddTotal("valorInformado", "Valor informado nas guias", Money, balance.Declared());
        AddTotal("guiasComDiferenca", "Guias com diferença", Count, balance.DifferingOfJudged(),
                 balance.Differing() != 0);
    }

    /// What a guide declares of its procedures, beside their sum.
    void AddProcedimentosOf(const TGuiaListada& guia, double sum, TBalance& balance) const {
        if (const std::optional<TValorTotalGuia> totals = TotaisOf(guia.Guia))
            balance.Add(totals->ValorProcedimentos().Number(), SomaDe(ItensOf(guia.Guia).Procedimentos));
        else
            balance.Add(guia.Informado, guia.Calculado.value_or(sum), guia.Calculado.has_value());
    }

    /// What a guide declares of a category of expenses, beside their sum. Of 2.x, where no rule demands that
    /// guides list their expenses one by one, those that do not have nothing to be compared.
    void AddCategoria(const TCategoriaDespesa& categoria, const std::optional<TValorTotalGuia>& totals,
                      const IOutrasDespesas& despesas, TBalance& balance) const {
        const std::optional<double> declared = totals ? (*totals.*categoria.Total)().Number() : std::nullopt;
        const bool compared = judged_ || despesas.Count() != 0 || declared.value_or(0) == 0;
        balance.Add(declared, compared ? SomaDe(categoria, despesas) : std::nullopt);
    }

    /// The sum of a category; nothing where the amount of one of its items is not known.
    std::optional<double> SomaDe(const TCategoriaDespesa& categoria, const IOutrasDespesas& despesas) const {
        for (const TDespesa& despesa : despesas.Despesas())
            if (const std::string_view code = despesa.CodigoDespesa().Text();
                !code.empty() && std::ranges::find(categoria.Codigos, code) != categoria.Codigos.end() &&
                !CanBeSummed(despesa.ValorTotal(), listing_.Versao))
                return std::nullopt;
        return categoria.Sum(despesas);
    }

    /// The same of the procedures.
    std::optional<double> SomaDe(const IProcedimentosExecutados& procedimentos) const {
        for (const TProcedimentoExecutado& item : procedimentos.Procedimentos())
            if (!CanBeSummed(item.ValorTotal(), listing_.Versao))
                return std::nullopt;
        return procedimentos.TotalProcedimentos();
    }

    void Despesas() {
        struct TSum {
            std::size_t Itens = 0;
            TKnownSum Quantidade;
            TBalance Balance;
        };
        listing_.Columns = kDespesasColumns;
        std::array<TSum, kCategorias.size()> sums;
        std::map<std::string_view, TSum> others; // of kinds that no table has
        for (const TGuiaListada& guia : guias_) {
            const IOutrasDespesas despesas = ItensOf(guia.Guia).Despesas;
            for (const TDespesa& despesa : despesas.Despesas()) {
                const std::string_view code = despesa.CodigoDespesa().Text();
                const auto* const found = std::ranges::find_if(kCategorias, [&](const auto& category) {
                    return !code.empty() && std::ranges::find(category.Categoria.Codigos, code) !=
                                                category.Categoria.Codigos.end();
                });
                TSum& sum = found != kCategorias.end()
                                ? sums[static_cast<std::size_t>(found - kCategorias.begin())]
                                : others[code];
                ++sum.Itens;
                sum.Quantidade.Add(Addable(despesa.QuantidadeExecutada().Number()));
                if (found == kCategorias.end())
                    sum.Balance.Add(std::nullopt, despesa.ValorTotal().Number());
            }
            const std::optional<TValorTotalGuia> totals = TotaisOf(guia.Guia);
            for (std::size_t i = 0; i < kCategorias.size(); ++i)
                AddCategoria(kCategorias[i].Categoria, totals, despesas, sums[i].Balance);
        }
        std::size_t items = 0;
        TBalance all;
        std::size_t differing = 0;
        bool compared = judged_;
        const auto add = [&](std::string_view code, std::string_view title, const TSum& sum) {
            AddRow({TextCell(code), TextCell(title), CountCell(sum.Itens),
                    NumberCell(sum.Quantidade.ValueOrZero()), NumberCell(sum.Balance.Declared()),
                    NumberCell(sum.Balance.Computed()), NumberCell(sum.Balance.Difference()),
                    NumberCell(sum.Balance.DifferingOfJudged())},
                   sum.Balance.Differing() != 0);
            items += sum.Itens;
            differing += sum.Balance.Differing();
            compared = compared || sum.Balance.DifferingOfJudged();
            all.Add(sum.Balance.Declared(), sum.Balance.Computed(), false);
        };
        for (std::size_t i = 0; i < kCategorias.size(); ++i)
            if (sums[i].Itens != 0 || !sums[i].Balance.IsEmpty())
                add(judged_ ? kCategorias[i].Codigo : kCategorias[i].CodigoV2, kCategorias[i].Titulo,
                    sums[i]);
        for (const auto& [code, sum] : others)
            add(code, "Tipo desconhecido", sum);
        AddTotal("guias", "Guias", Count, static_cast<double>(guias_.size()));
        AddTotal("itens", "Itens", Count, static_cast<double>(items));
        AddTotal("valorInformado", "Valor informado", Money, all.Declared().value_or(0));
        AddTotal("valorCalculado", "Valor calculado", Money,
                 all.IsPartial() ? std::nullopt : std::optional(all.Computed().value_or(0)));
        AddTotal("diferencas", "Totais com diferença", Count,
                 compared ? std::optional(static_cast<double>(differing)) : std::nullopt, differing != 0);
    }

    void Profissionais() {
        listing_.Columns = kProfissionaisColumns;
        struct TWork {
            std::vector<TListingRow> Rows;
            TKnownSum Quantidade;
            TKnownSum Valor;
        };
        std::map<TProfissional, TWork> works;
        std::size_t procedures = 0;
        TKnownSum value;
        bool teams = false;
        for (const TGuiaListada& guia : guias_) {
            const TListingCell numero = TextCell(guia.Guia.NumeroMostrado());
            const TListingCell carteira = TextCell(guia.Head.Carteira);
            const TListingCell beneficiario = TextCell(guia.Head.Beneficiario);
            for (const TProcedimentoListado& procedimento : ProcedimentosOf(guia.Guia)) {
                ++procedures;
                value.Add(procedimento.ValorTotal);
                const TListingRow row = memory_.Row(
                    {numero, TextCell(procedimento.Data), carteira, beneficiario,
                     TextCell(procedimento.Tabela), TextCell(procedimento.Codigo),
                     TextCell(procedimento.Descricao), NumberCell(procedimento.Quantidade),
                     NumberCell(procedimento.ValorUnitario), NumberCell(procedimento.ValorTotal)});
                const std::vector<TProfissional> team = TeamOf(guia, procedimento);
                teams = teams || team.size() > 1;
                for (const TProfissional& professional : team) {
                    TWork& work = works[professional];
                    work.Rows.push_back(row);
                    work.Quantidade.Add(procedimento.Quantidade);
                    work.Valor.Add(procedimento.ValorTotal);
                }
            }
        }
        listing_.Groups.clear();
        std::set<std::string> named;
        std::multimap<std::string, std::pair<const TProfissional*, TWork*>> sorted; // by name as people do it
        for (auto& [who, work] : works)
            sorted.emplace(PlainText(who.Nome), std::pair(&who, &work));
        for (auto& [name, entry] : sorted) {
            auto& [who, workOfWho] = entry;
            TWork& work = *workOfWho;
            const std::string title = who->Text();
            if (!title.empty())
                named.insert(title);
            const TListingRow sum = memory_.Row({{},
                                                 {},
                                                 {},
                                                 {},
                                                 {},
                                                 {},
                                                 {},
                                                 NumberCell(work.Quantidade.Value()),
                                                 {},
                                                 NumberCell(work.Valor.Value())});
            listing_.Groups.push_back(
                {title.empty() ? "Sem profissional informado" : title, std::move(work.Rows), sum});
        }
        AddTotal("profissionais", "Profissionais", Count, static_cast<double>(named.size()));
        listing_.Totals.back().Counted = std::move(named);
        AddTotal("procedimentos", "Procedimentos", Count, static_cast<double>(procedures));
        AddTotal("valorTotal", "Valor total", Money, value.ValueOrZero());
        if (teams)
            listing_.Notes.emplace_back(
                "Um procedimento feito em equipe aparece em cada profissional dela; os "
                "totais do arquivo o contam uma vez.");
    }

    /// Who did a procedure, each once.
    static std::vector<TProfissional> TeamOf(const TGuiaListada& guia,
                                             const TProcedimentoListado& procedimento) {
        std::vector<TProfissional> team;
        if (guia.Guia.TipoGuia() != TEnumTipoGuia::tgConsulta)
            team = ProfissionaisOf(*procedimento.Node);
        if (team.empty())
            team = guia.Head.Profissionais;
        if (team.empty())
            team.emplace_back();
        std::ranges::sort(team);
        team.erase(std::unique(team.begin(), team.end()), team.end());
        return team;
    }

    const IMensagemTiss& message_;
    bool judged_; ///< rules judge the totals by category of this version
    TFileListing& listing_;
    TListingMemory& memory_; ///< the listing's
    std::vector<TGuiaListada> guias_;
    TListingOrder order_;
};

} // namespace

void ListLot(const IMensagemTiss& message, TListingKind kind, TListingOrder order, TFileListing& listing) {
    TLotListing(message, order, listing).List(kind);
}

} // namespace conferix
