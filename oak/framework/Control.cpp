#include "oak/framework/Control.h"

#include <algorithm>

#include "oak/base/Exceptions.h"
#include "oak/framework/ControlScopes.h"
#include "oak/framework/Events.h"
#include "oak/framework/Forms.h"
#include "oak/framework/Menus.h"

namespace oak {
TControl::TControl(TComponent* owner) : TComponent(owner) {
  fFont.OnChange = [this](TObject*) {
    if (!fAdapting) fParentFont = false;
    FontChanged();
  };
}

TControl::~TControl() {
  Destroying();
  fLife.reset();
  if (fParent) fParent->RemoveControl(this);
}

// --- place -------------------------------------------------------------------
void TControl::SetParent(TWinControl* parent) {
  if (parent == fParent) return;
  const auto* self = dynamic_cast<const TWinControl*>(this);
  if (parent && self && self->ContainsControl(parent))
    throw EInvalidOperation(u"A control cannot have itself as its parent.");
  if (fParent) fParent->RemoveControl(this);
  if (parent) parent->InsertControl(this);
}

void TControl::SetBounds(int left, int top, int width, int height) {
  const TRect former = fBounds;
  const TRect value({left, top}, {std::max(width, 0), std::max(height, 0)});
  if (value == former) return;
  fBounds = value;
  BoundsChanged(former);
}

void TControl::BoundsChanged(const TRect& former) {
  const TLifeGuard guard = GetLifeGuard();
  const bool isSized = former.Size() != fBounds.Size();
  if (!IsBeingAligned() && !fAdapting) {
    RememberAnchors();
    if (former.TopLeft() != fBounds.TopLeft()) RankByPlace();
  }
  if (isSized) ClientChanged();
  if (guard.IsAlive() && !IsBeingAligned()) RequestAlign();
  if (guard.IsAlive() && isSized) Resize();
}

bool TControl::IsBeingAligned() const { return fParent && fParent->fAligned == this; }

TRect TControl::GetClientRect() const { return {0, 0, GetWidth(), GetHeight()}; }

TPoint TControl::ClientToScreen(TPoint point) const {
  if (auto* window = dynamic_cast<const TWinControl*>(this); window && window->GetPeer())
    return window->GetPeer()->ClientToScreen(point);
  const TPoint inParent = point + fBounds.TopLeft();
  return fParent ? fParent->ClientToScreen(inParent) : inParent;
}

TPoint TControl::ScreenToClient(TPoint point) const { return point - ClientToScreen({}); }

void TControl::SetAlign(TAlign value) {
  if (value == fAlign) return;
  fAlign = value;
  if (value == alNone) RememberAnchors();
  if (fParent) fParent->Realign();
}

void TControl::SetAnchors(TAnchors value) {
  fAnchors = value;
  RememberAnchors();
}

void TControl::RememberAnchors() {
  fAnchorBase = fBounds;
  if (fParent) fAnchorParentSize = fParent->GetClientSize();
}

TRect TControl::AnchoredBounds(TSize parentSize) const {
  struct TSpan {
    int Begin, End;
  };
  auto follow = [](TSpan span, int growth, bool atBegin, bool atEnd) -> TSpan {
    if (atBegin && atEnd) return {span.Begin, std::max(span.Begin, span.End + growth)};
    const int shift = atBegin ? 0 : atEnd ? growth : growth / 2;
    return {span.Begin + shift, span.End + shift};
  };
  const TSpan x =
      follow({fAnchorBase.Left, fAnchorBase.Right}, parentSize.Width - fAnchorParentSize.Width,
             fAnchors.Contains(akLeft), fAnchors.Contains(akRight));
  const TSpan y =
      follow({fAnchorBase.Top, fAnchorBase.Bottom}, parentSize.Height - fAnchorParentSize.Height,
             fAnchors.Contains(akTop), fAnchors.Contains(akBottom));
  return {x.Begin, y.Begin, x.End, y.End};
}

// The program moved an aligned control: it takes the rank that suits its new place.
void TControl::RankByPlace() {
  if (!fParent || fAlign == alNone || fAlign == alClient) return;
  auto distance = [this](const TControl& control) {
    switch (fAlign) {
      case alTop:
        return control.fBounds.Top;
      case alLeft:
        return control.fBounds.Left;
      case alBottom:
        return -control.fBounds.Bottom;
      default:
        return -control.fBounds.Right;
    }
  };
  std::vector<TControl*> peers;
  for (TControl* control : fParent->fControls)
    if (control != this && control->fAlign == fAlign) peers.push_back(control);
  std::stable_sort(peers.begin(), peers.end(), [](const TControl* a, const TControl* b) {
    return a->fAlignRank < b->fAlignRank;
  });
  const auto place = std::find_if(peers.begin(), peers.end(), [&](const TControl* other) {
    return distance(*this) < distance(*other);
  });
  peers.insert(place, this);
  for (TControl* control : peers) control->fAlignRank = fParent->fNextAlignRank++;
}

void TControl::RequestAlign() {
  if (fParent && fAlign != alNone) fParent->Realign();
}

void TControl::ChangeScale(int m, int d) {
  if (m == d) return;
  const TMemberScope adapting(*this, fAdapting, true);
  if (!fParentFont || !fParent) fFont.ChangeScale(fCurrentPPI);
  if (IsPlacedByHost()) return;
  auto scaled = [m, d](const TRect& rect) {
    return TRect(MulDiv(rect.Left, m, d), MulDiv(rect.Top, m, d), MulDiv(rect.Right, m, d),
                 MulDiv(rect.Bottom, m, d));
  };
  fAnchorBase = scaled(fAnchorBase);
  fAnchorParentSize = {MulDiv(fAnchorParentSize.Width, m, d),
                       MulDiv(fAnchorParentSize.Height, m, d)};
  const TPoint corner = fParent ? scaled(fBounds).TopLeft() : fBounds.TopLeft();
  SetBounds(corner.X, corner.Y, MulDiv(GetWidth(), m, d), MulDiv(GetHeight(), m, d));
}

void TControl::BringToFront() {
  if (fParent) fParent->SetZOrder(this, true);
}

void TControl::SendToBack() {
  if (fParent) fParent->SetZOrder(this, false);
}

TCustomForm* TControl::GetParentForm() const {
  const TControl* control = this;
  while (control->fParent) control = control->fParent;
  return dynamic_cast<TCustomForm*>(const_cast<TControl*>(control));
}

// --- look --------------------------------------------------------------------
void TControl::SetVisible(bool value) {
  if (value == fVisible) return;
  VisibleChanging();
  fVisible = value;
  RequestAlign();
}

void TControl::SetEnabled(bool value) {
  if (value == fEnabled) return;
  fEnabled = value;
  EnabledChanged();
}

void TControl::EnabledChanged() { Invalidate(); }

void TControl::SetText(const TString& value) {
  if (value == fText) return;
  fText = value;
  TextChanged();
}

void TControl::SetFont(const TFont& value) { fFont = value; }

void TControl::SetParentFont(bool value) {
  fParentFont = value;
  if (value) InheritFont();
}

void TControl::ParentFontChanged() {
  if (fParentFont) InheritFont();
}

void TControl::InheritFont() {
  if (!fParent) return;
  const TMemberScope adapting(*this, fAdapting, true);
  fFont = fParent->GetFont();
}

void TControl::FontChanged() { Invalidate(); }

void TControl::SetColor(TColor value) {
  fParentColor = false;
  if (value == fColor) return;
  fColor = value;
  ColorChanged();
}

void TControl::SetParentColor(bool value) {
  fParentColor = value;
  ParentColorChanged();
}

void TControl::ParentColorChanged() {
  if (!fParentColor || !fParent || fColor == fParent->GetColor()) return;
  fColor = fParent->GetColor();
  ColorChanged();
}

void TControl::ColorChanged() { Invalidate(); }

void TControl::StyleChanged() { Invalidate(); }

void TControl::SetStyleElements(TStyleElements value) {
  if (value == fStyleElements) return;
  fStyleElements = value;
  UpdateStyleElements();
}

void TControl::UpdateStyleElements() { Invalidate(); }

void TControl::SetHint(const TString& value) {
  fHint = value;
  if (auto* window = dynamic_cast<TWinControl*>(this); window && window->GetPeer())
    window->GetPeer()->SetHint(value);
}

void TControl::SetShowHint(bool value) { fShowHint = value; }

void TControl::SetCursor(TCursor value) {
  if (value == fCursor) return;
  fCursor = value;
  if (auto* window = dynamic_cast<TWinControl*>(this); window && window->GetPeer())
    window->GetPeer()->SetCursor(value);
}

void TControl::SetPopupMenu(TPopupMenu* value) {
  fPopupMenu = value;
  FreeNotification(value);
}

void TControl::Notification(TComponent* component, TOperation operation) {
  TComponent::Notification(component, operation);
  if (operation == opRemove && component == fPopupMenu) fPopupMenu = nullptr;
}

void TControl::Invalidate() {
  if (fParent && fVisible) fParent->InvalidateRect(fBounds);
}

void TControl::Update() {
  if (fParent) fParent->Update();
}

void TControl::Repaint() {
  Invalidate();
  Update();
}

// --- what the user did -------------------------------------------------------
void TControl::Click() { FireEvent(OnClick, this); }

void TControl::DblClick() { FireEvent(OnDblClick, this); }

void TControl::MouseDown(TMouseButton button, TShiftState shift, int x, int y) {
  FireEvent(OnMouseDown, this, button, shift, x, y);
}

void TControl::MouseUp(TMouseButton button, TShiftState shift, int x, int y) {
  FireEvent(OnMouseUp, this, button, shift, x, y);
}

void TControl::MouseMove(TShiftState shift, int x, int y) {
  FireEvent(OnMouseMove, this, shift, x, y);
}

void TControl::MouseEnter() { FireEvent(OnMouseEnter, this); }

void TControl::MouseLeave() { FireEvent(OnMouseLeave, this); }

bool TControl::DoMouseWheel(TShiftState shift, int delta, TPoint screen) {
  bool handled = false;
  FireEvent(OnMouseWheel, this, shift, delta, screen, handled);
  return handled;
}

void TControl::DoContextPopup(TPoint point, bool& handled) {
  FireEvent(OnContextPopup, this, point, handled);
}

void TControl::Resize() { FireEvent(OnResize, this); }

}  // namespace oak
