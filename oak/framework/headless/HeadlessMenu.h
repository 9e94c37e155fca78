// Menus of the headless desktop while they are open.
#pragma once

#include <memory>
#include <vector>

#include "oak/framework/headless/HeadlessInput.h"
#include "oak/framework/headless/HeadlessWindow.h"
#include "oak/platform/MenuTable.h"

namespace oak {

class THeadlessForm;
class THeadlessMenuLevel;
class TWinControl;

/// An open menu with the submenus that are open too. A test walks it and chooses; a user does so
/// with mouse and keys. Before a submenu opens, its owner gets WM_INITMENUPOPUP, so that it can be
/// filled late. What its entries are is in TMenuTable, by handle. The owner is asked for the size
/// and the looks of entries that draw themselves and are none of the program's, without a device
/// context: WM_MEASUREITEM, WM_DRAWITEM; and for letters that no caption has: WM_MENUCHAR.
///
///     desktop.OnMenu = [](THeadlessMenuSession& menu) { menu.Choose(u"View|Details"); };
class THeadlessMenuSession final : private IHeadlessInputFilter {
 public:
  THeadlessMenuSession(THeadlessDesktop& desktop, HMENU menu, TPoint screen, TWinControl* owner,
                       HWND ownerWindow);
  ~THeadlessMenuSession();
  THeadlessMenuSession(const THeadlessMenuSession&) = delete;
  THeadlessMenuSession& operator=(const THeadlessMenuSession&) = delete;

  /// The menu that was opened first.
  HMENU GetMenu() const noexcept { return fMenu; }
  /// Menus that are open, one in another; the last one takes the keys.
  std::vector<HMENU> GetOpenMenus() const;
  /// Entries of the menu at a path of captions, "Send to"; all its submenus open on the way. Empty
  /// path: the first menu. Empty list: there is no such menu.
  std::vector<TMenuEntry> GetEntries(TStringView path = {});
  /// Captions of the same, without marks; "-" for lines, ">" behind those with a submenu.
  std::vector<TString> GetCaptions(TStringView path = {});
  /// Looks up an entry by its path; ignores case, "&" and the shortcut's name. Submenus open on the
  /// way. False if there is none.
  bool Find(TStringView path, TMenuEntry* entry);
  /// Chooses an entry, which ends the menu. False if there is none, or it is disabled or a submenu.
  bool Choose(TStringView path);
  bool ChooseCommand(UINT command);
  void Cancel() { Finish(0); }
  bool IsFinished() const noexcept { return fFinished; }
  /// What was chosen; 0: nothing.
  UINT GetResult() const noexcept { return fResult; }

  /// Runs the menu until something is chosen.
  UINT Run();

 private:
  void Mouse(const THeadlessInput& input) override;
  void Key(const THeadlessInput& input) override;
  void Finish(UINT result);
  void Open(HMENU menu, int index, TPoint screen);
  void OpenSub(int index);
  void CloseBelow(std::size_t levels);
  bool OpenPath(TStringView path, HMENU* menu);
  void Activate(int index);
  void MoveHot(int step);
  void Letter(char16_t character);
  void AskForLetter(char16_t character);
  int IndexOf(HMENU menu, TStringView caption) const;

  THeadlessDesktop& fDesktop;
  HMENU fMenu;
  HWND fOwner;
  std::vector<std::unique_ptr<THeadlessMenuLevel>> fLevels;
  IHeadlessInputFilter* fFormerFilter;
  THeadlessMenuSession* fFormerSession;
  UINT fResult = 0;
  bool fFinished = false;
};

/// Opens the submenu of an entry of a form's menu bar; an entry without one is the choice itself.
UINT TrackMenuBar(THeadlessForm& form, int entry, TPoint screen);

}  // namespace oak
