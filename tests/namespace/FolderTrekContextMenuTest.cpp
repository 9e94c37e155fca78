// The menus of the cursor, from the hourglass to the clean-up.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oak/framework/Canvas.h"
#include "oak/framework/Menus.h"
#include "oak/framework/headless/HeadlessMenu.h"
#include "oak/namespace/Oak.Shell.Types.Commands.h"
#include "testkit/HeadlessForms.h"
#include "testkit/ScopedHost.h"
#include "tests/namespace/CursorLog.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::Not;

constexpr TStringView MenuError = u"__ERROR__";
constexpr UINT PlainFlags = CMF_EXPLORE | CMF_CANRENAME;

std::string QueryText(int index, UINT flags = PlainFlags) {
  return "query 1..255 at " + std::to_string(index) + " flags " + std::to_string(flags);
}

class ContextMenu : public testing::Test {
 protected:
  ContextMenu() { Cursor.FromMenu(); }
  ~ContextMenu() override { EXPECT_EQ(Host.GetWaitCursorDepth(), 0); }

  /// The next menu is answered by the entry with that caption, and looked at before.
  void Choose(TStringView caption, std::function<void(THeadlessMenuSession&)> look = nullptr) {
    Screen->OnMenu = [this, caption = TString(caption), look](THeadlessMenuSession& menu) {
      World.Log.push_back("open");
      EXPECT_EQ(Host.GetWaitCursorDepth(), 0) << "the user chooses by the usual pointer";
      if (look) look(menu);
      if (menu.IsFinished()) return;
      if (caption.empty())
        menu.Cancel();
      else
        EXPECT_TRUE(menu.Choose(caption)) << ToUtf8(caption);
    };
  }

  testkit::THeadlessScreen Screen{[](const std::string& text) { ADD_FAILURE() << text; }};
  testkit::TScopedHost Host;
  TMenuWorld World{{{u"open", u"&Open", true},
                    {u"delete", u"&Delete"},
                    {u"Burn.It", u"&Burn"},
                    {u"", u"&Nameless"},
                    {u"rename", u"Rena&me"},
                    {u"properties", u"P&roperties"},
                    {u"cut", u"Cu&t"},
                    {u"copy", u"&Copy"},
                    {u"paste", u"&Paste"},
                    {u"unlock-bde", u"&Unlock"},
                    {u"Windows.ModernShare", u"&Share"}}};
  TLoggedCursor Cursor{World};
};

// --- the steps in their order --------------------------------------------------------

TEST_F(ContextMenu, GoesStepByStep) {
  Choose(u"Burn", [&](THeadlessMenuSession& menu) {
    EXPECT_EQ(menu.GetCaptions().size(), World.Menu->Entries.size());
    EXPECT_EQ(Screen->GetWindowCount(), 2u) << "the menu and the window for its messages";
  });
  EXPECT_EQ(Cursor->ShowContextMenu({10, 10}, nullptr), u"Burn.It");
  EXPECT_THAT(World.TakeLog(),
              ElementsAre("menu of 1", QueryText(0), "message 279", "open", "select Burn.It menu",
                          "shell Burn.It menu", "command Burn.It menu", "invoke #2"));
  EXPECT_EQ(Screen->GetWindowCount(), 0u);
  EXPECT_GT(Host.GetWaitCursorCount(), 0);
}

TEST_F(ContextMenu, VerbsGoTheirOwnWays) {
  struct {
    TString Caption;
    TLog Done;       // after the events, for one object
    TLog DoneToTwo;  // for several
    TString Verb;
  } const rows[] = {
      {u"Open", {"invoke #0"}, {"menu of 1", "invoke OPEN", "menu of 1", "invoke OPEN"}, u"open"},
      {u"Delete", {"invoke #1"}, {"menu of 2", "invoke delete"}, u"delete"},
      {u"Nameless", {"invoke #3"}, {"invoke #3"}, u""},
      {u"Rename", {"rename"}, {"rename"}, u"rename"},
      {u"Cut", {"invoke #6"}, {"menu of 2", "invoke cut"}, u"cut"},
      {u"Unlock",
       {"menu of 1", "invoke unlock-bde"},
       {"menu of 2", "invoke unlock-bde"},
       u"unlock-bde"},
      {u"Properties", {"menu of 1", "invoke properties"}, {}, u"properties"},
      {u"Copy", {"invoke #7"}, {}, u"copy"},
      {u"Share", {"invoke #10"}, {"invoke #10"}, u"Windows.ModernShare"},
  };
  for (const bool two : {false, true}) {
    if (two) Cursor.SelectBoth();
    for (const auto& row : rows) {
      if (two && row.DoneToTwo.empty()) continue;
      SCOPED_TRACE(ToUtf8(row.Caption) + (two ? " two" : ""));
      Choose(row.Caption);
      World.TakeLog();
      EXPECT_EQ(Cursor->ShowContextMenu({10, 10}, nullptr), row.Verb);
      TLog expected{"select " + ToUtf8(row.Verb) + " menu", "shell " + ToUtf8(row.Verb) + " menu",
                    "command " + ToUtf8(row.Verb) + " menu"};
      const TLog& done = two ? row.DoneToTwo : row.Done;
      expected.insert(expected.end(), done.begin(), done.end());
      TLog seen;
      bool isOpen = false;
      for (const std::string& line : World.Log) {
        if (isOpen && !line.starts_with("query")) seen.push_back(line);
        isOpen = isOpen || line == "open";
      }
      EXPECT_EQ(seen, expected);
    }
  }
}

TEST_F(ContextMenu, PasteGoesIntoTheFolderOfTheObjectOrIntoTheObject) {
  Choose(u"Paste");
  Cursor.Select(u"sub");
  EXPECT_EQ(Cursor->ShowContextMenu({10, 10}, nullptr), u"paste");
  EXPECT_EQ(World.TakeLog().back(), "invoke #8") << "the object's own menu";
  // A world within the world: pasting beside a file is a command on the folder.
  Cursor.Select(u"a.txt");
  const testkit::TScopedApi noItems(
      Api().SHCreateShellItem,
      [](PCIDLIST_ABSOLUTE, IShellFolder*, PCUITEMID_CHILD, IShellItem**) { return E_FAIL; });
  EXPECT_THROW(Cursor->ShowContextMenu({10, 10}, nullptr), EFolderTrekError);
  EXPECT_THAT(World.Log, Not(::testing::Contains("invoke #8")));
  EXPECT_EQ(Screen->GetWindowCount(), 0u);
}

// --- ways to stop it -------------------------------------------------------------------

TEST_F(ContextMenu, EachWayToStop) {
  struct {
    std::string Stopper;
    TLog Events;
  } const rows[] = {
      {"cancel", {}},
      {"before", {"before Burn.It"}},
      {"select", {"before Burn.It", "select Burn.It menu"}},
      {"shell",
       {"before Burn.It", "select Burn.It menu", "shell Burn.It menu", "command! Burn.It menu"}},
      {"command",
       {"before Burn.It", "select Burn.It menu", "shell Burn.It menu", "command Burn.It menu"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Stopper);
    Choose(row.Stopper == "cancel" ? u"" : u"Burn");
    Cursor.Stopper = row.Stopper;
    World.TakeLog();
    const TString verb = Cursor->ShowContextMenu({10, 10}, nullptr, [&](const TString& chosen) {
      World.Log.push_back("before " + ToUtf8(chosen));
      return row.Stopper != "before";
    });
    EXPECT_EQ(verb, u"");
    EXPECT_THAT(TLog(World.Log.begin() + 4, World.Log.end()), ElementsAreArray(row.Events));
  }
}

TEST_F(ContextMenu, FailuresGiveTheErrorOrRaiseAndLeaveNothing) {
  const std::size_t menus = TMenuTable::Instance().GetMenuCount();
  Choose(u"Burn");
  World.Menu->QueryResult = E_FAIL;
  EXPECT_EQ(Cursor->ShowContextMenu({10, 10}, nullptr), MenuError);
  EXPECT_THAT(World.TakeLog(), ElementsAre("menu of 1", QueryText(0)));
  World.Menu->QueryResult = S_OK;
  World.Menu->InvokeResult = E_FAIL;
  EXPECT_EQ(Cursor->ShowContextMenu({10, 10}, nullptr), MenuError) << "nothing was done";
  World.Folder->MenuResult = E_FAIL;
  EXPECT_THROW(Cursor->ShowContextMenu({10, 10}, nullptr), EFolderTrekError);
  World.Folder->MenuResult = S_OK;
  // Exceptions on each step.
  const auto raise = [] { throw EInvalidOperation(u"test"); };
  World.Menu->OnQuery = raise;
  EXPECT_THROW(Cursor->ShowContextMenu({10, 10}, nullptr), EInvalidOperation);
  World.Menu->OnQuery = nullptr;
  EXPECT_THROW(
      Cursor->ShowContextMenu({10, 10}, nullptr,
                              [](const TString&) -> bool { throw EInvalidOperation(u"test"); }),
      EInvalidOperation);
  Cursor.OnEvent = [&](const std::string&) { raise(); };
  EXPECT_THROW(Cursor->ShowContextMenu({10, 10}, nullptr), EInvalidOperation);
  Cursor->SetItemIdList(nullptr);
  EXPECT_THROW(Cursor->ShowContextMenu({10, 10}, nullptr), EInvalidOperation);
  EXPECT_EQ(Screen->GetWindowCount(), 0u);
  EXPECT_EQ(TMenuTable::Instance().GetMenuCount(), menus);
  EXPECT_EQ(Host.GetWaitCursorDepth(), 0);
}

TEST_F(ContextMenu, TheCursorMayEndMeanwhile) {
  for (const std::string moment : {"query", "open", "select", "command"}) {
    SCOPED_TRACE(moment);
    TLoggedCursor cursor(World);
    const auto endAt = [&](const std::string& name) {
      if (name == moment) cursor.Cursor.reset();
    };
    World.Menu->OnQuery = [&] { endAt("query"); };
    Choose(u"Burn", [&](THeadlessMenuSession&) { endAt("open"); });
    cursor.OnEvent = endAt;
    World.TakeLog();
    cursor->ShowContextMenu({10, 10}, nullptr);
    EXPECT_FALSE(cursor.Cursor);
    EXPECT_THAT(World.Log, Not(::testing::Contains("invoke #2")));
    EXPECT_EQ(Screen->GetWindowCount(), 0u);
  }
}

// --- what is in it -----------------------------------------------------------------------

TEST_F(ContextMenu, FlagsFollowKeysAndHandlers) {
  Choose(u"");
  Cursor->ShowContextMenu({10, 10}, nullptr);
  Cursor->OnRename = nullptr;
  Cursor->ShowContextMenu();
  Screen->KeyDown(vkShift);
  Cursor->ShowContextMenu({10, 10}, nullptr);
  Screen->KeyUp(vkShift);
  EXPECT_THAT(World.Log, ::testing::Contains(QueryText(0, CMF_EXPLORE | CMF_CANRENAME)));
  EXPECT_THAT(World.Log, ::testing::Contains(QueryText(0, CMF_EXPLORE)));
  EXPECT_THAT(World.Log, ::testing::Contains(QueryText(0, CMF_EXPLORE | CMF_EXTENDEDVERBS)));
}

TEST_F(ContextMenu, LongSelectionsAreShortenedForTheMenuAlone) {
  for (const int count : {160, 161, 400}) {
    Cursor->GetMultiObjects()->Clear();
    for (int i = 0; i < count; ++i)
      Cursor->GetMultiObjects()->Add(World[i % 2 ? u"b.txt" : u"a.txt"]->GetLastPart());
    World.TakeLog();
    Choose(u"Delete");
    EXPECT_EQ(Cursor->ShowContextMenu({10, 10}, nullptr), u"delete");
    EXPECT_EQ(World.Log.front(), "menu of 160");
    EXPECT_THAT(World.Log, ::testing::Contains("menu of " + std::to_string(count)))
        << "what is deleted is the whole selection";
  }
}

TEST_F(ContextMenu, MenusOfTheApplicationTakeTheEntriesOfTheShell) {
  TPopupMenu menu;
  TLog clicks;
  std::vector<const TObject*> senders;
  const auto onClick = [&](TObject* sender) {
    senders.push_back(sender);
    EXPECT_EQ(Screen->GetWindowCount(), 0u) << "the menu has gone by then";
  };
  TMenuItem* const first = menu.Items().Add(u"First", onClick);
  menu.Items().Add(u"Hidden")->SetVisible(false);
  TMenuItem* const anchor = menu.Items().Add(u"Anchor", onClick);
  anchor->SetAutoCheck(true);
  TMenuItem* const inner = menu.Items().Add(u"More")->Add(u"Inner", onClick);
  World.Menu->Entries = {{u"open", u"Open"}};
  struct {
    TMenuItem* Anchor;
    bool OnTop;
    std::vector<TString> Captions;
  } const rows[] = {
      {&menu.Items(), false, {u"First", u"Anchor", u"More >", u"Open"}},
      {anchor, false, {u"First", u"Open", u"Anchor", u"More >"}},
      {inner, false, {u"First", u"Anchor", u"Open", u"More >"}},
      {first, false, {u"Open", u"First", u"Anchor", u"More >"}},
      {anchor, true, {u"Open", u"First", u"Anchor", u"More >"}},
  };
  for (const auto& row : rows) {
    Cursor->SetShowContextMenuOnTop(row.OnTop);
    Choose(u"Open",
           [&](THeadlessMenuSession& session) { EXPECT_EQ(session.GetCaptions(), row.Captions); });
    EXPECT_EQ(Cursor->ShowContextMenu({10, 10}, row.Anchor), u"open");
  }
  World.TakeLog();
  for (const auto* caption : {u"Anchor", u"More|Inner"}) {
    Choose(caption);
    EXPECT_EQ(Cursor->ShowContextMenu({10, 10}, anchor), u"");
  }
  EXPECT_THAT(senders, ElementsAre(anchor, inner)) << "handlers see their own entries";
  EXPECT_TRUE(anchor->GetChecked());
  EXPECT_THAT(World.Log, Not(::testing::Contains("select  menu")));
}

TEST_F(ContextMenu, AMenuMayExchangeTheAnchorWhileItFillsItself) {
  TPopupMenu menu;
  menu.Items().Add(u"First");
  TMenuItem* const anchor = menu.Items().Add(u"Anchor");
  menu.OnPopup = [&](TObject*) {
    menu.Items().Clear();
    menu.Items().Add(u"Other");
  };
  World.Menu->Entries = {{u"open", u"Open"}};
  Choose(u"", [&](THeadlessMenuSession& session) {
    EXPECT_THAT(session.GetCaptions(), ElementsAre(u"Other", u"Open")) << "at the end then";
  });
  EXPECT_EQ(Cursor->ShowContextMenu({10, 10}, anchor), u"");
  EXPECT_THAT(World.Log, ::testing::Contains("open"));
}

TEST_F(ContextMenu, AnApplicationMayDestroyItsMenuMeanwhile) {
  auto menu = std::make_unique<TPopupMenu>();
  bool clicked = false;
  menu->Items().Add(u"Mine", [&](TObject*) { clicked = true; });
  Choose(u"Mine", [&](THeadlessMenuSession&) { menu.reset(); });
  EXPECT_EQ(Cursor->ShowContextMenu({10, 10}, &menu->Items()), u"");
  EXPECT_FALSE(clicked);
}

// --- messages ----------------------------------------------------------------------------

TEST_F(ContextMenu, MessagesGoToTheShellsMenu) {
  World.Menu->Entries = {{u"one", u"One"}, {u"own", u""}};
  struct {
    int Level;
    TLog Messages;  // behind the query: before the menu opens, when it is painted, on a letter
  } const rows[] = {
      {1, {}},
      {2, {"message 279", "message 44", "message 43"}},
      {3, {"message 279", "message 44", "message 43", "message 288"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Level);
    World.Menu->Level = row.Level;
    World.Menu->Answer = (MNC_EXECUTE << 16) | 1;
    Screen->OnMenu = [&](THeadlessMenuSession&) {
      Screen->Paint();
      const int height = Screen->GetTopWindows().back()->GetBounds().Height();
      EXPECT_EQ(height, row.Level == 1 ? 42 : 72) << "a drawn entry has the size that it wants";
      Screen->SetAutoRun(false);
      Screen->TypeText(u"q");
      Screen->KeyPress(vkEscape);
      Screen->SetAutoRun(true);
    };
    World.TakeLog();
    const TString verb = Cursor->ShowContextMenu({10, 10}, nullptr);
    EXPECT_EQ(verb, row.Level == 3 ? u"own" : u"");
    TLog messages;
    for (const std::string& line : World.Log)
      if (line.starts_with("message") &&
          std::find(messages.begin(), messages.end(), line) == messages.end())
        messages.push_back(line);
    EXPECT_EQ(messages, row.Messages);
  }
}

TEST_F(ContextMenu, EntriesThatTheApplicationDrawsKeepTheirHandlers) {
  TPopupMenu menu;
  TMenuItem* const item = menu.Items().Add(u"Drawn");
  std::vector<const TObject*> senders;
  item->OnMeasureItem = [&](TObject* sender, TCanvas&, int& width, int& height) {
    senders.push_back(sender);
    width = 200;
    height = 33;
  };
  item->OnDrawItem = [&](TObject* sender, TCanvas& canvas, const TRect& rect, bool) {
    senders.push_back(sender);
    canvas.DrawText(rect, u"by hand", {tfSingleLine});
  };
  World.Menu->Entries.clear();
  Choose(u"", [&](THeadlessMenuSession&) {
    Screen->Paint();
    const THeadlessWindow& window = *Screen->GetTopWindows().back();
    EXPECT_EQ(window.GetBounds().Height(), 35);
    EXPECT_EQ(window.GetDrawing().back().Text, u"by hand");
  });
  Cursor->ShowContextMenu({10, 10}, item);
  EXPECT_THAT(senders, ElementsAre(item, item));
}

TEST_F(ContextMenu, MenusOpenInsideOfMenus) {
  int depth = 0;
  Screen->OnMenu = [&](THeadlessMenuSession& menu) {
    if (depth++ == 0) {
      EXPECT_EQ(Cursor->ShowContextMenu({50, 50}, nullptr), u"Burn.It");
    }
    World.TakeLog();
    TMessage message{WM_INITMENUPOPUP, 0, 0, 0};
    Cursor->HandlePopupMessages(message);
    EXPECT_THAT(World.Log, ElementsAre("message 279")) << "the outer menu is the active one again";
    EXPECT_TRUE(menu.Choose(u"Burn"));
  };
  EXPECT_EQ(Cursor->ShowContextMenu({10, 10}, nullptr), u"Burn.It");
  EXPECT_EQ(depth, 2);
}

// --- looking entries up --------------------------------------------------------------------

TEST(MenuCommands, AreFoundByTheirCaptions) {
  HMENU menu = Api().CreatePopupMenu();
  HMENU sub = Api().CreatePopupMenu();
  Api().InsertMenuW(menu, 0, MF_BYPOSITION, 7, W(u"&Open\tCtrl+O"));
  Api().InsertMenuW(menu, 1, MF_BYPOSITION | MF_POPUP, reinterpret_cast<UINT_PTR>(sub), W(u"More"));
  Api().InsertMenuW(sub, 0, MF_BYPOSITION, 9, W(u"R&&D"));
  struct {
    TString Caption;
    UINT Id;
  } const rows[] = {{u"open", 7}, {u"O&PEN", 7}, {u"R&&D", 9}, {u"More", 0}, {u"", 0}, {u"x", 0}};
  for (const auto& row : rows)
    EXPECT_EQ(TFolderTrek::GetCommandIdForMenuCaption(menu, row.Caption), row.Id)
        << ToUtf8(row.Caption);
  EXPECT_EQ(TFolderTrek::GetCommandIdForMenuCaption(nullptr, u"open"), 0u);
  Api().DestroyMenu(menu);
}

}  // namespace
}  // namespace oak::tests
