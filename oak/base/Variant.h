// PROPVARIANT and VARIANT: owners, and the conversions, texts and order of the
// platform's property system for simple values.
//
// Simple are: empty, null, whole and real numbers, bool, date, file time, text
// (BSTR, LPWSTR, LPSTR, which is read as UTF-8), CLSID, and lists of texts.
// All functions are free of locale and clock; any thread.
#pragma once

#include <concepts>
#include <cstdint>

#include "oak/base/DateTime.h"
#include "oak/base/Text.h"

namespace oak {

/// Owns a PROPVARIANT. A value: copying copies what it holds.
class TPropVariant {
 public:
  /// Empty (VT_EMPTY).
  TPropVariant() noexcept { PropVariantInit(&fValue); }
  /// Raises EOleSysError when it can't be copied.
  TPropVariant(const TPropVariant& other) : TPropVariant(Copy(other.fValue)) {}
  TPropVariant(TPropVariant&& other) noexcept : fValue(other.Detach()) {}
  TPropVariant& operator=(TPropVariant other) noexcept;
  ~TPropVariant() { PropVariantClear(&fValue); }

  /// Takes the value over and leaves the argument empty.
  static TPropVariant Adopt(PROPVARIANT& value) noexcept;
  /// Owns a copy; raises EOleSysError when there is none.
  static TPropVariant Copy(const PROPVARIANT& value);
  static TPropVariant Null() noexcept;
  static TPropVariant From(TStringView text);  ///< VT_LPWSTR; throws std::bad_alloc.
  static TPropVariant From(const char16_t* text) { return From(TStringView(text)); }
  static TPropVariant From(bool value) noexcept;
  static TPropVariant From(double value) noexcept;           ///< VT_R8
  static TPropVariant From(const FILETIME& value) noexcept;  ///< VT_FILETIME
  static TPropVariant From(const GUID& value);               ///< VT_CLSID
  static TPropVariant From(const TStringArray& texts);       ///< VT_VECTOR | VT_LPWSTR
  /// VT_I4, VT_UI4, VT_I8 or VT_UI8: the smallest that holds the type.
  template <std::integral T>
  static TPropVariant From(T value) noexcept {
    if constexpr (std::signed_integral<T>)
      return FromSigned(value, sizeof(T) <= 4 ? VARTYPE{VT_I4} : VARTYPE{VT_I8});
    else
      return FromUnsigned(value, sizeof(T) <= 4 ? VARTYPE{VT_UI4} : VARTYPE{VT_UI8});
  }
  static TPropVariant FromDate(TDateTime value) noexcept;  ///< VT_DATE

  const PROPVARIANT& Get() const noexcept { return fValue; }
  operator const PROPVARIANT&() const noexcept { return fValue; }
  VARTYPE GetType() const noexcept { return fValue.vt; }
  bool IsEmpty() const noexcept { return fValue.vt == VT_EMPTY; }
  bool IsNull() const noexcept { return fValue.vt == VT_NULL; }
  /// For out parameters: drops the present value, then receives a new one.
  PROPVARIANT* Put() noexcept;
  /// Gives the value to the caller, who clears it, and becomes empty.
  [[nodiscard]] PROPVARIANT Detach() noexcept;

 private:
  static TPropVariant FromSigned(std::int64_t value, VARTYPE type) noexcept;
  static TPropVariant FromUnsigned(std::uint64_t value, VARTYPE type) noexcept;
  PROPVARIANT fValue;
};

/// Owns a VARIANT. A value: copying copies what it holds.
class TVariant {
 public:
  /// Empty (VT_EMPTY).
  TVariant() noexcept { VariantInit(&fValue); }
  /// Raises EOleSysError when it can't be copied.
  TVariant(const TVariant& other) : TVariant(Copy(other.fValue)) {}
  TVariant(TVariant&& other) noexcept : fValue(other.Detach()) {}
  TVariant& operator=(TVariant other) noexcept;
  ~TVariant() { VariantClear(&fValue); }

  /// Takes the value over and leaves the argument empty.
  static TVariant Adopt(VARIANT& value) noexcept;
  /// Owns a copy; raises EOleSysError when there is none.
  static TVariant Copy(const VARIANT& value);
  static TVariant Null() noexcept;
  static TVariant From(TStringView text);  ///< VT_BSTR; throws std::bad_alloc.
  static TVariant From(const char16_t* text) { return From(TStringView(text)); }
  static TVariant From(bool value) noexcept;
  static TVariant From(double value) noexcept;  ///< VT_R8
  /// VT_I4, VT_UI4, VT_I8 or VT_UI8: the smallest that holds the type.
  template <std::integral T>
  static TVariant From(T value) noexcept {
    if constexpr (std::signed_integral<T>)
      return FromSigned(value, sizeof(T) <= 4 ? VARTYPE{VT_I4} : VARTYPE{VT_I8});
    else
      return FromUnsigned(value, sizeof(T) <= 4 ? VARTYPE{VT_UI4} : VARTYPE{VT_UI8});
  }
  static TVariant FromDate(TDateTime value) noexcept;  ///< VT_DATE
  /// A counted reference (VT_UNKNOWN) of its own; nil is allowed.
  static TVariant FromUnknown(IUnknown* object) noexcept;

  const VARIANT& Get() const noexcept { return fValue; }
  operator const VARIANT&() const noexcept { return fValue; }
  VARTYPE GetType() const noexcept { return fValue.vt; }
  bool IsEmpty() const noexcept { return fValue.vt == VT_EMPTY; }
  bool IsNull() const noexcept { return fValue.vt == VT_NULL; }
  /// For out parameters: drops the present value, then receives a new one.
  VARIANT* Put() noexcept;
  /// Gives the value to the caller, who clears it, and becomes empty.
  [[nodiscard]] VARIANT Detach() noexcept;

 private:
  static TVariant FromSigned(std::int64_t value, VARTYPE type) noexcept;
  static TVariant FromUnsigned(std::uint64_t value, VARTYPE type) noexcept;
  VARIANT fValue;
};

// --- reading ---------------------------------------------------------------
// False for a value that is not of the kind, or out of its range; the result is
// left alone then. No value is read as another kind: a text is no number.
bool TryGetText(const PROPVARIANT& value, TString& text);  ///< a list: joined by "; "
bool TryGetInt64(const PROPVARIANT& value, std::int64_t& number) noexcept;
bool TryGetUInt64(const PROPVARIANT& value, std::uint64_t& number) noexcept;
bool TryGetDouble(const PROPVARIANT& value, double& number) noexcept;  ///< any number
bool TryGetBool(const PROPVARIANT& value, bool& flag) noexcept;
bool TryGetFileTime(const PROPVARIANT& value, FILETIME& time) noexcept;  ///< date or file time

// --- converting ------------------------------------------------------------
// On success the result is a new value for the caller to clear; what it held
// before is not read. On failure it is empty.

/// Scalars keep their type; LPWSTR, LPSTR and CLSID become BSTR, a file time a
/// date, a list of texts one BSTR with "; " between them. Other types:
/// DISP_E_TYPEMISMATCH.
HRESULT PropVariantToVariantValue(const PROPVARIANT& from, VARIANT& to) noexcept;
/// Scalars and BSTR keep their type. Other types: DISP_E_TYPEMISMATCH.
HRESULT VariantToPropVariantValue(const VARIANT& from, PROPVARIANT& to) noexcept;

/// The value as another type. Numbers are rounded (halves to even) and tested for
/// the range (DISP_E_OVERFLOW); a text must hold the whole number; bool reads as
/// -1 and 0, in text "-1", "0", "true" or "false"; dates and file times read as
/// "2006/09/16:20:13:15.001"; a number is no date. Empty and null give the empty
/// text and are nothing else. DISP_E_TYPEMISMATCH if there is no conversion.
HRESULT ChangeType(const PROPVARIANT& from, VARTYPE type, PROPVARIANT& to) noexcept;

/// ChangeType to text; empty if there is none.
TString PropVariantToText(const PROPVARIANT& value);
TString VariantToText(const VARIANT& value);

/// -1, 0 or 1. Empty, null and lists without elements come first; numbers go by
/// value whatever their types; texts by CompareLogical; otherwise b is converted
/// to the type of a, or else a to that of b, and values that have no common type
/// are ordered by their type numbers.
int ComparePropVariants(const PROPVARIANT& a, const PROPVARIANT& b) noexcept;
int CompareVariants(const VARIANT& a, const VARIANT& b) noexcept;

}  // namespace oak
