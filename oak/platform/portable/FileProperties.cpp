#include "oak/platform/portable/FileProperties.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <unordered_map>

#include "oak/base/Guid.h"
#include "oak/base/Variant.h"
#include "oak/platform/portable/FileAttributeStore.h"
#include "oak/platform/portable/FileKinds.h"
#include "oak/platform/portable/ImageProperties.h"
#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/PropertyTable.h"
#include "oak/platform/shell_api.h"

namespace oak {
namespace {

constexpr PROPERTYKEY kOwnerOfOldViews{FMTID_Displaced, 4};
constexpr PROPERTYKEY kNameWithoutExtension{FMTID_Storage, 24};

std::optional<TFileInfo> InfoOf(const TFileObject& object, DWORD& error) {
  auto info = GetFileInfo(object.Native, true, &error);
  // A link that leads nowhere still has dates and a size of its own.
  return info ? info : GetFileInfo(object.Native, false, &error);
}

HRESULT FromInfo(const TFileObject& object, TPropVariant& value,
                 TPropVariant (*get)(const TFileInfo&)) {
  DWORD error = 0;
  const auto info = InfoOf(object, error);
  if (!info) return HRESULT_FROM_WIN32(error);
  value = get(*info);
  return S_OK;
}

// --- what stat tells -----------------------------------------------------------

HRESULT GetSize(const TFileObject& object, TPropVariant& value) {
  if (object.IsFolder) return S_OK;
  return FromInfo(object, value,
                  [](const TFileInfo& info) { return TPropVariant::From(info.Size); });
}
HRESULT GetAllocation(const TFileObject& object, TPropVariant& value) {
  if (object.IsFolder) return S_OK;
  return FromInfo(object, value,
                  [](const TFileInfo& info) { return TPropVariant::From(info.AllocationSize); });
}
HRESULT GetModified(const TFileObject& object, TPropVariant& value) {
  return FromInfo(object, value,
                  [](const TFileInfo& info) { return TPropVariant::From(info.Written); });
}
HRESULT GetCreated(const TFileObject& object, TPropVariant& value) {
  return FromInfo(object, value,
                  [](const TFileInfo& info) { return TPropVariant::From(info.Created); });
}
HRESULT GetAccessed(const TFileObject& object, TPropVariant& value) {
  return FromInfo(object, value,
                  [](const TFileInfo& info) { return TPropVariant::From(info.Accessed); });
}
HRESULT GetAttributeBits(const TFileObject& object, TPropVariant& value) {
  return FromInfo(object, value, [](const TFileInfo& info) {
    return TPropVariant::From(info.Attributes ? info.Attributes : DWORD{FILE_ATTRIBUTE_NORMAL});
  });
}

TString OwnerName(std::uint32_t user) {
  std::array<char, 4096> buffer;
  passwd entry{}, *found = nullptr;
  if (getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found) == 0 && found)
    return FromUtf8(found->pw_name);
  return IntToStr(user);
}
HRESULT GetOwner(const TFileObject& object, TPropVariant& value) {
  return FromInfo(object, value,
                  [](const TFileInfo& info) { return TPropVariant::From(OwnerName(info.Owner)); });
}

// --- what the name tells ---------------------------------------------------------

TString ExtensionOf(const TFileObject& object) {
  return object.IsFolder ? TString() : ExtractFileExt(object.Name);
}
HRESULT GetExtension(const TFileObject& object, TPropVariant& value) {
  const TString extension = ExtensionOf(object);
  if (!extension.empty()) value = TPropVariant::From(extension);
  return S_OK;
}
HRESULT GetStem(const TFileObject& object, TPropVariant& value) {
  const TStringView name = object.Name;
  value = TPropVariant::From(name.substr(0, name.size() - ExtensionOf(object).size()));
  return S_OK;
}
HRESULT GetItemType(const TFileObject& object, TPropVariant& value) {
  const TString extension = ExtensionOf(object);
  if (object.IsFolder || !extension.empty())
    value = TPropVariant::From(object.IsFolder ? TString(u"Directory") : extension);
  return S_OK;
}
HRESULT GetTypeText(const TFileObject& object, TPropVariant& value) {
  value = TPropVariant::From(FileTypeName(object.Name, object.IsFolder));
  return S_OK;
}
HRESULT GetKind(const TFileObject& object, TPropVariant& value) {
  const TFileKind kind = FileKindOf(object.Name, object.IsFolder);
  if (*kind.Kind) value = TPropVariant::From(TStringArray{kind.Kind});
  return S_OK;
}
HRESULT GetKindText(const TFileObject& object, TPropVariant& value) {
  const TFileKind kind = FileKindOf(object.Name, object.IsFolder);
  if (*kind.Label) value = TPropVariant::From(kind.Label);
  return S_OK;
}
HRESULT GetPerceived(const TFileObject& object, TPropVariant& value) {
  const PERCEIVED type = FileKindOf(object.Name, object.IsFolder).Perceived;
  value = TPropVariant::From(static_cast<LONG>(type));
  return S_OK;
}
HRESULT GetComputer(const TFileObject&, TPropVariant& value) {
  value = TPropVariant::From(PortableConfig()->ComputerName);
  return S_OK;
}
HRESULT GetShared(const TFileObject& object, TPropVariant& value) {
  const auto config = PortableConfig();
  bool shared = false;
  for (const TPortableShare& share : config->Shares)
    shared = shared || share.Directory == object.Native;
  value = TPropVariant::From(shared);
  return S_OK;
}

// Where a symbolic link leads, as it is written.
HRESULT GetLinkTarget(const TFileObject& object, TPropVariant& value) {
  std::string target(PATH_MAX, 0);
  const ssize_t length = ::readlink(object.Native.c_str(), target.data(), target.size());
  if (length <= 0) return S_OK;
  target.resize(static_cast<std::size_t>(length));
  if (target.front() != '/')
    target = JoinNative(object.Native.substr(0, object.Native.find_last_of('/') + 1), target);
  const TString path = WindowsPath(target);
  if (!path.empty()) value = TPropVariant::From(path);
  return S_OK;
}

// --- the table ---------------------------------------------------------------------

using TGetter = HRESULT (*)(const TFileObject& object, TPropVariant& value);
using TGetters = std::unordered_map<PROPERTYKEY, TGetter, TPropertyKeyHash, TPropertyKeyEqual>;

const TGetters& Getters() {
  static const auto* getters = new TGetters{
      // used by threads that outlive static destructors
      {PKEY_Size, GetSize},
      {PKEY_FileAllocationSize, GetAllocation},
      {PKEY_DateModified, GetModified},
      {PKEY_DateCreated, GetCreated},
      {PKEY_DateAccessed, GetAccessed},
      {PKEY_ItemDate, GetModified},
      {PKEY_FileAttributes, GetAttributeBits},
      {PKEY_FileOwner, GetOwner},
      {kOwnerOfOldViews, GetOwner},
      {PKEY_FileExtension, GetExtension},
      {kNameWithoutExtension, GetStem},
      {PKEY_ItemType, GetItemType},
      {PKEY_ItemTypeText, GetTypeText},
      {PKEY_Kind, GetKind},
      {PKEY_KindText, GetKindText},
      {PKEY_PerceivedType, GetPerceived},
      {PKEY_ComputerName, GetComputer},
      {PKEY_IsShared, GetShared},
      {PKEY_Link_TargetParsingPath, GetLinkTarget},
  };
  return *getters;
}

}  // namespace

HRESULT GetFileProperty(const TFileObject& object, REFPROPERTYKEY key, PROPVARIANT* value) {
  TPropVariant result;
  HRESULT code = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
  const auto getter = Getters().find(key);
  if (getter != Getters().end())
    code = getter->second(object, result);
  else if (IsImageProperty(key))
    code = GetImageProperty(object, key, result);
  else if (IsStoredProperty(key))
    code = ReadStoredProperty(object.Native, key, result);
  if (SUCCEEDED(code)) *value = result.Detach();
  return code;
}

std::vector<PROPERTYKEY> FilePropertyKeys(const TFileObject& object) {
  const bool isPicture = IsPictureName(object);
  std::vector<PROPERTYKEY> keys;
  for (const TPropertyInfo& info : PropertyTable()) {
    const bool answered = Getters().contains(info.Key) || IsStoredProperty(info.Key) ||
                          (isPicture && IsImageProperty(info.Key));
    if (answered && !HasFlag(info.Flags, TPropertyFlags::Alias)) keys.push_back(info.Key);
  }
  return keys;
}

}  // namespace oak
