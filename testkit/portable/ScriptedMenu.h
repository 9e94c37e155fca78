// Verbs of a shell extension in the portable shell's menus.
#pragma once

#include <memory>
#include <vector>

#include "oak/base/Ref.h"
#include "oak/base/Text.h"
#include "oak/platform/shell_api.h"

namespace oak::testkit {

/// A verb that an extension adds.
struct TScriptedVerb {
  TString Verb;  ///< canonical
  TString Text;
};

/// Registers an extension of the shell for its own span of life. The menu of each object of the
/// class gets the verbs; what is invoked is noted. One thread.
class TScriptedMenu {
 public:
  /// `className` is a key below HKEY_CLASSES_ROOT: ".txt", "Directory", "*",
  /// "AllFilesystemObjects", "Directory\\Background".
  TScriptedMenu(TString className, std::vector<TScriptedVerb> verbs);
  ~TScriptedMenu();
  TScriptedMenu(const TScriptedMenu&) = delete;
  TScriptedMenu& operator=(const TScriptedMenu&) = delete;

  /// Verbs in the order in which they were invoked, "verb path path ...".
  const TStringArray& Invoked() const { return fState->Invoked; }
  /// Messages that were passed on to the extension.
  const std::vector<UINT>& Messages() const { return fState->Messages; }
  /// What each call gives from now on; a failure of QueryContextMenu adds nothing.
  void SetQueryResult(HRESULT result) { fState->QueryResult = result; }
  void SetInvokeResult(HRESULT result) { fState->InvokeResult = result; }
  void SetInitializeResult(HRESULT result) { fState->InitializeResult = result; }

  /// Shared with the menus, which may outlive the registration.
  struct TState {
    std::vector<TScriptedVerb> Verbs;
    TStringArray Invoked;
    std::vector<UINT> Messages;
    HRESULT QueryResult = S_OK, InvokeResult = S_OK, InitializeResult = S_OK;
  };

 private:
  TString fKey;
  GUID fClassId;
  std::shared_ptr<TState> fState;
};

}  // namespace oak::testkit
