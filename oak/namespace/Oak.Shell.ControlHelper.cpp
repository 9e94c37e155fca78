#include "oak/namespace/Oak.Shell.ControlHelper.h"

#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.ShellColumns.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.Properties.h"
#include "oak/platform/Api.h"
#include "oak/threading/Oak.Threading.h"

namespace oak {
namespace {

constexpr int ProbedObjects = 101;
constexpr ULONGLONG SlowObjectMs = 10;
constexpr ULONGLONG LongestProbeMs = 1000;
constexpr DWORD WaitSliceMs = 5;

bool IsCanceled(const Ref<ICancellationIndicator>& pCancel) {
  return pCancel && pCancel->IsCancellationRequested();
}

/// Whether the first objects of the folder take 10 ms or more each.
bool MeasureFolder(const Ref<IItemIdList>& pFolder, const Ref<ICancellationIndicator>& pStop) {
  TFolderTrek cursor;
  cursor.SetShowErrorMessages(false);
  cursor.SetFolderIdList(pFolder);
  const ULONGLONG start = Api().GetTickCount64();
  ULONGLONG count = 0;
  while (count < ProbedObjects && !IsCanceled(pStop) && cursor.Next()) ++count;
  if (count == 0) return false;
  return (Api().GetTickCount64() - start) / count >= SlowObjectMs;
}

Ref<IFuture<bool>> StartProbe(const Ref<IItemIdList>& pFolder,
                              const Ref<ICancellationIndicator>& pStop) {
  return TFuture<bool>::CreateAndQueue(
      [pFolder, pStop] {
        try {
          return MeasureFolder(pFolder, pStop);
        } catch (const Exception&) {
          return true;  // A folder that fails is taken off the main thread like a slow one.
        }
      },
      pStop);
}

/// Whether the probe ended in time. Looks often: it mostly takes less than the future's
/// own wait looks away.
bool WaitForProbe(const Ref<IFuture<bool>>& pProbe, const Ref<ICancellationIndicator>& pCancel) {
  const Ref<IWorkItem> item = pProbe.As<IWorkItem>();
  const ULONGLONG start = Api().GetTickCount64();
  while (item->GetStatus() < TTaskStatus::Completed) {
    if (IsCanceled(pCancel) || Api().GetTickCount64() - start >= LongestProbeMs) return false;
    Api().Sleep(WaitSliceMs);
  }
  return item->GetStatus() == TTaskStatus::Completed;
}

}  // namespace

bool TShellControlHelper::ShouldEnumerateAsync(const Ref<IItemIdList>& pItemIdList,
                                               const Ref<ICancellationIndicator>& pCancel) {
  if (!pItemIdList || pItemIdList->IsInvalid()) return false;
  const TString path = pItemIdList->DisplayPath();
  if (IsSearchFolderPath(path)) return true;
  if (!pItemIdList->IsSlow()) return false;
  if (IsUNCPath(path) || IsUncServer(path)) return true;

  CancellationToken stop;
  try {
    const Ref<IFuture<bool>> probe = StartProbe(pItemIdList, stop);
    if (WaitForProbe(probe, pCancel)) return probe->Value();
  } catch (const EThread&) {
    // No thread to be had for it.
  }
  stop.Cancel();
  return true;
}

TString TShellControlHelper::VariantToString(const TVariant& pValue,
                                             const TShellColumnId& pColumn) {
  if (pValue.IsEmpty() || pValue.IsNull()) return {};
  const bool isDate =
      pColumn == TShellColumns::WriteTime() || pColumn == TShellColumns::CreateTime() ||
      pColumn == TShellColumns::AccessTime() || pColumn == TShellColumns::ItemDate();
  if (!isDate) return VariantToStringViaPropertySystem(pValue, pColumn);
  TVariant text;
  if (FAILED(Api().VariantChangeType(text.Put(), &pValue.Get(), 0, VT_BSTR))) return {};
  return VariantToText(text);
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

TString TShellControlHelper::AttributesToString(int pAttributes) {
  constexpr struct {
    DWORD Attribute;
    char16_t Letter;
  } letters[] = {{FILE_ATTRIBUTE_READONLY, u'R'},
                 {FILE_ATTRIBUTE_HIDDEN, u'H'},
                 {FILE_ATTRIBUTE_SYSTEM, u'S'},
                 {FILE_ATTRIBUTE_DIRECTORY, u'D'},
                 {FILE_ATTRIBUTE_ARCHIVE, u'A'},
                 {FILE_ATTRIBUTE_COMPRESSED, u'C'},
                 {FILE_ATTRIBUTE_REPARSE_POINT, u'L'},
                 {FILE_ATTRIBUTE_OFFLINE, u'O'},
                 {FILE_ATTRIBUTE_NOT_CONTENT_INDEXED, u'I'}};
  TString text;
  if (pAttributes == -1) return text;
  for (const auto& row : letters)
    if (static_cast<DWORD>(pAttributes) & row.Attribute) text += row.Letter;
  return text;
}

}  // namespace oak
