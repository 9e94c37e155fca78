#include "oak/framework/win32/CanvasWin32.h"

#include "oak/framework/Bitmap.h"
#include "oak/framework/BitmapPixels.h"
#include "oak/framework/ImageList.h"
#include "oak/framework/win32/DibWin32.h"
#include "oak/framework/win32/ImageListWin32.h"

namespace oak {
namespace {

TRIVERTEX Vertex(int x, int y, TColor rgb) {
  auto part = [](int value) { return static_cast<COLOR16>(value << 8); };
  return {x, y, part(RedOf(rgb)), part(GreenOf(rgb)), part(BlueOf(rgb)), 0};
}

/// A line of every other pixel; the system's dotted pens have longer dots.
HPEN CreatePenFor(const TPen& pen) {
  const LOGBRUSH brush{BS_SOLID, ColorToRGB(pen.GetColor()), 0};
  if (pen.GetStyle() == psDot && pen.GetWidth() == 1)
    return ::ExtCreatePen(PS_COSMETIC | PS_ALTERNATE, 1, &brush, 0, nullptr);
  const DWORD style = pen.GetStyle() == psDot ? PS_DOT : PS_SOLID;
  return ::ExtCreatePen(PS_GEOMETRIC | style | PS_ENDCAP_SQUARE | PS_JOIN_MITER,
                        static_cast<DWORD>(pen.GetWidth()), &brush, 0, nullptr);
}

void PutPixels(HDC dc, TPoint at, const TBitmap& bitmap) {
  const BITMAPINFO info = DibHeader(bitmap.GetWidth(), bitmap.GetHeight());
  ::SetDIBitsToDevice(
      dc, at.X, at.Y, static_cast<DWORD>(bitmap.GetWidth()), static_cast<DWORD>(bitmap.GetHeight()),
      0, 0, 0, static_cast<UINT>(bitmap.GetHeight()), bitmap.ScanLine(0), &info, DIB_RGB_COLORS);
}

void BlendPixels(HDC dc, TPoint at, const TBitmap& bitmap, int opacity) {
  TDibSection section(bitmap.GetWidth(), bitmap.GetHeight());
  section.Load(bitmap);
  const bool isAlpha = bitmap.GetAlphaFormat() == afPremultiplied;
  const BLENDFUNCTION blend{AC_SRC_OVER, 0, static_cast<BYTE>(opacity),
                            static_cast<BYTE>(isAlpha ? AC_SRC_ALPHA : 0)};
  ::GdiAlphaBlend(dc, at.X, at.Y, bitmap.GetWidth(), bitmap.GetHeight(), section.GetDC(), 0, 0,
                  bitmap.GetWidth(), bitmap.GetHeight(), blend);
}

}  // namespace

TCanvasWin32::TCanvasWin32(HDC dc, int pixelsPerInch)
    : fDC(dc), fPixelsPerInch(pixelsPerInch), fSaved(::SaveDC(dc)) {}

TCanvasWin32::~TCanvasWin32() { ::RestoreDC(fDC, fSaved); }

HDC TCanvasWin32::GetHandle() {
  // Whoever asks draws with what is set here.
  SelectFont();
  SelectTextColors();
  return fDC;
}

// --- objects -----------------------------------------------------------------------
HBRUSH TCanvasWin32::SolidBrush(TColor color) const {
  ::SetDCBrushColor(fDC, ColorToRGB(color));
  return static_cast<HBRUSH>(::GetStockObject(DC_BRUSH));
}

void TCanvasWin32::SelectBrush() {
  const bool isSolid = GetBrush().GetStyle() == bsSolid;
  ::SelectObject(fDC, isSolid ? SolidBrush(GetBrush().GetColor()) : ::GetStockObject(NULL_BRUSH));
}

void TCanvasWin32::SelectPen() {
  if (GetPen().GetStyle() == psClear) {
    ::SelectObject(fDC, ::GetStockObject(NULL_PEN));
  } else if (GetPen().GetStyle() == psSolid && GetPen().GetWidth() == 1) {
    ::SetDCPenColor(fDC, ColorToRGB(GetPen().GetColor()));
    ::SelectObject(fDC, ::GetStockObject(DC_PEN));
  } else {
    // Out of the context first: a selected pen can't be deleted.
    ::SelectObject(fDC, ::GetStockObject(NULL_PEN));
    fPenHandle = TOwnedPen::Adopt(CreatePenFor(GetPen()));
    if (fPenHandle) ::SelectObject(fDC, fPenHandle.Get());
  }
}

void TCanvasWin32::SelectFont() const {
  if (fSelectedFont && fSelectedFont->SameFace(GetFont())) return;
  TSharedFont handle = FontHandleOf(GetFont());
  ::SelectObject(fDC, handle->Get());
  fFontHandle = std::move(handle);
  fSelectedFont.emplace(GetFont());
}

void TCanvasWin32::SelectTextColors() {
  ::SetTextColor(fDC, ColorToRGB(GetFont().GetColor()));
  if (GetBrush().GetStyle() == bsSolid) {
    ::SetBkMode(fDC, OPAQUE);
    ::SetBkColor(fDC, ColorToRGB(GetBrush().GetColor()));
  } else {
    ::SetBkMode(fDC, TRANSPARENT);
  }
}

// --- figures -----------------------------------------------------------------------
void TCanvasWin32::FillRect(const TRect& rect) {
  if (GetBrush().GetStyle() == bsClear || rect.IsEmpty()) return;
  const RECT area = rect;
  ::FillRect(fDC, &area, SolidBrush(GetBrush().GetColor()));
}

void TCanvasWin32::FrameRect(const TRect& rect) {
  if (GetBrush().GetStyle() == bsClear || rect.IsEmpty()) return;
  const RECT area = rect;
  ::FrameRect(fDC, &area, SolidBrush(GetBrush().GetColor()));
}

void TCanvasWin32::Rectangle(const TRect& rect) {
  if (rect.IsEmpty()) return;
  // Without a pen the system leaves out the right and the lower edge.
  if (GetPen().GetStyle() == psClear) return FillRect(rect);
  SelectPen();
  SelectBrush();
  ::Rectangle(fDC, rect.Left, rect.Top, rect.Right, rect.Bottom);
}

void TCanvasWin32::Polygon(std::span<const TPoint> points) {
  if (points.size() < 2) return;
  std::vector<POINT> corners(points.begin(), points.end());
  SelectPen();
  SelectBrush();
  ::SetPolyFillMode(fDC, ALTERNATE);
  ::Polygon(fDC, corners.data(), static_cast<int>(corners.size()));
}

void TCanvasWin32::DrawLine(TPoint from, TPoint to) {
  SelectPen();
  ::MoveToEx(fDC, from.X, from.Y, nullptr);
  ::LineTo(fDC, to.X, to.Y);
}

void TCanvasWin32::DrawFocusRect(const TRect& rect) {
  const RECT area = rect;
  ::SetTextColor(fDC, RGB(0, 0, 0));
  ::SetBkColor(fDC, RGB(255, 255, 255));
  ::DrawFocusRect(fDC, &area);
}

void TCanvasWin32::GradientFill(const TRect& rect, TColor from, TColor to, bool vertical) {
  if (rect.IsEmpty()) return;
  TRIVERTEX corners[] = {Vertex(rect.Left, rect.Top, ColorToRGB(from)),
                         Vertex(rect.Right, rect.Bottom, ColorToRGB(to))};
  GRADIENT_RECT area{0, 1};
  ::GdiGradientFill(fDC, corners, 2, &area, 1,
                    vertical ? GRADIENT_FILL_RECT_V : GRADIENT_FILL_RECT_H);
}

// --- pictures ----------------------------------------------------------------------
void TCanvasWin32::Draw(int x, int y, const TBitmap& bitmap, int opacity) {
  if (bitmap.IsEmpty() || opacity <= 0) return;
  if (bitmap.GetAlphaFormat() == afIgnored && opacity >= 255)
    PutPixels(fDC, {x, y}, bitmap);
  else
    BlendPixels(fDC, {x, y}, bitmap, opacity > 255 ? 255 : opacity);
}

void TCanvasWin32::StretchDraw(const TRect& dest, const TBitmap& bitmap, int opacity) {
  const TRect part = dest.Intersected(GetClipRect());
  if (part.IsEmpty() || bitmap.IsEmpty()) return;
  const TRect window = part.Moved(-dest.Left, -dest.Top);
  Draw(part.Left, part.Top, ResampleBitmap(bitmap, dest.Size(), window, TStretchFilter::Smooth),
       opacity);
}

void TCanvasWin32::CopyRect(const TRect& dest, const TBitmap& source, const TRect& sourceRect) {
  if (sourceRect.IsEmpty() || dest.IsEmpty()) return;
  // Only what lies in both: what is outside of the source stays as it is.
  auto scale = [](int value, int size, int whole) {
    return static_cast<int>(static_cast<long long>(value) * size / whole);
  };
  const TRect from = sourceRect.Intersected(source.GetRect());
  if (from.IsEmpty()) return;
  const TRect inner = from.Moved(-sourceRect.Left, -sourceRect.Top);
  TRect to(scale(inner.Left, dest.Width(), sourceRect.Width()),
           scale(inner.Top, dest.Height(), sourceRect.Height()),
           scale(inner.Right, dest.Width(), sourceRect.Width()),
           scale(inner.Bottom, dest.Height(), sourceRect.Height()));
  to = to.Moved(dest.Left, dest.Top);
  const TRect part = to.Intersected(GetClipRect());
  if (part.IsEmpty()) return;
  TBitmap copy(part.Width(), part.Height());
  copy.CopyRect(dest.Moved(-part.Left, -part.Top), source, sourceRect);
  PutPixels(fDC, part.TopLeft(), copy);
}

void TCanvasWin32::DrawImage(const TImageList& images, int index, int x, int y, int overlay,
                             TImageState state) {
  const HIMAGELIST handle = images.GetSource() ? images.GetSource()->GetHandle() : nullptr;
  if (!handle || state == TImageState::Disabled)
    return TCanvas::DrawImage(images, index, x, y, overlay, state);
  IMAGELISTDRAWPARAMS draw{};
  draw.cbSize = sizeof draw;
  draw.himl = handle;
  draw.i = index;
  draw.hdcDst = fDC;
  draw.x = x;
  draw.y = y;
  const bool isFilled = images.GetDrawingStyle() == dsNormal && images.GetBkColor() != clNone;
  draw.rgbBk = isFilled ? ColorToRGB(images.GetBkColor()) : CLR_NONE;
  draw.rgbFg = state == TImageState::Selected ? ColorToRGB(clHighlight) : CLR_NONE;
  draw.fStyle = static_cast<UINT>(isFilled ? ILD_NORMAL : ILD_TRANSPARENT);
  if (overlay > 0) draw.fStyle |= static_cast<UINT>(INDEXTOOVERLAYMASK(overlay));
  if (state != TImageState::Normal) draw.fStyle |= ILD_BLEND50;
  ImageListCalls().DrawIndirect(&draw);
}

// --- text --------------------------------------------------------------------------
TSize TCanvasWin32::TextExtent(TStringView text) const {
  SelectFont();
  return TextExtentOn(fDC, text);
}

void TCanvasWin32::TextOut(int x, int y, TStringView text) {
  SelectFont();
  SelectTextColors();
  ::TextOutW(fDC, x, y, reinterpret_cast<LPCWSTR>(text.data()), static_cast<int>(text.size()));
}

void TCanvasWin32::DrawText(const TRect& rect, TStringView text, TTextFormat format) {
  if (text.empty()) return;
  SelectFont();
  SelectTextColors();
  RECT area = rect;
  ::DrawTextW(fDC, reinterpret_cast<LPCWSTR>(text.data()), static_cast<int>(text.size()), &area,
              DrawTextFlags(format));
}

TRect TCanvasWin32::MeasureText(const TRect& rect, TStringView text, TTextFormat format) const {
  SelectFont();
  return MeasureTextOn(fDC, rect, text, format);
}

// --- clipping ----------------------------------------------------------------------
TRect TCanvasWin32::GetClipRect() const {
  RECT rect{};
  ::GetClipBox(fDC, &rect);
  return TRect(rect);
}

void TCanvasWin32::PushClip(const TRect& rect) {
  TOwnedRegion region = TOwnedRegion::Adopt(::CreateRectRgn(0, 0, 0, 0));
  if (region && ::GetClipRgn(fDC, region.Get()) != 1) region.Reset();
  fClips.push_back(std::move(region));
  ::IntersectClipRect(fDC, rect.Left, rect.Top, rect.Right, rect.Bottom);
}

void TCanvasWin32::PopClip() {
  if (fClips.empty()) return;
  ::SelectClipRgn(fDC, fClips.back().Get());
  fClips.pop_back();
}

// --- double buffer -----------------------------------------------------------------
TDoubleBufferWin32::TDoubleBufferWin32(HDC target, const TRect& rect)
    : fTarget(target), fRect(rect) {
  if (rect.IsEmpty()) return;
  fDC = TMemoryDC::Adopt(::CreateCompatibleDC(target));
  fBitmap = TOwnedBitmap::Adopt(::CreateCompatibleBitmap(target, rect.Width(), rect.Height()));
  if (!fBitmap) fDC.Reset();
  if (!fDC) return;
  fFormer = ::SelectObject(fDC.Get(), fBitmap.Get());
  ::SetWindowOrgEx(fDC.Get(), rect.Left, rect.Top, nullptr);
}

TDoubleBufferWin32::~TDoubleBufferWin32() {
  if (!fDC) return;
  ::BitBlt(fTarget, fRect.Left, fRect.Top, fRect.Width(), fRect.Height(), fDC.Get(), fRect.Left,
           fRect.Top, SRCCOPY);
  ::SelectObject(fDC.Get(), fFormer);
}

}  // namespace oak
