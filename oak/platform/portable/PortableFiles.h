// Files of the native system, seen under Windows names.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "oak/base/Text.h"

namespace oak {

// --- names -----------------------------------------------------------------
/// A native file name (one component, any bytes but "/" and 0) as a Windows
/// name. Characters that no Windows name holds (" * : < > ? \ | and 1..31),
/// bytes that are not valid UTF-8 and the bytes of U+F000..U+F0FF themselves
/// become U+F000 + byte, so that NameToNative gives the same bytes back.
TString NameFromNative(std::string_view name);
/// The reverse. Empty if no file can have that name: an empty one, or one with
/// "/", 0 or a character that Windows names cannot hold.
std::string NameToNative(TStringView name);
/// True if a new object may get this name: NameToNative knows it, it is not
/// "." or "..", and takes at most 255 bytes.
bool IsValidFileName(TStringView name);

// --- paths -----------------------------------------------------------------
/// The native path of a Windows path, by text alone: drive paths, UNC paths of
/// mapped shares, "\\?\C:\", "\\?\UNC\server\share\" and "\\?\Volume{...}\"
/// forms; relative paths and "\dir" against the current directory. "." and ".."
/// are resolved by text, "/" counts as "\" outside "\\?\" forms. Never ends in
/// "/" except the root. Nothing for texts that name no place of the system;
/// `error` then receives a Win32 error code.
std::optional<std::string> NativePathText(TStringView path, DWORD* error = nullptr);
/// As NativePathText, then spelled as on disk: the path as it stands if that
/// exists; otherwise component by component, exactly or else ignoring case;
/// what follows the first missing component stays as written. Touches the disk.
std::optional<std::string> NativePath(TStringView path, DWORD* error = nullptr);
/// Continues `directory` (which exists) by one name, spelled as on disk.
std::string FindNativeChild(const std::string& directory, const std::string& name);
/// The Windows path of an absolute native path, by text alone. Of several drives
/// and shares that lead to it the longest directory wins. A drive's root ends in
/// "\" ("C:\"), other paths and shares don't. Empty if no drive leads there.
TString WindowsPath(std::string_view native);
/// Joins a native directory and a name.
std::string JoinNative(std::string_view directory, std::string_view name);

/// "\\?\Volume{guid}\" of a mapped drive; empty if there is none. The same
/// letter and directory always give the same name.
TString VolumeNameOfDrive(char16_t letter);
/// The drive letter of a volume name, with or without trailing "\"; 0 if none.
char16_t DriveOfVolumeName(TStringView name);

// --- file information ------------------------------------------------------
/// What the system tells of one object, in Windows terms.
struct TFileInfo {
  DWORD Attributes = 0;    ///< FILE_ATTRIBUTE_*
  DWORD ReparseTag = 0;    ///< IO_REPARSE_TAG_SYMLINK for symbolic links, else 0
  std::uint64_t Size = 0;  ///< bytes; 0 for directories and links
  std::uint64_t AllocationSize = 0;
  FILETIME Created{};  ///< birth time, else the earliest time known
  FILETIME Accessed{};
  FILETIME Written{};
  DWORD VolumeSerial = 0;
  std::uint64_t FileIndex = 0;
  DWORD Links = 1;
  std::uint32_t Mode = 0;   ///< native mode bits
  std::uint32_t Owner = 0;  ///< native user id
  bool IsDirectory() const { return (Attributes & 0x10u) != 0; }
  bool IsSymlink() const { return ReparseTag != 0; }
};

/// Looks one object up. A symbolic link is described itself, and is a directory
/// if it leads to one; with `follow` what it leads to is described. Nothing on
/// failure; `error` then receives a Win32 error code.
std::optional<TFileInfo> GetFileInfo(const std::string& native, bool follow = false,
                                     DWORD* error = nullptr);
/// The same for a name in an open directory.
std::optional<TFileInfo> GetFileInfoAt(int directory, const char* name, bool follow = false,
                                       DWORD* error = nullptr);

/// 100 ns units since 1601-01-01 UTC, from a native time and back. Times before
/// 1601 become 0.
FILETIME FileTimeFromNative(std::int64_t seconds, std::uint32_t nanoseconds);
void FileTimeToNative(const FILETIME& time, std::int64_t& seconds, std::uint32_t& nanoseconds);

/// The Win32 error code for a native error number; ERROR_GEN_FAILURE for
/// unknown ones, ERROR_SUCCESS for 0.
DWORD Win32FromErrno(int error) noexcept;

/// Reads the names of one directory, without "." and "..". One thread.
class TNativeDirectory {
 public:
  /// Opens a directory; `error` receives a Win32 error code on failure.
  static std::optional<TNativeDirectory> Open(const std::string& native, DWORD* error = nullptr);
  TNativeDirectory(TNativeDirectory&& other) noexcept;
  TNativeDirectory& operator=(TNativeDirectory&& other) noexcept;
  ~TNativeDirectory();

  /// The next name, or null at the end or on an error. Valid until the next call.
  const char* Next();
  /// Native type of the last name (DT_DIR, DT_REG, ...); DT_UNKNOWN if not told.
  unsigned char EntryType() const { return fType; }
  /// The directory's descriptor, for GetFileInfoAt.
  int Descriptor() const;
  /// Win32 error code of a reading that ended early; 0 otherwise.
  DWORD Error() const { return fError; }
  /// From the beginning again.
  void Rewind();

 private:
  explicit TNativeDirectory(void* stream) : fStream(stream) {}
  void* fStream;
  unsigned char fType = 0;
  DWORD fError = 0;
};

}  // namespace oak
