// Calendar dates in the text form YYYY-MM-DD.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace conferix {

/// A whole day, without time and zone.
using TDate = std::chrono::year_month_day;

/// The day of a year, month and day; nothing for one that the calendar does not have. Years from -32767 to
/// 32767.
std::optional<TDate> MakeDate(int year, unsigned month, unsigned day);

/// The day that a text of exactly the form YYYY-MM-DD names; nothing for another form or for a day
/// that the calendar does not have. Years run from 0001 to 9999.
std::optional<TDate> ParseIsoDate(std::string_view text);

/// A day as YYYY-MM-DD.
std::string FormatIsoDate(const TDate& date);

} // namespace conferix
