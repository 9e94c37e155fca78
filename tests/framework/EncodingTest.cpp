#include "oak/framework/Encoding.h"

#include <gtest/gtest.h>

#include "oak/platform/Api.h"
#include "testkit/ScopedApi.h"
#include "tests/framework/TempFolder.h"

namespace oak::tests {
namespace {

using namespace std::string_literals;

TEST(Encoding, ReadsBytesByTheirMark) {
  const struct {
    std::string Bytes;
    TEncoding Encoding;
    std::size_t Mark;
    TString Text;
  } cases[] = {
      {"\xEF\xBB\xBF\xC3\xA4", TEncoding::UTF8(), 3, u"ä"},
      {"\xFF\xFE\xE4\0"s, TEncoding::Unicode(), 2, u"ä"},
      {"\xFE\xFF\0\xE4"s, TEncoding::BigEndianUnicode(), 2, u"ä"},
      {"\xC3\xA4", TEncoding::UTF8(), 0, u"ä"},  // no mark, but well formed
      {"", TEncoding::UTF8(), 0, u""},
      {"\xEF\xBB", TEncoding::ANSI(), 0, u"ï»"},  // half a mark
      // Broken: replaced, never thrown.
      {"\xEF\xBB\xBF!\xFF!", TEncoding::UTF8(), 3, u"!\uFFFD!"},
      {"\xFF\xFE!\0!"s, TEncoding::Unicode(), 2, u"!\uFFFD"},
      {"\xFE\xFF\xD8\x00"s, TEncoding::BigEndianUnicode(), 2, TString(1, 0xD800)},
  };
  const testkit::TScopedApi page(Api().GetACP, [] { return UINT{1252}; });
  const testkit::TScopedApi convert(Api().MultiByteToWideChar, nullptr);
  for (const auto& c : cases) {
    TEncoding found;
    ASSERT_EQ(TEncoding::Detect(c.Bytes, found), c.Mark) << c.Bytes;
    EXPECT_EQ(found, c.Encoding) << c.Bytes;
    EXPECT_EQ(TBOM(c.Bytes).GetLength(), c.Mark);
    EXPECT_EQ(found.GetString(std::string_view(c.Bytes).substr(c.Mark)), c.Text);
  }
}

TEST(Encoding, TextComesBackFromItsBytes) {
  const TString texts[] = {u"", u"plain", u"Grüße \U0001F600", TString(u"a\0b", 3)};
  for (const TEncoding encoding :
       {TEncoding::UTF8(), TEncoding::Unicode(), TEncoding::BigEndianUnicode()})
    for (const TString& text : texts) EXPECT_EQ(encoding.GetString(encoding.GetBytes(text)), text);
  // The name of a file may hold half a pair; UTF-8 can't.
  const TString lone = u"a" + TString(1, 0xD800);
  EXPECT_TRUE(TEncoding::Unicode().CanHold(lone));
  EXPECT_EQ(TEncoding::Unicode().GetString(TEncoding::Unicode().GetBytes(lone)), lone);
  EXPECT_FALSE(TEncoding::UTF8().CanHold(lone));
}

TEST(Encoding, AnsiIsTheSystemsCodePageOrLatin1) {
  const testkit::TScopedApi page(Api().GetACP, [] { return UINT{1252}; });
  {
    const testkit::TScopedApi from(Api().MultiByteToWideChar, nullptr);
    const testkit::TScopedApi to(Api().WideCharToMultiByte, nullptr);
    EXPECT_EQ(TEncoding::ANSI().GetString("\xE4\x80"), u"ä\u0080");
    EXPECT_EQ(TEncoding::ANSI().GetBytes(u"ä€"), "\xE4?");
    EXPECT_TRUE(TEncoding::ANSI().CanHold(u"ä"));
    EXPECT_FALSE(TEncoding::ANSI().CanHold(u"€"));
  }
  // What the system says counts; a system that fails is no reason to lose the text.
  const testkit::TScopedApi from(Api().MultiByteToWideChar,
                                 [](UINT, DWORD, LPCSTR text, int size, LPWSTR wide, int capacity) {
                                   if (text[0] == '\xFF') return 0;
                                   for (int i = 0; i < capacity; ++i) wide[i] = 0x20AC;
                                   return size;
                                 });
  EXPECT_EQ(TEncoding::ANSI().GetString("\x80\x80"), u"€€");
  EXPECT_EQ(TEncoding::ANSI().GetString("\xFF"), u"ÿ");
}

TEST(Encoding, MarkOfAStreamIsReadAndPutBack) {
  const TTempFolder folder;
  const struct {
    const char* Bytes;
    std::size_t Mark;
  } cases[] = {{"\xEF\xBB\xBFtext", 3}, {"\xFF\xFE", 2}, {"no", 0}, {"", 0}};
  for (const auto& c : cases) {
    folder.Write("file", c.Bytes);
    Ref<IStream> stream;
    ASSERT_EQ(Api().SHCreateStreamOnFileEx(W(folder.Path("file")), STGM_READ, 0, FALSE, nullptr,
                                           stream.Put()),
              S_OK);
    EXPECT_EQ(TBOM(stream.Get()).GetLength(), c.Mark);
    char again[8] = {};
    ULONG read = 0;
    stream->Read(again, sizeof again, &read);
    EXPECT_EQ(std::string(again, read), c.Bytes);
  }
  EXPECT_FALSE(TBOM(nullptr).Exists());
}

}  // namespace
}  // namespace oak::tests
