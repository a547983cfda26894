#include "app/servir/tiss_requests.h"

#include "app/configuracao_validacoes.h"
#include "app/file_correction.h"
#include "app/missing_data.h"
#include "app/recoding.h"
#include "app/repeated_guides.h"
#include "app/servir/request_input.h"
#include "app/unified_diff.h"
#include "app/validador_controller.h"
#include "report/report_writer.h"
#include "report/rules_json.h"
#include "service/media_type.h"
#include "xml/lower_case.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <memory>
#include <new>
#include <optional>
#include <sstream>
#include <utility>

namespace conferix {

namespace {

/// A format of reports; `MediaType` is told, and asked for where `IsNegotiated`.
struct TReportFormat {
    std::string_view Name;
    std::string_view MediaType;
    bool IsNegotiated;
};

/// The first one that a client accepts is taken. JUnit's type is the one of any XML.
constexpr std::array<TReportFormat, 7> kFormats = {{{"json", "application/json", true},
                                                    {"html", "text/html", true},
                                                    {"sarif", "application/sarif+json", true},
                                                    {"ndjson", "application/x-ndjson", true},
                                                    {"texto", "text/plain", true},
                                                    {"csv", "text/csv", true},
                                                    {"junit", "application/xml", false}}};

constexpr const char* kVerdicts[] = {"valido", "invalido", "nao_verificado"};

struct TChosenReport {
    std::string_view Name;
    std::unique_ptr<IReportWriter> Writer;
    std::string ContentType;
};

/// The report that the client wants: by the parameter "formato", else by its Accept header.
TChosenReport ChooseReport(const std::string& formato, const std::string& accept,
                           const TReportOptions& options) {
    std::vector<TReportFormat> offered;
    std::vector<std::string_view> names;
    std::vector<std::string_view> types;
    for (const TReportFormat& format : kFormats) {
        if (NewReportWriter(format.Name, options) == nullptr)
            continue;
        names.push_back(format.Name);
        if (!formato.empty() ? format.Name == formato : format.IsNegotiated) {
            offered.push_back(format);
            types.push_back(format.MediaType);
        }
    }
    if (!formato.empty() && offered.empty())
        throw EHttpRefusal(
            400, fmt::format("O formato \"{}\" não existe; há {}.", formato, fmt::join(names, ", ")));
    const std::optional<std::size_t> chosen = formato.empty() ? PreferredType(accept, types) : std::size_t{0};
    if (!chosen)
        throw EHttpRefusal(
            406, fmt::format("Nenhum formato do cabeçalho Accept existe; há {}.", fmt::join(types, ", ")));
    const TReportFormat& format = offered[*chosen];
    const bool hasCharset = format.MediaType.starts_with("text/");
    return {format.Name, NewReportWriter(format.Name, options),
            std::string(format.MediaType) + (hasCharset ? "; charset=utf-8" : "")};
}

std::optional<TReportLevel> LevelOf(const std::string& name) {
    const std::optional<TReportLevel> level = ReportLevelOf(name);
    if (!name.empty() && !level)
        throw EHttpRefusal(400, "O nível é erro, aviso ou informacao.");
    return level;
}

/// Refuses parameters that say nothing beside others, as the command does with its options.
void CheckParameters(const TReportOptions& options, std::string_view formato) {
    if (options.Todas && options.Nivel)
        throw EHttpRefusal(400,
                           "\"todas\" mostra todas as mensagens e \"nivel\" só algumas; use um dos dois.");
    if (options.Resumo && (options.Todas || options.Detalhar))
        throw EHttpRefusal(400,
                           "\"resumo\" não mostra mensagens; não combina com \"todas\" nem \"detalhar\".");
    if (options.Resumo && formato != "texto" && formato != "json" && formato != "ndjson")
        throw EHttpRefusal(400, "\"resumo\" só existe em texto, json e ndjson.");
    if (options.Totais && formato != "json" && formato != "ndjson")
        throw EHttpRefusal(400, "\"totais\" só existe em json e ndjson.");
}

/// The rules that are on, without those that a client switches off for its request.
std::vector<std::string> EnabledRules(const TServiceEngine& engine,
                                      const std::vector<std::string>& disabled) {
    TConfiguracaoValidacoes rules(engine.LoadConfig());
    try {
        for (const std::string& name : disabled)
            rules.SetChecked(name, false);
    } catch (const EUnknownRule& error) {
        throw EHttpRefusal(400, error.what() + std::string(" GET /regras mostra a lista."));
    } catch (const ERuleNotSwitched& error) {
        throw EHttpRefusal(400, error.what());
    }
    return rules.Config().EnabledValidations();
}

/// Corrects the file of one request.
class TCorrectionRequest {
  public:
    TCorrectionRequest(THttpRequest& request, const TServiceEngine& engine,
                       const TDBConnectionFactory& terminology)
        : engine_(engine),
          input_(request, {"arquivo", "codificacao", "desativar", "estrutura", "perdas", "todas"}),
          what_{.Estrutura = input_.Flag("estrutura"),
                .ComPerdas = input_.Flag("perdas"),
                .Todas = input_.Flag("todas")},
          codificacao_(ReadEncoding(input_.Text("codificacao"))), controller_(terminology) {
        if (input_.FileCount() != 1)
            throw EHttpRefusal(400, "Um arquivo é corrigido de cada vez; o formulário tem mais.");
        if (!what_.Todas && !what_.Estrutura && codificacao_.empty())
            throw EHttpRefusal(
                400, "Diga o que corrigir: /corrigir?todas, ?estrutura ou ?codificacao=ISO-8859-1.");
        if (what_.ComPerdas && !what_.Estrutura)
            throw EHttpRefusal(400, "\"perdas\" vale só com \"estrutura\".");
        constexpr std::array<std::string_view, 3> kOffered = {"application/xml", "text/xml",
                                                              "application/json"};
        const std::optional<std::size_t> chosen = PreferredType(request.Accept, kOffered);
        if (!chosen)
            throw EHttpRefusal(406, fmt::format("Nenhum formato do cabeçalho Accept existe aqui; há {}.",
                                                fmt::join(kOffered, ", ")));
        contentType_ = kOffered[*chosen];
    }

    TServiceAnswer Run(TServiceMetrics& metrics) {
        const TTissFile before = Read();
        // The name that the log keeps of what was corrected.
        controller_.Load("(requisição)", before);
        controller_.SetSchemaFolder(engine_.Schemas);
        const std::vector<std::string> enabled = EnabledRules(engine_, input_.List("desativar"));
        std::shared_ptr<const std::string> text = before.Text();
        std::size_t replaced = 0;
        if (!codificacao_.empty()) {
            TXmlRecoding recoding = HoldInEncoding(controller_, before, codificacao_);
            replaced = recoding.Replaced.size();
            text = std::make_shared<const std::string>(std::move(recoding.Text));
        }
        const TCorrectionResult result = CorrectFile(controller_, text, enabled, what_, FirstOf);
        if (!what_.Estrutura && !what_.Todas)
            controller_.Validate(text, enabled);
        if (Validation().ArquivoTiss == nullptr)
            return Validation().Verified
                       ? Unread(422, "O arquivo não pôde ser lido, e nada foi corrigido.",
                                Validation().ValidationMessages)
                       : Unread(503,
                                "O serviço não pôde conferir o arquivo, e nada foi corrigido." + Advice(),
                                Validation().ValidationMessages);
        metrics.CountVerdict(kVerdicts[static_cast<std::size_t>(VerdictOf(Validation()))]);
        metrics.CountCorrections(result.Applied.size());
        const TTissFile after = before.WithText(result.Xml, controller_.Encoding());
        return contentType_ == "application/json" ? Report(before, after, result)
                                                  : File(after, result, replaced);
    }

  private:
    static std::string ReadEncoding(const std::string& name) {
        for (const char* known : {"ISO-8859-1", "UTF-8"})
            if (LowerCase(name) == LowerCase(known))
                return known;
        if (!name.empty())
            throw EHttpRefusal(400, "A codificação é ISO-8859-1 ou UTF-8.");
        return {};
    }

    static std::optional<std::size_t> FirstOf(const std::vector<std::shared_ptr<ISolver>>& /*solvers*/) {
        return 0;
    }

    TTissFile Read() {
        try {
            return TTissFile(input_.TakeBytes(0), TXmlUndecodable::Guessed);
        } catch (const EXmlEncoding& error) {
            throw EHttpRefusal(422, error.what());
        }
    }

    /// What to do where a schema is missing, as a further sentence.
    std::string Advice() {
        const std::filesystem::path& schema = Validation().MissingSchema;
        return schema.empty() ? std::string() : ' ' + MissingSchemaText(schema);
    }

    const TValidateArgs& Validation() { return controller_.Events().OnValidate.Current(); }

    static TServiceAnswer Unread(unsigned status, std::string_view text, const TXmlMessages& messages) {
        TJson json = {{"status", status}, {"erro", text}, {"mensagens", TJson::array()}};
        for (std::size_t i = 0; i < messages.size(); ++i)
            json["mensagens"].push_back(MessageJson(*messages[i], i + 1, true));
        return {status, "application/json", JsonText(json) + '\n'};
    }

    TServiceAnswer Report(const TTissFile& before, const TTissFile& after, const TCorrectionResult& result) {
        const std::string name = input_.FileName(0);
        TJson json = CorrectionReportJson(name, result, Validation());
        if (!codificacao_.empty())
            json["codificacao"] = codificacao_;
        const TTissFile read(after.Bytes(), TXmlUndecodable::Guessed);
        json["diferenca"] = UnifiedDiff(*before.Text(), *read.Text(), name, name + " (corrigido)");
        return {200, "application/json", JsonText(json) + '\n'};
    }

    TServiceAnswer File(const TTissFile& after, const TCorrectionResult& result, std::size_t replaced) {
        constexpr const char* kValid[] = {"sim", "nao", "nao-verificado"};
        return {200,
                contentType_,
                after.Bytes(),
                {{"Content-Disposition", fmt::format("attachment; filename=\"{}\"", DownloadName())},
                 {"Conferix-Valido", kValid[static_cast<std::size_t>(VerdictOf(Validation()))]},
                 {"Conferix-Correcoes", std::to_string(result.Applied.size())},
                 {"Conferix-Nao-Corrigidas", std::to_string(result.LeftOut.size())},
                 {"Conferix-Caracteres-Trocados", std::to_string(replaced)}}};
    }

    /// The client's name for the file, of which a header holds only plain characters.
    std::string DownloadName() const {
        std::string name = input_.FileName(0);
        if (name == "-")
            return "corrigido.xml";
        std::ranges::replace_if(
            name,
            [](char c) {
                return !((c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                         c == '.' || c == '-' || c == '_' || c == ' ');
            },
            '_');
        return name;
    }

    const TServiceEngine& engine_;
    TRequestInput input_;
    TFileCorrections what_;
    std::string codificacao_;
    TValidadorController controller_;
    std::string contentType_; ///< of the answer: JSON tells of the corrections, XML is the corrected file
};

} // namespace

TServiceAnswer AnswerValidar(THttpRequest& request, const TServiceEngine& engine,
                             const TDBConnectionFactory& terminology, TServiceMetrics& metrics) {
    TRequestInput input(
        request, {"arquivo", "desativar", "detalhar", "formato", "nivel", "resumo", "todas", "totais"});
    const TReportOptions options{.Todas = input.Flag("todas"),
                                 .Nivel = LevelOf(input.Text("nivel")),
                                 .Detalhar = input.Flag("detalhar"),
                                 .Resumo = input.Flag("resumo"),
                                 .Totais = input.Flag("totais")};
    const TChosenReport report = ChooseReport(input.Text("formato"), request.Accept, options);
    CheckParameters(options, report.Name);
    TFileValidator validator(engine.Schemas, terminology, EnabledRules(engine, input.List("desativar")));
    validator.SetKeepSuccesses(options.Todas);
    std::ostringstream out;
    TReportTotals totals(false);
    TRepeatedGuides repeated;
    std::vector<std::string> names;
    report.Writer->Begin(out);
    for (std::size_t i = 0; i < input.FileCount(); ++i) {
        names.push_back(input.FileName(i));
        const TFileResult file = validator.ValidateBytes(names.back(), [&] { return input.TakeBytes(i); });
        repeated.Add(i, BilledGuides(file.Validation));
        metrics.CountVerdict(kVerdicts[static_cast<std::size_t>(file.Verdict())]);
        const TFileSummary summary(file);
        totals.Add(summary);
        report.Writer->AddFile(out, summary, report.Writer->FileText(file));
        if (static_cast<std::size_t>(out.tellp()) > engine.AnswerBytes)
            throw EHttpRefusal(413, "O relatório seria grande demais; envie menos arquivos de cada vez.");
    }
    totals.SetRepeated(WithFileNames(repeated.Found(), names));
    report.Writer->End(out, totals);
    TServiceAnswer answer{200, report.ContentType, std::move(out).str()};
    // A report shows what files say: nothing of that may run or be fetched in the name of the service.
    if (report.ContentType.starts_with("text/html"))
        answer.Headers.emplace_back("Content-Security-Policy",
                                    "default-src 'none'; style-src 'unsafe-inline'; img-src data:");
    return answer;
}

TServiceAnswer AnswerCorrigir(THttpRequest& request, const TServiceEngine& engine,
                              const TDBConnectionFactory& terminology, TServiceMetrics& metrics) {
    return TCorrectionRequest(request, engine, terminology).Run(metrics);
}

TServiceAnswer AnswerRegras(const THttpRequest& request, const TServiceEngine& engine) {
    for (const auto& [name, value] : request.Query)
        throw EHttpRefusal(400, fmt::format("O parâmetro \"{}\" não existe aqui.", name));
    return {200, "application/json",
            JsonText(RulesJson(TConfiguracaoValidacoes(engine.LoadConfig()))) + '\n'};
}

} // namespace conferix
