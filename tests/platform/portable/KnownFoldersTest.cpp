// The table of known folders, their places and the manager.
#include <set>

#include "NativeTree.h"
#include "oak/base/Guid.h"
#include "oak/platform/Api.h"
#include "oak/platform/portable/KnownFolderPlaces.h"
#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PortableKnownFolders.h"

namespace oak::tests {
namespace {

// A user whose home is in the test's own directory.
class KnownFoldersTest : public ::testing::Test {
 protected:
  KnownFoldersTest() : fBefore(PortableConfig()) {
    TPortableConfig config = *fBefore;
    config.Home = fTree.Native("home");
    config.ConfigHome = config.Home + "/.config";
    config.DataHome = config.Home + "/.local/share";
    config.CacheHome = config.Home + "/.cache";
    for (const char* name : {"home", "home/.config", "home/.local", "home/.local/share",
                             "home/Desktop", "home/Dokumente", "home/downloads", "home/Downloads"})
      fTree.Folder(name);
    fTree.File("home/.config/user-dirs.dirs",
               "# comment\nXDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n"
               "XDG_MUSIC_DIR=\"$HOME/missing\"\nXDG_TEMPLATES_DIR=\"$HOME/\"\n");
    SetPortableConfig(config);
  }
  ~KnownFoldersTest() override { SetPortableConfig(fBefore); }

  TString HomePath(TStringView rest) const { return fTree.Path("home") + TString(rest); }
  static Ref<IKnownFolderManager> Manager() {
    Ref<IKnownFolderManager> manager;
    EXPECT_EQ(Api().CoCreateInstance(CLSID_KnownFolderManager, nullptr, CLSCTX_INPROC_SERVER,
                                     IidOf<IKnownFolderManager>(), manager.PutVoid()),
              S_OK);
    return manager;
  }
  static GUID IdOf(const Ref<IKnownFolder>& folder) {
    GUID id = GUID_NULL;
    if (folder) folder->GetId(&id);
    return id;
  }

  const TNativeTree fTree;
  const std::shared_ptr<const TPortableConfig> fBefore;
};

TEST(KnownFolderTable, IsConsistent) {
  std::set<std::string> ids, names;
  std::set<int> numbers;
  for (const TKnownFolder& folder : KnownFolders()) {
    const std::string name = ToUtf8(folder.Name);
    EXPECT_TRUE(ids.insert(ToUtf8(GuidToString(folder.Id))).second) << name;
    EXPECT_TRUE(names.insert(ToUtf8(UpperCase(folder.Name))).second) << name;
    EXPECT_TRUE(folder.Csidl < 0 || numbers.insert(folder.Csidl).second) << name;
    EXPECT_TRUE(folder.Parent == GUID_NULL || FindKnownFolder(folder.Parent)) << name;
    EXPECT_EQ(folder.Kind == TKnownFolderKind::Virtual, KnownFolderNativePath(folder).empty())
        << name;
    if (*folder.ParsingName) {
      EXPECT_EQ(FindKnownFolderByParsingName(u"shell:" + TString(folder.ParsingName)), &folder)
          << name;
    }
  }
}

TEST(UserDirs, Parsing) {
  const auto dirs = ParseUserDirs(
      "XDG_DESKTOP_DIR=\"$HOME/Desk \\\"top\\\"/\"\n"
      "  XDG_MUSIC_DIR=\"/srv/music\"\r\n"
      "#XDG_VIDEOS_DIR=\"$HOME/Videos\"\n"
      "XDG_PICTURES_DIR=$HOME/unquoted\n"
      "XDG_DOCUMENTS_DIR=\"relative\"\n"
      "XDG_PUBLICSHARE_DIR=\"$HOME/not closed\n"
      "XDG_TEMPLATES_DIR=\"$HOMELESS/x\"\n"
      "HOME=\"/elsewhere\"\nXDG_=\n=\n\nXDG_DOWNLOAD_DIR=\"$HOME\"",
      "/home/u");
  const std::unordered_map<std::string, std::string> expected{
      {"DESKTOP", "/home/u/Desk \"top\""}, {"MUSIC", "/srv/music"}, {"DOWNLOAD", "/home/u"}};
  EXPECT_EQ(dirs, expected);
}

// The two download directories of this user differ in case alone.
TEST_F(KnownFoldersTest, FromPath) {
  const struct {
    TString Path;
    FFFP_MODE Mode;
    GUID Id;
  } cases[] = {{HomePath(u"\\Dokumente"), FFFP_EXACTMATCH, FOLDERID_Documents},
               {UpperCase(HomePath(u"\\Dokumente")), FFFP_EXACTMATCH, FOLDERID_Documents},
               {HomePath(u"\\Downloads"), FFFP_EXACTMATCH, FOLDERID_Downloads},
               {HomePath(u"\\downloads"), FFFP_EXACTMATCH, GUID_NULL},
               {HomePath(u"\\Dokumente\\a\\b.txt"), FFFP_NEARESTPARENTMATCH, FOLDERID_Documents},
               {HomePath(u"\\DokumenteX"), FFFP_NEARESTPARENTMATCH, FOLDERID_Profile},
               {u"C:\\", FFFP_NEARESTPARENTMATCH, GUID_NULL},
               {u"no path", FFFP_NEARESTPARENTMATCH, GUID_NULL}};
  for (const auto& test : cases) {
    Ref<IKnownFolder> folder;
    const HRESULT result = Manager()->FindFolderFromPath(W(test.Path), test.Mode, folder.Put());
    EXPECT_EQ(IdOf(folder), test.Id) << ToUtf8(test.Path);
    EXPECT_EQ(result, folder ? S_OK : Win32(ERROR_NOT_FOUND));
  }
}

TEST_F(KnownFoldersTest, FolderObjects) {
  Ref<IKnownFolder> folder;
  ASSERT_EQ(Manager()->GetFolderByName(u"personal", folder.Put()), S_OK);
  EXPECT_EQ(IdOf(folder), FOLDERID_Documents);
  TTaskMemory<WCHAR> path;
  ASSERT_EQ(folder->GetPath(0, path.Put()), S_OK);
  EXPECT_EQ(FromW(path.Get()), HomePath(u"\\Dokumente"));
  KNOWNFOLDER_DEFINITION definition{};
  ASSERT_EQ(folder->GetFolderDefinition(&definition), S_OK);
  EXPECT_EQ(definition.category, KF_CATEGORY_PERUSER);
  EXPECT_EQ(FromW(definition.pszName), u"Personal");
  EXPECT_EQ(FromW(definition.pszLocalizedName), u"Documents");
  EXPECT_EQ(FromW(definition.pszRelativePath), u"Dokumente");
  for (LPWSTR text : {definition.pszName, definition.pszLocalizedName, definition.pszRelativePath,
                      definition.pszParsingName})
    CoTaskMemFree(text);
  ASSERT_EQ(Manager()->GetFolder(FOLDERID_ComputerFolder, folder.Put()), S_OK);
  EXPECT_EQ(folder->GetPath(0, path.Put()), E_INVALIDARG);
}

}  // namespace
}  // namespace oak::tests
