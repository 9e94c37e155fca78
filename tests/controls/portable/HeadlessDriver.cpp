// The headless desktop as a screen to test controls on.
#include <gtest/gtest.h>

#include <algorithm>

#include "oak/framework/headless/HeadlessListHeader.h"
#include "oak/framework/headless/HeadlessListPeer.h"
#include "oak/framework/headless/HeadlessTreePeer.h"
#include "testkit/HeadlessForms.h"
#include "tests/controls/ScreenDriver.h"

namespace oak::tests {
namespace {

/// What was drawn within a rectangle.
class TDrawn {
 public:
  TDrawn(const THeadlessWindow& window, const TRect& place) {
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

class THeadlessDriver final : public IScreenDriver {
 public:
  // --- the user
  void MoveMouse(const TWinControl& control, TPoint point) override {
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
  void PressMouse(const TWinControl& control, TPoint point) override {
    MoveMouse(control, point);
    Do([&] { fScreen->MouseDown(); });
  }
  void ReleaseMouse() override {
    Do([&] { fScreen->MouseUp(); });
  }
  void Wheel(const TWinControl& control, TPoint point, int notches) override {
    MoveMouse(control, point);
    Do([&] { fScreen->Wheel(notches); });
  }
  void ExtraClick(const TWinControl& control, TPoint point, bool forward) override {
    MoveMouse(control, point);
    Do([&] { fScreen->ExtraButton(forward); });
  }
  void Key(std::uint16_t key, TShiftState shift) override {
    Do([&] { fScreen->KeyPress(key, shift); });
  }
  void Type(TStringView text) override {
    Do([&] { fScreen->TypeText(text); });
  }
  void ResizeForm(TCustomForm& form, int width, int height) override {
    fScreen->ResizeWindow(form, width, height);
  }
  void SetFormState(TCustomForm& form, TWindowState state) override {
    fScreen->SetWindowState(form, state);
  }
  void CloseForm(TCustomForm& form) override { fScreen->CloseWindow(form); }
  void SetDensity(TCustomForm&, int pixelsPerInch) override {
    fScreen->SetPixelsPerInch(0, pixelsPerInch);
  }
  void QueueMenuChoice(TString path) override { fScreen->QueueMenuChoice(std::move(path)); }
  void Later(std::function<void()> action) override {
    if (fInputs > 0)
      fScreen->Later(std::move(action));
    else
      fLater.push_back(std::move(action));
  }

  // --- time
  void Pump() override { fScreen.Drain(); }
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
    return TDrawn(window, window.GetClientRect()).Images(combo.GetImages(), nullptr).Image;
  }
  int CountWindows() override { return static_cast<int>(fScreen->GetWindowCount()); }
  std::vector<TString> TakeExceptions() override { return std::exchange(fScreen.Exceptions(), {}); }
  bool IsNative() const override { return false; }

 private:
  /// Queues an input, behind it what is to come later, and runs both.
  void Do(const std::function<void()>& input) {
    fScreen->SetAutoRun(false);
    input();
    for (std::function<void()>& action : std::exchange(fLater, {}))
      fScreen->Later(std::move(action));
    fScreen->SetAutoRun(true);
    ++fInputs;
    Pump();
    --fInputs;
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
  testkit::THeadlessScreen fScreen{[](const std::string& text) { ADD_FAILURE() << text; }};
};

TWinControl* THeadlessDriver::Focused() {
  const THeadlessWindow* window = fScreen->FindWindow(fScreen->GetFocusedWindow());
  for (; window; window = window->GetParentWindow())
    if (TWinControl* const control = fScreen->ControlOf(window->GetHandle())) return control;
  return nullptr;
}

TShownRow THeadlessDriver::RowOf(TCustomListView& list, int index) {
  const THeadlessWindow& window = Drawn(list);
  const IListViewPeer& peer = *list.GetListPeer();
  TShownRow row;
  const bool report = list.GetViewStyle() == vsReport;
  const int columns = report ? list.Columns().GetCount() : 1;
  for (int i = 0; i < columns; ++i) {
    TRect cell = report ? peer.GetSubItemRect(index, i) : peer.GetItemRect(index, drBounds);
    row.Cells.push_back(TDrawn(window, cell).Text());
  }
  const TDrawn all(window, peer.GetItemRect(index, drBounds));
  row.Marked = all.IsFilledAs({clHighlight, clBtnFace});
  row.Focused = all.Has(TDrawKind::FocusRect);
  row.Images =
      all.Images(list.GetViewStyle() == vsIcon ? list.GetLargeImages() : list.GetSmallImages(),
                 list.GetStateImages());
  const TRect icon = peer.GetItemRect(index, drIcon);
  const TRect box(icon.Left - icon.Height(), icon.Top, icon.Left, icon.Bottom);
  row.Checked = TDrawn(window, box).Has(TDrawKind::Line);
  return row;
}

std::vector<TShownColumn> THeadlessDriver::ColumnsOf(TCustomListView& list) {
  Drawn(list);
  const auto& header = dynamic_cast<THeadlessListPeer&>(*list.GetListPeer()).GetHeader();
  std::vector<TShownColumn> columns;
  for (int i = 0; i < list.Columns().GetCount(); ++i) {
    const int left = header.GetColumnLeft(i);
    const int right = header.GetColumnLeft(i + 1);
    TShownColumn column;
    column.Width = right - left;
    const TDrawn drawn(header, {left, 0, right, header.GetNaturalHeight()});
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

std::vector<TShownNode> THeadlessDriver::NodesOf(TCustomTreeView& tree) {
  const THeadlessWindow& window = Drawn(tree);
  const int height = dynamic_cast<THeadlessTreePeer&>(*tree.GetTreePeer()).GetRowHeight();
  const TRect client = tree.GetClientRect();
  const int scrolled = window.GetScrollInfo(sbHorizontal).Position;
  std::vector<TShownNode> nodes;
  for (int top = 0; top + height <= client.Bottom; top += height) {
    const TDrawn drawn(window, {0, top, client.Right, top + height});
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

std::unique_ptr<IScreenDriver> MakeScreenDriver() { return std::make_unique<THeadlessDriver>(); }

}  // namespace oak::tests
