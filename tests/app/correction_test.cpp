#include "app/config.h"
#include "app/execute_solver.h"
#include "app/message_groups.h"
#include "app/unified_diff.h"
#include "data/tuss_writer.h"
#include "support/case_file.h"
#include "support/command_test.h"
#include "support/support.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <set>
#include <sstream>

namespace conferix {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSubsetOf;
using testing::Not;
using testing::SizeIs;

/// Lets pass whatever is in the root element, so that only the other rules are heard.
constexpr const char* kLaxSchema = R"(<?xml version="1.0" encoding="UTF-8"?>
<schema xmlns="http://www.w3.org/2001/XMLSchema" targetNamespace="http://www.ans.gov.br/padroes/tiss/schemas"
        elementFormDefault="qualified">
  <element name="{}"><complexType><sequence>
    <any processContents="lax" minOccurs="0" maxOccurs="unbounded"/>
  </sequence></complexType></element>
</schema>)";

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

/// Commands with schemas that judge nothing, and without terms.
class Correction : public TCommandTest {
  protected:
    Correction() {
        options_ = {"--esquemas", folder_.Path().string(), "--terminologia", File("tuss.db")};
        for (const char* version : {"2_02_03", "3_02_00", "3_05_00", "4_01_00"})
            WriteTestFile(File(fmt::format("tissV{}.xsd", version)),
                          fmt::format(fmt::runtime(kLaxSchema), "mensagemTISS"));
        for (const char* version : {"1_03_00", "1_06_00"})
            WriteTestFile(File(fmt::format("tissMonitoramentoV{}.xsd", version)),
                          fmt::format(fmt::runtime(kLaxSchema), "mensagemEnvioANS"));
        TTussWriter(File("tuss.db")).Commit();
    }
    static std::string ExampleFile(const std::string& name) { return Example(name).string(); }
};

/// A text without the values of elements.
std::string WithoutValues(const std::string& text) {
    std::string bare;
    for (std::size_t at = 0; at < text.size();) {
        bare += text[at++];
        const std::size_t end = text.find_first_of("<>\n", at);
        if (bare.back() == '>' && end != std::string::npos && text.compare(end, 2, "</") == 0)
            at = end;
    }
    return bare;
}

TEST_F(Correction, FaultyValuesBecomeTheFileThatWasRight) {
    const struct {
        const char* Name;
        const char* Right;
        std::pair<std::string, std::string>
            Left; ///< what a correction leaves otherwise than the right file has it
    } cases[] = {
        // A prefix is corrected; the declaration of the wrong one stays.
        {"spsadt-3.05.00-valores-errados",
         "spsadt-3.05.00-valido",
         {"<ans:observacao>P",
          "<ans:observacao xmlns:tiss=\"http://www.ans.gov.br/padroes/tiss/schemas\">P"}},
        {"spsadt-2.02.03-valores-errados", "spsadt-2.02.03-valido", {}},
        {"honorarios-4.01.00-valores-errados", "honorarios-4.01.00-valido", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.Name);
        const std::string file = ExampleFile(c.Name + std::string(".xml"));
        std::string found;
        const json report = Validate(file);
        for (const json& message : report["mensagens"])
            if (IsErrorOf(message))
                found +=
                    fmt::format("{}:{} [{}] {}: {}{}\n", message["linha"].get<int>(),
                                message["coluna"].get<int>(), message["guia"].get<std::string>(),
                                message["validacao"].get<std::string>(), message["motivo"].get<std::string>(),
                                message["correcoes"].size() == 1
                                    ? " -> " + message["correcoes"][0]["descricao"].get<std::string>()
                                    : "");
        EXPECT_EQ(found, ReadTestFile(std::filesystem::path(CONFERIX_FONTE) /
                                      "tests/app/expected/corrections" / (c.Name + std::string(".txt"))));

        std::string right = ReadTestFile(ExampleFile(c.Right + std::string(".xml")));
        if (!c.Left.first.empty())
            ReplaceAll(right, c.Left.first, c.Left.second);
        const TCommandResult corrected = Run({"corrigir", file, "--todas"});
        EXPECT_EQ(corrected.Status, kExitValid);
        EXPECT_TRUE(corrected.Out == right) << UnifiedDiff(right, corrected.Out, "certo", "corrigido");
        EXPECT_THAT(corrected.Err, HasSubstr("o arquivo está válido."));
        EXPECT_THAT(ErrorsOf(ValidateBytes(corrected.Out)), IsEmpty());
    }
}

TEST_F(Correction, LawsHoldOfEveryExample) {
    int corrected = 0;
    for (const auto& entry : std::filesystem::directory_iterator(Example(""))) {
        if (entry.path().extension() != ".xml")
            continue;
        SCOPED_TRACE(entry.path());
        const std::string before = ReadTestFile(entry.path());
        const json reportBefore = Validate(entry.path().string());
        const TCommandResult once = Run({"corrigir", entry.path().string(), "--todas"});
        const json reportAfter = ValidateBytes(once.Out);
        EXPECT_TRUE(reportAfter["xmlValido"].get<bool>());
        EXPECT_EQ(once.Status, reportAfter["valido"].get<bool>() ? kExitValid : kExitInvalid);

        EXPECT_EQ(Run({"corrigir", "-", "--todas"}, once.Out).Out, once.Out);

        // What is left was there before. If it offers a correction, that was left out, and the reason is
        // told.
        EXPECT_THAT(ErrorsOf(reportAfter), IsSubsetOf(ErrorsOf(reportBefore)));
        std::multiset<int> offered;
        for (const json& message : reportAfter["mensagens"])
            if (IsErrorOf(message) && !message["correcoes"].empty())
                offered.insert(message["linha"].get<int>());
        std::multiset<int> leftOut;
        const json again = RunJson({"corrigir", "-", "--todas", "--simular"}, once.Out);
        for (const json& left : again["naoCorrigidas"]) {
            EXPECT_FALSE(left["motivo"].get<std::string>().empty());
            leftOut.insert(left["linha"].get<int>());
        }
        EXPECT_EQ(leftOut, offered);

        // Nothing but values has changed, and where there was nothing to correct, nothing.
        const bool prefixes = reportBefore.dump().find("tiss.mensagem.namespace") != std::string::npos;
        if (!prefixes) {
            EXPECT_EQ(WithoutValues(once.Out), WithoutValues(before));
        }
        const bool hadCorrections =
            std::any_of(reportBefore["mensagens"].begin(), reportBefore["mensagens"].end(),
                        [](const json& m) { return IsErrorOf(m) && !m["correcoes"].empty(); });
        EXPECT_EQ(once.Out == before, !hadCorrections);
        corrected += hadCorrections ? 1 : 0;
    }
    EXPECT_GT(corrected, 4);
}

TEST_F(Correction, OneMessageChangesOneLineAndGoesAway) {
    const std::string file = ExampleFile("spsadt-3.05.00-itens-errados.xml");
    const std::vector<std::string> before = Lines(ReadTestFile(file));
    const json report = Validate(file);
    int tried = 0;
    for (std::size_t i = 0; i < report["mensagens"].size(); ++i) {
        const json& message = report["mensagens"][i];
        if (message["correcoes"].empty())
            continue;
        ++tried;
        const TCommandResult result = Run({"corrigir", file, "--mensagem", std::to_string(i + 1)});
        EXPECT_EQ(result.Status, kExitInvalid) << "as outras faltas permanecem";
        const std::vector<std::string> after = Lines(result.Out);
        ASSERT_EQ(after.size(), before.size());
        for (std::size_t line = 0; line < before.size(); ++line)
            EXPECT_EQ(before[line] == after[line], line + 1 != message["linha"].get<std::size_t>())
                << after[line];
        const json reportAfter = ValidateBytes(result.Out);
        for (const json& left : reportAfter["mensagens"])
            EXPECT_NE(left["texto"], message["texto"]);
    }
    EXPECT_EQ(tried, 5);
}

TEST_F(Correction, WritesWhereItIsTold) {
    const std::string faulty = ReadTestFile(ExampleFile("honorarios-4.01.00-valores-errados.xml"));
    const std::string right = ReadTestFile(ExampleFile("honorarios-4.01.00-valido.xml"));
    const std::string file = File("lote.xml");
    WriteTestFile(file, faulty);

    EXPECT_EQ(Run({"corrigir", file, "--todas", "--saida", File("novo.xml")}).Out, "");
    EXPECT_EQ(ReadTestFile(File("novo.xml")), right);

    const TCommandResult diff = Run({"corrigir", file, "--todas", "--simular"});
    EXPECT_EQ(diff.Status, kExitValid);
    EXPECT_EQ(diff.Out, UnifiedDiff(faulty, right, file, file + " (corrigido)"));
    EXPECT_EQ(std::count(diff.Out.begin(), diff.Out.end(), '@'), 4 * 4) << diff.Out;
    EXPECT_EQ(ReadTestFile(file), faulty);

    EXPECT_EQ(Run({"corrigir", "-", "--todas"}, faulty).Out, right);

    EXPECT_EQ(Run({"corrigir", file, "--todas", "--no-lugar"}).Out, "");
    EXPECT_EQ(ReadTestFile(file), right);
    EXPECT_THAT(Run({"corrigir", file, "--todas"}).Err,
                HasSubstr("nada foi corrigido; o arquivo está válido."));
}

TEST_F(Correction, TellsThatASignedFileHasToBeSignedAnew) {
    std::string xml = ReadTestFile(ExampleFile("spsadt-3.05.00-valores-errados.xml"));
    const std::string note = "O arquivo tem assinatura digital: o que foi alterado na parte assinada precisa "
                             "ser assinado de novo.";
    const auto correct = [&] { return Run({"corrigir", "-", "--todas", "--simular"}, xml).Err; };
    const std::string end = "</ans:mensagemTISS>";
    xml.insert(xml.find(end), "<ans:assinaturaDigital/>");
    EXPECT_THAT(correct(), Not(HasSubstr(note))) << "an empty place for a signature";
    ReplaceAll(xml, "<ans:assinaturaDigital/>",
               "<ans:assinaturaDigital><ds:Signature "
               "xmlns:ds=\"http://www.w3.org/2000/09/xmldsig#\"/></ans:assinaturaDigital>");
    EXPECT_THAT(correct(), HasSubstr("conferix: aviso: -: " + note));
}

TEST_F(Correction, ListsWhatCanBeCorrectedWithItsNumbers) {
    const std::string file = ExampleFile("spsadt-3.05.00-itens-errados.xml");
    const TCommandResult text = Run({"corrigir", file});
    EXPECT_EQ(text.Status, kExitInvalid);
    const json list = RunJson({"corrigir", file});
    const json shown = Validate(file)["mensagens"];
    ASSERT_FALSE(list.empty());
    for (const json& entry : list) {
        const auto number = entry["numero"].get<std::size_t>();
        EXPECT_EQ(entry["texto"], shown[number - 1]["texto"]);
        EXPECT_THAT(text.Out, HasSubstr(fmt::format("mensagem {}: erro: [Linha: ", number)));
    }
}

/// Lot whose hash is wrong in both encodings.
constexpr const char* kWrongHash =
    "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<ans:mensagemTISS "
    "xmlns:ans=\"http://www.ans.gov.br/padroes/tiss/schemas\"><ans:cabecalho><ans:identificacaoTransacao>"
    "<ans:tipoTransacao>SOLICITACAO_PROCEDIMENTOS</ans:tipoTransacao></ans:identificacaoTransacao>"
    "<ans:Padrao>4.01.00</ans:Padrao><ans:nome>JOS\xC9 </ans:nome></ans:cabecalho>"
    "<ans:epilogo><ans:hash>0</ans:hash></ans:epilogo></ans:mensagemTISS>";

class ExecuteSolverTest : public Correction {
  protected:
    ExecuteSolverTest() {
        controller_.SetSchemaTissPath(folder_.Path());
        controller_.Events().OnFileOpen.Subscribe([&](TFileOpenArgs& args) { text_ = args.SharedContent; });
        controller_.Events().OnValidate.Subscribe([&](TValidateArgs& args) {
            ++validations_;
            messages_ = args.ValidationMessages;
        });
    }

    void Open() {
        controller_.Load("lote.xml", TTissFile(kWrongHash));
        controller_.Validate(text_, {});
        validations_ = 0;
    }
    bool Execute(const std::string& id, std::optional<std::size_t> choice) {
        return ExecuteSolver(controller_, messages_, id, {},
                             {[&, choice](const auto& solvers) {
                                  offered_.clear();
                                  for (const auto& solver : solvers)
                                      offered_.push_back(solver->Name());
                                  return choice;
                              },
                              [&](const TCorrectionRecord& record, const auto& xml) {
                                  EXPECT_EQ(validations_, 0) << "o texto é trocado antes da validação";
                                  solver_ = record.Solver;
                                  text_ = xml;
                              }});
    }

    TValidadorController controller_{TDBConnectionFactory([] { return TTussConnection::InMemory(); })};
    std::shared_ptr<const std::string> text_;
    TXmlMessages messages_;
    std::vector<std::string> offered_;
    std::string solver_;
    int validations_ = 0;
};

TEST_F(ExecuteSolverTest, CorrectsTheChosenMessageAndValidatesAgain) {
    Open();
    ASSERT_THAT(messages_, SizeIs(1));
    const std::string before = *text_;
    EXPECT_FALSE(Execute("{nenhuma}", 0));
    EXPECT_FALSE(Execute(messages_[0]->Id(), std::nullopt));
    EXPECT_FALSE(Execute(messages_[0]->Id(), 3));
    EXPECT_EQ(*text_, before);
    EXPECT_EQ(validations_, 0);
    EXPECT_FALSE(controller_.Modified());
    EXPECT_THAT(offered_, ElementsAre("THashSolver_ISO88591", "THashSolver_UTF8", "TSanitizeHashSolver"));

    const std::string id = messages_[0]->Id();
    EXPECT_TRUE(Execute(id, 1));
    EXPECT_EQ(solver_, "THashSolver_UTF8");
    EXPECT_EQ(validations_, 1);
    EXPECT_TRUE(controller_.Modified());
    EXPECT_NE(*text_, before);
    for (const auto& message : messages_)
        EXPECT_NE(message->MsgType(), TMessageType::mtError) << message->Msg();
    EXPECT_FALSE(Execute(id, 1)) << "a mensagem corrigida não está mais na lista";
}

TEST_F(ExecuteSolverTest, NeedsAnOpenFile) {
    Open();
    const TXmlMessages kept = messages_;
    controller_.CloseFile();
    EXPECT_FALSE(Execute(kept[0]->Id(), 0));
    EXPECT_EQ(validations_, 0);
}

TEST_F(ExecuteSolverTest, CorrectAllTakesTheChosenCorrectionAndStops) {
    Open();
    const TCorrectionResult cancelled =
        CorrectAll(controller_, text_, {}, [](const auto&) { return std::nullopt; });
    EXPECT_EQ(cancelled.Applied.size(), 0U);
    EXPECT_EQ(cancelled.Xml, text_);
    const TCorrectionResult sanitized = CorrectAll(controller_, text_, {}, [](const auto&) { return 2; });
    EXPECT_EQ(sanitized.Applied.size(), 1U);
    EXPECT_THAT(*sanitized.Xml, HasSubstr("<ans:nome>JOSE</ans:nome>"));
    EXPECT_TRUE(controller_.FileStateFlags().Contains(TFileStateFlag::sfValido));
    // The same from the command line, where the third correction is asked for.
    const TCommandResult result = Run({"corrigir", "-", "--todas", "--correcao", "3"}, kWrongHash);
    EXPECT_EQ(result.Out, *sanitized.Xml);
    EXPECT_THAT(Run({"corrigir", "-", "--todas"}, kWrongHash).Out, HasSubstr("JOS\xC9 <"));
}

TEST_F(ExecuteSolverTest, LimitsOfTheListsHideNoCorrectionAndNoCount) {
    TConfig config;
    config.SetDefaultInitialConfig();
    const std::vector<std::string> enabled = config.EnabledValidations();
    const auto result = [&]() -> const TValidateArgs& { return controller_.Events().OnValidate.Current(); };
    controller_.Load("lote.xml", TTissFile::Read(ExampleFile("spsadt-3.05.00-valores-errados.xml")));
    controller_.Validate(text_, enabled);
    const TValidateArgs whole = result();
    ASSERT_THAT(whole.Unlisted, IsEmpty());
    ASSERT_GT(whole.Counts.Failures(), 4U);

    controller_.SetFindingLimits({2, 3});
    controller_.Validate(text_, enabled);
    EXPECT_EQ(result().Counts.Failures(), whole.Counts.Failures());
    EXPECT_EQ(result().Counts.Warnings(), whole.Counts.Warnings());
    EXPECT_EQ(result().HiddenCount, whole.HiddenCount);
    const std::size_t listed = result().ValidationMessages.size() - 1;
    EXPECT_LT(listed, whole.ValidationMessages.size());
    EXPECT_THAT(result().ValidationMessages.back()->Reason(),
                testing::StartsWith(fmt::format("Há mais {} mensagem, que não está na lista: ",
                                                whole.Counts.Findings() - listed)));
    // The groups are those of all findings.
    const auto groups = [](const TValidateArgs& of) {
        std::set<std::tuple<std::string, std::size_t, std::size_t, bool>> told;
        for (const TMessageGroup& group : GroupMessages(of.ValidationMessages, of.Unlisted))
            told.emplace(of.ValidationMessages[group.Messages.front()]->Msg(), group.Count, group.Guides,
                         group.SameReason);
        return told;
    };
    auto limited = groups(result());
    std::erase_if(limited, [](const auto& group) { return std::get<0>(group).starts_with("Há mais"); });
    EXPECT_EQ(limited, groups(whole));
    // A limit of nothing does not make a file valid, nor a rule that found something content.
    controller_.SetFindingLimits({0, 0});
    controller_.Validate(text_, enabled);
    EXPECT_EQ(result().Counts.Failures(), whole.Counts.Failures());
    EXPECT_TRUE(controller_.FileStateFlags().Contains(TFileStateFlag::sfInvalido));

    const auto first = [](const auto&) { return 0; };
    const TCorrectionResult few = CorrectAll(controller_, text_, enabled, first);
    controller_.SetFindingLimits({});
    EXPECT_EQ(*few.Xml, *CorrectAll(controller_, text_, enabled, first).Xml);
    EXPECT_NE(*few.Xml, *text_);
}

TEST(UnifiedDiffTest, ShowsChangesInTheirContext) {
    for (const tests::TCase& c : tests::Cases("app/cases/diffs.casos"))
        ExpectLines(c, Lines(UnifiedDiff(c.Inputs[0].first, c.Inputs[0].second, "x", "y")));
}

} // namespace
} // namespace conferix
