// What the tree tells and asks its headless window, and how it is drawn.
#include "oak/framework/headless/HeadlessTreePeer.h"

#include <algorithm>

#include "oak/framework/Canvas.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/TextMetrics.h"

namespace oak {
namespace {

// Pixels at 96 per inch.
constexpr int TreeRowGap = 4;
constexpr int TreePartGap = 3;
constexpr int TreeTextMargin = 2;

}  // namespace

std::unique_ptr<ITreeViewPeer> CreateHeadlessTreePeer(THeadlessDesktop& desktop,
                                                      TCustomTreeView& view) {
  return std::make_unique<THeadlessTreePeer>(desktop, view);
}

THeadlessTreePeer::THeadlessTreePeer(THeadlessDesktop& desktop, TCustomTreeView& view)
    : THeadlessLabelPeer(desktop, view) {}

THeadlessTreePeer::~THeadlessTreePeer() = default;

// --- rows ---------------------------------------------------------------------------------------

// The list of rows is made when somebody looks, so a thousand insertions cost one walk.
const std::vector<TTreeNode*>& THeadlessTreePeer::Rows() const {
  if (fRowsKnown) return fRows;
  fRows.clear();
  for (TTreeNode* node = fView.Items().GetFirstNode(); node; node = node->GetNextVisible())
    fRows.push_back(node);
  fRowsKnown = true;
  return fRows;
}

int THeadlessTreePeer::RowOf(const TTreeNode* node) const {
  const std::vector<TTreeNode*>& rows = Rows();
  const auto found = std::find(rows.begin(), rows.end(), node);
  return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}

void THeadlessTreePeer::RowsChanged() {
  fRowsKnown = false;
  if (fUpdateCount > 0) return;
  UpdateScrollBars();
  Invalidate(nullptr);
}

void THeadlessTreePeer::NodeDeleting(TTreeNode* node) {
  if (fPress.Node && (fPress.Node == node || fPress.Node->HasAsParent(node))) fPress = {};
  fRowsKnown = false;
  fRows.clear();
  // The node is still there; what is seen is found out with the next paint.
  Invalidate(nullptr);
}

void THeadlessTreePeer::NodesCleared() {
  EndEdit(true);
  fPress = {};
  fRows.clear();
  fRowsKnown = false;
  fWidest = 0;
  Invalidate(nullptr);
}

void THeadlessTreePeer::EndUpdate() {
  if (fUpdateCount == 0 || --fUpdateCount > 0) return;
  RowsChanged();
}

void THeadlessTreePeer::StyleChanged() {
  if (fView.GetReadOnly()) EndEdit(true);
  RowsChanged();
}

void THeadlessTreePeer::NodeChanged(TTreeNode* node) {
  if (fRowsKnown) InvalidateRow(RowOf(node));
}

void THeadlessTreePeer::SelectionChanged() {
  Invalidate(nullptr);
  if (fView.GetSelected()) MakeVisible(fView.GetSelected());
}

void THeadlessTreePeer::InvalidateRow(int row) {
  if (row < 0) return;
  const TRect bounds = GetParts(row, {}).Bounds;
  if (bounds.Intersects(GetClientRect())) Invalidate(&bounds);
}

// --- layout -------------------------------------------------------------------------------------

int THeadlessTreePeer::GetRowHeight() const {
  int height = GetLineHeight();
  for (const TImageList* images : {fView.GetImages(), fView.GetStateImages()})
    if (images) height = std::max(height, images->GetHeight());
  return height + Scaled(TreeRowGap);
}

int THeadlessTreePeer::GetTopRow() const {
  return GetScrollInfo(sbVertical).Position / GetRowHeight();
}

int THeadlessTreePeer::TextLeft(const TTreeNode& node) const {
  const int levels = node.GetLevel() + (fView.GetShowRoot() ? 1 : 0);
  return levels * fView.GetIndent() - GetScrollInfo(sbHorizontal).Position;
}

THeadlessTreePeer::TParts THeadlessTreePeer::GetParts(int row, const TString& text) const {
  const TTreeNode& node = *Rows()[static_cast<std::size_t>(row)];
  const int height = GetRowHeight();
  const int top = row * height - GetScrollInfo(sbVertical).Position;
  int left = TextLeft(node);
  TParts parts;
  parts.Bounds = {0, top, GetClientRect().Width(), top + height};
  if (fView.GetShowButtons() && node.GetHasChildren() && left > 0)
    parts.Button = {left - fView.GetIndent(), top, left, top + height};
  const auto take = [&](const TImageList* images) {
    if (!images) return TRect();
    const int y = top + (height - images->GetHeight()) / 2;
    const TRect place({left, y}, {images->GetWidth(), images->GetHeight()});
    left = place.Right + Scaled(TreePartGap);
    return place;
  };
  if (node.GetStateIndex() > 0) parts.State = take(fView.GetStateImages());
  parts.Icon = take(fView.GetImages());
  const int width = TextWidth(GetFont(), text) + 2 * Scaled(TreeTextMargin);
  parts.Text = {left, top, left + width, top + height};
  return parts;
}

void THeadlessTreePeer::SetBar(TScrollBarKind kind, int page, int range, int line) {
  THeadlessScroll info = GetScrollInfo(kind);
  info.Page = std::max(0, page);
  info.Range = range;
  info.Line = std::max(1, line);
  SetScrollInfo(kind, info);
}

void THeadlessTreePeer::UpdateScrollBars() {
  const int height = GetRowHeight();
  constexpr int rounds = 2;  // a bar takes room from the other
  for (int round = 0; round < rounds; ++round) {
    const TSize client = GetClientRect().Size();
    const int page = std::max(client.Height / height * height, height);
    SetBar(sbVertical, page, static_cast<int>(Rows().size()) * height, height);
    SetBar(sbHorizontal, client.Width, fWidest, Scaled(16));
  }
}

TRect THeadlessTreePeer::GetNodeRect(TTreeNode* node, bool textOnly) const {
  const int row = RowOf(node);
  if (row < 0) return {};
  const TParts parts = GetParts(row, textOnly ? AskText(node) : TString());
  const TRect rect = textOnly ? parts.Text : parts.Bounds;
  return rect.Intersects(GetClientRect()) ? rect : TRect();
}

TTreeHitTest THeadlessTreePeer::HitTest(TPoint point) const {
  TTreeHitTest hit;
  const TRect client = GetClientRect();
  if (!client.Contains(point)) {
    if (point.Y < client.Top) hit.Flags.Include(htAbove);
    if (point.Y >= client.Bottom) hit.Flags.Include(htBelow);
    if (point.X < client.Left) hit.Flags.Include(htToLeft);
    if (point.X >= client.Right) hit.Flags.Include(htToRight);
    return hit;
  }
  const int row = (point.Y + GetScrollInfo(sbVertical).Position) / GetRowHeight();
  if (row >= static_cast<int>(Rows().size())) {
    hit.Flags.Include(htNowhere);
    return hit;
  }
  hit.Node = Rows()[static_cast<std::size_t>(row)];
  const TParts parts = GetParts(row, AskText(hit.Node));
  if (parts.Button.Contains(point))
    hit.Flags.Include(htOnButton);
  else if (parts.State.Contains(point))
    hit.Flags.Include(htOnStateIcon);
  else if (parts.Icon.Contains(point))
    hit.Flags.Include(htOnIcon);
  else if (parts.Text.Contains(point))
    hit.Flags.Include(htOnLabel);
  else
    hit.Flags.Include(point.X < parts.Text.Left ? htOnIndent : htOnRight);
  return hit;
}

// --- scrolling ----------------------------------------------------------------------------------

TTreeNode* THeadlessTreePeer::GetTopNode() const {
  const auto row = static_cast<std::size_t>(GetTopRow());
  return row < Rows().size() ? Rows()[row] : nullptr;
}

void THeadlessTreePeer::SetTopNode(TTreeNode* node) {
  const int row = RowOf(node);
  UpdateScrollBars();
  if (row >= 0) ScrollTo(sbVertical, row * GetRowHeight());
}

int THeadlessTreePeer::GetVisibleRowCount() const {
  return GetClientRect().Height() / GetRowHeight();
}

void THeadlessTreePeer::MakeVisible(TTreeNode* node) {
  const int row = RowOf(node);
  if (row < 0) return;
  UpdateScrollBars();
  const int seen = std::max(1, GetVisibleRowCount());
  const int top = GetTopRow();
  if (row < top)
    ScrollTo(sbVertical, row * GetRowHeight());
  else if (row >= top + seen)
    ScrollTo(sbVertical, (row - seen + 1) * GetRowHeight());
}

void THeadlessTreePeer::OnScroll(TScrollBarKind kind, int position) {
  const TLifeGuard guard = Guard();
  EndEdit(false);
  if (!guard.IsAlive()) return;
  if (kind == sbVertical) position = position / GetRowHeight() * GetRowHeight();
  THeadlessPeer::OnScroll(kind, position);
}

// --- painting -----------------------------------------------------------------------------------

TString THeadlessTreePeer::AskText(TTreeNode* node) const {
  ++fTextRequests;
  return fView.HandleGetText(node);
}

TCustomDrawState THeadlessTreePeer::GetDrawState(const TTreeNode& node) const {
  TCustomDrawState state;
  if (node.GetSelected()) state.Include(cdsSelected);
  if (node.GetSelected() && HasFocus()) state.Include(cdsFocused);
  if (!GetEnabled() || !node.GetEnabled()) state.Include(cdsDisabled);
  return state;
}

// Handlers run between all steps. They may destroy the window, which ends the drawing, and change
// the nodes: then the rest is drawn with the paint that this asks for.
void THeadlessTreePeer::Paint(TCanvas& canvas, const TRect& clip) {
  if (fUpdateCount > 0) return;
  const TLifeGuard guard = Guard();
  UpdateScrollBars();  // nodes may have gone
  canvas.GetBrush().SetColor(BackgroundColor());
  canvas.FillRect(clip);
  const int height = GetRowHeight();
  const int first = (clip.Top + GetScrollInfo(sbVertical).Position) / height;
  Rows();
  for (int row = first; fRowsKnown && row < static_cast<int>(fRows.size()); ++row) {
    if (row * height - GetScrollInfo(sbVertical).Position >= clip.Bottom) break;
    if (!PaintRow(canvas, row)) return;
  }
  const int top = GetTopRow();
  const int seen = GetVisibleRowCount();
  UpdateScrollBars();
  if (GetVisibleRowCount() >= seen) return;
  // A bar that comes up for what has just been measured may cover the selected row.
  const int selected = RowOf(fView.GetSelected());
  if (selected >= top && selected < top + seen) MakeVisible(fView.GetSelected());
}

// False if the window is gone.
bool THeadlessTreePeer::PaintRow(TCanvas& canvas, int row) {
  const TLifeGuard guard = Guard();
  TTreeNode* const node = fRows[static_cast<std::size_t>(row)];
  const TTreeNodeWatch watch(fView, node);
  const auto gone = [&] { return !guard.IsAlive() || !watch.Exists() || !fRowsKnown; };
  int image = -1;
  if (fView.GetImages()) {
    ++fImageRequests;
    image = fView.HandleGetImage(node, node->GetSelected());
    if (gone()) return guard.IsAlive();
  }
  const TString text = AskText(node);
  if (gone()) return guard.IsAlive();
  canvas.SetFont(GetFont());
  canvas.GetBrush().SetColor(BackgroundColor());
  const bool enabled = GetEnabled() && node->GetEnabled();
  canvas.GetFont().SetColor(
      fView.HandleTextColor(node, enabled ? GetFont().GetColor() : TColor(clGrayText)));
  if (gone()) return guard.IsAlive();
  const bool standard = fView.HandleCustomDrawItem(canvas, node, GetDrawState(*node), cdPrePaint);
  if (gone() || !standard) return guard.IsAlive();
  const TParts parts = GetParts(row, text);
  PaintParts(canvas, *node, parts, text, image);
  fWidest = std::max(fWidest, parts.Text.Right + GetScrollInfo(sbHorizontal).Position);
  fView.HandleCustomDrawItem(canvas, node, GetDrawState(*node), cdPostPaint);
  return guard.IsAlive();
}

void THeadlessTreePeer::PaintParts(TCanvas& canvas, const TTreeNode& node, const TParts& parts,
                                   const TString& text, int image) {
  const bool selected = node.GetSelected();
  const bool active = HasFocus() || fEdit;
  const bool marked = node.GetDropTarget() || (selected && (active || !fView.GetHideSelection()));
  const TTextFormat format{tfSingleLine, tfVerticalCenter, tfNoPrefix};
  if (marked) {
    const bool strong = active || node.GetDropTarget();
    canvas.GetBrush().SetColor(strong ? clHighlight : clBtnFace);
    canvas.GetFont().SetColor(strong ? clHighlightText : clWindowText);
    canvas.FillRect(fView.GetRowSelect() ? parts.Bounds : parts.Text);
  }
  canvas.GetBrush().SetStyle(bsClear);
  if (!parts.Button.IsEmpty()) {
    TTextFormat centered = format;
    centered.Include(tfCenter);
    canvas.DrawText(parts.Button, node.GetExpanded() ? u"v" : u">", centered);
  }
  if (!parts.State.IsEmpty())
    canvas.DrawImage(*fView.GetStateImages(), node.GetStateIndex(), parts.State.Left,
                     parts.State.Top);
  if (!parts.Icon.IsEmpty()) {
    TImageState state = node.GetCut() ? TImageState::Ghosted : TImageState::Normal;
    if (state == TImageState::Normal && marked) state = TImageState::Selected;
    canvas.DrawImage(*fView.GetImages(), image, parts.Icon.Left, parts.Icon.Top,
                     node.GetOverlayIndex() + 1, state);
  }
  canvas.DrawText(parts.Text.Inflated(-Scaled(TreeTextMargin), 0), text, format);
  if (selected && HasFocus()) canvas.DrawFocusRect(parts.Text);
}

// --- editing ------------------------------------------------------------------------------------

bool THeadlessTreePeer::BeginEdit(TTreeNode* node) {
  const TLifeGuard guard = Guard();
  EndEdit(true);
  if (!guard.IsAlive() || !fView.HandleBeginEdit(node) || !guard.IsAlive()) return false;
  if (fView.GetEditedNode() != node) return false;
  node->MakeVisible();
  if (!guard.IsAlive() || fView.GetEditedNode() != node || RowOf(node) < 0) return false;
  const TString text = AskText(node);
  const TRect label = GetParts(RowOf(node), text).Text.Inflated(Scaled(2), 0);
  return OpenEdit(label, text, [&] { return fView.GetEditedNode() == node; });
}

}  // namespace oak
