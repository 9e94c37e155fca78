// Menus, commands and the clipboard while calls of the platform fail.
#include "testkit/FaultInjection.h"
#include "testkit/portable/ScriptedMenu.h"
#include "tests/platform/portable/ShellMenuFixture.h"

namespace oak {
namespace {

using ShellMenuFaults = TShellMenuTest;

/// A list that ends is freed whatever fails.
Ref<IContextMenu> TryMenu(const TPidl& pidl) {
  Ref<IShellFolder> folder;
  PCUITEMID_CHILD child = nullptr;
  Ref<IContextMenu> menu;
  if (FAILED(Api().SHBindToParent(pidl.Get(), IID_IShellFolder, folder.PutVoid(), &child)))
    return menu;
  static_cast<void>(
      folder->GetUIObjectOf(nullptr, 1, &child, IID_IContextMenu, nullptr, menu.PutVoid()));
  return menu;
}

// A menu is shown and one of its commands is carried out.
HRESULT ShowAndInvoke(const Ref<IContextMenu>& menu, LPCSTR verb) {
  const HMENU shown = Api().CreatePopupMenu();
  if (!shown || !menu) {
    Api().DestroyMenu(shown);
    return E_FAIL;
  }
  static_cast<void>(menu->QueryContextMenu(shown, 0, 1, 255, CMF_CANRENAME));
  WCHAR name[64];
  static_cast<void>(
      menu->GetCommandString(0, GCS_VERBW, nullptr, reinterpret_cast<CHAR*>(name), 64));
  if (const auto third = menu.As<IContextMenu3>())
    for (int i = 0; i < Api().GetMenuItemCount(shown); ++i)
      if (const HMENU inner = Api().GetSubMenu(shown, i))
        static_cast<void>(
            third->HandleMenuMsg(WM_INITMENUPOPUP, reinterpret_cast<WPARAM>(inner), 0));
  CMINVOKECOMMANDINFO info{};
  info.cbSize = sizeof info;
  info.lpVerb = verb;
  const HRESULT invoked = menu->InvokeCommand(&info);
  Api().DestroyMenu(shown);
  return invoked;
}

// Copy and paste either happen or say why not; no file is harmed, no menu or registration is left.
TEST_F(ShellMenuFaults, CopyAndPaste) {
  testkit::TScriptedMenu extension(u"*", {{u"scan", u"Scan"}});
  const TPidl file = Parse(u"C:\\Dir\\file.txt");
  const auto target = Folder(u"C:\\Dir\\Sub");
  const std::size_t menus = TMenuTable::Instance().GetMenuCount();
  HRESULT copied = E_FAIL, pasted = E_FAIL;
  const int failed = testkit::SweepFaults(
      [&] {
        std::filesystem::remove_all(Native("Dir/Sub"));
        MakeDirectory("Dir/Sub");
        SetPortableClipboard(nullptr);
        copied = ShowAndInvoke(TryMenu(file), "copy");
        Ref<IContextMenu> background;
        static_cast<void>(
            target->CreateViewObject(nullptr, IID_IContextMenu, background.PutVoid()));
        pasted = ShowAndInvoke(background, "paste");
      },
      [&](const std::string& call) {
        EXPECT_EQ(TMenuTable::Instance().GetMenuCount(), menus) << call;
        EXPECT_EQ(Contents("Dir/file.txt"), "hello");
        EXPECT_EQ(Names("Dir/Sub"), pasted == S_OK ? "file.txt" : "") << call;
        EXPECT_TRUE(Names("Dir/Sub").empty() || Contents("Dir/Sub/file.txt") == "hello") << call;
      });
  EXPECT_GT(failed, 8);
  EXPECT_EQ(copied, S_OK);  // the last run is without a fault
  EXPECT_EQ(pasted, S_OK);
}

TEST_F(ShellMenuFaults, DataObjects) {
  const TPidl file = Parse(u"C:\\Dir\\file.txt");
  int whole = 0;
  const int failed = testkit::SweepFaults([&] {
    const PCIDLIST_ABSOLUTE list = file.Get();
    const USHORT none = 0;
    Ref<IDataObject> data, again;
    if (FAILED(Api().CIDLData_CreateFromIDArray(reinterpret_cast<PCIDLIST_ABSOLUTE>(&none), 1,
                                                &list, data.Put())))
      return;
    if (FAILED(Api().OleSetClipboard(data.Get())) || FAILED(Api().OleGetClipboard(again.Put())))
      return;
    FORMATETC format{CF_HDROP, nullptr, DVASPECT_CONTENT, -1, TYMED_HGLOBAL};
    STGMEDIUM medium{};
    if (FAILED(again->QueryGetData(&format)) || FAILED(again->GetData(&format, &medium))) return;
    const UINT count =
        Api().DragQueryFileW(reinterpret_cast<HDROP>(medium.hGlobal), 0xFFFFFFFFu, nullptr, 0);
    Ref<IShellItemArray> items;
    const HRESULT made = Api().SHCreateShellItemArrayFromDataObject(
        again.Get(), IID_IShellItemArray, items.PutVoid());
    Api().ReleaseStgMedium(&medium);
    if (count == 1 && made == S_OK) ++whole;
  });
  EXPECT_GE(failed, 6);
  EXPECT_EQ(whole, 1);
}

TEST_F(ShellMenuFaults, DeleteAndRestore) {
  const TPidl dir = Parse(u"C:\\Dir");
  HRESULT result = E_FAIL;
  testkit::SweepFaults(
      [&] {
        MakeFile("Dir/file.txt", "hello");
        std::filesystem::remove_all(Native("home/me/.local/share/Trash"));
        TPidl file;
        result = Api().SHParseDisplayName(u"C:\\Dir\\file.txt", nullptr, file.Put(), 0, nullptr);
        if (SUCCEEDED(result)) result = ShowAndInvoke(TryMenu(file), "delete");
      },
      [&](const std::string& call) {
        const bool here = Contents("Dir/file.txt") == "hello";
        const bool bin = Contents("home/me/.local/share/Trash/files/file.txt") == "hello";
        EXPECT_NE(here, bin) << call;  // in one place, and whole
        EXPECT_EQ(bin, result == S_OK) << call;
      });
  EXPECT_EQ(result, S_OK);
}

}  // namespace
}  // namespace oak
