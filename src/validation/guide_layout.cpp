#include "validation/guide_layout.h"

#include "schema_model/element_history.h"
#include "xml/xml_document.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <set>
#include <utility>
#include <vector>

namespace conferix {

namespace {

constexpr std::array<std::string_view, 5> kGuides = {"guiaConsulta", "guiaSP-SADT", "guiaResumoInternacao",
                                                     "guiaHonorarios", "guiaOdonto"};
/// So many layouts are looked into; a file of more has other troubles.
constexpr std::size_t kMostLayouts = 200;

/// A guide with more distinct paths is laid out like no version.
constexpr std::size_t kMostPaths = 5000;

/// The distinct paths of a guide, below those of the elements around it; none when they are too many.
TElementPaths PathsOf(const TXmlNode& guide) {
    std::vector<std::string_view> around;
    for (const TXmlNode* at = guide.Parent(); at != nullptr && at->IsTag(); at = at->Parent())
        around.push_back(at->LocalName());
    TElementPaths paths;
    for (auto name = around.rbegin(); name != around.rend(); ++name)
        paths.Entries.push_back({paths.Entries.empty() ? 0 : paths.Entries.size() - 1, *name});
    std::map<std::pair<std::size_t, std::string_view>, std::size_t> known;
    std::map<const TXmlNode*, std::size_t> entryOf;
    for (const TXmlNode* node = &guide; node != nullptr; node = node->NextInWalk(&guide)) {
        if (!node->IsTag())
            continue;
        const std::size_t parent = node == &guide ? (paths.Entries.empty() ? 0 : paths.Entries.size() - 1)
                                                  : entryOf.at(node->Parent());
        const auto [entry, added] = known.try_emplace({parent, node->LocalName()}, paths.Entries.size());
        if (added && paths.Entries.size() == kMostPaths)
            return {};
        if (added)
            paths.Entries.push_back({parent, node->LocalName()});
        if (node->FirstChildTag() != nullptr)
            entryOf[node] = entry->second;
    }
    return paths;
}

/// The kind of guide that a version would have these children of a guide in, when it is another than the
/// guide is; else empty. `around`: path of the element that holds the guides.
std::string_view KindOfContent(const std::string& schemaName, std::vector<std::string_view> around,
                               const TXmlNode& guide) {
    constexpr std::size_t kLeast = 3;
    constexpr std::size_t kForeign = 2;  // some kinds share most of their children
    constexpr std::size_t kMost = 100;   // no kind has so many
    std::set<std::string_view> children; // how often each comes tells nothing
    for (const TXmlNode& child : guide.ChildTags())
        if (children.insert(child.LocalName()).second && children.size() > kMost)
            return {};
    const auto knownIn = [&](std::string_view kind) {
        std::vector<std::string_view> path = around;
        path.insert(path.end(), {kind, {}});
        return static_cast<std::size_t>(std::ranges::count_if(children, [&](std::string_view name) {
            path.back() = name;
            return TElementHistory::BuiltIn().Knows(schemaName, path);
        }));
    };
    const std::size_t own = knownIn(guide.LocalName());
    for (const std::string_view kind : kGuides)
        if (kind != guide.LocalName() && children.size() >= kLeast && own + kForeign <= children.size() &&
            knownIn(kind) == children.size())
            return kind;
    return {};
}

} // namespace

std::string TGuideLayouts::Sentence(const TXmlNode& guide) {
    std::string key;
    const TElementPaths paths = PathsOf(guide);
    if (paths.Entries.empty())
        return {};
    for (const auto& [parent, name] : paths.Entries)
        key.append(std::to_string(parent)).append(" ").append(name).append("\n");
    if (const auto found = known_.find(key); found != known_.end())
        return found->second;
    if (known_.size() >= kMostLayouts)
        return {};
    return known_.emplace(std::move(key), Find(guide)).first->second;
}

std::string TGuideLayouts::Find(const TXmlNode& guide) const {
    const std::string other = TElementHistory::BuiltIn().VersionOfContent(schemaName_, PathsOf(guide), {});
    if (!other.empty())
        return fmt::format(
            "A guia está montada no leiaute da versão {}, e o arquivo declara a {}: monte-a no "
            "leiaute da {}, ou envie-a em um arquivo da {}.",
            other, version_, version_, other);
    std::vector<std::string_view> around;
    for (const TXmlNode* at = guide.Parent(); at != nullptr && at->IsTag(); at = at->Parent())
        around.insert(around.begin(), at->LocalName());
    const std::string_view kind = KindOfContent(schemaName_, std::move(around), guide);
    return kind.empty() ? std::string()
                        : fmt::format("A guia está montada como <{}>, mas está em <{}>: troque o nome do "
                                      "elemento ou monte a guia de novo.",
                                      kind, guide.LocalName());
}

} // namespace conferix
