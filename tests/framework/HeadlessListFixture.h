// A list on a headless screen, for tests.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "oak/framework/Forms.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/ListView.h"
#include "oak/framework/headless/HeadlessListHeader.h"
#include "oak/framework/headless/HeadlessListPeer.h"
#include "testkit/HeadlessForms.h"

namespace oak::tests {

/// Writes down what the list tells it.
class TToldListPeer final : public THeadlessListPeer {
 public:
  TToldListPeer(THeadlessDesktop& desktop, TCustomListView& view, std::vector<std::string>& log)
      : THeadlessListPeer(desktop, view), fLog(log) {}

  void ItemsInserted(int index, int count) override {
    Note("inserted", index, count);
    THeadlessListPeer::ItemsInserted(index, count);
  }
  void ItemsDeleted(int index, int count) override {
    Note("deleted", index, count);
    THeadlessListPeer::ItemsDeleted(index, count);
  }
  void ItemsReset() override {
    fLog.push_back("reset");
    THeadlessListPeer::ItemsReset();
  }
  void ItemsChanged(int first, int last) override {
    Note("changed", first, last);
    THeadlessListPeer::ItemsChanged(first, last);
  }
  void ItemStatesChanged(int first, int last) override {
    Note("states", first, last);
    THeadlessListPeer::ItemsChanged(first, last);
  }
  void ColumnsChanged() override {
    fLog.push_back("columns");
    THeadlessListPeer::ColumnsChanged();
  }
  void ColumnWidthChanged(int column) override {
    fLog.push_back("width " + std::to_string(column));
    THeadlessListPeer::ColumnWidthChanged(column);
  }

 private:
  void Note(const char* what, int a, int b) {
    fLog.push_back(std::string(what) + " " + std::to_string(a) + " " + std::to_string(b));
  }
  std::vector<std::string>& fLog;
};

/// A list whose events are written down, and which asks a hook at each of them.
class TScreenList : public TCustomListView {
 public:
  explicit TScreenList(TWinControl* parent) : TCustomListView(nullptr) {
    SetBorderStyle(bsNone);
    SetBounds(0, 0, 300, 200);
    SetParent(parent);
  }
  ~TScreenList() override { BeginDestroy(); }

  /// Called with the name of each event.
  std::function<void(const std::string& event)> OnEvent;
  std::vector<std::string> Log;   ///< Events since Take.
  std::vector<std::string> Told;  ///< What the peer was told.
  std::function<bool(TCanvas&, TCustomDrawStage)> OnDrawAll;

  std::vector<std::string> Take() { return std::exchange(Log, {}); }
  std::vector<std::string> TakeTold() { return std::exchange(Told, {}); }
  THeadlessListPeer& Peer() { return dynamic_cast<THeadlessListPeer&>(*GetListPeer()); }
  TListItem* Row(int index) { return Items()[index]; }

  void Fill(int count) {
    Items().BeginUpdate();
    for (int i = 0; i < count; ++i) {
      TListItem* const item = Items().Add();
      item->SetCaption(u"row " + IntToStr(i));
      item->GetSubItems().Add(u"size " + IntToStr(i));
      item->GetSubItems().Add(u"date " + IntToStr(i));
      item->SetImageIndex(i % 3);
    }
    Items().EndUpdate();
  }
  void AddColumns(std::initializer_list<int> widths) {
    Columns().BeginUpdate();
    for (const int width : widths) {
      TListColumn* const column = Columns().Add();
      column->SetCaption(u"Col" + IntToStr(column->GetIndex()));
      column->SetWidth(width);
    }
    Columns().EndUpdate();
  }
  /// Selected rows, the focused one in brackets whether it is selected or not (then with a "-").
  std::string State() {
    std::string text;
    for (const TListItem* const item : Items()) {
      const std::string index = std::to_string(item->GetIndex());
      if (item->GetFocused())
        text += (item->GetSelected() ? "[" : "[-") + index + "] ";
      else if (item->GetSelected())
        text += index + " ";
    }
    if (!text.empty()) text.pop_back();
    return text;
  }
  TPoint LabelPoint(int index) { return Row(index)->DisplayRect(drLabel).TopLeft() + TPoint(4, 4); }

 protected:
  std::unique_ptr<IControlPeer> CreatePeer() override {
    return std::make_unique<TToldListPeer>(dynamic_cast<THeadlessDesktop&>(WidgetSet()), *this,
                                           Told);
  }
  void DoSelectItem(TListItem* item, bool selected) override {
    if (Note("select")) TCustomListView::DoSelectItem(item, selected);
  }
  void MouseDown(TMouseButton button, TShiftState shift, int x, int y) override {
    if (Note("mouse down")) TCustomListView::MouseDown(button, shift, x, y);
  }
  void DblClick() override {
    if (Note("double click")) TCustomListView::DblClick();
  }
  void KeyDown(std::uint16_t& key, TShiftState shift) override {
    if (Note("key")) TCustomListView::KeyDown(key, shift);
  }
  void DoBeginDrag(TMouseButton button) override {
    Note(button == mbLeft ? "drag left" : "drag right");
  }
  void ColClick(TListColumn* column) override {
    Note("column click " + std::to_string(column->GetIndex()));
  }
  void ColRightClick(TListColumn* column, TPoint) override {
    Note("column right " + (column ? std::to_string(column->GetIndex()) : std::string("none")));
  }
  void ColResized(int column, bool finished) override {
    Note("column size " + std::to_string(column) + (finished ? " end" : ""));
  }
  void ColDragged(int from, int to) override {
    Note("column drag " + std::to_string(from) + " " + std::to_string(to));
  }
  bool CanEdit(TListItem* item) override { return Note("edit?") && TCustomListView::CanEdit(item); }
  void Edit(TListItem* item, const TString& text) override {
    if (Note("edit " + ToUtf8(text)) && Lives(item)) TCustomListView::Edit(item, text);
  }
  void CancelEdit(TListItem*) override { Note("edit cancelled"); }
  void GetImageIndex(TListItem* item) override {
    if (Note("image") && Lives(item)) TCustomListView::GetImageIndex(item);
  }
  /// Whether a row is still in the list, without a look into it.
  bool Lives(const TListItem* item) {
    for (const TListItem* row : Items())
      if (row == item) return true;
    return false;
  }
  TString GetColumnText(TListItem* item, int column) override {
    if (!Note("text")) return {};
    // The hook may have removed the row.
    return Lives(item) ? TCustomListView::GetColumnText(item, column) : TString();
  }
  bool IsCustomDrawn(TCustomDrawTarget target, TCustomDrawStage stage) override {
    return (target == dtControl && (OnDrawAll || OnEvent)) ||
           TCustomListView::IsCustomDrawn(target, stage);
  }
  bool CustomDraw(TCanvas& canvas, const TRect&, TCustomDrawStage stage) override {
    if (!Note("draw")) return false;
    return !OnDrawAll || OnDrawAll(canvas, stage);
  }
  void WMContextMenu(TPoint) override { Note("menu"); }

 private:
  // False if the list is gone. What is asked while drawing is not written down.
  bool Note(const std::string& event) {
    if (event != "image" && event != "text" && event != "draw") Log.push_back(event);
    if (!OnEvent) return true;
    const TLifeGuard guard = GetLifeGuard();
    const auto hook = OnEvent;
    hook(event);
    return guard.IsAlive();
  }
};

/// A list of 300 by 200 pixels without border, at the upper left corner of a form.
class THeadlessListTest : public ::testing::Test {
 protected:
  THeadlessListTest() {
    form.SetBounds(100, 100, 500, 400);
    for (int i = 0; i < 4; ++i) {
      small.Add(TBitmap(16, 16));
      large.Add(TBitmap(32, 32));
    }
    list = std::make_unique<TScreenList>(&form);
  }
  ~THeadlessListTest() override { list.reset(); }

  void ShowReport(int rows, std::initializer_list<int> widths = {120, 80, 60}) {
    list->SetSmallImages(&small);
    list->SetViewStyle(vsReport);
    list->AddColumns(widths);
    list->Fill(rows);
    Show();
  }
  void ShowStyle(TViewStyle style, int rows) {
    list->SetSmallImages(&small);
    list->SetLargeImages(&large);
    list->SetViewStyle(style);
    list->Fill(rows);
    Show();
  }
  void Show() {
    form.Show();
    list->SetFocus();
    screen.Drain();
    list->Take();
    list->TakeTold();
    list->Peer().ResetRequests();
  }
  TPoint AtRow(int index) { return list->LabelPoint(index); }
  /// In the header: the middle of a column, or its right edge.
  TPoint OnHeader(int column) {
    const THeadlessListHeader& header = list->Peer().GetHeader();
    return {(header.GetColumnLeft(column) + header.GetColumnLeft(column + 1)) / 2, 10};
  }
  TPoint OnDivider(int column) {
    return {list->Peer().GetHeader().GetColumnLeft(column + 1) - 1, 10};
  }
  void Press(std::uint16_t key, TShiftState shift = {}) { screen->KeyPress(key, shift); }

  testkit::THeadlessScreen screen{[](const std::string& text) { ADD_FAILURE() << text; }};
  TImageList small{nullptr, 16, 16};
  TImageList large{nullptr, 32, 32};
  TForm form;
  std::unique_ptr<TScreenList> list;
};

using TEvents = std::vector<std::string>;

}  // namespace oak::tests
