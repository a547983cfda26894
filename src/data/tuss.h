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
struct TTussTermo {
    std::string codigo;
    std::optional<TDate> dataInicioVigencia; ///< first day of use
    std::optional<TDate> dataFimImplantacao; ///< end of the implementation period
};

/// A term whose table is known at compile time.
template<int kTabela>
struct TTussTermoDaTabela : TTussTermo {
    static constexpr int kNumero = kTabela;
};

using TTuss18 = TTussTermoDaTabela<18>;
using TTuss19 = TTussTermoDaTabela<19>;
using TTuss20 = TTussTermoDaTabela<20>;
using TTuss22 = TTussTermoDaTabela<22>;
using TTuss63 = TTussTermoDaTabela<63>;
using TTuss87 = TTussTermoDaTabela<87>;

/// A period of domain table 64: how a term of a table is sent to the regulator.
struct TTuss64 {
    std::string tabela;
    std::string codigo;
    bool envioConsolidado = false; ///< sent through its group
    std::string grupo;             ///< code of the group (table 63); empty for none
    std::optional<TDate> dataInicioVigencia;
    std::optional<TDate> dataFimVigencia; ///< last day of use
    std::optional<TDate> dataFimImplantacao;
};

/// A term of any table that was taken out of use.
struct TTussInativado {
    std::string tabela;
    std::string codigo;
    std::optional<TDate> dataFimVigencia; ///< last day of use
};

/// A municipality, by its code with or without the check digit.
struct TCidade {
    std::string codigo;
};

/// A table of the database file.
struct TTussTable {
    std::string name;
    std::vector<std::string> columns; ///< in the order of the file
    std::string createSql;            ///< creates the table, with an index on its key, where it is missing
};

/// The nine tables of the terminology database.
const std::array<TTussTable, 9>& TussTables();

inline constexpr std::string_view kColumnStart = "DATA_INICIO_VIGENCIA";
inline constexpr std::string_view kTableTuss64 = "TB_TUSS_64";
inline constexpr std::string_view kTableTussInativado = "TB_TUSS_INATIVADO";
inline constexpr std::string_view kTableCidade = "TB_CIDADE";

/// A TUSS table without a table of terms in the database was asked for.
class ETabelaTussSemEntidade : public std::runtime_error {
  public:
    explicit ETabelaTussSemEntidade(std::string_view number);
};

/// The table that holds the terms of TUSS table "18", "19", "20", "22", "63" or "87".
/// Raises ETabelaTussSemEntidade for any other number.
std::string_view TussTableName(std::string_view number);

/// The terminology database could not be opened, or is not one.
class ETerminologiaNaoAberta : public EArquivo {
  public:
    ETerminologiaNaoAberta(const std::filesystem::path& file, const std::string& reason);
};

/// A query of the open terminology database failed.
class ETerminologiaNaoConsultada : public EArquivo {
  public:
    ETerminologiaNaoConsultada(const std::filesystem::path& file, const std::string& reason);
};

/// The terminology database could not be written.
class ETerminologiaNaoGravada : public EArquivo {
  public:
    ETerminologiaNaoGravada(const std::filesystem::path& file, const std::string& reason);
};

} // namespace conferix
