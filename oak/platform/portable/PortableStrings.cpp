#include "oak/platform/portable/PortableStrings.h"

#include <iterator>
#include <map>
#include <mutex>
#include <utility>

namespace oak {
namespace {

// The libraries that the system has, all in one process image. The first is the
// program itself.
constexpr TStringView ModuleNames[] = {u"",
                                       u"advapi32.dll",
                                       u"comctl32.dll",
                                       u"comdlg32.dll",
                                       u"gdi32.dll",
                                       u"kernel32.dll",
                                       u"mpr.dll",
                                       u"ntdll.dll",
                                       u"ole32.dll",
                                       u"oleaut32.dll",
                                       u"propsys.dll",
                                       u"shcore.dll",
                                       u"explorerframe.dll",
                                       u"shell32.dll",
                                       u"shlwapi.dll",
                                       u"user32.dll",
                                       u"uxtheme.dll",
                                       u"wininet.dll"};

struct TResource {
  TStringView Library;
  UINT Id;
  TStringView Text;
};

constexpr TResource Resources[] = {
    {u"shell32.dll", 4161, u"Control Panel"},
    {u"shell32.dll", 4259, u"Arrange icons by"},
    {u"shell32.dll", 5268, u"Refresh"},
    {u"shell32.dll", 6437, u"The folder could not be created."},
    {u"shell32.dll", 8499, u"Preview"},
    {u"shell32.dll", 8977, u"In folder"},
    {u"shell32.dll", 13333, u"Nothing here matches the search."},
    {u"shell32.dll", 16384, u"Thumbnails"},
    {u"shell32.dll", 30315, u"New"},
    {u"shell32.dll", 30317, u"Folder"},
    {u"shell32.dll", 30318, u"Shortcut"},
    {u"shell32.dll", 30320, u"New folder"},
    {u"shell32.dll", 30396, u"New folder"},
    {u"shell32.dll", 31138, u"Medium icons"},
    {u"shell32.dll", 32012, u"All Control Panel Items"},
    {u"shell32.dll", 33555, u"Properties"},
    {u"shell32.dll", 33562, u"Paste"},
    {u"shell32.dll", 33577, u"Large icons"},
    {u"shell32.dll", 33578, u"Small icons"},
    {u"shell32.dll", 33579, u"List"},
    {u"shell32.dll", 33580, u"Details"},
    {u"shell32.dll", 33585, u"View"},
    {u"shell32.dll", 38245, u"Select a file to see its preview."},
    {u"shell32.dll", 38246, u"There is no preview."},
    {u"shell32.dll", 38249, u"This file cannot be previewed."},
    {u"shell32.dll", 50690, u"Sort by"},
    {u"shell32.dll", 51248, u"Error"},
    {u"explorerframe.dll", 12624, u"Refresh"},
    {u"explorerframe.dll", 41480, u"Searching..."},
    {u"comdlg32.dll", 384, u"Open"},
    {u"comdlg32.dll", 385, u"Save as"},
    {u"comdlg32.dll", 432, u"File type:"},
    {u"comdlg32.dll", 433, u"File name:"},
    {u"comdlg32.dll", 438, u"Folder:"},
};

// A handle is the address of a cell, so that a wild one is told from a real one
// by its value alone.
char gModuleCells[std::size(ModuleNames)];

HMODULE HandleOf(std::size_t index) { return reinterpret_cast<HMODULE>(&gModuleCells[index]); }

using TOverrides = std::map<std::pair<TString, UINT>, TString>;
std::mutex gOverridesLock;
TOverrides& Overrides() {
  static auto* overrides = new TOverrides;
  return *overrides;
}

// "C:\Windows\System32\Shell32" -> "shell32.dll".
TString CanonicName(TStringView name) {
  TString result = LowerCase(ExtractFileName(name));
  if (!result.empty() && result.back() == u'.')
    result.pop_back();  // the published way to say "no extension"
  else if (!result.empty() && result.find(u'.') == TString::npos)
    result += u".dll";
  return result;
}

std::optional<UINT> ParseNumber(TStringView text) {
  if (text.empty() || text.size() > 9) return std::nullopt;
  UINT value = 0;
  for (const char16_t c : text) {
    if (c < u'0' || c > u'9') return std::nullopt;
    value = value * 10 + static_cast<UINT>(c - u'0');
  }
  return value;
}

}  // namespace

std::optional<TString> PortableString(TStringView library, UINT id) {
  const TString name = CanonicName(library);
  {
    const std::lock_guard lock(gOverridesLock);
    const auto found = Overrides().find({name, id});
    if (found != Overrides().end()) return found->second;
  }
  for (const TResource& resource : Resources)
    if (resource.Id == id && resource.Library == name) return TString(resource.Text);
  return std::nullopt;
}

void SetPortableString(TStringView library, UINT id, TStringView text) {
  const std::lock_guard lock(gOverridesLock);
  Overrides()[{CanonicName(library), id}] = text;
}

std::optional<TString> PortableIndirectString(TStringView text) {
  if (text.empty() || text.front() != u'@') return TString(text);
  const std::size_t comma = text.rfind(u",-");
  if (comma == TStringView::npos) return std::nullopt;
  TStringView number = text.substr(comma + 2);
  number = number.substr(0, number.find(u';'));  // a comment may follow
  const std::optional<UINT> id = ParseNumber(number);
  return id ? PortableString(text.substr(1, comma - 1), *id) : std::nullopt;
}

HMODULE PortableModule(TStringView name) {
  const TString wanted = CanonicName(name);
  for (std::size_t i = 0; i < std::size(ModuleNames); ++i)
    if (ModuleNames[i] == wanted) return HandleOf(i);
  return nullptr;
}

TString PortableModuleName(HMODULE module) {
  for (std::size_t i = 0; i < std::size(ModuleNames); ++i)
    if (HandleOf(i) == module) return TString(ModuleNames[i]);
  return {};
}

}  // namespace oak
