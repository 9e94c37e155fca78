// The cursor on scripted folders: failures, kinds, speed and what is shown.
#include <gtest/gtest.h>

#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/OakItemIdList.h"
#include "testkit/ManualWorkerPool.h"
#include "testkit/ScopedHost.h"
#include "testkit/VirtualClock.h"
#include "testkit/portable/ScriptedFolder.h"

namespace oak {
namespace {

using namespace testkit;

/// A scripted folder on the desktop, and a cursor that stands in it.
class FolderTrekScripted : public ::testing::Test {
 protected:
  FolderTrekScripted() : fMount(DesktopMount(fFolder, u"Scripted")) {
    fItem = TOakItemIdList::Parse(u"Scripted", nullptr, true);
    fCursor.SetFolderIdList(fItem);
  }
  int CountObjects() {
    fCursor.SetFolderIdList(fItem);
    int count = 0;
    while (fCursor.Next()) ++count;
    return count;
  }

  Ref<TScriptedFolder> fFolder = TScriptedFolder::Make();
  TScopedMount fMount;
  Ref<IItemIdList> fItem;
  TFolderTrek fCursor;
};

TEST_F(FolderTrekScripted, FailuresThatAUserCanActOnAreRaised) {
  fFolder->AddMany(3, u"f", u".txt");
  struct TCase {
    HRESULT Failure;
    std::uint32_t Raised;  // 0: the enumeration just ends
  };
  const TCase cases[] = {{HRESULT_FROM_WIN32(2), 0},
                         {HRESULT_FROM_WIN32(3), 3},
                         {HRESULT_FROM_WIN32(5), 5},
                         {HRESULT_FROM_WIN32(12175), 12175},
                         {HRESULT_FROM_WIN32(12176), 0},
                         {E_FAIL, 0},
                         {E_NOTIMPL, 0}};
  for (const TScriptedOperation operation :
       {TScriptedOperation::Enumerate, TScriptedOperation::Next}) {
    const int before = operation == TScriptedOperation::Next ? 2 : 0;
    for (const TCase& c : cases) {
      SCOPED_TRACE(ToUtf8(IntToHex(static_cast<std::uint32_t>(c.Failure), 8)));
      fFolder->SetFailure(operation, c.Failure, before);
      fCursor.SetFolderIdList(fItem);
      for (int i = 0; i < before; ++i) ASSERT_TRUE(fCursor.Next());
      try {
        EXPECT_FALSE(fCursor.Next());
        EXPECT_EQ(c.Raised, 0u);
      } catch (const EFolderTrekError& error) {
        EXPECT_EQ(error.GetErrorCode(), c.Raised);
        EXPECT_TRUE(EndsWith(error.GetMessage(), fItem->DisplayPath())) << error.what();
      }
    }
    fFolder->ClearFailure(operation);
  }
  EXPECT_EQ(CountObjects(), 3) << "the folder works again";
}

TEST_F(FolderTrekScripted, AFailedBindLeavesNoObjectOfTheOldFolder) {
  fFolder->AddFile(u"a.txt");
  fFolder->AddFolder(u"sub");
  ASSERT_TRUE(fCursor.Next());
  const Ref<IItemIdList> sub =
      TOakItemIdList::Create(u"sub", fCursor.GetShellFolder().Get(), nullptr);
  const Ref<IItemIdList> absolute = fItem->Concat(sub);
  fFolder->SetFailure(TScriptedOperation::Open, HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
  EXPECT_THROW(fCursor.SetFolderIdList(absolute), EFolderTrekError);
  EXPECT_TRUE(IsInvalid(fCursor.GetItemIdList()));
}

TEST_F(FolderTrekScripted, FileSystemOnlyDropsVirtualObjects) {
  fFolder->AddFile(u"virtual.txt");
  EXPECT_EQ(CountObjects(), 1);
  fCursor.SetFileSystemOnly(true);
  EXPECT_EQ(CountObjects(), 0);
  // Computer and network are roots of file systems, whatever they say of themselves.
  TFolderTrek desktop;
  desktop.SetFileSystemOnly(true);
  desktop.SetFolderIdList(TOakItemIdList::CreateForSpecialFolder(SF_DESKTOP, true));
  TOakShellFolders seen;
  while (desktop.Next()) seen.Include(desktop.IsSpecialObject());
  EXPECT_TRUE(seen.Contains(SF_DRIVES));
  EXPECT_TRUE(seen.Contains(SF_NETWORK));
  EXPECT_FALSE(seen.Contains(SF_CONTROLS));
}

TEST_F(FolderTrekScripted, ShowsObjectsAccordingToOptions) {
  fFolder->SetFileSystemPath(u"S:\\");
  fFolder->AddFile(u"file.txt");
  fFolder->AddFile(u"hidden.txt", SFGAO_HIDDEN);
  fFolder->AddFolder(u"folder");
  fFolder->AddFolder(u"archive.zip", SFGAO_STREAM);
  fFolder->AddFolder(u"Recycler", SFGAO_HIDDEN);
  const auto shown = [&](TOakShellShowOptions options) {
    TStringArray names;
    fCursor.SetFolderIdList(fItem);
    while (fCursor.Next())
      if (fCursor.ShowObjectAccordingShowOptions(options))
        names.push_back(fCursor.GetShellObjectName(true));
    return ToUtf8(Join(names, u" "));
  };
  EXPECT_EQ(shown({}), "folder archive.zip");
  EXPECT_EQ(shown({soShowFiles}), "file.txt folder archive.zip");
  EXPECT_EQ(shown({soShowFiles, soShowHidden}), "file.txt hidden.txt folder archive.zip");
  EXPECT_EQ(shown({soShowFiles, soShowHidden, soShowRecycleBin}),
            "file.txt hidden.txt folder archive.zip Recycler");
  EXPECT_EQ(shown({soFileSystemOnly}), "folder archive.zip");
  fCursor.SetFileSystemOnly(true);
  EXPECT_EQ(shown({soFileSystemOnly}), "folder") << "an archive is no folder then";
}

TEST_F(FolderTrekScripted, ARenameThatTheShellRefusesIsNotRaised) {
  fFolder->AddFile(u"a.txt");
  fFolder->SetFailure(TScriptedOperation::Rename, HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
  TVirtualClock clock;
  TScopedHost host;
  TString report;
  TScopedApi debug(Api().OutputDebugStringW, [&](LPCWSTR text) { report = FromW(text); });
  ASSERT_TRUE(fCursor.Next());
  TString name = u"b.txt";
  fCursor.RenameObject(name);
  EXPECT_EQ(name, u"a.txt") << "the caller learns the name that it has";
  EXPECT_EQ(clock.GetSlept(), 300u) << "the shell gets a second chance";
  EXPECT_TRUE(StartsWith(report, u"Renaming failed. Error code: ")) << ToUtf8(report);
  EXPECT_EQ(host.GetWaitCursorCount(), 1);
  EXPECT_EQ(host.GetWaitCursorDepth(), 0);
}

// --- slow folders -------------------------------------------------------------

struct TNotifier final : IFolderTrekNotifier {
  struct TEnumeration final : TInterfacedObject<ITerminable> {
    explicit TEnumeration(int& terminated) : Terminated(terminated) {}
    void Terminate() override { ++Terminated; }
    int& Terminated;
  };
  struct TIndicator final : TInterfacedObject<ICancellationIndicator> {
    bool IsCancellationRequested() override { return Canceled; }
    bool Canceled = false;
  };

  void Add(const Ref<IItemIdListCollection>&) override {}
  void AddItemIdList(const Ref<IItemIdList>&) override { ++Added; }
  Ref<ICancellationIndicator> GetCancellationIndicator() override { return Indicator; }
  Ref<ITerminable> EnumerateInBackground(const TFolderTrek&) override {
    return MakeRef<TEnumeration>(Terminated);
  }
  Ref<TIndicator> Indicator = MakeRef<TIndicator>();
  int Added = 0;
  int Terminated = 0;
};

class FolderTrekSlowness : public ::testing::Test {
 protected:
  FolderTrekSlowness() : fDrive(u'N', DRIVE_REMOTE, fFolder) {
    fFolder->AddMany(150, u"file", u".txt");
    fItem = TOakItemIdList::Parse(u"N:\\", nullptr, false);
  }
  bool IsTakenAsSlow() { return TShellControlHelper::ShouldEnumerateAsync(fItem, nullptr); }

  Ref<TScriptedFolder> fFolder = TScriptedFolder::Make();
  TScriptedDrive fDrive;
  TVirtualClock fClock;
  TScopedHost fHost;
  TScopedWorkerPool fPool;
  Ref<IItemIdList> fItem;
};

TEST_F(FolderTrekSlowness, IsTheMeanTimeOfTheFirstObjects) {
  fPool->SetInline(true);
  EXPECT_FALSE(IsTakenAsSlow());
  fFolder->SetDelay(9);
  const std::uint64_t before = fClock.GetSlept();
  EXPECT_FALSE(IsTakenAsSlow());
  EXPECT_EQ(fClock.GetSlept() - before, 101u * 9u) << "no more than 101 objects are read";
  fFolder->SetDelay(10);
  EXPECT_TRUE(IsTakenAsSlow());
}

TEST_F(FolderTrekSlowness, NobodyWaitsForAFolderThatHangs) {
  fClock.SetCostOfLook(10);
  const std::uint64_t start = fClock.GetTicks();
  EXPECT_TRUE(IsTakenAsSlow());
  EXPECT_GE(fClock.GetTicks() - start, 1000u);
  EXPECT_LT(fClock.GetTicks() - start, 1200u);
  EXPECT_EQ(fPool->GetPending(), 1u);
  fPool->RunAll();  // The probe was cancelled, and harms nobody.

  const Ref<TNotifier::TIndicator> canceled = MakeRef<TNotifier::TIndicator>();
  canceled->Canceled = true;
  const std::uint64_t again = fClock.GetTicks();
  EXPECT_TRUE(TShellControlHelper::ShouldEnumerateAsync(fItem, canceled));
  EXPECT_LT(fClock.GetTicks() - again, 100u) << "cancellation ends the wait";
}

TEST_F(FolderTrekSlowness, FailingAndEmptyFolders) {
  fPool->SetInline(true);
  fFolder->SetFailure(TScriptedOperation::Enumerate, HRESULT_FROM_WIN32(ERROR_BAD_NETPATH));
  EXPECT_TRUE(IsTakenAsSlow());
  fFolder->SetFailure(TScriptedOperation::Next, S_FALSE);
  fFolder->ClearFailure(TScriptedOperation::Enumerate);
  EXPECT_FALSE(IsTakenAsSlow());
}

TEST_F(FolderTrekSlowness, TheCursorHandsOverAndTerminates) {
  TNotifier notifier;
  {
    TFolderTrek cursor;
    cursor.SetFolderIdList(fItem);
    fClock.SetCostOfLook(100);
    EXPECT_EQ(cursor.Next(&notifier), sbnAsync);
    EXPECT_EQ(notifier.Terminated, 0);
    EXPECT_EQ(cursor.Next(&notifier), sbnAsync);
    EXPECT_EQ(notifier.Terminated, 1) << "a new enumeration ends the old one";
  }
  EXPECT_EQ(notifier.Terminated, 2) << "the cursor's end ends the enumeration";

  TFolderTrek quick;
  quick.SetFolderIdList(fItem);
  fPool->SetInline(true);
  EXPECT_EQ(quick.Next(&notifier), sbnOK);
  EXPECT_EQ(quick.Next(nullptr), sbnOK);
  quick.CopyTo(notifier);
  EXPECT_EQ(notifier.Added, 1);
}

// --- windows and drives ---------------------------------------------------------

TEST_F(FolderTrekSlowness, TheShellGetsAWindowOnlyWhereItMayAsk) {
  const auto window = reinterpret_cast<HWND>(std::uintptr_t{0x1234});
  Host().ApplicationWindow = [&] { return window; };
  TFolderTrek cursor;
  cursor.SetFolderIdList(fItem);
  EXPECT_EQ(cursor.GetWindowHandle(false), window);
  cursor.SetShowErrorMessages(false);
  EXPECT_EQ(cursor.GetWindowHandle(false), nullptr) << "messages are off";
  EXPECT_EQ(cursor.GetWindowHandle(true), window);
  cursor.SetFolderIdList(TOakItemIdList::CreateForSpecialFolder(SF_NETWORK, true));
  EXPECT_EQ(cursor.GetWindowHandle(false), window) << "a network root may ask for a logon";
  cursor.Next();
  EXPECT_EQ(cursor.GetWindowHandle(false), nullptr) << "an enumeration is running";
}

TEST(FolderTrekDrives, AreReadyOrSayWhyNot) {
  struct TCase {
    DWORD Error;
    bool Interactive;
    bool Admin;
    bool IsReady;
  };
  // The second probe, after a logon, succeeds.
  const TCase cases[] = {{ERROR_SUCCESS, false, true, true},
                         {1326, false, true, true},
                         {1920, false, true, false},
                         {21, false, false, false},
                         {1326, true, true, true},
                         {0x80310000, true, true, true},
                         {21, true, false, true},
                         {21, true, true, false}};
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.Error);
    TScopedHost host;
    Host().IsInteractive = [&] { return c.Interactive; };
    TScopedApi admin(Api().IsUserAnAdmin, [&]() -> BOOL { return c.Admin; });
    int probes = 0;
    TScopedApi space(Api().GetDiskFreeSpaceExW,
                     [&](LPCWSTR path, ULARGE_INTEGER*, ULARGE_INTEGER*, ULARGE_INTEGER*) -> BOOL {
                       EXPECT_EQ(FromW(path), u"C:\\");
                       if (++probes > 1 || c.Error == ERROR_SUCCESS) return TRUE;
                       Api().SetLastError(c.Error);
                       return FALSE;
                     });
    Api().SetLastError(ERROR_SUCCESS);
    EXPECT_EQ(IsDriveReady(u"C:\\", true), c.IsReady);
    EXPECT_EQ(Api().GetLastError(), c.Error);
  }
  EXPECT_TRUE(IsDriveReady(u"\\\\server", false)) << "a server is not probed";
}

TEST(FolderTrekPortable, ExpandsWhatTheEnvironmentLacks) {
  TScopedApi now(Api().GetLocalTime, [](SYSTEMTIME* time) { *time = {2026, 3, 0, 7, 8, 5, 9, 0}; });
  EXPECT_EQ(OakExpandEnvironmentStrings(u"%date% %Time% %nothing%"),
            u"2026-03-07 08-05-09 %nothing%");
  EXPECT_EQ(OakExpandEnvironmentStrings(u"%MyDocuments%\\x"),
            GetPathFromSpecialFolder(SF_PERSONAL) + u"\\x");
  TScopedApi broken(Api().ExpandEnvironmentStringsW,
                    [](LPCWSTR, LPWSTR, DWORD) { return DWORD{0}; });
  EXPECT_EQ(OakExpandEnvironmentStrings(u"%HOME%"), u"%HOME%");
}

}  // namespace
}  // namespace oak
