// TShellPropertyValue: the value of a property.
#pragma once

#include <cstdint>

#include "oak/base/Variant.h"

namespace oak {

/// Owns one PROPVARIANT. A value: copying copies what it holds. One thread at a
/// time; dates and texts follow the zone and the language of the user.
class TShellPropertyValue {
 public:
  /// Empty (VT_EMPTY).
  TShellPropertyValue() noexcept = default;
  /// Owns a copy. Raises EOleSysError when there is none.
  TShellPropertyValue(const PROPVARIANT& pValue);
  TShellPropertyValue(TPropVariant pValue) noexcept : FPropertyVariant(std::move(pValue)) {}
  /// Owns the value converted; null if it can't be converted.
  TShellPropertyValue(const VARIANT& pValue) noexcept;
  TShellPropertyValue(const TVariant& pValue) noexcept : TShellPropertyValue(pValue.Get()) {}
  static TShellPropertyValue CreateNull() noexcept { return TPropVariant::Null(); }
  static TShellPropertyValue CreateEmpty() noexcept { return {}; }

  bool IsNull() const noexcept { return FPropertyVariant.IsNull(); }
  bool IsEmpty() const noexcept { return FPropertyVariant.IsEmpty(); }
  VARTYPE GetType() const noexcept { return FPropertyVariant.GetType(); }

  /// The value itself, owned by this object.
  operator const PROPVARIANT&() const noexcept { return FPropertyVariant.Get(); }
  const PROPVARIANT& Get() const noexcept { return FPropertyVariant.Get(); }
  /// For out parameters: drops the present value, then receives a new one.
  PROPVARIANT* Put() noexcept { return FPropertyVariant.Put(); }

  /// Converted; what can't be converted gives null, an empty value an empty one.
  TVariant ToVariant() const noexcept;
  operator TVariant() const noexcept { return ToVariant(); }
  /// As a date; a file time is taken from UTC to local time. 0 for anything that
  /// is no number, date or text of a number.
  TDateTime ToDateTime() const;
  /// As ToDateTime, but a file time passes through the zone conversion twice.
  TDateTime ToLocalDateTime() const;
  /// As ToDateTime, but a VT_DATE is taken from local time to UTC.
  TDateTime ToFileDateTime() const;
  /// As a whole number, rounded; 0 for anything that is none.
  std::int64_t ToInt64() const;
  /// In the user's language; empty without a value.
  TString ToString() const;

  /// Negative, 0 or positive, in the order of the property system.
  int CompareTo(const TShellPropertyValue& pValue2) const;
  friend bool operator==(const TShellPropertyValue& a, const TShellPropertyValue& b) {
    return a.CompareTo(b) == 0;
  }

 private:
  TPropVariant FPropertyVariant;
};

// Dates between UTC and the zone of the user. A date that the system can't convert
// stays as it is.
TDateTime UtcToLocalDateTime(TDateTime pValue);
TDateTime LocalToUtcDateTime(TDateTime pValue);

}  // namespace oak
