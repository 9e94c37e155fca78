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

TEST_F(TShellItems, Handlers) {
  const Ref<IShellItem2> inner = Item(u"Memory\\Inner"), deep = Item(u"Memory\\Inner\\deep");
  Ref<IUnknown> object;
  EXPECT_EQ(inner->BindToHandler(nullptr, BHID_Storage, IID_IStorage, object.PutVoid()), S_OK);
  EXPECT_EQ(inner->BindToHandler(nullptr, BHID_PropertyStore, IID_IPropertyStore, object.PutVoid()),
            S_OK);
  Ref<IEnumShellItems> items;
  ASSERT_EQ(inner->BindToHandler(nullptr, BHID_EnumItems, IID_IEnumShellItems, items.PutVoid()),
            S_OK);
  Ref<IShellItem> first;
  ASSERT_EQ(items->Next(1, first.Put(), nullptr), S_OK);
  EXPECT_EQ(items->Next(1, first.Put(), nullptr), S_FALSE);
  for (const GUID* handler :
       {&BHID_SFObject, &BHID_EnumItems, &BHID_Stream, &BHID_LinkTargetItem}) {
    EXPECT_TRUE(FAILED(deep->BindToHandler(nullptr, *handler, IID_IShellFolder, object.PutVoid())));
    EXPECT_FALSE(object);
  }
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

TEST_F(TShellItems, PropertyStores) {
  const Ref<IShellItem2> item = Item(u"Memory\\A2");
  const auto comment = TPropVariant::From(u"blue");
  const auto open = [&](GETPROPERTYSTOREFLAGS flags) {
    Ref<IPropertyStore> store;
    EXPECT_EQ(
        item->GetPropertyStoreForKeys(&PKEY_Comment, 1, flags, IID_IPropertyStore, store.PutVoid()),
        S_OK);
    return store;
  };
  const auto told = [&] {
    TTaskMemory<WCHAR> text;
    EXPECT_EQ(item->GetString(PKEY_Comment, text.Put()), S_OK);
    return Show(FromW(text.Get()));
  };
  EXPECT_EQ(open(GPS_DEFAULT)->SetValue(PKEY_Comment, comment), STG_E_ACCESSDENIED);
  const Ref<IPropertyStore> store = open(GPS_READWRITE);
  DWORD count = 0;
  ASSERT_EQ(store->GetCount(&count), S_OK);
  EXPECT_EQ(count, 1u);
  ASSERT_EQ(store->SetValue(PKEY_Comment, comment), S_OK);
  EXPECT_EQ(told(), "") << "nothing is written before Commit";
  ASSERT_EQ(store->Commit(), S_OK);
  EXPECT_EQ(told(), "blue");
  // A value that the object refuses comes out of Commit, again and again.
  ASSERT_EQ(store->SetValue(PKEY_Size, TPropVariant::From(1)), S_OK);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(store->Commit(), E_INVALIDARG);
  TPropVariant missing;
  EXPECT_EQ(store->GetValue(PKEY_Author, missing.Put()), S_OK);
  EXPECT_TRUE(missing.IsEmpty());
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

TEST_F(TShellItems, DataOfLists) {
  const TPidl share = Parse(u"\\\\server\\share");
  BYTE buffer[512];
  const auto get = [&](int bytes) {
    return Api().SHGetDataFromIDListW(Desktop().Get(), share.Get(), SHGDFIL_NETRESOURCE, buffer,
                                      bytes);
  };
  ASSERT_EQ(get(sizeof buffer), S_OK);
  EXPECT_EQ(Show(FromW(reinterpret_cast<NETRESOURCEW*>(buffer)->lpRemoteName)),
            "\\\\server\\share");
  EXPECT_TRUE(FAILED(get(sizeof(NETRESOURCEW) + 4)));
}

}  // namespace
}  // namespace oak
