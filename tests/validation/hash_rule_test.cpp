#include "support/support.h"
#include "validation/hash_rule.h"
#include "validation/xml_sanitizer.h"
#include "xml/xml_writer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace conferix {
namespace {

/// A message whose hash text is "3.05.00" and the value of one element.
std::string Message(const std::string& value, const std::string& epilogue) {
    return "<ans:mensagemTISS "
           "xmlns:ans=\"u\"><ans:cabecalho><ans:Padrao>3.05.00</ans:Padrao></ans:cabecalho>\n"
           "<ans:x>" +
           value + "</ans:x>\n" + epilogue + "</ans:mensagemTISS>";
}

std::string Epilogue(const std::string& hash) {
    return "<ans:epilogo>\n  <ans:hash>" + hash + "</ans:hash></ans:epilogo>";
}

// MD5 of "3.05.00" with a value after it, by the md5sum command.
const std::string kAbc = "150efe8296f9192f0e4801ae94d43ea4";
const std::string k123 = "a680ad9247da485c010cf9a671966dec";
const std::string kJoaoIso = "054cbb262e5dbcfb6dc62e46712d8d21";
const std::string kJoaoUtf8 = "c6ff8a14329c8afbb26806e0c1f9e001";
const std::string kJoaoPlain = "355cd82ab5ba535cd9b5f37713503111";
const std::string kQuestionMark = "c84f3e209a20192f9299b93f8fa90425";
const std::string kArrowUtf8 = "4afb3e0c337458d91c23f58f40c60fce";
const std::string kZeros(32, '0');

std::string Digest(const std::string& xml, THashEncoding encoding) {
    const TXmlParseResult parsed = TXmlParser::Parse(xml);
    return THashCalculator::Calculate(*parsed.Document, encoding);
}

TEST(HashCalculator, TakesElementValuesBeforeTheEpilogueOnly) {
    const struct {
        std::string Xml;
        std::string Iso;
        std::string Utf8;
    } cases[] = {
        {Message("abc", Epilogue("x")), kAbc, kAbc},
        {Message("12", "<ans:y>3</ans:y>" + Epilogue("x")), k123, k123},
        {Message("1", "<y>23</y><epilogo/><z>depois</z>"), k123, k123},
        {Message("<!--c--><?p i?>123<![CDATA[cdata]]>", Epilogue("")), k123, k123},
        {Message("<y a='atributo'>\n <z>123</z>\n</y>", Epilogue("")), k123, k123},
        {Message("texto solto<y/><z>123</z>", Epilogue("")), k123, k123},
        {Message("João", Epilogue("")), kJoaoIso, kJoaoUtf8},
        {Message("&#8594;", Epilogue("")), kQuestionMark, kArrowUtf8},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Digest(c.Xml, THashEncoding::Iso88591), c.Iso) << c.Xml;
        EXPECT_EQ(Digest(c.Xml, THashEncoding::Utf8), c.Utf8) << c.Xml;
    }
}

struct THashCase {
    const char* Name;
    std::string Xml;
    TMessageType Type;
    std::string Reason;
    std::vector<std::string> Solvers;
    std::int32_t Line;
};

TEST(HashRule, TellsWhichEncodingTheHashMatches) {
    const auto invalid = [](const std::string& found, const std::string& expected) {
        return "O hash \"" + found + "\" informado no arquivo está inválido. O esperado é \"" + expected +
               "\".";
    };
    const auto invalidBoth = [](const std::string& found) {
        return "O hash \"" + found + "\" informado no arquivo está inválido. O esperado é \"" + kJoaoIso +
               "\" (recomendado) ou \"" + kJoaoUtf8 + "\" (UTF-8).";
    };
    const std::string upper = "150EFE8296F9192F0E4801AE94D43EA4";
    const std::vector<THashCase> cases = {
        {"right",
         Message("abc", Epilogue(kAbc)),
         TMessageType::mtSuccess,
         "O hash \"" + kAbc + "\" informado no arquivo está válido.",
         {},
         4},
        {"right in capitals",
         Message("abc", Epilogue(upper)),
         TMessageType::mtSuccess,
         "O hash \"" + upper + "\" informado no arquivo está válido.",
         {},
         4},
        {"wrong",
         Message("abc", Epilogue(kZeros)),
         TMessageType::mtError,
         invalid(kZeros, kAbc),
         {"THashSolver_ISO88591"},
         4},
        {"too short and with blanks",
         Message("abc", Epilogue(" " + kAbc + " ")),
         TMessageType::mtError,
         invalid(" " + kAbc + " ", kAbc),
         {"THashSolver_ISO88591"},
         4},
        {"empty",
         Message("abc", Epilogue("")),
         TMessageType::mtError,
         invalid("", kAbc),
         {"THashSolver_ISO88591"},
         4},
        {"no hash element",
         Message("abc", "<ans:epilogo/>"),
         TMessageType::mtError,
         invalid("", kAbc),
         {},
         3},
        {"no epilogue", Message("abc", ""), TMessageType::mtError, invalid("", kAbc), {}, 1},
        {"ISO-8859-1",
         Message("João", Epilogue(kJoaoIso)),
         TMessageType::mtInformation,
         "O hash informado no arquivo está válido e de acordo com a codificação padronizada pelo TISS/ANS "
         "(ISO-8859-1). "
         "Entretanto, algumas operadoras podem calculá-lo utilizando uma outra codificação (UTF-8) e recusar "
         "o seu "
         "arquivo. Caso isso ocorra, altere o hash do arquivo para \"" +
             kJoaoUtf8 +
             "\" ou então faça a sanitização do XML para diminuir as possibilidades de divergência.",
         {"THashSolver_UTF8", "TSanitizeHashSolver"},
         4},
        {"UTF-8",
         Message("João", Epilogue(kJoaoUtf8)),
         TMessageType::mtWarning,
         "O hash informado no arquivo está válido, porém utilizando a codificação UTF-8. O padrão TISS "
         "orienta que o "
         "cálculo seja feito utilizando-se a codificação ISO-8859-1. Portanto, caso a operadora recuse o seu "
         "arquivo, "
         "altere o Hash para \"" +
             kJoaoIso +
             "\" ou então faça a sanitização do XML para diminuir as possibilidades de divergência.",
         {"THashSolver_ISO88591", "TSanitizeHashSolver"},
         4},
        {"neither",
         Message("João", Epilogue(kAbc)),
         TMessageType::mtError,
         invalidBoth(kAbc),
         {"THashSolver_ISO88591", "THashSolver_UTF8", "TSanitizeHashSolver"},
         4},
        {"neither, nowhere to write it", Message("João", ""), TMessageType::mtError, invalidBoth(""), {}, 1},
    };
    for (const THashCase& c : cases) {
        const auto rule = MakeValidation<TMensagemTissHashValidation>();
        LoadTiss(c.Xml)->Accept(*rule);
        ASSERT_EQ(rule->ValidationMessages().size(), 1U) << c.Name;
        const TValidationMessage& message = *rule->ValidationMessages().front();
        EXPECT_EQ(message.MsgType(), c.Type) << c.Name;
        EXPECT_EQ(message.Reason(), c.Reason) << c.Name;
        EXPECT_EQ(message.Line(), c.Line) << c.Name;
        EXPECT_EQ(message.Validation().Name, "tiss.mensagem.hash");
        std::vector<std::string> names;
        for (const auto& solver : message.Solvers())
            names.push_back(solver->Name());
        EXPECT_EQ(names, c.Solvers) << c.Name;
    }
}

TEST(HashSolvers, WriteTheHashAndNothingElse) {
    const std::string before = Message(" João\t", Epilogue(""));
    const struct {
        std::size_t Solver;
        const char* Description;
        std::string After;
    } cases[] = {
        {0, "Corrigir Hash com codificação ISO-8859-1 (recomendado)",
         Message(" João\t", Epilogue(Digest(before, THashEncoding::Iso88591)))},
        {1, "Corrigir Hash com codificação UTF-8",
         Message(" João\t", Epilogue(Digest(before, THashEncoding::Utf8)))},
        {2,
         "Sanitizar o XML e corrigir Hash. \r\nO processo de sanitização irá remover espaços em branco no "
         "início e fim "
         "do conteúdo das tags, caracteres invisíveis (CR, LF, tabs, etc) e os acentos dos caracteres.",
         Message("Joao", Epilogue(kJoaoPlain))},
    };
    for (const auto& c : cases) {
        // The validator and its rules are gone when the correction is applied.
        std::shared_ptr<const TValidationMessage> message;
        {
            const auto rule = MakeValidation<TMensagemTissHashValidation>();
            LoadTiss(before)->Accept(*rule);
            message = rule->ValidationMessages().front();
        }
        ASSERT_EQ(message->Solvers().size(), 3U);
        EXPECT_EQ(message->Solvers()[c.Solver]->Description(), c.Description);
        EXPECT_EQ(message->Solvers()[c.Solver]->SolvedXml(), c.After);
    }
    // A comment stays; a CDATA section would be read as a part of the hash.
    const auto rule = MakeValidation<TMensagemTissHashValidation>();
    LoadTiss(Message("abc", Epilogue("<!-- c -->0<![CDATA[1]]>")))->Accept(*rule);
    EXPECT_EQ(rule->ValidationMessages().front()->Solvers().front()->SolvedXml(),
              Message("abc", Epilogue("<!-- c -->" + kAbc)));
}

TEST(XmlSanitizer, CleansValues) {
    const struct {
        std::string Value;
        const char* Clean;
    } cases[] = {
        {"  João\tda\r\nSilva  ", "Joaoda Silva"},
        {"a\rb\nc\r\n\r\nd", "a b c  d"},
        {std::string("\x01x\x1Fy\x0B\x0Cz"), "xyz"},
        {"\t \r\n", ""},
        {"ÁÀÂÃÄÅÇÉÊÍÑÓÔÕÖÚÜÝáàâãäåçéêíñóôõöúüýÿ", "AAAAAACEEINOOOOUUYaaaaaaceeinoooouuyy"},
        {"n\u00BA 1\u00AA \u2013 \u201Caspas\u201D \u2026", "no 1a - \"aspas\" ."},
        {"\u0141\u00F8\u00C6\u0160\u017E \uFF21", "LoASz A"},
        {"Joa\u0303o", "Joao"}, // the accent as a character of its own
        {"\u20AC\u4E2D\U0001F600\u2192", "????"},
        {"\u0303x", "?x"},
        {"sem mudança?", "sem mudanca?"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(TXmlSanitizer::SanitizeNodeValue(c.Value), c.Clean) << c.Value;
    EXPECT_EQ(TXmlSanitizer::SanitizeXml(
                  "<a>\n <b> é </b><!-- é --><c d='é'>x</c><e> ã<![CDATA[ é ]]></e>"
                  "<f> <!-- é --> ó\n<![CDATA[ é ]]> ú <?p é?>\t</f><g><![CDATA[é]]></g>\n</a>"),
              "<a>\n <b>e</b><!-- é --><c d='é'>x</c><e>a<![CDATA[ é ]]></e>"
              "<f><!-- é -->o <![CDATA[ é ]]> u<?p é?></f><g><![CDATA[é]]></g>\n</a>");
    EXPECT_EQ(TXmlSanitizer::SanitizeXml("<a>é"), "<a>é");
}

} // namespace
} // namespace conferix
