#include "platform/linux/VendorIdentifier.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace tavrin::platform {
namespace {

constexpr std::string_view machineId = "4f1e9b2c7d3a48e6a5b0c1d2e3f40516\n";

// Pinned: a change here would hand every installed application a new identifier. It depends
// on the machine but not on how its id is written; the empty application is one of its own.
TEST(VendorIdentifier, IsHmacSha256OfTheApplicationUnderTheMachineId) {
  const Uuid pinned{0xA2, 0x7C, 0x22, 0x64, 0x6F, 0xFA, 0x42, 0x41,
                    0xA1, 0xD8, 0x95, 0x8F, 0xF2, 0xFD, 0x7E, 0x13};
  constexpr std::string_view app = "com.example.notes";
  EXPECT_EQ(VendorIdentifier::derive(machineId, app), pinned);
  EXPECT_EQ(VendorIdentifier::derive("4F1E9B2C7D3A48E6A5B0C1D2E3F40516", app), pinned);
  EXPECT_EQ(VendorIdentifier::derive("  4f1e9b2c7d3a48e6a5b0c1d2e3f40516\r\nextra", app), pinned);
  EXPECT_NE(VendorIdentifier::derive("4f1e9b2c7d3a48e6a5b0c1d2e3f40517", app), pinned);
  EXPECT_NE(VendorIdentifier::derive(machineId, ""), pinned);
}

// Distinct for every application, too: none of its identifier may be lost on the way.
TEST(VendorIdentifier, IsAVersion4UuidForEveryApplication) {
  std::set<Uuid> seen;
  for (int i = 0; i < 200; ++i) {
    const auto uuid = VendorIdentifier::derive(machineId, "app" + std::to_string(i));
    ASSERT_TRUE(uuid && (*uuid)[6] >> 4 == 4 && (*uuid)[8] >> 6 == 2) << i;
    seen.insert(*uuid);
  }
  EXPECT_EQ(seen.size(), 200u);
}

TEST(VendorIdentifier, AnUnusableMachineIdGivesNoIdentifier) {
  for (const char* text :
       {"", "\n", "uninitialized\n", "00000000000000000000000000000000",
        "4f1e9b2c7d3a48e6a5b0c1d2e3f4051",    // too short
        "4f1e9b2c7d3a48e6a5b0c1d2e3f405166",  // too long
        "4f1e9b2c-7d3a-48e6-a5b0-c1d2e3f40516", "4f1e9b2c7d3a48e6a5b0c1d2e3f4051g"}) {
    EXPECT_FALSE(VendorIdentifier::derive(text, "app")) << '"' << text << '"';
  }
}

}  // namespace
}  // namespace tavrin::platform
