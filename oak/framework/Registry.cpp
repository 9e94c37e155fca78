#include "oak/framework/Registry.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "oak/framework/Strings.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

constexpr DWORD kOpenLink = 8;  // a link itself, not where it leads

TString RootName(HKEY root) {
  if (root == HKEY_CLASSES_ROOT) return u"HKEY_CLASSES_ROOT";
  if (root == HKEY_CURRENT_USER) return u"HKEY_CURRENT_USER";
  if (root == HKEY_LOCAL_MACHINE) return u"HKEY_LOCAL_MACHINE";
  if (root == HKEY_USERS) return u"HKEY_USERS";
  return u"HKEY";
}

bool IsText(DWORD type) { return type == REG_SZ || type == REG_EXPAND_SZ; }

// Nothing promises that the data end in a zero, once, or at an even place.
TString TextOfData(const std::vector<BYTE>& bytes) {
  TString text(bytes.size() / sizeof(char16_t), u'\0');
  if (!text.empty()) std::memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
  text.resize(std::min(text.find(u'\0'), text.size()));
  return text;
}

/// Collects the names that `next` gives by index, until it gives a code other than success.
template <class TNext>
LSTATUS CollectNames(TStringArray& names, TNext&& next) {
  TString buffer(256, u'\0');
  for (;;) {
    auto size = static_cast<DWORD>(buffer.size());
    const LSTATUS code = next(static_cast<DWORD>(names.size()), WBuffer(buffer), &size);
    if (code == ERROR_MORE_DATA && buffer.size() < 0x10000) {
      buffer.resize(buffer.size() * 2);
    } else if (code == ERROR_SUCCESS) {
      names.push_back(buffer.substr(0, size));
    } else {
      return code == ERROR_NO_MORE_ITEMS ? LSTATUS{ERROR_SUCCESS} : code;
    }
  }
}

LSTATUS CollectKeyNames(HKEY key, TStringArray& names) {
  return CollectNames(names, [key](DWORD index, LPWSTR name, DWORD* size) {
    return Api().RegEnumKeyExW(key, index, name, size, nullptr, nullptr, nullptr, nullptr);
  });
}

LSTATUS CollectValueNames(HKEY key, TStringArray& names) {
  return CollectNames(names, [key](DWORD index, LPWSTR name, DWORD* size) {
    return Api().RegEnumValueW(key, index, name, size, nullptr, nullptr, nullptr, nullptr);
  });
}

}  // namespace

void TRegistry::TKeyTraits::Close(HKEY key) noexcept { Api().RegCloseKey(key); }

// --- messages ---------------------------------------------------------------------

TString TRegistry::Describe() const {
  TString path = RootName(fRootKey);
  if (!fCurrentPath.empty()) path += u"\\" + fCurrentPath;
  return u" the registry key \"" + path + u"\"";
}

void TRegistry::RaiseLast(TStringView action) const {
  const auto code = static_cast<std::uint32_t>(fLastError);
  throw ERegistryException(code, TString(action) + Describe() + u". " + ErrorText(code));
}

void TRegistry::RaiseKind(TStringView name, TStringView wanted) const {
  throw ERegistryException(ERROR_INVALID_DATA, u"The value \"" + TString(name) + u"\" of" +
                                                   Describe() + u" is not " + TString(wanted) +
                                                   u".");
}

// --- keys -------------------------------------------------------------------------

void TRegistry::SetRootKey(HKEY value) {
  if (fRootKey == value) return;
  CloseKey();
  fRootKey = value;
}

void TRegistry::CloseKey() noexcept {
  fKey.Reset();
  fCurrentPath.clear();
}

HKEY TRegistry::BaseOf(TStringView& path) const noexcept {
  if (!path.starts_with(u'\\')) return fKey ? fKey.Get() : fRootKey;
  path.remove_prefix(1);
  return fRootKey;
}

bool TRegistry::OpenKey(TStringView path, bool canCreate) { return Open(path, fAccess, canCreate); }

bool TRegistry::OpenKeyReadOnly(TStringView path) {
  return Open(path, KEY_READ | ViewFlags(), false);
}

bool TRegistry::Open(TStringView path, REGSAM access, bool canCreate) {
  const HKEY base = BaseOf(path);
  const TString name = ExcludeTrailingPathDelimiter(path);
  TString whole = base == fRootKey || fCurrentPath.empty() ? name
                  : name.empty()                           ? fCurrentPath
                                                           : fCurrentPath + u"\\" + name;
  TKey key;
  const LSTATUS code =
      canCreate ? Api().RegCreateKeyExW(base, W(name), 0, nullptr, REG_OPTION_NON_VOLATILE, access,
                                        nullptr, key.Put(), nullptr)
                : Api().RegOpenKeyExW(base, W(name), 0, access, key.Put());
  if (!Note(code)) return false;
  fKey = std::move(key);
  fCurrentPath = std::move(whole);
  return true;
}

bool TRegistry::KeyExists(TStringView path) const {
  const HKEY base = BaseOf(path);
  TKey key;
  return Note(Api().RegOpenKeyExW(base, W(TString(path)), 0, KEY_READ | ViewFlags(), key.Put()));
}

bool TRegistry::CreateKey(TStringView path) {
  const HKEY base = BaseOf(path);
  TKey key;
  return Note(Api().RegCreateKeyExW(base, W(TString(path)), 0, nullptr, REG_OPTION_NON_VOLATILE,
                                    KEY_READ | ViewFlags(), nullptr, key.Put(), nullptr));
}

bool TRegistry::DeleteKey(TStringView path) {
  const HKEY base = BaseOf(path);
  const TString name = ExcludeTrailingPathDelimiter(path);
  // An empty name would mean the key that the path starts from.
  return Note(name.empty() ? LSTATUS{ERROR_INVALID_PARAMETER} : DeleteTree(base, name));
}

LSTATUS TRegistry::DeleteTree(HKEY base, const TString& path) const {
  TKey key;
  LSTATUS code = Api().RegOpenKeyExW(base, W(path), kOpenLink, KEY_READ | ViewFlags(), key.Put());
  if (code != ERROR_SUCCESS) return code;
  TStringArray names;
  code = CollectKeyNames(key.Get(), names);
  for (std::size_t i = 0; i < names.size() && code == ERROR_SUCCESS; ++i)
    code = DeleteTree(key.Get(), names[i]);
  key.Reset();
  return code == ERROR_SUCCESS ? Api().RegDeleteKeyExW(base, W(path), ViewFlags(), 0) : code;
}

void TRegistry::GetKeyNames(TStrings& names) const {
  TStringArray list;
  if (!Note(CollectKeyNames(fKey.Get(), list))) RaiseLast(u"Cannot read the keys of");
  names.WithinUpdate([&] {
    names.Clear();
    names.AddStrings(list);
  });
}

void TRegistry::GetValueNames(TStrings& names) const {
  TStringArray list;
  if (!Note(CollectValueNames(fKey.Get(), list))) RaiseLast(u"Cannot read the values of");
  names.WithinUpdate([&] {
    names.Clear();
    names.AddStrings(list);
  });
}

// --- reading ----------------------------------------------------------------------

bool TRegistry::Query(TStringView name, TData& data) const {
  const TString text(name);
  LSTATUS code = ERROR_MORE_DATA;
  // The value may grow between the question for its size and the one for its data.
  for (int attempt = 0; attempt < 10 && code == ERROR_MORE_DATA; ++attempt) {
    DWORD size = 0;
    code = Api().RegQueryValueExW(fKey.Get(), W(text), nullptr, nullptr, nullptr, &size);
    if (code != ERROR_SUCCESS) break;
    data.Bytes.resize(std::max<DWORD>(size, 1));
    code =
        Api().RegQueryValueExW(fKey.Get(), W(text), nullptr, &data.Type, data.Bytes.data(), &size);
    if (code == ERROR_SUCCESS) data.Bytes.resize(size);
  }
  return Note(code);
}

TRegistry::TData TRegistry::Read(TStringView name) const {
  TData data;
  if (!Query(name, data)) RaiseLast(u"Cannot read the value \"" + TString(name) + u"\" of");
  return data;
}

bool TRegistry::ValueExists(TStringView name) const {
  return Note(
      Api().RegQueryValueExW(fKey.Get(), W(TString(name)), nullptr, nullptr, nullptr, nullptr));
}

TRegDataType TRegistry::GetDataType(TStringView name) const {
  DWORD type = REG_NONE;
  if (!Note(Api().RegQueryValueExW(fKey.Get(), W(TString(name)), nullptr, &type, nullptr, nullptr)))
    return rdUnknown;
  switch (type) {
    case REG_SZ:
      return rdString;
    case REG_EXPAND_SZ:
      return rdExpandString;
    case REG_DWORD:
      return rdInteger;
    case REG_QWORD:
      return rdInteger64;
    case REG_BINARY:
      return rdBinary;
    default:
      return rdUnknown;
  }
}

int TRegistry::GetDataSize(TStringView name) const {
  DWORD size = 0;
  const bool exists =
      Note(Api().RegQueryValueExW(fKey.Get(), W(TString(name)), nullptr, nullptr, nullptr, &size));
  return exists ? static_cast<int>(std::min<DWORD>(size, std::numeric_limits<int>::max())) : -1;
}

TString TRegistry::ReadString(TStringView name) const {
  TData data;
  if (!Query(name, data)) {
    if (fLastError == ERROR_FILE_NOT_FOUND) return {};
    RaiseLast(u"Cannot read the value \"" + TString(name) + u"\" of");
  }
  if (!IsText(data.Type)) RaiseKind(name, u"a text");
  return TextOfData(data.Bytes);
}

int TRegistry::ReadInteger(TStringView name) const {
  const TData data = Read(name);
  std::int32_t value = 0;
  if (data.Type != REG_DWORD || data.Bytes.size() != sizeof value) RaiseKind(name, u"an integer");
  std::memcpy(&value, data.Bytes.data(), sizeof value);
  return value;
}

std::int64_t TRegistry::ReadInt64(TStringView name) const {
  const TData data = Read(name);
  std::int64_t value = 0;
  if (data.Type != REG_QWORD || data.Bytes.size() != sizeof value)
    RaiseKind(name, u"a 64-bit integer");
  std::memcpy(&value, data.Bytes.data(), sizeof value);
  return value;
}

std::vector<BYTE> TRegistry::ReadBinaryData(TStringView name) const { return Read(name).Bytes; }

// --- writing ----------------------------------------------------------------------

void TRegistry::Write(TStringView name, DWORD type, const void* data, std::size_t size) {
  const bool fits = size <= std::numeric_limits<DWORD>::max();
  const LSTATUS code =
      fits ? Api().RegSetValueExW(fKey.Get(), W(TString(name)), 0, type,
                                  static_cast<const BYTE*>(data), static_cast<DWORD>(size))
           : LSTATUS{ERROR_INVALID_PARAMETER};
  if (!Note(code)) RaiseLast(u"Cannot write the value \"" + TString(name) + u"\" of");
}

void TRegistry::WriteText(TStringView name, DWORD type, TStringView value) {
  const TString text(value);
  Write(name, type, text.c_str(), (text.size() + 1) * sizeof(char16_t));
}

void TRegistry::WriteString(TStringView name, TStringView value) { WriteText(name, REG_SZ, value); }

void TRegistry::WriteExpandString(TStringView name, TStringView value) {
  WriteText(name, REG_EXPAND_SZ, value);
}

void TRegistry::WriteInteger(TStringView name, int value) {
  Write(name, REG_DWORD, &value, sizeof value);
}

void TRegistry::WriteInt64(TStringView name, std::int64_t value) {
  Write(name, REG_QWORD, &value, sizeof value);
}

void TRegistry::WriteBinaryData(TStringView name, const std::vector<BYTE>& value) {
  Write(name, REG_BINARY, value.data(), value.size());
}

bool TRegistry::DeleteValue(TStringView name) {
  return Note(Api().RegDeleteValueW(fKey.Get(), W(TString(name))));
}

}  // namespace oak
