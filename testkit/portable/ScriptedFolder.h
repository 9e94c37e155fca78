// Folders whose contents, speed and failures a test writes down.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "oak/platform/portable/PortableShell.h"
#include "testkit/ScopedApi.h"

namespace oak::testkit {

/// What can be made to fail.
enum class TScriptedOperation : std::uint8_t {
  Enumerate,  ///< The start of a listing.
  Next,       ///< Each object of a listing.
  ParseName,
  Open,
  GetName,
  GetAttributes,
  Create,
  Rename,
  Destroy
};

/// A folder in memory. All operations work as in a real one: what is created,
/// renamed or destroyed through the shell is so afterwards. Any thread.
class TScriptedFolder final : public TFolderSource {
 public:
  static Ref<TScriptedFolder> Make() { return Ref<TScriptedFolder>::Adopt(new TScriptedFolder); }

  // --- the script ------------------------------------------------------------
  /// Adds a file; `attributes` are SFGAO_ bits besides those of every file.
  TScriptedFolder& AddFile(TString name, DWORD attributes = 0);
  /// Adds a folder and returns it.
  Ref<TScriptedFolder> AddFolder(TString name, DWORD attributes = 0);
  /// Adds `count` files: prefix, number, suffix.
  TScriptedFolder& AddMany(int count, TStringView prefix, TStringView suffix);
  bool Remove(TStringView name);
  /// Every object of this listing takes that long, by Api().Sleep.
  void SetDelay(DWORD millisecondsPerObject);
  /// The operation fails from now on; for Next, behind that many objects.
  void SetFailure(TScriptedOperation operation, HRESULT failure, int behindObjects = 0);
  void ClearFailure(TScriptedOperation operation);
  /// Each listing shows one more of these names, as a network that is found
  /// piece by piece.
  void SetGrowth(TStringArray names);
  /// Path of the file system that the objects have, empty for none.
  void SetFileSystemPath(TString path);

  int GetEnumerationCount() const;
  TStringArray GetNames() const;

  // --- IFolderSource -----------------------------------------------------------
  HRESULT Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) override;
  HRESULT GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) override;
  HRESULT GetAttributes(PCUITEMID_CHILD element, DWORD mask, DWORD& attributes) override;
  HRESULT ParseName(TStringView name, const TParseOptions& options, TPidl& element) override;
  HRESULT Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) override;
  HRESULT Create(TStringView name, bool folder, bool replace, TPidl& element) override;
  HRESULT Rename(PCUITEMID_CHILD element, TStringView name, TNameForm form,
                 TPidl& renamed) override;
  HRESULT Destroy(PCUITEMID_CHILD element) override;

 private:
  class TCursor;
  struct TObjectEntry {
    TString Name;
    DWORD Attributes = 0;
    Ref<TScriptedFolder> Folder;
  };

  TScriptedFolder() = default;
  const TObjectEntry* Find(TStringView name) const;
  void GrowLocked();
  HRESULT FailureOf(TScriptedOperation operation) const;
  TPidl MakeEntryElement(const TObjectEntry& entry) const;

  mutable std::mutex fLock;
  std::vector<TObjectEntry> fObjects;
  std::map<TScriptedOperation, std::pair<HRESULT, int>> fFailures;
  TStringArray fGrowth;
  std::size_t fGrown = 0;  ///< Names of fGrowth that are shown.
  TString fFileSystemPath;
  DWORD fDelay = 0;
  int fEnumerationCount = 0;
};

/// Shows a scripted folder on the desktop under a name.
TFolderMount DesktopMount(const Ref<TScriptedFolder>& folder, TStringView name);

/// Shows a scripted folder as a drive ("X:\") of a DRIVE_ type for its own span
/// of life.
class TScriptedDrive {
 public:
  TScriptedDrive(char16_t letter, UINT driveType, const Ref<TScriptedFolder>& folder);

 private:
  TScopedMount fMount;
  TScopedApi<decltype(TApi::GetDriveTypeW)> fGetDriveType;
};

}  // namespace oak::testkit
