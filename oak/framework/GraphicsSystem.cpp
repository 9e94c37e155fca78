#include "oak/framework/GraphicsSystem.h"

#include <atomic>

#if defined(_WIN32)
#include "oak/framework/win32/GraphicsWin32.h"
#endif

namespace oak {
namespace {

TGraphicsSystem& DefaultGraphicsSystem() noexcept {
#if defined(_WIN32)
  return Win32GraphicsSystem();
#else
  return HeadlessGraphicsSystem();
#endif
}

std::atomic<TGraphicsSystem*> gGraphicsSystem{nullptr};
std::atomic<TSystemColorProvider> gSystemColors{nullptr};

}  // namespace

TGraphicsSystem& GraphicsSystem() noexcept {
  TGraphicsSystem* system = gGraphicsSystem.load(std::memory_order_acquire);
  return system ? *system : DefaultGraphicsSystem();
}

TGraphicsSystem* SetGraphicsSystem(TGraphicsSystem* system) noexcept {
  TGraphicsSystem* former = gGraphicsSystem.exchange(system, std::memory_order_acq_rel);
  return former ? former : &DefaultGraphicsSystem();
}

void SetSystemColorProvider(TSystemColorProvider provider) noexcept {
  gSystemColors.store(provider, std::memory_order_release);
}

TColor ResolveSystemColor(int index) {
  const TSystemColorProvider provider = gSystemColors.load(std::memory_order_acquire);
  const TColor color = provider ? provider(index) : GraphicsSystem().GetSystemColor(index);
  return color & 0xFFFFFF;
}

}  // namespace oak
