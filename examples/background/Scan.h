// A scan of a directory with all below it, in the background.
#pragma once

#include <cstdint>
#include <functional>

#include "oak/namespace/OakItemIdList.h"
#include "oak/threading/Oak.Threading.h"

/// What a scan has found so far.
struct TTotals {
  std::int64_t Folders = 0;
  std::int64_t Files = 0;
  std::int64_t Bytes = 0;
  std::int64_t Unreadable = 0;
};

/// Scans on a pool of its own, a work item for each directory. Everything but the items' work
/// happens on the main thread, so there is nothing to lock.
class TScan {
 public:
  TScan();
  /// Ends the work that still runs; returns when the pool's threads are gone.
  ~TScan();

  void Start(const oak::Ref<oak::IItemIdList>& folder);
  /// Stops where it is until it is resumed; work in progress holds at its next look.
  void SetPaused(bool paused);
  bool GetPaused() const { return fPaused; }
  /// Drops all work. What was found stays.
  void Cancel();

  bool IsDone() const { return fPending == 0; }
  bool IsCancelled() const { return fCancelled; }
  const TTotals& GetTotals() const { return fTotals; }
  /// Path of the directory that was finished last.
  const oak::TString& GetLastPath() const { return fLastPath; }
  std::int64_t GetPending() const { return fPending; }

 private:
  friend class TFolderItem;
  void Add(oak::Ref<oak::IItemIdList> folder);
  void FolderDone(const class TFolderItem& item);

  oak::Ref<oak::IWorkerThreadPool> fPool;
  oak::CancellationToken fToken;
  TTotals fTotals;
  oak::TString fLastPath;
  std::int64_t fPending = 0;
  bool fPaused = false;
  bool fCancelled = false;
};
