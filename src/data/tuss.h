// The tables of the terminology database and their rows.
#pragma once

#include "platform/iso_date.h"
#include "platform/platform.h"

#include <array>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// A term of one of the TUSS tables 18, 19, 20, 22, 63 and 87.
struct TTussTerm {
    std::string Codigo;
    std::optional<TDate> DataInicioVigencia; ///< first day of use
    std::optional<TDate> DataFimImplantacao; ///< end of the implementation period
};

/// A term whose table is known at compile time.
template<int kTable>
struct TTussTermOf : TTussTerm {};

using TTuss18 = TTussTermOf<18>;
using TTuss19 = TTussTermOf<19>;
using TTuss20 = TTussTermOf<20>;
using TTuss22 = TTussTermOf<22>;
using TTuss63 = TTussTermOf<63>;
using TTuss87 = TTussTermOf<87>;

/// A period of domain table 64: how a term of a table is sent to the regulator.
struct TTuss64 {
    std::string Tabela;
    std::string Codigo;
    bool EnvioConsolidado = false; ///< sent through its group
    std::string Grupo;             ///< code of the group (table 63); empty for none
    std::optional<TDate> DataInicioVigencia;
    std::optional<TDate> DataFimVigencia; ///< last day of use
    std::optional<TDate> DataFimImplantacao;
};

/// A term of any table that was taken out of use.
struct TTussInativado {
    std::string Tabela;
    std::string Codigo;
    std::optional<TDate> DataFimVigencia; ///< last day of use
};

/// A municipality, by its code with or without the check digit.
struct TCidade {
    std::string Codigo;
};

/// A table of the database file.
struct TTussTable {
    std::string Name;
    std::vector<std::string> Columns; ///< in the order of the file
    std::string CreateSql;            ///< creates the table, with an index on its key, where it is missing
};

/// The nine tables of the terminology database.
const std::array<TTussTable, 9>& TussTables();

/// The TUSS tables of which the database holds terms.
inline constexpr std::array<std::string_view, 6> kTermTables = {"18", "19", "20", "22", "63", "87"};
inline constexpr std::string_view kColumnStart = "DATA_INICIO_VIGENCIA";
inline constexpr std::string_view kTableTuss64 = "TB_TUSS_64";
inline constexpr std::string_view kTableTussInativado = "TB_TUSS_INATIVADO";
inline constexpr std::string_view kTableCidade = "TB_CIDADE";

/// A TUSS table without a table of terms in the database was asked for.
class ETussTableWithoutEntity : public std::runtime_error {
  public:
    explicit ETussTableWithoutEntity(std::string_view number);
};

/// The table that holds the terms of TUSS table "18", "19", "20", "22", "63" or "87".
/// Raises ETussTableWithoutEntity for any other number.
std::string_view TussTableName(std::string_view number);

/// The terminology database could not be opened, or is not one.
class ETerminologyNotOpened : public EFile {
  public:
    ETerminologyNotOpened(const std::filesystem::path& file, const std::string& reason);
};

/// A query of the open terminology database failed.
class ETerminologyNotRead : public EFile {
  public:
    ETerminologyNotRead(const std::filesystem::path& file, const std::string& reason);
};

/// The terminology database could not be written.
class ETerminologyNotWritten : public EFile {
  public:
    ETerminologyNotWritten(const std::filesystem::path& file, const std::string& reason);
};

} // namespace conferix
