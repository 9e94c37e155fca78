// What an item costs: time to make it and memory to keep it.
#include <malloc.h>

#include "bench/common/BenchData.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/OakItemIdList.h"

namespace {

using namespace oak;

TString PathOf(const TString& name) { return u"C:\\data\\" + name; }

void MakeFromPath(benchmark::State& state) {
  const std::vector<TString>& names = bench::Names();
  std::vector<TString> copies;
  bench::Compare(
      state,
      [&] {
        std::vector<Ref<IItemIdList>> items;
        items.reserve(names.size());
        for (const TString& name : names) items.push_back(TOakItemIdList::Create(PathOf(name)));
        benchmark::DoNotOptimize(items.data());
      },
      [&] {
        copies.clear();
        for (const TString& name : names) copies.push_back(PathOf(name));
        benchmark::DoNotOptimize(copies.data());
      });
}
BENCHMARK(MakeFromPath)->Unit(benchmark::kMillisecond);

void BytesOfUnresolvedItem(benchmark::State& state) {
  const std::vector<TString>& names = bench::Names();
  double bytes = 0;
  for (auto _ : state) {
    std::size_t text = 0;
    std::vector<Ref<IItemIdList>> items;
    items.reserve(names.size());
    const std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
    for (const TString& name : names) {
      const TString path = PathOf(name);
      text += path.size() * sizeof(char16_t);
      items.push_back(TOakItemIdList::Create(path));
    }
    const std::size_t after = mallinfo2().uordblks + mallinfo2().hblkhd;
    bytes = static_cast<double>(after - before - text) / static_cast<double>(names.size());
  }
  state.counters["bytes_beyond_text"] = bytes;
}
BENCHMARK(BytesOfUnresolvedItem)->Unit(benchmark::kMillisecond);

void SamePlace(benchmark::State& state) {
  const Ref<IItemIdList> a = TOakItemIdList::Create(u"C:\\Users\\Someone\\Documents\\Letters");
  const Ref<IItemIdList> b = TOakItemIdList::Create(u"c:\\users\\someone\\documents\\letters\\");
  for (auto _ : state) benchmark::DoNotOptimize(a->Equals(b, ilcDisplay));
}
BENCHMARK(SamePlace);

}  // namespace
