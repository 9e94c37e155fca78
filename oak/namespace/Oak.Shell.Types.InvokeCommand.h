// TCMInvokeCommandInfoExHelper: carrying a command out through a context menu.
#pragma once

#include <string>

#include "oak/base/Ref.h"
#include "oak/namespace/Oak.Shell.Types.Commands.h"
#include "oak/platform/shell_api.h"

namespace oak {

/// A CMINVOKECOMMANDINFOEX together with the texts that it points to. One thread
/// at a time, the one of the menu's apartment.
class TCMInvokeCommandInfoExHelper {
 public:
  TCMInvokeCommandInfoExHelper() = default;
  TCMInvokeCommandInfoExHelper(const TCMInvokeCommandInfoExHelper&) = delete;
  TCMInvokeCommandInfoExHelper& operator=(const TCMInvokeCommandInfoExHelper&) = delete;

  /// Fills the structure anew: no window, shown normally. Deleting without
  /// soAllowUndo holds Shift down, and so passes by the recycle bin. Raises
  /// EInvalidOperation for a command without a verb.
  void Prepare(const TShellCommand& pCommand = TShellCommand(saDefault));
  /// The verb becomes an item of the menu, counted from the menu's first one.
  void SetVerbById(UINT pOffset);
  /// Working directory of what is started.
  void SetDirectory(TStringView pDirectory);
  /// Carries the prepared command out. Raises EFolderTrekError.
  void Invoke(IContextMenu* pContextMenu);
  /// Fills a menu, which many handlers insist on, prepares the command and
  /// carries it out. Raises EFolderTrekError.
  void Invoke(IContextMenu* pContextMenu, const TShellCommand& pCommand);

  CMINVOKECOMMANDINFOEX& Info() noexcept { return fInfo; }

 private:
  CMINVOKECOMMANDINFOEX fInfo{};
  std::string fVerb;
  TString fVerbW;
  TString fDirectoryW;
};

}  // namespace oak
