// IStorage of folders: objects made, renamed and removed by name.
#include "oak/platform/portable/ShellStorage.h"

#include "oak/base/Variant.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/ShellChanges.h"
#include "oak/platform/portable/ShellFolder.h"
#include "oak/platform/portable/ShellPidl.h"
#include "oak/platform/portable/ShellProperties.h"

namespace oak {

namespace {

bool IsElementName(const OLECHAR* name) {
  return name && *name && TStringView(name).find_first_of(u"\\/") == TStringView::npos;
}

// What the storage interface calls the failures of a look-up.
HRESULT StorageError(HRESULT result) {
  if (result == HRESULT_FROM_WIN32(2)) return STG_E_FILENOTFOUND;  // ERROR_FILE_NOT_FOUND
  if (result == HRESULT_FROM_WIN32(3)) return STG_E_PATHNOTFOUND;  // ERROR_PATH_NOT_FOUND
  return result;
}

}  // namespace

HRESULT DescribeElement(const TFolderNode& node, PCUITEMID_CHILD child, DWORD flags,
                        STATSTG& stat) {
  stat = {};
  DWORD attributes = 0;
  const HRESULT result = node.GetAttributes(child, SFGAO_FOLDER, attributes);
  if (FAILED(result)) return result;
  stat.type = attributes & SFGAO_FOLDER ? STGTY_STORAGE : STGTY_STREAM;
  TPropVariant size;
  std::uint64_t bytes = 0;
  if (SUCCEEDED(node.GetProperty(child, PKEY_Size, size.Put()))) (void)TryGetUInt64(size, bytes);
  stat.cbSize.QuadPart = bytes;
  stat.mtime = TimeProperty(node, child, PKEY_DateModified);
  stat.ctime = TimeProperty(node, child, PKEY_DateCreated);
  stat.atime = TimeProperty(node, child, PKEY_DateAccessed);
  if (flags & STATFLAG_NONAME) return S_OK;
  TString name;
  const HRESULT named = node.GetName(child, TNameForm::Parsing, name);
  if (SUCCEEDED(named)) stat.pwcsName = TaskText(name);
  return named;
}

HRESULT TPortableFolder::FindElement(const OLECHAR* name, TPidl& child) const {
  if (!IsElementName(name)) return STG_E_INVALIDNAME;
  return StorageError(fNode->ParseName(name, {}, child));
}

HRESULT TPortableFolder::CreateElement(const OLECHAR* name, bool folder, DWORD mode,
                                       TPidl& child) const {
  if (!IsElementName(name)) return STG_E_INVALIDNAME;
  const HRESULT result = fNode->Contents().Create(name, folder, (mode & STGM_CREATE) != 0, child);
  if (SUCCEEDED(result))
    AnnounceChange(folder ? SHCNE_MKDIR : SHCNE_CREATE, fNode->PidlOf(child.Get()).Get());
  return StorageError(result);
}

HRESULT TPortableFolder::OpenFolderElement(PCUITEMID_CHILD child, IStorage** storage) const {
  Ref<TFolderNode> folder;
  const HRESULT result = fNode->Open(child, folder);
  if (FAILED(result)) return StorageError(result);
  return MakeFolderObject(folder, IID_IStorage, reinterpret_cast<void**>(storage));
}

HRESULT TPortableFolder::CreateStream(const OLECHAR* pwcsName, DWORD grfMode, DWORD, DWORD,
                                      IStream** ppstm) {
  return PortableCall("IStorage::CreateStream", [&]() -> HRESULT {
    if (!ppstm) return STG_E_INVALIDPOINTER;
    *ppstm = nullptr;
    TPidl child;
    const HRESULT result = CreateElement(pwcsName, false, grfMode, child);
    if (FAILED(result)) return result;
    return fNode->SourceOf(child.Get()).OpenStream(child.Get(), grfMode & ~STGM_CREATE, ppstm);
  });
}

HRESULT TPortableFolder::OpenStream(const OLECHAR* pwcsName, void*, DWORD grfMode, DWORD,
                                    IStream** ppstm) {
  return PortableCall("IStorage::OpenStream", [&]() -> HRESULT {
    if (!ppstm) return STG_E_INVALIDPOINTER;
    *ppstm = nullptr;
    TPidl child;
    const HRESULT result = FindElement(pwcsName, child);
    if (FAILED(result)) return result;
    return StorageError(fNode->SourceOf(child.Get()).OpenStream(child.Get(), grfMode, ppstm));
  });
}

HRESULT TPortableFolder::CreateStorage(const OLECHAR* pwcsName, DWORD grfMode, DWORD, DWORD,
                                       IStorage** ppstg) {
  return PortableCall("IStorage::CreateStorage", [&]() -> HRESULT {
    if (!ppstg) return STG_E_INVALIDPOINTER;
    *ppstg = nullptr;
    TPidl child;
    const HRESULT result = CreateElement(pwcsName, true, grfMode, child);
    return FAILED(result) ? result : OpenFolderElement(child.Get(), ppstg);
  });
}

HRESULT TPortableFolder::OpenStorage(const OLECHAR* pwcsName, IStorage*, DWORD, SNB, DWORD,
                                     IStorage** ppstg) {
  return PortableCall("IStorage::OpenStorage", [&]() -> HRESULT {
    if (!ppstg) return STG_E_INVALIDPOINTER;
    *ppstg = nullptr;
    TPidl child;
    const HRESULT result = FindElement(pwcsName, child);
    return FAILED(result) ? result : OpenFolderElement(child.Get(), ppstg);
  });
}

// Copies of whole trees are made by the file operation, with progress and undo.
HRESULT TPortableFolder::CopyTo(DWORD, const IID*, SNB, IStorage*) { return STG_E_INVALIDFUNCTION; }
HRESULT TPortableFolder::MoveElementTo(const OLECHAR*, IStorage*, const OLECHAR*, DWORD) {
  return STG_E_INVALIDFUNCTION;
}
// Everything is written at once.
HRESULT TPortableFolder::Commit(DWORD) { return S_OK; }
HRESULT TPortableFolder::Revert() { return STG_E_INVALIDFUNCTION; }
HRESULT TPortableFolder::SetClass(REFCLSID) { return STG_E_INVALIDFUNCTION; }
HRESULT TPortableFolder::SetStateBits(DWORD, DWORD) { return STG_E_INVALIDFUNCTION; }

HRESULT TPortableFolder::EnumElements(DWORD, void*, DWORD, IEnumSTATSTG** ppenum) {
  return PortableCall("IStorage::EnumElements", [&]() -> HRESULT {
    return ppenum ? MakeEnumStatStg(fNode, ppenum) : STG_E_INVALIDPOINTER;
  });
}

HRESULT TPortableFolder::DestroyElement(const OLECHAR* pwcsName) {
  return PortableCall("IStorage::DestroyElement", [&]() -> HRESULT {
    TPidl child;
    HRESULT result = FindElement(pwcsName, child);
    if (FAILED(result)) return result;
    const bool folder = IsFolderElement(*fNode, child.Get());
    result = fNode->SourceOf(child.Get()).Destroy(child.Get());
    if (SUCCEEDED(result))
      AnnounceChange(folder ? SHCNE_RMDIR : SHCNE_DELETE, fNode->PidlOf(child.Get()).Get());
    return StorageError(result);
  });
}

HRESULT TPortableFolder::RenameElement(const OLECHAR* pwcsOldName, const OLECHAR* pwcsNewName) {
  return PortableCall("IStorage::RenameElement", [&]() -> HRESULT {
    if (!IsElementName(pwcsNewName)) return STG_E_INVALIDNAME;
    TPidl child, renamed;
    HRESULT result = FindElement(pwcsOldName, child);
    if (FAILED(result)) return result;
    result =
        fNode->SourceOf(child.Get()).Rename(child.Get(), pwcsNewName, TNameForm::Parsing, renamed);
    if (SUCCEEDED(result)) AnnounceRename(*fNode, child.Get(), renamed.Get());
    return StorageError(result);
  });
}

HRESULT TPortableFolder::SetElementTimes(const OLECHAR* pwcsName, const FILETIME* pctime,
                                         const FILETIME* patime, const FILETIME* pmtime) {
  return PortableCall("IStorage::SetElementTimes", [&]() -> HRESULT {
    TPidl child;
    HRESULT result = FindElement(pwcsName, child);
    const auto set = [&](REFPROPERTYKEY key, const FILETIME* time) {
      if (SUCCEEDED(result) && time)
        result =
            fNode->SourceOf(child.Get()).SetProperty(child.Get(), key, TPropVariant::From(*time));
    };
    set(PKEY_DateCreated, pctime);
    set(PKEY_DateAccessed, patime);
    set(PKEY_DateModified, pmtime);
    if (child) AnnounceChange(SHCNE_UPDATEITEM, fNode->PidlOf(child.Get()).Get());
    return result;
  });
}

HRESULT TPortableFolder::Stat(STATSTG* pstatstg, DWORD grfStatFlag) {
  return PortableCall("IStorage::Stat", [&]() -> HRESULT {
    if (!pstatstg) return STG_E_INVALIDPOINTER;
    *pstatstg = {};
    HRESULT result = S_OK;
    if (!fNode->IsDesktop())
      result = DescribeElement(*fNode->Parent(), fNode->Element(), grfStatFlag, *pstatstg);
    pstatstg->type = STGTY_STORAGE;
    pstatstg->clsid = fNode->ClassId();
    return result;
  });
}

}  // namespace oak
