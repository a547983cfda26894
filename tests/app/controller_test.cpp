#include "app/controller_manager.h"
#include "app/fixed_messages.h"
#include "app/validador_controller.h"
#include "data/database_tuss.h"
#include "platform/platform.h"
#include "support/case_file.h"
#include "support/support.h"
#include "validation/solver.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <iterator>
#include <map>
#include <set>
#include <sstream>

namespace conferix {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TDBConnectionFactory MemoryTerminology() {
    return TDBConnectionFactory([] { return TTussConnection::InMemory(); });
}

/// A controller whose events are written down as words.
class Controller : public testing::Test {
  protected:
    Controller() : controller_(MemoryTerminology()) {
        TValidatorEvents& events = controller_.Events();
        events.OnStateChange.Subscribe([this](TStateChangeArgs& args) { Note("estado", args); });
        events.OnFileOpen.Subscribe([this](TFileOpenArgs& args) { Note("abriu " + args.Content(), args); });
        events.OnFileSave.Subscribe([this](TFileSaveArgs& args) { Note("salvou " + args.Content(), args); });
        events.OnFileClose.Subscribe([this](TFileCloseArgs& args) {
            Note("fechar", args);
            args.CanClose = canClose_;
        });
        events.OnValidate.Subscribe([this](TValidateArgs& args) {
            Note(args.ValidXml ? "validou" : "não é XML", args);
            result_ = args;
        });
        controller_.SetSchemaTissPath(folder_.Path());
        file_ = (folder_.Path() / "lote.xml").string();
        WriteTestFile(file_, "<a/>");
    }

    void Note(const std::string& what, const TValidatorArgs& args) {
        log_.push_back(fmt::format("{} {}", what, fmt::join(args.FileStateFlags.Names(), "+")));
    }
    std::vector<std::string> TakeLog() { return std::exchange(log_, {}); }

    std::vector<std::string> Shown() const {
        std::vector<std::string> texts;
        for (const auto& message : result_.ValidationMessages)
            texts.push_back(message->Msg());
        return texts;
    }

    TTemporaryFolder folder_;
    TValidadorController controller_;
    std::string file_;
    std::vector<std::string> log_;
    TValidateArgs result_;
    bool canClose_ = true;
};

TEST_F(Controller, LivesThroughItsStates) {
    controller_.LoadFromFile(file_);
    EXPECT_THAT(TakeLog(), ElementsAre("abriu <a/> sfAberto", "estado sfAberto"));
    controller_.LoadFromFile(file_);
    EXPECT_THAT(TakeLog(), IsEmpty());
    controller_.Modify();
    controller_.Modify();
    EXPECT_THAT(TakeLog(), ElementsAre("estado sfAberto+sfModificado"));
    controller_.Save("<b/>");
    EXPECT_THAT(TakeLog(), ElementsAre("salvou <b/> sfAberto", "estado sfAberto"));
    EXPECT_EQ(ReadTestFile(file_), "<b/>");
    const std::string other = (folder_.Path() / "outro.xml").string();
    controller_.SaveAs("<?xml version='1.0' encoding='ISO-8859-1'?><c>é</c>", other);
    EXPECT_EQ(controller_.FileName(), other);
    EXPECT_EQ(ReadTestFile(other), "<?xml version='1.0' encoding='ISO-8859-1'?><c>\xE9</c>");
    TakeLog();
    canClose_ = false;
    controller_.CloseFile();
    EXPECT_THAT(TakeLog(), ElementsAre("fechar sfAberto"));
    canClose_ = true;
    controller_.CloseFile();
    EXPECT_THAT(TakeLog(), ElementsAre("fechar sfAberto", "estado "));
    EXPECT_EQ(controller_.FileName(), "");
}

TEST_F(Controller, RefusesWhatItsStateDoesNotAllow) {
    EXPECT_EQ(TextOf<EFileNotFound>([&] { controller_.LoadFromFile("/nenhum/lugar.xml"); }),
              "O arquivo \"%s\" não existe.");
    const std::pair<const char*, std::function<void()>> closed[] = {
        {"Não é possível alterar o Modified, pois não tem arquivo carregado.", [&] { controller_.Modify(); }},
        {"Não é possível salvar o Xml, pois não tem arquivo carregado.", [&] { controller_.Save("x"); }},
        {"Não é possível salvar o Xml, pois não tem arquivo carregado.",
         [&] { controller_.SaveAs("x", file_); }},
        {"Não é possível alterar o Xml, pois não tem arquivo carregado.", [&] { controller_.CloseFile(); }},
        {"Para validar um XML, é necessário ter um arquivo carregado.",
         [&] { controller_.Validate("<a/>", {}); }}};
    for (const auto& [text, action] : closed)
        EXPECT_EQ(TextOf<EFileNotLoaded>(action), text);
    controller_.LoadFromFile(file_);
    const std::string other = (folder_.Path() / "outro.xml").string();
    EXPECT_EQ(TextOf<EFileNotFound>([&] { controller_.LoadFromFile(other); }),
              "O arquivo \"%s\" não existe.");
    WriteTestFile(other, "<a/>");
    EXPECT_EQ(TextOf<EAlreadyFileLoaded>([&] { controller_.LoadFromFile(other); }),
              "Já existe um arquivo aberto. Feche-o antes para poder abrir outro.");
    TakeLog();
}

TEST_F(Controller, AFileThatCannotBeReadOrWrittenLosesNothing) {
    WriteTestFile(file_, "<a>\x81</a>");
    EXPECT_THROW(controller_.LoadFromFile(file_), EXmlEncoding);
    EXPECT_EQ(controller_.FileStateFlags().Bits(), 0);
    WriteTestFile(file_, "<a/>");
    controller_.LoadFromFile(file_);
    controller_.Modify();
    EXPECT_THROW(controller_.SaveAs("<b/>", (folder_.Path() / "nenhuma/pasta.xml").string()),
                 EFileNotWritten);
    EXPECT_EQ(controller_.FileName(), file_);
    EXPECT_TRUE(controller_.Modified());
    controller_.Save("<b/>");
    controller_.Save("<c/>"); // what it wrote itself is no change of somebody else
    WriteTestFile(file_, "<outro/>");
    EXPECT_THROW(controller_.Save("<d/>"), EFileChanged);
    EXPECT_EQ(ReadTestFile(file_), "<outro/>");
}

TEST_F(Controller, TurnsFailuresIntoMessages) {
    const std::string root = "<mensagemTISS><cabecalho><Padrao>";
    const std::string end = "</Padrao></cabecalho></mensagemTISS>";
    const struct {
        std::string Xml;
        std::string Message;
        TMessageType Type;
        bool ValidXml;
        const char* Versao;
    } cases[] = {
        {"<a>",
         "[Linha: 1] O XML termina sem fechar a tag <a>, aberta na linha 1; o arquivo pode estar incompleto.",
         TMessageType::mtError, false, ""},
        {"<nota/>", "O elemento raíz <nota> não é reconhecido como sendo de um tipo de arquivo TISS válido.",
         TMessageType::mtError, true, ""},
        {root + "3.05.00" + end,
         fmt::format("Schema file {} not found", (folder_.Path() / "tissV3_05_00.xsd").string()),
         TMessageType::mtError, true, "3.05.00"},
    };
    controller_.LoadFromFile(file_);
    for (const auto& c : cases) {
        TakeLog();
        controller_.Validate(c.Xml, {});
        ASSERT_EQ(result_.ValidationMessages.size(), 1U) << c.Xml;
        EXPECT_EQ(result_.ValidationMessages.front()->Msg(), c.Message);
        EXPECT_EQ(result_.ValidationMessages.front()->MsgType(), c.Type);
        EXPECT_EQ(result_.ValidXml, c.ValidXml) << c.Xml;
        EXPECT_EQ(result_.ArquivoTiss, nullptr);
        EXPECT_EQ(controller_.VersaoTiss(), c.Versao);
        EXPECT_THAT(TakeLog(), ElementsAre("estado sfAberto+sfValidando",
                                           std::string(c.ValidXml ? "validou" : "não é XML") +
                                               " sfAberto+sfValidado+sfInvalido",
                                           "estado sfAberto+sfValidado+sfInvalido"));
    }
}

TEST_F(Controller, UnknownFailuresAskForAReport) {
    TValidadorController failing(TDBConnectionFactory(
        []() -> std::shared_ptr<ITussConnection> { throw std::runtime_error("detalhe"); }));
    TValidateArgs result;
    failing.Events().OnValidate.Subscribe([&](TValidateArgs& args) { result = args; });
    failing.LoadFromFile(file_);
    failing.Validate("<mensagemTISS><cabecalho><Padrao>3.05.00</Padrao></cabecalho></mensagemTISS>", {});
    ASSERT_EQ(result.ValidationMessages.size(), 1U);
    const TXmlMessage& message = *result.ValidationMessages.front();
    EXPECT_EQ(message.MsgType(), TMessageType::mtFatal);
    EXPECT_THAT(message.Reason(), HasSubstr("suporte@conferix.example"));
    EXPECT_THAT(message.Reason(), testing::EndsWith("\r\nDetalhe do erro: detalhe"));

    TValidadorController foreign(
        TDBConnectionFactory([this] { return TDatabaseTuss(file_).CreateConnection(); }));
    foreign.Events().OnValidate.Subscribe([&](TValidateArgs& args) { result = args; });
    foreign.LoadFromFile(file_);
    foreign.Validate("<mensagemTISS><cabecalho><Padrao>3.05.00</Padrao></cabecalho></mensagemTISS>", {});
    EXPECT_EQ(result.ValidationMessages.front()->MsgType(), TMessageType::mtError);
    EXPECT_THAT(result.ValidationMessages.front()->Reason(),
                HasSubstr("Não foi possível abrir a base de terminologia \"" + file_ + "\": "));
}

const std::string kWrongHash =
    "<ans:mensagemTISS "
    "xmlns:ans='http://www.ans.gov.br/padroes/tiss/schemas'><ans:cabecalho><ans:Padrao>3.05.00"
    "</ans:Padrao></ans:cabecalho><ans:epilogo><ans:hash>3d4a7b9a0d0ae6d3a28bb5c2f1b5b6fb</ans:hash></"
    "ans:epilogo>"
    "</ans:mensagemTISS>";

TEST_F(Controller, ShowsValidFilesAsSuch) {
    WriteTestFile(folder_.Path() / "tissV3_05_00.xsd",
                  "<schema xmlns='http://www.w3.org/2001/XMLSchema' elementFormDefault='qualified' "
                  "targetNamespace='http://www.ans.gov.br/padroes/tiss/schemas'><element "
                  "name='mensagemTISS'/></schema>");
    controller_.LoadFromFile(file_);
    controller_.Validate(kWrongHash, {});
    ASSERT_EQ(result_.ValidationMessages.size(), 1U) << testing::PrintToString(Shown());
    // The hash that the message asks for makes the file valid.
    const std::string solved = result_.ValidationMessages.front()->Solvers().front()->SolvedXml();
    controller_.Validate(solved, {});
    EXPECT_THAT(Shown(), ElementsAre("Arquivo válido!\r\nNenhum erro foi encontrado no arquivo."));
    EXPECT_TRUE(controller_.FileStateFlags().Contains(TFileStateFlag::sfValido));
    EXPECT_EQ(result_.AllMessages.size(), 3U);
    EXPECT_EQ(controller_.VersaoTiss(), "3.05.00");
}

TEST_F(Controller, AnObserverThatFailsBecomesAMessage) {
    std::set<int> stateFailures;
    std::set<int> resultFailures;
    int states = 0;
    int results = 0;
    TValidatorEvents& events = controller_.Events();
    events.OnStateChange.Subscribe([&](TStateChangeArgs&) {
        if (stateFailures.count(++states) != 0)
            throw std::runtime_error("observador");
    });
    events.OnValidate.Subscribe([&](TValidateArgs&) {
        if (resultFailures.count(++results) != 0)
            throw 42; // no exception class at all
    });
    std::vector<std::string> last; // what an observer behind those that fail is told
    events.OnStateChange.Subscribe([&](TStateChangeArgs&) { last.push_back(log_.back()); });
    events.OnValidate.Subscribe([&](TValidateArgs&) { last.push_back(log_.back()); });
    controller_.LoadFromFile(file_);
    const auto numbers = [](const std::string& text) {
        std::istringstream stream(text);
        return std::set<int>{std::istream_iterator<int>(stream), {}};
    };
    for (const tests::TCase& c : tests::Cases("app/cases/observers.casos")) {
        if (c.Section != "falham")
            continue;
        stateFailures = numbers(c.Inputs[0].first);
        resultFailures = numbers(c.Inputs[0].second);
        states = results = 0;
        TakeLog();
        last.clear();
        controller_.Validate("<a>", {});
        ExpectLines(c, last);
        ExpectLines(c, TakeLog());
        const bool failed = !stateFailures.empty() || !resultFailures.empty();
        ASSERT_EQ(result_.ValidationMessages.size(), 1U) << c;
        EXPECT_EQ(result_.ValidationMessages.front()->MsgType() == TMessageType::mtFatal, failed) << c;
        const char* const detail = stateFailures.empty() ? "exceção de tipo desconhecido" : "observador";
        EXPECT_THAT(result_.ValidationMessages.front()->Reason(),
                    testing::EndsWith(failed ? fmt::format("\r\nDetalhe do erro: {}", detail)
                                             : "o arquivo pode estar incompleto."))
            << c;
    }
}

TEST_F(Controller, ObserversMaySubscribeAndUnsubscribeWhileTheyAreTold) {
    TValidatorEvent<TStateChangeArgs>& event = controller_.Events().OnStateChange;
    std::vector<std::string> told;
    int second = 0;
    int first = 0;
    first = event.Subscribe([&, name = std::string("o primeiro dos observadores")](TStateChangeArgs&) {
        event.Unsubscribe(first);
        event.Unsubscribe(second);
        for (int i = 0; i < 100; ++i) // the list grows while it is walked
            event.Subscribe([&told](TStateChangeArgs&) { told.push_back("novo"); });
        told.push_back(name); // its own captures outlive its subscription
    });
    second = event.Subscribe([&](TStateChangeArgs&) { told.push_back("segundo"); });
    event.Subscribe([&](TStateChangeArgs&) { told.push_back("terceiro"); });
    controller_.LoadFromFile(file_);
    EXPECT_THAT(told, ElementsAre("o primeiro dos observadores", "terceiro"));
    controller_.Modify();
    EXPECT_EQ(told.size(), 2U + 101U);
}

TEST_F(Controller, WhatAnObserverAsksForIsDoneAtOnceAndIsTheNewest) {
    const std::string other = (folder_.Path() / "outro.xml").string();
    WriteTestFile(other, "<b/>");
    const std::map<std::string, std::function<void()>> actions = {
        {"valida", [&] { controller_.Validate("<dentro>", {}); }},
        {"fecha", [&] { controller_.CloseFile(); }},
        {"abre outro", [&] { controller_.LoadFromFile(other); }}};
    std::function<void()> atState;
    std::function<void()> atResult;
    const auto once = [](std::function<void()>& action) {
        if (const auto taken = std::exchange(action, nullptr))
            taken();
    };
    TValidatorEvents& events = controller_.Events();
    events.OnStateChange.Subscribe([&](TStateChangeArgs&) { once(atState); });
    events.OnValidate.Subscribe([&](TValidateArgs& args) {
        const TXmlMessages before = args.ValidationMessages;
        once(atResult);
        EXPECT_EQ(args.ValidationMessages, before) << "the arguments are the notification's own";
    });
    std::vector<std::string> last; // of an observer behind: never an older result after a newer one
    events.OnValidate.Subscribe(
        [&](TValidateArgs& args) { last.push_back(args.ValidationMessages.front()->Msg()); });
    for (const tests::TCase& c : tests::Cases("app/cases/observers.casos")) {
        if (c.Section != "pedem")
            continue;
        if (controller_.FileName() != file_) {
            if (!controller_.FileName().empty())
                controller_.CloseFile();
            controller_.LoadFromFile(file_);
        }
        TakeLog();
        last.clear();
        (c.Inputs[0].first == "no resultado" ? atResult : atState) = [&] {
            for (const auto& input : c.Inputs)
                actions.at(input.second)();
        };
        controller_.Validate("<fora>", {});
        std::vector<std::string> told = TakeLog();
        for (const std::string& text : last)
            told.push_back("mostrado: " + text);
        ExpectLines(c, told);
        EXPECT_FALSE(controller_.FileStateFlags().Contains(TFileStateFlag::sfValidando)) << c;
    }
}

TEST_F(Controller, ObserversOfClosingMayCloseAndSave) {
    controller_.LoadFromFile(file_);
    controller_.Modify();
    TakeLog();
    controller_.Events().OnFileClose.Subscribe([&](TFileCloseArgs&) {
        controller_.Save("<salvo/>");
        controller_.CloseFile();
    });
    controller_.CloseFile();
    EXPECT_THAT(TakeLog(), ElementsAre("fechar sfAberto+sfModificado", "salvou <salvo/> sfAberto",
                                       "estado sfAberto", "estado "));
    EXPECT_EQ(ReadTestFile(file_), "<salvo/>");
}

TEST(FixedMessages, CountTheHidden) {
    const auto text = [](std::size_t count) {
        return THasIgnoredMessages(TXmlMessages(count, TXmlMessage::CreateWarn("x"))).Msg();
    };
    const std::string rest = "\r\nAs mensagens de validações desativadas não estão sendo exibidas.";
    EXPECT_EQ(text(1), "1 mensagem foi ignorada." + rest);
    EXPECT_EQ(text(2), "2 mensagens foram ignoradas." + rest);
    EXPECT_EQ(text(1234), "1.234 mensagens foram ignoradas." + rest);
    EXPECT_THROW(THasIgnoredMessages({}).Validation(), EValidationNotDefinedInMessageException);
}

TEST(ControllerManager, KeepsControllersUnderTheirNames) {
    TControllerManager manager;
    std::vector<std::string> log;
    const int observer =
        manager.AtachObserver([&](TControllerOperation operation, const std::string& name, const auto&) {
            log.push_back(fmt::format("{} {}", static_cast<int>(operation), name));
        });
    const auto first = std::make_shared<TValidadorController>(MemoryTerminology());
    const auto second = std::make_shared<TValidadorController>(MemoryTerminology());
    manager.AddController("a", first);
    manager.AddController("b", second);
    EXPECT_EQ(TextOf<EDuplicateController>([&] { manager.AddController("a", second); }),
              "Duplicates filename not allowed.");
    EXPECT_EQ(TextOf<EDuplicateController>([&] { manager.AddController("c", second); }),
              "Duplicates controllers not allowed.");
    manager.UpdateFileName("a", "c");
    EXPECT_THROW(manager.UpdateFileName("c", "b"), EDuplicateController);
    EXPECT_EQ(manager.GetController(0), first);
    EXPECT_TRUE(manager.Contains("c"));
    EXPECT_FALSE(manager.Contains("a"));
    EXPECT_EQ(manager.ExtractController("c"), first);
    EXPECT_EQ(manager.ExtractController("c"), nullptr);
    manager.RemoveController("b");
    EXPECT_EQ(manager.Count(), 0U);
    EXPECT_THROW(manager.GetController(0), std::out_of_range);
    EXPECT_THAT(log, ElementsAre("0 a", "0 b", "2 c", "1 c", "1 b"));
    manager.DetachObserver(observer);
    manager.AddController("d", first);
    EXPECT_EQ(log.size(), 5U);

    // An observer may detach another and change the list of controllers.
    int late = 0;
    const int eager =
        manager.AtachObserver([&](TControllerOperation, const std::string& name, const auto& controller) {
            manager.DetachObserver(late);
            if (manager.Contains(name))
                manager.RemoveController(name);
            log.push_back(fmt::format("{} {}", name, controller->FileName()));
        });
    late = manager.AtachObserver(
        [&](TControllerOperation, const std::string&, const auto&) { log.push_back("!"); });
    log.clear();
    manager.UpdateFileName("d", "e");
    EXPECT_THAT(log, ElementsAre("e ", "e "));
    manager.DetachObserver(eager);
}

} // namespace
} // namespace conferix
