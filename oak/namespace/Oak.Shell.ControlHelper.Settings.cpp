// The user's settings of the shell and of the navigation pane.
#include <mutex>

#include "oak/framework/Registry.h"
#include "oak/namespace/Oak.Shell.ControlHelper.h"
#include "oak/namespace/Oak.Shell.ExplorerSettings.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

constexpr TStringView OneDriveClassId = u"{018D5C66-4533-4307-9B53-224DE2ED1FE6}";
constexpr TStringView LibrariesClass = u"{031E4825-7B94-4dc3-B131-E946B44C8DD5}";
constexpr TStringView ClassesPath = u"SOFTWARE\\Classes\\CLSID\\";
constexpr TStringView PinnedValue = u"\\System.IsPinnedToNameSpaceTree";
constexpr TStringView AdvancedPath =
    u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Advanced\\";

TString Joined(TStringView pFirst, TStringView pSecond, TStringView pThird = {}) {
  TString result(pFirst);
  result += pSecond;
  result += pThird;
  return result;
}

/// A number, or a text of that number.
bool IsNumber(const TVariant& pValue, int pNumber) {
  return VariantToText(pValue) == IntToStr(pNumber);
}

bool UserValueIsOne(const TString& pPath) {
  return IsNumber(TShellControlHelper::GetRegistryValue(pPath, HKEY_CURRENT_USER), 1);
}

struct TSettingsHolder {
  std::mutex Lock;
  std::shared_ptr<const TExplorerSettings> Settings;
};

TSettingsHolder& Holder() {
  static auto* holder = new TSettingsHolder;
  return *holder;
}

/// For the span of a call, whoever replaces it meanwhile.
std::shared_ptr<const TExplorerSettings> ExplorerSettings() {
  TSettingsHolder& holder = Holder();
  const std::lock_guard lock(holder.Lock);
  if (!holder.Settings) holder.Settings = std::make_shared<TExplorerSettings>();
  return holder.Settings;
}

/// The settings of the mask; `pDefault` where the system has no such function.
template <class TRead>
bool ReadSetting(DWORD pMask, bool pDefault, const TRead& pRead) {
  SHELLSTATEW state{};
  return TShellControlHelper::SetShellSettings(pMask, state, false) ? pRead(state) : pDefault;
}

}  // namespace

// --- settings of the shell -------------------------------------------------------------
bool TShellControlHelper::SetShellSettings(DWORD pMask, SHELLSTATEW& pValues, bool pSet) {
  if (!Api().SHGetSetSettings) return false;
  Api().SHGetSetSettings(&pValues, pMask, pSet ? TRUE : FALSE);
  return true;
}

bool TShellControlHelper::GetShellNoConfirmRecycle() {
  return ReadSetting(SSF_NOCONFIRMRECYCLE, false,
                     [](const SHELLSTATEW& state) { return state.fNoConfirmRecycle != 0; });
}

void TShellControlHelper::SetShellNoConfirmRecycle(bool pValue) {
  SHELLSTATEW state{};
  state.fNoConfirmRecycle = pValue ? -1 : 0;  // one bit, and a sign
  SetShellSettings(SSF_NOCONFIRMRECYCLE, state, true);
}

bool TShellControlHelper::GetShellShowExtensions() {
  return ReadSetting(SSF_SHOWEXTENSIONS, true,
                     [](const SHELLSTATEW& state) { return state.fShowExtensions != 0; });
}

void TShellControlHelper::SetShellShowExtensions(bool pValue) {
  SHELLSTATEW state{};
  state.fShowExtensions = pValue ? -1 : 0;
  SetShellSettings(SSF_SHOWEXTENSIONS, state, true);
}

bool TShellControlHelper::ShellShowInfoTip() {
  return ReadSetting(SSF_SHOWINFOTIP, true,
                     [](const SHELLSTATEW& state) { return state.fShowInfoTip != 0; });
}

bool TShellControlHelper::ShellSingleClickActivate() {
  return ReadSetting(SSF_DOUBLECLICKINWEBVIEW, false,
                     [](const SHELLSTATEW& state) { return state.fDoubleClickInWebView == 0; });
}

// --- the navigation pane ---------------------------------------------------------------
bool TShellControlHelper::IsWindows8OrLater() { return oak::IsWindows8OrLater(); }

bool TShellControlHelper::IsWindows10OrLater() { return oak::IsWindows10OrLater(); }

TVariant TShellControlHelper::GetRegistryValue(TStringView pPath, HKEY pRoot) {
  const std::size_t cut = pPath.rfind(PathDelim);
  const TStringView key = cut == TStringView::npos ? TStringView() : pPath.substr(0, cut);
  const TStringView name = cut == TStringView::npos ? pPath : pPath.substr(cut + 1);
  TRegistry registry(KEY_READ | KEY_WOW64_64KEY);
  registry.SetRootKey(pRoot);
  if (!registry.OpenKeyReadOnly(key) || !registry.ValueExists(name)) return TVariant::Null();
  try {
    switch (registry.GetDataType(name)) {
      case rdString:
      case rdExpandString:
        return TVariant::From(registry.ReadString(name));
      case rdInteger:
        return TVariant::From(registry.ReadInteger(name));
      default:
        return {};
    }
  } catch (const ERegistryException&) {
    return TVariant::Null();  // It was removed meanwhile.
  }
}

bool TShellControlHelper::ShellShowFavorites() {
  if (IsWindows10OrLater())
    return !IsNumber(
        GetRegistryValue(u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\HubMode",
                         HKEY_LOCAL_MACHINE),
        1);
  if (!IsWindows8OrLater()) return true;
  return !IsNumber(
      GetRegistryValue(Joined(AdvancedPath, u"NavPaneShowFavorites"), HKEY_CURRENT_USER), 0);
}

bool TShellControlHelper::ShellShowLibraries() {
  if (!IsWindows8OrLater()) return true;
  return !GetRegistryValue(Joined(ClassesPath, LibrariesClass, PinnedValue), HKEY_CURRENT_USER)
              .IsNull();
}

bool TShellControlHelper::ShellShowNamespace(TStringView pClsid) {
  if (!IsWindows10OrLater()) return false;
  return UserValueIsOne(Joined(ClassesPath, pClsid, PinnedValue)) &&
         !UserValueIsOne(
             Joined(u"Software\\Microsoft\\Windows\\CurrentVersion\\Policies\\NonEnum\\", pClsid));
}

bool TShellControlHelper::ShellShowOneDrive() { return ShellShowNamespace(OneDriveClassId); }

bool TShellControlHelper::ShellShowAllFolders() {
  return ExplorerSettings()->ShellShowAllFolders();
}

bool TShellControlHelper::ShellExpandToCurrentFolder() {
  return ExplorerSettings()->ShellExpandToCurrentFolder();
}

void TShellControlHelper::SetExplorerSettings(std::shared_ptr<const TExplorerSettings> pSettings) {
  TSettingsHolder& holder = Holder();
  // The former ones end outside of the lock.
  const std::lock_guard lock(holder.Lock);
  holder.Settings.swap(pSettings);
}

bool TExplorerSettings::ShellShowAllFolders() const {
  return UserValueIsOne(Joined(AdvancedPath, u"NavPaneShowAllFolders"));
}

bool TExplorerSettings::ShellExpandToCurrentFolder() const {
  return UserValueIsOne(Joined(AdvancedPath, u"NavPaneExpandToCurrentFolder"));
}

}  // namespace oak
