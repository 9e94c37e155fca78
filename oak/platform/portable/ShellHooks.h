// What the shell asks and tells the user while it carries out a command. The portable shell has no
// windows of its own: a program that wants progress, messages and property pages shows them here.
#pragma once

#include <functional>
#include <memory>

#include "oak/base/Text.h"
#include "oak/platform/shell_api.h"

namespace oak {

/// A command that did not do all that it should.
struct TShellFailure {
  HRESULT Code = S_OK;  ///< of the first object that failed
  TString Verb;
  TStringArray Places;  ///< display paths of the objects that failed, in their order
};

/// Called on the thread of the command, with no lock held. All may be empty.
struct TShellHooks {
  /// Before each object and after each piece of a file's contents: its path and the bytes copied
  /// since the last call. False cancels the command with
  /// HRESULT_FROM_WIN32(ERROR_CANCELLED), with nothing lost.
  std::function<bool(TStringView path, std::uint64_t bytes)> OnProgress;
  /// Once for a command that failed, unless CMIC_MASK_FLAG_NO_UI or the user cancelled it.
  std::function<void(const TShellFailure& failure)> OnFailure;
  /// Properties of one or more objects as lines "Label: value".
  std::function<void(const TString& title, const TString& report)> OnProperties;
  /// A file is to be opened by a program that the user chooses. False if he did not.
  std::function<bool(const TString& path, HWND window)> OnOpenWith;
  /// Files were dropped by the right button: which of these DROPEFFECT_ bits is meant, asked by a
  /// menu at that point of the screen; `usual` is its default, 0 cancels. Without it `usual` is
  /// done.
  std::function<DWORD(DWORD effects, DWORD usual, POINTL screen)> OnDropMenu;
  /// A verb that concerns the view of a folder: "list", "details", "sortbyname", "refresh" ...
  std::function<void(const TString& verb, PCIDLIST_ABSOLUTE folder)> OnViewVerb;
};

/// Replaces the hooks for the whole process. Any thread.
void SetShellHooks(TShellHooks hooks);
/// The present ones; stay valid while held.
std::shared_ptr<const TShellHooks> ShellHooks();

/// The report that was made last, shown or not. For tests.
TString LastPropertyReport();
/// Shows a report and keeps it as the last one.
void ShowProperties(const TString& title, const TString& report);

}  // namespace oak
