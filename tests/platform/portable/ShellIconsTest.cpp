// The drawn icons, the image lists that hold them, and which object has which one.
#include "oak/platform/portable/ShellIcons.h"

#include <set>

#include "oak/platform/portable/IconDrawings.h"
#include "oak/platform/portable/SystemImageList.h"
#include "oak/platform/shell_api_images.h"
#include "tests/platform/portable/ShellFixture.h"

namespace oak {
namespace {

using TPixels = std::vector<std::uint32_t>;

TEST(ShellIcons, AreDrawnInAllSizes) {
  std::set<TPixels> small;
  for (int icon = 0; icon < iconCount; ++icon) {
    for (const int side : {16, 32, 48, 256}) {
      const TPixels pixels = DrawShellIcon(icon, side);
      ASSERT_EQ(pixels.size(), static_cast<std::size_t>(side * side));
      std::size_t seen = 0;
      bool isPremultiplied = true;
      for (const std::uint32_t pixel : pixels) {
        const std::uint32_t alpha = pixel >> 24;
        seen += alpha > 0 ? 1u : 0u;
        isPremultiplied = isPremultiplied && (pixel & 0xFF) <= alpha &&
                          (pixel >> 8 & 0xFF) <= alpha && (pixel >> 16 & 0xFF) <= alpha;
      }
      EXPECT_TRUE(isPremultiplied) << icon << " at " << side;
      // Neither nothing nor a full square.
      EXPECT_GT(seen, pixels.size() / 8) << icon << " at " << side;
      EXPECT_LT(seen, pixels.size() * 9 / 10) << icon << " at " << side;
    }
    small.insert(DrawShellIcon(icon, 16));
  }
  // Each kind has a picture of its own; the numbers that mean nothing share one.
  std::size_t kinds = 0;
  const TPixels unknown = DrawShellIcon(iconUnknown, 16);
  for (int icon = 0; icon < iconCount; ++icon)
    kinds += DrawShellIcon(icon, 16) != unknown ? 1u : 0u;
  EXPECT_EQ(small.size(), kinds + 1);
  EXPECT_GE(kinds, 30u);
  EXPECT_EQ(DrawShellIcon(-1, 16), unknown);
  EXPECT_EQ(DrawShellIcon(9999, 16), unknown);
}

class TShellIconsTest : public TShellTest {
 protected:
  static Ref<IImageList> List(int size) {
    Ref<IImageList> list;
    EXPECT_EQ(Api().SHGetImageList(size, IidOf<IImageList>(), list.PutVoid()), S_OK);
    return list;
  }
  static int IconOf(TStringView text, UINT flags = 0, DWORD attributes = 0) {
    SHFILEINFOW info{};
    const TString copy(text);
    return Api().SHGetFileInfoW(W(copy), attributes, &info, sizeof info, SHGFI_SYSICONINDEX | flags)
               ? info.iIcon
               : -1;
  }
  static int IconOfPlace(TStringView text, UINT flags = 0) {
    const TPidl list = Parse(text);
    SHFILEINFOW info{};
    return Api().SHGetFileInfoW(reinterpret_cast<LPCWSTR>(list.Get()), 0, &info, sizeof info,
                                SHGFI_SYSICONINDEX | SHGFI_PIDL | flags)
               ? info.iIcon
               : -1;
  }
  static void MakeLink(const TString& path, const TString& target) {
    Ref<IShellLinkW> link;
    ASSERT_EQ(Api().CoCreateInstance(CLSID_ShellLink, nullptr, CLSCTX_INPROC_SERVER,
                                     IidOf<IShellLinkW>(), link.PutVoid()),
              S_OK);
    ASSERT_TRUE(SUCCEEDED(link->SetPath(W(target))));
    ASSERT_EQ(link.As<IPersistFile>()->Save(W(path), TRUE), S_OK);
  }
};

TEST_F(TShellIconsTest, FilesByType) {
  const std::pair<const char*, TShellIcon> files[] = {
      {"a.TXT", iconText},     {"a.jpeg", iconImage},     {"a.b.mp3", iconAudio},
      {"a.mkv", iconVideo},    {"a.pdf", iconDocument},   {"a.zip", iconArchive},
      {"a.exe", iconProgram},  {"a.dll", iconSystemFile}, {"a.eml", iconMail},
      {"a.vcf", iconContact},  {"a.ics", iconCalendar},   {"a.xyzzy", iconUnknown},
      {"README", iconUnknown}, {".profile", iconUnknown}};
  for (const auto& [name, icon] : files) {
    MakeFile(std::string("Dir/") + name);
    const TString path = FromUtf8(std::string("C:\\Dir\\") + name);
    EXPECT_EQ(IconOf(path), icon) << name;
    EXPECT_EQ(IconOfPlace(path), icon) << name;
    const TString bare = FromUtf8(name);
    EXPECT_EQ(IconOf(bare, SHGFI_USEFILEATTRIBUTES, 0x80), icon) << name;
    EXPECT_EQ(IconOf(u"C:\\gone\\" + bare, SHGFI_USEFILEATTRIBUTES, 0x80), icon) << name;
    EXPECT_EQ(IconOf(bare, SHGFI_USEFILEATTRIBUTES, 0x10), iconFolder) << "told to be a folder";
  }
  EXPECT_EQ(IconOf(u"C:\\gone.txt"), -1);
  SHFILEINFOW info{};
  EXPECT_EQ(Api().SHGetFileInfoW(W(u"a.txt"), 0x80, &info, sizeof info,
                                 SHGFI_SYSICONINDEX | SHGFI_USEFILEATTRIBUTES | SHGFI_SMALLICON),
            reinterpret_cast<DWORD_PTR>(List(SHIL_SMALL).Get()))
      << "the result is the list";
}

TEST_F(TShellIconsTest, FoldersAndPlaces) {
  EXPECT_EQ(IconOfPlace(u"C:\\Dir"), iconFolder);
  EXPECT_EQ(IconOfPlace(u"C:\\Dir", SHGFI_OPENICON), iconFolderOpen);
  EXPECT_EQ(IconOf(u"C:"), iconDrive);
  EXPECT_EQ(IconOf(u"E:\\"), iconRemovable);
  EXPECT_EQ(IconOf(u"N:\\"), iconNetDrive);
  EXPECT_EQ(IconOfPlace(u"shell:Desktop"), iconDesktop);
  EXPECT_EQ(IconOfPlace(u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}"), iconComputer);
  EXPECT_EQ(IconOfPlace(u"::{F02C1A0D-BE21-4350-88B0-7367FC96EF3C}"), iconNetwork);
  EXPECT_EQ(IconOfPlace(u"::{031E4825-7B94-4DC3-B131-E946B44C8DD5}"), iconLibraries);
  EXPECT_EQ(IconOfPlace(u"\\\\server"), iconServer);

  const TString bin = u"::{645FF040-5081-101B-9F08-00AA002F954E}";
  EXPECT_EQ(IconOfPlace(bin), iconTrash);
  const std::string trash = "home/me/.local/share/Trash/";
  MakeDirectory(trash + "files");
  MakeDirectory(trash + "info");
  MakeFile(trash + "files/old.txt");
  MakeFile(trash + "info/old.txt.trashinfo",
           "[Trash Info]\nPath=/old.txt\nDeletionDate=2020-01-02T03:04:05\n");
  EXPECT_EQ(IconOfPlace(bin), iconTrashFull);
}

TEST_F(TShellIconsTest, ShortcutsLookLikeTheirTargets) {
  MakeLink(u"C:\\Dir\\folder.lnk", u"C:\\Dir\\Sub");
  MakeLink(u"C:\\Dir\\file.lnk", u"C:\\Dir\\file.txt");
  MakeLink(u"C:\\Dir\\lost.lnk", u"C:\\gone\\lost");
  MakeLink(u"C:\\Dir\\circle.lnk", u"C:\\Dir\\circle.lnk");
  MakeFile("Dir/garbage.lnk", "no link");
  EXPECT_EQ(IconOf(u"C:\\Dir\\folder.lnk"), iconFolder);
  EXPECT_EQ(IconOf(u"C:\\Dir\\file.lnk"), iconText);
  EXPECT_EQ(IconOf(u"C:\\Dir\\circle.lnk"), iconLink);
  EXPECT_EQ(IconOf(u"C:\\Dir\\garbage.lnk"), iconLink);
  EXPECT_GE(IconOf(u"C:\\Dir\\lost.lnk"), 0);
  // By the name alone the file is not read.
  EXPECT_EQ(IconOf(u"C:\\Dir\\folder.lnk", SHGFI_USEFILEATTRIBUTES, 0x80), iconLink);
  SHFILEINFOW info{};
  ASSERT_TRUE(Api().SHGetFileInfoW(W(u"C:\\Dir\\file.lnk"), 0, &info, sizeof info,
                                   SHGFI_SYSICONINDEX | SHGFI_OVERLAYINDEX));
  EXPECT_EQ(info.iIcon >> 24, LinkOverlayNumber);
}

}  // namespace
}  // namespace oak
