// Forms and lists for the tests of controls, and the comparison of model and screen.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "oak/framework/Bitmap.h"
#include "oak/framework/ImageList.h"
#include "tests/controls/ScreenDriver.h"
#include "tests/framework/GeometryPrinting.h"

namespace oak::tests {

void PrintTo(const TShownImages& images, std::ostream* out);
void PrintTo(const TShownRow& row, std::ostream* out);
void PrintTo(const TShownNode& node, std::ostream* out);
void PrintTo(const TShownColumn& column, std::ostream* out);

using TLog = std::vector<std::string>;

/// A list whose events are written down, with a hook at each of them that may do anything.
class TListUnderTest : public TCustomListView {
 public:
  explicit TListUnderTest(TComponent* owner = nullptr) : TCustomListView(owner) {}
  ~TListUnderTest() override { BeginDestroy(); }

  TLog Log;
  std::function<void(const std::string& event)> OnEvent;
  std::function<void(TMouseButton)> OnBeginDrag;
  int TextRequests = 0;
  int ImageRequests = 0;
  TCustomDrawState LastState;
  bool DrawsAll = false;  ///< All steps of drawing come as events.

  TLog Take() { return std::exchange(Log, {}); }
  TListItem* Row(int index) { return Items()[index]; }
  TListItem* AddRow(TString caption, std::vector<TString> texts = {});
  void Fill(int count, TStringView prefix = u"row ");
  void AddColumns(std::initializer_list<int> widths);
  /// A point on the caption.
  TPoint At(int index) { return Row(index)->DisplayRect(drLabel).TopLeft() + TPoint(6, 5); }
  /// Numbers of the selected rows, the focused one in brackets (with "-" if it is not selected).
  std::string Selection();

 protected:
  void DoSelectItem(TListItem* item, bool selected) override;
  void Change(TListItem* item, TItemChange change) override;
  void MouseDown(TMouseButton button, TShiftState shift, int x, int y) override;
  void MouseUp(TMouseButton button, TShiftState shift, int x, int y) override;
  void Click() override;
  void DblClick() override;
  void KeyDown(std::uint16_t& key, TShiftState shift) override;
  void KeyPress(char16_t& key) override;
  void DoBeginDrag(TMouseButton button) override;
  void ColClick(TListColumn* column) override;
  void ColRightClick(TListColumn* column, TPoint point) override;
  void ColResized(int column, bool finished) override;
  bool CanDragColumn(int from, int to, int x) override;
  void ColDragged(int from, int to) override;
  bool CanEdit(TListItem* item) override;
  void Edit(TListItem* item, const TString& text) override;
  void CancelEdit(TListItem* item) override;
  void GetImageIndex(TListItem* item) override;
  TString GetColumnText(TListItem* item, int column) override;
  int IncrementalSearch(const TString& text, int start) override;
  bool IsCustomDrawn(TCustomDrawTarget target, TCustomDrawStage stage) override;
  bool CustomDraw(TCanvas& canvas, const TRect& rect, TCustomDrawStage stage) override;
  bool CustomDrawItem(TCanvas& canvas, TListItem* item, TCustomDrawState state,
                      TCustomDrawStage stage) override;
  bool CustomDrawSubItem(TCanvas& canvas, TListItem* item, int column, TCustomDrawState state,
                         TCustomDrawStage stage) override;
  void WMContextMenu(TPoint screen) override;
  void DoEnter() override;
  void DoExit() override;
  void Resize() override;

 private:
  /// Writes an event down and runs the hook. False if the list is gone.
  bool Note(const std::string& event, bool log = true);
  /// False also if the row is gone.
  bool NoteOf(const TListItem* item, const std::string& event, bool log = true);
};

/// The same for a tree.
class TTreeUnderTest : public TCustomTreeView {
 public:
  explicit TTreeUnderTest(TComponent* owner = nullptr) : TCustomTreeView(owner) {}
  ~TTreeUnderTest() override { BeginDestroy(); }

  TLog Log;
  std::function<void(const std::string& event)> OnEvent;
  std::function<void(TTreeNode*, TMouseButton)> OnBeginDrag;
  bool DrawsAll = false;

  TLog Take() { return std::exchange(Log, {}); }
  /// The node at a path of texts, "a|b"; nil if there is none.
  TTreeNode* Find(TStringView path) const;
  TPoint At(TTreeNode* node) const { return node->DisplayRect(true).Center(); }
  /// A point on the button.
  TPoint AtButton(TTreeNode* node) const;

 protected:
  bool CanChange(TTreeNode* node) override;
  void Change(TTreeNode* node) override;
  bool CanExpand(TTreeNode* node) override;
  void Expanded(TTreeNode* node) override;
  bool CanCollapse(TTreeNode* node) override;
  void Collapsed(TTreeNode* node) override;
  bool CanEdit(TTreeNode* node) override;
  void Edit(TTreeNode* node, const TString& text) override;
  void CancelEdit(TTreeNode* node) override;
  void Delete(TTreeNode* node) override;
  void Added(TTreeNode* node) override;
  void GetImageIndex(TTreeNode* node) override;
  void DoBeginDrag(TTreeNode* node, TMouseButton button) override;
  bool IsCustomDrawn(TCustomDrawTarget target, TCustomDrawStage stage) override;
  bool CustomDrawItem(TCanvas& canvas, TTreeNode* node, TCustomDrawState state,
                      TCustomDrawStage stage) override;
  void MouseDown(TMouseButton button, TShiftState shift, int x, int y) override;
  void MouseUp(TMouseButton button, TShiftState shift, int x, int y) override;
  void Click() override;
  void DblClick() override;
  void KeyDown(std::uint16_t& key, TShiftState shift) override;
  void WMContextMenu(TPoint screen) override;
  void DoEnter() override;
  void DoExit() override;

 private:
  bool Note(const std::string& event, bool log = true);
};

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

  std::unique_ptr<IScreenDriver> screen = MakeScreenDriver();
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
  void Press(std::uint16_t key, TShiftState shift = {}) { screen->Key(key, shift); }
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
  /// Builds nodes from lines that are indented by a blank for each level.
  void Build(std::initializer_list<TStringView> lines);

  std::unique_ptr<TImageList> images = MakeImages(16, 4);
  TTreeUnderTest* tree = new TTreeUnderTest;
};

}  // namespace oak::tests
