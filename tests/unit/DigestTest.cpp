#include "../support/CodecTestData.hpp"

#include <tavrin/digest.hpp>

#include <gtest/gtest.h>

namespace tavrin {
namespace {

class Md5KnownDigest : public ::testing::TestWithParam<std::pair<std::string, const char*>> {};

TEST_P(Md5KnownDigest, AllViewsAgree) {
  const auto& [message, md5] = GetParam();
  EXPECT_EQ(toMd5(message), md5);
  const Digest digest(testdata::bytesOf(message));
  EXPECT_EQ(digest.checksum(), md5);
  EXPECT_EQ(digest.digest(), md5Digest(message));
}

// RFC 1321's suite, then a message of many blocks.
INSTANTIATE_TEST_SUITE_P(
    Rfc1321, Md5KnownDigest,
    ::testing::Values(
        std::pair{std::string(), "d41d8cd98f00b204e9800998ecf8427e"},
        std::pair{std::string("a"), "0cc175b9c0f1b6a831c399e269772661"},
        std::pair{std::string("abc"), "900150983cd24fb0d6963f7d28e17f72"},
        std::pair{std::string("message digest"), "f96b697d7cb7938d525a2f31aaf161d0"},
        std::pair{std::string("abcdefghijklmnopqrstuvwxyz"), "c3fcd3d76192e4007dfb496cca67e13b"},
        std::pair{std::string("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
                  "d174ab98d277d9f5a5611c2c9f419d9f"},
        std::pair{std::string("1234567890123456789012345678901234567890"
                              "1234567890123456789012345678901234567890"),
                  "57edf4a22be3c955ac49da2e2107b67a"},
        std::pair{std::string(1000000, 'a'), "7707d6ae4e027c70eea2a935c2296f21"}));

TEST(Md5, HashesTextAsItsUtf8BytesWithoutNormalising) {
  EXPECT_EQ(toMd5("\u00e9"), "66ddcd97cfdeabb2f6fb8a999b4bc76f");  // the bytes C3 A9
  EXPECT_NE(toMd5("e\u0301"), toMd5("\u00e9"));                    // e + combining acute
}

}  // namespace
}  // namespace tavrin
