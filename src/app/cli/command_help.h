// What users read about the commands.
#pragma once

#include "app/cli/command_line.h"

#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// An environment variable that the program heeds, a file that it keeps, or a status that it ends with.
struct TNamedText {
    std::string Name;
    std::string Text;
};
std::vector<TNamedText> EnvironmentVariables();
std::vector<TNamedText> ProgramFiles();
/// What the statuses of a command say; those of all commands for the root.
std::vector<TNamedText> ExitStatuses(const TCommand& root, const TCommand& command);

/// A text in lines of 80 columns, all but the first indented. Empty lines part paragraphs.
std::string Wrapped(const std::string& text, std::size_t indent);
/// The names of an option or argument with the placeholder of its value, as "--ajuda, -h, --help".
std::string NamesOf(const TParameter& parameter);
/// The values that --formato takes in a command, as a sentence's part; of the root those of most commands.
std::string DescriptionOf(const TParameter& option, const TCommand& command);

/// The help of a command, a group or the root, for a terminal of 80 columns.
std::string HelpText(const TCommand& root, const TCommand& command);
/// The help of everything as Markdown (docs/comandos.md).
std::string HelpMarkdown(const TCommand& root);
/// The manual page conferix(1).
std::string ManualPage(const TCommand& root);
/// The script with which a shell ("bash", "zsh" or "fish") completes words.
std::string CompletionScript(const TCommand& root, std::string_view shell);

} // namespace conferix
