// SortLogical: a radix sort over eight bytes of the keys at a time.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <utility>

#include "oak/base/LogicalKey.h"
#include "oak/base/LogicalOrder.h"

namespace oak {

namespace {
constexpr std::size_t kStep = 8;
constexpr std::size_t kSmallRange = 24;   // sorted by whole keys
constexpr std::size_t kRadixRange = 512;  // from here on radix sort pays

/// A name under way: eight bytes of its key, and which name it is.
struct TEntry {
  std::uint64_t prefix;
  std::uint32_t index;
};

/// The keys of all names, one behind the other.
class TKeyArena {
 public:
  template <class T>
  explicit TKeyArena(std::span<const T> names) : fOffsets(names.size() + 1) {
    std::size_t used = 0;
    Reserve(0, EstimatedSize(names));
    for (std::size_t i = 0; i < names.size(); ++i) {
      fOffsets[i] = used;
      const std::size_t limit = used + detail::LogicalKeyLimit(names[i].size()) + kStep;
      if (limit > fCapacity) Reserve(used, limit + fCapacity);
      used = static_cast<std::size_t>(detail::WriteLogicalKey(fBytes.get() + used, names[i]) -
                                      fBytes.get());
    }
    fOffsets[names.size()] = used;
  }

  std::size_t Length(std::uint32_t index) const noexcept {
    return fOffsets[index + 1u] - fOffsets[index];
  }
  /// Eight bytes from `depth` on, the first one highest, zeros behind the end.
  std::uint64_t Prefix(std::uint32_t index, std::size_t depth) const noexcept {
    const std::size_t left = Length(index) - depth;
    const std::uint8_t* p = fBytes.get() + fOffsets[index] + depth;
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < kStep; ++i) value = (value << 8) | p[i];
    return left >= kStep ? value : value & ~(~std::uint64_t{0} >> (left * 8));
  }
  /// The order of two keys that are equal up to `depth`.
  int Compare(std::uint32_t a, std::uint32_t b, std::size_t depth) const noexcept {
    const std::size_t left = std::min(Length(a), Length(b)) - depth;
    return std::memcmp(fBytes.get() + fOffsets[a] + depth, fBytes.get() + fOffsets[b] + depth,
                       left);
  }

 private:
  template <class T>
  static std::size_t EstimatedSize(std::span<const T> names) {
    std::size_t units = 0;
    for (const T& name : names) units += name.size() + 4;
    return units + 4096;
  }
  void Reserve(std::size_t used, std::size_t capacity) {
    auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(capacity);
    if (used > 0) std::memcpy(bytes.get(), fBytes.get(), used);
    // Read together with a key's last bytes, and masked off again.
    std::memset(bytes.get() + used, 0, capacity - used);
    fBytes = std::move(bytes);
    fCapacity = capacity;
  }

  std::unique_ptr<std::uint8_t[]> fBytes;
  std::size_t fCapacity = 0;
  std::vector<std::size_t> fOffsets;
};

/// Sorts by prefix, one byte after the other from the lowest, without the bytes
/// in which all are equal.
class TRadixSorter {
 public:
  void Sort(std::span<TEntry> entries, std::uint64_t different) {
    if (fSpare.size() < entries.size()) fSpare.resize(entries.size());
    TEntry* from = entries.data();
    TEntry* to = fSpare.data();
    for (unsigned shift = 0; shift < 64; shift += 8) {
      if ((different >> shift & 0xFF) == 0) continue;
      Distribute(from, to, entries.size(), shift);
      std::swap(from, to);
    }
    if (from != entries.data()) std::copy_n(from, entries.size(), entries.data());
  }

 private:
  static void Distribute(const TEntry* from, TEntry* to, std::size_t count, unsigned shift) {
    std::array<std::size_t, 256> starts{};
    for (std::size_t i = 0; i < count; ++i) ++starts[from[i].prefix >> shift & 0xFF];
    std::size_t next = 0;
    for (std::size_t& start : starts) next += std::exchange(start, next);
    for (std::size_t i = 0; i < count; ++i) to[starts[from[i].prefix >> shift & 0xFF]++] = from[i];
  }

  std::vector<TEntry> fSpare;
};

template <class T>
class TLogicalSorter {
 public:
  explicit TLogicalSorter(std::span<const T> names) : fNames(names), fKeys(names) {
    fEntries.resize(names.size());
    for (std::size_t i = 0; i < names.size(); ++i) fEntries[i] = {0, static_cast<std::uint32_t>(i)};
  }

  std::vector<std::uint32_t> Run() {
    // Ranges whose keys are equal up to a depth wait here: recursion could go as
    // deep as the names are long.
    fRanges.push_back({0, fEntries.size(), 0});
    while (!fRanges.empty()) {
      const TRange range = fRanges.back();
      fRanges.pop_back();
      SortRange(range);
    }
    std::vector<std::uint32_t> order(fEntries.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = fEntries[i].index;
    return order;
  }

 private:
  struct TRange {
    std::size_t begin, end, depth;
  };

  bool IsNameBefore(std::uint32_t a, std::uint32_t b) const {
    const TStringView x = fNames[a];
    const TStringView y = fNames[b];
    const int order = x.compare(y);
    return order != 0 ? order < 0 : a < b;
  }

  void SortSmall(std::span<TEntry> entries, std::size_t depth) {
    for (TEntry& entry : entries) entry.prefix = fKeys.Prefix(entry.index, depth);
    std::sort(entries.begin(), entries.end(), [&](const TEntry& a, const TEntry& b) {
      if (a.prefix != b.prefix) return a.prefix < b.prefix;
      const int order = fKeys.Compare(a.index, b.index, depth);
      return order != 0 ? order < 0 : IsNameBefore(a.index, b.index);
    });
  }

  /// Reads the next bytes of the keys, from the first on that differs. Returns the
  /// bits in which they differ, 0 at the keys' end.
  std::uint64_t LoadPrefixes(std::span<TEntry> entries, std::size_t& depth) const {
    for (;;) {
      const std::uint64_t first = fKeys.Prefix(entries.front().index, depth);
      std::uint64_t different = 0;
      for (TEntry& entry : entries) {
        entry.prefix = fKeys.Prefix(entry.index, depth);
        different |= entry.prefix ^ first;
      }
      const auto common = static_cast<std::size_t>(std::countl_zero(different)) / 8;
      if (common < kStep / 2) return different;
      if (different == 0 && fKeys.Length(entries.front().index) <= depth + kStep) return 0;
      depth += common;
    }
  }

  void SortRange(TRange range) {
    const auto entries = std::span(fEntries).subspan(range.begin, range.end - range.begin);
    if (entries.size() < 2) return;
    if (entries.size() <= kSmallRange) return SortSmall(entries, range.depth);
    const std::uint64_t different = LoadPrefixes(entries, range.depth);
    if (different == 0) {
      std::sort(entries.begin(), entries.end(), [this](const TEntry& a, const TEntry& b) {
        return IsNameBefore(a.index, b.index);
      });
      return;
    }
    if (entries.size() >= kRadixRange)
      fRadix.Sort(entries, different);
    else
      std::sort(entries.begin(), entries.end(),
                [](const TEntry& a, const TEntry& b) { return a.prefix < b.prefix; });
    PushEqualRanges(range);
  }

  void PushEqualRanges(const TRange& range) {
    for (std::size_t begin = range.begin; begin < range.end;) {
      std::size_t end = begin + 1;
      while (end < range.end && fEntries[end].prefix == fEntries[begin].prefix) ++end;
      // Keys that end here are equal as a whole; a depth at their end says so.
      const std::size_t length = fKeys.Length(fEntries[begin].index);
      if (end - begin > 1) fRanges.push_back({begin, end, std::min(range.depth + kStep, length)});
      begin = end;
    }
  }

  std::span<const T> fNames;
  TKeyArena fKeys;
  std::vector<TEntry> fEntries;
  std::vector<TRange> fRanges;
  TRadixSorter fRadix;
};

template <class T>
std::vector<std::uint32_t> Sorted(std::span<const T> names) {
  if (names.size() > UINT32_MAX) throw std::length_error("SortLogical");
  return names.empty() ? std::vector<std::uint32_t>() : TLogicalSorter<T>(names).Run();
}
}  // namespace

std::vector<std::uint32_t> SortLogical(std::span<const TStringView> names) { return Sorted(names); }
std::vector<std::uint32_t> SortLogical(std::span<const TString> names) { return Sorted(names); }

}  // namespace oak
