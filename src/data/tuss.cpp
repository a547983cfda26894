#include "data/tuss.h"

#include <utility>

namespace conferix {

namespace {

// The key is the table itself (WITHOUT ROWID): half the size of a table with an index, and one search
// a lookup.
TTussTable TermTable(const std::string& number) {
    const std::string name = "TB_TUSS_" + number;
    return {name,
            {"CODIGO", "DATA_INICIO_VIGENCIA", "DATA_FIM_IMPLANTACAO"},
            "CREATE TABLE IF NOT EXISTS " + name +
                " (CODIGO TEXT NOT NULL PRIMARY KEY, DATA_INICIO_VIGENCIA TEXT, DATA_FIM_IMPLANTACAO TEXT)"
                " WITHOUT ROWID"};
}

// Several periods a term, of which one may have no start.
TTussTable Table64() {
    return {std::string(kTableTuss64),
            {"TABELA", "CODIGO", "ENVIO_CONSOLIDADO", "GRUPO", "DATA_INICIO_VIGENCIA", "DATA_FIM_VIGENCIA",
             "DATA_FIM_IMPLANTACAO"},
            "CREATE TABLE IF NOT EXISTS TB_TUSS_64 (TABELA TEXT NOT NULL, CODIGO TEXT NOT NULL,"
            " ENVIO_CONSOLIDADO INTEGER NOT NULL, GRUPO TEXT, DATA_INICIO_VIGENCIA TEXT,"
            " DATA_FIM_VIGENCIA TEXT, DATA_FIM_IMPLANTACAO TEXT);"
            "CREATE UNIQUE INDEX IF NOT EXISTS UK_TUSS_64 ON TB_TUSS_64"
            " (TABELA, CODIGO, IFNULL(DATA_INICIO_VIGENCIA, ''))"};
}

TTussTable InactivatedTable() {
    return {std::string(kTableTussInativado),
            {"TABELA", "CODIGO", "DATA_FIM_VIGENCIA"},
            "CREATE TABLE IF NOT EXISTS TB_TUSS_INATIVADO (TABELA TEXT NOT NULL, CODIGO TEXT NOT NULL,"
            " DATA_FIM_VIGENCIA TEXT, PRIMARY KEY (TABELA, CODIGO)) WITHOUT ROWID"};
}

TTussTable CityTable() {
    return {std::string(kTableCidade),
            {"CODIGO"},
            "CREATE TABLE IF NOT EXISTS TB_CIDADE (CODIGO TEXT NOT NULL PRIMARY KEY) WITHOUT ROWID"};
}

} // namespace

const std::array<TTussTable, 9>& TussTables() {
    static const std::array<TTussTable, 9> tables = {
        TermTable("18"), TermTable("19"), TermTable("20"),    TermTable("22"), TermTable("63"),
        TermTable("87"), Table64(),       InactivatedTable(), CityTable(),
    };
    return tables;
}

ETussTableWithoutEntity::ETussTableWithoutEntity(std::string_view number)
    : std::runtime_error("Tabela " + std::string(number) + " do TISS não possui entidade correspondente.") {}

std::string_view TussTableName(std::string_view number) {
    static const std::pair<std::string_view, std::string_view> kNames[] = {
        {"18", "TB_TUSS_18"}, {"19", "TB_TUSS_19"}, {"20", "TB_TUSS_20"},
        {"22", "TB_TUSS_22"}, {"63", "TB_TUSS_63"}, {"87", "TB_TUSS_87"},
    };
    for (const auto& [known, name] : kNames) {
        if (known == number) {
            return name;
        }
    }
    throw ETussTableWithoutEntity(number);
}

ETerminologyNotOpened::ETerminologyNotOpened(const std::filesystem::path& file, const std::string& reason)
    : EFile("Não foi possível abrir a base de terminologia", file, reason) {}

ETerminologyNotRead::ETerminologyNotRead(const std::filesystem::path& file, const std::string& reason)
    : EFile("Não foi possível consultar a base de terminologia", file, reason) {}

ETerminologyNotWritten::ETerminologyNotWritten(const std::filesystem::path& file, const std::string& reason)
    : EFile("Não foi possível gravar a base de terminologia", file, reason) {}

} // namespace conferix
