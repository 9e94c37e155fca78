// Formats that begin with a table: TIFF, icons and cursors.
#include <algorithm>

#include "oak/platform/portable/ImageBytes.h"

namespace oak {

// --- TIFF --------------------------------------------------------------------------

namespace {

// One directory of a TIFF file: entries of a tag and a value, or the place of one.
class TTiffDirectory {
 public:
  TTiffDirectory(TImageBytes& bytes, std::uint64_t start)
      : fBytes(bytes),
        fStart(start),
        fOrder(bytes.Has(start, "MM") ? TByteOrder::Big : TByteOrder::Little) {}

  TImageHeader Read() {
    const std::uint64_t at = fStart + Number(fStart + 4, 4);
    const std::uint32_t count = std::min(Number(at, 2), TImageBytes::MaxSteps);
    for (std::uint32_t i = 0; i < count; ++i) ReadEntry(at + 2 + std::uint64_t{12} * i);
    if (fBits <= 64 && fSamples <= 64) fHeader.BitDepth = fBits * fSamples;
    const double factor = fUnit == 2 ? 1 : fUnit == 3 ? kCentimetresOfInch : 0;
    fHeader.HorizontalResolution *= factor;
    fHeader.VerticalResolution *= factor;
    return fHeader;
  }

 private:
  std::uint32_t Number(std::uint64_t at, std::size_t size) {
    return fBytes.Number(at, size, fOrder);
  }

  void ReadEntry(std::uint64_t entry) {
    if (fBytes.At(entry, 12).size() < 12) return;
    const std::uint32_t tag = Number(entry, 2);
    if (tag == 256) fHeader.Width = Whole(entry);
    if (tag == 257) fHeader.Height = Whole(entry);
    if (tag == 258) fBits = Whole(entry);
    if (tag == 277) fSamples = Whole(entry);
    if (tag == 282) fHeader.HorizontalResolution = Ratio(entry);
    if (tag == 283) fHeader.VerticalResolution = Ratio(entry);
    if (tag == 296) fUnit = Whole(entry);
  }

  // The first number of an entry: up to four bytes of them stand in it, more elsewhere.
  std::uint32_t Whole(std::uint64_t entry) {
    const std::uint32_t type = Number(entry + 2, 2);
    const std::size_t size = type == 1 ? 1 : type == 3 ? 2 : type == 4 ? 4 : 0;
    const bool isInside = std::uint64_t{Number(entry + 4, 4)} * size <= 4;
    return Number(isInside ? entry + 8 : fStart + Number(entry + 8, 4), size);
  }
  double Ratio(std::uint64_t entry) {
    if (Number(entry + 2, 2) != 5) return 0;
    const std::uint64_t place = fStart + Number(entry + 8, 4);
    const std::uint32_t divisor = Number(place + 4, 4);
    return divisor == 0 ? 0 : static_cast<double>(Number(place, 4)) / divisor;
  }

  TImageBytes& fBytes;
  const std::uint64_t fStart;
  const TByteOrder fOrder;
  TImageHeader fHeader;
  std::uint32_t fBits = 1;
  std::uint32_t fSamples = 1;  // all have the bits of the first
  std::uint32_t fUnit = 2;     // of the resolution: 2 inch, 3 centimetre
};

}  // namespace

TImageHeader ReadTiff(TImageBytes& bytes, std::uint64_t start) {
  return TTiffDirectory(bytes, start).Read();
}

// --- icons and cursors -------------------------------------------------------------

namespace {

// What an entry of the table tells, and where its picture stands.
struct TIconEntry {
  TImageHeader Header;
  std::uint64_t Place = 0;
};

TIconEntry ReadIconEntry(TImageBytes& bytes, std::uint64_t at, bool isCursor) {
  const auto side = [&](std::uint64_t place) {
    const std::uint32_t pixels = bytes.Little(place, 1);
    return pixels == 0 ? 256u : pixels;
  };
  // A cursor has the place of its hot spot there.
  const std::uint32_t bits = isCursor ? 0 : bytes.Little(at + 6, 2);
  return {{side(at), side(at + 1), bits}, bytes.Little(at + 12, 4)};
}

std::uint64_t Weight(const TImageHeader& header) {
  return (std::uint64_t{header.Width} * header.Height << 16) + header.BitDepth;
}

}  // namespace

TImageHeader ReadIcon(TImageBytes& bytes) {
  const std::uint32_t total = bytes.Little(4, 2);
  const std::uint64_t end = 6 + std::uint64_t{16} * total;
  TIconEntry best;
  for (std::uint32_t i = 0; i < std::min(total, TImageBytes::MaxSteps); ++i) {
    const std::uint64_t at = 6 + std::uint64_t{16} * i;
    if (bytes.At(at, 16).size() < 16) break;
    const TIconEntry entry = ReadIconEntry(bytes, at, bytes.Has(2, "\2"));
    // The four bytes that such files begin with are no rare ones.
    if (entry.Place < end) return {};
    if (Weight(entry.Header) > Weight(best.Header)) best = entry;
  }
  if (best.Place == 0) return {};
  // The picture itself knows better: icons of more than 256 pixels, cursors' colours.
  if (bytes.Has(best.Place, kPngStart)) {
    const TImageHeader png = ReadPng(bytes, best.Place);
    return png.Width != 0 && png.Height != 0 ? png : best.Header;
  }
  if (bytes.Little(best.Place, 4) == 40) best.Header.BitDepth = bytes.Little(best.Place + 14, 2);
  return best.Header;
}

}  // namespace oak
