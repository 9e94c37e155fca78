#include "oak/framework/headless/HeadlessPicture.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <utility>

#include "oak/base/Exceptions.h"
#include "oak/framework/Forms.h"
#include "oak/framework/Menus.h"
#include "oak/framework/headless/HeadlessDesktop.h"
#include "oak/framework/headless/HeadlessForm.h"
#include "oak/framework/headless/HeadlessMenu.h"
#include "oak/framework/headless/HeadlessPictureGrid.h"
#include "oak/framework/headless/TextLayout.h"

namespace oak {
namespace {

constexpr int LowFrame = 34;    // frames up to this height are brackets; pixels at 96 per inch
constexpr int CheckFrame = 20;  // ... and squares up to this size check boxes
constexpr int CaptionMiddle = 16;
constexpr int SameLine = 3;
constexpr int ImageGap = 8;
constexpr TStringView ImageSquare = u"\u25AA";

/// Turns windows and what they have drawn into pieces of the grid.
class TPicturePainter {
 public:
  TPicturePainter(const THeadlessWindow& root, const THeadlessPictureOptions& options)
      : fOptions(options), fOrigin(root.GetScreenRect().TopLeft()), fGrid(root.GetWindowPPI()) {}

  void Add(const THeadlessWindow& window, TRect clip, int fromColumn, int toColumn);
  TString ToText() const { return fGrid.ToText(); }

 private:
  /// The part of the picture that a window may draw in.
  struct TArea {
    TPoint Origin;  ///< Of the client area.
    TRect Clip;
    int From;  ///< Columns.
    int To;
  };

  TArea AddFrame(const THeadlessWindow& window, TArea area, const TRect& rect);
  void AddMenuBar(const THeadlessForm& form, const TRect& rect);
  void AddScrollBar(const THeadlessWindow& window, TScrollBarKind kind, const TRect& rect);
  void AddOperations(const THeadlessWindow& window, const TArea& area);
  void AddOperation(const TDrawOperation& operation, const TArea& area);
  void AddFill(const TDrawOperation& operation, const TArea& area);
  void AddFrameShape(const TDrawOperation& operation, const TArea& area);
  void AddText(const TDrawOperation& operation, const TArea& area);
  void AddTextLine(const TDrawOperation& operation, const TArea& area, TStringView line, int y,
                   TStringView mark);
  void PlaceImage();
  void PlaceImageBefore(const TRect& words, int column);
  int FreeColumnBefore(int words, int y) const;
  void NoteWords(int y, int right, int end);
  void AddLine(const TDrawOperation& operation, const TArea& area);
  void AddPolygon(const TDrawOperation& operation, const TArea& area);
  void AddFocus(const TDrawOperation& operation, const TArea& area);
  void AddImage(const TDrawOperation& operation, const TArea& area);
  TStringView TakeMark(const TRect& rect);
  bool Sees(const TArea& area, const TDrawOperation& operation, TPoint point) const;

  /// An image that waits for the words behind it.
  struct TPlacedImage {
    TRect Rect;
    TString Sign;
    int Column = 0;
    int From = 0;
    int To = 0;
  };

  struct TMarkedFill {
    TRect Rect;  ///< In pixels of the picture.
    bool Active;
    bool Used;
  };

  const THeadlessPictureOptions& fOptions;
  TPoint fOrigin;
  THeadlessPictureGrid fGrid;
  std::vector<TMarkedFill> fMarks;
  TColor fGround = clNone;                         // what the window is filled with
  std::vector<std::pair<TRect, int>> fCheckBoxes;  // with their columns
  std::vector<TRect> fButtons;
  TPlacedImage fImage;
  int fLastY = 0;      // of the words drawn last: height,
  int fLastRight = 0;  // right end in pixels
  int fLastEnd = 0;    // and the column behind them
};

TRect MovedBy(const TRect& rect, TPoint offset) { return rect.Moved(offset.X, offset.Y); }

bool TPicturePainter::Sees(const TArea& area, const TDrawOperation& operation, TPoint point) const {
  return area.Clip.Contains(point) && MovedBy(operation.Clip, area.Origin).Contains(point);
}

// --- windows -----------------------------------------------------------------

void TPicturePainter::Add(const THeadlessWindow& window, TRect clip, int fromColumn, int toColumn) {
  if (!window.GetVisible() || window.IsMinimized()) return;
  const TRect rect = window.GetScreenRect().Moved(-fOrigin.X, -fOrigin.Y);
  const TRect seen = rect.Intersected(clip);
  if (seen.IsEmpty()) return;
  fGrid.Erase(std::max(fGrid.NearestColumn(seen.Left), fromColumn),
              std::min(fGrid.NearestColumn(seen.Right), toColumn), seen.Top, seen.Bottom);
  TArea area{window.ClientToScreen({}) - fOrigin, {}, fromColumn, toColumn};
  area.Clip = MovedBy(window.GetClientRect(), area.Origin).Intersected(clip);
  area = AddFrame(window, area, rect);
  AddOperations(window, area);
  AddScrollBar(window, sbVertical, rect);
  AddScrollBar(window, sbHorizontal, rect);
  for (const THeadlessWindow* child : window.GetChildWindows())
    Add(*child, area.Clip, area.From, area.To);
}

TPicturePainter::TArea TPicturePainter::AddFrame(const THeadlessWindow& window, TArea area,
                                                 const TRect& rect) {
  const TRect frame = window.GetFrame();
  const auto* const form = dynamic_cast<const THeadlessForm*>(&window);
  const int left = fGrid.NearestColumn(rect.Left), right = fGrid.NearestColumn(rect.Right) - 1;
  if (frame.Left > 0) {
    const bool low = rect.Height() <= fGrid.Pixels(LowFrame);
    if (low && !form && window.GetKind() == THeadlessKind::Child) {
      const int y = rect.Center().Y;
      fGrid.Text(left, y, u"[", area.From, area.To);
      fGrid.Text(right, y, u"]", area.From, area.To);
    } else if (form) {
      // The upper edge stands where the caption is.
      fGrid.Box({rect.Left, rect.Top + fGrid.Pixels(CaptionMiddle), rect.Right, rect.Bottom},
                window.GetWindowText());
    } else {
      fGrid.Box(rect, {});
    }
    area.From = std::max(area.From, left + 1);
    area.To = std::min(area.To, right);
  } else {
    area.From = std::max(area.From, left);
    area.To = std::min(area.To, right + 1);
  }
  if (form) AddMenuBar(*form, rect);
  return area;
}

void TPicturePainter::AddMenuBar(const THeadlessForm& form, const TRect& rect) {
  if (!form.GetMenu()) return;
  const TMenuItem& items = form.GetMenu()->Items();
  for (int i = 0; i < items.GetCount(); ++i) {
    const TRect entry = MovedBy(form.GetMenuBarRect(i), rect.TopLeft());
    if (entry.IsEmpty() || !items.GetItem(i)->GetVisible()) continue;
    fGrid.Text(fGrid.ColumnOf(entry.Left) + 1, entry.Center().Y,
               MenuCaption(items.GetItem(i)->GetCaption()), 1, fGrid.ColumnOf(rect.Right - 1));
  }
}

void TPicturePainter::AddScrollBar(const THeadlessWindow& window, TScrollBarKind kind,
                                   const TRect& rect) {
  const TRect bar = MovedBy(window.GetScrollBarRect(kind), rect.TopLeft());
  if (bar.IsEmpty()) return;
  const auto [from, to] = window.ThumbOf(kind, bar);
  if (kind == sbVertical) {
    const int column = fGrid.ColumnOf(bar.Center().X);
    // A bar of a few rows still shows its thumb: pieces make rows, lines follow them.
    fGrid.Upright(column, from, to, u"#");
    fGrid.Upright(column, bar.Top, bar.Bottom - 1, u"|");
    return;
  }
  const int left = fGrid.ColumnOf(bar.Left) + 1, right = fGrid.ColumnOf(bar.Right - 1) - 1;
  const int y = bar.Center().Y;
  fGrid.Level(y, left, right, u"<", u"-", u">");
  const int first = std::max(fGrid.ColumnOf(from), left + 1);
  const int last = std::min(fGrid.ColumnOf(to - 1), right - 1);
  fGrid.Level(y, first, last, u"#", u"#", u"#");
}

// --- what was drawn ----------------------------------------------------------

void TPicturePainter::AddOperations(const THeadlessWindow& window, const TArea& area) {
  fMarks.clear();
  fCheckBoxes.clear();
  fButtons.clear();
  fGround = clNone;
  fLastEnd = std::numeric_limits<int>::min();
  for (const TDrawOperation& operation : window.GetDrawing()) AddOperation(operation, area);
  PlaceImage();
}

void TPicturePainter::AddOperation(const TDrawOperation& operation, const TArea& area) {
  switch (operation.Kind) {
    case TDrawKind::FillRect:
    case TDrawKind::Gradient:
      return AddFill(operation, area);
    case TDrawKind::FrameRect:
    case TDrawKind::Rectangle:
      return AddFrameShape(operation, area);
    case TDrawKind::Text:
      return AddText(operation, area);
    case TDrawKind::Line:
      return AddLine(operation, area);
    case TDrawKind::Polygon:
      return AddPolygon(operation, area);
    case TDrawKind::Image:
      return AddImage(operation, area);
    case TDrawKind::Bitmap:
      return;
    case TDrawKind::FocusRect:
      return AddFocus(operation, area);
  }
}

void TPicturePainter::AddFill(const TDrawOperation& operation, const TArea& area) {
  const TRect rect =
      MovedBy(operation.Rect.Intersected(operation.Clip), area.Origin).Intersected(area.Clip);
  if (rect.IsEmpty()) return;
  if (rect.Contains(fImage.Rect.Center())) fImage = {};
  fGrid.Erase(std::max(fGrid.NearestColumn(rect.Left), area.From),
              std::min(fGrid.NearestColumn(rect.Right), area.To), rect.Top, rect.Bottom);
  std::erase_if(fMarks,
                [&](const TMarkedFill& mark) { return rect.Intersected(mark.Rect) == mark.Rect; });
  if (operation.Kind != TDrawKind::FillRect) return;
  const TColor highlight = ColorToRGB(clHighlight), face = ColorToRGB(clBtnFace);
  if (operation.Color == highlight)
    fMarks.push_back({rect, true, false});
  else if (operation.Color == face && fGround == ColorToRGB(clWindow))
    fMarks.push_back({rect, false, false});
  else if (fGround == clNone)
    fGround = operation.Color;
}

/// The sign before the first words on a fill that tells of a selection; empty if there is none.
TStringView TPicturePainter::TakeMark(const TRect& rect) {
  for (auto mark = fMarks.rbegin(); mark != fMarks.rend(); ++mark) {
    if (!mark->Rect.Contains(rect.Center())) continue;
    if (mark->Used) return {};
    mark->Used = true;
    return mark->Active ? u"*" : u"+";
  }
  return {};
}

void TPicturePainter::AddFrameShape(const TDrawOperation& operation, const TArea& area) {
  const TRect rect = MovedBy(operation.Rect, area.Origin);
  if (operation.Color != clNone) AddFill(operation, area);
  if (operation.PenColor == clNone || !Sees(area, operation, rect.Center())) return;
  const int left = fGrid.NearestColumn(rect.Left), right = fGrid.NearestColumn(rect.Right) - 1;
  const int limit = fGrid.Pixels(CheckFrame), y = rect.Center().Y;
  if (rect.Height() <= limit && rect.Width() <= limit) {
    const int column = std::max(fGrid.ColumnOf(rect.Center().X) - 1, area.From);
    fCheckBoxes.push_back({rect, column});
    fGrid.Sign(column, y, u"[ ]");
    NoteWords(y, rect.Right, column + 3);
  } else if (rect.Height() <= fGrid.Pixels(LowFrame)) {
    fButtons.push_back(rect);
    fGrid.Sign(std::max(left, area.From), y, u"[");
    fGrid.Sign(std::min(right, area.To - 1), y, u"]");
  } else {
    fGrid.Box(rect.Intersected(area.Clip), {});
  }
}

void TPicturePainter::AddText(const TDrawOperation& operation, const TArea& area) {
  const TRect rect = MovedBy(operation.Rect, area.Origin);
  const bool isSign = operation.Text.size() == 1;
  const TStringView mark = isSign ? TStringView() : TakeMark(rect);
  const TStringView text = operation.Text;
  const int lines = 1 + static_cast<int>(std::count(text.begin(), text.end(), u'\n'));
  std::size_t begin = 0;
  for (int i = 0; i < lines; ++i) {
    const std::size_t end = std::min(text.find(u'\n', begin), text.size());
    const int y = rect.Top + rect.Height() * (2 * i + 1) / (2 * lines);
    AddTextLine(operation, area, text.substr(begin, end - begin), y, i == 0 ? mark : TStringView());
    begin = end + 1;
  }
}

void TPicturePainter::AddTextLine(const TDrawOperation& operation, const TArea& area,
                                  TStringView line, int y, TStringView mark) {
  const TRect rect = MovedBy(operation.Rect, area.Origin);
  const TRect clip = MovedBy(operation.Clip, area.Origin).Intersected(area.Clip);
  if (clip.IsEmpty() || y < clip.Top || y >= clip.Bottom) return;
  const int from = std::max(fGrid.ColumnOf(clip.Left), area.From);
  const int to = std::min(fGrid.ColumnOf(clip.Right - 1) + 1, area.To);
  const int cells = static_cast<int>(CellsOfText(line).size());
  int column = fGrid.NearestColumn(rect.Left);
  if (operation.Format.Contains(tfRight))
    column = fGrid.NearestColumn(rect.Right) - cells;
  else if (operation.Format.Contains(tfCenter))
    column = fGrid.NearestColumn(rect.Center().X - cells * (rect.Width() / std::max(cells, 1)) / 2);
  // Words that begin where a frame or other words stand move to the right of them.
  if (column < from && rect.Left >= clip.Left) column = from;
  const bool follows = std::abs(y - fLastY) <= fGrid.Pixels(SameLine) && rect.Left > fLastRight;
  const bool pushed = follows && column <= fLastEnd;
  if (pushed) column = fLastEnd + 1;
  // Sizes in pixels are rounded: what fits there shall not lose its last sign here.
  int room = rect.Right <= clip.Right ? std::max(to, std::min(column + cells, area.To)) : to;
  if (pushed && !operation.Format.Contains(tfRight))
    room = std::min(room, fGrid.NearestColumn(clip.Right));
  PlaceImageBefore(rect, column);
  TString shortened;
  if (pushed && column + cells > room && room - column > 1)
    line = shortened = TString(FitCells(line, room - column - 1)) + u"\u2026";
  if (!mark.empty() && column > area.From) fGrid.Sign(column - 1, y, mark);
  fGrid.Erase(std::max(column, from), std::min(column + cells, room), y - 1, y + 2);
  fGrid.Text(column, y, line, from, room);
  NoteWords(y, rect.Right, std::min(column + cells, room));
}

/// Puts the sign of the last image where it belongs.
void TPicturePainter::PlaceImage() {
  const TPlacedImage image = std::exchange(fImage, {});
  if (!image.Sign.empty() && image.Column >= image.From && image.Column < image.To)
    fGrid.Sign(image.Column, image.Rect.Center().Y, image.Sign);
}

/// The column of the last image before words, with a gap unless a check box leaves no room for it.
int TPicturePainter::FreeColumnBefore(int words, int y) const {
  const int width = static_cast<int>(CellsOfText(fImage.Sign).size());
  const int wanted = words - 1 - width;
  const bool taken = std::any_of(fCheckBoxes.begin(), fCheckBoxes.end(), [&](const auto& entry) {
    const auto& [box, column] = entry;
    return box.Top <= y && y < box.Bottom && wanted < column + 3 && column < wanted + width;
  });
  return taken ? words - width : wanted;
}

/// An image close before words stands close before them in every row, however it is rounded.
void TPicturePainter::PlaceImageBefore(const TRect& words, int column) {
  const int gap = words.Left - fImage.Rect.Right;
  if (gap >= 0 && gap <= fGrid.Pixels(ImageGap) &&
      fImage.Rect.Contains({fImage.Rect.Left, words.Center().Y}))
    fImage.Column = FreeColumnBefore(column, words.Center().Y);
  PlaceImage();
}

void TPicturePainter::NoteWords(int y, int right, int end) {
  fLastY = y;
  fLastRight = right;
  fLastEnd = end;
}

void TPicturePainter::AddLine(const TDrawOperation& operation, const TArea& area) {
  const TRect rect = MovedBy(operation.Rect, area.Origin);
  for (const auto& [box, column] : fCheckBoxes)
    if (box.Contains(rect.Center()))
      return fGrid.Text(column + 1, box.Center().Y, u"x", area.From, area.To);
  const TRect seen = rect.Intersected(area.Clip).Intersected(MovedBy(operation.Clip, area.Origin));
  if (seen.IsEmpty()) return;
  const bool faint = operation.PenColor == ColorToRGB(clBtnFace);  // lines between rows
  if (rect.Height() <= 2 && rect.Width() > fGrid.Pixels(CheckFrame)) {
    if (!faint)
      fGrid.Level(seen.Top, std::max(fGrid.ColumnOf(seen.Left), area.From),
                  std::min(fGrid.ColumnOf(seen.Right - 1), area.To - 1), u"\u2500", u"\u2500",
                  u"\u2500");
  } else if (rect.Width() <= 2) {
    const int column = fGrid.ColumnOf(seen.Left);
    if (column >= area.From && column < area.To)
      fGrid.Upright(column, seen.Top, seen.Bottom - 1, u"\u2502");
  }
}

void TPicturePainter::AddPolygon(const TDrawOperation& operation, const TArea& area) {
  const TRect rect = MovedBy(operation.Rect, area.Origin);
  if (!Sees(area, operation, rect.Center()) || operation.Points.size() < 3) return;
  // A triangle points to where only one of its corners is.
  const auto count = [&](auto&& test) {
    return std::count_if(operation.Points.begin(), operation.Points.end(), test);
  };
  const TRect own = operation.Rect;
  const auto top = count([&](TPoint p) { return p.Y == own.Top; });
  const auto bottom = count([&](TPoint p) { return p.Y == own.Bottom - 1; });
  const auto left = count([&](TPoint p) { return p.X == own.Left; });
  const auto right = count([&](TPoint p) { return p.X == own.Right - 1; });
  TStringView sign = u"\u25AA";
  if (top == 1 && bottom > 1) sign = u"^";
  if (bottom == 1 && top > 1) sign = u"v";
  if (left == 1 && right > 1) sign = u"<";
  if (right == 1 && left > 1) sign = u">";
  fGrid.Sign(fGrid.ColumnOf(rect.Center().X), rect.Center().Y, sign);
}

/// The button that has the keyboard; in lists and edits the selection and the caret tell it.
void TPicturePainter::AddFocus(const TDrawOperation& operation, const TArea& area) {
  const TRect rect = MovedBy(operation.Rect, area.Origin);
  for (const TRect& button : fButtons)
    if (button.Contains(rect.Center()) && Sees(area, operation, rect.Center()))
      fGrid.Sign(std::max(fGrid.ColumnOf(button.Left), area.From) + 1, rect.Center().Y, u"*");
}

void TPicturePainter::AddImage(const TDrawOperation& operation, const TArea& area) {
  const TRect rect = MovedBy(operation.Rect, area.Origin);
  if (!Sees(area, operation, rect.Center())) return;
  TString sign = fOptions.ImageSign ? fOptions.ImageSign(operation) : TString();
  if (sign.empty()) sign = ImageSquare;
  PlaceImage();
  fImage = {rect, sign, fGrid.ColumnOf(rect.Center().X), area.From, area.To};
}

}  // namespace

TString TextPicture(THeadlessDesktop& desktop, THeadlessWindow& window,
                    const THeadlessPictureOptions& options) {
  desktop.Paint();
  constexpr int all = 1 << 20;
  TPicturePainter painter(window, options);
  painter.Add(window, {-all, -all, all, all}, -all, all);
  if (options.Popups)
    for (const THeadlessWindow* top : desktop.GetTopWindows())
      if (top != &window && top->GetKind() == THeadlessKind::Popup)
        painter.Add(*top, {0, 0, all, all}, 0, all);
  return painter.ToText();
}

TString TextPicture(const TCustomForm& form, const THeadlessPictureOptions& options) {
  auto* const desktop = dynamic_cast<THeadlessDesktop*>(&WidgetSet());
  THeadlessWindow* const window = desktop ? desktop->WindowOf(form) : nullptr;
  if (!window)
    throw EInvalidOperation(u"The form \"" + form.GetCaption() +
                            u"\" is not shown on a headless desktop.");
  return TextPicture(*desktop, *window, options);
}

}  // namespace oak
