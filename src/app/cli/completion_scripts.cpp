// What makes shells complete the words of the command line. In each script "comando" is the command that the
// words so far name, and a word is completed as a value of the option before it, as an option, or as what
// stands at its place.
#include "app/cli/command_help.h"

#include <fmt/format.h>

#include <algorithm>

namespace conferix {

namespace {

/// A point in a command line.
struct TPlace {
    std::string Words;          ///< that lead there, as "terminologia importar"; empty for the beginning
    const TCommand* Command;    ///< of which the options may follow
    std::vector<TOffer> Next;   ///< words that may follow; empty where any may
    const TParameter* Argument; ///< for which a word would stand; null for none
};

/// The values that a shell offers for an option or argument of a command.
std::vector<TOffer> ValuesOf(const TParameter& parameter, const TCommand& command) {
    if (parameter.Offers)
        return parameter.Offers();
    std::vector<TOffer> offers;
    for (const std::string& value : parameter.Name == "--formato" ? command.Formats : parameter.Choices)
        offers.push_back({value});
    return offers;
}

/// The places of a command and of those below it.
void AppendPlaces(const TCommand& root, const TCommand& command, std::vector<TPlace>& places) {
    const TParameter* argument = command.Arguments.empty() ? nullptr : &command.Arguments.front();
    const std::string words = &command == &root ? "" : command.Name;
    places.push_back({words, &command,
                      argument != nullptr ? ValuesOf(*argument, command) : CommandOffers(command), argument});
    for (const TCommand& child : command.Commands)
        AppendPlaces(root, child, places);
    if (argument == nullptr || argument->Kind != TValueKind::Command)
        return;
    for (const TCommand& named : root.Commands) // the words of a command follow, which may be two
        if (named.IsGroup())
            places.push_back({words + ' ' + named.Name, &command, CommandOffers(named), argument});
}

std::vector<TPlace> PlacesOf(const TCommand& root) {
    std::vector<TPlace> places;
    AppendPlaces(root, root, places);
    return places;
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

std::string Joined(const std::vector<TOffer>& offers) {
    std::string text;
    for (const TOffer& offer : offers)
        text += (text.empty() ? "" : " ") + offer.Value;
    return text;
}

/// Branches that follow the words from place to place; `format` takes what was and what comes.
std::string Steps(const TCommand& root, std::string_view format) {
    std::string text;
    for (const TPlace& place : PlacesOf(root)) {
        if (place.Words.empty())
            continue;
        const std::size_t blank = place.Words.rfind(' ');
        text += fmt::format(fmt::runtime(format),
                            Quoted(blank == std::string::npos ? ' ' + place.Words : place.Words),
                            Quoted(place.Words));
    }
    return text;
}

/// What a bash or zsh script does to complete a value; empty for nothing.
using TCompletion = std::string (*)(const TParameter&, const TCommand&);

std::string BashValue(const TParameter& parameter, const TCommand& command) {
    if (const std::vector<TOffer> values = ValuesOf(parameter, command); !values.empty())
        return fmt::format("valores={}", Quoted(Joined(values)));
    return parameter.Kind == TValueKind::File     ? "arquivos=-f"
           : parameter.Kind == TValueKind::Folder ? "arquivos=-d"
                                                  : "return";
}

std::string ZshValue(const TParameter& parameter, const TCommand& command) {
    if (const std::vector<TOffer> values = ValuesOf(parameter, command); !values.empty())
        return fmt::format("compadd -- {}", Joined(values));
    return parameter.Kind == TValueKind::File     ? "_files"
           : parameter.Kind == TValueKind::Folder ? "_files -/"
                                                  : "_message " + Quoted(parameter.Description);
}

/// Branches for the word after an option that takes a value; `end` closes each.
std::string ValueBranches(const TCommand& root, TCompletion complete, std::string_view end) {
    std::string text;
    for (const TPlace& place : PlacesOf(root))
        for (const TParameter* option : OptionsOf(root, *place.Command))
            if (!option->IsSwitch())
                text += fmt::format("    {}) {}{} ;;\n", Quoted(place.Words + ' ' + option->Name),
                                    complete(*option, *place.Command), end);
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
    for (const TPlace& place : PlacesOf(root)) {
        std::vector<TOffer> options;
        for (const TParameter* option : OptionsOf(root, *place.Command))
            for (const std::string& name : NamesOfAll(*option))
                options.push_back({name});
        std::string plain = "return";
        if (!place.Next.empty())
            plain = fmt::format("valores={}", Quoted(Joined(place.Next)));
        else if (place.Argument != nullptr)
            plain = BashValue(*place.Argument, *place.Command);
        text +=
            fmt::format("        {})\n            if [[ $atual == -* ]]; then valores={}; else {}; fi ;;\n",
                        Quoted(place.Words), Quoted(Joined(options)), plain);
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
std::string Describes(const std::string& title, const char* how, const std::vector<TOffer>& rows) {
    std::string text = "        lista=(\n";
    for (const TOffer& row : rows)
        text += fmt::format("            {}\n",
                            Quoted(row.Description.empty() ? row.Value : row.Value + ':' + row.Description));
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
    for (const TPlace& place : PlacesOf(root)) {
        std::vector<TOffer> rows;
        for (const TParameter* option : OptionsOf(root, *place.Command))
            for (const std::string& name : NamesOfAll(*option))
                rows.push_back({name, DescriptionOf(*option, *place.Command)});
        text +=
            fmt::format("        {})\n{}        ;;\n", Quoted(place.Words), Describes("opção", " -o", rows));
    }
    text += "        esac\n        return\n    fi\n    case \"$comando\" in\n";
    for (const TPlace& place : PlacesOf(root)) {
        if (!place.Next.empty())
            text += fmt::format("    {})\n{}    ;;\n", Quoted(place.Words),
                                Describes(place.Command->IsGroup() ? "comando" : "valor", "", place.Next));
        else if (place.Argument != nullptr)
            text += fmt::format("    {}) {} ;;\n", Quoted(place.Words),
                                ZshValue(*place.Argument, *place.Command));
    }
    return text + "    esac\n"
                  "}\n"
                  "if [[ ${funcstack[1]} == _conferix ]]; then\n"
                  "    _conferix \"$@\"\n"
                  "else\n"
                  "    compdef _conferix conferix\n"
                  "fi\n";
}

/// A list of values as fish's complete takes it: the descriptions are parted by tabs.
std::string FishList(const std::vector<TOffer>& offers) {
    std::string text;
    for (const TOffer& offer : offers)
        text += (text.empty() ? "" : " ") + offer.Value +
                (offer.Description.empty() ? "" : "\\t" + Quoted(offer.Description, true));
    return Quoted(text, true);
}

/// What fish's complete is to offer for a value.
std::string FishValue(const TParameter& parameter, const TCommand& command) {
    if (const std::vector<TOffer> values = ValuesOf(parameter, command); !values.empty())
        return "-x -a " + FishList(values);
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
    for (const TPlace& place : PlacesOf(root)) {
        const std::string line = fmt::format("complete -c conferix -n \"__conferix_em '{}'\"", place.Words);
        if (!place.Next.empty())
            text += fmt::format("{} -a {}\n", line, FishList(place.Next));
        else if (place.Argument != nullptr && place.Argument->Kind != TValueKind::Text)
            text += line + " -F\n";
        for (const TParameter* option : OptionsOf(root, *place.Command)) {
            std::string names;
            for (const std::string& name : NamesOfAll(*option))
                names += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
            text += fmt::format("{}{} {}-d {}\n", line, names,
                                option->IsSwitch() ? "" : FishValue(*option, *place.Command) + ' ',
                                Quoted(DescriptionOf(*option, *place.Command), true));
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
