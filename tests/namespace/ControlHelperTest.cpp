// Names in controls, looks of controls, clipboard and icons of types.
#include "oak/namespace/Oak.Shell.ControlHelper.h"

#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "oak/framework/Forms.h"
#include "oak/framework/ListView.h"
#include "oak/framework/StdCtrls.h"
#include "oak/framework/TreeView.h"
#include "oak/namespace/Oak.Shell.SystemImageList.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/shell_api_drag.h"
#include "testkit/CallCounter.h"
#include "testkit/FaultInjection.h"
#include "testkit/HeadlessForms.h"
#include "testkit/OldWindows.h"
#include "testkit/ScopedApi.h"
#include "testkit/ScopedHost.h"
#include "tests/MessageOf.h"
#include "tests/namespace/TestFolder.h"

namespace oak::tests {
namespace {

using testkit::TScopedApi;
using testkit::TWindowsVersion;
using THelper = TShellControlHelper;

/// A control that decides about extensions.
class TFormatOwner : public TComponent, public IOakFileNameFormatOwner {
 public:
  explicit TFormatOwner(TOakFileNameFormat format) : fFormat(format) {}
  TOakFileNameFormat GetFileNameFormat() const override { return fFormat; }

 private:
  TOakFileNameFormat fFormat;
};

/// The user's setting about extensions.
auto ShowExtensions(bool value) {
  return TScopedApi(Api().SHGetSetSettings, [value](SHELLSTATEW* state, DWORD, BOOL) {
    state->fShowExtensions = value ? -1 : 0;
  });
}

// --- names -----------------------------------------------------------------------------
TEST(ControlHelperNames, RenamesKeepWhatTheUserDoesNotSee) {
  const TFormatOwner hides(TOakFileNameFormat::ExcludeExtensions);
  const TFormatOwner shows(TOakFileNameFormat::IncludeExtensions);
  const struct {
    TStringView Old, New, Hidden, Shown;
  } cases[] = {
      {u"a.txt", u"b", u"b.txt", u"b"},           {u"a.txt", u"b.doc", u"b.doc", u"b.doc"},
      {u"a.tar.gz", u"b", u"b.gz", u"b"},         {u"a", u"b", u"b", u"b"},
      {u"a", u"b.txt", u"b.txt", u"b.txt"},       {u"a.lnk", u"b", u"b.lnk", u"b.lnk"},
      {u"a.LNK", u"b", u"b.LNK", u"b.LNK"},       {u"a.lnk", u"b.txt", u"b.txt.lnk", u"b.txt.lnk"},
      {u"a.Lnk", u"b.lNK", u"b.lNK", u"b.lNK"},   {u"a.txt.lnk", u"b", u"b.lnk", u"b.lnk"},
      {u".profile", u"rc", u"rc.profile", u"rc"}, {u"a.txt", u"", u".txt", u""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(THelper::PrepareForRename(c.Old, c.New, &hides), c.Hidden) << ToUtf8(c.Old);
    EXPECT_EQ(THelper::PrepareForRename(c.Old, c.New, &shows), c.Shown) << ToUtf8(c.Old);
  }
  for (const bool value : {false, true}) {
    const auto setting = ShowExtensions(value);
    const TFormatOwner follows(TOakFileNameFormat::Auto);
    const TComponent other;
    const TString expected = value ? u"b" : u"b.txt";
    for (const TComponent* control : {static_cast<const TComponent*>(&follows), &other,
                                      static_cast<const TComponent*>(nullptr)}) {
      EXPECT_EQ(THelper::ControlShowsExtensions(control), value);
      EXPECT_EQ(THelper::PrepareForRename(u"a.txt", u"b", control), expected);
    }
    EXPECT_TRUE(THelper::ControlShowsExtensions(&shows));
    EXPECT_FALSE(THelper::ControlShowsExtensions(&hides));
  }
}

TEST(ControlHelperNames, NamesAreShownInTheFormatOfTheControl) {
  using enum TOakFileNameFormat;
  TTestFolder folder;
  folder.MakeFile(u"report.final.txt");
  folder.MakeFile(u".profile");
  folder.MakeFolder(u"plain.folder");
  const auto item = [&](TStringView name) { return TOakItemIdList::Create(folder.Path(name)); };
  const Ref<IItemIdList> file = item(u"report.final.txt"), place = item(u"plain.folder");
  EXPECT_EQ(THelper::GetDisplayName(file, IncludeExtensions), u"report.final.txt");
  EXPECT_EQ(THelper::GetDisplayName(file, ExcludeExtensions), u"report.final");
  EXPECT_EQ(THelper::GetDisplayName(file, Auto), file->DisplayName(dnfInFolder));
  EXPECT_EQ(THelper::GetDisplayName(item(u".profile"), ExcludeExtensions), u".profile");
  for (const TOakFileNameFormat format : {Auto, IncludeExtensions, ExcludeExtensions}) {
    EXPECT_EQ(THelper::GetDisplayName(place, format), u"plain.folder") << "a folder has none";
    EXPECT_EQ(THelper::GetDisplayName(file, format, false), file->Name());
    EXPECT_EQ(
        MessageOf<EArgumentException>([&] { THelper::GetDisplayName(item(u"gone.txt"), format); }),
        u"pItemIdList is nil or invalid");
    EXPECT_THROW(THelper::GetDisplayName(nullptr, format, true), EArgumentException);
    EXPECT_THROW(THelper::GetDisplayName(nullptr, format, false), EArgumentException);
  }
  const Ref<IItemIdList> gone = TOakItemIdList::CreateInvalidWithPath(u"C:\\none\\gone.txt");
  EXPECT_EQ(THelper::GetDisplayName(gone, Auto, false),
            gone->Name().empty() ? gone->DisplayName(dnfInFolder) : gone->Name());
}

TEST(ControlHelperNames, AttributesAreLettersInOrder) {
  EXPECT_EQ(THelper::AttributesToString(0), u"");
  EXPECT_EQ(THelper::AttributesToString(-1), u"");
  EXPECT_EQ(THelper::AttributesToString(0x7FFFFFFF), u"RHSDACLOI");
  EXPECT_EQ(THelper::AttributesToString(0x80 | 8 | 64), u"");
  const TString letters = u"RHSDACLOI";
  const int bits[] = {1, 2, 4, 16, 32, 0x800, 0x400, 0x1000, 0x2000};
  for (std::size_t i = 0; i < letters.size(); ++i)
    EXPECT_EQ(THelper::AttributesToString(bits[i]), letters.substr(i, 1));
}

// --- looks -------------------------------------------------------------------------------
TEST(ControlHelper, ScalingOnlyEnlarges) {
  testkit::TScopedHost host;
  EXPECT_EQ(THelper::ScaledPixels(16), 16) << "without an application";
  const struct {
    int Density, Pixels, Expected;
  } cases[] = {{72, 16, 16}, {96, 16, 16}, {120, 16, 20}, {144, 1, 2}, {192, 16, 32}, {192, 0, 0}};
  for (const auto& c : cases) {
    Host().PixelsPerInch = [&] { return c.Density; };
    EXPECT_EQ(THelper::ScaledPixels(c.Pixels), c.Expected) << c.Density;
  }
}

TEST(ControlHelper, AutoCompleteFlags) {
  std::vector<DWORD> flags;
  HRESULT answer = S_OK;
  const TScopedApi complete(Api().SHAutoComplete, [&](HWND, DWORD value) {
    flags.push_back(value);
    return answer;
  });
  const HWND edit = reinterpret_cast<HWND>(std::uintptr_t{0x77});
  const std::pair<TOakShellAutoCompleteOptions, DWORD> cases[] = {
      {{}, 0xA0000047},
      {{acoFileSystem}, 9},
      {{acoFolderOnly}, 40},
      {{acoURL}, 14},
      {{acoVirtualNameSpace}, 72},
      {{acoFileSystem, acoFolderOnly, acoURL, acoVirtualNameSpace}, 111}};
  for (const auto& [options, expected] : cases) {
    EXPECT_TRUE(THelper::EnableAutoComplete(edit, options));
    EXPECT_EQ(flags.back(), expected);
  }
  EXPECT_TRUE(THelper::EnableAutoComplete(edit, DWORD{9}));
  answer = E_FAIL;
  EXPECT_FALSE(THelper::EnableAutoComplete(edit, DWORD{9}));
  const std::size_t asked = flags.size();
  EXPECT_FALSE(THelper::EnableAutoComplete(nullptr, DWORD{9}));
  EXPECT_EQ(flags.size(), asked);
}

/// Writes down what windows are told.
class TWindowScript {
 public:
  TWindowScript()
      : fSend(Api().SendMessageW,
              [this](HWND, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
                Log.push_back(std::to_string(message) + " " + std::to_string(wParam) + " " +
                              std::to_string(lParam));
                return 0;
              }),
        fTheme(Api().SetWindowTheme, [this](HWND, LPCWSTR theme, LPCWSTR) {
          Log.push_back("theme " + (theme ? ToUtf8(FromW(theme)) : "none"));
          return S_OK;
        }) {}
  std::vector<std::string> Take() { return std::exchange(Log, {}); }
  std::vector<std::string> Log;

 private:
  TScopedApi<decltype(TApi::SendMessageW)> fSend;
  TScopedApi<decltype(TApi::SetWindowTheme)> fTheme;
};

using TLines = std::vector<std::string>;

TEST(ControlHelper, TreesAndListsLookLikeTheExplorers) {
  testkit::THeadlessScreen screen([](const std::string& text) { ADD_FAILURE() << text; });
  TForm form;
  TCustomTreeView tree(&form);
  tree.SetParent(&form);
  form.Show();
  TWindowScript script;
  const int text = THelper::GetTextExtent(tree.GetFont(), u"Mg").Height;
  const int height = std::max(20, text) + 2;
  bool dark = false;
  const TScopedApi asked(Api().ShouldAppsUseDarkMode, [&] { return dark; });
  const auto apply = [&] {
    tree.SetShowLines(true);
    tree.SetShowRoot(false);
    tree.SetRowSelect(false);
    script.Take();
    THelper::ApplyExplorerStyle(tree, false);
    EXPECT_FALSE(tree.GetShowLines());
    EXPECT_TRUE(tree.GetShowRoot());
    EXPECT_TRUE(tree.GetRowSelect());
    return script.Take();
  };
  const auto told = [](const char* theme, int rowHeight) {
    return TLines{std::string("theme ") + theme, "4396 64 64",
                  "4379 " + std::to_string(rowHeight) + " 0"};
  };
  {
    const TWindowsVersion version = TWindowsVersion::Windows7();
    dark = true;
    EXPECT_EQ(apply(), told("explorer", height)) << "dark mode is not supported";
  }
  {
    const TWindowsVersion version = TWindowsVersion::Windows11();
    EXPECT_EQ(apply(), told("darkmode_explorer", height + 2));
    dark = false;
    EXPECT_EQ(apply(), told("explorer", height + 2));
  }
  THelper::ApplyExplorerStyle(tree, true);
  EXPECT_EQ(script.Take(), TLines{"theme none"});

  TCustomListView list(&form);
  list.SetParent(&form);
  list.GetHandle();
  script.Take();
  THelper::ApplyExplorerStyle(list, false);
  EXPECT_TRUE(list.GetRowSelect());
  EXPECT_EQ(script.Take(), (TLines{"4150 65536 65536", "theme explorer"}));
}

TEST(ControlHelper, FindsTheEntryOfANodeForItsHeight) {
  testkit::THeadlessScreen screen([](const std::string& text) { ADD_FAILURE() << text; });
  TForm form;
  TCustomTreeView tree(&form);
  tree.SetParent(&form);
  TTreeNode* first = tree.Items().Add(nullptr, u"first");
  TTreeNode* second = tree.Items().Add(nullptr, u"second");
  tree.Items().AddChild(second, u"a");
  TTreeNode* inner = tree.Items().AddChild(second, u"b");
  EXPECT_FALSE(THelper::SetNodeIntegralHeight(*inner, 2)) << "no window";
  form.Show();
  std::vector<std::pair<WPARAM, LPARAM>> steps;
  bool known = true;
  int rows = 0;
  const TScopedApi send(
      Api().SendMessageW, [&](HWND, UINT message, WPARAM wParam, LPARAM lParam) -> LRESULT {
        if (message == 4362) {
          steps.emplace_back(wParam, lParam);
          return known ? static_cast<LRESULT>(steps.size() * 100) : 0;
        }
        if (message != 4415) return 0;
        // The published place of the field.
        std::memcpy(&rows, reinterpret_cast<const BYTE*>(lParam) + 56, sizeof rows);
        return 1;
      });
  EXPECT_TRUE(THelper::SetNodeIntegralHeight(*inner, 3));
  // The first root, the one after it, that one's first child and the next one.
  EXPECT_EQ(steps, (std::vector<std::pair<WPARAM, LPARAM>>{{0, 0}, {1, 100}, {4, 200}, {1, 300}}));
  EXPECT_EQ(rows, 3);
  EXPECT_FALSE(THelper::SetNodeIntegralHeight(*first, 0));
  known = false;
  EXPECT_FALSE(THelper::SetNodeIntegralHeight(*inner, 2));
}

TEST(ControlHelper, OwningWindows) {
  testkit::THeadlessScreen screen([](const std::string& text) { ADD_FAILURE() << text; });
  TForm form;
  TPanel panel(&form);
  panel.SetParent(&form);
  TComponent owned(&panel), loose;
  const HWND application = THelper::GetOwningWindowHandle(nullptr);
  EXPECT_EQ(THelper::GetOwningWindowHandle(&panel), application) << "without windows";
  form.Show();
  EXPECT_EQ(THelper::GetOwningWindowHandle(&form), form.GetHandle());
  EXPECT_EQ(THelper::GetOwningWindowHandle(&panel), form.GetHandle());
  EXPECT_EQ(THelper::GetOwningWindowHandle(&owned), form.GetHandle());
  EXPECT_EQ(THelper::GetOwningWindowHandle(&loose), THelper::GetOwningWindowHandle(nullptr));
}

TEST(ControlHelper, InvokesLaterUnlessTheControlHasGone) {
  testkit::THeadlessScreen screen([](const std::string& text) { ADD_FAILURE() << text; });
  TForm form;
  auto panel = std::make_unique<TPanel>(nullptr);
  panel->SetParent(&form);
  form.Show();
  std::string log;
  TControlHelper::BeginInvoke(form, [&] { log += "form "; });
  TControlHelper::BeginInvoke(*panel, [&] { log += "panel "; });
  TControlHelper::BeginInvoke(form, nullptr);
  EXPECT_FALSE(TControlHelper::GetInvokeRequired(form));
  std::thread([&] {
    EXPECT_TRUE(TControlHelper::GetInvokeRequired(form));
    TControlHelper::BeginInvoke(form, [&] { log += "thread "; });
  }).join();
  EXPECT_EQ(log, "") << "later";
  panel.reset();
  screen.Drain();
  EXPECT_EQ(log, "form thread ");
}

// --- data --------------------------------------------------------------------------------
TEST(ControlHelperData, FilesAsOneObject) {
  TTestFolder folder;
  folder.MakeFile(u"a.txt");
  folder.MakeFile(u"b.txt");
  EXPECT_FALSE(THelper::GetDataObjectForMultiFiles({}));
  EXPECT_FALSE(THelper::GetDataObjectForMultiFiles({folder.Path(u"gone.txt")}));
  const Ref<IDataObject> data = THelper::GetDataObjectForMultiFiles(
      {folder.Path(u"a.txt"), folder.Path(u"gone.txt"), folder.Path(u"b.txt")});
  if (!data) GTEST_SKIP() << "the shell makes no data objects";
  const TScopedApi clipboard(Api().OleGetClipboard, [&](IDataObject** out) -> HRESULT {
    *out = Ref<IDataObject>(data).Detach();
    return S_OK;
  });
  EXPECT_EQ(THelper::GetFilenamesFromClipboard(),
            (TStringArray{folder.Path(u"a.txt"), folder.Path(u"b.txt")}));
}

TEST(ControlHelperData, IconsOfTypesAreChosenForThisProgramOnly) {
  using TList = TOakSystemImageList;
  TTestFolder folder;
  const int chosen = TList::GetIndexFromPath(folder.Path());
  const int before = TList::GetIndexFromExtension(u".oaktest");
  ASSERT_NE(chosen, before);
  const testkit::TCallCounter calls;
  EXPECT_TRUE(THelper::AssociateIconWithExtension(u"OakTest", folder.Path()));
  TList::ForgetIcons();
  EXPECT_EQ(TList::GetIndexFromExtension(u".oaktest"), chosen);
  EXPECT_EQ(TList::GetIndexFromPathByExt(u"Z:\\none\\a.OAKTEST", si_Large), chosen);
  EXPECT_TRUE(THelper::AssociateIconWithExtension(u".oaktest", u""));
  EXPECT_EQ(TList::GetIndexFromExtension(u".oaktest"), before);
  EXPECT_EQ(calls.Count("RegCreateKeyExW") + calls.Count("RegSetValueExW"), 0);
  EXPECT_THROW(THelper::AssociateIconWithExtension(u"", u"x"), EArgumentException);
}

TEST(ControlHelperData, FaultSweep) {
  TTestFolder folder;
  folder.MakeFile(u"a.txt");
  folder.MakeFile(u"b.txt");
  const int failed = testkit::SweepFaults([&] {
    const Ref<IItemIdList> item = TOakItemIdList::Create(folder.Path(u"a.txt"));
    try {
      THelper::GetDisplayName(item, TOakFileNameFormat::ExcludeExtensions);
      THelper::GetDisplayName(item, TOakFileNameFormat::Auto);
    } catch (const EArgumentException&) {  // The item could not be found.
    }
    EXPECT_NE(THelper::PrepareForRename(u"a.lnk", u"b", nullptr), u"b");
    THelper::ShellShowFavorites();
    THelper::ShellShowLibraries();
    THelper::ShellShowOneDrive();
    THelper::ShellShowAllFolders();
    THelper::CreateDragHelper();
    THelper::GetDataObjectForMultiFiles({folder.Path(u"a.txt"), folder.Path(u"b.txt")});
    THelper::GetFilenamesFromClipboard();
    THelper::AssociateIconWithExtension(u".oaktest", folder.Path());
    TOakSystemImageList::GetIndexFromExtension(u".oaktest");
    THelper::Authenticate(folder.Path(), false);
  });
  EXPECT_GT(failed, 20);
  THelper::AssociateIconWithExtension(u".oaktest", u"");
}

}  // namespace
}  // namespace oak::tests
