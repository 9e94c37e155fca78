// Copies of the application's menus that the shell adds its entries to.
#pragma once

#include <memory>

#include "oak/framework/Menus.h"

namespace oak {

/// A copy of an entry of the application. What happens to it happens to the original, whose
/// handlers see that one as the sender; nothing happens once the original has gone.
class TOakMenuItem : public TMenuItem {
 public:
  using TMenuItem::TMenuItem;
  /// Becomes a copy of the source, its sub entries included.
  void Assign(const TPersistent* source) override;
  /// nil if it has gone.
  TMenuItem* GetOriginal() const;

  void Click() override;
  /// Lets the original fill itself, and copies its sub entries anew.
  void DoPopup() override;

 protected:
  std::unique_ptr<TMenuItem> MakeSubItem() const override;

 private:
  TMenuItem* fOriginal = nullptr;
  UINT fOriginalCommand = 0;
};

/// Copies a menu, after it was asked to fill itself; nil gives an empty one. Never nil.
std::unique_ptr<TPopupMenu> CloneMenu(TMenu* menu);

}  // namespace oak
