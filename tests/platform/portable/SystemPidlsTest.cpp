// Item identifier lists as memory, whatever bytes they hold.
#include <cstring>
#include <random>

#include "oak/base/Pidl.h"
#include "tests/platform/portable/SystemTest.h"

namespace oak::test {
namespace {

// A list of elements with these texts as bytes, in memory that ends with it.
std::vector<BYTE> List(std::initializer_list<std::string_view> elements) {
  std::vector<BYTE> bytes;
  for (const std::string_view element : elements) {
    const auto size = static_cast<USHORT>(element.size() + 2);
    bytes.push_back(static_cast<BYTE>(size & 0xFF));
    bytes.push_back(static_cast<BYTE>(size >> 8));
    bytes.insert(bytes.end(), element.begin(), element.end());
  }
  bytes.insert(bytes.end(), {0, 0});
  return bytes;
}
PCItemIdList P(const std::vector<BYTE>& list) {
  return reinterpret_cast<PCItemIdList>(list.data());
}
std::ptrdiff_t Offset(const std::vector<BYTE>& list, PCItemIdList at) {
  return at ? reinterpret_cast<const BYTE*>(at) - list.data() : -1;
}
std::vector<BYTE> Bytes(const TPidl& pidl) {
  const auto* bytes = reinterpret_cast<const BYTE*>(pidl.Get());
  return {bytes, bytes + Api().ILGetSize(pidl.Get())};
}

TEST(SystemPidls, TakenApartAndPutTogether) {
  const auto abc = List({"a", "bb", "ccc"});
  const auto ab = List({"a", "bb"});
  const auto c = List({"ccc"});
  const auto root = List({});
  EXPECT_EQ(Api().ILGetSize(P(abc)), 14u);
  EXPECT_EQ(Api().ILGetSize(P(root)), 2u);
  EXPECT_EQ(Bytes(TPidl::Adopt(Api().ILClone(P(abc)))), abc);
  EXPECT_EQ(Bytes(TPidl::Adopt(Api().ILCloneFirst(P(abc)))), List({"a"}));
  EXPECT_EQ(Bytes(TPidl::Adopt(Api().ILCloneFirst(P(root)))), root);
  EXPECT_EQ(Bytes(TPidl::Adopt(Api().ILCombine(P(ab), P(c)))), abc);
  EXPECT_EQ(Bytes(TPidl::Adopt(Api().ILCombine(nullptr, P(c)))), c);
  EXPECT_EQ(Bytes(TPidl::Adopt(Api().ILCombine(P(c), nullptr))), c);
  EXPECT_EQ(Bytes(TPidl::Adopt(Api().ILCombine(P(root), P(root)))), root);
  EXPECT_EQ(Offset(abc, Api().ILGetNext(P(abc))), 3);
  EXPECT_EQ(Offset(abc, Api().ILFindLastID(P(abc))), 7);
  EXPECT_EQ(Offset(root, Api().ILFindLastID(P(root))), 0);
  EXPECT_EQ(Api().ILGetNext(P(root)), nullptr);

  TPidl cut = TPidl::Copy(P(abc));
  EXPECT_TRUE(Api().ILRemoveLastID(cut.Get()));
  EXPECT_EQ(Bytes(cut), ab);
  EXPECT_TRUE(Api().ILRemoveLastID(cut.Get()));
  EXPECT_TRUE(Api().ILRemoveLastID(cut.Get()));
  EXPECT_FALSE(Api().ILRemoveLastID(cut.Get()));
  EXPECT_EQ(Bytes(cut), root);
}

TEST(SystemPidls, Kinship) {
  const auto abc = List({"a", "bb", "ccc"});
  const auto ab = List({"a", "bb"});
  const auto ax = List({"a", "bx"});
  const auto a = List({"a"});
  const auto root = List({});
  struct {
    const std::vector<BYTE>& Parent;
    const std::vector<BYTE>& Child;
    std::ptrdiff_t Rest;
    bool Immediate;
  } const cases[] = {
      {root, abc, 0, false}, {root, a, 0, true},   {a, abc, 3, false},   {ab, abc, 7, true},
      {abc, abc, 12, false}, {abc, ab, -1, false}, {ax, abc, -1, false}, {root, root, 0, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Offset(c.Child, Api().ILFindChild(P(c.Parent), P(c.Child))), c.Rest);
    EXPECT_EQ(Api().ILIsParent(P(c.Parent), P(c.Child), FALSE), c.Rest >= 0);
    EXPECT_EQ(Api().ILIsParent(P(c.Parent), P(c.Child), TRUE), c.Immediate);
    EXPECT_EQ(Api().ILIsEqual(P(c.Parent), P(c.Child)), &c.Parent == &c.Child);
  }
}

TEST(SystemPidls, NilIsAnswered) {
  const auto a = List({"a"});
  EXPECT_EQ(Api().ILGetSize(nullptr), 0u);
  EXPECT_EQ(Api().ILClone(nullptr), nullptr);
  EXPECT_EQ(Api().ILCloneFirst(nullptr), nullptr);
  EXPECT_EQ(Api().ILCombine(nullptr, nullptr), nullptr);
  EXPECT_EQ(Api().ILGetNext(nullptr), nullptr);
  EXPECT_EQ(Api().ILFindLastID(nullptr), nullptr);
  EXPECT_FALSE(Api().ILRemoveLastID(nullptr));
  EXPECT_EQ(Api().ILFindChild(nullptr, P(a)), nullptr);
  EXPECT_EQ(Api().ILFindChild(P(a), nullptr), nullptr);
  EXPECT_FALSE(Api().ILIsParent(nullptr, P(a), FALSE));
  EXPECT_FALSE(Api().ILIsEqual(nullptr, P(a)));
  EXPECT_TRUE(Api().ILIsEqual(nullptr, nullptr));
  Api().ILFree(nullptr);
}

// An element that claims less than its own size field ends a list; nothing reads
// beyond that, as the sanitizers see.
TEST(SystemPidls, BrokenSizesEndTheList) {
  const std::vector<BYTE> one = {3, 0, 'a', 1, 0};
  EXPECT_EQ(Api().ILGetSize(P(one)), 5u);
  EXPECT_EQ(Bytes(TPidl::Adopt(Api().ILClone(P(one)))), List({"a"}));
  EXPECT_EQ(Offset(one, Api().ILFindLastID(P(one))), 0);
  EXPECT_TRUE(Api().ILIsEqual(P(one), P(List({"a"}))));
  const std::vector<BYTE> empty = {2, 0, 2, 0, 0, 0};  // elements without data
  EXPECT_EQ(Api().ILGetSize(P(empty)), 6u);
  EXPECT_EQ(Offset(empty, Api().ILFindLastID(P(empty))), 2);
}

TEST(SystemPidls, AnyListsKeepTheRules) {
  std::mt19937 random(11);
  for (int round = 0; round < 3000; ++round) {
    std::vector<BYTE> list;
    for (auto n = random() % 6; n > 0; --n) {
      const std::size_t size = random() % 9 + 2;
      list.push_back(static_cast<BYTE>(size));
      list.push_back(0);
      for (std::size_t i = 2; i < size; ++i) list.push_back(static_cast<BYTE>(random() % 3));
    }
    list.push_back(static_cast<BYTE>(random() % 2));
    list.push_back(0);
    const TPidl copy = TPidl::Adopt(Api().ILClone(P(list)));
    ASSERT_TRUE(Api().ILIsEqual(P(list), copy.Get()));
    TPidl parent = TPidl::Copy(copy.Get());
    const TPidl last = TPidl::Copy(Api().ILFindLastID(copy.Get()));
    const bool cut = Api().ILRemoveLastID(parent.Get()) != FALSE;
    ASSERT_EQ(cut, PidlDepth(copy.Get()) > 0);
    const TPidl again = TPidl::Adopt(Api().ILCombine(parent.Get(), last.Get()));
    ASSERT_TRUE(Api().ILIsEqual(again.Get(), copy.Get()));
    ASSERT_EQ(Api().ILIsParent(parent.Get(), copy.Get(), TRUE), cut);
  }
}

}  // namespace
}  // namespace oak::test
