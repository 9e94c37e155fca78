// A stable sort for comparisons of foreign code. Not for users.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace oak {

/// Merge sort by `isAfter(a, b)`. Whatever that answers, it does no harm: the result is some order
/// then. What is sorted already costs one comparison each.
template <class T, class TIsAfter>
void MergeSort(std::vector<T>& items, const TIsAfter& isAfter) {
  std::vector<T> merged(items.size());
  for (std::size_t width = 1; width < items.size(); width *= 2) {
    for (std::size_t low = 0; low < items.size(); low += 2 * width) {
      const std::size_t middle = std::min(low + width, items.size());
      const std::size_t high = std::min(low + 2 * width, items.size());
      std::size_t left = low;
      std::size_t right = middle;
      // Halves that follow each other already are the common case.
      const bool sorted = middle == high || !isAfter(items[middle - 1], items[middle]);
      for (std::size_t out = low; out < high; ++out) {
        const bool takeRight =
            !sorted && right < high && (left == middle || isAfter(items[left], items[right]));
        merged[out] = sorted ? items[out] : items[takeRight ? right++ : left++];
      }
    }
    items.swap(merged);
  }
}

}  // namespace oak
