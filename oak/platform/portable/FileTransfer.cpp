#include "oak/platform/portable/FileTransfer.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <vector>

#include "oak/platform/portable/FileEntries.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/SystemDescriptor.h"
#include "oak/platform/portable/TransferLog.h"

namespace oak {
namespace {

std::atomic<TNativeWrite> gWrite{&::write};
std::atomic<TNativeFlush> gFlush{&::syncfs};

constexpr std::size_t PieceSize = 1u << 18;

// Extended attributes of the user hold what he wrote on a file. A file system that knows none of
// them is no reason to refuse a copy.
void CopyUserAttributes(int from, int to) {
  const ssize_t size = ::flistxattr(from, nullptr, 0);
  if (size <= 0) return;
  std::vector<char> names(static_cast<std::size_t>(size));
  const ssize_t got = ::flistxattr(from, names.data(), names.size());
  std::vector<char> value;
  for (ssize_t at = 0; at < got;) {
    const std::string name(names.data() + at);
    at += static_cast<ssize_t>(name.size()) + 1;
    if (!name.starts_with("user.")) continue;
    const ssize_t length = ::fgetxattr(from, name.c_str(), nullptr, 0);
    if (length < 0) continue;
    value.resize(static_cast<std::size_t>(length));
    if (::fgetxattr(from, name.c_str(), value.data(), value.size()) != length) continue;
    static_cast<void>(::fsetxattr(to, name.c_str(), value.data(), value.size(), 0));
  }
}

// A file system that keeps no modes or times is no reason to refuse a copy either.
bool IsRefusal(int error) { return error == EPERM || error == EOPNOTSUPP || error == ENOSYS; }

// Mode and times, at the very end: contents change the times, and a mode may forbid to write them.
int KeepMetadata(int target, int source, const struct stat& info) {
  CopyUserAttributes(source, target);
  // A program that runs as its owner may not come to run as whoever copied it.
  const mode_t kept = info.st_uid == ::geteuid() ? 07777 : 01777;
  if (::fchmod(target, info.st_mode & kept) != 0 && !IsRefusal(errno)) return errno;
  const struct timespec times[2] = {info.st_atim, info.st_mtim};
  return ::futimens(target, times) == 0 || IsRefusal(errno) ? 0 : errno;
}

/// Copies one tree, on descriptors throughout: a folder that is swapped for a link meanwhile leads
/// nowhere.
class TTreeCopier {
 public:
  TTreeCopier(std::string path, const TTransferGoesOn& goesOn)
      : fPath(std::move(path)), fGoesOn(goesOn) {}

  int Copy(int fromDirectory, const char* from, int toDirectory, const char* to);
  /// What was copied, and the copies.
  const TTransferLog& Sources() const { return fSources; }
  const TTransferLog& Made() const { return fMade; }

 private:
  int CopyFile(int fromDirectory, const char* from, int toDirectory, const char* to);
  int CopyContents(int source, int target);
  int CopyFolder(int fromDirectory, const char* from, int toDirectory, const char* to);
  int CopyEntries(int source, int target);
  int CopyLink(int fromDirectory, const char* from, int toDirectory, const char* to,
               const struct stat& info);
  int CopyPipe(int toDirectory, const char* to, const struct stat& info);
  int LogMade(int descriptor);
  int LogMadeAt(int directory, const char* name);
  bool GoesOn(std::uint64_t bytes) const { return !fGoesOn || fGoesOn(fPath, bytes); }

  std::string fPath;  // of the object that is copied now
  const TTransferGoesOn& fGoesOn;
  std::vector<char> fPiece;
  TTransferLog fSources, fMade;
};

int TTreeCopier::LogMade(int descriptor) {
  struct stat made;
  if (::fstat(descriptor, &made) != 0) return errno;
  fMade.Add(made);
  return 0;
}

int TTreeCopier::LogMadeAt(int directory, const char* name) {
  struct stat made;
  if (::fstatat(directory, name, &made, AT_SYMLINK_NOFOLLOW) != 0) return errno;
  fMade.Add(made);
  return 0;
}

int TTreeCopier::Copy(int fromDirectory, const char* from, int toDirectory, const char* to) {
  if (!GoesOn(0)) return ECANCELED;
  struct stat info;
  if (::fstatat(fromDirectory, from, &info, AT_SYMLINK_NOFOLLOW) != 0) return errno;
  switch (info.st_mode & S_IFMT) {
    case S_IFREG:
      return CopyFile(fromDirectory, from, toDirectory, to);
    case S_IFDIR:
      return CopyFolder(fromDirectory, from, toDirectory, to);
    case S_IFLNK:
      return CopyLink(fromDirectory, from, toDirectory, to, info);
    case S_IFIFO:
      return CopyPipe(toDirectory, to, info);
    default:
      return EOPNOTSUPP;
  }
}

int TTreeCopier::CopyPipe(int toDirectory, const char* to, const struct stat& info) {
  if (::mkfifoat(toDirectory, to, info.st_mode & 07777) != 0) return errno;
  fSources.Add(info);
  return LogMadeAt(toDirectory, to);
}

int TTreeCopier::CopyLink(int fromDirectory, const char* from, int toDirectory, const char* to,
                          const struct stat& info) {
  std::string leadsTo(4096, '\0');
  const ssize_t length = ::readlinkat(fromDirectory, from, leadsTo.data(), leadsTo.size());
  if (length < 0) return errno;
  if (static_cast<std::size_t>(length) == leadsTo.size()) return ENAMETOOLONG;
  leadsTo.resize(static_cast<std::size_t>(length));
  if (::symlinkat(leadsTo.c_str(), toDirectory, to) != 0) return errno;
  fSources.Add(info);
  if (const int error = LogMadeAt(toDirectory, to)) return error;
  const struct timespec times[2] = {info.st_atim, info.st_mtim};
  static_cast<void>(::utimensat(toDirectory, to, times, AT_SYMLINK_NOFOLLOW));
  return 0;
}

int TTreeCopier::CopyFile(int fromDirectory, const char* from, int toDirectory, const char* to) {
  const TDescriptor source(
      ::openat(fromDirectory, from, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (source.Get() < 0) return errno;
  struct stat info;
  if (::fstat(source.Get(), &info) != 0) return errno;
  if (!S_ISREG(info.st_mode)) return EOPNOTSUPP;  // swapped meanwhile
  TDescriptor target(::openat(toDirectory, to, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (target.Get() < 0) return errno;
  fSources.Add(info);  // as it was before it was read
  int error = LogMade(target.Get());
  if (error == 0) error = CopyContents(source.Get(), target.Get());
  if (error == 0) error = KeepMetadata(target.Get(), source.Get(), info);
  if (error == 0 && !target.Close()) error = errno;
  return error;
}

int TTreeCopier::CopyContents(int source, int target) {
  fPiece.resize(PieceSize);
  for (;;) {
    const ssize_t got = ::read(source, fPiece.data(), fPiece.size());
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got == 0 ? 0 : errno;
    const auto count = static_cast<std::size_t>(got);
    if (const int error = WriteContents(target, fPiece.data(), count)) return error;
    if (!GoesOn(count)) return ECANCELED;
  }
}

int TTreeCopier::CopyFolder(int fromDirectory, const char* from, int toDirectory, const char* to) {
  constexpr int how = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  const TDescriptor source(::openat(fromDirectory, from, how));
  struct stat info;
  if (source.Get() < 0 || ::fstat(source.Get(), &info) != 0) return errno;
  if (fMade.Has(info)) return EINVAL;  // the copy lies in what is copied: it would never end
  if (::mkdirat(toDirectory, to, 0700) != 0) return errno;
  fSources.Add(info);
  const TDescriptor target(::openat(toDirectory, to, how));
  if (target.Get() < 0) return errno;
  if (const int unknown = LogMade(target.Get())) return unknown;
  const int error = CopyEntries(source.Get(), target.Get());
  return error != 0 ? error : KeepMetadata(target.Get(), source.Get(), info);
}

int TTreeCopier::CopyEntries(int source, int target) {
  std::vector<TFileEntry> entries;
  if (const int error = ListEntries(source, entries)) return error;
  const std::size_t length = fPath.size();
  for (const TFileEntry& entry : entries) {
    (fPath += '/') += entry.Name;
    const int error = Copy(source, entry.Name.c_str(), target, entry.Name.c_str());
    fPath.resize(length);
    if (error) return error;
  }
  return 0;
}

int RenameToFree(const std::string& from, const std::string& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
  // A file system that knows no guarded form. A second name is guarded, too; a folder can have
  // none, but takes the place of nothing else than an empty folder.
  struct stat info;
  if (::lstat(from.c_str(), &info) != 0) return errno;
  if (!S_ISDIR(info.st_mode)) {
    if (::link(from.c_str(), to.c_str()) == 0) {
      if (::unlink(from.c_str()) == 0) return 0;
      const int error = errno;
      ::unlink(to.c_str());
      return error;
    }
    if (!IsRefusal(errno) && errno != EMLINK) return errno;
  }
  if (::lstat(to.c_str(), &info) == 0) return EEXIST;
  return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

// Copies, and leaves nothing of a copy that did not come to its end.
int CopyWhole(TTreeCopier& copier, const std::string& from, const std::string& to) {
  const int error = copier.Copy(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str());
  if (error == 0 || copier.Made().IsEmpty()) return error;
  static_cast<void>(RemoveLogged(to, copier.Made(), true));
  // The place itself was free; another name would not help against what is taken within.
  return error == EEXIST ? ENOTUNIQ : error;
}

}  // namespace

TNativeWrite SetNativeWrite(TNativeWrite write) noexcept {
  return gWrite.exchange(write ? write : &::write);
}

int WriteContents(int descriptor, const char* bytes, std::size_t count) {
  const TNativeWrite write = gWrite.load(std::memory_order_relaxed);
  while (count > 0) {
    const ssize_t done = write(descriptor, bytes, count);
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) return done == 0 ? ENOSPC : errno;
    bytes += done;
    count -= static_cast<std::size_t>(done);
  }
  return 0;
}

TNativeFlush SetNativeFlush(TNativeFlush flush) noexcept {
  return gFlush.exchange(flush ? flush : &::syncfs);
}

int FlushFolderOf(const std::string& native) {
  const std::string folder = native.substr(0, native.find_last_of('/') + 1);
  const TDescriptor at(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  return at.Get() >= 0 && gFlush.load(std::memory_order_relaxed)(at.Get()) == 0 ? 0 : errno;
}

int CopyTree(const std::string& from, const std::string& to, const TTransferGoesOn& goesOn) {
  TTreeCopier copier(from, goesOn);
  return CopyWhole(copier, from, to);
}

int MoveTree(const std::string& from, const std::string& to, const TTransferGoesOn& goesOn,
             bool* copied) {
  if (copied) *copied = false;
  if (goesOn && !goesOn(from, 0)) return ECANCELED;
  int error = RenameToFree(from, to);
  if (error != EXDEV) return error;
  TTreeCopier copier(from, goesOn);
  error = CopyWhole(copier, from, to);
  if (error != 0) return error;
  error = FlushFolderOf(to);
  if (error != 0) {
    static_cast<void>(RemoveLogged(to, copier.Made(), true));
    return error;
  }
  if (copied) *copied = true;
  return RemoveLogged(from, copier.Sources(), false);
}

bool IsInside(const std::string& directory, const std::string& folder) {
  struct stat top;
  if (::lstat(folder.c_str(), &top) != 0 || !S_ISDIR(top.st_mode)) return false;
  TDescriptor at(::open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  struct stat last {};
  while (at.Get() >= 0) {
    struct stat here;
    if (::fstat(at.Get(), &here) != 0) return false;
    if (here.st_dev == top.st_dev && here.st_ino == top.st_ino) return true;
    if (here.st_dev == last.st_dev && here.st_ino == last.st_ino) return false;  // the root
    last = here;
    at = TDescriptor(::openat(at.Get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
  }
  return false;
}

}  // namespace oak
