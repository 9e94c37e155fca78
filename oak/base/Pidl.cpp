#include "oak/base/Pidl.h"

#include <cstring>
#include <new>

namespace oak {

namespace {
// An element may begin at any byte.
USHORT ElementSize(const BYTE* at) noexcept {
  USHORT size;
  std::memcpy(&size, at, sizeof size);
  return size;
}

/// Size of the elements and their number. An element that is too small to hold
/// its own size ends the list, so that broken data can't stop the walk.
struct TExtent {
  std::size_t bytes;
  int depth;
};
TExtent Measure(PCItemIdList pidl) noexcept {
  TExtent extent{0, 0};
  if (!pidl) return extent;
  const auto* start = reinterpret_cast<const BYTE*>(pidl);
  for (USHORT size; (size = ElementSize(start + extent.bytes)) >= sizeof(USHORT); ++extent.depth)
    extent.bytes += size;
  return extent;
}
}  // namespace

std::size_t PidlSize(PCItemIdList pidl) noexcept {
  return pidl ? Measure(pidl).bytes + sizeof(USHORT) : 0;
}

int PidlDepth(PCItemIdList pidl) noexcept { return Measure(pidl).depth; }

TPidl TPidl::Copy(PCItemIdList pidl) {
  if (!pidl) return {};
  const std::size_t bytes = Measure(pidl).bytes;
  void* block = CoTaskMemAlloc(bytes + sizeof(USHORT));
  if (!block) throw std::bad_alloc();
  std::memcpy(block, pidl, bytes);
  std::memset(static_cast<BYTE*>(block) + bytes, 0, sizeof(USHORT));
  return Adopt(static_cast<PItemIdList>(block));
}

}  // namespace oak
