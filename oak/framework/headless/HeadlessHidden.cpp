// Windows of the headless desktop that are never shown.
#include <utility>

#include "oak/framework/Events.h"
#include "oak/framework/headless/HeadlessDesktop.h"

namespace oak {
namespace {

class THeadlessHidden final : public THeadlessWindow {
 public:
  THeadlessHidden(THeadlessDesktop& desktop, std::function<void(TMessage&)> procedure)
      : THeadlessWindow(desktop, THeadlessKind::Popup, nullptr, {}),
        fProcedure(std::move(procedure)) {}

  void OnMessage(TMessage& message) override {
    try {
      FireEvent(fProcedure, message);  // it may destroy the window
    } catch (...) {
      Application().HandleException(nullptr);
    }
  }

 private:
  std::function<void(TMessage&)> fProcedure;
};

}  // namespace

// The desktop knows all windows by their handles: no second list of them.
HWND THeadlessDesktop::CreateHiddenWindow(std::function<void(TMessage&)> procedure) {
  return (new THeadlessHidden(*this, std::move(procedure)))->GetHandle();
}

void THeadlessDesktop::DestroyHiddenWindow(HWND window) {
  delete dynamic_cast<THeadlessHidden*>(FindWindow(window));
}

LRESULT THeadlessDesktop::DefaultProc(HWND, const TMessage&) { return 0; }

}  // namespace oak
