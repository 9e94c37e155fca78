// Handles of the portable system: numbers that lead to objects, so that a
// stale or invented handle is answered and never followed.
#pragma once

#include <memory>
#include <mutex>
#include <unordered_map>

#include "oak/base/abi.h"

namespace oak {

/// What a handle can lead to.
struct TSystemObject {
  virtual ~TSystemObject() = default;
};

/// What CloseHandle closes: a file, a thread.
struct TKernelObject : TSystemObject {};

/// All open handles of the process. Any thread; an object lives on while a call
/// that found it is using it, closed or not.
class TSystemHandles {
 public:
  static TSystemHandles& Instance();

  /// A new handle; never nil or INVALID_HANDLE_VALUE.
  HANDLE Add(std::shared_ptr<TSystemObject> object);
  /// The object of a handle if it is a T, else nil.
  template <class T>
  std::shared_ptr<T> Find(HANDLE handle) {
    return std::dynamic_pointer_cast<T>(FindAny(handle));
  }
  /// Closes a handle to a T. False if there is no such handle.
  template <class T>
  bool Close(HANDLE handle) {
    return Find<T>(handle) && Remove(handle);
  }

 private:
  std::shared_ptr<TSystemObject> FindAny(HANDLE handle);
  bool Remove(HANDLE handle);

  std::mutex fLock;
  std::uintptr_t fLast = 0x100;
  std::unordered_map<std::uintptr_t, std::shared_ptr<TSystemObject>> fObjects;
};

}  // namespace oak
