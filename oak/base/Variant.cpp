#include "oak/base/Variant.h"

#include <cstring>
#include <new>
#include <utility>

#include "oak/base/Exceptions.h"
#include "oak/base/Guid.h"
#include "oak/base/HResult.h"
#include "oak/base/VariantParts.h"

namespace oak {

namespace detail {
LPWSTR NewTaskText(TStringView text) {
  auto* copy = static_cast<char16_t*>(CoTaskMemAlloc((text.size() + 1) * sizeof(char16_t)));
  if (!copy) throw std::bad_alloc();
  std::memcpy(copy, text.data(), text.size() * sizeof(char16_t));
  copy[text.size()] = u'\0';
  return reinterpret_cast<LPWSTR>(copy);
}

BSTR NewBstr(TStringView text) {
  BSTR copy = SysAllocStringLen(reinterpret_cast<const OLECHAR*>(text.data()),
                                static_cast<UINT>(text.size()));
  if (!copy) throw std::bad_alloc();
  return copy;
}
}  // namespace detail

namespace {
template <class T>
T Made(VARTYPE type) noexcept {
  T value{};
  value.vt = type;
  return value;
}

// Both structures keep their scalars in the same places under nearly the same names.
template <class T>
void SetInteger(T& value, VARTYPE type, std::uint64_t bits) noexcept {
  value.vt = type;
  if (type == VT_I4 || type == VT_UI4)
    value.ulVal = static_cast<ULONG>(bits);
  else
    std::memcpy(&value.lVal, &bits, sizeof bits);
}
}  // namespace

// --- TPropVariant ----------------------------------------------------------

TPropVariant& TPropVariant::operator=(TPropVariant other) noexcept {
  std::swap(fValue, other.fValue);
  return *this;
}

TPropVariant TPropVariant::Adopt(PROPVARIANT& value) noexcept {
  TPropVariant result;
  std::swap(result.fValue, value);
  return result;
}

TPropVariant TPropVariant::Copy(const PROPVARIANT& value) {
  TPropVariant result;
  OleCheck(PropVariantCopy(&result.fValue, &value));
  return result;
}

TPropVariant TPropVariant::Null() noexcept {
  TPropVariant result;
  result.fValue.vt = VT_NULL;
  return result;
}

TPropVariant TPropVariant::From(TStringView text) {
  TPropVariant result;
  result.fValue.pwszVal = detail::NewTaskText(text);
  result.fValue.vt = VT_LPWSTR;
  return result;
}

TPropVariant TPropVariant::From(bool value) noexcept {
  TPropVariant result;
  result.fValue.vt = VT_BOOL;
  result.fValue.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
  return result;
}

TPropVariant TPropVariant::From(double value) noexcept {
  TPropVariant result;
  result.fValue.vt = VT_R8;
  result.fValue.dblVal = value;
  return result;
}

TPropVariant TPropVariant::From(const FILETIME& value) noexcept {
  TPropVariant result;
  result.fValue.vt = VT_FILETIME;
  result.fValue.filetime = value;
  return result;
}

TPropVariant TPropVariant::From(const GUID& value) {
  auto* copy = static_cast<CLSID*>(CoTaskMemAlloc(sizeof(CLSID)));
  if (!copy) throw std::bad_alloc();
  *copy = value;
  TPropVariant result;
  result.fValue.vt = VT_CLSID;
  result.fValue.puuid = copy;
  return result;
}

TPropVariant TPropVariant::From(const TStringArray& texts) {
  const std::size_t bytes = texts.size() * sizeof(LPWSTR);
  auto* list = static_cast<LPWSTR*>(CoTaskMemAlloc(bytes ? bytes : sizeof(LPWSTR)));
  if (!list) throw std::bad_alloc();
  TPropVariant result;
  result.fValue.vt = VT_VECTOR | VT_LPWSTR;
  result.fValue.calpwstr.cElems = 0;
  result.fValue.calpwstr.pElems = list;
  // Counted as it grows: what is there when memory ends is freed with the value.
  for (const TString& text : texts)
    list[result.fValue.calpwstr.cElems++] = detail::NewTaskText(text);
  return result;
}

TPropVariant TPropVariant::FromDate(TDateTime value) noexcept {
  TPropVariant result;
  result.fValue.vt = VT_DATE;
  result.fValue.date = value;
  return result;
}

TPropVariant TPropVariant::FromSigned(std::int64_t value, VARTYPE type) noexcept {
  return FromUnsigned(static_cast<std::uint64_t>(value), type);
}

TPropVariant TPropVariant::FromUnsigned(std::uint64_t value, VARTYPE type) noexcept {
  TPropVariant result;
  SetInteger(result.fValue, type, value);
  return result;
}

PROPVARIANT* TPropVariant::Put() noexcept {
  *this = TPropVariant();
  return &fValue;
}

PROPVARIANT TPropVariant::Detach() noexcept {
  return std::exchange(fValue, Made<PROPVARIANT>(VT_EMPTY));
}

// --- TVariant --------------------------------------------------------------

TVariant& TVariant::operator=(TVariant other) noexcept {
  std::swap(fValue, other.fValue);
  return *this;
}

TVariant TVariant::Adopt(VARIANT& value) noexcept {
  TVariant result;
  std::swap(result.fValue, value);
  return result;
}

TVariant TVariant::Copy(const VARIANT& value) {
  TVariant result;
  // The published declaration does not promise that the source is left alone.
  OleCheck(VariantCopy(&result.fValue, const_cast<VARIANT*>(&value)));
  return result;
}

TVariant TVariant::Null() noexcept {
  TVariant result;
  result.fValue.vt = VT_NULL;
  return result;
}

TVariant TVariant::From(TStringView text) {
  TVariant result;
  result.fValue.bstrVal = detail::NewBstr(text);
  result.fValue.vt = VT_BSTR;
  return result;
}

TVariant TVariant::From(bool value) noexcept {
  TVariant result;
  result.fValue.vt = VT_BOOL;
  result.fValue.boolVal = value ? VARIANT_TRUE : VARIANT_FALSE;
  return result;
}

TVariant TVariant::From(double value) noexcept {
  TVariant result;
  result.fValue.vt = VT_R8;
  result.fValue.dblVal = value;
  return result;
}

TVariant TVariant::FromDate(TDateTime value) noexcept {
  TVariant result;
  result.fValue.vt = VT_DATE;
  result.fValue.date = value;
  return result;
}

TVariant TVariant::FromUnknown(IUnknown* object) noexcept {
  if (object) object->AddRef();
  TVariant result;
  result.fValue.vt = VT_UNKNOWN;
  result.fValue.punkVal = object;
  return result;
}

TVariant TVariant::FromSigned(std::int64_t value, VARTYPE type) noexcept {
  return FromUnsigned(static_cast<std::uint64_t>(value), type);
}

TVariant TVariant::FromUnsigned(std::uint64_t value, VARTYPE type) noexcept {
  TVariant result;
  SetInteger(result.fValue, type, value);
  return result;
}

VARIANT* TVariant::Put() noexcept {
  *this = TVariant();
  return &fValue;
}

VARIANT TVariant::Detach() noexcept { return std::exchange(fValue, Made<VARIANT>(VT_EMPTY)); }

}  // namespace oak
