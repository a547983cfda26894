#pragma once

#include "app/config.h"
#include "validator/rule_list.h"

#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// A switch that was refused; the text is for the user.
class ERuleNotSwitched : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// The same for a name to which no rule's is near.
class EUnknownRule : public ERuleNotSwitched {
  public:
    using ERuleNotSwitched::ERuleNotSwitched;
};

/// The dialog that switches rules on and off, without its window: what is checked, what may be unchecked,
/// what changes with it, and what is asked on closing. Changes stay here until Config() is saved.
class TConfiguracaoValidacoes {
  public:
    static constexpr std::string_view kTitle = "Ativar/Desativar Validações";
    static constexpr std::string_view kInstruction =
        "Marque as validações que você deseja ativar e desmarque as que você deseja desativar.";
    static constexpr std::string_view kQuestionTitle = "Confirmação";
    static constexpr std::string_view kQuestion = "As alterações realizadas não serão salvas. Confirma?";

    /// Told of each rule that was switched, after it was.
    using TOnSwitch = std::function<void(const std::string& name, bool on)>;

    explicit TConfiguracaoValidacoes(TConfig config, TOnSwitch onSwitch = {});

    /// The nodes of the dialog's tree: identity and depth, in pre-order. Nodes are named by their index.
    const std::vector<TListedRule>& Rules() const { return rules_; }
    /// The node to be selected when the dialog opens on a rule; nothing for an empty or unknown name.
    std::optional<std::size_t> Find(std::string_view name) const { return FindRule(rules_, name); }
    bool Checked(std::size_t node) const { return config_.IsEnabled(rules_[node].Rule->Name); }

    /// Why a node cannot be unchecked; empty when it can.
    std::string Refusal(std::size_t node) const;
    /// Checks or unchecks a node, and with it the optional rules below it. Raises ERuleNotSwitched for what
    /// Refusal refuses, after which nothing has changed. Answers the nodes whose state is another now.
    std::vector<std::size_t> SetChecked(std::size_t node, bool checked);
    /// The same by the name of a rule, or by an end of it that no other has. Raises ERuleNotSwitched also for
    /// a name that is no rule's.
    std::vector<std::size_t> SetChecked(const std::string& name, bool checked);

    /// True once a node has changed: closing without saving asks kQuestion then, and "Não" stays.
    bool Changed() const { return !switches_.empty(); }
    const TConfig& Config() const { return config_; }
    /// Writes the switches to a file, into what stands there now: what others have switched meanwhile stays.
    /// Raises EInvalidConfig, EFile.
    void SaveTo(const std::filesystem::path& file) const;

  private:
    TConfig config_;
    TOnSwitch onSwitch_;
    std::vector<TListedRule> rules_;
    std::map<std::string, bool> switches_; ///< the last of each rule that was switched
};

} // namespace conferix
