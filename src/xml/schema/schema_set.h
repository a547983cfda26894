#pragma once

#include "xml/schema/compiled_schema.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace conferix {

/// A schema file that cannot be read or compiled; the text names file, line and construct.
class ESchemaInvalido : public std::runtime_error {
  public:
    /// Line 1-based; 0 when the file as a whole is meant.
    ESchemaInvalido(const std::string& file, std::int32_t line, const std::string& reason);
    /// The same fault, with the folder of the file.
    ESchemaInvalido(const ESchemaInvalido& error, const std::filesystem::path& folder);
};

/// A schema with all it includes and imports, compiled. Immutable, so that threads may share it.
class TSchemaSet {
  public:
    /// Compiles the main file; includes and imports are looked up by their bare name in its folder, and
    /// nothing else is read. A set that was loaded before is answered again as long as none of its files
    /// changed. Where tables compiled of these very files are beside the main one, they are taken instead.
    /// Raises ESchemaInvalido.
    static std::shared_ptr<const TSchemaSet> Load(const std::filesystem::path& mainFile);

    const std::filesystem::path& MainFile() const { return mainFile_; }
    /// Names of all files read, the main one first.
    const std::vector<std::string>& Files() const { return files_; }

    /// URI of the main file's target namespace.
    const std::string& TargetNamespace() const { return namespaces_[targetNamespace_]; }
    const std::string& NamespaceUri(std::uint32_t id) const { return namespaces_[id]; }
    /// Identifier of a namespace, or kSchemaForeignNamespace.
    std::uint32_t NamespaceId(std::string_view uri) const;
    /// Symbol of an element name, or kSchemaNoSymbol.
    std::uint32_t SymbolOf(std::uint32_t namespaceId, std::string_view localName) const;

    /// Global elements in the order of their declaration, those of the main file first.
    const std::vector<const TSchemaElement*>& GlobalElements() const { return globalElements_; }
    /// The global element of a symbol, or null.
    const TSchemaElement* GlobalElement(std::uint32_t symbol) const;
    /// A named type, built-in ones (of the XML Schema namespace) included; null when there is none.
    const TSchemaSimpleType* FindSimpleType(std::uint32_t namespaceId, std::string_view name) const;
    const TSchemaComplexType* FindComplexType(std::uint32_t namespaceId, std::string_view name) const;
    /// The type of content that no declaration governs.
    const TSchemaComplexType& AnyType() const { return *anyType_; }

    /// All types, those declared in place included.
    const std::vector<std::unique_ptr<TSchemaSimpleType>>& SimpleTypes() const { return simpleTypes_; }
    const std::vector<std::unique_ptr<TSchemaComplexType>>& ComplexTypes() const { return complexTypes_; }

  private:
    friend class TSchemaReader;
    friend class TSchemaTables;

    struct TNameKey {
        std::uint32_t Namespace;
        std::string_view Name;
        bool operator==(const TNameKey&) const = default;
    };
    struct TNameHash {
        std::size_t operator()(const TNameKey& key) const {
            return std::hash<std::string_view>{}(key.Name) * 31 + key.Namespace;
        }
    };
    template<class T>
    using TNameMap = std::unordered_map<TNameKey, T, TNameHash>;

    TSchemaSet() = default;
    /// Enters global elements and named types under their names.
    void IndexNames();

    std::filesystem::path mainFile_;
    std::vector<std::string> files_;
    std::vector<std::string> namespaces_;
    std::uint32_t targetNamespace_ = kSchemaNoNamespace;
    std::vector<std::unique_ptr<std::string>> symbolNames_;
    TNameMap<std::uint32_t> symbols_;
    std::vector<const TSchemaElement*> globalElements_;
    std::vector<const TSchemaElement*> globalBySymbol_;
    TNameMap<const TSchemaSimpleType*> namedSimple_;
    TNameMap<const TSchemaComplexType*> namedComplex_;
    std::vector<std::unique_ptr<TSchemaSimpleType>> simpleTypes_;
    std::vector<std::unique_ptr<TSchemaComplexType>> complexTypes_;
    std::vector<std::unique_ptr<TSchemaElement>> elements_;
    std::vector<std::unique_ptr<TSchemaWildcard>> wildcards_;
    const TSchemaComplexType* anyType_ = nullptr;
};

} // namespace conferix
