// What a user does, as it waits in the headless desktop's queue.
#pragma once

#include <cstdint>
#include <functional>

#include "oak/framework/ControlTypes.h"

namespace oak {

/// One piece of input.
struct THeadlessInput {
  enum class TKind : std::uint8_t { Mouse, Key, Action };
  TKind Kind = TKind::Action;
  TMouseAction Mouse = TMouseAction::Move;
  TMouseButton Button = mbLeft;
  bool Double = false;
  int WheelDelta = 0;
  TPoint Position;  ///< Of a move; other mouse input happens where the pointer is.
  TKeyAction Key = TKeyAction::Down;
  std::uint16_t VirtualKey = 0;  ///< 0 for a character that no key has.
  char16_t Char = 0;             ///< Character that the key gives, or 0.
  std::function<void()> Action;
};

/// Takes mouse and keys while a menu or a drag lasts. State of keys, buttons and pointer are up to
/// date when it is called. Actions of the queue run as ever.
class IHeadlessInputFilter {
 public:
  virtual void Mouse(const THeadlessInput& input) = 0;
  virtual void Key(const THeadlessInput& input) = 0;

 protected:
  ~IHeadlessInputFilter() = default;
};

/// The character that a key of a plain keyboard gives with these keys down; 0 if none.
char16_t CharOfKey(std::uint16_t key, TShiftState shift) noexcept;
/// The key that gives a character, and whether with shift; 0 if no key does.
std::uint16_t KeyOfChar(char16_t character, bool* shift) noexcept;

}  // namespace oak
