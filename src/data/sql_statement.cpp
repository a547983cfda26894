#include "data/sql_statement.h"

#include <cassert>
#include <utility>

namespace conferix {

namespace {

std::vector<TDBParam> ParamsOf(const std::vector<std::string>& columns) {
    std::vector<TDBParam> params;
    params.reserve(columns.size());
    for (const std::string& column : columns) {
        params.push_back({column, std::nullopt});
    }
    TDBUtils::MakeNamesUnique(params);
    return params;
}

} // namespace

TSqlStatement::TSqlStatement(const SQLite::Database& database, const std::string& sql,
                             std::vector<TDBParam> params)
    : params_(std::move(params)), statement_(database, sql) {}

TSqlStatement TSqlStatement::Select(const SQLite::Database& database, const std::string& columns,
                                    const std::string& table, const std::vector<std::string>& keys,
                                    const std::string& tail) {
    std::vector<TDBParam> params = ParamsOf(keys);
    std::string sql = "SELECT " + columns + " FROM " + table;
    for (std::size_t i = 0; i < keys.size(); ++i) {
        sql += (i == 0 ? " WHERE " : " AND ") + keys[i] + " = :" + params[i].Name;
    }
    return {database, sql + " " + tail, std::move(params)};
}

TSqlStatement TSqlStatement::Insert(const SQLite::Database& database, const std::string& table,
                                    const std::vector<std::string>& columns) {
    std::vector<TDBParam> params = ParamsOf(columns);
    std::string names;
    std::string values;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::string separator = i == 0 ? "" : ", ";
        names += separator + columns[i];
        values += separator + ":" + params[i].Name;
    }
    return {database, "INSERT INTO " + table + " (" + names + ") VALUES (" + values + ")", std::move(params)};
}

void TSqlStatement::Start(std::vector<std::optional<std::string>> values) {
    assert(values.size() == params_.size());
    Reset();
    for (std::size_t i = 0; i < params_.size(); ++i) {
        params_[i].Value = std::move(values[i]);
        const int index = static_cast<int>(i) + 1;
        if (params_[i].Value) {
            statement_.bindNoCopy(index, *params_[i].Value);
        } else {
            statement_.bind(index);
        }
    }
}

} // namespace conferix
