#include "oak/platform/windows/LateBinding.h"

#include "oak/platform/Api.h"

namespace oak::detail {
namespace {

/// From this build on the system has dark mode.
constexpr DWORD FirstDarkModeBuild = 17135;

/// Libraries of the system's directory only, never one that lies beside the program.
HMODULE Library(const wchar_t* name) {
  const HMODULE module = ::LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
  return module ? module : ::LoadLibraryW(name);  // systems that do not know the flag
}

template <class Signature>
bool BindAddress(TApiEntry<Signature>& entry, FARPROC address) {
  if (!address) return false;
  using TFunction = typename TApiEntry<Signature>::TFunction;
  entry.SetFunction(reinterpret_cast<TFunction>(reinterpret_cast<void*>(address)));
  return true;
}

template <class Signature>
bool BindName(TApiEntry<Signature>& entry, HMODULE library) {
  return library && BindAddress(entry, ::GetProcAddress(library, entry.Name()));
}

template <class Signature>
bool BindOrdinal(TApiEntry<Signature>& entry, HMODULE library, WORD ordinal) {
  return library && BindAddress(entry, ::GetProcAddress(library, MAKEINTRESOURCEA(ordinal)));
}

bool IsWine() {
  const HMODULE ntdll = ::GetModuleHandleW(L"ntdll.dll");
  return ntdll && ::GetProcAddress(ntdll, "wine_get_version");
}

DWORD BuildNumber(const TApi& api) {
  OSVERSIONINFOW version{};
  version.dwOSVersionInfoSize = sizeof version;
  const auto ask = api.RtlGetVersion.Function();
  return ask && ask(&version) == 0 ? version.dwBuildNumber : 0;
}

void BindShellLibrary(TApi& api) {
  const HMODULE shell = Library(L"shell32.dll");
  BindName(api.SHBindToObject, shell);
  BindName(api.SHGetPathFromIDListEx, shell);
  BindName(api.SHGetNameFromIDList, shell);
  BindName(api.SHGetKnownFolderIDList, shell);
  BindName(api.SHCreateItemFromIDList, shell);
  BindName(api.SHCreateItemFromRelativeName, shell);
  BindName(api.SHCreateItemWithParent, shell);
  BindName(api.SHCreateShellItemArray, shell);
  BindName(api.SHCreateShellItemArrayFromShellItem, shell);
  BindName(api.SHCreateShellItemArrayFromIDLists, shell);
  BindName(api.SHCreateShellItemArrayFromDataObject, shell);
  BindName(api.SHCreateDataObject, shell);
  BindName(api.SHChangeNotification_Lock, shell);
  BindName(api.SHQueryRecycleBinW, shell);
  BindName(api.SHGetSetSettings, shell);
  BindName(api.SHDoDragDrop, shell);
  BindName(api.SHMultiFileProperties, shell);
  BindName(api.CIDLData_CreateFromIDArray, shell);
  BindName(api.IsUserAnAdmin, shell);
  // Exported without a name by older systems.
  BindOrdinal(api.SHGetImageList, shell, 727);
  BindOrdinal(api.FileIconInit, shell, 660);
  BindOrdinal(api.CDefFolderMenu_Create2, shell, 701);
}

void BindTextLibrary(TApi& api) {
  const HMODULE library = Library(L"shlwapi.dll");
  BindName(api.StrRetToStrW, library);
  BindName(api.StrFormatByteSizeW, library);
  BindName(api.StrFormatKBSizeW, library);
  BindName(api.StrFormatByteSizeEx, library);
  BindName(api.SHCreateThreadRef, library);
  BindName(api.SHSetThreadRef, library);
  BindName(api.SHReleaseThreadRef, library);
  BindName(api.IStream_Size, library);
}

void BindPropertyLibrary(TApi& api) {
  const HMODULE library = Library(L"propsys.dll");
  BindName(api.PSGetPropertySystem, library);
  BindName(api.PSGetPropertyDescription, library);
  BindName(api.PSGetPropertyKeyFromName, library);
  BindName(api.PSGetNameFromPropertyKey, library);
  BindName(api.PSFormatForDisplayAlloc, library);
  BindName(api.PSCreatePropertyChangeArray, library);
  BindName(api.PropVariantCompareEx, library);
  BindName(api.PropVariantChangeType, library);
  BindName(api.PropVariantToStringWithDefault, library);
  BindName(api.PropVariantToStringAlloc, library);
  BindName(api.PropVariantToVariant, library);
  BindName(api.VariantToPropVariant, library);
  BindName(api.VariantCompare, library);
}

void BindSystemLibraries(TApi& api) {
  const HMODULE native = Library(L"ntdll.dll");
  BindName(api.RtlGetVersion, native);
  BindName(api.NtQuerySystemInformation, native);
  const HMODULE kernel = Library(L"kernel32.dll");
  if (!BindName(api.SetThreadDescription, kernel))
    BindName(api.SetThreadDescription, Library(L"kernelbase.dll"));
  BindName(api.Wow64DisableWow64FsRedirection, kernel);
  BindName(api.Wow64RevertWow64FsRedirection, kernel);
  BindName(api.IsWow64Process, kernel);
  const HMODULE user = Library(L"user32.dll");
  BindName(api.GetThreadDpiAwarenessContext, user);
  BindName(api.GetAwarenessFromDpiAwarenessContext, user);
  BindName(api.AreDpiAwarenessContextsEqual, user);
  BindName(api.GetProcessDpiAwareness, Library(L"shcore.dll"));
  BindName(api.SetWindowTheme, Library(L"uxtheme.dll"));
}

void BindDarkMode(TApi& api) {
  if (BuildNumber(api) < FirstDarkModeBuild) return;
  const HMODULE library = Library(L"uxtheme.dll");
  if (!BindName(api.AllowDarkModeForWindow, library))
    BindOrdinal(api.AllowDarkModeForWindow, library, 133);
  if (!BindName(api.ShouldAppsUseDarkMode, library))
    BindOrdinal(api.ShouldAppsUseDarkMode, library, 132);
}

/// Wine exports these but ends the program when one is called.
void DropStubs(TApi& api) {
  api.PSGetNameFromPropertyKey.SetFunction(nullptr);
  api.PSFormatForDisplayAlloc.SetFunction(nullptr);
  api.PSCreatePropertyChangeArray.SetFunction(nullptr);
  api.PropVariantToVariant.SetFunction(nullptr);
  api.VariantToPropVariant.SetFunction(nullptr);
  api.VariantCompare.SetFunction(nullptr);
  api.StrFormatByteSizeEx.SetFunction(nullptr);
  api.SHCreateItemWithParent.SetFunction(nullptr);
}

bool StartsWithSlash(LPCWSTR text) { return text && *text == L'/'; }

PIDLIST_ABSOLUTE STDAPICALLTYPE CreateFromGuardedPath(LPCWSTR path) {
  return StartsWithSlash(path) ? nullptr : ::ILCreateFromPathW(path);
}

HRESULT STDAPICALLTYPE ParseGuardedName(LPCWSTR name, IBindCtx* context, PIDLIST_ABSOLUTE* pidl,
                                        SFGAOF mask, SFGAOF* attributes) {
  if (!StartsWithSlash(name)) return ::SHParseDisplayName(name, context, pidl, mask, attributes);
  *pidl = nullptr;
  return E_INVALIDARG;
}

/// Wine's parser ends the program for a text that begins with "/".
void GuardParser(TApi& api) {
  api.ILCreateFromPathW.SetFunction(&CreateFromGuardedPath);
  api.SHParseDisplayName.SetFunction(&ParseGuardedName);
}

}  // namespace

void BindLate(TApi& api) {
  BindSystemLibraries(api);
  BindShellLibrary(api);
  BindTextLibrary(api);
  BindPropertyLibrary(api);
  BindDarkMode(api);
  if (!IsWine()) return;
  DropStubs(api);
  GuardParser(api);
}

}  // namespace oak::detail
