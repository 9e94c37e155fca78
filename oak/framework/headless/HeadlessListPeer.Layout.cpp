// Where things stand in a headless list.
#include <algorithm>

#include "oak/framework/ImageList.h"
#include "oak/framework/TextMetrics.h"
#include "oak/framework/headless/HeadlessListHeader.h"
#include "oak/framework/headless/HeadlessListPeer.h"

namespace oak {
namespace {

// At 96 pixels per inch.
constexpr int CheckBoxWidth = 16;
constexpr int RowGap = 2;             // between the lines of two rows
constexpr int TextIndent = 2;         // between the edge of a cell and its text
constexpr int ListColumnWidth = 200;  // of vsList and vsSmallIcon, when none was set
constexpr int IconGap = 43;           // between two icons of vsIcon, when no spacing was set
constexpr int IconIndent = 2;         // above and below an icon
constexpr int LabelLines = 2;         // of vsIcon

int CountLines(int count, int perLine) { return (count + perLine - 1) / perLine; }

}  // namespace

int THeadlessListPeer::GetRowHeight() const {
  int height = GetLineHeight();
  if (const TImageList* const images = fView.GetSmallImages())
    height = std::max(height, images->GetHeight());
  if (const TImageList* const images = fView.GetStateImages())
    height = std::max(height, images->GetHeight());
  return height + Scaled(RowGap);
}

int THeadlessListPeer::GetStateWidth() const {
  if (const TImageList* const images = fView.GetStateImages()) return images->GetWidth();
  return fView.GetCheckboxes() ? Scaled(CheckBoxWidth) : 0;
}

const TImageList* THeadlessListPeer::GetImages() const {
  return fView.GetViewStyle() == vsIcon ? fView.GetLargeImages() : fView.GetSmallImages();
}

TRect THeadlessListPeer::GetRowArea() const {
  TRect area = GetClientRect();
  if (IsReport() && fView.GetShowColumnHeaders())
    area.Top = std::min(area.Bottom, fHeader->GetNaturalHeight());
  return area;
}

TPoint THeadlessListPeer::GetOffset() const {
  return {GetScrollInfo(sbHorizontal).Position, GetScrollInfo(sbVertical).Position};
}

THeadlessListPeer::TGrid THeadlessListPeer::GetGrid() const {
  TGrid grid;
  const TSize area = GetRowArea().Size();
  const int columnWidth = fView.GetDefaultColumnWidthPixels();
  grid.Cell = {columnWidth > 0 ? columnWidth : Scaled(ListColumnWidth), GetRowHeight()};
  switch (fView.GetViewStyle()) {
    case vsReport: {
      const int columns = fView.Columns().GetCount();
      const int offset = GetScrollInfo(sbHorizontal).Position;
      grid.Cell.Width =
          std::max(1, columns > 0 ? fHeader->GetColumnLeft(columns) + offset : area.Width);
      return grid;
    }
    case vsList:
      grid.Down = true;
      grid.PerLine = std::max(1, area.Height / grid.Cell.Height);
      return grid;
    case vsIcon: {
      const TImageList* const images = fView.GetLargeImages();
      const TSize spacing = fView.GetIconSpacingPixels();
      const int gap = Scaled(IconGap);
      if (spacing.Width >= 0)
        grid.Cell = {std::max(1, spacing.Width), std::max(1, spacing.Height)};
      else
        grid.Cell = {gap + (images ? images->GetWidth() : Scaled(32)),
                     gap + (images ? images->GetHeight() : Scaled(32))};
      break;
    }
    case vsSmallIcon:
      break;
  }
  grid.PerLine = std::max(1, area.Width / grid.Cell.Width);
  return grid;
}

TSize THeadlessListPeer::GetContentSize(const TGrid& grid, TSize area) const {
  const int count = fView.Items().GetCount();
  const int lines = CountLines(count, grid.PerLine);
  if (grid.Down) return {lines * grid.Cell.Width, 0};
  const int width = IsReport() || grid.Cell.Width > area.Width ? grid.Cell.Width : 0;
  return {width, lines * grid.Cell.Height};
}

TRect THeadlessListPeer::GetCell(const TGrid& grid, int index) const {
  const int line = index / grid.PerLine;
  const int place = index % grid.PerLine;
  const TPoint cell = grid.Down ? TPoint(line, place) : TPoint(place, line);
  const TPoint corner(cell.X * grid.Cell.Width, cell.Y * grid.Cell.Height);
  return {GetRowArea().TopLeft() + corner - GetOffset(), grid.Cell};
}

// --- parts of an item ---------------------------------------------------------------------------

TString THeadlessListPeer::AskText(int index, int column) const {
  ++fTextRequests;
  return fView.HandleGetText(index, column);
}

THeadlessListPeer::TParts THeadlessListPeer::GetParts(int index, const TString* text) const {
  TParts parts;
  const TListItem* const item = fView.Items().GetItem(index);
  if (!item) return parts;
  const TRect cell = GetCell(GetGrid(), index);
  if (fView.GetViewStyle() == vsIcon)
    PlaceBelow(cell, text, parts);
  else
    PlaceBeside(*item, cell, text, parts);
  parts.Bounds = IsReport() ? cell : parts.State.United(parts.Icon).United(parts.Text);
  return parts;
}

void THeadlessListPeer::PlaceBeside(const TListItem& item, const TRect& cell, const TString* text,
                                    TParts& parts) const {
  const TImageList* const images = GetImages();
  const TSize icon = images ? TSize{images->GetWidth(), images->GetHeight()} : TSize();
  TRect room = cell;
  if (IsReport() && fView.Columns().GetCount() > 0) {
    const int label = fView.Columns().GetLabelColumn();
    room.Left = fHeader->GetColumnLeft(label);
    room.Right = fHeader->GetColumnLeft(label + 1);
  }
  const auto take = [&](TSize size) {
    const int right = std::min(room.Right, room.Left + size.Width);
    const int top = room.Top + (room.Height() - size.Height) / 2;
    const TRect taken(room.Left, top, right, top + size.Height);
    room.Left = right;
    return taken;
  };
  if (IsReport()) take({item.GetIndent() * icon.Width, 0});
  parts.State = take({GetStateWidth(), room.Height()});
  parts.Icon = take(icon);
  parts.Label = parts.Text = room;
  if (!text) return;
  const int width = TextWidth(GetFont(), *text) + 2 * Scaled(TextIndent);
  parts.Text.Right = std::min(room.Right, room.Left + width);
}

void THeadlessListPeer::PlaceBelow(const TRect& cell, const TString* text, TParts& parts) const {
  const TImageList* const images = GetImages();
  const TSize icon = images ? TSize{images->GetWidth(), images->GetHeight()} : TSize();
  const int gap = Scaled(IconIndent);
  parts.Icon = {{cell.Left + (cell.Width() - icon.Width) / 2, cell.Top + gap}, icon};
  parts.State = {parts.Icon.Left - GetStateWidth(), parts.Icon.Top, parts.Icon.Left,
                 parts.Icon.Bottom};
  parts.Label = {cell.Left + gap, parts.Icon.Bottom + gap, cell.Right - gap, cell.Bottom};
  parts.Label.Bottom = std::min(std::max(parts.Label.Top, cell.Bottom),
                                parts.Label.Top + LabelLines * GetLineHeight());
  parts.Text = parts.Label;
  if (!text) return;
  const TRect needed = MeasureText(GetFont(), parts.Label, *text, {tfWordBreak, tfNoPrefix});
  const int width = std::min(parts.Label.Width(), needed.Width() + 2 * gap);
  parts.Text.Left = cell.Left + (cell.Width() - width) / 2;
  parts.Text.Right = parts.Text.Left + width;
  parts.Text.Bottom = std::min(parts.Label.Bottom, parts.Label.Top + needed.Height());
}

TRect THeadlessListPeer::GetItemRect(int index, TDisplayCode code) const {
  const TLifeGuard guard = Guard();
  // In vsReport the label's cell is meant; elsewhere its place depends on the text.
  const bool ask = !IsReport() && code != drIcon;
  const TString text = ask && fView.Items().GetItem(index) ? AskText(index, 0) : TString();
  if (!guard.IsAlive()) return {};
  const TParts parts = GetParts(index, ask ? &text : nullptr);
  switch (code) {
    case drBounds:
      return parts.Bounds;
    case drIcon:
      return parts.Icon;
    case drLabel:
      return parts.Text;
    default:
      return parts.Icon.United(parts.Text);
  }
}

TRect THeadlessListPeer::GetSubItemRect(int index, int column) const {
  if (!fView.Items().GetItem(index) || column < 0 || column >= fView.Columns().GetCount())
    return {};
  TRect rect = GetCell(GetGrid(), index);
  if (!IsReport()) return rect;
  rect.Left = fHeader->GetColumnLeft(column);
  rect.Right = fHeader->GetColumnLeft(column + 1);
  return rect;
}

// --- what is where

std::vector<int> THeadlessListPeer::IndexesIn(const TRect& rect) const {
  std::vector<int> indexes;
  const TGrid grid = GetGrid();
  const TRect area = GetRowArea();
  const TRect part = rect.Intersected(area);
  if (part.IsEmpty()) return indexes;
  const TPoint offset = GetOffset() - area.TopLeft();
  const auto line = [&](int x, int y) {
    return grid.Down ? (x + offset.X) / grid.Cell.Width : (y + offset.Y) / grid.Cell.Height;
  };
  const int first = line(part.Left, part.Top) * grid.PerLine;
  const int end = (line(part.Right - 1, part.Bottom - 1) + 1) * grid.PerLine;
  for (int i = std::max(0, first); i < std::min(end, fView.Items().GetCount()); ++i)
    if (GetCell(grid, i).Intersects(part)) indexes.push_back(i);
  return indexes;
}

TListHitTest THeadlessListPeer::HitTest(TPoint point) const {
  TListHitTest hit;
  const TRect client = GetClientRect();
  if (point.X < client.Left) hit.Flags.Include(htToLeft);
  if (point.X >= client.Right) hit.Flags.Include(htToRight);
  if (point.Y < client.Top) hit.Flags.Include(htAbove);
  if (point.Y >= client.Bottom) hit.Flags.Include(htBelow);
  if (!hit.Flags.IsEmpty()) return hit;
  const std::vector<int> indexes = IndexesIn({point, {1, 1}});
  if (!indexes.empty()) return HitRow(indexes.front(), point);
  hit.Flags = htNowhere;
  return hit;
}

TListHitTest THeadlessListPeer::HitRow(int index, TPoint point) const {
  TListHitTest hit;
  hit.Flags = htNowhere;
  const TLifeGuard guard = Guard();
  const TString text = AskText(index, fView.Columns().GetLabelColumn());
  if (!guard.IsAlive()) return hit;
  const TParts parts = GetParts(index, &text);
  if (IsReport() && fView.Columns().GetCount() > 0) {
    hit.SubItem = fHeader->ColumnAt(point.X);
    if (hit.SubItem < 0) {
      hit.SubItem = 0;
      return hit;
    }
    hit.Index = index;
  }
  if (parts.State.Contains(point))
    hit.Flags = htOnStateIcon;
  else if (parts.Icon.Contains(point))
    hit.Flags = htOnIcon;
  else if (parts.Text.Contains(point) || (IsReport() && fView.GetRowSelect()))
    hit.Flags = htOnLabel;
  else
    return hit;
  hit.Index = index;
  return hit;
}

void THeadlessListPeer::InvalidateRows(int first, int last) {
  if (fUpdateCount > 0) return;
  const TGrid grid = GetGrid();
  const int top = GetTopIndex();
  first = std::max(first, top);
  last = std::min(last, top + GetVisibleRowCount() + 2 * grid.PerLine);
  TRect rect;
  for (int i = first; i <= last; ++i) rect = rect.United(GetCell(grid, i));
  if (IsReport()) rect.Right = std::max(rect.Right, GetClientRect().Right);
  if (!rect.IsEmpty()) Invalidate(&rect);
}

}  // namespace oak
