#include "oak/base/DateTime.h"

#include <algorithm>
#include <cmath>

#include "oak/base/Exceptions.h"

namespace oak {

namespace {
constexpr std::int64_t kMsPerDay = 86'400'000;
constexpr std::int64_t kTicksPerMs = 10'000;
// Days before and after 1899-12-30 that TDateTime is cut to.
constexpr std::int64_t kFirstDay = -693'593;  // 0001-01-01
constexpr std::int64_t kLastDay = 2'958'465;  // 9999-12-31
constexpr std::int64_t kFileTimeEpochDay = -109'205;
constexpr std::int64_t kFileTimeEpochUnix = -11'644'473'600;  // seconds
constexpr int kLastSystemYear = 30'827;

std::int64_t FloorDivide(std::int64_t a, std::int64_t b) noexcept {
  return a / b - (a % b < 0 ? 1 : 0);
}

// Days of the Gregorian calendar are counted in years that begin with March, so
// that the leap day comes last, in eras of 400 years.
constexpr std::int64_t kDaysPerEra = 146'097;
constexpr std::int64_t kMarchOfYear0 = -693'899;  // 0000-03-01, from 1899-12-30

std::int64_t DayNumber(std::int64_t year, int month, int day) noexcept {
  if (month <= 2) --year;
  const std::int64_t era = FloorDivide(year, 400);
  const std::int64_t yearOfEra = year - era * 400;
  const std::int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
  return kMarchOfYear0 + era * kDaysPerEra + yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 +
         dayOfYear;
}

TDateParts DateOfDay(std::int64_t dayNumber) noexcept {
  const std::int64_t days = dayNumber - kMarchOfYear0;
  const std::int64_t era = FloorDivide(days, kDaysPerEra);
  const std::int64_t dayOfEra = days - era * kDaysPerEra;
  const std::int64_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t month = (5 * dayOfYear + 2) / 153;
  const std::int64_t year = yearOfEra + era * 400 + (month >= 10 ? 1 : 0);
  return {static_cast<int>(year), static_cast<int>(month < 10 ? month + 3 : month - 9),
          static_cast<int>(dayOfYear - (153 * month + 2) / 5 + 1)};
}

int WeekdayOfDay(std::int64_t dayNumber) noexcept {
  return static_cast<int>(((dayNumber + 6) % 7 + 7) % 7);  // 1899-12-30 was a Saturday
}

// --- milliseconds since 1899-12-30 -----------------------------------------

std::int64_t ToMilliseconds(TDateTime value) noexcept {
  if (!(value > static_cast<double>(kFirstDay - 1))) return kFirstDay * kMsPerDay;
  if (value >= static_cast<double>(kLastDay + 1)) return (kLastDay + 1) * kMsPerDay - 1;
  const double days = std::trunc(value);
  const std::int64_t ms = static_cast<std::int64_t>(days) * kMsPerDay +
                          std::llround(std::fabs(value - days) * kMsPerDay);
  return std::clamp(ms, kFirstDay * kMsPerDay, (kLastDay + 1) * kMsPerDay - 1);
}

TDateTime FromMilliseconds(std::int64_t ms) noexcept {
  const std::int64_t days = FloorDivide(ms, kMsPerDay);
  const double part = static_cast<double>(ms - days * kMsPerDay) / static_cast<double>(kMsPerDay);
  const double whole = static_cast<double>(days);
  return days < 0 ? whole - part : whole + part;
}

TTimeParts TimeOfMs(std::int64_t ms) noexcept {
  const auto part = [ms](std::int64_t unit, std::int64_t count) {
    return static_cast<int>(ms / unit % count);
  };
  return {part(3'600'000, 24), part(60'000, 60), part(1000, 60), part(1, 1000)};
}

std::int64_t MsOfTime(int hour, int minute, int second, int ms) noexcept {
  return ((hour * std::int64_t{60} + minute) * 60 + second) * 1000 + ms;
}

bool IsTime(int hour, int minute, int second, int ms) noexcept {
  return hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60 &&
         ms >= 0 && ms < 1000;
}

// --- formatting -------------------------------------------------------------

void AppendNumber(TString& text, int value, std::size_t digits) {
  const TString number = IntToStr(value);
  if (number.size() < digits) text.append(digits - number.size(), u'0');
  text.append(number);
}

/// Appends the part that a run of one letter stands for; false if it is none.
bool AppendPart(TString& text, char16_t letter, std::size_t run, const TDateParts& date,
                const TTimeParts& time) {
  if (letter == u'y' && (run == 2 || run == 4)) {
    AppendNumber(text, run == 2 ? date.year % 100 : date.year, run);
    return true;
  }
  if (letter == u'z' && run == 3) {
    AppendNumber(text, time.millisecond, run);
    return true;
  }
  if (run > 2) return false;
  switch (letter) {
    case u'm':
      AppendNumber(text, date.month, run);
      return true;
    case u'd':
      AppendNumber(text, date.day, run);
      return true;
    case u'h':
      AppendNumber(text, time.hour, run);
      return true;
    case u'n':
      AppendNumber(text, time.minute, run);
      return true;
    case u's':
      AppendNumber(text, time.second, run);
      return true;
    default:
      return false;
  }
}
}  // namespace

// --- calendar --------------------------------------------------------------

bool IsLeapYear(int year) noexcept { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

int DaysInMonth(int year, int month) noexcept {
  if (month < 1 || month > 12) return 0;
  if (month == 2) return IsLeapYear(year) ? 29 : 28;
  return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

bool TryEncodeDate(int year, int month, int day, TDateTime& date) noexcept {
  if (year < 1 || year > 9999 || day < 1 || day > DaysInMonth(year, month)) return false;
  date = static_cast<TDateTime>(DayNumber(year, month, day));
  return true;
}

TDateTime EncodeDate(int year, int month, int day) {
  TDateTime date;
  if (!TryEncodeDate(year, month, day, date))
    throw EConvertError(u"Invalid argument to date encode");
  return date;
}

TDateTime EncodeTime(int hour, int minute, int second, int millisecond) {
  if (!IsTime(hour, minute, second, millisecond))
    throw EConvertError(u"Invalid argument to time encode");
  return FromMilliseconds(MsOfTime(hour, minute, second, millisecond));
}

TDateTime EncodeDateTime(const TDateParts& date, const TTimeParts& time) {
  const TDateTime day = EncodeDate(date.year, date.month, date.day);
  const TDateTime part = EncodeTime(time.hour, time.minute, time.second, time.millisecond);
  return day < 0 ? day - part : day + part;
}

TDateParts DecodeDate(TDateTime value) noexcept {
  return DateOfDay(FloorDivide(ToMilliseconds(value), kMsPerDay));
}

TTimeParts DecodeTime(TDateTime value) noexcept {
  const std::int64_t ms = ToMilliseconds(value);
  return TimeOfMs(ms - FloorDivide(ms, kMsPerDay) * kMsPerDay);
}

int DayOfWeek(TDateTime value) noexcept {
  return WeekdayOfDay(FloorDivide(ToMilliseconds(value), kMsPerDay));
}

std::int64_t MillisecondsBetween(TDateTime from, TDateTime to) noexcept {
  return ToMilliseconds(to) - ToMilliseconds(from);
}

TString FormatDateTime(TStringView format, TDateTime value) {
  const TDateParts date = DecodeDate(value);
  const TTimeParts time = DecodeTime(value);
  TString text;
  for (std::size_t i = 0; i < format.size();) {
    const char16_t c = LowCase(format[i]);
    if (c == u'"' || c == u'\'') {
      const std::size_t end = std::min(format.find(c, i + 1), format.size());
      text.append(format.substr(i + 1, end - i - 1));
      i = end + 1;
      continue;
    }
    std::size_t run = 1;
    while (i + run < format.size() && LowCase(format[i + run]) == c) ++run;
    if (!AppendPart(text, c, run, date, time)) text.append(format.substr(i, run));
    i += run;
  }
  return text;
}

// --- FILETIME --------------------------------------------------------------

TDateTime FileTimeToDateTime(const FILETIME& time) noexcept {
  constexpr std::uint64_t kEnd =
      std::uint64_t{kLastDay + 1 - kFileTimeEpochDay} * FileTimeTicksPerDay - 1;
  const std::uint64_t ticks = std::min(FileTimeToTicks(time), kEnd);
  return FromMilliseconds(static_cast<std::int64_t>(ticks / kTicksPerMs) +
                          kFileTimeEpochDay * kMsPerDay);
}

FILETIME DateTimeToFileTime(TDateTime value) noexcept {
  const std::int64_t ms = ToMilliseconds(value) - kFileTimeEpochDay * kMsPerDay;
  return TicksToFileTime(ms < 0 ? 0 : static_cast<std::uint64_t>(ms) * kTicksPerMs);
}

FILETIME UnixToFileTime(std::int64_t seconds, std::int64_t nanoseconds) noexcept {
  // Beyond this the highest bit would be set, which no function of the platform takes.
  constexpr std::int64_t kMaxSeconds = INT64_MAX / FileTimeTicksPerSecond - 1;
  if (seconds < kFileTimeEpochUnix) return {};
  const std::int64_t since =
      std::min(seconds, kMaxSeconds + kFileTimeEpochUnix) - kFileTimeEpochUnix;
  return TicksToFileTime(
      static_cast<std::uint64_t>(since * FileTimeTicksPerSecond + nanoseconds / 100));
}

TUnixTime FileTimeToUnix(const FILETIME& time) noexcept {
  const std::uint64_t ticks = FileTimeToTicks(time);
  return {static_cast<std::int64_t>(ticks / FileTimeTicksPerSecond) + kFileTimeEpochUnix,
          static_cast<std::int32_t>(ticks % FileTimeTicksPerSecond * 100)};
}

// --- SYSTEMTIME ------------------------------------------------------------

bool FileTimeToSystem(const FILETIME& from, SYSTEMTIME& to) noexcept {
  const std::uint64_t ticks = FileTimeToTicks(from);
  if (ticks > INT64_MAX) return false;
  const std::int64_t dayNumber =
      static_cast<std::int64_t>(ticks / FileTimeTicksPerDay) + kFileTimeEpochDay;
  const TDateParts date = DateOfDay(dayNumber);
  const TTimeParts time =
      TimeOfMs(static_cast<std::int64_t>(ticks % FileTimeTicksPerDay / kTicksPerMs));
  const auto word = [](int value) { return static_cast<WORD>(value); };
  to.wYear = word(date.year);
  to.wMonth = word(date.month);
  to.wDayOfWeek = word(WeekdayOfDay(dayNumber));
  to.wDay = word(date.day);
  to.wHour = word(time.hour);
  to.wMinute = word(time.minute);
  to.wSecond = word(time.second);
  to.wMilliseconds = word(time.millisecond);
  return true;
}

bool SystemToFileTime(const SYSTEMTIME& from, FILETIME& to) noexcept {
  if (from.wYear < 1601 || from.wYear > kLastSystemYear || from.wDay < 1 ||
      from.wDay > DaysInMonth(from.wYear, from.wMonth) ||
      !IsTime(from.wHour, from.wMinute, from.wSecond, from.wMilliseconds))
    return false;
  const std::int64_t days = DayNumber(from.wYear, from.wMonth, from.wDay) - kFileTimeEpochDay;
  const std::int64_t ms = MsOfTime(from.wHour, from.wMinute, from.wSecond, from.wMilliseconds);
  to = TicksToFileTime(static_cast<std::uint64_t>((days * kMsPerDay + ms) * kTicksPerMs));
  return true;
}

bool SystemToDateTime(const SYSTEMTIME& from, TDateTime& to) noexcept {
  FILETIME time;
  if (from.wYear > 9999 || !SystemToFileTime(from, time)) return false;
  to = FileTimeToDateTime(time);
  return true;
}

bool DateTimeToSystem(TDateTime from, SYSTEMTIME& to) noexcept {
  const bool isInRange = from >= FileTimeEpochDate && from < static_cast<double>(kLastDay + 1);
  return isInRange && FileTimeToSystem(DateTimeToFileTime(from), to);
}

}  // namespace oak
