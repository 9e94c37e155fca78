// The headless desktop: a widget set without a screen, the same at every run.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "oak/framework/WidgetSet.h"
#include "oak/framework/headless/HeadlessInput.h"
#include "oak/framework/headless/HeadlessWindow.h"
#include "oak/platform/WindowPost.h"

namespace oak {

class THeadlessForm;
class THeadlessHint;
class THeadlessMenuSession;
class IHeadlessInputFilter;
class TGraphicsSystem;

/// A desktop in memory. Windows have places, order, focus and capture; input, posted messages,
/// timers and paints go through one queue; what is drawn is kept as a list of operations. Time is
/// that of Api().GetTickCount64. Nothing depends on the machine: the same program and the same
/// input give the same picture.
///
/// Input is queued and then, unless SetAutoRun(false) was called,
/// all that waits is processed before the call returns. Calls that wait for the user (modal forms,
/// menus, drags) take their input from the queue as well: queue it, or actions that make it, before
/// (Later). All on the main thread but for what says otherwise.
class THeadlessDesktop : public TWidgetSet, private IWindowPost {
 public:
  /// One monitor of 1920 by 1080 pixels at 96 pixels per inch with a task bar of 40 pixels below.
  THeadlessDesktop();
  ~THeadlessDesktop() override;
  THeadlessDesktop(const THeadlessDesktop&) = delete;
  THeadlessDesktop& operator=(const THeadlessDesktop&) = delete;

  // --- TWidgetSet ------------------------------------------------------------
  std::unique_ptr<IControlPeer> CreateControl(TWinControl& control) override;
  std::unique_ptr<IFormPeer> CreateForm(TCustomForm& form) override;
  std::unique_ptr<IListViewPeer> CreateListView(TCustomListView& view) override;
  std::unique_ptr<ITreeViewPeer> CreateTreeView(TCustomTreeView& view) override;
  std::unique_ptr<IEditPeer> CreateEdit(TCustomEdit& edit) override;
  std::unique_ptr<IComboPeer> CreateCombo(TCustomComboBoxEx& combo) override;
  std::unique_ptr<ITimerPeer> CreateTimer(unsigned milliseconds,
                                          std::function<void()> tick) override;
  bool ProcessMessage() override;
  void WaitMessage() override;
  void WakeUp() override;
  std::vector<TMonitorInfo> GetMonitors() const override { return fMonitors; }
  TPoint GetCursorPos() const override { return fCursorPos; }
  void SetCursorPos(TPoint point) override;
  void SetGlobalCursor(TCursor cursor) override { fGlobalCursor = cursor; }
  TShiftState GetShiftState() const override;
  bool IsKeyDown(std::uint16_t key) const override;
  int GetSystemMetric(int index, int pixelsPerInch) const override;
  TColor GetSysColor(TColor systemColor) const override;
  bool IsDarkMode() const override { return false; }
  TFont GetSystemFont(int pixelsPerInch) const override;
  TSize MeasureText(const TFont& font, int pixelsPerInch, TStringView text) const override;
  TWinControl* ControlOf(HWND window) const override;
  HWND GetFocusedWindow() const override;
  bool IsWindow(HWND window) const override { return FindWindow(window) != nullptr; }
  HMENU CreateMenu(const TMenuItem& root) override;
  void DestroyMenu(HMENU menu) override;
  UINT TrackMenu(HMENU menu, TPoint screen, TWinControl* owner, HWND ownerWindow) override;
  HWND CreateHiddenWindow(std::function<void(TMessage&)> procedure) override;
  void DestroyHiddenWindow(HWND window) override;
  LRESULT DefaultProc(HWND window, const TMessage& message) override;
  int ShowDialog(const TMessageDialog& dialog) override;
  bool GetClipboardText(TString* text) override;
  bool SetClipboardText(const TString& text) override;
  HRESULT DoDragDrop(TWinControl& control, IDataObject* data, IDropSource* source, DWORD allowed,
                     DWORD* effect) override;

  // --- running ---------------------------------------------------------------
  /// Processes all that waits: messages, input, due timers, paints. Raises EInvalidOperation when
  /// there is no end after 1,000,000 messages.
  void Run();
  /// Whether input calls run what they queue. Default true.
  void SetAutoRun(bool value) { fAutoRun = value; }
  /// Queues an action among the input: it runs when its turn comes, inside of whatever loop.
  void Later(std::function<void()> action);
  /// Ticks at which the next timer is due; false if none runs.
  bool GetNextTimer(std::uint64_t* ticks) const;
  /// Nobody sits before the desktop: a loop that waits for input which nobody can give any more
  /// (see Complaints) ends with EInvalidOperation, a menu or a drag is cancelled. Default false.
  void SetUnattended(bool value) { fUnattended = value; }
  bool GetUnattended() const { return fUnattended; }
  /// Called in such a loop when nothing waits; true if it brought something about, the time of the
  /// next timer for instance.
  std::function<bool()> OnWait;
  /// What went wrong when nobody was there to see it: unanswered dialogs, loops that would never
  /// end. Empty if all is well.
  const std::vector<TString>& GetComplaints() const { return fComplaints; }
  void Complain(TString text) { fComplaints.push_back(std::move(text)); }
  void ClearComplaints() { fComplaints.clear(); }

  // --- input; screen pixels --------------------------------------------------
  void MouseMove(TPoint point);
  /// Presses a button where the pointer is.
  void MouseDown(TMouseButton button = mbLeft, bool doubleClick = false);
  void MouseUp(TMouseButton button = mbLeft);
  /// Moves there, presses and releases. Two clicks are a double click by DoubleClick only, however
  /// close they are. `shift` holds keys down meanwhile, here and below.
  void Click(TPoint point, TShiftState shift = {}, TMouseButton button = mbLeft);
  void DoubleClick(TPoint point, TShiftState shift = {});
  void RightClick(TPoint point, TShiftState shift = {}) { Click(point, shift, mbRight); }
  /// Turns the wheel where the pointer is; positive is away from the user, or right if `side`.
  void Wheel(int notches, TShiftState shift = {}, bool side = false);
  /// A side button of the mouse where the pointer is.
  void ExtraButton(bool forward);
  /// Press at `from`, moves in `steps` to `to`, release.
  void Drag(TPoint from, TPoint to, TShiftState shift = {}, TMouseButton button = mbLeft,
            int steps = 8);
  void KeyDown(std::uint16_t key);
  void KeyUp(std::uint16_t key);
  /// Down and up. `key` is a virtual key: letters are u'A' to u'Z'.
  void KeyPress(std::uint16_t key, TShiftState shift = {});
  /// Types characters, with their keys where a keyboard has them. A line end is the return key.
  void TypeText(TStringView text);

  // The same with client pixels of a control.
  void Click(const TWinControl& control, TPoint point, TShiftState shift = {},
             TMouseButton button = mbLeft);
  void DoubleClick(const TWinControl& control, TPoint point, TShiftState shift = {});
  void RightClick(const TWinControl& control, TPoint point, TShiftState shift = {});
  void Drag(const TWinControl& from, TPoint fromPoint, const TWinControl& to, TPoint toPoint,
            TShiftState shift = {}, TMouseButton button = mbLeft);

  // What a user does to a window by its frame.
  void CloseWindow(TCustomForm& form);
  void ResizeWindow(TCustomForm& form, int width, int height);
  void MoveWindow(TCustomForm& form, int left, int top);
  void SetWindowState(TCustomForm& form, TWindowState state);
  void ActivateWindow(TCustomForm& form);

  // --- monitors --------------------------------------------------------------
  /// Replaces the monitors; the first one is the primary. Windows stay where they are.
  void SetMonitors(std::vector<TMonitorInfo> monitors);
  /// Moves a form to the upper left corner of a monitor's work area.
  void MoveToMonitor(TCustomForm& form, int monitor);
  /// Another density of a monitor; the forms on it are told.
  void SetPixelsPerInch(int monitor, int pixelsPerInch);
  int MonitorAt(TPoint point) const;
  int MonitorOf(const TRect& rect) const;

  // --- what is seen ----------------------------------------------------------
  /// Paints what is invalid, and nothing else of what waits.
  void Paint();
  /// The window at a screen point as the mouse finds it, or nil.
  THeadlessWindow* WindowAt(TPoint screen) const;
  THeadlessWindow* FindWindow(HWND handle) const;
  /// The window of a control, or nil.
  THeadlessWindow* WindowOf(const TWinControl& control) const;
  /// Top-level windows and popups, topmost last.
  const std::vector<THeadlessWindow*>& GetTopWindows() const { return fTops; }
  THeadlessWindow* GetActiveWindow() const { return fActive; }
  THeadlessWindow* GetFocusWindow() const { return fFocus; }
  THeadlessWindow* GetCaptureWindow() const { return fCapture; }
  /// The pointer's shape at its place.
  TCursor GetCursorShape() const;
  /// The hint that is shown; empty if none.
  TString GetHintText() const;
  std::size_t GetWindowCount() const { return fWindows.size(); }
  std::size_t GetTimerCount() const;
  /// Posted messages and input that wait.
  std::size_t GetPendingCount() const;

  // --- menus and dialogs -----------------------------------------------------
  /// Called when a menu opens, with the means to walk it and to choose; without an answer from it
  /// the menu takes the queued answers, then keys and mouse.
  std::function<void(THeadlessMenuSession&)> OnMenu;
  /// The next menu that opens is answered with this path of captions, "View|Details"; an empty one
  /// cancels it.
  void QueueMenuChoice(TString path) { fMenuChoices.push_back(std::move(path)); }
  /// The menu that is open, or nil.
  THeadlessMenuSession* GetMenuSession() const { return fMenuSession; }
  /// Answers dialogs; asked before the queued answers. 0: no answer.
  std::function<int(const TMessageDialog&)> OnDialog;
  void QueueDialogAnswer(int result) { fDialogAnswers.push_back(result); }
  struct TShownDialog {
    TMessageDialog Dialog;
    int Result = 0;
  };
  /// All dialogs so far, with what they were answered.
  const std::vector<TShownDialog>& GetDialogs() const { return fDialogs; }
  /// Answers and choices that nobody asked for.
  std::size_t GetUnusedAnswers() const { return fMenuChoices.size() + fDialogAnswers.size(); }

  // --- for windows and loops -------------------------------------------------
  HWND Register(THeadlessWindow& window);
  void Unregister(THeadlessWindow& window);
  void EnterTop(THeadlessWindow& window);
  void LeaveTop(THeadlessWindow& window);
  void OrderTop(THeadlessWindow& window, bool top);
  bool SetFocusTo(THeadlessWindow* window);
  void SetCaptureTo(THeadlessWindow* window);
  /// Takes the mouse from the window that holds it, and tells it.
  void EndCapture();
  void Activate(THeadlessWindow* window);
  /// Any thread.
  bool PostToWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept override;
  void StartWindowTimer(HWND window, int id, unsigned milliseconds);
  void StopWindowTimer(HWND window, int id);
  /// Something shown there changed place or visibility: pointer and focus may be elsewhere now.
  void WindowHidden(THeadlessWindow& window);
  void StopHint();
  /// Processes messages until `until` gives true. `what` names the loop in a complaint. Raises
  /// EInvalidOperation if unattended and nothing can come any more.
  void RunLoop(const std::function<bool()>& until, TStringView what);
  /// Takes input instead of windows as long as it is set; gives the former one.
  IHeadlessInputFilter* SetInputFilter(IHeadlessInputFilter* filter);
  void SetMenuSession(THeadlessMenuSession* session) { fMenuSession = session; }
  bool TakeMenuChoice(TString* path);

 private:
  struct TPosted {
    HWND Window;
    UINT Message;
    WPARAM WParam;
    LPARAM LParam;
  };
  struct TTimerEntry;
  class TTimerHandle;
  using TTimerRef = std::shared_ptr<TTimerEntry>;

  void Queue(THeadlessInput input);
  void RunQueued();
  bool RunPosted();
  bool RunQueuedProcedures();
  bool RunInput();
  bool RunTimer();
  bool RunActivation();
  bool PaintNext();
  THeadlessWindow* NextToPaint() const;
  void TellDensity();
  void StopWindowTimers(HWND window);
  bool HasWork() const;
  void DispatchInput(const THeadlessInput& input);
  void DispatchMouseInput(const THeadlessInput& input);
  void DispatchKeyInput(const THeadlessInput& input);
  void NoteInput(const THeadlessInput& input);
  void HoverOver(THeadlessWindow* window);
  void SendMouse(THeadlessWindow& window, TMouseEvent& event, bool captured);
  bool SystemKey(std::uint16_t key, TShiftState shift);
  void QueueMove(TPoint point);
  void QueueShift(TShiftState shift, bool down);
  void UseFrame(TCustomForm& form, const std::function<void(THeadlessForm&)>& action);
  THeadlessWindow* ChildAt(THeadlessWindow& window, TPoint screen) const;
  THeadlessWindow* NextToActivate() const;
  void StartHint();
  void ShowHint();
  TTimerRef NextTimer() const;
  std::uint64_t Now() const;
  void WaitAtMost(DWORD milliseconds);
  bool CanGoOn(std::uint64_t idleRounds);
  TTimerRef AddTimer(unsigned milliseconds, HWND window, int id, std::function<void()> tick);
  THeadlessForm& FormPeerOf(TCustomForm& form) const;

  std::vector<TMonitorInfo> fMonitors;
  std::unordered_map<HWND, THeadlessWindow*> fWindows;
  std::vector<THeadlessWindow*> fTops;
  std::uintptr_t fLastHandle = 0x10000;
  THeadlessWindow* fActive = nullptr;
  THeadlessWindow* fFocus = nullptr;
  THeadlessWindow* fCapture = nullptr;
  THeadlessWindow* fHover = nullptr;
  bool fActivationDue = false;

  std::deque<THeadlessInput> fInput;
  mutable std::mutex fPostLock;
  std::deque<TPosted> fPosted;
  std::vector<TTimerRef> fTimers;
  std::uint64_t fLastTimer = 0;
  IHeadlessInputFilter* fFilter = nullptr;
  bool fAutoRun = true;
  bool fUnattended = false;

  TPoint fCursorPos;
  TCursor fGlobalCursor = crDefault;
  std::bitset<256> fKeys;
  TShiftState fButtons;
  TTimerRef fHintTimer;
  std::unique_ptr<THeadlessHint> fHint;

  THeadlessMenuSession* fMenuSession = nullptr;
  std::deque<TString> fMenuChoices;
  std::deque<int> fDialogAnswers;
  std::vector<TShownDialog> fDialogs;
  std::vector<TString> fComplaints;
  TString fClipboard;  // where the process has none
  bool fHasClipboard = false;
  Ref<IDataObject> fClipboardData;  // our text on the clipboard of the process
  TGraphicsSystem* fFormerGraphics;
  IWindowPost* fFormerPost;
};

/// Makes the set; that of systems without a screen of their own.
std::unique_ptr<TWidgetSet> CreateHeadlessWidgetSet();

}  // namespace oak
