#include "forms/form_template.h"
#include "model/arquivo_tiss_factory.h"
#include "model/tiss_kinds.h"
#include "schema_model/element_history.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

namespace {

using TSteps = std::vector<std::string_view>;

/// Where lots hold their guides, from 3.00.00 on and in 2.x.
const TSteps kLots[] = {{"mensagemTISS", "prestadorParaOperadora", "loteGuias", "guiasTISS"},
                        {"mensagemTISS", "prestadorParaOperadora", "loteGuias", "guias", "guiaFaturamento"}};

/// The elements of guides by the names that templates give the kinds.
constexpr std::array<std::pair<std::string_view, std::string_view>, 8> kElements = {
    {{"consulta", "guiaConsulta"},
     {"spsadt", "guiaSP-SADT"},
     {"spsadt", "guiaSP_SADT"},
     {"resumo_internacao", "guiaResumoInternacao"},
     {"honorarios", "guiaHonorarios"},
     {"honorarios", "guiaHonorarioIndividual"},
     {"tratamento_odontologico", "guiaOdonto"},
     {"tratamento_odontologico", "guiaOdontologia"}}};

/// Checks the paths of one template.
class TPathCheck {
  public:
    explicit TPathCheck(const TFormTemplate& form) : form_(form) {
        for (const auto& [kind, element] : kElements)
            if (std::ranges::find(form.Guides, kind) != form.Guides.end())
                for (TSteps steps : kLots) {
                    steps.push_back(element);
                    guides_.push_back(std::move(steps));
                }
    }

    void Check(const TFormVariant& variant) {
        Begin(variant.Versions);
        const auto boxes = [&](const std::vector<TFormBox>& all, const TFormPath& items) {
            for (const TFormBox& box : all)
                Check(variant, box, items);
        };
        Check(variant, variant.GuideNumber, {});
        for (const TFormBlock& block : variant.Blocks) {
            if (const auto* row = std::get_if<TFormRow>(&block))
                boxes(row->Boxes, {});
            if (const auto* table = std::get_if<TFormTable>(&block)) {
                CheckPath({}, table->Items, table->SourceLine);
                for (const auto& band : table->Bands)
                    boxes(band, table->Items);
            }
        }
        CheckPath({}, form_.Needs, form_.NeedsSourceLine);
    }

  private:
    void Check(const TFormVariant& variant, const TFormBox& box, const TFormPath& items) {
        Begin(variant.Versions, &box.Versions);
        for (const auto* paths : {&box.Paths, &box.Term})
            for (const TFormPath& path : *paths)
                CheckPath(items, path, box.SourceLine);
        Begin(variant.Versions);
    }

    /// The schemas of the versions that paths have to hold in.
    void Begin(const TFormVersions& versions, const TFormVersions* also = nullptr) {
        schemas_.clear();
        for (const TArquivoTissClass& known : TArquivoTissFactory::Classes())
            if (known.Tipo == TEnumTipoArquivoTiss::taMensagemTISS && versions.Contains(known.Versao) &&
                (also == nullptr || also->Contains(known.Versao)))
                schemas_.push_back(SchemaFileName(known.Tipo, known.Versao));
    }

    void CheckPath(const TFormPath& items, const TFormPath& path, int line) const {
        if (schemas_.empty() || Exists(items, path)) // no schemas: of versions that nobody knows yet
            return;
        for (std::size_t length = 1; length <= path.size(); ++length)
            if (!Exists(items, std::span(path).first(length)))
                throw EInvalidForm(
                    form_.FileName, line,
                    fmt::format("o elemento \"{}\" não existe nas guias destas versões, no caminho \"{}\"",
                                path[length - 1], fmt::join(path, "/")));
    }

    bool Exists(std::span<const std::string> items, std::span<const std::string> path) const {
        return std::ranges::any_of(guides_, [&](TSteps steps) {
            for (const auto part : {items, path})
                for (const std::string& step : part)
                    if (step == "..")
                        steps.pop_back();
                    else
                        steps.push_back(step);
            return std::ranges::any_of(schemas_, [&](const std::string& schema) {
                return TElementHistory::BuiltIn().Knows(schema, steps);
            });
        });
    }

    const TFormTemplate& form_;
    std::vector<TSteps> guides_;
    std::vector<std::string> schemas_;
};

} // namespace

void CheckPaths(const TFormTemplate& form) {
    constexpr std::array<std::string_view, 1> kRoot = {"mensagemTISS"};
    if (!TElementHistory::BuiltIn().Knows(SchemaFileName(TEnumTipoArquivoTiss::taMensagemTISS, "4.01.00"),
                                          kRoot))
        return; // without the model of the schemas nobody knows
    TPathCheck check(form);
    for (const TFormVariant& variant : form.Variants)
        check.Check(variant);
}

} // namespace conferix
