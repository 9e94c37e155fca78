// Data objects and the clipboard.
#include "oak/platform/portable/ShellData.h"

#include <cstring>
#include <fstream>
#include <map>

#include "oak/platform/portable/PortableFiles.h"
#include "tests/platform/portable/ShellMenuFixture.h"

namespace oak {
namespace {

using ShellData = TShellMenuTest;

FORMATETC Format(CLIPFORMAT id, DWORD tymed = TYMED_HGLOBAL, LONG index = -1) {
  return {id, nullptr, DVASPECT_CONTENT, index, tymed};
}

TStringArray FormatNames(IDataObject& data) {
  TStringArray names;
  Ref<IEnumFORMATETC> formats;
  EXPECT_EQ(data.EnumFormatEtc(DATADIR_GET, formats.Put()), S_OK);
  FORMATETC format;
  while (formats->Next(1, &format, nullptr) == S_OK) {
    EXPECT_EQ(data.QueryGetData(&format), S_OK) << format.cfFormat;
    const TString name = PortableClipboardFormatName(format.cfFormat);
    names.push_back(name.empty() ? IntToStr(format.cfFormat) : name);
  }
  return names;
}

std::string ReadStream(IStream& stream) {
  char bytes[100];
  ULONG got = 0;
  EXPECT_GE(stream.Read(bytes, sizeof bytes, &got), 0);
  return std::string(bytes, got);
}

TString DisplayPath(const TPidl& list) {
  TTaskMemory<WCHAR> name;
  EXPECT_EQ(Api().SHGetNameFromIDList(list.Get(), SIGDN_DESKTOPABSOLUTEPARSING, name.Put()), S_OK);
  return FromW(name.Get());
}

TEST_F(ShellData, FormatsOfFilesAndOfOtherObjects) {
  const auto files = Data({u"C:\\Dir\\file.txt", u"C:\\Dir\\Sub"});
  EXPECT_EQ(FormatNames(*files), (TStringArray{u"Shell IDList Array", u"15", u"FileNameW",
                                               u"FileGroupDescriptorW", u"FileContents"}));
  EXPECT_EQ(PathsOf(*files), (TStringArray{u"C:\\Dir\\file.txt", u"C:\\Dir\\Sub"}));
  std::vector<BYTE> bytes;
  ASSERT_TRUE(ReadData(*files, FormatOf(TShellFormat::FileName), bytes));
  EXPECT_EQ(FromW(reinterpret_cast<LPCWSTR>(bytes.data())), u"C:\\Dir\\file.txt");
  const auto lists = ListsOf(*files);
  ASSERT_EQ(lists.size(), 2u);
  EXPECT_EQ(DisplayPath(lists[1]), u"C:\\Dir\\Sub");

  const auto computer = Data({u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}"});
  EXPECT_EQ(FormatNames(*computer),
            (TStringArray{u"Shell IDList Array", u"FileGroupDescriptorW", u"FileContents"}));
  EXPECT_EQ(ListsOf(*computer).size(), 1u);

  EXPECT_EQ(Api().OleSetClipboard(files.Get()), S_OK);
  EXPECT_TRUE(Api().IsClipboardFormatAvailable(CF_HDROP));
  EXPECT_FALSE(Api().IsClipboardFormatAvailable(CF_UNICODETEXT));
}

// What is set is taken, whatever it is called, and goes before what the shell would say.
TEST_F(ShellData, TakesDataOfAnyFormat) {
  const auto data = Data({u"C:\\Dir\\file.txt"});
  const auto own = static_cast<CLIPFORMAT>(Api().RegisterClipboardFormatW(u"Oak test format"));
  for (const char* text : {"first", "second"})
    EXPECT_EQ(WriteData(*data, own, text, std::strlen(text)), S_OK);
  std::vector<BYTE> bytes;
  ASSERT_TRUE(ReadData(*data, own, bytes));
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "second");
  EXPECT_EQ(FormatNames(*data).back(), u"Oak test format");
  EXPECT_EQ(ReadEffect(*data, TShellFormat::PreferredEffect, 7), 7u);
  EXPECT_EQ(WriteEffect(*data, TShellFormat::PreferredEffect, DROPEFFECT_MOVE), S_OK);
  EXPECT_EQ(ReadEffect(*data, TShellFormat::PreferredEffect, 7), DROPEFFECT_MOVE);

  // Not given away: the caller's block stays his.
  STGMEDIUM medium{};
  medium.tymed = TYMED_HGLOBAL;
  medium.hGlobal = PortableGlobalCopy("mine", 4);
  FORMATETC format = Format(own);
  EXPECT_EQ(data->SetData(&format, &medium, FALSE), S_OK);
  EXPECT_EQ(Api().GlobalSize(medium.hGlobal), 4u);
  Api().ReleaseStgMedium(&medium);
  ASSERT_TRUE(ReadData(*data, own, bytes));
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "mine");
  medium.tymed = TYMED_FILE;
  EXPECT_EQ(data->SetData(&format, &medium, FALSE), DV_E_TYMED);
}

/// Asks the data object that holds it when it goes.
class TAskingStream final : public TInterfacedObject<IUnknown> {
 public:
  explicit TAskingStream(IDataObject* data) : fData(data) {}
  ~TAskingStream() override {
    FORMATETC format = Format(CF_UNICODETEXT);
    fData->QueryGetData(&format);
  }

 private:
  IDataObject* const fData;
};

TEST_F(ShellData, CallsNobodyUnderItsLock) {
  const auto data = Data({u"C:\\Dir\\file.txt"});
  const auto own = static_cast<CLIPFORMAT>(Api().RegisterClipboardFormatW(u"Oak test format"));
  FORMATETC format = Format(own);
  STGMEDIUM medium{};
  medium.tymed = TYMED_HGLOBAL;
  medium.hGlobal = PortableGlobalCopy("x", 1);
  medium.pUnkForRelease = MakeRef<TAskingStream>(data.Get()).Detach();
  const HGLOBAL block = medium.hGlobal;
  ASSERT_EQ(data->SetData(&format, &medium, TRUE), S_OK);
  EXPECT_EQ(WriteData(*data, own, "y", 1), S_OK);  // the former one goes
  PortableGlobalFree(block);
}

TEST_F(ShellData, DescribesWhatLiesInFolders) {
  MakeFile("Dir/Sub/inner.txt", "inner");
  std::filesystem::create_directory_symlink("..", fRoot / "c/Dir/Sub/up");
  const auto data = Data({u"C:\\Dir\\Sub", u"C:\\Dir\\file.txt"});
  std::vector<BYTE> bytes;
  ASSERT_TRUE(ReadData(*data, FormatOf(TShellFormat::FileDescriptor), bytes));
  UINT count = 0;
  std::memcpy(&count, bytes.data(), sizeof count);
  ASSERT_EQ(count, 4u);  // the link is not followed
  std::map<TString, std::pair<UINT, FILEDESCRIPTORW>> lines;
  for (UINT i = 0; i < count; ++i) {
    FILEDESCRIPTORW line;
    std::memcpy(&line, bytes.data() + sizeof count + i * sizeof line, sizeof line);
    lines[FromW(line.cFileName)] = {i, line};
  }
  ASSERT_TRUE(lines.count(u"Sub") && lines.count(u"Sub\\inner.txt") && lines.count(u"file.txt"));
  EXPECT_EQ(lines[u"Sub"].second.dwFileAttributes, DWORD{FILE_ATTRIBUTE_DIRECTORY});
  EXPECT_EQ(lines[u"Sub\\inner.txt"].second.nFileSizeLow, 5u);
  Ref<IStream> stream;
  ASSERT_EQ(OpenFileContents(*data, static_cast<LONG>(lines[u"Sub\\inner.txt"].first), stream),
            S_OK);
  EXPECT_EQ(ReadStream(*stream), "inner");
  EXPECT_EQ(OpenFileContents(*data, 4, stream), DV_E_LINDEX);
}

// --- files that exist as streams only ----------------------------------------------------------

Ref<IDataObject> Described(const std::vector<std::pair<TString, std::string>>& files) {
  const Ref<IDataObject> data = MakeTextData(u"");
  std::vector<BYTE> bytes(sizeof(UINT) + files.size() * sizeof(FILEDESCRIPTORW));
  const auto count = static_cast<UINT>(files.size());
  std::memcpy(bytes.data(), &count, sizeof count);
  for (UINT i = 0; i < count; ++i) {
    FILEDESCRIPTORW line{};
    const auto& [name, contents] = files[i];
    std::memcpy(line.cFileName, name.data(), std::min<std::size_t>(name.size(), 260) * 2);
    line.dwFlags = FD_ATTRIBUTES;
    line.dwFileAttributes = contents == "<folder>" ? FILE_ATTRIBUTE_DIRECTORY : 0x80;
    std::memcpy(bytes.data() + sizeof count + i * sizeof line, &line, sizeof line);
    if (contents == "<folder>") continue;
    STGMEDIUM medium{};
    medium.tymed = TYMED_ISTREAM;
    const std::string native = *NativePath(u"C:\\stream");
    std::ofstream(native) << contents;
    EXPECT_EQ(
        Api().SHCreateStreamOnFileEx(W(u"C:\\stream"), STGM_READ, 0, FALSE, nullptr, &medium.pstm),
        S_OK);
    std::filesystem::remove(native);
    FORMATETC format =
        Format(FormatOf(TShellFormat::FileContents), TYMED_ISTREAM, static_cast<LONG>(i));
    EXPECT_EQ(data->SetData(&format, &medium, TRUE), S_OK);
  }
  EXPECT_EQ(WriteData(*data, FormatOf(TShellFormat::FileDescriptor), bytes.data(), bytes.size()),
            S_OK);
  return data;
}

TEST_F(ShellData, StreamsBecomeFiles) {
  MakeDirectory("To");
  MakeFile("To/mail.eml", "old");
  const auto data = Described({{u"mail.eml", "new"}, {u"Box", "<folder>"}, {u"Box\\a", "in box"}});
  ASSERT_EQ(Api().OleSetClipboard(data.Get()), S_OK);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(PasteTo(u"C:\\To"), S_OK);
    if (i == 0) Api().OleSetClipboard(Described({{u"mail.eml", "more"}}).Get());
  }
  EXPECT_EQ(Names("To"), "Box, mail (2).eml, mail (3).eml, mail.eml");
  EXPECT_EQ(Contents("To/mail.eml"), "old");
  EXPECT_EQ(Contents("To/mail (2).eml"), "new");
  EXPECT_EQ(Contents("To/Box/a"), "in box");
}

// Names come from others: they may lead nowhere but into the folder.
TEST_F(ShellData, NamesOfStreamsStayInside) {
  MakeDirectory("To");
  for (const TStringView name :
       {u"..\\out", u"..", u"a\\..\\..\\out", u"C:\\out", u"\\out", u"a/out", u"", u"missing\\x"}) {
    fFailures.clear();
    ASSERT_EQ(Api().OleSetClipboard(Described({{TString(name), "x"}}).Get()), S_OK);
    EXPECT_NE(PasteTo(u"C:\\To"), S_OK) << Show(name);
    EXPECT_EQ(fFailures.size(), 1u) << Show(name);
    EXPECT_EQ(Names("To"), "") << Show(name);
  }
  EXPECT_EQ(Names(""), "Dir, To, home");
}

// A folder that was there before is not the one that the data means.
TEST_F(ShellData, StreamsGoIntoTheirOwnFolders) {
  MakeDirectory("To/A");
  MakeFile("To/A/mine", "mine");
  std::filesystem::create_directory_symlink(Native("Dir"), Native("To/way out"));
  const auto data = Described({{u"A", "<folder>"},
                               {u"B", "<folder>"},
                               {u"A\\x", "x"},
                               {u"B\\y", "y"},
                               {u"way out\\z", "z"}});
  ASSERT_EQ(Api().OleSetClipboard(data.Get()), S_OK);
  EXPECT_EQ(PasteTo(u"C:\\To"), HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND));
  ASSERT_EQ(fFailures.size(), 1u);
  EXPECT_EQ(fFailures[0].Places, TStringArray{u"way out\\z"});
  EXPECT_EQ(Names("To/A"), "mine");
  EXPECT_EQ(Names("To/A (2)"), "x");
  EXPECT_EQ(Names("To/B"), "y");
  EXPECT_EQ(Names("Dir"), "Sub, file.txt");
}

TEST_F(ShellData, ForeignBytes) {
  const auto list = FormatOf(TShellFormat::IdList);
  const std::vector<std::vector<UINT>> blocks = {
      {},
      {1},
      {1, 8},
      {0xFFFFFFFF, 8, 8},
      {1, 12, 4000},
      {1, 3, 1},
      {1, 12, 12, 0x00020002}};  // an element without contents
  for (const auto& block : blocks) {
    const auto data = MakeTextData(u"");
    EXPECT_EQ(WriteData(*data, list, block.data(), block.size() * sizeof(UINT)), S_OK);
    Ref<IShellItemArray> items;
    EXPECT_NE(Api().SHCreateShellItemArrayFromDataObject(data.Get(), IID_IShellItemArray,
                                                         items.PutVoid()),
              S_OK)
        << block.size();
    Api().OleSetClipboard(data.Get());
    EXPECT_NE(Invoke(Background(u"C:\\Dir"), u"paste"), S_OK);
  }
  for (const UINT count : {1u, 0xFFFFFFFFu}) {  // descriptors that are not there
    const auto data = MakeTextData(u"");
    WriteData(*data, FormatOf(TShellFormat::FileDescriptor), &count, sizeof count);
    Api().OleSetClipboard(data.Get());
    EXPECT_EQ(PasteTo(u"C:\\Dir"), E_INVALIDARG);
  }
  // The last line lacks its last bytes.
  std::vector<BYTE> bytes;
  ASSERT_TRUE(
      ReadData(*Described({{u"cut", "<folder>"}}), FormatOf(TShellFormat::FileDescriptor), bytes));
  const auto data = MakeTextData(u"");
  WriteData(*data, FormatOf(TShellFormat::FileDescriptor), bytes.data(), bytes.size() - 4);
  Api().OleSetClipboard(data.Get());
  EXPECT_EQ(PasteTo(u"C:\\Dir"), E_INVALIDARG);
  EXPECT_EQ(Names("Dir"), "Sub, file.txt");
}

}  // namespace
}  // namespace oak
