// Find functions: one object by name, or all that match a wildcard.
#include <dirent.h>

#include <algorithm>
#include <cstring>
#include <deque>

#include "oak/platform/portable/PortableConfig.h"
#include "oak/platform/portable/SystemFiles.h"
#include "oak/platform/portable/SystemHandles.h"

namespace oak {

void FillFindData(const TFileInfo& info, TStringView name, WIN32_FIND_DATAW& data) noexcept {
  data = WIN32_FIND_DATAW{};
  data.dwFileAttributes = info.Attributes ? info.Attributes : FILE_ATTRIBUTE_NORMAL;
  data.ftCreationTime = info.Created;
  data.ftLastAccessTime = info.Accessed;
  data.ftLastWriteTime = info.Written;
  data.nFileSizeHigh = static_cast<DWORD>(info.Size >> 32);
  data.nFileSizeLow = static_cast<DWORD>(info.Size);
  data.dwReserved0 = info.ReparseTag;
  const std::size_t length = std::min<std::size_t>(name.size(), MAX_PATH - 1);
  std::copy_n(name.begin(), length, data.cFileName);
}

namespace {

bool IsWildcard(char16_t c) { return c == u'*' || c == u'?'; }
bool HasWildcard(TStringView text) { return text.find_first_of(u"*?") != TStringView::npos; }

// "?" and "*" against the whole text, going back to the last "*" only.
bool MatchWild(TStringView name, TStringView pattern) {
  std::size_t n = 0, p = 0, star = TStringView::npos, resume = 0;
  for (;;) {
    if (p < pattern.size() && pattern[p] == u'*') {
      star = p++;
      resume = n;
    } else if (p < pattern.size() && pattern[p] == u'?') {
      if (n < name.size() && name[n] != u'.') ++n;
      ++p;  // before a dot or the end it stands for nothing
    } else if (p < pattern.size() && n < name.size() && UpCase(pattern[p]) == UpCase(name[n])) {
      ++p;
      ++n;
    } else if (p == pattern.size() && n == name.size()) {
      return true;
    } else if (star != TStringView::npos && resume < name.size()) {
      p = star + 1;
      n = ++resume;
    } else {
      return false;
    }
  }
}

class TFind : public TSystemObject {
 public:
  TFind(TNativeDirectory directory, TString pattern, bool withDots)
      : fDirectory(std::move(directory)), fPattern(std::move(pattern)), fAll(fPattern == u"*") {
    if (withDots) fDots = {u".", u".."};
  }
  explicit TFind(const WIN32_FIND_DATAW& only) : fFirst(only), fHasFirst(true) {}

  // One object at a time; a handle may be shared by threads.
  bool Next(WIN32_FIND_DATAW& data) {
    const std::lock_guard lock(fLock);
    if (fHasFirst) {
      data = fFirst;
      fHasFirst = false;
      return true;
    }
    return fDirectory && (NextDot(data) || NextEntry(data));
  }
  DWORD Error() const { return fDirectory ? fDirectory->Error() : 0; }

 private:
  bool NextDot(WIN32_FIND_DATAW& data) {
    while (!fDots.empty()) {
      const TString name = fDots.front();
      fDots.pop_front();
      if (!fAll && !MatchesFindPattern(name, fPattern)) continue;
      const auto info = GetFileInfoAt(fDirectory->Descriptor(), name == u"." ? "." : "..");
      if (!info) continue;
      FillFindData(*info, name, data);
      return true;
    }
    return false;
  }

  bool NextEntry(WIN32_FIND_DATAW& data) {
    while (const char* native = fDirectory->Next()) {
      const TString name = NameFromNative(native);
      if (!fAll && !MatchesFindPattern(name, fPattern)) continue;
      DWORD error = 0;
      auto info = GetFileInfoAt(fDirectory->Descriptor(), native, false, &error);
      if (!info && error == ERROR_FILE_NOT_FOUND) continue;  // gone meanwhile
      if (!info) info = InfoFromEntry(native[0] == '.');
      FillFindData(*info, name, data);
      return true;
    }
    return false;
  }

  // A directory may be read without leave to look at what is in it.
  TFileInfo InfoFromEntry(bool hidden) const {
    TFileInfo info;
    const unsigned char type = fDirectory->EntryType();
    info.Attributes = type == DT_DIR ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
    if (type == DT_LNK) {
      info.Attributes = FILE_ATTRIBUTE_REPARSE_POINT;
      info.ReparseTag = IO_REPARSE_TAG_SYMLINK;
    }
    if (hidden) info.Attributes |= FILE_ATTRIBUTE_HIDDEN;
    return info;
  }

  std::mutex fLock;
  std::optional<TNativeDirectory> fDirectory;
  TString fPattern;
  bool fAll = false;
  std::deque<TString> fDots;
  WIN32_FIND_DATAW fFirst{};
  bool fHasFirst = false;
};

// Splits before the last component, keeping "\" at the end of the first part.
void SplitLast(TStringView path, TStringView& directory, TStringView& last) {
  const std::size_t end = path.find_last_of(u"\\/:");
  const std::size_t start = end == TStringView::npos ? 0 : end + 1;
  directory = path.substr(0, start);
  last = path.substr(start);
}

bool IsRoot(const std::string& native) {
  const auto config = PortableConfig();
  const auto leads = [&](const auto& place) { return place.Directory == native; };
  return std::any_of(config->Drives.begin(), config->Drives.end(), leads) ||
         std::any_of(config->Shares.begin(), config->Shares.end(), leads);
}

std::shared_ptr<TFind> FindMany(TStringView directory, TStringView pattern) {
  // "C:*" and "*" mean the current directory.
  const TString path = directory.empty() ? u"." : TString(directory);
  if (HasWildcard(StartsWith(path, u"\\\\?\\") ? TStringView(path).substr(4) : path))
    return FailWith(ERROR_INVALID_NAME, nullptr);
  const auto native = NativeForCall(W(path));
  if (!native) return nullptr;
  DWORD error = 0;
  auto reader = TNativeDirectory::Open(*native, &error);
  if (!reader) {
    error = ExactLookupError(*native, error);
    const auto info = error == ERROR_PATH_NOT_FOUND ? GetFileInfo(*native) : std::nullopt;
    if (info) error = ERROR_DIRECTORY;  // there, but no directory
    return FailWith(error == ERROR_FILE_NOT_FOUND ? ERROR_PATH_NOT_FOUND : error, nullptr);
  }
  const TString text = pattern == u"*.*" ? TString(u"*") : TString(pattern);
  return std::make_shared<TFind>(std::move(*reader), text, !IsRoot(*native));
}

std::shared_ptr<TFind> FindOne(TStringView path) {
  if (path.back() == u'\\' || path.back() == u'/') return FailWith(ERROR_FILE_NOT_FOUND, nullptr);
  std::string native;
  const auto info = InfoForCall(W(TString(path)), native);
  if (!info) return nullptr;
  const std::size_t slash = native.rfind('/');
  WIN32_FIND_DATAW data;
  FillFindData(*info, NameFromNative(native.substr(slash + 1)), data);
  return std::make_shared<TFind>(data);
}

HANDLE STDAPICALLTYPE FindFirstFileW(LPCWSTR path, WIN32_FIND_DATAW* data) {
  return SystemCall<HANDLE>(INVALID_HANDLE_VALUE, [&]() -> HANDLE {
    const TStringView text = ViewOf(path);
    if (!data) return FailWith(ERROR_INVALID_PARAMETER, INVALID_HANDLE_VALUE);
    if (text.empty()) return FailWith(ERROR_PATH_NOT_FOUND, INVALID_HANDLE_VALUE);
    TStringView directory, last;
    SplitLast(text, directory, last);
    const bool many = std::any_of(last.begin(), last.end(), IsWildcard);
    const std::shared_ptr<TFind> find = many ? FindMany(directory, last) : FindOne(text);
    if (!find) return INVALID_HANDLE_VALUE;
    if (find->Next(*data)) return TSystemHandles::Instance().Add(find);
    return FailWith(find->Error() ? find->Error() : ERROR_FILE_NOT_FOUND, INVALID_HANDLE_VALUE);
  });
}

BOOL STDAPICALLTYPE FindNextFileW(HANDLE handle, WIN32_FIND_DATAW* data) {
  return SystemCall<BOOL>(FALSE, [&] {
    const auto find = TSystemHandles::Instance().Find<TFind>(handle);
    if (!find) return FailWith(ERROR_INVALID_HANDLE, FALSE);
    if (!data) return FailWith(ERROR_INVALID_PARAMETER, FALSE);
    if (find->Next(*data)) return TRUE;
    return FailWith(find->Error() ? find->Error() : ERROR_NO_MORE_FILES, FALSE);
  });
}

BOOL STDAPICALLTYPE FindClose(HANDLE handle) {
  return SystemCall<BOOL>(FALSE, [&] {
    if (TSystemHandles::Instance().Close<TFind>(handle)) return TRUE;
    return FailWith(ERROR_INVALID_HANDLE, FALSE);
  });
}

}  // namespace

bool MatchesFindPattern(TStringView name, TStringView pattern) {
  if (pattern == u"*" || pattern == u"*.*") return true;
  if (!pattern.empty() && pattern.back() == u'.' && pattern != u"." && pattern != u"..") {
    const bool dotted = name.find(u'.') != TStringView::npos;
    return !dotted && MatchWild(name, pattern.substr(0, pattern.size() - 1));
  }
  if (MatchWild(name, pattern)) return true;
  // ".*" at the end also stands for no extension at all.
  return EndsWith(pattern, u".*") && name.find(u'.') == TStringView::npos &&
         MatchWild(name, pattern.substr(0, pattern.size() - 2));
}

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemFind(TApi& api) {
  BIND(FindFirstFileW);
  BIND(FindNextFileW);
  BIND(FindClose);
}
#undef BIND

}  // namespace oak
