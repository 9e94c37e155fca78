#include "oak/framework/Dialogs.h"

#include <array>

#include "oak/framework/Application.h"
#include "oak/framework/Host.h"
#include "oak/framework/WidgetSet.h"

namespace oak {

TModalResult ModalResultOf(TMsgDlgButton button) {
  static constexpr std::array<TModalResult, 9> results{mrYes,   mrNo,     mrOk,  mrCancel, mrAbort,
                                                       mrRetry, mrIgnore, mrAll, mrClose};
  return results[button];
}

TModalResult MessageDialog(const TString& caption, const TString& instruction, const TString& text,
                           TMsgDlgType kind, TMsgDlgButtons buttons, TMsgDlgButton defaultButton) {
  if (buttons.IsEmpty()) buttons = mbOK;
  for (int button = mbYes; !buttons.Contains(defaultButton); ++button)
    if (buttons.Contains(static_cast<TMsgDlgButton>(button)))
      defaultButton = static_cast<TMsgDlgButton>(button);
  TMessageDialog dialog;
  dialog.Title = caption;
  dialog.Instruction = instruction;
  dialog.Text = text;
  dialog.Kind = kind;
  dialog.Buttons = static_cast<std::uint32_t>(buttons.ToBits());
  dialog.DefaultButton = ModalResultOf(defaultButton);
  TWidgetSet& widgets = WidgetSet();  // fills the host
  dialog.Owner = Host().ApplicationWindow ? Host().ApplicationWindow() : nullptr;
  return static_cast<TModalResult>(widgets.ShowDialog(dialog));
}

TModalResult TaskMessageDlg(const TString& title, const TString& text, TMsgDlgType kind,
                            TMsgDlgButtons buttons, TMsgDlgButton defaultButton) {
  return MessageDialog(Application().GetTitle(), title, text, kind, buttons, defaultButton);
}

TModalResult MessageDlg(const TString& text, TMsgDlgType kind, TMsgDlgButtons buttons,
                        TMsgDlgButton defaultButton) {
  return MessageDialog(Application().GetTitle(), {}, text, kind, buttons, defaultButton);
}

void ShowMessage(const TString& text) { MessageDlg(text, mtCustom, mbOK); }

}  // namespace oak
