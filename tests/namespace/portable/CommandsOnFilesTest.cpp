// Commands and menus on real files, by the portable shell's own menus.
#include <gtest/gtest.h>

#include "oak/framework/headless/HeadlessMenu.h"
#include "oak/namespace/FolderTrek.BeforeCommand.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"
#include "oak/namespace/Oak.Shell.Types.Commands.h"
#include "oak/namespace/OakItemIdList.h"
#include "testkit/FaultInjection.h"
#include "testkit/HeadlessForms.h"
#include "tests/namespace/TestFolder.h"

namespace oak::tests {
namespace {

using testkit::SweepFaults;

class CommandsOnFiles : public testing::Test {
 protected:
  CommandsOnFiles() {
    Files.MakeFolder(u"from");
    Files.MakeFolder(u"to");
    for (const TString& name : Names) Files.MakeFile(u"from\\" + name, ToUtf8(name));
    Cursor.SetFolder(Files.Path(u"from"));
    Target.SetFolder(Files.Path(u"to"));
  }

  void SelectAll() {
    Cursor.GetMultiObjects()->Clear();
    for (const TString& name : Names) Cursor.GetMultiObjects()->Add(name);
  }
  /// What the menu of the cursor's objects gives when the entry is chosen.
  TString Choose(const TString& path) {
    Screen->QueueMenuChoice(path);
    return Cursor.ShowContextMenu(TPoint(10, 10), nullptr);
  }
  TString ChooseOnBackground(const TString& path) {
    Screen->QueueMenuChoice(path);
    TString verb;
    Target.ShowBackgroundMenu({10, 10}, nullptr, verb);
    return verb;
  }
  Ref<TItemIdListCollection> Collection(const TStringArray& names) {
    const auto list = MakeRef<TItemIdListCollection>();
    for (const TString& name : names) list->Add(Files.Path(name));
    return list;
  }
  bool HasAll(TStringView folder, bool expected) const {
    for (const TString& name : Names)
      if (Files.Exists(TString(folder) + u"\\" + name) != expected) return false;
    return true;
  }

  const std::vector<TString> Names{u"a b.txt", u"100% & more;.dat", u"\u00E4\u6F22\U0001F600.x",
                                   u".hidden"};
  testkit::THeadlessScreen Screen{[](const std::string& text) { ADD_FAILURE() << text; }};
  TTestFolder Files;
  TFolderTrek Cursor;
  TFolderTrek Target;
};

TEST_F(CommandsOnFiles, CopyAndPasteByMenus) {
  SelectAll();
  EXPECT_EQ(Choose(u"Copy"), u"copy");
  EXPECT_EQ(ChooseOnBackground(u"Paste"), u"paste");
  EXPECT_TRUE(HasAll(u"from", true));
  EXPECT_TRUE(HasAll(u"to", true));
  // Once more: the names are taken, nothing is overwritten.
  EXPECT_EQ(ChooseOnBackground(u"Paste"), u"paste");
  EXPECT_TRUE(HasAll(u"to", true));
}

TEST_F(CommandsOnFiles, CutAndPasteByCommands) {
  SelectAll();
  EXPECT_TRUE(Cursor.InvokeContextMenuCommand(saCut));
  EXPECT_TRUE(HasAll(u"from", true)) << "nothing moves before it is pasted";
  EXPECT_TRUE(TOakItemIdList::Create(Files.Path(u"to"))->InvokeCommand(saPaste));
  EXPECT_TRUE(HasAll(u"from", false));
  EXPECT_TRUE(HasAll(u"to", true));
}

TEST_F(CommandsOnFiles, DeletingCanBeRefusedAndDone) {
  bool refuse = true;
  Cursor.OnBeforeCommand = [&](TObject*, TBeforeCommandEventArgs& args) {
    EXPECT_TRUE(args.GetCommand().Equals(u"delete"));
    EXPECT_GE(args.GetElements()->Count(), 1);
    args.SetCancel(refuse);
  };
  SelectAll();
  EXPECT_EQ(Choose(u"Delete"), u"");
  EXPECT_FALSE(Cursor.InvokeContextMenuCommand(saDelete));
  EXPECT_TRUE(HasAll(u"from", true));
  refuse = false;
  Cursor.GetMultiObjects()->Clear();
  Cursor.SetObjectName(Names[0]);
  EXPECT_EQ(Choose(u"Delete"), u"delete");
  EXPECT_FALSE(Files.Exists(u"from\\" + Names[0]));
  Cursor.GetMultiObjects()->Add(Names[1]);
  Cursor.GetMultiObjects()->Add(Names[2]);
  EXPECT_TRUE(Cursor.InvokeCommand(saDeleteNoUndo));
  EXPECT_FALSE(Files.Exists(u"from\\" + Names[1]));
  EXPECT_FALSE(Files.Exists(u"from\\" + Names[2]));
  EXPECT_TRUE(Files.Exists(u"from\\" + Names[3]));
}

TEST_F(CommandsOnFiles, NewFoldersComeFromTheBackground) {
  EXPECT_EQ(ChooseOnBackground(u"New|Folder"), u"newfolder");
  EXPECT_TRUE(Files.Exists(u"to\\New folder"));
  EXPECT_TRUE(Target.QueryBackgroundMenu({10, 10}));
}

TEST_F(CommandsOnFiles, CollectionsDeleteWhatLiesInSeveralFolders) {
  Files.MakeFolder(u"to\\deep");
  Files.MakeFile(u"to\\deep\\c.txt");
  TShellCommand command(saDeleteNoUndo);
  command.OperationOptions.Include(soSilent);
  EXPECT_TRUE(Collection({u"from\\" + Names[0], u"to\\deep"})->InvokeCommand(command));
  EXPECT_FALSE(Files.Exists(u"from\\" + Names[0]));
  EXPECT_FALSE(Files.Exists(u"to\\deep"));
  EXPECT_TRUE(Files.Exists(u"from\\" + Names[1]));
  EXPECT_TRUE(Files.Exists(u"to"));
}

// --- faults ------------------------------------------------------------------------------

/// Runs a scenario that may raise what is documented, and nothing else.
template <class TScenario>
std::function<void()> Raising(TScenario scenario) {
  return [scenario] {
    try {
      scenario();
    } catch (const EOSError&) {
    } catch (const EOleSysError&) {
    } catch (const EInvalidOperation&) {
    }
  };
}

TEST_F(CommandsOnFiles, MenusLeaveNothingWhateverFails) {
  const std::size_t menus = TMenuTable::Instance().GetMenuCount();
  const auto check = [&](const std::string& failed) {
    EXPECT_EQ(Screen->GetWindowCount(), 0u) << failed;
    EXPECT_LE(TMenuTable::Instance().GetMenuCount(), menus) << failed;
    EXPECT_TRUE(HasAll(u"from", true)) << failed;
  };
  Screen->OnMenu = [](THeadlessMenuSession& menu) {
    if (!menu.Choose(u"Copy") && !menu.Choose(u"Refresh")) menu.Cancel();
  };
  EXPECT_GT(SweepFaults(Raising([&] {
                          TFolderTrek cursor;
                          cursor.SetFolder(Files.Path(u"from"));
                          cursor.SetObjectName(Names[0]);
                          cursor.ShowContextMenu(TPoint(10, 10), nullptr);
                        }),
                        check),
            10);
  EXPECT_GT(SweepFaults(Raising([&] {
                          TFolderTrek cursor;
                          cursor.SetFolder(Files.Path(u"to"));
                          TString verb;
                          cursor.ShowBackgroundMenu({10, 10}, nullptr, verb);
                          cursor.QueryBackgroundMenu({10, 10});
                        }),
                        check),
            5);
}

TEST_F(CommandsOnFiles, CommandsLoseNothingWhateverFails) {
  for (const TShellAction action : {saCopy, saCut, saDelete, saProperties}) {
    const int failed = SweepFaults(Raising([&] {
                                     Files.MakeFile(u"to\\x.txt", "content");
                                     TFolderTrek cursor;
                                     cursor.SetFolder(Files.Path(u"to"));
                                     cursor.SetObjectName(u"x.txt");
                                     cursor.InvokeContextMenuCommand(action);
                                     cursor.InvokeCommand(action);
                                   }),
                                   [&](const std::string& call) {
                                     EXPECT_TRUE(action == saDelete || Files.Exists(u"to\\x.txt"))
                                         << call;
                                     EXPECT_TRUE(HasAll(u"from", true)) << call;
                                   });
    EXPECT_GT(failed, 10) << action;
  }
}

TEST_F(CommandsOnFiles, CollectionsGiveTheirObjectsOrRaise) {
  for (const TString& second : {u"from\\" + Names[1], TString(u"to")}) {
    const int failed = SweepFaults([&] {
      TOakItemIdList::ClearCaches();
      const auto list = Collection({u"from\\" + Names[0], second});
      // Each question by itself, so that a failure of one does not spare the others.
      Raising([&] { EXPECT_TRUE(list->GetUIObject(IidOf<IDataObject>())); })();
      Raising([&] { EXPECT_TRUE(list->GetUIObject(IidOf<IContextMenu>())); })();
      Raising([&] { EXPECT_TRUE(list->InvokeCommandOnAll(saCopy)); })();
      // No exception may leave here.
      const HMENU menu = Api().CreatePopupMenu();
      list.As<IContextMenu>()->QueryContextMenu(menu, 0, 1, 255, CMF_NORMAL);
      Api().DestroyMenu(menu);
    });
    EXPECT_GT(failed, 10);
  }
  TOakItemIdList::ClearCaches();
  Api().OleSetClipboard(nullptr);
}

TEST(FaultSweep, Enumerate) {
  TTestFolder folder;
  folder.MakeFile(u"a.txt");
  folder.MakeFolder(u"b");
  const int failed = SweepFaults(Raising([&] {
    TFolderTrek cursor;
    cursor.SetFilter(u"*.txt");
    cursor.SetFolder(folder.Path());
    int count = 0;
    while (cursor.Next() && ++count < 10) {
      cursor.GetShellObjectName(true);
      cursor.GetInfoTip(true);
      cursor.GetLastChangeDate();
      cursor.GetOverlayIndex();
      cursor.HasSubFolders();
    }
    EXPECT_LE(count, 2);
  }));
  EXPECT_GT(failed, 10);
}

}  // namespace
}  // namespace oak::tests
