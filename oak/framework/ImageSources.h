// What image lists are made of: cutting, masking, states, scaling.
#pragma once

#include <memory>

#include "oak/framework/ImageList.h"

namespace oak {

/// The image at column `index` of a strip, with alpha, in the size of a list. White pixels of the
/// mask become transparent.
TBitmap CutImage(const TBitmap& strip, const TBitmap* mask, int index, TSize size);

/// The picture with all pixels of a colour transparent: clDefault is the colour of the lower left
/// pixel, clNone none.
TBitmap MaskByColor(const TBitmap& image, TColor maskColor);

/// Changes an image to how it is shown in a state.
void ApplyImageState(TBitmap& image, TImageState state);

/// The images of another source in another size, made one by one when asked for.
class TScaledImageSource : public IImageSource {
 public:
  TScaledImageSource(std::shared_ptr<const IImageSource> source, TSize size)
      : fSource(std::move(source)), fSize(size) {}
  int GetCount() const override { return fSource->GetCount(); }
  TSize GetImageSize() const override { return fSize; }
  bool GetImage(int index, TBitmap& image) const override;
  int GetOverlayImage(int overlay) const override { return fSource->GetOverlayImage(overlay); }

 protected:
  const std::shared_ptr<const IImageSource>& GetOriginal() const noexcept { return fSource; }

 private:
  std::shared_ptr<const IImageSource> fSource;
  TSize fSize;
};

}  // namespace oak
