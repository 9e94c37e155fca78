// Dates and times: conversions between the forms that the platform uses, and
// between zones. Pure functions of their arguments: no clock, no locale, no
// environment; any thread.
#pragma once

#include <cstdint>

#include "oak/base/Text.h"

namespace oak {

/// Days since 1899-12-30 00:00, the time of day as fraction: the platform's DATE.
/// Before that day the fraction still counts forward from midnight (-1.25 is
/// 06:00 of 1899-12-29). No zone. 0 often stands for "no date".
using TDateTime = double;

struct TDateParts {
  int year, month, day;
};
struct TTimeParts {
  int hour, minute, second, millisecond;
};

inline constexpr TDateTime UnixEpochDate = 25569.0;        ///< 1970-01-01
inline constexpr TDateTime FileTimeEpochDate = -109205.0;  ///< 1601-01-01
inline constexpr std::int64_t FileTimeTicksPerSecond = 10'000'000;
inline constexpr std::int64_t FileTimeTicksPerDay = 86400 * FileTimeTicksPerSecond;

// --- calendar --------------------------------------------------------------
bool IsLeapYear(int year) noexcept;
/// 0 if there is no such month.
int DaysInMonth(int year, int month) noexcept;
/// Years 1 to 9999 of the Gregorian calendar. False for a day that does not
/// exist and leaves `date` alone.
bool TryEncodeDate(int year, int month, int day, TDateTime& date) noexcept;
/// As TryEncodeDate; raises EConvertError.
TDateTime EncodeDate(int year, int month, int day);
/// A fraction of a day; raises EConvertError outside 00:00:00.000 to 23:59:59.999.
TDateTime EncodeTime(int hour, int minute, int second, int millisecond);
TDateTime EncodeDateTime(const TDateParts& date, const TTimeParts& time);
/// Rounded to whole milliseconds first, which may reach the next day. A value
/// beyond the years 1 to 9999, or no number, is cut to that range.
TDateParts DecodeDate(TDateTime value) noexcept;
TTimeParts DecodeTime(TDateTime value) noexcept;
/// 0 is Sunday, as in SYSTEMTIME.
int DayOfWeek(TDateTime value) noexcept;
/// Milliseconds between the two, which plain subtraction does not give before 1899.
std::int64_t MillisecondsBetween(TDateTime from, TDateTime to) noexcept;

/// Replaces, in any case, yyyy yy mm m dd d hh h nn n ss s zzz by the parts of
/// the value (n is minutes). Text in single or double quotes and every other
/// character stands as it is.
TString FormatDateTime(TStringView format, TDateTime value);

// --- FILETIME --------------------------------------------------------------
/// 100-nanosecond steps since 1601-01-01.
constexpr std::uint64_t FileTimeToTicks(const FILETIME& time) noexcept {
  return (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
}
constexpr FILETIME TicksToFileTime(std::uint64_t ticks) noexcept {
  return {static_cast<DWORD>(ticks & 0xFFFFFFFFu), static_cast<DWORD>(ticks >> 32)};
}
/// Negative, 0 or positive.
constexpr int CompareFileTimes(const FILETIME& a, const FILETIME& b) noexcept {
  const std::uint64_t x = FileTimeToTicks(a);
  const std::uint64_t y = FileTimeToTicks(b);
  return x == y ? 0 : x < y ? -1 : 1;
}

/// The same moment in the other form; the zone is not touched. To the
/// millisecond. Times beyond year 9999 are cut to its end.
TDateTime FileTimeToDateTime(const FILETIME& time) noexcept;
/// Before 1601: zero.
FILETIME DateTimeToFileTime(TDateTime value) noexcept;

/// Seconds since 1970-01-01 and the nanoseconds (0 to 999,999,999) after them.
struct TUnixTime {
  std::int64_t seconds;
  std::int32_t nanoseconds;
};
/// Before 1601: zero. Nanoseconds are cut to steps of 100.
FILETIME UnixToFileTime(std::int64_t seconds, std::int64_t nanoseconds = 0) noexcept;
TUnixTime FileTimeToUnix(const FILETIME& time) noexcept;

// --- SYSTEMTIME ------------------------------------------------------------
// Milliseconds only. False leaves the result alone: a FILETIME with its highest
// bit set, a SYSTEMTIME that names no moment (wDayOfWeek is not read).
bool FileTimeToSystem(const FILETIME& from, SYSTEMTIME& to) noexcept;
bool SystemToFileTime(const SYSTEMTIME& from, FILETIME& to) noexcept;
bool SystemToDateTime(const SYSTEMTIME& from, TDateTime& to) noexcept;
/// False outside the years 1601 to 9999.
bool DateTimeToSystem(TDateTime from, SYSTEMTIME& to) noexcept;

// --- zones -----------------------------------------------------------------
// A zone's change dates are given in the wall time before the change, as a day
// of a year (wYear not 0) or as the n-th weekday of a month of every year (wDay 5
// is the last). Without a month there is no daylight time.

/// Minutes to add to the zone's time at that moment to get UTC.
LONG ZoneBiasAtUtc(const TIME_ZONE_INFORMATION& zone, const FILETIME& utc) noexcept;
/// The same for a wall time of the zone. An hour that the clock shows twice, and
/// one that it skips, count as daylight time.
LONG ZoneBiasAtLocal(const TIME_ZONE_INFORMATION& zone, const FILETIME& local) noexcept;
FILETIME UtcToZone(const TIME_ZONE_INFORMATION& zone, const FILETIME& utc) noexcept;
FILETIME ZoneToUtc(const TIME_ZONE_INFORMATION& zone, const FILETIME& local) noexcept;
/// False as in SystemToFileTime.
bool UtcToZone(const TIME_ZONE_INFORMATION& zone, const SYSTEMTIME& utc,
               SYSTEMTIME& local) noexcept;
bool ZoneToUtc(const TIME_ZONE_INFORMATION& zone, const SYSTEMTIME& local,
               SYSTEMTIME& utc) noexcept;

}  // namespace oak
