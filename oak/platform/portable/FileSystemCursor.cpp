// The walk over a native directory.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "oak/platform/portable/FileSystemSource.h"
#include "oak/platform/portable/PortableFiles.h"

namespace oak {
namespace {

constexpr std::size_t kBufferSize = 64 * 1024;
constexpr std::size_t kNameStart = sizeof(TElementHeader) + sizeof(DWORD);

// Characters of a native name that are the same character in the Windows name.
constexpr bool IsPlain(unsigned char c) {
  return c >= 0x20 && c < 0x7F && c != '"' && c != '*' && c != ':' && c != '<' && c != '>' &&
         c != '?' && c != '\\' && c != '|';
}
struct TPlainTable {
  bool Plain[256]{};
  constexpr TPlainTable() {
    for (unsigned i = 0; i < 256; ++i) Plain[i] = IsPlain(static_cast<unsigned char>(i));
  }
};
constexpr TPlainTable kPlain;

class TDirectoryCursor : public TInterfacedObject<IFolderCursor> {
 public:
  TDirectoryCursor(int descriptor, DWORD flags)
      : fDescriptor(descriptor), fFlags(flags), fBuffer(kBufferSize) {
    const TElementHeader header{0, ElementMagic, ekFileSystem, 1};
    fElement.resize(kNameStart);
    std::memcpy(fElement.data(), &header, sizeof header);
  }
  ~TDirectoryCursor() override { ::close(fDescriptor); }

  HRESULT Next(PCUITEMID_CHILD* element) override {
    for (;;) {
      if (fAt == fEnd) {
        const HRESULT result = Fill();
        if (result != S_OK) return result;
      }
      const auto* entry = reinterpret_cast<const dirent64*>(fBuffer.data() + fAt);
      fAt += entry->d_reclen;
      if (!Take(entry->d_name, entry->d_type)) continue;
      *element = reinterpret_cast<PCUITEMID_CHILD>(fElement.data());
      return S_OK;
    }
  }

 private:
  HRESULT Fill() {
    const ssize_t got = ::getdents64(fDescriptor, fBuffer.data(), fBuffer.size());
    if (got < 0) return ResultFromErrno(errno);
    fAt = 0;
    fEnd = static_cast<std::size_t>(got);
    return got == 0 ? S_FALSE : S_OK;
  }

  // Makes the element if the entry is wanted.
  bool Take(const char* name, unsigned char type) {
    if (name[0] == '.') {
      if (name[1] == 0 || (name[1] == '.' && name[2] == 0)) return false;
      if (!(fFlags & SHCONTF_INCLUDEHIDDEN)) return false;
    }
    const DWORD kind = FileElementFlags(type == DT_UNKNOWN ? Look(name) : type);
    if (!IsKindWanted(name, kind)) return false;
    // A hidden object that is no file counts as one of the system's own.
    if (name[0] == '.' && (kind & feSpecial) && !(fFlags & SHCONTF_INCLUDESUPERHIDDEN))
      return false;
    Build(name, kind);
    return true;
  }

  bool IsKindWanted(const char* name, DWORD kind) const {
    constexpr DWORD both = SHCONTF_FOLDERS | SHCONTF_NONFOLDERS;
    if ((fFlags & both) == both) return true;
    bool folder = (kind & feFolder) != 0;
    if (kind & feSymlink) {
      const auto info = GetFileInfoAt(fDescriptor, name, true);
      folder = info && info->IsDirectory();
    }
    return (fFlags & (folder ? SHCONTF_FOLDERS : SHCONTF_NONFOLDERS)) != 0;
  }

  // For file systems whose listings do not tell.
  unsigned char Look(const char* name) const {
    struct stat info;
    if (::fstatat(fDescriptor, name, &info, AT_SYMLINK_NOFOLLOW) != 0) return DT_REG;
    return static_cast<unsigned char>(IFTODT(info.st_mode));
  }

  void Build(const char* name, DWORD flags) {
    const std::size_t length = std::strlen(name);
    fElement.resize(kNameStart + (length + 1) * sizeof(char16_t));
    BYTE* to = fElement.data() + kNameStart;
    std::size_t units = 0;
    while (units < length && kPlain.Plain[static_cast<unsigned char>(name[units])]) {
      const auto c = static_cast<char16_t>(static_cast<unsigned char>(name[units++]));
      std::memcpy(to, &c, sizeof c);
      to += sizeof c;
    }
    if (units < length) units = BuildConverted(std::string_view(name, length));
    std::memcpy(fElement.data() + sizeof(TElementHeader), &flags, sizeof flags);
    const std::size_t size = kNameStart + units * sizeof(char16_t);
    const auto field = static_cast<USHORT>(size);
    std::memcpy(fElement.data(), &field, sizeof field);
    std::memset(fElement.data() + size, 0, sizeof(USHORT));
  }

  std::size_t BuildConverted(std::string_view native) {
    const TString name = NameFromNative(native);
    fElement.resize(kNameStart + (name.size() + 1) * sizeof(char16_t));
    std::memcpy(fElement.data() + kNameStart, name.data(), name.size() * sizeof(char16_t));
    return name.size();
  }

  int fDescriptor;
  DWORD fFlags;
  std::size_t fAt = 0;
  std::size_t fEnd = 0;
  std::vector<char> fBuffer;
  std::vector<BYTE> fElement;  // the last element and the end of its list
};

}  // namespace

HRESULT OpenDirectoryCursor(const std::string& native, DWORD flags, Ref<IFolderCursor>& cursor) {
  const int descriptor = ::open(native.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) {
    if (errno == ENOENT) return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
    if (errno == ENOTDIR) return HRESULT_FROM_WIN32(ERROR_DIRECTORY);
    return ResultFromErrno(errno);
  }
  cursor = MakeRef<TDirectoryCursor>(descriptor, flags);
  return S_OK;
}

}  // namespace oak
