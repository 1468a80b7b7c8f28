#include "dataset/JsonWriter.hpp"

#include <tavrin/error.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>

namespace tavrin {
namespace {

// Writes a document of one section whose values `fill` appends.
template <typename Fill>
std::string writeSection(Fill fill) {
  Element section("S");
  fill(section);
  DatasetDocument document;
  document.push_back(std::move(section));
  return writeJson(document).str();
}

std::string writeText(std::string_view text) {
  return writeSection([&](Element& e) { e.append(text); });
}

TEST(JsonWriter, WritesTheDocumentCompactlyInOrder) {
  Element header("GeneralInfo");
  header.append(8);
  header.append(1605555555.12);
  header.append("iPhone");
  header.append(nullptr);
  Element contacts("Contacts");
  contacts.addAccessDenied("Contacts");
  Element calendars("Calendars");
  DatasetDocument document;
  document.push_back(std::move(header));
  document.push_back(std::move(contacts));
  document.push_back(std::move(calendars));
  EXPECT_EQ(writeJson(document).str(),
            R"([{"GeneralInfo":[8,1605555555.12,"iPhone",null]},)"
            R"({"Contacts":["EXTRACTING ERROR : Access denied Contacts"]},{"Calendars":[]}])");
  EXPECT_EQ(writeJson({}).str(), "[]");
}

TEST(JsonWriter, NestsRowsAndKeepsNullsInPlace) {
  Row inner;
  inner.append(2);
  inner.append(3);
  Row outer;
  outer.append(1);
  outer.append(inner);
  outer.append(std::optional<int>());
  outer.append(Row());
  EXPECT_EQ(writeSection([&](Element& e) { e.append(outer); }), R"([{"S":[[1,[2,3],null,[]]]}])");
}

struct Case {
  std::string name;
  std::function<void(Element&)> fill;
  std::string json;
};

class Scalars : public testing::TestWithParam<Case> {};

TEST_P(Scalars, AreWrittenAsJsonNumbersAndLiterals) {
  EXPECT_EQ(writeSection(GetParam().fill), "[{\"S\":[" + GetParam().json + "]}]");
}

INSTANTIATE_TEST_SUITE_P(
    Values, Scalars,
    testing::Values(Case{"booleans", [](Element& e) { e.append(true), e.append(false); },
                         "true,false"},
                    Case{"flagsAsIntegers", [](Element& e) { e.append(1), e.append(0); }, "1,0"},
                    Case{"signedLimits",
                         [](Element& e) {
                           e.append(std::numeric_limits<std::int64_t>::min());
                           e.append(std::numeric_limits<std::int64_t>::max());
                           e.append(-3), e.append(-128), e.append(128), e.append(-129);
                         },
                         "-9223372036854775808,9223372036854775807,-3,-128,128,-129"},
                    Case{"unsignedLimits",
                         [](Element& e) {
                           e.append(std::numeric_limits<std::uint64_t>::max());
                           e.append(std::uint64_t{0}), e.append(std::uint32_t{4294967295U});
                         },
                         "18446744073709551615,0,4294967295"},
                    Case{"doubles",
                         [](Element& e) {
                           e.append(1605555555.123456), e.append(0.1), e.append(-0.0),
                               e.append(1e300), e.append(5e-324), e.append(12.5);
                         },
                         "1605555555.123456,0.1,-0,1e+300,5e-324,12.5"},
                    Case{"widenedFloat", [](Element& e) { e.append(2.5F); }, "2.5"},
                    Case{"optionals",
                         [](Element& e) {
                           e.append(std::optional<double>(1.5)),
                               e.append(std::optional<std::string>());
                         },
                         "1.5,null"}),
    [](const auto& test) { return test.param.name; });

TEST(JsonWriter, DoublesReadBackToTheSameValue) {
  std::mt19937_64 random(42);
  for (int i = 0; i < 20000; ++i) {
    double value = 0;
    do {
      const std::uint64_t bits = random();
      std::memcpy(&value, &bits, sizeof value);
    } while (!std::isfinite(value));
    const std::string json = writeSection([&](Element& e) { e.append(value); });
    const std::string number = json.substr(7, json.size() - 10);
    EXPECT_EQ(std::strtod(number.c_str(), nullptr), value) << number;
  }
}

TEST(JsonWriter, EscapesQuotesBackslashesAndControlCharacters) {
  EXPECT_EQ(writeText("a\"b\\c/d"), R"([{"S":["a\"b\\c/d"]}])");
  EXPECT_EQ(writeText("\n\r\t\b\f"), R"([{"S":["\n\r\t\b\f"]}])");
  EXPECT_EQ(writeText(std::string_view("\0\x01\x1f\x7f", 4)),
            "[{\"S\":[\"\\u0000\\u0001\\u001f\x7f\"]}]");
}

TEST(JsonWriter, WritesNonAsciiTextAsUtf8) {
  const std::string text = "é 漢 \xF0\x9F\x98\x80 \xEF\xBF\xBF \xF4\x8F\xBF\xBF";
  EXPECT_EQ(writeText(text), "[{\"S\":[\"" + text + "\"]}]");
}

TEST(JsonWriter, EscapesSectionNames) {
  Element section("we\"ird");
  DatasetDocument document;
  document.push_back(std::move(section));
  EXPECT_EQ(writeJson(document).str(), R"([{"we\"ird":[]}])");
}

class Refused : public testing::TestWithParam<Case> {};

TEST_P(Refused, ThrowsItsOwnError) {
  EXPECT_THROW((void)writeSection(GetParam().fill), JsonWriteError);
}

Case refusedText(std::string name, std::string text) {
  return {std::move(name), [text](Element& e) { e.append("fine"), e.append(text); }, ""};
}

INSTANTIATE_TEST_SUITE_P(
    BadValues, Refused,
    testing::Values(
        Case{"nan", [](Element& e) { e.append(std::nan("")); }, ""},
        Case{"infinity", [](Element& e) { e.append(HUGE_VAL); }, ""},
        Case{"negativeInfinityInRow",
             [](Element& e) {
               Row row;
               row.append(-HUGE_VAL);
               e.append(row);
             },
             ""},
        refusedText("loneContinuation", "\x80"), refusedText("truncatedPair", "ab\xC3"),
        refusedText("overlongSlash", "\xC0\xAF"), refusedText("overlongThree", "\xE0\x80\xAF"),
        refusedText("surrogate", "\xED\xA0\x80"), refusedText("beyondUnicode", "\xF4\x90\x80\x80"),
        refusedText("leadF5", "\xF5\x80\x80\x80"), refusedText("badSecond", "\xE2\x28\xA1"),
        refusedText("truncatedFour", "\xF0\x9F\x98")),
    [](const auto& test) { return test.param.name; });

TEST(JsonWriter, GrowsPastItsFirstEstimate) {
  // Control characters take six times their encoded size, far beyond the
  // writer's first reservation.
  const std::string value(100000, '\x01');
  const std::string json = writeSection([&](Element& e) {
    for (int i = 0; i < 40; ++i) e.append(value);
  });
  ASSERT_EQ(json.size(), 7 + 40 * (6 * value.size() + 3) - 1 + 3);
  EXPECT_EQ(json.substr(json.size() - 10), "\\u0001\"]}]");
}

}  // namespace
}  // namespace tavrin
