#include "dataset/MappedBuffer.hpp"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <new>

namespace tavrin {
namespace {

TEST(MappedBuffer, GrowingKeepsTheContentAndMovingTransfersIt) {
  MappedBuffer buffer(10);
  ASSERT_GE(buffer.capacity(), 10U);
  std::memcpy(buffer.data(), "0123456789", 10);
  buffer.setSize(10);
  buffer.reserve(64 * 1024 * 1024);
  ASSERT_GE(buffer.capacity(), 64U * 1024 * 1024);
  buffer.data()[64 * 1024 * 1024 - 1] = 'x';
  EXPECT_EQ(buffer.view(), "0123456789");

  MappedBuffer moved(std::move(buffer));
  EXPECT_EQ(moved.str(), "0123456789");
  EXPECT_EQ(buffer.data(), nullptr);  // NOLINT(bugprone-use-after-move): the moved-from state
  MappedBuffer assigned;
  assigned.reserve(1);
  assigned = std::move(moved);
  EXPECT_EQ(assigned.bytes().size(), 10U);

  // A size no machine can give is refused, and the block held so far stays as it was.
  const std::size_t impossible = std::numeric_limits<std::size_t>::max() / 2;
  EXPECT_THROW(assigned.reserve(impossible), std::bad_alloc);
  EXPECT_EQ(assigned.str(), "0123456789");
  EXPECT_THROW(MappedBuffer{impossible}, std::bad_alloc);
}

}  // namespace
}  // namespace tavrin
