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
  // What the shell doesn't name is named by its path.
  fFake->Names.clear();
  fPath = u"C:\\dir\\file.txt";
  EXPECT_EQ(Item()->Name(), u"file.txt");
  for (const TItemIdListDisplayNameFormat format : {dnfPath, dnfPreferPhysical})
    EXPECT_EQ(Item()->DisplayName(format), fPath);
  EXPECT_EQ(Item()->DisplayName(dnfNormal), u"file.txt");
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
  // The explorer's form takes classes and USB devices by their own names, all else as shown.
  const std::pair<TStringView, TStringView> forms[] = {
      {u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}", u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}"},
      {u"\\\\?\\USB#VID_1", u"\\\\?\\USB#VID_1"},
      {u"file.txt", u"Shown"},
  };
  for (const auto& [parsing, shown] : forms) {
    fFake->Names = {{SIGDN_PARENTRELATIVEPARSING, TString(parsing)},
                    {SIGDN_PARENTRELATIVE, u"Shown"}};
    EXPECT_TRUE(EndsWith(Item()->DisplayName(dnfForExplorer), shown)) << ToUtf8(parsing);
  }
}

TEST_F(OakItemIdListObject, HelpersJudgeArchivesAndSubFolders) {
  const auto item = Item();
  fFake->Names = {{SIGDN_FILESYSPATH, u"C:\\a.zip"}};
  fFake->Attributes = SFGAO_FOLDER | SFGAO_STREAM;
  EXPECT_FALSE(TItemIdListHelper::HasSubFolders(item, true)) << "an archive";
  EXPECT_TRUE(TItemIdListHelper::IsFileAndFolder(item));
  fFake->Names = {{SIGDN_FILESYSPATH, u"C:\\dir"}};
  fFake->Attributes = SFGAO_HASSUBFOLDER;
  EXPECT_TRUE(TItemIdListHelper::HasSubFolders(item, false));
  fFake->Attributes |= SFGAO_FILESYSANCESTOR;
  EXPECT_TRUE(TItemIdListHelper::HasSubFolders(item, true));
  EXPECT_FALSE(TItemIdListHelper::IsFileAndFolder(item));
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

TEST_F(OakItemIdListObject, EqualsStopsAtThePathsAndCompareToGoesOn) {
  fFake->CompareResult = S_OK;
  const auto withPath = [this](TStringView path) {
    fPath = path;
    const auto item = Item();
    EXPECT_EQ(item->Path(), path);
    return item;
  };
  const auto a = withPath(u"C:\\a"), b = withPath(u"C:\\b");
  EXPECT_FALSE(a->Equals(b, ilcDisplay));
  EXPECT_EQ(a->CompareTo(b, ilcDisplay), 0) << "the shell says so here";
  EXPECT_EQ(fFake->SeenHint, static_cast<SICHINTF>(SICHINT_DISPLAY));
  fFake->Order = -5;
  EXPECT_EQ(a->CompareTo(b, ilcExact), -5);
  EXPECT_EQ(fFake->SeenHint, static_cast<SICHINTF>(SICHINT_CANONICAL));
  EXPECT_EQ(a->CompareTo(nullptr, ilcExact), -1);
  EXPECT_FALSE(a->Equals(nullptr, ilcDisplay));
}

TEST_F(OakItemIdListObject, ReloadTakesTheFreshListOfAnUpdatedItem) {
  const TScopedApi fresh(Api().SHGetIDListFromObject, [](IUnknown*, PIDLIST_ABSOLUTE* pidl) {
    *pidl = TestPidl({1, 2, 9, 9}).Detach();
    return S_OK;
  });
  fPath = u"C:\\dir";
  const auto item = Item();
  EXPECT_EQ(item->Path(), u"C:\\dir");
  fPath = u"D:\\other";
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
  EXPECT_EQ(item->Path(), u"C:\\dir") << "the path stays";
  fFake->AnswersItem2 = false;
  EXPECT_FALSE(item->Reload());
  EXPECT_FALSE(NullItemIdList()->Reload());
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
  // Dates are written as file times are kept.
  PROPVARIANT date{};
  date.vt = VT_DATE;
  date.date = 45000.5;
  const TShellPropertyValue value(date);
  item->SetPropertyValue(TShellColumns::WriteTime(), value);
  EXPECT_EQ(store->Seen.Get().date, value.ToFileDateTime());
}

}  // namespace
}  // namespace oak::tests
