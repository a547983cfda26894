// What the command line understands, said once: words are taken by it, and the help, the manual page and the
// completion of shells are made from it.
#pragma once

#include "app/cli/commands.h"

#include <functional>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace conferix {

/// What a value names; shells complete it accordingly.
enum class TValueKind {
    Text,
    File,   ///< never empty
    Folder, ///< never empty
    Rule,   ///< never empty
    Command,
};

/// A value that shells offer.
struct TOffer {
    std::string Value;
    std::string Description = {}; ///< a line; may be empty
};

/// Where values go. A bool makes a switch, which takes no value, and so does nothing, for what the parser
/// itself answers; a list takes values as often as they are given.
using TTarget = std::variant<std::monostate, bool*, int*, std::optional<unsigned>*, std::string*,
                             std::optional<std::string>*, std::vector<std::string>*>;

/// An option, or an argument, which stands for itself.
struct TParameter {
    std::string Name;             ///< "--saida"; of an argument its placeholder, "ARQUIVO"
    std::string Placeholder = {}; ///< of an option what stands for its value; empty for a switch
    std::string Description;
    TTarget To = {};
    TValueKind Kind = TValueKind::Text;
    std::vector<std::string> OtherNames = {};
    std::vector<std::string> Choices = {}; ///< the values that there are, in any case of letters; empty: any
    std::function<std::vector<TOffer>()> Offers = {}; ///< values that shells offer where any is allowed
    std::optional<std::pair<int, int>> Range = {};    ///< of a number
    bool Required = false;
    bool Commas = false;                    ///< the parts of a word between commas are values
    bool ManyWords = false;                 ///< takes all words up to the next option
    std::vector<std::string> Excludes = {}; ///< options that do not go with it
    std::string Needs = {};                 ///< an option without which it has no meaning

    bool IsSwitch() const {
        return std::holds_alternative<bool*>(To) || std::holds_alternative<std::monostate>(To);
    }
    bool TakesMany() const { return std::holds_alternative<std::vector<std::string>*>(To); }
    bool HasName(std::string_view name) const;
};

/// A line to try, and what it does.
struct TExample {
    std::string Line;
    std::string Effect;
};

/// A command, or a group of commands, which runs nothing itself.
struct TCommand {
    std::string Name;                       ///< the words, as "terminologia importar"; of the root "conferix"
    std::string Summary;                    ///< a line without full stop
    std::string Details = {};               ///< sentences; lines between paragraphs are empty
    std::vector<TParameter> Arguments = {}; ///< in their order; the last one may take many
    std::vector<TParameter> Options = {};
    std::vector<std::string> Formats = {"texto", "json"}; ///< of --formato, the default first
    std::string WhenZero = {"o que foi pedido está feito"};
    std::string WhenOne = {}; ///< what status 1 says; empty where it does not occur
    std::vector<TExample> Examples = {};
    std::function<int(const TCliContext&)> Run = {};
    std::list<TCommand> Commands = {};

    bool IsGroup() const { return !Commands.empty(); }
    /// Its own word, the last of the name.
    std::string_view Word() const;
    /// The command with that word; null when there is none.
    const TCommand* Find(std::string_view word) const;
    /// The option with that name; null when there is none.
    const TParameter* FindOption(std::string_view name) const;
    /// The words between the program's name and the arguments, "[OPÇÕES] --para VERSAO ARQUIVO...".
    std::string Usage() const;
};

/// A command line that cannot be understood; the text is a sentence for the user.
class ECommandLine : public EUsage {
  public:
    ECommandLine(const std::string& text, std::string command) : EUsage(text), command_(std::move(command)) {}
    /// Name of the command that the words belong to; empty when they name none.
    const std::string& Command() const { return command_; }

  private:
    std::string command_;
};

/// What was asked for.
struct TParsedLine {
    const TCommand* Command; ///< never a group, but for help
    bool Help = false;
    bool Version = false;
};

/// Takes the words after the program's name and hands the values to the targets of the options and arguments.
/// `root`: options for every command, and the commands. Raises ECommandLine.
TParsedLine ParseCommandLine(const TCommand& root, const std::vector<std::string>& words);

/// The command that words name, as "terminologia", "importar", or "listar", "guias"; the root for none.
/// Raises ECommandLine.
const TCommand& CommandOf(const TCommand& root, const std::vector<std::string>& words);

/// The commands that can be run, in the order of the help.
std::vector<const TCommand*> RunnableCommands(const TCommand& root);

/// The words that may follow those of a group, with their summaries.
std::vector<TOffer> CommandOffers(const TCommand& group);

/// Makes a command the root of all that the program knows; values go to the context and to what the commands
/// hold. `root` and `context` stay where they are.
void AddCommands(TCommand& root, TCliContext& context);
/// The commands about files, and those about what the program knows.
void AddFileCommands(TCommand& root);
void AddDataCommands(TCommand& root);
/// What can be switched on and off.
std::vector<TOffer> RuleOffers();
/// The forms that can be printed.
std::vector<TOffer> FormOffers();

} // namespace conferix
