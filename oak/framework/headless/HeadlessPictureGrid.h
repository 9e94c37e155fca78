// Pieces of a picture, placed in pixels, and the character grid that they become.
#pragma once

#include <vector>

#include "oak/base/Text.h"
#include "oak/framework/Geometry.h"

namespace oak {

/// Collects pieces in drawing order. Columns are cells already, heights are pixels until ToText
/// finds the rows.
class THeadlessPictureGrid {
 public:
  explicit THeadlessPictureGrid(int pixelsPerInch);

  int ColumnOf(int x) const;  ///< The cell that a pixel lies in.
  int NearestColumn(int x) const;
  int Pixels(int value) const { return MulDiv(value, fPixelsPerInch, 96); }

  /// Words at a height, cut to the columns from..to.
  void Text(int column, int y, TStringView text, int from, int to);
  /// A single sign that gives way to words.
  void Sign(int column, int y, TStringView sign);
  /// A level line of one sign, with others at its ends, over the columns first..last.
  void Level(int y, int first, int last, TStringView left, TStringView middle, TStringView right);
  /// The same sign in a column between two heights.
  void Upright(int column, int top, int bottom, TStringView sign);
  /// A box; its lines are `Level` and `Upright` pieces.
  void Box(const TRect& rect, TStringView caption);
  /// Takes away what lies in these columns and heights.
  void Erase(int fromColumn, int toColumn, int top, int bottom);

  TString ToText() const;

 private:
  enum class TKind : std::uint8_t { Text, Sign, Level };
  struct TPiece {
    TKind Kind;
    int Y;
    int Column;
    std::vector<TString> Cells;  ///< Empty cells are the second halves of wide characters.
    int End() const { return Column + static_cast<int>(Cells.size()); }
  };
  struct TUpright {
    int Column;
    int Top;
    int Bottom;
    TString Sign;
  };
  struct TRow {
    int Y;
    std::vector<const TPiece*> Pieces;
  };

  bool Clashes(const TRow& row, const TPiece& piece) const;
  std::vector<TRow> FindRows() const;
  void BeginRow(std::vector<TRow>& rows, int y) const;
  using TLine = std::vector<TString>;
  static void Put(TLine& line, int column, const TString& cell, bool yielding);

  int fPixelsPerInch;
  std::vector<TPiece> fPieces;
  std::vector<TUpright> fUprights;
};

/// The cells of a line of text.
std::vector<TString> CellsOfText(TStringView text);

}  // namespace oak
