// Commands on one item.
#include "oak/base/HResult.h"
#include "oak/framework/Forms.h"
#include "oak/framework/Host.h"
#include "oak/framework/Registry.h"
#include "oak/namespace/CommandParts.h"
#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/NamespaceHooks.h"
#include "oak/namespace/Oak.Shell.Types.InvokeCommand.h"
#include "oak/namespace/OakItemIdList.State.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

constexpr std::uint32_t NoSuchObject = 3;  // ERROR_PATH_NOT_FOUND
constexpr int DriveDepth = 2;              // a drive in the computer
constexpr TStringView OnlyFileSystem =
    u"Only for file system objects a command promnpt can be opened.";

/// The value as text, empty if there is none or it is no text.
TString ReadDefaultText(HKEY root, TStringView key, TStringView name) {
  TRegistry registry(KEY_READ);
  registry.SetRootKey(root);
  if (!registry.OpenKeyReadOnly(key)) return {};
  try {
    return registry.ReadString(name);
  } catch (const ERegistryException&) {
    return {};
  }
}

/// The program that unlocks drives, with its path; empty if there is none.
TString UnlockProgram() {
  const TString value =
      Trim(ReadDefaultText(HKEY_CLASSES_ROOT, u"Drive\\shell\\unlock-bde\\command", {}));
  const TString program = value.substr(0, value.find(u' '));
  if (program.empty()) return {};
  TString path = OakExpandEnvironmentStrings(program);
  if (FileOrFolderExists(path)) return path;
  // What a process of 32 bits calls the system's directory is another one.
  path = OakExpandEnvironmentStrings(
      ReplaceAllText(program, u"%SystemRoot%\\System32\\", u"%WinDir%\\SysNative\\"));
  return FileOrFolderExists(path) ? path : TString();
}

/// The class of the program that opens PDF documents: the user's choice, else the system's.
TString PdfClass() {
  const TString chosen = ReadDefaultText(
      HKEY_CURRENT_USER,
      u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts\\.pdf\\UserChoice",
      u"ProgId");
  return chosen.empty() ? ReadDefaultText(HKEY_CLASSES_ROOT, u".PDF", {}) : chosen;
}

bool RefusesElevation(TStringView programClass) {
  const TString name = LowerCase(programClass);
  return name.starts_with(u"acrobat.") || name.starts_with(u"acroexch.");
}

}  // namespace

// --- shared with cursors -------------------------------------------------------

bool StartProgram(HWND window, TStringView file, TStringView parameters, TStringView directory) {
  const TString fileText(file);
  const TString parameterText(parameters);
  const TString directoryText(directory);
  const HINSTANCE result = Api().ShellExecuteW(
      window, nullptr, W(fileText), parameters.empty() ? nullptr : W(parameterText),
      directory.empty() ? nullptr : W(directoryText), SW_SHOWNORMAL);
  constexpr std::uintptr_t lastError = 32;  // what is above names an instance
  return reinterpret_cast<std::uintptr_t>(result) > lastError;
}

HWND ApplicationWindow() { return Host().ApplicationWindow ? Host().ApplicationWindow() : nullptr; }

UINT DefaultMenuItem(HMENU menu) {
  const UINT item = Api().GetMenuDefaultItem(menu, FALSE, 0);
  return item == static_cast<UINT>(-1) ? 0 : item;
}

bool ShareObjects(const TShareRequest& request) {
  if (!NamespaceHooks().Share)
    throw EInvalidOperation(u"Sharing is not part of this program: no share object is installed.");
  return NamespaceHooks().Share(request);
}

// --- the item ---------------------------------------------------------------------

bool TOakItemIdList::InvokeCommand(const TShellCommand& pCommand) {
  if (IsInvalid())
    throw EFolderTrekError(NoSuchObject, PathField() == UnknownPath ? TStringView() : PathField());
  switch (pCommand.GetCommand()) {
    case saPinToHome:
      return IsWindows10OrLater() ? InvokeByMenu(pCommand) : PinToHome();
    case saExplore:
      return Explore(pCommand);
    case saRename:
      throw EFolderTrekError(u"saRename not supported. Use Rename instead.", nullptr);
    case saCopyPath:
      Clipboard().SetAsText(DisplayPath());
      return true;
    case saCreateNewFolder:
      CreateNewFolder(pCommand.Destination);
      return true;
    case saOpenCommandPrompt:
      return OpenCommandPrompt();
    case saDeleteNoUndo:
      RemoveStorage();
      return true;
    case saBdeUnlock:
      return UnlockDrive(pCommand);
    default:
      return pCommand.Equals(ModernShareVerb) ? Share() : InvokeByMenu(pCommand);
  }
}

bool TOakItemIdList::PinToHome() {
  const Ref<IItemIdList> links = CreateForSpecialFolder(SF_LINKS, true);
  if (!TShellLinkHelper::AddLinkTo(Self(), links->Path(), u"")) return false;
  Api().SHChangeNotify(SHCNE_UPDATEDIR, SHCNF_IDLIST, links->WindowsPointer(), nullptr);
  return true;
}

bool TOakItemIdList::Explore(const TShellCommand& pCommand) {
  const int depth = Depth();
  if (depth == DriveDepth && IsDrive(Path())) return InvokeCommand(TShellCommand(saOpen));
  if (Api().SHOpenFolderAndSelectItems &&
      SUCCEEDED(Api().SHOpenFolderAndSelectItems(WindowsPointer(), 0, nullptr, 0)))
    return true;
  return depth > 1 && GetParent()->InvokeCommand(pCommand);
}

bool TOakItemIdList::OpenCommandPrompt() {
  const TString folder = IsFolder() ? Path() : GetParent()->Path();
  if (folder.empty()) throw EFolderTrekError(OnlyFileSystem, nullptr);
  return StartProgram(ApplicationWindow(), u"CMD.EXE", {}, folder);
}

bool TOakItemIdList::UnlockDrive(const TShellCommand& pCommand) {
  const TString path = Path();
  if (path.empty()) throw EFolderTrekError(OnlyFileSystem, nullptr);
  const TString program = UnlockProgram();
  if (program.empty()) return InvokeByMenu(pCommand);
  return RunShellExecuteEx(ApplicationWindow(), u"", u"CMD.EXE", u" /C " + program + u" " + path);
}

bool TOakItemIdList::Share() { return ShareObjects({Name(), u"File", {Path()}, nullptr}); }

/// Of what is started for the object; empty for a folder, which is its own.
TString TOakItemIdList::WorkingDirectory() {
  return IsFolder() ? TString() : ExtractFilePath(Path());
}

bool TOakItemIdList::InvokeByMenu(const TShellCommand& pCommand) {
  const Ref<IItemIdList> last = GetLastPart();
  const Ref<IShellFolder> folder = FolderOf(GetParent());
  if (!folder) THResultHelper::CheckForError(E_NOINTERFACE, DisplayPath());
  PCUITEMID_CHILD child = last->WindowsPointer();
  Ref<IContextMenu> menu;
  THResultHelper::CheckForError(
      folder->GetUIObjectOf(ApplicationWindow(), 1, &child, IidOf<IContextMenu>(), nullptr,
                            menu.PutVoid()),
      DisplayPath());
  if (!menu) THResultHelper::CheckForError(E_NOINTERFACE, DisplayPath());
  if (HandleCommand(pCommand)) return true;
  if (pCommand == saDefault) return InvokeDefault(menu.Get(), pCommand);
  TShellCommand command = pCommand;
  if (command.Destination.empty()) command.Destination = WorkingDirectory();
  TCMInvokeCommandInfoExHelper().Invoke(menu.Get(), command);
  return true;
}

bool TOakItemIdList::InvokeDefault(IContextMenu* pMenu, const TShellCommand& pCommand) {
  const auto menu = TMenuHandle::Adopt(Api().CreatePopupMenu());
  const HRESULT filled =
      pMenu->QueryContextMenu(menu.Get(), 0, FirstShellCommand, LastVerbCommand, CMF_DEFAULTONLY);
  const UINT item = SUCCEEDED(filled) ? DefaultMenuItem(menu.Get()) : 0;
  if (item == 0) {
    TShellCommand open(saOpen, pCommand.Destination);
    open.OperationOptions = pCommand.OperationOptions;
    return InvokeCommand(open);
  }
  TCMInvokeCommandInfoExHelper invocation;
  invocation.Prepare();
  invocation.SetVerbById(item - FirstShellCommand);
  const TString directory = WorkingDirectory();
  if (!directory.empty()) invocation.SetDirectory(directory);
  invocation.Invoke(pMenu);
  return true;
}

bool TOakItemIdList::HandleCommand(const TShellCommand& pCommand) {
  if (!pCommand.In({saDefault, saOpen})) return false;
  if (!Api().IsUserAnAdmin || !Api().IsUserAnAdmin()) return false;
  if (!SameText(ExtractFileExt(DisplayName(dnfRelativeForAddressBar)), u".pdf") ||
      !RefusesElevation(PdfClass()))
    return false;
  TString path = Path();
  if (path.empty()) path = DisplayName(dnfForExplorer);
  return StartProgram(ApplicationWindow(), u"explorer.exe", u"\"" + path + u"\"", {});
}

}  // namespace oak
