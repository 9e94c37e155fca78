// Numbers of icons by extension, and the icons themselves.
#include <unordered_map>

#include "bench/common/BenchData.h"
#include "oak/namespace/Oak.Shell.SystemImageList.h"

namespace {

using namespace oak;

constexpr std::size_t LookUps = 100'000;

/// Extensions as a folder of mixed files has them: few, in any order.
std::vector<TString> Extensions() {
  const TStringView known[] = {u".txt", u".jpg", u".pdf", u".cpp", u".h",   u".mp3", u".docx",
                               u".zip", u".png", u".exe", u".dll", u".log", u".xml", u".md"};
  std::vector<TString> extensions;
  for (std::size_t i = 0; i < LookUps; ++i) extensions.emplace_back(known[i * 7919 % 14]);
  return extensions;
}

/// What all rows of a folder of 100,000 files ask for, held against a table without a lock.
void IconOfExtension(benchmark::State& state) {
  const std::vector<TString> extensions = Extensions();
  std::unordered_map<TString, int> table;
  for (const TString& extension : extensions) table.emplace(extension, 1);
  bench::Compare(
      state,
      [&] {
        int sum = 0;
        for (const TString& extension : extensions)
          sum += TOakSystemImageList::GetIndexFromExtension(extension, si_Small, false);
        benchmark::DoNotOptimize(sum);
      },
      [&] {
        int sum = 0;
        for (const TString& extension : extensions) sum += table.find(extension)->second;
        benchmark::DoNotOptimize(sum);
      });
}
BENCHMARK(IconOfExtension)->Unit(benchmark::kMillisecond);

void TypeOfExtension(benchmark::State& state) {
  const std::vector<TString> extensions = Extensions();
  for (auto _ : state)
    for (const TString& extension : extensions)
      benchmark::DoNotOptimize(TOakSystemImageList::GetFileType(extension));
}
BENCHMARK(TypeOfExtension)->Unit(benchmark::kMillisecond);

/// The first time that an extension is seen.
void IconOfNewExtension(benchmark::State& state) {
  TOakSystemImageList::ForgetIcons();
  int number = 0;
  for (auto _ : state)
    benchmark::DoNotOptimize(
        TOakSystemImageList::GetIndexFromExtension(u".new" + IntToStr(++number), si_Small, false));
}
BENCHMARK(IconOfNewExtension)->Unit(benchmark::kMicrosecond);

/// One icon as a row draws it, scaled for a dense monitor.
void ScaledIcon(benchmark::State& state) {
  const TOakSystemImageList list(nullptr, 28);
  const int folder = TOakSystemImageList::GetFolderIconNumber();
  TBitmap icon;
  for (auto _ : state) {
    list.GetBitmap(folder, icon);
    benchmark::DoNotOptimize(icon.ScanLine(0));
  }
}
BENCHMARK(ScaledIcon)->Unit(benchmark::kMicrosecond);

}  // namespace
