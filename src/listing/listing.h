// Listings that are printed from a file, as data: what stands in them, apart from how it is written.
#pragma once

#include "model/arquivo_tiss.h"
#include "xml/arena.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace conferix {

/// The listings that there are. Of a monitoring file the same names stand for what it has of the kind, and
/// there is no Entrega.
enum class TListingKind : std::uint8_t {
    Guias,         ///< the guides, one a row
    Capa,          ///< what the lot is, and its totals
    Procedimentos, ///< procedures by code
    Despesas,      ///< other expenses by category
    Profissionais, ///< what each professional did; of a monitoring file each provider
    Entrega,       ///< the guides that are handed over, to be signed
};

/// Names of the listings, by which users ask for them, in the order of the enumeration.
std::span<const std::string_view> ListingNames();
/// The listing of a name; nothing for any other text.
std::optional<TListingKind> ListingKindOf(std::string_view name);
/// What a listing is called above it.
std::string_view ListingTitle(TListingKind kind);

/// Orders of the rows that are guides; Arquivo: as the file has them.
enum class TListingOrder : std::uint8_t { Arquivo, Guia, Beneficiario, Data, Valor };

/// What the cells of a column hold.
enum class TCellKind : std::uint8_t {
    Text,
    Date,     ///< text, AAAA-MM-DD where it is a day
    Count,    ///< a whole number
    Quantity, ///< a number of up to four decimals
    Money,    ///< reais
};

/// Whether the cells are numbers.
constexpr bool IsNumeric(TCellKind kind) {
    return kind >= TCellKind::Count;
}

/// A cell: a text, or a number where the column holds such; empty with neither.
class TListingCell {
  public:
    TListingCell() = default;
    /// The text has to live as long as the cell: TListingMemory keeps those that do not.
    explicit TListingCell(std::string_view text)
        : text_(text.data()), length_(static_cast<std::uint32_t>(text.size())) {}
    explicit TListingCell(double number) : number_(number), isNumber_(true) {}

    std::string_view Text() const {
        return isNumber_ ? std::string_view() : std::string_view(text_, length_);
    }
    std::optional<double> Number() const { return isNumber_ ? std::optional(number_) : std::nullopt; }
    bool IsEmpty() const { return !isNumber_ && length_ == 0; }
    bool operator==(const TListingCell& other) const {
        return Text() == other.Text() && Number() == other.Number();
    }

  private:
    union {
        const char* text_ = nullptr;
        double number_;
    };
    std::uint32_t length_ = 0; ///< of the text
    bool isNumber_ = false;
};
static_assert(sizeof(TListingCell) <= 16, "a listing of a large file has a million of them");

struct TListingColumn {
    std::string_view Key;   ///< for programs
    std::string_view Title; ///< for people
    TCellKind Kind = TCellKind::Text;
    bool Summed = false;         ///< groups have a sum of its cells, empty where it is not known
    std::string_view Total = {}; ///< key of the total of its cells, where that is another than its own

    std::string_view TotalKey() const { return Total.empty() ? Key : Total; }
};

struct TListingRow {
    std::span<const TListingCell> Cells; ///< one a column
    bool Differs = false;                ///< a declared total is not the sum that it stands for
};

/// Keeps the cells of a listing and their texts.
class TListingMemory {
  public:
    /// A cell with a copy of the text.
    TListingCell Text(std::string_view text) { return TListingCell(arena_.Copy(text)); }
    TListingRow Row(std::initializer_list<TListingCell> cells, bool differs = false) {
        return {arena_.Copy(std::span(cells.begin(), cells.end())), differs};
    }

  private:
    TArena arena_;
};

/// Rows that belong together.
struct TListingGroup {
    std::string Title = {}; ///< empty where the listing has but one group
    std::vector<TListingRow> Rows = {};
    std::optional<TListingRow> Sum = {}; ///< under the rows
};

/// A line above the rows.
struct TListingLine {
    std::string_view Key;
    std::string_view Label;
    std::string Value;
    bool ByHand = false; ///< to be filled in on paper

    /// Whether people are shown it.
    bool IsShown() const { return ByHand || !Value.empty(); }
};

/// A number under the rows; those of one key are added up over files.
struct TListingTotal {
    std::string_view Key;
    std::string_view Label;
    TCellKind Kind = TCellKind::Count;
    std::optional<double> Value = {}; ///< nothing where it cannot be told
    bool Differs = false;
    std::set<std::string> Counted = {}; ///< what it counts, each once over all files, where files share some
};

/// The listing of one file.
struct TFileListing {
    std::string Arquivo = {}; ///< as the user named it
    TEnumTipoArquivoTiss Tipo = TEnumTipoArquivoTiss::taMensagemTISS;
    std::string Versao = {};
    std::vector<TListingLine> Head = {};
    std::span<const TListingColumn> Columns = {};
    std::vector<TListingGroup> Groups = {};
    std::vector<TListingTotal> Totals = {};
    std::vector<std::string> Notes = {};                                         ///< sentences
    std::shared_ptr<TListingMemory> Memory = std::make_shared<TListingMemory>(); ///< of the rows
    bool Signatures = false;  ///< who delivers and who receives sign below
    std::string Failure = {}; ///< why there is none; empty otherwise
    int FailureStatus = 0;    ///< the exit status that stands for that

    /// Whether a row or a total differs from the sum that it stands for.
    bool HasDifferences() const;
};

/// The totals of all files of a kind.
struct TListingSums {
    TEnumTipoArquivoTiss Tipo = TEnumTipoArquivoTiss::taMensagemTISS;
    std::size_t Files = 0;
    std::vector<TListingTotal> Totals = {};
};

/// A listing of one or several files.
struct TListing {
    TListingKind Kind = TListingKind::Guias;
    std::vector<TFileListing> Files = {};

    /// The totals over all files that could be listed, of each kind of file apart.
    std::vector<TListingSums> Sums() const;
    /// How many files could not be listed.
    std::size_t Failures() const;

  private:
    std::vector<TListingTotal> TotalsOf(TEnumTipoArquivoTiss tipo) const;
};

/// A file has nothing that the listing could show; the text says why.
class ENotListed : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Lists a file; `Arquivo` is left to the caller. Raises ENotListed.
TFileListing ListFile(const IArquivoTiss& file, TListingKind kind, TListingOrder order);
/// Whether a listing has rows that can be put into that order. Files of the kind have to exist.
bool HasOrder(TListingKind kind, TListingOrder order);

} // namespace conferix
