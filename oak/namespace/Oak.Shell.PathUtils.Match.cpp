// What TPathUtils recognises by its form: URLs and IP addresses.
//
// The addresses are regular languages, but texts come from users and from the
// net: a backtracking matcher could be driven into deep recursion by a long
// text. These walk once from left to right.
#include "oak/namespace/Oak.Shell.PathUtils.h"

namespace oak {
namespace {

bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
bool IsHexDigit(char16_t c) {
  return IsDigit(c) || (c >= u'A' && c <= u'F') || (c >= u'a' && c <= u'f');
}
bool IsLetterOrDigit(char16_t c) {
  return IsDigit(c) || (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z');
}
bool IsSpace(char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r'); }

/// Takes pieces off the front of a text.
class TReader {
 public:
  explicit TReader(TStringView pText) : fText(pText) {}

  bool AtEnd() const { return fText.empty(); }
  TStringView Rest() const { return fText; }
  bool Take(char16_t c) {
    if (!fText.starts_with(c)) return false;
    fText.remove_prefix(1);
    return true;
  }
  /// Length of what the predicate accepts, which is taken.
  template <class P>
  std::size_t TakeWhile(P pAccepts) {
    std::size_t n = 0;
    while (n < fText.size() && pAccepts(fText[n])) ++n;
    fText.remove_prefix(n);
    return n;
  }
  /// A number of 0 to 255 in at most three digits.
  bool TakeOctet(bool pLeadingZeros) {
    const TStringView before = fText;
    const std::size_t n = TakeWhile(IsDigit);
    if (n < 1 || n > 3) return false;
    if (!pLeadingZeros && n > 1 && before[0] == u'0') return false;
    int value = 0;
    for (char16_t c : before.substr(0, n)) value = value * 10 + (c - u'0');
    return value <= 255;
  }
  bool TakeIPv4(bool pLeadingZeros) {
    for (int i = 0; i < 4; ++i)
      if ((i > 0 && !Take(u'.')) || !TakeOctet(pLeadingZeros)) return false;
    return true;
  }
  /// One to four hexadecimal digits.
  bool TakeGroup() {
    const std::size_t n = TakeWhile(IsHexDigit);
    return n >= 1 && n <= 4;
  }

 private:
  TStringView fText;
};

/// How many "group:" begin the text; they are taken. More than 7 are never valid.
int TakeLeadingGroups(TReader& pReader) {
  int count = 0;
  for (TReader next = pReader; count < 8 && next.TakeGroup() && next.Take(u':'); ++count)
    pReader = next;
  return count;
}

/// What may follow the colon of a "::" after `pLeading` groups: at most as many
/// groups as are left, the last two of which may be an IPv4 address.
bool TakeTrailingGroups(TReader& pReader, int pLeading) {
  const int most = 7 - pLeading;
  for (int count = 0; count < most; ++count) {
    TReader next = pReader;
    if (!next.Take(u':')) return count > 0;
    TReader dotted = next;
    if (dotted.TakeIPv4(false)) {
      pReader = dotted;
      return count <= most - 2;
    }
    if (!next.TakeGroup()) return false;
    pReader = next;
  }
  return true;
}

bool TakeIPv6(TReader& pReader) {
  const int leading = TakeLeadingGroups(pReader);
  if (leading > 7) return false;
  if (leading == 0 && !pReader.Take(u':')) return false;
  if (leading >= 6 && !pReader.Rest().starts_with(u':'))
    return leading == 7 ? pReader.TakeGroup() : pReader.TakeIPv4(false);
  if (leading == 7) return pReader.Take(u':');
  TReader next = pReader;
  if (TakeTrailingGroups(next, leading)) {
    pReader = next;
    return true;
  }
  return pReader.Take(u':');
}

/// "%" and a zone on one line; without "%" nothing.
bool TakeZone(TReader& pReader) {
  if (!pReader.Take(u'%')) return true;
  return pReader.TakeWhile([](char16_t c) { return c != u'\n'; }) > 0;
}

}  // namespace

bool TPathUtils::IsURL(TStringView pPath) {
  if (pPath.size() < 4 || pPath[1] == u':' || pPath[1] == PathDelim) return false;
  if (pPath.starts_with(u"file:\\")) return true;
  constexpr TStringView notInUrl = u"\\{}|^~[]`<>#%\"";
  TReader reader(pPath);
  return reader.TakeWhile(IsLetterOrDigit) >= 2 && reader.Take(u':') && !reader.AtEnd() &&
         notInUrl.find(reader.Rest().front()) == TStringView::npos;
}

bool TPathUtils::IsValidIP(TStringView pText) { return IsValidIPv4(pText) || IsValidIPv6(pText); }

bool TPathUtils::IsValidIPv4(TStringView pText) {
  TReader reader(pText);
  return reader.TakeIPv4(true) && reader.AtEnd();
}

bool TPathUtils::IsValidIPv6(TStringView pText) {
  TReader reader(pText);
  reader.TakeWhile(IsSpace);
  if (!TakeIPv6(reader) || !TakeZone(reader)) return false;
  reader.TakeWhile(IsSpace);
  return reader.AtEnd();
}

}  // namespace oak
