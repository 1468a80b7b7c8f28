#include "dataset/JsonWriter.hpp"

#include <tavrin/error.hpp>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>
#include <string>

namespace tavrin {
namespace {

// Writes a document of one section whose values `fill` appends.
template <typename Fill>
std::string writeSection(Fill fill, const std::string& name = "S") {
  Element section(name);
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
  header.append(8), header.append(1605555555.12), header.append("iPhone"), header.append(nullptr);
  Element contacts("Contacts");
  contacts.addAccessDenied("Contacts");
  DatasetDocument document;
  document.push_back(std::move(header));
  document.push_back(std::move(contacts));
  document.push_back(Element("Calendars"));
  const std::string expected =
      R"([{"GeneralInfo":[8,1605555555.12,"iPhone",null]},)"
      R"({"Contacts":["EXTRACTING ERROR : Access denied Contacts"]},{"Calendars":[]}])";
  EXPECT_EQ(writeJson(document).str(), expected);
  // Handed over, the document is written the same while its sections go.
  EXPECT_EQ(writeJson(std::move(document)).str(), expected);
  EXPECT_EQ(writeJson(DatasetDocument{}).str(), "[]");
}

// Booleans, flags, the limits of both integer kinds, doubles in their shortest
// form, a widened float and optionals.
TEST(JsonWriter, WritesScalarsAsJsonNumbersAndLiterals) {
  EXPECT_EQ(writeSection([](Element& e) {
              e.append(true), e.append(false), e.append(1), e.append(0);
              e.append(std::numeric_limits<std::int64_t>::min());
              e.append(std::numeric_limits<std::int64_t>::max());
              e.append(-3), e.append(-128), e.append(128), e.append(-129);
              e.append(std::numeric_limits<std::uint64_t>::max());
              e.append(std::uint64_t{0}), e.append(std::uint32_t{4294967295U});
              e.append(1605555555.123456), e.append(0.1), e.append(-0.0), e.append(1e300);
              e.append(5e-324), e.append(12.5), e.append(2.5F);
              e.append(std::optional<double>(1.5)), e.append(std::optional<std::string>());
            }),
            "[{\"S\":[true,false,1,0,-9223372036854775808,9223372036854775807,-3,-128,128,-129,"
            "18446744073709551615,0,4294967295,1605555555.123456,0.1,-0,1e+300,5e-324,12.5,2.5,"
            "1.5,null]}]");
}

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

// Plain text is copied eight bytes at a time. Every character that needs care,
// at every place of texts around that block size, is written as a JSON
// library writes it: escaped with the short forms where JSON has them, the
// solidus and non-ASCII text as they are. The text that follows in memory is
// plain, so a block read past the end of a text would show.
TEST(JsonWriter, EscapesTextsAtEveryPlaceOfTheEightByteBlocksAsAJsonLibraryDoes) {
  const std::string follower(32, 'z');
  for (std::size_t length = 1; length <= 17; ++length) {
    for (std::size_t at = 0; at < length; ++at) {
      for (const char* special :
           {"\x01", "\b", "\t", "\n", "\f", "\r", "\x1f", "\"", "\\", "/", "\x7f", " ", "\xC3\xA9",
            "\xE6\xBC\xA2", "\xF0\x9F\x98\x80", "\xEF\xBF\xBF"}) {
        std::string text(length, 'a');
        text.replace(at, 1, special);
        EXPECT_EQ(writeSection([&](Element& e) { e.append(text), e.append(follower); }),
                  R"([{"S":)" + nlohmann::json::array({text, follower}).dump() + "}]")
            << testing::PrintToString(text);
      }
    }
  }
  EXPECT_EQ(writeText(std::string_view("\0", 1)), R"([{"S":["\u0000"]}])");
  EXPECT_EQ(writeSection([](Element&) {}, "we\"ird"), R"([{"we\"ird":[]}])");
}

TEST(JsonWriter, RefusesNumbersThatAreNotFiniteAndTextsThatAreNotUtf8) {
  EXPECT_THROW((void)writeSection([](Element& e) { e.append(std::nan("")); }), JsonWriteError);
  EXPECT_THROW((void)writeSection([](Element& e) { e.append(HUGE_VAL); }), JsonWriteError);
  Row row;
  row.append(-HUGE_VAL);
  EXPECT_THROW((void)writeSection([&](Element& e) { e.append(row); }), JsonWriteError);
  // A lone continuation byte, a truncated pair, the overlong forms of two,
  // three and four bytes, a surrogate, a code point beyond Unicode, lead byte
  // F5, a bad second byte, a truncated four.
  for (const char* text :
       {"\x80", "ab\xC3", "\xC0\xAF", "\xC1\xBF", "\xE0\x80\xAF", "\xE0\x9F\xBF",
        "\xF0\x80\x80\xAF", "\xF0\x8F\xBF\xBF", "\xED\xA0\x80", "\xF4\x90\x80\x80",
        "\xF5\x80\x80\x80", "\xE2\x28\xA1", "\xF0\x9F\x98"}) {
    EXPECT_THROW((void)writeSection([&](Element& e) { e.append("fine"), e.append(text); }),
                 JsonWriteError)
        << testing::PrintToString(text);
  }
}

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
