// Converting values between types, and between PROPVARIANT and VARIANT.
#include <charconv>
#include <cmath>
#include <cstring>
#include <new>
#include <optional>
#include <utility>

#include "oak/base/Guid.h"
#include "oak/base/VariantParts.h"

namespace oak {

namespace {
using detail::TContent;
using detail::TMoment;
using detail::TNothing;

/// Runs a conversion that may run out of memory.
template <class TResult, class TBody>
HRESULT Converted(TResult& to, TBody&& body) noexcept {
  to = TResult{};
  try {
    return body();
  } catch (...) {
    to = TResult{};
    return E_OUTOFMEMORY;
  }
}

// --- texts of values ---------------------------------------------------------

std::optional<std::string> AsciiOf(const TString& text) {
  const TString trimmed = Trim(text);
  for (const char16_t c : trimmed)
    if (c >= 0x80) return std::nullopt;
  return std::string(trimmed.begin(), trimmed.end());
}

template <class T>
std::optional<T> ParseWhole(const std::string& text) {
  const char* first = text.data();
  const char* const last = first + text.size();
  if (text.starts_with('+')) ++first;
  T value{};
  const auto [end, error] = std::from_chars(first, last, value);
  if (error != std::errc() || end != last || (first != text.data() && *first == '-'))
    return std::nullopt;
  return value;
}

/// A number in a text: whole if it can be.
TContent ParseNumber(const TString& text) {
  const auto ascii = AsciiOf(text);
  if (!ascii || ascii->empty()) return TNothing{};
  if (const auto value = ParseWhole<std::int64_t>(*ascii)) return *value;
  if (const auto value = ParseWhole<std::uint64_t>(*ascii)) return *value;
  const auto value = ParseWhole<double>(*ascii);
  return value && std::isfinite(*value) ? TContent(*value) : TContent(TNothing{});
}

TString NumberText(double value) {
  char buffer[32];
  const auto [end, error] = std::to_chars(buffer, buffer + sizeof buffer, value);
  return error == std::errc() ? TString(buffer, end) : TString();
}

/// "2006/09/16:20:13:15.001"; parts from the hour on may be missing, and other
/// separators are taken too.
std::optional<FILETIME> ParseMoment(const TString& text) {
  int parts[7] = {0, 0, 0, 0, 0, 0, 0};
  std::size_t count = 0;
  bool isInNumber = false;
  for (const char16_t c : Trim(text)) {
    if (c >= u'0' && c <= u'9') {
      if (!isInNumber && count++ == 7) return std::nullopt;
      isInNumber = true;
      parts[count - 1] = parts[count - 1] * 10 + (c - u'0');
      if (parts[count - 1] > 30827) return std::nullopt;
    } else if (isInNumber && Contains(u"/-:. T", TStringView(&c, 1))) {
      isInNumber = false;
    } else {
      return std::nullopt;
    }
  }
  const auto word = [&parts](int i) { return static_cast<WORD>(parts[i]); };
  const SYSTEMTIME system{word(0), word(1), 0, word(2), word(3), word(4), word(5), word(6)};
  FILETIME time;
  if (count < 3 || !SystemToFileTime(system, time)) return std::nullopt;
  return time;
}

TString MomentText(const FILETIME& time) {
  return FormatDateTime(u"yyyy/mm/dd:hh:nn:ss.zzz", FileTimeToDateTime(time));
}

struct TTextOf {
  TString operator()(const TNothing&) const { return {}; }
  TString operator()(std::int64_t value) const { return IntToStr(value); }
  TString operator()(std::uint64_t value) const {
    const std::string digits = std::to_string(value);
    return TString(digits.begin(), digits.end());
  }
  TString operator()(double value) const { return NumberText(value); }
  TString operator()(bool value) const { return value ? u"-1" : u"0"; }
  TString operator()(const TMoment& value) const { return MomentText(value.time); }
  TString operator()(const TString& value) const { return value; }
  TString operator()(const GUID& value) const { return GuidToString(value); }
};

// --- writing a content as a type ----------------------------------------------

/// Text and bool as numbers; anything else as it is.
TContent AsNumber(const TContent& content) {
  if (const auto* text = std::get_if<TString>(&content)) {
    if (SameText(*text, u"true")) return std::int64_t{-1};
    if (SameText(*text, u"false")) return std::int64_t{0};
    return ParseNumber(*text);
  }
  if (const auto* flag = std::get_if<bool>(&content)) return std::int64_t{*flag ? -1 : 0};
  return content;
}

/// Stores a whole number in the low bytes if it lies in the range.
template <class T, class TSource>
HRESULT StoreRanged(PROPVARIANT& to, TSource value) noexcept {
  if (!std::in_range<T>(value)) return DISP_E_OVERFLOW;
  const T number = static_cast<T>(value);
  std::memcpy(&to.lVal, &number, sizeof number);
  return S_OK;
}

template <class TSource>
HRESULT StoreWhole(PROPVARIANT& to, VARTYPE type, TSource value) noexcept {
  switch (type) {
    case VT_I1:
      return StoreRanged<std::int8_t>(to, value);
    case VT_UI1:
      return StoreRanged<std::uint8_t>(to, value);
    case VT_I2:
      return StoreRanged<std::int16_t>(to, value);
    case VT_UI2:
      return StoreRanged<std::uint16_t>(to, value);
    case VT_I4:
    case VT_INT:
      return StoreRanged<std::int32_t>(to, value);
    case VT_UI4:
    case VT_UINT:
      return StoreRanged<std::uint32_t>(to, value);
    case VT_I8:
      return StoreRanged<std::int64_t>(to, value);
    default:
      return StoreRanged<std::uint64_t>(to, value);
  }
}

HRESULT StoreNumber(PROPVARIANT& to, VARTYPE type, const TContent& number) {
  const auto* whole = std::get_if<std::int64_t>(&number);
  const auto* natural = std::get_if<std::uint64_t>(&number);
  const auto* real = std::get_if<double>(&number);
  if (!whole && !natural && !real) return DISP_E_TYPEMISMATCH;
  if (type == VT_BOOL) {
    const bool flag = whole ? *whole != 0 : natural ? *natural != 0 : *real != 0;
    to.boolVal = flag ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
  }
  if (type == VT_R8 || type == VT_R4) {
    const double value = whole     ? static_cast<double>(*whole)
                         : natural ? static_cast<double>(*natural)
                                   : *real;
    if (type == VT_R8)
      to.dblVal = value;
    else
      to.fltVal = static_cast<float>(value);
    return S_OK;
  }
  if (whole) return StoreWhole(to, type, *whole);
  if (natural) return StoreWhole(to, type, *natural);
  const double rounded = std::nearbyint(*real);
  if (rounded >= -0x1p63 && rounded < 0x1p63)
    return StoreWhole(to, type, static_cast<std::int64_t>(rounded));
  if (rounded >= 0x1p63 && rounded < 0x1p64)
    return StoreWhole(to, type, static_cast<std::uint64_t>(rounded));
  return DISP_E_OVERFLOW;
}

HRESULT StoreMoment(PROPVARIANT& to, VARTYPE type, const TContent& content) {
  FILETIME time;
  if (const auto* moment = std::get_if<TMoment>(&content)) {
    time = moment->time;
  } else {
    const auto* text = std::get_if<TString>(&content);
    const auto parsed = text ? ParseMoment(*text) : std::nullopt;
    if (!parsed) return DISP_E_TYPEMISMATCH;
    time = *parsed;
  }
  if (type == VT_FILETIME)
    to.filetime = time;
  else
    to.date = FileTimeToDateTime(time);
  return S_OK;
}

HRESULT StoreGuid(PROPVARIANT& to, const TContent& content) {
  GUID guid;
  if (const auto* found = std::get_if<GUID>(&content))
    guid = *found;
  else if (const auto* text = std::get_if<TString>(&content); !text || !TryParseGuid(*text, guid))
    return DISP_E_TYPEMISMATCH;
  to.puuid = TPropVariant::From(guid).Detach().puuid;
  return S_OK;
}

HRESULT StoreText(PROPVARIANT& to, VARTYPE type, const TContent& content) {
  const TString text = std::visit(TTextOf(), content);
  if (type == VT_BSTR)
    to.bstrVal = detail::NewBstr(text);
  else if (type == VT_LPWSTR)
    to.pwszVal = detail::NewTaskText(text);
  else
    to.calpwstr = TPropVariant::From(TStringArray{text}).Detach().calpwstr;
  return S_OK;
}

HRESULT Store(PROPVARIANT& to, VARTYPE type, const TContent& content) {
  switch (type) {
    case VT_LPWSTR:
    case VT_BSTR:
    case VT_VECTOR | VT_LPWSTR:
      return StoreText(to, type, content);
    case VT_DATE:
    case VT_FILETIME:
      return StoreMoment(to, type, content);
    case VT_CLSID:
      return StoreGuid(to, content);
    case VT_BOOL:
    case VT_R4:
    case VT_R8:
      return StoreNumber(to, type, AsNumber(content));
    default:
      if (!detail::IsWholeNumberType(type)) return DISP_E_TYPEMISMATCH;
      return StoreNumber(to, type, AsNumber(content));
  }
}

bool HasContent(const PROPVARIANT& value, const TContent& content) noexcept {
  return detail::IsEmptyType(value.vt) || !std::holds_alternative<TNothing>(content);
}
}  // namespace

// --- between the structures ---------------------------------------------------

HRESULT PropVariantToVariantValue(const PROPVARIANT& from, VARIANT& to) noexcept {
  return Converted(to, [&]() -> HRESULT {
    if (detail::IsPlainType(from.vt)) {
      std::memcpy(&to.lVal, &from.lVal, sizeof(std::uint64_t));
    } else if (from.vt == VT_FILETIME) {
      to.date = FileTimeToDateTime(from.filetime);
      to.vt = VT_DATE;
      return S_OK;
    } else {
      const TContent content = detail::ReadContent(from);
      if (!HasContent(from, content)) return DISP_E_TYPEMISMATCH;
      to.bstrVal = detail::NewBstr(std::visit(TTextOf(), content));
      to.vt = VT_BSTR;
      return S_OK;
    }
    to.vt = from.vt;
    return S_OK;
  });
}

HRESULT VariantToPropVariantValue(const VARIANT& from, PROPVARIANT& to) noexcept {
  return Converted(to, [&]() -> HRESULT {
    if (detail::IsPlainType(from.vt))
      std::memcpy(&to.lVal, &from.lVal, sizeof(std::uint64_t));
    else if (from.vt == VT_BSTR)
      to.bstrVal = detail::NewBstr(std::get<TString>(detail::ReadContent(from)));
    else
      return DISP_E_TYPEMISMATCH;
    to.vt = from.vt;
    return S_OK;
  });
}

// --- between types --------------------------------------------------------------

HRESULT ChangeType(const PROPVARIANT& from, VARTYPE type, PROPVARIANT& to) noexcept {
  return Converted(to, [&]() -> HRESULT {
    if (from.vt == type) return PropVariantCopy(&to, &from);
    const TContent content = detail::ReadContent(from);
    if (!HasContent(from, content)) return DISP_E_TYPEMISMATCH;
    const HRESULT result = Store(to, type, content);
    if (SUCCEEDED(result)) to.vt = type;
    return result;
  });
}

TString PropVariantToText(const PROPVARIANT& value) {
  return std::visit(TTextOf(), detail::ReadContent(value));
}

TString VariantToText(const VARIANT& value) {
  return std::visit(TTextOf(), detail::ReadContent(value));
}

}  // namespace oak
