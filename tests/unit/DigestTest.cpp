#include "../support/CodecTestData.hpp"

#include <tavrin/digest.hpp>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace tavrin {
namespace {

using testdata::Bytes;

struct KnownDigest {
  std::string message;
  const char* md5;
};

class Md5KnownDigest : public ::testing::TestWithParam<KnownDigest> {};

TEST_P(Md5KnownDigest, AllViewsAgree) {
  const auto& [message, md5] = GetParam();
  EXPECT_EQ(toMd5(message), md5);
  EXPECT_EQ(Digest(testdata::bytesOf(message)).checksum(), md5);
  const auto digest = md5Digest(message);
  EXPECT_EQ(Digest(testdata::bytesOf(message)).digest(), digest);
}

INSTANTIATE_TEST_SUITE_P(
    Rfc1321, Md5KnownDigest,
    ::testing::Values(KnownDigest{"", "d41d8cd98f00b204e9800998ecf8427e"},
                      KnownDigest{"a", "0cc175b9c0f1b6a831c399e269772661"},
                      KnownDigest{"abc", "900150983cd24fb0d6963f7d28e17f72"},
                      KnownDigest{"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
                      KnownDigest{"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
                      KnownDigest{"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
                                  "d174ab98d277d9f5a5611c2c9f419d9f"},
                      KnownDigest{
                          std::string(80, ' ').replace(0, 80,
                                                       "1234567890123456789012345678901234567890"
                                                       "1234567890123456789012345678901234567890"),
                          "57edf4a22be3c955ac49da2e2107b67a"}));

// Messages next to the 56-byte padding bound and the 64-byte block bound.
INSTANTIATE_TEST_SUITE_P(
    BlockBounds, Md5KnownDigest,
    ::testing::Values(KnownDigest{std::string(55, 'a'), "ef1772b6dff9a122358552954ad0df65"},
                      KnownDigest{std::string(56, 'a'), "3b0c8ac703f828b04c6c197006d17218"},
                      KnownDigest{std::string(63, 'a'), "b06521f39153d618550606be297466d5"},
                      KnownDigest{std::string(64, 'a'), "014842d480b571495a4a0363793f7367"},
                      KnownDigest{std::string(119, 'a'), "8a7bd0732ed6a28ce75f6dabc90e1613"},
                      KnownDigest{std::string(120, 'a'), "5f61c0ccad4cac44c75ff505e1f1e537"},
                      KnownDigest{std::string(1000000, 'a'), "7707d6ae4e027c70eea2a935c2296f21"}));

TEST(Md5, HashesTextAsItsUtf8Bytes) {
  EXPECT_EQ(toMd5("\xC3\xA9"), "66ddcd97cfdeabb2f6fb8a999b4bc76f");
  EXPECT_EQ(Digest(Bytes{0xC3, 0xA9}).checksum(), toMd5("\u00e9"));
  // No normalisation: "e" followed by a combining acute accent is other bytes.
  EXPECT_NE(toMd5("e\u0301"), toMd5("\u00e9"));
}

TEST(Md5, ChecksumIsTheDigestInLowerCaseHexWithLeadingZeros) {
  for (std::size_t length = 0; length < 200; ++length) {
    const Digest digest(testdata::randomBytes(length, static_cast<std::uint32_t>(length)));
    std::string expected;
    for (const std::uint8_t byte : digest.digest()) {
      char pair[3];
      std::snprintf(pair, sizeof pair, "%02x", byte);
      expected += pair;
    }
    EXPECT_EQ(digest.checksum(), expected);
  }
}

}  // namespace
}  // namespace tavrin
