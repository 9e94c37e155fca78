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

TStringArray Texts(const TStrings& list) { return list.ToArray(); }

TEST(StringList, KeepsTextsWithTheirObjects) {
  int a = 0;
  TCounted first(a);
  TCounted second(a);
  TStringList list{u"b", u"c"};
  EXPECT_EQ(list.AddObject(u"d", &first), 2);
  list.InsertObject(0, u"a", &second);
  list.Exchange(0, 3);
  EXPECT_EQ(Texts(list), (TStringArray{u"d", u"b", u"c", u"a"}));
  EXPECT_EQ(list.IndexOfObject(&first), 0);
  list.Move(0, 2);
  EXPECT_EQ(Texts(list), (TStringArray{u"b", u"c", u"d", u"a"}));
  list.Move(3, 0);
  EXPECT_EQ(Texts(list), (TStringArray{u"a", u"b", u"c", u"d"}));
  EXPECT_EQ(list.GetObjects(0), &second);
  EXPECT_EQ(list.GetObjects(3), &first);
  list.Delete(0);
  EXPECT_EQ(list.IndexOf(u"C"), 1);
  EXPECT_EQ(list.IndexOf(u"a"), -1);
  list.AddStrings(list);
  EXPECT_EQ(Texts(list), (TStringArray{u"b", u"c", u"d", u"b", u"c", u"d"}));
  EXPECT_EQ(list.GetObjects(5), &first);
  list.Insert(0, list[2]);  // a text of the list itself
  EXPECT_EQ(list[0], u"d");
}

TEST(StringList, BadIndexesAndForbiddenOrderRaise) {
  TStringList list{u"a", u"b"};
  const std::function<void()> outside[] = {[&] { list.Get(-1); },
                                           [&] { list.Get(2); },
                                           [&] { list.Put(2, u""); },
                                           [&] { list.Insert(3, u""); },
                                           [&] { list.Insert(-1, u""); },
                                           [&] { list.Delete(2); },
                                           [&] { list.Exchange(0, 2); },
                                           [&] { list.Move(0, 2); },
                                           [&] { list.Move(-1, 0); },
                                           [&] { list.GetObjects(2); },
                                           [&] { list.SetObjects(2, nullptr); },
                                           [&] { list.GetNames(-1); },
                                           [&] {
                                             int at = 0;
                                             list.Find(u"a", at);
                                           }};
  for (const auto& call : outside) EXPECT_THROW(call(), EStringListError);
  list.SetSorted(true);
  const std::function<void()> unordered[] = {
      [&] { list.Put(0, u"z"); }, [&] { list.Insert(0, u"z"); }, [&] { list.Exchange(0, 1); },
      [&] { list.Move(0, 1); },
      [&] { list.CustomSort([](const TStringList&, int, int) { return 0; }); }};
  for (const auto& call : unordered) EXPECT_THROW(call(), EStringListError);
  EXPECT_EQ(Texts(list), (TStringArray{u"a", u"b"}));
  try {
    list.Get(7);
  } catch (const EStringListError& error) {
    EXPECT_EQ(error.GetMessage(), u"List index out of bounds (7 of 2).");
  }
}

// One by one and in bulk must give the same list.
TEST(StringList, SortedListKeepsOrderAndItsRuleForDuplicates) {
  const TStringArray input{u"b", u"C", u"a", u"B", u"ä", u"Ä", u"c"};
  const struct {
    TDuplicates Duplicates;
    bool CaseSensitive;
    TStringArray Expected;
  } cases[] = {
      {dupIgnore, false, {u"a", u"b", u"C", u"ä"}},
      {dupIgnore, true, {u"B", u"C", u"a", u"b", u"c", u"Ä", u"ä"}},
  };
  for (const auto& c : cases) {
    TStringList single;
    TStringList bulk;
    for (TStringList* list : {&single, &bulk}) {
      list->SetCaseSensitive(c.CaseSensitive);
      list->SetDuplicates(c.Duplicates);
      list->SetSorted(true);
    }
    for (const TString& text : input) single.Add(text);
    bulk.Add(u"b");
    bulk.AddStrings(input);
    EXPECT_EQ(Texts(single), c.Expected);
    EXPECT_EQ(Texts(bulk), c.Expected);
    int index = 0;
    EXPECT_TRUE(bulk.Find(u"a", index));
    EXPECT_FALSE(bulk.Find(u"zz", index));
    EXPECT_EQ(bulk.IndexOf(u"C"), single.IndexOf(u"C"));
  }

  TStringList list{u"x", u"X", u"a"};
  list.SetSorted(true);
  EXPECT_EQ(Texts(list), (TStringArray{u"a", u"x", u"X"}));
  EXPECT_EQ(list.Add(u"X"), 1);
  list.SetDuplicates(dupAccept);
  list.Add(u"A");
  EXPECT_EQ(list.GetCount(), 4);
  list.SetDuplicates(dupError);
  EXPECT_THROW(list.Add(u"A"), EStringListError);
  EXPECT_THROW(list.AddStrings({u"n", u"N"}), EStringListError);
  EXPECT_THROW(list.AddStrings({u"n", u"X"}), EStringListError);
  EXPECT_EQ(list.GetCount(), 4);
  list.AddStrings({u"n", u"m"});
  EXPECT_EQ(list.IndexOf(u"M"), 2);
}

TEST(StringList, SortsByACallersOrder) {
  TStringList list{u"ccc", u"a", u"bb", u"A", u"dd"};
  list.CustomSort([](const TStringList& strings, int a, int b) {
    return static_cast<int>(strings[a].size()) - static_cast<int>(strings[b].size());
  });
  EXPECT_EQ(Texts(list), (TStringArray{u"a", u"A", u"bb", u"dd", u"ccc"}));
  EXPECT_THROW(list.CustomSort([](const TStringList&, int, int) -> int { throw 1; }), int);
  EXPECT_EQ(list.GetCount(), 5);
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
    list.Exchange(0, 1);
    list.Move(0, 3);
    list.Sort();
    EXPECT_EQ(count, 4);
    list.Clear();
    EXPECT_EQ(count, 0);
    list.AddObject(u"x", new TCounted(count));
  }
  EXPECT_EQ(count, 0);
}

TEST(StringList, TellsOfEachChangeAndOnceForABracket) {
  TStringList list;
  TString log;
  list.OnChanging = [&](TObject* sender) { log += sender == &list ? u"<" : u"?"; };
  list.OnChange = [&](TObject*) { log += u">"; };
  const auto take = [&] { return std::exchange(log, TString()); };
  list.Add(u"a");
  list.Put(0, u"b");
  list.Delete(0);
  EXPECT_EQ(take(), u"<><><>");
  list.Clear();  // empty already
  EXPECT_EQ(take(), u"");
  list.SetText(u"c\nb\na");
  list.Sort();
  list.AddStrings({u"x", u"y"});
  EXPECT_EQ(take(), u"<><><>");
  list.BeginUpdate();
  list.BeginUpdate();
  list.Clear();
  list.EndUpdate();
  list.Add(u"z");
  list.EndUpdate();
  list.EndUpdate();  // one too many
  EXPECT_EQ(take(), u"<>");
  EXPECT_THROW(list.WithinUpdate([&] { list.Get(9); }), EStringListError);
  EXPECT_FALSE(list.IsUpdating());
  EXPECT_EQ(take(), u"<>");
  // A handler may go away while it runs.
  list.OnChange = [&](TObject*) {
    list.OnChange = nullptr;
    log += u"last";
  };
  list.Add(u"1");
  list.Add(u"2");
  EXPECT_EQ(take(), u"<last<");
}

TEST(StringList, NamesAndValues) {
  TStringList list{u"Colour=red", u"plain", u"empty=", u"a=b=c", u"COLOUR=blue"};
  EXPECT_EQ(list.GetValues(u"colour"), u"red");
  EXPECT_EQ(list.GetValues(u"A"), u"b=c");
  EXPECT_EQ(list.GetValues(u"plain"), u"");
  EXPECT_EQ(list.GetNames(1), u"");
  EXPECT_EQ(list.GetValueFromIndex(1), u"");
  EXPECT_EQ(list.IndexOfName(u"EMPTY"), 2);
  list.SetValues(u"colour", u"green");
  list.SetValues(u"new", u"1");
  list.SetValues(u"a", u"");
  list.SetValueFromIndex(2, u"full");
  EXPECT_EQ(Texts(list),
            (TStringArray{u"colour=green", u"plain", u"empty=full", u"COLOUR=blue", u"new=1"}));
  list.SetNameValueSeparator(u':');
  list.SetValues(u"x", u"y");
  EXPECT_EQ(list[5], u"x:y");
}

TEST(StringList, LinesOfAText) {
  const struct {
    TString Text;
    TStringArray Lines;
  } cases[] = {
      {u"", {}},
      {u"a", {u"a"}},
      {u"a\r\nb\nc\rd", {u"a", u"b", u"c", u"d"}},
      {u"a\n", {u"a"}},
      {u"\n\n", {u"", u""}},
      {u"a\n\rb", {u"a", u"", u"b"}},
      {TString(u"a\0b\nc", 5), {TString(u"a\0b", 3), u"c"}},
  };
  for (const auto& c : cases) {
    TStringList list;
    list.SetText(c.Text);
    EXPECT_EQ(Texts(list), c.Lines);
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
  EXPECT_EQ(Texts(list), (TStringArray{u"x", u"y\nz"}));
}

TEST(StringList, DelimitedTextReads) {
  const struct {
    TString Text;
    bool Strict;
    TStringArray Expected;
  } cases[] = {
      {u"a,b", false, {u"a", u"b"}},
      {u" a , b c ", false, {u"a", u"b", u"c"}},
      {u" a , b c ", true, {u" a ", u" b c "}},
      {u"a,,b,", false, {u"a", u"", u"b", u""}},
      {u"a,,b,", true, {u"a", u"", u"b", u""}},
      {u"\"a, b\",\"c\"\"d\"", false, {u"a, b", u"c\"d"}},
      {u"\"a\"b,c", false, {u"a", u"b", u"c"}},
      {u"\"a\"b,c", true, {u"ab", u"c"}},
      {u"\"open,end", false, {u"open,end"}},
      {u"\"\"", false, {u""}},
      {u"", false, {}},
      {u"   ", false, {}},
      {u"   ", true, {u"   "}},
      {u",", false, {u"", u""}},
  };
  for (const auto& c : cases) {
    TStringList list;
    list.SetStrictDelimiter(c.Strict);
    list.SetDelimitedText(c.Text);
    EXPECT_EQ(Texts(list), c.Expected) << ToUtf8(c.Text) << c.Strict;
  }
}

TEST(StringList, DelimitedTextComesBack) {
  const TStringArray lists[] = {{},       {u""},       {u"", u""},          {u"a", u""},
                                {u"\""},  {u"\"\"\""}, {u"a b", u"c,d"},    {u" lead", u"trail "},
                                {u"x;y"}, {u"a\nb"},   {u"'", u"''", u","}, {TString(1, u'\0')}};
  for (const char16_t delimiter : {u',', u';', u' ', u'\t', u'|'})
    for (const char16_t quote : {u'"', u'\''})
      for (const bool strict : {false, true})
        for (const TStringArray& texts : lists) {
          TStringList list(texts);
          list.SetDelimiter(delimiter);
          list.SetQuoteChar(quote);
          list.SetStrictDelimiter(strict);
          const TString joined = list.GetDelimitedText();
          list.SetDelimitedText(joined);
          EXPECT_EQ(Texts(list), texts) << ToUtf8(joined);
          list.SetCommaText(list.GetCommaText());
          EXPECT_EQ(Texts(list), texts);
        }
  TStringList list{u"a b", u"c"};
  list.SetDelimiter(u'|');
  list.SetStrictDelimiter(true);
  EXPECT_EQ(list.GetDelimitedText(), u"a b|c");
  EXPECT_EQ(list.GetCommaText(), u"\"a b\",c");
}

TEST(StringList, AssignTakesSettingsAlong) {
  TStringList source{u"a", u"b"};
  source.SetDelimiter(u';');
  source.SetNameValueSeparator(u':');
  TStringList list{u"x"};
  list.Assign(&source);
  EXPECT_TRUE(list.Equals(source));
  EXPECT_EQ(list.GetDelimitedText(), u"a;b");
  list.Assign(&list);
  EXPECT_EQ(list.GetCount(), 2);
  const TComponent other;
  EXPECT_THROW(list.Assign(&other), EConvertError);
}

TEST(StringList, FilesKeepTheirEncoding) {
  const TTempFolder folder;
  const struct {
    std::string Bytes;
    TEncoding Encoding;
  } cases[] = {
      {"\xEF\xBB\xBF\xC3\xA4\r\nb\r\n", TEncoding::UTF8()},
      {std::string("\xFF\xFE\xE4\0\r\0\n\0", 8), TEncoding::Unicode()},
      {std::string("\xFE\xFF\0\xE4\0\r\0\n", 8), TEncoding::BigEndianUnicode()},
      {"plain\r\n", TEncoding::UTF8()},
  };
  for (const auto& c : cases) {
    folder.Write("file", c.Bytes);
    TStringList list;
    list.LoadFromFile(folder.Path("file"));
    EXPECT_EQ(list.GetEncoding(), c.Encoding);
    list.SaveToFile(folder.Path("copy"));
    EXPECT_EQ(folder.Read("copy"), c.Bytes);
  }
  TStringList list{u"€"};
  list.SaveToFile(folder.Path("new"));
  EXPECT_EQ(folder.Read("new"), "\xEF\xBB\xBF\xE2\x82\xAC\r\n");
  list.SetWriteBOM(false);
  list.SaveToFile(folder.Path("new"), TEncoding::BigEndianUnicode());
  EXPECT_EQ(folder.Read("new"), std::string("\x20\xAC\0\r\0\n", 6));
  list.LoadFromFile(folder.Path("new"), TEncoding::BigEndianUnicode());
  EXPECT_EQ(list[0], u"€");

  Ref<IStream> stream;
  ASSERT_EQ(Api().SHCreateStreamOnFileEx(W(folder.Path("stream")), STGM_READWRITE | STGM_CREATE, 0,
                                         TRUE, nullptr, stream.Put()),
            S_OK);
  list.SaveToStream(*stream.Get());
  LARGE_INTEGER start{};
  ASSERT_EQ(stream->Seek(start, 0, nullptr), S_OK);
  list.Clear();
  list.LoadFromStream(*stream.Get(), TEncoding::BigEndianUnicode());
  EXPECT_EQ(Texts(list), TStringArray{u"€"});
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
  EXPECT_THROW(ReplaceFileContent(folder.Path(""), "x"), EFileError);
  std::string big(3'000'000, 'x');
  big[2'999'999] = 'y';
  ReplaceFileContent(path, big);
  EXPECT_EQ(ReadFileContent(path), big);
}

// A step that walks the list for each text would take minutes.
TEST(StringList, HundredThousandTexts) {
  TString text;
  for (int i = 0; i < 100'000; ++i) text += u"name of row " + IntToStr(i * 7919 % 100'000) + u"\n";
  TStringList list;
  list.SetText(text);
  list.SetSorted(true);
  int found = 0;
  for (int i = 0; i < 100'000; ++i) found += list.IndexOf(u"NAME OF ROW " + IntToStr(i)) >= 0;
  EXPECT_EQ(found, 100'000);
  TStringList other;
  other.SetSorted(true);
  other.SetText(text);
  EXPECT_TRUE(other.Equals(list));
  list.Clear();
  EXPECT_EQ(list.GetCount(), 0);
}

}  // namespace
}  // namespace oak::tests
