#include "oak/coordination/OakPathList.h"

#include <algorithm>

#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/Oak.Shell.PathUtils.h"

namespace oak {

// --- TWideStringBuilder ----------------------------------------------------------

void TWideStringBuilder::Append(TStringView pText) {
  fString.append(pText);
  fString.push_back(u'\0');
}

void TWideStringBuilder::Append(const TStrings& pTexts) {
  for (const TString& text : pTexts) Append(text);
}

// The string's own end is the last zero character.
LPCWSTR TWideStringBuilder::GetStringPointer() const { return W(fString); }

std::size_t TWideStringBuilder::GetSize() const noexcept {
  return (fString.size() + (fIncludeTrailingZeroCharacter ? 1 : 0)) * sizeof(char16_t);
}

// --- changes of the list -----------------------------------------------------------

TString TOakPathList::UnifyPath(TStringView pPath) const {
  return oak::IsDrive(pPath) ? TString(pPath) : ExcludeTrailingPathDelimiter(pPath);
}

bool TOakPathList::AllowAdd(TStringView pPath) const {
  return !pPath.empty() && (!fCheckIfExists || FileOrFolderExists(pPath));
}

void TOakPathList::Tell(const TOakPathListOperation& pEvent, TStringView pPath, int pIndex) const {
  if (!pEvent || fSkipEvents) return;
  const TOakPathListOperation handler = pEvent;
  handler(pPath, pIndex);
}

int TOakPathList::AddObject(TStringView pPath, TObject* pObject) {
  const TString path = UnifyPath(pPath);
  return AllowAdd(path) ? TStringList::AddObject(path, pObject) : -1;
}

void TOakPathList::InsertObject(int pIndex, TStringView pPath, TObject* pObject) {
  const TString path = UnifyPath(pPath);
  if (AllowAdd(path)) TStringList::InsertObject(pIndex, path, pObject);
}

void TOakPathList::InsertItem(int pIndex, TStringView pPath, TObject* pObject) {
  const TString path(pPath);
  TStringList::InsertItem(pIndex, path, pObject);
  Tell(OnAdd, path, pIndex);
}

void TOakPathList::Put(int pIndex, TStringView pPath) {
  const TString before = Get(pIndex);
  const TString path = UnifyPath(pPath);
  TStringList::Put(pIndex, path);
  Tell(OnRemove, before, pIndex);
  Tell(OnAdd, path, pIndex);
}

void TOakPathList::Delete(int pIndex) {
  const TString path = Get(pIndex);
  TStringList::Delete(pIndex);
  Tell(OnRemove, path, pIndex);
}

void TOakPathList::Clear() {
  const TStringArray paths = OnRemove ? ToArray() : TStringArray();
  TStringList::Clear();
  for (std::size_t i = paths.size(); i-- > 0;) Tell(OnRemove, paths[i], static_cast<int>(i));
}

void TOakPathList::AddStrings(const TStrings& pPaths) { TStrings::AddStrings(pPaths); }

void TOakPathList::AddStrings(const TStringArray& pPaths) { TStrings::AddStrings(pPaths); }

void TOakPathList::SetStrings(TStringArray pPaths) { TStrings::SetStrings(std::move(pPaths)); }

void TOakPathList::AddRange(const TStrings& pSource, int pFromIndex, int pToIndex) {
  WithinUpdate([&] {
    const int last = std::min(pToIndex, pSource.GetCount() - 1);
    for (int i = std::max(pFromIndex, 0); i <= last; ++i) {
      const TString path = pSource.Get(i);  // the source may be this list
      AddObject(path, pSource.GetObjects(i));
    }
  });
}

bool TOakPathList::Remove(TStringView pPath) {
  const int index = IndexOfPath(pPath);
  if (index >= 0) Delete(index);
  return index >= 0;
}

int TOakPathList::Remove(const TStrings& pPaths) {
  int count = 0;
  const TStringArray paths = pPaths.ToArray();
  WithinUpdate([&] {
    for (const TString& path : paths) count += Remove(path) ? 1 : 0;
  });
  return count;
}

void TOakPathList::Changed() {
  fContainsNetworkPath = naUnknown;
  TStringList::Changed();
}

// --- questions -----------------------------------------------------------------------

int TOakPathList::IndexOfPath(TStringView pPath) const {
  const int count = GetCount();
  for (int i = 0; i < count; ++i)
    if (SamePath(Get(i), pPath)) return i;
  return -1;
}

bool TOakPathList::AllItemsSubpathOf(TStringView aPath) const {
  return GetCount() > 0 &&
         std::all_of(begin(), end(), [&](const TString& path) { return IsSubPathOf(aPath, path); });
}

LPCWSTR TOakPathList::GetStringPointer() {
  fWideStringBuilder.Clear();
  fWideStringBuilder.Append(*this);
  if (GetCount() == 0) fWideStringBuilder.Append(TStringView());
  return fWideStringBuilder.GetStringPointer();
}

bool TOakPathList::GetContainsNetworkPath() const {
  if (fContainsNetworkPath == naUnknown)
    fContainsNetworkPath =
        std::any_of(begin(), end(), [](const TString& path) { return IsNetworkPath(path); }) ? naYes
                                                                                             : naNo;
  return fContainsNetworkPath == naYes;
}

// --- texts -----------------------------------------------------------------------------

bool TOakPathList::IsSubPathOf(TStringView p_SuperiorPath, TStringView p_PossibleSubPath) {
  return oak::IsSubPathOf(p_SuperiorPath, p_PossibleSubPath);
}

bool TOakPathList::ShareSameRoot(const TStrings& pPaths) {
  if (pPaths.GetCount() < 2) return true;
  const TString root = ExtractFileDrive(pPaths[0]);
  return std::all_of(pPaths.begin(), pPaths.end(),
                     [&](const TString& path) { return SameText(ExtractFileDrive(path), root); });
}

TString TOakPathList::SplitPath(TStringView pFullPath, TString& pFilePath) {
  TString folder = ExtractFileDir(pFullPath);
  pFilePath = ExtractFileName(pFullPath);
  return folder;
}

TStringArray TOakPathList::SplitPathByDelimiter(TStringView pFullPath, char16_t pDelimiter) {
  TStringArray pieces = Split(pFullPath, pDelimiter);
  if (!pieces.empty() && pieces.back().empty()) pieces.pop_back();
  return pieces;
}

bool TOakPathList::IsUNCPath(TStringView pFullPath) { return oak::IsUNCPath(pFullPath); }

bool TOakPathList::IsUncServer(TStringView pPath) { return oak::IsUncServer(pPath); }

bool TOakPathList::StartsWithDriveLetter(TStringView pPath) {
  return TPathUtils::StartsWithDriveLetter(pPath);
}

bool TOakPathList::IsFolderClassId(TStringView pName) { return oak::IsFolderClassId(pName); }

bool TOakPathList::IsUSBDevicePath(TStringView pName) { return oak::IsUSBDevicePath(pName); }

// --- asking the system -------------------------------------------------------------------

TString TOakPathList::GetShortcutTarget(TStringView filepath) {
  TString target = GetLinkTarget(filepath);
  if (!target.empty()) AdaptPathOnWow64Systems(target);
  return target;
}

void TOakPathList::AdaptPathOnWow64Systems(TString& pFullPath) {
  if (!IsWOW64()) return;
  const TString programs = GetPathFromSpecialFolder(SF_PROGRAM_FILESX86);
  if (!IsSubPathOf(programs, pFullPath) || FileOrFolderExists(pFullPath)) return;
  const TString others = OakExpandEnvironmentStrings(u"%ProgramW6432%");
  const TString path = others + pFullPath.substr(ExcludeTrailingPathDelimiter(programs).size());
  if (!others.empty() && FileOrFolderExists(path)) pFullPath = path;
}

}  // namespace oak
