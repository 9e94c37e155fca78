#include "testkit/portable/ScriptedFolder.h"

#include <algorithm>

namespace oak::testkit {
namespace {

constexpr BYTE ScriptedKind = ekFirstFree;
constexpr BYTE ScriptedVersion = 1;
constexpr DWORD EveryObject = SFGAO_CANRENAME | SFGAO_CANDELETE | SFGAO_CANCOPY | SFGAO_CANMOVE;
constexpr DWORD EveryFolder =
    EveryObject | SFGAO_FOLDER | SFGAO_BROWSABLE | SFGAO_HASSUBFOLDER | SFGAO_STORAGE;
constexpr DWORD EveryFile = EveryObject | SFGAO_STREAM;
constexpr HRESULT NotFound = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);

}  // namespace

/// Walks over a copy of the contents, so that a test may change them meanwhile.
class TScriptedFolder::TCursor final : public TInterfacedObject<IFolderCursor> {
 public:
  TCursor(std::vector<TPidl> elements, DWORD delay, std::optional<std::pair<HRESULT, int>> failure)
      : fElements(std::move(elements)), fDelay(delay), fFailure(failure) {}

  HRESULT Next(PCUITEMID_CHILD* element) override {
    *element = nullptr;
    if (fFailure && fIndex >= static_cast<std::size_t>(fFailure->second)) return fFailure->first;
    if (fIndex == fElements.size()) return S_FALSE;
    if (fDelay) Api().Sleep(fDelay);
    *element = fElements[fIndex++].Get();
    return S_OK;
  }

 private:
  std::vector<TPidl> fElements;
  std::size_t fIndex = 0;
  DWORD fDelay;
  std::optional<std::pair<HRESULT, int>> fFailure;
};

// --- the script --------------------------------------------------------------

TScriptedFolder& TScriptedFolder::AddFile(TString name, DWORD attributes) {
  const std::lock_guard guard(fLock);
  fObjects.push_back({std::move(name), EveryFile | attributes, nullptr});
  return *this;
}

Ref<TScriptedFolder> TScriptedFolder::AddFolder(TString name, DWORD attributes) {
  const std::lock_guard guard(fLock);
  fObjects.push_back({std::move(name), EveryFolder | attributes, Make()});
  return fObjects.back().Folder;
}

TScriptedFolder& TScriptedFolder::AddMany(int count, TStringView prefix, TStringView suffix) {
  for (int i = 0; i < count; ++i) AddFile(TString(prefix) + IntToStr(i) + TString(suffix));
  return *this;
}

bool TScriptedFolder::Remove(TStringView name) {
  const std::lock_guard guard(fLock);
  return std::erase_if(fObjects, [&](const TObjectEntry& o) { return SameText(o.Name, name); }) > 0;
}

void TScriptedFolder::SetDelay(DWORD millisecondsPerObject) {
  const std::lock_guard guard(fLock);
  fDelay = millisecondsPerObject;
}

void TScriptedFolder::SetFailure(TScriptedOperation operation, HRESULT failure, int behindObjects) {
  const std::lock_guard guard(fLock);
  fFailures[operation] = {failure, behindObjects};
}

void TScriptedFolder::ClearFailure(TScriptedOperation operation) {
  const std::lock_guard guard(fLock);
  fFailures.erase(operation);
}

void TScriptedFolder::SetGrowth(TStringArray names) {
  const std::lock_guard guard(fLock);
  fGrowth = std::move(names);
  fGrown = 0;
}

void TScriptedFolder::SetFileSystemPath(TString path) {
  const std::lock_guard guard(fLock);
  fFileSystemPath = std::move(path);
}

int TScriptedFolder::GetEnumerationCount() const {
  const std::lock_guard guard(fLock);
  return fEnumerationCount;
}

TStringArray TScriptedFolder::GetNames() const {
  const std::lock_guard guard(fLock);
  TStringArray names;
  for (const TObjectEntry& entry : fObjects) names.push_back(entry.Name);
  return names;
}

// --- IFolderSource -------------------------------------------------------------

const TScriptedFolder::TObjectEntry* TScriptedFolder::Find(TStringView name) const {
  const auto found = std::find_if(fObjects.begin(), fObjects.end(),
                                  [&](const TObjectEntry& o) { return SameText(o.Name, name); });
  return found == fObjects.end() ? nullptr : &*found;
}

HRESULT TScriptedFolder::FailureOf(TScriptedOperation operation) const {
  const std::lock_guard guard(fLock);
  const auto found = fFailures.find(operation);
  return found == fFailures.end() ? S_OK : found->second.first;
}

TPidl TScriptedFolder::MakeEntryElement(const TObjectEntry& entry) const {
  return MakeNameElement(ScriptedKind, ScriptedVersion, entry.Attributes, entry.Name);
}

void TScriptedFolder::GrowLocked() {
  if (fGrown < fGrowth.size()) fObjects.push_back({fGrowth[fGrown++], EveryFolder, Make()});
}

HRESULT TScriptedFolder::Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) {
  if (const HRESULT failure = FailureOf(TScriptedOperation::Enumerate); FAILED(failure))
    return failure;
  const std::lock_guard guard(fLock);
  ++fEnumerationCount;
  GrowLocked();
  std::vector<TPidl> elements;
  for (const TObjectEntry& entry : fObjects)
    if (PassesEnumeration(flags, entry.Attributes)) elements.push_back(MakeEntryElement(entry));
  const auto failure = fFailures.find(TScriptedOperation::Next);
  cursor =
      MakeRef<TCursor>(std::move(elements), fDelay,
                       failure == fFailures.end() ? std::nullopt : std::optional(failure->second));
  return S_OK;
}

HRESULT TScriptedFolder::GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) {
  if (const HRESULT failure = FailureOf(TScriptedOperation::GetName); FAILED(failure))
    return failure;
  DWORD flags = 0;
  if (!ReadNameElement(element, ScriptedKind, ScriptedVersion, flags, name)) return E_INVALIDARG;
  if (form == TNameForm::FileSystemPath) {
    const std::lock_guard guard(fLock);
    if (fFileSystemPath.empty()) return S_FALSE;
    name = IncludeTrailingPathDelimiter(fFileSystemPath) + name;
    return S_OK;
  }
  return form == TNameForm::AbsoluteParsing || form == TNameForm::AbsoluteEditing ? S_FALSE : S_OK;
}

HRESULT TScriptedFolder::GetAttributes(PCUITEMID_CHILD element, DWORD mask, DWORD& attributes) {
  if (const HRESULT failure = FailureOf(TScriptedOperation::GetAttributes); FAILED(failure))
    return failure;
  TString name;
  DWORD flags = 0;
  if (!ReadNameElement(element, ScriptedKind, ScriptedVersion, flags, name)) return E_INVALIDARG;
  const std::lock_guard guard(fLock);
  if ((mask & SFGAO_VALIDATE) && !Find(name)) return NotFound;
  attributes = flags;
  if (!fFileSystemPath.empty())
    attributes |= SFGAO_FILESYSTEM | (flags & SFGAO_FOLDER ? SFGAO_FILESYSANCESTOR : 0u);
  return S_OK;
}

HRESULT TScriptedFolder::ParseName(TStringView name, const TParseOptions& options, TPidl& element) {
  if (const HRESULT failure = FailureOf(TScriptedOperation::ParseName); FAILED(failure))
    return failure;
  const std::lock_guard guard(fLock);
  if (const TObjectEntry* entry = Find(name)) {
    element = MakeEntryElement(*entry);
    return S_OK;
  }
  if (!options.FindData) return NotFound;
  const bool isFolder =
      options.HasRest || (options.FindData->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
  element =
      MakeNameElement(ScriptedKind, ScriptedVersion, isFolder ? EveryFolder : EveryFile, name);
  return S_OK;
}

HRESULT TScriptedFolder::Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) {
  if (const HRESULT failure = FailureOf(TScriptedOperation::Open); FAILED(failure)) return failure;
  TString name;
  DWORD flags = 0;
  if (!ReadNameElement(element, ScriptedKind, ScriptedVersion, flags, name)) return E_INVALIDARG;
  const std::lock_guard guard(fLock);
  const TObjectEntry* entry = Find(name);
  if (!entry || !entry->Folder) return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
  if (!fFileSystemPath.empty())
    entry->Folder->SetFileSystemPath(IncludeTrailingPathDelimiter(fFileSystemPath) + name);
  child = entry->Folder;
  return S_OK;
}

HRESULT TScriptedFolder::Create(TStringView name, bool folder, bool replace, TPidl& element) {
  if (const HRESULT failure = FailureOf(TScriptedOperation::Create); FAILED(failure))
    return failure;
  const std::lock_guard guard(fLock);
  if (Find(name)) {
    if (!replace) return STG_E_FILEALREADYEXISTS;
    std::erase_if(fObjects, [&](const TObjectEntry& o) { return SameText(o.Name, name); });
  }
  fObjects.push_back({TString(name), folder ? EveryFolder : EveryFile, folder ? Make() : nullptr});
  element = MakeEntryElement(fObjects.back());
  return S_OK;
}

HRESULT TScriptedFolder::Rename(PCUITEMID_CHILD element, TStringView name, TNameForm,
                                TPidl& renamed) {
  if (const HRESULT failure = FailureOf(TScriptedOperation::Rename); FAILED(failure))
    return failure;
  TString oldName;
  DWORD flags = 0;
  if (!ReadNameElement(element, ScriptedKind, ScriptedVersion, flags, oldName)) return E_INVALIDARG;
  const std::lock_guard guard(fLock);
  const TObjectEntry* taken = Find(name);
  auto* entry = const_cast<TObjectEntry*>(Find(oldName));
  if (!entry) return NotFound;
  if (taken && taken != entry) return STG_E_FILEALREADYEXISTS;
  entry->Name = name;
  renamed = MakeEntryElement(*entry);
  return S_OK;
}

HRESULT TScriptedFolder::Destroy(PCUITEMID_CHILD element) {
  if (const HRESULT failure = FailureOf(TScriptedOperation::Destroy); FAILED(failure))
    return failure;
  TString name;
  DWORD flags = 0;
  if (!ReadNameElement(element, ScriptedKind, ScriptedVersion, flags, name)) return E_INVALIDARG;
  return Remove(name) ? S_OK : NotFound;
}

// --- mounting --------------------------------------------------------------------

TFolderMount DesktopMount(const Ref<TScriptedFolder>& folder, TStringView name) {
  TFolderMount mount;
  mount.Name = name;
  mount.Attributes = EveryFolder;
  mount.Source = folder;
  return mount;
}

namespace {
TString DriveRoot(char16_t letter) { return TString(1, UpCase(letter)) + u":\\"; }

TFolderMount DriveMount(char16_t letter, UINT driveType, const Ref<TScriptedFolder>& folder) {
  folder->SetFileSystemPath(DriveRoot(letter));
  TFolderMount mount = DesktopMount(folder, DriveRoot(letter));
  mount.Parent = u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}";
  mount.ParsingName = DriveRoot(letter);
  mount.FileSystemPath = DriveRoot(letter);
  mount.Attributes |= SFGAO_FILESYSTEM | SFGAO_FILESYSANCESTOR;
  if (driveType == DRIVE_REMOVABLE) mount.Attributes |= SFGAO_REMOVABLE;
  return mount;
}
}  // namespace

TScriptedDrive::TScriptedDrive(char16_t letter, UINT driveType, const Ref<TScriptedFolder>& folder)
    : fMount(DriveMount(letter, driveType, folder)),
      fGetDriveType(Api().GetDriveTypeW,
                    [root = DriveRoot(letter), driveType, function = Api().GetDriveTypeW.Function(),
                     replacement = Api().GetDriveTypeW.Replacement()](LPCWSTR path) -> UINT {
                      if (SameText(FromW(path), root)) return driveType;
                      return replacement ? replacement(path) : function(path);
                    }) {}

}  // namespace oak::testkit
