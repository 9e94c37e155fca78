// Folders of others, mounted: listing, looks, changes, life time.
#include <atomic>
#include <thread>

#include "oak/base/Variant.h"
#include "testkit/ScopedApi.h"
#include "tests/platform/portable/ShellFixture.h"
#include "tests/platform/portable/ShellMemoryFolder.h"

namespace oak {
namespace {

using testkit::TScriptedFolder;

class TShellMount : public TShellTest {
 protected:
  /// The contents of most tests.
  static Ref<TScriptedFolder> Tree() {
    const auto tree = TScriptedFolder::Make();
    tree->AddFolder(u"Inner")->AddFile(u"deep.txt");
    tree->AddFile(u"a10").AddFile(u"a2").AddFile(u"ghost", SFGAO_HIDDEN);
    tree->AddFile(u"boot", SFGAO_HIDDEN | SFGAO_SYSTEM).AddFile(u"link", SFGAO_LINK);
    tree->AddFolder(u"Empty");
    return tree;
  }
  static TFolderMount Mount(TStringView parent = {}, TStringView name = u"Memory",
                            const Ref<TScriptedFolder>& tree = Tree()) {
    TFolderMount mount;
    mount.Parent = parent;
    mount.Name = name;
    mount.Source =
        MakeRef<TMemoryFolder>(tree, std::map<TString, std::uint64_t>{{u"A10", 10}, {u"A2", 20}});
    return mount;
  }
  static TPidl Child(IShellFolder* folder, TStringView name) {
    TString text(name);
    TPidl child;
    EXPECT_EQ(
        folder->ParseDisplayName(nullptr, nullptr, WBuffer(text), nullptr, child.Put(), nullptr),
        S_OK)
        << Show(name);
    return child;
  }
};

TEST_F(TShellMount, EnumeratorsGoOnDemand) {
  const auto tree = Tree();
  tree->SetDelay(1);
  const TScopedMount scope(Mount({}, u"Memory", tree));
  int listed = 0;
  testkit::TScopedApi sleep(Api().Sleep, [&](DWORD) { ++listed; });
  const auto folder = Folder(u"Memory");
  listed = 0;
  Ref<IEnumIDList> walk, copy;
  ASSERT_EQ(folder->EnumObjects(nullptr, AllObjects, walk.Put()), S_OK);
  EXPECT_EQ(listed, 0) << "nothing is read before it is asked for";
  TPidl child;
  ASSERT_EQ(walk->Next(1, child.Put(), nullptr), S_OK);
  EXPECT_EQ(listed, 1);
  ASSERT_EQ(walk->Skip(2), S_OK);
  ASSERT_EQ(walk->Clone(copy.Put()), S_OK);
  PITEMID_CHILD more[9] = {};
  ULONG fetched = 0;
  EXPECT_EQ(walk->Next(9, more, nullptr), E_POINTER);
  EXPECT_EQ(walk->Next(9, more, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 4u);
  for (PITEMID_CHILD pidl : more) CoTaskMemFree(pidl);
  ASSERT_EQ(copy->Next(1, child.Put(), nullptr), S_OK);
  EXPECT_EQ(Show(Name(folder.Get(), child.Get(), SHGDN_INFOLDER)), "ghost");
  EXPECT_EQ(copy->Skip(9), S_FALSE);
  ASSERT_EQ(copy->Reset(), S_OK);
  ASSERT_EQ(copy->Next(1, child.Put(), nullptr), S_OK);
  EXPECT_EQ(Show(Name(folder.Get(), child.Get(), SHGDN_INFOLDER)), "Inner");
}

TEST_F(TShellMount, AFailureInTheMiddleIsReported) {
  const HRESULT lost = HRESULT_FROM_WIN32(64);  // ERROR_NETNAME_DELETED
  const auto tree = Tree();
  tree->SetFailure(testkit::TScriptedOperation::Next, lost, 1);
  const TScopedMount scope(Mount({}, u"Memory", tree));
  Ref<IEnumIDList> walk;
  ASSERT_EQ(Folder(u"Memory")->EnumObjects(nullptr, AllObjects, walk.Put()), S_OK);
  PITEMID_CHILD two[2] = {};
  ULONG fetched = 0;
  EXPECT_EQ(walk->Next(2, two, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 1u) << "what was found before it is delivered";
  CoTaskMemFree(two[0]);
  TPidl child;
  EXPECT_EQ(walk->Next(1, child.Put(), &fetched), lost);
  EXPECT_EQ(fetched, 0u);
}

TEST_F(TShellMount, NamesPathsAndAttributesAreComposed) {
  const auto tree = TScriptedFolder::Make();
  tree->AddFolder(u"Inner", SFGAO_FILESYSTEM)->AddFile(u"deep.txt", SFGAO_FILESYSTEM);
  tree->AddFile(u"virtual");
  TFolderMount mount = Mount(u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}", u"Volume", tree);
  mount.ParsingName = u"X:\\";
  mount.FileSystemPath = u"X:\\";
  mount.Attributes |= SFGAO_FILESYSTEM;
  const TScopedMount drive(std::move(mount));
  const TScopedMount folder(Mount(u"C:\\Dir", u"Archive"));

  EXPECT_EQ(Show(Name(u"x:\\inner\\DEEP.txt", SIGDN_FILESYSPATH)), "X:\\Inner\\deep.txt");
  EXPECT_EQ(Show(Name(u"X:\\virtual", SIGDN_FILESYSPATH)), "!80070057");
  EXPECT_EQ(Show(Name(u"C:\\Dir\\Archive\\Inner\\deep.txt", SIGDN_DESKTOPABSOLUTEPARSING)),
            "C:\\Dir\\Archive\\Inner\\deep.txt");
  SFGAOF attributes = 0;
  EXPECT_GE(Item(u"X:\\Inner")->GetAttributes(SFGAO_STREAM | SFGAO_FILESYSTEM, &attributes), 0);
  EXPECT_EQ(attributes, DWORD{SFGAO_FILESYSTEM});
  // Mounts come before the objects of the folder itself.
  EXPECT_EQ(Show(List(u"C:\\Dir", AllObjects).front()), "Archive");
  EXPECT_EQ(Show(List(u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}", AllObjects).front()), "Volume");
}

TEST_F(TShellMount, ObjectsOutliveTheMount) {
  const TMountHandle handle = MountFolder(Mount());
  const Ref<IShellItem2> item = Item(u"Memory\\Inner\\deep.txt");
  const Ref<IShellFolder2> folder = Folder(u"Memory");
  const TPidl pidl = Parse(u"Memory\\Inner\\deep.txt");
  ASSERT_TRUE(UnmountFolder(handle));
  EXPECT_EQ(Show(Name(item, SIGDN_PARENTRELATIVE)), "deep.txt");
  Ref<IEnumIDList> walk;
  EXPECT_EQ(folder->EnumObjects(nullptr, AllObjects, walk.Put()), S_OK);
  Ref<IShellItem> again;
  EXPECT_TRUE(FAILED(Api().SHCreateItemFromIDList(pidl.Get(), IID_IShellItem, again.PutVoid())));
  HRESULT result = S_OK;
  (void)Parse(u"Memory", &result);
  EXPECT_EQ(result, HRESULT_FROM_WIN32(2));
}

TEST_F(TShellMount, StorageCreatesRenamesAndDestroys) {
  const TScopedMount scope(Mount());
  const Ref<IStorage> storage = Folder(u"Memory").As<IStorage>();
  ASSERT_TRUE(storage);
  Ref<IStorage> made;
  ASSERT_EQ(storage->CreateStorage(W(u"New"), STGM_FAILIFTHERE, 0, 0, made.Put()), S_OK);
  EXPECT_EQ(storage->CreateStorage(W(u"new"), STGM_FAILIFTHERE, 0, 0, made.Put()),
            STG_E_FILEALREADYEXISTS);
  EXPECT_FALSE(made);
  EXPECT_EQ(storage->CreateStorage(W(u"a\\b"), 0, 0, 0, made.Put()), STG_E_INVALIDNAME);
  EXPECT_EQ(storage->RenameElement(W(u"a2"), W(u"link")), STG_E_FILEALREADYEXISTS);
  EXPECT_EQ(storage->RenameElement(W(u"nobody"), W(u"x")), STG_E_FILENOTFOUND);
  EXPECT_EQ(storage->RenameElement(W(u"a2"), W(u"A2")), S_OK);
  EXPECT_EQ(storage->DestroyElement(W(u"a10")), S_OK);
  EXPECT_EQ(storage->DestroyElement(W(u"a10")), STG_E_FILENOTFOUND);
  EXPECT_EQ(Show(Join(List(u"Memory", SHCONTF_FOLDERS | SHCONTF_NONFOLDERS), u" ")),
            "Inner A2 link Empty New");
  STATSTG stat{};
  ASSERT_EQ(storage->Stat(&stat, STATFLAG_DEFAULT), S_OK);
  EXPECT_EQ(Show(FromW(stat.pwcsName)), "Memory");
  EXPECT_EQ(stat.type, STGTY_STORAGE);
  CoTaskMemFree(stat.pwcsName);

  // Storages of the folder's objects carry their sizes.
  Ref<IEnumSTATSTG> elements;
  ASSERT_EQ(storage->EnumElements(0, nullptr, 0, elements.Put()), S_OK);
  STATSTG element[2] = {};
  ULONG fetched = 0;
  ASSERT_EQ(elements->Next(2, element, &fetched), S_OK);
  EXPECT_EQ(element[0].type, STGTY_STORAGE);
  EXPECT_EQ(element[1].cbSize.QuadPart, 20u);
  for (const STATSTG& entry : element) CoTaskMemFree(entry.pwcsName);
}

TEST_F(TShellMount, ColumnsAndDetails) {
  const TScopedMount scope(Mount());
  const Ref<IShellFolder2> folder = Folder(u"Memory");
  SHELLDETAILS details{};
  ASSERT_EQ(folder->GetDetailsOf(nullptr, 1, &details), S_OK);
  EXPECT_EQ(Show(FromW(details.str.pOleStr)), "Size");
  EXPECT_EQ(details.fmt, LVCFMT_RIGHT);
  CoTaskMemFree(details.str.pOleStr);
  ASSERT_EQ(folder->GetDetailsOf(Child(folder.Get(), u"a2").Get(), 0, &details), S_OK);
  EXPECT_EQ(Show(FromW(details.str.pOleStr)), "a2");
  CoTaskMemFree(details.str.pOleStr);
  EXPECT_TRUE(FAILED(folder->GetDetailsOf(nullptr, 2, &details)));
  SHCOLUMNID key{};
  EXPECT_TRUE(FAILED(folder->MapColumnToSCID(2, &key)));
  TVariant value;
  ASSERT_EQ(folder->GetDetailsEx(Child(folder.Get(), u"a2").Get(), &PKEY_Size, value.Put()), S_OK);
  EXPECT_EQ(value.Get().ullVal, 20u);
}

TEST_F(TShellMount, TipsOverlaysAndHandlers) {
  const auto source = MakeRef<TMemoryFolder>(Tree(), std::map<TString, std::uint64_t>());
  TFolderMount mount;
  mount.Name = u"Memory";
  mount.InfoTip = u"In memory only";
  mount.OverlayIndex = 3;
  mount.Source = source;
  const TScopedMount scope(std::move(mount));
  const TPidl pidl = Parse(u"Memory");
  const PCUITEMID_CHILD child = pidl.Get();
  Ref<IQueryInfo> tip;
  TTaskMemory<WCHAR> text;
  ASSERT_EQ(Desktop()->GetUIObjectOf(nullptr, 1, &child, IID_IQueryInfo, nullptr, tip.PutVoid()),
            S_OK);
  ASSERT_EQ(tip->GetInfoTip(8, text.Put()), S_OK);
  EXPECT_EQ(Show(FromW(text.Get())), "In memory only");
  int index = 0;
  EXPECT_EQ(Desktop().As<IShellIconOverlay>()->GetOverlayIndex(child, &index), S_OK);
  EXPECT_EQ(index, 3);

  // The source is asked first, for several objects at once too; what it has not, the shell makes.
  const Ref<IShellFolder2> folder = Folder(u"Memory");
  const TPidl a = Child(folder.Get(), u"a2"), b = Child(folder.Get(), u"link");
  const PCUITEMID_CHILD both[] = {a.Get(), b.Get()};
  Ref<IContextMenu> menu;
  EXPECT_EQ(folder->GetUIObjectOf(nullptr, 2, both, IID_IContextMenu, nullptr, menu.PutVoid()),
            S_OK);
  ASSERT_EQ(source->Asked.size(), 1u);
  EXPECT_TRUE(source->Asked[0] == IID_IContextMenu);
  EXPECT_EQ(folder.As<IShellIconOverlay>()->GetOverlayIndex(a.Get(), &index), S_FALSE);
  EXPECT_EQ(index, -1);
}

// Several threads use one folder and one item while a mount comes and goes.
TEST_F(TShellMount, SeveralThreads) {
  const TScopedMount scope(Mount());
  const Ref<IShellItem2> item = Item(u"Memory\\Inner");
  std::atomic<int> failures{0};
  const auto work = [&](int number) {
    for (int round = 0; round < 50; ++round) {
      if (List(u"Memory", AllObjects).size() != 7) ++failures;
      if (Name(item, SIGDN_DESKTOPABSOLUTEPARSING) != u"Memory\\Inner") ++failures;
      if (FAILED(item->Update(nullptr))) ++failures;
      const TScopedMount own(Mount({}, u"Own" + IntToStr(number)));
      if (List(u"Own" + IntToStr(number), SHCONTF_FOLDERS).size() != 2) ++failures;
    }
  };
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) threads.emplace_back(work, number);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(failures, 0);
}

}  // namespace
}  // namespace oak
