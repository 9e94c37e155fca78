#include "oak/framework/FileContent.h"

#include <algorithm>
#include <atomic>

#include "oak/base/Handles.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

constexpr DWORD kBlock = 1u << 20;

struct TFileTraits {
  using Type = HANDLE;
  static Type Invalid() noexcept { return nullptr; }
  static void Close(Type file) noexcept { Api().CloseHandle(file); }
};
using TFile = TUniqueHandle<TFileTraits>;

/// Nothing if the file could not be opened.
TFile OpenFile(const TString& path, DWORD access, DWORD share, DWORD disposition) {
  const HANDLE file = Api().CreateFileW(W(path), access, share, nullptr, disposition, 0, nullptr);
  return TFile::Adopt(file == INVALID_HANDLE_VALUE ? nullptr : file);
}

[[noreturn]] void RaiseFor(TStringView action, TStringView what, DWORD code) {
  throw EFileError(code, TString(action) + u" " + TString(what) + u". " + ErrorText(code));
}

[[noreturn]] void RaiseForFile(TStringView action, const TString& path, DWORD code) {
  RaiseFor(action, u"the file \"" + path + u"\"", code);
}

/// The new content beside the file that it is to replace; removed at the end
/// unless it has taken its place.
class TReplacement {
 public:
  explicit TReplacement(const TString& path) : fTarget(path) {}
  ~TReplacement() {
    if (fExists) Api().DeleteFileW(W(fPath));
  }
  TReplacement(const TReplacement&) = delete;
  TReplacement& operator=(const TReplacement&) = delete;

  void Write(std::string_view bytes) {
    const TFile file = Create();
    while (!bytes.empty()) {
      const auto size = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), kBlock));
      DWORD written = 0;
      if (!Api().WriteFile(file.Get(), bytes.data(), size, &written, nullptr)) Fail();
      if (written == 0) RaiseForFile(u"Cannot write", fTarget, ERROR_DISK_FULL);
      bytes.remove_prefix(written);
    }
    // What is not on the disk when the old file goes may be lost with the power.
    if (!Api().FlushFileBuffers(file.Get())) Fail();
  }

  void TakePlace() {
    const bool replaces = Api().GetFileAttributesW(W(fTarget)) != INVALID_FILE_ATTRIBUTES;
    constexpr DWORD ignoreMergeErrors = 2;  // rights that can't be copied keep no one from saving
    bool done =
        replaces && Api().ReplaceFileW &&
        Api().ReplaceFileW(W(fTarget), W(fPath), nullptr, ignoreMergeErrors, nullptr, nullptr);
    // Not every file system can; rights and further streams of the old file are lost then.
    if (!done)
      done = Api().MoveFileExW(W(fPath), W(fTarget),
                               MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
    if (!done) Fail();
    fExists = false;
  }

 private:
  [[noreturn]] void Fail() const { RaiseForFile(u"Cannot write", fTarget, Api().GetLastError()); }

  TFile Create() {
    static std::atomic<std::uint32_t> last{0};
    const std::size_t name = fTarget.find_last_of(u"\\/:") + 1;  // 0 without any of them
    const TString start =
        fTarget.substr(0, name) + u"~" + IntToHex(Api().GetCurrentProcessId(), 1) + u"-";
    for (int attempt = 0; attempt < 100; ++attempt) {
      fPath = start + IntToHex(++last, 1) + u".tmp";
      TFile file = OpenFile(fPath, GENERIC_WRITE, 0, CREATE_NEW);
      fExists = static_cast<bool>(file);
      if (fExists) return file;
      const DWORD code = Api().GetLastError();
      if (code != ERROR_FILE_EXISTS && code != ERROR_ALREADY_EXISTS) break;
    }
    Fail();
  }

  const TString& fTarget;
  TString fPath;
  bool fExists = false;
};

DWORD CodeOf(HRESULT result) {
  constexpr HRESULT win32 = static_cast<HRESULT>(0x80070000);
  constexpr HRESULT facility = static_cast<HRESULT>(0xFFFF0000);
  return static_cast<DWORD>((result & facility) == win32 ? result & 0xFFFF : result);
}

}  // namespace

std::string ReadFileContent(const TString& path) {
  const TFile file = OpenFile(path, GENERIC_READ, FILE_SHARE_VALID_FLAGS, OPEN_EXISTING);
  if (!file) RaiseForFile(u"Cannot open", path, Api().GetLastError());
  std::string bytes;
  for (;;) {
    const std::size_t size = bytes.size();
    bytes.resize(size + kBlock);
    DWORD read = 0;
    if (!Api().ReadFile(file.Get(), bytes.data() + size, kBlock, &read, nullptr))
      RaiseForFile(u"Cannot read", path, Api().GetLastError());
    bytes.resize(size + read);
    if (read == 0) return bytes;
  }
}

void ReplaceFileContent(const TString& path, std::string_view bytes) {
  TReplacement replacement(path);
  replacement.Write(bytes);
  replacement.TakePlace();
}

std::string ReadStreamContent(IStream& stream) {
  std::string bytes;
  for (;;) {
    const std::size_t size = bytes.size();
    bytes.resize(size + kBlock);
    ULONG read = 0;
    const HRESULT result = stream.Read(bytes.data() + size, kBlock, &read);
    if (FAILED(result)) RaiseFor(u"Cannot read", u"the stream", CodeOf(result));
    bytes.resize(size + std::min(read, ULONG{kBlock}));
    if (read == 0) return bytes;
  }
}

void WriteStreamContent(IStream& stream, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto size = static_cast<ULONG>(std::min<std::size_t>(bytes.size(), kBlock));
    ULONG written = 0;
    const HRESULT result = stream.Write(bytes.data(), size, &written);
    if (FAILED(result)) RaiseFor(u"Cannot write", u"the stream", CodeOf(result));
    if (written == 0 || written > size) RaiseFor(u"Cannot write", u"the stream", ERROR_DISK_FULL);
    bytes.remove_prefix(written);
  }
}

}  // namespace oak
