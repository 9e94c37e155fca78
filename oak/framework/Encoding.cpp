#include "oak/framework/Encoding.h"

#include <algorithm>
#include <limits>

#include "oak/platform/Api.h"

namespace oak {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kUtf16LEMark = "\xFF\xFE";
constexpr std::string_view kUtf16BEMark = "\xFE\xFF";
constexpr char16_t kReplacement = 0xFFFD;
constexpr UINT kAnsiCodePage = 0;
constexpr UINT kUtf8CodePage = 65001;
constexpr DWORD kNoBestFit = 0x400;  // a similar letter would not come back as it was

bool IsAscii(std::string_view bytes) {
  return std::all_of(bytes.begin(), bytes.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool IsAscii(TStringView text) {
  return std::all_of(text.begin(), text.end(), [](char16_t c) { return c < 0x80; });
}

// --- one byte a character ----------------------------------------------------

TString FromLatin1(std::string_view bytes) {
  TString text(bytes.size(), u'\0');
  std::transform(bytes.begin(), bytes.end(), text.begin(),
                 [](char c) { return static_cast<char16_t>(static_cast<unsigned char>(c)); });
  return text;
}

std::string ToLatin1(TStringView text) {
  std::string bytes(text.size(), '?');
  std::transform(text.begin(), text.end(), bytes.begin(),
                 [](char16_t c) { return c < 0x100 ? static_cast<char>(c) : '?'; });
  return bytes;
}

// --- the system's code page --------------------------------------------------

bool IsAnsiUtf8() { return Api().GetACP && Api().GetACP() == kUtf8CodePage; }

// The system counts in int.
bool FitsSystem(std::size_t size) {
  return size <= static_cast<std::size_t>(std::numeric_limits<int>::max());
}

TString FromAnsi(std::string_view bytes) {
  if (IsAscii(bytes)) return FromLatin1(bytes);
  if (IsAnsiUtf8()) return FromUtf8(bytes);
  const auto& convert = Api().MultiByteToWideChar;
  if (!convert || !FitsSystem(bytes.size())) return FromLatin1(bytes);
  const int size = static_cast<int>(bytes.size());
  const int needed = convert(kAnsiCodePage, 0, bytes.data(), size, nullptr, 0);
  TString text(static_cast<std::size_t>(std::max(needed, 0)), u'\0');
  if (needed <= 0 || convert(kAnsiCodePage, 0, bytes.data(), size, WBuffer(text), needed) != needed)
    return FromLatin1(bytes);
  return text;
}

std::string ToAnsi(TStringView text) {
  if (IsAscii(text)) return ToLatin1(text);
  if (IsAnsiUtf8()) return ToUtf8(text);
  const auto& convert = Api().WideCharToMultiByte;
  if (!convert || !FitsSystem(text.size())) return ToLatin1(text);
  const int size = static_cast<int>(text.size());
  const auto* units = reinterpret_cast<LPCWSTR>(text.data());
  const int needed = convert(kAnsiCodePage, kNoBestFit, units, size, nullptr, 0, nullptr, nullptr);
  std::string bytes(static_cast<std::size_t>(std::max(needed, 0)), '\0');
  if (needed <= 0 || convert(kAnsiCodePage, kNoBestFit, units, size, bytes.data(), needed, nullptr,
                             nullptr) != needed)
    return ToLatin1(text);
  return bytes;
}

// --- two bytes a unit ---------------------------------------------------------

TString FromUtf16(std::string_view bytes, bool highFirst) {
  TString text;
  text.reserve(bytes.size() / 2 + 1);
  for (std::size_t at = 0; at + 1 < bytes.size(); at += 2) {
    const auto first = static_cast<unsigned char>(bytes[at]);
    const auto second = static_cast<unsigned char>(bytes[at + 1]);
    text.push_back(static_cast<char16_t>(highFirst ? first << 8 | second : second << 8 | first));
  }
  if (bytes.size() % 2) text.push_back(kReplacement);
  return text;
}

std::string ToUtf16(TStringView text, bool highFirst) {
  std::string bytes;
  bytes.reserve(text.size() * 2);
  for (const char16_t unit : text) {
    const auto low = static_cast<char>(unit & 0xFF);
    const auto high = static_cast<char>(unit >> 8);
    bytes.push_back(highFirst ? high : low);
    bytes.push_back(highFirst ? low : high);
  }
  return bytes;
}

}  // namespace

std::string_view TEncoding::GetPreamble() const noexcept {
  switch (fKind) {
    case ekUtf8:
      return kUtf8Mark;
    case ekUtf16LE:
      return kUtf16LEMark;
    case ekUtf16BE:
      return kUtf16BEMark;
    case ekAnsi:
      break;
  }
  return {};
}

TString TEncoding::GetString(std::string_view bytes) const {
  switch (fKind) {
    case ekAnsi:
      return FromAnsi(bytes);
    case ekUtf8:
      return FromUtf8(bytes);
    case ekUtf16LE:
      return FromUtf16(bytes, false);
    case ekUtf16BE:
      break;
  }
  return FromUtf16(bytes, true);
}

std::string TEncoding::GetBytes(TStringView text) const {
  switch (fKind) {
    case ekAnsi:
      return ToAnsi(text);
    case ekUtf8:
      return ToUtf8(text);
    case ekUtf16LE:
      return ToUtf16(text, false);
    case ekUtf16BE:
      break;
  }
  return ToUtf16(text, true);
}

bool TEncoding::CanHold(TStringView text) const {
  return GetUnitSize() == 2 || IsAscii(text) || GetString(GetBytes(text)) == text;
}

std::size_t TEncoding::GetBufferEncoding(std::string_view bytes, TEncoding& encoding,
                                         TEncoding fallback) noexcept {
  for (const TEncoding candidate : {UTF8(), Unicode(), BigEndianUnicode()}) {
    const std::string_view mark = candidate.GetPreamble();
    if (!bytes.starts_with(mark)) continue;
    encoding = candidate;
    return mark.size();
  }
  encoding = fallback;
  return 0;
}

std::size_t TEncoding::Detect(std::string_view bytes, TEncoding& encoding) {
  const std::size_t mark = GetBufferEncoding(bytes, encoding);
  if (mark == 0 && (IsAscii(bytes) || ToUtf8(FromUtf8(bytes)) == bytes)) encoding = UTF8();
  return mark;
}

TBOM::TBOM(std::string_view bytes) noexcept
    : fLength(TEncoding::GetBufferEncoding(bytes, fEncoding)) {}

TBOM::TBOM(IStream* stream) noexcept {
  if (!stream) return;
  char bytes[3] = {};
  ULONG count = 0;
  // A stream may give fewer bytes than it has.
  while (count < sizeof bytes) {
    ULONG read = 0;
    const HRESULT result =
        stream->Read(bytes + count, static_cast<ULONG>(sizeof bytes - count), &read);
    count += read;
    if (FAILED(result) || read == 0) break;
  }
  LARGE_INTEGER back;
  back.QuadPart = -static_cast<LONGLONG>(count);
  constexpr DWORD fromCurrent = 1;
  if (FAILED(stream->Seek(back, fromCurrent, nullptr))) return;
  fLength = TEncoding::GetBufferEncoding({bytes, count}, fEncoding);
}

}  // namespace oak
