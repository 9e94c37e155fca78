// Operations that change real files through items.
#include <gtest/gtest.h>

#include <functional>

#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/Api.h"
#include "testkit/FaultInjection.h"
#include "tests/MessageOf.h"
#include "tests/namespace/TestFolder.h"

namespace oak::tests {
namespace {

using TItem = TOakItemIdList;

HWND AnyWindow() { return reinterpret_cast<HWND>(std::uintptr_t{1}); }

class OakItemIdListEdit : public ::testing::Test {
 protected:
  TTestFolder fFolder;

  Ref<IItemIdList> Item(TStringView name = {}) { return TItem::Create(fFolder.Path(name)); }
};

TEST_F(OakItemIdListEdit, NewFoldersCountUpFromTheDefaultName) {
  const auto parent = Item();
  for (const TStringView name : {u"New Folder", u"New Folder (1)", u"New Folder (2)"}) {
    const auto made = parent->CreateNewFolder(u"");
    EXPECT_TRUE(fFolder.Exists(name));
    EXPECT_EQ(made->Path(), fFolder.Path(name));
    EXPECT_TRUE(made->IsFolder());
    EXPECT_EQ(made->Depth(), parent->Depth() + 1);
  }
  fFolder.MakeFile(u"taken");
  EXPECT_EQ(parent->CreateNewFolder(u"taken")->Name(), u"taken (1)");
  fFolder.MakeFile(u"file");
  EXPECT_THROW((void)Item(u"file")->CreateNewFolder(u""), EFolderTrekError);
  EXPECT_THROW((void)NullItemIdList()->CreateNewFolder(u"x"), EFolderTrekError);
}

TEST_F(OakItemIdListEdit, RenameGoesOnWithTheNewNameIfWanted) {
  for (const HWND window : {HWND{}, AnyWindow()}) {
    fFolder.MakeFile(u"old.txt");
    const auto item = Item(u"old.txt");
    const PItemIdList held = item->WindowsPointer();
    (void)item->SpecialFolder();
    (void)item->ShellItem();
    item->Rename(u"new.txt", window, true);
    EXPECT_FALSE(fFolder.Exists(u"old.txt"));
    EXPECT_TRUE(fFolder.Exists(u"new.txt"));
    EXPECT_EQ(item->Path(), fFolder.Path(u"new.txt"));
    EXPECT_EQ(item->DisplayName(dnfInFolder), u"new.txt");
    EXPECT_EQ(TItem::Create(held, iloCopyMemory)->Name(), u"old.txt");

    const auto unchanged = Item(u"new.txt");
    const TStringView third = window ? u"by shell.txt" : u"by storage.txt";
    unchanged->Rename(third, window, false);
    EXPECT_TRUE(fFolder.Exists(third));
    EXPECT_EQ(unchanged->Path(), fFolder.Path(u"new.txt"));
  }
}

TEST_F(OakItemIdListEdit, RenameNeverOverwritesAndChangesCaseAlone) {
  fFolder.MakeFile(u"A");
  Item(u"A")->Rename(u"a", nullptr, true);
  EXPECT_FALSE(fFolder.Exists(u"A"));
  fFolder.MakeFile(u"b");
  for (const HWND window : {HWND{}, AnyWindow()}) {
    const auto item = Item(u"a");
    EXPECT_THROW(item->Rename(u"b", window, true), EFolderTrekError);
    EXPECT_TRUE(fFolder.Exists(u"a") && fFolder.Exists(u"b"));
    EXPECT_EQ(item->Path(), fFolder.Path(u"a"));
    EXPECT_FALSE(item->IsInvalid());
  }
  const auto network = TItem::CreateForSpecialFolder(SF_NETWORK, true);
  EXPECT_EQ(MessageOf<EFolderTrekError>([&] { network->Rename(u"x", nullptr, true); }),
            u"Element cannot be renamed");
  EXPECT_THROW(NullItemIdList()->Rename(u"x", nullptr, true), EFolderTrekError);
}

TEST_F(OakItemIdListEdit, StreamsReadFilesAndNothingElse) {
  fFolder.MakeFile(u"a.txt", "hello");
  const auto stream = Item(u"a.txt").As<IStream>();
  ASSERT_NE(stream, nullptr);
  char text[16] = {};
  ULONG read = 0;
  EXPECT_EQ(stream->Read(text, 5, &read), S_OK);
  EXPECT_STREQ(text, "hello");
  EXPECT_NE(Item(u"a.txt").As<ISequentialStream>(), nullptr);
  EXPECT_EQ(Item().As<IStream>(), nullptr);
  EXPECT_EQ(Item(u"missing").As<IStream>(), nullptr);
}

TEST_F(OakItemIdListEdit, LinksLeadToTheirTarget) {
  fFolder.MakeFile(u"target.txt");
  fFolder.MakeFolder(u"links");
  const auto target = Item(u"target.txt");
  const auto link = TShellLinkHelper::AddLinkTo(target, fFolder.Path(u"links"), u"");
  ASSERT_NE(link, nullptr);
  EXPECT_EQ(link->Path(), fFolder.Path(u"links\\target.txt.lnk"));
  EXPECT_TRUE(link->HasAttributes(SFGAO_LINK));
  EXPECT_TRUE(link->LinkTarget()->Equals(target, ilcExact));
  EXPECT_TRUE(TShellLinkHelper::Resolve(link->Path())->Equals(target, ilcExact));
  EXPECT_EQ(TShellLinkHelper::AddLinkTo(target, fFolder.Path(u"links") + u"\\", u"Named")->Path(),
            fFolder.Path(u"links\\Named.lnk"));
  EXPECT_EQ(target->LinkTarget(), target);

  fFolder.MakeFile(u"broken.LNK", "no shortcut");
  const auto broken = Item(u"broken.LNK");
  EXPECT_EQ(broken->LinkTarget(), broken);
  EXPECT_EQ(TShellLinkHelper::Resolve(target), nullptr);
  EXPECT_EQ(TShellLinkHelper::Resolve(fFolder.Path(u"missing.lnk")), nullptr);
  EXPECT_EQ(TShellLinkHelper::AddLinkTo(NullItemIdList(), fFolder.Path(), u"x"), nullptr);
  EXPECT_THROW((void)TShellLinkHelper::AddLinkTo(target, fFolder.Path(u"missing"), u"x"),
               EFolderTrekError);
}

// Runs a change with each of its platform calls failing in turn. A failure comes
// out as the documented exception or not at all.
void SweepChange(
    const std::function<void()>& prepare, const std::function<void()>& change,
    const std::function<void(const std::string&)>& check = [](const std::string&) {}) {
  bool hasRaised = false;
  const int failures = testkit::SweepFaults(
      [&] {
        IApiObserver* injector = SetApiObserver(nullptr);
        prepare();
        SetApiObserver(injector);
        try {
          change();
        } catch (const EFolderTrekError&) {
          hasRaised = true;
        }
      },
      check);
  EXPECT_GT(failures, 0);
  EXPECT_TRUE(hasRaised);
}

TEST_F(OakItemIdListEdit, EveryFailureOfAChangeIsRaisedOrHarmless) {
  Ref<IItemIdList> item;
  const auto prepare = [&] {
    fFolder.MakeFile(u"a.txt");
    item = Item(u"a.txt");
  };
  for (const HWND window : {HWND{}, AnyWindow()}) {
    SweepChange(
        [&] {
          if (fFolder.Exists(u"b.txt")) TItem::From(Item(u"b.txt"))->RemoveStorage();
          prepare();
        },
        [&] { item->Rename(u"b.txt", window, true); },
        [&](const std::string& call) {
          EXPECT_TRUE(fFolder.Exists(u"a.txt") || fFolder.Exists(u"b.txt")) << call;
        });
    EXPECT_TRUE(fFolder.Exists(u"b.txt"));
  }
  SweepChange(prepare, [&] { TItem::From(item)->RemoveStorage(); });
  EXPECT_FALSE(fFolder.Exists(u"a.txt"));
  SweepChange(
      [&] {
        item = Item();
        if (fFolder.Exists(u"made")) TItem::From(Item(u"made"))->RemoveStorage();
      },
      [&] { (void)item->CreateNewFolder(u"made"); });
  SweepChange(prepare, [&] {
    const auto link = TShellLinkHelper::AddLinkTo(item, fFolder.Path(), u"link");
    if (link) (void)link->LinkTarget();
  });
  EXPECT_TRUE(fFolder.Exists(u"link.lnk"));
}

}  // namespace
}  // namespace oak::tests
