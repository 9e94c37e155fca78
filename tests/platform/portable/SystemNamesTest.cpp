// Native names and paths under Windows names.
#include <random>

#include "tests/platform/portable/SystemTest.h"

namespace oak::test {
namespace {

struct TNameCase {
  std::string Native;
  TString Windows;
};

TEST(SystemNames, KnownPairs) {
  const TNameCase cases[] = {
      {"\xC3\xA4\xE2\x82\xAC", u"ä€"},
      {"\xF0\x9F\x98\x80", u"\xD83D\xDE00"},
      {"a:b",
       u"a\xF03A"
       u"b"},
      {"what?*<>|\"", u"what\xF03F\xF02A\xF03C\xF03E\xF07C\xF022"},
      {"\xFF\xFE", u"\xF0FF\xF0FE"},
      {"\xC0\xAF", u"\xF0C0\xF0AF"},                      // an overlong "/"
      {"\xED\xA0\x80", u"\xF0ED\xF0A0\xF080"},            // a surrogate
      {"\xF4\x90\x80\x80", u"\xF0F4\xF090\xF080\xF080"},  // beyond the last character
      {"\xEF\x80\xAA", u"\xF0EF\xF080\xF0AA"},            // U+F02A itself
  };
  for (const TNameCase& c : cases) {
    EXPECT_EQ(Show(NameFromNative(c.Native)), Show(c.Windows));
    EXPECT_EQ(NameToNative(NameFromNative(c.Native)), c.Native) << Show(c.Windows);
  }
}

TEST(SystemNames, AnyBytesComeBack) {
  std::mt19937 random(7);
  const char* const pieces[] = {"\xEF\x80\xAA", "\xEF\x83\xBF", "\xC3",        "\xA4", "a",
                                "\\",           "\xF0\x9F",     "\xED\xB0\x80"};
  for (int round = 0; round < 20000; ++round) {
    std::string name;
    const std::size_t length = random() % 12 + 1;
    while (name.size() < length) {
      if (random() % 2) {
        name += pieces[random() % std::size(pieces)];
      } else {
        const auto byte = static_cast<char>(random() % 255 + 1);
        if (byte != '/') name += byte;
      }
    }
    const TString windows = NameFromNative(name);
    ASSERT_EQ(NameToNative(windows), name);
    ASSERT_EQ(windows.find_first_of(u"\"*:<>?\\|/"), TString::npos);
  }
}

TEST(SystemNames, ImpossibleNames) {
  for (const TString& name : {TString(u""), TString(u"a/b"), TString(u"a\\b"), TString(u"a:b"),
                              TString(u"*"), TString(u"\x01"), TString(u"a\0b", 3)})
    EXPECT_EQ(NameToNative(name), "") << Show(name);
  // No escape leads out of its directory or ends the name.
  EXPECT_EQ(NameToNative(u"\xF02F"), "\xEF\x80\xAF");
  EXPECT_EQ(NameToNative(u"\xF000"), "\xEF\x80\x80");
  EXPECT_EQ(NameToNative(u"\xF02E\xF02E"), "\xEF\x80\xAE\xEF\x80\xAE");
  EXPECT_FALSE(IsValidFileName(u".."));
  EXPECT_FALSE(IsValidFileName(TString(256, u'x')));
  EXPECT_FALSE(IsValidFileName(TString(128, u'ä')));  // 256 bytes
  EXPECT_TRUE(IsValidFileName(TString(255, u'x')));
}

class SystemPathMapping : public TSystemTest {
 protected:
  SystemPathMapping() {
    MakeDirectory("inner/deep");
    MakeDirectory("share");
    MapDrive(u'u', Root() + "/inner/", TPortableDriveKind::Removable);
    MapShare(u"Server", u"Public", Root() + "/share");
  }
  std::string Relative(const std::optional<std::string>& native) const {
    if (!native) return "(none)";
    return native->starts_with(Root()) ? "~" + native->substr(Root().size()) : *native;
  }
};

TEST_F(SystemPathMapping, WindowsToNative) {
  struct {
    TString Path;
    const char* Native;
  } const cases[] = {
      {u"T:\\", "~"},
      {u"t:\\a\\b.txt", "~/a/b.txt"},
      {u"T:\\a\\.\\b\\..\\c\\\\d\\", "~/a/c/d"},
      {u"T:\\..\\..\\..\\x", "~/x"},
      {u"U:\\..\\share", "~/inner/share"},
      {u"Q:\\x", "(none)"},
      {u"\\\\?\\T:\\a", "~/a"},
      {u"\\\\?\\T:\\a\\..\\b", "(none)"},  // literal: ".." is no name
      {u"\\\\?\\T:\\a/b", "(none)"},
      {u"\\\\.\\T:\\a", "~/a"},
      {u"\\\\SERVER\\public\\f", "~/share/f"},
      {u"\\\\server\\public\\..\\..\\x", "~/share/x"},
      {u"\\\\?\\UNC\\server\\Public\\f", "~/share/f"},
      {u"\\\\server\\other\\f", "(none)"},
      {u"T:\\a:stream", "(none)"},
      {u"T:\\a*", "(none)"},
      {VolumeNameOfDrive(u'U') + u"a", "~/inner/a"},
      {ExcludeTrailingPathDelimiter(VolumeNameOfDrive(u'U')), "~/inner"},
      {u"\\\\?\\Volume{00000000-0000-0000-0000-000000000000}\\", "(none)"},
  };
  for (const auto& c : cases) EXPECT_EQ(Relative(NativePathText(c.Path)), c.Native) << Show(c.Path);
  EXPECT_FALSE(NativePathText(TString(u"T:\\a\0b", 6)));
}

TEST_F(SystemPathMapping, NativeToWindowsTakesTheLongestDrive) {
  struct {
    std::string Native;
    TString Path;
  } const cases[] = {
      {Root(), u"T:\\"},
      {Root() + "/a//b/./c", u"T:\\a\\b\\c"},
      {Root() + "/inner", u"U:\\"},
      {Root() + "/innermost", u"T:\\innermost"},
      {Root() + "/inner/../x", u"T:\\x"},
      {Root() + "/share/x", u"\\\\Server\\Public\\x"},
      {"/", u""},
      {"", u""},
  };
  for (const auto& c : cases) EXPECT_EQ(Show(WindowsPath(c.Native)), Show(c.Path)) << c.Native;
  MapDrive(u'C', "/");
  EXPECT_EQ(Show(WindowsPath("/etc/passwd")), "C:\\etc\\passwd");
  EXPECT_EQ(Show(WindowsPath(Root() + "/x")), "T:\\x");
}

TEST_F(SystemPathMapping, LettersOfOtherCaseAreFound) {
  MakeDirectory("Dir/SubDir");
  WriteFile("Dir/SubDir/Datei Ä.txt");
  WriteFile("Dir/same");
  WriteFile("Dir/SAME");
  struct {
    TString Path;
    const char* Native;
  } const cases[] = {
      {u"T:\\dir\\SUBDIR\\datei ä.TXT", "~/Dir/SubDir/Datei Ä.txt"},
      {u"T:\\DIR\\new.txt", "~/Dir/new.txt"},
      {u"T:\\dir\\SAME", "~/Dir/SAME"},
      {u"T:\\dir\\same", "~/Dir/same"},
      {u"T:\\dir\\Same", "~/Dir/SAME"},  // neither: the first in byte order
  };
  for (const auto& c : cases) EXPECT_EQ(Relative(NativePath(c.Path)), c.Native) << Show(c.Path);
}

}  // namespace
}  // namespace oak::test
