// The rich text format, as far as its words go.
#pragma once

#include <cstdint>
#include <vector>

#include "oak/base/Text.h"

namespace oak {

/// The plain text of a text in the rich text format, its paragraphs as lines; false, and `text` as
/// it was, if it isn't one. Any thread.
bool PlainTextOfRtf(const std::vector<std::uint8_t>& data, TString* text);

}  // namespace oak
