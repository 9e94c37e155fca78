// The system's image lists: the drawn icons of the shell in four sizes.
#include <map>
#include <memory>
#include <mutex>

#include "oak/base/InterfacedObject.h"
#include "oak/platform/portable/IconDrawings.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/ShellFunctions.h"
#include "oak/platform/portable/ShellIcons.h"
#include "oak/platform/portable/SystemImageList.h"
#include "oak/platform/shell_api_images.h"

namespace oak {
namespace {

using TIconPixels = std::shared_ptr<const std::vector<std::uint32_t>>;

/// A list of the shell. Its images belong to all programs: what would change them is refused. An
/// icon is drawn when it is first asked for. Any thread.
class TSystemIcons final : public TInterfacedObject<IImageList, IImageListPixels> {
 public:
  explicit TSystemIcons(int side) : fSide(side) {}

  HRESULT GetPixels(int index, std::uint32_t* pixels, std::size_t count) override {
    return PortableCall("IImageListPixels::GetPixels", [&]() -> HRESULT {
      const auto side = static_cast<std::size_t>(fSide);
      if (!IsIcon(index) || !pixels || count < side * side) return E_INVALIDARG;
      const TIconPixels icon = Icon(index);
      std::copy(icon->begin(), icon->end(), pixels);
      return S_OK;
    });
  }

  // --- what the list tells -----------------------------------------------------------
  HRESULT GetIconSize(int* cx, int* cy) override {
    return PortableCall("IImageList::GetIconSize", [&]() -> HRESULT {
      if (!cx || !cy) return E_POINTER;
      *cx = *cy = fSide;
      return S_OK;
    });
  }
  HRESULT GetImageCount(int* pi) override {
    return PortableCall("IImageList::GetImageCount",
                        [&]() -> HRESULT { return Give(pi, static_cast<int>(iconCount)); });
  }
  HRESULT GetBkColor(COLORREF* pclr) override {
    return PortableCall("IImageList::GetBkColor",
                        [&]() -> HRESULT { return Give(pclr, CLR_NONE); });
  }
  HRESULT GetImageRect(int i, RECT* prc) override {
    return PortableCall("IImageList::GetImageRect", [&]() -> HRESULT {
      return IsIcon(i) ? Give(prc, RECT{0, 0, fSide, fSide}) : E_INVALIDARG;
    });
  }
  HRESULT GetImageInfo(int i, IMAGEINFO* pImageInfo) override {
    return PortableCall("IImageList::GetImageInfo", [&]() -> HRESULT {
      if (!IsIcon(i)) return E_INVALIDARG;
      return Give(pImageInfo, IMAGEINFO{nullptr, nullptr, 0, 0, {0, 0, fSide, fSide}});
    });
  }
  HRESULT GetItemFlags(int i, DWORD* dwFlags) override {
    return PortableCall("IImageList::GetItemFlags", [&]() -> HRESULT {
      return IsIcon(i) ? Give(dwFlags, ILIF_ALPHA) : E_INVALIDARG;
    });
  }
  HRESULT GetOverlayImage(int iOverlay, int* piIndex) override {
    return PortableCall("IImageList::GetOverlayImage", [&]() -> HRESULT {
      if (iOverlay != ShareOverlayNumber && iOverlay != LinkOverlayNumber) return E_INVALIDARG;
      return Give(piIndex, iOverlay == LinkOverlayNumber ? static_cast<int>(iconLinkOverlay)
                                                         : static_cast<int>(iconShareOverlay));
    });
  }

  // --- bitmaps and icons: the system has none -------------------------------------------
  HRESULT Draw(IMAGELISTDRAWPARAMS*) override { return E_NOTIMPL; }
  HRESULT GetIcon(int, UINT, HICON* picon) override {
    if (picon) *picon = nullptr;
    return E_NOTIMPL;
  }
  HRESULT Merge(int, IUnknown*, int, int, int, REFIID, void** ppv) override { return None(ppv); }
  HRESULT Clone(REFIID, void** ppv) override { return None(ppv); }
  HRESULT GetDragImage(POINT*, POINT*, REFIID, void** ppv) override { return None(ppv); }
  HRESULT BeginDrag(int, int, int) override { return E_NOTIMPL; }
  HRESULT EndDrag() override { return E_NOTIMPL; }
  HRESULT DragEnter(HWND, int, int) override { return E_NOTIMPL; }
  HRESULT DragMove(int, int) override { return E_NOTIMPL; }
  HRESULT DragLeave(HWND) override { return E_NOTIMPL; }
  HRESULT SetDragCursorImage(IUnknown*, int, int, int) override { return E_NOTIMPL; }
  HRESULT DragShowNolock(BOOL) override { return E_NOTIMPL; }

  // --- changes ---------------------------------------------------------------------------
  HRESULT Add(HBITMAP, HBITMAP, int*) override { return E_ACCESSDENIED; }
  HRESULT ReplaceIcon(int, HICON, int*) override { return E_ACCESSDENIED; }
  HRESULT SetOverlayImage(int, int) override { return E_ACCESSDENIED; }
  HRESULT Replace(int, HBITMAP, HBITMAP) override { return E_ACCESSDENIED; }
  HRESULT AddMasked(HBITMAP, COLORREF, int*) override { return E_ACCESSDENIED; }
  HRESULT Remove(int) override { return E_ACCESSDENIED; }
  HRESULT Copy(int, IUnknown*, int, UINT) override { return E_ACCESSDENIED; }
  HRESULT SetIconSize(int, int) override { return E_ACCESSDENIED; }
  HRESULT SetImageCount(UINT) override { return E_ACCESSDENIED; }
  HRESULT SetBkColor(COLORREF, COLORREF*) override { return E_ACCESSDENIED; }

 private:
  static bool IsIcon(int index) { return index >= 0 && index < iconCount; }
  template <class T>
  static HRESULT Give(T* target, const T& value) {
    if (!target) return E_POINTER;
    *target = value;
    return S_OK;
  }
  static HRESULT None(void** object) {
    if (object) *object = nullptr;
    return E_NOTIMPL;
  }

  /// Two threads that come first together draw it twice; one drawing stays.
  TIconPixels Icon(int index) {
    {
      const std::lock_guard lock(fLock);
      if (const auto found = fIcons.find(index); found != fIcons.end()) return found->second;
    }
    auto drawn = std::make_shared<const std::vector<std::uint32_t>>(DrawShellIcon(index, fSide));
    const std::lock_guard lock(fLock);
    return fIcons.emplace(index, std::move(drawn)).first->second;
  }

  const int fSide;
  std::mutex fLock;
  std::map<int, TIconPixels> fIcons;
};

/// Lives as long as the process, as that of the system does. Nil for another size.
IImageList* ListOfSize(int size) {
  switch (size) {
    case SHIL_LARGE: {
      static IImageList* const list = new TSystemIcons(32);
      return list;
    }
    case SHIL_SMALL:
    case SHIL_SYSSMALL: {
      static IImageList* const list = new TSystemIcons(16);
      return list;
    }
    case SHIL_EXTRALARGE: {
      static IImageList* const list = new TSystemIcons(48);
      return list;
    }
    case SHIL_JUMBO: {
      static IImageList* const list = new TSystemIcons(256);
      return list;
    }
    default:
      return nullptr;
  }
}

HRESULT STDAPICALLTYPE SHGetImageList(int size, REFIID iid, void** out) {
  return PortableCall("SHGetImageList", [&]() -> HRESULT {
    if (!out) return E_POINTER;
    *out = nullptr;
    IImageList* list = ListOfSize(size);
    return list ? list->QueryInterface(iid, out) : E_INVALIDARG;
  });
}

// The lists are whole from the start.
BOOL STDAPICALLTYPE FileIconInit(BOOL) { return TRUE; }

}  // namespace

HIMAGELIST SystemImageListHandle(int size) {
  return reinterpret_cast<HIMAGELIST>(ListOfSize(size));
}

void BindShellImages(TApi& api) {
  api.SHGetImageList.SetFunction(&SHGetImageList);
  api.FileIconInit.SetFunction(&FileIconInit);
}

}  // namespace oak
