#include "oak/framework/headless/HeadlessHint.h"

#include "oak/framework/Canvas.h"
#include "oak/framework/TextMetrics.h"
#include "oak/framework/headless/HeadlessDesktop.h"

namespace oak {
namespace {

constexpr int HintMargin = 4;  // pixels at 96 per inch
constexpr int HintBelowPointer = 20;
constexpr int HintWidth = 400;  // where lines are broken

}  // namespace

THeadlessHint::THeadlessHint(THeadlessDesktop& desktop, THeadlessWindow& owner, const TRect& area,
                             TString text, TPoint pointer)
    : THeadlessWindow(desktop, THeadlessKind::Popup, nullptr, {pointer, TSize{1, 1}}),
      fOwner(&owner),
      fArea(owner.ClientToScreen(area.TopLeft()), area.Size()) {
  THeadlessWindow::SetFont(desktop.GetSystemFont(owner.GetWindowPPI()));
  THeadlessWindow::SetText(text);
  const TRect wanted =
      MeasureText(GetFont(), {0, 0, Scaled(HintWidth), 0}, text, {tfWordBreak, tfNoPrefix});
  const TSize size{wanted.Width() + 2 * Scaled(HintMargin),
                   wanted.Height() + 2 * Scaled(HintMargin)};
  THeadlessWindow::SetBounds({pointer + TPoint(0, Scaled(HintBelowPointer)), size});
  THeadlessWindow::SetEnabled(false);
  THeadlessWindow::SetVisible(true);
}

bool THeadlessHint::Holds(const THeadlessWindow* owner, TPoint pointer) const {
  return owner == fOwner && fArea.Contains(pointer);
}

void THeadlessHint::Paint(TCanvas& canvas, const TRect& clip) {
  canvas.GetBrush().SetColor(clInfoBk);
  canvas.FillRect(clip);
  canvas.GetBrush().SetStyle(bsClear);
  canvas.GetFont().SetColor(clInfoText);
  const int margin = Scaled(HintMargin);
  canvas.DrawText(GetClientRect().Inflated(-margin, -margin), GetWindowText(),
                  {tfWordBreak, tfNoPrefix});
}

}  // namespace oak
