// Shared by the sources of LogicalOrder.h.
#pragma once

#include <cstddef>
#include <cstdint>

#include "oak/base/Text.h"

namespace oak::detail {

/// The most bytes that the key of a name of that length can have.
constexpr std::size_t LogicalKeyLimit(std::size_t length) noexcept { return 7 * length + 8; }

/// Writes the key of a name, at most LogicalKeyLimit bytes, and returns its end.
/// No key is the start of another, so keys of unequal length need no rule.
std::uint8_t* WriteLogicalKey(std::uint8_t* out, TStringView name) noexcept;

}  // namespace oak::detail
