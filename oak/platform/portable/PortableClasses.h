// The class objects that CoCreateInstance of the portable system knows.
#pragma once

#include <functional>

#include "oak/base/abi.h"

namespace oak {

/// Makes an object of a class: gives the asked interface with one count, or a
/// failure and nil. Any thread; must not throw.
using TPortableFactory = std::function<HRESULT(REFIID iid, void** object)>;

/// Adds or replaces a class; an empty factory removes it. Any thread.
void RegisterPortableClass(REFCLSID clsid, TPortableFactory factory);

/// The factory of a class, empty if there is none. Any thread.
TPortableFactory FindPortableClass(REFCLSID clsid);

/// Registers a class whose objects are made by T's constructor without
/// arguments; T is a counted object with QueryInterface.
template <class T>
void RegisterPortableClass(REFCLSID clsid) {
  RegisterPortableClass(clsid, [](REFIID iid, void** object) -> HRESULT {
    *object = nullptr;
    T* made = nullptr;
    try {
      made = new T();
    } catch (...) {
      return E_OUTOFMEMORY;
    }
    const HRESULT result = made->QueryInterface(iid, object);
    made->Release();
    return result;
  });
}

}  // namespace oak
