// What the native system tells of its files, in Windows terms.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <utility>

#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/shell_api.h"

namespace oak {
namespace {

constexpr std::int64_t EpochSeconds = 11644473600;  // from 1601-01-01 to 1970-01-01
constexpr std::int64_t TicksPerSecond = 10000000;

// Codes that only this table needs.
constexpr DWORD ErrorUnexpectedNetwork = 59;
constexpr DWORD ErrorSemTimeout = 121;
constexpr DWORD ErrorFileTooLarge = 223;
constexpr DWORD ErrorIoDevice = 1117;
constexpr DWORD ErrorConnectionRefused = 1225;
constexpr DWORD ErrorNetworkUnreachable = 1231;

FILETIME ToFileTime(const struct statx_timestamp& time) {
  return FileTimeFromNative(time.tv_sec, time.tv_nsec);
}

bool IsEarlier(const struct statx_timestamp& a, const struct statx_timestamp& b) {
  return a.tv_sec != b.tv_sec ? a.tv_sec < b.tv_sec : a.tv_nsec < b.tv_nsec;
}

DWORD AttributesOf(std::uint32_t mode, const char* name) {
  DWORD result = 0;
  if (name[0] == '.' && name[1] != 0 && !(name[1] == '.' && name[2] == 0))
    result |= FILE_ATTRIBUTE_HIDDEN;
  if (S_ISDIR(mode)) return result | FILE_ATTRIBUTE_DIRECTORY;
  if (S_ISLNK(mode)) return result | FILE_ATTRIBUTE_REPARSE_POINT;
  if (!S_ISREG(mode)) return result | FILE_ATTRIBUTE_SYSTEM;
  if ((mode & 0222) == 0) result |= FILE_ATTRIBUTE_READONLY;
  return result | FILE_ATTRIBUTE_ARCHIVE;
}

const char* LastName(const char* path) {
  const char* name = path;
  for (const char* p = path; *p; ++p)
    if (*p == '/' && p[1] != 0) name = p + 1;
  return name;
}

TFileInfo FromNative(const struct statx& data, const char* name) {
  TFileInfo info;
  info.Attributes = AttributesOf(data.stx_mode, name);
  if (S_ISREG(data.stx_mode)) {
    info.Size = data.stx_size;
    info.AllocationSize = data.stx_blocks * 512;
  }
  const auto& oldest = IsEarlier(data.stx_mtime, data.stx_ctime) ? data.stx_mtime : data.stx_ctime;
  info.Created = ToFileTime((data.stx_mask & STATX_BTIME) ? data.stx_btime : oldest);
  info.Accessed = ToFileTime(data.stx_atime);
  info.Written = ToFileTime(data.stx_mtime);
  info.VolumeSerial = (data.stx_dev_major << 20 ^ data.stx_dev_minor) * 2654435761u ^ 0x0A4B1D2Cu;
  info.FileIndex = data.stx_ino;
  info.Links = data.stx_nlink;
  info.Mode = data.stx_mode;
  info.Owner = data.stx_uid;
  return info;
}

}  // namespace

FILETIME FileTimeFromNative(std::int64_t seconds, std::uint32_t nanoseconds) {
  constexpr std::int64_t last = std::numeric_limits<std::int64_t>::max() / TicksPerSecond;
  seconds = std::clamp<std::int64_t>(seconds, -EpochSeconds, last - EpochSeconds - 1);
  const auto ticks =
      static_cast<std::uint64_t>((seconds + EpochSeconds) * TicksPerSecond + nanoseconds / 100);
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

void FileTimeToNative(const FILETIME& time, std::int64_t& seconds, std::uint32_t& nanoseconds) {
  const std::uint64_t ticks =
      (static_cast<std::uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
  seconds = static_cast<std::int64_t>(ticks / TicksPerSecond) - EpochSeconds;
  nanoseconds = static_cast<std::uint32_t>(ticks % TicksPerSecond) * 100;
}

std::optional<TFileInfo> GetFileInfoAt(int directory, const char* name, bool follow, DWORD* error) {
  struct statx data {};
  const int flags = AT_NO_AUTOMOUNT | (follow ? 0 : AT_SYMLINK_NOFOLLOW);
  if (statx(directory, name, flags, STATX_BASIC_STATS | STATX_BTIME, &data) != 0) {
    if (error) *error = Win32FromErrno(errno);
    return std::nullopt;
  }
  TFileInfo info = FromNative(data, LastName(name));
  if (S_ISLNK(data.stx_mode)) {
    info.ReparseTag = IO_REPARSE_TAG_SYMLINK;
    struct stat target {};
    if (fstatat(directory, name, &target, AT_NO_AUTOMOUNT) == 0 && S_ISDIR(target.st_mode))
      info.Attributes |= FILE_ATTRIBUTE_DIRECTORY;
  }
  return info;
}

std::optional<TFileInfo> GetFileInfo(const std::string& native, bool follow, DWORD* error) {
  return GetFileInfoAt(AT_FDCWD, native.c_str(), follow, error);
}

DWORD Win32FromErrno(int error) noexcept {
  struct TPair {
    int Native;
    DWORD Code;
  };
  static constexpr TPair table[] = {
      {0, ERROR_SUCCESS},
      {ENOENT, ERROR_FILE_NOT_FOUND},
      {ENOTDIR, ERROR_PATH_NOT_FOUND},
      {EMFILE, ERROR_TOO_MANY_OPEN_FILES},
      {ENFILE, ERROR_TOO_MANY_OPEN_FILES},
      {EACCES, ERROR_ACCESS_DENIED},
      {EPERM, ERROR_ACCESS_DENIED},
      {EISDIR, ERROR_ACCESS_DENIED},
      {EBADF, ERROR_INVALID_HANDLE},
      {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
      {EXDEV, ERROR_NOT_SAME_DEVICE},
      {EROFS, ERROR_WRITE_PROTECT},
      {ENOMEDIUM, ERROR_NOT_READY},
      {ENODEV, ERROR_NOT_READY},
      {ENXIO, ERROR_NOT_READY},
      {EIO, ErrorIoDevice},
      {EBUSY, ERROR_SHARING_VIOLATION},
      {ETXTBSY, ERROR_SHARING_VIOLATION},
      {ENOLCK, ERROR_LOCK_VIOLATION},
      {ENOSPC, ERROR_DISK_FULL},
      {EDQUOT, ERROR_DISK_FULL},
      {EFBIG, ErrorFileTooLarge},
      {EOPNOTSUPP, ERROR_NOT_SUPPORTED},
      {ENOSYS, ERROR_NOT_SUPPORTED},
      {EEXIST, ERROR_FILE_EXISTS},
      {EINVAL, ERROR_INVALID_PARAMETER},
      {EFAULT, ERROR_NOACCESS},
      {EPIPE, ERROR_BROKEN_PIPE},
      {EINTR, ERROR_OPERATION_ABORTED},
      {ECANCELED, ERROR_CANCELLED},
      {EILSEQ, ERROR_INVALID_NAME},
      {ENAMETOOLONG, ERROR_FILENAME_EXCED_RANGE},
      {ENOTEMPTY, ERROR_DIR_NOT_EMPTY},
      {ELOOP, ERROR_CANT_RESOLVE_FILENAME},
      {ESTALE, ErrorUnexpectedNetwork},
      {EHOSTDOWN, ERROR_BAD_NETPATH},
      {EHOSTUNREACH, ERROR_BAD_NETPATH},
      {ENETUNREACH, ErrorNetworkUnreachable},
      {ENOTCONN, ERROR_NOT_CONNECTED},
      {ECONNREFUSED, ErrorConnectionRefused},
      {ETIMEDOUT, ErrorSemTimeout},
      {EAGAIN, ERROR_NOT_READY},
  };
  for (const TPair& pair : table)
    if (pair.Native == error) return pair.Code;
  return ERROR_GEN_FAILURE;
}

// --- TNativeDirectory ------------------------------------------------------

std::optional<TNativeDirectory> TNativeDirectory::Open(const std::string& native, DWORD* error) {
  DIR* stream = opendir(native.c_str());
  if (!stream) {
    if (error) *error = Win32FromErrno(errno);
    return std::nullopt;
  }
  return TNativeDirectory(stream);
}

TNativeDirectory::TNativeDirectory(TNativeDirectory&& other) noexcept
    : fStream(std::exchange(other.fStream, nullptr)), fType(other.fType), fError(other.fError) {}

TNativeDirectory& TNativeDirectory::operator=(TNativeDirectory&& other) noexcept {
  std::swap(fStream, other.fStream);
  fType = other.fType;
  fError = other.fError;
  return *this;
}

TNativeDirectory::~TNativeDirectory() {
  if (fStream) closedir(static_cast<DIR*>(fStream));
}

const char* TNativeDirectory::Next() {
  if (!fStream) return nullptr;
  for (;;) {
    errno = 0;
    const dirent* entry = readdir(static_cast<DIR*>(fStream));
    if (!entry) {
      fError = Win32FromErrno(errno);
      return nullptr;
    }
    const char* name = entry->d_name;
    if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0))) continue;
    fType = entry->d_type;
    return name;
  }
}

int TNativeDirectory::Descriptor() const {
  return fStream ? dirfd(static_cast<DIR*>(fStream)) : -1;
}

void TNativeDirectory::Rewind() {
  if (fStream) rewinddir(static_cast<DIR*>(fStream));
  fError = 0;
}

}  // namespace oak
