// Reading values by kind.
#include <cstring>

#include "oak/base/VariantParts.h"

namespace oak {

namespace detail {
bool IsWholeNumberType(VARTYPE type) noexcept {
  return (type >= VT_I1 && type <= VT_UINT) || type == VT_I2 || type == VT_I4;
}

bool IsPlainType(VARTYPE type) noexcept {
  return IsEmptyType(type) || IsWholeNumberType(type) || type == VT_R4 || type == VT_R8 ||
         type == VT_CY || type == VT_DATE || type == VT_BOOL || type == VT_ERROR;
}

namespace {
template <class T>
std::int64_t Bits64(const T& value) noexcept {
  std::int64_t bits;
  std::memcpy(&bits, &value.lVal, sizeof bits);
  return bits;
}

/// The types that both structures hold alike.
template <class T>
TContent ReadScalar(const T& value) noexcept {
  switch (value.vt) {
    case VT_I1:
      return std::int64_t{static_cast<signed char>(value.cVal)};
    case VT_UI1:
      return std::uint64_t{value.bVal};
    case VT_I2:
      return std::int64_t{value.iVal};
    case VT_UI2:
      return std::uint64_t{value.uiVal};
    case VT_I4:
    case VT_INT:
      return std::int64_t{value.lVal};
    case VT_ERROR:
      return std::int64_t{value.scode};
    case VT_UI4:
    case VT_UINT:
      return std::uint64_t{value.ulVal};
    case VT_I8:
      return Bits64(value);
    case VT_UI8:
      return static_cast<std::uint64_t>(Bits64(value));
    case VT_CY:
      return static_cast<double>(Bits64(value)) / 10000.0;
    case VT_R4:
      return double{value.fltVal};
    case VT_R8:
      return value.dblVal;
    case VT_BOOL:
      return value.boolVal != VARIANT_FALSE;
    case VT_DATE:
      return TMoment{DateTimeToFileTime(value.date)};
    case VT_BSTR:
      return FromW(reinterpret_cast<LPCWSTR>(value.bstrVal), SysStringLen(value.bstrVal));
    default:
      return TNothing{};
  }
}

TString JoinedTexts(const PROPVARIANT& value) {
  TString text;
  for (ULONG i = 0; i < value.calpwstr.cElems; ++i) {
    if (i > 0) text += u"; ";
    text += FromW(value.calpwstr.pElems[i]);
  }
  return text;
}
}  // namespace

TContent ReadContent(const PROPVARIANT& value) {
  switch (value.vt) {
    case VT_FILETIME:
      return TMoment{value.filetime};
    case VT_LPWSTR:
      return FromW(value.pwszVal);
    case VT_LPSTR:
      return value.pszVal ? FromUtf8(value.pszVal) : TString();
    case VT_CLSID:
      return value.puuid ? TContent(GUID{*value.puuid}) : TContent(TNothing{});
    case VT_VECTOR | VT_LPWSTR:
      return JoinedTexts(value);
    default:
      return ReadScalar(value);
  }
}

TContent ReadContent(const VARIANT& value) { return ReadScalar(value); }
}  // namespace detail

namespace {
bool IsTextType(VARTYPE type) noexcept {
  return type == VT_LPWSTR || type == VT_BSTR || type == VT_LPSTR ||
         type == (VT_VECTOR | VT_LPWSTR);
}

/// The content unless it is a text, which needs memory.
detail::TContent ReadNumber(const PROPVARIANT& value) noexcept {
  return IsTextType(value.vt) ? detail::TContent() : detail::ReadContent(value);
}
}  // namespace

bool TryGetText(const PROPVARIANT& value, TString& text) {
  if (!IsTextType(value.vt)) return false;
  text = std::get<TString>(detail::ReadContent(value));
  return true;
}

bool TryGetInt64(const PROPVARIANT& value, std::int64_t& number) noexcept {
  const detail::TContent content = ReadNumber(value);
  if (const auto* found = std::get_if<std::int64_t>(&content)) {
    number = *found;
    return true;
  }
  const auto* found = std::get_if<std::uint64_t>(&content);
  if (!found || *found > INT64_MAX) return false;
  number = static_cast<std::int64_t>(*found);
  return true;
}

bool TryGetUInt64(const PROPVARIANT& value, std::uint64_t& number) noexcept {
  const detail::TContent content = ReadNumber(value);
  if (const auto* found = std::get_if<std::uint64_t>(&content)) {
    number = *found;
    return true;
  }
  const auto* found = std::get_if<std::int64_t>(&content);
  if (!found || *found < 0) return false;
  number = static_cast<std::uint64_t>(*found);
  return true;
}

bool TryGetDouble(const PROPVARIANT& value, double& number) noexcept {
  const detail::TContent content = ReadNumber(value);
  if (const auto* real = std::get_if<double>(&content))
    number = *real;
  else if (const auto* whole = std::get_if<std::int64_t>(&content))
    number = static_cast<double>(*whole);
  else if (const auto* natural = std::get_if<std::uint64_t>(&content))
    number = static_cast<double>(*natural);
  else
    return false;
  return true;
}

bool TryGetBool(const PROPVARIANT& value, bool& flag) noexcept {
  if (value.vt != VT_BOOL) return false;
  flag = value.boolVal != VARIANT_FALSE;
  return true;
}

bool TryGetFileTime(const PROPVARIANT& value, FILETIME& time) noexcept {
  const detail::TContent content = ReadNumber(value);
  const auto* found = std::get_if<detail::TMoment>(&content);
  if (found) time = found->time;
  return found != nullptr;
}

}  // namespace oak
