#include "oak/framework/Host.h"

#include <thread>

#include "oak/platform/Api.h"

namespace oak {

THost& Host() {
  static THost host;
  return host;
}

void RunInBackground(std::function<void()> procedure) {
  auto fenced = [procedure = std::move(procedure)] {
    try {
      procedure();
    } catch (...) {
      // Whoever waits for the procedure learns of its end by other means.
    }
  };
  if (Host().RunInBackground) {
    Host().RunInBackground(std::move(fenced));
    return;
  }
  std::thread([fenced = std::move(fenced)] {
    const HRESULT entered = Api().CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    fenced();
    if (SUCCEEDED(entered)) Api().CoUninitialize();
  }).detach();
}

}  // namespace oak
