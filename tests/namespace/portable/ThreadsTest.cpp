// Items and special folders used by several threads at once. What is wrong here
// shows under the thread sanitizer.
#include <gtest/gtest.h>

#include <barrier>
#include <thread>
#include <vector>

#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.h"
#include "tests/namespace/TestFolder.h"

namespace oak {
namespace {

using tests::TTestFolder;

constexpr int ThreadCount = 4;
constexpr int Rounds = 40;

/// Runs the body on several threads, all of which start together.
template <class TBody>
void Together(TBody body) {
  std::barrier start(ThreadCount);
  std::vector<std::thread> threads;
  for (int i = 0; i < ThreadCount; ++i)
    threads.emplace_back([&, i] {
      start.arrive_and_wait();
      body(i);
    });
  for (std::thread& thread : threads) thread.join();
}

TEST(Threads, ResolveTheSameItem) {
  TTestFolder folder;
  folder.MakeFile(u"file.txt");
  for (int round = 0; round < Rounds; ++round) {
    const Ref<IItemIdList> item = TOakItemIdList::Create(folder.Path(u"file.txt"));
    const Ref<IItemIdList> gone = TOakItemIdList::Create(folder.Path(u"gone.txt"));
    PItemIdList seen[ThreadCount] = {};
    Together([&](int i) {
      seen[i] = item->WindowsPointer();
      EXPECT_EQ(item->Path(), folder.Path(u"file.txt"));
      EXPECT_EQ(item->DisplayName(dnfInFolder), u"file.txt");
      EXPECT_EQ(item->SpecialFolder(), SF_FILESYSTEMFOLDER);
      EXPECT_TRUE(gone->IsInvalid());
    });
    for (PItemIdList pidl : seen) EXPECT_EQ(pidl, seen[0]) << "one list is published";
  }
}

TEST(Threads, ShareSpecialFoldersAndTheDesktop) {
  for (int round = 0; round < 5; ++round) {
    TOakItemIdList::ClearCaches();
    Together([&](int i) {
      EXPECT_TRUE(Desktop());
      for (int value = SF_BITBUCKET; value < SF_UNKNOWN; ++value)
        TOakItemIdList::CreateForSpecialFolder(
            static_cast<TOakShellFolder>((value + i * 7) % SF_UNKNOWN), true);
      EXPECT_TRUE(TOakItemIdList::CreateForSpecialFolder(u"This PC"));
    });
  }
}

TEST(Threads, ReadWhileAnotherReloads) {
  TTestFolder folder;
  folder.MakeFile(u"file.txt");
  const Ref<IItemIdList> item = TOakItemIdList::Create(folder.Path(u"file.txt"));
  Together([&](int i) {
    for (int round = 0; round < Rounds; ++round) {
      if (i == 0)
        item->Reload();
      else
        EXPECT_EQ(item->DisplayName(dnfInFolder), u"file.txt");
    }
  });
}

TEST(Threads, EnumerateTheSameFolder) {
  TTestFolder folder;
  for (int i = 0; i < 50; ++i) folder.MakeFile(u"file" + IntToStr(i));
  const Ref<IItemIdList> item = TOakItemIdList::Create(folder.Path());
  Together([&](int) {
    TFolderTrek cursor;
    cursor.SetFolderIdList(item);
    int count = 0;
    while (cursor.Next()) count += cursor.GetShellObjectName(true).empty() ? 0 : 1;
    EXPECT_EQ(count, 50);
  });
}

}  // namespace
}  // namespace oak
