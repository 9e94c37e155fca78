// Item identifier lists as memory, whatever bytes they hold.
#include <cstring>
#include <random>

#include "oak/base/Pidl.h"
#include "tests/platform/portable/SystemTest.h"

namespace oak::test {
namespace {

PCItemIdList P(const std::vector<BYTE>& list) {
  return reinterpret_cast<PCItemIdList>(list.data());
}

// An element that claims less than its own size field ends a list; nothing reads
// beyond that, as the sanitizers see.
TEST(SystemPidls, BrokenSizesEndTheList) {
  const std::vector<BYTE> one = {3, 0, 'a', 1, 0};
  EXPECT_EQ(Api().ILGetSize(P(one)), 5u);
  const TPidl copy = TPidl::Adopt(Api().ILClone(P(one)));
  const BYTE ended[] = {3, 0, 'a', 0, 0};
  EXPECT_EQ(std::memcmp(copy.Get(), ended, sizeof ended), 0);
  EXPECT_EQ(Api().ILFindLastID(P(one)), P(one));
  EXPECT_TRUE(Api().ILIsEqual(P(one), copy.Get()));
  const std::vector<BYTE> empty = {2, 0, 2, 0, 0, 0};  // elements without data
  EXPECT_EQ(Api().ILGetSize(P(empty)), 6u);
  EXPECT_EQ(Api().ILFindLastID(P(empty)), Api().ILGetNext(P(empty)));
  EXPECT_FALSE(Api().ILIsEqual(P(one), P(empty)));
  EXPECT_EQ(Api().ILFindChild(P(one), P(empty)), nullptr);
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
