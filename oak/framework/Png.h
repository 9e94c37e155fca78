// Pictures as PNG data: screenshots, tests.
#pragma once

#include <cstdint>
#include <vector>

#include "oak/base/Text.h"

namespace oak {

class TBitmap;

/// The bitmap as a PNG file: with alpha if the bitmap has one, not compressed. Raises
/// EInvalidArgument for an empty bitmap, which the format does not know. Any thread.
std::vector<std::uint8_t> EncodePng(const TBitmap& bitmap);

/// Writes that to a file, replacing one that exists. Raises EFileError
/// (oak/framework/FileContent.h) if the system refuses.
void SavePng(const TBitmap& bitmap, const TString& path);

}  // namespace oak
