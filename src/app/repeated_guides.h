// Guides that are billed in two files; a second bill is refused.
#pragma once

#include "app/validator_events.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

namespace conferix {

/// A guide of a lot, to be found again in other files.
struct TBilledGuide {
    std::string Key; ///< provider and number
    std::string Number;
    std::int32_t Line;
};

/// The guides of a lot of guides; none of any other file.
std::vector<TBilledGuide> BilledGuides(const TValidateArgs& result);

/// A guide of one provider that is in two files.
struct TRepeatedGuide {
    struct TPlace {
        std::size_t File; ///< the number that it was added with
        std::int32_t Line;

        auto operator<=>(const TPlace&) const = default;
    };

    std::string Number;
    TPlace First;
    TPlace Again;
};

/// The same with the names of the files.
struct TGuideInTwoFiles {
    std::string Number;
    std::string File;
    std::int32_t Line;
    std::string OtherFile; ///< which holds it as well
    std::int32_t OtherLine;

    /// What the user is told of it; the file stands before.
    std::string Text() const;
};

/// `names`: of the files, by their numbers.
std::vector<TGuideInTwoFiles> WithFileNames(const std::vector<TRepeatedGuide>& repeated,
                                            const std::vector<std::string>& names);

/// What the user is told of them, a sentence each; of many the first ones, and how many more there are.
std::vector<std::string> RepeatedGuideTexts(const std::vector<TGuideInTwoFiles>& repeated);

/// Finds the guides that are in more than one of several files.
class TRepeatedGuides {
  public:
    /// Files may come in any order.
    void Add(std::size_t file, const std::vector<TBilledGuide>& guides);
    /// What was found, each beside its first place, in the order of the files and lines.
    std::vector<TRepeatedGuide> Found() const;

  private:
    struct TBilled {
        std::string Number;
        TRepeatedGuide::TPlace First;
        std::vector<TRepeatedGuide::TPlace> Others;
    };

    std::unordered_map<std::string, TBilled> billed_; ///< by provider and number
};

} // namespace conferix
