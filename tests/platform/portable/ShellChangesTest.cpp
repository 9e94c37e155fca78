// Events of the namespace as windows get them.
#include "oak/platform/portable/ShellChanges.h"

#include <unistd.h>

#include "oak/base/Variant.h"
#include "oak/platform/WindowPost.h"
#include "tests/platform/portable/ShellMenuFixture.h"

namespace oak {
namespace {

constexpr UINT Message = 2011;

/// A desktop of windows that keep what is posted to them.
class TPostbox final : public IWindowPost {
 public:
  TPostbox() : fFormer(SetWindowPost(this)) {}
  ~TPostbox() { SetWindowPost(fFormer); }
  bool PostToWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept override {
    if (Closed) return false;
    Posts.push_back({window, message, wParam, lParam});
    return true;
  }
  struct TPost {
    HWND Window;
    UINT Message;
    WPARAM wParam;
    LPARAM lParam;
  };
  std::vector<TPost> Posts;
  bool Closed = false;

 private:
  IWindowPost* fFormer;
};

HWND Window(int number) { return reinterpret_cast<HWND>(static_cast<std::intptr_t>(number)); }

class ShellChanges : public TShellMenuTest {
 protected:
  void TearDown() override {
    for (const ULONG id : fIds) Api().SHChangeNotifyDeregister(id);
    EXPECT_EQ(PendingChanges(), 0u);
    EXPECT_EQ(ChangeRegistrations(), 0u);
    TShellMenuTest::TearDown();
  }
  ULONG Watch(TStringView place, bool recursive = false, LONG events = SHCNE_ALLEVENTS,
              int window = 1) {
    const TPidl pidl = Parse(place);
    const SHChangeNotifyEntry entry{pidl.Get(), recursive ? TRUE : FALSE};
    fIds.push_back(Api().SHChangeNotifyRegister(
        Window(window), SHCNRF_ShellLevel | SHCNRF_InterruptLevel | SHCNRF_NewDelivery, events,
        Message, 1, &entry));
    EXPECT_NE(fIds.back(), 0u);
    return fIds.back();
  }

  static std::string Place(PCIDLIST_ABSOLUTE pidl) {
    TTaskMemory<WCHAR> name;
    if (!pidl) return "";
    if (Api().SHGetNameFromIDList(pidl, SIGDN_DESKTOPABSOLUTEPARSING, name.Put()) != S_OK)
      return "?";
    return ToUtf8(FromW(name.Get()));
  }
  /// Takes what was posted, in the form "event first [second]".
  std::vector<std::string> Taken() {
    std::vector<std::string> lines;
    for (const TPostbox::TPost& post : fPosts.Posts) {
      PIDLIST_ABSOLUTE* lists = nullptr;
      LONG event = 0;
      EXPECT_EQ(post.Message, Message);
      const HANDLE lock = Api().SHChangeNotification_Lock(
          reinterpret_cast<HANDLE>(post.wParam), static_cast<DWORD>(post.lParam), &lists, &event);
      if (!lock) {
        lines.push_back("gone");
        continue;
      }
      std::string line = Event(event) + " " + Place(lists[0]);
      if (lists[1]) line += " " + Place(lists[1]);
      lines.push_back(std::move(line));
      EXPECT_TRUE(Api().SHChangeNotification_Unlock(lock));
      EXPECT_FALSE(Api().SHChangeNotification_Unlock(lock));
    }
    fPosts.Posts.clear();
    return lines;
  }
  static std::string Event(LONG event) {
    const std::pair<LONG, const char*> names[] = {
        {SHCNE_CREATE, "create"},         {SHCNE_DELETE, "delete"},
        {SHCNE_MKDIR, "mkdir"},           {SHCNE_RMDIR, "rmdir"},
        {SHCNE_RENAMEITEM, "rename"},     {SHCNE_RENAMEFOLDER, "renamedir"},
        {SHCNE_UPDATEITEM, "update"},     {SHCNE_UPDATEDIR, "updatedir"},
        {SHCNE_ATTRIBUTES, "attributes"}, {SHCNE_FREESPACE, "space"},
        {SHCNE_ASSOCCHANGED, "types"}};
    for (const auto& [code, name] : names)
      if (code == event) return name;
    return "unknown";
  }
  static void Notify(LONG event, TStringView first, TStringView second = {}) {
    const TString one(first), two(second);
    Api().SHChangeNotify(event, SHCNF_PATHW | SHCNF_FLUSH, W(one),
                         second.empty() ? nullptr : W(two));
  }

  /// The first notification that was posted, held.
  HANDLE LockFirst(PIDLIST_ABSOLUTE*& lists) {
    const HANDLE lock = fPosts.Posts.empty() ? nullptr
                                             : Api().SHChangeNotification_Lock(
                                                   reinterpret_cast<HANDLE>(fPosts.Posts[0].wParam),
                                                   static_cast<DWORD>(::getpid()), &lists, nullptr);
    EXPECT_TRUE(lock);
    return lock;
  }

  using TLines = std::vector<std::string>;
  TPostbox fPosts;
  std::vector<ULONG> fIds;
};

TEST_F(ShellChanges, WhoIsTold) {
  Watch(u"C:\\Dir");
  const struct {
    LONG Event;
    TStringView First, Second;
    TLines Told;
  } cases[] = {{SHCNE_CREATE, u"C:\\Dir\\new", {}, {"create C:\\Dir\\new"}},  // need not exist
               {SHCNE_CREATE, u"c:\\dir\\NEW", {}, {"create C:\\Dir\\NEW"}},
               {SHCNE_UPDATEDIR, u"C:\\Dir", {}, {"updatedir C:\\Dir"}},
               {SHCNE_CREATE, u"C:\\Dir\\Sub\\new", {}, {}},  // too deep
               {SHCNE_CREATE, u"C:\\Directory", {}, {}},
               {SHCNE_RENAMEITEM, u"C:\\Dir\\a", u"C:\\b", {"rename C:\\Dir\\a C:\\b"}},
               {SHCNE_RENAMEITEM, u"C:\\b", u"C:\\Dir\\a", {"rename C:\\b C:\\Dir\\a"}}};
  for (const auto& test : cases) {
    Notify(test.Event, test.First, test.Second);
    EXPECT_EQ(Taken(), test.Told) << Show(test.First);
  }
}

TEST_F(ShellChanges, RecursionMasksAndWindows) {
  Watch(u"C:\\", true, SHCNE_CREATE | SHCNE_MKDIR, 1);
  Watch(u"C:\\Dir", true, SHCNE_DELETE, 2);
  Watch(u"C:\\Dir\\Sub", false, SHCNE_ALLEVENTS, 3);
  Notify(SHCNE_CREATE, u"C:\\Dir\\Sub\\x");
  Notify(SHCNE_DELETE, u"C:\\Dir\\Sub\\x");
  TStringArray order;
  for (const auto& post : fPosts.Posts)
    order.push_back(IntToStr(reinterpret_cast<std::intptr_t>(post.Window)));
  EXPECT_EQ(order, (TStringArray{u"1", u"3", u"2", u"3"}));
  EXPECT_EQ(Taken().size(), 4u);
}

TEST_F(ShellChanges, TheWholeNamespaceAndGlobalEvents) {
  const SHChangeNotifyEntry entry{nullptr, TRUE};
  fIds.push_back(Api().SHChangeNotifyRegister(Window(1), SHCNRF_NewDelivery, SHCNE_ALLEVENTS,
                                              Message, 1, &entry));
  Watch(u"C:\\Dir", false, SHCNE_FREESPACE | SHCNE_ASSOCCHANGED, 2);
  Notify(SHCNE_CREATE, u"C:\\Dir\\Sub\\x");
  EXPECT_EQ(Taken(), TLines{"create C:\\Dir\\Sub\\x"});
  Api().SHChangeNotify(SHCNE_ASSOCCHANGED, SHCNF_IDLIST, nullptr, nullptr);
  EXPECT_EQ(Taken(), (TLines{"types ", "types "}));
  Api().SHChangeNotify(SHCNE_FREESPACE, SHCNF_DWORD, reinterpret_cast<LPCVOID>(std::uintptr_t{12}),
                       nullptr);
  ASSERT_EQ(fPosts.Posts.size(), 2u);
  PIDLIST_ABSOLUTE* lists = nullptr;
  const HANDLE lock = LockFirst(lists);
  ASSERT_TRUE(lists);
  DWORD drives = 0;  // where receivers look for the mask of drives
  std::memcpy(&drives, reinterpret_cast<const BYTE*>(lists[0]) + 2, sizeof drives);
  EXPECT_EQ(drives, 12u);
  EXPECT_TRUE(Api().SHChangeNotification_Unlock(lock));
}

// One directory, several ways to it: each watcher gets the way that it knows.
TEST_F(ShellChanges, OnePlaceUnderSeveralNames) {
  Watch(u"shell:Desktop");
  Notify(SHCNE_CREATE, u"C:\\home\\me\\Desktop\\new.txt");
  PIDLIST_ABSOLUTE* lists = nullptr;
  const HANDLE lock = LockFirst(lists);
  ASSERT_TRUE(lists);
  EXPECT_EQ(PidlDepth(lists[0]), 1);
  EXPECT_EQ(Place(lists[0]), "C:\\home\\me\\Desktop\\new.txt");
  Api().SHChangeNotification_Unlock(lock);
  fPosts.Posts.clear();
  Notify(SHCNE_CREATE, u"C:\\home\\me\\Desktop\\Sub\\deep.txt");
  EXPECT_EQ(Taken(), TLines{});
  // A library has no path, but shows a directory.
  Watch(u"::{031E4825-7B94-4DC3-B131-E946B44C8DD5}\\{7B0DB17D-9CD2-4A93-9733-46CC89022E7C}");
  Notify(SHCNE_CREATE, u"C:\\home\\me\\Documents\\new.txt");
  EXPECT_EQ(Taken(), TLines{"create C:\\home\\me\\Documents\\new.txt"});
}

TEST_F(ShellChanges, RegistrationsThatEnd) {
  const SHChangeNotifyEntry entry{nullptr, TRUE};
  EXPECT_EQ(Api().SHChangeNotifyRegister(nullptr, SHCNRF_NewDelivery, 1, Message, 1, &entry), 0u);
  EXPECT_EQ(Api().SHChangeNotifyRegister(Window(1), SHCNRF_ShellLevel, 1, Message, 1, &entry), 0u);
  const ULONG id = Watch(u"C:\\Dir");
  Notify(SHCNE_CREATE, u"C:\\Dir\\a");
  Notify(SHCNE_CREATE, u"C:\\Dir\\b");
  PIDLIST_ABSOLUTE* lists = nullptr;
  const HANDLE lock = LockFirst(lists);
  ASSERT_TRUE(lists);
  EXPECT_TRUE(Api().SHChangeNotifyDeregister(id));
  EXPECT_FALSE(Api().SHChangeNotifyDeregister(id));
  EXPECT_EQ(Place(lists[0]), "C:\\Dir\\a");  // held until it is given back
  EXPECT_TRUE(Api().SHChangeNotification_Unlock(lock));
  EXPECT_EQ(Taken(), (TLines{"gone", "gone"}));
  Watch(u"C:\\Dir");
  fPosts.Closed = true;  // a window that is no more keeps nothing
  Notify(SHCNE_CREATE, u"C:\\Dir\\c");
  EXPECT_EQ(PendingChanges(), 0u);
}

// --- what the shell itself does -----------------------------------------------------------------

TEST_F(ShellChanges, CommandsTellWhatTheyDid) {
  MakeDirectory("To");
  Watch(u"C:\\", true);
  ASSERT_EQ(InvokeOn({u"C:\\Dir\\file.txt", u"C:\\Dir\\Sub"}, u"copy"), S_OK);
  EXPECT_EQ(PasteTo(u"C:\\To"), S_OK);
  EXPECT_EQ(Taken(), (TLines{"create C:\\To\\file.txt", "mkdir C:\\To\\Sub"}));
  ASSERT_EQ(InvokeOn({u"C:\\Dir\\file.txt", u"C:\\Dir\\Sub"}, u"cut"), S_OK);
  EXPECT_EQ(PasteTo(u"C:\\To"), S_OK);
  EXPECT_EQ(Taken(), (TLines{"rename C:\\Dir\\file.txt C:\\To\\file (2).txt",
                             "renamedir C:\\Dir\\Sub C:\\To\\Sub (2)"}));
  EXPECT_EQ(InvokeOn({u"C:\\To\\file.txt", u"C:\\To\\Sub"}, u"delete"), S_OK);
  EXPECT_EQ(Taken(), (TLines{"delete C:\\To\\file.txt", "rmdir C:\\To\\Sub"}));
  EXPECT_EQ(InvokeOn({u"::{645FF040-5081-101B-9F08-00AA002F954E}\\Sub"}, u"undelete"), S_OK);
  EXPECT_EQ(Taken(),
            (TLines{"rmdir C:\\home\\me\\.local\\share\\Trash\\files\\Sub", "mkdir C:\\To\\Sub"}));
  EXPECT_EQ(Invoke(Background(u"C:\\To\\Sub"), u"newfolder"), S_OK);
  EXPECT_EQ(InvokeOn({u"C:\\To\\Sub"}, u"link"), S_OK);
  EXPECT_EQ(Invoke(Background(u"C:\\To"), u"refresh"), S_OK);
  EXPECT_EQ(Taken(), (TLines{"mkdir C:\\To\\Sub\\New folder", "create C:\\To\\Sub - Shortcut.lnk",
                             "updatedir C:\\To"}));
  EXPECT_EQ(InvokeOn({u"C:\\To\\Sub"}, u"frobnicate"), E_INVALIDARG);
  ASSERT_EQ(InvokeOn({u"C:\\To"}, u"copy"), S_OK);
  EXPECT_NE(PasteTo(u"C:\\To\\Sub"), S_OK);
  EXPECT_EQ(Taken(), TLines{});  // nothing was done
}

TEST_F(ShellChanges, FoldersAndPropertiesTellWhatTheyDid) {
  Watch(u"C:\\Dir", true);
  const auto folder = Folder(u"C:\\Dir");
  const TPidl file = Parse(u"C:\\Dir\\file.txt"), sub = Parse(u"C:\\Dir\\Sub");
  const auto last = [](const TPidl& pidl) {
    return reinterpret_cast<PCUITEMID_CHILD>(Api().ILFindLastID(pidl.Get()));
  };
  EXPECT_EQ(folder->SetNameOf(nullptr, last(file), u"b.txt", SHGDN_FORPARSING, nullptr), S_OK);
  EXPECT_EQ(folder->SetNameOf(nullptr, last(sub), u"Sub", SHGDN_FORPARSING, nullptr), S_OK);
  EXPECT_EQ(folder->SetNameOf(nullptr, last(sub), u"SUB", SHGDN_FORPARSING, nullptr), S_OK);
  EXPECT_EQ(Taken(), (TLines{"rename C:\\Dir\\file.txt C:\\Dir\\b.txt",
                             "renamedir C:\\Dir\\Sub C:\\Dir\\SUB"}));
  const auto storage = folder.As<IStorage>();
  Ref<IStorage> made;
  EXPECT_EQ(storage->CreateStorage(u"new", STGM_CREATE, 0, 0, made.Put()), S_OK);
  EXPECT_EQ(storage->RenameElement(u"new", u"old"), S_OK);
  EXPECT_EQ(storage->DestroyElement(u"old"), S_OK);
  EXPECT_EQ(Taken(), (TLines{"mkdir C:\\Dir\\new", "renamedir C:\\Dir\\new C:\\Dir\\old",
                             "rmdir C:\\Dir\\old"}));
  const auto item = Item(u"C:\\Dir\\b.txt");
  const auto time = TPropVariant::From(FILETIME{0, 0x01C00000});
  Ref<IPropertyStore> store;
  ASSERT_EQ(item->GetPropertyStore(GPS_DEFAULT, IID_IPropertyStore, store.PutVoid()), S_OK);
  EXPECT_EQ(store->SetValue(PKEY_DateModified, time), STG_E_ACCESSDENIED);
  ASSERT_EQ(item->GetPropertyStore(GPS_READWRITE, IID_IPropertyStore, store.PutVoid()), S_OK);
  EXPECT_EQ(store->SetValue(PKEY_DateModified, time), S_OK);
  EXPECT_EQ(Taken(), TLines{});  // nothing is done before it is committed
  EXPECT_EQ(store->Commit(), S_OK);
  EXPECT_EQ(Taken(), TLines{"update C:\\Dir\\b.txt"});
  // What the object refuses comes out of each attempt.
  EXPECT_EQ(store->SetValue(PKEY_Size, TPropVariant::From(1)), S_OK);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(store->Commit(), HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
  EXPECT_EQ(Taken(), TLines{});
}

}  // namespace
}  // namespace oak
