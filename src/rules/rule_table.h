// The table of all rules, from which the tree of a run is made.
#pragma once

#include "rules/run_context.h"
#include "validation/validation.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace conferix {

inline constexpr bool kRequired = true;  ///< the user cannot switch the rule off
inline constexpr bool kOptional = false; ///< the user can

/// Rules in the order of the tree: each row registers a rule and places it. Made once, immutable then.
class TRuleTable {
  public:
    /// Adds a rule of the class Rule after the other children of `parent`, which stands in the table already
    /// (empty: the rule is a root). A name that begins with a point goes after the parent's. `arguments`:
    /// what the class's constructor takes after the run.
    template<class Rule, class... Arguments>
    void Add(std::string_view parent, std::string_view name, std::string_view description, bool required,
             Arguments... arguments) {
        AddRow(parent, name, description, required, [arguments...](const TRunContextPtr& run) {
            if constexpr (std::is_constructible_v<Rule, const TRunContextPtr&, Arguments...>)
                return std::make_shared<Rule>(run, arguments...);
            else // a rule that needs nothing of the run
                return std::make_shared<Rule>(arguments...);
        });
    }

    /// Names of the roots, in order.
    const std::vector<std::string>& Roots() const { return roots_; }
    /// Makes the rule of that name with the whole tree below it. Raises std::out_of_range for an unknown
    /// name.
    std::shared_ptr<TValidation> MakeValidation(const std::string& name, const TRunContextPtr& run) const;
    /// The same without the rules below it.
    std::shared_ptr<TValidation> MakeAlone(const std::string& name, const TRunContextPtr& run) const;

  private:
    using TMake = std::function<std::shared_ptr<TValidation>(const TRunContextPtr&)>;
    struct TRow {
        IValidationIdentity Identity;
        TMake Make;
        std::vector<std::string> Children;
    };

    void AddRow(std::string_view parent, std::string_view name, std::string_view description, bool required,
                TMake make);
    /// Makes the children of a rule, in the order of their rows.
    void CreateValidations(TValidation& parent, const TRow& row, const TRunContextPtr& run) const;

    std::map<std::string, TRow, std::less<>> rows_;
    std::vector<std::string> roots_;
};

} // namespace conferix

/// A row of the table `rules`: a rule of its own class, which is its check under this name.
/// RULE(class, parent, name, description, kRequired or kOptional, class of the check, its arguments...)
#define RULE(Class, Parent, Name, Description, Required, Check, ...)                                         \
    class Class final : public Check {                                                                       \
        using TCheck = Check;                                                                                \
                                                                                                             \
      public:                                                                                                \
        using TCheck::TCheck;                                                                                \
    };                                                                                                       \
    rules.Add<Class>(Parent, Name, Description, Required __VA_OPT__(, ) __VA_ARGS__)
