// The commands about files, as users are told of them.
#include "app/cli/command_line.h"
#include "listing/listing_writer.h"
#include "model/arquivo_tiss_factory.h"

#include <limits>
#include <memory>

namespace conferix {

namespace {

constexpr const char* kOneFile = "Arquivo XML; - é a entrada padrão";

std::vector<TOffer> LotVersions() {
    std::vector<TOffer> versions;
    for (const TArquivoTissClass& version : TArquivoTissFactory::Classes())
        if (version.Tipo == TEnumTipoArquivoTiss::taMensagemTISS)
            versions.push_back({std::string(version.Versao)});
    return versions;
}

void AddValidar(TCommand& root) {
    auto options = std::make_shared<TValidarOptions>();
    TCommand command{.Name = "validar", .Summary = "Valida arquivos e pastas"};
    command.Details = "Confere cada arquivo com o schema XSD da sua versão, os prefixos de namespace, o hash "
                      "do epílogo e as regras "
                      "de negócio, e mostra todas as falhas de uma vez. Uma pasta vale por seus arquivos "
                      "*.xml e *.xte e os das "
                      "suas subpastas. Falhas de mesma causa saem em uma só linha, com a quantidade.";
    command.Arguments = {{.Name = "ARQUIVO...",
                          .Description = "Arquivos ou pastas; - é a entrada padrão",
                          .To = &options->Arquivos,
                          .Kind = TValueKind::File}};
    command.Options = {
        {.Name = "--lista",
         .Placeholder = "ARQUIVO",
         .Description =
             "Valida também os arquivos que este arquivo lista, um por linha ou separados por NUL; - é a "
             "entrada padrão",
         .To = &options->Lista,
         .Kind = TValueKind::File},
        {.Name = "--saida",
         .Placeholder = "ARQUIVO",
         .Description = "Grava o relatório neste arquivo, de uma vez; - é a saída padrão",
         .To = &options->Saida,
         .Kind = TValueKind::File},
        {.Name = "--resumo", .Description = "Mostra só uma linha por arquivo", .To = &options->Resumo},
        {.Name = "--silencioso",
         .Description =
             "Não mostra o relatório nem avisos: só os erros, na saída de erro, e o status de saída",
         .To = &options->Silencioso},
        {.Name = "--estatisticas",
         .Description = "Mostra também quanto foi encontrado, por regra e por arquivo",
         .To = &options->Estatisticas},
        {.Name = "--totais",
         .Description = "Em json e ndjson, termina com os totais e as guias que estão em mais de um arquivo",
         .To = &options->Totais},
        {.Name = "--nivel",
         .Placeholder = "NIVEL",
         .Description =
             "erro, aviso ou informacao: o que é mostrado e leva ao status 1; se omitida, tudo é mostrado "
             "e só erros levam a ele",
         .To = &options->Nivel,
         .Choices = {"erro", "aviso", "informacao"}},
        {.Name = "--agrupar",
         .Placeholder = "COMO",
         .Description = "linha ou regra: como o texto é agrupado",
         .To = &options->Agrupar,
         .Choices = {"linha", "regra"}},
        {.Name = "--todas",
         .Description = "Mostra também as mensagens de sucesso e as ocultas",
         .To = &options->Todas},
        {.Name = "--sem-subpastas",
         .Description = "De uma pasta, só os arquivos que estão diretamente nela",
         .To = &options->SemSubpastas},
        {.Name = "--detalhar",
         .Description = "Mostra cada mensagem, sem agrupar as de mesma causa",
         .To = &options->Detalhar},
        {.Name = "--desativar",
         .Placeholder = "NOME,...",
         .Description =
             "Desativa regras só nesta execução; um grupo leva as que estão abaixo dele, e bastam as "
             "últimas palavras de um nome",
         .To = &options->Desativar,
         .Kind = TValueKind::Rule,
         .Offers = &RuleOffers,
         .Commas = true},
        {.Name = "--paralelo",
         .Placeholder = "N",
         .Description = "Arquivos validados ao mesmo tempo; se omitido, um por processador",
         .To = &options->Paralelo,
         .Range = std::pair(1, 256)},
    };
    command.Formats = {"texto", "json", "ndjson", "sarif", "junit", "csv", "html"};
    command.WhenZero = "todos os arquivos são válidos";
    command.WhenOne = "há arquivo inválido, ou mensagem que --nivel faz contar";
    command.Examples = {
        {"conferix validar lote.xml", "mostra o que há de errado no arquivo"},
        {"conferix validar enviar/ --formato ndjson",
         "valida uma pasta e escreve uma linha de JSON por arquivo, assim que cada um termina"}};
    command.Run = [options](const TCliContext& context) { return RunValidar(context, *options); };
    root.Commands.push_back(std::move(command));
}

void AddCorrigir(TCommand& root) {
    auto options = std::make_shared<TCorrigirOptions>();
    TCommand command{.Name = "corrigir", .Summary = "Corrige o que pode ser calculado ou consertado"};
    command.Details = "Sem dizer o que corrigir, mostra as correções que existem. Cada correção é seguida de "
                      "nova validação; o que "
                      "deixaria uma conta pior fica como está, e o motivo é dito. O resultado vai para o "
                      "arquivo de --saida, para o "
                      "próprio arquivo (--no-lugar) ou, de um só arquivo, para a saída padrão, quando ela "
                      "não é o terminal.\n\n"
                      "O que já existe não se perde: um arquivo é trocado de uma vez, e não é gravado se "
                      "outro programa o mudou.";
    command.Arguments = {{.Name = "ARQUIVO...",
                          .Description = "Arquivos XML; - é a entrada padrão",
                          .To = &options->Arquivos,
                          .Kind = TValueKind::File,
                          .Required = true}};
    command.Options = {
        {.Name = "--todas",
         .Description = "Corrige todos os erros que oferecem correção",
         .To = &options->Todas,
         .Excludes = {"--mensagem"}},
        {.Name = "--mensagem",
         .Placeholder = "N",
         .Description = "Corrige só a mensagem de número N",
         .To = &options->Mensagem,
         .Range = std::pair(1, std::numeric_limits<int>::max())},
        {.Name = "--correcao",
         .Placeholder = "K",
         .Description = "Qual das correções da mensagem; se omitida, a primeira",
         .To = &options->Correcao,
         .Range = std::pair(1, std::numeric_limits<int>::max())},
        {.Name = "--estrutura",
         .Description =
             "Conserta a estrutura (nomes, ordem, níveis, formato dos valores) sem perder nada; com "
             "--todas, antes das outras correções",
         .To = &options->Estrutura,
         .Excludes = {"--mensagem"}},
        {.Name = "--com-perdas",
         .Description = "Conserta a estrutura também onde algo se perde (elemento removido, texto cortado)",
         .To = &options->ComPerdas,
         .Needs = "--estrutura"},
        {.Name = "--codificacao",
         .Placeholder = "NOME",
         .Description = "Grava em ISO-8859-1 ou UTF-8, e declara essa codificação",
         .To = &options->Codificacao,
         .Choices = {"ISO-8859-1", "UTF-8"},
         .Excludes = {"--mensagem"}},
        {.Name = "--saida",
         .Placeholder = "ARQUIVO",
         .Description = "Grava neste arquivo; - é a saída padrão",
         .To = &options->Saida,
         .Kind = TValueKind::File},
        {.Name = "--no-lugar",
         .Description = "Grava sobre o próprio arquivo",
         .To = &options->NoLugar,
         .Excludes = {"--saida"}},
        {.Name = "--copia",
         .Description = "Guarda o arquivo substituído como ARQUIVO.bak (se já existe, ARQUIVO.bak-2, e assim "
                        "por diante)",
         .To = &options->Copia},
        {.Name = "--renomear",
         .Description = "Dá o nome novo ao arquivo cujo nome leva o hash",
         .To = &options->Renomear,
         .Needs = "--no-lugar"},
        {.Name = "--simular",
         .Description = "Mostra as diferenças e não grava nada",
         .To = &options->Simular,
         .Excludes = {"--saida", "--no-lugar"}},
        {.Name = "--detalhar",
         .Description = "Diz cada correção e cada letra que muda, sem agrupar",
         .To = &options->Detalhar},
    };
    command.WhenZero = "os arquivos corrigidos são válidos";
    command.WhenOne = "um arquivo continua inválido depois das correções";
    command.Examples = {{"conferix corrigir lote.xml --todas --simular", "mostra o que mudaria, sem gravar"},
                        {"conferix corrigir enviar/*.xml --todas --no-lugar --copia",
                         "corrige cada arquivo e guarda o que havia em ARQUIVO.bak"}};
    command.Run = [options](const TCliContext& context) { return RunCorrigir(context, *options); };
    root.Commands.push_back(std::move(command));
}

/// A command that does something with one file.
void AddSingleFile(TCommand& root, TCommand command, int (*run)(const TCliContext&, const std::string&)) {
    auto file = std::make_shared<std::string>();
    command.Arguments = {{.Name = "ARQUIVO",
                          .Description = kOneFile,
                          .To = file.get(),
                          .Kind = TValueKind::File,
                          .Required = true}};
    command.Run = [file, run](const TCliContext& context) { return run(context, *file); };
    root.Commands.push_back(std::move(command));
}

void AddConverter(TCommand& root) {
    auto options = std::make_shared<TConverterOptions>();
    TCommand command{.Name = "converter", .Summary = "Converte lotes de guias para outra versão"};
    command.Details =
        "Converte passo a passo e diz o que se perdeu, o que falta informar e o que mudou. O hash é "
        "calculado de novo e o resultado conferido com o schema da nova versão.";
    command.Arguments = {{.Name = "ARQUIVO...",
                          .Description = "Arquivos XML; - é a entrada padrão",
                          .To = &options->Arquivos,
                          .Kind = TValueKind::File,
                          .Required = true}};
    command.Options = {
        {.Name = "--para",
         .Placeholder = "VERSAO",
         .Description = "Versão de destino, como 4.01.00 (conferix versoes ARQUIVO mostra quais)",
         .To = &options->Para,
         .Offers = &LotVersions,
         .Required = true},
        {.Name = "--regime-atendimento",
         .Placeholder = "CODIGO",
         .Description =
             "01 a 05: regime das guias de consulta e SP/SADT ao passar para 4.00.00; nenhum: será "
             "informado depois",
         .To = &options->RegimeAtendimento,
         .Offers = [] { return std::vector<TOffer>{{"01"}, {"02"}, {"03"}, {"04"}, {"05"}, {"nenhum"}}; }},
        {.Name = "--saida",
         .Placeholder = "ARQUIVO",
         .Description = "Grava neste arquivo; - é a saída padrão",
         .To = &options->Saida,
         .Kind = TValueKind::File},
        {.Name = "--pasta-saida",
         .Placeholder = "PASTA",
         .Description = "Grava nesta pasta, com o mesmo nome",
         .To = &options->PastaSaida,
         .Kind = TValueKind::Folder,
         .Excludes = {"--saida"}},
        {.Name = "--detalhar", .Description = "Mostra cada nota, sem agrupar", .To = &options->Detalhar},
    };
    command.WhenZero = "os arquivos foram convertidos, com ou sem notas";
    command.WhenOne = "um arquivo não pode ser convertido";
    command.Examples = {{"conferix converter lote.xml --para 4.01.00 --saida novo.xml", "converte um lote"},
                        {"conferix converter antigos/*.xml --para 4.01.00 --pasta-saida novos",
                         "converte vários e grava cada um, com o mesmo nome, na pasta"}};
    command.Run = [options](const TCliContext& context) { return RunConverter(context, *options); };
    root.Commands.push_back(std::move(command));
}

void AddImprimir(TCommand& root) {
    auto options = std::make_shared<TImprimirOptions>();
    TCommand command{.Name = "imprimir",
                     .Summary = "Imprime as guias de lotes nos formulários do padrão, em PDF"};
    command.Details =
        "Cada guia sai no formulário da versão do arquivo, caixa por caixa, pronta para assinar; o que não "
        "cabe em "
        "uma folha continua em outra, e o anexo de outras despesas vem atrás da sua guia. Um arquivo com "
        "erros "
        "também é impresso, com a quantidade de erros abaixo da moldura.\n\n"
        "Um formulário da pasta \"formularios\" da pasta de dados vale no lugar do que vem com o programa.";
    command.Arguments = {{.Name = "ARQUIVO...",
                          .Description = "Arquivos XML; - é a entrada padrão",
                          .To = &options->Arquivos,
                          .Kind = TValueKind::File}};
    command.Options = {
        {.Name = "--guia",
         .Placeholder = "NUMERO,...",
         .Description =
             "Só as guias com estes números no prestador; um número que nenhuma tem no prestador vale "
             "como o da operadora",
         .To = &options->Guias,
         .Commas = true},
        {.Name = "--formulario",
         .Placeholder = "NOME",
         .Description = "Só este formulário, como spsadt ou outras_despesas",
         .To = &options->Formulario,
         .Offers = &FormOffers},
        {.Name = "--saida",
         .Placeholder = "ARQUIVO",
         .Description = "Grava o PDF neste arquivo; - é a saída padrão",
         .To = &options->Saida,
         .Kind = TValueKind::File},
        {.Name = "--com-descricao",
         .Description = "Põe ao lado de cada código o que ele quer dizer",
         .To = &options->ComDescricao},
        {.Name = "--sem-aviso",
         .Description = "Não valida o arquivo e não diz quantos erros ele tem",
         .To = &options->SemAviso},
        {.Name = "--em-branco",
         .Placeholder = "NOME",
         .Description = "Imprime este formulário vazio, para preencher à mão",
         .To = &options->EmBranco,
         .Offers = &FormOffers,
         .Excludes = {"--guia", "--formulario", "--com-descricao", "--sem-aviso"}},
        {.Name = "--versao",
         .Placeholder = "VERSAO",
         .Description = "Versão do formulário de --em-branco, como 3.05.00; se omitida, a mais nova",
         .To = &options->Versao,
         .Offers = &LotVersions,
         .Needs = "--em-branco"},
    };
    command.WhenZero = "o PDF está gravado, de arquivos com erros ou sem";
    command.WhenOne =
        "um arquivo não tem guias ou não é um arquivo TISS legível, nenhum tem uma das guias pedidas, ou "
        "nenhuma guia tem o formulário pedido; o que há a imprimir é impresso";
    command.Examples = {
        {"conferix imprimir lote.xml --saida guias.pdf", "imprime todas as guias do lote"},
        {"conferix imprimir lote.xml --guia 1001,1002 --saida duas.pdf", "imprime só duas guias"},
        {"conferix imprimir --em-branco consulta --saida consulta.pdf",
         "imprime uma guia de consulta vazia"}};
    command.Run = [options](const TCliContext& context) { return RunImprimir(context, *options); };
    root.Commands.push_back(std::move(command));
}

void AddListar(TCommand& root) {
    auto options = std::make_shared<TListarOptions>();
    TCommand command{.Name = "listar", .Summary = "Lista o que há em lotes de guias e no monitoramento"};
    command.Details =
        "guias: a relação das guias; capa: a folha de rosto do lote, com os totais; procedimentos: "
        "por código; despesas: por tipo; profissionais: o que cada um produziu; entrega: o protocolo "
        "que se assina. Os totais informados ficam ao lado dos calculados, e o que difere é assinalado. De "
        "um arquivo de monitoramento são os valores informados, processados e pagos: por guia, por "
        "procedimento, por prestador (profissionais) e também por mês e tipo de evento (capa).\n\n"
        "De vários arquivos, ou de uma pasta, saem os totais de cada um e os de todos. As listagens trazem "
        "dados de pacientes.";
    command.Arguments = {{.Name = "LISTAGEM",
                          .Description = "guias, capa, procedimentos, despesas, profissionais ou entrega",
                          .To = &options->Listagem,
                          .Choices = {ListingNames().begin(), ListingNames().end()},
                          .Required = true},
                         {.Name = "ARQUIVO...",
                          .Description = "Arquivos ou pastas; - é a entrada padrão",
                          .To = &options->Arquivos,
                          .Kind = TValueKind::File,
                          .Required = true}};
    command.Options = {
        {.Name = "--ordem",
         .Placeholder = "ORDEM",
         .Description = "guia, beneficiario, data ou valor (o maior primeiro); se omitida, a do arquivo",
         .To = &options->Ordem,
         .Choices = {"guia", "beneficiario", "data", "valor"}},
        {.Name = "--saida",
         .Placeholder = "ARQUIVO",
         .Description = "Grava a listagem neste arquivo, de uma vez; - é a saída padrão",
         .To = &options->Saida,
         .Kind = TValueKind::File},
        {.Name = "--sem-subpastas",
         .Description = "De uma pasta, só os arquivos que estão diretamente nela",
         .To = &options->SemSubpastas},
    };
    command.Formats = ListingFormats();
    command.WhenZero = "os arquivos foram listados, com diferenças ou sem";
    command.WhenOne = "um arquivo não tem o que listar, ou não é um arquivo TISS legível";
    command.Examples = {{"conferix listar guias lote.xml", "mostra as guias do lote e os totais"},
                        {"conferix listar capa lote.xml --formato pdf --saida capa.pdf",
                         "grava a folha de rosto do lote, para imprimir"},
                        {"conferix listar procedimentos enviar/ --formato csv --saida procedimentos.csv",
                         "grava uma tabela para a planilha, de todos os lotes de uma pasta"}};
    command.Run = [options](const TCliContext& context) { return RunListar(context, *options); };
    root.Commands.push_back(std::move(command));
}

} // namespace

void AddFileCommands(TCommand& root) {
    AddValidar(root);
    AddCorrigir(root);
    AddSingleFile(root,
                  {.Name = "informar",
                   .Summary = "Mostra o que o arquivo é e contém",
                   .Details = "Tipo, transação, versão, origem e destino, quantidades e totais.",
                   .WhenOne = "o arquivo não é um arquivo TISS legível",
                   .Examples = {{"conferix informar lote.xml", "mostra o que há no arquivo"},
                                {"conferix informar lote.xml --formato json", "o mesmo, para programas"}}},
                  &RunInformar);
    AddSingleFile(root,
                  {.Name = "hash",
                   .Summary = "Mostra o hash informado e os calculados",
                   .WhenZero = "o hash informado está certo",
                   .WhenOne = "o hash informado está errado, ou o arquivo não é um arquivo TISS legível",
                   .Examples = {{"conferix hash lote.xml", "compara o hash do epílogo com o do conteúdo"},
                                {"conferix corrigir lote.xml --todas --no-lugar",
                                 "corrige o hash, com o que mais puder ser corrigido"}}},
                  &RunHash);
    AddListar(root);
    AddConverter(root);
    AddImprimir(root);
    AddSingleFile(root,
                  {.Name = "versoes",
                   .Summary = "Mostra para quais versões um lote pode ser convertido",
                   .WhenOne = "o arquivo não pode ser convertido",
                   .Examples = {{"conferix versoes lote.xml", "mostra as versões anteriores e posteriores"},
                                {"conferix versoes lote.xml --formato json", "o mesmo, para programas"}}},
                  &RunVersoes);
}

} // namespace conferix
