// TUniqueHandle: owns a handle that is closed by a function.
#pragma once

#include <utility>

namespace oak {

/// Owns one handle. `Traits` says what a handle is:
///   struct TTraits {
///     using Type = HANDLE;
///     static Type Invalid() noexcept;        // the value that owns nothing
///     static void Close(Type) noexcept;      // never gets that value
///   };
/// Where several values mean "nothing", Adopt is told so by the caller's test.
template <class Traits>
class TUniqueHandle {
 public:
  using Type = typename Traits::Type;

  TUniqueHandle() noexcept = default;
  TUniqueHandle(TUniqueHandle&& other) noexcept : fHandle(other.Detach()) {}
  TUniqueHandle& operator=(TUniqueHandle&& other) noexcept {
    TUniqueHandle taken(std::move(other));
    std::swap(fHandle, taken.fHandle);
    return *this;
  }
  ~TUniqueHandle() { Reset(); }

  /// Takes over a handle that the caller owns.
  static TUniqueHandle Adopt(Type handle) noexcept {
    TUniqueHandle result;
    result.fHandle = handle;
    return result;
  }

  Type Get() const noexcept { return fHandle; }
  explicit operator bool() const noexcept { return fHandle != Traits::Invalid(); }
  /// Gives the handle to the caller and owns nothing.
  [[nodiscard]] Type Detach() noexcept { return std::exchange(fHandle, Traits::Invalid()); }
  /// Closes the handle.
  void Reset() noexcept {
    if (*this) Traits::Close(Detach());
  }
  /// For out parameters: closes the present handle, then receives a new one.
  Type* Put() noexcept {
    Reset();
    return &fHandle;
  }

 private:
  Type fHandle = Traits::Invalid();
};

}  // namespace oak
