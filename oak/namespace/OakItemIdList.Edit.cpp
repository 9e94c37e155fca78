// Operations that change an object or what an item knows of it.
#include <cstring>

#include "oak/base/HResult.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.State.h"
#include "oak/namespace/Shell_Win32.h"

namespace oak {
namespace {

constexpr DWORD kNotSupported = 50;        // ERROR_NOT_SUPPORTED
constexpr std::size_t kClassicPath = 260;  // characters that SetNameOf can take
constexpr int kMostFolderNames = 100000;   // a shell that finds every name taken is broken

bool SameBytes(PCItemIdList a, PCItemIdList b) noexcept {
  const std::size_t size = PidlSize(a);
  return size != 0 && size == PidlSize(b) && std::memcmp(a, b, size) == 0;
}

template <class T, class U>
Ref<T> Need(const Ref<U>& object) {
  Ref<T> result = object.template As<T>();
  if (!result) THResultHelper::CheckForError(E_NOINTERFACE);
  return result;
}

/// To the shell a name would end at the first NUL: another name than was meant.
void CheckName(TStringView name) {
  if (Contains(name, TStringView(u"\0", 1))) THResultHelper::CheckForError(E_INVALIDARG);
}

}  // namespace

bool TOakItemIdList::Reload() {
  if (!fHasPIDLLock) return false;
  struct TEntered {
    explicit TEntered(TReentrantLock& lock) noexcept : fLock(lock) { fLock.Enter(); }
    ~TEntered() { fLock.Leave(); }
    TReentrantLock& fLock;
  };
  const TEntered entered(fPIDLLock);
  const Ref<IShellItem> item = ShellItem();
  const Ref<IShellItem2> updatable = item.As<IShellItem2>();
  if (!updatable) return false;
  const HRESULT result = updatable->Update(nullptr);
  if (result == E_NOINTERFACE) return true;
  TPidl fresh;
  if (FAILED(result) || FAILED(Api().SHGetIDListFromObject(updatable.Get(), fresh.Put())) || !fresh)
    return false;
  // An unchanged list stays, so that reloading over and over costs no memory.
  const bool isSame = SameBytes(fresh.Get(), WindowsPointer());
  if (!isSame || fOwnsPointer.load(std::memory_order_relaxed) == iloForeignOwned)
    ReplacePidl(std::move(fresh));
  return true;
}

void TOakItemIdList::SetPropertyValue(const TShellColumnId& pKey,
                                      const TShellPropertyValue& pValue) {
  const Ref<IShellItem2> item = Need<IShellItem2>(ShellItem());
  const PROPERTYKEY key = pKey;
  Ref<IPropertyStore> store;
  THResultHelper::CheckForError(item->GetPropertyStoreForKeys(
      &key, 1, GPS_READWRITE, IidOf<IPropertyStore>(), store.PutVoid()));
  if (!store) THResultHelper::CheckForError(E_NOINTERFACE);
  if (pValue.GetType() == VT_DATE) {
    PROPVARIANT date{};
    date.vt = VT_DATE;
    date.date = pValue.ToFileDateTime();
    THResultHelper::CheckForError(store->SetValue(key, date));
  } else {
    THResultHelper::CheckForError(store->SetValue(key, pValue.Get()));
  }
  THResultHelper::CheckForError(store->Commit());
}

Ref<IItemIdList> TOakItemIdList::CreateNewFolder(TStringView pNewFolderName) {
  CheckName(pNewFolderName);
  const Ref<IStorage> parent = Need<IStorage>(GetShellFolder());
  const TString base(pNewFolderName.empty() ? sNewFolder : pNewFolderName);
  TString name = base;
  Ref<IStorage> created;
  HRESULT result = STG_E_FILEALREADYEXISTS;
  for (int n = 1; result == STG_E_FILEALREADYEXISTS && n <= kMostFolderNames; ++n) {
    result = parent->CreateStorage(W(name), STGM_READWRITE, 0, 0, created.Put());
    name = base + u" (" + IntToStr(n) + u")";
  }
  THResultHelper::CheckForError(result);
  const Ref<IShellFolder> folder = Need<IShellFolder>(created);
  return Create(folder.Get(), NullItemIdList()->WindowsPointer());
}

void TOakItemIdList::RemoveStorage() {
  const Ref<IStorage> parent = FolderOf(GetParent()).As<IStorage>();
  if (!parent) throw EFolderTrekError(kNotSupported, static_cast<IItemIdList*>(this));
  THResultHelper::CheckForError(parent->DestroyElement(W(DisplayName(dnfInFolder))));
}

// --- renaming ----------------------------------------------------------------

/// One renaming: the ways to do it, and the pidl that comes of it.
class TItemRename {
 public:
  TItemRename(TOakItemIdList& item, TStringView newName)
      : fItem(item), fParent(item.GetParent()), fNewName(newName) {
    fFolder = TOakItemIdList::FolderOf(fParent);
    if (!item.HasAttributes(SFGAO_CANRENAME))
      throw EFolderTrekError(u"Element cannot be renamed", nullptr);
  }

  /// Only the shell's own way can ask the user and change nothing but case.
  bool NeedsShell(HWND window) const {
    const TString newPath = IncludeTrailingPathDelimiter(fParent->Path()) + fNewName;
    return (window && fItem.Path().size() <= kClassicPath && newPath.size() <= kClassicPath) ||
           SameText(fItem.Name(), fNewName);
  }

  TPidl ByShell(HWND window) {
    if (!fFolder) THResultHelper::CheckForError(E_NOINTERFACE);
    TPidl element;
    PItemIdList pidl = fItem.WindowsPointer();
    THResultHelper::CheckForError(fFolder->SetNameOf(window, Api().ILFindLastID(pidl), W(fNewName),
                                                     NameFlags(), element.Put()));
    return element ? BelowParent(element.Get()) : TPidl();
  }

  /// Looks the renamed object up only if its list is wanted.
  TPidl ByStorage(bool wantsList) {
    const Ref<IStorage> storage = Need<IStorage>(fFolder);
    const TString oldName = ExtractFileName(fItem.DisplayName(dnfPreferPhysical));
    THResultHelper::CheckForError(storage->RenameElement(W(oldName), W(fNewName)));
    if (!wantsList) return {};
    const auto element = TOakItemIdList::Create(fNewName, fFolder.Get(), nullptr);
    return element->IsInvalid() ? TPidl() : BelowParent(element->WindowsPointer());
  }

 private:
  DWORD NameFlags() const {
    const bool isDisplayName =
        TShellControlHelper::GetShellShowExtensions() && ExtractFileExt(fNewName).empty();
    return isDisplayName ? SHGDN_INFOLDER : SHGDN_INFOLDER | SHGDN_FORPARSING;
  }
  TPidl BelowParent(PCItemIdList element) const {
    return TPidl::Adopt(Api().ILCombine(fParent->WindowsPointer(), element));
  }

  TOakItemIdList& fItem;
  Ref<IItemIdList> fParent;
  Ref<IShellFolder> fFolder;
  TString fNewName;
};

void TOakItemIdList::Rename(TStringView pNewName, HWND pWindowHandle, bool pUpdatePidl) {
  CheckName(pNewName);
  TItemRename rename(*this, pNewName);
  TPidl renamed = rename.NeedsShell(pWindowHandle) ? rename.ByShell(pWindowHandle)
                                                   : rename.ByStorage(pUpdatePidl);
  if (renamed && pUpdatePidl) ReplaceRenamed(std::move(renamed));
}

}  // namespace oak
