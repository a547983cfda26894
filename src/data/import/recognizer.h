// Which table a sheet holds, and in which columns.
#pragma once

#include "data/import/periods.h"
#include "data/import/row_reader.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>

namespace conferix {

inline constexpr std::string_view kCities = "municípios"; ///< stands for a table's number

/// A row of a publication, understood.
struct TPublishedRow {
    std::string Tabela; ///< number of the TUSS table, or kCities
    std::string Codigo;
    std::string Termo; ///< what the code stands for; may be empty
    TPeriod Period;
    std::string TabelaDoTermo;     ///< of table 64: the table of the code; empty where it is not told
    bool EnvioConsolidado = false; ///< of table 64
    std::string Grupo;             ///< of table 64; empty for none
};

/// Understands the rows of one sheet. Columns are known by their labels, wherever the header stands; the
/// table is told by a column, else by the labels, the title rows, or the names of sheet and files.
class TRecognizer {
  public:
    /// `tableOfNames`: the table that the names of the sheet and its files speak of; empty for none.
    explicit TRecognizer(std::string tableOfNames) : tableOfNames_(std::move(tableOfNames)) {}

    /// Whether a row names the columns of a terminology.
    static bool IsHeader(const TRow& row);

    enum class TKind { Skipped, Understood, NotUnderstood };
    /// Takes the next row. `Understood` fills `result`, `NotUnderstood` fills `reason`.
    TKind Take(const TRow& row, TPublishedRow& result, std::string& reason);

    bool HeaderFound() const { return columns_.has_value(); }
    /// Whether terms were understood whose table has dates, in columns none of which is a known date though
    /// some are not known: they may be dates with other labels.
    bool MissesDates() const { return missesDates_; }
    /// Whether the sheet lists changes only, not all terms of its tables.
    bool IsHistory() const { return columns_ && Has(TField::Competencia); }

  private:
    enum class TField {
        Codigo,
        CodigoDaTabela,
        CodigoIbge,
        Termo,
        Grupo,
        Apresentacao,
        Inicio,
        Fim,
        Implantacao,
        Origem,
        Terminologia,
        FormaDeEnvio,
        CodigoDoGrupo,
        Competencia,
        Count
    };
    /// Column of each field, 0-based; none for a field without one.
    using TColumns = std::array<std::optional<std::size_t>, static_cast<std::size_t>(TField::Count)>;

    static std::optional<TField> FieldOf(std::string_view label);
    static std::optional<TColumns> ColumnsOf(const TRow& row);
    void UseColumns(const TRow& header, const TColumns& columns);
    bool Has(TField field) const { return (*columns_)[static_cast<std::size_t>(field)].has_value(); }
    const TCell& Cell(const TRow& row, TField field) const;
    std::string TableOf(const TRow& row) const;
    bool TakeTerm(const TRow& row, TPublishedRow& result, std::string& reason) const;
    bool TakePeriod(const TRow& row, TPeriod& period, std::string& reason) const;
    bool TakeTable64(const TRow& row, TPublishedRow& result, std::string& reason) const;

    std::string tableOfNames_;
    std::optional<TColumns> columns_;
    bool hasUnknownColumns_ = false;
    bool missesDates_ = false;
};

} // namespace conferix
