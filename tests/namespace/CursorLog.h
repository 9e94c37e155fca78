// A cursor whose events are logged.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "oak/namespace/FolderTrek.BeforeCommand.h"
#include "oak/namespace/FolderTrek.h"
#include "tests/namespace/FakeContextMenu.h"

namespace oak::tests {

/// Stands on a.txt of the world. Its log says who was asked: "select verb source", "shell ...",
/// "command ..." (with "!" if the command is cancelled by then), "rename".
class TLoggedCursor {
 public:
  explicit TLoggedCursor(TMenuWorld& world)
      : Cursor(std::make_unique<TFolderTrek>(nullptr)), fWorld(world) {
    Cursor->SetFolderIdList(world.Item);
    Select(u"a.txt");
    Cursor->OnContextMenuSelect = [this](TStringView verb, bool& execute) {
      Note("select", ToUtf8(verb), fSource);
      if (Stopper == "select") execute = false;
    };
    Cursor->OnBeforeShellCommand = [this](TObject*, TStringView verb, bool& execute,
                                          TCommandSource source) {
      Note("shell", ToUtf8(verb), SourceText(source));
      if (Stopper == "shell") execute = false;
    };
    Cursor->OnBeforeCommand = [this](TObject*, TBeforeCommandEventArgs& args) {
      fWorld.Log.push_back(std::string("command") + (args.GetCancel() ? "! " : " ") +
                           ToUtf8(args.GetVerb()) + SourceText(args.GetSource()));
      if (Stopper == "command") args.SetCancel(true);
      if (Undo) args.SetCancel(false);
      if (OnEvent) OnEvent("command");
    };
    Cursor->OnRename = [this](TObject*) { fWorld.Log.push_back("rename"); };
    world.TakeLog();
  }

  TFolderTrek* operator->() const { return Cursor.get(); }
  void Select(TStringView name) { Cursor->SetItemIdList(fWorld[name]->GetLastPart()); }
  void SelectBoth() {
    for (const auto* name : {u"a.txt", u"b.txt"})
      Cursor->GetMultiObjects()->Add(fWorld[name]->GetLastPart());
  }
  /// The events come from a menu.
  void FromMenu() { fSource = " menu"; }

  std::unique_ptr<TFolderTrek> Cursor;
  std::string Stopper;  ///< Which event says no.
  bool Undo = false;    ///< OnBeforeCommand allows what was stopped.
  std::function<void(const std::string& event)> OnEvent;

 private:
  static std::string SourceText(TCommandSource source) {
    return source == TCommandSource::ContextMenu ? " menu" : " call";
  }
  void Note(const std::string& event, const std::string& verb, const std::string& source) {
    fWorld.Log.push_back(event + " " + verb + source);
    if (OnEvent) OnEvent(event);
  }

  TMenuWorld& fWorld;
  std::string fSource = " call";
};

}  // namespace oak::tests
