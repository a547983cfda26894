#include "model/monitoramento.h"

#include "model/documentos.h"

namespace conferix {

using namespace testes;

namespace {

std::vector<TGuiaMonitoramento> Guias(const IMonitoramento& arquivo) {
    std::vector<TGuiaMonitoramento> guias;
    for (const TGuiaMonitoramento& guia : arquivo.Lote().GuiasMonitoramento())
        guias.push_back(guia);
    return guias;
}

std::string Textos(const std::vector<TXmlField>& campos) {
    std::string text;
    for (const TXmlField& campo : campos)
        text += fmt::format("{} ", campo.Present() ? campo.Text() : "-");
    return text;
}

/// The fields of a guide in the order of the regulator's numbers, its first item and package included.
std::string Campos(const TGuiaMonitoramento& guia) {
    const TContratadoExecutanteMonitoramento executante = guia.DadosContratadoExecutante();
    const TBeneficiarioMonitoramento pessoa = guia.DadosBeneficiario();
    const TValoresGuiaMonitoramento valores = guia.ValoresGuia();
    const TProcedimentoMonitoramento item = guia.Procedimentos().Get(0);
    const TDetalhePacote pacote = item.DetalhePacote().Get(0);
    return Textos({guia.VersaoTISSPrestador(),
                   executante.CodigoCNPJ_CPF(),
                   executante.MunicipioExecutante(),
                   pessoa.NumeroCartaoNacionalSaude(),
                   pessoa.Sexo(),
                   pessoa.DataNascimento(),
                   pessoa.MunicipioResidencia(),
                   guia.NumeroGuiaPrestador(),
                   guia.NumeroGuiaOperadora(),
                   guia.IdentificacaoReembolso(),
                   guia.DataRealizacao(),
                   guia.DataInicialFaturamento(),
                   guia.DataFimPeriodo(),
                   guia.DataProtocoloCobranca(),
                   guia.DataPagamento(),
                   guia.TipoConsulta(),
                   guia.CaraterAtendimento(),
                   guia.TipoInternacao(),
                   guia.RegimeInternacao(),
                   guia.TipoAtendimento(),
                   guia.TipoFaturamento(),
                   guia.MotivoSaida()}) +
           Textos({valores.ValorTotalInformado(), valores.ValorProcessado(),
                   valores.ValorTotalPagoProcedimentos(), valores.ValorTotalDiarias(),
                   valores.ValorTotalTaxas(), valores.ValorTotalMateriais(), valores.ValorTotalOPME(),
                   valores.ValorTotalMedicamentos(), valores.ValorGlosaGuia(), valores.ValorPagoGuia(),
                   valores.ValorPagoFornecedores(), valores.ValorTotalTabelaPropria()}) +
           Textos({item.CodigoTabela(), item.GrupoProcedimento(), item.CodigoProcedimento(),
                   item.QuantidadeInformada(), item.ValorInformado(), item.QuantidadePaga(),
                   item.ValorPagoProc(), item.ValorPagoFornecedor(), item.CNPJFornecedor(),
                   pacote.CodigoTabela(), pacote.CodigoProcedimento(), pacote.Quantidade(),
                   guia.DataProcessamentoGuia(), valores.ValorTotalCoParticipacao(),
                   item.ValorCoParticipacao()}) +
           Textos({guia.TipoRegistro(), executante.IdentificadorExecutante(), guia.TipoEventoAtencao(),
                   guia.OrigemEventoAtencao(), pessoa.CpfBeneficiario(), guia.DiagnosticosCID10().Get(1),
                   guia.FormasRemuneracao().Get(0).ValorRemuneracao()});
}

TEST(Monitoramento, CadaCampoVemDoSeuElemento) {
    const std::string kGuia = Xml(
        "guiaMonitoramento(tipoRegistro=a versaoTISSPrestador=010 dadosContratadoExecutante(CNES=x "
        "identificadorExecutante=b codigoCNPJ_CPF=014 municipioExecutante=015) "
        "dadosBeneficiario(identBeneficiario("
        "numeroCartaoNacionalSaude=016 cpfBeneficiario=e sexo=017 dataNascimento=018 "
        "municipioResidencia=019)) "
        "tipoEventoAtencao=c origemEventoAtencao=d numeroGuia_prestador=023 numeroGuia_operadora=024 "
        "identificacaoReembolso=025 formasRemuneracao(formaRemuneracao=x valorRemuneracao=g) "
        "dataRealizacao=029 "
        "dataInicialFaturamento=030 dataFimPeriodo=031 dataProtocoloCobranca=032 dataPagamento=033 "
        "dataProcessamentoGuia=080 tipoConsulta=034 caraterAtendimento=038 tipoInternacao=039 "
        "regimeInternacao=040 "
        "diagnosticosCID10(diagnosticoCID=x diagnosticoCID=f) tipoAtendimento=045 tipoFaturamento=046 "
        "motivoSaida=049 "
        "valoresGuia(valorTotalInformado=050 valorProcessado=051 valorTotalPagoProcedimentos=052 "
        "valorTotalDiarias=053 "
        "valorTotalTaxas=054 valorTotalMateriais=055 valorTotalOPME=056 valorTotalMedicamentos=057 "
        "valorGlosaGuia=058 "
        "valorPagoGuia=059 valorPagoFornecedores=060 valorTotalTabelaPropria=061 "
        "valorTotalCoParticipacao=084) "
        "procedimentos(identProcedimento(codigoTabela=064 Procedimento(grupoProcedimento=065 "
        "codigoProcedimento=066)) "
        "quantidadeInformada=070 valorInformado=071 quantidadePaga=072 valorPagoProc=073 "
        "valorPagoFornecedor=074 "
        "CNPJFornecedor=075 valorCoParticipacao=085 detalhePacote(codigoTabela=077 codigoProcedimento=078 "
        "quantidade=079)))");
    const auto arquivo =
        ArquivoMonitoramento("", kGuia + Xml("guiaMonitoramento(dadosBeneficiario(identBeneficiario("
                                             "numeroCPFBeneficiario=antigo)))"));
    const std::vector<TGuiaMonitoramento> guias = Guias(*arquivo);
    ASSERT_EQ(guias.size(), 2U);
    EXPECT_EQ(
        Campos(guias[0]),
        "010 014 015 016 017 018 019 023 024 025 029 030 031 032 033 034 038 039 040 045 046 049 "
        "050 051 052 053 054 055 056 057 058 059 060 061 064 065 066 070 071 072 073 074 075 077 078 079 "
        "080 084 085 a b c d e f g ");
    std::string ausentes;
    for (int i = 0; i < 49; ++i)
        ausentes += "- ";
    EXPECT_EQ(Campos(guias[1]), ausentes + "- - - - antigo - - ");
}

TEST(Monitoramento, ItensEPacotesNaOrdemDoDocumento) {
    const auto arquivo = ArquivoMonitoramento(
        "<numeroLote>8</numeroLote><competenciaLote>202402</competenciaLote>"
        "<dataRegistroTransacao>2024-03-01</dataRegistroTransacao>",
        "<guiaMonitoramento><numeroGuia_prestador>A</numeroGuia_prestador>"
        "<procedimentos><valorInformado>1</valorInformado></procedimentos><!-- x -->"
        "<procedimentos><valorInformado>2</valorInformado><detalhePacote><quantidade>3</quantidade></"
        "detalhePacote>"
        "<detalhePacote><quantidade>x</quantidade></detalhePacote></procedimentos></guiaMonitoramento>"
        "<outra/><guiaMonitoramento><numeroGuia_prestador>B</numeroGuia_prestador></guiaMonitoramento>");
    EXPECT_EQ(arquivo->Lote().QtdGuias(), 2);
    EXPECT_EQ(arquivo->Lote().NumeroLote().Text(), "8");
    EXPECT_EQ(arquivo->Lote().CompetenciaLote().Text(), "202402");
    EXPECT_EQ(arquivo->Lote().DataRegistroTransacao().Text(), "2024-03-01");
    EXPECT_FALSE(arquivo->Lote().SemMovimento());
    TVisitante visitante;
    for (const TGuiaMonitoramento& guia : arquivo->Lote().GuiasMonitoramento())
        guia.Accept(visitante);
    EXPECT_EQ(visitante.Visitas, "guia:A guia:B ");

    const TGuiaMonitoramento guia = Guias(*arquivo)[0];
    ASSERT_EQ(guia.Procedimentos().Count(), 2);
    EXPECT_EQ(guia.Procedimentos().Get(0).ValorInformado().Number(), 1.0);
    EXPECT_TRUE(guia.Procedimentos().Get(0).DetalhePacote().empty());
    const TProcedimentoMonitoramento pacote = guia.Procedimentos().Get(1);
    ASSERT_EQ(pacote.DetalhePacote().Count(), 2);
    EXPECT_EQ(pacote.DetalhePacote().Get(0).Quantidade().Integer(), 3);
    EXPECT_TRUE(pacote.DetalhePacote().Get(1).Quantidade().Present());
    EXPECT_EQ(pacote.DetalhePacote().Get(1).Quantidade().Number(), std::nullopt);
    EXPECT_FALSE(guia.Procedimentos().Get(2).HasNode());
    EXPECT_FALSE(guia.Procedimentos().Get(2).DetalhePacote().Get(0).Quantidade().Present());
}

TEST(Monitoramento, IdentificacaoDaGuia) {
    const struct {
        std::string_view Guia;
        std::string_view Identificacao;
    } kCasos[] = {
        {"<numeroGuia_prestador>11</numeroGuia_prestador><numeroGuia_operadora>22</numeroGuia_operadora>",
         "11"},
        {"<numeroGuia_prestador>00000000000000000000</numeroGuia_prestador>"
         "<numeroGuia_operadora>22</numeroGuia_operadora>",
         "22"},
        {"<numeroGuia_prestador>000</numeroGuia_prestador><numeroGuia_operadora/>"
         "<identificacaoReembolso>0033</identificacaoReembolso>",
         "0033"},
        {"<numeroGuia_prestador>000</numeroGuia_prestador><numeroGuia_operadora>00</numeroGuia_operadora>"
         "<identificacaoReembolso>0</identificacaoReembolso>",
         "000"},
        {"", ""},
    };
    for (const auto& caso : kCasos) {
        const auto arquivo =
            ArquivoMonitoramento("", fmt::format("<guiaMonitoramento>{}</guiaMonitoramento>", caso.Guia));
        EXPECT_EQ(Guias(*arquivo)[0].Identificacao(), caso.Identificacao) << caso.Guia;
    }
}

} // namespace

} // namespace conferix
