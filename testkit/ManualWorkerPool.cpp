#include "testkit/ManualWorkerPool.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "oak/framework/Application.h"
#include "oak/framework/ComApartment.h"

namespace oak::testkit {
namespace {

bool HasInterface(IWorkItem& item, const GUID& iid) {
  Ref<IUnknown> found;
  return SUCCEEDED(item.QueryInterface(iid, found.PutVoid()));
}

}  // namespace

void TManualWorkerPool::AddWorkItem(Ref<IWorkItem> pWorkItem, TPriority pPriority) {
  pWorkItem->SetStatus(TTaskStatus::WaitingToRun);
  if (fInline)
    Run(pWorkItem);
  else if (pPriority == TPriority::Highest)
    fItems.push_front(std::move(pWorkItem));
  else
    fItems.push_back(std::move(pWorkItem));
}

void TManualWorkerPool::AddWorkItems(const IWorkItems& pWorkItems, TPriority pPriority) {
  for (const Ref<IWorkItem>& item : pWorkItems) AddWorkItem(item, pPriority);
}

bool TManualWorkerPool::ContainsWorkItem(const GUID& pInterfaceID) {
  const auto has = [&](const Ref<IWorkItem>& item) { return HasInterface(*item, pInterfaceID); };
  return std::any_of(fItems.begin(), fItems.end(), has) ||
         std::any_of(fRunning.begin(), fRunning.end(), has);
}

bool TManualWorkerPool::ContainsWorkItem(int tag) {
  const auto has = [&](const Ref<IWorkItem>& item) { return item->GetTag() == tag; };
  return std::any_of(fItems.begin(), fItems.end(), has) ||
         std::any_of(fRunning.begin(), fRunning.end(), has);
}

void TManualWorkerPool::Dispose() {
  std::exchange(fItems, {}).clear();
  for (const Ref<IWorkItem>& item : IWorkItems(fRunning)) item->Cancel();
}

Ref<IWorkItem> TManualWorkerPool::GetWorkItem(std::size_t index) const {
  return index < fItems.size() ? fItems[index] : nullptr;
}

bool TManualWorkerPool::RunNext(TWhere where) {
  if (fItems.empty()) return false;
  const Ref<IWorkItem> item = std::move(fItems.front());
  fItems.pop_front();
  if (where == OnThisThread) {
    Run(item);
  } else {
    std::thread([&] {
      const TComApartment apartment;
      Run(item);
    }).join();
  }
  return true;
}

int TManualWorkerPool::RunAll(TWhere where) {
  int count = 0;
  while (RunNext(where)) ++count;
  return count;
}

void TManualWorkerPool::Run(const Ref<IWorkItem>& item) {
  if (item->GetStatus() == TTaskStatus::Canceled) return;
  fRunning.push_back(item);
  item->SetStatus(TTaskStatus::Running);
  try {
    item->DoWork();
  } catch (...) {
    item->SetStatus(TTaskStatus::Canceled);
    Application().HandleException(nullptr);
  }
  if (item->GetStatus() != TTaskStatus::Canceled) item->SetStatus(TTaskStatus::Completed);
  fRunning.pop_back();
  item->Finished();
}

}  // namespace oak::testkit
