// Items, arrays of them and their properties.
#include "tests/platform/portable/ShellFixture.h"
#include "tests/platform/portable/ShellMemoryFolder.h"

namespace oak {
namespace {

class TShellItems : public TShellTest {
 protected:
  void SetUp() override {
    TShellTest::SetUp();
    const auto tree = testkit::TScriptedFolder::Make();
    tree->AddFolder(u"Inner")->AddFile(u"deep");
    tree->AddFile(u"a10").AddFile(u"A2").AddFile(u"same");
    TFolderMount mount;
    mount.Name = u"Memory";
    mount.Source = MakeRef<TMemoryFolder>(
        tree, std::map<TString, std::uint64_t>{{u"A10", 10}, {u"A2", 20}, {u"SAME", 10}});
    fMount = std::make_unique<TScopedMount>(std::move(mount));
  }
  void TearDown() override {
    fMount.reset();
    TShellTest::TearDown();
  }
  /// -1, 0 or 1 of two texts by CompareIDs of the desktop; 99 for a failure.
  int CompareLists(TStringView a, TStringView b, LPARAM what) {
    const HRESULT result = Desktop()->CompareIDs(what, Parse(a).Get(), Parse(b).Get());
    return FAILED(result) ? 99 : static_cast<SHORT>(HRESULT_CODE(result));
  }
  int CompareItems(TStringView a, TStringView b, SICHINTF hint) {
    int order = 99;
    const HRESULT result = Item(a)->Compare(Item(b).Get(), hint, &order);
    EXPECT_EQ(result, order == 0 ? S_OK : S_FALSE);
    return order;
  }

  std::unique_ptr<TScopedMount> fMount;
};

TEST_F(TShellItems, OrderOfLists) {
  const LPARAM canonical = SHCIDS_CANONICALONLY, all = static_cast<LPARAM>(0x80000000u);
  const struct {
    const char16_t* A;
    const char16_t* B;
    LPARAM What;
    int Order;
  } cases[] = {
      {u"Memory\\a2", u"Memory\\a10", 0, -1},    // by number
      {u"Memory\\Inner", u"Memory\\a2", 0, -1},  // folders first
      {u"Memory\\Inner", u"Memory\\a2", canonical, 1},
      {u"Memory\\a2", u"Memory\\A2", all, 0},   // one object, written in two ways
      {u"Memory\\a2", u"Memory\\a10", 1, 1},    // by size
      {u"Memory\\same", u"Memory\\a10", 1, 1},  // equal sizes: by name
      {u"Memory", u"Memory\\Inner", 0, -1},     // a start comes first
      {u"Memory\\Inner\\deep", u"Memory\\Inner", canonical, 1},
      {u"Memory\\Inner\\deep", u"Memory\\same", 0, -1},  // the first difference decides
      {u"This PC", u"Network", 0, -1},                   // by rank
      {u"C:\\", u"E:\\", 0, -1},
      {u"E:\\", u"C:\\Dir", canonical, 1},
      {u"shell:Desktop", u"This PC", canonical, -1},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(CompareLists(test.A, test.B, test.What), test.Order)
        << Show(test.A) << " " << Show(test.B);
    EXPECT_EQ(CompareLists(test.B, test.A, test.What), -test.Order)
        << Show(test.B) << " " << Show(test.A);
  }
}

TEST_F(TShellItems, OrderOfItems) {
  EXPECT_EQ(CompareItems(u"Memory\\a2", u"Memory\\a10", SICHINT_DISPLAY), -1);
  EXPECT_EQ(CompareItems(u"shell:Desktop", u"shell:Desktop", SICHINT_CANONICAL), 0);
  // Two ways to one directory are two objects with one path.
  EXPECT_NE(CompareItems(u"Me", u"C:\\home\\me", SICHINT_CANONICAL), 0);
  EXPECT_EQ(CompareItems(u"Me", u"C:\\home\\me",
                         SICHINT_CANONICAL | SICHINT_TEST_FILESYSPATH_IF_NOT_EQUAL),
            0);
}

TEST_F(TShellItems, EveryWayToAnItem) {
  const TPidl pidl = Parse(u"Memory\\Inner\\deep");
  const TPidl parent = Parse(u"Memory\\Inner");
  const PCUITEMID_CHILD child = Api().ILFindLastID(pidl.Get());
  const Ref<IShellFolder2> folder = Folder(u"Memory\\Inner");
  Ref<IShellItem> item;
  const auto expect = [&](HRESULT result) {
    ASSERT_EQ(result, S_OK);
    EXPECT_EQ(Show(Name(item.As<IShellItem2>(), SIGDN_DESKTOPABSOLUTEPARSING)),
              "Memory\\Inner\\deep");
  };
  expect(Api().SHCreateShellItem(nullptr, nullptr, pidl.Get(), item.Put()));
  expect(Api().SHCreateShellItem(parent.Get(), nullptr, child, item.Put()));
  expect(Api().SHCreateShellItem(nullptr, folder.Get(), child, item.Put()));
  expect(Api().SHCreateItemWithParent(parent.Get(), folder.Get(), child, IID_IShellItem,
                                      item.PutVoid()));
  expect(Api().SHCreateItemFromRelativeName(Item(u"Memory").Get(), W(u"Inner\\deep"), nullptr,
                                            IID_IShellItem, item.PutVoid()));
  EXPECT_EQ(Api().SHCreateShellItem(nullptr, nullptr, nullptr, item.Put()), E_INVALIDARG);
  EXPECT_FALSE(item);

  // And back.
  TPidl back;
  ASSERT_EQ(Api().SHGetIDListFromObject(folder.Get(), back.Put()), S_OK);
  EXPECT_TRUE(Api().ILIsEqual(parent.Get(), back.Get()));
  Ref<IShellFolder> bound;
  PCUITEMID_CHILD last = nullptr;
  ASSERT_EQ(Api().SHBindToParent(pidl.Get(), IID_IShellFolder, bound.PutVoid(), &last), S_OK);
  EXPECT_EQ(last, child);
  EXPECT_EQ(
      Api().SHBindToParent(Parse(u"shell:Desktop").Get(), IID_IShellFolder, bound.PutVoid(), &last),
      E_INVALIDARG);
}

TEST_F(TShellItems, PropertiesOfTheSourceAndOfTheShell) {
  const Ref<IShellItem2> item = Item(u"Memory\\A2");
  ULONGLONG size = 0;
  EXPECT_EQ(item->GetUInt64(PKEY_Size, &size), S_OK);
  EXPECT_EQ(size, 20u);
  TTaskMemory<WCHAR> text;
  const struct {
    const PROPERTYKEY& Key;
    const char16_t* Text;
  } names[] = {{PKEY_Size, u"20"},
               {PKEY_ParsingPath, u"Memory\\A2"},
               {PKEY_ItemFolderNameDisplay, u"Memory"},
               {PKEY_ItemTypeText, u"Object"}};
  for (const auto& name : names) {
    ASSERT_EQ(item->GetString(name.Key, text.Put()), S_OK) << Show(name.Text);
    EXPECT_EQ(Show(FromW(text.Get())), Show(name.Text));
  }
  ASSERT_EQ(Item(u"C:\\")->GetString(PKEY_ItemTypeText, text.Put()), S_OK);
  EXPECT_EQ(Show(FromW(text.Get())), "Local Disk");
  BOOL isFolder = TRUE;
  EXPECT_EQ(item->GetBool(PKEY_IsFolder, &isFolder), S_OK);
  EXPECT_FALSE(isFolder);
  FILETIME time{};
  EXPECT_EQ(item->GetFileTime(PKEY_ItemNameDisplay, &time), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(item->GetString(PKEY_ItemUrl, text.Put()), HRESULT_FROM_WIN32(1168));
  EXPECT_FALSE(text);
}

TEST_F(TShellItems, Arrays) {
  const TPidl a = Parse(u"Memory\\A2"), b = Parse(u"Memory\\Inner"), c = Parse(u"C:\\Dir");
  const PCIDLIST_ABSOLUTE lists[] = {a.Get(), b.Get(), c.Get()};
  Ref<IShellItemArray> array;
  ASSERT_EQ(Api().SHCreateShellItemArrayFromIDLists(3, lists, array.Put()), S_OK);
  SFGAOF attributes = 0;
  EXPECT_EQ(array->GetAttributes(SIATTRIBFLAGS_AND, SFGAO_FOLDER, &attributes), S_FALSE);
  EXPECT_EQ(attributes, 0u);
  EXPECT_EQ(array->GetAttributes(SIATTRIBFLAGS_OR, SFGAO_FOLDER | SFGAO_STREAM, &attributes), S_OK);
  Ref<IEnumShellItems> items;
  ASSERT_EQ(array->EnumItems(items.Put()), S_OK);
  IShellItem* found[4] = {};
  ULONG fetched = 0;
  EXPECT_EQ(items->Next(4, found, &fetched), S_FALSE);
  ASSERT_EQ(fetched, 3u);
  EXPECT_EQ(Show(Name(Ref<IShellItem>::Share(found[2]).As<IShellItem2>(), SIGDN_FILESYSPATH)),
            "C:\\Dir");
  for (ULONG i = 0; i < fetched; ++i) found[i]->Release();

  // One bad list spoils the array.
  const BYTE foreign[] = {6, 0, 1, 2, 3, 4, 0, 0};
  const PCIDLIST_ABSOLUTE spoiled[] = {a.Get(), reinterpret_cast<PCIDLIST_ABSOLUTE>(foreign)};
  EXPECT_EQ(Api().SHCreateShellItemArrayFromIDLists(2, spoiled, array.Put()), E_INVALIDARG);
  EXPECT_FALSE(array);

  // Without children: all that the folder shows.
  ASSERT_EQ(Api().SHCreateShellItemArray(Parse(u"Memory").Get(), nullptr, 0, nullptr, array.Put()),
            S_OK);
  DWORD count = 0;
  ASSERT_EQ(array->GetCount(&count), S_OK);
  EXPECT_EQ(count, 4u);
}

}  // namespace
}  // namespace oak
