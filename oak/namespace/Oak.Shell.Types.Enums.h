// The enumerations that the whole library shares. Included through
// Oak.Shell.Types.h; stands alone so that headers that need only a name of a
// value stay cheap to compile.
#pragma once

#include <cstdint>

#include "oak/base/Exceptions.h"
#include "oak/base/Set.h"

namespace oak {

/// Two levels of sameness of shell objects.
enum TItemIdListComparison : std::uint8_t {
  ilcDisplay,  ///< The user would call it the same place; paths may decide.
  ilcExact     ///< The same shell object, depth included.
};

/// Who frees a pidl handed to an item.
enum TItemIdListOwnership : std::uint8_t {
  iloOwnsMemory,    ///< The item takes the caller's pidl and frees it.
  iloForeignOwned,  ///< The pidl outlives the item, which never frees it.
  iloCopyMemory     ///< The item makes and frees its own copy.
};

/// The forms in which an item tells its name.
enum TItemIdListDisplayNameFormat : std::uint8_t {
  dnfNormal,
  dnfInFolder,      ///< As shown in the parent folder.
  dnfPath,          ///< Absolute, for editing.
  dnfPhysicalPath,  ///< File-system path.
  dnfRelativeForAddressBar,
  dnfRelativeParsing,
  dnfAbsoluteParsing,
  dnfForExplorer,    ///< In-folder names of all elements, class identifiers kept.
  dnfPreferPhysical  ///< File-system path if there is one, else dnfPath.
};

enum TFilesFolders : std::uint8_t { ffFilesOnly, ffFoldersOnly, ffFilesAndFolders };

enum TOakShellOperation : std::uint8_t {
  sopCopy,
  sopMove,
  sopDrag,
  sopDrop,
  sopCut,
  sopPaste,
  sopDelete,
  sopRemove,
  sopAdd,
  sopRename
};
using TOakShellOperations = TSet<TOakShellOperation>;

/// What made a command run.
enum class TCommandSource : std::uint8_t { Call, Keyboard, ContextMenu };

enum TShellAction : std::uint8_t {
  saDefault,
  saOpen,
  saExplore,
  saCopy,
  saCut,
  saPaste,
  saDelete,
  saRename,
  saProperties,
  saCopyPath,
  saPinToHome,
  saCreateNewFolder,
  saOpenCommandPrompt,
  saDeleteNoUndo,
  saBdeUnlock,
  saOpenWith,
  saGoUp,
  saUnknown
};
using TShellActions = TSet<TShellAction>;

enum TOakShellFolder : std::uint8_t {
  SF_FILESYSTEMFOLDER,
  SF_BITBUCKET,
  SF_CONTROLS,
  SF_DESKTOP,
  SF_DESKTOPDIRECTORY,
  SF_DRIVES,
  SF_FONTS,
  SF_NETHOOD,
  SF_NETWORK,
  SF_PERSONAL,
  SF_PRINTERS,
  SF_PROGRAMS,
  SF_RECENT,
  SF_SENDTO,
  SF_STARTMENU,
  SF_STARTUP,
  SF_TEMPLATES,
  SF_FAVORITES,
  SF_COMMON_STARTMENU,
  SF_COMMON_STARTUP,
  SF_COMMON_DESKTOPDIRECTORY,
  SF_APPDATA,
  SF_PRINTHOOD,
  SF_COMMON_FAVORITES,
  SF_INTERNET_CACHE,
  SF_COOKIES,
  SF_HISTORY,
  SF_COMMON_PROGRAMS,
  SF_ALTSTARTUP,
  SF_COMMON_APPDATA,
  SF_COMMON_DOCUMENTS,
  SF_INTERNET,
  SF_LOCAL_APPDATA,
  SF_MYPICTURES,
  SF_PROGRAM_FILES,
  SF_SYSTEM,
  SF_PROGRAM_FILES_COMMON,
  SF_WINDOWS,
  SF_PROGRAM_FILESX86,
  SF_PROGRAM_FILES_COMMONX86,
  SF_SYSTEMX86,
  SF_MY_MUSIC,
  SF_MY_VIDEOS,
  SF_LIBRARIES,
  SF_LIBRARY_DOCUMENTS,
  SF_LIBRARY_PICTURES,
  SF_LIBRARY_MUSIC,
  SF_LIBRARY_VIDEOS,
  SF_LIBRARY_PUBLIC,
  SF_PROFILE,
  SF_HOME_GROUP,
  SF_LINKS,
  SF_QUICKACCESS,
  SF_DOWNLOADS,
  SF_ONEDRIVE,
  SF_QUICKLAUNCH,
  SF_UNKNOWN,  ///< A valid object that is no known folder.
  SF_INVALID   ///< No valid object, or not determined yet.
};
using TOakShellFolders = TSet<TOakShellFolder>;
inline constexpr int OakShellFolderCount = SF_INVALID + 1;

/// What an operation on files may do.
enum TOperationOption : std::uint8_t {
  soAllowUndo,
  soFilesOnly,
  soNoConfirmation,
  soNoConfirmMkDir,
  soNoErrorUI,
  soRenameCollision,
  soSilent,
  soSimpleProgress,
  soAsync,  ///< Chooses the thread, not a flag of the engine.
  soKeepNewer
};
using TOperationOptions = TSet<TOperationOption>;

}  // namespace oak
