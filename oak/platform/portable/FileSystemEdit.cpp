// Making, renaming and removing objects of a directory.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "oak/platform/portable/FileSystemSource.h"
#include "oak/platform/portable/FileTransfer.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/SystemDescriptor.h"

namespace oak {
namespace {

// S_OK if an object may get the name.
HRESULT CheckName(TStringView name) {
  const std::string native = NameToNative(name);
  if (native.size() > NAME_MAX) return HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE);
  return IsValidFileName(name) ? S_OK : HRESULT_FROM_WIN32(ERROR_INVALID_NAME);
}

bool Exists(const std::string& native) {
  struct stat info;
  return ::lstat(native.c_str(), &info) == 0;
}

// --- renaming ----------------------------------------------------------------

// On file systems that ignore case the new name of a mere case change is taken,
// by the object itself.
bool IsSameObject(const std::string& from, const std::string& to) {
  struct stat a, b;
  return ::lstat(from.c_str(), &a) == 0 && ::lstat(to.c_str(), &b) == 0 && a.st_dev == b.st_dev &&
         a.st_ino == b.st_ino && (S_ISDIR(a.st_mode) || a.st_nlink == 1);
}

HRESULT MoveTo(const std::string& from, const std::string& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return S_OK;
  if (errno == EEXIST) {
    if (!IsSameObject(from, to)) return HRESULT_FROM_WIN32(ERROR_ALREADY_EXISTS);
  } else if (errno == EINVAL || errno == ENOSYS) {  // the file system knows no such flag
    if (Exists(to) && !IsSameObject(from, to)) return HRESULT_FROM_WIN32(ERROR_ALREADY_EXISTS);
  } else {
    return ResultFromErrno(errno);
  }
  return ::rename(from.c_str(), to.c_str()) == 0 ? S_OK : ResultFromErrno(errno);
}

// --- making --------------------------------------------------------------------

HRESULT MakeFolder(const std::string& native, bool replace) {
  if (::mkdir(native.c_str(), 0777) == 0) return S_OK;
  if (errno != EEXIST) return ResultFromErrno(errno);
  struct stat info;
  const bool folder = ::lstat(native.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
  return replace && folder ? S_OK : STG_E_FILEALREADYEXISTS;
}

HRESULT MakeFile(const std::string& native, bool replace) {
  struct stat info;
  if (replace && ::lstat(native.c_str(), &info) == 0 && !S_ISREG(info.st_mode))
    return STG_E_FILEALREADYEXISTS;
  const int how = replace ? O_TRUNC | O_NOFOLLOW : O_EXCL;
  const TDescriptor file(::open(native.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | how, 0666));
  if (file.Get() >= 0) return S_OK;
  return errno == EEXIST ? STG_E_FILEALREADYEXISTS : ResultFromErrno(errno);
}

HRESULT PathMissing(HRESULT result) {
  return result == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)
             ? HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND)
             : result;
}

}  // namespace

HRESULT TFileSystemFolder::Create(TStringView name, bool folder, bool replace, TPidl& element) {
  HRESULT result = CheckName(name);
  if (FAILED(result)) return result;
  if (Native().empty()) return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
  const std::string native = NativeChild(name);
  result = folder ? MakeFolder(native, replace) : MakeFile(native, replace);
  if (FAILED(result)) return PathMissing(result);
  element = MakeFileElement(folder ? DWORD{feFolder} : 0, name);
  return S_OK;
}

HRESULT TFileSystemFolder::Rename(PCUITEMID_CHILD element, TStringView name, TNameForm form,
                                  TPidl& renamed) {
  TFileElement file;
  if (!ReadFileElement(element, file)) return E_INVALIDARG;
  TString target(name);
  if (form != TNameForm::Parsing && !name.empty() && !(file.Flags & feFolder) &&
      IsLinkName(file.Name))
    target += file.Name.substr(file.Name.size() - 4);
  HRESULT result = CheckName(target);
  if (FAILED(result)) return result;
  const std::string from = NativeChild(file.Name);
  if (from.empty() || !Exists(from)) return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  if (target != file.Name) result = MoveTo(from, NativeChild(target));
  if (FAILED(result)) return result;
  renamed = MakeFileElement(file.Flags, target);
  return S_OK;
}

HRESULT TFileSystemFolder::Destroy(PCUITEMID_CHILD element) {
  TFileElement file;
  if (!ReadFileElement(element, file)) return E_INVALIDARG;
  const std::string name = NameToNative(file.Name);
  if (name.empty() || Native().empty()) return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
  const int error = RemoveTree(JoinNative(fNative, name));
  return error == 0 ? S_OK : ResultFromErrno(error);
}

}  // namespace oak
