#include "oak/framework/win32/ImageListWin32.h"

#include <commoncontrols.h>

#include "oak/base/Ref.h"
#include "oak/framework/BitmapPixels.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/win32/DibWin32.h"
#include "oak/framework/win32/System.h"

namespace oak {
namespace {

template <class Function>
void BindCall(Function& call, HMODULE library, const char* name, Function linked) {
  const FARPROC address = library ? ::GetProcAddress(library, name) : nullptr;
  call = address ? reinterpret_cast<Function>(reinterpret_cast<void*>(address)) : linked;
}

TImageListCalls BindImageListCalls() {
  const win32::TCommonControlsScope version6;
  // Never given back: lists live as long as the process may.
  const HMODULE library = ::LoadLibraryW(L"comctl32.dll");
  TImageListCalls calls{};
#define OAK_IMAGE_LIST(name) BindCall(calls.name, library, "ImageList_" #name, &::ImageList_##name)
  OAK_IMAGE_LIST(Create);
  OAK_IMAGE_LIST(Destroy);
  OAK_IMAGE_LIST(Add);
  OAK_IMAGE_LIST(Replace);
  OAK_IMAGE_LIST(Remove);
  OAK_IMAGE_LIST(GetImageCount);
  OAK_IMAGE_LIST(GetIconSize);
  OAK_IMAGE_LIST(SetIconSize);
  OAK_IMAGE_LIST(SetOverlayImage);
  OAK_IMAGE_LIST(SetBkColor);
  OAK_IMAGE_LIST(GetIcon);
  OAK_IMAGE_LIST(DrawIndirect);
#undef OAK_IMAGE_LIST
  BindCall(calls.QueryInterface, library, "HIMAGELIST_QueryInterface",
           decltype(calls.QueryInterface){nullptr});
  return calls;
}

// The import libraries do not define it.
constexpr GUID IidImageList{
    0x46EB5926, 0x582E, 0x4017, {0x9F, 0xDF, 0xE8, 0x99, 0x8D, 0xAA, 0x09, 0x50}};

/// The list's COM side, which older common controls lack.
Ref<IImageList> InterfaceOf(HIMAGELIST handle) {
  const auto query = ImageListCalls().QueryInterface;
  void* list = nullptr;
  if (!query || FAILED(query(handle, IidImageList, &list))) return {};
  return Ref<IImageList>::Adopt(static_cast<IImageList*>(list));
}

class TSystemImages : public IImageSource {
 public:
  TSystemImages(HIMAGELIST handle, bool share) : fHandle(handle), fShare(share) {}
  ~TSystemImages() override {
    if (!fShare) ImageListCalls().Destroy(fHandle);
  }
  TSystemImages(const TSystemImages&) = delete;
  TSystemImages& operator=(const TSystemImages&) = delete;

  int GetCount() const override { return ImageListCalls().GetImageCount(fHandle); }
  TSize GetImageSize() const override {
    TSize size;
    ImageListCalls().GetIconSize(fHandle, &size.Width, &size.Height);
    return size;
  }
  bool GetImage(int index, TBitmap& image) const override {
    if (index < 0 || index >= GetCount()) return false;
    const TOwnedIcon icon =
        TOwnedIcon::Adopt(ImageListCalls().GetIcon(fHandle, index, ILD_TRANSPARENT));
    TBitmap result = BitmapOfIcon(icon.Get());
    if (result.IsEmpty()) return false;
    image = std::move(result);
    return true;
  }
  int GetOverlayImage(int overlay) const override {
    const Ref<IImageList> list = InterfaceOf(fHandle);
    int index = -1;
    return list && SUCCEEDED(list->GetOverlayImage(overlay, &index)) ? index : -1;
  }
  HIMAGELIST GetHandle() const override { return fHandle; }

 private:
  HIMAGELIST fHandle;
  bool fShare;
};

/// A bitmap of one bit a pixel, set where an image is wholly transparent.
TOwnedBitmap MaskOf(const TBitmap& image) {
  const auto stride = static_cast<std::size_t>((image.GetWidth() + 15) / 16 * 2);
  std::vector<std::uint8_t> bits(stride * static_cast<std::size_t>(image.GetHeight()));
  for (int y = 0; y < image.GetHeight(); ++y) {
    std::uint8_t* row = bits.data() + stride * static_cast<std::size_t>(y);
    for (int x = 0; x < image.GetWidth(); ++x)
      if (AlphaOf(image.ScanLine(y)[x]) == 0)
        row[x / 8] = static_cast<std::uint8_t>(row[x / 8] | 0x80 >> x % 8);
  }
  return TOwnedBitmap::Adopt(
      ::CreateBitmap(image.GetWidth(), image.GetHeight(), 1, 1, bits.data()));
}

/// The pixels as lists want them: colours not multiplied by alpha.
TOwnedBitmap ColorsOf(const TBitmap& image) {
  TDibSection section(image.GetWidth(), image.GetHeight());
  for (int y = 0; y < image.GetHeight(); ++y) {
    TPixel* row = section.ScanLine(y);
    for (int x = 0; x < image.GetWidth(); ++x) row[x] = Unpremultiply(image.ScanLine(y)[x]);
  }
  return TOwnedBitmap::Adopt(section.Detach());
}

class TNativeImages : public TNativeImageList {
 public:
  explicit TNativeImages(HIMAGELIST handle) : fHandle(handle) {}
  ~TNativeImages() override { ImageListCalls().Destroy(fHandle); }
  TNativeImages(const TNativeImages&) = delete;
  TNativeImages& operator=(const TNativeImages&) = delete;

  HIMAGELIST GetHandle() const override { return fHandle; }
  void Add(const TBitmap& image) override {
    const TOwnedBitmap colors = ColorsOf(image);
    const TOwnedBitmap mask = MaskOf(image);
    ImageListCalls().Add(fHandle, colors.Get(), mask.Get());
  }
  void Replace(int index, const TBitmap& image) override {
    const TOwnedBitmap colors = ColorsOf(image);
    const TOwnedBitmap mask = MaskOf(image);
    ImageListCalls().Replace(fHandle, index, colors.Get(), mask.Get());
  }
  void Delete(int index) override { ImageListCalls().Remove(fHandle, index); }
  void Clear() override { ImageListCalls().Remove(fHandle, -1); }
  int GetCount() const override { return ImageListCalls().GetImageCount(fHandle); }
  void SetSize(int width, int height) override {
    ImageListCalls().SetIconSize(fHandle, width, height);
  }
  void SetOverlay(int imageIndex, int overlay) override {
    ImageListCalls().SetOverlayImage(fHandle, imageIndex, overlay);
  }
  void SetBkColor(TColor color) override {
    ImageListCalls().SetBkColor(fHandle, color == clNone ? CLR_NONE : ColorToRGB(color));
  }

 private:
  HIMAGELIST fHandle;
};

}  // namespace

const TImageListCalls& ImageListCalls() {
  static const TImageListCalls calls = BindImageListCalls();
  return calls;
}

std::shared_ptr<const IImageSource> MakeImageSource(HIMAGELIST handle, bool share) {
  return handle ? std::make_shared<TSystemImages>(handle, share) : nullptr;
}

std::unique_ptr<TNativeImageList> MakeNativeImageList(int width, int height, int bits) {
  const UINT depth = bits == 0 ? ILC_COLORDDB : static_cast<UINT>(bits);
  const HIMAGELIST handle = ImageListCalls().Create(width, height, depth | ILC_MASK, 0, 16);
  return handle ? std::make_unique<TNativeImages>(handle) : nullptr;
}

void AddLateImages(const TImageList* images) {
  if (images && images->HandleAllocated()) images->GetHandle();
}

}  // namespace oak
