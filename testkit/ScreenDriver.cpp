#include "testkit/ScreenDriver.h"

#include <algorithm>
#include <ostream>

namespace oak::testkit {

std::ostream& operator<<(std::ostream& out, const TShownImages& images) {
  out << " image " << images.Image;
  if (images.State >= 0) out << " state " << images.State;
  if (images.Overlay >= 0) out << " overlay " << images.Overlay;
  if (images.Cut) out << " cut";
  return out;
}

std::ostream& operator<<(std::ostream& out, const TShownRow& row) {
  if (row.Checked) out << "[x]";
  if (row.Marked) out << "*";
  if (row.Focused) out << "!";
  for (const TString& cell : row.Cells) out << "|" << ToUtf8(cell);
  return out << row.Images;
}

std::ostream& operator<<(std::ostream& out, const TShownNode& node) {
  out << std::string(static_cast<std::size_t>(std::max(0, node.Level)), '.');
  if (node.HasButton) out << (node.Expanded ? "v" : ">");
  return out << ToUtf8(node.Text) << (node.Marked ? "*" : "") << node.Images;
}

std::ostream& operator<<(std::ostream& out, const TShownColumn& column) {
  out << ToUtf8(column.Caption) << ":" << column.Width;
  if (column.Mark != TListSortMark::None)
    out << (column.Mark == TListSortMark::Up ? " up" : " down");
  return out;
}

}  // namespace oak::testkit
