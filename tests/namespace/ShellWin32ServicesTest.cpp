// Paths, the clipboard, key presses and objects of the shell.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "oak/base/Exceptions.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.BindData.h"
#include "oak/namespace/Shell_Win32.Clipboard.h"
#include "oak/namespace/Shell_Win32.Input.h"
#include "oak/namespace/Shell_Win32.h"
#include "testkit/ScopedApi.h"
#include "tests/namespace/TestFolder.h"

namespace oak {
namespace {

using testkit::TScopedApi;

TEST(Texts, PositionsCountFromOne) {
  EXPECT_EQ(OakPosEx(u"b", u"abcb", 1), 2);
  EXPECT_EQ(OakPosEx(u"b", u"abcb", 3), 4);
  EXPECT_EQ(OakPosEx(u"b", u"abcb", 5), 0);
  EXPECT_EQ(OakPosEx(u"b", u"abcb", 0), 0);
}

TEST(TempPath, MayBeLongerThanTheFirstBuffer) {
  const TString path = u"C:\\" + TString(600, u't') + u"\\";
  const TScopedApi temp(Api().GetTempPathW, [&](DWORD size, LPWSTR buffer) {
    if (size <= path.size()) return static_cast<DWORD>(path.size() + 1);
    std::memcpy(buffer, path.c_str(), (path.size() + 1) * sizeof(char16_t));
    return static_cast<DWORD>(path.size());
  });
  EXPECT_EQ(OakGetTempPath(), path);
}

TEST(SpecialFolderPaths, AreExpandedAndNormalized) {
  std::vector<std::pair<TString, TString>> folders;  // placeholder and path
  for (int i = 0; i < OakShellFolderCount; ++i) {
    const auto folder = static_cast<TOakShellFolder>(i);
    const TString path = TOakItemIdList::CreateForSpecialFolder(folder, true)->Path();
    const TString placeholder = u"%" + TString(TOakShellFolderHelper::ToIdentifier(folder)) + u"%";
    EXPECT_EQ(ExpandSpecialFolderPath(u"<" + LowerCase(placeholder) + u">"), u"<" + path + u">");
    if (!path.empty()) folders.emplace_back(placeholder, path);
  }
  ASSERT_FALSE(folders.empty());
  const auto longest = std::max_element(
      folders.begin(), folders.end(),
      [](const auto& a, const auto& b) { return a.second.size() < b.second.size(); });
  // A longer path wins over its beginning, in any case, and no boundary is asked for.
  EXPECT_EQ(NormalizeSpecialFolderPath(UpperCase(longest->second) + u"Old"),
            longest->first + u"Old");
  EXPECT_EQ(ExpandSpecialFolderPath(u"%SF_NONE%\\100%"), u"%SF_NONE%\\100%");
  EXPECT_EQ(NormalizeSpecialFolderPath(u"nowhere\\x"), u"nowhere\\x");
}

// --- clipboard ---------------------------------------------------------------

/// A global block of exactly these bytes, so that a sanitizer sees every step
/// beyond them.
class TBlock {
 public:
  std::vector<BYTE> Bytes;
  int Locks = 0;
  HGLOBAL Handle() { return this; }
  template <class T>
  void Append(const T& value) {
    const auto* bytes = reinterpret_cast<const BYTE*>(&value);
    Bytes.insert(Bytes.end(), bytes, bytes + sizeof(T));
  }
  template <class TChar>
  void AppendText(std::basic_string_view<TChar> text) {
    for (TChar c : text) Append(c);
  }

 private:
  TScopedApi<decltype(TApi::GlobalLock)> fLock{Api().GlobalLock, [this](HGLOBAL) -> LPVOID {
                                                 ++Locks;
                                                 return Bytes.empty() ? nullptr : Bytes.data();
                                               }};
  TScopedApi<decltype(TApi::GlobalUnlock)> fUnlock{Api().GlobalUnlock, [this](HGLOBAL) {
                                                     --Locks;
                                                     return BOOL{0};
                                                   }};
  TScopedApi<decltype(TApi::GlobalSize)> fSize{Api().GlobalSize,
                                               [this](HGLOBAL) { return SIZE_T{Bytes.size()}; }};
};

void AppendDescriptor(TBlock& block, TStringView name) {
  FILEDESCRIPTORW descriptor{};
  for (std::size_t i = 0; i < name.size(); ++i)
    descriptor.cFileName[i] = static_cast<WCHAR>(name[i]);
  block.Append(descriptor);
}

TEST(Clipboard, DescriptorsAreReadAsFarAsTheBlockReaches) {
  TBlock block;
  block.Append(UINT{5});
  AppendDescriptor(block, u"one.txt");
  AppendDescriptor(block, u"");
  AppendDescriptor(block, TString(MAX_PATH, u'n'));
  AppendDescriptor(block, u"cut off");
  block.Bytes.pop_back();
  block.Bytes.shrink_to_fit();
  EXPECT_EQ(GetFilenamesFromFileDescriptorW(block.Handle()),
            (TStringArray{u"one.txt", TString(MAX_PATH, u'n')}));
  EXPECT_EQ(block.Locks, 0);

  // Whatever the length, and whatever count is claimed, nothing beyond is read.
  for (const UINT count : {0u, 1u, 0x7FFFFFFFu, 0xFFFFFFFFu})
    for (std::size_t length = 0; length < 1300; length += 13) {
      block.Bytes.assign(length, BYTE{'x'});
      if (length >= sizeof(count)) std::memcpy(block.Bytes.data(), &count, sizeof(count));
      EXPECT_LE(GetFilenamesFromFileDescriptorW(block.Handle()).size(),
                length / sizeof(FILEDESCRIPTORW));
      EXPECT_LE(GetFilenamesFromFileDescriptorA(block.Handle()).size(),
                length / sizeof(FILEDESCRIPTORA));
    }
  EXPECT_EQ(GetFilenamesFromFileDescriptorW(nullptr), TStringArray());
}

TEST(Clipboard, DroppedPathsAreReadAsFarAsTheBlockReaches) {
  TBlock block;
  DROPFILES header{};
  header.pFiles = sizeof(header);
  header.fWide = TRUE;
  block.Append(header);
  block.AppendText(TStringView(u"C:\\a\0D:\\b\0\0rest\0", 16));
  EXPECT_EQ(GetFilenamesFromHandle(block.Handle()), (TStringArray{u"C:\\a", u"D:\\b"}));

  block.Bytes.resize(sizeof(header) + 7 * sizeof(char16_t) + 1);  // in the middle of the second
  block.Bytes.shrink_to_fit();
  EXPECT_EQ(GetFilenamesFromHandle(block.Handle()), TStringArray{u"C:\\a"});

  header.fWide = FALSE;
  block.Bytes.clear();
  block.Append(header);
  block.AppendText(std::string_view("C:\\a\0\0", 6));
  EXPECT_EQ(GetFilenamesFromHandle(block.Handle()), TStringArray{u"C:\\a"});

  for (const DWORD offset : {DWORD{0}, DWORD{19}, DWORD{1000}, DWORD{0xFFFFFFFF}}) {
    header.pFiles = offset;
    std::memcpy(block.Bytes.data(), &header, sizeof(header));
    EXPECT_EQ(GetFilenamesFromHandle(block.Handle()), TStringArray()) << offset;
  }
  block.Bytes.resize(3);
  EXPECT_EQ(GetFilenamesFromHandle(block.Handle()), TStringArray());
}

// --- input -------------------------------------------------------------------

TEST(Input, ModifiersEmbraceTheKey) {
  std::vector<std::pair<int, DWORD>> pressed;
  const TScopedApi keys(Api().keybd_event, [&](BYTE key, BYTE, DWORD flags, ULONG_PTR) {
    pressed.emplace_back(key, flags);
  });
  PostKeyEx32(VK_DELETE, {ssCtrl, ssShift}, true);
  const DWORD up = KEYEVENTF_KEYUP;
  const DWORD extended = KEYEVENTF_EXTENDEDKEY;
  EXPECT_EQ(pressed, (std::vector<std::pair<int, DWORD>>{{VK_SHIFT, 0},
                                                         {VK_CONTROL, 0},
                                                         {VK_DELETE, extended},
                                                         {VK_DELETE, up | extended},
                                                         {VK_CONTROL, up},
                                                         {VK_SHIFT, up}}));
}

TEST(Input, WindowsGetKeyMessages) {
  std::vector<std::tuple<UINT, WPARAM, std::uint64_t>> posted;
  const TScopedApi scan(Api().MapVirtualKeyW, [](UINT, UINT) { return UINT{0x1C}; });
  const TScopedApi post(Api().PostMessageW, [&](HWND, UINT message, WPARAM key, LPARAM data) {
    posted.emplace_back(message, key, static_cast<std::uint32_t>(data));
    return BOOL{1};
  });
  PostKeyToHWND(nullptr, VK_RETURN, {}, false);
  EXPECT_TRUE(posted.empty());
  const auto window = reinterpret_cast<HWND>(std::uintptr_t{0x10});
  PostKeyToHWND(window, VK_RETURN, {}, false);
  PostKeyToHWND(window, VK_RETURN, ssAlt, true);
  EXPECT_EQ(posted, (decltype(posted){{0x100, VK_RETURN, 0x001C0001u},
                                      {0x101, VK_RETURN, 0xC01C0001u},
                                      {0x104, VK_MENU, 0x201C0001u},
                                      {0x104, VK_RETURN, 0x211C0001u},
                                      {0x105, VK_RETURN, 0xE11C0001u},
                                      {0x105, VK_MENU, 0xE01C0001u}}));
}

// --- objects -----------------------------------------------------------------

TEST(Shortcuts, TheAssistantGetsANewFile) {
  const tests::TTestFolder folder;
  TStringArray run;
  BOOL starts = TRUE;
  const TScopedApi execute(Api().ShellExecuteExW, [&](SHELLEXECUTEINFOW* info) {
    run.push_back(FromW(info->lpFile) + u" " + FromW(info->lpParameters));
    EXPECT_EQ(info->lpVerb, nullptr);
    return starts;
  });
  EXPECT_TRUE(CreateShortcutShowDialog(folder.Path() + u"\\"));
  EXPECT_TRUE(CreateShortcutShowDialog(folder.Path()));
  const TString command = u"rundll32.exe AppWiz.Cpl, NewLinkHere " + folder.Path();
  EXPECT_EQ(run,
            (TStringArray{command + u"\\newShortcut.lnk", command + u"\\newShortcut (1).lnk"}));
  EXPECT_TRUE(folder.Exists(u"newShortcut.lnk") && folder.Exists(u"newShortcut (1).lnk"));

  starts = FALSE;
  EXPECT_FALSE(CreateShortcutShowDialog(folder.Path()));
  EXPECT_EQ(run.size(), 3u);
  EXPECT_FALSE(folder.Exists(u"newShortcut (2).lnk")) << "what nobody fills is taken away";
  EXPECT_THROW(CreateShortcutShowDialog(u""), EArgumentException);
}

TEST(BindData, TravelsInABindContext) {
  WIN32_FIND_DATAW given{};
  given.dwFileAttributes = FILE_ATTRIBUTE_DIRECTORY;
  given.nFileSizeLow = 77;
  const Ref<IBindCtx> context = TFileSystemBindData::CreateBindContext(given);
  TString name = u"File System Bind Data";
  Ref<IUnknown> object;
  ASSERT_TRUE(SUCCEEDED(context->GetObjectParam(WBuffer(name), object.Put())));
  const auto data = object.As<IFileSystemBindData>();
  ASSERT_TRUE(data && object.As<IFileSystemBindData2>());
  WIN32_FIND_DATAW read{};
  EXPECT_EQ(data->GetFindData(&read), S_OK);
  EXPECT_EQ(read.nFileSizeLow, 77u);
  EXPECT_EQ(data->GetFindData(nullptr), E_POINTER);
  EXPECT_EQ(data->SetFindData(nullptr), E_POINTER);

  const TScopedApi failing(Api().CreateBindCtx, [](DWORD, IBindCtx**) { return E_OUTOFMEMORY; });
  EXPECT_THROW(TFileSystemBindData::CreateBindContext(given), EOleSysError);
}

}  // namespace
}  // namespace oak
