#pragma once

#include "xml/schema/schema_fault.h"

#include <string>
#include <string_view>

namespace conferix {

/// The catalogue of the sentences that name schema faults to users.
class TSchemaMessages {
  public:
    /// A plain sentence that names the element, what was found and what is expected.
    static std::string Sentence(const TSchemaFault& fault);
};

/// A text cut to a number of characters (code points), marked when it was cut.
std::string CutText(std::string_view text, std::size_t characters);

} // namespace conferix
