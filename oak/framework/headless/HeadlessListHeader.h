// The header above the columns of a headless list.
#pragma once

#include "oak/framework/headless/HeadlessWindow.h"

namespace oak {

class THeadlessListPeer;
class TListColumn;
class TListColumns;

/// A child window of the list, which owns it. Captions are pressed, edges dragged to size columns,
/// captions dragged to move them.
class THeadlessListHeader final : public THeadlessWindow {
 public:
  explicit THeadlessListHeader(THeadlessListPeer& list);

  /// Pixels for one line of the list's font.
  int GetNaturalHeight() const;
  /// Left edge of a column in header pixels; the count of columns gives the right end of the last.
  int GetColumnLeft(int column) const;
  /// Column at an x, or -1.
  int ColumnAt(int x) const;
  /// Column whose right edge is near x, or -1.
  int DividerAt(int x) const;

  void Paint(TCanvas& canvas, const TRect& clip) override;
  void OnMouse(TMouseEvent& event) override;
  void OnCaptureLost() override { fAction = TAction::None; }
  TCursor CursorAt(TPoint point) const override;
  /// The list hears of right clicks otherwise.
  void RequestContextMenu(TPoint) override {}

 private:
  enum class TAction : std::uint8_t { None, Press, Move, Size };

  TListColumns& Columns() const;
  void PaintColumn(TCanvas& canvas, int index, const TRect& rect) const;
  void Down(const TMouseEvent& event);
  void Track(const TMouseEvent& event);
  void Up(const TMouseEvent& event);
  void Size(int x, bool finished);
  void Drop(int column, int x);

  THeadlessListPeer& fList;
  TAction fAction = TAction::None;
  int fColumn = -1;
  TPoint fStart;
  int fStartWidth = 0;
};

}  // namespace oak
