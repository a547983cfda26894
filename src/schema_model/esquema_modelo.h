// The model of the standard's schemas, as the files in resources/schema_model describe it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// A model file that cannot be read or understood; the text names file and line.
class EModeloInvalido : public std::runtime_error {
  public:
    /// Line 1-based.
    EModeloInvalido(const std::string& file, int line, const std::string& reason);
};

/// The versions in which an entry of the model holds; without any range, all.
class TModeloVersoes {
  public:
    /// Adds a range, both ends included; an empty end is open.
    void Add(std::string first, std::string last);
    bool Contains(std::string_view versao) const;

  private:
    struct TRange {
        std::string First;
        std::string Last;
    };
    std::vector<TRange> ranges_;
};

/// A word of the model with the versions in which it holds.
struct TModeloTermo {
    std::string Text;
    TModeloVersoes Versoes;
};

/// How often a child may stand. kModeloSemLimite: any number.
struct TModeloVezes {
    std::uint32_t Min = 1;
    std::uint32_t Max = 1;
};
inline constexpr std::uint32_t kModeloSemLimite = 0xFFFFFFFF;

/// A line below a type or element: a child, a group of children, or an attribute.
struct TModeloNo {
    enum class TTipo : std::uint8_t { Elemento, Referencia, Sequencia, Escolha, Todos, Qualquer, Atributo };
    TTipo Tipo = TTipo::Elemento;
    std::string Nome; ///< of a reference with its prefix
    TModeloVersoes Versoes;
    std::vector<TModeloTermo> Vezes; ///< as written; the first that holds counts
    std::vector<TModeloTermo> Tipos;
    std::vector<TModeloTermo> Bases; ///< types that the children go on from
    std::vector<TModeloTermo> Nulo;
    bool Outros = false; ///< of "qualquer": of another namespace
    bool Livre = false;  ///< of "qualquer": checked only if known
    std::vector<TModeloNo> Filhos;
    int Linha = 0;

    /// How often the child stands in a version.
    TModeloVezes VezesEm(std::string_view versao) const;
};

/// A named type with child elements, or with a value and attributes.
struct TModeloTipo {
    std::string Nome;
    std::string Valor; ///< type of the value; empty when there are child elements
    bool Misto = false;
    std::vector<TModeloTermo> Bases;
    std::vector<TModeloNo> Filhos;
    int Linha = 0;
};

/// A limit of a simple type, as "tamanho" "1..20".
struct TModeloLimite {
    std::string Nome;
    TModeloTermo Valor;
};

struct TModeloSimples {
    std::string Nome;
    std::vector<TModeloTermo> Bases;
    std::vector<TModeloLimite> Limites;
    std::vector<TModeloTermo> Codigos; ///< one code each, runs written out
    int Linha = 0;
};

/// The word that holds in a version, or null.
const TModeloTermo* TermoEm(const std::vector<TModeloTermo>& termos, std::string_view versao);

/// One model file: a series of versions of one kind of document.
class TEsquemaModelo {
  public:
    /// Reads a model file and those that it names, which lie beside it. Raises EModeloInvalido,
    /// EFileNotRead.
    static std::shared_ptr<const TEsquemaModelo> Load(const std::filesystem::path& file);
    /// Reads a model from text; files that it names are looked for in `folder`.
    static std::shared_ptr<const TEsquemaModelo> Parse(std::string_view text, const std::string& name,
                                                       const std::filesystem::path& folder);

    const std::string& Espaco() const { return espaco_; }
    const std::string& Prefixo() const { return prefixo_; }
    /// Versions in the order of their publication; none for what is the same in all.
    const std::vector<std::string>& Versoes() const { return versoes_; }
    /// True for a version that was never published and is put together from its neighbours.
    bool Aproximada(std::string_view versao) const;
    /// Name of the version's XSD file.
    std::string NomeArquivo(std::string_view versao) const;

    /// Global elements; the first is the root of the documents.
    const std::vector<TModeloNo>& Elementos() const { return elementos_; }
    /// A type of this file or of the one whose types it shares; null when there is none.
    const TModeloTipo* Tipo(std::string_view nome) const;
    const TModeloSimples* Simples(std::string_view nome) const;
    const std::vector<TModeloTipo>& Tipos() const { return tipos_; }
    const std::vector<TModeloSimples>& TiposSimples() const { return simples_; }
    /// The imported file of a prefix, or null.
    const TEsquemaModelo* Importado(std::string_view prefixo) const;
    const std::map<std::string, std::shared_ptr<const TEsquemaModelo>, std::less<>>& Importados() const {
        return importados_;
    }

  private:
    friend class TModeloReader;

    std::string arquivo_;       ///< name of the model file
    std::string padraoArquivo_; ///< of the XSD file, % for the version
    std::string espaco_;
    std::string prefixo_ = "ans";
    std::vector<std::string> versoes_;
    std::vector<std::string> aproximadas_;
    std::vector<TModeloNo> elementos_;
    std::vector<TModeloTipo> tipos_;
    std::vector<TModeloSimples> simples_;
    std::map<std::string, std::size_t, std::less<>> tipoPorNome_;
    std::map<std::string, std::size_t, std::less<>> simplesPorNome_;
    std::shared_ptr<const TEsquemaModelo> compartilhado_;
    std::map<std::string, std::shared_ptr<const TEsquemaModelo>, std::less<>> importados_;
};

/// The model files of a folder that describe versions, in the order of their names.
std::vector<std::shared_ptr<const TEsquemaModelo>> LoadModelos(const std::filesystem::path& folder);

} // namespace conferix
