#include "oak/platform/portable/TrashCan.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "oak/platform/Api.h"
#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/SystemDescriptor.h"
#include "oak/platform/portable/TrashInfo.h"

namespace oak {
namespace {

namespace fs = std::filesystem;

constexpr const char* InfoEnding = ".trashinfo";
// A name in the trash is to be short enough for a number, " (99999)", and the ending of its
// description.
constexpr std::size_t LongestTrashName = 255 - 8 - 10;

std::string TrashInfoDirectory() { return JoinNative(PortableConfig()->Trash, "info"); }

std::string InfoPathOf(const std::string& trashName) {
  return JoinNative(TrashInfoDirectory(), trashName + InfoEnding);
}

std::string NameOfPath(const std::string& native) { return native.substr(native.rfind('/') + 1); }

// The directories of the trash are for the user alone.
int MakeDirectories(const std::string& native, mode_t mode) {
  if (::mkdir(native.c_str(), mode) == 0 || errno == EEXIST) return 0;
  if (errno != ENOENT) return errno;
  const std::size_t slash = native.rfind('/');
  if (slash == std::string::npos || slash == 0) return ENOENT;
  if (const int error = MakeDirectories(native.substr(0, slash), mode)) return error;
  return ::mkdir(native.c_str(), mode) == 0 || errno == EEXIST ? 0 : errno;
}

// Written first, and only where no such description exists: this takes the name.
int WriteInfo(const std::string& path, const std::string& original) {
  TDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (file.Get() < 0) return errno;
  SYSTEMTIME now{};
  Api().GetLocalTime(&now);
  const std::string text = FormatTrashInfo(original, now);
  int error = WriteContents(file.Get(), text.data(), text.size());
  if (error == 0 && !file.Close()) error = errno;
  if (error != 0) ::unlink(path.c_str());
  return error;
}

std::string TrashNameFor(const std::string& native) {
  std::string name = NameOfPath(native);
  std::size_t size = std::min(name.size(), LongestTrashName);
  if (size < name.size())
    while (size > 0 && (static_cast<unsigned char>(name[size]) & 0xC0) == 0x80) --size;
  name.resize(size);
  return name;
}

}  // namespace

std::string TrashFilesDirectory() { return JoinNative(PortableConfig()->Trash, "files"); }

bool IsTrashEntry(const std::string& native) {
  const std::size_t slash = native.rfind('/');
  return slash != std::string::npos && slash + 1 < native.size() &&
         native.substr(0, slash) == TrashFilesDirectory();
}

int MoveToTrash(const std::string& native, const TTransferGoesOn& goesOn, std::string& inTrash) {
  int error = MakeDirectories(TrashFilesDirectory(), 0700);
  if (error == 0) error = MakeDirectories(TrashInfoDirectory(), 0700);
  if (error != 0) return error;
  if (IsInside(TrashFilesDirectory(), native) || IsInside(TrashInfoDirectory(), native))
    return EINVAL;
  const std::string name = TrashNameFor(native);
  struct stat info;
  if (::lstat(native.c_str(), &info) != 0) return errno;
  // The same number for the object and its description, free in both directories.
  return AtFreeName(TrashFilesDirectory(), name, S_ISDIR(info.st_mode), TFreeName::Number, inTrash,
                    [&](const std::string& place) {
                      const std::string description = InfoPathOf(NameOfPath(place));
                      if (const int taken = WriteInfo(description, native)) return taken;
                      bool copied = false;
                      const int moved = MoveTree(native, place, goesOn, &copied);
                      // A copy whose source could not be removed whole stays: it may be all that is
                      // left.
                      if (moved != 0 && !copied) ::unlink(description.c_str());
                      return moved;
                    });
}

int RestoreFromTrash(const std::string& inTrash, const TTransferGoesOn& goesOn,
                     std::string& restored) {
  if (!IsTrashEntry(inTrash)) return EINVAL;
  const std::string description = InfoPathOf(NameOfPath(inTrash));
  std::ifstream file(description, std::ios::binary);
  const auto info = ReadTrashInfo(std::string(std::istreambuf_iterator<char>(file), {}));
  if (!info || !info->OriginalPath.starts_with('/')) return ENOENT;
  if (info->OriginalPath.find('\0') != std::string::npos) return EINVAL;  // leads elsewhere
  struct stat kind;
  if (::lstat(inTrash.c_str(), &kind) != 0) return errno;
  const fs::path original = fs::path(info->OriginalPath).lexically_normal();
  if (original.filename().empty()) return EINVAL;
  if (const int error = MakeDirectories(original.parent_path().string(), 0777)) return error;
  const int error =
      AtFreeName(original.parent_path().string(), original.filename().string(),
                 S_ISDIR(kind.st_mode), TFreeName::Number, restored,
                 [&](const std::string& place) { return MoveTree(inTrash, place, goesOn); });
  if (error == 0) ForgetTrashEntry(inTrash);
  return error;
}

void ForgetTrashEntry(const std::string& inTrash) {
  ::unlink(InfoPathOf(NameOfPath(inTrash)).c_str());
}

int RemoveFromTrash(const std::string& inTrash, const TTransferGoesOn& goesOn) {
  if (!IsTrashEntry(inTrash)) return EINVAL;
  const int error = RemoveTree(inTrash, goesOn, true);
  if (error == 0) ForgetTrashEntry(inTrash);
  return error;
}

}  // namespace oak
