#include "oak/platform/portable/FileAttributeStore.h"

#include <sys/xattr.h>

#include <cerrno>

#include "oak/base/Guid.h"
#include "oak/platform/portable/FileSystemSource.h"
#include "oak/platform/shell_api_keys.h"

namespace oak {
namespace {

enum class TStoredKind : std::uint8_t { Text, List, Number };

struct TStored {
  const PROPERTYKEY& Key;
  const char* Name;
  TStoredKind Kind;
};
// Texts are UTF-8, lists one text a line, numbers decimal.
const TStored kStored[] = {
    {PKEY_Title, "user.oak.title", TStoredKind::Text},
    {PKEY_Subject, "user.oak.subject", TStoredKind::Text},
    {PKEY_Author, "user.oak.author", TStoredKind::List},
    {PKEY_Keywords, "user.oak.keywords", TStoredKind::List},
    {PKEY_Comment, "user.oak.comment", TStoredKind::Text},
    {PKEY_Copyright, "user.oak.copyright", TStoredKind::Text},
    {PKEY_Rating, "user.oak.rating", TStoredKind::Number},
};

const TStored* FindStored(REFPROPERTYKEY key) noexcept {
  for (const TStored& stored : kStored)
    if (TPropertyKeyEqual{}(stored.Key, key)) return &stored;
  return nullptr;
}

// False if there is none.
bool ReadAttribute(const std::string& native, const char* name, std::string& bytes) {
  for (;;) {
    const ssize_t size = ::getxattr(native.c_str(), name, nullptr, 0);
    if (size <= 0) return false;
    bytes.resize(static_cast<std::size_t>(size));
    const ssize_t got = ::getxattr(native.c_str(), name, bytes.data(), bytes.size());
    if (got < 0 && errno == ERANGE) continue;  // it grew meanwhile
    if (got < 0) return false;
    bytes.resize(static_cast<std::size_t>(got));
    return true;
  }
}

HRESULT Written(int result) {
  if (result == 0 || errno == ENODATA) return S_OK;
  // What the attribute's size or the kind of object does not allow is no matter of rights.
  if (errno == E2BIG || errno == ERANGE || errno == ENOSPC) return STG_E_MEDIUMFULL;
  return errno == ENOTSUP ? HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED) : ResultFromErrno(errno);
}

TStringArray ListOf(const PROPVARIANT& value, const TString& text) {
  if (value.vt != (VT_VECTOR | VT_LPWSTR)) return Split(text, u';');
  TStringArray texts;
  for (ULONG i = 0; i < value.calpwstr.cElems; ++i)
    texts.push_back(FromW(value.calpwstr.pElems[i]));
  return texts;
}

// The value as it is stored; false for one of a wrong kind.
bool Encode(TStoredKind kind, const PROPVARIANT& value, std::string& bytes) {
  if (kind == TStoredKind::Number) {
    std::int64_t number = 0;
    if (!TryGetInt64(value, number) || number < 0 || number > 0xFFFFFFFFll) return false;
    bytes = std::to_string(number);
    return true;
  }
  TString text;
  if (!TryGetText(value, text)) return false;
  bytes.clear();
  if (kind == TStoredKind::Text) {
    bytes = ToUtf8(text);
    return true;
  }
  for (const TString& part : ListOf(value, text)) {
    const TString trimmed = Trim(part);
    if (trimmed.empty()) continue;
    if (!bytes.empty()) bytes += '\n';
    bytes += ToUtf8(ReplaceAll(trimmed, u"\n", u" "));
  }
  return true;
}

bool Decode(TStoredKind kind, const std::string& bytes, TPropVariant& value) {
  if (kind == TStoredKind::Text) {
    value = TPropVariant::From(FromUtf8(bytes));
    return true;
  }
  if (kind == TStoredKind::List) {
    value = TPropVariant::From(Split(FromUtf8(bytes), u'\n'));
    return true;
  }
  ULONG number = 0;
  for (const char c : bytes) {
    if (c < '0' || c > '9' || number > 429496728) return false;
    number = number * 10 + static_cast<ULONG>(c - '0');
  }
  value = TPropVariant::From(number);
  return true;
}

}  // namespace

bool IsStoredProperty(REFPROPERTYKEY key) noexcept { return FindStored(key) != nullptr; }

HRESULT ReadStoredProperty(const std::string& native, REFPROPERTYKEY key, TPropVariant& value) {
  const TStored* stored = FindStored(key);
  if (!stored) return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
  std::string bytes;
  value = TPropVariant();
  if (ReadAttribute(native, stored->Name, bytes)) (void)Decode(stored->Kind, bytes, value);
  return S_OK;
}

HRESULT WriteStoredProperty(const std::string& native, REFPROPERTYKEY key, REFPROPVARIANT value) {
  const TStored* stored = FindStored(key);
  if (!stored) return HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED);
  std::string bytes;
  const bool remove = value.vt == VT_EMPTY || value.vt == VT_NULL;
  if (!remove && !Encode(stored->Kind, value, bytes)) return DISP_E_TYPEMISMATCH;
  if (bytes.empty()) return Written(::removexattr(native.c_str(), stored->Name));
  return Written(::setxattr(native.c_str(), stored->Name, bytes.data(), bytes.size(), 0));
}

}  // namespace oak
