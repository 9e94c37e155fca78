// A registry of the test's own, behind the seam.
#pragma once

#include <cstring>
#include <map>
#include <memory>
#include <vector>

#include "testkit/ScopedApi.h"

namespace oak::tests {

/// Answers what is read; writes go nowhere. Paths ignore case, as in the real one.
class TScriptedRegistry {
 public:
  TScriptedRegistry()
      : fOpen(Api().RegOpenKeyExW,
              [this](HKEY root, LPCWSTR name, DWORD, REGSAM access, HKEY* key) {
                return Open(root, FromW(name), access, key);
              }),
        fQuery(Api().RegQueryValueExW,
               [this](HKEY key, LPCWSTR name, DWORD*, DWORD* type, BYTE* data, DWORD* size) {
                 return Query(key, FromW(name), type, data, size);
               }),
        fClose(Api().RegCloseKey, [this](HKEY key) {
          OpenKeys -= fKeys.erase(key) != 0 ? 1 : 0;
          return LSTATUS{0};
        }) {}

  void SetNumber(HKEY root, TStringView path, DWORD number) {
    Set(root, path, REG_DWORD, &number, 4);
  }
  void SetText(HKEY root, TStringView path, const TString& text) {
    Set(root, path, REG_SZ, W(text), (text.size() + 1) * 2);
  }
  void SetBytes(HKEY root, TStringView path, std::vector<BYTE> bytes) {
    Set(root, path, REG_BINARY, bytes.data(), bytes.size());
  }
  void Clear() { fValues.clear(); }

  int OpenKeys = 0;
  std::vector<REGSAM> Accesses;

 private:
  struct TValue {
    DWORD Type;
    std::vector<BYTE> Data;
  };
  using TPlace = std::pair<HKEY, TString>;

  void Set(HKEY root, TStringView path, DWORD type, const void* data, std::size_t size) {
    const auto* bytes = static_cast<const BYTE*>(data);
    fValues[{root, LowerCase(path)}] = {type, {bytes, bytes + size}};
  }
  LSTATUS Open(HKEY root, const TString& name, REGSAM access, HKEY* key) {
    Accesses.push_back(access);
    const TString path = LowerCase(name) + u"\\";
    for (const auto& [place, value] : fValues) {
      if (place.first != root || place.second.compare(0, path.size(), path) != 0) continue;
      *key = reinterpret_cast<HKEY>(++fLast);
      fKeys[*key] = {root, path};
      ++OpenKeys;
      return 0;
    }
    return ERROR_FILE_NOT_FOUND;
  }
  LSTATUS Query(HKEY key, const TString& name, DWORD* type, BYTE* data, DWORD* size) {
    const auto open = fKeys.find(key);
    if (open == fKeys.end()) return ERROR_INVALID_HANDLE;
    const auto found = fValues.find({open->second.first, open->second.second + LowerCase(name)});
    if (found == fValues.end()) return ERROR_FILE_NOT_FOUND;
    const TValue& value = found->second;
    const auto needed = static_cast<DWORD>(value.Data.size());
    if (type) *type = value.Type;
    const bool fits = size && *size >= needed;
    if (size) *size = needed;
    if (!data) return 0;
    if (!fits) return ERROR_MORE_DATA;
    std::memcpy(data, value.Data.data(), needed);
    return 0;
  }

  std::map<TPlace, TValue> fValues;
  std::map<HKEY, TPlace> fKeys;
  std::uintptr_t fLast = 0x7000;
  testkit::TScopedApi<decltype(TApi::RegOpenKeyExW)> fOpen;
  testkit::TScopedApi<decltype(TApi::RegQueryValueExW)> fQuery;
  testkit::TScopedApi<decltype(TApi::RegCloseKey)> fClose;
};

}  // namespace oak::tests
