#pragma once

#include <optional>
#include <string>

namespace tavrin::platform {

// Where the mobile-broadband provider database lists its networks.
inline constexpr const char* providerDatabase =
    "/usr/share/mobile-broadband-provider-info/serviceproviders.xml";

// The ISO 3166 country (lower case, "de") of a mobile country code ("262"),
// from the country of the first network the provider database lists with that
// code; absent when the database cannot be read or lists none.
std::optional<std::string> countryOfMobileCode(const std::string& mobileCountryCode,
                                               const std::string& database = providerDatabase);

}  // namespace tavrin::platform
