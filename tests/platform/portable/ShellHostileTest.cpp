// Bytes and texts from anywhere: every function answers, none crashes.
#include <cstring>
#include <random>

#include "oak/base/Variant.h"
#include "testkit/portable/ScriptedFolder.h"
#include "tests/platform/portable/ShellFixture.h"

namespace oak {
namespace {

// A list at the very end of a heap block of its own, so that a read beyond its end is
// seen by the address sanitizer.
class TTightList {
 public:
  explicit TTightList(std::vector<BYTE> bytes) : fBytes(new BYTE[bytes.size()]) {
    std::memcpy(fBytes.get(), bytes.data(), bytes.size());
  }
  PCIDLIST_ABSOLUTE Get() const { return reinterpret_cast<PCIDLIST_ABSOLUTE>(fBytes.get()); }

 private:
  std::unique_ptr<BYTE[]> fBytes;
};

class TShellHostile : public TShellTest {
 protected:
  // Everything that takes a list, as long as it changes nothing.
  static void AskForEverything(PCIDLIST_ABSOLUTE pidl);
  static void AskFolder(IShellFolder* folder, PCUIDLIST_RELATIVE pidl);
  static void AskItem(IShellItem2* item);
};

void TShellHostile::AskItem(IShellItem2* item) {
  for (SIGDN form :
       {SIGDN_NORMALDISPLAY, SIGDN_DESKTOPABSOLUTEPARSING, SIGDN_DESKTOPABSOLUTEEDITING,
        SIGDN_FILESYSPATH, SIGDN_URL, SIGDN_PARENTRELATIVEEDITING, SIGDN_PARENTRELATIVEPARSING})
    (void)Name(Ref<IShellItem2>::Share(item), form);
  SFGAOF attributes = 0;
  (void)item->GetAttributes(0xFFFFFFFFu, &attributes);
  TPropVariant value;
  (void)item->GetProperty(PKEY_Size, value.Put());
  (void)item->GetProperty(PKEY_DateModified, value.Put());
  (void)item->Update(nullptr);
  Ref<IUnknown> object;
  for (const GUID* handler :
       {&BHID_SFObject, &BHID_Stream, &BHID_EnumItems, &BHID_LinkTargetItem, &BHID_SFUIObject}) {
    const bool isFolder = handler == &BHID_SFObject;
    (void)item->BindToHandler(nullptr, *handler, isFolder ? IID_IShellFolder : IID_IUnknown,
                              object.PutVoid());
  }
  Ref<IShellItem> parent;
  (void)item->GetParent(parent.Put());
  int order = 0;
  if (parent) (void)item->Compare(parent.Get(), SICHINT_DISPLAY, &order);
}

void TShellHostile::AskFolder(IShellFolder* folder, PCUIDLIST_RELATIVE pidl) {
  const TPidl computer = Parse(u"::{20D04FE0-3AEA-1069-A2D8-08002B30309D}\\C:\\Dir");
  for (SHGDNF flags : {SHGDN_NORMAL, SHGDN_FORPARSING, SHGDN_INFOLDER | SHGDN_FOREDITING})
    (void)Name(folder, pidl, flags);
  SFGAOF attributes = 0xFFFFFFFFu;
  (void)folder->GetAttributesOf(1, &pidl, &attributes);
  for (LPARAM what : {LPARAM{0}, LPARAM{2}, LPARAM{SHCIDS_CANONICALONLY}}) {
    (void)folder->CompareIDs(what, pidl, computer.Get());
    (void)folder->CompareIDs(what, computer.Get(), pidl);
    EXPECT_EQ(HRESULT_CODE(folder->CompareIDs(what, pidl, pidl)) & ~0xFFFF, 0);
  }
  Ref<IUnknown> object;
  (void)folder->BindToObject(pidl, nullptr, IID_IShellFolder, object.PutVoid());
  (void)folder->BindToObject(pidl, nullptr, IID_IStream, object.PutVoid());
  (void)folder->BindToStorage(pidl, nullptr, IID_IStorage, object.PutVoid());
  (void)folder->GetUIObjectOf(nullptr, 1, &pidl, IID_IQueryInfo, nullptr, object.PutVoid());
  const Ref<IShellFolder2> details = Ref<IShellFolder>::Share(folder).As<IShellFolder2>();
  TVariant value;
  (void)details->GetDetailsEx(pidl, &PKEY_Size, value.Put());
  SHELLDETAILS text{};
  if (SUCCEEDED(details->GetDetailsOf(pidl, 1, &text))) CoTaskMemFree(text.str.pOleStr);
  int index = 0;
  (void)details.As<IShellIconOverlay>()->GetOverlayIndex(pidl, &index);
  (void)details.As<IShellIcon>()->GetIconOf(pidl, 0, &index);
}

void TShellHostile::AskForEverything(PCIDLIST_ABSOLUTE pidl) {
  const Ref<IShellFolder> desktop = Desktop();
  AskFolder(desktop.Get(), pidl);
  AskFolder(Folder(u"C:\\Dir").Get(), pidl);
  Ref<IShellItem2> item;
  if (SUCCEEDED(Api().SHCreateItemFromIDList(pidl, IID_IShellItem2, item.PutVoid())))
    AskItem(item.Get());
  TString path(MAX_PATH, u'\0');
  (void)Api().SHGetPathFromIDListW(pidl, WBuffer(path));
  SHFILEINFOW info{};
  (void)Api().SHGetFileInfoW(
      reinterpret_cast<LPCWSTR>(pidl), 0, &info, sizeof info,
      SHGFI_PIDL | SHGFI_DISPLAYNAME | SHGFI_ATTRIBUTES | SHGFI_SYSICONINDEX | SHGFI_TYPENAME);
  Ref<IShellFolder> folder;
  PCUITEMID_CHILD last = nullptr;
  (void)Api().SHBindToParent(pidl, IID_IShellFolder, folder.PutVoid(), &last);
  (void)Api().SHBindToObject(nullptr, pidl, nullptr, IID_IShellFolder, folder.PutVoid());
  BYTE data[1024];
  for (int format : {SHGDFIL_FINDDATA, SHGDFIL_DESCRIPTIONID, SHGDFIL_NETRESOURCE})
    (void)Api().SHGetDataFromIDListW(desktop.Get(), pidl, format, data, sizeof data);
  TPidl real;
  (void)Api().SHGetRealIDL(desktop.Get(), pidl, real.Put());
  const TPidl computer = Parse(u"This PC");
  (void)Api().ILIsEqual(pidl, computer.Get());
  (void)Api().ILFindChild(computer.Get(), pidl);
  (void)Api().ILFindChild(pidl, computer.Get());
  const PCIDLIST_ABSOLUTE lists[] = {pidl, computer.Get()};
  Ref<IShellItemArray> array;
  (void)Api().SHCreateShellItemArrayFromIDLists(2, lists, array.Put());
}

std::vector<BYTE> BytesOf(const TPidl& pidl) {
  const BYTE* bytes = reinterpret_cast<const BYTE*>(pidl.Get());
  return {bytes, bytes + PidlSize(pidl.Get())};
}

TEST_F(TShellHostile, ForeignBytes) {
  const std::vector<std::vector<BYTE>> lists = {
      {0, 0},
      {1, 0, 0, 0},  // an element shorter than its size field
      {2, 0, 0, 0},
      {3, 0, 9, 0, 0},
      {6, 0, 0x4F, 0x6B, 0, 0, 0, 0},     // ours by magic, of no kind
      {7, 0, 0x4F, 0x6B, 1, 1, 9, 0, 0},  // mounts with bad keys
      {7, 0, 0x4F, 0x6B, 1, 1, 2, 0, 0},
      {9, 0, 0x4F, 0x6B, 1, 1, 1, 2, 3, 0, 0},
      {8, 0, 0x4F, 0x6B, 2, 1, 'a', 0, 0, 0},  // a drive without a letter
      {0x14, 0,    0x1F, 0x50, 0xE0, 0x4F, 0xD0, 0x20, 0xEA, 0x3A, 0x69,
       0x10, 0xA2, 0xD8, 8,    0,    0x2B, 0x30, 0x30, 0x9D, 0,    0}};  // another shell's computer
  for (const auto& bytes : lists) {
    const TTightList list(bytes);
    AskForEverything(list.Get());
    Ref<IShellItem> item;
    const HRESULT result = Api().SHCreateItemFromIDList(list.Get(), IID_IShellItem, item.PutVoid());
    EXPECT_EQ(SUCCEEDED(result), static_cast<bool>(item));
  }
  Ref<IShellItem> item;
  EXPECT_EQ(Api().SHCreateItemFromIDList(nullptr, IID_IShellItem, item.PutVoid()), E_INVALIDARG);
  EXPECT_TRUE(FAILED(Desktop()->CompareIDs(0, nullptr, nullptr)));
}

// Real lists, bent: every truncation, single bytes and random runs replaced.
TEST_F(TShellHostile, BentLists) {
  const auto tree = testkit::TScriptedFolder::Make();
  tree->AddFolder(u"In");
  const TScopedMount scope(testkit::DesktopMount(tree, u"Memory"));
  std::mt19937 random(20240229);
  for (const char16_t* place : {u"C:\\Dir\\file.txt", u"\\\\server\\share\\inner", u"Memory\\In",
                                u"::{26EE0668-A00A-44D7-9371-BEB064C98683}\\Programs"}) {
    const std::vector<BYTE> whole = BytesOf(Parse(place));
    for (std::size_t length = 0; length + 2 < whole.size(); ++length) {
      // The last element claims no more than what is left of it.
      std::vector<BYTE> bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
      std::size_t at = 0;
      while (at + 2 <= length && at + bytes[at] + 256u * bytes[at + 1] <= length && bytes[at] != 0)
        at += bytes[at] + 256u * bytes[at + 1];
      if (at + 2 > length) continue;
      bytes[at] = static_cast<BYTE>((length - at) & 0xFF);
      bytes[at + 1] = static_cast<BYTE>((length - at) >> 8);
      bytes.insert(bytes.end(), 2, 0);
      AskForEverything(TTightList(bytes).Get());
    }
    for (int round = 0; round < 150; ++round) {
      std::vector<BYTE> bytes = whole;
      const std::size_t count = 1 + random() % 4;
      for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = random() % bytes.size();
        bytes[at] = static_cast<BYTE>(random());
      }
      bytes.insert(bytes.end(), 0x10100, 0);  // whatever size an element now claims
      AskForEverything(TTightList(bytes).Get());
    }
  }
}

// A list of thousands of elements must not cost a stack frame for each.
TEST_F(TShellHostile, DeepLists) {
  const TPidl place = Parse(u"C:\\Dir\\Sub");
  std::vector<BYTE> bytes = BytesOf(place);
  bytes.resize(bytes.size() - 2);
  const auto* const sub = reinterpret_cast<const BYTE*>(Api().ILFindLastID(place.Get()));
  for (int i = 0; i < 2000; ++i) bytes.insert(bytes.end(), sub, sub + sub[0] + 256 * sub[1]);
  bytes.insert(bytes.end(), 2, 0);
  const TTightList list(bytes);
  Ref<IShellItem2> item;
  ASSERT_EQ(Api().SHCreateItemFromIDList(list.Get(), IID_IShellItem2, item.PutVoid()), S_OK);
  EXPECT_EQ(Show(Name(item, SIGDN_PARENTRELATIVE)), "Sub");
  SFGAOF attributes = 0;
  EXPECT_TRUE(FAILED(item->GetAttributes(SFGAO_VALIDATE, &attributes)));
}

}  // namespace
}  // namespace oak
