#include "oak/namespace/FolderTrek.Menus.h"

#include "oak/framework/Events.h"

namespace oak {

void TOakMenuItem::Assign(const TPersistent* source) {
  TMenuItem::Assign(source);
  // The copy never calls back into what it was made from.
  fOriginal = const_cast<TMenuItem*>(dynamic_cast<const TMenuItem*>(source));
  fOriginalCommand = fOriginal ? fOriginal->GetCommand() : 0;
  if (!OnMeasureItem || !OnDrawItem) return;
  OnMeasureItem = [this](TObject*, TCanvas& canvas, int& width, int& height) {
    if (TMenuItem* item = GetOriginal())
      FireEvent(item->OnMeasureItem, item, canvas, width, height);
  };
  OnDrawItem = [this](TObject*, TCanvas& canvas, const TRect& rect, bool selected) {
    if (TMenuItem* item = GetOriginal()) FireEvent(item->OnDrawItem, item, canvas, rect, selected);
  };
}

TMenuItem* TOakMenuItem::GetOriginal() const {
  return fOriginal && FindMenuItem(fOriginalCommand) == fOriginal ? fOriginal : nullptr;
}

void TOakMenuItem::Click() {
  if (TMenuItem* item = GetOriginal()) item->Click();
}

void TOakMenuItem::DoPopup() {
  const UINT own = GetCommand();
  if (TMenuItem* item = GetOriginal()) item->DoPopup();
  if (FindMenuItem(own) != this) return;  // the handler closed the menu
  Clear();
  const TMenuItem* item = GetOriginal();
  if (!item) return;
  for (int i = 0; i < item->GetCount(); ++i) Add(MakeSubItem())->Assign(item->GetItem(i));
}

std::unique_ptr<TMenuItem> TOakMenuItem::MakeSubItem() const {
  return std::make_unique<TOakMenuItem>();
}

std::unique_ptr<TPopupMenu> CloneMenu(TMenu* menu) {
  auto clone = std::make_unique<TPopupMenu>();
  if (!menu) return clone;
  const TMenuItem* const root = &menu->Items();
  const UINT rootCommand = root->GetCommand();
  const auto isAlive = [=] { return FindMenuItem(rootCommand) == root; };
  if (auto* popup = dynamic_cast<TPopupMenu*>(menu)) FireEvent(popup->OnPopup, popup);
  if (isAlive()) menu->Items().DoPopup();
  if (!isAlive()) return clone;
  clone->SetImages(menu->GetImages());
  for (int i = 0; i < root->GetCount(); ++i)
    clone->Items().Add(std::make_unique<TOakMenuItem>())->Assign(root->GetItem(i));
  return clone;
}

}  // namespace oak
