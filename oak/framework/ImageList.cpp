#include "oak/framework/ImageList.h"

#include <algorithm>
#include <utility>

#include "oak/base/Exceptions.h"
#include "oak/framework/GraphicsSystem.h"
#include "oak/framework/ImageSources.h"

namespace oak {
namespace {

constexpr int MaxImageSide = 1024;

int BitsOf(TColorDepth depth) {
  constexpr int Bits[] = {0, 4, 8, 16, 24, 32};
  return Bits[depth];
}

void CheckImageSize(int width, int height) {
  if (width >= 1 && height >= 1 && width <= MaxImageSide && height <= MaxImageSide) return;
  throw EInvalidArgument(u"Images of " + IntToStr(width) + u" by " + IntToStr(height) +
                         u" pixels cannot be listed.");
}

TBitmap CopyOf(const TBitmap& bitmap) {
  TBitmap result;
  result.Assign(&bitmap);
  return result;
}

bool IsOverlay(int overlay) { return overlay >= 1 && overlay <= 15; }

}  // namespace

TChangeLink::~TChangeLink() {
  if (fImages) fImages->UnRegisterChanges(this);
}

// --- life, size and settings -----------------------------------------------------
TImageList::TImageList(TComponent* owner)
    : TComponent(owner), fAlive(std::make_shared<bool>(true)) {
  fOverlays.fill(-1);
}

TImageList::TImageList(TComponent* owner, int width, int height) : TImageList(owner) {
  SetSize(width, height);
}

TImageList::~TImageList() {
  Destroying();
  *fAlive = false;
  NotifyOfEnd();
  for (TChangeLink* link : fLinks) link->fImages = nullptr;
}

void TImageList::SetSettings(const TImageList& source, int width, int height) {
  fWidth = width;
  fHeight = height;
  fColorDepth = source.fColorDepth;
  fMasked = source.fMasked;
  fDrawingStyle = source.fDrawingStyle;
  fBkColor = source.fBkColor;
  fOverlays = source.fOverlays;
}

void TImageList::Assign(const TPersistent* source) {
  auto* other = dynamic_cast<const TImageList*>(source);
  if (!other) return TComponent::Assign(source);
  AssignScaled(*other, other->GetWidth(), other->GetHeight());
}

void TImageList::AssignScaled(const TImageList& source, int width, int height) {
  CheckImageSize(width, height);
  if (&source == this && width == GetWidth() && height == GetHeight()) return;
  const bool isSameSize = width == source.GetWidth() && height == source.GetHeight();
  // All that can fail happens before anything is changed.
  std::vector<TBitmap> images;
  images.reserve(source.fImages.size());
  for (const TBitmap& image : source.fImages)
    images.push_back(isSameSize ? CopyOf(image) : image.Resized(width, height));
  std::shared_ptr<const IImageSource> shown = source.fSource;
  if (shown && !isSameSize)
    shown = std::make_shared<TScaledImageSource>(shown, TSize{width, height});
  RetireNative();
  SetSettings(source, width, height);
  fImages = std::move(images);
  if (fSource) fRetiredSources.push_back(std::move(fSource));
  fSource = std::move(shown);
  Change();
}

int TImageList::GetWidth() const { return fSource ? fSource->GetImageSize().Width : fWidth; }

int TImageList::GetHeight() const { return fSource ? fSource->GetImageSize().Height : fHeight; }

void TImageList::SetSize(int width, int height) {
  CheckImageSize(width, height);
  if (width == GetWidth() && height == GetHeight()) return;
  CheckOwnImages();
  fWidth = width;
  fHeight = height;
  fImages.clear();
  fOverlays.fill(-1);
  if (fNative) fNative->SetSize(width, height);
  Change();
}

void TImageList::SetColorDepth(TColorDepth value) {
  if (value == fColorDepth) return;
  fColorDepth = value;
  if (!fNative) return;
  RetireNative();
  Change();
}

void TImageList::SetMasked(bool value) { fMasked = value; }

void TImageList::SetBkColor(TColor value) {
  if (value == fBkColor) return;
  fBkColor = value;
  if (fNative) fNative->SetBkColor(value);
  Change();
}

void TImageList::SetDrawingStyle(TDrawingStyle value) {
  if (value == fDrawingStyle) return;
  fDrawingStyle = value;
  Change();
}

// --- images ------------------------------------------------------------------------
void TImageList::CheckOwnImages() const {
  if (fSource) throw EInvalidOperation(u"The images of a system list cannot be changed.");
}

void TImageList::CheckIndex(int index, int limit) const {
  if (index < 0 || index >= limit)
    throw EArgumentException(u"There is no image " + IntToStr(index) + u" in the list.");
}

int TImageList::GetCount() const {
  return fSource ? fSource->GetCount() : static_cast<int>(fImages.size());
}

void TImageList::AppendImage(TBitmap image) {
  if (fNative) fNative->Add(image);
  fImages.push_back(std::move(image));
}

int TImageList::Add(const TBitmap& image, const TBitmap* mask) {
  CheckOwnImages();
  if (image.IsEmpty()) return -1;
  const int first = GetCount();
  const int count = std::max(1, image.GetWidth() / fWidth);
  for (int i = 0; i < count; ++i)
    AppendImage(CutImage(image, fMasked ? mask : nullptr, i, {fWidth, fHeight}));
  Change();
  return first;
}

int TImageList::AddMasked(const TBitmap& image, TColor maskColor) {
  return Add(image.IsEmpty() || !fMasked ? CopyOf(image) : MaskByColor(image, maskColor));
}

void TImageList::Insert(int index, const TBitmap& image, const TBitmap* mask) {
  CheckOwnImages();
  CheckIndex(index, GetCount() + 1);
  fImages.insert(fImages.begin() + index,
                 CutImage(image, fMasked ? mask : nullptr, 0, {fWidth, fHeight}));
  for (int& overlay : fOverlays)
    if (overlay >= index) ++overlay;
  // The system's lists only append.
  if (fNative) {
    fNative->Clear();
    FillNative();
  }
  Change();
}

void TImageList::ReplaceImage(int index, TBitmap image) {
  if (fNative) fNative->Replace(index, image);
  fImages[static_cast<std::size_t>(index)] = std::move(image);
  Change();
}

void TImageList::Replace(int index, const TBitmap& image, const TBitmap* mask) {
  CheckOwnImages();
  CheckIndex(index, GetCount());
  ReplaceImage(index, CutImage(image, fMasked ? mask : nullptr, 0, {fWidth, fHeight}));
}

void TImageList::ReplaceMasked(int index, const TBitmap& image, TColor maskColor) {
  Replace(index, fMasked ? MaskByColor(image, maskColor) : CopyOf(image));
}

void TImageList::Delete(int index) {
  CheckOwnImages();
  CheckIndex(index, GetCount());
  fImages.erase(fImages.begin() + index);
  if (fNative) fNative->Delete(index);
  for (std::size_t i = 0; i < fOverlays.size(); ++i) {
    if (fOverlays[i] == index)
      Overlay(-1, static_cast<int>(i) + 1);
    else if (fOverlays[i] > index)
      --fOverlays[i];
  }
  FillNative();
  Change();
}

void TImageList::Clear() {
  CheckOwnImages();
  if (fImages.empty()) return;
  fImages.clear();
  fOverlays.fill(-1);
  if (fNative) fNative->Clear();
  Change();
}

void TImageList::Overlay(int imageIndex, int overlay) {
  CheckOwnImages();
  if (!IsOverlay(overlay)) throw EArgumentException(u"There are the overlays 1 to 15.");
  if (imageIndex != -1) CheckIndex(imageIndex, GetCount());
  fOverlays[static_cast<std::size_t>(overlay - 1)] = imageIndex;
  if (fNative) fNative->SetOverlay(imageIndex, overlay);
}

int TImageList::GetOverlayImage(int overlay) const {
  if (!IsOverlay(overlay)) return -1;
  return fSource ? fSource->GetOverlayImage(overlay)
                 : fOverlays[static_cast<std::size_t>(overlay - 1)];
}

// --- drawing -----------------------------------------------------------------------
bool TImageList::GetBitmap(int index, TBitmap& image) const {
  if (index < 0 || index >= GetCount()) return false;
  if (fSource) return fSource->GetImage(index, image);
  image.Assign(&fImages[static_cast<std::size_t>(index)]);
  return true;
}

bool TImageList::GetRendered(int index, int overlay, TImageState state, TBitmap& image) const {
  if (!GetBitmap(index, image)) return false;
  TBitmap over;
  if (overlay > 0 && GetBitmap(GetOverlayImage(overlay), over)) image.Draw(0, 0, over);
  ApplyImageState(image, state);
  if (fDrawingStyle != dsNormal || fBkColor == clNone) return true;
  TBitmap whole(image.GetWidth(), image.GetHeight());
  whole.Fill(fBkColor);
  whole.Draw(0, 0, image);
  image = std::move(whole);
  return true;
}

void TImageList::Draw(TCanvas& canvas, int x, int y, int index, int overlay,
                      TImageState state) const {
  canvas.DrawImage(*this, index, x, y, overlay, state);
}

// --- the users of the list ------------------------------------------------------------
void TImageList::RegisterChanges(TChangeLink* link) {
  if (!link || link->fImages == this) return;
  if (link->fImages) link->fImages->UnRegisterChanges(link);
  fLinks.push_back(link);
  link->fImages = this;
}

void TImageList::UnRegisterChanges(TChangeLink* link) {
  if (!link || link->fImages != this) return;
  fLinks.erase(std::remove(fLinks.begin(), fLinks.end(), link), fLinks.end());
  link->fImages = nullptr;
}

void TImageList::EndUpdate() {
  if (fUpdateCount == 0 || --fUpdateCount > 0 || !std::exchange(fChanged, false)) return;
  Change();
}

void TImageList::Change() {
  if (fUpdateCount > 0) {
    fChanged = true;
    return;
  }
  // The former handles live until here, whatever a handler does to this list.
  const auto natives = std::exchange(fRetired, {});
  const auto sources = std::exchange(fRetiredSources, {});
  TellLinks();
}

void TImageList::TellLinks() {
  const std::shared_ptr<bool> alive = fAlive;
  const std::vector<TChangeLink*> links = fLinks;
  for (TChangeLink* link : links) {
    const bool isTied = std::find(fLinks.begin(), fLinks.end(), link) != fLinks.end();
    if (!isTied || !link->OnChange) continue;
    // A copy: the handler may end its link.
    const TNotifyEvent handler = link->OnChange;
    handler(this);
    if (!*alive) return;
  }
  if (!OnChange) return;
  const TNotifyEvent handler = OnChange;
  handler(this);
}

// --- the system's list ------------------------------------------------------------------
void TImageList::RetireNative() noexcept {
  if (!fNative) return;
  try {
    fRetired.push_back(std::move(fNative));
  } catch (...) {
    fNative.reset();
  }
}

void TImageList::FillNative() const {
  if (!fNative) return;
  for (int i = fNative->GetCount(); i < GetCount(); ++i) {
    // An image that its source cannot give keeps its place.
    TBitmap image(GetWidth(), GetHeight(), afPremultiplied);
    GetBitmap(i, image);
    fNative->Add(image);
  }
  for (int overlay = 1; overlay <= 15; ++overlay)
    if (GetOverlayImage(overlay) >= 0) fNative->SetOverlay(GetOverlayImage(overlay), overlay);
}

HIMAGELIST TImageList::GetHandle() const {
  if (fSource && fSource->GetHandle()) return fSource->GetHandle();
  if (!fNative) {
    fNative = GraphicsSystem().CreateImageList(GetWidth(), GetHeight(), BitsOf(fColorDepth));
    if (!fNative) return nullptr;
    fNative->SetBkColor(fBkColor);
    FillNative();
  } else if (fSource && fNative->GetCount() < fSource->GetCount()) {
    FillNative();
  }
  return fNative->GetHandle();
}

bool TImageList::HandleAllocated() const noexcept {
  return fNative || (fSource && fSource->GetHandle());
}

void TImageList::SetHandle(HIMAGELIST handle) {
  if (handle && fSource && fSource->GetHandle() == handle) return;
  SetSource(handle ? GraphicsSystem().GetImageSource(handle, fShareImages) : nullptr);
}

void TImageList::SetSource(std::shared_ptr<const IImageSource> source) {
  if (source == fSource) return;
  if (fSource) fRetiredSources.push_back(std::move(fSource));
  RetireNative();
  fSource = std::move(source);
  fImages.clear();
  fOverlays.fill(-1);
  Change();
}

}  // namespace oak
