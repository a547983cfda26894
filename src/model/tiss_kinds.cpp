#include "model/tiss_kinds.h"

#include <algorithm>

namespace conferix {

namespace {

constexpr std::string_view kExtension = ".xsd";

/// True for a version in the standard's form, as "3.05.00".
bool IsVersion(std::string_view text) {
    constexpr std::string_view kForm = "0.00.00";
    return text.size() == kForm.size() && std::ranges::equal(text, kForm, [](char c, char form) {
               return form == '.' ? c == '.' : c >= '0' && c <= '9';
           });
}

} // namespace

const TTissKind& KindOf(TEnumTipoArquivoTiss tipo) {
    return *std::ranges::find(kTissKinds, tipo, &TTissKind::Tipo);
}

std::string SchemaFileName(TEnumTipoArquivoTiss tipo, std::string_view versao) {
    std::string name(versao);
    std::ranges::replace(name, '.', '_');
    return std::string(KindOf(tipo).SchemaPrefix) + name + std::string(kExtension);
}

std::optional<TSchemaFileName> ParseSchemaFileName(std::string_view fileName) {
    if (!fileName.ends_with(kExtension))
        return std::nullopt;
    fileName.remove_suffix(kExtension.size());
    for (const TTissKind& kind : kTissKinds) {
        if (!fileName.starts_with(kind.SchemaPrefix))
            continue;
        std::string versao(fileName.substr(kind.SchemaPrefix.size()));
        std::ranges::replace(versao, '_', '.');
        if (IsVersion(versao))
            return TSchemaFileName{&kind, std::move(versao)};
    }
    return std::nullopt;
}

} // namespace conferix
