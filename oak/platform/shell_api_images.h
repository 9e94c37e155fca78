// The shell's image lists. Apart from shell_api.h: few need them.
#pragma once

#include "oak/platform/shell_api_ids.h"

#if defined(_WIN32)
#include <commoncontrols.h>
#else

#include "oak/platform/shell_api_constants.h"
#include "oak/platform/shell_api_types.h"

struct IMAGEINFO {
  HBITMAP hbmImage;
  HBITMAP hbmMask;
  int Unused1;
  int Unused2;
  RECT rcImage;
};

struct IMAGELISTDRAWPARAMS {
  DWORD cbSize;
  HIMAGELIST himl;
  int i;
  HDC hdcDst;
  int x;
  int y;
  int cx;
  int cy;
  int xBitmap;
  int yBitmap;
  COLORREF rgbBk;
  COLORREF rgbFg;
  UINT fStyle;
  DWORD dwRop;
  DWORD fState;
  DWORD Frame;
  COLORREF crEffect;
};

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

struct IImageList : IUnknown {
  virtual HRESULT Add(HBITMAP hbmImage, HBITMAP hbmMask, int* pi) = 0;
  virtual HRESULT ReplaceIcon(int i, HICON hicon, int* pi) = 0;
  virtual HRESULT SetOverlayImage(int iImage, int iOverlay) = 0;
  virtual HRESULT Replace(int i, HBITMAP hbmImage, HBITMAP hbmMask) = 0;
  virtual HRESULT AddMasked(HBITMAP hbmImage, COLORREF crMask, int* pi) = 0;
  virtual HRESULT Draw(IMAGELISTDRAWPARAMS* pimldp) = 0;
  virtual HRESULT Remove(int i) = 0;
  virtual HRESULT GetIcon(int i, UINT flags, HICON* picon) = 0;
  virtual HRESULT GetImageInfo(int i, IMAGEINFO* pImageInfo) = 0;
  virtual HRESULT Copy(int iDst, IUnknown* punkSrc, int iSrc, UINT uFlags) = 0;
  virtual HRESULT Merge(int i1, IUnknown* punk2, int i2, int dx, int dy, REFIID riid,
                        void** ppv) = 0;
  virtual HRESULT Clone(REFIID riid, void** ppv) = 0;
  virtual HRESULT GetImageRect(int i, RECT* prc) = 0;
  virtual HRESULT GetIconSize(int* cx, int* cy) = 0;
  virtual HRESULT SetIconSize(int cx, int cy) = 0;
  virtual HRESULT GetImageCount(int* pi) = 0;
  virtual HRESULT SetImageCount(UINT uNewCount) = 0;
  virtual HRESULT SetBkColor(COLORREF clrBk, COLORREF* pclr) = 0;
  virtual HRESULT GetBkColor(COLORREF* pclr) = 0;
  virtual HRESULT BeginDrag(int iTrack, int dxHotspot, int dyHotspot) = 0;
  virtual HRESULT EndDrag() = 0;
  virtual HRESULT DragEnter(HWND hwndLock, int x, int y) = 0;
  virtual HRESULT DragMove(int x, int y) = 0;
  virtual HRESULT DragLeave(HWND hwndLock) = 0;
  virtual HRESULT SetDragCursorImage(IUnknown* punk, int iDrag, int dxHotspot, int dyHotspot) = 0;
  virtual HRESULT DragShowNolock(BOOL fShow) = 0;
  virtual HRESULT GetDragImage(POINT* ppt, POINT* pptHotspot, REFIID riid, void** ppv) = 0;
  virtual HRESULT GetItemFlags(int i, DWORD* dwFlags) = 0;
  virtual HRESULT GetOverlayImage(int iOverlay, int* piIndex) = 0;
};

#pragma GCC diagnostic pop

inline constexpr UINT ILD_TRANSPARENT = 1;
inline constexpr DWORD ILIF_ALPHA = 1;
inline constexpr COLORREF CLR_NONE = 0xFFFFFFFF;

#endif

namespace oak {

template <>
struct TInterfaceId<IImageList> {
  static const GUID& Get() {
    // The import libraries of Windows do not define it.
    static constexpr GUID iid{
        0x46EB5926, 0x582E, 0x4017, {0x9F, 0xDF, 0xE8, 0x99, 0x8D, 0xAA, 0x09, 0x50}};
    return iid;
  }
};
template <>
struct TInterfaceAncestors<IImageList> {
  using Types = TInterfaceList<IUnknown>;
};

/// What an image list tells of its images where the system has no bitmaps and icons: a query of
/// IImageList answers it on the portable shell. Any thread.
struct IImageListPixels : IUnknown {
  static constexpr GUID Iid{
      0x3D0B9A6E, 0x54C1, 0x4E8F, {0x9B, 0x27, 0x61, 0xD4, 0x0A, 0xF3, 0x85, 0x1C}};
  /// Fills `pixels` with an image in the list's size, row by row from the top: 0xAARRGGBB, colours
  /// multiplied by alpha. `count` is the room in pixels. E_INVALIDARG for another index or too
  /// little room.
  virtual HRESULT GetPixels(int index, std::uint32_t* pixels, std::size_t count) = 0;
};

}  // namespace oak
