#include "testkit/ScreenDriver.h"

namespace oak::testkit {

std::unique_ptr<IScreenDriver> MakeScreenDriver(TScreenFailure onFailure) {
  return MakeHeadlessScreenDriver(std::move(onFailure));
}

}  // namespace oak::testkit
