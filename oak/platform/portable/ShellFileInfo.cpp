// SHGetFileInfo and SHGetDataFromIDList: an object described in one structure.
#include <algorithm>

#include "oak/base/Variant.h"
#include "oak/platform/Api.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/ShellFolder.h"
#include "oak/platform/portable/ShellFunctions.h"
#include "oak/platform/portable/ShellItem.h"
#include "oak/platform/portable/ShellPidl.h"
#include "oak/platform/portable/ShellProperties.h"
#include "oak/platform/portable/SystemImageList.h"
#include "oak/platform/shell_api_images.h"

namespace oak {

namespace {

template <std::size_t N>
void CopyCut(const TString& text, WCHAR (&buffer)[N]) {
  const std::size_t length = std::min(text.size(), N - 1);
  std::copy_n(text.data(), length, buffer);
  buffer[length] = 0;
}

// The object that the caller means: by list, by path, or by a path that need not exist.
HRESULT ListOfCaller(LPCWSTR path, DWORD attributes, UINT flags, TPidl& list) {
  if (!path) return E_INVALIDARG;
  if (flags & SHGFI_PIDL) {
    list = TPidl::Copy(reinterpret_cast<PCItemIdList>(path));
    return S_OK;
  }
  TString text(path);
  if (text.size() == 2 && text[1] == u':') text += u'\\';
  WIN32_FIND_DATAW data{};
  data.dwFileAttributes = attributes ? attributes : 0x80;  // FILE_ATTRIBUTE_NORMAL
  TParseOptions options;
  if (flags & SHGFI_USEFILEATTRIBUTES) {
    options.FindData = &data;
    if (text.find(u'\\') == TString::npos) text = u"C:\\" + text;  // a bare name, by its extension
  }
  return ParseAbsolute(text, options, list);
}

struct TPlace {
  Ref<TFolderNode> Folder;  // nil for the desktop
  PCUITEMID_CHILD Child = nullptr;
};

HRESULT Attributes(const TPlace& place, DWORD mask, DWORD& attributes) {
  return place.Folder ? place.Folder->GetAttributes(place.Child, mask, attributes)
                      : TFolderNode::Desktop()->GetFolderAttributes(mask, attributes);
}

int IconOf(const TPlace& place, UINT flags) {
  if (!place.Folder) return iconDesktop;
  TString name;
  DWORD attributes = 0;
  // A file that need not exist has the icon of its type: a shortcut is not read then.
  if ((flags & SHGFI_USEFILEATTRIBUTES) && ElementKind(place.Child) == ekFileSystem &&
      SUCCEEDED(place.Folder->GetAttributes(place.Child, SFGAO_FOLDER, attributes)) &&
      !(attributes & SFGAO_FOLDER) &&
      SUCCEEDED(place.Folder->GetName(place.Child, TNameForm::Parsing, name)))
    return IconOfFileName(name);
  return place.Folder->GetIconIndex(place.Child, (flags & SHGFI_OPENICON) != 0);
}

HRESULT FillInfo(const TPlace& place, UINT flags, SHFILEINFOW& info) {
  HRESULT result = S_OK;
  TString text;
  if (flags & SHGFI_DISPLAYNAME) {
    result = NameOfChild(place.Folder.Get(), place.Child, SIGDN_PARENTRELATIVE, text);
    CopyCut(text, info.szDisplayName);
  }
  if (SUCCEEDED(result) && (flags & SHGFI_TYPENAME)) {
    text = u"System Folder";
    if (place.Folder) result = place.Folder->GetTypeName(place.Child, text);
    CopyCut(text, info.szTypeName);
  }
  if (SUCCEEDED(result) && (flags & SHGFI_ATTRIBUTES)) {
    // What the object has at no great cost, unless the caller names the bits.
    const DWORD mask = flags & SHGFI_ATTR_SPECIFIED ? info.dwAttributes : ~SFGAO_VALIDATE;
    DWORD attributes = 0;
    result = Attributes(place, mask, attributes);
    info.dwAttributes = attributes & mask;
  }
  if (flags & (SHGFI_SYSICONINDEX | SHGFI_ICON | SHGFI_ICONLOCATION))
    info.iIcon = IconOf(place, flags);
  int overlay = -1;
  if (place.Folder && (flags & SHGFI_OVERLAYINDEX) &&
      place.Folder->SourceOf(place.Child).GetOverlayIndex(place.Child, overlay) == S_OK)
    info.iIcon |= overlay << 24;
  if (flags & SHGFI_ICONLOCATION) CopyCut(u"shell32.dll", info.szDisplayName);
  return result;
}

DWORD_PTR STDAPICALLTYPE SHGetFileInfoW(LPCWSTR path, DWORD attributes, SHFILEINFOW* info,
                                        UINT size, UINT flags) {
  return ShellCall<DWORD_PTR>(0, [&]() -> DWORD_PTR {
    if (flags & SHGFI_EXETYPE) return 0;  // no program of that platform
    if (!info || size < sizeof(SHFILEINFOW)) return 0;
    TPidl list;
    TPlace place;
    HRESULT result = ListOfCaller(path, attributes, flags, list);
    if (SUCCEEDED(result) && !IsEmptyPidl(list.Get()))
      result = BindParent(TFolderNode::Desktop(), list.Get(), place.Folder, place.Child);
    if (SUCCEEDED(result) && place.Folder && !ElementKind(place.Child)) result = E_INVALIDARG;
    SHFILEINFOW filled{};
    filled.dwAttributes = flags & SHGFI_ATTR_SPECIFIED ? info->dwAttributes : 0;
    if (SUCCEEDED(result)) result = FillInfo(place, flags, filled);
    if (FAILED(result)) return 0;
    *info = filled;
    if (!(flags & SHGFI_SYSICONINDEX)) return 1;
    const int size = flags & SHGFI_SMALLICON ? SHIL_SMALL : SHIL_LARGE;
    return reinterpret_cast<DWORD_PTR>(SystemImageListHandle(size));
  });
}

// --- SHGetDataFromIDList -------------------------------------------------------------

std::uint64_t NumberProperty(const TFolderNode& node, PCUITEMID_CHILD child, REFPROPERTYKEY key) {
  TPropVariant value;
  std::uint64_t number = 0;
  if (SUCCEEDED(node.GetProperty(child, key, value.Put()))) (void)TryGetUInt64(value, number);
  return number;
}

HRESULT FillFindData(const TFolderNode& node, PCUITEMID_CHILD child, void* data, int size) {
  if (size < static_cast<int>(sizeof(WIN32_FIND_DATAW))) return HRESULT_FROM_WIN32(122);
  TString path, name;
  HRESULT result = node.GetName(child, TNameForm::FileSystemPath, path);
  if (SUCCEEDED(result)) result = node.GetName(child, TNameForm::Parsing, name);
  if (FAILED(result)) return E_INVALIDARG;
  auto& found = *static_cast<WIN32_FIND_DATAW*>(data);
  found = {};
  found.dwFileAttributes = static_cast<DWORD>(NumberProperty(node, child, PKEY_FileAttributes));
  DWORD attributes = 0;
  if (SUCCEEDED(node.GetAttributes(child, SFGAO_FOLDER, attributes)) && (attributes & SFGAO_FOLDER))
    found.dwFileAttributes |= 0x10;  // FILE_ATTRIBUTE_DIRECTORY
  const std::uint64_t bytes = NumberProperty(node, child, PKEY_Size);
  found.nFileSizeHigh = static_cast<DWORD>(bytes >> 32);
  found.nFileSizeLow = static_cast<DWORD>(bytes);
  found.ftCreationTime = TimeProperty(node, child, PKEY_DateCreated);
  found.ftLastAccessTime = TimeProperty(node, child, PKEY_DateAccessed);
  found.ftLastWriteTime = TimeProperty(node, child, PKEY_DateModified);
  CopyCut(name, found.cFileName);
  return S_OK;
}

// The published numbers of kinds (SHDID_).
DWORD DescriptionOf(const TFolderNode& node, PCUITEMID_CHILD child) {
  DWORD attributes = 0;
  (void)node.GetAttributes(child, SFGAO_FOLDER | SFGAO_REMOVABLE, attributes);
  switch (ElementKind(child)) {
    case ekMount:
      return 1;
    case ekFileSystem:
      return attributes & SFGAO_FOLDER ? 3u : 2u;
    case ekServer:
      return 14;
    case ekShare:
      return 15;
    case ekDrive:
      return attributes & SFGAO_REMOVABLE                      ? 7u
             : node.GetIconIndex(child, false) == iconNetDrive ? 9u
                                                               : 8u;
    default:
      return 4;
  }
}

HRESULT FillDescription(const TFolderNode& node, PCUITEMID_CHILD child, void* data, int size) {
  if (size < static_cast<int>(sizeof(SHDESCRIPTIONID))) return HRESULT_FROM_WIN32(122);
  auto& description = *static_cast<SHDESCRIPTIONID*>(data);
  description = {DescriptionOf(node, child), GUID_NULL};
  Ref<TFolderNode> folder;
  if (ElementKind(child) == ekMount && SUCCEEDED(node.Open(child, folder)))
    description.clsid = folder->ClassId();
  return S_OK;
}

// The structure, then its text in the same buffer.
HRESULT FillNetResource(const TFolderNode& node, PCUITEMID_CHILD child, void* data, int size) {
  const BYTE kind = ElementKind(child);
  if (kind != ekServer && kind != ekShare) return E_INVALIDARG;
  TString remote;
  const HRESULT result = node.GetName(child, TNameForm::AbsoluteParsing, remote);
  if (FAILED(result)) return result;
  const std::size_t needed = sizeof(NETRESOURCEW) + (remote.size() + 1) * sizeof(WCHAR);
  if (size < 0 || static_cast<std::size_t>(size) < needed) return HRESULT_FROM_WIN32(122);
  NETRESOURCEW resource{};
  resource.dwScope = RESOURCE_GLOBALNET;
  resource.dwType = kind == ekShare ? RESOURCETYPE_DISK : RESOURCETYPE_ANY;
  resource.dwDisplayType = kind == ekShare ? RESOURCEDISPLAYTYPE_SHARE : RESOURCEDISPLAYTYPE_SERVER;
  resource.dwUsage = kind == ekShare ? RESOURCEUSAGE_CONNECTABLE : RESOURCEUSAGE_CONTAINER;
  resource.lpRemoteName = reinterpret_cast<LPWSTR>(static_cast<BYTE*>(data) + sizeof resource);
  std::copy_n(remote.c_str(), remote.size() + 1, resource.lpRemoteName);
  std::memcpy(data, &resource, sizeof resource);
  return S_OK;
}

HRESULT STDAPICALLTYPE SHGetDataFromIDListW(IShellFolder* folder, PCUITEMID_CHILD pidl, int format,
                                            void* data, int size) {
  return PortableCall("SHGetDataFromIDListW", [&]() -> HRESULT {
    if (!folder || !pidl || !data) return E_INVALIDARG;
    Ref<TFolderNode> start, node;
    PCUITEMID_CHILD child = nullptr;
    HRESULT result = NodeOf(folder, start);
    if (SUCCEEDED(result)) result = BindParent(start, pidl, node, child);
    if (FAILED(result)) return result;
    if (!ElementKind(child)) return E_INVALIDARG;
    if (format == SHGDFIL_FINDDATA) return FillFindData(*node, child, data, size);
    if (format == SHGDFIL_DESCRIPTIONID) return FillDescription(*node, child, data, size);
    return format == SHGDFIL_NETRESOURCE ? FillNetResource(*node, child, data, size) : E_INVALIDARG;
  });
}

}  // namespace

void BindShellInfo(TApi& api) {
  api.SHGetFileInfoW.SetFunction(&SHGetFileInfoW);
  api.SHGetDataFromIDListW.SetFunction(&SHGetDataFromIDListW);
}

}  // namespace oak
