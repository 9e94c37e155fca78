#include "oak/namespace/Oak.Shell.Types.InvokeCommand.h"

#include "oak/base/HResult.h"
#include "oak/namespace/CommandParts.h"

namespace oak {

void TCMInvokeCommandInfoExHelper::Prepare(const TShellCommand& pCommand) {
  fInfo = {};
  fVerbW = pCommand.GetVerb();
  fVerb = ToUtf8(fVerbW);
  fInfo.cbSize = sizeof(fInfo);
  fInfo.fMask = CMIC_MASK_UNICODE | CMIC_MASK_ASYNCOK;
  if (pCommand == saDelete && !pCommand.OperationOptions.Contains(soAllowUndo))
    fInfo.fMask |= CMIC_MASK_SHIFT_DOWN;
  fInfo.lpVerb = fVerb.c_str();
  fInfo.lpVerbW = W(fVerbW);
  fInfo.nShow = SW_SHOWNORMAL;
}

void TCMInvokeCommandInfoExHelper::SetVerbById(UINT pOffset) {
  // A verb whose high word is 0 is a number.
  const auto number = static_cast<ULONG_PTR>(static_cast<WORD>(pOffset));
  fInfo.lpVerb = reinterpret_cast<LPCSTR>(number);
  fInfo.lpVerbW = reinterpret_cast<LPCWSTR>(number);
}

void TCMInvokeCommandInfoExHelper::SetDirectory(TStringView pDirectory) {
  fDirectoryW = pDirectory;
  fInfo.lpDirectoryW = W(fDirectoryW);
}

void TCMInvokeCommandInfoExHelper::Invoke(IContextMenu* pContextMenu) {
  THResultHelper::CheckForError(
      pContextMenu->InvokeCommand(reinterpret_cast<CMINVOKECOMMANDINFO*>(&fInfo)));
}

void TCMInvokeCommandInfoExHelper::Invoke(IContextMenu* pContextMenu,
                                          const TShellCommand& pCommand) {
  const auto menu = TMenuHandle::Adopt(Api().CreatePopupMenu());
  THResultHelper::CheckForError(pContextMenu->QueryContextMenu(
      menu.Get(), 0, FirstShellCommand, LastVerbCommand, CMF_OPTIMIZEFORINVOKE));
  Prepare(pCommand);
  if (pCommand.OperationOptions.Contains(soSilent)) fInfo.fMask |= CMIC_MASK_FLAG_NO_UI;
  if (!pCommand.Destination.empty() && pCommand.In({saDefault, saOpen}))
    SetDirectory(pCommand.Destination);
  Invoke(pContextMenu);
}

}  // namespace oak
