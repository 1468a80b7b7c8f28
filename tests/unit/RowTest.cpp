#include "dataset/Element.hpp"

#include <gtest/gtest.h>

#include <limits>

namespace tavrin {
namespace {

TEST(Row, ReadsBackEveryKindAndBoundary) {
  Row nested;
  nested.append("inner");
  Row row;
  const std::int64_t signedValues[] = {0,    1,          -1,   127, -128, 128, -129, 32767,
                                       -32769, 1LL << 40, std::numeric_limits<std::int64_t>::min(),
                                       std::numeric_limits<std::int64_t>::max()};
  for (auto v : signedValues) row.append(v);
  const std::uint64_t unsignedValues[] = {0, 255, 256, std::numeric_limits<std::uint64_t>::max()};
  for (auto v : unsignedValues) row.append(v);
  row.append(nullptr);
  row.append(true);
  row.append(false);
  row.append(-2.5);
  row.append(std::string(300, 'x'));  // a length that takes two bytes
  row.append(nested);

  const auto values = row.values();
  ASSERT_EQ(values.size(), row.size());
  ASSERT_EQ(row.view().size(), row.size());
  std::size_t i = 0;
  for (auto v : signedValues) EXPECT_EQ(std::get<std::int64_t>(values[i++]), v);
  for (auto v : unsignedValues) EXPECT_EQ(std::get<std::uint64_t>(values[i++]), v);
  EXPECT_TRUE(std::holds_alternative<std::nullptr_t>(values[i++]));
  EXPECT_TRUE(std::get<bool>(values[i++]));
  EXPECT_FALSE(std::get<bool>(values[i++]));
  EXPECT_EQ(std::get<double>(values[i++]), -2.5);
  EXPECT_EQ(std::get<std::string_view>(values[i++]), std::string(300, 'x'));
  EXPECT_EQ(std::get<RowView>(values[i++]), nested.view());
}

TEST(Element, RecordsErrorsAfterEarlierEntriesInOrder) {
  Element element("Contacts");
  element.append(Row());
  element.addError(std::string_view("first"));
  element.addError(std::runtime_error(""));
  element.addAccessDenied("Images");
  const auto values = element.ChildElements().values();
  ASSERT_EQ(values.size(), 4U);
  EXPECT_EQ(std::get<std::string_view>(values[1]), "EXTRACTING ERROR : first");
  EXPECT_EQ(std::get<std::string_view>(values[2]), "EXTRACTING ERROR : ");
  EXPECT_EQ(std::get<std::string_view>(values[3]), "EXTRACTING ERROR : Access denied Images");
}

}  // namespace
}  // namespace tavrin
