// For the sources of OakItemIdList only.
#pragma once

namespace oak {

/// Forgets special folders, their names and the known-folder manager.
void ClearSpecialFolders();

}  // namespace oak
