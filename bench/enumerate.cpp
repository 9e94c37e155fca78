// How fast the cursor lists a folder, held against bare reads of the directory.
#include <dirent.h>
#include <sys/stat.h>

#include <filesystem>

#include "bench/common/BenchData.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/Console.h"

namespace {

using namespace oak;

std::size_t ReadBare(const std::string& folder, bool withStat) {
  std::size_t length = 0;
  DIR* directory = opendir(folder.c_str());
  if (!directory) return 0;
  while (const dirent* entry = readdir(directory)) {
    length += __builtin_strlen(entry->d_name);
    struct stat info;
    if (withStat && fstatat(dirfd(directory), entry->d_name, &info, 0) == 0)
      length += static_cast<std::size_t>(info.st_size);
  }
  closedir(directory);
  return length;
}

void Names(benchmark::State& state) {
  const std::string folder = bench::Folder();
  const Ref<IItemIdList> item = TOakItemIdList::Create(PathFromArgument(folder));
  std::size_t count = 0;
  bench::Compare(
      state,
      [&] {
        TFolderTrek cursor;
        cursor.SetFolderIdList(item);
        std::size_t length = 0;
        count = 0;
        while (cursor.Next()) {
          length += cursor.GetShellObjectName(true).size();
          ++count;
        }
        benchmark::DoNotOptimize(length);
      },
      [&] { benchmark::DoNotOptimize(ReadBare(folder, false)); });
  state.counters["objects"] = static_cast<double>(count);
}
BENCHMARK(Names)->Unit(benchmark::kMillisecond);

void ItemsOnly(benchmark::State& state) {
  const std::string folder = bench::Folder();
  const Ref<IItemIdList> item = TOakItemIdList::Create(PathFromArgument(folder));
  bench::Compare(
      state,
      [&] {
        TFolderTrek cursor;
        cursor.SetFolderIdList(item);
        while (cursor.Next()) benchmark::DoNotOptimize(cursor.GetItemIdList().Get());
      },
      [&] { benchmark::DoNotOptimize(ReadBare(folder, false)); });
}
BENCHMARK(ItemsOnly)->Unit(benchmark::kMillisecond);

void NamesAndSizes(benchmark::State& state) {
  const std::string folder = bench::Folder();
  const Ref<IItemIdList> item = TOakItemIdList::Create(PathFromArgument(folder));
  bench::Compare(
      state,
      [&] {
        TFolderTrek cursor;
        cursor.SetFolderIdList(item);
        std::int64_t total = 0;
        while (cursor.Next())
          total += cursor.GetFileSize() + static_cast<std::int64_t>(cursor.GetLastChangeDate());
        benchmark::DoNotOptimize(total);
      },
      [&] { benchmark::DoNotOptimize(ReadBare(folder, true)); });
}
BENCHMARK(NamesAndSizes)->Unit(benchmark::kMillisecond);

std::size_t WalkTree(const Ref<IItemIdList>& folder) {
  TFolderTrek cursor;
  cursor.SetFolderIdList(folder);
  std::size_t count = 0;
  while (cursor.Next()) {
    ++count;
    if (cursor.IsFolder()) count += WalkTree(cursor.GetAbsoluteItemIdList());
  }
  return count;
}

void WholeTree(benchmark::State& state) {
  const std::string tree = bench::Tree();
  const Ref<IItemIdList> item = TOakItemIdList::Create(PathFromArgument(tree));
  std::size_t count = 0;
  bench::Compare(
      state, [&] { count = WalkTree(item); },
      [&] {
        std::size_t files = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(tree))
          files += entry.is_directory() ? 0u : 1u;
        benchmark::DoNotOptimize(files);
      });
  state.counters["objects"] = static_cast<double>(count);
}
BENCHMARK(WholeTree)->Unit(benchmark::kMillisecond);

}  // namespace
