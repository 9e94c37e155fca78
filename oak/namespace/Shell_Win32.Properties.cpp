#include "oak/namespace/Shell_Win32.Properties.h"

#include "oak/base/Pidl.h"
#include "oak/base/Ref.h"
#include "oak/base/Variant.h"
#include "oak/namespace/Oak.Shell.ShellColumns.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

constexpr int NoReadingOrderMarks = PDFF_NOAUTOREADINGORDER;
constexpr int SizeInKilobytes = int{PDFF_NOAUTOREADINGORDER} | int{PDFF_ALWAYSKB};

/// Empty if the property system is missing or has no form for the value.
TString FormatBySystem(const PROPVARIANT& pValue, const TShellColumnId& pColumn) {
  if (!Api().PSGetPropertyDescription || !Api().PSGetPropertySystem) return {};
  Ref<IPropertySystem> system;
  if (FAILED(Api().PSGetPropertySystem(IidOf<IPropertySystem>(), system.PutVoid())) || !system)
    return {};
  const auto flags = static_cast<PROPDESC_FORMAT_FLAGS>(
      pColumn == TShellColumns::Size() ? SizeInKilobytes : NoReadingOrderMarks);
  TTaskMemory<WCHAR> text;
  if (FAILED(system->FormatForDisplayAlloc(pColumn, pValue, flags, text.Put()))) return {};
  return FromW(text.Get());
}

}  // namespace

TShellColumnId SubstituteMetaData(const TShellColumnId& pColumn) noexcept {
  // The status icon has no plain value; the state behind it has.
  return pColumn == TShellColumns::StorageProviderUIStatus() ? TShellColumns::StorageProviderState()
                                                             : pColumn;
}

TString PropVariantAsDisplayString(const PROPVARIANT& pValue, const TShellColumnId& pColumn) {
  TString text = FormatBySystem(pValue, SubstituteMetaData(pColumn));
  if (!text.empty()) return text;
  if (!Api().PropVariantToStringWithDefault) return PropVariantToText(pValue);
  return FromW(Api().PropVariantToStringWithDefault(pValue, W(u"")));
}

TString VariantToStringViaPropertySystem(const VARIANT& pValue, const TShellColumnId& pColumn) {
  TPropVariant value;
  if (FAILED(VariantToPropVariant(pValue, *value.Put()))) return {};
  return PropVariantAsDisplayString(value, pColumn);
}

// Where the system lacks the conversions, ours do for all simple values.

HRESULT PropVariantToVariant(const PROPVARIANT& pValue, VARIANT& pResult) noexcept {
  VariantInit(&pResult);
  return Api().PropVariantToVariant ? Api().PropVariantToVariant(&pValue, &pResult)
                                    : PropVariantToVariantValue(pValue, pResult);
}

HRESULT VariantToPropVariant(const VARIANT& pValue, PROPVARIANT& pResult) noexcept {
  PropVariantInit(&pResult);
  return Api().VariantToPropVariant ? Api().VariantToPropVariant(&pValue, &pResult)
                                    : VariantToPropVariantValue(pValue, pResult);
}

}  // namespace oak
