// Menus as data, where no system has windows to show them in.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "oak/base/Text.h"
#include "oak/platform/shell_api.h"

namespace oak {

/// An entry of a menu. Its text has "&" before the mnemonic and, after a tab, the name of a
/// shortcut key.
struct TMenuEntry {
  UINT Command = 0;
  TString Text;
  bool IsSeparator = false;
  bool IsEnabled = true;
  bool IsChecked = false;
  bool IsRadio = false;  ///< The check mark is that of one choice of several.
  bool IsDefault = false;
  bool IsOwnerDrawn = false;  ///< The owner of the menu draws it; Text may be empty.
  HMENU SubMenu = nullptr;    ///< Destroyed with the menu.
  std::uintptr_t Data = 0;    ///< Free for who inserted the entry.
};

/// The menus of this process that consist of data alone: those of the headless desktop and, where
/// the shell is portable, those that CreatePopupMenu makes. Any thread.
class TMenuTable {
 public:
  static TMenuTable& Instance();

  /// An empty menu.
  HMENU Create();
  /// Destroys a menu with its submenus; false if it isn't one.
  bool Destroy(HMENU menu);
  bool IsMenu(HMENU menu) const;
  /// -1 if it isn't a menu.
  int GetCount(HMENU menu) const;
  /// Inserts before `index`; -1 or beyond the end appends. False if it isn't a menu.
  bool Insert(HMENU menu, int index, TMenuEntry entry);
  /// Removes an entry and destroys its submenu.
  bool Delete(HMENU menu, int index);
  /// A copy of an entry; false outside the menu.
  bool Get(HMENU menu, int index, TMenuEntry* entry) const;
  /// Replaces an entry, whose former submenu stays without owner if it is another one.
  bool Set(HMENU menu, int index, TMenuEntry entry);
  /// Copies of all entries; empty if it isn't a menu.
  std::vector<TMenuEntry> GetEntries(HMENU menu) const;
  /// Menus that exist.
  std::size_t GetMenuCount() const;

 private:
  TMenuTable() = default;
  using TEntries = std::vector<TMenuEntry>;
  bool DestroyLocked(HMENU menu);

  mutable std::mutex fLock;
  std::map<HMENU, TEntries> fMenus;
  std::uintptr_t fLast = 0x4D000000;
};

}  // namespace oak
