// Cancellation tokens, and the interlocked maximum.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "oak/threading/Oak.Threading.h"

namespace oak::tests {
namespace {

TEST(CancellationToken, CancelStaysAndResetMakesAnother) {
  CancellationToken token;
  token.Cancel();
  EXPECT_FALSE(token.GetToken()->IsCancellationRequested()) << "there was no work to cancel";
  const Ref<ICancellationToken> first = token;
  EXPECT_EQ(first, token.GetToken());
  const Ref<ICancellationIndicator> asIndicator = token;
  EXPECT_EQ(asIndicator.As<ICancellationToken>(), first);
  token.Cancel();
  EXPECT_TRUE(first->IsCancellationRequested());
  EXPECT_EQ(first, token.GetToken()) << "a cancelled token remains the present one";

  CancellationToken other;
  const Ref<ICancellationToken> second = other;
  other.Reset();
  EXPECT_TRUE(second->IsCancellationRequested());
  const Ref<ICancellationToken> third = other;
  EXPECT_NE(second, third);
  EXPECT_FALSE(third->IsCancellationRequested());
}

TEST(CancellationToken, ACopySharesTheTokenOfThatMoment) {
  CancellationToken token;
  const Ref<ICancellationToken> made = token;
  CancellationToken copy(token), assigned;
  assigned = token;
  token.Reset();
  EXPECT_TRUE(made->IsCancellationRequested());
  EXPECT_EQ(copy.GetToken(), made);
  EXPECT_EQ(assigned.GetToken(), made);
  EXPECT_NE(token.GetToken(), made);
  assigned = CancellationToken();
  EXPECT_NE(assigned.GetToken(), made);
}

// For the sanitizers: a token must not go while another thread is about to take it.
TEST(CancellationToken, IsMadeResetAndAskedByAllThreadsAtOnce) {
  constexpr int rounds = 3000, threads = 4;
  CancellationToken token;
  std::vector<std::thread> all;
  for (int i = 0; i < threads; ++i) {
    all.emplace_back([&token, i] {
      for (int round = 0; round < rounds; ++round) {
        const Ref<ICancellationToken> mine = token;
        ASSERT_TRUE(mine);
        if (i == 0) {
          token.Reset();
          ASSERT_TRUE(mine->IsCancellationRequested() || token.GetToken() != mine);
        } else if (i == 1) {
          token.Cancel();
        } else {
          const CancellationToken copy(token);
          mine->IsCancellationRequested();
        }
      }
    });
  }
  for (std::thread& thread : all) thread.join();
}

TEST(OakInterlocked, RaisesAndNeverLowers) {
  struct TCase {
    std::int64_t Before, New, After;
    bool Replaced;
  };
  constexpr auto most = std::numeric_limits<std::int64_t>::max();
  constexpr auto least = std::numeric_limits<std::int64_t>::min();
  const TCase cases[] = {
      {1, 2, 2, true},           {2, 2, 2, false},
      {3, 2, 3, false},          {-1, 0, 0, true},  // the high half is signed
      {0, -1, 0, false},         {0x7FFFFFFF, 0x80000000, 0x80000000, true},  // the low one is not
      {least, most, most, true}, {most, least, most, false}};
  for (const TCase& c : cases) {
    std::atomic<std::int64_t> value(c.Before);
    EXPECT_EQ(TOakInterlocked::SetEqualOrHigher(value, c.New), c.Replaced);
    EXPECT_EQ(value, c.After);
  }
}

}  // namespace
}  // namespace oak::tests
