// The manual page in the language of troff.
#include "app/cli/command_help.h"

#include <fmt/format.h>

#include <sstream>

namespace conferix {

namespace {

/// Text as troff is to set it: a dash that is typed stays one, and no line is taken for a
/// request.
std::string Roff(const std::string& text) {
    std::string roff;
    for (const char c : text) {
        if (c == '-')
            roff += "\\-";
        else if (c == '\\')
            roff += "\\e";
        else if ((c == '.' || c == '\'') && (roff.empty() || roff.back() == '\n'))
            roff += std::string("\\&") + c;
        else
            roff += c;
    }
    return roff;
}

/// The same in short lines.
std::string Filled(const std::string& text) {
    return Roff(Wrapped(text, 0));
}

std::string Paragraphs(const std::string& text) {
    std::string roff;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        roff += (line.empty() ? ".PP" : Filled(line)) + '\n';
    return roff;
}

std::string Tagged(const std::vector<TNamedText>& rows) {
    std::string roff;
    for (const TNamedText& row : rows)
        roff += fmt::format(".TP\n.B {}\n{}\n", Roff(row.Name), Filled(row.Text));
    return roff;
}

std::vector<TNamedText> Described(const std::vector<TParameter>& parameters, const TCommand& command) {
    std::vector<TNamedText> rows;
    for (const TParameter& parameter : parameters)
        rows.push_back({NamesOf(parameter), DescriptionOf(parameter, command)});
    return rows;
}

std::string CommandSection(const TCommand& root, const TCommand& command) {
    std::string roff = fmt::format(".SS conferix {} {}\n{}.\n", Roff(command.Name), Roff(command.Usage()),
                                   Roff(command.Summary));
    if (!command.Details.empty())
        roff += ".PP\n" + Paragraphs(command.Details);
    roff += Tagged(Described(command.Arguments, command)) + Tagged(Described(command.Options, command));
    if (!command.Formats.empty())
        roff += fmt::format(".TP\n.B \\-\\-formato\n{}.\n",
                            Roff(fmt::format("{}", fmt::join(command.Formats, ", "))));
    std::string statuses = "Status de saída:";
    for (const TNamedText& status : ExitStatuses(root, command))
        statuses += fmt::format("{} {} {}", status.Name == "0" ? "" : ";", status.Name, status.Text);
    roff += fmt::format(".PP\n{}.\n.PP\nExemplos:\n", Filled(statuses));
    for (const TExample& example : command.Examples)
        roff += fmt::format(".TP\n.B {}\n{}\n", Roff(example.Line), Filled(example.Effect));
    return roff;
}

} // namespace

std::string ManualPage(const TCommand& root) {
    std::string roff =
        fmt::format(".\\\" Escrito por: conferix ajuda --formato man\n.TH CONFERIX 1 \"\" \"Conferix "
                    "{}\" \"Comandos do usuário\"\n",
                    CONFERIX_VERSAO);
    roff += ".SH NOME\nconferix \\- confere e corrige arquivos XML do padrão TISS\n";
    roff += ".SH SINOPSE\n.B conferix\n.I COMANDO\n[\\fIOPÇÕES\\fR] [\\fIARGUMENTOS\\fR]\n";
    roff += ".SH DESCRIÇÃO\n";
    roff += Paragraphs(
        "Confere arquivos XML do padrão TISS, com que prestadores, operadoras e a ANS trocam dados na saúde "
        "suplementar do Brasil: diz o que o arquivo é, aponta todas as falhas em português, com a linha e a "
        "guia, e "
        "oferece a correção do que pode ser calculado.\n\nO arquivo que não pôde ser julgado é \"não "
        "verificado\", "
        "nunca \"inválido\". Os erros vão para a saída de erro, como \"conferix: erro: ...\".");
    roff += ".SH ENGLISH SUMMARY\n";
    roff += Paragraphs("conferix checks XML files of TISS, the standard in which Brazilian health-care "
                       "providers, health plans and "
                       "their regulator (ANS) exchange bills. It identifies a file, tells every fault in "
                       "Portuguese with its line "
                       "and guide (schema, namespace prefixes, hash, business rules), corrects what can be "
                       "computed, converts lots "
                       "of guides between versions of the standard and keeps a database of its terminology. "
                       "Output is text for "
                       "people or JSON for programs. Exit status: 0 all files are valid, 1 a file is "
                       "invalid, 2 wrong usage, 3 "
                       "something could not be read, written or checked.");
    roff += ".SH \"OPÇÕES DE TODOS OS COMANDOS\"\n" + Tagged(Described(root.Options, root));
    roff += ".SH COMANDOS\n";
    for (const TCommand* command : RunnableCommands(root))
        roff += CommandSection(root, *command);
    roff += ".SH \"STATUS DE SAÍDA\"\n" + Tagged(ExitStatuses(root, root));
    roff += "Com vários arquivos vale o status mais alto.\n";
    roff += ".SH \"VARIÁVEIS DE AMBIENTE\"\n" + Tagged(EnvironmentVariables());
    roff += ".SH ARQUIVOS\nNa pasta de dados:\n" + Tagged(ProgramFiles());
    roff += ".SH EXEMPLOS\n";
    for (const TExample& example : root.Examples)
        roff += fmt::format(".TP\n.B {}\n{}\n", Roff(example.Line), Filled(example.Effect));
    return roff + ".SH \"VEJA TAMBÉM\"\n.BR conferix\\-desktop (1)\n";
}

} // namespace conferix
