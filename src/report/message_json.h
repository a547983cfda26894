#pragma once

#include "app/execute_solver.h"
#include "xml/xml_message.h"

#include <nlohmann/json.hpp>

#include <string>

namespace conferix {

/// Keys keep the order in which they are written.
using TJson = nlohmann::ordered_json;

/// The version of what the commands print as JSON; raised when a script would have to be changed.
inline constexpr int kJsonFormatVersion = 1;

/// A message as scripts read it. `number`: 1-based within the file; `shown`: the user is shown it without
/// asking for more.
TJson MessageJson(const TXmlMessage& message, std::size_t number, bool shown);

/// How many findings there are of each severity.
TJson CountsJson(const TMessageCounts& counts);

/// The text of a JSON value; bytes that are no UTF-8 (in file names) are replaced. `indent` -1: one line.
std::string JsonText(const TJson& json, int indent = 2);

/// The verdict of a validation: true, false, or null where the file could not be judged.
TJson VerdictJson(const TValidateArgs& result);

/// The text of a JSON object whose last member is an empty array, to which values are added one by one.
class TJsonList {
  public:
    /// `object`: as JsonText gives it with that indentation.
    TJsonList(std::string object, int indent);
    void Add(const TJson& value);
    /// The whole text, once.
    std::string Take();

  private:
    std::string text_;
    std::string end_; ///< what follows the values
    int indent_;
    bool empty_ = true;
};

/// A correction that was applied or left out: rule, place, element, values, and why it was left out.
TJson CorrectionJson(const TCorrectionRecord& record);

} // namespace conferix
