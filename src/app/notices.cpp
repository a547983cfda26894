#include "app/notices.h"

#include "app/terminology_state.h"
#include "data/tuss.h"
#include "data/tuss_connection.h"
#include "model/arquivo_tiss_factory.h"
#include "platform/platform.h"

#include <fmt/chrono.h>
#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <ctime>

namespace conferix {

namespace {

constexpr std::size_t kNamedFiles = 5; ///< in one notice

/// A key for what happens again and again.
std::string NewKey() {
    static std::atomic<unsigned> count = 0;
    return fmt::format("{}-{}", std::chrono::system_clock::now().time_since_epoch().count(), ++count);
}

std::string NowText() {
    return fmt::format("{:%d/%m/%Y, às %H:%M}", fmt::localtime(std::time(nullptr)));
}

std::string Number(std::size_t count, std::string_view one, std::string_view many) {
    return fmt::format("{} {}", count, count == 1 ? one : many);
}

TNotice StandardNotice() {
    std::string_view message;
    std::string_view monitoring;
    for (const TArquivoTissClass& version : TArquivoTissFactory::Classes()) {
        std::string_view& newest =
            version.Tipo == TEnumTipoArquivoTiss::taMensagemTISS ? message : monitoring;
        newest = std::max(newest, version.Versao);
    }
    return {.Subject = "padrao",
            .Key = fmt::format("{} {}", message, monitoring),
            .Title = fmt::format("Padrão TISS até a versão {}", message),
            .Text = fmt::format("Este programa confere mensagens até a versão {} do padrão e arquivos de "
                                "monitoramento até a {}. Uma versão mais nova que a ANS publique pede uma "
                                "atualização do programa.",
                                message, monitoring)};
}

/// Tables with terms, by number, and those without.
TNotice TablesNotice(const std::vector<TTussTableStatistics>& tables) {
    std::string installed;
    std::string missing;
    for (const TTussTableStatistics& table : tables) {
        if (table.Name == kTableTussInativado) // what left the tables, none that the regulator publishes
            continue;
        constexpr std::string_view kPrefix = "TB_TUSS_";
        const std::string name =
            table.Name == kTableCidade ? "municípios" : table.Name.substr(kPrefix.size());
        std::string& into = table.Installed ? installed : missing;
        into += (into.empty() ? "" : ", ") + name;
        if (table.Installed && table.NewestStart)
            into +=
                fmt::format(" (vigências até {:02}/{:04})", static_cast<unsigned>(table.NewestStart->month()),
                            static_cast<int>(table.NewestStart->year()));
    }
    TNotice notice = {.Subject = "tabelas",
                      .Key = installed + '|' + missing,
                      .Title = "Tabelas da TUSS à mão",
                      .Text = installed.empty() ? std::string() : "Instaladas: " + installed + "."};
    if (!missing.empty()) {
        notice.Level = TNoticeLevel::Warning;
        notice.Text += fmt::format("{}Não instaladas: {}. Os códigos dessas tabelas não são verificados; "
                                   "importe a publicação da ANS (conferix terminologia importar ARQUIVO).",
                                   notice.Text.empty() ? "" : " ", missing);
    }
    return notice;
}

std::vector<TNotice> OldTablesNotices(const std::vector<TTableImport>& imports) {
    constexpr std::size_t kDay = 10;
    std::vector<TNotice> notices;
    for (const TTableImport& import : imports)
        if (IsOldImport(import)) {
            const std::string day = import.Time.substr(0, kDay);
            notices.push_back(
                {.Subject = "terminologia-antiga",
                 .Key = import.Tabela + ' ' + day,
                 .Title = fmt::format("Tabela {} importada há mais de seis meses", import.Tabela),
                 .Text = fmt::format("A tabela {} da TUSS é de uma importação de {}. A ANS "
                                     "publica novos termos várias vezes por ano; importe a "
                                     "publicação mais recente (conferix terminologia importar "
                                     "ARQUIVO).",
                                     import.Tabela, day),
                 .Level = TNoticeLevel::Warning});
        }
    return notices;
}

} // namespace

void Notify(const std::function<void(TNoticeBox&)>& note) {
    try {
        TNoticeBox box{TDatabase()};
        note(box);
    } catch (const EFile&) { // no data folder can be made
        return;
    } catch (const EDataFolderUnknown&) {
        return;
    }
}

TNoticesOfSubjects StateNotices(const TDBConnectionFactory& terminology) {
    TNoticesOfSubjects state = {{"padrao", {StandardNotice()}}};
    try {
        const auto connection = terminology.CreateConnection();
        state.push_back({"tabelas", {TablesNotice(connection->Statistics())}});
        state.emplace_back("terminologia-antiga", OldTablesNotices(NewestImports(connection->FileName())));
    } catch (const ETerminologyNotOpened&) { // who uses it is told
        return state;
    } catch (const ETerminologyNotRead&) {
        return state;
    }
    return state;
}

void NoteState(TNoticeBox& box, const TNoticesOfSubjects& state) {
    for (const auto& [subject, notices] : state)
        box.SetAll(subject, notices);
}

void NoteUpdates(TNoticeBox& box, const std::vector<TPackage>& packages,
                 const std::vector<TNotice>& published) {
    std::vector<TNotice> offered;
    for (const TPackage& package : packages) {
        TNotice notice = {.Subject = package.Installed ? "instalado" : "oferta",
                          .Key = package.Name + ' ' + package.Sha256};
        if (package.Installed) {
            notice.Title = fmt::format("Atualização instalada: {} {}", package.Name, package.Version);
            notice.Text = fmt::format("O pacote de {} está em uso.", package.Kind);
            box.Add(notice);
        } else {
            notice.Title = fmt::format("Atualização disponível: {} {}", package.Name, package.Version);
            notice.Text = fmt::format("Há um pacote de {} que ainda não está instalado (conferix atualizar).",
                                      package.Kind);
            offered.push_back(std::move(notice));
        }
    }
    box.SetAll("oferta", offered);
    for (const TNotice& notice : published)
        box.Add(notice);
}

void NoteBatch(TNoticeBox& box, const TBatchOutcome& batch) {
    const std::size_t files = batch.Valid + batch.Invalid + batch.NotVerified;
    box.Add({.Subject = "conferencia",
             .Key = NewKey(),
             .Title = fmt::format("Terminou a conferência de {}", Number(files, "arquivo", "arquivos")),
             .Text = fmt::format("{}Em {}: {}, {}, {}.",
                                 batch.What.empty() ? std::string() : fmt::format("Pasta {}. ", batch.What),
                                 NowText(), Number(batch.Valid, "válido", "válidos"),
                                 Number(batch.Invalid, "inválido", "inválidos"),
                                 Number(batch.NotVerified, "não verificado", "não verificados")),
             .Level =
                 batch.Invalid + batch.NotVerified == 0 ? TNoticeLevel::Information : TNoticeLevel::Warning});
}

void NoteConversions(TNoticeBox& box, const std::vector<TOpenConversion>& files) {
    if (files.empty())
        return;
    std::string text;
    for (const TOpenConversion& file : files) {
        if (&file == &files.front() + kNamedFiles) {
            text += fmt::format(" E mais {}.", Number(files.size() - kNamedFiles, "arquivo", "arquivos"));
            break;
        }
        text += fmt::format("{}{}, para a versão {}: {}.", text.empty() ? "" : " ", file.File, file.To,
                            Number(file.OpenPoints, "ponto em aberto", "pontos em aberto"));
    }
    box.Add({.Subject = "conversao",
             .Key = NewKey(),
             .Title = fmt::format("{} com pontos em aberto",
                                  Number(files.size(), "arquivo convertido", "arquivos convertidos")),
             .Text = text + " Complete o que falta antes de enviar.",
             .Level = TNoticeLevel::Warning});
}

} // namespace conferix
