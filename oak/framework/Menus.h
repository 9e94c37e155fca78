// Menus of the application, and the system menus made from them.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "oak/framework/Component.h"
#include "oak/framework/ControlTypes.h"

namespace oak {

class TImageList;
class TMenu;
class TPopupMenu;
class TCanvas;
class TCustomForm;
class TWinControl;

/// Key with modifiers; 0 is none.
using TShortCut = std::uint16_t;
/// Virtual key in the low byte, scShift 0x2000, scCtrl 0x4000, scAlt 0x8000.
TShortCut ShortCut(std::uint16_t key, TShiftState shift);
/// The text that a menu shows, "Ctrl+Shift+Del"; empty for 0.
TString ShortCutToText(TShortCut shortCut);

/// A caption as it is read: without "&" marks, and without the shortcut's name behind a tab.
TString MenuCaption(TStringView text);

class TMenuItem;
/// The entry with that number, or nil: it was destroyed, or never was one of ours.
TMenuItem* FindMenuItem(UINT command);

/// An entry of a menu. Owns its sub entries. A caption "-" is a separator line.
class TMenuItem : public TComponent {
 public:
  explicit TMenuItem(TComponent* owner = nullptr);
  ~TMenuItem() override;

  const TString& GetCaption() const noexcept { return fCaption; }
  void SetCaption(TString value);
  bool GetChecked() const noexcept { return fChecked; }
  /// Checking a radio entry clears the others of its group.
  void SetChecked(bool value);
  bool GetEnabled() const noexcept { return fEnabled; }
  void SetEnabled(bool value);
  bool GetVisible() const noexcept { return fVisible; }
  void SetVisible(bool value);
  bool GetDefault() const noexcept { return fDefault; }
  void SetDefault(bool value);
  bool GetRadioItem() const noexcept { return fRadioItem; }
  void SetRadioItem(bool value);
  std::uint8_t GetGroupIndex() const noexcept { return fGroupIndex; }
  void SetGroupIndex(std::uint8_t value) { fGroupIndex = value; }
  bool GetAutoCheck() const noexcept { return fAutoCheck; }
  void SetAutoCheck(bool value) { fAutoCheck = value; }
  int GetImageIndex() const noexcept { return fImageIndex; }
  void SetImageIndex(int value) { fImageIndex = value; }
  TShortCut GetShortCut() const noexcept { return fShortCut; }
  void SetShortCut(TShortCut value) { fShortCut = value; }
  const TString& GetHint() const noexcept { return fHint; }
  void SetHint(TString value) { fHint = std::move(value); }
  bool IsLine() const { return fCaption == u"-"; }

  /// Number that the system knows the entry by, unique in the program; 256 and above. The number of
  /// a destroyed entry comes back late.
  UINT GetCommand() const noexcept { return fCommand; }

  int GetCount() const noexcept { return static_cast<int>(fItems.size()); }
  TMenuItem* GetItem(int index) const;
  TMenuItem* GetParent() const noexcept { return fParent; }
  TMenu* GetParentMenu() const noexcept;
  TMenuItem* Add(std::unique_ptr<TMenuItem> item) { return Insert(GetCount(), std::move(item)); }
  TMenuItem* Add(TString caption, std::function<void(TObject*)> onClick = nullptr);
  TMenuItem* Insert(int index, std::unique_ptr<TMenuItem> item);
  /// Takes the entry out without destroying it.
  std::unique_ptr<TMenuItem> Remove(TMenuItem* item);
  void Delete(int index);
  void Clear();
  int IndexOf(const TMenuItem* item) const;
  TMenuItem* Find(TStringView caption) const;  ///< Ignoring case and "&".
  TMenuItem* FindCommand(UINT command);        ///< In all levels below.

  /// What a choice by the user does: auto check, then OnClick. Nothing if disabled.
  virtual void Click();
  /// The submenu is about to be shown: entries may be added here.
  virtual void DoPopup();

  /// Takes over all but the number, and copies of the sub entries, events included.
  void Assign(const TPersistent* source) override;

  TNotifyEvent OnClick;
  TNotifyEvent OnPopup;
  /// Both set: the entry is drawn by the application. Pixels.
  std::function<void(TObject* Sender, TCanvas& Canvas, int& Width, int& Height)> OnMeasureItem;
  std::function<void(TObject* Sender, TCanvas& Canvas, const TRect& Rect, bool Selected)>
      OnDrawItem;
  std::intptr_t Tag = 0;

 protected:
  /// An empty entry for Assign, which fills it with a copy of a sub entry.
  virtual std::unique_ptr<TMenuItem> MakeSubItem() const;

 private:
  friend class TMenu;
  void Forget(TMenuItem* item);
  void Changed();

  TString fCaption;
  TString fHint;
  std::vector<std::unique_ptr<TMenuItem>> fItems;
  TMenuItem* fParent = nullptr;
  TMenu* fMenu = nullptr;  // of the root entry only
  UINT fCommand;
  int fImageIndex = -1;
  TShortCut fShortCut = 0;
  std::uint8_t fGroupIndex = 0;
  bool fChecked = false;
  bool fEnabled = true;
  bool fVisible = true;
  bool fDefault = false;
  bool fRadioItem = false;
  bool fAutoCheck = false;
};

/// A tree of entries.
class TMenu : public TComponent {
 public:
  explicit TMenu(TComponent* owner = nullptr);
  ~TMenu() override;
  TMenuItem& Items() noexcept { return *fItems; }
  const TMenuItem& Items() const noexcept { return *fItems; }
  TImageList* GetImages() const noexcept { return fImages; }
  void SetImages(TImageList* value);
  /// The system's menu with the present entries, made anew when asked; belongs to the menu. Shell
  /// menus may be merged into it until it is asked for again. Null where a widget set has none.
  HMENU GetHandle();
  /// Runs the entry that the user chose; false if the number isn't one of the menu.
  bool DispatchCommand(UINT command);
  /// Runs the first visible and enabled entry with that shortcut; false if there is none.
  bool IsShortCut(std::uint16_t key, TShiftState shift);

 protected:
  void Notification(TComponent* component, TOperation operation) override;
  void DestroyHandle();

 private:
  friend class TMenuItem;
  /// Entries of the first level were added, removed or look otherwise.
  virtual void TopEntriesChanged() {}

  std::unique_ptr<TMenuItem> fItems;
  TImageList* fImages = nullptr;
  HMENU fHandle = nullptr;

  friend class TPopupMenu;
};

class TPopupMenu : public TMenu {
 public:
  explicit TPopupMenu(TComponent* owner = nullptr) : TMenu(owner) {}
  /// Shows the menu at a screen point, waits for the choice and runs it after the menu has closed.
  /// The menu may be destroyed meanwhile.
  virtual void Popup(int x, int y);
  /// The control that the menu was last opened for, or nil.
  TWinControl* GetPopupComponent() const noexcept { return fPopupComponent; }
  void SetPopupComponent(TWinControl* value);
  TPoint GetPopupPoint() const noexcept { return fPopupPoint; }
  bool GetAutoPopup() const noexcept { return fAutoPopup; }
  void SetAutoPopup(bool value) { fAutoPopup = value; }

  TNotifyEvent OnPopup;

 protected:
  void Notification(TComponent* component, TOperation operation) override;

 private:
  TWinControl* fPopupComponent = nullptr;
  TPoint fPopupPoint;
  bool fAutoPopup = true;
};

/// The menu bar of a form, which shows changes of its entries soon.
class TMainMenu : public TMenu {
 public:
  using TMenu::TMenu;

 protected:
  void Notification(TComponent* component, TOperation operation) override;

 private:
  friend class TCustomForm;
  void TopEntriesChanged() override;
  TCustomForm* fForm = nullptr;
  bool fUpdatePosted = false;
};

}  // namespace oak
