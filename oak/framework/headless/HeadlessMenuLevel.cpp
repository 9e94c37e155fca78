#include "oak/framework/headless/HeadlessMenuLevel.h"

#include <algorithm>
#include <numeric>

#include "oak/framework/Canvas.h"
#include "oak/framework/Events.h"
#include "oak/framework/Menus.h"
#include "oak/framework/TextMetrics.h"
#include "oak/framework/headless/HeadlessDesktop.h"

namespace oak {
namespace {

constexpr int EntryHeight = 20;  // pixels at 96 per inch
constexpr int CheckWidth = 28;
constexpr int EntryMargin = 14;

TStringView ShortCutOf(TStringView text) {
  const std::size_t tab = text.find(u'\t');
  return tab == TStringView::npos ? TStringView() : text.substr(tab + 1);
}

TMenuItem* OwnItem(const TMenuEntry& entry) {
  TMenuItem* const item = FindMenuItem(entry.Command);
  return item && item->OnMeasureItem && item->OnDrawItem ? item : nullptr;
}

}  // namespace

THeadlessMenuLevel::THeadlessMenuLevel(THeadlessDesktop& desktop, HMENU menu, TPoint screen,
                                       HWND owner)
    : THeadlessWindow(desktop, THeadlessKind::Popup, nullptr, {screen, TSize{1, 1}}),
      Menu(menu),
      fOwner(owner) {
  const auto monitor = static_cast<std::size_t>(desktop.MonitorAt(screen));
  fPixelsPerInch = desktop.GetMonitors()[monitor].PixelsPerInch;
  TFont font = desktop.GetSystemFont(fPixelsPerInch);
  font.SetColor(clMenuText);
  THeadlessWindow::SetFont(font);
  int width = 0;
  for (const TMenuEntry& entry : TMenuTable::Instance().GetEntries(menu)) {
    const TSize wanted = MeasureEntry(entry);
    width = std::max(width, wanted.Width);
    fHeights.push_back(wanted.Height);
  }
  const TSize size{Scaled(CheckWidth) + width + 2 * Scaled(EntryMargin) + 2,
                   std::accumulate(fHeights.begin(), fHeights.end(), 2)};
  const TRect area = desktop.GetMonitors()[monitor].WorkArea;
  const TPoint corner(std::max(std::min(screen.X, area.Right - size.Width), area.Left),
                      std::max(std::min(screen.Y, area.Bottom - size.Height), area.Top));
  THeadlessWindow::SetBounds({corner, size});
  THeadlessWindow::SetVisible(true);
}

// --- places ------------------------------------------------------------------

TSize THeadlessMenuLevel::MeasureEntry(const TMenuEntry& entry) {
  TSize size{0, Scaled(EntryHeight)};
  if (entry.IsOwnerDrawn && MeasureOwnerDrawn(entry, size)) return size;
  size.Width =
      TextWidth(GetFont(), MenuCaption(entry.Text) + u"    " + TString(ShortCutOf(entry.Text)));
  return size;
}

bool THeadlessMenuLevel::MeasureOwnerDrawn(const TMenuEntry& entry, TSize& size) {
  if (TMenuItem* const item = OwnItem(entry)) {
    TCanvasHeadless canvas({}, fPixelsPerInch);
    canvas.SetFont(GetFont());
    FireEvent(item->OnMeasureItem, item, canvas, size.Width, size.Height);
  } else if (THeadlessWindow* const owner = GetDesktop().FindWindow(fOwner)) {
    MEASUREITEMSTRUCT measure{};
    measure.CtlType = ODT_MENU;
    measure.itemID = entry.Command;
    measure.itemHeight = static_cast<UINT>(size.Height);
    measure.itemData = entry.Data;
    if (owner->Send(WM_MEASUREITEM, 0, reinterpret_cast<LPARAM>(&measure)) == 0) return false;
    size = {static_cast<int>(measure.itemWidth), static_cast<int>(measure.itemHeight)};
  } else {
    return false;
  }
  size = {std::max(size.Width, 0), std::max(size.Height, 1)};
  return true;
}

TRect THeadlessMenuLevel::EntryRect(int index) const {
  const auto count = std::min(static_cast<std::size_t>(std::max(index, 0)), fHeights.size());
  const auto end = fHeights.begin() + static_cast<std::ptrdiff_t>(count);
  const int top = std::accumulate(fHeights.begin(), end, 0);
  return {0, top, GetClientRect().Right, top + (end == fHeights.end() ? 0 : *end)};
}

int THeadlessMenuLevel::EntryAt(TPoint screen) const {
  const TPoint point = ScreenToClient(screen);
  for (int i = 0; i < static_cast<int>(fHeights.size()); ++i)
    if (EntryRect(i).Contains(point)) return i;
  return -1;
}

void THeadlessMenuLevel::SetHot(int index) {
  Hot = index;
  Invalidate(nullptr);
}

// --- looks -------------------------------------------------------------------

void THeadlessMenuLevel::Paint(TCanvas& canvas, const TRect& clip) {
  canvas.GetBrush().SetColor(clMenu);
  canvas.FillRect(clip);
  const TLifeGuard guard = Guard();
  int index = 0;
  for (const TMenuEntry& entry : TMenuTable::Instance().GetEntries(Menu)) {
    PaintEntry(canvas, entry, index++);
    if (!guard.IsAlive()) return;
  }
}

bool THeadlessMenuLevel::PaintOwnerDrawn(TCanvas& canvas, const TMenuEntry& entry,
                                         const TRect& rect, bool hot) {
  if (TMenuItem* const item = OwnItem(entry)) {
    FireEvent(item->OnDrawItem, item, canvas, rect, hot);
    return true;
  }
  THeadlessWindow* const owner = GetDesktop().FindWindow(fOwner);
  if (!owner) return false;
  DRAWITEMSTRUCT draw{};
  draw.CtlType = ODT_MENU;
  draw.itemID = entry.Command;
  draw.itemState = hot ? ODS_SELECTED : 0;
  draw.hwndItem = reinterpret_cast<HWND>(Menu);
  draw.rcItem = {rect.Left, rect.Top, rect.Right, rect.Bottom};
  draw.itemData = entry.Data;
  return owner->Send(WM_DRAWITEM, 0, reinterpret_cast<LPARAM>(&draw)) != 0;
}

void THeadlessMenuLevel::PaintEntry(TCanvas& canvas, const TMenuEntry& entry, int index) {
  const TRect rect = EntryRect(index);
  if (entry.IsSeparator) {
    canvas.GetPen().SetColor(clBtnShadow);
    canvas.MoveTo(rect.Left, rect.Center().Y);
    canvas.LineTo(rect.Right, rect.Center().Y);
    return;
  }
  const bool hot = index == Hot;
  if (hot) {
    canvas.GetBrush().SetColor(clHighlight);
    canvas.FillRect(rect);
  }
  canvas.GetBrush().SetStyle(bsClear);
  TFont font = GetFont();
  font.SetColor(!entry.IsEnabled ? clGrayText : hot ? clHighlightText : clMenuText);
  if (entry.IsDefault) font.SetStyle({fsBold});
  canvas.SetFont(font);
  const TLifeGuard guard = Guard();
  if (entry.IsOwnerDrawn && (PaintOwnerDrawn(canvas, entry, rect, hot) || !guard.IsAlive())) return;
  TRect text = rect;
  text.Left += Scaled(CheckWidth);
  text.Right -= Scaled(EntryMargin);
  constexpr TTextFormat format{tfSingleLine, tfVerticalCenter, tfNoPrefix};
  const TRect mark(rect.Left + Scaled(7), rect.Top, text.Left, rect.Bottom);
  if (entry.IsChecked) canvas.DrawText(mark, entry.IsRadio ? u"\u2022" : u"\u221A", format);
  canvas.DrawText(text, MenuCaption(entry.Text), format);
  const TStringView key = entry.SubMenu ? TStringView(u">") : ShortCutOf(entry.Text);
  if (!key.empty()) canvas.DrawText(text, key, format + tfRight);
}

}  // namespace oak
