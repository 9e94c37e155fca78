// The cursor's properties, its folder and its current object. Enumeration is in
// FolderTrek.Enumerate.cpp, questions in FolderTrek.Questions.cpp, actions in
// FolderTrek.Actions.cpp.
#include "oak/namespace/FolderTrek.h"

#include <optional>

#include "oak/namespace/ErrorMode.h"
#include "oak/namespace/NamespaceHooks.h"
#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

constexpr std::uint32_t PathNotFound = 3;

}  // namespace

TFolderTrek::TFolderTrek(TComponent* AOwner) : TComponent(AOwner) {}

TFolderTrek::TFolderTrek(const TFolderTrek* pCopyFrom) : TComponent(nullptr) {
  if (!pCopyFrom) return;
  FFileSystemOnly = pCopyFrom->FFileSystemOnly;
  fShowErrorMessages = pCopyFrom->fShowErrorMessages;
  fReadOnly = pCopyFrom->fReadOnly;
  fAsyncContextMenuOperations = pCopyFrom->fAsyncContextMenuOperations;
  fShowContextMenuOnTop = pCopyFrom->fShowContextMenuOnTop;
  fForNavigation = pCopyFrom->fForNavigation;
  fAcceptSearchFolderPaths = pCopyFrom->fAcceptSearchFolderPaths;
  FFilter = pCopyFrom->FFilter;
  fPatterns = pCopyFrom->fPatterns;
  fMatchesDotless = pCopyFrom->fMatchesDotless;
  OnRename = pCopyFrom->OnRename;
  OnContextMenuSelect = pCopyFrom->OnContextMenuSelect;
  OnBeforeShellCommand = pCopyFrom->OnBeforeShellCommand;
  OnBeforeCommand = pCopyFrom->OnBeforeCommand;
  SetFolderIdList(pCopyFrom->FFolderIdList);
}

TFolderTrek::TFolderTrek(TStringView aObjectPath) : TComponent(nullptr) {
  SetAbsoluteItemIdList(TOakItemIdList::Parse(aObjectPath, nullptr, false));
}

TFolderTrek::TFolderTrek(const Ref<IItemIdList>& pAbsoluteItemIdList) : TComponent(nullptr) {
  SetAbsoluteItemIdList(pAbsoluteItemIdList);
}

TFolderTrek::~TFolderTrek() {
  if (fShellFolderEnumeratorWorkItem) fShellFolderEnumeratorWorkItem->Terminate();
}

// --- filter ----------------------------------------------------------------

TString TFolderTrek::GetFilter() const { return FFilter.empty() ? u"*" : Join(FFilter, u";"); }

void TFolderTrek::SetFilter(TStringView pFilter) {
  FFilter.clear();
  fPatterns = TPatternList();
  fMatchesDotless = false;
  if (pFilter.empty() || pFilter == u"*") return;
  if (pFilter.ends_with(u';')) pFilter.remove_suffix(1);
  FFilter = Split(pFilter, u';');
  for (const TString& pattern : FFilter) {
    if (pattern.empty()) continue;
    if (pattern == u"*.") fMatchesDotless = true;
    fPatterns.Add(ConvertToWindowsPattern(pattern));
  }
}

// --- the active folder -----------------------------------------------------

void TFolderTrek::SetFolderIdList(Ref<IItemIdList> pItemIdList) {
  if (!pItemIdList) {
    SetShellfolder(nullptr);
    FFolderIdList.Reset();
    SetItemIdList(NullItemIdList());
    return;
  }
  if (pItemIdList->IsInvalid()) throw EFolderTrekError(PathNotFound, pItemIdList.Get());
  if (!fAcceptSearchFolderPaths && IsSearchFolderPath(pItemIdList->DisplayPath()) &&
      pItemIdList->Depth() > 1)
    throw EFolderTrekError(PathNotFound, pItemIdList.Get());
  const bool isSame = pItemIdList == FFolderIdList;
  SetItemIdList(NullItemIdList());
  FObjects.Reset();
  if (isSame) return;
  FFolderIdList = pItemIdList;
  // Whatever belongs to the old folder goes before the new one is bound.
  SetShellfolder(nullptr);
  GetShellFolder();
}

void TFolderTrek::SetShellfolder(const Ref<IShellFolder>& pShellFolder) {
  FShellFolder = pShellFolder;
  fShellFolder2.Reset();
  FTriedIshd = false;
  FObjects.Reset();
  FMultiObjects.Reset();
  fFolderKind = fkUnknown;
  if (!pShellFolder || FFolderIdList) return;
  const Ref<IPersistFolder2> persist = pShellFolder.As<IPersistFolder2>();
  TPidl pidl;
  if (!persist || FAILED(persist->GetCurFolder(pidl.Put())) || !pidl) return;
  FFolderIdList = TOakItemIdList::Create(std::move(pidl));
  SetItemIdList(NullItemIdList());
}

Ref<IShellFolder> TFolderTrek::GetShellFolder() {
  if (!FShellFolder && FFolderIdList) SetShellfolder(TOakItemIdList::FolderOf(FFolderIdList));
  return FShellFolder;
}

TString TFolderTrek::GetDirectory() const {
  return FFolderIdList ? FFolderIdList->Path() : TString();
}

void TFolderTrek::SetDirectory(TStringView pDirectory) {
  if (!pDirectory.empty() && SameText(pDirectory, GetDirectory())) return;
  SetFolderIdList(TOakItemIdList::Create(pDirectory, nullptr, GetWindowHandle(false)));
}

TOakShellFolder TFolderTrek::GetSpecialFolder() const {
  return FFolderIdList ? FFolderIdList->SpecialFolder() : SF_INVALID;
}

void TFolderTrek::SetSpecialFolder(TOakShellFolder pValue) {
  if (pValue == GetSpecialFolder()) {
    SetItemIdList(NullItemIdList());
    return;
  }
  if (GetComponentState().Contains(csLoading) && pValue == SF_FILESYSTEMFOLDER) return;
  SetFolderIdList(TOakItemIdList::CreateForSpecialFolder(pValue, true));
}

void TFolderTrek::SelectParent() { SetAbsoluteItemIdList(FFolderIdList); }

bool TFolderTrek::BrowseObject() {
  if (!IsFolder()) return false;
  SetFolderIdList(GetAbsoluteItemIdList());
  return static_cast<bool>(FShellFolder);
}

// --- the current object ----------------------------------------------------

bool TFolderTrek::HasObject() const { return FItemIDList && !FItemIDList->IsInvalid(); }

void TFolderTrek::SetItemIdList(Ref<IItemIdList> pItemIdList) {
  FAbsoluteIdList.Reset();
  FItemIDList = pItemIdList;
  InvalidateCaches();
}

Ref<IItemIdList> TFolderTrek::GetAbsoluteItemIdList() {
  if (!FAbsoluteIdList)
    FAbsoluteIdList =
        FFolderIdList && HasObject() ? FFolderIdList->Concat(FItemIDList) : FFolderIdList;
  return FAbsoluteIdList;
}

void TFolderTrek::SetAbsoluteItemIdList(Ref<IItemIdList> pItemIdList) {
  if (!pItemIdList)
    throw EInvalidArgument(
        u"\"nil\" is not a valid value that can be assigned to TFolderTrek.AbsoluteItemIdList");
  if (pItemIdList->IsInvalid()) throw EFolderTrekError(PathNotFound, pItemIdList->Path() + u"\r\n");
  if (pItemIdList->IsSpecialFolder(SF_DESKTOP)) {
    SetSpecialFolder(SF_DESKTOP);
    return;
  }
  Ref<IShellFolder> parent;
  PCUITEMID_CHILD child = nullptr;
  if (FAILED(Api().SHBindToParent(pItemIdList->WindowsPointer(), IidOf<IShellFolder>(),
                                  parent.PutVoid(), &child)))
    return;
  FFolderIdList = pItemIdList->GetStartItemIdList(pItemIdList->Depth() - 1);
  SetShellfolder(parent);
  SetItemIdList(child ? TOakItemIdList::Create(child, iloCopyMemory) : pItemIdList->GetLastPart());
  FAbsoluteIdList = pItemIdList;
}

TString TFolderTrek::GetFullPath() {
  const Ref<IItemIdList> item = GetAbsoluteItemIdList();
  return item ? item->Path() : TString();
}

void TFolderTrek::SetObjectName(TStringView pName) {
  if (pName.empty()) {
    SetItemIdList(nullptr);
    throw EFolderTrekError(u"Cannot find Object with empty name", nullptr);
  }
  if (Contains(pName, u"\\")) {
    SetAbsoluteItemIdList(TOakItemIdList::Parse(pName, nullptr, false));
    return;
  }
  const Ref<IShellFolder> folder = GetShellFolder();
  if (!folder) throw EFolderTrekError(u"No active folder was set.", nullptr);
  {
    std::optional<TErrorMode> quiet;
    if (!fShowErrorMessages) quiet.emplace();
    SetItemIdList(TOakItemIdList::Create(pName, folder.Get(), nullptr));
  }
  if (!HasObject()) FindObjectByName(pName);
}

void TFolderTrek::FindObjectByName(TStringView pName) {
  while (Next()) {
    if (SameText(AbsoluteOrOwnItem()->DisplayName(dnfInFolder), pName)) return;
  }
  throw EFolderTrekError(
      u"Error: Cannot find Object \"" + TString(pName) + u"\" in Folder \"" + GetFolder() + u"\"",
      nullptr);
}

TOakShellFolder TFolderTrek::IsSpecialObject() {
  const Ref<IItemIdList> item = GetAbsoluteItemIdList();
  return item ? item->SpecialFolder() : SF_INVALID;
}

void TFolderTrek::SetSpecialObject(TOakShellFolder pValue) {
  SetAbsoluteItemIdList(TOakItemIdList::CreateForSpecialFolder(pValue, true));
}

void TFolderTrek::SetThumbnailProvider(const Ref<IUnknown>& pProvider) {
  if (!NamespaceHooks().SetThumbnailProvider)
    throw EInvalidOperation(u"TFolderTrek: thumbnails are not part of this program");
  NamespaceHooks().SetThumbnailProvider(pProvider);
}

Ref<IItemIdListCollection> TFolderTrek::GetMultiObjects() {
  if (!FMultiObjects) FMultiObjects = MakeRef<TItemIdListCollection>(GetShellFolder());
  return FMultiObjects;
}

}  // namespace oak
