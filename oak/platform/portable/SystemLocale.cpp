// Dates and times of day as text, in the user's language.
#include <algorithm>
#include <array>
#include <optional>

#include "oak/base/DateTime.h"
#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/SystemBinding.h"

namespace oak {
namespace {

constexpr DWORD YearMonth = 8;     // DATE_YEARMONTH
constexpr DWORD NoMinutes = 1;     // TIME_NOMINUTESORSECONDS
constexpr DWORD NoTimeMarker = 4;  // TIME_NOTIMEMARKER
constexpr DWORD Force24Hours = 8;  // TIME_FORCE24HOURFORMAT

constexpr std::array<TStringView, 7> DayNames = {u"Sunday",   u"Monday", u"Tuesday", u"Wednesday",
                                                 u"Thursday", u"Friday", u"Saturday"};
constexpr std::array<TStringView, 12> MonthNames = {
    u"January", u"February", u"March",     u"April",   u"May",      u"June",
    u"July",    u"August",   u"September", u"October", u"November", u"December"};

TString Digits(int value, std::size_t least) {
  TString text = IntToStr(value);
  if (text.size() < least) text.insert(0, least - text.size(), u'0');
  return text;
}

TString Name(TStringView name, std::size_t letters) {
  return TString(letters == 3 ? name.substr(0, 3) : name);
}

// One run of a picture letter; nothing if the letter is none.
using TRun = std::optional<TString> (*)(const SYSTEMTIME& time, char16_t letter, std::size_t count);

std::optional<TString> DateRun(const SYSTEMTIME& time, char16_t letter, std::size_t count) {
  switch (letter) {
    case u'd':
      return count < 3 ? Digits(time.wDay, count) : Name(DayNames[time.wDayOfWeek], count);
    case u'M':
      return count < 3 ? Digits(time.wMonth, count) : Name(MonthNames[time.wMonth - 1u], count);
    case u'y':
      return count < 3 ? Digits(time.wYear % 100, count) : Digits(time.wYear, 4);
    case u'g':
      return u"A.D.";
    default:
      return std::nullopt;
  }
}

std::optional<TString> TimeRun(const SYSTEMTIME& time, char16_t letter, std::size_t count) {
  const std::size_t least = std::min<std::size_t>(count, 2);
  switch (letter) {
    case u'h':
      return Digits((time.wHour + 11) % 12 + 1, least);
    case u'H':
      return Digits(time.wHour, least);
    case u'm':
      return Digits(time.wMinute, least);
    case u's':
      return Digits(time.wSecond, least);
    case u't':
      return TString(time.wHour < 12 ? u"AM" : u"PM").substr(0, least);
    default:
      return std::nullopt;
  }
}

// Text in single quotes stands as it is, two quotes in it are one.
TString Format(TStringView picture, const SYSTEMTIME& time, TRun run) {
  TString result;
  for (std::size_t i = 0; i < picture.size();) {
    if (picture[i] == u'\'') {
      for (++i; i < picture.size(); ++i) {
        if (picture[i] == u'\'') {
          if (i + 1 == picture.size() || picture[i + 1] != u'\'') break;
          ++i;
        }
        result += picture[i];
      }
      ++i;
      continue;
    }
    std::size_t end = i;
    while (end < picture.size() && picture[end] == picture[i]) ++end;
    const auto text = run(time, picture[i], end - i);
    result += text ? *text : TString(picture.substr(i, end - i));
    i = end;
  }
  return result;
}

bool IsAmerican() { return SameText(PortableConfig()->Language, u"en-US"); }

TStringView DatePicture(DWORD flags) {
  if (flags & DATE_LONGDATE) return IsAmerican() ? u"dddd, MMMM d, yyyy" : u"d MMMM yyyy";
  if (flags & YearMonth) return u"MMMM yyyy";
  return IsAmerican() ? u"M/d/yyyy" : u"yyyy-MM-dd";
}

TStringView TimePicture(DWORD flags) {
  const bool twelve = IsAmerican() && (flags & Force24Hours) == 0;
  const bool marker = twelve && (flags & NoTimeMarker) == 0;
  if (flags & NoMinutes) return marker ? u"h tt" : twelve ? u"h" : u"HH";
  if (flags & TIME_NOSECONDS) return marker ? u"h:mm tt" : twelve ? u"h:mm" : u"HH:mm";
  return marker ? u"h:mm:ss tt" : twelve ? u"h:mm:ss" : u"HH:mm:ss";
}

int Answer(TStringView text, LPWSTR buffer, int capacity) {
  const int needed = static_cast<int>(text.size()) + 1;
  if (capacity == 0) return needed;
  if (capacity < 0 || !buffer) return FailWith(ERROR_INVALID_PARAMETER, 0);
  const bool fits = CopyText(text, buffer, static_cast<std::size_t>(capacity));
  return fits ? needed : FailWith(ERROR_INSUFFICIENT_BUFFER, 0);
}

// Fills in what the caller left open: the moment, and the day of the week, which
// callers need not know.
bool Complete(const SYSTEMTIME* given, bool dateCounts, SYSTEMTIME& time) {
  if (!given) {
    Api().GetLocalTime.Function()(&time);
    return true;
  }
  time = *given;
  if (!dateCounts) time.wYear = 2000, time.wMonth = 1, time.wDay = 1;
  if (dateCounts) time.wHour = time.wMinute = time.wSecond = time.wMilliseconds = 0;
  FILETIME moment;
  return SystemToFileTime(time, moment) && FileTimeToSystem(moment, time);
}

int STDAPICALLTYPE GetDateFormatW(LCID, DWORD flags, const SYSTEMTIME* date, LPCWSTR picture,
                                  LPWSTR buffer, int capacity) {
  return SystemCall<int>(0, [&] {
    SYSTEMTIME time{};
    if (picture && flags) return FailWith(ERROR_INVALID_FLAGS, 0);
    if (!Complete(date, true, time)) return FailWith(ERROR_INVALID_PARAMETER, 0);
    return Answer(Format(picture ? TStringView(picture) : DatePicture(flags), time, &DateRun),
                  buffer, capacity);
  });
}

int STDAPICALLTYPE GetTimeFormatW(LCID, DWORD flags, const SYSTEMTIME* moment, LPCWSTR picture,
                                  LPWSTR buffer, int capacity) {
  return SystemCall<int>(0, [&] {
    SYSTEMTIME time{};
    if (!Complete(moment, false, time)) return FailWith(ERROR_INVALID_PARAMETER, 0);
    return Answer(Format(picture ? TStringView(picture) : TimePicture(flags), time, &TimeRun),
                  buffer, capacity);
  });
}

int STDAPICALLTYPE GetUserDefaultLocaleName(LPWSTR buffer, int capacity) {
  return SystemCall<int>(0, [&] { return Answer(PortableConfig()->Language, buffer, capacity); });
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemLocale(TApi& api) {
  BIND(GetDateFormatW);
  BIND(GetTimeFormatW);
  BIND(GetUserDefaultLocaleName);
}
#undef BIND

}  // namespace oak
