#include "service/ServiceUrl.hpp"

#include <gtest/gtest.h>

#include <string>

namespace tavrin {
namespace {

struct UrlCase {
  std::string url;
  bool accepted;
};

class ServiceUrl : public testing::TestWithParam<UrlCase> {};

TEST_P(ServiceUrl, IsAcceptedOnlyInTheServiceShape) {
  EXPECT_EQ(isServiceUrl(GetParam().url), GetParam().accepted) << GetParam().url;
}

INSTANTIATE_TEST_SUITE_P(
    Accepted, ServiceUrl,
    testing::Values(UrlCase{"https://api.tavrin.com", true},
                    UrlCase{"https://api.tavrin.com:8443", true},
                    UrlCase{"https://my-api_2.tavrin.com", true},
                    // Text in front of the scheme: the search is not anchored at the start.
                    UrlCase{"see https://api.tavrin.com", true},
                    UrlCase{"https://evil.example/?https://api.tavrin.com", true},
                    // Only colons and digits may follow, as many as there are.
                    UrlCase{"https://api.tavrin.com::1:2", true},
                    // \w is Unicode-aware: letters of any script and combining marks.
                    UrlCase{"https://über.tavrin.com", true},
                    UrlCase{"https://\xD0\xB0\xD0\xBF\xD0\xB8.tavrin.com", true},
                    UrlCase{"https://e\xCC\x81.tavrin.com", true},
                    // $ also matches before a final line break, as the engine defines it.
                    UrlCase{"https://api.tavrin.com\n", true}));

INSTANTIATE_TEST_SUITE_P(
    Rejected, ServiceUrl,
    testing::Values(
        UrlCase{"https://api.tavrin.com/", false}, UrlCase{"https://api.tavrin.com/v4.0", false},
        UrlCase{"https://api.tavrin.com?x=1", false}, UrlCase{"http://api.tavrin.com", false},
        UrlCase{"https://a.api.tavrin.com", false}, UrlCase{"https://.tavrin.com", false},
        UrlCase{"https://api.tavrin.org", false}, UrlCase{"https://api.tavrinXcom", false},
        UrlCase{"https://api.other.com", false}, UrlCase{"HTTPS://api.tavrin.com", false},
        UrlCase{"https://api.Tavrin.com", false}, UrlCase{"https://api.tavrin.com:84a3", false},
        UrlCase{"https://api.tavrin.com:8443 ", false},
        UrlCase{"https://api.tavrin.com\n\n", false}, UrlCase{"https://ap i.tavrin.com", false},
        UrlCase{"https://api\xC2\xB7x.tavrin.com", false}, UrlCase{"", false}));

}  // namespace
}  // namespace tavrin
