// What a user without root's rights meets, also where the tests run as root.
#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <functional>
#include <thread>

namespace oak::tests {

/// Runs the body on a thread of its own, for which the modes of files and folders count. Root's
/// right to pass them over is given up by that thread alone, and for good.
inline void WithoutRoot(const std::function<void()>& body) {
  std::thread([&body] {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct rights[_LINUX_CAPABILITY_U32S_3] = {};
    constexpr auto passedOver = (1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH);
    if (::syscall(SYS_capget, &header, rights) == 0) {
      for (auto* set : {&rights[0].effective, &rights[0].permitted, &rights[0].inheritable})
        *set &= ~passedOver;
      ::syscall(SYS_capset, &header, rights);
    }
    body();
  }).join();
}

}  // namespace oak::tests
