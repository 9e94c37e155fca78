// Items, arrays of them and their properties.
#include "oak/base/Variant.h"
#include "tests/platform/portable/ShellFixture.h"
#include "tests/platform/portable/ShellMemoryFolder.h"

namespace oak {
namespace {

class TShellItems : public TShellTest {
 protected:
  void SetUp() override {
    TShellTest::SetUp();
    TFolderMount mount;
    mount.Name = u"Memory";
    mount.Source = MakeMemoryFolder(
        fTree,
        MemoryFolder(u"", {MemoryFolder(u"Inner", {MemoryFile(u"deep", 7)}), MemoryFile(u"a10", 10),
                           MemoryFile(u"A2", 20), MemoryFile(u"same", 10)}));
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

  std::shared_ptr<TMemoryTree> fTree = std::make_shared<TMemoryTree>();
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
      {u"Memory\\a2", u"Memory\\A2", canonical, 0},  // one object, written in two ways
      {u"Memory\\a2", u"Memory\\a2", all, 0},
      {u"Memory\\a2", u"Memory\\a10", 1, 1},    // by size
      {u"Memory\\same", u"Memory\\a10", 1, 1},  // equal sizes: by name
      {u"Memory", u"Memory\\Inner", 0, -1},     // a start comes first
      {u"Memory\\Inner\\deep", u"Memory\\Inner", canonical, 1},
      {u"Memory\\Inner\\deep", u"Memory\\same", 0, -1},  // the first difference decides
      {u"This PC", u"Network", 0, -1},                   // by rank
      {u"This PC", u"Memory", 0, -1},
      {u"C:\\", u"E:\\", 0, -1},
      {u"E:\\", u"C:\\Dir", canonical, 1},
      {u"shell:Desktop", u"shell:Desktop", canonical, 0},
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
  EXPECT_EQ(CompareItems(u"Memory\\A2", u"Memory\\a2", SICHINT_CANONICAL), 0);
  EXPECT_EQ(CompareItems(u"shell:Desktop", u"Memory", SICHINT_CANONICAL), -1);
  EXPECT_EQ(CompareItems(u"shell:Desktop", u"shell:Desktop", SICHINT_CANONICAL), 0);
  // Two ways to one directory are two objects with one path.
  EXPECT_NE(CompareItems(u"Me", u"C:\\home\\me", SICHINT_CANONICAL), 0);
  EXPECT_EQ(CompareItems(u"Me", u"C:\\home\\me",
                         SICHINT_CANONICAL | SICHINT_TEST_FILESYSPATH_IF_NOT_EQUAL),
            0);
}

TEST_F(TShellItems, ListsByWhatTheyLeadTo) {
  const TPidl desktop = Parse(u"shell:Desktop"), memory = Parse(u"Memory"),
              inner = Parse(u"Memory\\Inner"), deep = Parse(u"Memory\\Inner\\deep");
  EXPECT_TRUE(Api().ILIsParent(desktop.Get(), memory.Get(), TRUE));
  EXPECT_TRUE(Api().ILIsParent(memory.Get(), deep.Get(), FALSE));
  EXPECT_FALSE(Api().ILIsParent(memory.Get(), deep.Get(), TRUE));
  EXPECT_FALSE(Api().ILIsParent(deep.Get(), memory.Get(), FALSE));
  EXPECT_FALSE(Api().ILIsParent(deep.Get(), deep.Get(), TRUE));
  EXPECT_TRUE(Api().ILIsEqual(deep.Get(), TPidl::Copy(deep.Get()).Get()));
  EXPECT_FALSE(Api().ILIsEqual(inner.Get(), deep.Get()));
  // Elements that differ in bytes only: the case of a name.
  const TPidl other = Parse(u"Memory");
  const TPidl variant = TPidl::Adopt(
      Api().ILCombine(other.Get(), MakeNameElement(ekFirstFree, 3, 1, u"INNER").Get()));
  EXPECT_FALSE(Api().ILIsEqual(variant.Get(), inner.Get()))
      << "names in other case are other names for a source "
         "that does not say otherwise";
  const auto* rest = Api().ILFindChild(inner.Get(), deep.Get());
  ASSERT_TRUE(rest);
  EXPECT_EQ(PidlDepth(rest), 1);
}

TEST_F(TShellItems, EveryWayToAnItem) {
  const TPidl pidl = Parse(u"Memory\\Inner\\deep");
  const TPidl parent = Parse(u"Memory\\Inner");
  const PCUITEMID_CHILD child = Api().ILFindLastID(pidl.Get());
  const Ref<IShellFolder2> folder = Folder(u"Memory\\Inner");
  const TString expected = u"Memory\\Inner\\deep";

  Ref<IShellItem> item;
  ASSERT_EQ(Api().SHCreateShellItem(nullptr, nullptr, pidl.Get(), item.Put()), S_OK);
  EXPECT_EQ(Name(item.As<IShellItem2>(), SIGDN_DESKTOPABSOLUTEPARSING), expected);
  ASSERT_EQ(Api().SHCreateShellItem(parent.Get(), nullptr, child, item.Put()), S_OK);
  EXPECT_EQ(Name(item.As<IShellItem2>(), SIGDN_DESKTOPABSOLUTEPARSING), expected);
  ASSERT_EQ(Api().SHCreateShellItem(nullptr, folder.Get(), child, item.Put()), S_OK);
  EXPECT_EQ(Name(item.As<IShellItem2>(), SIGDN_DESKTOPABSOLUTEPARSING), expected);
  ASSERT_EQ(Api().SHCreateItemWithParent(parent.Get(), folder.Get(), child, IID_IShellItem,
                                         item.PutVoid()),
            S_OK);
  EXPECT_EQ(Name(item.As<IShellItem2>(), SIGDN_DESKTOPABSOLUTEPARSING), expected);
  ASSERT_EQ(Api().SHCreateItemFromRelativeName(Item(u"Memory").Get(), W(u"Inner\\deep"), nullptr,
                                               IID_IShellItem, item.PutVoid()),
            S_OK);
  EXPECT_EQ(Name(item.As<IShellItem2>(), SIGDN_DESKTOPABSOLUTEPARSING), expected);
  EXPECT_EQ(Api().SHCreateShellItem(nullptr, nullptr, nullptr, item.Put()), E_INVALIDARG);
  EXPECT_FALSE(item);

  // And back.
  for (IUnknown* object : {static_cast<IUnknown*>(Item(u"Memory\\Inner\\deep").Detach()),
                           static_cast<IUnknown*>(Folder(u"Memory\\Inner").Detach())}) {
    const auto owner = Ref<IUnknown>::Adopt(object);
    TPidl back;
    ASSERT_EQ(Api().SHGetIDListFromObject(object, back.Put()), S_OK);
    EXPECT_TRUE(Api().ILIsParent(parent.Get(), back.Get(), FALSE));
  }
  Ref<IShellFolder> bound;
  PCUITEMID_CHILD last = nullptr;
  ASSERT_EQ(Api().SHBindToParent(pidl.Get(), IID_IShellFolder, bound.PutVoid(), &last), S_OK);
  EXPECT_EQ(last, child);
  EXPECT_EQ(Show(Name(bound.Get(), last, SHGDN_INFOLDER)), "deep");
  EXPECT_EQ(
      Api().SHBindToParent(Parse(u"shell:Desktop").Get(), IID_IShellFolder, bound.PutVoid(), &last),
      E_INVALIDARG);
}

TEST_F(TShellItems, ParentsEndAtTheDesktop) {
  Ref<IShellItem> item = Item(u"Memory\\Inner\\deep");
  TStringArray names;
  for (Ref<IShellItem> parent; item; item = std::move(parent)) {
    names.push_back(Name(item.As<IShellItem2>(), SIGDN_PARENTRELATIVE));
    const HRESULT result = item->GetParent(parent.Put());
    EXPECT_EQ(SUCCEEDED(result), static_cast<bool>(parent));
  }
  EXPECT_EQ(Show(Join(names, u" < ")), "deep < Inner < Memory < Desktop");
}

TEST_F(TShellItems, Handlers) {
  const Ref<IShellItem2> inner = Item(u"Memory\\Inner"), deep = Item(u"Memory\\Inner\\deep");
  Ref<IUnknown> object;
  EXPECT_EQ(inner->BindToHandler(nullptr, BHID_SFObject, IID_IShellFolder, object.PutVoid()), S_OK);
  EXPECT_EQ(inner->BindToHandler(nullptr, BHID_Storage, IID_IStorage, object.PutVoid()), S_OK);
  EXPECT_EQ(inner->BindToHandler(nullptr, BHID_SFUIObject, IID_IQueryInfo, object.PutVoid()), S_OK);
  EXPECT_EQ(inner->BindToHandler(nullptr, BHID_PropertyStore, IID_IPropertyStore, object.PutVoid()),
            S_OK);
  Ref<IEnumShellItems> items;
  ASSERT_EQ(inner->BindToHandler(nullptr, BHID_EnumItems, IID_IEnumShellItems, items.PutVoid()),
            S_OK);
  Ref<IShellItem> first;
  ASSERT_EQ(items->Next(1, first.Put(), nullptr), S_OK);
  EXPECT_EQ(Show(Name(first.As<IShellItem2>(), SIGDN_DESKTOPABSOLUTEPARSING)),
            "Memory\\Inner\\deep");
  EXPECT_EQ(items->Next(1, first.Put(), nullptr), S_FALSE);
  for (const GUID* handler :
       {&BHID_SFObject, &BHID_EnumItems, &BHID_Stream, &BHID_LinkTargetItem}) {
    EXPECT_TRUE(FAILED(deep->BindToHandler(nullptr, *handler, IID_IShellFolder, object.PutVoid())));
    EXPECT_FALSE(object);
  }
  EXPECT_EQ(inner->BindToHandler(nullptr, GUID_NULL, IID_IShellFolder, object.PutVoid()),
            E_NOINTERFACE);
  EXPECT_EQ(inner->BindToHandler(nullptr, BHID_SFObject, IID_IShellFolder, nullptr), E_POINTER);
}

TEST_F(TShellItems, PropertiesOfTheSourceAndOfTheShell) {
  const Ref<IShellItem2> item = Item(u"Memory\\A2");
  ULONGLONG size = 0;
  EXPECT_EQ(item->GetUInt64(PKEY_Size, &size), S_OK);
  EXPECT_EQ(size, 20u);
  TTaskMemory<WCHAR> text;
  EXPECT_EQ(item->GetString(PKEY_Size, text.Put()), S_OK);
  EXPECT_EQ(Show(FromW(text.Get())), "20");
  const struct {
    const PROPERTYKEY& Key;
    const char16_t* Text;
  } names[] = {{PKEY_ItemNameDisplay, u"A2"},
               {PKEY_ParsingPath, u"Memory\\A2"},
               {PKEY_ItemFolderNameDisplay, u"Memory"},
               {PKEY_ItemTypeText, u"Object"}};
  for (const auto& name : names) {
    ASSERT_EQ(item->GetString(name.Key, text.Put()), S_OK) << Show(name.Text);
    EXPECT_EQ(Show(FromW(text.Get())), Show(name.Text));
  }
  BOOL isFolder = TRUE;
  EXPECT_EQ(item->GetBool(PKEY_IsFolder, &isFolder), S_OK);
  EXPECT_FALSE(isFolder);
  FILETIME time{};
  EXPECT_EQ(item->GetFileTime(PKEY_DateModified, &time), HRESULT_FROM_WIN32(1168));
  EXPECT_EQ(item->GetFileTime(PKEY_ItemNameDisplay, &time), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(item->GetString(PKEY_ItemUrl, text.Put()), HRESULT_FROM_WIN32(1168));
  EXPECT_FALSE(text);
}

TEST_F(TShellItems, PropertyStores) {
  const Ref<IShellItem2> item = Item(u"Memory\\A2");
  const auto comment = TPropVariant::From(u"blue");
  Ref<IPropertyStore> store;
  ASSERT_EQ(item->GetPropertyStoreForKeys(&PKEY_Comment, 1, GPS_DEFAULT, IID_IPropertyStore,
                                          store.PutVoid()),
            S_OK);
  EXPECT_EQ(store->SetValue(PKEY_Comment, comment), STG_E_ACCESSDENIED);
  ASSERT_EQ(item->GetPropertyStoreForKeys(&PKEY_Comment, 1, GPS_READWRITE, IID_IPropertyStore,
                                          store.PutVoid()),
            S_OK);
  DWORD count = 0;
  ASSERT_EQ(store->GetCount(&count), S_OK);
  EXPECT_EQ(count, 1u);
  ASSERT_EQ(store->SetValue(PKEY_Comment, comment), S_OK);
  TTaskMemory<WCHAR> text;
  ASSERT_EQ(item->GetString(PKEY_Comment, text.Put()), S_OK);
  EXPECT_EQ(Show(FromW(text.Get())), "") << "nothing is written before Commit";
  ASSERT_EQ(store->Commit(), S_OK);
  ASSERT_EQ(item->GetString(PKEY_Comment, text.Put()), S_OK);
  EXPECT_EQ(Show(FromW(text.Get())), "blue");
  // A value that the object refuses comes out of Commit, again and again.
  ASSERT_EQ(store->SetValue(PKEY_Size, TPropVariant::From(1)), S_OK);
  EXPECT_EQ(store->Commit(), E_INVALIDARG);
  EXPECT_EQ(store->Commit(), E_INVALIDARG);
  TPropVariant missing;
  EXPECT_EQ(store->GetValue(PKEY_Author, missing.Put()), S_OK);
  EXPECT_TRUE(missing.IsEmpty());
}

TEST_F(TShellItems, UpdateTellsThatTheObjectIsGone) {
  const Ref<IShellItem2> item = Item(u"Memory\\A2");
  EXPECT_EQ(item->Update(nullptr), S_OK);
  ASSERT_EQ(Folder(u"Memory").As<IStorage>()->DestroyElement(W(u"A2")), S_OK);
  EXPECT_EQ(item->Update(nullptr), HRESULT_FROM_WIN32(2));
  EXPECT_EQ(Show(Name(item, SIGDN_PARENTRELATIVE)), "A2") << "it keeps its name";
}

TEST_F(TShellItems, Arrays) {
  const TPidl a = Parse(u"Memory\\A2"), b = Parse(u"Memory\\Inner"), c = Parse(u"C:\\Dir");
  const PCIDLIST_ABSOLUTE lists[] = {a.Get(), b.Get(), c.Get()};
  Ref<IShellItemArray> array;
  ASSERT_EQ(Api().SHCreateShellItemArrayFromIDLists(3, lists, array.Put()), S_OK);
  DWORD count = 0;
  ASSERT_EQ(array->GetCount(&count), S_OK);
  EXPECT_EQ(count, 3u);
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
  Ref<IShellItem> outside;
  EXPECT_TRUE(FAILED(array->GetItemAt(3, outside.Put())));
  EXPECT_EQ(Api().SHCreateShellItemArrayFromIDLists(0, lists, array.Put()), E_INVALIDARG);
  EXPECT_FALSE(array);

  // One bad list spoils the array.
  const BYTE foreign[] = {6, 0, 1, 2, 3, 4, 0, 0};
  const PCIDLIST_ABSOLUTE spoiled[] = {a.Get(), reinterpret_cast<PCIDLIST_ABSOLUTE>(foreign)};
  EXPECT_EQ(Api().SHCreateShellItemArrayFromIDLists(2, spoiled, array.Put()), E_INVALIDARG);

  // Without children: all that the folder shows.
  ASSERT_EQ(Api().SHCreateShellItemArray(Parse(u"Memory").Get(), nullptr, 0, nullptr, array.Put()),
            S_OK);
  ASSERT_EQ(array->GetCount(&count), S_OK);
  EXPECT_EQ(count, 4u);
}

TEST_F(TShellItems, FileInfo) {
  SHFILEINFOW info{};
  const UINT all = SHGFI_DISPLAYNAME | SHGFI_TYPENAME | SHGFI_SYSICONINDEX | SHGFI_ATTRIBUTES;
  ASSERT_NE(Api().SHGetFileInfoW(W(u"C:\\"), 0, &info, sizeof info, all), 0u);
  EXPECT_EQ(Show(FromW(info.szDisplayName)), "System (C:)");
  EXPECT_EQ(Show(FromW(info.szTypeName)), "Local Disk");
  EXPECT_EQ(info.iIcon, 8);
  EXPECT_TRUE(info.dwAttributes & SFGAO_FILESYSTEM);
  const TPidl desktop = Parse(u"shell:Desktop");
  ASSERT_NE(Api().SHGetFileInfoW(reinterpret_cast<LPCWSTR>(desktop.Get()), 0, &info, sizeof info,
                                 all | SHGFI_PIDL),
            0u);
  EXPECT_EQ(Show(FromW(info.szDisplayName)), "Desktop");
  EXPECT_EQ(info.iIcon, 34);
  EXPECT_EQ(Api().SHGetFileInfoW(W(u"C:\\none"), 0, &info, sizeof info, all), 0u);
  ASSERT_NE(Api().SHGetFileInfoW(W(u"x.txt"), 0, &info, sizeof info, all | SHGFI_USEFILEATTRIBUTES),
            0u);
  info.dwAttributes = SFGAO_FOLDER;
  ASSERT_NE(Api().SHGetFileInfoW(W(u"C:\\Dir"), 0, &info, sizeof info,
                                 SHGFI_ATTRIBUTES | SHGFI_ATTR_SPECIFIED),
            0u);
  EXPECT_EQ(info.dwAttributes, SFGAO_FOLDER);
  EXPECT_EQ(Api().SHGetFileInfoW(W(u"C:\\"), 0, &info, 8, all), 0u);
}

TEST_F(TShellItems, DataOfLists) {
  const TPidl share = Parse(u"\\\\server\\share"), file = Parse(u"C:\\Dir\\file.txt");
  BYTE buffer[512];
  Ref<IShellFolder> desktop = Desktop();
  ASSERT_EQ(Api().SHGetDataFromIDListW(desktop.Get(), share.Get(), SHGDFIL_NETRESOURCE, buffer,
                                       sizeof buffer),
            S_OK);
  EXPECT_EQ(Show(FromW(reinterpret_cast<NETRESOURCEW*>(buffer)->lpRemoteName)),
            "\\\\server\\share");
  EXPECT_TRUE(FAILED(Api().SHGetDataFromIDListW(desktop.Get(), share.Get(), SHGDFIL_NETRESOURCE,
                                                buffer, sizeof(NETRESOURCEW) + 4)));
  WIN32_FIND_DATAW data{};
  ASSERT_EQ(
      Api().SHGetDataFromIDListW(desktop.Get(), file.Get(), SHGDFIL_FINDDATA, &data, sizeof data),
      S_OK);
  EXPECT_EQ(Show(FromW(data.cFileName)), "file.txt");
  EXPECT_EQ(data.nFileSizeLow, 5u);
  EXPECT_EQ(Api().SHGetDataFromIDListW(desktop.Get(), Parse(u"Network").Get(), SHGDFIL_FINDDATA,
                                       &data, sizeof data),
            E_INVALIDARG);
}

}  // namespace
}  // namespace oak
