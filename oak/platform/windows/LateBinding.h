// Functions that not every version of Windows has.
#pragma once

namespace oak {
struct TApi;
namespace detail {

/// Looks them up in the system's libraries, which stay loaded. What is missing stays null.
void BindLate(TApi& api);

}  // namespace detail
}  // namespace oak
