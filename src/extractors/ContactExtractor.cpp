#include "extractors/ContactExtractor.hpp"

#include "dataset/RunStop.hpp"
#include "extractors/AccessGate.hpp"
#include "extractors/ContactKeys.hpp"

#include <tavrin/digest.hpp>

#include <unicode/bytestream.h>
#include <unicode/normalizer2.h>
#include <unicode/utf8.h>

#include <cmath>
#include <exception>
#include <limits>

namespace tavrin {

using namespace ContactKeys;

namespace {

// The 41 keys every extraction asks for, in the order the address book is
// asked for them. The e-mail key is listed twice on purpose: the list is part
// of the fetch request as the phone receives it.
constexpr std::string_view baseContactKeys[] = {
    CNContactBirthdayKey,
    CNContactDatesKey,
    CNContactDepartmentNameKey,
    CNContactEmailAddressesKey,
    CNContactFamilyNameKey,
    CNContactGivenNameKey,
    CNContactIdentifierKey,
    CNContactImageDataKey,
    CNContactInstantMessageAddressesKey,
    CNContactJobTitleKey,
    CNContactMiddleNameKey,
    CNContactNamePrefixKey,
    CNContactNameSuffixKey,
    CNContactNicknameKey,
    CNContactNonGregorianBirthdayKey,
    CNContactOrganizationNameKey,
    CNContactPhoneNumbersKey,
    CNContactPhoneticFamilyNameKey,
    CNContactPhoneticGivenNameKey,
    CNContactPhoneticMiddleNameKey,
    CNContactPreviousFamilyNameKey,
    CNContactRelationsKey,
    CNContactSocialProfilesKey,
    CNContactImageDataAvailableKey,
    CNContactThumbnailImageDataKey,
    CNContactTypeKey,
    CNContactUrlAddressesKey,
    CNContactPostalAddressesKey,
    CNContactEmailAddressesKey,
    CNContainerNameKey,
    CNContainerTypeKey,
    CNPostalAddressCityKey,
    CNPostalAddressCountryKey,
    CNPostalAddressISOCountryCodeKey,
    CNPostalAddressPostalCodeKey,
    CNPostalAddressStateKey,
    CNPostalAddressStreetKey,
    CNSocialProfileServiceKey,
    CNSocialProfileURLStringKey,
    CNSocialProfileUserIdentifierKey,
    CNSocialProfileUsernameKey,
};
static_assert(std::size(baseContactKeys) == 41);

// The presence flag of a text, which the platform never leaves absent.
bool filled(std::string_view text) { return ExtractorBase::hasText(text); }

// A birthday that does not resolve to a finite instant has no date.
std::optional<double> instant(const std::optional<double>& date) {
  if (date && std::isfinite(*date)) return date;
  return std::nullopt;
}

// Length of the line terminator at the start of `text`, or 0: the characters
// that end a line for the phone's pattern matching (LF, VT, FF, CR, NEL, LS, PS).
std::size_t lineTerminatorLength(std::string_view text) {
  const char c = text.front();
  if (c == '\n' || c == '\v' || c == '\f' || c == '\r') return 1;
  if (text.starts_with("\xC2\x85")) return 2;
  if (text.starts_with("\xE2\x80\xA8") || text.starts_with("\xE2\x80\xA9")) return 3;
  return 0;
}

// A label the platform predefines is wrapped as "_$!<Name>!$_"; it counts as
// predefined when "_$!<" is followed, later on the same line, by ">!$_".
bool isPredefinedLabel(std::string_view label) {
  constexpr std::string_view opening = "_$!<";
  constexpr std::string_view closing = ">!$_";
  std::size_t lineStart = 0;
  for (std::size_t i = 0; i <= label.size(); ++i) {
    const std::size_t terminator = i < label.size() ? lineTerminatorLength(label.substr(i)) : 1;
    if (terminator == 0) continue;
    const std::string_view line = label.substr(lineStart, i - lineStart);
    const std::size_t open = line.find(opening);
    if (open != std::string_view::npos &&
        line.find(closing, open + opening.size()) != std::string_view::npos) {
      return true;
    }
    i += terminator - 1;
    lineStart = i + 1;
  }
  return false;
}

// Classifies the bytes of a label: plain ASCII, other well-formed UTF-8, or not UTF-8.
enum class Encoding { ascii, utf8, illFormed };

Encoding encodingOf(std::string_view text) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  const auto length = static_cast<std::int32_t>(text.size());
  std::int32_t offset = 0;
  while (offset < length && bytes[offset] < 0x80) ++offset;
  if (offset == length) return Encoding::ascii;
  while (offset < length) {
    UChar32 c = 0;
    U8_NEXT(bytes, offset, length, c);
    if (c < 0) return Encoding::illFormed;
  }
  return Encoding::utf8;
}

// The label in Unicode normalization form C, the form under which canonically
// equivalent labels compare equal. ASCII is already in NFC and returns as it
// is; so does text that is not UTF-8, which has no normal form and is compared
// byte for byte. Otherwise the normal form is written into `scratch`.
std::string_view canonicalLabel(std::string_view label, std::string& scratch) {
  if (label.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()) ||
      encodingOf(label) != Encoding::utf8) {
    return label;
  }
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* nfc = icu::Normalizer2::getNFCInstance(status);
  const icu::StringPiece piece(label.data(), static_cast<std::int32_t>(label.size()));
  if (U_FAILURE(status) || nfc->isNormalizedUTF8(piece, status) || U_FAILURE(status)) {
    return label;
  }
  scratch.clear();
  icu::StringByteSink<std::string> sink(&scratch, static_cast<std::int32_t>(label.size()));
  nfc->normalizeUTF8(0, piece, sink, nullptr, status);
  return U_SUCCESS(status) ? std::string_view(scratch) : label;
}

// Label and service of social profiles and messaging addresses travel as
// digests: the label only when there is one, the service always, even empty.
void appendDigests(Row& entryRow, const std::optional<std::string>& label,
                   const std::string& service) {
  if (label) {
    entryRow.append(toMd5(*label));
  } else {
    entryRow.append(nullptr);
  }
  entryRow.append(toMd5(service));
}
}  // namespace

ContactExtractor::ContactExtractor(platform::Platform& platform)
    : PlatformExtractor("Contacts", platform),
      _contactKeys(std::begin(baseContactKeys), std::end(baseContactKeys)) {}

void ContactExtractor::addVersionKeys(const VersionGates& gates) {
  // The keys of the properties that newer systems offer join once; the note
  // key joins at every extraction on the systems that still let it be read,
  // as the request the phone receives has it.
  if (!_versionKeysAdded) {
    if (gates.phoneticOrganizationName) {
      _contactKeys.emplace_back(CNContactPhoneticOrganizationNameKey);
    }
    if (gates.postalSubAreas) {
      _contactKeys.emplace_back(CNPostalAddressSubAdministrativeAreaKey);
      _contactKeys.emplace_back(CNPostalAddressSubLocalityKey);
    }
    _versionKeysAdded = true;
  }
  if (gates.note) _contactKeys.emplace_back(CNContactNoteKey);
}

Element ContactExtractor::extract() {
  Element element(_dataSourceNameKey);
  try {
    platform::ContactStore& store = _platform.contacts();
    if (!grantsAccess(store.authorizationStatus(platform::ContactEntityType::contacts),
                      _dataSourceNameKey, element)) {
      return element;
    }
    platform::DeviceInfo& device = _platform.device();
    _gates.phoneticOrganizationName = device.isSystemVersionAtLeast(10, 0);
    _gates.postalSubAreas = device.isSystemVersionAtLeast(10, 3);
    _gates.note = !device.isSystemVersionAtLeast(13, 0);
    addVersionKeys(_gates);

    // Each row goes into the element as soon as its contact arrives, so the
    // address book is never held a second time. Once the run stops, the rest
    // of the contacts pass unread.
    Row row;
    const std::optional<platform::PlatformError> failure =
        store.enumerateContacts(_contactKeys, [&](const platform::Contact& contact) {
          if (runStopping()) return;
          row.clear();
          makeContactRow(contact, row);
          element.append(row);
        });
    if (failure) element.addError(failure->localizedDescription);
  } catch (const std::exception& error) {
    // A platform that throws despite its contract fails like one that reports.
    element.addError(error);
  }
  return element;
}

void ContactExtractor::makeContactRow(const platform::Contact& contact, Row& row) {
  row.append(contact.identifier);
  row.append(instant(contact.birthday));
  row.append(instant(contact.nonGregorianBirthday));
  row.append(contact.contactType);
  for (const std::string* text :
       {&contact.givenName, &contact.middleName, &contact.familyName, &contact.previousFamilyName,
        &contact.nameSuffix, &contact.namePrefix, &contact.nickname, &contact.phoneticGivenName,
        &contact.phoneticMiddleName, &contact.phoneticFamilyName}) {
    row.append(filled(*text));
  }
  if (_gates.phoneticOrganizationName) {
    row.append(filled(contact.phoneticOrganizationName));
  } else {
    row.append(nullptr);
  }
  row.append(filled(contact.organizationName));
  row.append(filled(contact.departmentName));
  row.append(filled(contact.jobTitle));
  row.append(contact.imageDataAvailable);
  if (_gates.note) {
    row.append(filled(contact.note));
  } else {
    row.append(nullptr);
  }
  // The order of the lists is also the order in which new labels get their ids.
  makeSocialProfileRows(row, contact);
  makeLabeledValueRows(row, contact.phoneNumbers);
  makeLabeledValueRows(row, contact.urlAddresses);
  makePostalAddressRows(row, contact);
  makeLabeledValueRows(row, contact.emailAddresses);
  makeLabeledValueRows(row, contact.contactRelations);
  makeInstantMessageRows(row, contact);
}

template <typename Value, typename MakeRow>
void ContactExtractor::appendList(Row& row,
                                  const std::vector<platform::LabeledValue<Value>>& entries,
                                  MakeRow makeRow) {
  if (entries.empty()) {
    row.append(nullptr);
    return;
  }
  _list.clear();
  for (const platform::LabeledValue<Value>& entry : entries) {
    _entry.clear();
    _entry.append(entry.identifier);
    makeRow(entry, _entry);
    _list.append(_entry);
  }
  row.append(_list);
}

void ContactExtractor::makeLabeledValueRows(
    Row& row, const std::vector<platform::LabeledValue<std::string>>& entries) {
  appendList(row, entries, [this](const auto& entry, Row& entryRow) {
    appendLabelCode(entryRow, entry.label);
    entryRow.append(filled(entry.value));
  });
}

void ContactExtractor::makePostalAddressRows(Row& row, const platform::Contact& contact) {
  appendList(row, contact.postalAddresses, [this](const auto& entry, Row& entryRow) {
    const platform::PostalAddress& address = entry.value;
    appendLabelCode(entryRow, entry.label);
    entryRow.append(filled(address.street));
    entryRow.append(filled(address.city));
    entryRow.append(filled(address.state));
    entryRow.append(filled(address.postalCode));
    entryRow.append(address.country);
    entryRow.append(address.isoCountryCode);
    if (_gates.postalSubAreas) {
      entryRow.append(filled(address.subAdministrativeArea));
      entryRow.append(filled(address.subLocality));
    } else {
      entryRow.append(nullptr);
      entryRow.append(nullptr);
    }
  });
}

void ContactExtractor::makeSocialProfileRows(Row& row, const platform::Contact& contact) {
  appendList(row, contact.socialProfiles, [](const auto& entry, Row& entryRow) {
    appendDigests(entryRow, entry.label, entry.value.service);
    entryRow.append(filled(entry.value.urlString));
    entryRow.append(filled(entry.value.userIdentifier));
    entryRow.append(filled(entry.value.username));
  });
}

void ContactExtractor::makeInstantMessageRows(Row& row, const platform::Contact& contact) {
  appendList(row, contact.instantMessageAddresses, [](const auto& entry, Row& entryRow) {
    appendDigests(entryRow, entry.label, entry.value.service);
    entryRow.append(filled(entry.value.username));
  });
}

ContactExtractor::LabelCode ContactExtractor::labelCode(const std::optional<std::string>& label) {
  if (label && isPredefinedLabel(*label)) return std::string_view(*label);
  return getCategoryId(label);
}

void ContactExtractor::appendLabelCode(Row& row, const std::optional<std::string>& label) {
  std::visit([&row](const auto& code) { row.append(code); }, labelCode(label));
}

std::int64_t ContactExtractor::getCategoryId(const std::optional<std::string>& label) {
  if (!label) return 0;
  const std::string_view key = canonicalLabel(*label, _normalizedLabel);
  if (const auto found = categoriesIds.find(key); found != categoriesIds.end()) {
    return found->second;
  }
  categoriesIds.emplace(std::string(key), currentId);
  return currentId++;
}

}  // namespace tavrin
