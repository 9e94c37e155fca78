// Commands and menus of selections: what goes to whom. The shell is played by the test.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oak/namespace/NamespaceHooks.h"
#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"
#include "tests/EmptyObjects.h"
#include "tests/namespace/FakeContextMenu.h"
#include "tests/namespace/ScriptedRegistry.h"

namespace oak {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testkit::TScopedApi;
using tests::TTestFolder;

using tests::TFakeContextMenu;
using TEntries = std::vector<tests::TFakeEntry>;

const std::string QuickQuery = "query 1..32767 at 0 flags " + std::to_string(CMF_OPTIMIZEFORINVOKE);

/// Data in memory, which lists its own formats.
class TFakeData : public tests::TEmptyDataObject<IEnumFORMATETC> {
 public:
  std::vector<CLIPFORMAT> Formats;
  CLIPFORMAT Broken = 0;  ///< Told of, but not rendered.
  HRESULT SetResult = S_OK;

  HRESULT STDMETHODCALLTYPE GetData(FORMATETC* format, STGMEDIUM* medium) override {
    *medium = {};
    if (format->cfFormat == Broken) return DV_E_FORMATETC;
    medium->tymed = TYMED_HGLOBAL;
    medium->hGlobal = Api().GlobalAlloc(0, 16);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetData(FORMATETC* format, STGMEDIUM* medium, BOOL release) override {
    if (FAILED(SetResult)) return SetResult;
    Formats.push_back(format->cfFormat);
    if (release) Api().ReleaseStgMedium(medium);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE EnumFormatEtc(DWORD, IEnumFORMATETC** formats) override {
    fNext = 0;
    *formats = Ref<IEnumFORMATETC>::Share(this).Detach();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Next(ULONG, FORMATETC* format, ULONG*) override {
    if (fNext == Formats.size()) return S_FALSE;
    *format = {Formats[fNext++], nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
    // A device that the format is for; whoever asks frees it.
    format->ptd = static_cast<DVTARGETDEVICE*>(CoTaskMemAlloc(64));
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Reset() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Clone(IEnumFORMATETC**) override { return E_NOTIMPL; }

 private:
  std::size_t fNext = 0;
};

/// A folder that has a menu and data for its objects, and nothing else.
class TFakeFolder : public tests::TEmptyShellFolder {
 public:
  tests::TLog Calls;  ///< Of the menu.
  Ref<TFakeContextMenu> Menu = MakeRef<TFakeContextMenu>(Calls, TEntries());
  Ref<TFakeData> Data = MakeRef<TFakeData>();
  HRESULT Result = S_OK;
  UINT SeenCount = 0;

  HRESULT STDMETHODCALLTYPE GetUIObjectOf(HWND, UINT count, PCUITEMID_CHILD_ARRAY, REFIID iid,
                                          UINT*, void** out) override {
    *out = nullptr;
    SeenCount = count;
    if (FAILED(Result)) return Result;
    return iid == IidOf<IContextMenu>() ? Menu->QueryInterface(iid, out)
                                        : Data->QueryInterface(iid, out);
  }
};

class CollectionCommands : public ::testing::Test {
 protected:
  CollectionCommands() {
    for (const char16_t* name : {u"one", u"two", u"three", u"four"}) {
      folder.MakeFolder(name);
      folder.MakeFile(TString(name) + u"\\file.txt");
    }
  }

  Ref<IItemIdList> Item(TStringView name) { return TOakItemIdList::Create(folder.Path(name)); }
  Ref<TItemIdListCollection> Absolute(std::initializer_list<TStringView> names) {
    const auto list = MakeRef<TItemIdListCollection>();
    for (TStringView name : names) list->Add(Item(name));
    return list;
  }
  /// Items relative to the fake folder.
  Ref<TItemIdListCollection> Faked(std::initializer_list<TStringView> names) {
    const auto list = MakeRef<TItemIdListCollection>(Ref<IShellFolder>(shell));
    for (TStringView name : names) list->Add(Item(name)->GetLastPart());
    return list;
  }

  TTestFolder folder;
  Ref<TFakeFolder> shell = MakeRef<TFakeFolder>();
};

TShellCommand WithoutUi(TShellCommand command) {
  command.OperationOptions.Include(soSilent);
  return command;
}

TEST_F(CollectionCommands, ManyItemsShareOneMenu) {
  struct TCase {
    TShellCommand Command;
    const char* Invoked;
    DWORD Mask = 0;
  };
  const TCase cases[] = {
      {saOpen, "invoke OPEN"},
      {saCut, "invoke CUT"},
      {saDelete, "invoke DELETE"},
      {saDeleteNoUndo, "invoke DELETE", CMIC_MASK_SHIFT_DOWN},
      {WithoutUi(saDeleteNoUndo), "invoke DELETE", CMIC_MASK_SHIFT_DOWN | CMIC_MASK_FLAG_NO_UI},
      {u"DELETE", "invoke DELETE"},
      {u"extension.verb", "invoke extension.verb"},
  };
  for (const TCase& c : cases) {
    shell->Calls.clear();
    EXPECT_TRUE(Faked({u"one", u"two"})->InvokeCommand(c.Command));
    EXPECT_THAT(shell->Calls, ElementsAre(QuickQuery, c.Invoked));
    EXPECT_EQ(shell->Menu->Info.fMask & (CMIC_MASK_SHIFT_DOWN | CMIC_MASK_FLAG_NO_UI), c.Mask);
    EXPECT_EQ(shell->SeenCount, 2u);
  }
}

TEST_F(CollectionCommands, AnEmptySelectionDoesNothing) {
  EXPECT_FALSE(Faked({})->InvokeCommand(saDelete));
  EXPECT_FALSE(Faked({})->InvokeCommand(saDefault));
  EXPECT_FALSE(Faked({})->InvokeCommandOnAll(saCopyPath));
  EXPECT_THAT(shell->Calls, IsEmpty());
}

TEST_F(CollectionCommands, FailuresComeThrough) {
  const auto list = Faked({u"one", u"two"});
  shell->Menu->QueryResult = E_ACCESSDENIED;
  EXPECT_THROW(list->InvokeCommand(saCut), EFolderTrekError);
  EXPECT_THAT(shell->Calls, ElementsAre(QuickQuery)) << "not carried out";
  shell->Menu->QueryResult = S_OK;
  shell->Menu->InvokeResult = HRESULT_FROM_WIN32(ERROR_CANCELLED);
  try {
    list->InvokeCommand(saDelete);
    FAIL() << "nothing was raised";
  } catch (const EFolderTrekError& error) {
    EXPECT_EQ(error.GetErrorCode(), static_cast<std::uint32_t>(ERROR_CANCELLED));
  }
  shell->Result = E_NOINTERFACE;
  for (TShellAction action : {saCut, saCopy, saProperties})
    EXPECT_THROW(list->InvokeCommand(action), EFolderTrekError) << action;
}

TEST_F(CollectionCommands, DataGoesToTheClipboardAndToTheProperties) {
  Ref<IDataObject> copied, shown;
  const TScopedApi clipboard(Api().OleSetClipboard, [&](IDataObject* data) {
    copied = Ref<IDataObject>::Share(data);
    return S_OK;
  });
  const TScopedApi properties(Api().SHMultiFileProperties, [&](IDataObject* data, DWORD) {
    shown = Ref<IDataObject>::Share(data);
    return S_OK;
  });
  EXPECT_TRUE(Faked({u"one", u"two"})->InvokeCommand(saCopy));
  EXPECT_EQ(copied, Ref<IDataObject>(shell->Data));
  EXPECT_TRUE(Faked({u"one"})->InvokeCommand(saProperties)) << "of one item, too";
  EXPECT_EQ(shown, Ref<IDataObject>(shell->Data));
  EXPECT_THAT(shell->Calls, IsEmpty());
}

TEST_F(CollectionCommands, ItemByItemUntilOneFails) {
  tests::TStarted started;
  EXPECT_TRUE(Absolute({u"one", u"two"})->InvokeCommand(saOpenCommandPrompt));
  const std::string one = "CMD.EXE||" + ToUtf8(folder.Path(u"one"));
  EXPECT_THAT(started.Calls, ElementsAre(one, "CMD.EXE||" + ToUtf8(folder.Path(u"two"))));

  started.Calls.clear();
  const auto list = Absolute({u"one", u"missing", u"two"});
  try {
    list->InvokeCommand(saOpenCommandPrompt);
    FAIL() << "nothing was raised";
  } catch (const EFolderTrekError& error) {
    EXPECT_THAT(ToUtf8(error.GetMessage()), HasSubstr("TItemIdListCollection"));
    EXPECT_THAT(ToUtf8(error.GetMessage()), HasSubstr(".InvokeCommandOnEach(cmd)"));
    EXPECT_THAT(ToUtf8(error.GetMessage()), HasSubstr("missing")) << "and the item's own text";
  }
  EXPECT_THAT(started.Calls, ElementsAre(one)) << "the first failure ends it";
}

TEST_F(CollectionCommands, TheTitleOfWhatIsSharedNamesTheFirstTwo) {
  std::vector<TShareRequest> requests;
  NamespaceHooks().Share = [&](const TShareRequest& request) {
    requests.push_back(request);
    return true;
  };
  EXPECT_TRUE(Absolute({u"one", u"two"})->InvokeCommand(u"windows.modernshare"));
  EXPECT_TRUE(Absolute({u"one", u"two", u"three", u"four"})->InvokeCommand(u"Windows.ModernShare"));
  NamespaceHooks().Share = nullptr;
  ASSERT_EQ(requests.size(), 2u);
  EXPECT_EQ(requests[0].Title, u"one & two");
  EXPECT_EQ(requests[1].Title, u"one & two & 2 elements");
  EXPECT_EQ(requests[1].DataType, u"Files");
  EXPECT_EQ(requests[1].Files.size(), 4u);
  EXPECT_TRUE(requests[1].Data);
  EXPECT_THROW(Absolute({u"one", u"two"})->InvokeCommand(u"Windows.ModernShare"),
               EInvalidOperation);
}

TEST_F(CollectionCommands, FormatsAreCopiedOneByOne) {
  shell->Data->Formats = {5, CF_HDROP, 77};
  shell->Data->Broken = 5;
  const auto list = Faked({u"one"});
  const auto target = MakeRef<TFakeData>();
  list->CopyTo(target.Get());
  EXPECT_THAT(target->Formats, ElementsAre(CF_HDROP, 77));
  target->SetResult = E_OUTOFMEMORY;
  EXPECT_THROW(list->CopyTo(target.Get()), EFolderTrekError);
  EXPECT_THROW(list->CopyTo(static_cast<IDataObject*>(nullptr)), EArgumentException);
  shell->Data->Formats.clear();
  target->SetResult = S_OK;
  EXPECT_THROW(list->CopyTo(target.Get()), EFolderTrekError) << "nothing was copied";
}

// --- items of several folders ------------------------------------------------------

/// Plays the function that makes menus out of parts.
struct TMenuMaker {
  tests::TLog Log;
  Ref<TFakeContextMenu> Menu = MakeRef<TFakeContextMenu>(Log, TEntries{{u"copy", u"Copy"}});
  int Calls = 0;
  UINT Count = 0;
  UINT KeyCount = 0;
  bool HasDataObject = false;
  std::vector<HRESULT> CallbackResults;

  HRESULT Make(UINT count, PCUITEMID_CHILD_ARRAY pidls, IShellFolder* folder,
               LPFNDFMCALLBACK callback, UINT keyCount, IContextMenu** menu) {
    ++Calls;
    Count = count;
    KeyCount = keyCount;
    Ref<IDataObject> data;
    HasDataObject = SUCCEEDED(folder->GetUIObjectOf(nullptr, count, pidls, IidOf<IDataObject>(),
                                                    nullptr, data.PutVoid()));
    for (UINT message : {1u, 2u, 3u})
      CallbackResults.push_back(callback(folder, nullptr, nullptr, message, 0, 0));
    *menu = Ref<IContextMenu>(Menu).Detach();
    return S_OK;
  }

  TScopedApi<decltype(TApi::CDefFolderMenu_Create2)> Entry{
      Api().CDefFolderMenu_Create2,
      [this](PCIDLIST_ABSOLUTE root, HWND, UINT count, PCUITEMID_CHILD_ARRAY pidls,
             IShellFolder* desktop, LPFNDFMCALLBACK callback, UINT keyCount, const HKEY*,
             IContextMenu** menu) {
        EXPECT_EQ(PidlDepth(root), 0);
        return Make(count, pidls, desktop, callback, keyCount, menu);
      }};
};

TEST_F(CollectionCommands, ItemsOfSeveralFoldersGetAMenuOfTheirOwn) {
  TMenuMaker maker;
  tests::TScriptedRegistry registry;
  registry.SetText(HKEY_CLASSES_ROOT, u"AllFilesystemObjects\\", u"");

  const auto list = Absolute({u"one\\file.txt", u"two\\file.txt"});
  EXPECT_TRUE(list->InvokeCommand(saCut));
  EXPECT_THAT(maker.Log, ElementsAre(QuickQuery, "invoke CUT"));
  EXPECT_EQ(maker.Count, 2u);
  EXPECT_EQ(maker.KeyCount, 1u);
  EXPECT_TRUE(maker.HasDataObject);
  EXPECT_THAT(maker.CallbackResults, ElementsAre(S_OK, S_FALSE, E_NOTIMPL));
  EXPECT_EQ(registry.OpenKeys, 0);

  registry.Clear();
  EXPECT_TRUE(list->GetContextMenuMultiple());
  EXPECT_EQ(maker.KeyCount, 0u) << "a menu without the extensions is better than none";
}

TEST_F(CollectionCommands, IsAContextMenuItself) {
  TMenuMaker maker;
  const auto list = Absolute({u"one", u"two\\file.txt"});
  const Ref<IContextMenu> menu = list.As<IContextMenu>();
  ASSERT_TRUE(menu);
  EXPECT_EQ(menu->QueryContextMenu(nullptr, 2, 10, 20, 0), 1);
  WCHAR verb[8]{};
  EXPECT_EQ(menu->GetCommandString(0, GCS_VERBW, nullptr, reinterpret_cast<CHAR*>(verb), 8), S_OK);
  EXPECT_EQ(FromW(verb), u"copy");
  CMINVOKECOMMANDINFOEX info{};
  info.cbSize = sizeof info;
  info.lpVerb = "verb";
  maker.Menu->InvokeResult = E_ACCESSDENIED;
  EXPECT_EQ(menu->InvokeCommand(reinterpret_cast<CMINVOKECOMMANDINFO*>(&info)), E_ACCESSDENIED);
  EXPECT_THAT(maker.Log, ElementsAre("query 10..20 at 2 flags 0", "invoke verb"));
  EXPECT_EQ(maker.Calls, 1) << "one menu for a conversation";
  list->Add(Item(u"three"));
  EXPECT_EQ(menu->QueryContextMenu(nullptr, 0, 1, 2, 0), 1);
  EXPECT_EQ(maker.Count, 3u) << "another one for another selection";
  list->Clear();
  EXPECT_TRUE(FAILED(menu->QueryContextMenu(nullptr, 0, 1, 2, 0))) << "no exception leaves";
}

}  // namespace
}  // namespace oak
