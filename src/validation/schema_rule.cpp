#include "validation/schema_rule.h"

#include "esquema/historico.h"
#include "model/mensagem_tiss.h"
#include "model/monitoramento.h"
#include "sistema/sistema.h"
#include "xml/schema/schema_messages.h"
#include "xml/schema/schema_set.h"
#include "xml/schema/schema_validator.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <vector>

namespace conferix {

namespace {

/// A sentence on the versions that know an unknown element, with a blank before it; empty when none does.
std::string History(const std::filesystem::path& schemaFile, const TXmlNode& node) {
    std::vector<std::string_view> path;
    for (const TXmlNode* at = &node; at != nullptr && at->IsTag(); at = at->Parent())
        path.push_back(at->LocalName());
    std::reverse(path.begin(), path.end());
    const std::string sentence =
        THistoricoDeElementos::DoPrograma().Frase(PathText(schemaFile.filename()), path);
    return sentence.empty() ? sentence : " " + sentence;
}

} // namespace

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
        if (fault.Code == TSchemaFaultCode::UnknownElement && fault.Attribute == nullptr)
            reason += History(schemaFile_, *fault.Node);
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
