#include "rules/tuss_validation.h"

#include "xml/cut_text.h"
#include "xml/xml_node.h"

#include <fmt/format.h>

#include <chrono>

namespace conferix {

namespace {

/// Length of an xs:date without time zone.
constexpr std::size_t kDateLength = 10;

bool IsTimeZone(std::string_view text) {
    const auto digit = [&](std::size_t i) { return text[i] >= '0' && text[i] <= '9'; };
    return text.empty() || text == "Z" ||
           (text.size() == 6 && (text[0] == '+' || text[0] == '-') && digit(1) && digit(2) &&
            text[3] == ':' && digit(4) && digit(5));
}

std::string DateText(const std::optional<TDate>& date) {
    return date ? FormatUserDate(*date) : std::string();
}

TDate DayBefore(const TDate& date) {
    return TDate(std::chrono::sys_days(date) - std::chrono::days(1));
}

} // namespace

std::optional<TDate> ParseXsDate(std::string_view text) {
    const std::string_view trimmed = TrimXmlSpace(text);
    if (trimmed.size() < kDateLength || !IsTimeZone(trimmed.substr(kDateLength)))
        return std::nullopt;
    return ParseIsoDate(trimmed.substr(0, kDateLength));
}

std::string FormatUserDate(const TDate& date) {
    return fmt::format("{:02}/{:02}/{:04}", static_cast<unsigned>(date.day()),
                       static_cast<unsigned>(date.month()), static_cast<int>(date.year()));
}

const TTussValidation::TVerdict& TTussValidation::Verdict() {
    if (!verdict_)
        verdict_ = Evaluate();
    return *verdict_;
}

TTussResult TTussValidation::ValidationReturn() {
    return Verdict().Result;
}

std::string TTussValidation::ValidationMessage() {
    const TVerdict& verdict = Verdict();
    switch (verdict.Result) {
    case TTussResult::Valid:
        break;
    case TTussResult::Inactivated:
        return fmt::format("O termo de código {} da tabela {} da TUSS foi inativado{}.", code_, table_,
                           verdict.End ? " em " + DateText(verdict.End) : "");
    case TTussResult::NotFound:
        return fmt::format("O termo de código {} da tabela {} da TUSS não foi localizado no componente de "
                           "representação de conceitos em saúde do padrão TISS.",
                           CutText(code_, kShownFound), table_);
    case TTussResult::NotYetInForce:
        return fmt::format("O termo de código {} da tabela {} da TUSS entrará em vigência somente em {}.",
                           code_, table_, DateText(verdict.Start));
    case TTussResult::SendConsolidated:
        return fmt::format("O termo de código {} da tabela {} da TUSS deverá ser enviado de forma "
                           "consolidada, através do código de grupo {} (de acordo com a tabela de domínio nº "
                           "64).",
                           code_, table_, verdict.Group);
    }
    return {};
}

TTussValidation::TVerdict TTussValidation::Evaluate() const {
    const TTussTermLookups& term = manager_->Term(table_, code_);
    TVerdict verdict;
    verdict.Start = term.start.Date;
    verdict.End = term.inactivation.Date;
    bool inForce = false;
    bool notYet = false;
    bool inactivated = false;
    if (term.start.Found) {
        // Without a start the term has always been in force.
        notYet = verdict.Start && date_ < *verdict.Start;
        inForce = !notYet;
    }
    if (term.inactivation.Found) {
        // Without its day the inactivation holds on all days.
        if (verdict.End && date_ <= *verdict.End)
            inForce = true;
        else
            inactivated = true;
    }
    if (inForce && inactivated) {
        // A start after the inactivation says that the term was reintroduced.
        const bool reintroduced = verdict.Start && verdict.End && *verdict.Start > *verdict.End;
        verdict.Result = reintroduced ? TTussResult::Valid : TTussResult::Inactivated;
    } else if (inForce) {
        verdict.Result = TTussResult::Valid;
    } else if (inactivated) {
        verdict.Result = TTussResult::Inactivated;
    } else if (notYet) {
        verdict.Result = TTussResult::NotYetInForce;
    }
    return verdict;
}

TTussValidation::TVerdict TTuss64Validation::Evaluate() const {
    const std::vector<TTuss64>& rows = Manager().Table64(Table(), Code());
    TVerdict verdict;
    bool ok = false;
    bool notYet = false;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const TTuss64& row = rows[i];
        verdict.End = row.DataFimVigencia;
        if (!verdict.End && i + 1 < rows.size() && rows[i + 1].DataInicioVigencia)
            verdict.End = DayBefore(*rows[i + 1].DataInicioVigencia);
        if (row.DataInicioVigencia && *row.DataInicioVigencia > Date()) {
            notYet = true;
            verdict.Start = row.DataInicioVigencia;
            break;
        }
        // A period that is not consolidated ends the search even after its last day.
        if (!row.EnvioConsolidado || !verdict.End || Date() <= *verdict.End) {
            ok = true;
            verdict.Group = row.Grupo;
            break;
        }
    }
    if (ok)
        verdict.Result = verdict.Group.empty() ? TTussResult::Valid : TTussResult::SendConsolidated;
    else if (notYet)
        verdict.Result = TTussResult::NotYetInForce;
    else if (!rows.empty())
        verdict.Result = TTussResult::Inactivated;
    return verdict;
}

} // namespace conferix
