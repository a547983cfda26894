#pragma once

#include "xml/xml_message.h"

#include <string>
#include <string_view>

namespace conferix {

/// Colours of a terminal; without one, texts pass unchanged.
class TPalette {
  public:
    /// `terminal`: the stream is one. NO_COLOR in the environment switches colours off.
    explicit TPalette(bool terminal);
    std::string Bold(std::string_view text) const { return Paint("1", text); }
    std::string Dim(std::string_view text) const { return Paint("2", text); }
    std::string Severity(TMessageType type, std::string_view text) const;

  private:
    std::string Paint(std::string_view code, std::string_view text) const;
    bool enabled_;
};

/// What users call a severity.
std::string_view SeverityLabel(TMessageType type);
/// Identifier of a severity, as "mtError".
std::string_view NameOf(TMessageType type);

/// A text whose further lines are indented by `indent` blanks; every kind of line end becomes one "\n".
std::string IndentLines(std::string_view text, std::size_t indent);

/// A count with its noun, as "1 erro", "2 erros".
std::string Counted(std::size_t count, std::string_view one, std::string_view many);

} // namespace conferix
