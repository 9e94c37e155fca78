#include "oak/base/Text.h"

#include <gtest/gtest.h>

namespace oak {
namespace {

TEST(Text, Utf8RoundTrip) {
  const std::pair<std::string_view, TStringView> cases[] = {
      {"", u""},
      {"plain", u"plain"},
      {"\xC3\xA4\xD0\xB6", u"äж"},
      {"\xE2\x82\xAC", u"€"},
      {"\xEF\xBF\xBF\xED\x9F\xBF", u"\uFFFF\uD7FF"},
      {"\xF0\x9F\x98\x80", u"😀"},
      {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
      {std::string_view("a\0b", 3), TStringView(u"a\0b", 3)},
  };
  for (const auto& [utf8, text] : cases) {
    EXPECT_EQ(FromUtf8(utf8), text) << utf8;
    EXPECT_EQ(ToUtf8(text), utf8);
    EXPECT_EQ(FromWString(ToWString(text)), text);
  }
}

TEST(Text, BrokenInputBecomesReplacementCharacters) {
  const std::pair<std::string_view, TStringView> cases[] = {
      {"\x80z", u"\uFFFDz"},                              // a tail without lead
      {"\xC0\xAF", u"\uFFFD\uFFFD"},                      // overlong
      {"\xE0\x80\x80", u"\uFFFD\uFFFD\uFFFD"},            // overlong
      {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},            // a surrogate
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond the last code point
      {"\xE2\x82", u"\uFFFD"},                            // cut off
      {"\xE2\x82z", u"\uFFFDz"},
      {"\xFF", u"\uFFFD"},
  };
  for (const auto& [utf8, text] : cases) EXPECT_EQ(FromUtf8(utf8), text);

  const char16_t lone[] = {u'a', 0xD83D, u'b', 0xDE00, 0xD83D};
  EXPECT_EQ(ToUtf8(TStringView(lone, 5)),
            "a\xEF\xBF\xBD"
            "b\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(Text, CaseOfLettersBeyondAscii) {
  const TStringView equal[] = {u"aA", u"zZ", u"äÄ", u"éÉ",   u"ÿŸ", u"жЖ", u"ѐЀ", u"ωΩ",
                               u"ςΣ", u"σΣ", u"ǆǄ", u"ａＡ", u"ⅷⅧ", u"ⓐⒶ", u"ᾀᾈ"};
  for (const TStringView pair : equal)
    EXPECT_TRUE(SameText(pair.substr(0, 1), pair.substr(1))) << ToUtf8(pair);
  // Letters whose partner belongs to another letter.
  const TStringView different[] = {u"ıI", u"İi", u"ſS", u"µΜ", u"\u212AK", u"ßẞ", u"@`", u"[{"};
  for (const TStringView pair : different)
    EXPECT_FALSE(SameText(pair.substr(0, 1), pair.substr(1))) << ToUtf8(pair);
  EXPECT_EQ(UpperCase(u"straße ÄÖü"), u"STRAßE ÄÖÜ");
  EXPECT_EQ(LowerCase(u"ÄÖÜ ЖΣ"), u"äöü жσ");
}

TEST(Text, ComparingIgnoringCase) {
  EXPECT_FALSE(SameText(u"abc", u"ab"));
  EXPECT_EQ(CompareText(u"ÄB", u"äb"), 0);
  EXPECT_LT(CompareText(u"a", u"B"), 0);
  EXPECT_GT(CompareText(u"_", u"Z"), 0);  // "_" lies between the cases: capitals count
  EXPECT_LT(CompareText(u"ab", u"ABC"), 0);
  EXPECT_TRUE(StartsText(u"äB", u"Äbc"));
  EXPECT_FALSE(StartsText(u"abcd", u"abc"));
  EXPECT_TRUE(EndsText(u".TXT", u"a.txt"));
  EXPECT_TRUE(ContainsText(u"one Two", u"E tW"));
  EXPECT_FALSE(ContainsText(u"ab", u"abc"));
}

TEST(Text, Rewriting) {
  EXPECT_EQ(Trim(u"\t\u0001 a b \r\n"), u"a b");
  EXPECT_EQ(Trim(u" \u00A0 "), u"\u00A0");  // only up to U+0020
  EXPECT_EQ(ReplaceAll(u"aaa", u"aa", u"b"), u"ba");
  EXPECT_EQ(ReplaceAll(u"xax", u"x", u"xx"), u"xxaxx");  // no look at what was put in
  EXPECT_EQ(ReplaceAll(u"abc", u"", u"x"), u"abc");
  EXPECT_EQ(ReplaceAllText(u"%DATE% %date%!", u"%Date%", u"d"), u"d d!");
  EXPECT_EQ(Join(Split(u";a;;b;", u';'), u"|"), u"|a||b|");
  EXPECT_EQ(Split(u"", u';').size(), 1u);
  EXPECT_EQ(IntToStr(INT64_MIN), u"-9223372036854775808");
  EXPECT_EQ(IntToHex(0, 0), u"0");
  EXPECT_EQ(IntToHex(0x2F8E, 8), u"00002F8E");
  EXPECT_EQ(IntToHex(0x123456789ABCDEF0, 2), u"123456789ABCDEF0");
}

struct TPathCase {
  TStringView path, name, ext, folder, dir, drive;
};

TEST(Text, PathParts) {
  const TPathCase cases[] = {
      {u"", u"", u"", u"", u"", u""},
      {u"C:", u"", u"", u"C:", u"C:", u"C:"},
      {u"C:\\", u"", u"", u"C:\\", u"C:\\", u"C:"},
      {u"C:\\a.b\\c", u"c", u"", u"C:\\a.b\\", u"C:\\a.b", u"C:"},
      {u"C:\\file.tar.gz", u"file.tar.gz", u".gz", u"C:\\", u"C:\\", u"C:"},
      {u"C:file.txt", u"file.txt", u".txt", u"C:", u"C:", u"C:"},
      {u"a.b:stream", u"stream", u"", u"a.b:", u"a.b:", u""},
      {u"\\file.", u"file.", u".", u"\\", u"\\", u""},
      {u"dir\\.hidden", u".hidden", u".hidden", u"dir\\", u"dir", u""},
      {u"a/b.c/d", u"a/b.c/d", u".c/d", u"", u"", u""},
      {u"\\\\srv\\share\\x.y", u"x.y", u".y", u"\\\\srv\\share\\", u"\\\\srv\\share",
       u"\\\\srv\\share"},
      {u"\\\\srv\\share", u"share", u"", u"\\\\srv\\", u"\\\\srv", u"\\\\srv\\share"},
      {u"\\\\srv", u"srv", u"", u"\\\\", u"\\\\", u""},
      {u"\\\\?\\C:\\x", u"x", u"", u"\\\\?\\C:\\", u"\\\\?\\C:\\", u"\\\\?\\C:"},
      {u"\\\\?\\unc\\srv\\share\\x", u"x", u"", u"\\\\?\\unc\\srv\\share\\",
       u"\\\\?\\unc\\srv\\share", u"\\\\?\\unc\\srv\\share"},
      {u"\\\\?\\UNC\\srv", u"srv", u"", u"\\\\?\\UNC\\", u"\\\\?\\UNC", u""},
  };
  for (const TPathCase& c : cases) {
    SCOPED_TRACE(ToUtf8(c.path));
    EXPECT_EQ(ExtractFileName(c.path), c.name);
    EXPECT_EQ(ExtractFileExt(c.path), c.ext);
    EXPECT_EQ(ExtractFilePath(c.path), c.folder);
    EXPECT_EQ(ExtractFileDir(c.path), c.dir);
    EXPECT_EQ(ExtractFileDrive(c.path), c.drive);
  }
}

}  // namespace
}  // namespace oak
