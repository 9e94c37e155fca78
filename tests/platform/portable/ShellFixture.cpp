#include "tests/platform/portable/ShellFixture.h"

#include <stdlib.h>

#include <fstream>

namespace oak {

void TShellTest::SetUp() {
  std::string pattern = (std::filesystem::temp_directory_path() / "oak-shell-XXXXXX").string();
  ASSERT_NE(mkdtemp(pattern.data()), nullptr);
  fRoot = pattern;
  for (const char* directory : {"c/home/me/Desktop", "c/home/me/Documents", "c/home/me/Downloads",
                                "c/Dir/Sub", "d", "share/inner"})
    std::filesystem::create_directories(fRoot / directory);
  MakeFile("Dir/file.txt", "hello");

  TPortableConfig config = PortableConfigFromEnvironment();
  config.Drives = {
      {u'C', (fRoot / "c").string(), TPortableDriveKind::Fixed, u"System", {}},
      {u'E', (fRoot / "d").string(), TPortableDriveKind::Removable, {}, {}},
      {u'N', (fRoot / "share").string(), TPortableDriveKind::Network, {}, u"\\\\server\\share"}};
  config.Shares = {{u"server", u"share", (fRoot / "share").string()},
                   {u"server", u"lost", "/nonexistent"}};
  const std::string home = (fRoot / "c/home/me").string();
  config.Home = home;
  config.ConfigHome = home + "/.config";
  config.DataHome = home + "/.local/share";
  config.CacheHome = home + "/.cache";
  config.Trash = config.DataHome + "/Trash";
  config.UserName = u"Me";
  SetPortableConfig(std::move(config));
}

void TShellTest::TearDown() {
  SetPortableConfig(std::shared_ptr<const TPortableConfig>());
  std::error_code ignored;
  std::filesystem::remove_all(fRoot, ignored);
}

void TShellTest::MakeFile(const std::string& path, const std::string& contents) {
  std::ofstream(fRoot / "c" / path) << contents;
}

void TShellTest::MakeDirectory(const std::string& path) {
  std::filesystem::create_directories(fRoot / "c" / path);
}

TPidl TShellTest::Parse(TStringView text, HRESULT* result) {
  TPidl pidl;
  const TString copy(text);
  const HRESULT parsed = Api().SHParseDisplayName(W(copy), nullptr, pidl.Put(), 0, nullptr);
  if (result) *result = parsed;
  EXPECT_EQ(SUCCEEDED(parsed), static_cast<bool>(pidl)) << Show(text);
  return pidl;
}

Ref<IShellItem2> TShellTest::Item(TStringView text) {
  Ref<IShellItem2> item;
  const TPidl pidl = Parse(text);
  if (pidl) {
    const HRESULT result =
        Api().SHCreateItemFromIDList(pidl.Get(), IID_IShellItem2, item.PutVoid());
    EXPECT_EQ(result, S_OK) << Show(text);
  }
  return item;
}

Ref<IShellFolder> TShellTest::Desktop() {
  Ref<IShellFolder> folder;
  EXPECT_EQ(Api().SHGetDesktopFolder(folder.Put()), S_OK);
  return folder;
}

Ref<IShellFolder2> TShellTest::Folder(TStringView text) {
  Ref<IShellFolder2> folder;
  if (text.empty()) return Desktop().As<IShellFolder2>();
  if (const auto item = Item(text)) {
    const HRESULT result =
        item->BindToHandler(nullptr, BHID_SFObject, IID_IShellFolder2, folder.PutVoid());
    EXPECT_EQ(result, S_OK) << Show(text);
  }
  return folder;
}

TString TShellTest::Name(const Ref<IShellItem2>& item, SIGDN form) {
  if (!item) return u"!none";
  TTaskMemory<WCHAR> text;
  const HRESULT result = item->GetDisplayName(form, text.Put());
  return FAILED(result) ? u"!" + IntToHex(static_cast<DWORD>(result), 8) : FromW(text.Get());
}

TString TShellTest::Name(IShellFolder* folder, PCUITEMID_CHILD child, SHGDNF flags) {
  STRRET name{};
  const HRESULT result = folder->GetDisplayNameOf(child, flags, &name);
  if (FAILED(result)) return u"!" + IntToHex(static_cast<DWORD>(result), 8);
  const auto text = TTaskMemory<WCHAR>::Adopt(name.pOleStr);
  return FromW(text.Get());
}

TStringArray TShellTest::List(TStringView text, DWORD flags) {
  TStringArray names;
  const Ref<IShellFolder2> folder = Folder(text);
  Ref<IEnumIDList> walk;
  if (!folder || folder->EnumObjects(nullptr, flags, walk.Put()) != S_OK) return {u"!"};
  for (TPidl child; walk->Next(1, child.Put(), nullptr) == S_OK;)
    names.push_back(Name(folder.Get(), child.Get(), SHGDN_INFOLDER));
  return names;
}

}  // namespace oak
