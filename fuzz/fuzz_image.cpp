// Any bytes as a picture file. What is told of it has to be possible, and cost bounded work.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

#include "oak/platform/portable/ImageHeader.h"

using namespace oak;

namespace {

// A copy of the file's bytes that ends where the allocation ends.
struct TFile {
  std::unique_ptr<std::uint8_t[]> Bytes;
  std::size_t Size;
  int Reads = 0;

  std::size_t Read(std::uint64_t offset, std::span<std::uint8_t> room) {
    ++Reads;
    if (room.empty() || offset >= Size) return 0;
    const std::size_t count = std::min<std::size_t>(room.size(), Size - offset);
    std::copy_n(Bytes.get() + offset, count, room.begin());
    return count;
  }
};

bool IsResolution(double dots) { return std::isfinite(dots) && dots >= 0; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  TFile file{std::make_unique<std::uint8_t[]>(size), size};
  std::copy_n(data, size, file.Bytes.get());
  const auto header = ReadImageHeader(
      [&](std::uint64_t offset, std::span<std::uint8_t> room) { return file.Read(offset, room); });
  if (file.Reads > 256) std::abort();
  if (!header) return 0;
  const auto isSide = [](std::uint32_t pixels) { return pixels > 0 && pixels <= 0x7FFFFFFF; };
  if (!isSide(header->Width) || !isSide(header->Height) || header->BitDepth > 256) std::abort();
  if (!IsResolution(header->HorizontalResolution) || !IsResolution(header->VerticalResolution))
    std::abort();
  return 0;
}
