// A menu of the shell that is open, together with entries of the application.
#pragma once

#include <memory>
#include <optional>

#include "oak/framework/HiddenWindow.h"
#include "oak/namespace/CommandParts.h"
#include "oak/namespace/FolderTrek.Menus.h"
#include "oak/namespace/FolderTrek.h"

namespace oak {

/// What is returned in the place of a verb if the shell's menu failed.
inline constexpr TStringView ErrorVerb = u"__ERROR__";

/// What a cursor keeps as long as it shows a menu. Lives in the procedure that shows it; the cursor
/// may end before. Menus of one cursor may open inside of each other.
class TFolderTrek::TOpenMenu {
 public:
  /// pMenu becomes the menu that the shell adds to.
  TOpenMenu(TFolderTrek& pCursor, Ref<IContextMenu> pShellMenu, std::unique_ptr<TPopupMenu> pMenu);
  ~TOpenMenu();
  TOpenMenu(const TOpenMenu&) = delete;
  TOpenMenu& operator=(const TOpenMenu&) = delete;

  /// Lets the shell add its entries at a position (-1: at the end).
  HRESULT Query(int pIndex, UINT pFlags);
  /// Shows the menu until the user has chosen; 0: nothing.
  UINT Track(TPoint pScreen);
  HMENU GetHandle() const noexcept { return fHandle; }
  IContextMenu* GetShellMenu() const noexcept { return fShellMenu.Get(); }
  /// Closes the menu and clicks the entry of the application that bears the number, unless that has
  /// gone; false, and nothing done, if the number is the shell's.
  static bool RunApplicationItem(std::optional<TOpenMenu>& pMenu, UINT pId);
  bool IsCursorAlive() const { return !fCursorLife.expired(); }
  /// The verb of an entry of the shell; empty if it has none.
  TString VerbOf(UINT pId) const;
  /// Whether the shell's menu has the answer to a message.
  bool Handle(TMessage& pMessage);
  HWND GetWindow() const noexcept { return fContextMenuCallbackWnd; }

 private:
  TMenuItem* FindApplicationItem(UINT pId) const;

  TFolderTrek& fCursor;
  std::weak_ptr<const bool> fCursorLife;
  TOpenMenu* fOuter;
  Ref<IContextMenu> fShellMenu;
  Ref<IContextMenu2> FActiveIContextMenu;
  Ref<IContextMenu3> fActiveIContextMenu3;
  std::unique_ptr<TPopupMenu> FActiveFrameworkContextMenu;
  HMENU fHandle = nullptr;
  HWND fContextMenuCallbackWnd = nullptr;
};

}  // namespace oak
