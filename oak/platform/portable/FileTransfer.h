// Copying, moving and removing of native trees.
//
// Nothing is ever replaced, and what fails or is cancelled leaves the source whole: a copy that
// did not come to its end is taken away again, a move to another device removes the source when the
// copy is complete. Results are native error numbers, 0 for success; ECANCELED if the caller wanted
// no more.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>

namespace oak {

class TTransferLog;

/// Asked before each object and after each piece of a file's contents: native path of the object,
/// bytes of contents that were copied since the last question. False ends the work. May be empty.
using TTransferGoesOn = std::function<bool(const std::string& native, std::uint64_t bytes)>;

/// Copies an object, a folder with all that lies in it, to a place that must be free (EEXIST).
/// Symbolic links are copied as such; modes, times and extended attributes of the user are kept,
/// but not the right of a stranger's program to run as its owner. Pipes are made anew; EOPNOTSUPP
/// for sockets and devices, EINVAL for a place within the folder itself, ENOTUNIQ if a name within
/// the copy is taken. What others put into an unfinished copy is left to them.
int CopyTree(const std::string& from, const std::string& to, const TTransferGoesOn& goesOn);

/// Moves an object to a place that must be free (EEXIST). `copied` tells whether it had to be
/// copied to another device; if the source could then not be removed, the copy stays. The source
/// goes only when the copy has reached the disk. Of the source that is removed which was copied:
/// what others wrote there meanwhile stays (ENOTEMPTY, EBUSY).
int MoveTree(const std::string& from, const std::string& to, const TTransferGoesOn& goesOn,
             bool* copied = nullptr);

/// Removes an object for good, a folder with all that lies in it, but never what symbolic links
/// lead to or what is mounted in it or upon it (EXDEV, EBUSY). Ends at the first failure. With
/// `force` folders that may not be written are made writable first: for the remains of one's own
/// work.
int RemoveTree(const std::string& native, const TTransferGoesOn& goesOn = {}, bool force = false);

/// Removes what the log has and nobody has touched since, and goes on after failures; gives the
/// first one. `made`: the log is that of a copy, which was written since.
int RemoveLogged(const std::string& native, const TTransferLog& log, bool made);

/// Whether a directory is `folder` itself or lies in it, symbolic links followed.
bool IsInside(const std::string& directory, const std::string& folder);

/// How the name of an object is changed where it is taken.
enum class TFreeName : std::uint8_t {
  Number,   ///< "name.ext", "name (2).ext", "name (3).ext" ...
  Copy,     ///< "name - Copy.ext", "name - Copy (2).ext" ...
  Shortcut  ///< "name.ext - Shortcut.lnk", "name.ext - Shortcut (2).lnk" ...
};

/// The name tried in the `attempt`-th place, from 0. The part before the extension is cut so that
/// the name has at most 255 bytes.
std::string CandidateName(const std::string& name, bool folder, TFreeName form, unsigned attempt);

/// Calls `make` with one path after the other until it gives something else than EEXIST, and gives
/// that; `made` is the path of the last call.
int AtFreeName(const std::string& directory, const std::string& name, bool folder, TFreeName form,
               std::string& made, const std::function<int(const std::string& path)>& make);

/// Writes all of the bytes to a file that is copied; 0 or a native error number.
int WriteContents(int descriptor, const char* bytes, std::size_t count);

/// Waits until what was written to the file system of an object's folder is on the disk, so that a
/// crash or a pulled stick can't take the last copy; 0 or a native error number.
int FlushFolderOf(const std::string& native);

/// What writes the contents of copies, in the form of write(2); nil stands for the system's. Gives
/// the former one. For tests of a full disk; not while anything is copied.
using TNativeWrite = ssize_t (*)(int descriptor, const void* bytes, std::size_t count);
TNativeWrite SetNativeWrite(TNativeWrite write) noexcept;
/// The same for syncfs(2), which ends a move to another device.
using TNativeFlush = int (*)(int descriptor) noexcept;
TNativeFlush SetNativeFlush(TNativeFlush flush) noexcept;

}  // namespace oak
