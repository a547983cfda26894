#include "app/cli/command_line.h"

#include "platform/platform.h"
#include "xml/name_likeness.h"
#include "xml/xml_node.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <limits>
#include <set>

namespace conferix {

namespace {

/// The names that a user may have meant by one, as the end of a sentence; empty when none is alike.
std::string Suggestion(std::string_view word, const std::vector<std::string>& names) {
    constexpr std::size_t kStart = 3;
    std::string nearest;
    std::size_t least = kNotAlike;
    for (const std::string& name : names)
        if (const std::size_t slips = NameSlips(word, name); slips < least) {
            least = slips;
            nearest = name;
        }
    if (nearest.empty() && word.find_first_not_of('-') != std::string_view::npos) {
        const std::size_t dashes = word.find_first_not_of('-');
        const auto begun = [&](const std::string& name) {
            return word.size() >= dashes + kStart && name.starts_with(word);
        };
        if (std::ranges::count_if(names, begun) == 1)
            nearest = *std::ranges::find_if(names, begun);
    }
    return nearest.empty() ? "" : fmt::format(" Você quis dizer \"{}\"?", nearest);
}

std::string Enumerated(const std::vector<std::string>& names) {
    if (names.size() < 2)
        return fmt::format("{}", fmt::join(names, ""));
    return fmt::format("{} ou {}", fmt::join(names.begin(), names.end() - 1, ", "), names.back());
}

std::vector<std::string> WordsOf(const TCommand& command) {
    std::vector<std::string> words;
    for (const TCommand& child : command.Commands)
        words.emplace_back(child.Word());
    return words;
}

/// The command of that word in a group. Raises ECommandLine with what was meant.
const TCommand& ChildOf(const TCommand& group, bool top, const std::string& word) {
    if (const TCommand* child = group.Find(word))
        return *child;
    std::string hint = Suggestion(word, WordsOf(group));
    std::error_code ignored;
    if (hint.empty() && top && std::filesystem::exists(PathFromText(word), ignored))
        hint = fmt::format(" Para validar esse arquivo: conferix validar {}", word);
    else if (hint.empty() && !top && group.IsGroup())
        hint = fmt::format(" Use {}.", Enumerated(WordsOf(group)));
    throw ECommandLine(top ? fmt::format("Comando desconhecido: \"{}\".{}", word, hint)
                           : fmt::format("Comando desconhecido de \"{}\": \"{}\".{}", group.Name, word, hint),
                       top ? "" : group.Name);
}

/// Takes words one after the other.
class TParser {
  public:
    TParser(const TCommand& root, const std::vector<std::string>& words)
        : root_(root), words_(words), command_(&root) {}

    TParsedLine Parse() {
        try {
            while (next_ < words_.size())
                Take(words_[next_++]);
            if (!line_.Help && !line_.Version)
                CheckWhole();
        } catch (const ECommandLine&) {
            // Who asks for help on a command is not told first what was wrong.
            if (command_->IsGroup() || !AsksForHelp())
                throw;
            line_.Help = true;
        }
        line_.Command = command_;
        return line_;
    }

  private:
    [[noreturn]] void Fail(const std::string& text) const {
        throw ECommandLine(text, command_ == &root_ ? "" : command_->Name);
    }

    bool AsksForHelp() const {
        const auto arguments = std::ranges::find(words_, "--"); // what follows is no option
        return std::any_of(words_.begin(), arguments, [this](const std::string& word) {
            const TParameter* option = root_.FindOption(word);
            return option != nullptr && option->Name == "--ajuda";
        });
    }

    void Take(const std::string& word) {
        if (onlyArguments_ || word == "-" || !word.starts_with('-'))
            TakeWord(word);
        else if (word == "--")
            onlyArguments_ = true;
        else
            TakeOption(word);
    }

    void TakeWord(const std::string& word) {
        if (command_->IsGroup()) {
            command_ = &ChildOf(*command_, command_ == &root_, word);
            return;
        }
        const std::size_t last = command_->Arguments.size();
        const std::size_t at =
            argument_ < last || last == 0 || !command_->Arguments.back().TakesMany() ? argument_ : last - 1;
        if (at >= last)
            Fail(last == 0 ? fmt::format("O comando \"{}\" não leva argumentos; \"{}\" está a mais.",
                                         command_->Name, word)
                           : fmt::format("\"{}\" está a mais: o comando é {}", word, CallOf(*command_)));
        ++argument_;
        Give(command_->Arguments[at], word);
    }

    static std::string CallOf(const TCommand& command) {
        return fmt::format("conferix {} {}", command.Name, command.Usage());
    }

    void TakeOption(const std::string& word) {
        const std::size_t equals = word.starts_with("--") ? word.find('=') : std::string::npos;
        const std::string name = word.substr(0, equals);
        const TParameter* option = command_->FindOption(name);
        if (option == nullptr)
            option = root_.FindOption(name);
        if (option == nullptr)
            FailUnknown(name);
        if (option->IsSwitch()) {
            if (equals != std::string::npos)
                Fail(fmt::format("A opção {} não leva valor.", name));
            if (bool* const* target = std::get_if<bool*>(&option->To))
                **target = true;
            given_.insert(option->Name);
            line_.Help |= option->Name == "--ajuda";
            line_.Version |= option->Name == "--versao";
        } else if (equals != std::string::npos) {
            GiveParts(*option, word.substr(equals + 1));
        } else {
            if (next_ == words_.size() || IsKnownOption(words_[next_]))
                Fail(fmt::format("Falta o valor de {}: {} {}.", name, name, option->Placeholder));
            do
                GiveParts(*option, words_[next_++]);
            while (option->ManyWords && next_ < words_.size() && !words_[next_].starts_with('-'));
        }
    }

    bool IsKnownOption(const std::string& word) const {
        const std::string name = word.substr(0, word.find('='));
        return word == "--" || command_->FindOption(name) != nullptr || root_.FindOption(name) != nullptr;
    }

    /// An option that is not the command's: that of another command, a slip, or a file whose name begins so.
    [[noreturn]] void FailUnknown(const std::string& name) const {
        std::vector<std::string> owners;
        for (const TCommand* command : RunnableCommands(root_))
            if (command->FindOption(name) != nullptr)
                owners.push_back('"' + command->Name + '"');
        if (!owners.empty()) {
            Fail(command_->IsGroup() ? fmt::format("A opção {} é de {}; escreva-a depois do comando.", name,
                                                   Enumerated(owners))
                                     : fmt::format("A opção {} não existe em \"{}\"; é de {}.", name,
                                                   command_->Name, Enumerated(owners)));
        }
        std::vector<std::string> names;
        for (const TCommand* command : {command_, &root_})
            for (const TParameter& option : command->Options) {
                names.push_back(option.Name);
                names.insert(names.end(), option.OtherNames.begin(), option.OtherNames.end());
            }
        std::string hint = Suggestion(name, names);
        if (hint.empty() && name.size() == 2)
            for (const std::string& other : names)
                if (SameButForCase(other, name))
                    hint = fmt::format(" Você quis dizer \"{}\"?", other);
        std::error_code ignored;
        if (hint.empty() && std::filesystem::exists(PathFromText(name), ignored))
            hint = fmt::format(" Para o arquivo com esse nome: ./{}", name);
        Fail((command_ == &root_ ? "Opção desconhecida"
                                 : fmt::format("Opção desconhecida de \"{}\"", command_->Name)) +
             fmt::format(": \"{}\".{}", name, hint));
    }

    void GiveParts(const TParameter& option, const std::string& word) {
        if (!option.Commas)
            return Give(option, word);
        std::size_t start = 0;
        for (std::size_t comma = 0; comma != std::string::npos; start = comma + 1) {
            comma = word.find(',', start);
            Give(option, std::string(TrimXmlSpace(std::string_view(word).substr(start, comma - start))));
        }
    }

    void Give(const TParameter& parameter, const std::string& value) {
        if (value.empty() && parameter.Commas)
            Fail(fmt::format("{}: há um {} vazio; separe os {}s com uma vírgula.", parameter.Name,
                             parameter.Kind == TValueKind::Text ? "número" : "nome",
                             parameter.Kind == TValueKind::Text ? "número" : "nome"));
        if (value.empty() && parameter.Kind != TValueKind::Text)
            Fail(fmt::format("{}: o nome está vazio.", parameter.Name));
        if (!given_.insert(parameter.Name).second && !parameter.TakesMany())
            Fail(fmt::format("A opção {} foi informada mais de uma vez.", parameter.Name));
        if (parameter.Name == "--formato")
            format_ = value;
        if (int* const* number = std::get_if<int*>(&parameter.To))
            **number = Number(parameter, value);
        else if (std::optional<unsigned>* const* count = std::get_if<std::optional<unsigned>*>(&parameter.To))
            **count = static_cast<unsigned>(Number(parameter, value));
        else if (std::string* const* text = std::get_if<std::string*>(&parameter.To))
            **text = parameter.Name == "--saida" && value == "-" ? std::string() : Chosen(parameter, value);
        else if (std::optional<std::string>* const* given =
                     std::get_if<std::optional<std::string>*>(&parameter.To))
            **given = Chosen(parameter, value);
        else
            std::get<std::vector<std::string>*>(parameter.To)->push_back(Chosen(parameter, value));
    }

    int Number(const TParameter& parameter, const std::string& value) const {
        int number = 0;
        const auto [end, failure] = std::from_chars(value.data(), value.data() + value.size(), number);
        const auto [least, most] = parameter.Range.value_or(std::pair(0, std::numeric_limits<int>::max()));
        if (failure != std::errc() || end != value.data() + value.size() || number < least || number > most)
            Fail(fmt::format("Valor inválido de {}: \"{}\". Use um número {}.", parameter.Name, value,
                             most == std::numeric_limits<int>::max()
                                 ? fmt::format("a partir de {}", least)
                                 : fmt::format("de {} a {}", least, most)));
        return number;
    }

    std::string Chosen(const TParameter& parameter, const std::string& value) const {
        if (parameter.Choices.empty())
            return value;
        const auto found = std::ranges::find_if(
            parameter.Choices, [&](const std::string& choice) { return SameButForCase(choice, value); });
        if (found == parameter.Choices.end())
            Fail(fmt::format("Valor inválido de {}: \"{}\".{} Use {}.", parameter.Name, value,
                             Suggestion(value, parameter.Choices), Enumerated(parameter.Choices)));
        return *found;
    }

    /// What can be judged only when all words are taken.
    void CheckWhole() const {
        if (command_->IsGroup())
            Fail(command_ == &root_ ? fmt::format("Falta o comando: {}.", Enumerated(WordsOf(root_)))
                                    : fmt::format("Falta o que fazer: conferix {} {}.", command_->Name,
                                                  Enumerated(WordsOf(*command_))));
        if (format_ && std::ranges::find(command_->Formats, *format_) == command_->Formats.end())
            Fail(fmt::format("O formato \"{}\" não existe em \"{}\".{}{}", *format_, command_->Name,
                             Suggestion(*format_, command_->Formats),
                             command_->Formats.empty()
                                 ? " Retire --formato."
                                 : fmt::format(" Use {}.", Enumerated(command_->Formats))));
        for (const auto* list : {&command_->Arguments, &command_->Options})
            for (const TParameter& parameter : *list) {
                if (parameter.Required && !given_.contains(parameter.Name))
                    Fail(fmt::format("Falta {}: conferix {} {}",
                                     parameter.Placeholder.empty()
                                         ? parameter.Name
                                         : parameter.Name + ' ' + parameter.Placeholder,
                                     command_->Name, command_->Usage()));
                if (!given_.contains(parameter.Name))
                    continue;
                for (const std::string& other : parameter.Excludes)
                    if (given_.contains(other))
                        Fail(fmt::format("As opções {} e {} não podem ser usadas juntas.", parameter.Name,
                                         other));
                if (!parameter.Needs.empty() && !given_.contains(parameter.Needs))
                    Fail(fmt::format("A opção {} só vale com {}.", parameter.Name, parameter.Needs));
            }
    }

    const TCommand& root_;
    const std::vector<std::string>& words_;
    const TCommand* command_;
    TParsedLine line_{};
    std::set<std::string> given_;
    std::optional<std::string> format_;
    std::size_t next_ = 0;
    std::size_t argument_ = 0;
    bool onlyArguments_ = false;
};

void AppendRunnable(const TCommand& group, std::vector<const TCommand*>& list) {
    for (const TCommand& command : group.Commands)
        if (command.IsGroup())
            AppendRunnable(command, list);
        else
            list.push_back(&command);
}

} // namespace

bool TParameter::HasName(std::string_view name) const {
    return Name == name || std::ranges::find(OtherNames, name) != OtherNames.end();
}

std::string_view TCommand::Word() const {
    const std::size_t blank = Name.rfind(' ');
    return std::string_view(Name).substr(blank == std::string::npos ? 0 : blank + 1);
}

const TCommand* TCommand::Find(std::string_view word) const {
    const auto found =
        std::ranges::find_if(Commands, [word](const TCommand& child) { return child.Word() == word; });
    return found == Commands.end() ? nullptr : &*found;
}

const TParameter* TCommand::FindOption(std::string_view name) const {
    const auto found =
        std::ranges::find_if(Options, [name](const TParameter& option) { return option.HasName(name); });
    return found == Options.end() ? nullptr : &*found;
}

std::string TCommand::Usage() const {
    if (IsGroup())
        return "COMANDO [OPÇÕES]";
    std::string usage = "[OPÇÕES]";
    for (const TParameter& option : Options)
        if (option.Required)
            usage += fmt::format(" {} {}", option.Name, option.Placeholder);
    for (const TParameter& argument : Arguments)
        usage += argument.Required ? " " + argument.Name : fmt::format(" [{}]", argument.Name);
    return usage;
}

TParsedLine ParseCommandLine(const TCommand& root, const std::vector<std::string>& words) {
    return TParser(root, words).Parse();
}

const TCommand& CommandOf(const TCommand& root, const std::vector<std::string>& words) {
    const TCommand* command = &root;
    for (const std::string& word : words) {
        // What a command is told to do reads like a command of its own: "listar guias".
        const bool isChoice = !command->IsGroup() && !command->Arguments.empty() &&
                              std::ranges::find(command->Arguments.front().Choices, word) !=
                                  command->Arguments.front().Choices.end();
        if (!isChoice)
            command = &ChildOf(*command, command == &root, word);
    }
    return *command;
}

std::vector<TOffer> CommandOffers(const TCommand& group) {
    std::vector<TOffer> offers;
    for (const TCommand& command : group.Commands)
        offers.push_back({std::string(command.Word()), command.Summary});
    return offers;
}

std::vector<const TCommand*> RunnableCommands(const TCommand& root) {
    std::vector<const TCommand*> list;
    AppendRunnable(root, list);
    return list;
}

} // namespace conferix
