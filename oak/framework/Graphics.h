// Colours, fonts, pens and brushes: how something is to be drawn, not the drawing itself.
#pragma once

#include <cstdint>
#include <functional>

#include "oak/base/Set.h"
#include "oak/base/Text.h"
#include "oak/framework/Component.h"

namespace oak {

/// A colour: 0x00BBGGRR, or a system colour 0xFF000000 | index that stands for whatever the user's
/// settings and the style give when something is drawn, or clNone or clDefault.
using TColor = std::uint32_t;

/// The system colour of an index of the platform's table (that of GetSysColor).
constexpr TColor SystemColor(int index) { return 0xFF000000u | static_cast<TColor>(index & 0xFF); }
constexpr bool IsSystemColor(TColor color) { return (color & 0xFF000000u) == 0xFF000000u; }

constexpr TColor clScrollBar = SystemColor(0);
constexpr TColor clBackground = SystemColor(1);
constexpr TColor clActiveCaption = SystemColor(2);
constexpr TColor clInactiveCaption = SystemColor(3);
constexpr TColor clMenu = SystemColor(4);
constexpr TColor clWindow = SystemColor(5);
constexpr TColor clWindowFrame = SystemColor(6);
constexpr TColor clMenuText = SystemColor(7);
constexpr TColor clWindowText = SystemColor(8);
constexpr TColor clCaptionText = SystemColor(9);
constexpr TColor clActiveBorder = SystemColor(10);
constexpr TColor clInactiveBorder = SystemColor(11);
constexpr TColor clAppWorkSpace = SystemColor(12);
constexpr TColor clHighlight = SystemColor(13);
constexpr TColor clHighlightText = SystemColor(14);
constexpr TColor clBtnFace = SystemColor(15);
constexpr TColor clBtnShadow = SystemColor(16);
constexpr TColor clGrayText = SystemColor(17);
constexpr TColor clBtnText = SystemColor(18);
constexpr TColor clInactiveCaptionText = SystemColor(19);
constexpr TColor clBtnHighlight = SystemColor(20);
constexpr TColor cl3DDkShadow = SystemColor(21);
constexpr TColor cl3DLight = SystemColor(22);
constexpr TColor clInfoText = SystemColor(23);
constexpr TColor clInfoBk = SystemColor(24);
constexpr TColor clHotLight = SystemColor(26);
constexpr TColor clGradientActiveCaption = SystemColor(27);
constexpr TColor clGradientInactiveCaption = SystemColor(28);
constexpr TColor clMenuHighlight = SystemColor(29);
constexpr TColor clMenuBar = SystemColor(30);

constexpr TColor clBlack = 0x000000;
constexpr TColor clMaroon = 0x000080;
constexpr TColor clGreen = 0x008000;
constexpr TColor clOlive = 0x008080;
constexpr TColor clNavy = 0x800000;
constexpr TColor clPurple = 0x800080;
constexpr TColor clTeal = 0x808000;
constexpr TColor clGray = 0x808080;
constexpr TColor clSilver = 0xC0C0C0;
constexpr TColor clRed = 0x0000FF;
constexpr TColor clLime = 0x00FF00;
constexpr TColor clYellow = 0x00FFFF;
constexpr TColor clBlue = 0xFF0000;
constexpr TColor clFuchsia = 0xFF00FF;
constexpr TColor clAqua = 0xFFFF00;
constexpr TColor clWhite = 0xFFFFFF;
/// No colour: nothing is filled, drawn or masked.
constexpr TColor clNone = 0x1FFFFFFF;
/// The colour that the object at hand has by itself.
constexpr TColor clDefault = 0x20000000;

/// The colour of three parts of 0..255.
constexpr TColor RgbColor(int red, int green, int blue) {
  return static_cast<TColor>((red & 0xFF) | (green & 0xFF) << 8 | (blue & 0xFF) << 16);
}
constexpr int RedOf(TColor rgb) { return static_cast<int>(rgb & 0xFF); }
constexpr int GreenOf(TColor rgb) { return static_cast<int>(rgb >> 8 & 0xFF); }
constexpr int BlueOf(TColor rgb) { return static_cast<int>(rgb >> 16 & 0xFF); }

/// 0x00BBGGRR of any colour at this moment; system colours come from the graphics system in use.
/// clNone and clDefault give black. Any thread. Ask when drawing: an answer that is kept misses a
/// change of the theme.
TColor ColorToRGB(TColor color);

/// `percent` of `over` upon the rest of `under`; both are resolved first.
TColor BlendColors(TColor under, TColor over, int percent);

enum TFontStyle : std::uint8_t { fsBold, fsItalic, fsUnderline, fsStrikeOut };
using TFontStyles = TSet<TFontStyle>;

/// The part of TFont, TPen and TBrush that tells of changes.
class TGraphicsObject : public TPersistent {
 public:
  /// Fires after each change, once for an Assign. Not copied by it.
  TNotifyEvent OnChange;

 protected:
  void Changed() {
    if (OnChange) OnChange(this);
  }
  template <class T>
  void Change(T& field, const T& value) {
    if (field == value) return;
    field = value;
    Changed();
  }
};

/// A text font. Its size belongs to a pixel density: a control that moves to another monitor calls
/// ChangeScale. No lock; a font of its own for each thread.
class TFont : public TGraphicsObject {
 public:
  /// The system's message font at 9 points and 96 pixels per inch, text in clWindowText.
  TFont();
  /// Copies everything but the event.
  TFont(const TFont& other);
  TFont& operator=(const TFont& other);
  /// Takes over name, height, density, style and colour of a TFont.
  void Assign(const TPersistent* source) override;

  const TString& GetName() const noexcept { return fName; }
  void SetName(TString value);
  /// In pixels of the font's density: negative is the height of the characters, positive that of a
  /// line. Default -12.
  int GetHeight() const noexcept { return fHeight; }
  void SetHeight(int value) { Change(fHeight, value); }
  /// The height in points: positive for a height of characters, which is what setting gives.
  int GetSize() const noexcept;
  void SetSize(int points);
  /// Setting changes the meaning of the height, not the height: the size in points follows.
  int GetPixelsPerInch() const noexcept { return fPixelsPerInch; }
  void SetPixelsPerInch(int value);
  /// To another density with the same size in points. Values below 1 are ignored.
  void ChangeScale(int pixelsPerInch);
  TFontStyles GetStyle() const noexcept { return fStyle; }
  void SetStyle(TFontStyles value) { Change(fStyle, value); }
  TColor GetColor() const noexcept { return fColor; }
  void SetColor(TColor value) { Change(fColor, value); }

  /// Height of the characters in pixels, never below 1.
  int GetEmHeight() const noexcept;
  /// Same glyphs at the same size: all but the colour is equal.
  bool SameFace(const TFont& other) const noexcept;
  friend bool operator==(const TFont& a, const TFont& b) noexcept {
    return a.SameFace(b) && a.fColor == b.fColor;
  }

 private:
  TString fName;
  int fHeight = -12;
  int fPixelsPerInch = 96;
  TFontStyles fStyle;
  TColor fColor = clWindowText;
};

enum TPenStyle : std::uint8_t {
  psSolid,
  psDot,   ///< Every other pixel.
  psClear  ///< Draws nothing.
};

/// How lines and frames are drawn.
class TPen : public TGraphicsObject {
 public:
  TPen() = default;
  TPen(const TPen& other);
  TPen& operator=(const TPen& other);
  void Assign(const TPersistent* source) override;

  /// Default clBlack.
  TColor GetColor() const noexcept { return fColor; }
  void SetColor(TColor value) { Change(fColor, value); }
  /// In pixels, default 1; a value below 1 counts as 1.
  int GetWidth() const noexcept { return fWidth; }
  void SetWidth(int value) { Change(fWidth, value < 1 ? 1 : value); }
  TPenStyle GetStyle() const noexcept { return fStyle; }
  void SetStyle(TPenStyle value) { Change(fStyle, value); }
  friend bool operator==(const TPen& a, const TPen& b) noexcept {
    return a.fColor == b.fColor && a.fWidth == b.fWidth && a.fStyle == b.fStyle;
  }

 private:
  TColor fColor = clBlack;
  int fWidth = 1;
  TPenStyle fStyle = psSolid;
};

enum TBrushStyle : std::uint8_t {
  bsSolid,
  bsClear  ///< Fills nothing; text gets no background.
};

/// How areas and the background of text are filled.
class TBrush : public TGraphicsObject {
 public:
  TBrush() = default;
  TBrush(const TBrush& other);
  TBrush& operator=(const TBrush& other);
  void Assign(const TPersistent* source) override;

  /// Default clWhite. Setting a colour makes a clear brush solid, as drawing code expects.
  TColor GetColor() const noexcept { return fColor; }
  void SetColor(TColor value);
  TBrushStyle GetStyle() const noexcept { return fStyle; }
  void SetStyle(TBrushStyle value) { Change(fStyle, value); }
  friend bool operator==(const TBrush& a, const TBrush& b) noexcept {
    return a.fColor == b.fColor && a.fStyle == b.fStyle;
  }

 private:
  TColor fColor = clWhite;
  TBrushStyle fStyle = bsSolid;
};

/// How text stands in a rectangle. Left, top and with "&" as a mnemonic where nothing else is said.
enum TTextFormatFlag : std::uint8_t {
  tfLeft,
  tfCenter,
  tfRight,
  tfTop,
  tfVerticalCenter,  ///< With tfSingleLine only.
  tfBottom,          ///< With tfSingleLine only.
  tfSingleLine,      ///< Line ends are blanks.
  tfWordBreak,
  tfEndEllipsis,  ///< What does not fit ends in "...".
  tfNoPrefix,     ///< "&" is a character like others.
  tfNoClip,
  tfRtlReading,
  tfCalcRect  ///< Draws nothing: the rectangle becomes that of the text.
};
using TTextFormat = TSet<TTextFormatFlag>;

}  // namespace oak
