#include "oak/framework/win32/MenusWin32.h"

#include <memory>
#include <unordered_map>
#include <vector>

#include "oak/framework/Application.h"
#include "oak/framework/Bitmap.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/Menus.h"
#include "oak/framework/WinControl.h"
#include "oak/framework/win32/CanvasWin32.h"
#include "oak/framework/win32/System.h"
#include "oak/framework/win32/WindowPeer.h"

namespace oak::win32 {
namespace {

bool HasSubMenu(const TMenuItem& item) { return item.GetCount() > 0 || item.OnPopup; }
bool IsOwnerDrawn(const TMenuItem& item) { return item.OnMeasureItem && item.OnDrawItem; }

/// A system menu and the entries that it has to ask when it is open.
class TNativeMenu final : public TComponent {
 public:
  explicit TNativeMenu(const TMenuItem& root) {
    // Of a bar and of a popup menu the system makes two kinds.
    const bool bar = dynamic_cast<const TMainMenu*>(root.GetParentMenu()) != nullptr;
    fHandle = bar ? ::CreateMenu() : ::CreatePopupMenu();
    Fill(fHandle, root);
  }
  ~TNativeMenu() override { ::DestroyMenu(fHandle); }  // before its bitmaps

  HMENU GetHandle() const noexcept { return fHandle; }
  TMenuItem* FindSubMenu(HMENU menu) const;
  TMenuItem* FindDrawn(UINT command) const;
  /// Shows the present entries of a submenu.
  void Refill(HMENU menu, const TMenuItem& item);

 protected:
  void Notification(TComponent* component, TOperation operation) override;

 private:
  void Fill(HMENU menu, const TMenuItem& parent);
  void Append(HMENU menu, TMenuItem& item);
  HBITMAP MakeImage(HMENU menu, const TMenuItem& item);
  void ForgetSubMenus(HMENU menu, std::vector<HMENU>& forgotten);

  HMENU fHandle = nullptr;
  std::unordered_map<HMENU, TMenuItem*> fSubMenus;
  std::unordered_map<UINT, TMenuItem*> fDrawn;
  std::unordered_map<HMENU, std::vector<TOwnedBitmap>> fImages;
};

TMenuItem* TNativeMenu::FindSubMenu(HMENU menu) const {
  const auto found = fSubMenus.find(menu);
  return found == fSubMenus.end() ? nullptr : found->second;
}

TMenuItem* TNativeMenu::FindDrawn(UINT command) const {
  const auto found = fDrawn.find(command);
  return found == fDrawn.end() ? nullptr : found->second;
}

void TNativeMenu::Notification(TComponent* component, TOperation operation) {
  TComponent::Notification(component, operation);
  if (operation != opRemove) return;
  std::erase_if(fSubMenus, [&](const auto& entry) { return entry.second == component; });
  std::erase_if(fDrawn, [&](const auto& entry) { return entry.second == component; });
}

void TNativeMenu::Refill(HMENU menu, const TMenuItem& item) {
  std::vector<HMENU> former{menu};
  ForgetSubMenus(menu, former);
  while (::DeleteMenu(menu, 0, MF_BYPOSITION)) {
  }
  for (const HMENU gone : former) fImages.erase(gone);
  Fill(menu, item);
}

void TNativeMenu::ForgetSubMenus(HMENU menu, std::vector<HMENU>& forgotten) {
  for (int i = ::GetMenuItemCount(menu) - 1; i >= 0; --i) {
    const HMENU sub = ::GetSubMenu(menu, i);
    if (!sub) continue;
    ForgetSubMenus(sub, forgotten);
    fSubMenus.erase(sub);
    forgotten.push_back(sub);
  }
}

void TNativeMenu::Fill(HMENU menu, const TMenuItem& parent) {
  for (int i = 0; i < parent.GetCount(); ++i)
    if (parent.GetItem(i)->GetVisible()) Append(menu, *parent.GetItem(i));
}

void TNativeMenu::Append(HMENU menu, TMenuItem& item) {
  TString text = item.GetCaption();
  if (item.GetShortCut()) text += u"\t" + ShortCutToText(item.GetShortCut());
  MENUITEMINFOW info{};
  info.cbSize = sizeof info;
  info.fMask = MIIM_FTYPE | MIIM_ID | MIIM_STATE;
  info.wID = item.GetCommand();
  if (item.IsLine()) {
    info.fType = MFT_SEPARATOR;
  } else if (IsOwnerDrawn(item)) {
    info.fType = MFT_OWNERDRAW;
    fDrawn[item.GetCommand()] = &item;
    FreeNotification(&item);
  } else {
    info.fMask |= MIIM_STRING;
    info.dwTypeData = WBuffer(text);
    info.hbmpItem = MakeImage(menu, item);
    if (info.hbmpItem) info.fMask |= MIIM_BITMAP;
  }
  if (item.GetRadioItem()) info.fType |= MFT_RADIOCHECK;
  if (!item.GetEnabled()) info.fState |= MFS_DISABLED;
  if (item.GetChecked()) info.fState |= MFS_CHECKED;
  if (item.GetDefault()) info.fState |= MFS_DEFAULT;
  if (HasSubMenu(item) && !item.IsLine()) {
    info.hSubMenu = ::CreatePopupMenu();
    info.fMask |= MIIM_SUBMENU;
    fSubMenus[info.hSubMenu] = &item;
    FreeNotification(&item);
    Fill(info.hSubMenu, item);
  }
  ::InsertMenuItemW(menu, static_cast<UINT>(::GetMenuItemCount(menu)), TRUE, &info);
}

HBITMAP TNativeMenu::MakeImage(HMENU menu, const TMenuItem& item) {
  const TMenu* parent = item.GetParentMenu();
  const TImageList* images = parent ? parent->GetImages() : nullptr;
  if (!images || item.GetImageIndex() < 0) return nullptr;
  TBitmap picture;
  const auto state = item.GetEnabled() ? TImageState::Normal : TImageState::Disabled;
  if (!images->GetRendered(item.GetImageIndex(), 0, state, picture)) return nullptr;
  std::vector<TOwnedBitmap>& owned = fImages[menu];
  owned.push_back(TOwnedBitmap::Adopt(picture.CreateHandle()));
  return owned.back().Get();
}

/// Menus by their handles; kept for messages that arrive while the program ends.
std::unordered_map<HMENU, std::unique_ptr<TNativeMenu>>& NativeMenus() {
  static auto* menus = new std::unordered_map<HMENU, std::unique_ptr<TNativeMenu>>;
  return *menus;
}

TNativeMenu* OwnerOfSubMenu(HMENU menu) {
  for (const auto& [handle, native] : NativeMenus())
    if (native->FindSubMenu(menu)) return native.get();
  return nullptr;
}

TMenuItem* FindDrawnItem(UINT command) {
  for (const auto& [handle, native] : NativeMenus())
    if (TMenuItem* item = native->FindDrawn(command)) return item;
  return nullptr;
}

bool PopUpSubMenu(HMENU menu) {
  TNativeMenu* native = OwnerOfSubMenu(menu);
  if (!native) return false;
  native->FindSubMenu(menu)->DoPopup();
  // The handler may have destroyed entries, or the whole menu.
  native = OwnerOfSubMenu(menu);
  if (native) native->Refill(menu, *native->FindSubMenu(menu));
  return true;
}

/// The screen's device context, for measuring.
class TScreenContext {
 public:
  TScreenContext() : fContext(::GetDC(nullptr)) {}
  ~TScreenContext() { ::ReleaseDC(nullptr, fContext); }
  TScreenContext(const TScreenContext&) = delete;
  TScreenContext& operator=(const TScreenContext&) = delete;
  HDC Get() const noexcept { return fContext; }

 private:
  HDC fContext;
};

bool MeasureDrawnItem(MEASUREITEMSTRUCT& measure) {
  TMenuItem* item = measure.CtlType == ODT_MENU ? FindDrawnItem(measure.itemID) : nullptr;
  if (!item) return false;
  const TScreenContext context;  // the handler may throw
  TCanvasWin32 canvas(context.Get(), DensityOfWindow(nullptr));
  int width = canvas.TextWidth(item->GetCaption());
  int height = SystemMetric(SM_CYMENU, canvas.GetPixelsPerInch());
  item->OnMeasureItem(item, canvas, width, height);
  measure.itemWidth = static_cast<UINT>(std::max(width, 0));
  measure.itemHeight = static_cast<UINT>(std::max(height, 0));
  return true;
}

bool DrawDrawnItem(const DRAWITEMSTRUCT& draw) {
  TMenuItem* item = draw.CtlType == ODT_MENU ? FindDrawnItem(draw.itemID) : nullptr;
  if (!item) return false;
  const bool selected = (draw.itemState & ODS_SELECTED) != 0;
  TCanvasWin32 canvas(draw.hDC, DensityOfWindow(nullptr));
  canvas.GetBrush().SetColor(selected ? clHighlight : clMenu);
  canvas.GetFont().SetColor(selected ? clHighlightText : clMenuText);
  canvas.FillRect(TRect(draw.rcItem));
  item->OnDrawItem(item, canvas, TRect(draw.rcItem), selected);
  return true;
}

bool HandleOwnEntry(UINT message, WPARAM wParam, LPARAM lParam, LRESULT& result) {
  result = 0;
  switch (message) {
    case WM_INITMENUPOPUP:
      return PopUpSubMenu(reinterpret_cast<HMENU>(wParam));
    case WM_MEASUREITEM:
      result = TRUE;
      return MeasureDrawnItem(*reinterpret_cast<MEASUREITEMSTRUCT*>(lParam));
    case WM_DRAWITEM:
      result = TRUE;
      return DrawDrawnItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
    default:
      return false;
  }
}

/// For whom the innermost menu is open.
struct TTracking {
  TWinControl* Owner = nullptr;
  TLifeGuard Guard;
  HWND OwnerWindow = nullptr;
  TTracking* Outer = nullptr;
};
TTracking* gTracking = nullptr;

LRESULT CALLBACK MenuWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  LRESULT result = 0;
  try {
    const TTracking* tracking = gTracking;
    if (tracking && IsMenuMessage(message, wParam)) {
      TWinControl* owner = tracking->Guard.IsAlive() ? tracking->Owner : nullptr;
      if (HandleMenuMessage(owner, message, wParam, lParam, result)) return result;
      // A foreign program part opened the menu, perhaps one of the shell: its window answers.
      if (!tracking->Owner && tracking->OwnerWindow)
        return ::SendMessageW(tracking->OwnerWindow, message, wParam, lParam);
    }
  } catch (...) {
    Application().HandleException(nullptr);
    return result;
  }
  return ::DefWindowProcW(window, message, wParam, lParam);
}

/// A hidden window that gets the messages of one open menu.
class TMenuWindow {
 public:
  explicit TMenuWindow(HWND owner) {
    static const TString name = RegisterOwnClass(u"MenuOwner", &MenuWindowProc);
    fHandle = ::CreateWindowExW(WS_EX_TOOLWINDOW, W(name), nullptr, WS_POPUP, 0, 0, 0, 0, owner,
                                nullptr, OwnModule(), nullptr);
    if (!fHandle) RaiseLastError(u"A window could not be created");
  }
  ~TMenuWindow() { ::DestroyWindow(fHandle); }
  TMenuWindow(const TMenuWindow&) = delete;
  TMenuWindow& operator=(const TMenuWindow&) = delete;
  HWND GetHandle() const noexcept { return fHandle; }

 private:
  HWND fHandle = nullptr;
};

}  // namespace

HMENU MakeMenu(const TMenuItem& root) {
  auto native = std::make_unique<TNativeMenu>(root);
  const HMENU handle = native->GetHandle();
  NativeMenus()[handle] = std::move(native);
  return handle;
}

void DestroyMenu(HMENU menu) {
  if (NativeMenus().erase(menu) == 0) ::DestroyMenu(menu);
}

UINT TrackMenu(HMENU menu, TPoint screen, TWinControl* owner, HWND ownerWindow) {
  HWND window = ownerWindow;
  if (!window && owner && owner->HandleAllocated()) window = owner->GetHandle();
  const HWND root = window ? ::GetAncestor(window, GA_ROOT) : nullptr;
  const TMenuWindow menuWindow(root);
  TTracking tracking{owner, owner ? owner->GetLifeGuard() : TLifeGuard(), ownerWindow, gTracking};
  gTracking = &tracking;
  UINT flags = TPM_RETURNCMD | TPM_RIGHTBUTTON;
  flags |= ::GetSystemMetrics(SM_MENUDROPALIGNMENT) ? TPM_RIGHTALIGN : TPM_LEFTALIGN;
  const BOOL chosen =
      ::TrackPopupMenuEx(menu, flags, screen.X, screen.Y, menuWindow.GetHandle(), nullptr);
  gTracking = tracking.Outer;
  return static_cast<UINT>(chosen);
}

bool IsMenuMessage(UINT message, WPARAM wParam) {
  switch (message) {
    case WM_INITMENUPOPUP:
    case WM_UNINITMENUPOPUP:
    case WM_MENUCHAR:
    case WM_MENUSELECT:
      return true;
    case WM_MEASUREITEM:
    case WM_DRAWITEM:
      return wParam == 0;  // else it comes from a control
    default:
      return false;
  }
}

bool HandleMenuMessage(TWinControl* owner, UINT message, WPARAM wParam, LPARAM lParam,
                       LRESULT& result) {
  if (HandleOwnEntry(message, wParam, lParam, result)) return true;
  if (!owner) return false;
  const TLifeGuard guard = owner->GetLifeGuard();
  TMessage neutral{message, wParam, lParam, 0};
  owner->HandleMessage(neutral);
  result = neutral.Result;
  return !guard.IsAlive() || result != 0;
}

}  // namespace oak::win32
