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
class EInvalidSchemaModel : public std::runtime_error {
  public:
    /// Line 1-based.
    EInvalidSchemaModel(const std::string& file, int line, const std::string& reason);
};

/// The versions in which an entry of the model holds; without any range, all.
class TModelVersions {
  public:
    /// Adds a range, both ends included; an empty end is open.
    void Add(std::string first, std::string last);
    bool Contains(std::string_view version) const;

  private:
    struct TRange {
        std::string First;
        std::string Last;
    };
    std::vector<TRange> ranges_;
};

/// A word of the model with the versions in which it holds.
struct TModelTerm {
    std::string Text;
    TModelVersions Versions;
};

/// How often a child may stand. kModelUnbounded: any number.
struct TModelOccurs {
    std::uint32_t Min = 1;
    std::uint32_t Max = 1;
};
inline constexpr std::uint32_t kModelUnbounded = 0xFFFFFFFF;

/// A line below a type or element: a child, a group of children, or an attribute.
struct TModelNode {
    enum class TKind : std::uint8_t { Element, Reference, Sequence, Choice, All, Any, Attribute };
    TKind Kind = TKind::Element;
    std::string Name; ///< of a reference with its prefix
    TModelVersions Versions;
    std::vector<TModelTerm> Occurs; ///< as written; the first that holds counts
    std::vector<TModelTerm> Types;
    std::vector<TModelTerm> Bases; ///< types that the children go on from
    std::vector<TModelTerm> Nillable;
    bool Foreign = false; ///< of "qualquer": of another namespace
    bool Lax = false;     ///< of "qualquer": checked only if known
    std::vector<TModelNode> Children;
    int Line = 0;

    /// How often the child stands in a version.
    TModelOccurs OccursIn(std::string_view version) const;
};

/// A named type with child elements, or with a value and attributes.
struct TModelComplexType {
    std::string Name;
    std::string Value; ///< type of the value; empty when there are child elements
    bool Mixed = false;
    std::vector<TModelTerm> Bases;
    std::vector<TModelNode> Children;
    int Line = 0;
};

/// A limit of a simple type, as "tamanho" "1..20".
struct TModelLimit {
    std::string Name;
    TModelTerm Value;
};

struct TModelSimpleType {
    std::string Name;
    std::vector<TModelTerm> Bases;
    std::vector<TModelLimit> Limits;
    std::vector<TModelTerm> Codes; ///< one code each, runs written out
    int Line = 0;
};

/// The word that holds in a version, or null.
const TModelTerm* TermIn(const std::vector<TModelTerm>& terms, std::string_view version);

/// One model file: a series of versions of one kind of document.
class TSchemaModel {
  public:
    /// Reads a model file and those that it names, which lie beside it. Raises EInvalidSchemaModel,
    /// EFileNotRead.
    static std::shared_ptr<const TSchemaModel> Load(const std::filesystem::path& file);
    /// Reads a model from text; files that it names are looked for in `folder`.
    static std::shared_ptr<const TSchemaModel> Parse(std::string_view text, const std::string& name,
                                                     const std::filesystem::path& folder);

    const std::string& TargetNamespace() const { return targetNamespace_; }
    const std::string& Prefix() const { return prefix_; }
    /// Versions in the order of their publication; none for what is the same in all.
    const std::vector<std::string>& Versions() const { return versions_; }
    /// True for a version that was never published and is put together from its neighbours.
    bool IsApproximate(std::string_view version) const;
    /// Name of the version's XSD file.
    std::string FileName(std::string_view version) const;

    /// Global elements; the first is the root of the documents.
    const std::vector<TModelNode>& Elements() const { return elements_; }
    /// A type of this file or of the one whose types it shares; null when there is none.
    const TModelComplexType* ComplexType(std::string_view name) const;
    const TModelSimpleType* SimpleType(std::string_view name) const;
    const std::vector<TModelComplexType>& ComplexTypes() const { return complexTypes_; }
    /// The imported file of a prefix, or null.
    const TSchemaModel* Imported(std::string_view prefix) const;
    const std::map<std::string, std::shared_ptr<const TSchemaModel>, std::less<>>& Imports() const {
        return imports_;
    }

  private:
    friend class TModelReader;

    std::string fileName_;    ///< name of the model file
    std::string filePattern_; ///< of the XSD file, % for the version
    std::string targetNamespace_;
    std::string prefix_ = "ans";
    std::vector<std::string> versions_;
    std::vector<std::string> approximate_;
    std::vector<TModelNode> elements_;
    std::vector<TModelComplexType> complexTypes_;
    std::vector<TModelSimpleType> simpleTypes_;
    std::map<std::string, std::size_t, std::less<>> complexTypeByName_;
    std::map<std::string, std::size_t, std::less<>> simpleTypeByName_;
    std::shared_ptr<const TSchemaModel> shared_;
    std::map<std::string, std::shared_ptr<const TSchemaModel>, std::less<>> imports_;
};

/// The model files of a folder that describe versions, in the order of their names.
std::vector<std::shared_ptr<const TSchemaModel>> LoadSchemaModels(const std::filesystem::path& folder);

} // namespace conferix
