#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// A file to validate, or what stands for something that no file came of.
struct TInput {
    std::string Name;    ///< "-": the standard input
    std::string Failure; ///< why it cannot be validated; empty for a file
};

/// The names in a list, each in a line of its own; where the list has NUL characters, between these. Empty
/// names and lines of blanks are none.
std::vector<std::string> NamesInList(std::string_view list);

/// What names of the command line stand for: a folder for its *.xml and *.xte files in order of their names,
/// with those of its subfolders on request. Each file comes once, at the first place where it is named.
std::vector<TInput> ExpandFolders(const std::vector<std::string>& names, bool withSubfolders);

} // namespace conferix
