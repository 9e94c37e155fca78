// Native file names as Windows names and back.
#include "oak/platform/portable/PortableFiles.h"

namespace oak {
namespace {

constexpr char16_t EscapeBase = 0xF000;

struct TForbiddenAscii {
  bool Is[128]{};
  constexpr TForbiddenAscii() {
    for (const char c : {'"', '*', ':', '<', '>', '?', '\\', '|', '/'})
      Is[static_cast<unsigned char>(c)] = true;
  }
};
constexpr TForbiddenAscii ForbiddenAscii;

// What a file of the platform can't have in its name, while ours can.
bool IsForbidden(char32_t c) { return c < 32 || (c < 128 && ForbiddenAscii.Is[c]); }

char16_t Escaped(char byte) {
  return static_cast<char16_t>(EscapeBase + static_cast<unsigned char>(byte));
}

// The byte that an escape stands for, 0 for characters that are none. Only what
// NameFromNative makes counts: an escaped letter or "/" is an ordinary character.
char EscapedByte(char16_t c) {
  if (c < EscapeBase || c > EscapeBase + 0xFF) return 0;
  const auto byte = static_cast<unsigned char>(c & 0xFF);
  if (byte == 0 || byte == '/') return 0;
  return byte >= 0x80 || IsForbidden(byte) ? static_cast<char>(byte) : 0;
}

// Length of the strictly valid UTF-8 sequence at the start of `text`, 0 if it is
// none; `code` receives its character.
std::size_t DecodeUtf8(std::string_view text, char32_t& code) {
  const auto at = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = at(0);
  const std::size_t length = lead < 0x80   ? 1
                             : lead < 0xC2 ? 0
                             : lead < 0xE0 ? 2
                             : lead < 0xF0 ? 3
                             : lead < 0xF5 ? 4
                                           : 0;
  if (length == 0 || length > text.size()) return 0;
  code = length == 1 ? lead : lead & (0xFFu >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((at(i) & 0xC0) != 0x80) return 0;
    code = (code << 6) | (at(i) & 0x3Fu);
  }
  const char32_t least = length == 3 ? 0x800 : length == 4 ? 0x10000 : 0;
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  return code < least || surrogate || code > 0x10FFFF ? 0 : length;
}

void AppendUtf16(TString& text, char32_t code) {
  if (code < 0x10000) {
    text.push_back(static_cast<char16_t>(code));
    return;
  }
  code -= 0x10000;
  text.push_back(static_cast<char16_t>(0xD800 + (code >> 10)));
  text.push_back(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
}

void AppendUtf8(std::string& text, char32_t code) {
  const auto byte = [&](char32_t value) { text.push_back(static_cast<char>(value)); };
  if (code < 0x80) return byte(code);
  if (code < 0x800) {
    byte(0xC0 | (code >> 6));
  } else {
    if (code < 0x10000) {
      byte(0xE0 | (code >> 12));
    } else {
      byte(0xF0 | (code >> 18));
      byte(0x80 | ((code >> 12) & 0x3F));
    }
    byte(0x80 | ((code >> 6) & 0x3F));
  }
  byte(0x80 | (code & 0x3F));
}

}  // namespace

TString NameFromNative(std::string_view name) {
  TString result;
  result.reserve(name.size());
  while (!name.empty()) {
    char32_t code = 0;
    std::size_t length = DecodeUtf8(name, code);
    const bool escape =
        length == 0 || IsForbidden(code) || (code >= EscapeBase && code <= EscapeBase + 0xFFu);
    if (length == 0) length = 1;
    if (escape) {
      for (std::size_t i = 0; i < length; ++i) result.push_back(Escaped(name[i]));
    } else {
      AppendUtf16(result, code);
    }
    name.remove_prefix(length);
  }
  return result;
}

std::string NameToNative(TStringView name) {
  std::string result;
  result.reserve(name.size());
  for (std::size_t i = 0; i < name.size(); ++i) {
    const char16_t c = name[i];
    if (IsForbidden(c)) return {};
    if (const char byte = EscapedByte(c)) {
      result.push_back(byte);
      continue;
    }
    char32_t code = c;
    if (c >= 0xD800 && c < 0xDC00 && i + 1 < name.size() && (name[i + 1] & 0xFC00) == 0xDC00)
      code = 0x10000u + ((c & 0x3FFu) << 10) + (name[++i] & 0x3FFu);
    AppendUtf8(result, code);  // a lone surrogate gets the bytes that its value gives
  }
  return result;
}

bool IsValidFileName(TStringView name) {
  const std::string native = NameToNative(name);
  return !native.empty() && native.size() <= 255 && native != "." && native != "..";
}

}  // namespace oak
