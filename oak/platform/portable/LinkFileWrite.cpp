#include <algorithm>

#include "oak/platform/portable/LinkFile.h"
#include "oak/platform/portable/LinkFormat.h"

namespace oak {
namespace lnk {
namespace {

constexpr std::size_t LongestText = 0xFFFF;

DWORD FlagsOf(const TLinkFile& link) {
  DWORD flags = IsUnicode | link.OtherFlags;
  if (link.Target) flags |= HasTarget;
  if (!link.LocalPath.empty() || !link.NetworkPath.empty()) flags |= HasLinkInfo;
  if (link.Description) flags |= HasName;
  if (link.RelativePath) flags |= HasRelativePath;
  if (link.WorkingDirectory) flags |= HasWorkingDirectory;
  if (link.Arguments) flags |= HasArguments;
  if (link.IconLocation) flags |= HasIconLocation;
  if (!link.EnvironmentTarget.empty()) flags |= HasEnvironment;
  return flags;
}

void WriteHeader(TWriter& writer, const TLinkFile& link) {
  writer.Write(HeaderSize);
  writer.Write(ClassId);
  writer.Write(FlagsOf(link));
  writer.Write(link.FileAttributes);
  writer.Write(link.Created);
  writer.Write(link.Accessed);
  writer.Write(link.Written);
  writer.Write(link.FileSize);
  writer.Write(link.IconIndex);
  writer.Write(link.ShowCommand);
  writer.Write(link.Hotkey);
  constexpr BYTE reserved[10] = {};
  writer.Append(reserved);
}

/// A fixed drive without a serial number and label.
void WriteVolume(TWriter& writer) {
  constexpr DWORD fixedDrive = 3;
  constexpr DWORD labelAt = 0x10;
  writer.Write(DWORD{0x11});
  writer.Write(fixedDrive);
  writer.Write(DWORD{0});
  writer.Write(labelAt);
  writer.Write(BYTE{0});
}

void WriteNetwork(TWriter& writer, const TString& path) {
  constexpr DWORD headerSize = 0x1C;
  const std::size_t start = writer.Position();
  writer.Write(DWORD{0});  // size, below
  writer.Write(DWORD{0});  // neither device nor provider is told
  writer.Write(headerSize);
  writer.Write(DWORD{0});
  writer.Write(DWORD{0});
  writer.Write(DWORD{0});  // Unicode name, below
  writer.Write(DWORD{0});
  writer.WriteAnsi(path);
  writer.Patch(start + 0x14, writer.Position() - start);
  writer.WriteText(path);
  writer.Write(WORD{0});
  writer.Patch(start, writer.Position() - start);
}

void WriteLinkInfo(TWriter& writer, const TLinkFile& link) {
  const std::size_t start = writer.Position();
  const bool hasLocal = !link.LocalPath.empty();
  writer.Write(DWORD{0});  // size, below
  writer.Write(InfoHeaderUnicode);
  writer.Write(hasLocal ? InfoHasLocalPath : InfoHasNetworkPath);
  for (int offset = 0; offset < 6; ++offset) writer.Write(DWORD{0});
  const auto here = [&] { return writer.Position() - start; };
  if (hasLocal) {
    writer.Patch(start + 0x0C, here());
    WriteVolume(writer);
    writer.Patch(start + 0x10, here());
    writer.WriteAnsi(link.LocalPath);
  } else {
    writer.Patch(start + 0x14, here());
    WriteNetwork(writer, link.NetworkPath);
  }
  writer.Patch(start + 0x18, here());
  writer.WriteAnsi({});
  if (hasLocal) {
    writer.Patch(start + 0x1C, here());
    writer.WriteText(link.LocalPath);
    writer.Write(WORD{0});
  }
  writer.Patch(start + 0x20, here());
  writer.Write(WORD{0});
  writer.Patch(start, here());
}

void WriteTextField(TWriter& writer, const std::optional<TString>& text) {
  if (!text) return;
  const TStringView cut = TStringView(*text).substr(0, LongestText);
  writer.Write(static_cast<WORD>(cut.size()));
  writer.WriteText(cut);
}

void WriteEnvironment(TWriter& writer, const TString& target) {
  constexpr std::size_t room = MAX_PATH - 1;
  const TStringView cut = TStringView(target).substr(0, room);
  const std::size_t start = writer.Position();
  writer.Write(EnvironmentBlockSize);
  writer.Write(EnvironmentBlock);
  writer.WriteAnsi(cut);
  while (writer.Position() - start < EnvironmentUnicodeAt) writer.Write(BYTE{0});
  writer.WriteText(cut);
  while (writer.Position() - start < EnvironmentBlockSize) writer.Write(BYTE{0});
}

}  // namespace
}  // namespace lnk

std::vector<BYTE> WriteLinkFile(const TLinkFile& link) {
  lnk::TWriter writer;
  lnk::WriteHeader(writer, link);
  if (link.Target) {
    const std::size_t size = PidlSize(link.Target.Get());
    writer.Write(static_cast<WORD>(size));
    writer.Append({reinterpret_cast<const BYTE*>(link.Target.Get()), size});
  }
  if (!link.LocalPath.empty() || !link.NetworkPath.empty()) lnk::WriteLinkInfo(writer, link);
  lnk::WriteTextField(writer, link.Description);
  lnk::WriteTextField(writer, link.RelativePath);
  lnk::WriteTextField(writer, link.WorkingDirectory);
  lnk::WriteTextField(writer, link.Arguments);
  lnk::WriteTextField(writer, link.IconLocation);
  if (!link.EnvironmentTarget.empty()) lnk::WriteEnvironment(writer, link.EnvironmentTarget);
  writer.Append(link.OtherBlocks);
  writer.Write(DWORD{0});
  return writer.Finish();
}

}  // namespace oak
