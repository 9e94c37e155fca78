// A list view of many rows: time of each step, the next paint included, and bytes a row. On the
// widget set of the running system, without a benchmark library, so that it runs everywhere.
//
//   bench-rows [COUNT]    default 100,000
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "oak/framework/Application.h"
#include "oak/framework/Forms.h"
#include "oak/framework/ListView.h"

namespace {

// --- the heap, counted -------------------------------------------------------------------------

constexpr std::size_t HeaderSize = alignof(std::max_align_t);
constexpr std::size_t BlockCost = 16;  // what an allocator adds to a block, about
std::atomic<std::size_t> HeapBytes{0};

void* Allocate(std::size_t size) {
  void* const block = std::malloc(size + HeaderSize);
  if (!block) throw std::bad_alloc();
  *static_cast<std::size_t*>(block) = size;
  HeapBytes += size + BlockCost;
  return static_cast<std::byte*>(block) + HeaderSize;
}

void Free(void* memory) noexcept {
  if (!memory) return;
  void* const block = static_cast<std::byte*>(memory) - HeaderSize;
  HeapBytes -= *static_cast<std::size_t*>(block) + BlockCost;
  std::free(block);
}

}  // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void operator delete(void* memory) noexcept { Free(memory); }
void operator delete[](void* memory) noexcept { Free(memory); }
void operator delete(void* memory, std::size_t) noexcept { Free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Free(memory); }

namespace {

using namespace oak;
using TClock = std::chrono::steady_clock;

/// Counts what it is asked for.
class TCountingList final : public TCustomListView {
 public:
  using TCustomListView::TCustomListView;
  int TextRequests = 0;

 protected:
  TString GetColumnText(TListItem* item, int column) override {
    ++TextRequests;
    return TCustomListView::GetColumnText(item, column);
  }
};

template <class TStep>
void Measure(const char* what, TCountingList& list, TStep step) {
  list.TextRequests = 0;
  const TClock::time_point start = TClock::now();
  step();
  const TClock::time_point done = TClock::now();
  Application().ProcessMessages();
  list.Update();
  const std::chrono::duration<double, std::milli> time = done - start, paint = TClock::now() - done;
  std::printf("%-18s %9.2f ms  and paint %7.2f ms, %4d texts asked for\n", what, time.count(),
              paint.count(), list.TextRequests);
}

/// Ten digits, scattered, in both the text and its order.
TString CaptionOf(int i) {
  TString text(IntToStr(static_cast<std::int64_t>(i) * 7919 % 1'000'003));
  return u"file " + TString(10 - std::min<std::size_t>(text.size(), 10), u'0') + text + u".txt";
}

void Fill(TCountingList& list, int count) {
  TListItems& items = list.Items();
  items.BeginUpdate();
  items.Reserve(count);
  for (int i = 0; i < count; ++i) items.Add()->SetCaption(CaptionOf(i));
  items.EndUpdate();
}

std::size_t TextBytes(TCountingList& list) {
  std::size_t bytes = 0;
  for (TListItem* const item : list.Items())
    bytes += (item->GetStoredCaption().capacity() + 1) * sizeof(char16_t) + BlockCost;
  return bytes;
}

void MeasureAll(TCountingList& list, int count) {
  const std::size_t before = HeapBytes;
  Measure("fill", list, [&] { Fill(list, count); });
  std::printf("%-18s %9.1f bytes a row beyond its text\n", "memory",
              static_cast<double>(HeapBytes - before - TextBytes(list)) / count);
  Measure("sort", list, [&] {
    list.CustomSort([](TListItem* a, TListItem* b,
                       LPARAM) { return a->GetStoredCaption().compare(b->GetStoredCaption()); },
                    0);
  });
  Measure("select all", list, [&] { list.SelectAll(); });
  Measure("scroll to the end", list, [&] { list.Items()[count - 1]->MakeVisible(false); });
  Measure("one alone", list, [&] {
    list.ClearSelection();
    list.SetSelected(list.Items()[count / 2]);
  });
  Measure("delete half", list, [&] {
    int number = 0;
    list.Items().DeleteIf([&](TListItem&) { return ++number % 2 == 0; });
  });
  Measure("clear", list, [&] { list.Items().Clear(); });
}

}  // namespace

int main(int argc, char** argv) {
  const int count = argc > 1 ? std::atoi(argv[1]) : 100'000;
  if (count < 2) {
    std::fprintf(stderr, "bench-rows: COUNT must be a number above 1\n");
    return 64;
  }
  TForm form;
  form.SetBounds(50, 50, 800, 600);
  TCountingList list(&form);
  list.SetParent(&form);
  list.SetAlign(alClient);
  list.SetViewStyle(vsReport);
  list.SetMultiSelect(true);
  list.Columns().Add()->SetWidth(300);
  form.Show();
  Application().ProcessMessages();
  std::printf("%d rows\n", count);
  MeasureAll(list, count);
  return 0;
}
