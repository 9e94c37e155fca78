#include "oak/framework/Host.h"

namespace oak {

THost& Host() {
  static THost host;
  return host;
}

}  // namespace oak
