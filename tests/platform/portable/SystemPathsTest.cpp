// Path functions, drives and volumes.
#include "tests/platform/portable/SystemTest.h"

namespace oak::test {
namespace {

TEST(SystemPaths, Combine) {
  struct {
    LPCWSTR Base;
    LPCWSTR More;
    TStringView Result;
  } const cases[] = {{u"C:\\a\\", u"b\\", u"C:\\a\\b\\"},
                     {u"C:", u"b", u"C:\\b"},
                     {u"C:\\a", u"..\\..\\b", u"C:\\b"},
                     {u"C:\\a\\.\\b\\..", u"c\\..\\", u"C:\\a\\"},
                     {u"\\\\srv\\shr\\..", u"x", u"\\\\srv\\shr\\x"},
                     {u"\\\\?\\C:\\a\\..", u"..\\b", u"\\\\?\\C:\\b"},
                     {u"\\\\srv\\shr\\a", u"\\b", u"\\\\srv\\shr\\b"},
                     {u"C:\\a", u"\\\\srv\\shr", u"\\\\srv\\shr"},
                     {u"C:\\a", nullptr, u"C:\\a"},
                     {u"", u"\\b", u"\\b"}};
  for (const auto& c : cases) {
    TString buffer(MAX_PATH, u'#');
    ASSERT_TRUE(Api().PathCombineW(WBuffer(buffer), c.Base, c.More));
    EXPECT_EQ(Show(FromW(W(buffer))), Show(c.Result))
        << Show(FromW(c.Base)) << " + " << Show(FromW(c.More));
  }
  TString buffer(MAX_PATH, u'#');
  EXPECT_FALSE(Api().PathCombineW(WBuffer(buffer), nullptr, nullptr));
  EXPECT_EQ(buffer[0], u'\0');
  const TString half(130, u'x');
  EXPECT_FALSE(Api().PathCombineW(WBuffer(buffer), W(half), W(half)));
}

using SystemPathsOnDisk = TSystemTest;

TString FullName(LPCWSTR path, TString* name = nullptr) {
  TString buffer(400, u'#');
  LPWSTR last = nullptr;
  const DWORD length = Api().GetFullPathNameW(path, 400, WBuffer(buffer), &last);
  if (name) *name = FromW(last);
  return buffer.substr(0, length);
}

TEST_F(SystemPathsOnDisk, FullNames) {
  MakeDirectory("cur");
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(Native("cur"));
  struct {
    LPCWSTR Path;
    TStringView Full;
    TStringView Name;
  } const cases[] = {
      {u"x", u"T:\\cur\\x", u"x"},
      {u"..\\y/z", u"T:\\y\\z", u"z"},
      {u"\\a", u"T:\\a", u"a"},
      {u"T:", u"T:\\cur", u"cur"},
      {u"Q:", u"Q:\\", u""},
      {u"C:/a/./b/", u"C:\\a\\b\\", u""},
      {u"\\\\s\\h\\..\\x", u"\\\\s\\h\\x", u"x"},
      {u"\\\\?\\C:\\a\\..", u"\\\\?\\C:\\a\\..", u".."},
  };
  for (const auto& c : cases) {
    TString name;
    EXPECT_EQ(Show(FullName(c.Path, &name)), Show(c.Full)) << Show(c.Path);
    EXPECT_EQ(Show(name), Show(c.Name)) << Show(c.Path);
  }
  std::filesystem::current_path(before);
  TString small(4, u'#');
  EXPECT_EQ(Api().GetFullPathNameW(u"C:\\abc", 4, WBuffer(small), nullptr), 7u);
  EXPECT_EQ(small, u"####");
  EXPECT_EQ(ErrorAfter([] { Api().GetFullPathNameW(nullptr, 0, nullptr, nullptr); }),
            ERROR_INVALID_NAME);
}

TEST_F(SystemPathsOnDisk, LongNames) {
  MakeDirectory("Program Files");
  WriteFile("Program Files/ReadMe.txt");
  const auto longName = [](LPCWSTR path) {
    TString buffer(300, u'#');
    const DWORD length = Api().GetLongPathNameW(path, WBuffer(buffer), 300);
    return length ? buffer.substr(0, length) : TString(u"(failed)");
  };
  EXPECT_EQ(Show(longName(u"T:\\PROGRAM FILES\\README.TXT")), "T:\\Program Files\\ReadMe.txt");
  EXPECT_EQ(Show(longName(u"t:\\program files\\")), "t:\\Program Files\\");
  EXPECT_EQ(Show(longName(u"T:\\x\\..\\program files")), "T:\\x\\..\\Program Files");
  EXPECT_EQ(Show(longName(u"T:\\PROGRA~1")), "(failed)");
  EXPECT_EQ(Api().GetLastError(), ERROR_FILE_NOT_FOUND);
}

TEST_F(SystemPathsOnDisk, DrivesAndVolumes) {
  MakeDirectory("usb");
  MakeDirectory("net");
  MapDrive(u'U', Native("usb"), TPortableDriveKind::Removable, u"Stick");
  MapDrive(u'D', Native("no disc"), TPortableDriveKind::CdRom);
  MapDrive(u'N', Native("net"), TPortableDriveKind::Network);
  MapShare(u"srv", u"shr", Native("net"));
  struct {
    LPCWSTR Root;
    UINT Type;
  } const types[] = {{u"T:\\", DRIVE_FIXED},           {u"u:", DRIVE_REMOVABLE},
                     {u"D:\\", DRIVE_CDROM},           {u"N:\\", DRIVE_REMOTE},
                     {u"\\\\srv\\shr", DRIVE_REMOTE},  {u"Q:\\", DRIVE_NO_ROOT_DIR},
                     {u"T:\\usb", DRIVE_NO_ROOT_DIR},  {u"", DRIVE_NO_ROOT_DIR},
                     {u"\\\\x\\y", DRIVE_NO_ROOT_DIR}, {u"\\\\?\\U:\\", DRIVE_REMOVABLE}};
  for (const auto& c : types) EXPECT_EQ(Api().GetDriveTypeW(c.Root), c.Type) << Show(c.Root);
  EXPECT_EQ(Api().GetLogicalDrives(), 1u << 19 | 1u << 20 | 1u << 3 | 1u << 13);

  ULARGE_INTEGER available{}, total{}, free{};
  EXPECT_TRUE(Api().GetDiskFreeSpaceExW(u"T:\\", &available, &total, &free));
  EXPECT_GT(total.QuadPart, free.QuadPart);
  EXPECT_GE(free.QuadPart, available.QuadPart);
  EXPECT_EQ(ErrorAfter([] { Api().GetDiskFreeSpaceExW(u"D:\\", nullptr, nullptr, nullptr); }),
            ERROR_NOT_READY);
  EXPECT_EQ(ErrorAfter([] { Api().GetDiskFreeSpaceExW(u"Q:\\", nullptr, nullptr, nullptr); }),
            ERROR_PATH_NOT_FOUND);

  WCHAR label[32] = {}, system[32] = {};
  DWORD serial = 0, longest = 0, flags = 0;
  EXPECT_TRUE(
      Api().GetVolumeInformationW(u"U:\\", label, 32, &serial, &longest, &flags, system, 32));
  EXPECT_EQ(FromW(label), u"Stick");
  EXPECT_EQ(longest, 255u);
  EXPECT_NE(FromW(system), u"");
  EXPECT_FALSE(
      Api().GetVolumeInformationW(u"U:\\", label, 3, nullptr, nullptr, nullptr, nullptr, 0));
}

TEST_F(SystemPathsOnDisk, VolumeNames) {
  MapDrive(u'U', Root(), TPortableDriveKind::Removable);
  MapDrive(u'N', Root(), TPortableDriveKind::Network);
  WCHAR name[64] = {}, found[64] = {};
  TStringArray names;
  const HANDLE find = Api().FindFirstVolumeW(found, 64);
  ASSERT_NE(find, INVALID_HANDLE_VALUE);
  do {
    names.push_back(FromW(found));
  } while (Api().FindNextVolumeW(find, found, 64));
  EXPECT_EQ(Api().GetLastError(), ERROR_NO_MORE_FILES);
  EXPECT_TRUE(Api().FindVolumeClose(find));
  EXPECT_FALSE(Api().FindVolumeClose(find));
  EXPECT_EQ(names, (TStringArray{VolumeNameOfDrive(u'T'), VolumeNameOfDrive(u'U')}));

  ASSERT_TRUE(Api().GetVolumeNameForVolumeMountPointW(u"U:\\", name, 64));
  EXPECT_EQ(FromW(name), names[1]);
  DWORD length = 0;
  WCHAR paths[8] = {};
  ASSERT_TRUE(Api().GetVolumePathNamesForVolumeNameW(name, paths, 8, &length));
  EXPECT_EQ(TString(paths, length), TString(u"U:\\\0", 5));
  EXPECT_EQ(ErrorAfter([&] { Api().GetVolumeNameForVolumeMountPointW(u"U:", name, 64); }),
            ERROR_INVALID_NAME);
  EXPECT_EQ(ErrorAfter([&] { Api().GetVolumePathNamesForVolumeNameW(name, paths, 2, &length); }),
            ERROR_MORE_DATA);
  ASSERT_TRUE(Api().GetVolumePathNameW(u"T:\\some\\file", paths, 8));
  EXPECT_EQ(FromW(paths), u"T:\\");
}

}  // namespace
}  // namespace oak::test
