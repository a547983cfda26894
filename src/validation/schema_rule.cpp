#include "validation/schema_rule.h"

#include "model/mensagem_tiss.h"
#include "model/monitoramento.h"
#include "sistema/sistema.h"
#include "xml/schema/schema_messages.h"
#include "xml/schema/schema_set.h"
#include "xml/schema/schema_validator.h"

#include <fmt/format.h>

#include <optional>

namespace conferix {

ESchemaNotFound::ESchemaNotFound(const std::filesystem::path& file)
    : std::runtime_error(fmt::format("Schema file {} not found", PathText(file))), file_(file) {}

void TXmlSchemaValidation::Visit(const IMensagemTiss& mensagem) {
    // Findings of a lot name their guide.
    if (mensagem.TipoTransacao() == TEnumTipoTransacaoTiss::tmEnvioLoteGuias) {
        const ILoteGuias lote = mensagem.LoteGuias();
        Check(mensagem, &lote);
    } else {
        Check(mensagem, nullptr);
    }
}

void TXmlSchemaValidation::Visit(const IMonitoramento& monitoramento) {
    Check(monitoramento, nullptr);
}

void TXmlSchemaValidation::Visit(const IMonitoramentoQualidade& qualidade) {
    Check(qualidade, nullptr);
}

void TXmlSchemaValidation::Check(const IArquivoTiss& file, const ILoteGuias* lote) {
    StartVisit();
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(schemaFile_, ignored))
        throw ESchemaNotFound(schemaFile_);
    const auto schema = TSchemaSet::Load(schemaFile_);
    const std::vector<TSchemaFault> faults = TSchemaValidator(*schema).Validate(*file.Xml());
    std::optional<TGuiaLocator> guias;
    if (lote != nullptr && !faults.empty())
        guias.emplace(*lote);
    for (const TSchemaFault& fault : faults) {
        std::string reason = TSchemaMessages::Sentence(fault);
        if (guias.has_value()) {
            const IGuiaTiss* guia = guias->ByNode(*fault.Node);
            AddMessage(TLoteGuiasValidationMessage::CreateError(
                this, std::string(guia != nullptr ? guia->NumeroGuia() : std::string_view{}),
                std::move(reason), fault.SrcText(), fault.Line, fault.LinePos, fault.FilePos));
        } else {
            AddMessage(TValidationMessage::CreateError(this, std::move(reason), fault.SrcText(), fault.Line,
                                                       fault.LinePos, fault.FilePos));
        }
    }
    if (faults.empty())
        AddMessage(TValidationMessage::CreateSuccess(
            this,
            fmt::format("O XML está de acordo com o schema XSD da versão {} do componente de comunicação.",
                        file.Versao())));
}

} // namespace conferix
