#include "xml/bindings/lote_guias_names.h"

namespace conferix {

namespace {

// ---- 2.x

constexpr TItemNames kProcedimento2 = {
    .DataExecucao = "data",
    .CodigoTabela = "procedimento/tipoTabela",
    .CodigoProcedimento = "procedimento/codigo",
    .QuantidadeExecutada = "quantidadeRealizada",
    .ReducaoAcrescimo = "reducaoAcrescimo",
    .ValorUnitario = "valor",
    .ValorTotal = "valorTotal",
};

constexpr TItemListNames kRealizados2 = {"procedimentosRealizados", "procedimentos", kProcedimento2};
constexpr TItemListNames kRealizadosRevisao2 = {"procedimentosRealizados", "procedimentosRevisao",
                                                kProcedimento2};
constexpr TItemListNames kHonorarios2 = {"procedimentosExamesRealizados", "procedimentoRealizado",
                                         kProcedimento2};
constexpr TItemListNames kHonorariosRevisao2 = {"procedimentosExamesRealizados", "procedimentosRevisao",
                                                kProcedimento2};
constexpr TItemListNames kOdonto2 = {"procedimentosExecutados",
                                     "procedimentoExecutado",
                                     {
                                         .DataExecucao = "dataRealizacao",
                                         .CodigoTabela = "procedimentoOdonto/tipoTabela",
                                         .CodigoProcedimento = "procedimentoOdonto/codigo",
                                         .QuantidadeExecutada = "quantidade",
                                         .ValorUnitario = "valor",
                                     }};
constexpr TItemListNames kOdontoRevisao2 = {
    "procedimentosExecutados",
    "procedimentoExecutado",
    {
        .DataExecucao = "procedimentoOdontologia/dataRealizacao",
        .CodigoTabela = "procedimentoOdontologia/procedimentoOdonto/tipoTabela",
        .CodigoProcedimento = "procedimentoOdontologia/procedimentoOdonto/codigo",
        .QuantidadeExecutada = "procedimentoOdontologia/quantidade",
        .ValorUnitario = "procedimentoOdontologia/valor",
        .ValorTotal = "valorTotal",
    }};

constexpr TItemListNames kDespesas2 = {"outrasDespesas",
                                       "despesa",
                                       {
                                           .DataExecucao = "dataRealizacao",
                                           .CodigoTabela = "identificadorDespesa/tipoTabela",
                                           .CodigoProcedimento = "identificadorDespesa/codigo",
                                           .CodigoDespesa = "tipoDespesa",
                                           .QuantidadeExecutada = "quantidade",
                                           .ReducaoAcrescimo = "reducaoAcrescimo",
                                           .ValorUnitario = "valorUnitario",
                                           .ValorTotal = "valorTotal",
                                       }};
constexpr TItemListNames kDespesasRevisao2 = {"outrasDespesas",
                                              "itensDespesas",
                                              {
                                                  .DataExecucao = "dataRealizacao",
                                                  .CodigoTabela = "despesa/tipoTabela",
                                                  .CodigoProcedimento = "despesa/codigo",
                                                  .CodigoDespesa = "tipoDespesa",
                                                  .QuantidadeExecutada = "quantidade",
                                                  .ReducaoAcrescimo = "reducaoAcrescimo",
                                                  .ValorUnitario = "valorUnitario",
                                                  .ValorTotal = "valorTotal",
                                              }};

constexpr TValorTotalNames kValorTotal2 = {
    .Grupo = "valorTotal",
    .Procedimentos = "servicosExecutados",
    .Diarias = "diarias",
    .TaxasAlugueis = "taxas",
    .Materiais = "materiais",
    .Medicamentos = "medicamentos",
    .GasesMedicinais = "gases",
    .TotalGeral = "totalGeral",
};

constexpr std::string_view kNumeroHonorario2 = "identificacaoGuiaHonorarioIndividual/numeroGuiaPrestador";
constexpr std::string_view kTotalHonorario2 = "procedimentosExamesRealizados/totalGeralHonorario";

constexpr TGuiaNames kConsultas2[] = {
    {.Elemento = "guiaConsulta", .NumeroGuia = "identificacaoGuia/numeroGuiaPrestador"},
    {.Elemento = "guiaConsultaReapresentacao", .NumeroGuia = "identificacaoGuia/numeroGuiaPrestador"},
};
constexpr TGuiaNames kSpSadts2[] = {
    {"guiaSP_SADT", "identificacaoGuiaSADTSP/numeroGuiaPrestador", "valorTotal/totalGeral", kRealizados2,
     kDespesas2, kValorTotal2},
    {"guiaSP_SADTReapresentacao", "identificacaoGuiaSADTSP/numeroGuiaPrestador", "valorTotal/totalGeral",
     kRealizadosRevisao2, kDespesasRevisao2, kValorTotal2},
};
constexpr TGuiaNames kInternacoes2[] = {
    {"guiaResumoInternacao", "identificacaoGuiaInternacao/numeroGuiaPrestador", "valorTotal/totalGeral",
     kRealizados2, kDespesas2, kValorTotal2},
    {"guiaResumoInternacaoReapresentacao", "identificacaoGuiaInternacao/numeroGuiaPrestador",
     "valorTotal/totalGeral", kRealizadosRevisao2, kDespesasRevisao2, kValorTotal2},
};
constexpr TGuiaNames kGuiasHonorarios2[] = {
    {"guiaHonorarioIndividual", kNumeroHonorario2, kTotalHonorario2, kHonorarios2},
    {"guiaHonorarioIndividualReapresentacao", kNumeroHonorario2, kTotalHonorario2, kHonorariosRevisao2},
};
constexpr TGuiaNames kGuiasOdonto2[] = {
    {"guiaOdontologia", "cabecalhoGuia/numeroGuiaPrestador", "procedimentosExecutados/valorTotal", kOdonto2,
     kDespesas2},
    // A resubmitted dental guide states its totals in each item and none of its own.
    {"guiaOdontologiaReapresentacao", "cabecalhoGuia/numeroGuiaPrestador", "", kOdontoRevisao2, kDespesas2},
};

constexpr std::string_view kGrupos2[] = {"guiaFaturamento", "guiaRevisaoGlosa"};

// ---- 3.x and 4.x

constexpr TItemNames kProcedimento3 = {
    .SequencialItem = "sequencialItem",
    .DataExecucao = "dataExecucao",
    .CodigoTabela = "procedimento/codigoTabela",
    .CodigoProcedimento = "procedimento/codigoProcedimento",
    .QuantidadeExecutada = "quantidadeExecutada",
    .ReducaoAcrescimo = "reducaoAcrescimo",
    .ValorUnitario = "valorUnitario",
    .ValorTotal = "valorTotal",
};

constexpr TItemListNames kExecutados3 = {"procedimentosExecutados", "procedimentoExecutado", kProcedimento3};
constexpr TItemListNames kHonorarios3 = {"procedimentosRealizados", "procedimentoRealizado", kProcedimento3};
constexpr TItemListNames kOdonto3 = {"",
                                     "procedimentosExecutados",
                                     {
                                         .SequencialItem = "sequencialItem",
                                         .DataExecucao = "dataRealizacao",
                                         .CodigoTabela = "procSolic/codigoTabela",
                                         .CodigoProcedimento = "procSolic/codigoProcedimento",
                                         .QuantidadeExecutada = "qtdProc",
                                         .ValorUnitario = "valorProc",
                                     }};
constexpr TItemListNames kDespesas3 = {"outrasDespesas",
                                       "despesa",
                                       {
                                           .SequencialItem = "sequencialItem",
                                           .DataExecucao = "servicosExecutados/dataExecucao",
                                           .CodigoTabela = "servicosExecutados/codigoTabela",
                                           .CodigoProcedimento = "servicosExecutados/codigoProcedimento",
                                           .CodigoDespesa = "codigoDespesa",
                                           .QuantidadeExecutada = "servicosExecutados/quantidadeExecutada",
                                           .ReducaoAcrescimo = "servicosExecutados/reducaoAcrescimo",
                                           .ValorUnitario = "servicosExecutados/valorUnitario",
                                           .ValorTotal = "servicosExecutados/valorTotal",
                                       }};

constexpr TValorTotalNames kValorTotal3 = {
    .Grupo = "valorTotal",
    .Procedimentos = "valorProcedimentos",
    .Diarias = "valorDiarias",
    .TaxasAlugueis = "valorTaxasAlugueis",
    .Materiais = "valorMateriais",
    .Medicamentos = "valorMedicamentos",
    .Opme = "valorOPME",
    .GasesMedicinais = "valorGasesMedicinais",
    .TotalGeral = "valorTotalGeral",
};

constexpr std::string_view kNumero3 = "cabecalhoGuia/numeroGuiaPrestador";

constexpr TGuiaNames kConsultas3[] = {
    {.Elemento = "guiaConsulta",
     .NumeroGuia = "cabecalhoConsulta/numeroGuiaPrestador",
     .ValorTotalGuia = "dadosAtendimento/procedimento/valorProcedimento"},
};
constexpr TGuiaNames kSpSadts3[] = {
    {"guiaSP-SADT", kNumero3, "valorTotal/valorTotalGeral", kExecutados3, kDespesas3, kValorTotal3},
};
constexpr TGuiaNames kInternacoes3[] = {
    {"guiaResumoInternacao", kNumero3, "valorTotal/valorTotalGeral", kExecutados3, kDespesas3, kValorTotal3},
};
// The fees guide changed its name after 3.00.01: each version takes its part of this table.
constexpr TGuiaNames kGuiasHonorarios3[] = {
    {"guiaHonorarioIndividual", kNumero3, "valorTotalHonorarios", kHonorarios3},
    {"guiaHonorarios", kNumero3, "valorTotalHonorarios", kHonorarios3},
};
constexpr std::span<const TGuiaNames> kHonorarios3Todos = kGuiasHonorarios3;
constexpr TGuiaNames kGuiasOdonto3[] = {
    {"guiaOdonto", "numeroGuiaPrestador", "valorTotalProc", kOdonto3},
};

constexpr TLoteGuiasNames Lote3(std::span<const TGuiaNames> honorarios) {
    return {.NumeroLote = "numeroLote",
            .GuiasTiss = "guiasTISS",
            .Guias = {kConsultas3, kSpSadts3, kInternacoes3, honorarios, kGuiasOdonto3}};
}

} // namespace

constexpr TLoteGuiasNames kLoteGuiasV2 = {
    .NumeroLote = "numeroLote",
    .GuiasTiss = "guias",
    .Grupos = kGrupos2,
    .Guias = {kConsultas2, kSpSadts2, kInternacoes2, kGuiasHonorarios2, kGuiasOdonto2}};
constexpr TLoteGuiasNames kLoteGuiasV3_00 = Lote3(kHonorarios3Todos.first(1));
constexpr TLoteGuiasNames kLoteGuiasV3_01 = Lote3(kHonorarios3Todos);
constexpr TLoteGuiasNames kLoteGuiasV3_02 = Lote3(kHonorarios3Todos.last(1));

} // namespace conferix
