// Clock, zones and conversions of time.
#include <time.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <string>

#include "oak/base/DateTime.h"
#include "oak/platform/portable/SystemBinding.h"

namespace oak {
namespace {

timespec Now(clockid_t clock) {
  timespec time{};
  clock_gettime(clock, &time);
  return time;
}

FILETIME NowAsFileTime() {
  const timespec now = Now(CLOCK_REALTIME);
  return UnixToFileTime(now.tv_sec, now.tv_nsec);
}

std::int64_t Milliseconds(const timespec& time) {
  return static_cast<std::int64_t>(time.tv_sec) * 1000 + time.tv_nsec / 1000000;
}

// How long the machine has slept: only the exact clocks tell, at six times the price of the
// coarse one, so they are asked once a second.
std::int64_t SleptMilliseconds(std::int64_t second) {
  static std::atomic<std::int64_t> asked{-1}, slept{0};
  if (asked.load(std::memory_order_relaxed) != second) {
    constexpr std::int64_t tolerance = 100;  // of the moment between the two
    const std::int64_t without = Milliseconds(Now(CLOCK_MONOTONIC));
    const std::int64_t found = Milliseconds(Now(CLOCK_BOOTTIME)) - without;
    if (found > slept.load(std::memory_order_relaxed) + tolerance) slept = found;
    asked.store(second, std::memory_order_relaxed);
  }
  return slept.load(std::memory_order_relaxed);
}

// To some milliseconds, and cheap, as on the platform; goes on while the machine sleeps.
ULONGLONG STDAPICALLTYPE GetTickCount64() {
  const timespec now = Now(CLOCK_MONOTONIC_COARSE);
  return static_cast<ULONGLONG>(Milliseconds(now) + SleptMilliseconds(now.tv_sec));
}

void STDAPICALLTYPE Sleep(DWORD milliseconds) {
  if (milliseconds == 0) {
    const timespec none{};
    nanosleep(&none, nullptr);
    return;
  }
  timespec rest{static_cast<time_t>(milliseconds / 1000),
                static_cast<long>(milliseconds % 1000) * 1000000};
  do {
    while (clock_nanosleep(CLOCK_MONOTONIC, 0, &rest, &rest) == EINTR) {
    }
    rest = {86400, 0};
  } while (milliseconds == INFINITE);
}

void STDAPICALLTYPE GetSystemTimeAsFileTime(FILETIME* time) {
  if (time) *time = NowAsFileTime();
}

void STDAPICALLTYPE GetSystemTime(SYSTEMTIME* time) {
  if (time) FileTimeToSystem(NowAsFileTime(), *time);
}

// --- the machine's zone ------------------------------------------------------

// Seconds to add to UTC for the machine's wall time at that moment.
long OffsetAt(time_t moment) {
  tm local{};
  localtime_r(&moment, &local);
  return local.tm_gmtoff;
}

struct TTransition {
  time_t Moment;  // the first second with the new offset
  long Before;
  long After;
};

// The changes of offset within a year from `start` on.
std::vector<TTransition> FindTransitions(time_t start) {
  constexpr time_t day = 86400;
  std::vector<TTransition> found;
  for (time_t at = start; at < start + 366 * day; at += day) {
    const long before = OffsetAt(at);
    const long after = OffsetAt(at + day);
    if (before == after) continue;
    time_t low = at, high = at + day;
    while (high - low > 1) {
      const time_t middle = low + (high - low) / 2;
      (OffsetAt(middle) == before ? low : high) = middle;
    }
    found.push_back({high, before, after});
  }
  return found;
}

// A change as the n-th weekday of its month, in the wall time before it.
SYSTEMTIME RuleOf(const TTransition& transition) {
  const time_t wall = transition.Moment + transition.Before;
  tm parts{};
  gmtime_r(&wall, &parts);
  SYSTEMTIME rule{};
  rule.wMonth = static_cast<WORD>(parts.tm_mon + 1);
  rule.wDayOfWeek = static_cast<WORD>(parts.tm_wday);
  const bool last = parts.tm_mday + 7 > DaysInMonth(parts.tm_year + 1900, parts.tm_mon + 1);
  rule.wDay = static_cast<WORD>(last ? 5 : (parts.tm_mday - 1) / 7 + 1);
  rule.wHour = static_cast<WORD>(parts.tm_hour);
  rule.wMinute = static_cast<WORD>(parts.tm_min);
  rule.wSecond = static_cast<WORD>(parts.tm_sec);
  return rule;
}

void PutZoneName(time_t moment, WCHAR (&name)[32]) {
  tm local{};
  localtime_r(&moment, &local);
  const TString text = FromUtf8(local.tm_zone ? local.tm_zone : "");
  CopyText(text.substr(0, std::size(name) - 1), name, std::size(name));
}

time_t StartOfYear(time_t now) {
  tm parts{};
  gmtime_r(&now, &parts);
  return now - parts.tm_yday * 86400 - parts.tm_hour * 3600 - parts.tm_min * 60 - parts.tm_sec;
}

// The zone by the rules of the year that `now` lies in. A year with one change
// only, or with more than two, has no rule of this form: then the present offset
// counts as it is.
DWORD ReadZone(time_t now, TIME_ZONE_INFORMATION& zone) {
  zone = TIME_ZONE_INFORMATION{};
  const std::vector<TTransition> changes = FindTransitions(StartOfYear(now));
  const long present = OffsetAt(now);
  const bool rules = changes.size() == 2 && changes[0].After == changes[1].Before &&
                     changes[0].Before == changes[1].After;
  if (!rules) {
    zone.Bias = static_cast<LONG>(-present / 60);
    PutZoneName(now, zone.StandardName);
    PutZoneName(now, zone.DaylightName);
    return TIME_ZONE_ID_UNKNOWN;
  }
  // Some zones call their winter time the special one: the later wall time counts
  // as daylight time here.
  const bool northern = changes[0].After > changes[0].Before;
  const TTransition& toDaylight = changes[northern ? 0 : 1];
  const TTransition& toStandard = changes[northern ? 1 : 0];
  zone.Bias = static_cast<LONG>(-toStandard.After / 60);
  zone.DaylightBias = static_cast<LONG>(-(toDaylight.After - toStandard.After) / 60);
  zone.DaylightDate = RuleOf(toDaylight);
  zone.StandardDate = RuleOf(toStandard);
  PutZoneName(toDaylight.Moment, zone.DaylightName);
  PutZoneName(toStandard.Moment, zone.StandardName);
  return present == toDaylight.After ? TIME_ZONE_ID_DAYLIGHT : TIME_ZONE_ID_STANDARD;
}

// Finding the changes of a year takes microseconds, and a listing asks once for each
// date that it shows: the answer holds for the second in which it was found.
class TZoneCache {
 public:
  DWORD Get(TIME_ZONE_INFORMATION& zone) {
    const time_t now = time(nullptr);
    const char* variable = getenv("TZ");
    const std::string name = variable ? variable : "/etc/localtime";
    const std::lock_guard guard(fLock);
    if (now != fSecond || name != fName) {
      tzset();
      fState = ReadZone(now, fZone);
      fSecond = now;
      fName = name;
    }
    zone = fZone;
    return fState;
  }

 private:
  std::mutex fLock;
  std::string fName;
  time_t fSecond = -1;
  TIME_ZONE_INFORMATION fZone{};
  DWORD fState = TIME_ZONE_ID_UNKNOWN;
};

DWORD STDAPICALLTYPE GetTimeZoneInformation(TIME_ZONE_INFORMATION* zone) {
  if (!zone) return FailWith(ERROR_INVALID_PARAMETER, TIME_ZONE_ID_INVALID);
  static TZoneCache cache;
  return SystemCall<DWORD>(TIME_ZONE_ID_INVALID, [&] { return cache.Get(*zone); });
}

TIME_ZONE_INFORMATION ZoneOrMachine(const TIME_ZONE_INFORMATION* zone) {
  if (zone) return *zone;
  TIME_ZONE_INFORMATION machine{};
  GetTimeZoneInformation(&machine);
  return machine;
}

void STDAPICALLTYPE GetLocalTime(SYSTEMTIME* local) {
  if (!local) return;
  const timespec now = Now(CLOCK_REALTIME);
  tzset();
  FileTimeToSystem(UnixToFileTime(now.tv_sec + OffsetAt(now.tv_sec), now.tv_nsec), *local);
}

// --- conversions -------------------------------------------------------------

BOOL STDAPICALLTYPE SystemTimeToFileTime(const SYSTEMTIME* from, FILETIME* to) {
  return from && to && SystemToFileTime(*from, *to) ? TRUE
                                                    : FailWith(ERROR_INVALID_PARAMETER, FALSE);
}

BOOL STDAPICALLTYPE FileTimeToSystemTime(const FILETIME* from, SYSTEMTIME* to) {
  return from && to && FileTimeToSystem(*from, *to) ? TRUE
                                                    : FailWith(ERROR_INVALID_PARAMETER, FALSE);
}

BOOL STDAPICALLTYPE SystemTimeToTzSpecificLocalTime(const TIME_ZONE_INFORMATION* zone,
                                                    const SYSTEMTIME* universal,
                                                    SYSTEMTIME* local) {
  return SystemCall<BOOL>(FALSE, [&] {
    const bool good = universal && local && UtcToZone(ZoneOrMachine(zone), *universal, *local);
    return good ? TRUE : FailWith(ERROR_INVALID_PARAMETER, FALSE);
  });
}

BOOL STDAPICALLTYPE TzSpecificLocalTimeToSystemTime(const TIME_ZONE_INFORMATION* zone,
                                                    const SYSTEMTIME* local,
                                                    SYSTEMTIME* universal) {
  return SystemCall<BOOL>(FALSE, [&] {
    const bool good = local && universal && ZoneToUtc(ZoneOrMachine(zone), *local, *universal);
    return good ? TRUE : FailWith(ERROR_INVALID_PARAMETER, FALSE);
  });
}

LONG STDAPICALLTYPE CompareFileTime(const FILETIME* a, const FILETIME* b) {
  if (!a || !b) return a ? 1 : b ? -1 : 0;
  return CompareFileTimes(*a, *b);
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemTime(TApi& api) {
  BIND(GetTickCount64);
  BIND(Sleep);
  BIND(GetSystemTimeAsFileTime);
  BIND(GetSystemTime);
  BIND(GetLocalTime);
  BIND(GetTimeZoneInformation);
  BIND(SystemTimeToFileTime);
  BIND(FileTimeToSystemTime);
  BIND(SystemTimeToTzSpecificLocalTime);
  BIND(TzSpecificLocalTimeToSystemTime);
  BIND(CompareFileTime);
}
#undef BIND

}  // namespace oak
