// The cursor's menus on the screen, and the menus of the system's own shell.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oak/framework/Menus.h"
#include "oak/namespace/CommandParts.h"
#include "oak/namespace/Oak.Shell.Types.Commands.h"
#include "tests/framework/win32/MenuKeys.h"
#include "tests/framework/win32/Win32Fixture.h"
#include "tests/namespace/CursorLog.h"

namespace oak::tests {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;

class ContextMenuWindows : public TWin32Test {
 protected:
  ContextMenuWindows() {
    Form.Show();
    Pump();
  }
  TTestForm Form;
};

/// The verbs of a menu and of its submenus that the shell has filled.
std::vector<TString> VerbsOf(IContextMenu& menu) {
  const auto handle = TMenuHandle::Adopt(Api().CreatePopupMenu());
  EXPECT_HRESULT_SUCCEEDED(
      menu.QueryContextMenu(handle.Get(), 0, FirstShellCommand, LastVerbCommand, CMF_EXPLORE));
  std::vector<TString> verbs;
  for (int i = 0; i < Api().GetMenuItemCount(handle.Get()); ++i) {
    const UINT id = Api().GetMenuItemID(handle.Get(), i);
    WCHAR text[260]{};
    if (id >= FirstShellCommand && id <= LastVerbCommand &&
        SUCCEEDED(menu.GetCommandString(id - FirstShellCommand, GCS_VERBW, nullptr,
                                        reinterpret_cast<CHAR*>(text), 260)))
      verbs.push_back(LowerCase(FromW(text)));
  }
  return verbs;
}

TEST_F(ContextMenuWindows, TheShellsMenusHaveTheirVerbs) {
  TTestFolder files;
  for (const auto* name : {u"a.txt", u"b.txt"}) files.MakeFile(name);
  TFolderTrek cursor;
  cursor.SetFolder(files.Path());
  cursor.SetObjectName(u"a.txt");
  const auto one = cursor.GetUIObject(IidOf<IContextMenu>()).As<IContextMenu>();
  ASSERT_TRUE(one);
  EXPECT_THAT(
      VerbsOf(*one),
      AllOf(::testing::Contains(TString(u"copy")), ::testing::Contains(TString(u"cut")),
            ::testing::Contains(TString(u"delete")), ::testing::Contains(TString(u"properties"))));
  for (const auto* name : {u"a.txt", u"b.txt"}) cursor.GetMultiObjects()->Add(name);
  const auto two = cursor.GetUIObject(IidOf<IContextMenu>()).As<IContextMenu>();
  ASSERT_TRUE(two);
  EXPECT_THAT(VerbsOf(*two), ::testing::Contains(TString(u"copy")));
}

TEST_F(ContextMenuWindows, TheShellsMenuIsShownAndChosenFrom) {
  TTestFolder files;
  files.MakeFile(u"a.txt");
  TFolderTrek cursor(&Form);
  cursor.SetFolder(files.Path());
  cursor.SetObjectName(u"a.txt");
  {
    const TKeySender keys({VK_ESCAPE});
    EXPECT_EQ(cursor.ShowContextMenu(TPoint(50, 50), nullptr), u"");
  }
  TString verb;
  const TKeySender keys({VK_UP, VK_RETURN});
  EXPECT_EQ(cursor.ShowContextMenu(TPoint(50, 50), nullptr,
                                   [&](const TString& chosen) {
                                     verb = chosen;
                                     return false;
                                   }),
            u"");
  EXPECT_EQ(LowerCase(verb), u"properties") << "the last entry";
  TString background;
  EXPECT_TRUE(cursor.QueryBackgroundMenu({50, 50}));
  const TKeySender escape({VK_ESCAPE});
  cursor.ShowBackgroundMenu({50, 50}, nullptr, background);
  EXPECT_EQ(background, u"");
}

TEST_F(ContextMenuWindows, MessagesAndEntriesOfBothSides) {
  TMenuWorld world({{u"one", u"One"}, {u"own", u""}}, false);
  TLoggedCursor cursor(world);
  TPopupMenu menu;
  bool clicked = false;
  menu.Items().Add(u"Mine", [&](TObject*) { clicked = true; });
  {
    const TKeySender keys({VK_DOWN, VK_RETURN});
    EXPECT_EQ(cursor->ShowContextMenu({50, 50}, &menu.Items()), u"");
    EXPECT_TRUE(clicked);
    EXPECT_THAT(world.Log, ::testing::Contains("query 1..255 at 1 flags 20"));
  }
  world.TakeLog();
  const TKeySender keys({VK_UP, VK_RETURN});
  EXPECT_EQ(cursor->ShowContextMenu({50, 50}, &menu.Items()), u"own");
  EXPECT_EQ(world.Log.back(), "invoke #1");
  for (const UINT message : {WM_INITMENUPOPUP, WM_MEASUREITEM, WM_DRAWITEM})
    EXPECT_THAT(world.Log, ::testing::Contains("message " + std::to_string(message)));
}

TEST_F(ContextMenuWindows, LettersAreAskedOfTheShellsMenu) {
  TMenuWorld world({{u"one", u"One"}, {u"own", u""}}, false);
  TLoggedCursor cursor(world);
  world.Menu->Answer = MAKELRESULT(1, MNC_EXECUTE);
  const TKeySender keys({'Q'});
  EXPECT_EQ(cursor->ShowContextMenu({50, 50}, nullptr), u"own");
  EXPECT_THAT(world.Log, ::testing::Contains("message " + std::to_string(WM_MENUCHAR)));
}

}  // namespace
}  // namespace oak::tests
