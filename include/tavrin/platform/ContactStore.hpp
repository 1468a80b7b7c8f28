#pragma once

#include <tavrin/platform/AccessHandler.hpp>

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tavrin::platform {

/// The entity type whose authorization governs the address book.
namespace ContactEntityType {
constexpr std::int64_t contacts = 0;  ///< Contacts and their groups.
}  // namespace ContactEntityType

/// One entry of a multi-valued contact property.
template <typename Value>
struct LabeledValue {
  std::string identifier;            ///< The entry's identifier.
  std::optional<std::string> label;  ///< The label: predefined ("_$!<Home>!$_"), custom, or absent.
  Value value;                       ///< The entry's value.
};

/// A postal address; texts are empty when not set.
struct PostalAddress {
  ///@{
  /// The address lines, as entered.
  std::string street, city, state, postalCode;
  ///@}
  std::string country;                ///< As entered.
  std::string isoCountryCode;         ///< As entered.
  std::string subAdministrativeArea;  ///< Offered from system 10.3 on.
  std::string subLocality;            ///< Offered from system 10.3 on.
};

/// A social-network profile; texts are empty when not set.
struct SocialProfile {
  ///@{
  /// The profile's fields, as entered; `service` names the network.
  std::string urlString, username, userIdentifier, service;
  ///@}
};

/// An instant-messaging address; texts are empty when not set.
struct InstantMessageAddress {
  std::string username;  ///< The user's name on the service.
  std::string service;   ///< The messaging service, for example "Skype".
};

/// One address-book contact. Texts are empty when not set, never absent.
struct Contact {
  std::string identifier;                      ///< Unique within the store.
  std::optional<double> birthday;              ///< Resolved instant, seconds since 1970.
  std::optional<double> nonGregorianBirthday;  ///< Resolved instant, seconds since 1970.
  std::int64_t contactType = 0;                ///< 0 person, 1 organization (raw value).
  ///@{
  /// The name, organization and note fields, as entered.
  std::string givenName, middleName, familyName, previousFamilyName, nameSuffix, namePrefix,
      nickname, phoneticGivenName, phoneticMiddleName, phoneticFamilyName, phoneticOrganizationName,
      organizationName, departmentName, jobTitle, note;
  ///@}
  bool imageDataAvailable = false;                           ///< The contact has a picture.
  std::vector<LabeledValue<SocialProfile>> socialProfiles;   ///< Social-network profiles.
  std::vector<LabeledValue<std::string>> phoneNumbers;       ///< The numbers' string values.
  std::vector<LabeledValue<std::string>> urlAddresses;       ///< Web addresses.
  std::vector<LabeledValue<PostalAddress>> postalAddresses;  ///< Postal addresses.
  std::vector<LabeledValue<std::string>> emailAddresses;     ///< E-mail addresses.
  std::vector<LabeledValue<std::string>> contactRelations;   ///< The related persons' names.
  std::vector<LabeledValue<InstantMessageAddress>> instantMessageAddresses;  ///< Messaging IDs.
};

/// A contact group.
struct ContactGroup {
  std::string identifier;  ///< Unique within the store.
  std::string name;        ///< As entered.
};

/// The address book. Calls answer on the calling thread unless stated otherwise.
class ContactStore {
 public:
  virtual ~ContactStore() = default;

  /// The raw authorization status for an entity type (ContactEntityType).
  virtual std::int64_t authorizationStatus(std::int64_t entityType) = 0;
  /// Asks the user for access; `handler` runs once, possibly on another thread.
  virtual void requestAccess(std::int64_t entityType, AccessHandler handler) = 0;
  /// Delivers every contact once, in a stable order, synchronously on the calling
  /// thread; `keysToFetch` names the properties asked for. Returns the error that
  /// ended the enumeration, or absent when it completed.
  virtual std::optional<PlatformError> enumerateContacts(
      const std::vector<std::string>& keysToFetch,
      const std::function<void(const Contact&)>& block) = 0;
  /// Every group of every container, or the error that refused the query.
  virtual std::variant<std::vector<ContactGroup>, PlatformError> groups() = 0;
};

}  // namespace tavrin::platform
