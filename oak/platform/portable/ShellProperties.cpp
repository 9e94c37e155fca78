#include "oak/platform/portable/ShellProperties.h"

#include <algorithm>
#include <map>

#include "oak/base/Guid.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/ShellChanges.h"
#include "oak/platform/portable/ShellPidl.h"

namespace oak {

namespace {

bool SameKey(const PROPERTYKEY& a, const PROPERTYKEY& b) { return TPropertyKeyEqual{}(a, b); }

struct TKeyLess {
  bool operator()(const PROPERTYKEY& a, const PROPERTYKEY& b) const {
    const int order = CompareGuids(a.fmtid, b.fmtid);
    return order != 0 ? order < 0 : a.pid < b.pid;
  }
};

// Properties that are names of the object.
struct TNameProperty {
  const PROPERTYKEY& Key;
  TNameForm Form;
};
const TNameProperty kNames[] = {{PKEY_ItemNameDisplay, TNameForm::Display},
                                {PKEY_ItemName, TNameForm::Parsing},
                                {PKEY_FileName, TNameForm::Parsing},
                                {PKEY_ParsingName, TNameForm::Parsing},
                                {PKEY_ParsingPath, TNameForm::AbsoluteParsing},
                                {PKEY_ItemPathDisplay, TNameForm::AbsoluteEditing},
                                {PKEY_ItemPathDisplayNarrow, TNameForm::Display}};

// Properties that are names of the folder that the object lies in.
const TNameProperty kFolderNames[] = {{PKEY_ItemFolderNameDisplay, TNameForm::Display},
                                      {PKEY_ItemFolderPathDisplay, TNameForm::AbsoluteEditing},
                                      {PKEY_ItemFolderPathDisplayNarrow, TNameForm::Display}};

HRESULT PutText(HRESULT result, const TString& text, PROPVARIANT* value) {
  if (result != S_OK) return FAILED(result) ? result : PropertyNotFound;
  *value = TPropVariant::From(text).Detach();
  return S_OK;
}

HRESULT NameProperty(const TFolderNode& node, PCUITEMID_CHILD child, REFPROPERTYKEY key,
                     PROPVARIANT* value) {
  TString text;
  for (const TNameProperty& name : kNames)
    if (SameKey(name.Key, key)) {
      const HRESULT result = node.GetName(child, name.Form, text);
      return PutText(result, text, value);
    }
  for (const TNameProperty& name : kFolderNames)
    if (SameKey(name.Key, key)) {
      const HRESULT result = node.GetFolderName(name.Form, text);
      return PutText(result, text, value);
    }
  if (SameKey(key, PKEY_ItemUrl)) {
    const HRESULT result = node.GetName(child, TNameForm::FileSystemPath, text);
    return result == S_OK ? PutText(S_OK, UrlFromPath(text), value) : PropertyNotFound;
  }
  return PropertyNotFound;
}

HRESULT KindProperty(const TFolderNode& node, PCUITEMID_CHILD child, REFPROPERTYKEY key,
                     PROPVARIANT* value) {
  TString text;
  if (SameKey(key, PKEY_ItemTypeText)) {
    const HRESULT result = node.GetTypeName(child, text);
    return PutText(result, text, value);
  }
  const bool all = SameKey(key, PKEY_SFGAOFlags);
  const bool folder = SameKey(key, PKEY_IsFolder);
  if (!all && !folder) return PropertyNotFound;
  // Those bits that cost nothing: the published mask of this property.
  const DWORD mask = ~(SFGAO_PKEYSFGAOMASK | SFGAO_HASSUBFOLDER | SFGAO_VALIDATE);
  DWORD attributes = 0;
  const HRESULT result = node.GetAttributes(child, all ? mask : SFGAO_FOLDER, attributes);
  if (FAILED(result)) return result;
  *value = all ? TPropVariant::From(attributes & mask).Detach()
               : TPropVariant::From((attributes & SFGAO_FOLDER) != 0).Detach();
  return S_OK;
}

class TItemPropertyStore : public TInterfacedObject<IPropertyStore, IPropertyStoreCapabilities> {
 public:
  TItemPropertyStore(Ref<TFolderNode> node, PCUITEMID_CHILD child, std::vector<PROPERTYKEY> keys,
                     bool writable)
      : fNode(std::move(node)),
        fChild(CopyElement(child)),
        fKeys(std::move(keys)),
        fWritable(writable) {}

  HRESULT GetCount(DWORD* cProps) override {
    return PortableCall("IPropertyStore::GetCount", [&] {
      if (!cProps) return E_POINTER;
      *cProps = static_cast<DWORD>(fKeys.size());
      return S_OK;
    });
  }
  HRESULT GetAt(DWORD iProp, PROPERTYKEY* pkey) override {
    return PortableCall("IPropertyStore::GetAt", [&] {
      if (!pkey) return E_POINTER;
      if (iProp >= fKeys.size()) return E_INVALIDARG;
      *pkey = fKeys[iProp];
      return S_OK;
    });
  }
  HRESULT GetValue(REFPROPERTYKEY key, PROPVARIANT* pv) override {
    return PortableCall("IPropertyStore::GetValue", [&] {
      if (!pv) return E_POINTER;
      PropVariantInit(pv);
      const auto changed = fChanged.find(key);
      if (changed != fChanged.end()) return PropVariantCopy(pv, &changed->second.Get());
      const HRESULT result = fNode->GetProperty(fChild.Get(), key, pv);
      return result == PropertyNotFound ? S_OK : result;  // a missing value is the empty one
    });
  }
  HRESULT SetValue(REFPROPERTYKEY key, REFPROPVARIANT propvar) override {
    return PortableCall("IPropertyStore::SetValue", [&] {
      if (!fWritable) return STG_E_ACCESSDENIED;
      fChanged.insert_or_assign(key, TPropVariant::Copy(propvar));
      return S_OK;
    });
  }
  HRESULT Commit() override {
    return PortableCall("IPropertyStore::Commit", [&] {
      if (!fWritable) return STG_E_ACCESSDENIED;
      const bool any = !fChanged.empty();
      const bool attributes = fChanged.size() == 1 && fChanged.count(PKEY_FileAttributes);
      while (!fChanged.empty()) {
        const auto change = fChanged.begin();
        const HRESULT result =
            fNode->SourceOf(fChild.Get()).SetProperty(fChild.Get(), change->first, change->second);
        if (FAILED(result)) return result;
        fChanged.erase(change);
      }
      if (any)
        AnnounceChange(attributes ? SHCNE_ATTRIBUTES : SHCNE_UPDATEITEM,
                       fNode->PidlOf(fChild.Get()).Get());
      return S_OK;
    });
  }
  HRESULT IsPropertyWritable(REFPROPERTYKEY) override { return fWritable ? S_OK : S_FALSE; }

 private:
  const Ref<TFolderNode> fNode;
  const TPidl fChild;
  const std::vector<PROPERTYKEY> fKeys;
  const bool fWritable;
  std::map<PROPERTYKEY, TPropVariant, TKeyLess> fChanged;
};

std::vector<PROPERTYKEY> AllKeys(const TFolderNode& node, PCUITEMID_CHILD child) {
  std::vector<PROPERTYKEY> keys = node.SourceOf(child).GetPropertyKeys(child);
  const auto add = [&](const PROPERTYKEY& key) {
    const auto same = [&](const PROPERTYKEY& other) { return SameKey(other, key); };
    if (std::none_of(keys.begin(), keys.end(), same)) keys.push_back(key);
  };
  for (const TNameProperty& name : kNames) add(name.Key);
  for (const TNameProperty& name : kFolderNames) add(name.Key);
  for (const PROPERTYKEY& key : {PKEY_ItemTypeText, PKEY_SFGAOFlags, PKEY_IsFolder}) add(key);
  return keys;
}

}  // namespace

HRESULT TFolderNode::GetProperty(PCUITEMID_CHILD child, REFPROPERTYKEY key,
                                 PROPVARIANT* value) const {
  if (!ElementKind(child)) return E_INVALIDARG;
  HRESULT result = SourceOf(child).GetProperty(child, key, value);
  if (result == PropertyNotFound) result = NameProperty(*this, child, key, value);
  if (result == PropertyNotFound) result = KindProperty(*this, child, key, value);
  return result;
}

FILETIME TimeProperty(const TFolderNode& node, PCUITEMID_CHILD child, REFPROPERTYKEY key) {
  TPropVariant value;
  FILETIME time{};
  if (SUCCEEDED(node.GetProperty(child, key, value.Put()))) (void)TryGetFileTime(value, time);
  return time;
}

HRESULT MakePropertyStore(const Ref<TFolderNode>& node, PCUITEMID_CHILD child,
                          std::span<const PROPERTYKEY> keys, bool writable, REFIID iid,
                          void** store) {
  *store = nullptr;
  if (!ElementKind(child)) return E_INVALIDARG;
  std::vector<PROPERTYKEY> names(keys.begin(), keys.end());
  if (names.empty()) names = AllKeys(*node, child);
  const auto made = MakeRef<TItemPropertyStore>(node, child, std::move(names), writable);
  return made->QueryInterface(iid, store);
}

}  // namespace oak
