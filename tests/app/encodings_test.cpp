#include "app/execute_solver.h"
#include "schema_model/built_in_folders.h"
#include "support/case_file.h"
#include "support/command_test.h"
#include "xml/xml_encoding.h"

namespace conferix {
namespace {

using tests::TCase;

constexpr const char* kHash = "<ans:hash>";

/// The text of the lot with a declaration; "-" for none.
std::string Lot(const std::string& declared) {
    std::string text = ReadTestFile(Example("odonto-3.05.00-valido.xml"));
    const std::string declaration = " encoding=\"UTF-8\"";
    return text.replace(text.find(declaration), declaration.size(),
                        declared == "-" ? "" : " encoding=\"" + declared + "\"");
}

/// Letters up to U+00FF, in one byte each.
std::string Latin1(const std::string& utf8) {
    std::string bytes;
    for (std::size_t at = 0; at < utf8.size(); ++at) {
        const auto byte = static_cast<unsigned char>(utf8[at]);
        bytes += byte < 0xC0 ? utf8[at] : static_cast<char>(byte << 6 | (utf8[++at] & 0x3F));
    }
    return bytes;
}

std::string Written(const std::string& text, const std::string& encoding) {
    if (encoding.starts_with("BOM "))
        return "\xEF\xBB\xBF" + Written(text, encoding.substr(4));
    const std::size_t last = text.rfind('\xC3');
    if (encoding == "UTF-8 sem a última letra")
        return text.substr(0, last) + Latin1(text.substr(last, 2)) + text.substr(last + 2);
    if (encoding == "ISO-8859-1 com a última letra em UTF-8")
        return Latin1(text.substr(0, last)) + text.substr(last, 2) + Latin1(text.substr(last + 2));
    return encoding == "ISO-8859-1" ? Latin1(text) : text;
}

class Encodings : public TCommandTest {
  protected:
    Encodings() {
        options_ = {"--terminologia", CONFERIX_TUSS_DB, "--esquemas", BuiltInSchemaFolder().string()};
    }

    /// The first message of a file, where it is one of its encoding, and what that offers.
    std::vector<std::string> Told(const std::string& bytes) const {
        const auto message = ValidateBytes(bytes)["mensagens"][0];
        if (message["validacao"] != "" || message["tipo"] == "mtSuccess")
            return {};
        std::vector<std::string> told = {(message["tipo"] == "mtError" ? "erro: " : "aviso: ") +
                                         message["motivo"].get<std::string>()};
        for (const auto& correction : message["correcoes"])
            told.push_back(correction["descricao"]);
        return told;
    }
    std::string Corrected(const std::string& bytes, std::vector<std::string> words) const {
        words.insert(words.begin(), {"corrigir", "-"});
        return Run(words, bytes).Out;
    }
};

/// The text behind the declaration.
std::string Content(const std::string& bytes) {
    const std::string text = DecodeXml(bytes).Text;
    return text.substr(text.find("?>"));
}

TEST_F(Encodings, AreToldFirstAndMended) {
    for (const TCase& c : tests::Cases("app/cases/encodings.casos")) {
        const auto& [declared, encoding] = c.Inputs.front();
        const std::string text = Lot(declared);
        const std::string bytes = Written(text, encoding);
        ExpectLines(c, Told(bytes));
        for (std::size_t i = 1; i < c.Expected.size(); ++i) {
            const std::string after = Corrected(bytes, {"--mensagem", "1", "--correcao", std::to_string(i)});
            EXPECT_EQ(Content(after), text.substr(text.find("?>"))) << c << c.Expected[i];
            EXPECT_TRUE(Told(after).empty()) << c << c.Expected[i];
            const bool iso = c.Expected[i].find("ISO") != std::string::npos;
            EXPECT_EQ(DeclaredEncoding(after), iso ? "ISO-8859-1" : "UTF-8") << c;
        }
        for (const std::string target : {"ISO-8859-1", "UTF-8"})
            EXPECT_EQ(Corrected(bytes, {"--codificacao", target}), Written(Lot(target), target))
                << c << target;
    }
}

TEST_F(Encodings, KeepTheHashOfTextsThatWereMisread) {
    std::string text = Lot("ISO-8859-1");
    text.replace(text.find(kHash) + std::string(kHash).size(), 4, "0000");
    const TCommandResult all = Run({"corrigir", "-", "--todas"}, text);
    EXPECT_EQ(all.Out, text);
    EXPECT_NE(all.Err.find("corrija antes a codificação"), std::string::npos) << all.Err;
    EXPECT_NE(Run({"corrigir", "-", "--mensagem", "2", "--simular"}, text)
                  .Err.find("aviso: -: o arquivo foi gravado em outra codificação"),
              std::string::npos);
    // Nothing is read of a text behind an empty line, but its encoding can be mended.
    EXPECT_EQ(Corrected("\n" + text, {"--mensagem", "1"}), text);
    EXPECT_EQ(Corrected("\n" + text, {"--mensagem", "2"}), "\n" + Latin1(text));
    std::string utf8 = text;
    utf8.replace(utf8.find("ISO-8859-1"), 10, "UTF-8");
    EXPECT_EQ(Corrected("\n" + text, {"--codificacao", "UTF-8"}), utf8);
    // With the encoding mended first, it is the hash of the text that was meant.
    EXPECT_EQ(Corrected(text, {"--codificacao", "ISO-8859-1", "--todas"}), Latin1(Lot("ISO-8859-1")));
}

TEST_F(Encodings, ListTheCharactersThatTheyLack) {
    std::string text = Lot("UTF-8");
    text.replace(text.find("CLÍNICA"), 8, "CLÍNICA –");
    const std::string told = "[Linha: 49] O caractere \"–\" em <nomeProfExec> não existe na codificação "
                             "ISO-8859-1; no lugar dele fica &#8211;.";
    const std::vector<std::string> words = {"corrigir", "-", "--codificacao", "ISO-8859-1"};
    const TCommandResult result = Run(words, text);
    EXPECT_NE(result.Err.find(told), std::string::npos) << result.Err;
    EXPECT_NE(result.Out.find(Latin1("CLÍNICA &#8211;")), std::string::npos);
    // Where no reference can stand, nothing is written, and all of them are told.
    text.replace(text.rfind("</"), 2, "<!-- → “ --></");
    const TCommandResult refused = Run(words, text);
    EXPECT_EQ(refused.Out, "");
    for (const std::string& place :
         {told, std::string("\"→\", em um comentário,"), std::string("\"“\", em um")})
        EXPECT_NE(refused.Err.find(place), std::string::npos) << refused.Err;
}

} // namespace
} // namespace conferix
