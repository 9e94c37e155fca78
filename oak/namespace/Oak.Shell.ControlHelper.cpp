#include "oak/namespace/Oak.Shell.ControlHelper.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <system_error>

#include "oak/framework/Host.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

constexpr int ProbedObjects = 101;
constexpr ULONGLONG SlowObjectMs = 10;
constexpr ULONGLONG LongestProbeMs = 1000;
constexpr std::chrono::milliseconds WaitSlice{5};

/// Shared by the thread that measures and the one that waits; whoever ends last
/// frees it, so that a folder that hangs holds nobody.
struct TSlownessProbe {
  std::mutex Lock;
  std::condition_variable Changed;
  bool Completed = false;
  bool IsSlow = false;
  std::atomic<bool> Abandoned{false};

  void Complete(bool pIsSlow) {
    const std::lock_guard guard(Lock);
    Completed = true;
    IsSlow = pIsSlow;
    Changed.notify_all();
  }
};

bool IsCanceled(const Ref<ICancellationIndicator>& pCancel) {
  return pCancel && pCancel->IsCancellationRequested();
}

/// Whether the first objects of the folder take 10 ms or more each.
bool MeasureFolder(const Ref<IItemIdList>& pFolder, const TSlownessProbe& pProbe) {
  TFolderTrek cursor;
  cursor.SetShowErrorMessages(false);
  cursor.SetFolderIdList(pFolder);
  const ULONGLONG start = Api().GetTickCount64();
  ULONGLONG count = 0;
  while (count < ProbedObjects && !pProbe.Abandoned && cursor.Next()) ++count;
  if (count == 0) return false;
  return (Api().GetTickCount64() - start) / count >= SlowObjectMs;
}

/// False if there is no thread to be had for it.
bool StartProbe(const Ref<IItemIdList>& pFolder, const std::shared_ptr<TSlownessProbe>& pProbe) {
  try {
    RunInBackground([pProbe, pFolder] {
      bool isSlow = true;
      try {
        isSlow = MeasureFolder(pFolder, *pProbe);
      } catch (const Exception&) {
        // A folder that fails is taken off the main thread like a slow one.
      }
      pProbe->Complete(isSlow);
    });
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

/// True if the probe ended in time; its answer is then in IsSlow.
bool WaitForProbe(TSlownessProbe& pProbe, const Ref<ICancellationIndicator>& pCancel) {
  const ULONGLONG start = Api().GetTickCount64();
  std::unique_lock guard(pProbe.Lock);
  while (!pProbe.Completed) {
    if (IsCanceled(pCancel) || Api().GetTickCount64() - start >= LongestProbeMs) return false;
    pProbe.Changed.wait_for(guard, WaitSlice);
  }
  return true;
}

}  // namespace

bool TShellControlHelper::ShouldEnumerateAsync(const Ref<IItemIdList>& pItemIdList,
                                               const Ref<ICancellationIndicator>& pCancel) {
  if (!pItemIdList || pItemIdList->IsInvalid()) return false;
  const TString path = pItemIdList->DisplayPath();
  if (IsSearchFolderPath(path)) return true;
  if (!pItemIdList->IsSlow()) return false;
  if (IsUNCPath(path) || IsUncServer(path)) return true;

  const auto probe = std::make_shared<TSlownessProbe>();
  if (!StartProbe(pItemIdList, probe)) return true;
  const bool completed = WaitForProbe(*probe, pCancel);
  probe->Abandoned = true;
  const std::lock_guard guard(probe->Lock);
  return !completed || probe->IsSlow;
}

bool TShellControlHelper::Authenticate(TStringView pPath, bool pShowErrors) {
  try {
    TFolderTrek cursor;
    cursor.SetShowErrorMessages(pShowErrors);
    cursor.SetFolder(pPath);
    cursor.Next();
    return true;
  } catch (const Exception&) {
    return false;
  }
}

bool TShellControlHelper::GetShellShowExtensions() {
  if (!Api().SHGetSetSettings) return true;
  SHELLSTATEW state{};
  Api().SHGetSetSettings(&state, SSF_SHOWEXTENSIONS, FALSE);
  return state.fShowExtensions != 0;
}

}  // namespace oak
