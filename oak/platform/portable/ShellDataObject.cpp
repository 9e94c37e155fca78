// The shell's data object.
#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>

#include "oak/base/InterfacedObject.h"
#include "oak/base/Variant.h"
#include "oak/platform/Api.h"
#include "oak/platform/portable/FileSystemSource.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/PortableMemory.h"
#include "oak/platform/portable/ShellData.h"
#include "oak/platform/portable/ShellEnumFormats.h"
#include "oak/platform/portable/ShellKnownFolders.h"
#include "oak/platform/portable/ShellParse.h"
#include "oak/platform/portable/ShellPidl.h"

namespace oak {
namespace {

constexpr int DeepestDescribed = 64;  // levels below a described folder

// A copy of a block; nil if there is no memory for it.
HGLOBAL CopyBlock(HGLOBAL block) {
  const void* bytes = Api().GlobalLock(block);
  if (!bytes) return nullptr;
  const HGLOBAL copy = PortableGlobalCopy(bytes, Api().GlobalSize(block));
  Api().GlobalUnlock(block);
  return copy;
}

// A medium of the same contents, owned by the caller.
HRESULT CopyMedium(const STGMEDIUM& medium, STGMEDIUM* copy) {
  *copy = {};
  if (medium.tymed == TYMED_HGLOBAL) {
    copy->hGlobal = CopyBlock(medium.hGlobal);
    if (!copy->hGlobal) return STG_E_MEDIUMFULL;
  } else if (medium.tymed == TYMED_ISTREAM && medium.pstm) {
    medium.pstm->AddRef();
    copy->pstm = medium.pstm;
  } else {
    return DV_E_TYMED;
  }
  copy->tymed = medium.tymed;
  return S_OK;
}

/// A medium that is owned.
class TMedium {
 public:
  TMedium() = default;
  explicit TMedium(const STGMEDIUM& medium) : fMedium(medium) {}
  TMedium(TMedium&& other) noexcept : fMedium(std::exchange(other.fMedium, STGMEDIUM{})) {}
  TMedium& operator=(TMedium&& other) noexcept {
    std::swap(fMedium, other.fMedium);
    return *this;
  }
  ~TMedium() { Api().ReleaseStgMedium(&fMedium); }
  const STGMEDIUM& Get() const { return fMedium; }

 private:
  STGMEDIUM fMedium{};
};

struct TKeptData {
  FORMATETC Format{};
  TMedium Medium;
};

/// One line of a FileGroupDescriptorW.
struct TDescribed {
  Ref<TFolderNode> Folder;
  TPidl Child;
  TString Name;  ///< relative to the first folder, with its folders before it
};
using TDescribedList = std::shared_ptr<const std::vector<TDescribed>>;

template <class T>
void Append(std::vector<BYTE>& bytes, const T* values, std::size_t count) {
  const auto* from = reinterpret_cast<const BYTE*>(values);
  bytes.insert(bytes.end(), from, from + count * sizeof(T));
}

class TShellData : public TInterfacedObject<IDataObject> {
 public:
  TShellData(PCIDLIST_ABSOLUTE folder, const std::vector<PCUIDLIST_RELATIVE>& children,
             IDataObject* inner)
      : fFolder(folder ? TPidl::Copy(folder) : CopyElement(nullptr)),
        fInner(Ref<IDataObject>::Share(inner)) {
    for (PCUIDLIST_RELATIVE child : children) fChildren.push_back(TPidl::Copy(child));
  }

  HRESULT GetData(FORMATETC* format, STGMEDIUM* medium) override;
  HRESULT GetDataHere(FORMATETC*, STGMEDIUM*) override { return E_NOTIMPL; }
  HRESULT QueryGetData(FORMATETC* format) override;
  HRESULT GetCanonicalFormatEtc(FORMATETC* in, FORMATETC* out) override {
    if (!in || !out) return E_POINTER;
    *out = *in;
    out->ptd = nullptr;
    return DATA_S_SAMEFORMATETC;
  }
  HRESULT SetData(FORMATETC* format, STGMEDIUM* medium, BOOL release) override;
  HRESULT EnumFormatEtc(DWORD direction, IEnumFORMATETC** result) override;
  HRESULT DAdvise(FORMATETC*, DWORD, IAdviseSink*, DWORD*) override {
    return OLE_E_ADVISENOTSUPPORTED;
  }
  HRESULT DUnadvise(DWORD) override { return OLE_E_ADVISENOTSUPPORTED; }
  HRESULT EnumDAdvise(IEnumSTATDATA** result) override {
    if (result) *result = nullptr;
    return OLE_E_ADVISENOTSUPPORTED;
  }

 private:
  bool FindKept(const FORMATETC& format, STGMEDIUM* medium, HRESULT& result);
  HRESULT Render(const FORMATETC& format, STGMEDIUM* medium);
  HRESULT Locate(std::size_t index, Ref<TFolderNode>& parent, PCUITEMID_CHILD& child) const;
  bool Paths(TStringArray& paths) const;
  HRESULT IdListBytes(std::vector<BYTE>& bytes) const;
  HRESULT Describe(bool anew, TDescribedList& files);
  HRESULT DescriptorBytes(std::vector<BYTE>& bytes);
  HRESULT Contents(LONG index, STGMEDIUM* medium);
  std::vector<FORMATETC> Formats();

  const TPidl fFolder;
  std::vector<TPidl> fChildren;
  const Ref<IDataObject> fInner;
  std::mutex fLock;
  std::vector<TKeptData> fKept;  // by SetData
  TDescribedList fDescribed;     // as told last, so that indices hold
};

bool Matches(const FORMATETC& wanted, const FORMATETC& present) {
  const bool index = wanted.lindex == present.lindex || wanted.lindex == -1;
  return wanted.cfFormat == present.cfFormat && wanted.dwAspect == present.dwAspect && index;
}

HRESULT BlockMedium(const std::vector<BYTE>& bytes, STGMEDIUM* medium) {
  medium->hGlobal = PortableGlobalCopy(bytes.data(), bytes.size());
  if (!medium->hGlobal) return E_OUTOFMEMORY;
  medium->tymed = TYMED_HGLOBAL;
  return S_OK;
}

HRESULT TShellData::Locate(std::size_t index, Ref<TFolderNode>& parent,
                           PCUITEMID_CHILD& child) const {
  Ref<TFolderNode> folder;
  const HRESULT result = TFolderNode::FromPidl(fFolder.Get(), folder);
  return SUCCEEDED(result) ? BindParent(folder, fChildren[index].Get(), parent, child) : result;
}

// --- formats --------------------------------------------------------------------------

// Files have paths, all or none of them.
bool TShellData::Paths(TStringArray& paths) const {
  for (std::size_t i = 0; i < fChildren.size(); ++i) {
    Ref<TFolderNode> parent;
    PCUITEMID_CHILD child = nullptr;
    TString path;
    if (FAILED(Locate(i, parent, child)) || !ElementKind(child) ||
        FAILED(parent->GetName(child, TNameForm::FileSystemPath, path)) || path.empty())
      return false;
    paths.push_back(std::move(path));
  }
  return !paths.empty();
}

HRESULT TShellData::IdListBytes(std::vector<BYTE>& bytes) const {
  std::vector<UINT> header{static_cast<UINT>(fChildren.size())};
  std::vector<BYTE> lists;
  const auto start = static_cast<UINT>((fChildren.size() + 2) * sizeof(UINT));
  const auto add = [&](const TPidl& list) {
    header.push_back(start + static_cast<UINT>(lists.size()));
    Append(lists, reinterpret_cast<const BYTE*>(list.Get()), PidlSize(list.Get()));
  };
  add(fFolder);
  for (const TPidl& child : fChildren) add(child);
  Append(bytes, header.data(), header.size());
  Append(bytes, lists.data(), lists.size());
  return S_OK;
}

// A folder comes before what lies in it. Symbolic links are not followed: they may lead back.
HRESULT AddDescribed(const Ref<TFolderNode>& folder, PCUITEMID_CHILD child, const TString& prefix,
                     int depth, std::vector<TDescribed>& files) {
  TString name;
  HRESULT result = folder->GetName(child, TNameForm::Parsing, name);
  if (SUCCEEDED(result) && (name.empty() || name.starts_with(u"::")))
    result = folder->GetName(child, TNameForm::Display, name);
  DWORD attributes = 0;
  if (SUCCEEDED(result)) result = folder->GetAttributes(child, SFGAO_FOLDER, attributes);
  if (FAILED(result)) return result;
  files.push_back({folder, CopyElement(child), prefix + name});
  TFileElement file;
  const bool isLink = ReadFileElement(child, file) && (file.Flags & feSymlink);
  if (!(attributes & SFGAO_FOLDER) || isLink) return S_OK;
  // A description that lacks something would lose it unseen.
  if (depth >= DeepestDescribed) return HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE);
  Ref<TFolderNode> inner;
  result = folder->Open(child, inner);
  Ref<IFolderCursor> cursor;
  if (SUCCEEDED(result))
    result = inner->Contents().Enumerate(
        SHCONTF_FOLDERS | SHCONTF_NONFOLDERS | SHCONTF_INCLUDEHIDDEN | SHCONTF_INCLUDESUPERHIDDEN,
        cursor);
  PCUITEMID_CHILD element = nullptr;
  while (SUCCEEDED(result) && (result = cursor->Next(&element)) == S_OK)
    result = AddDescribed(inner, element, prefix + name + u'\\', depth + 1, files);
  return FAILED(result) ? result : S_OK;
}

HRESULT TShellData::Describe(bool anew, TDescribedList& files) {
  if (!anew) {
    const std::lock_guard lock(fLock);
    files = fDescribed;
  }
  if (files) return S_OK;
  std::vector<TDescribed> found;
  for (std::size_t i = 0; i < fChildren.size(); ++i) {
    Ref<TFolderNode> parent;
    PCUITEMID_CHILD child = nullptr;
    HRESULT result = Locate(i, parent, child);
    if (SUCCEEDED(result)) result = AddDescribed(parent, child, {}, 0, found);
    if (FAILED(result)) return result;
  }
  files = std::make_shared<const std::vector<TDescribed>>(std::move(found));
  TDescribedList former = files;
  const std::lock_guard lock(fLock);
  fDescribed.swap(former);
  return S_OK;
}

void FillTimes(const TDescribed& file, FILEDESCRIPTORW& line) {
  const auto read = [&](REFPROPERTYKEY key, FILETIME& time, DWORD flag) {
    TPropVariant value;
    if (FAILED(file.Folder->GetProperty(file.Child.Get(), key, value.Put()))) return;
    const PROPVARIANT& raw = value;
    if (raw.vt != VT_FILETIME) return;
    time = raw.filetime;
    line.dwFlags |= flag;
  };
  read(PKEY_DateCreated, line.ftCreationTime, FD_CREATETIME);
  read(PKEY_DateModified, line.ftLastWriteTime, FD_WRITESTIME);
}

HRESULT FillDescriptor(const TDescribed& file, FILEDESCRIPTORW& line) {
  constexpr std::size_t most = sizeof line.cFileName / sizeof line.cFileName[0];
  if (file.Name.size() >= most) return HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE);
  DWORD attributes = 0;
  const HRESULT result = file.Folder->GetAttributes(file.Child.Get(), SFGAO_FOLDER, attributes);
  if (FAILED(result)) return result;
  line.dwFlags = FD_ATTRIBUTES | FD_UNICODE | FD_PROGRESSUI;
  line.dwFileAttributes =
      attributes & SFGAO_FOLDER ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
  FillTimes(file, line);
  TPropVariant size;
  if (SUCCEEDED(file.Folder->GetProperty(file.Child.Get(), PKEY_Size, size.Put()))) {
    const PROPVARIANT& raw = size;
    if (raw.vt == VT_UI8) {
      line.dwFlags |= FD_FILESIZE;
      line.nFileSizeHigh = raw.uhVal.HighPart;
      line.nFileSizeLow = raw.uhVal.LowPart;
    }
  }
  std::memcpy(line.cFileName, file.Name.data(), file.Name.size() * sizeof(WCHAR));
  return S_OK;
}

HRESULT TShellData::DescriptorBytes(std::vector<BYTE>& bytes) {
  TDescribedList files;
  HRESULT result = Describe(true, files);
  if (FAILED(result)) return result;
  const auto count = static_cast<UINT>(files->size());
  Append(bytes, &count, 1);
  for (const TDescribed& file : *files) {
    FILEDESCRIPTORW line{};
    if (SUCCEEDED(result)) result = FillDescriptor(file, line);
    Append(bytes, &line, 1);
  }
  return result;
}

HRESULT TShellData::Contents(LONG index, STGMEDIUM* medium) {
  TDescribedList files;
  const HRESULT described = Describe(false, files);
  if (FAILED(described)) return described;
  if (index == -1 && files->size() == 1) index = 0;
  if (index < 0 || static_cast<std::size_t>(index) >= files->size()) return DV_E_LINDEX;
  const TDescribed& file = (*files)[static_cast<std::size_t>(index)];
  const PCUITEMID_CHILD child = file.Child.Get();
  Ref<IStream> stream;
  const HRESULT result = file.Folder->SourceOf(child).OpenStream(child, STGM_READ, stream.Put());
  if (FAILED(result)) return result;
  medium->tymed = TYMED_ISTREAM;
  medium->pstm = stream.Detach();
  return S_OK;
}

HRESULT TShellData::Render(const FORMATETC& format, STGMEDIUM* medium) {
  const CLIPFORMAT id = format.cfFormat;
  const bool contents = id == FormatOf(TShellFormat::FileContents);
  if (!(format.tymed & (contents ? TYMED_ISTREAM : TYMED_HGLOBAL))) return DV_E_TYMED;
  if (contents) return Contents(format.lindex, medium);
  std::vector<BYTE> bytes;
  TStringArray paths;
  if (id == FormatOf(TShellFormat::IdList)) {
    IdListBytes(bytes);
  } else if (id == FormatOf(TShellFormat::FileDescriptor)) {
    const HRESULT result = DescriptorBytes(bytes);
    if (FAILED(result)) return result;
  } else if (id == CF_HDROP && Paths(paths)) {
    medium->hGlobal = PortableDropFiles(paths);
    if (!medium->hGlobal) return E_OUTOFMEMORY;
    medium->tymed = TYMED_HGLOBAL;
    return S_OK;
  } else if (id == FormatOf(TShellFormat::FileName) && Paths(paths)) {
    Append(bytes, paths[0].c_str(), paths[0].size() + 1);
  } else {
    return DV_E_FORMATETC;
  }
  return BlockMedium(bytes, medium);
}

std::vector<FORMATETC> TShellData::Formats() {
  std::vector<FORMATETC> formats;
  const auto add = [&](CLIPFORMAT id, DWORD tymed) {
    formats.push_back({id, nullptr, DVASPECT_CONTENT, -1, tymed});
  };
  if (!fChildren.empty()) {
    add(FormatOf(TShellFormat::IdList), TYMED_HGLOBAL);
    TStringArray paths;
    if (Paths(paths)) {
      add(CF_HDROP, TYMED_HGLOBAL);
      add(FormatOf(TShellFormat::FileName), TYMED_HGLOBAL);
    }
    add(FormatOf(TShellFormat::FileDescriptor), TYMED_HGLOBAL);
    add(FormatOf(TShellFormat::FileContents), TYMED_ISTREAM);
  }
  const std::lock_guard lock(fLock);
  for (const TKeptData& kept : fKept) {
    const bool known = std::any_of(formats.begin(), formats.end(), [&](const FORMATETC& other) {
      return Matches(kept.Format, other);
    });
    if (!known) formats.push_back(kept.Format);
  }
  return formats;
}

// --- the interface --------------------------------------------------------------------

// What was set goes before what would be rendered.
bool TShellData::FindKept(const FORMATETC& format, STGMEDIUM* medium, HRESULT& result) {
  const std::lock_guard lock(fLock);
  for (const TKeptData& kept : fKept) {
    if (!Matches(format, kept.Format) || !(format.tymed & kept.Format.tymed)) continue;
    result = medium ? CopyMedium(kept.Medium.Get(), medium) : S_OK;
    return true;
  }
  return false;
}

HRESULT TShellData::GetData(FORMATETC* format, STGMEDIUM* medium) {
  return PortableCall("IDataObject::GetData", [&]() -> HRESULT {
    if (!format || !medium) return E_POINTER;
    *medium = {};
    HRESULT result = S_OK;
    if (FindKept(*format, medium, result)) return result;
    if (format->dwAspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
    if (!fChildren.empty()) result = Render(*format, medium);
    const bool lacks = fChildren.empty() || result == DV_E_FORMATETC;
    if (lacks) return fInner ? fInner->GetData(format, medium) : DV_E_FORMATETC;
    return result;
  });
}

HRESULT TShellData::QueryGetData(FORMATETC* format) {
  return PortableCall("IDataObject::QueryGetData", [&]() -> HRESULT {
    if (!format) return E_POINTER;
    HRESULT result = S_OK;
    if (FindKept(*format, nullptr, result)) return result;
    for (const FORMATETC& known : Formats()) {
      if (known.cfFormat != format->cfFormat) continue;
      if (format->dwAspect != known.dwAspect) return DV_E_DVASPECT;
      return format->tymed & known.tymed ? S_OK : DV_E_TYMED;
    }
    return fInner ? fInner->QueryGetData(format) : DV_E_FORMATETC;
  });
}

HRESULT TShellData::SetData(FORMATETC* format, STGMEDIUM* medium, BOOL release) {
  return PortableCall("IDataObject::SetData", [&]() -> HRESULT {
    if (!format || !medium) return E_POINTER;
    if (medium->tymed != TYMED_HGLOBAL && medium->tymed != TYMED_ISTREAM) return DV_E_TYMED;
    STGMEDIUM owned = *medium;
    const HRESULT result = release ? S_OK : CopyMedium(*medium, &owned);
    if (FAILED(result)) return result;
    TKeptData kept{*format, TMedium(owned)};
    kept.Format.tymed = owned.tymed;
    kept.Format.ptd = nullptr;
    // What was set before may be the last reference to a foreign object: it goes after the lock.
    const std::lock_guard lock(fLock);
    for (TKeptData& other : fKept) {
      if (!Matches(other.Format, kept.Format) || other.Format.lindex != kept.Format.lindex)
        continue;
      std::swap(other, kept);
      return S_OK;
    }
    fKept.push_back(std::move(kept));
    return S_OK;
  });
}

HRESULT TShellData::EnumFormatEtc(DWORD direction, IEnumFORMATETC** result) {
  return PortableCall("IDataObject::EnumFormatEtc", [&]() -> HRESULT {
    if (!result) return E_POINTER;
    *result = nullptr;
    if (direction != DATADIR_GET) return E_NOTIMPL;
    *result = MakeEnumFormats(Formats()).Detach();
    return S_OK;
  });
}

}  // namespace

Ref<IDataObject> MakeDataObject(PCIDLIST_ABSOLUTE folder,
                                const std::vector<PCUIDLIST_RELATIVE>& children,
                                IDataObject* inner) {
  return MakeRef<TShellData>(folder, children, inner);
}

Ref<IDataObject> MakeTextData(TStringView text) {
  const Ref<IDataObject> data = MakeDataObject(nullptr, {});
  const TString ended(text);
  const HRESULT result = WriteData(*data, CF_UNICODETEXT, ended.c_str(), (ended.size() + 1) * 2);
  return SUCCEEDED(result) ? data : nullptr;
}

}  // namespace oak
