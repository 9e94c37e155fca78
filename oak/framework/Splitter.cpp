#include <algorithm>

#include "oak/framework/Canvas.h"
#include "oak/framework/ControlScopes.h"
#include "oak/framework/Events.h"
#include "oak/framework/Forms.h"

namespace oak {
namespace {

constexpr int DefaultSplitterSize = 5;
constexpr int KeyStep = 8;  // pixels of one arrow key at 96 pixels per inch

bool IsVertical(TAlign align) { return align == alLeft || align == alRight; }

int Along(const TControl& control, bool vertical) {
  return vertical ? control.GetWidth() : control.GetHeight();
}

}  // namespace

TSplitter::TSplitter(TComponent* owner) : TCustomControl(owner) {
  TWinControl::SetBounds(0, 0, DefaultSplitterSize, DefaultSplitterSize);
}

void TSplitter::SetAlign(TAlign value) {
  SetCursor(IsVertical(value) ? crSizeWE : crSizeNS);
  TCustomControl::SetAlign(value);
}

TControl* TSplitter::FindControl() const {
  if (!GetParent()) return nullptr;
  const TRect own = GetBoundsRect();
  for (int i = 0; i < GetParent()->GetControlCount(); ++i) {
    TControl* control = GetParent()->GetControl(i);
    const TRect& other = control->GetBoundsRect();
    if (control == this || !control->GetVisible() || control->GetAlign() != GetAlign()) continue;
    const bool touches = (GetAlign() == alLeft && other.Right == own.Left) ||
                         (GetAlign() == alRight && other.Left == own.Right) ||
                         (GetAlign() == alTop && other.Bottom == own.Top) ||
                         (GetAlign() == alBottom && other.Top == own.Bottom);
    if (touches) return control;
  }
  return nullptr;
}

// --- dragging --------------------------------------------------------------------
void TSplitter::MouseDown(TMouseButton button, TShiftState shift, int x, int y) {
  const TLifeGuard guard = GetLifeGuard();
  TCustomControl::MouseDown(button, shift, x, y);
  if (!guard.IsAlive() || button != mbLeft) return;
  fSized = FindControl();
  if (!fSized) return;
  FreeNotification(fSized);
  fStart = ClientToScreen({x, y});
  fStartSize = Along(*fSized, IsVertical(GetAlign()));
}

void TSplitter::MouseMove(TShiftState shift, int x, int y) {
  const TLifeGuard guard = GetLifeGuard();
  TCustomControl::MouseMove(shift, x, y);
  if (!guard.IsAlive() || !fSized || !GetControlState().Contains(csLButtonDown)) return;
  // The splitter itself moves under the mouse: only the screen stands still.
  const TPoint moved = ClientToScreen({x, y}) - fStart;
  const int shiftBy = IsVertical(GetAlign()) ? moved.X : moved.Y;
  const bool growsForward = GetAlign() == alLeft || GetAlign() == alTop;
  SizeTo(growsForward ? fStartSize + shiftBy : fStartSize - shiftBy);
}

void TSplitter::MouseUp(TMouseButton button, TShiftState shift, int x, int y) {
  const TLifeGuard guard = GetLifeGuard();
  if (button == mbLeft && fSized) {
    const bool isMoved = Along(*fSized, IsVertical(GetAlign())) != fStartSize;
    fSized = nullptr;
    if (isMoved) FireEvent(OnMoved, this);
  }
  if (guard.IsAlive()) TCustomControl::MouseUp(button, shift, x, y);
}

// The mouse was taken away: back to the size of the start.
void TSplitter::CaptureLost() {
  if (TControl* sized = fSized) {
    SizeTo(fStartSize);
    if (sized == fSized) fSized = nullptr;
  }
}

void TSplitter::KeyDown(std::uint16_t& key, TShiftState shift) {
  const TLifeGuard guard = GetLifeGuard();
  if (key == vkEscape && fSized) {
    key = 0;
    CaptureLost();
    return;
  }
  const bool vertical = IsVertical(GetAlign());
  const int forward = vertical ? vkRight : vkDown;
  const int backward = vertical ? vkLeft : vkUp;
  TControl* sized = key == forward || key == backward ? FindControl() : nullptr;
  if (sized) {
    const bool grows = (key == forward) == (GetAlign() == alLeft || GetAlign() == alTop);
    key = 0;
    fSized = sized;
    SizeTo(Along(*sized, vertical) + (grows ? 1 : -1) * ScaledPixels(KeyStep));
    if (!guard.IsAlive()) return;
    fSized = nullptr;
    FireEvent(OnMoved, this);
    return;
  }
  TCustomControl::KeyDown(key, shift);
}

// The most that the control can take: what its siblings along the edge leave, but the least size.
int TSplitter::MaxSize() const {
  const bool vertical = IsVertical(GetAlign());
  int left =
      vertical ? GetParent()->GetClientRect().Width() : GetParent()->GetClientRect().Height();
  for (int i = 0; i < GetParent()->GetControlCount(); ++i) {
    const TControl* control = GetParent()->GetControl(i);
    const TAlign align = control->GetAlign();
    const bool sameEdge = align != alNone && align != alClient && IsVertical(align) == vertical;
    if (control != fSized && control->GetVisible() && sameEdge) left -= Along(*control, vertical);
  }
  return left - fMinSize;
}

void TSplitter::SizeTo(int size) {
  if (!fSized || !GetParent()) return;
  const TLifeGuard guard = GetLifeGuard();
  size = std::max(std::min(size, MaxSize()), fMinSize);
  bool accept = true;
  FireEvent(OnCanResize, this, size, accept);
  if (!guard.IsAlive() || !fSized || !accept) return;
  const TRect bounds = fSized->GetBoundsRect();
  if (IsVertical(GetAlign()))
    fSized->SetBounds(bounds.Left, bounds.Top, size, bounds.Height());
  else
    fSized->SetBounds(bounds.Left, bounds.Top, bounds.Width(), size);
}

void TSplitter::Notification(TComponent* component, TOperation operation) {
  TCustomControl::Notification(component, operation);
  if (operation == opRemove && component == fSized) fSized = nullptr;
}

// --- look ------------------------------------------------------------------------
void TSplitter::Paint(TCanvas& canvas, const TRect& clip) {
  if (Focused()) canvas.DrawFocusRect(GetClientRect());
  TCustomControl::Paint(canvas, clip);
}

void TSplitter::ChangeScale(int m, int d) {
  const TLifeGuard guard = GetLifeGuard();
  TCustomControl::ChangeScale(m, d);
  if (guard.IsAlive()) fMinSize = MulDiv(fMinSize, m, d);
}

}  // namespace oak
