// Runs a fuzzer without an engine: every seed once, then mutations of them.
//
// The command line is that of libFuzzer as far as it goes:
//   fuzz-<name> [-runs=N] [-max_total_time=SECONDS] [-seed=N] [-timeout=SECONDS] [file or
//   folder]...
// Nothing follows coverage here, so the same seed always gives the same inputs. The input that made
// the process die is written to crash-<seed>-<run>, the one that took too long to timeout-....
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
// Only there when the program is built with a sanitizer.
extern "C" __attribute__((weak)) void __sanitizer_set_death_callback(void (*callback)());

namespace {

using TBytes = std::vector<std::uint8_t>;
using TClock = std::chrono::steady_clock;

constexpr std::size_t kMaxInput = 4096;

struct TOptions {
  std::uint64_t Runs = 20000;
  std::chrono::seconds TotalTime{0};  ///< 0: only the runs count.
  unsigned Seed = 1;
  unsigned Timeout = 10;  ///< Seconds for one input.
  std::vector<std::string> Places;
};

/// What the handlers of a dying process may read: no allocation there.
struct TCurrent {
  const std::uint8_t* Data = nullptr;
  std::size_t Size = 0;
  std::uint64_t Run = 0;
  unsigned Seed = 0;
} gCurrent;

void WriteInput(const char* kind) {
  std::array<char, 64> name{};
  std::snprintf(name.data(), name.size(), "%s-%u-%llu", kind, gCurrent.Seed,
                static_cast<unsigned long long>(gCurrent.Run));
  const int file = open(name.data(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  if (file < 0) return;
  if (write(file, gCurrent.Data, gCurrent.Size) < 0) std::perror("write");
  close(file);
  std::fprintf(stderr, "input of %zu bytes written to %s\n", gCurrent.Size, name.data());
}

void OnDeath() { WriteInput("crash"); }

void OnSignal(int signal) {
  WriteInput(signal == SIGALRM ? "timeout" : "crash");
  std::fprintf(stderr, "fuzzer died of signal %d\n", signal);
  std::_Exit(77);
}

void InstallHandlers() {
  std::signal(SIGALRM, OnSignal);
  std::signal(SIGABRT, OnSignal);
  if (__sanitizer_set_death_callback) {
    __sanitizer_set_death_callback(OnDeath);
    return;  // The sanitizer reports the rest with a trace.
  }
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL}) std::signal(signal, OnSignal);
}

void Execute(const TBytes& input, const TOptions& options) {
  // An exact copy on the heap, so that a read behind the end is found.
  const TBytes copy(input.begin(), input.end());
  gCurrent.Data = copy.data();
  gCurrent.Size = copy.size();
  alarm(options.Timeout);
  LLVMFuzzerTestOneInput(copy.data(), copy.size());
  alarm(0);
  ++gCurrent.Run;
}

class TMutator {
 public:
  TMutator(const std::vector<TBytes>& seeds, unsigned seed) : fSeeds(seeds), fRandom(seed) {}

  TBytes Next() {
    TBytes input = fSeeds[Below(fSeeds.size())];
    for (std::size_t step = 1 + Below(6); step > 0; --step) Mutate(input);
    if (input.size() > kMaxInput) input.resize(kMaxInput);
    return input;
  }

 private:
  std::size_t Below(std::size_t limit) { return limit == 0 ? 0 : fRandom() % limit; }
  auto At(TBytes& input, std::size_t index) {
    return input.begin() + static_cast<std::ptrdiff_t>(index);
  }

  void Mutate(TBytes& input) {
    if (input.empty()) {
      input.resize(1 + Below(8));
      return;
    }
    const std::size_t at = Below(input.size());
    const std::size_t count = std::min(input.size() - at, 1 + Below(16));
    switch (Below(8)) {
      case 0:
        input[at] ^= static_cast<std::uint8_t>(1U << Below(8));
        break;
      case 1:
        input[at] = static_cast<std::uint8_t>(fRandom());
        break;
      case 2:
        input.erase(At(input, at), At(input, at + count));
        break;
      case 3:
        input.insert(At(input, at), count, static_cast<std::uint8_t>(fRandom()));
        break;
      case 4:
        Duplicate(input, at, count);
        break;
      case 5:
        input.resize(at);
        break;
      case 6:
        Splice(input, at);
        break;
      default:
        WriteNumber(input, at);
    }
  }

  void Duplicate(TBytes& input, std::size_t at, std::size_t count) {
    const TBytes block(At(input, at), At(input, at + count));
    input.insert(At(input, Below(input.size() + 1)), block.begin(), block.end());
  }

  void Splice(TBytes& input, std::size_t at) {
    TBytes other = fSeeds[Below(fSeeds.size())];
    const std::size_t from = Below(other.size() + 1);
    input.resize(at);
    input.insert(input.end(), At(other, from), other.end());
  }

  /// Lengths, counts and offsets live at even places and break at their limits.
  void WriteNumber(TBytes& input, std::size_t at) {
    static constexpr std::array<std::uint32_t, 12> kNumbers = {
        0, 1, 2, 3, 0x7F, 0x80, 0xFF, 0x7FFF, 0xFFFF, 0x10000, 0x7FFFFFFF, 0xFFFFFFFF};
    const std::uint32_t number = kNumbers[Below(kNumbers.size())];
    at &= ~std::size_t{1};
    const std::size_t width = std::min(input.size() - at, Below(2) == 0 ? std::size_t{2} : 4);
    for (std::size_t i = 0; i < width; ++i)
      input[at + i] = static_cast<std::uint8_t>(number >> (8 * i));
  }

  const std::vector<TBytes>& fSeeds;
  std::mt19937 fRandom;
};

TBytes ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return TBytes(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::vector<TBytes> ReadSeeds(const std::vector<std::string>& places) {
  std::vector<std::filesystem::path> files;
  for (const std::string& place : places) {
    if (!std::filesystem::is_directory(place)) {
      files.emplace_back(place);
      continue;
    }
    for (const auto& entry : std::filesystem::directory_iterator(place))
      if (entry.is_regular_file()) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());  // The same order on every machine.
  std::vector<TBytes> seeds;
  for (const auto& file : files) seeds.push_back(ReadFile(file));
  return seeds;
}

std::optional<unsigned long long> Number(std::string_view argument, std::string_view name) {
  if (!argument.starts_with(name)) return std::nullopt;
  return std::strtoull(std::string(argument.substr(name.size())).c_str(), nullptr, 10);
}

TOptions ReadOptions(int argc, char** argv) {
  TOptions options;
  bool runsGiven = false;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (const auto runs = Number(argument, "-runs=")) {
      options.Runs = *runs;
      runsGiven = true;
    } else if (const auto time = Number(argument, "-max_total_time=")) {
      options.TotalTime = std::chrono::seconds(*time);
    } else if (const auto seed = Number(argument, "-seed=")) {
      options.Seed = static_cast<unsigned>(*seed);
    } else if (const auto timeout = Number(argument, "-timeout=")) {
      options.Timeout = static_cast<unsigned>(*timeout);
    } else if (!argument.starts_with("-")) {
      options.Places.emplace_back(argument);
    }
  }
  if (options.TotalTime.count() != 0 && !runsGiven) options.Runs = UINT64_MAX;
  return options;
}

}  // namespace

int main(int argc, char** argv) {
  const TOptions options = ReadOptions(argc, argv);
  std::vector<TBytes> seeds = ReadSeeds(options.Places);
  gCurrent.Seed = options.Seed;
  InstallHandlers();

  const TClock::time_point start = TClock::now();
  Execute({}, options);
  for (const TBytes& seed : seeds) Execute(seed, options);
  const std::size_t seedCount = seeds.size();
  if (seeds.empty()) seeds.emplace_back();
  TMutator mutator(seeds, options.Seed);
  while (gCurrent.Run < options.Runs &&
         (options.TotalTime.count() == 0 || TClock::now() - start < options.TotalTime))
    Execute(mutator.Next(), options);

  const std::chrono::duration<double> spent = TClock::now() - start;
  std::printf("%llu runs from %zu seeds in %.1f s\n", static_cast<unsigned long long>(gCurrent.Run),
              seedCount, spent.count());
  return 0;
}
