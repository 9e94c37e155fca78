// What drawing takes from the system: colours, fonts, sizes of text, native pictures.
#pragma once

#include <memory>
#include <span>

#include "oak/framework/Geometry.h"
#include "oak/framework/Graphics.h"
#include "oak/framework/TextMetrics.h"

namespace oak {

class IImageSource;
class TBitmap;

/// Which of the user's fonts.
enum class TSystemFont : std::uint8_t { Message, IconTitle, Menu, Caption, Status };

/// A check box as drawn by the system.
enum class TCheckBoxImage : std::uint8_t { Unchecked, Checked, Grayed };

/// The system's own image list that mirrors one of ours. Main thread.
class TNativeImageList {
 public:
  virtual ~TNativeImageList() = default;
  virtual HIMAGELIST GetHandle() const = 0;
  /// Appends an image of the list's size, with its alpha.
  virtual void Add(const TBitmap& image) = 0;
  virtual void Replace(int index, const TBitmap& image) = 0;
  virtual void Delete(int index) = 0;
  virtual void Clear() = 0;
  virtual int GetCount() const = 0;
  /// Empties the list; the handle stays.
  virtual void SetSize(int width, int height) = 0;
  /// Image -1 takes the overlay away.
  virtual void SetOverlay(int imageIndex, int overlay) = 0;
  virtual void SetBkColor(TColor color) = 0;
};

/// What the graphics classes ask of the system. Widget sets bring theirs; a style may stand before
/// it and answer colours of its own. Colours and text sizes are asked from any thread.
class TGraphicsSystem {
 public:
  virtual ~TGraphicsSystem() = default;

  /// 0x00BBGGRR of a system colour's index.
  virtual TColor GetSystemColor(int index) const = 0;
  /// Name and height of one of the user's fonts at a density; style and colour of `font` are set
  /// too.
  virtual void GetSystemFont(TSystemFont kind, int pixelsPerInch, TFont& font) const = 0;
  virtual TFontMetrics GetFontMetrics(const TFont& font) const = 0;
  virtual TSize GetTextExtent(const TFont& font, TStringView text) const = 0;
  virtual TRect MeasureText(const TFont& font, const TRect& rect, TStringView text,
                            TTextFormat format) const = 0;
  /// Draws text on the pixels of a bitmap, in the font's colour and nothing behind it, within
  /// `clip`. False where the system has no letters to draw.
  virtual bool DrawTextOnBitmap(TBitmap& bitmap, const TRect& clip, const TFont& font,
                                const TRect& rect, TStringView text, TTextFormat format) const = 0;
  /// Draws a check box in the middle of a rectangle, in the system's look.
  virtual void DrawCheckBox(TBitmap& bitmap, const TRect& rect, TCheckBoxImage image, bool enabled,
                            int pixelsPerInch) const = 0;
  /// Images of a system image list; nil if there are none. Without `share` it is destroyed at the
  /// end.
  virtual std::shared_ptr<const IImageSource> GetImageSource(HIMAGELIST handle,
                                                             bool share) const = 0;
  /// An empty list of the system, `bits` deep (0: as the screen); nil if the system has none.
  virtual std::unique_ptr<TNativeImageList> CreateImageList(int width, int height,
                                                            int bits) const = 0;
  /// The pixels of a system icon, which stays the caller's; empty where the system has none.
  virtual TBitmap GetIconBitmap(HICON icon) const = 0;
};

/// The one in use: that of the system, until a widget set or a style sets another. Any thread.
TGraphicsSystem& GraphicsSystem() noexcept;
/// Sets another one, which must outlive its use, or with nil the system's own again; gives the
/// former. Main thread.
TGraphicsSystem* SetGraphicsSystem(TGraphicsSystem* system) noexcept;

/// Gives 0x00BBGGRR of a system colour's index. Called on any thread.
using TSystemColorProvider = TColor (*)(int index);
/// Puts a style's colours before those of the system, for ColorToRGB; nil: the system's own again.
/// Any thread.
void SetSystemColorProvider(TSystemColorProvider provider) noexcept;
/// 0x00BBGGRR of a system colour's index, by the provider or the system. Any thread.
TColor ResolveSystemColor(int index);

/// The graphics system of the headless widget set: fixed light colours, text measured by cells.
TGraphicsSystem& HeadlessGraphicsSystem() noexcept;

}  // namespace oak
