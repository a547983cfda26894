#include "esquema/historico.h"

#include "esquema/pastas.h"

#include <algorithm>

namespace conferix {

namespace {

using TTipo = TModeloNo::TTipo;

/// Looks for children by name, through groups and the types that a type goes on from.
class TBusca {
  public:
    TBusca(const TEsquemaModelo& modelo, std::string_view versao) : modelo_(modelo), versao_(versao) {}

    const TModeloNo* Root(std::string_view name) const {
        for (const TModeloNo& element : modelo_.Elementos())
            if (element.Nome == name && element.Versoes.Contains(versao_))
                return &element;
        return nullptr;
    }

    /// The child of an element; null when it has none of that name.
    const TModeloNo* Child(const TModeloNo& element, std::string_view name) const {
        if (const TModeloTermo* type = TermoEm(element.Tipos, versao_))
            return InType(type->Text, name);
        if (const TModeloNo* found = InNodes(element.Filhos, name))
            return found;
        const TModeloTermo* base = TermoEm(element.Bases, versao_);
        return base != nullptr ? InType(base->Text, name) : nullptr;
    }

  private:
    const TModeloNo* InType(const std::string& typeName, std::string_view name) const {
        const TModeloTipo* type = modelo_.Tipo(typeName);
        while (type != nullptr) {
            if (const TModeloNo* found = InNodes(type->Filhos, name))
                return found;
            const TModeloTermo* base = TermoEm(type->Bases, versao_);
            type = base != nullptr ? modelo_.Tipo(base->Text) : nullptr;
        }
        return nullptr;
    }

    const TModeloNo* InNodes(const std::vector<TModeloNo>& nodes, std::string_view name) const {
        for (const TModeloNo& node : nodes) {
            if (!node.Versoes.Contains(versao_))
                continue;
            if (node.Tipo == TTipo::Elemento && node.Nome == name)
                return &node;
            if (const TModeloNo* found = node.Tipo == TTipo::Elemento ? nullptr : InNodes(node.Filhos, name))
                return found;
        }
        return nullptr;
    }

    const TEsquemaModelo& modelo_;
    std::string_view versao_;
};

} // namespace

bool ExisteCaminho(const TEsquemaModelo& modelo, std::string_view versao,
                   std::span<const std::string_view> caminho) {
    if (caminho.empty())
        return false;
    const TBusca search(modelo, versao);
    const TModeloNo* node = search.Root(caminho.front());
    for (const std::string_view name : caminho.subspan(1))
        node = node != nullptr ? search.Child(*node, name) : nullptr;
    return node != nullptr;
}

const THistoricoDeElementos& THistoricoDeElementos::DoPrograma() {
    static const THistoricoDeElementos history([] {
        std::error_code ignored;
        const std::filesystem::path folder = SchemaModelFolder();
        return std::filesystem::is_directory(folder, ignored)
                   ? LoadModelos(folder)
                   : std::vector<std::shared_ptr<const TEsquemaModelo>>();
    }());
    return history;
}

std::string THistoricoDeElementos::Frase(std::string_view arquivo,
                                         std::span<const std::string_view> caminho) const {
    // The versions of this kind of document, oldest first, and whether the element exists in each.
    std::vector<std::pair<std::string, bool>> versions;
    std::string current;
    for (const auto& model : modelos_) {
        for (const std::string& versao : model->Versoes())
            if (model->NomeArquivo(versao) == arquivo)
                current = versao;
    }
    if (current.empty())
        return {};
    for (const auto& model : modelos_) {
        if (model->NomeArquivo(current) == arquivo)
            for (const std::string& versao : model->Versoes())
                versions.emplace_back(versao, ExisteCaminho(*model, versao, caminho));
    }
    std::sort(versions.begin(), versions.end());
    const auto at = std::find_if(versions.begin(), versions.end(),
                                 [&](const auto& version) { return version.first == current; });
    const auto exists = [](const auto& version) { return version.second; };
    const auto before = std::find_if(std::make_reverse_iterator(at), versions.rend(), exists);
    const auto after = std::find_if(at, versions.end(), exists);
    const std::string element = "O elemento <" + std::string(caminho.back()) + "> ";
    if (after == at || (before != versions.rend()) == (after != versions.end()))
        return {};
    if (after != versions.end())
        return element + "só existe a partir da versão " + after->first + ".";
    return element + "deixou de existir na versão " + before.base()->first + ".";
}

} // namespace conferix
