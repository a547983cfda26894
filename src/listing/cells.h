// Cells, and sums for them.
#pragma once

#include "listing/listing.h"
#include "xml/bindings/xml_field.h"

#include <cmath>

namespace conferix {

/// Adds decimals of up to four places without the noise that sums of doubles gather.
class TDecimalSum {
  public:
    void Add(double value) { sum_ += std::round(static_cast<long double>(value) * kUnits); }
    double Value() const { return static_cast<double>(sum_ / kUnits); }

  private:
    static constexpr long double kUnits = 10'000;
    long double sum_ = 0; ///< in units of the fourth decimal, whole
};

/// An amount that can be added up to the cent with many others; larger ones the standard does not have.
inline std::optional<double> Addable(std::optional<double> amount) {
    constexpr double kLimit = 1e10;
    return amount && std::fabs(*amount) < kLimit ? amount : std::nullopt;
}

/// Whether a field says something that cannot be added up. An empty one, with xsi:nil or without, says
/// nothing.
inline bool IsIlegivel(const TXmlField& field) {
    return field.Text().find_first_not_of(" \t\r\n") != std::string_view::npos && !Addable(field.Number());
}

/// A number without noise beyond the fourth decimal.
inline TListingCell NumberCell(std::optional<double> number) {
    if (!number)
        return {};
    TDecimalSum sum;
    sum.Add(*number);
    return TListingCell(sum.Value());
}

inline TListingCell CountCell(std::size_t count) {
    return TListingCell(static_cast<double>(count));
}

/// What is told of amounts that sums leave out; one at least.
std::string IlegiveisText(std::size_t count);

/// What is declared less what was computed; nothing where they agree or one of them is missing.
std::optional<double> DifferenceOf(const std::optional<double>& declared,
                                   const std::optional<double>& computed);

} // namespace conferix
