// Lots of every family of versions: guides, their numbers, totals and items.
#include "model/lote_guias.h"

#include "model/documentos.h"
#include "model/tiss_exceptions.h"

#include <limits>

namespace conferix {

using namespace testes;
using enum TEnumTipoGuia;

namespace {

std::string Itens(const TItemGuia& item) {
    return fmt::format("{}|{}|{}|{}|{}|{}|{}|{}", item.SequencialItem().Text(), item.DataExecucao().Text(),
                       item.CodigoTabela().Text(), item.CodigoProcedimento().Text(),
                       item.QuantidadeExecutada().Text(), item.ReducaoAcrescimo().Text(),
                       item.ValorUnitario().Text(), item.ValorTotal().Text());
}

/// All that a visitor reads of a guide, as text.
class TLeitor : public IArquivoTissVisitor {
  public:
    std::string Texto;

    void Visit(const IMensagemTiss&) override {}
    void Visit(const ILoteGuias&) override {}
    void Visit(const IMonitoramento&) override {}
    void Visit(const IMonitoramentoQualidade&) override {}
    void Visit(const IGuiaMonitoramento&) override {}
    void Visit(const IGuiaConsulta& guia) override {
        const TProcedimentoConsulta procedimento = guia.Procedimento();
        Texto = fmt::format("consulta {}|{}|{}|{}", procedimento.DataAtendimento().Text(),
                            procedimento.CodigoTabela().Text(), procedimento.CodigoProcedimento().Text(),
                            procedimento.ValorProcedimento().Text());
    }
    void Visit(const IGuiaSpSadt& guia) override {
        Texto = "spsadt " + Procedimentos(guia.ProcedimentosExecutados()) + Despesas(guia.OutrasDespesas()) +
                Totais(guia.ValorTotal());
    }
    void Visit(const IGuiaResumoInternacao& guia) override {
        Texto = "internacao " + Procedimentos(guia.ProcedimentosExecutados()) +
                Despesas(guia.OutrasDespesas()) + Totais(guia.ValorTotal());
    }
    void Visit(const IGuiaHonorarios& guia) override {
        Texto = "honorarios " + Procedimentos(guia.ProcedimentosExecutados()) +
                std::string(guia.ValorTotalHonorarios().Text());
    }
    void Visit(const IGuiaOdonto& guia) override {
        Texto = "odonto " + Procedimentos(guia.ProcedimentosExecutados()) + Despesas(guia.OutrasDespesas());
    }

  private:
    static std::string Procedimentos(const IProcedimentosExecutados& lista) {
        std::string text;
        for (const TProcedimentoExecutado& item : lista.Procedimentos())
            text += Itens(item) + " ";
        return text + fmt::format("={} ", lista.TotalProcedimentos());
    }
    static std::string Despesas(const IOutrasDespesas& lista) {
        std::string text = lista.HasNode() ? "anexo " : "";
        for (const TDespesa& item : lista.Despesas())
            text += fmt::format("{}:{} ", item.CodigoDespesa().Text(), Itens(item));
        return text;
    }
    static std::string Totais(const TValorTotalGuia& totais) {
        std::string text;
        for (const TXmlField& campo :
             {totais.ValorProcedimentos(), totais.ValorDiarias(), totais.ValorTaxasAlugueis(),
              totais.ValorMateriais(), totais.ValorMedicamentos(), totais.ValorOPME(),
              totais.ValorGasesMedicinais(), totais.ValorTotalGeral()})
            text += fmt::format("{};", campo.Present() ? campo.Text() : "-");
        return text;
    }
};

constexpr std::string_view kItem2 =
    "procedimento(codigo=10 tipoTabela=22) data=2013-01-02 quantidadeRealizada=2 "
    "reducaoAcrescimo=1.0 valor=5.00 valorTotal=10.00";
constexpr std::string_view kItem3 =
    "sequencialItem=1 dataExecucao=2024-01-02 procedimento(codigoTabela=22 codigoProcedimento=10) "
    "quantidadeExecutada=2 reducaoAcrescimo=1.0 valorUnitario=5.00 valorTotal=10.00";
constexpr std::string_view kTotais2 =
    "valorTotal(servicosExecutados=1 diarias=2 taxas=3 materiais=4 medicamentos=5 "
    "gases=7 totalGeral=8)";
constexpr std::string_view kTotais3 = "valorTotal(valorProcedimentos=1 valorDiarias=2 valorTaxasAlugueis=3 "
                                      "valorMateriais=4 valorMedicamentos=5 "
                                      "valorOPME=6 valorGasesMedicinais=7 valorTotalGeral=8)";
constexpr std::string_view kDespesas2 =
    "outrasDespesas(despesa(identificadorDespesa(codigo=70 tipoTabela=19) tipoDespesa=3 "
    "dataRealizacao=2013-01-03 "
    "reducaoAcrescimo=1 quantidade=3 valorUnitario=4 valorTotal=12) totalGeralOutrasDespesas=12)";
constexpr std::string_view kDespesasRevisao2 =
    "outrasDespesas(itensDespesas(tipoDespesa=3 dataRealizacao=2013-01-03 despesa(codigo=70 tipoTabela=19) "
    "reducaoAcrescimo=1 quantidade=3 valorUnitario=4 valorTotal=12))";
constexpr std::string_view kDespesas3 =
    "outrasDespesas(despesa(sequencialItem=2 codigoDespesa=03 servicosExecutados(dataExecucao=2024-01-03 "
    "codigoTabela=19 codigoProcedimento=70 quantidadeExecutada=3 reducaoAcrescimo=1 valorUnitario=4 "
    "valorTotal=12)))";
constexpr std::string_view kOdonto2 =
    "procedimentoOdonto(codigo=81 tipoTabela=22) quantidade=1 valor=9.00 dataRealizacao=2013-01-02";

const std::string kLido2 = "|2013-01-02|22|10|2|1.0|5.00|10.00 =10 ";
const std::string kLido3 = "1|2024-01-02|22|10|2|1.0|5.00|10.00 =10 ";
const std::string kDespesaLida2 = "anexo 3:|2013-01-03|19|70|3|1|4|12 ";
const std::string kDespesaLida3 = "anexo 03:2|2024-01-03|19|70|3|1|4|12 ";

struct TCasoGuia {
    std::string_view Versao;
    std::string Lote; ///< in the short notation
    TEnumTipoGuia Tipo;
    double Total;
    std::string Lido;
};

std::vector<TCasoGuia> Casos() {
    const auto lote2 = [](std::string_view grupo, std::string_view elemento, const std::string& conteudo) {
        return fmt::format("numeroLote=77 guias({}({}({})))", grupo, elemento, conteudo);
    };
    const auto lote3 = [](std::string_view elemento, const std::string& conteudo) {
        return fmt::format("numeroLote=77 guiasTISS({}({}))", elemento, conteudo);
    };
    const auto normal = [&](auto... partes) { return lote2("guiaFaturamento", partes...); };
    const auto revisao = [&](auto... partes) { return lote2("guiaRevisaoGlosa", partes...); };
    const std::string consulta2 =
        "identificacaoGuia(numeroGuiaPrestador=G1) dadosAtendimento(dataAtendimento=2013-01-02 "
        "procedimento(codigoTabela=22 codigoProcedimento=10))";
    const std::string spSadt2 =
        "identificacaoGuiaSADTSP(numeroGuiaPrestador=G1) procedimentosRealizados({}({})) {} {}";
    const std::string internacao2 =
        "identificacaoGuiaInternacao(numeroGuiaPrestador=G1) procedimentosRealizados({}({})) {} {}";
    const std::string honorario2 = "identificacaoGuiaHonorarioIndividual(numeroGuiaPrestador=G1) "
                                   "procedimentosExamesRealizados({}({}) totalGeralHonorario=8)";
    const std::string honorario3 =
        fmt::format("cabecalhoGuia(numeroGuiaPrestador=G1) procedimentosRealizados("
                    "procedimentoRealizado({})) valorTotalHonorarios=8",
                    kItem3);
    const auto guia = [](const std::string& modelo, auto... partes) {
        return fmt::format(fmt::runtime(modelo), partes...);
    };
    const std::string completa2 = kLido2 + kDespesaLida2 + "1;2;3;4;5;-;7;8;";
    const std::string completa3 = kLido3 + kDespesaLida3 + "1;2;3;4;5;6;7;8;";
    std::vector<TCasoGuia> casos;
    for (const std::string_view versao : {"2.01.03", "2.02.03"}) {
        casos.insert(
            casos.end(),
            {{versao, normal("guiaConsulta", consulta2), tgConsulta, 0, "consulta 2013-01-02|22|10|"},
             {versao, revisao("guiaConsultaReapresentacao", consulta2), tgConsulta, 0,
              "consulta 2013-01-02|22|10|"},
             {versao, normal("guiaSP_SADT", guia(spSadt2, "procedimentos", kItem2, kDespesas2, kTotais2)),
              tgSPSADT, 8, "spsadt " + completa2},
             {versao,
              revisao("guiaSP_SADTReapresentacao",
                      guia(spSadt2, "procedimentosRevisao", kItem2, kDespesasRevisao2, kTotais2)),
              tgSPSADT, 8, "spsadt " + completa2},
             {versao,
              normal("guiaResumoInternacao",
                     guia(internacao2, "procedimentos", kItem2, kDespesas2, kTotais2)),
              tgResumoInternacao, 8, "internacao " + completa2},
             {versao,
              revisao("guiaResumoInternacaoReapresentacao",
                      guia(internacao2, "procedimentosRevisao", kItem2, kDespesasRevisao2, kTotais2)),
              tgResumoInternacao, 8, "internacao " + completa2},
             {versao, normal("guiaHonorarioIndividual", guia(honorario2, "procedimentoRealizado", kItem2)),
              tgHonorarios, 8, "honorarios " + kLido2 + "8"},
             {versao,
              revisao("guiaHonorarioIndividualReapresentacao",
                      guia(honorario2, "procedimentosRevisao", kItem2)),
              tgHonorarios, 8, "honorarios " + kLido2 + "8"},
             {versao,
              normal("guiaOdontologia", guia("cabecalhoGuia(numeroGuiaPrestador=G1) "
                                             "procedimentosExecutados(procedimentoExecutado({}) "
                                             "quantidadeTotalUS=5 valorTotal=8) {}",
                                             kOdonto2, kDespesas2)),
              tgOdonto, 8, "odonto |2013-01-02|22|81|1||9.00| =0 " + kDespesaLida2},
             {versao,
              revisao(
                  "guiaOdontologiaReapresentacao",
                  guia("cabecalhoGuia(numeroGuiaPrestador=G1) procedimentosExecutados(procedimentoExecutado("
                       "procedimentoOdontologia({}) valorTotal=10) procedimentoExecutado(valorTotal=2)) {}",
                       kOdonto2, kDespesas2)),
              tgOdonto, 0, "odonto |2013-01-02|22|81|1||9.00|10 |||||||2 =12 " + kDespesaLida2}});
    }
    for (const std::string_view versao : {"3.00.01", "3.01.00", "3.02.00", "3.05.00", "4.03.00"}) {
        casos.insert(
            casos.end(),
            {{versao,
              lote3("guiaConsulta",
                    "cabecalhoConsulta(numeroGuiaPrestador=G1) dadosAtendimento(dataAtendimento=2024-01-02 "
                    "procedimento(codigoTabela=22 codigoProcedimento=10 valorProcedimento=80.5))"),
              tgConsulta, 80.5, "consulta 2024-01-02|22|10|80.5"},
             {versao,
              lote3("guiaSP-SADT", guia("cabecalhoGuia(numeroGuiaPrestador=G1) procedimentosExecutados("
                                        "procedimentoExecutado({})) {} {}",
                                        kItem3, kDespesas3, kTotais3)),
              tgSPSADT, 8, "spsadt " + completa3},
             {versao,
              lote3("guiaResumoInternacao",
                    guia("cabecalhoGuia(numeroGuiaPrestador=G1) procedimentosExecutados("
                         "procedimentoExecutado({})) {} {}",
                         kItem3, kTotais3, kDespesas3)),
              tgResumoInternacao, 8, "internacao " + completa3},
             {versao,
              lote3(
                  "guiaOdonto",
                  "numeroGuiaPrestador=G1 procedimentosExecutados(sequencialItem=1 procSolic(codigoTabela=22 "
                  "codigoProcedimento=81) qtdProc=1 valorProc=9.00 dataRealizacao=2024-01-02) "
                  "procedimentosExecutados(qtdProc=3) valorTotalProc=8"),
              tgOdonto, 8, "odonto 1|2024-01-02|22|81|1||9.00| ||||3||| =0 "}});
        if (versao <= "3.01.00")
            casos.push_back({versao, lote3("guiaHonorarioIndividual", honorario3), tgHonorarios, 8,
                             "honorarios " + kLido3 + "8"});
        if (versao >= "3.01.00")
            casos.push_back(
                {versao, lote3("guiaHonorarios", honorario3), tgHonorarios, 8, "honorarios " + kLido3 + "8"});
    }
    return casos;
}

TEST(LoteGuias, CadaFamiliaDeVersoesECadaTipoDeGuia) {
    for (const TCasoGuia& caso : Casos()) {
        SCOPED_TRACE(fmt::format("{} {}", caso.Versao, caso.Lote));
        const auto mensagem = Mensagem(caso.Versao, Xml(caso.Lote));
        const ILoteGuias lote = mensagem->LoteGuias();
        EXPECT_EQ(lote.NumeroLote().Text(), "77");
        ASSERT_EQ(lote.QtdGuias(), 1);
        EXPECT_EQ(lote.TipoGuia(), caso.Tipo);
        EXPECT_EQ(lote.ValorTotal(), caso.Total);
        const IGuiaTiss guia = lote.Guias().front();
        EXPECT_EQ(guia.NumeroGuia(), "G1");
        TLeitor leitor;
        guia.Accept(leitor);
        EXPECT_EQ(leitor.Texto, caso.Lido);
    }
}

TEST(LoteGuias, ElementosDeOutrasVersoesNaoSaoGuias) {
    const std::pair<std::string_view, std::string_view> kCasos[] = {
        {"2.02.03", "guias(guiaConsulta(observacao=x))"},
        {"2.02.03", "guiasTISS(guiaConsulta(observacao=x))"},
        {"3.00.00", "guiasTISS(guiaHonorarios(observacao=x))"},
        {"3.02.00", "guiasTISS(guiaHonorarioIndividual(observacao=x))"},
        {"4.00.00", "guiasTISS(guiaFaturamento(guiaConsulta(observacao=x)))"},
    };
    for (const auto& [versao, lote] : kCasos)
        EXPECT_EQ(Mensagem(versao, Xml(lote))->LoteGuias().QtdGuias(), 0) << versao << " " << lote;
    // A slip in a name hides no guide.
    for (const auto& lote :
         {"guiasTISS(guiaSP_SADT(observacao=x))", "guiastiss(GUIASP-SADT(observacao=x))"}) {
        const auto mensagem = Mensagem("4.00.00", Xml(lote));
        ASSERT_EQ(mensagem->LoteGuias().QtdGuias(), 1) << lote;
        EXPECT_EQ(mensagem->LoteGuias().TipoGuia(), TEnumTipoGuia::tgSPSADT) << lote;
    }
}

std::string Numerada(std::string_view elemento, std::string_view cabecalho, std::string_view numero) {
    return fmt::format("{}({}numeroGuiaPrestador={}{}) ", elemento, cabecalho, numero,
                       cabecalho.empty() ? "" : ")");
}

TEST(LoteGuias, GuiasPorTipoEDepoisPorPosicao) {
    const std::string guias =
        Numerada("guiaOdonto", "", "1") + Numerada("guiaSP-SADT", "cabecalhoGuia(", "2") +
        Numerada("guiaHonorarios", "cabecalhoGuia(", "3") + Numerada("guiaSP-SADT", "cabecalhoGuia(", "4") +
        "nota=x " + Numerada("guiaConsulta", "cabecalhoConsulta(", "5") +
        Numerada("guiaResumoInternacao", "cabecalhoGuia(", "6") +
        Numerada("guiaConsulta", "cabecalhoConsulta(", "7") + "semNumero(a=1)";
    const auto mensagem = Mensagem("4.01.00", Xml("guiasTISS(" + guias + ")"));
    const ILoteGuias lote = mensagem->LoteGuias();
    EXPECT_EQ(lote.TipoGuia(), tgConsulta);
    EXPECT_EQ(lote.QtdGuias(), 7);
    TVisitante visitante;
    for (const IGuiaTiss& guia : lote.Guias())
        guia.Accept(visitante);
    EXPECT_EQ(visitante.Visitas,
              "consulta:5 consulta:7 spsadt:2 spsadt:4 internacao:6 honorarios:3 odonto:1 ");

    const IGuiasTiss listas = lote.GuiasTiss();
    EXPECT_EQ(listas.GuiasConsulta().size(), 2U);
    ASSERT_EQ(listas.GuiasSpSadt().size(), 2U);
    EXPECT_EQ(listas.GuiasSpSadt()[1].NumeroGuia(), "4");
    EXPECT_EQ(listas.GuiasResumoInternacao().size(), 1U);
    EXPECT_EQ(listas.GuiasHonorarios().size(), 1U);
    EXPECT_EQ(listas.GuiasOdonto().size(), 1U);

    const auto reapresentacao =
        Mensagem("2.02.01",
                 Xml("guias(guiaRevisaoGlosa(" +
                     Numerada("guiaSP_SADTReapresentacao", "identificacaoGuiaSADTSP(", "1") +
                     ") guiaFaturamento(" + Numerada("guiaSP_SADT", "identificacaoGuiaSADTSP(", "2") + "))"));
    ASSERT_EQ(reapresentacao->LoteGuias().QtdGuias(), 2);
    EXPECT_EQ(reapresentacao->LoteGuias().Guias()[0].NumeroGuia(), "1");
}

TEST(LoteGuias, SemGuias) {
    for (const std::string_view conteudo : {"", "<guiasTISS/>", "<guiasTISS><outra/></guiasTISS>"}) {
        const auto mensagem = Mensagem("3.05.00", conteudo);
        const ILoteGuias lote = mensagem->LoteGuias();
        EXPECT_EQ(lote.QtdGuias(), 0);
        EXPECT_EQ(lote.ValorTotal(), 0);
        EXPECT_FALSE(lote.NumeroLote().Present());
        EXPECT_EQ(lote.GuiaTissByPosition(1, 1), std::nullopt);
        try {
            lote.TipoGuia();
            FAIL() << "um lote vazio não tem tipo de guia";
        } catch (const ELoteGuiasNotFound& e) {
            EXPECT_STREQ(
                e.what(),
                "Como o tipo da transação foi definida como sendo \"ENVIO_LOTE_GUIAS\", é necessário "
                "que o XML contenha um lote com pelo menos uma guia TISS. Porém, não foram "
                "localizadas guias TISS no conteúdo do XML.");
        }
    }
    // A guide of which nothing is known.
    const auto mensagem = Mensagem("3.05.00", "<guiasTISS><guiaSP-SADT/></guiasTISS>");
    const IGuiaTiss guia = mensagem->LoteGuias().Guias().front();
    EXPECT_EQ(guia.NumeroGuia(), "");
    EXPECT_EQ(guia.ValorTotalGuia(), 0);
    TLeitor leitor;
    guia.Accept(leitor);
    EXPECT_EQ(leitor.Texto, "spsadt =0 -;-;-;-;-;-;-;-;");
}

TEST(LoteGuias, TotaisDasDespesasPorCodigo) {
    const auto despesa = [](std::string_view codigo, std::string_view valor) {
        return Xml(fmt::format("despesa({} servicosExecutados({}))",
                               codigo.empty() ? "" : fmt::format("codigoDespesa={}", codigo),
                               valor.empty() ? "observacao=x" : fmt::format("valorTotal={}", valor)));
    };
    std::string despesas;
    // One value a code, so that each total tells which codes it took.
    for (const auto& [codigo, valor] : std::vector<std::pair<std::string_view, std::string_view>>{
             {"01", "1"},   {"02", "2"},   {"03", "4"},    {"04", "8"},    {"05", "16"},    {"06", "32"},
             {"07", "64"},  {"08", "128"}, {"1", "256"},   {"2", "512"},   {"3", "1024"},   {"4", "2048"},
             {"5", "4096"}, {"6", "8192"}, {"7", "16384"}, {"8", "32768"}, {"09", "65536"}, {"", "131072"},
             {"05", ""},    {"05", "abc"}, {"05%20", "3"}})
        despesas += despesa(codigo, valor);
    despesas += "<despesa><codigoDespesa> 05</codigoDespesa><servicosExecutados><valorTotal>9</valorTotal>"
                "</servicosExecutados></despesa>";
    const auto mensagem = Mensagem("3.05.00", "<guiasTISS><guiaSP-SADT><outrasDespesas>" + despesas +
                                                  "</outrasDespesas></guiaSP-SADT></guiasTISS>");
    const IOutrasDespesas lista = mensagem->LoteGuias().GuiasTiss().GuiasSpSadt().front().OutrasDespesas();
    EXPECT_EQ(lista.TotalGasesMedicinais(), 1 + 256);
    EXPECT_EQ(lista.TotalMedicamentos(), 2 + 512);
    EXPECT_EQ(lista.TotalMateriais(), 4 + 1024);
    EXPECT_EQ(lista.TotalDiarias(), 16 + 4096);
    EXPECT_EQ(lista.TotalTaxasAlugueis(), 64 + 2048);
    EXPECT_EQ(lista.TotalOPME(), 128);
    EXPECT_EQ(lista.TotalDespesa("6"), 8192);
    EXPECT_EQ(lista.Count(), 22);
    EXPECT_EQ(lista.GetDespesa(1).CodigoDespesa().Text(), "02");
    EXPECT_FALSE(lista.GetDespesa(22).HasNode());
    EXPECT_FALSE(lista.GetDespesa(-1).HasNode());
}

TEST(LoteGuias, ArredondamentoDosTotais) {
    const auto mensagem = Mensagem(
        "3.05.00",
        Xml("guiasTISS(guiaSP-SADT(procedimentosExecutados(procedimentoExecutado(valorTotal=10.0024) "
            "procedimentoExecutado(valorTotal=0.0026) procedimentoExecutado(observacao=x)) outrasDespesas("
            "despesa(codigoDespesa=05 servicosExecutados(valorTotal=0.004)) despesa(codigoDespesa=5 "
            "servicosExecutados(valorTotal=0.004)) despesa(codigoDespesa=08 "
            "servicosExecutados(valorTotal=1.005))) "
            "valorTotal(valorTotalGeral=10.004)) guiaSP-SADT(valorTotal(valorTotalGeral=10.004)))"));
    const IGuiaSpSadt guia = mensagem->LoteGuias().GuiasTiss().GuiasSpSadt().front();
    EXPECT_EQ(guia.ProcedimentosExecutados().TotalProcedimentos(), 10.01) << "uma vez, ao fim da soma";
    EXPECT_EQ(guia.ProcedimentosExecutados().Count(), 3);
    EXPECT_EQ(guia.ProcedimentosExecutados().GetProcedimento(1).ValorTotal().Number(), 0.0026);
    EXPECT_EQ(guia.OutrasDespesas().TotalDiarias(), 0) << "cada código por si";
    EXPECT_EQ(guia.OutrasDespesas().TotalOPME(), 1.01);
    EXPECT_DOUBLE_EQ(mensagem->LoteGuias().ValorTotal(), 20.008);
}

TEST(LoteGuias, GuiaDeUmaPosicao) {
    const std::string lote =
        "\n<guiasTISS>\n"
        "  <guiaOdonto>\n    <numeroGuiaPrestador>A</numeroGuiaPrestador>\n  </guiaOdonto>\n"
        "  <!-- ã --><guiaConsulta><cabecalhoConsulta><numeroGuiaPrestador>B</numeroGuiaPrestador>"
        "</cabecalhoConsulta></guiaConsulta> <guiaOdonto/>\n"
        "</guiasTISS>\n";
    const auto mensagem = Mensagem("4.00.00", lote);
    const ILoteGuias guias = mensagem->LoteGuias();
    const TGuiaLocator locator(guias);
    constexpr std::int64_t kMuito = std::numeric_limits<std::int64_t>::max();
    const struct {
        std::int64_t Linha;
        std::int64_t Coluna;
        const char* Numero; ///< null: no guide
    } kCasos[] = {
        {1, 1, nullptr},      {1, 40, nullptr},     {2, 1, nullptr},  {3, 2, nullptr},   {3, 3, "A"},
        {4, 1, "A"},          {4, kMuito, "A"},     {5, 1, "A"},      {5, 3, "A"},       {5, 15, "A"},
        {5, 16, nullptr},     {5, kMuito, nullptr}, {6, 12, nullptr}, {6, 13, "B"},      {6, 124, "B"},
        {6, 125, nullptr},    {6, 126, ""},         {6, 138, ""},     {6, 139, nullptr}, {7, 1, nullptr},
        {kMuito, 1, nullptr}, {0, 0, nullptr},      {-5, 3, nullptr},
    };
    for (const auto& caso : kCasos) {
        const auto guia = guias.GuiaTissByPosition(caso.Linha, caso.Coluna);
        const IGuiaTiss* localizada = locator.ByPosition(caso.Linha, caso.Coluna);
        SCOPED_TRACE(fmt::format("linha {}, coluna {}", caso.Linha, caso.Coluna));
        ASSERT_EQ(guia.has_value(), caso.Numero != nullptr);
        ASSERT_EQ(localizada != nullptr, caso.Numero != nullptr);
        if (guia) {
            EXPECT_EQ(guia->NumeroGuia(), caso.Numero);
            EXPECT_EQ(localizada->Node(), guia->Node());
        }
    }
}

TEST(LoteGuias, GuiaDeUmNo) {
    const auto mensagem = Mensagem("4.00.00", Xml("guiasTISS(" + Numerada("guiaOdonto", "", "1") +
                                                  Numerada("guiaOdonto", "", "2") + ")"));
    const auto guias = mensagem->LoteGuias().Guias();
    const TGuiaLocator locator(mensagem->LoteGuias());
    TXmlNode* segunda = guias[1].Node();
    TXmlNode* novo = mensagem->Xml()->NewTag("observacao", "x");
    segunda->InsertChild(*novo, nullptr);
    for (TXmlNode* no : {segunda, segunda->FirstChildTag(), novo}) {
        ASSERT_NE(locator.ByNode(*no), nullptr);
        EXPECT_EQ(locator.ByNode(*no)->Node(), segunda);
    }
    EXPECT_EQ(locator.ByNode(*guias[0].Node())->NumeroGuia(), "1");
    EXPECT_EQ(locator.ByNode(*mensagem->Node()), nullptr);
    EXPECT_EQ(locator.ByNode(*mensagem->EpilogoNode()), nullptr);
}

TEST(LoteGuias, CampoDeUmItem) {
    const auto mensagem = Mensagem(
        "3.05.00", "<guiasTISS><guiaHonorarios><procedimentosRealizados>\n<procedimentoRealizado>\n"
                   "   <sequencialItem> +12 </sequencialItem><valorTotal> 10.50 </valorTotal>"
                   "<valorUnitario>1e3</valorUnitario><quantidadeExecutada/>"
                   "</procedimentoRealizado></procedimentosRealizados></guiaHonorarios></guiasTISS>");
    const IGuiaHonorarios guia = mensagem->LoteGuias().GuiasTiss().GuiasHonorarios().front();
    const TProcedimentoExecutado item = guia.ProcedimentosExecutados().GetProcedimento(0);
    EXPECT_EQ(item.SequencialItem().Integer(), 12);
    EXPECT_EQ(item.ValorTotal().Text(), " 10.50 ");
    EXPECT_EQ(item.ValorTotal().Number(), 10.5);
    EXPECT_EQ(item.ValorTotal().Integer(), std::nullopt);
    EXPECT_EQ(item.ValorTotal().Line(), 3);
    EXPECT_EQ(item.ValorUnitario().Number(), std::nullopt);
    EXPECT_TRUE(item.QuantidadeExecutada().Present());
    EXPECT_EQ(item.QuantidadeExecutada().Number(), std::nullopt);
    EXPECT_FALSE(item.ReducaoAcrescimo().Present());
    EXPECT_EQ(item.ReducaoAcrescimo().Line(), 0);
    item.ValorTotal().Node()->SetValue("11.00");
    EXPECT_EQ(guia.ProcedimentosExecutados().TotalProcedimentos(), 11);

    const std::pair<std::string_view, std::optional<std::int64_t>> kInteiros[] = {
        {"0007", 7},
        {"-3", -3},
        {"+-3", std::nullopt},
        {"", std::nullopt},
        {"+", std::nullopt},
        {"1.0", std::nullopt},
        {"9223372036854775808", std::nullopt}};
    for (const auto& [texto, valor] : kInteiros) {
        item.SequencialItem().Node()->SetValue(texto);
        EXPECT_EQ(item.SequencialItem().Integer(), valor) << texto;
    }
}

TEST(LoteGuias, MuitasGuiasDeDoisTiposAlternados) {
    constexpr int kGuias = 10'000;
    std::string lote = "<guiasTISS>";
    for (int i = 0; i < kGuias; ++i)
        lote +=
            fmt::format("<{0}><cabecalhoGuia><numeroGuiaPrestador>{1}</numeroGuiaPrestador></cabecalhoGuia>"
                        "<valorTotalHonorarios>1</valorTotalHonorarios></{0}>",
                        i % 2 == 0 ? "guiaHonorarios" : "guiaSP-SADT", i);
    const auto mensagem = Mensagem("4.03.00", lote + "</guiasTISS>");
    const ILoteGuias guias = mensagem->LoteGuias();
    EXPECT_EQ(guias.ValorTotal(), kGuias / 2);
    const TGuiaLocator locator(guias);
    int esperada = 1;
    for (const IGuiaTiss& guia : guias.Guias()) {
        ASSERT_EQ(guia.NumeroGuia(), std::to_string(esperada));
        ASSERT_EQ(locator.ByNode(*guia.Node()->FirstChildTag())->Node(), guia.Node());
        esperada = esperada + 2 < kGuias || esperada % 2 == 0 ? esperada + 2 : 0;
    }
}

} // namespace

} // namespace conferix
