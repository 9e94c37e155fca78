// The Windows path forms of Text.h.
#include "oak/base/Text.h"

namespace oak {

namespace {
constexpr auto nowhere = TStringView::npos;

bool IsDelimiter(char16_t c) { return c == PathDelim || c == u':'; }

/// Where the file name starts.
std::size_t NameStart(TStringView path) {
  const std::size_t at = path.find_last_of(u"\\:");
  return at == nowhere ? 0 : at + 1;
}

/// Length of "server\share" at the start of the text, or 0 without a share.
std::size_t ShareLength(TStringView text) {
  const std::size_t server = text.find(PathDelim);
  if (server == nowhere || server == 0 || server + 1 == text.size() ||
      text[server + 1] == PathDelim)
    return 0;
  const std::size_t share = text.find(PathDelim, server + 1);
  return share == nowhere ? text.size() : share;
}
}  // namespace

TString IncludeTrailingPathDelimiter(TStringView path) {
  TString result(path);
  if (result.empty() || result.back() != PathDelim) result.push_back(PathDelim);
  return result;
}

TString ExcludeTrailingPathDelimiter(TStringView path) {
  if (path.ends_with(PathDelim)) path.remove_suffix(1);
  return TString(path);
}

TString ExtractFileName(TStringView path) { return TString(path.substr(NameStart(path))); }

TString ExtractFileExt(TStringView path) {
  const TStringView name = path.substr(NameStart(path));
  const std::size_t dot = name.rfind(u'.');
  return dot == nowhere ? TString() : TString(name.substr(dot));
}

TString ExtractFilePath(TStringView path) { return TString(path.substr(0, NameStart(path))); }

TString ExtractFileDir(TStringView path) {
  TStringView dir = path.substr(0, NameStart(path));
  const bool isRoot = dir.size() < 2 || IsDelimiter(dir[dir.size() - 2]);
  if (!isRoot && dir.back() == PathDelim) dir.remove_suffix(1);
  return TString(dir);
}

TString ExtractFileDrive(TStringView path) {
  if (path.size() >= 2 && path[1] == u':') return TString(path.substr(0, 2));
  if (!path.starts_with(u"\\\\")) return {};
  std::size_t prefix = 2;
  if (path.starts_with(u"\\\\?\\")) {
    prefix = 4;
    if (!StartsText(u"UNC\\", path.substr(prefix))) {
      const std::size_t end = path.find(PathDelim, prefix);
      return TString(end == prefix ? TStringView() : path.substr(0, end));
    }
    prefix = 8;
  }
  const std::size_t share = ShareLength(path.substr(prefix));
  return share == 0 ? TString() : TString(path.substr(0, prefix + share));
}

TString ChangeFileExt(TStringView path, TStringView extension) {
  const std::size_t dot = path.find_last_of(u".\\:");
  const bool hasExt = dot != nowhere && path[dot] == u'.';
  return TString(hasExt ? path.substr(0, dot) : path).append(extension);
}

}  // namespace oak
