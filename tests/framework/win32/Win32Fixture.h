// What the tests of real windows share: the system's widget set, its message loop, input.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>

#include "oak/framework/Application.h"
#include "oak/framework/Forms.h"
#include "oak/framework/Png.h"
#include "oak/framework/StdCtrls.h"
#include "oak/framework/win32/Screenshot.h"
#include "oak/framework/win32/Win32WidgetSet.h"
#include "oak/platform/shell_api.h"
#include "testkit/windows/OwnDesktop.h"
#include "tests/framework/GeometryPrinting.h"

namespace oak {
namespace tests {

class TWin32Test : public ::testing::Test {
 protected:
  TWin32Test() {
    testkit::EnterOwnDesktop();
    fFormer = SetWidgetSet(CreateSystemWidgetSet());
    Application().OnException = [](TObject*, const std::exception_ptr& exception) {
      ADD_FAILURE() << ToUtf8(ExceptionText(exception));
    };
  }
  ~TWin32Test() override {
    Application().OnException = nullptr;
    SetWidgetSet(std::move(fFormer));
  }

  /// Runs all messages that wait.
  static void Pump() { Application().ProcessMessages(); }
  /// Runs messages until the condition holds; gives up after a while, which fails the test.
  static void PumpUntil(const std::function<bool()>& condition) {
    constexpr ULONGLONG patience = 10000;  // milliseconds
    const ULONGLONG start = ::GetTickCount64();
    while (!condition()) {
      if (::GetTickCount64() - start > patience) {
        ADD_FAILURE() << "waited in vain";
        return;
      }
      if (!WidgetSet().ProcessMessage())
        ::MsgWaitForMultipleObjectsEx(0, nullptr, 50, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    }
  }
  static void Click(HWND window, int x, int y) {
    const LPARAM at = MAKELPARAM(x, y);
    ::SendMessageW(window, WM_LBUTTONDOWN, MK_LBUTTON, at);
    if (::IsWindow(window)) ::SendMessageW(window, WM_LBUTTONUP, 0, at);
  }
  /// A key press as the keyboard gives it: characters follow by themselves.
  static void PressKey(HWND window, std::uint16_t key) {
    ::PostMessageW(window, WM_KEYDOWN, key, 1);
    ::PostMessageW(window, WM_KEYUP, key, static_cast<LPARAM>(0xC0000001));
    Pump();
  }
  static void Type(HWND window, TStringView text) {
    for (const char16_t c : text) ::SendMessageW(window, WM_CHAR, c, 1);
  }
  static TRect ScreenRect(HWND window) {
    RECT rect{};
    ::GetWindowRect(window, &rect);
    return TRect(rect);
  }
  static TString WindowText(HWND window) {
    TString text(256, u'\0');
    text.resize(static_cast<std::size_t>(::GetWindowTextW(window, WBuffer(text), 256)));
    return text;
  }
  /// Keeps a picture where the developer asked for it.
  static void Keep(const TBitmap& picture, TStringView name) {
    if (const char* folder = std::getenv("OAK_SCREENSHOTS"))
      SavePng(picture, FromUtf8(folder) + u"\\" + TString(name) + u".png");
  }

 private:
  std::unique_ptr<TWidgetSet> fFormer;
};

/// A visible form of a fixed place.
class TTestForm : public TForm {
 public:
  TTestForm() {
    SetPosition(poDesigned);
    TForm::SetBounds(60, 40, 420, 300);
  }
};

}  // namespace tests
}  // namespace oak
