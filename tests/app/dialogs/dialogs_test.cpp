#include "app/conversion_choice.h"
#include "app/desktop/dialogs/configuracao_validacoes_dialog.h"
#include "app/desktop/dialogs/proxy_settings_dialog.h"
#include "app/desktop/dialogs/solver_select.h"
#include "app/desktop/dialogs/version_converter_dialogs.h"
#include "app/dialogs/dialog_test.h"
#include "app/schema_folder.h"
#include "model/arquivo_tiss.h"
#include "schema_model/built_in_folders.h"
#include "validation/validation_message.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QRadioButton>
#include <QTreeView>

#include <sstream>

namespace conferix {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Captions of the radio buttons, the chosen one marked.
std::vector<std::string> ChoicesOf(const QWidget& dialog) {
    std::vector<std::string> captions;
    for (const QRadioButton* choice : dialog.findChildren<QRadioButton*>())
        captions.push_back((choice->isChecked() ? "* " : "") +
                           FromQt(choice->text().replace(QLatin1String("&&"), QLatin1String("&"))));
    return captions;
}

class FSolverSelect : public TDialogTest {
  protected:
    /// A correction with a description of its own.
    struct TNamed : ISolver {
        explicit TNamed(std::string text) : Text(std::move(text)) {}
        std::string Id() const override { return Text; }
        std::string Name() const override { return "TNamed"; }
        std::string Description() const override { return Text; }
        void Solve() override {}
        std::string SolvedXml() override { return {}; }
        std::string Text;
    };
    using TSolvers = std::vector<std::shared_ptr<ISolver>>;
    static TSolvers Named(const std::vector<std::string>& texts) {
        TSolvers solvers;
        for (const std::string& text : texts)
            solvers.push_back(std::make_shared<TNamed>(text));
        return solvers;
    }
};

TEST_F(FSolverSelect, OffersTheCorrectionsInOrderWithTheFirstChosen) {
    const TSolvers solvers = Named({"Alterar o valor para A & B <b>", "Segunda", "Terceira"});
    TFSolverSelect dialog(solvers);
    dialog.show();
    EXPECT_EQ(dialog.windowTitle(), "Confirmação");
    ExpectNames(dialog);
    EXPECT_EQ(dialog.size(), QSize(482, 217));
    EXPECT_EQ(dialog.minimumSize(), dialog.maximumSize()) << "a fixed border";
    EXPECT_FALSE(dialog.windowFlags().testFlag(Qt::WindowMaximizeButtonHint));
    EXPECT_EQ(Find<QGroupBox>(dialog, "Escolha a ação").geometry(), QRect(8, 8, 466, 167));
    for (const char* button : {"OK", "Cancelar"})
        EXPECT_EQ(Find<QPushButton>(dialog, button).size(), QSize(105, 28));
    EXPECT_EQ(Find<QPushButton>(dialog, "Cancelar").geometry().right(), 482 - 8 - 1);
    EXPECT_THAT(ChoicesOf(dialog), ElementsAre("* Alterar o valor para A & B <b>", "Segunda", "Terceira"));
    EXPECT_EQ(dialog.SelectedSolver(), solvers[0]);
    dialog.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&dialog));
    EXPECT_TRUE(dialog.findChildren<QRadioButton*>()[0]->hasFocus());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    EXPECT_EQ(dialog.SelectedSolver(), solvers[1]);
    // Captions that need more room than there is get it, in the width that is fixed.
    TFSolverSelect tall(Named({std::string(900, 'm'), std::string(300, 'n') + " " + std::string(300, 'o')}));
    tall.show();
    EXPECT_EQ(tall.width(), 482);
    EXPECT_GE(tall.height(), 217);
}

TEST_F(FSolverSelect, AnswersTheChoiceOrNothing) {
    const TSolverChoice choose = TFSolverSelect::ChoiceBy(nullptr);
    Visit([](QDialog& dialog) {
        QTest::mouseClick(dialog.findChildren<QRadioButton*>()[2], Qt::LeftButton);
        QTest::keyClick(&dialog, Qt::Key_Return);
    });
    EXPECT_EQ(choose(Named({"a", "b", "c"})), 2U);
    Visit([](QDialog& dialog) { Press(dialog, "Cancelar"); });
    EXPECT_EQ(choose(Named({"a", "b"})), std::nullopt);
    Visit([](QDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    EXPECT_EQ(choose(Named({"a", "b"})), std::nullopt);
}

class FConfiguracaoValidacoes : public TDialogTest {
  protected:
    static QTreeView& Tree(const QDialog& dialog) { return Find<QTreeView>(dialog, "Validações"); }
    static QModelIndex Node(const QDialog& dialog, const char* description) {
        const QAbstractItemModel& model = *Tree(dialog).model();
        return model
            .match(model.index(0, 0), Qt::DisplayRole, QString::fromUtf8(description), 1,
                   Qt::MatchExactly | Qt::MatchRecursive)
            .value(0);
    }
    /// Switches the node by its key, as a user does.
    static void Toggle(const QDialog& dialog, const QModelIndex& node) {
        Tree(dialog).setCurrentIndex(node);
        QTest::keyClick(&Tree(dialog), Qt::Key_Space);
        QTest::qWait(20);
    }
    static bool IsOn(const QModelIndex& node) {
        return node.data(Qt::CheckStateRole).toInt() == static_cast<int>(Qt::Checked);
    }

    const std::filesystem::path file_ = folder_ / "config.json";
};

constexpr const char* kLoteQuantity = "tiss.mensagem.loteguias.spsadt.despesa.quantidade";

TEST_F(FConfiguracaoValidacoes, RefusesWhatIsRequiredAndSavesTheRest) {
    const TListedRule optional = [] {
        for (const TListedRule& rule : ListRules())
            if (!rule.Rule->Required && rule.Depth > 1)
                return rule;
        return TListedRule{};
    }();
    const std::string description = optional.Rule->Description;
    Answer({"OK"});
    Visit([&](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Ativar/Desativar Validações");
        ExpectNames(dialog);
        EXPECT_EQ(dialog.findChild<QLabel*>()->text(),
                  "Marque as validações que você deseja ativar e desmarque as que você deseja desativar.");
        EXPECT_EQ(Tree(dialog).currentIndex().data().toString(), ToQt(description)) << "preselected";
        const QModelIndex hash = Node(dialog, "Hash MD5");
        EXPECT_TRUE(IsOn(hash));
        Toggle(dialog, hash);
        EXPECT_TRUE(IsOn(hash));
        const QModelIndex switched = Tree(dialog).model()->match(Tree(dialog).model()->index(0, 0),
                                                                 Qt::ToolTipRole, ToQt(optional.Rule->Name),
                                                                 1, Qt::MatchExactly | Qt::MatchRecursive)[0];
        Toggle(dialog, switched);
        EXPECT_FALSE(IsOn(switched));
        // Another program switches another rule meanwhile; both hold.
        TConfig other = TConfig::Load(file_);
        other.Disable(kLoteQuantity);
        other.Save(file_);
        Press(dialog, "Salvar");
    });
    EXPECT_TRUE(TFConfiguracaoValidacoes::Abrir(nullptr, optional.Rule->Name, file_));
    EXPECT_THAT(TakeTold(), ElementsAre("Ativar/Desativar Validações|A validação \"Hash MD5\" é obrigatória. "
                                        "Não é possível desativá-la."));
    const TConfig saved = TConfig::Load(file_);
    EXPECT_FALSE(saved.IsEnabled(optional.Rule->Name));
    EXPECT_FALSE(saved.IsEnabled(kLoteQuantity));
    EXPECT_TRUE(saved.IsEnabled("tiss.mensagem.hash"));
    EXPECT_THAT(ReadTestFile(folder_ / "dados/conferix.log"),
                HasSubstr("regra " + optional.Rule->Name + " desativada"));
}

TEST_F(FConfiguracaoValidacoes, AsksBeforeChangesAreLost) {
    const char* question = "Confirmação|As alterações realizadas não serão salvas. Confirma?";
    Answer({"Não", "Não", "Sim"});
    Visit([&](QDialog& dialog) {
        const QModelIndex first = Tree(dialog).model()->index(0, 0);
        QModelIndex optional;
        for (std::size_t i = 0; i < ListRules().size() && !optional.isValid(); ++i)
            if (!ListRules()[i].Rule->Required)
                optional =
                    Tree(dialog).model()->match(first, Qt::ToolTipRole, ToQt(ListRules()[i].Rule->Name), 1,
                                                Qt::MatchExactly | Qt::MatchRecursive)[0];
        Toggle(dialog, optional);
        dialog.close(); // the window's own button
        EXPECT_TRUE(dialog.isVisible());
        QTest::keyClick(&dialog, Qt::Key_Escape);
        EXPECT_TRUE(dialog.isVisible());
        EXPECT_FALSE(IsOn(optional)) << "the changes stay";
        Press(dialog, "Cancelar");
    });
    EXPECT_FALSE(TFConfiguracaoValidacoes::Abrir(nullptr, "", file_));
    EXPECT_THAT(TakeTold(), ElementsAre(question, question, question));
    EXPECT_FALSE(std::filesystem::exists(file_));
    // Without changes nothing is asked.
    Visit([](QDialog& dialog) { dialog.close(); });
    EXPECT_FALSE(TFConfiguracaoValidacoes::Abrir(nullptr, "tiss.nenhuma", file_));
    EXPECT_THAT(TakeTold(), IsEmpty());
}

TEST_F(FConfiguracaoValidacoes, KeepsTheChangesWhereTheFileCannotBeUsed) {
    WriteTestFile(file_, "{");
    Answer({"OK"});
    EXPECT_FALSE(TFConfiguracaoValidacoes::Abrir(nullptr, "", file_));
    EXPECT_THAT(TakeTold(), ElementsAre(testing::AllOf(HasSubstr(file_.string()), HasSubstr("JSON"))));
    EXPECT_EQ(ReadTestFile(file_), "{");
    std::filesystem::remove(file_);
    Answer({"OK"});
    Visit([&](QDialog& dialog) {
        std::filesystem::create_directory(file_); // what cannot be replaced
        Press(dialog, "Salvar");
        EXPECT_TRUE(dialog.isVisible());
        std::filesystem::remove(file_);
        Press(dialog, "Salvar");
    });
    EXPECT_TRUE(TFConfiguracaoValidacoes::Abrir(nullptr, "", file_));
    EXPECT_TRUE(std::filesystem::is_regular_file(file_));
    TakeTold();
}

class FProxySettings : public TDialogTest {};

TEST_F(FProxySettings, ShowsWhatIsStoredAndRefusesKeys) {
    WriteTestFile(folder_ / "Conferix.ini", "[Proxy]\nMode=2\nServer=proxy.local\nPort=0\n");
    TFProxySettings dialog{TProxySettings()};
    dialog.show();
    EXPECT_EQ(dialog.windowTitle(), "Configurações de Proxy");
    ExpectNames(dialog);
    Find<QGroupBox>(dialog, "Configuração de proxy para acesso à internet");
    EXPECT_THAT(ChoicesOf(dialog),
                ElementsAre("Conexão direta com a internet", "Detecção automática das configurações de proxy",
                            "* Configuração de proxy manual"));
    QStringList labels;
    for (const QLabel* label : dialog.findChildren<QLabel*>())
        labels << label->text();
    EXPECT_EQ(labels, QStringList({"Servidor:", "Porta:"}));
    auto& server = Find<QLineEdit>(dialog, "Servidor");
    auto& port = Find<QLineEdit>(dialog, "Porta");
    EXPECT_EQ(server.text(), "proxy.local");
    EXPECT_EQ(port.text(), "") << "a port of 0 is none";
    QTest::keyClicks(&server, " a b");
    EXPECT_EQ(server.text(), "proxy.localab");
    server.clear();
    server.insert(" proxy. local\n");
    EXPECT_EQ(server.text(), "proxy.local") << "pasted";
    QTest::keyClicks(&port, "8a-0 8+0x9");
    QTest::keyClick(&port, Qt::Key_Backspace);
    EXPECT_EQ(port.text(), "8080");
    Press(dialog, "Conexão direta com a internet");
    EXPECT_FALSE(server.isEnabled());
}

TEST_F(FProxySettings, KeepsTheDialogOpenUntilTheManualModeIsComplete) {
    const struct {
        const char* Server;
        const char* Port;
        const char* Told; ///< null: saved
    } cases[] = {
        {"", "8080", "Preencha o endereço do servidor."},
        {"", "", "Preencha o endereço do servidor."},
        {"proxy", "", "Informe um número de porta válido."},
        {"proxy", "0", "Informe um número de porta válido."},
        {"proxy", "65536", "Informe um número de porta válido."},
        {"proxy", "99999999999999999999", "Informe um número de porta válido."},
        {"proxy", "65535", nullptr},
    };
    for (const auto& c : cases) {
        if (c.Told != nullptr)
            Answer({"OK"});
        TFProxySettings dialog{TProxySettings()};
        dialog.show();
        Press(dialog, "Configuração de proxy manual");
        Find<QLineEdit>(dialog, "Servidor").setText(c.Server);
        Find<QLineEdit>(dialog, "Porta").setText(c.Port);
        Press(dialog, "OK");
        EXPECT_EQ(dialog.isVisible(), c.Told != nullptr) << c.Server << ":" << c.Port;
        EXPECT_EQ(TakeTold(), c.Told == nullptr
                                  ? std::vector<std::string>()
                                  : std::vector{std::string("Configurações de Proxy|") + c.Told});
    }
    EXPECT_EQ(TProxySettings().Port, 65535);
    // Other modes ask for nothing, and keep what is in the fields.
    Visit([](QDialog& dialog) {
        Press(dialog, "Detecção automática das configurações de proxy");
        Press(dialog, "OK");
    });
    EXPECT_TRUE(TFProxySettings::Abrir(nullptr));
    EXPECT_EQ(TProxySettings().Mode, TProxyMode::System);
    EXPECT_EQ(TProxySettings().Server, "proxy");
    Visit([](QDialog& dialog) {
        Press(dialog, "Conexão direta com a internet");
        Press(dialog, "Cancelar");
    });
    EXPECT_FALSE(TFProxySettings::Abrir(nullptr));
    EXPECT_EQ(TProxySettings().Mode, TProxyMode::System);
    // What cannot be written is told, and stays in the dialog.
    const TEnvironment nowhere("CONFERIX_INI", (folder_ / "falta/Conferix.ini").string());
    Answer({"OK"});
    Visit([](QDialog& dialog) {
        Press(dialog, "OK");
        EXPECT_TRUE(dialog.isVisible());
        Press(dialog, "Cancelar");
    });
    EXPECT_FALSE(TFProxySettings::Abrir(nullptr));
    EXPECT_THAT(TakeTold(), ElementsAre(HasSubstr("Conferix.ini")));
}

class FVersionConverter : public TDialogTest {
  protected:
    static std::shared_ptr<const IArquivoTiss> Load(const char* example) {
        return TTissFile::Read(Example(example)).Load();
    }
};

TEST_F(FVersionConverter, OffersTheReachableVersionsNearestFirst) {
    const auto lote = Load("spsadt-3.05.00-valido.xml");
    Visit([](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Converter Versão");
        EXPECT_EQ(dialog.findChild<QLabel*>()->text(), "Versão Atual: 3.05.00");
        Find<QGroupBox>(dialog, "Escolha para qual versão deseja converter:");
        EXPECT_THAT(ChoicesOf(dialog), ElementsAre("* 4.00.00", "4.00.01", "4.01.00", "4.02.00", "4.03.00",
                                                   "3.04.01", "3.04.00"));
        Press(dialog, "3.04.01");
        Press(dialog, "OK");
    });
    const auto down = AskConversion(nullptr, *lote);
    ASSERT_TRUE(down);
    EXPECT_EQ(down->Target, "3.04.01");
    for (const char* cancelled : {"4.03.00", "3.04.00"}) {
        Visit([&](QDialog& dialog) {
            Press(dialog, cancelled);
            Press(dialog, cancelled[0] == '4' ? "OK" : "Cancelar");
        });
        if (cancelled[0] == '4')
            Visit([](QDialog& dialog) { Press(dialog, "Cancelar"); });
        EXPECT_FALSE(AskConversion(nullptr, *lote));
    }
    Answer({"OK"});
    EXPECT_FALSE(AskConversion(nullptr, *Load("monitoramento-1.06.00-valido.xml")));
    EXPECT_THAT(TakeTold(), ElementsAre(HasSubstr("Conversão não suportada para esse tipo de transação")));
}

TEST_F(FVersionConverter, AsksForTheRegimeWhereVersion4BeginsToDemandIt) {
    const auto lote = Load("spsadt-3.05.00-valido.xml");
    const auto select = [](QDialog& dialog) {
        Press(dialog, "4.01.00");
        Press(dialog, "OK");
    };
    Answer({"OK"});
    Visit(select);
    Visit([](QDialog& dialog) {
        EXPECT_EQ(dialog.windowTitle(), "Regime de Atendimento");
        ExpectNames(dialog);
        EXPECT_THAT(FromQt(dialog.findChild<QLabel*>()->text()), HasSubstr("tabela 76"));
        auto& regimes = Find<QComboBox>(dialog, "Valor do Regime de Atendimento");
        QStringList offered;
        for (int i = 0; i < regimes.count(); ++i)
            offered << regimes.itemText(i);
        EXPECT_EQ(offered, QStringList({"01 - Ambulatorial", "02 - Domiciliar", "03 - Internação",
                                        "04 - Pronto Socorro", "05 - Telessaúde"}));
        Press(dialog, "OK");
        EXPECT_TRUE(dialog.isVisible());
        regimes.setCurrentIndex(3);
        Press(dialog, "OK");
    });
    EXPECT_EQ(AskConversion(nullptr, *lote)->Options.RegimeAtendimento, "04");
    EXPECT_THAT(TakeTold(), ElementsAre("Regime de Atendimento|Informe o valor do Regime de Atendimento"));
    Visit(select);
    Visit([](QDialog& dialog) {
        auto& regimes = Find<QComboBox>(dialog, "Valor do Regime de Atendimento");
        regimes.setCurrentIndex(0);
        Press(dialog,
              "Não preencher o campo automaticamente. Informarei manualmente o Regime de Atendimento em "
              "cada guia.");
        EXPECT_FALSE(regimes.isEnabled());
        Press(dialog, "OK");
    });
    EXPECT_EQ(AskConversion(nullptr, *lote)->Options.RegimeAtendimento, "");
    // From version 4 on the guides have it.
    Visit([](QDialog& dialog) { Press(dialog, "OK"); });
    EXPECT_EQ(AskConversion(nullptr, *Load("consulta-4.01.00-valido.xml"))->Target, "4.02.00");
}

TEST_F(FVersionConverter, TellsLossesAsMessagesAtTheirNewPlaces) {
    const auto lote = Load("spsadt-3.05.00-valido.xml");
    const TConvertedLote converted =
        ConvertLote(*lote, "4.03.00", {}, TSchemaFolder({}, BuiltInSchemaFolder()));
    const TXmlMessages messages = MessagesOf(converted);
    ASSERT_EQ(messages.size(), converted.Notes.size());
    ASSERT_FALSE(messages.empty());
    std::vector<std::string> lines = {""};
    std::istringstream text(converted.Xml);
    for (std::string line; std::getline(text, line);)
        lines.push_back(line);
    std::size_t placed = 0;
    for (std::size_t i = 0; i < messages.size(); ++i) {
        const TConversionNote& note = converted.Notes[i];
        EXPECT_THAT(messages[i]->Reason(), HasSubstr(note.Text));
        EXPECT_EQ(messages[i]->NumeroGuia(), note.Guia);
        EXPECT_EQ(messages[i]->MsgType() == TMessageType::mtInformation,
                  note.Type == TConversionNoteType::ntChange);
        if (note.Type == TConversionNoteType::ntChange && note.Node != nullptr && messages[i]->Line() > 0) {
            ++placed;
            EXPECT_THAT(lines[static_cast<std::size_t>(messages[i]->Line())],
                        HasSubstr(std::string(note.Node->LocalName())));
        }
    }
    EXPECT_GT(placed, 0U);
}

} // namespace
} // namespace conferix
