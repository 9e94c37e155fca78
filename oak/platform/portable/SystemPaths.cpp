// Path functions that work on the text, and those that ask the disk about it.
#include <algorithm>
#include <vector>

#include "oak/platform/portable/SystemFiles.h"

namespace oak {
namespace {

constexpr std::size_t PathLimit = MAX_PATH;  // of the older functions, end included

bool IsSlash(char16_t c) { return c == u'\\'; }
bool IsDoubleSlash(TStringView path) { return StartsWith(path, u"\\\\"); }
bool HasDrive(TStringView path) { return path.size() >= 2 && path[1] == u':'; }

// End of the component that starts at `start`.
std::size_t ComponentEnd(TStringView path, std::size_t start) {
  return std::min(path.find(u'\\', start), path.size());
}

// Length of what ".." never removes: "C:\", "C:", "\\server\share", "\".
std::size_t RootLength(TStringView path) {
  std::size_t start = 0;
  if (StartsText(u"\\\\?\\UNC\\", path))
    start = 8;
  else if (StartsWith(path, u"\\\\?\\"))
    start = 4;
  else if (IsDoubleSlash(path))
    start = 2;
  const TStringView rest = path.substr(start);
  if (start != 2 && start != 8 && HasDrive(rest))
    return start + (rest.size() > 2 && IsSlash(rest[2]) ? 3 : 2);
  if (start == 2 || start == 8) {
    const std::size_t server = ComponentEnd(path, start);
    return server == path.size() ? server : ComponentEnd(path, server + 1);
  }
  if (start == 4) return ComponentEnd(path, 4);  // "\\?\Volume{...}"
  return !path.empty() && IsSlash(path[0]) ? 1 : 0;
}

// Resolves "." and ".." by text. Empty components stay, a trailing "\" too.
TString Canonicalized(TStringView path) {
  const std::size_t rootLength = RootLength(path);
  const TString root(path.substr(0, rootLength));
  TStringView rest = path.substr(rootLength);
  const bool glued = !root.empty() && !IsSlash(root.back()) && !rest.empty() && IsSlash(rest[0]);
  if (glued) rest.remove_prefix(1);  // the delimiter after "\\server\share"
  std::vector<TStringView> kept;
  bool open = false;  // ends with a delimiter
  while (!rest.empty()) {
    const std::size_t end = ComponentEnd(rest, 0);
    const TStringView part = rest.substr(0, end);
    open = end < rest.size();
    rest.remove_prefix(std::min(end + 1, rest.size()));
    if (part == u"..") {
      if (!kept.empty()) kept.pop_back();
    } else if (part != u".") {
      kept.push_back(part);
    }
  }
  TString result = root;
  for (std::size_t i = 0; i < kept.size(); ++i) {
    if (i > 0 || (glued && !result.empty())) result += u'\\';
    result += kept[i];
  }
  if (open && !kept.empty()) result += u'\\';
  if (result.size() == 2 && HasDrive(result)) result += u'\\';
  return result.empty() ? TString(u"\\") : result;
}

BOOL STDAPICALLTYPE PathCanonicalizeW(LPWSTR out, LPCWSTR path) {
  return SystemCall<BOOL>(FALSE, [&] {
    if (out) *out = 0;
    if (!out || !path) return FailWith(ERROR_INVALID_PARAMETER, FALSE);
    const TStringView text = path;
    if (text.size() >= PathLimit || !CopyText(Canonicalized(text), out, PathLimit))
      return FailWith(ERROR_FILENAME_EXCED_RANGE, FALSE);
    return TRUE;
  });
}

LPWSTR STDAPICALLTYPE PathCombineW(LPWSTR out, LPCWSTR directory, LPCWSTR file) {
  return SystemCall<LPWSTR>(nullptr, [&]() -> LPWSTR {
    if (!out) return nullptr;
    const TString base(ViewOf(directory));  // copies: the result may overwrite an argument
    const TString name(ViewOf(file));
    *out = 0;
    if (!directory && !file) return nullptr;
    TString joined;
    if (name.empty()) {
      joined = base;
    } else if (base.empty() || HasDrive(name) || IsDoubleSlash(name)) {
      joined = name;
    } else if (IsSlash(name[0])) {
      joined = ExcludeTrailingPathDelimiter(base.substr(0, RootLength(base))) + name;
    } else {
      joined = IncludeTrailingPathDelimiter(base) + name;
    }
    return PathCanonicalizeW(out, W(joined)) ? out : nullptr;
  });
}

// --- full and long names ---------------------------------------------------

TString AskedCurrentDirectory() {
  TString text(static_cast<std::size_t>(Api().GetCurrentDirectoryW.Function()(0, nullptr)), u'\0');
  const DWORD length =
      Api().GetCurrentDirectoryW.Function()(static_cast<DWORD>(text.size()), WBuffer(text));
  text.resize(std::min<std::size_t>(length, text.size()));
  return text;
}

// The absolute form of a path, by text; drives need not exist.
TString FullPath(TStringView path) {
  if (StartsWith(path, u"\\\\?\\")) return TString(path);
  TString text(path);
  std::replace(text.begin(), text.end(), u'/', u'\\');
  if (IsDoubleSlash(text)) return Canonicalized(text);
  if (HasDrive(text) && text.size() > 2 && IsSlash(text[2])) return Canonicalized(text);
  TString base = AskedCurrentDirectory();
  if (HasDrive(text)) {
    // Only the current drive has a current directory other than its root.
    if (!StartsText(text.substr(0, 2), base)) base = text.substr(0, 2) + u"\\";
    text.erase(0, 2);
  }
  if (!text.empty() && IsSlash(text[0])) return Canonicalized(ExtractFileDrive(base) + text);
  const TString full = Canonicalized(IncludeTrailingPathDelimiter(base) + text);
  return full.size() > RootLength(full) && text.empty() ? ExcludeTrailingPathDelimiter(full) : full;
}

DWORD STDAPICALLTYPE GetFullPathNameW(LPCWSTR path, DWORD capacity, LPWSTR buffer, LPWSTR* name) {
  return SystemCall<DWORD>(0, [&]() -> DWORD {
    if (name) *name = nullptr;
    if (ViewOf(path).empty()) return FailWith<DWORD>(ERROR_INVALID_NAME, 0);
    const TString full = FullPath(path);
    const DWORD answer = AnswerText(full, buffer, capacity);
    const std::size_t last = full.rfind(u'\\') + 1;
    if (name && buffer && answer == full.size() && last < full.size()) *name = buffer + last;
    return answer;
  });
}

// The text with every component spelled as on disk. There are no short names
// here, so a text that exists is its own long form but for the case of letters.
TString SpelledAsOnDisk(TStringView path, const std::string& native) {
  TString result(path);
  std::size_t end = result.size();
  std::size_t nativeEnd = native.size();
  while (end > 0 && IsSlash(result[end - 1])) --end;
  while (end > RootLength(result) && nativeEnd > 0) {
    const std::size_t start = TStringView(result).substr(0, end).find_last_of(u"\\/:") + 1;
    const std::size_t slash = native.rfind('/', nativeEnd - 1);
    const TString name = NameFromNative(native.substr(slash + 1, nativeEnd - slash - 1));
    // "." and ".." have no counterpart in the native path; keep what is left.
    if (!SameText(name, TStringView(result).substr(start, end - start))) break;
    result.replace(start, end - start, name);
    end = start > 0 ? start - 1 : 0;
    nativeEnd = slash;
  }
  return result;
}

DWORD STDAPICALLTYPE GetLongPathNameW(LPCWSTR path, LPWSTR buffer, DWORD capacity) {
  return SystemCall<DWORD>(0, [&]() -> DWORD {
    if (!path) return FailWith<DWORD>(ERROR_INVALID_PARAMETER, 0);
    std::string native;
    if (!InfoForCall(path, native)) return 0;
    return AnswerText(SpelledAsOnDisk(path, native), buffer, capacity);
  });
}

}  // namespace

#define BIND(Name) api.Name.SetFunction(&Name)
void BindSystemPaths(TApi& api) {
  BIND(PathCanonicalizeW);
  BIND(PathCombineW);
  BIND(GetFullPathNameW);
  BIND(GetLongPathNameW);
}
#undef BIND

}  // namespace oak
