#include "oak/base/Text.h"

#include <algorithm>

namespace oak {

namespace {
#include "oak/base/CaseTable.inc"

char16_t Mapped(const std::uint8_t (&page)[1024], char16_t c) noexcept {
  return static_cast<char16_t>(c + kCaseDelta[page[c >> 6] * 64u + (c & 63u)]);
}

std::size_t FindText(TStringView text, TStringView part, std::size_t from) noexcept {
  for (std::size_t i = from; i + part.size() <= text.size(); ++i)
    if (SameText(text.substr(i, part.size()), part)) return i;
  return TStringView::npos;
}

template <class TFind>
TString Replaced(TStringView text, std::size_t length, TStringView to, TFind find) {
  TString result;
  std::size_t done = 0;
  for (std::size_t at; length > 0 && (at = find(done)) != TStringView::npos; done = at + length)
    result.append(text.substr(done, at - done)).append(to);
  return result.append(text.substr(done));
}
}  // namespace

namespace detail {
char16_t UpCaseBeyondAscii(char16_t c) noexcept { return Mapped(kUpperPage, c); }
char16_t LowCaseBeyondAscii(char16_t c) noexcept { return Mapped(kLowerPage, c); }
}  // namespace detail

// --- comparing -------------------------------------------------------------

TString UpperCase(TStringView text) {
  TString result(text);
  for (char16_t& c : result) c = UpCase(c);
  return result;
}

TString LowerCase(TStringView text) {
  TString result(text);
  for (char16_t& c : result) c = LowCase(c);
  return result;
}

bool SameText(TStringView a, TStringView b) noexcept {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (a[i] != b[i] && UpCase(a[i]) != UpCase(b[i])) return false;
  return true;
}

int CompareText(TStringView a, TStringView b) noexcept {
  const std::size_t common = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < common; ++i) {
    if (a[i] == b[i]) continue;
    const char16_t x = UpCase(a[i]);
    const char16_t y = UpCase(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

bool StartsText(TStringView prefix, TStringView text) noexcept {
  return text.size() >= prefix.size() && SameText(text.substr(0, prefix.size()), prefix);
}

bool EndsText(TStringView suffix, TStringView text) noexcept {
  return text.size() >= suffix.size() && SameText(text.substr(text.size() - suffix.size()), suffix);
}

bool ContainsText(TStringView text, TStringView part) noexcept {
  return FindText(text, part, 0) != TStringView::npos;
}

// --- rewriting -------------------------------------------------------------

TString Trim(TStringView text) { return TrimRight(TrimLeft(text)); }

TString TrimLeft(TStringView text) {
  while (!text.empty() && text.front() <= u' ') text.remove_prefix(1);
  return TString(text);
}

TString TrimRight(TStringView text) {
  while (!text.empty() && text.back() <= u' ') text.remove_suffix(1);
  return TString(text);
}

TString ReplaceAll(TStringView text, TStringView from, TStringView to) {
  return Replaced(text, from.size(), to, [&](std::size_t at) { return text.find(from, at); });
}

TString ReplaceAllText(TStringView text, TStringView from, TStringView to) {
  return Replaced(text, from.size(), to, [&](std::size_t at) { return FindText(text, from, at); });
}

TStringArray Split(TStringView text, char16_t delimiter) {
  TStringArray parts;
  for (std::size_t at; (at = text.find(delimiter)) != TStringView::npos; text.remove_prefix(at + 1))
    parts.emplace_back(text.substr(0, at));
  parts.emplace_back(text);
  return parts;
}

TString Join(const TStringArray& parts, TStringView delimiter) {
  TString result;
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) result.append(delimiter);
    result.append(parts[i]);
  }
  return result;
}

TString IntToStr(std::int64_t value) {
  const std::string digits = std::to_string(value);
  return TString(digits.begin(), digits.end());
}

TString IntToHex(std::uint64_t value, int digits) {
  TString result;
  for (; value != 0 || digits > 0; value >>= 4, --digits)
    result.insert(result.begin(), u"0123456789ABCDEF"[value & 15]);
  return result.empty() ? TString(u"0") : result;
}

}  // namespace oak
