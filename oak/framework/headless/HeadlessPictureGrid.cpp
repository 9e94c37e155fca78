#include "oak/framework/headless/HeadlessPictureGrid.h"

#include <algorithm>
#include <cstdlib>

#include "oak/framework/headless/TextLayout.h"

namespace oak {
namespace {

constexpr int CellWidth = 7;  // pixels at 96 per inch
constexpr int RowPitch = 19;  // height of a row that stands for itself
constexpr int RowReach = 15;  // what starts that far below still is in the same row
constexpr int EdgeReach = 4;  // level lines so near are one

}  // namespace

std::vector<TString> CellsOfText(TStringView text) {
  std::vector<TString> cells;
  for (std::size_t i = 0; i < text.size();) {
    const bool pair =
        i + 1 < text.size() && (text[i] & 0xFC00) == 0xD800 && (text[i + 1] & 0xFC00) == 0xDC00;
    const TStringView unit = text.substr(i, pair ? 2 : 1);
    i += unit.size();
    const int width = CellsOf(unit);
    if (width == 0) {
      if (!cells.empty() && unit[0] >= u' ') cells.back() += unit;
      continue;
    }
    cells.emplace_back(unit);
    if (width == 2) cells.emplace_back();
  }
  return cells;
}

THeadlessPictureGrid::THeadlessPictureGrid(int pixelsPerInch) : fPixelsPerInch(pixelsPerInch) {}

int THeadlessPictureGrid::ColumnOf(int x) const {
  const int scaled = x * 96, cell = CellWidth * fPixelsPerInch;
  return scaled >= 0 ? scaled / cell : -((-scaled + cell - 1) / cell);
}

int THeadlessPictureGrid::NearestColumn(int x) const { return ColumnOf(x + Pixels(CellWidth) / 2); }

// --- pieces ------------------------------------------------------------------

void THeadlessPictureGrid::Text(int column, int y, TStringView text, int from, int to) {
  std::vector<TString> cells = CellsOfText(text);
  if (column < from) {
    const auto cut = std::min(static_cast<std::size_t>(from - column), cells.size());
    cells.erase(cells.begin(), cells.begin() + static_cast<std::ptrdiff_t>(cut));
    column = from;
  }
  cells.resize(std::min(cells.size(), static_cast<std::size_t>(std::max(to - column, 0))));
  while (!cells.empty() && cells.back() == u" ") cells.pop_back();
  if (!cells.empty()) fPieces.push_back({TKind::Text, y, column, std::move(cells)});
}

void THeadlessPictureGrid::Sign(int column, int y, TStringView sign) {
  fPieces.push_back({TKind::Sign, y, column, CellsOfText(sign)});
}

void THeadlessPictureGrid::Level(int y, int first, int last, TStringView left, TStringView middle,
                                 TStringView right) {
  if (last < first) return;
  std::vector<TString> cells(static_cast<std::size_t>(last - first + 1), TString(middle));
  cells.front() = left;
  if (last > first) cells.back() = right;
  fPieces.push_back({TKind::Level, y, first, std::move(cells)});
}

void THeadlessPictureGrid::Upright(int column, int top, int bottom, TStringView sign) {
  fUprights.push_back({column, top, bottom, TString(sign)});
}

void THeadlessPictureGrid::Box(const TRect& rect, TStringView caption) {
  const int left = NearestColumn(rect.Left);
  const int right = std::max(NearestColumn(rect.Right) - 1, left);
  Level(rect.Top, left, right, u"\u250C", u"\u2500", u"\u2510");
  if (!caption.empty() && right - left > 6) {
    std::vector<TString>& edge = fPieces.back().Cells;
    std::vector<TString> words = CellsOfText(u" " + TString(caption) + u" ");
    words.resize(std::min(words.size(), edge.size() - 4));
    std::copy(words.begin(), words.end(), edge.begin() + 2);
  }
  Level(rect.Bottom - 1, left, right, u"\u2514", u"\u2500", u"\u2518");
  Upright(left, rect.Top, rect.Bottom - 1, u"\u2502");
  Upright(right, rect.Top, rect.Bottom - 1, u"\u2502");
}

void THeadlessPictureGrid::Erase(int fromColumn, int toColumn, int top, int bottom) {
  if (toColumn <= fromColumn || bottom <= top) return;
  std::vector<TPiece> kept;
  for (TPiece& piece : fPieces) {
    const bool touched =
        piece.Y >= top && piece.Y < bottom && piece.Column < toColumn && piece.End() > fromColumn;
    if (!touched) {
      kept.push_back(std::move(piece));
      continue;
    }
    const auto cell = [&](int column) { return piece.Cells.begin() + (column - piece.Column); };
    if (piece.Column < fromColumn)
      kept.push_back({piece.Kind, piece.Y, piece.Column, {piece.Cells.begin(), cell(fromColumn)}});
    if (piece.End() > toColumn)
      kept.push_back({piece.Kind, piece.Y, toColumn, {cell(toColumn), piece.Cells.end()}});
  }
  fPieces = std::move(kept);
  std::vector<TUpright> lines;
  for (const TUpright& line : fUprights) {
    if (line.Column < fromColumn || line.Column >= toColumn || line.Bottom <= top ||
        line.Top >= bottom) {
      lines.push_back(line);
      continue;
    }
    if (line.Top < top) lines.push_back({line.Column, line.Top, top, line.Sign});
    if (line.Bottom > bottom) lines.push_back({line.Column, bottom, line.Bottom, line.Sign});
  }
  fUprights = std::move(lines);
}

// --- rows --------------------------------------------------------------------

bool THeadlessPictureGrid::Clashes(const TRow& row, const TPiece& piece) const {
  if (piece.Y - row.Y > Pixels(RowReach)) return true;
  return std::any_of(row.Pieces.begin(), row.Pieces.end(), [&](const TPiece* other) {
    if (other->Column >= piece.End() || other->End() <= piece.Column) return false;
    const bool bothLevel = piece.Kind == TKind::Level && other->Kind == TKind::Level;
    const bool bothWords = piece.Kind != TKind::Level && other->Kind != TKind::Level;
    const int distance = std::abs(piece.Y - other->Y);
    if (bothLevel) return distance > Pixels(EdgeReach);
    return !bothWords || distance > Pixels(EdgeReach);
  });
}

std::vector<THeadlessPictureGrid::TRow> THeadlessPictureGrid::FindRows() const {
  std::vector<const TPiece*> ordered;
  for (const TPiece& piece : fPieces) ordered.push_back(&piece);
  std::stable_sort(ordered.begin(), ordered.end(),
                   [](const TPiece* a, const TPiece* b) { return a->Y < b->Y; });
  std::vector<TRow> rows;
  while (!ordered.empty()) {
    // Level lines at one height stay together: a box beside another ends in the same row.
    const TPiece& first = *ordered.front();
    const auto isTogether = [&](const TPiece* piece) {
      return piece == &first || (first.Kind == TKind::Level && piece->Kind == TKind::Level &&
                                 piece->Y - first.Y <= Pixels(EdgeReach));
    };
    const auto rest = std::stable_partition(ordered.begin(), ordered.end(), isTogether);
    if (rows.empty() || std::any_of(ordered.begin(), rest, [&](const TPiece* piece) {
          return Clashes(rows.back(), *piece);
        }))
      BeginRow(rows, first.Y);
    TRow& row = rows.back();
    row.Pieces.insert(row.Pieces.end(), ordered.begin(), rest);
    ordered.erase(ordered.begin(), rest);
  }
  return rows;
}

/// A new row, and blank ones before it for a gap.
void THeadlessPictureGrid::BeginRow(std::vector<TRow>& rows, int y) const {
  const int former = rows.empty() ? y : rows.back().Y;
  const int gap = (y - former) / Pixels(RowPitch) - 1;
  for (int i = 1; i <= gap; ++i) rows.push_back({former + i * Pixels(RowPitch), {}});
  rows.push_back({y, {}});
}

void THeadlessPictureGrid::Put(TLine& line, int column, const TString& cell, bool yielding) {
  if (column < 0) return;
  const auto at = static_cast<std::size_t>(column);
  if (line.size() <= at) line.resize(at + 1, u" ");
  if (yielding && line[at] != u" ") return;
  line[at] = cell;
}

TString THeadlessPictureGrid::ToText() const {
  const std::vector<TRow> rows = FindRows();
  TString text;
  for (const TRow& row : rows) {
    TLine line;
    for (const TKind kind : {TKind::Level, TKind::Text, TKind::Sign})
      for (const TPiece* piece : row.Pieces)
        for (int i = 0; piece->Kind == kind && i < static_cast<int>(piece->Cells.size()); ++i)
          Put(line, piece->Column + i, piece->Cells[static_cast<std::size_t>(i)],
              kind == TKind::Sign);
    for (const TUpright& upright : fUprights)
      if (row.Y >= upright.Top && row.Y <= upright.Bottom)
        Put(line, upright.Column, upright.Sign, true);
    while (!line.empty() && line.back() == u" ") line.pop_back();
    for (const TString& cell : line) text += cell;
    text += u'\n';
  }
  return text;
}

}  // namespace oak
