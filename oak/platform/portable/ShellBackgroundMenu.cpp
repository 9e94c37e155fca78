// The menu of a folder's background, and the view that gives it.
#include "oak/platform/Api.h"
#include "oak/platform/portable/FileSystemSource.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/ShellChanges.h"
#include "oak/platform/portable/ShellMenu.h"

namespace oak {
namespace {

using TKind = TMenuVerb::TKind;

TMenuVerb Entry(TKind kind, TStringView verb = {}, TStringView text = {}, TStringView help = {}) {
  TMenuVerb made;
  made.Kind = kind;
  made.Verb = verb;
  made.Text = text;
  made.Help = help;
  return made;
}

class TBackgroundMenu final : public TVerbMenu {
 public:
  explicit TBackgroundMenu(Ref<TFolderNode> folder) : fFolder(std::move(folder)) {}

 protected:
  std::vector<TMenuVerb> MakeVerbs(UINT flags) override;
  std::vector<Ref<IContextMenu>> LoadHandlers() override {
    std::vector<HKEY> handles;
    const auto keys = BackgroundKeys();
    for (const TRegistryKey& key : keys) handles.push_back(key.Get());
    return LoadMenuHandlers(handles, fFolder->Pidl(), nullptr);
  }

 private:
  struct TWord {
    TStringView Verb, Text;
  };
  TMenuVerb ViewMenu() const;
  TMenuVerb SortMenu() const;
  TMenuVerb NewMenu(bool writable) const;
  TMenuVerb OfView(const TWord& word) const;
  TMenuVerb Refresh() const;
  void AddFiles(std::vector<TMenuVerb>& verbs, UINT flags) const;

  const Ref<TFolderNode> fFolder;
};

// What concerns the look of the folder is carried out by who shows it.
TMenuVerb TBackgroundMenu::OfView(const TWord& word) const {
  TMenuVerb made = Entry(TKind::Command, word.Verb, word.Text);
  made.Radio = true;
  made.Run = [folder = fFolder](const TVerbCall& call) {
    const auto hooks = ShellHooks();
    if (hooks->OnViewVerb) hooks->OnViewVerb(call.Verb, folder->Pidl());
    return S_OK;
  };
  return made;
}

TMenuVerb TBackgroundMenu::ViewMenu() const {
  TMenuVerb menu = Entry(TKind::SubMenu, {}, u"&View");
  for (const TWord& word :
       {TWord{u"thumbnails", u"Thu&mbnails"}, TWord{u"tiles", u"Tile&s"},
        TWord{u"icons", u"&Icons"}, TWord{u"list", u"&List"}, TWord{u"details", u"&Details"}})
    menu.SubVerbs.push_back(OfView(word));
  return menu;
}

TMenuVerb TBackgroundMenu::SortMenu() const {
  TMenuVerb menu = Entry(TKind::SubMenu, {}, u"S&ort by");
  for (const TWord& word : {TWord{u"sortbyname", u"&Name"}, TWord{u"sortbysize", u"&Size"},
                            TWord{u"sortbytype", u"&Type"}, TWord{u"sortbydate", u"&Date"}})
    menu.SubVerbs.push_back(OfView(word));
  return menu;
}

TMenuVerb TBackgroundMenu::NewMenu(bool writable) const {
  TMenuVerb menu = Entry(TKind::SubMenu, {}, u"Ne&w");
  const auto add = [&](TStringView verb, TStringView text, TStringView name, bool isFolder) {
    TMenuVerb made = Entry(TKind::Command, verb, text, u"Creates an empty object here.");
    made.Enabled = writable;
    made.Run = [folder = fFolder, name = TString(name), isFolder](const TVerbCall& call) {
      return MakeNewObject(*folder, name, isFolder, call);
    };
    menu.SubVerbs.push_back(std::move(made));
  };
  menu.Enabled = writable;
  add(u"newfolder", u"&Folder", u"New folder", true);
  add(u"newtextdocument", u"&Text Document", u"New Text Document.txt", false);
  return menu;
}

TMenuVerb TBackgroundMenu::Refresh() const {
  TMenuVerb made = Entry(TKind::Command, u"refresh", u"R&efresh", u"Shows the folder anew.");
  made.Run = [folder = fFolder](const TVerbCall& call) {
    const auto hooks = ShellHooks();
    if (hooks->OnViewVerb) hooks->OnViewVerb(call.Verb, folder->Pidl());
    AnnounceChange(SHCNE_UPDATEDIR, folder->Pidl());
    return S_OK;
  };
  return made;
}

void TBackgroundMenu::AddFiles(std::vector<TMenuVerb>& verbs, UINT flags) const {
  const std::string native = NativeOf(*fFolder);
  const bool isTrash = IsTrash(*fFolder);
  if (native.empty() && !isTrash) return;
  const bool writable = TakesObjects(native);
  const auto paste = [&](TStringView verb, TStringView text, TStringView help, bool link) {
    verbs.push_back(Entry(TKind::Command, verb, text, help));
    verbs.back().Enabled = CanPaste(*fFolder, link);
    verbs.back().Run = [folder = fFolder, link](const TVerbCall& call) {
      return PasteInto(*folder, link, call);
    };
  };
  verbs.push_back(Entry(TKind::Separator));
  if ((flags & CMF_EXTENDEDVERBS) && !native.empty()) {
    verbs.push_back(Entry(TKind::Command, u"cmd", u"Open command &window here",
                          u"Opens a terminal in the folder."));
    verbs.back().Run = [folder = fFolder](const TVerbCall& call) {
      return OpenPrompt(ShownDirectory(*folder), call);
    };
  }
  if (isTrash) {
    verbs.push_back(
        Entry(TKind::Command, u"empty", u"Empty Recycle &Bin", u"Deletes what is in the trash."));
    verbs.back().Run = [](const TVerbCall& call) { return EmptyTrash(call); };
  }
  paste(u"paste", u"&Paste", u"Brings what is on the clipboard here.", false);
  if (isTrash) return;
  paste(u"pastelink", u"Paste &shortcut", u"Creates shortcuts to what is on the clipboard.", true);
  verbs.push_back(Entry(TKind::Separator));
  verbs.push_back(NewMenu(writable));
}

std::vector<TMenuVerb> TBackgroundMenu::MakeVerbs(UINT flags) {
  std::vector<TMenuVerb> verbs;
  if (flags & CMF_DEFAULTONLY) return verbs;  // a background has no default
  verbs.push_back(ViewMenu());
  verbs.push_back(SortMenu());
  verbs.push_back(Entry(TKind::Separator));
  verbs.push_back(Refresh());
  if (!(flags & CMF_NOVERBS)) verbs.push_back(Entry(TKind::Extensions));
  AddFiles(verbs, flags);
  verbs.push_back(Entry(TKind::Separator));
  verbs.push_back(
      Entry(TKind::Command, u"properties", u"P&roperties", u"Shows the properties of the folder."));
  verbs.back().Run = [folder = fFolder](const TVerbCall&) { return ShowFolderProperties(*folder); };
  return verbs;
}

/// What a caller gets who wants the background menu in the way that views give it. It has no
/// window: a folder is shown by the program's own controls.
class TBackgroundView final : public TInterfacedObject<IShellView> {
 public:
  explicit TBackgroundView(Ref<TFolderNode> folder) : fFolder(std::move(folder)) {}

  HRESULT GetWindow(HWND* window) override {
    if (window) *window = nullptr;
    return E_FAIL;
  }
  HRESULT ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
  HRESULT TranslateAccelerator(MSG*) override { return S_FALSE; }
  HRESULT EnableModeless(BOOL) override { return E_NOTIMPL; }
  HRESULT UIActivate(UINT) override { return S_OK; }
  HRESULT Refresh() override {
    AnnounceChange(SHCNE_UPDATEDIR, fFolder->Pidl());
    return S_OK;
  }
  HRESULT CreateViewWindow(IShellView*, const FOLDERSETTINGS*, IShellBrowser*, RECT*,
                           HWND* window) override {
    if (window) *window = nullptr;
    return E_NOTIMPL;
  }
  HRESULT DestroyViewWindow() override { return S_OK; }
  HRESULT GetCurrentInfo(FOLDERSETTINGS* settings) override {
    if (!settings) return E_POINTER;
    *settings = {};
    return S_OK;
  }
  HRESULT AddPropertySheetPages(DWORD, LPFNSVADDPROPSHEETPAGE, LPARAM) override {
    return E_NOTIMPL;
  }
  HRESULT SaveViewState() override { return S_OK; }
  HRESULT SelectItem(PCUITEMID_CHILD, SVSIF) override { return E_NOTIMPL; }
  HRESULT GetItemObject(UINT what, REFIID iid, void** object) override {
    return PortableCall("IShellView::GetItemObject", [&]() -> HRESULT {
      if (!object) return E_POINTER;
      *object = nullptr;
      return what == SVGIO_BACKGROUND ? MakeBackgroundMenu(fFolder, iid, object) : E_NOINTERFACE;
    });
  }

 private:
  const Ref<TFolderNode> fFolder;
};

}  // namespace

HRESULT MakeBackgroundMenu(const Ref<TFolderNode>& folder, REFIID iid, void** menu) {
  return MakeRef<TBackgroundMenu>(folder)->QueryInterface(iid, menu);
}

HRESULT MakeViewObject(const Ref<TFolderNode>& folder, REFIID iid, void** object) {
  *object = nullptr;
  if (iid == IID_IShellView) return MakeRef<TBackgroundView>(folder)->QueryInterface(iid, object);
  if (iid == IID_IContextMenu || iid == IID_IContextMenu2 || iid == IID_IContextMenu3)
    return MakeBackgroundMenu(folder, iid, object);
  return iid == IID_IDropTarget ? MakeDropTarget(folder, iid, object) : E_NOINTERFACE;
}

}  // namespace oak
