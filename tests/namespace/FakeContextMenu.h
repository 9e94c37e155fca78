// Menus of a shell extension, as a test writes them down, and a real folder that gives them for
// its objects.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "oak/namespace/OakItemIdList.h"
#include "oak/platform/MenuTable.h"
#include "testkit/ScopedApi.h"
#include "tests/EmptyObjects.h"
#include "tests/namespace/FakeShellItem.h"
#include "tests/namespace/TestFolder.h"

namespace oak::tests {

using TLog = std::vector<std::string>;

struct TFakeEntry {
  TString Verb;     ///< Empty: the menu tells none.
  TString Caption;  ///< Empty: drawn by the menu itself.
  bool IsDefault = false;
};

/// Logs what it is asked for: "query 2 at 1 flags 4", "invoke #3", "invoke cut", "message 279".
class TFakeContextMenu final : public TInterfacedObject<IContextMenu3> {
 public:
  TFakeContextMenu(TLog& log, std::vector<TFakeEntry> entries)
      : Entries(std::move(entries)), fLog(log) {}

  std::vector<TFakeEntry> Entries;
  HRESULT QueryResult = S_OK;
  HRESULT InvokeResult = S_OK;
  int Level = 3;  ///< The highest of IContextMenu, IContextMenu2, IContextMenu3.
  LRESULT Answer = 0;
  std::function<void()> OnQuery, OnInvoke;
  CMINVOKECOMMANDINFOEX Info{};  ///< Of the last invocation; its texts are gone.
  TString Directory;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if ((Level < 3 && iid == IidOf<IContextMenu3>()) ||
        (Level < 2 && iid == IidOf<IContextMenu2>())) {
      *out = nullptr;
      return E_NOINTERFACE;
    }
    return TInterfacedObject::QueryInterface(iid, out);
  }
  HRESULT STDMETHODCALLTYPE QueryContextMenu(HMENU menu, UINT index, UINT first, UINT last,
                                             UINT flags) override {
    fLog.push_back("query " + std::to_string(first) + ".." + std::to_string(last) + " at " +
                   std::to_string(index) + " flags " + std::to_string(flags));
    if (OnQuery) OnQuery();
    if (FAILED(QueryResult)) return QueryResult;
    for (std::size_t i = 0; i < Entries.size(); ++i)
      Insert(menu, index + static_cast<UINT>(i), first + static_cast<UINT>(i), Entries[i]);
    return static_cast<HRESULT>(Entries.size());
  }
  HRESULT STDMETHODCALLTYPE InvokeCommand(CMINVOKECOMMANDINFO* info) override {
    const auto number = reinterpret_cast<std::uintptr_t>(info->lpVerb);
    Info = {};
    std::memcpy(static_cast<void*>(&Info), info, std::min<std::size_t>(info->cbSize, sizeof Info));
    Directory = FromW(Info.lpDirectoryW);
    fLog.push_back(number < 0x10000 ? "invoke #" + std::to_string(number)
                                    : "invoke " + std::string(info->lpVerb));
    if (OnInvoke) OnInvoke();
    return InvokeResult;
  }
  HRESULT STDMETHODCALLTYPE GetCommandString(UINT_PTR id, UINT type, UINT*, CHAR* name,
                                             UINT size) override {
    if (type != GCS_VERBW || id >= Entries.size() || Entries[id].Verb.empty()) return E_INVALIDARG;
    const TString& verb = Entries[id].Verb;
    const std::size_t length = std::min<std::size_t>(verb.size(), size - 1);
    std::memcpy(name, verb.data(), length * sizeof(char16_t));
    reinterpret_cast<char16_t*>(name)[length] = u'\0';
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE HandleMenuMsg(UINT message, WPARAM, LPARAM lParam) override {
    fLog.push_back("message " + std::to_string(message));
    if (message == WM_MEASUREITEM) {
      auto& measure = *reinterpret_cast<MEASUREITEMSTRUCT*>(lParam);
      measure.itemWidth = 300;
      measure.itemHeight = 50;
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE HandleMenuMsg2(UINT message, WPARAM wParam, LPARAM lParam,
                                           LRESULT* result) override {
    HandleMenuMsg(message, wParam, lParam);
    if (Level < 3) return E_UNEXPECTED;
    *result = message == WM_MENUCHAR ? Answer : message != WM_INITMENUPOPUP;
    return S_OK;
  }

 private:
  static void Insert(HMENU menu, UINT index, UINT id, const TFakeEntry& entry) {
    TMenuTable& table = TMenuTable::Instance();
    if (!table.IsMenu(menu)) {
      Api().InsertMenuW(menu, index, MF_BYPOSITION | (entry.Caption.empty() ? MF_OWNERDRAW : 0), id,
                        entry.Caption.empty() ? nullptr : W(entry.Caption));
      return;
    }
    TMenuEntry made;
    made.Command = id;
    made.Text = entry.Caption;
    made.IsOwnerDrawn = made.Text.empty();
    made.IsDefault = entry.IsDefault;
    table.Insert(menu, static_cast<int>(index), made);
  }

  TLog& fLog;
};

/// A view whose background has the menu.
class TFakeView final : public TInterfacedObject<IShellView> {
 public:
  Ref<IUnknown> Menu;

  HRESULT STDMETHODCALLTYPE GetWindow(HWND*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE TranslateAccelerator(MSG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE EnableModeless(BOOL) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE UIActivate(UINT) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Refresh() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CreateViewWindow(IShellView*, const FOLDERSETTINGS*, IShellBrowser*,
                                             RECT*, HWND*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE DestroyViewWindow() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetCurrentInfo(FOLDERSETTINGS*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE AddPropertySheetPages(DWORD, LPFNSVADDPROPSHEETPAGE, LPARAM) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE SaveViewState() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SelectItem(PCUITEMID_CHILD, UINT) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetItemObject(UINT item, REFIID iid, void** out) override {
    *out = nullptr;
    return Menu && item == SVGIO_BACKGROUND ? Menu->QueryInterface(iid, out) : E_FAIL;
  }
};

/// A real folder whose objects have the menus of the test.
class TMenuFolder final : public TEmptyShellFolder {
 public:
  TMenuFolder(TLog& log, Ref<IShellFolder> real) : fLog(log), fReal(std::move(real)) {}

  Ref<TFakeContextMenu> Menu;
  Ref<TFakeView> View;
  HRESULT MenuResult = S_OK;
  DWORD Attributes = 0xFFFFFFFF;  ///< Those that an object may have.

  HRESULT STDMETHODCALLTYPE ParseDisplayName(HWND window, IBindCtx* context, LPWSTR name,
                                             ULONG* eaten, PIDLIST_RELATIVE* pidl,
                                             ULONG* attributes) override {
    return fReal->ParseDisplayName(window, context, name, eaten, pidl, attributes);
  }
  HRESULT STDMETHODCALLTYPE BindToObject(PCUIDLIST_RELATIVE pidl, IBindCtx* context, REFIID iid,
                                         void** out) override {
    return fReal->BindToObject(pidl, context, iid, out);
  }
  HRESULT STDMETHODCALLTYPE CompareIDs(LPARAM hint, PCUIDLIST_RELATIVE a,
                                       PCUIDLIST_RELATIVE b) override {
    return fReal->CompareIDs(hint, a, b);
  }
  HRESULT STDMETHODCALLTYPE CreateViewObject(HWND, REFIID iid, void** out) override {
    *out = nullptr;
    return View && iid == IidOf<IShellView>() ? View->QueryInterface(iid, out) : E_NOINTERFACE;
  }
  HRESULT STDMETHODCALLTYPE GetAttributesOf(UINT count, PCUITEMID_CHILD_ARRAY pidls,
                                            SFGAOF* attributes) override {
    const HRESULT result = fReal->GetAttributesOf(count, pidls, attributes);
    *attributes &= Attributes;
    return result;
  }
  HRESULT STDMETHODCALLTYPE GetUIObjectOf(HWND, UINT count, PCUITEMID_CHILD_ARRAY, REFIID iid,
                                          UINT*, void** out) override {
    *out = nullptr;
    if (iid != IidOf<IContextMenu>()) return E_NOINTERFACE;
    fLog.push_back("menu of " + std::to_string(count));
    return Menu && SUCCEEDED(MenuResult) ? Menu->QueryInterface(iid, out) : MenuResult;
  }
  HRESULT STDMETHODCALLTYPE GetDisplayNameOf(PCUITEMID_CHILD pidl, SHGDNF form,
                                             STRRET* name) override {
    return fReal->GetDisplayNameOf(pidl, form, name);
  }

 protected:
  HRESULT QueryDelegated(REFIID iid, void** out) override {
    return iid == IidOf<IPersistFolder2>() ? fReal->QueryInterface(iid, out) : E_NOINTERFACE;
  }

 private:
  TLog& fLog;
  Ref<IShellFolder> fReal;
};

/// The menu functions over menus that are data, on every system: the headless desktop shows those.
class TMenusAsData {
 private:
  template <class TEntry>
  using TReplaced = testkit::TScopedApi<TEntry>;
  static TMenuTable& Table() { return TMenuTable::Instance(); }

  TReplaced<decltype(TApi::CreatePopupMenu)> fCreate{Api().CreatePopupMenu,
                                                     [] { return Table().Create(); }};
  TReplaced<decltype(TApi::DestroyMenu)> fDestroy{
      Api().DestroyMenu, [](HMENU menu) { return BOOL{Table().Destroy(menu)}; }};
  TReplaced<decltype(TApi::GetMenuItemCount)> fCount{
      Api().GetMenuItemCount, [](HMENU menu) { return Table().GetCount(menu); }};
  TReplaced<decltype(TApi::DeleteMenu)> fDelete{
      Api().DeleteMenu, [](HMENU menu, UINT position, UINT) {
        return BOOL{Table().Delete(menu, static_cast<int>(position))};
      }};
  TReplaced<decltype(TApi::GetMenuDefaultItem)> fDefault{
      Api().GetMenuDefaultItem, [](HMENU menu, UINT, UINT) {
        for (const TMenuEntry& entry : Table().GetEntries(menu))
          if (entry.IsDefault) return entry.Command;
        return static_cast<UINT>(-1);
      }};
};

/// Keeps what ShellExecuteW was asked to start.
struct TStarted {
  std::vector<std::string> Calls;
  testkit::TScopedApi<decltype(TApi::ShellExecuteW)> Entry{
      Api().ShellExecuteW,
      [this](HWND, LPCWSTR, LPCWSTR file, LPCWSTR parameters, LPCWSTR directory, int) {
        Calls.push_back(ToUtf8(TString(FromW(file)) + u"|" + TString(FromW(parameters)) + u"|" +
                               TString(FromW(directory))));
        return reinterpret_cast<HINSTANCE>(std::uintptr_t{33});
      }};
};

/// A directory with a.txt, b.txt and the folder sub, whose objects have the menus of the test:
/// whoever binds it gets Folder.
class TMenuWorld {
 public:
  /// Menus are data, or those of the system.
  explicit TMenuWorld(std::vector<TFakeEntry> entries, bool menusAreData = true) {
    if (menusAreData) fMenus.emplace();
    for (const auto* name : {u"a.txt", u"b.txt"}) Files.MakeFile(name);
    Files.MakeFolder(u"sub");
    const auto real = TOakItemIdList::Create(Files.Path());
    fPidl = TPidl::Adopt(Api().ILClone(real->WindowsPointer()));
    Menu = MakeRef<TFakeContextMenu>(Log, std::move(entries));
    Folder = MakeRef<TMenuFolder>(Log, TOakItemIdList::FolderOf(real));
    Folder->Menu = Menu;
    fShellItem = MakeRef<TFakeShellItem>();
    fShellItem->BindResult = S_OK;
    fShellItem->Bound = Folder;
    fShellItem->Attributes = SFGAO_FOLDER | SFGAO_FILESYSTEM;
    fShellItem->Names[SIGDN_FILESYSPATH] = Files.Path();
    fShellItem->Names[SIGDN_DESKTOPABSOLUTEPARSING] = Files.Path();
    fCreateItem = std::make_unique<testkit::TScopedApi<decltype(TApi::SHCreateShellItem)>>(
        Api().SHCreateShellItem,
        [this, original = Api().SHCreateShellItem.Function()](
            PCIDLIST_ABSOLUTE parent, IShellFolder* folder, PCUITEMID_CHILD pidl,
            IShellItem** out) -> HRESULT {
          if (!Api().ILIsEqual(pidl, fPidl.Get())) return original(parent, folder, pidl, out);
          return fShellItem->QueryInterface(IidOf<IShellItem>(), reinterpret_cast<void**>(out));
        });
    Item = TOakItemIdList::Create(Files.Path());  // that one has not been bound
  }

  Ref<IItemIdList> operator[](TStringView name) const {
    return TOakItemIdList::Create(Files.Path(name));
  }
  TLog TakeLog() { return std::exchange(Log, {}); }

  TLog Log;
  TTestFolder Files;
  Ref<IItemIdList> Item;
  Ref<TFakeContextMenu> Menu;
  Ref<TMenuFolder> Folder;

 private:
  std::optional<TMenusAsData> fMenus;
  TPidl fPidl;
  Ref<TFakeShellItem> fShellItem;
  std::unique_ptr<testkit::TScopedApi<decltype(TApi::SHCreateShellItem)>> fCreateItem;
};

}  // namespace oak::tests
