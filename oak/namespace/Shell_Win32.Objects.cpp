// Small services over objects of the shell.
#include "oak/namespace/Shell_Win32.h"
#include "oak/base/Exceptions.h"
#include "oak/base/Handles.h"
#include "oak/namespace/ErrorMode.h"
#include "oak/namespace/Oak.Shell.PathUtils.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

struct TFileTraits {
  using Type = HANDLE;
  static Type Invalid() noexcept { return INVALID_HANDLE_VALUE; }
  static void Close(Type handle) noexcept { Api().CloseHandle(handle); }
};
using TFileHandle = TUniqueHandle<TFileTraits>;

Ref<IShellItem> ItemOf(PCItemIdList pItemIdList) {
  Ref<IShellItem> item;
  const HRESULT result =
      Api().SHCreateItemFromIDList
          ? Api().SHCreateItemFromIDList(pItemIdList, IidOf<IShellItem>(), item.PutVoid())
          : Api().SHCreateShellItem(nullptr, nullptr, pItemIdList, item.Put());
  return SUCCEEDED(result) ? item : nullptr;
}

TString FileSystemPath(const Ref<IShellItem>& pItem) {
  TTaskMemory<WCHAR> path;
  if (!pItem || FAILED(pItem->GetDisplayName(SIGDN_FILESYSPATH, path.Put()))) return {};
  return FromW(path.Get());
}

/// Makes the empty file that the assistant fills. A file of the user's is never
/// taken: the assistant deletes its file when the user gives up.
TString CreateNewShortcutFile(TStringView pFolder) {
  constexpr int mostTries = 1000;
  const TString folder = IncludeTrailingPathDelimiter(pFolder);
  for (int i = 0; i < mostTries; ++i) {
    const TString number = i == 0 ? TString() : u" (" + IntToStr(i) + u")";
    const TString path = folder + u"newShortcut" + number + u".lnk";
    const auto file = TFileHandle::Adopt(
        Api().CreateFileW(W(TPathUtils::GetUnicodeAPICallPath(path, true, false)), GENERIC_WRITE, 0,
                          nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (file) return path;
    const DWORD error = Api().GetLastError();
    if (error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS) break;
  }
  return {};
}

}  // namespace

Ref<IShellLinkW> GetIShellLink(TStringView pPath) {
  const TErrorMode quiet;
  const TString path(pPath);
  Ref<IShellLinkW> link;
  if (FAILED(Api().CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER,
                                    IidOf<IShellLinkW>(), link.PutVoid())) ||
      !link)
    return nullptr;
  const Ref<IPersistFile> file = link.As<IPersistFile>();
  if (!file || FAILED(file->Load(W(path), STGM_READ))) return nullptr;
  return link;
}

TString GetDomainFromIdList(IShellFolder* pShellFolder, PCItemIdList pItemIdList) {
  if (!pShellFolder || !pItemIdList || !Api().SHGetDataFromIDListW) return {};
  // The structure, and behind it the texts that it points to.
  struct TData {
    NETRESOURCEW Resource;
    WCHAR Texts[2048];
  } data{};
  if (FAILED(Api().SHGetDataFromIDListW(pShellFolder, pItemIdList, SHGDFIL_NETRESOURCE, &data,
                                        static_cast<int>(sizeof(data)))))
    return {};
  data.Texts[std::size(data.Texts) - 1] = 0;
  return FromW(data.Resource.lpRemoteName);
}

TString GetDefaultSavePathFromLibrary(PCItemIdList pItemIdList) {
  if (!pItemIdList) return {};
  const TErrorMode quiet;
  const Ref<IShellItem> item = ItemOf(pItemIdList);
  Ref<IShellLibrary> library;
  Ref<IShellItem> folder;
  if (!item ||
      FAILED(Api().CoCreateInstance(CLSID_ShellLibrary, nullptr, CLSCTX_INPROC_SERVER,
                                    IidOf<IShellLibrary>(), library.PutVoid())) ||
      !library || FAILED(library->LoadLibraryFromItem(item.Get(), STGM_READ)) ||
      FAILED(library->GetDefaultSaveFolder(DSFT_DETECT, IidOf<IShellItem>(), folder.PutVoid())))
    return {};
  return FileSystemPath(folder);
}

bool RunShellExecuteEx(HWND pWindow, TStringView pVerb, TStringView pFile, TStringView pParameters,
                       TStringView pDirectory, int pShowCommand) {
  const TString verb(pVerb);
  const TString file(pFile);
  const TString parameters(pParameters);
  const TString directory(pDirectory);
  const auto textOrNil = [](const TString& text) { return text.empty() ? nullptr : W(text); };
  SHELLEXECUTEINFOW info{};
  info.cbSize = sizeof(info);
  info.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
  info.hwnd = pWindow;
  info.lpVerb = textOrNil(verb);
  info.lpFile = W(file);
  info.lpParameters = textOrNil(parameters);
  info.lpDirectory = textOrNil(directory);
  info.nShow = pShowCommand;
  return Api().ShellExecuteExW && Api().ShellExecuteExW(&info);
}

bool CreateShortcutShowDialog(TStringView pShortcutPath) {
  if (pShortcutPath.empty()) throw EArgumentException(u"pShortcutPath is empty");
  const TString file = CreateNewShortcutFile(pShortcutPath);
  if (file.empty()) return false;
  if (RunShellExecuteEx(nullptr, {}, u"rundll32.exe", u"AppWiz.Cpl, NewLinkHere " + file))
    return true;
  Api().DeleteFileW(W(TPathUtils::GetUnicodeAPICallPath(file, true, false)));
  return false;
}

}  // namespace oak
