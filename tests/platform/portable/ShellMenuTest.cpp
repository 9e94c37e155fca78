// Context menus: what they show and how they are asked.
#include <sys/stat.h>
#include <unistd.h>

#include "oak/platform/portable/PortableRegistry.h"
#include "testkit/portable/ScriptedMenu.h"
#include "tests/platform/portable/ShellMenuFixture.h"
#include "tests/platform/portable/WithoutRoot.h"

namespace oak {
namespace {

using ShellMenu = TShellMenuTest;
using testkit::TScriptedMenu;

TEST_F(ShellMenu, ItemsByFlags) {
  MakeFile("Dir/other.doc");
  const struct {
    std::initializer_list<TStringView> Paths;
    UINT Flags;
    TStringView Shown;
  } cases[] = {
      {{u"C:\\Dir\\file.txt"}, CMF_NORMAL, u"*open openas | cut copy | link delete | properties"},
      {{u"C:\\Dir\\file.txt"},
       CMF_CANRENAME | CMF_EXPLORE,
       u"*open openas | cut copy | link delete rename | properties"},
      {{u"C:\\Dir\\file.txt", u"C:\\Dir\\other.doc"},
       CMF_CANRENAME,
       u"*open | cut copy | link delete | properties"},
      {{u"C:\\Dir\\file.txt"}, CMF_DEFAULTONLY, u"*open"},
      {{u"C:\\Dir\\file.txt"}, CMF_VERBSONLY, u"*open openas"},
      {{u"C:\\Dir\\file.txt"}, CMF_NODEFAULT, u"open openas | cut copy | link delete | properties"},
      {{u"C:\\Dir\\file.txt"}, CMF_NOVERBS, u"cut copy | link delete | properties"},
      {{u"C:\\Dir\\file.txt"},
       CMF_EXTENDEDVERBS,
       u"*open openas copyaspath | cut copy | link delete | properties"},
      {{u"C:\\Dir\\Sub"},
       CMF_EXPLORE | CMF_EXTENDEDVERBS,
       u"*open explore pintohome copyaspath cmd | cut copy -paste | link delete | properties"},
      {{u"C:\\Dir\\Sub", u"C:\\Dir\\file.txt"},
       CMF_EXPLORE,
       u"*open | cut copy | link delete | properties"},
      {{u"C:\\"}, CMF_NORMAL, u"*open pintohome | -paste | link | properties"},
      {{u"::{645FF040-5081-101B-9F08-00AA002F954E}"},
       CMF_NORMAL,
       u"empty *open pintohome | -paste | link | properties"}};
  for (const auto& test : cases)
    EXPECT_EQ(Show(Shown(Menu(test.Paths).Get(), test.Flags)), Show(test.Shown)) << test.Flags;
}

TEST_F(ShellMenu, BackgroundByFolder) {
  EXPECT_EQ(Show(Shown(Background(u"C:\\Dir").Get())),
            "&View> S&ort by> | refresh | -paste -pastelink | Ne&w> | properties");
  EXPECT_EQ(Show(Shown(Background(u"::{645FF040-5081-101B-9F08-00AA002F954E}").Get())),
            "&View> S&ort by> | refresh | empty -paste | properties");
  EXPECT_EQ(Show(Shown(Background(u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}").Get())),
            "&View> S&ort by> | refresh | properties");
  EXPECT_EQ(Show(Shown(Background(u"C:\\Dir").Get(), CMF_DEFAULTONLY)), "");
  // What lies on the clipboard decides.
  ASSERT_EQ(InvokeOn({u"C:\\Dir\\file.txt"}, u"copy"), S_OK);
  EXPECT_EQ(Show(Shown(Background(u"C:\\Dir").Get())),
            "&View> S&ort by> | refresh | paste pastelink | Ne&w> | properties");
  Api().OleSetClipboard(MakeTextData(u"words").Get());
  EXPECT_EQ(Show(Shown(Background(u"C:\\Dir").Get())),
            "&View> S&ort by> | refresh | -paste -pastelink | Ne&w> | properties");
}

TEST_F(ShellMenu, ReadOnlyFoldersGreyWhatChangesThem) {
  tests::WithoutRoot([&] {
    MakeDirectory("Closed");
    MakeFile("Closed/file.txt");
    ASSERT_EQ(InvokeOn({u"C:\\Dir\\file.txt"}, u"copy"), S_OK);
    ASSERT_EQ(chmod(Native("Closed").c_str(), 0555), 0);
    EXPECT_EQ(Show(Shown(Menu({u"C:\\Closed\\file.txt"}).Get(), CMF_CANRENAME)),
              "*open openas | -cut copy | link -delete -rename | properties");
    EXPECT_EQ(Show(Shown(Background(u"C:\\Closed").Get())),
              "&View> S&ort by> | refresh | -paste -pastelink | -Ne&w> | properties");
    // Who invokes all the same is told why not, once.
    EXPECT_EQ(PasteTo(u"C:\\Closed"), HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(InvokeOn({u"C:\\Closed\\file.txt"}, u"delete"),
              HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
    EXPECT_EQ(fFailures.size(), 2u);
    chmod(Native("Closed").c_str(), 0755);
    EXPECT_EQ(Names("Closed"), "file.txt");
  });
}

TEST_F(ShellMenu, CommandStrings) {
  const auto menu = Menu({u"C:\\Dir\\file.txt"});
  ASSERT_EQ(Shown(menu.Get()).substr(0, 5), u"*open");
  CHAR narrow[260];
  EXPECT_EQ(menu->GetCommandString(2, GCS_VERBA, nullptr, narrow, 260), S_OK);
  EXPECT_STREQ(narrow, "cut");
  EXPECT_EQ(menu->GetCommandString(0, GCS_HELPTEXTA, nullptr, narrow, 260), S_OK);
  EXPECT_STREQ(narrow, "Opens the selected items.");
  WCHAR wide[260];
  auto* const raw = reinterpret_cast<CHAR*>(wide);
  EXPECT_EQ(menu->GetCommandString(0, GCS_HELPTEXTW, nullptr, raw, 6),
            HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER));
  EXPECT_EQ(FromW(wide), u"Opens");  // cut, but ended
  EXPECT_EQ(menu->GetCommandString(6, GCS_VALIDATEW, nullptr, nullptr, 0), S_OK);
  EXPECT_EQ(menu->GetCommandString(7, GCS_VALIDATEW, nullptr, nullptr, 0), S_FALSE);
  EXPECT_EQ(menu->GetCommandString(7, GCS_VERBW, nullptr, raw, 260), E_INVALIDARG);
  // No more commands than the range of the caller holds.
  for (const auto& [last, result] : {std::pair<UINT, HRESULT>{12, 3}, {9, E_INVALIDARG}}) {
    const HMENU shown = Api().CreatePopupMenu();
    EXPECT_EQ(menu->QueryContextMenu(shown, 0, 10, last, CMF_NORMAL), result);
    for (const TMenuEntry& entry : TMenuTable::Instance().GetEntries(shown))
      EXPECT_TRUE(entry.IsSeparator || (entry.Command >= 10 && entry.Command <= last));
    Api().DestroyMenu(shown);
  }
}

TEST_F(ShellMenu, InvokesByOffsetAndByBothTexts) {
  const auto menu = Menu({u"C:\\Dir\\file.txt"});
  CMINVOKECOMMANDINFO info{};
  info.cbSize = sizeof info;
  EXPECT_EQ(menu->InvokeCommand(&info), S_OK);  // the default one, without a menu
  EXPECT_EQ(fExecuted, TStringArray{u"open C:\\Dir\\file.txt||"});
  Shown(menu.Get());
  info.lpVerb = reinterpret_cast<LPCSTR>(std::uintptr_t{2});
  EXPECT_EQ(menu->InvokeCommand(&info), S_OK);
  EXPECT_TRUE(PortableClipboard());
  info.lpVerb = "OPEN";
  EXPECT_EQ(menu->InvokeCommand(&info), S_OK);
  EXPECT_EQ(Invoke(menu, u"Open"), S_OK);
  EXPECT_EQ(fExecuted.size(), 3u);
  // A verb that the last menu did not show is still known.
  EXPECT_EQ(Invoke(menu, u"copyaspath"), S_OK);

  for (const TStringView unknown : {u"", u"frobnicate", u"explore", u"newfolder"})
    EXPECT_EQ(Invoke(menu, unknown), E_INVALIDARG) << Show(unknown);
  info.lpVerb = reinterpret_cast<LPCSTR>(std::uintptr_t{77});
  EXPECT_EQ(menu->InvokeCommand(&info), E_INVALIDARG);
}

TEST_F(ShellMenu, SubmenusAreFilledWhenTheyOpen) {
  const auto menu = Background(u"C:\\Dir").As<IContextMenu3>();
  ASSERT_TRUE(menu);
  const HMENU shown = Api().CreatePopupMenu();
  const HRESULT count = menu->QueryContextMenu(shown, 0, 1, 255, CMF_EXPLORE);
  EXPECT_EQ(HRESULT_CODE(count), 15);  // 5 + 4 + refresh + 2 + 2 + properties
  const struct {
    int Position;
    TStringView First;
    int Count;
  } cases[] = {{0, u"thumbnails", 5}, {1, u"sortbyname", 4}, {8, u"newfolder", 2}};
  for (const auto& test : cases) {
    const HMENU inner = Api().GetSubMenu(shown, test.Position);
    ASSERT_TRUE(inner) << test.Position;
    EXPECT_EQ(Api().GetMenuItemCount(inner), 0);
    for (int again = 0; again < 2; ++again)  // opened twice, filled once
      EXPECT_EQ(menu->HandleMenuMsg(WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(inner), 0), S_OK);
    EXPECT_EQ(Api().GetMenuItemCount(inner), test.Count);
    EXPECT_EQ(Verb(menu.Get(), Api().GetMenuItemID(inner, 0) - 1), test.First);
  }
  TStringArray told;
  TShellHooks hooks;
  hooks.OnViewVerb = [&](const TString& verb, PCIDLIST_ABSOLUTE) { told.push_back(verb); };
  SetShellHooks(std::move(hooks));
  CMINVOKECOMMANDINFO info{};
  info.cbSize = sizeof info;
  info.lpVerb = reinterpret_cast<LPCSTR>(std::uintptr_t{4});
  EXPECT_EQ(menu->InvokeCommand(&info), S_OK);
  EXPECT_EQ(Invoke(menu, u"SortByDate"), S_OK);
  EXPECT_EQ(told, (TStringArray{u"details", u"sortbydate"}));
  EXPECT_TRUE(Api().DestroyMenu(shown));
}

// --- several folders, extensions ---------------------------------------------------------

TEST_F(ShellMenu, ObjectsOfSeveralFolders) {
  const TPidl desktop = Parse(u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}");
  const TPidl one = Parse(u"C:\\Dir\\file.txt"), two = Parse(u"C:\\home\\me");
  const PCUITEMID_CHILD lists[] = {one.Get(), two.Get()};
  TPidl root = TPidl::Copy(desktop.Get());
  Api().ILRemoveLastID(root.Get());
  // Extensions are those of the keys that the caller gives.
  TScriptedMenu all(u"AllFilesystemObjects", {{u"scan", u"Scan"}});
  TScriptedMenu text(u".txt", {{u"zip", u"Zip it"}});
  HKEY key = nullptr;
  ASSERT_EQ(Api().RegOpenKeyExW(HKEY_CLASSES_ROOT, u"AllFilesystemObjects", 0, KEY_READ, &key), 0);
  Ref<IContextMenu> menu;
  ASSERT_EQ(Api().CDefFolderMenu_Create2(root.Get(), nullptr, 2, lists, nullptr, nullptr, 1, &key,
                                         menu.Put()),
            S_OK);
  Api().RegCloseKey(key);
  EXPECT_EQ(Show(Shown(menu.Get())), "*open scan | cut copy | link delete | properties");
  ASSERT_EQ(Invoke(menu, u"copy"), S_OK);
  MakeDirectory("Target");
  EXPECT_EQ(PasteTo(u"C:\\Target"), S_OK);
  EXPECT_EQ(Names("Target"), "file.txt, me");
}

TEST_F(ShellMenu, VerbsOfExtensions) {
  MakeFile("Dir/b.txt");
  TScriptedMenu text(u".txt", {{u"zip", u"Zip it"}, {u"mail", u"Mail it"}});
  TScriptedMenu all(u"AllFilesystemObjects", {{u"scan", u"Scan"}});
  const auto both = Menu({u"C:\\Dir\\file.txt", u"C:\\Dir\\b.txt"});
  HRESULT count = 0;
  EXPECT_EQ(Show(Shown(both.Get(), CMF_NORMAL, &count)),
            "*open zip mail scan | cut copy | link delete | properties");
  EXPECT_EQ(HRESULT_CODE(count), 9);
  CMINVOKECOMMANDINFO info{};
  info.cbSize = sizeof info;
  info.lpVerb = reinterpret_cast<LPCSTR>(std::uintptr_t{2});
  EXPECT_EQ(both->InvokeCommand(&info), S_OK);
  EXPECT_EQ(text.Invoked(), TStringArray{u"mail C:\\Dir\\file.txt C:\\Dir\\b.txt"});
  EXPECT_EQ(both.As<IContextMenu3>()->HandleMenuMsg(WM_MEASUREITEM, 0, 0), S_OK);
  EXPECT_EQ(text.Messages(), std::vector<UINT>{WM_MEASUREITEM});

  // By name without a menu; the code of the extension comes out.
  all.SetInvokeResult(E_ABORT);
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\Sub"}, u"SCAN"), E_ABORT);
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\Sub"}, u"zip"), E_INVALIDARG);
  // One that fails costs the menu nothing.
  text.SetQueryResult(E_FAIL);
  all.SetInitializeResult(E_FAIL);
  EXPECT_EQ(Show(Shown(Menu({u"C:\\Dir\\file.txt"}).Get())),
            "*open openas | cut copy | link delete | properties");
}

TEST_F(ShellMenu, VerbsOfTheRegistry) {
  SetRegistryText(HKEY_CLASSES_ROOT, u".oak", {}, u"OakFile");
  SetRegistryText(HKEY_CLASSES_ROOT, u"OakFile\\shell\\polish", {}, u"&Polish");
  SetRegistryText(HKEY_CLASSES_ROOT, u"OakFile\\shell\\polish\\command", {},
                  u"\"C:\\My Tools\\wax.exe\" -q \"%1\"");
  SetRegistryText(HKEY_CLASSES_ROOT, u"OakFile\\shell\\nothing", {}, u"Without a command");
  MakeFile("Dir/a %V.oak");
  const auto menu = Menu({u"C:\\Dir\\a %V.oak"});
  EXPECT_EQ(Show(Shown(menu.Get())), "*open openas polish | cut copy | link delete | properties");
  EXPECT_EQ(Invoke(menu, u"polish"), S_OK);
  EXPECT_EQ(fExecuted, TStringArray{u" C:\\My Tools\\wax.exe|-q \"C:\\Dir\\a %V.oak\"|"});
  DeleteRegistryKey(HKEY_CLASSES_ROOT, u".oak");
  DeleteRegistryKey(HKEY_CLASSES_ROOT, u"OakFile");
}

}  // namespace
}  // namespace oak
