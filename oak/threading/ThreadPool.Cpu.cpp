#include "oak/threading/ThreadPool.Cpu.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "oak/base/DateTime.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

constexpr std::uint64_t UsageLifetimeMs = 200;
constexpr int Busy = 100;
constexpr int Unknown = -1;

/// Counters of the moment before, for one way of asking.
struct TSample {
  std::int64_t Idle = 0;
  std::int64_t Total = 0;
};

struct TUsage {
  // Read without a lock; written under it.
  std::atomic<bool> IsKnown{false};
  std::atomic<std::uint64_t> Tick{0};
  std::atomic<int> Percent{0};
  std::mutex Lock;
  TSample Times;
  std::optional<TSample> Counters;
};

TUsage& Usage() {
  static TUsage& usage = *new TUsage;
  return usage;
}

std::int64_t ToInt(const FILETIME& pTime) {
  return static_cast<std::int64_t>(FileTimeToTicks(pTime));
}

// What of the time between two samples was not idle, in percent.
double BusyShare(const TSample& pBefore, const TSample& pNow) {
  if (pNow.Total == pBefore.Total) return Busy;
  return (1.0 - static_cast<double>(pNow.Idle - pBefore.Idle) /
                    static_cast<double>(pNow.Total - pBefore.Total)) *
         100;
}

// The system's counters as it keeps them inside. Total is the time of day, Idle that of
// all processors together.
std::optional<TSample> ReadCounters() {
  constexpr int performanceClass = 2, timeOfDayClass = 3;
  if (!Api().NtQuerySystemInformation) return std::nullopt;
  alignas(8) std::array<std::byte, 32> time{};
  alignas(8) std::array<std::byte, 364> performance{};
  const auto ask = [](int infoClass, auto& buffer) {
    return Api().NtQuerySystemInformation(infoClass, buffer.data(),
                                          static_cast<ULONG>(buffer.size()), nullptr) >= 0;
  };
  if (!ask(timeOfDayClass, time) || !ask(performanceClass, performance)) return std::nullopt;
  constexpr std::size_t currentTimeOffset = 8, idleTimeOffset = 0;
  TSample sample;
  std::memcpy(&sample.Total, time.data() + currentTimeOffset, sizeof sample.Total);
  std::memcpy(&sample.Idle, performance.data() + idleTimeOffset, sizeof sample.Idle);
  return sample;
}

double MeasureByCounters(TUsage& pUsage) {
  const std::optional<TSample> now = ReadCounters();
  if (!now) return Unknown;
  const std::optional<TSample> before = std::exchange(pUsage.Counters, now);
  if (!before) return MeasureByCounters(pUsage);  // A difference needs two.
  const std::int64_t elapsed = now->Total - before->Total;
  if (elapsed == 0) return Busy;
  const double idle =
      static_cast<double>(now->Idle - before->Idle) / static_cast<double>(elapsed) * 100;
  return 100 - idle / GetCPUCount() + 0.5;
}

double Measure(TUsage& pUsage) {
  FILETIME idle{}, kernel{}, user{};
  if (!Api().GetSystemTimes || !Api().GetSystemTimes(&idle, &kernel, &user))
    return MeasureByCounters(pUsage);
  // What the system calls kernel time includes idle time.
  const TSample now{ToInt(idle), ToInt(kernel) + ToInt(user)};
  const double result = BusyShare(pUsage.Times, now);
  pUsage.Times = now;
  return result;
}

bool IsFresh(const TUsage& pUsage, std::uint64_t pNow) {
  return pUsage.IsKnown.load(std::memory_order_acquire) &&
         pUsage.Tick.load(std::memory_order_relaxed) + UsageLifetimeMs >= pNow;
}

std::optional<int> ToNumber(TStringView pText) {
  const std::string text = ToUtf8(Trim(pText));
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

int AskProcessorCount() {
  constexpr DWORD longest = 16;
  TString text(longest, u'\0');
  const DWORD length =
      Api().GetEnvironmentVariableW(W(u"NUMBER_OF_PROCESSORS"), WBuffer(text), longest);
  if (length > 0 && length < longest) {
    text.resize(length);
    if (const std::optional<int> count = ToNumber(text)) return *count;
  }
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

constexpr int NotAsked = std::numeric_limits<int>::min();
std::atomic<int> gCpuCount{NotAsked};

}  // namespace

int GetCPUCount() {
  int count = gCpuCount.load(std::memory_order_relaxed);
  if (count == NotAsked) gCpuCount = count = AskProcessorCount();
  return count;
}

int GetCPUUsage() {
  TUsage& usage = Usage();
  const std::uint64_t now = Api().GetTickCount64();
  if (!IsFresh(usage, now)) {
    const std::lock_guard guard(usage.Lock);
    if (!IsFresh(usage, now)) {
      usage.Percent = static_cast<int>(std::lrint(Measure(usage)));
      usage.Tick = now;
      usage.IsKnown.store(true, std::memory_order_release);
    }
  }
  return std::max(0, usage.Percent.load(std::memory_order_relaxed));
}

void detail::ResetCpuCaches() {
  TUsage& usage = Usage();
  const std::lock_guard guard(usage.Lock);
  usage.IsKnown = false;
  usage.Times = {};
  usage.Counters.reset();
  gCpuCount = NotAsked;
}

}  // namespace oak
