// The menu of a folder's background.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oak/framework/Menus.h"
#include "oak/framework/headless/HeadlessMenu.h"
#include "testkit/HeadlessForms.h"
#include "testkit/ScopedHost.h"
#include "tests/namespace/CursorLog.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class BackgroundMenu : public testing::Test {
 protected:
  BackgroundMenu() {
    World.Folder->View = MakeRef<TFakeView>();
    World.Folder->View->Menu = World.Menu;
    for (int i = 1; i <= 20; ++i)
      World.Menu->Entries.push_back({i == 4 ? u"paste" : u"", u"Entry " + IntToStr(i)});
  }
  ~BackgroundMenu() override {
    EXPECT_EQ(Host.GetWaitCursorDepth(), 0);
    EXPECT_EQ(Screen->GetWindowCount(), 0u);
  }

  TString Show(TPopupMenu* menu = nullptr) {
    TString verb = u"before";
    Cursor->ShowBackgroundMenu({10, 10}, menu, verb);
    return verb;
  }
  void Choose(TStringView caption) {
    Screen->OnMenu = [this, caption = TString(caption)](THeadlessMenuSession& menu) {
      Captions = menu.GetCaptions();
      if (!menu.Choose(caption)) menu.Cancel();
    };
  }

  testkit::THeadlessScreen Screen{[](const std::string& text) { ADD_FAILURE() << text; }};
  testkit::TScopedHost Host;
  TMenuWorld World{{}};
  TLoggedCursor Cursor{World};
  std::vector<TString> Captions;
};

TEST_F(BackgroundMenu, VerbsAreTheShellsOrThoseOfKnownPlaces) {
  struct {
    TString Caption, Verb;
    std::string Invoked;
  } const rows[] = {
      {u"Entry 4", u"paste", "invoke #3"},
      {u"Entry 6", u"refresh", "invoke #5"},
      {u"Entry 19", u"thumbnails", "invoke #18"},
      {u"Entry 20", u"20", "invoke #19"},
      {u"Entry 3", u"", ""},  // the first three entries are taken out
      {u"", u"", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(ToUtf8(row.Caption));
    Choose(row.Caption);
    World.TakeLog();
    EXPECT_EQ(Show(), row.Verb);
    TLog expected{"query 1..255 at 0 flags 4", "message 279"};
    if (!row.Invoked.empty()) expected.push_back(row.Invoked);
    EXPECT_EQ(World.Log, expected) << "no event asks for the background";
    EXPECT_EQ(Captions.size(), 17u);
  }
  EXPECT_EQ(World.Menu->Info.cbSize, sizeof(CMINVOKECOMMANDINFO));
  EXPECT_EQ(World.Menu->Info.nShow, 1);
}

TEST_F(BackgroundMenu, StandsBehindACopyOfTheApplicationsEntries) {
  TPopupMenu menu;
  int clicks = 0;
  for (int i = 1; i <= 4; ++i) menu.Items().Add(u"Own " + IntToStr(i), [&](TObject*) { ++clicks; });
  World.Menu->Entries = {{u"one", u"One"}, {u"two", u"Two"}};
  struct {
    bool OnTop;
    std::string Query;
    std::vector<TString> Captions;  // without the first three of what stood there
  } const rows[] = {
      {false, "query 1..255 at 4 flags 4", {u"Own 4", u"One", u"Two"}},
      {true, "query 1..255 at 0 flags 4", {u"Own 2", u"Own 3", u"Own 4"}},
  };
  for (const auto& row : rows) {
    Cursor->SetShowContextMenuOnTop(row.OnTop);
    World.TakeLog();
    Choose(u"Own 4");
    EXPECT_EQ(Show(&menu), u"");
    EXPECT_EQ(World.Log.front(), row.Query);
    EXPECT_EQ(Captions, row.Captions);
  }
  EXPECT_EQ(clicks, 2);
  EXPECT_EQ(menu.Items().GetCount(), 4) << "the application's menu is as it was";
}

TEST_F(BackgroundMenu, Failures) {
  Choose(u"Entry 6");
  World.Menu->InvokeResult = E_FAIL;
  EXPECT_EQ(Show(), u"");
  EXPECT_EQ(World.TakeLog().back(), "invoke #5");
  World.Menu->QueryResult = E_FAIL;
  EXPECT_EQ(Show(), u"__ERROR__");
  EXPECT_FALSE(Cursor->QueryBackgroundMenu({}));
  World.TakeLog();
  World.Folder->View->Menu.Reset();
  EXPECT_EQ(Show(), u"");
  EXPECT_FALSE(Cursor->QueryBackgroundMenu({}));
  World.Folder->View.Reset();
  EXPECT_EQ(Show(), u"");
  Cursor->SetFolderIdList(nullptr);
  EXPECT_EQ(Show(), u"");
  EXPECT_THAT(World.Log, IsEmpty());
}

TEST_F(BackgroundMenu, TheCursorMayEndMeanwhile) {
  Screen->OnMenu = [this](THeadlessMenuSession& menu) {
    Cursor.Cursor.reset();
    menu.Choose(u"Entry 6");
  };
  TString verb;
  Cursor->ShowBackgroundMenu({10, 10}, nullptr, verb);
  EXPECT_EQ(verb, u"refresh");
}

}  // namespace
}  // namespace oak::tests
