#pragma once

#include "forms/form_printer.h"

#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace conferix {

/// Guides chosen by numbers: the provider's, which messages and listings show. A number that no guide of a
/// file has so chooses those that have it as the health plan's.
class TGuideNumbers {
  public:
    /// `numbers`: empty for all guides.
    explicit TGuideNumbers(std::span<const std::string> numbers) : wanted_(numbers.begin(), numbers.end()) {}

    bool IsAll() const { return wanted_.empty(); }
    /// Those of the guides of one file that are chosen.
    std::vector<TFormGuide> Choose(std::vector<TFormGuide> guides);

    /// Health plan's numbers that guides were found by, each with the guide's number.
    const std::map<std::string, std::string>& FoundByOperator() const { return byOperator_; }
    /// Numbers that no guide has had so far.
    std::vector<std::string> Missing() const;

  private:
    std::set<std::string> wanted_;
    std::set<std::string> found_;
    std::map<std::string, std::string> byOperator_;
};

} // namespace conferix
