// Text as 16-bit Unicode, with the semantics of the system's own helpers.
//
// All functions are pure: no locale, no environment, any thread. "Ignoring
// case" means simple one-to-one upper-casing of UTF-16 units over the whole
// Basic Multilingual Plane (ä = Ä, é = É, ж = Ж), as the file system of the
// platform compares names; surrogates compare as they stand, and so do letters
// without a partner of their own: ß, the dotless i, the long s, the micro sign.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "oak/base/abi.h"

namespace oak {

using TString = std::u16string;
using TStringView = std::u16string_view;
using TStringArray = std::vector<TString>;

// --- the platform's edge ---------------------------------------------------
/// The text as the platform's wide string; valid as long as `text` is.
inline LPCWSTR W(const TString& text) { return reinterpret_cast<LPCWSTR>(text.c_str()); }
inline LPCWSTR W(const char16_t* text) { return reinterpret_cast<LPCWSTR>(text); }
/// A buffer of ours that the platform writes to.
inline LPWSTR WBuffer(TString& text) { return reinterpret_cast<LPWSTR>(text.data()); }
/// Copies a text of the platform; a null pointer gives the empty text.
TString FromW(LPCWSTR text);
TString FromW(LPCWSTR text, std::size_t length);

/// Strict conversion both ways except that broken input becomes U+FFFD.
TString FromUtf8(std::string_view text);
std::string ToUtf8(TStringView text);
std::wstring ToWString(TStringView text);
TString FromWString(std::wstring_view text);

// --- comparing -------------------------------------------------------------
namespace detail {
char16_t UpCaseBeyondAscii(char16_t c) noexcept;
char16_t LowCaseBeyondAscii(char16_t c) noexcept;
}  // namespace detail
inline char16_t UpCase(char16_t c) noexcept {
  if (c >= 0x80) return detail::UpCaseBeyondAscii(c);
  return c >= u'a' && c <= u'z' ? static_cast<char16_t>(c - 0x20) : c;
}
inline char16_t LowCase(char16_t c) noexcept {
  if (c >= 0x80) return detail::LowCaseBeyondAscii(c);
  return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 0x20) : c;
}
TString UpperCase(TStringView text);
TString LowerCase(TStringView text);
/// Equal ignoring case.
bool SameText(TStringView a, TStringView b) noexcept;
/// Order of the upper-cased texts: negative, 0 or positive.
int CompareText(TStringView a, TStringView b) noexcept;
inline bool StartsWith(TStringView text, TStringView prefix) noexcept {
  return text.starts_with(prefix);
}
inline bool EndsWith(TStringView text, TStringView suffix) noexcept {
  return text.ends_with(suffix);
}
bool StartsText(TStringView prefix, TStringView text) noexcept;  ///< Ignoring case.
bool EndsText(TStringView suffix, TStringView text) noexcept;    ///< Ignoring case.
bool ContainsText(TStringView text, TStringView part) noexcept;  ///< Ignoring case.
inline bool Contains(TStringView text, TStringView part) {
  return text.find(part) != TStringView::npos;
}

// --- rewriting -------------------------------------------------------------
/// Without leading and trailing characters up to and including U+0020.
TString Trim(TStringView text);
TString TrimLeft(TStringView text);
TString TrimRight(TStringView text);
/// Every occurrence, left to right, not looking at what was put in. An empty
/// `from` occurs nowhere.
TString ReplaceAll(TStringView text, TStringView from, TStringView to);
TString ReplaceAllText(TStringView text, TStringView from, TStringView to);  ///< Ignoring case.
/// The pieces between delimiters; an empty text has one empty piece.
TStringArray Split(TStringView text, char16_t delimiter);
TString Join(const TStringArray& parts, TStringView delimiter);
TString IntToStr(std::int64_t value);
/// Upper-case hexadecimal with at least `digits` digits.
TString IntToHex(std::uint64_t value, int digits);

// --- Windows path forms ----------------------------------------------------
// The delimiter is "\" alone; "/" is an ordinary character.
inline constexpr char16_t PathDelim = u'\\';
TString IncludeTrailingPathDelimiter(TStringView path);
/// Without one trailing delimiter.
TString ExcludeTrailingPathDelimiter(TStringView path);
/// What follows the last "\" or ":"; the whole text without either.
TString ExtractFileName(TStringView path);
/// The last "." of the file name and what follows it, or empty.
TString ExtractFileExt(TStringView path);
/// Everything up to and including the last "\" or ":".
TString ExtractFilePath(TStringView path);
/// As ExtractFilePath, without the trailing delimiter unless it is a root's.
TString ExtractFileDir(TStringView path);
/// "C:" of a drive path, "\\server\share" of a UNC path, else empty: also for a
/// server without share. A long path keeps its prefix: "\\?\C:",
/// "\\?\UNC\server\share", "\\?\Volume{...}".
TString ExtractFileDrive(TStringView path);
/// Replaces the extension (with its dot) of the file name, or appends it.
TString ChangeFileExt(TStringView path, TStringView extension);

}  // namespace oak
