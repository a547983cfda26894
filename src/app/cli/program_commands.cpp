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
                          .Kind = TValueKind::Command,
                          .Offers = [&root] { return CommandOffers(root); }}};
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

void AddServir(TCommand& root) {
    auto options = std::make_shared<TServirOptions>();
    TCommand command{.Name = "servir", .Summary = "Atende pedidos de validação e correção por HTTP"};
    command.Details =
        "GET / é uma página para conferir e corrigir arquivos no navegador. "
        "POST /validar e POST /corrigir recebem arquivos e respondem o mesmo que os comandos; GET /regras, "
        "/saude e /metricas informam. Não guarda nada entre um pedido e outro. Atende só este computador, se "
        "--endereco não disser outra coisa. Para com Ctrl+C ou SIGTERM, depois de terminar o que está em "
        "andamento.";
    const auto number = [&command](const std::string& name, int& value, int least, int most,
                                   const std::string& description) {
        command.Options.push_back({.Name = name,
                                   .Placeholder = "N",
                                   .Description = description,
                                   .To = &value,
                                   .Range = std::pair(least, most)});
    };
    command.Options = {{.Name = "--endereco",
                        .Placeholder = "IP",
                        .Description = "Endereço em que atende; se omitido, 127.0.0.1",
                        .To = &options->Endereco}};
    number("--porta", options->Porta, 0, 65535, "Porta; se omitida, 8080; 0 é uma livre");
    number("--corpo-maximo", options->CorpoMaximo, 1, 4096,
           "Maior corpo de um pedido, em MB; se omitido, 64");
    command.Options.push_back(
        {.Name = "--memoria",
         .Placeholder = "N",
         .Description = "Todos os corpos juntos, em MB, ao menos --corpo-maximo; se omitido, 256",
         .To = &options->Memoria,
         .Range = std::pair(1, 65536)});
    command.Options.push_back(
        {.Name = "--execucoes",
         .Placeholder = "N",
         .Description = "Pedidos executados ao mesmo tempo; se omitido, um por processador",
         .To = &options->Execucoes,
         .Range = std::pair(1, 256)});
    number("--fila", options->Fila, 0, 65536, "Pedidos que esperam a vez; se omitido, 16");
    number("--conexoes", options->Conexoes, 1, 65536, "Conexões abertas; se omitido, 256");
    number("--prazo-envio", options->PrazoEnvio, 1, 3600, "Segundos para receber um corpo; se omitido, 120");
    number("--prazo", options->Prazo, 1, 3600, "Segundos para responder a um pedido; se omitido, 60");
    number("--prazo-parada", options->PrazoParada, 1, 3600,
           "Segundos para terminar o que está em andamento ao parar; se omitido, 25");
    command.Formats = {};
    command.WhenZero = "o serviço parou como foi pedido";
    command.Examples = {
        {"conferix servir", "atende em http://127.0.0.1:8080"},
        {"conferix servir --endereco 0.0.0.0 --execucoes 4", "atende a rede, quatro pedidos ao mesmo tempo"}};
    command.Run = [options](const TCliContext& context) { return RunServir(context, *options); };
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
    AddServir(root);
    AddAjuda(root);
    AddCompletar(root);
}

} // namespace conferix
