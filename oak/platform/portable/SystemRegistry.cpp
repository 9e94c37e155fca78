// The registry: a tree in memory, with what the library's units ask for.
#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>

#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PortableRegistry.h"
#include "oak/platform/portable/SystemBinding.h"
#include "oak/platform/portable/SystemHandles.h"

namespace oak {
namespace {

struct TValue {
  TString Name;  // as first written
  DWORD Type = REG_NONE;
  std::vector<BYTE> Data;
};

// A key; its children by upper-cased name. All keys are guarded by one lock.
struct TKey {
  TString Name;
  bool Deleted = false;  // handles may outlive the key
  std::map<TString, std::shared_ptr<TKey>> Keys;
  std::map<TString, TValue> Values;
};
using TKeyRef = std::shared_ptr<TKey>;

struct TKeyHandle : TSystemObject {
  TKeyHandle(TKeyRef key, REGSAM access) : Key(std::move(key)), Access(access) {}
  TKeyRef Key;
  REGSAM Access;
};

struct TRegistry {
  std::mutex Lock;
  bool Filled = false;
  std::map<HKEY, TKeyRef> Roots;
};

TRegistry& Registry() {
  static auto* registry = new TRegistry;
  return *registry;
}

TStringView TakePart(TStringView& path) {
  const std::size_t end = std::min(path.find(u'\\'), path.size());
  const TStringView part = path.substr(0, end);
  path.remove_prefix(std::min(end + 1, path.size()));
  return part;
}

// The key below `key` by its path; made, where missing, if `create`.
TKeyRef Walk(TKeyRef key, TStringView path, bool create) {
  while (key && !path.empty()) {
    const TStringView part = TakePart(path);
    if (part.empty()) continue;
    const TString folded = UpperCase(part);
    const auto found = key->Keys.find(folded);
    if (found != key->Keys.end()) {
      key = TKeyRef(found->second);
    } else if (create) {
      auto made = std::make_shared<TKey>();
      made->Name = part;
      key->Keys.emplace(folded, made);
      key = std::move(made);
    } else {
      return nullptr;
    }
  }
  return key;
}

std::vector<BYTE> BytesOf(TStringView text) {
  std::vector<BYTE> bytes((text.size() + 1) * sizeof(char16_t));
  std::memcpy(bytes.data(), text.data(), text.size() * sizeof(char16_t));
  return bytes;
}

TString TextOf(const std::vector<BYTE>& bytes) {
  TString text(bytes.size() / sizeof(char16_t), u'\0');
  std::memcpy(text.data(), bytes.data(), text.size() * sizeof(char16_t));
  while (!text.empty() && text.back() == u'\0') text.pop_back();
  return text;
}

void Put(TKey& key, TStringView name, DWORD type, std::vector<BYTE> data) {
  TValue& value = key.Values[UpperCase(name)];
  if (value.Name.empty()) value.Name = name;
  value.Type = type;
  value.Data = std::move(data);
}

void PutNumber(TKey& key, TStringView name, DWORD number) {
  std::vector<BYTE> data(sizeof number);
  std::memcpy(data.data(), &number, sizeof number);
  Put(key, name, REG_DWORD, std::move(data));
}

void Fill(TRegistry& registry) {
  for (const HKEY root : {HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_USERS})
    registry.Roots[root] = std::make_shared<TKey>();
  const TKeyRef& user = registry.Roots[HKEY_CURRENT_USER];
  const TKeyRef& machine = registry.Roots[HKEY_LOCAL_MACHINE];
  constexpr TStringView explorer = u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer";
  const TKeyRef explorerKey = Walk(user, explorer, true);
  Walk(explorerKey, u"TypedPaths", true);
  const TKeyRef advanced = Walk(explorerKey, u"Advanced", true);
  PutNumber(*advanced, u"Hidden", 2);  // hidden objects are not shown
  PutNumber(*advanced, u"HideFileExt", 0);
  PutNumber(*advanced, u"ShowSuperHidden", 0);
  Walk(machine, u"Software\\Microsoft\\Windows\\CurrentVersion\\PreviewHandlers", true);
  const auto config = PortableConfig();
  const TKeyRef version = Walk(machine, u"Software\\Microsoft\\Windows NT\\CurrentVersion", true);
  Put(*version, u"CurrentBuild", REG_SZ, BytesOf(IntToStr(config->BuildNumber)));
  PutNumber(*version, u"CurrentMajorVersionNumber", config->MajorVersion);
  PutNumber(*version, u"CurrentMinorVersionNumber", config->MinorVersion);
  Walk(registry.Roots[HKEY_CLASSES_ROOT], u"Drive\\shell", true);
  Walk(registry.Roots[HKEY_CLASSES_ROOT], u"Directory\\shell", true);
}

struct TAccess {
  TKeyRef Key;
  REGSAM Rights = 0;
};

// The lock is held; nil for a handle that is none. Roots allow everything.
TAccess AccessOf(TRegistry& registry, HKEY handle) {
  if (!registry.Filled) {
    registry.Filled = true;
    Fill(registry);
  }
  const auto root = registry.Roots.find(handle);
  if (root != registry.Roots.end()) return {root->second, KEY_ALL_ACCESS};
  const auto open = TSystemHandles::Instance().Find<TKeyHandle>(handle);
  return open ? TAccess{open->Key, open->Access} : TAccess();
}

TKeyRef KeyOf(TRegistry& registry, HKEY handle) { return AccessOf(registry, handle).Key; }

// Runs with the key of a handle that was opened with all the rights `needed`.
template <class TBody>
LSTATUS WithKey(HKEY handle, REGSAM needed, TBody&& body) {
  return SystemCall<LSTATUS>(ERROR_NOT_ENOUGH_MEMORY, [&]() -> LSTATUS {
    TRegistry& registry = Registry();
    const std::lock_guard lock(registry.Lock);
    const TAccess access = AccessOf(registry, handle);
    if (!access.Key) return ERROR_INVALID_HANDLE;
    if (access.Key->Deleted) return ERROR_KEY_DELETED;
    if ((access.Rights & needed) != needed) return ERROR_ACCESS_DENIED;
    return static_cast<LSTATUS>(body(access.Key));
  });
}

// --- published functions ---------------------------------------------------

HKEY NewHandle(TKeyRef key, REGSAM access) {
  auto object = std::make_shared<TKeyHandle>(std::move(key), access);
  return static_cast<HKEY>(TSystemHandles::Instance().Add(std::move(object)));
}

LSTATUS STDAPICALLTYPE RegOpenKeyExW(HKEY handle, LPCWSTR name, DWORD, REGSAM access,
                                     HKEY* result) {
  if (!result) return ERROR_INVALID_PARAMETER;
  *result = nullptr;
  return WithKey(handle, 0, [&](const TKeyRef& key) -> DWORD {
    TKeyRef found = Walk(key, ViewOf(name), false);
    if (!found) return ERROR_FILE_NOT_FOUND;
    *result = NewHandle(std::move(found), access);
    return ERROR_SUCCESS;
  });
}

LSTATUS STDAPICALLTYPE RegCreateKeyExW(HKEY handle, LPCWSTR name, DWORD, LPWSTR, DWORD,
                                       REGSAM access, const SECURITY_ATTRIBUTES*, HKEY* result,
                                       DWORD* disposition) {
  if (!result) return ERROR_INVALID_PARAMETER;
  *result = nullptr;
  return WithKey(handle, 0, [&](const TKeyRef& key) -> DWORD {
    TKeyRef found = Walk(key, ViewOf(name), false);
    if (disposition) *disposition = found ? REG_OPENED_EXISTING_KEY : REG_CREATED_NEW_KEY;
    // The right counts where the key is made, not on the handle that the walk began with.
    if (!found) found = Walk(key, ViewOf(name), true);
    *result = NewHandle(std::move(found), access);
    return ERROR_SUCCESS;
  });
}

LSTATUS STDAPICALLTYPE RegSetValueExW(HKEY handle, LPCWSTR name, DWORD, DWORD type,
                                      const BYTE* data, DWORD size) {
  return WithKey(handle, KEY_SET_VALUE, [&](const TKeyRef& key) -> DWORD {
    if (!data && size > 0) return ERROR_NOACCESS;
    Put(*key, ViewOf(name), type, std::vector<BYTE>(data, data + size));
    return ERROR_SUCCESS;
  });
}

LSTATUS STDAPICALLTYPE RegDeleteValueW(HKEY handle, LPCWSTR name) {
  return WithKey(handle, KEY_SET_VALUE, [&](const TKeyRef& key) -> DWORD {
    return key->Values.erase(UpperCase(ViewOf(name))) > 0 ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
  });
}

// The key and its handles at once; a key with keys below it stays.
LSTATUS STDAPICALLTYPE RegDeleteKeyExW(HKEY handle, LPCWSTR name, REGSAM, DWORD reserved) {
  if (!name || reserved) return ERROR_INVALID_PARAMETER;
  return WithKey(handle, 0, [&](const TKeyRef& key) -> DWORD {
    const TStringView path = ViewOf(name);
    const std::size_t end = path.rfind(u'\\');
    const bool isDirect = end == TStringView::npos;
    const TKeyRef above = isDirect ? key : Walk(key, path.substr(0, end), false);
    if (!above) return ERROR_FILE_NOT_FOUND;
    const auto found = above->Keys.find(UpperCase(isDirect ? path : path.substr(end + 1)));
    if (found == above->Keys.end()) return ERROR_FILE_NOT_FOUND;
    if (!found->second->Keys.empty()) return ERROR_ACCESS_DENIED;
    found->second->Deleted = true;
    above->Keys.erase(found);
    return ERROR_SUCCESS;
  });
}

// Data in the published manner: without a buffer its size, else all or nothing.
DWORD AnswerData(const TValue& value, DWORD* type, BYTE* data, DWORD* size) {
  if (type) *type = value.Type;
  if (data && !size) return ERROR_INVALID_PARAMETER;
  if (!size) return ERROR_SUCCESS;
  const DWORD room = *size;
  *size = static_cast<DWORD>(value.Data.size());
  if (!data) return ERROR_SUCCESS;
  if (room < *size) return ERROR_MORE_DATA;
  if (*size > 0) std::memcpy(data, value.Data.data(), *size);
  return ERROR_SUCCESS;
}

LSTATUS STDAPICALLTYPE RegQueryValueExW(HKEY handle, LPCWSTR name, DWORD*, DWORD* type, BYTE* data,
                                        DWORD* size) {
  return WithKey(handle, KEY_QUERY_VALUE, [&](const TKeyRef& key) -> DWORD {
    const auto found = key->Values.find(UpperCase(ViewOf(name)));
    if (found == key->Values.end()) return ERROR_FILE_NOT_FOUND;
    return AnswerData(found->second, type, data, size);
  });
}

// `size` counts characters: with the end going in, without it coming out.
DWORD AnswerName(TStringView text, LPWSTR name, DWORD* size) {
  if (!name || !size) return ERROR_INVALID_PARAMETER;
  if (!CopyText(text, name, *size)) return ERROR_MORE_DATA;
  *size = static_cast<DWORD>(text.size());
  return ERROR_SUCCESS;
}

LSTATUS STDAPICALLTYPE RegEnumKeyExW(HKEY handle, DWORD index, LPWSTR name, DWORD* size, DWORD*,
                                     LPWSTR className, DWORD* classSize, FILETIME* written) {
  return WithKey(handle, KEY_ENUMERATE_SUB_KEYS, [&](const TKeyRef& key) -> DWORD {
    if (index >= key->Keys.size()) return ERROR_NO_MORE_ITEMS;
    const DWORD code = AnswerName(std::next(key->Keys.begin(), index)->second->Name, name, size);
    if (code != ERROR_SUCCESS) return code;
    if (className && classSize && *classSize > 0) *className = 0;
    if (classSize) *classSize = 0;
    if (written) *written = FILETIME{};
    return ERROR_SUCCESS;
  });
}

LSTATUS STDAPICALLTYPE RegEnumValueW(HKEY handle, DWORD index, LPWSTR name, DWORD* nameSize, DWORD*,
                                     DWORD* type, BYTE* data, DWORD* size) {
  return WithKey(handle, KEY_QUERY_VALUE, [&](const TKeyRef& key) -> DWORD {
    if (index >= key->Values.size()) return ERROR_NO_MORE_ITEMS;
    const TValue& value = std::next(key->Values.begin(), index)->second;
    const DWORD code = AnswerName(value.Name, name, nameSize);
    return code == ERROR_SUCCESS ? AnswerData(value, type, data, size) : code;
  });
}

LSTATUS STDAPICALLTYPE RegCloseKey(HKEY handle) {
  return SystemCall<LSTATUS>(ERROR_NOT_ENOUGH_MEMORY, [&]() -> LSTATUS {
    if (TSystemHandles::Instance().Close<TKeyHandle>(handle)) return ERROR_SUCCESS;
    TRegistry& registry = Registry();
    const std::lock_guard lock(registry.Lock);
    return KeyOf(registry, handle) ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;  // roots stay open
  });
}

// Runs with the key that a path names, made where missing.
template <class TBody>
void Change(HKEY root, TStringView path, TBody&& body) {
  TRegistry& registry = Registry();
  const std::lock_guard lock(registry.Lock);
  if (const TKeyRef key = Walk(KeyOf(registry, root), path, true)) body(*key);
}

std::optional<TValue> Read(HKEY root, TStringView path, TStringView name) {
  TRegistry& registry = Registry();
  const std::lock_guard lock(registry.Lock);
  const TKeyRef key = Walk(KeyOf(registry, root), path, false);
  if (!key) return std::nullopt;
  const auto found = key->Values.find(UpperCase(name));
  return found == key->Values.end() ? std::nullopt : std::optional(found->second);
}

}  // namespace

// --- PortableRegistry.h ----------------------------------------------------

void SetRegistryText(HKEY root, TStringView key, TStringView name, TStringView text, DWORD type) {
  Change(root, key, [&](TKey& found) { Put(found, name, type, BytesOf(text)); });
}

void SetRegistryNumber(HKEY root, TStringView key, TStringView name, DWORD value) {
  Change(root, key, [&](TKey& found) { PutNumber(found, name, value); });
}

void SetRegistryBinary(HKEY root, TStringView key, TStringView name,
                       const std::vector<BYTE>& value) {
  Change(root, key, [&](TKey& found) { Put(found, name, REG_BINARY, value); });
}

std::optional<TString> GetRegistryText(HKEY root, TStringView key, TStringView name) {
  const auto value = Read(root, key, name);
  const bool text = value && (value->Type == REG_SZ || value->Type == REG_EXPAND_SZ);
  return text ? std::optional(TextOf(value->Data)) : std::nullopt;
}

std::optional<DWORD> GetRegistryNumber(HKEY root, TStringView key, TStringView name) {
  const auto value = Read(root, key, name);
  if (!value || value->Type != REG_DWORD || value->Data.size() != sizeof(DWORD))
    return std::nullopt;
  DWORD number = 0;
  std::memcpy(&number, value->Data.data(), sizeof number);
  return number;
}

bool DeleteRegistryKey(HKEY root, TStringView key) {
  const std::size_t end = key.rfind(u'\\');
  const TStringView parent = end == TStringView::npos ? TStringView() : key.substr(0, end);
  const TStringView last = end == TStringView::npos ? key : key.substr(end + 1);
  TRegistry& registry = Registry();
  const std::lock_guard lock(registry.Lock);
  const TKeyRef above = Walk(KeyOf(registry, root), parent, false);
  return above && above->Keys.erase(UpperCase(last)) > 0;
}

void ResetRegistry() {
  TRegistry& registry = Registry();
  const std::lock_guard lock(registry.Lock);
  registry.Roots.clear();
  registry.Filled = false;
}

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemRegistry(TApi& api) {
  BIND(RegOpenKeyExW);
  BIND(RegCreateKeyExW);
  BIND(RegQueryValueExW);
  BIND(RegSetValueExW);
  BIND(RegDeleteValueW);
  BIND(RegDeleteKeyExW);
  BIND(RegEnumKeyExW);
  BIND(RegEnumValueW);
  BIND(RegCloseKey);
}
#undef BIND

}  // namespace oak
