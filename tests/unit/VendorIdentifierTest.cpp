#include "platform/linux/VendorIdentifier.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace tavrin::platform {
namespace {

constexpr std::string_view machineId = "4f1e9b2c7d3a48e6a5b0c1d2e3f40516\n";

std::string hex(const Uuid& uuid) {
  static constexpr char digits[] = "0123456789ABCDEF";
  std::string text;
  for (const auto byte : uuid) {
    text += digits[byte >> 4];
    text += digits[byte & 0x0F];
  }
  return text;
}

// Pinned: a change here would hand every installed application a new identifier.
TEST(VendorIdentifier, IsHmacSha256OfTheApplicationUnderTheMachineId) {
  const auto uuid = VendorIdentifier::derive(machineId, "com.example.notes");
  ASSERT_TRUE(uuid);
  EXPECT_EQ(hex(*uuid), "A27C22646FFA4241A1D8958FF2FD7E13");
}

TEST(VendorIdentifier, IsAVersion4UuidForEveryApplication) {
  std::set<std::string> seen;
  for (int i = 0; i < 200; ++i) {
    const auto uuid = VendorIdentifier::derive(machineId, "app" + std::to_string(i));
    ASSERT_TRUE(uuid);
    EXPECT_EQ((*uuid)[6] >> 4, 4);
    EXPECT_EQ((*uuid)[8] >> 6, 2);
    seen.insert(hex(*uuid));
  }
  EXPECT_EQ(seen.size(), 200u);
}

TEST(VendorIdentifier, DependsOnTheMachineButNotOnHowItsIdIsWritten) {
  const auto reference = VendorIdentifier::derive(machineId, "app");
  EXPECT_EQ(VendorIdentifier::derive("4F1E9B2C7D3A48E6A5B0C1D2E3F40516", "app"), reference);
  EXPECT_EQ(VendorIdentifier::derive("  4f1e9b2c7d3a48e6a5b0c1d2e3f40516\r\nextra", "app"),
            reference);
  EXPECT_NE(VendorIdentifier::derive("4f1e9b2c7d3a48e6a5b0c1d2e3f40517", "app"), reference);
  // The empty application is still an application of its own.
  EXPECT_NE(VendorIdentifier::derive(machineId, ""), reference);
}

class InvalidMachineId : public testing::TestWithParam<const char*> {};

TEST_P(InvalidMachineId, GivesNoIdentifier) {
  EXPECT_FALSE(VendorIdentifier::derive(GetParam(), "app")) << GetParam();
}

INSTANTIATE_TEST_SUITE_P(Texts, InvalidMachineId,
                         testing::Values("", "\n", "uninitialized\n",
                                         "00000000000000000000000000000000",
                                         "4f1e9b2c7d3a48e6a5b0c1d2e3f4051",    // too short
                                         "4f1e9b2c7d3a48e6a5b0c1d2e3f405166",  // too long
                                         "4f1e9b2c-7d3a-48e6-a5b0-c1d2e3f40516",
                                         "4f1e9b2c7d3a48e6a5b0c1d2e3f4051g"));

}  // namespace
}  // namespace tavrin::platform
