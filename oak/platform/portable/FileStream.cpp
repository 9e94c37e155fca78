#include "oak/platform/portable/FileStream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <limits>
#include <memory>
#include <vector>

#include "oak/base/Text.h"
#include "oak/platform/portable/PortableCall.h"
#include "oak/platform/portable/PortableFiles.h"

namespace oak {
namespace {

// Sharing is kept as locks on single bytes far beyond any content: one byte for
// each kind of access that is used and for each that is denied to others.
constexpr off_t kLockBase = std::numeric_limits<off_t>::max() - 64;
enum TLockByte : off_t { lbReads = 0, lbWrites = 1, lbDeniesRead = 2, lbDeniesWrite = 3 };

constexpr DWORD kAccessMask = STGM_WRITE | STGM_READWRITE;
constexpr DWORD kShareMask = 0x70;

HRESULT StorageResult(int error) {
  switch (error) {
    case ENOENT:
      return STG_E_FILENOTFOUND;
    case ENOTDIR:
      return STG_E_PATHNOTFOUND;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case EBADF:  // written through a stream that only reads, or the reverse
      return STG_E_ACCESSDENIED;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return STG_E_MEDIUMFULL;
    default:
      return HRESULT_FROM_WIN32(Win32FromErrno(error));
  }
}

// An open file with the locks that its sharing needs; closing frees them.
class TOpenFile {
 public:
  TOpenFile(int descriptor, DWORD mode) : fDescriptor(descriptor), fMode(mode) {}
  ~TOpenFile() { ::close(fDescriptor); }
  TOpenFile(const TOpenFile&) = delete;
  TOpenFile& operator=(const TOpenFile&) = delete;
  int Descriptor() const { return fDescriptor; }
  DWORD Mode() const { return fMode; }

  bool Reads() const { return (fMode & kAccessMask) != STGM_WRITE; }
  bool Writes() const { return (fMode & kAccessMask) != STGM_READ; }

  // First everything is announced, then looked for conflicts: two that open at the
  // same time may both fail, but never both succeed.
  bool Share() const {
    const DWORD share = fMode & kShareMask;
    const bool exclusive = share == STGM_SHARE_EXCLUSIVE;
    const bool deniesRead = exclusive || share == STGM_SHARE_DENY_READ;
    const bool deniesWrite = exclusive || share == STGM_SHARE_DENY_WRITE;
    if (Reads()) Announce(lbReads);
    if (Writes()) Announce(lbWrites);
    if (deniesRead) Announce(lbDeniesRead);
    if (deniesWrite) Announce(lbDeniesWrite);
    return !((Reads() && IsAnnounced(lbDeniesRead)) || (Writes() && IsAnnounced(lbDeniesWrite)) ||
             (deniesRead && IsAnnounced(lbReads)) || (deniesWrite && IsAnnounced(lbWrites)));
  }

 private:
  static struct flock LockOf(TLockByte byte, short type) {
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = kLockBase + byte;
    lock.l_len = 1;
    return lock;
  }
  // File systems without locks share everything.
  void Announce(TLockByte byte) const {
    struct flock lock = LockOf(byte, F_RDLCK);
    (void)::fcntl(fDescriptor, F_OFD_SETLK, &lock);
  }
  bool IsAnnounced(TLockByte byte) const {
    struct flock lock = LockOf(byte, F_WRLCK);
    return ::fcntl(fDescriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
  }

  int fDescriptor;
  DWORD fMode;
};

LPWSTR CopyName(const TString& name) {
  const std::size_t bytes = (name.size() + 1) * sizeof(char16_t);
  void* block = CoTaskMemAlloc(bytes);
  if (block) std::memcpy(block, name.c_str(), bytes);
  return static_cast<LPWSTR>(block);
}

class TFileStream : public TInterfacedObject<IStream> {
 public:
  TFileStream(std::shared_ptr<const TOpenFile> file, TString name, off_t position)
      : fFile(std::move(file)), fName(std::move(name)), fPosition(position) {}

  HRESULT Read(void* pv, ULONG cb, ULONG* pcbRead) override {
    return PortableCall("ISequentialStream::Read", [&] { return DoRead(pv, cb, pcbRead); });
  }
  HRESULT Write(const void* pv, ULONG cb, ULONG* pcbWritten) override {
    return PortableCall("ISequentialStream::Write", [&] { return DoWrite(pv, cb, pcbWritten); });
  }
  HRESULT Seek(LARGE_INTEGER dlibMove, DWORD dwOrigin, ULARGE_INTEGER* plibNewPosition) override {
    return PortableCall("IStream::Seek",
                        [&] { return DoSeek(dlibMove.QuadPart, dwOrigin, plibNewPosition); });
  }
  HRESULT SetSize(ULARGE_INTEGER libNewSize) override {
    return PortableCall("IStream::SetSize", [&]() -> HRESULT {
      if (!fFile->Writes()) return STG_E_ACCESSDENIED;
      if (libNewSize.QuadPart > static_cast<ULONGLONG>(kLockBase)) return STG_E_MEDIUMFULL;
      const auto size = static_cast<off_t>(libNewSize.QuadPart);
      return ::ftruncate(fFile->Descriptor(), size) == 0 ? S_OK : StorageResult(errno);
    });
  }
  HRESULT CopyTo(IStream* pstm, ULARGE_INTEGER cb, ULARGE_INTEGER* pcbRead,
                 ULARGE_INTEGER* pcbWritten) override {
    return PortableCall("IStream::CopyTo",
                        [&] { return DoCopy(pstm, cb.QuadPart, pcbRead, pcbWritten); });
  }
  HRESULT Commit(DWORD grfCommitFlags) override {
    return PortableCall("IStream::Commit", [&]() -> HRESULT {
      if (!fFile->Writes() || (grfCommitFlags & STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE))
        return S_OK;
      return ::fsync(fFile->Descriptor()) == 0 ? S_OK : StorageResult(errno);
    });
  }
  HRESULT Revert() override { return S_OK; }
  HRESULT LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return STG_E_INVALIDFUNCTION;
  }
  HRESULT UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return STG_E_INVALIDFUNCTION;
  }
  HRESULT Stat(STATSTG* pstatstg, DWORD grfStatFlag) override {
    return PortableCall("IStream::Stat", [&] { return DoStat(pstatstg, grfStatFlag); });
  }
  HRESULT Clone(IStream** ppstm) override {
    return PortableCall("IStream::Clone", [&]() -> HRESULT {
      if (!ppstm) return STG_E_INVALIDPOINTER;
      *ppstm = new TFileStream(fFile, fName, fPosition);
      return S_OK;
    });
  }

 private:
  HRESULT DoRead(void* data, ULONG count, ULONG* done) {
    if (done) *done = 0;
    if (!data) return STG_E_INVALIDPOINTER;
    if (!fFile->Reads()) return STG_E_ACCESSDENIED;
    ULONG total = 0;
    while (total < count) {
      const ssize_t got =
          ::pread(fFile->Descriptor(), static_cast<char*>(data) + total, count - total, fPosition);
      if (got < 0 && errno == EINTR) continue;
      if (got < 0) return StorageResult(errno);
      if (got == 0) break;
      total += static_cast<ULONG>(got);
      fPosition += got;
    }
    if (done) *done = total;
    return total < count ? S_FALSE : S_OK;
  }

  HRESULT DoWrite(const void* data, ULONG count, ULONG* done) {
    if (done) *done = 0;
    if (!data) return STG_E_INVALIDPOINTER;
    if (!fFile->Writes()) return STG_E_ACCESSDENIED;
    ULONG total = 0;
    while (total < count) {
      const ssize_t put = ::pwrite(fFile->Descriptor(), static_cast<const char*>(data) + total,
                                   count - total, fPosition);
      if (put < 0 && errno == EINTR) continue;
      if (put < 0) return StorageResult(errno);
      total += static_cast<ULONG>(put);
      fPosition += put;
      if (done) *done = total;
    }
    return S_OK;
  }

  HRESULT DoSeek(LONGLONG move, DWORD origin, ULARGE_INTEGER* position) {
    LONGLONG start = 0;
    struct stat info;
    if (origin == STREAM_SEEK_CUR)
      start = fPosition;
    else if (origin == STREAM_SEEK_END && ::fstat(fFile->Descriptor(), &info) == 0)
      start = info.st_size;
    else if (origin != STREAM_SEEK_SET)
      return STG_E_INVALIDFUNCTION;
    LONGLONG target = 0;
    if (__builtin_add_overflow(start, move, &target) || target < 0 || target > kLockBase)
      return STG_E_INVALIDFUNCTION;
    fPosition = target;
    if (position) position->QuadPart = static_cast<ULONGLONG>(target);
    return S_OK;
  }

  HRESULT DoCopy(IStream* to, ULONGLONG count, ULARGE_INTEGER* read, ULARGE_INTEGER* written) {
    if (read) read->QuadPart = 0;
    if (written) written->QuadPart = 0;
    if (!to) return STG_E_INVALIDPOINTER;
    std::vector<char> buffer(128 * 1024);
    while (count > 0) {
      const auto wanted = static_cast<ULONG>(std::min<ULONGLONG>(count, buffer.size()));
      ULONG got = 0, put = 0;
      HRESULT result = DoRead(buffer.data(), wanted, &got);
      if (FAILED(result)) return result;
      if (read) read->QuadPart += got;
      if (got == 0) break;
      result = to->Write(buffer.data(), got, &put);
      if (written) written->QuadPart += put;
      if (FAILED(result)) return result;
      count -= got;
    }
    return S_OK;
  }

  HRESULT DoStat(STATSTG* stat, DWORD flags) {
    if (!stat) return STG_E_INVALIDPOINTER;
    *stat = STATSTG{};
    struct stat info;
    if (::fstat(fFile->Descriptor(), &info) != 0) return StorageResult(errno);
    if (!(flags & STATFLAG_NONAME) && !(stat->pwcsName = CopyName(fName))) return E_OUTOFMEMORY;
    stat->type = STGTY_STREAM;
    stat->cbSize.QuadPart = static_cast<ULONGLONG>(info.st_size);
    const auto time = [](const timespec& t) {
      return FileTimeFromNative(t.tv_sec, static_cast<std::uint32_t>(t.tv_nsec));
    };
    stat->mtime = time(info.st_mtim);
    stat->atime = time(info.st_atim);
    stat->ctime = time(info.st_ctim);
    stat->grfMode = fFile->Mode();
    return S_OK;
  }

  std::shared_ptr<const TOpenFile> fFile;
  TString fName;
  off_t fPosition;
};

// Locks need a file that can be read, so a writer opens for both if it may.
int OpenDescriptor(const char* path, DWORD mode) {
  const int common = O_CLOEXEC | O_NOCTTY | O_NONBLOCK | ((mode & STGM_CREATE) ? O_CREAT : 0);
  if ((mode & kAccessMask) == STGM_READ && !(mode & STGM_CREATE))
    return ::open(path, O_RDONLY | common);
  const int descriptor = ::open(path, O_RDWR | common, 0666);
  if (descriptor >= 0 || errno != EACCES || (mode & kAccessMask) != STGM_WRITE) return descriptor;
  return ::open(path, O_WRONLY | common, 0666);
}

}  // namespace

HRESULT OpenFileStream(const std::string& native, LPCWSTR name, DWORD mode, IStream** stream) {
  *stream = nullptr;
  if ((mode & kAccessMask) == kAccessMask || (mode & kShareMask) > STGM_SHARE_DENY_NONE)
    return STG_E_INVALIDFLAG;
  const int descriptor = OpenDescriptor(native.c_str(), mode);
  if (descriptor < 0) return StorageResult(errno);
  const auto file = std::make_shared<const TOpenFile>(descriptor, mode);
  struct stat info;
  if (::fstat(descriptor, &info) != 0) return StorageResult(errno);
  // Pipes and devices may block for ever.
  if (!S_ISREG(info.st_mode)) return STG_E_ACCESSDENIED;
  if (!file->Share()) return STG_E_SHAREVIOLATION;
  if ((mode & STGM_CREATE) && ::ftruncate(descriptor, 0) != 0) return StorageResult(errno);
  *stream = new TFileStream(file, FromW(name), 0);
  return S_OK;
}

}  // namespace oak
