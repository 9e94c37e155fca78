// What the list tells and asks its headless window.
#include "oak/framework/headless/HeadlessListPeer.h"

#include <algorithm>
#include <utility>

#include "oak/framework/TextMetrics.h"
#include "oak/framework/headless/HeadlessListHeader.h"

namespace oak {

std::unique_ptr<IListViewPeer> CreateHeadlessListPeer(THeadlessDesktop& desktop,
                                                      TCustomListView& view) {
  return std::make_unique<THeadlessListPeer>(desktop, view);
}

THeadlessListPeer::THeadlessListPeer(THeadlessDesktop& desktop, TCustomListView& view)
    : THeadlessLabelPeer(desktop, view), fHeader(std::make_unique<THeadlessListHeader>(*this)) {
  LayoutChanged();
}

THeadlessListPeer::~THeadlessListPeer() = default;

// --- changes of the model ---------------------------------------------------------------------

void THeadlessListPeer::ItemsInserted(int index, int count) {
  if (fAnchor >= index) fAnchor += count;
  UpdateScrollBars();
  InvalidateRows(index, fView.Items().GetCount() - 1);
}

void THeadlessListPeer::ItemsDeleted(int index, int count) {
  if (fAnchor >= index) fAnchor = std::max(index, fAnchor - count);
  if (fAnchor >= fView.Items().GetCount()) fAnchor = -1;
  fPress = {};
  UpdateScrollBars();
  // What stood where the rows are not any more has to go as well.
  InvalidateRows(index, fView.Items().GetCount() + count - 1);
}

void THeadlessListPeer::ItemsReset() {
  fAnchor = GetFocusIndex();
  fPress = {};
  UpdateScrollBars();
  Invalidate(nullptr);
}

void THeadlessListPeer::ItemsChanged(int first, int last) { InvalidateRows(first, last); }

void THeadlessListPeer::EndUpdate() {
  if (fUpdateCount == 0 || --fUpdateCount > 0) return;
  Invalidate(nullptr);
}

void THeadlessListPeer::LayoutChanged() {
  if (!fHeader) return;
  UpdateScrollBars();
  Invalidate(nullptr);
  fHeader->Invalidate(nullptr);
}

void THeadlessListPeer::ColumnWidthChanged(int) { LayoutChanged(); }
void THeadlessListPeer::ImagesChanged(TListImages) { LayoutChanged(); }
void THeadlessListPeer::SetIconSpacing(int, int) { LayoutChanged(); }
void THeadlessListPeer::SetDefaultColumnWidth(int) { LayoutChanged(); }

void THeadlessListPeer::SetViewStyle() {
  EndEdit(true);
  LayoutChanged();
}

void THeadlessListPeer::ColorsChanged() {
  Invalidate(nullptr);
  fHeader->Invalidate(nullptr);
}

// --- scrolling ----------------------------------------------------------------------------------

int THeadlessListPeer::GetTopIndex() const {
  const TGrid grid = GetGrid();
  const TPoint offset = GetOffset();
  const int line = grid.Down ? offset.X / grid.Cell.Width : offset.Y / grid.Cell.Height;
  return line * grid.PerLine;
}

int THeadlessListPeer::GetVisibleRowCount() const {
  const TGrid grid = GetGrid();
  const TSize area = GetRowArea().Size();
  const int lines = grid.Down ? area.Width / grid.Cell.Width : area.Height / grid.Cell.Height;
  return std::max(0, lines) * grid.PerLine;
}

void THeadlessListPeer::MakeVisible(int index, bool partialOk) {
  if (index < 0 || index >= fView.Items().GetCount()) return;
  const TGrid grid = GetGrid();
  const TRect cell = GetCell(grid, index);
  const TRect area = GetRowArea();
  const TRect seen = cell.Intersected(area);
  if (partialOk && !seen.IsEmpty()) return;
  const auto needed = [](int from, int to, int low, int high) {
    if (from < low || to - from > high - low) return from - low;
    return to > high ? to - high : 0;
  };
  const TPoint offset = GetOffset();
  if (grid.Down) {
    const int dx = needed(cell.Left, cell.Right, area.Left, area.Right);
    const int step = grid.Cell.Width;
    if (dx != 0) ScrollTo(sbHorizontal, (offset.X + dx + (dx > 0 ? step - 1 : 0)) / step * step);
    return;
  }
  const int dy = needed(cell.Top, cell.Bottom, area.Top, area.Bottom);
  const int step = IsReport() ? grid.Cell.Height : 1;
  if (dy != 0) ScrollTo(sbVertical, (offset.Y + dy + (dy > 0 ? step - 1 : 0)) / step * step);
}

void THeadlessListPeer::Scroll(int dx, int dy) {
  const TLifeGuard guard = Guard();
  if (dx != 0) ScrollTo(sbHorizontal, GetOffset().X + dx);
  if (dy != 0 && guard.IsAlive()) ScrollTo(sbVertical, GetOffset().Y + dy);
}

void THeadlessListPeer::OnScroll(TScrollBarKind kind, int position) {
  const TLifeGuard guard = Guard();
  EndEdit(false);
  if (!guard.IsAlive()) return;
  const THeadlessScroll& info = GetScrollInfo(kind);
  // Rows of vsReport and columns of vsList stand at the edge.
  const bool byLines = IsReport() ? kind == sbVertical : fView.GetViewStyle() == vsList;
  if (byLines && info.Line > 0) {
    const int up = position > info.Position ? info.Line - 1 : 0;
    position = (position + up) / info.Line * info.Line;
  }
  THeadlessPeer::OnScroll(kind, position);
  if (kind == sbHorizontal) fHeader->Invalidate(nullptr);
}

bool THeadlessListPeer::SetBar(TScrollBarKind kind, int page, int range, int line) {
  THeadlessScroll info = GetScrollInfo(kind);
  const bool shown = info.IsShown();
  info.Page = std::max(0, page);
  info.Range = range;
  info.Line = std::max(1, line);
  SetScrollInfo(kind, info);
  return GetScrollInfo(kind).IsShown() != shown;
}

// A bar takes room, which may make the other one necessary.
void THeadlessListPeer::UpdateScrollBars() {
  if (!fHeader) return;
  constexpr int rounds = 3;
  for (int round = 0; round < rounds; ++round) {
    const TGrid grid = GetGrid();
    const TSize area = GetRowArea().Size();
    const TSize content = GetContentSize(grid, area);
    const auto whole = [](int length, int cell) { return length / cell * cell; };
    const bool report = IsReport();
    const int pageX =
        grid.Down ? std::max(whole(area.Width, grid.Cell.Width), grid.Cell.Width) : area.Width;
    const int pageY =
        report ? std::max(whole(area.Height, grid.Cell.Height), grid.Cell.Height) : area.Height;
    bool changed =
        SetBar(sbHorizontal, pageX, content.Width, grid.Down ? grid.Cell.Width : Scaled(16));
    changed = SetBar(sbVertical, pageY, content.Height, grid.Cell.Height) || changed;
    if (!changed) break;
  }
  const TRect client = GetClientRect();
  const bool shown = IsReport() && fView.GetShowColumnHeaders();
  fHeader->SetFont(GetFont());
  fHeader->SetBounds({0, 0, client.Width(), shown ? fHeader->GetNaturalHeight() : 0});
  fHeader->SetVisible(shown);
}

// --- text and header

int THeadlessListPeer::GetStringWidth(const TString& text) const {
  return TextWidth(GetFont(), text);
}

HWND THeadlessListPeer::GetHeaderHandle() const { return fHeader->GetHandle(); }

TRect THeadlessListPeer::GetHeaderRect() const {
  return fHeader->GetVisible() ? fHeader->GetBounds() : TRect();
}

int THeadlessListPeer::HeaderHitTest(TPoint point) const {
  return GetHeaderRect().Contains(point) ? fHeader->ColumnAt(point.X) : -1;
}

// --- editing

bool THeadlessListPeer::BeginEdit(int index) {
  const TLifeGuard guard = Guard();
  EndEdit(true);
  // As in the system's list, what is edited is selected.
  if (!guard.IsAlive() || !SelectTo(index, {}) || index >= fView.Items().GetCount()) return false;
  if (!fView.HandleBeginEdit(index) || !guard.IsAlive()) return false;
  const TListItem* const item = fView.GetEditedItem();
  if (!item) return false;
  const int place = item->GetIndex();
  MakeVisible(place, false);
  const TString text = AskText(place, fView.Columns().GetLabelColumn());
  if (!guard.IsAlive() || fView.GetEditedItem() != item) return false;
  const TRect label = GetParts(place, &text).Text.Inflated(Scaled(2), Scaled(1));
  return OpenEdit(label, text, [&] { return fView.GetEditedItem() == item; });
}

void THeadlessListPeer::EndEdit(bool cancel) {
  StopEditTimer();
  THeadlessLabelPeer::EndEdit(cancel);
}

}  // namespace oak
