// TShellControlHelper: helper functions around shell objects for cursors and
// controls.
#pragma once

#include "oak/base/Variant.h"
#include "oak/framework/Cancellation.h"
#include "oak/namespace/Oak.Shell.Types.Interfaces.h"

namespace oak {

class TShellColumnId;

struct TShellControlHelper {
  /// A length given for 96 pixels per inch, in pixels of the active form, or of
  /// the screen without one. Never less than pPixels. Main thread.
  static int ScaledPixels(int pPixels);
  /// A column's value as the user reads it; empty for an empty or null value.
  static TString VariantToString(const TVariant& pValue, const TShellColumnId& pColumn);
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
