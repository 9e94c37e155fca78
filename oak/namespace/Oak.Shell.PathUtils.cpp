#include "oak/namespace/Oak.Shell.PathUtils.h"

#include "oak/base/Exceptions.h"
#include "oak/namespace/OakItemIdList.h"
#include "oak/namespace/Shell_Win32.h"
#include "oak/platform/Api.h"

namespace oak {
namespace {

/// What the system writes at most, in characters with the terminating one.
constexpr std::size_t LongBufferLength = 32768;
constexpr DWORD InvalidAttributes = 0xFFFFFFFF;

/// A text that the system writes into a long buffer: `pWrite` gets the buffer and
/// its length and tells whether it succeeded. Failure gives the empty text.
template <class TWrite>
TString FromLongBuffer(TWrite pWrite) {
  TString buffer(LongBufferLength, u'\0');
  if (!pWrite(WBuffer(buffer), static_cast<DWORD>(buffer.size()))) return {};
  return buffer.substr(0, buffer.find(u'\0'));
}

/// Glued as texts, for what the system's function does not take.
TString CombineByHand(TStringView pBase, TStringView pRelative) {
  if (pRelative.empty()) return TString(pBase);
  if (pBase.empty() || TPathUtils::IsRooted(pRelative)) return TString(pRelative);
  if (pRelative.starts_with(u".\\")) pRelative.remove_prefix(2);
  if (pRelative.starts_with(PathDelim)) pRelative.remove_prefix(1);
  TString result(pBase);
  if (!result.ends_with(PathDelim) && !result.ends_with(u':')) result += PathDelim;
  return result += pRelative;
}

/// Empty if the system can't combine the two.
TString CombineBySystem(TStringView pBase, TStringView pRelative) {
  if (pRelative.size() > 1 && pRelative[0] == PathDelim && pRelative[1] != PathDelim)
    pRelative.remove_prefix(1);
  const TString base(pBase);
  const TString relative(pRelative);
  return FromLongBuffer([&](LPWSTR buffer, DWORD) {
    return Api().PathCombineW(buffer, W(base), W(relative)) != nullptr;
  });
}

TString LongPathName(const TString& pPath) {
  return FromLongBuffer([&](LPWSTR buffer, DWORD size) {
    const DWORD length = Api().GetLongPathNameW(W(pPath), buffer, size);
    return length != 0 && length < size;
  });
}

/// As Combine, but nothing and nothing is nothing.
TString CombineQuietly(const TString& pBase, TStringView pRelative) {
  return pBase.empty() && pRelative.empty() ? TString() : TPathUtils::Combine(pBase, pRelative);
}

TString MakeAbsolute(const TString& pPath) {
  if (!TPathUtils::GetSpecialFolderRoot(pPath).empty()) return pPath;
  const bool isDriveRelative = pPath.size() >= 2 && pPath[0] == PathDelim && pPath[1] != PathDelim;
  return CombineQuietly(
      isDriveRelative ? TPathUtils::GetCurrentDrive() : TPathUtils::GetCurrentDir(), pPath);
}

/// Each run of delimiters becomes one.
TString CollapseDelimiters(TStringView pText) {
  TString result;
  result.reserve(pText.size());
  for (char16_t c : pText)
    if (c != PathDelim || !result.ends_with(PathDelim)) result += c;
  return result;
}

/// A UNC path whose host is an IPv6 address: the system knows such a host by a
/// name without colons.
TString ReplaceIpv6Host(const TString& pPath) {
  const std::size_t end = pPath.find(PathDelim, 2);
  const TStringView host = TStringView(pPath).substr(2, end == TString::npos ? end : end - 2);
  if (!TPathUtils::IsValidIPv6(host)) return pPath;
  TString result(TPathUtils::UncDoubleDelimiter);
  for (char16_t c : host) result += c == u':' ? u'-' : c;
  result += TPathUtils::Ipv6LiteralHostSuffix;
  return result.append(TStringView(pPath).substr(2 + host.size()));
}

}  // namespace

TString TPathUtils::Combine(TStringView pBasePath, TStringView pRelativePath) {
  if (pBasePath.empty() && pRelativePath.empty())
    throw EArgumentException(u"Both parameters (BasePath and RelativePath) are empty.");
  if (pBasePath.size() + pRelativePath.size() < ClassicPathLimit && IsRooted(pBasePath)) {
    TString result = CombineBySystem(pBasePath, pRelativePath);
    if (!result.empty())
      return IsUnicodeAPICallPath(pBasePath) ? GetUnicodeAPICallPath(result, true, true) : result;
  }
  return CombineByHand(pBasePath, pRelativePath);
}

TString TPathUtils::GetCurrentDir() {
  const TWow64RedirectionOff redirectionOff;
  return FromLongBuffer([](LPWSTR buffer, DWORD size) {
    const DWORD length = Api().GetCurrentDirectoryW(size, buffer);
    return length != 0 && length < size;
  });
}

TString TPathUtils::GetCurrentDrive() { return ExtractFileDrive(GetCurrentDir()); }

TString TPathUtils::GetSpecialFolderRoot(TStringView pPath) {
  if (pPath.empty()) return {};
  const Ref<IItemIdList> drives = TOakItemIdList::CreateForSpecialFolder(SF_DRIVES, true);
  if (!drives) return {};
  TString name = drives->DisplayName(dnfInFolder);
  return !name.empty() && StartsText(name, pPath) ? name : TString();
}

TString TPathUtils::GetUnicodeAPICallPath(TStringView pPath, bool pIsCanonic, bool pForce) {
  if (!pForce && pPath.size() < LongPathThreshold) return TString(pPath);
  TString path = pIsCanonic ? TString(pPath) : MakeCanonic(pPath);
  if (path.size() < 4 || !path.starts_with(UncDoubleDelimiter))
    return TString(LongPathPrefix).append(path);
  if (IsUnicodeAPICallPath(path)) return path;
  return TString(LongUncPathPrefix).append(path, UncDoubleDelimiter.size());
}

bool TPathUtils::IsReparsePoint(TStringView pPath) {
  const TString path =
      ExcludeTrailingPathDelimiter(GetUnicodeAPICallPath(pPath, false, /*pForce=*/false));
  WIN32_FIND_DATAW data{};
  {
    const TWow64RedirectionOff redirectionOff;
    const HANDLE found = Api().FindFirstFileW(W(path), &data);
    if (found == INVALID_HANDLE_VALUE) return false;
    Api().FindClose(found);
  }
  return data.dwFileAttributes != InvalidAttributes &&
         (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

bool TPathUtils::IsRooted(TStringView pPath) {
  if (IsURL(pPath) || pPath.starts_with(UncDoubleDelimiter)) return true;
  if (StartsWithDriveLetter(pPath)) return pPath.size() + (pPath.ends_with(PathDelim) ? 0 : 1) >= 3;
  constexpr std::size_t volumeNameLength = 44;  // "Volume{", 36 characters, "}"
  return pPath.size() >= volumeNameLength && pPath.starts_with(VolumeNameStart) &&
         pPath[volumeNameLength - 1] == u'}';
}

bool TPathUtils::IsUnicodeAPICallPath(TStringView pPath) {
  return pPath.starts_with(LongPathPrefix);
}

TString TPathUtils::MakeCanonic(TStringView pPath) {
  TString text(pPath);
  if (IsURL(text)) return text;
  if (text.size() >= 3 && StartsWithDriveLetter(text) && text[2] != PathDelim)
    text.insert(2, 1, PathDelim);
  if (text.find(u'~') != TString::npos) {
    TString longName = LongPathName(text);
    if (!longName.empty()) text = std::move(longName);
  }
  text = RemoveRelativeParts(IsRooted(text) ? text : MakeAbsolute(text));
  if (Contains(text, UncDoubleDelimiter)) {
    text = CollapseDelimiters(text);
    if (text.starts_with(PathDelim)) text = ReplaceIpv6Host(PathDelim + text);
  }
  if (text.ends_with(PathListWildcardEnding) && text != NetworkRoot) text.pop_back();
  return text;
}

TString TPathUtils::RemoveRelativeParts(TStringView pPath) {
  if (pPath.size() >= ClassicPathLimit) return RemoveRelativeParts(pPath, PathDelim);
  const TString path(pPath);
  TString result(ClassicPathLimit, u'\0');
  if (!Api().PathCanonicalizeW(WBuffer(result), W(path))) return path;
  result.resize(std::min(result.find(u'\0'), result.size()));
  // The system puts a delimiter behind a bare drive and in place of nothing.
  return result.size() > path.size() ? path : result;
}

TString TPathUtils::RemoveRelativeParts(TStringView pPath, char16_t pDelimiter) {
  const auto isDrive = [](TStringView part) { return part.size() == 2 && part[1] == u':'; };
  TStringArray kept;
  for (TString& part : Split(pPath, pDelimiter)) {
    if (part == u".") continue;
    if (part != u"..") {
      kept.push_back(std::move(part));
    } else if (!kept.empty() && !(kept.size() == 1 && isDrive(kept[0]))) {
      kept.pop_back();
    }
  }
  TString result = Join(kept, TStringView(&pDelimiter, 1));
  if (IsRooted(result)) return result;
  if (isDrive(result)) return result + pDelimiter;
  if (!result.empty() && !result.starts_with(pDelimiter)) result.insert(0, 1, pDelimiter);
  return result;
}

bool TPathUtils::StartsWithDriveLetter(TStringView pText) {
  if (pText.size() < 2 || pText[1] != u':') return false;
  const char16_t letter = pText[0];
  return (letter >= u'A' && letter <= u'Z') || (letter >= u'a' && letter <= u'z');
}

}  // namespace oak
