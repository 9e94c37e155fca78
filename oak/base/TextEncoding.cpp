// Text across the edges: the platform's pointers, UTF-8, wide strings.
#include "oak/base/Text.h"

namespace oak {

namespace {
constexpr char32_t kReplacement = 0xFFFD;

constexpr bool IsHighSurrogate(char32_t c) { return c >= 0xD800 && c <= 0xDBFF; }
constexpr bool IsLowSurrogate(char32_t c) { return c >= 0xDC00 && c <= 0xDFFF; }

void Append(TString& text, char32_t c) {
  if (c < 0x10000) {
    text.push_back(static_cast<char16_t>(c));
    return;
  }
  c -= 0x10000;
  text.push_back(static_cast<char16_t>(0xD800 + (c >> 10)));
  text.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
}

/// Takes one code point off UTF-16; a lone surrogate is broken input.
char32_t TakeUtf16(TStringView& text) {
  const char32_t first = text.front();
  text.remove_prefix(1);
  if (!IsHighSurrogate(first)) return IsLowSurrogate(first) ? kReplacement : first;
  if (text.empty() || !IsLowSurrogate(text.front())) return kReplacement;
  const char32_t second = text.front();
  text.remove_prefix(1);
  return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}

/// The bytes that may follow a lead byte: how many, and the range of the first,
/// which excludes overlong forms, surrogates and values beyond U+10FFFF.
struct TTail {
  int count;
  unsigned char low, high;
};

constexpr TTail TailOf(unsigned char lead) {
  if (lead >= 0xC2 && lead <= 0xDF) return {1, 0x80, 0xBF};
  if (lead == 0xE0) return {2, 0xA0, 0xBF};
  if (lead == 0xED) return {2, 0x80, 0x9F};
  if (lead >= 0xE1 && lead <= 0xEF) return {2, 0x80, 0xBF};
  if (lead == 0xF0) return {3, 0x90, 0xBF};
  if (lead >= 0xF1 && lead <= 0xF3) return {3, 0x80, 0xBF};
  if (lead == 0xF4) return {3, 0x80, 0x8F};
  return {0, 0, 0};
}

/// Takes one code point off UTF-8, or the longest start of a broken one.
char32_t TakeUtf8(std::string_view& text) {
  const auto lead = static_cast<unsigned char>(text.front());
  text.remove_prefix(1);
  if (lead < 0x80) return lead;
  TTail tail = TailOf(lead);
  if (tail.count == 0) return kReplacement;
  char32_t code = lead & (0x3Fu >> tail.count);
  for (; tail.count > 0; --tail.count) {
    const auto next = text.empty() ? '\0' : static_cast<unsigned char>(text.front());
    if (next < tail.low || next > tail.high) return kReplacement;
    text.remove_prefix(1);
    code = (code << 6) | (next & 0x3Fu);
    tail = {tail.count, 0x80, 0xBF};
  }
  return code;
}

void AppendUtf8(std::string& text, char32_t c) {
  const auto push = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
  if (c < 0x80) {
    push(c);
  } else if (c < 0x800) {
    push(0xC0 | (c >> 6));
    push(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    push(0xE0 | (c >> 12));
    push(0x80 | ((c >> 6) & 0x3F));
    push(0x80 | (c & 0x3F));
  } else {
    push(0xF0 | (c >> 18));
    push(0x80 | ((c >> 12) & 0x3F));
    push(0x80 | ((c >> 6) & 0x3F));
    push(0x80 | (c & 0x3F));
  }
}
}  // namespace

TString FromW(LPCWSTR text) {
  const auto* units = reinterpret_cast<const char16_t*>(text);
  return units ? TString(units) : TString();
}

TString FromW(LPCWSTR text, std::size_t length) {
  return text ? TString(reinterpret_cast<const char16_t*>(text), length) : TString();
}

TString FromUtf8(std::string_view text) {
  TString result;
  result.reserve(text.size());
  while (!text.empty()) Append(result, TakeUtf8(text));
  return result;
}

std::string ToUtf8(TStringView text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) AppendUtf8(result, TakeUtf16(text));
  return result;
}

std::wstring ToWString(TStringView text) {
  if constexpr (sizeof(wchar_t) == sizeof(char16_t)) {
    return std::wstring(text.begin(), text.end());
  } else {
    std::wstring result;
    while (!text.empty()) result.push_back(static_cast<wchar_t>(TakeUtf16(text)));
    return result;
  }
}

TString FromWString(std::wstring_view text) {
  if constexpr (sizeof(wchar_t) == sizeof(char16_t)) {
    return TString(text.begin(), text.end());
  } else {
    TString result;
    for (const wchar_t unit : text) {
      const auto c = static_cast<char32_t>(unit);
      Append(result, c > 0x10FFFF || IsHighSurrogate(c) || IsLowSurrogate(c) ? kReplacement : c);
    }
    return result;
  }
}

}  // namespace oak
