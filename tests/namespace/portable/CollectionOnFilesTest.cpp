// Commands of selections carried out on real files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.Clipboard.h"
#include "oak/platform/Api.h"
#include "tests/namespace/TestFolder.h"

namespace oak {
namespace {

using ::testing::UnorderedElementsAre;
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

TEST_F(CollectionOnFiles, CopiesThePathsOfSeveralFolders) {
  EXPECT_TRUE(Make({u"one\\a.txt", u"two\\deep\\c.txt"})->InvokeCommand(saCopy));
  Ref<IDataObject> data;
  ASSERT_EQ(Api().OleGetClipboard(data.Put()), S_OK);
  FORMATETC format = HDropFormatEtc;
  STGMEDIUM medium{};
  ASSERT_EQ(data->GetData(&format, &medium), S_OK);
  EXPECT_THAT(GetFilenamesFromHandle(medium.hGlobal),
              UnorderedElementsAre(folder.Path(u"one\\a.txt"), folder.Path(u"two\\deep\\c.txt")));
  Api().ReleaseStgMedium(&medium);
  Api().OleSetClipboard(nullptr);
}

TEST_F(CollectionOnFiles, TheMenuOfSeveralFoldersHasTheCommonVerbs) {
  const Ref<IContextMenu> menu = Make({u"one\\a.txt", u"two\\deep"}).As<IContextMenu>();
  const HMENU handle = Api().CreatePopupMenu();
  ASSERT_TRUE(SUCCEEDED(menu->QueryContextMenu(handle, 0, 1, 255, CMF_NORMAL)));
  std::vector<std::string> verbs;
  for (int i = 0; i < Api().GetMenuItemCount(handle); ++i) {
    const UINT id = Api().GetMenuItemID(handle, i);
    TString verb(64, u'\0');
    if (id == 0 || id > 255 ||
        FAILED(menu->GetCommandString(id - 1, GCS_VERBW, nullptr,
                                      reinterpret_cast<CHAR*>(verb.data()), 64)))
      continue;
    verbs.push_back(ToUtf8(verb.c_str()));
  }
  for (const char* verb : {"cut", "copy", "delete", "properties"})
    EXPECT_THAT(verbs, ::testing::Contains(verb));
  Api().DestroyMenu(handle);
}

}  // namespace
}  // namespace oak
