// Threads and the use of the processors.
#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <mutex>

#include "oak/platform/portable/SystemBinding.h"
#include "oak/platform/portable/SystemDescriptor.h"
#include "oak/platform/portable/SystemHandles.h"

namespace oak {
namespace {

// The published value that means the calling thread.
const HANDLE OwnThread = reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(-2));

struct TThreadObject : TKernelObject {
  TThreadObject(LPTHREAD_START_ROUTINE start, LPVOID parameter, bool suspended)
      : Start(start), Parameter(parameter), Resumed(!suspended) {}

  const LPTHREAD_START_ROUTINE Start;
  const LPVOID Parameter;
  std::mutex Lock;
  std::condition_variable Changed;
  DWORD Id = 0;
  bool Resumed;
  bool Ended = false;
};

DWORD OwnId() { return static_cast<DWORD>(syscall(SYS_gettid)); }

void* ThreadMain(void* parameter) {
  const std::unique_ptr<std::shared_ptr<TThreadObject>> holder(
      static_cast<std::shared_ptr<TThreadObject>*>(parameter));
  TThreadObject& thread = **holder;
  {
    std::unique_lock lock(thread.Lock);
    thread.Id = OwnId();
    thread.Changed.notify_all();
    thread.Changed.wait(lock, [&] { return thread.Resumed; });
  }
  thread.Start(thread.Parameter);
  const std::lock_guard lock(thread.Lock);
  thread.Ended = true;
  thread.Changed.notify_all();
  return nullptr;
}

// Signals that are not a fault of the thread itself are for the program's own threads.
sigset_t SignalsOfOthers() {
  sigset_t signals;
  sigfillset(&signals);
  for (const int own : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS, SIGPROF})
    sigdelset(&signals, own);
  return signals;
}

int StartNative(SIZE_T stack, std::shared_ptr<TThreadObject>* holder) {
  pthread_attr_t attributes;
  int error = pthread_attr_init(&attributes);
  if (error != 0) return error;
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  if (stack != 0) error = pthread_attr_setstacksize(&attributes, stack);
  const sigset_t blocked = SignalsOfOthers();
  sigset_t before;
  pthread_sigmask(SIG_BLOCK, &blocked, &before);
  pthread_t thread{};
  if (error == 0) error = pthread_create(&thread, &attributes, &ThreadMain, holder);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  pthread_attr_destroy(&attributes);
  return error;
}

DWORD IdOf(TThreadObject& thread) {
  std::unique_lock lock(thread.Lock);
  thread.Changed.wait(lock, [&] { return thread.Id != 0; });
  return thread.Id;
}

HANDLE STDAPICALLTYPE CreateThread(SECURITY_ATTRIBUTES*, SIZE_T stack, LPTHREAD_START_ROUTINE start,
                                   LPVOID parameter, DWORD flags, DWORD* id) {
  return SystemCall<HANDLE>(nullptr, [&]() -> HANDLE {
    if (!start) return FailWith<HANDLE>(ERROR_INVALID_PARAMETER, nullptr);
    auto thread =
        std::make_shared<TThreadObject>(start, parameter, (flags & CREATE_SUSPENDED) != 0);
    const HANDLE handle = TSystemHandles::Instance().Add(thread);
    auto holder = std::make_unique<std::shared_ptr<TThreadObject>>(thread);
    if (const int error = StartNative(stack, holder.get()); error != 0) {
      TSystemHandles::Instance().Close<TThreadObject>(handle);
      const DWORD code = error == EINVAL ? ERROR_INVALID_PARAMETER : ERROR_NOT_ENOUGH_MEMORY;
      return FailWith<HANDLE>(code, nullptr);
    }
    static_cast<void>(holder.release());  // the thread's now
    if (id) *id = IdOf(*thread);
    return handle;
  });
}

DWORD STDAPICALLTYPE ResumeThread(HANDLE handle) {
  constexpr DWORD failure = 0xFFFFFFFFu;
  return SystemCall<DWORD>(failure, [&]() -> DWORD {
    const auto thread = TSystemHandles::Instance().Find<TThreadObject>(handle);
    if (!thread) return FailWith(ERROR_INVALID_HANDLE, failure);
    const std::lock_guard lock(thread->Lock);
    const DWORD suspended = thread->Resumed ? 0 : 1;
    thread->Resumed = true;
    thread->Changed.notify_all();
    return suspended;
  });
}

HANDLE STDAPICALLTYPE GetCurrentThread() { return OwnThread; }

// 0 with last error set if the handle leads to no thread.
DWORD IdForCall(HANDLE handle) {
  if (handle == OwnThread) return OwnId();
  const auto thread = TSystemHandles::Instance().Find<TThreadObject>(handle);
  return thread ? IdOf(*thread) : FailWith<DWORD>(ERROR_INVALID_HANDLE, 0);
}

DWORD STDAPICALLTYPE GetThreadId(HANDLE handle) {
  return SystemCall<DWORD>(0, [&] { return IdForCall(handle); });
}

DWORD STDAPICALLTYPE WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
  return SystemCall<DWORD>(WAIT_FAILED, [&]() -> DWORD {
    const auto thread = TSystemHandles::Instance().Find<TThreadObject>(handle);
    if (!thread) return FailWith(ERROR_INVALID_HANDLE, WAIT_FAILED);
    std::unique_lock lock(thread->Lock);
    const auto ended = [&] { return thread->Ended; };
    if (milliseconds == INFINITE) {
      thread->Changed.wait(lock, ended);
      return WAIT_OBJECT_0;
    }
    const auto time = std::chrono::milliseconds(milliseconds);
    return thread->Changed.wait_for(lock, time, ended) ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
  });
}

// --- priorities --------------------------------------------------------------

// Without rights a thread can be made to leave its reads and writes to others and be
// taken back from that; its share of the processors could only be lowered for good.
BOOL SetBackground(bool on) {
  constexpr DWORD alreadyBackground = 400, notBackground = 401;
  constexpr int whoProcess = 1, classShift = 13, classNone = 0, classIdle = 3;
  thread_local bool background = false;
  if (background == on) return FailWith(on ? alreadyBackground : notBackground, FALSE);
  syscall(SYS_ioprio_set, whoProcess, 0, (on ? classIdle : classNone) << classShift);
  background = on;
  return TRUE;
}

struct TNiceness {
  int Priority;
  int Nice;
};
constexpr std::array<TNiceness, 7> Niceness{{{THREAD_PRIORITY_IDLE, 19},
                                             {THREAD_PRIORITY_LOWEST, 10},
                                             {THREAD_PRIORITY_BELOW_NORMAL, 5},
                                             {THREAD_PRIORITY_NORMAL, 0},
                                             {THREAD_PRIORITY_ABOVE_NORMAL, -5},
                                             {THREAD_PRIORITY_HIGHEST, -10},
                                             {THREAD_PRIORITY_TIME_CRITICAL, -20}}};

BOOL STDAPICALLTYPE SetThreadPriority(HANDLE handle, int priority) {
  return SystemCall<BOOL>(FALSE, [&] {
    if (priority == THREAD_MODE_BACKGROUND_BEGIN || priority == THREAD_MODE_BACKGROUND_END) {
      if (handle != OwnThread) return FailWith(ERROR_INVALID_HANDLE, FALSE);
      return SetBackground(priority == THREAD_MODE_BACKGROUND_BEGIN);
    }
    const DWORD id = IdForCall(handle);
    if (id == 0) return FALSE;
    for (const TNiceness& step : Niceness) {
      if (step.Priority != priority) continue;
      setpriority(PRIO_PROCESS, id, step.Nice);  // a wish: what is not granted stays as it is
      return TRUE;
    }
    return FailWith(ERROR_INVALID_PARAMETER, FALSE);
  });
}

// The longest beginning that the system stores, whole characters only.
std::string ShortName(std::string name) {
  constexpr std::size_t longest = 15;
  if (name.size() <= longest) return name;
  std::size_t length = longest;
  while (length > 0 && (static_cast<unsigned char>(name[length]) & 0xC0) == 0x80) --length;
  name.resize(length);
  return name;
}

HRESULT STDAPICALLTYPE SetThreadDescription(HANDLE handle, LPCWSTR name) {
  return SystemCall<HRESULT>(E_OUTOFMEMORY, [&]() -> HRESULT {
    // Another thread may end at any time, and its native identifier with it.
    if (IdForCall(handle) != OwnId()) return E_INVALIDARG;
    pthread_setname_np(pthread_self(), ShortName(ToUtf8(ViewOf(name))).c_str());
    return S_OK;
  });
}

// --- processors --------------------------------------------------------------

FILETIME FromClockTicks(unsigned long long ticks) {
  static const auto perSecond = static_cast<unsigned long long>(sysconf(_SC_CLK_TCK));
  const unsigned long long steps = ticks * (10'000'000ULL / perSecond);
  return {static_cast<DWORD>(steps), static_cast<DWORD>(steps >> 32)};
}

BOOL STDAPICALLTYPE GetSystemTimes(FILETIME* idle, FILETIME* kernel, FILETIME* user) {
  return SystemCall<BOOL>(FALSE, [&] {
    const TDescriptor file(open("/proc/stat", O_RDONLY | O_CLOEXEC));
    std::array<char, 512> line{};  // the sum of all processors comes first
    if (file.Get() < 0 || read(file.Get(), line.data(), line.size() - 1) <= 0)
      return FailWith(ERROR_GEN_FAILURE, FALSE);
    unsigned long long t[8] = {};  // user nice system idle wait interrupt soft-interrupt stolen
    const int count = std::sscanf(line.data(), "cpu %llu %llu %llu %llu %llu %llu %llu %llu", &t[0],
                                  &t[1], &t[2], &t[3], &t[4], &t[5], &t[6], &t[7]);
    if (count < 4) return FailWith(ERROR_GEN_FAILURE, FALSE);
    const unsigned long long unused = t[3] + t[4];
    if (idle) *idle = FromClockTicks(unused);
    if (kernel) *kernel = FromClockTicks(unused + t[2] + t[5] + t[6] + t[7]);  // idle included
    if (user) *user = FromClockTicks(t[0] + t[1]);
    return TRUE;
  });
}

}  // namespace

// Without TerminateThread, which this system has not, and NtQuerySystemInformation.
#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemThreads(TApi& api) {
  BIND(CreateThread);
  BIND(ResumeThread);
  BIND(GetCurrentThread);
  BIND(GetThreadId);
  BIND(WaitForSingleObject);
  BIND(SetThreadPriority);
  BIND(SetThreadDescription);
  BIND(GetSystemTimes);
}
#undef BIND

}  // namespace oak
