// The commands about what the program knows, as users are told of them.
#include "app/cli/command_line.h"
#include "validator/rule_list.h"

#include <memory>

namespace conferix {

std::vector<TOffer> RuleOffers() {
    std::vector<TOffer> offers;
    for (const TListedRule& rule : ListRules())
        offers.push_back({rule.Rule->Name, rule.Rule->Description});
    return offers;
}

namespace {

void AddRegras(TCommand& root) {
    auto options = std::make_shared<TRegrasOptions>();
    TCommand command{.Name = "regras", .Summary = "Lista e explica as regras; ativa e desativa"};
    command.Details =
        "As regras saem na ordem em que são aplicadas. Um grupo leva as regras que estão abaixo dele. O "
        "que se ativa ou desativa aqui vale para todas as execuções; para uma só, use validar "
        "--desativar.";
    command.Options = {
        {.Name = "--explicar",
         .Placeholder = "NOME",
         .Description =
             "Explica uma regra: o que confere, um exemplo que falha, como corrigir; bastam as últimas "
             "palavras do nome",
         .To = &options->Explicar,
         .Kind = TValueKind::Rule,
         .Offers = &RuleOffers,
         .Excludes = {"--ativar", "--desativar", "--padrao"}},
        {.Name = "--ativar",
         .Placeholder = "NOME...",
         .Description =
             "Ativa regras, com espaço ou vírgula entre os nomes; bastam as últimas palavras de cada "
             "um",
         .To = &options->Ativar,
         .Kind = TValueKind::Rule,
         .Offers = &RuleOffers,
         .Commas = true,
         .ManyWords = true},
        {.Name = "--desativar",
         .Placeholder = "NOME...",
         .Description = "Desativa regras, do mesmo modo",
         .To = &options->Desativar,
         .Kind = TValueKind::Rule,
         .Offers = &RuleOffers,
         .Commas = true,
         .ManyWords = true},
        {.Name = "--padrao", .Description = "Volta a todas as regras ativas", .To = &options->Padrao},
    };
    command.Formats = {"texto", "json", "markdown"};
    command.Examples = {{"conferix regras", "mostra as regras e quais estão ativas"},
                        {"conferix regras --explicar tiss.mensagem.hash", "explica uma regra"},
                        {"conferix regras --desativar tiss.mensagem.loteguias.spsadt.sequencial",
                         "deixa de aplicar uma regra"}};
    command.Run = [options](const TCliContext& context) { return RunRegras(context, *options); };
    root.Commands.push_back(std::move(command));
}

void AddDocumento(TCommand& root) {
    struct TValues {
        std::string Kind;
        std::string Number;
    };
    auto values = std::make_shared<TValues>();
    TCommand command{.Name = "documento", .Summary = "Confere os dígitos de um CPF, CNPJ ou CNS"};
    command.Details =
        "O número pode ter a pontuação de costume. De um número inválido é dito o que está errado.";
    command.Arguments = {{.Name = "DOCUMENTO",
                          .Description = "cpf, cnpj ou cns",
                          .To = &values->Kind,
                          .Choices = {"cpf", "cnpj", "cns"},
                          .Required = true},
                         {.Name = "NÚMERO",
                          .Description = "O número, com ou sem pontuação",
                          .To = &values->Number,
                          .Required = true}};
    command.WhenZero = "o número é válido";
    command.WhenOne = "o número é inválido";
    command.Examples = {{"conferix documento cpf 529.982.247-25", "confere um CPF"},
                        {"conferix documento cns 898001160660761", "confere um cartão nacional de saúde"}};
    command.Run = [values](const TCliContext& context) {
        return RunDocumento(context, values->Kind, values->Number);
    };
    root.Commands.push_back(std::move(command));
}

/// A command that takes one argument.
TCommand WithArgument(TCommand command, TParameter argument,
                      int (*run)(const TCliContext&, const std::string&)) {
    auto value = std::make_shared<std::string>();
    argument.To = value.get();
    argument.Required = true;
    command.Arguments.push_back(std::move(argument));
    command.Run = [value, run](const TCliContext& context) { return run(context, *value); };
    return command;
}

void AddEsquemas(TCommand& root) {
    TCommand group{.Name = "esquemas", .Summary = "Schemas XSD: lista, importa e remove"};
    group.Details =
        "Os schemas de todas as versões vêm com o programa. Um conjunto publicado pela ANS pode ser "
        "importado e passa a ser usado primeiro.";
    group.Commands.push_back(
        {.Name = "esquemas listar",
         .Summary = "Mostra o schema de cada versão",
         .Examples = {{"conferix esquemas listar", "mostra de onde vem o schema de cada versão"},
                      {"conferix esquemas listar --formato json", "o mesmo, para programas"}},
         .Run = &RunEsquemasListar});
    group.Commands.push_back(WithArgument(
        {.Name = "esquemas importar",
         .Summary = "Instala os schemas publicados pela ANS",
         .WhenOne = "um schema não pode ser usado",
         .Examples = {{"conferix esquemas importar Componente_de_Comunicacao.zip", "importa o pacote da ANS"},
                      {"conferix esquemas importar pasta/", "importa os arquivos XSD de uma pasta"}}},
        {.Name = "ORIGEM",
         .Description = "Pasta com os arquivos XSD, ou arquivo ZIP",
         .To = {},
         .Kind = TValueKind::File},
        &RunEsquemasImportar));
    group.Commands.push_back(WithArgument(
        {.Name = "esquemas remover",
         .Summary = "Volta ao schema embutido de uma versão",
         .WhenOne = "não há schema importado dessa versão",
         .Examples = {{"conferix esquemas remover 4.01.00", "deixa de usar o schema importado"},
                      {"conferix esquemas listar", "mostra o que ficou"}}},
        {.Name = "VERSAO", .Description = "Versão, como 4.01.00", .To = {}}, &RunEsquemasRemover));
    root.Commands.push_back(std::move(group));
}

TCommand MakeConsultar() {
    auto options = std::make_shared<TConsultarOptions>();
    TCommand command{.Name = "terminologia consultar", .Summary = "Diz se um código vale em uma data"};
    command.Options = {
        {.Name = "--tabela",
         .Placeholder = "T",
         .Description = "Número da tabela da TUSS",
         .To = &options->Tabela,
         .Offers = [] { return std::vector<TOffer>{{"18"}, {"19"}, {"20"}, {"22"}, {"63"}, {"64"}, {"87"}}; },
         .Required = true},
        {.Name = "--codigo",
         .Placeholder = "C",
         .Description = "Código do termo",
         .To = &options->Codigo,
         .Required = true},
        {.Name = "--data",
         .Placeholder = "AAAA-MM-DD",
         .Description = "Data da execução",
         .To = &options->Data,
         .Required = true},
        {.Name = "--consolidado",
         .Description = "Consulta a forma de envio na tabela de domínio 64",
         .To = &options->Consolidado},
    };
    command.WhenZero = "o código é válido nessa data";
    command.WhenOne = "o código não é válido nessa data";
    command.Examples = {{"conferix terminologia consultar --tabela 22 --codigo 10101012 --data 2026-01-15",
                         "diz se o procedimento vale no dia"},
                        {"conferix terminologia consultar --tabela 22 --codigo 10101012 --data 2026-01-15 "
                         "--consolidado",
                         "diz se é enviado à ANS por ele mesmo ou pelo código do grupo"}};
    command.Run = [options](const TCliContext& context) {
        return RunTerminologiaConsultar(context, *options);
    };
    return command;
}

TCommand MakeImportar() {
    auto options = std::make_shared<TImportarOptions>();
    TCommand command{.Name = "terminologia importar", .Summary = "Importa as publicações da ANS para a base"};
    command.Details =
        "Os arquivos são lidos como foram baixados, em qualquer ordem. A base fica na pasta de dados; a "
        "que veio com o programa não é alterada. Uma importação que falha ou é interrompida não muda "
        "nada.";
    command.Arguments = {{.Name = "ORIGEM...",
                          .Description = "Arquivos ZIP, XLSX, CSV, TXT ou JSON, ou pastas com eles",
                          .To = &options->Origens,
                          .Kind = TValueKind::File,
                          .Required = true}};
    command.Options = {{.Name = "--substituir",
                        .Description = "Esquece o que as tabelas importadas tinham e os arquivos não trazem",
                        .To = &options->Substituir}};
    command.Examples = {
        {"conferix terminologia importar Padrao_TISS_Representacao_de_Conceitos_em_Saude_202607.zip",
         "importa o pacote da ANS"},
        {"conferix terminologia importar historicos/", "importa todos os arquivos de uma pasta"}};
    command.Run = [options](const TCliContext& context) {
        return RunTerminologiaImportar(context, *options);
    };
    return command;
}

TCommand MakeProcurar() {
    auto options = std::make_shared<TProcurarOptions>();
    TCommand command{.Name = "terminologia procurar", .Summary = "Procura termos por palavras da descrição"};
    command.Arguments = {{.Name = "TEXTO",
                          .Description = "Palavras, ou o começo delas, com ou sem acentos",
                          .To = &options->Texto,
                          .Required = true}};
    command.Options = {
        {.Name = "--tabela",
         .Placeholder = "T",
         .Description = "Só nesta tabela da TUSS",
         .To = &options->Tabela,
         .Offers =
             [] {
                 return std::vector<TOffer>{{"18"}, {"19"}, {"20"}, {"22"}};
             }},
        {.Name = "--data",
         .Placeholder = "AAAA-MM-DD",
         .Description = "Só termos válidos nesta data",
         .To = &options->Data},
    };
    command.WhenZero = "há termos";
    command.WhenOne = "nenhum termo foi encontrado";
    command.Examples = {
        {"conferix terminologia procurar \"consulta consultorio\"", "procura em todas as tabelas"},
        {"conferix terminologia procurar luva --tabela 19 --data 2026-01-15",
         "procura materiais que valem no dia"}};
    command.Run = [options](const TCliContext& context) {
        return RunTerminologiaProcurar(context, *options);
    };
    return command;
}

void AddTerminologia(TCommand& root) {
    TCommand group{.Name = "terminologia",
                   .Summary = "Base de terminologia TUSS: importa, consulta, procura"};
    group.Details =
        "A base vem com os municípios, os grupos (tabela 63) e as tabelas (tabela 87); os códigos vêm das "
        "publicações da ANS, que se importam.";
    group.Commands.push_back(
        {.Name = "terminologia estado",
         .Summary = "Mostra as tabelas da base e as últimas importações",
         .Examples = {{"conferix terminologia estado", "mostra o que há na base, e de quando é"},
                      {"conferix terminologia estado --terminologia tuss.db", "o mesmo, de outra base"}},
         .Run = &RunTerminologiaEstado});
    group.Commands.push_back(MakeImportar());
    group.Commands.push_back(MakeConsultar());
    group.Commands.push_back(MakeProcurar());
    group.Commands.push_back({.Name = "terminologia restaurar",
                              .Summary = "Desfaz as importações: volta à base que veio com o programa",
                              .Examples = {{"conferix terminologia restaurar", "apaga a base importada"},
                                           {"conferix terminologia estado", "mostra o que ficou"}},
                              .Run = &RunTerminologiaRestaurar});
    root.Commands.push_back(std::move(group));
}

void AddProxy(TCommand& root) {
    auto options = std::make_shared<TProxyOptions>();
    TCommand command{.Name = "proxy", .Summary = "Mostra ou muda o acesso à internet por proxy"};
    command.Options = {
        {.Name = "--modo",
         .Placeholder = "MODO",
         .Description = "direto, sistema ou manual",
         .To = &options->Modo,
         .Choices = {"direto", "sistema", "manual"}},
        {.Name = "--servidor",
         .Placeholder = "ENDERECO",
         .Description = "Endereço do servidor; vazio apaga o que havia",
         .To = &options->Servidor},
        {.Name = "--porta",
         .Placeholder = "P",
         .Description = "Porta do servidor, de 1 a 65535; 0 apaga a que havia",
         .To = &options->Porta},
    };
    command.Examples = {{"conferix proxy", "mostra as configurações"},
                        {"conferix proxy --modo manual --servidor proxy.exemplo --porta 3128",
                         "usa um servidor para buscar atualizações"}};
    command.Run = [options](const TCliContext& context) { return RunProxy(context, *options); };
    root.Commands.push_back(std::move(command));
}

void AddAvisos(TCommand& root) {
    auto options = std::make_shared<TAvisosOptions>();
    TCommand command{.Name = "avisos", .Summary = "Mostra os avisos do programa"};
    command.Details =
        "Os avisos novos, os mais recentes primeiro: até que versão do padrão o programa confere, as tabelas "
        "da TUSS que há e as importadas há mais de seis meses, as atualizações que \"conferix atualizar\" "
        "viu "
        "ou instalou e os avisos que vieram com elas, as conferências de vários arquivos que levaram mais de "
        "dez segundos, os arquivos convertidos com pontos em aberto. Nada é buscado na rede, e os endereços "
        "não são abertos. Ficam na pasta de dados, sem dados de pacientes.";
    command.Options = {
        {.Name = "--todos", .Description = "Mostra também os lidos", .To = &options->Todos},
        {.Name = "--lido",
         .Placeholder = "N,...",
         .Description = "Marca estes avisos como lidos, e mostra os outros",
         .To = &options->Lido,
         .Commas = true},
        {.Name = "--excluir",
         .Placeholder = "N,...",
         .Description = "Exclui estes avisos, que não voltam",
         .To = &options->Excluir,
         .Commas = true},
    };
    command.WhenOne = "não há aviso de um dos números";
    command.Examples = {{"conferix avisos", "mostra os avisos novos"},
                        {"conferix avisos --lido 3,4", "marca dois avisos como lidos"}};
    command.Run = [options](const TCliContext& context) { return RunAvisos(context, *options); };
    root.Commands.push_back(std::move(command));
}

void AddAtualizar(TCommand& root) {
    auto onlyList = std::make_shared<bool>(false);
    TCommand command{.Name = "atualizar", .Summary = "Busca schemas e terminologia no endereço configurado"};
    command.Details = "O endereço está em Conferix.ini; por padrão não há nenhum.";
    command.Options = {
        {.Name = "--verificar", .Description = "Mostra o que há, sem instalar", .To = onlyList.get()}};
    command.Examples = {{"conferix atualizar --verificar", "mostra os pacotes que há"},
                        {"conferix atualizar", "busca e instala o que ainda não está instalado"}};
    command.Run = [onlyList](const TCliContext& context) { return RunAtualizar(context, *onlyList); };
    root.Commands.push_back(std::move(command));
}

} // namespace

void AddDataCommands(TCommand& root) {
    AddRegras(root);
    AddDocumento(root);
    AddEsquemas(root);
    AddTerminologia(root);
    AddProxy(root);
    AddAtualizar(root);
    AddAvisos(root);
}

} // namespace conferix
