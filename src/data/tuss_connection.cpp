#include "data/tuss_connection.h"

#include "data/sql_statement.h"
#include "data/sqlite_reason.h"
#include "data/tuss_writer.h"
#include "platform/whole_path.h"

#include <SQLiteCpp/Column.h>
#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Statement.h>

#include <algorithm>
#include <array>
#include <set>
#include <system_error>
#include <utility>

namespace conferix {

namespace fs = std::filesystem;

namespace {

// An import holds the file only while it commits.
constexpr int kBusyTimeoutMs = 1000;

// SQLite would create a missing file, wait for a pipe and read a folder as an empty database.
void CheckIsFile(const fs::path& file) {
    std::error_code error;
    const fs::file_status status = fs::status(file, error);
    if (!fs::exists(status)) {
        throw ETerminologyNotOpened(
            file, ReasonText(error ? error : std::make_error_code(std::errc::no_such_file_or_directory)));
    }
    if (fs::is_directory(status)) {
        throw ETerminologyNotOpened(file, ReasonText(std::make_error_code(std::errc::is_a_directory)));
    }
    if (!fs::is_regular_file(status)) {
        throw ETerminologyNotOpened(file, "não é um arquivo comum");
    }
}

std::string UpperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
    return text;
}

std::set<std::string> ColumnsOf(const SQLite::Database& database, const std::string& table) {
    SQLite::Statement query(database, "SELECT name FROM pragma_table_info(?)");
    query.bind(1, table);
    std::set<std::string> columns;
    while (query.executeStep()) {
        columns.insert(UpperCase(query.getColumn(0).getString()));
    }
    return columns;
}

void CheckTables(const SQLite::Database& database, const fs::path& file) {
    for (const TTussTable& table : TussTables()) {
        const std::set<std::string> present = ColumnsOf(database, table.Name);
        if (present.empty()) {
            throw ETerminologyNotOpened(file, "a tabela " + table.Name + " não existe");
        }
        for (const std::string& column : table.Columns) {
            if (present.count(column) == 0) {
                throw ETerminologyNotOpened(file, "a tabela " + table.Name + " não tem a coluna " + column);
            }
        }
    }
}

} // namespace

struct TTussConnection::TImpl {
    TImpl(std::unique_ptr<SQLite::Database> opened, const fs::path& name)
        : file(name), database(std::move(opened)),
          inactivation(TSqlStatement::Select(*database, "DATA_FIM_VIGENCIA", std::string(kTableTussInativado),
                                             {"TABELA", "CODIGO"})),
          table64(TSqlStatement::Select(*database,
                                        "ENVIO_CONSOLIDADO, GRUPO, DATA_INICIO_VIGENCIA, DATA_FIM_VIGENCIA,"
                                        " DATA_FIM_IMPLANTACAO",
                                        std::string(kTableTuss64), {"TABELA", "CODIGO"})),
          city(TSqlStatement::Select(*database, "1", std::string(kTableCidade), {"CODIGO"})) {
        for (const std::string_view number : kTermTables) {
            terms.push_back(TSqlStatement::Select(*database, std::string(kColumnStart),
                                                  std::string(TussTableName(number)), {"CODIGO"}));
        }
    }

    TSqlStatement& TermsOf(std::string_view number) {
        const auto found = std::find(kTermTables.begin(), kTermTables.end(), number);
        if (found == kTermTables.end()) {
            throw ETussTableWithoutEntity(number);
        }
        return terms[static_cast<std::size_t>(found - kTermTables.begin())];
    }

    // Runs `read` over a started query.
    template<typename TRead>
    auto Run(TSqlStatement& query, std::vector<std::optional<std::string>> values, TRead read) const {
        try {
            query.Start(std::move(values));
            return read();
        } catch (const SQLite::Exception& error) {
            const std::string params = query.DescribeParams();
            throw ETerminologyNotRead(file,
                                      SqliteReason(error) + (params.empty() ? "" : " (" + params + ")"));
        }
    }

    std::optional<TDate> DateOf(const SQLite::Column& column) const {
        if (column.isNull()) {
            return std::nullopt;
        }
        const std::string text = column.getString();
        const std::optional<TDate> date = ParseIsoDate(text);
        if (!date) {
            throw ETerminologyNotRead(file, "a data \"" + text + "\" da coluna " + column.getName() +
                                                " não tem a forma AAAA-MM-DD");
        }
        return date;
    }

    TDateLookup FindDate(TSqlStatement& query, std::vector<std::optional<std::string>> keys) const {
        return Run(query, std::move(keys), [&] {
            TDateLookup answer;
            answer.Found = query.Step();
            if (answer.Found) {
                answer.Date = DateOf(query.Column(0));
            }
            return answer;
        });
    }

    // What SQLite's quick check finds in the file, or in one table.
    std::vector<std::string> FindDamage(const std::string& table) const {
        std::vector<std::string> damage;
        try {
            SQLite::Statement check(*database,
                                    "PRAGMA quick_check" + (table.empty() ? "" : "(" + table + ")"));
            while (check.executeStep()) {
                damage.push_back(check.getColumn(0).getString());
            }
        } catch (const SQLite::Exception& error) {
            damage.emplace_back(error.what());
        }
        if (damage == std::vector<std::string>{"ok"}) {
            damage.clear();
        }
        return damage;
    }

    // Before a row, or all of them, are called missing: damage may have swallowed them. Looks at a table
    // once.
    void RequireSound(std::string_view table) {
        if (sound.insert(std::string(table)).second && !FindDamage(std::string(table)).empty()) {
            throw ETerminologyNotRead(file, "o banco de dados está danificado");
        }
    }

    // Whether a table has any row, or any of the TUSS table `number` where one is given.
    bool HasRows(std::string_view table, std::string_view number = {}) {
        for (const THasRows& known : hasRows) {
            if (known.Table == table && known.Number == number) {
                return known.Answer;
            }
        }
        const bool ofNumber = !number.empty();
        TSqlStatement query =
            Prepare("1", std::string(table), "LIMIT 1",
                    ofNumber ? std::vector<std::string>{"TABELA"} : std::vector<std::string>{});
        std::vector<std::optional<std::string>> keys;
        if (ofNumber) {
            keys.emplace_back(number);
        }
        const bool answer = Run(query, std::move(keys), [&] { return query.Step(); });
        if (!answer) {
            RequireSound(table);
        }
        hasRows.push_back({std::string(table), std::string(number), answer});
        return answer;
    }

    // Terms that were all taken out of use stand in the table of the inactivated ones alone.
    bool HasTerms(std::string_view number) {
        return HasRows(TussTableName(number)) || HasRows(kTableTussInativado, number);
    }

    bool IsInstalled(const TTussTable& table) {
        const auto number = std::find_if(kTermTables.begin(), kTermTables.end(), [&](std::string_view known) {
            return TussTableName(known) == table.Name;
        });
        return number != kTermTables.end() ? HasTerms(*number) : HasRows(table.Name);
    }

    TTussTableStatistics StatisticsOf(const TTussTable& table) {
        const bool hasStart =
            std::find(table.Columns.begin(), table.Columns.end(), kColumnStart) != table.Columns.end();
        const std::string newest = hasStart ? "MAX(DATA_INICIO_VIGENCIA)" : "NULL";
        TSqlStatement query = Prepare("COUNT(*), " + newest + " AS DATA_INICIO_VIGENCIA", table.Name, "");
        return Run(query, {}, [&] {
            query.Step();
            return TTussTableStatistics{table.Name, query.Column(0).getInt64(), DateOf(query.Column(1)),
                                        IsInstalled(table)};
        });
    }

    TSqlStatement Prepare(const std::string& columns, const std::string& table, const std::string& tail,
                          const std::vector<std::string>& keys = {}) const {
        try {
            return TSqlStatement::Select(*database, columns, table, keys, tail);
        } catch (const SQLite::Exception& error) {
            throw ETerminologyNotRead(file, SqliteReason(error));
        }
    }

    fs::path file;
    std::unique_ptr<SQLite::Database> database;
    TSqlStatement inactivation;
    TSqlStatement table64;
    TSqlStatement city;
    std::vector<TSqlStatement> terms; // in the order of kTermTables
    struct THasRows {
        std::string Table;
        std::string Number;
        bool Answer;
    };
    std::vector<THasRows> hasRows; // a dozen at most
    std::set<std::string> sound;   // tables in which something was looked for in vain
};

TTussConnection::TTussConnection(const fs::path& file) {
    CheckIsFile(file);
    try {
        // An absolute name, since SQLite gives a meaning of its own to "" and ":memory:".
        // Without the library's own locks: one thread uses a connection at a time.
        auto database = std::make_unique<SQLite::Database>(
            PathText(AbsolutePath(file)), SQLite::OPEN_READONLY | SQLite::OPEN_NOMUTEX, kBusyTimeoutMs);
        // One transaction for the life of the connection: it sees one state of the file, and a look-up
        // does not lock and unlock the file, which would cost ten times the look-up.
        // What a damaged page says of its rows is checked before it is believed.
        database->exec("PRAGMA cell_size_check = ON; BEGIN");
        CheckTables(*database, file);
        impl_ = std::make_unique<TImpl>(std::move(database), file);
    } catch (const SQLite::Exception& error) {
        throw ETerminologyNotOpened(file, SqliteReason(error));
    }
}

TTussConnection::TTussConnection(std::unique_ptr<TImpl> impl) : impl_(std::move(impl)) {}

TTussConnection::~TTussConnection() = default;

std::shared_ptr<TTussConnection> TTussConnection::InMemory(const std::function<void(TTussWriter&)>& fill) {
    const fs::path name = ":memory:";
    auto database =
        std::make_unique<SQLite::Database>(PathText(name), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    {
        TTussWriter writer(*database, name);
        if (fill) {
            fill(writer);
        }
        writer.Commit();
    }
    auto impl = std::make_unique<TImpl>(std::move(database), name);
    return std::shared_ptr<TTussConnection>(new TTussConnection(std::move(impl)));
}

const fs::path& TTussConnection::FileName() const {
    return impl_->file;
}

TDateLookup TTussConnection::StartOfValidity(std::string_view table, std::string_view code) const {
    const TDateLookup found = impl_->FindDate(impl_->TermsOf(table), {std::string(code)});
    if (!found.Found) {
        impl_->RequireSound(TussTableName(table));
        impl_->RequireSound(kTableTussInativado);
    }
    return found;
}

TDateLookup TTussConnection::Inactivation(std::string_view table, std::string_view code) const {
    return impl_->FindDate(impl_->inactivation, {std::string(table), std::string(code)});
}

std::vector<TTuss64> TTussConnection::Table64(std::string_view table, std::string_view code) const {
    TSqlStatement& query = impl_->table64;
    return impl_->Run(query, {std::string(table), std::string(code)}, [&] {
        std::vector<TTuss64> rows;
        while (query.Step()) {
            TTuss64& row = rows.emplace_back();
            row.Tabela = table;
            row.Codigo = code;
            row.EnvioConsolidado = query.Column(0).getInt() != 0;
            row.Grupo = query.Column(1).getString();
            row.DataInicioVigencia = impl_->DateOf(query.Column(2));
            row.DataFimVigencia = impl_->DateOf(query.Column(3));
            row.DataFimImplantacao = impl_->DateOf(query.Column(4));
        }
        std::ranges::stable_sort(rows, {}, &TTuss64::DataInicioVigencia);
        return rows;
    });
}

bool TTussConnection::HasCity(std::string_view code) const {
    const bool found = impl_->Run(impl_->city, {std::string(code)}, [this] { return impl_->city.Step(); });
    if (!found) {
        impl_->RequireSound(kTableCidade);
    }
    return found;
}

bool TTussConnection::IsInstalled(std::string_view table) const {
    return impl_->HasTerms(table);
}

bool TTussConnection::IsTable64Installed() const {
    return impl_->HasRows(kTableTuss64);
}

bool TTussConnection::IsTable64InstalledFor(std::string_view table) const {
    TussTableName(table); // refuses any other number
    return impl_->HasRows(kTableTuss64, table);
}

bool TTussConnection::AreCitiesInstalled() const {
    return impl_->HasRows(kTableCidade);
}

std::vector<TTussTableStatistics> TTussConnection::Statistics() const {
    std::vector<TTussTableStatistics> statistics;
    for (const TTussTable& table : TussTables()) {
        statistics.push_back(impl_->StatisticsOf(table));
    }
    return statistics;
}

std::vector<std::string> TTussConnection::FindDamage() const {
    return impl_->FindDamage("");
}

} // namespace conferix
