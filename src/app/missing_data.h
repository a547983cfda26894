#pragma once

#include "xml/xml_message.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace conferix {

/// What is not installed that a validation would have needed.
enum class TMissingData : std::uint8_t { Nothing, Terminology, Schema };

/// What a message says is missing, so that the user can be led to where it is imported.
TMissingData MissingDataOf(const TXmlMessage& message);

/// What to do about a schema file that is not there.
std::string MissingSchemaText(const std::filesystem::path& schema);

/// A text of a message for the window: where it names a command to be typed, the menu that does the same.
std::string TextForWindow(std::string text);

} // namespace conferix
