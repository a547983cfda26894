#pragma once

#include "xml/xml_message.h"

#include <string>
#include <string_view>

namespace conferix {

/// Colours of a terminal; without one, texts pass unchanged.
class TPalette {
  public:
    /// `terminal`: the stream is one. NO_COLOR in the environment, and a TERM of "dumb", switch colours off.
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

/// A text from outside (a name, a value) for people: in one line, and so that it cannot steer a terminal.
/// Control characters, direction marks and line separators stand as escapes, as "\x1B", "\n" or "\u202E", and
/// so do bytes that are no UTF-8.
std::string Visible(std::string_view text);

/// A message of several lines in one.
std::string OneLine(std::string_view text);

/// A message for people, made visible, whose further lines are indented by `indent` blanks. "\r\n" alone
/// breaks a line: the sentences of the program do it so, and what files hold has "\n".
std::string IndentLines(std::string_view text, std::size_t indent);

/// A count with its noun, as "1 erro", "2 erros".
std::string Counted(std::size_t count, std::string_view one, std::string_view many);

} // namespace conferix
