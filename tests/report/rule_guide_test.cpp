#include "report/rule_guide.h"

#include "data/tuss_writer.h"
#include "report/rule_texts.h"
#include "schema_model/built_in_folders.h"
#include "support/support.h"
#include "validator/all_rules.h"
#include "validator/rule_list.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <regex>

namespace conferix::tests {
namespace {

TEST(RuleGuide, EveryRuleHasOneTextWithAllItsSections) {
    const TRuleGuide& guide = TRuleGuide::Instance();
    const std::vector<TListedRule> rules = ListRules();
    std::multiset<std::string> expected;
    std::multiset<std::string> explained;
    for (std::size_t i = 0; i < rules.size(); ++i) {
        const std::string& name = rules[i].Rule->Name;
        expected.insert(name);
        const TRuleText* text = guide.Find(name);
        ASSERT_NE(text, nullptr) << name;
        EXPECT_FALSE(text->Family.empty() || text->Title.empty() || text->ShortText.empty()) << name;
        std::vector<std::string> titles;
        for (const TGuideSection& section : text->Sections) {
            titles.push_back(section.Title);
            EXPECT_FALSE(section.Blocks.empty()) << name;
        }
        std::vector<std::string_view> wanted = {kGuideChecked, kGuideExample, kGuideMend, kGuideWhere};
        if (text->Section(kGuideWhere) != nullptr &&
            text->Section(kGuideWhere)->Blocks.front().Text.starts_with("Nenhuma versão"))
            wanted.erase(wanted.begin() + 1); // nothing fails
        if (EndOfGroup(rules, i) != i + 1 || name == "tiss.mensagem.loteguias.odonto")
            wanted = {kGuideWhere};
        EXPECT_THAT(titles, testing::ElementsAreArray(wanted)) << name;
    }
    for (const TRuleText& text : guide.Texts()) {
        explained.insert(text.Rules.begin(), text.Rules.end());
        // What it writes reads as what it read.
        const std::string markdown = text.Markdown();
        const std::string_view file = markdown;
        const TRuleGuide again(std::span(&file, 1));
        ASSERT_EQ(again.Texts().size(), 1U) << text.Title;
        EXPECT_EQ(again.Texts().front().Markdown(), markdown);
        EXPECT_EQ(again.Texts().front().PlainText(), text.PlainText());
    }
    EXPECT_EQ(explained, expected);
    const std::filesystem::directory_iterator files(std::filesystem::path(CONFERIX_FONTE) / "docs/regras");
    EXPECT_EQ(std::distance(begin(files), end(files)), std::ssize(RuleTexts())) << "a file is left out";
}

/// A valid file of the kind that a rule judges, and how the excerpts name what it has.
struct TSample {
    std::string_view Rules; ///< what the names of the rules begin with
    std::string_view File;
    std::map<std::string, std::string> Names;
};

const std::vector<TSample> kSamples = {
    {"tiss.mensagem.loteguias.spsadt", "spsadt-3.05.00-valido.xml", {}},
    {"tiss.mensagem.loteguias.internacao",
     "internacao-3.02.00-valido.xml",
     {{"guiaSP-SADT", "guiaResumoInternacao"}}},
    {"tiss.mensagem.loteguias.honorarios",
     "honorarios-4.01.00-valido.xml",
     {{"procedimentoExecutado", "procedimentoRealizado"},
      {"procedimentosExecutados", "procedimentosRealizados"}}},
    {"tiss.monitoramento", "monitoramento-1.06.00-valido.xml", {}},
    {"tiss.mensagem", "consulta-4.01.00-valido.xml", {}},
};

const TSample& SampleOf(std::string_view rule) {
    return *std::ranges::find_if(kSamples, [&](const TSample& s) { return rule.starts_with(s.Rules); });
}

/// An excerpt where the text gives none: more guides than a lot may have.
std::string ManyGuides(std::string_view rule) {
    const bool monitoring = rule.starts_with("tiss.monitoramento");
    const std::string_view parent = monitoring ? "operadoraParaANS" : "guiasTISS";
    std::string xml = fmt::format("<ans:{}>", parent);
    for (int i = 0; i < (monitoring ? 10'001 : 101); ++i)
        xml += monitoring ? "<ans:guiaMonitoramento/>" : "<ans:guiaConsulta/>";
    return xml + fmt::format("</ans:{}>", parent);
}

/// The sample with the excerpt in place of its first element of that name; empty where it has none.
std::string WithExcerpt(const TSample& sample, std::string excerpt) {
    for (const auto& [name, here] : sample.Names) {
        ReplaceAll(excerpt, "<ans:" + name + ">", "<ans:" + here + ">");
        ReplaceAll(excerpt, "</ans:" + name + ">", "</ans:" + here + ">");
    }
    const std::string root = excerpt.substr(1, excerpt.find_first_of(" >") - 1);
    if (!root.starts_with("ans:"))
        return excerpt; // a whole document
    std::string xml = ReadTestFile(Example(std::string(sample.File)));
    std::erase_if(xml, [](char c) { return static_cast<unsigned char>(c) >= 0x80; }); // in comments
    const std::string close = "</" + root + ">";
    const std::size_t begin = xml.find("<" + root + ">");
    const std::size_t end = xml.find(close, begin);
    return begin == std::string::npos ? std::string()
                                      : xml.replace(begin, end + close.size() - begin, excerpt);
}

/// A message without what depends on the place of the excerpt, and without blanks at the ends of lines.
std::string Comparable(std::string message) {
    ReplaceAll(message, "\r\n", "\n");
    message = std::regex_replace(message, std::regex("na linha [0-9]+"), "na linha N");
    return std::regex_replace(message, std::regex(" +(\n|$)"), "$1");
}

std::vector<std::string> Failures(const std::string& rule, const IArquivoTiss& file, std::string_view version,
                                  const std::shared_ptr<const ITussConnection>& tuss) {
    const auto run = NewRunContext(std::string(version), BuiltInSchemaFolder() / "tissV4_01_00.xsd", tuss);
    // Rules about guides are led through the lot.
    constexpr std::string_view kLote = ".loteguias";
    const std::size_t lot = rule.find(kLote);
    const auto validation =
        AllRules().MakeValidation(lot == std::string::npos ? rule : rule.substr(0, lot + kLote.size()), run);
    file.Accept(*validation);
    std::vector<std::string> failures;
    for (const auto& message : validation->ValidationMessages())
        if (message->IsFailure() && message->Validation().Name == rule)
            failures.push_back(Comparable(message->Reason()));
    return failures;
}

/// Terms for all codes of the samples, so that only the excerpts fail.
void KnowSamples(TTussWriter& writer) {
    const TDate start(std::chrono::year(2000), std::chrono::month(1), std::chrono::day(1));
    const std::regex element("<ans:(codigoProcedimento|grupoProcedimento|municipio[A-Za-z]+)>([0-9]+)<");
    std::map<char, std::set<std::string>> known; // by the first letter of their element
    for (const TSample& sample : kSamples) {
        const std::string xml = ReadTestFile(Example(std::string(sample.File)));
        for (std::sregex_iterator at(xml.begin(), xml.end(), element), end; at != end; ++at)
            known[*(*at)[1].first].insert((*at)[2]);
    }
    known['g'].insert("004");
    for (const char* table : {"18", "19", "20", "22"})
        for (const std::string& code : known['c']) {
            writer.Insert(table, {code, start, std::nullopt});
            writer.Insert(TTuss64{table, code, false, {}, start, {}, {}});
        }
    for (const char* table : {"00", "18", "19", "20", "22", "63", "90", "98"})
        writer.Insert("87", {table, start, std::nullopt});
    for (const std::string& group : known['g'])
        writer.Insert("63", {group, start, std::nullopt});
    for (const std::string& city : known['m'])
        writer.Insert(TCidade{city});
}

TEST(RuleGuide, ExamplesFailAsTheySayInTheVersionsThatTheyName) {
    const auto tuss = TTussConnection::InMemory(KnowSamples);
    for (const TRuleText& text : TRuleGuide::Instance().Texts()) {
        if (text.Section(kGuideExample) == nullptr)
            continue;
        const std::string& where = text.Section(kGuideWhere)->Blocks.front().Text;
        static constexpr std::string_view kFrom = "A partir da versão ";
        const std::size_t from = where.find(kFrom);
        EXPECT_NE(from == std::string::npos, where.find("Todas as versões") == std::string::npos) << where;
        const std::string first =
            from == std::string::npos ? std::string("0") : where.substr(from + kFrom.size(), 7);
        for (const TRuleExample& example : text.Examples()) {
            ASSERT_FALSE(example.Messages.empty()) << text.Title;
            std::vector<std::string> expected;
            for (const std::string& message : example.Messages)
                expected.push_back(Comparable(message));
            for (const std::string& rule : text.Rules) {
                const TSample& sample = SampleOf(rule);
                // What files of all kinds have in common is shown by one of them.
                if (rule.substr(0, 9) != text.Rules.front().substr(0, 9))
                    continue;
                const std::string xml =
                    WithExcerpt(sample, example.Xml.empty() ? ManyGuides(rule) : example.Xml);
                ASSERT_FALSE(xml.empty()) << rule << ": " << sample.File << " has nothing to be replaced";
                const auto file = LoadTiss(xml);
                for (const TArquivoTissClass& known : TArquivoTissFactory::Classes()) {
                    // The excerpts have the names of 3.x.
                    if (known.Tipo != file->TipoArquivo() || known.Versao.starts_with("2"))
                        continue;
                    const std::vector<std::string> found = Failures(rule, *file, known.Versao, tuss);
                    if (known.Versao >= first)
                        EXPECT_EQ(found, expected) << rule << " in " << known.Versao;
                    else
                        EXPECT_THAT(found, testing::IsEmpty()) << rule << " in " << known.Versao;
                }
            }
        }
    }
}

} // namespace
} // namespace conferix::tests
