#pragma once

#include "support/parsed.h"
#include "support/published_schemas.h"
#include "support/test_files.h"

#include "xml/schema/schema_set.h"
#include "xml/schema/schema_validator.h"

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// A schema file around declarations: prefix xs for XML Schema, t for the target namespace "urn:t", in
/// which all local elements are.
std::string SchemaText(std::string_view declarations);

/// The set of one schema file made of declarations. Raises ESchemaInvalido.
std::shared_ptr<const TSchemaSet> LoadDeclarations(std::string_view declarations);

/// The schemas of a folder that documents are judged by, in the order of their names; without what they
/// include.
std::vector<std::filesystem::path> MainSchemas(const std::filesystem::path& folder);

/// The sentences of a document's faults, each after its line: "3: O elemento ...".
std::vector<std::string> Sentences(const TSchemaSet& set, std::string_view text);

} // namespace conferix
