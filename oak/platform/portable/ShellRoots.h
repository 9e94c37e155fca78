// The folders that the namespace has of its own.
#pragma once

#include "oak/platform/portable/PortableShell.h"

namespace oak {

/// The drives of the configuration.
Ref<IFolderSource> MakeComputerSource();
/// The servers of the configuration, with their shares.
Ref<IFolderSource> MakeNetworkSource();
/// Categories with a few of the system's published items.
Ref<IFolderSource> MakeControlPanelSource();
/// The user's own folders, pinned.
Ref<IFolderSource> MakeQuickAccessSource();

}  // namespace oak
