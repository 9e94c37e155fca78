// The headless desktop as a screen for a driver.
#include <algorithm>

#include "oak/framework/headless/HeadlessListHeader.h"
#include "oak/framework/headless/HeadlessListPeer.h"
#include "oak/framework/headless/HeadlessTreePeer.h"
#include "testkit/HeadlessForms.h"
#include "testkit/ScreenDriver.h"

namespace oak::testkit {
namespace {

/// What was drawn within a rectangle.
class TDrawnPart {
 public:
  TDrawnPart(const THeadlessWindow& window, const TRect& place) {
    for (const TDrawOperation& operation : window.GetDrawing())
      if (!operation.Rect.IsEmpty() && place.Contains(operation.Rect.Center()))
        fOperations.push_back(&operation);
  }
  TString Text() const {
    TString text;
    for (const TDrawOperation* operation : fOperations)
      if (operation->Kind == TDrawKind::Text) text += operation->Text;
    return text;
  }
  bool Has(TDrawKind kind) const {
    return std::any_of(fOperations.begin(), fOperations.end(),
                       [&](const TDrawOperation* operation) { return operation->Kind == kind; });
  }
  bool IsFilledAs(std::initializer_list<TColor> colors) const {
    return std::any_of(fOperations.begin(), fOperations.end(), [&](const TDrawOperation* drawn) {
      return drawn->Kind == TDrawKind::FillRect &&
             std::any_of(colors.begin(), colors.end(),
                         [&](TColor color) { return drawn->Color == ColorToRGB(color); });
    });
  }
  TShownImages Images(const TImageList* images, const TImageList* states) const {
    TShownImages shown;
    for (const TDrawOperation* drawn : fOperations) {
      if (drawn->Kind != TDrawKind::Image || drawn->ImageIndex < 0) continue;
      if (drawn->Images == states) shown.State = drawn->ImageIndex;
      if (drawn->Images != images) continue;
      shown.Image = drawn->ImageIndex;
      shown.Overlay = drawn->Overlay - 1;
      shown.Cut = drawn->State == TImageState::Ghosted;
    }
    return shown;
  }
  const std::vector<const TDrawOperation*>& Operations() const { return fOperations; }

 private:
  std::vector<const TDrawOperation*> fOperations;
};

class THeadlessScreenDriver final : public IScreenDriver {
 public:
  explicit THeadlessScreenDriver(TScreenFailure onFailure) : fScreen(std::move(onFailure)) {
    // A loop that the test itself begins takes what was meant for later when nothing else waits.
    fScreen->OnWait = [this, former = fScreen->OnWait] {
      if (fLater.empty()) return former();
      QueueLater();
      return true;
    };
  }

  // --- the user
  void MouseMove(const TWinControl& control, TPoint point) override {
    Do([&] { fScreen->MouseMove(control.ClientToScreen(point)); });
  }
  void Click(const TWinControl& control, TPoint point, TShiftState shift,
             TMouseButton button) override {
    Do([&] { fScreen->Click(control, point, shift, button); });
  }
  void DoubleClick(const TWinControl& control, TPoint point) override {
    Do([&] { fScreen->DoubleClick(control, point); });
  }
  void Drag(const TWinControl& from, TPoint fromPoint, const TWinControl& to, TPoint toPoint,
            TShiftState shift, TMouseButton button) override {
    Do([&] { fScreen->Drag(from, fromPoint, to, toPoint, shift, button); });
  }
  void MouseDown(const TWinControl& control, TPoint point) override {
    MouseMove(control, point);
    Do([&] { fScreen->MouseDown(); });
  }
  void MouseUp() override {
    Do([&] { fScreen->MouseUp(); });
  }
  void Wheel(const TWinControl& control, TPoint point, int notches) override {
    MouseMove(control, point);
    Do([&] { fScreen->Wheel(notches); });
  }
  void ExtraButton(const TWinControl& control, TPoint point, bool forward) override {
    MouseMove(control, point);
    Do([&] { fScreen->ExtraButton(forward); });
  }
  void KeyPress(std::uint16_t key, TShiftState shift) override {
    Do([&] { fScreen->KeyPress(key, shift); });
  }
  void TypeText(TStringView text) override {
    Do([&] { fScreen->TypeText(text); });
  }
  void ResizeWindow(TCustomForm& form, int width, int height) override {
    fScreen->ResizeWindow(form, width, height);
  }
  void SetWindowState(TCustomForm& form, TWindowState state) override {
    fScreen->SetWindowState(form, state);
  }
  void CloseWindow(TCustomForm& form) override { fScreen->CloseWindow(form); }
  void SetPixelsPerInch(TCustomForm& form, int pixelsPerInch) override {
    fScreen->SetPixelsPerInch(fScreen->MonitorOf(form.GetBoundsRect()), pixelsPerInch);
  }
  void QueueMenuChoice(TString path) override { fScreen->QueueMenuChoice(std::move(path)); }
  void QueueDialogAnswer(int result) override { fScreen->QueueDialogAnswer(result); }
  void Later(std::function<void()> action) override {
    if (fInputs > 0)
      fScreen->Later(std::move(action));
    else
      fLater.push_back(std::move(action));
  }

  // --- time
  void Drain() override { fScreen.Drain(); }
  void Advance(unsigned milliseconds) override { fScreen.Advance(milliseconds); }

  // --- the eye
  TString TextOf(const TWinControl& control) override {
    const THeadlessWindow& window = WindowOf(control);
    if (const auto* edit = dynamic_cast<const IEditPeer*>(&window)) return edit->GetText();
    if (const auto* combo = dynamic_cast<const IComboPeer*>(&window)) return combo->GetText();
    return window.GetWindowText();
  }
  TWinControl* Focused() override;
  bool IsShown(const TWinControl& control) override {
    const THeadlessWindow* window = fScreen->WindowOf(control);
    return window && window->IsShowing();
  }
  TRect BoundsOf(const TWinControl& control) override { return WindowOf(control).GetBounds(); }
  void Paint() override { fScreen->Paint(); }
  int CountRows(TCustomListView& list) override { return list.Items().GetCount(); }
  TShownRow RowOf(TCustomListView& list, int index) override;
  std::vector<TShownColumn> ColumnsOf(TCustomListView& list) override;
  std::vector<TShownNode> NodesOf(TCustomTreeView& tree) override;
  int ImageOf(TCustomComboBoxEx& combo) override {
    const THeadlessWindow& window = Drawn(combo);
    return TDrawnPart(window, window.GetClientRect()).Images(combo.GetImages(), nullptr).Image;
  }
  int CountWindows() override { return static_cast<int>(fScreen->GetWindowCount()); }
  std::vector<TString> TakeExceptions() override { return std::exchange(fScreen.Exceptions(), {}); }
  bool IsNative() const override { return false; }

 private:
  /// Queues an input, behind it what is to come later, and runs both.
  void Do(const std::function<void()>& input) {
    fScreen->SetAutoRun(false);
    input();
    QueueLater();
    fScreen->SetAutoRun(true);
    ++fInputs;
    Drain();
    --fInputs;
  }
  void QueueLater() {
    for (std::function<void()>& action : std::exchange(fLater, {}))
      fScreen->Later(std::move(action));
  }
  THeadlessWindow& WindowOf(const TWinControl& control) { return *fScreen->WindowOf(control); }
  /// Draws the window anew, all of it.
  THeadlessWindow& Drawn(const TWinControl& control) {
    THeadlessWindow& window = WindowOf(control);
    fScreen->Paint();
    return window;
  }

  std::vector<std::function<void()>> fLater;
  int fInputs = 0;  // that are under way
  THeadlessScreen fScreen;
};

TWinControl* THeadlessScreenDriver::Focused() {
  const THeadlessWindow* window = fScreen->FindWindow(fScreen->GetFocusedWindow());
  for (; window; window = window->GetParentWindow())
    if (TWinControl* const control = fScreen->ControlOf(window->GetHandle())) return control;
  return nullptr;
}

TShownRow THeadlessScreenDriver::RowOf(TCustomListView& list, int index) {
  const THeadlessWindow& window = Drawn(list);
  const IListViewPeer& peer = *list.GetListPeer();
  TShownRow row;
  const bool report = list.GetViewStyle() == vsReport;
  const int columns = report ? list.Columns().GetCount() : 1;
  for (int i = 0; i < columns; ++i) {
    TRect cell = report ? peer.GetSubItemRect(index, i) : peer.GetItemRect(index, drBounds);
    row.Cells.push_back(TDrawnPart(window, cell).Text());
  }
  const TDrawnPart all(window, peer.GetItemRect(index, drBounds));
  row.Marked = all.IsFilledAs({clHighlight, clBtnFace});
  row.Focused = all.Has(TDrawKind::FocusRect);
  row.Images =
      all.Images(list.GetViewStyle() == vsIcon ? list.GetLargeImages() : list.GetSmallImages(),
                 list.GetStateImages());
  const TRect icon = peer.GetItemRect(index, drIcon);
  const TRect box(icon.Left - icon.Height(), icon.Top, icon.Left, icon.Bottom);
  row.Checked = TDrawnPart(window, box).Has(TDrawKind::Line);
  return row;
}

std::vector<TShownColumn> THeadlessScreenDriver::ColumnsOf(TCustomListView& list) {
  Drawn(list);
  const auto& header = dynamic_cast<THeadlessListPeer&>(*list.GetListPeer()).GetHeader();
  std::vector<TShownColumn> columns;
  for (int i = 0; i < list.Columns().GetCount(); ++i) {
    const int left = header.GetColumnLeft(i);
    const int right = header.GetColumnLeft(i + 1);
    TShownColumn column;
    column.Width = right - left;
    const TDrawnPart drawn(header, {left, 0, right, header.GetNaturalHeight()});
    for (const TDrawOperation* operation : drawn.Operations()) {
      if (operation->Kind == TDrawKind::Text) column.Caption += operation->Text;
      if (operation->Kind != TDrawKind::Polygon) continue;
      // An arrow: up if its single corner is the upper one.
      int above = 0;
      for (const TPoint& point : operation->Points) above += point.Y == operation->Rect.Top;
      column.Mark = above == 1 ? TListSortMark::Up : TListSortMark::Down;
    }
    columns.push_back(std::move(column));
  }
  return columns;
}

std::vector<TShownNode> THeadlessScreenDriver::NodesOf(TCustomTreeView& tree) {
  const THeadlessWindow& window = Drawn(tree);
  const int height = dynamic_cast<THeadlessTreePeer&>(*tree.GetTreePeer()).GetRowHeight();
  const TRect client = tree.GetClientRect();
  const int scrolled = window.GetScrollInfo(sbHorizontal).Position;
  std::vector<TShownNode> nodes;
  for (int top = 0; top + height <= client.Bottom; top += height) {
    const TDrawnPart drawn(window, {0, top, client.Right, top + height});
    TShownNode node;
    bool found = false;
    int left = 0;  // of the text
    for (const TDrawOperation* operation : drawn.Operations()) {
      if (operation->Kind != TDrawKind::Text) continue;
      if (operation->Format.Contains(tfCenter)) {
        node.HasButton = true;
        node.Expanded = operation->Text == u"v";
        continue;
      }
      found = true;
      node.Text = operation->Text;
      left = operation->Rect.Left;
    }
    node.Images = drawn.Images(tree.GetImages(), tree.GetStateImages());
    // Room is kept for an image, and taken by a state image that is there.
    if (tree.GetImages()) left -= tree.GetImages()->GetWidth();
    if (node.Images.State >= 0) left -= tree.GetStateImages()->GetWidth();
    node.Level = (left + scrolled) / tree.GetIndent() - (tree.GetShowRoot() ? 1 : 0);
    node.Marked = drawn.IsFilledAs({clHighlight, clBtnFace});
    if (!found) break;
    nodes.push_back(std::move(node));
  }
  return nodes;
}

}  // namespace

std::unique_ptr<IScreenDriver> MakeHeadlessScreenDriver(TScreenFailure onFailure) {
  return std::make_unique<THeadlessScreenDriver>(std::move(onFailure));
}

}  // namespace oak::testkit
