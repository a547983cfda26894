#include "data/tuss_search.h"

#include "data/plain_text.h"
#include "data/sqlite_reason.h"
#include "platform/whole_path.h"

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Exception.h>
#include <SQLiteCpp/Statement.h>

#include <algorithm>
#include <array>
#include <set>

namespace conferix {

namespace {

constexpr std::size_t kMaxSimilar = 5;

/// All words of a text as a query: each may be the beginning of a word.
std::string WordQuery(std::string_view text) {
    std::string query;
    const std::string plain = PlainText(text);
    for (std::size_t at = 0; at < plain.size();) {
        const std::size_t end = std::min(plain.find(' ', at), plain.size());
        query += (query.empty() ? "\"" : " \"") + plain.substr(at, end - at) + "\"*";
        at = end + 1;
    }
    return query;
}

/// All codes at one slip of the keyboard from a code.
std::set<std::string> OneSlipAway(const std::string& code) {
    constexpr std::string_view kDigits = "0123456789";
    std::set<std::string> codes;
    for (std::size_t i = 0; i <= code.size(); ++i) {
        for (const char digit : kDigits) {
            codes.insert(code.substr(0, i) + digit + code.substr(i));
            if (i < code.size()) {
                codes.insert(code.substr(0, i) + digit + code.substr(i + 1));
            }
        }
        if (i < code.size()) {
            codes.insert(code.substr(0, i) + code.substr(i + 1));
        }
        if (i + 1 < code.size()) {
            std::string exchanged = code;
            std::swap(exchanged[i], exchanged[i + 1]);
            codes.insert(exchanged);
        }
    }
    codes.erase(code);
    return codes;
}

} // namespace

TTussSearch::TTussSearch(const std::filesystem::path& file) : file_(file) {
    try {
        database_ = std::make_unique<SQLite::Database>(PathText(AbsolutePath(file)), SQLite::OPEN_READONLY);
        database_->exec("PRAGMA cell_size_check = ON");
        hasDescriptions_ = database_->tableExists("TB_TUSS_BUSCA") &&
                           SQLite::Statement(*database_, "SELECT 1 FROM TB_TUSS_TERMO LIMIT 1").executeStep();
    } catch (const SQLite::Exception& error) {
        throw ETerminologyNotOpened(file, SqliteReason(error));
    }
}

TTussSearch::~TTussSearch() = default;

bool TTussSearch::HasDescriptions() const {
    return hasDescriptions_;
}

std::optional<TFoundTerm> TTussSearch::Find(const std::string& table, const std::string& code) const {
    SQLite::Statement query(*database_,
                            "SELECT t.CODIGO, t.DATA_INICIO_VIGENCIA, i.CODIGO, i.DATA_FIM_VIGENCIA FROM"
                            " (SELECT ?1 AS CODIGO) c LEFT JOIN " +
                                std::string(TussTableName(table)) +
                                " t ON t.CODIGO = c.CODIGO LEFT JOIN TB_TUSS_INATIVADO i"
                                " ON i.TABELA = ?2 AND i.CODIGO = c.CODIGO");
    query.bind(1, code);
    query.bind(2, table);
    query.executeStep();
    const bool isTerm = !query.getColumn(0).isNull();
    if (!isTerm && query.getColumn(2).isNull()) {
        return std::nullopt;
    }
    TFoundTerm found{table,
                     code,
                     {},
                     ParseIsoDate(query.getColumn(1).getString()),
                     ParseIsoDate(query.getColumn(3).getString())};
    if (isTerm && found.FimVigencia && found.InicioVigencia && *found.InicioVigencia > *found.FimVigencia) {
        found.FimVigencia.reset(); // it came back
    }
    found.Termo = Description(table, code);
    return found;
}

std::string TTussSearch::Description(std::string_view table, std::string_view code) const {
    if (!hasDescriptions_) {
        return {};
    }
    try {
        SQLite::Statement text(*database_, "SELECT TERMO FROM TB_TUSS_TERMO WHERE TABELA = ? AND CODIGO = ?");
        text.bind(1, std::string(table));
        text.bind(2, std::string(code));
        return text.executeStep() ? text.getColumn(0).getString() : std::string();
    } catch (const SQLite::Exception& error) {
        throw ETerminologyNotRead(file_, SqliteReason(error));
    }
}

std::vector<TFoundTerm> TTussSearch::Search(std::string_view text, const std::string& table,
                                            const std::function<bool(const TFoundTerm&)>& accepts,
                                            std::size_t limit) const {
    std::vector<TFoundTerm> terms;
    const std::string words = WordQuery(text);
    if (words.empty() || !hasDescriptions_) {
        return terms;
    }
    try {
        SQLite::Statement query(
            *database_, "SELECT t.TABELA, t.CODIGO FROM TB_TUSS_BUSCA b JOIN TB_TUSS_TERMO t"
                        " ON t.ID = b.rowid WHERE TB_TUSS_BUSCA MATCH ?1 AND (?2 = '' OR t.TABELA = ?2)"
                        " ORDER BY LENGTH(t.TERMO), t.TABELA, t.CODIGO");
        query.bind(1, words);
        query.bind(2, table);
        while (terms.size() < limit && query.executeStep()) {
            auto found = Find(query.getColumn(0).getString(), query.getColumn(1).getString());
            if (found && accepts(*found)) {
                terms.push_back(std::move(*found));
            }
        }
    } catch (const SQLite::Exception& error) {
        throw ETerminologyNotRead(file_, SqliteReason(error));
    }
    return terms;
}

std::vector<TFoundTerm> TTussSearch::Similar(const std::string& table, const std::string& code) const {
    constexpr std::size_t kMaxCode = 20;
    std::vector<TFoundTerm> terms;
    if (code.empty() || code.size() > kMaxCode) {
        return terms;
    }
    const bool isStored = std::find(kTermTables.begin(), kTermTables.end(), table) != kTermTables.end();
    try {
        for (const std::string& candidate : isStored ? OneSlipAway(code) : std::set<std::string>()) {
            if (auto found = Find(table, candidate)) {
                terms.push_back(std::move(*found));
            }
        }
        std::stable_partition(terms.begin(), terms.end(),
                              [](const TFoundTerm& term) { return !term.FimVigencia; });
        for (const std::string_view other : kTermTables) {
            if (auto found = other == table ? std::nullopt : Find(std::string(other), code)) {
                terms.push_back(std::move(*found));
            }
        }
    } catch (const SQLite::Exception& error) {
        throw ETerminologyNotRead(file_, SqliteReason(error));
    }
    if (terms.size() > kMaxSimilar) {
        terms.resize(kMaxSimilar);
    }
    return terms;
}

} // namespace conferix
