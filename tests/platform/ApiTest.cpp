#include "oak/platform/Api.h"

#include <gtest/gtest.h>

#include <atomic>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace oak {
namespace {

/// Notes the calls it sees, and fails those it is told to.
class TNotingObserver : public IApiObserver {
 public:
  explicit TNotingObserver(std::set<std::string> failing = {}) : fFailing(std::move(failing)) {
    fPrevious = SetApiObserver(this);
  }
  ~TNotingObserver() { SetApiObserver(fPrevious); }
  bool BeforeCall(const char* name) override {
    seen.push_back(name);
    return !fFailing.count(name);
  }
  DWORD FailureCode() const override { return ERROR_ACCESS_DENIED; }
  std::vector<std::string> seen;

 private:
  IApiObserver* fPrevious;
  std::set<std::string> fFailing;
};

/// Replaces an entry for the length of a test.
template <class TEntry>
class TReplaced {
 public:
  TReplaced(TEntry& entry, typename TEntry::TReplacement replacement)
      : fEntry(entry), fOld(entry.Replacement()) {
    entry.SetReplacement(std::move(replacement));
  }
  ~TReplaced() { fEntry.SetReplacement(fOld); }

 private:
  TEntry& fEntry;
  typename TEntry::TReplacement fOld;
};
template <class TEntry, class TBody>
TReplaced(TEntry&, TBody) -> TReplaced<TEntry>;

// clang-format off
// Functions that a supported system may lack; callers test each of them.
const std::set<std::string> MayBeMissing = {
    "StrFormatByteSizeEx", "SHCreateItemWithParent", "PSGetNameFromPropertyKey",
    "PSFormatForDisplayAlloc", "PSCreatePropertyChangeArray", "PropVariantToVariant",
    "VariantToPropVariant", "VariantCompare", "AllowDarkModeForWindow", "ShouldAppsUseDarkMode",
    "SHGetImageList", "FileIconInit", "CDefFolderMenu_Create2", "CIDLData_CreateFromIDArray",
    "SHDoDragDrop", "SHChangeNotification_Lock", "SHCreateDataObject", "GetProcessDpiAwareness",
    "GetThreadDpiAwarenessContext", "GetAwarenessFromDpiAwarenessContext",
    "AreDpiAwarenessContextsEqual", "Wow64DisableWow64FsRedirection",
    "Wow64RevertWow64FsRedirection", "IsWow64Process",
    "SHMultiFileProperties",
    // The portable shell has no icons or themes to free or set, and knows no code pages.
    "DestroyIcon", "SetWindowTheme", "MultiByteToWideChar",
    // It has its own accounting of the processor, and ends no thread by force.
    "NtQuerySystemInformation", "TerminateThread"};
// clang-format on

TEST(ApiTable, EveryFunctionThatCallersRelyOnIsBound) {
  std::set<std::string> missing;
#define OAK_API(Result, Name, Params, Failure) \
  if (!Api().Name && !MayBeMissing.count(#Name)) missing.insert(#Name);
#include "oak/platform/ApiList.inc"
#undef OAK_API
  EXPECT_EQ(missing, std::set<std::string>());
}

TEST(ApiTable, EntriesKnowTheirNames) {
#define OAK_API(Result, Entry, Params, Failure) EXPECT_STREQ(Api().Entry.Name(), #Entry);
#include "oak/platform/ApiList.inc"
#undef OAK_API
}

TEST(ApiTable, FailedCallIsNotMadeAndAnswersAsTheFunctionWould) {
  int made = 0;
  const TReplaced attributes(Api().GetFileAttributesW,
                             [&](LPCWSTR) { return ++made, DWORD{0x20}; });
  const TReplaced find(Api().FindFirstFileW,
                       [&](LPCWSTR, WIN32_FIND_DATAW*) { return ++made, HANDLE{}; });
  const TReplaced parse(Api().SHParseDisplayName,
                        [&](LPCWSTR, IBindCtx*, PIDLIST_ABSOLUTE*, SFGAOF, SFGAOF*) -> HRESULT {
                          return ++made, S_OK;
                        });
  const TReplaced key(Api().RegOpenKeyExW, [&](HKEY, LPCWSTR, DWORD, REGSAM, HKEY*) {
    return ++made, static_cast<LSTATUS>(0);
  });
  const TReplaced clone(Api().ILClone,
                        [&](PCUIDLIST_RELATIVE) { return ++made, PIDLIST_RELATIVE{}; });
  TNotingObserver observer(
      {"GetFileAttributesW", "FindFirstFileW", "SHParseDisplayName", "RegOpenKeyExW", "ILClone"});

  EXPECT_EQ(Api().GetFileAttributesW(nullptr), INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(detail::GetLastErrorDirect(), DWORD{ERROR_ACCESS_DENIED});
  EXPECT_EQ(Api().FindFirstFileW(nullptr, nullptr), INVALID_HANDLE_VALUE);
  EXPECT_EQ(Api().SHParseDisplayName(nullptr, nullptr, nullptr, 0, nullptr), E_ACCESSDENIED);
  EXPECT_EQ(Api().RegOpenKeyExW(nullptr, nullptr, 0, 0, nullptr), LSTATUS{ERROR_ACCESS_DENIED});
  EXPECT_EQ(Api().ILClone(nullptr), nullptr);
  EXPECT_EQ(made, 0);
  EXPECT_EQ(observer.seen.size(), 5u);
}

TEST(ApiTable, WhatFreesIsCarriedOutWhateverTheObserverSays) {
  int freed = 0;
  const TReplaced free(Api().ILFree, [&](PIDLIST_RELATIVE) { ++freed; });
  const TReplaced close(Api().FindClose, [&](HANDLE) { return ++freed, BOOL{TRUE}; });
  TNotingObserver observer({"ILFree", "FindClose"});
  Api().ILFree(nullptr);
  EXPECT_TRUE(Api().FindClose(nullptr));
  EXPECT_EQ(freed, 2);
  EXPECT_EQ(observer.seen, (std::vector<std::string>{"ILFree", "FindClose"}));
}

TEST(ApiTable, CallsThatThePlatformMakesToItselfAreNotSeen) {
  const TReplaced inner(Api().GetFileAttributesW, [](LPCWSTR) { return DWORD{0x10}; });
  const TReplaced outer(Api().GetDriveTypeW, [](LPCWSTR path) -> UINT {
    return Api().GetFileAttributesW(path) == 0x10 ? DRIVE_FIXED : DRIVE_UNKNOWN;
  });
  TNotingObserver observer({"GetFileAttributesW"});
  EXPECT_EQ(Api().GetDriveTypeW(nullptr), UINT{DRIVE_FIXED});
  EXPECT_EQ(observer.seen, std::vector<std::string>{"GetDriveTypeW"});
  // Afterwards the thread is outside again.
  EXPECT_EQ(Api().GetFileAttributesW(nullptr), INVALID_FILE_ATTRIBUTES);
}

TEST(ApiTable, DepthIsEachThreadsOwn) {
  const TReplaced inner(Api().GetFileAttributesW, [](LPCWSTR) { return DWORD{0x10}; });
  const TReplaced outer(Api().GetDriveTypeW, [](LPCWSTR) -> UINT {
    // Another thread makes a call of its own while this one is inside of the platform.
    DWORD attributes = 0;
    std::thread([&] { attributes = Api().GetFileAttributesW(nullptr); }).join();
    return attributes;
  });
  TNotingObserver observer({"GetFileAttributesW"});
  EXPECT_EQ(Api().GetDriveTypeW(nullptr), UINT{INVALID_FILE_ATTRIBUTES});
}

TEST(ApiTable, LastErrorBelongsToTheThread) {
  std::atomic<bool> other{false};
  std::atomic<bool> done{false};
  DWORD seenByOther = 0;
  std::thread thread([&] {
    detail::SetLastErrorDirect(ERROR_FILE_NOT_FOUND);
    other = true;
    while (!done) std::this_thread::yield();
    seenByOther = detail::GetLastErrorDirect();
  });
  while (!other) std::this_thread::yield();
  Api().SetLastError(ERROR_SHARING_VIOLATION);
  const DWORD seenHere = Api().GetLastError();
  done = true;
  thread.join();
  EXPECT_EQ(seenHere, DWORD{ERROR_SHARING_VIOLATION});
  EXPECT_EQ(seenByOther, DWORD{ERROR_FILE_NOT_FOUND});
}

}  // namespace
}  // namespace oak
