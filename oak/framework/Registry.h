// TRegistry: keys and values of the system's registry.
#pragma once

#include <cstdint>
#include <vector>

#include "oak/base/Exceptions.h"
#include "oak/base/Handles.h"
#include "oak/framework/Component.h"
#include "oak/platform/shell_api.h"

namespace oak {

class TStrings;

/// The registry refused. The message names the key and value and gives the
/// system's text.
class ERegistryException : public EOSError {
  using EOSError::EOSError;
};

/// What kind of data a value holds.
enum TRegDataType : std::uint8_t {
  rdUnknown,  ///< None, or a kind that is read by ReadBinaryData only.
  rdString,
  rdExpandString,  ///< Text with names of environment variables.
  rdInteger,
  rdInteger64,
  rdBinary
};

/// One open key at a time below a root. The empty value name is the default value
/// of the key. One thread at a time.
class TRegistry : public TObject {
 public:
  /// Rights that OpenKey and writing ask for, with KEY_WOW64_64KEY or
  /// KEY_WOW64_32KEY for one view of the registry.
  explicit TRegistry(REGSAM access = KEY_ALL_ACCESS) : fAccess(access) {}
  TRegistry(const TRegistry&) = delete;
  TRegistry& operator=(const TRegistry&) = delete;

  /// Default HKEY_CURRENT_USER. A change closes the open key.
  HKEY GetRootKey() const noexcept { return fRootKey; }
  void SetRootKey(HKEY value);
  REGSAM GetAccess() const noexcept { return fAccess; }
  void SetAccess(REGSAM value) noexcept { fAccess = value; }

  /// Opens a key and closes the one before; false, and all as it was, if that fails.
  /// A path that begins with "\" starts at the root, else at the open key, or at the
  /// root without one. With `canCreate` a missing key is made.
  bool OpenKey(TStringView path, bool canCreate);
  /// As OpenKey, for reading alone whatever the access says.
  bool OpenKeyReadOnly(TStringView path);
  void CloseKey() noexcept;
  bool IsOpen() const noexcept { return static_cast<bool>(fKey); }
  /// Path of the open key below the root, empty without one.
  const TString& GetCurrentPath() const noexcept { return fCurrentPath; }
  /// The code that the last operation of the system gave; 0 is success.
  LSTATUS GetLastError() const noexcept { return fLastError; }

  // Paths as in OpenKey.
  bool KeyExists(TStringView path) const;
  /// Makes a key, without opening it. True if it is there now.
  bool CreateKey(TStringView path);
  /// Removes a key with all below it. False if there is none or the system refuses.
  bool DeleteKey(TStringView path);

  // These need an open key.
  bool ValueExists(TStringView name) const;
  bool DeleteValue(TStringView name);
  TRegDataType GetDataType(TStringView name) const;
  /// Bytes of a value's data, -1 if it does not exist.
  int GetDataSize(TStringView name) const;
  /// Replace the list by the names, in the order of the registry. Raise
  /// ERegistryException.
  void GetKeyNames(TStrings& names) const;
  void GetValueNames(TStrings& names) const;

  /// Text as stored, environment variables as they stand; empty if the value does
  /// not exist. Another kind raises ERegistryException.
  TString ReadString(TStringView name) const;
  /// These raise ERegistryException if the value does not exist or is of another kind.
  int ReadInteger(TStringView name) const;
  std::int64_t ReadInt64(TStringView name) const;
  bool ReadBool(TStringView name) const { return ReadInteger(name) != 0; }
  /// The bytes of a value of any kind; raises if it does not exist.
  std::vector<BYTE> ReadBinaryData(TStringView name) const;

  // All raise ERegistryException on failure.
  void WriteString(TStringView name, TStringView value);
  void WriteExpandString(TStringView name, TStringView value);
  void WriteInteger(TStringView name, int value);
  void WriteInt64(TStringView name, std::int64_t value);
  void WriteBool(TStringView name, bool value) { WriteInteger(name, value ? 1 : 0); }
  void WriteBinaryData(TStringView name, const std::vector<BYTE>& value);

 private:
  struct TKeyTraits {
    using Type = HKEY;
    static Type Invalid() noexcept { return nullptr; }
    static void Close(Type key) noexcept;
  };
  using TKey = TUniqueHandle<TKeyTraits>;
  struct TData {
    DWORD Type = REG_NONE;
    std::vector<BYTE> Bytes;
  };

  bool Open(TStringView path, REGSAM access, bool canCreate);
  /// The key that a path starts from; takes the "\\" at its start off.
  HKEY BaseOf(TStringView& path) const noexcept;
  REGSAM ViewFlags() const noexcept { return fAccess & (KEY_WOW64_64KEY | KEY_WOW64_32KEY); }
  bool Note(LSTATUS code) const noexcept { return (fLastError = code) == ERROR_SUCCESS; }
  bool Query(TStringView name, TData& data) const;
  TData Read(TStringView name) const;
  void Write(TStringView name, DWORD type, const void* data, std::size_t size);
  void WriteText(TStringView name, DWORD type, TStringView value);
  LSTATUS DeleteTree(HKEY base, const TString& path) const;
  [[noreturn]] void RaiseKind(TStringView name, TStringView wanted) const;
  [[noreturn]] void RaiseLast(TStringView action) const;
  TString Describe() const;

  HKEY fRootKey = HKEY_CURRENT_USER;
  REGSAM fAccess;
  TKey fKey;
  TString fCurrentPath;
  mutable LSTATUS fLastError = ERROR_SUCCESS;
};

}  // namespace oak
