// Find functions, attributes, and operations on real files.
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <set>
#include <thread>

#include "oak/base/DateTime.h"
#include "oak/platform/portable/PortableRegistry.h"
#include "oak/platform/portable/SystemFiles.h"
#include "tests/platform/portable/SystemTest.h"

namespace oak::test {
namespace {

using SystemFiles = TSystemTest;

std::set<TString> Found(TStringView pattern) {
  std::set<TString> names;
  WIN32_FIND_DATAW data{};
  const HANDLE find = Api().FindFirstFileW(W(TString(pattern)), &data);
  if (find == INVALID_HANDLE_VALUE) return names;
  do {
    names.insert(FromW(data.cFileName));
  } while (Api().FindNextFileW(find, &data));
  EXPECT_EQ(Api().GetLastError(), ERROR_NO_MORE_FILES);
  EXPECT_TRUE(Api().FindClose(find));
  return names;
}

TEST_F(SystemFiles, FindByWildcard) {
  MakeDirectory("d/sub");
  for (const char* name : {"a.txt", "B.TXT", "ab.txt", "noext", "x.tar.gz", ".hidden"})
    WriteFile(std::string("d/") + name);
  using TNames = std::set<TString>;
  struct {
    TStringView Pattern;
    TNames Names;
  } const cases[] = {
      {u"T:\\d\\*.txt", {u"a.txt", u"B.TXT", u"ab.txt"}},
      {u"T:\\D\\??.TXT", {u"a.txt", u"B.TXT", u"ab.txt"}},  // "?" before a dot may be nothing
      {u"T:\\d\\*.", {u"noext", u"sub"}},
      {u"T:\\d\\x.*", {u"x.tar.gz"}},
      {u"T:\\d\\*.*",
       {u".", u"..", u"a.txt", u"B.TXT", u"ab.txt", u"noext", u"x.tar.gz", u".hidden", u"sub"}},
      {u"T:\\*", {u"d"}},  // no "." and ".." in the root of a drive
      {u"T:\\d\\*zzz", {}},
  };
  for (const auto& c : cases) EXPECT_EQ(Found(c.Pattern), c.Names) << Show(c.Pattern);
}

TEST_F(SystemFiles, FindPatternIsNotSlow) {
  const TString name(200, u'a');
  TString pattern;
  for (int i = 0; i < 100; ++i) pattern += u"*a";
  EXPECT_TRUE(MatchesFindPattern(name, pattern));
  EXPECT_FALSE(MatchesFindPattern(name, pattern + u"b"));
}

TEST_F(SystemFiles, LookUpErrors) {
  WriteFile("file");
  MakeDirectory("dir");
  MapDrive(u'E', Root() + "/absent", TPortableDriveKind::CdRom);
  struct {
    LPCWSTR Path;
    DWORD Find;
    DWORD Attributes;
  } const cases[] = {
      {nullptr, ERROR_PATH_NOT_FOUND, ERROR_PATH_NOT_FOUND},
      {u"T:\\missing", ERROR_FILE_NOT_FOUND, ERROR_FILE_NOT_FOUND},
      {u"T:\\file\\x", ERROR_PATH_NOT_FOUND, ERROR_PATH_NOT_FOUND},
      {u"T:\\dir\\", ERROR_FILE_NOT_FOUND, ERROR_SUCCESS},
      {u"T:\\file\\", ERROR_FILE_NOT_FOUND, ERROR_INVALID_NAME},
      {u"T:\\file\\*", ERROR_DIRECTORY, ERROR_INVALID_NAME},
      {u"T:\\d*\\x*", ERROR_INVALID_NAME, ERROR_INVALID_NAME},
      {u"E:\\x", ERROR_NOT_READY, ERROR_NOT_READY},
      {u"\\\\nowhere\\share\\x", ERROR_BAD_NETPATH, ERROR_BAD_NETPATH},
  };
  for (const auto& c : cases) {
    WIN32_FIND_DATAW data{};
    EXPECT_EQ(ErrorAfter([&] { Api().FindFirstFileW(c.Path, &data); }), c.Find)
        << Show(FromW(c.Path));
    EXPECT_EQ(ErrorAfter([&] { Api().GetFileAttributesW(c.Path); }), c.Attributes)
        << Show(FromW(c.Path));
  }
  WIN32_FIND_DATAW data{};
  EXPECT_EQ(ErrorAfter([&] { Api().FindNextFileW(INVALID_HANDLE_VALUE, &data); }),
            ERROR_INVALID_HANDLE);
}

TEST_F(SystemFiles, Attributes) {
  WriteFile("plain");
  WriteFile(".dot");
  WriteFile("locked");
  chmod(Native("locked").c_str(), 0444);
  MakeDirectory("dir");
  symlink("dir", Native("dirlink").c_str());
  symlink("nowhere", Native("dangling").c_str());
  mkfifo(Native("pipe").c_str(), 0600);
  struct {
    LPCWSTR Path;
    DWORD Attributes;
  } const cases[] = {
      {u"T:\\plain", FILE_ATTRIBUTE_ARCHIVE},
      {u"T:\\.dot", FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN},
      {u"T:\\locked", FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_READONLY},
      {u"T:\\dirlink", FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY},
      {u"T:\\dangling", FILE_ATTRIBUTE_REPARSE_POINT},
      {u"T:\\pipe", FILE_ATTRIBUTE_SYSTEM},
      {u"T:\\", FILE_ATTRIBUTE_DIRECTORY},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Api().GetFileAttributesW(c.Path), c.Attributes) << Show(FromW(c.Path));

  EXPECT_TRUE(Api().SetFileAttributesW(W(u"T:\\plain"), FILE_ATTRIBUTE_READONLY));
  EXPECT_EQ(ErrorAfter([] { Api().DeleteFileW(W(u"T:\\plain")); }), ERROR_ACCESS_DENIED);
  EXPECT_TRUE(Api().SetFileAttributesW(W(u"T:\\plain"), FILE_ATTRIBUTE_NORMAL));
  EXPECT_TRUE(Api().DeleteFileW(W(u"T:\\plain")));
}

TEST(SystemFileTimes, ExtremesAreCut) {
  EXPECT_EQ(FileTimeToTicks(FileTimeFromNative(-20000000000, 0)), 0u);
  EXPECT_GT(FileTimeToTicks(FileTimeFromNative(INT64_MAX, 999999999)), 0x7FFFFFF000000000u);
  std::int64_t seconds = 0;
  std::uint32_t nanoseconds = 0;
  FileTimeToNative(FileTimeFromNative(-1, 999999900), seconds, nanoseconds);
  EXPECT_EQ(seconds, -1);
  EXPECT_EQ(nanoseconds, 999999900u);
}

TEST_F(SystemFiles, Directories) {
  MakeDirectory("New");
  WriteFile("New/f");
  EXPECT_EQ(ErrorAfter([] { Api().CreateDirectoryW(W(u"T:\\NEW"), nullptr); }),
            ERROR_ALREADY_EXISTS);
  EXPECT_EQ(ErrorAfter([] { Api().RemoveDirectoryW(W(u"T:\\new")); }), ERROR_DIR_NOT_EMPTY);
  EXPECT_EQ(ErrorAfter([] { Api().RemoveDirectoryW(W(u"T:\\new\\f")); }), ERROR_DIRECTORY);
  EXPECT_EQ(ErrorAfter([] { Api().DeleteFileW(W(u"T:\\new")); }), ERROR_ACCESS_DENIED);
  symlink("New", Native("link").c_str());
  EXPECT_TRUE(Api().RemoveDirectoryW(W(u"T:\\link")));
  EXPECT_EQ(ReadAll("New/f"), "x");  // what the link led to is still there
}

TEST_F(SystemFiles, MovesNeverReplaceUnasked) {
  WriteFile("a", "A");
  WriteFile("b", "B");
  MakeDirectory("dir/inner");
  MakeDirectory("empty");
  const auto move = [](LPCWSTR from, LPCWSTR to, DWORD flags) {
    return ErrorAfter([=] { Api().MoveFileExW(from, to, flags); });
  };
  EXPECT_EQ(move(u"T:\\a", u"T:\\b", 0), ERROR_ALREADY_EXISTS);
  EXPECT_EQ(move(u"T:\\a", u"T:\\B", 0), ERROR_ALREADY_EXISTS);  // the same file in this system
  EXPECT_EQ(ReadAll("b"), "B");
  EXPECT_EQ(move(u"T:\\dir", u"T:\\empty", 0), ERROR_ALREADY_EXISTS);
  EXPECT_EQ(move(u"T:\\dir", u"T:\\empty", MOVEFILE_REPLACE_EXISTING), ERROR_ACCESS_DENIED);
  EXPECT_EQ(move(u"T:\\a", u"T:\\empty", MOVEFILE_REPLACE_EXISTING), ERROR_ACCESS_DENIED);
  EXPECT_EQ(move(u"T:\\dir", u"T:\\dir\\inner\\x", 0), ERROR_ACCESS_DENIED);
  EXPECT_EQ(ReadAll("a"), "A");

  EXPECT_EQ(move(u"T:\\a", u"T:\\b", MOVEFILE_REPLACE_EXISTING), ERROR_SUCCESS);
  EXPECT_EQ(ReadAll("b"), "A");
  EXPECT_EQ(move(u"T:\\b", u"T:\\B", 0), ERROR_SUCCESS);  // case alone
  EXPECT_EQ(Found(u"T:\\b"), std::set<TString>{u"B"});
  EXPECT_EQ(move(u"T:\\dir", u"T:\\Dir", 0), ERROR_SUCCESS);
  EXPECT_EQ(Found(u"T:\\dir"), std::set<TString>{u"Dir"});
}

TEST_F(SystemFiles, MovesToAnotherDeviceAreCopies) {
  const tests::TOtherDevice other;
  if (!other.IsOther(Root())) GTEST_SKIP() << "there is no second device";
  MapDrive(u'S', other.Native(""));
  WriteFile("f", "content");
  chmod(Native("f").c_str(), 0640);
  MakeDirectory("d");
  const auto move = [](LPCWSTR from, LPCWSTR to, DWORD flags) {
    return ErrorAfter([=] { Api().MoveFileExW(from, to, flags); });
  };
  EXPECT_EQ(move(u"T:\\f", u"S:\\f", 0), ERROR_NOT_SAME_DEVICE);
  EXPECT_EQ(move(u"T:\\d", u"S:\\d", MOVEFILE_COPY_ALLOWED), ERROR_NOT_SAME_DEVICE);
  EXPECT_EQ(ReadAll("f"), "content");
  EXPECT_EQ(move(u"T:\\f", u"S:\\f", MOVEFILE_COPY_ALLOWED), ERROR_SUCCESS);
  EXPECT_EQ(Found(u"S:\\*"), std::set<TString>{u"f"});
  EXPECT_EQ(Found(u"T:\\*"), std::set<TString>{u"d"});
  EXPECT_EQ(tests::StatOf(other.Native("f")).st_mode & 0777, 0640u);
}

TEST_F(SystemFiles, Copies) {
  WriteFile("from", std::string(300000, 'q'));
  chmod(Native("from").c_str(), 0640);
  WriteFile("there", "old");
  EXPECT_TRUE(Api().CopyFileW(W(u"T:\\FROM"), W(u"T:\\to"), TRUE));
  EXPECT_EQ(ReadAll("to"), std::string(300000, 'q'));
  EXPECT_EQ(ErrorAfter([] { Api().CopyFileW(W(u"T:\\from"), W(u"T:\\there"), TRUE); }),
            ERROR_FILE_EXISTS);
  EXPECT_EQ(ReadAll("there"), "old");
  EXPECT_TRUE(Api().CopyFileW(W(u"T:\\from"), W(u"T:\\THERE"), FALSE));
  EXPECT_EQ(ReadAll("there").size(), 300000u);
  EXPECT_FALSE(Api().CopyFileW(W(u"T:\\from"), W(u"T:\\from"), FALSE));
  mkfifo(Native("pipe").c_str(), 0600);
  EXPECT_EQ(ErrorAfter([] { Api().CopyFileW(W(u"T:\\pipe"), W(u"T:\\x"), FALSE); }),
            ERROR_NOT_SUPPORTED);
  unlink(Native("pipe").c_str());
  EXPECT_EQ(Found(u"T:\\*"), (std::set<TString>{u"from", u"there", u"to"}));  // nothing left over
}

TEST_F(SystemFiles, ReplacingKeepsWhoMayRead) {
  WriteFile("old", "old");
  WriteFile("new", "new");
  ASSERT_EQ(chmod(Native("old").c_str(), 0640), 0);
  const auto replace = [](LPCWSTR replaced, LPCWSTR replacement) {
    return ErrorAfter(
        [&] { Api().ReplaceFileW(replaced, replacement, nullptr, 0, nullptr, nullptr); });
  };
  EXPECT_EQ(replace(u"T:\\old", u"T:\\new"), ERROR_SUCCESS);
  EXPECT_EQ(Found(u"T:\\*"), std::set<TString>{u"old"});
  struct stat info {};
  ASSERT_EQ(stat(Native("old").c_str(), &info), 0);
  EXPECT_EQ(info.st_mode & 0777, 0640u);
  EXPECT_EQ(replace(u"T:\\old", u"T:\\none"), ERROR_FILE_NOT_FOUND);
  WriteFile("new", "newer");
  EXPECT_EQ(replace(u"T:\\none", u"T:\\new"), ERROR_FILE_NOT_FOUND);
  ASSERT_EQ(chmod(Native("old").c_str(), 0440), 0);
  EXPECT_EQ(replace(u"T:\\old", u"T:\\new"), ERROR_ACCESS_DENIED);
  EXPECT_EQ(ReadAll("old"), "new");
}

// A program that writes what it was started with into a pipe.
TEST_F(SystemFiles, ProgramsAndDocumentsAreOpened) {
  const std::string before = getenv("PATH");
  mkfifo(Native("pipe").c_str(), 0600);
  MakeDirectory("cwd");
  for (const char* name : {"tool", "xdg-open"}) {
    WriteFile(name, "#!/bin/sh\nprintf '%s|' \"${PWD##*/}\" \"$@\" > '" + Native("pipe") + "'\n");
    chmod(Native(name).c_str(), 0700);
  }
  WriteFile("doc.txt");
  setenv("PATH", (Root() + ":" + before).c_str(), 1);
  const int pipe = open(Native("pipe").c_str(), O_RDWR | O_CLOEXEC);
  const auto run = [&](LPCWSTR file, LPCWSTR parameters, LPCWSTR directory) {
    SHELLEXECUTEINFOW info{};
    info.cbSize = sizeof info;
    info.lpFile = file;
    info.lpParameters = parameters;
    info.lpDirectory = directory;
    if (!Api().ShellExecuteExW(&info)) return "error " + std::to_string(Api().GetLastError());
    EXPECT_GT(reinterpret_cast<LONG_PTR>(info.hInstApp), 32);
    char buffer[512];
    pollfd ready{pipe, POLLIN, 0};
    if (poll(&ready, 1, 20000) != 1) return std::string("silence");
    return std::string(buffer, static_cast<std::size_t>(read(pipe, buffer, sizeof buffer)));
  };
  EXPECT_EQ(run(u"T:\\TOOL", u"a \"b c\"  \\\"d \"\"", u"T:\\cwd"), "cwd|a|b c|\"d||");
  EXPECT_EQ(run(u"T:\\doc.txt", nullptr, u"T:\\cwd"), "cwd|" + Native("doc.txt") + "|");
  EXPECT_EQ(run(u"https://example.org/x?y", nullptr, u"T:\\cwd"), "cwd|https://example.org/x?y|");
  EXPECT_EQ(run(u"T:\\none", nullptr, nullptr), "error 2");
  EXPECT_EQ(run(nullptr, nullptr, nullptr), "error 3");
  EXPECT_EQ(run(u"T:\\tool", nullptr, u"T:\\doc.txt"), "error 267");
  setenv("PATH", Native("cwd").c_str(), 1);
  EXPECT_EQ(run(u"T:\\doc.txt", nullptr, nullptr), "error 1155");
  setenv("PATH", before.c_str(), 1);
  close(pipe);
  EXPECT_FALSE(Api().ShellExecuteExW(nullptr));
}

// What threads share: the configuration, the registry, open handles.
TEST_F(SystemFiles, ManyThreads) {
  for (int i = 0; i < 20; ++i) WriteFile("f" + std::to_string(i));
  std::vector<std::thread> threads;
  std::atomic<int> complete = 0;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int round = 0; round < 40; ++round) {
        complete += Found(u"T:\\f*").size() == 20;
        MapDrive(static_cast<char16_t>(u'A' + t), Root());
        SetRegistryNumber(HKEY_CURRENT_USER, u"Threads", IntToStr(t), static_cast<DWORD>(round));
        Api().RegisterClipboardFormatW(W(u"Format " + IntToStr(round)));
        UnmapDrive(static_cast<char16_t>(u'A' + t));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(complete, 160);
  EXPECT_EQ(PortableConfig()->Drives.size(), 1u);
  EXPECT_EQ(GetRegistryNumber(HKEY_CURRENT_USER, u"Threads", u"3"), 39u);
  ResetRegistry();
}

TEST_F(SystemFiles, TemporaryNames) {
  TString name(MAX_PATH, u'\0');
  const UINT number = Api().GetTempFileNameW(W(u"T:\\"), W(u"prefix"), 0, WBuffer(name));
  ASSERT_NE(number, 0u);
  EXPECT_TRUE(StartsWith(name, u"T:\\pre"));
  EXPECT_EQ(Api().GetFileAttributesW(W(name)), FILE_ATTRIBUTE_ARCHIVE);  // made already
  EXPECT_EQ(Api().GetTempFileNameW(W(u"T:"), nullptr, 0xAB, WBuffer(name)), 0xABu);
  EXPECT_EQ(FromW(W(name)), u"T:\\AB.tmp");
  EXPECT_EQ(Api().GetTempFileNameW(W(u"T:\\none"), nullptr, 0, WBuffer(name)), 0u);
}

}  // namespace
}  // namespace oak::test
