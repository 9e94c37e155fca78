// Dates, times of day and numbers as text, in the user's language.
#include "oak/platform/portable/SystemLocale.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/SystemBinding.h"

namespace oak {
namespace {

constexpr DWORD YearMonth = 8;     // DATE_YEARMONTH
constexpr DWORD NoMinutes = 1;     // TIME_NOMINUTESORSECONDS
constexpr DWORD NoTimeMarker = 4;  // TIME_NOTIMEMARKER
constexpr DWORD Force24Hours = 8;  // TIME_FORCE24HOURFORMAT

/// What a language or, with a country, a locale has of its own.
struct TLocaleForms {
  TStringView Locale;
  TStringView Date;
  TStringView Time;
  char16_t Decimal;
  char16_t Group;
};

constexpr TStringView Clock24 = u"HH:mm:ss";
constexpr TStringView Clock24Short = u"H:mm:ss";
constexpr TStringView Clock12 = u"h:mm:ss tt";
constexpr char16_t NoBreak = u'\u00A0';
constexpr char16_t NarrowNoBreak = u'\u202F';

// What is not listed has the forms of the first line.
constexpr TLocaleForms LocaleForms[] = {{u"", u"yyyy-MM-dd", Clock24, u'.', u','},
                                        {u"en-US", u"M/d/yyyy", Clock12, u'.', u','},
                                        {u"en-AU", u"d/MM/yyyy", Clock12, u'.', u','},
                                        {u"en-CA", u"yyyy-MM-dd", Clock12, u'.', u','},
                                        {u"en-NZ", u"d/MM/yyyy", Clock12, u'.', u','},
                                        {u"en", u"dd/MM/yyyy", Clock24, u'.', u','},
                                        {u"de-CH", u"dd.MM.yyyy", Clock24, u'.', u'’'},
                                        {u"de", u"dd.MM.yyyy", Clock24, u',', u'.'},
                                        {u"fr-CA", u"yyyy-MM-dd", Clock24, u',', NoBreak},
                                        {u"fr", u"dd/MM/yyyy", Clock24, u',', NarrowNoBreak},
                                        {u"es-MX", u"dd/MM/yyyy", Clock12, u'.', u','},
                                        {u"es", u"dd/MM/yyyy", Clock24Short, u',', u'.'},
                                        {u"it", u"dd/MM/yyyy", Clock24, u',', u'.'},
                                        {u"nl", u"d-M-yyyy", Clock24, u',', u'.'},
                                        {u"pt-PT", u"dd/MM/yyyy", Clock24, u',', NoBreak},
                                        {u"pt", u"dd/MM/yyyy", Clock24, u',', u'.'},
                                        {u"da", u"dd-MM-yyyy", Clock24, u',', u'.'},
                                        {u"nb", u"dd.MM.yyyy", Clock24, u',', NoBreak},
                                        {u"sv", u"yyyy-MM-dd", Clock24, u',', NoBreak},
                                        {u"fi", u"d.M.yyyy", u"H.mm.ss", u',', NoBreak},
                                        {u"pl", u"dd.MM.yyyy", Clock24, u',', NoBreak},
                                        {u"cs", u"dd.MM.yyyy", Clock24Short, u',', NoBreak},
                                        {u"hu", u"yyyy. MM. dd.", Clock24Short, u',', NoBreak},
                                        {u"ru", u"dd.MM.yyyy", Clock24Short, u',', NoBreak},
                                        {u"uk", u"dd.MM.yyyy", Clock24, u',', NoBreak},
                                        {u"tr", u"d.MM.yyyy", Clock24, u',', u'.'},
                                        {u"ja", u"yyyy/MM/dd", Clock24Short, u'.', u','},
                                        {u"zh", u"yyyy/M/d", Clock24Short, u'.', u','}};

// The line of the locale, else that of its language.
const TLocaleForms& FindForms(TStringView locale) {
  const TStringView language = locale.substr(0, locale.find(u'-'));
  for (const TLocaleForms& forms : LocaleForms)
    if (SameText(forms.Locale, locale) || SameText(forms.Locale, language)) return forms;
  return LocaleForms[0];
}

// Looked up again when the configuration has changed: a listing asks for each text that it shows.
const TLocaleForms& UserForms() {
  thread_local std::uint64_t generation = 0;
  thread_local const TLocaleForms* forms = nullptr;
  if (const std::uint64_t present = PortableConfigGeneration(); generation != present) {
    forms = &FindForms(PortableConfig()->Language);
    generation = present;
  }
  return *forms;
}

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

TStringView DatePicture(DWORD flags) {
  const TLocaleForms& forms = UserForms();
  if (flags & DATE_LONGDATE)
    return forms.Locale == u"en-US" ? u"dddd, MMMM d, yyyy" : u"d MMMM yyyy";
  return flags & YearMonth ? u"MMMM yyyy" : forms.Date;
}

// Takes a part out of a picture together with the character before it.
void Cut(TString& picture, TStringView part) {
  const std::size_t at = picture.find(part);
  if (at != TString::npos) picture.erase(at - 1, part.size() + 1);
}

TString TimePicture(DWORD flags) {
  TString picture(UserForms().Time);
  if ((flags & Force24Hours) && picture == Clock12) picture = Clock24;
  if (flags & (TIME_NOSECONDS | NoMinutes)) Cut(picture, u"ss");
  if (flags & NoMinutes) Cut(picture, u"mm");
  if (flags & NoTimeMarker) Cut(picture, u"tt");
  return picture;
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
    return Answer(Format(picture ? TString(picture) : TimePicture(flags), time, &TimeRun), buffer,
                  capacity);
  });
}

int STDAPICALLTYPE GetUserDefaultLocaleName(LPWSTR buffer, int capacity) {
  return SystemCall<int>(0, [&] { return Answer(PortableConfig()->Language, buffer, capacity); });
}

// Three digits of a number of units: "1.30", "22.9", "999". `hundredths` is the
// number times 100.
TString ThreeDigits(std::uint64_t hundredths) {
  if (hundredths >= 10000) return GroupedNumber(hundredths / 100);
  const auto digit = [](std::uint64_t value) { return static_cast<char16_t>(u'0' + value % 10); };
  TString text = GroupedNumber(hundredths / 100) + UserForms().Decimal + digit(hundredths / 10);
  if (hundredths < 1000) text += digit(hundredths);
  return text;
}

}  // namespace

TString GroupedNumber(std::uint64_t number, bool negative) {
  TString digits = FromUtf8(std::to_string(number));
  const char16_t group = UserForms().Group;
  for (std::size_t at = digits.size(); at > 3;) digits.insert(at -= 3, 1, group);
  return negative ? u"-" + digits : digits;
}

TString DecimalNumber(double number) {
  std::array<char, 32> digits{};
  const auto [end, error] = std::to_chars(digits.data(), digits.data() + digits.size(), number);
  TString text(digits.data(), end);
  std::replace(text.begin(), text.end(), u'.', UserForms().Decimal);
  return text;
}

// The next unit begins at 1000 of one, so that there are never four digits.
TString ByteSizeText(std::uint64_t bytes, bool round) {
  static constexpr const char16_t* units[] = {u" KB", u" MB", u" GB", u" TB", u" PB", u" EB"};
  if (bytes < 1024) return GroupedNumber(bytes) + u" bytes";
  int unit = 0;
  std::uint64_t divisor = 1024;
  while (unit < 5 && bytes / divisor >= 1000) {
    divisor *= 1024;
    ++unit;
  }
  const std::uint64_t whole = bytes / divisor;
  const std::uint64_t rest = bytes % divisor;
  // By units of 1/1024 of the divisor, so that nothing overflows.
  std::uint64_t hundredths = whole * 100 + rest / (divisor / 1024) * 100 / 1024;
  if (round) {
    const std::uint64_t step = hundredths < 1000 ? 1 : hundredths < 10000 ? 10 : 100;
    const std::uint64_t thousandths = whole * 1000 + rest / (divisor / 1024) * 1000 / 1024;
    hundredths = (thousandths + step * 5) / (step * 10) * step;
  }
  return ThreeDigits(hundredths) + units[unit];
}

TString KilobyteText(std::uint64_t bytes) {
  return GroupedNumber(bytes / 1024 + (bytes % 1024 ? 1 : 0)) + u" KB";
}

TString DateTimeText(TDateTime exact) {
  const TDateTime value = exact + (exact < 0 ? -0.5 : 0.5) / 86400;  // cut to seconds below
  const TDateParts date = DecodeDate(value);
  const TTimeParts clock = DecodeTime(value);
  const auto word = [](int part) { return static_cast<WORD>(part); };
  const SYSTEMTIME time{word(date.year),    word(date.month),       word(DayOfWeek(value)),
                        word(date.day),     word(clock.hour),       word(clock.minute),
                        word(clock.second), word(clock.millisecond)};
  const bool midnight = clock.hour == 0 && clock.minute == 0 && clock.second == 0;
  const bool timeAlone = value > -1 && value < 1;
  if (midnight && !timeAlone) return Format(UserForms().Date, time, &DateRun);
  const TString text = Format(UserForms().Time, time, &TimeRun);
  return timeAlone ? text : Format(UserForms().Date, time, &DateRun) + u" " + text;
}

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemLocale(TApi& api) {
  BIND(GetDateFormatW);
  BIND(GetTimeFormatW);
  BIND(GetUserDefaultLocaleName);
}
#undef BIND

}  // namespace oak
