// Named parameters of SQL statements.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace conferix {

/// A parameter of a statement: its name (without prefix) and its value, absent for NULL.
struct TDBParam {
    std::string Name;
    std::optional<std::string> Value;

    /// The value to be shown to people; "NULL" when there is none.
    std::string ValueText() const;
};

/// Helpers over lists of parameters.
class TDBUtils {
  public:
    /// Makes the names of a statement's parameters unique: a name that occurred before gets "_1",
    /// "_2", ..., leaving out names that another parameter has.
    static void MakeNamesUnique(std::vector<TDBParam>& params);

    /// "NAME = value, NAME = NULL", for error messages.
    static std::string Describe(const std::vector<TDBParam>& params);
};

} // namespace conferix
