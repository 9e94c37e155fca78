#include "oak/framework/WidgetSet.h"

#include <utility>

#include "oak/framework/Forms.h"
#include "oak/framework/Host.h"
#include "oak/framework/MainThreadQueue.h"

namespace oak {
namespace {

std::unique_ptr<TWidgetSet>& Current() {
  static auto& current = *new std::unique_ptr<TWidgetSet>;  // controls of static life end late
  return current;
}

HWND WindowOfApplication() {
  TCustomForm* form = Screen().GetActiveForm();
  for (int i = 0; !form && i < Screen().GetFormCount(); ++i)
    if (Screen().GetForm(i)->IsShowing()) form = Screen().GetForm(i);
  return form && form->HandleAllocated() ? form->GetHandle() : nullptr;
}

bool HasFormsOnScreen() {
  for (int i = 0; i < Screen().GetFormCount(); ++i)
    if (Screen().GetForm(i)->IsShowing()) return true;
  return false;
}

void ShowWaitCursor(bool on) {
  static int depth = 0;
  static TCursor former = crDefault;
  if (on && depth++ == 0) {
    former = Screen().GetCursor();
    Screen().SetCursor(crHourGlass);
  } else if (!on && --depth == 0) {
    Screen().SetCursor(former);
  }
}

int PixelsPerInchNow() {
  const TCustomForm* form = Screen().GetActiveForm();
  return form ? form->GetCurrentPPI() : Screen().GetPixelsPerInch();
}

// What the lower units ask of the application; the program's own answers stay.
void FillHost() {
  THost& host = Host();
  if (!host.ApplicationWindow) host.ApplicationWindow = WindowOfApplication;
  if (!host.WindowOf)
    host.WindowOf = [](TComponent* component) -> HWND {
      auto* control = dynamic_cast<TWinControl*>(component);
      return control && control->HandleAllocated() ? control->GetHandle() : nullptr;
    };
  if (!host.IsInteractive) host.IsInteractive = HasFormsOnScreen;
  if (!host.PixelsPerInch) host.PixelsPerInch = PixelsPerInchNow;
  if (!host.SetWaitCursor) host.SetWaitCursor = ShowWaitCursor;
}

}  // namespace

TWidgetSet& WidgetSet() {
  std::unique_ptr<TWidgetSet>& current = Current();
  if (!current) {
    current = CreateSystemWidgetSet();
    InitializeFramework();
    FillHost();
  }
  return *current;
}

std::unique_ptr<TWidgetSet> SetWidgetSet(std::unique_ptr<TWidgetSet> widgetSet) {
  if (widgetSet) {
    InitializeFramework();
    FillHost();
  }
  return std::exchange(Current(), std::move(widgetSet));
}

}  // namespace oak
