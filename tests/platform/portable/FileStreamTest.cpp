// Files as streams.
#include "NativeTree.h"
#include "oak/platform/portable/FileStream.h"

namespace oak::tests {
namespace {

Ref<IStream> Open(const TNativeTree& tree, const std::string& name, DWORD mode,
                  HRESULT expected = S_OK) {
  Ref<IStream> stream;
  EXPECT_EQ(OpenFileStream(tree.Native(name), W(FromUtf8(name)), mode, stream.Put()), expected);
  return stream;
}

std::string Read(IStream& stream, ULONG count, HRESULT expected = S_OK) {
  std::string text(count, 0);
  ULONG got = 99;
  EXPECT_EQ(stream.Read(text.data(), count, &got), expected);
  text.resize(got);
  return text;
}

ULONGLONG Seek(IStream& stream, LONGLONG move, DWORD origin, HRESULT expected = S_OK) {
  LARGE_INTEGER distance;
  distance.QuadPart = move;
  ULARGE_INTEGER position{};
  EXPECT_EQ(stream.Seek(distance, origin, &position), expected);
  return position.QuadPart;
}

TEST(FileStream, ReadsWritesAndSeeks) {
  const TNativeTree tree;
  tree.File("file", "0123456789");
  const auto stream = Open(tree, "file", STGM_READWRITE | STGM_SHARE_DENY_NONE);
  EXPECT_EQ(Read(*stream, 4), "0123");
  EXPECT_EQ(Seek(*stream, 1, STREAM_SEEK_CUR), 5u);
  EXPECT_EQ(Read(*stream, 100, S_FALSE), "56789");
  EXPECT_EQ(Seek(*stream, -2, STREAM_SEEK_END), 8u);
  ULONG written = 0;
  EXPECT_EQ(stream->Write("abcd", 4, &written), S_OK);
  EXPECT_EQ(written, 4u);
  EXPECT_EQ(tree.Text("file"), "01234567abcd");
  // A clone has its own position.
  Ref<IStream> clone;
  ASSERT_EQ(stream->Clone(clone.Put()), S_OK);
  Seek(*clone, 0, STREAM_SEEK_SET);
  EXPECT_EQ(Read(*clone, 2), "01");
  EXPECT_EQ(Seek(*stream, 0, STREAM_SEEK_CUR), 12u);
  // Places before the start and beyond everything are refused and change nothing.
  Seek(*stream, -1, STREAM_SEEK_SET, STG_E_INVALIDFUNCTION);
  Seek(*stream, INT64_MAX, STREAM_SEEK_CUR, STG_E_INVALIDFUNCTION);
  Seek(*stream, 0, 3, STG_E_INVALIDFUNCTION);
  EXPECT_EQ(Seek(*stream, 0, STREAM_SEEK_CUR), 12u);
  ULARGE_INTEGER size{};
  size.QuadPart = 3;
  EXPECT_EQ(stream->SetSize(size), S_OK);
  EXPECT_EQ(tree.Text("file"), "012");
  const auto reader = Open(tree, "file", STGM_READ | STGM_SHARE_DENY_NONE);
  EXPECT_EQ(reader->Write("x", 1, nullptr), STG_E_ACCESSDENIED);
  EXPECT_EQ(reader->SetSize({}), STG_E_ACCESSDENIED);
}

TEST(FileStream, CopiesAndTells) {
  const TNativeTree tree;
  const std::string text(300000, 'x');
  tree.File("from", text + "tail");
  tree.File("to", "");
  const auto from = Open(tree, "from", STGM_READ | STGM_SHARE_DENY_NONE);
  const auto to = Open(tree, "to", STGM_WRITE | STGM_SHARE_DENY_NONE);
  ULARGE_INTEGER count{}, read{}, written{};
  count.QuadPart = text.size();
  ASSERT_EQ(from->CopyTo(to.Get(), count, &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, text.size());
  EXPECT_EQ(written.QuadPart, text.size());
  count.QuadPart = ~0ull;
  ASSERT_EQ(from->CopyTo(to.Get(), count, &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 4u);
  EXPECT_EQ(tree.Text("to"), text + "tail");
  STATSTG stat{};
  ASSERT_EQ(from->Stat(&stat, STATFLAG_DEFAULT), S_OK);
  EXPECT_EQ(FromW(stat.pwcsName), u"from");
  CoTaskMemFree(stat.pwcsName);
  EXPECT_EQ(stat.cbSize.QuadPart, text.size() + 4);
}

TEST(FileStream, ShareModes) {
  const TNativeTree tree;
  tree.File("file");
  constexpr DWORD all = STGM_SHARE_DENY_NONE, noWriters = STGM_SHARE_DENY_WRITE,
                  noReaders = STGM_SHARE_DENY_READ, nobody = STGM_SHARE_EXCLUSIVE;
  const struct {
    DWORD First, Second;
    bool Together;
  } cases[] = {{STGM_READWRITE | all, STGM_READWRITE | all, true},
               {STGM_READWRITE, STGM_READWRITE, true},  // without a word all is shared
               {STGM_READ | noWriters, STGM_READ | noWriters, true},
               {STGM_READ | noWriters, STGM_WRITE | all, false},
               {STGM_READ | noWriters, STGM_READWRITE | all, false},
               {STGM_WRITE | noWriters, STGM_READ | noWriters, false},
               {STGM_WRITE | noReaders, STGM_WRITE | all, true},
               {STGM_WRITE | noReaders, STGM_READ | all, false},
               {STGM_READ | nobody, STGM_READ | all, false},
               {STGM_READ | nobody, STGM_WRITE | all, false}};
  for (const auto& test : cases)
    for (const auto& [a, b] :
         {std::pair(test.First, test.Second), std::pair(test.Second, test.First)}) {
      SCOPED_TRACE(::testing::Message() << a << " then " << b);
      const auto first = Open(tree, "file", a);
      Open(tree, "file", b, test.Together ? S_OK : STG_E_SHAREVIOLATION);
    }
  // A refused or closed stream leaves no lock behind.
  EXPECT_TRUE(Open(tree, "file", STGM_READWRITE | nobody));
}

TEST(FileStream, WhatIsNotOpened) {
  const TNativeTree tree;
  tree.Folder("folder");
  tree.Link("loop", "loop");
  ASSERT_EQ(mkfifo(tree.Native("pipe").c_str(), 0666), 0);
  Open(tree, "missing", STGM_READ, STG_E_FILENOTFOUND);
  Open(tree, "folder", STGM_READ, STG_E_ACCESSDENIED);
  Open(tree, "pipe", STGM_READ, STG_E_ACCESSDENIED);
  Open(tree, "folder", 3, STG_E_INVALIDFLAG);
  Open(tree, "loop", STGM_READ, Win32(ERROR_CANT_RESOLVE_FILENAME));
  // A refused opening must not empty the file.
  tree.File("file", "text");
  const auto holder = Open(tree, "file", STGM_READ | STGM_SHARE_DENY_WRITE);
  Open(tree, "file", STGM_WRITE | STGM_CREATE | STGM_SHARE_DENY_NONE, STG_E_SHAREVIOLATION);
  EXPECT_EQ(tree.Text("file"), "text");
  EXPECT_TRUE(Open(tree, "new", STGM_WRITE | STGM_CREATE));
  EXPECT_TRUE(tree.Exists("new"));
}

}  // namespace
}  // namespace oak::tests
