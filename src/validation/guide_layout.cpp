#include "validation/guide_layout.h"

#include "schema_model/element_history.h"
#include "xml/bindings/lote_guias_names.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace conferix {

namespace {

/// So many layouts are looked into; a file of more has other troubles.
constexpr std::size_t kMostLayouts = 200;
/// A guide with more distinct paths is laid out like no version.
constexpr std::size_t kMostPaths = 1000;

/// The distinct paths in a guide; none when they are too many.
TElementPaths PathsIn(const TXmlNode& guide) {
    TElementPaths paths;
    paths.Entries.push_back({0, guide.LocalName()});
    std::map<std::pair<std::size_t, std::string_view>, std::size_t> known;
    std::map<const TXmlNode*, std::size_t> entryOf = {{&guide, 0}};
    for (const TXmlNode* node = guide.NextInWalk(&guide); node != nullptr; node = node->NextInWalk(&guide)) {
        if (!node->IsTag())
            continue;
        const std::size_t parent = entryOf.at(node->Parent());
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

/// Where a guide stands, then where guides of all kinds can stand in all versions.
std::vector<TElementHistory::THome> HomesOf(const TGuiaTissBase& guide) {
    const auto own = static_cast<std::size_t>(guide.TipoGuia());
    std::vector<TElementHistory::THome> homes = {{own, PathOf(*guide.Node())}};
    TPath lote = homes.front().Path;
    lote.erase(std::ranges::find(lote, "loteGuias"), lote.end());
    lote.emplace_back("loteGuias");
    const auto add = [&](const TLoteGuiasNames& names, const TPath& around) {
        for (std::size_t kind = 0; kind < kTiposGuia; ++kind)
            for (const TGuiaNames& guia : names.Guias[kind]) {
                homes.push_back({kind, around});
                homes.back().Path.push_back(guia.Elemento);
            }
    };
    for (const TLoteGuiasNames* names : {&kLoteGuiasV3_02, &kLoteGuiasV3_00, &kLoteGuiasV2}) {
        TPath around = lote;
        around.push_back(names->GuiasTiss);
        if (names->Grupos.empty())
            add(*names, around);
        for (const std::string_view grupo : names->Grupos) {
            TPath path = around;
            path.push_back(grupo);
            add(*names, path);
        }
    }
    return homes;
}

} // namespace

TPath PathOf(const TXmlNode& node) {
    TPath path;
    for (const TXmlNode* at = &node; at != nullptr && at->IsTag(); at = at->Parent())
        path.push_back(at->LocalName());
    std::ranges::reverse(path);
    return path;
}

std::string TGuideLayouts::Sentence(const TGuiaTissBase& guide) {
    std::string key = std::to_string(static_cast<int>(guide.TipoGuia()));
    const TElementPaths paths = PathsIn(*guide.Node());
    if (paths.Entries.empty())
        return {};
    for (const auto& [parent, name] : paths.Entries)
        key.append(std::to_string(parent)).append(" ").append(name).append("\n");
    if (const auto found = known_.find(key); found != known_.end())
        return found->second;
    if (known_.size() >= kMostLayouts)
        return {};
    return known_.emplace(std::move(key), Find(guide, paths)).first->second;
}

std::string TGuideLayouts::Find(const TGuiaTissBase& guide, const TElementPaths& paths) const {
    const TElementHistory& history = TElementHistory::BuiltIn();
    const std::vector<TElementHistory::THome> homes = HomesOf(guide);
    const auto layout = history.LayoutOfContent(schemaName_, paths, homes);
    if (!layout)
        return {};
    if (layout->Home->Kind == homes.front().Kind)
        return fmt::format(
            "A guia está montada no leiaute da versão {0}, e o arquivo declara a {1}: monte-a no "
            "leiaute da {1}, ou envie-a em um arquivo da {0}.",
            layout->Version, version_);
    const auto here = std::ranges::find_if(homes, [&](const TElementHistory::THome& home) {
        return home.Kind == layout->Home->Kind && history.Knows(schemaName_, home.Path);
    });
    const std::string_view kind = (here != homes.end() ? *here : *layout->Home).Path.back();
    const std::string_view name = guide.Node()->LocalName();
    if (layout->Version == version_)
        return fmt::format(
            "A guia está montada como <{}>, mas está em <{}>: troque o nome do elemento ou monte "
            "a guia de novo.",
            kind, name);
    return fmt::format(
        "A guia está montada no leiaute da versão {0} e como <{1}>, mas está em <{2}> de um "
        "arquivo que declara a {3}: monte-a de novo no leiaute da {3}, em <{4}>, ou ponha-a em "
        "<{1}> de um arquivo da {0}.",
        layout->Version, layout->Home->Path.back(), name, version_, kind);
}

} // namespace conferix
