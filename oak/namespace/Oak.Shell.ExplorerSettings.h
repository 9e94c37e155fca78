// What the Explorer's navigation pane shows.
#pragma once

namespace oak {

/// Answers by the user's settings, read at each call. A program that wants other answers derives
/// from it; see TShellControlHelper::SetExplorerSettings. Called on any thread.
class TExplorerSettings {
 public:
  virtual ~TExplorerSettings() = default;
  /// Whether the pane shows all places instead of the chosen ones.
  virtual bool ShellShowAllFolders() const;
  /// Whether the pane follows the folder that is open.
  virtual bool ShellExpandToCurrentFolder() const;
};

}  // namespace oak
