#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"

#include "oak/base/HResult.h"
#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/Api.h"

namespace oak {

TItemIdListCollection::TItemIdListCollection(Ref<IShellFolder> pShellFolder)
    : fShellFolder(std::move(pShellFolder)) {
  const Ref<IPersistFolder2> persist = fShellFolder.As<IPersistFolder2>();
  TPidl pidl;
  if (persist && SUCCEEDED(persist->GetCurFolder(pidl.Put())) && pidl)
    fFolderIdList = TOakItemIdList::Create(std::move(pidl));
}

bool TItemIdListCollection::InvokeCommand(const TShellCommand& pCommand) {
  bool done = false;
  // A command may change the collection that it came from.
  const std::vector<Ref<IItemIdList>> items = fItems;
  for (const Ref<IItemIdList>& item : items) done |= MakeAbsolute(item)->InvokeCommand(pCommand);
  return done;
}

void TItemIdListCollection::Add(TStringView pPath) {
  if (pPath.ends_with(u"\\*")) pPath.remove_suffix(2);
  Add(IsAbsolutePath(pPath) ? TOakItemIdList::Create(pPath)
                            : TOakItemIdList::Create(pPath, fShellFolder.Get(), nullptr));
}

void TItemIdListCollection::Add(const Ref<IItemIdList>& pItemIdList) {
  if (pItemIdList) fItems.push_back(pItemIdList);
}

void TItemIdListCollection::Add(const Ref<IItemIdListCollection>& pList) {
  const int count = pList ? pList->Count() : 0;
  for (int i = 0; i < count; ++i) Add(pList->GetItem(i));
}

Ref<IItemIdList> TItemIdListCollection::GetItem(int pIndex) {
  if (pIndex < 0 || pIndex >= Count()) return nullptr;
  return fItems[static_cast<std::size_t>(pIndex)];
}

Ref<IItemIdList> TItemIdListCollection::MakeAbsolute(const Ref<IItemIdList>& pItemIdList) const {
  if (!fFolderIdList || pItemIdList->IsAbsolute()) return pItemIdList;
  return fFolderIdList->Concat(pItemIdList);
}

std::vector<PItemIdList> TItemIdListCollection::ToPItemIdListArray() {
  std::vector<PItemIdList> pidls;
  for (const Ref<IItemIdList>& item : fItems)
    if (!item->IsInvalid()) pidls.push_back(item->WindowsPointer());
  return pidls;
}

Ref<IShellItemArray> TItemIdListCollection::GetShellItemArray() {
  std::vector<Ref<IItemIdList>> absolute;
  std::vector<PCIDLIST_ABSOLUTE> pidls;
  for (const Ref<IItemIdList>& item : fItems) {
    if (item->IsInvalid()) continue;
    absolute.push_back(MakeAbsolute(item));
    pidls.push_back(absolute.back()->WindowsPointer());
  }
  Ref<IShellItemArray> array;
  if (pidls.empty()) return array;
  if (!Api().SHCreateShellItemArrayFromIDLists) OleCheck(E_NOTIMPL);
  OleCheck(Api().SHCreateShellItemArrayFromIDLists(static_cast<UINT>(pidls.size()), pidls.data(),
                                                   array.Put()));
  return array;
}

Ref<IUnknown> TItemIdListCollection::GetUIObject(REFIID pInterfaceID) {
  std::vector<PCUITEMID_CHILD> children;
  for (const Ref<IItemIdList>& item : fItems)
    if (!item->IsInvalid()) children.push_back(Api().ILFindLastID(item->WindowsPointer()));
  if (children.empty())
    throw EFolderTrekError(u"There are no valid Shell ItemIdList in the TItemIdListCollection",
                           nullptr);
  if (!fShellFolder)
    throw EFolderTrekError(u"IShellFolder interface could not be retrieved.", nullptr);
  Ref<IUnknown> object;
  THResultHelper::CheckForError(
      fShellFolder->GetUIObjectOf(nullptr, static_cast<UINT>(children.size()), children.data(),
                                  pInterfaceID, nullptr, object.PutVoid()));
  return object;
}

}  // namespace oak
