// The icons of the shell: which there are, and which one an object has.
#pragma once

#include "oak/base/Text.h"

namespace oak {

/// Position in the system's image lists. Up to iconDesktop in the numbering of the system's own
/// icon library, ours after that; numbers stay what they are.
enum TShellIcon : int {
  iconUnknown = 0,
  iconDocument = 1,
  iconProgram = 2,
  iconFolder = 3,
  iconFolderOpen = 4,
  iconRemovable = 7,
  iconDrive = 8,
  iconNetDrive = 9,
  iconCdRom = 11,
  iconNetwork = 13,
  iconComputer = 15,
  iconServer = 18,
  iconSettings = 21,
  iconShare = 28,
  iconLinkOverlay = 29,
  iconShareOverlay = 30,
  iconTrash = 31,
  iconTrashFull = 32,
  iconDesktop = 34,
  iconUser = 35,
  iconLibraries = 36,
  iconQuickAccess = 37,
  iconText = 40,
  iconImage = 41,
  iconAudio = 42,
  iconVideo = 43,
  iconArchive = 44,
  iconSystemFile = 45,
  iconMail = 46,
  iconContact = 47,
  iconCalendar = 48,
  iconLink = 49,
  iconCount = 50
};

/// The icon of a file by the extension of its name.
TShellIcon IconOfFileName(TStringView name);

}  // namespace oak
