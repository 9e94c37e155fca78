// What the cursor does to its objects, and the window that the shell may use.
#include "oak/namespace/FolderTrek.h"
#include "oak/base/HResult.h"
#include "oak/framework/Host.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/Api.h"
#include "oak/platform/MainThread.h"

namespace oak {
namespace {

/// The shell may apply a new name a moment later than it says.
constexpr DWORD RenameDelayMs = 300;
/// What the shell is told to take the new name as.
constexpr DWORD RenameFlags = 32;
constexpr int DeepestFolderWithWindow = 3;

void ReportRenameFailure(HRESULT pStatus) {
  const TString line = u"Renaming failed. Error code: " + IntToStr(pStatus) + u"  " +
                       GetErrorMessageText(static_cast<std::uint32_t>(pStatus));
  Api().OutputDebugStringW(W(line));
}

}  // namespace

HWND TFolderTrek::GetWindowHandle(bool pForce) {
  if (!pForce && !fShowErrorMessages &&
      (FObjects || !FFolderIdList || !TOakItemIdList::IsNetworkPidl(FFolderIdList) ||
       !IsMainThread() || FFolderIdList->Depth() > DeepestFolderWithWindow))
    return nullptr;
  if (GetOwner() && Host().WindowOf) {
    if (HWND window = Host().WindowOf(GetOwner())) return window;
  }
  return Host().ApplicationWindow ? Host().ApplicationWindow() : nullptr;
}

Ref<IUnknown> TFolderTrek::GetUIObject(REFIID pInterfaceID) {
  if (!CheckIfValid(false)) RaiseNoObject();
  // What the shell runs meanwhile may select something else, or end the cursor.
  const Ref<IItemIdListCollection> objects = FMultiObjects;
  if (objects && objects->Count() > 0) return objects->GetUIObject(pInterfaceID);
  const Ref<IShellFolder> folder = GetShellFolder();
  if (!folder || !HasObject()) RaiseNoObject();
  const Ref<IItemIdList> item = FItemIDList;
  PCUITEMID_CHILD child = item->WindowsPointer();
  Ref<IUnknown> object;
  THResultHelper::CheckForError(folder->GetUIObjectOf(GetWindowHandle(false), 1, &child,
                                                      pInterfaceID, nullptr, object.PutVoid()));
  return object;
}

void TFolderTrek::RenameObject(TString& NewName) {
  const TWaitCursor hourglass;
  const TString oldName = GetShellObjectName(true);
  const Ref<IShellFolder> folder = GetShellFolder();
  if (!folder) RaiseNoObject();
  TString value = NewName;
  if (!TShellControlHelper::GetShellShowExtensions()) {
    const TString extension = ExtractFileExt(GetFullPath());
    if (!extension.empty() && HasFileExtension(value, extension) &&
        !HasFileExtension(oldName, extension))
      value.resize(value.size() - extension.size());
  }
  PITEMID_CHILD renamed = nullptr;
  const HRESULT status = folder->SetNameOf(GetWindowHandle(true), FItemIDList->WindowsPointer(),
                                           W(value), RenameFlags, &renamed);
  TPidl element = TPidl::Adopt(renamed);
  if (SUCCEEDED(status) && element)
    SetItemIdList(TOakItemIdList::Create(std::move(element)));
  else
    ReportRenameFailure(status);
  NewName = GetShellObjectName(true);
  if (NewName == oldName) {
    Api().Sleep(RenameDelayMs);
    NewName = GetShellObjectName(true);
  }
}

Ref<IItemIdList> TFolderTrek::AddLinkTo(TStringView pDestinationFolder, TStringView pLinkName) {
  return TShellLinkHelper::AddLinkTo(GetAbsoluteItemIdList(), pDestinationFolder, pLinkName);
}

void TFolderTrek::CopyTo(IFolderTrekNotifier& pChangeNotifier) {
  if (FMultiObjects && FMultiObjects->Count() > 0)
    pChangeNotifier.Add(FMultiObjects);
  else if (const Ref<IItemIdList> item = GetAbsoluteItemIdList())
    pChangeNotifier.AddItemIdList(item);
}

bool TFolderTrek::ShowNetConnectionDialog() {
  return Api().WNetConnectionDialog &&
         Api().WNetConnectionDialog(GetWindowHandle(true), RESOURCETYPE_DISK) == 0;
}

}  // namespace oak
