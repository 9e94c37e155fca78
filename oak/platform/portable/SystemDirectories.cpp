// Directories: making and removing them, and those that the system knows.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <vector>

#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/SystemFiles.h"

namespace oak {
namespace {

BOOL STDAPICALLTYPE CreateDirectoryW(LPCWSTR path, SECURITY_ATTRIBUTES*) {
  return SystemCall<BOOL>(FALSE, [&] {
    const auto native = NativeForCall(path);
    if (!native) return FALSE;
    if (mkdir(native->c_str(), 0777) == 0) return TRUE;
    const int error = errno;
    return error == EEXIST ? FailWith(ERROR_ALREADY_EXISTS, FALSE) : FailNative(*native, error);
  });
}

BOOL STDAPICALLTYPE RemoveDirectoryW(LPCWSTR path) {
  return SystemCall<BOOL>(FALSE, [&] {
    std::string native;
    const auto info = InfoForCall(path, native);
    if (!info) return FALSE;
    if (!info->IsDirectory()) return FailWith(ERROR_DIRECTORY, FALSE);
    // A link to a directory goes alone.
    const int result = info->IsSymlink() ? unlink(native.c_str()) : rmdir(native.c_str());
    if (result == 0) return TRUE;
    const int error = errno;
    return error == EEXIST ? FailWith(ERROR_DIR_NOT_EMPTY, FALSE) : FailNative(native, error);
  });
}

TString CurrentDirectory() {
  std::vector<char> buffer(65536);
  const char* native = getcwd(buffer.data(), buffer.size());
  TString path = WindowsPath(native ? native : "/");
  if (!path.empty()) return path;
  // Somewhere that no drive leads to: relative paths then start at the first drive.
  const auto config = PortableConfig();
  const char16_t letter = config->Drives.empty() ? u'C' : config->Drives.front().Letter;
  return TString(1, letter) + u":\\";
}

DWORD STDAPICALLTYPE GetCurrentDirectoryW(DWORD capacity, LPWSTR buffer) {
  return SystemCall<DWORD>(0, [&] { return AnswerText(CurrentDirectory(), buffer, capacity); });
}

DWORD STDAPICALLTYPE GetTempPathW(DWORD capacity, LPWSTR buffer) {
  return SystemCall<DWORD>(0, [&] {
    TString path = WindowsPath(PortableConfig()->Temp);
    if (path.empty()) path = CurrentDirectory();
    return AnswerText(IncludeTrailingPathDelimiter(path), buffer, capacity);
  });
}

UINT STDAPICALLTYPE GetTempFileNameW(LPCWSTR directory, LPCWSTR prefix, UINT unique, LPWSTR out) {
  return SystemCall<UINT>(0, [&]() -> UINT {
    if (!directory || !out) return FailWith<UINT>(ERROR_INVALID_PARAMETER, 0);
    static std::atomic<UINT> counter{static_cast<UINT>(getpid()) * 40503u};
    const TString start =
        IncludeTrailingPathDelimiter(directory) + TString(ViewOf(prefix).substr(0, 3));
    for (int attempt = 0; attempt < 0x10000; ++attempt) {
      UINT number = (unique ? unique : counter.fetch_add(1)) & 0xFFFF;
      if (number == 0) number = 1;
      const TString path = start + IntToHex(number, 1) + u".tmp";
      if (!CopyText(path, out, MAX_PATH)) return FailWith<UINT>(ERROR_FILENAME_EXCED_RANGE, 0);
      if (unique) return number;
      const auto native = NativeForCall(W(path));
      if (!native) return 0;
      const int file = open(native->c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0600);
      if (file >= 0) {
        close(file);
        return number;
      }
      if (errno != EEXIST) return FailWith<UINT>(ERROR_DIRECTORY, 0);
    }
    return FailWith<UINT>(ERROR_FILE_EXISTS, 0);
  });
}

UINT AnswerDirectory(const std::string& native, LPWSTR buffer, UINT capacity) {
  const TString path = WindowsPath(native);
  if (path.empty()) return FailWith<UINT>(ERROR_PATH_NOT_FOUND, 0);
  return AnswerText(path, buffer, capacity);
}

UINT STDAPICALLTYPE GetWindowsDirectoryW(LPWSTR buffer, UINT capacity) {
  return SystemCall<UINT>(
      0, [&] { return AnswerDirectory(PortableConfig()->Windows, buffer, capacity); });
}

UINT STDAPICALLTYPE GetSystemDirectoryW(LPWSTR buffer, UINT capacity) {
  return SystemCall<UINT>(
      0, [&] { return AnswerDirectory(PortableConfig()->System, buffer, capacity); });
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemDirectories(TApi& api) {
  BIND(CreateDirectoryW);
  BIND(RemoveDirectoryW);
  BIND(GetCurrentDirectoryW);
  BIND(GetTempPathW);
  BIND(GetTempFileNameW);
  BIND(GetWindowsDirectoryW);
  BIND(GetSystemDirectoryW);
}
#undef BIND

}  // namespace oak
