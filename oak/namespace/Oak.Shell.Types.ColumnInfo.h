// TColumnInfo: what a view knows of one column of a folder.
#pragma once

#include "oak/framework/ControlTypes.h"
#include "oak/namespace/Oak.Shell.Types.Columns.h"

namespace oak {

/// A value. Main thread, since widths follow the screen.
struct TColumnInfo {
  TColumnInfo() = default;
  TColumnInfo(int pShellIndex, const TShellColumnId& pShellColumn)
      : fShellIndex(pShellIndex), fShellColumn(pShellColumn) {}
  static TColumnInfo Default() { return {}; }

  /// fWidth in pixels of the screen.
  int ScaledWidth() const;
  /// PROPDESC_DISPLAYTYPE of the column, asked for once; 255 for none.
  std::uint8_t GetDisplayType() const;

  int fShellIndex = -1;  ///< Number in the folder's list of columns; 0 is the name column.
  TShellColumnId fShellColumn;
  int fWidth = 100;  ///< At 96 pixels per inch.
  TAlignment fAlignment = taLeftJustify;
  bool fVisibleByDefault = false;
  TString fTitle;
  std::uint32_t fFlags = 0;  ///< SHCOLSTATE_ bits.
  mutable std::uint8_t fDisplayType = 0xFF;
};

/// The alignment that LVCFMT_ bits of a column ask for.
TAlignment AlignmentOfFormat(int pFormat);

/// Caption, width, alignment and state of a column that no folder is asked for; the defaults where
/// the property system doesn't know it. The number stays -1.
TColumnInfo GetColumnInfoFromPropertySystem(const TShellColumnId& pColumn);

/// Pixels at 96 per inch for so many characters of a column.
constexpr int WidthOfCharacters(int pCount) { return pCount * 8; }

/// Whether a view with SHCOLSTATE_ bits like these has the column from the start.
bool IsColumnShownAtFirst(DWORD pState);

}  // namespace oak
