// The column texts of a folder as a list asks for them: page by page, what is visible first.
#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <filesystem>

#include "bench/common/BenchData.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.ShellColumns.h"
#include "oak/namespace/Oak.Shell.Types.ColumnInfo.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/Console.h"

namespace {

using namespace oak;

constexpr std::size_t PageRows = 40;

/// A folder's objects, read once, and the numbers of the columns that it shows by default.
struct TListing {
  explicit TListing(const std::string& folder = bench::Folder()) {
    Cursor.SetShowErrorMessages(false);
    Cursor.SetFolderIdList(TOakItemIdList::Create(PathFromArgument(folder)));
    while (Cursor.Next()) Items.push_back(Cursor.GetItemIdList());
    for (int number = 0; Cursor.GetShColumnIdFromColumnNumber(number).IsValid(); ++number) {
      TColumnInfo info;
      Cursor.GetColumnInfo(number, info);
      if (info.fVisibleByDefault) Columns.push_back(number);
    }
  }
  /// Characters of all texts of some rows.
  std::size_t ReadTexts(std::size_t first, std::size_t count) {
    std::size_t length = 0;
    const std::size_t end = std::min(first + count, Items.size());
    for (std::size_t row = first; row < end; ++row) {
      Cursor.SetItemIdList(Items[row]);
      for (const int number : Columns) length += Cursor.GetColumnText(number, false).size();
    }
    return length;
  }

  TFolderTrek Cursor;
  std::vector<Ref<IItemIdList>> Items;
  std::vector<int> Columns;
};

/// Each page is another part of the folder, so that nothing is warm but the directory itself.
void OnePage(benchmark::State& state) {
  TListing listing;
  std::size_t first = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(listing.ReadTexts(first, PageRows));
    first = first + PageRows < listing.Items.size() ? first + PageRows : 0;
  }
  state.counters["columns"] = static_cast<double>(listing.Columns.size());
  state.counters["row_us"] = benchmark::Counter(
      static_cast<double>(PageRows),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(OnePage)->Unit(benchmark::kMicrosecond);

/// All rows; the yardstick looks each file up once, as no program can do without.
void AllPages(benchmark::State& state) {
  TListing listing;
  const std::string folder = bench::Folder();
  bench::Compare(
      state,
      [&] {
        std::size_t length = 0;
        for (std::size_t first = 0; first < listing.Items.size(); first += PageRows)
          length += listing.ReadTexts(first, PageRows);
        benchmark::DoNotOptimize(length);
      },
      [&] {
        std::int64_t total = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
          struct stat info {};
          if (::stat(entry.path().c_str(), &info) == 0) total += info.st_size;
        }
        benchmark::DoNotOptimize(total);
      });
  state.counters["objects"] = static_cast<double>(listing.Items.size());
}
BENCHMARK(AllPages)->Unit(benchmark::kMillisecond)->Iterations(1);

/// The sizes of pictures, for which each file is opened; the yardstick opens and reads it, too.
void Dimensions(benchmark::State& state) {
  const std::string folder = bench::Pictures();
  TListing listing(folder);
  listing.Columns = {listing.Cursor.GetIndexOfShColumnId(TShellColumns::Image_Dimensions())};
  if (listing.Columns.front() < 0) return state.SkipWithError("no such column");
  bench::Compare(
      state, [&] { benchmark::DoNotOptimize(listing.ReadTexts(0, listing.Items.size())); },
      [&] {
        std::array<char, 1024> bytes;
        std::size_t total = 0;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
          std::FILE* file = std::fopen(entry.path().string().c_str(), "rb");
          if (!file) continue;
          std::setvbuf(file, nullptr, _IONBF, 0);
          total += std::fread(bytes.data(), 1, bytes.size(), file);
          std::fclose(file);
        }
        benchmark::DoNotOptimize(total);
      });
  state.counters["objects"] = static_cast<double>(listing.Items.size());
}
BENCHMARK(Dimensions)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
