#include "app/cli/command_line.h"
#include "app/cli/commands.h"
#include "app/guide_forms.h"
#include "app/guide_numbers.h"
#include "data/database_tuss.h"
#include "model/arquivo_tiss_factory.h"
#include "model/mensagem_tiss.h"
#include "platform/platform.h"
#include "platform/spool_buffer.h"
#include "report/console.h"
#include "report/message_json.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <set>
#include <span>

namespace conferix {

namespace {

void CheckOptions(const TCliContext& context, const TImprimirOptions& options) {
    const bool blank = !options.EmBranco.empty();
    const bool toOutput = options.Saida.empty();
    const std::pair<bool, const char*> refusals[] = {
        {!blank && options.Arquivos.empty(),
         "falta o que imprimir: nomes de arquivos, ou --em-branco FORMULARIO"},
        {blank && !options.Arquivos.empty(),
         "--em-branco imprime um formulário sem guia; não combina com arquivos"},
        {std::ranges::count(options.Arquivos, "-") > 1, "a entrada padrão só pode ser lida uma vez"},
        {context.Json() && toOutput, "com --formato json, diga onde gravar o PDF: --saida ARQUIVO"},
        {toOutput && context.Streams.OutIsTerminal,
         "o PDF não é mostrado no terminal; use --saida ARQUIVO ou redirecione a saída (> ARQUIVO)"},
    };
    for (const auto& [refused, reason] : refusals)
        if (refused)
            throw EUsage(reason);
    std::error_code missing;
    for (const std::string& file : options.Arquivos)
        if (!toOutput && file != "-" &&
            std::filesystem::equivalent(PathFromText(options.Saida), PathFromText(file), missing))
            throw EUsage(fmt::format("a saída é o próprio \"{}\"; escolha outro arquivo", file));
}

const TFormTemplate& FormNamed(const TFormSet& forms, const std::string& name) {
    const auto found = std::ranges::find_if(forms, [&](const auto& form) { return form->Name == name; });
    if (found != forms.end())
        return **found;
    std::vector<std::string_view> names;
    for (const auto& form : forms)
        names.push_back(form->Name);
    throw EUsage(fmt::format("o formulário \"{}\" não existe; escolha {}", name, fmt::join(names, ", ")));
}

TFormOptions OptionsOf(const TCliContext& context, const TImprimirOptions& options) {
    TFormOptions wanted;
    wanted.Only = options.Formulario;
    if (options.ComDescricao)
        wanted.Terms = FormTermsOf(TDatabaseTuss(PathFromText(context.Terminologia)).DatabaseFileName());
    return wanted;
}

/// Prints files into one document.
class TPrinting {
  public:
    TPrinting(const TCliContext& context, const TImprimirOptions& options)
        : context_(context), options_(options), numbers_(options.Guias),
          printer_(InstalledForms(), OptionsOf(context, options)),
          pdf_(bytes_, options.EmBranco.empty() ? "Guias TISS" : "Formulário TISS") {
        for (const std::string& name : {options.Formulario, options.EmBranco})
            if (!name.empty())
                FormNamed(printer_.Forms(), name);
    }

    int Run() {
        int status = kExitValid;
        if (!options_.EmBranco.empty())
            PrintBlank();
        for (const std::string& name : options_.Arquivos)
            status = std::max(status, RunOnListedFile(
                                          context_, name, true, files_,
                                          [&](const TTissFile& file) { return Print(name, file); },
                                          TXmlUndecodable::Guessed));
        for (const auto& [number, shown] : numbers_.FoundByOperator())
            context_.Warning(fmt::format("{} é o número na operadora da guia {}", number, shown));
        for (const std::string& number : numbers_.Missing()) {
            context_.Error(fmt::format("nenhum dos arquivos tem a guia {}", number));
            status = std::max<int>(status, kExitInvalid);
        }
        if (pages_ == 0) {
            if (status == kExitValid)
                context_.Error("não há nada a imprimir: nenhuma guia tem o formulário pedido");
            return std::max<int>(status, kExitInvalid);
        }
        pdf_.Finish();
        Write();
        return status;
    }

  private:
    void PrintBlank() {
        const TFormTemplate& form = FormNamed(printer_.Forms(), options_.EmBranco);
        std::set<std::string> versions;
        for (const TArquivoTissClass& known : TArquivoTissFactory::Classes())
            if (known.Tipo == TEnumTipoArquivoTiss::taMensagemTISS)
                versions.emplace(known.Versao);
        const std::string version = options_.Versao.empty() ? *versions.rbegin() : options_.Versao;
        if (!versions.contains(version))
            throw EUsage(fmt::format("a versão \"{}\" não existe; conhecidas: {}", version,
                                     fmt::join(versions, ", ")));
        const TFormVariant* variant = form.VariantFor(version);
        if (variant == nullptr)
            throw EUsage(fmt::format("o formulário \"{}\" não existe na versão {}", form.Name, version));
        printer_.PrintBlank(form, *variant, version, [&](const TFormPage& page) { pdf_.Add(page); });
        pages_ = 1;
    }

    int Print(const std::string& name, const TTissFile& file) {
        std::optional<std::size_t> errors;
        const std::shared_ptr<const IArquivoTiss> loaded = Load(name, file, errors);
        const bool checked = errors || options_.SemAviso;
        const std::vector<TFormGuide> guides = numbers_.Choose(FormGuidesOf(*loaded));
        if (const auto* message = dynamic_cast<const TMensagemTiss*>(loaded.get()); message != nullptr)
            for (const std::string& text : message->LoteGuias().GuiasNaoLidas().Textos("impress"))
                context_.Warning(fmt::format("{}: {}", name, text));
        if (guides.empty() && numbers_.IsAll()) {
            context_.Error(
                fmt::format("{}: o arquivo não tem guias a imprimir; são impressos lotes de guias", name));
            return kExitInvalid;
        }
        printer_.SetErrors(errors);
        pdf_.BeginFile();
        const TFormPrinted printed =
            printer_.Print(guides, loaded->Versao(), [&](const TFormPage& page) { pdf_.Add(page); });
        std::vector<std::string_view> without;
        for (const TFormGuide* guide : printed.Without)
            without.push_back(guide->Number);
        if (!without.empty())
            context_.Warning(WithoutFormText(name, without));
        if (!checked && printed.Pages != 0)
            context_.Error(fmt::format("{}: o arquivo não pôde ser conferido; as guias são impressas sem a "
                                       "quantidade de erros (--sem-aviso imprime sem conferir)",
                                       name));
        const std::size_t count = guides.size() - without.size();
        pages_ += printed.Pages;
        guides_ += count;
        files_.push_back({{"arquivo", name},
                          {"guias", count},
                          {"paginas", printed.Pages},
                          {"semFormulario", without},
                          {"erros", errors ? TJson(*errors) : TJson(nullptr)}});
        return checked || printed.Pages == 0 ? kExitValid : kExitUnreadable;
    }

    /// Which guides have nothing to be printed on.
    std::string WithoutFormText(const std::string& name, std::span<const std::string_view> numbers) const {
        constexpr std::size_t kMost = 10;
        const std::string form =
            options_.Formulario.empty() ? std::string("formulário") : "o formulário " + options_.Formulario;
        return fmt::format("{}: {} não {} {}, e {} de fora: {}{}", name,
                           Counted(numbers.size(), "guia", "guias"), numbers.size() == 1 ? "tem" : "têm",
                           form, numbers.size() == 1 ? "fica" : "ficam",
                           fmt::join(numbers.first(std::min(numbers.size(), kMost)), ", "),
                           numbers.size() > kMost ? fmt::format(" e mais {}", numbers.size() - kMost) : "");
    }

    /// The file, judged first unless nobody wants to know what is wrong with it.
    std::shared_ptr<const IArquivoTiss> Load(const std::string& name, const TTissFile& file,
                                             std::optional<std::size_t>& errors) const {
        if (options_.SemAviso)
            return file.Load();
        TValidateArgs result;
        const auto controller = context_.NewController();
        controller->SetKeepSuccesses(false);
        controller->Events().OnValidate.Subscribe([&](TValidateArgs& validation) { result = validation; });
        controller->Load(name, file);
        controller->Validate(file.Text(), context_.LoadConfig().EnabledValidations());
        if (result.Verified)
            errors = result.Counts.Failures();
        return result.ArquivoTiss != nullptr ? result.ArquivoTiss : file.Load();
    }

    void Write() {
        const std::string bytes = spool_.Take();
        if (options_.Saida.empty())
            context_.Streams.Out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        else
            WriteFileAtomically(PathFromText(options_.Saida), bytes);
        if (context_.Json()) {
            context_.Streams.Out
                << JsonText({{"saida", options_.Saida}, {"paginas", pages_}, {"arquivos", files_}}) << '\n';
            return;
        }
        const std::string pages = Counted(pages_, "página", "páginas");
        context_.Streams.Err << (options_.EmBranco.empty()
                                     ? fmt::format("{}, {}.\n", Counted(guides_, "guia", "guias"), pages)
                                     : pages + ".\n");
    }

    const TCliContext& context_;
    const TImprimirOptions& options_;
    TGuideNumbers numbers_;
    TFormPrinter printer_;
    TSpoolBuffer spool_; ///< the file and its tree are in memory at the same time
    std::ostream bytes_{&spool_};
    TGuidePdf pdf_;
    std::size_t pages_ = 0;
    std::size_t guides_ = 0;
    TJson files_ = TJson::array();
};

} // namespace

std::vector<TOffer> FormOffers() {
    std::vector<TOffer> offers;
    for (const auto& form : InstalledForms())
        offers.push_back({form->Name, form->Title});
    return offers;
}

int RunImprimir(const TCliContext& context, const TImprimirOptions& options) {
    CheckOptions(context, options);
    return TPrinting(context, options).Run();
}

} // namespace conferix
