// One platform call after the other fails: nothing crashes or leaks, what is
// documented to raise raises, and what was there is still there.
#include <gtest/gtest.h>

#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/OakItemIdList.h"
#include "testkit/FaultInjection.h"
#include "tests/namespace/TestFolder.h"

namespace oak {
namespace {

using testkit::SweepFaults;
using tests::TTestFolder;

/// Runs a scenario that may raise what the library documents, and nothing else.
template <class TScenario>
std::function<void()> Documented(TScenario scenario) {
  return [scenario] {
    try {
      scenario();
    } catch (const EOSError&) {
    } catch (const EOleSysError&) {
    } catch (const EInvalidOperation&) {
    }
  };
}

TEST(FaultSweep, Parse) {
  TTestFolder folder;
  folder.MakeFile(u"file.txt");
  for (const TString& text :
       {folder.Path(u"file.txt"), TString(u"This PC\\C:"), TString(u"Scripted\\a")}) {
    const int failed = SweepFaults(Documented([&] {
      TOakItemIdList::ClearCaches();
      const Ref<IItemIdList> item = TOakItemIdList::Parse(text, nullptr, true);
      ASSERT_TRUE(item);
      item->IsInvalid();
      item->DisplayPath();
      item->SpecialFolder();
      item->HasAttributes(SFGAO_FOLDER);
    }));
    EXPECT_GT(failed, 3) << ToUtf8(text);
  }
  TOakItemIdList::ClearCaches();
  EXPECT_FALSE(TOakItemIdList::Parse(folder.Path(u"file.txt"))->IsInvalid())
      << "nothing is remembered";
}

TEST(FaultSweep, Enumerate) {
  TTestFolder folder;
  folder.MakeFile(u"a.txt");
  folder.MakeFolder(u"b");
  const int failed = SweepFaults(Documented([&] {
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

TEST(FaultSweep, RenameKeepsTheFile) {
  TTestFolder folder;
  const int failed = SweepFaults(
      Documented([&] {
        folder.MakeFile(u"old.txt", "content");
        const Ref<IItemIdList> item = TOakItemIdList::Create(folder.Path(u"old.txt"));
        item->Rename(u"new.txt", nullptr, true);
      }),
      [&](const std::string& call) {
        EXPECT_TRUE(folder.Exists(u"old.txt") || folder.Exists(u"new.txt")) << call;
        TOakItemIdList::ClearCaches();
        if (folder.Exists(u"new.txt"))
          TOakItemIdList::From(TOakItemIdList::Create(folder.Path(u"new.txt")))->RemoveStorage();
      });
  EXPECT_GT(failed, 3);
}

TEST(FaultSweep, CreateAndDelete) {
  const int failed = SweepFaults(Documented([] {
    TTestFolder folder;  // What a failed run leaves must not lengthen the next one.
    const Ref<IItemIdList> parent = TOakItemIdList::Create(folder.Path());
    const Ref<IItemIdList> made = parent->CreateNewFolder(u"made");
    TOakItemIdList::From(made)->RemoveStorage();
  }));
  EXPECT_GT(failed, 3);
}

TEST(FaultSweep, LinkResolve) {
  TTestFolder folder;
  folder.MakeFile(u"target.txt");
  const Ref<IItemIdList> target = TOakItemIdList::Create(folder.Path(u"target.txt"));
  const int failed = SweepFaults(Documented([&] {
    const Ref<IItemIdList> link = TShellLinkHelper::AddLinkTo(target, folder.Path(), u"link");
    ASSERT_TRUE(link);
    ASSERT_TRUE(link->LinkTarget()) << "never nil";
  }));
  EXPECT_GT(failed, 3);
  const Ref<IItemIdList> link = TOakItemIdList::Create(folder.Path(u"link.lnk"));
  EXPECT_EQ(link->LinkTarget()->Path(), folder.Path(u"target.txt"));
}

}  // namespace
}  // namespace oak
