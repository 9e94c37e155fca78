// TShellControlHelper: helper functions around shell objects for cursors and
// controls.
#pragma once

#include "oak/framework/Cancellation.h"
#include "oak/namespace/Oak.Shell.Types.Interfaces.h"

namespace oak {

struct TShellControlHelper {
  /// Whether a folder is too slow to be enumerated on the main thread. Reads at
  /// most 101 objects on another thread and waits at most 1000 ms for them;
  /// cancellation ends the wait early and answers true.
  static bool ShouldEnumerateAsync(const Ref<IItemIdList>& pItemIdList,
                                   const Ref<ICancellationIndicator>& pCancel);
  /// Enters a place once, so that the system asks for a logon where it needs
  /// one. True if that raised nothing.
  static bool Authenticate(TStringView pPath, bool pShowErrors);
  /// Whether the user's settings show the extensions of known file types.
  static bool GetShellShowExtensions();
};

}  // namespace oak
