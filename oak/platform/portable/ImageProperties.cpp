#include "oak/platform/portable/ImageProperties.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "oak/base/Guid.h"
#include "oak/platform/portable/FileKinds.h"
#include "oak/platform/portable/FileSystemSource.h"
#include "oak/platform/portable/ImageHeader.h"
#include "oak/platform/portable/PortableFiles.h"
#include "oak/platform/portable/SystemDescriptor.h"

namespace oak {
namespace {

// --- the file --------------------------------------------------------------------

// No file and S_OK for what holds no contents. A pipe is not opened at all, as that
// would let the program go on that waits to write into it; what takes the file's place
// in between does not block.
HRESULT OpenPicture(const std::string& native, TDescriptor& file) {
  DWORD error = 0;
  const auto info = GetFileInfo(native, true, &error);
  if (!info)  // a link that leads nowhere is there all the same
    return GetFileInfo(native, false, &error) ? S_OK : HRESULT_FROM_WIN32(error);
  if (!S_ISREG(info->Mode)) return S_OK;
  TDescriptor opened(::open(native.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat now {};
  if (opened.Get() < 0 || ::fstat(opened.Get(), &now) != 0) return ResultFromErrno(errno);
  if (S_ISREG(now.st_mode)) file = std::move(opened);
  return S_OK;
}

HRESULT ReadPicture(const std::string& native, std::optional<TImageHeader>& header) {
  TDescriptor file;
  const HRESULT result = OpenPicture(native, file);
  if (FAILED(result) || file.Get() < 0) return result;
  int error = 0;
  header = ReadImageHeader([&](std::uint64_t offset, std::span<std::uint8_t> bytes) {
    const ssize_t count =
        ::pread(file.Get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (count < 0) error = errno;
    return count < 0 ? std::size_t{0} : static_cast<std::size_t>(count);
  });
  return error != 0 && !header ? ResultFromErrno(error) : S_OK;
}

// --- the values --------------------------------------------------------------------

TPropVariant NumberUnlessZero(std::uint32_t number) {
  return number == 0 ? TPropVariant() : TPropVariant::From(number);
}
TPropVariant DotsUnlessZero(double dots) {
  return dots > 0 ? TPropVariant::From(dots) : TPropVariant();
}

// Without the marks for the direction of writing that a shell may put around it: the
// text is searched, compared and copied more often than it stands among words that are
// written from the right.
TPropVariant DimensionsOf(const TImageHeader& header) {
  return TPropVariant::From(IntToStr(header.Width) + u" x " + IntToStr(header.Height));
}

struct TImageProperty {
  const PROPERTYKEY& Key;
  TPropVariant (*Get)(const TImageHeader& header);
};
const TImageProperty kImageProperties[] = {
    {PKEY_Image_Dimensions, DimensionsOf},
    {PKEY_Image_HorizontalSize, [](const auto& header) { return NumberUnlessZero(header.Width); }},
    {PKEY_Image_VerticalSize, [](const auto& header) { return NumberUnlessZero(header.Height); }},
    {PKEY_Image_BitDepth, [](const auto& header) { return NumberUnlessZero(header.BitDepth); }},
    {PKEY_Image_HorizontalResolution,
     [](const auto& header) { return DotsUnlessZero(header.HorizontalResolution); }},
    {PKEY_Image_VerticalResolution,
     [](const auto& header) { return DotsUnlessZero(header.VerticalResolution); }},
};

const TImageProperty* FindImageProperty(REFPROPERTYKEY key) noexcept {
  for (const TImageProperty& property : kImageProperties)
    if (TPropertyKeyEqual{}(property.Key, key)) return &property;
  return nullptr;
}

}  // namespace

bool IsImageProperty(REFPROPERTYKEY key) noexcept { return FindImageProperty(key) != nullptr; }

bool IsPictureName(const TFileObject& object) {
  return FileKindOf(object.Name, object.IsFolder).Perceived == PERCEIVED_TYPE_IMAGE;
}

HRESULT GetImageProperty(const TFileObject& object, REFPROPERTYKEY key, TPropVariant& value) {
  const TImageProperty* property = FindImageProperty(key);
  if (!property || !IsPictureName(object)) return S_OK;
  std::optional<TImageHeader> header;
  const HRESULT result = ReadPicture(object.Native, header);
  if (header) value = property->Get(*header);
  return result;
}

}  // namespace oak
