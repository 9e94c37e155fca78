// The control panel, and quick access: folders of a few fixed entries.
#include "oak/base/Guid.h"
#include "oak/platform/portable/PortableKnownFolders.h"
#include "oak/platform/portable/ShellNode.h"
#include "oak/platform/portable/ShellRoots.h"

namespace oak {

namespace {

constexpr BYTE kCategoryVersion = 1;
constexpr BYTE kItemVersion = 2;
constexpr BYTE kPinnedVersion = 1;

// Numbers and identifiers as published for opening them by name.
struct TCategory {
  DWORD Number;
  const char16_t* Name;
};
constexpr TCategory kCategories[] = {
    {5, u"System and Security"}, {3, u"Network and Internet"},
    {2, u"Hardware and Sound"},  {8, u"Programs"},
    {9, u"User Accounts"},       {1, u"Appearance and Personalization"},
    {6, u"Clock and Region"},    {7, u"Ease of Access"}};

struct TItem {
  DWORD Category;
  const char16_t* Class;
  const char16_t* Name;
};
constexpr TItem kItems[] = {
    {5, u"{BB06C0E4-D293-4F75-8A90-CB05B6477EEE}", u"System"},
    {5, u"{025A5937-A6BE-4686-A844-36FE4BEC8B6D}", u"Power Options"},
    {3, u"{8E908FC9-BECC-40F6-915B-F4CA0E70D03D}", u"Network and Sharing Center"},
    {2, u"{A8A91A66-3A7D-4424-8D24-04E180695C7A}", u"Devices and Printers"},
    {2, u"{6C8EEC18-8D75-41B2-A177-8831D59D2D50}", u"Mouse"},
    {8, u"{7B81BE6A-CE2B-4676-A29E-EB907A5126C5}", u"Programs and Features"},
    {9, u"{60632754-C523-4B62-B45C-4172DA012619}", u"User Accounts"},
    {1, u"{93412589-74D4-4E4E-AD0E-E0CB621440FD}", u"Fonts"},
    {6, u"{E2E7934B-DCE5-43C4-9576-7FE4F75E7480}", u"Date and Time"},
    {7, u"{D555645E-D4F8-4C29-A827-D93C859C4F2A}", u"Ease of Access Center"}};

// Entries of a table by their place in it; the flags of the element hold it.
TPidl TableElement(BYTE version, std::size_t index, const char16_t* name) {
  return MakeNameElement(ekCategory, version, static_cast<DWORD>(index), name);
}

template <std::size_t N, class TEntry>
const TEntry* TableEntry(const TEntry (&table)[N], PCUITEMID_CHILD element, BYTE version) {
  DWORD index = 0;
  TString name;
  if (!ReadNameElement(element, ekCategory, version, index, name) || index >= N) return nullptr;
  return &table[index];
}

class TCategorySource : public TFolderSource {
 public:
  explicit TCategorySource(DWORD category) : fCategory(category) {}
  GUID GetClassId() override { return ControlPanelClassId; }

  HRESULT Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) override {
    std::vector<TPidl> elements;
    if (flags & SHCONTF_NONFOLDERS)
      for (std::size_t i = 0; i < std::size(kItems); ++i)
        if (kItems[i].Category == fCategory)
          elements.push_back(TableElement(kItemVersion, i, kItems[i].Name));
    cursor = MakeListCursor(std::move(elements));
    return S_OK;
  }
  HRESULT GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) override {
    const TItem* item = TableEntry(kItems, element, kItemVersion);
    if (!item) return E_INVALIDARG;
    if (form >= TNameForm::AbsoluteParsing) return S_FALSE;
    name = form == TNameForm::Parsing ? TString(u"::") + item->Class : TString(item->Name);
    return S_OK;
  }
  HRESULT GetAttributes(PCUITEMID_CHILD element, DWORD, DWORD& attributes) override {
    if (!TableEntry(kItems, element, kItemVersion)) return E_INVALIDARG;
    attributes = SFGAO_CANLINK;
    return S_OK;
  }
  HRESULT GetIconIndex(PCUITEMID_CHILD, bool, int& index) override {
    index = iconSettings;
    return S_OK;
  }

 private:
  const DWORD fCategory;
};

class TControlPanelSource : public TFolderSource {
 public:
  GUID GetClassId() override { return ControlPanelClassId; }

  HRESULT Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) override {
    std::vector<TPidl> elements;
    if (flags & SHCONTF_FOLDERS)
      for (std::size_t i = 0; i < std::size(kCategories); ++i)
        elements.push_back(TableElement(kCategoryVersion, i, kCategories[i].Name));
    cursor = MakeListCursor(std::move(elements));
    return S_OK;
  }
  HRESULT GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) override {
    const TCategory* category = TableEntry(kCategories, element, kCategoryVersion);
    if (!category) return E_INVALIDARG;
    if (form >= TNameForm::AbsoluteParsing) return S_FALSE;
    name = form == TNameForm::Parsing ? IntToStr(category->Number) : TString(category->Name);
    return S_OK;
  }
  HRESULT GetAttributes(PCUITEMID_CHILD element, DWORD, DWORD& attributes) override {
    if (!TableEntry(kCategories, element, kCategoryVersion)) return E_INVALIDARG;
    attributes = SFGAO_FOLDER | SFGAO_CANLINK;
    return S_OK;
  }
  HRESULT Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) override {
    const TCategory* category = TableEntry(kCategories, element, kCategoryVersion);
    if (!category) return E_INVALIDARG;
    child = MakeRef<TCategorySource>(category->Number);
    return S_OK;
  }
};

class TQuickAccessSource : public TFolderSource {
 public:
  GUID GetClassId() override { return QuickAccessClassId; }

  HRESULT Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) override {
    std::vector<TPidl> elements;
    if (flags & SHCONTF_FOLDERS)
      for (const GUID& id : {FOLDERID_Desktop, FOLDERID_Downloads, FOLDERID_Documents,
                             FOLDERID_Pictures, FOLDERID_Music, FOLDERID_Videos}) {
        const TKnownFolder* folder = FindKnownFolder(id);
        if (!folder || !EnsureKnownFolder(*folder)) continue;  // the user has none
        const TString path = KnownFolderPath(*folder);
        if (!path.empty()) elements.push_back(MakeNameElement(ekPinned, kPinnedVersion, 0, path));
      }
    cursor = MakeListCursor(std::move(elements));
    return S_OK;
  }
  HRESULT GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) override {
    if (!PathOf(element, name)) return E_INVALIDARG;
    if (form < TNameForm::AbsoluteParsing && form != TNameForm::Parsing) {
      const TString file = ExtractFileName(ExcludeTrailingPathDelimiter(name));
      if (!file.empty()) name = file;
    }
    return S_OK;
  }
  HRESULT GetAttributes(PCUITEMID_CHILD element, DWORD mask, DWORD& attributes) override {
    TString path;
    if (!PathOf(element, path)) return E_INVALIDARG;
    attributes = SFGAO_FOLDER | SFGAO_FILESYSTEM | SFGAO_FILESYSANCESTOR | SFGAO_HASSUBFOLDER |
                 SFGAO_STORAGE | SFGAO_STORAGEANCESTOR | SFGAO_CANLINK | SFGAO_CANCOPY |
                 SFGAO_HASPROPSHEET | SFGAO_DROPTARGET;
    if (!(mask & SFGAO_VALIDATE)) return S_OK;
    Ref<IFolderCursor> cursor;
    return MakeFileSystemFolder(path)->Enumerate(0, cursor);
  }
  HRESULT Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) override {
    TString path;
    if (!PathOf(element, path)) return E_INVALIDARG;
    child = MakeFileSystemFolder(path);
    return S_OK;
  }
  HRESULT GetTypeName(PCUITEMID_CHILD, TString& name) override {
    name = u"File folder";
    return S_OK;
  }
  /// Dates and the like are those of the folder that is pinned.
  HRESULT GetProperty(PCUITEMID_CHILD element, REFPROPERTYKEY key, PROPVARIANT* value) override {
    Ref<IFolderSource> parent;
    TPidl pinned;
    const HRESULT found = FindPinned(element, parent, pinned);
    return FAILED(found) ? found : parent->GetProperty(pinned.Get(), key, value);
  }
  std::vector<PROPERTYKEY> GetPropertyKeys(PCUITEMID_CHILD element) override {
    Ref<IFolderSource> parent;
    TPidl pinned;
    if (FAILED(FindPinned(element, parent, pinned))) return {};
    return parent->GetPropertyKeys(pinned.Get());
  }

 private:
  /// In the directory that it lies in.
  static HRESULT FindPinned(PCUITEMID_CHILD element, Ref<IFolderSource>& parent, TPidl& pinned) {
    TString path;
    if (!PathOf(element, path)) return E_INVALIDARG;
    path = ExcludeTrailingPathDelimiter(path);
    parent = MakeFileSystemFolder(ExtractFileDir(path));
    const HRESULT found = parent->ParseName(ExtractFileName(path), {}, pinned);
    return SUCCEEDED(found) ? S_OK : HRESULT_FROM_WIN32(ERROR_NOT_FOUND);  // the pin has its name
  }
  static bool PathOf(PCUITEMID_CHILD element, TString& path) {
    DWORD flags = 0;
    return ReadNameElement(element, ekPinned, kPinnedVersion, flags, path);
  }
};

}  // namespace

Ref<IFolderSource> MakeControlPanelSource() { return MakeRef<TControlPanelSource>(); }
Ref<IFolderSource> MakeQuickAccessSource() { return MakeRef<TQuickAccessSource>(); }

}  // namespace oak
