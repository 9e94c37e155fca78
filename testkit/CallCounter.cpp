#include "testkit/CallCounter.h"

#include <numeric>

namespace oak::testkit {

bool TCallCounter::BeforeCall(const char* name) {
  const std::lock_guard guard(fLock);
  ++fCounts[name];
  return true;
}

int TCallCounter::Total() const {
  const std::lock_guard guard(fLock);
  return std::accumulate(fCounts.begin(), fCounts.end(), 0,
                         [](int sum, const auto& entry) { return sum + entry.second; });
}

int TCallCounter::Count(const std::string& name) const {
  const std::lock_guard guard(fLock);
  const auto found = fCounts.find(name);
  return found == fCounts.end() ? 0 : found->second;
}

std::string TCallCounter::ToString() const {
  const std::lock_guard guard(fLock);
  std::string text;
  for (const auto& [name, count] : fCounts) text += name + ": " + std::to_string(count) + "\n";
  return text;
}

void TCallCounter::Reset() {
  const std::lock_guard guard(fLock);
  fCounts.clear();
}

}  // namespace oak::testkit
