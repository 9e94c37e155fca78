// Forms and lists for the tests of controls, and the comparison of model and screen.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "oak/framework/Bitmap.h"
#include "oak/framework/ImageList.h"
#include "testkit/ScreenDriver.h"
#include "tests/framework/GeometryPrinting.h"

namespace oak::tests {

using testkit::IScreenDriver;
using testkit::TShownColumn;
using testkit::TShownImages;
using testkit::TShownNode;
using testkit::TShownRow;

using TLog = std::vector<std::string>;

/// A control whose events are written down, with a hook at each of them that may do anything.
template <class TBase>
class TNotingControl : public TBase {
 public:
  using TBase::TBase;

  TLog Log;
  std::function<void(const std::string& event)> OnEvent;
  bool DrawsAll = false;  ///< All steps of drawing come as events.

  TLog Take() { return std::exchange(Log, {}); }

 protected:
  /// Writes an event down and runs the hook. False if the control is gone.
  bool Note(const std::string& event, bool log = true) {
    if (log) Log.push_back(event);
    if (!OnEvent) return true;
    const TLifeGuard guard = this->GetLifeGuard();
    const auto hook = OnEvent;
    hook(event);
    return guard.IsAlive();
  }
  void MouseDown(TMouseButton button, TShiftState shift, int x, int y) override {
    if (Note("mouse down")) TBase::MouseDown(button, shift, x, y);
  }
  void MouseUp(TMouseButton button, TShiftState shift, int x, int y) override {
    if (Note("mouse up")) TBase::MouseUp(button, shift, x, y);
  }
  void Click() override {
    if (Note("click")) TBase::Click();
  }
  void DblClick() override {
    if (Note("double click")) TBase::DblClick();
  }
  void KeyDown(std::uint16_t& key, TShiftState shift) override {
    if (Note("key", false)) TBase::KeyDown(key, shift);
  }
  void KeyPress(char16_t& key) override {
    if (Note("char", false)) TBase::KeyPress(key);
  }
  void WMContextMenu(TPoint screen) override {
    if (Note("menu")) TBase::WMContextMenu(screen);
  }
  void DoEnter() override {
    if (Note("enter")) TBase::DoEnter();
  }
  void DoExit() override {
    if (Note("exit")) TBase::DoExit();
  }
  void Resize() override {
    if (Note("resize", false)) TBase::Resize();
  }
  bool IsCustomDrawn(TCustomDrawTarget target, TCustomDrawStage stage) override {
    return DrawsAll || TBase::IsCustomDrawn(target, stage);
  }
};

class TListUnderTest : public TNotingControl<TCustomListView> {
 public:
  explicit TListUnderTest(TComponent* owner = nullptr) : TNotingControl(owner) {}
  ~TListUnderTest() override { BeginDestroy(); }

  std::function<void(TMouseButton)> OnBeginDrag;
  std::function<bool(int from, int to)> MayDragColumn;
  int TextRequests = 0;
  int ImageRequests = 0;

  TListItem* Row(int index) { return Items()[index]; }
  TListItem* AddRow(TString caption, std::vector<TString> texts = {});
  void Fill(int count, TStringView prefix = u"row ");
  void AddColumns(std::initializer_list<int> widths);
  /// A point on the caption.
  TPoint At(int index) { return Row(index)->DisplayRect(drLabel).TopLeft() + TPoint(6, 5); }
  /// Numbers of the selected rows, the focused one in brackets (with "-" if it is not selected).
  std::string Selection();

 protected:
  void DoSelectItem(TListItem* item, bool selected) override {
    const std::string index = std::to_string(item->GetIndex());
    if (NoteOf(item, (selected ? "select " : "deselect ") + index))
      TCustomListView::DoSelectItem(item, selected);
  }
  void Change(TListItem* item, TItemChange change) override {
    if (NoteOf(item, "change", false)) TCustomListView::Change(item, change);
  }
  void DoBeginDrag(TMouseButton button) override {
    if (Note(button == mbLeft ? "drag" : "drag right") && OnBeginDrag) OnBeginDrag(button);
  }
  void ColClick(TListColumn* column) override {
    if (Note("column click " + std::to_string(column->GetIndex())))
      TCustomListView::ColClick(column);
  }
  void ColRightClick(TListColumn* column, TPoint point) override {
    if (Note("column right " + (column ? std::to_string(column->GetIndex()) : std::string("none"))))
      TCustomListView::ColRightClick(column, point);
  }
  void ColResized(int column, bool finished) override {
    if (Note("column size " + std::to_string(column) + (finished ? " end" : ""), finished))
      TCustomListView::ColResized(column, finished);
  }
  bool CanDragColumn(int from, int to, int x) override {
    return Note("column drag?", false) && (!MayDragColumn || MayDragColumn(from, to)) &&
           TCustomListView::CanDragColumn(from, to, x);
  }
  void ColDragged(int from, int to) override {
    if (Note("column drag " + std::to_string(from) + " " + std::to_string(to)))
      TCustomListView::ColDragged(from, to);
  }
  bool CanEdit(TListItem* item) override {
    return NoteOf(item, "edit?") && TCustomListView::CanEdit(item);
  }
  void Edit(TListItem* item, const TString& text) override {
    if (NoteOf(item, "edit " + ToUtf8(text))) TCustomListView::Edit(item, text);
  }
  void CancelEdit(TListItem* item) override {
    if (NoteOf(item, "edit cancelled")) TCustomListView::CancelEdit(item);
  }
  void GetImageIndex(TListItem* item) override {
    ++ImageRequests;
    if (NoteOf(item, "image", false)) TCustomListView::GetImageIndex(item);
  }
  TString GetColumnText(TListItem* item, int column) override {
    ++TextRequests;
    return NoteOf(item, "text", false) ? TCustomListView::GetColumnText(item, column) : TString();
  }
  int IncrementalSearch(const TString& text, int start) override {
    return Note("search " + ToUtf8(text)) ? TCustomListView::IncrementalSearch(text, start) : -1;
  }
  bool CustomDraw(TCanvas& canvas, const TRect& rect, TCustomDrawStage stage) override {
    return Note(stage == cdPrePaint ? "draw all" : "drawn all", false) &&
           TCustomListView::CustomDraw(canvas, rect, stage);
  }
  bool CustomDrawItem(TCanvas& canvas, TListItem* item, TCustomDrawState state,
                      TCustomDrawStage stage) override {
    return NoteOf(item, stage == cdPrePaint ? "draw row" : "drawn row", false) &&
           TCustomListView::CustomDrawItem(canvas, item, state, stage);
  }
  bool CustomDrawSubItem(TCanvas& canvas, TListItem* item, int column, TCustomDrawState state,
                         TCustomDrawStage stage) override {
    return NoteOf(item, stage == cdPrePaint ? "draw cell" : "drawn cell", false) &&
           TCustomListView::CustomDrawSubItem(canvas, item, column, state, stage);
  }

 private:
  /// False also if the row is gone.
  bool NoteOf(const TListItem* item, const std::string& event, bool log = true);
};

class TTreeUnderTest : public TNotingControl<TCustomTreeView> {
 public:
  explicit TTreeUnderTest(TComponent* owner = nullptr) : TNotingControl(owner) {}
  ~TTreeUnderTest() override { BeginDestroy(); }

  std::function<void(TTreeNode*, TMouseButton)> OnBeginDrag;

  /// Adds nodes from lines that are indented by a blank for each level.
  void Build(std::initializer_list<TStringView> lines);
  /// "a(a1 a2(x)) b", found by way of the links forward; fails if those backward say otherwise.
  std::string Shape() const { return ShapeOf(nullptr); }
  /// The first node of that text; nil if there is none.
  TTreeNode* Node(TStringView text) const;
  /// The node at a path of texts, "a|b"; nil if there is none.
  TTreeNode* Find(TStringView path) const;
  TPoint At(TTreeNode* node) const { return node->DisplayRect(true).Center(); }
  /// A point on the button.
  TPoint AtButton(TTreeNode* node) const;

 protected:
  bool CanChange(TTreeNode* node) override {
    return Note("select?" + Of(node)) && TCustomTreeView::CanChange(node);
  }
  void Change(TTreeNode* node) override {
    if (Note("selected" + Of(node))) TCustomTreeView::Change(node);
  }
  bool CanExpand(TTreeNode* node) override {
    return NoteOf(node, "expand?" + Of(node)) && TCustomTreeView::CanExpand(node);
  }
  void Expanded(TTreeNode* node) override {
    if (Note("expanded" + Of(node))) TCustomTreeView::Expanded(node);
  }
  bool CanCollapse(TTreeNode* node) override {
    return NoteOf(node, "collapse?" + Of(node)) && TCustomTreeView::CanCollapse(node);
  }
  void Collapsed(TTreeNode* node) override {
    if (Note("collapsed" + Of(node))) TCustomTreeView::Collapsed(node);
  }
  bool CanEdit(TTreeNode* node) override {
    return NoteOf(node, "edit?") && TCustomTreeView::CanEdit(node);
  }
  void Edit(TTreeNode* node, const TString& text) override {
    if (NoteOf(node, "edit " + ToUtf8(text))) TCustomTreeView::Edit(node, text);
  }
  void CancelEdit(TTreeNode* node) override {
    if (Note("edit cancelled")) TCustomTreeView::CancelEdit(node);
  }
  void Delete(TTreeNode* node) override {
    if (Note("delete" + Of(node), false)) TCustomTreeView::Delete(node);
  }
  void Added(TTreeNode* node) override {
    if (Note("add" + Of(node), false)) TCustomTreeView::Added(node);
  }
  void GetImageIndex(TTreeNode* node) override {
    if (NoteOf(node, "image", false)) TCustomTreeView::GetImageIndex(node);
  }
  void DoBeginDrag(TTreeNode* node, TMouseButton button) override {
    if (NoteOf(node, (button == mbLeft ? "drag" : "drag right") + Of(node)) && OnBeginDrag)
      OnBeginDrag(node, button);
  }
  bool CustomDrawItem(TCanvas& canvas, TTreeNode* node, TCustomDrawState state,
                      TCustomDrawStage stage) override {
    return NoteOf(node, stage == cdPrePaint ? "draw row" : "drawn row", false) &&
           TCustomTreeView::CustomDrawItem(canvas, node, state, stage);
  }

 private:
  static std::string Of(const TTreeNode* node) {
    return node ? " " + ToUtf8(node->GetText()) : std::string(" none");
  }
  std::string ShapeOf(TTreeNode* parent) const;
  /// False also if the node is gone.
  bool NoteOf(TTreeNode* node, const std::string& event, bool log = true) {
    const TTreeNodeWatch watch(*this, node);
    return Note(event, log) && watch.Exists();
  }
};

/// The screen under test: real windows where the system has them.
inline std::unique_ptr<IScreenDriver> MakeScreen() {
  return testkit::MakeScreenDriver([](const std::string& text) { ADD_FAILURE() << text; });
}

/// Small images of distinct colours.
std::unique_ptr<TImageList> MakeImages(int size, int count);

/// A form at a fixed place, and a screen to show it on.
class TControlsTest : public ::testing::Test {
 protected:
  TControlsTest();
  ~TControlsTest() override;

  void Show();
  /// What the screen shows of the list is what the model says: rows in sight, columns, count.
  void ExpectShown(TCustomListView& list);
  void ExpectShown(TCustomTreeView& tree);

  std::unique_ptr<IScreenDriver> screen = MakeScreen();
  std::unique_ptr<TForm> form = std::make_unique<TForm>();

 private:
  TString AsShown(const TString& wanted, const TString& shown) const;
  TShownRow WantedRow(TCustomListView& list, int index, const TShownRow& shown);
  std::vector<TShownColumn> WantedColumns(TCustomListView& list,
                                          const std::vector<TShownColumn>& shown);
};

/// A list of 400 by 240 pixels.
class TListTest : public TControlsTest {
 protected:
  TListTest();
  ~TListTest() override;
  void ShowReport(int rows, std::initializer_list<int> widths = {150, 80, 60});
  void ShowStyle(TViewStyle style, int rows);
  void Press(std::uint16_t key, TShiftState shift = {}) { screen->KeyPress(key, shift); }
  /// In the header, list pixels: the middle of a column, and its right edge.
  TPoint OnHeader(int column);
  TPoint OnDivider(int column);

  std::unique_ptr<TImageList> smallImages = MakeImages(16, 4);
  std::unique_ptr<TImageList> largeImages = MakeImages(32, 4);
  TListUnderTest* list = new TListUnderTest;
};

/// A tree of 300 by 240 pixels.
class TTreeTest : public TControlsTest {
 protected:
  TTreeTest();
  ~TTreeTest() override;
  void Build(std::initializer_list<TStringView> lines) { tree->Build(lines); }

  std::unique_ptr<TImageList> images = MakeImages(16, 4);
  TTreeUnderTest* tree = new TTreeUnderTest;
};

}  // namespace oak::tests
