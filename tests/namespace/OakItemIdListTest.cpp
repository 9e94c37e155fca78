// Items made of texts and lists: what they cost, what they keep, how they compare.
#include "oak/namespace/OakItemIdList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oak/namespace/Oak.Shell.Types.h"
#include "testkit/CallCounter.h"
#include "testkit/OldWindows.h"
#include "testkit/ScopedApi.h"
#include "testkit/VirtualClock.h"
#include "tests/namespace/FakeShellItem.h"
#include "tests/namespace/TestFolder.h"

namespace oak::tests {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;
using testkit::TCallCounter;
using testkit::TScopedApi;

using TItem = TOakItemIdList;

Ref<IItemIdList> ItemOf(std::initializer_list<BYTE> elements) {
  return TItem::Create(TestPidl(elements));
}

std::vector<int> Elements(const Ref<IItemIdList>& item) {
  std::vector<int> result;
  const auto* bytes = reinterpret_cast<const BYTE*>(item->WindowsPointer());
  for (int i = 0; i < item->Depth(); ++i) result.push_back(bytes[3 * i + 2]);
  return result;
}

template <class E, class TBody>
std::string MessageOf(TBody&& body) {
  try {
    body();
  } catch (const E& error) {
    return ToUtf8(error.GetMessage());
  }
  return "nothing was raised";
}

// --- cost and size -------------------------------------------------------------

TEST(OakItemIdList, PathsAndTheirComparisonAskNobody) {
  const TCallCounter calls;
  const auto item = TItem::Create(u"C:\\Dir");
  EXPECT_EQ(item->Path(), u"C:\\Dir");
  EXPECT_EQ(item->DisplayPath(), u"C:\\Dir");
  EXPECT_TRUE(item->Equals(TItem::Create(u"c:\\dir\\"), ilcDisplay));
  EXPECT_FALSE(item->Equals(TItem::Create(u"C:\\Dir2"), ilcDisplay));
  EXPECT_EQ(item->CompareTo(TItem::Create(u"c:\\DIR"), ilcDisplay), 0);
  EXPECT_FALSE(item->IsSpecialFolder(SF_DESKTOP));
  EXPECT_FALSE(item->IsResolved());
  EXPECT_EQ(calls.Total(), 0) << calls.ToString();
}

TEST(OakItemIdList, FileSystemAttributeOfAKnownPathIsOneLookUp) {
  const TTestFolder folder;
  folder.MakeFile(u"a.txt");
  const auto item = TItem::Create(folder.Path(u"a.txt"));
  TCallCounter calls;
  EXPECT_TRUE(item->HasAttributes(SFGAO_FILESYSTEM));
  EXPECT_EQ(calls.Count("FindFirstFileW"), 1);
  EXPECT_EQ(calls.Count("SHParseDisplayName") + calls.Count("ILCreateFromPathW") +
                calls.Count("SHCreateShellItem"),
            0)
      << calls.ToString();
  EXPECT_FALSE(item->IsResolved());
}

TEST(OakItemIdList, IsSmall) { EXPECT_LE(sizeof(TOakItemIdList), 128u); }

TEST(OakItemIdList, ResolvingIsTriedOnce) {
  const auto item = TItem::Create(u"Q:\\no\\such\\thing");
  TCallCounter calls;
  EXPECT_TRUE(item->IsInvalid());
  EXPECT_GT(calls.Count("SHParseDisplayName"), 0);
  calls.Reset();
  EXPECT_TRUE(item->IsInvalid());
  EXPECT_EQ(item->ShellItem(), nullptr);
  EXPECT_FALSE(item->HasAttributes(SFGAO_FOLDER));
  EXPECT_EQ(calls.Total(), 0) << calls.ToString();
  EXPECT_TRUE(item->IsResolved());
  EXPECT_EQ(item->Path(), u"Q:\\no\\such\\thing");
}

// --- the stored path -----------------------------------------------------------

TEST(OakItemIdList, PathFieldKeepsOnlyTheDelimiterOfADrive) {
  const struct {
    TStringView text;
    TStringView path;
  } cases[] = {
      {u"C:\\", u"C:\\"},
      {u"C:\\Dir\\", u"C:\\Dir"},
      {u"C:\\Dir", u"C:\\Dir"},
      {u"\\\\server\\share\\", u"\\\\server\\share"},
      {u"\\\\?\\C:\\Dir\\", u"\\\\?\\C:\\Dir"},
  };
  for (const auto& c : cases) EXPECT_EQ(TItem::Create(c.text)->Path(), c.path) << ToUtf8(c.text);
}

TEST(OakItemIdList, APathThatIsNoPathIsDroppedOnceTheObjectIsKnown) {
  // The computer has no directory, so the text does not stand as its path.
  const auto item = TItem::Create(u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}");
  ASSERT_FALSE(item->IsInvalid());
  EXPECT_EQ(item->Path(), u"");
  // An invalid one keeps its text.
  const auto invalid = TItem::Create(u"Q:\\no such::thing");
  EXPECT_TRUE(invalid->IsInvalid());
  EXPECT_EQ(invalid->Path(), u"Q:\\no such::thing");
}

TEST(OakItemIdList, InvalidItemsStillTellTheirPath) {
  for (const TStringView text : {u"C:\\no such", u"gone", u"search-ms:x", u"x"}) {
    const auto item = TItem::CreateInvalidWithPath(text);
    EXPECT_TRUE(item->IsInvalid());
    EXPECT_TRUE(item->IsResolved());
    EXPECT_EQ(item->Path(), text);
    EXPECT_EQ(item->DisplayPath(), text);
    EXPECT_FALSE(item->Reload());
    EXPECT_EQ(item->SpecialFolder(), SF_INVALID);
  }
  EXPECT_EQ(TItem::Create(nullptr, iloForeignOwned)->Path(), u"");
}

TEST(OakItemIdList, LibraryAndServerPathsComeOnlyForElementsBelowTheDesktop) {
  const TScopedApi noPath(Api().SHGetPathFromIDListEx,
                          [](PCIDLIST_ABSOLUTE, LPWSTR, DWORD, int) { return FALSE; });
  const TScopedApi noShortPath(Api().SHGetPathFromIDListW,
                               [](PCIDLIST_ABSOLUTE, LPWSTR) { return FALSE; });
  const auto fake = MakeRef<TFakeShellItem>();
  const TScopedApi make(Api().SHCreateShellItem,
                        [&](PCIDLIST_ABSOLUTE, IShellFolder*, PCUITEMID_CHILD, IShellItem** item) {
                          *item = Ref<IShellItem>(fake).Detach();
                          return S_OK;
                        });
  const struct {
    TStringView editingName;
    TStringView path;
  } cases[] = {{u"\\\\server", u"\\\\server"},
               {u"\\\\server\\share", u""},
               {u"\\\\serv*", u""},
               {u"Libraries\\Documents", u""}};
  for (const auto& c : cases) {
    fake->Names[SIGDN_DESKTOPABSOLUTEEDITING] = c.editingName;
    EXPECT_EQ(ItemOf({1, 2})->Path(), c.path);
    EXPECT_EQ(ItemOf({1})->Path(), u"");
  }
}

// --- lists ---------------------------------------------------------------------

TEST(OakItemIdList, StartParentAndLastPart) {
  const auto item = ItemOf({10, 20, 30});
  EXPECT_EQ(item->Depth(), 3);
  const std::vector<int> expected[] = {{}, {10}, {10, 20}, {10, 20, 30}, {10, 20, 30}};
  for (int i = 0; i < 5; ++i) {
    const auto start = item->GetStartItemIdList(i);
    EXPECT_FALSE(start->IsInvalid());
    EXPECT_EQ(Elements(start), expected[i]);
    EXPECT_NE(start->WindowsPointer(), item->WindowsPointer());
  }
  EXPECT_EQ(Elements(item->GetParent()), (std::vector<int>{10, 20}));
  EXPECT_EQ(Elements(item->GetLastPart()), (std::vector<int>{30}));
  EXPECT_EQ(Elements(item->GetParent()->Concat(item->GetLastPart())),
            (std::vector<int>{10, 20, 30}));
  EXPECT_EQ(item->Concat(nullptr), item);
  EXPECT_EQ(Elements(item->Concat(NullItemIdList())), (std::vector<int>{10, 20, 30}));
  EXPECT_TRUE(NullItemIdList()->GetStartItemIdList(0)->IsInvalid());
  EXPECT_TRUE(NullItemIdList()->GetLastPart()->IsInvalid());
}

TEST(OakItemIdList, WrongCountsAndMissingParentsRaise) {
  const std::string negative =
      "TOakItemIdList.GetStartItemIdList: The paramter pFragments must be greater or equal 0.";
  const auto item = ItemOf({10});
  EXPECT_EQ(MessageOf<EInvalidArgument>([&] { (void)item->GetStartItemIdList(-1); }), negative);
  EXPECT_EQ(MessageOf<EInvalidArgument>([&] { (void)TItem::GetElementNo(nullptr, -1); }), negative);
  EXPECT_THAT(MessageOf<EFolderTrekError>([&] { (void)TItem::Create(TPidl())->GetParent(); }),
              StartsWith("Could not get the parent ItemIdList for invalid ItemIdList:  Internal "
                         "data: FPath: -, fSpecialFolder: SF_INVALID, Invalid"));
  EXPECT_THAT(MessageOf<EFolderTrekError>([&] { (void)item->GetParent()->GetParent(); }),
              StartsWith("Could not get the parent ItemIdList for:  Internal data: FPath: -, "
                         "fSpecialFolder: SF_INVALID, Valid"));
}

TEST(OakItemIdList, ElementsAreFoundInsideTheCallersList) {
  const TPidl pidl = TestPidl({7, 8});
  const auto* bytes = reinterpret_cast<const BYTE*>(pidl.Get());
  for (const auto& [skip, offset] : {std::pair{0, 0}, {1, 3}, {2, 6}, {99, 6}})
    EXPECT_EQ(reinterpret_cast<const BYTE*>(TItem::GetElementNo(pidl.Get(), skip)), bytes + offset);
  EXPECT_EQ(TItem::GetElementNo(nullptr, 3), nullptr);
  EXPECT_EQ(TItem::GetDepth(nullptr), 0);
}

TEST(OakItemIdList, OwnershipOfTheCallersList) {
  TPidl pidl = TestPidl({1});
  const auto foreign = TItem::Create(pidl.Get(), iloForeignOwned);
  EXPECT_EQ(foreign->WindowsPointer(), pidl.Get());
  const auto copy = TItem::Create(pidl.Get(), iloCopyMemory);
  EXPECT_NE(copy->WindowsPointer(), pidl.Get());
  EXPECT_EQ(Elements(copy), Elements(foreign));
  TItem::From(foreign)->SetPidl(TestPidl({2}));  // what it does not own is left alone
  EXPECT_EQ(Elements(foreign), std::vector<int>{2});
  PItemIdList raw = pidl.Detach();
  EXPECT_EQ(TItem::Create(raw, iloOwnsMemory)->WindowsPointer(), raw);
}

TEST(OakItemIdList, ParentIsJudgedByListThenByPath) {
  const TTestFolder folder;
  folder.MakeFile(u"a.txt");
  const auto directory = TItem::Create(folder.Path());
  EXPECT_FALSE(directory->IsParentOf(nullptr, true, ilcDisplay));
  EXPECT_FALSE(directory->IsParentOf(directory, false, ilcExact));
  EXPECT_TRUE(directory->IsParentOf(directory, true, ilcExact));
  const auto file = TItem::Create(folder.Path(u"a.txt"));
  EXPECT_TRUE(directory->IsParentOf(file, false, ilcExact));
  EXPECT_FALSE(file->IsParentOf(directory, true, ilcExact));
  // What only has a path lies below a directory for the eye alone.
  const auto lost = TItem::CreateInvalidWithPath(folder.Path(u"lost"));
  EXPECT_TRUE(directory->IsParentOf(lost, false, ilcDisplay));
  EXPECT_FALSE(directory->IsParentOf(lost, false, ilcExact));
  const auto itself = TItem::CreateInvalidWithPath(folder.Path() + u"\\");
  EXPECT_TRUE(directory->IsParentOf(itself, true, ilcDisplay));
  EXPECT_FALSE(directory->IsParentOf(itself, false, ilcDisplay));
  EXPECT_FALSE(NullItemIdList()->IsParentOf(file, true, ilcDisplay));
}

TEST(OakItemIdList, EqualsStopsAtThePathsAndCompareToGoesOn) {
  const auto fake = MakeRef<TFakeShellItem>();
  fake->CompareResult = S_OK;
  fake->Order = 0;
  const TScopedApi make(Api().SHCreateShellItem,
                        [&](PCIDLIST_ABSOLUTE, IShellFolder*, PCUITEMID_CHILD, IShellItem** item) {
                          *item = Ref<IShellItem>(fake).Detach();
                          return S_OK;
                        });
  const TTestFolder folder;
  folder.MakeFile(u"a");
  folder.MakeFile(u"b");
  const auto a = TItem::Create(folder.Path(u"a"));
  const auto b = TItem::Create(folder.Path(u"b"));
  EXPECT_FALSE(a->Equals(b, ilcDisplay));
  EXPECT_EQ(a->CompareTo(b, ilcDisplay), 0);  // the shell says so here
  EXPECT_EQ(fake->SeenHint, static_cast<SICHINTF>(SICHINT_DISPLAY));
  EXPECT_EQ(a->CompareTo(b, ilcExact), 0);
  EXPECT_EQ(fake->SeenHint, static_cast<SICHINTF>(SICHINT_CANONICAL));
  fake->Order = -5;
  EXPECT_EQ(a->CompareTo(b, ilcExact), -5);
  EXPECT_EQ(a->CompareTo(nullptr, ilcExact), -1);
  EXPECT_FALSE(a->Equals(nullptr, ilcDisplay));
  EXPECT_TRUE(NullItemIdList()->Equals(NullItemIdList(), ilcExact));
  EXPECT_FALSE(a->Equals(a->GetParent(), ilcExact));
  EXPECT_NE(a->CompareTo(NullItemIdList(), ilcExact), 0);
}

TEST(OakItemIdList, TheRootIsAbsoluteAndTheDesktop) {
  const auto root = TItem::CreateForSpecialFolder(SF_DESKTOP, true);
  EXPECT_EQ(root->Depth(), 0);
  EXPECT_TRUE(root->IsAbsolute());
  EXPECT_TRUE(root->IsSpecialFolder(SF_DESKTOP));
  EXPECT_NE(TItem::FolderOf(root), nullptr);
  const TTestFolder folder;
  const auto child = TItem::Create(folder.Path())->GetLastPart();
  EXPECT_EQ(child->Depth(), 1);
}

// --- special folders -----------------------------------------------------------

TEST(OakItemIdList, SpecialFoldersAreSharedButForTwo) {
  const auto cached = [](TOakShellFolder folder) {
    return TItem::CreateForSpecialFolder(folder, true);
  };
  EXPECT_EQ(cached(SF_PROFILE), cached(SF_PROFILE));
  EXPECT_NE(cached(SF_PROFILE), TItem::CreateForSpecialFolder(SF_PROFILE, false));
  EXPECT_NE(cached(SF_DRIVES), cached(SF_DRIVES));
  EXPECT_TRUE(cached(SF_DRIVES)->Equals(cached(SF_DRIVES), ilcExact));
  EXPECT_EQ(cached(SF_FILESYSTEMFOLDER), NullItemIdList());
  EXPECT_TRUE(cached(SF_INVALID)->IsInvalid());
  EXPECT_EQ(cached(SF_DRIVES)->SpecialFolder(), SF_DRIVES);
  EXPECT_FALSE(TItem::IsParentOf(SF_UNKNOWN, cached(SF_DRIVES), true));
  EXPECT_FALSE(TItem::IsParentOf(SF_INVALID, cached(SF_DRIVES), true));
  EXPECT_TRUE(TItem::IsParentOf(SF_DRIVES, cached(SF_DRIVES), true));
  EXPECT_FALSE(TItem::IsParentOf(SF_DRIVES, cached(SF_DRIVES), false));
  EXPECT_TRUE(TItem::IsNetworkPidl(cached(SF_NETWORK)));
}

TEST(OakItemIdList, SpecialFoldersAreFoundByNameInAnyCase) {
  const auto drives = TItem::CreateForSpecialFolder(SF_DRIVES, true);
  const TString name = drives->DisplayName(dnfInFolder);
  ASSERT_NE(name, u"");
  for (const TString& text : {name, LowerCase(name), UpperCase(name),
                              TString(u"::{20d04fe0-3aea-1069-a2d8-08002b30309d}")}) {
    const auto found = TItem::CreateForSpecialFolder(text);
    ASSERT_NE(found, nullptr) << ToUtf8(text);
    EXPECT_TRUE(found->IsSpecialFolder(SF_DRIVES)) << ToUtf8(text);
  }
  EXPECT_EQ(TItem::CreateForSpecialFolder(u"no folder of this name"), nullptr);
  EXPECT_EQ(TItem::CreateForSpecialFolder(u""), nullptr);
}

TEST(OakItemIdList, QuickAccessBeforeWindows10IsTheLinksFolder) {
  TItem::ClearCaches();
  {
    const auto old = testkit::TWindowsVersion::Windows8();
    const auto item = TItem::CreateForSpecialFolder(SF_QUICKACCESS, true);
    EXPECT_TRUE(item->Equals(TItem::CreateForSpecialFolder(SF_LINKS, true), ilcDisplay));
    EXPECT_TRUE(item->IsInvalid() || item->SpecialFolder() == SF_LINKS);
  }
  TItem::ClearCaches();
}

TEST(OakItemIdList, AFolderThatTheSystemLacksIsNotRemembered) {
  TItem::ClearCaches();
  {
    const TScopedApi noCsidl(Api().SHGetSpecialFolderLocation,
                             [](HWND, int, PIDLIST_ABSOLUTE*) { return E_FAIL; });
    const TScopedApi noKnown(Api().SHGetKnownFolderIDList, nullptr);
    EXPECT_TRUE(TItem::CreateForSpecialFolder(SF_PROFILE, true)->IsInvalid());
  }
  EXPECT_FALSE(TItem::CreateForSpecialFolder(SF_PROFILE, true)->IsInvalid());
}

// --- parsing -------------------------------------------------------------------

TEST(OakItemIdList, ParseOfTextsWithAMeaningOfTheirOwn) {
  EXPECT_EQ(TItem::Parse(u""), NullItemIdList());
  EXPECT_EQ(TItem::Parse(u"\\\\*"), TItem::CreateForSpecialFolder(SF_NETWORK, true));
  EXPECT_EQ(TItem::Parse(u"\"\\\\*\""), TItem::CreateForSpecialFolder(SF_NETWORK, true));
  const auto quotes = TItem::Parse(u"\"\"");
  EXPECT_TRUE(quotes->IsSpecialFolder(SF_DRIVES));
  EXPECT_EQ(quotes->Path(), u"");
  const auto quote = TItem::Parse(u"\"");
  EXPECT_TRUE(quote->IsInvalid());
  EXPECT_EQ(quote->Path(), u"\"");
}

TEST(OakItemIdList, ParseTakesQuotesOffOnlyInPairs) {
  const TTestFolder folder;
  folder.MakeFile(u"a.txt");
  const TString path = folder.Path(u"a.txt");
  const auto item = TItem::Parse(u"\"" + path + u"\"");
  EXPECT_FALSE(item->IsInvalid());
  EXPECT_EQ(item->Path(), path);
  for (const TString& text : {u"\"" + path, path + u"\""})
    EXPECT_TRUE(TItem::Parse(text)->IsInvalid()) << ToUtf8(text);
}

TEST(OakItemIdList, ParseOfWhatDoesNotExist) {
  const auto absolute = TItem::Parse(u"C:\\no such directory\\x\\");
  EXPECT_TRUE(absolute->IsInvalid());
  EXPECT_EQ(absolute->Path(), u"C:\\no such directory\\x");
  for (const TStringView text : {u"no such name", u"no such name\\below", u"\\", u" ", u"a/b"}) {
    const auto relative = TItem::Parse(text, nullptr, true);
    ASSERT_NE(relative, nullptr);
    EXPECT_TRUE(relative->IsInvalid()) << ToUtf8(text);
    EXPECT_EQ(relative->DisplayPath(), text);
  }
}

TEST(OakItemIdList, AbsolutePathsAreNeverWalked) {
  const TCallCounter calls;
  EXPECT_TRUE(TItem::Parse(u"C:\\no such directory\\x", nullptr, true)->IsInvalid());
  EXPECT_EQ(calls.Count("IShellFolder::EnumObjects"), 0) << calls.ToString();
}

// --- replacing -----------------------------------------------------------------

TEST(OakItemIdList, SetPidlAndSetShellItemForgetWhatWasKnown) {
  const TTestFolder folder;
  folder.MakeFile(u"a");
  folder.MakeFile(u"b");
  const auto a = TItem::Create(folder.Path(u"a"));
  const auto b = TItem::Create(folder.Path(u"b"));
  (void)a->ShellItem();
  const PItemIdList held = a->WindowsPointer();
  TItem::From(a)->SetPidl(TPidl::Copy(b->WindowsPointer()));
  EXPECT_EQ(a->Path(), b->Path());
  EXPECT_EQ(a->DisplayName(dnfInFolder), u"b");
  // Whoever took the list before may finish with it.
  EXPECT_EQ(TItem::GetDepth(held), b->Depth());

  const auto made = TItem::Create(b->ShellItem().Get());
  EXPECT_TRUE(made->IsResolved());
  EXPECT_EQ(made->Path(), b->Path());
  EXPECT_EQ(made->SpecialFolder(), SF_FILESYSTEMFOLDER);
  EXPECT_FALSE(made->Reload());
  EXPECT_FALSE(made->IsInvalid());
}

TEST(OakItemIdList, WhatWasReplacedIsKeptForAMinute) {
  testkit::TVirtualClock clock;
  const auto item = ItemOf({1});
  const auto first = MakeRef<TFakeShellItem>();
  const auto isHeld = [&] {
    first->AddRef();
    return first->Release() > 1;
  };
  const auto replace = [&](int times) {
    for (int i = 0; i < times; ++i)
      TItem::From(item)->SetShellItem(MakeRef<TFakeShellItem>().Get());
  };
  TItem::From(item)->SetShellItem(first.Get());
  replace(100);
  EXPECT_TRUE(isHeld());
  clock.Advance(59'000);
  replace(1);
  EXPECT_TRUE(isHeld());
  clock.Advance(1'000);
  replace(1);
  EXPECT_FALSE(isHeld());
}

TEST(OakItemIdList, ShellItemWithoutListIsFoundByItsName) {
  const TTestFolder folder;
  folder.MakeFile(u"a.txt");
  const auto fake = MakeRef<TFakeShellItem>();
  fake->Names[SIGDN_DESKTOPABSOLUTEPARSING] = folder.Path(u"a.txt");
  const auto item = TItem::Create(fake.Get());
  EXPECT_FALSE(item->IsInvalid());
  EXPECT_EQ(item->Path(), folder.Path(u"a.txt"));
  EXPECT_TRUE(TItem::Create(MakeRef<TFakeShellItem>().Get())->IsInvalid());
}

TEST(OakItemIdList, FolderAndRelativeList) {
  const TTestFolder folder;
  folder.MakeFile(u"a.txt");
  const auto directory = TItem::Create(folder.Path());
  const auto shellFolder = TItem::FolderOf(directory);
  ASSERT_NE(shellFolder, nullptr);
  EXPECT_TRUE(directory->Equals(TItem::Create(shellFolder.Get(), nullptr), ilcExact));
  const auto relative = TItem::Create(u"a.txt", shellFolder.Get(), nullptr);
  EXPECT_EQ(relative->Depth(), 1);
  const auto file = TItem::Create(shellFolder.Get(), relative->WindowsPointer());
  EXPECT_EQ(file->Path(), folder.Path(u"a.txt"));
  const auto failed = TItem::Create(static_cast<IShellFolder*>(nullptr), nullptr);
  EXPECT_TRUE(failed->IsInvalid());
  EXPECT_EQ(failed->Path(), u"");
  EXPECT_FALSE(failed->Reload());
}

TEST(OakItemIdList, SimpleListsNeedNoObject) {
  const TString path = u"C:\\no such directory\\a.txt";
  const auto item = TItem::CreateSimpleIdList(path);
  EXPECT_FALSE(item->IsInvalid());
  EXPECT_EQ(item->Path(), path);
  EXPECT_EQ(item->Name(), u"a.txt");
}

}  // namespace
}  // namespace oak::tests
