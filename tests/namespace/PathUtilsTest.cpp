#include "oak/namespace/Oak.Shell.PathUtils.h"

#include <gtest/gtest.h>

#include "oak/namespace/Oak.Shell.Types.h"
#include "testkit/ScopedApi.h"
#include "tests/MessageOf.h"

namespace oak {
namespace {

using testkit::TScopedApi;

/// Answers a call that fills a buffer, as the system does.
DWORD Fill(TStringView text, LPWSTR buffer, DWORD size) {
  if (text.size() >= size) return static_cast<DWORD>(text.size() + 1);
  text.copy(reinterpret_cast<char16_t*>(buffer), text.size());
  buffer[text.size()] = 0;
  return static_cast<DWORD>(text.size());
}

/// The current directory, for the span of a test.
class TCurrentDir {
 public:
  explicit TCurrentDir(TStringView path)
      : fScoped(Api().GetCurrentDirectoryW, [path = TString(path)](DWORD size, LPWSTR buffer) {
          return Fill(path, buffer, size);
        }) {}

 private:
  TScopedApi<decltype(TApi::GetCurrentDirectoryW)> fScoped;
};

struct TRow {
  TString Input;
  TString Expected;
};

TEST(PathUtils, IsRootedTellsRootsFromNames) {
  const TString volume = u"Volume{01234567-89ab-cdef-0123-456789abcdef}";
  ASSERT_EQ(volume.size(), 44u);
  for (const TString& path :
       {TString(u"C:"), TString(u"c:\\x"), TString(u"z:x"), TString(u"\\\\"),
        TString(u"\\\\server"), TString(u"\\\\?\\C:\\x"), TString(u"http://x"),
        TString(u"file:\\x"), TString(u"localhost:8080"), TString(u"ab:c"), volume,
        volume + u"\\x"})
    EXPECT_TRUE(TPathUtils::IsRooted(path)) << ToUtf8(path);
  for (const TString& path :
       {TString(), TString(u"C"), TString(u"name"), TString(u"\\x"), TString(u"1:"), TString(u"::"),
        TString(u"é:\\"), u"v" + volume.substr(1), volume.substr(0, 43),
        volume.substr(0, 43) + u"x"})
    EXPECT_FALSE(TPathUtils::IsRooted(path)) << ToUtf8(path);
}

TEST(PathUtils, UnicodeCallPathBeginsAtTheLimitOrOnDemand) {
  const TString drive247 = u"C:\\" + TString(244, u'x');
  const TString drive248 = drive247 + u"x";
  const TString unc248 = u"\\\\server\\" + TString(239, u'x');
  struct {
    TString Path;
    bool Force;
    TString Expected;
  } const rows[] = {
      {drive247, false, drive247},
      {drive248, false, u"\\\\?\\" + drive248},
      {unc248, false, u"\\\\?\\UNC\\server\\" + TString(239, u'x')},
      {u"C:\\x", true, u"\\\\?\\C:\\x"},
      {u"C:", true, u"\\\\?\\C:"},
      {u"\\\\s", true, u"\\\\?\\\\\\s"},  // three characters are too few for a server
      {u"\\\\s\\d", true, u"\\\\?\\UNC\\s\\d"},
      {u"\\\\?\\C:\\x", true, u"\\\\?\\C:\\x"},
      {u"\\\\?\\UNC\\s\\d", true, u"\\\\?\\UNC\\s\\d"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(TPathUtils::GetUnicodeAPICallPath(row.Path, true, row.Force), row.Expected);
  EXPECT_EQ(TPathUtils::GetUnicodeAPICallPath(u"C:\\a\\..\\b", false, true), u"\\\\?\\C:\\b");
}

TEST(PathUtils, RelativePartsAreRemovedBetweenDelimiters) {
  const TRow rows[] = {
      {u"C:\\a\\b", u"C:\\a\\b"},
      {u"C:\\a\\.\\b\\..\\c", u"C:\\a\\c"},
      {u"C:\\..\\..\\a", u"C:\\a"},
      {u"C:\\a\\..", u"C:"},
      {u"C:", u"C:"},
      {u"::", u"::\\"},
      {u"a\\b\\..", u"\\a"},
      {u"..\\a", u"\\a"},
      {u"a .\\ ..", u"\\a .\\ .."},
      {u"\\\\server\\share\\..\\x", u"\\\\server\\x"},
      {u"\\a\\..\\..\\..\\b", u"\\b"},
  };
  for (const TRow& row : rows)
    EXPECT_EQ(TPathUtils::RemoveRelativeParts(row.Input, u'\\'), row.Expected) << ToUtf8(row.Input);
  EXPECT_EQ(TPathUtils::RemoveRelativeParts(u"a/./b/../c", u'/'), u"/a/c");
}

TEST(PathUtils, LongPathsKeepTheirDriveAndNeedNoSystem) {
  const TScopedApi missing(Api().PathCanonicalizeW, [](LPWSTR, LPCWSTR) -> BOOL {
    throw std::logic_error("not for long paths");
  });
  TString path = u"C:";
  for (int i = 0; i < 200; ++i) path += u"\\..";
  EXPECT_EQ(TPathUtils::RemoveRelativeParts(path + u"\\end"), u"C:\\end");

  // A million parts take time in proportion, not its square.
  TString hostile;
  for (int i = 0; i < 500'000; ++i) hostile += u"a\\";
  for (int i = 0; i < 500'000; ++i) hostile += u"..\\";
  EXPECT_EQ(TPathUtils::RemoveRelativeParts(hostile), u"");
}

TEST(PathUtils, CombineJoinsBySystemOrByHand) {
  const TString longName(300, u'n');
  struct {
    TString Base, Relative, Expected;
  } const rows[] = {
      {u"C:\\a", u"b", u"C:\\a\\b"},
      {u"C:\\a", u"\\b", u"C:\\a\\b"},
      {u"C:\\a", u"\\\\server\\x", u"\\\\server\\x"},
      {u"C:\\a", u"..\\b", u"C:\\b"},
      {u"\\\\?\\C:\\a", u"b", u"\\\\?\\C:\\a\\b"},
      {u"", u"x\\y", u"x\\y"},
      {u"a", u"b", u"a\\b"},
      {u"a", u".\\\\b", u"a\\b"},
      {u"a", u"localhost:8080", u"localhost:8080"},
      {u"C:\\" + longName, u"b", u"C:\\" + longName + u"\\b"},
      {u"C:\\" + longName + u"\\", u"\\b", u"C:\\" + longName + u"\\b"},
      {u"C:\\a", u".\\" + longName, u"C:\\a\\" + longName},
      {u"C:", longName, u"C:" + longName},
  };
  for (const auto& row : rows)
    EXPECT_EQ(TPathUtils::Combine(row.Base, row.Relative), row.Expected)
        << ToUtf8(row.Base) << " + " << ToUtf8(row.Relative);
  EXPECT_EQ(tests::MessageOf<EArgumentException>([] { TPathUtils::Combine(u"", u""); }),
            u"Both parameters (BasePath and RelativePath) are empty.");
}

TEST(PathUtils, MakeCanonicMakesAbsoluteAndPlain) {
  const TCurrentDir current(u"D:\\work\\here");
  const TScopedApi longNames(Api().GetLongPathNameW, [](LPCWSTR path, LPWSTR buffer, DWORD size) {
    return FromW(path) == u"C:\\PROGRA~1\\x" ? Fill(u"C:\\Program Files\\x", buffer, size)
                                             : DWORD{0};
  });
  const TRow rows[] = {
      {u"http://host/a/../b", u"http://host/a/../b"},
      {u"C:x\\y", u"C:\\x\\y"},
      {u"C:\\PROGRA~1\\x", u"C:\\Program Files\\x"},
      {u"C:\\none~1", u"C:\\none~1"},
      {u"\\top", u"D:\\top"},
      {u"sub\\..\\x", u"D:\\work\\here\\x"},
      {u"", u"D:\\work\\here"},
      {u"C:\\a\\\\b\\\\\\c", u"C:\\a\\b\\c"},
      {u"\\\\server\\\\share\\x", u"\\\\server\\share\\x"},
      {u"\\\\fe80::1%4\\share\\x", u"\\\\fe80--1%4.ipv6-literal.net\\share\\x"},
      {u"\\\\::1", u"\\\\--1.ipv6-literal.net"},
      {u"\\\\1.2.3.4\\share", u"\\\\1.2.3.4\\share"},
      {u"\\\\?\\C:\\x", u"\\\\?\\C:\\x"},
      {u"C:\\dir\\*", u"C:\\dir\\"},
      {u"\\\\*", u"\\\\*"},
      {u"\\\\server\\*", u"\\\\server\\"},
  };
  for (const TRow& row : rows)
    EXPECT_EQ(TPathUtils::MakeCanonic(row.Input), row.Expected) << ToUtf8(row.Input);
}

TEST(PathUtils, NothingRaisesWithoutACurrentDirectory) {
  const TScopedApi failing(Api().GetCurrentDirectoryW, [](DWORD, LPWSTR) { return DWORD{0}; });
  EXPECT_EQ(TPathUtils::GetCurrentDir(), u"");
  EXPECT_EQ(TPathUtils::GetCurrentDrive(), u"");
  EXPECT_EQ(TPathUtils::MakeCanonic(u""), u"");
  EXPECT_EQ(TPathUtils::MakeCanonic(u"x"), u"x");
}

TEST(PathUtils, CurrentDirectoryIsReadWithoutRedirection) {
  int depth = 0;
  const TScopedApi off(Api().Wow64DisableWow64FsRedirection,
                       [&](PVOID*) { return BOOL{++depth > 0}; });
  const TScopedApi back(Api().Wow64RevertWow64FsRedirection,
                        [&](PVOID) { return BOOL{--depth >= 0}; });
  const TScopedApi dir(Api().GetCurrentDirectoryW, [&](DWORD size, LPWSTR buffer) {
    return Fill(depth == 1 ? u"C:\\true" : u"C:\\redirected", buffer, size);
  });
  EXPECT_EQ(TPathUtils::GetCurrentDir(), u"C:\\true");
  EXPECT_EQ(TPathUtils::GetCurrentDrive(), u"C:");
  EXPECT_EQ(depth, 0);
}

TEST(PathUtils, ReparsePointsAreJudgedByOneLookUp) {
  TString asked;
  DWORD attributes = 0;
  HANDLE answer = reinterpret_cast<HANDLE>(std::uintptr_t{0x1234});
  int closed = 0;
  const TScopedApi find(Api().FindFirstFileW, [&](LPCWSTR path, WIN32_FIND_DATAW* data) {
    asked = FromW(path);
    data->dwFileAttributes = attributes;
    return answer;
  });
  const TScopedApi close(Api().FindClose, [&](HANDLE) { return BOOL{++closed}; });

  attributes = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT;
  EXPECT_TRUE(TPathUtils::IsReparsePoint(u"C:\\link\\"));
  EXPECT_EQ(asked, u"C:\\link");
  attributes = FILE_ATTRIBUTE_DIRECTORY;
  EXPECT_FALSE(TPathUtils::IsReparsePoint(u"C:\\plain"));
  attributes = 0xFFFFFFFF;
  const TString longPath = u"C:\\" + TString(245, u'x');
  EXPECT_FALSE(TPathUtils::IsReparsePoint(longPath));
  EXPECT_EQ(asked, u"\\\\?\\" + longPath);
  answer = INVALID_HANDLE_VALUE;
  EXPECT_FALSE(TPathUtils::IsReparsePoint(u"C:\\gone"));
  EXPECT_EQ(closed, 3) << "only what was opened";
}

}  // namespace
}  // namespace oak
