#pragma once

#include "app/file_validation.h"
#include "report/message_json.h"
#include "validation/solver.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace conferix {

/// A text as SARIF holds it, with the line breaks that viewers know.
TJson SarifMessage(std::string_view text);

/// The corrections of one file as SARIF's fixes: each replaces the value that it changes or, of the first
/// corrections of structure of a file that is not too large, the part of the text that becomes another.
class TSarifFixes {
  public:
    /// `file` has to outlive this.
    TSarifFixes(const TFileResult& file, std::string uri) : file_(file), uri_(std::move(uri)) {}

    /// An array, empty for none.
    TJson Of(const TXmlMessage& message);

  private:
    std::optional<TJson> ValueChange(const ISolver& solver) const;
    std::optional<TJson> StructureChange(const TXmlMessage& message, std::size_t solver);

    const TFileResult& file_;
    std::string uri_;
    std::size_t solved_ = 0;
};

} // namespace conferix
