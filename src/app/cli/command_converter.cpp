#include "app/cli/commands.h"
#include "app/lote_conversion.h"
#include "app/notices.h"
#include "convert/version_converter.h"
#include "platform/platform.h"
#include "report/console.h"
#include "report/message_json.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <ostream>
#include <set>
#include <span>
#include <tuple>

namespace conferix {

namespace {

std::string_view NameOfNote(TConversionNoteType type) {
    switch (type) {
    case TConversionNoteType::ntLoss:
        return "perda";
    case TConversionNoteType::ntPending:
        return "pendencia";
    case TConversionNoteType::ntChange:
        return "mudanca";
    }
    return "";
}

std::string_view LabelOfNote(TConversionNoteType type) {
    switch (type) {
    case TConversionNoteType::ntLoss:
        return "perda";
    case TConversionNoteType::ntPending:
        return "pendência";
    case TConversionNoteType::ntChange:
        return "mudança";
    }
    return "";
}

std::size_t CountNotes(const TConversionNotes& notes, TConversionNoteType type) {
    return static_cast<std::size_t>(
        std::count_if(notes.begin(), notes.end(), [type](const auto& note) { return note.Type == type; }));
}

TMessageType SeverityOf(TConversionNoteType type) {
    return type == TConversionNoteType::ntChange ? TMessageType::mtInformation : TMessageType::mtWarning;
}

void CheckOptions(const TConverterOptions& options) {
    const bool folder = !options.PastaSaida.empty();
    if (options.Arquivos.size() > 1 && !folder)
        throw EUsage("para converter vários arquivos, informe --pasta-saida PASTA");
    const std::string& regime = options.RegimeAtendimento;
    const auto known = [&](const TRegimeAtendimento& other) { return other.Codigo == regime; };
    if (!regime.empty() && regime != "nenhum" &&
        std::none_of(std::begin(kRegimesAtendimento), std::end(kRegimesAtendimento), known)) {
        std::string list;
        for (const TRegimeAtendimento& other : kRegimesAtendimento)
            list += fmt::format("{} - {}, ", other.Codigo, other.Description);
        throw EUsage(
            fmt::format("o regime de atendimento \"{}\" não existe; escolha {}ou nenhum", regime, list));
    }
    std::set<std::string> names;
    for (const std::string& file : options.Arquivos) {
        std::error_code missing;
        if (!options.Saida.empty() && file != "-" &&
            std::filesystem::equivalent(PathFromText(options.Saida), PathFromText(file), missing))
            throw EUsage(fmt::format("a saída é o próprio \"{}\"; escolha outro arquivo", file));
        if (!folder)
            continue;
        const std::filesystem::path path = PathFromText(file);
        if (file == "-")
            throw EUsage("a entrada padrão não tem nome; use --saida ARQUIVO");
        if (!names.insert(PathText(path.filename())).second)
            throw EUsage(fmt::format("dois arquivos têm o nome \"{}\"; converta-os em pastas separadas",
                                     PathText(path.filename())));
        std::error_code ignored;
        if (std::filesystem::equivalent(PathFromText(options.PastaSaida) / path.filename(), path, ignored))
            throw EUsage(fmt::format("a pasta de saída contém o próprio \"{}\"; escolha outra pasta", file));
    }
}

/// Converts files, one after the other.
class TConverterCommand {
  public:
    TConverterCommand(const TCliContext& context, const TConverterOptions& options)
        : context_(context), options_(options) {
        if (options.RegimeAtendimento != "nenhum")
            conversion_.RegimeAtendimento = options.RegimeAtendimento;
    }

    int Run() {
        int status = kExitValid;
        for (const std::string& file : options_.Arquivos)
            status = std::max(status, Convert(file));
        if (!open_.empty())
            Notify([this](TNoticeBox& box) { NoteConversions(box, open_); });
        if (context_.Json() && options_.Arquivos.size() > 1)
            context_.Streams.Out << JsonText(reports_) << '\n';
        else if (context_.Json() && !reports_.empty())
            context_.Streams.Out << JsonText(reports_.front()) << '\n';
        return status;
    }

  private:
    int Convert(const std::string& name) {
        return RunOnListedFile(
            context_, name, options_.Arquivos.size() > 1, reports_, [&](const TTissFile& file) {
                const TConvertedLote lote =
                    ConvertLote(*file.Load(), options_.Para, conversion_, context_.Schemas());
                Write(name, file.WithText(lote.Xml));
                Report(name, lote);
                if (const std::size_t open = CountNotes(lote.Notes, TConversionNoteType::ntPending);
                    open != 0)
                    open_.push_back({name == "-" ? "entrada padrão" : PathText(PathFromText(name).filename()),
                                     std::string(lote.To), open});
                return kExitValid;
            });
    }

    void Write(const std::string& source, const TTissFile& converted) const {
        if (!options_.Saida.empty()) {
            converted.Write(PathFromText(options_.Saida));
        } else if (!options_.PastaSaida.empty()) {
            const std::filesystem::path folder = PathFromText(options_.PastaSaida);
            CreateFolder(folder);
            converted.Write(folder / PathFromText(source).filename());
        } else if (!context_.Json()) {
            context_.Streams.Out << converted.Bytes();
        }
    }

    void Report(const std::string& file, const TConvertedLote& lote) {
        if (context_.Json()) {
            TJson notes = TJson::array();
            for (const TConversionNote& note : lote.Notes)
                notes.push_back({{"tipo", NameOfNote(note.Type)},
                                 {"passo", note.Step},
                                 {"guia", note.Guia},
                                 {"linha", note.Line},
                                 {"elemento", note.Element},
                                 {"valor", note.Value},
                                 {"texto", note.Text}});
            reports_.push_back({{"arquivo", file},
                                {"origem", lote.From},
                                {"destino", lote.To},
                                {"passos", lote.Steps},
                                {"notas", std::move(notes)},
                                {"valido", lote.Valid}});
            return;
        }
        if (options_.Detalhar)
            for (const TConversionNote& note : lote.Notes)
                PrintNote(note, 1);
        else
            PrintGroups(lote.Notes);
        context_.Streams.Err << fmt::format(
            "{}: {} -> {}, {}, {}, {}; {}.\n", Visible(file), Visible(lote.From), lote.To,
            Counted(CountNotes(lote.Notes, TConversionNoteType::ntLoss), "perda", "perdas"),
            Counted(CountNotes(lote.Notes, TConversionNoteType::ntPending), "pendência", "pendências"),
            Counted(CountNotes(lote.Notes, TConversionNoteType::ntChange), "mudança", "mudanças"),
            lote.Valid ? "válido pelo schema da nova versão" : "ainda inválido pelo schema da nova versão");
    }

    /// One line for all notes of one cause, at the place of the first.
    void PrintGroups(const TConversionNotes& notes) const {
        using TKey = std::tuple<TConversionNoteType, std::string_view, std::string_view, std::string_view>;
        std::map<TKey, std::size_t> counts;
        const auto key = [](const TConversionNote& note) {
            return TKey(note.Type, note.Step, note.Element, note.Text);
        };
        for (const TConversionNote& note : notes)
            ++counts[key(note)];
        for (const TConversionNote& note : notes)
            if (const std::size_t count = std::exchange(counts[key(note)], 0); count != 0)
                PrintNote(note, count);
    }

    void PrintNote(const TConversionNote& note, std::size_t count) const {
        const TPalette palette(context_.Streams.ErrIsTerminal);
        std::string place = fmt::format("linha {}", note.Line);
        if (!note.Guia.empty())
            place += ", guia " + Visible(note.Guia);
        std::string line = note.Value; // a line a note, whatever the value holds
        std::replace_if(line.begin(), line.end(), IsXmlSpace, ' ');
        line = Visible(line);
        std::string value = line.empty() ? std::string() : fmt::format(" Valor: \"{}\".", line);
        if (count > 1)
            value += fmt::format(" E mais {} do mesmo tipo.", Counted(count - 1, "nota", "notas"));
        context_.Streams.Err << fmt::format(
            "{}: {}: {} ({}): {}{}\n", palette.Severity(SeverityOf(note.Type), LabelOfNote(note.Type)),
            Visible(note.Step), Visible(note.Element), place, Visible(note.Text), value);
    }

    const TCliContext& context_;
    const TConverterOptions& options_;
    TConversionOptions conversion_;
    TJson reports_ = TJson::array();
    std::vector<TOpenConversion> open_;
};

} // namespace

int RunConverter(const TCliContext& context, const TConverterOptions& options) {
    CheckOptions(options);
    return TConverterCommand(context, options).Run();
}

int RunVersoes(const TCliContext& context, const std::string& arquivo) {
    return RunOnFile(context, arquivo, [&](const TTissFile& opened) {
        const auto file = opened.Load();
        const TVersionConverter converter;
        converter.RequireConvertible(*file, "");
        const std::string versao(file->Versao());
        const std::vector<std::string> up = converter.NextVersions(file->TipoTransacao(), versao);
        const std::vector<std::string> down = converter.PreviousVersions(file->TipoTransacao(), versao);
        std::ostream& out = context.Streams.Out;
        if (context.Json())
            out << JsonText(
                       {{"arquivo", arquivo}, {"versao", versao}, {"posteriores", up}, {"anteriores", down}})
                << '\n';
        else
            out << fmt::format("Versão atual: {}\nPosteriores: {}\nAnteriores: {}\n", Visible(versao),
                               up.empty() ? "nenhuma" : fmt::format("{}", fmt::join(up, ", ")),
                               down.empty() ? "nenhuma" : fmt::format("{}", fmt::join(down, ", ")));
        return kExitValid;
    });
}

} // namespace conferix
