// Libraries and their string resources.
#include <unistd.h>

#include <algorithm>
#include <vector>

#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/PortableStrings.h"
#include "oak/platform/portable/SystemBinding.h"

namespace oak {
namespace {

constexpr TStringView ProgramModule = u"";

bool IsModule(HMODULE module) {
  return module == PortableModule(ProgramModule) || !PortableModuleName(module).empty();
}

HMODULE FindModule(LPCWSTR name) {
  const TStringView text = ViewOf(name);
  const HMODULE module = text.empty() ? nullptr : PortableModule(text);
  return module ? module : FailWith<HMODULE>(ERROR_MOD_NOT_FOUND, nullptr);
}

HMODULE STDAPICALLTYPE LoadLibraryW(LPCWSTR name) {
  return SystemCall<HMODULE>(nullptr, [&] { return FindModule(name); });
}

HMODULE STDAPICALLTYPE LoadLibraryExW(LPCWSTR name, HANDLE reserved, DWORD) {
  if (reserved) return FailWith<HMODULE>(ERROR_INVALID_PARAMETER, nullptr);
  return LoadLibraryW(name);
}

HMODULE STDAPICALLTYPE GetModuleHandleW(LPCWSTR name) {
  return SystemCall<HMODULE>(
      nullptr, [&] { return name ? FindModule(name) : PortableModule(ProgramModule); });
}

BOOL STDAPICALLTYPE FreeLibrary(HMODULE module) {
  return SystemCall<BOOL>(
      FALSE, [&] { return IsModule(module) ? TRUE : FailWith(ERROR_INVALID_HANDLE, FALSE); });
}

// Nil stands for the program. A text that does not fit is cut.
int STDAPICALLTYPE LoadStringW(HINSTANCE module, UINT id, LPWSTR buffer, int capacity) {
  return SystemCall<int>(0, [&] {
    if (!buffer || capacity <= 0) return FailWith(ERROR_INVALID_PARAMETER, 0);
    *buffer = 0;
    if (module && !IsModule(module)) return FailWith(ERROR_INVALID_HANDLE, 0);
    const auto text = PortableString(module ? PortableModuleName(module) : TString(), id);
    if (!text) return FailWith(ERROR_RESOURCE_NAME_NOT_FOUND, 0);
    const std::size_t length = std::min(text->size(), static_cast<std::size_t>(capacity) - 1);
    CopyText(TStringView(*text).substr(0, length), buffer, static_cast<std::size_t>(capacity));
    return static_cast<int>(length);
  });
}

TString ProgramPath() {
  std::vector<char> buffer(65536);
  const ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
  if (length <= 0) return {};
  return WindowsPath(std::string_view(buffer.data(), static_cast<std::size_t>(length)));
}

DWORD STDAPICALLTYPE GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD capacity) {
  return SystemCall<DWORD>(0, [&]() -> DWORD {
    if (!buffer || capacity == 0) return FailWith<DWORD>(ERROR_INSUFFICIENT_BUFFER, 0);
    if (module && !IsModule(module)) return FailWith<DWORD>(ERROR_MOD_NOT_FOUND, 0);
    const TString library = module ? PortableModuleName(module) : TString();
    const TString path =
        library.empty()
            ? ProgramPath()
            : IncludeTrailingPathDelimiter(WindowsPath(PortableConfig()->System)) + library;
    if (CopyText(path, buffer, capacity)) return static_cast<DWORD>(path.size());
    CopyText(TStringView(path).substr(0, capacity - 1), buffer, capacity);
    return FailWith<DWORD>(ERROR_INSUFFICIENT_BUFFER, capacity);
  });
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemModules(TApi& api) {
  BIND(LoadLibraryW);
  BIND(LoadLibraryExW);
  BIND(GetModuleHandleW);
  BIND(FreeLibrary);
  BIND(LoadStringW);
  BIND(GetModuleFileNameW);
}
#undef BIND

}  // namespace oak
