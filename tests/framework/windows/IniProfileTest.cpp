// Ini files as the system's own functions read and write them.
#include <gtest/gtest.h>

#include "oak/framework/IniFile.h"
#include "tests/framework/TempFolder.h"

namespace oak::tests {
namespace {

TString ReadProfile(const TString& path, const TString& section, const TString& key) {
  TString buffer(200, u'\0');
  const DWORD size = ::GetPrivateProfileStringW(W(section), W(key), L"?", WBuffer(buffer),
                                                static_cast<DWORD>(buffer.size()), W(path));
  return buffer.substr(0, size);
}

void FlushProfile(const TString& path) {
  ::WritePrivateProfileStringW(nullptr, nullptr, nullptr, W(path));
}

TEST(IniProfile, EachReadsWhatTheOtherWrote) {
  const TTempFolder folder;
  const TString path = folder.Path("a.ini");
  const struct {
    TString Section, Key, Value;
  } entries[] = {{u"Window", u"Left", u"10"},       {u"Window", u"Title", u" Grüße \u20AC "},
                 {u"Window", u"quoted", u"\"x\""},  {u"Paths", u"C:\\a b\\*", u""},
                 {u"Paths", u"x[1]", u"a=b ; c"},   {u"[odd]", u"k", u"1"},
                 {u"\u6F22\u5B57", u"\u20AC", u"2"}};
  TIniFile ini(path);
  for (const auto& entry : entries) ini.WriteString(entry.Section, entry.Key, entry.Value);
  ini.UpdateFile();
  for (const auto& entry : entries)
    EXPECT_EQ(ReadProfile(path, entry.Section, entry.Key), entry.Value) << ToUtf8(entry.Key);

  EXPECT_TRUE(::WritePrivateProfileStringW(L"Window", L"Left", L"20", W(path)));
  EXPECT_TRUE(::WritePrivateProfileStringW(L"New", L"\x20AC", L"\x00E4", W(path)));
  FlushProfile(path);
  ini.Reload();
  EXPECT_EQ(ini.ReadInteger(u"window", u"left"), 20);
  EXPECT_EQ(ini.ReadString(u"new", u"\u20AC"), u"ä");
  EXPECT_EQ(ini.ReadString(u"Window", u"title"), u" Grüße \u20AC ");
}

}  // namespace
}  // namespace oak::tests
