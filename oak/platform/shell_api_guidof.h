// GUIDs from their text, at compile time; on every system.
#pragma once

#include "oak/base/abi.h"

#include <cstdint>

namespace oak::detail {
/// The value of one hexadecimal digit.
constexpr unsigned HexDigit(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
  return static_cast<unsigned>(c - 'A' + 10);
}
/// A GUID from its text without braces, at compile time.
consteval GUID GuidOf(const char* text) {
  std::uint8_t bytes[16]{};
  int count = 0;
  for (const char* p = text; *p; ++p) {
    if (*p == '-') continue;
    bytes[count / 2] = static_cast<std::uint8_t>(bytes[count / 2] << 4 | HexDigit(*p));
    ++count;
  }
  if (count != 32) throw "a GUID has 32 digits";
  GUID result{};
  for (int i = 0; i < 4; ++i) result.Data1 = result.Data1 << 8 | bytes[i];
  result.Data2 = static_cast<std::uint16_t>(bytes[4] << 8 | bytes[5]);
  result.Data3 = static_cast<std::uint16_t>(bytes[6] << 8 | bytes[7]);
  for (int i = 0; i < 8; ++i) result.Data4[i] = bytes[8 + i];
  return result;
}
}  // namespace oak::detail
