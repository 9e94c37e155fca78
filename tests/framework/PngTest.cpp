#include "oak/framework/Png.h"

#include <gtest/gtest.h>

#include "oak/base/Exceptions.h"
#include "oak/framework/Bitmap.h"
#include "oak/framework/FileContent.h"
#include "tests/framework/TempFolder.h"

namespace oak::tests {
namespace {

using TPngBytes = std::vector<std::uint8_t>;

std::uint32_t ReadBig(const TPngBytes& data, std::size_t at) {
  return static_cast<std::uint32_t>(data[at] << 24 | data[at + 1] << 16 | data[at + 2] << 8 |
                                    data[at + 3]);
}

/// The checksum bit by bit, without a table.
std::uint32_t SlowCrc(const TPngBytes& data, std::size_t from, std::size_t to) {
  std::uint32_t crc = 0xFFFFFFFFu;
  for (; from < to; ++from)
    for (unsigned bit = 0; bit < 8; ++bit) {
      const bool isSet = ((crc ^ data[from] >> bit) & 1) != 0;
      crc = crc >> 1 ^ (isSet ? 0xEDB88320u : 0);
    }
  return ~crc;
}

/// Undoes a deflate stream of stored blocks and checks its frame.
TPngBytes UnpackStored(const TPngBytes& stream) {
  EXPECT_EQ((stream[0] * 256 + stream[1]) % 31, 0);
  TPngBytes out;
  std::size_t at = 2;
  for (bool isLast = false; !isLast;) {
    isLast = stream.at(at) == 1;
    const std::size_t size = stream.at(at + 1) | stream.at(at + 2) << 8;
    EXPECT_EQ(size ^ 0xFFFF, static_cast<std::size_t>(stream.at(at + 3) | stream.at(at + 4) << 8));
    const auto first = stream.begin() + static_cast<std::ptrdiff_t>(at) + 5;
    out.insert(out.end(), first, first + static_cast<std::ptrdiff_t>(size));
    at += 5 + size;
  }
  std::uint64_t a = 1;
  std::uint64_t b = 0;
  for (const std::uint8_t byte : out) b = (b + (a = (a + byte) % 65521)) % 65521;
  EXPECT_EQ(ReadBig(stream, at), b << 16 | a);
  EXPECT_EQ(at + 4, stream.size());
  return out;
}

/// Width, height, colour type and rows with their filter bytes.
TPngBytes ReadPng(const TPngBytes& png, TSize* size, int* colorType) {
  EXPECT_EQ(TPngBytes(png.begin(), png.begin() + 8),
            (TPngBytes{0x89, 0x50, 0x4E, 0x47, 0x0D, 0x0A, 0x1A, 0x0A}));
  TPngBytes stream;
  std::string order;
  for (std::size_t at = 8; at < png.size();) {
    const std::size_t length = ReadBig(png, at);
    const std::string type(png.begin() + static_cast<std::ptrdiff_t>(at) + 4,
                           png.begin() + static_cast<std::ptrdiff_t>(at) + 8);
    EXPECT_EQ(ReadBig(png, at + 8 + length), SlowCrc(png, at + 4, at + 8 + length)) << type;
    order += type + " ";
    if (type == "IHDR") {
      *size = {static_cast<int>(ReadBig(png, at + 8)), static_cast<int>(ReadBig(png, at + 12))};
      EXPECT_EQ(png[at + 16], 8);
      *colorType = png[at + 17];
    }
    if (type == "IDAT")
      stream.assign(png.begin() + static_cast<std::ptrdiff_t>(at) + 8,
                    png.begin() + static_cast<std::ptrdiff_t>(at + 8 + length));
    at += 12 + length;
  }
  EXPECT_EQ(order, "IHDR IDAT IEND ");
  return UnpackStored(stream);
}

TEST(Png, PixelsComeBackWithAndWithoutAlpha) {
  // The first takes several blocks; the last fills one to the last byte: 255 rows of 257.
  const struct {
    TSize Size;
    TAlphaFormat Format;
  } cases[] = {{{300, 100}, afIgnored}, {{3, 2}, afPremultiplied}, {{64, 255}, afPremultiplied}};
  for (const auto& c : cases) {
    TBitmap bitmap(c.Size.Width, c.Size.Height, c.Format);
    for (int y = 0; y < c.Size.Height; ++y)
      for (int x = 0; x < c.Size.Width; ++x) {
        const auto n = static_cast<TPixel>(x * 7 + y * 131);
        bitmap.ScanLine(y)[x] = c.Format == afIgnored ? n * 77 : n % 2 ? 0x80402010u : 0u;
      }
    TSize size;
    int colorType = 0;
    const TPngBytes rows = ReadPng(EncodePng(bitmap), &size, &colorType);
    EXPECT_EQ(size, c.Size);
    EXPECT_EQ(colorType, c.Format == afIgnored ? 2 : 6);
    const std::size_t parts = c.Format == afIgnored ? 3 : 4;
    const std::size_t stride = 1 + static_cast<std::size_t>(c.Size.Width) * parts;
    ASSERT_EQ(rows.size(), stride * static_cast<std::size_t>(c.Size.Height));
    for (int y = 0; y < c.Size.Height; ++y)
      for (int x = 0; x < c.Size.Width; ++x) {
        const TPixel pixel = bitmap.ScanLine(y)[x];
        const std::uint8_t* p = rows.data() + stride * static_cast<std::size_t>(y) + 1 +
                                parts * static_cast<std::size_t>(x);
        // Colours are stored as they are before alpha.
        const TPixel color = c.Format == afIgnored ? pixel & 0xFFFFFF : pixel ? 0x804020u : 0u;
        ASSERT_EQ(static_cast<TPixel>(p[0] << 16 | p[1] << 8 | p[2]), color);
        if (c.Format == afPremultiplied) {
          ASSERT_EQ(p[3], pixel >> 24);
        }
      }
  }
}

TEST(Png, FilesAreReplacedWholeOrNotAtAll) {
  const TTempFolder folder;
  TBitmap bitmap(3, 3);
  const auto bytes = [&] {
    const TPngBytes png = EncodePng(bitmap);
    return std::string(png.begin(), png.end());
  };
  const TString path = folder.Path("picture.png");
  SavePng(bitmap, path);
  bitmap.SetSize(1, 1);
  SavePng(bitmap, path);
  EXPECT_EQ(folder.Read("picture.png"), bytes());
  EXPECT_THROW(SavePng(TBitmap(), path), EInvalidArgument);
  EXPECT_EQ(folder.Read("picture.png"), bytes());
  EXPECT_THROW(SavePng(bitmap, folder.Path("missing/picture.png")), EFileError);
}

}  // namespace
}  // namespace oak::tests
