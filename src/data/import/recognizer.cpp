#include "data/import/recognizer.h"

#include "data/import/cell_text.h"
#include "data/plain_text.h"

#include <algorithm>
#include <utility>

namespace conferix {

namespace {

/// Length of the codes of a table; 0 where it varies or is not known.
std::size_t CodeLength(std::string_view table) {
    constexpr std::size_t kTermLength = 8;
    constexpr std::pair<std::string_view, std::size_t> kLengths[] = {
        {"18", kTermLength}, {"19", kTermLength}, {"20", kTermLength},
        {"22", kTermLength}, {"63", 3},           {"87", 2},
    };
    for (const auto& [number, length] : kLengths) {
        if (number == table) {
            return length;
        }
    }
    return 0;
}

/// A label in one form for all publications: "Data de início de vigência", "extras_inicio_vigencia" and
/// "Inicio da vigencia" all give "inicio vigencia".
std::string LabelKey(std::string_view label) {
    const std::string plain = PlainText(label);
    std::string key;
    std::string_view rest = plain;
    while (!rest.empty()) {
        const std::size_t length = std::min(rest.find(' '), rest.size());
        const std::string_view word = rest.substr(0, length);
        rest.remove_prefix(std::min(length + 1, rest.size()));
        constexpr std::string_view kLeftOut[] = {"de", "da", "do", "data", "extras"};
        if (std::find(std::begin(kLeftOut), std::end(kLeftOut), word) == std::end(kLeftOut)) {
            key += (key.empty() ? "" : " ") + std::string(word);
        }
    }
    return key;
}

std::string TextOf(const TCell& cell) {
    return IsNone(cell) || cell.IsInvalid ? std::string() : cell.Text;
}

std::string Quoted(const TCell& cell) {
    return "\"" + cell.Text + "\"";
}

} // namespace

std::optional<TRecognizer::TField> TRecognizer::FieldOf(std::string_view label) {
    constexpr std::size_t kMaxLabel = 100;
    if (label.empty() || label.size() > kMaxLabel) {
        return std::nullopt;
    }
    static constexpr std::pair<std::string_view, TField> kFields[] = {
        {"codigo termo", TField::Codigo},
        {"codigo tuss", TField::Codigo},
        {"codigo", TField::Codigo},
        {"id", TField::Codigo},
        {"codigo tabela", TField::CodigoDaTabela},
        {"codigo ibge", TField::CodigoIbge},
        {"termo", TField::Termo},
        {"display name", TField::Termo},
        {"descricao", TField::Termo},
        {"descricao termo", TField::Termo},
        {"descricao tabela", TField::Termo},
        {"nome tabela", TField::Termo},
        {"nome", TField::Termo},
        {"grupo", TField::Grupo},
        {"apresentacao", TField::Apresentacao},
        {"inicio vigencia", TField::Inicio},
        {"fim vigencia", TField::Fim},
        {"fim implantacao", TField::Implantacao},
        {"codigo terminologia", TField::Origem},
        {"source", TField::Origem},
        {"terminologia", TField::Terminologia},
        {"forma envio", TField::FormaDeEnvio},
        {"codigo grupo", TField::CodigoDoGrupo},
        {"competencia", TField::Competencia},
    };
    const std::string key = LabelKey(label);
    for (const auto& [known, field] : kFields) {
        if (known == key) {
            return field;
        }
    }
    return std::nullopt;
}

std::optional<TRecognizer::TColumns> TRecognizer::ColumnsOf(const TRow& row) {
    TColumns columns;
    std::size_t found = 0;
    for (std::size_t i = 0; i < row.Cells.size(); ++i) {
        const auto field = row.Cells[i].IsNumber ? std::nullopt : FieldOf(row.Cells[i].Text);
        if (field && !columns[static_cast<std::size_t>(*field)]) {
            columns[static_cast<std::size_t>(*field)] = i;
            ++found;
        }
    }
    const auto has = [&](TField field) { return columns[static_cast<std::size_t>(field)].has_value(); };
    const bool hasCode = has(TField::Codigo) || has(TField::CodigoDaTabela) || has(TField::CodigoIbge);
    return hasCode && found > 1 ? std::optional(columns) : std::nullopt;
}

void TRecognizer::UseColumns(const TRow& header, const TColumns& columns) {
    columns_ = columns;
    hasUnknownColumns_ = std::any_of(header.Cells.begin(), header.Cells.end(),
                                     [](const TCell& cell) { return !IsNone(cell) && !FieldOf(cell.Text); });
}

bool TRecognizer::IsHeader(const TRow& row) {
    return ColumnsOf(row).has_value();
}

const TCell& TRecognizer::Cell(const TRow& row, TField field) const {
    static const TCell kEmpty;
    const std::optional<std::size_t> column = (*columns_)[static_cast<std::size_t>(field)];
    return column && *column < row.Cells.size() ? row.Cells[*column] : kEmpty;
}

TRecognizer::TKind TRecognizer::Take(const TRow& row, TPublishedRow& result, std::string& reason) {
    if (!columns_) {
        if (const auto columns = ColumnsOf(row)) {
            UseColumns(row, *columns);
        } else if (tableOfNames_.empty()) {
            for (const TCell& cell : row.Cells) {
                tableOfNames_ = tableOfNames_.empty() ? TableInTitle(cell.Text) : tableOfNames_;
            }
        }
        return TKind::Skipped;
    }
    if (!row.Defect.empty()) {
        reason = row.Defect;
        return TKind::NotUnderstood;
    }
    if (std::all_of(row.Cells.begin(), row.Cells.end(), &IsNone)) {
        return TKind::Skipped;
    }
    result = {};
    if (TakeTerm(row, result, reason)) {
        constexpr std::string_view kWithDates[] = {"18", "19", "20", "22"};
        const bool hasDates = Has(TField::Inicio) || Has(TField::Fim) || Has(TField::Implantacao);
        missesDates_ = missesDates_ || (!hasDates && hasUnknownColumns_ &&
                                        std::find(std::begin(kWithDates), std::end(kWithDates),
                                                  result.Tabela) != std::end(kWithDates));
        return TKind::Understood;
    }
    // A sheet may hold several tables one below another, each with a header.
    if (const auto columns = ColumnsOf(row)) {
        UseColumns(row, *columns);
        return TKind::Skipped;
    }
    return TKind::NotUnderstood;
}

std::string TRecognizer::TableOf(const TRow& row) const {
    if (Has(TField::Origem)) {
        return TableInCell(Cell(row, TField::Origem));
    }
    if (Has(TField::FormaDeEnvio)) {
        return "64";
    }
    if (Has(TField::CodigoDaTabela) && !Has(TField::Codigo)) {
        return "87";
    }
    if (!tableOfNames_.empty()) {
        return tableOfNames_;
    }
    return Has(TField::Grupo) ? "63" : std::string();
}

bool TRecognizer::TakeTerm(const TRow& row, TPublishedRow& result, std::string& reason) const {
    const TField codeField = Has(TField::Codigo)       ? TField::Codigo
                             : Has(TField::CodigoIbge) ? TField::CodigoIbge
                                                       : TField::CodigoDaTabela;
    TCell code = Cell(row, codeField);
    result.Tabela = codeField == TField::CodigoIbge ? std::string(kCities) : TableOf(row);
    if (result.Tabela.empty()) {
        // The service's list of its tables.
        if (const std::string table = TableInTitle(code.Text); !table.empty()) {
            result.Tabela = "87";
            code = {table, false, false};
        }
    }
    if (result.Tabela.empty()) {
        reason = Has(TField::Origem)
                     ? "o número da tabela não pôde ser lido: " + Quoted(Cell(row, TField::Origem))
                     : "nada diz de que tabela da TUSS são os termos";
        return false;
    }
    constexpr std::size_t kCityLength = 7;
    constexpr std::size_t kLength64 = 8;
    const bool isCity = result.Tabela == kCities;
    const std::size_t length = isCity ? kCityLength : CodeLength(result.Tabela);
    auto text = CodeInCell(code, result.Tabela == "64" ? kLength64 : length);
    if (!text && !IsNone(code) && !code.IsInvalid && length == 0 && result.Tabela != "64") {
        text = code.Text; // the domain tables have codes of all kinds
    }
    if (!text) {
        reason = IsNone(code) ? "falta o código" : Quoted(code) + " não é um código";
        return false;
    }
    if (length > 0 &&
        (text->size() != length || text->find_first_not_of("0123456789") != std::string::npos)) {
        reason = "o código " + Quoted(code) + " não tem " + std::to_string(length) + " dígitos";
        return false;
    }
    result.Codigo = *text;
    // A history of mostly table 64 has the other tables' terms in the column of the form of sending.
    result.Termo = TextOf(Cell(row, Has(TField::Termo)          ? TField::Termo
                                    : Has(TField::FormaDeEnvio) ? TField::FormaDeEnvio
                                                                : TField::Grupo));
    if (const std::string extra = TextOf(Cell(row, TField::Apresentacao)); !extra.empty()) {
        result.Termo += (result.Termo.empty() ? "" : ", ") + extra;
    }
    if (!TakePeriod(row, result.Period, reason)) {
        return false;
    }
    return result.Tabela != "64" || TakeTable64(row, result, reason);
}

bool TRecognizer::TakePeriod(const TRow& row, TPeriod& period, std::string& reason) const {
    const std::pair<TField, std::string TPeriod::*> kDates[] = {
        {TField::Inicio, &TPeriod::Start},
        {TField::Fim, &TPeriod::End},
        {TField::Implantacao, &TPeriod::ImplementationEnd}};
    for (const auto& [field, member] : kDates) {
        const TCell& cell = Cell(row, field);
        const auto date = DateInCell(cell);
        if (!date) {
            reason = Quoted(cell) + " não é uma data";
            return false;
        }
        period.*member = *date;
    }
    return true;
}

bool TRecognizer::TakeTable64(const TRow& row, TPublishedRow& result, std::string& reason) const {
    const TCell& form = Cell(row, Has(TField::FormaDeEnvio) ? TField::FormaDeEnvio : TField::Termo);
    const std::string plain = PlainText(form.Text);
    result.EnvioConsolidado = plain.starts_with("consolidad");
    if (!result.EnvioConsolidado && !plain.starts_with("individualizad")) {
        reason = "a forma de envio não é Consolidado nem Individualizado: " + Quoted(form);
        return false;
    }
    result.Termo.clear();
    if (Has(TField::Terminologia)) {
        const TCell& table = Cell(row, TField::Terminologia);
        result.TabelaDoTermo = TableInCell(table);
        if (result.TabelaDoTermo.empty()) {
            reason = "o número da tabela não pôde ser lido: " + Quoted(table);
            return false;
        }
    }
    const TCell& group = Cell(row, TField::CodigoDoGrupo);
    if (!IsNone(group)) {
        const std::size_t length = CodeLength("63");
        const std::string code = CodeInCell(group, length).value_or(std::string());
        if (code.empty() || code.size() > length ||
            code.find_first_not_of("0123456789") != std::string::npos) {
            reason = Quoted(group) + " não é um código de grupo";
            return false;
        }
        // Spreadsheets that save a text leave out its leading zeros.
        result.Grupo = std::string(length - code.size(), '0') + code;
    }
    return true;
}

} // namespace conferix
