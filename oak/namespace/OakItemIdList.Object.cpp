// The object behind an item: its shell item, attributes, values and contents.
#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.State.h"
#include "oak/namespace/Shell_Win32.Properties.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/MainThread.h"

namespace oak {
namespace {

constexpr TStringView kControlPanel = u"::{26EE0668-A00A-44D7-9371-BEB064C98683}";

}  // namespace

Ref<IShellItem> TOakItemIdList::ShellItem() {
  PItemIdList pidl = WindowsPointer();
  if (!pidl) return {};
  const bool isMain = IsMainThread();
  if (isMain)
    if (IShellItem* cached = fShellItem.load(std::memory_order_acquire))
      return Ref<IShellItem>::Share(cached);
  Ref<IShellItem> item;
  if (FAILED(Api().SHCreateShellItem(nullptr, nullptr, pidl, item.Put())) || !item) return {};
  // Only the field: asking what the item is would come back here.
  if (!isMain || fSpecialFolder.load(std::memory_order_relaxed) == SF_QUICKACCESS) return item;
  IShellItem* none = nullptr;
  if (fShellItem.compare_exchange_strong(none, item.Get(), std::memory_order_acq_rel))
    item->AddRef();
  return item;
}

Ref<IShellFolder> TOakItemIdList::GetShellFolder() {
  if (IsSpecialFolder(SF_DESKTOP)) return Desktop();
  const Ref<IShellItem> item = ShellItem();
  if (!item)
    throw EFolderTrekError(u"Could not retrieve IShellItem for ItemIdList ",
                           static_cast<IItemIdList*>(this));
  Ref<IShellFolder> folder;
  const HRESULT result =
      item->BindToHandler(nullptr, BHID_SFObject, IidOf<IShellFolder>(), folder.PutVoid());
  if (FAILED(result)) throw EFolderTrekError(result, DisplayPath());
  return folder;
}

Ref<IShellFolder> TOakItemIdList::FolderOf(const Ref<IItemIdList>& pItemIdList) {
  if (TOakItemIdList* item = From(pItemIdList)) return item->GetShellFolder();
  return pItemIdList.As<IShellFolder>();
}

Ref<IStream> TOakItemIdList::GetStream() {
  if (IsFolder()) return {};
  const Ref<IShellItem> item = ShellItem();
  Ref<IBindCtx> context;
  if (!item || FAILED(Api().CreateBindCtx(0, context.Put()))) return {};
  BIND_OPTS options{};
  options.cbStruct = sizeof(options);
  options.grfMode = STGM_SHARE_DENY_NONE;
  Ref<IStream> stream;
  if (FAILED(context->SetBindOptions(&options)) ||
      FAILED(item->BindToHandler(context.Get(), BHID_Stream, IidOf<IStream>(), stream.PutVoid())))
    return {};
  return stream;
}

Ref<ISequentialStream> TOakItemIdList::GetSequentialStream() { return GetStream(); }

// --- attributes --------------------------------------------------------------

bool TOakItemIdList::HasAttributes(DWORD pAttributes) {
  if (pAttributes == SFGAO_BROWSABLE) return IsBrowsable();
  const TStringView path = PathField();
  if (pAttributes == SFGAO_FILESYSTEM && path.size() > 1 &&
      Fenced(false, [&] { return FileOrFolderExists(path); }))
    return true;
  const Ref<IShellItem> item = ShellItem();
  SFGAOF found = 0;
  return item && SUCCEEDED(item->GetAttributes(pAttributes, &found)) && (found & pAttributes) != 0;
}

bool TOakItemIdList::IsFolder() { return HasAttributes(SFGAO_FOLDER); }

bool TOakItemIdList::IsBrowsable() {
  if (IsInvalid() || !IsFolder() || IsParentOf(SF_BITBUCKET, Self(), false)) return false;
  // The pages of the control panel are folders that show nothing.
  return Depth() != 3 || !Create(kControlPanel)->IsParentOf(Self(), true, ilcExact);
}

bool TOakItemIdList::IsSlow() {
  if (IsInvalid()) return false;
  if (Depth() <= 2 && IsNetworkPidl(Self())) return true;
  if (CreateForSpecialFolder(SF_NETHOOD, true)->IsParentOf(Self(), true, ilcExact)) return true;
  const TString path = Path();
  // A share without its last delimiter is no root to the system.
  return IsDrive(path) &&
         Api().GetDriveTypeW(W(IncludeTrailingPathDelimiter(path))) == DRIVE_REMOTE;
}

bool TOakItemIdList::IsNetworkPidl(const Ref<IItemIdList>& pFullPidl) {
  return IsParentOf(SF_NETWORK, pFullPidl, true);
}

bool TOakItemIdList::IsParentOf(TOakShellFolder pParentFolder,
                                const Ref<IItemIdList>& pChildItemIdList, bool pAcceptsEquals) {
  if (pParentFolder == SF_UNKNOWN || pParentFolder == SF_INVALID) return false;
  const Ref<IItemIdList> folder = CreateForSpecialFolder(pParentFolder, true);
  return !folder->IsInvalid() && folder->IsParentOf(pChildItemIdList, pAcceptsEquals, ilcExact);
}

Ref<IItemIdList> TOakItemIdList::LinkTarget() {
  // An entry that is pinned there leads to the real folder.
  if (IsWindows10OrLater() && IsParentOf(SF_QUICKACCESS, Self(), false))
    return Parse(DisplayPath());
  Ref<IItemIdList> target = Fenced(Ref<IItemIdList>(), [&] {
    return HasAttributes(SFGAO_LINK) ? TShellLinkHelper::Resolve(Self()) : Ref<IItemIdList>();
  });
  return target ? target : Self();
}

// --- values ------------------------------------------------------------------

TShellPropertyValue TOakItemIdList::GetPropertyValue(const TShellColumnId& pShellColumnId) {
  TShellPropertyValue value;
  const Ref<IShellItem2> item = ShellItem().As<IShellItem2>();
  if (!item) return value;
  const PROPERTYKEY key = SubstituteMetaData(pShellColumnId);
  if (FAILED(item->GetProperty(key, value.Put()))) return {};
  return value;
}

TString TOakItemIdList::GetShellInformation(std::span<const TShellColumnId> pSHColumns,
                                            bool pFirstOnly) {
  const Ref<IShellItem2> item = ShellItem().As<IShellItem2>();
  if (!item) return {};
  TString all;
  for (const TShellColumnId& column : pSHColumns) {
    const TShellColumnId key = SubstituteMetaData(column);
    TShellPropertyValue value;
    if (FAILED(item->GetProperty(PROPERTYKEY(key), value.Put()))) continue;
    TString text = Fenced(TString(), [&] { return PropVariantAsDisplayString(value.Get(), key); });
    if (text.empty()) continue;
    if (pFirstOnly) return text;
    if (!all.empty()) all.append(u"\r\n");
    all.append(text);
  }
  return all;
}

TString TOakItemIdList::GetFormattedString(const TShellColumnId& pShellColumnId) {
  return GetShellInformation({&pShellColumnId, 1}, true);
}

std::int64_t TOakItemIdList::GetPlainValue(const TShellColumnId& pShellColumnId) {
  return Fenced(std::int64_t{0}, [&] { return GetPropertyValue(pShellColumnId).ToInt64(); });
}

}  // namespace oak
