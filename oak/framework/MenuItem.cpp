#include <algorithm>
#include <unordered_map>

#include "oak/base/Exceptions.h"
#include "oak/framework/Events.h"
#include "oak/framework/Menus.h"

namespace oak {
namespace {

constexpr UINT FirstCommand = 256;    // below are those of the shell's menus
constexpr UINT LastCommand = 0x6FFF;  // above are those of the system and its views

/// All entries of the program by their numbers. Numbers go round, so that one that is still under
/// way does not find an entry that was made since.
class TMenuCommands {
 public:
  UINT Add(TMenuItem* item) {
    // A program with more entries than numbers gets those that no menu bar can send.
    const UINT last = fItems.size() < (LastCommand - FirstCommand) / 2 ? LastCommand : 0x7FFFFFFF;
    do {
      fNext = fNext < FirstCommand || fNext >= last ? FirstCommand : fNext + 1;
    } while (!fItems.emplace(fNext, item).second);
    return fNext;
  }
  void Remove(UINT command) noexcept { fItems.erase(command); }
  TMenuItem* Find(UINT command) const {
    const auto found = fItems.find(command);
    return found == fItems.end() ? nullptr : found->second;
  }

 private:
  std::unordered_map<UINT, TMenuItem*> fItems;
  UINT fNext = 0;
};

TMenuCommands& MenuCommands() {
  static auto& commands = *new TMenuCommands;  // menus of static life end late
  return commands;
}

}  // namespace

TString MenuCaption(TStringView text) {
  TString caption;
  for (std::size_t i = 0; i < text.size() && text[i] != u'\t'; ++i) {
    if (text[i] == u'&' && i + 1 < text.size()) ++i;
    caption += text[i];
  }
  return caption;
}

TMenuItem* FindMenuItem(UINT command) { return MenuCommands().Find(command); }

TMenuItem::TMenuItem(TComponent* owner) : TComponent(owner), fCommand(MenuCommands().Add(this)) {}

TMenuItem::~TMenuItem() {
  NotifyOfEnd();
  MenuCommands().Remove(fCommand);
  if (fParent) fParent->Forget(this);
  Clear();
}

// --- properties ------------------------------------------------------------------
void TMenuItem::Changed() {
  if (fParent && fParent->fMenu) fParent->fMenu->TopEntriesChanged();
}

void TMenuItem::SetCaption(TString value) {
  fCaption = std::move(value);
  Changed();
}

void TMenuItem::SetEnabled(bool value) {
  fEnabled = value;
  Changed();
}

void TMenuItem::SetVisible(bool value) {
  fVisible = value;
  Changed();
}

void TMenuItem::SetChecked(bool value) {
  fChecked = value;
  if (!value || !fRadioItem || !fParent) return;
  for (const auto& other : fParent->fItems)
    if (other.get() != this && other->fRadioItem && other->fGroupIndex == fGroupIndex)
      other->fChecked = false;
}

void TMenuItem::SetRadioItem(bool value) {
  fRadioItem = value;
  if (fChecked) SetChecked(true);
}

void TMenuItem::SetDefault(bool value) {
  fDefault = value;
  if (!value || !fParent) return;
  for (const auto& other : fParent->fItems)
    if (other.get() != this) other->fDefault = false;
}

void TMenuItem::Assign(const TPersistent* source) {
  const auto* item = dynamic_cast<const TMenuItem*>(source);
  if (!item) {
    TComponent::Assign(source);
    return;
  }
  if (item == this) return;
  fCaption = item->fCaption;
  fHint = item->fHint;
  fImageIndex = item->fImageIndex;
  fShortCut = item->fShortCut;
  fGroupIndex = item->fGroupIndex;
  fEnabled = item->fEnabled;
  fVisible = item->fVisible;
  fRadioItem = item->fRadioItem;
  fAutoCheck = item->fAutoCheck;
  OnClick = item->OnClick;
  OnPopup = item->OnPopup;
  OnMeasureItem = item->OnMeasureItem;
  OnDrawItem = item->OnDrawItem;
  Tag = item->Tag;
  SetDefault(item->fDefault);
  SetChecked(item->fChecked);
  Clear();
  for (const auto& child : item->fItems) Add(MakeSubItem())->Assign(child.get());
}

std::unique_ptr<TMenuItem> TMenuItem::MakeSubItem() const { return std::make_unique<TMenuItem>(); }

// --- sub entries -------------------------------------------------------------------
TMenuItem* TMenuItem::GetItem(int index) const {
  return index >= 0 && index < GetCount() ? fItems[static_cast<std::size_t>(index)].get() : nullptr;
}

TMenu* TMenuItem::GetParentMenu() const noexcept {
  const TMenuItem* item = this;
  while (item->fParent) item = item->fParent;
  return item->fMenu;
}

TMenuItem* TMenuItem::Insert(int index, std::unique_ptr<TMenuItem> item) {
  if (!item) throw EArgumentException(u"item must not be null.");
  TMenuItem* result = item.get();
  result->fParent = this;
  fItems.insert(fItems.begin() + std::clamp(index, 0, GetCount()), std::move(item));
  result->Changed();
  return result;
}

TMenuItem* TMenuItem::Add(TString caption, std::function<void(TObject*)> onClick) {
  auto item = std::make_unique<TMenuItem>();
  item->fCaption = std::move(caption);
  item->OnClick = std::move(onClick);
  return Add(std::move(item));
}

std::unique_ptr<TMenuItem> TMenuItem::Remove(TMenuItem* item) {
  const int index = IndexOf(item);
  if (index < 0) return nullptr;
  const auto place = fItems.begin() + index;
  std::unique_ptr<TMenuItem> result = std::move(*place);
  fItems.erase(place);
  result->Changed();
  result->fParent = nullptr;
  return result;
}

// The entry is destroyed by somebody else.
void TMenuItem::Forget(TMenuItem* item) { static_cast<void>(Remove(item).release()); }

void TMenuItem::Delete(int index) { Remove(GetItem(index)); }

void TMenuItem::Clear() {
  while (!fItems.empty()) Delete(GetCount() - 1);
}

int TMenuItem::IndexOf(const TMenuItem* item) const {
  const auto place = std::find_if(fItems.begin(), fItems.end(),
                                  [item](const auto& other) { return other.get() == item; });
  return place == fItems.end() ? -1 : static_cast<int>(place - fItems.begin());
}

TMenuItem* TMenuItem::Find(TStringView caption) const {
  const TString text = MenuCaption(caption);
  for (const auto& item : fItems)
    if (SameText(MenuCaption(item->fCaption), text)) return item.get();
  return nullptr;
}

TMenuItem* TMenuItem::FindCommand(UINT command) {
  TMenuItem* item = FindMenuItem(command);
  for (const TMenuItem* parent = item; parent; parent = parent->fParent)
    if (parent->fParent == this) return item;
  return nullptr;
}

// --- what the user does --------------------------------------------------------------
void TMenuItem::Click() {
  if (!fEnabled) return;
  if (fAutoCheck) SetChecked(fRadioItem || !fChecked);
  FireEvent(OnClick, this);
}

void TMenuItem::DoPopup() { FireEvent(OnPopup, this); }

}  // namespace oak
