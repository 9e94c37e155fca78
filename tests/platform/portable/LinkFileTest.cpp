#include "oak/platform/portable/LinkFile.h"

#include <gtest/gtest.h>

#include <cstring>

#include "oak/platform/shell_api.h"

namespace oak {
namespace {

TLinkFile FullLink() {
  static const BYTE pidl[] = {4, 0, 1, 2, 5, 0, 3, 4, 5, 0, 0};
  TLinkFile link;
  link.Target = TPidl::Copy(reinterpret_cast<PCItemIdList>(pidl));
  link.FileAttributes = FILE_ATTRIBUTE_ARCHIVE;
  link.Written = {0x11223344, 0x01D00000};
  link.FileSize = 77;
  link.IconIndex = -5;
  link.ShowCommand = 7;
  link.Hotkey = 0x0341;
  link.LocalPath = u"C:\\Ordner ä\\файл.txt";
  link.Description = u"Notiz";
  link.WorkingDirectory = u"C:\\Ordner ä";
  link.Arguments = u"-x \"a b\"";
  link.IconLocation = u"";
  link.EnvironmentTarget = u"%USERPROFILE%\\файл.txt";
  link.OtherBlocks = {12, 0, 0, 0, 9, 9, 9, 9, 1, 2, 3, 4};
  return link;
}

TEST(LinkFile, EverythingComesBack) {
  const std::vector<BYTE> bytes = WriteLinkFile(FullLink());
  TLinkFile read;
  ASSERT_EQ(ReadLinkFile(bytes, read), S_OK);
  const TLinkFile link = FullLink();
  ASSERT_EQ(PidlSize(read.Target.Get()), PidlSize(link.Target.Get()));
  EXPECT_EQ(read.IconIndex, -5);
  EXPECT_EQ(read.LocalPath, link.LocalPath);
  EXPECT_EQ(read.RelativePath, std::nullopt);
  EXPECT_EQ(read.Arguments, link.Arguments);
  EXPECT_EQ(read.IconLocation, link.IconLocation);
  EXPECT_EQ(read.EnvironmentTarget, link.EnvironmentTarget);
  EXPECT_EQ(read.OtherBlocks, link.OtherBlocks);
  EXPECT_EQ(WriteLinkFile(read), bytes);
}

TEST(LinkFile, NetworkTargetsKeepTheirShare) {
  TLinkFile link, read;
  link.NetworkPath = u"\\\\Server\\Freigabe ü\\Ordner";
  ASSERT_EQ(ReadLinkFile(WriteLinkFile(link), read), S_OK);
  EXPECT_EQ(read.NetworkPath, link.NetworkPath);
}

/// As an old program writes it: 8-bit texts, a short location block, a suffix.
TEST(LinkFile, EightBitFiles) {
  std::vector<BYTE> bytes(0x4C, 0);
  const auto put = [&](std::initializer_list<int> values) {
    for (const int v : values) bytes.push_back(static_cast<BYTE>(v));
  };
  bytes[0] = 0x4C;
  const BYTE classId[] = {1, 0x14, 2, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};
  std::memcpy(bytes.data() + 4, classId, sizeof(classId));
  bytes[0x14] = 0x2 | 0x4;  // location block and name, no Unicode
  put({0x28, 0, 0,    0, 0x1C, 0, 0, 0, 1, 0, 0,    0, 0, 0,
       0,    0, 0x1C, 0, 0,    0, 0, 0, 0, 0, 0x20, 0, 0, 0});
  put({'C', ':', '\\', 0, 'd', '\\', 'f', 0, 0, 0, 0, 0});
  put({3, 0, 'G', 0xFC, 'n'});
  TLinkFile link;
  ASSERT_EQ(ReadLinkFile(bytes, link), S_OK);
  EXPECT_EQ(link.LocalPath, u"C:\\d\\f");
  EXPECT_EQ(link.Description, u"Gün");
}

TEST(LinkFile, BrokenFilesAreRefusedOrCutNeverCrash) {
  const std::vector<BYTE> whole = WriteLinkFile(FullLink());
  TLinkFile link;
  // Every cut of a good file, and every byte of it flipped.
  for (std::size_t size = 0; size < whole.size(); ++size) ReadLinkFile({whole.data(), size}, link);
  for (std::size_t at = 0; at < whole.size(); ++at) {
    std::vector<BYTE> damaged = whole;
    damaged[at] = static_cast<BYTE>(~damaged[at]);
    ReadLinkFile(damaged, link);
  }
  EXPECT_EQ(ReadLinkFile({}, link), HRESULT_FROM_WIN32(ERROR_BAD_FORMAT));
  EXPECT_EQ(ReadLinkFile({whole.data(), 0x4B}, link), HRESULT_FROM_WIN32(ERROR_BAD_FORMAT));
  std::vector<BYTE> otherClass = whole;
  otherClass[4] ^= 1;
  EXPECT_EQ(ReadLinkFile(otherClass, link), HRESULT_FROM_WIN32(ERROR_BAD_FORMAT));
  EXPECT_FALSE(link.Target);
  // A list that runs out of its bytes is dropped, the rest of the file is not.
  std::vector<BYTE> badList = whole;
  badList[0x4E] = 0xFF;
  ASSERT_EQ(ReadLinkFile(badList, link), S_OK);
  EXPECT_FALSE(link.Target);
  EXPECT_EQ(link.LocalPath, FullLink().LocalPath);
}

}  // namespace
}  // namespace oak
