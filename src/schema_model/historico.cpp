#include "schema_model/historico.h"

#include "schema_model/pastas.h"

#include <algorithm>
#include <set>

namespace conferix {

namespace {

using TTipo = TModeloNo::TTipo;

using TDesencontros = std::set<std::pair<std::size_t, std::string_view>>;

/// Number of those that the other set lacks.
std::size_t CountWithout(const TDesencontros& set, const TDesencontros& other) {
    return static_cast<std::size_t>(std::count_if(
        set.begin(), set.end(), [&other](const auto& entry) { return other.count(entry) == 0; }));
}

template<class Visit>
void ForEachElementIn(const std::vector<TModeloNo>& nodes, const Visit& visit) {
    for (const TModeloNo& node : nodes) {
        if (node.Tipo == TTipo::Elemento)
            visit(node);
        ForEachElementIn(node.Filhos, visit);
    }
}

template<class Visit>
void ForEachElement(const TEsquemaModelo& model, const Visit& visit) {
    ForEachElementIn(model.Elementos(), visit);
    for (const TModeloTipo& type : model.Tipos())
        ForEachElementIn(type.Filhos, visit);
}

/// Looks for children by name, through groups and the types that a type goes on from.
class TBusca {
  public:
    TBusca(const TEsquemaModelo& modelo, std::string_view versao) : modelo_(modelo), versao_(versao) {}

    /// The element at the end of a path from the root on, or null.
    const TModeloNo* Path(std::span<const std::string_view> names) const {
        const TModeloNo* node = names.empty() ? nullptr : Root(names.front());
        for (std::size_t i = 1; i < names.size() && node != nullptr; ++i)
            node = Child(*node, names[i]);
        return node;
    }

    /// The elements of a document that this version does not know, and those that it demands and the document
    /// has nowhere, each as its parent's entry and its name. What stands below an unknown element is unknown
    /// too.
    TDesencontros Misfits(const TCaminhos& paths) const {
        std::vector<const TModeloNo*> nodes;
        TDesencontros present;
        TDesencontros misfits;
        nodes.reserve(paths.Entradas.size());
        for (std::size_t i = 0; i < paths.Entradas.size(); ++i) {
            const auto& [parent, name] = paths.Entradas[i];
            const TModeloNo* above = i == 0 ? nullptr : nodes[parent];
            nodes.push_back(i == 0 ? Root(name) : above != nullptr ? Child(*above, name) : nullptr);
            if (nodes.back() == nullptr)
                misfits.emplace(parent, name);
            present.emplace(parent, name);
        }
        for (std::size_t i = 0; i < nodes.size(); ++i)
            if (nodes[i] != nullptr)
                for (const std::string_view name : Demanded(*nodes[i]))
                    if (present.count({i, name}) == 0)
                        misfits.emplace(i, name);
        return misfits;
    }

    const TModeloNo* Root(std::string_view name) const {
        for (const TModeloNo& element : modelo_.Elementos())
            if (element.Nome == name && element.Versoes.Contains(versao_))
                return &element;
        return nullptr;
    }

    /// True when some element of that name has a child of the other.
    bool AnyChild(std::string_view parent, std::string_view name) const {
        bool found = false;
        ForEachElement(modelo_, [&](const TModeloNo& node) {
            found = found ||
                    (node.Nome == parent && node.Versoes.Contains(versao_) && Child(node, name) != nullptr);
        });
        return found;
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

    /// Names of the children that an element must have, whatever else it has.
    std::vector<std::string_view> Demanded(const TModeloNo& element) const {
        std::vector<std::string_view> names;
        if (const TModeloTermo* type = TermoEm(element.Tipos, versao_)) {
            DemandedOfType(type->Text, names);
            return names;
        }
        DemandedOf(element.Filhos, names);
        if (const TModeloTermo* base = TermoEm(element.Bases, versao_))
            DemandedOfType(base->Text, names);
        return names;
    }

    void DemandedOfType(const std::string& typeName, std::vector<std::string_view>& names) const {
        const TModeloTipo* type = modelo_.Tipo(typeName);
        while (type != nullptr) {
            DemandedOf(type->Filhos, names);
            const TModeloTermo* base = TermoEm(type->Bases, versao_);
            type = base != nullptr ? modelo_.Tipo(base->Text) : nullptr;
        }
    }

    void DemandedOf(const std::vector<TModeloNo>& nodes, std::vector<std::string_view>& names) const {
        for (const TModeloNo& node : nodes) {
            if (!node.Versoes.Contains(versao_) || node.VezesEm(versao_).Min == 0)
                continue;
            if (node.Tipo == TTipo::Elemento)
                names.push_back(node.Nome);
            else if (node.Tipo == TTipo::Sequencia || node.Tipo == TTipo::Todos)
                DemandedOf(node.Filhos, names);
        }
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
    return TBusca(modelo, versao).Path(caminho) != nullptr;
}

THistoricoDeElementos::THistoricoDeElementos(std::vector<std::shared_ptr<const TEsquemaModelo>> modelos)
    : modelos_(std::move(modelos)) {
    for (const auto& model : modelos_)
        ForEachElement(*model, [this](const TModeloNo& node) { nomes_.insert(node.Nome); });
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

std::vector<THistoricoDeElementos::TVersao> THistoricoDeElementos::Serie(std::string_view arquivo) const {
    std::vector<TVersao> serie;
    std::string current;
    for (const auto& model : modelos_)
        for (const std::string& versao : model->Versoes())
            if (model->NomeArquivo(versao) == arquivo)
                current = versao;
    if (current.empty())
        return serie;
    for (const auto& model : modelos_)
        if (model->NomeArquivo(current) == arquivo)
            for (const std::string& versao : model->Versoes())
                serie.push_back({versao, model.get(), model->Aproximada(versao)});
    std::sort(serie.begin(), serie.end(),
              [](const TVersao& left, const TVersao& right) { return left.Texto < right.Texto; });
    return serie;
}

std::size_t THistoricoDeElementos::IndiceDe(const std::vector<TVersao>& serie, std::string_view arquivo) {
    const auto found = std::find_if(serie.begin(), serie.end(), [&](const TVersao& version) {
        return version.Modelo->NomeArquivo(version.Texto) == arquivo;
    });
    return static_cast<std::size_t>(found - serie.begin());
}

bool THistoricoDeElementos::Aproximada(std::string_view arquivo) const {
    const std::vector<TVersao> serie = Serie(arquivo);
    const std::size_t at = IndiceDe(serie, arquivo);
    return at < serie.size() && serie[at].Aproximada;
}

THistoricoDeElementos::TFrase THistoricoDeElementos::Frase(std::string_view arquivo,
                                                           std::span<const std::string_view> caminho) const {
    if (caminho.empty() || nomes_.count(caminho.back()) == 0)
        return {};
    const std::vector<TVersao> serie = Serie(arquivo);
    const std::size_t current = IndiceDe(serie, arquivo);
    std::vector<bool> exists;
    exists.reserve(serie.size());
    for (const TVersao& version : serie)
        exists.push_back(!version.Aproximada && ExisteCaminho(*version.Modelo, version.Texto, caminho));
    if (caminho.size() > 1 && std::find(exists.begin(), exists.end(), true) == exists.end())
        for (std::size_t at = 0; at < serie.size(); ++at)
            exists[at] = !serie[at].Aproximada && TBusca(*serie[at].Modelo, serie[at].Texto)
                                                      .AnyChild(caminho[caminho.size() - 2], caminho.back());
    const auto from = exists.begin() + static_cast<std::ptrdiff_t>(current);
    const bool before = std::find(exists.begin(), from, true) != from;
    const bool after = std::find(from, exists.end(), true) != exists.end();
    if (before == after || current == serie.size() || exists[current])
        return {};
    // The first version of which the change may be, and the last.
    std::size_t first = current;
    std::size_t last = static_cast<std::size_t>(std::find(from, exists.end(), true) - exists.begin());
    if (after) {
        for (first = last; first > current + 1 && serie[first - 1].Aproximada; --first) {
        }
    } else {
        while (!exists[first - 1])
            --first;
        for (last = first; last < current && serie[last].Aproximada; ++last) {
        }
    }
    const std::string& oldest = serie[first].Texto;
    const std::string& newest = serie[last].Texto;
    const std::string what = after ? "só existe a partir " : "deixou de existir ";
    if (last == first)
        return {what + (after ? "da versão " : "na versão ") + oldest, before};
    if (last == first + 1)
        return {what + (after ? "da versão " : "na versão ") + oldest + " ou " + newest, before};
    return {what + (after ? "de uma versão" : "em uma versão") + " entre " + oldest + " e " + newest, before};
}

THistoricoDeElementos::TRelacao THistoricoDeElementos::Relacao(std::string_view arquivo,
                                                               std::span<const std::string_view> pai,
                                                               std::string_view achado,
                                                               std::string_view desejado) const {
    if (nomes_.count(achado) == 0)
        return TRelacao::Nenhuma;
    const std::vector<TVersao> serie = Serie(arquivo);
    const std::size_t current = IndiceDe(serie, arquivo);
    if (current == serie.size())
        return TRelacao::Nenhuma;
    const TModeloNo* wanted = nullptr;
    const TModeloNo* found = nullptr;
    const auto find = [&](const TVersao& version) {
        const TBusca search(*version.Modelo, version.Texto);
        const TModeloNo* parent = search.Path(pai);
        found = parent != nullptr ? search.Child(*parent, achado) : nullptr;
        wanted = parent != nullptr ? search.Child(*parent, desejado) : nullptr;
    };
    find(serie[current]);
    const TModeloTermo* type = wanted != nullptr ? TermoEm(wanted->Tipos, serie[current].Texto) : nullptr;
    TRelacao relation = TRelacao::Nenhuma;
    for (const TVersao& version : serie) {
        find(version);
        if (found == nullptr || version.Aproximada)
            continue;
        if (wanted != nullptr)
            return TRelacao::Distinto;
        const TModeloTermo* other = TermoEm(found->Tipos, version.Texto);
        if (type != nullptr && other != nullptr && type->Text == other->Text)
            relation = TRelacao::Renomeado;
    }
    return relation;
}

std::string THistoricoDeElementos::VersaoDoConteudo(std::string_view arquivo, const TCaminhos& caminhos,
                                                    std::string_view indicada) const {
    const std::vector<TVersao> serie = Serie(arquivo);
    const std::size_t current = IndiceDe(serie, arquivo);
    if (current == serie.size() || caminhos.Entradas.empty())
        return {};
    const auto misfitsOf = [&](const TVersao& version) {
        return TBusca(*version.Modelo, version.Texto).Misfits(caminhos);
    };
    const TDesencontros own = misfitsOf(serie[current]);
    // One element too many or too few says little, and so does one for and one against.
    constexpr std::size_t kLeast = 2;
    constexpr std::size_t kTimes = 3;
    const auto distance = [current](std::size_t at) { return at > current ? at - current : current - at; };
    std::size_t best = current;
    std::size_t bestGain = 0;
    for (std::size_t at = 0; at < serie.size(); ++at) {
        if (at == current || serie[at].Aproximada)
            continue;
        const TDesencontros misfits = misfitsOf(serie[at]);
        const std::size_t healed = CountWithout(own, misfits);
        const std::size_t caused = CountWithout(misfits, own);
        if (healed <= caused)
            continue;
        if (serie[at].Texto == indicada)
            return serie[at].Texto;
        const std::size_t gain = healed - caused;
        if (healed < kLeast || caused * kTimes > healed || gain < bestGain ||
            (gain == bestGain && distance(at) >= distance(best)))
            continue;
        best = at;
        bestGain = gain;
    }
    return best != current ? serie[best].Texto : std::string();
}

} // namespace conferix
