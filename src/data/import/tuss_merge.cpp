#include "data/import/tuss_merge.h"

#include "data/tuss.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

namespace conferix {

namespace {

constexpr std::array<std::string_view, 4> kTablesOf64 = {"18", "19", "20", "22"};
constexpr std::int64_t kProgressStep = 1024;

bool IsTermTable(std::string_view table) {
    return std::find(kTermTables.begin(), kTermTables.end(), table) != kTermTables.end();
}

/// A prepared statement whose parameters are texts; an empty text is NULL where it says so.
class TQuery {
  public:
    TQuery(SQLite::Database& database, const std::string& sql) : statement_(database, sql) {}

    /// Starts it anew. The texts must live until it is run.
    template<typename... TTexts>
    TQuery& With(const TTexts&... texts) {
        statement_.reset();
        int column = 0;
        (statement_.bindNoCopy(++column, texts), ...);
        return *this;
    }
    /// Makes an empty parameter NULL.
    TQuery& NullIfEmpty(int column, const std::string& text) {
        if (text.empty()) {
            statement_.bind(column);
        }
        return *this;
    }
    TQuery& Number(int column, std::int64_t value) {
        statement_.bind(column, value);
        return *this;
    }
    bool Step() { return statement_.executeStep(); }
    void Run() {
        statement_.exec();
        statement_.reset();
    }
    std::string Text(int column) { return statement_.getColumn(column).getString(); }
    std::int64_t Integer(int column) { return statement_.getColumn(column).getInt64(); }
    void Reset() { statement_.reset(); }

  private:
    SQLite::Statement statement_;
};

std::int64_t Count(SQLite::Database& database, const std::string& sql) {
    return database.execAndGet(sql).getInt64();
}

/// What a term is called, by a publication that says since when.
using TDescription = std::pair<std::string, std::string>; // start of the period or "", text

/// What the terms stand for, and the index of their words.
class TDescriptions {
  public:
    explicit TDescriptions(SQLite::Database& database)
        : find_(database, "SELECT ID, DATA_INICIO_VIGENCIA, TERMO FROM TB_TUSS_TERMO"
                          " WHERE TABELA = ? AND CODIGO = ?"),
          insert_(database, "INSERT INTO TB_TUSS_TERMO (TABELA, CODIGO, DATA_INICIO_VIGENCIA, TERMO)"
                            " VALUES (?, ?, ?, ?)"),
          update_(database, "UPDATE TB_TUSS_TERMO SET DATA_INICIO_VIGENCIA = ?, TERMO = ? WHERE ID = ?"),
          remove_(database, "DELETE FROM TB_TUSS_TERMO WHERE ID = ?"),
          index_(database, "INSERT INTO TB_TUSS_BUSCA (TERMO, rowid) VALUES (?, ?)"),
          unindex_(database,
                   "INSERT INTO TB_TUSS_BUSCA (TERMO, rowid, TB_TUSS_BUSCA) VALUES (?, ?, 'delete')"),
          database_(database) {}

    /// Keeps the description of the newest period; `replace`: whatever is known. Of two of one period either
    /// would do: the choice must not depend on the order. True when the text is another now.
    bool Set(const std::string& table, const std::string& code, const TDescription& said, bool replace) {
        if (said.second.empty()) {
            return false;
        }
        if (!find_.With(table, code).Step()) {
            insert_.With(table, code, said.first, said.second).Run();
            index_.With(said.second).Number(2, database_.getLastInsertRowid()).Run();
            return true;
        }
        const std::int64_t id = find_.Integer(0);
        const TDescription known{find_.Text(1), find_.Text(2)};
        find_.Reset();
        if (said == known || (!replace && said < known)) {
            return false;
        }
        update_.With(said.first, said.second).Number(3, id).Run();
        if (said.second == known.second) {
            return false;
        }
        unindex_.With(known.second).Number(2, id).Run();
        index_.With(said.second).Number(2, id).Run();
        return true;
    }

    void Remove(std::int64_t id, const std::string& text) {
        unindex_.With(text).Number(2, id).Run();
        remove_.With().Number(1, id).Run();
    }

  private:
    TQuery find_;
    TQuery insert_;
    TQuery update_;
    TQuery remove_;
    TQuery index_;
    TQuery unindex_;
    SQLite::Database& database_;
};

/// The rows of the terms of one table.
class TTermTable {
  public:
    TTermTable(SQLite::Database& database, const std::string& table)
        : select_(database,
                  "SELECT IFNULL(DATA_INICIO_VIGENCIA, ''), IFNULL(DATA_FIM_IMPLANTACAO, '') FROM " +
                      Name(table) + " WHERE CODIGO = ?"),
          replace_(database, "INSERT OR REPLACE INTO " + Name(table) +
                                 " (CODIGO, DATA_INICIO_VIGENCIA, DATA_FIM_IMPLANTACAO) VALUES (?, ?, ?)"),
          remove_(database, "DELETE FROM " + Name(table) + " WHERE CODIGO = ?") {}

    std::optional<TPeriod> Find(const std::string& code) {
        std::optional<TPeriod> found;
        if (select_.With(code).Step()) {
            found = TPeriod{select_.Text(0), {}, select_.Text(1)};
        }
        select_.Reset();
        return found;
    }

    void Set(const std::string& code, const std::optional<TPeriod>& period) {
        if (period) {
            replace_.With(code, period->Start, period->ImplementationEnd)
                .NullIfEmpty(2, period->Start)
                .NullIfEmpty(3, period->ImplementationEnd)
                .Run();
        } else {
            remove_.With(code).Run();
        }
    }

  private:
    static std::string Name(const std::string& table) { return std::string(TussTableName(table)); }

    TQuery select_;
    TQuery replace_;
    TQuery remove_;
};

/// The rows of one table 64 term, by start.
struct TRow64 {
    TPeriod Period;
    std::string Grupo;
    std::int64_t Consolidado = 0;

    bool operator==(const TRow64&) const = default;
};

std::vector<TRow64> MergeRows64(const std::vector<TRow64>& rows) {
    std::vector<TPeriod> periods;
    periods.reserve(rows.size());
    for (const TRow64& row : rows) {
        periods.push_back(row.Period);
    }
    std::vector<TRow64> merged;
    for (TPeriod& period : MergePeriods(std::move(periods))) {
        TRow64& added = merged.emplace_back();
        added.Period = std::move(period);
        // A history does not name the group, so that the row that does wins.
        for (const TRow64& row : rows) {
            if (row.Period.Start == added.Period.Start) {
                std::tie(added.Grupo, added.Consolidado) = std::max(
                    std::tuple(added.Grupo, added.Consolidado), std::tuple(row.Grupo, row.Consolidado));
            }
        }
    }
    return merged;
}

class TMerger {
  public:
    TMerger(SQLite::Database& database, const TLoadArea& loaded, bool replace,
            const std::function<void(double)>& onProgress)
        : database_(database), loaded_(loaded), replace_(replace), onProgress_(onProgress),
          descriptions_(database),
          findInactivated_(database,
                           "SELECT DATA_FIM_VIGENCIA FROM TB_TUSS_INATIVADO WHERE TABELA = ? AND CODIGO = ?"),
          setInactivated_(database, "INSERT OR REPLACE INTO TB_TUSS_INATIVADO"
                                    " (TABELA, CODIGO, DATA_FIM_VIGENCIA) VALUES (?, ?, ?)"),
          removeInactivated_(database, "DELETE FROM TB_TUSS_INATIVADO WHERE TABELA = ? AND CODIGO = ?"),
          findPeriods_(database, "SELECT DATA_INICIO_VIGENCIA, IFNULL(DATA_FIM_VIGENCIA, ''),"
                                 " IFNULL(DATA_FIM_IMPLANTACAO, '') FROM TB_TUSS_PERIODO"
                                 " WHERE TABELA = ? AND CODIGO = ? ORDER BY 1"),
          addPeriod_(database, "INSERT INTO TB_TUSS_PERIODO (TABELA, CODIGO, DATA_INICIO_VIGENCIA,"
                               " DATA_FIM_VIGENCIA, DATA_FIM_IMPLANTACAO) VALUES (?, ?, ?, ?, ?)"),
          removePeriods_(database, "DELETE FROM TB_TUSS_PERIODO WHERE TABELA = ? AND CODIGO = ?"),
          addCity_(database, "INSERT OR IGNORE INTO TB_CIDADE (CODIGO) VALUES (?)"),
          find64_(database, "SELECT IFNULL(DATA_INICIO_VIGENCIA, ''), IFNULL(DATA_FIM_VIGENCIA, ''),"
                            " IFNULL(DATA_FIM_IMPLANTACAO, ''), IFNULL(GRUPO, ''), ENVIO_CONSOLIDADO"
                            " FROM TB_TUSS_64 WHERE TABELA = ? AND CODIGO = ? ORDER BY 1"),
          add64_(database, "INSERT INTO TB_TUSS_64 (TABELA, CODIGO, GRUPO, DATA_INICIO_VIGENCIA,"
                           " DATA_FIM_VIGENCIA, DATA_FIM_IMPLANTACAO, ENVIO_CONSOLIDADO)"
                           " VALUES (?, ?, ?, ?, ?, ?, ?)"),
          remove64_(database, "DELETE FROM TB_TUSS_64 WHERE TABELA = ? AND CODIGO = ?") {
        for (const std::string_view table : kTermTables) {
            const std::string number(table);
            tables_.emplace(number, std::make_unique<TTermTable>(database, number));
        }
    }

    TChanges Run() {
        const bool prune = replace_ && !loaded_.CompleteTables().empty();
        if (prune) {
            database_.exec("CREATE INDEX carga.IX_LINHA ON LINHA (TABELA, CODIGO);"
                           "CREATE INDEX carga.IX_LINHA_64 ON LINHA_64 (TABELA, CODIGO)");
        }
        MergeTerms();
        AssignTables64();
        MergeTable64();
        if (prune) {
            Prune();
        }
        onProgress_(1);
        return std::move(changes_);
    }

  private:
    void Progress() {
        if (++done_ % kProgressStep == 0) {
            onProgress_(std::min(1.0, static_cast<double>(done_) / static_cast<double>(loaded_.Rows())));
        }
    }

    /// Goes through rows in the order of table and code: `add` takes each, `flush` comes after the last one
    /// of a term.
    template<typename TAdd, typename TFlush>
    void WalkTerms(const std::string& sql, const TAdd& add, const TFlush& flush) {
        TQuery rows(database_, sql + " ORDER BY TABELA, CODIGO");
        std::string table;
        std::string code;
        while (rows.Step()) {
            std::string nextTable = rows.Text(0);
            std::string nextCode = rows.Text(1);
            if (!table.empty() && (nextTable != table || nextCode != code)) {
                flush(table, code);
            }
            table = std::move(nextTable);
            code = std::move(nextCode);
            add(rows);
            Progress();
        }
        if (!table.empty()) {
            flush(table, code);
        }
    }

    void MergeTerms() {
        std::vector<TPeriod> periods;
        TDescription text;
        WalkTerms(
            "SELECT TABELA, CODIGO, INICIO, FIM, IMPLANTACAO, TERMO FROM carga.LINHA",
            [&](TQuery& row) {
                periods.push_back({row.Text(2), row.Text(3), row.Text(4)});
                if (TDescription said(row.Text(2), row.Text(5)); !said.second.empty()) {
                    text = std::max(text, said);
                }
            },
            [&](const std::string& table, const std::string& code) {
                MergeTerm(table, code, std::exchange(periods, {}), std::exchange(text, {}));
            });
    }

    void MergeTerm(const std::string& table, const std::string& code, std::vector<TPeriod> periods,
                   const TDescription& text) {
        if (table == kCities) {
            MergeCity(code);
            return;
        }
        const auto terms = tables_.find(table);
        const bool isStored = terms != tables_.end();
        TTermRows before;
        if (isStored) {
            before.Current = terms->second->Find(code);
        } else {
            std::erase_if(periods, [](const TPeriod& period) { return period.End.empty(); });
        }
        before.Earlier = Periods(table, code);
        before.LastEnd = Inactivated(table, code);
        const bool wasKnown = before.Current || !before.Earlier.empty() || !before.LastEnd.empty();
        if (periods.empty() && !wasKnown) {
            return;
        }
        std::vector<TPeriod> known = Known(before);
        if (!Replaces(table)) {
            periods.insert(periods.end(), known.begin(), known.end());
        }
        periods = MergePeriods(std::move(periods));
        const TTermRows after = RowsOfPeriods(periods);
        Write(table, code, before, after);
        const bool newText = isStored && descriptions_.Set(table, code, text, Replaces(table));
        CountChange(changes_[table], wasKnown, before == after && !newText,
                    !after.Current && (before.Current || !wasKnown));
    }

    static void CountChange(TTableChanges& changes, bool wasKnown, bool isSame, bool hasEnded) {
        ++(isSame ? changes.Same : hasEnded ? changes.Ended : !wasKnown ? changes.Added : changes.Changed);
    }

    /// The periods behind the rows of a term. A database that was made otherwise may hold an end without
    /// its period.
    static std::vector<TPeriod> Known(const TTermRows& rows) {
        std::vector<TPeriod> periods = rows.Earlier;
        if (rows.Current) {
            periods.push_back(*rows.Current);
        }
        periods = MergePeriods(std::move(periods));
        if (rows.LastEnd > RowsOfPeriods(periods).LastEnd) {
            periods.insert(periods.begin(), {{}, rows.LastEnd, {}});
            periods = MergePeriods(std::move(periods));
        }
        return periods;
    }

    std::string Inactivated(const std::string& table, const std::string& code) {
        const bool found = findInactivated_.With(table, code).Step();
        std::string end = found ? findInactivated_.Text(0) : std::string();
        findInactivated_.Reset();
        return end;
    }

    std::vector<TPeriod> Periods(const std::string& table, const std::string& code) {
        std::vector<TPeriod> periods;
        findPeriods_.With(table, code);
        while (findPeriods_.Step()) {
            periods.push_back({findPeriods_.Text(0), findPeriods_.Text(1), findPeriods_.Text(2)});
        }
        findPeriods_.Reset();
        return periods;
    }

    void Write(const std::string& table, const std::string& code, const TTermRows& before,
               const TTermRows& after) {
        if (before.Current != after.Current) {
            tables_.find(table)->second->Set(code, after.Current);
        }
        if (before.LastEnd != after.LastEnd) {
            if (after.LastEnd.empty()) {
                removeInactivated_.With(table, code).Run();
            } else {
                setInactivated_.With(table, code, after.LastEnd).Run();
            }
        }
        if (before.Earlier != after.Earlier) {
            removePeriods_.With(table, code).Run();
            for (const TPeriod& period : after.Earlier) {
                addPeriod_.With(table, code, period.Start, period.End, period.ImplementationEnd)
                    .NullIfEmpty(4, period.End)
                    .NullIfEmpty(5, period.ImplementationEnd)
                    .Run();
            }
        }
    }

    void MergeCity(const std::string& code) {
        const std::int64_t before = database_.getTotalChanges();
        addCity_.With(code).Run();
        const std::string withoutCheckDigit = code.substr(0, code.size() - 1);
        addCity_.With(withoutCheckDigit).Run();
        CountChange(changes_[std::string(kCities)], false, database_.getTotalChanges() == before, false);
    }

    bool Replaces(const std::string& table) const {
        return replace_ && loaded_.CompleteTables().count(table) > 0;
    }

    /// Gives rows of table 64 without a table those in which their code is a term, now or in a later import.
    void AssignTables64() {
        for (const std::string_view table : kTablesOf64) {
            const std::string isTerm =
                fmt::format(" EXISTS (SELECT 1 FROM {} t WHERE t.CODIGO = s.CODIGO) OR EXISTS (SELECT 1 FROM"
                            " TB_TUSS_INATIVADO i WHERE i.TABELA = '{}' AND i.CODIGO = s.CODIGO)",
                            TussTableName(table), table);
            const auto assign = [&](std::string_view from, int isPresent) {
                database_.exec(fmt::format("INSERT INTO carga.LINHA_64 SELECT '{}', CODIGO, INICIO, FIM,"
                                           " IMPLANTACAO, CONSOLIDADO, '', {} FROM {} s WHERE{}",
                                           table, isPresent, from, isTerm));
            };
            assign("carga.LINHA_64_SEM_TABELA", 1);
            if (Replaces(fmt::format("64/{}", table))) {
                database_.exec("DELETE FROM TB_TUSS_64_SEM_TABELA AS s WHERE" + isTerm);
            } else {
                assign("TB_TUSS_64_SEM_TABELA", 0);
            }
        }
        const std::string columns = "CODIGO, INICIO, FIM, IMPLANTACAO, CONSOLIDADO";
        database_.exec("INSERT OR IGNORE INTO TB_TUSS_64_SEM_TABELA (" + columns + ") SELECT " + columns +
                       " FROM carga.LINHA_64_SEM_TABELA");
    }

    void MergeTable64() {
        std::vector<TRow64> group;
        bool isPresent = false;
        WalkTerms(
            "SELECT TABELA, CODIGO, INICIO, FIM, IMPLANTACAO, GRUPO, CONSOLIDADO, ATUAL FROM carga.LINHA_64",
            [&](TQuery& row) {
                group.push_back({{row.Text(2), row.Text(3), row.Text(4)}, row.Text(5), row.Integer(6)});
                isPresent = isPresent || row.Integer(7) != 0;
            },
            [&](const std::string& table, const std::string& code) {
                MergeTerm64(table, code, std::exchange(group, {}), std::exchange(isPresent, false));
            });
    }

    void MergeTerm64(const std::string& table, const std::string& code, std::vector<TRow64> rows,
                     bool isPresent) {
        std::vector<TRow64> before;
        find64_.With(table, code);
        while (find64_.Step()) {
            before.push_back(
                {{find64_.Text(0), find64_.Text(1), find64_.Text(2)}, find64_.Text(3), find64_.Integer(4)});
        }
        find64_.Reset();
        if (!Replaces("64/" + table)) {
            rows.insert(rows.end(), before.begin(), before.end());
        }
        const std::vector<TRow64> after = MergeRows64(rows);
        if (before != after) {
            if (!before.empty()) {
                remove64_.With(table, code).Run();
            }
            for (const TRow64& row : after) {
                add64_
                    .With(table, code, row.Grupo, row.Period.Start, row.Period.End,
                          row.Period.ImplementationEnd)
                    .NullIfEmpty(3, row.Grupo)
                    .NullIfEmpty(4, row.Period.Start)
                    .NullIfEmpty(5, row.Period.End)
                    .NullIfEmpty(6, row.Period.ImplementationEnd)
                    .Number(7, row.Consolidado)
                    .Run();
            }
        }
        const auto ended = [](const std::vector<TRow64>& all) {
            return std::all_of(all.begin(), all.end(),
                               [](const TRow64& row) { return !row.Period.End.empty(); });
        };
        if (isPresent || before != after) {
            CountChange(changes_["64"], !before.empty(), before == after,
                        ended(after) && (before.empty() || !ended(before)));
        }
    }

    /// Removes what the replaced tables knew and no row of this import names.
    void Prune() {
        for (const std::string& table : loaded_.CompleteTables()) {
            const bool is64 = table.starts_with("64/");
            const std::string number = is64 ? table.substr(3) : table;
            if (table == kCities || number.size() != 2) {
                continue;
            }
            const std::string absent =
                fmt::format(" CODIGO NOT IN (SELECT CODIGO FROM carga.LINHA{} WHERE TABELA = '{}')",
                            is64 ? "_64" : "", number);
            const std::string where = fmt::format(" WHERE TABELA = '{}' AND{}", number, absent);
            if (is64) {
                changes_["64"].Removed +=
                    Count(database_, fmt::format("SELECT COUNT(DISTINCT CODIGO) FROM TB_TUSS_64{}", where));
                database_.exec(fmt::format("DELETE FROM TB_TUSS_64{}", where));
                continue;
            }
            std::string known = fmt::format("SELECT CODIGO FROM TB_TUSS_INATIVADO{}", where);
            const bool isStored = IsTermTable(number);
            const std::string terms =
                isStored ? fmt::format("{} WHERE{}", TussTableName(number), absent) : std::string();
            if (isStored) {
                known += fmt::format(" UNION SELECT CODIGO FROM {}", terms);
            }
            if (const std::int64_t count = Count(database_, fmt::format("SELECT COUNT(*) FROM ({})", known));
                count > 0) {
                changes_[number].Removed += count;
            }
            if (isStored) {
                database_.exec(fmt::format("DELETE FROM {}", terms));
                RemoveDescriptions(where);
            }
            database_.exec(fmt::format("DELETE FROM TB_TUSS_INATIVADO{}", where));
            database_.exec(fmt::format("DELETE FROM TB_TUSS_PERIODO{}", where));
        }
    }

    void RemoveDescriptions(const std::string& where) {
        TQuery query(database_, "SELECT ID, TERMO FROM TB_TUSS_TERMO" + where);
        std::vector<std::pair<std::int64_t, std::string>> gone;
        while (query.Step()) {
            gone.emplace_back(query.Integer(0), query.Text(1));
        }
        for (const auto& [id, text] : gone) {
            descriptions_.Remove(id, text);
        }
    }

    SQLite::Database& database_;
    const TLoadArea& loaded_;
    bool replace_;
    const std::function<void(double)>& onProgress_;
    std::map<std::string, std::unique_ptr<TTermTable>, std::less<>> tables_;
    TDescriptions descriptions_;
    TQuery findInactivated_;
    TQuery setInactivated_;
    TQuery removeInactivated_;
    TQuery findPeriods_;
    TQuery addPeriod_;
    TQuery removePeriods_;
    TQuery addCity_;
    TQuery find64_;
    TQuery add64_;
    TQuery remove64_;
    TChanges changes_;
    std::uint64_t done_ = 0;
};

} // namespace

void CreateImportTables(SQLite::Database& database) {
    for (const TTussTable& table : TussTables()) {
        database.exec(table.CreateSql);
    }
    // A start that is not known is an empty text here, since it is part of a key.
    database.exec(
        "CREATE TABLE IF NOT EXISTS TB_TUSS_PERIODO (TABELA TEXT NOT NULL, CODIGO TEXT NOT NULL,"
        " DATA_INICIO_VIGENCIA TEXT NOT NULL, DATA_FIM_VIGENCIA TEXT, DATA_FIM_IMPLANTACAO TEXT,"
        " PRIMARY KEY (TABELA, CODIGO, DATA_INICIO_VIGENCIA)) WITHOUT ROWID;"
        "CREATE TABLE IF NOT EXISTS TB_TUSS_64_SEM_TABELA (CODIGO TEXT NOT NULL, INICIO TEXT NOT NULL,"
        " FIM TEXT NOT NULL, IMPLANTACAO TEXT NOT NULL, CONSOLIDADO INTEGER NOT NULL,"
        " PRIMARY KEY (CODIGO, INICIO, FIM, IMPLANTACAO, CONSOLIDADO)) WITHOUT ROWID;"
        "CREATE TABLE IF NOT EXISTS TB_TUSS_TERMO (ID INTEGER PRIMARY KEY, TABELA TEXT NOT NULL,"
        " CODIGO TEXT NOT NULL, DATA_INICIO_VIGENCIA TEXT NOT NULL, TERMO TEXT NOT NULL,"
        " UNIQUE (TABELA, CODIGO));"
        "CREATE VIRTUAL TABLE IF NOT EXISTS TB_TUSS_BUSCA USING fts5(TERMO, content = 'TB_TUSS_TERMO',"
        " content_rowid = 'ID', detail = none, columnsize = 0, tokenize = 'unicode61 remove_diacritics 2');"
        "CREATE TABLE IF NOT EXISTS TB_CARGA (ARQUIVO TEXT NOT NULL, SHA256 TEXT NOT NULL,"
        " DATA TEXT NOT NULL, TABELA TEXT NOT NULL, LINHAS INTEGER NOT NULL, INICIO_MAIS_RECENTE TEXT)");
}

void MergeDelivered(SQLite::Database& database, const std::filesystem::path& delivered) {
    SQLite::Statement attach(database, "ATTACH ? AS entregue");
    attach.bind(1, PathText(delivered));
    attach.exec();
    database.exec("INSERT OR IGNORE INTO TB_CIDADE SELECT CODIGO FROM entregue.TB_CIDADE");
    for (const std::string_view table : {"63", "87"}) {
        database.exec(fmt::format(
            "INSERT OR IGNORE INTO TB_TUSS_{0} SELECT CODIGO, DATA_INICIO_VIGENCIA, DATA_FIM_IMPLANTACAO"
            " FROM entregue.TB_TUSS_{0} e WHERE NOT EXISTS (SELECT 1 FROM TB_TUSS_INATIVADO i"
            " WHERE i.TABELA = '{0}' AND i.CODIGO = e.CODIGO)",
            table));
    }
    database.exec("DETACH entregue");
}

TChanges MergeLoaded(SQLite::Database& database, const TLoadArea& loaded, bool replace,
                     const std::function<void(double)>& onProgress) {
    return TMerger(database, loaded, replace, onProgress).Run();
}

std::int64_t CountWithoutTable(SQLite::Database& database) {
    std::string sql = "SELECT COUNT(DISTINCT CODIGO) FROM TB_TUSS_64_SEM_TABELA s WHERE 1";
    for (const std::string_view table : kTablesOf64) {
        sql +=
            fmt::format(" AND NOT EXISTS (SELECT 1 FROM {} t WHERE t.CODIGO = s.CODIGO) AND NOT EXISTS"
                        " (SELECT 1 FROM TB_TUSS_INATIVADO i WHERE i.TABELA = '{}' AND i.CODIGO = s.CODIGO)",
                        TussTableName(table), table);
    }
    return Count(database, sql);
}

} // namespace conferix
