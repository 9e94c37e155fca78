// TBitmap and the system's bitmaps.
#include "oak/framework/Bitmap.h"

#if defined(_WIN32)
#include "oak/framework/win32/DibWin32.h"
#endif

namespace oak {

#if defined(_WIN32)

TBitmap TBitmap::FromHandle(HBITMAP handle) {
  TBitmap result;
  int depth = 0;
  if (!ReadBitmapPixels(handle, result, &depth)) return result;
  if (depth == 32)
    SettleAlpha(result);
  else
    result.SetAlphaFormat(afIgnored);
  return result;
}

TBitmap TBitmap::AdoptHandle(HBITMAP handle) {
  const TOwnedBitmap owned = TOwnedBitmap::Adopt(handle);
  return FromHandle(handle);
}

HBITMAP TBitmap::CreateHandle() const {
  if (IsEmpty()) return nullptr;
  TDibSection section(fWidth, fHeight);
  section.Load(*this);
  return section.Detach();
}

#else

TBitmap TBitmap::FromHandle(HBITMAP) { return {}; }

TBitmap TBitmap::AdoptHandle(HBITMAP) { return {}; }

HBITMAP TBitmap::CreateHandle() const { return nullptr; }

#endif

}  // namespace oak
