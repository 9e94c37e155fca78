// background: counts what lies below a directory, with pause, resume and cancel from the keyboard.
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <thread>

#include "Scan.h"
#include "oak/framework/MainThreadQueue.h"
#include "oak/framework/Thread.h"
#include "oak/platform/Console.h"

using namespace oak;

namespace {

enum TExitCode { ecDone = 0, ecFailed = 1, ecCancelled = 2 };

constexpr DWORD DisplayIntervalMs = 200;

constexpr char Usage[] =
    "usage: background [PATH]\n"
    "Counts the files below a directory (default: the current one) while you watch.\n"
    "Type p, r or c and Enter to pause, resume or cancel.\n";

void Obey(TScan& scan, const std::string& command) {
  if (command == "p") scan.SetPaused(true);
  if (command == "r") scan.SetPaused(false);
  if (command == "c") scan.Cancel();
}

/// Reads commands on a thread of its own, since nothing ends a read from a terminal, and lets the
/// main thread obey them.
void ReadCommands(std::weak_ptr<TScan> scan) {
  std::thread([scan] {
    for (std::string line; std::getline(std::cin, line);) {
      TThread::Queue(nullptr, [scan, line] {
        if (const std::shared_ptr<TScan> running = scan.lock()) Obey(*running, line);
      });
    }
  }).detach();
}

/// The directory as the library writes it; a relative path is taken from the current directory.
TString PlaceOf(const std::string& argument) {
  std::error_code error;
  const std::filesystem::path path = std::filesystem::absolute(argument, error);
  return PathFromArgument(
      std::filesystem::is_directory(path, error) ? path.lexically_normal().string() : argument);
}

void ShowProgress(const TScan& scan) {
  const TTotals& totals = scan.GetTotals();
  std::string path = ToUtf8(scan.GetLastPath());
  constexpr std::size_t longest = 40;
  if (path.size() > longest) path = "..." + path.substr(path.size() - longest);
  std::printf("\r\x1b[K%s %lld folders, %lld files, %.1f MB, %lld waiting  %s",
              scan.GetPaused() ? "[paused] " : "", static_cast<long long>(totals.Folders),
              static_cast<long long>(totals.Files), static_cast<double>(totals.Bytes) / 1e6,
              static_cast<long long>(scan.GetPending()), path.c_str());
  std::fflush(stdout);
}

TExitCode ShowResult(const TScan& scan, std::chrono::steady_clock::duration time) {
  const TTotals& totals = scan.GetTotals();
  const double seconds = std::chrono::duration<double>(time).count();
  std::printf("\r\x1b[K%s: %lld folders, %lld files, %lld bytes, %lld unreadable, %.2f s\n",
              scan.IsCancelled() ? "cancelled" : "done", static_cast<long long>(totals.Folders),
              static_cast<long long>(totals.Files), static_cast<long long>(totals.Bytes),
              static_cast<long long>(totals.Unreadable), seconds);
  return scan.IsCancelled() ? ecCancelled : ecDone;
}

TExitCode Run(const std::string& place) {
  const Ref<IItemIdList> folder = TOakItemIdList::Parse(PlaceOf(place), nullptr, true);
  if (folder->IsInvalid() || !folder->IsFolder()) {
    std::fprintf(stderr, "background: \"%s\" is no directory\n", place.c_str());
    return ecFailed;
  }
  InitializeFramework();
  const auto start = std::chrono::steady_clock::now();
  const auto scan = std::make_shared<TScan>();
  scan->Start(folder);
  ReadCommands(scan);
  while (!scan->IsDone()) {
    TThread::CheckSynchronize(DisplayIntervalMs);
    ShowProgress(*scan);
  }
  return ShowResult(*scan, std::chrono::steady_clock::now() - start);
}

}  // namespace

int main(int argc, char** argv) try {
  const std::vector<std::string> arguments = ConsoleArguments(argc, argv);
  if (arguments.size() > 1 || (!arguments.empty() && arguments[0].starts_with('-'))) {
    std::fputs(Usage, arguments.size() == 1 && arguments[0] == "--help" ? stdout : stderr);
    return arguments.size() == 1 && arguments[0] == "--help" ? ecDone : ecFailed;
  }
  return Run(arguments.empty() ? "." : arguments[0]);
} catch (const std::exception& error) {
  std::fprintf(stderr, "background: %s\n", error.what());
  return ecFailed;
}
