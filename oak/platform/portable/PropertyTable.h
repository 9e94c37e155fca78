// The properties that the portable property system knows.
#pragma once

#include <span>

#include "oak/base/Text.h"

namespace oak {

/// How a value is shown.
enum class TPropertyFormat : std::uint8_t {
  Text,
  Number,  ///< with thousands separators
  Plain,   ///< without them
  Size,    ///< bytes, as "1.21 KB", or in whole KB when asked
  Bytes,   ///< bytes, always as "1.21 KB"
  Date,
  Boolean,
  Attributes,  ///< FILE_ATTRIBUTE_ bits as letters
  Duration,    ///< 100 ns units, as "00:03:20"
  Percent,
  Pixels,
  Resolution,  ///< "96 dpi"
  Bitrate      ///< bits per second, as "128kbps"
};

enum class TPropertyFlags : std::uint8_t {
  None = 0,
  File = 1,      ///< the file system answers it
  Writable = 2,  ///< the file system can store it
  Column = 4,    ///< a column that a folder shows at first
  Group = 8,     ///< names a group of properties, has no value
  Alias = 16,    ///< another key of a property that stands before it
  Slow = 32      ///< to answer it the file is opened
};
constexpr TPropertyFlags operator|(TPropertyFlags a, TPropertyFlags b) {
  return static_cast<TPropertyFlags>(static_cast<int>(a) | static_cast<int>(b));
}
constexpr bool HasFlag(TPropertyFlags flags, TPropertyFlags flag) {
  return (static_cast<int>(flags) & static_cast<int>(flag)) != 0;
}

struct TPropertyInfo {
  PROPERTYKEY Key;
  const char16_t* Name;   ///< canonical: "System.Size"
  const char16_t* Label;  ///< as the user reads it: "Size"
  VARTYPE Type;
  TPropertyFormat Format;
  UINT Width;  ///< default width of a column in characters
  TPropertyFlags Flags;
};

/// All properties; they live as long as the process.
std::span<const TPropertyInfo> PropertyTable() noexcept;
/// Nil for an unknown key. Any thread.
const TPropertyInfo* FindProperty(REFPROPERTYKEY key) noexcept;
/// By canonical name, ignoring case. Nil for an unknown one. Any thread.
const TPropertyInfo* FindPropertyByName(TStringView name);

}  // namespace oak
