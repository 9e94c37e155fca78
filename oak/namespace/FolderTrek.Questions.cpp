// What the cursor knows of its current object.
#include "oak/namespace/FolderTrek.h"
#include "oak/base/DateTime.h"
#include "oak/base/Version.h"
#include "oak/namespace/ErrorMode.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/Oak.Shell.ShellColumns.h"
#include "oak/namespace/Oak.Shell.SystemImageList.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/Api.h"

namespace oak {

void TFolderTrek::RaiseNoObject() const {
  throw EInvalidOperation(
      u"No valid shell objects is currently assigned in this instance of TFolderTrek");
}

bool TFolderTrek::CheckIfValid(bool pFolderOnly) {
  const bool isFolderValid = FFolderIdList && !FFolderIdList->IsInvalid();
  if (pFolderOnly) return isFolderValid;
  if (isFolderValid && (HasObject() || FFolderIdList->Depth() == 0)) return true;
  return FMultiObjects && FMultiObjects->Count() > 0;
}

/// Binds the folder for a question that must not raise.
bool TFolderTrek::BindQuietly() {
  try {
    return static_cast<bool>(GetShellFolder());
  } catch (const Exception&) {
    return false;
  }
}

/// The object as well as it is known: a cursor on a bare IShellFolder may have no
/// absolute one.
Ref<IItemIdList> TFolderTrek::AbsoluteOrOwnItem() {
  Ref<IItemIdList> item = GetAbsoluteItemIdList();
  if (!item) item = FItemIDList;
  return item;
}

// --- attributes ------------------------------------------------------------

DWORD TFolderTrek::GetAttributes(DWORD pAttributes) {
  if (!CheckIfValid(false)) return 0;
  if (pAttributes == SFGAO_BROWSABLE) return IsBrowsable() ? SFGAO_BROWSABLE : 0;
  if (HasObject() && BindQuietly()) {
    PCUITEMID_CHILD child = FItemIDList->WindowsPointer();
    SFGAOF attributes = pAttributes;
    if (SUCCEEDED(FShellFolder->GetAttributesOf(1, &child, &attributes)))
      return attributes & pAttributes;
  }
  // The folder may have lost the object since; the object itself still answers.
  const Ref<IItemIdList> item = GetAbsoluteItemIdList();
  const Ref<IShellItem> shellItem = item ? item->ShellItem() : nullptr;
  SFGAOF attributes = 0;
  if (!shellItem || FAILED(shellItem->GetAttributes(pAttributes, &attributes))) return 0;
  return attributes & pAttributes;
}

bool TFolderTrek::IsFolder() {
  if (!HasObject()) return false;
  if (!FFileSystemOnly) return GetAttributes(SFGAO_FOLDER) != 0;
  const DWORD attributes =
      GetAttributes(SFGAO_FOLDER | SFGAO_FILESYSANCESTOR | SFGAO_FILESYSTEM | SFGAO_STREAM);
  return (attributes & SFGAO_FOLDER) && (attributes & (SFGAO_FILESYSANCESTOR | SFGAO_FILESYSTEM)) &&
         !(attributes & SFGAO_STREAM);
}

bool TFolderTrek::IsBrowsable() {
  const Ref<IItemIdList> item = GetAbsoluteItemIdList();
  if (!item || item->IsInvalid() || !item->HasAttributes(SFGAO_BROWSABLE)) return false;
  return !FFileSystemOnly || GetAttributes(SFGAO_STREAM) == 0;
}

bool TFolderTrek::IsFileSystemFolder() {
  if (!FFolderIdList || FFolderIdList->IsSpecialFolder(SF_DESKTOP)) return false;
  return !GetFolder().empty() && !FFolderIdList->HasAttributes(SFGAO_STREAM);
}

bool TFolderTrek::HasSubFolders() {
  if (!HasObject()) {
    if (!FFolderIdList || !FFolderIdList->IsSpecialFolder(SF_DESKTOP))
      throw EInvalidOperation(u"No valid folder is currently assigned");
    return true;
  }
  if (fHasSubFolders == hsfUnknown) {
    bool answer;
    if (HasFileExtension(GetObjectName(), u".ZIP")) {
      answer = !FFileSystemOnly;
    } else {
      const DWORD attributes =
          GetAttributes(SFGAO_HASSUBFOLDER | SFGAO_FILESYSTEM | SFGAO_FILESYSANCESTOR);
      answer = (attributes & SFGAO_HASSUBFOLDER) &&
               (!FFileSystemOnly || (attributes & (SFGAO_FILESYSTEM | SFGAO_FILESYSANCESTOR)));
    }
    fHasSubFolders = answer ? hsfYes : hsfNo;
  }
  return fHasSubFolders == hsfYes;
}

bool TFolderTrek::CanRename() {
  if (HasObject()) return GetAttributes(SFGAO_CANRENAME) != 0;
  if (!FMultiObjects || FMultiObjects->Count() == 0) RaiseNoObject();
  return FMultiObjects->GetItem(0)->HasAttributes(SFGAO_CANRENAME);
}

// --- names -----------------------------------------------------------------

TString TFolderTrek::GetObjectName() {
  if (!FFolderIdList || !HasObject()) return {};
  const Ref<IItemIdList> item = GetAbsoluteItemIdList();
  if (!item->ShellItem()) return {};
  TString path = item->DisplayName(dnfPhysicalPath);
  if (oak::IsDrive(path)) return path;
  TString name = ExtractFileName(path);
  return name.empty() ? GetDomain() : name;
}

TString TFolderTrek::GetShellObjectName(bool pInFolderName) {
  if (!HasObject())
    throw EInvalidOperation(
        u"TFolderTrek cannot return the current object's name if there is no current object.");
  TString name = AbsoluteOrOwnItem()->DisplayName(pInFolderName ? dnfInFolder : dnfNormal);
  return name.empty() ? GetObjectName() : name;
}

TString TFolderTrek::GetDomain() {
  const Ref<IShellFolder> folder = GetShellFolder();
  if (!folder || !HasObject()) return {};
  return GetDomainFromIdList(folder.Get(), FItemIDList->WindowsPointer());
}

TStringArray TFolderTrek::GetListOfPaths() {
  TStringArray paths;
  const int count = FMultiObjects ? FMultiObjects->Count() : 0;
  for (int i = 0; i < count; ++i) paths.push_back(FMultiObjects->GetItem(i)->Path());
  if (count == 0 && GetAbsoluteItemIdList()) paths.push_back(GetAbsoluteItemIdList()->Path());
  return paths;
}

// --- values ----------------------------------------------------------------

std::int64_t TFolderTrek::GetFileSize() {
  return oak::GetFileSize(IncludeTrailingPathDelimiter(GetFolder()) + GetObjectName());
}

TString TFolderTrek::GetInfoTip(bool pUseSlowInfoTip) {
  constexpr DWORD slowTip = 8;
  if (!CheckIfValid(false)) return {};
  try {
    const Ref<IQueryInfo> query = GetUIObject(IidOf<IQueryInfo>()).As<IQueryInfo>();
    if (!query) return {};
    const TErrorMode quiet;
    TTaskMemory<WCHAR> text;
    if (FAILED(query->GetInfoTip(pUseSlowInfoTip ? slowTip : 0, text.Put()))) return {};
    return FromW(text.Get());
  } catch (const Exception&) {
    return {};
  }
}

// --- images ----------------------------------------------------------------

int TFolderTrek::GetImageIndex(bool pOpen) {
  return TOakSystemImageList::GetIndexFromItemIdList(GetAbsoluteItemIdList(), si_Small, pOpen);
}

int TFolderTrek::GetIconNumber() { return GetImageIndex(false); }

int TFolderTrek::GetSelectedIconNumber() { return GetImageIndex(true); }

int TFolderTrek::GetOverlayIndex() {
  constexpr int linkOverlay = 1;
  constexpr int shareOverlay = 0;
  if (!HasObject() || !BindQuietly()) return -1;
  if (const Ref<IShellIconOverlay> overlay = FShellFolder.As<IShellIconOverlay>()) {
    const TErrorMode quiet;
    int index = 0;
    // Success without an index (S_FALSE) means that there is no overlay.
    if (overlay->GetOverlayIndex(FItemIDList->WindowsPointer(), &index) != S_OK) return -1;
    return index - 1;
  }
  if (GetAttributes(SFGAO_LINK)) return linkOverlay;
  return GetAttributes(SFGAO_SHARE) ? shareOverlay : -1;
}

namespace {
/// Asks for the desktop itself, whose pidl is the empty one.
bool GetDesktopInfo(UINT pFlags, SHFILEINFOW& pInfo) {
  const ITEMIDLIST root{};
  return Api().SHGetFileInfoW(reinterpret_cast<LPCWSTR>(&root), 0, &pInfo, sizeof(pInfo),
                              SHGFI_PIDL | pFlags) != 0;
}
}  // namespace

int TFolderTrek::GetDesktopIconIndex() {
  SHFILEINFOW info{};
  return GetDesktopInfo(SHGFI_SYSICONINDEX, info) ? info.iIcon : -1;
}

TString TFolderTrek::GetDesktopName() {
  SHFILEINFOW info{};
  return GetDesktopInfo(SHGFI_DISPLAYNAME, info) ? FromW(info.szDisplayName) : TString();
}

TString TFolderTrek::GetVersion() const { return TString(LibraryVersion); }

}  // namespace oak
