#include "oak/framework/StringList.h"

#include <gtest/gtest.h>

#include "oak/framework/FileContent.h"
#include "oak/platform/Api.h"
#include "testkit/FaultInjection.h"
#include "tests/framework/TempFolder.h"

namespace oak::tests {
namespace {

/// Counts those that live.
struct TCounted : TObject {
  explicit TCounted(int& count) : Count(count) { ++Count; }
  ~TCounted() override { --Count; }
  int& Count;
};

TEST(StringList, KeepsTextsWithTheirObjects) {
  int a = 0;
  TCounted first(a);
  TCounted second(a);
  TStringList list{u"b", u"c"};
  EXPECT_EQ(list.AddObject(u"d", &first), 2);
  list.InsertObject(0, u"a", &second);
  list.Exchange(0, 3);
  EXPECT_EQ(list.IndexOfObject(&first), 0);
  list.Move(0, 2);
  EXPECT_EQ(list.ToArray(), (TStringArray{u"b", u"c", u"d", u"a"}));
  list.Move(3, 0);
  EXPECT_EQ(list.ToArray(), (TStringArray{u"a", u"b", u"c", u"d"}));
  EXPECT_EQ(list.GetObjects(0), &second);
  EXPECT_EQ(list.GetObjects(3), &first);
  list.Delete(0);
  EXPECT_EQ(list.IndexOf(u"C"), 1);
  EXPECT_EQ(list.IndexOf(u"a"), -1);
  list.AddStrings(list);
  EXPECT_EQ(list.ToArray(), (TStringArray{u"b", u"c", u"d", u"b", u"c", u"d"}));
  EXPECT_EQ(list.GetObjects(5), &first);
  list.Insert(0, list[2]);  // a text of the list itself
  EXPECT_EQ(list[0], u"d");
  EXPECT_THROW(list.Exchange(0, 7), EStringListError);
  EXPECT_THROW(list.Delete(-1), EStringListError);
}

TEST(StringList, SortedListKeepsOrderAndItsRuleForDuplicates) {
  const TStringArray input{u"b", u"C", u"a", u"B", u"ä", u"Ä", u"c"};
  for (const bool caseSensitive : {false, true}) {
    TStringList single;
    TStringList bulk;
    for (TStringList* list : {&single, &bulk}) {
      list->SetCaseSensitive(caseSensitive);
      list->SetSorted(true);
    }
    for (const TString& text : input) single.Add(text);
    bulk.Add(u"b");
    bulk.AddStrings(input);
    EXPECT_EQ(single.ToArray(), caseSensitive
                                    ? (TStringArray{u"B", u"C", u"a", u"b", u"c", u"Ä", u"ä"})
                                    : (TStringArray{u"a", u"b", u"C", u"ä"}));
    EXPECT_EQ(bulk.ToArray(), single.ToArray());
    int index = 0;
    EXPECT_TRUE(bulk.Find(u"a", index));
  }

  TStringList list{u"x", u"X", u"a"};
  list.SetSorted(true);
  EXPECT_EQ(list.ToArray(), (TStringArray{u"a", u"x", u"X"}));
  EXPECT_EQ(list.IndexOf(u"A"), 0);
  EXPECT_EQ(list.IndexOf(u"b"), -1);
  EXPECT_THROW(list.Insert(0, u"z"), EStringListError);
  EXPECT_THROW(list.Put(0, u"z"), EStringListError);
  list.SetDuplicates(dupAccept);
  list.Add(u"A");
  EXPECT_EQ(list.GetCount(), 4);
  list.SetDuplicates(dupError);
  EXPECT_THROW(list.Add(u"A"), EStringListError);
  EXPECT_THROW(list.AddStrings({u"n", u"N"}), EStringListError);
  EXPECT_THROW(list.AddStrings({u"n", u"X"}), EStringListError);
  EXPECT_EQ(list.GetCount(), 4);
}

TEST(StringList, SortsByACallersOrder) {
  TStringList list{u"ccc", u"a", u"bb", u"A", u"dd"};
  list.CustomSort([](const TStringList& strings, int a, int b) {
    return static_cast<int>(strings[a].size()) - static_cast<int>(strings[b].size());
  });
  EXPECT_EQ(list.ToArray(), (TStringArray{u"a", u"A", u"bb", u"dd", u"ccc"}));
  EXPECT_THROW(list.CustomSort([](const TStringList&, int, int) -> int { throw 1; }), int);
  EXPECT_EQ(list[4], u"ccc");
}

TEST(StringList, OwnedObjectsEndWithTheirTexts) {
  int count = 0;
  {
    TStringList list;
    list.SetOwnsObjects(true);
    for (int i = 0; i < 5; ++i) list.AddObject(IntToStr(i), new TCounted(count));
    list.Delete(1);
    EXPECT_EQ(count, 4);
    list.SetObjects(0, new TCounted(count));
    EXPECT_EQ(count, 4);
    list.SetObjects(0, list.GetObjects(0));
    list.Sort();
    EXPECT_EQ(count, 4);
  }
  EXPECT_EQ(count, 0);
}

TEST(StringList, TellsOfEachChangeAndOnceForABracket) {
  TStringList list;
  TString log;
  list.OnChanging = [&](TObject*) { log += u"<"; };
  list.OnChange = [&](TObject*) { log += u">"; };
  list.Add(u"a");
  list.Put(0, u"b");
  list.SetText(u"c\nb\na");
  list.AddStrings({u"x", u"y"});
  EXPECT_EQ(std::exchange(log, {}), u"<><><><>");
  list.BeginUpdate();
  list.WithinUpdate([&] { list.Clear(); });
  list.Add(u"z");
  list.EndUpdate();
  EXPECT_EQ(std::exchange(log, {}), u"<>");
  EXPECT_THROW(list.WithinUpdate([&] { list.Get(9); }), EStringListError);
  EXPECT_FALSE(list.IsUpdating());
}

TEST(StringList, NamesAndValues) {
  TStringList list{u"Colour=red", u"plain", u"empty=", u"a=b=c", u"COLOUR=blue"};
  EXPECT_EQ(list.GetValues(u"colour"), u"red");
  EXPECT_EQ(list.GetValues(u"A"), u"b=c");
  EXPECT_EQ(list.GetValues(u"plain"), u"");
  list.SetValues(u"colour", u"green");
  list.SetValues(u"new", u"1");
  list.SetValues(u"a", u"");
  list.SetValueFromIndex(2, u"full");
  EXPECT_EQ(list.ToArray(),
            (TStringArray{u"colour=green", u"plain", u"empty=full", u"COLOUR=blue", u"new=1"}));
}

TEST(StringList, LinesOfAText) {
  const struct {
    TString Text;
    TStringArray Lines;
  } cases[] = {
      {u"", {}},
      {u"a\r\nb\nc\rd", {u"a", u"b", u"c", u"d"}},
      {u"a\n", {u"a"}},
      {u"a\n\rb", {u"a", u"", u"b"}},
      {TString(u"a\0b\nc", 5), {TString(u"a\0b", 3), u"c"}},
  };
  for (const auto& c : cases) {
    TStringList list;
    list.SetText(c.Text);
    EXPECT_EQ(list.ToArray(), c.Lines);
    TStringList again;
    again.SetText(list.GetText());
    EXPECT_TRUE(again.Equals(list));
  }
  TStringList list{u"a", u"b"};
  list.SetLineBreak(u"--");
  EXPECT_EQ(list.GetText(), u"a--b--");
  list.SetTrailingLineBreak(false);
  EXPECT_EQ(list.GetText(), u"a--b");
  list.SetText(u"x--y\nz");
  EXPECT_EQ(list[1], u"y\nz");
}

TEST(StringList, DelimitedTextReads) {
  const struct {
    TString Text;
    bool Strict;
    TStringArray Expected;
  } cases[] = {
      {u" a , b c ", false, {u"a", u"b", u"c"}},
      {u" a , b c ", true, {u" a ", u" b c "}},
      {u"\"a, b\",\"c\"\"d\"", false, {u"a, b", u"c\"d"}},
      {u"\"a\"b,c", true, {u"ab", u"c"}},
      {u"\"open,end", false, {u"open,end"}},
      {u"\"\"", false, {u""}},
      {u"   ", false, {}},
  };
  for (const auto& c : cases) {
    TStringList list;
    list.SetStrictDelimiter(c.Strict);
    list.SetDelimitedText(c.Text);
    EXPECT_EQ(list.ToArray(), c.Expected) << ToUtf8(c.Text) << c.Strict;
  }
}

TEST(StringList, DelimitedTextComesBack) {
  const TStringArray lists[] = {
      {},       {u""},     {u"a", u""},   {u"\"\"\""},        {u"a b", u"c,d"},
      {u"x;y"}, {u"a\nb"}, {u"''", u","}, {TString(1, u'\0')}};
  for (const char16_t delimiter : {u',', u' ', u'|'})
    for (const char16_t quote : {u'"', u'\''})
      for (const bool strict : {false, true})
        for (const TStringArray& texts : lists) {
          TStringList list(texts);
          list.SetDelimiter(delimiter);
          list.SetQuoteChar(quote);
          list.SetStrictDelimiter(strict);
          const TString joined = list.GetDelimitedText();
          list.SetDelimitedText(joined);
          EXPECT_EQ(list.ToArray(), texts) << ToUtf8(joined);
          list.SetCommaText(list.GetCommaText());
          EXPECT_EQ(list.ToArray(), texts);
        }
  TStringList list{u"a b", u"c"};
  list.SetDelimiter(u'|');
  list.SetStrictDelimiter(true);
  TStringList copy;
  copy.Assign(&list);
  EXPECT_EQ(copy.GetDelimitedText(), u"a b|c");
}

TEST(StringList, FilesKeepTheirEncoding) {
  const TTempFolder folder;
  const std::pair<std::string, TEncoding> cases[] = {
      {"\xEF\xBB\xBF\xC3\xA4\r\nb\r\n", TEncoding::UTF8()},
      {std::string("\xFE\xFF\0\xE4\0\r\0\n", 8), TEncoding::BigEndianUnicode()},
      {"plain\r\n", TEncoding::UTF8()},
  };
  for (const auto& [bytes, encoding] : cases) {
    folder.Write("file", bytes);
    TStringList list;
    list.LoadFromFile(folder.Path("file"));
    EXPECT_EQ(list.GetEncoding(), encoding);
    list.SaveToFile(folder.Path("copy"));
    EXPECT_EQ(folder.Read("copy"), bytes);
  }
  TStringList list{u"€"};
  list.SetWriteBOM(false);
  Ref<IStream> stream;
  ASSERT_EQ(Api().SHCreateStreamOnFileEx(W(folder.Path("stream")), STGM_READWRITE | STGM_CREATE, 0,
                                         TRUE, nullptr, stream.Put()),
            S_OK);
  list.SaveToStream(*stream.Get(), TEncoding::BigEndianUnicode());
  LARGE_INTEGER start{};
  ASSERT_EQ(stream->Seek(start, 0, nullptr), S_OK);
  list.Clear();
  list.LoadFromStream(*stream.Get(), TEncoding::BigEndianUnicode());
  EXPECT_EQ(list.ToArray(), TStringArray{u"€"});
  stream.Reset();
  EXPECT_EQ(folder.Read("stream"), std::string("\x20\xAC\0\r\0\n", 6));
}

// Whichever call fails: the file is as it was or as it should be, the failure is
// told with the path, and nothing is left beside it.
TEST(FileContent, FailedWriteLeavesTheOldFile) {
  const TTempFolder folder;
  const TString path = folder.Path("file");
  const int failures = testkit::SweepFaults(
      [&] {
        folder.Write("file", "old");
        try {
          ReplaceFileContent(path, "new content");
          EXPECT_EQ(folder.Read("file"), "new content");
        } catch (const EFileError& error) {
          EXPECT_EQ(folder.Read("file"), "old");
          EXPECT_TRUE(Contains(error.GetMessage(), path));
          EXPECT_EQ(error.GetErrorCode(), DWORD{ERROR_DISK_FULL});
        }
      },
      [&](const std::string& failed) {
        EXPECT_EQ(folder.Count(), failed == "DeleteFileW" ? 2 : 1) << failed;
      },
      ERROR_DISK_FULL);
  EXPECT_GE(failures, 4);

  EXPECT_THROW(ReadFileContent(folder.Path("none")), EFileError);
  EXPECT_THROW(ReplaceFileContent(folder.Path("none/file"), "x"), EFileError);
  const std::string big(3'000'000, 'x');
  ReplaceFileContent(path, big);
  EXPECT_EQ(ReadFileContent(path), big);
}

}  // namespace
}  // namespace oak::tests
