// What the commands of the shell do: see ShellMenu.h for who offers them.
#pragma once

#include <exception>
#include <string>
#include <vector>

#include "oak/platform/portable/FileTransfer.h"
#include "oak/platform/portable/ShellHooks.h"
#include "oak/platform/portable/ShellNode.h"

namespace oak {

struct TApi;

/// How a command was called.
struct TVerbCall {
  TString Verb;  ///< canonical
  HWND Window{};
  DWORD Mask = 0;  ///< CMIC_MASK_
  int Show = 1;    ///< SW_SHOWNORMAL
  bool ShiftDown() const { return (Mask & CMIC_MASK_SHIFT_DOWN) != 0; }
};

/// An object that a command acts on.
struct TShellObject {
  Ref<TFolderNode> Folder;
  TPidl Child;

  TPidl Pidl() const { return Folder->PidlOf(Child.Get()); }
  TString Name(TNameForm form) const;  ///< empty if there is none
  /// Windows path in the file system, and the native one; empty without one. Where the object has
  /// gone the native path leads nowhere, though another spelling of the name may exist.
  TString Path() const { return Name(TNameForm::FileSystemPath); }
  std::string Native() const;
  /// SFGAO_ bits of the mask; 0 if they cannot be told.
  DWORD Attributes(DWORD mask) const;
};
using TShellObjects = std::vector<TShellObject>;

/// One run of a command: asks whether to go on, collects what failed, and reports it once.
class TVerbRun {
 public:
  explicit TVerbRun(const TVerbCall& call) : fCall(call), fHooks(ShellHooks()) {}
  TVerbRun(const TVerbRun&) = delete;
  TVerbRun& operator=(const TVerbRun&) = delete;

  /// For the native functions; remembers that the user cancelled. Never throws: a hook that does
  /// ends the work as if it was cancelled.
  TTransferGoesOn GoesOn();
  bool IsCancelled() const { return fCancelled; }
  bool HasFailed() const { return !fFailure.Places.empty(); }
  void Fail(HRESULT code, const TString& place);
  /// By a native error number; 0 is none.
  void FailNative(int error, const TString& place);
  /// The command's result; tells failures to the hooks. Throws what a hook threw.
  HRESULT Finish();

 private:
  const TVerbCall fCall;
  const std::shared_ptr<const TShellHooks> fHooks;
  TShellFailure fFailure;
  bool fCancelled = false;
  std::exception_ptr fThrown;  // by a hook
};

/// The result that a native error number of a transfer stands for.
HRESULT ResultOfTransfer(int error);

/// A folder cannot be copied or moved into itself.
inline constexpr HRESULT IntoItself = static_cast<HRESULT>(0x800700A1);  // ERROR_BAD_PATHNAME

// All of these announce what they change, and give the result that InvokeCommand gives.
HRESULT OpenObjects(const TShellObjects& objects, const TVerbCall& call);
/// Lets the user choose the program: by the hooks, else by the desktop.
HRESULT OpenObjectsWith(const TShellObjects& objects, const TVerbCall& call);
/// To the trash; for good with Shift, and what lies in the trash.
HRESULT DeleteObjects(const TShellObjects& objects, const TVerbCall& call);
HRESULT CopyToClipboard(const TShellObjects& objects, bool cut);
HRESULT CopyPaths(const TShellObjects& objects);
/// A terminal in a folder.
HRESULT OpenPrompt(const TString& directory, const TVerbCall& call);
HRESULT RestoreObjects(const TShellObjects& objects, const TVerbCall& call);
HRESULT EmptyTrash(const TVerbCall& call);
/// Shortcuts to the objects, in a native directory; the objects' own one if that is empty.
HRESULT MakeShortcuts(const TShellObjects& objects, const std::string& directory,
                      const TVerbCall& call);
/// Shortcuts to folders among the user's links.
HRESULT PinObjects(const TShellObjects& objects, const TVerbCall& call);
/// A new folder, or an empty file of this name, under a name that is free.
HRESULT MakeNewObject(const TFolderNode& folder, TStringView name, bool isFolder,
                      const TVerbCall& call);
HRESULT ShowObjectProperties(const TShellObjects& objects);
HRESULT ShowFolderProperties(const TFolderNode& folder);

/// Whether a folder can take what lies on the clipboard; `link`: as shortcuts.
bool CanPaste(const TFolderNode& folder, bool link);
HRESULT PasteInto(const TFolderNode& folder, bool link, const TVerbCall& call);
/// The same for data of another place. `effect` is DROPEFFECT_MOVE, _COPY or _LINK; the trash knows
/// moving alone. The data is told what was done, if all of it was.
HRESULT TransferData(IDataObject& data, const TFolderNode& folder, DWORD effect,
                     const TVerbCall& call);

/// What can be dropped on an object: a folder, or a link to one. E_NOINTERFACE for what takes
/// nothing.
HRESULT MakeDropTarget(const TShellObject& object, REFIID iid, void** target);
/// What can be dropped on a folder's background.
HRESULT MakeDropTarget(const Ref<TFolderNode>& folder, REFIID iid, void** target);

/// The objects of absolute lists; those that cannot be bound are left out.
TShellObjects ObjectsOf(const std::vector<TPidl>& lists);
/// A data object of objects of one or more folders.
Ref<IDataObject> DataOf(const TShellObjects& objects);
/// Which SFGAO_ bits of the mask all objects have; the mask if there are none.
DWORD CommonOf(const TShellObjects& objects, DWORD mask);
bool IsTrash(const TFolderNode& folder);
/// Native path of the directory that a folder shows; empty if it shows none.
std::string NativeOf(const TFolderNode& folder);
/// The same, for something to be put there: a known folder is made if it is missing.
std::string DirectoryToFill(const TFolderNode& folder);
/// Whether something may be put into a directory, also if it is yet to be made.
bool TakesObjects(const std::string& directory);

/// SHMultiFileProperties, SHQueryRecycleBinW.
void BindShellProperties(TApi& api);
/// SHOpenFolderAndSelectItems.
void BindShellOpen(TApi& api);

/// ShellExecuteExW, without messages.
HRESULT Execute(SHELLEXECUTEINFOW& info);
/// Opens by the desktop's opener: a path, or what a list leads to.
HRESULT ExecuteShell(const TString& path, PCIDLIST_ABSOLUTE pidl, const TVerbCall& call);

}  // namespace oak
