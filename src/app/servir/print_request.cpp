#include "app/guide_forms.h"
#include "app/guide_numbers.h"
#include "app/servir/request_input.h"
#include "app/servir/tiss_requests.h"
#include "data/tuss_connection.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

namespace {

/// Prints the files of one request.
class TPrintRequest {
  public:
    TPrintRequest(THttpRequest& request, const TServiceEngine& engine,
                  const TDBConnectionFactory& terminology)
        : engine_(engine), input_(request, {"arquivo", "descricao", "formulario", "guia", "semaviso"}),
          numbers_(input_.List("guia")), printer_(InstalledForms(), Options(terminology)), pdf_(out_),
          validator_(engine.Schemas, terminology, engine.LoadConfig().EnabledValidations()) {
        const std::string form = input_.Text("formulario");
        std::vector<std::string_view> names;
        for (const auto& known : printer_.Forms())
            names.push_back(known->Name);
        if (!form.empty() && std::ranges::find(names, form) == names.end())
            throw EHttpRefusal(
                400, fmt::format("O formulário \"{}\" não existe; há {}.", form, fmt::join(names, ", ")));
    }

    TServiceAnswer Run() {
        const bool withErrors = !input_.Flag("semaviso");
        for (std::size_t i = 0; i < input_.FileCount(); ++i)
            Print(i, withErrors);
        if (const std::vector<std::string> missing = numbers_.Missing(); !missing.empty())
            throw EHttpRefusal(422, fmt::format("Nenhum dos arquivos tem a guia {}.", missing.front()));
        if (pages_ == 0)
            throw EHttpRefusal(422, "Não há nada a imprimir: nenhuma guia tem o formulário pedido.");
        pdf_.Finish();
        CheckSize();
        return {200,
                "application/pdf",
                std::move(out_).str(),
                {{"Content-Disposition", "attachment; filename=\"guias.pdf\""},
                 {"Conferix-Guias", std::to_string(guides_)},
                 {"Conferix-Paginas", std::to_string(pages_)}}};
    }

  private:
    TFormOptions Options(const TDBConnectionFactory& terminology) const {
        TFormOptions options;
        options.Only = input_.Text("formulario");
        if (input_.Flag("descricao"))
            options.Terms = FormTermsOf(terminology.CreateConnection()->FileName());
        return options;
    }

    void Print(std::size_t index, bool withErrors) {
        const std::string name = input_.FileName(index);
        const TFileResult file = validator_.ValidateBytes(name, [&] { return input_.TakeBytes(index); });
        const auto refuse = [&](std::string_view reason) {
            throw EHttpRefusal(422, name == "-" ? fmt::format("O arquivo {}.", reason)
                                                : fmt::format("\"{}\" {}.", name, reason));
        };
        if (file.Validation.ArquivoTiss == nullptr)
            refuse(file.Failure.empty() ? "não pôde ser lido; confira-o para saber por quê"
                                        : "não pôde ser lido: " + file.Failure);
        const std::vector<TFormGuide> guides = numbers_.Choose(FormGuidesOf(*file.Validation.ArquivoTiss));
        if (guides.empty() && numbers_.IsAll())
            refuse("não tem guias a imprimir; são impressos lotes de guias");
        std::optional<std::size_t> errors;
        if (withErrors && file.Validation.Verified)
            errors = file.Validation.Counts.Failures();
        printer_.SetErrors(errors);
        pdf_.BeginFile();
        const TFormPrinted printed =
            printer_.Print(guides, file.Versao, [this](const TFormPage& page) { pdf_.Add(page); });
        pages_ += printed.Pages;
        guides_ += guides.size() - printed.Without.size();
        CheckSize();
    }

    void CheckSize() {
        if (static_cast<std::size_t>(out_.tellp()) > engine_.AnswerBytes)
            throw EHttpRefusal(413, "O PDF seria grande demais; envie menos arquivos de cada vez.");
    }

    const TServiceEngine& engine_;
    TRequestInput input_;
    TGuideNumbers numbers_;
    std::ostringstream out_;
    TFormPrinter printer_;
    TGuidePdf pdf_;
    TFileValidator validator_;
    std::size_t guides_ = 0;
    std::size_t pages_ = 0;
};

} // namespace

TServiceAnswer AnswerImprimir(THttpRequest& request, const TServiceEngine& engine,
                              const TDBConnectionFactory& terminology, TServiceMetrics& /*metrics*/) {
    try {
        return TPrintRequest(request, engine, terminology).Run();
    } catch (const EInvalidForm& error) {
        throw EHttpRefusal(503,
                           fmt::format("Um formulário deste serviço não pode ser usado: {}", error.what()));
    } catch (const ETerminologyNotOpened& error) {
        throw EHttpRefusal(503, error.what());
    }
}

} // namespace conferix
