// Item identifier lists and task memory, owned by type.
#pragma once

#include <cstdint>
#include <utility>

#include "oak/base/abi.h"

namespace oak {

using PItemIdList = ITEMIDLIST*;
using PCItemIdList = const ITEMIDLIST*;

/// Owns a block of the COM task allocator.
template <class T>
class TTaskMemory {
 public:
  TTaskMemory() noexcept = default;
  TTaskMemory(TTaskMemory&& other) noexcept : fPtr(std::exchange(other.fPtr, nullptr)) {}
  TTaskMemory& operator=(TTaskMemory&& other) noexcept {
    std::swap(fPtr, other.fPtr);
    return *this;
  }
  ~TTaskMemory() { CoTaskMemFree(fPtr); }
  /// Takes over a block that the caller owns.
  static TTaskMemory Adopt(T* block) noexcept {
    TTaskMemory m;
    m.fPtr = block;
    return m;
  }
  T* Get() const noexcept { return fPtr; }
  explicit operator bool() const noexcept { return fPtr != nullptr; }
  [[nodiscard]] T* Detach() noexcept { return std::exchange(fPtr, nullptr); }
  /// For out parameters: frees the present block, then receives a new one.
  T** Put() noexcept {
    CoTaskMemFree(std::exchange(fPtr, nullptr));
    return &fPtr;
  }

 private:
  T* fPtr = nullptr;
};

/// Size in bytes of a list, the two terminating ones included; 0 for nil.
std::size_t PidlSize(PCItemIdList pidl) noexcept;
/// Number of elements; 0 for the root and for nil.
int PidlDepth(PCItemIdList pidl) noexcept;

/// Owns an item identifier list.
class TPidl {
 public:
  TPidl() noexcept = default;
  TPidl(TPidl&&) noexcept = default;
  TPidl& operator=(TPidl&&) noexcept = default;
  /// Takes over a list that the caller owns.
  static TPidl Adopt(PItemIdList pidl) noexcept {
    TPidl p;
    p.fMemory = TTaskMemory<ITEMIDLIST>::Adopt(pidl);
    return p;
  }
  /// Owns a copy; nil gives nil. Throws std::bad_alloc.
  static TPidl Copy(PCItemIdList pidl);
  PItemIdList Get() const noexcept { return fMemory.Get(); }
  explicit operator bool() const noexcept { return static_cast<bool>(fMemory); }
  [[nodiscard]] PItemIdList Detach() noexcept { return fMemory.Detach(); }
  PItemIdList* Put() noexcept { return fMemory.Put(); }

 private:
  TTaskMemory<ITEMIDLIST> fMemory;
};

}  // namespace oak
