#include "../support/CodecTestData.hpp"

#include "codec/ByteOrder.hpp"

#include <tavrin/codec.hpp>

#include <gtest/gtest.h>

#include <chrono>

namespace tavrin {
namespace {

using testdata::Bytes;

std::uint32_t secondsNow() {
  return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::seconds>(
                                        std::chrono::system_clock::now().time_since_epoch())
                                        .count());
}

TEST(Gzip, WritesOneMemberWithTimeCrcAndLength) {
  const Bytes input = testdata::jsonLikeBytes(70000);
  const std::uint32_t before = secondsNow();
  const auto member = gzip(input);
  const std::uint32_t after = secondsNow();
  ASSERT_TRUE(member.has_value());
  ASSERT_GT(member->size(), 18u);
  EXPECT_EQ(Bytes(member->begin(), member->begin() + 4), (Bytes{0x1F, 0x8B, 0x08, 0x00}));
  const std::uint32_t mtime = loadLittleEndian32(member->data() + 4);
  EXPECT_GE(mtime, before);
  EXPECT_LE(mtime, after);
  EXPECT_EQ((*member)[8], 0x00);
  EXPECT_EQ((*member)[9], 0x03);
  EXPECT_EQ(Bytes(member->begin() + 10, member->end() - 8), deflate(input));
  EXPECT_EQ(loadLittleEndian32(member->data() + member->size() - 8), crc32(input).checksum);
  EXPECT_EQ(loadLittleEndian32(member->data() + member->size() - 4), input.size());
  EXPECT_EQ(gunzip(*member), input);
  EXPECT_EQ(gunzip(*gzip(Bytes{})), Bytes{});
}

constexpr std::uint8_t headerCrc = 0x02, extra = 0x04, name = 0x08, comment = 0x10;

// A member with the given flags and optional fields, around `payload`.
Bytes memberWithFields(std::uint8_t flags, const Bytes& payload) {
  Bytes member = {0x1F, 0x8B, 0x08, flags, 0x12, 0x34, 0x56, 0x78, 0x02, 0xFF};
  const Bytes extraField = {0x06, 0x00, 'A', 'P', 0x02, 0x00, 0xAB, 0xCD};
  const Bytes nameField = testdata::bytesOf(std::string_view("r\xC3\xA9sum\xC3\xA9.txt", 12));
  if (flags & extra) member.insert(member.end(), extraField.begin(), extraField.end());
  if (flags & name) {
    member.insert(member.end(), nameField.begin(), nameField.end());
    member.push_back(0);
  }
  if (flags & comment) {
    const Bytes text = testdata::bytesOf("a comment");
    member.insert(member.end(), text.begin(), text.end());
    member.push_back(0);
  }
  if (flags & headerCrc) member.insert(member.end(), {0xEE, 0xEE});  // not checked
  const Bytes body = *deflate(payload);
  member.insert(member.end(), body.begin(), body.end());
  appendLittleEndian32(member, crc32(payload).checksum);
  appendLittleEndian32(member, static_cast<std::uint32_t>(payload.size()));
  return member;
}

class GunzipFields : public ::testing::TestWithParam<std::uint8_t> {};

TEST_P(GunzipFields, SkipsTheOptionalFields) {
  const Bytes payload = testdata::jsonLikeBytes(3000);
  EXPECT_EQ(gunzip(memberWithFields(GetParam(), payload)), payload);
}

INSTANTIATE_TEST_SUITE_P(Gunzip, GunzipFields,
                         // FTEXT (0x01) and the reserved bits (0xE0) are not examined.
                         ::testing::Values(0x00, extra, name, comment, headerCrc, name | comment,
                                           extra | name | comment | headerCrc, 0x01 | 0xE0 | name));

using Rejected = testdata::NamedBytes;

class GunzipRejects : public ::testing::TestWithParam<Rejected> {};

TEST_P(GunzipRejects, IsAbsent) { EXPECT_FALSE(gunzip(GetParam().bytes).has_value()); }

const Bytes payload = testdata::jsonLikeBytes(2000);
const Bytes good = memberWithFields(name, payload);

Bytes altered(std::size_t offsetFromEnd, std::uint8_t mask) {
  Bytes member = good;
  member[member.size() - offsetFromEnd] ^= mask;
  return member;
}

Bytes alteredAt(std::size_t offset, std::uint8_t value) {
  Bytes member = good;
  member[offset] = value;
  return member;
}

INSTANTIATE_TEST_SUITE_P(
    Gunzip, GunzipRejects,
    ::testing::Values(Rejected{"SeventeenBytes", Bytes(good.begin(), good.begin() + 17)},
                      Rejected{"Empty", Bytes{}}, Rejected{"WrongId1", alteredAt(0, 0x1E)},
                      Rejected{"WrongId2", alteredAt(1, 0x8C)},
                      Rejected{"MethodNotDeflate", alteredAt(2, 0x07)},
                      Rejected{"IsizeAltered", altered(4, 0x01)},
                      Rejected{"IsizeHighByteAltered", altered(1, 0x80)},
                      Rejected{"CrcAltered", altered(8, 0x10)},
                      Rejected{"TruncatedBody",
                               [] {
                                 Bytes member = good;
                                 member.erase(member.end() - 12, member.end() - 8);
                                 return member;
                               }()},
                      Rejected{"NameNeverEnds",
                               [] {
                                 Bytes member = memberWithFields(0, payload);
                                 member[3] = name;
                                 std::fill(member.begin() + 10, member.end() - 8, 'n');
                                 return member;
                               }()},
                      Rejected{"ExtraPastTheEnd",
                               [] {
                                 Bytes member = memberWithFields(extra, payload);
                                 member[10] = 0xFF;
                                 member[11] = 0xFF;
                                 return member;
                               }()},
                      // The header CRC would reach past the one byte before the trailer.
                      Rejected{"HeaderCrcPastTheData",
                               [] {
                                 Bytes member = {0x1F, 0x8B, 0x08, headerCrc, 0,   0,
                                                 0,    0,    0,    3,         0x03};
                                 member.insert(member.end(), 8, 0);
                                 return member;
                               }()}),
    testdata::caseName);

}  // namespace
}  // namespace tavrin
