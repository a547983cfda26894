#include "xml/schema/schema_set.h"

#include "platform/file_memory.h"
#include "platform/platform.h"
#include "platform/whole_path.h"
#include "xml/schema/schema_files.h"
#include "xml/schema/schema_reader.h"
#include "xml/schema/schema_tables.h"

#include <algorithm>

namespace conferix {

std::shared_ptr<const TSchemaSet> TSchemaSet::Load(const std::filesystem::path& mainFile) {
    // Never destroyed: taking all tables apart at the end of the process would be work for nothing.
    static auto& memory = *new TFileMemory<std::shared_ptr<const TSchemaSet>>;
    const std::filesystem::path path = CanonicalPath(mainFile);
    const std::string name = PathText(path);
    if (auto known = memory.Find(name))
        return *known;
    std::shared_ptr<const TSchemaSet> set = TSchemaTables::Read(path);
    if (set == nullptr)
        set = TSchemaReader::Read(TSchemaFiles(path), path);
    std::vector<TSeenFile> stamps;
    for (const std::string& file : set->Files())
        stamps.push_back(SeeFile(path.parent_path() / PathFromText(file)));
    memory.Keep(name, std::move(stamps), set);
    return set;
}

void TSchemaSet::IndexNames() {
    globalBySymbol_.assign(symbols_.size(), nullptr);
    for (const TSchemaElement* element : globalElements_)
        globalBySymbol_[element->Symbol] = element;
    for (const auto& type : simpleTypes_)
        if (!type->Name.empty())
            namedSimple_.emplace(TNameKey{type->Namespace, type->Name}, type.get());
    for (const auto& type : complexTypes_)
        if (!type->Name.empty())
            namedComplex_.emplace(TNameKey{type->Namespace, type->Name}, type.get());
}

std::uint32_t TSchemaSet::NamespaceId(std::string_view uri) const {
    const auto found = std::find(namespaces_.begin(), namespaces_.end(), uri);
    return found != namespaces_.end() ? static_cast<std::uint32_t>(found - namespaces_.begin())
                                      : kSchemaForeignNamespace;
}

std::uint32_t TSchemaSet::SymbolOf(std::uint32_t namespaceId, std::string_view localName) const {
    const auto found = symbols_.find({namespaceId, localName});
    return found != symbols_.end() ? found->second : kSchemaNoSymbol;
}

const TSchemaElement* TSchemaSet::GlobalElement(std::uint32_t symbol) const {
    return symbol < globalBySymbol_.size() ? globalBySymbol_[symbol] : nullptr;
}

const TSchemaSimpleType* TSchemaSet::FindSimpleType(std::uint32_t namespaceId, std::string_view name) const {
    const auto found = namedSimple_.find({namespaceId, name});
    return found != namedSimple_.end() ? found->second : nullptr;
}

const TSchemaComplexType* TSchemaSet::FindComplexType(std::uint32_t namespaceId,
                                                      std::string_view name) const {
    const auto found = namedComplex_.find({namespaceId, name});
    return found != namedComplex_.end() ? found->second : nullptr;
}

} // namespace conferix
