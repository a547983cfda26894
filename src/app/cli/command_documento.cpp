#include "app/cli/commands.h"
#include "report/console.h"
#include "report/message_json.h"
#include "rules/documents/documents_validation.h"

#include <fmt/format.h>

#include <array>
#include <ostream>
#include <string_view>

namespace conferix {

namespace {

struct TDocumentKind {
    std::string_view Name;
    std::string_view Label;
    bool (*IsValid)(std::string_view);
};

constexpr std::array<TDocumentKind, 3> kKinds = {{
    {"cpf", "CPF", &TDocumentsValidation::IsValidCpf},
    {"cnpj", "CNPJ", &TDocumentsValidation::IsValidCnpj},
    {"cns", "CNS", &TDocumentsValidation::IsValidCNS},
}};

const TDocumentKind& KindOf(std::string_view name) {
    for (const TDocumentKind& kind : kKinds)
        if (kind.Name == name)
            return kind;
    throw EUsage(fmt::format("o documento \"{}\" não existe; use cpf, cnpj ou cns", name));
}

} // namespace

int RunDocumento(const TCliContext& context, const std::string& documento, const std::string& valor) {
    const TDocumentKind& kind = KindOf(documento);
    const bool valid = kind.IsValid(valor);
    std::ostream& out = context.Streams.Out;
    if (context.Json())
        out << JsonText({{"documento", documento}, {"valor", valor}, {"valido", valid}}) << '\n';
    else
        out << kind.Label << ' ' << Visible(valor) << ": " << (valid ? "válido" : "inválido") << '\n';
    return valid ? kExitValid : kExitInvalid;
}

} // namespace conferix
