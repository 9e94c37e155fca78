// TImageList: images of one size, drawn by index.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "oak/framework/Bitmap.h"
#include "oak/framework/Canvas.h"
#include "oak/framework/Component.h"

namespace oak {

class TImageList;

enum TColorDepth : std::uint8_t { cdDeviceDependent, cd4Bit, cd8Bit, cd16Bit, cd24Bit, cd32Bit };

/// What lies behind an image that is drawn in normal state.
enum TDrawingStyle : std::uint8_t {
  dsNormal,      ///< The list's background colour, if it has one.
  dsTransparent  ///< What was there before.
};

/// Where a list takes its images from when they are not its own: the shell's icons, which are drawn
/// or fetched one by one when asked for. Main thread.
class IImageSource {
 public:
  virtual ~IImageSource() = default;
  virtual int GetCount() const = 0;
  virtual TSize GetImageSize() const = 0;
  /// The image with its alpha, in GetImageSize(); false leaves `image` as it was.
  virtual bool GetImage(int index, TBitmap& image) const = 0;
  /// Index of the image that lies over others as overlay 1..15, or -1.
  virtual int GetOverlayImage(int /*overlay*/) const { return -1; }
  /// The system's image list behind it, or null.
  virtual HIMAGELIST GetHandle() const { return nullptr; }
};

class TNativeImageList;

/// One user of an image list: told when images change. The end of either side ends the tie.
class TChangeLink : public TObject {
 public:
  TChangeLink() = default;
  ~TChangeLink() override;
  TChangeLink(const TChangeLink&) = delete;
  TChangeLink& operator=(const TChangeLink&) = delete;

  /// Images changed, or the list has another handle: redraw. The sender is the list.
  TNotifyEvent OnChange;
  /// The list that it is registered with, or nil.
  TImageList* GetImages() const noexcept { return fImages; }

 private:
  friend class TImageList;
  TImageList* fImages = nullptr;
};

/// A list of images of one size. The images are in the list itself, as pixels; the system's list is
/// made when a control asks for its handle and is kept in step. Instead a list may show the images
/// of a source, the shell's for instance; what changes images then raises EInvalidOperation.
///
/// A list that ends tells first those that asked by FreeNotification, while its handle still lives,
/// so no control draws with a list that is gone. Main thread.
class TImageList : public TComponent {
 public:
  /// 16 by 16 pixels, 32-bit, masked.
  explicit TImageList(TComponent* owner = nullptr);
  TImageList(TComponent* owner, int width, int height);
  ~TImageList() override;
  /// Takes over images, overlays and settings of another list; a source is shared.
  void Assign(const TPersistent* source) override;
  /// Like Assign, in another size: for another pixel density. Images of a source are scaled one by
  /// one when they are asked for.
  void AssignScaled(const TImageList& source, int width, int height);

  int GetWidth() const;
  void SetWidth(int value) { SetSize(value, GetHeight()); }
  int GetHeight() const;
  void SetHeight(int value) { SetSize(GetWidth(), value); }
  /// Another size drops all images. Below 1 or above 1024 raises EInvalidArgument.
  void SetSize(int width, int height);
  TColorDepth GetColorDepth() const noexcept { return fColorDepth; }
  /// Depth of the system's list; the images here always have 32 bits.
  void SetColorDepth(TColorDepth value);
  /// Whether masks are heeded: without, every pixel of a bitmap without alpha is opaque.
  bool GetMasked() const noexcept { return fMasked; }
  void SetMasked(bool value);
  /// Default clNone.
  TColor GetBkColor() const noexcept { return fBkColor; }
  void SetBkColor(TColor value);
  TDrawingStyle GetDrawingStyle() const noexcept { return fDrawingStyle; }
  void SetDrawingStyle(TDrawingStyle value);

  int GetCount() const;
  /// Appends the image, or as many as stand side by side in a bitmap of several widths; one that is
  /// smaller than an image stands in its upper left corner. White pixels of the mask are
  /// transparent. Gives the index of the first, -1 for an empty bitmap.
  int Add(const TBitmap& image, const TBitmap* mask = nullptr);
  /// Appends images in which pixels of one colour are transparent.
  int AddMasked(const TBitmap& image, TColor maskColor);
  /// Puts one image before `index`, 0..GetCount(); any other raises EArgumentException, here and
  /// below.
  void Insert(int index, const TBitmap& image, const TBitmap* mask = nullptr);
  /// Puts an image at the place of another.
  void Replace(int index, const TBitmap& image, const TBitmap* mask = nullptr);
  void ReplaceMasked(int index, const TBitmap& image, TColor maskColor);
  void Delete(int index);
  void Clear();
  /// Lets an image lie over others as overlay 1..15; -1 as image takes the overlay away.
  void Overlay(int imageIndex, int overlay);
  /// The image of overlay 1..15, or -1.
  int GetOverlayImage(int overlay) const;

  /// A copy of the image with its alpha; false, and an unchanged bitmap, outside the list.
  bool GetBitmap(int index, TBitmap& image) const;
  /// The image as it is drawn: with overlay and state, on the background of dsNormal.
  bool GetRendered(int index, int overlay, TImageState state, TBitmap& image) const;
  /// Draws an image with its upper left corner at the point. `overlay` 1..15 lies over it, 0 is
  /// none (the overlay index of a row is one less). Nothing happens outside the list.
  void Draw(TCanvas& canvas, int x, int y, int index, int overlay = 0,
            TImageState state = TImageState::Normal) const;

  /// Each change of images tells all registered links. Registering elsewhere ends the former tie.
  void RegisterChanges(TChangeLink* link);
  void UnRegisterChanges(TChangeLink* link);
  /// After all links were told.
  TNotifyEvent OnChange;
  /// Between these calls changes are counted, and told once at the end.
  void BeginUpdate() noexcept { ++fUpdateCount; }
  void EndUpdate();

  /// The system's list, made at the first call and kept in step with the images; null where the
  /// system has none. It stays the list's.
  HIMAGELIST GetHandle() const;
  bool HandleAllocated() const noexcept;
  /// Shows the images of a system list from now on, null: own images, none. With ShareImages the
  /// handle is borrowed, as those of the shell are; else it is destroyed with the list.
  void SetHandle(HIMAGELIST handle);
  /// Default false. To be set before SetHandle.
  bool GetShareImages() const noexcept { return fShareImages; }
  void SetShareImages(bool value) noexcept { fShareImages = value; }
  /// Shows the images of `source` from now on, nil: own images, none.
  void SetSource(std::shared_ptr<const IImageSource> source);
  const std::shared_ptr<const IImageSource>& GetSource() const noexcept { return fSource; }
  /// Images have changed, of the source as well: tells links and event.
  virtual void Change();

 private:
  void SetSettings(const TImageList& source, int width, int height);
  void CheckOwnImages() const;
  void CheckIndex(int index, int limit) const;
  void AppendImage(TBitmap image);
  void ReplaceImage(int index, TBitmap image);
  void RetireNative() noexcept;
  void FillNative() const;
  void TellLinks();

  int fWidth = 16;
  int fHeight = 16;
  TColorDepth fColorDepth = cd32Bit;
  bool fMasked = true;
  bool fShareImages = false;
  TDrawingStyle fDrawingStyle = dsTransparent;
  TColor fBkColor = clNone;
  std::vector<TBitmap> fImages;
  std::array<int, 15> fOverlays;
  std::shared_ptr<const IImageSource> fSource;
  mutable std::unique_ptr<TNativeImageList> fNative;
  // What controls may still be drawing with: kept until they have been told of the successor.
  std::vector<std::unique_ptr<TNativeImageList>> fRetired;
  std::vector<std::shared_ptr<const IImageSource>> fRetiredSources;
  std::vector<TChangeLink*> fLinks;
  std::shared_ptr<bool> fAlive;
  int fUpdateCount = 0;
  bool fChanged = false;
};

/// The name under which lists of other kinds derive from it.
using TCustomImageList = TImageList;

}  // namespace oak
