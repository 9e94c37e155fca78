// Any bytes as an item identifier list, through items and folders.
#include "FuzzInput.h"
#include "oak/namespace/FolderTrek.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.h"

using namespace oak;

namespace {

void AskItem(const Ref<IItemIdList>& item) {
  for (int form = dnfNormal; form <= dnfPreferPhysical; ++form)
    item->DisplayName(static_cast<TItemIdListDisplayNameFormat>(form));
  item->Path();
  item->Name();
  item->SpecialFolder();
  item->HasAttributes(SFGAO_FOLDER | SFGAO_LINK | SFGAO_HASSUBFOLDER);
  item->IsSlow();
  item->LinkTarget();
  item->GetPropertyValue(TShellColumns::Size());
  item->Reload();
  item->Equals(NullItemIdList(), ilcDisplay);
  item->IsParentOf(item, true, ilcExact);
  for (int depth = item->Depth(); depth >= 0; --depth) item->GetStartItemIdList(depth);
}

void EnterFolder(const Ref<IItemIdList>& item) {
  try {
    TFolderTrek cursor;
    cursor.SetFolderIdList(item);
    for (int i = 0; i < 3 && cursor.Next(); ++i) cursor.GetShellObjectName(true);
    cursor.SetAbsoluteItemIdList(item);
    cursor.GetInfoTip(false);
  } catch (const Exception&) {
    // A list that means nothing may say so.
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::UseSmallDrive();
  const fuzz::TAnyPidl pidl(data, size);
  const Ref<IItemIdList> item = TOakItemIdList::Create(pidl.Get(), iloCopyMemory);
  AskItem(item);
  EnterFolder(item);
  // The same bytes below a folder that knows what it is given.
  const Ref<IItemIdList> drives = TOakItemIdList::CreateForSpecialFolder(SF_DRIVES, true);
  AskItem(drives->Concat(item));
  const Ref<IShellFolder> desktop = Desktop();
  desktop->CompareIDs(0, pidl.Get(), pidl.Get());
  desktop->CompareIDs(static_cast<LPARAM>(SHCIDS_CANONICALONLY), pidl.Get(),
                      drives->WindowsPointer());
  return 0;
}
