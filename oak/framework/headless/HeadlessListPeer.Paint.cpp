// How a headless list is drawn: only what lies in the clipping rectangle is asked for.
#include <algorithm>

#include "oak/framework/Bitmap.h"
#include "oak/framework/Canvas.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/headless/HeadlessListHeader.h"
#include "oak/framework/headless/HeadlessListPeer.h"

namespace oak {
namespace {

TTextFormat CellFormat(TAlignment alignment) {
  TTextFormat format{tfSingleLine, tfVerticalCenter, tfEndEllipsis, tfNoPrefix};
  if (alignment == taCenter) format.Include(tfCenter);
  if (alignment == taRightJustify) format.Include(tfRight);
  return format;
}

constexpr int CellIndent = 2;  // at 96 pixels per inch

}  // namespace

// Handlers run between all steps. They may destroy the window, which ends the drawing, and remove
// rows: an index is tested again before it is used.
void THeadlessListPeer::Paint(TCanvas& canvas, const TRect& clip) {
  if (fUpdateCount > 0) return;
  const TLifeGuard guard = Guard();
  const TRect client = GetClientRect();
  PaintBackground(canvas, clip);
  if (!fView.HandleCustomDraw(canvas, client, cdPrePaint) || !guard.IsAlive()) return;
  {
    const TRect area = GetRowArea();
    canvas.PushClip(area);
    for (const int index : IndexesIn(clip)) {
      if (index >= fView.Items().GetCount()) break;
      if (!PaintItem(canvas, index, clip)) return;
    }
    if (IsReport() && fView.GetGridLines()) PaintGridLines(canvas, clip);
    canvas.PopClip();
  }
  fView.HandleCustomDraw(canvas, client, cdPostPaint);
}

void THeadlessListPeer::PaintBackground(TCanvas& canvas, const TRect& clip) {
  canvas.GetBrush().SetColor(BackgroundColor());
  canvas.FillRect(clip);
  const TBitmap* const picture = fView.GetBackgroundBitmap();
  if (!picture) return;
  const TRect area = GetRowArea();
  const TSize size = picture->GetSize();
  const TClipScope scope(canvas, area);
  if (!fView.IsBackgroundTiled()) {
    const TPoint percent = fView.GetBackgroundOffset();
    canvas.Draw(area.Left + MulDiv(area.Width() - size.Width, percent.X, 100),
                area.Top + MulDiv(area.Height() - size.Height, percent.Y, 100), *picture);
    return;
  }
  for (int y = area.Top; y < area.Bottom; y += size.Height)
    for (int x = area.Left; x < area.Right; x += size.Width)
      if (TRect({x, y}, size).Intersects(clip)) canvas.Draw(x, y, *picture);
}

bool THeadlessListPeer::IsMarked(int index) const {
  const TItemStates states = fView.HandleGetStates(index);
  if (states.Contains(isDropHilited)) return true;
  return states.Contains(isSelected) && (HasFocus() || fEdit || !fView.GetHideSelection());
}

TCustomDrawState THeadlessListPeer::GetDrawState(int index) const {
  TCustomDrawState state;
  const TItemStates states = fView.HandleGetStates(index);
  if (states.Contains(isSelected)) state.Include(cdsSelected);
  if (states.Contains(isFocused) && HasFocus()) state.Include(cdsFocused);
  if (!GetEnabled()) state.Include(cdsDisabled);
  const TListItem* const item = fView.Items().GetItem(index);
  if (item && fView.GetCheckboxes() && item->GetChecked()) state.Include(cdsChecked);
  return state;
}

void THeadlessListPeer::PrepareCanvas(TCanvas& canvas, int index) const {
  canvas.SetFont(GetFont());
  canvas.GetBrush().SetColor(BackgroundColor());
  if (fView.GetBackgroundBitmap()) canvas.GetBrush().SetStyle(bsClear);
  const TColor standard = GetEnabled() ? GetFont().GetColor() : clGrayText;
  canvas.GetFont().SetColor(fView.HandleTextColor(index, standard));
}

bool THeadlessListPeer::PaintItem(TCanvas& canvas, int index, const TRect& clip) {
  const TLifeGuard guard = Guard();
  const auto gone = [&] { return !guard.IsAlive() || index >= fView.Items().GetCount(); };
  int image = -1;
  if (GetImages()) {
    ++fImageRequests;
    image = fView.HandleGetImage(index);
    if (gone()) return guard.IsAlive();
  }
  TString text;
  if (GetParts(index, nullptr).Label.Intersects(clip)) {
    text = AskText(index, fView.Columns().GetLabelColumn());
    if (gone()) return guard.IsAlive();
  }
  PrepareCanvas(canvas, index);
  if (gone()) return guard.IsAlive();
  const bool standard = fView.HandleCustomDrawItem(canvas, index, GetDrawState(index), cdPrePaint);
  if (gone() || !standard) return guard.IsAlive();
  const TParts parts = GetParts(index, &text);
  PaintParts(canvas, index, parts, text, image);
  if (IsReport() && !PaintSubItems(canvas, index, parts, clip)) return guard.IsAlive();
  if (!gone()) fView.HandleCustomDrawItem(canvas, index, GetDrawState(index), cdPostPaint);
  return guard.IsAlive();
}

void THeadlessListPeer::PaintParts(TCanvas& canvas, int index, const TParts& parts,
                                   const TString& text, int image) {
  const bool marked = IsMarked(index);
  const TItemStates states = fView.HandleGetStates(index);
  const TListItem& item = *fView.Items().GetItem(index);
  const bool row = IsReport() && fView.GetRowSelect();
  if (marked) {
    const bool active = HasFocus() || fEdit || states.Contains(isDropHilited);
    canvas.GetBrush().SetColor(active ? clHighlight : clBtnFace);
    canvas.GetFont().SetColor(active ? clHighlightText : clWindowText);
  }
  if (marked || canvas.GetBrush().GetColor() != BackgroundColor())
    canvas.FillRect(row || !marked ? parts.Bounds : parts.Text);
  PaintState(canvas, item, parts.State);
  if (const TImageList* const images = GetImages()) {
    TImageState state = item.GetCut() ? TImageState::Ghosted : TImageState::Normal;
    if (state == TImageState::Normal && marked) state = TImageState::Selected;
    canvas.DrawImage(*images, image, parts.Icon.Left, parts.Icon.Top, item.GetOverlayIndex() + 1,
                     state);
  }
  canvas.GetBrush().SetStyle(bsClear);
  if (fView.GetViewStyle() == vsIcon)
    canvas.DrawText(parts.Label, text, {tfWordBreak, tfCenter, tfEndEllipsis, tfNoPrefix});
  else if (parts.Label.Width() > 0)
    canvas.DrawText(parts.Label.Inflated(-Scaled(CellIndent), 0), text, CellFormat(taLeftJustify));
  if (states.Contains(isFocused) && HasFocus())
    canvas.DrawFocusRect(row ? parts.Bounds : parts.Text);
}

void THeadlessListPeer::PaintState(TCanvas& canvas, const TListItem& item,
                                   const TRect& rect) const {
  if (const TImageList* const images = fView.GetStateImages()) {
    canvas.DrawImage(*images, item.GetStateIndex(), rect.Left,
                     rect.Center().Y - images->GetHeight() / 2);
    return;
  }
  if (!fView.GetCheckboxes()) return;
  const TBrush former = canvas.GetBrush();
  const int half = Scaled(6);
  const TPoint middle = rect.Center();
  const TRect box(middle.X - half, middle.Y - half, middle.X + half + 1, middle.Y + half + 1);
  canvas.GetPen().SetColor(clWindowText);
  canvas.GetBrush().SetColor(clWindow);
  canvas.Rectangle(box);
  if (item.GetChecked()) {
    canvas.MoveTo(box.Left + half / 2, middle.Y);
    canvas.LineTo(middle.X, box.Bottom - half / 2);
    canvas.LineTo(box.Right - half / 2, box.Top + half / 2);
  }
  canvas.SetBrush(former);
}

// False if the row or the window is gone.
bool THeadlessListPeer::PaintSubItems(TCanvas& canvas, int index, const TParts& parts,
                                      const TRect& clip) {
  const TLifeGuard guard = Guard();
  const int label = fView.Columns().GetLabelColumn();
  const auto gone = [&] { return !guard.IsAlive() || index >= fView.Items().GetCount(); };
  const bool whole = fView.GetRowSelect();
  for (int i = 0; i < fView.Columns().GetCount(); ++i) {
    const TRect rect(fHeader->GetColumnLeft(i), parts.Bounds.Top, fHeader->GetColumnLeft(i + 1),
                     parts.Bounds.Bottom);
    if (i == label || !rect.Intersects(clip)) continue;
    const TCustomDrawState state = GetDrawState(index);
    if (!whole && IsMarked(index)) PrepareCanvas(canvas, index);
    if (gone()) return false;
    canvas.GetBrush().SetStyle(bsClear);
    const bool standard = fView.HandleCustomDrawSubItem(canvas, index, i, state, cdPrePaint);
    if (gone()) return false;
    if (standard) {
      const TString text = AskText(index, i);
      if (gone() || i >= fView.Columns().GetCount()) return false;
      const TAlignment alignment = fView.Columns()[i]->GetAlignment();
      if (!text.empty())
        canvas.DrawText(rect.Inflated(-Scaled(CellIndent), 0), text, CellFormat(alignment));
    }
    fView.HandleCustomDrawSubItem(canvas, index, i, state, cdPostPaint);
    if (gone()) return false;
  }
  return true;
}

void THeadlessListPeer::PaintGridLines(TCanvas& canvas, const TRect& clip) const {
  const TRect area = GetRowArea();
  canvas.GetPen().SetColor(clBtnFace);
  const int height = GetRowHeight();
  for (int y = area.Top + height - 1; y < std::min(area.Bottom, clip.Bottom); y += height) {
    if (y < clip.Top) continue;
    canvas.MoveTo(clip.Left, y);
    canvas.LineTo(clip.Right, y);
  }
  for (int i = 1; i <= fView.Columns().GetCount(); ++i) {
    const int x = fHeader->GetColumnLeft(i) - 1;
    if (x < clip.Left || x >= clip.Right) continue;
    canvas.MoveTo(x, area.Top);
    canvas.LineTo(x, area.Bottom);
  }
}

}  // namespace oak
