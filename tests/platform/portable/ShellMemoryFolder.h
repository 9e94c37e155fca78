// A folder in memory with columns and properties, as a user of the mount interface would write it.
#pragma once

#include <map>
#include <vector>

#include "oak/base/Variant.h"
#include "testkit/portable/ScriptedFolder.h"

namespace oak {

/// Names and contents are those of a scripted folder, whose own folders are plain. Any thread
/// lists; properties and handlers are for the test's own.
class TMemoryFolder final : public TFolderSource {
 public:
  TMemoryFolder(Ref<testkit::TScriptedFolder> objects, std::map<TString, std::uint64_t> sizes)
      : fObjects(std::move(objects)), fSizes(std::move(sizes)) {}

  std::vector<GUID> Asked;  ///< handlers that were asked for

  HRESULT Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) override {
    return fObjects->Enumerate(flags, cursor);
  }
  HRESULT GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) override {
    return fObjects->GetName(element, form, name);
  }
  HRESULT GetAttributes(PCUITEMID_CHILD element, DWORD mask, DWORD& attributes) override {
    return fObjects->GetAttributes(element, mask, attributes);
  }
  HRESULT Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) override {
    return fObjects->Open(element, child);
  }
  HRESULT Create(TStringView name, bool folder, bool replace, TPidl& element) override {
    return fObjects->Create(name, folder, replace, element);
  }
  HRESULT Rename(PCUITEMID_CHILD element, TStringView name, TNameForm form,
                 TPidl& renamed) override {
    return fObjects->Rename(element, name, form, renamed);
  }
  HRESULT Destroy(PCUITEMID_CHILD element) override { return fObjects->Destroy(element); }
  HRESULT GetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key, PROPVARIANT* value) override {
    if (IsKey(key, PKEY_Size))
      *value = TPropVariant::From(fSizes[KeyOf(element)]).Detach();
    else
      return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
    return S_OK;
  }
  HRESULT GetUIObject(std::span<const PCUITEMID_CHILD>, REFIID iid, void** object) override {
    Asked.push_back(iid);
    *object = nullptr;
    return E_NOINTERFACE;
  }
  std::span<const TFolderColumn> GetColumns() override {
    static const TFolderColumn columns[] = {
        {PKEY_ItemNameDisplay, u"Name", 30},
        {PKEY_Size, u"Size", 10, LVCFMT_RIGHT, SHCOLSTATE_TYPE_INT | SHCOLSTATE_ONBYDEFAULT}};
    return columns;
  }

 private:
  static bool IsKey(REFPROPERTYKEY a, REFPROPERTYKEY b) {
    return a.pid == b.pid && a.fmtid == b.fmtid;
  }
  TString KeyOf(PCUITEMID_CHILD element) const {
    TString name;
    fObjects->GetName(element, TNameForm::Parsing, name);
    return UpperCase(name);
  }

  const Ref<testkit::TScriptedFolder> fObjects;
  std::map<TString, std::uint64_t> fSizes;
};

}  // namespace oak
