// A control that writes down what its window reports.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "oak/framework/Canvas.h"
#include "oak/framework/Forms.h"
#include "oak/framework/StdCtrls.h"
#include "testkit/HeadlessForms.h"

namespace oak::tests {

inline void FailWith(const std::string& text) { ADD_FAILURE() << text; }

/// A line for each event, "Name key 65 shift".
class TProbe : public TCustomControl {
 public:
  TProbe(TWinControl& parent, const TRect& bounds, std::string name,
         std::vector<std::string>* log = nullptr)
      : TCustomControl(nullptr), fName(std::move(name)), fLog(log) {
    SetBounds(bounds.Left, bounds.Top, bounds.Width(), bounds.Height());
    SetParent(&parent);
    SetTabStop(true);
  }
  ~TProbe() override { BeginDestroy(); }

  /// Called with each line before it is written.
  std::function<void(const std::string& line)> OnLine;
  std::function<void(TMessage& message)> OnProc;

 protected:
  void MouseDown(TMouseButton, TShiftState, int, int) override {
    if (Write("down") && CanFocus()) SetFocus();
  }
  void MouseMove(TShiftState, int, int) override { Write("move"); }
  void Click() override { Write("click"); }
  void KeyDown(std::uint16_t& key, TShiftState shift) override {
    Write("key " + std::to_string(key) + (shift.Contains(ssShift) ? " shift" : ""));
  }
  void KeyUp(std::uint16_t& key, TShiftState) override { Write("keyup " + std::to_string(key)); }
  void KeyPress(char16_t& key) override { Write("char " + ToUtf8(TStringView(&key, 1))); }
  void WndProc(TMessage& message) override {
    const TLifeGuard guard = GetLifeGuard();
    Write("message " + std::to_string(message.Msg) + " " + std::to_string(message.WParam));
    if (guard.IsAlive() && OnProc) OnProc(message);
  }
  void Paint(TCanvas& canvas, const TRect& clip) override {
    ++Paints;
    LastClip = clip;
    canvas.TextOut(0, 0, GetCaption());
  }

 public:
  int Paints = 0;
  TRect LastClip;

 private:
  bool Write(const std::string& line) {
    if (fLog) fLog->push_back(fName + " " + line);
    const TLifeGuard guard = GetLifeGuard();
    if (const auto hook = OnLine) hook(line);
    return guard.IsAlive();
  }

  const std::string fName;
  std::vector<std::string>* fLog;
};

/// A form of 400 by 300 pixels at 100, 100. Its client area begins at 108, 131.
class TProbeForm : public TForm {
 public:
  explicit TProbeForm(const TString& caption = u"Probe") {
    SetCaption(caption);
    SetBounds(100, 100, 400, 300);
  }
  ~TProbeForm() override { BeginDestroy(); }
};

using TLog = std::vector<std::string>;

/// A form on a desktop of its own.
class THeadlessTest : public ::testing::Test {
 protected:
  testkit::THeadlessScreen screen{FailWith};
  TProbeForm form;
  TLog log;
};

/// The lines so far; the log begins anew.
inline TLog Take(TLog& log) { return std::exchange(log, {}); }

}  // namespace oak::tests
