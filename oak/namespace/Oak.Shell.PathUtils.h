// TPathUtils: judging and rewriting path texts.
#pragma once

#include "oak/base/Text.h"

namespace oak {

/// Functions over path texts: drive paths, UNC paths, "\\?\" and "\\?\UNC\" long
/// paths, volume names, URLs, and display paths that start with the name of the
/// Computer folder. Any thread. Only MakeCanonic, GetCurrentDir, GetCurrentDrive,
/// GetSpecialFolderRoot and IsReparsePoint ask the machine.
struct TPathUtils {
  /// The joined path. Raises EArgumentException if both are empty.
  static TString Combine(TStringView pBasePath, TStringView pRelativePath);
  static TString GetCurrentDir();
  static TString GetCurrentDrive();
  /// The display name of the Computer folder if the path starts with it, else empty.
  static TString GetSpecialFolderRoot(TStringView pPath);
  /// The "\\?\" form. Without pForce only for 248 characters and more.
  /// pIsCanonic: the path needs no rewriting before.
  static TString GetUnicodeAPICallPath(TStringView pPath, bool pIsCanonic, bool pForce);
  /// Whether there is such an object and it is a reparse point.
  static bool IsReparsePoint(TStringView pPath);
  /// A URL, a drive letter with its colon, a UNC path or a volume name begins it.
  static bool IsRooted(TStringView pPath);
  static bool IsUnicodeAPICallPath(TStringView pPath);
  static bool IsURL(TStringView pPath);
  static bool IsValidIP(TStringView pText);
  static bool IsValidIPv4(TStringView pText);
  static bool IsValidIPv6(TStringView pText);
  /// Absolute, with long names, without relative parts, repeated delimiters or a
  /// final wildcard.
  static TString MakeCanonic(TStringView pPath);
  /// Without "." and "..".
  static TString RemoveRelativeParts(TStringView pPath);
  static TString RemoveRelativeParts(TStringView pPath, char16_t pDelimiter);
  static bool StartsWithDriveLetter(TStringView pText);

  /// From here on (characters) system calls need the long form.
  static constexpr std::size_t LongPathThreshold = 248;
  static constexpr std::size_t ClassicPathLimit = 260;
  static constexpr TStringView LongPathPrefix = u"\\\\?\\";
  static constexpr TStringView LongUncPathPrefix = u"\\\\?\\UNC\\";
  static constexpr TStringView VolumeNameStart = u"Volume{";
  static constexpr TStringView UncDoubleDelimiter = u"\\\\";
  static constexpr TStringView Ipv6LiteralHostSuffix = u".ipv6-literal.net";
  static constexpr TStringView PathListWildcardEnding = u"\\*";
  static constexpr TStringView NetworkRoot = u"\\\\*";
};

}  // namespace oak
