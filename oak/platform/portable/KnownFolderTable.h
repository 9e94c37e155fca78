// Where the directories of the table of known folders start from.
#pragma once

#include "oak/platform/portable/PortableKnownFolders.h"

namespace oak {

/// The directory that TKnownFolder::RelativePath is relative to.
enum class TKnownFolderBase : std::uint8_t {
  None,  ///< no directory
  Root,
  Home,
  Config,
  Data,
  Cache,
  Own,  ///< "oak-shell" in the data directory
  ProgramData,
  ProgramFiles,
  ProgramFilesX86,
  Windows,
  System,
  UserDesktop,  ///< from here on the directories of user-dirs.dirs
  UserDocuments,
  UserDownload,
  UserMusic,
  UserPictures,
  UserVideos,
  UserTemplates,
  UserPublicshare,
  Count
};

}  // namespace oak
