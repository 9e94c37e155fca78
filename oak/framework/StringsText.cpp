// A list of texts as one text: lines, and texts divided by delimiters.
#include <algorithm>

#include "oak/framework/Strings.h"

namespace oak {
namespace {

constexpr TStringView kDefaultLineBreak = u"\r\n";

bool IsBlankOrControl(char16_t c) { return c <= u' '; }

/// Takes a line off the text; any of CR LF, LF and CR ends it.
TStringView TakeLine(TStringView& text) {
  const std::size_t end = std::min(text.find_first_of(u"\r\n"), text.size());
  const TStringView line = text.substr(0, end);
  const bool isPair = text.substr(end).starts_with(kDefaultLineBreak);
  text.remove_prefix(std::min(end + (isPair ? 2 : 1), text.size()));
  return line;
}

TStringView TakeUpTo(TStringView& text, TStringView lineBreak) {
  const std::size_t end = text.find(lineBreak);
  const TStringView line = text.substr(0, end);
  text.remove_prefix(end == TStringView::npos ? text.size() : end + lineBreak.size());
  return line;
}

TString Quoted(TStringView text, char16_t quote) {
  TString result(1, quote);
  for (const char16_t c : text) {
    if (c == quote) result.push_back(quote);
    result.push_back(c);
  }
  result.push_back(quote);
  return result;
}

/// Reads the texts between delimiters.
class TDelimitedReader {
 public:
  TDelimitedReader(TStringView text, char16_t delimiter, char16_t quote, bool isStrict)
      : fText(text), fDelimiter(delimiter), fQuote(quote), fIsStrict(isStrict) {}

  TStringArray ReadAll() {
    TStringArray texts;
    SkipBlanks();
    while (!fText.empty()) {
      texts.push_back(ReadOne());
      SkipBlanks();
      if (fText.empty() || fText.front() != fDelimiter) continue;
      fText.remove_prefix(1);
      SkipBlanks();
      if (fText.empty()) texts.emplace_back();  // the delimiter promised one more
    }
    return texts;
  }

 private:
  // A delimiter that is a blank itself divides as such.
  void SkipBlanks() {
    if (fIsStrict) return;
    while (!fText.empty() && IsBlankOrControl(fText.front()) && fText.front() != fDelimiter)
      fText.remove_prefix(1);
  }

  TString ReadOne() {
    if (fQuote != 0 && fText.front() == fQuote) return ReadQuoted();
    const auto end = std::find_if(fText.begin(), fText.end(), [&](char16_t c) {
      return c == fDelimiter || (!fIsStrict && IsBlankOrControl(c));
    });
    const TString text(fText.begin(), end);
    fText.remove_prefix(text.size());
    return text;
  }

  // To the closing mark or the end; what follows the mark up to the delimiter is a
  // text of its own, unless the delimiter alone divides: then it belongs to this one.
  TString ReadQuoted() {
    TString text;
    fText.remove_prefix(1);
    while (!fText.empty()) {
      const char16_t c = fText.front();
      fText.remove_prefix(1);
      if (c == fQuote) {
        if (fText.empty() || fText.front() != fQuote) break;
        fText.remove_prefix(1);
      }
      text.push_back(c);
    }
    if (fIsStrict) text += TakeRest();
    return text;
  }

  TStringView TakeRest() {
    const TStringView rest = fText.substr(0, fText.find(fDelimiter));
    fText.remove_prefix(rest.size());
    return rest;
  }

  TStringView fText;
  char16_t fDelimiter;
  char16_t fQuote;
  bool fIsStrict;
};

}  // namespace

// --- lines -----------------------------------------------------------------------

void TStrings::SetLineBreak(TString value) {
  fLineBreak = value.empty() ? TString(kDefaultLineBreak) : std::move(value);
}

TString TStrings::GetText() const {
  const int count = GetCount();
  std::size_t size = 0;
  for (int i = 0; i < count; ++i) size += Get(i).size() + fLineBreak.size();
  TString text;
  text.reserve(size);
  for (int i = 0; i < count; ++i) {
    text += Get(i);
    if (fTrailingLineBreak || i + 1 < count) text += fLineBreak;
  }
  return text;
}

void TStrings::SetText(TStringView text) {
  const bool isCommon =
      fLineBreak == kDefaultLineBreak || fLineBreak == u"\n" || fLineBreak == u"\r";
  TStringArray lines;
  while (!text.empty()) lines.emplace_back(isCommon ? TakeLine(text) : TakeUpTo(text, fLineBreak));
  SetStrings(std::move(lines));
}

// --- delimiters --------------------------------------------------------------------

TString TStrings::JoinDelimited(char16_t delimiter, char16_t quote, bool isStrict) const {
  const int count = GetCount();
  if (count == 1 && Get(0).empty() && quote != 0) return Quoted({}, quote);
  TString result;
  for (int i = 0; i < count; ++i) {
    const TString& text = Get(i);
    const bool needsQuotes = std::any_of(text.begin(), text.end(), [&](char16_t c) {
      return c == delimiter || c == quote || (!isStrict && IsBlankOrControl(c));
    });
    if (i > 0) result.push_back(delimiter);
    result += needsQuotes && quote != 0 ? Quoted(text, quote) : text;
  }
  return result;
}

TString TStrings::GetDelimitedText() const {
  return JoinDelimited(fDelimiter, fQuoteChar, fStrictDelimiter);
}

void TStrings::SetDelimitedText(TStringView text) {
  SetStrings(TDelimitedReader(text, fDelimiter, fQuoteChar, fStrictDelimiter).ReadAll());
}

TString TStrings::GetCommaText() const { return JoinDelimited(u',', u'"', false); }

void TStrings::SetCommaText(TStringView text) {
  SetStrings(TDelimitedReader(text, u',', u'"', false).ReadAll());
}

}  // namespace oak
