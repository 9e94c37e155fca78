// Items over shell objects whose every answer the test chooses: names,
// attributes, values, binding, comparison, reloading.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/MainThread.h"
#include "testkit/CallCounter.h"
#include "testkit/ScopedApi.h"
#include "tests/namespace/FakeShellItem.h"

namespace oak::tests {
namespace {

using ::testing::HasSubstr;
using testkit::TCallCounter;
using testkit::TScopedApi;

using TItem = TOakItemIdList;

/// Every item's shell object is the one fake, and no list has a path.
class OakItemIdListObject : public ::testing::Test {
 protected:
  Ref<TFakeShellItem> fFake = MakeRef<TFakeShellItem>();
  TString fPath;

  Ref<IItemIdList> Item() { return TItem::Create(TestPidl({1, 2, 3})); }

 private:
  TScopedApi<decltype(TApi::SHCreateShellItem)> fMake{
      Api().SHCreateShellItem,
      [this](PCIDLIST_ABSOLUTE, IShellFolder*, PCUITEMID_CHILD, IShellItem** item) {
        *item = Ref<IShellItem>(fFake).Detach();
        return S_OK;
      }};
  TScopedApi<decltype(TApi::SHGetPathFromIDListEx)> fPathOf{
      Api().SHGetPathFromIDListEx, [this](PCIDLIST_ABSOLUTE, LPWSTR path, DWORD size, int) {
        EXPECT_EQ(size, 32767u);
        fPath.copy(reinterpret_cast<char16_t*>(path), fPath.size());
        path[fPath.size()] = 0;
        return fPath.empty() ? FALSE : TRUE;
      }};
  TScopedApi<decltype(TApi::SHGetPathFromIDListW)> fShortPathOf{
      Api().SHGetPathFromIDListW, [](PCIDLIST_ABSOLUTE, LPWSTR) { return FALSE; }};
};

TEST_F(OakItemIdListObject, EachFormOfNameAsksForItsOwn) {
  const struct {
    TItemIdListDisplayNameFormat format;
    SIGDN asked;
  } cases[] = {
      {dnfNormal, SIGDN_NORMALDISPLAY},
      {dnfInFolder, SIGDN_PARENTRELATIVE},
      {dnfPath, SIGDN_DESKTOPABSOLUTEEDITING},
      {dnfPhysicalPath, SIGDN_FILESYSPATH},
      {dnfRelativeForAddressBar, SIGDN_PARENTRELATIVEFORADDRESSBAR},
      {dnfRelativeParsing, SIGDN_PARENTRELATIVEPARSING},
      {dnfAbsoluteParsing, SIGDN_DESKTOPABSOLUTEPARSING},
  };
  for (const auto& c : cases) {
    fFake->Names = {{c.asked, u"asked"}};
    EXPECT_EQ(Item()->DisplayName(c.format), u"asked") << c.format;
  }
}

TEST_F(OakItemIdListObject, MissingNamesFallBack) {
  fPath = u"C:\\dir\\file.txt";
  EXPECT_EQ(Item()->Name(), u"file.txt");
  EXPECT_EQ(Item()->DisplayName(dnfPath), u"C:\\dir\\file.txt");
  EXPECT_EQ(Item()->DisplayName(dnfNormal), u"file.txt");
  EXPECT_EQ(Item()->DisplayName(dnfPreferPhysical), u"C:\\dir\\file.txt");
  fPath.clear();
  fFake->Names = {{SIGDN_DESKTOPABSOLUTEEDITING, u"Computer\\Phone"}};
  EXPECT_EQ(Item()->DisplayName(dnfPreferPhysical), u"Computer\\Phone");
  EXPECT_EQ(Item()->DisplayPath(), u"Computer\\Phone");
}

TEST_F(OakItemIdListObject, NamesThatAreWorkedOver) {
  const struct {
    TStringView fromShell;
    TStringView name;
    TStringView normal;
  } cases[] = {
      {u"C:\\", u"C:\\", u"C:\\"},  // a drive is named whole
      {u"C:", u"C:", u"C:"},
      {u"\\\\server\\share", u"\\\\server\\share", u"\\\\server\\share"},
      {u"C:\\a.b\\c", u"c", u"C:\\a.b\\c"},
      {u"ftp://host/", u"//host/", u"ftp://host"},  // the root of a URL loses its end
      {u"ftp://host/dir/", u"//host/dir/", u"ftp://host/dir/"},
      {u"a/b/", u"a/b/", u"a/b/"},
  };
  for (const auto& c : cases) {
    fFake->Names = {{SIGDN_FILESYSPATH, TString(c.fromShell)},
                    {SIGDN_NORMALDISPLAY, TString(c.fromShell)}};
    EXPECT_EQ(Item()->Name(), c.name) << ToUtf8(c.fromShell);
    EXPECT_EQ(Item()->DisplayName(dnfNormal), c.normal) << ToUtf8(c.fromShell);
  }
  fFake->Names = {{SIGDN_FILESYSPATH, u"{class}"}, {SIGDN_DESKTOPABSOLUTEEDITING, u"Edit"}};
  EXPECT_EQ(Item()->DisplayName(dnfPhysicalPath), u"Edit");
}

TEST_F(OakItemIdListObject, ExplorersNameKeepsClassesAndUsbDevices) {
  const struct {
    TStringView parsing;
    TStringView joined;
  } cases[] = {
      {u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}",
       u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}\\::{20D04FE0-3AEA-1069-A2D8-08002B30309D}"},
      {u"\\\\?\\USB#VID_1", u"\\\\?\\USB#VID_1\\\\\\?\\USB#VID_1"},
      {u"file.txt", u"Shown\\Shown"},
  };
  for (const auto& c : cases) {
    fFake->Names = {{SIGDN_PARENTRELATIVEPARSING, TString(c.parsing)},
                    {SIGDN_PARENTRELATIVE, u"Shown"}};
    EXPECT_EQ(TItem::Create(TestPidl({1, 2}))->DisplayName(dnfForExplorer), c.joined);
  }
}

TEST_F(OakItemIdListObject, DebugTextTellsStateAndNames) {
  const auto unresolved = TItem::Create(u"C:\\x");
  EXPECT_EQ(unresolved.As<IHasDebugInfo>()->GetInfo(TItemIdListInfoLevel::Verbose),
            u"FPath: C:\\x, fSpecialFolder: SF_INVALID, Not Resolved yet");
  fFake->Names = {{SIGDN_PARENTRELATIVE, u"n"}};
  EXPECT_EQ(
      TItem::Create(TestPidl({1, 2})).As<IHasDebugInfo>()->GetInfo(TItemIdListInfoLevel::Verbose),
      u"FPath: -, fSpecialFolder: SF_INVALID, Valid, Depth: 2, n\\n\\n");
}

TEST_F(OakItemIdListObject, OneSetBitOfTheMaskIsEnough) {
  fFake->Attributes = SFGAO_FOLDER;
  EXPECT_TRUE(Item()->HasAttributes(SFGAO_FOLDER | SFGAO_LINK));
  EXPECT_FALSE(Item()->HasAttributes(SFGAO_LINK | SFGAO_STREAM));
  fFake->AttributesResult = S_FALSE;
  EXPECT_TRUE(Item()->HasAttributes(SFGAO_FOLDER));
  fFake->AttributesResult = E_ACCESSDENIED;
  EXPECT_FALSE(Item()->HasAttributes(SFGAO_FOLDER));
}

TEST_F(OakItemIdListObject, HelpersJudgeArchivesAndSubFolders) {
  const auto item = Item();
  fFake->Names = {{SIGDN_FILESYSPATH, u"C:\\a.zip"}};
  fFake->Attributes = SFGAO_FOLDER | SFGAO_STREAM;
  EXPECT_TRUE(TItemIdListHelper::HasSubFolders(item, false));
  EXPECT_FALSE(TItemIdListHelper::HasSubFolders(item, true));
  EXPECT_TRUE(TItemIdListHelper::IsFileAndFolder(item));
  fFake->Names = {{SIGDN_FILESYSPATH, u"C:\\dir"}};
  fFake->Attributes = SFGAO_HASSUBFOLDER;
  EXPECT_TRUE(TItemIdListHelper::HasSubFolders(item, false));
  EXPECT_FALSE(TItemIdListHelper::HasSubFolders(item, true));
  fFake->Attributes |= SFGAO_FILESYSANCESTOR;
  EXPECT_TRUE(TItemIdListHelper::HasSubFolders(item, true));
  EXPECT_FALSE(TItemIdListHelper::IsFileAndFolder(item));
  EXPECT_FALSE(TItemIdListHelper::IsFileAndFolder(nullptr));
  EXPECT_TRUE(TItemIdListHelper::IsNullOrInvalid(nullptr));
  EXPECT_TRUE(TItemIdListHelper::IsNullOrInvalid(NullItemIdList()));
}

TEST_F(OakItemIdListObject, OnlyTheMainThreadKeepsTheShellItem) {
  const auto item = Item();
  TCallCounter calls;
  std::thread([&] {
    EXPECT_FALSE(IsMainThread());
    (void)item->ShellItem();
    (void)item->ShellItem();
  }).join();
  EXPECT_EQ(calls.Count("SHCreateShellItem"), 2);
  calls.Reset();
  (void)item->ShellItem();
  (void)item->ShellItem();
  EXPECT_EQ(calls.Count("SHCreateShellItem"), 1);
  std::thread([&] { (void)item->ShellItem(); }).join();
  EXPECT_EQ(calls.Count("SHCreateShellItem"), 2);
}

TEST_F(OakItemIdListObject, BindingReportsItsFailure) {
  fFake->BindResult = HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED);
  fPath = u"C:\\dir";
  const auto item = Item();
  try {
    (void)TItem::FolderOf(item);
    ADD_FAILURE() << "nothing was raised";
  } catch (const EFolderTrekError& error) {
    EXPECT_EQ(error.GetErrorCode(), 0x80070005u);
    EXPECT_THAT(ToUtf8(error.GetMessage()), HasSubstr("C:\\dir"));
  }
  // A query can't raise.
  Ref<IShellFolder> folder;
  EXPECT_EQ(item->QueryInterface(IidOf<IShellFolder>(), folder.PutVoid()), E_ACCESSDENIED);
  fFake->BindResult = S_FALSE;  // neither an object nor a failure
  EXPECT_EQ(TItem::FolderOf(item), nullptr);
  EXPECT_EQ(item->QueryInterface(IidOf<IShellFolder>(), folder.PutVoid()), E_NOINTERFACE);
}

TEST_F(OakItemIdListObject, BindingAnInvalidItemRaisesWithItsState) {
  try {
    (void)TItem::FolderOf(TItem::CreateInvalidWithPath(u"gone"));
    ADD_FAILURE() << "nothing was raised";
  } catch (const EFolderTrekError& error) {
    EXPECT_EQ(ToUtf8(error.GetMessage()),
              "Could not retrieve IShellItem for ItemIdList  Internal data: FPath: gone, "
              "fSpecialFolder: SF_INVALID, Invalid");
  }
  Ref<IStream> stream;
  EXPECT_EQ(NullItemIdList()->QueryInterface(IidOf<IStream>(), stream.PutVoid()), E_NOINTERFACE);
}

TEST_F(OakItemIdListObject, FailedComparisonGivesTheDesktopsRawResult) {
  const auto a = Item();
  const auto b = TItem::Create(TestPidl({1, 2, 4}));
  fFake->CompareResult = E_FAIL;
  // Lists that no folder of the shell knows: whatever it says, it is not "same".
  EXPECT_NE(a->CompareTo(b, ilcExact), 0);
  fFake->CompareResult = S_FALSE;
  fFake->Order = 7;
  EXPECT_EQ(a->CompareTo(b, ilcDisplay), 7);
}

TEST_F(OakItemIdListObject, ReloadTakesTheFreshListOfAnUpdatedItem) {
  const TScopedApi fresh(Api().SHGetIDListFromObject, [](IUnknown*, PIDLIST_ABSOLUTE* pidl) {
    *pidl = TestPidl({1, 2, 9, 9}).Detach();
    return S_OK;
  });
  const auto item = Item();
  const PItemIdList before = item->WindowsPointer();
  fFake->UpdateResult = E_FAIL;
  EXPECT_FALSE(item->Reload());
  fFake->UpdateResult = E_NOINTERFACE;
  EXPECT_TRUE(item->Reload());
  EXPECT_EQ(item->WindowsPointer(), before);
  fFake->UpdateResult = S_OK;
  EXPECT_TRUE(item->Reload());
  EXPECT_EQ(item->Depth(), 4);
  EXPECT_EQ(TItem::GetDepth(before), 3);  // whoever holds it may finish
  const PItemIdList same = item->WindowsPointer();
  EXPECT_TRUE(item->Reload());
  EXPECT_EQ(item->WindowsPointer(), same);
  fFake->AnswersItem2 = false;
  EXPECT_FALSE(item->Reload());
  EXPECT_FALSE(NullItemIdList()->Reload());
}

TEST_F(OakItemIdListObject, ReloadKeepsPathAndSpecialFolder) {
  fPath = u"C:\\dir";
  const auto item = Item();
  EXPECT_EQ(item->Path(), u"C:\\dir");
  fPath = u"D:\\other";
  fFake->UpdateResult = S_OK;
  const TScopedApi fresh(Api().SHGetIDListFromObject, [](IUnknown*, PIDLIST_ABSOLUTE* pidl) {
    *pidl = TestPidl({5}).Detach();
    return S_OK;
  });
  EXPECT_TRUE(item->Reload());
  EXPECT_EQ(item->Path(), u"C:\\dir");
}

// --- values ----------------------------------------------------------------------

TEST_F(OakItemIdListObject, TextsOfSeveralColumns) {
  fFake->Values = {{12, u"twelve"}, {14, u""}, {15, u"15"}};
  const GUID set = TShellColumns::Size().FormatId;
  const TShellColumnId columns[] = {{set, 99}, {set, 14}, {set, 12}, {set, 15}};
  const auto item = Item();
  EXPECT_EQ(item->GetShellInformation(columns, true), u"twelve");
  EXPECT_EQ(item->GetShellInformation(columns, false), u"twelve\r\n15");
  EXPECT_EQ(item->GetShellInformation({}, false), u"");
  const auto formatter = item.As<IMetaDataFormatter>();
  EXPECT_EQ(formatter->GetFormattedString(columns[2]), u"twelve");
  EXPECT_EQ(formatter->GetPlainValue(columns[3]), 15);
  EXPECT_EQ(formatter->GetPlainValue(columns[0]), 0);
  EXPECT_TRUE(item->GetPropertyValue(columns[0]).IsEmpty());
  fFake->AnswersItem2 = false;
  EXPECT_EQ(item->GetShellInformation(columns, false), u"");
  EXPECT_TRUE(item->GetPropertyValue(columns[2]).IsEmpty());
}

class TFakeStore final : public TInterfacedObject<IPropertyStore> {
 public:
  HRESULT SetResult = S_OK;
  HRESULT CommitResult = S_OK;
  TShellPropertyValue Seen;
  int Commits = 0;

  HRESULT STDMETHODCALLTYPE GetCount(DWORD*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetAt(DWORD, PROPERTYKEY*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY, PROPVARIANT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY, REFPROPVARIANT value) override {
    Seen = TShellPropertyValue(value);
    return SetResult;
  }
  HRESULT STDMETHODCALLTYPE Commit() override {
    ++Commits;
    return CommitResult;
  }
};

TEST_F(OakItemIdListObject, WritingAValueRaisesAtEachStep) {
  const auto item = Item();
  PROPVARIANT number{};
  number.vt = VT_UI4;
  number.ulVal = 7;
  const auto code = [&] {
    try {
      item->SetPropertyValue(TShellColumns::Name(), TShellPropertyValue(number));
    } catch (const EFolderTrekError& error) {
      return error.GetErrorCode();
    }
    return 0u;
  };
  fFake->AnswersItem2 = false;
  EXPECT_EQ(code(), static_cast<DWORD>(E_NOINTERFACE));
  fFake->AnswersItem2 = true;
  fFake->StoreResult = E_ACCESSDENIED;
  EXPECT_EQ(code(), 5u);
  const auto store = MakeRef<TFakeStore>();
  fFake->Store = store;
  store->SetResult = E_INVALIDARG;
  EXPECT_EQ(code(), 87u);
  EXPECT_EQ(store->Commits, 0);
  store->SetResult = S_OK;
  store->CommitResult = HRESULT_FROM_WIN32(ERROR_WRITE_PROTECT);
  EXPECT_EQ(code(), 19u);
  store->CommitResult = S_OK;
  EXPECT_EQ(code(), 0u);
  EXPECT_EQ(store->Seen.ToInt64(), 7);
}

TEST_F(OakItemIdListObject, DatesAreWrittenAsFileTimesAreKept) {
  const auto store = MakeRef<TFakeStore>();
  fFake->Store = store;
  PROPVARIANT date{};
  date.vt = VT_DATE;
  date.date = 45000.5;
  const TShellPropertyValue value(date);
  Item()->SetPropertyValue(TShellColumns::WriteTime(), value);
  EXPECT_EQ(store->Seen.GetType(), VT_DATE);
  EXPECT_EQ(store->Seen.Get().date, value.ToFileDateTime());
}

// --- recognising special folders ---------------------------------------------------

class TFakeKnownFolder final : public TInterfacedObject<IKnownFolder> {
 public:
  KNOWNFOLDERID Id{};
  HRESULT IdResult = S_OK;
  HRESULT STDMETHODCALLTYPE GetId(KNOWNFOLDERID* id) override {
    *id = Id;
    return IdResult;
  }
  HRESULT STDMETHODCALLTYPE GetCategory(KF_CATEGORY*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetShellItem(DWORD, REFIID, void**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetPath(DWORD, LPWSTR*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetPath(DWORD, LPCWSTR) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDList(DWORD, PIDLIST_ABSOLUTE*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetFolderType(FOLDERTYPEID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetRedirectionCapabilities(KF_REDIRECTION_CAPABILITIES*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetFolderDefinition(KNOWNFOLDER_DEFINITION*) override {
    return E_NOTIMPL;
  }
};

class TFakeManager final : public TInterfacedObject<IKnownFolderManager> {
 public:
  Ref<TFakeKnownFolder> ByList;
  Ref<TFakeKnownFolder> ByPath;
  TString SeenPath;
  HRESULT STDMETHODCALLTYPE FolderIdFromCsidl(int, KNOWNFOLDERID*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE FolderIdToCsidl(REFKNOWNFOLDERID, int*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetFolderIds(KNOWNFOLDERID**, UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetFolder(REFKNOWNFOLDERID, IKnownFolder**) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetFolderByName(LPCWSTR, IKnownFolder**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE RegisterFolder(REFKNOWNFOLDERID,
                                           const KNOWNFOLDER_DEFINITION*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE UnregisterFolder(REFKNOWNFOLDERID) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE FindFolderFromPath(LPCWSTR path, FFFP_MODE mode,
                                               IKnownFolder** folder) override {
    SeenPath = FromW(path);
    EXPECT_EQ(mode, FFFP_EXACTMATCH);
    return Give(ByPath, folder);
  }
  HRESULT STDMETHODCALLTYPE FindFolderFromIDList(PCIDLIST_ABSOLUTE,
                                                 IKnownFolder** folder) override {
    return Give(ByList, folder);
  }
  HRESULT STDMETHODCALLTYPE Redirect(REFKNOWNFOLDERID, HWND, KF_REDIRECT_FLAGS, LPCWSTR, UINT,
                                     const KNOWNFOLDERID*, LPWSTR*) override {
    return E_NOTIMPL;
  }

 private:
  static HRESULT Give(const Ref<TFakeKnownFolder>& known, IKnownFolder** folder) {
    *folder = Ref<IKnownFolder>(known).Detach();
    return *folder ? S_OK : E_FAIL;
  }
};

class OakItemIdListSpecial : public OakItemIdListObject {
 protected:
  OakItemIdListSpecial() { TItem::ClearCaches(); }
  ~OakItemIdListSpecial() override { TItem::ClearCaches(); }

  TOakShellFolder Found(const KNOWNFOLDERID& id, TOakShellFolders mask = {}) {
    fManager->ByList = MakeRef<TFakeKnownFolder>();
    fManager->ByList->Id = id;
    return TItem::From(Item())->TestForSpecialFolder(mask);
  }

  Ref<TFakeManager> fManager = MakeRef<TFakeManager>();
  TScopedApi<decltype(TApi::CoCreateInstance)> fCreate{
      Api().CoCreateInstance, [this](REFCLSID, IUnknown*, DWORD, REFIID iid, void** out) {
        *out = nullptr;
        return fManager ? fManager->QueryInterface(iid, out) : REGDB_E_CLASSNOTREG;
      }};
};

TEST_F(OakItemIdListSpecial, IdentifiersAndTheirAliases) {
  EXPECT_EQ(Found(FOLDERID_Documents), SF_PERSONAL);
  EXPECT_EQ(Found(FOLDERID_Favorites), SF_FAVORITES);       // of two rows the first
  EXPECT_EQ(Found(FOLDERID_Desktop), SF_DESKTOPDIRECTORY);  // not at the root
  EXPECT_EQ(Found({0xF42EE2D3, 0x909F, 0x4907, {0x88, 0x71, 0x4C, 0x22, 0xFC, 0x0B, 0xF7, 0x56}}),
            SF_PERSONAL);
  EXPECT_EQ(Found({0x679F85CB, 0x0220, 0x4080, {0xB2, 0x9B, 0x55, 0x40, 0xCC, 0x05, 0xAA, 0xB6}}),
            SF_QUICKACCESS);
  EXPECT_EQ(Found(FOLDERID_Documents, {SF_DRIVES, SF_FONTS}), SF_UNKNOWN);
  EXPECT_EQ(Found(FOLDERID_Fonts, {SF_DRIVES, SF_FONTS}), SF_FONTS);
}

TEST_F(OakItemIdListSpecial, ThePathHelpsWhereTheListIsNotKnown) {
  const auto item = Item();
  fPath = u"C:\\docs";
  fManager->ByPath = MakeRef<TFakeKnownFolder>();
  fManager->ByPath->Id = FOLDERID_Documents;
  EXPECT_EQ(item->SpecialFolder(), SF_PERSONAL);
  EXPECT_EQ(fManager->SeenPath, u"C:\\docs");
  fManager->ByPath.Reset();
  EXPECT_EQ(item->SpecialFolder(), SF_PERSONAL);  // remembered
  EXPECT_EQ(Item()->SpecialFolder(), SF_FILESYSTEMFOLDER);
  EXPECT_EQ(TItem::From(Item())->TestForSpecialFolder({SF_FONTS}), SF_UNKNOWN);
  fPath.clear();
  EXPECT_EQ(Item()->SpecialFolder(), SF_UNKNOWN);
  fManager->ByList = MakeRef<TFakeKnownFolder>();
  fManager->ByList->IdResult = E_FAIL;
  EXPECT_EQ(Item()->SpecialFolder(), SF_UNKNOWN);
  EXPECT_EQ(NullItemIdList()->SpecialFolder(), SF_INVALID);
}

TEST_F(OakItemIdListSpecial, WithoutAManagerFoldersAreCompared) {
  fManager.Reset();
  const auto fonts = TItem::CreateForSpecialFolder(SF_FONTS, true);
  ASSERT_FALSE(fonts->IsInvalid());
  fFake->CompareResult = S_OK;  // the same object as everything without a path
  fFake->Order = 0;
  EXPECT_EQ(TItem::From(Item())->TestForSpecialFolder({SF_FONTS, SF_RECENT}), SF_FONTS);
  fFake->Order = 1;
  EXPECT_EQ(TItem::From(Item())->TestForSpecialFolder({SF_FONTS}), SF_UNKNOWN);
  fPath = u"C:\\x";
  EXPECT_EQ(TItem::From(Item())->TestForSpecialFolder({SF_CONTROLS}), SF_CONTROLS);
}

TEST_F(OakItemIdListSpecial, WhatWasComparedIsRemembered) {
  const auto item = Item();
  fFake->CompareResult = S_OK;
  fFake->Order = 1;
  EXPECT_FALSE(item->IsSpecialFolder(SF_FONTS));
  fFake->Order = 0;
  EXPECT_TRUE(item->IsSpecialFolder(SF_FONTS));
  EXPECT_FALSE(item->IsSpecialFolder(SF_RECENT));
  EXPECT_EQ(item->SpecialFolder(), SF_FONTS);
}

}  // namespace
}  // namespace oak::tests
