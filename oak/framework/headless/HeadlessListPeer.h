// The window of a list view on the headless desktop.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "oak/framework/ListView.h"
#include "oak/framework/headless/HeadlessLabelPeer.h"

namespace oak {

class THeadlessListHeader;

/// Rows, columns or icons with their layout, scroll bars, mouse and keys. It knows where it is
/// scrolled to, where a range of the selection began and what the mouse is at; all else it asks of
/// the list when it needs it.
class THeadlessListPeer : public THeadlessLabelPeer<IListViewPeer, TCustomListView> {
 public:
  THeadlessListPeer(THeadlessDesktop& desktop, TCustomListView& view);
  ~THeadlessListPeer() override;

  TCustomListView& GetView() const noexcept { return fView; }

  // --- IListViewPeer -------------------------------------------------------------------------
  void ItemsInserted(int index, int count) override;
  void ItemsDeleted(int index, int count) override;
  void ItemsReset() override;
  void ItemsChanged(int first, int last) override;
  void ItemStatesChanged(int first, int last) override { ItemsChanged(first, last); }
  void BeginUpdate() override { ++fUpdateCount; }
  void EndUpdate() override;
  void ColumnsChanged() override { LayoutChanged(); }
  void ColumnWidthChanged(int column) override;
  void SetViewStyle() override;
  void ImagesChanged(TListImages which) override;
  void SetIconSpacing(int width, int height) override;
  void SetDefaultColumnWidth(int width) override;
  void SetBackground() override { Invalidate(nullptr); }
  void Arrange() override { LayoutChanged(); }
  TRect GetItemRect(int index, TDisplayCode code) const override;
  TRect GetSubItemRect(int index, int column) const override;
  TListHitTest HitTest(TPoint point) const override;
  int GetTopIndex() const override;
  int GetVisibleRowCount() const override;
  void MakeVisible(int index, bool partialOk) override;
  void Scroll(int dx, int dy) override;
  int GetStringWidth(const TString& text) const override;
  bool BeginEdit(int index) override;
  void EndEdit(bool cancel) override;
  HWND GetHeaderHandle() const override;
  TRect GetHeaderRect() const override;
  int HeaderHitTest(TPoint point) const override;

  // --- THeadlessWindow -----------------------------------------------------------------------
  void Paint(TCanvas& canvas, const TRect& clip) override;
  void OnMouse(TMouseEvent& event) override;
  void OnKey(TKeyEvent& event) override;
  void OnBoundsChanged() override { LayoutChanged(); }
  void OnStateChanged() override { LayoutChanged(); }
  void OnFocusChanged(bool focused) override;
  void OnCaptureLost() override { fPress = {}; }
  void OnScroll(TScrollBarKind kind, int position) override;
  void OnTimerTick(int id) override;
  void ColorsChanged() override;

  // --- for tests -----------------------------------------------------------------------------
  /// How often the list was asked since the last ResetRequests.
  int GetTextRequests() const noexcept { return fTextRequests; }
  int GetImageRequests() const noexcept { return fImageRequests; }
  void ResetRequests() noexcept { fTextRequests = fImageRequests = 0; }
  THeadlessListHeader& GetHeader() const noexcept { return *fHeader; }
  int GetRowHeight() const;

  /// The header moved or sized something.
  void LayoutChanged();
  bool IsReport() const { return fView.GetViewStyle() == vsReport; }

 private:
  /// How the items stand in vsIcon, vsSmallIcon and vsList: cells in lines of `PerLine`, which run
  /// down in vsList, across in the others. vsReport is a single column of rows.
  struct TGrid {
    TSize Cell;
    int PerLine = 1;
    bool Down = false;
  };
  /// Parts of an item in client pixels.
  struct TParts {
    TRect Bounds;
    TRect State;
    TRect Icon;
    TRect Label;  ///< Where the text may stand.
    TRect Text;   ///< Where it stands.
  };
  /// States of the rows that are seen: what changed meanwhile is painted anew.
  class TStateWatch;
  struct TPress {
    int Index = -1;
    TMouseButton Button = mbLeft;
    TPoint Start;
    bool SelectOnUp = false;  ///< One of several selected rows: alone selected if not dragged.
    bool EditOnUp = false;
  };

  // Layout.
  TRect GetRowArea() const;
  TGrid GetGrid() const;
  TSize GetContentSize(const TGrid& grid, TSize area) const;
  TPoint GetOffset() const;
  TRect GetCell(const TGrid& grid, int index) const;
  int GetStateWidth() const;
  const TImageList* GetImages() const;
  /// Without a text, that has all the room.
  TParts GetParts(int index, const TString* text) const;
  void PlaceBeside(const TListItem& item, const TRect& cell, const TString* text,
                   TParts& parts) const;
  void PlaceBelow(const TRect& cell, const TString* text, TParts& parts) const;
  TString AskText(int index, int column) const;
  std::vector<int> IndexesIn(const TRect& rect) const;
  TListHitTest HitRow(int index, TPoint point) const;
  void UpdateScrollBars();
  bool SetBar(TScrollBarKind kind, int page, int range, int line);
  void InvalidateRows(int first, int last);

  // Painting. False if the window is gone.
  void PaintBackground(TCanvas& canvas, const TRect& clip);
  bool PaintItem(TCanvas& canvas, int index, const TRect& clip);
  void PrepareCanvas(TCanvas& canvas, int index) const;
  void PaintParts(TCanvas& canvas, int index, const TParts& parts, const TString& text, int image);
  bool PaintSubItems(TCanvas& canvas, int index, const TParts& parts, const TRect& clip);
  void PaintGridLines(TCanvas& canvas, const TRect& clip) const;
  void PaintState(TCanvas& canvas, const TListItem& item, const TRect& rect) const;
  TCustomDrawState GetDrawState(int index) const;
  bool IsMarked(int index) const;

  // Input.
  void Wheel(TMouseEvent& event);
  void MouseDown(TMouseEvent& event);
  void MouseMove(const TMouseEvent& event);
  void MouseUp(TMouseEvent& event);
  void MouseSelect(int index, const TMouseEvent& event, bool onLabel, bool hadFocus);
  bool KeyDown(const TKeyEvent& event);
  void TypeChar(char16_t character);
  bool IsSearching() const;
  void PressSpace(TShiftState shift);
  int GetKeyTarget(std::uint16_t key) const;
  int GetFocusIndex() const;
  void GoTo(int index, TShiftState shift);
  bool SelectTo(int index, TShiftState shift);
  void StopEditTimer();

  std::unique_ptr<THeadlessListHeader> fHeader;
  TPress fPress;
  bool fRightDragged = false;  // the release of the button asks for no menu then
  int fAnchor = -1;            // where a range with the shift key begins
  int fUpdateCount = 0;
  TString fSearch;
  std::uint64_t fSearchTicks = 0;
  mutable int fTextRequests = 0;
  int fImageRequests = 0;
};

}  // namespace oak
