#include "rules/monitoring/guia_de_teste.h"

#include <fmt/format.h>

namespace conferix {

using namespace testes;

namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;

struct TCase {
    TEdits edits;
    std::vector<std::string> findings;
};

void Expect(const std::vector<TCase>& cases) {
    for (const TCase& c : cases) {
        std::string trace;
        for (const auto& [what, with] : c.edits)
            trace += what + " => " + with + "; ";
        SCOPED_TRACE(trace);
        EXPECT_THAT(FindingsOf(c.edits), ElementsAreArray(c.findings));
    }
}

// What an edit looks for: the three items and pieces of them.
const std::string kItem1 = "identProcedimento(codigoTabela=22 Procedimento(codigoProcedimento=10101012)) ";
const std::string kItem2 = "identProcedimento(codigoTabela=63 Procedimento(grupoProcedimento=009)) ";
const std::string kItem3 = "identProcedimento(codigoTabela=90 Procedimento(codigoProcedimento=777)) ";
const std::string kComponent1 = "detalhePacote(codigoTabela=20 codigoProcedimento=31005497 quantidade=1)";
const std::string kComponent2 = "detalhePacote(codigoTabela=00 codigoProcedimento=31005497 quantidade=2)";
const std::string kRealizacao = "dataRealizacao=2022-12-10";

std::string Item(const std::string& table, const std::string& code) {
    return fmt::format("identProcedimento(codigoTabela={} Procedimento(codigoProcedimento={})) ", table,
                       code);
}

std::string Grupo(const std::string& table, const std::string& group) {
    return fmt::format("identProcedimento(codigoTabela={} Procedimento(grupoProcedimento={})) ", table,
                       group);
}

std::string Component(const std::string& table, const std::string& code, const std::string& quantity = "1") {
    return fmt::format("detalhePacote(codigoTabela={} codigoProcedimento={} quantidade={})", table, code,
                       quantity);
}

/// The same case for each field that has a lower bound.
struct TBoundCase {
    std::string element; ///< as it stands in the guide
    std::string name;
    std::string finding; ///< with {} for the value
};

TEST(CamposMonitoramento, ValoresNaoNegativos) {
    const TBoundCase cases[] = {
        {"valorProcessado=99.00", "valorProcessado",
         "051 O valor total processado pela operadora deve ser igual ou maior que zero. Porém o valor {} foi "
         "encontrado."},
        {"valorTotalPagoProcedimentos=50.00", "valorTotalPagoProcedimentos",
         "052 O valor total pago de procedimentos deve ser igual ou maior que zero. Porém o valor {} foi "
         "encontrado."},
        {"valorTotalDiarias=15.00", "valorTotalDiarias",
         "053 O valor total pago de diárias deve ser igual ou maior que zero. Porém o valor {} foi "
         "encontrado."},
        {"valorTotalTaxas=9.00", "valorTotalTaxas",
         "054 O valor total pago de taxas e aluguéis deve ser igual ou maior que zero. Porém o valor {} foi "
         "encontrado."},
        {"valorTotalMateriais=8.00", "valorTotalMateriais",
         "055 O valor total pago de materiais deve ser igual ou maior que zero. Porém o valor {} foi "
         "encontrado."},
        {"valorTotalOPME=7.00", "valorTotalOPME",
         "056 O valor total pago de OPME deve ser igual ou maior que zero. Porém o valor {} foi encontrado."},
        {"valorTotalMedicamentos=6.00", "valorTotalMedicamentos",
         "057 O valor total pago de medicamentos deve ser igual ou maior que zero. Porém o valor {} foi "
         "encontrado."},
        {"valorGlosaGuia=5.00", "valorGlosaGuia",
         "058 O valor total de glosa deve ser igual ou maior que zero. Porém o valor {} foi encontrado."},
        {"valorTotalTabelaPropria=1.00", "valorTotalTabelaPropria",
         "061 O valor total pago em tabela própria da operadora deve ser igual ou maior que zero. Porém o "
         "valor {} foi "
         "encontrado."},
        {"quantidadePaga=2", "quantidadePaga",
         "072 A quantidade paga de procedimentos deve ser maior ou igual a zero. Porém o valor {} foi "
         "encontrado."},
        {"valorInformado=33.34", "valorInformado",
         "071 O valor informado do procedimento deve ser maior ou igual a zero. Porém o valor {} foi "
         "encontrado."},
        {"valorPagoProc=31.00", "valorPagoProc",
         "073 O valor pago do procedimento deve ser maior ou igual a zero. Porém o valor {} foi encontrado."},
        {"valorPagoFornecedor=2.00", "valorPagoFornecedor",
         "074 O valor pago diretamente ao fornecedor deve ser maior ou igual a zero. Porém o valor {} foi "
         "encontrado."},
        {"valorCoParticipacao=0.20", "valorCoParticipacao",
         "085 O valor da coparticipação deve ser maior ou igual a zero. Porém o valor {} foi encontrado."},
        {"quantidade=2", "quantidade",
         "079 A quantidade do procedimento ou item assistencial que compõe o pacote deve ser maior ou igual "
         "a zero. "
         "Porém o valor {} foi encontrado."},
    };
    for (const TBoundCase& c : cases) {
        SCOPED_TRACE(c.name);
        const std::string field = c.finding.substr(0, 3);
        // A change of a value also changes the sums that it belongs to; only the field itself is looked at.
        const auto ofField = [&](const std::string& value) {
            std::vector<std::string> found;
            for (const std::string& line : FindingsOf({{c.element, c.name + "=" + value}}))
                if (line.starts_with(field))
                    found.push_back(line);
            return found;
        };
        EXPECT_THAT(ofField("-1234.50"),
                    testing::ElementsAre(fmt::format(fmt::runtime(c.finding), "-1234.50")));
        EXPECT_THAT(ofField("-0.01"), testing::ElementsAre(fmt::format(fmt::runtime(c.finding), "-0.01")));
        for (const char* good : {"0", "-0.00", "0.01", "abc", "", "1e3", "--1"})
            EXPECT_THAT(ofField(good), IsEmpty()) << good;
    }
}

TEST(CamposMonitoramento, QuantidadeInformada) {
    const std::string k070 = "070 O valor da quantidade informada de procedimentos deve ser maior que zero. "
                             "Porém o valor {} foi encontrado.";
    Expect({
        {{{"quantidadeInformada=1", "quantidadeInformada=0.0001"}}, {}},
        {{{"quantidadeInformada=1", "quantidadeInformada=0"}}, {fmt::format(fmt::runtime(k070), "0.00")}},
        {{{"quantidadeInformada=1", "quantidadeInformada=-1"},
          {"quantidadeInformada=5", "quantidadeInformada=0.00"}},
         {fmt::format(fmt::runtime(k070), "-1.00"), fmt::format(fmt::runtime(k070), "0.00")}},
        {{{"quantidadeInformada=1", "quantidadeInformada=x"}, {"quantidadeInformada=3 ", ""}}, {}},
    });
}

TEST(CamposMonitoramento, Somas) {
    const std::string k050 =
        "050 O valor total informado da guia deve ser igual à soma dos valores informados de "
        "procedimentos ou itens assistenciais. O valor {} foi encontrado, porém o esperado é {}. -> {}";
    const std::string k059Totals =
        "059 O valor total pago ao prestador deve ser igual à soma dos dos valores dos campos abaixo no "
        "mesmo "
        "lançamento: \r\n  - Valor total pago dos procedimentos (052)\r\n  - Valor total de diárias "
        "(053)\r\n  - Valor "
        "total de taxas (054)\r\n  - Valor total de materiais (055)\r\n  - Valor total de OPME (056)\r\n  - "
        "Valor total "
        "de medicamentos (057)\r\nO valor {} foi encontrado, porém o esperado é {}. -> {}";
    const std::string k059Items = "059 O valor total pago ao prestador deve ser igual à soma do campo Valor "
                                  "pago ao prestador executante ou "
                                  "reembolsado ao beneficiário (campo 073) dos procedimentos ou itens "
                                  "assistenciais do mesmo lançamento. O valor {} "
                                  "foi encontrado, porém o esperado é {}. -> {}";
    const std::string k060 =
        "060 O valor total pago diretamente aos fornecedores deve ser igual à soma do campo Valor pago "
        "diretamente ao fornecedor (campo 074) dos procedimentos ou itens assistenciais do mesmo "
        "lançamento. O valor {} foi encontrado, porém o esperado é {}. -> {}";
    const std::string k084 =
        "084 O valor total de coparticipação deve ser igual à soma do valor de coparticipação (campo "
        "085) dos procedimentos ou itens assistenciais do mesmo lançamento. O valor {} foi encontrado, "
        "porém o esperado é {}. -> {}";
    const auto text = [](const std::string& finding, const char* found, const char* expected,
                         const char* correction) {
        return fmt::format(fmt::runtime(finding), found, expected, correction);
    };
    const std::string kInformado = "valorTotalInformado=100.00";
    const std::string kPago = "valorPagoGuia=95.00";
    Expect({
        {{{kInformado, "valorTotalInformado=100.01"}}, {text(k050, "100.01", "100.00", "100.00")}},
        {{{kInformado, "valorTotalInformado=1234567.89"}}, {text(k050, "1234567.89", "100.00", "100.00")}},
        {{{kInformado, "valorTotalInformado=+100"}}, {}},
        {{{kInformado, "valorTotalInformado=100.00000000001"}}, {}},
        {{{kInformado, "valorTotalInformado=100.000000001"}}, {text(k050, "100.00", "100.00", "100.00")}},
        {{{kInformado, ""}}, {}},
        {{{kInformado, "valorTotalInformado=cem"}}, {}},
        // What a correction writes is the sum again, whatever its decimals.
        {{{"valorInformado=33.34", "valorInformado=33.345"}}, {text(k050, "100.00", "100.01", "100.005")}},
        {{{"valorInformado=33.34", "valorInformado=1033.34"}}, {text(k050, "100.00", "1100.00", "1100.00")}},
        {{{"valorInformado=33.34 ", ""}}, {text(k050, "100.00", "66.66", "66.66")}},

        {{{kPago, "valorPagoGuia=95.01"}},
         {text(k059Totals, "95.01", "95.00", "95.00"), text(k059Items, "95.01", "95.00", "95.00")}},
        {{{kPago, "valorPagoGuia=1.00"}, {"valorTotalDiarias=15.00", "valorTotalDiarias=25.00"}},
         {text(k059Totals, "1.00", "105.00", "105.00"), text(k059Items, "1.00", "95.00", "95.00")}},
        {{{"valorTotalTaxas=9.00", "valorTotalTaxas=8.99"}}, {text(k059Totals, "95.00", "94.99", "94.99")}},
        {{{"valorTotalMedicamentos=6.00", ""}}, {text(k059Totals, "95.00", "89.00", "89.00")}},
        {{{"valorPagoProc=31.00", "valorPagoProc=31.01"}}, {text(k059Items, "95.00", "95.01", "95.01")}},
        {{{kPago, ""}}, {}},

        {{{"valorPagoFornecedores=2.00", "valorPagoFornecedores=2.01"}},
         {text(k060, "2.01", "2.00", "2.00")}},
        {{{"valorPagoFornecedores=2.00", ""}}, {}},
        {{{"valorTotalCoParticipacao=0.60", "valorTotalCoParticipacao=0"}},
         {text(k084, "0.00", "0.60", "0.60")}},
        {{{"valorTotalCoParticipacao=0.60", ""}}, {}},
    });
}

TEST(CamposMonitoramento, TabelaEGrupo) {
    const std::string kTabela = "064 O código da tabela está inválido. ";
    const std::string kGrupo = "065 O código do grupo do procedimento está inválido. ";
    const std::string kIndividual =
        "065 Quando for utilizado código próprio da operadora, a forma de envio do procedimento ou "
        "item assistencial deve ser individualizada.";
    const std::string kRepetido =
        "065 O grupo de procedimento 009 está repetido nesse lançamento. Não pode haver, em um mesmo "
        "lançamento, repetição de grupo de procedimento ou item assistencial.";
    const std::string kAusente =
        " da TUSS não foi localizado no componente de representação de conceitos em saúde do padrão "
        "TISS.";
    Expect({
        {{{kItem1, Item("23", "10101012")}}, {kTabela + "O termo de código 23 da tabela 87" + kAusente}},
        {{{kItem3, Item("98", "777")}},
         {kTabela + "O termo de código 98 da tabela 87 da TUSS entrará em vigência somente em 11/12/2022."}},
        {{{kItem1, Item("23", "10101012")}, {kRealizacao, ""}}, {}},
        {{{kItem1, "identProcedimento(Procedimento(codigoProcedimento=10101012)) "}}, {}},

        {{{kItem2, Grupo("63", "010")}}, {kGrupo + "O termo de código 010 da tabela 63" + kAusente}},
        {{{kItem2, Grupo("63", "031")}},
         {kGrupo + "O termo de código 031 da tabela 63 da TUSS foi inativado em 09/12/2022."}},
        {{{kItem2, Grupo("63", "032")}}, {}}, // inactivated at the end of that very day
        {{{kItem2, Grupo("63", "010")}, {kRealizacao, "dataRealizacao=x"}}, {}},
        {{{kItem2, Grupo("90", "009")}}, {kIndividual}},
        {{{kItem2, Grupo("00", "010")}},
         {kIndividual, kGrupo + "O termo de código 010 da tabela 63" + kAusente}},
        {{{kItem1, Grupo("63", "009")}}, {kRepetido}},
        {{{kItem1, Grupo("63", "009")}, {kItem3, Grupo("90", "009")}}, {kRepetido, kIndividual, kRepetido}},
    });
}

TEST(CamposMonitoramento, CodigoDoProcedimento) {
    const std::string kCodigo = "066 O código do procedimento está inválido. O termo de código ";
    const auto repeated = [](const char* code, const char* table) {
        return fmt::format(
            "066 O código de procedimento {} da tabela {} está repetido nesse lançamento. Não pode haver, em "
            "um "
            "mesmo lançamento, repetição de códigos de procedimento ou item assistencial da mesma tabela de "
            "referência.",
            code, table);
    };
    Expect({
        {{{kItem1, Item("22", "40324770")}},
         {kCodigo + "40324770 da tabela 22 da TUSS deverá ser enviado de forma consolidada, através do "
                    "código de grupo 031 (de "
                    "acordo com a tabela de domínio nº 64)."}},
        {{{kItem1, Item("22", "20101015")}},
         {kCodigo + "20101015 da tabela 22 da TUSS entrará em vigência somente em 11/12/2022."}},
        {{{kItem1, Item("19", "10101012")}},
         {kCodigo + "10101012 da tabela 19 da TUSS foi inativado em 09/12/2022."}},
        {{{kItem1, Item("18", "10101012")}},
         {kCodigo + "10101012 da tabela 18 da TUSS não foi localizado no componente de representação de "
                    "conceitos em saúde do "
                    "padrão TISS."}},
        {{{kItem1, Item("20", "31005497")}}, {}},
        {{{kItem1, Item("00", "1")}}, {}},
        {{{kItem1, Item("18", "10101012")}, {kRealizacao, ""}}, {}},
        {{{kItem2, Item("22", "10101012")}}, {repeated("10101012", "22")}},
        {{{kItem1, Item("90", "777")}, {kItem2, Item("90", "777")}},
         {repeated("777", "90"), repeated("777", "90")}},
        {{{kItem2, Item("00", "777")}}, {}}, // the same code of another table
    });
}

TEST(CamposMonitoramento, CnpjDoFornecedor) {
    const std::string kCnpj = "CNPJFornecedor=11444777000161";
    Expect({
        {{{kCnpj, "CNPJFornecedor=11444777000160"}},
         {"075 O CNPJ do fornecedor do item assistencial está inválido. Valor encontrado: 11444777000160."}},
        {{{kCnpj, "CNPJFornecedor="}},
         {"075 O CNPJ do fornecedor do item assistencial está inválido. Valor encontrado: ."}},
        {{{kCnpj, ""}}, {}},
    });
}

TEST(CamposMonitoramento, Pacotes) {
    const auto misplaced = [](const char* count) {
        std::vector<std::string> findings;
        for (const char* campo : {"077", "078", "079"})
            findings.push_back(
                fmt::format("{} Pacotes só deverão ser informados quando o campo 064 for igual a 90 ou 98. "
                            "Quantidade de pacote(s) encontrado(s): {}",
                            campo, count));
        return findings;
    };
    const std::string kTabela =
        "077 O código da tabela do item do pacote deve ser preenchido com um dos seguintes códigos "
        "possíveis: \"00\", \"18\", \"19\", \"20\" ou \"22\".";
    const std::string kCodigo =
        "078 O código do procedimento que compõe o pacote está inválido. O termo de código ";
    const std::string kRepetido =
        "078 O código de procedimento 31005497 da tabela 20 está repetido no pacote. Não pode haver, em "
        "um mesmo pacote, repetição de códigos de procedimento ou item assistencial da mesma tabela de "
        "referência (campo 077).";
    std::string many;
    for (int i = 0; i < 1000; ++i)
        many += Component("00", std::to_string(i)) + " ";
    Expect({
        {{{kItem3, Item("00", "777")}}, misplaced("2")},
        {{{kItem1, Item("90", "1")}, {kItem3, Item("22", "10101012")}}, misplaced("2")},
        {{{kItem3, Item("00", "777")}, {kComponent1, many}, {kComponent2, ""}}, misplaced("1.000")},
        {{{kItem3, Item("00", "777")}, {kComponent1, ""}, {kComponent2, ""}}, {}},
        {{{kComponent1, Component("63", "009")}}, {kTabela}},
        {{{kComponent1, Component("90", "009")}}, {kTabela}},
        {{{kComponent1, "detalhePacote(codigoProcedimento=31005497)"}}, {}},
        {{{kComponent1, Component("22", "31005497")}},
         {kCodigo + "31005497 da tabela 22 da TUSS não foi localizado no componente de representação de "
                    "conceitos em saúde do "
                    "padrão TISS."}},
        {{{kComponent1, Component("22", "40324770")}},
         {kCodigo + "40324770 da tabela 22 da TUSS deverá ser enviado de forma consolidada, através do "
                    "código de grupo 031 (de "
                    "acordo com a tabela de domínio nº 64)."}},
        {{{kComponent2, Component("20", "31005497")}}, {kRepetido}},
        // A package repeats neither what another package holds nor the item itself.
        {{{kItem1, Item("90", "1")},
          {"valorCoParticipacao=0.10", "valorCoParticipacao=0.10 " + Component("20", "31005497")}},
         {}},
    });
}

} // namespace
} // namespace conferix
