#include "oak/framework/headless/HeadlessListHeader.h"

#include <algorithm>
#include <cstdlib>

#include "oak/framework/Canvas.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/headless/HeadlessListPeer.h"

namespace oak {
namespace {

// At 96 pixels per inch.
constexpr int HeaderPadding = 8;    // above and below the caption together
constexpr int CaptionIndent = 6;    // between an edge and the caption
constexpr int DividerReach = 4;     // to either side of an edge
constexpr int HeaderDragStart = 4;  // pixels until a press becomes a drag

}  // namespace

THeadlessListHeader::THeadlessListHeader(THeadlessListPeer& list)
    : THeadlessWindow(list.GetDesktop(), THeadlessKind::Child, &list, {}), fList(list) {
  SetFont(list.GetFont());
}

TListColumns& THeadlessListHeader::Columns() const { return fList.GetView().Columns(); }

int THeadlessListHeader::GetNaturalHeight() const {
  return fList.GetLineHeight() + Scaled(HeaderPadding);
}

int THeadlessListHeader::GetColumnLeft(int column) const {
  int left = -fList.GetScrollInfo(sbHorizontal).Position;
  for (int i = 0; i < column; ++i) left += std::max(0, Columns()[i]->GetWidth());
  return left;
}

int THeadlessListHeader::ColumnAt(int x) const {
  int left = GetColumnLeft(0);
  for (int i = 0; i < Columns().GetCount(); ++i) {
    const int right = left + std::max(0, Columns()[i]->GetWidth());
    if (x >= left && x < right) return i;
    left = right;
  }
  return -1;
}

int THeadlessListHeader::DividerAt(int x) const {
  int right = GetColumnLeft(0);
  int found = -1;
  // Of edges at one place the last counts: that is how a hidden column is opened again.
  for (int i = 0; i < Columns().GetCount(); ++i) {
    right += std::max(0, Columns()[i]->GetWidth());
    if (std::abs(x - right) <= Scaled(DividerReach)) found = i;
  }
  return found;
}

TCursor THeadlessListHeader::CursorAt(TPoint point) const {
  return fAction == TAction::Size || DividerAt(point.X) >= 0 ? crSizeWE : crDefault;
}

// --- painting -------------------------------------------------------------------------------

void THeadlessListHeader::Paint(TCanvas& canvas, const TRect& clip) {
  canvas.GetBrush().SetColor(clBtnFace);
  canvas.FillRect(clip);
  const int height = GetClientRect().Height();
  for (int i = 0; i < Columns().GetCount(); ++i) {
    const TRect rect(GetColumnLeft(i), 0, GetColumnLeft(i + 1), height);
    if (rect.Intersects(clip)) PaintColumn(canvas, i, rect);
  }
}

void THeadlessListHeader::PaintColumn(TCanvas& canvas, int index, const TRect& rect) const {
  const TListColumn& column = *Columns()[index];
  canvas.GetPen().SetColor(clBtnShadow);
  canvas.MoveTo(rect.Right - 1, rect.Top);
  canvas.LineTo(rect.Right - 1, rect.Bottom);

  TRect text = rect.Inflated(-Scaled(CaptionIndent), 0);
  const TImageList* const images = fList.GetView().GetSmallImages();
  if (images && column.GetImageIndex() >= 0) {
    canvas.DrawImage(*images, column.GetImageIndex(), text.Left,
                     rect.Center().Y - images->GetHeight() / 2);
    text.Left += images->GetWidth() + Scaled(2);
  }
  if (column.GetSortMark() != TListSortMark::None) {
    const int size = Scaled(4);
    const TPoint tip(text.Right - size, rect.Center().Y);
    const int down = column.GetSortMark() == TListSortMark::Down ? size : -size;
    const TPoint arrow[] = {{tip.X - size, tip.Y}, {tip.X + size, tip.Y}, {tip.X, tip.Y + down}};
    canvas.GetBrush().SetColor(clBtnShadow);
    canvas.Polygon(arrow);
    text.Right -= 3 * size;
  }
  TTextFormat format{tfSingleLine, tfVerticalCenter, tfEndEllipsis, tfNoPrefix};
  if (column.GetAlignment() == taCenter) format.Include(tfCenter);
  if (column.GetAlignment() == taRightJustify) format.Include(tfRight);
  canvas.GetBrush().SetStyle(bsClear);
  canvas.GetFont().SetColor(clBtnText);
  if (!text.IsEmpty()) canvas.DrawText(text, column.GetCaption(), format);
}

// --- mouse ------------------------------------------------------------------------------------

void THeadlessListHeader::OnMouse(TMouseEvent& event) {
  switch (event.Action) {
    case TMouseAction::Down:
      return Down(event);
    case TMouseAction::Move:
      return Track(event);
    case TMouseAction::Up:
      return Up(event);
    default:
      return;
  }
}

void THeadlessListHeader::Down(const TMouseEvent& event) {
  if (event.Button != mbLeft) return;
  const int x = event.Position.X;
  const int divider = DividerAt(x);
  fStart = event.Position;
  fColumn = divider >= 0 ? divider : ColumnAt(x);
  if (divider >= 0 && event.Shift.Contains(ssDouble)) {
    TCustomListView& view = fList.GetView();
    const TLifeGuard guard = Guard();
    Columns()[divider]->SetWidth(TListColumn::FitTexts);
    if (guard.IsAlive() && divider < Columns().GetCount())
      view.HandleColumnWidth(divider, Columns()[divider]->GetWidth(), true);
    return;
  }
  if (fColumn < 0) return;
  fAction = divider >= 0 ? TAction::Size : TAction::Press;
  fStartWidth = Columns()[fColumn]->GetWidth();
  SetCapture(true);
}

void THeadlessListHeader::Track(const TMouseEvent& event) {
  if (fAction == TAction::Size) return Size(event.Position.X, false);
  if (fAction == TAction::Press && fList.GetView().GetFullDrag() &&
      std::abs(event.Position.X - fStart.X) > Scaled(HeaderDragStart))
    fAction = TAction::Move;
}

void THeadlessListHeader::Size(int x, bool finished) {
  if (fColumn >= Columns().GetCount()) return;
  const TLifeGuard guard = Guard();
  fList.GetView().HandleColumnWidth(fColumn, std::max(0, fStartWidth + x - fStart.X), finished);
  if (guard.IsAlive()) fList.LayoutChanged();
}

void THeadlessListHeader::Up(const TMouseEvent& event) {
  TCustomListView& view = fList.GetView();
  const int x = event.Position.X;
  const bool inside = GetClientRect().Contains(event.Position);
  if (event.Button == mbRight && inside)
    return view.HandleColumnRightClick(ColumnAt(x), event.Position);
  const TAction action = fAction;
  if (event.Button != mbLeft || action == TAction::None) return;
  const TLifeGuard guard = Guard();
  fAction = TAction::None;
  SetCapture(false);
  if (!guard.IsAlive()) return;
  if (action == TAction::Size) return Size(x, true);
  if (action == TAction::Move) return Drop(fColumn, x);
  if (inside && ColumnAt(x) == fColumn) view.HandleColumnClick(fColumn);
}

void THeadlessListHeader::Drop(int column, int x) {
  if (column >= Columns().GetCount()) return;
  const int last = Columns().GetCount() - 1;
  int to = x < GetColumnLeft(0) ? 0 : ColumnAt(x);
  if (to < 0) to = last;
  TCustomListView& view = fList.GetView();
  const TLifeGuard guard = Guard();
  if (to == column || !view.HandleColumnDragging(column, to, x) || !guard.IsAlive()) return;
  view.HandleColumnDragged(column, to);
}

}  // namespace oak
