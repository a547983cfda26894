#include "app/application_log.h"
#include "app/cli/cli.h"
#include "data/tuss_writer.h"
#include "support/suporte.h"
#include "xml/xml_encoding.h"
#include "xml/xml_scanner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <sstream>

#include <sys/stat.h>

namespace conferix {
namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

/// Runs commands with a data folder that does not exist yet.
class ApplicationLog : public testing::Test {
  protected:
    void SetUp() override {
        SetData(data_);
        TTussWriter(folder_.Path() / "tuss.db").Commit();
        WriteTestFile(folder_.Path() / "tissV3_05_00.xsd",
                      "<schema xmlns='http://www.w3.org/2001/XMLSchema' elementFormDefault='qualified' "
                      "targetNamespace='http://www.ans.gov.br/padroes/tiss/schemas'><element "
                      "name='mensagemTISS'/></schema>");
        xml_ = ReadTestFile(Example("spsadt-3.05.00-valores-errados.xml"));
        WriteTestFile(file_, xml_);
    }
    void TearDown() override { unsetenv("CONFERIX_DADOS"); }

    static void SetData(const fs::path& folder) { setenv("CONFERIX_DADOS", folder.c_str(), 1); }

    int Run(std::vector<std::string> words) const {
        std::istringstream in;
        std::ostringstream out;
        std::ostringstream err;
        words.insert(words.end(), {"--terminologia", (folder_.Path() / "tuss.db").string(), "--esquemas",
                                   folder_.Path().string()});
        return RunCli(words, {in, out, err});
    }
    int Correct(const fs::path& output) const {
        return Run({"corrigir", file_.string(), "--todas", "--saida", output.string()});
    }
    static std::vector<std::string> Lines(const fs::path& file) {
        std::vector<std::string> lines;
        std::istringstream text(ReadTestFile(file));
        for (std::string line; std::getline(text, line);)
            lines.push_back(line);
        return lines;
    }

    TTemporaryFolder folder_;
    fs::path data_ = folder_.Path() / "usuário" / "dados";
    fs::path log_ = data_ / "conferix.log";
    fs::path file_ = folder_.Path() / "lote\n1.xml";
    std::string xml_;
};

TEST_F(ApplicationLog, TellsRulesFilesAndCountsAndNothingOfABill) {
    Run({"validar", file_.string()});
    Run({"informar", file_.string()});
    EXPECT_FALSE(fs::exists(data_)) << "there is nothing to record";

    Correct(folder_.Path() / "corrigido.xml");
    LogRuleSwitched("tiss.mensagem.loteguias.consulta.procedimento", false);
    LogRuleSwitched("tiss.mensagem.loteguias.consulta.procedimento", true);
    std::vector<std::string> lines = Lines(log_);
    ASSERT_GE(lines.size(), 4U);
    const std::string time = "[0-9]+-[0-9]+-[0-9]+ [0-9]+:[0-9]+:[0-9]+ ";
    EXPECT_THAT(lines.back(),
                EndsWith(" [configuracao] regra tiss.mensagem.loteguias.consulta.procedimento ativada"));
    lines.pop_back();
    EXPECT_THAT(lines.back(), EndsWith("procedimento desativada"));
    lines.pop_back();
    for (const std::string& line : lines)
        EXPECT_THAT(
            line, MatchesRegex(time + "\\[solver\\] [0-9]+ (correção aplicada|correções aplicadas) ao texto: "
                                      "regra tiss[a-z.]+, T[A-Za-z_0-9]+Solver[_A-Z0-9]*, arquivo "
                                      "lote\\?1\\.xml"));

    const TXmlParseResult parsed = TXmlParser::Parse(DecodeXml(xml_).Text);
    ASSERT_NE(parsed.Document, nullptr);
    const std::string log = ReadTestFile(log_);
    TXmlMappingScanner::Scan(parsed.Document->Root(), [&](const TXmlNode& node, bool&) {
        if (node.IsTag() && node.Value().size() > 4) { // a shorter one may stand in a time by chance
            EXPECT_THAT(log, Not(HasSubstr(std::string(node.Value()))));
        }
    });
}

TEST_F(ApplicationLog, ChangesToANewFileWhereOneIsFull) {
    fs::create_directories(data_);
    WriteTestFile(log_, std::string(1024 * 1024, 'x'));
    LogCorrections("a.xml", "regra", "solver", 2);
    EXPECT_EQ(Lines(log_).size(), 1U);
    EXPECT_EQ(fs::file_size(data_ / "conferix.1.log"), 1024U * 1024U);
}

TEST_F(ApplicationLog, NothingFailsForWantOfALog) {
    const int status = Correct(folder_.Path() / "com.xml");
    const std::string corrected = ReadTestFile(folder_.Path() / "com.xml");
    EXPECT_NE(corrected, xml_);
    const struct {
        const char* Name;
        std::function<void(const fs::path&)> Spoil;
    } cases[] = {
        {"the folder cannot be made", [](const fs::path& data) { WriteTestFile(data, "um arquivo"); }},
        {"the log is a folder",
         [](const fs::path& data) { fs::create_directories(data / "conferix.log" / "x"); }},
        {"the log is a pipe",
         [](const fs::path& data) {
             fs::create_directories(data);
             ASSERT_EQ(mkfifo((data / "conferix.log").c_str(), 0600), 0);
         }},
    };
    for (const auto& c : cases) {
        const fs::path data = folder_.Path() / c.Name;
        c.Spoil(data);
        SetData(data);
        EXPECT_EQ(Correct(folder_.Path() / "sem.xml"), status) << c.Name;
        EXPECT_EQ(ReadTestFile(folder_.Path() / "sem.xml"), corrected) << c.Name;
    }
}

} // namespace
} // namespace conferix
