// Fetching the objects of the folder, and which of them pass.
#include "oak/namespace/FolderTrek.h"
#include "oak/base/HResult.h"
#include "oak/namespace/ErrorMode.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

// Hidden objects are always fetched; what is shown of them is the view's choice.
constexpr DWORD EnumerationFlags =
    SHCONTF_FOLDERS | SHCONTF_NONFOLDERS | SHCONTF_INCLUDEHIDDEN | SHCONTF_INCLUDESUPERHIDDEN;
constexpr DWORD LockedVolume = 0x80310000;
constexpr int LowestReportedCode = 3;
constexpr int HighestReportedCode = 12175;

}  // namespace

// --- fetching --------------------------------------------------------------

bool TFolderTrek::Next() {
  if (!FObjects) {
    bool result = false;
    if (!BeginEnumeration(result)) return result;
  }
  for (;;) {
    TPidl child;
    ULONG fetched = 0;
    const HRESULT status = FObjects->Next(1, child.Put(), &fetched);
    if (status != S_OK || !child) {
      EndEnumeration(status);
      return false;
    }
    SetItemIdList(TOakItemIdList::Create(std::move(child)));
    if (FFileSystemOnly && !PassesFileSystemOnly()) continue;
    if (FilterMatch()) return true;
  }
}

/// False with the answer of Next if there is nothing to fetch from.
bool TFolderTrek::BeginEnumeration(bool& pResult) {
  const TErrorMode mode(fShowErrorMessages ? 0 : SEM_FAILCRITICALERRORS);
  pResult = false;
  const Ref<IShellFolder> folder = GetShellFolder();
  if (!folder) return false;
  HWND window = GetWindowHandle(false);
  if (window && UnlockDrive()) window = nullptr;
  const DWORD flags = EnumerationFlags | (fForNavigation ? SHCONTF_NAVIGATION_ENUM : 0);
  Ref<IEnumIDList> objects;
  const HRESULT status = folder->EnumObjects(window, flags, objects.Put());
  if (FAILED(status)) {
    pResult = EndEnumeration(status);
    return false;
  }
  FObjects = std::move(objects);
  return static_cast<bool>(FObjects);
}

/// Raises for the failures that a user can act on. True on success.
bool TFolderTrek::EndEnumeration(HRESULT pResult) const {
  if (SUCCEEDED(pResult)) return true;
  const int code = HRESULT_CODE(pResult);
  if (code >= LowestReportedCode && code <= HighestReportedCode)
    throw EFolderTrekError(static_cast<std::uint32_t>(code),
                           FFolderIdList ? FFolderIdList->DisplayPath() : TString());
  return false;
}

/// True if the folder was a locked drive and the user was asked to unlock it.
bool TFolderTrek::UnlockDrive() {
  const TString folder = GetFolder();
  if (!oak::IsDrive(folder)) return false;
  ULARGE_INTEGER free;
  if (Api().GetDiskFreeSpaceExW(W(IncludeTrailingPathDelimiter(folder)), &free, nullptr, nullptr))
    return false;
  if (Api().GetLastError() != LockedVolume) return false;
  try {
    FFolderIdList->InvokeCommand(TShellCommand(saBdeUnlock));
  } catch (const EFolderTrekError&) {
    // What can't be unlocked tells so when it is listed.
  }
  return true;
}

TEnumResult TFolderTrek::Next(IFolderTrekNotifier* pChangeNotifier) {
  if (fShellFolderEnumeratorWorkItem) {
    fShellFolderEnumeratorWorkItem->Terminate();
    fShellFolderEnumeratorWorkItem.Reset();
  }
  if (pChangeNotifier && FFolderIdList &&
      TShellControlHelper::ShouldEnumerateAsync(FFolderIdList,
                                                pChangeNotifier->GetCancellationIndicator())) {
    fShellFolderEnumeratorWorkItem = pChangeNotifier->EnumerateInBackground(*this);
    if (fShellFolderEnumeratorWorkItem) return sbnAsync;
  }
  return Next() ? sbnOK : sbnNoMoreItems;
}

/// Objects outside the file system that a file-system view still shows.
bool TFolderTrek::PassesFileSystemOnly() {
  if (GetAttributes(SFGAO_FILESYSTEM | SFGAO_FILESYSANCESTOR) != 0) return true;
  const TString name = GetObjectName();
  if (UpperCase(TStringView(name).substr(0, 7)) == u"RECYCLE") return true;
  const TOakShellFolder special = IsSpecialObject();
  if (special == SF_DRIVES || special == SF_NETWORK) return true;
  return GetSpecialFolder() == SF_NETWORK && !name.empty();
}

// --- the filter ------------------------------------------------------------

bool TFolderTrek::FilterMatch() {
  if (FFilter.empty() || IsFolder()) return true;
  if (fFolderKind == fkUnknown) {
    const TOakShellFolder special = GetSpecialFolder();
    fFolderKind = special == SF_LINKS ? fkLinks : special == SF_RECENT ? fkRecent : fkOther;
  }
  if (fFolderKind == fkLinks) return true;
  bool isFolder = false;
  const TString name = NameForFilter(isFolder);
  return isFolder || FilterMatchName(name);
}

/// What the patterns are held against: in the list of recent objects the
/// target's name, everywhere else the object's own.
TString TFolderTrek::NameForFilter(bool& pIsFolder) {
  const Ref<IItemIdList> item = AbsoluteOrOwnItem();
  if (!item) return {};
  if (fFolderKind == fkRecent) {
    const Ref<IItemIdList> target = item->LinkTarget();
    pIsFolder = target->IsFolder();
    TString name = ExtractFileName(target->DisplayName(dnfPreferPhysical));
    if (pIsFolder || !name.empty()) return name;
  }
  return ExtractFileName(item->DisplayName(dnfPreferPhysical));
}

bool TFolderTrek::FilterMatchName(TStringView pName) const {
  if (fMatchesDotless && !Contains(pName, u".")) return true;
  return fPatterns.Matches(pName);
}

// --- what a view shows -----------------------------------------------------

bool TFolderTrek::ShowObjectAccordingShowOptions(TOakShellShowOptions pShowOptions) {
  if (!pShowOptions.Contains(soShowFiles) && !IsBrowsable() && GetSpecialFolder() != SF_LINKS)
    return false;
  const Ref<IItemIdList> item = GetAbsoluteItemIdList();
  const TOakShellFolder special = item && item->Depth() < 2 ? item->SpecialFolder() : SF_INVALID;
  const bool isHidden = IsHidden();
  if (!pShowOptions.Contains(soShowHidden) && isHidden) return false;
  if (!pShowOptions.Contains(soShowNethood) && (special == SF_NETHOOD || special == SF_NETWORK))
    return false;
  if (!pShowOptions.Contains(soShowRecycleBin) &&
      (special == SF_BITBUCKET || (isHidden && StartsText(u"RECYCL", GetObjectName()))))
    return false;
  return !pShowOptions.Contains(soFileSystemOnly) || PassesFileSystemOptions(pShowOptions);
}

bool TFolderTrek::PassesFileSystemOptions(TOakShellShowOptions pShowOptions) {
  const DWORD attributes =
      GetAttributes(SFGAO_FILESYSTEM | SFGAO_FOLDER | SFGAO_FILESYSANCESTOR | SFGAO_STREAM);
  if (!(attributes & (SFGAO_FILESYSTEM | SFGAO_FILESYSANCESTOR))) return false;
  if ((attributes & SFGAO_STREAM) && !IsFolder()) return false;
  return pShowOptions.Contains(soShowFiles) || (attributes & SFGAO_FOLDER) != 0;
}

bool TShowOptionsHelper::IsValid(TOakShellShowOptions pOptions,
                                 const Ref<IItemIdList>& pItemIdList) {
  TFolderTrek cursor;
  cursor.SetAbsoluteItemIdList(pItemIdList);
  return cursor.ShowObjectAccordingShowOptions(pOptions);
}

}  // namespace oak
