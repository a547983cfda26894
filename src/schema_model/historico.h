#pragma once

#include "schema_model/esquema_modelo.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

/// True when, in a version, elements of these local names stand in one another, from the root on.
bool ExisteCaminho(const TEsquemaModelo& modelo, std::string_view versao,
                   std::span<const std::string_view> caminho);

/// The distinct paths of the elements of a document, as a tree: entry 0 is the root, and a parent stands
/// before its children.
struct TCaminhos {
    struct TEntrada {
        std::size_t Pai; ///< index of the parent; of the root its own
        std::string_view Nome;
    };
    std::vector<TEntrada> Entradas;
};

/// In which versions of a kind of document elements exist. `arquivo` is always the name of the XSD file of
/// the document's version. What only an approximated version says is never told as a fact.
class THistoricoDeElementos {
  public:
    explicit THistoricoDeElementos(std::vector<std::shared_ptr<const TEsquemaModelo>> modelos);

    /// The one of the model files that come with the program; empty when they are not there.
    static const THistoricoDeElementos& DoPrograma();

    /// True for a version that is put together from its neighbours.
    bool Aproximada(std::string_view arquivo) const;

    /// What happened to an element that a version's schema does not know: "só existe a partir da versão
    /// 4.00.00" or "deixou de existir na versão 4.00.00"; where unpublished versions lie between, "1.05.00 ou
    /// 1.06.00" or "entre 1.04.00 e 1.06.00". Empty when no version knows it, or both earlier and later ones.
    /// Where no version has the path, what counts is the element in a parent of that name.
    struct TFrase {
        std::string Texto;
        bool Removido = false; ///< it is of earlier versions
    };
    TFrase Frase(std::string_view arquivo, std::span<const std::string_view> caminho) const;

    /// How an unknown element relates to one that may stand in the same parent.
    enum class TRelacao : std::uint8_t {
        Nenhuma,
        Renomeado, ///< another version has the one where this version has the other, with the same type
        Distinto   ///< another version has both
    };
    TRelacao Relacao(std::string_view arquivo, std::span<const std::string_view> pai, std::string_view achado,
                     std::string_view desejado) const;

    /// The version that the elements of a document fit much better than its own, nearest first; empty when
    /// there is none. `indicada`: a version that the document names elsewhere, which needs less evidence.
    std::string VersaoDoConteudo(std::string_view arquivo, const TCaminhos& caminhos,
                                 std::string_view indicada) const;

  private:
    struct TVersao {
        std::string Texto;
        const TEsquemaModelo* Modelo;
        bool Aproximada;
    };
    /// The versions of one kind of document, oldest first.
    std::vector<TVersao> Serie(std::string_view arquivo) const;
    /// Index of a file's version in its series; the size of the series when it has none.
    static std::size_t IndiceDe(const std::vector<TVersao>& serie, std::string_view arquivo);

    std::vector<std::shared_ptr<const TEsquemaModelo>> modelos_;
    std::set<std::string, std::less<>> nomes_; ///< of all elements
};

} // namespace conferix
