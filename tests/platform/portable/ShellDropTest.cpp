// Dropping on folders of the shell, and pasting where it has no directory of its own.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "oak/platform/portable/FileTransfer.h"
#include "oak/platform/portable/ShellData.h"
#include "tests/platform/portable/ShellMenuFixture.h"

namespace oak {
namespace {

namespace fs = std::filesystem;
constexpr TStringView DropBin = u"::{645FF040-5081-101B-9F08-00AA002F954E}";
constexpr TStringView Computer = u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}";
constexpr TStringView Documents =
    u"::{031E4825-7B94-4DC3-B131-E946B44C8DD5}\\{7B0DB17D-9CD2-4A93-9733-46CC89022E7C}";
constexpr DWORD None = DROPEFFECT_NONE, Copy = DROPEFFECT_COPY, Move = DROPEFFECT_MOVE,
                Link = DROPEFFECT_LINK, All = Copy | Move | Link;
constexpr DWORD Alt = 0x20;

class ShellDrop : public TShellMenuTest {
 protected:
  void SetUp() override {
    TShellMenuTest::SetUp();
    MakeDirectory("To");
    ASSERT_EQ(InvokeOn({u"C:\\To"}, u"link"), S_OK);  // "To - Shortcut.lnk"
  }

  /// The target that an object is, or nil; `code` receives the HRESULT.
  static Ref<IDropTarget> On(TStringView path, HRESULT* code = nullptr) {
    Ref<IDropTarget> target;
    const TPidl pidl = Parse(path);
    Ref<IShellFolder> parent;
    PCUITEMID_CHILD child = nullptr;
    EXPECT_EQ(Api().SHBindToParent(pidl.Get(), IID_IShellFolder, parent.PutVoid(), &child), S_OK);
    const HRESULT result =
        parent->GetUIObjectOf(nullptr, 1, &child, IidOf<IDropTarget>(), nullptr, target.PutVoid());
    if (code) *code = result;
    return target;
  }
  static Ref<IDropTarget> OnBackground(TStringView path) {
    Ref<IDropTarget> target;
    const auto folder = path.empty() ? Desktop() : Ref<IShellFolder>(Folder(path));
    folder->CreateViewObject(nullptr, IidOf<IDropTarget>(), target.PutVoid());
    return target;
  }
  /// What the pointer would show there.
  static DWORD Over(const Ref<IDropTarget>& target, IDataObject* data, DWORD keys = MK_LBUTTON,
                    DWORD allowed = All) {
    DWORD effect = allowed, again = allowed;
    EXPECT_EQ(target->DragEnter(data, MK_LBUTTON, {}, &again), S_OK);
    EXPECT_EQ(target->DragOver(keys, {}, &effect), S_OK);
    EXPECT_EQ(target->DragLeave(), S_OK);
    return effect;
  }
  HRESULT Drop(const Ref<IDropTarget>& target, const Ref<IDataObject>& data, DWORD keys = 0,
               DWORD button = MK_LBUTTON) {
    DWORD effect = All;
    EXPECT_EQ(target->DragEnter(data.Get(), keys | button, {}, &effect), S_OK);
    fEffect = All;
    return target->Drop(data.Get(), keys, {7, 9}, &fEffect);
  }
  static DWORD Told(IDataObject& data, TShellFormat format) { return ReadEffect(data, format, 99); }

  DWORD fEffect = 99;  ///< what the last drop gave back
};

TEST_F(ShellDrop, EffectsByPlaceKeysAndSource) {
  const TStringArray file{u"C:\\Dir\\file.txt"}, sub{u"C:\\Dir\\Sub"}, drive{u"E:\\"};
  const TStringArray library{TString(Documents)};
  const struct {
    int Line;
    const TStringArray& Paths;
    TStringView Target;
    DWORD Keys, Allowed, Preferred, Expected;
  } cases[] = {
      // Files stay on their volume, and are copied to another.
      {__LINE__, file, u"C:\\To", 0, All, 0, Move},
      {__LINE__, file, u"E:\\", 0, All, 0, Copy},
      {__LINE__, file, u"C:\\To - Shortcut.lnk", 0, All, 0, Move},
      {__LINE__, file, Documents, 0, All, 0, Move},
      // Keys.
      {__LINE__, file, u"C:\\To", MK_CONTROL, All, 0, Copy},
      {__LINE__, file, u"E:\\", MK_SHIFT, All, 0, Move},
      {__LINE__, file, u"C:\\To", MK_SHIFT | MK_CONTROL, All, 0, Link},
      {__LINE__, file, u"C:\\To", Alt, All, 0, Link},
      // The source.
      {__LINE__, file, u"C:\\To", 0, Copy | Link, 0, Copy},
      {__LINE__, file, u"C:\\To", MK_CONTROL, Move | Link, 0, None},
      {__LINE__, file, u"C:\\To", 0, All, Copy, Copy},
      {__LINE__, file, u"C:\\To", 0, Move, Copy, Move},
      {__LINE__, file, u"C:\\To", MK_SHIFT, All, Copy, Move},
      // What cannot be copied is linked.
      {__LINE__, drive, u"C:\\To", 0, All, 0, Link},
      {__LINE__, drive, u"C:\\To", MK_SHIFT, All, 0, None},
      {__LINE__, library, u"C:\\To", 0, All, 0, Link},
      // Onto itself, and into what lies in it.
      {__LINE__, sub, u"C:\\Dir\\Sub", 0, All, 0, None},
      {__LINE__, sub, u"C:\\Dir\\Sub\\Deep", MK_CONTROL, All, 0, None},
      {__LINE__, sub, u"C:\\Dir", MK_CONTROL, All, 0, Copy},
      // The trash takes what can be deleted, whatever the keys.
      {__LINE__, file, DropBin, 0, All, 0, Move},
      {__LINE__, file, DropBin, MK_CONTROL, All, 0, Move},
      {__LINE__, file, DropBin, 0, Copy | Link, 0, None},
      {__LINE__, drive, DropBin, 0, All, 0, None},
      {__LINE__, file, Computer, 0, All, 0, None},
  };
  MakeDirectory("Dir/Sub/Deep");
  for (const auto& test : cases) {
    const auto data = Data(test.Paths);
    if (test.Preferred) WriteEffect(*data, TShellFormat::PreferredEffect, test.Preferred);
    const auto target = On(test.Target);
    ASSERT_TRUE(target) << test.Line;
    EXPECT_EQ(Over(target, data.Get(), test.Keys | MK_LBUTTON, test.Allowed), test.Expected)
        << "line " << test.Line;
  }
  const auto words = MakeTextData(u"words");
  EXPECT_EQ(Over(On(u"C:\\To"), words.Get()), None);
  EXPECT_EQ(Over(OnBackground(u"C:\\To"), Data(file).Get()), Move);
  EXPECT_EQ(Over(OnBackground({}), Data(file).Get()), Move);
  HRESULT code = S_OK;
  EXPECT_FALSE(On(u"C:\\Dir\\file.txt", &code));
  EXPECT_EQ(code, E_NOINTERFACE);
  EXPECT_FALSE(OnBackground(u"::{F02C1A0D-BE21-4350-88B0-7367FC96EF3C}"));
}

TEST_F(ShellDrop, FilesComeAsTheKeysSay) {
  const struct {
    DWORD Keys;
    std::string To, Left;
    DWORD Effect, Performed, Logical;
  } cases[] = {
      {MK_CONTROL, "Sub, file.txt", "Sub, file.txt", Copy, Copy, Copy},
      {Alt, "Sub - Shortcut.lnk, file.txt - Shortcut.lnk", "Sub, file.txt", Link, Link, Link},
      // Nothing is left to delete, and the source must not try.
      {0, "Sub, file.txt", "", None, None, Move},
  };
  MakeFile("Dir/Sub/inner", "inner");
  for (const auto& test : cases) {
    const auto data = Data({u"C:\\Dir\\Sub", u"C:\\Dir\\file.txt"});
    EXPECT_EQ(Drop(On(u"C:\\To"), data, test.Keys), S_OK);
    EXPECT_EQ(Names("To"), test.To);
    EXPECT_EQ(Names("Dir"), test.Left);
    EXPECT_EQ(fEffect, test.Effect);
    EXPECT_EQ(Told(*data, TShellFormat::PerformedEffect), test.Performed);
    EXPECT_EQ(Told(*data, TShellFormat::LogicalEffect), test.Logical);
    EXPECT_EQ(Told(*data, TShellFormat::PasteSucceeded), test.Logical);
    if (test.Logical == Move) break;
    fs::remove_all(Native("To"));
    MakeDirectory("To");
  }
  EXPECT_EQ(Contents("To/Sub/inner"), "inner");
  // Where they lie already they stay, and nobody is told to delete them.
  const auto data = Data({u"C:\\To\\file.txt"});
  EXPECT_EQ(Drop(OnBackground(u"C:\\To"), data), S_OK);
  EXPECT_EQ(Contents("To/file.txt"), "hello");
  EXPECT_EQ(fEffect, None);
  EXPECT_EQ(Told(*data, TShellFormat::PerformedEffect), None);
  EXPECT_TRUE(fFailures.empty());
}

TEST_F(ShellDrop, TheTrashTakesAllAndGivesBack) {
  const auto data = Data({u"C:\\Dir\\Sub", u"C:\\Dir\\file.txt"});
  EXPECT_EQ(Drop(On(DropBin), data, MK_SHIFT), S_OK);
  EXPECT_EQ(Names("Dir"), "");
  EXPECT_EQ(List(DropBin, AllObjects).size(), 2u);
  const auto deleted = Data({TString(DropBin) + u"\\file.txt"});
  EXPECT_EQ(Over(OnBackground(DropBin), deleted.Get()), None);
  EXPECT_EQ(Drop(On(u"C:\\Dir"), deleted), S_OK);
  EXPECT_EQ(Contents("Dir/file.txt"), "hello");
  EXPECT_EQ(Names("home/me/.local/share/Trash/info"), "Sub.trashinfo");
  // What is there already stays there, and is not deleted for good.
  ASSERT_EQ(InvokeOn({TString(DropBin) + u"\\Sub"}, u"cut"), S_OK);
  EXPECT_EQ(PasteTo(DropBin), S_OK);
  EXPECT_TRUE(fs::exists(Native("home/me/.local/share/Trash/files/Sub")));
  ASSERT_EQ(InvokeOn({TString(DropBin) + u"\\Sub"}, u"cut"), S_OK);
  EXPECT_EQ(PasteTo(u"C:\\To"), S_OK);
  EXPECT_EQ(Names("To"), "Sub");
  // What was copied, not cut, is not deleted by pasting it there.
  ASSERT_EQ(InvokeOn({u"C:\\Dir\\file.txt"}, u"copy"), S_OK);
  EXPECT_EQ(PasteTo(DropBin), STG_E_ACCESSDENIED);
  EXPECT_EQ(Contents("Dir/file.txt"), "hello");
}

ssize_t DropNoRoom(int, const void*, std::size_t) { return errno = ENOSPC, -1; }

TEST_F(ShellDrop, WhatFailsLosesNothing) {
  const auto data = Data({u"C:\\Dir\\Sub", u"C:\\Dir\\file.txt"});
  SetNativeWrite(&DropNoRoom);
  EXPECT_EQ(Drop(On(u"E:\\"), data), HRESULT_FROM_WIN32(ERROR_DISK_FULL));
  SetNativeWrite(nullptr);
  EXPECT_EQ(fEffect, None);
  EXPECT_EQ(Names("Dir"), "Sub, file.txt");
  EXPECT_FALSE(fs::exists(fRoot / "d/file.txt"));
  ASSERT_EQ(fFailures.size(), 1u);
  EXPECT_EQ(fFailures[0].Places, TStringArray{u"C:\\Dir\\file.txt"});
  EXPECT_EQ(fFailures[0].Verb, u"drop");
  EXPECT_EQ(Told(*data, TShellFormat::LogicalEffect), 99u);
  // A folder that came to hold the target while it was dragged.
  const auto target = On(u"C:\\To");
  DWORD effect = All;
  EXPECT_EQ(target->DragEnter(data.Get(), MK_LBUTTON, {}, &effect), S_OK);
  fs::rename(Native("To"), Native("Dir/Sub/To"));
  fs::create_directory_symlink(Native("Dir/Sub/To"), Native("To"));
  effect = All;
  EXPECT_EQ(target->Drop(data.Get(), 0, {}, &effect), S_OK);
  EXPECT_EQ(effect, None);
  EXPECT_EQ(Names("Dir"), "Sub, file.txt");
}

TEST_F(ShellDrop, TheRightButtonAsks) {
  DWORD offered = 0, usual = 0, answer = None;
  TShellHooks hooks;
  hooks.OnDropMenu = [&](DWORD effects, DWORD normal, POINTL at) {
    EXPECT_EQ(at.x + at.y, 16);
    offered = effects;
    usual = normal;
    return answer;
  };
  SetShellHooks(std::move(hooks));
  const auto data = Data({u"C:\\Dir\\file.txt"});
  EXPECT_EQ(Drop(On(u"C:\\To"), data, 0, MK_RBUTTON), S_OK);
  EXPECT_EQ(offered, All);
  EXPECT_EQ(usual, Move);
  EXPECT_EQ(Names("To"), "");
  answer = Copy;
  EXPECT_EQ(Drop(On(u"C:\\To"), data, 0, MK_RBUTTON), S_OK);
  EXPECT_EQ(fEffect, Copy);
  answer = None;
  EXPECT_EQ(Drop(On(u"C:\\To"), data), S_OK);  // the left one doesn't
  EXPECT_EQ(Names("To"), "file (2).txt, file.txt");
  EXPECT_EQ(Names("Dir"), "Sub");
}

TEST_F(ShellDrop, PlacesWithoutAPathOfTheirOwn) {
  ASSERT_EQ(InvokeOn({u"C:\\Dir\\file.txt"}, u"copy"), S_OK);
  EXPECT_EQ(PasteTo(Documents), S_OK);
  EXPECT_EQ(Invoke(Background(Documents), u"newfolder"), S_OK);
  EXPECT_EQ(Names("home/me/Documents"), "New folder, file.txt");
  // The directory is made with the first thing that comes.
  fs::remove_all(Native("home/me/Desktop"));
  Ref<IContextMenu> menu;
  ASSERT_EQ(Desktop()->CreateViewObject(nullptr, IID_IContextMenu, menu.PutVoid()), S_OK);
  EXPECT_TRUE(Contains(Shown(menu.Get()), u" paste "));
  EXPECT_EQ(Invoke(menu, u"paste"), S_OK);
  EXPECT_EQ(Drop(OnBackground({}), Data({u"C:\\Dir\\Sub"})), S_OK);
  EXPECT_EQ(Names("home/me/Desktop"), "Sub, file.txt");
  // Those that stand for no directory refuse.
  EXPECT_FALSE(Contains(Shown(Background(Computer).Get()), u"paste"));
  EXPECT_EQ(Drop(OnBackground(Computer), Data({u"C:\\Dir\\file.txt"})), S_OK);
  EXPECT_EQ(fEffect, None);
  EXPECT_TRUE(fFailures.empty());
}

TEST_F(ShellDrop, OpenWith) {
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\file.txt"}, u"openas"), S_OK);
  EXPECT_EQ(fExecuted, TStringArray{u"openas C:\\Dir\\file.txt||"});
  fExecuteResult = FALSE;
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\file.txt"}, u"openas"), HRESULT_FROM_WIN32(ERROR_NO_ASSOCIATION));
  EXPECT_EQ(fFailures.size(), 1u);
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\Sub"}, u"openas"), E_INVALIDARG);
  TStringArray asked;
  TShellHooks hooks;
  hooks.OnOpenWith = [&](const TString& path, HWND) { return asked.push_back(path), false; };
  hooks.OnFailure = [](const TShellFailure&) { ADD_FAILURE() << "cancelling is no failure"; };
  SetShellHooks(std::move(hooks));
  EXPECT_EQ(InvokeOn({u"C:\\Dir\\file.txt"}, u"openas"), HRESULT_FROM_WIN32(ERROR_CANCELLED));
  // A link to what is no file leaves nothing to choose a program for.
  ASSERT_EQ(InvokeOn({DropBin}, u"link"), S_OK);
  hooks = {};
  hooks.OnOpenWith = [&](const TString& path, HWND) { return asked.push_back(path), true; };
  SetShellHooks(std::move(hooks));
  const TString link = u"C:\\home\\me\\Desktop\\" + FromUtf8(Names("home/me/Desktop"));
  EXPECT_EQ(InvokeOn({TStringView(link)}, u"openas"), HRESULT_FROM_WIN32(ERROR_NO_ASSOCIATION));
  EXPECT_EQ(asked, TStringArray{u"C:\\Dir\\file.txt"});
}

}  // namespace
}  // namespace oak
