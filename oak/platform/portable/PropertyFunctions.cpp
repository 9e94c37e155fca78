// The free functions of the property system.
#include <utility>

#include "oak/base/Variant.h"
#include "oak/platform/Api.h"
#include "oak/platform/portable/PortableBinding.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/PortableKnownFolders.h"
#include "oak/platform/portable/PropertySystem.h"
#include "oak/platform/portable/ShellFolder.h"

namespace oak {
namespace {

// --- descriptions ------------------------------------------------------------

HRESULT STDAPICALLTYPE PSGetPropertySystem(REFIID iid, void** out) {
  return PortableCall("PSGetPropertySystem", [&] { return GetPortablePropertySystem(iid, out); });
}

HRESULT STDAPICALLTYPE PSGetPropertyDescription(REFPROPERTYKEY key, REFIID iid, void** out) {
  return PortableCall("PSGetPropertyDescription",
                      [&] { return MakePropertyDescription(FindProperty(key), iid, out); });
}

HRESULT STDAPICALLTYPE PSGetPropertyKeyFromName(LPCWSTR name, PROPERTYKEY* key) {
  return PortableCall("PSGetPropertyKeyFromName", [&]() -> HRESULT {
    if (!name || !key) return E_INVALIDARG;
    *key = PROPERTYKEY{};
    const TPropertyInfo* info = FindPropertyByName(name);
    if (!info) return TYPE_E_ELEMENTNOTFOUND;
    *key = info->Key;
    return S_OK;
  });
}

HRESULT STDAPICALLTYPE PSGetNameFromPropertyKey(REFPROPERTYKEY key, LPWSTR* name) {
  return PortableCall("PSGetNameFromPropertyKey", [&]() -> HRESULT {
    if (!name) return E_INVALIDARG;
    *name = nullptr;
    const TPropertyInfo* info = FindProperty(key);
    if (!info) return TYPE_E_ELEMENTNOTFOUND;
    *name = TaskText(info->Name);
    return S_OK;
  });
}

HRESULT STDAPICALLTYPE PSFormatForDisplayAlloc(REFPROPERTYKEY key, REFPROPVARIANT value,
                                               PROPDESC_FORMAT_FLAGS flags, LPWSTR* text) {
  return PortableCall("PSFormatForDisplayAlloc", [&]() -> HRESULT {
    if (!text) return E_INVALIDARG;
    *text = nullptr;
    const TPropertyInfo* info = FindProperty(key);
    if (!info) return TYPE_E_ELEMENTNOTFOUND;
    *text = TaskText(FormatProperty(*info, value, flags));
    return S_OK;
  });
}

// --- comparing -----------------------------------------------------------------

bool IsNothing(REFPROPVARIANT value) { return value.vt == VT_EMPTY || value.vt == VT_NULL; }
bool IsText(REFPROPVARIANT value) {
  return value.vt == VT_LPWSTR || value.vt == VT_BSTR || value.vt == VT_LPSTR;
}

// The moment with everything below the unit cut off, as a number that grows with it.
std::int64_t CutTime(const FILETIME& time, PROPVAR_COMPARE_UNIT unit) {
  SYSTEMTIME parts;
  if (!FileTimeToSystem(time, parts)) return 0;
  const std::pair<PROPVAR_COMPARE_UNIT, WORD> fields[] = {
      {PVCU_YEAR, parts.wYear}, {PVCU_MONTH, parts.wMonth},   {PVCU_DAY, parts.wDay},
      {PVCU_HOUR, parts.wHour}, {PVCU_MINUTE, parts.wMinute}, {PVCU_SECOND, parts.wSecond}};
  std::int64_t result = 0;
  for (const auto& [of, value] : fields) result = result * 100 + (unit <= of ? value : 0);
  return result;
}

int Sign(std::int64_t value) { return value < 0 ? -1 : value > 0 ? 1 : 0; }

int CompareTexts(REFPROPVARIANT a, REFPROPVARIANT b, PROPVAR_COMPARE_FLAGS flags) {
  const TString first = PropVariantToText(a), second = PropVariantToText(b);
  if (flags & (PVCF_USESTRCMPI | PVCF_USESTRCMPIC)) return Sign(CompareText(first, second));
  return Sign(first.compare(second));
}

int STDAPICALLTYPE PropVariantCompareEx(REFPROPVARIANT a, REFPROPVARIANT b,
                                        PROPVAR_COMPARE_UNIT unit, PROPVAR_COMPARE_FLAGS flags) {
  constexpr auto byText = PVCF_USESTRCMP | PVCF_USESTRCMPC | PVCF_USESTRCMPI | PVCF_USESTRCMPIC;
  int order = 0;
  (void)PortableCall("PropVariantCompareEx", [&] {
    FILETIME first, second;
    if (IsNothing(a) != IsNothing(b)) {
      order = IsNothing(a) ? -1 : 1;
      if (flags & PVCF_TREATEMPTYASGREATERTHAN) order = -order;
    } else if (unit != PVCU_DEFAULT && TryGetFileTime(a, first) && TryGetFileTime(b, second)) {
      order = Sign(CutTime(first, unit) - CutTime(second, unit));
    } else if ((flags & byText) && IsText(a) && IsText(b)) {
      order = CompareTexts(a, b, flags);
    } else {
      order = ComparePropVariants(a, b);
    }
    return S_OK;
  });
  return order;
}

int STDAPICALLTYPE VariantCompare(REFVARIANT a, REFVARIANT b) { return CompareVariants(a, b); }

// --- converting ----------------------------------------------------------------

HRESULT STDAPICALLTYPE PropVariantChangeType(PROPVARIANT* target, REFPROPVARIANT source,
                                             PROPVAR_CHANGE_FLAGS flags, VARTYPE type) {
  return PortableCall("PropVariantChangeType", [&]() -> HRESULT {
    if (!target) return E_INVALIDARG;
    bool flag = false;
    const bool words = (flags & (PVCHF_ALPHABOOL | PVCHF_LOCALBOOL)) && TryGetBool(source, flag);
    TPropVariant result;  // the target may be the source
    HRESULT code = S_OK;
    if (words && (type == VT_LPWSTR || type == VT_BSTR))
      code = ChangeType(TPropVariant::From(flag ? u"True" : u"False"), type, *result.Put());
    else
      code = ChangeType(source, type, *result.Put());
    *target = result.Detach();
    return code;
  });
}

LPCWSTR STDAPICALLTYPE PropVariantToStringWithDefault(REFPROPVARIANT value, LPCWSTR fallback) {
  if (value.vt == VT_LPWSTR && value.pwszVal) return value.pwszVal;
  if (value.vt == VT_BSTR && value.bstrVal) return value.bstrVal;
  return fallback;
}

HRESULT STDAPICALLTYPE PropVariantToStringAlloc(REFPROPVARIANT value, LPWSTR* text) {
  return PortableCall("PropVariantToStringAlloc", [&]() -> HRESULT {
    if (!text) return E_INVALIDARG;
    *text = nullptr;
    TPropVariant changed;
    const HRESULT result = ChangeType(value, VT_LPWSTR, *changed.Put());
    if (FAILED(result)) return result;
    *text = changed.Detach().pwszVal;
    return S_OK;
  });
}

HRESULT STDAPICALLTYPE PropVariantToVariant(const PROPVARIANT* source, VARIANT* target) {
  return source && target ? PropVariantToVariantValue(*source, *target) : E_INVALIDARG;
}

HRESULT STDAPICALLTYPE VariantToPropVariant(const VARIANT* source, PROPVARIANT* target) {
  return source && target ? VariantToPropVariantValue(*source, *target) : E_INVALIDARG;
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindPortableProperties(TApi& api) {
  BIND(PSGetPropertySystem);
  BIND(PSGetPropertyDescription);
  BIND(PSGetPropertyKeyFromName);
  BIND(PSGetNameFromPropertyKey);
  BIND(PSFormatForDisplayAlloc);
  BIND(PropVariantCompareEx);
  BIND(PropVariantChangeType);
  BIND(PropVariantToStringWithDefault);
  BIND(PropVariantToStringAlloc);
  BIND(PropVariantToVariant);
  BIND(VariantToPropVariant);
  BIND(VariantCompare);
  RegisterKnownFolderManager();
}
#undef BIND

}  // namespace oak
