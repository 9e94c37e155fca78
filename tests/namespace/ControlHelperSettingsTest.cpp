// The user's settings of the shell and of the navigation pane, on every version of the system.
#include <gtest/gtest.h>

#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/Oak.Shell.ExplorerSettings.h"
#include "testkit/OldWindows.h"
#include "tests/namespace/ScriptedRegistry.h"

namespace oak::tests {
namespace {

using testkit::TScopedApi;
using testkit::TWindowsVersion;
using THelper = TShellControlHelper;

TEST(ShellSettings, AreReadAndChangedBitByBit) {
  struct TRequest {
    DWORD Mask;
    BOOL Set;
    bool NoConfirm, Extensions;
  };
  std::vector<TRequest> requests;
  bool on = false;
  const TScopedApi settings(Api().SHGetSetSettings, [&](SHELLSTATEW* state, DWORD mask, BOOL set) {
    requests.push_back({mask, set, state->fNoConfirmRecycle != 0, state->fShowExtensions != 0});
    if (set) return;
    if (mask & SSF_NOCONFIRMRECYCLE) state->fNoConfirmRecycle = on ? -1 : 0;
    if (mask & SSF_SHOWEXTENSIONS) state->fShowExtensions = on ? -1 : 0;
    if (mask & SSF_SHOWINFOTIP) state->fShowInfoTip = on ? -1 : 0;
    if (mask & SSF_DOUBLECLICKINWEBVIEW) state->fDoubleClickInWebView = on ? -1 : 0;
  });
  for (const bool value : {false, true}) {
    on = value;
    EXPECT_EQ(THelper::GetShellNoConfirmRecycle(), value);
    EXPECT_EQ(THelper::GetShellShowExtensions(), value);
    EXPECT_EQ(THelper::ShellShowInfoTip(), value);
    EXPECT_EQ(THelper::ShellSingleClickActivate(), !value);
  }
  requests.clear();
  THelper::SetShellNoConfirmRecycle(true);
  THelper::SetShellShowExtensions(true);
  THelper::SetShellShowExtensions(false);
  ASSERT_EQ(requests.size(), 3u);
  EXPECT_TRUE(requests[0].Mask == SSF_NOCONFIRMRECYCLE && requests[0].Set);
  EXPECT_TRUE(requests[0].NoConfirm);
  EXPECT_TRUE(requests[1].Mask == SSF_SHOWEXTENSIONS && requests[1].Set);
  EXPECT_TRUE(requests[1].Extensions);
  EXPECT_FALSE(requests[2].Extensions);
}

TEST(ShellSettings, HaveDefaultsWhereTheSystemHasNone) {
  const TScopedApi missing(Api().SHGetSetSettings, nullptr);
  SHELLSTATEW state{};
  EXPECT_FALSE(THelper::SetShellSettings(SSF_SHOWEXTENSIONS, state, true));
  THelper::SetShellShowExtensions(false);
  EXPECT_TRUE(THelper::GetShellShowExtensions());
  EXPECT_FALSE(THelper::GetShellNoConfirmRecycle());
  EXPECT_TRUE(THelper::ShellShowInfoTip());
  EXPECT_FALSE(THelper::ShellSingleClickActivate());
}

TEST(NavigationPane, ReadsValuesOfTheRegistryByPath) {
  TScriptedRegistry registry;
  registry.SetNumber(HKEY_CURRENT_USER, u"Software\\Oak\\number", 0xFFFFFFFF);
  registry.SetText(HKEY_CURRENT_USER, u"Software\\Oak\\text", u"\u00FCber");
  registry.SetBytes(HKEY_CURRENT_USER, u"Software\\Oak\\bytes", {1, 2, 3});
  registry.SetText(HKEY_LOCAL_MACHINE, u"Software\\Oak\\dotted.name", u"");
  const auto read = [](TStringView path, HKEY root = HKEY_CURRENT_USER) {
    return THelper::GetRegistryValue(path, root);
  };
  EXPECT_EQ(read(u"Software\\Oak\\number").GetType(), VT_I4);
  EXPECT_EQ(VariantToText(read(u"software\\OAK\\Number")), u"-1");
  EXPECT_EQ(VariantToText(read(u"Software\\Oak\\text")), u"\u00FCber");
  EXPECT_EQ(read(u"Software\\Oak\\dotted.name", HKEY_LOCAL_MACHINE).GetType(), VT_BSTR);
  EXPECT_TRUE(read(u"Software\\Oak\\bytes").IsEmpty()) << "of no kind that is read";
  for (const TStringView missing : {u"Software\\Oak\\none", u"Software\\None\\number", u"number",
                                    u"", u"\\", u"Software\\Oak\\"})
    EXPECT_TRUE(read(missing).IsNull()) << ToUtf8(missing);
  EXPECT_TRUE(read(u"Software\\Oak\\number", HKEY_LOCAL_MACHINE).IsNull());
  EXPECT_EQ(registry.OpenKeys, 0) << "keys are closed";
  for (const REGSAM access : registry.Accesses)
    EXPECT_EQ(access, REGSAM{131097 | KEY_WOW64_64KEY}) << "to be read, in the 64-bit view";
}

constexpr TStringView HubMode = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\HubMode";
constexpr TStringView Favorites =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Advanced\\NavPaneShowFavorites";
constexpr TStringView AllFolders =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Advanced\\NavPaneShowAllFolders";
constexpr TStringView Expand =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Advanced\\"
    u"NavPaneExpandToCurrentFolder";
constexpr TStringView Libraries =
    u"Software\\Classes\\CLSID\\{031E4825-7B94-4dc3-B131-E946B44C8DD5}\\"
    u"System.IsPinnedToNameSpaceTree";
constexpr TStringView OneDrive =
    u"SOFTWARE\\Classes\\CLSID\\{018D5C66-4533-4307-9B53-224DE2ED1FE6}\\"
    u"System.IsPinnedToNameSpaceTree";
constexpr TStringView NonEnum =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\Policies\\NonEnum\\"
    u"{018D5C66-4533-4307-9B53-224DE2ED1FE6}";

TEST(NavigationPane, FollowsTheVersionOfTheSystem) {
  struct TSetting {
    HKEY Root;
    TStringView Path;
    DWORD Number;
  };
  const HKEY user = HKEY_CURRENT_USER, machine = HKEY_LOCAL_MACHINE;
  // Favourites, libraries, the cloud drive: what Windows 8 and 10 show. Windows 7 asks nobody.
  const struct {
    const char* What;
    std::vector<TSetting> Settings;
    std::string Windows8, Windows10;
  } cases[] = {
      {"nothing set", {}, "F--", "F--"},
      {"hub mode", {{machine, HubMode, 1}}, "F--", "---"},
      {"hub mode of the user", {{user, HubMode, 1}}, "F--", "F--"},
      {"hub mode 2", {{machine, HubMode, 2}}, "F--", "F--"},
      {"no favourites", {{user, Favorites, 0}}, "---", "F--"},
      {"favourites", {{user, Favorites, 1}}, "F--", "F--"},
      {"libraries pinned", {{user, Libraries, 1}}, "FL-", "FL-"},
      {"libraries not pinned", {{user, Libraries, 0}}, "FL-", "FL-"},
      {"drive pinned", {{user, OneDrive, 1}}, "F--", "F-D"},
      {"drive not pinned", {{user, OneDrive, 0}}, "F--", "F--"},
      {"drive hidden by policy", {{user, OneDrive, 1}, {user, NonEnum, 1}}, "F--", "F--"},
      {"policy off", {{user, OneDrive, 1}, {user, NonEnum, 0}}, "F--", "F-D"},
  };
  const auto seen = [] {
    return std::string(THelper::ShellShowFavorites() ? "F" : "-") +
           (THelper::ShellShowLibraries() ? "L" : "-") + (THelper::ShellShowOneDrive() ? "D" : "-");
  };
  for (const auto& c : cases) {
    TScriptedRegistry registry;
    for (const TSetting& setting : c.Settings)
      registry.SetNumber(setting.Root, setting.Path, setting.Number);
    {
      const TWindowsVersion version = TWindowsVersion::Windows7();
      EXPECT_FALSE(THelper::IsWindows8OrLater());
      EXPECT_EQ(seen(), "FL-") << c.What << ", 7";
    }
    {
      const TWindowsVersion version = TWindowsVersion::Windows8();
      EXPECT_TRUE(THelper::IsWindows8OrLater());
      EXPECT_FALSE(THelper::IsWindows10OrLater());
      EXPECT_EQ(seen(), c.Windows8) << c.What << ", 8";
    }
    const TWindowsVersion version = TWindowsVersion::Windows10();
    EXPECT_TRUE(THelper::IsWindows8OrLater() && THelper::IsWindows10OrLater());
    EXPECT_EQ(seen(), c.Windows10) << c.What << ", 10";
    EXPECT_EQ(registry.OpenKeys, 0);
  }
}

TEST(NavigationPane, SettingsCanBeAnsweredByTheProgram) {
  TScriptedRegistry registry;
  EXPECT_FALSE(THelper::ShellShowAllFolders());
  EXPECT_FALSE(THelper::ShellExpandToCurrentFolder());
  registry.SetNumber(HKEY_CURRENT_USER, AllFolders, 1);
  EXPECT_TRUE(THelper::ShellShowAllFolders()) << "read at each call";
  registry.SetNumber(HKEY_CURRENT_USER, Expand, 1);
  EXPECT_TRUE(THelper::ShellExpandToCurrentFolder());
  registry.SetText(HKEY_CURRENT_USER, Expand, u"no number");
  registry.SetNumber(HKEY_CURRENT_USER, AllFolders, 2);

  struct TOwnSettings : TExplorerSettings {
    explicit TOwnSettings(bool& ended) : fEnded(ended) {}
    ~TOwnSettings() override { fEnded = true; }
    bool ShellShowAllFolders() const override { return true; }
    bool& fEnded;
  };
  bool ended = false;
  THelper::SetExplorerSettings(std::make_shared<TOwnSettings>(ended));
  EXPECT_TRUE(THelper::ShellShowAllFolders());
  EXPECT_FALSE(THelper::ShellExpandToCurrentFolder()) << "what it leaves is the user's";
  THelper::SetExplorerSettings(nullptr);
  EXPECT_TRUE(ended);
  EXPECT_FALSE(THelper::ShellShowAllFolders());
}

}  // namespace
}  // namespace oak::tests
