#include "tests/platform/portable/ShellMemoryFolder.h"

#include <algorithm>

#include "oak/base/Variant.h"

namespace oak {

namespace {

constexpr BYTE kKind = ekFirstFree;
constexpr BYTE kVersion = 3;
constexpr HRESULT kLost = HRESULT_FROM_WIN32(2);

using TChildren = std::shared_ptr<std::vector<TMemoryObject>>;

bool IsKey(REFPROPERTYKEY a, REFPROPERTYKEY b) { return a.pid == b.pid && a.fmtid == b.fmtid; }

TPidl ElementOf(const TMemoryObject& object) {
  return MakeNameElement(kKind, kVersion, object.Children ? 1 : 0, object.Name);
}

// Reads one object at a time, so that a test sees how far a listing got.
class TMemoryCursor : public TInterfacedObject<IFolderCursor> {
 public:
  TMemoryCursor(std::shared_ptr<TMemoryTree> tree, TChildren children, DWORD flags)
      : fTree(std::move(tree)), fChildren(std::move(children)), fFlags(flags) {}
  HRESULT Next(PCUITEMID_CHILD* element) override {
    const std::lock_guard lock(fTree->Lock);
    for (; fNext < fChildren->size(); ++fNext) {
      const TMemoryObject& object = (*fChildren)[fNext];
      if (!PassesEnumeration(fFlags, object.Attributes | (object.Children ? SFGAO_FOLDER : 0)))
        continue;
      if (FAILED(fTree->Failure) && fTree->Listed > 0) return fTree->Failure;
      ++fNext;
      ++fTree->Listed;
      fElement = ElementOf(object);
      *element = fElement.Get();
      return S_OK;
    }
    return S_FALSE;
  }

 private:
  const std::shared_ptr<TMemoryTree> fTree;
  const TChildren fChildren;
  const DWORD fFlags;
  std::size_t fNext = 0;
  TPidl fElement;
};

class TMemoryFolder : public TFolderSource {
 public:
  TMemoryFolder(std::shared_ptr<TMemoryTree> tree, TChildren children)
      : fTree(std::move(tree)), fChildren(std::move(children)) {}

  HRESULT Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) override {
    cursor = MakeRef<TMemoryCursor>(fTree, fChildren, flags);
    return S_OK;
  }
  HRESULT GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) override {
    DWORD flags = 0;
    if (!ReadNameElement(element, kKind, kVersion, flags, name)) return E_INVALIDARG;
    return form >= TNameForm::AbsoluteParsing ? S_FALSE : S_OK;
  }
  HRESULT GetAttributes(PCUITEMID_CHILD element, DWORD mask, DWORD& attributes) override {
    DWORD flags = 0;
    TString name;
    if (!ReadNameElement(element, kKind, kVersion, flags, name)) return E_INVALIDARG;
    attributes = flags & 1 ? SFGAO_FOLDER | SFGAO_FILESYSANCESTOR : DWORD{SFGAO_STREAM};
    const std::lock_guard lock(fTree->Lock);
    const TMemoryObject* object = Find(name);
    if (!object && (mask & SFGAO_VALIDATE)) return kLost;
    if (object) attributes |= object->Attributes;
    if (object && object->Children && !object->Children->empty()) attributes |= SFGAO_HASSUBFOLDER;
    return S_OK;
  }
  HRESULT Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) override {
    const std::lock_guard lock(fTree->Lock);
    const TMemoryObject* object = Find(element);
    if (!object) return kLost;
    if (!object->Children) return E_NOTIMPL;
    child = MakeRef<TMemoryFolder>(fTree, object->Children);
    return S_OK;
  }
  HRESULT Create(TStringView name, bool folder, bool replace, TPidl& element) override {
    const std::lock_guard lock(fTree->Lock);
    if (TMemoryObject* present = Find(name)) {
      if (!replace) return STG_E_FILEALREADYEXISTS;
      present->Size = 0;
      element = ElementOf(*present);
      return S_OK;
    }
    fChildren->push_back(folder ? MemoryFolder(name) : MemoryFile(name));
    element = ElementOf(fChildren->back());
    return S_OK;
  }
  HRESULT Rename(PCUITEMID_CHILD element, TStringView name, TNameForm, TPidl& renamed) override {
    const std::lock_guard lock(fTree->Lock);
    TMemoryObject* object = Find(element);
    if (!object) return kLost;
    const TMemoryObject* other = Find(name);
    if (other && other != object) return STG_E_FILEALREADYEXISTS;
    object->Name = name;
    renamed = ElementOf(*object);
    return S_OK;
  }
  HRESULT Destroy(PCUITEMID_CHILD element) override {
    const std::lock_guard lock(fTree->Lock);
    const TMemoryObject* object = Find(element);
    if (!object) return kLost;
    fChildren->erase(fChildren->begin() + (object - fChildren->data()));
    return S_OK;
  }
  HRESULT GetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key, PROPVARIANT* value) override {
    const std::lock_guard lock(fTree->Lock);
    const TMemoryObject* object = Find(element);
    if (!object) return kLost;
    if (IsKey(key, PKEY_Size))
      *value = TPropVariant::From(object->Size).Detach();
    else if (IsKey(key, PKEY_Comment))
      *value = TPropVariant::From(object->Comment).Detach();
    else
      return HRESULT_FROM_WIN32(1168);
    return S_OK;
  }
  HRESULT SetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key, REFPROPVARIANT value) override {
    const std::lock_guard lock(fTree->Lock);
    TMemoryObject* object = Find(element);
    if (!object) return kLost;
    return IsKey(key, PKEY_Comment) && TryGetText(value, object->Comment) ? S_OK : E_INVALIDARG;
  }
  HRESULT GetUIObject(std::span<const PCUITEMID_CHILD>, REFIID iid, void** object) override {
    const std::lock_guard lock(fTree->Lock);
    fTree->Asked.push_back(iid);
    *object = nullptr;
    return E_NOINTERFACE;
  }
  HRESULT GetOverlayIndex(PCUITEMID_CHILD element, int& index) override {
    const std::lock_guard lock(fTree->Lock);
    const TMemoryObject* object = Find(element);
    if (!object || !(object->Attributes & SFGAO_LINK)) return S_FALSE;
    index = 1;
    return S_OK;
  }
  std::span<const TFolderColumn> GetColumns() override {
    static const TFolderColumn kColumns[] = {
        {PKEY_ItemNameDisplay, u"Name", 30},
        {PKEY_Size, u"Size", 10, LVCFMT_RIGHT, SHCOLSTATE_TYPE_INT | SHCOLSTATE_ONBYDEFAULT}};
    return kColumns;
  }

 private:
  TMemoryObject* Find(TStringView name) {
    const auto hit =
        std::find_if(fChildren->begin(), fChildren->end(),
                     [&](const TMemoryObject& object) { return SameText(object.Name, name); });
    return hit == fChildren->end() ? nullptr : &*hit;
  }
  TMemoryObject* Find(PCUITEMID_CHILD element) {
    DWORD flags = 0;
    TString name;
    return ReadNameElement(element, kKind, kVersion, flags, name) ? Find(name) : nullptr;
  }

  const std::shared_ptr<TMemoryTree> fTree;
  const TChildren fChildren;
};

}  // namespace

TMemoryObject MemoryFile(TStringView name, std::uint64_t size, DWORD attributes) {
  return {TString(name), attributes, size, {}, nullptr};
}

TMemoryObject MemoryFolder(TStringView name, std::vector<TMemoryObject> children,
                           DWORD attributes) {
  return {TString(name),
          attributes,
          0,
          {},
          std::make_shared<std::vector<TMemoryObject>>(std::move(children))};
}

Ref<IFolderSource> MakeMemoryFolder(std::shared_ptr<TMemoryTree> tree,
                                    const TMemoryObject& folder) {
  return MakeRef<TMemoryFolder>(std::move(tree), folder.Children);
}

}  // namespace oak
