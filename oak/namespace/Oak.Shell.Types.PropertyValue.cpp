#include "oak/namespace/Oak.Shell.Types.PropertyValue.h"

#include <cmath>

#include "oak/namespace/Shell_Win32.Properties.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

/// Both directions are the same but for the system's function.
template <class TConvert>
TDateTime ConvertZone(TDateTime pValue, TConvert pConvert) {
  TIME_ZONE_INFORMATION zone{};
  SYSTEMTIME from{};
  SYSTEMTIME to{};
  TDateTime result = pValue;
  if (Api().GetTimeZoneInformation(&zone) == TIME_ZONE_ID_INVALID) return pValue;
  if (!DateTimeToSystem(pValue, from) || !pConvert(zone, from, to)) return pValue;
  return SystemToDateTime(to, result) ? result : pValue;
}

/// The value as a number of days, no zone applied.
TDateTime ToDays(const PROPVARIANT& pValue) {
  double number = 0;
  if (pValue.vt == VT_FILETIME) return FileTimeToDateTime(pValue.filetime);
  if (pValue.vt == VT_DATE) return std::isfinite(pValue.date) ? pValue.date : 0;
  if (TryGetDouble(pValue, number)) return std::isfinite(number) ? number : 0;
  TPropVariant converted;
  if (FAILED(ChangeType(pValue, VT_R8, *converted.Put()))) return 0;
  return TryGetDouble(converted, number) && std::isfinite(number) ? number : 0;
}

}  // namespace

TShellPropertyValue::TShellPropertyValue(const PROPVARIANT& pValue)
    : FPropertyVariant(TPropVariant::Copy(pValue)) {}

TShellPropertyValue::TShellPropertyValue(const VARIANT& pValue) noexcept {
  if (FAILED(VariantToPropVariant(pValue, *FPropertyVariant.Put())))
    FPropertyVariant = TPropVariant::Null();
}

TVariant TShellPropertyValue::ToVariant() const noexcept {
  TVariant result;
  if (IsEmpty() || SUCCEEDED(PropVariantToVariant(Get(), *result.Put()))) return result;
  return TVariant::Null();
}

TDateTime TShellPropertyValue::ToDateTime() const {
  const TDateTime days = ToDays(Get());
  return GetType() == VT_FILETIME ? UtcToLocalDateTime(days) : days;
}

TDateTime TShellPropertyValue::ToLocalDateTime() const {
  const TDateTime date = ToDateTime();
  return GetType() == VT_FILETIME ? UtcToLocalDateTime(date) : date;
}

TDateTime TShellPropertyValue::ToFileDateTime() const {
  const TDateTime date = ToDateTime();
  return GetType() == VT_DATE ? LocalToUtcDateTime(date) : date;
}

std::int64_t TShellPropertyValue::ToInt64() const {
  std::int64_t number = 0;
  if (TryGetInt64(Get(), number)) return number;
  TPropVariant converted;
  if (SUCCEEDED(ChangeType(Get(), VT_I8, *converted.Put())) && TryGetInt64(converted, number))
    return number;
  const double rounded = std::nearbyint(ToDays(Get()));
  // Both bounds are powers of two and so exact as double.
  return rounded >= -0x1p63 && rounded < 0x1p63 ? static_cast<std::int64_t>(rounded) : 0;
}

TString TShellPropertyValue::ToString() const {
  if (!Api().PropVariantChangeType || !Api().PropVariantToStringWithDefault)
    return PropVariantToText(Get());
  TPropVariant text;
  if (FAILED(Api().PropVariantChangeType(text.Put(), Get(), PVCHF_DEFAULT, VT_LPWSTR))) return {};
  return FromW(Api().PropVariantToStringWithDefault(text, W(u"")));
}

int TShellPropertyValue::CompareTo(const TShellPropertyValue& pValue2) const {
  if (!Api().PropVariantCompareEx) return ComparePropVariants(Get(), pValue2.Get());
  return Api().PropVariantCompareEx(Get(), pValue2.Get(), PVCU_DEFAULT, PVCF_DEFAULT);
}

TDateTime UtcToLocalDateTime(TDateTime pValue) {
  return ConvertZone(pValue, [](const auto& zone, const SYSTEMTIME& utc, SYSTEMTIME& local) {
    return Api().SystemTimeToTzSpecificLocalTime(&zone, &utc, &local) != 0;
  });
}

TDateTime LocalToUtcDateTime(TDateTime pValue) {
  return ConvertZone(pValue, [](const auto& zone, const SYSTEMTIME& local, SYSTEMTIME& utc) {
    return Api().TzSpecificLocalTimeToSystemTime(&zone, &local, &utc) != 0;
  });
}

}  // namespace oak
