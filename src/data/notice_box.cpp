#include "data/notice_box.h"

#include <SQLiteCpp/Column.h>
#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <SQLiteCpp/Transaction.h>

#include <algorithm>
#include <array>
#include <set>
#include <utility>

namespace conferix {

namespace {

// In the order of the enumeration.
constexpr std::array<std::string_view, 3> kLevels = {"informacao", "aviso", "importante"};

/// The keys of a subject, also of its deleted notices.
std::set<std::string> KeysOf(SQLite::Database& database, std::string_view subject) {
    SQLite::Statement select(database, "SELECT CHAVE FROM TB_AVISO WHERE ASSUNTO = ?");
    select.bind(1, std::string(subject));
    std::set<std::string> keys;
    while (select.executeStep())
        keys.insert(select.getColumn(0).getString());
    return keys;
}

void Insert(SQLite::Database& database, const TNotice& notice) {
    SQLite::Statement insert(
        database, "INSERT OR IGNORE INTO TB_AVISO (ASSUNTO, CHAVE, DATA, NIVEL, TITULO, TEXTO, ENDERECO) "
                  "VALUES (?, ?, COALESCE(NULLIF(?, ''), datetime('now', 'localtime')), ?, ?, ?, ?)");
    int index = 0;
    for (const std::string& value :
         {notice.Subject, notice.Key, notice.Date, std::string(NameOf(notice.Level)), notice.Title,
          notice.Text, notice.Address})
        insert.bind(++index, value);
    insert.exec();
    SQLite::Statement trim(database,
                           "DELETE FROM TB_AVISO WHERE NUMERO <= (SELECT MAX(NUMERO) FROM TB_AVISO) - ?");
    trim.bind(1, TNoticeBox::kKept);
    trim.exec();
}

} // namespace

std::string_view NameOf(TNoticeLevel level) {
    return kLevels.at(static_cast<std::size_t>(level));
}

TNoticeLevel NoticeLevelOf(std::string_view name) {
    const auto found = std::ranges::find(kLevels, name);
    return found == kLevels.end() ? TNoticeLevel::Information
                                  : static_cast<TNoticeLevel>(found - kLevels.begin());
}

TNoticeBox::TNoticeBox(TDatabase database, std::function<void(const std::string&)> onFailure)
    : database_(std::move(database), "Os avisos não serão guardados; o resto do programa não depende deles.",
                std::move(onFailure)) {}

void TNoticeBox::Add(const TNotice& notice) {
    database_.Use(true, [&](SQLite::Database& database) {
        if (!KeysOf(database, notice.Subject).contains(notice.Key))
            Insert(database, notice);
    });
}

void TNoticeBox::SetAll(std::string_view subject, std::span<const TNotice> notices) {
    database_.Use(!notices.empty(), [&](SQLite::Database& database) {
        std::set<std::string> gone = KeysOf(database, subject);
        std::vector<const TNotice*> fresh;
        for (const TNotice& notice : notices)
            if (gone.erase(notice.Key) == 0)
                fresh.push_back(&notice);
        if (gone.empty() && fresh.empty())
            return;
        SQLite::Transaction transaction(database);
        SQLite::Statement remove(database, "DELETE FROM TB_AVISO WHERE ASSUNTO = ? AND CHAVE = ?");
        for (const std::string& key : gone) {
            remove.bind(1, std::string(subject));
            remove.bind(2, key);
            remove.exec();
            remove.reset();
        }
        for (const TNotice* notice : fresh)
            Insert(database, *notice);
        transaction.commit();
    });
}

std::vector<TNotice> TNoticeBox::Notices(bool alsoRead) {
    std::vector<TNotice> notices;
    database_.Use(false, [&](SQLite::Database& database) {
        SQLite::Statement select(
            database,
            "SELECT NUMERO, ASSUNTO, CHAVE, DATA, NIVEL, TITULO, TEXTO, ENDERECO, LIDO FROM TB_AVISO "
            "WHERE EXCLUIDO = 0 AND (LIDO = 0 OR ?) ORDER BY NUMERO DESC");
        select.bind(1, alsoRead ? 1 : 0);
        while (select.executeStep())
            notices.push_back({.Subject = select.getColumn(1).getString(),
                               .Key = select.getColumn(2).getString(),
                               .Title = select.getColumn(5).getString(),
                               .Text = select.getColumn(6).getString(),
                               .Level = NoticeLevelOf(select.getColumn(4).getString()),
                               .Address = select.getColumn(7).getString(),
                               .Date = select.getColumn(3).getString(),
                               .Number = select.getColumn(0).getInt64(),
                               .Read = select.getColumn(8).getInt() != 0});
    });
    return notices;
}

std::int64_t TNoticeBox::Unread() {
    std::int64_t count = 0;
    database_.Use(false, [&](SQLite::Database& database) {
        count =
            database.execAndGet("SELECT COUNT(*) FROM TB_AVISO WHERE EXCLUIDO = 0 AND LIDO = 0").getInt64();
    });
    return count;
}

bool TNoticeBox::MarkRead(std::int64_t number) {
    return Change("UPDATE TB_AVISO SET LIDO = 1 WHERE NUMERO = ? AND EXCLUIDO = 0", number);
}

bool TNoticeBox::Delete(std::int64_t number) {
    return Change("UPDATE TB_AVISO SET EXCLUIDO = 1 WHERE NUMERO = ? AND EXCLUIDO = 0", number);
}

bool TNoticeBox::Change(const char* sql, std::int64_t number) {
    bool changed = false;
    database_.Use(false, [&](SQLite::Database& database) {
        SQLite::Statement change(database, sql);
        change.bind(1, number);
        changed = change.exec() != 0;
    });
    return changed;
}

} // namespace conferix
