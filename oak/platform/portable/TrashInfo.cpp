#include "oak/platform/portable/TrashInfo.h"

#include <cstdio>

#include "oak/base/DateTime.h"

namespace oak {
namespace {

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

/// Undoes percent-encoding; a "%" that encodes nothing stands for itself.
std::string Decode(std::string_view text) {
  std::string decoded;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const int high = text[i] == '%' && i + 2 < text.size() ? HexDigit(text[i + 1]) : -1;
    const int low = high >= 0 ? HexDigit(text[i + 2]) : -1;
    if (low < 0) {
      decoded += text[i];
      continue;
    }
    decoded += static_cast<char>(high * 16 + low);
    i += 2;
  }
  return decoded;
}

FILETIME ReadDate(const std::string& text) {
  int year, month, day, hour, minute, second;
  FILETIME time{};
  if (std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d", &year, &month, &day, &hour, &minute,
                  &second) != 6)
    return time;
  SYSTEMTIME system{};
  system.wYear = static_cast<WORD>(year);
  system.wMonth = static_cast<WORD>(month);
  system.wDay = static_cast<WORD>(day);
  system.wHour = static_cast<WORD>(hour);
  system.wMinute = static_cast<WORD>(minute);
  system.wSecond = static_cast<WORD>(second);
  SystemToFileTime(system, time);
  return time;
}

}  // namespace

std::string FormatTrashInfo(const std::string& originalPath, const SYSTEMTIME& deleted) {
  std::string text = "[Trash Info]\nPath=";
  constexpr std::string_view plain = "/-_.~!$&'()*+,;=:@";
  for (const char c : originalPath) {
    const auto byte = static_cast<unsigned char>(c);
    const bool letter = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    if (letter || plain.find(c) != std::string_view::npos) {
      text += c;
      continue;
    }
    constexpr const char* digits = "0123456789ABCDEF";
    ((text += '%') += digits[byte >> 4]) += digits[byte & 15];
  }
  char date[64];
  std::snprintf(date, sizeof date, "\nDeletionDate=%04u-%02u-%02uT%02u:%02u:%02u\n", deleted.wYear,
                deleted.wMonth, deleted.wDay, deleted.wHour, deleted.wMinute, deleted.wSecond);
  return text + date;
}

std::optional<TTrashInfo> ReadTrashInfo(std::string_view text) {
  TTrashInfo info;
  bool inGroup = false;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string_view line = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.starts_with('['))
      inGroup = line == "[Trash Info]";
    else if (inGroup && line.starts_with("Path="))
      info.OriginalPath = Decode(line.substr(5));
    else if (inGroup && line.starts_with("DeletionDate="))
      info.Deleted = ReadDate(std::string(line.substr(13)));
  }
  if (info.OriginalPath.empty()) return std::nullopt;
  return info;
}

}  // namespace oak
