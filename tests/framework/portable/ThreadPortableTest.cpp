#include <gtest/gtest.h>
#include <poll.h>
#include <sys/resource.h>

#include <fstream>

#include "oak/framework/MainThreadQueue.h"
#include "oak/framework/Thread.h"
#include "oak/platform/Api.h"
#include "oak/platform/MainThread.h"
#include "testkit/MainQueue.h"

namespace oak {
namespace {

using testkit::TMainQueue;

bool IsReadable(int descriptor) {
  pollfd entry{descriptor, POLLIN, 0};
  return poll(&entry, 1, 0) == 1;
}

TEST(MainThreadWaitHandle, IsReadableWhileTheQueueIsDue) {
  TMainQueue queue;
  TMainThreadQueue& main = TMainThreadQueue::Instance();
  main.Post([] {});
  const int handle = MainThreadWaitHandle();
  ASSERT_GE(handle, 0);
  EXPECT_EQ(MainThreadWaitHandle(), handle);
  EXPECT_TRUE(IsReadable(handle)) << "for what came before";
  queue.Run();
  EXPECT_FALSE(IsReadable(handle));
  TThread::CreateAnonymousThread([&] { main.Post([&] { main.Post([] {}); }); })->Start();
  pollfd entry{handle, POLLIN, 0};
  EXPECT_EQ(poll(&entry, 1, 20'000), 1);
  queue.Run();
  EXPECT_TRUE(IsReadable(handle)) << "for what came while the queue ran";
  main.SetWaker(nullptr);
}

TEST(ThreadPortable, NamesAreSeenBySystemAndCutAtACharacter) {
  struct TCase {
    const char16_t* Name;
    const char* Seen;
  };
  for (const TCase c :
       {TCase{u"short", "short"}, TCase{u"TWorkerThread in pool", "TWorkerThread i"},
        TCase{u"12345678901234\u00E4", "12345678901234"}, TCase{u"", ""}}) {
    TMainQueue queue;
    std::string seen;
    TThread::CreateAnonymousThread([&] {
      TThread::NameThreadForDebugging(c.Name);
      std::ifstream file("/proc/self/task/" + std::to_string(CurrentThreadId()) + "/comm");
      std::getline(file, seen);
    })->Start();
    ASSERT_TRUE(TThread::AwaitNone(20'000));
    EXPECT_EQ(seen, c.Seen);
  }
}

TEST(ThreadPortable, APriorityIsTheSystemsNiceness) {
  TMainQueue queue;
  int nice = 0;
  const int before = getpriority(PRIO_PROCESS, CurrentThreadId());
  TThread* thread =
      TThread::CreateAnonymousThread([&] { nice = getpriority(PRIO_PROCESS, CurrentThreadId()); });
  thread->SetPriority(tpLowest);
  thread->Start();
  ASSERT_TRUE(TThread::AwaitNone(20'000));
  EXPECT_EQ(nice, std::max(10, before));
  EXPECT_EQ(getpriority(PRIO_PROCESS, CurrentThreadId()), before) << "of that thread alone";
}

TEST(ThreadPortable, BackgroundModeIsBegunAndEndedByTheThreadItself) {
  TMainQueue queue;
  TThread::CreateAnonymousThread([] {
    const auto set = [](int mode) {
      return Api().SetThreadPriority(Api().GetCurrentThread(), mode);
    };
    EXPECT_FALSE(set(THREAD_MODE_BACKGROUND_END));
    EXPECT_TRUE(set(THREAD_MODE_BACKGROUND_BEGIN));
    EXPECT_FALSE(set(THREAD_MODE_BACKGROUND_BEGIN));
    EXPECT_TRUE(set(THREAD_MODE_BACKGROUND_END));
    EXPECT_FALSE(set(12345));
  })->Start();
  ASSERT_TRUE(TThread::AwaitNone(20'000));
}

TEST(ThreadPortable, HandlesLeadToTheirThread) {
  DWORD id = 0;
  const auto start = [](LPVOID) -> DWORD { return 0; };
  const HANDLE thread = Api().CreateThread(nullptr, 1 << 20, start, nullptr, CREATE_SUSPENDED, &id);
  ASSERT_NE(thread, nullptr);
  EXPECT_EQ(Api().GetThreadId(thread), id);
  EXPECT_EQ(Api().WaitForSingleObject(thread, 0), WAIT_TIMEOUT);
  EXPECT_EQ(Api().ResumeThread(thread), 1u);
  EXPECT_EQ(Api().WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
  EXPECT_TRUE(Api().CloseHandle(thread));
  EXPECT_EQ(Api().GetThreadId(thread), 0u);
  EXPECT_EQ(Api().WaitForSingleObject(thread, 0), WAIT_FAILED);
  EXPECT_EQ(Api().ResumeThread(thread), 0xFFFFFFFFu);
}

}  // namespace
}  // namespace oak
