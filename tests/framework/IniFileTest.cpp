#include "oak/framework/IniFile.h"

#include <gtest/gtest.h>

#include "oak/framework/StringList.h"
#include "oak/platform/Api.h"
#include "testkit/FaultInjection.h"
#include "testkit/ScopedApi.h"
#include "tests/framework/TempFolder.h"

namespace oak::tests {
namespace {

/// A file that is nowhere, with these bytes.
struct TIniText : TIniFile {
  explicit TIniText(std::string_view text) : TIniFile({}, TEncoding::UTF8()) { SetBytes(text); }
};

constexpr std::string_view kSample =
    "; settings\r\n"
    "stray = 1\r\n"
    "\r\n"
    "[Window]\r\n"
    "  Left =  10  \r\n"
    "title = \"  My form \"\r\n"
    "flag\r\n"
    "path=C:\\a=b;c\r\n"
    "; about the list\r\n"
    "[LIST]\r\n"
    "x[1]=[y]\r\n"
    "left=1\r\n"
    "[window] trailing\r\n"
    "left=99\r\n"
    "Right=$1F\r\n"
    "[]\r\n"
    "nameless=1";

TEST(IniFile, Reads) {
  const TIniText ini(kSample);
  const struct {
    TString Section, Key, Expected;
  } cases[] = {
      {u"Window", u"Left", u"10"},
      {u" WINDOW ", u" LEFT ", u"10"},  // the first of two
      {u"window", u"title", u"  My form "},
      {u"window", u"path", u"C:\\a=b;c"},
      {u"window", u"path=C:\\a", u"b;c"},  // what was written under such a key
      {u"window", u"right", u"$1F"},       // the second part of the section
      {u"", u"nameless", u"1"},
      {u"window", u"flag", u"?"},
      {u"window", u"stray", u"?"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(ini.ReadString(c.Section, c.Key, u"?"), c.Expected) << ToUtf8(c.Key);
  TStringList list;
  ini.ReadSection(u"window", list);
  EXPECT_EQ(list.ToArray(), (TStringArray{u"Left", u"title", u"path", u"Right"}));
  list.Clear();
  ini.ReadSections(list);
  EXPECT_EQ(list.ToArray(), (TStringArray{u"Window", u"LIST", u""}));
  list.Clear();
  ini.ReadSectionValues(u"list", list);
  EXPECT_EQ(list.ToArray(), (TStringArray{u"x[1]=[y]", u"left=1"}));
}

TEST(IniFile, Numbers) {
  const std::pair<const char*, int> cases[] = {
      {" -7 ", -7},       {"+5", 5},           {"00", 0},
      {"$fF", 255},       {"0xFFFFFFFF", -1},  {"-2147483648", -2147483647 - 1},
      {"2147483648", 42}, {"0x100000000", 42}, {"99999999999999999999999999", 42},
      {"", 42},           {"-", 42},           {"$", 42},
      {"1 2", 42},        {"--1", 42}};
  for (const auto& [text, number] : cases) {
    const TIniText ini("[s]\nk=\"" + std::string(text) + "\"\n");
    EXPECT_EQ(ini.ReadInteger(u"s", u"k", 42), number) << text;
    EXPECT_EQ(ini.ReadBool(u"s", u"k", true), number != 0) << text;
  }
  TIniText ini("[s]\n");
  ini.WriteInteger(u"s", u"low", -2147483647 - 1);
  ini.WriteBool(u"s", u"yes", true);
  EXPECT_EQ(ini.GetBytes(), "[s]\nlow=-2147483648\nyes=1\n");
}

// Each change alone; everything else in the text stays.
TEST(IniFile, ChangesOnlyWhatIsMeant) {
  const struct {
    const char* Before;
    TString Section, Key, Value;
    const char* After;
  } writes[] = {
      {"[a]\n k = 1 \nl=2\n", u"A", u"K", u"9", "[a]\n k = 9\nl=2\n"},
      {"[a]\nk=1\nk=2\n", u"a", u"k", u"9", "[a]\nk=9\nk=2\n"},
      {"[a]\nk=1\n\n; on b\n[b]\n", u"a", u"n", u"v", "[a]\nk=1\nn=v\n\n; on b\n[b]\n"},
      {"[a]\n[b]\n[a]\nx=1\n", u"a", u"n", u"v", "[a]\nn=v\n[b]\n[a]\nx=1\n"},
      {"[a]\nk=1", u"b", u"n", u"v", "[a]\nk=1\n\n[b]\nn=v\n"},
      {"[a]", u"a", u"n", u"v", "[a]\r\nn=v\r\n"},
      {"x\n", u"b", u"n", u"", "x\n\n[b]\nn=\n"},
      {"[a]\nk=1\n", u"a", u"s", u" v ", "[a]\nk=1\ns=\" v \"\n"},
      {"[a]\rk=1\rl=2\r", u"a", u"m", u"3", "[a]\rk=1\rl=2\rm=3\r"},
  };
  for (const auto& c : writes) {
    TIniText ini(c.Before);
    ini.WriteString(c.Section, c.Key, c.Value);
    EXPECT_EQ(ini.GetBytes(), c.After);
  }
  TIniText ini("[a]\nk=1\nj=2\nk=3\n; c\n[A]\nK=4\n");
  ini.DeleteKey(u"a", u"k");
  EXPECT_EQ(ini.GetBytes(), "[a]\nj=2\n; c\n[A]\n");
  TIniText twice("[z]\nz=1\n\n[a]\n; in a\nk=1\nflag\n\n; about b\n[b]\ny=1\n[A]\nk=2\n");
  twice.EraseSection(u"a");
  EXPECT_EQ(twice.GetBytes(), "[z]\nz=1\n\n; about b\n[b]\ny=1\n");
}

// A list of paths is saved by erasing its section and writing it anew, many times.
TEST(IniFile, RewritingASectionDoesNotGrowTheFile) {
  TIniText ini("[x]\nv=1\n\n[Paths]\n[y]\nv=1\n");
  const TStringArray paths{u"C:\\a\\*", u"\\\\server\\x;y\\*", u"D:\\[1]\\b.txt", u"C:\\=.txt",
                           u"C:\\=.TXT2"};
  std::size_t size = 0;
  for (int round = 0; round < 3; ++round) {
    for (const TString name : {u"Paths", u"x", u"Paths", u"y"}) {
      ini.EraseSection(name);
      for (const TString& path : paths) ini.WriteString(name, path, {});
    }
    if (round == 0) size = ini.GetBytes().size();
  }
  EXPECT_EQ(ini.GetBytes().size(), size);
  TStringList values;
  TIniText(ini.GetBytes()).ReadSectionValues(u"Paths", values);
  for (std::size_t i = 0; i < paths.size(); ++i)
    EXPECT_EQ(values[static_cast<int>(i)], paths[i] + u"=");
}

TEST(IniFile, WhatIsWrittenIsReadBack) {
  const TString keys[] = {u"k", u"a b", u"x]", u"a=b", u"a = c", u"\"q\"", u"C:\\x[1];y", u"Ü"};
  const TString values[] = {u"",      u" x ",          u"\"",           u"\"x\"",          u"'x'",
                            u"x=y=z", u"; no comment", u"[no section]", TString(u"a\0", 2)};
  const TString sections[] = {u"s", u"a]b", u"[a]", u"; x", u"C:\\folder", u"a=b"};
  TIniText ini("");
  for (const TString& section : sections)
    for (const TString& key : keys)
      for (const TString& value : values) {
        ini.WriteString(section, key, value);
        EXPECT_EQ(TIniText(ini.GetBytes()).ReadString(section, key, u"?"), value)
            << ToUtf8(section) << ToUtf8(key);
        ini.DeleteKey(section, key);
        EXPECT_FALSE(ini.ValueExists(section, key));
        ini.WriteString(section, key, value);
      }
}

TEST(IniFile, RefusesWhatNoFileCanHold) {
  TIniText ini("[a]\nk=1\n");
  const TString cases[][3] = {{u"", u"k", u"v"},    {u"a\nb", u"k", u"v"},  {u"a", u" ", u"v"},
                              {u"a", u"[k", u"v"},  {u"a", u" ;k", u"v"},   {u"a", u"=k", u"v"},
                              {u"a", u"k\r", u"v"}, {u"a", u"k", u"1\n[b]"}};
  for (const auto& [section, key, value] : cases)
    EXPECT_THROW(ini.WriteString(section, key, value), EArgumentException) << ToUtf8(key);
  EXPECT_EQ(ini.GetBytes(), "[a]\nk=1\n");
}

TEST(IniFile, KeepsBytesThatAreNoText) {
  const std::string broken = "\xEF\xBB\xBF[a]\nbad=\xFF\xC3(\nk=1\n";
  TIniText ini(broken);
  EXPECT_EQ(ini.ReadString(u"a", u"bad"), u"\uFFFD\uFFFD(");
  ini.WriteString(u"a", u"k", u"2");
  EXPECT_EQ(ini.GetBytes(), "\xEF\xBB\xBF[a]\nbad=\xFF\xC3(\nk=2\n");
  const std::string odd = std::string("\xFF\xFE[\0a\0]\0\n\0k\0=\0", 14) + "\x41";
  EXPECT_EQ(TIniText(odd).GetBytes(), odd);
  // Whatever the system's code page is.
  std::string all = "[a]\nk=1\nbytes=";
  for (int byte = 1; byte < 256; ++byte)
    if (byte != '\n' && byte != '\r') all.push_back(static_cast<char>(byte));
  TIniFile ansi({});
  ansi.SetBytes(all);
  ansi.WriteString(u"a", u"k", u"2");
  EXPECT_EQ(ansi.GetBytes(), "[a]\nk=2" + all.substr(7));
}

TEST(IniFile, FileKeepsItsEncodingUntilItCannotHoldAText) {
  const TTempFolder folder;
  const testkit::TScopedApi page(Api().GetACP, [] { return UINT{1252}; });
  const testkit::TScopedApi from(Api().MultiByteToWideChar, nullptr);
  const testkit::TScopedApi to(Api().WideCharToMultiByte, nullptr);
  const struct {
    std::string Before;
    TString Value;
    std::string After;
  } cases[] = {
      {"[a]\nk=\xE4\n", u"ö", "[a]\nk=\xF6\n"},
      {"\xEF\xBB\xBF[a]\nk=1\n", u"ö", "\xEF\xBB\xBF[a]\nk=\xC3\xB6\n"},
      {"[a]\nk=\n", u"\u20AC", std::string("\xFF\xFE[\0a\0]\0\n\0k\0=\0\xAC\x20\n\0", 18)},
  };
  for (const auto& c : cases) {
    folder.Write("a.ini", c.Before);
    TIniFile ini(folder.Path("a.ini"));
    ini.WriteString(u"a", u"k", c.Value);
    ini.UpdateFile();
    EXPECT_EQ(folder.Read("a.ini"), c.After);
    EXPECT_EQ(TIniFile(folder.Path("a.ini")).ReadString(u"a", u"k"), c.Value);
  }
}

TEST(IniFile, WritesOnlyWhenThereIsSomething) {
  const TTempFolder folder;
  const TString path = folder.Path("a.ini");
  TIniFile ini(path);
  ini.UpdateFile();
  EXPECT_EQ(folder.Count(), 0);
  ini.WriteString(u"a", u"k", u"1");
  ini.UpdateFile();
  ini.WriteString(u"a", u"k", u"1");
  ini.EraseSection(u"none");
  ini.DeleteKey(u"a", u"none");
  EXPECT_FALSE(ini.GetModified());
  ini.WriteString(u"a", u"k", u"2");
  ini.Reload();
  EXPECT_EQ(ini.ReadString(u"a", u"k"), u"1");
  ini.Clear();
  ini.UpdateFile();
  EXPECT_FALSE(TIniFile(path).SectionExists(u"a"));
  TIniFile lost(folder.Path("none/a.ini"));
  lost.WriteString(u"a", u"k", u"1");
  EXPECT_THROW(lost.UpdateFile(), EFileError);
  EXPECT_TRUE(lost.GetModified());
}

TEST(IniFile, FailedUpdateLosesNothing) {
  const TTempFolder folder;
  const std::string old = "[a]\nk=1\n";
  testkit::SweepFaults([&] {
    folder.Write("a.ini", old);
    try {
      TIniFile ini(folder.Path("a.ini"), TEncoding::UTF8());
      ini.WriteString(u"a", u"k", u"2");
      ini.UpdateFile();
      EXPECT_EQ(folder.Read("a.ini"), "[a]\nk=2\n");
    } catch (const EFileError&) {
      EXPECT_EQ(folder.Read("a.ini"), old);
    }
  });
}

}  // namespace
}  // namespace oak::tests
