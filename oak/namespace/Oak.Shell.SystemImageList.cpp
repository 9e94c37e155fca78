#include "oak/namespace/Oak.Shell.SystemImageList.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <map>

#include "oak/base/Handles.h"
#include "oak/base/Version.h"
#include "oak/framework/GraphicsSystem.h"
#include "oak/framework/ImageSources.h"
#include "oak/namespace/ErrorMode.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/platform/shell_api_images.h"

namespace oak {
namespace {

constexpr int SizeCount = si_FreeScaled + 1;
constexpr int MaxPixels = 1024;
constexpr TStringView WrongConstructor =
    u"Use different constructor to create a freescaled imageList.";

// At 96 pixels per inch.
constexpr std::array<int, SizeCount> NominalHeights{32, 16, 48, 16, 256, 16};

int HeightAt(TOakImageListSize pSize, int pPixelsPerInch) {
  const int nominal = NominalHeights[pSize];
  // The largest icons have one size on all screens.
  return pSize == si_Jumbo ? nominal
                           : std::clamp(MulDiv(nominal, pPixelsPerInch, 96), 1, MaxPixels);
}

/// The system's list, nil where it has none.
Ref<IImageList> SystemListOf(TOakImageListSize pSize) {
  // The system fills its lists for a process that asks for it.
  static std::atomic<bool> isAsked{false};
  if (Api().FileIconInit && !isAsked.exchange(true)) Api().FileIconInit(TRUE);
  Ref<IImageList> list;
  if (!Api().SHGetImageList || FAILED(Api().SHGetImageList(TOakImageListSizeHelper::ToInt(pSize),
                                                           IidOf<IImageList>(), list.PutVoid())))
    list.Reset();
  return list;
}

struct TIconTraits {
  using Type = HICON;
  static Type Invalid() noexcept { return nullptr; }
  static void Close(Type pIcon) noexcept { Api().DestroyIcon(pIcon); }
};

/// The images of one of the system's lists.
class TShellIconSource : public IImageSource {
 public:
  explicit TShellIconSource(Ref<IImageList> pList)
      : fList(std::move(pList)), fPixels(fList.As<IImageListPixels>()) {}

  int GetCount() const override {
    int count = 0;
    return SUCCEEDED(fList->GetImageCount(&count)) ? count : 0;
  }
  TSize GetImageSize() const override {
    TSize size;
    if (FAILED(fList->GetIconSize(&size.Width, &size.Height))) return {};
    return size;
  }
  bool GetImage(int pIndex, TBitmap& pImage) const override {
    if (pIndex < 0 || pIndex >= GetCount()) return false;
    TBitmap image = fPixels ? FromPixels(pIndex) : FromIcon(pIndex);
    if (image.IsEmpty()) return false;
    pImage = std::move(image);
    return true;
  }
  int GetOverlayImage(int pOverlay) const override {
    int index = -1;
    return SUCCEEDED(fList->GetOverlayImage(pOverlay, &index)) ? index : -1;
  }
  /// A list of the system and its interface are one.
  HIMAGELIST GetHandle() const override { return reinterpret_cast<HIMAGELIST>(fList.Get()); }

 private:
  TBitmap FromPixels(int pIndex) const {
    const TSize size = GetImageSize();
    TBitmap image(size.Width, size.Height, afPremultiplied);
    const std::size_t count =
        static_cast<std::size_t>(size.Width) * static_cast<std::size_t>(size.Height);
    if (image.IsEmpty() || FAILED(fPixels->GetPixels(pIndex, image.ScanLine(0), count))) return {};
    return image;
  }
  TBitmap FromIcon(int pIndex) const {
    HICON icon = nullptr;
    if (FAILED(fList->GetIcon(pIndex, ILD_TRANSPARENT, &icon)) || !icon) return {};
    const auto owned = TUniqueHandle<TIconTraits>::Adopt(icon);
    return GraphicsSystem().GetIconBitmap(owned.Get());
  }

  const Ref<IImageList> fList;
  const Ref<IImageListPixels> fPixels;
};

/// The list of a system that has no such function: the two that come with file infos.
std::shared_ptr<const IImageSource> ListOfFileInfo(TOakImageListSize pSize) {
  SHFILEINFOW info{};
  const bool isSmall = pSize == si_Small || pSize == si_SysSmall;
  const DWORD_PTR handle = Api().SHGetFileInfoW(
      W(u"test"), FILE_ATTRIBUTE_NORMAL, &info, sizeof(info),
      SHGFI_SYSICONINDEX | SHGFI_USEFILEATTRIBUTES | (isSmall ? SHGFI_SMALLICON : 0u));
  return GraphicsSystem().GetImageSource(reinterpret_cast<HIMAGELIST>(handle), true);
}

std::shared_ptr<const IImageSource> SourceOf(TOakImageListSize pSize) {
  Ref<IImageList> list = SystemListOf(pSize);
  // Old systems have no jumbo icons.
  if (!list && pSize == si_Jumbo) list = SystemListOf(si_ExtraLarge);
  if (list) return std::make_shared<TShellIconSource>(std::move(list));
  return Api().SHGetImageList ? nullptr : ListOfFileInfo(pSize);
}

}  // namespace

/// Icons in another size than the system's, kept once they are made.
class TOakSystemImageList::TScaledIcons : public TScaledImageSource {
 public:
  using TScaledImageSource::TScaledImageSource;

  bool GetImage(int pIndex, TBitmap& pImage) const override {
    auto found = fImages.find(pIndex);
    if (found == fImages.end()) {
      TBitmap image;
      if (!TScaledImageSource::GetImage(pIndex, image)) return false;
      found = fImages.emplace(pIndex, std::move(image)).first;
    }
    pImage.Assign(&found->second);
    return true;
  }

  /// The same icons but for one, which is to be scaled anew.
  std::shared_ptr<const TScaledIcons> Without(int pIndex) const {
    auto result = std::make_shared<TScaledIcons>(GetOriginal(), GetImageSize());
    for (const auto& [index, image] : fImages)
      if (index != pIndex) result->fImages[index].Assign(&image);
    return result;
  }

 private:
  mutable std::map<int, TBitmap> fImages;
};

// --- sizes -----------------------------------------------------------------------------
int TOakImageListSizeHelper::ToInt(TOakImageListSize pSize) noexcept {
  return pSize == si_FreeScaled ? int{si_ExtraLarge} : int{pSize};
}

int TOakImageListSizeHelper::GetSize(TOakImageListSize pSize) {
  const Ref<IImageList> list = SystemListOf(pSize);
  int width = 0, height = 0;
  if (list && SUCCEEDED(list->GetIconSize(&width, &height)) && width > 0) return width;
  return GetDefaultHeight(pSize == si_FreeScaled ? si_ExtraLarge : pSize);
}

int TOakImageListSizeHelper::GetDefaultHeight(TOakImageListSize pSize) {
  return HeightAt(pSize, TShellControlHelper::ScaledPixels(96));
}

TOakImageListSize TOakSystemImageList::PixelsToSize(int pPixels) {
  for (const TOakImageListSize size : {si_SysSmall, si_Large, si_ExtraLarge})
    if (TOakImageListSizeHelper::GetSize(size) >= pPixels) return size;
  return pPixels >= TOakImageListSizeHelper::GetSize(si_Jumbo) ? si_Jumbo : si_ExtraLarge;
}

// --- life --------------------------------------------------------------------------------
TOakSystemImageList::TOakSystemImageList(TComponent* AOwner, TOakImageListSize pSize, int pPixels,
                                         bool pFollows)
    : TCustomImageList(AOwner), fSize(pSize), fPixels(pPixels), fFollows(pFollows) {
  SetShareImages(true);
  ShowIcons();
}

TOakSystemImageList::TOakSystemImageList(TComponent* AOwner, TOakImageListSize pSize)
    : TOakSystemImageList(
          AOwner,
          pSize == si_FreeScaled ? throw EInvalidOperation(TString(WrongConstructor)) : pSize, 0,
          false) {}

TOakSystemImageList::TOakSystemImageList(TComponent* AOwner, TOakImageListSize pSize,
                                         int pPixelsPerInch)
    : TOakSystemImageList(AOwner, pSize, HeightAt(pSize, std::max(pPixelsPerInch, 1)),
                          pSize != si_Jumbo) {}

TOakSystemImageList::TOakSystemImageList(TComponent* AOwner, int pPixels)
    : TOakSystemImageList(AOwner, si_FreeScaled, std::clamp(pPixels, 1, MaxPixels), true) {}

TOakSystemImageList& TOakSystemImageList::GetInstance(TOakImageListSize pSize) {
  if (pSize == si_FreeScaled) return GetInstance(TShellControlHelper::ScaledPixels(16));
  // Never destroyed: controls may end later than anything that could do it.
  static std::array<TOakSystemImageList*, si_FreeScaled> instances{};
  TOakSystemImageList*& instance = instances[pSize];
  if (!instance) instance = new TOakSystemImageList(nullptr, pSize);
  // The system may have refused before.
  if (!instance->GetSource()) instance->ShowIcons();
  return *instance;
}

TOakSystemImageList& TOakSystemImageList::GetInstance(int pPixels) {
  return GetInstance(PixelsToSize(pPixels));
}

void TOakSystemImageList::SetSize(TOakImageListSize pValue) {
  if (pValue == si_FreeScaled) throw EInvalidOperation(TString(WrongConstructor));
  if (pValue == fSize && fPixels == 0) return;
  fSize = pValue;
  fPixels = 0;
  fFollows = false;
  ShowIcons();
}

TString TOakSystemImageList::GetVersion() const { return TString(LibraryVersion); }

void TOakSystemImageList::ShowIcons() {
  fScaled.reset();
  if (fPixels == 0) return SetSource(SourceOf(fSize));
  // What the system has in this size was drawn for it.
  const TOakImageListSize nearest = PixelsToSize(fPixels);
  if (TOakImageListSizeHelper::GetSize(nearest) == fPixels) return SetSource(SourceOf(nearest));
  const bool isLarger = fPixels > TOakImageListSizeHelper::GetSize(si_ExtraLarge);
  const auto source = SourceOf(isLarger ? si_Jumbo : si_ExtraLarge);
  if (source) fScaled = std::make_shared<TScaledIcons>(source, TSize{fPixels, fPixels});
  SetSource(fScaled);
}

// --- density -----------------------------------------------------------------------------
void TOakSystemImageList::Scale(int pIndex) {
  if (!fScaled) return;
  fScaled = fScaled->Without(pIndex);
  SetSource(fScaled);
}

void TOakSystemImageList::ScaleAll() {
  if (fScaled) ShowIcons();
}

void TOakSystemImageList::ChangeScale(int M, int D) {
  if (!fFollows || M < 1 || D < 1 || M == D) return;
  fPixels = std::clamp(MulDiv(fPixels, M, D), 1, MaxPixels);
  ShowIcons();
}

// --- copies --------------------------------------------------------------------------------
TBitmap TOakSystemImageList::GetAsBitmap(int pIndex, int pWidth, int pHeight,
                                         TColor pBackgroundColor, TColor pFrameColor) const {
  TBitmap icon;
  if (pWidth < 1 || pHeight < 1 || !GetBitmap(pIndex, icon)) return {};
  TBitmap result(pWidth, pHeight, pBackgroundColor == clNone ? afPremultiplied : afIgnored);
  result.Fill(pBackgroundColor);
  const TSize size = icon.FitSize({pWidth, pHeight});
  const TPoint at{(pWidth - size.Width) / 2, (pHeight - size.Height) / 2};
  result.StretchDraw({at.X, at.Y, at.X + size.Width, at.Y + size.Height}, icon);
  if (pFrameColor == clNone) return result;
  result.FillRect({0, 0, pWidth, 1}, pFrameColor);
  result.FillRect({0, pHeight - 1, pWidth, pHeight}, pFrameColor);
  result.FillRect({0, 0, 1, pHeight}, pFrameColor);
  result.FillRect({pWidth - 1, 0, pWidth, pHeight}, pFrameColor);
  return result;
}

int TOakSystemImageList::CopySystemImageTo(int pIndex, TCustomImageList& pImageList) const {
  TBitmap icon;
  if (!GetBitmap(pIndex, icon)) return -1;
  return pImageList.Add(icon.Resized(pImageList.GetWidth(), pImageList.GetHeight()));
}

void TOakSystemImageList::ConvertTo32BitImageList(TCustomImageList& pImageList) {
  // The images have 32 bits anyway: it is the system's list behind them that is made anew.
  pImageList.SetColorDepth(cd32Bit);
}

}  // namespace oak
