// Texts of property values.
#include <array>
#include <cmath>

#include "oak/base/Variant.h"
#include "oak/platform/Api.h"
#include "oak/platform/portable/PropertySystem.h"
#include "oak/platform/portable/SystemLocale.h"

namespace oak {
namespace {

TString NumberText(REFPROPVARIANT value) {
  std::uint64_t positive = 0;
  if (TryGetUInt64(value, positive)) return GroupedNumber(positive);
  std::int64_t number = 0;
  if (TryGetInt64(value, number))
    return GroupedNumber(~static_cast<std::uint64_t>(number) + 1, true);
  double real = 0;
  return TryGetDouble(value, real) ? DecimalNumber(real) : PropVariantToText(value);
}

// The number with its unit; a value that is no number stands alone.
TString UnitText(REFPROPVARIANT value, TStringView unit) {
  double number = 0;
  const TString text = PropVariantToText(value);
  return TryGetDouble(value, number) ? text + TString(unit) : text;
}

TString SizeText(REFPROPVARIANT value, bool wholeKilobytes) {
  std::uint64_t bytes = 0;
  if (!TryGetUInt64(value, bytes)) return PropVariantToText(value);
  return wholeKilobytes ? KilobyteText(bytes) : ByteSizeText(bytes);
}

// File times are UTC, dates are local already. The first moment of file times stands for no time.
bool LocalTime(REFPROPVARIANT value, SYSTEMTIME& local) {
  FILETIME time;
  SYSTEMTIME universal;
  if (!TryGetFileTime(value, time) || FileTimeToTicks(time) == 0 ||
      !FileTimeToSystem(time, universal))
    return false;
  if (value.vt != VT_FILETIME) {
    local = universal;
    return true;
  }
  return Api().SystemTimeToTzSpecificLocalTime(nullptr, &universal, &local) != 0;
}

TString DateText(REFPROPVARIANT value, PROPDESC_FORMAT_FLAGS flags) {
  SYSTEMTIME time;
  if (!LocalTime(value, time)) return {};
  std::array<char16_t, 128> text{};
  const int capacity = static_cast<int>(text.size());
  TString result;
  const DWORD date = (flags & PDFF_LONGDATE) ? DATE_LONGDATE : DATE_SHORTDATE;
  if (!(flags & PDFF_HIDEDATE) &&
      Api().GetDateFormatW(LOCALE_USER_DEFAULT, date, &time, nullptr, text.data(), capacity))
    result = text.data();
  const DWORD seconds = (flags & PDFF_LONGTIME) ? 0 : TIME_NOSECONDS;
  if (!(flags & PDFF_HIDETIME) &&
      Api().GetTimeFormatW(LOCALE_USER_DEFAULT, seconds, &time, nullptr, text.data(), capacity))
    result += (result.empty() ? u"" : u" ") + TString(text.data());
  return result;
}

TString AttributesText(REFPROPVARIANT value) {
  struct TLetter {
    DWORD Bit;
    char16_t Letter;
  };
  static constexpr TLetter letters[] = {
      {FILE_ATTRIBUTE_READONLY, u'R'},   {FILE_ATTRIBUTE_HIDDEN, u'H'},
      {FILE_ATTRIBUTE_SYSTEM, u'S'},     {FILE_ATTRIBUTE_DIRECTORY, u'D'},
      {FILE_ATTRIBUTE_ARCHIVE, u'A'},    {FILE_ATTRIBUTE_REPARSE_POINT, u'L'},
      {FILE_ATTRIBUTE_COMPRESSED, u'C'}, {FILE_ATTRIBUTE_OFFLINE, u'O'},
      {FILE_ATTRIBUTE_ENCRYPTED, u'E'}};
  std::uint64_t bits = 0;
  TString text;
  if (!TryGetUInt64(value, bits)) return text;
  for (const TLetter& letter : letters)
    if (bits & letter.Bit) text += letter.Letter;
  return text;
}

TString DurationText(REFPROPVARIANT value) {
  std::uint64_t ticks = 0;
  if (!TryGetUInt64(value, ticks)) return {};
  const std::uint64_t seconds = ticks / 10'000'000;
  const auto two = [](std::uint64_t number) {
    const TString text = IntToStr(static_cast<std::int64_t>(number));
    return text.size() < 2 ? u"0" + text : text;
  };
  return two(seconds / 3600) + u":" + two(seconds / 60 % 60) + u":" + two(seconds % 60);
}

TString BitrateText(REFPROPVARIANT value) {
  std::uint64_t bits = 0;
  if (!TryGetUInt64(value, bits)) return {};
  return IntToStr(static_cast<std::int64_t>(bits / 1000)) + u"kbps";
}

// Files tell dots of a metre as often: 3780 of them are 96 of an inch, and a little.
TString ResolutionText(REFPROPVARIANT value) {
  double dots = 0;
  if (!TryGetDouble(value, dots) || !(dots >= 0 && dots < 1e15)) return PropVariantToText(value);
  return IntToStr(std::llround(dots)) + u" dpi";
}

TString BooleanText(REFPROPVARIANT value) {
  bool flag = false;
  return TryGetBool(value, flag) ? TString(flag ? u"Yes" : u"No") : PropVariantToText(value);
}

TString ValueText(TPropertyFormat format, REFPROPVARIANT value, PROPDESC_FORMAT_FLAGS flags) {
  switch (format) {
    case TPropertyFormat::Text:
    case TPropertyFormat::Plain:
      return PropVariantToText(value);
    case TPropertyFormat::Number:
      return NumberText(value);
    case TPropertyFormat::Size:
      return SizeText(value, (flags & PDFF_ALWAYSKB) != 0);
    case TPropertyFormat::Bytes:
      return SizeText(value, false);
    case TPropertyFormat::Date:
      return DateText(value, flags);
    case TPropertyFormat::Boolean:
      return BooleanText(value);
    case TPropertyFormat::Attributes:
      return AttributesText(value);
    case TPropertyFormat::Duration:
      return DurationText(value);
    case TPropertyFormat::Percent:
      return UnitText(value, u"%");
    case TPropertyFormat::Pixels:
      return UnitText(value, u" pixels");
    case TPropertyFormat::Resolution:
      return ResolutionText(value);
    case TPropertyFormat::Bitrate:
      return BitrateText(value);
  }
  return {};
}

}  // namespace

TString FormatProperty(const TPropertyInfo& info, REFPROPVARIANT value,
                       PROPDESC_FORMAT_FLAGS flags) {
  if (value.vt == VT_EMPTY || value.vt == VT_NULL) return {};
  const TString text = ValueText(info.Format, value, flags);
  if (text.empty() || !(flags & PDFF_PREFIXNAME)) return text;
  return TString(info.Label) + u": " + text;
}

}  // namespace oak
