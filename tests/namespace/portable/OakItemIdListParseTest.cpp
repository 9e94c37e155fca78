// Parsing by names, its cache, and what is slow.
#include <gtest/gtest.h>

#include <thread>

#include "oak/base/Variant.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.ShellColumns.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/portable/PortableConfig.h"
#include "testkit/FaultInjection.h"
#include "testkit/portable/ScriptedFolder.h"
#include "tests/namespace/TestFolder.h"

namespace oak::tests {
namespace {

using testkit::TScopedApi;
using testkit::TScriptedFolder;

using TItem = TOakItemIdList;

/// A tree of objects that have no path, on the desktop: Oak Tree\Branch\Leaf N.
class OakItemIdListParse : public ::testing::Test {
 protected:
  OakItemIdListParse() {
    TItem::ClearCaches();
    fTree->AddFile(u"Acorn");
    fBranch->AddMany(3, u"Leaf ", u"");
  }
  ~OakItemIdListParse() override { TItem::ClearCaches(); }

  Ref<TScriptedFolder> fTree = TScriptedFolder::Make();
  Ref<TScriptedFolder> fBranch = fTree->AddFolder(u"Branch");
  TScopedMount fMount{testkit::DesktopMount(fTree, u"Oak Tree")};

 private:
  // A shell that parses no names as its folders show them, so that they are walked.
  static bool IsShownName(LPCWSTR text) {
    const TString name = FromW(text);
    return StartsText(u"Oak Tree", name) || StartsText(u"This PC", name);
  }
  TScopedApi<decltype(TApi::ILCreateFromPathW)> fCreate{
      Api().ILCreateFromPathW,
      [before = Api().ILCreateFromPathW.Function()](LPCWSTR text) -> PIDLIST_ABSOLUTE {
        return IsShownName(text) ? nullptr : before(text);
      }};
  TScopedApi<decltype(TApi::SHParseDisplayName)> fParse{
      Api().SHParseDisplayName,
      [before = Api().SHParseDisplayName.Function()](LPCWSTR text, IBindCtx* context,
                                                     PIDLIST_ABSOLUTE* pidl, SFGAOF mask,
                                                     SFGAOF* attributes) -> HRESULT {
        *pidl = nullptr;
        return IsShownName(text) ? E_FAIL : before(text, context, pidl, mask, attributes);
      }};

 protected:
  static Ref<IItemIdList> Scan(TStringView text) { return TItem::Parse(text, nullptr, true); }
};

TEST_F(OakItemIdListParse, NamesAreWalkedInAnyCase) {
  for (const TStringView text :
       {u"Oak Tree\\Branch\\Leaf 1", u"oak tree\\BRANCH\\leaf 1", u"Oak Tree/Branch/Leaf 1"}) {
    const auto item = Scan(text);
    ASSERT_FALSE(item->IsInvalid()) << ToUtf8(text);
    EXPECT_EQ(item->Depth(), 3);
    EXPECT_EQ(item->DisplayName(dnfInFolder), u"Leaf 1");
  }
  EXPECT_EQ(Scan(u"Oak Tree\\")->Depth(), 1);
  for (const TStringView text :
       {u"Oak Tree\\Branch\\Leaf 9", u"Oak Tree\\\\Branch", u"Oak Tree\\Acorn\\x", u"/x"})
    EXPECT_TRUE(Scan(text)->IsInvalid()) << ToUtf8(text);
}

TEST_F(OakItemIdListParse, SiblingsAreAskedOfTheRememberedFolder) {
  ASSERT_FALSE(Scan(u"Oak Tree\\Branch\\Leaf 1")->IsInvalid());
  const int listings = fBranch->GetEnumerationCount();
  const auto sibling = TItem::Parse(u"oak tree\\branch\\Leaf 2");  // no scan allowed
  EXPECT_EQ(sibling->DisplayName(dnfInFolder), u"Leaf 2");
  EXPECT_EQ(sibling->Depth(), 3);
  const auto folder = TItem::Parse(u"Oak Tree\\Branch");
  EXPECT_EQ(folder->DisplayName(dnfInFolder), u"Branch");
  EXPECT_EQ(folder->Path(), u"Oak Tree\\Branch");  // the text stands as its path
  EXPECT_EQ(TItem::Parse(u"Oak Tree\\Branch\\Leaf 0")->Depth(), 3);
  EXPECT_TRUE(TItem::Parse(u"Oak Tree\\Branch\\Leaf 7")->IsInvalid());
  EXPECT_EQ(fBranch->GetEnumerationCount(), listings);
  // Another thread neither uses nor fills what the main thread remembers.
  std::thread([] {
    EXPECT_TRUE(TItem::Parse(u"Oak Tree\\Branch\\Leaf 2")->IsInvalid());
    EXPECT_FALSE(Scan(u"Oak Tree\\Acorn")->IsInvalid());
  }).join();
  EXPECT_FALSE(TItem::Parse(u"Oak Tree\\Branch\\Leaf 2")->IsInvalid());
}

TEST_F(OakItemIdListParse, AFolderThatFailsIsNoHit) {
  fBranch->SetFailure(testkit::TScriptedOperation::Next, HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED),
                      1);
  EXPECT_FALSE(Scan(u"Oak Tree\\Branch\\Leaf 0")->IsInvalid());
  TItem::ClearCaches();
  const auto item = Scan(u"Oak Tree\\Branch\\Leaf 2");
  EXPECT_TRUE(item->IsInvalid());
  EXPECT_EQ(item->Path(), u"Oak Tree\\Branch\\Leaf 2");
}

// Everything that reads, on an item that is made anew from the text.
Ref<IItemIdList> ParseAndRead(TStringView text) {
  const auto item = TItem::Parse(text, nullptr, true);
  (void)item->Path();
  (void)item->Name();
  (void)item->DisplayName(dnfForExplorer);
  (void)item->SpecialFolder();
  (void)item->IsSlow();
  (void)item->HasAttributes(SFGAO_BROWSABLE);
  (void)item->LinkTarget();
  (void)item->Reload();
  (void)item->Equals(TItem::CreateForSpecialFolder(SF_DRIVES, true), ilcDisplay);
  (void)item.As<IShellFolder>();
  return item;
}

TEST_F(OakItemIdListParse, EveryFailureOfThePlatformEndsInAnItem) {
  const TTestFolder folder;
  folder.MakeFile(u"a.txt");
  for (const TString& text :
       {folder.Path(u"a.txt"), TString(u"Oak Tree\\Acorn"), TString(u"\"\""), TString(u"\\\\*"),
        TString(u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}")}) {
    Ref<IItemIdList> item;
    const int failures = testkit::SweepFaults([&] { item = ParseAndRead(text); },
                                              [&](const std::string& failed) {
                                                EXPECT_NE(item, nullptr) << failed;
                                                item.Reset();
                                              });
    EXPECT_GT(failures, 0) << ToUtf8(text);
    EXPECT_FALSE(ParseAndRead(text)->IsInvalid()) << ToUtf8(text);
  }
}

TEST_F(OakItemIdListParse, FailuresWhileNamesAreCollectedEndInAnItem) {
  // Each of the first calls in turn, among them those of all special folders.
  for (int failing = 1; failing < 400; failing += 7) {
    TItem::ClearCaches();
    testkit::TFaultInjector injector(failing);
    EXPECT_NE(TItem::Parse(u"Oak Tree\\Acorn", nullptr, true), nullptr);
  }
  TItem::ClearCaches();
  EXPECT_FALSE(Scan(u"Oak Tree\\Acorn")->IsInvalid());
}

// --- special folders of a user -----------------------------------------------------

/// A user whose home is empty but for the documents.
class OakItemIdListUser : public ::testing::Test {
 protected:
  OakItemIdListUser() {
    fHome.MakeFolder(u"Documents");
    TPortableConfig config = *fBefore;
    config.Home = std::filesystem::temp_directory_path() / ToUtf8(ExtractFileName(fHome.Path()));
    config.ConfigHome = config.Home + "/.config";
    SetPortableConfig(config);
    TItem::ClearCaches();
  }
  ~OakItemIdListUser() override {
    SetPortableConfig(fBefore);
    TItem::ClearCaches();
  }

  TTestFolder fHome;
  std::shared_ptr<const TPortableConfig> fBefore = PortableConfig();
};

TEST_F(OakItemIdListUser, EntriesOfQuickAccessLeadToTheRealFolder) {
  const auto quickAccess = TItem::CreateForSpecialFolder(SF_QUICKACCESS, true);
  ASSERT_FALSE(quickAccess->IsInvalid());
  EXPECT_NE(quickAccess, TItem::CreateForSpecialFolder(SF_QUICKACCESS, true));
  EXPECT_EQ(quickAccess->SpecialFolder(), SF_QUICKACCESS);
  EXPECT_NE(quickAccess->ShellItem(), quickAccess->ShellItem());  // never kept
  TFolderTrek cursor(nullptr);
  cursor.SetFolderIdList(quickAccess);
  int documents = 0;
  while (cursor.Next()) {
    const auto entry = cursor.GetAbsoluteItemIdList();
    EXPECT_EQ(entry->Depth(), 2);
    const auto target = entry->LinkTarget();
    EXPECT_FALSE(TItem::IsParentOf(SF_QUICKACCESS, target, true));
    if (target->Path() != fHome.Path(u"Documents")) continue;
    ++documents;
    TVariant value;  // columns are those of the target, as text
    EXPECT_NE(cursor.GetColumnText(TShellColumns::WriteTime(), false, value), u"");
    EXPECT_EQ(value.GetType(), VT_BSTR);
  }
  EXPECT_EQ(documents, 1);
}

// --- slow places -------------------------------------------------------------------

TEST(OakItemIdListSlow, NetworkPlacesAreSlow) {
  for (const UINT type : {DRIVE_REMOTE, DRIVE_FIXED}) {
    const testkit::TScriptedDrive drive(u'X', type, TScriptedFolder::Make());
    EXPECT_EQ(TItem::Create(u"X:\\")->IsSlow(), type == DRIVE_REMOTE);
  }
  EXPECT_TRUE(TItem::CreateForSpecialFolder(SF_NETWORK, true)->IsSlow());
  EXPECT_FALSE(TItem::CreateForSpecialFolder(SF_DRIVES, true)->IsSlow());
  EXPECT_FALSE(TItem::CreateInvalidWithPath(u"\\\\server\\share")->IsSlow());
}

}  // namespace
}  // namespace oak::tests
