#include "net/TransferWatchdog.hpp"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

using std::chrono::milliseconds;

const TransferWatchdog::Clock::time_point start{};

TEST(TransferWatchdog, IdleTimeCountsFromTheStartUntilTheLimit) {
  TransferWatchdog watchdog(milliseconds(1000), start);
  EXPECT_TRUE(watchdog.stillMoving(0, start + milliseconds(1000)));
  EXPECT_FALSE(watchdog.stillMoving(0, start + milliseconds(1001)));
}

TEST(TransferWatchdog, ASlowTransferThatKeepsMovingNeverStalls) {
  TransferWatchdog watchdog(milliseconds(1000), start);
  for (int second = 1; second <= 120; ++second) {
    ASSERT_TRUE(watchdog.stillMoving(second, start + milliseconds(second * 900))) << second;
  }
}

TEST(TransferWatchdog, IdleTimeRestartsAtTheLastMovement) {
  TransferWatchdog watchdog(milliseconds(1000), start);
  EXPECT_TRUE(watchdog.stillMoving(10, start + milliseconds(800)));
  EXPECT_TRUE(watchdog.stillMoving(10, start + milliseconds(1700)));
  EXPECT_TRUE(watchdog.stillMoving(10, start + milliseconds(1800)));
  EXPECT_FALSE(watchdog.stillMoving(10, start + milliseconds(1801)));
}

}  // namespace
}  // namespace tavrin
