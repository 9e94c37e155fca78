// The parts of the portable system, each of which binds its functions.
#pragma once

#include "oak/base/Text.h"
#include "oak/platform/Api.h"

namespace oak {

void BindSystemPidls(TApi& api);
void BindSystemFind(TApi& api);
void BindSystemFiles(TApi& api);
void BindSystemStreams(TApi& api);
void BindSystemDirectories(TApi& api);
void BindSystemVolumes(TApi& api);
void BindSystemPaths(TApi& api);
void BindSystemText(TApi& api);
void BindSystemMessages(TApi& api);
void BindSystemTime(TApi& api);
void BindSystemLocale(TApi& api);
void BindSystemEnvironment(TApi& api);
void BindSystemProcess(TApi& api);
void BindSystemThreads(TApi& api);
void BindSystemRegistry(TApi& api);
void BindSystemModules(TApi& api);
void BindSystemMemory(TApi& api);
void BindSystemMenus(TApi& api);
void BindSystemCom(TApi& api);
void BindSystemDesktop(TApi& api);
void BindSystemExecute(TApi& api);

/// Copies a text with its end into a caller's buffer. False, with nothing
/// written, if the buffer is nil or too small.
bool CopyText(TStringView text, LPWSTR buffer, std::size_t capacity) noexcept;

/// The published answer of functions that fill a buffer: the length without the
/// end if it fits, else the capacity that is needed.
DWORD AnswerText(TStringView text, LPWSTR buffer, DWORD capacity) noexcept;

/// A caller's text as a view; nil gives the empty one.
inline TStringView ViewOf(LPCWSTR text) noexcept {
  return text ? TStringView(text) : TStringView();
}

/// Runs the body of a system function that answers `failure` with last error
/// when it cannot go on; no exception leaves it.
template <class R, class TBody>
R SystemCall(R failure, TBody&& body) noexcept {
  try {
    return body();
  } catch (...) {
    detail::SetLastErrorDirect(8);  // ERROR_NOT_ENOUGH_MEMORY: all that can be thrown here
    return failure;
  }
}

/// Sets the last error and gives `result`.
template <class R>
R FailWith(DWORD code, R result) noexcept {
  detail::SetLastErrorDirect(code);
  return result;
}

}  // namespace oak
