// The table of mounted folders.
#pragma once

#include <memory>

#include "oak/platform/portable/PortableShell.h"

namespace oak {

/// A mount as it stands in the table; never changed.
struct TMountEntry {
  TMountHandle Handle = 0;
  TString Place;  ///< of the parent, see MountPlace
  TFolderMount Mount;
};
using TMountEntryPtr = std::shared_ptr<const TMountEntry>;

/// The key under which the mounts of a folder are kept, from its parsing name.
TString MountPlace(TStringView parsingName);

/// Grows with every mount and unmount: what was found in an older generation may
/// be out of date. Any thread.
std::uint64_t MountGeneration() noexcept;

/// Whether any folder but the desktop shows mounts. Any thread, no lock.
bool HasInnerMounts() noexcept;

/// The mounts shown in a folder, as a source of elements of kind ekMount.
Ref<IFolderSource> MakeMountSource(TString place);

}  // namespace oak
