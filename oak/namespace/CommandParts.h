// What the commands of items and those of cursors share.
#pragma once

#include "oak/base/Handles.h"
#include "oak/base/Text.h"
#include "oak/platform/Api.h"

namespace oak {

inline constexpr TStringView ModernShareVerb = u"Windows.ModernShare";

/// Identifiers that the shell numbers its entries with. Those of menus that are shown with entries
/// of the application end before the application's, see TMenuItem::GetCommand.
inline constexpr UINT FirstShellCommand = 1;
inline constexpr UINT LastShellCommand = 255;
inline constexpr UINT LastVerbCommand = 32767;

struct TMenuTraits {
  using Type = HMENU;
  static Type Invalid() noexcept { return nullptr; }
  static void Close(Type menu) noexcept { Api().DestroyMenu(menu); }
};
/// A menu of the system that is never shown.
using TMenuHandle = TUniqueHandle<TMenuTraits>;

/// The identifier of the entry that a double click stands for; 0 if there is none.
UINT DefaultMenuItem(HMENU menu);
/// Starts a program in a directory (empty: the present one). False if that failed.
bool StartProgram(HWND window, TStringView file, TStringView parameters, TStringView directory);
/// Window for dialogs that belong to no control; may be nil.
HWND ApplicationWindow();

}  // namespace oak
