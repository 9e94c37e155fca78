// Owners of GDI handles.
#pragma once

#include "oak/base/Handles.h"
#include "oak/platform/windows/WindowsHeaders.h"

namespace oak {

template <class Handle>
struct TGdiObjectTraits {
  using Type = Handle;
  static Type Invalid() noexcept { return nullptr; }
  static void Close(Type handle) noexcept { ::DeleteObject(handle); }
};
using TOwnedBitmap = TUniqueHandle<TGdiObjectTraits<HBITMAP>>;
using TOwnedPen = TUniqueHandle<TGdiObjectTraits<HPEN>>;
using TOwnedFont = TUniqueHandle<TGdiObjectTraits<HFONT>>;
using TOwnedRegion = TUniqueHandle<TGdiObjectTraits<HRGN>>;

struct TMemoryDCTraits {
  using Type = HDC;
  static Type Invalid() noexcept { return nullptr; }
  static void Close(Type handle) noexcept { ::DeleteDC(handle); }
};
/// A device context from CreateCompatibleDC.
using TMemoryDC = TUniqueHandle<TMemoryDCTraits>;

struct TIconTraits {
  using Type = HICON;
  static Type Invalid() noexcept { return nullptr; }
  static void Close(Type handle) noexcept { ::DestroyIcon(handle); }
};
using TOwnedIcon = TUniqueHandle<TIconTraits>;

/// Selects an object for the span of a block.
class TGdiSelection {
 public:
  TGdiSelection(HDC dc, HGDIOBJ object) : fDC(dc), fFormer(::SelectObject(dc, object)) {}
  ~TGdiSelection() {
    if (fFormer) ::SelectObject(fDC, fFormer);
  }
  TGdiSelection(const TGdiSelection&) = delete;
  TGdiSelection& operator=(const TGdiSelection&) = delete;

 private:
  HDC fDC;
  HGDIOBJ fFormer;
};

}  // namespace oak
