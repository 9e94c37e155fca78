#include "oak/framework/RichText.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>

namespace oak {
namespace {

/// Reads the format: groups in braces, words and signs after a backslash, all else is text.
class TRtfReader {
 public:
  explicit TRtfReader(const std::vector<std::uint8_t>& data) : fData(data) {}

  TString Read() {
    while (!AtEnd()) {
      const char character = Next();
      if (character == '{')
        fGroups.push_back(fGroups.empty() ? TGroup{} : fGroups.back());
      else if (character == '}')
        CloseGroup();
      else if (character == '\\')
        Control();
      else if (character != '\r' && character != '\n')
        Put(static_cast<unsigned char>(character));
    }
    return std::move(fText);
  }

 private:
  struct TGroup {
    bool IsHidden = false;  // fonts, colours, pictures: no text
    int Fallback = 1;       // characters that stand for one Unicode character in old readers
  };

  bool AtEnd() const { return fPosition >= fData.size(); }
  char Next() { return static_cast<char>(fData[fPosition++]); }
  char Peek() const { return AtEnd() ? '\0' : static_cast<char>(fData[fPosition]); }
  bool IsHidden() const { return !fGroups.empty() && fGroups.back().IsHidden; }

  void CloseGroup() {
    if (!fGroups.empty()) fGroups.pop_back();
  }

  void Put(char16_t unit) {
    if (IsHidden()) return;
    if (fSkip > 0)
      --fSkip;
    else
      fText += unit;
  }

  void Control() {
    if (AtEnd()) return;
    const char sign = Next();
    const bool isLetter = (sign >= 'a' && sign <= 'z') || (sign >= 'A' && sign <= 'Z');
    if (isLetter) return Word(sign);
    switch (sign) {
      case '\'':
        return Hex();
      case '*':
        if (!fGroups.empty()) fGroups.back().IsHidden = true;
        return;
      case '~':
        return Put(u'\u00A0');
      case '_':
        return Put(u'-');
      case '\r':
      case '\n':
        return NewLine();
      default:
        return Put(static_cast<unsigned char>(sign));
    }
  }

  void Hex() {
    char digits[3] = {};
    for (int i = 0; i < 2 && !AtEnd(); ++i) digits[i] = Next();
    Put(static_cast<char16_t>(std::strtol(digits, nullptr, 16)));
  }

  void Word(char first) {
    std::string word(1, first), number;
    while (Peek() >= 'a' && Peek() <= 'z') word += Next();
    if (Peek() == '-') number += Next();
    while (Peek() >= '0' && Peek() <= '9') number += Next();
    if (Peek() == ' ') ++fPosition;
    Apply(word, number.empty() ? 0 : static_cast<int>(std::strtol(number.c_str(), nullptr, 10)));
  }

  void NewLine() {
    if (!IsHidden()) fText += u"\r\n";
  }

  void Apply(const std::string& word, int number) {
    static constexpr const char* hidden[] = {"fonttbl", "colortbl", "stylesheet", "info",
                                             "pict",    "header",   "footer",     "object"};
    for (const char* name : hidden)
      if (word == name && !fGroups.empty()) fGroups.back().IsHidden = true;
    if (word == "par" || word == "line") return NewLine();
    if (word == "tab") return Put(u'\t');
    if (word == "uc" && !fGroups.empty()) fGroups.back().Fallback = number;
    if (word != "u" || IsHidden()) return;
    fSkip = 0;
    Put(static_cast<char16_t>(number));
    fSkip = fGroups.empty() ? 1 : fGroups.back().Fallback;
  }

  const std::vector<std::uint8_t>& fData;
  std::size_t fPosition = 0;
  std::vector<TGroup> fGroups;
  int fSkip = 0;
  TString fText;
};

}  // namespace

bool PlainTextOfRtf(const std::vector<std::uint8_t>& data, TString* text) {
  constexpr std::string_view signature = "{\\rtf";
  if (data.size() < signature.size() ||
      !std::equal(signature.begin(), signature.end(), data.begin()))
    return false;
  *text = TRtfReader(data).Read();
  if (text->ends_with(u"\r\n")) text->resize(text->size() - 2);  // the last paragraph's end
  return true;
}

}  // namespace oak
