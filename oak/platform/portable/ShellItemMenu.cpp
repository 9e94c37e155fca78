// The menu of objects.
#include <unistd.h>

#include <algorithm>

#include "oak/platform/Api.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/ShellData.h"
#include "oak/platform/portable/ShellFolder.h"
#include "oak/platform/portable/ShellMenu.h"
#include "oak/platform/portable/ShellParse.h"
#include "oak/platform/portable/ShellPidl.h"

namespace oak {
namespace {

constexpr TStringView TrashName = u"::{645FF040-5081-101B-9F08-00AA002F954E}";

TMenuVerb Command(TStringView verb, TStringView text, TStringView help,
                  std::function<HRESULT(const TVerbCall&)> run) {
  TMenuVerb made;
  made.Verb = verb;
  made.Text = text;
  made.Help = help;
  made.Run = std::move(run);
  return made;
}

TMenuVerb Other(TMenuVerb::TKind kind) {
  TMenuVerb made;
  made.Kind = kind;
  return made;
}

std::vector<HKEY> HandlesOf(const std::vector<TRegistryKey>& keys) {
  std::vector<HKEY> handles;
  for (const TRegistryKey& key : keys) handles.push_back(key.Get());
  return handles;
}

class TItemMenu final : public TVerbMenu {
 public:
  TItemMenu(TShellObjects objects, std::span<const HKEY> keys)
      : fObjects(std::make_shared<const TShellObjects>(std::move(objects))),
        fHasKeys(!keys.empty()) {
    if (!fHasKeys) return;  // the keys are the caller's and may be closed when the menu is asked
    fHandlers = LoadMenuHandlers(keys, nullptr, DataOf(*fObjects).Get());
    fStatic = StaticVerbs(keys, *fObjects);
  }

 protected:
  std::vector<TMenuVerb> MakeVerbs(UINT flags) override;
  std::vector<Ref<IContextMenu>> LoadHandlers() override;

 private:
  using TVerbs = std::vector<TMenuVerb>;
  const TShellObject& First() const { return fObjects->front(); }
  bool IsSingle() const { return fObjects->size() == 1; }
  bool All(DWORD attribute) const { return (fCommon & attribute) != 0; }
  bool InTrash() const { return IsTrash(*First().Folder); }
  bool OfTrash() const {
    return IsSingle() && SameText(First().Name(TNameForm::Parsing), TrashName);
  }
  template <class TBody>
  auto On(TBody body) const {
    return [objects = fObjects, body](const TVerbCall& call) { return body(*objects, call); };
  }
  void AddOpening(TVerbs& verbs, UINT flags);
  void AddExtended(TVerbs& verbs);
  void AddTrash(TVerbs& verbs);
  void AddTransfer(TVerbs& verbs);
  void AddPaste(TVerbs& verbs);
  void AddEditing(TVerbs& verbs, UINT flags);
  void AddProperties(TVerbs& verbs);

  const std::shared_ptr<const TShellObjects> fObjects;
  DWORD fCommon = 0;  // of the menu that is made
  bool fMayChange = false;
  const bool fHasKeys;
  std::vector<Ref<IContextMenu>> fHandlers;
  TVerbs fStatic;
};

// What a menu asks of its objects, each of them once.
constexpr DWORD MenuAttributes = SFGAO_FOLDER | SFGAO_CANMOVE | SFGAO_CANCOPY | SFGAO_CANLINK |
                                 SFGAO_CANDELETE | SFGAO_CANRENAME | SFGAO_HASPROPSHEET;

// Whether the folders that the objects lie in let them go.
bool MayChangeAll(const TShellObjects& objects) {
  const TFolderNode* last = nullptr;
  for (const TShellObject& object : objects) {
    if (object.Folder.Get() == last) continue;
    last = object.Folder.Get();
    const std::string directory = NativeOf(*last);
    if (!directory.empty() && ::access(directory.c_str(), W_OK) != 0) return false;
  }
  return true;
}

std::vector<Ref<IContextMenu>> TItemMenu::LoadHandlers() {
  if (fHasKeys) return fHandlers;
  const auto keys = ClassKeysOf(*fObjects);
  return LoadMenuHandlers(HandlesOf(keys), nullptr, DataOf(*fObjects).Get());
}

// --- the groups of the menu -----------------------------------------------------------------

void TItemMenu::AddOpening(TVerbs& verbs, UINT flags) {
  if (!InTrash()) {
    verbs.push_back(Command(u"open", u"&Open", u"Opens the selected items.", On(OpenObjects)));
    verbs.back().Default = true;
    if ((flags & CMF_EXPLORE) && All(SFGAO_FOLDER))
      verbs.push_back(
          Command(u"explore", u"E&xplore", u"Explores the selected folders.", On(OpenObjects)));
    if (IsSingle() && !All(SFGAO_FOLDER) && !First().Path().empty())
      verbs.push_back(Command(u"openas", u"Open wit&h...", u"Opens the file by another program.",
                              On(OpenObjectsWith)));
  }
  if (fHasKeys) {
    verbs.insert(verbs.end(), fStatic.begin(), fStatic.end());
  } else {
    const auto keys = ClassKeysOf(*fObjects);
    TVerbs more = StaticVerbs(HandlesOf(keys), *fObjects);
    std::move(more.begin(), more.end(), std::back_inserter(verbs));
  }
  verbs.push_back(Other(TMenuVerb::TKind::Extensions));
  if (All(SFGAO_FOLDER) && !InTrash())
    verbs.push_back(Command(u"pintohome", u"Pin to Quick access",
                            u"Adds the selected folders to your links.", On(PinObjects)));
  if (flags & CMF_EXTENDEDVERBS) AddExtended(verbs);
}

void TItemMenu::AddExtended(TVerbs& verbs) {
  verbs.push_back(Command(
      u"copyaspath", u"Copy &as path", u"Copies the paths as text.",
      On([](const TShellObjects& objects, const TVerbCall&) { return CopyPaths(objects); })));
  if (!IsSingle() || !All(SFGAO_FOLDER) || First().Path().empty()) return;
  verbs.push_back(Command(u"cmd", u"Open command &window here", u"Opens a terminal in the folder.",
                          On([](const TShellObjects& objects, const TVerbCall& call) {
                            return OpenPrompt(objects[0].Path(), call);
                          })));
}

void TItemMenu::AddTrash(TVerbs& verbs) {
  if (InTrash())
    verbs.push_back(Command(u"undelete", u"R&estore", u"Moves the items back to where they were.",
                            On(RestoreObjects)));
  if (OfTrash())
    verbs.push_back(Command(u"empty", u"Empty Recycle &Bin", u"Deletes what is in the trash.",
                            [](const TVerbCall& call) { return EmptyTrash(call); }));
}

void TItemMenu::AddTransfer(TVerbs& verbs) {
  const auto toClipboard = [&](bool cut) {
    return On([cut](const TShellObjects& objects, const TVerbCall&) {
      return CopyToClipboard(objects, cut);
    });
  };
  verbs.push_back(Other(TMenuVerb::TKind::Separator));
  if (All(SFGAO_CANMOVE)) {
    verbs.push_back(
        Command(u"cut", u"Cu&t", u"Moves the items by pasting them.", toClipboard(true)));
    verbs.back().Enabled = fMayChange;
  }
  if (All(SFGAO_CANCOPY))
    verbs.push_back(
        Command(u"copy", u"&Copy", u"Copies the items to the clipboard.", toClipboard(false)));
  if (IsSingle() && All(SFGAO_FOLDER) && !InTrash()) AddPaste(verbs);
}

void TItemMenu::AddPaste(TVerbs& verbs) {
  Ref<TFolderNode> node;
  if (FAILED(First().Folder->Open(First().Child.Get(), node))) return;
  if (NativeOf(*node).empty() && !IsTrash(*node)) return;
  verbs.push_back(Command(u"paste", u"&Paste", u"Brings what is on the clipboard here.",
                          [node](const TVerbCall& call) { return PasteInto(*node, false, call); }));
  verbs.back().Enabled = CanPaste(*node, false);
}

void TItemMenu::AddEditing(TVerbs& verbs, UINT flags) {
  verbs.push_back(Other(TMenuVerb::TKind::Separator));
  if (All(SFGAO_CANLINK) && !InTrash())
    verbs.push_back(Command(u"link", u"Create &shortcut", u"Creates shortcuts to the items.",
                            On([](const TShellObjects& objects, const TVerbCall& call) {
                              return MakeShortcuts(objects, {}, call);
                            })));
  if (All(SFGAO_CANDELETE)) {
    verbs.push_back(Command(u"delete", u"&Delete", u"Deletes the items.", On(DeleteObjects)));
    verbs.back().Enabled = fMayChange;
  }
  if ((flags & CMF_CANRENAME) && IsSingle() && All(SFGAO_CANRENAME)) {
    // The new name is the view's to ask for.
    verbs.push_back(Command(u"rename", u"Rena&me", u"Renames the item.",
                            [](const TVerbCall&) { return E_NOTIMPL; }));
    verbs.back().Enabled = fMayChange;
  }
}

void TItemMenu::AddProperties(TVerbs& verbs) {
  if (!All(SFGAO_HASPROPSHEET)) return;
  verbs.push_back(Other(TMenuVerb::TKind::Separator));
  verbs.push_back(Command(u"properties", u"P&roperties", u"Shows the properties of the items.",
                          On([](const TShellObjects& objects, const TVerbCall&) {
                            return ShowObjectProperties(objects);
                          })));
  verbs.back().Default = InTrash();
}

std::vector<TMenuVerb> TItemMenu::MakeVerbs(UINT flags) {
  TVerbs verbs;
  fCommon = CommonOf(*fObjects, MenuAttributes);
  fMayChange = MayChangeAll(*fObjects);
  if (!(flags & CMF_NOVERBS)) {
    AddTrash(verbs);
    AddOpening(verbs, flags);
  }
  if (flags & CMF_VERBSONLY) return verbs;
  AddTransfer(verbs);
  AddEditing(verbs, flags);
  AddProperties(verbs);
  return verbs;
}

HRESULT STDAPICALLTYPE CDefFolderMenu_Create2(PCIDLIST_ABSOLUTE folder, HWND, UINT count,
                                              PCUITEMID_CHILD_ARRAY pidls,
                                              IShellFolder* shellFolder, LPFNDFMCALLBACK,
                                              UINT keyCount, const HKEY* keys,
                                              IContextMenu** menu) {
  return PortableCall("CDefFolderMenu_Create2", [&]() -> HRESULT {
    if (!menu) return E_POINTER;
    *menu = nullptr;
    if ((count && !pidls) || (keyCount && !keys)) return E_INVALIDARG;
    Ref<TFolderNode> node;
    HRESULT result = folder ? TFolderNode::FromPidl(folder, node) : NodeOf(shellFolder, node);
    if (FAILED(result)) return result;
    if (!node) node = TFolderNode::Desktop();
    if (count == 0)
      return MakeBackgroundMenu(node, IID_IContextMenu, reinterpret_cast<void**>(menu));
    TShellObjects objects;
    for (UINT i = 0; i < count; ++i) {
      Ref<TFolderNode> parent;
      PCUITEMID_CHILD child = nullptr;
      TPidlSplit split;
      if (!SplitPidl(pidls[i], split)) return E_INVALIDARG;
      result = BindParent(node, pidls[i], parent, child);
      if (FAILED(result)) return result;
      if (!ElementKind(child)) return E_INVALIDARG;
      objects.push_back({parent, CopyElement(child)});
    }
    return MakeItemMenu(std::move(objects), {keys, keyCount}, IID_IContextMenu,
                        reinterpret_cast<void**>(menu));
  });
}

}  // namespace

HRESULT MakeItemMenu(TShellObjects objects, std::span<const HKEY> keys, REFIID iid, void** menu) {
  *menu = nullptr;
  if (objects.empty()) return E_INVALIDARG;
  return MakeRef<TItemMenu>(std::move(objects), keys)->QueryInterface(iid, menu);
}

void BindShellMenus(TApi& api) { api.CDefFolderMenu_Create2.SetFunction(&CDefFolderMenu_Create2); }

}  // namespace oak
