#include "rules/findings.h"
#include "support/case_file.h"
#include "support/support.h"
#include "validation/hash_calculator.h"
#include "validation/xml_sanitizer.h"

namespace conferix::tests {
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
const std::string kJoaoPlain = "355cd82ab5ba535cd9b5f37713503111";

std::string Digest(const std::string& xml, THashEncoding encoding) {
    const TXmlParseResult parsed = TXmlParser::Parse(xml);
    return THashCalculator::Calculate(*parsed.Document, encoding);
}

TEST(HashRule, SaysWhatTheCasesHold) {
    for (const TCase& c : Cases("validation/hash.casos")) {
        std::string xml = c.Section;
        for (const std::string& text : {c.Inputs.front().first, c.Inputs.front().second})
            xml.replace(xml.find("{}"), 2, text);
        const auto file = LoadTiss(xml);
        std::vector<std::string> found;
        for (const auto& message : Mensagens("tiss.mensagem.hash", *file, nullptr))
            found.push_back(message->Place() + " " + Descrito(*message));
        ExpectLines(c, found);
        const THashes both = THashCalculator::CalculateBoth(*file->Xml());
        EXPECT_EQ(both.Iso88591, THashCalculator::Calculate(*file->Xml(), THashEncoding::Iso88591));
        EXPECT_EQ(both.Utf8, THashCalculator::Calculate(*file->Xml(), THashEncoding::Utf8));
    }
}

TEST(HashSolvers, WriteTheHashAndNothingElse) {
    const std::string before = Message(" João\t", Epilogue(""));
    const std::string after[] = {
        Message(" João\t", Epilogue(Digest(before, THashEncoding::Iso88591))),
        Message(" João\t", Epilogue(Digest(before, THashEncoding::Utf8))),
        Message("Joao", Epilogue(kJoaoPlain)),
    };
    // The rules are gone when a correction is applied.
    const auto solved = [](const std::string& xml, std::size_t solver) {
        return Mensagens("tiss.mensagem.hash", *LoadTiss(xml), nullptr)
            .front()
            ->Solvers()
            .at(solver)
            ->SolvedXml();
    };
    for (std::size_t solver = 0; solver < 3; ++solver)
        EXPECT_EQ(solved(before, solver), after[solver]);
    // A comment stays; a CDATA section would be read as a part of the hash.
    EXPECT_EQ(solved(Message("abc", Epilogue("<!-- c -->0<![CDATA[1]]>")), 0),
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
} // namespace conferix::tests
