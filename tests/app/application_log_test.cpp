#include "app/application_log.h"
#include "data/tuss_writer.h"
#include "support/command_test.h"
#include "support/patterns.h"
#include "support/system.h"
#include "xml/xml_encoding.h"
#include "xml/xml_parser.h"
#include "xml/xml_scanner.h"

#include <gmock/gmock.h>

#include <functional>
#include <sstream>

namespace conferix {
namespace {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

/// Commands with a data folder that does not exist yet.
class ApplicationLog : public TCommandTest {
  protected:
    ApplicationLog() {
        options_ = {"--terminologia", File("tuss.db"), "--esquemas", folder_.Path().string()};
        data_.Set(dataFolder_.string());
        TTussWriter(File("tuss.db")).Commit();
        WriteTestFile(File("tissV3_05_00.xsd"),
                      "<schema xmlns='http://www.w3.org/2001/XMLSchema' elementFormDefault='qualified' "
                      "targetNamespace='http://www.ans.gov.br/padroes/tiss/schemas'><element "
                      "name='mensagemTISS'/></schema>");
        WriteTestFile(file_, xml_);
    }

    int Correct(const std::string& output) const {
        return Run({"corrigir", file_, "--todas", "--saida", File(output)}).Status;
    }
    static std::vector<std::string> Lines(const fs::path& file) {
        std::vector<std::string> lines;
        std::istringstream text(ReadTestFile(file));
        for (std::string line; std::getline(text, line);)
            lines.push_back(line.substr(0, line.find('\r'))); // as text files of Windows have it
        return lines;
    }

    fs::path dataFolder_ = folder_ / "usuário/dados";
    fs::path log_ = dataFolder_ / "conferix.log";
    std::string file_ = File(NamesHoldAnything() ? "lote\n1.xml" : "lote-1.xml");
    std::string xml_ = ReadTestFile(Example("spsadt-3.05.00-valores-errados.xml"));
};

TEST_F(ApplicationLog, TellsRulesFilesAndCountsAndNothingOfABill) {
    Run({"validar", file_});
    Run({"informar", file_});
    EXPECT_FALSE(fs::exists(dataFolder_)) << "there is nothing to record";

    Correct("corrigido.xml");
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
        EXPECT_THAT(line,
                    MatchesPattern(time +
                                   "\\[solver\\] [0-9]+ (correção aplicada|correções aplicadas) ao texto: "
                                   "regra tiss[a-z.]+, T[A-Za-z_0-9]+Solver[_A-Z0-9]*, arquivo "
                                   "lote" +
                                   (NamesHoldAnything() ? "[?]" : "-") + "1\\.xml"));

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
    fs::create_directories(dataFolder_);
    WriteTestFile(log_, std::string(std::size_t{1024} * 1024, 'x'));
    LogCorrections("a.xml", "regra", "solver", 2);
    EXPECT_EQ(Lines(log_).size(), 1U);
    EXPECT_EQ(fs::file_size(dataFolder_ / "conferix.1.log"), 1024U * 1024U);
}

TEST_F(ApplicationLog, NothingFailsForWantOfALog) {
    const int status = Correct("com.xml");
    const std::string corrected = ReadTestFile(File("com.xml"));
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
             MakePipe(data / "conferix.log");
         }},
    };
    for (const auto& c : cases) {
        const fs::path data = folder_.Path() / c.Name;
        c.Spoil(data);
        data_.Set(data.string());
        EXPECT_EQ(Correct("sem.xml"), status) << c.Name;
        EXPECT_EQ(ReadTestFile(File("sem.xml")), corrected) << c.Name;
    }
}

} // namespace
} // namespace conferix
