// The known folder manager and its folders as objects of the shell.
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/PortableClasses.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/PortableKnownFolders.h"
#include "oak/platform/portable/ShellFolder.h"
#include "oak/platform/portable/ShellKnownFolders.h"
#include "oak/platform/portable/ShellPidl.h"

namespace oak {
namespace {

constexpr HRESULT kNoSuchFolder = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);

// Path of a folder under its parent's, or empty.
TString RelativePath(const TKnownFolder& folder) {
  const TKnownFolder* parent = FindKnownFolder(folder.Parent);
  if (!parent) return {};
  const TString path = KnownFolderPath(folder);
  const TString base = IncludeTrailingPathDelimiter(KnownFolderPath(*parent));
  return base.size() > 1 && StartsText(base, path) ? path.substr(base.size()) : TString();
}

LPWSTR TextOrNil(TStringView text) { return text.empty() ? nullptr : TaskText(text); }

HRESULT PathOf(const TKnownFolder& folder, DWORD flags, TString& path) {
  if (folder.Kind == TKnownFolderKind::Virtual) return E_INVALIDARG;
  if (!(flags & KF_FLAG_DONT_VERIFY) && !EnsureKnownFolder(folder, (flags & KF_FLAG_CREATE) != 0))
    return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  path = KnownFolderPath(folder);
  return path.empty() ? HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND) : S_OK;
}

/// One known folder. No state but the table's line; any thread.
class TKnownFolderObject : public TInterfacedObject<IKnownFolder> {
 public:
  explicit TKnownFolderObject(const TKnownFolder& folder) : fFolder(folder) {}

  HRESULT GetId(KNOWNFOLDERID* pkfid) override {
    return PortableCall("IKnownFolder::GetId", [&]() -> HRESULT {
      if (!pkfid) return E_POINTER;
      *pkfid = fFolder.Id;
      return S_OK;
    });
  }
  HRESULT GetCategory(KF_CATEGORY* pCategory) override {
    return PortableCall("IKnownFolder::GetCategory", [&]() -> HRESULT {
      if (!pCategory) return E_POINTER;
      *pCategory = static_cast<KF_CATEGORY>(fFolder.Kind);
      return S_OK;
    });
  }
  HRESULT GetShellItem(DWORD dwFlags, REFIID riid, void** ppv) override {
    return PortableCall("IKnownFolder::GetShellItem", [&]() -> HRESULT {
      if (!ppv) return E_POINTER;
      *ppv = nullptr;
      TPidl list;
      const HRESULT result = KnownFolderList(fFolder, dwFlags, list);
      return FAILED(result) ? result : Api().SHCreateItemFromIDList(list.Get(), riid, ppv);
    });
  }
  HRESULT GetPath(DWORD dwFlags, LPWSTR* ppszPath) override {
    return PortableCall("IKnownFolder::GetPath", [&]() -> HRESULT {
      if (!ppszPath) return E_POINTER;
      *ppszPath = nullptr;
      TString path;
      const HRESULT result = PathOf(fFolder, dwFlags, path);
      if (SUCCEEDED(result)) *ppszPath = TaskText(path);
      return result;
    });
  }
  HRESULT SetPath(DWORD, LPCWSTR) override { return E_ACCESSDENIED; }
  HRESULT GetIDList(DWORD dwFlags, PIDLIST_ABSOLUTE* ppidl) override {
    return PortableCall("IKnownFolder::GetIDList", [&]() -> HRESULT {
      if (!ppidl) return E_POINTER;
      *ppidl = nullptr;
      TPidl list;
      const HRESULT result = KnownFolderList(fFolder, dwFlags, list);
      if (SUCCEEDED(result)) *ppidl = list.Detach();
      return result;
    });
  }
  HRESULT GetFolderType(FOLDERTYPEID* pftid) override {
    if (!pftid) return E_POINTER;
    *pftid = GUID_NULL;
    return kNoSuchFolder;
  }
  HRESULT GetRedirectionCapabilities(KF_REDIRECTION_CAPABILITIES* pCapabilities) override {
    if (!pCapabilities) return E_POINTER;
    *pCapabilities = KF_REDIRECTION_CAPABILITIES_DENY_ALL;
    return S_OK;
  }
  HRESULT GetFolderDefinition(KNOWNFOLDER_DEFINITION* pKFD) override {
    return PortableCall("IKnownFolder::GetFolderDefinition", [&]() -> HRESULT {
      if (!pKFD) return E_POINTER;
      *pKFD = KNOWNFOLDER_DEFINITION{};
      pKFD->category = static_cast<KF_CATEGORY>(fFolder.Kind);
      pKFD->fidParent = fFolder.Parent;
      pKFD->dwAttributes = fFolder.Hidden ? DWORD{FILE_ATTRIBUTE_HIDDEN} : 0;
      if (fFolder.Created) pKFD->kfdFlags = KFDF_PRECREATE;
      pKFD->pszName = TaskText(fFolder.Name);
      pKFD->pszLocalizedName = TextOrNil(fFolder.DisplayName);
      pKFD->pszParsingName = TextOrNil(fFolder.ParsingName);
      pKFD->pszRelativePath = TextOrNil(RelativePath(fFolder));
      return S_OK;
    });
  }

 private:
  const TKnownFolder& fFolder;
};

HRESULT GiveFolder(const TKnownFolder* folder, IKnownFolder** out) {
  if (!folder) return kNoSuchFolder;
  *out = new TKnownFolderObject(*folder);
  return S_OK;
}

// By the spelling on disk, so that a directory whose name differs in case from a
// known folder's is not taken for it.
const TKnownFolder* FindByExactPath(TStringView path) {
  if (const TKnownFolder* folder = FindKnownFolderByPath(path, TKnownFolderMatch::Exact))
    return folder;
  const TKnownFolder* folder = FindKnownFolderByPath(path, TKnownFolderMatch::IgnoreCase);
  const auto native = folder ? NativePath(path) : std::nullopt;
  return native && *native == KnownFolderNativePath(*folder) ? folder : nullptr;
}

const TKnownFolder* FindByList(PCIDLIST_ABSOLUTE list) {
  TPidlSplit split;
  if (!SplitPidl(list, split)) return nullptr;
  if (!split.Last) return FindKnownFolder(FOLDERID_Desktop);
  Ref<TFolderNode> parent;
  TString name;
  if (FAILED(TFolderNode::FromPidl(list, split.ParentBytes, parent)) ||
      FAILED(parent->GetName(split.Last, TNameForm::AbsoluteParsing, name)))
    return nullptr;
  if (name.starts_with(u"::")) return FindKnownFolderByParsingName(name);
  return FindKnownFolderByPath(name, TKnownFolderMatch::Exact);
}

/// The manager. No state; any thread.
class TKnownFolderManager : public TInterfacedObject<IKnownFolderManager> {
 public:
  HRESULT FolderIdFromCsidl(int nCsidl, KNOWNFOLDERID* pfid) override {
    return PortableCall("IKnownFolderManager::FolderIdFromCsidl", [&]() -> HRESULT {
      if (!pfid) return E_POINTER;
      *pfid = GUID_NULL;
      const TKnownFolder* folder = FindKnownFolderByCsidl(nCsidl);
      if (!folder) return E_INVALIDARG;
      *pfid = folder->Id;
      return S_OK;
    });
  }
  HRESULT FolderIdToCsidl(REFKNOWNFOLDERID rfid, int* pnCsidl) override {
    return PortableCall("IKnownFolderManager::FolderIdToCsidl", [&]() -> HRESULT {
      if (!pnCsidl) return E_POINTER;
      *pnCsidl = -1;
      const TKnownFolder* folder = FindKnownFolder(rfid);
      if (!folder || folder->Csidl < 0) return E_INVALIDARG;
      *pnCsidl = folder->Csidl;
      return S_OK;
    });
  }
  HRESULT GetFolderIds(KNOWNFOLDERID** ppKFId, UINT* pCount) override {
    return PortableCall("IKnownFolderManager::GetFolderIds", [&]() -> HRESULT {
      if (!ppKFId || !pCount) return E_POINTER;
      const auto folders = KnownFolders();
      *pCount = 0;
      *ppKFId = static_cast<KNOWNFOLDERID*>(CoTaskMemAlloc(folders.size() * sizeof(KNOWNFOLDERID)));
      if (!*ppKFId) return E_OUTOFMEMORY;
      for (const TKnownFolder& folder : folders) (*ppKFId)[(*pCount)++] = folder.Id;
      return S_OK;
    });
  }
  HRESULT GetFolder(REFKNOWNFOLDERID rfid, IKnownFolder** ppkf) override {
    return PortableCall("IKnownFolderManager::GetFolder",
                        [&] { return Find(ppkf, [&] { return FindKnownFolder(rfid); }); });
  }
  HRESULT GetFolderByName(LPCWSTR pszCanonicalName, IKnownFolder** ppkf) override {
    return PortableCall("IKnownFolderManager::GetFolderByName", [&]() -> HRESULT {
      if (!pszCanonicalName) return E_INVALIDARG;
      return Find(ppkf, [&] { return FindKnownFolderByName(pszCanonicalName); });
    });
  }
  HRESULT RegisterFolder(REFKNOWNFOLDERID, const KNOWNFOLDER_DEFINITION*) override {
    return E_ACCESSDENIED;
  }
  HRESULT UnregisterFolder(REFKNOWNFOLDERID) override { return E_ACCESSDENIED; }
  HRESULT FindFolderFromPath(LPCWSTR pszPath, FFFP_MODE mode, IKnownFolder** ppkf) override {
    return PortableCall("IKnownFolderManager::FindFolderFromPath", [&]() -> HRESULT {
      if (!pszPath || !*pszPath) return E_INVALIDARG;
      return Find(ppkf, [&] {
        return mode == FFFP_NEARESTPARENTMATCH
                   ? FindKnownFolderByPath(pszPath, TKnownFolderMatch::NearestParent)
                   : FindByExactPath(pszPath);
      });
    });
  }
  HRESULT FindFolderFromIDList(PCIDLIST_ABSOLUTE pidl, IKnownFolder** ppkf) override {
    return PortableCall("IKnownFolderManager::FindFolderFromIDList", [&]() -> HRESULT {
      if (!pidl) return E_INVALIDARG;
      return Find(ppkf, [&] { return FindByList(pidl); });
    });
  }
  HRESULT Redirect(REFKNOWNFOLDERID, HWND, KF_REDIRECT_FLAGS, LPCWSTR, UINT, const KNOWNFOLDERID*,
                   LPWSTR* ppszError) override {
    if (ppszError) *ppszError = nullptr;
    return E_ACCESSDENIED;
  }

 private:
  template <class TSearch>
  static HRESULT Find(IKnownFolder** out, const TSearch& search) {
    if (!out) return E_POINTER;
    *out = nullptr;
    return GiveFolder(search(), out);
  }
};

}  // namespace

void RegisterKnownFolderManager() {
  RegisterPortableClass<TKnownFolderManager>(CLSID_KnownFolderManager);
}

}  // namespace oak
