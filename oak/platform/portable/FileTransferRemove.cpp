// Removing of trees, and the names in directories.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

#include "oak/platform/portable/FileEntries.h"
#include "oak/platform/portable/FileTransfer.h"
#include "oak/platform/portable/SystemDescriptor.h"
#include "oak/platform/portable/TransferLog.h"

namespace oak {
namespace {

struct TCloseDirectory {
  void operator()(DIR* stream) const { ::closedir(stream); }
};

bool IsRealFolder(int directory, const char* name, unsigned char type) {
  if (type != DT_UNKNOWN) return type == DT_DIR;
  struct stat info;
  return ::fstatat(directory, name, &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(info.st_mode);
}

// What is mounted under another name of the same device counts as well, which device numbers don't
// tell.
bool IsMounted(int folder) {
  struct statx info;
  return ::statx(folder, "", AT_EMPTY_PATH, 0, &info) == 0 &&
         (info.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0;
}

/// What is removed, and how.
struct TRemoval {
  const TTransferGoesOn& GoesOn;
  dev_t Device = 0;
  bool Force = false;
  const TTransferLog* Only = nullptr;  ///< nothing but this; nil: all
  bool Made = false;                   ///< those were written since they were logged
};

/// Removes one tree. Works on descriptors throughout, so that a folder swapped for a link meanwhile
/// leads nowhere, and stays on one device, so that what is mounted in the tree is left alone.
class TTreeRemover {
 public:
  TTreeRemover(std::string path, const TRemoval& how) : fPath(std::move(path)), fHow(how) {}

  int Remove(int directory, const char* name, bool folder) {
    if (fHow.GoesOn && !fHow.GoesOn(fPath, 0)) return ECANCELED;
    if (!MayRemove(directory, name)) return EBUSY;
    int error = 0;
    if (folder && OpenAndEmpty(directory, name, error)) {
      if (error) return error;
    } else if (folder) {
      // An empty folder that may not be read can still be removed.
      return ::unlinkat(directory, name, AT_REMOVEDIR) == 0 ? 0 : error;
    }
    if (::unlinkat(directory, name, folder ? AT_REMOVEDIR : 0) == 0) return 0;
    return errno == ENOENT ? 0 : errno;
  }

 private:
  bool MayRemove(int directory, const char* name) const {
    if (!fHow.Only) return true;
    struct stat info;
    if (::fstatat(directory, name, &info, AT_SYMLINK_NOFOLLOW) != 0) return errno == ENOENT;
    return fHow.Made ? fHow.Only->Has(info) : fHow.Only->HasUnchanged(info);
  }

  // False if the folder cannot be opened; `error` is that of either step.
  bool OpenAndEmpty(int directory, const char* name, int& error) {
    const TDescriptor open(
        ::openat(directory, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat info;
    if (open.Get() < 0 || ::fstat(open.Get(), &info) != 0) {
      error = errno;
      return open.Get() >= 0;
    }
    if (info.st_dev != fHow.Device) {
      error = EXDEV;
    } else if (IsMounted(open.Get())) {
      error = EBUSY;
    } else {
      if (fHow.Force) static_cast<void>(::fchmod(open.Get(), (info.st_mode & 07777) | 0700));
      error = RemoveContents(open.Get());
    }
    return true;
  }

  int RemoveContents(int folder) {
    std::vector<TFileEntry> entries;
    if (const int error = ListEntries(folder, entries)) return error;
    const std::size_t length = fPath.size();
    int first = 0;
    for (const TFileEntry& entry : entries) {
      (fPath += '/') += entry.Name;
      const int error = Remove(folder, entry.Name.c_str(), entry.IsFolder);
      fPath.resize(length);
      if (first == 0) first = error;
      if (error && !fHow.Only) break;
    }
    return first;
  }

  std::string fPath;  // of the object that is removed now
  const TRemoval fHow;
};

int RemoveAs(const std::string& native, TRemoval how) {
  const std::size_t slash = native.rfind('/');
  if (slash == std::string::npos || slash + 1 == native.size()) return EINVAL;
  const std::string parent = native.substr(0, slash == 0 ? 1 : slash);
  const char* name = native.c_str() + slash + 1;
  const TDescriptor directory(::open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (directory.Get() < 0) return errno;
  struct stat info;
  if (::fstatat(directory.Get(), name, &info, AT_SYMLINK_NOFOLLOW) != 0) return errno;
  how.Device = info.st_dev;
  return TTreeRemover(native, how).Remove(directory.Get(), name, S_ISDIR(info.st_mode));
}

}  // namespace

int ListEntries(int directory, std::vector<TFileEntry>& entries) {
  const int copy = ::openat(directory, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const std::unique_ptr<DIR, TCloseDirectory> stream(copy < 0 ? nullptr : ::fdopendir(copy));
  if (!stream) {
    const int error = errno;
    if (copy >= 0) ::close(copy);
    return error;
  }
  errno = 0;
  while (const dirent* entry = ::readdir(stream.get())) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..")
      entries.push_back({std::string(name), IsRealFolder(copy, entry->d_name, entry->d_type)});
    errno = 0;
  }
  return errno;
}

int RemoveTree(const std::string& native, const TTransferGoesOn& goesOn, bool force) {
  return RemoveAs(native, {goesOn, 0, force});
}

int RemoveLogged(const std::string& native, const TTransferLog& log, bool made) {
  const TTransferGoesOn always;
  return RemoveAs(native, {always, 0, made, &log, made});
}

}  // namespace oak
