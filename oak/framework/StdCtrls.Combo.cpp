// Combo box with images.
#include <algorithm>
#include <utility>

#include "oak/base/Exceptions.h"
#include "oak/framework/Events.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/StdCtrls.h"

namespace oak {
namespace {

constexpr int DefaultComboWidth = 145;
constexpr int DefaultComboHeight = 23;

}  // namespace

TCustomComboBoxEx::TCustomComboBoxEx(TComponent* owner)
    : TWinControl(owner), fImagesLink(std::make_unique<TChangeLink>()) {
  SetTabStop(true);
  SetColor(clWindow);
  TWinControl::SetBounds(0, 0, DefaultComboWidth, DefaultComboHeight);
  fImagesLink->OnChange = [this](TObject*) {
    if (fComboPeer) fComboPeer->ImagesChanged();
  };
}

TCustomComboBoxEx::~TCustomComboBoxEx() { BeginDestroy(); }

std::unique_ptr<IControlPeer> TCustomComboBoxEx::CreatePeer() {
  std::unique_ptr<IComboPeer> peer = WidgetSet().CreateCombo(*this);
  fComboPeer = peer.get();
  return peer;
}

void TCustomComboBoxEx::CreateWnd() {
  TWinControl::CreateWnd();
  fComboPeer->SetItemIndex(fItemIndex);
  if (!fReadOnly) fComboPeer->SetText(GetText());
}

void TCustomComboBoxEx::DestroyWnd() {
  fComboPeer = nullptr;
  TWinControl::DestroyWnd();
}

void TCustomComboBoxEx::Notification(TComponent* component, TOperation operation) {
  TWinControl::Notification(component, operation);
  if (operation == opRemove && component == fImages) SetImages(nullptr);
}

// --- entries ---------------------------------------------------------------------
void TCustomComboBoxEx::CheckIndex(int index, int end) const {
  if (index < 0 || index >= end) throw EArgumentException(u"index: there is no such entry.");
}

const TComboExItem& TCustomComboBoxEx::GetItem(int index) const {
  CheckIndex(index, GetItemCount());
  return fItems[static_cast<std::size_t>(index)];
}

int TCustomComboBoxEx::AddItem(TComboExItem item) {
  InsertItem(GetItemCount(), std::move(item));
  return GetItemCount() - 1;
}

void TCustomComboBoxEx::SetItem(int index, TComboExItem item) {
  CheckIndex(index, GetItemCount());
  fItems[static_cast<std::size_t>(index)] = std::move(item);
  ItemsChanged();
}

void TCustomComboBoxEx::InsertItem(int index, TComboExItem item) {
  CheckIndex(index, GetItemCount() + 1);
  fItems.insert(fItems.begin() + index, std::move(item));
  if (fItemIndex >= index) ++fItemIndex;
  ItemsChanged();
}

void TCustomComboBoxEx::DeleteItem(int index) {
  CheckIndex(index, GetItemCount());
  fItems.erase(fItems.begin() + index);
  if (fItemIndex == index)
    fItemIndex = -1;
  else if (fItemIndex > index)
    --fItemIndex;
  ItemsChanged();
}

void TCustomComboBoxEx::ClearItems() {
  fItems.clear();
  fItemIndex = -1;
  ItemsChanged();
}

void TCustomComboBoxEx::ItemsChanged() {
  if (fComboPeer) fComboPeer->ItemsChanged();
}

void TCustomComboBoxEx::SetItemIndex(int value) {
  if (value != -1) CheckIndex(value, GetItemCount());
  fItemIndex = value;
  TControl::SetText(value < 0 ? TString() : GetItem(value).Caption);
  if (fComboPeer) fComboPeer->SetItemIndex(value);
  if (!fReadOnly && fComboPeer) fComboPeer->SetText(GetText());
}

// --- text ------------------------------------------------------------------------
void TCustomComboBoxEx::SetText(const TString& value) {
  const auto entry = std::find_if(fItems.begin(), fItems.end(),
                                  [&](const TComboExItem& item) { return item.Caption == value; });
  if (fReadOnly) {
    if (entry != fItems.end()) SetItemIndex(static_cast<int>(entry - fItems.begin()));
    return;
  }
  fItemIndex = entry == fItems.end() ? -1 : static_cast<int>(entry - fItems.begin());
  TControl::SetText(value);
  if (fComboPeer) fComboPeer->SetItemIndex(fItemIndex);
  if (fComboPeer) fComboPeer->SetText(value);
}

void TCustomComboBoxEx::SelectAll() {
  if (fComboPeer) fComboPeer->SelectText(0, -1);
}

HWND TCustomComboBoxEx::GetEditHandle() const {
  return fComboPeer ? fComboPeer->GetEditHandle() : nullptr;
}

bool TCustomComboBoxEx::WantsKey(std::uint16_t key, TShiftState shift) {
  const bool closesList = (key == vkReturn || key == vkEscape) && GetDroppedDown();
  return closesList || TWinControl::WantsKey(key, shift);
}

// --- look ------------------------------------------------------------------------
void TCustomComboBoxEx::SetImages(TImageList* value) {
  if (value == fImages) return;
  if (fImages) fImages->UnRegisterChanges(fImagesLink.get());
  fImages = value;
  if (fImages) fImages->RegisterChanges(fImagesLink.get());
  FreeNotification(value);
  if (fComboPeer) fComboPeer->ImagesChanged();
}

void TCustomComboBoxEx::SetEditImageIndex(int value) {
  if (value == fEditImageIndex) return;
  fEditImageIndex = value;
  if (fComboPeer) fComboPeer->ImagesChanged();
}

void TCustomComboBoxEx::SetReadOnly(bool value) {
  if (value == fReadOnly) return;
  fReadOnly = value;
  RecreateWnd();
}

void TCustomComboBoxEx::SetDropDownCount(int value) {
  fDropDownCount = std::max(value, 1);
  ItemsChanged();
}

bool TCustomComboBoxEx::GetDroppedDown() const {
  return fComboPeer && fComboPeer->GetDroppedDown();
}

void TCustomComboBoxEx::SetDroppedDown(bool value) {
  if (value && GetParent()) HandleNeeded();
  if (fComboPeer && value != GetDroppedDown()) fComboPeer->SetDroppedDown(value);
}

// --- what the user does ------------------------------------------------------------
void TCustomComboBoxEx::HandleTextChanged(const TString& text) {
  if (IsDestroying() || text == GetText()) return;
  RunFenced(*this, [&] {
    TControl::SetText(text);
    fItemIndex = -1;
    Change();
  });
}

void TCustomComboBoxEx::HandleSelected(int index) {
  if (IsDestroying() || index < 0 || index >= GetItemCount()) return;
  RunFenced(*this, [&] {
    const TLifeGuard guard = GetLifeGuard();
    SetItemIndex(index);
    if (guard.IsAlive()) Select();
  });
}

void TCustomComboBoxEx::HandleDropDown(bool open) {
  if (IsDestroying()) return;
  RunFenced(*this, [&] { open ? DropDown() : CloseUp(); });
}

void TCustomComboBoxEx::Change() { FireEvent(OnChange, this); }

void TCustomComboBoxEx::Select() {
  if (OnSelect)
    FireEvent(OnSelect, this);
  else
    Change();
}

void TCustomComboBoxEx::DropDown() { FireEvent(OnDropDown, this); }
void TCustomComboBoxEx::CloseUp() { FireEvent(OnCloseUp, this); }

}  // namespace oak
