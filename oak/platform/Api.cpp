#include "oak/platform/Api.h"

namespace oak {
namespace detail {

std::atomic<IApiObserver*> gApiObserver{nullptr};
thread_local int tPlatformDepth = 0;

}  // namespace detail

TApi& Api() {
  // Never destroyed: destructors of other static objects may still call the shell.
  static TApi& table = [&]() -> TApi& {
    TApi& api = *new TApi;
#define OAK_API(Result, Name, Params, Failure) \
  api.Name.Bind(#Name, nullptr, failure::Failure<Result>::Function);
#include "oak/platform/ApiList.inc"
#undef OAK_API
    detail::BindPlatform(api);
    return api;
  }();
  return table;
}

}  // namespace oak
