// The small types that controls, their events and their peers share.
#pragma once

#include <cstdint>
#include <functional>

#include "oak/base/Set.h"
#include "oak/base/Text.h"
#include "oak/framework/Geometry.h"

namespace oak {

class TObject;
class TControl;

enum TMouseButton : std::uint8_t { mbLeft, mbRight, mbMiddle };

enum TShiftFlag : std::uint8_t {
  ssShift,
  ssAlt,
  ssCtrl,
  ssLeft,  ///< The left mouse button is down; likewise the next two.
  ssRight,
  ssMiddle,
  ssDouble  ///< Second press of a double click.
};
/// Modifier keys and mouse buttons that are down.
using TShiftState = TSet<TShiftFlag>;

enum TAlign : std::uint8_t { alNone, alTop, alBottom, alLeft, alRight, alClient };
enum TAnchorKind : std::uint8_t { akLeft, akTop, akRight, akBottom };
using TAnchors = TSet<TAnchorKind>;
enum TAlignment : std::uint8_t { taLeftJustify, taRightJustify, taCenter };
/// What an application style may change of a control.
enum TStyleElement : std::uint8_t { seFont, seClient, seBorder };
using TStyleElements = TSet<TStyleElement>;
enum TBorderStyle : std::uint8_t { bsNone, bsSingle };
enum TScrollBarKind : std::uint8_t { sbHorizontal, sbVertical };

enum TCursor : std::int16_t {
  crDefault = 0,
  crNone = -1,
  crArrow = -2,
  crIBeam = -4,
  crSizeWE = -9,
  crSizeNS = -7,
  crHourGlass = -11,
  crNo = -18,
  crAppStart = -19,
  crHandPoint = -21
};

enum TControlStateFlag : std::uint8_t {
  csLButtonDown,  ///< The left button went down on the control and is not up yet.
  csClicked,      ///< A release of the button over the control will be a click.
  csRecreating,   ///< The window is destroyed only to be made anew.
  csCreating,     ///< CreateWnd runs.
  csDestroyingHandle,
  csFocusing
};
using TControlState = TSet<TControlStateFlag>;

/// Virtual keys that the controls react to; the values are those of the platform.
enum TVirtualKey : std::uint16_t {
  vkBack = 0x08,
  vkTab = 0x09,
  vkReturn = 0x0D,
  vkShift = 0x10,
  vkControl = 0x11,
  vkMenu = 0x12,
  vkEscape = 0x1B,
  vkSpace = 0x20,
  vkPrior = 0x21,
  vkNext = 0x22,
  vkEnd = 0x23,
  vkHome = 0x24,
  vkLeft = 0x25,
  vkUp = 0x26,
  vkRight = 0x27,
  vkDown = 0x28,
  vkInsert = 0x2D,
  vkDelete = 0x2E,
  vkApps = 0x5D,
  vkMultiply = 0x6A,
  vkAdd = 0x6B,
  vkSubtract = 0x6D,
  vkF2 = 0x71,
  vkF4 = 0x73,
  vkF5 = 0x74,
  vkF10 = 0x79
};

/// A window message in neutral form: controls post private ones to themselves, and the shell's
/// menus get theirs this way. On Windows these are the system's values.
struct TMessage {
  UINT Msg = 0;
  WPARAM WParam = 0;
  LPARAM LParam = 0;
  LRESULT Result = 0;
};

/// First number of messages that a control may use for itself.
inline constexpr UINT FirstPrivateMessage = 0x0400 + 0x1C00;

enum class TMouseAction : std::uint8_t {
  Down,
  Up,
  Move,
  Leave,      ///< The pointer left the control.
  Wheel,      ///< WheelDelta: 120 for one notch away from the user.
  WheelSide,  ///< WheelDelta: 120 for one notch to the right.
  ExtraDown   ///< One of the side buttons; WheelDelta is 1 (back) or 2 (forward).
};

struct TMouseEvent {
  TMouseAction Action = TMouseAction::Move;
  TMouseButton Button = mbLeft;
  TShiftState Shift;
  TPoint Position;  ///< In client pixels; in screen pixels for the wheel.
  int WheelDelta = 0;
  bool Handled = false;  ///< Out: the window's own behaviour must not follow.
};

enum class TKeyAction : std::uint8_t { Down, Up, Char };

struct TKeyEvent {
  TKeyAction Action = TKeyAction::Down;
  std::uint16_t Key = 0;  ///< Virtual key; 0 for Char.
  char16_t Char = 0;      ///< For Char.
  TShiftState Shift;
  bool Handled = false;  ///< Out: the window's own behaviour must not follow.
};

using TMouseHandler =
    std::function<void(TObject* Sender, TMouseButton Button, TShiftState Shift, int X, int Y)>;
using TMouseWheelHandler = std::function<void(TObject* Sender, TShiftState Shift, int Delta,
                                              TPoint Screen, bool& Handled)>;
using TMouseMoveHandler = std::function<void(TObject* Sender, TShiftState Shift, int X, int Y)>;
using TKeyHandler = std::function<void(TObject* Sender, std::uint16_t& Key, TShiftState Shift)>;
using TKeyPressHandler = std::function<void(TObject* Sender, char16_t& Key)>;
using TContextPopupHandler = std::function<void(TObject* Sender, TPoint MousePos, bool& Handled)>;

}  // namespace oak
