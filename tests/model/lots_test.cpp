// Lots of every family of versions: guides, their numbers, totals and items; and the guide of a place.
#include "model/cases.h"
#include "model/lote_guias.h"
#include "model/tiss_exceptions.h"

#include <limits>
#include <vector>

namespace conferix::tests {
namespace {

constexpr std::string_view kKinds[] = {"consulta", "spsadt", "internacao", "honorarios", "odonto"};

/// A line of the fields that are present, as "title label=text".
std::string Line(std::string_view title, const std::vector<std::pair<std::string_view, TXmlField>>& fields) {
    std::string line;
    for (const auto& [label, field] : fields)
        if (field.Present())
            line += fmt::format(" {}={}", label, field.Text());
    return fmt::format("{}{}\n", title, line);
}

/// Tells in lines what it visits, of a guide all that there is to read.
class TTeller : public IArquivoTissVisitor {
  public:
    std::string Text;

    void Visit(const IMensagemTiss&) override { Text += "mensagem\n"; }
    void Visit(const ILoteGuias&) override { Text += "lote\n"; }
    void Visit(const IMonitoramento&) override { Text += "monitoramento\n"; }
    void Visit(const IMonitoramentoQualidade&) override { Text += "qualidade\n"; }
    void Visit(const IGuiaMonitoramento& guide) override {
        Text += fmt::format("guia {}\n", guide.NumeroGuiaPrestador().Text());
    }
    void Visit(const IGuiaConsulta& guide) override {
        Begin("consulta", guide);
        const TProcedimentoConsulta item = guide.Procedimento();
        if (item.HasNode())
            Text += Line("procedimento", {{"data", item.DataAtendimento()},
                                          {"tabela", item.CodigoTabela()},
                                          {"codigo", item.CodigoProcedimento()},
                                          {"valor", item.ValorProcedimento()}});
    }
    void Visit(const IGuiaSpSadt& guide) override {
        Begin("spsadt", guide);
        Procedures(guide.ProcedimentosExecutados());
        Expenses(guide.OutrasDespesas());
        Totals(guide.ValorTotal());
    }
    void Visit(const IGuiaResumoInternacao& guide) override {
        Begin("internacao", guide);
        Procedures(guide.ProcedimentosExecutados());
        Expenses(guide.OutrasDespesas());
        Totals(guide.ValorTotal());
    }
    void Visit(const IGuiaHonorarios& guide) override {
        Begin("honorarios", guide);
        Procedures(guide.ProcedimentosExecutados());
        if (guide.ValorTotalHonorarios().Present())
            Text += Line("totais", {{"honorarios", guide.ValorTotalHonorarios()}});
    }
    void Visit(const IGuiaOdonto& guide) override {
        Begin("odonto", guide);
        Procedures(guide.ProcedimentosExecutados());
        Expenses(guide.OutrasDespesas());
    }

  private:
    void Begin(std::string_view kind, const IGuiaTiss& guide) {
        Text += fmt::format("{} '{}' total {}\n", kind, guide.NumeroGuia(), guide.ValorTotalGuia());
    }
    void Item(const std::string& title, const TItemGuia& item) {
        Text += Line(title, {{"sequencial", item.SequencialItem()},
                             {"data", item.DataExecucao()},
                             {"tabela", item.CodigoTabela()},
                             {"codigo", item.CodigoProcedimento()},
                             {"quantidade", item.QuantidadeExecutada()},
                             {"fator", item.ReducaoAcrescimo()},
                             {"unitario", item.ValorUnitario()},
                             {"total", item.ValorTotal()}});
    }
    void Sum(std::string_view of, double sum) {
        if (sum != 0)
            Text += fmt::format("soma {} {}\n", of, sum);
    }
    void Procedures(const IProcedimentosExecutados& list) {
        for (const TProcedimentoExecutado& item : list.Procedimentos())
            Item("procedimento", item);
        Sum("dos procedimentos", list.TotalProcedimentos());
    }
    void Expenses(const IOutrasDespesas& list) {
        Text += list.HasNode() ? "outras despesas\n" : "";
        for (const TDespesa& item : list.Despesas()) {
            const TXmlField code = item.CodigoDespesa();
            Item(code.Present() ? fmt::format("despesa tipo={}", code.Text()) : "despesa", item);
        }
        Sum("de diarias", list.TotalDiarias());
        Sum("de taxas", list.TotalTaxasAlugueis());
        Sum("de materiais", list.TotalMateriais());
        Sum("de medicamentos", list.TotalMedicamentos());
        Sum("de opme", list.TotalOPME());
        Sum("de gases", list.TotalGasesMedicinais());
    }
    void Totals(const TValorTotalGuia& totals) {
        if (totals.HasNode())
            Text += Line("totais", {{"procedimentos", totals.ValorProcedimentos()},
                                    {"diarias", totals.ValorDiarias()},
                                    {"taxas", totals.ValorTaxasAlugueis()},
                                    {"materiais", totals.ValorMateriais()},
                                    {"medicamentos", totals.ValorMedicamentos()},
                                    {"opme", totals.ValorOPME()},
                                    {"gases", totals.ValorGasesMedicinais()},
                                    {"geral", totals.ValorTotalGeral()}});
    }
};

template<class Guide>
void AppendNumbers(std::vector<std::string_view>& numbers, const std::vector<Guide>& guides) {
    for (const Guide& guide : guides)
        numbers.push_back(guide.NumeroGuia());
}

std::string Told(const ILoteGuias& lot) {
    const TXmlField number = lot.NumeroLote();
    TTeller teller;
    teller.Text = fmt::format("lote {}, guias {}, total {}: ", number.Present() ? number.Text() : "-",
                              lot.QtdGuias(), lot.ValorTotal());
    try {
        teller.Text += fmt::format("{}\n", kKinds[static_cast<std::size_t>(lot.TipoGuia())]);
    } catch (const ELoteGuiasNotFound& e) {
        teller.Text += fmt::format("{}\n", e.what());
    }
    const std::vector<IGuiaTiss> guides = lot.Guias();
    for (const IGuiaTiss& guide : guides)
        guide.Accept(teller);

    // The lists of one kind each hold the same guides.
    std::vector<std::string_view> all;
    std::vector<std::string_view> byKind;
    AppendNumbers(all, guides);
    const IGuiasTiss lists = lot.GuiasTiss();
    AppendNumbers(byKind, lists.GuiasConsulta());
    AppendNumbers(byKind, lists.GuiasSpSadt());
    AppendNumbers(byKind, lists.GuiasResumoInternacao());
    AppendNumbers(byKind, lists.GuiasHonorarios());
    AppendNumbers(byKind, lists.GuiasOdonto());
    EXPECT_EQ(byKind, all);
    return teller.Text;
}

TEST(Lots, GuidesOfEveryKindAndFamilyOfVersionsAreRead) {
    ExpectCases("guides.casos", [](std::string_view section, const auto& input) {
        const std::size_t bar = section.find(" | ");
        std::istringstream versions{std::string(section.substr(0, bar))};
        std::string common;
        for (std::string version; versions >> version;) {
            const std::string text =
                Told(LoadedMessage(version, DocumentText(section.substr(bar + 3), input))->LoteGuias());
            EXPECT_TRUE(common.empty() || text == common) << version << " differs:\n" << text;
            common = text;
        }
        return common;
    });
}

TEST(Lots, EachNodeMeetsItsOverload) {
    TTeller teller;
    const auto message = LoadedMessage("4.03.00", "");
    message->Accept(teller);
    message->LoteGuias().Accept(teller);
    const auto monitoring =
        LoadedMonitoring("", Xml("guiaMonitoramento(numeroGuia_prestador=A) guiaMonitoramento()"));
    monitoring->Accept(teller);
    for (const TGuiaMonitoramento& guide : monitoring->Lote().GuiasMonitoramento())
        guide.Accept(teller);
    const auto quality = TMonitoramentoQualidade::Create(
        Parsed(Xml("mensagemEnvioANS(cabecalho(identificacaoTransacao(tipoTransacao=QUALIDADE) "
                   "versaoPadrao=3.03.02))")));
    quality->Accept(teller);
    EXPECT_EQ(teller.Text, "mensagem\nlote\nmonitoramento\nguia A\nguia \nqualidade\n");
    EXPECT_EQ(quality->Versao(), "3.03.02");
    EXPECT_EQ(NameOf(quality->TipoArquivo()), "taMonitoramentoQualidade");
}

TEST(Lots, GuideOfAPlace) {
    const auto message = LoadedMessage(
        "4.00.00", "\n<guiasTISS>\n"
                   "  <guiaOdonto>\n    <numeroGuiaPrestador>A</numeroGuiaPrestador>\n  </guiaOdonto>\n"
                   "  <!-- ã --><guiaConsulta><cabecalhoConsulta><numeroGuiaPrestador>B</numeroGuiaPrestador>"
                   "</cabecalhoConsulta></guiaConsulta> <guiaOdonto/>\n"
                   "</guiasTISS>\n");
    const ILoteGuias lot = message->LoteGuias();
    const TGuiaLocator locator(lot);
    constexpr std::int64_t kFar = std::numeric_limits<std::int64_t>::max();
    // All places in order, of which those are told where another guide begins, or none ("-").
    std::string found;
    std::string last = "-";
    for (const std::int64_t line : std::initializer_list<std::int64_t>{-5, 0, 1, 2, 3, 4, 5, 6, 7, 8, kFar})
        for (std::int64_t column = 0; column <= 141; ++column) {
            const std::int64_t place = column <= 140 ? column : kFar;
            const auto guide = lot.GuiaTissByPosition(line, place);
            const IGuiaTiss* located = locator.ByOffset(lot.Node()->Document().OffsetOf(line, place));
            ASSERT_EQ(located != nullptr ? located->Node() : nullptr, guide ? guide->Node() : nullptr);
            const std::string now = guide ? fmt::format("'{}'", guide->NumeroGuia()) : "-";
            if (now != last)
                found += fmt::format("{}:{} {}\n", line, place, now);
            last = now;
        }
    EXPECT_EQ(found, "3:3 'A'\n5:16 -\n6:13 'B'\n6:125 -\n6:126 ''\n6:139 -\n");
    EXPECT_EQ(LoadedMessage("4.00.00", "")->LoteGuias().GuiaTissByPosition(1, 1), std::nullopt);
}

TEST(Lots, GuideOfANode) {
    const auto message = LoadedMessage(
        "4.00.00", Xml("guiasTISS(guiaOdonto(numeroGuiaPrestador=1) guiaOdonto(numeroGuiaPrestador=2))"));
    const auto guides = message->LoteGuias().Guias();
    TXmlNode* second = guides[1].Node();
    TXmlNode* added = message->Xml()->NewTag("observacao", "x");
    second->InsertChild(*added, nullptr);
    // A guide that a correction added has no place.
    TXmlNode* addedGuide = message->Xml()->NewTag("guiaOdonto", "");
    second->Parent()->InsertChild(*addedGuide, nullptr);
    const TGuiaLocator locator(message->LoteGuias());
    for (const TXmlNode* node : {second, second->FirstChildTag(), added}) {
        ASSERT_NE(locator.ByNode(*node), nullptr);
        EXPECT_EQ(locator.ByNode(*node)->Node(), second);
    }
    EXPECT_EQ(locator.ByNode(*guides[0].Node())->NumeroGuia(), "1");
    EXPECT_EQ(locator.ByNode(*message->Node()), nullptr);
    EXPECT_EQ(locator.ByNode(*message->EpilogoNode()), nullptr);
    EXPECT_EQ(locator.ByNode(*addedGuide), nullptr);
}

TEST(Lots, FieldsAndItemsOfAGuide) {
    const auto message = LoadedMessage(
        "3.05.00",
        "<guiasTISS><guiaSP-SADT><procedimentosExecutados>\n<procedimentoExecutado>\n"
        "   <sequencialItem> +12 </sequencialItem><valorTotal> 10.50 </valorTotal>"
        "<valorUnitario>1e3</valorUnitario><quantidadeExecutada/></procedimentoExecutado>"
        "<procedimentoExecutado><valorTotal>1</valorTotal></procedimentoExecutado></procedimentosExecutados>"
        "<outrasDespesas><despesa/><despesa><codigoDespesa>02</codigoDespesa></despesa></outrasDespesas>"
        "</guiaSP-SADT></guiasTISS>");
    const IGuiaSpSadt guide = message->LoteGuias().GuiasTiss().GuiasSpSadt().front();
    const IProcedimentosExecutados procedures = guide.ProcedimentosExecutados();
    const TProcedimentoExecutado item = procedures.GetProcedimento(0);
    EXPECT_EQ(item.SequencialItem().Integer(), 12);
    EXPECT_EQ(item.ValorTotal().Text(), " 10.50 ");
    EXPECT_EQ(item.ValorTotal().Number(), 10.5);
    EXPECT_EQ(item.ValorTotal().Line(), 3);
    EXPECT_EQ(item.ValorUnitario().Number(), std::nullopt);
    EXPECT_TRUE(item.QuantidadeExecutada().Present());
    EXPECT_EQ(item.QuantidadeExecutada().Number(), std::nullopt);
    EXPECT_FALSE(item.ReducaoAcrescimo().Present());
    EXPECT_EQ(item.ReducaoAcrescimo().Line(), 0);
    item.ValorTotal().Node()->SetValue("11.00");
    EXPECT_EQ(procedures.TotalProcedimentos(), 12);

    const std::pair<std::string_view, std::optional<std::int64_t>> integers[] = {
        {"0007", 7},
        {"-3", -3},
        {"+-3", std::nullopt},
        {"", std::nullopt},
        {"+", std::nullopt},
        {"1.0", std::nullopt},
        {"10.50 ", std::nullopt},
        {"9223372036854775808", std::nullopt}};
    for (const auto& [text, value] : integers) {
        item.SequencialItem().Node()->SetValue(text);
        EXPECT_EQ(item.SequencialItem().Integer(), value) << text;
    }

    EXPECT_EQ(procedures.Count(), 2);
    EXPECT_EQ(procedures.GetProcedimento(1).ValorTotal().Number(), 1);
    const IOutrasDespesas expenses = guide.OutrasDespesas();
    EXPECT_EQ(expenses.Count(), 2);
    EXPECT_EQ(expenses.GetDespesa(1).CodigoDespesa().Text(), "02");
    EXPECT_FALSE(expenses.GetDespesa(2).HasNode());
    EXPECT_FALSE(expenses.GetDespesa(-1).HasNode());
}

TEST(Lots, ManyGuidesOfTwoKindsKeepTheirOrder) {
    constexpr int kGuides = 1'000; // enough to tell a stable sort from another
    std::string lot = "guiasTISS(";
    for (int i = 0; i < kGuides; ++i)
        lot += fmt::format("{}(cabecalhoGuia(numeroGuiaPrestador={}) valorTotalHonorarios=1)",
                           i % 2 == 0 ? "guiaHonorarios" : "guiaSP-SADT", i);
    const auto message = LoadedMessage("4.03.00", Xml(lot + ")"));
    const ILoteGuias guides = message->LoteGuias();
    EXPECT_EQ(guides.ValorTotal(), kGuides / 2);
    const TGuiaLocator locator(guides);
    int expected = 1; // the odd ones, then the even ones
    for (const IGuiaTiss& guide : guides.Guias()) {
        ASSERT_EQ(guide.NumeroGuia(), std::to_string(expected));
        ASSERT_EQ(locator.ByNode(*guide.Node()->FirstChildTag())->Node(), guide.Node());
        expected = expected + 2 == kGuides + 1 ? 0 : expected + 2;
    }
}

} // namespace
} // namespace conferix::tests
