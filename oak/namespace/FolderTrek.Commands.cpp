// Commands of the cursor: the events before them, and the ways to carry them out.
#include <algorithm>
#include <optional>

#include "oak/framework/Events.h"
#include "oak/framework/Forms.h"
#include "oak/framework/Host.h"
#include "oak/namespace/CommandParts.h"
#include "oak/namespace/FolderTrek.BeforeCommand.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"
#include "oak/namespace/Oak.Shell.Types.Commands.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/MainThread.h"

namespace oak {
namespace {

constexpr std::size_t ClassicPathSize = 260;  // characters that a working directory's name may have
constexpr int DepthOfFolders = 3;             // desktop's computer, drive, folder

TString TextOfVerb(const TShellCommand& command) {
  try {
    return command.GetVerb();
  } catch (const EInvalidOperation&) {
    return {};
  }
}

/// Of the objects, else of the item; those that have gone keep their texts.
bool CopyPaths(const Ref<IItemIdList>& item, const Ref<IItemIdListCollection>& objects) {
  const bool hasObjects = objects && objects->Count() > 0;
  if (!hasObjects && !item) return false;
  Clipboard().SetAsText(hasObjects ? objects->ToString() : item->DisplayPath());
  return true;
}

}  // namespace

// --- before a command --------------------------------------------------------------

TBeforeCommandEventArgs::TBeforeCommandEventArgs(TShellCommand pCommand, TCommandSource pSource,
                                                 Ref<IItemIdListCollection> pElements)
    : fCommand(std::move(pCommand)),
      fVerb(TextOfVerb(fCommand)),
      fElements(std::move(pElements)),
      fSource(pSource) {}

bool TShellControlHelper::DoBeforeShellCommand(
    const TShellCommand& pCommand, TCommandSource pSource,
    const Ref<IItemIdListCollection>& pElements,
    const std::function<bool(TBeforeCommandEventArgs& pEventArgs)>& pBeforeInvoke) {
  TBeforeCommandEventArgs args(pCommand, pSource, pElements);
  return !pBeforeInvoke || pBeforeInvoke(args);
}

TObject* TFolderTrek::EventSender() noexcept {
  return GetOwner() ? GetOwner() : static_cast<TObject*>(this);
}

std::weak_ptr<const bool> TFolderTrek::Life() {
  if (!fLife) fLife = std::make_shared<const bool>(true);
  return fLife;
}

bool TFolderTrek::DoBeforeShellCommand(const TShellCommand& pCommand, TCommandSource pSource) {
  const auto life = Life();
  Ref<IItemIdListCollection> elements = FMultiObjects;
  if (OnBeforeCommand && !HasMultiObjects()) {
    elements = MakeRef<TItemIdListCollection>();
    if (const Ref<IItemIdList> item = GetAbsoluteItemIdList()) elements->Add(item);
  }
  bool execute = true;
  FireEvent(OnContextMenuSelect, TextOfVerb(pCommand), execute);
  return execute && !life.expired() &&
         TShellControlHelper::DoBeforeShellCommand(
             pCommand, pSource, elements,
             [this](TBeforeCommandEventArgs& args) { return BeforeInvokeCommand(args); });
}

bool TFolderTrek::BeforeInvokeCommand(TBeforeCommandEventArgs& pEventArgs) {
  const auto life = Life();
  bool execute = !pEventArgs.GetCancel();
  FireEvent(OnBeforeShellCommand, EventSender(), pEventArgs.GetVerb(), execute,
            pEventArgs.GetSource());
  if (life.expired()) return false;
  pEventArgs.SetCancel(!execute);
  FireEvent(OnBeforeCommand, EventSender(), pEventArgs);
  return !life.expired() && !pEventArgs.GetCancel();
}

void TFolderTrek::FireRename() { FireEvent(OnRename, EventSender()); }

// --- what a command is for -----------------------------------------------------------

bool TFolderTrek::HasMultiObjects() const { return FMultiObjects && FMultiObjects->Count() > 0; }

/// The first ones, absolute; empty without folder.
std::vector<Ref<IItemIdList>> TFolderTrek::SelectedItems(int pMost) {
  std::vector<Ref<IItemIdList>> items;
  if (!HasMultiObjects()) {
    if (const Ref<IItemIdList> item = GetAbsoluteItemIdList()) items.push_back(item);
    return items;
  }
  for (int i = 0; i < std::min(FMultiObjects->Count(), pMost); ++i) {
    const Ref<IItemIdList> item = FMultiObjects->GetItem(i);
    items.push_back(FFolderIdList && !item->IsAbsolute() ? FFolderIdList->Concat(item) : item);
  }
  return items;
}

bool TFolderTrek::InvokeOnSelection(const TShellCommand& pCommand) {
  // The command may change the selection, or end the cursor.
  if (HasMultiObjects()) {
    const Ref<IItemIdListCollection> objects = FMultiObjects;
    return objects->InvokeCommand(pCommand);
  }
  const Ref<IItemIdList> item = GetAbsoluteItemIdList();
  return item && item->InvokeCommand(pCommand);
}

// --- commands ----------------------------------------------------------------------

bool TFolderTrek::InvokeCommand(const TShellCommand& pCommand) {
  return DoBeforeShellCommand(pCommand) && InvokeOnSelection(pCommand);
}

void TFolderTrek::InvokeDefaultContextMenuCommand(const TStringArray& pPaths) {
  TFolderTrek cursor(nullptr);
  cursor.OnBeforeCommand = OnBeforeCommand;
  cursor.OnBeforeShellCommand = OnBeforeShellCommand;
  cursor.SetFolderIdList(FFolderIdList);
  for (const TString& path : TStringArray(pPaths)) {
    cursor.SetObjectName(path);
    cursor.InvokeCommand(TShellCommand(saDefault));
  }
}

bool TFolderTrek::InvokeContextMenuCommand(const TShellCommand& pCommand) {
  const TString verb = pCommand == saDefault ? TString(u"default") : pCommand.GetVerb();
  const bool isDelete = SameText(verb, u"DELETE");
  if (isDelete && !HasMultiObjects() && GetAttributes(SFGAO_CANDELETE) == 0) return false;
  TShellCommand command = pCommand;
  if (pCommand == saDefault) {
    command = TShellCommand(verb);
    command.Destination = pCommand.Destination;
    command.OperationOptions = pCommand.OperationOptions;
  }
  if (!DoBeforeShellCommand(command)) return false;
  std::optional<TWaitCursor> hourglass;
  if (IsMainThread()) hourglass.emplace();
  if (isDelete && HasMultiObjects()) return InvokeOnSelection(pCommand);
  if (SameText(verb, u"copypath")) return CopyPaths(GetAbsoluteItemIdList(), FMultiObjects);
  if (SameText(verb, u"explore")) return ExploreSelection();
  if (pCommand == saOpenCommandPrompt) return OpenCommandPromptHere();
  if (SameText(verb, u"pintohome") && !IsWindows10OrLater())
    return InvokeOnSelection(TShellCommand(saPinToHome));
  return InvokeByShell(pCommand, verb);
}

/// Objects that lie in one folder are shown together, by showing the first one.
bool TFolderTrek::ExploreSelection() {
  std::vector<Ref<IItemIdList>> items = SelectedItems();
  if (items.empty()) return false;
  if (HasMultiObjects() && items.front()->Depth() >= DepthOfFolders &&
      FMultiObjects->HaveSameParent())
    items.resize(1);
  bool done = true;
  for (const Ref<IItemIdList>& item : items)
    done = item->InvokeCommand(TShellCommand(saExplore)) && done;
  return done;
}

bool TFolderTrek::OpenCommandPromptHere() {
  const std::vector<Ref<IItemIdList>> items = SelectedItems(1);
  if (items.empty()) return false;
  const Ref<IItemIdList> target =
      items.front()->IsFolder() ? items.front() : items.front()->GetParent();
  const TString path = target->Path();
  return !path.empty() &&
         StartProgram(GetWindowHandle(true), u"CMD.EXE", u"/K CD \"" + path + u"\"", path);
}

bool TFolderTrek::InvokeByShell(const TShellCommand& pCommand, const TString& pVerb) {
  // Extensions may run messages while they build a menu, and so end the cursor.
  const auto life = Life();
  const auto contextMenu = GetUIObject(IidOf<IContextMenu>()).As<IContextMenu>();
  if (!contextMenu || life.expired()) return false;
  HRESULT result = S_OK;
  {
    const auto menu = TMenuHandle::Adopt(Api().CreatePopupMenu());
    if (SameText(pVerb, u"rename")) {
      FireRename();
      return true;
    }
    const bool isDefault = pCommand == saDefault;
    const bool isForGood =
        pCommand.In({saDelete, saDeleteNoUndo}) && !pCommand.OperationOptions.Contains(soAllowUndo);
    result = contextMenu->QueryContextMenu(menu.Get(), 0, FirstShellCommand, LastVerbCommand,
                                           isDefault ? CMF_DEFAULTONLY : CMF_OPTIMIZEFORINVOKE);
    if (life.expired()) return false;
    if (SUCCEEDED(result)) {
      const UINT id = isDefault ? DefaultMenuItem(menu.Get()) : 0;
      if (isDefault && id == 0) return false;
      result = IContextMenuInvoke(contextMenu.Get(), pVerb, id,
                                  isForGood ? DWORD{CMIC_MASK_SHIFT_DOWN} : 0);
    }
  }
  // Behind the menu's end, which has an own word on the last error.
  if (FAILED(result)) Api().SetLastError(static_cast<DWORD>(result));
  return SUCCEEDED(result);
}

/// Of a single object that is no folder, as long as older programs can take it.
TString TFolderTrek::WorkingDirectoryOfSelection() {
  const std::vector<Ref<IItemIdList>> items = SelectedItems(2);
  if (items.size() != 1 || items.front()->IsFolder()) return {};
  const TString path = items.front()->Path();
  return path.size() < ClassicPathSize ? ExtractFilePath(path) : TString();
}

HRESULT TFolderTrek::IContextMenuInvoke(IContextMenu* pContextMenu, TStringView pVerb, UINT pId,
                                        DWORD pMask) {
  const TString verbW(pVerb);
  const std::string verb = ToUtf8(verbW);
  const TString directory = WorkingDirectoryOfSelection();
  CMINVOKECOMMANDINFOEX info{};
  info.cbSize = sizeof info;
  info.fMask = CMIC_MASK_UNICODE | pMask;
  if (fAsyncContextMenuOperations) info.fMask |= CMIC_MASK_ASYNCOK;
  info.hwnd = GetWindowHandle(true);
  if (pId > 0) {
    const auto offset = static_cast<ULONG_PTR>(pId - FirstShellCommand);
    info.lpVerb = reinterpret_cast<LPCSTR>(offset);
    info.lpVerbW = reinterpret_cast<LPCWSTR>(offset);
  } else {
    info.lpVerb = verb.c_str();
    info.lpVerbW = W(verbW);
  }
  info.nShow = SW_SHOWNORMAL;
  if (!directory.empty()) info.lpDirectoryW = W(directory);
  return pContextMenu->InvokeCommand(reinterpret_cast<CMINVOKECOMMANDINFO*>(&info));
}

}  // namespace oak
