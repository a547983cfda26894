#include "app/cli/commands.h"
#include "app/notices.h"
#include "platform/platform.h"
#include "report/console.h"
#include "report/message_json.h"

#include <fmt/format.h>

#include <charconv>
#include <ostream>
#include <string>

namespace conferix {

namespace {

TJson NoticeJson(const TNotice& notice) {
    return {{"numero", notice.Number},    {"data", notice.Date},    {"nivel", NameOf(notice.Level)},
            {"assunto", notice.Subject},  {"titulo", notice.Title}, {"texto", notice.Text},
            {"endereco", notice.Address}, {"lido", notice.Read}};
}

/// The day of "2026-03-01 10:00:00" as people write it.
std::string DayText(const std::string& date) {
    constexpr std::size_t kDay = 10;
    if (date.size() < kDay)
        return Visible(date);
    return fmt::format("{}/{}/{}", Visible(date.substr(8, 2)), Visible(date.substr(5, 2)),
                       Visible(date.substr(0, 4)));
}

void PrintNotice(std::ostream& out, const TPalette& palette, const TNotice& notice) {
    const std::string title = fmt::format("{}. {}: {}{}", notice.Number, DayText(notice.Date),
                                          Visible(notice.Title), notice.Read ? " (lido)" : "");
    out << (notice.Level == TNoticeLevel::Information
                ? palette.Bold(title)
                : palette.Severity(notice.Level == TNoticeLevel::Warning ? TMessageType::mtWarning
                                                                         : TMessageType::mtError,
                                   title))
        << "\n   " << Visible(notice.Text) << '\n';
    if (!notice.Address.empty())
        out << "   " << Visible(notice.Address) << '\n';
}

std::int64_t NumberOf(const std::string& text) {
    std::int64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || number < 1)
        throw EUsage(
            fmt::format("\"{}\" não é o número de um aviso; conferix avisos --todos os mostra", text));
    return number;
}

int TellFailure(const TCliContext& context, std::string reason) {
    if (reason.ends_with('.'))
        reason.pop_back();
    context.Error(reason + ". Nenhum aviso é mostrado: eles ficam na pasta de dados, que não pode ser usada "
                           "(CONFERIX_DADOS indica outra)");
    return kExitUnreadable;
}

/// What the command does with the inbox of the data folder. Raises EFile and EDataFolderUnknown where that
/// folder cannot be used.
int RunWithBox(const TCliContext& context, const TAvisosOptions& options) {
    std::string failure;
    TNoticeBox box(TDatabase(), [&](const std::string& reason) { failure = reason; });
    std::vector<std::int64_t> read;
    std::vector<std::int64_t> deleted;
    for (const std::string& text : options.Lido)
        read.push_back(NumberOf(text));
    for (const std::string& text : options.Excluir)
        deleted.push_back(NumberOf(text));
    NoteState(box, StateNotices(context.TerminologyFactory()));
    int status = kExitValid;
    const auto check = [&](bool found, std::int64_t number) {
        if (found || !failure.empty())
            return;
        context.Error(fmt::format("não há aviso de número {}", number));
        status = kExitInvalid;
    };
    for (const std::int64_t number : read)
        check(box.MarkRead(number), number);
    for (const std::int64_t number : deleted)
        check(box.Delete(number), number);

    const std::vector<TNotice> notices = box.Notices(options.Todos);
    if (!failure.empty())
        return TellFailure(context, failure);
    if (status != kExitValid)
        return status;
    std::ostream& out = context.Streams.Out;
    if (context.Json()) {
        TJson json = TJson::array();
        for (const TNotice& notice : notices)
            json.push_back(NoticeJson(notice));
        out << JsonText(json) << '\n';
        return status;
    }
    const TPalette palette(context.Streams.OutIsTerminal);
    for (const TNotice& notice : notices)
        PrintNotice(out, palette, notice);
    if (notices.empty())
        out << (options.Todos ? "Não há avisos.\n"
                              : "Não há avisos novos; conferix avisos --todos mostra também os lidos.\n");
    return status;
}

} // namespace

int RunAvisos(const TCliContext& context, const TAvisosOptions& options) {
    try {
        return RunWithBox(context, options);
    } catch (const EFile& error) {
        return TellFailure(context, error.what());
    } catch (const EDataFolderUnknown& error) {
        return TellFailure(context, error.what());
    }
}

} // namespace conferix
