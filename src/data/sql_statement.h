// A prepared statement with named text parameters. For the sources of this folder.
#pragma once

#include "data/db_utils.h"

#include <SQLiteCpp/Column.h>
#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace conferix {

/// Prepared once, run many times. All members raise SQLite::Exception.
class TSqlStatement {
  public:
    /// SELECT of columns from the rows whose `keys` equal the parameters; `tail` may order them.
    static TSqlStatement Select(const SQLite::Database& database, const std::string& columns,
                                const std::string& table, const std::vector<std::string>& keys,
                                const std::string& tail = "");
    /// INSERT of one row, a parameter a column.
    static TSqlStatement Insert(const SQLite::Database& database, const std::string& table,
                                const std::vector<std::string>& columns);

    /// Ends the present run and sets the parameters for the next.
    void Start(std::vector<std::optional<std::string>> values);
    /// Goes to the next row; false at the end.
    bool Step() { return statement_.executeStep(); }
    /// Ends the run.
    void Reset() noexcept { statement_.tryReset(); }
    /// Column of the present row (0-based).
    SQLite::Column Column(int index) const { return statement_.getColumn(index); }
    /// The parameters with the values of the last run.
    std::string DescribeParams() const { return TDBUtils::Describe(params_); }

  private:
    TSqlStatement(const SQLite::Database& database, const std::string& sql, std::vector<TDBParam> params);

    std::vector<TDBParam> params_;
    SQLite::Statement statement_;
};

} // namespace conferix
