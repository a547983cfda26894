#include "app/cli/commands.h"
#include "app/cli/console.h"
#include "app/cli/message_json.h"
#include "app/lote_conversion.h"
#include "convert/version_converter.h"
#include "model/arquivo_tiss_factory.h"
#include "model/tiss_exceptions.h"
#include "platform/platform.h"
#include "xml/xml_encoding.h"
#include "xml/xml_parser.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <ostream>
#include <set>
#include <tuple>

namespace conferix {

namespace {

std::string_view NameOfNote(TConversionNoteType tipo) {
    switch (tipo) {
    case TConversionNoteType::ntPerda:
        return "perda";
    case TConversionNoteType::ntPendencia:
        return "pendencia";
    case TConversionNoteType::ntMudanca:
        return "mudanca";
    }
    return "";
}

std::string_view LabelOfNote(TConversionNoteType tipo) {
    switch (tipo) {
    case TConversionNoteType::ntPerda:
        return "perda";
    case TConversionNoteType::ntPendencia:
        return "pendência";
    case TConversionNoteType::ntMudanca:
        return "mudança";
    }
    return "";
}

std::size_t CountNotes(const TConversionNotes& notes, TConversionNoteType tipo) {
    return static_cast<std::size_t>(
        std::count_if(notes.begin(), notes.end(), [tipo](const auto& note) { return note.Tipo == tipo; }));
}

TMessageType SeverityOf(TConversionNoteType tipo) {
    return tipo == TConversionNoteType::ntMudanca ? TMessageType::mtInformation : TMessageType::mtWarning;
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
            list += fmt::format("{} - {}, ", other.Codigo, other.Descricao);
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
        if (context_.Json() && options_.Arquivos.size() > 1)
            context_.Streams.Out << JsonText(reports_) << '\n';
        else if (context_.Json() && !reports_.empty())
            context_.Streams.Out << JsonText(reports_.front()) << '\n';
        return status;
    }

  private:
    int Convert(const std::string& file) {
        const auto fail = [&](int status, const std::string& reason) {
            context_.Error(fmt::format("{}: {}", file, reason));
            return status;
        };
        try {
            TXmlText text = DecodeXml(ReadInput(context_, file));
            const TXmlParseResult parsed = TXmlParser::Parse(std::move(text.Text));
            if (parsed.Document == nullptr)
                return fail(kExitInvalid, parsed.Messages.front()->Msg());
            const auto arquivo = TArquivoTissFactory().GetNewArquivoTiss(parsed.Document);
            const TLoteConvertido lote =
                ConvertLote(*arquivo, options_.Para, conversion_, context_.Schemas());
            Write(file, EncodeXml(lote.Xml, text.Encoding));
            Report(file, lote);
            return kExitValid;
        } catch (const EArquivoNaoLido& error) {
            return fail(kExitUnreadable, error.Reason());
        } catch (const EArquivoNaoGravado& error) {
            context_.Error(error.what());
            return kExitUnreadable;
        } catch (const EXmlEncoding& error) {
            return fail(kExitInvalid, error.Message()->Msg());
        } catch (const ETissException& error) {
            return fail(kExitInvalid, error.what());
        } catch (const EConversionNotSupported& error) {
            return fail(kExitInvalid, error.what());
        }
    }

    void Write(const std::string& file, const std::string& bytes) const {
        if (!options_.Saida.empty()) {
            WriteFileAtomically(PathFromText(options_.Saida), bytes);
        } else if (!options_.PastaSaida.empty()) {
            const std::filesystem::path folder = PathFromText(options_.PastaSaida);
            CreateFolder(folder);
            WriteFileAtomically(folder / PathFromText(file).filename(), bytes);
        } else if (!context_.Json()) {
            context_.Streams.Out << bytes;
        }
    }

    void Report(const std::string& file, const TLoteConvertido& lote) {
        if (context_.Json()) {
            TJson notes = TJson::array();
            for (const TConversionNote& note : lote.Notas)
                notes.push_back({{"tipo", NameOfNote(note.Tipo)},
                                 {"passo", note.Passo},
                                 {"guia", note.Guia},
                                 {"linha", note.Linha},
                                 {"elemento", note.Elemento},
                                 {"valor", note.Valor},
                                 {"texto", note.Texto}});
            reports_.push_back({{"arquivo", file},
                                {"origem", lote.Origem},
                                {"destino", lote.Destino},
                                {"passos", lote.Passos},
                                {"notas", std::move(notes)},
                                {"valido", lote.Valido}});
            return;
        }
        if (options_.Detalhar)
            for (const TConversionNote& note : lote.Notas)
                PrintNote(note, 1);
        else
            PrintGroups(lote.Notas);
        context_.Streams.Err << fmt::format(
            "{}: {} -> {}, {}, {}, {}; {}.\n", file, lote.Origem, lote.Destino,
            Counted(CountNotes(lote.Notas, TConversionNoteType::ntPerda), "perda", "perdas"),
            Counted(CountNotes(lote.Notas, TConversionNoteType::ntPendencia), "pendência", "pendências"),
            Counted(CountNotes(lote.Notas, TConversionNoteType::ntMudanca), "mudança", "mudanças"),
            lote.Valido ? "válido pelo schema da nova versão" : "ainda inválido pelo schema da nova versão");
    }

    /// One line for all notes of one cause, at the place of the first.
    void PrintGroups(const TConversionNotes& notes) const {
        using TKey = std::tuple<TConversionNoteType, std::string_view, std::string_view, std::string_view>;
        std::map<TKey, std::size_t> counts;
        const auto key = [](const TConversionNote& note) {
            return TKey(note.Tipo, note.Passo, note.Elemento, note.Texto);
        };
        for (const TConversionNote& note : notes)
            ++counts[key(note)];
        for (const TConversionNote& note : notes)
            if (const std::size_t count = std::exchange(counts[key(note)], 0); count != 0)
                PrintNote(note, count);
    }

    void PrintNote(const TConversionNote& note, std::size_t count) const {
        const TPalette palette(context_.Streams.ErrIsTerminal);
        std::string place = fmt::format("linha {}", note.Linha);
        if (!note.Guia.empty())
            place += ", guia " + note.Guia;
        std::string line = note.Valor; // a line a note, whatever the value holds
        std::replace_if(line.begin(), line.end(), IsXmlSpace, ' ');
        std::string value = line.empty() ? std::string() : fmt::format(" Valor: \"{}\".", line);
        if (count > 1)
            value += fmt::format(" E mais {} do mesmo tipo.", Counted(count - 1, "nota", "notas"));
        context_.Streams.Err << fmt::format("{}: {}: {} ({}): {}{}\n",
                                            palette.Severity(SeverityOf(note.Tipo), LabelOfNote(note.Tipo)),
                                            note.Passo, note.Elemento, place, note.Texto, value);
    }

    const TCliContext& context_;
    const TConverterOptions& options_;
    TConversionOptions conversion_;
    TJson reports_ = TJson::array();
};

} // namespace

int RunConverter(const TCliContext& context, const TConverterOptions& options) {
    CheckOptions(options);
    return TConverterCommand(context, options).Run();
}

int RunVersoes(const TCliContext& context, const std::string& arquivo) {
    const TOpenedFile opened = OpenTissFile(context, arquivo);
    if (opened.Arquivo == nullptr)
        return opened.Status;
    const TVersionConverter converter;
    const std::string versao(opened.Arquivo->Versao());
    try {
        converter.RequireConvertible(*opened.Arquivo, "");
    } catch (const EConversionNotSupported& error) {
        context.Error(fmt::format("{}: {}", arquivo, error.what()));
        return kExitInvalid;
    }
    const std::vector<std::string> up = converter.NextVersions(opened.Arquivo->TipoTransacao(), versao);
    const std::vector<std::string> down = converter.PreviousVersions(opened.Arquivo->TipoTransacao(), versao);
    std::ostream& out = context.Streams.Out;
    if (context.Json())
        out << JsonText({{"arquivo", arquivo}, {"versao", versao}, {"posteriores", up}, {"anteriores", down}})
            << '\n';
    else
        out << fmt::format("Versão atual: {}\nPosteriores: {}\nAnteriores: {}\n", versao,
                           up.empty() ? "nenhuma" : fmt::format("{}", fmt::join(up, ", ")),
                           down.empty() ? "nenhuma" : fmt::format("{}", fmt::join(down, ", ")));
    return kExitValid;
}

} // namespace conferix
