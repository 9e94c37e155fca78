#include "oak/framework/headless/HeadlessInput.h"

#include <algorithm>
#include <iterator>

#include "oak/base/Exceptions.h"
#include "oak/framework/WinControl.h"
#include "oak/framework/headless/HeadlessDesktop.h"
#include "oak/framework/headless/HeadlessForm.h"

namespace oak {
namespace {

/// Keys of a plain keyboard: virtual key, character, character with shift.
struct TKeyCap {
  std::uint16_t Key;
  char16_t Plain;
  char16_t Shifted;
};

constexpr TKeyCap KeyCaps[] = {
    {vkSpace, u' ', u' '}, {u'0', u'0', u')'},  {u'1', u'1', u'!'}, {u'2', u'2', u'@'},
    {u'3', u'3', u'#'},    {u'4', u'4', u'$'},  {u'5', u'5', u'%'}, {u'6', u'6', u'^'},
    {u'7', u'7', u'&'},    {u'8', u'8', u'*'},  {u'9', u'9', u'('}, {0xBA, u';', u':'},
    {0xBB, u'=', u'+'},    {0xBC, u',', u'<'},  {0xBD, u'-', u'_'}, {0xBE, u'.', u'>'},
    {0xBF, u'/', u'?'},    {0xC0, u'`', u'~'},  {0xDB, u'[', u'{'}, {0xDC, u'\\', u'|'},
    {0xDD, u']', u'}'},    {0xDE, u'\'', u'"'}, {0x6A, u'*', u'*'}, {0x6B, u'+', u'+'},
    {0x6D, u'-', u'-'},    {0x6F, u'/', u'/'},  {vkBack, 8, 8},     {vkTab, 9, 9},
    {vkReturn, 13, 13},    {vkEscape, 27, 27}};

TShiftFlag FlagOf(TMouseButton button) {
  return button == mbLeft ? ssLeft : button == mbRight ? ssRight : ssMiddle;
}

THeadlessInput MouseInput(TMouseAction action, TMouseButton button = mbLeft) {
  THeadlessInput input;
  input.Kind = THeadlessInput::TKind::Mouse;
  input.Mouse = action;
  input.Button = button;
  return input;
}

THeadlessInput KeyInput(TKeyAction action, std::uint16_t key, char16_t character = 0) {
  THeadlessInput input;
  input.Kind = THeadlessInput::TKind::Key;
  input.Key = action;
  input.VirtualKey = key;
  input.Char = character;
  return input;
}

}  // namespace

char16_t CharOfKey(std::uint16_t key, TShiftState shift) noexcept {
  const bool isLetter = key >= u'A' && key <= u'Z';
  if (shift.Contains(ssCtrl) && !shift.Contains(ssAlt))
    return isLetter ? static_cast<char16_t>(key - u'A' + 1) : u'\0';
  if (shift.Contains(ssAlt)) return 0;
  if (isLetter) return static_cast<char16_t>(shift.Contains(ssShift) ? key : key + 32);
  constexpr std::uint16_t numPad0 = 0x60;
  if (key >= numPad0 && key < numPad0 + 10) return static_cast<char16_t>(u'0' + key - numPad0);
  for (const TKeyCap& cap : KeyCaps)
    if (cap.Key == key) return shift.Contains(ssShift) ? cap.Shifted : cap.Plain;
  return 0;
}

std::uint16_t KeyOfChar(char16_t character, bool* shift) noexcept {
  *shift = character >= u'A' && character <= u'Z';
  if (*shift) return character;
  if (character >= u'a' && character <= u'z') return static_cast<std::uint16_t>(character - 32);
  for (const TKeyCap& cap : KeyCaps) {
    *shift = cap.Shifted == character && cap.Plain != character;
    if (cap.Plain == character || *shift) return cap.Key;
  }
  return 0;
}

// --- what a user does --------------------------------------------------------

void THeadlessDesktop::Queue(THeadlessInput input) { fInput.push_back(std::move(input)); }

void THeadlessDesktop::RunQueued() {
  if (fAutoRun) Run();
}

void THeadlessDesktop::Later(std::function<void()> action) {
  THeadlessInput input;
  input.Action = std::move(action);
  Queue(std::move(input));
}

void THeadlessDesktop::QueueMove(TPoint point) {
  THeadlessInput input = MouseInput(TMouseAction::Move);
  input.Position = point;
  Queue(std::move(input));
}

void THeadlessDesktop::QueueShift(TShiftState shift, bool down) {
  constexpr std::pair<TShiftFlag, std::uint16_t> keys[] = {
      {ssShift, vkShift}, {ssCtrl, vkControl}, {ssAlt, vkMenu}};
  for (const auto& [flag, key] : keys)
    if (shift.Contains(flag)) Queue(KeyInput(down ? TKeyAction::Down : TKeyAction::Up, key));
}

void THeadlessDesktop::SetCursorPos(TPoint point) { QueueMove(point); }

void THeadlessDesktop::MouseMove(TPoint point) {
  QueueMove(point);
  RunQueued();
}

void THeadlessDesktop::MouseDown(TMouseButton button, bool doubleClick) {
  THeadlessInput input = MouseInput(TMouseAction::Down, button);
  input.Double = doubleClick;
  Queue(std::move(input));
  RunQueued();
}

void THeadlessDesktop::MouseUp(TMouseButton button) {
  Queue(MouseInput(TMouseAction::Up, button));
  RunQueued();
}

void THeadlessDesktop::Click(TPoint point, TShiftState shift, TMouseButton button) {
  QueueShift(shift, true);
  QueueMove(point);
  Queue(MouseInput(TMouseAction::Down, button));
  Queue(MouseInput(TMouseAction::Up, button));
  QueueShift(shift, false);
  RunQueued();
}

void THeadlessDesktop::DoubleClick(TPoint point, TShiftState shift) {
  QueueShift(shift, true);
  QueueMove(point);
  for (const bool second : {false, true}) {
    THeadlessInput down = MouseInput(TMouseAction::Down);
    down.Double = second;
    Queue(std::move(down));
    Queue(MouseInput(TMouseAction::Up));
  }
  QueueShift(shift, false);
  RunQueued();
}

void THeadlessDesktop::Wheel(int notches, TShiftState shift, bool side) {
  QueueShift(shift, true);
  THeadlessInput input = MouseInput(side ? TMouseAction::WheelSide : TMouseAction::Wheel);
  input.WheelDelta = 120 * notches;
  Queue(std::move(input));
  QueueShift(shift, false);
  RunQueued();
}

void THeadlessDesktop::ExtraButton(bool forward) {
  THeadlessInput input = MouseInput(TMouseAction::ExtraDown);
  input.WheelDelta = forward ? 2 : 1;
  Queue(std::move(input));
  RunQueued();
}

void THeadlessDesktop::Drag(TPoint from, TPoint to, TShiftState shift, TMouseButton button,
                            int steps) {
  QueueMove(from);
  QueueShift(shift, true);
  Queue(MouseInput(TMouseAction::Down, button));
  for (int i = 1; i <= std::max(steps, 1); ++i)
    QueueMove({from.X + MulDiv(to.X - from.X, i, std::max(steps, 1)),
               from.Y + MulDiv(to.Y - from.Y, i, std::max(steps, 1))});
  Queue(MouseInput(TMouseAction::Up, button));
  QueueShift(shift, false);
  RunQueued();
}

void THeadlessDesktop::KeyDown(std::uint16_t key) {
  Queue(KeyInput(TKeyAction::Down, key));
  RunQueued();
}

void THeadlessDesktop::KeyUp(std::uint16_t key) {
  Queue(KeyInput(TKeyAction::Up, key));
  RunQueued();
}

void THeadlessDesktop::KeyPress(std::uint16_t key, TShiftState shift) {
  QueueShift(shift, true);
  Queue(KeyInput(TKeyAction::Down, key));
  Queue(KeyInput(TKeyAction::Up, key));
  QueueShift(shift, false);
  RunQueued();
}

void THeadlessDesktop::TypeText(TStringView text) {
  for (const char16_t character : text) {
    bool shift = false;
    const std::uint16_t key = KeyOfChar(character == u'\n' ? u'\r' : character, &shift);
    if (key == 0) {
      Queue(KeyInput(TKeyAction::Char, 0, character));
      continue;
    }
    QueueShift(shift ? TShiftState{ssShift} : TShiftState{}, true);
    Queue(KeyInput(TKeyAction::Down, key));
    Queue(KeyInput(TKeyAction::Up, key));
    QueueShift(shift ? TShiftState{ssShift} : TShiftState{}, false);
  }
  RunQueued();
}

void THeadlessDesktop::Click(const TWinControl& control, TPoint point, TShiftState shift,
                             TMouseButton button) {
  Click(control.ClientToScreen(point), shift, button);
}

void THeadlessDesktop::DoubleClick(const TWinControl& control, TPoint point, TShiftState shift) {
  DoubleClick(control.ClientToScreen(point), shift);
}

void THeadlessDesktop::RightClick(const TWinControl& control, TPoint point, TShiftState shift) {
  Click(control.ClientToScreen(point), shift, mbRight);
}

void THeadlessDesktop::Drag(const TWinControl& from, TPoint fromPoint, const TWinControl& to,
                            TPoint toPoint, TShiftState shift, TMouseButton button) {
  Drag(from.ClientToScreen(fromPoint), to.ClientToScreen(toPoint), shift, button);
}

// --- what becomes of it ------------------------------------------------------

IHeadlessInputFilter* THeadlessDesktop::SetInputFilter(IHeadlessInputFilter* filter) {
  return std::exchange(fFilter, filter);
}

void THeadlessDesktop::NoteInput(const THeadlessInput& input) {
  if (input.Kind == THeadlessInput::TKind::Key) {
    if (input.Key != TKeyAction::Char && input.VirtualKey < fKeys.size())
      fKeys[input.VirtualKey] = input.Key == TKeyAction::Down;
    return;
  }
  if (input.Mouse == TMouseAction::Move) fCursorPos = input.Position;
  if (input.Mouse == TMouseAction::Down) fButtons.Include(FlagOf(input.Button));
  if (input.Mouse == TMouseAction::Up) fButtons.Exclude(FlagOf(input.Button));
}

void THeadlessDesktop::DispatchInput(const THeadlessInput& input) {
  if (input.Kind == THeadlessInput::TKind::Action) {
    if (input.Action) input.Action();
    return;
  }
  NoteInput(input);
  const bool isMouse = input.Kind == THeadlessInput::TKind::Mouse;
  if (!isMouse || input.Mouse != TMouseAction::Move) StopHint();
  if (fFilter) return isMouse ? fFilter->Mouse(input) : fFilter->Key(input);
  if (isMouse)
    DispatchMouseInput(input);
  else
    DispatchKeyInput(input);
}

void THeadlessDesktop::DispatchMouseInput(const THeadlessInput& input) {
  const bool captured = fCapture != nullptr;
  THeadlessWindow* window = captured ? fCapture : WindowAt(fCursorPos);
  if (input.Mouse == TMouseAction::Move && !captured) {
    const HWND handle = window ? window->GetHandle() : nullptr;
    HoverOver(window);
    window = FindWindow(handle);
    StartHint();
  }
  if (!window) return;
  if (input.Mouse == TMouseAction::Down && !captured) {
    const TLifeGuard guard = window->Guard();
    Activate(window->GetRootWindow());
    if (!guard.IsAlive()) return;
  }
  TMouseEvent event;
  event.Action = input.Mouse;
  event.Button = input.Button;
  event.Shift = GetShiftState();
  if (input.Double) event.Shift.Include(ssDouble);
  event.WheelDelta = input.WheelDelta;
  event.Position = window->ScreenToClient(fCursorPos);
  SendMouse(*window, event, captured);
}

void THeadlessDesktop::SendMouse(THeadlessWindow& window, TMouseEvent& event, bool captured) {
  const TPoint inWindow = fCursorPos - window.GetScreenRect().TopLeft();
  if (!captured || window.HoldsThumb())
    if (window.ScrollBarMouse(event, inWindow)) return;
  const bool wheel = event.Action == TMouseAction::Wheel || event.Action == TMouseAction::WheelSide;
  if (!wheel && !captured && !window.GetClientRect().Contains(event.Position))
    return window.OnFrameMouse(event, inWindow);
  if (!wheel) return window.DispatchMouse(event);
  // What doesn't use the wheel leaves it to what it lies in.
  event.Position = fCursorPos;
  for (THeadlessWindow* target = &window; target; target = target->GetParentWindow()) {
    const TLifeGuard guard = target->Guard();
    target->DispatchMouse(event);
    if (event.Handled || !guard.IsAlive()) return;
  }
}

void THeadlessDesktop::DispatchKeyInput(const THeadlessInput& input) {
  THeadlessWindow* const window = fFocus ? fFocus : fActive;
  if (!window) return;
  const TLifeGuard guard = window->Guard();
  TKeyEvent event;
  event.Action = input.Key;
  event.Key = input.VirtualKey;
  event.Char = input.Char;
  event.Shift = GetShiftState();
  const bool passed = window->DispatchKey(event);
  if (input.Key != TKeyAction::Down || !passed) return;
  if (!event.Handled && SystemKey(input.VirtualKey, event.Shift)) return;
  const char16_t character = CharOfKey(input.VirtualKey, event.Shift);
  if (character == 0 || !guard.IsAlive()) return;
  TKeyEvent follower;
  follower.Action = TKeyAction::Char;
  follower.Char = character;
  follower.Shift = event.Shift;
  window->DispatchKey(follower);
}

/// Keys that mean something in every window.
bool THeadlessDesktop::SystemKey(std::uint16_t key, TShiftState shift) {
  THeadlessWindow* const window = fFocus ? fFocus : fActive;
  if (!window) return false;
  if (key == vkF4 && shift.Contains(ssAlt)) {
    window->GetRootWindow()->OnCloseRequest();
    return true;
  }
  if (key != vkApps && !(key == vkF10 && shift.Contains(ssShift))) return false;
  window->RequestContextMenu({-1, -1});
  return true;
}

// --- frames of windows -------------------------------------------------------

THeadlessForm& THeadlessDesktop::FormPeerOf(TCustomForm& form) const {
  auto* const peer = dynamic_cast<THeadlessForm*>(form.GetPeer());
  if (!peer) throw EInvalidOperation(u"The form \"" + form.GetCaption() + u"\" is not shown.");
  return *peer;
}

/// A frame can be used only while no other window keeps the user from it.
void THeadlessDesktop::UseFrame(TCustomForm& form,
                                const std::function<void(THeadlessForm&)>& action) {
  const HWND handle = FormPeerOf(form).GetHandle();
  Later([this, handle, action] {
    auto* const peer = dynamic_cast<THeadlessForm*>(FindWindow(handle));
    if (peer && peer->IsShowing() && peer->GetEnabled()) action(*peer);
  });
  RunQueued();
}

void THeadlessDesktop::CloseWindow(TCustomForm& form) {
  UseFrame(form, [](THeadlessForm& peer) { peer.OnCloseRequest(); });
}

void THeadlessDesktop::ResizeWindow(TCustomForm& form, int width, int height) {
  UseFrame(form, [=](THeadlessForm& peer) {
    peer.SetBounds({peer.GetBounds().TopLeft(), {width, height}});
  });
}

void THeadlessDesktop::MoveWindow(TCustomForm& form, int left, int top) {
  UseFrame(form, [=](THeadlessForm& peer) {
    peer.SetBounds({{left, top}, peer.GetBounds().Size()});
  });
}

void THeadlessDesktop::SetWindowState(TCustomForm& form, TWindowState state) {
  UseFrame(form, [=](THeadlessForm& peer) { peer.UserWindowState(state); });
}

void THeadlessDesktop::ActivateWindow(TCustomForm& form) {
  UseFrame(form, [this](THeadlessForm& peer) { Activate(&peer); });
}

}  // namespace oak
