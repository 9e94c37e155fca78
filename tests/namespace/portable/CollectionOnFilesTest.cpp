// Commands of selections carried out on real files, also while one platform call after the other
// fails.
#include <gtest/gtest.h>

#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/Api.h"
#include "testkit/FaultInjection.h"
#include "tests/namespace/TestFolder.h"

namespace oak {
namespace {

using tests::TTestFolder;

class CollectionOnFiles : public ::testing::Test {
 protected:
  CollectionOnFiles() {
    for (const char16_t* name : {u"one", u"two", u"two\\deep"}) folder.MakeFolder(name);
    for (const char16_t* name : {u"one\\a.txt", u"one\\b.txt", u"two\\deep\\c.txt"})
      folder.MakeFile(name);
  }
  Ref<TItemIdListCollection> Make(std::initializer_list<TStringView> names) {
    const auto list = MakeRef<TItemIdListCollection>();
    for (TStringView name : names) list->Add(folder.Path(name));
    return list;
  }

  TTestFolder folder;
};

TEST_F(CollectionOnFiles, DeletesWhatLiesInSeveralFolders) {
  TShellCommand command(saDeleteNoUndo);
  command.OperationOptions.Include(soSilent);
  EXPECT_TRUE(Make({u"one\\a.txt", u"two\\deep"})->InvokeCommand(command));
  EXPECT_FALSE(folder.Exists(u"one\\a.txt"));
  EXPECT_FALSE(folder.Exists(u"two\\deep"));
  EXPECT_TRUE(folder.Exists(u"one\\b.txt"));
  EXPECT_TRUE(folder.Exists(u"two"));
}

/// Each question by itself, so that a failure of one does not spare the others.
template <class TBody>
void Documented(TBody&& body) {
  try {
    body();
  } catch (const EOSError&) {
  } catch (const EOleSysError&) {
  } catch (const EInvalidOperation&) {
  }
}

TEST_F(CollectionOnFiles, ObjectsOfTheShellAreThereOrRaise) {
  for (const auto& names : {std::vector<TStringView>{u"one\\a.txt", u"one\\b.txt"},
                            {u"one\\a.txt", u"two\\deep\\c.txt"}}) {
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
