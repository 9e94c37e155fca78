// Commands of the cursor: events in their order, each way to stop one, and what it is done to.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oak/framework/ComApartment.h"
#include "oak/framework/Forms.h"
#include "oak/namespace/FolderTrek.BeforeCommand.h"
#include "oak/namespace/FolderTrek.h"
#include "testkit/HeadlessForms.h"
#include "testkit/OldWindows.h"
#include "testkit/ScopedHost.h"
#include "tests/namespace/CursorLog.h"

namespace oak::tests {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using testkit::TScopedApi;

class CursorCommands : public testing::Test {
 protected:
  testkit::THeadlessScreen Screen{[](const std::string& text) { ADD_FAILURE() << text; }};
  TMenuWorld World{{{u"open", u"&Open", true}, {u"rename", u"&Rename"}}};
  TLoggedCursor Cursor{World};
};

TEST_F(CursorCommands, EventsComeInTheirOrderAndTheLastOneDecides) {
  enum TWay { Invoke, ByMenu };
  struct {
    std::string Stopper;  // who says no
    bool Undone;          // OnBeforeCommand takes that back
    TLog Events;
    bool Done;
  } const rows[] = {
      {"", false, {"select", "shell", "command"}, true},
      {"select", false, {"select"}, false},
      {"shell", false, {"select", "shell", "command!"}, false},
      {"shell", true, {"select", "shell", "command!"}, true},
      {"command", false, {"select", "shell", "command"}, false},
  };
  for (const TWay way : {Invoke, ByMenu})
    for (const auto& row : rows) {
      SCOPED_TRACE(row.Stopper + (row.Undone ? " undone" : "") + std::to_string(way));
      Cursor.Stopper = row.Stopper;
      Cursor.Undo = row.Undone;
      World.TakeLog();
      const TShellCommand command(u"copy");
      EXPECT_EQ(way == Invoke ? Cursor->InvokeCommand(command)
                              : Cursor->InvokeContextMenuCommand(command),
                row.Done);
      TLog expected;
      for (const std::string& event : row.Events) expected.push_back(event + " copy call");
      TLog events(World.Log.begin(), World.Log.begin() + static_cast<std::ptrdiff_t>(std::min(
                                                             World.Log.size(), expected.size())));
      EXPECT_EQ(events, expected);
      EXPECT_EQ(World.Log.back() == "invoke copy", row.Done);
    }
}

TEST_F(CursorCommands, HandlersMayEndTheCursor) {
  for (const std::string event : {"select", "shell", "command"}) {
    TLoggedCursor cursor(World);
    cursor.OnEvent = [&](const std::string& name) {
      if (name == event) cursor.Cursor.reset();
    };
    World.TakeLog();
    EXPECT_FALSE(cursor->InvokeContextMenuCommand(TShellCommand(u"copy"))) << event;
    EXPECT_EQ(World.Log.back(), event + " copy call");
  }
}

TEST_F(CursorCommands, ExtensionsMayEndTheCursorWhileTheyBuildAMenu) {
  for (const TShellCommand& command : {TShellCommand(u"burn"), TShellCommand(saDefault)}) {
    TLoggedCursor cursor(World);
    World.Menu->OnQuery = [&] { cursor.Cursor.reset(); };
    EXPECT_FALSE(cursor->InvokeContextMenuCommand(command));
    EXPECT_FALSE(cursor.Cursor);
    EXPECT_TRUE(World.Log.back().starts_with("query")) << World.Log.back();
  }
}

TEST_F(CursorCommands, DeletingWhatCannotBeDeletedIsSilent) {
  World.Folder->Attributes = ~SFGAO_CANDELETE;
  EXPECT_FALSE(Cursor->InvokeContextMenuCommand(TShellCommand(u"Delete")));
  EXPECT_THAT(World.Log, IsEmpty());
  // Several objects are the collection's matter.
  Cursor.SelectBoth();
  EXPECT_TRUE(Cursor->InvokeContextMenuCommand(saDelete));
  EXPECT_THAT(World.Log,
              AllOf(::testing::Contains("command DELETE call"), ::testing::Contains("menu of 2"),
                    ::testing::Contains("invoke DELETE")));
}

TEST_F(CursorCommands, ByTheMenuOfTheObject) {
  const std::string folder = ToUtf8(World.Files.Path()) + "\\";
  struct {
    TString Name;
    TShellCommand Command;
    bool Async;
    std::string Invoked, Directory;
    DWORD Mask;
  } const rows[] = {
      {u"a.txt", TShellCommand(u"burn"), true, "burn", folder, CMIC_MASK_ASYNCOK},
      {u"a.txt", TShellCommand(u"burn"), false, "burn", folder, 0},
      {u"sub", TShellCommand(u"burn"), true, "burn", "", CMIC_MASK_ASYNCOK},
      {u"a.txt", saDefault, true, "#0", folder, CMIC_MASK_ASYNCOK},
      {u"a.txt", saDelete, false, "DELETE", folder, 0},
      {u"a.txt", saDeleteNoUndo, false, "DELETE", folder, CMIC_MASK_SHIFT_DOWN},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Invoked + " " + ToUtf8(row.Name));
    Cursor.Select(row.Name);
    Cursor->SetAsyncContextMenuOperations(row.Async);
    World.TakeLog();
    EXPECT_TRUE(Cursor->InvokeContextMenuCommand(row.Command));
    EXPECT_EQ(World.Log.back(), "invoke " + row.Invoked);
    EXPECT_EQ(ToUtf8(World.Menu->Directory), row.Directory);
    EXPECT_EQ(World.Menu->Info.fMask, DWORD{CMIC_MASK_UNICODE} | row.Mask);
    EXPECT_EQ(World.Menu->Info.nShow, 1);
  }
  EXPECT_THAT(World.Log, ::testing::Contains("select DELETE call")) << "the verb of the events";
}

TEST_F(CursorCommands, TheDefaultNeedsADefaultEntry) {
  World.Menu->Entries[0].IsDefault = false;
  EXPECT_FALSE(Cursor->InvokeContextMenuCommand(saDefault));
  EXPECT_THAT(World.Log, AllOf(::testing::Contains("select default call"),
                               Not(::testing::Contains("invoke #0"))));
}

TEST_F(CursorCommands, RenamingAsksTheReceiverOfTheEvent) {
  EXPECT_TRUE(Cursor->InvokeContextMenuCommand(saRename));
  EXPECT_EQ(World.Log.back(), "rename");
  EXPECT_THAT(World.Log, Not(::testing::Contains("invoke RENAME")));
}

TEST_F(CursorCommands, RefusalsAreLeftAsTheLastErrorAndTheHourglassGoes) {
  testkit::TScopedHost host;
  const std::size_t menus = TMenuTable::Instance().GetMenuCount();
  int depth = 0;
  World.Menu->OnQuery = [&] { depth = host.GetWaitCursorDepth(); };
  struct {
    HRESULT* Result;
    HRESULT Code;
  } const rows[] = {{&World.Menu->QueryResult, HRESULT_FROM_WIN32(5)},
                    {&World.Menu->InvokeResult, HRESULT_FROM_WIN32(1223)}};
  for (const auto& row : rows) {
    *row.Result = row.Code;
    Api().SetLastError(0);
    EXPECT_FALSE(Cursor->InvokeContextMenuCommand(TShellCommand(u"burn")));
    EXPECT_EQ(Api().GetLastError(), static_cast<DWORD>(row.Code));
    *row.Result = S_OK;
  }
  EXPECT_EQ(depth, 1);
  World.Folder->MenuResult = E_FAIL;
  EXPECT_THROW(Cursor->InvokeContextMenuCommand(TShellCommand(u"burn")), EFolderTrekError);
  Cursor->SetItemIdList(nullptr);
  EXPECT_THROW(Cursor->InvokeContextMenuCommand(TShellCommand(u"burn")), EInvalidOperation);
  EXPECT_EQ(host.GetWaitCursorDepth(), 0);
  EXPECT_EQ(TMenuTable::Instance().GetMenuCount(), menus);
}

TEST_F(CursorCommands, PathsGoToTheClipboard) {
  Cursor->InvokeContextMenuCommand(saCopyPath);
  EXPECT_EQ(Clipboard().GetAsText(), World.Files.Path(u"a.txt"));
  Cursor.SelectBoth();
  Cursor->InvokeContextMenuCommand(TShellCommand(u"CopyPath"));
  EXPECT_EQ(Clipboard().GetAsText(),
            World.Files.Path(u"a.txt") + u"\r\n" + World.Files.Path(u"b.txt"));
  // What has gone still has its path.
  Cursor->GetMultiObjects()->Clear();
  Cursor->GetMultiObjects()->Add(World.Files.Path(u"gone.txt"));
  EXPECT_TRUE(Cursor->InvokeContextMenuCommand(saCopyPath));
  EXPECT_EQ(Clipboard().GetAsText(), World.Files.Path(u"gone.txt"));
}

TEST_F(CursorCommands, ExploreShowsObjectsOfOneFolderOnce) {
  std::vector<TString> shown;
  const TScopedApi show(Api().SHOpenFolderAndSelectItems,
                        [&](PCIDLIST_ABSOLUTE pidl, UINT, PCUITEMID_CHILD_ARRAY, DWORD) {
                          shown.push_back(TOakItemIdList::Create(pidl, iloCopyMemory)->Path());
                          return S_OK;
                        });
  const auto explore = [&] {
    shown.clear();
    EXPECT_TRUE(Cursor->InvokeContextMenuCommand(saExplore));
    return shown;
  };
  const TString a = World.Files.Path(u"a.txt");
  EXPECT_THAT(explore(), ElementsAre(a));
  Cursor.SelectBoth();
  EXPECT_THAT(explore(), ElementsAre(a));
  World.Files.MakeFile(u"sub\\c.txt");
  Cursor->GetMultiObjects()->Clear();
  Cursor->GetMultiObjects()->Add(a);
  Cursor->GetMultiObjects()->Add(World.Files.Path(u"sub\\c.txt"));
  EXPECT_THAT(explore(), ElementsAre(a, World.Files.Path(u"sub\\c.txt")));
}

TEST_F(CursorCommands, CommandPromptsOpenWhereTheFirstObjectLies) {
  TStarted started;
  const std::string path = ToUtf8(World.Files.Path());
  const std::string inner = path + "\\sub";
  EXPECT_TRUE(Cursor->InvokeContextMenuCommand(saOpenCommandPrompt));
  Cursor.Select(u"sub");
  EXPECT_TRUE(Cursor->InvokeContextMenuCommand(saOpenCommandPrompt));
  EXPECT_THAT(started.Calls, ElementsAre("CMD.EXE|/K CD \"" + path + "\"|" + path,
                                         "CMD.EXE|/K CD \"" + inner + "\"|" + inner));
  Cursor->SetSpecialFolder(SF_DESKTOP);
  Cursor->SetAbsoluteItemIdList(TOakItemIdList::CreateForSpecialFolder(SF_DRIVES, false));
  EXPECT_FALSE(Cursor->InvokeContextMenuCommand(saOpenCommandPrompt)) << "no path, no prompt";
  EXPECT_EQ(started.Calls.size(), 2u);
}

TEST_F(CursorCommands, PinningDependsOnTheSystem) {
  {
    const auto version = testkit::TWindowsVersion::Windows10();
    EXPECT_TRUE(Cursor->InvokeContextMenuCommand(saPinToHome));
    EXPECT_EQ(World.TakeLog().back(), "invoke PINTOHOME");
  }
  const auto version = testkit::TWindowsVersion::Windows7();
  const TComApartment apartment;
  const auto links = TOakItemIdList::CreateForSpecialFolder(SF_LINKS, true);
  if (!FileOrFolderExists(links->Path())) GTEST_SKIP() << "no folder of links";
  EXPECT_TRUE(Cursor->InvokeContextMenuCommand(saPinToHome));
  EXPECT_TRUE(Api().DeleteFileW(W(links->Path() + u"\\a.txt.lnk")));
  EXPECT_THAT(World.Log, Not(::testing::Contains("menu of 1")));
}

TEST_F(CursorCommands, DefaultCommandsForPathsAskTheSameEvents) {
  Cursor->InvokeDefaultContextMenuCommand({u"a.txt", World.Files.Path(u"b.txt")});
  EXPECT_THAT(
      World.TakeLog(),
      ElementsAre("shell DEFAULT call", "command DEFAULT call", "menu of 1",
                  "query 1..32767 at 0 flags 1", "invoke #0", "shell DEFAULT call",
                  "command DEFAULT call", "menu of 1", "query 1..32767 at 0 flags 1", "invoke #0"));
  EXPECT_THROW(Cursor->InvokeDefaultContextMenuCommand({u"missing.txt"}), EFolderTrekError);
  EXPECT_EQ(Cursor->GetObjectName(), u"a.txt") << "the cursor itself stays";
}

}  // namespace
}  // namespace oak::tests
