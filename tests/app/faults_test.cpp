// Faulty files as systems write them, through the commands: what the user reads, and what correcting
// everything does to the bill. With the schemas that come with the program.
#include "app/unified_diff.h"
#include "schema_model/built_in_folders.h"
#include "support/case_file.h"
#include "support/command_test.h"
#include "support/patterns.h"
#include "support/support.h"
#include "xml/xml_document.h"
#include "xml/xml_encoding.h"
#include "xml/xml_parser.h"

#include <gmock/gmock.h>

#include <random>
#include <regex>
#include <set>
#include <sstream>

namespace conferix {
namespace {

using nlohmann::json;
using testing::ElementsAreArray;

class Faults : public TCommandTest {
  protected:
    Faults() {
        options_ = {"--terminologia", CONFERIX_TUSS_DB, "--esquemas", BuiltInSchemaFolder().string()};
    }
};

TEST_F(Faults, SchemaSentencesAreThoseThatAUserUnderstands) {
    for (const tests::TCase& c : tests::Cases("app/cases/schema_sentences.casos")) {
        std::vector<std::string> sentences;
        const json report = ValidateBytes(tests::EditedExample(c.Section, c));
        for (const json& message : report["mensagens"])
            if (message["validacao"].get<std::string>().ends_with(".schema"))
                sentences.push_back(message["texto"]);
        EXPECT_THAT(sentences, ElementsAreArray(c.Expected)) << c;
    }
}

constexpr char kSadt3[] = "spsadt-3.05.00-valido.xml";

/// The first element of a name in a text.
std::string ElementOf(const std::string& text, const std::string& name) {
    const std::size_t start = text.find("<" + name + ">");
    const std::string end = "</" + name + ">";
    return text.substr(start, text.find(end, start) + end.size() - start);
}

TEST_F(Faults, AGuideInTheLayoutOfAnotherVersionOrKindSaysSoFirst) {
    const char* sadt2 = "spsadt-2.02.03-valido.xml";
    const char* consulta4 = "consulta-4.01.00-valido.xml";
    const struct {
        const char* Lot;
        const char* Guide; ///< its first one is replaced
        const char* From;
        const char* Foreign; ///< by the first one of this lot
        const char* As;      ///< under this name
        const char* Told;
    } cases[] = {
        {kSadt3, "ans:guiaSP-SADT", sadt2, "ansTISS:guiaSP_SADT", "ans:guiaSP_SADT",
         "A guia está montada no leiaute da versão 2.02.03, e o arquivo declara a 3.05.00: monte-a no "
         "leiaute da "
         "3.05.00, ou envie-a em um arquivo da 2.02.03."},
        {kSadt3, "ans:guiaSP-SADT", sadt2, "ansTISS:guiaSP_SADT", "ans:guiaSP-SADT",
         "A guia está montada no leiaute da versão 2.02.03, e o arquivo declara a 3.05.00: monte-a no "
         "leiaute da "
         "3.05.00, ou envie-a em um arquivo da 2.02.03."},
        {sadt2, "ansTISS:guiaSP_SADT", kSadt3, "ans:guiaSP-SADT", "ansTISS:guiaSP-SADT",
         "A guia está montada no leiaute da versão 3.04.00, e o arquivo declara a 2.02.03: monte-a no "
         "leiaute da "
         "2.02.03, ou envie-a em um arquivo da 3.04.00."},
        {kSadt3, "ans:guiaSP-SADT", consulta4, "ans:guiaConsulta", "ans:guiaSP-SADT",
         "A guia está montada no leiaute da versão 4.00.00 e como <guiaConsulta>, mas está em <guiaSP-SADT> "
         "de um "
         "arquivo que declara a 3.05.00: monte-a de novo no leiaute da 3.05.00, em <guiaConsulta>, ou "
         "ponha-a em "
         "<guiaConsulta> de um arquivo da 4.00.00."},
        {kSadt3, "ans:guiaSP-SADT", consulta4, "ans:guiaConsulta", "ans:guiaConsulta",
         "A guia está montada no leiaute da versão 4.00.00, e o arquivo declara a 3.05.00: monte-a no "
         "leiaute da "
         "3.05.00, ou envie-a em um arquivo da 4.00.00."},
    };
    for (const auto& c : cases) {
        const auto prefixOf = [](const std::string& name) { return name.substr(0, name.find(':') + 1); };
        std::string lot = ReadTestFile(Example(c.Lot));
        const std::string own = ElementOf(lot, c.Guide);
        std::string guide = ElementOf(ReadTestFile(Example(c.From)), c.Foreign);
        ReplaceAll(guide, c.Foreign, c.As);
        ReplaceAll(guide, prefixOf(c.Foreign), prefixOf(c.As));
        const json report = ValidateBytes(lot.replace(lot.find(own), own.size(), guide));
        std::string first;
        for (const json& message : report["mensagens"])
            if (first.empty() && message["validacao"] == "tiss.mensagem.schema")
                first = message["motivo"];
        EXPECT_EQ(first, c.Told) << c.From << " em " << c.Lot;
    }
}

/// "<elemento> antes -> depois", or "<elemento> antes (motivo)" for what was left as it was.
std::vector<std::string> Changes(const json& report) {
    std::vector<std::string> changes;
    for (const json& change : report["correcoes"])
        changes.push_back(
            fmt::format("{} <{}> {} -> {}", change["linha"].get<int>(), change["elemento"].get<std::string>(),
                        change["antes"].get<std::string>(), change["depois"].get<std::string>()));
    for (const json& left : report["naoCorrigidas"])
        changes.push_back(fmt::format("{} <{}> {} ({})", left["linha"].get<int>(),
                                      left["elemento"].get<std::string>(), left["antes"].get<std::string>(),
                                      left["motivo"].get<std::string>()));
    std::erase_if(changes,
                  [](const std::string& change) { return change.find("<hash>") != std::string::npos; });
    return changes;
}

TEST_F(Faults, CorrectingEverythingMakesNoBillWorse) {
    for (const tests::TCase& c : tests::Cases("app/cases/corrections.casos")) {
        const json report =
            RunJson({"corrigir", "-", "--todas", "--simular"}, tests::EditedExample(c.Section, c));
        EXPECT_THAT(Changes(report), ElementsAreArray(c.Expected)) << c;
        EXPECT_EQ(report["diferenca"].get<std::string>().empty(), report["correcoes"].empty()) << c;
    }
    // An item outside of its guide.
    std::string moved = ReadTestFile(Example(kSadt3));
    const std::size_t start = moved.find("<ans:procedimentoExecutado>");
    const std::size_t end = moved.find("</ans:procedimentoExecutado>") + 28;
    const std::string item = moved.substr(start, end - start);
    moved.erase(start, end - start).insert(moved.find("<ans:guiasTISS>"), item);
    const json outside = RunJson({"corrigir", "-", "--todas", "--simular"}, moved);
    EXPECT_EQ(outside["naoCorrigidas"][0]["motivo"], "há itens fora do lugar (linha 26)");
    EXPECT_EQ(Changes(outside).size(), 2U);
}

/// Lines that are not the same in two texts.
std::vector<std::string> Different(const std::string& before, const std::string& after) {
    std::vector<std::string> lines;
    std::istringstream diff(UnifiedDiff(before, after, "", ""));
    for (std::string line; std::getline(diff, line);)
        if ((line.starts_with('+') || line.starts_with('-')) && !line.starts_with("+++") &&
            !line.starts_with("---"))
            lines.push_back(line);
    return lines;
}

TEST_F(Faults, RepeatedNumbersAreOneGroup) {
    const std::string same = std::regex_replace(ReadTestFile(Example(kSadt3)),
                                                std::regex("sequencialItem>[0-9]+<"), "sequencialItem>1<");
    EXPECT_THAT(Run({"validar", "-"}, same).Out,
                ContainsPattern("2 guias, [0-9]+ vezes: O sequencial de número 1 está repetido"));
}

TEST_F(Faults, StructureIsRepairedByteByByte) {
    for (const tests::TCase& c : tests::Cases("app/cases/structure.casos")) {
        const std::string example = c.Section.substr(0, c.Section.find(' '));
        std::vector<std::string> args = {"corrigir", "-", "--estrutura"};
        if (c.Section != example)
            args.push_back(c.Section.substr(example.size() + 1));
        const std::string damaged = tests::EditedExample(example, c);
        const std::string repaired = Run(args, damaged).Out;
        args.push_back("--simular");
        std::vector<std::string> told;
        const json report = RunJson(args, damaged);
        for (const char* list : {"correcoes", "naoCorrigidas"})
            for (const json& record : report[list])
                told.push_back(fmt::format(
                    "{} {}{}", record["linha"].get<int>(), record["descricao"].get<std::string>(),
                    record.contains("motivo") ? " (" + record["motivo"].get<std::string>() + ")" : ""));
        for (std::string& line : Different(ReadTestFile(Example(example)), repaired))
            told.push_back(std::move(line));
        EXPECT_THAT(told, ElementsAreArray(c.Expected)) << c;
        const std::string again = Run({"corrigir", "-", "--estrutura"}, repaired).Out;
        EXPECT_EQ(again, repaired) << c;
    }
}

/// Changes one place of a lot as systems and people do.
class TMutation {
  public:
    TMutation(const std::string& bytes, unsigned seed) : random_(seed) {
        const TXmlText decoded = DecodeXml(bytes);
        encoding_ = decoded.Encoding;
        text_ = decoded.Text;
        const TXmlParseResult parsed = TXmlParser::Parse(text_);
        std::vector<const TXmlNode*> nodes;
        for (const char* lot : {"guiasTISS", "guias", "operadoraParaANS"})
            if (const TXmlNode* top = parsed.Document->Root().FirstDescendant(lot))
                for (const TXmlNode* at = top->FirstChild(); at != nullptr; at = at->NextInWalk(top))
                    if (at->IsTag())
                        nodes.push_back(at);
        Change(*nodes[Pick(nodes.size())]);
    }
    std::string Bytes() const { return EncodeXml(text_, encoding_); }
    const std::string& Description() const { return description_; }
    /// True when an item may have gone or come as a whole, which no rule can tell from what was meant.
    bool ChangesWhatIsBilled() const { return changesWhatIsBilled_; }

  private:
    std::size_t Pick(std::size_t count) { return random_() % count; }

    void Change(const TXmlNode& node) {
        const std::size_t start = node.ByteStart();
        const std::size_t length = node.ByteEnd() - start;
        const std::string piece = text_.substr(start, length);
        const std::string name(node.QualifiedName());
        const TXmlNode* next = node.NextSiblingTag();
        const std::size_t kind = Pick(8);
        static constexpr const char* kKinds[] = {"typo",  "case",  "missing", "moved",
                                                 "twice", "order", "value",   "version"};
        description_ = fmt::format("{} of <{}> in line {}", kKinds[kind], name, node.Line());
        std::string other = name;
        switch (kind) {
        case 0:
            other.erase(name.find(':') + 1 + Pick(name.size() - name.find(':') - 1), 1);
            return Replace(start, length, Renamed(piece, name, other));
        case 1:
            std::transform(other.begin() + static_cast<std::ptrdiff_t>(name.find(':')), other.end(),
                           other.begin() + static_cast<std::ptrdiff_t>(name.find(':')),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
            return Replace(start, length, Renamed(piece, name, other));
        case 2:
            changesWhatIsBilled_ = true;
            return Replace(start, length, "");
        case 3:
            text_.insert(node.Parent()->ByteEnd(), piece);
            return Replace(start, length, "");
        case 4:
            changesWhatIsBilled_ = true;
            return Replace(start, length, piece + piece);
        case 5:
            if (next == nullptr)
                return;
            text_.erase(next->ByteStart(), next->ByteEnd() - next->ByteStart());
            text_.insert(start, next->Document().Text().substr(next->ByteStart(),
                                                               next->ByteEnd() - next->ByteStart()));
            return;
        case 6:
            if (node.FirstChild() != nullptr || !node.HasValue())
                return;
            return Replace(start, length, "<" + name + ">" + std::string(node.Value()) + "x</" + name + ">");
        default:
            for (const auto& [from, to] : {std::pair("adrao>3.05.00<", "adrao>4.01.00<"),
                                           std::pair("adrao>4.01.00<", "adrao>3.05.00<"),
                                           std::pair("adrao>3.02.00<", "adrao>3.05.00<"),
                                           std::pair("adrao>2.02.03<", "adrao>3.02.00<"),
                                           std::pair("adrao>1.06.00<", "adrao>1.01.00<")})
                if (const std::size_t at = text_.find(from); at != std::string::npos)
                    return Replace(at, std::string_view(from).size(), to);
        }
    }

    static std::string Renamed(std::string piece, const std::string& name, const std::string& other) {
        piece.replace(1, name.size(), other);
        if (const std::size_t end = piece.rfind("</" + name); end != std::string::npos)
            piece.replace(end + 2, name.size(), other);
        return piece;
    }
    void Replace(std::size_t start, std::size_t length, const std::string& with) {
        text_.replace(start, length, with);
    }

    std::mt19937 random_;
    std::string text_;
    TXmlEncoding encoding_;
    std::string description_;
    bool changesWhatIsBilled_ = false;
};

/// Declared totals of the guides, in document order.
std::vector<std::string> Totals(const std::string& bytes) {
    static const std::set<std::string_view> kTotals = {
        "valorProcedimentos",   "valorDiarias",         "valorTaxasAlugueis",
        "valorMateriais",       "valorMedicamentos",    "valorOPME",
        "valorGasesMedicinais", "valorTotalGeral",      "valorTotalHonorarios",
        "totalGeral",           "servicosExecutados",   "valorTotalInformado",
        "valorPagoGuia",        "valorPagoFornecedores"};
    std::vector<std::string> totals;
    const TXmlParseResult parsed = TXmlParser::Parse(DecodeXml(bytes).Text);
    const TXmlNode& root = parsed.Document->Root();
    for (const TXmlNode* node = &root; node != nullptr; node = node->NextInWalk(&root))
        if (node->IsTag() && node->FirstChild() == nullptr && kTotals.count(node->LocalName()) != 0)
            totals.emplace_back(node->Value());
    return totals;
}

TEST_F(Faults, DamagedLotsBecomeNoWorse) {
    const char* const examples[] = {kSadt3,
                                    "internacao-3.02.00-valido.xml",
                                    "spsadt-2.02.03-valido.xml",
                                    "consulta-4.01.00-valido.xml",
                                    "monitoramento-1.06.00-valido.xml",
                                    "honorarios-4.01.00-valido.xml"};
    int corrected = 0;
    for (unsigned seed = 0; seed < 120; ++seed) {
        const char* const example = examples[seed % std::size(examples)];
        const TMutation mutation(ReadTestFile(Example(example)), seed);
        SCOPED_TRACE(fmt::format("{} {}: {}", seed, example, mutation.Description()));
        const std::string faulty = mutation.Bytes();
        WriteTestFile(File("lote.xml"), faulty);
        const json report = RunJson({"corrigir", File("lote.xml"), "--todas", "--no-lugar"});
        const std::string after = ReadTestFile(File("lote.xml"));
        EXPECT_EQ(after == faulty, report["correcoes"].empty());
        if (after == faulty)
            continue;
        ++corrected;
        EXPECT_THAT(ErrorsOf(ValidateBytes(after)), testing::IsSubsetOf(ErrorsOf(ValidateBytes(faulty))));
        if (!mutation.ChangesWhatIsBilled()) {
            EXPECT_EQ(Totals(after), Totals(faulty));
        }
    }
    EXPECT_GT(corrected, 30);
}

} // namespace
} // namespace conferix
