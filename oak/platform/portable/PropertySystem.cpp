#include "oak/platform/portable/PropertySystem.h"

#include <unordered_map>

#include "oak/base/Guid.h"
#include "oak/base/Variant.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/ShellFolder.h"

namespace oak {
namespace {

using TByKey =
    std::unordered_map<PROPERTYKEY, const TPropertyInfo*, TPropertyKeyHash, TPropertyKeyEqual>;
using TByName = std::unordered_map<TString, const TPropertyInfo*>;  // upper-cased names

// Tables of threads that may outlive static destructors are never freed.
const TByKey& PropertiesByKey() {
  static const auto* map = [] {
    auto* made = new TByKey;
    for (const TPropertyInfo& info : PropertyTable()) made->emplace(info.Key, &info);
    return made;
  }();
  return *map;
}

const TByName& PropertiesByName() {
  static const auto* map = [] {
    auto* made = new TByName;
    for (const TPropertyInfo& info : PropertyTable()) made->emplace(UpperCase(info.Name), &info);
    return made;
  }();
  return *map;
}

HRESULT GiveText(TStringView text, LPWSTR* out) {
  *out = TaskText(text);
  return S_OK;
}

bool IsDate(const TPropertyInfo& info) { return info.Type == VT_FILETIME; }
bool IsNumber(const TPropertyInfo& info) {
  switch (info.Type) {
    case VT_I4:
    case VT_UI1:
    case VT_UI2:
    case VT_UI4:
    case VT_UI8:
    case VT_R8:
      return true;
    default:
      return false;
  }
}
bool IsSize(const TPropertyInfo& info) {
  return info.Format == TPropertyFormat::Size || info.Format == TPropertyFormat::Bytes;
}
bool IsGroup(const TPropertyInfo& info) { return HasFlag(info.Flags, TPropertyFlags::Group); }

// The two ends of an order, by kind of property.
struct TSortLabels {
  PROPDESC_SORTDESCRIPTION Kind;
  const char16_t* Ascending;
  const char16_t* Descending;
};
TSortLabels SortLabelsOf(const TPropertyInfo& info) {
  if (IsDate(info)) return {PDSD_OLDEST_NEWEST, u"Oldest to newest", u"Newest to oldest"};
  if (IsSize(info)) return {PDSD_SMALLEST_BIGGEST, u"Smallest to largest", u"Largest to smallest"};
  if (IsNumber(info)) return {PDSD_LOWEST_HIGHEST, u"Lowest to highest", u"Highest to lowest"};
  if (info.Type == VT_BOOL) return {PDSD_GENERAL, u"Ascending", u"Descending"};
  return {PDSD_A_Z, u"A to Z", u"Z to A"};
}

/// One property. No state but the table's line; any thread.
class TPropertyDescription : public TInterfacedObject<IPropertyDescription2> {
 public:
  explicit TPropertyDescription(const TPropertyInfo& info) : fInfo(info) {}

  HRESULT GetPropertyKey(PROPERTYKEY* pkey) override { return Give(pkey, fInfo.Key); }
  HRESULT GetCanonicalName(LPWSTR* ppszName) override { return GiveName(ppszName, fInfo.Name); }
  HRESULT GetPropertyType(VARTYPE* pvartype) override { return Give(pvartype, fInfo.Type); }
  HRESULT GetDisplayName(LPWSTR* ppszName) override { return GiveName(ppszName, fInfo.Label); }
  HRESULT GetEditInvitation(LPWSTR* ppszInvite) override {
    return PortableCall("IPropertyDescription", [&] {
      const bool writable = HasFlag(fInfo.Flags, TPropertyFlags::Writable);
      return GiveName(ppszInvite, writable ? u"Add " + LowerCase(fInfo.Label) : u"Specify text");
    });
  }
  HRESULT GetTypeFlags(PROPDESC_TYPE_FLAGS mask, PROPDESC_TYPE_FLAGS* ppdtFlags) override {
    PROPDESC_TYPE_FLAGS flags = PDTF_ISSYSTEMPROPERTY;
    if (fInfo.Type & VT_VECTOR) flags |= PDTF_MULTIPLEVALUES;
    if (!HasFlag(fInfo.Flags, TPropertyFlags::Writable)) flags |= PDTF_ISINNATE;
    flags |= IsGroup(fInfo) ? PDTF_ISGROUP : PDTF_ISVIEWABLE | PDTF_ISQUERYABLE | PDTF_CANGROUPBY;
    return Give(ppdtFlags, flags & mask);
  }
  HRESULT GetViewFlags(PROPDESC_VIEW_FLAGS* ppdvFlags) override {
    PROPDESC_VIEW_FLAGS flags = PDVF_DEFAULT;
    if (IsRightAligned(fInfo)) flags |= PDVF_RIGHTALIGN;
    if (HasFlag(fInfo.Flags, TPropertyFlags::Column)) flags |= PDVF_SHOWBYDEFAULT;
    return Give(ppdvFlags, flags);
  }
  HRESULT GetDefaultColumnWidth(UINT* pcxChars) override { return Give(pcxChars, fInfo.Width); }
  HRESULT GetDisplayType(PROPDESC_DISPLAYTYPE* pdisplaytype) override {
    PROPDESC_DISPLAYTYPE type = PDDT_STRING;
    if (IsDate(fInfo)) type = PDDT_DATETIME;
    if (IsNumber(fInfo)) type = PDDT_NUMBER;
    if (fInfo.Type == VT_BOOL) type = PDDT_BOOLEAN;
    return Give(pdisplaytype, type);
  }
  HRESULT GetColumnState(SHCOLSTATEF* pcsFlags) override {
    return Give(pcsFlags, ColumnStateOf(fInfo));
  }
  HRESULT GetGroupingRange(PROPDESC_GROUPING_RANGE* pgr) override {
    PROPDESC_GROUPING_RANGE range = PDGR_ALPHANUMERIC;
    if (IsNumber(fInfo)) range = PDGR_DISCRETE;
    if (IsSize(fInfo)) range = PDGR_SIZE;
    if (IsDate(fInfo)) range = PDGR_DATE;
    return Give(pgr, range);
  }
  HRESULT GetRelativeDescriptionType(PROPDESC_RELATIVEDESCRIPTION_TYPE* prdt) override {
    PROPDESC_RELATIVEDESCRIPTION_TYPE type = PDRDT_GENERAL;
    if (IsSize(fInfo)) type = PDRDT_SIZE;
    if (IsDate(fInfo)) type = PDRDT_DATE;
    return Give(prdt, type);
  }
  HRESULT GetRelativeDescription(REFPROPVARIANT, REFPROPVARIANT, LPWSTR* ppszDesc1,
                                 LPWSTR* ppszDesc2) override {
    if (ppszDesc1) *ppszDesc1 = nullptr;
    if (ppszDesc2) *ppszDesc2 = nullptr;
    return E_NOTIMPL;
  }
  HRESULT GetSortDescription(PROPDESC_SORTDESCRIPTION* psd) override {
    return Give(psd, SortLabelsOf(fInfo).Kind);
  }
  HRESULT GetSortDescriptionLabel(BOOL fDescending, LPWSTR* ppszDescription) override {
    const TSortLabels labels = SortLabelsOf(fInfo);
    return GiveName(ppszDescription, fDescending ? labels.Descending : labels.Ascending);
  }
  HRESULT GetAggregationType(PROPDESC_AGGREGATION_TYPE* paggtype) override {
    PROPDESC_AGGREGATION_TYPE type = PDAT_DEFAULT;
    if (fInfo.Type & VT_VECTOR) type = PDAT_UNION;
    if (IsSize(fInfo)) type = PDAT_SUM;
    if (IsDate(fInfo)) type = PDAT_DATERANGE;
    return Give(paggtype, type);
  }
  HRESULT GetConditionType(PROPDESC_CONDITION_TYPE* pcontype,
                           CONDITION_OPERATION* popDefault) override {
    if (!pcontype || !popDefault) return E_POINTER;
    *pcontype = PDCOT_STRING;
    if (IsNumber(fInfo)) *pcontype = PDCOT_NUMBER;
    if (IsSize(fInfo)) *pcontype = PDCOT_SIZE;
    if (IsDate(fInfo)) *pcontype = PDCOT_DATETIME;
    if (fInfo.Type == VT_BOOL) *pcontype = PDCOT_BOOLEAN;
    *popDefault = *pcontype == PDCOT_STRING ? COP_WORD_STARTSWITH : COP_EQUAL;
    return S_OK;
  }
  HRESULT GetEnumTypeList(REFIID, void** ppv) override {
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    return E_NOINTERFACE;
  }
  HRESULT CoerceToCanonicalValue(PROPVARIANT* ppropvar) override {
    return PortableCall("IPropertyDescription::CoerceToCanonicalValue", [&]() -> HRESULT {
      if (!ppropvar) return E_POINTER;
      if (ppropvar->vt == VT_EMPTY || ppropvar->vt == fInfo.Type) return S_OK;
      TPropVariant changed;
      const HRESULT result = ChangeType(*ppropvar, fInfo.Type, *changed.Put());
      if (FAILED(result)) return result;
      PropVariantClear(ppropvar);
      *ppropvar = changed.Detach();
      return S_OK;
    });
  }
  HRESULT FormatForDisplay(REFPROPVARIANT propvar, PROPDESC_FORMAT_FLAGS pdfFlags,
                           LPWSTR* ppszDisplay) override {
    return PortableCall("IPropertyDescription::FormatForDisplay", [&]() -> HRESULT {
      if (!ppszDisplay) return E_POINTER;
      *ppszDisplay = nullptr;
      return GiveText(FormatProperty(fInfo, propvar, pdfFlags), ppszDisplay);
    });
  }
  HRESULT IsValueCanonical(REFPROPVARIANT propvar) override {
    return propvar.vt == VT_EMPTY || propvar.vt == fInfo.Type ? S_OK : S_FALSE;
  }
  HRESULT GetImageReferenceForValue(REFPROPVARIANT, LPWSTR* ppszImageRes) override {
    if (ppszImageRes) *ppszImageRes = nullptr;
    return E_NOTIMPL;
  }

 private:
  template <class T>
  HRESULT Give(T* out, const T& value) const {
    return PortableCall("IPropertyDescription", [&]() -> HRESULT {
      if (!out) return E_POINTER;
      *out = value;
      return S_OK;
    });
  }
  HRESULT GiveName(LPWSTR* out, TStringView text) const {
    return PortableCall("IPropertyDescription", [&]() -> HRESULT {
      if (!out) return E_POINTER;
      *out = nullptr;
      return GiveText(text, out);
    });
  }

  const TPropertyInfo& fInfo;
};

class TPropertyList : public TInterfacedObject<IPropertyDescriptionList> {
 public:
  explicit TPropertyList(std::vector<const TPropertyInfo*> items) : fItems(std::move(items)) {}
  HRESULT GetCount(UINT* pcElem) override {
    if (!pcElem) return E_POINTER;
    *pcElem = static_cast<UINT>(fItems.size());
    return S_OK;
  }
  HRESULT GetAt(UINT iElem, REFIID riid, void** ppv) override {
    return PortableCall("IPropertyDescriptionList::GetAt", [&]() -> HRESULT {
      if (!ppv) return E_POINTER;
      *ppv = nullptr;
      return iElem < fItems.size() ? MakePropertyDescription(fItems[iElem], riid, ppv)
                                   : E_INVALIDARG;
    });
  }

 private:
  const std::vector<const TPropertyInfo*> fItems;
};

bool Passes(PROPDESC_ENUMFILTER filter, const TPropertyInfo& info) {
  if (HasFlag(info.Flags, TPropertyFlags::Alias)) return false;
  switch (filter) {
    case PDEF_NONSYSTEM:
    case PDEF_INFULLTEXTQUERY:
      return false;
    case PDEF_VIEWABLE:
    case PDEF_QUERYABLE:
      return !IsGroup(info);
    case PDEF_COLUMN:
      return !IsGroup(info) && HasFlag(info.Flags, TPropertyFlags::File);
    default:
      return true;
  }
}

// "prop:System.Size;*System.Title": names with flags in front.
HRESULT ReadList(TStringView text, std::vector<const TPropertyInfo*>& items) {
  constexpr TStringView prefix = u"prop:";
  if (StartsText(prefix, text)) text.remove_prefix(prefix.size());
  for (TStringView part : Split(text, u';')) {
    const std::size_t start = part.find_first_not_of(u"*~&^|<0/ ");
    if (start == TStringView::npos) continue;
    const TPropertyInfo* info = FindPropertyByName(TrimRight(part.substr(start)));
    if (!info) return TYPE_E_ELEMENTNOTFOUND;
    items.push_back(info);
  }
  return S_OK;
}

class TPropertySystem : public TInterfacedObject<IPropertySystem> {
 public:
  HRESULT GetPropertyDescription(REFPROPERTYKEY propkey, REFIID riid, void** ppv) override {
    return PortableCall("IPropertySystem::GetPropertyDescription",
                        [&] { return MakePropertyDescription(FindProperty(propkey), riid, ppv); });
  }
  HRESULT GetPropertyDescriptionByName(LPCWSTR pszCanonicalName, REFIID riid, void** ppv) override {
    return PortableCall("IPropertySystem::GetPropertyDescriptionByName", [&]() -> HRESULT {
      if (!pszCanonicalName) return E_INVALIDARG;
      return MakePropertyDescription(FindPropertyByName(pszCanonicalName), riid, ppv);
    });
  }
  HRESULT GetPropertyDescriptionListFromString(LPCWSTR pszPropList, REFIID riid,
                                               void** ppv) override {
    return PortableCall("IPropertySystem::GetPropertyDescriptionListFromString", [&]() -> HRESULT {
      if (!pszPropList || !ppv) return E_INVALIDARG;
      *ppv = nullptr;
      std::vector<const TPropertyInfo*> items;
      const HRESULT result = ReadList(pszPropList, items);
      if (FAILED(result)) return result;
      return MakeRef<TPropertyList>(std::move(items))->QueryInterface(riid, ppv);
    });
  }
  HRESULT EnumeratePropertyDescriptions(PROPDESC_ENUMFILTER filterOn, REFIID riid,
                                        void** ppv) override {
    return PortableCall("IPropertySystem::EnumeratePropertyDescriptions", [&]() -> HRESULT {
      if (!ppv) return E_POINTER;
      *ppv = nullptr;
      if (filterOn < PDEF_ALL || filterOn > PDEF_COLUMN) return E_INVALIDARG;
      std::vector<const TPropertyInfo*> items;
      for (const TPropertyInfo& info : PropertyTable())
        if (Passes(filterOn, info)) items.push_back(&info);
      return MakeRef<TPropertyList>(std::move(items))->QueryInterface(riid, ppv);
    });
  }
  HRESULT FormatForDisplay(REFPROPERTYKEY key, REFPROPVARIANT propvar, PROPDESC_FORMAT_FLAGS pdff,
                           LPWSTR pszText, DWORD cchText) override {
    return PortableCall("IPropertySystem::FormatForDisplay", [&]() -> HRESULT {
      if (!pszText || cchText == 0) return E_INVALIDARG;
      pszText[0] = 0;
      const TPropertyInfo* info = FindProperty(key);
      if (!info) return TYPE_E_ELEMENTNOTFOUND;
      const TString text = FormatProperty(*info, propvar, pdff);
      if (text.size() >= cchText) return HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
      std::copy(text.begin(), text.end(), pszText);
      pszText[text.size()] = 0;
      return S_OK;
    });
  }
  HRESULT FormatForDisplayAlloc(REFPROPERTYKEY key, REFPROPVARIANT propvar,
                                PROPDESC_FORMAT_FLAGS pdff, LPWSTR* ppszDisplay) override {
    return PortableCall("IPropertySystem::FormatForDisplayAlloc", [&]() -> HRESULT {
      if (!ppszDisplay) return E_POINTER;
      *ppszDisplay = nullptr;
      const TPropertyInfo* info = FindProperty(key);
      if (!info) return TYPE_E_ELEMENTNOTFOUND;
      return GiveText(FormatProperty(*info, propvar, pdff), ppszDisplay);
    });
  }
  HRESULT RegisterPropertySchema(LPCWSTR) override { return E_ACCESSDENIED; }
  HRESULT UnregisterPropertySchema(LPCWSTR) override { return E_ACCESSDENIED; }
  HRESULT RefreshPropertySchema() override { return S_OK; }
};

}  // namespace

const TPropertyInfo* FindProperty(REFPROPERTYKEY key) noexcept {
  const auto found = PropertiesByKey().find(key);
  return found == PropertiesByKey().end() ? nullptr : found->second;
}

const TPropertyInfo* FindPropertyByName(TStringView name) {
  const auto found = PropertiesByName().find(UpperCase(name));
  return found == PropertiesByName().end() ? nullptr : found->second;
}

SHCOLSTATEF ColumnStateOf(const TPropertyInfo& info) noexcept {
  SHCOLSTATEF state = SHCOLSTATE_TYPE_STR;
  if (IsNumber(info)) state = SHCOLSTATE_TYPE_INT;
  if (IsDate(info)) state = SHCOLSTATE_TYPE_DATE;
  if (HasFlag(info.Flags, TPropertyFlags::Slow)) state |= SHCOLSTATE_SLOW;
  const bool shown = HasFlag(info.Flags, TPropertyFlags::Column);
  return state | (shown ? SHCOLSTATE_ONBYDEFAULT : SHCOLSTATE_SECONDARYUI);
}

// Attributes are a number and are shown as letters.
bool IsRightAligned(const TPropertyInfo& info) noexcept {
  return IsNumber(info) && info.Format != TPropertyFormat::Attributes;
}

HRESULT MakePropertyDescription(const TPropertyInfo* info, REFIID iid, void** description) {
  if (!description) return E_POINTER;
  *description = nullptr;
  if (!info) return TYPE_E_ELEMENTNOTFOUND;
  return MakeRef<TPropertyDescription>(*info)->QueryInterface(iid, description);
}

HRESULT GetPortablePropertySystem(REFIID iid, void** system) {
  if (!system) return E_POINTER;
  *system = nullptr;
  static TPropertySystem* const shared = new TPropertySystem;  // lives as long as the process
  return shared->QueryInterface(iid, system);
}

}  // namespace oak
