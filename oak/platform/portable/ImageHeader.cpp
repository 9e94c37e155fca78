// Telling the formats apart, and those whose header has a fixed place.
#include "oak/platform/portable/ImageHeader.h"

#include <algorithm>

#include "oak/platform/portable/ImageBytes.h"

namespace oak {

std::string_view TImageBytes::At(std::uint64_t offset, std::size_t count) {
  const bool inside = offset >= fStart && offset - fStart <= fSize;
  if (!inside || fSize - (offset - fStart) < count) {
    if (fReads == kMaxReads) return {};
    ++fReads;
    fStart = offset;
    fSize = std::min(fRead(offset, fWindow), fWindow.size());
  }
  const std::string_view window(reinterpret_cast<const char*>(fWindow.data()), fSize);
  return window.substr(static_cast<std::size_t>(offset - fStart), count);
}

std::uint32_t TImageBytes::Number(std::uint64_t offset, std::size_t size, TByteOrder order) {
  const std::string_view bytes = At(offset, size);
  std::uint32_t number = 0;
  if (bytes.size() < size) return number;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char byte = order == TByteOrder::Big ? bytes[i] : bytes[bytes.size() - 1 - i];
    number = number << 8 | static_cast<std::uint8_t>(byte);
  }
  return number;
}

namespace {

// Of the whole screen, which its frames may fill in part. Each of them may have colours
// of its own: the size of the first table is not the depth.
TImageHeader ReadGif(TImageBytes& bytes) { return {bytes.Little(6, 2), bytes.Little(8, 2), 8}; }

// The older headers have sizes of 16 bits and no resolution.
TImageHeader ReadBitmap(TImageBytes& bytes) {
  const std::uint32_t size = bytes.Little(14, 4);
  const bool isOld = size == 12;
  if (!isOld && (size < 16 || size > 124)) return {};
  if (bytes.Little(isOld ? 22 : 26, 2) != 1) return {};  // planes
  if (isOld) return {bytes.Little(18, 2), bytes.Little(20, 2), bytes.Little(24, 2)};
  TImageHeader header{bytes.Little(18, 4), bytes.Little(22, 4), bytes.Little(28, 2)};
  // Lines from top to bottom are told by a negative height.
  if (header.Height > 0x80000000u) header.Height = ~header.Height + 1;
  const auto inches = [](std::uint32_t perMetre) {
    return perMetre > 0x7FFFFFFFu ? 0.0 : perMetre * kCentimetresOfInch / 100;
  };
  if (size < 40) return header;
  header.HorizontalResolution = inches(bytes.Little(38, 4));
  header.VerticalResolution = inches(bytes.Little(42, 4));
  return header;
}

// One number of the text that such a file begins with, after blanks and comments; 0
// unless it is whole, which the blank behind it shows.
std::uint32_t NextNumber(std::string_view& text) {
  const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  while (!text.empty() && (isBlank(text[0]) || text[0] == '#'))
    text.remove_prefix(text[0] == '#' ? std::min(text.find('\n'), text.size()) : 1);
  std::uint32_t number = 0;
  for (int digits = 0; digits < 9 && !text.empty() && isDigit(text[0]); ++digits) {
    number = number * 10 + static_cast<std::uint32_t>(text[0] - '0');
    text.remove_prefix(1);
  }
  return !text.empty() && isBlank(text[0]) ? number : 0;
}

TImageHeader ReadPortableMap(TImageBytes& bytes) {
  std::string_view text = bytes.At(0, 1024);
  const char kind = text.size() > 1 ? text[1] : '0';
  if (kind < '1' || kind > '6') return {};
  text.remove_prefix(2);
  TImageHeader header;
  header.Width = NextNumber(text);
  header.Height = NextNumber(text);
  const std::uint32_t channels = kind == '3' || kind == '6' ? 3 : 1;
  if (kind == '1' || kind == '4')
    header.BitDepth = 1;
  else if (const std::uint32_t white = NextNumber(text); white > 0 && white < 0x10000)
    header.BitDepth = (white < 0x100 ? 8 : 16) * channels;
  return header;
}

TImageHeader ReadHeader(TImageBytes& bytes) {
  if (bytes.Has(0, kPngStart)) return ReadPng(bytes);
  if (bytes.Has(0, "\xFF\xD8\xFF")) return ReadJpeg(bytes);
  if (bytes.Has(0, "GIF87a") || bytes.Has(0, "GIF89a")) return ReadGif(bytes);
  if (bytes.Has(0, "RIFF") && bytes.Has(8, "WEBP")) return ReadWebP(bytes);
  if (bytes.Has(0, {"II*\0", 4}) || bytes.Has(0, {"MM\0*", 4})) return ReadTiff(bytes);
  if (bytes.Has(0, {"\0\0\1\0", 4}) || bytes.Has(0, {"\0\0\2\0", 4})) return ReadIcon(bytes);
  if (bytes.Has(0, "BM")) return ReadBitmap(bytes);
  if (bytes.Has(0, "P")) return ReadPortableMap(bytes);
  return {};
}

}  // namespace

std::optional<TImageHeader> ReadImageHeader(const TImageRead& read) {
  constexpr std::uint32_t deepest = 256;  // four channels of the longest numbers
  TImageBytes bytes(read);
  TImageHeader header = ReadHeader(bytes);
  if (header.BitDepth > deepest) header.BitDepth = 0;
  const auto isSize = [](std::uint32_t pixels) { return pixels > 0 && pixels <= 0x7FFFFFFFu; };
  if (!isSize(header.Width) || !isSize(header.Height)) return std::nullopt;
  return header;
}

}  // namespace oak
