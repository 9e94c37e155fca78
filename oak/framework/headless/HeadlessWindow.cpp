#include "oak/framework/headless/HeadlessWindow.h"

#include <algorithm>
#include <utility>

#include "oak/framework/Application.h"
#include "oak/framework/TextMetrics.h"
#include "oak/framework/WinControl.h"
#include "oak/framework/headless/HeadlessDesktop.h"

namespace oak {
namespace {

constexpr int MetricScrollWidth = 2;  // SM_CXVSCROLL
constexpr int WheelNotch = 120;
constexpr int LinesPerNotch = 3;

bool Covers(const TRect& outer, const TRect& inner) {
  return inner.IsEmpty() || outer.Intersected(inner) == inner;
}

}  // namespace

THeadlessWindow::THeadlessWindow(THeadlessDesktop& desktop, THeadlessKind kind,
                                 THeadlessWindow* parent, const TRect& bounds)
    : fDesktop(desktop), fHandle(nullptr), fKind(kind), fParent(parent), fBounds(bounds) {
  if (fParent) fParent->fChildren.push_back(this);
  fHandle = fDesktop.Register(*this);
  fInvalid = {{}, fBounds.Size()};
}

THeadlessWindow::~THeadlessWindow() {
  // Children that another part of the program put here learn that their window ends.
  while (!fChildren.empty()) {
    THeadlessWindow* const child = fChildren.back();
    fChildren.pop_back();
    child->fParent = nullptr;
    child->fVisible = false;
    if (TWinControl* const control = child->GetControlOrNil()) control->HandleWindowLost();
  }
  fLife.reset();
  if (fParent) std::erase(fParent->fChildren, this);
  fDesktop.Unregister(*this);
}

// --- place -------------------------------------------------------------------

void THeadlessWindow::SetBounds(const TRect& bounds) {
  if (bounds == fBounds) return;
  const bool sized = bounds.Size() != fBounds.Size();
  fBounds = bounds;
  if (sized) {
    OnBoundsChanged();
    Invalidate(nullptr);
  }
  BoundsMoved(sized);
}

void THeadlessWindow::BoundsMoved(bool) {}

TRect THeadlessWindow::GetClientRect() const {
  const TRect frame = GetFrame();
  int width = fBounds.Width() - frame.Left - frame.Right;
  int height = fBounds.Height() - frame.Top - frame.Bottom;
  const int bar = fDesktop.GetSystemMetric(MetricScrollWidth, GetWindowPPI());
  if (GetScrollInfo(sbVertical).IsShown()) width -= bar;
  if (GetScrollInfo(sbHorizontal).IsShown()) height -= bar;
  return {0, 0, std::max(width, 0), std::max(height, 0)};
}

TRect THeadlessWindow::GetScreenRect() const {
  if (!fParent) return fBounds;
  const TPoint corner = fParent->ClientToScreen(fBounds.TopLeft());
  return {corner, fBounds.Size()};
}

TPoint THeadlessWindow::ClientToScreen(TPoint point) const {
  const TRect frame = GetFrame();
  return GetScreenRect().TopLeft() + TPoint(frame.Left, frame.Top) + point;
}

TPoint THeadlessWindow::ScreenToClient(TPoint point) const { return point - ClientToScreen({}); }

TRect THeadlessWindow::GetScrollBarRect(TScrollBarKind kind) const {
  if (!GetScrollInfo(kind).IsShown()) return {};
  const TRect frame = GetFrame();
  const TRect client = GetClientRect().Moved(frame.Left, frame.Top);
  const int bar = fDesktop.GetSystemMetric(MetricScrollWidth, GetWindowPPI());
  if (kind == sbVertical) return {client.Right, client.Top, client.Right + bar, client.Bottom};
  return {client.Left, client.Bottom, client.Right, client.Bottom + bar};
}

THeadlessWindow* THeadlessWindow::GetRootWindow() {
  THeadlessWindow* window = this;
  while (window->fParent) window = window->fParent;
  return window;
}

int THeadlessWindow::GetWindowPPI() const {
  if (fParent) return fParent->GetWindowPPI();
  const std::vector<TMonitorInfo> monitors = fDesktop.GetMonitors();
  return monitors[static_cast<std::size_t>(fDesktop.MonitorOf(fBounds))].PixelsPerInch;
}

int THeadlessWindow::GetLineHeight() const { return TextHeight(fFont); }

void THeadlessWindow::SetParent(HWND parent) {
  THeadlessWindow* const window = fDesktop.FindWindow(parent);
  if (window == fParent || window == this) return;
  if (fParent) std::erase(fParent->fChildren, this);
  fDesktop.LeaveTop(*this);
  fParent = window;
  if (fParent)
    fParent->fChildren.push_back(this);
  else
    fDesktop.EnterTop(*this);
  Invalidate(nullptr);
}

void THeadlessWindow::SetZOrder(bool top) {
  if (!fParent) return fDesktop.OrderTop(*this, top);
  std::vector<THeadlessWindow*>& all = fParent->fChildren;
  std::erase(all, this);
  all.insert(top ? all.end() : all.begin(), this);
}

// --- state -------------------------------------------------------------------

void THeadlessWindow::SetVisible(bool visible) {
  if (fVisible == visible) return;
  fVisible = visible;
  OnStateChanged();
  if (visible)
    InvalidateAll();
  else
    fDesktop.WindowHidden(*this);
}

void THeadlessWindow::InvalidateAll() {
  Invalidate(nullptr);
  for (THeadlessWindow* const child : fChildren) child->InvalidateAll();
}

void THeadlessWindow::SetEnabled(bool enabled) {
  if (fEnabled == enabled) return;
  fEnabled = enabled;
  OnStateChanged();
  Invalidate(nullptr);
  if (!enabled) fDesktop.WindowHidden(*this);
}

bool THeadlessWindow::IsShowing() const {
  const THeadlessWindow* window = this;
  for (; window->fParent; window = window->fParent)
    if (!window->fVisible) return false;
  return window->fVisible && (window == this || !window->IsMinimized());
}

bool THeadlessWindow::IsUsable() const {
  for (const THeadlessWindow* window = this; window; window = window->fParent)
    if (!window->fEnabled) return false;
  return true;
}

void THeadlessWindow::SetText(const TString& text) {
  if (fText == text) return;
  fText = text;
  Invalidate(nullptr);
}

void THeadlessWindow::SetFont(const TFont& font) {
  fFont = font;
  OnStateChanged();
  Invalidate(nullptr);
}

void THeadlessWindow::SetCursor(TCursor cursor) { fCursor = cursor; }
void THeadlessWindow::SetHint(const TString&) { fDesktop.StopHint(); }
TCursor THeadlessWindow::CursorAt(TPoint) const { return fCursor; }

bool THeadlessWindow::SetFocus() { return fDesktop.SetFocusTo(this); }
bool THeadlessWindow::HasFocus() const { return fDesktop.GetFocusWindow() == this; }

void THeadlessWindow::SetCapture(bool capture) {
  if (capture)
    fDesktop.SetCaptureTo(this);
  else if (HasCapture())
    fDesktop.SetCaptureTo(nullptr);
}

bool THeadlessWindow::HasCapture() const { return fDesktop.GetCaptureWindow() == this; }

HRESULT THeadlessWindow::SetDropTarget(IDropTarget* target) {
  fDropTarget = Ref<IDropTarget>::Share(target);
  return S_OK;
}

// --- messages ----------------------------------------------------------------

void THeadlessWindow::Post(UINT message, WPARAM wParam, LPARAM lParam) {
  fDesktop.PostToWindow(fHandle, message, wParam, lParam);
}

LRESULT THeadlessWindow::Send(UINT message, WPARAM wParam, LPARAM lParam) {
  TMessage record{message, wParam, lParam, 0};
  OnMessage(record);
  return record.Result;
}

void THeadlessWindow::OnMessage(TMessage&) {}
void THeadlessWindow::OnFocusChanged(bool) {}
void THeadlessWindow::OnTimerTick(int) {}
void THeadlessWindow::OnKey(TKeyEvent&) {}

void THeadlessWindow::StartTimer(int id, unsigned milliseconds) {
  fDesktop.StartWindowTimer(fHandle, id, milliseconds);
}

void THeadlessWindow::StopTimer(int id) { fDesktop.StopWindowTimer(fHandle, id); }

void THeadlessWindow::RequestContextMenu(TPoint screen) {
  if (fParent) fParent->RequestContextMenu(screen);
}

// --- painting ----------------------------------------------------------------

void THeadlessWindow::Invalidate(const TRect* rect) {
  const TRect client = GetClientRect();
  fInvalid = fInvalid.United(rect ? rect->Intersected(client) : client).Intersected(client);
}

void THeadlessWindow::Update() { PaintNow(); }

void THeadlessWindow::Paint(TCanvas&, const TRect&) {}

void THeadlessWindow::PaintNow() {
  const TRect client = GetClientRect();
  const TRect clip = fInvalid.Intersected(client);
  if (clip.IsEmpty() || fPainting || !IsShowing()) return;
  fInvalid = {};
  fPainting = true;
  ++fPaintCount;
  TCanvasHeadless canvas(clip, GetWindowPPI());
  canvas.SetFont(fFont);
  const TLifeGuard guard = Guard();
  try {
    Paint(canvas, clip);
  } catch (...) {
    Application().HandleException(guard.IsAlive() ? GetControlOrNil() : nullptr);
  }
  if (!guard.IsAlive()) return;
  fPainting = false;
  KeepDrawing(canvas.TakeOperations(), clip, clip == client);
}

void THeadlessWindow::KeepDrawing(std::vector<TDrawOperation> drawn, const TRect& clip, bool all) {
  if (all) {
    fDrawing = std::move(drawn);
    fFullSize = fDrawing.size();
    return;
  }
  std::erase_if(fDrawing, [&](const TDrawOperation& old) {
    return Covers(clip, old.Rect.Intersected(old.Clip));
  });
  std::move(drawn.begin(), drawn.end(), std::back_inserter(fDrawing));
  // Layers upon layers of partly covered ones would grow for ever.
  if (fDrawing.size() > 4 * fFullSize + 500) Invalidate(nullptr);
}

// --- scroll bars -------------------------------------------------------------

void THeadlessWindow::SetScrollInfo(TScrollBarKind kind, THeadlessScroll info) {
  info.Position = std::clamp(info.Position, 0, info.MaxPosition());
  THeadlessScroll& present = fScroll[static_cast<std::size_t>(kind)];
  if (present == info) return;
  const bool moved = present.Position != info.Position || present.IsShown() != info.IsShown();
  present = info;
  if (moved) Invalidate(nullptr);
}

bool THeadlessWindow::GetScroll(TScrollBarKind kind, int* position, int* page, int* range) const {
  const THeadlessScroll& info = GetScrollInfo(kind);
  if (position) *position = info.Position;
  if (page) *page = info.Page;
  if (range) *range = info.Range;
  return info.IsShown();
}

void THeadlessWindow::ScrollTo(TScrollBarKind kind, int position) {
  const THeadlessScroll& info = GetScrollInfo(kind);
  const int limited = std::clamp(position, 0, info.MaxPosition());
  if (limited != info.Position) OnScroll(kind, limited);
}

void THeadlessWindow::ScrollLines(TScrollBarKind kind, int lines) {
  const THeadlessScroll& info = GetScrollInfo(kind);
  ScrollTo(kind, info.Position + lines * info.Line);
}

void THeadlessWindow::OnScroll(TScrollBarKind kind, int position) {
  THeadlessScroll info = GetScrollInfo(kind);
  info.Position = position;
  SetScrollInfo(kind, info);
}

bool THeadlessWindow::ScrollBarMouse(const TMouseEvent& event, TPoint inWindow) {
  if (event.Action == TMouseAction::Up && fThumbGrip >= 0) {
    fThumbGrip = -1;
    SetCapture(false);
    return true;
  }
  if (fThumbGrip >= 0 && event.Action == TMouseAction::Move) {
    DragThumb(inWindow);
    return true;
  }
  for (const TScrollBarKind kind : {sbVertical, sbHorizontal}) {
    const TRect bar = GetScrollBarRect(kind);
    if (!bar.Contains(inWindow)) continue;
    if (event.Action == TMouseAction::Down && event.Button == mbLeft)
      PressScrollBar(kind, bar, inWindow);
    return event.Action != TMouseAction::Wheel;
  }
  return false;
}

std::pair<int, int> THeadlessWindow::ThumbOf(TScrollBarKind kind, const TRect& bar) const {
  const THeadlessScroll& info = GetScrollInfo(kind);
  const bool vertical = kind == sbVertical;
  const int arrow = vertical ? bar.Width() : bar.Height();
  const int start = (vertical ? bar.Top : bar.Left) + arrow;
  const int track = std::max((vertical ? bar.Height() : bar.Width()) - 2 * arrow, 0);
  const int thumb = std::min(track, std::max(MulDiv(track, info.Page, info.Range), arrow / 2));
  const int offset = MulDiv(track - thumb, info.Position, std::max(info.MaxPosition(), 1));
  return {start + offset, start + offset + thumb};
}

void THeadlessWindow::PressScrollBar(TScrollBarKind kind, const TRect& bar, TPoint point) {
  const bool vertical = kind == sbVertical;
  const int arrow = vertical ? bar.Width() : bar.Height();
  const int at = vertical ? point.Y : point.X;
  const auto [from, to] = ThumbOf(kind, bar);
  const THeadlessScroll& info = GetScrollInfo(kind);
  if (at < (vertical ? bar.Top : bar.Left) + arrow) return ScrollLines(kind, -1);
  if (at >= (vertical ? bar.Bottom : bar.Right) - arrow) return ScrollLines(kind, 1);
  if (at < from) return ScrollTo(kind, info.Position - std::max(info.Page, 1));
  if (at >= to) return ScrollTo(kind, info.Position + std::max(info.Page, 1));
  fThumbGrip = at - from;
  fThumbKind = kind;
  SetCapture(true);
}

void THeadlessWindow::DragThumb(TPoint point) {
  const TRect bar = GetScrollBarRect(fThumbKind);
  if (bar.IsEmpty()) return;
  const bool vertical = fThumbKind == sbVertical;
  const int arrow = vertical ? bar.Width() : bar.Height();
  const auto [from, to] = ThumbOf(fThumbKind, bar);
  const int room = (vertical ? bar.Height() : bar.Width()) - 2 * arrow - (to - from);
  const int offset = (vertical ? point.Y - bar.Top : point.X - bar.Left) - arrow - fThumbGrip;
  if (room > 0) ScrollTo(fThumbKind, MulDiv(offset, GetScrollInfo(fThumbKind).MaxPosition(), room));
}

// --- input -------------------------------------------------------------------

void THeadlessWindow::OnMouse(TMouseEvent& event) {
  if (event.Action != TMouseAction::Wheel && event.Action != TMouseAction::WheelSide) return;
  const bool vertical = event.Action == TMouseAction::Wheel;
  const TScrollBarKind kind = vertical ? sbVertical : sbHorizontal;
  if (!GetScrollInfo(kind).IsShown()) return;
  event.Handled = true;
  const int notches = event.WheelDelta / WheelNotch;
  ScrollLines(kind, (vertical ? -notches : notches) * LinesPerNotch);
}

void THeadlessWindow::DispatchMouse(TMouseEvent& event) {
  const TLifeGuard guard = Guard();
  OnMouse(event);
  if (!guard.IsAlive() || event.Handled) return;
  if (event.Action == TMouseAction::Up && event.Button == mbRight)
    RequestContextMenu(ClientToScreen(event.Position));
}

bool THeadlessWindow::DispatchKey(TKeyEvent& event) {
  OnKey(event);
  return true;
}

}  // namespace oak
