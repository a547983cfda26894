#include "data/tuss_connection.h"
#include "platform/utf8.h"
#include "report/report_writer.h"
#include "report/xml_excerpt.h"
#include "schema_model/built_in_folders.h"
#include "support/support.h"
#include "validation/validation_message.h"
#include "validator/rule_list.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <regex>
#include <set>
#include <sstream>

namespace conferix::tests {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

/// "[…]12: before[marked]after[…]", a line a line.
std::string Described(const std::vector<TExcerptLine>& lines) {
    std::string text;
    for (const TExcerptLine& line : lines)
        text += fmt::format("{}{}: {}{}{}{}\n", line.CutBefore ? "…" : "", line.Number, line.Before,
                            line.Marked.empty() ? "" : fmt::format("[{}]", line.Marked), line.After,
                            line.CutAfter ? "…" : "");
    return text;
}

TEST(XmlExcerpts, ShowTheLineOfAFindingAndItsNeighbours) {
    const std::string eighty(80, 'x');
    const std::string twice = eighty + eighty;
    std::string accents;
    for (int i = 0; i < 5000; ++i)
        accents += "ç";
    struct TRow {
        std::string Text; ///< "|" stands before what the finding is about
        std::int32_t Line;
        std::string Expected;
    };
    const TRow rows[] = {
        {"<a>\n  |<b>1</b><c/>\n</a>", 2, "1: <a>\n2:   [<b>1</b>]<c/>\n3: </a>\n"},
        {"|<a/>", 1, "1: [<a/>]\n"},
        {"1\r\n2\r\n3\r\n|<a x='1'>\r\n5\r\n6\r\n7", 4, "2: 2\n3: 3\n4: [<a x='1'>]\n5: 5\n6: 6\n"},
        {"1\r2\r|<a\r4", 3, "1: 1\n2: 2\n3: [<a]\n4: 4\n"},
        {"\n\n\n|<a>\n\n\n\n", 4, "2: \n3: \n4: [<a>]\n5: \n6: \n"},
        {accents + "\n|é <a>\n", 2, "…1: " + accents.substr(0, 160) + "\n2: [é] <a>\n"},
        // Of a file in one line only the neighbourhood is shown.
        {twice + "|<b>1</b>" + twice + twice, 1,
         "…1: " + eighty + "[<b>1</b>]" + std::string(152, 'x') + "…\n"},
        {"<a>\n<b/>|", 2, ""}, // the end of the text
    };
    for (const TRow& row : rows) {
        std::string text = row.Text;
        const std::size_t at = text.find('|');
        text.erase(at, 1);
        const auto position =
            static_cast<std::int32_t>(CountCharacters(std::string_view(text).substr(0, at)));
        const TXmlMessage message(TMessageType::mtError, "", "", row.Line, 1, position);
        EXPECT_EQ(Described(TXmlExcerpts(text).Around(message)), row.Expected) << row.Text.substr(0, 60);
    }
    EXPECT_TRUE(TXmlExcerpts("<a/>").Around(TXmlMessage(TMessageType::mtError, "")).empty());
}

std::string Report(const std::vector<TFileResult>& files, const TReportOptions& options = {}) {
    const auto writer = NewReportWriter("html", options);
    std::ostringstream out;
    TReportTotals totals(false);
    writer->Begin(out);
    for (const TFileResult& file : files) {
        const TFileSummary summary(file);
        totals.Add(summary);
        writer->AddFile(out, summary, writer->FileText(file));
    }
    writer->End(out, totals);
    return out.str();
}

/// What any document has to keep: tags that close, names that are there once and are led to, nothing from
/// outside.
void ExpectSound(const std::string& html) {
    static const std::set<std::string> kVoid = {"meta", "br"};
    std::vector<std::string> open;
    std::set<std::string> ids;
    std::set<std::string> targets;
    const std::regex tag("<(/?)([a-z0-9]+)([^>]*)>");
    const std::regex id(" id=\"([^\"]*)\"");
    const std::regex target(" href=\"([^\"]*)\"");
    for (std::sregex_iterator at(html.begin(), html.end(), tag), end; at != end; ++at) {
        const std::string name = (*at)[2];
        const std::string attributes = (*at)[3];
        if ((*at)[1].length() != 0) {
            ASSERT_FALSE(open.empty()) << name;
            ASSERT_EQ(open.back(), name) << html.substr(static_cast<std::size_t>(at->position()), 200);
            open.pop_back();
        } else if (!kVoid.contains(name)) {
            open.push_back(name);
        }
        std::smatch found;
        if (std::regex_search(attributes, found, id)) {
            EXPECT_TRUE(ids.insert(found[1]).second) << found[1];
        }
        if (std::regex_search(attributes, found, target))
            targets.insert(found[1]);
    }
    EXPECT_THAT(open, testing::IsEmpty());
    for (const std::string& name : targets)
        EXPECT_TRUE(name.starts_with("#") && ids.contains(name.substr(1))) << name;
    EXPECT_THAT(html, AllOf(Not(HasSubstr("src=")), Not(HasSubstr("url(")), Not(HasSubstr("<script"))));
}

std::string Between(const std::string& text, std::string_view begin, std::string_view end) {
    const std::size_t at = text.find(begin);
    return at == std::string::npos ? "" : text.substr(at, text.find(end, at) - at);
}

TEST(HtmlReport, TellsOfEveryExampleWhatWasFound) {
    std::vector<std::string> enabled;
    for (const TListedRule& rule : ListRules())
        enabled.push_back(rule.Rule->Name);
    TFileValidator validator(TSchemaFolder(BuiltInSchemaFolder()),
                             TDBConnectionFactory([] { return TTussConnection::InMemory(); }), enabled);
    std::vector<TFileResult> files;
    for (const auto& entry : std::filesystem::directory_iterator(Example("")))
        if (entry.path().extension() == ".xml")
            files.push_back(validator.ValidateFile(entry.path().string()));
    ASSERT_GT(files.size(), 20U);
    for (const bool all : {false, true}) {
        const TReportOptions options{.Todas = all, .Nivel = {}, .Detalhar = all};
        ExpectSound(Report(files, options));
        for (const TFileResult& file : files)
            ExpectSound(Report({file}, options));
    }

    const auto example = [&](std::string_view name) {
        return *std::ranges::find_if(
            files, [&](const TFileResult& file) { return file.Validation.FileName.ends_with(name); });
    };
    const std::string report = Report({example("spsadt-3.05.00-itens-errados.xml")});
    EXPECT_THAT(report, AllOf(HasSubstr("✗ Inválido: 12 erros e 2 avisos"), HasSubstr("<dd>3.05.00</dd>"),
                              HasSubstr("<dd>CLINICA DE TESTE</dd>"), Not(HasSubstr("id=\"indice\""))));
    const std::string quantity = Between(report, "Valor encontrado: 0.</p>", "</article>");
    EXPECT_THAT(
        quantity,
        AllOf(HasSubstr("Linha 82, coluna 15"),
              HasSubstr("<mark>&lt;ans:quantidadeExecutada&gt;0&lt;/ans:quantidadeExecutada&gt;</mark>"),
              HasSubstr("Escreva quantas vezes o procedimento foi feito")));
    // What concerns the run is told apart, though a guide met it first; what is of one cause, once.
    EXPECT_THAT(Between(report, "Sobre esta conferência", "</section>"), HasSubstr("A tabela 22 da TUSS"));
    EXPECT_THAT(report, HasSubstr("2 vezes: linhas 85, 98."));
    EXPECT_THAT(
        Between(Report({example("monitoramento-1.06.00-com-erros.xml")}), "Em várias guias", "</section>"),
        HasSubstr("<strong>2 guias</strong>: guia 80000001 (linha 50), guia 80000004 (linha 330)."));
    // The name of a rule stands in a tooltip and in the appendix.
    EXPECT_THAT(Between(report, "<main>", "Apêndice"),
                AllOf(HasSubstr("title=\"tiss.mensagem.loteguias.spsadt.procedimento.quantidade\""),
                      Not(HasSubstr(">tiss."))));
    EXPECT_THAT(Between(report, "Apêndice", "</main>"),
                HasSubstr("<code>tiss.mensagem.loteguias.spsadt.procedimento.quantidade</code>"));
    const std::string batch =
        Report({example("odonto-3.05.00-valido.xml"), UnreadableFile("x.xml", "não existe")});
    EXPECT_THAT(batch,
                AllOf(HasSubstr("2 arquivos: 1 válido, 0 inválidos, 1 não verificado."),
                      HasSubstr("<a href=\"#arquivo-2\">x.xml</a></td><td class=\"naoverificado\">? Não "
                                "verificado"),
                      HasSubstr("não existe")));
}

TEST(HtmlReport, LetsNothingOfAFileActAndIsBounded) {
    TFileResult file;
    file.Validation.FileName = "<script>\"&'\xFF.xml";
    file.Text = std::make_shared<const std::string>("<a onclick=\"x()\">\x1B[2J</a>\n");
    for (int i = 0; i < 400; ++i) {
        file.Validation.ValidationMessages.push_back(std::make_shared<TXmlMessage>(
            TMessageType::mtError,
            fmt::format("<img> \u202E {}\r\nfim",
                        static_cast<char>('a' + i % 26) + std::string(static_cast<std::size_t>(i), 'z')),
            "", 1, 1, 0));
        file.Validation.Counts.Add(TMessageType::mtError);
    }
    const std::string report = Report({file});
    ExpectSound(report);
    EXPECT_THAT(report, AllOf(HasSubstr("&lt;script&gt;&quot;&amp;'\\xFF.xml"),
                              HasSubstr("&lt;img&gt; \\u202E a<br>fim"), HasSubstr("\\x1B[2J"),
                              Not(HasSubstr("\x1B")), HasSubstr("✗ Inválido: 400 erros"),
                              HasSubstr("Mais 100 mensagens deste arquivo não estão neste relatório.")));
}

} // namespace
} // namespace conferix::tests
