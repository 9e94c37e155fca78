// Selections while one platform call after the other fails.
#include <gtest/gtest.h>

#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"
#include "testkit/FaultInjection.h"
#include "tests/namespace/TestFolder.h"

namespace oak {
namespace {

using tests::TTestFolder;

class CollectionFaults : public ::testing::Test {
 protected:
  CollectionFaults() {
    for (const char16_t* name : {u"one", u"two"}) folder.MakeFolder(name);
    for (const char16_t* name : {u"one\\a.txt", u"one\\b.txt", u"two\\c.md"}) folder.MakeFile(name);
  }

  Ref<TItemIdListCollection> Make(std::initializer_list<TStringView> names) {
    const auto list = MakeRef<TItemIdListCollection>();
    for (TStringView name : names) list->Add(folder.Path(name));
    return list;
  }

  /// Each question by itself, so that a failure of one does not spare the others.
  template <class TBody>
  static void Documented(TBody&& body) {
    try {
      body();
    } catch (const EOSError&) {
    } catch (const EOleSysError&) {
    } catch (const EInvalidOperation&) {
    }
  }

  TTestFolder folder;
};

TEST_F(CollectionFaults, ReadingOnesEndInWhatIsDocumented) {
  for (const auto& names : {std::vector<TStringView>{u"one\\a.txt", u"one\\b.txt"},
                            {u"one\\a.txt", u"two\\c.md", u"missing"}}) {
    const int failed = testkit::SweepFaults([&] {
      TOakItemIdList::ClearCaches();
      const auto list = MakeRef<TItemIdListCollection>();
      for (TStringView name : names) list->Add(folder.Path(name));
      Documented([&] { list->HaveSameParent(); });
      Documented([&] { list->GetLongestCommonAncestor(); });
      Documented([&] { list->GetShellItemArray(); });
      list->HasMultipleFileTypes();
      list->ToString();
      DWORD count = 0;
      MakeRef<TShellItemArray>(std::vector<Ref<IItemIdList>>(list->begin(), list->end()))
          ->GetCount(&count);
    });
    EXPECT_GT(failed, 10);
  }
  TOakItemIdList::ClearCaches();
  const auto list = Make({u"one\\a.txt", u"two\\c.md"});
  EXPECT_EQ(list->GetLongestCommonAncestor()->Path(), folder.Path()) << "nothing is remembered";
}

TEST_F(CollectionFaults, ObjectsOfTheShellAreThereOrRaise) {
  for (const auto& names :
       {std::vector<TStringView>{u"one\\a.txt", u"one\\b.txt"}, {u"one\\a.txt", u"two\\c.md"}}) {
    const int failed = testkit::SweepFaults([&] {
      TOakItemIdList::ClearCaches();
      const auto list = MakeRef<TItemIdListCollection>();
      for (TStringView name : names) list->Add(folder.Path(name));
      Documented([&] { EXPECT_TRUE(list->GetUIObject(IidOf<IDataObject>())); });
      Documented([&] { EXPECT_TRUE(list->GetUIObject(IidOf<IContextMenu>())); });
      Documented([&] { EXPECT_TRUE(list->InvokeCommandOnAll(saCopy)); });
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

}  // namespace
}  // namespace oak
