// What every command takes, and the commands about the program itself.
#include "app/cli/command_help.h"
#include "app/cli/command_line.h"

#include <memory>
#include <ostream>

namespace conferix {

namespace {

void AddAjuda(TCommand& root) {
    auto words = std::make_shared<std::vector<std::string>>();
    TCommand command{.Name = "ajuda", .Summary = "Mostra como se usa um comando"};
    command.Details =
        "Sem COMANDO, mostra todos os comandos. Em outros formatos sai tudo de uma vez: markdown, ou man, "
        "a página de manual.";
    command.Arguments = {{.Name = "COMANDO...",
                          .Description = "O comando, como terminologia importar",
                          .To = words.get(),
                          .Offers = [&root] {
                              std::vector<std::string> names;
                              for (const TCommand& other : root.Commands)
                                  names.push_back(other.Name);
                              return names;
                          }}};
    command.Formats = {"texto", "markdown", "man"};
    command.Examples = {{"conferix ajuda corrigir", "mostra as opções do comando corrigir"},
                        {"conferix ajuda --formato man", "escreve a página de manual"}};
    command.Run = [words, &root](const TCliContext& context) {
        const TCommand& asked = CommandOf(root, *words);
        context.Streams.Out << (context.Formato == "man"        ? ManualPage(root)
                                : context.Formato == "markdown" ? HelpMarkdown(root)
                                                                : HelpText(root, asked));
        return kExitValid;
    };
    root.Commands.push_back(std::move(command));
}

void AddCompletar(TCommand& root) {
    auto shell = std::make_shared<std::string>();
    TCommand command{.Name = "completar",
                     .Summary = "Escreve o que faz o interpretador de comandos completar palavras"};
    command.Details =
        "Quem instalou o pacote já tem isso. Os outros incluem uma linha no arquivo de início do "
        "interpretador, como nos exemplos.";
    command.Arguments = {{.Name = "INTERPRETADOR",
                          .Description = "bash, zsh ou fish",
                          .To = shell.get(),
                          .Choices = {"bash", "zsh", "fish"},
                          .Required = true}};
    command.Formats = {};
    command.Examples = {{"source <(conferix completar bash)", "em ~/.bashrc"},
                        {"source <(conferix completar zsh)", "em ~/.zshrc, depois de compinit"},
                        {"conferix completar fish | source", "em ~/.config/fish/config.fish"}};
    command.Run = [shell, &root](const TCliContext& context) {
        context.Streams.Out << CompletionScript(root, *shell);
        return kExitValid;
    };
    root.Commands.push_back(std::move(command));
}

} // namespace

void AddCommands(TCommand& root, TCliContext& context) {
    root.Name = "conferix";
    root.Summary = "Confere e corrige arquivos XML do padrão TISS";
    root.Examples = {{"conferix validar lote.xml", "mostra o que há de errado no arquivo"},
                     {"conferix corrigir lote.xml --todas --no-lugar --copia",
                      "corrige o que pode ser calculado e guarda o que havia em lote.xml.bak"}};
    root.Options = {
        {.Name = "--formato",
         .Placeholder = "FORMATO",
         .Description = "Formato da saída",
         .To = &context.Formato},
        {.Name = "--esquemas",
         .Placeholder = "PASTA",
         .Description = "Pasta dos schemas XSD, em vez dos embutidos e importados",
         .To = &context.Esquemas,
         .Kind = TValueKind::Folder},
        {.Name = "--terminologia",
         .Placeholder = "ARQUIVO",
         .Description = "Base de terminologia (tuss.db)",
         .To = &context.Terminologia,
         .Kind = TValueKind::File},
        {.Name = "--config",
         .Placeholder = "ARQUIVO",
         .Description = "Arquivo de configuração (config.json)",
         .To = &context.Config,
         .Kind = TValueKind::File},
        {.Name = "--ajuda", .Description = "Mostra esta ajuda e termina", .OtherNames = {"-h", "--help"}},
        {.Name = "--versao", .Description = "Mostra a versão e termina", .OtherNames = {"-V", "--version"}},
    };
    AddFileCommands(root);
    AddDataCommands(root);
    AddAjuda(root);
    AddCompletar(root);
}

} // namespace conferix
