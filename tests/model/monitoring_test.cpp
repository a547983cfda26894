#include "model/monitoramento.h"

#include "model/cases.h"

#include <vector>

namespace conferix::tests {
namespace {

/// A line of the texts of those fields that are present; none when all are absent.
std::string Line(std::string_view title, const std::vector<TXmlField>& fields) {
    std::string line;
    for (const TXmlField& field : fields)
        if (field.Present())
            line += fmt::format(" {}", field.Text());
    return line.empty() ? "" : fmt::format("{}{}\n", title, line);
}

std::string Told(const TProcedimentoMonitoramento& item) {
    std::string text =
        Line("procedimento",
             {item.CodigoTabela(), item.GrupoProcedimento(), item.CodigoProcedimento(),
              item.QuantidadeInformada(), item.ValorInformado(), item.QuantidadePaga(), item.ValorPagoProc(),
              item.ValorPagoFornecedor(), item.CNPJFornecedor(), item.ValorCoParticipacao()});
    for (const TDetalhePacote& each : item.DetalhePacote())
        text += Line("pacote", {each.CodigoTabela(), each.CodigoProcedimento(), each.Quantidade()});
    return text;
}

std::string Told(const TGuiaMonitoramento& guide) {
    const TContratadoExecutanteMonitoramento provider = guide.DadosContratadoExecutante();
    const TBeneficiarioMonitoramento person = guide.DadosBeneficiario();
    const TValoresGuiaMonitoramento values = guide.ValoresGuia();
    std::string text = fmt::format("identificação {}\n", guide.Identificacao());
    text += Line("guia", {guide.TipoRegistro(),
                          guide.VersaoTISSPrestador(),
                          guide.TipoEventoAtencao(),
                          guide.OrigemEventoAtencao(),
                          guide.NumeroGuiaPrestador(),
                          guide.NumeroGuiaOperadora(),
                          guide.IdentificacaoReembolso(),
                          guide.DataRealizacao(),
                          guide.DataInicialFaturamento(),
                          guide.DataFimPeriodo(),
                          guide.DataProtocoloCobranca(),
                          guide.DataPagamento(),
                          guide.TipoConsulta(),
                          guide.CaraterAtendimento(),
                          guide.TipoInternacao(),
                          guide.RegimeInternacao(),
                          guide.TipoAtendimento(),
                          guide.TipoFaturamento(),
                          guide.MotivoSaida(),
                          guide.DataProcessamentoGuia()});
    text += Line("executante", {provider.IdentificadorExecutante(), provider.CodigoCNPJ_CPF(),
                                provider.MunicipioExecutante()});
    text += Line("beneficiário", {person.NumeroCartaoNacionalSaude(), person.CpfBeneficiario(), person.Sexo(),
                                  person.DataNascimento(), person.MunicipioResidencia()});
    text += Line("valores",
                 {values.ValorTotalInformado(), values.ValorProcessado(),
                  values.ValorTotalPagoProcedimentos(), values.ValorTotalDiarias(), values.ValorTotalTaxas(),
                  values.ValorTotalMateriais(), values.ValorTotalOPME(), values.ValorTotalMedicamentos(),
                  values.ValorGlosaGuia(), values.ValorPagoGuia(), values.ValorPagoFornecedores(),
                  values.ValorTotalTabelaPropria(), values.ValorTotalCoParticipacao()});
    for (const TXmlField& each : guide.DiagnosticosCID10())
        text += Line("diagnóstico", {each});
    for (const TFormaRemuneracao& each : guide.FormasRemuneracao())
        text += Line("remuneração", {each.ValorRemuneracao()});
    for (const TProcedimentoMonitoramento& each : guide.Procedimentos())
        text += Told(each);
    return text;
}

TEST(Monitoring, EachFieldComesFromItsElement) {
    ExpectCases("monitoring.casos", [](std::string_view, const auto& guide) {
        return Told(LoadedMonitoring("", Xml(guide.first))->Lote().GuiasMonitoramento().Get(0));
    });
}

TEST(Monitoring, LotHasItsHeaderAndItsGuidesInDocumentOrder) {
    const auto file = LoadedMonitoring(
        Xml("numeroLote=8 competenciaLote=202402 dataRegistroTransacao=2024-03-01 "),
        Xml("guiaMonitoramento(numeroGuia_prestador=A procedimentos(quantidadePaga=3)) outra() "
            "guiaMonitoramento(numeroGuia_prestador=B)"));
    const TLoteMonitoramento lot = file->Lote();
    EXPECT_EQ(Line("", {lot.NumeroLote(), lot.CompetenciaLote(), lot.DataRegistroTransacao()}),
              " 8 202402 2024-03-01\n");
    EXPECT_FALSE(lot.SemMovimento());
    ASSERT_EQ(lot.QtdGuias(), 2);
    EXPECT_EQ(lot.GuiasMonitoramento().Get(1).NumeroGuiaPrestador().Text(), "B");

    // An item that is not there is a view without node, and so is all below it.
    const auto items = lot.GuiasMonitoramento().Get(0).Procedimentos();
    EXPECT_EQ(items.Count(), 1);
    EXPECT_EQ(items.Get(0).QuantidadePaga().Integer(), 3);
    EXPECT_TRUE(items.Get(0).DetalhePacote().empty());
    EXPECT_FALSE(items.Get(1).HasNode());
    EXPECT_FALSE(items.Get(1).DetalhePacote().Get(0).Quantidade().Present());
}

} // namespace
} // namespace conferix::tests
