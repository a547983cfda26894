#pragma once

#include "xml/schema/schema_files.h"
#include "xml/schema/schema_particle.h"
#include "xml/schema/schema_set.h"

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace conferix {

/// Compiles the declarations of a group of schema files into a set. What the engine does not cover is
/// refused by name, file and line.
class TSchemaReader {
  public:
    /// Raises ESchemaInvalido.
    static std::shared_ptr<const TSchemaSet> Read(const TSchemaFiles& files,
                                                  const std::filesystem::path& mainFile);

  private:
    /// A declaration in its file, and whether its table is being or has been made.
    enum class TState : std::uint8_t { Waiting, Running, Done };
    struct TSource {
        const TSchemaFile* File = nullptr;
        const TXmlNode* Node = nullptr;
    };
    struct TSimpleEntry {
        TSource Source;
        TSchemaSimpleType* Type = nullptr;
        TState State = TState::Waiting;
    };
    struct TComplexEntry {
        TSource Source;
        TSchemaComplexType* Type = nullptr;
        TState State = TState::Waiting;
    };
    /// A type by name: one of the two.
    struct TTypeReference {
        const TSchemaSimpleType* Simple = nullptr;
        TSchemaComplexType* Complex = nullptr;
    };
    using TParticlePtr = std::shared_ptr<const TSchemaParticle>;
    /// A name of a namespace; looked up without a copy of its text.
    using TName = std::pair<std::uint32_t, std::string>;
    struct TNameOrder {
        using is_transparent = void;
        template<class Left, class Right>
        bool operator()(const Left& left, const Right& right) const {
            return left.first != right.first ? left.first < right.first
                                             : std::string_view(left.second) < std::string_view(right.second);
        }
    };
    template<class T>
    using TByName = std::map<TName, T, TNameOrder>;

    explicit TSchemaReader(TSchemaSet& set) : set_(set) {}

    void AddBuiltins();
    TSchemaSimpleType* AddBuiltin(const std::string& name, const TSchemaSimpleType* base,
                                  TSchemaValueKind kind);
    void AddAnyType();

    void Collect(const TSchemaFile& file);
    void CompileAll(const TSchemaFiles& files);

    TSchemaSimpleType* NewSimpleType();
    TSchemaComplexType* NewComplexType();
    std::uint32_t InternNamespace(std::string_view uri);
    std::uint32_t InternSymbol(std::uint32_t namespaceId, const std::string& name);

    TTypeReference FindType(const TSchemaFile& file, const TXmlNode& node, std::string_view qualified,
                            int depth);
    TSchemaComplexType* SignatureType(const TSchemaReference& reference);
    const TSchemaSimpleType* FindSimple(const TSchemaFile& file, const TXmlNode& node,
                                        std::string_view qualified, int depth);

    void CompileSimple(TSimpleEntry& entry, int depth);
    void CompileSimpleInto(TSchemaSimpleType& type, const TSchemaFile& file, const TXmlNode& node, int depth);
    const TSchemaSimpleType* InlineSimple(const TSchemaFile& file, const TXmlNode& node, int depth);

    void CompileComplex(TComplexEntry& entry, int depth);
    void CompileComplexInto(TSchemaComplexType& type, const TSchemaFile& file, const TXmlNode& node,
                            int depth);
    void CompileBase(const TSchemaComplexType& base, const TSchemaFile& file, const TXmlNode& step,
                     int depth);
    void CompileSimpleContent(TSchemaComplexType& type, const TSchemaFile& file, const TXmlNode& node,
                              int depth);
    void CompileComplexContent(TSchemaComplexType& type, const TSchemaFile& file, const TXmlNode& node,
                               int depth);
    static const TXmlNode& Extension(const TSchemaFile& file, const TXmlNode& content);
    /// The particle and the attributes of a type's body; null when it has no particle.
    TParticlePtr ReadBody(TSchemaComplexType& type, const TSchemaFile& file, const TXmlNode& node, int depth);
    void FinishContent(TSchemaComplexType& type, const TSchemaFile& file, const TXmlNode& node,
                       TParticlePtr particle, bool mixed);

    TParticlePtr ReadParticle(const TSchemaFile& file, const TXmlNode& node, int depth);
    const TSchemaElement* ReadElement(const TSchemaFile& file, const TXmlNode& node, int depth);
    const TSchemaElement* ReferredElement(const TSchemaFile& file, const TXmlNode& node,
                                          std::string_view qualified);
    void CompileElement(TSchemaElement& element, const TSchemaFile& file, const TXmlNode& node, int depth);
    const TSchemaWildcard* ReadWildcard(const TSchemaFile& file, const TXmlNode& node);
    void ReadAttribute(TSchemaComplexType& type, const TSchemaFile& file, const TXmlNode& node, int depth);
    void ReadOccurs(const TSchemaFile& file, const TXmlNode& node, TSchemaParticle& particle) const;

    TSchemaSet& set_;
    TByName<TSimpleEntry> simple_;
    TByName<TComplexEntry> complex_;
    TByName<std::pair<TSource, TSchemaElement*>> elements_;
    /// The particles of complex types, from which extensions go on.
    std::unordered_map<const TSchemaComplexType*, TParticlePtr> particles_;
    std::unordered_map<const TSchemaComplexType*, TComplexEntry*> entries_;
    std::size_t work_ = 0; ///< size of what was compiled
};

} // namespace conferix
