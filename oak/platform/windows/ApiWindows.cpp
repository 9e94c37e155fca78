// Binds the function table to Windows: functions that every supported version exports.
#include "oak/platform/Api.h"
#include "oak/platform/windows/LateBinding.h"

namespace oak::detail {
namespace {

// The address of the function itself: the compiler holds the table's signature against the
// system's declaration.
#define OAK_BIND(Name) api.Name.SetFunction(&::Name)

void BindLists(TApi& api) {
  OAK_BIND(ILClone);
  OAK_BIND(ILCloneFirst);
  // Not every SDK says that the lists are left alone.
  api.ILCombine.SetFunction([](PCIDLIST_ABSOLUTE first, PCUIDLIST_RELATIVE second) {
    return ::ILCombine(const_cast<PIDLIST_ABSOLUTE>(first), second);
  });
  api.ILFindChild.SetFunction([](PCIDLIST_ABSOLUTE parent, PCIDLIST_ABSOLUTE child) {
    return ::ILFindChild(const_cast<PIDLIST_ABSOLUTE>(parent), child);
  });
  OAK_BIND(ILFindLastID);
  OAK_BIND(ILGetNext);
  OAK_BIND(ILRemoveLastID);
  OAK_BIND(ILFree);
  OAK_BIND(ILIsEqual);
  OAK_BIND(ILIsParent);
  OAK_BIND(ILGetSize);
  OAK_BIND(ILCreateFromPathW);
}

void BindShell(TApi& api) {
  OAK_BIND(SHParseDisplayName);
  OAK_BIND(SHGetDesktopFolder);
  OAK_BIND(SHBindToParent);
  OAK_BIND(SHGetRealIDL);
  OAK_BIND(SHSimpleIDListFromPath);
  OAK_BIND(SHGetPathFromIDListW);
  OAK_BIND(SHGetIDListFromObject);
  OAK_BIND(SHGetDataFromIDListW);
  OAK_BIND(SHGetFileInfoW);
  OAK_BIND(SHGetSpecialFolderLocation);
  OAK_BIND(SHGetSpecialFolderPathW);
  OAK_BIND(SHGetKnownFolderPath);
  OAK_BIND(SHGetFolderPathW);
  OAK_BIND(SHCreateShellItem);
  OAK_BIND(SHCreateItemFromParsingName);
  OAK_BIND(SHChangeNotify);
  OAK_BIND(SHChangeNotifyRegister);
  OAK_BIND(SHChangeNotifyDeregister);
  OAK_BIND(SHChangeNotification_Unlock);
  OAK_BIND(ShellExecuteExW);
  OAK_BIND(ShellExecuteW);
  OAK_BIND(SHOpenFolderAndSelectItems);
  OAK_BIND(SHAutoComplete);
  OAK_BIND(DragQueryFileW);
  OAK_BIND(StrCmpLogicalW);
  OAK_BIND(PathMatchSpecW);
  OAK_BIND(PathCombineW);
  OAK_BIND(PathCanonicalizeW);
  OAK_BIND(SHCreateStreamOnFileEx);
}

void BindObjects(TApi& api) {
  OAK_BIND(CoCreateInstance);
  OAK_BIND(CreateBindCtx);
  OAK_BIND(CoInitializeEx);
  OAK_BIND(CoUninitialize);
  OAK_BIND(OleInitialize);
  OAK_BIND(OleUninitialize);
  OAK_BIND(ReleaseStgMedium);
  OAK_BIND(OleGetClipboard);
  OAK_BIND(OleSetClipboard);
  OAK_BIND(OleFlushClipboard);
  OAK_BIND(OleIsCurrentClipboard);
  api.VariantChangeType.SetFunction(
      [](VARIANT* target, const VARIANT* source, USHORT flags, VARTYPE type) {
        return ::VariantChangeType(target, const_cast<VARIANT*>(source), flags, type);
      });
}

void BindFiles(TApi& api) {
  OAK_BIND(FindFirstFileW);
  OAK_BIND(FindNextFileW);
  OAK_BIND(FindClose);
  OAK_BIND(GetFileAttributesW);
  OAK_BIND(GetFileAttributesExW);
  OAK_BIND(SetFileAttributesW);
  OAK_BIND(CreateDirectoryW);
  OAK_BIND(RemoveDirectoryW);
  OAK_BIND(DeleteFileW);
  OAK_BIND(MoveFileExW);
  OAK_BIND(CopyFileW);
  OAK_BIND(GetFullPathNameW);
  OAK_BIND(GetLongPathNameW);
  OAK_BIND(GetCurrentDirectoryW);
  OAK_BIND(GetTempPathW);
  OAK_BIND(GetTempFileNameW);
  OAK_BIND(GetWindowsDirectoryW);
  OAK_BIND(GetSystemDirectoryW);
  OAK_BIND(GetModuleFileNameW);
  OAK_BIND(CreateFileW);
  OAK_BIND(ReadFile);
  OAK_BIND(WriteFile);
  OAK_BIND(FlushFileBuffers);
  OAK_BIND(ReplaceFileW);
  OAK_BIND(CloseHandle);
  OAK_BIND(SetErrorMode);
}

void BindVolumes(TApi& api) {
  OAK_BIND(GetDriveTypeW);
  OAK_BIND(GetLogicalDrives);
  OAK_BIND(GetDiskFreeSpaceExW);
  OAK_BIND(GetVolumeInformationW);
  OAK_BIND(GetVolumeNameForVolumeMountPointW);
  OAK_BIND(GetVolumePathNameW);
  OAK_BIND(GetVolumePathNamesForVolumeNameW);
  OAK_BIND(FindFirstVolumeW);
  OAK_BIND(FindNextVolumeW);
  OAK_BIND(FindVolumeClose);
  OAK_BIND(WNetConnectionDialog);
  OAK_BIND(WNetGetConnectionW);
}

void BindSystem(TApi& api) {
  OAK_BIND(GetLastError);
  OAK_BIND(SetLastError);
  OAK_BIND(ExpandEnvironmentStringsW);
  OAK_BIND(GetEnvironmentVariableW);
  OAK_BIND(FormatMessageW);
  OAK_BIND(MultiByteToWideChar);
  OAK_BIND(WideCharToMultiByte);
  OAK_BIND(GetACP);
  OAK_BIND(LocalFree);
  OAK_BIND(LoadLibraryW);
  OAK_BIND(LoadLibraryExW);
  OAK_BIND(GetModuleHandleW);
  OAK_BIND(FreeLibrary);
  OAK_BIND(LoadStringW);
  OAK_BIND(OutputDebugStringW);
  OAK_BIND(GetUserDefaultLocaleName);
  OAK_BIND(GetDateFormatW);
  OAK_BIND(GetTimeFormatW);
  OAK_BIND(GetCurrentThreadId);
  OAK_BIND(GetCurrentProcessId);
  OAK_BIND(GetCurrentProcess);
  OAK_BIND(CreateThread);
  OAK_BIND(ResumeThread);
  OAK_BIND(TerminateThread);
  OAK_BIND(GetCurrentThread);
  OAK_BIND(GetThreadId);
  OAK_BIND(SetThreadPriority);
  OAK_BIND(WaitForSingleObject);
  OAK_BIND(GetSystemTimes);
  OAK_BIND(RegOpenKeyExW);
  OAK_BIND(RegQueryValueExW);
  OAK_BIND(RegEnumKeyExW);
  OAK_BIND(RegEnumValueW);
  // Not every SDK says that the security attributes are left alone.
  api.RegCreateKeyExW.SetFunction(
      [](HKEY key, LPCWSTR name, DWORD reserved, LPWSTR className, DWORD options, REGSAM access,
         const SECURITY_ATTRIBUTES* security, HKEY* result, DWORD* disposition) {
        return ::RegCreateKeyExW(key, name, reserved, className, options, access,
                                 const_cast<SECURITY_ATTRIBUTES*>(security), result, disposition);
      });
  OAK_BIND(RegSetValueExW);
  OAK_BIND(RegDeleteValueW);
  OAK_BIND(RegDeleteKeyExW);
  OAK_BIND(RegCloseKey);
}

void BindTime(TApi& api) {
  OAK_BIND(GetTickCount64);
  OAK_BIND(Sleep);
  OAK_BIND(GetSystemTimeAsFileTime);
  OAK_BIND(GetLocalTime);
  OAK_BIND(GetSystemTime);
  OAK_BIND(GetTimeZoneInformation);
  OAK_BIND(SystemTimeToFileTime);
  OAK_BIND(FileTimeToSystemTime);
  OAK_BIND(SystemTimeToTzSpecificLocalTime);
  OAK_BIND(TzSpecificLocalTimeToSystemTime);
  OAK_BIND(CompareFileTime);
}

void BindWindows(TApi& api) {
  OAK_BIND(CreatePopupMenu);
  OAK_BIND(DestroyMenu);
  OAK_BIND(InsertMenuW);
  OAK_BIND(DeleteMenu);
  OAK_BIND(GetMenuItemCount);
  OAK_BIND(GetMenuItemID);
  OAK_BIND(GetMenuStringW);
  OAK_BIND(GetMenuDefaultItem);
  OAK_BIND(SetMenuDefaultItem);
  OAK_BIND(GetSubMenu);
  OAK_BIND(DestroyIcon);
  OAK_BIND(SendMessageW);
  OAK_BIND(RegisterClipboardFormatW);
  OAK_BIND(IsClipboardFormatAvailable);
  OAK_BIND(GlobalAlloc);
  OAK_BIND(GlobalFree);
  OAK_BIND(GlobalLock);
  OAK_BIND(GlobalUnlock);
  OAK_BIND(GlobalSize);
  OAK_BIND(keybd_event);
  OAK_BIND(MapVirtualKeyW);
  OAK_BIND(PostMessageW);
}

#undef OAK_BIND

}  // namespace

void SetLastErrorDirect(DWORD code) noexcept { ::SetLastError(code); }
DWORD GetLastErrorDirect() noexcept { return ::GetLastError(); }

void BindPlatform(TApi& api) {
  BindLists(api);
  BindShell(api);
  BindObjects(api);
  BindFiles(api);
  BindVolumes(api);
  BindSystem(api);
  BindTime(api);
  BindWindows(api);
  BindLate(api);
}

}  // namespace oak::detail
