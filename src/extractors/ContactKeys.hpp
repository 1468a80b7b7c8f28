#pragma once

#include <cstdint>
#include <string_view>

// The names under which the address book fetches contact and group properties.
// Each constant carries the property name its key stands for, so a contact
// store can tell which properties it is asked for. Postal-address,
// social-profile and container keys name fields of nested values, not
// properties of a contact; a store accepts and ignores them.
namespace tavrin::ContactKeys {

inline constexpr std::string_view CNContactBirthdayKey = "birthday";
inline constexpr std::string_view CNContactDatesKey = "dates";
inline constexpr std::string_view CNContactDepartmentNameKey = "departmentName";
inline constexpr std::string_view CNContactEmailAddressesKey = "emailAddresses";
inline constexpr std::string_view CNContactFamilyNameKey = "familyName";
inline constexpr std::string_view CNContactGivenNameKey = "givenName";
inline constexpr std::string_view CNContactIdentifierKey = "identifier";
inline constexpr std::string_view CNContactImageDataKey = "imageData";
inline constexpr std::string_view CNContactInstantMessageAddressesKey = "instantMessageAddresses";
inline constexpr std::string_view CNContactJobTitleKey = "jobTitle";
inline constexpr std::string_view CNContactMiddleNameKey = "middleName";
inline constexpr std::string_view CNContactNamePrefixKey = "namePrefix";
inline constexpr std::string_view CNContactNameSuffixKey = "nameSuffix";
inline constexpr std::string_view CNContactNicknameKey = "nickname";
inline constexpr std::string_view CNContactNonGregorianBirthdayKey = "nonGregorianBirthday";
inline constexpr std::string_view CNContactNoteKey = "note";
inline constexpr std::string_view CNContactOrganizationNameKey = "organizationName";
inline constexpr std::string_view CNContactPhoneNumbersKey = "phoneNumbers";
inline constexpr std::string_view CNContactPhoneticFamilyNameKey = "phoneticFamilyName";
inline constexpr std::string_view CNContactPhoneticGivenNameKey = "phoneticGivenName";
inline constexpr std::string_view CNContactPhoneticMiddleNameKey = "phoneticMiddleName";
inline constexpr std::string_view CNContactPhoneticOrganizationNameKey = "phoneticOrganizationName";
inline constexpr std::string_view CNContactPreviousFamilyNameKey = "previousFamilyName";
inline constexpr std::string_view CNContactRelationsKey = "contactRelations";
inline constexpr std::string_view CNContactSocialProfilesKey = "socialProfiles";
inline constexpr std::string_view CNContactImageDataAvailableKey = "imageDataAvailable";
inline constexpr std::string_view CNContactThumbnailImageDataKey = "thumbnailImageData";
inline constexpr std::string_view CNContactTypeKey = "contactType";
inline constexpr std::string_view CNContactUrlAddressesKey = "urlAddresses";
inline constexpr std::string_view CNContactPostalAddressesKey = "postalAddresses";

inline constexpr std::string_view CNContainerNameKey = "containerName";
inline constexpr std::string_view CNContainerTypeKey = "containerType";

inline constexpr std::string_view CNPostalAddressCityKey = "city";
inline constexpr std::string_view CNPostalAddressCountryKey = "country";
inline constexpr std::string_view CNPostalAddressISOCountryCodeKey = "ISOCountryCode";
inline constexpr std::string_view CNPostalAddressPostalCodeKey = "postalCode";
inline constexpr std::string_view CNPostalAddressStateKey = "state";
inline constexpr std::string_view CNPostalAddressStreetKey = "street";
inline constexpr std::string_view CNPostalAddressSubAdministrativeAreaKey = "subAdministrativeArea";
inline constexpr std::string_view CNPostalAddressSubLocalityKey = "subLocality";

inline constexpr std::string_view CNSocialProfileServiceKey = "service";
inline constexpr std::string_view CNSocialProfileURLStringKey = "urlString";
inline constexpr std::string_view CNSocialProfileUserIdentifierKey = "userIdentifier";
inline constexpr std::string_view CNSocialProfileUsernameKey = "username";

inline constexpr std::string_view CNGroupIdentifierKey = "identifier";
inline constexpr std::string_view CNGroupNameKey = "name";

}  // namespace tavrin::ContactKeys
