#pragma once

#include <string>
#include <string_view>

namespace conferix {

/// The text with a last line that tells what the text before it was, by which a file that came with the
/// program is told from one that somebody changed or brought along.
/// `approximation`: the last line tells that too.
std::string WithSeal(std::string text, bool approximation = false);

/// True for a text that ends with a seal and is as it was when it was sealed.
bool HasIntactSeal(std::string_view text);

/// The same of a text that was sealed as an approximation.
bool IsSealedApproximation(std::string_view text);

} // namespace conferix
