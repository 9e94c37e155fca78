// Several items as one selection, on real folders.
#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oak/framework/StringList.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"
#include "testkit/CallCounter.h"
#include "testkit/ScopedApi.h"
#include "tests/MessageOf.h"
#include "tests/namespace/TestFolder.h"

namespace oak {
namespace {

using ::testing::ElementsAre;
using testkit::TScopedApi;
using tests::MessageOf;
using tests::TTestFolder;

class Collection : public ::testing::Test {
 protected:
  Collection() {
    for (const char16_t* name : {u"one", u"one\\deep", u"two"}) folder.MakeFolder(name);
    for (const char16_t* name :
         {u"a.txt", u"b.TXT", u"c.md", u"plain", u"one\\d.txt", u"one\\deep\\e.txt", u"two\\f.txt"})
      folder.MakeFile(name);
  }

  Ref<IItemIdList> Item(TStringView name = {}) { return TOakItemIdList::Create(folder.Path(name)); }
  Ref<TItemIdListCollection> Absolute(std::initializer_list<TStringView> names) {
    const auto list = MakeRef<TItemIdListCollection>();
    for (TStringView name : names) list->Add(Item(name));
    return list;
  }
  Ref<IShellFolder> Folder(TStringView name = {}) { return TOakItemIdList::FolderOf(Item(name)); }
  /// Items relative to the test's folder.
  Ref<TItemIdListCollection> Relative(std::initializer_list<TStringView> names) {
    const auto list = MakeRef<TItemIdListCollection>(Folder());
    for (TStringView name : names) list->Add(name);
    return list;
  }

  TTestFolder folder;
};

// --- the list ------------------------------------------------------------------

TEST_F(Collection, TakesPathsNamesAndLists) {
  const auto list = Relative({u"a.txt", u"one\\*"});
  list->Add(folder.Path(u"two") + u"\\*");
  list->Add(Ref<IItemIdList>());
  list->Add(Item(u"c.md"));
  list->Add(Item(u"c.md"));
  ASSERT_EQ(list->Count(), 5) << "nil is no item, a double is one";
  EXPECT_EQ(list->GetItem(0)->Depth(), 1) << "relative to the folder";
  EXPECT_THAT(IItemIdListCollectionHelper::GetFilePaths(list),
              ElementsAre(folder.Path(u"a.txt"), folder.Path(u"one"), folder.Path(u"two"),
                          folder.Path(u"c.md"), folder.Path(u"c.md")));
  EXPECT_FALSE(list->GetItem(-1));
  EXPECT_FALSE(list->GetItem(5));

  const auto other = MakeRef<TItemIdListCollection>(Folder(u"one"));
  other->Add(u"d.txt");
  other->AddStrings(TStringList{u"deep", folder.Path(u"plain")});
  other->Add(Ref<IItemIdListCollection>(list));
  EXPECT_EQ(other->ToString(), folder.Path(u"one\\d.txt") + u"\r\n" + folder.Path(u"one\\deep") +
                                   u"\r\n" + folder.Path(u"plain") + u"\r\n" + list->ToString())
      << "items keep their own folder";
  other->Add(Ref<IItemIdListCollection>(other));
  EXPECT_EQ(other->Count(), 16) << "a list can be added to itself";
  other->Assign(Ref<IItemIdListCollection>(other));
  EXPECT_EQ(other->Count(), 16);
  other->Assign(nullptr);
  EXPECT_EQ(other->Count(), 0);
  EXPECT_EQ(other->ToString(), u"");
}

TEST_F(Collection, APathKeepsItsWildcardOnlyAtTheNetworksRoot) {
  const auto list = MakeRef<TItemIdListCollection>();
  {
    const testkit::TCallCounter calls;
    list->Add(u"C:\\*");
    list->Add(u"C:\\x\\*");
    list->Add(u"\\\\server\\share\\*");
    EXPECT_EQ(calls.Total(), 0) << calls.ToString();
  }
  list->Add(u"\\\\*");
  EXPECT_EQ(list->GetItem(0)->Path(), u"C:\\") << "the drive";
  EXPECT_EQ(list->GetItem(1)->Path(), u"C:\\x");
  EXPECT_EQ(list->GetItem(2)->Path(), u"\\\\server\\share");
  const Ref<IItemIdList> network = TOakItemIdList::CreateForSpecialFolder(SF_NETWORK, true);
  EXPECT_TRUE(network->IsInvalid() || network->Equals(list->GetItem(3), ilcExact));
}

// --- what items have in common ---------------------------------------------------

TEST_F(Collection, KnowsWhetherAllLieInOneFolder) {
  EXPECT_TRUE(MakeRef<TItemIdListCollection>()->HaveSameParent());
  EXPECT_TRUE(Absolute({u"missing"})->HaveSameParent()) << "one item is never asked";
  EXPECT_TRUE(Absolute({u"a.txt", u"c.md", u"one"})->HaveSameParent());
  EXPECT_FALSE(Absolute({u"a.txt", u"one\\d.txt"})->HaveSameParent());
  EXPECT_FALSE(Absolute({u"one\\d.txt", u"two\\f.txt"})->HaveSameParent()) << "at one depth";
  EXPECT_TRUE(Relative({u"a.txt", u"one"})->HaveSameParent());
  const auto mixed = Relative({u"a.txt"});
  mixed->Add(Item(u"two\\f.txt"));
  EXPECT_FALSE(mixed->HaveSameParent());
  EXPECT_THROW(Absolute({u"a.txt", u"missing"})->HaveSameParent(), EFolderTrekError);
}

TEST_F(Collection, JudgesFileTypesByExtension) {
  struct TCase {
    std::initializer_list<TStringView> Names;
    bool Several;
  };
  folder.MakeFolder(u"folder.txt");
  for (const TCase& c : {TCase{{}, false},
                         {{u"a.txt"}, false},
                         {{u"a.txt", u"b.TXT", u"one\\d.txt"}, false},
                         {{u"a.txt", u"c.md"}, true},
                         {{u"a.txt", u"folder.txt"}, true}})
    EXPECT_EQ(Absolute(c.Names)->HasMultipleFileTypes(), c.Several)
        << ToUtf8(Absolute(c.Names)->ToString());
}

TEST_F(Collection, FindsTheDeepestCommonFolder) {
  const auto ancestorOf = [&](std::initializer_list<TStringView> names) {
    return Absolute(names)->GetLongestCommonAncestor();
  };
  EXPECT_FALSE(ancestorOf({}));
  EXPECT_FALSE(ancestorOf({u"missing"}));
  EXPECT_EQ(ancestorOf({u"one\\d.txt"})->Path(), folder.Path(u"one"));
  EXPECT_EQ(ancestorOf({u"one\\d.txt", u"one\\deep\\e.txt"})->Path(), folder.Path(u"one"));
  EXPECT_EQ(ancestorOf({u"one\\deep\\e.txt", u"missing", u"two\\f.txt"})->Path(), folder.Path());
  EXPECT_EQ(ancestorOf({u"one\\deep\\e.txt", u"one"})->Path(), folder.Path())
      << "a folder does not lie in itself";
  EXPECT_EQ(Relative({u"a.txt", u"one"})->GetLongestCommonAncestor()->Path(), folder.Path());
  const auto far = Absolute({u"a.txt"});
  far->Add(TOakItemIdList::CreateForSpecialFolder(SF_NETWORK, true));
  EXPECT_EQ(far->GetLongestCommonAncestor()->Depth(), 0) << "only the root holds both";
  far->Add(TOakItemIdList::CreateForSpecialFolder(SF_DESKTOP, true));
  EXPECT_EQ(far->GetLongestCommonAncestor()->Depth(), 0);
}

// --- the platform's array -----------------------------------------------------------

TEST_F(Collection, GivesTheShellsArray) {
  const auto list = Relative({u"a.txt", u"one"});
  list->Add(Item(u"two\\f.txt"));
  const Ref<IShellItemArray> array = list->GetShellItemArray();
  for (int i = 0; i < 3; ++i) {
    Ref<IShellItem> item;
    ASSERT_EQ(array->GetItemAt(static_cast<DWORD>(i), item.Put()), S_OK);
    EXPECT_EQ(TOakItemIdList::Create(item.Get())->Path(),
              IItemIdListCollectionHelper::GetFilePaths(list)[static_cast<std::size_t>(i)]);
  }
}

TEST_F(Collection, AnArrayOfOursIsMadeWhenItIsNeeded) {
  testkit::TCallCounter calls;
  const auto array = MakeRef<TShellItemArray>(
      std::vector<Ref<IItemIdList>>{Item(u"a.txt"), Item(u"missing"), nullptr, Item(u"c.md")});
  EXPECT_EQ(calls.Total(), 0) << calls.ToString();
  DWORD count = 0;
  EXPECT_EQ(array->GetCount(&count), S_OK);
  EXPECT_EQ(count, 2u);
  SFGAOF attributes = 0;
  EXPECT_TRUE(SUCCEEDED(array->GetAttributes(SIATTRIBFLAGS_AND, SFGAO_FILESYSTEM, &attributes)));
  EXPECT_EQ(attributes, static_cast<SFGAOF>(SFGAO_FILESYSTEM));
  Ref<IEnumShellItems> items;
  EXPECT_EQ(array->EnumItems(items.Put()), S_OK);
  EXPECT_EQ(calls.Count("SHCreateShellItemArrayFromIDLists"), 1);

  const auto none = MakeRef<TShellItemArray>(std::vector<Ref<IItemIdList>>{Item(u"missing")});
  EXPECT_EQ(none->GetCount(&count), S_OK);
  EXPECT_EQ(count, 0u);
  Ref<IShellItem> item;
  EXPECT_TRUE(FAILED(none->GetItemAt(0, item.Put())));

  const TScopedApi missing(Api().SHCreateShellItemArrayFromIDLists, nullptr);
  const std::vector<Ref<IItemIdList>> single{Item(u"a.txt")};
  EXPECT_EQ(MakeRef<TShellItemArray>(single)->GetCount(&count), E_NOTIMPL) << "an old system";
}

// --- objects of the shell -------------------------------------------------------------

TEST_F(Collection, AnEmptySelectionHasNoObject) {
  const TString text = u"There are no valid Shell ItemIdList in the TItemIdListCollection";
  for (const auto& list : {Absolute({}), Absolute({u"missing"}), Relative({})})
    EXPECT_EQ(MessageOf([&] { list->GetUIObject(IidOf<IDataObject>()); }), text);
  EXPECT_EQ(MessageOf([&] { Absolute({})->GetContextMenuMultiple(); }), text);
}

// --- the desktop as a folder of everything ----------------------------------------------

TEST_F(Collection, TheDesktopFolderKnowsObjectsAtAnyDepth) {
  const auto desktop = MakeRef<TOakDesktopFolder>();
  const auto list = Absolute({u"a.txt", u"one\\deep"});
  const std::vector<PItemIdList> pidls = list->ToPItemIdListArray();
  std::vector<PCUITEMID_CHILD> both(pidls.begin(), pidls.end());
  SFGAOF attributes = SFGAO_FILESYSTEM | SFGAO_FOLDER;
  ASSERT_EQ(desktop->GetAttributesOf(2, both.data(), &attributes), S_OK);
  EXPECT_EQ(attributes, static_cast<SFGAOF>(SFGAO_FILESYSTEM)) << "what both have";
  attributes = SFGAO_FILESYSTEM | SFGAO_FOLDER;
  ASSERT_EQ(desktop->GetAttributesOf(1, &both[1], &attributes), S_OK);
  EXPECT_EQ(attributes, static_cast<SFGAOF>(SFGAO_FILESYSTEM | SFGAO_FOLDER));

  STRRET name{};
  ASSERT_EQ(desktop->GetDisplayNameOf(both[1], SHGDN_FORPARSING, &name), S_OK);
  TTaskMemory<WCHAR> text;
  ASSERT_EQ(Api().StrRetToStrW(&name, both[1], text.Put()), S_OK);
  EXPECT_EQ(FromW(text.Get()), folder.Path(u"one\\deep"));

  Ref<IUnknown> object;
  EXPECT_EQ(desktop->GetUIObjectOf(nullptr, 2, both.data(), IidOf<IDataObject>(), nullptr,
                                   object.PutVoid()),
            S_OK);
  const TScopedApi clipboard(Api().OleGetClipboard, [data = object](IDataObject** out) {
    return data->QueryInterface(IidOf<IDataObject>(), reinterpret_cast<void**>(out));
  });
  const TStringArray files = TShellControlHelper::GetFilenamesFromClipboard();
  EXPECT_EQ(desktop->GetUIObjectOf(nullptr, 2, both.data(), IidOf<IDropTarget>(), nullptr,
                                   object.PutVoid()),
            E_NOINTERFACE);
  EXPECT_EQ(
      desktop->GetUIObjectOf(nullptr, 0, nullptr, IidOf<IDataObject>(), nullptr, object.PutVoid()),
      E_INVALIDARG);
  ASSERT_EQ(files.size(), 2u);
  if (files[0] == files[1]) GTEST_SKIP() << "the shell lists first elements, not paths";
  EXPECT_THAT(files, ElementsAre(folder.Path(u"a.txt"), folder.Path(u"one\\deep")));
}

TEST_F(Collection, TheDesktopFolderRenamesAtAnyDepth) {
  const auto desktop = MakeRef<TOakDesktopFolder>();
  const Ref<IItemIdList> item = Item(u"one\\d.txt");
  TPidl renamed;
  ASSERT_TRUE(SUCCEEDED(desktop->SetNameOf(nullptr, item->WindowsPointer(), W(u"new.txt"),
                                           SHGDN_INFOLDER | SHGDN_FORPARSING, renamed.Put())));
  EXPECT_TRUE(folder.Exists(u"one\\new.txt"));
  EXPECT_EQ(TOakItemIdList::Create(std::move(renamed))->Path(), folder.Path(u"one\\new.txt"))
      << "the list that comes back is as long as the one that went in";
}

}  // namespace
}  // namespace oak
