#include "app/cli/command_help.h"
#include "app/tiss_file.h"
#include "data/tuss_writer.h"
#include "support/command_test.h"
#include "support/patterns.h"
#include "support/small_lote.h"
#include "support/support.h"
#include "support/system.h"
#include "validation/hash_calculator.h"
#include "validator/rule_list.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <iomanip>
#include <thread>

namespace conferix {
namespace {

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

const std::string kData = "<ans:dataAtendimento>2026-01-31</ans:dataAtendimento>";

/// The lot with the hash that it must have.
std::string WithHash(std::string xml) {
    const TXmlParseResult parsed = TXmlParser::Parse(xml);
    ReplaceAll(xml, "<ans:hash>0<",
               "<ans:hash>" + THashCalculator::Calculate(*parsed.Document, THashEncoding::Iso88591) + "<");
    return xml;
}

/// Commands with a small schema and the terminology that comes with the program.
class Cli : public TCommandTest {
  protected:
    Cli() {
        options_ = {"--terminologia", CONFERIX_TUSS_DB};
        WriteTestFile(File("tissV4_01_00.xsd"), kSmallSchema);
        WriteTestFile(File("valido.xml"), WithHash(Lote(Guia("A", kData))));
        WriteTestFile(File("invalido.xml"),
                      WithHash(Lote("<ans:intruso/>" + Guia("B", "<ans:dataAtendimento/>"))));
        WriteTestFile(File("acento.xml"), WithHash(Lote(Guia("Ação", kData))));
    }

    TCommandResult Validar(std::vector<std::string> words, const std::string& input = {}) const {
        words.insert(words.begin(), {"validar", "--esquemas", folder_.Path().string()});
        return Run(std::move(words), input);
    }
};

TEST_F(Cli, TellsThatAFileIsValid) {
    const TCommandResult valid = Validar({File("valido.xml")});
    EXPECT_EQ(valid.Status, kExitValid);
    EXPECT_EQ(valid.Out, File("valido.xml") +
                             "\n  Mensagem TISS, ENVIO_LOTE_GUIAS, versão 4.01.00\n  sucesso: Arquivo "
                             "válido!\n    Nenhum erro foi encontrado no arquivo.\n");
    EXPECT_THAT(valid.Err, IsEmpty());
}

TEST_F(Cli, JsonTellsEverything) {
    const TCommandResult result = Validar({File("acento.xml"), File("invalido.xml"), "--formato", "json"});
    EXPECT_EQ(result.Status, kExitInvalid);
    const json files = json::parse(result.Out);
    ASSERT_EQ(files.size(), 2U);
    json first = files[0];
    EXPECT_EQ(Run({"--versao"}).Out, "conferix " + first["versaoPrograma"].get<std::string>() + "\n");
    first.erase("versaoPrograma");
    const std::string motivo = first["mensagens"][0]["motivo"];
    EXPECT_THAT(motivo, StartsWith("O hash informado no arquivo está válido e de acordo"));
    first["mensagens"][0].erase("motivo");
    EXPECT_EQ(first["mensagens"][0]["texto"], "[Linha: 4] " + motivo);
    first["mensagens"][0].erase("texto");
    const std::string hash = first["mensagens"][0]["origem"];
    EXPECT_EQ(first, json::parse(R"({"arquivo": )" + json(File("acento.xml")).dump() +
                                 R"(, "xmlValido": true, "valido": true, "versaoFormato": 1,
        "estado": ["sfAberto", "sfValidado", "sfValido"], "tipoArquivo": "taMensagemTISS",
        "tipoTransacao": "tmEnvioLoteGuias", "versao": "4.01.00", "esquemaAproximado": false, "erros": 0, "avisos": 0,
        "contagens": {"mtFatal": 0, "mtError": 0, "mtWarning": 0, "mtInformation": 1}, "ocultas": 0, "naoListadas": 0,
        "mensagens": [
        {"id": 1, "tipo": "mtInformation", "validacao": "tiss.mensagem.hash", "linha": 4, "coluna": 75, "posicao": 609, "guia": "",
         "campo": "", "origem": ")" +
                                 hash + R"(", "exibida": true, "grupo": 1, "correcoes": [
           {"nome": "THashSolver_UTF8", "descricao": "Corrigir Hash com codificação UTF-8"},
           {"nome": "TSanitizeHashSolver", "descricao": "Sanitizar o XML e corrigir Hash. \r\nO processo de sanitização irá remover espaços em branco no início e fim do conteúdo das tags, caracteres invisíveis (CR, LF, tabs, etc) e os acentos dos caracteres."}]},
        {"id": 2, "tipo": "mtSuccess", "validacao": "", "linha": 0, "coluna": 0, "posicao": 0, "guia": "", "campo": "",
         "motivo": "Arquivo válido!\r\nNenhum erro foi encontrado no arquivo.",
         "texto": "Arquivo válido!\r\nNenhum erro foi encontrado no arquivo.", "origem": "", "exibida": true, "grupo": 2,
         "correcoes": []}]})"))
        << first.dump(2);
    EXPECT_EQ(files[1]["estado"], json({"sfAberto", "sfValidado", "sfInvalido"}));
    EXPECT_EQ(files[1]["mensagens"][1]["guia"], "B");
    EXPECT_EQ(files[1]["mensagens"].size(), 2U);

    const json all = json::parse(Validar({File("valido.xml"), "--todas", "--formato", "json"}).Out);
    std::vector<std::string> shown;
    for (const json& message : all[0]["mensagens"])
        shown.push_back(message["validacao"].get<std::string>() + (message["exibida"] ? "+" : "-"));
    ASSERT_GE(shown.size(), 4U);
    EXPECT_EQ(shown[0], "tiss.mensagem.namespace-");
    EXPECT_EQ(shown[1], "tiss.mensagem.schema-");
    EXPECT_EQ(shown[shown.size() - 2], "tiss.mensagem.hash-");
    EXPECT_EQ(shown.back(), "+");
}

TEST_F(Cli, TakesFoldersStandardInputAndSeveralFilesAtOnce) {
    WriteTestFile(File("b.XTE"), WithHash(Lote(Guia("A", kData))));
    WriteTestFile(File("nota.txt"), "x");
    const auto names = [](const TCommandResult& result) {
        std::vector<std::string> found;
        for (const json& file : json::parse(result.Out))
            found.push_back(std::filesystem::path(file["arquivo"].get<std::string>()).filename().string());
        return found;
    };
    for (const char* parallel : {"1", "3", "100"})
        EXPECT_THAT(names(Validar({File(""), "--formato", "json", "--paralelo", parallel})),
                    ElementsAre("acento.xml", "b.XTE", "invalido.xml", "valido.xml"));
    const TCommandResult input = Validar({"-", "--formato", "json"}, ReadTestFile(File("invalido.xml")));
    EXPECT_EQ(input.Status, kExitInvalid);
    EXPECT_THAT(names(input), ElementsAre("-"));
    const TCommandResult lines = Validar({File(""), "--formato", "ndjson", "--paralelo", "2"});
    std::istringstream stream(lines.Out);
    int count = 0;
    for (std::string line; std::getline(stream, line); ++count)
        EXPECT_TRUE(json::parse(line).contains("mensagens"));
    EXPECT_EQ(count, 4);
    EXPECT_THAT(Validar({File("")}).Out, testing::EndsWith("\n4 arquivos: 3 válidos, 1 inválido.\n"));
}

/// Number of the lot and a hash that is not the file's.
constexpr const char* kNamedByHash = "00000000000000000001_0123456789ABCDEF0123456789ABCDEF.xml";

/// A text with "/" between the names of paths, also of those that JSON tells.
std::string WithSlashes(std::string text) {
    if (std::filesystem::path::preferred_separator == '\\') {
        ReplaceAll(text, "\\\\", "/");
        ReplaceAll(text, "\\", "/");
    }
    return text;
}

TEST_F(Cli, CommandLinesEndAsTheyShould) {
    WriteTestFile(File("quebrado.xml"), "<a>");
    WriteTestFile(File("outro.xml"), "<a/>");
    WriteTestFile(File("envelope.xml"),
                  "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Body>\n"
                  "<loteGuiasWS/></s:Body></s:Envelope>");
    WriteTestFile(File("protocolo.xml"), "<protocoloRecebimentoWS/>");
    WriteTestFile(File("dentro.xml"), "<s:Envelope xmlns:s=\"http://www.w3.org/2003/05/soap-envelope\">\n"
                                      "<mensagemTISS/></s:Envelope>");
    std::filesystem::copy(File("valido.xml"), File(kNamedByHash));
    WriteTestFile(File("bytes.xml"), "<a>\n\xFF</a>");
    std::filesystem::create_directory(File("vazia"));
    const bool hasLinks = MakeLink("valido.xml", File("atalho.xml"));
    if (!MakeLink(Example(""), File("exemplos"), true))
        std::filesystem::copy(Example("").parent_path(), File("exemplos"),
                              std::filesystem::copy_options::recursive);
    WriteTestFile(File("Conferix.ini"), "");
    TTussWriter terms(File("codigos.db"));
    terms.Insert(TTuss22{{"10101012", ParseIsoDate("2000-01-01"), std::nullopt}});
    terms.Insert(TTuss22{{"40304361", ParseIsoDate("2030-01-01"), std::nullopt}});
    terms.Insert(TTuss64{"22", "10101012", true, "045", ParseIsoDate("2000-01-01"), {}, {}});
    terms.Commit();
    std::string damaged = ReadTestFile(File("codigos.db"));
    constexpr std::size_t kPage = 4096;
    for (std::size_t page = kPage; page < damaged.size();
         page += kPage) // where the rows of a small table stand
        std::fill_n(damaged.begin() + static_cast<std::ptrdiff_t>(page + kPage / 2), kPage / 2, '\0');
    WriteTestFile(File("danificada.db"), damaged);
    MakeLink("nada.xml", File("pendente.xml"));
    std::filesystem::create_directories(File("pasta/fundo"));
    MakeLink("nada.xml", File("pasta/pendente.xml"));
    MakeLink("..", File("pasta/fundo/volta"), true);
    std::filesystem::copy(File("valido.xml"), File("pasta/fundo/valido.xml"));
    options_.clear();
    terminology_.Set(CONFERIX_TUSS_DB);
    std::filesystem::create_directory(File("dados"));
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder_.Path());
    const std::string source = ReadTestFile("valido.xml");
    std::set<std::string> files = folder_.Names();
    std::ifstream cases(std::filesystem::path(CONFERIX_FONTE) / "tests/app/cases/commands.txt");
    std::string told;
    std::string command;
    const auto expect = [&](const std::string& part) { // no message of the program comes twice
        EXPECT_THAT(WithSlashes(told), HasSubstr(WithSlashes(part))) << command;
        EXPECT_TRUE(!part.starts_with("conferix: ") || told.find(part) == told.rfind(part)) << command;
    };
    int count = 0;
    bool tried = true;
    for (std::string line; std::getline(cases, line);) {
        if (line.empty() || line[0] == '#' || (line[0] != '$' && !tried))
            continue;
        if (line[0] != '$') {
            expect(line);
            continue;
        }
        command = line;
        std::istringstream stream(line.substr(1));
        std::vector<std::string> words;
        for (std::string word; stream >> std::quoted(word, '\'');)
            words.push_back(word);
        ++count;
        tried = hasLinks || std::ranges::none_of(words, [](const std::string& word) {
                    return word == "atalho.xml" || word == "./atalho.xml" || word == "pasta";
                });
        if (!tried)
            continue;
        std::string input;
        if (const auto from = std::find(words.begin(), words.end(), "<"); from != words.end()) {
            input = ReadTestFile(words.back());
            words.erase(from, words.end());
        }
        const TCommandResult result = Run(words, input);
        std::getline(cases, line);
        EXPECT_EQ(std::to_string(result.Status), line.substr(0, 1)) << command << '\n' << result.Err;
        told = result.Out + result.Err;
        expect(line.substr(2));
        const bool failed = line.substr(2).starts_with("conferix: erro: ") || result.Status == kExitUsage;
        const auto has = [&](const char* word) { return std::ranges::count(words, word) != 0; };
        if (failed && !has("--formato") && !has("--") && !has("--silencioso")) {
            EXPECT_EQ(result.Out, "") << command;
            words.insert(words.end(), {"--formato", "json"}); // scripts read of the same failure
            // In JSON there is no place for the file itself.
            const bool nowhere = has("corrigir") && has("--todas") && !has("--no-lugar") && !has("--saida");
            const int status = nowhere && !has("--simular") ? kExitUsage : result.Status;
            SCOPED_TRACE(command);
            const nlohmann::json answer = Run(words, input).Json();
            const auto tells = [&](const nlohmann::json& one) {
                return one.contains("danos") ||
                       (one.contains("erro") && one["erro"].is_object() && one["erro"]["status"] == status);
            };
            EXPECT_TRUE(answer.is_array() ? std::ranges::any_of(answer, tells) : tells(answer))
                << command << answer;
        }
        if (result.Status == kExitValid)
            files = folder_.Names();
        EXPECT_EQ(folder_.Names(), files) << command;
    }
    EXPECT_GT(count, 145);
    EXPECT_THAT(Run({}).Err, HasSubstr("conferix: erro: Falta o comando: validar, corrigir, "));
    EXPECT_EQ(ReadTestFile("valido.xml"), source);
    std::filesystem::current_path(before);
}

TEST_F(Cli, NamesAndValuesSteerNoTerminal) {
    const std::pair<std::string, std::string> cases[] = {
        {"<?xml version='1.0' encoding='x\x1B[2J'?><a/>", "\\x1B[2J"},
        {"<mensagemTISS><cabecalho><Padrao>4\xC2\x9B\n2J\xE2\x80\xAE</Padrao></cabecalho></mensagemTISS>",
         "4\\u009B\\n2J\\u202E"},
    };
    const std::string name = NamesHoldAnything() ? "cor\x1B[31m\n\xFF.xml" : "cor[31m.xml";
    const std::string shown = NamesHoldAnything() ? "cor\\x1B[31m\\n\\xFF.xml" : name;
    for (const auto& [text, visible] : cases) {
        WriteTestFile(File(name), text);
        for (const char* command : {"validar", "informar", "hash"}) {
            const TCommandResult result = Run({command, File(name)});
            const std::string told = result.Out + result.Err;
            EXPECT_EQ(told.find('\x1B'), std::string::npos) << told;
            EXPECT_THAT(told, HasSubstr(shown)) << command;
            EXPECT_EQ(told.find("\xC2\x9B"), std::string::npos) << told;
            if (command == std::string("validar")) {
                EXPECT_THAT(told, HasSubstr(visible));
            }
        }
    }
}

TEST_F(Cli, OnlyATerminalThatKnowsColoursIsGivenThem) {
    if (!TerminalsHaveNames())
        GTEST_SKIP() << "no name tells of a terminal; a console is asked itself, and there is none";
    for (const auto& [term, coloured] :
         {std::pair("dumb", false), std::pair("", false), std::pair("xterm", true)}) {
        const TEnvironment terminal("TERM", term);
        std::istringstream in;
        std::ostringstream out;
        RunCli({"regras"}, {in, out, out, true, true});
        EXPECT_EQ(out.str().find('\x1B') != std::string::npos, coloured) << term;
    }
}

TEST_F(Cli, AMissingHashIsToldWithTheRightOne) {
    const std::string whole = ReadTestFile(Example("consulta-4.01.00-valido.xml"));
    const std::size_t hash = whole.find("<ans:hash>");
    const std::size_t end = whole.find("</ans:epilogo>");
    const std::string right = whole.substr(hash + 10, 32);
    for (const std::string& text : {whole.substr(0, hash) + whole.substr(end),
                                    whole.substr(0, whole.find("<ans:epilogo>")) + whole.substr(end + 14)}) {
        const TCommandResult result = Run({"hash", "-"}, text);
        EXPECT_EQ(result.Status, kExitInvalid);
        EXPECT_THAT(result.Out,
                    HasSubstr("O arquivo não tem hash. Preencha <hash>, em <epilogo>, com \"" + right));
    }
    // One that stands there under another name is no reason to tell a value that would be made of it too.
    std::string misnamed = whole;
    ReplaceAll(misnamed, "ans:epilogo>", "ans:Epilogo>");
    const TCommandResult result = Run({"hash", "-"}, misnamed);
    EXPECT_EQ(result.Status, kExitInvalid);
    EXPECT_EQ(result.Out, "");
    EXPECT_THAT(result.Err, HasSubstr("Corrija a estrutura"));
}

TEST_F(Cli, AFileThatSomebodyElseChangesIsNotWrittenOver) {
    const std::string faulty = ReadTestFile(Example("honorarios-4.01.00-valores-errados.xml"));
    const std::string file = File("lote.xml");
    const auto correct = [&](std::vector<std::string> words) {
        words.insert(words.begin(), {"corrigir", file, "--todas"});
        return Run(std::move(words));
    };
    WriteTestFile(file, faulty);
    EXPECT_NE(correct({"--no-lugar", "--copia"}).Status, kExitUnreadable);
    EXPECT_EQ(ReadTestFile(file + ".bak"), faulty);
    EXPECT_NE(ReadTestFile(file), faulty);

    // Two writers of one file: who comes later is told.
    TTissFile read = TTissFile::Read(file);
    const std::string other = ReadTestFile(file) + "\n";
    const auto expectKept = [&](const char* reason) {
        EXPECT_THAT(TextOf<EFileChanged>([&] { read.WithText("<a/>").Write(File("./lote.xml")); }),
                    HasSubstr(reason));
        EXPECT_FALSE(folder_.Names().contains("lote.xml.conferix-novo"));
    };
    WriteTestFile(file, other);
    expectKept("outro programa o alterou");
    EXPECT_EQ(ReadTestFile(file), other);
    std::filesystem::rename(file, File("antigo.xml"));
    expectKept("outro programa o removeu");
    WriteTestFile(file, other);
    expectKept("outro programa o substituiu");
    EXPECT_EQ(ReadTestFile(read.WithText("<a/>").WriteBeside(file)), "<a/>");
    read = TTissFile::Read(file);
    read.WithText("<a/>").Write(file);
    EXPECT_EQ(ReadTestFile(file), "<a/>");
}

TEST_F(Cli, SaysWhyNoNoticeIsShown) {
    WriteTestFile(File("arquivo"), "");
    const TEnvironment data("CONFERIX_DADOS", File("arquivo"));
    const TCommandResult result = Run({"avisos"});
    EXPECT_EQ(result.Status, kExitUnreadable);
    EXPECT_THAT(result.Err, HasSubstr("uma parte do caminho não é uma pasta. Nenhum aviso é mostrado"));
}

TEST_F(Cli, RulesSwitchedAtOnceLoseNothingAndUnknownOnesStay) {
    std::vector<std::string> leaves;
    const std::vector<TListedRule> rules = ListRules();
    for (std::size_t i = 0; i < rules.size() && leaves.size() < 10; ++i)
        if (!rules[i].Rule->Required && EndOfGroup(rules, i) == i + 1)
            leaves.push_back(rules[i].Rule->Name);
    std::vector<std::thread> others;
    others.reserve(leaves.size());
    for (const std::string& name : leaves)
        others.emplace_back([this, &name] { Run({"regras", "--desativar", name}); });
    for (std::thread& other : others)
        other.join();
    std::vector<std::string> off;
    for (const json& rule : RunJson({"regras"}))
        if (!rule["ativa"].get<bool>())
            off.push_back(rule["nome"]);
    EXPECT_EQ(off, leaves);

    // A blank after the comma is none of the name.
    WriteTestFile(File("config.json"), R"({"EnabledValidations": ["tiss.futura"]})");
    EXPECT_THAT(
        Run({"regras", "--config", File("config.json"), "--ativar", leaves[0] + ", " + leaves[1]}).Err,
        HasSubstr("tiss.futura"));
    EXPECT_THAT(ReadTestFile(File("config.json")),
                AllOf(HasSubstr(leaves[0]), HasSubstr(leaves[1]), HasSubstr("tiss.futura")));
    WriteTestFile(File("config.json"), "{");
    const TCommandResult damaged = Run({"regras", "--config", File("config.json")});
    EXPECT_EQ(damaged.Status, kExitUnreadable);
    EXPECT_THAT(damaged.Err, HasSubstr(File("config.json")));
}

TEST_F(Cli, CommandsAreToldWithExamplesThatCanBeRun) {
    const std::string docs = ReadTestFile(std::filesystem::path(CONFERIX_FONTE) / "docs/comandos.md");
    EXPECT_EQ(Run({"ajuda", "--formato", "markdown"}).Out, docs);
    const std::string page = Run({"ajuda", "--formato", "man"}).Out;
    std::istringstream in;
    std::ostringstream out;
    TCliContext context{{in, out, out}, "texto", {}, {}, {}};
    TCommand root;
    AddCommands(root, context);
    for (const TCommand* command : RunnableCommands(root)) {
        EXPECT_GE(command->Examples.size(), 2U) << command->Name;
        for (TParameter option : command->Options)
            EXPECT_THAT(HelpText(root, *command), HasSubstr("  " + NamesOf(option)));
        for (const TExample& example : command->Examples) {
            std::istringstream line(example.Line.substr(example.Line.find("conferix ")));
            std::vector<std::string> words;
            for (std::string word; line >> std::quoted(word) && word != "|";)
                words.push_back(word.substr(0, word.find(')')));
            words.erase(words.begin());
            EXPECT_NO_THROW(ParseCommandLine(root, words)) << example.Line;
            EXPECT_THAT(docs, HasSubstr(example.Line));
        }
    }
    // What a page would take for a request of its own is text.
    std::istringstream lines(page);
    for (std::string line; std::getline(lines, line);)
        EXPECT_THAT(line, MatchesPattern("[^.'].*|[.](\\\\\"|TH|SH|SS|PP|TP|BR?|I)( .*)?")) << line;
}

TEST_F(Cli, TheListOfRulesInTheDocumentationIsCurrent) {
    const std::string listed = Run({"regras", "--formato", "markdown"}).Out;
    EXPECT_THAT(ReadTestFile(std::filesystem::path(CONFERIX_FONTE) / "docs/regras.md"),
                testing::EndsWith("\n\n" + listed));
}

} // namespace
} // namespace conferix
