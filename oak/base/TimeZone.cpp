// The zone conversions of DateTime.h.
#include "oak/base/DateTime.h"

namespace oak {

namespace {
constexpr std::int64_t kTicksPerMinute = 60 * FileTimeTicksPerSecond;

SYSTEMTIME Parts(std::int64_t ticks) noexcept {
  SYSTEMTIME parts{};
  FileTimeToSystem(TicksToFileTime(static_cast<std::uint64_t>(ticks < 0 ? 0 : ticks)), parts);
  return parts;
}

/// The day of the month that a rule "n-th weekday" means.
WORD DayOfRule(const SYSTEMTIME& rule, WORD year) noexcept {
  SYSTEMTIME first{};
  first.wYear = year;
  first.wMonth = rule.wMonth;
  first.wDay = 1;
  FILETIME time;
  if (!SystemToFileTime(first, time)) return 0;
  const int weekday = Parts(static_cast<std::int64_t>(FileTimeToTicks(time))).wDayOfWeek;
  int day = 1 + (rule.wDayOfWeek - weekday + 7) % 7 + (rule.wDay - 1) * 7;
  while (day > DaysInMonth(year, rule.wMonth)) day -= 7;
  return static_cast<WORD>(day);
}

/// When the clock is changed in that year, in wall time before the change; false
/// if it is not.
bool ChangeInYear(const SYSTEMTIME& rule, WORD year, std::int64_t& ticks) noexcept {
  if (rule.wMonth == 0 || (rule.wYear != 0 && rule.wYear != year)) return false;
  if (rule.wYear == 0 && (rule.wDay < 1 || rule.wDay > 5 || rule.wDayOfWeek > 6)) return false;
  SYSTEMTIME change = rule;
  change.wYear = year;
  if (rule.wYear == 0) change.wDay = DayOfRule(rule, year);
  FILETIME time;
  if (!SystemToFileTime(change, time)) return false;
  ticks = static_cast<std::int64_t>(FileTimeToTicks(time));
  return true;
}

LONG StandardBias(const TIME_ZONE_INFORMATION& zone) noexcept {
  return zone.Bias + zone.StandardBias;
}
LONG DaylightBias(const TIME_ZONE_INFORMATION& zone) noexcept {
  return zone.Bias + zone.DaylightBias;
}

/// The bias at a moment that is given twice: as the wall time it has if standard
/// time holds, and if daylight time does.
LONG BiasAt(const TIME_ZONE_INFORMATION& zone, std::int64_t standard,
            std::int64_t daylight) noexcept {
  std::int64_t daylightStart, standardStart;
  const WORD year = Parts(standard).wYear;
  if (!ChangeInYear(zone.DaylightDate, year, daylightStart) ||
      !ChangeInYear(zone.StandardDate, year, standardStart))
    return StandardBias(zone);
  const bool hasBegun = standard >= daylightStart;
  const bool hasNotEnded = daylight < standardStart;
  // In the south daylight time spans the turn of the year.
  const bool isDaylight =
      daylightStart < standardStart ? hasBegun && hasNotEnded : hasBegun || hasNotEnded;
  return isDaylight ? DaylightBias(zone) : StandardBias(zone);
}

bool IsTime(const FILETIME& time) noexcept { return FileTimeToTicks(time) <= INT64_MAX; }

FILETIME Shifted(const FILETIME& time, std::int64_t minutes) noexcept {
  if (!IsTime(time)) return time;
  std::int64_t ticks = static_cast<std::int64_t>(FileTimeToTicks(time));
  const std::int64_t shift = minutes * kTicksPerMinute;
  if (shift > 0 && ticks > INT64_MAX - shift) return time;
  ticks += shift;
  return TicksToFileTime(static_cast<std::uint64_t>(ticks < 0 ? 0 : ticks));
}
}  // namespace

LONG ZoneBiasAtUtc(const TIME_ZONE_INFORMATION& zone, const FILETIME& utc) noexcept {
  const auto wallTime = [&utc](LONG bias) {
    return static_cast<std::int64_t>(FileTimeToTicks(Shifted(utc, -std::int64_t{bias})));
  };
  if (!IsTime(utc)) return StandardBias(zone);
  return BiasAt(zone, wallTime(StandardBias(zone)), wallTime(DaylightBias(zone)));
}

LONG ZoneBiasAtLocal(const TIME_ZONE_INFORMATION& zone, const FILETIME& local) noexcept {
  if (!IsTime(local)) return StandardBias(zone);
  const auto ticks = static_cast<std::int64_t>(FileTimeToTicks(local));
  return BiasAt(zone, ticks, ticks);
}

FILETIME UtcToZone(const TIME_ZONE_INFORMATION& zone, const FILETIME& utc) noexcept {
  return Shifted(utc, -std::int64_t{ZoneBiasAtUtc(zone, utc)});
}

FILETIME ZoneToUtc(const TIME_ZONE_INFORMATION& zone, const FILETIME& local) noexcept {
  return Shifted(local, ZoneBiasAtLocal(zone, local));
}

bool UtcToZone(const TIME_ZONE_INFORMATION& zone, const SYSTEMTIME& utc,
               SYSTEMTIME& local) noexcept {
  FILETIME time;
  return SystemToFileTime(utc, time) && FileTimeToSystem(UtcToZone(zone, time), local);
}

bool ZoneToUtc(const TIME_ZONE_INFORMATION& zone, const SYSTEMTIME& local,
               SYSTEMTIME& utc) noexcept {
  FILETIME time;
  return SystemToFileTime(local, time) && FileTimeToSystem(ZoneToUtc(zone, time), utc);
}

}  // namespace oak
