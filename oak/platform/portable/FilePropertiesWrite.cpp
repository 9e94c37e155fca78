// Writing properties of file-system objects.
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>

#include "oak/base/Guid.h"
#include "oak/base/Variant.h"
#include "oak/platform/portable/FileAttributeStore.h"
#include "oak/platform/portable/FileProperties.h"
#include "oak/platform/portable/FileSystemSource.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/PropertyTable.h"

namespace oak {
namespace {

bool IsKey(const PROPERTYKEY& a, const PROPERTYKEY& b) { return TPropertyKeyEqual{}(a, b); }

HRESULT SetTime(const TFileObject& object, bool access, REFPROPVARIANT value) {
  FILETIME time;
  if (!TryGetFileTime(value, time)) return DISP_E_TYPEMISMATCH;
  std::int64_t seconds = 0;
  std::uint32_t nanoseconds = 0;
  FileTimeToNative(time, seconds, nanoseconds);
  timespec times[2]{};  // access, change of contents
  times[access ? 1 : 0].tv_nsec = UTIME_OMIT;
  times[access ? 0 : 1].tv_sec = seconds;
  times[access ? 0 : 1].tv_nsec = static_cast<long>(nanoseconds);
  return ::utimensat(AT_FDCWD, object.Native.c_str(), times, 0) == 0 ? S_OK
                                                                     : ResultFromErrno(errno);
}

// Read-only is a matter of the write bits. Hidden is one of the name, which a
// property does not change.
HRESULT SetAttributeBits(const TFileObject& object, REFPROPVARIANT value) {
  std::int64_t number = 0;
  if (!TryGetInt64(value, number)) return DISP_E_TYPEMISMATCH;
  const auto wanted = static_cast<DWORD>(number);
  DWORD error = 0;
  const auto info = GetFileInfo(object.Native, true, &error);
  if (!info) return HRESULT_FROM_WIN32(error);
  if ((wanted ^ info->Attributes) & FILE_ATTRIBUTE_HIDDEN)
    return HRESULT_FROM_WIN32(ERROR_NOT_SUPPORTED);
  if (info->IsDirectory() || !((wanted ^ info->Attributes) & FILE_ATTRIBUTE_READONLY)) return S_OK;
  mode_t mode = info->Mode & 07777;
  mode = (wanted & FILE_ATTRIBUTE_READONLY) ? mode & ~mode_t{0222} : mode | S_IWUSR;
  return ::chmod(object.Native.c_str(), mode) == 0 ? S_OK : ResultFromErrno(errno);
}

}  // namespace

HRESULT SetFileProperty(const TFileObject& object, REFPROPERTYKEY key, REFPROPVARIANT value) {
  if (object.Native.empty()) return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
  if (IsKey(key, PKEY_DateModified)) return SetTime(object, false, value);
  if (IsKey(key, PKEY_DateAccessed)) return SetTime(object, true, value);
  if (IsKey(key, PKEY_FileAttributes)) return SetAttributeBits(object, value);
  return WriteStoredProperty(object.Native, key, value);
}

}  // namespace oak
