// What makes shells complete the words of the command line. In each script "comando" is the command that the
// words so far name, and a word is completed as a value of the option before it, as an option, or as what
// stands at its place.
#include "app/cli/command_help.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace conferix {

namespace {

std::string OwnName(const TCommand& root, const TCommand& command) {
    return &command == &root ? "" : command.Name;
}

/// The root, the groups and the commands.
void AppendAll(const TCommand& command, std::vector<const TCommand*>& list) {
    list.push_back(&command);
    for (const TCommand& child : command.Commands)
        AppendAll(child, list);
}

std::vector<const TCommand*> AllOf(const TCommand& root) {
    std::vector<const TCommand*> list;
    AppendAll(root, list);
    return list;
}

/// The values that a shell offers for an option or argument of a command.
std::vector<std::string> ValuesOf(const TParameter& parameter, const TCommand& command) {
    if (parameter.Name == "--formato")
        return command.Formats;
    return parameter.Offers ? parameter.Offers() : parameter.Choices;
}

/// The options of a command, then those of all commands.
std::vector<const TParameter*> OptionsOf(const TCommand& root, const TCommand& command) {
    std::vector<const TParameter*> options;
    for (const TCommand* from : {&command, &root})
        for (const TParameter& option : from->Options)
            if (std::ranges::find(options, &option) == options.end())
                options.push_back(&option);
    return options;
}

std::vector<std::string> NamesOfAll(const TParameter& option) {
    std::vector<std::string> names = {option.Name};
    names.insert(names.end(), option.OtherNames.begin(), option.OtherNames.end());
    return names;
}

/// A text between single quotes, for the shells that know no escape there (bash, zsh) and for fish.
std::string Quoted(const std::string& text, bool fish = false) {
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'')
            quoted += fish ? "\\'" : "'\\''";
        else if (c == '\\' && fish)
            quoted += "\\\\";
        else
            quoted += c;
    }
    return quoted + "'";
}

std::string Joined(const std::vector<std::string>& words) {
    return fmt::format("{}", fmt::join(words, " "));
}

/// Branches that follow the words from command to command; `format` takes what was and what comes.
std::string Steps(const TCommand& root, std::string_view format) {
    std::string text;
    for (const TCommand* group : AllOf(root))
        for (const TCommand& child : group->Commands)
            text += fmt::format(fmt::runtime(format),
                                Quoted(OwnName(root, *group) + ' ' + std::string(child.Word())),
                                Quoted(child.Name));
    return text;
}

/// What a bash or zsh script does to complete a value; empty for nothing.
using TCompletion = std::string (*)(const TParameter&, const TCommand&);

std::string BashValue(const TParameter& parameter, const TCommand& command) {
    if (const std::vector<std::string> values = ValuesOf(parameter, command); !values.empty())
        return fmt::format("valores={}", Quoted(Joined(values)));
    return parameter.Kind == TValueKind::File     ? "arquivos=-f"
           : parameter.Kind == TValueKind::Folder ? "arquivos=-d"
                                                  : "return";
}

std::string ZshValue(const TParameter& parameter, const TCommand& command) {
    if (const std::vector<std::string> values = ValuesOf(parameter, command); !values.empty())
        return fmt::format("compadd -- {}", Joined(values));
    return parameter.Kind == TValueKind::File     ? "_files"
           : parameter.Kind == TValueKind::Folder ? "_files -/"
                                                  : "_message " + Quoted(parameter.Description);
}

/// Branches for the word after an option that takes a value; `end` closes each.
std::string ValueBranches(const TCommand& root, TCompletion complete, std::string_view end) {
    std::string text;
    for (const TCommand* command : AllOf(root))
        for (const TParameter* option : OptionsOf(root, *command))
            if (!option->IsSwitch())
                text += fmt::format("    {}) {}{} ;;\n", Quoted(OwnName(root, *command) + ' ' + option->Name),
                                    complete(*option, *command), end);
    return text;
}

std::string BashScript(const TCommand& root) {
    std::string text =
        "# Faz o bash completar as palavras do conferix. Escrito por: conferix completar bash\n"
        "_conferix() {\n"
        "    local comando= valores= arquivos= i IFS=$' \\t\\n'\n"
        "    local atual=${COMP_WORDS[COMP_CWORD]} anterior=${COMP_WORDS[COMP_CWORD - 1]}\n"
        "    if [[ $atual == = ]]; then\n"
        "        atual=\n"
        "    elif [[ $anterior == = ]]; then\n"
        "        anterior=${COMP_WORDS[COMP_CWORD - 2]}\n"
        "    fi\n"
        "    COMPREPLY=()\n"
        "    for ((i = 1; i < COMP_CWORD; i++)); do\n"
        "        case \"$comando ${COMP_WORDS[i]}\" in\n" +
        Steps(root, "        {}) comando={} ;;\n") +
        "        esac\n"
        "    done\n"
        "    case \"$comando $anterior\" in\n" +
        ValueBranches(root, &BashValue, "") + "    *)\n        case \"$comando\" in\n";
    for (const TCommand* command : AllOf(root)) {
        std::vector<std::string> options;
        for (const TParameter* option : OptionsOf(root, *command))
            for (const std::string& name : NamesOfAll(*option))
                options.push_back(name);
        std::vector<std::string> words;
        for (const TCommand& child : command->Commands)
            words.emplace_back(child.Word());
        std::string plain = words.empty() ? "return" : fmt::format("valores={}", Quoted(Joined(words)));
        if (!command->Arguments.empty())
            plain = BashValue(command->Arguments.front(), *command);
        text +=
            fmt::format("        {})\n            if [[ $atual == -* ]]; then valores={}; else {}; fi ;;\n",
                        Quoted(OwnName(root, *command)), Quoted(Joined(options)), plain);
    }
    return text + "        esac ;;\n"
                  "    esac\n"
                  "    if [[ -n $valores ]]; then\n"
                  "        COMPREPLY=($(compgen -W \"$valores\" -- \"$atual\"))\n"
                  "    elif [[ -n $arquivos ]]; then\n"
                  "        compopt -o filenames 2>/dev/null\n"
                  "        IFS=$'\\n'\n"
                  "        COMPREPLY=($(compgen $arquivos -- \"$atual\"))\n"
                  "    fi\n"
                  "}\n"
                  "complete -F _conferix conferix\n";
}

/// Names with what they stand for, as zsh's _describe takes them.
std::string Describes(const std::string& title, const char* how, const std::vector<TNamedText>& rows) {
    std::string text = fmt::format("        lista=(\n");
    for (const TNamedText& row : rows)
        text += fmt::format("            {}\n", Quoted(row.Name + ':' + row.Text));
    return text + fmt::format("        )\n        _describe{} {} lista\n", how, Quoted(title));
}

std::string ZshScript(const TCommand& root) {
    std::string text = "#compdef conferix\n"
                       "# Faz o zsh completar as palavras do conferix. Escrito por: conferix completar zsh\n"
                       "_conferix() {\n"
                       "    local comando= palavra anterior=${words[CURRENT-1]}\n"
                       "    local -a lista\n"
                       "    if [[ $PREFIX == --*=* ]]; then\n"
                       "        anterior=${PREFIX%%=*}\n"
                       "        compset -P '*='\n"
                       "    fi\n"
                       "    for palavra in ${words[2,CURRENT-1]}; do\n"
                       "        case \"$comando $palavra\" in\n" +
                       Steps(root, "        {}) comando={} ;;\n") +
                       "        esac\n"
                       "    done\n"
                       "    case \"$comando $anterior\" in\n";
    text += ValueBranches(root, &ZshValue, "; return");
    text += "    esac\n    if [[ $PREFIX == -* ]]; then\n        case \"$comando\" in\n";
    for (const TCommand* command : AllOf(root)) {
        std::vector<TNamedText> rows;
        for (const TParameter* option : OptionsOf(root, *command))
            for (const std::string& name : NamesOfAll(*option))
                rows.push_back({name, DescriptionOf(*option, *command)});
        text += fmt::format("        {})\n{}        ;;\n", Quoted(OwnName(root, *command)),
                            Describes("opção", " -o", rows));
    }
    text += "        esac\n        return\n    fi\n    case \"$comando\" in\n";
    for (const TCommand* command : AllOf(root)) {
        std::vector<TNamedText> rows;
        for (const TCommand& child : command->Commands)
            rows.push_back({std::string(child.Word()), child.Summary});
        if (!rows.empty())
            text += fmt::format("    {})\n{}    ;;\n", Quoted(OwnName(root, *command)),
                                Describes("comando", "", rows));
        else if (!command->Arguments.empty())
            text += fmt::format("    {}) {} ;;\n", Quoted(command->Name),
                                ZshValue(command->Arguments.front(), *command));
    }
    return text + "    esac\n"
                  "}\n"
                  "if [[ ${funcstack[1]} == _conferix ]]; then\n"
                  "    _conferix \"$@\"\n"
                  "else\n"
                  "    compdef _conferix conferix\n"
                  "fi\n";
}

/// What fish's complete is to offer for a value.
std::string FishValue(const TParameter& parameter, const TCommand& command) {
    if (const std::vector<std::string> values = ValuesOf(parameter, command); !values.empty())
        return fmt::format("-x -a {}", Quoted(Joined(values), true));
    return parameter.Kind == TValueKind::File     ? "-r -F"
           : parameter.Kind == TValueKind::Folder ? "-x -a '(__fish_complete_directories)'"
                                                  : "-x";
}

std::string FishScript(const TCommand& root) {
    std::string text =
        "# Faz o fish completar as palavras do conferix. Escrito por: conferix completar fish\n"
        "function __conferix_em --description 'se as palavras nomeiam este comando do conferix'\n"
        "    set -l comando ''\n"
        "    for palavra in (commandline -opc)[2..-1]\n"
        "        switch \"$comando $palavra\"\n" +
        Steps(root, "            case {}\n                set comando {}\n") +
        "        end\n"
        "    end\n"
        "    test \"$comando\" = \"$argv\"\n"
        "end\n"
        "complete -c conferix -f\n";
    for (const TCommand* command : AllOf(root)) {
        const std::string own = OwnName(root, *command);
        const std::string line = fmt::format("complete -c conferix -n \"__conferix_em '{}'\"", own);
        for (const TCommand& child : command->Commands)
            text += fmt::format("{} -a {} -d {}\n", line, child.Word(), Quoted(child.Summary, true));
        if (!command->Arguments.empty()) {
            const TParameter& argument = command->Arguments.front();
            const std::vector<std::string> values = ValuesOf(argument, *command);
            if (!values.empty())
                text += fmt::format("{} -a {}\n", line, Quoted(Joined(values), true));
            else if (argument.Kind != TValueKind::Text)
                text += line + " -F\n";
        }
        for (const TParameter* option : OptionsOf(root, *command)) {
            std::string names;
            for (const std::string& name : NamesOfAll(*option))
                names += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
            text += fmt::format("{}{} {}-d {}\n", line, names,
                                option->IsSwitch() ? "" : FishValue(*option, *command) + ' ',
                                Quoted(DescriptionOf(*option, *command), true));
        }
    }
    return text;
}

} // namespace

std::string CompletionScript(const TCommand& root, std::string_view shell) {
    if (shell == "zsh")
        return ZshScript(root);
    return shell == "fish" ? FishScript(root) : BashScript(root);
}

} // namespace conferix
