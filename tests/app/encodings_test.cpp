#include "app/execute_solver.h"
#include "schema_model/built_in_folders.h"
#include "support/case_file.h"
#include "support/command_test.h"
#include "validation/hash_calculator.h"
#include "xml/xml_encoding.h"
#include "xml/xml_parser.h"

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

/// What becomes of bytes that are read as ISO-8859-1 and written in UTF-8.
std::string OnceMore(const std::string& bytes) {
    std::string twice;
    for (const char c : bytes)
        if (const auto byte = static_cast<unsigned char>(c); byte < 0x80)
            twice += c;
        else
            twice += {static_cast<char>(0xC0 | byte >> 6), static_cast<char>(0x80 | (byte & 0x3F))};
    return twice;
}

std::string Written(const std::string& text, const std::string& encoding) {
    if (encoding.starts_with("BOM "))
        return "\xEF\xBB\xBF" + Written(text, encoding.substr(4));
    const std::size_t last = text.rfind('\xC3');
    if (encoding == "UTF-8 sem a última letra")
        return text.substr(0, last) + Latin1(text.substr(last, 2)) + text.substr(last + 2);
    if (encoding == "ISO-8859-1 com a última letra em UTF-8")
        return Latin1(text.substr(0, last)) + text.substr(last, 2) + Latin1(text.substr(last + 2));
    if (encoding == "UTF-8, as últimas letras duas vezes")
        return text.substr(0, last) + OnceMore(text.substr(last));
    if (encoding == "UTF-8 duas vezes")
        return OnceMore(text);
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
            std::string named = declared;
            for (const char* name : {"macintosh", "UTF-8", "ISO-8859-1", "ISO-8859-15"})
                named = c.Expected[i].find(name) != std::string::npos ? name : named;
            EXPECT_EQ(DeclaredEncoding(DecodeXml(after).Text), named) << c << c.Expected[i];
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
                  .Err.find("aviso: -: o texto do arquivo não se lê como foi escrito"),
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

TEST_F(Encodings, JudgeTheHashByTheTextThatWasMeant) {
    const std::string text = Lot("ISO-8859-1");
    const auto ofMeant = Run({"hash", "-", "--formato", "json"}, text);
    const nlohmann::json hashes = nlohmann::json::parse(ofMeant.Out);
    EXPECT_NE(ofMeant.Err.find("foi gravado em UTF-8"), std::string::npos) << ofMeant.Err;
    const auto document = TXmlParser::Parse(DecodeXml(text).Text).Document;
    const std::string iso = hashes["iso88591"];
    const std::string utf8 = hashes["utf8"];
    const std::string then = "Corrija a codificação, que a primeira mensagem aponta; depois o esperado é \"" +
                             iso + "\" (recomendado) ou \"" + utf8 + "\" (UTF-8).";
    const struct {
        std::string Hash;
        const char* Type;
        std::string Told;
    } cases[] = {{iso, "mtError",
                  "confere com o texto certo, mas não com o texto como se lê agora. Corrija a codificação, "
                  "que a primeira "
                  "mensagem aponta, e deixe o hash como está."},
                 {utf8, "mtWarning",
                  "confere com o texto certo, calculado em UTF-8. Corrija a codificação, que a primeira "
                  "mensagem aponta; "
                  "depois o padrão TISS (ISO-8859-1) espera \"" +
                      iso + "\"."},
                 {THashCalculator::Calculate(*document, THashEncoding::Utf8), "mtWarning",
                  "confere com o texto como se lê agora, mas não com o texto certo. " + then},
                 {"00", "mtError", "está inválido. " + then}};
    for (const auto& c : cases) {
        std::string other = text;
        const std::size_t at = other.find(kHash) + std::string(kHash).size();
        other.replace(at, other.find('<', at) - at, c.Hash);
        const auto message = ValidateBytes(other)["mensagens"][1];
        EXPECT_EQ(message["tipo"], c.Type);
        EXPECT_EQ(message["motivo"], "O hash \"" + c.Hash + "\" informado no arquivo " + c.Told);
    }
}

TEST_F(Encodings, HashReadsWhatAValidationReads) {
    const std::string text = Lot("UTF-16");
    const TCommandResult told = Run({"hash", "-"}, text);
    EXPECT_EQ(told.Status, kExitInvalid);
    EXPECT_NE(told.Err.find("não está gravado nela"), std::string::npos) << told.Err;
    EXPECT_NE(told.Out.find("O hash informado no arquivo está válido"), std::string::npos) << told.Out;
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
    // The correction that a message offers says the same.
    std::string misread = Lot("ISO-8859-1");
    misread.replace(misread.find("CLÍNICA"), 8, "CLÍNICA –");
    EXPECT_EQ(Told(misread)[1],
              "Gravar o arquivo em ISO-8859-1 (ficam como referências, por não existirem nessa "
              "codificação: \"–\" na linha 49)");
    misread.replace(misread.rfind("</"), 2, "<!-- → --></");
    EXPECT_NE(
        Told(misread)[0].find("Em ISO-8859-1 não pode ser gravado, por ter o que não existe nela, onde não "
                              "cabe uma referência: \"→\" na linha "),
        std::string::npos);
    EXPECT_EQ(Told(misread)[1], "Declarar UTF-8");
    // As is each word that was misread, and one that may be meant as it reads stays beside others.
    std::string partly = Latin1(Lot("ISO-8859-1"));
    const std::size_t at = partly.find("CL\xCDNICA");
    partly.replace(at, 7, "IRM\xC3\xA0S AÇÃO");
    const TCommandResult mended = Run(words, partly);
    EXPECT_EQ(mended.Err.substr(0, mended.Err.find('\n')), "  [Linha: 49] \"AÃ‡ÃƒO\" passa a \"AÇÃO\".");
    EXPECT_NE(mended.Out.find("IRM\xC3\xA0S A\xC7\xC3O"), std::string::npos);
    // Words without what marks a section; many of them are counted, unless all are asked for.
    std::string many = Lot("ISO-8859-1");
    for (int i = 0; i < 30; ++i)
        many.insert(many.rfind("</"), "<!--é" + std::to_string(i) + "--><![CDATA[ã]]>");
    const TCommandResult first = Run({"corrigir", "-", "--codificacao", "UTF-8"}, many);
    EXPECT_NE(first.Err.find("vezes: \"Ã£\" passa a \"ã\"."), std::string::npos) << first.Err;
    EXPECT_NE(first.Err.find("mudanças como essas; --detalhar mostra todas."), std::string::npos)
        << first.Err;
    EXPECT_EQ(first.Err.find("\"Ã©29\""), std::string::npos);
    EXPECT_NE(
        Run({"corrigir", "-", "--codificacao", "UTF-8", "--detalhar"}, many).Err.find("\"Ã©29\" passa a"),
        std::string::npos);
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
