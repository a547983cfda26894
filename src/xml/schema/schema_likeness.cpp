#include "xml/schema/schema_likeness.h"

#include "xml/name_likeness.h"

#include <algorithm>

namespace conferix {

namespace {

constexpr std::size_t kMaxComparedCode = 64;
constexpr std::size_t kSimilarShown = 5;

std::string_view WithoutZeros(std::string_view code) {
    const std::size_t digits = code.find_first_not_of('0');
    return digits == std::string_view::npos ? code.substr(code.empty() ? 0 : code.size() - 1)
                                            : code.substr(digits);
}

/// The letters and digits of a code as people write it: "3.01" and "301-" are 301.
std::string Bare(std::string_view code) {
    std::string bare;
    for (const char c : code)
        if (c != '.' && c != '-' && c != '/' && !IsXmlSpace(c))
            bare += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return bare;
}

std::size_t CommonPrefix(std::string_view left, std::string_view right) {
    const auto end = std::mismatch(left.begin(), left.end(), right.begin(), right.end()).first;
    return static_cast<std::size_t>(end - left.begin());
}

} // namespace

TLikelyCodes LikelyCodes(std::span<const std::string> codes, std::string_view value) {
    TLikelyCodes result;
    const std::string bare = Bare(value);
    if (bare.empty() || bare.size() > kMaxComparedCode)
        return result;
    const std::string_view digits = WithoutZeros(bare);
    struct TNear {
        std::size_t Distance;
        std::size_t Prefix;
        const std::string* Code;
    };
    std::vector<TNear> near;
    for (const std::string& code : codes) {
        const std::string other = Bare(code);
        if (result.Meant.empty() && !other.empty() && WithoutZeros(other) == digits)
            result.Meant = code;
        // A third of the letters may differ; of codes of two letters half the list would be alike.
        const std::size_t limit = bare.size() / 3;
        const std::size_t distance = EditDistance(other, bare, limit);
        if (limit > 0 && distance <= limit)
            near.push_back({distance, CommonPrefix(other, bare), &code});
    }
    std::stable_sort(near.begin(), near.end(), [](const TNear& left, const TNear& right) {
        return left.Distance != right.Distance ? left.Distance < right.Distance : left.Prefix > right.Prefix;
    });
    for (std::size_t i = 0; i < std::min(near.size(), kSimilarShown); ++i)
        result.Similar.push_back(*near[i].Code);
    return result;
}

} // namespace conferix
