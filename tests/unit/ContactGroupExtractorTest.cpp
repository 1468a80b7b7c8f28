#include "extractors/ContactGroupExtractor.hpp"

#include "SectionJson.hpp"

#include <gtest/gtest.h>

#include <string>

namespace tavrin {
namespace {

using nlohmann::json;

json extractGroups(const std::string& profile) {
  const auto platform = loadTestProfile(profile);
  ContactGroupExtractor extractor("ContactGroups", {"identifier", "name"}, *platform);
  return sectionValues(extractor.extract());
}

TEST(ContactGroupExtractor, ListsEveryGroupWithWhetherItHasAName) {
  // Spaces, tabs, no-break and ideographic spaces are trimmed; a line feed is
  // text. Groups that share a name keep their own rows.
  EXPECT_EQ(extractGroups("groups-listed.json"),
            json::parse(R"([["two-spaces",false],["family-1",true],["family-2",true],)"
                        R"(["line-feed",true],["ideographic-space",false],)"
                        R"(["no-break-space-and-tab",false],["unnamed",false]])"));
}

TEST(ContactGroupExtractor, AnAddressBookWithoutGroupsGivesAnEmptySection) {
  EXPECT_EQ(extractGroups("address-book-empty.json"), json::array());
}

TEST(ContactGroupExtractor, ARefusedQueryGivesOnlyTheErrorEntry) {
  EXPECT_EQ(extractGroups("groups-refused.json"),
            json({"EXTRACTING ERROR : Groups are not available right now."}));
}

class GroupsRefused : public ::testing::TestWithParam<const char*> {};

TEST_P(GroupsRefused, GivesOnlyTheAccessDeniedEntry) {
  EXPECT_EQ(extractGroups(GetParam()), json({"EXTRACTING ERROR : Access denied ContactGroups"}));
}

INSTANTIATE_TEST_SUITE_P(Statuses, GroupsRefused,
                         ::testing::Values("address-book-denied.json",
                                           "address-book-restricted.json"));

}  // namespace
}  // namespace tavrin
