#pragma once

#include "esquema/esquema_modelo.h"

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

/// True when, in a version, elements of these local names stand in one another, from the root on.
bool ExisteCaminho(const TEsquemaModelo& modelo, std::string_view versao,
                   std::span<const std::string_view> caminho);

/// In which versions of a kind of document elements exist.
class THistoricoDeElementos {
  public:
    explicit THistoricoDeElementos(std::vector<std::shared_ptr<const TEsquemaModelo>> modelos)
        : modelos_(std::move(modelos)) {}

    /// The one of the model files that come with the program; empty when they are not there.
    static const THistoricoDeElementos& DoPrograma();

    /// What happened to an element that a version's schema does not know: "O elemento <x> só existe a partir
    /// da versão 4.00.00." or "O elemento <x> deixou de existir na versão 4.00.00."; empty when no version
    /// knows it, or both earlier and later ones. `arquivo`: name of the version's XSD file.
    std::string Frase(std::string_view arquivo, std::span<const std::string_view> caminho) const;

  private:
    std::vector<std::shared_ptr<const TEsquemaModelo>> modelos_;
};

} // namespace conferix
