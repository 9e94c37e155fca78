// The system's menus, made from the entries of the application.
#pragma once

#include "oak/framework/ControlTypes.h"
#include "oak/framework/Geometry.h"

namespace oak {
class TMenuItem;
class TWinControl;
}  // namespace oak

namespace oak::win32 {

HMENU MakeMenu(const TMenuItem& root);
/// A menu that was not made here is destroyed as it is.
void DestroyMenu(HMENU menu);
/// See TWidgetSet::TrackMenu.
UINT TrackMenu(HMENU menu, TPoint screen, TWinControl* owner, HWND ownerWindow);

/// Whether a window that shows menus has to pass a message on.
bool IsMenuMessage(UINT message, WPARAM wParam);
/// Answers a message about one of our entries, or asks `owner` (may be nil), which has the menus
/// of the shell. True if `result` is the answer. May destroy anything.
bool HandleMenuMessage(TWinControl* owner, UINT message, WPARAM wParam, LPARAM lParam,
                       LRESULT& result);

}  // namespace oak::win32
