// Updates from a server of the test on the loopback address, directly and through a proxy.
#include "app/updater.h"

#include "app/http_server.h"
#include "data/sha256.h"
#include "platform/platform.h"
#include "support/command_test.h"
#include "support/small_lote.h"
#include "support/test_zip.h"

#include <gmock/gmock.h>

#include <map>

namespace conferix {
namespace {

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Update : public TCommandTest {
  protected:
    Update() {
        for (const char* name :
             {"http_proxy", "https_proxy", "no_proxy", "all_proxy", "NO_PROXY", "ALL_PROXY"})
            SetVariable(name, {});
    }
    void TearDown() override { SetVariable("http_proxy", {}); }
    TProxySettings Proxy(TProxyMode mode = TProxyMode::Direct, int port = 0) const {
        TProxySettings settings{File("proxy.ini")};
        settings.Mode = mode;
        settings.Server = "127.0.0.1";
        settings.Port = port;
        return settings;
    }
    std::string Sha(const std::string& bytes) const {
        WriteTestFile(File("sha"), bytes);
        return Sha256OfFile(File("sha"));
    }
    /// The error that a fetch ends in; empty for none.
    static std::string Failure(const std::function<void()>& fetch) {
        try {
            fetch();
        } catch (const EHttp& error) {
            return error.what();
        } catch (const EUpdate& error) {
            return error.what();
        }
        return {};
    }
};

const TDownloadProgress kGoOn = [](std::uint64_t, std::uint64_t) { return true; };

TEST_F(Update, GoesByTheProxySettings) {
    THttpServer server([](const std::string&) { return THttpAnswer{.Body = "direto"}; });
    THttpServer proxy([](const std::string&) { return THttpAnswer{.Body = "proxy"}; });
    SetVariable("http_proxy", proxy.Url(""));
    EXPECT_EQ(THttpClient(Proxy()).Get(server.Url("/a"), 100), "direto");
    EXPECT_EQ(THttpClient(Proxy(TProxyMode::System)).Get(server.Url("/b"), 100), "proxy");
    SetVariable("no_proxy", "127.0.0.1");
    EXPECT_EQ(THttpClient(Proxy(TProxyMode::System)).Get(server.Url("/c"), 100), "direto");
    EXPECT_EQ(THttpClient(Proxy(TProxyMode::Manual, proxy.Port())).Get(server.Url("/d"), 100), "proxy");
    EXPECT_THAT(server.Requests(), ElementsAre("/a", "/c"));
    EXPECT_THAT(proxy.Requests(), ElementsAre(server.Url("/b"), server.Url("/d")));
    EXPECT_THAT(Failure([&] { THttpClient{Proxy(TProxyMode::Manual)}; }),
                HasSubstr("número de porta válido"));
    SetVariable("no_proxy", {});
}

TEST_F(Update, RefusesWhatIsNotSafe) {
    THttpServer server([](const std::string& target) {
        if (target == "/volta")
            return THttpAnswer{.Status = 302, .Location = "http://127.0.0.1/outro"};
        if (target == "/grande")
            return THttpAnswer{.Body = std::string(200, 'x')};
        return THttpAnswer{.Status = 404};
    });
    const struct {
        std::string Url;
        const char* Reason;
    } cases[] = {{"http://exemplo.com.br/x", "não é https"},
                 {"http://127.0.0.1@exemplo.com.br/x", "não é https"},
                 {"ftp://127.0.0.1/x", "não é https"},
                 {"file:///etc/passwd", "não é https"},
                 {"", "não é válido"},
                 {server.Url("/volta"), "não é https"},
                 {server.Url("/grande"), "mais de 100 bytes"},
                 {server.Url("/nada"), "código 404"}};
    THttpClient client{Proxy()};
    for (const auto& c : cases)
        EXPECT_THAT(Failure([&] { client.Get(c.Url, 100); }), HasSubstr(c.Reason)) << c.Url;
    EXPECT_THAT(Failure([&] { client.Get("https://127.0.0.1:1/x", 100); }), HasSubstr("conectar"));
}

TEST_F(Update, GoesOnWhereADownloadStopped) {
    const std::string content(5000, 'z');
    for (const bool honoursRange : {true, false}) {
        std::size_t cut = 2000;
        THttpServer server([&](const std::string&) {
            THttpAnswer answer{.Body = content, .HonoursRange = honoursRange};
            answer.CutAfter = std::exchange(cut, ~0U);
            return answer;
        });
        const std::filesystem::path file = File(honoursRange ? "com" : "sem");
        THttpClient client{Proxy()};
        EXPECT_THAT(Failure([&] { client.Download(server.Url("/p"), file, content.size(), kGoOn); }),
                    HasSubstr("continuar de onde parou"));
        EXPECT_EQ(ReadTestFile(file).size(), 2000U);
        std::uint64_t last = 0;
        client.Download(server.Url("/p"), file, content.size(), [&](std::uint64_t received, std::uint64_t) {
            last = received;
            return true;
        });
        EXPECT_EQ(ReadTestFile(file), content);
        EXPECT_EQ(last, content.size());
        EXPECT_THAT(server.Requests(), Contains("/p desde 2000"));
    }
    THttpServer other([&](const std::string&) { return THttpAnswer{.Body = content}; });
    THttpClient client{Proxy()};
    EXPECT_THAT(Failure([&] { client.Download(other.Url("/p"), File("a"), 4000, kGoOn); }),
                HasSubstr("mais do que os 4000 bytes"));
    EXPECT_FALSE(std::filesystem::exists(File("a")));
    EXPECT_THAT(Failure([&] { client.Download(other.Url("/p"), File("b"), 6000, kGoOn); }),
                HasSubstr("menos do que os 6000 bytes"));
    EXPECT_THAT(Failure([&] {
                    client.Download(other.Url("/p"), File("c"), 5000,
                                    [](std::uint64_t, std::uint64_t) { return false; });
                }),
                HasSubstr("interrompido"));
    EXPECT_THROW(client.Download(other.Url("/p"), File("nenhuma/pasta"), 5000, kGoOn), EFileNotWritten);
}

TEST_F(Update, InstallsOnlyWhatIsRight) {
    std::string list;
    THttpServer server([&](const std::string& address) { // as a proxy it is asked with whole addresses
        const std::string target = address.substr(address.rfind('/'));
        return target == "/lista.json" ? THttpAnswer{.Body = list} : THttpAnswer{.Body = "pacote" + target};
    });
    const auto entry = [&](const std::string& name, const std::string& type, const std::string& sha) {
        return json{{"nome", name},  {"tipo", type},          {"versao", "1"}, {"tamanho", name.size() + 7},
                    {"sha256", sha}, {"endereco", "/" + name}};
    };
    list = json{{"pacotes",
                 {entry("bom", "schemas", Sha("pacote/bom")), entry("falso", "schemas", Sha("outro")),
                  entry("ruim", "schemas", Sha("pacote/ruim")),
                  entry("sem", "terminologia", Sha("pacote/sem"))}}}
               .dump();
    for (const bool byProxy : {false, true}) {
        const std::string base = byProxy ? "http://127.0.0.1:1" : server.Url("");
        const std::string folder = File(byProxy ? "proxy" : "direto");
        TUpdater update(base + "/lista.json", byProxy ? Proxy(TProxyMode::Manual, server.Port()) : Proxy(),
                        folder);
        std::vector<std::string> taken;
        const TPackageImporter schemas = {
            [&](const TPackage& package, const std::filesystem::path& file) {
                if (package.Name == "ruim")
                    throw EUpdate("recusado");
                taken.push_back(ReadTestFile(file));
                return std::vector<std::string>{"a.xsd"};
            },
            [](const TPackage&, const std::vector<std::string>& names) { return names.front() == "a.xsd"; }};
        const TPackageImporters importers = {{"schemas", schemas}, {"terminologia", {}}};
        const std::vector<TPackage> packages = update.List(importers);
        ASSERT_EQ(packages.size(), 4U);
        EXPECT_EQ(packages[0].Address, base + "/bom");
        const char* reasons[] = {"", "não confere com o SHA-256", "recusado", "não instala pacotes"};
        for (std::size_t i = 0; i < packages.size(); ++i)
            EXPECT_THAT(Failure([&] { update.Install(packages[i], importers, kGoOn); }),
                        HasSubstr(reasons[i]));
        EXPECT_THAT(taken, ElementsAre("pacote/bom"));
        EXPECT_TRUE(std::filesystem::is_empty(folder + "/downloads"));
        std::vector<bool> installed;
        for (const TPackage& package : update.List(importers))
            installed.push_back(package.Installed);
        EXPECT_THAT(installed, ElementsAre(true, false, false, false));
    }
    TUpdater update(server.Url("/lista.json"), Proxy(), File("dados"));
    for (const std::string bad :
         {"", "[]", "{}", R"({"pacotes": [{}]})", R"({"pacotes": 1})", R"({"pacotes": null})"}) {
        list = bad;
        EXPECT_THAT(Failure([&] { update.List({}); }), HasSubstr("não é uma lista")) << bad;
    }
    for (const auto& [key, value] :
         std::map<std::string, json>{{"sha256", "ABC"}, {"tamanho", 0}, {"nome", ""}, {"tamanho ", 0}}) {
        json package = entry("x", "schemas", Sha("x"));
        package[key] = value;
        list = json{{"pacotes", {package}}}.dump();
        EXPECT_EQ(Failure([&] { update.List({}); }).empty(), key == "tamanho ") << key;
    }
    EXPECT_THAT(Failure([&] { TUpdater("", Proxy(), File("dados")); }), HasSubstr("Endereco"));
}

TEST_F(Update, TheCommandInstallsWhatIsNotInPlace) {
    WriteZip(File("schemas.zip"), {{"tissV4_01_00.xsd", std::string(kSmallSchema)}});
    WriteZip(File("termos.zip"), {{"Tabela 22.csv", "Código do Termo;Termo\n10101012;Consulta\n"}});
    WriteZip(File("vazio.zip"), {{"leia.txt", "nada"}});
    std::vector<std::string> offered = {"schemas"};
    THttpServer server([&](const std::string& target) {
        if (target != "/lista")
            return THttpAnswer{.Body = ReadTestFile(File(target.substr(1)))};
        json packages = json::array();
        for (const std::string& name : offered) {
            const std::string bytes = ReadTestFile(File(name + ".zip"));
            packages.push_back({{"nome", name},
                                {"tipo", name == "termos" ? "terminologia" : "schemas"},
                                {"versao", "4.01.00"},
                                {"tamanho", bytes.size()},
                                {"sha256", Sha(bytes)},
                                {"endereco", name + ".zip"}});
        }
        const json notice = {{"id", "1"},
                             {"data", "2026-03-01"},
                             {"titulo", "Comunicado"},
                             {"texto", "Leia.\u001b"},
                             {"nivel", "importante"},
                             {"endereco", "https://a/b"}};
        json other = notice; // what is not built so is left out, and no other address is kept
        other.update({{"id", "2"}, {"titulo", "Outro"}, {"endereco", "file:///etc/passwd"}});
        return THttpAnswer{
            .Body = json{{"pacotes", packages}, {"avisos", {notice, other, 7, {{"id", "3"}}}}}.dump()};
    });
    const auto run = [this](const std::vector<std::string>& words) {
        const TCommandResult result = Run(words);
        return std::to_string(result.Status) + " " + result.Out + result.Err;
    };
    EXPECT_THAT(run({"atualizar"}), HasSubstr("3 conferix: erro: nenhum endereço"));
    WriteTestFile(File("Conferix.ini"), "[Atualizacao]\nEndereco = " + server.Url("/lista") + "\n");
    EXPECT_THAT(run({"atualizar", "--verificar"}), HasSubstr("disponível"));
    const std::string schema = File("dados/schemas/tiss/tissV4_01_00.xsd");
    EXPECT_FALSE(std::filesystem::exists(schema));
    EXPECT_THAT(run({"avisos"}), testing::AllOf(HasSubstr("Atualização disponível: schemas 4.01.00"),
                                                HasSubstr("01/03/2026: Comunicado\n   Leia.\\x1B\n   "
                                                          "https://a/b\n"),
                                                HasSubstr("Outro"), testing::Not(HasSubstr("passwd"))));
    EXPECT_THAT(run({"atualizar"}), HasSubstr("0 schemas 4.01.00"));
    EXPECT_TRUE(std::filesystem::exists(schema));
    EXPECT_THAT(run({"avisos"}), testing::AllOf(HasSubstr("Atualização instalada: schemas 4.01.00"),
                                                testing::Not(HasSubstr("disponível"))));
    EXPECT_THAT(run({"atualizar", "--formato", "json"}), HasSubstr("\"estado\": \"instalado\""));
    EXPECT_EQ(server.Requests().size(), 4U); // the package came once

    // What the user has removed, or does not use here, comes again.
    offered.push_back("termos");
    EXPECT_THAT(run({"atualizar"}), HasSubstr("0 schemas"));
    const struct {
        std::vector<std::string> Before;
        std::vector<std::string> Options;
        std::string Missing;
    } cases[] = {{{}, {}, ""},
                 {{"terminologia", "restaurar"}, {}, "termos"},
                 {{"esquemas", "remover", "4.01.00"}, {}, "schemas"},
                 {{}, {"--terminologia", File("outra.db")}, "termos"},
                 {{}, {"--esquemas", File("outros")}, "schemas"}};
    for (const auto& c : cases) {
        if (!c.Before.empty()) {
            EXPECT_THAT(run(c.Before), testing::StartsWith("0"));
        }
        std::vector<std::string> words = {"atualizar", "--formato", "json"};
        words.insert(words.end(), c.Options.begin(), c.Options.end());
        std::vector<std::string> looking = words;
        looking.emplace_back("--verificar");
        for (const json& package : json::parse(run(looking).substr(2)))
            EXPECT_EQ(package["estado"], package["nome"] == c.Missing ? "disponivel" : "instalado")
                << package;
        EXPECT_THAT(run(words), testing::StartsWith("0"));
        for (const json& package : json::parse(run(looking).substr(2)))
            EXPECT_EQ(package["estado"], "instalado") << package;
    }
    offered = {"vazio"};
    EXPECT_THAT(run({"atualizar"}), testing::AllOf(HasSubstr("não há schemas do padrão TISS"),
                                                   testing::Not(HasSubstr("usados: conferix"))));
    const TFileLock other(File("dados/atualizacoes.trava"), false);
    EXPECT_THAT(run({"atualizar"}), HasSubstr("outra atualização está em andamento"));
}

} // namespace
} // namespace conferix
