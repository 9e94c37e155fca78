// The libraries: four places under names of their own, each standing for the
// user's folder of that kind.
#include <algorithm>
#include <iterator>

#include "oak/base/Guid.h"
#include "oak/platform/portable/LibrariesFolder.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/PortableClasses.h"
#include "oak/platform/portable/PortableKnownFolders.h"
#include "oak/platform/portable/PortableShell.h"
#include "oak/platform/portable/ShellIcons.h"

namespace oak {
namespace {

constexpr BYTE LibraryVersion1 = 1;

struct TLibrary {
  GUID Id;      ///< Known folder of the library, and its parsing name.
  GUID Folder;  ///< Known folder in which things are saved.
};
const TLibrary Libraries[] = {{FOLDERID_DocumentsLibrary, FOLDERID_Documents},
                              {FOLDERID_MusicLibrary, FOLDERID_Music},
                              {FOLDERID_PicturesLibrary, FOLDERID_Pictures},
                              {FOLDERID_VideosLibrary, FOLDERID_Videos}};

TString ParsingNameOf(const TLibrary& library) { return GuidToString(library.Id); }

TString DisplayNameOf(const TLibrary& library) {
  const TKnownFolder* folder = FindKnownFolder(library.Id);
  return folder ? folder->DisplayName : TString();
}

TString PathOf(const TLibrary& library) {
  const TKnownFolder* folder = FindKnownFolder(library.Folder);
  return folder ? KnownFolderPath(*folder) : TString();
}

const TLibrary* FindLibrary(REFGUID id) {
  const auto found = std::find_if(std::begin(Libraries), std::end(Libraries),
                                  [&](const TLibrary& l) { return l.Id == id; });
  return found == std::end(Libraries) ? nullptr : found;
}

const TLibrary* LibraryOf(PCUITEMID_CHILD element) {
  DWORD flags = 0;
  TString name;
  GUID id;
  if (!ReadNameElement(element, ekLibrary, LibraryVersion1, flags, name) || !TryParseGuid(name, id))
    return nullptr;
  return FindLibrary(id);
}

TPidl ElementOf(const TLibrary& library) {
  return MakeNameElement(ekLibrary, LibraryVersion1, 0, ParsingNameOf(library));
}

class TLibrariesSource final : public TFolderSource {
 public:
  HRESULT Enumerate(DWORD flags, Ref<IFolderCursor>& cursor) override {
    std::vector<TPidl> elements;
    if (flags & SHCONTF_FOLDERS)
      for (const TLibrary& library : Libraries) elements.push_back(ElementOf(library));
    cursor = MakeListCursor(std::move(elements));
    return S_OK;
  }
  HRESULT GetName(PCUITEMID_CHILD element, TNameForm form, TString& name) override {
    const TLibrary* library = LibraryOf(element);
    if (!library) return E_INVALIDARG;
    switch (form) {
      case TNameForm::Parsing:
        name = ParsingNameOf(*library);
        return S_OK;
      case TNameForm::FileSystemPath:
      case TNameForm::AbsoluteParsing:
      case TNameForm::AbsoluteEditing:
        return S_FALSE;
      default:
        name = DisplayNameOf(*library);
        return S_OK;
    }
  }
  HRESULT GetAttributes(PCUITEMID_CHILD element, DWORD, DWORD& attributes) override {
    if (!LibraryOf(element)) return E_INVALIDARG;
    attributes = SFGAO_FOLDER | SFGAO_HASSUBFOLDER | SFGAO_FILESYSANCESTOR | SFGAO_STORAGEANCESTOR |
                 SFGAO_BROWSABLE | SFGAO_CANLINK | SFGAO_DROPTARGET | SFGAO_HASPROPSHEET;
    return S_OK;
  }
  HRESULT ParseName(TStringView name, const TParseOptions&, TPidl& element) override {
    for (const TLibrary& library : Libraries) {
      const TString display = DisplayNameOf(library);
      if (!SameText(name, ParsingNameOf(library)) && !SameText(name, display) &&
          !SameText(name, display + u".library-ms"))
        continue;
      element = ElementOf(library);
      return S_OK;
    }
    return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  }
  HRESULT Open(PCUITEMID_CHILD element, Ref<IFolderSource>& child) override {
    const TLibrary* library = LibraryOf(element);
    const TString path = library ? PathOf(*library) : TString();
    if (path.empty()) return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
    child = MakeFileSystemFolder(path);
    return S_OK;
  }
  GUID GetClassId() override { return LibrariesClassId; }
  HRESULT GetTypeName(PCUITEMID_CHILD, TString& name) override {
    name = u"Library";
    return S_OK;
  }
};

/// A library for the programs that ask where it saves. The set of its folders is
/// the user's own and not to be changed here.
class TShellLibrary final : public TInterfacedObject<IShellLibrary> {
 public:
  HRESULT LoadLibraryFromItem(IShellItem* item, DWORD) override {
    return PortableCall("IShellLibrary::LoadLibraryFromItem", [&]() -> HRESULT {
      if (!item) return E_POINTER;
      TTaskMemory<WCHAR> text;
      const HRESULT result = item->GetDisplayName(SIGDN_DESKTOPABSOLUTEPARSING, text.Put());
      if (FAILED(result)) return result;
      const TString name = FromW(text.Get());
      const TString prefix = u"::" + GuidToString(LibrariesClassId) + u"\\";
      GUID id;
      if (!StartsText(prefix, name) || !TryParseGuid(TStringView(name).substr(prefix.size()), id))
        return E_INVALIDARG;
      return Load(id);
    });
  }
  HRESULT LoadLibraryFromKnownFolder(REFKNOWNFOLDERID id, DWORD) override {
    return PortableCall("IShellLibrary::LoadLibraryFromKnownFolder", [&] { return Load(id); });
  }
  HRESULT GetFolders(LIBRARYFOLDERFILTER, REFIID iid, void** out) override {
    return PortableCall("IShellLibrary::GetFolders", [&]() -> HRESULT {
      Ref<IShellItem> folder;
      const HRESULT result = SaveFolder(folder);
      if (FAILED(result)) return result;
      return Api().SHCreateShellItemArrayFromShellItem(folder.Get(), iid, out);
    });
  }
  HRESULT ResolveFolder(IShellItem* folder, DWORD, REFIID iid, void** out) override {
    return PortableCall("IShellLibrary::ResolveFolder", [&]() -> HRESULT {
      return folder ? folder->QueryInterface(iid, out) : E_POINTER;
    });
  }
  HRESULT GetDefaultSaveFolder(DEFAULTSAVEFOLDERTYPE, REFIID iid, void** out) override {
    return PortableCall("IShellLibrary::GetDefaultSaveFolder", [&]() -> HRESULT {
      if (!out) return E_POINTER;
      *out = nullptr;
      Ref<IShellItem> folder;
      const HRESULT result = SaveFolder(folder);
      return FAILED(result) ? result : folder->QueryInterface(iid, out);
    });
  }
  HRESULT GetOptions(LIBRARYOPTIONFLAGS* options) override {
    if (!options) return E_POINTER;
    *options = LOF_PINNEDTONAVPANE;
    return S_OK;
  }
  HRESULT GetFolderType(FOLDERTYPEID* type) override {
    if (!type) return E_POINTER;
    *type = GUID_NULL;
    return S_OK;
  }
  HRESULT GetIcon(LPWSTR* icon) override {
    if (icon) *icon = nullptr;
    return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
  }
  HRESULT AddFolder(IShellItem*) override { return STG_E_ACCESSDENIED; }
  HRESULT RemoveFolder(IShellItem*) override { return STG_E_ACCESSDENIED; }
  HRESULT SetDefaultSaveFolder(DEFAULTSAVEFOLDERTYPE, IShellItem*) override {
    return STG_E_ACCESSDENIED;
  }
  HRESULT SetOptions(LIBRARYOPTIONFLAGS, LIBRARYOPTIONFLAGS) override { return STG_E_ACCESSDENIED; }
  HRESULT SetFolderType(REFFOLDERTYPEID) override { return STG_E_ACCESSDENIED; }
  HRESULT SetIcon(LPCWSTR) override { return STG_E_ACCESSDENIED; }
  HRESULT Commit() override { return STG_E_ACCESSDENIED; }
  HRESULT Save(IShellItem*, LPCWSTR, LIBRARYSAVEFLAGS, IShellItem**) override {
    return STG_E_ACCESSDENIED;
  }
  HRESULT SaveInKnownFolder(REFKNOWNFOLDERID, LPCWSTR, LIBRARYSAVEFLAGS, IShellItem**) override {
    return STG_E_ACCESSDENIED;
  }

 private:
  HRESULT Load(REFGUID id) {
    fLibrary = FindLibrary(id);
    return fLibrary ? S_OK : E_INVALIDARG;
  }
  HRESULT SaveFolder(Ref<IShellItem>& folder) const {
    if (!fLibrary) return E_UNEXPECTED;
    const TString path = PathOf(*fLibrary);
    if (path.empty()) return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
    return Api().SHCreateItemFromParsingName(W(path), nullptr, IidOf<IShellItem>(),
                                             folder.PutVoid());
  }

  const TLibrary* fLibrary = nullptr;
};

}  // namespace

void MountLibraries() {
  TFolderMount mount;
  mount.Name = u"Libraries";
  mount.ClassId = LibrariesClassId;
  mount.Attributes = SFGAO_FOLDER | SFGAO_HASSUBFOLDER | SFGAO_FILESYSANCESTOR |
                     SFGAO_STORAGEANCESTOR | SFGAO_BROWSABLE | SFGAO_CANLINK;
  mount.Order = 40;
  mount.IconIndex = iconLibraries;
  mount.Source = MakeRef<TLibrariesSource>();
  MountFolder(std::move(mount));
}

void RegisterShellLibraryClass() { RegisterPortableClass<TShellLibrary>(CLSID_ShellLibrary); }

}  // namespace oak
