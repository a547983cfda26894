#pragma once

#include <string>

namespace conferix {

/// The proxy that the settings of the system name for an address, as "server:port". Empty where they name
/// none, and where the environment does (https_proxy and the like), which alone counts on other systems.
std::string SystemProxy(const std::string& url);

} // namespace conferix
