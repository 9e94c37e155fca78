// TItemIdListHelper and TShellLinkHelper.
#include "oak/base/HResult.h"
#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/OakItemIdList.State.h"
#include "oak/namespace/Shell_Win32.h"

namespace oak {
namespace {

Ref<IItemIdList> TargetOf(const Ref<IShellLinkW>& link) {
  TPidl target;
  if (!link || FAILED(link->GetIDList(target.Put())) || !target) return {};
  return TOakItemIdList::Create(std::move(target));
}

bool LiesInNetHood(TStringView path) {
  const TString folder = TOakItemIdList::CreateForSpecialFolder(SF_NETHOOD, true)->Path();
  return !folder.empty() && IsSubPathOf(folder, path);
}

Ref<IShellLinkW> MakeShellLink(HRESULT& result) {
  Ref<IShellLinkW> link;
  result = Api().CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER,
                                  IidOf<IShellLinkW>(), link.PutVoid());
  if (SUCCEEDED(result) && !link) result = E_NOINTERFACE;
  return link;
}

}  // namespace

// --- TItemIdListHelper -------------------------------------------------------

bool TItemIdListHelper::HasSubFolders(const Ref<IItemIdList>& pItemIdList, bool pFileSystemOnly) {
  if (!pItemIdList) return false;
  if (HasFileExtension(pItemIdList->Name(), u".ZIP")) return !pFileSystemOnly;
  if (!pFileSystemOnly) return pItemIdList->HasAttributes(SFGAO_HASSUBFOLDER);
  const Ref<IShellItem> item = pItemIdList->ShellItem();
  constexpr SFGAOF fileSystem = SFGAO_FILESYSTEM | SFGAO_FILESYSANCESTOR;
  SFGAOF found = 0;
  return item && SUCCEEDED(item->GetAttributes(SFGAO_HASSUBFOLDER | fileSystem, &found)) &&
         (found & SFGAO_HASSUBFOLDER) != 0 && (found & fileSystem) != 0;
}

bool TItemIdListHelper::IsFileAndFolder(const Ref<IItemIdList>& pItemIdList) {
  return pItemIdList && pItemIdList->IsFolder() && pItemIdList->HasAttributes(SFGAO_STREAM);
}

bool TItemIdListHelper::IsNullOrInvalid(const Ref<IItemIdList>& pItemIdList) {
  return IsInvalid(pItemIdList);
}

bool TItemIdListHelper::SupportsIShellFolder2(const Ref<IItemIdList>& pItemIdList) {
  return static_cast<bool>(pItemIdList.As<IShellFolder>().As<IShellFolder2>());
}

// --- TShellLinkHelper --------------------------------------------------------

Ref<IShellLinkW> TShellLinkHelper::GetIShellLink(const Ref<IItemIdList>& pItemIdList) {
  if (!pItemIdList || !pItemIdList->HasAttributes(SFGAO_LINK)) return {};
  Ref<IShellLinkW> link;
  if (const Ref<IShellItem> item = pItemIdList->ShellItem())
    if (SUCCEEDED(
            item->BindToHandler(nullptr, BHID_SFUIObject, IidOf<IShellLinkW>(), link.PutVoid())) &&
        link)
      return link;
  return GetIShellLink(pItemIdList->Path());
}

Ref<IShellLinkW> TShellLinkHelper::GetIShellLink(TStringView pPath) {
  if (!SameText(ExtractFileExt(pPath), u".LNK") && !LiesInNetHood(pPath)) return {};
  return oak::GetIShellLink(pPath);
}

Ref<IItemIdList> TShellLinkHelper::Resolve(const Ref<IItemIdList>& pSourceItemIdList) {
  return TargetOf(GetIShellLink(pSourceItemIdList));
}

Ref<IItemIdList> TShellLinkHelper::Resolve(TStringView pPath) {
  return TargetOf(GetIShellLink(pPath));
}

Ref<IItemIdList> TShellLinkHelper::AddLinkTo(const Ref<IItemIdList>& pSourceItemIdList,
                                             TStringView pDestination, TStringView pLinkName) {
  if (IsInvalid(pSourceItemIdList) || pDestination.empty()) return {};
  HRESULT result = S_OK;
  const Ref<IShellLinkW> link = MakeShellLink(result);
  THResultHelper::CheckForError(result);
  THResultHelper::CheckForError(link->SetIDList(pSourceItemIdList->WindowsPointer()));
  TString path = IncludeTrailingPathDelimiter(pDestination);
  path.append(pLinkName.empty() ? pSourceItemIdList->DisplayName(dnfInFolder) : TString(pLinkName));
  path.append(u".lnk");
  const Ref<IPersistFile> file = link.As<IPersistFile>();
  THResultHelper::CheckForError(file ? file->Save(W(path), TRUE) : E_NOINTERFACE);
  return TOakItemIdList::Create(path);
}

}  // namespace oak
