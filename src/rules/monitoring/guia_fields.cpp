#include "rules/monitoring/guia_fields.h"

#include "rules/tuss_validation.h"

namespace conferix {

namespace {

TNumberField NumberOf(const TXmlField& field) {
    return {field, field.Number()};
}

TDateField DateOf(const TXmlField& field) {
    return {field, field.Present() ? ParseXsDate(field.Text()) : std::nullopt};
}

TItemFields ReadItem(const TProcedimentoMonitoramento& item) {
    TItemFields fields;
    fields.Item = item;
    fields.CodigoTabela = item.CodigoTabela();
    fields.GrupoProcedimento = item.GrupoProcedimento();
    fields.CodigoProcedimento = item.CodigoProcedimento();
    fields.QuantidadeInformada = NumberOf(item.QuantidadeInformada());
    fields.ValorInformado = NumberOf(item.ValorInformado());
    fields.QuantidadePaga = NumberOf(item.QuantidadePaga());
    fields.ValorPagoProc = NumberOf(item.ValorPagoProc());
    fields.ValorPagoFornecedor = NumberOf(item.ValorPagoFornecedor());
    fields.CNPJFornecedor = item.CNPJFornecedor();
    fields.ValorCoParticipacao = NumberOf(item.ValorCoParticipacao());
    fields.HasPackage = !item.DetalhePacote().empty();
    return fields;
}

} // namespace

void TGuiaFields::Read(const TGuiaMonitoramento& guia) {
    Guia = guia;
    TipoRegistro = guia.TipoRegistro();
    TipoEventoAtencao = guia.TipoEventoAtencao();
    OrigemEventoAtencao = guia.OrigemEventoAtencao();
    VersaoTISSPrestador = guia.VersaoTISSPrestador();

    const TContratadoExecutanteMonitoramento executante = guia.DadosContratadoExecutante();
    IdentificadorExecutante = executante.IdentificadorExecutante();
    CodigoCNPJ_CPF = executante.CodigoCNPJ_CPF();
    MunicipioExecutante = executante.MunicipioExecutante();

    Beneficiario = guia.DadosBeneficiario();
    NumeroCartaoNacionalSaude = Beneficiario.NumeroCartaoNacionalSaude();
    Sexo = Beneficiario.Sexo();
    DataNascimento = DateOf(Beneficiario.DataNascimento());
    MunicipioResidencia = Beneficiario.MunicipioResidencia();

    NumeroGuiaPrestador = guia.NumeroGuiaPrestador();
    NumeroGuiaOperadora = guia.NumeroGuiaOperadora();
    IdentificacaoReembolso = guia.IdentificacaoReembolso();
    DataRealizacao = DateOf(guia.DataRealizacao());
    DataInicialFaturamento = DateOf(guia.DataInicialFaturamento());
    DataFimPeriodo = DateOf(guia.DataFimPeriodo());
    DataProtocoloCobranca = DateOf(guia.DataProtocoloCobranca());
    DataPagamento = DateOf(guia.DataPagamento());
    DataProcessamentoGuia = DateOf(guia.DataProcessamentoGuia());
    TipoConsulta = guia.TipoConsulta();
    CaraterAtendimento = guia.CaraterAtendimento();
    TipoInternacao = guia.TipoInternacao();
    RegimeInternacao = guia.RegimeInternacao();
    TipoAtendimento = guia.TipoAtendimento();
    TipoFaturamento = guia.TipoFaturamento();
    MotivoSaida = guia.MotivoSaida();

    const TValoresGuiaMonitoramento valores = guia.ValoresGuia();
    ValorTotalInformado = NumberOf(valores.ValorTotalInformado());
    ValorProcessado = NumberOf(valores.ValorProcessado());
    ValorTotalPagoProcedimentos = NumberOf(valores.ValorTotalPagoProcedimentos());
    ValorTotalDiarias = NumberOf(valores.ValorTotalDiarias());
    ValorTotalTaxas = NumberOf(valores.ValorTotalTaxas());
    ValorTotalMateriais = NumberOf(valores.ValorTotalMateriais());
    ValorTotalOPME = NumberOf(valores.ValorTotalOPME());
    ValorTotalMedicamentos = NumberOf(valores.ValorTotalMedicamentos());
    ValorGlosaGuia = NumberOf(valores.ValorGlosaGuia());
    ValorPagoGuia = NumberOf(valores.ValorPagoGuia());
    ValorPagoFornecedores = NumberOf(valores.ValorPagoFornecedores());
    ValorTotalTabelaPropria = NumberOf(valores.ValorTotalTabelaPropria());
    ValorTotalCoParticipacao = NumberOf(valores.ValorTotalCoParticipacao());

    Itens.clear();
    for (const TProcedimentoMonitoramento& item : guia.Procedimentos())
        Itens.push_back(ReadItem(item));
}

double TGuiaFields::SumOfItens(TNumberField TItemFields::*number) const {
    long double sum = 0;
    for (const TItemFields& item : Itens)
        sum += (item.*number).Value.value_or(0);
    return static_cast<double>(sum);
}

} // namespace conferix
