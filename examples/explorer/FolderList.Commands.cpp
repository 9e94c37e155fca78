// What the user does with the objects: keys, the shell's menus, new names.
#include "FolderList.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/OakItemIdList.h"

using namespace oak;

namespace {

// Done after the handler at hand has returned: until then the list still deals with its rows, which
// must not become those of another folder.
constexpr UINT OpenMessage = FirstPrivateMessage;
constexpr UINT RefreshMessage = FirstPrivateMessage + 1;

struct TCommandKey {
  std::uint16_t Key;
  TShiftState Shift;
  TShellAction Action;
};

const TCommandKey CommandKeys[] = {
    {vkDelete, {}, saDelete}, {vkDelete, ssShift, saDeleteNoUndo},
    {u'C', ssCtrl, saCopy},   {u'X', ssCtrl, saCut},
    {u'V', ssCtrl, saPaste},  {vkReturn, ssAlt, saProperties},
};

}  // namespace

/// The selected objects become those that the cursor's commands are for.
void TFolderList::TakeSelection() {
  const Ref<IItemIdListCollection> objects = fCursor.GetMultiObjects();
  objects->Clear();
  for (TListItem* const row : Items())
    if (row->GetSelected()) objects->Add(static_cast<TFolderRow&>(*row).GetItem());
}

void TFolderList::Run(TShellAction action) {
  if (!GetFolder()) return;
  const TLifeGuard guard = GetLifeGuard();
  const bool onFolder = action == saPaste || (action == saProperties && GetSelCount() == 0);
  if (!onFolder && GetSelCount() == 0) return;
  try {
    if (onFolder) {
      GetFolder()->InvokeCommand(TShellCommand(action));
    } else {
      TakeSelection();
      fCursor.InvokeContextMenuCommand(TShellCommand(action));
    }
  } catch (const Exception& error) {
    if (guard.IsAlive()) Report(error);
  }
  if (guard.IsAlive()) PostMessage(RefreshMessage);
}

void TFolderList::MakeNewFolder() {
  if (!GetFolder()) return;
  try {
    const Ref<IItemIdList> made = GetFolder()->CreateNewFolder(u"");
    if (fLink) fLink->Refresh(rfSmart);
    if (TListItem* const row = SelectObject(made)) row->EditCaption();
  } catch (const Exception& error) {
    Report(error);
  }
}

void TFolderList::DoContextPopup(TPoint point, bool& handled) {
  handled = true;
  if (!GetFolder()) return;
  const TLifeGuard guard = GetLifeGuard();
  const TListItem* const focused = GetItemFocused();
  if (point == TPoint(-1, -1))
    point = focused && GetSelCount() > 0 ? focused->DisplayRect(drLabel).Center() : TPoint(8, 32);
  try {
    const TPoint screen = ClientToScreen(point);
    if (GetSelCount() > 0) {
      TakeSelection();
      fCursor.ShowContextMenu(screen, nullptr);
    } else {
      TString verb;
      fCursor.ShowBackgroundMenu(screen, nullptr, verb);
    }
  } catch (const Exception& error) {
    if (guard.IsAlive()) Report(error);
  }
  if (guard.IsAlive() && !IsEditing()) PostMessage(RefreshMessage);
}

// --- dragging ----------------------------------------------------------------------

void TFolderList::DoBeginDrag(TMouseButton) {
  if (!GetFolder() || GetSelCount() == 0) return;
  const TLifeGuard guard = GetLifeGuard();
  try {
    TakeSelection();
    fIsDragging = true;
    DragOut(*this, fCursor.GetUIObject(IidOf<IDataObject>()));
  } catch (const Exception& error) {
    if (guard.IsAlive()) Report(error);
  }
  if (!guard.IsAlive()) return;
  fIsDragging = false;
  PostMessage(RefreshMessage);
}

Ref<IItemIdList> TFolderList::MarkPlace(TPoint screen) {
  const TPoint point = ScreenToClient(screen);
  auto* const row = static_cast<TFolderRow*>(GetItemAt(point.X, point.Y));
  if (GetDropTargetItem() && GetDropTargetItem() != row) GetDropTargetItem()->SetDropTarget(false);
  if (!row) return nullptr;
  if (row->IsFolder()) row->SetDropTarget(true);
  return row->GetItem();
}

// What a row does not take, its folder does, but not from itself.
Ref<IDropTarget> TFolderList::TargetOf(const Ref<IItemIdList>& place) {
  if (!GetFolder()) return nullptr;
  if (place) {
    TFolderTrek cursor(GetFolder()->Concat(place));
    cursor.SetShowErrorMessages(false);
    if (const auto object = cursor.GetUIObject(IidOf<IDropTarget>()))
      return object.As<IDropTarget>();
  }
  return fIsDragging ? nullptr : DropTargetOfFolder(fCursor.GetShellFolder());
}

void TFolderList::EndDrag(bool dropped) {
  if (GetDropTargetItem()) GetDropTargetItem()->SetDropTarget(false);
  if (dropped) PostMessage(RefreshMessage);
}

// --- names -------------------------------------------------------------------------

void TFolderList::EditFocused() {
  if (TListItem* const row = GetSelected()) row->EditCaption();
}

bool TFolderList::CanEdit(TListItem* item) {
  if (!TCustomListView::CanEdit(item)) return false;
  return AbsoluteOf(static_cast<TFolderRow&>(*item))->HasAttributes(SFGAO_CANRENAME);
}

void TFolderList::Edit(TListItem* item, const TString& text) {
  const Ref<IItemIdList> object = AbsoluteOf(static_cast<TFolderRow&>(*item));
  const TLifeGuard guard = GetLifeGuard();
  try {
    object->Rename(TShellControlHelper::PrepareForRename(object->Name(), text, this), GetHandle(),
                   true);
  } catch (const Exception& error) {
    if (guard.IsAlive()) Report(error);
  }
  if (guard.IsAlive()) PostMessage(RefreshMessage);
}

// --- input -------------------------------------------------------------------------

void TFolderList::DblClick() {
  const TLifeGuard guard = GetLifeGuard();
  TCustomListView::DblClick();
  if (guard.IsAlive()) PostMessage(OpenMessage);
}

void TFolderList::WndProc(TMessage& message) {
  if (message.Msg == OpenMessage) return OpenFocused();
  if (message.Msg == RefreshMessage) {
    if (fLink && !IsEditing()) fLink->Refresh(rfSmart);
    return;
  }
  TCustomListView::WndProc(message);
}

bool TFolderList::RunKey(std::uint16_t key, TShiftState shift) {
  for (const TCommandKey& command : CommandKeys) {
    if (command.Key != key || command.Shift != shift) continue;
    Run(command.Action);
    return true;
  }
  if (key == vkReturn && shift.IsEmpty()) {
    OpenFocused();
  } else if (key == vkF2 && shift.IsEmpty()) {
    EditFocused();
  } else if (key == u'A' && shift == TShiftState(ssCtrl)) {
    SelectAll();
  } else if (key == u'N' && shift == TShiftState{ssCtrl, ssShift}) {
    MakeNewFolder();
  } else {
    return false;
  }
  return true;
}

void TFolderList::KeyDown(std::uint16_t& key, TShiftState shift) {
  const TLifeGuard guard = GetLifeGuard();
  if (RunKey(key, shift))
    key = 0;
  else if (guard.IsAlive())
    TCustomListView::KeyDown(key, shift);
}
