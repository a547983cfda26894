#pragma once

#include "app/validador_controller.h"
#include "validation/validation_message.h"

#include <cstddef>
#include <vector>

namespace conferix {

/// Ends the list of a file without errors.
class TValidTissFile : public TXmlMessage {
  public:
    TValidTissFile();
};

/// Tells how many messages of switched-off rules are not shown.
class THasIgnoredMessages : public TValidationMessage {
  public:
    /// `unlisted`: number of those that the list does not hold.
    explicit THasIgnoredMessages(const TXmlMessages& hidden, std::size_t unlisted = 0);

  protected:
    const char* ClassName() const override { return "THasIgnoredMessages"; }
};

/// Tells how many findings the list does not hold, and of which rules.
class TUnlistedMessages : public TXmlMessage {
  public:
    TUnlistedMessages(const std::vector<TUnkeptFindings>& unlisted, const TFindingLimits& limits);
};

} // namespace conferix
