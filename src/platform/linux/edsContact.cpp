#include "platform/linux/edsContact.hpp"

#include "platform/linux/GObjectRef.hpp"

#include <algorithm>
#include <array>
#include <cctype>
#include <ctime>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace tavrin::platform {
namespace {

// The texts of a vCard attribute's values, or of one parameter's values.
std::vector<std::string> texts(GList* list) {
  std::vector<std::string> result;
  for (GList* item = list; item != nullptr; item = item->next) {
    result.emplace_back(item->data != nullptr ? static_cast<const char*>(item->data) : "");
  }
  return result;
}

// The n-th component of a structured value ("family;given;..."), empty when missing.
std::string component(const std::vector<std::string>& values, std::size_t n) {
  return n < values.size() ? values[n] : std::string();
}

std::string upper(std::string_view text) {
  std::string result(text);
  for (char& c : result) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return result;
}

// The TYPE values of an attribute, upper-cased, without the ones that say
// nothing about what the entry is for.
std::vector<std::string> types(EVCardAttribute* attribute) {
  std::vector<std::string> result;
  for (GList* param = e_vcard_attribute_get_param(attribute, EVC_TYPE); param != nullptr;
       param = param->next) {
    const std::string type =
        upper(param->data != nullptr ? static_cast<const char*>(param->data) : "");
    if (type != "PREF" && type != "VOICE" && type != "INTERNET" && !type.empty()) {
      result.push_back(type);
    }
  }
  return result;
}

bool has(const std::vector<std::string>& list, std::string_view value) {
  return std::find(list.begin(), list.end(), value) != list.end();
}

// A label the port calls predefined, as the phone writes it.
std::string predefined(std::string_view name) { return "_$!<" + std::string(name) + ">!$_"; }

// The label of an entry: the standard vCard types that phones predefine, the
// entry's other types as a custom label, or none.
std::optional<std::string> entryLabel(const std::vector<std::string>& entryTypes, bool phone) {
  if (phone) {
    const bool fax = has(entryTypes, "FAX");
    if (has(entryTypes, "CELL")) return predefined("Mobile");
    if (fax && has(entryTypes, "HOME")) return predefined("HomeFAX");
    if (fax && has(entryTypes, "WORK")) return predefined("WorkFAX");
    if (fax) return predefined("OtherFAX");
    if (has(entryTypes, "PAGER")) return predefined("Pager");
    if (has(entryTypes, "X-EVOLUTION-COMPANY") || has(entryTypes, "MAIN"))
      return predefined("Main");
  }
  if (has(entryTypes, "HOME")) return predefined("Home");
  if (has(entryTypes, "WORK")) return predefined("Work");
  if (has(entryTypes, "OTHER")) return predefined("Other");
  if (entryTypes.empty()) return std::nullopt;
  std::string custom;
  for (const std::string& type : entryTypes) custom += (custom.empty() ? "" : ",") + type;
  return custom;
}

// The messaging services Evolution stores in attributes of their own.
constexpr std::array<std::pair<std::string_view, std::string_view>, 8> messagingServices{{
    {"X-AIM", "AIM"},
    {"X-JABBER", "Jabber"},
    {"X-MSN", "MSN"},
    {"X-YAHOO", "Yahoo"},
    {"X-ICQ", "ICQ"},
    {"X-GROUPWISE", "GroupWise"},
    {"X-SKYPE", "Skype"},
    {"X-GOOGLE-TALK", "GoogleTalk"},
}};

// The people Evolution relates to a contact, with the label a phone gives them.
constexpr std::array<std::pair<std::string_view, std::string_view>, 3> relations{{
    {"X-EVOLUTION-SPOUSE", "Spouse"},
    {"X-EVOLUTION-MANAGER", "Manager"},
    {"X-EVOLUTION-ASSISTANT", "Assistant"},
}};

template <std::size_t N>
std::optional<std::string_view> lookup(
    const std::array<std::pair<std::string_view, std::string_view>, N>& table,
    std::string_view key) {
  for (const auto& [name, value] : table) {
    if (name == key) return value;
  }
  return std::nullopt;
}

// The birthday at midnight of the local time zone, as a phone resolves its date.
std::optional<double> birthdayInstant(EContact* card) {
  auto* date = static_cast<EContactDate*>(e_contact_get(card, E_CONTACT_BIRTH_DATE));
  if (date == nullptr) return std::nullopt;
  std::tm midnight{};
  midnight.tm_year = static_cast<int>(date->year) - 1900;
  midnight.tm_mon = static_cast<int>(date->month) - 1;
  midnight.tm_mday = static_cast<int>(date->day);
  midnight.tm_isdst = -1;
  const bool valid = date->month >= 1 && date->month <= 12 && date->day >= 1 && date->day <= 31;
  e_contact_date_free(date);
  if (!valid) return std::nullopt;
  const std::time_t instant = std::mktime(&midnight);
  if (instant == static_cast<std::time_t>(-1)) return std::nullopt;
  return static_cast<double>(instant);
}

// Reads the attributes of a card into the contact, one at a time.
class CardReader {
 public:
  explicit CardReader(Contact& contact) : _contact(contact) {}

  void read(EVCardAttribute* attribute) {
    const std::string name = upper(e_vcard_attribute_get_name(attribute));
    const std::vector<std::string> values = texts(e_vcard_attribute_get_values(attribute));
    const std::string value = component(values, 0);
    const std::string id = entryIdentifier(name);
    if (name == EVC_N) {
      _contact.familyName = value;
      _contact.givenName = component(values, 1);
      _contact.middleName = component(values, 2);
      _contact.namePrefix = component(values, 3);
      _contact.nameSuffix = component(values, 4);
    } else if (name == EVC_ORG) {
      _contact.organizationName = value;
      _contact.departmentName = component(values, 1);
    } else if (name == "KIND" || name == "X-ADDRESSBOOKSERVER-KIND") {
      _contact.contactType = upper(value) == "ORG" || upper(value) == "ORGANIZATION" ? 1 : 0;
    } else if (const auto text = textField(name)) {
      *text = value;
    } else if (name == EVC_PHOTO) {
      _contact.imageDataAvailable = true;
    } else if (name == EVC_TEL) {
      _contact.phoneNumbers.push_back({id, entryLabel(types(attribute), true), value});
    } else if (name == EVC_EMAIL) {
      _contact.emailAddresses.push_back({id, entryLabel(types(attribute), false), value});
    } else if (name == EVC_URL) {
      _contact.urlAddresses.push_back({id, entryLabel(types(attribute), false), value});
    } else if (name == EVC_ADR) {
      PostalAddress address;
      address.street = component(values, 2);
      address.city = component(values, 3);
      address.state = component(values, 4);
      address.postalCode = component(values, 5);
      address.country = component(values, 6);
      _contact.postalAddresses.push_back({id, entryLabel(types(attribute), false), address});
    } else if (const auto service = lookup(messagingServices, name)) {
      _contact.instantMessageAddresses.push_back(
          {id, entryLabel(types(attribute), false), {value, std::string(*service)}});
    } else if (const auto relation = lookup(relations, name)) {
      _contact.contactRelations.push_back({id, predefined(*relation), value});
    } else if (name == "X-SOCIALPROFILE") {
      // Apple's form: the network as the type, the user name as a parameter.
      const auto network = texts(e_vcard_attribute_get_param(attribute, EVC_TYPE));
      const auto user = texts(e_vcard_attribute_get_param(attribute, "X-USER"));
      _contact.socialProfiles.push_back(
          {id, std::nullopt, {value, component(user, 0), "", component(network, 0)}});
    }
  }

 private:
  // The single-text fields, by vCard attribute.
  std::string* textField(const std::string& name) {
    if (name == EVC_NICKNAME) return &_contact.nickname;
    if (name == EVC_TITLE) return &_contact.jobTitle;
    if (name == EVC_NOTE) return &_contact.note;
    if (name == "X-PHONETIC-FIRST-NAME") return &_contact.phoneticGivenName;
    if (name == "X-PHONETIC-MIDDLE-NAME") return &_contact.phoneticMiddleName;
    if (name == "X-PHONETIC-LAST-NAME") return &_contact.phoneticFamilyName;
    if (name == "X-PHONETIC-ORG") return &_contact.phoneticOrganizationName;
    if (name == "X-MAIDENNAME") return &_contact.previousFamilyName;
    return nullptr;
  }

  // An entry's identifier: the contact's, the attribute's name and how many
  // attributes of that name come before it, which fields added to the card
  // elsewhere do not change.
  std::string entryIdentifier(const std::string& name) {
    std::string lower = name;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return _contact.identifier + "/" + lower + "/" + std::to_string(_seen[name]++);
  }

  Contact& _contact;
  std::map<std::string, std::size_t> _seen;
};

}  // namespace

Contact contactFromVCard(EContact* card, const std::string& identifier) {
  Contact contact;
  contact.identifier = identifier;
  contact.birthday = birthdayInstant(card);
  CardReader reader(contact);
  for (GList* item = e_vcard_get_attributes(E_VCARD(card)); item != nullptr; item = item->next) {
    reader.read(static_cast<EVCardAttribute*>(item->data));
  }
  return contact;
}

}  // namespace tavrin::platform
