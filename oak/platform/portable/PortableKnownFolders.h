// The known folders of the portable shell: their identifiers and places.
//
// Folders of the user lie where the desktop's own directories lie (user-dirs.dirs,
// XDG base directories). Those that the native system does not have (Recent,
// SendTo, ...) lie below "oak-shell" in the user's data directory.
#pragma once

#include <span>
#include <string>

#include "oak/base/Text.h"

namespace oak {

enum class TKnownFolderBase : std::uint8_t;

/// What a known folder is; the values are those of KF_CATEGORY.
enum class TKnownFolderKind : std::uint8_t {
  Virtual = 1,  ///< an object of the shell, found by its parsing name
  Fixed = 2,    ///< a directory of the system
  Common = 3,   ///< a directory for all users
  PerUser = 4   ///< a directory of the user
};

/// One known folder. All of them live as long as the process.
struct TKnownFolder {
  GUID Id;    ///< FOLDERID_...
  int Csidl;  ///< CSIDL_..., -1 without one
  TKnownFolderKind Kind;
  const char16_t* Name;         ///< canonical, never translated: "Personal"
  const char16_t* DisplayName;  ///< as the user reads it: "Documents"
  /// Parsing name of a folder that the shell shows by identifier
  /// ("::{20D04FE0-...}"), else empty. Directories may have one too.
  const char16_t* ParsingName;
  GUID Parent;               ///< identifier of the parent, or the null one
  TKnownFolderBase Base;     ///< which directory RelativePath starts from
  const char* RelativePath;  ///< native, relative to the base; may be empty
  bool Hidden;               ///< not shown in its parent
  bool Created;              ///< made when first asked for
};

/// All known folders. Where two share one place the first is the usual one.
std::span<const TKnownFolder> KnownFolders() noexcept;

/// Nil if there is none. Any thread, no file access.
const TKnownFolder* FindKnownFolder(REFGUID id) noexcept;
/// Flags in the high byte are ignored; CSIDL_DESKTOPDIRECTORY is the desktop,
/// CSIDL_ALTSTARTUP the start-up folder.
const TKnownFolder* FindKnownFolderByCsidl(int csidl) noexcept;
/// By canonical name, ignoring case.
const TKnownFolder* FindKnownFolderByName(TStringView name) noexcept;
/// By parsing name, ignoring case; with or without the leading "::" and "shell:".
const TKnownFolder* FindKnownFolderByParsingName(TStringView name) noexcept;
/// By class identifier: the last one of the parsing name.
const TKnownFolder* FindKnownFolderByClassId(REFGUID clsid) noexcept;

/// How a path is compared with those of the known folders.
enum class TKnownFolderMatch : std::uint8_t {
  Exact,         ///< the folder's own path as spelled on disk (drive letter in any case)
  IgnoreCase,    ///< the folder's own path in any case
  NearestParent  ///< the deepest folder, in any case, that is or holds the path
};
/// By Windows path. The places are found once for each portable configuration.
const TKnownFolder* FindKnownFolderByPath(TStringView path, TKnownFolderMatch match);

/// Native path of a folder; empty for those without a directory.
std::string KnownFolderNativePath(const TKnownFolder& folder);
/// Windows path of a folder; empty for those without a directory and those that
/// no drive leads to.
TString KnownFolderPath(const TKnownFolder& folder);
/// Makes the directory if it is missing and either `always` is set or the folder
/// is one that is made when first asked for. False if it is not there then.
bool EnsureKnownFolder(const TKnownFolder& folder, bool always = false);

/// Registers the class of the known folder manager.
void RegisterKnownFolderManager();

}  // namespace oak
