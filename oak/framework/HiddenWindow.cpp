#include "oak/framework/HiddenWindow.h"

#include "oak/framework/WidgetSet.h"

namespace oak {

HWND AllocateHWnd(TWindowMethod procedure) {
  return WidgetSet().CreateHiddenWindow(std::move(procedure));
}

void DeallocateHWnd(HWND window) {
  if (window) WidgetSet().DestroyHiddenWindow(window);
}

LRESULT DefaultWindowProc(HWND window, const TMessage& message) {
  return WidgetSet().DefaultProc(window, message);
}

}  // namespace oak
