// Synthetic key presses, and the state in which an item draws itself.
#pragma once

#include <cstdint>

#include "oak/base/Set.h"
#include "oak/base/abi.h"
#include "oak/framework/ControlTypes.h"

namespace oak {

/// Presses and releases a key for whatever has the focus, modifiers around it.
/// The key is a virtual key code.
void PostKeyEx32(WORD pKey, TShiftState pShift, bool pExtended);
/// Posts the same presses to one window, whose thread sees the modifiers held
/// only through the messages.
void PostKeyToHWND(HWND pWindow, WORD pKey, TShiftState pShift, bool pExtended);

/// State of an item that draws itself, bit for bit that of the platform.
enum TOwnerDrawStateFlag : std::uint8_t {
  odSelected,
  odGrayed,
  odDisabled,
  odChecked,
  odFocused,
  odDefault,
  odHotLight,
  odInactive,
  odNoAccel,
  odNoFocusRect,
  odReserved1,
  odReserved2,
  odComboBoxEdit
};
using TOwnerDrawState = TSet<TOwnerDrawStateFlag>;
/// From the item state of a draw message.
TOwnerDrawState GetOwnerDrawState(UINT pItemState) noexcept;

}  // namespace oak
