// Shell items, arrays of them, and libraries.
#pragma once

#if defined(_WIN32)
#include "oak/platform/windows/WindowsHeaders.h"
#else

#include "oak/platform/shell_api_enums.h"
#include "oak/platform/shell_api_ole.h"
#include "oak/platform/shell_api_types.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

struct IEnumShellItems;

struct IShellItem : IUnknown {
  virtual HRESULT BindToHandler(IBindCtx* pbc, REFGUID bhid, REFIID riid, void** ppv) = 0;
  virtual HRESULT GetParent(IShellItem** ppsi) = 0;
  virtual HRESULT GetDisplayName(SIGDN sigdnName, LPWSTR* ppszName) = 0;
  virtual HRESULT GetAttributes(SFGAOF sfgaoMask, SFGAOF* psfgaoAttribs) = 0;
  virtual HRESULT Compare(IShellItem* psi, SICHINTF hint, int* piOrder) = 0;
};

struct IShellItem2 : IShellItem {
  virtual HRESULT GetPropertyStore(GETPROPERTYSTOREFLAGS flags, REFIID riid, void** ppv) = 0;
  virtual HRESULT GetPropertyStoreWithCreateObject(GETPROPERTYSTOREFLAGS flags,
                                                   IUnknown* punkCreateObject, REFIID riid,
                                                   void** ppv) = 0;
  virtual HRESULT GetPropertyStoreForKeys(const PROPERTYKEY* rgKeys, UINT cKeys,
                                          GETPROPERTYSTOREFLAGS flags, REFIID riid, void** ppv) = 0;
  virtual HRESULT GetPropertyDescriptionList(REFPROPERTYKEY keyType, REFIID riid, void** ppv) = 0;
  virtual HRESULT Update(IBindCtx* pbc) = 0;
  virtual HRESULT GetProperty(REFPROPERTYKEY key, PROPVARIANT* ppropvar) = 0;
  virtual HRESULT GetCLSID(REFPROPERTYKEY key, CLSID* pclsid) = 0;
  virtual HRESULT GetFileTime(REFPROPERTYKEY key, FILETIME* pft) = 0;
  virtual HRESULT GetInt32(REFPROPERTYKEY key, int* pi) = 0;
  virtual HRESULT GetString(REFPROPERTYKEY key, LPWSTR* ppsz) = 0;
  virtual HRESULT GetUInt32(REFPROPERTYKEY key, ULONG* pui) = 0;
  virtual HRESULT GetUInt64(REFPROPERTYKEY key, ULONGLONG* pull) = 0;
  virtual HRESULT GetBool(REFPROPERTYKEY key, BOOL* pf) = 0;
};

struct IShellItemArray : IUnknown {
  virtual HRESULT BindToHandler(IBindCtx* pbc, REFGUID bhid, REFIID riid, void** ppvOut) = 0;
  virtual HRESULT GetPropertyStore(GETPROPERTYSTOREFLAGS flags, REFIID riid, void** ppv) = 0;
  virtual HRESULT GetPropertyDescriptionList(REFPROPERTYKEY keyType, REFIID riid, void** ppv) = 0;
  virtual HRESULT GetAttributes(SIATTRIBFLAGS AttribFlags, SFGAOF sfgaoMask,
                                SFGAOF* psfgaoAttribs) = 0;
  virtual HRESULT GetCount(DWORD* pdwNumItems) = 0;
  virtual HRESULT GetItemAt(DWORD dwIndex, IShellItem** ppsi) = 0;
  virtual HRESULT EnumItems(IEnumShellItems** ppenumShellItems) = 0;
};

struct IEnumShellItems : IUnknown {
  virtual HRESULT Next(ULONG celt, IShellItem** rgelt, ULONG* pceltFetched) = 0;
  virtual HRESULT Skip(ULONG celt) = 0;
  virtual HRESULT Reset() = 0;
  virtual HRESULT Clone(IEnumShellItems** ppenum) = 0;
};

// --- libraries ---------------------------------------------------------------------

struct IShellLibrary : IUnknown {
  virtual HRESULT LoadLibraryFromItem(IShellItem* psiLibrary, DWORD grfMode) = 0;
  virtual HRESULT LoadLibraryFromKnownFolder(REFKNOWNFOLDERID kfidLibrary, DWORD grfMode) = 0;
  virtual HRESULT AddFolder(IShellItem* psiLocation) = 0;
  virtual HRESULT RemoveFolder(IShellItem* psiLocation) = 0;
  virtual HRESULT GetFolders(LIBRARYFOLDERFILTER lff, REFIID riid, void** ppv) = 0;
  virtual HRESULT ResolveFolder(IShellItem* psiFolderToResolve, DWORD dwTimeout, REFIID riid,
                                void** ppv) = 0;
  virtual HRESULT GetDefaultSaveFolder(DEFAULTSAVEFOLDERTYPE dsft, REFIID riid, void** ppv) = 0;
  virtual HRESULT SetDefaultSaveFolder(DEFAULTSAVEFOLDERTYPE dsft, IShellItem* psi) = 0;
  virtual HRESULT GetOptions(LIBRARYOPTIONFLAGS* plofOptions) = 0;
  virtual HRESULT SetOptions(LIBRARYOPTIONFLAGS lofMask, LIBRARYOPTIONFLAGS lofOptions) = 0;
  virtual HRESULT GetFolderType(FOLDERTYPEID* pftid) = 0;
  virtual HRESULT SetFolderType(REFFOLDERTYPEID ftid) = 0;
  virtual HRESULT GetIcon(LPWSTR* ppszIcon) = 0;
  virtual HRESULT SetIcon(LPCWSTR pszIcon) = 0;
  virtual HRESULT Commit() = 0;
  virtual HRESULT Save(IShellItem* psiFolderToSaveIn, LPCWSTR pszLibraryName, LIBRARYSAVEFLAGS lsf,
                       IShellItem** ppsiSavedTo) = 0;
  virtual HRESULT SaveInKnownFolder(REFKNOWNFOLDERID kfidToSaveIn, LPCWSTR pszLibraryName,
                                    LIBRARYSAVEFLAGS lsf, IShellItem** ppsiSavedTo) = 0;
};

#pragma GCC diagnostic pop

#endif
