// Commands on one item: what the library does itself, and what it asks the object's menu for.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "oak/framework/ComApartment.h"
#include "oak/framework/Forms.h"
#include "oak/namespace/FolderTrek.Paths.h"
#include "oak/namespace/NamespaceHooks.h"
#include "oak/namespace/Oak.Shell.Types.Commands.h"
#include "testkit/HeadlessForms.h"
#include "testkit/OldWindows.h"
#include "tests/MessageOf.h"
#include "tests/namespace/FakeContextMenu.h"
#include "tests/namespace/ScriptedRegistry.h"

namespace oak::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testkit::TScopedApi;

class ItemCommands : public testing::Test {
 protected:
  testkit::THeadlessScreen Screen{[](const std::string& text) { ADD_FAILURE() << text; }};
  TMenuWorld World{{{u"open", u"&Open", true}, {u"copy", u"&Copy"}}};
};

TEST_F(ItemCommands, GoThroughTheMenuOfTheObject) {
  const std::string folder = ToUtf8(World.Files.Path()) + "\\";
  struct {
    TString Name;
    TShellCommand Command;
    std::string Invoked, Directory;
  } const rows[] = {
      {u"a.txt", saOpen, "OPEN", folder},
      {u"sub", saOpen, "OPEN", ""},
      {u"a.txt", TShellCommand(saOpen, u"C:\\other"), "OPEN", "C:\\other"},
      {u"a.txt", saCopy, "COPY", ""},
      {u"a.txt", saProperties, "PROPERTIES", ""},
      {u"a.txt", TShellCommand(u"burn.to_disc"), "burn.to_disc", ""},
      {u"a.txt", saPinToHome, "PINTOHOME", ""},
      {u"a.txt", saOpenWith, "openas", ""},
      {u"a.txt", saDefault, "#0", folder},
      {u"sub", saDefault, "#0", ""},
  };
  const auto version = testkit::TWindowsVersion::Windows10();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.Invoked + " " + ToUtf8(row.Name));
    const UINT flags = row.Command == saDefault ? CMF_DEFAULTONLY : CMF_OPTIMIZEFORINVOKE;
    EXPECT_TRUE(World[row.Name]->InvokeCommand(row.Command));
    EXPECT_THAT(World.TakeLog(),
                ElementsAre("menu of 1", "query 1..32767 at 0 flags " + std::to_string(flags),
                            "invoke " + row.Invoked));
    EXPECT_EQ(ToUtf8(World.Menu->Directory), row.Directory);
    EXPECT_EQ(World.Menu->Info.fMask, DWORD{CMIC_MASK_UNICODE | CMIC_MASK_ASYNCOK});
  }
}

TEST_F(ItemCommands, AMenuWithoutDefaultOpens) {
  World.Menu->Entries[0].IsDefault = false;
  World[u"a.txt"]->InvokeCommand(saDefault);
  EXPECT_EQ(World.TakeLog().back(), "invoke OPEN");
  // A menu that can't even be filled for the default.
  World.Menu->Entries[0].IsDefault = true;
  World.Menu->OnQuery = [&, queries = 0]() mutable {
    World.Menu->QueryResult = ++queries == 1 ? E_FAIL : S_OK;
  };
  World[u"a.txt"]->InvokeCommand(saDefault);
  EXPECT_EQ(World.TakeLog().back(), "invoke OPEN");
}

TEST_F(ItemCommands, FailuresRaiseWithCodeAndName) {
  const TString path = World.Files.Path(u"a.txt");
  const auto open = [&] { World[u"a.txt"]->InvokeCommand(saOpen); };
  World.Menu->InvokeResult = HRESULT_FROM_WIN32(5);
  EXPECT_THROW(open(), EFolderTrekError);
  World.Folder->MenuResult = HRESULT_FROM_WIN32(5);
  try {
    open();
    ADD_FAILURE() << "no menu, no command";
  } catch (const EFolderTrekError& error) {
    EXPECT_EQ(error.GetErrorCode(), 5u);
    EXPECT_TRUE(oak::Contains(error.GetMessage(), path)) << error.what();
  }
  World.Folder->MenuResult = S_OK;
  World.Folder->Menu.Reset();
  EXPECT_THROW(open(), EFolderTrekError) << "success without a menu";

  const TString missing = World.Files.Path(u"missing.txt");
  const TString message = MessageOf<EFolderTrekError>(
      [&] { TOakItemIdList::Create(missing)->InvokeCommand(saCopyPath); });
  EXPECT_TRUE(oak::Contains(message, missing)) << ToUtf8(message);
  EXPECT_EQ(MessageOf<EFolderTrekError>(
                [&] { World[u"a.txt"]->InvokeCommand(TShellCommand(u"rename")); }),
            u"saRename not supported. Use Rename instead.");
}

TEST_F(ItemCommands, PathsGoToTheClipboard) {
  EXPECT_TRUE(World[u"a.txt"]->InvokeCommand(saCopyPath));
  EXPECT_EQ(Clipboard().GetAsText(), World.Files.Path(u"a.txt"));
  EXPECT_THAT(World.TakeLog(), IsEmpty());
}

TEST_F(ItemCommands, OpenACommandPromptInTheFolder) {
  TStarted started;
  const std::string path = ToUtf8(World.Files.Path());
  EXPECT_TRUE(World[u"a.txt"]->InvokeCommand(saOpenCommandPrompt));
  EXPECT_TRUE(World[u"sub"]->InvokeCommand(saOpenCommandPrompt));
  EXPECT_THAT(started.Calls, ElementsAre("CMD.EXE||" + path, "CMD.EXE||" + path + "\\sub"));
  const auto computer = TOakItemIdList::CreateForSpecialFolder(SF_DRIVES, false);
  for (const TShellAction action : {saOpenCommandPrompt, saBdeUnlock})
    EXPECT_EQ(MessageOf<EFolderTrekError>([&] { computer->InvokeCommand(action); }),
              u"Only for file system objects a command promnpt can be opened.");
  EXPECT_EQ(started.Calls.size(), 2u);
}

TEST_F(ItemCommands, ExploreShowsTheObjectOrWhatItLiesIn) {
  std::vector<TString> shown;
  HRESULT result = S_OK;
  const TScopedApi show(Api().SHOpenFolderAndSelectItems,
                        [&](PCIDLIST_ABSOLUTE pidl, UINT, PCUITEMID_CHILD_ARRAY, DWORD) {
                          shown.push_back(TOakItemIdList::Create(pidl, iloCopyMemory)->Path());
                          return shown.size() == 1 ? result : S_OK;
                        });
  const auto file = World[u"a.txt"];
  EXPECT_TRUE(file->InvokeCommand(saExplore));
  EXPECT_THAT(shown, ElementsAre(file->Path()));
  shown.clear();
  result = E_FAIL;
  EXPECT_TRUE(file->InvokeCommand(saExplore));
  EXPECT_THAT(shown, ElementsAre(file->Path(), World.Files.Path()));
  // A drive is opened instead; what gives the menus of drives is not there.
  const auto drive = TOakItemIdList::Create(World.Files.Path().substr(0, 2));
  ASSERT_EQ(drive->Depth(), 2);
  shown.clear();
  const TScopedApi noItems(
      Api().SHCreateShellItem,
      [](PCIDLIST_ABSOLUTE, IShellFolder*, PCUITEMID_CHILD, IShellItem**) { return E_FAIL; });
  EXPECT_THROW(drive->InvokeCommand(saExplore), EFolderTrekError);
  EXPECT_THAT(shown, IsEmpty());
}

TEST_F(ItemCommands, PinningMakesALinkBeforeWindows10) {
  const auto version = testkit::TWindowsVersion::Windows7();
  const TComApartment apartment;
  const auto links = TOakItemIdList::CreateForSpecialFolder(SF_LINKS, true);
  if (!FileOrFolderExists(links->Path())) GTEST_SKIP() << "no folder of links";
  LONG event = 0;
  const TScopedApi notify(Api().SHChangeNotify,
                          [&](LONG id, UINT, LPCVOID, LPCVOID) { event = id; });
  EXPECT_TRUE(World[u"sub"]->InvokeCommand(saPinToHome));
  EXPECT_EQ(event, SHCNE_UPDATEDIR);
  const TString link = links->Path() + u"\\sub.lnk";
  EXPECT_TRUE(FileOrFolderExists(link));
  Api().DeleteFileW(W(link));
  EXPECT_THAT(World.TakeLog(), IsEmpty());
}

TEST_F(ItemCommands, DrivesAreUnlockedByTheRegisteredProgram) {
  World.Files.MakeFile(u"unlock.exe");
  World.Files.MakeFolder(u"SysNative");
  World.Files.MakeFile(u"SysNative\\bde.exe");
  const TString root = World.Files.Path();
  const TScopedApi expand(
      Api().ExpandEnvironmentStringsW, [&](LPCWSTR text, LPWSTR out, DWORD size) -> DWORD {
        TString result = ReplaceAllText(TString(FromW(text)), u"%WinDir%", root);
        result = ReplaceAllText(result, u"%SystemRoot%", u"C:\\not there");
        if (out && size > result.size()) {
          std::memcpy(out, result.data(), result.size() * sizeof(char16_t));
          out[result.size()] = 0;
        }
        return static_cast<DWORD>(result.size()) + 1;
      });
  std::string parameters;
  const TScopedApi execute(Api().ShellExecuteExW, [&](SHELLEXECUTEINFOW* info) {
    parameters = ToUtf8(TString(FromW(info->lpFile)) + TString(FromW(info->lpParameters)));
    return BOOL{1};
  });
  const std::string path = ToUtf8(root);
  const std::string target = " " + path + "\\a.txt";
  struct {
    TString Value;
    std::string Started;  ///< Empty: the shell's menu has the command.
  } const rows[] = {
      {u"  " + root + u"\\unlock.exe %1  ", "CMD.EXE /C " + path + "\\unlock.exe" + target},
      {u"%systemroot%\\SYSTEM32\\bde.exe %1",
       "CMD.EXE /C " + path + "\\SysNative\\bde.exe" + target},
      {u"%SystemRoot%\\bde.exe %1", ""},
      {root + u"\\gone.exe", ""},
      {u"  ", ""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(ToUtf8(row.Value));
    TScriptedRegistry registry;
    registry.SetText(HKEY_CLASSES_ROOT, u"Drive\\shell\\unlock-bde\\command\\", row.Value);
    parameters.clear();
    World.TakeLog();
    EXPECT_TRUE(World[u"a.txt"]->InvokeCommand(saBdeUnlock));
    EXPECT_EQ(parameters, row.Started);
    EXPECT_EQ(World.Log.empty(), !row.Started.empty());
    if (!World.Log.empty()) {
      EXPECT_EQ(World.Log.back(), "invoke unlock-bde");
    }
  }
}

TEST_F(ItemCommands, SharingNeedsAShareObject) {
  const TShellCommand share(u"windows.MODERNSHARE");
  EXPECT_THROW(World[u"a.txt"]->InvokeCommand(share), EInvalidOperation);
  TString shared;
  NamespaceHooks().Share = [&](const TShareRequest& request) {
    shared = request.Title + u"|" + request.DataType + u"|" + Join(request.Files, u";");
    return true;
  };
  EXPECT_TRUE(World[u"a.txt"]->InvokeCommand(share));
  NamespaceHooks().Share = nullptr;
  EXPECT_EQ(shared, u"a.txt|File|" + World.Files.Path(u"a.txt"));
  EXPECT_THAT(World.TakeLog(), IsEmpty());
}

TEST_F(ItemCommands, ElevatedProcessesLetTheExplorerOpenDocumentsOfSomeViewers) {
  World.Files.MakeFile(u"Doc.PDF");
  struct {
    bool IsElevated;
    TString Name, ClassName;
    TShellAction Action;
    bool ByExplorer;
  } const rows[] = {
      {true, u"Doc.PDF", u"AcroExch.Document.7", saOpen, true},
      {true, u"Doc.PDF", u"acrobat.Document.DC", saDefault, true},
      {true, u"Doc.PDF", u"AcroExch.Document.7", saCopy, false},
      {true, u"Doc.PDF", u"AcrobatX", saOpen, false},
      {true, u"Doc.PDF", u"", saOpen, false},
      {true, u"a.txt", u"AcroExch.Document.7", saOpen, false},
      {false, u"Doc.PDF", u"AcroExch.Document.7", saOpen, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(ToUtf8(row.Name + u" " + row.ClassName));
    TScriptedRegistry registry;
    registry.SetText(HKEY_CLASSES_ROOT, u".PDF\\", row.ClassName);
    const TScopedApi admin(Api().IsUserAnAdmin, [&] { return BOOL{row.IsElevated}; });
    TStarted started;
    World.TakeLog();
    EXPECT_TRUE(World[row.Name]->InvokeCommand(row.Action));
    if (row.ByExplorer) {
      const std::string path = "\"" + ToUtf8(World.Files.Path(row.Name)) + "\"";
      EXPECT_THAT(started.Calls, ElementsAre("explorer.exe|" + path + "|"));
      EXPECT_THAT(World.Log, ElementsAre("menu of 1"));
    } else {
      EXPECT_THAT(started.Calls, IsEmpty());
      EXPECT_THAT(World.Log.back(), HasSubstr("invoke"));
    }
  }
}

}  // namespace
}  // namespace oak::tests
