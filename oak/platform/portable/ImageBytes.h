// The bytes of a picture file, and the readers of its formats.
#pragma once

#include <array>
#include <string_view>

#include "oak/platform/portable/ImageHeader.h"

namespace oak {

enum class TByteOrder : std::uint8_t { Little, Big };

/// A file seen through a window that is moved where it is needed. What lies beyond the
/// end, or would take more reads than a header is worth, is not there. One thread.
class TImageBytes {
 public:
  /// Steps from chunk to chunk, or entries of a table, that a format may take.
  static constexpr unsigned MaxSteps = 256;

  explicit TImageBytes(const TImageRead& read) : fRead(read) {}

  /// The bytes from `offset` on, at most `count` and 1024, fewer at the end. Valid
  /// until the next call.
  std::string_view At(std::uint64_t offset, std::size_t count);
  bool Has(std::uint64_t offset, std::string_view text) { return At(offset, text.size()) == text; }
  /// A number of 1 to 4 bytes; 0 if they are not all there.
  std::uint32_t Number(std::uint64_t offset, std::size_t size, TByteOrder order);
  std::uint32_t Little(std::uint64_t offset, std::size_t size) {
    return Number(offset, size, TByteOrder::Little);
  }
  std::uint32_t Big(std::uint64_t offset, std::size_t size) {
    return Number(offset, size, TByteOrder::Big);
  }

 private:
  static constexpr int kMaxReads = 256;

  const TImageRead& fRead;
  std::array<std::uint8_t, 1024> fWindow;
  std::uint64_t fStart = 0;
  std::size_t fSize = 0;
  int fReads = 0;
};

// Each for a file, or a place in one, that begins as its format does. Without width or
// height: there is no picture.
TImageHeader ReadPng(TImageBytes& bytes, std::uint64_t start = 0);
TImageHeader ReadJpeg(TImageBytes& bytes);
TImageHeader ReadWebP(TImageBytes& bytes);
TImageHeader ReadTiff(TImageBytes& bytes, std::uint64_t start = 0);
TImageHeader ReadIcon(TImageBytes& bytes);

inline constexpr std::string_view kPngStart = "\x89PNG\r\n\x1a\n";
inline constexpr double kCentimetresOfInch = 2.54;

}  // namespace oak
