// What the header of a picture file tells.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

namespace oak {

/// Size and resolution of a picture.
struct TImageHeader {
  std::uint32_t Width = 0;   ///< pixels, as they are stored: what an orientation says turns nothing
  std::uint32_t Height = 0;  ///< pixels, whichever line comes first
  std::uint32_t BitDepth = 0;       ///< bits of one pixel, all channels together; 0: not told
  double HorizontalResolution = 0;  ///< dots per inch; 0: not told
  double VerticalResolution = 0;
};

/// Reads bytes of the file from an offset on, as many as there is room for. The number
/// of bytes read, fewer at the end of the file and on a failure.
using TImageRead = std::function<std::size_t(std::uint64_t offset, std::span<std::uint8_t> bytes)>;

/// The header of a PNG, JPEG, GIF, BMP, WebP, TIFF, icon, cursor or PNM file, told by its
/// contents; of several pictures the first one, of an icon the largest. Nothing for
/// other files, and for a picture without width or height. No byte is trusted: the
/// work is bounded whatever they are, 256 reads of 1 KB at most. Any thread.
std::optional<TImageHeader> ReadImageHeader(const TImageRead& read);

}  // namespace oak
