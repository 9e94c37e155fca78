// Windows that are never shown, of the system's widget set and of the headless one.
#include "oak/framework/HiddenWindow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

#include "oak/framework/Application.h"
#include "oak/framework/WidgetSet.h"
#include "oak/platform/Api.h"
#include "testkit/HeadlessForms.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;

constexpr UINT TestMessage = FirstPrivateMessage + 3;

class HiddenWindow : public testing::TestWithParam<bool> {
 protected:
  HiddenWindow()
      : fFormer(SetWidgetSet(GetParam() ? CreateHeadlessWidgetSet() : CreateSystemWidgetSet())),
        fFormerHandler(std::exchange(Application().OnException,
                                     [this](TObject*, const auto&) { ++Exceptions; })) {}
  ~HiddenWindow() override {
    Application().OnException = fFormerHandler;
    SetWidgetSet(std::move(fFormer));
  }
  /// Posts, and processes what waits. The system's own PostMessageW knows no headless windows.
  void Post(HWND window, UINT message, WPARAM wParam) {
    if (auto* desktop = dynamic_cast<THeadlessDesktop*>(&WidgetSet()))
      desktop->PostToWindow(window, message, wParam, 0);
    else
      Api().PostMessageW(window, message, wParam, 0);
    Application().ProcessMessages();
  }

  int Exceptions = 0;

 private:
  std::unique_ptr<TWidgetSet> fFormer;
  TApplication::TExceptionEvent fFormerHandler;
};

TEST_P(HiddenWindow, TakesMessagesUntilItIsFreed) {
  std::vector<WPARAM> seen;
  HWND window = nullptr;
  window = AllocateHWnd([&](TMessage& message) {
    if (message.Msg != TestMessage) {
      message.Result = DefaultWindowProc(window, message);
      return;
    }
    seen.push_back(message.WParam);
    if (message.WParam == 2) throw std::runtime_error("test");
    if (message.WParam == 3) DeallocateHWnd(std::exchange(window, nullptr));
  });
  const HWND handle = window;
  EXPECT_TRUE(WidgetSet().IsWindow(handle));
  EXPECT_EQ(WidgetSet().ControlOf(handle), nullptr);
  for (WPARAM number = 1; number <= 4; ++number) Post(handle, TestMessage, number);
  EXPECT_THAT(seen, ElementsAre(1, 2, 3)) << "the window has freed itself at the third";
  EXPECT_EQ(Exceptions, 1);
  EXPECT_FALSE(WidgetSet().IsWindow(handle));
  DeallocateHWnd(handle);
  const HWND scoped = THiddenWindow([](TMessage&) {}).GetHandle();
  EXPECT_FALSE(WidgetSet().IsWindow(scoped));
}

INSTANTIATE_TEST_SUITE_P(WidgetSets, HiddenWindow, testing::Bool(),
                         [](const auto& info) { return info.param ? "Headless" : "System"; });

}  // namespace
}  // namespace oak::tests
