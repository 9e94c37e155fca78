// Formats made of chunks one behind the other: PNG, JPEG, WebP.
#include "oak/platform/portable/ImageBytes.h"

namespace oak {

// --- PNG ---------------------------------------------------------------------------

namespace {

std::uint32_t PngDepth(std::uint32_t bits, std::uint32_t kind) {
  switch (kind) {
    case 2:
      return bits * 3;
    case 4:
      return bits * 2;
    case 6:
      return bits * 4;
    default:
      return bits;  // grey, or numbers of a palette
  }
}

// The chunk with the size of a pixel stands before the pixels, if there is one.
void ReadPixelSize(TImageBytes& bytes, std::uint64_t at, TImageHeader& header) {
  for (unsigned step = 0; step < TImageBytes::MaxSteps; ++step) {
    const std::uint32_t length = bytes.Big(at, 4);
    if (bytes.At(at, 8).size() < 8 || bytes.Has(at + 4, "IDAT") || bytes.Has(at + 4, "IEND"))
      return;
    if (length == 9 && bytes.Has(at + 4, "pHYs") && bytes.Big(at + 16, 1) == 1) {
      header.HorizontalResolution = bytes.Big(at + 8, 4) * kCentimetresOfInch / 100;
      header.VerticalResolution = bytes.Big(at + 12, 4) * kCentimetresOfInch / 100;
      return;
    }
    at += std::uint64_t{12} + length;
  }
}

}  // namespace

TImageHeader ReadPng(TImageBytes& bytes, std::uint64_t start) {
  if (bytes.Big(start + 8, 4) != 13 || !bytes.Has(start + 12, "IHDR")) return {};
  TImageHeader header{bytes.Big(start + 16, 4), bytes.Big(start + 20, 4),
                      PngDepth(bytes.Big(start + 24, 1), bytes.Big(start + 25, 1))};
  ReadPixelSize(bytes, start + 33, header);
  return header;
}

// --- JPEG --------------------------------------------------------------------------

namespace {

constexpr std::uint32_t kEndOfImage = 0xD9;
constexpr std::uint32_t kScan = 0xDA;

// Start of a frame, whatever its coding; among them stand three other markers.
bool IsFrame(std::uint32_t marker) {
  return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}
// Markers without a segment.
bool IsBare(std::uint32_t marker) { return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8); }

void ReadFrame(TImageBytes& bytes, std::uint64_t at, TImageHeader& header) {
  header.BitDepth = bytes.Big(at, 1) * bytes.Big(at + 5, 1);
  header.Height = bytes.Big(at + 1, 2);
  header.Width = bytes.Big(at + 3, 2);
}

// Cameras leave the density to the block of the Exif, which is a TIFF file without pixels.
void ReadDensity(TImageBytes& bytes, std::uint64_t at, TImageHeader& header) {
  if (bytes.Has(at, {"JFIF\0", 5})) {
    const std::uint32_t unit = bytes.Big(at + 7, 1);
    if (unit != 1 && unit != 2) return;  // a ratio of the sides
    const double factor = unit == 2 ? kCentimetresOfInch : 1;
    header.HorizontalResolution = bytes.Big(at + 8, 2) * factor;
    header.VerticalResolution = bytes.Big(at + 10, 2) * factor;
  } else if (bytes.Has(at, {"Exif\0\0", 6}) && header.HorizontalResolution == 0) {
    const TImageHeader block = ReadTiff(bytes, at + 6);
    header.HorizontalResolution = block.HorizontalResolution;
    header.VerticalResolution = block.VerticalResolution;
  }
}

}  // namespace

TImageHeader ReadJpeg(TImageBytes& bytes) {
  TImageHeader header;
  std::uint64_t at = 2;
  for (unsigned step = 0; step < TImageBytes::MaxSteps; ++step) {
    if (bytes.Big(at, 1) != 0xFF) break;
    const std::uint32_t marker = bytes.Big(++at, 1);
    if (marker == 0xFF) continue;  // any number of them may stand before a marker
    ++at;
    if (IsBare(marker)) continue;
    const std::uint32_t length = bytes.Big(at, 2);
    if (length < 2 || marker == kScan || marker == kEndOfImage) break;
    if (IsFrame(marker)) {
      ReadFrame(bytes, at + 2, header);
      break;
    }
    if (marker == 0xE0 || marker == 0xE1) ReadDensity(bytes, at + 2, header);
    at += length;
  }
  return header;
}

// --- WebP --------------------------------------------------------------------------

TImageHeader ReadWebP(TImageBytes& bytes) {
  TImageHeader header;
  constexpr std::uint64_t at = 20;  // contents of the first chunk
  if (bytes.At(at, 10).size() < 10 && !bytes.Has(12, "VP8L")) return header;
  if (bytes.Has(12, "VP8X")) {
    header = {bytes.Little(at + 4, 3) + 1, bytes.Little(at + 7, 3) + 1, 24};
    if (bytes.Little(at, 1) & 0x10) header.BitDepth = 32;
  } else if (bytes.Has(12, "VP8L") && bytes.Little(at, 1) == 0x2F) {
    // 14 bits for each size less one, one for transparency, three for the version
    const std::uint32_t bits = bytes.Little(at + 1, 4);
    if (bits >> 29 != 0 || bytes.At(at + 1, 4).size() < 4) return header;
    header = {(bits & 0x3FFF) + 1, (bits >> 14 & 0x3FFF) + 1, (bits >> 28 & 1) != 0 ? 32u : 24u};
  } else if (bytes.Has(12, "VP8 ") && bytes.Has(at + 3, "\x9D\x01\x2A")) {
    // two bits above each size ask for scaling
    header = {bytes.Little(at + 6, 2) & 0x3FFF, bytes.Little(at + 8, 2) & 0x3FFF, 24};
  }
  return header;
}

}  // namespace oak
