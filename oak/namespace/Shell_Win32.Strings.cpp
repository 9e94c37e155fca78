// Opening the system's libraries and fetching their texts.
#include "oak/namespace/Shell_Win32.Strings.h"

#include <memory>
#include <mutex>

#include "oak/base/Exceptions.h"
#include "oak/framework/Application.h"
#include "oak/framework/Finalizers.h"
#include "oak/framework/MainThreadQueue.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/Api.h"
#include "oak/platform/MainThread.h"

namespace oak {

namespace detail {
void DropDesktop() noexcept;
}

namespace {

constexpr std::size_t StringCapacity = 32768;  // in characters, the terminating one included
constexpr DWORD FirstBuildWithDarkMode = 17135;
constexpr char16_t StringsSeparator = u'|';

/// A loaded library, or none.
class TLibrary {
 public:
  TLibrary() = default;
  explicit TLibrary(TStringView pName) : fName(pName), fModule(Api().LoadLibraryW(W(fName))) {}
  TLibrary(TLibrary&& other) noexcept
      : fName(std::move(other.fName)), fModule(std::exchange(other.fModule, nullptr)) {}
  TLibrary& operator=(TLibrary&& other) noexcept {
    std::swap(fName, other.fName);
    std::swap(fModule, other.fModule);
    return *this;
  }
  ~TLibrary() {
    if (fModule) Api().FreeLibrary(fModule);
  }
  explicit operator bool() const noexcept { return fModule != nullptr; }
  HMODULE Module() const noexcept { return fModule; }
  const TString& Name() const noexcept { return fName; }

 private:
  TString fName;
  HMODULE fModule = nullptr;
};

TLibrary LoadRequired(TStringView pName, TStringView pMessage) {
  TLibrary library(pName);
  if (!library) throw Exception(TString(pMessage));
  return library;
}

/// Empty if the library has no such text.
TString StringFrom(HMODULE pModule, UINT pId) {
  if (!pModule) return {};
  TString buffer(StringCapacity, u'\0');
  const int length =
      Api().LoadStringW(pModule, pId, WBuffer(buffer), static_cast<int>(StringCapacity));
  return length <= 0 ? TString() : buffer.substr(0, static_cast<std::size_t>(length));
}

void WarnOfMissingString(UINT pId, TStringView pLibrary) {
  const TString line = u"[Warning] Resource string with ID " + IntToStr(pId) +
                       u" does not exist in " + TString(pLibrary);
  Api().OutputDebugStringW(W(line));
}

TString StringOrDefault(const TLibrary& pLibrary, UINT pId, TStringView pDefault = {}) {
  TString text = StringFrom(pLibrary.Module(), pId);
  if (!text.empty()) return text;
  WarnOfMissingString(pId, pLibrary.Name());
  return TString(pDefault);
}

TString StringOrDefault(const TLibrary& pLibrary, UINT pId, UINT pSecondId, TStringView pDefault) {
  TString text = StringFrom(pLibrary.Module(), pId);
  return text.empty() ? StringOrDefault(pLibrary, pSecondId, pDefault) : text;
}

/// What one run of the initialisation brought; freed as a whole.
struct TShellState {
  TLibrary NtDll, PropSys, Shell32, ShlwApi, Kernel32, ExplorerFrame, ComDlg32, UxTheme, ShCore,
      User32;
  TSystemStrings Strings;
};

struct TStringRow {
  TString TSystemStrings::*Field;
  UINT Id;
};

constexpr TStringRow Shell32Strings[] = {
    {&TSystemStrings::BackgroundContextMenu_Thumbnails, 16384},
    {&TSystemStrings::BackgroundContextMenu_Preview, 8499},
    {&TSystemStrings::BackgroundContextMenu_LargeIcons, 33577},
    {&TSystemStrings::BackgroundContextMenu_MediumIcons, 31138},
    {&TSystemStrings::BackgroundContextMenu_SmallIcons, 33578},
    {&TSystemStrings::BackgroundContextMenu_List, 33579},
    {&TSystemStrings::BackgroundContextMenu_Details, 33580},
    {&TSystemStrings::BackgroundContextMenu_View, 33585},
    {&TSystemStrings::BackgroundContextMenu_Paste, 33562},
    {&TSystemStrings::BackgroundContextMenu_Properties, 33555},
    {&TSystemStrings::BackgroundContextMenu_New, 30315},
    {&TSystemStrings::BackgroundContextMenu_NewFolder, 30317},
    {&TSystemStrings::BackgroundContextMenu_Shortcut, 30318},
    {&TSystemStrings::BackgroundContextMenu_SortByXP, 4259},
    {&TSystemStrings::BackgroundContextMenu_SortByWin7, 50690},
    {&TSystemStrings::ResourcePreview_SelectFile, 38245},
    {&TSystemStrings::ResourcePreview_NotAvailable, 38246},
    {&TSystemStrings::ResourcePreview_NotPossible, 38249},
    {&TSystemStrings::ResourceSearch_NoResults, 13333},
    {&TSystemStrings::Error_Caption, 51248},
    {&TSystemStrings::Error_NewFolder, 6437},
    {&TSystemStrings::strControlPanel, 4161},
    {&TSystemStrings::strAllControlPanelElements, 32012},
};

constexpr TStringRow ComDlg32Strings[] = {
    {&TSystemStrings::ComDlg_Filename, 433}, {&TSystemStrings::ComDlg_Folder, 438},
    {&TSystemStrings::ComDlg_FileType, 432}, {&TSystemStrings::ComDlg_Open, 384},
    {&TSystemStrings::ComDlg_SaveAs, 385},
};

void FillFromShell32(TShellState& pState) {
  for (const TStringRow& row : Shell32Strings)
    pState.Strings.*row.Field = StringOrDefault(pState.Shell32, row.Id);
  pState.Strings.strSystemInFolder = StringOrDefault(pState.Shell32, 8977, sInFolder);
  pState.Strings.strSystemNewFolder = StringOrDefault(pState.Shell32, 30320, 30396, sNewFolder);
  if (!IsWindows10OrLater())
    pState.Strings.BackgroundContextMenu_Refresh = StringOrDefault(pState.Shell32, 5268);
}

void FillFromOtherLibraries(TShellState& pState) {
  pState.Strings.ResourceSearch_Running = StringOrDefault(pState.ExplorerFrame, 41480);
  if (IsWindows10OrLater())
    pState.Strings.BackgroundContextMenu_Refresh =
        StringOrDefault(pState.ExplorerFrame, 12624, u"Refresh");
  for (const TStringRow& row : ComDlg32Strings)
    pState.Strings.*row.Field = StringOrDefault(pState.ComDlg32, row.Id);
}

/// The function table resolves the entries of these libraries itself; here they
/// are held open, and what can't run without is told.
std::unique_ptr<TShellState> OpenLibraries() {
  auto state = std::make_unique<TShellState>();
  state->NtDll = LoadRequired(u"ntdll", u"FolderTrek Components: Cannot open ntdll.dll");
  state->PropSys = TLibrary(u"propsys");
  state->Shell32 = LoadRequired(u"Shell32", u"FolderTrek Components: Cannot open SHELL32.DLL!");
  FillFromShell32(*state);
  state->ShlwApi = LoadRequired(u"shlwapi", u"FolderTrek Components: Cannot open SHLWAPI.DLL!");
  state->Kernel32 = TLibrary(u"kernel32.dll");
  state->ExplorerFrame = TLibrary(u"ExplorerFrame.dll");
  state->ComDlg32 = TLibrary(u"comdlg32.dll");
  FillFromOtherLibraries(*state);
  if (GetWindowsBuildNumber() >= FirstBuildWithDarkMode) state->UxTheme = TLibrary(u"uxtheme.dll");
  state->ShCore = TLibrary(u"Shcore.dll");
  state->User32 = TLibrary(u"User32.dll");
  return state;
}

std::mutex gInitLock;
std::atomic<TShellState*> gShellState{nullptr};
bool gOleEntered = false;  // guarded by gInitLock

}  // namespace

void SetIsLibrary(bool pIsLibrary) noexcept { Application().SetIsLibrary(pIsLibrary); }

void InitializeShell() {
  if (gShellState.load(std::memory_order_acquire)) return;
  const std::lock_guard guard(gInitLock);
  if (gShellState.load(std::memory_order_relaxed)) return;
  // OLE belongs to a thread: entering it on a worker that came first by chance
  // would serve nobody.
  if (!Application().GetIsLibrary() && !gOleEntered && IsMainThread())
    gOleEntered = SUCCEEDED(Api().OleInitialize(nullptr));
  gShellState.store(OpenLibraries().release(), std::memory_order_release);
}

void FinalizeShell() {
  RunFinalizers();
  if (IsMainThread()) FinalizeFramework();
  TOakItemIdList::ClearCaches();
  const std::lock_guard guard(gInitLock);
  detail::DropDesktop();
  delete gShellState.exchange(nullptr);
  if (gOleEntered && IsMainThread()) {
    Api().OleUninitialize();
    gOleEntered = false;
  }
}

const TSystemStrings& SystemStrings() {
  InitializeShell();
  return gShellState.load(std::memory_order_acquire)->Strings;
}

TString LoadSystemString(UINT pId, TStringView pLibrary, TStringView pDefault) {
  return StringOrDefault(TLibrary(pLibrary), pId, pDefault);
}

TString LoadSystemString(UINT pId, UINT pSecondId, TStringView pLibrary, TStringView pDefault) {
  return StringOrDefault(TLibrary(pLibrary), pId, pSecondId, pDefault);
}

TStringArray LoadSystemStrings(UINT pId, TStringView pLibrary) {
  const TString text = LoadSystemString(pId, pLibrary);
  return text.empty() ? TStringArray() : Split(text, StringsSeparator);
}

}  // namespace oak
