// Files come into a folder: by the clipboard, or by a drop.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <map>

#include "oak/platform/Api.h"
#include "oak/platform/portable/FileSystemSource.h"
#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/PortableMemory.h"
#include "oak/platform/portable/ShellChanges.h"
#include "oak/platform/portable/ShellData.h"
#include "oak/platform/portable/ShellVerbs.h"
#include "oak/platform/portable/SystemDescriptor.h"
#include "oak/platform/portable/TrashCan.h"

namespace oak {
namespace {

std::string ParentOf(const std::string& native) {
  return native.substr(0, std::max<std::size_t>(native.rfind('/'), 1));
}

bool SameDirectory(const std::string& a, const std::string& b) {
  struct stat one, two;
  return ::stat(a.c_str(), &one) == 0 && ::stat(b.c_str(), &two) == 0 && one.st_dev == two.st_dev &&
         one.st_ino == two.st_ino;
}

// Whether a drive or share leads there.
bool IsDriveOrShare(const std::string& native) {
  const auto config = PortableConfig();
  const auto leads = [&](const auto& place) { return place.Directory == native; };
  return std::any_of(config->Drives.begin(), config->Drives.end(), leads) ||
         std::any_of(config->Shares.begin(), config->Shares.end(), leads);
}

/// Brings files of the file system to one directory.
class TFileTransfer {
 public:
  TFileTransfer(const std::string& directory, bool move, TVerbRun& run)
      : fDirectory(directory), fMove(move), fRun(run) {}

  void Transfer(const TString& path) {
    DWORD code = ERROR_PATH_NOT_FOUND;
    const auto native = NativePath(path, &code);
    struct stat info;
    if (!native) return fRun.Fail(HRESULT_FROM_WIN32(code), path);
    if (::lstat(native->c_str(), &info) != 0) return fRun.FailNative(errno, path);
    // What a drive or share leads to stays where it is, and may have no name.
    if (NameOf(*native).empty() || (fMove && IsDriveOrShare(*native)))
      return fRun.Fail(E_ACCESSDENIED, path);
    const bool isFolder = S_ISDIR(info.st_mode),
               stays = SameDirectory(ParentOf(*native), fDirectory);
    if (fMove && stays) return;
    if (isFolder && IsInside(fDirectory, *native)) return fRun.Fail(IntoItself, path);
    fMove ? Move(*native, path, isFolder) : Copy(*native, path, isFolder, stays);
  }

 private:
  static std::string NameOf(const std::string& native) {
    return native.substr(native.rfind('/') + 1);
  }

  void Copy(const std::string& native, const TString& path, bool isFolder, bool stays) {
    std::string made;
    const int error = AtFreeName(
        fDirectory, NameOf(native), isFolder, stays ? TFreeName::Copy : TFreeName::Number, made,
        [&](const std::string& place) { return CopyTree(native, place, fRun.GoesOn()); });
    fRun.FailNative(error, path);
    if (error == 0) AnnouncePath(SHCNE_CREATE, isFolder, WindowsPath(made));
  }

  void Move(const std::string& native, const TString& path, bool isFolder) {
    std::string made;
    bool copied = false;
    const int error = AtFreeName(
        fDirectory, NameOf(native), isFolder, TFreeName::Number, made,
        [&](const std::string& place) { return MoveTree(native, place, fRun.GoesOn(), &copied); });
    fRun.FailNative(error, path);
    if (copied) AnnouncePath(SHCNE_CREATE, isFolder, WindowsPath(made));
    if (error == 0 && !copied)
      AnnouncePath(SHCNE_RENAMEITEM, isFolder, path, WindowsPath(made));
    else if (error == 0)
      AnnouncePath(SHCNE_DELETE, isFolder, path);
    else if (copied)  // some of the source is still there
      AnnouncePath(isFolder ? SHCNE_UPDATEDIR : SHCNE_UPDATEITEM, isFolder, path);
    if (error == 0 && IsTrashEntry(native)) ForgetTrashEntry(native);
  }

  const std::string fDirectory;
  const bool fMove;
  TVerbRun& fRun;
};

// --- files that exist as streams only ------------------------------------------------------

/// Writes what a data object describes (FileGroupDescriptorW) into a directory.
class TDescribedTransfer {
 public:
  TDescribedTransfer(IDataObject& data, const std::string& directory, TVerbRun& run)
      : fData(data), fDirectory(directory), fRun(run) {}

  HRESULT Run() {
    std::vector<BYTE> bytes;
    if (!ReadData(fData, FormatOf(TShellFormat::FileDescriptor), bytes)) return DV_E_FORMATETC;
    UINT count = 0;
    if (bytes.size() < sizeof count) return E_INVALIDARG;
    std::memcpy(&count, bytes.data(), sizeof count);
    if (count > (bytes.size() - sizeof count) / sizeof(FILEDESCRIPTORW)) return E_INVALIDARG;
    for (UINT i = 0; i < count && !fRun.IsCancelled(); ++i) {
      FILEDESCRIPTORW line;
      std::memcpy(&line, bytes.data() + sizeof count + i * sizeof line, sizeof line);
      line.cFileName[std::size(line.cFileName) - 1] = 0;
      Take(static_cast<LONG>(i), line);
    }
    return S_OK;
  }

 private:
  // The first name of a path gets a free name; what lies below follows it. A folder that was there
  // before is none of the data's: its name may be that of a link that leads out.
  void Take(LONG index, const FILEDESCRIPTORW& line) {
    const TString name = FromW(line.cFileName);
    const TStringArray parts = Split(name, u'\\');
    const bool isFolder =
        (line.dwFlags & FD_ATTRIBUTES) && (line.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY);
    std::string place = fDirectory;
    for (std::size_t i = 0; i < parts.size(); ++i) {
      const std::string native = NameToNative(parts[i]);
      // A name may not lead out of the folder.
      if (native.empty() || native == "." || native == "..")
        return fRun.Fail(HRESULT_FROM_WIN32(ERROR_INVALID_NAME), name);
      if (i + 1 == parts.size()) return Make(index, line, place, native, isFolder, i == 0, name);
      const auto top = i == 0 ? fTops.find(parts[0]) : fTops.end();
      if (i == 0 && top == fTops.end())
        return fRun.Fail(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND), name);
      place = i == 0 ? top->second : JoinNative(place, native);
    }
  }

  void Make(LONG index, const FILEDESCRIPTORW& line, const std::string& directory,
            const std::string& native, bool isFolder, bool top, const TString& name) {
    std::string made;
    HRESULT result = S_OK;
    const auto make = [&](const std::string& path) {
      if (isFolder) return ::mkdir(path.c_str(), 0777) == 0 ? 0 : errno;
      TDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
      if (file.Get() < 0) return errno;
      result = WriteStream(index, file.Get(), path);
      if (SUCCEEDED(result) && (line.dwFlags & FD_WRITESTIME)) KeepTime(file.Get(), line);
      if (!file.Close() && SUCCEEDED(result)) result = ResultOfTransfer(errno);
      if (FAILED(result)) ::unlink(path.c_str());
      return 0;
    };
    const int error = top ? AtFreeName(directory, native, isFolder, TFreeName::Number, made, make)
                          : make(made = JoinNative(directory, native));
    fRun.FailNative(error, name);
    if (FAILED(result) && !fRun.IsCancelled()) fRun.Fail(result, name);
    if (error != 0 || FAILED(result)) return;
    if (top && isFolder) fTops[name] = made;
    AnnouncePath(SHCNE_CREATE, isFolder, WindowsPath(made));
  }

  static void KeepTime(int file, const FILEDESCRIPTORW& line) {
    std::int64_t seconds = 0;
    std::uint32_t nanoseconds = 0;
    FileTimeToNative(line.ftLastWriteTime, seconds, nanoseconds);
    struct timespec times[2] = {{0, UTIME_OMIT}, {}};
    times[1].tv_sec = static_cast<time_t>(seconds);
    times[1].tv_nsec = static_cast<long>(nanoseconds);
    static_cast<void>(::futimens(file, times));
  }

  HRESULT WriteStream(LONG index, int file, const std::string& path) {
    Ref<IStream> stream;
    const HRESULT opened = OpenFileContents(fData, index, stream);
    if (FAILED(opened)) return opened;
    const TTransferGoesOn goesOn = fRun.GoesOn();
    if (goesOn && !goesOn(path, 0)) return HRESULT_FROM_WIN32(ERROR_CANCELLED);
    std::vector<char> piece(1u << 18);
    for (;;) {
      ULONG got = 0;
      const HRESULT result = stream->Read(piece.data(), static_cast<ULONG>(piece.size()), &got);
      if (FAILED(result)) return result;
      if (got > piece.size()) return E_UNEXPECTED;  // the stream is a stranger's
      if (got == 0) return S_OK;
      if (const int error = WriteContents(file, piece.data(), got)) return ResultOfTransfer(error);
      if (goesOn && !goesOn(path, got)) return HRESULT_FROM_WIN32(ERROR_CANCELLED);
    }
  }

  IDataObject& fData;
  const std::string fDirectory;
  TVerbRun& fRun;
  std::map<TString, std::string> fTops;  // folders at the top by their names, and their places
};

bool HasFiles(IDataObject& data) {
  return HasFormat(data, CF_HDROP) || HasFormat(data, FormatOf(TShellFormat::FileDescriptor));
}

void TransferFiles(const TStringArray& paths, const std::string& directory, bool move,
                   TVerbRun& run) {
  TFileTransfer transfer(directory, move, run);
  for (const TString& path : paths)
    if (!run.IsCancelled()) transfer.Transfer(path);
}

bool IsCut(IDataObject& data) {
  return ReadEffect(data, TShellFormat::PreferredEffect, DROPEFFECT_COPY) == DROPEFFECT_MOVE;
}

HRESULT MoveDataToTrash(IDataObject& data, const TVerbCall& call) {
  TVerbCall trash = call;
  trash.Mask &= ~CMIC_MASK_SHIFT_DOWN;
  TShellObjects objects = ObjectsOf(ListsOf(data));
  // What lies there already is not deleted once more, which would be for good.
  std::erase_if(objects, [](const TShellObject& object) {
    return IsTrash(*object.Folder) || IsTrashEntry(object.Native());
  });
  return DeleteObjects(objects, trash);
}

HRESULT BringData(IDataObject& data, const TFolderNode& folder, DWORD effect,
                  const TVerbCall& call) {
  const std::string directory = DirectoryToFill(folder);
  if (!directory.empty() && effect == DROPEFFECT_LINK)
    return MakeShortcuts(ObjectsOf(ListsOf(data)), directory, call);
  TVerbRun run(call);
  const TStringArray paths = PathsOf(data);
  HRESULT result = S_OK;
  if (directory.empty())
    result = STG_E_ACCESSDENIED;
  else if (paths.empty())
    result = TDescribedTransfer(data, directory, run).Run();
  else
    TransferFiles(paths, directory, effect == DROPEFFECT_MOVE, run);
  if (FAILED(result)) run.Fail(result, {});
  return run.Finish();
}

// The target moves files itself. A source that was told of a move would delete what is left, and
// that may be all of it, where the files were moved to the folder that they lie in.
void TellSource(IDataObject& data, DWORD effect) {
  const DWORD left = effect == DROPEFFECT_MOVE ? DROPEFFECT_NONE : effect;
  static_cast<void>(WriteEffect(data, TShellFormat::PerformedEffect, left));
  static_cast<void>(WriteEffect(data, TShellFormat::LogicalEffect, effect));
  static_cast<void>(WriteEffect(data, TShellFormat::PasteSucceeded, effect));
}

}  // namespace

bool CanPaste(const TFolderNode& folder, bool link) {
  Ref<IDataObject> data;
  if (Api().OleGetClipboard(data.Put()) != S_OK || !data) return false;
  if (IsTrash(folder)) return !link && HasFormat(*data, CF_HDROP) && IsCut(*data);
  if (!TakesObjects(NativeOf(folder))) return false;
  return link ? HasFormat(*data, FormatOf(TShellFormat::IdList)) || HasFormat(*data, CF_HDROP)
              : HasFiles(*data);
}

HRESULT TransferData(IDataObject& data, const TFolderNode& folder, DWORD effect,
                     const TVerbCall& call) {
  const HRESULT result = effect == DROPEFFECT_MOVE && IsTrash(folder)
                             ? MoveDataToTrash(data, call)
                             : BringData(data, folder, effect, call);
  if (result == S_OK) TellSource(data, effect);
  return result;
}

HRESULT PasteInto(const TFolderNode& folder, bool link, const TVerbCall& call) {
  Ref<IDataObject> data;
  HRESULT result = Api().OleGetClipboard(data.Put());
  if (FAILED(result) || !data) return FAILED(result) ? result : E_FAIL;
  // Files alone can be moved: of streams the source would have to be told first.
  const bool move = !link && IsCut(*data) && HasFormat(*data, CF_HDROP);
  const DWORD effect = link ? DROPEFFECT_LINK : move ? DROPEFFECT_MOVE : DROPEFFECT_COPY;
  result = TransferData(*data, folder, effect, call);
  // What was cut can be pasted once.
  if (result == S_OK && move && Api().OleIsCurrentClipboard(data.Get()) == S_OK)
    static_cast<void>(Api().OleSetClipboard(nullptr));
  return result;
}

}  // namespace oak
