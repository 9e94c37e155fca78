// How busy the machine is.
#include <cstring>
#include <map>

#include "tests/threading/PoolKit.h"

namespace oak::tests {
namespace {

using testkit::TScopedApi;
using testkit::TVirtualClock;

class TResetCpu {
 public:
  TResetCpu() { detail::ResetCpuCaches(); }
  ~TResetCpu() { detail::ResetCpuCaches(); }
};

TEST(CpuUsage, IsTheShareOfTimeThatWasNotIdle) {
  struct TSample {
    std::uint64_t Idle, Kernel, User;
    int Usage;
  };
  // Kernel time includes idle time. The first is the mean since the start.
  const TSample samples[] = {{250, 500, 500, 75}, {250, 500, 500, 100},  // no time has passed
                             {350, 600, 500, 0},  {350, 600, 600, 100},
                             {399, 700, 600, 51}, {400, 703, 600, 67}};
  TVirtualClock clock;
  const TResetCpu reset;
  const TSample* next = samples;
  TScopedApi times(Api().GetSystemTimes, [&](FILETIME* idle, FILETIME* kernel, FILETIME* user) {
    *idle = TicksToFileTime(next->Idle);
    *kernel = TicksToFileTime(next->Kernel);
    *user = TicksToFileTime(next->User);
    return BOOL{TRUE};
  });
  for (const TSample& sample : samples) {
    next = &sample;
    EXPECT_EQ(GetCPUUsage(), sample.Usage) << &sample - samples;
    clock.Advance(201);
  }
}

TEST(CpuUsage, IsAskedEach200Milliseconds) {
  TVirtualClock clock;
  TScriptedCpu cpu;
  GetCPUUsage();
  for (const int advance : {0, 100, 100}) {
    clock.Advance(static_cast<std::uint64_t>(advance));
    GetCPUUsage();
    EXPECT_EQ(cpu.Calls, 1);
  }
  cpu.Busy = 42;
  EXPECT_EQ(GetCPUUsage(), 0);
  clock.Advance(1);
  EXPECT_EQ(GetCPUUsage(), 42);
  EXPECT_EQ(cpu.Calls, 2);
  clock.JumpBack(10'000);
  EXPECT_EQ(GetCPUUsage(), 42) << "a clock that falls back asks nothing";
  EXPECT_EQ(cpu.Calls, 2);
}

TEST(CpuUsage, FallsBackToTheSystemsCounters) {
  TVirtualClock clock;
  TScriptedCpu cpu;
  cpu.Fails = true;
  TScopedApi processors(Api().GetEnvironmentVariableW, [](LPCWSTR, LPWSTR text, DWORD) -> DWORD {
    text[0] = '4';
    return 1;
  });
  std::map<int, ULONG> sizes;
  std::int64_t time = 1000, idle = 0, idleStep = 400;
  bool fails = false;
  TScopedApi query(Api().NtQuerySystemInformation,
                   [&](int kind, PVOID buffer, ULONG size, ULONG*) -> NTSTATUS {
                     sizes[kind] = size;
                     if (fails && kind == 2) return static_cast<NTSTATUS>(0xC0000001u);
                     const std::int64_t value = kind == 3 ? (time += 1000) : (idle += idleStep);
                     std::memcpy(static_cast<char*>(buffer) + (kind == 3 ? 8 : 0), &value, 8);
                     return 0;
                   });
  // Of the four processors' time in 1000 units, so much was idle.
  const auto ask = [&](std::int64_t step) {
    idleStep = step;
    clock.Advance(201);
    return GetCPUUsage();
  };
  EXPECT_EQ(ask(400), 90) << "the first answer has two samples, and half a percent is added";
  EXPECT_EQ(time, 3000);
  EXPECT_EQ(sizes, (std::map<int, ULONG>{{2, 364}, {3, 32}}));
  EXPECT_EQ(ask(2000), 50);
  EXPECT_EQ(time, 4000);
  EXPECT_EQ(ask(4000), 0);
  fails = true;
  EXPECT_EQ(ask(0), 0) << "a machine that tells nothing counts as idle";
}

TEST(CpuCount, ComesFromTheEnvironmentIfThatIsANumber) {
  TString value;
  TScopedApi environment(Api().GetEnvironmentVariableW,
                         [&](LPCWSTR name, LPWSTR text, DWORD size) -> DWORD {
                           EXPECT_EQ(FromW(name), u"NUMBER_OF_PROCESSORS");
                           if (value.size() >= size) return static_cast<DWORD>(value.size() + 1);
                           std::copy(value.begin(), value.end(), text);
                           return static_cast<DWORD>(value.size());
                         });
  const int system = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
  const std::pair<TString, int> cases[] = {{u"6", 6},       {u" 12 ", 12},
                                           {u"", system},   {u"x", system},
                                           {u"4x", system}, {u"00000000000000000000007", system}};
  for (const auto& [text, count] : cases) {
    const TResetCpu reset;
    value = text;
    EXPECT_EQ(GetCPUCount(), count) << ToUtf8(text);
    value = u"3";
    EXPECT_EQ(GetCPUCount(), count) << "asked once";
    EXPECT_EQ(TCustomThreadPool::DefaultMaxRunningThreads(), count * 3 + 2);
  }
}

}  // namespace
}  // namespace oak::tests
