// The machine's zone as a rule.
#include <stdlib.h>
#include <time.h>

#include "tests/platform/portable/SystemTest.h"

namespace oak::test {
namespace {

// A rule that needs no zone files.
void SetZone(const char* rule) {
  rule ? setenv("TZ", rule, 1) : unsetenv("TZ");
  tzset();
}

struct TRule {
  WORD Month, WeekDay, Day, Hour;
};
bool operator==(const SYSTEMTIME& time, const TRule& rule) {
  return time.wYear == 0 && time.wMonth == rule.Month && time.wDayOfWeek == rule.WeekDay &&
         time.wDay == rule.Day && time.wHour == rule.Hour && time.wMinute == 0;
}

TEST(SystemTime, ZoneRules) {
  const char* const present = getenv("TZ");
  const std::string before = present ? present : "";
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
  };
  for (const auto& c : cases) {
    SetZone(c.Zone);
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
  SetZone(present ? before.c_str() : nullptr);
}

}  // namespace
}  // namespace oak::test
