// The computer folder: drives.
#include "oak/base/Variant.h"
#include "oak/platform/Api.h"
#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/ShellNode.h"
#include "oak/platform/portable/ShellProperties.h"
#include "oak/platform/portable/ShellRoots.h"

namespace oak {

namespace {

constexpr BYTE kDriveVersion = 1;
constexpr DWORD kAttributes = SFGAO_FOLDER | SFGAO_FILESYSTEM | SFGAO_FILESYSANCESTOR |
                              SFGAO_HASSUBFOLDER | SFGAO_STORAGE | SFGAO_STORAGEANCESTOR |
                              SFGAO_CANLINK | SFGAO_HASPROPSHEET | SFGAO_DROPTARGET;

TPidl DriveElement(char16_t letter) {
  const BYTE payload[] = {static_cast<BYTE>(letter & 0xFF), 0};
  return MakeElement(ekDrive, kDriveVersion, payload);
}

// 'A'..'Z', or 0 for foreign bytes.
char16_t LetterOf(PCUITEMID_CHILD element) {
  const std::span<const BYTE> payload = ElementPayload(element, ekDrive, kDriveVersion);
  if (payload.size() != 2 || payload[0] < 'A' || payload[0] > 'Z' || payload[1] != 0) return 0;
  return payload[0];
}

TString RootOf(char16_t letter) { return {letter, u':', u'\\'}; }

const char16_t* KindName(TPortableDriveKind kind) {
  switch (kind) {
    case TPortableDriveKind::Removable:
      return u"Removable Disk";
    case TPortableDriveKind::Network:
      return u"Network Drive";
    case TPortableDriveKind::CdRom:
      return u"CD Drive";
    default:
      return u"Local Disk";
  }
}

// "share (\\server)" of what a network drive leads to.
TString RemoteLabel(const TString& remote) {
  const std::size_t at = remote.rfind(u'\\');
  if (at == TString::npos || at < 3) return remote;
  return remote.substr(at + 1) + u" (" + remote.substr(0, at) + u")";
}

TString LabelOf(const TPortableDrive* drive) {
  if (!drive) return KindName(TPortableDriveKind::Fixed);
  if (!drive->Label.empty()) return drive->Label;
  if (drive->Kind == TPortableDriveKind::Network && !drive->Remote.empty())
    return RemoteLabel(drive->Remote);
  return KindName(drive->Kind);
}

int IconOf(TPortableDriveKind kind) {
  switch (kind) {
    case TPortableDriveKind::Removable:
      return iconRemovable;
    case TPortableDriveKind::Network:
      return iconNetDrive;
    case TPortableDriveKind::CdRom:
      return iconCdRom;
    default:
      return iconDrive;
  }
}

bool IsKey(REFPROPERTYKEY a, REFPROPERTYKEY b) { return a.pid == b.pid && a.fmtid == b.fmtid; }

class TComputerSource : public TFolderSource {
 public:
  GUID GetClassId() override { return ComputerClassId; }

  HRESULT Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) override {
    std::vector<TPidl> elements;
    if (flags & SHCONTF_FOLDERS)
      for (const TPortableDrive& drive : PortableConfig()->Drives)
        elements.push_back(DriveElement(drive.Letter));
    cursor = MakeListCursor(std::move(elements));
    return S_OK;
  }

  HRESULT GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) override {
    const char16_t letter = LetterOf(element);
    if (!letter) return E_INVALIDARG;
    switch (form) {
      case TNameForm::Display:
      case TNameForm::Normal:
      case TNameForm::AddressBar:
        name = LabelOf(PortableConfig()->FindDrive(letter)) + u" (" + letter + u":)";
        return S_OK;
      case TNameForm::Editing:
        name = LabelOf(PortableConfig()->FindDrive(letter));
        return S_OK;
      default:
        name = RootOf(letter);
        return S_OK;
    }
  }

  HRESULT GetAttributes(PCUITEMID_CHILD element, DWORD mask, DWORD& attributes) override {
    const char16_t letter = LetterOf(element);
    if (!letter) return E_INVALIDARG;
    const auto config = PortableConfig();
    const TPortableDrive* drive = config->FindDrive(letter);
    if (!drive && (mask & SFGAO_VALIDATE)) return HRESULT_FROM_WIN32(15);  // ERROR_INVALID_DRIVE
    attributes = kAttributes;
    const TPortableDriveKind kind = drive ? drive->Kind : TPortableDriveKind::Fixed;
    if (kind == TPortableDriveKind::Removable || kind == TPortableDriveKind::CdRom)
      attributes |= SFGAO_REMOVABLE;
    if (kind == TPortableDriveKind::CdRom)
      attributes |= SFGAO_READONLY;
    else
      attributes |= SFGAO_CANRENAME;
    return S_OK;
  }

  HRESULT ParseName(TStringView name, const TParseOptions& options, TPidl& element) override {
    const auto config = PortableConfig();
    const bool isRoot = name.size() == 2 || (name.size() == 3 && name[2] == u'\\');
    const char16_t letter = isRoot && name[1] == u':' ? UpCase(name[0]) : u'\0';
    if (letter >= u'A' && letter <= u'Z') {
      if (!options.FindData && !config->FindDrive(letter)) return HRESULT_FROM_WIN32(15);
      element = DriveElement(letter);
      return S_OK;
    }
    for (const TPortableDrive& drive : config->Drives) {
      const TString label = LabelOf(&drive);
      if (!SameText(name, label + u" (" + drive.Letter + u":)") && !SameText(name, label)) continue;
      element = DriveElement(drive.Letter);
      return S_OK;
    }
    return HRESULT_FROM_WIN32(2);  // ERROR_FILE_NOT_FOUND
  }

  HRESULT Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) override {
    const char16_t letter = LetterOf(element);
    if (!letter) return E_INVALIDARG;
    child = MakeFileSystemFolder(RootOf(letter));
    return S_OK;
  }

  // By letter: labels may be equal.
  HRESULT Compare(LPARAM what, PCUITEMID_CHILD a, PCUITEMID_CHILD b, int& order) override {
    const char16_t letterA = LetterOf(a), letterB = LetterOf(b);
    if (!letterA || !letterB) return E_INVALIDARG;
    order = 0;
    if (letterA != letterB && (what & SHCIDS_COLUMNMASK) != 0) {
      const HRESULT result = TFolderSource::Compare(what, a, b, order);
      if (FAILED(result)) return result;
    }
    if (order == 0) order = letterA - letterB;
    return S_OK;
  }

  HRESULT Rename(PCUITEMID_CHILD element, TStringView name, TNameForm, TPidl& renamed) override {
    const char16_t letter = LetterOf(element);
    if (!letter) return E_INVALIDARG;
    TPortableConfig config = *PortableConfig();
    for (TPortableDrive& drive : config.Drives) {
      if (drive.Letter != letter) continue;
      if (drive.Kind == TPortableDriveKind::CdRom) return STG_E_ACCESSDENIED;
      drive.Label = name;
      SetPortableConfig(std::move(config));
      renamed = DriveElement(letter);
      return S_OK;
    }
    return HRESULT_FROM_WIN32(15);
  }

  HRESULT GetTypeName(PCUITEMID_CHILD element, TString& name) override {
    const char16_t letter = LetterOf(element);
    if (!letter) return E_INVALIDARG;
    const auto config = PortableConfig();
    const TPortableDrive* drive = config->FindDrive(letter);
    name = KindName(drive ? drive->Kind : TPortableDriveKind::Fixed);
    return S_OK;
  }

  HRESULT GetIconIndex(PCUITEMID_CHILD element, bool, int& index) override {
    const char16_t letter = LetterOf(element);
    if (!letter) return E_INVALIDARG;
    const auto config = PortableConfig();
    const TPortableDrive* drive = config->FindDrive(letter);
    index = IconOf(drive ? drive->Kind : TPortableDriveKind::Fixed);
    return S_OK;
  }

  HRESULT GetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key, PROPVARIANT* value) override {
    const char16_t letter = LetterOf(element);
    if (!letter) return E_INVALIDARG;
    const TString root = RootOf(letter);
    if (IsKey(key, PKEY_Volume_FileSystem)) {
      TString text(64, u'\0');
      if (!Api().GetVolumeInformationW(W(root), nullptr, 0, nullptr, nullptr, nullptr,
                                       WBuffer(text), 64))
        return PropertyNotFound;
      *value = TPropVariant::From(TStringView(text.c_str())).Detach();
      return S_OK;
    }
    const bool free = IsKey(key, PKEY_FreeSpace), percent = IsKey(key, PKEY_PercentFull);
    if (!free && !percent && !IsKey(key, PKEY_Capacity)) return PropertyNotFound;
    ULARGE_INTEGER available{}, total{};
    if (!Api().GetDiskFreeSpaceExW(W(root), &available, &total, nullptr)) return PropertyNotFound;
    const ULONGLONG used = total.QuadPart - std::min(available.QuadPart, total.QuadPart);
    if (percent)
      *value =
          TPropVariant::From(static_cast<DWORD>(total.QuadPart ? used * 100 / total.QuadPart : 0))
              .Detach();
    else
      *value = TPropVariant::From(free ? available.QuadPart : total.QuadPart).Detach();
    return S_OK;
  }

  std::vector<PROPERTYKEY> GetPropertyKeys(PCUITEMID_CHILD) override {
    return {PKEY_Capacity, PKEY_FreeSpace, PKEY_Volume_FileSystem, PKEY_PercentFull};
  }

  std::span<const TFolderColumn> GetColumns() override {
    static const TFolderColumn kColumns[] = {
        {PKEY_ItemNameDisplay, u"Name", 30},
        {PKEY_ItemTypeText, u"Type", 20},
        {PKEY_Capacity, u"Total Size", 12, LVCFMT_RIGHT,
         SHCOLSTATE_TYPE_INT | SHCOLSTATE_ONBYDEFAULT},
        {PKEY_FreeSpace, u"Free Space", 12, LVCFMT_RIGHT,
         SHCOLSTATE_TYPE_INT | SHCOLSTATE_ONBYDEFAULT},
        {PKEY_Volume_FileSystem, u"File System", 12, LVCFMT_LEFT, SHCOLSTATE_TYPE_STR},
        {PKEY_PercentFull, u"Percent Full", 12, LVCFMT_LEFT, SHCOLSTATE_TYPE_INT}};
    return kColumns;
  }
};

}  // namespace

Ref<IFolderSource> MakeComputerSource() { return MakeRef<TComputerSource>(); }

}  // namespace oak
