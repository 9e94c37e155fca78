// Patterns, paths, the clipboard, key presses and objects of the shell.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <set>

#include "oak/base/Exceptions.h"
#include "oak/namespace/Oak.Shell.Types.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.BindData.h"
#include "oak/namespace/Shell_Win32.Clipboard.h"
#include "oak/namespace/Shell_Win32.Input.h"
#include "oak/namespace/Shell_Win32.h"
#include "testkit/CallCounter.h"
#include "testkit/ScopedApi.h"

namespace oak {
namespace {

using testkit::TScopedApi;

TEST(Patterns, GoToTheSystemInItsOwnForm) {
  TStringArray asked;
  const TScopedApi match(Api().PathMatchSpecW, [&](LPCWSTR, LPCWSTR pattern) {
    asked.push_back(FromW(pattern));
    return BOOL{0};
  });
  EXPECT_TRUE(MatchPattern(u"README", u"*."));
  EXPECT_TRUE(MatchPattern(u"", u"*."));
  EXPECT_EQ(asked, TStringArray()) << "a name without a dot needs no system";
  const std::pair<TStringView, TStringView> rows[] = {
      {u"*.", u"*."},
      {u"*.*", u"*.*.*"},
      {u"a*.*", u"a*.*.*"},
      {u"*.*x", u"*.*x"},
      {u"*.txt;*.*", u"*.txt;*.*.*"},
      {u"*.*;*.txt", u"*.*;*.txt"},
      {u"*.cpp;*.h", u"*.cpp;*.h"},
  };
  for (const auto& [pattern, expected] : rows) {
    asked.clear();
    EXPECT_FALSE(MatchPattern(u"a.b", pattern));
    EXPECT_EQ(asked, TStringArray{TString(expected)});
  }
  asked.clear();
  EXPECT_FALSE(MatchPattern(u"a.b", u""));
  EXPECT_EQ(asked, TStringArray());
}

TEST(Patterns, PositionsCountFromOne) {
  const struct {
    TStringView Sub, Text;
    int Start, Expected;
  } rows[] = {
      {u"b", u"abcb", 1, 2},   {u"b", u"abcb", 3, 4},  {u"b", u"abcb", 5, 0},
      {u"B", u"abcb", 1, 0},   {u"cb", u"abcb", 4, 0}, {u"", u"abc", 1, 0},
      {u"a", u"abc", 0, 0},    {u"a", u"abc", -3, 0},  {u"abc", u"abc", 1, 1},
      {u"abcd", u"abc", 1, 0}, {u"a", u"", 1, 0},      {u"a", u"a", 2147483647, 0},
  };
  for (const auto& row : rows)
    EXPECT_EQ(OakPosEx(row.Sub, row.Text, row.Start), row.Expected) << row.Start;
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

  for (const auto& [placeholder, path] : folders) {
    const TString file = path + u"\\sub\\name.txt";
    const TString normal = NormalizeSpecialFolderPath(file);
    EXPECT_TRUE(normal.starts_with(u"%SF_")) << ToUtf8(file);
    EXPECT_TRUE(SameText(ExpandSpecialFolderPath(normal), file)) << ToUtf8(normal);
  }
  // A longer path wins over its beginning, in any case, and no boundary is asked for.
  EXPECT_EQ(NormalizeSpecialFolderPath(UpperCase(longest->second) + u"Old"),
            longest->first + u"Old");
  EXPECT_EQ(ExpandSpecialFolderPath(longest->first + u";" + longest->first),
            longest->second + u";" + longest->second);
  EXPECT_EQ(ExpandSpecialFolderPath(u"%SF_NONE%\\100%"), u"%SF_NONE%\\100%");
  EXPECT_EQ(NormalizeSpecialFolderPath(u"nowhere\\x"), u"nowhere\\x");
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

TEST(Redirection, IsOnlyRevertedWhereItWasSwitchedOff) {
  int reverted = 0;
  const TScopedApi back(Api().Wow64RevertWow64FsRedirection, [&](PVOID old) {
    EXPECT_EQ(old, &reverted);
    return BOOL{++reverted};
  });
  {
    const TScopedApi off(Api().Wow64DisableWow64FsRedirection, [&](PVOID* old) {
      *old = &reverted;
      return BOOL{1};
    });
    const TWow64RedirectionOff scope;
    EXPECT_EQ(reverted, 0);
  }
  EXPECT_EQ(reverted, 1);
  const TScopedApi refused(Api().Wow64DisableWow64FsRedirection, [](PVOID*) { return BOOL{0}; });
  { const TWow64RedirectionOff scope; }
  const TScopedApi missing(Api().Wow64DisableWow64FsRedirection, nullptr);
  { const TWow64RedirectionOff scope; }
  EXPECT_EQ(reverted, 1);
}

TEST(ReparsePoints, AreTheBitOfKnownAttributes) {
  EXPECT_TRUE(IsReparsePoint(DWORD{FILE_ATTRIBUTE_REPARSE_POINT | FILE_ATTRIBUTE_DIRECTORY}));
  EXPECT_FALSE(IsReparsePoint(DWORD{FILE_ATTRIBUTE_DIRECTORY}));
  EXPECT_FALSE(IsReparsePoint(DWORD{INVALID_FILE_ATTRIBUTES}));
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

template <class TDescriptor, class TChar>
void AppendDescriptor(TBlock& block, std::basic_string_view<TChar> name) {
  TDescriptor descriptor{};
  for (std::size_t i = 0; i < name.size() && i < MAX_PATH; ++i)
    descriptor.cFileName[i] =
        static_cast<std::remove_reference_t<decltype(descriptor.cFileName[0])>>(name[i]);
  block.Append(descriptor);
}

TEST(Clipboard, DescriptorsAreReadAsFarAsTheBlockReaches) {
  TBlock block;
  block.Append(UINT{5});
  AppendDescriptor<FILEDESCRIPTORW>(block, TStringView(u"one.txt"));
  AppendDescriptor<FILEDESCRIPTORW>(block, TStringView(u""));
  AppendDescriptor<FILEDESCRIPTORW>(block, TStringView(TString(MAX_PATH, u'n')));
  AppendDescriptor<FILEDESCRIPTORW>(block, TStringView(u"cut off"));
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

TEST(Clipboard, EightBitDescriptorsAreRead) {
  TBlock block;
  block.Append(UINT{2});
  AppendDescriptor<FILEDESCRIPTORA>(block, std::string_view("a.txt"));
  AppendDescriptor<FILEDESCRIPTORA>(block, std::string_view(std::string(MAX_PATH, 'b')));
  EXPECT_EQ(GetFilenamesFromFileDescriptorA(block.Handle()),
            (TStringArray{u"a.txt", TString(MAX_PATH, u'b')}));
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

TEST(Clipboard, HoldsFilesInEitherFormat) {
  std::set<UINT> available;
  const TScopedApi format(Api().IsClipboardFormatAvailable,
                          [&](UINT asked) { return BOOL{available.count(asked) > 0}; });
  EXPECT_NE(CF_FILEDESCRIPTORA(), CF_FILEDESCRIPTORW());
  EXPECT_FALSE(FilesInClipboard());
  for (const UINT wanted : {UINT{15}, CF_FILEDESCRIPTORW()}) {
    available = {wanted};
    EXPECT_TRUE(FilesInClipboard()) << wanted;
  }
  available = {CF_FILEDESCRIPTORA()};
  EXPECT_FALSE(FilesInClipboard());
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

TEST(Input, DrawStatesAreTheSystemsBits) {
  EXPECT_EQ(GetOwnerDrawState(0x0001 | 0x0010 | 0x1000),
            (TOwnerDrawState{odSelected, odFocused, odComboBoxEdit}));
  EXPECT_EQ(GetOwnerDrawState(0xFFFFE000), TOwnerDrawState());
}

// --- objects -----------------------------------------------------------------

TEST(Shortcuts, TheAssistantGetsANewFile) {
  TStringArray created, deleted, run;
  std::set<TString> existing;
  BOOL starts = TRUE;
  const TScopedApi create(Api().CreateFileW,
                          [&](LPCWSTR path, DWORD, DWORD, SECURITY_ATTRIBUTES*, DWORD disposition,
                              DWORD, HANDLE) -> HANDLE {
                            EXPECT_EQ(disposition, DWORD{CREATE_NEW});
                            if (existing.count(FromW(path)) > 0) {
                              detail::SetLastErrorDirect(ERROR_FILE_EXISTS);
                              return INVALID_HANDLE_VALUE;
                            }
                            created.push_back(FromW(path));
                            return reinterpret_cast<HANDLE>(std::uintptr_t{1});
                          });
  const TScopedApi close(Api().CloseHandle, [](HANDLE) { return BOOL{1}; });
  const TScopedApi remove(Api().DeleteFileW, [&](LPCWSTR path) {
    deleted.push_back(FromW(path));
    return BOOL{1};
  });
  const TScopedApi execute(Api().ShellExecuteExW, [&](SHELLEXECUTEINFOW* info) {
    run.push_back(FromW(info->lpFile) + u" " + FromW(info->lpParameters));
    EXPECT_EQ(info->lpVerb, nullptr);
    return starts;
  });

  EXPECT_TRUE(CreateShortcutShowDialog(u"C:\\dir\\"));
  EXPECT_EQ(run, TStringArray{u"rundll32.exe AppWiz.Cpl, NewLinkHere C:\\dir\\newShortcut.lnk"});
  existing = {u"C:\\dir\\newShortcut.lnk"};
  EXPECT_TRUE(CreateShortcutShowDialog(u"C:\\dir"));
  EXPECT_EQ(created.back(), u"C:\\dir\\newShortcut (1).lnk");
  EXPECT_EQ(deleted, TStringArray());

  starts = FALSE;
  EXPECT_FALSE(CreateShortcutShowDialog(u"D:\\dir"));
  EXPECT_EQ(deleted, TStringArray{u"D:\\dir\\newShortcut.lnk"});
  try {
    CreateShortcutShowDialog(u"");
    ADD_FAILURE() << "an empty path was taken";
  } catch (const EArgumentException& error) {
    EXPECT_EQ(error.GetMessage(), u"pShortcutPath is empty");
  }
}

TEST(Shortcuts, WhatIsNoShortcutGivesNone) {
  EXPECT_FALSE(GetIShellLink(u""));
  EXPECT_FALSE(GetIShellLink(u"C:\\does-not-exist\\x.lnk"));
  const TScopedApi create(Api().CoCreateInstance,
                          [](REFCLSID, IUnknown*, DWORD, REFIID, void**) { return E_FAIL; });
  EXPECT_FALSE(GetIShellLink(u"C:\\x.lnk"));
}

TEST(NetworkItems, TellTheirRemoteName) {
  const Ref<IShellFolder> folder = Desktop();
  const TPidl pidl = TPidl::Adopt(static_cast<PItemIdList>(CoTaskMemAlloc(sizeof(ITEMIDLIST))));
  pidl.Get()->mkid = {};
  HRESULT result = S_OK;
  const TScopedApi data(Api().SHGetDataFromIDListW,
                        [&](IShellFolder*, PCUITEMID_CHILD, int format, void* out, int size) {
                          EXPECT_EQ(format, int{SHGDFIL_NETRESOURCE});
                          auto* resource = static_cast<NETRESOURCEW*>(out);
                          auto* text = reinterpret_cast<char16_t*>(resource + 1);
                          TStringView(u"WORKGROUP").copy(text, 9);
                          if (SUCCEEDED(result))
                            resource->lpRemoteName = reinterpret_cast<LPWSTR>(text);
                          EXPECT_GT(static_cast<std::size_t>(size), sizeof(NETRESOURCEW) + 520);
                          return result;
                        });
  EXPECT_EQ(GetDomainFromIdList(folder.Get(), pidl.Get()), u"WORKGROUP");
  result = E_INVALIDARG;
  EXPECT_EQ(GetDomainFromIdList(folder.Get(), pidl.Get()), u"");
  EXPECT_EQ(GetDomainFromIdList(nullptr, pidl.Get()), u"");
  EXPECT_EQ(GetDomainFromIdList(folder.Get(), nullptr), u"");
}

TEST(Libraries, OtherObjectsHaveNoSavePlace) {
  EXPECT_EQ(GetDefaultSavePathFromLibrary(nullptr), u"");
  const auto drives = TOakItemIdList::CreateForSpecialFolder(SF_DRIVES, true);
  EXPECT_EQ(GetDefaultSavePathFromLibrary(drives->WindowsPointer()), u"");
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
