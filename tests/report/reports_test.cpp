#include "support/command_test.h"
#include "support/support.h"
#include "support/system.h"
#include "xml/xml_parser.h"

#include <fmt/ranges.h>
#include <gmock/gmock.h>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validator.hpp>

#include <algorithm>
#include <map>
#include <sstream>

namespace conferix {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;

const std::filesystem::path kSource = CONFERIX_FONTE;

/// Has objects hold only what the schema tells of them, so that nothing goes out that it does not tell.
void Close(json& schema) {
    if (schema.is_object() && schema.contains("properties") && schema["properties"].is_object() &&
        !schema["properties"].contains("type"))
        schema["additionalProperties"] = false;
    for (json& part : schema)
        if (part.is_structured())
            Close(part);
}

/// Holds JSON to a schema file.
class TJsonSchema {
  public:
    explicit TJsonSchema(const std::filesystem::path& file) {
        json text = json::parse(ReadTestFile(file));
        Close(text);
        valijson::SchemaParser().populateSchema(valijson::adapters::NlohmannJsonAdapter(text), schema_);
    }

    /// What does not fit; empty when all does.
    std::string Faults(const json& value) const {
        valijson::ValidationResults results;
        valijson::Validator validator;
        std::string faults;
        if (!validator.validate(schema_, valijson::adapters::NlohmannJsonAdapter(value), &results))
            for (const valijson::ValidationResults::Error& error : results)
                faults += fmt::format("{}: {}\n", fmt::join(error.context, ""), error.description);
        return faults;
    }

  private:
    valijson::Schema schema_;
};

class Reports : public TCommandTest {
  protected:
    Reports() {
        terminology_.Set(CONFERIX_TUSS_DB);
        for (const auto& entry : std::filesystem::directory_iterator(Example("")))
            if (entry.path().extension() == ".xml")
                files_.push_back(entry.path().string());
        std::ranges::sort(files_);
        EXPECT_GT(files_.size(), 20U);
        // What is no TISS file, no XML and no text, and what is not there.
        WriteTestFile(File("outro.xml"), "<a/>");
        WriteTestFile(File("quebrado.xml"), "<a>");
        WriteTestFile(File("bytes.xml"), "<a>\n\xFF</a>");
        WriteTestFile(File(odd_), "<a/>");
        for (const char* name : {"outro.xml", "quebrado.xml", "bytes.xml", odd_.c_str(), "nada.xml"})
            files_.push_back(File(name));
    }

    TCommandResult Validar(std::vector<std::string> options, const std::vector<std::string>& files) const {
        options.insert(options.begin(), "validar");
        options.insert(options.end(), files.begin(), files.end());
        return Run(std::move(options));
    }

    /// How many guides are in two of the files.
    std::size_t Repeated() const {
        const json report = Validar({"--formato", "json", "--resumo", "--totais"}, files_).Json();
        return report.back()["totais"]["guiasRepetidas"].size();
    }

    /// What no text may hold, where a name may.
    const std::string odd_ = NamesHoldAnything() ? "n\xE3o utf8 #1.xml" : "nao utf8 #1.xml";
    std::vector<std::string> files_;
};

TEST_F(Reports, JsonIsAsItsSchemaSaysAndAlikeInEveryRun) {
    const TJsonSchema schema(kSource / "docs/validar.schema.json");
    EXPECT_THAT(schema.Faults(json::array({{{"arquivo", "x"}}})), HasSubstr("versaoFormato"));
    for (const char* option :
         {"--detalhar", "--todas", "--resumo", "--estatisticas", "--nivel=erro", "--totais"}) {
        const TCommandResult first = Validar({"--formato", "json", option}, files_);
        json report = first.Json();
        EXPECT_THAT(schema.Faults(report), IsEmpty()) << option;
        EXPECT_EQ(Validar({"--formato", "json", option, "--paralelo", "1"}, files_).Out, first.Out) << option;
        if (option == std::string("--totais")) {
            EXPECT_EQ(report.back()["totais"]["arquivos"], files_.size());
            report.erase(report.size() - 1);
        }
        ASSERT_EQ(report.size(), files_.size());
        for (const json& file : report) {
            std::set<std::size_t> ids;
            for (const json& message : file.value("mensagens", json::array()))
                EXPECT_TRUE(ids.insert(message["id"].get<std::size_t>()).second) << file["arquivo"];
            EXPECT_EQ(file.contains("mensagens"), option != std::string("--resumo"));
            EXPECT_EQ(file["erros"],
                      file["contagens"]["mtError"].get<int>() + file["contagens"]["mtFatal"].get<int>());
        }
        const json& unusual = report[files_.size() - 2];
        if (!NamesHoldAnything()) {
            EXPECT_THAT(unusual["arquivo"].get<std::string>(), testing::EndsWith(odd_));
            EXPECT_FALSE(unusual.contains("arquivoCodificado"));
            continue;
        }
        EXPECT_THAT(unusual["arquivo"].get<std::string>(), HasSubstr("n\xEF\xBF\xBDo utf8"));
        EXPECT_THAT(unusual["arquivoCodificado"].get<std::string>(),
                    testing::EndsWith("n%E3o%20utf8%20%231.xml"));
    }
    std::istringstream lines(
        Validar({"--formato", "ndjson", "--totais", "--estatisticas", "--paralelo", "3"}, files_).Out);
    json last;
    std::map<std::string, int> verdicts;
    int errors = 0;
    for (std::string line; std::getline(lines, line);) {
        last = json::parse(line);
        EXPECT_THAT(schema.Faults(last), IsEmpty()) << line;
        if (!last.contains("arquivo"))
            continue;
        ++verdicts[last["valido"].dump()];
        for (const json& rule : last["regras"])
            errors += rule["contagens"]["mtError"].get<int>();
    }
    const json totals = last["totais"];
    EXPECT_EQ(totals["arquivos"], files_.size());
    EXPECT_EQ(totals["validos"], verdicts["true"]);
    EXPECT_EQ(totals["invalidos"], verdicts["false"]);
    EXPECT_EQ(totals["naoVerificados"], 1);
    EXPECT_EQ(totals["contagens"]["mtError"], errors);
    EXPECT_GT(errors, 50);
}

TEST_F(Reports, JsonTellsOfAnApproximateSchema) {
    for (const json& schema : RunJson({"esquemas", "listar"}))
        if (schema["tipo"] == "Mensagem TISS" && schema["versao"] != "4.01.00") {
            std::string xml = ReadTestFile(Example("spsadt-3.05.00-valido.xml"));
            ReplaceAll(xml, ">3.05.00<", ">" + schema["versao"].get<std::string>() + "<");
            EXPECT_EQ(ValidateBytes(xml)["esquemaAproximado"], schema["aproximado"]) << schema;
        }
}

/// The text with the first replacement of a fix done.
std::string Replaced(const std::string& text, const json& fix) {
    const json& replacement = fix["artifactChanges"][0]["replacements"][0];
    const json& region = replacement["deletedRegion"];
    const TXmlDocument document(std::make_shared<const std::string>(text));
    const auto begin = document.OffsetOf(region["startLine"], region["startColumn"]);
    const auto end = document.OffsetOf(region["endLine"], region["endColumn"]);
    std::string out = text;
    out.replace(begin, end - begin, replacement["insertedContent"]["text"].get<std::string>());
    return out;
}

TEST_F(Reports, SarifKeepsItsRulesAndItsFixesAreTheCorrections) {
    const TJsonSchema schema(kSource / "tests/report/sarif.schema.json");
    int fixes = 0;
    int ofStructure = 0;
    for (const char* option : {"--detalhar", "--todas"}) {
        const json log = Validar({"--formato", "sarif", option, "--desativar",
                                  "tiss.mensagem.loteguias.spsadt.procedimento"},
                                 files_)
                             .Json();
        EXPECT_THAT(schema.Faults(log), IsEmpty());
        EXPECT_THAT(schema.Faults(Validar({"--formato", "sarif"}, {files_[0], files_[0]}).Json()), IsEmpty());
        const json& run = log["runs"][0];
        std::set<std::string> rules;
        for (const json& rule : run["tool"]["driver"]["rules"])
            rules.insert(rule["id"]);
        bool suppressed = false;
        for (const json& result : run["results"]) {
            EXPECT_TRUE(rules.contains(result["ruleId"])) << result;
            EXPECT_EQ(result.contains("kind"), result["level"] == "none") << result;
            suppressed = suppressed || result.contains("suppressions");
        }
        EXPECT_EQ(suppressed, option == std::string("--todas"));
        EXPECT_EQ(run["artifacts"].size(), files_.size());
        EXPECT_FALSE(run["invocations"][0]["executionSuccessful"].get<bool>());
        std::map<std::string, std::size_t> told;
        for (const json& notification : run["invocations"][0]["toolExecutionNotifications"])
            ++told[notification["level"].get<std::string>()];
        EXPECT_THAT(told, testing::UnorderedElementsAre(testing::Pair("error", 1U),
                                                        testing::Pair("warning", Repeated())));
    }
    for (const std::string& file : files_) {
        if (!file.ends_with("errados.xml") && !file.ends_with("erros.xml"))
            continue;
        const json log = Validar({"--formato", "sarif"}, {file}).Json();
        std::map<json, json> corrections; // by the number of the message
        const json report = Validate(file);
        for (const json& message : report["mensagens"])
            corrections[message["id"]] = message["correcoes"];
        const std::string text = ReadTestFile(file);
        for (const json& result : log["runs"][0]["results"]) {
            const json& id = result["properties"]["id"];
            const json& offered = corrections[id];
            for (const json& fix : result.value("fixes", json::array()))
                for (std::size_t k = 0; k < offered.size(); ++k)
                    if (offered[k]["descricao"] == fix["description"]["text"]) {
                        const TCommandResult corrected = Run(
                            {"corrigir", file, "--mensagem", id.dump(), "--correcao", std::to_string(k + 1)});
                        EXPECT_EQ(Replaced(text, fix), corrected.Out) << file << fix;
                        ++fixes;
                        ofStructure += offered[k]["nome"] == "TRemoveElementSolver" ? 1 : 0;
                    }
        }
    }
    EXPECT_GT(fixes, 20);
    EXPECT_GT(ofStructure, 0);
}

TEST_F(Reports, JunitCountsWhatItHolds) {
    const TCommandResult result = Validar({"--formato", "junit"}, files_);
    const TXmlParseResult parsed = TXmlParser::Parse(result.Out);
    ASSERT_THAT(parsed.Messages, IsEmpty()) << result.Out;
    std::map<std::string, int> totals;
    std::size_t suites = 0;
    for (const TXmlNode& suite : parsed.Document->Element()->ChildTags()) {
        ++suites;
        std::map<std::string, int> found;
        for (const TXmlNode& test : suite.ChildTags()) {
            if (test.LocalName() != "testcase")
                continue;
            ++found["tests"];
            found["failures"] += test.Child("failure") != nullptr ? 1 : 0;
            found["errors"] += test.Child("error") != nullptr ? 1 : 0;
            EXPECT_EQ(test.Attribute("classname")->Value().find('.'), std::string_view::npos);
        }
        for (const auto& [name, count] : found) {
            EXPECT_EQ(suite.Attribute(name)->Value(), std::to_string(count)) << name;
            totals[name] += count;
        }
    }
    EXPECT_EQ(suites, files_.size() + 1) << "and that of the guides in two files";
    EXPECT_EQ(totals["errors"], 1);
    EXPECT_GT(totals["failures"], 20);
    EXPECT_GT(totals["tests"] - totals["failures"], 10);
    EXPECT_THAT(result.Out, HasSubstr(NamesHoldAnything() ? "\\xE3o utf8 #1" : odd_));
    // What only warns fails on request.
    const std::vector<std::string> warned = {Example("monitoramento-1.03.00-com-erros.xml").string()};
    EXPECT_THAT(Validar({"--formato", "junit", "--nivel", "informacao"}, warned).Out,
                testing::Not(HasSubstr("<system-out>informa")));
}

/// The cells of a table, quotes taken off.
std::vector<std::vector<std::string>> Rows(const std::string& csv) {
    std::vector<std::vector<std::string>> rows(1, {""});
    bool quoted = false;
    for (std::size_t i = 0; i < csv.size(); ++i) {
        std::string& cell = rows.back().back();
        if (csv[i] == '"' && quoted && i + 1 < csv.size() && csv[i + 1] == '"')
            cell += csv[++i];
        else if (csv[i] == '"')
            quoted = !quoted;
        else if (csv[i] == ';' && !quoted)
            rows.back().emplace_back();
        else if (csv[i] == '\n' && !quoted)
            rows.emplace_back(1, "");
        else if (csv[i] != '\r' || quoted)
            cell += csv[i];
    }
    rows.pop_back();
    return rows;
}

TEST_F(Reports, CsvHasARowAMessageAndNoFormulas) {
    const TCommandResult result = Validar({"--formato", "csv"}, files_);
    EXPECT_TRUE(result.Out.starts_with("\xEF\xBB\xBF"
                                       "Arquivo;"));
    const auto rows = Rows(result.Out);
    std::size_t messages = 1;
    for (const json& file : Validar({"--formato", "json"}, files_).Json())
        messages += file["mensagens"].size();
    EXPECT_GT(Repeated(), 0U);
    EXPECT_EQ(rows.size(), messages + Repeated());
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 10U) << row.front();
        for (const std::string& cell : row)
            EXPECT_EQ(cell.find_first_of("=+-@\t\r\n"), cell.find_first_of("=+-@\t\r\n", 1)) << cell;
    }
    const std::string source = ReadTestFile(Example("consulta-4.01.00-com-erros.xml"));
    const std::pair<const char*, const char*> guides[] = {{"=1+1", "'=1+1"},
                                                          {"+5", "'+5"},
                                                          {"-A", "'-A"},
                                                          {"@x", "'@x"},
                                                          {"00012", "'00012"},
                                                          {"1/2", "'1/2"},
                                                          {"12345", "12345"},
                                                          {"A;\"1\"", "A;\"1\""},
                                                          {"1E5", "'1E5"},
                                                          {"0", "0"},
                                                          {"'5", "''5"},
                                                          {"123456789012345", "123456789012345"},
                                                          {"1234567890123456", "'1234567890123456"}};
    for (const auto& [guide, cell] : guides) {
        std::string xml = source;
        ReplaceAll(xml, ">10000001<", fmt::format(">{}<", guide));
        const auto table = Rows(Run({"validar", "-", "--formato", "csv"}, xml).Out);
        EXPECT_TRUE(std::ranges::any_of(table, [&wanted = cell](const auto& row) {
            return row[5] == wanted;
        })) << guide;
    }
}

TEST_F(Reports, WhatIsShownAndWhereIsChosen) {
    const std::string faulty = Example("spsadt-3.05.00-com-erros.xml").string();
    const std::string valid = Example("odonto-3.05.00-valido.xml").string();
    const auto statusOf = [this](const std::string& file, const char* level) {
        return Validar({"--silencioso", "--nivel", level}, {file}).Status;
    };
    EXPECT_EQ(statusOf(valid, "erro"), kExitValid);
    EXPECT_EQ(statusOf(valid, "aviso"), kExitValid);
    EXPECT_EQ(statusOf(valid, "informacao"), kExitInvalid); // its hash is told of
    EXPECT_EQ(statusOf(faulty, "erro"), kExitInvalid);

    const json all = RunJson({"validar", faulty})[0];
    for (const auto& [level, types] :
         {std::pair<const char*, std::set<std::string>>{"erro", {"mtError", "mtFatal"}},
          {"aviso", {"mtError", "mtFatal", "mtWarning"}}}) {
        const json some = RunJson({"validar", faulty, "--nivel", level})[0];
        json expected = json::array();
        for (const json& message : all["mensagens"])
            if (types.contains(message["tipo"]))
                expected.push_back(message["id"]);
        json found = json::array();
        for (const json& message : some["mensagens"])
            found.push_back(message["id"]);
        EXPECT_EQ(found, expected);
        EXPECT_EQ(some["contagens"], all["contagens"]);
    }

    for (const char* format : {"texto", "json", "ndjson", "sarif", "junit", "csv"}) {
        // One at a time: lines of ndjson come as files end.
        const TCommandResult shown = Validar({"--paralelo", "1", "--formato", format}, {faulty, valid});
        WriteTestFile(File("relatorio"), "antigo");
        const TCommandResult saved =
            Validar({"--paralelo", "1", "--formato", format, "--saida", File("relatorio")}, {faulty, valid});
        EXPECT_EQ(saved.Out, "");
        EXPECT_EQ(saved.Status, shown.Status);
        EXPECT_EQ(ReadTestFile(File("relatorio")), shown.Out) << format;
    }
    EXPECT_EQ(Validar({"--resumo"}, {faulty, valid, File("nada.xml")}).Out,
              faulty + ": inválido (" + all["erros"].dump() + " erros, " + all["avisos"].dump() +
                  " avisos)\n" + valid + ": válido\n" + File("nada.xml") +
                  ": não verificado (o arquivo não existe)\n\n3 arquivos: 1 válido, 1 inválido, 1 não "
                  "verificado.\n");

    // The list: lines or NUL, a byte-order mark, folders, nothing.
    std::filesystem::create_directory(File("pasta"));
    std::filesystem::copy(valid, File("pasta/a.xml"));
    const auto listed = [this](const std::string& list) {
        std::vector<std::string> names;
        for (const json& file : json::parse(Run({"validar", "--lista", "-", "--formato", "json"}, list).Out))
            names.push_back(std::filesystem::path(file["arquivo"].get<std::string>()).filename().string());
        return names;
    };
    EXPECT_THAT(listed("\xEF\xBB\xBF" + valid + "\r\n\n" + File("pasta")),
                testing::ElementsAre("odonto-3.05.00-valido.xml", "a.xml"));
    const std::string lines = NamesHoldAnything() ? "a\nb.xml" : "a b.xml";
    WriteTestFile(File(lines), "<a/>");
    EXPECT_THAT(listed(File(lines) + std::string(1, '\0') + valid),
                testing::ElementsAre(lines, "odonto-3.05.00-valido.xml"));
    EXPECT_EQ(Run({"validar", "--lista", "-"}, "\n").Status, kExitUnreadable);

    const std::string byRule = Validar({"--agrupar", "regra", "--estatisticas"}, {faulty}).Out;
    EXPECT_THAT(byRule, HasSubstr("(tiss.mensagem.schema)\n    erro: "));
    EXPECT_THAT(byRule, HasSubstr("Por arquivo:\n"));

    // Groups and commas; a group takes what stands below it.
    const json off =
        RunJson({"validar", faulty, "--desativar",
                 "tiss.mensagem.loteguias.spsadt.procedimento, tiss.mensagem.loteguias.spsadt.despesa"})[0];
    for (const json& message : off["mensagens"])
        EXPECT_FALSE(message["validacao"].get<std::string>().starts_with(
            "tiss.mensagem.loteguias.spsadt.procedimento"))
            << message;
    EXPECT_GT(off["ocultas"], 0);
}

} // namespace
} // namespace conferix
