// The page of the service, for people with a browser.
#pragma once

#include "service/http_message.h"

#include <cstddef>
#include <string_view>

namespace conferix {

/// GET /: one page without outside references, on which files are chosen, judged and corrected; without
/// scripts by its form. `bodyBytes`: the largest body that the service takes.
TServiceAnswer ServicePage(std::size_t bodyBytes);

/// A refusal for who sent the form of the page and reads HTML; for others it is left to ErrorAnswer().
TServiceAnswer RefusalPage(unsigned status, std::string_view text);
/// Whether a request comes from such a form.
bool IsFromBrowserForm(const THttpRequest& request);

} // namespace conferix
