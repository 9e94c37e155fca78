// Owners: item identifier lists, task memory, handles.
#include "oak/base/Pidl.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "oak/base/Handles.h"

namespace oak {
namespace {

PCItemIdList AsList(const std::vector<BYTE>& bytes) {
  return reinterpret_cast<PCItemIdList>(bytes.data());
}

TEST(Pidl, SizeAndDepth) {
  const struct {
    std::vector<BYTE> bytes;
    std::size_t size;
    int depth;
  } cases[] = {
      {{0, 0}, 2, 0},
      {{3, 0, 7, 0, 0}, 5, 1},                     // the second element starts at an odd byte
      {{3, 0, 7, 4, 0, 1, 2, 2, 0, 0, 0}, 11, 3},  // one element of size only
      {{3, 0, 7, 1, 0, 0, 0}, 5, 1},               // a size that can't be: the list ends
  };
  for (const auto& c : cases) {
    EXPECT_EQ(PidlSize(AsList(c.bytes)), c.size);
    EXPECT_EQ(PidlDepth(AsList(c.bytes)), c.depth);
    const TPidl copy = TPidl::Copy(AsList(c.bytes));
    EXPECT_EQ(PidlSize(copy.Get()), c.size);
    EXPECT_EQ(std::memcmp(copy.Get(), c.bytes.data(), c.size - 2), 0);
  }
  EXPECT_EQ(PidlSize(nullptr), 0u);
  EXPECT_EQ(PidlDepth(nullptr), 0);
  EXPECT_FALSE(TPidl::Copy(nullptr));
}

struct TCounted {
  using Type = int;
  static int Invalid() noexcept { return -1; }
  static void Close(int handle) noexcept { closed.push_back(handle); }
  static inline std::vector<int> closed;
};

TEST(Handles, EachIsClosedOnce) {
  TCounted::closed.clear();
  {
    auto a = TUniqueHandle<TCounted>::Adopt(1);
    auto b = TUniqueHandle<TCounted>::Adopt(2);
    a = std::move(b);
    EXPECT_EQ(TCounted::closed, std::vector<int>{1});
    *a.Put() = 3;
    EXPECT_EQ(TCounted::closed, (std::vector<int>{1, 2}));
    const int given = TUniqueHandle<TCounted>::Adopt(9).Detach();
    EXPECT_EQ(given, 9);
    TUniqueHandle<TCounted> nothing;
    EXPECT_FALSE(nothing);
  }
  EXPECT_EQ(TCounted::closed, (std::vector<int>{1, 2, 3}));
}

}  // namespace
}  // namespace oak
