// Full guides on every form: what stands where.
#include "forms/form_printer.h"
#include "forms/form_values.h"
#include "forms/full_guide.h"
#include "paper/pdf_writer.h"
#include "paper/svg_page.h"
#include "paper/text_metrics.h"
#include "platform/utf8.h"
#include "support/parsed.h"
#include "support/system.h"
#include "support/test_files.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <unordered_set>

namespace conferix {
namespace {

constexpr std::size_t kItems = 300;

/// The elements of guides by the kinds that templates name.
const std::map<std::string, std::vector<std::string_view>> kGuides = {
    {"consulta", {"guiaConsulta"}},
    {"spsadt", {"guiaSP-SADT", "guiaSP_SADT"}},
    {"resumo_internacao", {"guiaResumoInternacao"}},
    {"honorarios", {"guiaHonorarios", "guiaHonorarioIndividual"}},
    {"tratamento_odontologico", {"guiaOdonto", "guiaOdontologia"}}};

/// A box of a form, with the paths of its values below the guide.
struct TBoxPaths {
    const TFormBox* Box;
    TFormPath Items; ///< of a column
    std::vector<std::string> Paths;
};

std::vector<TBoxPaths> BoxesOf(const TFormVariant& variant, std::string_view version) {
    std::vector<TBoxPaths> boxes;
    const auto add = [&](const TFormBox& box, const TFormPath& items) {
        if (!box.Versions.Contains(version))
            return;
        TBoxPaths entry{&box, items, {}};
        for (const TFormPath& path : box.Paths) {
            TFormPath whole = items;
            for (const std::string& step : path)
                if (step == "..")
                    whole.pop_back();
                else
                    whole.push_back(step);
            entry.Paths.push_back(fmt::format("{}", fmt::join(whole, "/")));
        }
        boxes.push_back(entry);
    };
    add(variant.GuideNumber, {});
    for (const TFormBlock& block : variant.Blocks) {
        if (const auto* row = std::get_if<TFormRow>(&block))
            for (const TFormBox& box : row->Boxes)
                add(box, {});
        if (const auto* table = std::get_if<TFormTable>(&block))
            for (const auto& band : table->Bands)
                for (const TFormBox& box : band)
                    add(box, table->Items);
    }
    return boxes;
}

std::string PathOf(const TXmlNode& node, const TXmlNode& guide) {
    const std::string name(node.LocalName());
    return node.Parent() == &guide ? name : PathOf(*node.Parent(), guide) + '/' + name;
}

TPaperRect RectOf(const TPaperText& text) {
    const float unit = text.Size * kMillimetresPerPoint;
    return {text.X, text.Baseline - kAscent * unit, TextWidth(text.Text, text.Face, text.Size),
            (kAscent + kDescent) * unit};
}

/// By how much two rectangles overlap in the direction where they do less, in millimetres.
float Overlap(const TPaperRect& a, const TPaperRect& b) {
    return std::min(std::min(a.Right(), b.Right()) - std::max(a.X, b.X),
                    std::min(a.Bottom(), b.Bottom()) - std::max(a.Y, b.Y));
}

std::string WithoutBlanks(std::string text) {
    std::erase(text, ' ');
    return text;
}

/// What is drawn on a page, back to front.
std::vector<const TDrawing*> DrawingsOf(const TPaperPage& page) {
    std::vector<const TDrawing*> drawings;
    for (const auto& common : page.Common)
        drawings.push_back(common.get());
    drawings.push_back(&page.Own);
    return drawings;
}

/// No text leaves the page, crosses the border of a box or meets another text.
void ExpectRoomForAll(const TPaperPage& page, const std::string& where) {
    constexpr float kTolerance = 0.08F; // letters seldom reach as far as their rectangles
    std::vector<std::pair<TPaperRect, std::string>> texts;
    std::vector<TPaperRect> frames;
    for (const TDrawing* drawing : DrawingsOf(page)) {
        for (const TPaperText& text : drawing->Texts)
            texts.emplace_back(RectOf(text), text.Text);
        for (const TPaperFrame& frame : drawing->Frames)
            frames.push_back(frame.Place);
    }
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const auto& [rect, text] = texts[i];
        EXPECT_TRUE(rect.X >= 5 && rect.Y >= 5 && rect.Right() <= page.Width - 5 &&
                    rect.Bottom() <= page.Height - 3)
            << where << ": " << text;
        for (const TPaperRect& frame : frames) {
            const bool inside =
                rect.X >= frame.X - kTolerance && rect.Right() <= frame.Right() + kTolerance &&
                rect.Y >= frame.Y - kTolerance && rect.Bottom() <= frame.Bottom() + kTolerance;
            EXPECT_TRUE(inside || Overlap(rect, frame) <= kTolerance)
                << where << ": " << text << " crosses a border";
        }
        for (std::size_t j = i + 1; j < texts.size(); ++j)
            EXPECT_LE(Overlap(rect, texts[j].first), kTolerance)
                << where << ": " << text << " | " << texts[j].second;
    }
}

/// Each value stands whole in its box.
void ExpectValues(const TFormPage& page, const std::string& where) {
    for (const TFormPlace& place : page.Places) {
        std::string shown;
        const auto drawings = DrawingsOf(page.Paper);
        for (std::size_t i = 1; i < drawings.size(); ++i) // the first is the form itself
            for (const TPaperText& text : drawings[i]->Texts)
                if (Overlap(RectOf(text), place.Frame) > 0.2F)
                    shown += text.Text;
        const std::string value = FormatFormValue(place.Box->Format, place.Node->TextWithCData());
        if (place.Box->Format != TFormFormat::Line) {
            EXPECT_NE(WithoutBlanks(shown).find(WithoutBlanks(value)), std::string::npos)
                << where << ": " << place.Box->Number << ": " << shown << " for " << value;
        }
    }
}

/// Each label is there, whole.
void ExpectLabels(const TFormVariant& variant, std::string_view version, const TDrawing& form,
                  const std::string& where) {
    std::string texts;
    for (const TPaperText& text : form.Texts) {
        EXPECT_FALSE(text.Text.ends_with("...")) << where << ": " << text.Text;
        texts += WithoutBlanks(text.Text);
    }
    const auto expect = [&](const TFormBox& box) {
        if (!box.Label.empty() && box.Versions.Contains(version)) {
            EXPECT_NE(texts.find(WithoutBlanks((box.Number.empty() ? "" : box.Number + "-") + box.Label)),
                      std::string::npos)
                << where << ": " << box.Label;
        }
    };
    for (const TFormBlock& block : variant.Blocks) {
        if (const auto* row = std::get_if<TFormRow>(&block))
            std::ranges::for_each(row->Boxes, expect);
        if (const auto* table = std::get_if<TFormTable>(&block))
            for (const auto& band : table->Bands)
                std::ranges::for_each(band, expect);
    }
}

void ExpectSameAsSvg(const TPaperPage& page, const std::string& where) {
    const auto svg = Parsed(SvgPage(page));
    std::size_t rects = 1; // the paper
    std::vector<std::string> texts;
    for (const TDrawing* drawing : DrawingsOf(page)) {
        rects += drawing->Frames.size();
        for (const TPaperText& text : drawing->Texts)
            texts.push_back(text.Text);
    }
    std::vector<std::string> drawn;
    for (const TXmlNode* text : svg->Element()->Descendants("text"))
        drawn.push_back(text->TextWithCData());
    EXPECT_EQ(drawn, texts) << where;
    EXPECT_EQ(svg->Element()->Descendants("rect").size(), rects) << where;
}

/// The structure of a PDF file is sound, by another program, where that is installed.
void ExpectSound(const std::filesystem::path& pdf) {
    EXPECT_EQ(RunProgram({"qpdf", "--check", pdf.string()}).value_or(0), 0) << pdf;
}

/// What a PDF file says, by another program; nothing where that is not installed.
std::optional<std::string> TextOfPdf(const std::filesystem::path& pdf) {
    const TTemporaryFolder folder;
    const std::optional<int> status =
        RunProgram({"pdftotext", "-layout", pdf.string(), "-"}, folder / "texto");
    EXPECT_EQ(status.value_or(0), 0) << pdf;
    return status ? std::optional(ReadTestFile(folder / "texto")) : std::nullopt;
}

/// The words of a text that a file does not say.
class TPdfWords {
  public:
    explicit TPdfWords(std::string text) : text_(std::move(text)) {
        std::istringstream words(text_);
        for (std::string word; words >> word;)
            words_.insert(word);
    }
    std::string Missing(const std::string& text) const {
        std::string missing;
        std::istringstream words(text);
        for (std::string word; words >> word;) // what stands closely together comes as one word
            if (!words_.contains(word) && text_.find(word) == std::string::npos)
                missing += word + ' ';
        return missing;
    }

  private:
    std::string text_;
    std::unordered_set<std::string> words_;
};

/// What no box shows, as the regulator's forms have none: parts of paths, which begin with the kind of guide.
constexpr std::string_view kWithoutBox[] = {
    "ausenciaCodValidacao", "codValidacao", "tipoIdent", "identificadorBeneficiario", "templateBiometrico",
    "itemVinculado", "centroConsumo", "odontoInicial", "spsadt/valorTotal/valorDiarias",
    // of 2.x
    "identificacaoGuia/numeroGuiaOperadora", "identificacaoGuiaSADTSP/numeroGuiaOperadora",
    "identificacaoGuiaInternacao/numeroGuiaOperadora",
    "identificacaoGuiaHonorarioIndividual/numeroGuiaOperadora", "cabecalhoGuia/numeroGuiaOperadora",
    "CID/nomeTabela", "CID/descricaoDiagnostico", "diagnosticoPrincipal/nomeTabela",
    "diagnosticoPrincipal/descricaoDiagnostico", "contratado/enderecoContratado",
    "contratadoExecutante/enderecoContratado", "dadosContratado/enderecoContratado",
    "contratadoExecutante/identificacaoProfissional/codigoCBOS",
    "membroEquipe/identificacaoProfissional/codigoCBOS", "dadosContratado/conselhoProfissional/siglaConselho",
    "dadosExecutante/conselhoProfissional/siglaConselho",
    "spsadt/procedimentosRealizados/procedimentos/equipe"};

bool IsWithoutBox(const std::string& kind, const std::string& path) {
    const std::string whole = fmt::format("/{}/{}/", kind, path);
    return std::ranges::any_of(kWithoutBox, [&](std::string_view part) {
        return whole.find(fmt::format("/{}/", part)) != std::string::npos;
    });
}

class FullGuides : public testing::TestWithParam<const char*> {
  protected:
    /// Each label stands on the paper, and each value that has a box; the others have none on purpose.
    static void ExpectOnPaper(const TPdfWords& words, const TFormSet& forms, const TFormTemplate& form,
                              const std::string& version, const TXmlNode& guide,
                              const std::map<std::string, std::size_t>& elements) {
        std::map<std::string, const TFormBox*> byPath;
        for (const TBoxPaths& entry : BoxesOf(*form.VariantFor(version), version)) {
            EXPECT_EQ(words.Missing(entry.Box->Label), "") << form.Name << ' ' << version;
            for (const std::string& path : entry.Paths)
                if (elements.contains(path)) {
                    byPath.emplace(path, entry.Box);
                    if (entry.Box->Combination == TFormCombination::First)
                        break;
                }
        }
        const std::string& kind = form.Guides.front();
        std::set<std::string> onAnnex;
        for (const auto& other : forms)
            if (std::ranges::count(other->Guides, kind) != 0)
                for (const TBoxPaths& entry : BoxesOf(*other->VariantFor(version), version))
                    onAnnex.insert(entry.Paths.begin(), entry.Paths.end());
        std::set<std::string> told;
        for (const TXmlNode* node = guide.NextInWalk(&guide); node != nullptr;
             node = node->NextInWalk(&guide)) {
            if (!node->IsTag() || node->FirstChildTag() != nullptr)
                continue;
            const std::string path = PathOf(*node, guide);
            const auto box = byPath.find(path);
            if (box == byPath.end()) {
                if (!form.IsAnnex() && !onAnnex.contains(path) && !IsWithoutBox(kind, path) &&
                    told.insert(path).second)
                    ADD_FAILURE() << form.Name << ' ' << version << ": no box for " << path;
            } else if (const std::string missing =
                           words.Missing(FormatFormValue(box->second->Format, node->TextWithCData()));
                       !missing.empty() && told.insert(path).second) {
                ADD_FAILURE() << form.Name << ' ' << version << ": " << path << ": not on paper: " << missing;
            }
        }
    }
};

TEST_P(FullGuides, StandInTheirBoxes) {
    const std::string version = GetParam();
    const TTemporaryFolder folder;
    const auto set = SchemaOfVersion(version);
    bool read = true;
    for (const auto& form : InstalledForms()) {
        const TFormVariant& variant = *form->VariantFor(version);
        std::set<std::string> items;
        for (const TFormBlock& block : variant.Blocks)
            if (const auto* table = std::get_if<TFormTable>(&block))
                items.insert(fmt::format("{}", fmt::join(table->Items, "/")));
        const auto document =
            Parsed(TFullGuide(*set, items).Xml(*set, kGuides.at(form->Guides.front()), kItems));
        const TXmlNode& guide = *document->Element();
        const std::vector<TFormGuide> guides = {{&guide, form->Guides.front(), "1"}};
        TFormPrinter printer(InstalledForms(), {.Only = form->Name, .Terms = {}, .Errors = 3});
        std::ofstream out(folder / (form->Name + ".pdf"), std::ios::binary);
        TPdfWriter pdf(out, form->Title);
        std::map<const TFormBox*, std::set<const TXmlNode*>> printed;
        std::size_t pages = 0;
        std::size_t most = 0;
        std::string footers;
        const TFormTemplate* shown = nullptr;
        const TFormPrinted told = printer.Print(guides, version, [&](const TFormPage& page) {
            const std::string where = fmt::format("{} {} folha {}", form->Name, version, ++pages);
            if (pages == 1 || page.Places.size() > most) { // the last one has the totals too
                most = page.Places.size();
                ExpectRoomForAll(page.Paper, where);
                ExpectSameAsSvg(page.Paper, where);
                ExpectValues(page, where);
            }
            shown = page.Form;
            if (pages == 1)
                ExpectLabels(*page.Form->VariantFor(version), version, *page.Paper.Common.front(), where);
            for (const TFormPlace& place : page.Places)
                printed[place.Box].insert(place.Node);
            for (const TPaperText& text : page.Paper.Own.Texts)
                if (text.Text.starts_with("Folha") || text.Text.starts_with("Página") ||
                    text.Text.starts_with("Contém"))
                    footers += text.Text + ";";
            pdf.AddPage(page.Paper);
        });
        EXPECT_EQ(told.Pages, pages);
        EXPECT_TRUE(told.Without.empty());
        pdf.Finish();
        out.close();
        const std::string first = pages > 1 ? fmt::format("Folha 1/{};", pages) : "";
        EXPECT_TRUE(footers.starts_with(fmt::format("{}Contém erros: 3;Página 1 de {};", first, pages)))
            << footers;
        std::map<std::string, std::size_t> elements;
        for (const TXmlNode* node = guide.NextInWalk(&guide); node != nullptr;
             node = node->NextInWalk(&guide))
            if (node->IsTag())
                ++elements[PathOf(*node, guide)];
        // Every box with a value was printed, those of tables with every item.
        for (const TBoxPaths& entry : BoxesOf(*shown->VariantFor(version), version)) {
            if (entry.Paths.empty() || entry.Box->Combination == TFormCombination::Sum)
                continue;
            std::size_t found = 0;
            std::size_t parts = 0;
            for (const std::string& path : entry.Paths)
                if (elements.contains(path)) {
                    ++parts;
                    found = found == 0 ? elements[path] : found;
                }
            const bool missing = found < static_cast<std::size_t>(std::max(entry.Box->Occurrence, 1));
            const bool each = !entry.Items.empty() || entry.Box->Occurrence == 0;
            const std::size_t ofEach = entry.Box->Combination == TFormCombination::First ? 1 : parts;
            const std::size_t lines = missing ? 0 : (each ? found : 1) * ofEach;
            EXPECT_EQ(printed[entry.Box].size(), lines)
                << form->Name << ' ' << version << ": " << entry.Box->Label;
        }
        ExpectSound(folder / (form->Name + ".pdf"));
        const std::optional<std::string> text = TextOfPdf(folder / (form->Name + ".pdf"));
        read = read && text.has_value();
        if (text)
            ExpectOnPaper(TPdfWords(*text), InstalledForms(), *form, version, guide, elements);
    }
    if (!read)
        GTEST_SKIP() << "pdftotext não está instalado: o PDF não foi lido";
}

INSTANTIATE_TEST_SUITE_P(Versions, FullGuides,
                         testing::Values("2.02.03", "3.00.01", "3.02.00", "3.05.00", "4.01.00", "4.03.00"));

} // namespace
} // namespace conferix
