// TInterfacedObject: reference counting and QueryInterface from a list of
// interfaces.
#pragma once

#include <atomic>

#include "oak/base/Ref.h"

namespace oak {

/// Names the interfaces that an interface inherits from, so that a query for an
/// ancestor finds it too. Specialise it beside the interface:
///   template <> struct TInterfaceAncestors<IShellFolder2> { using Types =
///   TInterfaceList<IShellFolder>; };
template <class... I>
struct TInterfaceList {};
template <class T>
struct TInterfaceAncestors {
  using Types = TInterfaceList<>;
};

namespace detail {
template <class I, class Target>
void* FindInterface(Target* self, REFIID iid);

template <class I, class Target, class... A>
void* FindAncestor([[maybe_unused]] Target* self, [[maybe_unused]] REFIID iid,
                   TInterfaceList<A...>) {
  void* found = nullptr;
  (void)((found = FindInterface<A>(static_cast<I*>(self), iid)) || ...);
  return found;
}

template <class I, class Target>
void* FindInterface(Target* self, REFIID iid) {
  if (iid == IidOf<I>()) return static_cast<I*>(self);
  return FindAncestor<I>(self, iid, typename TInterfaceAncestors<I>::Types{});
}
}  // namespace detail

/// Base of every counted object. Starts with one count, which MakeRef adopts.
/// The first interface answers for IUnknown (object identity). Counting is safe
/// from any thread; the last Release destroys the object on its own thread.
template <class First, class... Rest>
class TInterfacedObject : public First, public Rest... {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (iid == IID_IUnknown)
      *out = static_cast<IUnknown*>(static_cast<First*>(this));
    else if (void* p = detail::FindInterface<First>(this, iid))
      *out = p;
    else
      (void)((*out = detail::FindInterface<Rest>(this, iid)) || ...);
    if (!*out) return QueryDelegated(iid, out);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override {
    return fRefCount.fetch_add(1, std::memory_order_relaxed) + 1;
  }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = fRefCount.fetch_sub(1, std::memory_order_acq_rel) - 1;
    if (left == 0) delete this;
    return left;
  }

  TInterfacedObject(const TInterfacedObject&) = delete;
  TInterfacedObject& operator=(const TInterfacedObject&) = delete;

 protected:
  TInterfacedObject() = default;
  virtual ~TInterfacedObject() = default;

  /// Interfaces that another object answers on this one's behalf. An override
  /// returns a counted pointer in `out`; the default has none.
  virtual HRESULT QueryDelegated(REFIID iid, void** out) {
    (void)iid;
    (void)out;
    return E_NOINTERFACE;
  }

 private:
  std::atomic<ULONG> fRefCount{1};
};

}  // namespace oak
