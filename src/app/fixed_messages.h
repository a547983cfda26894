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
    explicit THasIgnoredMessages(const TXmlMessages& hidden);

  protected:
    const char* ClassName() const override { return "THasIgnoredMessages"; }
};

} // namespace conferix
