// Checks of the items of a guide and of the packages in them: fields 064 to 079 and 085.
#pragma once

#include "rules/monitoring/campo_validation.h"

#include <string_view>
#include <utility>
#include <vector>

namespace conferix {

/// A table and the code in it.
using TTableAndCode = std::pair<std::string_view, std::string_view>;

/// Finds the keys that repeat an earlier one; keeps its memory between the lists.
class TRepetitions {
  public:
    void Clear() { keys_.clear(); }
    void Add(const TTableAndCode& key) { keys_.push_back(key); }
    /// For each key, in the order of adding, whether an earlier one is equal; valid until the next call.
    const std::vector<bool>& Find();

  private:
    std::vector<TTableAndCode> keys_;
    std::vector<std::size_t> order_;
    std::vector<bool> repeated_;
};

/// 064: the table of an item is one of the domain of tables.
void CheckCodigoTabela(TCampoValidation& campo, const TGuiaFields& guia);

/// 065: groups of items exist, have no own table, and come once a guide.
struct TGrupoProcedimento {
    void operator()(TCampoValidation& campo, const TGuiaFields& guia);

    TRepetitions Repetitions = {};
};

/// 066: codes exist, are sent as themselves, and come once a guide and table.
struct TCodigoProcedimento {
    void operator()(TCampoValidation& campo, const TGuiaFields& guia);

    TRepetitions Repetitions = {};
};

/// A number of each item that has to be at least zero, or above it.
struct TNumeroDeItem {
    TNumberField TItemFields::*Number;
    bool MayBeZero;
    std::string_view TooSmall; ///< {} is the value

    void operator()(TCampoValidation& campo, const TGuiaFields& guia) const;
};

/// 075: check digits of the supplier's CNPJ.
void CheckCnpjFornecedor(TCampoValidation& campo, const TGuiaFields& guia);

// Each field of a package tells of packages where none may be.

/// 077: the table of a component.
void CheckPacoteTabela(TCampoValidation& campo, const TGuiaFields& guia);

/// 078: codes of components exist, are sent as themselves, and come once a package and table.
struct TPacoteProcedimento {
    void operator()(TCampoValidation& campo, const TGuiaFields& guia);

    TRepetitions Repetitions = {};
};

/// 079: the quantity of a component.
void CheckPacoteQuantidade(TCampoValidation& campo, const TGuiaFields& guia);

} // namespace conferix
