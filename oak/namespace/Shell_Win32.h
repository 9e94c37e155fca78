// The shell's start-up, its texts and its patterns, and small services over the
// platform's types. Nothing here knows a control.
#pragma once

#include "oak/base/Pidl.h"
#include "oak/base/Ref.h"
#include "oak/base/Text.h"
#include "oak/namespace/Oak.Shell.Types.Enums.h"
#include "oak/namespace/Shell_Win32.Strings.h"

struct IShellFolder;
struct IShellLinkW;

namespace oak {

// --- start and end ----------------------------------------------------------

/// Opens the system's libraries and reads their texts, once; later calls return
/// at once. Everything that depends on it calls it on first use, so that calling
/// it at start-up only fixes the moment (and on Windows, in a program, enters OLE
/// on the calling thread). Raises Exception if the system libraries can't be
/// opened; the next call then tries again. Any thread.
void InitializeShell();
/// Ends the process's pool of threads, closes the libraries and drops the shared
/// desktop. Explicit, at the end of the program or before the library is unloaded; on
/// the main thread, while no thread but the pool's uses the library. InitializeShell may
/// follow.
void FinalizeShell();
/// Tells InitializeShell that this code lies in a library whose program enters
/// OLE itself. Before the first call.
void SetIsLibrary(bool pIsLibrary) noexcept;

/// The desktop's folder, shared by all threads and made at first use on a thread
/// of its own. Raises EFolderTrekError if the shell doesn't give one.
Ref<IShellFolder> Desktop();

/// Finds a pidl for a text: relative to the folder if there is one. The window,
/// if any, owns a logon dialog. Empty if there is no such object.
TPidl GetIdListFromPath(IShellFolder* pShellFolder, TStringView pPath, HWND pWindowHandle);

/// The system's text for an error code, or "Error Code 0x" and eight digits.
TString GetErrorMessageText(std::uint32_t pCode);

// --- the system's version ---------------------------------------------------

/// The true version, not the one that the program is told for compatibility.
bool IsWindows8OrLater();
bool IsWindows10OrLater();
/// 0 if the system does not tell.
DWORD GetWindowsBuildNumber();
/// Whether menus and windows can be dark.
bool IsDarkModeSupported();
/// 0 unaware, 1 system, 2 per monitor, 3 per monitor version 2: of the calling
/// thread if the system tells that, else of the process.
int GetDpiAwareness();

// --- texts and patterns -----------------------------------------------------

/// Whether a file name matches patterns with ";" between them. "*." stands for
/// all names without a dot, a final "*.*" for any rest that holds one.
bool MatchPattern(TStringView pName, TStringView pPattern);
/// A pattern that ends in "*.*" gets ".*" behind it.
TString ConvertToWindowsPattern(TStringView pPattern);
/// 1-based position of the first pSub in pText at or behind pStart, 0 if there is none.
int OakPosEx(TStringView pSub, TStringView pText, int pStart = 1);

// --- paths ------------------------------------------------------------------

/// With its trailing delimiter; empty if the system does not tell.
TString OakGetTempPath();
/// "%SF_PERSONAL%" and kin, in any case, replaced by the folders' paths. A folder
/// without a path gives the empty text.
TString ExpandSpecialFolderPath(TStringView pPath);
/// The reverse: the longest path of a special folder that begins the text, in any
/// case, is replaced.
TString NormalizeSpecialFolderPath(TStringView pPath);
bool IsReparsePoint(DWORD pAttributes) noexcept;
/// Whether the path leads to a reparse point.
bool IsReparsePoint(TStringView pPath);

/// Switches file-system redirection of a 32-bit process off for the calling
/// thread. False, and pOldValue nil, where there is none.
bool DisableWow64FsRedirection(void*& pOldValue);
void RevertWow64FsRedirection(void* pOldValue);
/// The same for the span of a block.
class TWow64RedirectionOff {
 public:
  TWow64RedirectionOff() : fDisabled(DisableWow64FsRedirection(fOldValue)) {}
  ~TWow64RedirectionOff() {
    if (fDisabled) RevertWow64FsRedirection(fOldValue);
  }
  TWow64RedirectionOff(const TWow64RedirectionOff&) = delete;
  TWow64RedirectionOff& operator=(const TWow64RedirectionOff&) = delete;

 private:
  void* fOldValue = nullptr;
  bool fDisabled;
};

// --- objects of the shell ---------------------------------------------------

/// The shortcut file as the shell's link object, nil if it can't be read.
Ref<IShellLinkW> GetIShellLink(TStringView pPath);
/// Name of the domain, server or share that a network item stands for; empty for
/// anything else. The list is relative to the folder.
TString GetDomainFromIdList(IShellFolder* pShellFolder, PCItemIdList pItemIdList);
/// Path of the folder into which a library saves, empty if the list is no
/// library or has none.
TString GetDefaultSavePathFromLibrary(PCItemIdList pItemIdList);

/// Starts a program or opens a document. An empty verb means the default one.
/// False on failure; no dialog then.
bool RunShellExecuteEx(HWND pWindow, TStringView pVerb, TStringView pFile, TStringView pParameters,
                       TStringView pDirectory = {}, int pShowCommand = 1 /* SW_SHOWNORMAL */);
/// The system's assistant for a new shortcut in a folder. Raises
/// EArgumentException for an empty path; false if the assistant can't be started.
bool CreateShortcutShowDialog(TStringView pShortcutPath);

}  // namespace oak
