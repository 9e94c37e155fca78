// The shell's functions: lists, names and places.
#include <algorithm>

#include "oak/platform/Api.h"
#include "oak/platform/portable/PortableBinding.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/PortableKnownFolders.h"
#include "oak/platform/portable/ShellFolder.h"
#include "oak/platform/portable/ShellFunctions.h"
#include "oak/platform/portable/ShellItem.h"
#include "oak/platform/portable/ShellKnownFolders.h"
#include "oak/platform/portable/ShellPidl.h"

namespace oak {

namespace {

HRESULT ParseWithContext(LPCWSTR name, IBindCtx* context, TPidl& list) {
  if (!name) return E_INVALIDARG;
  WIN32_FIND_DATAW data;
  TParseOptions options;
  if (FindDataOf(context, data)) options.FindData = &data;
  return ParseAbsolute(name, options, list);
}

HRESULT STDAPICALLTYPE SHParseDisplayName(LPCWSTR name, IBindCtx* context, PIDLIST_ABSOLUTE* pidl,
                                          SFGAOF mask, SFGAOF* attributes) {
  return PortableCall("SHParseDisplayName", [&]() -> HRESULT {
    if (!pidl) return E_POINTER;
    *pidl = nullptr;
    if (attributes) *attributes = 0;
    TPidl list;
    HRESULT result = ParseWithContext(name, context, list);
    DWORD found = 0;
    if (SUCCEEDED(result) && attributes && mask)
      result = AttributesOfList(TFolderNode::Desktop(), list.Get(), mask, found);
    if (FAILED(result)) return result;
    if (attributes) *attributes = found;
    *pidl = list.Detach();
    return S_OK;
  });
}

PIDLIST_ABSOLUTE STDAPICALLTYPE ILCreateFromPathW(LPCWSTR path) {
  return ShellCall<PIDLIST_ABSOLUTE>(nullptr, [&]() -> PIDLIST_ABSOLUTE {
    TPidl list;
    return path && *path && SUCCEEDED(ParseAbsolute(path, {}, list)) ? list.Detach() : nullptr;
  });
}

// A path that ends in a delimiter is taken for a folder, any other for a file.
PIDLIST_ABSOLUTE STDAPICALLTYPE SHSimpleIDListFromPath(LPCWSTR path) {
  return ShellCall<PIDLIST_ABSOLUTE>(nullptr, [&]() -> PIDLIST_ABSOLUTE {
    if (!path || !*path) return nullptr;
    WIN32_FIND_DATAW data{};
    data.dwFileAttributes =
        EndsWith(path, u"\\") ? 0x10 : 0x80;  // FILE_ATTRIBUTE_DIRECTORY, _NORMAL
    TParseOptions options;
    options.FindData = &data;
    TPidl list;
    return SUCCEEDED(ParseAbsolute(path, options, list)) ? list.Detach() : nullptr;
  });
}

HRESULT STDAPICALLTYPE SHGetDesktopFolder(IShellFolder** folder) {
  return PortableCall("SHGetDesktopFolder", [&]() -> HRESULT {
    if (!folder) return E_POINTER;
    return MakeFolderObject(TFolderNode::Desktop(), IID_IShellFolder,
                            reinterpret_cast<void**>(folder));
  });
}

HRESULT STDAPICALLTYPE SHBindToParent(PCIDLIST_ABSOLUTE pidl, REFIID iid, void** out,
                                      PCUITEMID_CHILD* last) {
  return PortableCall("SHBindToParent", [&]() -> HRESULT {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (last) *last = nullptr;
    Ref<TFolderNode> parent;
    PCUITEMID_CHILD child = nullptr;
    HRESULT result = BindParent(TFolderNode::Desktop(), pidl, parent, child);
    if (SUCCEEDED(result)) result = MakeFolderObject(parent, iid, out);
    if (SUCCEEDED(result) && last) *last = child;
    return result;
  });
}

HRESULT STDAPICALLTYPE SHBindToObject(IShellFolder* folder, PCUIDLIST_RELATIVE pidl,
                                      IBindCtx* context, REFIID iid, void** out) {
  return PortableCall("SHBindToObject", [&]() -> HRESULT {
    if (!out) return E_POINTER;
    *out = nullptr;
    Ref<IShellFolder> start = Ref<IShellFolder>::Share(folder);
    if (!start) {
      const HRESULT result = SHGetDesktopFolder(start.Put());
      if (FAILED(result)) return result;
    }
    if (!pidl || IsEmptyPidl(pidl)) return start->QueryInterface(iid, out);
    return start->BindToObject(pidl, context, iid, out);
  });
}

// A list made without looking gets what the system knows of the object.
HRESULT STDAPICALLTYPE SHGetRealIDL(IShellFolder* folder, PCUITEMID_CHILD simple,
                                    PITEMID_CHILD* real) {
  return PortableCall("SHGetRealIDL", [&]() -> HRESULT {
    if (!folder || !real) return E_POINTER;
    *real = nullptr;
    Ref<TFolderNode> node;
    HRESULT result = NodeOf(folder, node);
    if (FAILED(result)) return result;
    if (!ElementKind(simple)) return E_INVALIDARG;
    TString name;
    TPidl found;
    result = node->GetName(simple, TNameForm::Parsing, name);
    if (SUCCEEDED(result)) result = node->SourceOf(simple).ParseName(name, {}, found);
    if (FAILED(result)) found = CopyElement(simple);
    *real = found.Detach();
    return S_OK;
  });
}

// --- names of lists -------------------------------------------------------------------

HRESULT NameOfList(PCIDLIST_ABSOLUTE pidl, SIGDN form, TString& name) {
  if (!pidl) return E_INVALIDARG;
  if (IsEmptyPidl(pidl)) return NameOfChild(nullptr, nullptr, form, name);
  Ref<TFolderNode> parent;
  PCUITEMID_CHILD child = nullptr;
  const HRESULT result = BindParent(TFolderNode::Desktop(), pidl, parent, child);
  return SUCCEEDED(result) ? NameOfChild(parent.Get(), child, form, name) : result;
}

BOOL STDAPICALLTYPE SHGetPathFromIDListEx(PCIDLIST_ABSOLUTE pidl, LPWSTR path, DWORD size, int) {
  return ShellCall<BOOL>(FALSE, [&]() -> BOOL {
    if (!path || size == 0) return FALSE;
    *path = 0;
    TString name;
    if (FAILED(NameOfList(pidl, SIGDN_FILESYSPATH, name)) || name.empty() || name.size() >= size)
      return FALSE;
    std::copy_n(name.c_str(), name.size() + 1, path);
    return TRUE;
  });
}

BOOL STDAPICALLTYPE SHGetPathFromIDListW(PCIDLIST_ABSOLUTE pidl, LPWSTR path) {
  return SHGetPathFromIDListEx(pidl, path, MAX_PATH, 0);
}

HRESULT STDAPICALLTYPE SHGetNameFromIDList(PCIDLIST_ABSOLUTE pidl, SIGDN form, LPWSTR* name) {
  return PortableCall("SHGetNameFromIDList", [&]() -> HRESULT {
    if (!name) return E_POINTER;
    *name = nullptr;
    TString text;
    const HRESULT result = NameOfList(pidl, form, text);
    if (SUCCEEDED(result)) *name = TaskText(text);
    return result;
  });
}

HRESULT STDAPICALLTYPE SHGetIDListFromObject(IUnknown* object, PIDLIST_ABSOLUTE* pidl) {
  return PortableCall("SHGetIDListFromObject", [&]() -> HRESULT {
    if (!pidl) return E_POINTER;
    *pidl = nullptr;
    TPidl list;
    const HRESULT result = ListOfObject(object, list);
    if (SUCCEEDED(result)) *pidl = list.Detach();
    return result;
  });
}

// --- special and known folders ------------------------------------------------------------

HRESULT STDAPICALLTYPE SHGetSpecialFolderLocation(HWND, int csidl, PIDLIST_ABSOLUTE* pidl) {
  return PortableCall("SHGetSpecialFolderLocation", [&]() -> HRESULT {
    if (!pidl) return E_POINTER;
    *pidl = nullptr;
    TPidl list;
    const HRESULT result = SpecialFolderList(csidl, list);
    if (SUCCEEDED(result)) *pidl = list.Detach();
    return result;
  });
}

HRESULT STDAPICALLTYPE SHGetKnownFolderIDList(REFKNOWNFOLDERID id, DWORD flags, HANDLE,
                                              PIDLIST_ABSOLUTE* pidl) {
  return PortableCall("SHGetKnownFolderIDList", [&]() -> HRESULT {
    if (!pidl) return E_POINTER;
    *pidl = nullptr;
    const TKnownFolder* folder = FindKnownFolder(id);
    if (!folder) return HRESULT_FROM_WIN32(2);  // ERROR_FILE_NOT_FOUND
    TPidl list;
    const HRESULT result = KnownFolderList(*folder, flags, list);
    if (SUCCEEDED(result)) *pidl = list.Detach();
    return result;
  });
}

HRESULT STDAPICALLTYPE SHGetKnownFolderPath(REFKNOWNFOLDERID id, DWORD flags, HANDLE,
                                            LPWSTR* path) {
  return PortableCall("SHGetKnownFolderPath", [&]() -> HRESULT {
    if (!path) return E_POINTER;
    *path = nullptr;
    TString text;
    const HRESULT result = KnownFolderDirectory(id, flags, text);
    if (SUCCEEDED(result)) *path = TaskText(text);
    return result;
  });
}

HRESULT STDAPICALLTYPE SHGetFolderPathW(HWND, int csidl, HANDLE, DWORD, LPWSTR path) {
  return PortableCall("SHGetFolderPathW", [&]() -> HRESULT {
    if (!path) return E_INVALIDARG;
    *path = 0;
    const TKnownFolder* folder = FindKnownFolderByCsidl(csidl & 0xFF);
    if (!folder) return E_INVALIDARG;
    TString text;
    const HRESULT result = KnownFolderDirectory(folder->Id, static_cast<DWORD>(csidl), text);
    if (FAILED(result)) return result;
    if (text.size() >= MAX_PATH) return HRESULT_FROM_WIN32(122);  // ERROR_INSUFFICIENT_BUFFER
    std::copy_n(text.c_str(), text.size() + 1, path);
    return S_OK;
  });
}

BOOL STDAPICALLTYPE SHGetSpecialFolderPathW(HWND window, LPWSTR path, int csidl, BOOL create) {
  const int flags = create ? CSIDL_FLAG_CREATE : 0;
  return SUCCEEDED(SHGetFolderPathW(window, (csidl & 0xFF) | flags, nullptr, 0, path)) ? TRUE
                                                                                       : FALSE;
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&(Name))

void BindShellNames(TApi& api) {
  BIND(SHParseDisplayName);
  BIND(ILCreateFromPathW);
  BIND(SHSimpleIDListFromPath);
  BIND(SHGetDesktopFolder);
  BIND(SHBindToParent);
  BIND(SHBindToObject);
  BIND(SHGetRealIDL);
  BIND(SHGetPathFromIDListEx);
  BIND(SHGetPathFromIDListW);
  BIND(SHGetNameFromIDList);
  BIND(SHGetIDListFromObject);
  BIND(SHGetSpecialFolderLocation);
  BIND(SHGetSpecialFolderPathW);
  BIND(SHGetKnownFolderIDList);
  BIND(SHGetKnownFolderPath);
  BIND(SHGetFolderPathW);
}

#undef BIND

void BindPortableShell(TApi& api) {
  BindShellLists(api);
  BindShellNames(api);
  BindShellItems(api);
  BindShellInfo(api);
  BindShellImages(api);
}

}  // namespace oak
