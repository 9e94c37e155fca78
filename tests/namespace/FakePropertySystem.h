// A property system of a few scripted properties.
#pragma once

#include <vector>

#include "oak/base/InterfacedObject.h"
#include "oak/base/Text.h"
#include "oak/platform/Api.h"
#include "testkit/ScopedApi.h"

namespace oak::test {

/// A copy in task memory.
inline LPWSTR TaskText(TStringView text) {
  auto* memory = static_cast<char16_t*>(CoTaskMemAlloc((text.size() + 1) * sizeof(char16_t)));
  text.copy(memory, text.size());
  memory[text.size()] = 0;
  return reinterpret_cast<LPWSTR>(memory);
}

/// A property with a key and a label; nothing else is known of it.
class TFakeDescription final : public TInterfacedObject<IPropertyDescription> {
 public:
  TFakeDescription(PROPERTYKEY key, TString label) : fKey(key), fLabel(std::move(label)) {}
  const PROPERTYKEY& Key() const { return fKey; }

  HRESULT STDMETHODCALLTYPE GetPropertyKey(PROPERTYKEY* key) override {
    *key = fKey;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetDisplayName(LPWSTR* name) override {
    if (fLabel.empty()) return E_FAIL;
    *name = TaskText(fLabel);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetDisplayType(PROPDESC_DISPLAYTYPE* type) override {
    *type = PDDT_DATETIME;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetCanonicalName(LPWSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetPropertyType(VARTYPE*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetEditInvitation(LPWSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeFlags(PROPDESC_TYPE_FLAGS, PROPDESC_TYPE_FLAGS*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetViewFlags(PROPDESC_VIEW_FLAGS*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetDefaultColumnWidth(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetColumnState(SHCOLSTATEF*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetGroupingRange(PROPDESC_GROUPING_RANGE*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE
  GetRelativeDescriptionType(PROPDESC_RELATIVEDESCRIPTION_TYPE*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetRelativeDescription(REFPROPVARIANT, REFPROPVARIANT, LPWSTR*,
                                                   LPWSTR*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetSortDescription(PROPDESC_SORTDESCRIPTION*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetSortDescriptionLabel(BOOL, LPWSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetAggregationType(PROPDESC_AGGREGATION_TYPE*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetConditionType(PROPDESC_CONDITION_TYPE*,
                                             CONDITION_OPERATION*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetEnumTypeList(REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CoerceToCanonicalValue(PROPVARIANT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE FormatForDisplay(REFPROPVARIANT, PROPDESC_FORMAT_FLAGS,
                                             LPWSTR*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE IsValueCanonical(REFPROPVARIANT) override { return E_NOTIMPL; }

 private:
  PROPERTYKEY fKey;
  TString fLabel;
};

/// The system and its list in one object. Formats every value as FormattedText
/// and remembers how it was asked.
class TFakePropertySystem final
    : public TInterfacedObject<IPropertySystem, IPropertyDescriptionList> {
 public:
  std::vector<Ref<TFakeDescription>> Descriptions;
  int Enumerations = 0;
  TString FormattedText;
  PROPERTYKEY FormattedKey{};
  int FormatFlags = -1;

  void Add(PROPERTYKEY key, TString label) {
    Descriptions.push_back(MakeRef<TFakeDescription>(key, std::move(label)));
  }

  HRESULT STDMETHODCALLTYPE GetPropertyDescription(REFPROPERTYKEY key, REFIID iid,
                                                   void** out) override {
    for (const auto& description : Descriptions)
      if (description->Key().pid == key.pid && IsEqualGUID(description->Key().fmtid, key.fmtid))
        return description->QueryInterface(iid, out);
    return TYPE_E_ELEMENTNOTFOUND;
  }
  HRESULT STDMETHODCALLTYPE EnumeratePropertyDescriptions(PROPDESC_ENUMFILTER, REFIID iid,
                                                          void** out) override {
    ++Enumerations;
    return QueryInterface(iid, out);
  }
  HRESULT STDMETHODCALLTYPE FormatForDisplayAlloc(REFPROPERTYKEY key, REFPROPVARIANT,
                                                  PROPDESC_FORMAT_FLAGS flags,
                                                  LPWSTR* text) override {
    FormattedKey = key;
    FormatFlags = static_cast<int>(flags);
    if (FormattedText.empty()) return E_FAIL;
    *text = TaskText(FormattedText);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetCount(UINT* count) override {
    *count = static_cast<UINT>(Descriptions.size());
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetAt(UINT index, REFIID iid, void** out) override {
    return index < Descriptions.size() ? Descriptions[index]->QueryInterface(iid, out)
                                       : E_INVALIDARG;
  }
  HRESULT STDMETHODCALLTYPE GetPropertyDescriptionByName(LPCWSTR, REFIID, void**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetPropertyDescriptionListFromString(LPCWSTR, REFIID, void**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE FormatForDisplay(REFPROPERTYKEY, REFPROPVARIANT, PROPDESC_FORMAT_FLAGS,
                                             LPWSTR, DWORD) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE RegisterPropertySchema(LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE UnregisterPropertySchema(LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE RefreshPropertySchema() override { return E_NOTIMPL; }
};

/// The fake in place of the system's, which knows no canonical names then.
class TScopedPropertySystem {
 public:
  Ref<TFakePropertySystem> System = MakeRef<TFakePropertySystem>();

 private:
  testkit::TScopedApi<decltype(TApi::PSGetPropertySystem)> fSystem{
      Api().PSGetPropertySystem,
      [this](REFIID iid, void** out) { return System->QueryInterface(iid, out); }};
  testkit::TScopedApi<decltype(TApi::PSGetPropertyDescription)> fDescription{
      Api().PSGetPropertyDescription, [this](REFPROPERTYKEY key, REFIID iid, void** out) {
        return System->GetPropertyDescription(key, iid, out);
      }};
  testkit::TScopedApi<decltype(TApi::PSGetPropertyKeyFromName)> fKeys{
      Api().PSGetPropertyKeyFromName, [](LPCWSTR, PROPERTYKEY*) { return TYPE_E_ELEMENTNOTFOUND; }};
};

}  // namespace oak::test
