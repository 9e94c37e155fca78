#include "oak/framework/headless/HeadlessDesktop.h"

#include <algorithm>
#include <utility>

#include "oak/base/Exceptions.h"
#include "oak/framework/Forms.h"
#include "oak/framework/GraphicsSystem.h"
#include "oak/framework/TextMetrics.h"
#include "oak/framework/headless/HeadlessClipboard.h"
#include "oak/framework/headless/HeadlessCombo.h"
#include "oak/framework/headless/HeadlessEdit.h"
#include "oak/framework/headless/HeadlessForm.h"
#include "oak/framework/headless/HeadlessHint.h"
#include "oak/framework/headless/HeadlessPeer.h"

namespace oak {
namespace {

/// Sizes of the desktop's parts at 96 pixels per inch, by the platform's index.
struct THeadlessMetric {
  int Index;
  int Value;
  bool Scaled;
};

constexpr THeadlessMetric HeadlessMetrics[] = {
    {2, 17, true},    // width of a vertical scroll bar
    {3, 17, true},    // height of a horizontal scroll bar
    {4, 23, true},    // caption
    {5, 1, false},    // border
    {6, 1, false},    // ... height
    {11, 32, true},   // icon
    {12, 32, true},   // ... height
    {13, 32, true},   // cursor
    {14, 32, true},   // ... height
    {15, 20, true},   // menu bar
    {19, 1, false},   // a mouse is there
    {20, 17, true},   // arrow of a vertical scroll bar
    {21, 17, true},   // arrow of a horizontal scroll bar
    {28, 136, true},  // smallest window
    {29, 39, true},   // ... height
    {32, 4, true},    // sizing frame
    {33, 4, true},    // ... height
    {36, 4, true},    // double click
    {37, 4, true},    // ... height
    {38, 75, true},   // cell of an icon
    {39, 75, true},   // ... height
    {45, 2, false},   // edge
    {46, 2, false},   // ... height
    {49, 16, true},   // small icon
    {50, 16, true},   // ... height
    {51, 23, true},   // small caption
    {68, 4, true},    // way before a drag begins
    {69, 4, true},    // ... height
    {92, 4, true},    // padding of frames
};

}  // namespace

THeadlessDesktop::THeadlessDesktop()
    : fMonitors{{{0, 0, 1920, 1080}, {0, 0, 1920, 1040}, 96, true}},
      fFormerGraphics(SetGraphicsSystem(&HeadlessGraphicsSystem())),
      fFormerPost(SetWindowPost(this)) {}

THeadlessDesktop::~THeadlessDesktop() {
  if (fClipboardData) ClearProcessClipboard(fClipboardData);
  SetWindowPost(fFormerPost);
  fHint.reset();
  SetGraphicsSystem(fFormerGraphics);
}

std::unique_ptr<TWidgetSet> CreateHeadlessWidgetSet() {
  return std::make_unique<THeadlessDesktop>();
}

// --- peers -------------------------------------------------------------------

std::unique_ptr<IControlPeer> THeadlessDesktop::CreateControl(TWinControl& control) {
  return std::make_unique<THeadlessPeer>(*this, control);
}

std::unique_ptr<IFormPeer> THeadlessDesktop::CreateForm(TCustomForm& form) {
  return std::make_unique<THeadlessForm>(*this, form);
}

std::unique_ptr<IListViewPeer> THeadlessDesktop::CreateListView(TCustomListView& view) {
  return CreateHeadlessListPeer(*this, view);
}

std::unique_ptr<ITreeViewPeer> THeadlessDesktop::CreateTreeView(TCustomTreeView& view) {
  return CreateHeadlessTreePeer(*this, view);
}

std::unique_ptr<IEditPeer> THeadlessDesktop::CreateEdit(TCustomEdit& edit) {
  return std::make_unique<THeadlessEdit>(*this, edit);
}

std::unique_ptr<IComboPeer> THeadlessDesktop::CreateCombo(TCustomComboBoxEx& combo) {
  return std::make_unique<THeadlessCombo>(*this, combo);
}

// --- facts -------------------------------------------------------------------

int THeadlessDesktop::GetSystemMetric(int index, int pixelsPerInch) const {
  constexpr int screenWidth = 0, screenHeight = 1, virtualWidth = 78, virtualHeight = 79;
  TRect all;
  for (const TMonitorInfo& monitor : fMonitors) all = all.United(monitor.Bounds);
  switch (index) {
    case screenWidth:
      return fMonitors.front().Bounds.Width();
    case screenHeight:
      return fMonitors.front().Bounds.Height();
    case virtualWidth:
      return all.Width();
    case virtualHeight:
      return all.Height();
    default:
      break;
  }
  for (const THeadlessMetric& metric : HeadlessMetrics)
    if (metric.Index == index)
      return metric.Scaled ? MulDiv(metric.Value, pixelsPerInch, 96) : metric.Value;
  return 0;
}

TColor THeadlessDesktop::GetSysColor(TColor systemColor) const {
  return HeadlessGraphicsSystem().GetSystemColor(static_cast<int>(systemColor & 0xFF));
}

TFont THeadlessDesktop::GetSystemFont(int pixelsPerInch) const {
  TFont font;
  HeadlessGraphicsSystem().GetSystemFont(TSystemFont::IconTitle, pixelsPerInch, font);
  return font;
}

TSize THeadlessDesktop::MeasureText(const TFont& font, int pixelsPerInch, TStringView text) const {
  TFont scaled = font;
  scaled.ChangeScale(pixelsPerInch);
  return HeadlessGraphicsSystem().GetTextExtent(scaled, text);
}

TShiftState THeadlessDesktop::GetShiftState() const {
  TShiftState state = fButtons;
  if (fKeys[vkShift]) state.Include(ssShift);
  if (fKeys[vkControl]) state.Include(ssCtrl);
  if (fKeys[vkMenu]) state.Include(ssAlt);
  return state;
}

bool THeadlessDesktop::IsKeyDown(std::uint16_t key) const {
  constexpr std::uint16_t leftButton = 1, rightButton = 2, middleButton = 4;
  switch (key) {
    case leftButton:
      return fButtons.Contains(ssLeft);
    case rightButton:
      return fButtons.Contains(ssRight);
    case middleButton:
      return fButtons.Contains(ssMiddle);
    default:
      return key < fKeys.size() && fKeys[key];
  }
}

TWinControl* THeadlessDesktop::ControlOf(HWND window) const {
  const THeadlessWindow* const found = FindWindow(window);
  return found ? found->GetControlOrNil() : nullptr;
}

HWND THeadlessDesktop::GetFocusedWindow() const { return fFocus ? fFocus->GetHandle() : nullptr; }

THeadlessWindow* THeadlessDesktop::FindWindow(HWND handle) const {
  const auto found = fWindows.find(handle);
  return found == fWindows.end() ? nullptr : found->second;
}

THeadlessWindow* THeadlessDesktop::WindowOf(const TWinControl& control) const {
  return control.GetPeer() ? FindWindow(control.GetPeer()->GetHandle()) : nullptr;
}

// --- dialogs -----------------------------------------------------------------

int THeadlessDesktop::ShowDialog(const TMessageDialog& dialog) {
  StopHint();
  int result = OnDialog ? OnDialog(dialog) : 0;
  if (result == 0 && !fDialogAnswers.empty()) {
    result = fDialogAnswers.front();
    fDialogAnswers.pop_front();
  }
  if (result == 0) {
    result = dialog.DefaultButton;
    if (fUnattended)
      Complain(u"Nobody answered the dialog \"" + dialog.Title + u"\": " + dialog.Instruction +
               (dialog.Instruction.empty() ? u"" : u" ") + dialog.Text);
  }
  fDialogs.push_back({dialog, result});
  return result;
}

// --- monitors ----------------------------------------------------------------

int THeadlessDesktop::MonitorAt(TPoint point) const {
  for (std::size_t i = 0; i < fMonitors.size(); ++i)
    if (fMonitors[i].Bounds.Contains(point)) return static_cast<int>(i);
  return 0;
}

int THeadlessDesktop::MonitorOf(const TRect& rect) const {
  int best = MonitorAt(rect.Center());
  long long most = 0;
  for (std::size_t i = 0; i < fMonitors.size(); ++i) {
    const TRect common = fMonitors[i].Bounds.Intersected(rect);
    const long long area =
        common.IsEmpty() ? 0 : static_cast<long long>(common.Width()) * common.Height();
    if (area > most) {
      most = area;
      best = static_cast<int>(i);
    }
  }
  return best;
}

void THeadlessDesktop::SetMonitors(std::vector<TMonitorInfo> monitors) {
  if (monitors.empty()) throw EInvalidArgument(u"A desktop needs a monitor.");
  for (TMonitorInfo& monitor : monitors) monitor.Primary = &monitor == &monitors.front();
  fMonitors = std::move(monitors);
  TellDensity();
}

void THeadlessDesktop::SetPixelsPerInch(int monitor, int pixelsPerInch) {
  fMonitors.at(static_cast<std::size_t>(monitor)).PixelsPerInch = pixelsPerInch;
  TellDensity();
  if (fAutoRun) Run();
}

void THeadlessDesktop::TellDensity() {
  // Forms may come and go while they are told.
  std::vector<HWND> handles;
  for (const THeadlessWindow* window : fTops) handles.push_back(window->GetHandle());
  for (const HWND handle : handles)
    if (auto* const form = dynamic_cast<THeadlessForm*>(FindWindow(handle))) form->CheckDensity();
}

void THeadlessDesktop::MoveToMonitor(TCustomForm& form, int monitor) {
  const TRect area = fMonitors.at(static_cast<std::size_t>(monitor)).WorkArea;
  MoveWindow(form, area.Left, area.Top);
}

}  // namespace oak
