#include "tests/platform/portable/ShellMenuFixture.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace oak {

void TShellMenuTest::SetUp() {
  TShellTest::SetUp();
  fExecute.emplace(Api().ShellExecuteExW, [this](SHELLEXECUTEINFOW* info) {
    fExecuted.push_back(FromW(info->lpVerb) + u' ' + FromW(info->lpFile) + u'|' +
                        FromW(info->lpParameters) + u'|' + FromW(info->lpDirectory));
    if (!fExecuteResult) Api().SetLastError(ERROR_NO_ASSOCIATION);
    return fExecuteResult;
  });
  TShellHooks hooks;
  hooks.OnFailure = [this](const TShellFailure& failure) { fFailures.push_back(failure); };
  SetShellHooks(std::move(hooks));
}

void TShellMenuTest::TearDown() {
  SetShellHooks({});
  SetPortableClipboard(nullptr);
  fExecute.reset();
  TShellTest::TearDown();
}

Ref<IContextMenu> TShellMenuTest::Menu(std::initializer_list<TStringView> paths) {
  TStringArray list;
  for (const TStringView path : paths) list.emplace_back(path);
  return Menu(list);
}

namespace {

template <class T>
Ref<T> ObjectOf(const TStringArray& paths) {
  Ref<IShellFolder> folder;
  std::vector<TPidl> lists;
  std::vector<PCUITEMID_CHILD> children;
  for (const TString& path : paths) {
    TPidl pidl;
    PCUITEMID_CHILD child = nullptr;
    EXPECT_EQ(Api().SHParseDisplayName(W(path), nullptr, pidl.Put(), 0, nullptr), S_OK)
        << Show(path);
    if (!pidl) return nullptr;
    folder.Reset();
    EXPECT_EQ(Api().SHBindToParent(pidl.Get(), IID_IShellFolder, folder.PutVoid(), &child), S_OK);
    lists.push_back(std::move(pidl));
    children.push_back(child);
  }
  Ref<T> object;
  EXPECT_EQ(folder->GetUIObjectOf(nullptr, static_cast<UINT>(children.size()), children.data(),
                                  IidOf<T>(), nullptr, object.PutVoid()),
            S_OK);
  return object;
}

}  // namespace

Ref<IContextMenu> TShellMenuTest::Menu(const TStringArray& paths) {
  return ObjectOf<IContextMenu>(paths);
}

Ref<IDataObject> TShellMenuTest::Data(const TStringArray& paths) {
  return ObjectOf<IDataObject>(paths);
}

Ref<IContextMenu> TShellMenuTest::Background(TStringView path) {
  Ref<IContextMenu> menu;
  const auto folder = Folder(path);
  if (folder) {
    EXPECT_EQ(folder->CreateViewObject(nullptr, IID_IContextMenu, menu.PutVoid()), S_OK);
  }
  return menu;
}

TString TShellMenuTest::Verb(IContextMenu* menu, UINT offset) {
  TString verb(260, u'\0');
  const HRESULT result = menu->GetCommandString(offset, GCS_VERBW, nullptr,
                                                reinterpret_cast<CHAR*>(WBuffer(verb)), 260);
  return FAILED(result) ? u"?" : FromW(W(verb));
}

TString TShellMenuTest::Shown(IContextMenu* menu, UINT flags, HRESULT* result) {
  constexpr UINT first = 100;
  const HMENU shown = Api().CreatePopupMenu();
  const HRESULT queried = menu->QueryContextMenu(shown, 0, first, 0x7FFF, flags);
  if (result) *result = queried;
  EXPECT_GE(queried, 0);
  TString text;
  for (const TMenuEntry& entry : TMenuTable::Instance().GetEntries(shown)) {
    if (!text.empty()) text += u' ';
    if (entry.IsDefault) text += u'*';
    if (!entry.IsEnabled) text += u'-';
    if (entry.IsSeparator)
      text += u'|';
    else if (entry.SubMenu)
      text += entry.Text + u'>';
    else
      text += Verb(menu, entry.Command - first);
  }
  Api().DestroyMenu(shown);
  return text;
}

HRESULT TShellMenuTest::Invoke(const Ref<IContextMenu>& menu, TStringView verb, DWORD mask) {
  if (!menu) return E_POINTER;
  const TString wide(verb);
  CMINVOKECOMMANDINFOEX info{};
  info.cbSize = sizeof info;
  info.fMask = mask | CMIC_MASK_UNICODE;
  info.lpVerb = "not this one";
  info.lpVerbW = W(wide);
  return menu->InvokeCommand(reinterpret_cast<CMINVOKECOMMANDINFO*>(&info));
}

std::string TShellMenuTest::Names(const std::string& directory) const {
  std::vector<std::string> names;
  std::error_code missing;
  for (const auto& entry : std::filesystem::directory_iterator(fRoot / "c" / directory, missing))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
  return text;
}

std::string TShellMenuTest::Contents(const std::string& path) const {
  std::ifstream file(fRoot / "c" / path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace oak
