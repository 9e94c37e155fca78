#include "oak/framework/win32/FontsWin32.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <tuple>

namespace oak {
namespace {

using TFontKey = std::tuple<TString, int, std::uint64_t, bool>;

/// Fonts in use and a few that were. Never destroyed: drawing may go on while a program ends.
class TFontCache {
 public:
  TSharedFont Get(const TFont& font, bool antialiased) {
    TFontKey key(font.GetName(), font.GetHeight(), font.GetStyle().ToBits(), antialiased);
    const std::lock_guard lock(fLock);
    TSharedFont& entry = fFonts[key];
    if (entry) return entry;
    entry = std::make_shared<const TOwnedFont>(Create(font, antialiased));
    const TSharedFont result = entry;
    if (fFonts.size() > MaxUnused) DropUnused();
    return result;
  }

 private:
  static constexpr std::size_t MaxUnused = 64;

  static TOwnedFont Create(const TFont& font, bool antialiased) {
    LOGFONTW log{};
    const TFontStyles style = font.GetStyle();
    log.lfHeight = font.GetHeight();
    log.lfWeight = style.Contains(fsBold) ? FW_BOLD : FW_NORMAL;
    log.lfItalic = style.Contains(fsItalic);
    log.lfUnderline = style.Contains(fsUnderline);
    log.lfStrikeOut = style.Contains(fsStrikeOut);
    log.lfCharSet = DEFAULT_CHARSET;
    log.lfQuality = antialiased ? ANTIALIASED_QUALITY : DEFAULT_QUALITY;
    const std::size_t length = std::min<std::size_t>(font.GetName().size(), LF_FACESIZE - 1);
    std::copy_n(W(font.GetName()), length, log.lfFaceName);
    return TOwnedFont::Adopt(::CreateFontIndirectW(&log));
  }

  void DropUnused() {
    std::erase_if(fFonts, [](const auto& entry) { return entry.second.use_count() == 1; });
  }

  std::mutex fLock;
  std::map<TFontKey, TSharedFont> fFonts;
};

TFontCache& FontCache() {
  static auto* cache = new TFontCache;
  return *cache;
}

}  // namespace

TSharedFont FontHandleOf(const TFont& font, bool antialiased) {
  return FontCache().Get(font, antialiased);
}

void FontFromLogFont(const LOGFONTW& log, int pixelsPerInch, TFont& font) {
  TFont result;
  result.SetPixelsPerInch(pixelsPerInch);
  if (log.lfFaceName[0]) result.SetName(FromW(log.lfFaceName));
  result.SetHeight(log.lfHeight);
  TFontStyles style;
  if (log.lfWeight >= FW_BOLD) style.Include(fsBold);
  if (log.lfItalic) style.Include(fsItalic);
  if (log.lfUnderline) style.Include(fsUnderline);
  if (log.lfStrikeOut) style.Include(fsStrikeOut);
  result.SetStyle(style);
  font = result;
}

UINT DrawTextFlags(TTextFormat format) noexcept {
  constexpr struct {
    TTextFormatFlag Flag;
    UINT Value;
  } Flags[] = {{tfCenter, DT_CENTER},
               {tfRight, DT_RIGHT},
               {tfVerticalCenter, DT_VCENTER},
               {tfBottom, DT_BOTTOM},
               {tfSingleLine, DT_SINGLELINE},
               {tfWordBreak, DT_WORDBREAK},
               {tfEndEllipsis, DT_END_ELLIPSIS},
               {tfNoPrefix, DT_NOPREFIX},
               {tfNoClip, DT_NOCLIP},
               {tfRtlReading, DT_RTLREADING}};
  UINT result = 0;
  for (const auto& flag : Flags)
    if (format.Contains(flag.Flag)) result |= flag.Value;
  return result;
}

HDC MeasuringDC() {
  thread_local const TMemoryDC dc = TMemoryDC::Adopt(::CreateCompatibleDC(nullptr));
  return dc.Get();
}

TRect MeasureTextOn(HDC dc, const TRect& rect, TStringView text, TTextFormat format) {
  // Alignment and shortening would move or cut the answer.
  format = format - TTextFormat{tfCenter, tfRight, tfVerticalCenter, tfBottom, tfEndEllipsis};
  RECT result = TRect(rect.TopLeft(), TSize{std::max(0, rect.Width()), 0});
  if (text.empty()) return {rect.TopLeft(), TSize{0, TextExtentOn(dc, text).Height}};
  ::DrawTextW(dc, reinterpret_cast<LPCWSTR>(text.data()), static_cast<int>(text.size()), &result,
              DrawTextFlags(format) | DT_CALCRECT);
  return TRect(result);
}

TSize TextExtentOn(HDC dc, TStringView text) {
  SIZE size{};
  const TStringView measured = text.empty() ? TStringView(u" ") : text;
  ::GetTextExtentPoint32W(dc, reinterpret_cast<LPCWSTR>(measured.data()),
                          static_cast<int>(measured.size()), &size);
  return {text.empty() ? 0 : static_cast<int>(size.cx), static_cast<int>(size.cy)};
}

}  // namespace oak
