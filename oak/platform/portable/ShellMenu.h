// Context menus of the portable shell.
#pragma once

#include <functional>
#include <span>
#include <vector>

#include "oak/base/InterfacedObject.h"
#include "oak/platform/portable/ShellMenuHandlers.h"
#include "oak/platform/portable/ShellVerbs.h"

namespace oak {

/// An entry of a menu and what it does.
struct TMenuVerb {
  enum class TKind : std::uint8_t { Command, SubMenu, Separator, Extensions };
  TKind Kind = TKind::Command;
  TString Verb;  ///< canonical, the same in every language; empty for what is no command
  TString Text;
  TString Help;
  bool Enabled = true;
  bool Default = false;
  bool Radio = false;
  std::function<HRESULT(const TVerbCall& call)> Run;
  std::vector<TMenuVerb> SubVerbs;
};

/// A menu made of verbs. Identifiers are given in the order of the entries, those of submenus and
/// of extensions included; submenus are filled when they open. One thread, that of the menu.
class TVerbMenu : public TInterfacedObject<IContextMenu3> {
 public:
  HRESULT QueryContextMenu(HMENU menu, UINT index, UINT idCmdFirst, UINT idCmdLast,
                           UINT flags) override;
  HRESULT InvokeCommand(CMINVOKECOMMANDINFO* info) override;
  HRESULT GetCommandString(UINT_PTR id, UINT type, UINT* reserved, CHAR* name,
                           UINT capacity) override;
  HRESULT HandleMenuMsg(UINT message, WPARAM wParam, LPARAM lParam) override;
  HRESULT HandleMenuMsg2(UINT message, WPARAM wParam, LPARAM lParam, LRESULT* result) override;

 protected:
  /// The entries for the CMF_ flags.
  virtual std::vector<TMenuVerb> MakeVerbs(UINT flags) = 0;
  /// Menus of shell extensions, not initialised; asked once.
  virtual std::vector<Ref<IContextMenu>> LoadHandlers() { return {}; }

 private:
  struct TPlace;
  struct TLateMenu {
    HMENU Menu;
    std::vector<TMenuVerb> Verbs;
    UINT FirstOffset;
    bool Filled;
  };
  struct THandler {
    Ref<IContextMenu> Menu;
    UINT FirstOffset = 0;
    UINT Count = 0;
  };

  bool Insert(TPlace& place, std::vector<TMenuVerb>& verbs);
  bool InsertOne(TPlace& place, TMenuVerb& verb);
  void InsertHandlers(TPlace& place);
  void Number(TMenuVerb& verb);
  void FillLate(TLateMenu& late);
  void EnsureHandlers();
  THandler* HandlerOf(UINT_PTR offset);
  HRESULT InvokeOffset(UINT offset, const CMINVOKECOMMANDINFO& info, const TVerbCall& call);
  HRESULT InvokeVerb(const CMINVOKECOMMANDINFO& info, const TVerbCall& call);
  HRESULT InvokeHandlerVerb(const CMINVOKECOMMANDINFO& info, const TString& verb);

  std::vector<TMenuVerb> fCommands;  // by offset; those of handlers are empty
  std::vector<TLateMenu> fLate;
  std::vector<THandler> fHandlers;
  UINT fFirst = 0;
  bool fHandlersLoaded = false;
};

/// The menu of objects, of one folder or several. `keys` are further places of extensions, see
/// LoadMenuHandlers.
HRESULT MakeItemMenu(TShellObjects objects, std::span<const HKEY> keys, REFIID iid, void** menu);
/// The menu of a folder's background.
HRESULT MakeBackgroundMenu(const Ref<TFolderNode>& folder, REFIID iid, void** menu);
/// What belongs to the view of a folder: the background menu, what can be dropped there, and a view
/// that shows nothing and gives that menu.
HRESULT MakeViewObject(const Ref<TFolderNode>& folder, REFIID iid, void** object);

/// CDefFolderMenu_Create2.
void BindShellMenus(TApi& api);

}  // namespace oak
