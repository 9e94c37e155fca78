// The system's windows as a screen to test controls on: input by SendInput, answers from the
// windows.
//
// Input is given step by step, each when nothing waits any more: by the driver's own loop, and by a
// timer while a loop of the system runs (a menu, a drag, the native list that waits for a drag).
#include <gtest/gtest.h>

#include <array>
#include <deque>

#include "oak/framework/Application.h"
#include "oak/framework/win32/System.h"
#include "oak/platform/windows/WindowsHeaders.h"
#include "tests/controls/ScreenDriver.h"
#include "tests/framework/windows/OwnDesktop.h"

namespace oak::tests {
namespace {

constexpr UINT GetMenuOfWindow = 0x01E1;  // MN_GETHMENU
constexpr int PatienceInSteps = 500;

TString PlainCaption(TString text) {
  text = text.substr(0, text.find(u'\t'));
  std::erase(text, u'&');
  return text;
}

int CountTopWindow(HWND window) {
  int count = 0;
  const auto one = [](HWND, LPARAM counter) -> BOOL {
    ++*reinterpret_cast<int*>(counter);
    return TRUE;
  };
  DWORD process = 0;
  ::GetWindowThreadProcessId(window, &process);
  if (process != ::GetCurrentProcessId()) return 0;
  ::EnumChildWindows(window, one, reinterpret_cast<LPARAM>(&count));
  return count + 1;
}

class TWindowsDriver final : public IScreenDriver {
 public:
  TWindowsDriver();
  ~TWindowsDriver() override;

  // --- the user
  void MoveMouse(const TWinControl& control, TPoint point) override;
  void Click(const TWinControl& control, TPoint point, TShiftState shift,
             TMouseButton button) override;
  void DoubleClick(const TWinControl& control, TPoint point) override;
  void Drag(const TWinControl& from, TPoint fromPoint, const TWinControl& to, TPoint toPoint,
            TShiftState shift, TMouseButton button) override;
  void PressMouse(const TWinControl& control, TPoint point) override;
  void ReleaseMouse() override;
  void Wheel(const TWinControl& control, TPoint point, int notches) override;
  void ExtraClick(const TWinControl& control, TPoint point, bool forward) override;
  void Key(std::uint16_t key, TShiftState shift) override;
  void Type(TStringView text) override;
  void ResizeForm(TCustomForm& form, int width, int height) override;
  void SetFormState(TCustomForm& form, TWindowState state) override;
  void CloseForm(TCustomForm& form) override;
  void SetDensity(TCustomForm& form, int pixelsPerInch) override;
  void QueueMenuChoice(TString path) override { fMenuChoices.push_back(std::move(path)); }
  void Later(std::function<void()> action) override;

  // --- time
  void Pump() override;
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
  void Step(TStep step) { fSteps.push_back(std::move(step)); }
  void StepMouse(DWORD flags, int data = 0);
  void StepMove(TPoint screen);
  void StepKey(std::uint16_t key, bool down);
  void StepShift(TShiftState shift, bool down);
  void Run();
  bool RunStep();
  bool AnswerMenu();
  void Watch();

  static TWindowsDriver* gDriver;
  std::unique_ptr<TWidgetSet> fFormer;
  std::deque<TStep> fSteps;
  std::deque<TString> fMenuChoices;
  std::vector<std::function<void()>> fLater;
  std::vector<TString> fExceptions;
  HWND fMenuSeen = nullptr;
  DWORD fTime;  // of the next input: gaps tell clicks from double clicks
  UINT_PTR fTimer = 0;
  int fIdleTicks = 0;
  bool fRunning = false;
};

TWindowsDriver* TWindowsDriver::gDriver = nullptr;

TWindowsDriver::TWindowsDriver() : fTime(::GetTickCount() + 1) {
  EnterOwnDesktop();
  fFormer = SetWidgetSet(CreateSystemWidgetSet());
  gDriver = this;
  Application().OnException = [this](TObject*, const std::exception_ptr& exception) {
    fExceptions.push_back(ExceptionText(exception));
  };
}

TWindowsDriver::~TWindowsDriver() {
  Pump();
  EXPECT_TRUE(fMenuChoices.empty()) << "a menu was answered that did not open";
  for (const TString& text : fExceptions) ADD_FAILURE() << ToUtf8(text);
  Application().OnException = nullptr;
  SetWidgetSet(std::move(fFormer));
  gDriver = nullptr;
}

// --- steps --------------------------------------------------------------------------------------

void CALLBACK TWindowsDriver::Tick(HWND, UINT, UINT_PTR, DWORD) {
  if (gDriver && !gDriver->RunStep()) gDriver->Watch();
}

// A loop that nobody ends any more would hold up the tests.
void TWindowsDriver::Watch() {
  if (++fIdleTicks < PatienceInSteps) return;
  fIdleTicks = 0;
  ADD_FAILURE() << "a loop waits for a user who does not come";
  if (const HWND capture = ::GetCapture()) ::PostMessageW(capture, WM_CANCELMODE, 0, 0);
  Step([this] { StepKey(VK_ESCAPE, true); });
}

bool TWindowsDriver::RunStep() {
  if (AnswerMenu()) return true;
  if (fSteps.empty()) return false;
  fIdleTicks = 0;
  const TStep step = std::move(fSteps.front());
  fSteps.pop_front();
  step();
  return true;
}

void TWindowsDriver::Later(std::function<void()> action) {
  if (fRunning)
    Step(std::move(action));
  else
    fLater.push_back(std::move(action));
}

void TWindowsDriver::Run() {
  for (std::function<void()>& action : std::exchange(fLater, {})) Step(std::move(action));
  // Within a step: the loop that waits at the moment goes on with the new ones.
  if (std::exchange(fRunning, true)) return;
  if (!fTimer) fTimer = ::SetTimer(nullptr, 0, USER_TIMER_MINIMUM, &TWindowsDriver::Tick);
  do Pump();
  while (RunStep());
  ::KillTimer(nullptr, std::exchange(fTimer, 0));
  fRunning = false;
}

void TWindowsDriver::Pump() { Application().ProcessMessages(); }

void TWindowsDriver::Advance(unsigned milliseconds) {
  const ULONGLONG end = ::GetTickCount64() + milliseconds;
  fTime += milliseconds;
  do {
    Pump();
    const ULONGLONG now = ::GetTickCount64();
    if (now >= end) break;
    ::MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(end - now), QS_ALLINPUT,
                                  MWMO_INPUTAVAILABLE);
  } while (true);
}

void TWindowsDriver::StepMouse(DWORD flags, int data) {
  const DWORD time = ++fTime;
  Step([=] {
    INPUT input{};
    input.type = INPUT_MOUSE;
    input.mi.dwFlags = flags;
    input.mi.mouseData = static_cast<DWORD>(data);
    input.mi.time = time;
    ::SendInput(1, &input, sizeof input);
  });
}

void TWindowsDriver::StepMove(TPoint screen) {
  Step([=] { ::SetCursorPos(screen.X, screen.Y); });
}

void TWindowsDriver::StepKey(std::uint16_t key, bool down) {
  const DWORD time = ++fTime;
  Step([=] {
    INPUT input{};
    input.type = INPUT_KEYBOARD;
    input.ki.wVk = key;
    input.ki.wScan = static_cast<WORD>(::MapVirtualKeyW(key, MAPVK_VK_TO_VSC));
    input.ki.dwFlags = down ? 0 : KEYEVENTF_KEYUP;
    input.ki.time = time;
    ::SendInput(1, &input, sizeof input);
  });
}

void TWindowsDriver::StepShift(TShiftState shift, bool down) {
  if (shift.Contains(ssCtrl)) StepKey(VK_CONTROL, down);
  if (shift.Contains(ssShift)) StepKey(VK_SHIFT, down);
  if (shift.Contains(ssAlt)) StepKey(VK_MENU, down);
}

// --- the user -----------------------------------------------------------------------------------

constexpr std::array<std::array<DWORD, 2>, 3> ButtonFlags{
    {{MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP},
     {MOUSEEVENTF_RIGHTDOWN, MOUSEEVENTF_RIGHTUP},
     {MOUSEEVENTF_MIDDLEDOWN, MOUSEEVENTF_MIDDLEUP}}};

void TWindowsDriver::MoveMouse(const TWinControl& control, TPoint point) {
  StepMove(control.ClientToScreen(point));
  Run();
}

void TWindowsDriver::Click(const TWinControl& control, TPoint point, TShiftState shift,
                           TMouseButton button) {
  constexpr DWORD pause = 2000;
  fTime += pause;
  StepMove(control.ClientToScreen(point));
  StepShift(shift, true);
  StepMouse(ButtonFlags[button][0]);
  StepMouse(ButtonFlags[button][1]);
  StepShift(shift, false);
  Run();
}

void TWindowsDriver::DoubleClick(const TWinControl& control, TPoint point) {
  Click(control, point, {}, mbLeft);
  StepMouse(MOUSEEVENTF_LEFTDOWN);
  StepMouse(MOUSEEVENTF_LEFTUP);
  Run();
}

void TWindowsDriver::Drag(const TWinControl& from, TPoint fromPoint, const TWinControl& to,
                          TPoint toPoint, TShiftState shift, TMouseButton button) {
  constexpr int moves = 8;
  constexpr DWORD pause = 2000;
  const TPoint start = from.ClientToScreen(fromPoint);
  const TPoint end = to.ClientToScreen(toPoint);
  fTime += pause;
  StepMove(start);
  StepShift(shift, true);
  StepMouse(ButtonFlags[button][0]);
  // A real mouse is still over the control when the drag begins.
  StepMove({start.X + ::GetSystemMetrics(SM_CXDRAG) + 2, start.Y + 1});
  for (int i = 1; i <= moves; ++i)
    StepMove({start.X + (end.X - start.X) * i / moves, start.Y + (end.Y - start.Y) * i / moves});
  StepMouse(ButtonFlags[button][1]);
  StepShift(shift, false);
  Run();
}

void TWindowsDriver::PressMouse(const TWinControl& control, TPoint point) {
  StepMove(control.ClientToScreen(point));
  StepMouse(MOUSEEVENTF_LEFTDOWN);
  Run();
}

void TWindowsDriver::ReleaseMouse() {
  StepMouse(MOUSEEVENTF_LEFTUP);
  Run();
}

void TWindowsDriver::Wheel(const TWinControl& control, TPoint point, int notches) {
  StepMove(control.ClientToScreen(point));
  StepMouse(MOUSEEVENTF_WHEEL, notches * WHEEL_DELTA);
  Run();
}

void TWindowsDriver::ExtraClick(const TWinControl& control, TPoint point, bool forward) {
  StepMove(control.ClientToScreen(point));
  StepMouse(MOUSEEVENTF_XDOWN, forward ? XBUTTON2 : XBUTTON1);
  StepMouse(MOUSEEVENTF_XUP, forward ? XBUTTON2 : XBUTTON1);
  Run();
}

void TWindowsDriver::Key(std::uint16_t key, TShiftState shift) {
  StepShift(shift, true);
  StepKey(key, true);
  StepKey(key, false);
  StepShift(shift, false);
  Run();
}

void TWindowsDriver::Type(TStringView text) {
  for (const char16_t character : text) {
    const SHORT key = ::VkKeyScanW(static_cast<WCHAR>(character));
    EXPECT_NE(key, -1) << "no key for " << static_cast<int>(character);
    const bool shift = (key & 0x100) != 0;
    if (shift) StepKey(VK_SHIFT, true);
    StepKey(static_cast<std::uint16_t>(key & 0xFF), true);
    StepKey(static_cast<std::uint16_t>(key & 0xFF), false);
    if (shift) StepKey(VK_SHIFT, false);
  }
  Run();
}

void TWindowsDriver::ResizeForm(TCustomForm& form, int width, int height) {
  ::SetWindowPos(form.GetHandle(), nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER);
  Pump();
}

void TWindowsDriver::SetFormState(TCustomForm& form, TWindowState state) {
  constexpr WPARAM commands[] = {SC_RESTORE, SC_MINIMIZE, SC_MAXIMIZE};
  ::SendMessageW(form.GetHandle(), WM_SYSCOMMAND, commands[state], 0);
  Pump();
}

// What the system sends, with the place that it suggests.
void TWindowsDriver::SetDensity(TCustomForm& form, int pixelsPerInch) {
  RECT place = form.GetBoundsRect();
  const auto scaled = [&](LONG length) {
    return static_cast<LONG>(MulDiv(length, pixelsPerInch, form.GetPixelsPerInch()));
  };
  place.right = place.left + scaled(place.right - place.left);
  place.bottom = place.top + scaled(place.bottom - place.top);
  ::SendMessageW(form.GetHandle(), WM_DPICHANGED, MAKEWPARAM(pixelsPerInch, pixelsPerInch),
                 reinterpret_cast<LPARAM>(&place));
  Pump();
}

void TWindowsDriver::CloseForm(TCustomForm& form) {
  ::SendMessageW(form.GetHandle(), WM_SYSCOMMAND, SC_CLOSE, 0);
  Pump();
}

// --- menus --------------------------------------------------------------------------------------

HWND OpenMenuWindow() {
  HWND window = nullptr;
  while ((window = ::FindWindowExW(nullptr, window, L"#32768", nullptr))) {
    DWORD process = 0;
    ::GetWindowThreadProcessId(window, &process);
    if (process == ::GetCurrentProcessId() && ::IsWindowVisible(window)) return window;
  }
  return nullptr;
}

int FindCaptionIn(HMENU menu, const TString& caption) {
  for (int i = 0; i < ::GetMenuItemCount(menu); ++i) {
    TString text(256, u'\0');
    const int length =
        ::GetMenuStringW(menu, static_cast<UINT>(i), WBuffer(text), 256, MF_BYPOSITION);
    text.resize(static_cast<std::size_t>(length));
    if (SameText(PlainCaption(text), caption)) return i;
  }
  return -1;
}

// Clicks through the path of the next choice, one menu after the other.
bool TWindowsDriver::AnswerMenu() {
  const HWND window = OpenMenuWindow();
  if (!window) {
    fMenuSeen = nullptr;
    return false;
  }
  if (window == fMenuSeen || fMenuChoices.empty()) return false;
  fMenuSeen = window;
  TString& path = fMenuChoices.front();
  const TString caption = path.substr(0, path.find(u'|'));
  const bool last = caption.size() == path.size();
  const auto menu = reinterpret_cast<HMENU>(::SendMessageW(window, GetMenuOfWindow, 0, 0));
  const int index = caption.empty() ? -1 : FindCaptionIn(menu, caption);
  EXPECT_TRUE(caption.empty() || index >= 0) << "no such entry: " << ToUtf8(caption);
  std::deque<TStep> rest = std::exchange(fSteps, {});
  RECT place{};
  if (index < 0 || !::GetMenuItemRect(window, menu, static_cast<UINT>(index), &place)) {
    StepKey(VK_ESCAPE, true);
    StepKey(VK_ESCAPE, false);
  } else {
    StepMove(TRect(place).Center());
    StepMouse(MOUSEEVENTF_LEFTDOWN);
    StepMouse(MOUSEEVENTF_LEFTUP);
  }
  if (last || index < 0)
    fMenuChoices.pop_front();
  else
    path.erase(0, caption.size() + 1);
  fSteps.insert(fSteps.end(), std::make_move_iterator(rest.begin()),
                std::make_move_iterator(rest.end()));
  return true;
}

// --- the eye ------------------------------------------------------------------------------------

TString TWindowsDriver::TextOf(const TWinControl& control) {
  const HWND window = control.GetPeer()->GetHandle();
  if (const auto* combo = dynamic_cast<const TCustomComboBoxEx*>(&control))
    if (const HWND edit = combo->GetEditHandle()) return win32::TextOfWindow(edit);
  return win32::TextOfWindow(window);
}

TWinControl* TWindowsDriver::Focused() {
  for (HWND window = ::GetFocus(); window; window = ::GetAncestor(window, GA_PARENT))
    if (TWinControl* const control = WidgetSet().ControlOf(window)) return control;
  return nullptr;
}

bool TWindowsDriver::IsShown(const TWinControl& control) {
  if (!control.GetPeer()) return false;
  const HWND window = control.GetPeer()->GetHandle();
  return ::IsWindowVisible(window) && !::IsIconic(::GetAncestor(window, GA_ROOT));
}

TRect TWindowsDriver::BoundsOf(const TWinControl& control) {
  const HWND window = control.GetPeer()->GetHandle();
  RECT rect{};
  ::GetWindowRect(window, &rect);
  if (::GetWindowLongPtrW(window, GWL_STYLE) & WS_CHILD)
    ::MapWindowPoints(nullptr, ::GetAncestor(window, GA_PARENT), reinterpret_cast<POINT*>(&rect),
                      2);
  return TRect(rect);
}

void TWindowsDriver::Paint() {
  const auto paint = [](HWND window, LPARAM) -> BOOL {
    ::RedrawWindow(window, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    return TRUE;
  };
  ::EnumThreadWindows(::GetCurrentThreadId(), paint, 0);
}

// Bits of a row or node; the places of overlay and state image are the same in both.
TShownImages ImagesOf(UINT state, int image) {
  TShownImages images;
  images.Image = image;
  if (image < 0) return images;
  images.Overlay = static_cast<int>((state & LVIS_OVERLAYMASK) >> 8) - 1;
  images.Cut = (state & LVIS_CUT) != 0;
  return images;
}

TShownRow TWindowsDriver::RowOf(TCustomListView& list, int index) {
  const HWND window = list.GetHandle();
  const bool report = list.GetViewStyle() == vsReport;
  TShownRow row;
  const int columns = report ? list.Columns().GetCount() : 1;
  std::vector<int> order(static_cast<std::size_t>(columns));
  if (report)
    ::SendMessageW(window, LVM_GETCOLUMNORDERARRAY, order.size(),
                   reinterpret_cast<LPARAM>(order.data()));
  for (const int native : order) {
    TString text(512, u'\0');
    LVITEMW item{};
    item.iSubItem = native;
    item.pszText = WBuffer(text);
    item.cchTextMax = 512;
    const auto length = ::SendMessageW(window, LVM_GETITEMTEXTW, static_cast<WPARAM>(index),
                                       reinterpret_cast<LPARAM>(&item));
    row.Cells.push_back(text.substr(0, static_cast<std::size_t>(length)));
  }
  const auto state = ::SendMessageW(window, LVM_GETITEMSTATE, static_cast<WPARAM>(index),
                                    LVIS_SELECTED | LVIS_DROPHILITED | LVIS_FOCUSED);
  const bool focused = ::GetFocus() == window || ::IsChild(window, ::GetFocus());
  row.Marked = ((state & LVIS_SELECTED) && (focused || !list.GetHideSelection())) ||
               (state & LVIS_DROPHILITED);
  row.Focused = (state & LVIS_FOCUSED) && ::GetFocus() == window;
  LVITEMW item{};
  item.mask = LVIF_IMAGE | LVIF_STATE;
  item.iItem = index;
  item.stateMask = LVIS_CUT | LVIS_OVERLAYMASK | LVIS_STATEIMAGEMASK;
  ::SendMessageW(window, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  const bool icons = list.GetViewStyle() == vsIcon;
  const bool has = icons ? list.GetLargeImages() : list.GetSmallImages();
  row.Images = ImagesOf(item.state, has ? item.iImage : -1);
  const int mark = static_cast<int>((item.state & LVIS_STATEIMAGEMASK) >> 12);
  row.Checked = list.GetCheckboxes() && !list.GetStateImages() && mark == 2;
  if (list.GetStateImages()) row.Images.State = mark - 1;
  return row;
}

std::vector<TShownColumn> TWindowsDriver::ColumnsOf(TCustomListView& list) {
  const HWND header = list.GetHeaderHandle();
  const auto count = ::SendMessageW(header, HDM_GETITEMCOUNT, 0, 0);
  std::vector<TShownColumn> columns;
  for (WPARAM place = 0; place < static_cast<WPARAM>(count); ++place) {
    const auto index = ::SendMessageW(header, HDM_ORDERTOINDEX, place, 0);
    TString text(256, u'\0');
    HDITEMW item{};
    item.mask = HDI_TEXT | HDI_WIDTH | HDI_FORMAT;
    item.pszText = WBuffer(text);
    item.cchTextMax = 256;
    ::SendMessageW(header, HDM_GETITEMW, static_cast<WPARAM>(index),
                   reinterpret_cast<LPARAM>(&item));
    TShownColumn column;
    column.Caption = text.c_str();
    column.Width = item.cxy;
    if (item.fmt & HDF_SORTUP) column.Mark = TListSortMark::Up;
    if (item.fmt & HDF_SORTDOWN) column.Mark = TListSortMark::Down;
    columns.push_back(std::move(column));
  }
  return columns;
}

std::vector<TShownNode> TWindowsDriver::NodesOf(TCustomTreeView& tree) {
  const HWND window = tree.GetHandle();
  const auto ask = [&](WPARAM what, LRESULT entry) {
    return ::SendMessageW(window, TVM_GETNEXTITEM, what, static_cast<LPARAM>(entry));
  };
  RECT client{};
  ::GetClientRect(window, &client);
  std::vector<TShownNode> nodes;
  for (LRESULT entry = ask(TVGN_FIRSTVISIBLE, 0); entry; entry = ask(TVGN_NEXTVISIBLE, entry)) {
    RECT rect{};
    *reinterpret_cast<LRESULT*>(&rect) = entry;
    if (!::SendMessageW(window, TVM_GETITEMRECT, FALSE, reinterpret_cast<LPARAM>(&rect)) ||
        rect.bottom > client.bottom)
      break;
    TString text(512, u'\0');
    TVITEMW item{};
    item.mask =
        TVIF_TEXT | TVIF_STATE | TVIF_CHILDREN | TVIF_HANDLE | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    item.hItem = reinterpret_cast<HTREEITEM>(entry);
    item.stateMask = TVIS_EXPANDED | TVIS_SELECTED | TVIS_DROPHILITED | TVIS_CUT |
                     TVIS_OVERLAYMASK | TVIS_STATEIMAGEMASK;
    item.pszText = WBuffer(text);
    item.cchTextMax = 512;
    ::SendMessageW(window, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    TShownNode node;
    node.Text = FromW(item.pszText);
    node.HasButton = item.cChildren != 0 && tree.GetShowButtons();
    node.Expanded = node.HasButton && (item.state & TVIS_EXPANDED);
    const bool focused = ::GetFocus() == window || ::IsChild(window, ::GetFocus());
    node.Marked = ((item.state & TVIS_SELECTED) && (focused || !tree.GetHideSelection())) ||
                  (item.state & TVIS_DROPHILITED);
    const bool selected = (item.state & TVIS_SELECTED) != 0;
    const int image = selected ? item.iSelectedImage : item.iImage;
    node.Images = ImagesOf(item.state, tree.GetImages() ? image : -1);
    const int mark = static_cast<int>((item.state & TVIS_STATEIMAGEMASK) >> 12);
    if (tree.GetStateImages() && mark > 0) node.Images.State = mark;
    for (LRESULT up = ask(TVGN_PARENT, entry); up; up = ask(TVGN_PARENT, up)) ++node.Level;
    nodes.push_back(std::move(node));
  }
  return nodes;
}

int TWindowsDriver::ImageOf(TCustomComboBoxEx& combo) {
  const HWND window = combo.GetHandle();
  COMBOBOXEXITEMW item{};
  item.mask = CBEIF_IMAGE;
  // Of the field itself while nothing is selected.
  item.iItem = static_cast<INT_PTR>(::SendMessageW(window, CB_GETCURSEL, 0, 0));
  ::SendMessageW(window, CBEM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
  return std::max(item.iImage, -1);
}

int TWindowsDriver::CountWindows() {
  int count = 0;
  const auto visit = [](HWND window, LPARAM counter) -> BOOL {
    *reinterpret_cast<int*>(counter) += CountTopWindow(window);
    return TRUE;
  };
  ::EnumWindows(visit, reinterpret_cast<LPARAM>(&count));
  HWND window = nullptr;
  while ((window = ::FindWindowExW(HWND_MESSAGE, window, nullptr, nullptr)))
    count += CountTopWindow(window);
  return count;
}

}  // namespace

std::unique_ptr<IScreenDriver> MakeScreenDriver() { return std::make_unique<TWindowsDriver>(); }

}  // namespace oak::tests
