#include "Scan.h"

#include <atomic>
#include <vector>

#include "oak/namespace/FolderTrek.h"

using namespace oak;

/// Reads one directory on a worker and hands what it found to the scan on the main thread.
class TFolderItem : public TBasicWorkItem {
 public:
  TFolderItem(TScan& scan, Ref<IItemIdList> folder, Ref<ICancellationIndicator> token)
      : TBasicWorkItem(std::move(token)), fScan(&scan), fFolder(std::move(folder)) {}

  void DoWork() override {
    try {
      TFolderTrek trek;
      trek.SetShowErrorMessages(false);
      trek.SetFileSystemOnly(true);
      trek.SetFolderIdList(fFolder);
      // Terminated is also where a paused pool holds its work.
      while (!Terminated() && trek.Next()) Count(trek);
    } catch (const EFolderTrekError&) {
      ++Found.Unreadable;
    }
  }

  TTotals Found;
  std::vector<Ref<IItemIdList>> SubFolders;
  TString Path() const { return fFolder->Path(); }

 protected:
  // Main thread. A cancelled item does not come here.
  void WorkDone() override {
    if (TScan* scan = fScan.load()) scan->FolderDone(*this);
  }
  void Terminate() override {
    TBasicWorkItem::Terminate();
    fScan = nullptr;
  }

 private:
  void Count(TFolderTrek& trek) {
    if (trek.IsFolder()) {
      ++Found.Folders;
      // A link may lead back to where we come from.
      if (!trek.IsLink()) SubFolders.push_back(trek.GetAbsoluteItemIdList());
    } else {
      ++Found.Files;
      Found.Bytes += std::max<std::int64_t>(0, trek.GetFileSize());
    }
  }

  std::atomic<TScan*> fScan;
  const Ref<IItemIdList> fFolder;
};

namespace {

TWorkerPoolConfig PoolConfig() {
  TWorkerPoolConfig config;
  config.MinRunningThreads = 2;
  config.MaxRunningThreads = 8;
  return config;
}

}  // namespace

TScan::TScan() : fPool(TWorkerPool::CreateInstance(PoolConfig())) {}

TScan::~TScan() {
  Cancel();
  SetPaused(false);
}

void TScan::Start(const Ref<IItemIdList>& folder) { Add(folder); }

void TScan::Add(Ref<IItemIdList> folder) {
  ++fPending;
  fPool->AddWorkItem(MakeRef<TFolderItem>(*this, std::move(folder), fToken), TPriority::Normal);
}

void TScan::FolderDone(const TFolderItem& item) {
  fTotals.Folders += item.Found.Folders;
  fTotals.Files += item.Found.Files;
  fTotals.Bytes += item.Found.Bytes;
  fTotals.Unreadable += item.Found.Unreadable;
  fLastPath = item.Path();
  for (const Ref<IItemIdList>& folder : item.SubFolders) Add(folder);
  --fPending;
}

void TScan::SetPaused(bool paused) {
  fPaused = paused;
  if (const Ref<IPausable> pausable = fPool.As<IPausable>()) pausable->SetPaused(paused);
}

void TScan::Cancel() {
  if (IsDone()) return;
  fToken.Cancel();
  fCancelled = true;
  fPending = 0;  // what is cancelled never comes back
}
