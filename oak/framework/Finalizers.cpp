#include "oak/framework/Finalizers.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "oak/framework/Application.h"

namespace oak {
namespace {

struct TFinalizers {
  std::mutex Lock;
  std::vector<TFinalizer> List;
};

TFinalizers& Finalizers() {
  static TFinalizers& finalizers = *new TFinalizers;
  return finalizers;
}

TFinalizer TakeLastFinalizer() {
  TFinalizers& finalizers = Finalizers();
  const std::lock_guard guard(finalizers.Lock);
  if (finalizers.List.empty()) return nullptr;
  const TFinalizer last = finalizers.List.back();
  finalizers.List.pop_back();
  return last;
}

}  // namespace

void AddFinalizer(TFinalizer finalizer) {
  TFinalizers& finalizers = Finalizers();
  const std::lock_guard guard(finalizers.Lock);
  auto& list = finalizers.List;
  if (std::find(list.begin(), list.end(), finalizer) == list.end()) list.push_back(finalizer);
}

void RunFinalizers() noexcept {
  while (const TFinalizer finalizer = TakeLastFinalizer()) {
    try {
      finalizer();
    } catch (...) {
      Application().HandleException(nullptr);
    }
  }
}

}  // namespace oak
