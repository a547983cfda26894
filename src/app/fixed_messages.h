#pragma once

#include "validation/validation_message.h"

namespace conferix {

/// Ends the list of a file without errors.
class TValidTissFile : public TXmlMessage {
  public:
    TValidTissFile();
};

/// Tells how many messages of switched-off rules are not shown.
class THasIgnoredMessages : public TValidationMessage {
  public:
    /// `counted`: how many more there are that were not kept.
    explicit THasIgnoredMessages(const TXmlMessages& hidden, std::size_t counted = 0);

  protected:
    const char* ClassName() const override { return "THasIgnoredMessages"; }
};

} // namespace conferix
