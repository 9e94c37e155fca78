// The menus that the cursor shows for its objects.
#include "oak/framework/Events.h"
#include "oak/framework/Forms.h"
#include "oak/framework/Host.h"
#include "oak/framework/WidgetSet.h"
#include "oak/namespace/FolderTrek.OpenMenu.h"
#include "oak/namespace/NamespaceHooks.h"
#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"
#include "oak/namespace/Oak.Shell.Types.Commands.h"

namespace oak {
namespace {

constexpr int MostObjects = 160;  // longer lists are more than the shell's menus take
constexpr int VerbSize = 260;     // characters with the final zero

/// Where the entries before an anchor end, counted among those that are shown; -1 for the root and
/// for nil.
int PositionOf(const TMenuItem* anchor) {
  if (!anchor) return -1;
  const TMenuItem* entry = anchor;
  while (entry->GetParent() && entry->GetParent()->GetParent()) entry = entry->GetParent();
  const TMenuItem* const root = entry->GetParent();
  if (!root) return -1;
  int position = 0;
  for (int i = 0; root->GetItem(i) != entry; ++i)
    if (root->GetItem(i)->GetVisible()) ++position;
  return position;
}

}  // namespace

// --- the menu while it is open -------------------------------------------------------

TFolderTrek::TOpenMenu::TOpenMenu(TFolderTrek& pCursor, Ref<IContextMenu> pShellMenu,
                                  std::unique_ptr<TPopupMenu> pMenu)
    : fCursor(pCursor),
      fCursorLife(pCursor.Life()),
      fOuter(pCursor.fOpenMenu),
      fShellMenu(std::move(pShellMenu)),
      FActiveIContextMenu(fShellMenu.As<IContextMenu2>()),
      fActiveIContextMenu3(fShellMenu.As<IContextMenu3>()),
      FActiveFrameworkContextMenu(std::move(pMenu)),
      fHandle(FActiveFrameworkContextMenu->GetHandle()) {
  pCursor.fOpenMenu = this;
}

TFolderTrek::TOpenMenu::~TOpenMenu() {
  DeallocateHWnd(fContextMenuCallbackWnd);
  if (IsCursorAlive()) fCursor.fOpenMenu = fOuter;
}

HRESULT TFolderTrek::TOpenMenu::Query(int pIndex, UINT pFlags) {
  const int count = Api().GetMenuItemCount(fHandle);
  const int index = pIndex < 0 ? std::max(count, 0) : pIndex;
  return fShellMenu->QueryContextMenu(fHandle, static_cast<UINT>(index), FirstShellCommand,
                                      LastShellCommand, pFlags);
}

UINT TFolderTrek::TOpenMenu::Track(TPoint pScreen) {
  fContextMenuCallbackWnd = AllocateHWnd([this](TMessage& pMessage) {
    if (IsCursorAlive())
      fCursor.HandlePopupMessages(pMessage);
    else
      pMessage.Result = DefaultWindowProc(fContextMenuCallbackWnd, pMessage);
  });
  const UINT id = WidgetSet().TrackMenu(fHandle, pScreen, nullptr, fContextMenuCallbackWnd);
  DeallocateHWnd(std::exchange(fContextMenuCallbackWnd, nullptr));
  return id;
}

TMenuItem* TFolderTrek::TOpenMenu::FindApplicationItem(UINT pId) const {
  const auto* item =
      dynamic_cast<TOakMenuItem*>(FActiveFrameworkContextMenu->Items().FindCommand(pId));
  return item ? item->GetOriginal() : nullptr;
}

bool TFolderTrek::TOpenMenu::RunApplicationItem(std::optional<TOpenMenu>& pMenu, UINT pId) {
  if (pId <= LastShellCommand) return false;
  TMenuItem* const item = pMenu->FindApplicationItem(pId);
  pMenu.reset();
  if (item) item->Click();
  return true;
}

TString TFolderTrek::TOpenMenu::VerbOf(UINT pId) const {
  WCHAR text[VerbSize + 1]{};
  if (FAILED(fShellMenu->GetCommandString(pId - FirstShellCommand, GCS_VERBW, nullptr,
                                          reinterpret_cast<CHAR*>(text), VerbSize)))
    return {};
  return FromW(text);
}

bool TFolderTrek::TOpenMenu::Handle(TMessage& pMessage) {
  switch (pMessage.Msg) {
    case WM_INITMENUPOPUP:
    case WM_MEASUREITEM:
    case WM_DRAWITEM:
    case WM_MENUCHAR:
      break;
    default:
      return false;
  }
  // The answer may take long and end the cursor.
  if (const Ref<IContextMenu3> menu = fActiveIContextMenu3) {
    LRESULT result = 0;
    if (FAILED(menu->HandleMenuMsg2(pMessage.Msg, pMessage.WParam, pMessage.LParam, &result)))
      return false;
    pMessage.Result = result;
    return true;
  }
  const Ref<IContextMenu2> menu = FActiveIContextMenu;
  if (!menu || pMessage.Msg == WM_MENUCHAR ||
      FAILED(menu->HandleMenuMsg(pMessage.Msg, pMessage.WParam, pMessage.LParam)))
    return false;
  pMessage.Result = pMessage.Msg == WM_INITMENUPOPUP ? 0 : TRUE;
  return true;
}

void TFolderTrek::HandlePopupMessages(TMessage& Message) {
  const HWND window = fOpenMenu ? fOpenMenu->GetWindow() : nullptr;
  if (!fOpenMenu || !fOpenMenu->Handle(Message))
    Message.Result = DefaultWindowProc(window, Message);
}

// --- showing it ----------------------------------------------------------------------

TString TFolderTrek::ShowContextMenu(TPoint pScreen, TMenuItem* pShellMenuAnchor,
                                     const TBeforeVerb& pBeforeCommand) {
  return ShowContextMenu_Internal(pScreen, pShellMenuAnchor, pBeforeCommand);
}

TString TFolderTrek::ShowContextMenu(TMenuItem* pShellMenuAnchor,
                                     const TBeforeVerb& pBeforeCommand) {
  return ShowContextMenu_Internal(WidgetSet().GetCursorPos(), pShellMenuAnchor, pBeforeCommand);
}

Ref<IContextMenu> TFolderTrek::GetContextMenuOfSelection() {
  if (!HasMultiObjects() || FMultiObjects->Count() <= MostObjects)
    return GetUIObject(IidOf<IContextMenu>()).As<IContextMenu>();
  const Ref<IItemIdListCollection> objects = FMultiObjects;
  const auto first = MakeRef<TItemIdListCollection>(GetShellFolder());
  for (int i = 0; i < MostObjects; ++i) first->Add(objects->GetItem(i));
  return first->GetUIObject(IidOf<IContextMenu>()).As<IContextMenu>();
}

UINT TFolderTrek::ContextMenuFlags() const {
  UINT flags = CMF_EXPLORE;
  if (WidgetSet().GetShiftState().Contains(ssShift)) flags |= CMF_EXTENDEDVERBS;
  if (OnRename) flags |= CMF_CANRENAME;
  return flags;
}

TString TFolderTrek::ShowContextMenu_Internal(TPoint pScreen, TMenuItem* pShellMenuAnchor,
                                              const TBeforeVerb& pBeforeCommand) {
  const auto life = Life();
  const UINT anchor = pShellMenuAnchor ? pShellMenuAnchor->GetCommand() : 0;
  std::optional<TOpenMenu> open;
  {
    // Extensions take their time to build a menu, and may run messages meanwhile.
    const TWaitCursor hourglass;
    std::unique_ptr<TPopupMenu> menu =
        CloneMenu(pShellMenuAnchor ? pShellMenuAnchor->GetParentMenu() : nullptr);
    if (life.expired()) return TString(ErrorVerb);
    // A menu that has filled itself may have other entries now.
    const int position = GetShowContextMenuOnTop() ? 0 : PositionOf(FindMenuItem(anchor));
    Ref<IContextMenu> shellMenu = GetContextMenuOfSelection();
    if (!shellMenu || life.expired()) return TString(ErrorVerb);
    open.emplace(*this, std::move(shellMenu), std::move(menu));
    if (FAILED(open->Query(position, ContextMenuFlags())) || life.expired())
      return TString(ErrorVerb);
  }
  const UINT id = open->Track(pScreen);
  if (TOpenMenu::RunApplicationItem(open, id)) return {};
  return id == 0 || life.expired() ? TString() : RunChosen(*open, id, pBeforeCommand);
}

TString TFolderTrek::RunChosen(TOpenMenu& pMenu, UINT pId, const TBeforeVerb& pBeforeCommand) {
  const TString verb = pMenu.VerbOf(pId);
  if (pBeforeCommand && !pBeforeCommand(verb)) return {};
  if (!pMenu.IsCursorAlive() ||
      !DoBeforeShellCommand(TShellCommand(verb), TCommandSource::ContextMenu))
    return {};
  return InvokeVerb(pMenu.GetShellMenu(), verb, pId) ? verb : TString(ErrorVerb);
}

/// By the objects themselves where the menu may be that of a part of them, else by the menu.
bool TFolderTrek::InvokeVerb(IContextMenu* pMenu, const TString& pVerb, UINT pId) {
  const auto is = [&](TStringView verb) { return SameText(pVerb, verb); };
  const bool hasMany = HasMultiObjects() && FMultiObjects->Count() > 1;
  if ((is(u"delete") || is(u"cut") || is(u"copy")) && hasMany)
    return InvokeOnSelection(TShellCommand(pVerb));
  if (is(u"paste")) {
    const Ref<IItemIdList> folder = FFolderIdList;
    const std::vector<Ref<IItemIdList>> items = SelectedItems(2);
    if (items.size() != 1 || !items.front()->IsFolder())
      return folder && folder->InvokeCommand(TShellCommand(saPaste));
  }
  if (is(u"rename")) {
    FireRename();
    return true;
  }
  // A program without a share object leaves sharing to the shell's entry.
  const bool isShare = is(ModernShareVerb) && NamespaceHooks().Share;
  if (is(u"properties") || is(u"unlock-bde") || isShare)
    return InvokeOnSelection(TShellCommand(pVerb));
  if (is(u"open") && hasMany) {
    bool done = true;
    for (const Ref<IItemIdList>& item : SelectedItems())
      done = item->InvokeCommand(TShellCommand(saOpen)) && done;
    return done;
  }
  return SUCCEEDED(IContextMenuInvoke(pMenu, pVerb, pId));
}

UINT TFolderTrek::GetCommandIdForMenuCaption(HMENU pMenu, TStringView pCaption) {
  const TString wanted = MenuCaption(pCaption);
  for (int i = 0; i < Api().GetMenuItemCount(pMenu); ++i) {
    const auto position = static_cast<UINT>(i);
    if (HMENU sub = Api().GetSubMenu(pMenu, i)) {
      if (const UINT id = GetCommandIdForMenuCaption(sub, pCaption)) return id;
      continue;
    }
    const int length = Api().GetMenuStringW(pMenu, position, nullptr, 0, MF_BYPOSITION);
    if (length <= 0) continue;
    TString text(static_cast<std::size_t>(length) + 1, u'\0');
    Api().GetMenuStringW(pMenu, position, WBuffer(text), length + 1, MF_BYPOSITION);
    text.resize(static_cast<std::size_t>(length));
    if (SameText(MenuCaption(text), wanted)) return Api().GetMenuItemID(pMenu, i);
  }
  return 0;
}

}  // namespace oak
