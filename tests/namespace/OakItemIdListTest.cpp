// Items made of texts and lists: what they cost, what they keep, how they compare.
#include "oak/namespace/OakItemIdList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oak/namespace/Oak.Shell.Types.h"
#include "testkit/CallCounter.h"
#include "testkit/ScopedApi.h"
#include "testkit/VirtualClock.h"
#include "tests/MessageOf.h"
#include "tests/namespace/FakeShellItem.h"
#include "tests/namespace/TestFolder.h"

namespace oak::tests {
namespace {

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

// --- cost and size -------------------------------------------------------------

TEST(OakItemIdList, PathsAskNobodyAndTheirAttributeIsOneLookUp) {
  const TTestFolder folder;
  folder.MakeFile(u"a.txt");
  TCallCounter calls;
  const auto item = TItem::Create(folder.Path(u"a.txt"));
  EXPECT_EQ(item->DisplayPath(), folder.Path(u"a.txt"));
  EXPECT_TRUE(item->Equals(TItem::Create(UpperCase(item->Path()) + u"\\"), ilcDisplay));
  EXPECT_EQ(item->CompareTo(TItem::Create(item->Path()), ilcDisplay), 0);
  EXPECT_FALSE(item->IsSpecialFolder(SF_DESKTOP));
  EXPECT_EQ(calls.Total(), 0) << calls.ToString();
  EXPECT_TRUE(item->HasAttributes(SFGAO_FILESYSTEM));
  EXPECT_EQ(calls.Count("FindFirstFileW"), 1);
  EXPECT_EQ(calls.Count("SHParseDisplayName") + calls.Count("ILCreateFromPathW") +
                calls.Count("SHCreateShellItem"),
            0)
      << calls.ToString();
  EXPECT_FALSE(item->IsResolved());
}

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
}

TEST(OakItemIdList, WrongCountsAndMissingParentsRaise) {
  const TString negative =
      u"TOakItemIdList.GetStartItemIdList: The paramter pFragments must be greater or equal 0.";
  const auto item = ItemOf({10});
  EXPECT_EQ(MessageOf<EInvalidArgument>([&] { (void)item->GetStartItemIdList(-1); }), negative);
  EXPECT_EQ(MessageOf<EInvalidArgument>([&] { (void)TItem::GetElementNo(nullptr, -1); }), negative);
  EXPECT_THAT(ToUtf8(MessageOf([&] { (void)TItem::Create(TPidl())->GetParent(); })),
              StartsWith("Could not get the parent ItemIdList for invalid ItemIdList:  Internal "
                         "data: FPath: -, fSpecialFolder: SF_INVALID, Invalid"));
  EXPECT_THAT(ToUtf8(MessageOf([&] { (void)item->GetParent()->GetParent(); })),
              StartsWith("Could not get the parent ItemIdList for:  Internal data: FPath: -, "
                         "fSpecialFolder: SF_INVALID, Valid"));
}

TEST(OakItemIdList, ParentIsJudgedByListThenByPath) {
  const TTestFolder folder;
  folder.MakeFile(u"a.txt");
  const auto directory = TItem::Create(folder.Path());
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
  EXPECT_TRUE(TItem::IsParentOf(SF_DRIVES, cached(SF_DRIVES), true));
  EXPECT_FALSE(TItem::IsParentOf(SF_DRIVES, cached(SF_DRIVES), false));
  EXPECT_TRUE(TItem::IsNetworkPidl(cached(SF_NETWORK)));
  EXPECT_EQ(TOakShellFolderHelper::ToString(SF_DRIVES),
            cached(SF_DRIVES)->DisplayName(dnfInFolder));
}

TEST(OakItemIdList, WithoutAManagerOfKnownFoldersTheyAreCompared) {
  TItem::ClearCaches();  // with the manager
  const auto profile = TItem::CreateForSpecialFolder(SF_PROFILE, true);
  const TScopedApi none(Api().CoCreateInstance,
                        [](REFCLSID, IUnknown*, DWORD, REFIID, void** out) -> HRESULT {
                          *out = nullptr;
                          return REGDB_E_CLASSNOTREG;
                        });
  const auto item = TItem::Create(profile->Path());
  EXPECT_EQ(TItem::From(item)->TestForSpecialFolder({SF_FONTS, SF_PROFILE}), SF_PROFILE);
  EXPECT_EQ(TItem::From(item)->TestForSpecialFolder({SF_FONTS}), SF_UNKNOWN);
  TItem::ClearCaches();
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

TEST(OakItemIdList, ParseOfWhatDoesNotExist) {
  const auto absolute = TItem::Parse(u"C:\\no such directory\\x\\");
  EXPECT_TRUE(absolute->IsInvalid());
  EXPECT_EQ(absolute->Path(), u"C:\\no such directory\\x");
  const auto simple = TItem::CreateSimpleIdList(absolute->Path());
  EXPECT_FALSE(simple->IsInvalid()) << "it needs no object";
  EXPECT_EQ(simple->Path(), absolute->Path());
  for (const TStringView text : {u"no such name", u"no such name\\below", u"\\", u" ", u"a/b"}) {
    const auto relative = TItem::Parse(text, nullptr, true);
    ASSERT_NE(relative, nullptr);
    EXPECT_TRUE(relative->IsInvalid()) << ToUtf8(text);
    EXPECT_EQ(relative->DisplayPath(), text);
  }
}

// --- replacing -----------------------------------------------------------------

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

}  // namespace
}  // namespace oak::tests
