#include "dataset/Element.hpp"

#include <gtest/gtest.h>

#include <limits>
#include <string_view>

namespace tavrin {
namespace {

using namespace std::string_view_literals;

TEST(Row, ReadsBackEveryKindAndBoundary) {
  constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
  constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
  const std::int64_t signedValues[] = {0,    1,     -1,     127,       -128,   128,
                                       -129, 32767, -32769, 1LL << 40, lowest, highest};
  const std::uint64_t unsignedValues[] = {0, 255, 256, std::numeric_limits<std::uint64_t>::max()};
  const std::string text(300, 'x');  // a length that takes two bytes
  Row nested;
  nested.append("inner");
  Row row;
  for (auto v : signedValues) row.append(v);
  for (auto v : unsignedValues) row.append(v);
  row.append(nullptr), row.append(true), row.append(false), row.append(-2.5);
  row.append(text), row.append(nested);

  std::vector<Value> expected(std::begin(signedValues), std::end(signedValues));
  expected.insert(expected.end(), std::begin(unsignedValues), std::end(unsignedValues));
  expected.insert(expected.end(),
                  {nullptr, true, false, -2.5, std::string_view(text), nested.view()});
  EXPECT_EQ(row.view().size(), row.size());
  EXPECT_EQ(row.values(), expected);
}

TEST(Row, KeepsEveryValueAsItGrowsFromTheHeapIntoPagesAndIsCopied) {
  // Four bytes a value: the storage crosses from the heap into a block of
  // pages at 256 KiB and then grows in place, several times.
  constexpr std::int64_t count = 600000;
  Row large;
  for (std::int64_t i = 0; i < count; ++i) large.append(i % 30000 + 128);
  Row copy = large;
  large.clear();
  large.append("reused");
  copy.shrinkToFit();
  const Row moved = std::move(copy);
  std::int64_t index = 0, wrong = 0;
  for (const Value& value : moved.view()) wrong += value != Value(index++ % 30000 + 128);
  EXPECT_EQ(index, count);
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(large.values(), std::vector<Value>{"reused"sv});
}

TEST(Element, RecordsErrorsAfterEarlierEntriesInOrder) {
  Element element("Contacts");
  element.append(Row());
  element.addError(std::string_view("first"));
  element.addError(std::runtime_error(""));
  element.addAccessDenied("Images");
  const std::vector<Value> expected = {RowView(), "EXTRACTING ERROR : first"sv,
                                       "EXTRACTING ERROR : "sv,
                                       "EXTRACTING ERROR : Access denied Images"sv};
  EXPECT_EQ(element.ChildElements().values(), expected);
}

}  // namespace
}  // namespace tavrin
