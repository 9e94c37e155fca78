// Copying, moving and removing of native trees.
#include "oak/platform/portable/FileTransfer.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <sys/xattr.h>

#include <cerrno>
#include <filesystem>

#include "NativeTree.h"
#include "WithoutRoot.h"

namespace oak::tests {
namespace {

namespace fs = std::filesystem;

TEST(FileTransferNames, FreeOnes) {
  const std::string longest(255, 'x');
  const struct {
    std::string Name;
    bool Folder;
    TFreeName Form;
    unsigned Attempt;
    std::string Expected;
  } cases[] = {{"a.txt", false, TFreeName::Number, 1, "a (2).txt"},
               {"a.tar.gz", false, TFreeName::Number, 2, "a.tar (3).gz"},
               {"v1.5", true, TFreeName::Copy, 0, "v1.5 - Copy"},
               {".profile", false, TFreeName::Copy, 0, ".profile - Copy"},
               {longest, false, TFreeName::Copy, 0, std::string(248, 'x') + " - Copy"},
               {std::string(249, 'x') + "\xE2\x82\xACxyz", true, TFreeName::Number, 1,
                std::string(249, 'x') + " (2)"},  // no half of a character
               {"a." + std::string(253, 'e'), false, TFreeName::Number, 1,
                ("a (2)." + std::string(253, 'e')).substr(0, 255)}};
  for (const auto& test : cases) {
    const std::string name = CandidateName(test.Name, test.Folder, test.Form, test.Attempt);
    EXPECT_EQ(name, test.Expected);
    EXPECT_LE(name.size(), 255u);
  }
}

void SetTimes(const std::string& path, std::int64_t seconds) {
  const struct timespec times[2] = {{seconds, 111222333}, {seconds, 444555666}};
  ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, AT_SYMLINK_NOFOLLOW), 0);
}

void MakeRichTree(const TNativeTree& tree) {
  tree.Folder("from");
  tree.File("from/bad \xFF name", std::string(700000, 'q'));
  tree.File("from/* ? : < > |", "odd");
  tree.File("from/empty", "");
  tree.Folder("from/closed");
  tree.File("from/closed/inside", "in");
  tree.Link("from/up", "..");
  tree.Link("from/lost", "nowhere at all");
  ASSERT_EQ(::mkfifo(tree.Native("from/pipe").c_str(), 0640), 0);
  static_cast<void>(::setxattr(tree.Native("from/empty").c_str(), "user.oak.comment", "hi", 2, 0));
  ASSERT_EQ(::chmod(tree.Native("from/empty").c_str(), 0440), 0);
  SetTimes(tree.Native("from/empty"), 1000000000);
  SetTimes(tree.Native("from/lost"), 1100000000);
  ASSERT_EQ(::chmod(tree.Native("from/closed").c_str(), 0555), 0);
  SetTimes(tree.Native("from/closed"), 1200000000);
}

// One line for each object: name, mode, time, and what it holds.
std::vector<std::string> Snapshot(const std::string& root) {
  std::vector<std::string> lines;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    const struct stat info = StatOf(entry.path());
    std::string line = entry.path().string().substr(root.size());
    line += "|" + std::to_string(S_ISLNK(info.st_mode) ? 0 : info.st_mode);
    if (!S_ISDIR(info.st_mode) || info.st_mtim.tv_nsec == 444555666)
      line += "|" + std::to_string(S_ISFIFO(info.st_mode) ? 0 : info.st_mtim.tv_nsec);
    if (S_ISLNK(info.st_mode)) line += "|" + fs::read_symlink(entry.path()).string();
    if (S_ISREG(info.st_mode)) {
      std::ifstream file(entry.path(), std::ios::binary);
      line += "|" + std::string(std::istreambuf_iterator<char>(file), {});
    }
    lines.push_back(std::move(line));
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

void Unlock(const TNativeTree& tree) {  // so that the test's end can remove it
  for (const char* name : {"from/closed", "to/closed"}) ::chmod(tree.Native(name).c_str(), 0755);
}

TEST(FileTransfer, CopiesEverythingThatAnObjectIs) {
  const TNativeTree tree;
  MakeRichTree(tree);
  EXPECT_EQ(CopyTree(tree.Native("from"), tree.Native("to"), {}), 0);
  EXPECT_EQ(Snapshot(tree.Native("to")), Snapshot(tree.Native("from")));
  char comment[8] = {};
  if (::getxattr(tree.Native("from/empty").c_str(), "user.oak.comment", comment, 8) == 2) {
    EXPECT_EQ(::getxattr(tree.Native("to/empty").c_str(), "user.oak.comment", comment, 8), 2);
  }
  EXPECT_EQ(CopyTree(tree.Native("from/empty"), tree.Native("to"), {}), EEXIST);
  EXPECT_EQ(CopyTree(tree.Native("none"), tree.Native("to 2"), {}), ENOENT);
  EXPECT_FALSE(tree.Exists("to 2"));
  Unlock(tree);
}

// However far it came, a copy that is cancelled is gone and its source whole.
TEST(FileTransfer, CancelledAtEachStep) {
  const TNativeTree tree;
  MakeRichTree(tree);
  const auto before = Snapshot(tree.Native("from"));
  int steps = 0;
  for (int allowed = 0;; ++allowed) {
    int left = allowed;
    const int error = CopyTree(tree.Native("from"), tree.Native("to"),
                               [&](const std::string&, std::uint64_t) { return left-- > 0; });
    if (error == 0) break;
    ASSERT_EQ(error, ECANCELED);
    ASSERT_FALSE(tree.Exists("to")) << allowed;
    ++steps;
  }
  EXPECT_GT(steps, 10);  // objects, and pieces of the long file
  EXPECT_EQ(Snapshot(tree.Native("from")), before);
  EXPECT_EQ(Snapshot(tree.Native("to")), before);
  Unlock(tree);
}

// A stranger's program that runs as its owner would run as the user afterwards.
TEST(FileTransfer, RightsOfStrangersAreNotCopied) {
  const TNativeTree tree;
  if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
  for (const char* name : {"own", "strange"}) {
    tree.File(name);
    const uid_t owner = name[0] == 's' ? 12345 : 0;
    ASSERT_EQ(::chown(tree.Native(name).c_str(), owner, owner), 0);
    ASSERT_EQ(::chmod(tree.Native(name).c_str(), 06755), 0);
    ASSERT_EQ(CopyTree(tree.Native(name), tree.Native(name) + " copy", {}), 0);
  }
  EXPECT_EQ(StatOf(tree.Native("own copy")).st_mode & 07777, 06755u);
  EXPECT_EQ(StatOf(tree.Native("strange copy")).st_mode & 07777, 0755u);
}

TEST(FileTransfer, CopyIntoItselfEnds) {
  const TNativeTree tree;
  tree.Folder("from");
  tree.Folder("from/sub");
  EXPECT_EQ(CopyTree(tree.Native("from"), tree.Native("from/sub/copy"), {}), EINVAL);
  EXPECT_FALSE(tree.Exists("from/sub/copy"));
}

// A name taken within the copy is no reason to try the next name for the whole.
TEST(FileTransfer, UnfinishedCopiesKeepWhatOthersPutThere) {
  const TNativeTree tree;
  tree.Folder("from");
  for (const char* name : {"from/a", "from/b"}) tree.File(name, "mine");
  int tries = 0;
  std::string made;
  const auto meddle = [&](const std::string& native, std::uint64_t) {
    if (native.ends_with("/a")) tree.File("to/a", "foreign");
    return true;
  };
  const int error =
      AtFreeName(tree.Root(), "to", true, TFreeName::Number, made, [&](const std::string& place) {
        ++tries;
        return CopyTree(tree.Native("from"), place, meddle);
      });
  EXPECT_EQ(error, ENOTUNIQ);
  EXPECT_EQ(tries, 1);
  EXPECT_EQ(tree.Text("to/a"), "foreign");
  EXPECT_FALSE(tree.Exists("to/b"));
}

// --- a disk that fills up -------------------------------------------------------------------

std::size_t gRoom = 0;
ssize_t WriteWhileThereIsRoom(int descriptor, const void* bytes, std::size_t count) {
  if (gRoom == 0) return errno = ENOSPC, -1;
  const std::size_t part = std::min({count, gRoom, std::size_t{1000}});
  gRoom -= part;
  return ::write(descriptor, bytes, part);
}

struct TFullDisk {
  explicit TFullDisk(std::size_t room) {
    gRoom = room;
    SetNativeWrite(&WriteWhileThereIsRoom);
  }
  ~TFullDisk() { SetNativeWrite(nullptr); }
};

TEST(FileTransfer, FullDisk) {
  const TNativeTree tree;
  tree.Folder("from");
  tree.File("from/a", std::string(5000, 'a'));
  tree.File("from/b", std::string(5000, 'b'));
  for (const std::size_t room : {0u, 1u, 4999u, 5000u, 9999u}) {
    const TFullDisk disk(room);
    EXPECT_EQ(CopyTree(tree.Native("from"), tree.Native("to"), {}), ENOSPC) << room;
    EXPECT_FALSE(tree.Exists("to"));
  }
  const TFullDisk disk(10000);
  EXPECT_EQ(CopyTree(tree.Native("from"), tree.Native("to"), {}), 0);
  EXPECT_EQ(tree.Text("to/a"), std::string(5000, 'a'));
}

// --- moving ---------------------------------------------------------------------------------

TEST(FileTransfer, MovesNeverReplace) {
  const TNativeTree tree;
  tree.File("a", "a");
  tree.File("taken", "taken");
  tree.Folder("empty");
  tree.Link("broken", "nowhere");
  for (const char* name : {"taken", "empty", "broken"})
    EXPECT_EQ(MoveTree(tree.Native("a"), tree.Native(name), {}), EEXIST) << name;
  EXPECT_EQ(MoveTree(tree.Native("a"), tree.Native("b"), {}), 0);
  EXPECT_EQ(tree.Text("b"), "a");
  EXPECT_EQ(tree.Text("taken"), "taken");
}

TEST(FileTransfer, MovesAcrossDevices) {
  const TNativeTree tree;
  const TOtherDevice other;
  if (!other.IsOther(tree.Root())) GTEST_SKIP() << "no second device";
  MakeRichTree(tree);
  ::chmod(tree.Native("from/closed").c_str(), 0755);  // a closed folder keeps what lies in it
  const auto before = Snapshot(tree.Native("from"));
  bool copied = false;
  int left = 5;
  EXPECT_EQ(MoveTree(
                tree.Native("from"), other.Native("to"),
                [&](const std::string&, std::uint64_t) { return left-- > 0; }, &copied),
            ECANCELED);
  EXPECT_FALSE(copied);
  EXPECT_EQ(Snapshot(tree.Native("from")), before);
  EXPECT_FALSE(fs::exists(other.Native("to")));
  SetNativeFlush([](int) noexcept { return errno = EIO, -1; });  // the disk is going
  EXPECT_EQ(MoveTree(tree.Native("from"), other.Native("to"), {}, &copied), EIO);
  SetNativeFlush(nullptr);
  EXPECT_FALSE(copied);
  EXPECT_EQ(Snapshot(tree.Native("from")), before);
  EXPECT_FALSE(fs::exists(other.Native("to")));
  EXPECT_EQ(MoveTree(tree.Native("from"), other.Native("to"), {}, &copied), 0);
  EXPECT_TRUE(copied);
  EXPECT_FALSE(tree.Exists("from"));
  EXPECT_EQ(Snapshot(other.Native("to")), before);
}

// What comes up in the source while it is copied is in no copy.
TEST(FileTransfer, MovesTakeAwayOnlyWhatWasCopied) {
  const TNativeTree tree;
  const TOtherDevice other;
  if (!other.IsOther(tree.Root())) GTEST_SKIP() << "no second device";
  tree.Folder("from");
  tree.Folder("from/sub");
  for (const char* name : {"from/a", "from/b", "from/sub/c"}) tree.File(name, "old");
  bool copied = false, changed = false;
  const auto meddle = [&](const std::string& native, std::uint64_t bytes) {
    if (bytes > 0 && native.ends_with("/a") && !std::exchange(changed, true))
      std::ofstream(native, std::ios::app) << " and new";
    if (bytes > 0 && native.ends_with("/c")) tree.File("from/sub/late", "late");
    return true;
  };
  EXPECT_NE(MoveTree(tree.Native("from"), other.Native("to"), meddle, &copied), 0);
  EXPECT_TRUE(copied);
  EXPECT_EQ(tree.Text("from/a"), "old and new");
  EXPECT_EQ(tree.Text("from/sub/late"), "late");
  EXPECT_FALSE(tree.Exists("from/b") || tree.Exists("from/sub/c"));
  EXPECT_TRUE(fs::exists(other.Native("to/b")) && fs::exists(other.Native("to/sub/c")));
}

// Mounts by a process of their own: 0 if both removals were refused, 1 if not, 2 without the right
// to mount.
int RemoveUnderMount(const TNativeTree& tree) {
  const pid_t child = ::fork();
  if (child == 0) {
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0 ||
        ::mount(tree.Native("data").c_str(), tree.Native("from/sub").c_str(), nullptr, MS_BIND,
                nullptr) != 0)
      ::_exit(2);
    const bool refused =
        RemoveTree(tree.Native("from")) == EBUSY && RemoveTree(tree.Native("from/sub")) == EBUSY;
    ::_exit(refused ? 0 : 1);
  }
  int status = 0;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

TEST(FileTransfer, RemovalStopsAtMounts) {
  const TNativeTree tree;
  for (const char* name : {"data", "from", "from/sub"}) tree.Folder(name);
  tree.File("data/keep");
  const int result = RemoveUnderMount(tree);
  if (result == 2) GTEST_SKIP() << "may not mount";
  EXPECT_EQ(result, 0);
  EXPECT_TRUE(tree.Exists("data/keep"));
}

TEST(FileTransfer, SourceThatStaysBehindCostsNoCopy) {
  WithoutRoot([&] {
    const TNativeTree tree;
    const TOtherDevice other;
    if (!other.IsOther(tree.Root())) GTEST_SKIP() << "no second device";
    MakeRichTree(tree);
    bool copied = false;
    EXPECT_EQ(MoveTree(tree.Native("from"), other.Native("to"), {}, &copied), EACCES);
    EXPECT_TRUE(copied);
    EXPECT_TRUE(tree.Exists("from/closed/inside"));
    EXPECT_TRUE(fs::exists(other.Native("to/closed/inside")));
    EXPECT_EQ(RemoveTree(other.Native("to"), {}, true), 0);  // what was closed too
    Unlock(tree);
  });
}

}  // namespace
}  // namespace oak::tests
