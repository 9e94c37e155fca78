// Attributes, deleting and moving of files.
#include "oak/platform/portable/SystemFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <vector>

#include "oak/platform/portable/FileTransfer.h"
#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/SystemDescriptor.h"

namespace oak {

std::optional<std::string> NativeForCall(LPCWSTR path) {
  DWORD error = ERROR_PATH_NOT_FOUND;
  std::optional<std::string> native = NativePath(ViewOf(path), &error);
  if (!native) detail::SetLastErrorDirect(error);
  return native;
}

DWORD ExactLookupError(const std::string& native, DWORD code) {
  if (code != ERROR_FILE_NOT_FOUND && code != ERROR_PATH_NOT_FOUND) return code;
  const auto config = PortableConfig();
  struct stat info {};
  for (const TPortableDrive& drive : config->Drives) {
    const bool below = native == drive.Directory || native.starts_with(drive.Directory + "/");
    if (below && stat(drive.Directory.c_str(), &info) != 0) return ERROR_NOT_READY;
  }
  const std::string parent = native.substr(0, std::max<std::size_t>(native.rfind('/'), 1));
  const bool reached = stat(parent.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
  return reached ? code : ERROR_PATH_NOT_FOUND;
}

namespace {
// True for a text that names a drive, a volume or a share and nothing in it.
bool NamesRoot(LPCWSTR path) {
  const TString text = ExcludeTrailingPathDelimiter(ViewOf(path));
  const TString name = ExtractFileName(text);
  return name.empty() || StartsText(u"Volume{", name) || ExtractFileDrive(text) == text;
}
}  // namespace

std::optional<TFileInfo> InfoForCall(LPCWSTR path, std::string& native) {
  const auto found = NativeForCall(path);
  if (!found) return std::nullopt;
  native = *found;
  DWORD error = 0;
  auto info = GetFileInfo(native, false, &error);
  if (!info) {
    detail::SetLastErrorDirect(ExactLookupError(native, error));
    return std::nullopt;
  }
  const char16_t last = ViewOf(path).back();
  if ((last == u'\\' || last == u'/') && !info->IsDirectory()) {
    detail::SetLastErrorDirect(ERROR_INVALID_NAME);
    return std::nullopt;
  }
  // The directory that a drive is mapped to may be hidden, the drive is not.
  if (NamesRoot(path)) info->Attributes &= ~FILE_ATTRIBUTE_HIDDEN;
  return info;
}

BOOL FailNative(const std::string& native, int error) {
  return FailWith(ExactLookupError(native, Win32FromErrno(error)), FALSE);
}

namespace {

DWORD STDAPICALLTYPE GetFileAttributesW(LPCWSTR path) {
  return SystemCall<DWORD>(INVALID_FILE_ATTRIBUTES, [&] {
    std::string native;
    const auto info = InfoForCall(path, native);
    if (!info) return INVALID_FILE_ATTRIBUTES;
    return info->Attributes ? info->Attributes : FILE_ATTRIBUTE_NORMAL;
  });
}

BOOL STDAPICALLTYPE GetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, LPVOID out) {
  return SystemCall<BOOL>(FALSE, [&] {
    if (level != GetFileExInfoStandard || !out) return FailWith(ERROR_INVALID_PARAMETER, FALSE);
    std::string native;
    const auto info = InfoForCall(path, native);
    if (!info) return FALSE;
    WIN32_FIND_DATAW found;
    FillFindData(*info, {}, found);
    auto& data = *static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(out);
    data.dwFileAttributes = found.dwFileAttributes;
    data.ftCreationTime = found.ftCreationTime;
    data.ftLastAccessTime = found.ftLastAccessTime;
    data.ftLastWriteTime = found.ftLastWriteTime;
    data.nFileSizeHigh = found.nFileSizeHigh;
    data.nFileSizeLow = found.nFileSizeLow;
    return TRUE;
  });
}

// Only the read-only attribute of files has a native counterpart that can be
// set; the others are accepted and follow from name and kind as before.
BOOL STDAPICALLTYPE SetFileAttributesW(LPCWSTR path, DWORD attributes) {
  return SystemCall<BOOL>(FALSE, [&] {
    std::string native;
    const auto info = InfoForCall(path, native);
    if (!info) return FALSE;
    if (info->IsDirectory() || info->IsSymlink()) return TRUE;
    const bool readOnly = (attributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (readOnly == ((info->Attributes & FILE_ATTRIBUTE_READONLY) != 0)) return TRUE;
    const mode_t present = info->Mode & 07777;
    const mode_t wanted = readOnly ? present & ~mode_t{0222} : present | 0200;
    return chmod(native.c_str(), wanted) == 0 ? TRUE : FailNative(native, errno);
  });
}

BOOL STDAPICALLTYPE DeleteFileW(LPCWSTR path) {
  return SystemCall<BOOL>(FALSE, [&] {
    std::string native;
    const auto info = InfoForCall(path, native);
    if (!info) return FALSE;
    const bool directory = info->IsDirectory() && !info->IsSymlink();
    if (directory || (info->Attributes & FILE_ATTRIBUTE_READONLY))
      return FailWith(ERROR_ACCESS_DENIED, FALSE);
    return unlink(native.c_str()) == 0 ? TRUE : FailNative(native, errno);
  });
}

// --- moving ----------------------------------------------------------------

// Where a new name leads: the directory as on disk, the name as written. The
// plain resolving would find an object whose name differs in case alone, which
// hides what a change of case is about.
std::optional<std::string> TargetForCall(LPCWSTR path, const std::string& source) {
  const auto text = NativePathText(ViewOf(path));
  auto native = NativeForCall(path);
  if (!text || !native || *native != source) return native;
  const std::string directory = native->substr(0, native->rfind('/'));
  return directory + text->substr(text->rfind('/'));
}

bool WriteAll(int to, const char* bytes, std::size_t count) {
  while (count > 0) {
    const ssize_t written = write(to, bytes, count);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes += written;
    count -= static_cast<std::size_t>(written);
  }
  return true;
}

// Copies contents, mode and times; the target must not exist. On failure errno
// tells why and nothing is left behind.
bool CopyContents(const std::string& from, const std::string& to) {
  const TDescriptor source(open(from.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat info {};
  if (source.Get() < 0 || fstat(source.Get(), &info) != 0) return false;
  if (!S_ISREG(info.st_mode)) {  // a pipe would never end
    errno = EOPNOTSUPP;
    return false;
  }
  TDescriptor target(open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (target.Get() < 0) return false;
  std::vector<char> buffer(1u << 17);
  ssize_t got = 0;
  bool good = true;
  while (good && (got = read(source.Get(), buffer.data(), buffer.size())) != 0) {
    if (got < 0 && errno == EINTR) continue;
    good = got > 0 && WriteAll(target.Get(), buffer.data(), static_cast<std::size_t>(got));
  }
  const struct timespec times[2] = {info.st_atim, info.st_mtim};
  good = good && fchmod(target.Get(), info.st_mode & 07777) == 0 &&
         futimens(target.Get(), times) == 0 && target.Close();
  if (good) return true;
  const int error = errno;
  unlink(to.c_str());
  errno = error;
  return false;
}

int Rename(const std::string& from, const std::string& to, bool replace) {
  if (replace) return rename(from.c_str(), to.c_str());
  const int result = renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
  if (result == 0 || (errno != EINVAL && errno != ENOSYS)) return result;
  return rename(from.c_str(), to.c_str());  // a file system without the guarded form
}

// A file moves to another device as a copy; the target appears whole or not. A source that can't be
// removed then stays, which is no failure.
BOOL MoveAcross(const std::string& from, const std::string& to, bool replace) {
  const std::string partial = to + ".moving~";
  if (!CopyContents(from, partial)) return FailNative(from, errno);
  int error = FlushFolderOf(partial);
  if (error == 0 && Rename(partial, to, replace) != 0) error = errno;
  if (error != 0) {
    unlink(partial.c_str());
    return FailNative(from, error);
  }
  static_cast<void>(unlink(from.c_str()));
  return TRUE;
}

BOOL STDAPICALLTYPE MoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) {
  return SystemCall<BOOL>(FALSE, [&] {
    if (!to || (flags & MOVEFILE_DELAY_UNTIL_REBOOT)) return FailWith(ERROR_NOT_SUPPORTED, FALSE);
    std::string source;
    const auto info = InfoForCall(from, source);
    if (!info) return FALSE;
    const auto target = TargetForCall(to, source);
    if (!target) return FALSE;
    if (*target == source) return TRUE;
    bool replace = (flags & MOVEFILE_REPLACE_EXISTING) != 0;
    const auto present = GetFileInfo(*target);
    const bool itself = present && present->FileIndex == info->FileIndex &&
                        present->VolumeSerial == info->VolumeSerial && present->Links < 2;
    if (present && !itself) {
      if (!replace) return FailWith(ERROR_ALREADY_EXISTS, FALSE);
      if (present->IsDirectory() || info->IsDirectory())
        return FailWith(ERROR_ACCESS_DENIED, FALSE);
    }
    if (Rename(source, *target, replace || itself) == 0) return TRUE;
    const int error = errno;
    if (error == EEXIST) return FailWith(ERROR_ALREADY_EXISTS, FALSE);
    if (error == EINVAL) return FailWith(ERROR_ACCESS_DENIED, FALSE);  // into its own inside
    const bool copies = (flags & MOVEFILE_COPY_ALLOWED) && S_ISREG(info->Mode);
    if (error == EXDEV && copies) return MoveAcross(source, *target, replace);
    return FailNative(error == ENOENT ? *target : source, error);
  });
}

BOOL STDAPICALLTYPE CopyFileW(LPCWSTR from, LPCWSTR to, BOOL failIfExists) {
  return SystemCall<BOOL>(FALSE, [&] {
    std::string source;
    const auto info = InfoForCall(from, source);
    if (!info) return FALSE;
    if (info->IsDirectory()) return FailWith(ERROR_ACCESS_DENIED, FALSE);
    const auto target = NativeForCall(to);
    if (!target) return FALSE;
    if (*target == source) return FailWith(ERROR_SHARING_VIOLATION, FALSE);
    const auto present = GetFileInfo(*target);
    if (present && failIfExists) return FailWith(ERROR_FILE_EXISTS, FALSE);
    if (present && (present->Attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)))
      return FailWith(ERROR_ACCESS_DENIED, FALSE);
    // What was there stays until the copy is whole.
    const std::string partial = *target + ".copying~";
    if (!CopyContents(source, partial)) return FailNative(*target, errno);
    if (Rename(partial, *target, present.has_value()) == 0) return TRUE;
    const int error = errno;
    unlink(partial.c_str());
    return error == EEXIST ? FailWith(ERROR_FILE_EXISTS, FALSE) : FailNative(*target, error);
  });
}

// Gives a file another one's contents in one step; who may read it stays. No
// backup is kept.
BOOL STDAPICALLTYPE ReplaceFileW(LPCWSTR replaced, LPCWSTR replacement, LPCWSTR backup, DWORD,
                                 LPVOID exclude, LPVOID reserved) {
  return SystemCall<BOOL>(FALSE, [&] {
    if (backup || exclude || reserved) return FailWith(ERROR_NOT_SUPPORTED, FALSE);
    std::string target;
    std::string source;
    const auto old = InfoForCall(replaced, target);
    if (!old) return FALSE;
    const auto made = InfoForCall(replacement, source);
    if (!made) return FALSE;
    if (old->IsDirectory() || made->IsDirectory() || (old->Attributes & FILE_ATTRIBUTE_READONLY))
      return FailWith(ERROR_ACCESS_DENIED, FALSE);
    struct stat info {};
    if (stat(target.c_str(), &info) != 0) return FailNative(target, errno);
    if (chmod(source.c_str(), info.st_mode & 07777) != 0) return FailNative(source, errno);
    return rename(source.c_str(), target.c_str()) == 0 ? TRUE : FailNative(target, errno);
  });
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemFiles(TApi& api) {
  BIND(GetFileAttributesW);
  BIND(GetFileAttributesExW);
  BIND(SetFileAttributesW);
  BIND(DeleteFileW);
  BIND(MoveFileExW);
  BIND(CopyFileW);
  BIND(ReplaceFileW);
}
#undef BIND

}  // namespace oak
