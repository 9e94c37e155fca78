// Numbers, sizes and dates as the user's language writes them. Any thread.
#pragma once

#include "oak/base/DateTime.h"

namespace oak {

/// Whole number with separators between the thousands.
TString GroupedNumber(std::uint64_t number, bool negative = false);
/// Number with the language's decimal separator and all its digits.
TString DecimalNumber(double number);
/// "1.21 KB": three digits of the largest unit that fits, cut off or rounded.
TString ByteSizeText(std::uint64_t bytes, bool round = false);
/// "1,206 KB": whole kilobytes, rounded up.
TString KilobyteText(std::uint64_t bytes);
/// Short date and time of day to the second, either alone for midnight and for the day 0.
TString DateTimeText(TDateTime value);

}  // namespace oak
