#pragma once

#include "xml/schema/schema_fault.h"

#include <string>

namespace conferix {

/// The catalogue of the sentences that name schema faults to users.
class TSchemaMessages {
  public:
    /// A plain sentence that names the element, what was found and what is expected.
    static std::string Sentence(const TSchemaFault& fault);
};

} // namespace conferix
