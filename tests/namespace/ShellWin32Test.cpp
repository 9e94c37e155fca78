// Start-up of the shell, its desktop, its texts and the system's version.
#include "oak/namespace/Shell_Win32.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>
#include <tuple>

#include "oak/base/InterfacedObject.h"
#include "testkit/OldWindows.h"
#include "testkit/ScopedApi.h"
#include "tests/EmptyObjects.h"
#include "tests/MessageOf.h"

namespace oak {
namespace {

using testkit::TScopedApi;
using testkit::TWindowsVersion;

/// Libraries and string resources that the test makes up. The shell starts anew
/// with them and anew without them.
class TFakeLibraries {
 public:
  TFakeLibraries() { FinalizeShell(); }
  ~TFakeLibraries() { FinalizeShell(); }

  TStringArray Missing;                                 ///< Libraries that can't be opened.
  std::map<std::pair<TString, UINT>, TString> Strings;  ///< Upper-case library name.
  bool AllStrings = false;                              ///< Others read "library:number".
  TStringArray Loaded;
  int Open = 0;
  TStringArray DebugLines;

 private:
  HMODULE Load(const TString& name) {
    Loaded.push_back(name);
    for (const TString& missing : Missing)
      if (SameText(missing, name)) return nullptr;
    ++Open;
    return reinterpret_cast<HMODULE>(Loaded.size());  // a handle is the place in the list, from 1
  }
  int String(HMODULE module, UINT id, LPWSTR buffer, int size) {
    const TString library = UpperCase(Loaded[reinterpret_cast<std::uintptr_t>(module) - 1]);
    const auto found = Strings.find({library, id});
    if (found == Strings.end() && !AllStrings) return 0;
    const TString text = found == Strings.end() ? library + u":" + IntToStr(id) : found->second;
    const std::size_t length = std::min(text.size(), static_cast<std::size_t>(size) - 1);
    text.copy(reinterpret_cast<char16_t*>(buffer), length);
    buffer[length] = 0;
    return static_cast<int>(length);
  }

  TScopedApi<decltype(TApi::LoadLibraryW)> fLoad{
      Api().LoadLibraryW, [this](LPCWSTR name) { return Load(FromW(name)); }};
  TScopedApi<decltype(TApi::FreeLibrary)> fFree{Api().FreeLibrary, [this](HMODULE) {
                                                  --Open;
                                                  return BOOL{1};
                                                }};
  TScopedApi<decltype(TApi::LoadStringW)> fString{
      Api().LoadStringW, [this](HINSTANCE module, UINT id, LPWSTR buffer, int size) {
        return String(module, id, buffer, size);
      }};
  TScopedApi<decltype(TApi::OutputDebugStringW)> fDebug{
      Api().OutputDebugStringW, [this](LPCWSTR line) { DebugLines.push_back(FromW(line)); }};
};

TEST(InitializeShell, OnlyThreeLibrariesAreIndispensable) {
  const struct {
    TString Missing, Message;
  } fatal[] = {
      {u"ntdll", u"FolderTrek Components: Cannot open ntdll.dll"},
      {u"Shell32", u"FolderTrek Components: Cannot open SHELL32.DLL!"},
      {u"shlwapi", u"FolderTrek Components: Cannot open SHLWAPI.DLL!"},
  };
  FinalizeShell();  // Another test may have started it with the real libraries.
  TFakeLibraries libraries;
  for (const auto& row : fatal) {
    libraries.Missing = {row.Missing};
    for (int attempt = 0; attempt < 2; ++attempt) {  // a failure is not remembered
      EXPECT_EQ(tests::MessageOf([] { InitializeShell(); }), row.Message);
      EXPECT_EQ(libraries.Open, 0) << ToUtf8(row.Missing);
    }
  }
  libraries.Missing = {u"propsys",     u"kernel32.dll", u"ExplorerFrame.dll", u"comdlg32.dll",
                       u"uxtheme.dll", u"Shcore.dll",   u"User32.dll"};
  EXPECT_NO_THROW(InitializeShell());
  EXPECT_EQ(libraries.Open, 3);
  const std::size_t loaded = libraries.Loaded.size();
  InitializeShell();
  EXPECT_EQ(libraries.Loaded.size(), loaded) << "it started twice";
}

TEST(SystemStrings, ComeFromTheirLibraries) {
  TFakeLibraries libraries;
  libraries.AllStrings = true;
  {
    const auto version = TWindowsVersion::Windows11();
    const TSystemStrings& strings = SystemStrings();
    const std::pair<const TString*, TStringView> rows[] = {
        {&strings.BackgroundContextMenu_View, u"SHELL32:33585"},
        {&strings.ResourceSearch_Running, u"EXPLORERFRAME.DLL:41480"},
        {&strings.ComDlg_SaveAs, u"COMDLG32.DLL:385"},
        {&strings.strSystemNewFolder, u"SHELL32:30320"},
        {&strings.BackgroundContextMenu_Refresh, u"EXPLORERFRAME.DLL:12624"},
    };
    for (const auto& [field, expected] : rows) EXPECT_EQ(*field, expected);
    EXPECT_TRUE(libraries.DebugLines.empty());
  }
  FinalizeShell();
  const auto version = TWindowsVersion::Windows8();
  EXPECT_EQ(SystemStrings().BackgroundContextMenu_Refresh, u"SHELL32:5268");
}

TEST(SystemStrings, MissingOnesLeaveADefaultAndALine) {
  TFakeLibraries libraries;
  const auto version = TWindowsVersion::Windows10();
  libraries.Strings[{u"SHELL32", 30396}] = u"Neuer Ordner";
  const TSystemStrings strings = SystemStrings();
  EXPECT_EQ(strings.strSystemNewFolder, u"Neuer Ordner");
  EXPECT_EQ(strings.strSystemInFolder, u"In Folder");
  EXPECT_EQ(strings.BackgroundContextMenu_Refresh, u"Refresh");
  EXPECT_EQ(strings.BackgroundContextMenu_View, u"");
  const TString line = u"[Warning] Resource string with ID 33585 does not exist in Shell32";
  EXPECT_EQ(std::count(libraries.DebugLines.begin(), libraries.DebugLines.end(), line), 1);
  // One line for each missing text: all but the one that a second number found.
  EXPECT_EQ(libraries.DebugLines.size(), 31u);

  libraries.Missing = {u"none.dll"};
  EXPECT_EQ(LoadSystemString(1, u"none.dll", u"default"), u"default");
  libraries.Strings[{u"SOME.DLL", 7}] = u"a|b||c";
  libraries.Strings[{u"SOME.DLL", 8}] = TString(40'000, u'x');
  EXPECT_EQ(LoadSystemStrings(7, u"some.dll"), (TStringArray{u"a", u"b", u"", u"c"}));
  EXPECT_EQ(LoadSystemString(8, u"some.dll").size(), 32'767u);
  FinalizeShell();
  EXPECT_EQ(libraries.Open, 0);
}

// --- desktop -----------------------------------------------------------------

/// A folder that counts how many of its kind there are.
class TCountedFolder final : public tests::TEmptyShellFolder {
 public:
  static inline std::atomic<int> Alive{0};
  TCountedFolder() { ++Alive; }
  ~TCountedFolder() override { --Alive; }
};

HRESULT GiveCountedFolder(IShellFolder** folder) {
  *folder = MakeRef<TCountedFolder>().Detach();
  return S_OK;
}

TEST(Desktop, OfRacingThreadsOneWinsAndTheOtherIsDropped) {
  FinalizeShell();
  const std::thread::id asking = std::this_thread::get_id();
  std::mutex lock;
  std::condition_variable changed;
  int inside = 0;
  const TScopedApi desktop(Api().SHGetDesktopFolder, [&](IShellFolder** folder) {
    EXPECT_NE(std::this_thread::get_id(), asking) << "it is made on a thread of its own";
    std::unique_lock guard(lock);
    ++inside;
    changed.notify_all();
    changed.wait(guard, [&] { return inside == 2; });  // both have seen that there is none
    return GiveCountedFolder(folder);
  });
  Ref<IShellFolder> first, second;
  std::thread other([&] { first = Desktop(); });
  second = Desktop();
  other.join();
  EXPECT_EQ(first, second);
  EXPECT_EQ(Desktop(), first);
  EXPECT_EQ(inside, 2);
  EXPECT_EQ(TCountedFolder::Alive, 1);
  first = second = nullptr;
  FinalizeShell();
  EXPECT_EQ(TCountedFolder::Alive, 0);
}

TEST(Desktop, FailureIsTold) {
  FinalizeShell();
  const TScopedApi desktop(Api().SHGetDesktopFolder, [](IShellFolder**) { return E_FAIL; });
  EXPECT_EQ(tests::MessageOf<EFolderTrekError>([] { Desktop(); }),
            u"FolderTrek Components: Cannot open Shell!");
}

// --- errors and versions ---------------------------------------------------------

TEST(ErrorMessages, AreTheSystemsExceptForInternetCodes) {
  std::vector<DWORD> asked;
  const TScopedApi format(Api().FormatMessageW, [&](DWORD flags, LPCVOID, DWORD id, DWORD,
                                                    LPWSTR buffer, DWORD, auto*) {
    EXPECT_EQ(flags, DWORD{FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS});
    asked.push_back(id);
    if (id == 87) return DWORD{0};
    const TString text = u" Text of " + IntToStr(id) + u".\r\n";
    text.copy(reinterpret_cast<char16_t*>(buffer), text.size());
    return static_cast<DWORD>(text.size());
  });
  const struct {
    std::uint32_t Code;
    TString Expected;
  } rows[] = {
      {5, u"Text of 5."},
      {12000, u"Error Code 0x00002EE0"},
      {12175, u"Text of 12175."},
      {87, u"Error Code 0x00000057"},
      {0x80004005, u"Text of 2147500037."},
  };
  for (const auto& row : rows) EXPECT_EQ(GetErrorMessageText(row.Code), row.Expected) << row.Code;
  // The exceptions of the library speak so, too.
  EXPECT_EQ(EFolderTrekError(std::uint32_t{5}, u"More.").GetMessage(), u"Text of 5. More.");
}

TEST(WindowsVersion, DecidesWhatTheShellHas) {
  for (const auto& [major, build, isDark] : {std::tuple{6u, 9600u, false},
                                             {10u, 17134u, false},
                                             {10u, 17135u, true},
                                             {11u, 1u, false}}) {
    const TWindowsVersion version(major, 0, build);
    EXPECT_EQ(IsWindows10OrLater(), major >= 10) << build;
    EXPECT_EQ(IsDarkModeSupported(), isDark) << build;
    EXPECT_EQ(GetWindowsBuildNumber(), build);
  }
  const TScopedApi missing(Api().RtlGetVersion, nullptr);
  EXPECT_FALSE(IsWindows10OrLater());
  EXPECT_EQ(GetWindowsBuildNumber(), 0u);
}

TEST(DpiAwareness, OfTheThreadElseOfTheProcess) {
  std::intptr_t present = 0;
  const TScopedApi equal(
      Api().AreDpiAwarenessContextsEqual,
      [](DPI_AWARENESS_CONTEXT a, DPI_AWARENESS_CONTEXT b) { return BOOL{a == b}; });
  {
    const TScopedApi thread(Api().GetThreadDpiAwarenessContext,
                            [&] { return reinterpret_cast<DPI_AWARENESS_CONTEXT>(present); });
    for (const int expected : {0, 0, 1, 2, 3}) {
      EXPECT_EQ(GetDpiAwareness(), expected) << present;
      --present;
    }
  }
  const TScopedApi noThread(Api().GetThreadDpiAwarenessContext, nullptr);
  {
    const TScopedApi process(Api().GetProcessDpiAwareness,
                             [](HANDLE, PROCESS_DPI_AWARENESS* awareness) {
                               *awareness = static_cast<PROCESS_DPI_AWARENESS>(2);
                               return HRESULT{S_OK};
                             });
    EXPECT_EQ(GetDpiAwareness(), 2);
  }
  const TScopedApi noProcess(Api().GetProcessDpiAwareness, nullptr);
  EXPECT_EQ(GetDpiAwareness(), 0);
}

}  // namespace
}  // namespace oak
