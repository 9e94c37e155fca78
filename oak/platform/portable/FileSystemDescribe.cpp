// What a directory tells of its objects beside name, kind and attributes.
#include <sys/stat.h>

#include "oak/base/Guid.h"
#include "oak/base/Variant.h"
#include "oak/platform/portable/FileStream.h"
#include "oak/platform/portable/FileSystemSource.h"
#include "oak/platform/portable/PortableClasses.h"
#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PropertySystem.h"
#include "oak/platform/portable/SystemImageList.h"

namespace oak {
namespace {

void AddLine(TString& tip, const TFileObject& object, REFPROPERTYKEY key) {
  TPropVariant value;
  if (GetFileProperty(object, key, value.Put()) != S_OK || value.IsEmpty()) return;
  const TPropertyInfo* info = FindProperty(key);
  const TString text = FormatProperty(*info, value, PDFF_DEFAULT);
  if (text.empty()) return;
  if (!tip.empty()) tip += u'\n';
  tip += TString(info->Label) + u": " + text;
}

}  // namespace

std::vector<TFolderColumn> ColumnsOf(std::initializer_list<PROPERTYKEY> keys) {
  std::vector<TFolderColumn> columns;
  for (const PROPERTYKEY& key : keys) {
    const TPropertyInfo* info = FindProperty(key);
    columns.push_back({key, info->Label, info->Width,
                       IsRightAligned(*info) ? LVCFMT_RIGHT : LVCFMT_LEFT, ColumnStateOf(*info)});
  }
  return columns;
}

HRESULT TFileSystemFolder::Describe(PCUITEMID_CHILD element, TFileObject& object) {
  TFileElement file;
  if (!ReadFileElement(element, file)) return E_INVALIDARG;
  object.Native = NativeChild(file.Name);
  if (object.Native.empty()) return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
  object.IsFolder = IsFolder(file);
  object.Name = std::move(file.Name);
  return S_OK;
}

HRESULT TFileSystemFolder::OpenStream(PCUITEMID_CHILD element, DWORD mode, IStream** stream) {
  *stream = nullptr;
  TFileElement file;
  if (!ReadFileElement(element, file)) return E_INVALIDARG;
  const std::string native = NativeChild(file.Name);
  if (native.empty()) return STG_E_FILENOTFOUND;
  return OpenFileStream(native, W(file.Name), mode, stream);
}

HRESULT TFileSystemFolder::GetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key,
                                       PROPVARIANT* value) {
  TFileObject object;
  const HRESULT result = Describe(element, object);
  if (FAILED(result)) return result;
  if (TPropertyKeyEqual{}(key, PKEY_Link_TargetParsingPath) && !object.IsFolder &&
      IsLinkName(object.Name))
    return GetLinkPath(element, value);
  return GetFileProperty(object, key, value);
}

HRESULT TFileSystemFolder::SetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key,
                                       REFPROPVARIANT value) {
  TFileObject object;
  const HRESULT result = Describe(element, object);
  return FAILED(result) ? result : SetFileProperty(object, key, value);
}

std::vector<PROPERTYKEY> TFileSystemFolder::GetPropertyKeys(PCUITEMID_CHILD element) {
  TFileObject object;
  static_cast<void>(Describe(element, object));  // nameless: what any object has
  return FilePropertyKeys(object);
}

HRESULT TFileSystemFolder::GetTypeName(PCUITEMID_CHILD element, TString& name) {
  TFileElement file;
  if (!ReadFileElement(element, file)) return E_INVALIDARG;
  name = FileTypeName(file.Name, IsFolder(file));
  return S_OK;
}

HRESULT TFileSystemFolder::GetInfoTip(PCUITEMID_CHILD element, TString& tip) {
  tip.clear();
  TFileObject object;
  const HRESULT result = Describe(element, object);
  if (FAILED(result)) return result;
  AddLine(tip, object, PKEY_ItemTypeText);
  if (!object.IsFolder) AddLine(tip, object, PKEY_Size);
  AddLine(tip, object, PKEY_DateModified);
  return S_OK;
}

HRESULT TFileSystemFolder::GetOverlayIndex(PCUITEMID_CHILD element, int& index) {
  TFileElement file;
  if (!ReadFileElement(element, file)) return E_INVALIDARG;
  if ((file.Flags & feSymlink) || (!(file.Flags & feFolder) && IsLinkName(file.Name))) {
    index = LinkOverlayNumber;
    return S_OK;
  }
  const std::string native = NativeChild(file.Name);
  const auto config = PortableConfig();
  for (const TPortableShare& share : config->Shares) {
    if (native.empty() || share.Directory != native) continue;
    index = ShareOverlayNumber;
    return S_OK;
  }
  return S_FALSE;
}

std::span<const TFolderColumn> TFileSystemFolder::GetColumns() {
  static const auto* columns =
      new std::vector<TFolderColumn>(ColumnsOf({PKEY_ItemNameDisplay,
                                                PKEY_Size,
                                                PKEY_ItemTypeText,
                                                PKEY_DateModified,
                                                PKEY_DateCreated,
                                                PKEY_DateAccessed,
                                                PKEY_FileAttributes,
                                                PKEY_PerceivedType,
                                                PKEY_FileOwner,
                                                PKEY_Kind,
                                                PKEY_Title,
                                                PKEY_Subject,
                                                PKEY_Author,
                                                PKEY_Keywords,
                                                PKEY_Comment,
                                                PKEY_Copyright,
                                                PKEY_Rating,
                                                PKEY_FileExtension,
                                                PKEY_FileAllocationSize,
                                                PKEY_ComputerName,
                                                PKEY_Link_TargetParsingPath,
                                                PKEY_Image_Dimensions,
                                                PKEY_Image_HorizontalSize,
                                                PKEY_Image_VerticalSize,
                                                PKEY_Image_BitDepth,
                                                PKEY_Image_HorizontalResolution,
                                                PKEY_Image_VerticalResolution}));
  return *columns;
}

// --- links -----------------------------------------------------------------------

HRESULT TFileSystemFolder::LoadLink(PCUITEMID_CHILD element, REFIID iid, void** object) {
  *object = nullptr;
  TFileElement file;
  if (!ReadFileElement(element, file)) return E_INVALIDARG;
  if ((file.Flags & feFolder) || !IsLinkName(file.Name)) return E_NOINTERFACE;
  const TPortableFactory factory = FindPortableClass(CLSID_ShellLink);
  if (!factory) return REGDB_E_CLASSNOTREG;
  Ref<IPersistFile> link;
  HRESULT result = factory(IidOf<IPersistFile>(), link.PutVoid());
  if (SUCCEEDED(result)) result = link->Load(W(PathOf(file.Name)), STGM_READ);
  return FAILED(result) ? result : link->QueryInterface(iid, object);
}

// Empty for a link to what has no path.
HRESULT TFileSystemFolder::GetLinkPath(PCUITEMID_CHILD element, PROPVARIANT* value) {
  Ref<IShellLinkW> link;
  HRESULT result = LoadLink(element, IidOf<IShellLinkW>(), link.PutVoid());
  if (FAILED(result)) return result;
  constexpr int longestPath = 32768;
  TString path(longestPath, u'\0');
  result = link->GetPath(WBuffer(path), longestPath, nullptr, 0);
  if (result != S_OK) return result;
  *value = TPropVariant::From(TStringView(path.c_str())).Detach();
  return S_OK;
}

HRESULT TFileSystemFolder::GetUIObject(std::span<const PCUITEMID_CHILD> elements, REFIID iid,
                                       void** object) {
  *object = nullptr;
  if (elements.size() != 1 || !(iid == IidOf<IShellLinkW>())) return E_NOINTERFACE;
  return LoadLink(elements.front(), iid, object);
}

HRESULT TFileSystemFolder::GetLinkTarget(PCUITEMID_CHILD element, TPidl& target) {
  Ref<IShellLinkW> link;
  const HRESULT result = LoadLink(element, IidOf<IShellLinkW>(), link.PutVoid());
  if (FAILED(result)) return result;
  return link->GetIDList(target.Put());
}

}  // namespace oak
