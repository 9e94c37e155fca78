// Open files.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "oak/platform/portable/FileStream.h"
#include "oak/platform/portable/SystemDescriptor.h"
#include "oak/platform/portable/SystemFiles.h"
#include "oak/platform/portable/SystemHandles.h"

namespace oak {
namespace {

constexpr DWORD TruncateExisting = 5;

struct TOpenFile : TKernelObject {
  explicit TOpenFile(int descriptor) : Descriptor(descriptor) {}
  TDescriptor Descriptor;
};

int AccessFlags(DWORD access) {
  const bool reads = (access & GENERIC_READ) != 0;
  if ((access & GENERIC_WRITE) == 0) return O_RDONLY;
  return reads ? O_RDWR : O_WRONLY;
}

// The native flags of a disposition, -1 for an unknown one.
int DispositionFlags(DWORD disposition) {
  switch (disposition) {
    case CREATE_NEW:
      return O_CREAT | O_EXCL;
    case CREATE_ALWAYS:
      return O_CREAT | O_TRUNC;
    case OPEN_EXISTING:
      return 0;
    case OPEN_ALWAYS:
      return O_CREAT;
    case TruncateExisting:
      return O_TRUNC;
    default:
      return -1;
  }
}

// Directories open only for those who say that they know what they do; links
// themselves and objects that are only asked about are not opened for reading.
int SpecialFlags(const std::optional<TFileInfo>& info, DWORD access, DWORD flags) {
  const bool link = info && info->IsSymlink() && (flags & FILE_FLAG_OPEN_REPARSE_POINT);
  if (link) return O_PATH | O_NOFOLLOW;
  return access == 0 ? O_PATH : 0;
}

HANDLE STDAPICALLTYPE CreateFileW(LPCWSTR path, DWORD access, DWORD, SECURITY_ATTRIBUTES*,
                                  DWORD disposition, DWORD flags, HANDLE) {
  return SystemCall<HANDLE>(INVALID_HANDLE_VALUE, [&]() -> HANDLE {
    const int create = DispositionFlags(disposition);
    if (create < 0) return FailWith(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
    const auto native = NativeForCall(path);
    if (!native) return INVALID_HANDLE_VALUE;
    const auto info = GetFileInfo(*native);
    const bool directory = info && info->IsDirectory();
    if (directory && ((flags & FILE_FLAG_BACKUP_SEMANTICS) == 0 || (access & GENERIC_WRITE)))
      return FailWith(ERROR_ACCESS_DENIED, INVALID_HANDLE_VALUE);
    const bool opens = create == 0 || (disposition == OPEN_ALWAYS && info);
    const int special = opens ? SpecialFlags(info, access, flags) : 0;
    const int open = special ? special : AccessFlags(access) | create;
    // A pipe would hold the caller until its other end is opened.
    const int descriptor = ::open(native->c_str(), open | O_CLOEXEC | O_NONBLOCK, 0666);
    if (descriptor < 0) {
      FailNative(*native, errno);
      return INVALID_HANDLE_VALUE;
    }
    const bool existed = info && (disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS);
    auto file = std::make_shared<TOpenFile>(descriptor);
    detail::SetLastErrorDirect(existed ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return TSystemHandles::Instance().Add(std::move(file));
  });
}

// One read or write; interrupted ones are begun again. The file has the current
// position, which threads share.
template <class TCall>
BOOL Transfer(HANDLE handle, DWORD size, DWORD* done, const OVERLAPPED* overlapped, TCall&& call) {
  return SystemCall<BOOL>(FALSE, [&] {
    if (done) *done = 0;
    const auto file = TSystemHandles::Instance().Find<TOpenFile>(handle);
    if (!file) return FailWith(ERROR_INVALID_HANDLE, FALSE);
    if (overlapped) return FailWith(ERROR_NOT_SUPPORTED, FALSE);
    ssize_t count = 0;
    do {
      count = call(file->Descriptor.Get(), size);
    } while (count < 0 && errno == EINTR);
    if (count < 0) return FailWith(Win32FromErrno(errno), FALSE);
    if (done) *done = static_cast<DWORD>(count);
    return TRUE;
  });
}

BOOL STDAPICALLTYPE ReadFile(HANDLE handle, LPVOID buffer, DWORD size, DWORD* read,
                             OVERLAPPED* overlapped) {
  if (!buffer && size) return FailWith(ERROR_NOACCESS, FALSE);
  return Transfer(handle, size, read, overlapped,
                  [&](int file, DWORD count) { return ::read(file, buffer, count); });
}

// Writes all or fails; a file takes less than asked for only when it is full.
BOOL STDAPICALLTYPE WriteFile(HANDLE handle, LPCVOID buffer, DWORD size, DWORD* written,
                              OVERLAPPED* overlapped) {
  if (!buffer && size) return FailWith(ERROR_NOACCESS, FALSE);
  const auto* bytes = static_cast<const BYTE*>(buffer);
  DWORD total = 0;
  if (written) *written = 0;
  do {
    DWORD count = 0;
    const bool good = Transfer(handle, size - total, &count, overlapped, [&](int file, DWORD rest) {
      return ::write(file, bytes + total, rest);
    });
    if (!good) return FALSE;
    if (count == 0 && size > 0) return FailWith(ERROR_DISK_FULL, FALSE);
    total += count;
    if (written) *written = total;
  } while (total < size);
  return TRUE;
}

BOOL STDAPICALLTYPE FlushFileBuffers(HANDLE handle) {
  return SystemCall<BOOL>(FALSE, [&] {
    const auto file = TSystemHandles::Instance().Find<TOpenFile>(handle);
    if (!file) return FailWith(ERROR_INVALID_HANDLE, FALSE);
    // A pipe or a device holds nothing back.
    if (fsync(file->Descriptor.Get()) == 0 || errno == EINVAL || errno == EROFS) return TRUE;
    return FailWith(Win32FromErrno(errno), FALSE);
  });
}

BOOL STDAPICALLTYPE CloseHandle(HANDLE handle) {
  return SystemCall<BOOL>(FALSE, [&] {
    const bool closed = TSystemHandles::Instance().Close<TKernelObject>(handle);
    return closed ? TRUE : FailWith(ERROR_INVALID_HANDLE, FALSE);
  });
}

// Without STGM_CREATE, `create` tells whether a new file is wanted or one that is
// there.
HRESULT STDAPICALLTYPE SHCreateStreamOnFileEx(LPCWSTR path, DWORD mode, DWORD, BOOL create,
                                              IStream* reserved, IStream** stream) {
  if (!stream) return E_INVALIDARG;
  *stream = nullptr;
  if (!path || reserved) return E_INVALIDARG;
  return SystemCall<HRESULT>(E_OUTOFMEMORY, [&]() -> HRESULT {
    DWORD error = ERROR_PATH_NOT_FOUND;
    const auto native = NativePath(path, &error);
    if (!native) return HRESULT_FROM_WIN32(error);
    if ((mode & STGM_CREATE) == 0 && create) {
      if (GetFileInfo(*native)) return HRESULT_FROM_WIN32(ERROR_FILE_EXISTS);
      mode |= STGM_CREATE;
    }
    return OpenFileStream(*native, path, mode, stream);
  });
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemStreams(TApi& api) {
  BIND(CreateFileW);
  BIND(ReadFile);
  BIND(WriteFile);
  BIND(FlushFileBuffers);
  BIND(CloseHandle);
  BIND(SHCreateStreamOnFileEx);
}
#undef BIND

}  // namespace oak
