// The shell's commands on real files.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>

#include "oak/platform/portable/FileTransfer.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/ShellData.h"
#include "oak/platform/portable/ShellVerbs.h"
#include "tests/platform/portable/ShellMenuFixture.h"

namespace oak {
namespace {

namespace fs = std::filesystem;
constexpr TStringView Bin = u"::{645FF040-5081-101B-9F08-00AA002F954E}";
constexpr HRESULT DiskFull = HRESULT_FROM_WIN32(ERROR_DISK_FULL);
constexpr HRESULT Cancelled = HRESULT_FROM_WIN32(ERROR_CANCELLED);

using ShellVerbs = TShellMenuTest;

// --- copying and moving ----------------------------------------------------------------------

TEST_F(ShellVerbs, CopiesKeepBothWhereNamesAreTaken) {
  MakeDirectory("To");
  MakeFile("Dir/Sub/inner.txt", "inner");
  const TStringArray both{u"C:\\Dir\\file.txt", u"C:\\Dir\\Sub"};
  ASSERT_EQ(Invoke(Menu(both), u"copy"), S_OK);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(PasteTo(u"C:\\To"), S_OK);
  EXPECT_EQ(Names("To"), "Sub, Sub (2), Sub (3), file (2).txt, file (3).txt, file.txt");
  for (int i = 0; i < 2; ++i) EXPECT_EQ(PasteTo(u"C:\\Dir"), S_OK);
  EXPECT_EQ(Names("Dir"),
            "Sub, Sub - Copy, Sub - Copy (2), file - Copy (2).txt, file - Copy.txt, file.txt");
  EXPECT_EQ(Contents("To/Sub (3)/inner.txt"), "inner");
  EXPECT_EQ(Contents("Dir/file - Copy (2).txt"), "hello");
  EXPECT_TRUE(fFailures.empty());
}

TEST_F(ShellVerbs, CutMovesOnce) {
  MakeDirectory("To");
  MakeFile("To/file.txt", "other");
  ASSERT_EQ(InvokeOn({u"C:\\Dir\\file.txt", u"C:\\Dir\\Sub"}, u"cut"), S_OK);
  const auto data = PortableClipboard();
  EXPECT_EQ(PasteTo(u"C:\\Dir"), S_OK);  // where it is already
  EXPECT_EQ(Names("Dir"), "Sub, file.txt");
  ASSERT_EQ(InvokeOn({u"C:\\Dir\\file.txt", u"C:\\Dir\\Sub"}, u"cut"), S_OK);
  EXPECT_EQ(InvokeOn({u"C:\\To"}, u"paste"), S_OK);  // onto the folder itself
  EXPECT_EQ(Names("Dir"), "");
  EXPECT_EQ(Names("To"), "Sub, file (2).txt, file.txt");
  EXPECT_EQ(Contents("To/file.txt"), "other");
  EXPECT_EQ(Contents("To/file (2).txt"), "hello");
  EXPECT_FALSE(PortableClipboard());
  EXPECT_EQ(ReadEffect(*data, TShellFormat::LogicalEffect, 0), DROPEFFECT_MOVE);
  EXPECT_EQ(ReadEffect(*data, TShellFormat::PerformedEffect, 9), DROPEFFECT_NONE);
}

TEST_F(ShellVerbs, NamesWithAnyCharacters) {
  const std::string names[] = {"bad \xFF\xFE name",
                               "* ? : < > | \" \\",
                               " leading",
                               "trailing. ",
                               "new\nline",
                               "con",
                               "\xC3\xA4\xE2\x82\xAC",
                               "-rf",
                               std::string(255, 'n'),
                               std::string(254, 'n') + 'm'};  // the same one in the trash
  TStringArray paths;
  for (const std::string& name : names) {
    MakeFile("Dir/Sub/" + name, name);
    paths.push_back(u"C:\\Dir\\Sub\\" + NameFromNative(name));
  }
  MakeDirectory("To");
  const std::string all = Names("Dir/Sub");
  ASSERT_EQ(Invoke(Menu(paths), u"copy"), S_OK);
  EXPECT_EQ(PasteTo(u"C:\\To"), S_OK);
  EXPECT_EQ(Names("To"), all);
  EXPECT_EQ(PasteTo(u"C:\\Dir\\Sub"), S_OK);  // beside the originals
  EXPECT_EQ(std::distance(fs::directory_iterator(Native("Dir/Sub")), {}), 20);
  EXPECT_EQ(Contents("Dir/Sub/bad \xFF\xFE name - Copy"), "bad \xFF\xFE name");
  EXPECT_EQ(Invoke(Menu(paths), u"delete"), S_OK);
  EXPECT_EQ(std::distance(fs::directory_iterator(Native("Dir/Sub")), {}), 10);
  EXPECT_EQ(List(Bin, AllObjects).size(), 10u);
  TStringArray bin;
  for (const auto& entry : fs::directory_iterator(Native("home/me/.local/share/Trash/files")))
    bin.push_back(TString(Bin) + u'\\' + NameFromNative(entry.path().filename().string()));
  EXPECT_EQ(Invoke(Menu(bin), u"undelete"), S_OK);
  for (const std::string& name : names) EXPECT_EQ(Contents("Dir/Sub/" + name), name);
  EXPECT_TRUE(fFailures.empty());
}

TEST_F(ShellVerbs, AFolderIntoItself) {
  MakeDirectory("Dir/Sub/Deep");
  MakeFile("Dir/Sub/Deep/x");
  fs::create_directory_symlink(Native("Dir/Sub/Deep"), Native("way in"));
  const TStringView places[] = {u"C:\\Dir", u"C:\\Dir\\Sub", u"C:\\Dir\\Sub\\Deep", u"C:\\way in"};
  for (const TStringView verb : {u"copy", u"cut"})
    for (const TStringView place : places) {
      fFailures.clear();
      ASSERT_EQ(InvokeOn({u"C:\\Dir"}, verb), S_OK);
      EXPECT_EQ(PasteTo(place), IntoItself) << Show(place);
      ASSERT_EQ(fFailures.size(), 1u);
      EXPECT_EQ(fFailures[0].Places, TStringArray{u"C:\\Dir"});
    }
  EXPECT_EQ(Names("Dir/Sub/Deep"), "x");
  EXPECT_EQ(Names("Dir"), "Sub, file.txt");
}

TEST_F(ShellVerbs, EachFailureIsReportedOnce) {
  MakeDirectory("To");
  MakeFile("Dir/a", "a");
  MakeFile("Dir/b", "b");
  MakeFile("Dir/c", "c");
  const TStringArray paths{u"C:\\Dir\\a", u"C:\\Dir\\b", u"C:\\Dir\\file.txt", u"C:\\Dir\\c"};
  ASSERT_EQ(Invoke(Menu(paths), u"cut"), S_OK);
  fs::remove(Native("Dir/b"));
  fs::remove(Native("Dir/c"));
  EXPECT_EQ(PasteTo(u"C:\\To"), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(Names("To"), "a, file.txt");  // the others came
  ASSERT_EQ(fFailures.size(), 1u);
  EXPECT_EQ(fFailures[0].Places, (TStringArray{u"C:\\Dir\\b", u"C:\\Dir\\c"}));
  EXPECT_EQ(fFailures[0].Verb, u"paste");
  EXPECT_TRUE(PortableClipboard());
  EXPECT_EQ(Invoke(Background(u"C:\\To"), u"paste", CMIC_MASK_FLAG_NO_UI),
            HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(fFailures.size(), 1u);
}

ssize_t NoRoom(int, const void*, std::size_t) { return errno = ENOSPC, -1; }

TEST_F(ShellVerbs, FullDisk) {
  MakeDirectory("To");
  MakeFile("Dir/Sub/x", "x");
  ASSERT_EQ(InvokeOn({u"C:\\Dir\\file.txt", u"C:\\Dir\\Sub"}, u"copy"), S_OK);
  SetNativeWrite(&NoRoom);
  EXPECT_EQ(PasteTo(u"C:\\To"), DiskFull);
  SetNativeWrite(nullptr);
  EXPECT_EQ(Names("To"), "");
  ASSERT_EQ(fFailures.size(), 1u);
  EXPECT_EQ(fFailures[0].Places.size(), 2u);
  EXPECT_EQ(PasteTo(u"C:\\To"), S_OK);
  EXPECT_EQ(Names("To"), "Sub, file.txt");
}

TEST_F(ShellVerbs, CancelledHalfWay) {
  MakeDirectory("To");
  for (const char* name : {"a", "b", "c"}) MakeFile(std::string("Dir/Sub/") + name, name);
  const TStringArray paths{u"C:\\Dir\\Sub\\a", u"C:\\Dir\\Sub\\b", u"C:\\Dir\\Sub\\c"};
  for (const TStringView verb : {u"copy", u"cut", u"delete"}) {
    int left = 2, asked = 0;
    TShellHooks hooks;
    hooks.OnProgress = [&](TStringView, std::uint64_t) { return ++asked, left-- > 0; };
    hooks.OnFailure = [&](const TShellFailure&) { ADD_FAILURE() << "cancelling is no failure"; };
    ASSERT_EQ(Invoke(Menu(paths), verb == u"delete" ? u"copy" : verb), S_OK);
    SetShellHooks(std::move(hooks));
    EXPECT_EQ(verb == u"delete" ? Invoke(Menu(paths), u"delete") : PasteTo(u"C:\\To"), Cancelled);
    SetShellHooks({});
    EXPECT_EQ(asked, 3) << Show(verb);
    // Each file is somewhere, whole.
    for (const std::string name : {"a", "b", "c"}) {
      const bool here = Contents("Dir/Sub/" + name) == name, there = Contents("To/" + name) == name;
      const bool bin = Contents("home/me/.local/share/Trash/files/" + name) == name;
      EXPECT_TRUE(here || there || bin) << name;
    }
    fs::remove_all(Native("To"));
    MakeDirectory("To");
    for (const char* name : {"a", "b", "c"}) MakeFile(std::string("Dir/Sub/") + name, name);
  }
}

TEST_F(ShellVerbs, ThrowingHooksLeaveNothingHalfDone) {
  MakeDirectory("To");
  for (const char* name : {"a", "b"}) MakeFile(std::string("Dir/Sub/") + name, name);
  for (const TStringView verb : {u"copy", u"cut"}) {
    ASSERT_EQ(InvokeOn({u"C:\\Dir\\Sub"}, verb), S_OK);
    int left = verb == u"cut" ? 0 : 3;
    TShellHooks hooks;
    hooks.OnProgress = [&](TStringView, std::uint64_t) -> bool {
      return left-- > 0 ? true : throw std::runtime_error("hook");
    };
    SetShellHooks(std::move(hooks));
    EXPECT_EQ(PasteTo(u"C:\\To"), E_UNEXPECTED);
    SetShellHooks({});
    EXPECT_EQ(Names("To"), "");
    EXPECT_EQ(Names("Dir/Sub"), "a, b");
  }
}

// --- deleting and restoring -------------------------------------------------------------------

TEST_F(ShellVerbs, DeleteGoesToTheTrashAndComesBack) {
  MakeFile("Dir/Sub/inner.txt", "inner");
  ASSERT_EQ(InvokeOn({u"C:\\Dir\\file.txt", u"C:\\Dir\\Sub"}, u"delete"), S_OK);
  EXPECT_EQ(Names("Dir"), "");
  MakeFile("Dir/file.txt", "second");
  ASSERT_EQ(InvokeOn({u"C:\\Dir\\file.txt"}, u"delete"), S_OK);
  EXPECT_EQ(List(Bin, AllObjects).size(), 3u);
  const auto one = Menu({TString(Bin) + u"\\file.txt"});
  EXPECT_EQ(Show(Shown(one.Get())), "undelete | cut | delete | *properties");

  fs::remove_all(Native("Dir"));  // the folder is made again
  EXPECT_EQ(Invoke(one, u"undelete"), S_OK);
  EXPECT_EQ(Contents("Dir/file.txt"), "hello");
  EXPECT_EQ(Invoke(Menu({TString(Bin) + u"\\file (2).txt", TString(Bin) + u"\\Sub"}), u"undelete"),
            S_OK);
  EXPECT_EQ(Names("Dir"), "Sub, file (2).txt, file.txt");
  EXPECT_EQ(Contents("Dir/file (2).txt"), "second");
  EXPECT_EQ(Contents("Dir/Sub/inner.txt"), "inner");
  EXPECT_EQ(Names("home/me/.local/share/Trash/info"), "");
}

TEST_F(ShellVerbs, DeleteForGood) {
  MakeFile("Dir/Sub/x");
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\Sub"}, u"delete", CMIC_MASK_SHIFT_DOWN), S_OK);
  EXPECT_EQ(Names("Dir"), "file.txt");
  EXPECT_TRUE(List(Bin, AllObjects).empty());
  ASSERT_EQ(InvokeOn({u"C:\\Dir\\file.txt"}, u"delete"), S_OK);
  ASSERT_EQ(InvokeOn({TString(Bin) + u"\\file.txt"}, u"delete"), S_OK);  // twice is for good
  EXPECT_TRUE(List(Bin, AllObjects).empty());
  EXPECT_EQ(Names("home/me/.local/share/Trash/info"), "");

  for (const char* name : {"a", "b"}) MakeFile(std::string("Dir/") + name);
  ASSERT_EQ(InvokeOn({u"C:\\Dir\\a", u"C:\\Dir\\b"}, u"delete"), S_OK);
  EXPECT_EQ(InvokeOn({Bin}, u"empty"), S_OK);
  EXPECT_TRUE(List(Bin, AllObjects).empty());
  EXPECT_EQ(Invoke(Background(Bin), u"empty"), S_OK);  // of nothing
  EXPECT_EQ(Names("Dir"), "");
}

// Where an object has gone, one whose name differs in case alone is another.
TEST_F(ShellVerbs, DeletesNoOtherSpelling) {
  for (const char* name : {"readme", "README"}) MakeFile(std::string("Dir/") + name, name);
  const auto menu = Menu({u"C:\\Dir\\readme"});
  fs::remove(Native("Dir/readme"));
  for (const DWORD mask : {DWORD{0}, DWORD{CMIC_MASK_SHIFT_DOWN}})
    EXPECT_EQ(Invoke(menu, u"delete", mask), HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND));
  EXPECT_EQ(Contents("Dir/README"), "README");
}

TEST_F(ShellVerbs, SizeOfTheTrash) {
  SHQUERYRBINFO info{};
  EXPECT_EQ(Api().SHQueryRecycleBinW(nullptr, &info), E_INVALIDARG);
  info.cbSize = sizeof info;
  EXPECT_EQ(Api().SHQueryRecycleBinW(nullptr, &info), S_OK);  // there is none yet
  EXPECT_EQ(info.i64NumItems, 0);
  MakeFile("Dir/Sub/x", std::string(1000, 'x'));
  ASSERT_EQ(InvokeOn({u"C:\\Dir\\file.txt", u"C:\\Dir\\Sub"}, u"delete"), S_OK);
  EXPECT_EQ(Api().SHQueryRecycleBinW(u"C:\\", &info), S_OK);
  EXPECT_EQ(info.i64NumItems, 2);
  EXPECT_EQ(info.i64Size, 1005);
}

TEST_F(ShellVerbs, TheTrashIsNotMovedIntoItself) {
  MakeDirectory("home/me/.local");
  MakeFile("home/me/.local/keep");
  ASSERT_EQ(InvokeOn({u"C:\\Dir\\file.txt"}, u"delete"), S_OK);
  EXPECT_EQ(InvokeOn({u"C:\\home\\me\\.local"}, u"delete"),
            HRESULT_FROM_WIN32(ERROR_INVALID_PARAMETER));
  EXPECT_EQ(fFailures.size(), 1u);
  EXPECT_EQ(Contents("home/me/.local/keep"), "x");
  EXPECT_EQ(List(Bin, AllObjects), TStringArray{u"file.txt"});
}

// --- making, opening, telling ------------------------------------------------------------------

TEST_F(ShellVerbs, NewObjects) {
  const auto menu = Background(u"C:\\Dir\\Sub");
  for (const TStringView verb :
       {u"newfolder", u"newfolder", u"newtextdocument", u"newtextdocument"})
    EXPECT_EQ(Invoke(menu, verb), S_OK);
  EXPECT_EQ(Names("Dir/Sub"),
            "New Text Document (2).txt, New Text Document.txt, New folder, New folder (2)");
}

TEST_F(ShellVerbs, Shortcuts) {
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\file.txt", u"C:\\Dir\\Sub"}, u"link"), S_OK);
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\file.txt"}, u"link"), S_OK);
  EXPECT_EQ(Names("Dir"),
            "Sub, Sub - Shortcut.lnk, file.txt, file.txt - Shortcut (2).lnk, file.txt - "
            "Shortcut.lnk");
  ASSERT_EQ(InvokeOn({u"C:\\Dir\\file.txt"}, u"cut"), S_OK);
  EXPECT_EQ(Invoke(Background(u"C:\\Dir\\Sub"), u"pastelink"), S_OK);
  EXPECT_EQ(Names("Dir/Sub"), "file.txt - Shortcut.lnk");
  // What a shortcut leads to is opened, not the shortcut.
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\Sub\\file.txt - Shortcut.lnk"}, u"open"), S_OK);
  EXPECT_EQ(fExecuted, TStringArray{u"open C:\\Dir\\file.txt||"});
  // Of what lies in no folder the shortcut lies on the desktop.
  EXPECT_EQ(InvokeOn({u"C:\\"}, u"link"), S_OK);
  EXPECT_EQ(Names("home/me/Desktop"), "System (C) - Shortcut.lnk");
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\Sub"}, u"pintohome"), S_OK);
  TTaskMemory<WCHAR> links;
  ASSERT_EQ(Api().SHGetKnownFolderPath(FOLDERID_Links, 0, nullptr, links.Put()), S_OK);
  EXPECT_EQ(List(FromW(links.Get()), AllObjects), TStringArray{u"Sub"});
  EXPECT_TRUE(fFailures.empty());
}

TEST_F(ShellVerbs, Opening) {
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\file.txt", u"C:\\Dir\\Sub"}, u"open"), S_OK);
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\Sub"}, u"explore"), S_OK);
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\Sub"}, u"cmd"), S_OK);
  const TPidl file = Parse(u"C:\\Dir\\file.txt"), dir = Parse(u"C:\\Dir");
  const PCUITEMID_CHILD child = Api().ILFindLastID(file.Get());
  EXPECT_EQ(Api().SHOpenFolderAndSelectItems(file.Get(), 0, nullptr, 0), S_OK);
  EXPECT_EQ(Api().SHOpenFolderAndSelectItems(dir.Get(), 1, &child, 0), S_OK);
  EXPECT_GT(reinterpret_cast<std::intptr_t>(
                Api().ShellExecuteW(nullptr, nullptr, u"http://somewhere", nullptr, nullptr, 1)),
            32);
  EXPECT_EQ(fExecuted,
            (TStringArray{u"open C:\\Dir\\file.txt||", u"open C:\\Dir\\Sub||",
                          u"explore C:\\Dir\\Sub||", u" CMD.EXE||C:\\Dir\\Sub", u"open C:\\Dir||",
                          u"open C:\\Dir||", u" http://somewhere||"}));
  fExecuteResult = FALSE;
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\file.txt", u"C:\\Dir\\Sub"}, u"open"),
            HRESULT_FROM_WIN32(ERROR_NO_ASSOCIATION));
  ASSERT_EQ(fFailures.size(), 1u);
  EXPECT_EQ(fFailures[0].Places, (TStringArray{u"C:\\Dir\\file.txt", u"C:\\Dir\\Sub"}));
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\Sub"}, u"rename"), E_NOTIMPL);
}

TEST_F(ShellVerbs, PropertiesAsReport) {
  MakeFile("Dir/Sub/x", std::string(2000, 'x'));
  TStringArray titles;
  TShellHooks hooks;
  hooks.OnProperties = [&](const TString& title, const TString&) { titles.push_back(title); };
  SetShellHooks(std::move(hooks));
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\file.txt"}, u"properties"), S_OK);
  const TString single = LastPropertyReport();
  for (const TStringView line :
       {u"Name: file.txt\r\n", u"Location: C:\\Dir\r\n", u"(5 bytes)\r\n", u"Modified: "})
    EXPECT_TRUE(Contains(single, line)) << Show(single);
  EXPECT_FALSE(Contains(single, u"Contains: "));
  ASSERT_EQ(Api().SHMultiFileProperties(Data({u"C:\\Dir\\file.txt", u"C:\\Dir\\Sub"}).Get(), 0),
            S_OK);
  const TString several = LastPropertyReport();
  for (const TStringView line :
       {u"Type: Multiple Types\r\n", u"(2005 bytes)\r\n", u"Contains: 2 Files, 1 Folders\r\n"})
    EXPECT_TRUE(Contains(several, line)) << Show(several);
  EXPECT_EQ(Invoke(Background(u"C:\\Dir\\Sub"), u"properties"), S_OK);
  EXPECT_TRUE(Contains(LastPropertyReport(), u"Contains: 1 Files, 0 Folders\r\n"));
  EXPECT_EQ(titles,
            (TStringArray{u"file.txt Properties", u"file.txt, ... Properties", u"Sub Properties"}));
  EXPECT_EQ(Api().SHMultiFileProperties(nullptr, 0), E_INVALIDARG);
}

}  // namespace
}  // namespace oak
