#include "oak/platform/portable/ShellVerbs.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "oak/platform/Api.h"
#include "oak/platform/portable/FileSystemSource.h"
#include "oak/platform/portable/PortableClasses.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/PortableKnownFolders.h"
#include "oak/platform/portable/PortableMemory.h"
#include "oak/platform/portable/ShellChanges.h"
#include "oak/platform/portable/ShellData.h"
#include "oak/platform/portable/ShellParse.h"
#include "oak/platform/portable/ShellPidl.h"
#include "oak/platform/portable/SystemDescriptor.h"
#include "oak/platform/portable/TrashCan.h"

namespace oak {
namespace {

TPidl TrashList() {
  TPidl list;
  static_cast<void>(ParseAbsolute(u"::{645FF040-5081-101B-9F08-00AA002F954E}", {}, list));
  return list;
}

bool IsRealFolder(const std::string& native) {
  struct stat info;
  return ::lstat(native.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

}  // namespace

// --- objects ------------------------------------------------------------------------

TString TShellObject::Name(TNameForm form) const {
  TString name;
  return SUCCEEDED(Folder->GetName(Child.Get(), form, name)) ? name : TString();
}

std::string TShellObject::Native() const {
  const TString path = Path();
  if (path.empty()) return {};
  std::string native = NativePath(path).value_or(std::string());
  const auto kind = ElementKind(Child.Get());
  if (native.empty() || (kind != ekFileSystem && kind != ekTrash)) return native;
  const std::string name = NameToNative(ExtractFileName(path));
  return native.ends_with('/' + name) ? native
                                      : JoinNative(native.substr(0, native.rfind('/')), name);
}

DWORD TShellObject::Attributes(DWORD mask) const {
  DWORD attributes = 0;
  return SUCCEEDED(Folder->GetAttributes(Child.Get(), mask, attributes)) ? attributes & mask : 0;
}

std::string NativeOf(const TFolderNode& folder) {
  const TString path = ShownDirectory(folder);
  return path.empty() ? std::string() : NativePath(path).value_or(std::string());
}

bool IsTrash(const TFolderNode& folder) { return folder.ClassId() == RecycleBinClassId; }

namespace {

// The known folder that is to be there; nil for other directories.
const TKnownFolder* MissingKnownFolder(const std::string& directory) {
  if (::access(directory.c_str(), F_OK) == 0 || errno != ENOENT) return nullptr;
  return FindKnownFolderByPath(WindowsPath(directory), TKnownFolderMatch::Exact);
}

}  // namespace

bool TakesObjects(const std::string& directory) {
  return !directory.empty() &&
         (::access(directory.c_str(), W_OK) == 0 || MissingKnownFolder(directory));
}

std::string DirectoryToFill(const TFolderNode& folder) {
  const std::string directory = NativeOf(folder);
  if (directory.empty()) return directory;
  if (const TKnownFolder* known = MissingKnownFolder(directory))
    static_cast<void>(EnsureKnownFolder(*known, true));
  return directory;
}

DWORD CommonOf(const TShellObjects& objects, DWORD mask) {
  for (const TShellObject& object : objects) {
    mask &= object.Attributes(mask);
    if (mask == 0) break;
  }
  return mask;
}

TShellObjects ObjectsOf(const std::vector<TPidl>& lists) {
  TShellObjects objects;
  for (const TPidl& list : lists) {
    Ref<TFolderNode> parent;
    PCUITEMID_CHILD child = nullptr;
    if (SUCCEEDED(BindParent(TFolderNode::Desktop(), list.Get(), parent, child)) &&
        ElementKind(child))
      objects.push_back({parent, CopyElement(child)});
  }
  return objects;
}

Ref<IDataObject> DataOf(const TShellObjects& objects) {
  std::vector<PCUIDLIST_RELATIVE> children;
  bool together = true;
  for (const TShellObject& object : objects) {
    children.push_back(object.Child.Get());
    together = together && object.Folder->PidlBytes() == objects[0].Folder->PidlBytes() &&
               std::memcmp(object.Folder->Pidl(), objects[0].Folder->Pidl(),
                           object.Folder->PidlBytes()) == 0;
  }
  if (together && !objects.empty()) return MakeDataObject(objects[0].Folder->Pidl(), children);
  std::vector<TPidl> lists;
  children.clear();
  for (const TShellObject& object : objects) {
    lists.push_back(object.Pidl());
    children.push_back(lists.back().Get());
  }
  return MakeDataObject(nullptr, children);
}

// --- a run of a command ----------------------------------------------------------------

TTransferGoesOn TVerbRun::GoesOn() {
  if (!fHooks->OnProgress) return {};
  return [this](const std::string& native, std::uint64_t bytes) {
    try {
      if (!fCancelled && !fHooks->OnProgress(WindowsPath(native), bytes)) fCancelled = true;
    } catch (...) {  // half-made copies are to be taken away first
      fCancelled = true;
      fThrown = std::current_exception();
    }
    return !fCancelled;
  };
}

void TVerbRun::Fail(HRESULT code, const TString& place) {
  if (fFailure.Places.empty()) fFailure.Code = code;
  fFailure.Places.push_back(place);
}

HRESULT ResultOfTransfer(int error) {
  if (error == ENOSPC || error == EDQUOT) return HRESULT_FROM_WIN32(ERROR_DISK_FULL);
  if (error == ENOTUNIQ) return HRESULT_FROM_WIN32(ERROR_ALREADY_EXISTS);
  return ResultFromErrno(error);
}

void TVerbRun::FailNative(int error, const TString& place) {
  if (error == 0 || (error == ECANCELED && fCancelled)) return;
  Fail(ResultOfTransfer(error), place);
}

HRESULT TVerbRun::Finish() {
  if (fThrown) std::rethrow_exception(std::exchange(fThrown, nullptr));
  if (HasFailed() && fHooks->OnFailure && !(fCall.Mask & CMIC_MASK_FLAG_NO_UI)) {
    fFailure.Verb = fCall.Verb;
    fHooks->OnFailure(fFailure);
  }
  if (HasFailed()) return fFailure.Code;
  return fCancelled ? HRESULT_FROM_WIN32(ERROR_CANCELLED) : S_OK;
}

// --- the clipboard -----------------------------------------------------------------------

HRESULT CopyToClipboard(const TShellObjects& objects, bool cut) {
  const Ref<IDataObject> data = DataOf(objects);
  const DWORD effect = cut ? DROPEFFECT_MOVE : DROPEFFECT_COPY | DROPEFFECT_LINK;
  const HRESULT result = WriteEffect(*data, TShellFormat::PreferredEffect, effect);
  return SUCCEEDED(result) ? Api().OleSetClipboard(data.Get()) : result;
}

HRESULT CopyPaths(const TShellObjects& objects) {
  TStringArray lines;
  for (const TShellObject& object : objects)
    lines.push_back(u'"' + object.Name(TNameForm::AbsoluteEditing) + u'"');
  const Ref<IDataObject> data = MakeTextData(Join(lines, u"\r\n"));
  return data ? Api().OleSetClipboard(data.Get()) : E_OUTOFMEMORY;
}

// --- deleting and restoring ------------------------------------------------------------------

namespace {

// 0 or a native error number.
int DeleteFile(const std::string& native, bool forGood, TVerbRun& run) {
  if (IsTrashEntry(native)) return RemoveFromTrash(native, run.GoesOn());
  if (forGood) return RemoveTree(native, run.GoesOn());
  std::string inTrash;
  return MoveToTrash(native, run.GoesOn(), inTrash);
}

void DeleteObject(const TShellObject& object, bool forGood, TVerbRun& run) {
  const TString shown = object.Name(TNameForm::AbsoluteEditing);
  if (!object.Attributes(SFGAO_CANDELETE)) return run.Fail(E_ACCESSDENIED, shown);
  const TPidl pidl = object.Pidl();
  const bool isFolder = object.Attributes(SFGAO_FOLDER) != 0;
  const std::string native = object.Native();
  if (native.empty()) {
    const HRESULT result = object.Folder->SourceOf(object.Child.Get()).Destroy(object.Child.Get());
    if (FAILED(result)) return run.Fail(result, shown);
  } else if (const int error = DeleteFile(native, forGood, run)) {
    run.FailNative(error, shown);
    // What a removal left behind is less than it was.
    struct stat info;
    if (forGood && isFolder && ::lstat(native.c_str(), &info) == 0)
      AnnounceChange(SHCNE_UPDATEDIR, pidl.Get());
    return;
  }
  AnnounceChange(isFolder ? SHCNE_RMDIR : SHCNE_DELETE, pidl.Get());
}

}  // namespace

HRESULT DeleteObjects(const TShellObjects& objects, const TVerbCall& call) {
  TVerbRun run(call);
  bool trashed = false;
  for (const TShellObject& object : objects) {
    if (run.IsCancelled()) break;
    DeleteObject(object, call.ShiftDown(), run);
    trashed = trashed || (!call.ShiftDown() && !object.Path().empty());
  }
  if (trashed) AnnounceChange(SHCNE_UPDATEDIR, TrashList().Get());
  return run.Finish();
}

HRESULT RestoreObjects(const TShellObjects& objects, const TVerbCall& call) {
  TVerbRun run(call);
  for (const TShellObject& object : objects) {
    if (run.IsCancelled()) break;
    const std::string native = object.Native();
    const bool isFolder = IsRealFolder(native);
    const TPidl pidl = object.Pidl();
    std::string restored;
    const int error = RestoreFromTrash(native, run.GoesOn(), restored);
    run.FailNative(error, object.Name(TNameForm::Display));
    if (error != 0) continue;
    AnnounceChange(isFolder ? SHCNE_RMDIR : SHCNE_DELETE, pidl.Get());
    AnnouncePath(SHCNE_CREATE, isFolder, WindowsPath(restored));
  }
  return run.Finish();
}

HRESULT EmptyTrash(const TVerbCall& call) {
  TVerbRun run(call);
  const TPidl trash = TrashList();
  Ref<TFolderNode> node;
  HRESULT result = TFolderNode::FromPidl(trash.Get(), node);
  Ref<IFolderCursor> cursor;
  if (SUCCEEDED(result))
    result = node->Contents().Enumerate(
        SHCONTF_FOLDERS | SHCONTF_NONFOLDERS | SHCONTF_INCLUDEHIDDEN | SHCONTF_INCLUDESUPERHIDDEN,
        cursor);
  TShellObjects objects;
  PCUITEMID_CHILD element = nullptr;
  while (SUCCEEDED(result) && (result = cursor->Next(&element)) == S_OK)
    objects.push_back({node, CopyElement(element)});
  if (FAILED(result)) run.Fail(result, u"Recycle Bin");
  for (const TShellObject& object : objects)
    if (!run.IsCancelled())
      run.FailNative(RemoveFromTrash(object.Native(), run.GoesOn()),
                     object.Name(TNameForm::Display));
  AnnounceChange(SHCNE_UPDATEDIR, trash.Get());
  return run.Finish();
}

// --- making ----------------------------------------------------------------------------------

HRESULT MakeNewObject(const TFolderNode& folder, TStringView name, bool isFolder,
                      const TVerbCall& call) {
  TVerbRun run(call);
  const std::string directory = DirectoryToFill(folder);
  std::string made;
  int error = ENOTDIR;
  if (!directory.empty())
    error = AtFreeName(directory, NameToNative(name), isFolder, TFreeName::Number, made,
                       [&](const std::string& path) {
                         if (isFolder) return ::mkdir(path.c_str(), 0777) == 0 ? 0 : errno;
                         constexpr int how = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
                         const TDescriptor file(::open(path.c_str(), how, 0666));
                         return file.Get() >= 0 ? 0 : errno;
                       });
  if (error != 0)
    run.FailNative(error, TString(name));
  else
    AnnouncePath(SHCNE_CREATE, isFolder, WindowsPath(made));
  return run.Finish();
}

namespace {

HRESULT SaveShortcut(const TShellObject& object, const std::string& path) {
  const TPortableFactory factory = FindPortableClass(CLSID_ShellLink);
  if (!factory) return REGDB_E_CLASSNOTREG;
  Ref<IShellLinkW> link;
  HRESULT result = factory(IidOf<IShellLinkW>(), link.PutVoid());
  if (SUCCEEDED(result)) result = link->SetIDList(object.Pidl().Get());
  const auto file = link.As<IPersistFile>();
  if (SUCCEEDED(result)) result = file ? file->Save(W(WindowsPath(path)), FALSE) : E_NOINTERFACE;
  return result;
}

// A name that a file may have, of a name that is shown.
std::string FileNameOf(TString name) {
  std::erase_if(
      name, [](char16_t c) { return TStringView(u"\\/:*?\"<>|").find(c) != TStringView::npos; });
  return NameToNative(name.empty() ? u"Shortcut" : name);
}

/// `pinned`: without the words that tell a shortcut from what it leads to.
HRESULT MakeShortcut(const TShellObject& object, const std::string& directory, bool pinned) {
  HRESULT result = S_OK;
  std::string made;
  const std::string name = FileNameOf(object.Name(TNameForm::Display));
  const auto save = [&](const std::string& path) {
    // Takes the name; the shortcut then replaces the empty file.
    const TDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (file.Get() < 0) return errno;
    result = SaveShortcut(object, path);
    if (FAILED(result)) ::unlink(path.c_str());
    return 0;
  };
  const int error = AtFreeName(directory, pinned ? name + ".lnk" : name, false,
                               pinned ? TFreeName::Number : TFreeName::Shortcut, made, save);
  if (error != 0) return ResultFromErrno(error);
  if (SUCCEEDED(result)) AnnouncePath(SHCNE_CREATE, false, WindowsPath(made));
  return result;
}

// Into the directory, or that of each object if it is empty.
HRESULT MakeAllShortcuts(const TShellObjects& objects, const std::string& directory, bool pinned,
                         const TVerbCall& call) {
  TVerbRun run(call);
  for (const TShellObject& object : objects) {
    std::string place = directory;
    if (place.empty()) place = NativeOf(*object.Folder);
    // What lies in no directory gets its shortcut on the desktop.
    if (place.empty()) place = NativePath(DesktopDirectory()).value_or(std::string());
    const HRESULT result = place.empty() ? HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND)
                                         : MakeShortcut(object, place, pinned);
    if (FAILED(result)) run.Fail(result, object.Name(TNameForm::AbsoluteEditing));
  }
  return run.Finish();
}

}  // namespace

HRESULT MakeShortcuts(const TShellObjects& objects, const std::string& directory,
                      const TVerbCall& call) {
  return MakeAllShortcuts(objects, directory, false, call);
}

HRESULT PinObjects(const TShellObjects& objects, const TVerbCall& call) {
  TTaskMemory<WCHAR> path;
  const HRESULT result =
      Api().SHGetKnownFolderPath(FOLDERID_Links, 0x8000 /* KF_FLAG_CREATE */, nullptr, path.Put());
  const auto directory = SUCCEEDED(result) ? NativePath(FromW(path.Get())) : std::nullopt;
  if (directory) return MakeAllShortcuts(objects, *directory, true, call);
  TVerbRun run(call);
  run.Fail(FAILED(result) ? result : E_FAIL, u"Links");
  return run.Finish();
}

}  // namespace oak
