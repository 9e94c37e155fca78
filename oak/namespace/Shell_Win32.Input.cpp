#include "oak/namespace/Shell_Win32.Input.h"

#include <iterator>

#include "oak/platform/Api.h"

namespace oak {
namespace {

struct TModifierKey {
  TShiftFlag Flag;
  BYTE Key;
};
constexpr TModifierKey ModifierKeys[] = {
    {ssShift, VK_SHIFT}, {ssCtrl, VK_CONTROL}, {ssAlt, VK_MENU}};

constexpr UINT VirtualKeyToScanCode = 0;  // MAPVK_VK_TO_VSC
constexpr UINT SystemKeyDown = 0x104;     // WM_SYSKEYDOWN
constexpr UINT SystemKeyUp = 0x105;       // WM_SYSKEYUP

BYTE ScanCode(WORD pKey) {
  if (!Api().MapVirtualKeyW) return 0;
  return static_cast<BYTE>(Api().MapVirtualKeyW(pKey, VirtualKeyToScanCode));
}

/// Calls press(key, isDown): modifiers down, the key down and up, and the
/// modifiers up again in reverse order.
template <class TPress>
void PressWithModifiers(WORD pKey, TShiftState pShift, TPress pPress) {
  for (const TModifierKey& modifier : ModifierKeys)
    if (pShift.Contains(modifier.Flag)) pPress(modifier.Key, true);
  pPress(pKey, true);
  pPress(pKey, false);
  for (auto modifier = std::rbegin(ModifierKeys); modifier != std::rend(ModifierKeys); ++modifier)
    if (pShift.Contains(modifier->Flag)) pPress(modifier->Key, false);
}

/// The second argument of a key message.
LPARAM KeyData(WORD pKey, bool pIsDown, bool pExtended, bool pAltIsHeld) {
  std::uint32_t data = 1u | (std::uint32_t{ScanCode(pKey)} << 16);
  if (pExtended) data |= 1u << 24;
  if (pAltIsHeld) data |= 1u << 29;
  if (!pIsDown) data |= 3u << 30;  // was down, goes up
  return static_cast<LPARAM>(data);
}

}  // namespace

void PostKeyEx32(WORD pKey, TShiftState pShift, bool pExtended) {
  if (!Api().keybd_event) return;
  PressWithModifiers(pKey, pShift, [&](WORD key, bool isDown) {
    DWORD flags = isDown ? 0 : KEYEVENTF_KEYUP;
    if (pExtended && key == pKey) flags |= KEYEVENTF_EXTENDEDKEY;
    Api().keybd_event(static_cast<BYTE>(key), ScanCode(key), flags, 0);
  });
}

void PostKeyToHWND(HWND pWindow, WORD pKey, TShiftState pShift, bool pExtended) {
  if (!pWindow || !Api().PostMessageW) return;
  const bool altIsHeld = pShift.Contains(ssAlt);
  PressWithModifiers(pKey, pShift, [&](WORD key, bool isDown) {
    const UINT message =
        altIsHeld ? (isDown ? SystemKeyDown : SystemKeyUp) : (isDown ? WM_KEYDOWN : WM_KEYUP);
    Api().PostMessageW(pWindow, message, key,
                       KeyData(key, isDown, pExtended && key == pKey, altIsHeld));
  });
}

TOwnerDrawState GetOwnerDrawState(UINT pItemState) noexcept {
  constexpr UINT allStates = (1u << (odComboBoxEdit + 1)) - 1;
  return TOwnerDrawState::FromBits(pItemState & allStates);
}

}  // namespace oak
