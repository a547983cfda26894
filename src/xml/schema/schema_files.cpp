#include "xml/schema/schema_files.h"

#include "platform/platform.h"
#include "platform/portable_name.h"
#include "xml/schema/schema_set.h"
#include "xml/xml_encoding.h"
#include "xml/xml_parser.h"

#include <optional>

namespace conferix {

namespace {

constexpr std::size_t kMaxFiles = 200;

std::string ReadBytes(const std::filesystem::path& path, const std::string& name) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        throw ESchemaInvalido(name, 0, "o arquivo não existe ou não pode ser aberto");
    try {
        return ReadWholeFile(path);
    } catch (const EFileNotRead&) {
        throw ESchemaInvalido(name, 0, "o arquivo não pode ser lido");
    }
}

std::string FileName(const std::filesystem::path& path) {
    const std::u8string text = path.filename().u8string();
    return {text.begin(), text.end()};
}

struct TVersionedName {
    std::string_view Stem; ///< up to and including the V
    std::string_view Version;
};

/// Takes "tissSimpleTypesV4_03_00.xsd" apart; nothing for names of another form.
std::optional<TVersionedName> SplitVersion(std::string_view name) {
    if (!name.ends_with(".xsd"))
        return std::nullopt;
    name.remove_suffix(4);
    const std::size_t mark = name.find_last_of("Vv");
    if (mark == std::string_view::npos)
        return std::nullopt;
    const std::string_view version = name.substr(mark + 1);
    if (version.empty() || version.find_first_not_of("0123456789_.") != std::string_view::npos)
        return std::nullopt;
    return TVersionedName{name.substr(0, mark + 1), version};
}

/// The name at the end of a location, whatever path or address stands before it; empty for none that is a
/// file's.
std::string_view BareName(std::string_view location) {
    location = TrimXmlSpace(location);
    if (const std::size_t slash = location.find_last_of("/\\"); slash != std::string_view::npos)
        location.remove_prefix(slash + 1);
    if (location == "." || location == ".." || location.find('\0') != std::string_view::npos ||
        !IsPortableName(location))
        return {};
    return location;
}

} // namespace

std::vector<std::string> ReferencedSchemas(const std::string& bytes) {
    std::vector<std::string> names;
    std::shared_ptr<TXmlDocument> document;
    try {
        document = TXmlParser::Parse(DecodeXml(bytes).Text, TXmlDoctype::Ignored).Document;
    } catch (const EXmlEncoding&) {
        return names;
    }
    if (document == nullptr)
        return names;
    for (const TXmlNode& node : document->Element()->ChildTags())
        if (node.LocalName() == "include" || node.LocalName() == "import")
            if (const TXmlAttribute* location = node.Attribute("schemaLocation"))
                if (const std::string_view name = BareName(location->Value()); !name.empty())
                    names.emplace_back(name);
    return names;
}

std::string StandInForSchema(std::string_view fileName, std::string_view mainFileName) {
    const auto split = SplitVersion(fileName);
    const auto main = SplitVersion(mainFileName);
    return split && main ? std::string(split->Stem) + std::string(main->Version) + ".xsd" : std::string();
}

ESchemaInvalido::ESchemaInvalido(const std::string& file, std::int32_t line, const std::string& reason)
    : std::runtime_error("Esquema " + file + (line > 0 ? ", linha " + std::to_string(line) : std::string()) +
                         ": " + reason) {}

ESchemaInvalido::ESchemaInvalido(const ESchemaInvalido& error, const std::filesystem::path& folder)
    : std::runtime_error(std::string(error.what()) + " (pasta " + PathText(folder) + ")") {}

TSchemaFile::TSchemaFile(const std::filesystem::path& path) : path_(path), name_(FileName(path)) {
    try {
        TXmlText text = DecodeXml(ReadBytes(path, name_));
        TXmlParseResult parsed = TXmlParser::Parse(std::move(text.Text), TXmlDoctype::Ignored);
        if (!parsed.Document) {
            const auto& messages = parsed.Messages;
            throw ESchemaInvalido(name_, messages.empty() ? 0 : messages.front()->Line(),
                                  messages.empty() ? "o XML não pode ser lido" : messages.front()->Reason());
        }
        document_ = std::move(parsed.Document);
    } catch (const EXmlEncoding& error) {
        throw ESchemaInvalido(name_, error.Message()->Line(), error.Message()->Reason());
    }
    schema_ = document_->Element();
    for (const TXmlNode* node = schema_; node != nullptr; node = node->NextInWalk(schema_)) {
        if (!node->IsTag())
            continue;
        for (const TXmlAttribute& attribute : node->Attributes()) {
            if (attribute.QualifiedName() == "xmlns")
                declarations_[node][""] = attribute.Value();
            else if (attribute.Name().Prefix == "xmlns")
                declarations_[node][attribute.Name().Local] = attribute.Value();
        }
    }
    rootOnly_ = declarations_.size() == 1 && declarations_.contains(schema_);
    ReadHeader();
}

void TSchemaFile::ReadHeader() {
    if (!IsXsd(*schema_) || schema_->LocalName() != "schema")
        Fail(*schema_, "a raiz <" + std::string(schema_->LocalName()) + "> não é um esquema XML");
    const auto value = [this](std::string_view name, std::string_view byDefault) {
        const TXmlAttribute* attribute = schema_->Attribute(name);
        return attribute != nullptr ? attribute->Value() : byDefault;
    };
    const std::string_view form = value("elementFormDefault", "unqualified");
    if (form != "qualified" && form != "unqualified")
        Fail(*schema_, "valor inválido de elementFormDefault");
    elementsQualified_ = form == "qualified";
    if (value("attributeFormDefault", "unqualified") != "unqualified")
        Fail(*schema_, "attributeFormDefault diferente de \"unqualified\" não é suportado");
    targetNamespace_ = value("targetNamespace", {});
}

const std::string_view* TSchemaFile::FindPrefix(const TXmlNode& node, std::string_view prefix) const {
    for (const TXmlNode* scope = rootOnly_ ? schema_ : &node; scope != nullptr; scope = scope->Parent()) {
        const auto declared = declarations_.find(scope);
        if (declared == declarations_.end())
            continue;
        if (const auto found = declared->second.find(prefix); found != declared->second.end())
            return &found->second;
    }
    return nullptr;
}

bool TSchemaFile::IsXsd(const TXmlNode& node) const {
    const std::string_view* uri = FindPrefix(node, node.Prefix());
    return uri != nullptr && *uri == kXsdNamespace;
}

TSchemaReference TSchemaFile::Resolve(const TXmlNode& node, std::string_view qualified) const {
    qualified = TrimXmlSpace(qualified);
    const std::size_t colon = qualified.find(':');
    const bool prefixed = colon != std::string_view::npos;
    const std::string_view prefix = prefixed ? qualified.substr(0, colon) : std::string_view{};
    const std::string_view local = prefixed ? qualified.substr(colon + 1) : qualified;
    if (const std::string_view* uri = FindPrefix(node, prefix))
        return {*uri, local};
    if (prefix == "xml")
        return {kXmlNamespace, local};
    if (prefixed)
        Fail(node, "o prefixo \"" + std::string(prefix) + "\" não foi declarado");
    return {{}, local};
}

void TSchemaFile::Fail(const TXmlNode& node, const std::string& reason) const {
    throw ESchemaInvalido(name_, node.Line(), reason);
}

TSchemaFiles::TSchemaFiles(const std::filesystem::path& mainFile) : folder_(mainFile.parent_path()) {
    mainName_ = FileName(mainFile);
    Add(mainFile);
    // The list grows while it is read; each file stands in it once, so circles end.
    for (std::size_t i = 0; i < files_.size(); ++i) {
        const TSchemaFile& file = *files_[i];
        for (const TXmlNode& node : file.Schema().ChildTags())
            if (file.IsXsd(node) && (node.LocalName() == "include" || node.LocalName() == "import"))
                Follow(file, node);
    }
}

void TSchemaFiles::Follow(const TSchemaFile& from, const TXmlNode& node) {
    const bool include = node.LocalName() == "include";
    const TXmlAttribute* location = node.Attribute("schemaLocation");
    if (location == nullptr) {
        if (include)
            from.Fail(node, "<include> sem schemaLocation");
        return;
    }
    const std::filesystem::path path = Locate(location->Value());
    if (path.empty())
        return;
    const TSchemaFile& added = Add(path);
    const TXmlAttribute* wanted = node.Attribute("namespace");
    const std::string_view expected = include             ? std::string_view(from.TargetNamespace())
                                      : wanted != nullptr ? wanted->Value()
                                                          : std::string_view{};
    if (added.TargetNamespace() != expected)
        from.Fail(node, "o arquivo " + added.Name() + " é de outro namespace (\"" + added.TargetNamespace() +
                            "\")");
}

/// The file, read unless it was met before.
const TSchemaFile& TSchemaFiles::Add(const std::filesystem::path& path) {
    const std::string name = FileName(path);
    for (const auto& file : files_)
        if (file->Name() == name)
            return *file;
    if (files_.size() >= kMaxFiles)
        throw ESchemaInvalido(name, 0, "o esquema reúne arquivos demais");
    return *files_.emplace_back(std::make_unique<TSchemaFile>(path));
}

/// The file of the folder that a location means, whatever path or address it writes before the name. One
/// that was never published stands for the file of the main schema's own version; empty when there is none.
std::filesystem::path TSchemaFiles::Locate(std::string_view location) const {
    location = BareName(location);
    if (location.empty())
        return {};
    const auto inFolder = [this](std::string_view name) {
        return folder_ / std::filesystem::path(std::u8string(name.begin(), name.end()));
    };
    std::error_code error;
    if (auto path = inFolder(location); std::filesystem::exists(path, error))
        return path;
    if (const std::string standIn = StandInForSchema(location, mainName_); !standIn.empty())
        if (auto path = inFolder(standIn); std::filesystem::exists(path, error))
            return path;
    return {};
}

} // namespace conferix
