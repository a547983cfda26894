#pragma once

#include <memory>
#include <string>

namespace conferix {

/// Name, description and required flag of a rule; shared by the rule and all its messages.
struct TValidationIdentity {
    std::string Name;        ///< dotted lower-case identifier
    std::string Description; ///< what the user reads in lists of rules
    bool Required = false;   ///< the user cannot switch the rule off
};

using IValidationIdentity = std::shared_ptr<const TValidationIdentity>;

} // namespace conferix
