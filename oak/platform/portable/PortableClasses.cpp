#include "oak/platform/portable/PortableClasses.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace oak {
namespace {

struct TClass {
  CLSID Clsid;
  TPortableFactory Factory;
};

struct TClasses {
  std::mutex Lock;
  std::vector<TClass> List;  // a few dozen at most
};

TClasses& Classes() {
  static auto* classes = new TClasses;  // used by threads that outlive static destructors
  return *classes;
}

}  // namespace

void RegisterPortableClass(REFCLSID clsid, TPortableFactory factory) {
  TClasses& classes = Classes();
  const std::lock_guard lock(classes.Lock);
  std::erase_if(classes.List, [&](const TClass& entry) { return entry.Clsid == clsid; });
  if (factory) classes.List.push_back({clsid, std::move(factory)});
}

TPortableFactory FindPortableClass(REFCLSID clsid) {
  TClasses& classes = Classes();
  const std::lock_guard lock(classes.Lock);
  const auto found = std::find_if(classes.List.begin(), classes.List.end(),
                                  [&](const TClass& entry) { return entry.Clsid == clsid; });
  return found == classes.List.end() ? TPortableFactory() : found->Factory;
}

}  // namespace oak
