// The free functions on paths of unit FolderTrek. Included through
// FolderTrek.h; stands alone for units that need no cursor.
#pragma once

#include <cstdint>

#include "oak/base/Text.h"
#include "oak/namespace/Oak.Shell.Types.Interfaces.h"
#include "oak/platform/shell_api.h"

namespace oak {

// --- judged by the text alone: no look-up, any thread ----------------------

/// A root: "C:", "C:\", also "\\server\share".
bool IsDrive(TStringView pPath);
/// Starts with a drive letter, or is a UNC path or a UNC server.
bool IsAbsolutePath(TStringView pText);
/// A scheme of three characters or more before the first ":".
bool IsProtocolPath(TStringView pText);
/// Starts with "search-ms:", quoted or not.
bool IsSearchFolderPath(TStringView pText);
/// "\\" and at least one more "\", or the long form "\\?\UNC\".
bool IsUNCPath(TStringView pText);
/// "\\server" with nothing behind it and no wildcard.
bool IsUncServer(TStringView pText);
/// The extension with or without its dot, ignoring case and a trailing "\".
bool HasFileExtension(TStringView pPath, TStringView pExtension);
/// Without one trailing "\".
TString ExcludeTrailingDelimiter(TStringView pText);
/// The same text ignoring case and one trailing "\" each.
bool SamePath(TStringView pPath1, TStringView pPath2);
/// Whether the child lies below the parent, component by component.
bool IsSubPathOf(TStringView pParent, TStringView pChild);
/// "::{...": a parsing name that is a class identifier.
bool IsFolderClassId(TStringView pText);
/// A device path of the USB bus.
bool IsUSBDevicePath(TStringView pText);

// --- ask the system --------------------------------------------------------

/// The order in which the shell lists names: digits by value.
int CompareFilenames(TStringView pName1, TStringView pName2);
/// A UNC form, or a letter of a network drive.
bool IsNetworkPath(TStringView pPath);
/// One file look-up; for a drive root whether the drive is ready.
bool FileOrFolderExists(TStringView pPath);
/// Whether a drive or share can be read now. With authentication wanted and a
/// user at hand, a logon may be asked for. The thread's last error tells why not.
bool IsDriveReady(TStringView pPath, bool pAuthenticate);
/// Whether an item lies in the results of a search.
bool IsInSearchFolder(const Ref<IItemIdList>& pItemIdList, bool pIncludeItself);

/// Path of a special folder, empty without one.
TString GetPathFromSpecialFolder(TOakShellFolder pSpecialFolder);
TString GetUserProfilePath();
/// Lets GetUserProfilePath of a 32-bit process on a 64-bit system correct the
/// profile of the system's own account. Off by default.
void SetCorrectSystemProfilePath(bool pEnabled);
TString OakGetWindowsPath();
/// The path of the object that the desktop parses the text to, or the text where
/// there is none.
TString GetFriendlyName(TStringView pPath);
/// Environment variables, then %DATE%, %TIME% and %MYDOCUMENTS%.
TString OakExpandEnvironmentStrings(TStringView pText);

/// Size of a file in bytes, -1 if there is none.
std::int64_t GetFileSize(TStringView pPath);
/// The size that a find call reported.
std::int64_t GetFileSize64(const WIN32_FIND_DATAW& pFindData);
/// A size in bytes as the shell words it.
TString FormatByteSize(std::int64_t pSize);
/// Bytes that the user may still write, and bytes in all. False on failure.
bool OakGetDiskFreeSpace(TStringView pPath, std::uint64_t& pFree, std::uint64_t& pTotal);
/// Whether this is a 32-bit process on a 64-bit system.
bool IsWOW64();
/// Target path of a shortcut file, empty if it leads nowhere.
TString GetLinkTarget(TStringView pPath);

}  // namespace oak
