#include "oak/framework/Menus.h"

#include <array>
#include <utility>

#include "oak/framework/Events.h"
#include "oak/framework/Forms.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/MainThreadQueue.h"
#include "oak/framework/WidgetSet.h"

namespace oak {
namespace {

constexpr TShortCut scShift = 0x2000;
constexpr TShortCut scCtrl = 0x4000;
constexpr TShortCut scAlt = 0x8000;
constexpr std::uint16_t FirstFunctionKey = 0x70;
constexpr std::uint16_t LastFunctionKey = 0x87;
constexpr std::uint16_t FirstNumPadKey = 0x60;

struct TKeyName {
  std::uint16_t Key;
  TStringView Name;
};
constexpr std::array<TKeyName, 18> KeyNames{{{vkBack, u"Backspace"},
                                             {vkTab, u"Tab"},
                                             {vkReturn, u"Enter"},
                                             {vkEscape, u"Esc"},
                                             {vkSpace, u"Space"},
                                             {vkPrior, u"PgUp"},
                                             {vkNext, u"PgDn"},
                                             {vkEnd, u"End"},
                                             {vkHome, u"Home"},
                                             {vkLeft, u"Left"},
                                             {vkUp, u"Up"},
                                             {vkRight, u"Right"},
                                             {vkDown, u"Down"},
                                             {vkInsert, u"Ins"},
                                             {vkDelete, u"Del"},
                                             {vkMultiply, u"Num *"},
                                             {vkAdd, u"Num +"},
                                             {vkSubtract, u"Num -"}}};

TString Decimal(int value) { return FromUtf8(std::to_string(value)); }

TString KeyName(std::uint16_t key) {
  for (const TKeyName& entry : KeyNames)
    if (entry.Key == key) return TString(entry.Name);
  if ((key >= u'0' && key <= u'9') || (key >= u'A' && key <= u'Z'))
    return TString(1, static_cast<char16_t>(key));
  if (key >= FirstFunctionKey && key <= LastFunctionKey)
    return u"F" + Decimal(key - FirstFunctionKey + 1);
  if (key >= FirstNumPadKey && key <= FirstNumPadKey + 9)
    return u"Num " + Decimal(key - FirstNumPadKey);
  return {};
}

TMenuItem* FindShortCut(const TMenuItem& parent, TShortCut shortCut) {
  for (int i = 0; i < parent.GetCount(); ++i) {
    TMenuItem* item = parent.GetItem(i);
    if (!item->GetVisible() || !item->GetEnabled()) continue;
    if (item->GetShortCut() == shortCut && item->GetCount() == 0) return item;
    if (TMenuItem* found = FindShortCut(*item, shortCut)) return found;
  }
  return nullptr;
}

/// A system menu as long as it is open; the menu that it was made for may go before.
class TOpenMenu {
 public:
  explicit TOpenMenu(HMENU handle) : fHandle(handle) {}
  ~TOpenMenu() {
    if (fHandle) WidgetSet().DestroyMenu(fHandle);
  }
  TOpenMenu(const TOpenMenu&) = delete;
  TOpenMenu& operator=(const TOpenMenu&) = delete;
  HMENU Get() const { return fHandle; }

 private:
  HMENU fHandle;
};

}  // namespace

TShortCut ShortCut(std::uint16_t key, TShiftState shift) {
  if (key == 0 || key > 0xFF) return 0;
  int result = key;
  if (shift.Contains(ssShift)) result |= scShift;
  if (shift.Contains(ssCtrl)) result |= scCtrl;
  if (shift.Contains(ssAlt)) result |= scAlt;
  return static_cast<TShortCut>(result);
}

TString ShortCutToText(TShortCut shortCut) {
  const TString name = KeyName(shortCut & 0xFF);
  if (name.empty()) return {};
  TString result;
  if (shortCut & scCtrl) result += u"Ctrl+";
  if (shortCut & scShift) result += u"Shift+";
  if (shortCut & scAlt) result += u"Alt+";
  return result + name;
}

// --- TMenu -----------------------------------------------------------------------
TMenu::TMenu(TComponent* owner) : TComponent(owner), fItems(std::make_unique<TMenuItem>()) {
  fItems->fMenu = this;
}

TMenu::~TMenu() {
  NotifyOfEnd();
  DestroyHandle();
  fItems->fMenu = nullptr;
}

void TMenu::SetImages(TImageList* value) {
  fImages = value;
  FreeNotification(value);
}

void TMenu::Notification(TComponent* component, TOperation operation) {
  TComponent::Notification(component, operation);
  if (operation == opRemove && component == fImages) fImages = nullptr;
}

HMENU TMenu::GetHandle() {
  DestroyHandle();
  fHandle = WidgetSet().CreateMenu(*fItems);
  return fHandle;
}

void TMenu::DestroyHandle() {
  if (HMENU handle = std::exchange(fHandle, nullptr)) WidgetSet().DestroyMenu(handle);
}

bool TMenu::DispatchCommand(UINT command) {
  TMenuItem* item = fItems->FindCommand(command);
  if (item) item->Click();
  return item != nullptr;
}

bool TMenu::IsShortCut(std::uint16_t key, TShiftState shift) {
  const TShortCut shortCut = ShortCut(key, shift);
  TMenuItem* item = shortCut ? FindShortCut(*fItems, shortCut) : nullptr;
  if (item) item->Click();
  return item != nullptr;
}

// --- TPopupMenu --------------------------------------------------------------------
void TPopupMenu::Popup(int x, int y) {
  fPopupPoint = {x, y};
  const TMenuItem* root = &Items();
  const UINT rootCommand = root->GetCommand();
  auto isAlive = [=] { return FindMenuItem(rootCommand) == root; };
  FireEvent(OnPopup, this);
  if (isAlive()) Items().DoPopup();
  if (!isAlive()) return;
  GetHandle();
  const TOpenMenu open(std::exchange(fHandle, nullptr));
  if (!open.Get()) return;
  TWinControl* owner = fPopupComponent ? fPopupComponent : Screen().GetActiveForm();
  const UINT command = WidgetSet().TrackMenu(open.Get(), fPopupPoint, owner, nullptr);
  if (command != 0 && isAlive()) DispatchCommand(command);
}

void TPopupMenu::SetPopupComponent(TWinControl* value) {
  fPopupComponent = value;
  FreeNotification(value);
}

void TPopupMenu::Notification(TComponent* component, TOperation operation) {
  TMenu::Notification(component, operation);
  if (operation == opRemove && component == fPopupComponent) fPopupComponent = nullptr;
}

// --- TMainMenu ---------------------------------------------------------------------
void TMainMenu::Notification(TComponent* component, TOperation operation) {
  TMenu::Notification(component, operation);
  if (operation == opRemove && component == fForm) fForm = nullptr;
}

// Once for all changes of a handler.
void TMainMenu::TopEntriesChanged() {
  if (!fForm || fUpdatePosted) return;
  const TMenuItem* root = &Items();
  fUpdatePosted = TMainThreadQueue::Instance().Post([this, root, command = root->GetCommand()] {
    if (FindMenuItem(command) != root) return;
    fUpdatePosted = false;
    if (fForm && fForm->GetFormPeer()) fForm->GetFormPeer()->SetMenu(this);
  });
}

}  // namespace oak
