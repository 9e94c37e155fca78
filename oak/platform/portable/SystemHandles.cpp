#include "oak/platform/portable/SystemHandles.h"

namespace oak {

TSystemHandles& TSystemHandles::Instance() {
  static auto* handles = new TSystemHandles;  // threads may close handles at any late time
  return *handles;
}

HANDLE TSystemHandles::Add(std::shared_ptr<TSystemObject> object) {
  const std::lock_guard lock(fLock);
  fLast += 4;  // as on the platform, the low bits stay free
  fObjects.emplace(fLast, std::move(object));
  return reinterpret_cast<HANDLE>(fLast);
}

std::shared_ptr<TSystemObject> TSystemHandles::FindAny(HANDLE handle) {
  const std::lock_guard lock(fLock);
  const auto found = fObjects.find(reinterpret_cast<std::uintptr_t>(handle));
  return found == fObjects.end() ? nullptr : found->second;
}

bool TSystemHandles::Remove(HANDLE handle) {
  std::shared_ptr<TSystemObject> object;  // its end must not run under the lock
  const std::lock_guard lock(fLock);
  const auto found = fObjects.find(reinterpret_cast<std::uintptr_t>(handle));
  if (found == fObjects.end()) return false;
  object = std::move(found->second);
  fObjects.erase(found);
  return true;
}

}  // namespace oak
