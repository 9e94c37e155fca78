// Ownership of a native file descriptor.
#pragma once

#include <unistd.h>

#include <utility>

namespace oak {

/// Closes its descriptor at the end. Negative: none.
class TDescriptor {
 public:
  explicit TDescriptor(int descriptor = -1) noexcept : fDescriptor(descriptor) {}
  TDescriptor(TDescriptor&& other) noexcept : fDescriptor(std::exchange(other.fDescriptor, -1)) {}
  TDescriptor& operator=(TDescriptor&& other) noexcept {
    std::swap(fDescriptor, other.fDescriptor);
    return *this;
  }
  ~TDescriptor() {
    if (fDescriptor >= 0) close(fDescriptor);
  }
  int Get() const noexcept { return fDescriptor; }
  /// Closes now; false if that tells of a failure to write.
  bool Close() noexcept { return close(std::exchange(fDescriptor, -1)) == 0; }

 private:
  int fDescriptor;
};

}  // namespace oak
