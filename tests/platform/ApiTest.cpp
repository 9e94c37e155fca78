#include "oak/platform/Api.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

#include "testkit/ScopedApi.h"

namespace oak {
namespace {

using testkit::TScopedApi;

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

TEST(ApiTable, FailedCallIsNotMadeAndAnswersAsTheFunctionWould) {
  int made = 0;
  const TScopedApi attributes(Api().GetFileAttributesW,
                              [&](LPCWSTR) { return ++made, DWORD{0x20}; });
  const TScopedApi parse(Api().SHParseDisplayName,
                         [&](LPCWSTR, IBindCtx*, PIDLIST_ABSOLUTE*, SFGAOF, SFGAOF*) -> HRESULT {
                           return ++made, S_OK;
                         });
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
  const TScopedApi free(Api().ILFree, [&](PIDLIST_RELATIVE) { ++freed; });
  const TScopedApi close(Api().FindClose, [&](HANDLE) { return ++freed, BOOL{TRUE}; });
  TNotingObserver observer({"ILFree", "FindClose"});
  Api().ILFree(nullptr);
  EXPECT_TRUE(Api().FindClose(nullptr));
  EXPECT_EQ(freed, 2);
  EXPECT_EQ(observer.seen, (std::vector<std::string>{"ILFree", "FindClose"}));
}

TEST(ApiTable, CallsThatThePlatformMakesToItselfAreNotSeen) {
  const TScopedApi inner(Api().GetFileAttributesW, [](LPCWSTR) { return DWORD{0x10}; });
  DWORD elsewhere = 0;
  const TScopedApi outer(Api().GetDriveTypeW, [&](LPCWSTR path) -> UINT {
    // Another thread makes a call of its own while this one is inside of the platform.
    std::thread([&] { elsewhere = Api().GetFileAttributesW(nullptr); }).join();
    return Api().GetFileAttributesW(path);
  });
  TNotingObserver observer({"GetFileAttributesW"});
  EXPECT_EQ(Api().GetDriveTypeW(nullptr), 0x10u);
  EXPECT_EQ(elsewhere, INVALID_FILE_ATTRIBUTES);
  EXPECT_EQ(observer.seen, (std::vector<std::string>{"GetDriveTypeW", "GetFileAttributesW"}));
  // Afterwards the thread is outside again.
  EXPECT_EQ(Api().GetFileAttributesW(nullptr), INVALID_FILE_ATTRIBUTES);
}

TEST(ApiTable, LastErrorBelongsToTheThread) {
  Api().SetLastError(ERROR_SHARING_VIOLATION);
  EXPECT_EQ(Api().GetLastError(), DWORD{ERROR_SHARING_VIOLATION});
  DWORD seenByOther = ERROR_SHARING_VIOLATION;
  std::thread([&] { seenByOther = detail::GetLastErrorDirect(); }).join();
  EXPECT_NE(seenByOther, DWORD{ERROR_SHARING_VIOLATION});
}

}  // namespace
}  // namespace oak
