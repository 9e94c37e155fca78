#include "oak/base/DateTime.h"

#include <gtest/gtest.h>

#include <cmath>

#include "oak/base/Exceptions.h"

namespace oak {
namespace {

TString Text(TDateTime value) { return FormatDateTime(u"yyyy-mm-dd hh:nn:ss.zzz", value); }
TString Text(const FILETIME& time) { return Text(FileTimeToDateTime(time)); }

FILETIME At(int year, int month, int day, int hour = 0, int minute = 0) {
  return DateTimeToFileTime(EncodeDateTime({year, month, day}, {hour, minute, 0, 0}));
}

TEST(DateTime, KnownDays) {
  EXPECT_EQ(EncodeDate(1899, 12, 30), 0.0);
  EXPECT_EQ(EncodeDate(1970, 1, 1), UnixEpochDate);
  EXPECT_EQ(EncodeDate(1601, 1, 1), FileTimeEpochDate);
  EXPECT_EQ(EncodeDate(1, 1, 1), -693593.0);
  EXPECT_EQ(EncodeDate(9999, 12, 31), 2958465.0);
  EXPECT_EQ(EncodeDate(2000, 2, 29), 36585.0);
  EXPECT_EQ(DayOfWeek(EncodeDate(2024, 2, 29)), 4);
  EXPECT_EQ(DayOfWeek(EncodeDate(1, 1, 1)), 1);
}

TEST(DateTime, EveryDayIsTheOneAfterItsForerunner) {
  TDateTime expected = EncodeDate(1598, 1, 1);
  for (int year = 1598; year <= 2410; ++year)
    for (int month = 1; month <= 12; ++month)
      for (int day = 1; day <= DaysInMonth(year, month); ++day, expected += 1) {
        ASSERT_EQ(EncodeDate(year, month, day), expected);
        const TDateParts parts = DecodeDate(expected);
        ASSERT_TRUE(parts.year == year && parts.month == month && parts.day == day) << expected;
      }
}

TEST(DateTime, RejectsWhatIsNoDate) {
  TDateTime date = 7;
  EXPECT_FALSE(TryEncodeDate(2023, 2, 29, date));
  EXPECT_FALSE(TryEncodeDate(1900, 2, 29, date));
  EXPECT_FALSE(TryEncodeDate(2023, 13, 1, date));
  EXPECT_FALSE(TryEncodeDate(2023, 0, 1, date));
  EXPECT_FALSE(TryEncodeDate(0, 1, 1, date));
  EXPECT_FALSE(TryEncodeDate(10000, 1, 1, date));
  EXPECT_EQ(date, 7);
  EXPECT_THROW(EncodeDate(2023, 4, 31), EConvertError);
  EXPECT_THROW(EncodeTime(24, 0, 0, 0), EConvertError);
}

TEST(DateTime, TimeBeforeTheFirstDayCountsForward) {
  EXPECT_EQ(Text(-1.25), u"1899-12-29 06:00:00.000");
  EXPECT_EQ(Text(-0.25), u"1899-12-30 06:00:00.000");
  EXPECT_EQ(EncodeDateTime({1899, 12, 29}, {6, 0, 0, 0}), -1.25);
  EXPECT_EQ(MillisecondsBetween(-1.75, -0.0), 6 * 3600 * 1000);
}

TEST(DateTime, RoundsAndCutsOddValues) {
  EXPECT_EQ(Text(45000.0 - 1e-10), u"2023-03-15 00:00:00.000");
  EXPECT_EQ(Text(std::nan("")), u"0001-01-01 00:00:00.000");
  EXPECT_EQ(Text(-1e300), u"0001-01-01 00:00:00.000");
  EXPECT_EQ(Text(HUGE_VAL), u"9999-12-31 23:59:59.999");
  EXPECT_EQ(Text(TicksToFileTime(UINT64_MAX)), u"9999-12-31 23:59:59.999");
}

TEST(DateTime, Format) {
  const TDateTime value = EncodeDateTime({2006, 9, 6}, {7, 3, 5, 1});
  EXPECT_EQ(FormatDateTime(u"yyyy-mm-dd", value), u"2006-09-06");
  EXPECT_EQ(FormatDateTime(u"HH-NN-SS", value), u"07-03-05");
  EXPECT_EQ(FormatDateTime(u"d/m/yy h:n:s.zzz", value), u"6/9/06 7:3:5.001");
  EXPECT_EQ(FormatDateTime(u"'day' d \"h\" yyy mmm", value), u"day 6 h yyy mmm");
  EXPECT_EQ(FormatDateTime(u"d 'open", value), u"6 open");
  EXPECT_EQ(FormatDateTime(u"", value), u"");
}

TEST(DateTime, FileTimeAndUnixTime) {
  EXPECT_EQ(FileTimeToTicks(UnixToFileTime(0)), 116444736000000000u);
  EXPECT_EQ(Text(UnixToFileTime(1'000'000'000, 250'000'000)), u"2001-09-09 01:46:40.250");
  const TUnixTime before = FileTimeToUnix(UnixToFileTime(-1, 999'999'900));
  EXPECT_EQ(before.seconds, -1);
  EXPECT_EQ(before.nanoseconds, 999'999'900);
  EXPECT_EQ(FileTimeToTicks(UnixToFileTime(INT64_MIN)), 0u);
  SYSTEMTIME system;
  EXPECT_FALSE(FileTimeToSystem(TicksToFileTime(std::uint64_t{1} << 63), system));
  EXPECT_LE(FileTimeToTicks(UnixToFileTime(INT64_MAX, 999'999'999)), std::uint64_t{INT64_MAX});
  EXPECT_EQ(FileTimeToUnix(FILETIME{}).seconds, -11644473600);
  EXPECT_EQ(FileTimeToTicks(DateTimeToFileTime(EncodeDate(1600, 12, 31))), 0u);
}

// --- zones -----------------------------------------------------------------

TIME_ZONE_INFORMATION Zone(LONG bias, SYSTEMTIME daylight, SYSTEMTIME standard) {
  TIME_ZONE_INFORMATION zone{};
  zone.Bias = bias;
  zone.DaylightDate = daylight;
  zone.StandardDate = standard;
  zone.DaylightBias = -60;
  return zone;
}
// Last Sunday of March at 2:00, last Sunday of October at 3:00.
const auto kCentralEurope = Zone(-60, {0, 3, 0, 5, 2, 0, 0, 0}, {0, 10, 0, 5, 3, 0, 0, 0});
// First Sunday of October at 2:00, first Sunday of April at 3:00.
const auto kSydney = Zone(-600, {0, 10, 0, 1, 2, 0, 0, 0}, {0, 4, 0, 1, 3, 0, 0, 0});
const auto kIndia = Zone(-330, {}, {});

struct TZoneCase {
  const TIME_ZONE_INFORMATION* zone;
  FILETIME utc;
  TStringView local;
};

TEST(TimeZone, UtcToLocalAroundTheChanges) {
  const TZoneCase cases[] = {
      {&kCentralEurope, At(2024, 1, 15, 12), u"2024-01-15 13:00:00.000"},
      {&kCentralEurope, At(2024, 3, 31, 0, 59), u"2024-03-31 01:59:00.000"},
      {&kCentralEurope, At(2024, 3, 31, 1), u"2024-03-31 03:00:00.000"},
      {&kCentralEurope, At(2024, 10, 27, 0, 59), u"2024-10-27 02:59:00.000"},
      {&kCentralEurope, At(2024, 10, 27, 1), u"2024-10-27 02:00:00.000"},
      {&kCentralEurope, At(2024, 12, 31, 23, 30), u"2025-01-01 00:30:00.000"},
      {&kSydney, At(2024, 1, 1, 0), u"2024-01-01 11:00:00.000"},
      {&kSydney, At(2024, 4, 6, 15, 59), u"2024-04-07 02:59:00.000"},
      {&kSydney, At(2024, 4, 6, 16), u"2024-04-07 02:00:00.000"},
      {&kSydney, At(2024, 10, 5, 15, 59), u"2024-10-06 01:59:00.000"},
      {&kSydney, At(2024, 10, 5, 16), u"2024-10-06 03:00:00.000"},
      {&kIndia, At(2024, 7, 1, 0), u"2024-07-01 05:30:00.000"},
  };
  for (const TZoneCase& c : cases) {
    EXPECT_EQ(Text(UtcToZone(*c.zone, c.utc)), c.local) << ToUtf8(Text(c.utc));
    SYSTEMTIME utc, local;
    TDateTime value;
    ASSERT_TRUE(FileTimeToSystem(c.utc, utc) && UtcToZone(*c.zone, utc, local));
    ASSERT_TRUE(SystemToDateTime(local, value));
    EXPECT_EQ(Text(value), c.local);
  }
}

TEST(TimeZone, LocalToUtc) {
  // The hour that is skipped and the one that comes twice count as daylight time.
  EXPECT_EQ(Text(ZoneToUtc(kCentralEurope, At(2024, 3, 31, 2, 30))), u"2024-03-31 00:30:00.000");
  EXPECT_EQ(Text(ZoneToUtc(kCentralEurope, At(2024, 10, 27, 2, 30))), u"2024-10-27 00:30:00.000");
  EXPECT_EQ(Text(ZoneToUtc(kCentralEurope, At(2024, 10, 27, 3))), u"2024-10-27 02:00:00.000");
}

TEST(TimeZone, RulesOfOneYearAndBrokenRules) {
  const auto once = Zone(0, {2020, 5, 0, 17, 0, 0, 0, 0}, {2020, 6, 0, 1, 0, 0, 0, 0});
  EXPECT_EQ(ZoneBiasAtUtc(once, At(2020, 5, 16, 23)), 0);
  EXPECT_EQ(ZoneBiasAtUtc(once, At(2020, 5, 17)), -60);
  EXPECT_EQ(ZoneBiasAtUtc(once, At(2021, 5, 20)), 0);
  for (const SYSTEMTIME& bad :
       {SYSTEMTIME{0, 13, 0, 1, 0, 0, 0, 0}, SYSTEMTIME{0, 3, 7, 1, 0, 0, 0, 0},
        SYSTEMTIME{0, 3, 0, 0, 0, 0, 0, 0}, SYSTEMTIME{2024, 2, 0, 30, 0, 0, 0, 0}})
    EXPECT_EQ(ZoneBiasAtUtc(Zone(-60, bad, {0, 10, 0, 5, 3, 0, 0, 0}), At(2024, 7, 1)), -60);
  // Times at both ends of what can be said stay inside.
  EXPECT_EQ(FileTimeToTicks(UtcToZone(Zone(60, {}, {}), FILETIME{})), 0u);
  EXPECT_EQ(FileTimeToTicks(UtcToZone(kIndia, TicksToFileTime(UINT64_MAX))), UINT64_MAX);
}

}  // namespace
}  // namespace oak
