#pragma once

#include "xml/xml_document.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace conferix {

inline constexpr std::string_view kXsdNamespace = "http://www.w3.org/2001/XMLSchema";
inline constexpr std::string_view kXsiNamespace = "http://www.w3.org/2001/XMLSchema-instance";
inline constexpr std::string_view kXmlNamespace = "http://www.w3.org/XML/1998/namespace";
inline constexpr std::string_view kSignatureNamespace = "http://www.w3.org/2000/09/xmldsig#";

/// A name as a schema refers to it, its prefix resolved.
struct TSchemaReference {
    std::string_view Uri;
    std::string_view Local;
};

/// One schema file in memory.
class TSchemaFile {
  public:
    /// Reads and parses the file. Raises ESchemaInvalido.
    explicit TSchemaFile(const std::filesystem::path& path);

    const std::filesystem::path& Path() const { return path_; }
    const std::string& Name() const { return name_; }
    const TXmlNode& Schema() const { return *schema_; }
    const std::string& TargetNamespace() const { return targetNamespace_; }
    bool ElementsQualified() const { return elementsQualified_; }

    /// True for an element of XML Schema itself.
    bool IsXsd(const TXmlNode& node) const;
    /// Resolves a qualified name that stands in an attribute of the node. Raises ESchemaInvalido when its
    /// prefix is not declared.
    TSchemaReference Resolve(const TXmlNode& node, std::string_view qualified) const;

    [[noreturn]] void Fail(const TXmlNode& node, const std::string& reason) const;

  private:
    void ReadHeader();
    const std::string_view* FindPrefix(const TXmlNode& node, std::string_view prefix) const;

    std::filesystem::path path_;
    std::string name_;
    std::shared_ptr<TXmlDocument> document_;
    const TXmlNode* schema_ = nullptr;
    std::string targetNamespace_;
    bool rootOnly_ = false; ///< no element but the root declares prefixes
    bool elementsQualified_ = false;
    /// Prefix declarations by the node that carries them.
    std::unordered_map<const TXmlNode*, std::map<std::string_view, std::string_view>> declarations_;
};

/// Names of the files that the bytes of a schema file include or import; none for bytes that are no schema.
std::vector<std::string> ReferencedSchemas(const std::string& bytes);

/// The file that stands for one that was never published, in a set whose main file has that name:
/// "tissSimpleTypesV4_01_00.xsd" for that of V4_01_01 where the main file is of V4_01_00. Empty when there is
/// none.
std::string StandInForSchema(std::string_view fileName, std::string_view mainFileName);

/// The main schema file and everything that it includes and imports, in the order in which they are met.
/// Only files of the main one's folder are read.
class TSchemaFiles {
  public:
    explicit TSchemaFiles(const std::filesystem::path& mainFile);

    const std::vector<std::unique_ptr<TSchemaFile>>& All() const { return files_; }

  private:
    void Follow(const TSchemaFile& from, const TXmlNode& node);
    const TSchemaFile& Add(const std::filesystem::path& path);
    std::filesystem::path Locate(std::string_view location) const;

    std::filesystem::path folder_;
    std::string mainName_;
    std::vector<std::unique_ptr<TSchemaFile>> files_;
};

} // namespace conferix
