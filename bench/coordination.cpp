// Going through a long history, a hub with many controls, and big selections.
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "bench/common/BenchData.h"
#include "oak/coordination/OakSelectionList.h"
#include "oak/coordination/ShellLink.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/Console.h"

namespace {

using namespace oak;

/// A directory with folders "0", "1", ... and in the first of them as many files.
class TBenchTree {
 public:
  explicit TBenchTree(int count) {
    namespace fs = std::filesystem;
    fRoot = fs::temp_directory_path() / ("oak-bench-coordination-" + std::to_string(::getpid()));
    for (int i = 0; i < count; ++i) {
      fs::create_directories(fRoot / std::to_string(i));
      std::ofstream(fRoot / "0" / (std::to_string(i) + ".txt"));
    }
  }
  ~TBenchTree() {
    std::error_code ignored;
    std::filesystem::remove_all(fRoot, ignored);
  }
  TString Path(const std::string& name) const { return PathFromArgument((fRoot / name).string()); }

 private:
  std::filesystem::path fRoot;
};

int CountOf(int full) { return std::getenv("OAK_BENCH_SMOKE") ? full / 100 : full; }

const TBenchTree& Tree() {
  static const TBenchTree tree(CountOf(10000));
  return tree;
}

/// Items that are found already, as those of a navigation are.
const std::vector<Ref<IItemIdList>>& Places() {
  static const std::vector<Ref<IItemIdList>> places = [] {
    std::vector<Ref<IItemIdList>> made;
    for (int i = 0; i < CountOf(10000); ++i) {
      made.push_back(TOakItemIdList::Create(Tree().Path(std::to_string(i))));
      made.back()->IsInvalid();
      made.back()->SpecialFolder();
    }
    return made;
  }();
  return places;
}

/// Fills a history and goes back to its first place, step by step.
void HistoryThereAndBack(benchmark::State& state) {
  const auto& places = Places();
  for (auto _ : state) {
    TPidlHistory history;
    for (const Ref<IItemIdList>& place : places) history.Add(place);
    while (history.GetPosition() > 0) {
      history.MoveBack(1);
      benchmark::DoNotOptimize(history.GetCurrentFolderItemIDList());
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(places.size()));
}
BENCHMARK(HistoryThereAndBack)->Unit(benchmark::kMillisecond);

class TCountingControl : public TObject, public IOakShellControl {
 public:
  void setShellLink(TOakShellLink*) override {}
  TOakShellLink* getShellLink() override { return nullptr; }
  void PathChanged(const Ref<IItemIdList>& pItemIdList) override {
    ++Heard;
    Last = pItemIdList;
  }
  void FileChanged(const Ref<IItemIdList>&, const Ref<IItemIdList>&) override { ++Heard; }
  void SelectAll() override { ++Heard; }
  void Refresh(TRefreshLevel, const Ref<IItemIdList>&) override { ++Heard; }
  bool GoUp() override { return false; }

  std::int64_t Heard = 0;
  Ref<IItemIdList> Last;
};

/// A broadcast to 100 controls; the yardstick is the calls alone.
void BroadcastToControls(benchmark::State& state) {
  std::vector<TCountingControl> controls(100);
  TOakShellLink link;
  for (TCountingControl& control : controls) link.RegisterShellControl(&control);
  bench::Compare(
      state,
      [&] {
        for (int i = 0; i < 100; ++i) link.Refresh(rfSmart);
      },
      [&] {
        for (int i = 0; i < 100; ++i)
          for (TCountingControl& control : controls)
            static_cast<IOakShellControl&>(control).Refresh(rfSmart, nullptr);
      });
  state.SetItemsProcessed(state.iterations() * 100);
}
BENCHMARK(BroadcastToControls)->Unit(benchmark::kMicrosecond);

/// A navigation to another place and back, each told to 99 controls.
void NavigateControls(benchmark::State& state) {
  std::vector<TCountingControl> controls(100);
  TOakShellLink link;
  for (TCountingControl& control : controls) link.RegisterShellControl(&control);
  std::size_t next = 0;
  for (auto _ : state) {
    link.PathChanged(&controls[0], Places()[++next % 2]);
    // Otherwise the history of this loop would grow without end.
    if (link.GetCount() > 1000) link.Clear();
  }
}
BENCHMARK(NavigateControls)->Unit(benchmark::kMicrosecond);

/// Ticks all files of a folder one by one in one update, unticks one and ticks it again.
void TickAllFiles(benchmark::State& state) {
  const int count = CountOf(10000);
  TStringArray files;
  for (int i = 0; i < count; ++i) files.push_back(Tree().Path("0/" + std::to_string(i) + ".txt"));
  for (TString& file : files)
    for (char16_t& c : file)
      if (c == u'/') c = u'\\';
  for (auto _ : state) {
    TOakSelectionList list;
    list.BeginUpdate();
    for (const TString& file : files) list.AddPathToSelection(file);
    list.EndUpdate();
    list.RemovePathFromSelection(files.front());
    list.AddPathToSelection(files.front());
    if (list.GetCount() != 1) state.SkipWithError("the folder did not fold");
  }
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(TickAllFiles)->Unit(benchmark::kMillisecond);

}  // namespace
