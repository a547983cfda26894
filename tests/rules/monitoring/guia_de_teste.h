// A monitoring guide without faults for the tests to change, and a terminology that knows its codes.
#pragma once

#include "data/tuss_writer.h"
#include "model/documentos.h"
#include "rules/monitoring/monitoramento_lote_validation.h"
#include "validation/solver.h"

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix::testes {

inline constexpr std::string_view kCabecalho = "competenciaLote=202301 dataRegistroTransacao=2023-01-31";

/// A guide of SP/SADT with an item of its own code, one of a group and one of a package.
inline constexpr std::string_view kGuia =
    "guiaMonitoramento(tipoRegistro=1 versaoTISSPrestador=016 formaEnvio=1 dadosContratadoExecutante("
    "CNES=9999999 identificadorExecutante=1 codigoCNPJ_CPF=11222333000181 municipioExecutante=3550308) "
    "dadosBeneficiario(identBeneficiario(numeroCartaoNacionalSaude=700000000000005 sexo=1 "
    "dataNascimento=1980-01-01 municipioResidencia=310620) numeroRegistroPlano=1) tipoEventoAtencao=2 "
    "origemEventoAtencao=1 numeroGuia_prestador=123 numeroGuia_operadora=456 "
    "identificacaoReembolso=00000000000000000000 dataRealizacao=2022-12-10 dataInicialFaturamento=2022-12-01 "
    "dataFimPeriodo=2022-12-20 dataProtocoloCobranca=2022-12-21 dataPagamento=2023-01-10 "
    "dataProcessamentoGuia=2023-01-12 caraterAtendimento=1 tipoAtendimento=05 valoresGuia("
    "valorTotalInformado=100.00 valorProcessado=99.00 valorTotalPagoProcedimentos=50.00 "
    "valorTotalDiarias=15.00 "
    "valorTotalTaxas=9.00 valorTotalMateriais=8.00 valorTotalOPME=7.00 valorTotalMedicamentos=6.00 "
    "valorGlosaGuia=5.00 valorPagoGuia=95.00 valorPagoFornecedores=2.00 valorTotalTabelaPropria=1.00 "
    "valorTotalCoParticipacao=0.60) "
    "procedimentos(identProcedimento(codigoTabela=22 Procedimento(codigoProcedimento=10101012)) "
    "quantidadeInformada=1 valorInformado=33.33 quantidadePaga=2 valorPagoProc=31.00 valorPagoFornecedor=0 "
    "valorCoParticipacao=0.10) "
    "procedimentos(identProcedimento(codigoTabela=63 Procedimento(grupoProcedimento=009)) "
    "quantidadeInformada=3 valorInformado=33.34 quantidadePaga=4 valorPagoProc=32.00 "
    "valorPagoFornecedor=2.00 "
    "CNPJFornecedor=11444777000161 valorCoParticipacao=0.20) "
    "procedimentos(identProcedimento(codigoTabela=90 Procedimento(codigoProcedimento=777)) "
    "quantidadeInformada=5 valorInformado=33.33 quantidadePaga=6 valorPagoProc=32.00 valorPagoFornecedor=0 "
    "valorCoParticipacao=0.30 detalhePacote(codigoTabela=20 codigoProcedimento=31005497 quantidade=1) "
    "detalhePacote(codigoTabela=00 codigoProcedimento=31005497 quantidade=2)))";

/// Texts of a notation and what stands in their place; each has to be there once.
using TEdits = std::vector<std::pair<std::string, std::string>>;

inline std::string Edited(std::string_view original, const TEdits& edits) {
    std::string text(original);
    for (const auto& [what, with] : edits) {
        const std::size_t at = text.find(what);
        EXPECT_NE(at, std::string::npos) << what;
        EXPECT_EQ(text.find(what, at + 1), std::string::npos) << what;
        if (at != std::string::npos)
            text.replace(at, what.size(), with);
    }
    return text;
}

inline const std::shared_ptr<TTussConnection>& Terminologia() {
    static const auto connection = TTussConnection::InMemory([](TTussWriter& writer) {
        using namespace std::chrono;
        const TDate old = 2010y / 1 / 1;
        const TDate day = 2022y / 12 / 10; // of the guide
        for (const char* table : {"00", "18", "19", "20", "22", "63", "90"})
            writer.Insert("87", {table, old, {}});
        writer.Insert("87", {"98", 2022y / 12 / 11, {}});
        writer.Insert("63", {"009", day, {}});
        writer.Insert("63", {"031", old, {}});
        writer.Insert(TTussInativado{"63", "031", 2022y / 12 / 9});
        writer.Insert(TTussInativado{"63", "032", day});
        writer.Insert(TTuss64{"22", "10101012", false, "", old, {}, {}});
        writer.Insert(TTuss64{"22", "40324770", true, "031", old, {}, {}});
        writer.Insert(TTuss64{"22", "20101015", false, "", 2022y / 12 / 11, {}, {}});
        writer.Insert(TTuss64{"20", "31005497", false, "", day, {}, {}});
        writer.Insert(TTuss64{"19", "10101012", true, "040", old, 2022y / 12 / 9, {}});
        writer.Insert(TTuss64{"18", "60000783", false, "", old, {}, {}});
        writer.Insert(TCidade{"3550308"});
        writer.Insert(TCidade{"355030"});
        writer.Insert(TCidade{"3106200"});
        writer.Insert(TCidade{"310620"});
    });
    return connection;
}

/// The findings of the rules of a lot, success left out: "023 text" and, where there is one,
/// " -> value that the correction writes".
inline std::vector<std::string> Findings(const TValidationMessages& messages) {
    std::vector<std::string> lines;
    for (const auto& message : messages) {
        if (message->MsgType() == TMessageType::mtSuccess)
            continue;
        const auto* field = dynamic_cast<const TLoteGuiasMonitoramentoValidationMessage*>(message.get());
        std::string line = (field != nullptr ? field->Campo() + " " : "") + message->Reason();
        for (const auto& solver : message->Solvers()) {
            constexpr std::string_view kPrefix = "Alterar o valor para ";
            EXPECT_THAT(solver->Description(), testing::StartsWith(std::string(kPrefix)));
            line += " -> " + solver->Description().substr(kPrefix.size());
        }
        lines.push_back(line);
    }
    return lines;
}

inline TValidationMessages Judge(const std::shared_ptr<IMonitoramento>& arquivo,
                                 const std::shared_ptr<TTussConnection>& tuss = Terminologia()) {
    const auto rule = MakeValidation<TMonitoramentoLoteValidation>(arquivo, tuss);
    arquivo->Accept(*rule);
    return rule->ValidationMessages();
}

/// What the rules find in the guide after some edits of it and of the header.
inline std::vector<std::string> FindingsOf(const TEdits& edits, const TEdits& headerEdits = {}) {
    return Findings(
        Judge(ArquivoMonitoramento(Xml(Edited(kCabecalho, headerEdits) + " "), Xml(Edited(kGuia, edits)))));
}

} // namespace conferix::testes
