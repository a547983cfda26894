// Texts as people compare them.
#pragma once

#include <string>
#include <string_view>

namespace conferix {

/// A text in lower case, without accents, every run of other characters than letters and digits one
/// blank: "Código  do_Termo" gives "codigo do termo". Bytes that are no UTF-8 count as other characters.
std::string PlainText(std::string_view text);

} // namespace conferix
