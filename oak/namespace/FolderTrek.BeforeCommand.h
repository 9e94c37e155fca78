// TBeforeCommandEventArgs: what OnBeforeCommand is told of a command.
#pragma once

#include "oak/namespace/Oak.Shell.Types.Commands.h"
#include "oak/namespace/Oak.Shell.Types.Interfaces.h"

namespace oak {

/// A command that is about to be carried out, and whether it shall be.
class TBeforeCommandEventArgs {
 public:
  /// pElements: what the command is for; may be nil.
  explicit TBeforeCommandEventArgs(TShellCommand pCommand,
                                   TCommandSource pSource = TCommandSource::Call,
                                   Ref<IItemIdListCollection> pElements = nullptr);

  const TShellCommand& GetCommand() const noexcept { return fCommand; }
  /// The command's verb; empty for an entry of a menu that has none.
  const TString& GetVerb() const noexcept { return fVerb; }
  TCommandSource GetSource() const noexcept { return fSource; }
  const Ref<IItemIdListCollection>& GetElements() const noexcept { return fElements; }
  bool GetCancel() const noexcept { return fCancel; }
  /// Stops the command, or undoes what an earlier handler decided.
  void SetCancel(bool pValue) noexcept { fCancel = pValue; }

 private:
  TShellCommand fCommand;
  TString fVerb;
  Ref<IItemIdListCollection> fElements;
  TCommandSource fSource;
  bool fCancel = false;
};

}  // namespace oak
