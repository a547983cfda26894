#pragma once

#include <string>
#include <string_view>

namespace conferix {

/// The differences of two texts as a unified diff with three lines of context; empty for equal texts. Lines
/// end with "\n". Texts of equally many lines are compared line by line; others by the longest common
/// subsequence of the part that differs, where that part is not too long, else as one block.
std::string UnifiedDiff(std::string_view before, std::string_view after, const std::string& beforeName,
                        const std::string& afterName);

} // namespace conferix
