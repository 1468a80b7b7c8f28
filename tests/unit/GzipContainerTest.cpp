#include "../support/CodecTestData.hpp"

#include "codec/ByteOrder.hpp"

#include <tavrin/codec.hpp>

#include <gtest/gtest.h>

#include <ctime>

namespace tavrin {
namespace {

using namespace testdata;

Bytes trailer(const Bytes& payload) {
  Bytes bytes;
  appendLittleEndian32(bytes, crc32(payload).checksum);
  appendLittleEndian32(bytes, static_cast<std::uint32_t>(payload.size()));
  return bytes;
}

TEST(Gzip, WritesOneMemberWithTimeCrcAndLength) {
  const Bytes input = jsonLikeBytes(70000);
  const auto before = static_cast<std::uint32_t>(std::time(nullptr));
  const Bytes member = *gzip(input);
  const auto after = static_cast<std::uint32_t>(std::time(nullptr));
  const std::uint32_t mtime = loadLittleEndian32(member.data() + 4);
  EXPECT_TRUE(mtime >= before && mtime <= after) << mtime;
  Bytes header = {0x1F, 0x8B, 0x08, 0x00};
  appendLittleEndian32(header, mtime);
  EXPECT_EQ(member, (header + Bytes{0x00, 0x03} + *deflate(input) + trailer(input)));
  EXPECT_EQ(gunzip(member), input);
  EXPECT_EQ(gunzip(*gzip(Bytes{})), Bytes{});
}

constexpr std::uint8_t headerCrc = 0x02, extra = 0x04, name = 0x08, comment = 0x10;

// A member with the given flags and optional fields around `payload`.
Bytes memberWithFields(std::uint8_t flags, const Bytes& payload) {
  Bytes member = {0x1F, 0x8B, 0x08, flags, 0x12, 0x34, 0x56, 0x78, 0x02, 0xFF};
  if (flags & extra) member = member + Bytes{0x04, 0x00, 'A', 'P', 0x00, 0x00};
  if (flags & name) member = member + bytesOf("r\xC3\xA9sum\xC3\xA9.txt") + Bytes{0};
  if (flags & comment) member = member + bytesOf("a comment") + Bytes{0};
  if (flags & headerCrc) member = member + Bytes{0xEE, 0xEE};  // not checked
  return member + *deflate(payload) + trailer(payload);
}

class GunzipFields : public ::testing::TestWithParam<std::uint8_t> {};

TEST_P(GunzipFields, AreSkipped) {
  const Bytes payload = jsonLikeBytes(3000);
  EXPECT_EQ(gunzip(memberWithFields(GetParam(), payload)), payload);
}

INSTANTIATE_TEST_SUITE_P(Gunzip, GunzipFields,
                         // FTEXT (0x01) and the reserved bits (0xE0) are not examined.
                         ::testing::Values(extra, name, comment, headerCrc,
                                           extra | name | comment | headerCrc, 0x01 | 0xE0 | name));

class GunzipRejects : public ::testing::TestWithParam<NamedBytes> {};

TEST_P(GunzipRejects, IsAbsent) { EXPECT_FALSE(gunzip(GetParam().bytes).has_value()); }

const Bytes good = memberWithFields(name, jsonLikeBytes(2000));

Bytes with(std::size_t offset, std::uint8_t mask, Bytes member = good) {
  member.at(offset) ^= mask;
  return member;
}

INSTANTIATE_TEST_SUITE_P(
    Gunzip, GunzipRejects,
    ::testing::Values(
        NamedBytes{"SeventeenBytes", Bytes(good.begin(), good.begin() + 17)},
        NamedBytes{"WrongMagic", with(1, 0x01)}, NamedBytes{"MethodNotDeflate", with(2, 0x0F)},
        NamedBytes{"CrcAltered", with(good.size() - 8, 0x10)},
        NamedBytes{"IsizeAltered", with(good.size() - 1, 0x80)},
        // Optional fields that run past the data, into or beyond the trailer.
        NamedBytes{"NameNeverEnds", Bytes{0x1F, 0x8B, 0x08, name, 0, 0, 0, 0, 0, 3} +
                                        Bytes(2000, 'n') + Bytes(8, 0)},
        NamedBytes{"ExtraPastTheEnd", with(11, 0xFF, memberWithFields(extra, jsonLikeBytes(2000)))},
        NamedBytes{"HeaderCrcPastTheData",
                   Bytes{0x1F, 0x8B, 0x08, headerCrc, 0, 0, 0, 0, 0, 3, 0x03} + Bytes(8, 0)}),
    caseName);

}  // namespace
}  // namespace tavrin
