// Shell objects whose every answer the test chooses.
#pragma once

#include <cstring>
#include <map>

#include "oak/base/InterfacedObject.h"
#include "oak/base/Pidl.h"
#include "oak/base/Text.h"
#include "oak/platform/Api.h"

namespace oak::tests {

inline LPWSTR TaskText(TStringView text) {
  const std::size_t bytes = (text.size() + 1) * sizeof(WCHAR);
  auto* copy = static_cast<LPWSTR>(CoTaskMemAlloc(bytes));
  if (copy) std::memcpy(copy, TString(text).c_str(), bytes);
  return copy;
}

/// A list of elements of one byte each.
inline TPidl TestPidl(std::initializer_list<BYTE> elements) {
  auto* bytes = static_cast<BYTE*>(CoTaskMemAlloc(elements.size() * 3 + 2));
  BYTE* next = bytes;
  for (BYTE element : elements) {
    *next++ = 3;
    *next++ = 0;
    *next++ = element;
  }
  next[0] = next[1] = 0;
  return TPidl::Adopt(reinterpret_cast<PItemIdList>(bytes));
}

/// Names that are not set fail, as do all results that are not chosen.
class TFakeShellItem : public TInterfacedObject<IShellItem2> {
 public:
  std::map<SIGDN, TString> Names;
  SFGAOF Attributes = 0;
  HRESULT AttributesResult = S_OK;
  HRESULT BindResult = E_FAIL;
  Ref<IUnknown> Bound;
  HRESULT CompareResult = E_FAIL;
  int Order = 0;
  SICHINTF SeenHint = 0;
  HRESULT UpdateResult = E_FAIL;
  HRESULT StoreResult = E_FAIL;
  Ref<IUnknown> Store;
  std::map<DWORD, TString> Values;  ///< By property number.
  bool AnswersItem2 = true;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if (iid == IidOf<IShellItem2>() && !AnswersItem2) {
      *out = nullptr;
      return E_NOINTERFACE;
    }
    return TInterfacedObject::QueryInterface(iid, out);
  }

  HRESULT STDMETHODCALLTYPE BindToHandler(IBindCtx*, REFGUID, REFIID iid, void** out) override {
    *out = nullptr;
    return Bound && SUCCEEDED(BindResult) ? Bound->QueryInterface(iid, out) : BindResult;
  }
  HRESULT STDMETHODCALLTYPE GetParent(IShellItem**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetDisplayName(SIGDN form, LPWSTR* name) override {
    *name = nullptr;
    const auto found = Names.find(form);
    if (found == Names.end()) return E_FAIL;
    *name = TaskText(found->second);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetAttributes(SFGAOF mask, SFGAOF* attributes) override {
    *attributes = Attributes & mask;
    return AttributesResult;
  }
  HRESULT STDMETHODCALLTYPE Compare(IShellItem*, SICHINTF hint, int* order) override {
    SeenHint = hint;
    *order = Order;
    return CompareResult;
  }

  HRESULT STDMETHODCALLTYPE GetPropertyStore(GETPROPERTYSTOREFLAGS, REFIID, void**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetPropertyStoreWithCreateObject(GETPROPERTYSTOREFLAGS, IUnknown*,
                                                             REFIID, void**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetPropertyStoreForKeys(const PROPERTYKEY*, UINT, GETPROPERTYSTOREFLAGS,
                                                    REFIID iid, void** out) override {
    *out = nullptr;
    return Store ? Store->QueryInterface(iid, out) : StoreResult;
  }
  HRESULT STDMETHODCALLTYPE GetPropertyDescriptionList(REFPROPERTYKEY, REFIID, void**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Update(IBindCtx*) override { return UpdateResult; }
  HRESULT STDMETHODCALLTYPE GetProperty(REFPROPERTYKEY key, PROPVARIANT* value) override {
    *value = PROPVARIANT{};
    const auto found = Values.find(key.pid);
    if (found == Values.end()) return E_FAIL;
    value->vt = VT_LPWSTR;
    value->pwszVal = TaskText(found->second);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetCLSID(REFPROPERTYKEY, CLSID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetFileTime(REFPROPERTYKEY, FILETIME*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetInt32(REFPROPERTYKEY, int*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetString(REFPROPERTYKEY, LPWSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetUInt32(REFPROPERTYKEY, ULONG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetUInt64(REFPROPERTYKEY, ULONGLONG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetBool(REFPROPERTYKEY, BOOL*) override { return E_NOTIMPL; }
};

}  // namespace oak::tests
