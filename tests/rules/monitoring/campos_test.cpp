#include "rules/monitoring/guia_de_teste.h"

#include <fmt/format.h>

namespace conferix {

using namespace testes;

namespace {

using testing::ElementsAreArray;

struct TCase {
    TEdits edits;
    std::vector<std::string> findings;
    TEdits headerEdits = {};
};

void Expect(const std::vector<TCase>& cases) {
    for (const TCase& c : cases) {
        std::string trace;
        for (const auto& [what, with] : c.edits)
            trace += what + " => " + with + "; ";
        SCOPED_TRACE(trace);
        EXPECT_THAT(FindingsOf(c.edits, c.headerEdits), ElementsAreArray(c.findings));
    }
}

// What an edit looks for.
const std::string kOrigem = "origemEventoAtencao=1";
const std::string kTipo = "tipoEventoAtencao=2";
const std::string kVersao = "versaoTISSPrestador=016 ";
const std::string kPrestador = "numeroGuia_prestador=123";
const std::string kOperadora = "numeroGuia_operadora=456";
const std::string kReembolso = "identificacaoReembolso=00000000000000000000";
const std::string kCartao = "numeroCartaoNacionalSaude=700000000000005 ";
const std::string kZeros(20, '0');

/// Edits that make the guide a right reimbursement.
TEdits Reembolso(TEdits further = {}) {
    TEdits edits = {{kOrigem, "origemEventoAtencao=4"},
                    {kPrestador, "numeroGuia_prestador=" + kZeros},
                    {kOperadora, "numeroGuia_operadora=" + kZeros},
                    {kReembolso, "identificacaoReembolso=77"}};
    edits.insert(edits.end(), further.begin(), further.end());
    return edits;
}

TEST(CamposMonitoramento, AGuideWithoutFaultsHasNoFindings) {
    Expect({{{}, {}}, {Reembolso(), {}}});
}

TEST(CamposMonitoramento, PrestadorEBeneficiario) {
    const std::string k010 =
        "010 A versão TISS utilizada pelo prestador não foi informada, conforme tabela de domínio nº 69. ";
    const std::string kCnpj = "014 O CNPJ informado do prestador executante está inválido.";
    const std::string kCpf = "014 O CPF informado do prestador executante está inválido.";
    const std::string k015 =
        "015 O código IBGE do município de localização do prestador executante está inválido.";
    const std::string k018 = "018 A data de nascimento do beneficiário deve ser menor ou igual à data de "
                             "realização do procedimento.";
    const std::string k019 = "019 O código IBGE do município de residência do beneficiário está inválido.";
    const std::string kNumero = "identificadorExecutante=1 codigoCNPJ_CPF=11222333000181";
    const std::string kMunicipio = "municipioExecutante=3550308";
    const std::string kNascimento = "dataNascimento=1980-01-01";
    const std::string kResidencia = "municipioResidencia=310620";
    Expect({
        {{{kVersao, ""}}, {k010}},
        {{{kVersao, ""}, {kOrigem, ""}}, {}},
        {Reembolso({{kVersao, ""}}), {}},
        {{{kVersao, ""}, {kOrigem, "origemEventoAtencao=5"}}, {k010}},

        {{{kNumero, "identificadorExecutante=1 codigoCNPJ_CPF=11222333000180"}}, {kCnpj}},
        {{{kNumero, "identificadorExecutante=2 codigoCNPJ_CPF=52998224725"}}, {}},
        {{{kNumero, "identificadorExecutante=2 codigoCNPJ_CPF=11222333000181"}}, {kCpf}},
        {{{kNumero, "identificadorExecutante=1 codigoCNPJ_CPF="}}, {kCnpj}},
        {{{kNumero, "identificadorExecutante=3 codigoCNPJ_CPF=1"}}, {}},
        {{{kNumero, "codigoCNPJ_CPF=1"}}, {}},
        {{{kNumero, "identificadorExecutante=1"}}, {}},

        {{{kMunicipio, "municipioExecutante=355030"}}, {}},
        {{{kMunicipio, "municipioExecutante=355031"}}, {k015}},
        {{{kMunicipio, "municipioExecutante=35503080"}}, {k015}},
        {{{kMunicipio, "municipioExecutante="}}, {k015}},
        {{{kMunicipio, ""}}, {}},

        {{{kCartao, "numeroCartaoNacionalSaude=700000000000006 "}},
         {"016 O número do cartão nacional de saúde \"700000000000006\" está inválido."}},
        {{{kCartao, "numeroCartaoNacionalSaude= "}},
         {"016 O número do cartão nacional de saúde \"\" está inválido."}},
        // No version before 3.00.00 demands more of a beneficiary without a card.
        {{{kCartao, ""}, {"sexo=1", ""}, {kNascimento, ""}, {kResidencia, ""}}, {}},
        {{{kNascimento, "dataNascimento=2022-12-10"}}, {}},
        {{{kNascimento, "dataNascimento=2022-12-11"}}, {k018}},
        {{{kNascimento, "dataNascimento=2022-12-11"}, {"dataRealizacao=2022-12-10", ""}}, {}},
        {{{kResidencia, "municipioResidencia=3106200"}}, {}},
        {{{kResidencia, "municipioResidencia=310621"}}, {k019}},
    });
}

TEST(CamposMonitoramento, ABeneficiaryWithoutCardIsDescribedFromVersion300On) {
    const std::string kCaso = "Caso o cartão nacional de saúde não seja informado, é necessário informar ";
    const std::vector<std::string> demanded = {"017 " + kCaso + "o sexo do beneficiário.",
                                               "018 " + kCaso + "a data de nascimento do beneficiário.",
                                               "019 " + kCaso + "o município de residência do beneficiário."};
    const TEdits bare = {{"sexo=1 dataNascimento=1980-01-01 municipioResidencia=310620", ""}};
    TEdits withoutCard = bare;
    withoutCard.emplace_back(kCartao, "");
    const struct {
        const char* version;
        TEdits edits;
        std::vector<std::string> findings;
    } cases[] = {
        {"3.00.00", withoutCard, demanded}, {"3.00.01", withoutCard, demanded},
        {"2.99.99", withoutCard, {}},       {"3.00.00", bare, {}},
        {"3.00.00", {{kCartao, ""}}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.version);
        const auto arquivo = ArquivoMonitoramento("", Xml(Edited(kGuia, c.edits)));
        const TMonitoramentoContextPtr context = NewMonitoramentoContext(arquivo, Terminologia());
        context->VersaoTiss = c.version;
        const auto rule = MakeValidation<TDadosBeneficiarioValidation>(context);
        arquivo->Lote().GuiasMonitoramento().Get(0).Accept(*rule);
        EXPECT_THAT(Findings(rule->ValidationMessages()), ElementsAreArray(c.findings));
    }
}

TEST(CamposMonitoramento, NumerosDaGuia) {
    const std::string k023 =
        "023 Quando a origem da guia for igual a 4 (reembolso), o campo número da guia no prestador deve "
        "ser preenchido com \"00000000000000000000\" (20 zeros)." +
        (" -> " + kZeros);
    const std::string k024 =
        "024 Quando a origem da guia for igual a 4 (reembolso), o campo número da guia na operadora deve "
        "ser preenchido com \"00000000000000000000\" (20 zeros)." +
        (" -> " + kZeros);
    const std::string k025Zeros = "025 Quando a origem da conta for igual a 1 (Rede contratada, referenciada "
                                  "ou credenciada), 2 (Rede própria - "
                                  "cooperados) ou 3 (Rede própria - demais prestadores), o campo "
                                  "identificação do reembolso deve ser preenchido "
                                  "com \"00000000000000000000\" (20 zeros)." +
                                  (" -> " + kZeros);
    const std::string k025Reembolso =
        "025 Quando a origem da conta for igual a 4 (Reembolso), o campo identificação do "
        "reembolso deve ser diferente de \"00000000000000000000\" (20 zeros).";
    const std::string kDezenove(19, '0');
    Expect({
        {{{kOrigem, "origemEventoAtencao=4"}}, {k023, k024, k025Reembolso}},
        {{{kOrigem, "origemEventoAtencao=4"}, {kPrestador, ""}, {kOperadora, ""}, {kReembolso, ""}}, {}},
        {{{kOrigem, "origemEventoAtencao=4"},
          {kPrestador, "numeroGuia_prestador=" + kDezenove},
          {kOperadora, "numeroGuia_operadora=" + kZeros + "0"},
          {kReembolso, "identificacaoReembolso=" + kDezenove}},
         {k023, k024}},
        {{{kPrestador, "numeroGuia_prestador=" + kZeros}, {kOperadora, "numeroGuia_operadora=" + kZeros}},
         {}},
        {{{kReembolso, "identificacaoReembolso=" + kDezenove}}, {k025Zeros}},
        {{{kReembolso, "identificacaoReembolso=77"}, {kOrigem, "origemEventoAtencao=9"}}, {k025Zeros}},
        {{{kReembolso, "identificacaoReembolso=77"}, {kOrigem, ""}}, {}},
    });
    // An empty element has no value that a correction could replace.
    EXPECT_THAT(FindingsOf({{kReembolso, "identificacaoReembolso="}}),
                testing::ElementsAre(k025Zeros.substr(0, k025Zeros.find(" -> "))));
}

TEST(CamposMonitoramento, Datas) {
    const std::string k029 = "029 A data de realização deve ser anterior à data atual.";
    const std::string k030 = "030 A data de início do faturamento deve ser anterior à data atual.";
    const std::string k031 = "031 A data final do período deve ser anterior à data atual.";
    const std::string k031Order =
        "031 A data final do período deve ser maior ou igual à data de início do faturamento.";
    const std::string k032 = "032 A data do protocolo da cobrança deve ser anterior à data atual.";
    const std::string k032Order =
        "032 A data do protocolo da cobrança deve ser maior ou igual à data de realização.";
    const std::string k033 = "033 A data do pagamento deve ser anterior à data atual.";
    const std::string k033Order =
        "033 A data do pagamento deve ser maior ou igual à data do protocolo de cobrança.";
    const std::string k080 = "080 A data do processamento da guia deve ser anterior à data atual.";
    const std::string k080Month = "080 Quando o indicador do tipo de registro for igual a 1 (inclusão), o "
                                  "mês e o ano da data de processamento "
                                  "devem ser iguais ao mês e ao ano da competência dos dados.";
    const std::string kRealizacao = "dataRealizacao=2022-12-10";
    const std::string kInicio = "dataInicialFaturamento=2022-12-01";
    const std::string kFim = "dataFimPeriodo=2022-12-20";
    const std::string kProtocolo = "dataProtocoloCobranca=2022-12-21";
    const std::string kPagamento = "dataPagamento=2023-01-10";
    const std::string kProcessamento = "dataProcessamentoGuia=2023-01-12";
    const std::string kRegistro = "dataRegistroTransacao=2023-01-31";
    Expect({
        {{{kRealizacao, "dataRealizacao=2023-01-31"}}, {k029, k032Order}},
        {{{kRealizacao, "dataRealizacao=2022-12-21"}}, {}},
        {{{kRealizacao, "dataRealizacao=2022-13-01"}}, {}},
        {{{kInicio, "dataInicialFaturamento=2023-01-31"}, {kFim, ""}}, {k030}},
        {{{kInicio, "dataInicialFaturamento=2022-12-20"}}, {}},
        {{{kInicio, "dataInicialFaturamento=2022-12-21"}}, {k031Order}},
        {{{kFim, "dataFimPeriodo=2023-02-01Z"}}, {k031}},
        {{{kFim, "dataFimPeriodo=2023-01-30"}}, {}},
        {{{kFim, "dataFimPeriodo=2022-11-30"}, {kInicio, ""}}, {}},
        {{{kInicio, "dataInicialFaturamento=2023-02-02"}, {kFim, "dataFimPeriodo=2023-02-01"}},
         {k030, k031, k031Order}},
        {{{kProtocolo, "dataProtocoloCobranca=2022-12-10"}}, {}},
        {{{kProtocolo, "dataProtocoloCobranca=2022-12-09"}}, {k032Order}},
        {{{kProtocolo, "dataProtocoloCobranca=2022-12-09"}, {kRealizacao, ""}}, {}},
        {{{kProtocolo, "dataProtocoloCobranca=2023-01-31"}, {kPagamento, ""}}, {k032}},
        {{{kPagamento, "dataPagamento=2022-12-21"}}, {}},
        {{{kPagamento, "dataPagamento=2022-12-20"}}, {k033Order}},
        {{{kPagamento, "dataPagamento=2023-01-31"}}, {k033}},
        {{{kProcessamento, "dataProcessamentoGuia=2023-01-31"}}, {k080}},
        {{{kProcessamento, "dataProcessamentoGuia=2022-12-31"}}, {k080Month}},
        {{{kProcessamento, "dataProcessamentoGuia=2023-02-01"}}, {k080, k080Month}},
        {{{kProcessamento, "dataProcessamentoGuia=2022-12-31"}, {"tipoRegistro=1", "tipoRegistro=2"}}, {}},
        {{{kProcessamento, "dataProcessamentoGuia=2022-12-31"}, {"tipoRegistro=1", ""}}, {}},
        {{{kProcessamento, "dataProcessamentoGuia=2022-12-31"}}, {}, {{"competenciaLote=202301 ", ""}}},
        {{}, {k080Month}, {{"202301", "2023-1"}}},
        // The reference is the day of the header; a day of the future is late without one, too.
        {{}, {}, {{kRegistro, "dataRegistroTransacao=2023-01-13"}}},
        {{}, {k080}, {{kRegistro, "dataRegistroTransacao=2023-01-12"}}},
        {{}, {}, {{kRegistro, ""}}},
        {{}, {}, {{kRegistro, "dataRegistroTransacao=31/12/2022"}}},
        {{{kPagamento, "dataPagamento=9999-12-31"}}, {k033}, {{kRegistro, ""}}},
    });
}

/// A row of the fields that belong to some kinds of guide.
struct TTipoCase {
    std::string campo;
    std::string elemento;
    std::string allowed;  ///< kinds that may carry it
    std::string demanded; ///< kinds that have to
    bool reembolsoExempt;
    std::string misplaced; ///< texts, without the field number
    std::string missing;
};

TEST(CamposMonitoramento, CamposDeCadaTipoDeGuia) {
    const std::string kOrigens =
        " e a origem da guia for igual a 1 (rede contratada, referenciada ou credenciada), 2 (rede própria - "
        "cooperados) ou 3 (rede própria - demais prestadores).";
    const TTipoCase rows[] = {
        {"034", "tipoConsulta=1", "12", "1", true,
         "O tipo da consulta só deverá ser informado quando o tipo da guia for igual a 1 (Consulta) ou 2 "
         "(SP/SADT)",
         "Tipo de consulta não informado. O tipo da consulta deverá ser informado quando o tipo da guia for "
         "igual a 1 "
         "(Consulta) ou 2 (SP/SADT)"},
        {"038", "caraterAtendimento=1", "23", "23", true,
         "O caráter do atendimento só deverá ser informado quando o tipo da guia for igual a 2 (SP/SADT) ou "
         "3 "
         "(Internação)",
         "Caráter do atendimento não informado. O caráter do atendimento deverá ser informado quando o tipo "
         "da guia for "
         "igual a 2 (SP/SADT) ou 3 (Internação)"},
        {"039", "tipoInternacao=1", "3", "3", true,
         "O tipo de internação só deverá ser informado quando o tipo da guia for igual a 3 (Internação)",
         "Tipo de internação não informado. O tipo de internação deverá ser informado quando o tipo da guia "
         "for 3 "
         "(Internação)"},
        {"040", "regimeInternacao=1", "3", "3", true,
         "O regime de internação só deverá ser informado quando o tipo da guia for igual a 3 (Internação)",
         "Regime de internação não informado. O regime de internação deverá ser informado quando o tipo da "
         "guia for 3 "
         "(Internação)"},
        {"045", "tipoAtendimento=05", "2", "2", true,
         "O tipo de atendimento só deverá ser informado quando o tipo da guia for igual a 2 (SP/SADT)",
         "Tipo de atendimento não informado. O tipo de atendimento deverá ser informado quando o tipo da "
         "guia for 2 "
         "(SP/SADT)"},
        {"046", "tipoFaturamento=1", "34", "34", false,
         "O tipo de faturamento só deverá ser informado quando o tipo da guia for igual a 3 (Internação) ou "
         "4 (Odonto)",
         "Tipo de faturamento não informado. O tipo de faturamento deverá ser informado quando o tipo da "
         "guia for 3 "
         "(Internação) ou 4 (Odonto)"},
        {"049", "motivoSaida=11", "23", "3", true,
         "O motivo do encerramento do atendimento só deverá ser informado quando o tipo da guia for igual a "
         "2 (SP/SADT) "
         "ou 3 (Internação)",
         "Motivo de encerramento do atendimento não informado. O motivo de encerramento deverá ser informado "
         "quando o "
         "tipo da guia for 2 (SP/SADT) ou 3 (Internação)"},
    };
    const auto contains = [](const std::string& kinds, const std::string& kind) {
        return kind.size() == 1 && kinds.find(kind) != std::string::npos;
    };
    for (const std::string kind : {"1", "2", "3", "4", "5", "12", ""})
        for (const std::string origin : {"1", "2", "3", "4", "5", "9", ""})
            for (const bool present : {false, true}) {
                SCOPED_TRACE(fmt::format("tipo {}, origem {}, {}", kind, origin, present ? "com" : "sem"));
                std::string fields;
                std::vector<std::string> expected;
                for (const TTipoCase& row : rows) {
                    if (present)
                        fields += row.elemento + " ";
                    if (kind.empty() || origin.empty())
                        continue;
                    if (present && !contains(row.allowed, kind))
                        expected.push_back(row.campo + " " + row.misplaced + kOrigens);
                    if (!present && contains(row.demanded, kind) && !(row.reembolsoExempt && origin == "4"))
                        expected.push_back(row.campo + " " + row.missing + kOrigens);
                }
                TEdits edits = {{"caraterAtendimento=1 tipoAtendimento=05 ", fields},
                                {kTipo, kind.empty() ? "" : "tipoEventoAtencao=" + kind},
                                {kOrigem, origin.empty() ? "" : "origemEventoAtencao=" + origin}};
                if (origin == "4")
                    for (const auto& edit : Reembolso())
                        if (edit.first != kOrigem)
                            edits.push_back(edit);
                EXPECT_THAT(FindingsOf(edits), ElementsAreArray(expected));
            }
}

} // namespace
} // namespace conferix
