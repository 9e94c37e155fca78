// What collections have done to their items: objects of the shell, menus and commands.
#include "oak/base/HResult.h"
#include "oak/framework/Forms.h"
#include "oak/namespace/ComFence.h"
#include "oak/namespace/CommandParts.h"
#include "oak/namespace/NamespaceHooks.h"
#include "oak/namespace/Oak.Shell.ItemIdListCollection.h"
#include "oak/namespace/Oak.Shell.Types.InvokeCommand.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

/// Names in the title of the share dialog; more are counted.
constexpr std::size_t kNamesInTitle = 2;

struct TClassKeyTraits {
  using Type = HKEY;
  static Type Invalid() noexcept { return nullptr; }
  static void Close(Type key) noexcept { Api().RegCloseKey(key); }
};
using TClassKey = TUniqueHandle<TClassKeyTraits>;

/// The key whose extensions go for all files and folders. Without it the menu has none of them.
TClassKey OpenAllFilesystemObjects() {
  HKEY key = nullptr;
  const LSTATUS status =
      Api().RegOpenKeyExW(HKEY_CLASSES_ROOT, W(u"AllFilesystemObjects"), 0, KEY_READ, &key);
  return TClassKey::Adopt(status == ERROR_SUCCESS ? key : nullptr);
}

/// Lets the menu have its usual verbs and carry them out.
HRESULT CALLBACK DefaultMenuCallback(IShellFolder*, HWND, IDataObject*, UINT message, WPARAM,
                                     LPARAM) {
  constexpr UINT mergeContextMenu = 1, invokeCommand = 2;
  if (message == mergeContextMenu) return S_OK;
  return message == invokeCommand ? S_FALSE : E_NOTIMPL;
}

std::vector<PCUITEMID_CHILD> PidlsOf(const std::vector<Ref<IItemIdList>>& pItems, bool pLastOnly) {
  std::vector<PCUITEMID_CHILD> pidls;
  for (const Ref<IItemIdList>& item : pItems) {
    const PItemIdList pidl = item->WindowsPointer();
    pidls.push_back(pLastOnly ? Api().ILFindLastID(pidl) : pidl);
  }
  return pidls;
}

/// A format that a data object has, freed with what it holds.
struct TFormat : FORMATETC {
  TFormat() : FORMATETC{} {}
  TFormat(const TFormat&) = delete;
  TFormat& operator=(const TFormat&) = delete;
  ~TFormat() { CoTaskMemFree(ptd); }
};

/// False if the source can't render the format, in spite of what it says.
bool CopyFormat(IDataObject& pSource, FORMATETC& pFormat, IDataObject& pTarget) {
  STGMEDIUM medium{};
  if (FAILED(pSource.GetData(&pFormat, &medium))) return false;
  const HRESULT result = pTarget.SetData(&pFormat, &medium, TRUE);
  if (FAILED(result)) Api().ReleaseStgMedium(&medium);
  THResultHelper::CheckForError(result);
  return true;
}

TString TitleOf(const std::vector<Ref<IItemIdList>>& pItems) {
  TStringArray names;
  for (std::size_t i = 0; i < pItems.size() && i < kNamesInTitle; ++i)
    names.push_back(pItems[i]->Name());
  if (pItems.size() > kNamesInTitle)
    names.push_back(IntToStr(static_cast<std::int64_t>(pItems.size() - kNamesInTitle)) +
                    u" elements");
  return Join(names, u" & ");
}

}  // namespace

// --- objects of the shell ----------------------------------------------------------

TItemIdListCollection::TItems TItemIdListCollection::ValidItems() {
  TItems items;
  for (const Ref<IItemIdList>& item : fItems)
    if (!item->IsInvalid()) items.push_back(item);
  if (items.empty())
    throw EFolderTrekError(u"There are no valid Shell ItemIdList in the TItemIdListCollection",
                           nullptr);
  return items;
}

void TItemIdListCollection::MakeAllAbsolute(TItems& pItems) {
  for (Ref<IItemIdList>& item : pItems) item = MakeAbsolute(item);
}

Ref<IShellFolder> TItemIdListCollection::CommonFolder(TItems& pItems) {
  bool areRelative = fShellFolder != nullptr;
  for (const Ref<IItemIdList>& item : pItems) areRelative = areRelative && IsRelative(item);
  if (areRelative) return fShellFolder;

  MakeAllAbsolute(pItems);
  const Ref<TItemIdListCollection> absolute = MakeRef<TItemIdListCollection>(pItems);
  if (!absolute->HaveSameParent()) return nullptr;
  const Ref<IItemIdList> parent = pItems.front()->GetParent();
  const bool isOwnFolder =
      fShellFolder && !IsInvalid(FolderIdList()) && FolderIdList()->Equals(parent, ilcExact);
  Ref<IShellFolder> folder = isOwnFolder ? fShellFolder : TOakItemIdList::FolderOf(parent);
  if (!folder) throw EFolderTrekError(u"IShellFolder interface could not be retrieved.", nullptr);
  return folder;
}

Ref<IUnknown> TItemIdListCollection::GetUIObject(REFIID pInterfaceID) {
  TItems items = ValidItems();
  Ref<IShellFolder> folder = CommonFolder(items);
  const bool isOneFolder = folder != nullptr;
  if (!isOneFolder && pInterfaceID == IidOf<IContextMenu>()) return GetContextMenuMultiple();
  if (!isOneFolder) folder = MakeRef<TOakDesktopFolder>();
  std::vector<PCUITEMID_CHILD> pidls = PidlsOf(items, isOneFolder);
  Ref<IUnknown> object;
  THResultHelper::CheckForError(folder->GetUIObjectOf(nullptr, static_cast<UINT>(pidls.size()),
                                                      pidls.data(), pInterfaceID, nullptr,
                                                      object.PutVoid()));
  if (!object) THResultHelper::CheckForError(E_NOINTERFACE);
  return object;
}

Ref<IContextMenu> TItemIdListCollection::GetContextMenuMultiple() {
  TItems items = ValidItems();
  MakeAllAbsolute(items);
  if (!Api().CDefFolderMenu_Create2) THResultHelper::CheckForError(E_NOTIMPL);
  std::vector<PCUITEMID_CHILD> pidls = PidlsOf(items, false);
  const Ref<IItemIdList> desktop = TOakItemIdList::CreateForSpecialFolder(SF_DESKTOP, true);
  const Ref<IShellFolder> folder = MakeRef<TOakDesktopFolder>();
  const TClassKey classKey = OpenAllFilesystemObjects();
  const HKEY keys[] = {classKey.Get()};
  Ref<IContextMenu> menu;
  THResultHelper::CheckForError(Api().CDefFolderMenu_Create2(
      desktop->WindowsPointer(), ApplicationWindow(), static_cast<UINT>(pidls.size()), pidls.data(),
      folder.Get(), &DefaultMenuCallback, classKey ? 1 : 0, keys, menu.Put()));
  if (!menu) THResultHelper::CheckForError(E_NOINTERFACE);
  return menu;
}

Ref<IDataObject> TItemIdListCollection::GetDataObject() {
  const Ref<IDataObject> data = GetUIObject(IidOf<IDataObject>()).As<IDataObject>();
  if (!data) THResultHelper::CheckForError(E_NOINTERFACE);
  return data;
}

void TItemIdListCollection::CopyTo(IDataObject* pTarget) {
  if (!pTarget) throw EArgumentException(u"pTarget is nil");
  const Ref<IDataObject> data = GetDataObject();
  Ref<IEnumFORMATETC> formats;
  THResultHelper::CheckForError(data->EnumFormatEtc(DATADIR_GET, formats.Put()));
  bool hasAny = false;
  for (;;) {
    TFormat format;
    if (!formats || formats->Next(1, &format, nullptr) != S_OK) break;
    hasAny |= CopyFormat(*data, format, *pTarget);
  }
  if (!hasAny) THResultHelper::CheckForError(DV_E_FORMATETC);
}

// --- commands ------------------------------------------------------------------------

bool TItemIdListCollection::InvokeCommand(const TShellCommand& pCommand) {
  if (fItems.empty()) return false;
  const bool isForEach = pCommand.In({saDefault, saExplore, saPinToHome, saOpenCommandPrompt});
  if (isForEach || (fItems.size() == 1 && !(pCommand == saProperties)))
    return InvokeCommandOnEach(pCommand);
  return InvokeCommandOnAll(pCommand);
}

bool TItemIdListCollection::InvokeCommandOnEach(const TShellCommand& pCommand) {
  bool isDone = false;
  // A command may change the collection that it came from.
  const TItems items = fItems;
  for (const Ref<IItemIdList>& item : items) {
    try {
      isDone |= MakeAbsolute(item)->InvokeCommand(pCommand);
    } catch (Exception& error) {
      error.SetMessage(error.GetMessage() + u" TItemIdListCollection.InvokeCommandOnEach(" +
                       pCommand.GetVerb() + u")");
      throw;
    }
  }
  return isDone;
}

bool TItemIdListCollection::InvokeCommandOnAll(const TShellCommand& pCommand) {
  if (fItems.empty()) return false;
  if (pCommand == saCopyPath) {
    Clipboard().SetAsText(ToString());
  } else if (pCommand == saProperties) {
    if (!Api().SHMultiFileProperties) THResultHelper::CheckForError(E_NOTIMPL);
    THResultHelper::CheckForError(Api().SHMultiFileProperties(GetDataObject().Get(), 0));
  } else if (pCommand == saCopy) {
    THResultHelper::CheckForError(Api().OleSetClipboard(GetDataObject().Get()));
  } else if (pCommand.Equals(ModernShareVerb)) {
    return Share();
  } else {
    TShellCommand command = pCommand;
    if (pCommand == saDeleteNoUndo) {
      // The menu knows one verb for both; who asks for it without undo gets it so.
      command = TShellCommand(saDelete, pCommand.Destination);
      command.OperationOptions = pCommand.OperationOptions;
      command.OperationOptions.Exclude(soAllowUndo);
    }
    const Ref<IContextMenu> menu = GetUIObject(IidOf<IContextMenu>()).As<IContextMenu>();
    if (!menu) THResultHelper::CheckForError(E_NOINTERFACE);
    TCMInvokeCommandInfoExHelper().Invoke(menu.Get(), command);
  }
  return true;
}

bool TItemIdListCollection::Share() {
  TItems items = ValidItems();
  MakeAllAbsolute(items);
  TShareRequest request;
  request.Title = TitleOf(items);
  request.DataType = u"Files";
  for (const Ref<IItemIdList>& item : items) request.Files.push_back(item->Path());
  request.Data = GetDataObject();
  return ShareObjects(request);
}

// --- IContextMenu ----------------------------------------------------------------------

/// Held by the caller: what is carried out may change the collection, and so drop the menu.
Ref<IContextMenu> TItemIdListCollection::ForwardMenu() {
  if (!fContextMenu) fContextMenu = GetContextMenuMultiple();
  return fContextMenu;
}

HRESULT STDMETHODCALLTYPE TItemIdListCollection::QueryContextMenu(HMENU pMenu, UINT pIndex,
                                                                  UINT pFirstId, UINT pLastId,
                                                                  UINT pFlags) {
  return ComFenced(
      [&] { return ForwardMenu()->QueryContextMenu(pMenu, pIndex, pFirstId, pLastId, pFlags); });
}

HRESULT STDMETHODCALLTYPE TItemIdListCollection::InvokeCommand(CMINVOKECOMMANDINFO* pInfo) {
  return ComFenced([&] { return ForwardMenu()->InvokeCommand(pInfo); });
}

HRESULT STDMETHODCALLTYPE TItemIdListCollection::GetCommandString(UINT_PTR pId, UINT pType,
                                                                  UINT* pReserved, CHAR* pName,
                                                                  UINT pSize) {
  return ComFenced(
      [&] { return ForwardMenu()->GetCommandString(pId, pType, pReserved, pName, pSize); });
}

}  // namespace oak
