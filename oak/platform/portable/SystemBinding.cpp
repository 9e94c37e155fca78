#include "oak/platform/portable/SystemBinding.h"

#include <algorithm>

#include "oak/platform/portable/PortableBinding.h"

namespace oak {

bool CopyText(TStringView text, LPWSTR buffer, std::size_t capacity) noexcept {
  if (!buffer || capacity <= text.size()) return false;
  std::copy(text.begin(), text.end(), buffer);
  buffer[text.size()] = 0;
  return true;
}

DWORD AnswerText(TStringView text, LPWSTR buffer, DWORD capacity) noexcept {
  const auto length = static_cast<DWORD>(text.size());
  return CopyText(text, buffer, capacity) ? length : length + 1;
}

void BindPortableSystem(TApi& api) {
  BindSystemPidls(api);
  BindSystemFind(api);
  BindSystemFiles(api);
  BindSystemStreams(api);
  BindSystemDirectories(api);
  BindSystemVolumes(api);
  BindSystemPaths(api);
  BindSystemText(api);
  BindSystemMessages(api);
  BindSystemTime(api);
  BindSystemLocale(api);
  BindSystemEnvironment(api);
  BindSystemProcess(api);
  BindSystemThreads(api);
  BindSystemRegistry(api);
  BindSystemModules(api);
  BindSystemMemory(api);
  BindSystemMenus(api);
  BindSystemCom(api);
  BindSystemDesktop(api);
  BindSystemExecute(api);
}

}  // namespace oak
