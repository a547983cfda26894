#include "app/config.h"

#include "app/configuracao_validacoes.h"
#include "app/proxy_settings.h"
#include "platform/platform.h"
#include "support/test_files.h"
#include "validator/rule_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace conferix {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

TEST(Config, KeepsWhatItDoesNotKnow) {
    const TTemporaryFolder folder;
    const auto file = folder.Path() / "nova" / "config.json";
    std::filesystem::create_directory(folder.Path() / "nova");
    WriteTestFile(file, R"({"outra": {"z": 1, "a": []}, "EnabledValidations": ["b", "a", "b"]})");
    TConfig config = TConfig::Load(file);
    EXPECT_THAT(config.EnabledValidations(), ElementsAre("a", "b"));
    EXPECT_THAT(config.UnknownValidations(), ElementsAre("a", "b"));
    config.Enable("tiss.mensagem");
    config.Enable("tiss.mensagem");
    config.Disable("b");
    config.Save(file);
    EXPECT_EQ(ReadTestFile(file), "{\n  \"outra\": {\n    \"z\": 1,\n    \"a\": []\n  },\n"
                                  "  \"EnabledValidations\": [\n    \"a\",\n    \"tiss.mensagem\"\n  ]\n}\n");
    EXPECT_THAT(TConfig::GetEnabledValidations(file), ElementsAre("a", "tiss.mensagem"));
    // Without a file every rule is on.
    config = TConfig::Load(folder.Path() / "nenhuma.json");
    EXPECT_THAT(config.UnknownValidations(), IsEmpty());
    EXPECT_TRUE(config.IsEnabled("tiss.mensagem.hash"));
    EXPECT_TRUE(std::is_sorted(config.EnabledValidations().begin(), config.EnabledValidations().end()));
    config.Save(folder.Path() / "outra" / "pasta" / "config.json"); // the folders are made
    EXPECT_THAT(TConfig::GetEnabledValidations(folder.Path() / "outra/pasta/config.json"),
                SizeIs(ListRules().size()));
}

TEST(Config, ADamagedFileIsNamedAndKept) {
    const TTemporaryFolder folder;
    const auto file = folder.Path() / "config.json";
    for (const char* content :
         {"", "{", "[]", "{\"EnabledValidations\": 1}", "{\"EnabledValidations\": [1]}", "\xFF\xFE"}) {
        WriteTestFile(file, content);
        EXPECT_THAT(TextOf<EInvalidConfig>([&] { TConfig::Load(file); }), HasSubstr(file.string()));
        EXPECT_EQ(ReadTestFile(file), content);
    }
    EXPECT_THROW(TConfig::Load(folder.Path()), EInvalidConfig);
    WriteTestFile(file, R"({"EnabledValidations": [], "x": 1e999})");
    EXPECT_THAT([&] { TConfig::Load(file); },
                testing::ThrowsMessage<EInvalidConfig>(HasSubstr("um número grande demais")));
    WriteTestFile(file, "{\"x\": " + std::string(100000, '[') + std::string(100000, ']') +
                            ", \"EnabledValidations\": []}");
    EXPECT_THROW(TConfig::Load(file), EInvalidConfig);
}

/// The names of nodes.
std::vector<std::string> NamesOf(const TConfiguracaoValidacoes& dialog,
                                 const std::vector<std::size_t>& nodes) {
    std::vector<std::string> names;
    names.reserve(nodes.size());
    for (const std::size_t node : nodes)
        names.push_back(dialog.Rules()[node].Rule->Name);
    return names;
}

TEST(ConfiguracaoValidacoes, SwitchesAGroupByTheTreeAndRefusesWhatIsRequired) {
    TConfig config;
    config.SetDefaultInitialConfig();
    std::vector<std::string> log;
    TConfiguracaoValidacoes dialog(
        config, [&](const std::string& name, bool on) { log.push_back((on ? "+" : "-") + name); });
    EXPECT_EQ(dialog.Find("tiss.nenhuma"), std::nullopt);
    const std::size_t hash = *dialog.Find("tiss.mensagem.hash");
    EXPECT_EQ(dialog.Refusal(hash), "A validação \"Hash MD5\" é obrigatória. Não é possível desativá-la.");
    EXPECT_THROW(dialog.SetChecked(hash, false), ERuleNotSwitched);
    EXPECT_THROW(dialog.SetChecked("tiss.nenhuma", true), ERuleNotSwitched);
    EXPECT_TRUE(dialog.Checked(hash));
    EXPECT_FALSE(dialog.Changed());

    // Fields stand below their group in the tree, whatever their names begin with.
    const std::string group = "tiss.monitoramento.loteguias.guia.prestador";
    const std::vector<std::string> below = {group, "tiss.monitoramento.loteguias.guia.campo014",
                                            "tiss.monitoramento.loteguias.guia.campo015"};
    EXPECT_EQ(NamesOf(dialog, dialog.SetChecked(below[1], false)), std::vector{below[1]});
    EXPECT_EQ(NamesOf(dialog, dialog.SetChecked(group, false)), (std::vector{below[0], below[2]}));
    EXPECT_TRUE(dialog.Changed());
    EXPECT_TRUE(dialog.Refusal(*dialog.Find(group)).empty());
    for (const std::string& name : below)
        EXPECT_FALSE(dialog.Config().IsEnabled(name)) << name;
    EXPECT_EQ(NamesOf(dialog, dialog.SetChecked(group, true)), below);
    EXPECT_EQ(dialog.Config().EnabledValidations(), config.EnabledValidations());
    EXPECT_THAT(log, ElementsAre("-" + below[1], "-" + below[0], "-" + below[2], "+" + below[0],
                                 "+" + below[1], "+" + below[2]));
    // Of a required rule that the file leaves out, the box can be checked.
    config.Disable("tiss.mensagem.hash");
    TConfiguracaoValidacoes other(config);
    EXPECT_FALSE(other.Checked(hash));
    EXPECT_EQ(NamesOf(other, other.SetChecked(hash, true)), std::vector<std::string>{"tiss.mensagem.hash"});
}

TEST(Proxy, SettingsAreKeptBesideWhatElseTheFileHolds) {
    const TTemporaryFolder folder;
    const auto file = folder.Path() / "Conferix.ini";
    WriteTestFile(file, "; nota\n[Outra]\nChave = v\n[Proxy]\nMode = 7\nPort = 70000\nServer=a b\n");
    TProxySettings odd(file);
    EXPECT_EQ(odd.Mode, TProxyMode::Direct);
    EXPECT_EQ(odd.Port, 0);
    odd.Mode = TProxyMode::Manual;
    EXPECT_EQ(odd.Check(), TProxySettings::kServerWithBlanks);
    odd.Server = "proxy.exemplo";
    EXPECT_EQ(odd.Check(), TProxySettings::kInvalidPort);
    odd.Port = 8080;
    EXPECT_EQ(odd.Check(), "");
    odd.Save();
    EXPECT_THAT(ReadTestFile(file), testing::AllOf(HasSubstr("; nota"), HasSubstr("Chave = v")));
    const TProxySettings saved(file);
    EXPECT_EQ(saved.Mode, TProxyMode::Manual);
    EXPECT_EQ(saved.Server, "proxy.exemplo");
    EXPECT_EQ(saved.Port, 8080);
    TProxySettings nowhere(folder.Path() / "nenhuma" / "Conferix.ini");
    EXPECT_THROW(nowhere.Save(), EFileNotWritten);
}

} // namespace
} // namespace conferix
