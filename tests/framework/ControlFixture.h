// What the tests of controls share: a headless screen and a control that notes what happens to it.
#pragma once

#include <gmock/gmock.h>

#include "oak/framework/Events.h"
#include "tests/framework/GeometryPrinting.h"
#include "tests/framework/HeadlessProbe.h"

namespace oak::tests {

class TScreenTest : public ::testing::Test {
 protected:
  testkit::THeadlessScreen screen{FailWith};
};

/// A control that writes down what it is told. Protected operations are public here.
class TWatchedControl : public TCustomControl {
 public:
  explicit TWatchedControl(TWinControl* parent, TLog* log = nullptr, std::string name = {})
      : fLog(log), fName(std::move(name)) {
    TCustomControl::SetBounds(0, 0, 50, 20);
    if (parent) SetParent(parent);
  }
  ~TWatchedControl() override { BeginDestroy(); }

  std::function<void(TMessage&)> OnWndProc;
  std::function<void()> OnCreateWnd;
  int Painted = 0;

 protected:
  void CreateWnd() override {
    TCustomControl::CreateWnd();
    FireEvent(OnCreateWnd);
  }
  void DoEnter() override {
    Note("enter");
    TCustomControl::DoEnter();
  }
  void DoExit() override {
    Note("exit");
    TCustomControl::DoExit();
  }
  void WndProc(TMessage& message) override {
    Note("message " + std::to_string(message.Msg - FirstPrivateMessage));
    FireEvent(OnWndProc, message);
  }
  void CaptureLost() override { Note("capture lost"); }
  void Paint(TCanvas& canvas, const TRect& clip) override {
    ++Painted;
    TCustomControl::Paint(canvas, clip);
  }

 private:
  void Note(const std::string& text) {
    if (fLog) fLog->push_back(fName.empty() ? text : fName + " " + text);
  }
  TLog* fLog;
  std::string fName;
};

inline TRect BoundsOf(const TControl& control) { return control.GetBoundsRect(); }

}  // namespace oak::tests
