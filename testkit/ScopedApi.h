// Replacing single functions of the platform for the span of a test.
#pragma once

#include <utility>

#include "oak/platform/Api.h"

namespace oak::testkit {

/// Puts a function of the test in the place of an entry and restores the entry
/// in the end. Not while another thread may call it.
///
///   TScopedApi sleep(Api().Sleep, [&](DWORD ms) { slept += ms; });
///   TScopedApi missing(Api().SHDoDragDrop, nullptr);   // the system lacks it
template <class TEntry>
class TScopedApi {
 public:
  TScopedApi(TEntry& entry, typename TEntry::TReplacement replacement)
      : fEntry(entry), fFunction(entry.Function()), fReplacement(entry.Replacement()) {
    if (!replacement) fEntry.SetFunction(nullptr);
    fEntry.SetReplacement(std::move(replacement));
  }
  ~TScopedApi() {
    fEntry.SetFunction(fFunction);
    fEntry.SetReplacement(std::move(fReplacement));
  }
  TScopedApi(const TScopedApi&) = delete;
  TScopedApi& operator=(const TScopedApi&) = delete;

 private:
  TEntry& fEntry;
  typename TEntry::TFunction fFunction;
  typename TEntry::TReplacement fReplacement;
};

}  // namespace oak::testkit
