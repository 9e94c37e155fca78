// Walking over item identifier lists whose bytes are not trusted.
#pragma once

#include <cstring>

#include "oak/base/Pidl.h"

namespace oak {

/// Size field of an element, 0 at the end of a list; elements need not be aligned.
/// A size too small for the field itself ends a list, too.
inline std::size_t ElementSize(const void* element) noexcept {
  USHORT size;
  std::memcpy(&size, element, sizeof size);
  return size < sizeof size ? 0 : size;
}

/// A list cut before its last element.
struct TPidlSplit {
  std::size_t ParentBytes = 0;     ///< of the elements before, without a terminator
  PCUITEMID_CHILD Last = nullptr;  ///< nil for the empty list
};

/// False for nil and for a list with an element too short to be one.
inline bool SplitPidl(PCUIDLIST_RELATIVE pidl, TPidlSplit& split) noexcept {
  if (!pidl) return false;
  const BYTE* bytes = reinterpret_cast<const BYTE*>(pidl);
  std::size_t at = 0;
  split = {};
  while (const std::size_t size = ElementSize(bytes + at)) {
    if (size <= sizeof(USHORT)) return false;
    split.ParentBytes = at;
    split.Last = reinterpret_cast<PCUITEMID_CHILD>(bytes + at);
    at += size;
  }
  return true;
}

inline bool IsEmptyPidl(PCUIDLIST_RELATIVE pidl) noexcept { return ElementSize(pidl) == 0; }

/// What follows the first element.
inline PCUIDLIST_RELATIVE NextElement(PCUIDLIST_RELATIVE pidl) noexcept {
  return reinterpret_cast<PCUIDLIST_RELATIVE>(reinterpret_cast<const BYTE*>(pidl) +
                                              ElementSize(pidl));
}

/// `bytes` of `parent`, then the first element of `child`, then the end.
inline TPidl JoinElement(const void* parent, std::size_t bytes, PCUIDLIST_RELATIVE child) {
  const std::size_t size = child ? ElementSize(child) : 0;
  BYTE* block = static_cast<BYTE*>(CoTaskMemAlloc(bytes + size + sizeof(USHORT)));
  if (!block) throw std::bad_alloc();
  if (bytes) std::memcpy(block, parent, bytes);
  if (size) std::memcpy(block + bytes, child, size);
  std::memset(block + bytes + size, 0, sizeof(USHORT));
  return TPidl::Adopt(reinterpret_cast<PItemIdList>(block));
}

/// The first element alone.
inline TPidl CopyElement(PCUIDLIST_RELATIVE child) { return JoinElement(nullptr, 0, child); }

}  // namespace oak
