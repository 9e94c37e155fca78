// Folders of the shell namespace and what they give for their items.
#pragma once

#if defined(_WIN32)
#include "oak/platform/windows/WindowsHeaders.h"
#else

#include "oak/platform/shell_api_enums.h"
#include "oak/platform/shell_api_ole.h"
#include "oak/platform/shell_api_types.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

struct IShellView;

struct IPersistFolder : IPersist {
  virtual HRESULT Initialize(PCIDLIST_ABSOLUTE pidl) = 0;
};

struct IPersistFolder2 : IPersistFolder {
  virtual HRESULT GetCurFolder(PIDLIST_ABSOLUTE* ppidl) = 0;
};

struct IPersistIDList : IPersist {
  virtual HRESULT SetIDList(PCIDLIST_ABSOLUTE pidl) = 0;
  virtual HRESULT GetIDList(PIDLIST_ABSOLUTE* ppidl) = 0;
};

struct IParentAndItem : IUnknown {
  virtual HRESULT SetParentAndItem(PCIDLIST_ABSOLUTE pidlParent, IShellFolder* psf,
                                   PCUITEMID_CHILD pidlChild) = 0;
  virtual HRESULT GetParentAndItem(PIDLIST_ABSOLUTE* ppidlParent, IShellFolder** ppsf,
                                   PITEMID_CHILD* ppidlChild) = 0;
};

struct IEnumIDList : IUnknown {
  virtual HRESULT Next(ULONG celt, PITEMID_CHILD* rgelt, ULONG* pceltFetched) = 0;
  virtual HRESULT Skip(ULONG celt) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumIDList** ppenum) = 0;
};

struct IEnumExtraSearch : IUnknown {
  virtual HRESULT Next(ULONG celt, EXTRASEARCH* rgelt, ULONG* pceltFetched) = 0;
  virtual HRESULT Skip(ULONG celt) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumExtraSearch** ppenum) = 0;
};

struct IShellFolder : IUnknown {
  virtual HRESULT ParseDisplayName(HWND hwnd, IBindCtx* pbc, LPWSTR pszDisplayName, ULONG* pchEaten,
                                   PIDLIST_RELATIVE* ppidl, ULONG* pdwAttributes) = 0;
  virtual HRESULT EnumObjects(HWND hwnd, SHCONTF grfFlags, IEnumIDList** ppenumIDList) = 0;
  virtual HRESULT BindToObject(PCUIDLIST_RELATIVE pidl, IBindCtx* pbc, REFIID riid, void** ppv) = 0;
  virtual HRESULT BindToStorage(PCUIDLIST_RELATIVE pidl, IBindCtx* pbc, REFIID riid,
                                void** ppv) = 0;
  virtual HRESULT CompareIDs(LPARAM lParam, PCUIDLIST_RELATIVE pidl1, PCUIDLIST_RELATIVE pidl2) = 0;
  virtual HRESULT CreateViewObject(HWND hwndOwner, REFIID riid, void** ppv) = 0;
  virtual HRESULT GetAttributesOf(UINT cidl, PCUITEMID_CHILD_ARRAY apidl, SFGAOF* rgfInOut) = 0;
  virtual HRESULT GetUIObjectOf(HWND hwndOwner, UINT cidl, PCUITEMID_CHILD_ARRAY apidl, REFIID riid,
                                UINT* rgfReserved, void** ppv) = 0;
  virtual HRESULT GetDisplayNameOf(PCUITEMID_CHILD pidl, SHGDNF uFlags, STRRET* pName) = 0;
  virtual HRESULT SetNameOf(HWND hwnd, PCUITEMID_CHILD pidl, LPCWSTR pszName, SHGDNF uFlags,
                            PITEMID_CHILD* ppidlOut) = 0;
};

struct IShellFolder2 : IShellFolder {
  virtual HRESULT GetDefaultSearchGUID(GUID* pguid) = 0;
  virtual HRESULT EnumSearches(IEnumExtraSearch** ppenum) = 0;
  virtual HRESULT GetDefaultColumn(DWORD dwRes, ULONG* pSort, ULONG* pDisplay) = 0;
  virtual HRESULT GetDefaultColumnState(UINT iColumn, SHCOLSTATEF* pcsFlags) = 0;
  virtual HRESULT GetDetailsEx(PCUITEMID_CHILD pidl, const SHCOLUMNID* pscid, VARIANT* pv) = 0;
  virtual HRESULT GetDetailsOf(PCUITEMID_CHILD pidl, UINT iColumn, SHELLDETAILS* psd) = 0;
  virtual HRESULT MapColumnToSCID(UINT iColumn, SHCOLUMNID* pscid) = 0;
};

// --- what a folder tells of an item ----------------------------------------------

struct IShellIcon : IUnknown {
  virtual HRESULT GetIconOf(PCUITEMID_CHILD pidl, UINT flags, int* pIconIndex) = 0;
};

struct IShellIconOverlay : IUnknown {
  virtual HRESULT GetOverlayIndex(PCUITEMID_CHILD pidl, int* pIndex) = 0;
  virtual HRESULT GetOverlayIconIndex(PCUITEMID_CHILD pidl, int* pIconIndex) = 0;
};

struct IQueryInfo : IUnknown {
  virtual HRESULT GetInfoTip(DWORD dwFlags, LPWSTR* ppwszTip) = 0;
  virtual HRESULT GetInfoFlags(DWORD* pdwFlags) = 0;
};

struct IExtractIconW : IUnknown {
  virtual HRESULT GetIconLocation(UINT uFlags, LPWSTR pszIconFile, UINT cchMax, int* piIndex,
                                  UINT* pwFlags) = 0;
  virtual HRESULT Extract(LPCWSTR pszFile, UINT nIconIndex, HICON* phiconLarge, HICON* phiconSmall,
                          UINT nIconSize) = 0;
};
using IExtractIcon = IExtractIconW;

// --- commands ----------------------------------------------------------------------

struct IContextMenu : IUnknown {
  virtual HRESULT QueryContextMenu(HMENU hmenu, UINT indexMenu, UINT idCmdFirst, UINT idCmdLast,
                                   UINT uFlags) = 0;
  virtual HRESULT InvokeCommand(CMINVOKECOMMANDINFO* pici) = 0;
  virtual HRESULT GetCommandString(UINT_PTR idCmd, UINT uType, UINT* pReserved, CHAR* pszName,
                                   UINT cchMax) = 0;
};

struct IContextMenu2 : IContextMenu {
  virtual HRESULT HandleMenuMsg(UINT uMsg, WPARAM wParam, LPARAM lParam) = 0;
};

struct IContextMenu3 : IContextMenu2 {
  virtual HRESULT HandleMenuMsg2(UINT uMsg, WPARAM wParam, LPARAM lParam, LRESULT* plResult) = 0;
};

// --- links, known folders, parsing without the disk ------------------------------------

struct IShellLinkW : IUnknown {
  virtual HRESULT GetPath(LPWSTR pszFile, int cch, WIN32_FIND_DATAW* pfd, DWORD fFlags) = 0;
  virtual HRESULT GetIDList(PIDLIST_ABSOLUTE* ppidl) = 0;
  virtual HRESULT SetIDList(PCIDLIST_ABSOLUTE pidl) = 0;
  virtual HRESULT GetDescription(LPWSTR pszName, int cch) = 0;
  virtual HRESULT SetDescription(LPCWSTR pszName) = 0;
  virtual HRESULT GetWorkingDirectory(LPWSTR pszDir, int cch) = 0;
  virtual HRESULT SetWorkingDirectory(LPCWSTR pszDir) = 0;
  virtual HRESULT GetArguments(LPWSTR pszArgs, int cch) = 0;
  virtual HRESULT SetArguments(LPCWSTR pszArgs) = 0;
  virtual HRESULT GetHotkey(WORD* pwHotkey) = 0;
  virtual HRESULT SetHotkey(WORD wHotkey) = 0;
  virtual HRESULT GetShowCmd(int* piShowCmd) = 0;
  virtual HRESULT SetShowCmd(int iShowCmd) = 0;
  virtual HRESULT GetIconLocation(LPWSTR pszIconPath, int cch, int* piIcon) = 0;
  virtual HRESULT SetIconLocation(LPCWSTR pszIconPath, int iIcon) = 0;
  virtual HRESULT SetRelativePath(LPCWSTR pszPathRel, DWORD dwReserved) = 0;
  virtual HRESULT Resolve(HWND hwnd, DWORD fFlags) = 0;
  virtual HRESULT SetPath(LPCWSTR pszFile) = 0;
};
using IShellLink = IShellLinkW;

struct IKnownFolder : IUnknown {
  virtual HRESULT GetId(KNOWNFOLDERID* pkfid) = 0;
  virtual HRESULT GetCategory(KF_CATEGORY* pCategory) = 0;
  virtual HRESULT GetShellItem(DWORD dwFlags, REFIID riid, void** ppv) = 0;
  virtual HRESULT GetPath(DWORD dwFlags, LPWSTR* ppszPath) = 0;
  virtual HRESULT SetPath(DWORD dwFlags, LPCWSTR pszPath) = 0;
  virtual HRESULT GetIDList(DWORD dwFlags, PIDLIST_ABSOLUTE* ppidl) = 0;
  virtual HRESULT GetFolderType(FOLDERTYPEID* pftid) = 0;
  virtual HRESULT GetRedirectionCapabilities(KF_REDIRECTION_CAPABILITIES* pCapabilities) = 0;
  virtual HRESULT GetFolderDefinition(KNOWNFOLDER_DEFINITION* pKFD) = 0;
};

struct IKnownFolderManager : IUnknown {
  virtual HRESULT FolderIdFromCsidl(int nCsidl, KNOWNFOLDERID* pfid) = 0;
  virtual HRESULT FolderIdToCsidl(REFKNOWNFOLDERID rfid, int* pnCsidl) = 0;
  virtual HRESULT GetFolderIds(KNOWNFOLDERID** ppKFId, UINT* pCount) = 0;
  virtual HRESULT GetFolder(REFKNOWNFOLDERID rfid, IKnownFolder** ppkf) = 0;
  virtual HRESULT GetFolderByName(LPCWSTR pszCanonicalName, IKnownFolder** ppkf) = 0;
  virtual HRESULT RegisterFolder(REFKNOWNFOLDERID rfid, const KNOWNFOLDER_DEFINITION* pKFD) = 0;
  virtual HRESULT UnregisterFolder(REFKNOWNFOLDERID rfid) = 0;
  virtual HRESULT FindFolderFromPath(LPCWSTR pszPath, FFFP_MODE mode, IKnownFolder** ppkf) = 0;
  virtual HRESULT FindFolderFromIDList(PCIDLIST_ABSOLUTE pidl, IKnownFolder** ppkf) = 0;
  virtual HRESULT Redirect(REFKNOWNFOLDERID rfid, HWND hwnd, KF_REDIRECT_FLAGS flags,
                           LPCWSTR pszTargetPath, UINT cFolders, const KNOWNFOLDERID* pExclusion,
                           LPWSTR* ppszError) = 0;
};

struct IFileSystemBindData : IUnknown {
  virtual HRESULT SetFindData(const WIN32_FIND_DATAW* pfd) = 0;
  virtual HRESULT GetFindData(WIN32_FIND_DATAW* pfd) = 0;
};

struct IFileSystemBindData2 : IFileSystemBindData {
  virtual HRESULT SetFileID(LARGE_INTEGER liFileID) = 0;
  virtual HRESULT GetFileID(LARGE_INTEGER* pliFileID) = 0;
  virtual HRESULT SetJunctionCLSID(REFCLSID clsid) = 0;
  virtual HRESULT GetJunctionCLSID(CLSID* pclsid) = 0;
};

#pragma GCC diagnostic pop

#endif
