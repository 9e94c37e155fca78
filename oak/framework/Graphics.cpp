#include "oak/framework/Graphics.h"

#include <cstdlib>

#include "oak/framework/Geometry.h"
#include "oak/framework/GraphicsSystem.h"

namespace oak {

TColor ColorToRGB(TColor color) {
  if (IsSystemColor(color)) return ResolveSystemColor(static_cast<int>(color & 0xFF));
  return color & 0xFF000000u ? clBlack : color;
}

TColor BlendColors(TColor under, TColor over, int percent) {
  const TColor a = ColorToRGB(under);
  const TColor b = ColorToRGB(over);
  auto mix = [percent](int from, int to) { return from + MulDiv(to - from, percent, 100); };
  return RgbColor(mix(RedOf(a), RedOf(b)), mix(GreenOf(a), GreenOf(b)), mix(BlueOf(a), BlueOf(b)));
}

// --- TFont -------------------------------------------------------------------
TFont::TFont() : fName(u"Segoe UI") {}

TFont::TFont(const TFont& other)
    : fName(other.fName),
      fHeight(other.fHeight),
      fPixelsPerInch(other.fPixelsPerInch),
      fStyle(other.fStyle),
      fColor(other.fColor) {}

TFont& TFont::operator=(const TFont& other) {
  if (*this == other && fPixelsPerInch == other.fPixelsPerInch) return *this;
  fName = other.fName;
  fHeight = other.fHeight;
  fPixelsPerInch = other.fPixelsPerInch;
  fStyle = other.fStyle;
  fColor = other.fColor;
  Changed();
  return *this;
}

void TFont::Assign(const TPersistent* source) {
  if (auto* font = dynamic_cast<const TFont*>(source))
    *this = *font;
  else
    TGraphicsObject::Assign(source);
}

void TFont::SetName(TString value) { Change(fName, value); }

int TFont::GetSize() const noexcept { return -MulDiv(fHeight, 72, fPixelsPerInch); }

void TFont::SetSize(int points) { SetHeight(-MulDiv(points, fPixelsPerInch, 72)); }

void TFont::SetPixelsPerInch(int value) {
  if (value >= 1) Change(fPixelsPerInch, value);
}

void TFont::ChangeScale(int pixelsPerInch) {
  if (pixelsPerInch < 1 || pixelsPerInch == fPixelsPerInch) return;
  fHeight = MulDiv(fHeight, pixelsPerInch, fPixelsPerInch);
  fPixelsPerInch = pixelsPerInch;
  Changed();
}

int TFont::GetEmHeight() const noexcept {
  // A line is a quarter higher than its characters in the fonts of user interfaces.
  const int height = fHeight < 0 ? -fHeight : MulDiv(fHeight, 4, 5);
  return height < 1 ? 1 : height;
}

bool TFont::SameFace(const TFont& other) const noexcept {
  return fHeight == other.fHeight && fStyle == other.fStyle && fName == other.fName;
}

// --- TPen --------------------------------------------------------------------
TPen::TPen(const TPen& other) : fColor(other.fColor), fWidth(other.fWidth), fStyle(other.fStyle) {}

TPen& TPen::operator=(const TPen& other) {
  if (*this == other) return *this;
  fColor = other.fColor;
  fWidth = other.fWidth;
  fStyle = other.fStyle;
  Changed();
  return *this;
}

void TPen::Assign(const TPersistent* source) {
  if (auto* pen = dynamic_cast<const TPen*>(source))
    *this = *pen;
  else
    TGraphicsObject::Assign(source);
}

// --- TBrush ------------------------------------------------------------------
TBrush::TBrush(const TBrush& other) : fColor(other.fColor), fStyle(other.fStyle) {}

TBrush& TBrush::operator=(const TBrush& other) {
  if (*this == other) return *this;
  fColor = other.fColor;
  fStyle = other.fStyle;
  Changed();
  return *this;
}

void TBrush::Assign(const TPersistent* source) {
  if (auto* brush = dynamic_cast<const TBrush*>(source))
    *this = *brush;
  else
    TGraphicsObject::Assign(source);
}

void TBrush::SetColor(TColor value) {
  if (fColor == value && fStyle == bsSolid) return;
  fColor = value;
  fStyle = bsSolid;
  Changed();
}

}  // namespace oak
