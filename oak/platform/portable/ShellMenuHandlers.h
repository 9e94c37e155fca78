// Verbs that others add to the shell's menus, as the registry tells.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "oak/platform/portable/ShellVerbs.h"

namespace oak {

struct TMenuVerb;

/// An open key of the registry.
class TRegistryKey {
 public:
  TRegistryKey(HKEY parent, const TString& name);
  TRegistryKey(TRegistryKey&& other) noexcept : fKey(std::exchange(other.fKey, nullptr)) {}
  ~TRegistryKey();
  TRegistryKey(const TRegistryKey&) = delete;
  TRegistryKey& operator=(const TRegistryKey&) = delete;
  HKEY Get() const { return fKey; }
  explicit operator bool() const { return fKey != nullptr; }
  TStringArray SubKeys() const;
  /// The text of the key's unnamed value.
  TString Text() const;

 private:
  HKEY fKey = nullptr;
};

/// The keys below HKEY_CLASSES_ROOT that say something of objects of this kind: that of the
/// extension, its program's, "Directory" or "*", and "AllFilesystemObjects".
std::vector<TRegistryKey> ClassKeysOf(const TShellObjects& objects);
/// The keys of a folder's background.
std::vector<TRegistryKey> BackgroundKeys();

/// Makes the classes named below "shellex\ContextMenuHandlers" of the keys, by the subkey's text or
/// its name, and initialises them with the data, and the folder for a background.
std::vector<Ref<IContextMenu>> LoadMenuHandlers(std::span<const HKEY> keys,
                                                PCIDLIST_ABSOLUTE folder, IDataObject* data);

/// The verbs with a command below "shell" of the keys. In a command "%1"
/// is the object's path, "%V" the folder's.
std::vector<TMenuVerb> StaticVerbs(std::span<const HKEY> keys, const TShellObjects& objects);

}  // namespace oak
