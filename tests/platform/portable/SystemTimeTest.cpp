// The machine's zone as a rule, around the changes to and from daylight time.
#include <stdlib.h>
#include <time.h>

#include "oak/base/DateTime.h"
#include "tests/platform/portable/SystemTest.h"

namespace oak::test {
namespace {

// Sets the zone for one scope, as a rule that needs no zone files.
class TZone {
 public:
  explicit TZone(const char* rule) {
    if (const char* present = getenv("TZ")) fBefore = present;
    fHad = getenv("TZ") != nullptr;
    setenv("TZ", rule, 1);
    tzset();
  }
  ~TZone() {
    fHad ? setenv("TZ", fBefore.c_str(), 1) : unsetenv("TZ");
    tzset();
  }

 private:
  std::string fBefore;
  bool fHad = false;
};

struct TRule {
  WORD Month, WeekDay, Day, Hour;
};
bool operator==(const SYSTEMTIME& time, const TRule& rule) {
  return time.wYear == 0 && time.wMonth == rule.Month && time.wDayOfWeek == rule.WeekDay &&
         time.wDay == rule.Day && time.wHour == rule.Hour && time.wMinute == 0;
}

TEST(SystemTime, ZoneRules) {
  struct {
    const char* Zone;
    LONG Bias, DaylightBias;
    TRule Daylight, Standard;
  } const cases[] = {
      {"CET-1CEST,M3.5.0,M10.5.0/3", -60, -60, {3, 0, 5, 2}, {10, 0, 5, 3}},
      {"EST5EDT,M3.2.0,M11.1.0", 300, -60, {3, 0, 2, 2}, {11, 0, 1, 2}},
      {"AEST-10AEDT,M10.1.0,M4.1.0/3", -600, -60, {10, 0, 1, 2}, {4, 0, 1, 3}},
      {"LHST-10:30LHDT-11,M10.1.0,M4.1.0", -630, -30, {10, 0, 1, 2}, {4, 0, 1, 2}},
      // Winter is the special time here; the platform knows it the other way round.
      {"IST-1GMT0,M10.5.0,M3.5.0/1", 0, -60, {3, 0, 5, 1}, {10, 0, 5, 2}},
      {"IST-5:30", -330, 0, {0, 0, 0, 0}, {0, 0, 0, 0}},
      {"UTC0", 0, 0, {0, 0, 0, 0}, {0, 0, 0, 0}},
  };
  for (const auto& c : cases) {
    const TZone zone(c.Zone);
    TIME_ZONE_INFORMATION info{};
    const DWORD now = Api().GetTimeZoneInformation(&info);
    EXPECT_EQ(info.Bias, c.Bias) << c.Zone;
    EXPECT_EQ(info.DaylightBias, c.DaylightBias) << c.Zone;
    EXPECT_TRUE(info.DaylightDate == c.Daylight) << c.Zone << " " << info.DaylightDate.wDay;
    EXPECT_TRUE(info.StandardDate == c.Standard) << c.Zone << " " << info.StandardDate.wDay;
    EXPECT_EQ(now == TIME_ZONE_ID_UNKNOWN, c.DaylightBias == 0) << c.Zone;
    const time_t moment = time(nullptr);
    tm local{};
    localtime_r(&moment, &local);
    const LONG bias = info.Bias + (now == TIME_ZONE_ID_DAYLIGHT ? info.DaylightBias : 0);
    EXPECT_EQ(local.tm_gmtoff, -bias * 60) << c.Zone;
  }
  EXPECT_EQ(Api().GetTimeZoneInformation(nullptr), TIME_ZONE_ID_INVALID);
}

TEST(SystemTime, LocalTimesAroundTheChanges) {
  const TZone zone("CET-1CEST,M3.5.0,M10.5.0/3");
  struct {
    SYSTEMTIME Utc;
    int Day, Hour, Minute;
    bool Reversible;
  } const cases[] = {
      {{2024, 3, 0, 31, 0, 59, 59, 0}, 31, 1, 59, true},
      {{2024, 3, 0, 31, 1, 0, 0, 0}, 31, 3, 0, true},
      {{2024, 10, 0, 27, 0, 30, 0, 0}, 27, 2, 30, true},
      {{2024, 10, 0, 27, 1, 30, 0, 0}, 27, 2, 30, false},  // the hour that comes twice
      {{2024, 10, 0, 27, 2, 0, 0, 0}, 27, 3, 0, true},
      {{2024, 12, 0, 31, 23, 30, 0, 0}, 1, 0, 30, true},
      {{2025, 3, 0, 30, 1, 0, 0, 0}, 30, 3, 0, true},
  };
  for (const auto& c : cases) {
    SYSTEMTIME local{}, back{};
    ASSERT_TRUE(Api().SystemTimeToTzSpecificLocalTime(nullptr, &c.Utc, &local));
    EXPECT_EQ(local.wDay, c.Day);
    EXPECT_EQ(local.wHour, c.Hour) << c.Utc.wMonth << "/" << c.Utc.wDay << " " << c.Utc.wHour;
    EXPECT_EQ(local.wMinute, c.Minute);
    ASSERT_TRUE(Api().TzSpecificLocalTimeToSystemTime(nullptr, &local, &back));
    EXPECT_EQ(back.wHour == c.Utc.wHour && back.wDay == c.Utc.wDay, c.Reversible);
  }
}

TEST(SystemTime, ClocksAgree) {
  const TZone zone("UTC0");
  FILETIME first{}, fromSystem{}, fromLocal{}, last{};
  SYSTEMTIME system{}, local{};
  Api().GetSystemTimeAsFileTime(&first);
  Api().GetSystemTime(&system);
  Api().GetLocalTime(&local);
  Api().GetSystemTimeAsFileTime(&last);
  ASSERT_TRUE(Api().SystemTimeToFileTime(&system, &fromSystem));
  ASSERT_TRUE(Api().SystemTimeToFileTime(&local, &fromLocal));
  const FILETIME start = TicksToFileTime(FileTimeToTicks(first) / 10000 * 10000);  // milliseconds
  EXPECT_LE(Api().CompareFileTime(&start, &fromSystem), 0);
  EXPECT_LE(Api().CompareFileTime(&fromSystem, &fromLocal), 0);
  EXPECT_LE(Api().CompareFileTime(&fromLocal, &last), 0);
  const ULONGLONG tick = Api().GetTickCount64();
  Api().Sleep(0);
  EXPECT_GE(Api().GetTickCount64(), tick);
}

TEST(SystemTime, NonsenseIsRefused) {
  const SYSTEMTIME bad{2024, 2, 0, 30, 0, 0, 0, 0};
  const FILETIME huge{0, 0xFFFFFFFF};
  SYSTEMTIME system{};
  FILETIME file{};
  EXPECT_FALSE(Api().SystemTimeToFileTime(&bad, &file));
  EXPECT_FALSE(Api().SystemTimeToFileTime(nullptr, &file));
  EXPECT_FALSE(Api().FileTimeToSystemTime(&huge, &system));
  EXPECT_FALSE(Api().FileTimeToSystemTime(&file, nullptr));
  EXPECT_FALSE(Api().SystemTimeToTzSpecificLocalTime(nullptr, &bad, &system));
  EXPECT_FALSE(Api().TzSpecificLocalTimeToSystemTime(nullptr, nullptr, &system));
  Api().GetLocalTime(nullptr);
  Api().GetSystemTime(nullptr);
  Api().GetSystemTimeAsFileTime(nullptr);
}

}  // namespace
}  // namespace oak::test
