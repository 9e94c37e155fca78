#include "oak/framework/headless/HeadlessDrag.h"

#include <utility>

#include "oak/base/Exceptions.h"
#include "oak/framework/WinControl.h"
#include "oak/framework/headless/HeadlessDesktop.h"

namespace oak {
namespace {

constexpr DWORD KeyLeftButton = 1, KeyRightButton = 2, KeyShift = 4, KeyControl = 8,
                KeyMiddleButton = 16, KeyAlt = 32;  // MK_...
constexpr DWORD AnyButton = KeyLeftButton | KeyRightButton | KeyMiddleButton;
constexpr DWORD EffectNone = 0;
constexpr unsigned DragInterval = 50;  // milliseconds

DWORD KeyStateOf(TShiftState state) {
  constexpr std::pair<TShiftFlag, DWORD> flags[] = {
      {ssLeft, KeyLeftButton}, {ssRight, KeyRightButton}, {ssMiddle, KeyMiddleButton},
      {ssShift, KeyShift},     {ssCtrl, KeyControl},      {ssAlt, KeyAlt}};
  DWORD keys = 0;
  for (const auto& [flag, key] : flags)
    if (state.Contains(flag)) keys |= key;
  return keys;
}

}  // namespace

THeadlessDrag::THeadlessDrag(THeadlessDesktop& desktop, IDataObject* data, IDropSource* source,
                             DWORD allowed)
    : fDesktop(desktop),
      fData(Ref<IDataObject>::Share(data)),
      fSource(Ref<IDropSource>::Share(source)),
      fAllowed(allowed),
      fFormerFilter(desktop.SetInputFilter(this)) {}

THeadlessDrag::~THeadlessDrag() { fDesktop.SetInputFilter(fFormerFilter); }

HRESULT THeadlessDrag::Run(DWORD* effect) {
  const auto timer = fDesktop.CreateTimer(DragInterval, [this] { Step(false); });
  Step(false);
  try {
    fDesktop.RunLoop([this] { return fFinished; }, u"The drag");
  } catch (const EInvalidOperation&) {
    Leave();
    Finish(DRAGDROP_S_CANCEL, EffectNone);  // the complaint tells why
  }
  if (effect) *effect = fEffect;
  return fResult;
}

void THeadlessDrag::Mouse(const THeadlessInput&) { Step(false); }

void THeadlessDrag::Key(const THeadlessInput& input) {
  Step(input.Key == TKeyAction::Down && input.VirtualKey == vkEscape);
}

HRESULT THeadlessDrag::AskSource(bool escape, DWORD keys) {
  if (fSource) return fSource->QueryContinueDrag(escape ? TRUE : FALSE, keys);
  if (escape) return DRAGDROP_S_CANCEL;
  return (keys & AnyButton) == 0 ? DRAGDROP_S_DROP : S_OK;
}

void THeadlessDrag::Step(bool escape) {
  if (fFinished || fBusy) return;
  fBusy = true;
  const DWORD keys = KeyStateOf(fDesktop.GetShiftState());
  const HRESULT answer = AskSource(escape, keys);
  if (answer == S_OK) {
    Track(keys);
  } else if (answer == DRAGDROP_S_DROP) {
    Track(keys);  // the pointer may have moved since the last step
    Drop(keys);
  } else {
    Leave();
    Finish(answer, EffectNone);
  }
  fBusy = false;
}

THeadlessWindow* THeadlessDrag::TargetWindow() const {
  THeadlessWindow* window = fDesktop.WindowAt(fDesktop.GetCursorPos());
  while (window && !window->GetDropTarget()) window = window->GetParentWindow();
  return window;
}

void THeadlessDrag::Track(DWORD keys) {
  THeadlessWindow* const window = TargetWindow();
  const HWND handle = window ? window->GetHandle() : nullptr;
  const Ref<IDropTarget> target =
      Ref<IDropTarget>::Share(window ? window->GetDropTarget() : nullptr);
  const POINT at = fDesktop.GetCursorPos();
  const POINTL point{at.x, at.y};
  DWORD effect = fAllowed;
  HRESULT answer = S_OK;
  if (handle != fTargetWindow || target.Get() != fTarget.Get()) {
    Leave();
    fTargetWindow = handle;
    fTarget = target;
    if (target) answer = target->DragEnter(fData.Get(), keys, point, &effect);
  } else if (target) {
    answer = target->DragOver(keys, point, &effect);
  }
  fEffect = target && answer == S_OK ? effect & fAllowed : EffectNone;
  if (fSource) static_cast<void>(fSource->GiveFeedback(fEffect));
}

void THeadlessDrag::Leave() {
  fTargetWindow = nullptr;
  if (const Ref<IDropTarget> left = std::exchange(fTarget, nullptr))
    static_cast<void>(left->DragLeave());
}

void THeadlessDrag::Drop(DWORD keys) {
  if (!fTarget || fEffect == EffectNone) {
    Leave();
    return Finish(DRAGDROP_S_DROP, EffectNone);
  }
  // While the target works, which may take a menu and more messages, the drag is over.
  const Ref<IDropTarget> target = std::exchange(fTarget, nullptr);
  const POINT at = fDesktop.GetCursorPos();
  DWORD effect = fAllowed;
  const HRESULT answer = target->Drop(fData.Get(), keys, POINTL{at.x, at.y}, &effect);
  Finish(FAILED(answer) ? answer : DRAGDROP_S_DROP,
         FAILED(answer) ? EffectNone : effect & fAllowed);
}

void THeadlessDrag::Finish(HRESULT result, DWORD effect) {
  if (fFinished) return;
  fResult = result;
  fEffect = effect;
  fFinished = true;
}

HRESULT THeadlessDesktop::DoDragDrop(TWinControl&, IDataObject* data, IDropSource* source,
                                     DWORD allowed, DWORD* effect) {
  if (!data) return E_INVALIDARG;
  StopHint();
  EndCapture();
  THeadlessDrag drag(*this, data, source, allowed);
  return drag.Run(effect);
}

}  // namespace oak
