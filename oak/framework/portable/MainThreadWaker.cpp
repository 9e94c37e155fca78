// Calling the main thread: there is no message queue of the system here, so a program
// with a loop of its own watches a descriptor.
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

#include "oak/framework/MainThreadQueue.h"

namespace oak {
namespace {

/// Never closed: a thread may be about to write, and the number would be another's.
class TDescriptorWaker final : public IMainThreadWaker {
 public:
  TDescriptorWaker() : fDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
  int Descriptor() const noexcept { return fDescriptor; }
  bool Wake() noexcept override {
    const std::uint64_t one = 1;
    return write(fDescriptor, &one, sizeof one) == sizeof one;
  }
  void Woken() noexcept override {
    std::uint64_t count = 0;
    [[maybe_unused]] const ssize_t taken = read(fDescriptor, &count, sizeof count);
  }
  bool Wait(DWORD) noexcept override { return false; }
  void Poke() noexcept override {}

 private:
  const int fDescriptor;
};

}  // namespace

int MainThreadWaitHandle() {
  static auto& waker = *new TDescriptorWaker;
  TMainThreadQueue& queue = TMainThreadQueue::Instance();
  if (waker.Descriptor() >= 0 && queue.GetWaker() != &waker) {
    queue.SetWaker(&waker);
    if (queue.GetPending() > 0) waker.Wake();
  }
  return waker.Descriptor();
}

void detail::InstallMainThreadWaker() {}

void detail::RemoveMainThreadWaker() noexcept { TMainThreadQueue::Instance().SetWaker(nullptr); }

}  // namespace oak
