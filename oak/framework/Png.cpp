#include "oak/framework/Png.h"

#include <algorithm>
#include <array>

#include "oak/base/Exceptions.h"
#include "oak/framework/Bitmap.h"
#include "oak/framework/BitmapPixels.h"
#include "oak/framework/FileContent.h"

namespace oak {
namespace {

using TBytes = std::vector<std::uint8_t>;

std::array<std::uint32_t, 256> MakeCrcTable() {
  std::array<std::uint32_t, 256> table;
  for (std::uint32_t i = 0; i < 256; ++i) {
    std::uint32_t value = i;
    for (int bit = 0; bit < 8; ++bit) value = value & 1 ? 0xEDB88320u ^ value >> 1 : value >> 1;
    table[i] = value;
  }
  return table;
}

std::uint32_t PngCrc(const std::uint8_t* data, std::size_t size) {
  static const std::array<std::uint32_t, 256> table = MakeCrcTable();
  std::uint32_t crc = 0xFFFFFFFFu;
  for (std::size_t i = 0; i < size; ++i) crc = table[(crc ^ data[i]) & 0xFF] ^ crc >> 8;
  return ~crc;
}

std::uint32_t Adler32(const TBytes& data) {
  std::uint32_t a = 1;
  std::uint32_t b = 0;
  for (std::size_t from = 0; from < data.size();) {
    // As many bytes as can be summed up before a sum overflows.
    const std::size_t to = std::min(data.size(), from + 5552);
    for (; from < to; ++from) b += a += data[from];
    a %= 65521;
    b %= 65521;
  }
  return b << 16 | a;
}

void PutBig(TBytes& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8)
    out.push_back(static_cast<std::uint8_t>(value >> shift));
}

void PutLittle16(TBytes& out, std::size_t value) {
  out.push_back(static_cast<std::uint8_t>(value));
  out.push_back(static_cast<std::uint8_t>(value >> 8));
}

void PutChunk(TBytes& out, const char (&type)[5], const TBytes& data) {
  PutBig(out, static_cast<std::uint32_t>(data.size()));
  const std::size_t start = out.size();
  out.insert(out.end(), type, type + 4);
  out.insert(out.end(), data.begin(), data.end());
  PutBig(out, PngCrc(out.data() + start, out.size() - start));
}

/// The rows from top to bottom, each after the number of its filter: none.
TBytes PngRows(const TBitmap& bitmap, bool hasAlpha) {
  TBytes rows;
  const auto width = static_cast<std::size_t>(bitmap.GetWidth());
  rows.reserve(static_cast<std::size_t>(bitmap.GetHeight()) * (1 + width * (hasAlpha ? 4 : 3)));
  for (int y = 0; y < bitmap.GetHeight(); ++y) {
    rows.push_back(0);
    const TPixel* row = bitmap.ScanLine(y);
    for (std::size_t x = 0; x < width; ++x) {
      const TPixel pixel = hasAlpha ? Unpremultiply(row[x]) : row[x];
      rows.push_back(static_cast<std::uint8_t>(pixel >> 16));
      rows.push_back(static_cast<std::uint8_t>(pixel >> 8));
      rows.push_back(static_cast<std::uint8_t>(pixel));
      if (hasAlpha) rows.push_back(static_cast<std::uint8_t>(pixel >> 24));
    }
  }
  return rows;
}

/// A stream of blocks that are stored as they are: no compressor is needed.
TBytes StoredStream(const TBytes& data) {
  constexpr std::size_t BlockSize = 65535;
  TBytes out = {0x78, 0x01};
  out.reserve(data.size() + data.size() / BlockSize * 5 + 16);
  for (std::size_t from = 0; from < data.size(); from += BlockSize) {
    const std::size_t size = std::min(BlockSize, data.size() - from);
    out.push_back(from + size == data.size() ? 1 : 0);
    PutLittle16(out, size);
    PutLittle16(out, ~size);
    const auto first = data.begin() + static_cast<std::ptrdiff_t>(from);
    out.insert(out.end(), first, first + static_cast<std::ptrdiff_t>(size));
  }
  PutBig(out, Adler32(data));
  return out;
}

}  // namespace

std::vector<std::uint8_t> EncodePng(const TBitmap& bitmap) {
  if (bitmap.IsEmpty()) throw EInvalidArgument(u"An empty bitmap cannot be saved.");
  const bool hasAlpha = bitmap.GetAlphaFormat() == afPremultiplied;
  TBytes out = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
  TBytes header;
  PutBig(header, static_cast<std::uint32_t>(bitmap.GetWidth()));
  PutBig(header, static_cast<std::uint32_t>(bitmap.GetHeight()));
  const std::uint8_t colorType = hasAlpha ? 6 : 2;
  header.insert(header.end(), {8, colorType, 0, 0, 0});
  PutChunk(out, "IHDR", header);
  PutChunk(out, "IDAT", StoredStream(PngRows(bitmap, hasAlpha)));
  PutChunk(out, "IEND", {});
  return out;
}

void SavePng(const TBitmap& bitmap, const TString& path) {
  const TBytes png = EncodePng(bitmap);
  ReplaceFileContent(path, {reinterpret_cast<const char*>(png.data()), png.size()});
}

}  // namespace oak
