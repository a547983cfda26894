#include "app/cli/command_help.h"

#include "platform/utf8.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <sstream>

namespace conferix {

namespace {

constexpr std::size_t kWidth = 80;
constexpr std::size_t kNames = 24; ///< columns of the names in a list

/// Names at the left, what they stand for at the right.
std::string Listed(const std::string& title, const std::vector<TNamedText>& rows) {
    std::string text = rows.empty() ? "" : fmt::format("\n{}:\n", title);
    for (const TNamedText& row : rows) {
        const std::size_t width = CountCharacters(row.Name);
        text += "  " + row.Name;
        text += width + 2 <= kNames ? std::string(kNames - width, ' ') : '\n' + std::string(kNames + 2, ' ');
        text += Wrapped(row.Text, kNames + 2) + '\n';
    }
    return text;
}

std::vector<TNamedText> Described(const std::vector<TParameter>& parameters, const TCommand& command) {
    std::vector<TNamedText> rows;
    for (const TParameter& parameter : parameters)
        rows.push_back({NamesOf(parameter), DescriptionOf(parameter, command)});
    return rows;
}

std::vector<TNamedText> Summaries(const TCommand& group, const std::string& before = {}) {
    std::vector<TNamedText> rows;
    for (const TCommand& command : group.Commands)
        rows.push_back({before + std::string(command.Word()), command.Summary});
    return rows;
}

std::string Call(const TCommand& root, const TCommand& command) {
    return (&command == &root ? "conferix " : fmt::format("conferix {} ", command.Name)) + command.Usage();
}

std::string ExamplesText(const TCommand& command) {
    std::string text = command.Examples.empty() ? "" : "\nExemplos:\n";
    for (const TExample& example : command.Examples)
        text += fmt::format("  {}\n      {}\n", example.Line, Wrapped(example.Effect, 6));
    return text;
}

/// What Markdown would take for a sign of its own.
std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (std::string_view("|*_<>").find(c) != std::string_view::npos)
            escaped += '\\';
        escaped += c;
    }
    return escaped;
}

std::string MarkdownTable(const std::string& title, const std::vector<TNamedText>& rows) {
    std::string text = rows.empty() ? "" : fmt::format("\n| {} | |\n|---|---|\n", title);
    for (const TNamedText& row : rows)
        text += fmt::format("| `{}` | {} |\n", row.Name, Escaped(row.Text));
    return text;
}

std::string CommandMarkdown(const TCommand& root, const TCommand& command) {
    std::string text =
        fmt::format("\n## {}\n\n{}.{}\n\n```sh\n{}\n```\n", command.Name, command.Summary,
                    command.Details.empty() ? "" : "\n\n" + Escaped(command.Details), Call(root, command));
    text += MarkdownTable("argumento", Described(command.Arguments, command));
    text += MarkdownTable("opção", Described(command.Options, command));
    if (!command.Formats.empty())
        text += fmt::format("\nFormatos: {}.\n", fmt::join(command.Formats, ", "));
    text += MarkdownTable("status", ExitStatuses(root, command));
    text += "\n```sh\n";
    for (const TExample& example : command.Examples)
        text += fmt::format("{}   # {}\n", example.Line, example.Effect);
    return text + "```\n";
}

} // namespace

std::string Wrapped(const std::string& text, std::size_t indent) {
    std::string wrapped;
    std::size_t column = indent;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (!wrapped.empty()) {
            wrapped += '\n';
            column = 0;
        }
        std::istringstream words(line);
        for (std::string word; words >> word;) {
            const std::size_t width = CountCharacters(word);
            const bool starts = wrapped.empty() || wrapped.back() == '\n';
            if (!starts && column + 1 + width > kWidth) {
                wrapped += '\n' + std::string(indent, ' ');
                column = indent;
            } else if (!starts) {
                wrapped += ' ';
                ++column;
            }
            wrapped += word;
            column += width;
        }
    }
    return wrapped;
}

std::vector<TNamedText> EnvironmentVariables() {
    return {
        {"CONFERIX_DADOS",
         "A pasta de dados; padrão: ~/.local/share/Brenvo/Conferix; no Windows, %APPDATA%\\Brenvo\\Conferix"},
        {"CONFERIX_TUSS", "A base de terminologia; padrão: tuss.db na pasta de dados, se algo foi "
                          "importado; senão, a que veio com "
                          "o programa"},
        {"CONFERIX_INI", "O arquivo Conferix.ini, do acesso à internet; padrão: ao lado do executável "
                         "ou, do programa instalado no "
                         "sistema, na pasta de dados"},
        {"NO_COLOR", "Com qualquer valor, desliga as cores do terminal"}};
}

std::vector<TNamedText> ProgramFiles() {
    return {{"config.json", "As regras ativas (conferix regras)"},
            {"schemas/tiss", "Os schemas importados (conferix esquemas)"},
            {"tuss.db", "A terminologia importada (conferix terminologia)"},
            {"conferix.log",
             "Que correções foram aplicadas a que arquivo e que regras foram ligadas ou desligadas; sem "
             "dados de pacientes"}};
}

std::vector<TNamedText> ExitStatuses(const TCommand& root, const TCommand& command) {
    const bool all = &command == &root;
    std::vector<TNamedText> rows = {
        {"0", all ? "os arquivos informados são válidos, ou o que foi pedido está feito" : command.WhenZero}};
    if (all || !command.WhenOne.empty())
        rows.push_back(
            {"1", all ? "há arquivo inválido, ou a resposta ao que foi perguntado é não" : command.WhenOne});
    rows.push_back({"2", "a linha de comando está errada"});
    rows.push_back({"3", "algo não pôde ser lido, gravado ou verificado"});
    return rows;
}

std::string NamesOf(const TParameter& parameter) {
    std::string names = parameter.Name;
    for (const std::string& other : parameter.OtherNames)
        names += ", " + other;
    return parameter.Placeholder.empty() ? names : names + ' ' + parameter.Placeholder;
}

std::string DescriptionOf(const TParameter& option, const TCommand& command) {
    std::string text = option.Description;
    if (option.Name == "--formato")
        text += fmt::format(": {}", fmt::join(command.Formats, ", "));
    std::vector<std::string> notes;
    if (option.Required && option.Name.starts_with('-'))
        notes.emplace_back("obrigatória");
    if (!option.Needs.empty())
        notes.push_back("só com " + option.Needs);
    if (!option.Excludes.empty())
        notes.push_back(fmt::format("não com {}", fmt::join(option.Excludes, " nem ")));
    return notes.empty() ? text : fmt::format("{} ({})", text, fmt::join(notes, "; "));
}

std::string HelpText(const TCommand& root, const TCommand& command) {
    const bool top = &command == &root;
    std::string text = fmt::format("{}.\n\nUso: {}\n", command.Summary, Call(root, command));
    if (!command.Details.empty())
        text += '\n' + Wrapped(command.Details, 0) + '\n';
    text += Listed("Comandos", Summaries(command));
    text += Listed("Argumentos", Described(command.Arguments, command));
    text += Listed("Opções", Described(command.Options, command));
    if (!top && !command.IsGroup()) {
        std::vector<TNamedText> common;
        for (const TParameter& option : root.Options)
            if (option.Name != "--formato" || !command.Formats.empty())
                common.push_back({NamesOf(option), DescriptionOf(option, command)});
        text += Listed("Opções de todos os comandos", common);
    }
    if (top || !command.IsGroup()) {
        text += Listed("Status de saída", ExitStatuses(root, command));
        text += Listed("Variáveis de ambiente", EnvironmentVariables());
    }
    text += ExamplesText(command);
    if (command.IsGroup())
        text += fmt::format("\nAs opções de um comando: conferix ajuda {}COMANDO\n",
                            top ? "" : command.Name + ' ');
    return text;
}

std::string HelpMarkdown(const TCommand& root) {
    std::string text =
        "# Comandos do conferix\n\nO mesmo que mostram `conferix ajuda COMANDO` e `man conferix`. Esta "
        "página é a saída de `conferix ajuda --formato markdown`.\n";
    text += MarkdownTable("opção de todos os comandos", Described(root.Options, root));
    text += MarkdownTable("status de saída", ExitStatuses(root, root));
    text += MarkdownTable("variável de ambiente", EnvironmentVariables());
    text += MarkdownTable("na pasta de dados", ProgramFiles());
    for (const TCommand* command : RunnableCommands(root))
        text += CommandMarkdown(root, *command);
    return text;
}

} // namespace conferix
