// Lots made from the schemas.
#pragma once

#include "schema_model/built_in_folders.h"
#include "xml/schema/schema_generator.h"

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace conferix {

/// The schema of a version of messages.
inline std::shared_ptr<const TSchemaSet> SchemaOfVersion(std::string versao) {
    std::replace(versao.begin(), versao.end(), '.', '_');
    return TSchemaSet::Load(BuiltInSchemaFolder() / ("tissV" + versao + ".xsd"));
}

inline TGeneratedNode* FindGenerated(TGeneratedNode& node, std::string_view name) {
    if (node.Name == name)
        return &node;
    for (const auto& child : node.Children)
        if (TGeneratedNode* found = FindGenerated(*child, name))
            return found;
    return nullptr;
}

/// A valid lot of one version with guides of one kind, and the generator that made it.
inline std::pair<TSchemaGenerator, std::unique_ptr<TGeneratedNode>>
MakeLotTree(const TSchemaSet& set, const std::string& versao, const std::string& guide, std::uint64_t& seed) {
    while (true) {
        TSchemaGenerator generator(set, ++seed);
        generator.Prefer({"prestadorParaOperadora", "loteGuias", "guiaFaturamento", guide,
                          "procedimentosExecutados", "outrasDespesas"});
        auto tree = generator.Document();
        if (FindGenerated(*tree, guide) == nullptr)
            continue;
        FindGenerated(*tree, "tipoTransacao")->Text = "ENVIO_LOTE_GUIAS";
        TGeneratedNode* version = FindGenerated(*tree, "Padrao");
        (version != nullptr ? version : FindGenerated(*tree, "versaoPadrao"))->Text = versao;
        return {std::move(generator), std::move(tree)};
    }
}

} // namespace conferix
