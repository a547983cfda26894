// The rules about monitoring lots, in the order of the tree.
#include "rules/monitoring/monitoring_rules.h"

#include "rules/monitoring/campos_atendimento.h"
#include "rules/monitoring/campos_datas.h"
#include "rules/monitoring/campos_identificacao.h"
#include "rules/monitoring/campos_itens.h"
#include "rules/monitoring/campos_valores.h"
#include "rules/monitoring/lote_monitoramento_validation.h"

namespace conferix {

namespace {

// Groups, under which rules stand.
constexpr std::string_view kLote = "tiss.monitoramento.loteguias";
constexpr std::string_view kGuia = "tiss.monitoramento.loteguias.guia";
constexpr std::string_view kPrestador = "tiss.monitoramento.loteguias.guia.prestador";
constexpr std::string_view kBeneficiario = "tiss.monitoramento.loteguias.guia.beneficiario";
constexpr std::string_view kValores = "tiss.monitoramento.loteguias.guia.valores";
constexpr std::string_view kProcedimentos = "tiss.monitoramento.loteguias.guia.procedimentos";
constexpr std::string_view kPacote = "tiss.monitoramento.loteguias.guia.procedimentos.detalhepacote";

/// The name of a field's rule, whatever group holds it.
std::string Campo(std::string_view number) {
    return std::string(kGuia).append(".campo").append(number);
}

} // namespace

void AddMonitoringRules(TRuleTable& rules) {
    RULE(TLoteComMaisDeDezMilGuiasValidation, kLote, ".lotecommaisdedezmilguias",
         "Lote Com Mais de 10.000 Guias", kRequired, TLoteAteDezMilGuias);
    RULE(TGuiaMonitoramentoValidation, kLote, ".guia", "Guia de Monitoramento", kRequired,
         TGuiaDoLoteValidation);

    RULE(TCampo010Validation, kGuia, Campo("010"), "Versão TISS Utilizada pelo Prestador", kOptional,
         TCampoValidation, CheckVersaoPrestador);

    RULE(TPrestadorExecutanteValidation, kGuia, ".prestador", "Prestador Executante", kOptional,
         TGrupoCamposValidation);
    RULE(TCampo014Validation, kPrestador, Campo("014"), "CNPJ/CPF", kOptional, TCampoValidation,
         CheckDocumentoExecutante);
    RULE(TCampo015Validation, kPrestador, Campo("015"), "Código IBGE do Município de Localização", kOptional,
         TCampoValidation, CheckMunicipioExecutante);

    RULE(TDadosBeneficiarioValidation, kGuia, ".beneficiario", "Dados do Beneficiário", kOptional,
         TGrupoCamposValidation);
    RULE(TCampo016Validation, kBeneficiario, Campo("016"), "Número do Cartão Nacional de Saúde", kOptional,
         TCampoValidation, CheckCartaoNacionalSaude);
    RULE(TCampo017Validation, kBeneficiario, Campo("017"), "Sexo", kOptional, TCampoValidation, CheckSexo);
    RULE(TCampo018Validation, kBeneficiario, Campo("018"), "Data de Nascimento", kOptional, TCampoValidation,
         CheckDataNascimento);
    RULE(TCampo019Validation, kBeneficiario, Campo("019"), "Município de Residência", kOptional,
         TCampoValidation, CheckMunicipioResidencia);

    RULE(TCampo023Validation, kGuia, Campo("023"), "Número da Guia no Prestador", kOptional, TCampoValidation,
         TZerosNoReembolso{&TGuiaFields::NumeroGuiaPrestador,
                           "Quando a origem da guia for igual a 4 (reembolso), o campo número da guia no "
                           "prestador deve ser preenchido com \"00000000000000000000\" (20 zeros)."});
    RULE(TCampo024Validation, kGuia, Campo("024"), "Número da Guia na Operadora", kOptional, TCampoValidation,
         TZerosNoReembolso{&TGuiaFields::NumeroGuiaOperadora,
                           "Quando a origem da guia for igual a 4 (reembolso), o campo número da guia na "
                           "operadora deve ser preenchido com \"00000000000000000000\" (20 zeros)."});
    RULE(TCampo025Validation, kGuia, Campo("025"), "Identificação do Reembolso", kOptional, TCampoValidation,
         CheckIdentificacaoReembolso);
    RULE(TCampo029Validation, kGuia, Campo("029"), "Data de Realização", kOptional, TCampoValidation,
         TDataAnterior{&TGuiaFields::DataRealizacao, "A data de realização deve ser anterior à data atual."});
    RULE(TCampo030Validation, kGuia, Campo("030"), "Data de Início do Faturamento", kOptional,
         TCampoValidation,
         TDataAnterior{&TGuiaFields::DataInicialFaturamento,
                       "A data de início do faturamento deve ser anterior à data atual."});
    RULE(TCampo031Validation, kGuia, Campo("031"), "Data Final do Período", kOptional, TCampoValidation,
         TDataAnterior{&TGuiaFields::DataFimPeriodo,
                       "A data final do período deve ser anterior à data atual.",
                       &TGuiaFields::DataInicialFaturamento,
                       "A data final do período deve ser maior ou igual à data de início do faturamento."});
    RULE(TCampo032Validation, kGuia, Campo("032"), "Data do Protocolo da Cobrança", kOptional,
         TCampoValidation,
         TDataAnterior{&TGuiaFields::DataProtocoloCobranca,
                       "A data do protocolo da cobrança deve ser anterior à data atual.",
                       &TGuiaFields::DataRealizacao,
                       "A data do protocolo da cobrança deve ser maior ou igual à data de realização."});
    RULE(TCampo033Validation, kGuia, Campo("033"), "Data do Pagamento", kOptional, TCampoValidation,
         TDataAnterior{&TGuiaFields::DataPagamento, "A data do pagamento deve ser anterior à data atual.",
                       &TGuiaFields::DataProtocoloCobranca,
                       "A data do pagamento deve ser maior ou igual à data do protocolo de cobrança."});
    RULE(TCampo080Validation, kGuia, Campo("080"), "Data do Processamento da Guia", kOptional,
         TCampoValidation, CheckDataProcessamento);
    RULE(TCampo034Validation, kGuia, Campo("034"), "Tipo de Consulta", kOptional, TCampoValidation,
         TCampoDeTiposDeGuia{.Campo = &TGuiaFields::TipoConsulta,
                             .Allowed = "12",
                             .Demanded = "1",
                             .AllowedName = "O tipo da consulta",
                             .AbsentName = "Tipo de consulta",
                             .DemandedName = "O tipo da consulta",
                             .Kinds = "1 (Consulta) ou 2 (SP/SADT)"});
    RULE(TCampo038Validation, kGuia, Campo("038"), "Caráter do Atendimento", kOptional, TCampoValidation,
         TCampoDeTiposDeGuia{.Campo = &TGuiaFields::CaraterAtendimento,
                             .Allowed = "23",
                             .Demanded = "23",
                             .AllowedName = "O caráter do atendimento",
                             .AbsentName = "Caráter do atendimento",
                             .DemandedName = "O caráter do atendimento",
                             .Kinds = "2 (SP/SADT) ou 3 (Internação)"});
    RULE(TCampo039Validation, kGuia, Campo("039"), "Tipo de Internaçao", kOptional, TCampoValidation,
         TCampoDeTiposDeGuia{.Campo = &TGuiaFields::TipoInternacao,
                             .Allowed = "3",
                             .Demanded = "3",
                             .AllowedName = "O tipo de internação",
                             .AbsentName = "Tipo de internação",
                             .DemandedName = "O tipo de internação",
                             .Kinds = "3 (Internação)",
                             .ShortDemand = true});
    RULE(TCampo040Validation, kGuia, Campo("040"), "Regime de Internação", kOptional, TCampoValidation,
         TCampoDeTiposDeGuia{.Campo = &TGuiaFields::RegimeInternacao,
                             .Allowed = "3",
                             .Demanded = "3",
                             .AllowedName = "O regime de internação",
                             .AbsentName = "Regime de internação",
                             .DemandedName = "O regime de internação",
                             .Kinds = "3 (Internação)",
                             .ShortDemand = true});
    RULE(TCampo045Validation, kGuia, Campo("045"), "Tipo de Atendimento", kOptional, TCampoValidation,
         TCampoDeTiposDeGuia{.Campo = &TGuiaFields::TipoAtendimento,
                             .Allowed = "2",
                             .Demanded = "2",
                             .AllowedName = "O tipo de atendimento",
                             .AbsentName = "Tipo de atendimento",
                             .DemandedName = "O tipo de atendimento",
                             .Kinds = "2 (SP/SADT)",
                             .ShortDemand = true});
    RULE(TCampo046Validation, kGuia, Campo("046"), "Tipo de Faturamento", kOptional, TCampoValidation,
         TCampoDeTiposDeGuia{.Campo = &TGuiaFields::TipoFaturamento,
                             .Allowed = "34",
                             .Demanded = "34",
                             .ReembolsoExempt = false,
                             .AllowedName = "O tipo de faturamento",
                             .AbsentName = "Tipo de faturamento",
                             .DemandedName = "O tipo de faturamento",
                             .Kinds = "3 (Internação) ou 4 (Odonto)",
                             .ShortDemand = true});
    RULE(TCampo049Validation, kGuia, Campo("049"), "Motivo de Encerramento", kOptional, TCampoValidation,
         TCampoDeTiposDeGuia{.Campo = &TGuiaFields::MotivoSaida,
                             .Allowed = "23",
                             .Demanded = "3",
                             .AllowedName = "O motivo do encerramento do atendimento",
                             .AbsentName = "Motivo de encerramento do atendimento",
                             .DemandedName = "O motivo de encerramento",
                             .Kinds = "2 (SP/SADT) ou 3 (Internação)",
                             .ShortDemand = true});

    RULE(TValoresDaGuiaValidation, kGuia, ".valores", "Valores da Guia", kOptional, TGrupoCamposValidation);
    RULE(TCampo050Validation, kValores, Campo("050"), "Valor Informado", kOptional, TCampoValidation,
         TSomaDosItens{
             &TGuiaFields::ValorTotalInformado, &TItemFields::ValorInformado,
             "O valor total informado da guia deve ser igual à soma dos valores informados de procedimentos "
             "ou itens assistenciais. O valor {} foi encontrado, porém o esperado é {}."});
    RULE(TCampo051Validation, kValores, Campo("051"), "Valor Processado", kOptional, TCampoValidation,
         TTotalNaoNegativo{&TGuiaFields::ValorProcessado,
                           "O valor total processado pela operadora deve ser igual ou maior que zero. Porém "
                           "o valor {} foi encontrado."});
    RULE(TCampo052Validation, kValores, Campo("052"), "Valor Total Pago de Procedimentos", kOptional,
         TCampoValidation,
         TTotalNaoNegativo{&TGuiaFields::ValorTotalPagoProcedimentos,
                           "O valor total pago de procedimentos deve ser igual ou maior que zero. Porém o "
                           "valor {} foi encontrado."});
    RULE(TCampo053Validation, kValores, Campo("053"), "Valor Total Pago de Diárias", kOptional,
         TCampoValidation,
         TTotalNaoNegativo{&TGuiaFields::ValorTotalDiarias,
                           "O valor total pago de diárias deve ser igual ou maior que zero. Porém o valor {} "
                           "foi encontrado."});
    RULE(TCampo054Validation, kValores, Campo("054"), "Valor Total Pago de Taxas e Aluguéis", kOptional,
         TCampoValidation,
         TTotalNaoNegativo{&TGuiaFields::ValorTotalTaxas,
                           "O valor total pago de taxas e aluguéis deve ser igual ou maior que zero. Porém o "
                           "valor {} foi encontrado."});
    RULE(TCampo055Validation, kValores, Campo("055"), "Valor Total Pago de Materiais", kOptional,
         TCampoValidation,
         TTotalNaoNegativo{&TGuiaFields::ValorTotalMateriais,
                           "O valor total pago de materiais deve ser igual ou maior que zero. Porém o valor "
                           "{} foi encontrado."});
    RULE(
        TCampo056Validation, kValores, Campo("056"), "Valor Total Pago de OPME", kOptional, TCampoValidation,
        TTotalNaoNegativo{
            &TGuiaFields::ValorTotalOPME,
            "O valor total pago de OPME deve ser igual ou maior que zero. Porém o valor {} foi encontrado."});
    RULE(TCampo057Validation, kValores, Campo("057"), "Valor Total Pago de Medicamentos", kOptional,
         TCampoValidation,
         TTotalNaoNegativo{&TGuiaFields::ValorTotalMedicamentos,
                           "O valor total pago de medicamentos deve ser igual ou maior que zero. Porém o "
                           "valor {} foi encontrado."});
    RULE(TCampo058Validation, kValores, Campo("058"), "Valor Total de Glosa", kOptional, TCampoValidation,
         TTotalNaoNegativo{
             &TGuiaFields::ValorGlosaGuia,
             "O valor total de glosa deve ser igual ou maior que zero. Porém o valor {} foi encontrado."});
    RULE(TCampo059Validation, kValores, Campo("059"), "Valor Total Pago", kOptional, TCampoValidation,
         CheckValorPagoGuia);
    RULE(TCampo060Validation, kValores, Campo("060"), "Valor Total Pago Diretamente aos Fornecedores",
         kOptional, TCampoValidation,
         TSomaDosItens{&TGuiaFields::ValorPagoFornecedores, &TItemFields::ValorPagoFornecedor,
                       "O valor total pago diretamente aos fornecedores deve ser igual à soma do campo Valor "
                       "pago diretamente ao fornecedor (campo 074) dos procedimentos ou itens assistenciais "
                       "do mesmo lançamento. O valor {} foi encontrado, porém o esperado é {}."});
    RULE(TCampo061Validation, kValores, Campo("061"), "Valor Total Pago em Tabela Própria da Operadora",
         kOptional, TCampoValidation,
         TTotalNaoNegativo{&TGuiaFields::ValorTotalTabelaPropria,
                           "O valor total pago em tabela própria da operadora deve ser igual ou maior que "
                           "zero. Porém o valor {} foi encontrado."});
    RULE(TCampo084Validation, kValores, Campo("084"), "Valor Total de Coparticipação", kOptional,
         TCampoValidation,
         TSomaDosItens{&TGuiaFields::ValorTotalCoParticipacao, &TItemFields::ValorCoParticipacao,
                       "O valor total de coparticipação deve ser igual à soma do valor de coparticipação "
                       "(campo 085) dos procedimentos ou itens assistenciais do mesmo lançamento. O valor {} "
                       "foi encontrado, porém o esperado é {}."});

    RULE(TProcedimentosValidation, kGuia, ".procedimentos", "Procedimentos e Itens Assistenciais", kOptional,
         TGrupoCamposValidation);
    RULE(TCampo064Validation, kProcedimentos, Campo("064"), "Código da Tabela de Referência", kOptional,
         TCampoValidation, CheckCodigoTabela);
    RULE(TCampo065Validation, kProcedimentos, Campo("065"), "Código do Grupo", kOptional, TCampoValidation,
         TGrupoProcedimento{});
    RULE(TCampo066Validation, kProcedimentos, Campo("066"), "Código do Procedimento", kOptional,
         TCampoValidation, TCodigoProcedimento{});
    RULE(TCampo070Validation, kProcedimentos, Campo("070"), "Quantidade Informada", kOptional,
         TCampoValidation,
         TNumeroDeItem{&TItemFields::QuantidadeInformada, false,
                       "O valor da quantidade informada de procedimentos deve ser maior que zero. Porém o "
                       "valor {} foi encontrado."});
    RULE(TCampo071Validation, kProcedimentos, Campo("071"), "Valor Informado", kOptional, TCampoValidation,
         TNumeroDeItem{&TItemFields::ValorInformado, true,
                       "O valor informado do procedimento deve ser maior ou igual a zero. Porém o valor {} "
                       "foi encontrado."});
    RULE(TCampo072Validation, kProcedimentos, Campo("072"), "Quantidade Paga", kOptional, TCampoValidation,
         TNumeroDeItem{&TItemFields::QuantidadePaga, true,
                       "A quantidade paga de procedimentos deve ser maior ou igual a zero. Porém o valor {} "
                       "foi encontrado."});
    RULE(
        TCampo073Validation, kProcedimentos, Campo("073"), "Valor Pago", kOptional, TCampoValidation,
        TNumeroDeItem{
            &TItemFields::ValorPagoProc, true,
            "O valor pago do procedimento deve ser maior ou igual a zero. Porém o valor {} foi encontrado."});
    RULE(TCampo074Validation, kProcedimentos, Campo("074"), "Valor Pago Diretamente ao Fornecedor", kOptional,
         TCampoValidation,
         TNumeroDeItem{&TItemFields::ValorPagoFornecedor, true,
                       "O valor pago diretamente ao fornecedor deve ser maior ou igual a zero. Porém o valor "
                       "{} foi encontrado."});
    RULE(TCampo075Validation, kProcedimentos, Campo("075"), "CNPJ do Fornecedor", kOptional, TCampoValidation,
         CheckCnpjFornecedor);
    RULE(TCampo085Validation, kProcedimentos, Campo("085"), "Valor Coparticipação", kOptional,
         TCampoValidation,
         TNumeroDeItem{
             &TItemFields::ValorCoParticipacao, true,
             "O valor da coparticipação deve ser maior ou igual a zero. Porém o valor {} foi encontrado."});

    RULE(TDetalhePacoteValidation, kProcedimentos, ".detalhepacote", "Pacote", kOptional,
         TGrupoCamposValidation);
    RULE(TCampo077Validation, kPacote, Campo("077"), "Código da Tabela", kOptional, TCampoValidation,
         CheckPacoteTabela);
    RULE(TCampo078Validation, kPacote, Campo("078"), "Código do Procedimento", kOptional, TCampoValidation,
         TPacoteProcedimento{});
    RULE(TCampo079Validation, kPacote, Campo("079"), "Quantidade Paga", kOptional, TCampoValidation,
         CheckPacoteQuantidade);
}

} // namespace conferix
