// The menu of the active folder's background.
#include "oak/framework/Forms.h"
#include "oak/framework/Host.h"
#include "oak/namespace/FolderTrek.OpenMenu.h"

namespace oak {
namespace {

// Entries without a verb that are known by their places.
constexpr UINT RefreshId = 6;
constexpr UINT ThumbnailsId = 19;
/// The view's own entries at the menu's start, which mean nothing to another view.
constexpr int ForeignEntries = 3;

TString BackgroundVerb(const TString& verb, UINT id) {
  if (!verb.empty()) return verb;
  if (id == RefreshId) return u"refresh";
  if (id == ThumbnailsId) return u"thumbnails";
  return IntToStr(static_cast<int>(id));
}

HRESULT InvokeEntry(IContextMenu& menu, UINT id) {
  CMINVOKECOMMANDINFO info{};
  info.cbSize = sizeof info;
  info.lpVerb = reinterpret_cast<LPCSTR>(static_cast<ULONG_PTR>(id - FirstShellCommand));
  info.nShow = SW_SHOWNORMAL;
  return menu.InvokeCommand(&info);
}

}  // namespace

/// The view has to live as long as the menu.
Ref<IContextMenu> TFolderTrek::GetBackgroundContextMenu(Ref<IShellView>& pView) {
  const Ref<IShellFolder> folder = GetShellFolder();
  Ref<IContextMenu> menu;
  if (!folder ||
      FAILED(
          folder->CreateViewObject(GetWindowHandle(true), IidOf<IShellView>(), pView.PutVoid())) ||
      !pView ||
      FAILED(pView->GetItemObject(SVGIO_BACKGROUND, IidOf<IContextMenu>(), menu.PutVoid())))
    return nullptr;
  return menu;
}

void TFolderTrek::ShowBackgroundMenu(TPoint pScreen, TPopupMenu* pPopupMenu, TString& pVerb) {
  pVerb.clear();
  const auto life = Life();
  Ref<IShellView> view;
  std::optional<TOpenMenu> open;
  {
    const TWaitCursor hourglass;
    Ref<IContextMenu> shellMenu = GetBackgroundContextMenu(view);
    if (!shellMenu || life.expired()) return;
    std::unique_ptr<TPopupMenu> menu = CloneMenu(pPopupMenu);
    if (life.expired()) return;
    open.emplace(*this, std::move(shellMenu), std::move(menu));
    if (FAILED(open->Query(GetShowContextMenuOnTop() ? 0 : -1, CMF_EXPLORE))) {
      pVerb = ErrorVerb;
      return;
    }
    for (int i = 0; i < ForeignEntries; ++i) Api().DeleteMenu(open->GetHandle(), 0, MF_BYPOSITION);
  }
  const UINT id = open->Track(pScreen);
  if (TOpenMenu::RunApplicationItem(open, id) || id == 0) return;
  pVerb = BackgroundVerb(open->VerbOf(id), id);
  if (FAILED(InvokeEntry(*open->GetShellMenu(), id))) pVerb.clear();
}

bool TFolderTrek::QueryBackgroundMenu(TPoint) {
  Ref<IShellView> view;
  const Ref<IContextMenu> shellMenu = GetBackgroundContextMenu(view);
  if (!shellMenu) return false;
  TPopupMenu menu;
  return SUCCEEDED(shellMenu->QueryContextMenu(menu.GetHandle(), 0, FirstShellCommand,
                                               LastShellCommand, CMF_EXPLORE));
}

}  // namespace oak
