// A property system whose answers the test chooses.
#pragma once

#include "testkit/ScopedApi.h"
#include "tests/namespace/FakeShellItem.h"

namespace oak::test {

/// Describes nothing, formats every value as FormattedText and remembers how it was asked.
class TFakePropertySystem final : public TInterfacedObject<IPropertySystem> {
 public:
  TString FormattedText;
  PROPERTYKEY FormattedKey{};
  int FormatFlags = -1;

  HRESULT STDMETHODCALLTYPE GetPropertyDescription(REFPROPERTYKEY, REFIID, void**) override {
    return TYPE_E_ELEMENTNOTFOUND;
  }
  HRESULT STDMETHODCALLTYPE EnumeratePropertyDescriptions(PROPDESC_ENUMFILTER, REFIID,
                                                          void**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE FormatForDisplayAlloc(REFPROPERTYKEY key, REFPROPVARIANT,
                                                  PROPDESC_FORMAT_FLAGS flags,
                                                  LPWSTR* text) override {
    FormattedKey = key;
    FormatFlags = static_cast<int>(flags);
    if (FormattedText.empty()) return E_FAIL;
    *text = tests::TaskText(FormattedText);
    return S_OK;
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
