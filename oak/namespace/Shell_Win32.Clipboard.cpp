#include "oak/namespace/Shell_Win32.Clipboard.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstring>

#include "oak/platform/Api.h"

namespace oak {
namespace {

/// The bytes of a global block for the span of a block of code. Everything that
/// is read from them comes from another program and is tested against their end.
class TLockedBlock {
 public:
  explicit TLockedBlock(HGLOBAL pHandle) : fHandle(pHandle) {
    if (!pHandle || !Api().GlobalLock || !Api().GlobalSize) return;
    fBytes = static_cast<const std::byte*>(Api().GlobalLock(pHandle));
    if (fBytes) fSize = Api().GlobalSize(pHandle);
  }
  ~TLockedBlock() {
    if (fBytes) Api().GlobalUnlock(fHandle);
  }
  TLockedBlock(const TLockedBlock&) = delete;
  TLockedBlock& operator=(const TLockedBlock&) = delete;

  std::size_t Size() const noexcept { return fSize; }
  const std::byte* At(std::size_t pOffset) const noexcept { return fBytes + pOffset; }
  /// False if the block ends before; nothing needs to be aligned.
  template <class T>
  bool Read(std::size_t pOffset, T& pValue) const noexcept {
    if (pOffset > fSize || fSize - pOffset < sizeof(T)) return false;
    std::memcpy(&pValue, At(pOffset), sizeof(T));
    return true;
  }

 private:
  HGLOBAL fHandle;
  const std::byte* fBytes = nullptr;
  std::size_t fSize = 0;
};

/// 8-bit text in the system's code page, or UTF-8 where there are no code pages.
TString FromAnsi(const std::string& pText) {
  if (!Api().MultiByteToWideChar) return FromUtf8(pText);
  if (pText.empty()) return {};
  constexpr UINT systemCodePage = 0;
  // No code page has characters that become more units than they have bytes.
  TString text(pText.size(), u'\0');
  const int length =
      Api().MultiByteToWideChar(systemCodePage, 0, pText.data(), static_cast<int>(pText.size()),
                                WBuffer(text), static_cast<int>(text.size()));
  text.resize(length > 0 ? static_cast<std::size_t>(length) : 0);
  return text;
}
TString FromAnsi(TString pText) { return pText; }

/// The zero-ended texts from an offset on, up to an empty one or the block's end.
template <class TChar>
TStringArray ReadNameList(const TLockedBlock& pBlock, std::size_t pOffset) {
  TStringArray names;
  std::basic_string<TChar> name;
  TChar c{};
  for (; pBlock.Read(pOffset, c); pOffset += sizeof(TChar)) {
    if (c) {
      name += c;
      continue;
    }
    if (name.empty()) break;
    names.push_back(FromAnsi(std::exchange(name, {})));
  }
  // A list that was cut off ends in a name that is not whole: it is dropped.
  return names;
}

template <class TChar, class TDescriptor>
TStringArray ReadDescriptors(HGLOBAL pHandle) {
  const TLockedBlock block(pHandle);
  UINT count = 0;
  TStringArray names;
  if (!block.Read(0, count)) return names;
  constexpr std::size_t nameOffset = offsetof(TDescriptor, cFileName);
  constexpr std::size_t nameSize = sizeof(TDescriptor::cFileName);
  TChar buffer[nameSize / sizeof(TChar)];
  for (UINT i = 0; i < count; ++i) {
    if (!block.Read(sizeof(UINT) + i * sizeof(TDescriptor) + nameOffset, buffer)) break;
    const auto length =
        static_cast<std::size_t>(std::find(std::begin(buffer), std::end(buffer), TChar{}) - buffer);
    if (length > 0) names.push_back(FromAnsi(std::basic_string<TChar>(buffer, length)));
  }
  return names;
}

/// A failure is not remembered. Threads that come first together register the
/// name twice and get the same number.
UINT RegisteredFormat(std::atomic<UINT>& pFormat, const char16_t* pName) {
  if (const UINT known = pFormat.load(std::memory_order_relaxed)) return known;
  const UINT format = Api().RegisterClipboardFormatW(W(pName));
  pFormat.store(format, std::memory_order_relaxed);
  return format;
}

}  // namespace

UINT CF_FILEDESCRIPTORA() {
  static std::atomic<UINT> format{0};
  return RegisteredFormat(format, u"FileGroupDescriptor");
}

UINT CF_FILEDESCRIPTORW() {
  static std::atomic<UINT> format{0};
  return RegisteredFormat(format, u"FileGroupDescriptorW");
}

bool FilesInClipboard() {
  if (Api().IsClipboardFormatAvailable(CF_HDROP)) return true;
  const UINT descriptors = CF_FILEDESCRIPTORW();
  return descriptors != 0 && Api().IsClipboardFormatAvailable(descriptors);
}

TStringArray GetFilenamesFromHandle(HANDLE pHandle) {
  const TLockedBlock block(pHandle);
  DROPFILES header{};
  if (!block.Read(0, header) || header.pFiles < sizeof(header)) return {};
  return header.fWide ? ReadNameList<char16_t>(block, header.pFiles)
                      : ReadNameList<char>(block, header.pFiles);
}

TStringArray GetFilenamesFromFileDescriptorA(HGLOBAL pHandle) {
  return ReadDescriptors<char, FILEDESCRIPTORA>(pHandle);
}

TStringArray GetFilenamesFromFileDescriptorW(HGLOBAL pHandle) {
  return ReadDescriptors<char16_t, FILEDESCRIPTORW>(pHandle);
}

}  // namespace oak
