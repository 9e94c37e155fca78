// Message dialogs.
#pragma once

#include "oak/framework/Forms.h"

namespace oak {

enum TMsgDlgType : std::uint8_t { mtWarning, mtError, mtInformation, mtConfirmation, mtCustom };
enum TMsgDlgButton : std::uint8_t {
  mbYes,
  mbNo,
  mbOK,
  mbCancel,
  mbAbort,
  mbRetry,
  mbIgnore,
  mbAll,
  mbClose
};
using TMsgDlgButtons = TSet<TMsgDlgButton>;

/// The result of a dialog that a button ends.
TModalResult ModalResultOf(TMsgDlgButton button);

/// Shows a text with a title line and waits for a button. Without any button it has mbOK; a default
/// button that is not there is replaced by the first one. Main thread.
TModalResult TaskMessageDlg(const TString& title, const TString& text, TMsgDlgType kind,
                            TMsgDlgButtons buttons, TMsgDlgButton defaultButton = mbOK);
/// The same without a title line.
TModalResult MessageDlg(const TString& text, TMsgDlgType kind, TMsgDlgButtons buttons,
                        TMsgDlgButton defaultButton = mbOK);
void ShowMessage(const TString& text);

/// What the others are made of: `caption` stands in the title bar, `instruction` above the text.
TModalResult MessageDialog(const TString& caption, const TString& instruction, const TString& text,
                           TMsgDlgType kind, TMsgDlgButtons buttons, TMsgDlgButton defaultButton);

}  // namespace oak
