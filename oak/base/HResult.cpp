#include "oak/base/HResult.h"

#include "oak/base/Exceptions.h"

namespace oak {

void THResultHelper::CheckForError(HRESULT value, TStringView message) {
  if (SUCCEEDED(value)) return;
  // The range of the system's own and of its internet error codes, which have texts.
  const auto code = static_cast<std::uint32_t>(HRESULT_CODE(value));
  if (code >= 2 && code <= 12175) throw EFolderTrekError(code, message);
  throw EFolderTrekError(value, message);
}

TString THResultHelper::ToString(HRESULT value) {
  return IntToHex(static_cast<std::uint32_t>(value), 8);
}

void OleCheck(HRESULT value) {
  if (FAILED(value)) throw EOleSysError(value);
}

}  // namespace oak
