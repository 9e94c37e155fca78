#include "oak/platform/portable/ShellItem.h"

#include <mutex>

#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/ShellFolder.h"
#include "oak/platform/portable/ShellMenu.h"
#include "oak/platform/portable/ShellPidl.h"
#include "oak/platform/portable/ShellProperties.h"

namespace oak {

namespace {

// The child name form behind a SIGDN_; false for an unknown one.
bool FormOf(SIGDN form, TNameForm& name) {
  switch (static_cast<DWORD>(form)) {
    case static_cast<DWORD>(SIGDN_NORMALDISPLAY):
      name = TNameForm::Normal;
      return true;
    case static_cast<DWORD>(SIGDN_PARENTRELATIVEPARSING):
      name = TNameForm::Parsing;
      return true;
    case static_cast<DWORD>(SIGDN_DESKTOPABSOLUTEPARSING):
      name = TNameForm::AbsoluteParsing;
      return true;
    case static_cast<DWORD>(SIGDN_PARENTRELATIVEEDITING):
      name = TNameForm::Editing;
      return true;
    case static_cast<DWORD>(SIGDN_DESKTOPABSOLUTEEDITING):
      name = TNameForm::AbsoluteEditing;
      return true;
    case static_cast<DWORD>(SIGDN_URL):
    case static_cast<DWORD>(SIGDN_FILESYSPATH):
      name = TNameForm::FileSystemPath;
      return true;
    case static_cast<DWORD>(SIGDN_PARENTRELATIVEFORADDRESSBAR):
      name = TNameForm::AddressBar;
      return true;
    case static_cast<DWORD>(SIGDN_PARENTRELATIVE):
    case static_cast<DWORD>(SIGDN_PARENTRELATIVEFORUI):
      name = TNameForm::Display;
      return true;
    default:
      return false;
  }
}

// Places of two items compared from the desktop on.
HRESULT CompareItems(IItemAccess& a, IItemAccess& b, LPARAM what, int& order) {
  const Ref<TFolderNode>&folderA = a.Folder(), &folderB = b.Folder();
  if (!folderA || !folderB) {
    order = static_cast<int>(folderA.Get() != nullptr) - static_cast<int>(folderB.Get() != nullptr);
    return S_OK;
  }
  const bool sameFolder = folderA == folderB || (folderA->PidlBytes() == folderB->PidlBytes() &&
                                                 std::memcmp(folderA->Pidl(), folderB->Pidl(),
                                                             folderA->PidlBytes()) == 0);
  if (sameFolder) return folderA->Compare(what, a.Child(), b.Child(), order);
  const TPidl listA = folderA->PidlOf(a.Child()), listB = folderB->PidlOf(b.Child());
  return TFolderNode::Desktop()->CompareLists(what, listA.Get(), listB.Get(), order);
}

bool SameFileSystemPath(IItemAccess& a, IItemAccess& b) {
  TString pathA, pathB;
  return NameOfChild(a.Folder().Get(), a.Child(), SIGDN_FILESYSPATH, pathA) == S_OK &&
         NameOfChild(b.Folder().Get(), b.Child(), SIGDN_FILESYSPATH, pathB) == S_OK &&
         SameText(ExcludeTrailingPathDelimiter(pathA), ExcludeTrailingPathDelimiter(pathB));
}

}  // namespace

TShellItem::TShellItem(Ref<TFolderNode> folder, TPidl child)
    : fFolder(std::move(folder)), fChild(child.Get()), fOwned(std::move(child)) {}

TShellItem::~TShellItem() {
  while (fFormer) fFormer = std::move(fFormer->Next);  // one by one, however many
}

HRESULT MakeItem(const Ref<TFolderNode>& folder, PCUITEMID_CHILD child, REFIID iid, void** item) {
  *item = nullptr;
  if (!ElementKind(child)) return E_INVALIDARG;
  auto made = MakeRef<TShellItem>(folder, CopyElement(child));
  if (iid == IID_IShellItem || iid == IID_IShellItem2) {
    *item = static_cast<IShellItem2*>(made.Detach());
    return S_OK;
  }
  return made->QueryInterface(iid, item);
}

HRESULT MakeItemOfList(const Ref<TFolderNode>& folder, PCUIDLIST_RELATIVE list, REFIID iid,
                       void** item) {
  *item = nullptr;
  if (list && IsEmptyPidl(list)) {
    if (folder->IsDesktop()) return MakeRef<TShellItem>()->QueryInterface(iid, item);
    return MakeItem(Ref<TFolderNode>::Share(folder->Parent()), folder->Element(), iid, item);
  }
  Ref<TFolderNode> parent;
  PCUITEMID_CHILD child = nullptr;
  const HRESULT result = BindParent(folder, list, parent, child);
  return SUCCEEDED(result) ? MakeItem(parent, child, iid, item) : result;
}

HRESULT NameOfChild(const TFolderNode* folder, PCUITEMID_CHILD child, SIGDN form, TString& name) {
  TNameForm nameForm;
  if (!FormOf(form, nameForm)) return E_INVALIDARG;
  const HRESULT result = folder ? folder->GetName(child, nameForm, name)
                                : TFolderNode::Desktop()->GetFolderName(nameForm, name);
  if (SUCCEEDED(result) && form == SIGDN_URL) name = UrlFromPath(name);
  return result;
}

HRESULT ListOfObject(IUnknown* object, TPidl& pidl) {
  if (!object) return E_INVALIDARG;
  const auto shared = Ref<IUnknown>::Share(object);
  if (const auto list = shared.As<IPersistIDList>()) return list->GetIDList(pidl.Put());
  if (const auto folder = shared.As<IPersistFolder2>()) return folder->GetCurFolder(pidl.Put());
  if (const auto array = shared.As<IShellItemArray>()) {
    DWORD count = 0;
    Ref<IShellItem> item;
    HRESULT result = array->GetCount(&count);
    if (SUCCEEDED(result) && count != 1) return E_NOINTERFACE;
    if (SUCCEEDED(result)) result = array->GetItemAt(0, item.Put());
    return SUCCEEDED(result) ? ListOfObject(item.Get(), pidl) : result;
  }
  return E_NOINTERFACE;
}

// --- names, attributes, order -----------------------------------------------------

HRESULT TShellItem::GetDisplayName(SIGDN sigdnName, LPWSTR* ppszName) {
  return PortableCall("IShellItem::GetDisplayName", [&]() -> HRESULT {
    if (!ppszName) return E_POINTER;
    *ppszName = nullptr;
    TString name;
    const HRESULT result = NameOfChild(fFolder.Get(), Child(), sigdnName, name);
    if (SUCCEEDED(result)) *ppszName = TaskText(name);
    return result;
  });
}

HRESULT TShellItem::GetAttributes(SFGAOF sfgaoMask, SFGAOF* psfgaoAttribs) {
  return PortableCall("IShellItem::GetAttributes", [&]() -> HRESULT {
    if (!psfgaoAttribs) return E_POINTER;
    *psfgaoAttribs = 0;
    DWORD attributes = 0;
    const HRESULT result = IsDesktop()
                               ? TFolderNode::Desktop()->GetFolderAttributes(sfgaoMask, attributes)
                               : fFolder->GetAttributes(Child(), sfgaoMask, attributes);
    if (FAILED(result)) return result;
    *psfgaoAttribs = attributes & sfgaoMask;
    return *psfgaoAttribs == sfgaoMask ? S_OK : S_FALSE;
  });
}

HRESULT TShellItem::Compare(IShellItem* psi, SICHINTF hint, int* piOrder) {
  return PortableCall("IShellItem::Compare", [&]() -> HRESULT {
    if (!piOrder) return E_POINTER;
    *piOrder = 0;
    if (!psi) return E_INVALIDARG;
    Ref<IItemAccess> other = Ref<IShellItem>::Share(psi).As<IItemAccess>();
    if (!other) {  // an item of somebody else: by its list
      TPidl list;
      HRESULT result = ListOfObject(psi, list);
      if (SUCCEEDED(result))
        result =
            MakeItemOfList(TFolderNode::Desktop(), list.Get(), IItemAccess::Iid, other.PutVoid());
      if (FAILED(result)) return result;
    }
    constexpr DWORD kKnown = SICHINT_CANONICAL | SICHINT_ALLFIELDS;
    const HRESULT result =
        CompareItems(*this, *other, static_cast<LPARAM>(hint & kKnown), *piOrder);
    if (FAILED(result)) return result;
    *piOrder = (*piOrder > 0) - (*piOrder < 0);
    if (*piOrder != 0 && (hint & SICHINT_TEST_FILESYSPATH_IF_NOT_EQUAL) &&
        SameFileSystemPath(*this, *other))
      *piOrder = 0;
    return *piOrder == 0 ? S_OK : S_FALSE;
  });
}

HRESULT TShellItem::GetParent(IShellItem** ppsi) {
  return PortableCall("IShellItem::GetParent", [&]() -> HRESULT {
    if (!ppsi) return E_POINTER;
    *ppsi = nullptr;
    if (IsDesktop()) return E_INVALIDARG;
    void** item = reinterpret_cast<void**>(ppsi);
    if (fFolder->IsDesktop()) return MakeRef<TShellItem>()->QueryInterface(IID_IShellItem, item);
    return MakeItem(Ref<TFolderNode>::Share(fFolder->Parent()), fFolder->Element(), IID_IShellItem,
                    item);
  });
}

// --- binding ------------------------------------------------------------------------

HRESULT TShellItem::Open(Ref<TFolderNode>& node) {
  if (!IsDesktop()) return fFolder->Open(Child(), node);
  node = TFolderNode::Desktop();
  return S_OK;
}

HRESULT TShellItem::BindStream(IBindCtx* context, REFIID iid, void** object) {
  if (IsDesktop()) return E_NOTIMPL;
  Ref<IStream> stream;
  const HRESULT result =
      fFolder->SourceOf(Child()).OpenStream(Child(), ModeOf(context), stream.Put());
  return SUCCEEDED(result) && stream ? stream->QueryInterface(iid, object) : result;
}

HRESULT TShellItem::BindStorage(IBindCtx* context, REFIID iid, void** object) {
  if (iid == IID_IStream || iid == IID_ISequentialStream) return BindStream(context, iid, object);
  Ref<TFolderNode> node;
  const HRESULT result = Open(node);
  return SUCCEEDED(result) ? MakeFolderObject(node, iid, object) : result;
}

HRESULT TShellItem::BindLinkTarget(REFIID iid, void** object) {
  if (IsDesktop()) return E_NOTIMPL;
  TPidl target;
  const HRESULT result = fFolder->SourceOf(Child()).GetLinkTarget(Child(), target);
  return SUCCEEDED(result) ? MakeItemOfList(TFolderNode::Desktop(), target.Get(), iid, object)
                           : result;
}

HRESULT TShellItem::BindViewObject(REFIID iid, void** object) {
  Ref<TFolderNode> node;
  const HRESULT result = Open(node);
  return SUCCEEDED(result) ? MakeViewObject(node, iid, object) : result;
}

HRESULT TShellItem::BindUIObject(REFIID iid, void** object) {
  if (IsDesktop()) return E_NOINTERFACE;
  const PCUITEMID_CHILD child = Child();
  return MakeUIObject(fFolder, {&child, 1}, iid, object);
}

HRESULT TShellItem::BindToHandler(IBindCtx* pbc, REFGUID bhid, REFIID riid, void** ppv) {
  return PortableCall("IShellItem::BindToHandler", [&]() -> HRESULT {
    if (!ppv) return E_POINTER;
    *ppv = nullptr;
    if (bhid == BHID_SFObject || bhid == BHID_Storage) return BindStorage(pbc, riid, ppv);
    if (bhid == BHID_Stream) return BindStream(pbc, riid, ppv);
    if (bhid == BHID_LinkTargetItem) return BindLinkTarget(riid, ppv);
    if (bhid == BHID_PropertyStore) return GetPropertyStore(GPS_DEFAULT, riid, ppv);
    if (bhid == BHID_SFViewObject) return BindViewObject(riid, ppv);
    if (bhid != BHID_EnumItems && bhid != BHID_StorageEnum) return BindUIObject(riid, ppv);
    Ref<TFolderNode> node;
    HRESULT result = Open(node);
    Ref<IEnumShellItems> items;
    if (SUCCEEDED(result))
      result = MakeEnumShellItems(node, SHCONTF_FOLDERS | SHCONTF_NONFOLDERS, items.Put());
    return SUCCEEDED(result) ? items->QueryInterface(riid, ppv) : result;
  });
}

// --- properties ------------------------------------------------------------------------

HRESULT TShellItem::GetPropertyStore(GETPROPERTYSTOREFLAGS flags, REFIID riid, void** ppv) {
  return GetPropertyStoreForKeys(nullptr, 0, flags, riid, ppv);
}

HRESULT TShellItem::GetPropertyStoreWithCreateObject(GETPROPERTYSTOREFLAGS flags, IUnknown*,
                                                     REFIID riid, void** ppv) {
  return GetPropertyStoreForKeys(nullptr, 0, flags, riid, ppv);
}

HRESULT TShellItem::GetPropertyStoreForKeys(const PROPERTYKEY* rgKeys, UINT cKeys,
                                            GETPROPERTYSTOREFLAGS flags, REFIID riid, void** ppv) {
  return PortableCall("IShellItem2::GetPropertyStoreForKeys", [&]() -> HRESULT {
    if (!ppv || (cKeys && !rgKeys)) return E_POINTER;
    *ppv = nullptr;
    if (IsDesktop()) return E_NOTIMPL;
    const bool writable = (flags & GPS_READWRITE) != 0;
    return MakePropertyStore(fFolder, Child(), {rgKeys, cKeys}, writable, riid, ppv);
  });
}

HRESULT TShellItem::GetPropertyDescriptionList(REFPROPERTYKEY, REFIID, void** ppv) {
  if (ppv) *ppv = nullptr;
  return E_NOTIMPL;
}

HRESULT TShellItem::Update(IBindCtx*) {
  return PortableCall("IShellItem2::Update", [&]() -> HRESULT {
    if (IsDesktop()) return S_OK;
    TPidl fresh;
    const HRESULT result = fFolder->SourceOf(Child()).Refresh(Child(), fresh);
    if (result != S_OK) return FAILED(result) ? result : S_OK;
    if (!ElementKind(fresh.Get())) return E_UNEXPECTED;
    auto former = std::make_unique<TFormer>();
    static std::mutex updateLock;  // items are many, updates are few
    const std::lock_guard lock(updateLock);
    former->Child = std::move(fOwned);
    former->Next = std::move(fFormer);
    fFormer = std::move(former);
    fOwned = std::move(fresh);
    fChild.store(fOwned.Get(), std::memory_order_release);
    return S_OK;
  });
}

HRESULT TShellItem::Value(REFPROPERTYKEY key, PROPVARIANT* value) {
  PropVariantInit(value);
  return IsDesktop() ? PropertyNotFound : fFolder->GetProperty(Child(), key, value);
}

HRESULT TShellItem::GetProperty(REFPROPERTYKEY key, PROPVARIANT* ppropvar) {
  return PortableCall("IShellItem2::GetProperty",
                      [&]() -> HRESULT { return ppropvar ? Value(key, ppropvar) : E_POINTER; });
}

namespace {
// Reads a property as another type.
template <class TRead, class TResult>
HRESULT Convert(HRESULT read, const TPropVariant& value, VARTYPE type, TRead field, TResult* out) {
  if (FAILED(read)) return read;
  TPropVariant converted;
  const HRESULT result = ChangeType(value, type, *converted.Put());
  if (SUCCEEDED(result)) *out = field(converted.Get());
  return result;
}
}  // namespace

HRESULT TShellItem::GetCLSID(REFPROPERTYKEY key, CLSID* pclsid) {
  return PortableCall("IShellItem2::GetCLSID", [&]() -> HRESULT {
    if (!pclsid) return E_POINTER;
    TPropVariant value;
    const HRESULT result = Value(key, value.Put());
    return Convert(
        result, value, VT_CLSID, [](const PROPVARIANT& v) { return *v.puuid; }, pclsid);
  });
}

HRESULT TShellItem::GetFileTime(REFPROPERTYKEY key, FILETIME* pft) {
  return PortableCall("IShellItem2::GetFileTime", [&]() -> HRESULT {
    if (!pft) return E_POINTER;
    TPropVariant value;
    const HRESULT result = Value(key, value.Put());
    return Convert(
        result, value, VT_FILETIME, [](const PROPVARIANT& v) { return v.filetime; }, pft);
  });
}

HRESULT TShellItem::GetInt32(REFPROPERTYKEY key, int* pi) {
  return PortableCall("IShellItem2::GetInt32", [&]() -> HRESULT {
    if (!pi) return E_POINTER;
    TPropVariant value;
    const HRESULT result = Value(key, value.Put());
    return Convert(
        result, value, VT_I4, [](const PROPVARIANT& v) { return v.lVal; }, pi);
  });
}

HRESULT TShellItem::GetString(REFPROPERTYKEY key, LPWSTR* ppsz) {
  return PortableCall("IShellItem2::GetString", [&]() -> HRESULT {
    if (!ppsz) return E_POINTER;
    *ppsz = nullptr;
    TPropVariant value;
    const HRESULT result = Value(key, value.Put());
    if (SUCCEEDED(result)) *ppsz = TaskText(PropVariantToText(value));
    return result;
  });
}

HRESULT TShellItem::GetUInt32(REFPROPERTYKEY key, ULONG* pui) {
  return PortableCall("IShellItem2::GetUInt32", [&]() -> HRESULT {
    if (!pui) return E_POINTER;
    TPropVariant value;
    const HRESULT result = Value(key, value.Put());
    return Convert(
        result, value, VT_UI4, [](const PROPVARIANT& v) { return v.ulVal; }, pui);
  });
}

HRESULT TShellItem::GetUInt64(REFPROPERTYKEY key, ULONGLONG* pull) {
  return PortableCall("IShellItem2::GetUInt64", [&]() -> HRESULT {
    if (!pull) return E_POINTER;
    TPropVariant value;
    const HRESULT result = Value(key, value.Put());
    return Convert(
        result, value, VT_UI8, [](const PROPVARIANT& v) { return v.uhVal.QuadPart; }, pull);
  });
}

HRESULT TShellItem::GetBool(REFPROPERTYKEY key, BOOL* pf) {
  return PortableCall("IShellItem2::GetBool", [&]() -> HRESULT {
    if (!pf) return E_POINTER;
    TPropVariant value;
    const HRESULT result = Value(key, value.Put());
    return Convert(
        result, value, VT_BOOL, [](const PROPVARIANT& v) { return BOOL{v.boolVal != 0}; }, pf);
  });
}

// --- IPersistIDList, IParentAndItem -----------------------------------------------------

HRESULT TShellItem::GetClassID(CLSID* pClassID) {
  return PortableCall("IPersist::GetClassID", [&]() -> HRESULT {
    if (!pClassID) return E_POINTER;
    *pClassID = CLSID_ShellItem;
    return S_OK;
  });
}

// An item is one object for its whole life.
HRESULT TShellItem::SetIDList(PCIDLIST_ABSOLUTE) { return E_UNEXPECTED; }
HRESULT TShellItem::SetParentAndItem(PCIDLIST_ABSOLUTE, IShellFolder*, PCUITEMID_CHILD) {
  return E_UNEXPECTED;
}

HRESULT TShellItem::GetIDList(PIDLIST_ABSOLUTE* ppidl) {
  return PortableCall("IPersistIDList::GetIDList", [&]() -> HRESULT {
    if (!ppidl) return E_POINTER;
    *ppidl = (IsDesktop() ? CopyElement(nullptr) : fFolder->PidlOf(Child())).Detach();
    return S_OK;
  });
}

HRESULT TShellItem::GetParentAndItem(PIDLIST_ABSOLUTE* ppidlParent, IShellFolder** ppsf,
                                     PITEMID_CHILD* ppidlChild) {
  return PortableCall("IParentAndItem::GetParentAndItem", [&]() -> HRESULT {
    if (IsDesktop()) return E_INVALIDARG;
    TPidl parent = TPidl::Copy(fFolder->Pidl()), child = TPidl::Copy(Child());
    if (ppsf) {
      const HRESULT result =
          MakeFolderObject(fFolder, IID_IShellFolder, reinterpret_cast<void**>(ppsf));
      if (FAILED(result)) return result;
    }
    if (ppidlParent) *ppidlParent = parent.Detach();
    if (ppidlChild) *ppidlChild = child.Detach();
    return S_OK;
  });
}

}  // namespace oak
