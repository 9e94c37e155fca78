// Every form of the names of the namespace's own objects, and every form in which a
// place can be written.
#include "tests/platform/portable/ShellFixture.h"

namespace oak {
namespace {

class TShellNames : public TShellTest {};

constexpr SIGDN kForms[] = {SIGDN_NORMALDISPLAY,
                            SIGDN_PARENTRELATIVE,
                            SIGDN_PARENTRELATIVEEDITING,
                            SIGDN_PARENTRELATIVEPARSING,
                            SIGDN_DESKTOPABSOLUTEPARSING,
                            SIGDN_DESKTOPABSOLUTEEDITING,
                            SIGDN_FILESYSPATH,
                            SIGDN_URL};

// "!80070057": no such name.
TEST_F(TShellNames, FormsOfItems) {
  const TString none = u"!80070057";
  const struct {
    TString Place;
    TString Names[8];  // in the order of kForms
  } cases[] = {
      {u"C:\\",
       {u"System (C:)", u"System (C:)", u"System", u"C:\\", u"C:\\", u"C:\\", u"C:\\",
        u"file:///C:/"}},
      {u"E:\\",
       {u"Removable Disk (E:)", u"Removable Disk (E:)", u"Removable Disk", u"E:\\", u"E:\\",
        u"E:\\", u"E:\\", u"file:///E:/"}},
      {u"C:\\Dir\\Sub",
       {u"Sub", u"Sub", u"Sub", u"Sub", u"C:\\Dir\\Sub", u"C:\\Dir\\Sub", u"C:\\Dir\\Sub",
        u"file:///C:/Dir/Sub"}},
      {u"\\\\server\\share",
       {u"share (\\\\server)", u"share", u"share", u"\\\\server\\share", u"\\\\server\\share",
        u"\\\\server\\share", u"\\\\server\\share", u"file://server/share"}},
      {u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}",
       {u"This PC", u"This PC", u"This PC", u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}",
        u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}", u"This PC", none, none}},
      {u"::{59031A47-3F72-44A7-89C5-5595FE6B30EE}",
       {u"Me", u"Me", u"Me", u"::{59031A47-3F72-44A7-89C5-5595FE6B30EE}", u"C:\\home\\me",
        u"C:\\home\\me", u"C:\\home\\me", u"file:///C:/home/me"}},
      {u"::{26EE0668-A00A-44D7-9371-BEB064C98683}\\Hardware and Sound\\Mouse",
       {u"Mouse", u"Mouse", u"Mouse", u"::{6C8EEC18-8D75-41B2-A177-8831D59D2D50}",
        u"::{26EE0668-A00A-44D7-9371-BEB064C98683}\\2\\::{6C8EEC18-8D75-41B2-A177-8831D59D2D50}",
        u"Control Panel\\Hardware and Sound\\Mouse", none, none}},
      {u"shell:Desktop",
       {u"Desktop", u"Desktop", u"Desktop", u"C:\\home\\me\\Desktop", u"C:\\home\\me\\Desktop",
        u"Desktop", u"C:\\home\\me\\Desktop", u"file:///C:/home/me/Desktop"}},
  };
  for (const auto& test : cases) {
    const Ref<IShellItem2> item = Item(test.Place);
    for (std::size_t form = 0; form < std::size(kForms); ++form)
      EXPECT_EQ(Show(Name(item, kForms[form])), Show(test.Names[form]))
          << Show(test.Place) << " form " << form;
    EXPECT_EQ(Name(item, static_cast<SIGDN>(0x12345)), none);
  }
  constexpr SHGDNF addressBar = SHGDN_INFOLDER | SHGDN_FORADDRESSBAR | SHGDN_FORPARSING;
  EXPECT_EQ(Name(Desktop().Get(), Parse(u"C:\\").Get(), addressBar), u"System (C:)");
}

TEST_F(TShellNames, TextsThatLeadToAPlace) {
  MakeDirectory("Dir/per cent%20");
  MakeDirectory("Dir/\xC3\xA4 b");
  const struct {
    const char16_t* Text;
    const char16_t* Place;  // absolute parsing name
  } cases[] = {
      {u"C:", u"C:\\"},
      {u"c:\\Dir\\Sub\\", u"C:\\Dir\\Sub"},
      {u"\\\\?\\C:\\Dir", u"C:\\Dir"},
      {u"\\\\?\\UNC\\server\\share\\inner", u"\\\\server\\share\\inner"},
      {u"\\\\SERVER\\Share\\inner", u"\\\\server\\share\\inner"},
      {u"FILE:///C|/Dir/per%20cent%2520", u"C:\\Dir\\per cent%20"},
      {u"file:///C:/Dir/%C3%A4%20b", u"C:\\Dir\\\u00E4 b"},
      {u"file:///C:/Dir/\u00E4 b", u"C:\\Dir\\\u00E4 b"},
      {u"file://localhost/C:/Dir", u"C:\\Dir"},
      {u"file://server/share/inner", u"\\\\server\\share\\inner"},
      {u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}\\C:\\Dir", u"C:\\Dir"},
      {u"shell:::{20d04fe0-3aea-1069-a2d8-08002b30309d}",
       u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}"},
      {u"SHELL:MyComputerFolder", u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}"},
      {u"shell:Profile\\Documents", u"C:\\home\\me\\Documents"},
      {u"this pc\\system (c:)\\Dir", u"C:\\Dir"},
      {u"::{00021400-0000-0000-C000-000000000046}", u"C:\\home\\me\\Desktop"},
  };
  for (const auto& test : cases) {
    HRESULT result = S_OK;
    (void)Parse(test.Text, &result);
    ASSERT_EQ(result, S_OK) << Show(test.Text);
    EXPECT_EQ(Show(Name(test.Text, SIGDN_DESKTOPABSOLUTEPARSING)), Show(test.Place))
        << Show(test.Text);
  }
  TString volume(64, u'\0');
  ASSERT_TRUE(Api().GetVolumeNameForVolumeMountPointW(W(u"C:\\"), WBuffer(volume), 64));
  EXPECT_EQ(Show(Name(FromW(W(volume)) + u"Dir", SIGDN_DESKTOPABSOLUTEPARSING)), "C:\\Dir");
}

TEST_F(TShellNames, TextsThatLeadNowhere) {
  for (const char16_t* text :
       {u"C:\\none", u"C:Dir", u"C:\\Dir\\..", u"C:/Dir", u"\\Dir", u"\\\\", u"\\\\.\\C:",
        u"\\\\?\\Dir", u"\\\\?\\Volume{00000000-0000-0000-0000-0000000000FF}\\",
        u"\\\\nobody\\share", u"::{", u"::{11111111-1111-1111-1111-111111111111}",
        u"shell:NoSuchFolder", u"shell:::", u"file:///%", u"http://example/",
        u"This PC\\C:\\Dir\\file.txt\\x", u"::{26EE0668-A00A-44D7-9371-BEB064C98683}\\Mouse"}) {
    HRESULT result = S_OK;
    const TPidl pidl = Parse(text, &result);
    EXPECT_FALSE(pidl) << Show(text);
    EXPECT_TRUE(result == E_INVALIDARG || HRESULT_FACILITY(result) == FACILITY_WIN32 ||
                result == E_NOTIMPL)
        << Show(text) << std::hex << result;
  }
}

// Known folders as places: by number, by identifier, created on demand.
TEST_F(TShellNames, KnownFolders) {
  TPidl pidl;
  ASSERT_EQ(Api().SHGetSpecialFolderLocation(nullptr, CSIDL_DESKTOP, pidl.Put()), S_OK);
  EXPECT_EQ(PidlDepth(pidl.Get()), 0);
  EXPECT_TRUE(FAILED(Api().SHGetSpecialFolderLocation(nullptr, 0xEE, pidl.Put())));
  EXPECT_FALSE(pidl);

  TTaskMemory<WCHAR> path;
  ASSERT_EQ(Api().SHGetKnownFolderPath(FOLDERID_Music, KF_FLAG_DONT_VERIFY, nullptr, path.Put()),
            S_OK);
  EXPECT_FALSE(std::filesystem::exists(fRoot / "c/home/me/Music"));
  ASSERT_EQ(Api().SHGetKnownFolderIDList(FOLDERID_Music, KF_FLAG_CREATE, nullptr, pidl.Put()),
            S_OK);
  EXPECT_TRUE(std::filesystem::exists(fRoot / "c/home/me/Music"));
  EXPECT_EQ(Api().SHGetKnownFolderPath(FOLDERID_ComputerFolder, 0, nullptr, path.Put()), E_FAIL);

  TString buffer(MAX_PATH, u'\0');
  EXPECT_TRUE(Api().SHGetPathFromIDListW(pidl.Get(), WBuffer(buffer)));
  EXPECT_EQ(Show(FromW(W(buffer))), "C:\\home\\me\\Music");
  EXPECT_FALSE(Api().SHGetPathFromIDListEx(pidl.Get(), WBuffer(buffer), 5, 0))
      << "a path that does not fit is not cut";
}

class TBindData : public TInterfacedObject<IFileSystemBindData> {
 public:
  explicit TBindData(DWORD attributes) { fData.dwFileAttributes = attributes; }
  HRESULT SetFindData(const WIN32_FIND_DATAW* data) override {
    fData = *data;
    return S_OK;
  }
  HRESULT GetFindData(WIN32_FIND_DATAW* data) override {
    *data = fData;
    return S_OK;
  }

 private:
  WIN32_FIND_DATAW fData{};
};

TEST_F(TShellNames, BindDataStandsForTheObject) {
  TString key = u"File System Bind Data", relative = u"gone\\more";
  for (const DWORD kind : {DWORD{0x10}, DWORD{0x80}}) {  // directory, normal file
    Ref<IBindCtx> context;
    ASSERT_EQ(Api().CreateBindCtx(0, context.Put()), S_OK);
    ASSERT_EQ(context->RegisterObjectParam(WBuffer(key), MakeRef<TBindData>(kind).Get()), S_OK);
    const SFGAOF expected = kind == 0x10 ? SFGAO_FOLDER : SFGAO_STREAM;
    for (const char16_t* text :
         {u"C:\\gone\\more", u"\\\\nobody\\x\\gone\\more", u"file:///C:/gone/more"}) {
      TPidl pidl;
      SFGAOF attributes = 0;
      ASSERT_EQ(Api().SHParseDisplayName(W(text), context.Get(), pidl.Put(),
                                         SFGAO_FOLDER | SFGAO_STREAM, &attributes),
                S_OK)
          << Show(text);
      EXPECT_EQ(attributes, expected) << Show(text);
    }
    TPidl child;
    EXPECT_EQ(Folder(u"C:\\Dir")
                  ->ParseDisplayName(nullptr, context.Get(), WBuffer(relative), nullptr,
                                     child.Put(), nullptr),
              S_OK);
    EXPECT_EQ(PidlDepth(child.Get()), 2);
  }
}

}  // namespace
}  // namespace oak
