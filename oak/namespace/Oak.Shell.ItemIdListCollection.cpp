#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"

#include <cstring>

#include "oak/framework/Strings.h"
#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/Oak.Shell.PathUtils.h"
#include "oak/namespace/OakItemIdList.h"

namespace oak {
namespace {

/// Whether both lists have the same bytes up to their last elements: then they surely lie in one
/// folder, and nobody need be asked.
bool HaveSameParentBytes(PCItemIdList pPidl1, PCItemIdList pPidl2) {
  const int depth = PidlDepth(pPidl1);
  if (depth < 1 || PidlDepth(pPidl2) != depth) return false;
  const auto lengthOfParent = [depth](PCItemIdList pidl) {
    return reinterpret_cast<const BYTE*>(TOakItemIdList::GetElementNo(pidl, depth - 1)) -
           reinterpret_cast<const BYTE*>(pidl);
  };
  const auto length = lengthOfParent(pPidl1);
  return lengthOfParent(pPidl2) == length &&
         std::memcmp(pPidl1, pPidl2, static_cast<std::size_t>(length)) == 0;
}

bool LieInOneFolder(const std::vector<Ref<IItemIdList>>& pItems) {
  const Ref<IItemIdList> first = pItems.front();
  const Ref<IItemIdList> parent = first->GetParent();
  for (const Ref<IItemIdList>& item : pItems)
    if (!HaveSameParentBytes(first->WindowsPointer(), item->WindowsPointer()) &&
        !item->GetParent()->Equals(parent, ilcDisplay))
      return false;
  return true;
}

TString FileTypeOf(const Ref<IItemIdList>& pItemIdList) {
  TString extension = ExtractFileExt(pItemIdList->Name());
  if (extension.empty() || !pItemIdList->IsFolder()) return extension;
  return TItemIdListHelper::IsFileAndFolder(pItemIdList) ? extension : TString();
}

}  // namespace

TItemIdListCollection::TItemIdListCollection(Ref<IShellFolder> pShellFolder)
    : fShellFolder(std::move(pShellFolder)) {}

TItemIdListCollection::TItemIdListCollection(const Ref<IItemIdListCollection>& pCollection) {
  Add(pCollection);
}

TItemIdListCollection::TItemIdListCollection(std::vector<Ref<IItemIdList>> pItems) {
  for (const Ref<IItemIdList>& item : pItems) Add(item);
}

// --- the list ------------------------------------------------------------------

void TItemIdListCollection::Add(TStringView pPath) {
  if (pPath != TPathUtils::NetworkRoot && pPath.ends_with(TPathUtils::PathListWildcardEnding))
    pPath.remove_suffix(TPathUtils::PathListWildcardEnding.size());
  if (IsAbsolutePath(pPath)) {
    Add(TOakItemIdList::Create(pPath));
    return;
  }
  const Ref<IItemIdList> item = TOakItemIdList::Create(pPath, fShellFolder.Get(), nullptr);
  // Only lists of one element are known as relative afterwards.
  const bool isDeeper = fShellFolder && item->Depth() > 1 && !IsInvalid(FolderIdList());
  Add(isDeeper ? FolderIdList()->Concat(item) : item);
}

void TItemIdListCollection::Add(const Ref<IItemIdList>& pItemIdList) {
  if (!pItemIdList) return;
  fContextMenu.Reset();
  fItems.push_back(pItemIdList);
}

void TItemIdListCollection::Add(const Ref<IItemIdListCollection>& pList) {
  // The folder that its items are relative to may be another one.
  if (pList) pList->CopyTo(Ref<IItemIdListCollection>::Share(this));
}

void TItemIdListCollection::AddStrings(const TStrings& pStrings) {
  for (const TString& path : pStrings.ToArray()) Add(path);
}

void TItemIdListCollection::Assign(const Ref<IItemIdListCollection>& pCollection) {
  const Ref<TItemIdListCollection> copy = MakeRef<TItemIdListCollection>(pCollection);
  Clear();
  fItems = copy->fItems;
}

void TItemIdListCollection::Clear() {
  fContextMenu.Reset();
  fItems.clear();
}

Ref<IItemIdList> TItemIdListCollection::GetItem(int pIndex) {
  if (pIndex < 0 || pIndex >= Count()) return nullptr;
  return fItems[static_cast<std::size_t>(pIndex)];
}

void TItemIdListCollection::CopyTo(const Ref<IItemIdListCollection>& pList) {
  if (!pList) return;
  const TItems items = fItems;  // The target may be this list.
  for (const Ref<IItemIdList>& item : items) pList->Add(MakeAbsolute(item));
}

TString TItemIdListCollection::ToString() {
  TStringArray paths;
  for (const Ref<IItemIdList>& item : fItems) paths.push_back(MakeAbsolute(item)->DisplayPath());
  return Join(paths, u"\r\n");
}

TStringArray IItemIdListCollectionHelper::GetFilePaths(
    const Ref<IItemIdListCollection>& pCollection) {
  TStringArray paths;
  const auto absolute = MakeRef<TItemIdListCollection>(pCollection);
  for (const Ref<IItemIdList>& item : *absolute) paths.push_back(item->Path());
  return paths;
}

// --- relative and absolute -------------------------------------------------------

const Ref<IItemIdList>& TItemIdListCollection::FolderIdList() {
  if (fShellFolder && !fFolderIdList)
    fFolderIdList = TOakItemIdList::Create(fShellFolder.Get(), nullptr);
  return fFolderIdList;
}

bool TItemIdListCollection::IsRelative(const Ref<IItemIdList>& pItemIdList) const {
  return fShellFolder && !pItemIdList->IsAbsolute();
}

Ref<IItemIdList> TItemIdListCollection::MakeAbsolute(const Ref<IItemIdList>& pItemIdList) {
  if (!IsRelative(pItemIdList) || IsInvalid(FolderIdList())) return pItemIdList;
  return FolderIdList()->Concat(pItemIdList);
}

std::vector<PItemIdList> TItemIdListCollection::ToPItemIdListArray() {
  std::vector<PItemIdList> pidls;
  for (const Ref<IItemIdList>& item : fItems)
    if (!item->IsInvalid()) pidls.push_back(item->WindowsPointer());
  return pidls;
}

Ref<IShellItemArray> TItemIdListCollection::GetShellItemArray() {
  TItems absolute;
  for (const Ref<IItemIdList>& item : fItems) absolute.push_back(MakeAbsolute(item));
  return TShellItemArray::PidlArrayToShellItemArray(absolute);
}

// --- what the items have in common -------------------------------------------------

bool TItemIdListCollection::HaveSameParent() {
  if (fItems.size() < 2) return true;
  if (!fShellFolder || fItems.front()->Depth() != 1) return LieInOneFolder(fItems);
  for (const Ref<IItemIdList>& item : fItems)
    if (item->Depth() > 1) return false;
  return true;
}

bool TItemIdListCollection::HasMultipleFileTypes() {
  if (fItems.size() < 2) return false;
  const TString type = FileTypeOf(MakeAbsolute(fItems.front()));
  for (const Ref<IItemIdList>& item : fItems)
    if (!SameText(FileTypeOf(MakeAbsolute(item)), type)) return true;
  return false;
}

Ref<IItemIdList> TItemIdListCollection::GetLongestCommonAncestor() {
  Ref<IItemIdList> ancestor;
  for (const Ref<IItemIdList>& relative : fItems) {
    const Ref<IItemIdList> item = MakeAbsolute(relative);
    if (item->IsInvalid()) continue;
    if (!ancestor) ancestor = item->GetStartItemIdList(std::max(item->Depth() - 1, 0));
    while (ancestor->Depth() > 0 && !ancestor->IsParentOf(item, false, ilcExact))
      ancestor = ancestor->GetParent();
  }
  return ancestor;
}

}  // namespace oak
