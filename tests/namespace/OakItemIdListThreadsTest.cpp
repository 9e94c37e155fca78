// Items that several threads use at once. The assertions are few: what counts is
// that the sanitizers find nothing.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/Api.h"
#include "tests/namespace/TestFolder.h"

namespace oak::tests {
namespace {

using TItem = TOakItemIdList;

/// Runs the body on several threads that start together.
void OnThreads(int count, const std::function<void(int)>& body) {
  std::atomic<int> waiting{count};
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i)
    threads.emplace_back([&, i] {
      const HRESULT entered = Api().CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      body(i);
      if (SUCCEEDED(entered)) Api().CoUninitialize();
    });
  for (auto& thread : threads) thread.join();
}

class OakItemIdListThreads : public ::testing::Test {
 protected:
  static constexpr int kThreads = 6;
  static constexpr int kRounds = 20;

  OakItemIdListThreads() {
    fFolder.MakeFile(u"a.txt");
    fFolder.MakeFile(u"b.txt");
  }
  TTestFolder fFolder;
};

TEST_F(OakItemIdListThreads, AllSeeTheOneListAndPathThatWereFound) {
  const auto folder = TItem::Create(fFolder.Path());
  for (int round = 0; round < kRounds; ++round) {
    const auto item = TItem::Create(fFolder.Path(u"a.txt"));
    const auto list = TItem::Create(folder->WindowsPointer(), iloCopyMemory);
    PItemIdList seen[kThreads];
    OnThreads(kThreads, [&](int i) {
      seen[i] = item->WindowsPointer();
      EXPECT_EQ(item->Path(), fFolder.Path(u"a.txt"));
      EXPECT_EQ(item->Name(), u"a.txt");
      EXPECT_EQ(item->SpecialFolder(), SF_FILESYSTEMFOLDER);
      EXPECT_TRUE(item->HasAttributes(SFGAO_FILESYSTEM));
      EXPECT_EQ(list->Path(), fFolder.Path());
      EXPECT_EQ(list->DisplayName(dnfInFolder), ExtractFileName(fFolder.Path()));
      EXPECT_TRUE(list->Equals(folder, ilcDisplay));
      EXPECT_NE(list.As<IShellFolder>(), nullptr);
    });
    for (const PItemIdList pidl : seen) EXPECT_EQ(pidl, item->WindowsPointer());
  }
}

TEST_F(OakItemIdListThreads, ReadersGoOnWhileTheListIsReplaced) {
  const auto a = TItem::Create(fFolder.Path(u"a.txt"));
  const auto b = TItem::Create(fFolder.Path(u"b.txt"));
  const int depth = a->Depth();
  ASSERT_EQ(b->Depth(), depth);
  const auto item = TItem::Create(a->WindowsPointer(), iloCopyMemory);
  OnThreads(kThreads, [&](int i) {
    for (int round = 0; round < kRounds; ++round) {
      if (i == 0)
        TItem::From(item)->SetPidl(TPidl::Copy((round % 2 ? a : b)->WindowsPointer()));
      else if (i == 1)
        (void)item->Reload();
      EXPECT_EQ(item->Depth(), depth);
      const TString name = item->Name();
      EXPECT_TRUE(name == u"a.txt" || name == u"b.txt") << ToUtf8(name);
      (void)item->Path();
      (void)item->SpecialFolder();
    }
  });
}

TEST_F(OakItemIdListThreads, SpecialFoldersAreMadeByAll) {
  const TString name = TItem::CreateForSpecialFolder(SF_DRIVES, false)->DisplayName(dnfInFolder);
  TItem::ClearCaches();
  OnThreads(kThreads, [&](int i) {
    EXPECT_TRUE(Desktop());
    for (int value = SF_BITBUCKET; value < SF_UNKNOWN; ++value)
      TItem::CreateForSpecialFolder(static_cast<TOakShellFolder>((value + i * 7) % SF_UNKNOWN),
                                    true);
    const auto found = TItem::CreateForSpecialFolder(name);
    EXPECT_TRUE(found && found->IsSpecialFolder(SF_DRIVES));
    EXPECT_TRUE(TItem::Parse(u"no such name at all", nullptr, false)->IsInvalid());
  });
}

TEST_F(OakItemIdListThreads, EnumerateTheSameFolder) {
  for (int i = 0; i < 50; ++i) fFolder.MakeFile(u"file" + IntToStr(i));
  const auto item = TItem::Create(fFolder.Path());
  OnThreads(kThreads, [&](int) {
    TFolderTrek cursor;
    cursor.SetFolderIdList(item);
    int count = 0;
    while (cursor.Next()) count += cursor.GetShellObjectName(true).empty() ? 0 : 1;
    EXPECT_EQ(count, 52);
  });
}

TEST(TReentrantLock, KeepsOthersOutAndLetsTheOwnerInAgain) {
  TReentrantLock lock;
  int guarded = 0;
  OnThreads(4, [&](int) {
    for (int i = 0; i < 500; ++i) {
      lock.Enter();
      lock.Enter();
      ++guarded;
      lock.Leave();
      ++guarded;
      lock.Leave();
    }
  });
  EXPECT_EQ(guarded, 4 * 500 * 2);
}

}  // namespace
}  // namespace oak::tests
