// Lots made from the schemas, of every kind of guide and every version of the chain, on every way along it.
#include "app/lote_conversion.h"
#include "convert/version_converter.h"
#include "schema_model/built_in_folders.h"
#include "support/generated_lot.h"
#include "support/support.h"
#include "xml/schema/schema_messages.h"
#include "xml/schema/schema_validator.h"
#include "xml/xml_writer.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <map>

namespace conferix {
namespace {

constexpr auto kLote = TEnumTipoTransacaoTiss::tmEnvioLoteGuias;
constexpr long kLots = 150; ///< over all versions; CONFERIX_LOTES names another count
constexpr const char* kGuides[] = {"guiaConsulta", "guiaSP-SADT", "guiaResumoInternacao", "guiaHonorarios",
                                   "guiaOdonto"};

using TCounts = std::map<std::pair<std::string, std::string>, int>; ///< by element and value

std::string MakeLot(const std::string& versao, const std::string& guide, std::uint64_t& seed) {
    const auto set = SchemaOfVersion(versao);
    const auto [generator, tree] = MakeLotTree(*set, versao, guide, seed);
    return generator.Serialize(*tree);
}

std::vector<TSchemaFault> Faults(const TXmlDocument& document, const std::string& versao) {
    const auto set = SchemaOfVersion(versao);
    return TSchemaValidator(*set).Validate(document);
}

std::string LastName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

TCounts Leaves(const TXmlDocument& document) {
    TCounts leaves;
    for (const TXmlNode* node = document.Element(); node != nullptr;
         node = node->NextInWalk(document.Element()))
        if (node->IsTag() && node->FirstChildTag() == nullptr)
            ++leaves[{std::string(node->LocalName()), node->TextWithCData()}];
    return leaves;
}

/// Every fault of a text by its own schema is an open place that the notes tell.
void ExpectTold(const std::string& text, const std::string& versao, const TConversionNotes& notes) {
    std::map<std::string, int> told;
    for (const TConversionNote& note : notes)
        if (note.Type == TConversionNoteType::ntPending)
            ++told[LastName(note.Element)];
    const TXmlParseResult parsed = TXmlParser::Parse(text);
    ASSERT_NE(parsed.Document, nullptr) << text;
    for (const TSchemaFault& fault : Faults(*parsed.Document, versao))
        EXPECT_GE(--told[fault.Name], 0) << versao << ": " << TSchemaMessages::Sentence(fault);
}

void ExpectNothingLost(const std::string& before, const std::string& after, const TConversionNotes& notes) {
    TCounts left = Leaves(*TXmlParser::Parse(after).Document);
    TCounts noted;
    for (const TConversionNote& note : notes)
        if (note.Type != TConversionNoteType::ntPending)
            ++noted[{LastName(note.Element), note.Value}];
    for (const auto& [leaf, count] : Leaves(*TXmlParser::Parse(before).Document))
        EXPECT_LE(count - left[leaf], noted[leaf]) << leaf.first << " = " << leaf.second;
}

/// Elements, namespaces' local form and values of a tree, but for the document element's attributes.
std::string TreeText(const std::string& text) {
    const TXmlParseResult parsed = TXmlParser::Parse(text);
    const TXmlNode* root = parsed.Document->Element();
    std::string tree;
    const std::function<void(const TXmlNode&)> write = [&](const TXmlNode& node) {
        tree += fmt::format("<{}", node.LocalName());
        for (const TXmlAttribute& attribute : node.Attributes())
            if (&node != root && !attribute.QualifiedName().starts_with("xmlns"))
                tree += fmt::format(" {}={}", attribute.Name().Local, attribute.Value());
        tree += ">" + (node.FirstChildTag() == nullptr ? node.TextWithCData() : std::string());
        for (const TXmlNode& child : node.ChildTags())
            write(child);
        tree += "</>";
    };
    write(*root);
    return tree;
}

bool LostSomething(const TConversionNotes& notes) {
    return std::any_of(notes.begin(), notes.end(),
                       [](const auto& note) { return note.Type == TConversionNoteType::ntLoss; });
}

/// Goes the whole way in one direction, judging every version that it passes, and back where there is a way.
void GoAndReturn(const std::string& text, const std::vector<std::string>& targets) {
    TVersionConverter converter;
    const auto original = LoadTiss(text);
    TConversionRun run;
    converter.SetObserver([&](std::string_view versao, const auto& file) {
        const std::string passed = WriteXml(*file->Xml());
        ExpectTold(passed, std::string(versao), run.Notes());
        ExpectNothingLost(text, passed, run.Notes());
        // Back from here, where every step on the way can be gone back.
        const TVersionConverter plain;
        auto reachable = plain.PreviousVersions(kLote, versao);
        const auto up = plain.NextVersions(kLote, versao);
        reachable.insert(reachable.end(), up.begin(), up.end());
        if (LostSomething(run.Notes()) ||
            std::find(reachable.begin(), reachable.end(), original->Versao()) == reachable.end())
            return;
        TConversionRun back;
        const auto returned = plain.Convert(*LoadTiss(passed), original->Versao(), back);
        if (!LostSomething(back.Notes())) {
            EXPECT_EQ(TreeText(WriteXml(*returned->Xml())), TreeText(text));
        }
    });
    converter.Convert(*original, targets.back(), run);
    EXPECT_EQ(WriteXml(*original->Xml()), text); // the file given stays as it is
}

/// Converts to one version and judges the result.
void ConvertTo(const IArquivoTiss& original, const std::string& text, const std::string& target,
               const TConversionOptions& options) {
    const TConvertedLote lote = ConvertLote(original, target, options, TSchemaFolder(BuiltInSchemaFolder()));
    ExpectTold(lote.Xml, target, lote.Notes);
    ExpectNothingLost(text, lote.Xml, lote.Notes);
    const auto converted = LoadTiss(lote.Xml);
    EXPECT_EQ(converted->Versao(), target);
    EXPECT_EQ(lote.Valid, Faults(*converted->Xml(), target).empty());
}

class GeneratedLots : public testing::TestWithParam<std::string> {};

TEST_P(GeneratedLots, NothingIsPassedOverInSilence) {
    const char* named = std::getenv("CONFERIX_LOTES");
    const long wanted = std::max(1L, (named != nullptr ? std::strtol(named, nullptr, 10) : kLots) / 75);
    const TVersionConverter converter;
    std::uint64_t seed = 0;
    std::size_t lots = 0;
    for (const char* guide : kGuides) {
        for (long i = 0; i < wanted && !HasFailure(); ++i, ++lots) {
            const std::string text = MakeLot(GetParam(), guide, seed);
            SCOPED_TRACE(fmt::format("{} {} {}", GetParam(), guide, seed));
            const auto original = LoadTiss(text);
            ASSERT_TRUE(Faults(*original->Xml(), GetParam()).empty());
            for (const auto& targets :
                 {converter.NextVersions(kLote, GetParam()), converter.PreviousVersions(kLote, GetParam())}) {
                if (targets.empty())
                    continue;
                GoAndReturn(text, targets);
                ConvertTo(*original, text, targets[lots % targets.size()], {i % 2 == 0 ? "" : "01"});
            }
        }
    }
}

std::vector<std::string> Versions() {
    std::vector<std::string> versions = TVersionConverter().NextVersions(kLote, "3.02.00");
    versions.insert(versions.begin(), "3.02.00");
    return versions;
}

INSTANTIATE_TEST_SUITE_P(, GeneratedLots, testing::ValuesIn(Versions()), [](const auto& instance) {
    std::string name = instance.param;
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
});

} // namespace
} // namespace conferix
