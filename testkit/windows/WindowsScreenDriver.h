// The system's windows as a screen for a driver: input by SendInput, answers from the windows.
#pragma once

#include <deque>
#include <functional>
#include <memory>

#include "oak/framework/Application.h"
#include "oak/framework/WidgetSet.h"
#include "oak/platform/windows/WindowsHeaders.h"
#include "testkit/ScreenDriver.h"

namespace oak::testkit {

/// Input is given step by step, each when nothing waits any more: by the driver's own loop, and by
/// a timer while a loop of the system runs (a menu, a drag, the native list that waits for a drag).
class TWindowsScreenDriver final : public IScreenDriver {
 public:
  explicit TWindowsScreenDriver(TScreenFailure onFailure);
  ~TWindowsScreenDriver() override;

  // --- the user
  void MouseMove(const TWinControl& control, TPoint point) override;
  void Click(const TWinControl& control, TPoint point, TShiftState shift,
             TMouseButton button) override;
  void DoubleClick(const TWinControl& control, TPoint point) override;
  void Drag(const TWinControl& from, TPoint fromPoint, const TWinControl& to, TPoint toPoint,
            TShiftState shift, TMouseButton button) override;
  void MouseDown(const TWinControl& control, TPoint point) override;
  void MouseUp() override;
  void Wheel(const TWinControl& control, TPoint point, int notches) override;
  void ExtraButton(const TWinControl& control, TPoint point, bool forward) override;
  void KeyPress(std::uint16_t key, TShiftState shift) override;
  void TypeText(TStringView text) override;
  void ResizeWindow(TCustomForm& form, int width, int height) override;
  void SetWindowState(TCustomForm& form, TWindowState state) override;
  void CloseWindow(TCustomForm& form) override;
  void SetPixelsPerInch(TCustomForm& form, int pixelsPerInch) override;
  void QueueMenuChoice(TString path) override { fMenuChoices.push_back(std::move(path)); }
  void QueueDialogAnswer(int result) override { fDialogAnswers.push_back(result); }
  void Later(std::function<void()> action) override;

  // --- time
  void Drain() override;
  void Advance(unsigned milliseconds) override;

  // --- the eye
  TString TextOf(const TWinControl& control) override;
  TWinControl* Focused() override;
  bool IsShown(const TWinControl& control) override;
  TRect BoundsOf(const TWinControl& control) override;
  void Paint() override;
  int CountRows(TCustomListView& list) override {
    return static_cast<int>(::SendMessageW(list.GetHandle(), LVM_GETITEMCOUNT, 0, 0));
  }
  TShownRow RowOf(TCustomListView& list, int index) override;
  std::vector<TShownColumn> ColumnsOf(TCustomListView& list) override;
  std::vector<TShownNode> NodesOf(TCustomTreeView& tree) override;
  int ImageOf(TCustomComboBoxEx& combo) override;
  int CountWindows() override;
  std::vector<TString> TakeExceptions() override { return std::exchange(fExceptions, {}); }
  bool IsNative() const override { return true; }

 private:
  using TStep = std::function<void()>;

  static void CALLBACK Tick(HWND, UINT, UINT_PTR, DWORD);
  void RunTick();
  void Step(TStep step) { fSteps.push_back(std::move(step)); }
  void StepLater();
  void StepMouse(DWORD flags, int data = 0);
  void StepMove(TPoint screen);
  void StepKey(std::uint16_t key, bool down);
  void StepShift(TShiftState shift, bool down);
  void Run();
  bool RunStep();
  bool AnswerMenu();
  bool AnswerDialog();
  void Watch();
  void Fail(const std::string& text);

  static TWindowsScreenDriver* gDriver;
  const TScreenFailure fOnFailure;
  std::unique_ptr<TWidgetSet> fFormer;
  TApplication::TExceptionEvent fFormerOnException;
  std::deque<TStep> fSteps;
  std::deque<TString> fMenuChoices;
  std::deque<int> fDialogAnswers;
  std::vector<std::function<void()>> fLater;
  std::vector<TString> fExceptions;
  HWND fMenuSeen = nullptr;
  HWND fDialogSeen = nullptr;
  DWORD fTime;  // of the next input: gaps tell clicks from double clicks
  UINT_PTR fTimer = 0;
  int fIdleTicks = 0;
  int fTicksOfDrain = 0;
  bool fRunning = false;
};

}  // namespace oak::testkit
