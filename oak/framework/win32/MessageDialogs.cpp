// Message dialogs: of the task kind where the system has them, else plain ones.
#include <array>
#include <vector>

#include "oak/framework/Application.h"
#include "oak/framework/Dialogs.h"
#include "oak/framework/win32/Services.h"
#include "oak/framework/win32/System.h"

namespace oak::win32 {
namespace {

struct TButtonKind {
  TMsgDlgButton Button;
  TModalResult Result;
  int CommonButton;  // of the task dialog; 0: none of the standard ones
  LPCWSTR Caption;   // for those
};

// Results are the identifiers of the system's buttons. The order is that of the screen.
constexpr std::array<TButtonKind, 9> ButtonKinds{{
    {mbYes, mrYes, TDCBF_YES_BUTTON, nullptr},
    {mbNo, mrNo, TDCBF_NO_BUTTON, nullptr},
    {mbOK, mrOk, TDCBF_OK_BUTTON, nullptr},
    {mbAbort, mrAbort, 0, L"&Abort"},
    {mbRetry, mrRetry, TDCBF_RETRY_BUTTON, nullptr},
    {mbIgnore, mrIgnore, 0, L"&Ignore"},
    {mbAll, mrAll, 0, L"&All"},
    {mbCancel, mrCancel, TDCBF_CANCEL_BUTTON, nullptr},
    {mbClose, mrClose, TDCBF_CLOSE_BUTTON, nullptr},
}};

bool HasButton(const TMessageDialog& dialog, TMsgDlgButton button) {
  return (dialog.Buttons & (1u << button)) != 0;
}

HWND OwnerOf(const TMessageDialog& dialog) {
  return dialog.Owner ? dialog.Owner : ::GetActiveWindow();
}

LPCWSTR TaskIcon(std::uint8_t kind) {
  switch (kind) {
    case mtWarning:
      return TD_WARNING_ICON;
    case mtError:
      return TD_ERROR_ICON;
    case mtInformation:
    case mtConfirmation:  // the system has no question mark here
      return TD_INFORMATION_ICON;
    default:
      return nullptr;
  }
}

bool ShowTaskDialog(const TMessageDialog& dialog, int& result) {
  if (!Late().TaskDialogIndirect) return false;
  std::vector<TASKDIALOG_BUTTON> own;
  int common = 0;
  for (const TButtonKind& kind : ButtonKinds) {
    if (!HasButton(dialog, kind.Button)) continue;
    common |= kind.CommonButton;
    if (!kind.CommonButton) own.push_back({kind.Result, kind.Caption});
  }
  TASKDIALOGCONFIG config{};
  config.cbSize = sizeof config;
  config.hwndParent = OwnerOf(dialog);
  config.dwFlags = TDF_POSITION_RELATIVE_TO_WINDOW | TDF_SIZE_TO_CONTENT;
  if (HasButton(dialog, mbCancel)) config.dwFlags |= TDF_ALLOW_DIALOG_CANCELLATION;
  config.dwCommonButtons = common;
  config.pszWindowTitle = W(dialog.Title);
  config.pszMainIcon = TaskIcon(dialog.Kind);
  config.pszMainInstruction = dialog.Instruction.empty() ? nullptr : W(dialog.Instruction);
  config.pszContent = W(dialog.Text);
  config.cButtons = static_cast<UINT>(own.size());
  config.pButtons = own.data();
  config.nDefaultButton = dialog.DefaultButton;
  const TCommonControlsScope version6;
  return SUCCEEDED(Late().TaskDialogIndirect(&config, &result, nullptr, nullptr));
}

UINT PlainIcon(std::uint8_t kind) {
  switch (kind) {
    case mtWarning:
      return MB_ICONWARNING;
    case mtError:
      return MB_ICONERROR;
    case mtInformation:
      return MB_ICONINFORMATION;
    case mtConfirmation:
      return MB_ICONQUESTION;
    default:
      return 0;
  }
}

/// The plain dialog has fixed sets: the first that has all wanted buttons.
UINT PlainButtons(const TMessageDialog& dialog) {
  const bool cancel = HasButton(dialog, mbCancel);
  if (HasButton(dialog, mbAbort) || HasButton(dialog, mbIgnore)) return MB_ABORTRETRYIGNORE;
  if (HasButton(dialog, mbRetry)) return MB_RETRYCANCEL;
  if (HasButton(dialog, mbYes) || HasButton(dialog, mbNo) || HasButton(dialog, mbAll))
    return cancel ? MB_YESNOCANCEL : MB_YESNO;
  return cancel ? MB_OKCANCEL : MB_OK;
}

UINT PlainDefault(UINT buttons, int result) {
  static constexpr int order[6][3] = {{mrOk, 0, 0},
                                      {mrOk, mrCancel, 0},
                                      {mrAbort, mrRetry, mrIgnore},
                                      {mrYes, mrNo, mrCancel},
                                      {mrYes, mrNo, 0},
                                      {mrRetry, mrCancel, 0}};
  if (result == order[buttons][1]) return MB_DEFBUTTON2;
  return result == order[buttons][2] && result ? MB_DEFBUTTON3 : MB_DEFBUTTON1;
}

}  // namespace

int ShowMessageDialog(const TMessageDialog& dialog) {
  int result = mrCancel;
  if (ShowTaskDialog(dialog, result)) return result;
  TString text = dialog.Instruction;
  if (!text.empty() && !dialog.Text.empty()) text += u"\n\n";
  text += dialog.Text;
  const UINT buttons = PlainButtons(dialog);
  const UINT flags = buttons | PlainIcon(dialog.Kind) | PlainDefault(buttons, dialog.DefaultButton);
  return ::MessageBoxW(OwnerOf(dialog), W(text), W(dialog.Title), flags);
}

}  // namespace oak::win32
