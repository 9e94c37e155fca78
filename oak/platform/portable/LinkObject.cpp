// The class behind CLSID_ShellLink: a shortcut in memory, loaded from and saved to
// .lnk files.
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>

#include "oak/base/InterfacedObject.h"
#include "oak/platform/portable/LinkFile.h"
#include "oak/platform/portable/LinkFormat.h"
#include "oak/platform/portable/LinkObject.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/PortableClasses.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/PortableShell.h"

namespace oak {
namespace {

/// Shortcuts are small; a file beyond this is none.
constexpr std::uintmax_t LargestLink = 16 * 1024 * 1024;

/// Copies a text as the interface wants it: cut to the buffer, always ended.
HRESULT CopyText(const std::optional<TString>& text, LPWSTR buffer, int capacity) {
  if (!buffer || capacity <= 0) return E_INVALIDARG;
  const TStringView cut =
      text ? TStringView(*text).substr(0, static_cast<std::size_t>(capacity) - 1) : TStringView();
  cut.copy(buffer, cut.size());
  buffer[cut.size()] = 0;
  return S_OK;
}

void SetText(std::optional<TString>& text, LPCWSTR value) {
  if (value && *value)
    text = FromW(value);
  else
    text.reset();
}

HRESULT ReadFile(const std::string& native, std::vector<BYTE>& bytes) {
  std::error_code failure;
  const std::uintmax_t size = std::filesystem::file_size(native, failure);
  if (failure) return HRESULT_FROM_WIN32(Win32FromErrno(failure.value()));
  if (size > LargestLink) return HRESULT_FROM_WIN32(ERROR_BAD_FORMAT);
  std::ifstream file(native, std::ios::binary);
  if (!file) return HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED);
  bytes.assign(std::istreambuf_iterator<char>(file), {});
  return S_OK;
}

/// Writes beside the file and then replaces it: a full disk must not cost the old
/// shortcut.
HRESULT WriteFile(const std::string& native, const std::vector<BYTE>& bytes) {
  const std::string unfinished = native + ".new";
  std::ofstream file(unfinished, std::ios::binary | std::ios::trunc);
  if (!file) return HRESULT_FROM_WIN32(Win32FromErrno(errno));
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  file.close();
  std::error_code failure;
  if (!file) {
    std::filesystem::remove(unfinished, failure);
    return STG_E_MEDIUMFULL;
  }
  std::filesystem::rename(unfinished, native, failure);
  if (!failure) return S_OK;
  const DWORD code = Win32FromErrno(failure.value());
  std::filesystem::remove(unfinished, failure);
  return HRESULT_FROM_WIN32(code);
}

/// Copies a shell's list so that its elements are known to be ours: the header of
/// each is looked at. A list of another shell gives nil.
TPidl OwnPidl(PCItemIdList pidl) {
  for (PCItemIdList element = pidl; element && element->mkid.cb;
       element = reinterpret_cast<PCItemIdList>(reinterpret_cast<const BYTE*>(element) +
                                                element->mkid.cb))
    if (ElementKind(element) == 0) return {};
  return TPidl::Copy(pidl);
}

class TShellLink final : public TInterfacedObject<IShellLinkW, IPersistFile> {
 public:
  // --- IShellLinkW -----------------------------------------------------------
  HRESULT GetPath(LPWSTR file, int capacity, WIN32_FIND_DATAW* data, DWORD flags) override {
    return PortableCall("IShellLink::GetPath", [&]() -> HRESULT {
      const std::lock_guard guard(fLock);
      const TString path = (flags & SLGP_RAWPATH) && !fLink.EnvironmentTarget.empty()
                               ? fLink.EnvironmentTarget
                               : TargetPath();
      if (data) FillFindData(*data, path);
      const HRESULT result = CopyText(path, file, capacity);
      return result == S_OK && path.empty() ? S_FALSE : result;
    });
  }
  HRESULT GetIDList(PIDLIST_ABSOLUTE* pidl) override {
    return PortableCall("IShellLink::GetIDList", [&]() -> HRESULT {
      if (!pidl) return E_POINTER;
      *pidl = nullptr;
      TString path;
      {
        const std::lock_guard guard(fLock);
        TPidl own = fLink.Target ? OwnPidl(fLink.Target.Get()) : TPidl();
        if (own) {
          *pidl = own.Detach();
          return S_OK;
        }
        path = TargetPath();
      }
      if (path.empty()) return S_FALSE;
      // Made by another shell: the path is what both understand.
      *pidl = Api().SHSimpleIDListFromPath(W(path));
      return *pidl ? S_OK : S_FALSE;
    });
  }
  HRESULT SetIDList(PCIDLIST_ABSOLUTE pidl) override {
    return PortableCall("IShellLink::SetIDList", [&]() -> HRESULT {
      TString path(32768, u'\0');
      const bool hasPath = pidl && Api().SHGetPathFromIDListW(pidl, WBuffer(path));
      const std::lock_guard guard(fLock);
      fLink.Target = TPidl::Copy(pidl);
      SetTargetPath(hasPath ? TString(path.c_str()) : TString());
      fIsDirty = true;
      return S_OK;
    });
  }
  HRESULT GetDescription(LPWSTR name, int capacity) override {
    return Get("IShellLink::GetDescription", &TLinkFile::Description, name, capacity);
  }
  HRESULT SetDescription(LPCWSTR name) override {
    return Set("IShellLink::SetDescription", &TLinkFile::Description, name);
  }
  HRESULT GetWorkingDirectory(LPWSTR directory, int capacity) override {
    return Get("IShellLink::GetWorkingDirectory", &TLinkFile::WorkingDirectory, directory,
               capacity);
  }
  HRESULT SetWorkingDirectory(LPCWSTR directory) override {
    return Set("IShellLink::SetWorkingDirectory", &TLinkFile::WorkingDirectory, directory);
  }
  HRESULT GetArguments(LPWSTR arguments, int capacity) override {
    return Get("IShellLink::GetArguments", &TLinkFile::Arguments, arguments, capacity);
  }
  HRESULT SetArguments(LPCWSTR arguments) override {
    return Set("IShellLink::SetArguments", &TLinkFile::Arguments, arguments);
  }
  HRESULT GetHotkey(WORD* hotkey) override {
    return PortableCall("IShellLink::GetHotkey", [&]() -> HRESULT {
      if (!hotkey) return E_POINTER;
      const std::lock_guard guard(fLock);
      *hotkey = fLink.Hotkey;
      return S_OK;
    });
  }
  HRESULT SetHotkey(WORD hotkey) override {
    return Change("IShellLink::SetHotkey", [&] { fLink.Hotkey = hotkey; });
  }
  HRESULT GetShowCmd(int* command) override {
    return PortableCall("IShellLink::GetShowCmd", [&]() -> HRESULT {
      if (!command) return E_POINTER;
      const std::lock_guard guard(fLock);
      *command = static_cast<int>(fLink.ShowCommand);
      return S_OK;
    });
  }
  HRESULT SetShowCmd(int command) override {
    return Change("IShellLink::SetShowCmd",
                  [&] { fLink.ShowCommand = static_cast<DWORD>(command); });
  }
  HRESULT GetIconLocation(LPWSTR path, int capacity, int* index) override {
    return PortableCall("IShellLink::GetIconLocation", [&]() -> HRESULT {
      if (!index) return E_POINTER;
      const std::lock_guard guard(fLock);
      *index = fLink.IconIndex;
      return CopyText(fLink.IconLocation, path, capacity);
    });
  }
  HRESULT SetIconLocation(LPCWSTR path, int index) override {
    return Change("IShellLink::SetIconLocation", [&] {
      SetText(fLink.IconLocation, path);
      fLink.IconIndex = index;
    });
  }
  HRESULT SetRelativePath(LPCWSTR path, DWORD) override {
    return Set("IShellLink::SetRelativePath", &TLinkFile::RelativePath, path);
  }
  HRESULT Resolve(HWND, DWORD) override {
    return PortableCall("IShellLink::Resolve", [&]() -> HRESULT {
      TString path;
      {
        const std::lock_guard guard(fLock);
        path = TargetPath();
        if (path.empty()) return fLink.Target ? S_OK : S_FALSE;
      }
      const std::optional<std::string> native = NativePath(path);
      return native && GetFileInfo(*native, true) ? S_OK : HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    });
  }
  HRESULT SetPath(LPCWSTR file) override {
    return PortableCall("IShellLink::SetPath", [&]() -> HRESULT {
      const TString path = FromW(file);
      TPidl pidl = path.empty() ? TPidl() : TPidl::Adopt(Api().SHSimpleIDListFromPath(W(path)));
      const std::lock_guard guard(fLock);
      fLink.Target = std::move(pidl);
      SetTargetPath(path);
      fIsDirty = true;
      return S_OK;
    });
  }

  // --- IPersistFile ------------------------------------------------------------
  HRESULT GetClassID(CLSID* clsid) override {
    return PortableCall("IPersistFile::GetClassID", [&]() -> HRESULT {
      if (!clsid) return E_POINTER;
      *clsid = lnk::ClassId;
      return S_OK;
    });
  }
  HRESULT IsDirty() override {
    const std::lock_guard guard(fLock);
    return fIsDirty ? S_OK : S_FALSE;
  }
  HRESULT Load(LPCOLESTR fileName, DWORD) override {
    return PortableCall("IPersistFile::Load", [&]() -> HRESULT {
      const TString path = FromW(fileName);
      DWORD error = ERROR_PATH_NOT_FOUND;
      const std::optional<std::string> native = NativePath(path, &error);
      if (!native) return HRESULT_FROM_WIN32(error);
      std::vector<BYTE> bytes;
      TLinkFile link;
      HRESULT result = ReadFile(*native, bytes);
      if (SUCCEEDED(result)) result = ReadLinkFile(bytes, link);
      if (FAILED(result)) return result;
      const std::lock_guard guard(fLock);
      fLink = std::move(link);
      fFileName = path;
      fIsDirty = false;
      return S_OK;
    });
  }
  HRESULT Save(LPCOLESTR fileName, BOOL remember) override {
    return PortableCall("IPersistFile::Save", [&]() -> HRESULT {
      const std::lock_guard guard(fLock);
      const TString path = fileName ? FromW(fileName) : fFileName;
      DWORD error = ERROR_PATH_NOT_FOUND;
      const std::optional<std::string> native = NativePath(path, &error);
      if (path.empty() || !native) return HRESULT_FROM_WIN32(error);
      const HRESULT result = WriteFile(*native, WriteLinkFile(fLink));
      if (FAILED(result)) return result;
      if (!fileName || remember) {
        fFileName = path;
        fIsDirty = false;
      }
      return S_OK;
    });
  }
  HRESULT SaveCompleted(LPCOLESTR) override { return S_OK; }
  HRESULT GetCurFile(LPOLESTR* fileName) override {
    return PortableCall("IPersistFile::GetCurFile", [&]() -> HRESULT {
      if (!fileName) return E_POINTER;
      const std::lock_guard guard(fLock);
      const std::size_t bytes = (fFileName.size() + 1) * sizeof(WCHAR);
      *fileName = static_cast<LPOLESTR>(CoTaskMemAlloc(bytes));
      if (!*fileName) return E_OUTOFMEMORY;
      std::memcpy(*fileName, fFileName.c_str(), bytes);
      return fFileName.empty() ? S_FALSE : S_OK;
    });
  }

 private:
  using TTextField = std::optional<TString> TLinkFile::*;

  HRESULT Get(const char* name, TTextField field, LPWSTR buffer, int capacity) {
    return PortableCall(name, [&]() -> HRESULT {
      const std::lock_guard guard(fLock);
      return CopyText(fLink.*field, buffer, capacity);
    });
  }
  HRESULT Set(const char* name, TTextField field, LPCWSTR value) {
    return Change(name, [&] { SetText(fLink.*field, value); });
  }
  template <class TChange>
  HRESULT Change(const char* name, TChange&& change) {
    return PortableCall(name, [&]() -> HRESULT {
      const std::lock_guard guard(fLock);
      change();
      fIsDirty = true;
      return S_OK;
    });
  }

  TString TargetPath() const {
    return fLink.LocalPath.empty() ? fLink.NetworkPath : fLink.LocalPath;
  }
  void SetTargetPath(const TString& path) {
    const bool isNetwork = path.starts_with(u"\\\\") && !path.starts_with(u"\\\\?\\");
    fLink.LocalPath = isNetwork ? TString() : path;
    fLink.NetworkPath = isNetwork ? path : TString();
    fLink.EnvironmentTarget.clear();
    const std::optional<std::string> native = NativePath(path);
    const std::optional<TFileInfo> info = native ? GetFileInfo(*native, true) : std::nullopt;
    if (!info) return;
    fLink.FileAttributes = info->Attributes;
    fLink.FileSize = static_cast<DWORD>(info->Size);
    fLink.Created = info->Created;
    fLink.Accessed = info->Accessed;
    fLink.Written = info->Written;
  }
  void FillFindData(WIN32_FIND_DATAW& data, const TString& path) const {
    data = {};
    data.dwFileAttributes = fLink.FileAttributes;
    data.ftCreationTime = fLink.Created;
    data.ftLastAccessTime = fLink.Accessed;
    data.ftLastWriteTime = fLink.Written;
    data.nFileSizeLow = fLink.FileSize;
    const TString name = ExtractFileName(path);
    name.copy(data.cFileName, std::min<std::size_t>(name.size(), MAX_PATH - 1));
  }

  mutable std::mutex fLock;
  TLinkFile fLink;
  TString fFileName;
  bool fIsDirty = false;
};

}  // namespace

void RegisterShellLinkClass() { RegisterPortableClass<TShellLink>(lnk::ClassId); }

}  // namespace oak
