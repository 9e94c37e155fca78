// Ref<T>: shared ownership of a COM-style counted interface.
#pragma once

#include <cstddef>
#include <type_traits>
#include <utility>

#include "oak/base/abi.h"

namespace oak {

/// Interface identifier of T. Our own interfaces carry a static member `Iid`;
/// for interfaces of the platform `TInterfaceId<T>` is specialised beside
/// their declaration (oak/platform/shell_api.h).
template <class T>
struct TInterfaceId {
  static const GUID& Get() { return T::Iid; }
};
template <>
struct TInterfaceId<IUnknown> {
  static const GUID& Get() { return IID_IUnknown; }
};
template <class T>
const GUID& IidOf() {
  return TInterfaceId<T>::Get();
}

/// A counted reference. Constructing one says who owns the count:
/// `Adopt(p)` takes over a count that the caller holds (results of the
/// platform), `Share(p)` adds one (a borrowed pointer). Reference counts may
/// be touched by any thread, one Ref object only by one thread at a time.
template <class T>
class Ref {
 public:
  Ref() noexcept = default;
  Ref(std::nullptr_t) noexcept {}
  Ref(const Ref& other) noexcept : fPtr(other.fPtr) {
    if (fPtr) fPtr->AddRef();
  }
  Ref(Ref&& other) noexcept : fPtr(std::exchange(other.fPtr, nullptr)) {}
  template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  Ref(const Ref<U>& other) noexcept : fPtr(other.Get()) {
    if (fPtr) fPtr->AddRef();
  }
  template <class U, class = std::enable_if_t<std::is_convertible_v<U*, T*>>>
  Ref(Ref<U>&& other) noexcept : fPtr(other.Detach()) {}
  ~Ref() {
    if (fPtr) fPtr->Release();
  }
  Ref& operator=(Ref other) noexcept {
    std::swap(fPtr, other.fPtr);
    return *this;
  }

  /// Takes over one count that the caller holds.
  static Ref Adopt(T* pointer) noexcept {
    Ref result;
    result.fPtr = pointer;
    return result;
  }
  /// Adds a count to a borrowed pointer.
  static Ref Share(T* pointer) noexcept {
    if (pointer) pointer->AddRef();
    return Adopt(pointer);
  }

  T* Get() const noexcept { return fPtr; }
  T* operator->() const noexcept { return fPtr; }
  T& operator*() const noexcept { return *fPtr; }
  explicit operator bool() const noexcept { return fPtr != nullptr; }

  /// Gives the count to the caller and becomes empty.
  [[nodiscard]] T* Detach() noexcept { return std::exchange(fPtr, nullptr); }
  void Reset() noexcept { Ref().Swap(*this); }
  void Swap(Ref& other) noexcept { std::swap(fPtr, other.fPtr); }

  /// For out parameters: drops the present object, then receives a new count.
  T** Put() noexcept {
    Reset();
    return &fPtr;
  }
  void** PutVoid() noexcept { return reinterpret_cast<void**>(Put()); }

  /// The same object's other interface, or nil if it has none.
  template <class U>
  Ref<U> As() const noexcept {
    Ref<U> result;
    if (fPtr && FAILED(fPtr->QueryInterface(IidOf<U>(), result.PutVoid()))) result.Reset();
    return result;
  }

  friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.fPtr == b.fPtr; }
  friend bool operator==(const Ref& a, std::nullptr_t) noexcept { return a.fPtr == nullptr; }

 private:
  T* fPtr = nullptr;
};

/// Makes a counted object; the result holds its first count.
template <class T, class... Args>
Ref<T> MakeRef(Args&&... args) {
  return Ref<T>::Adopt(new T(std::forward<Args>(args)...));
}

}  // namespace oak
