// The Linux platform reads the address book of a real Evolution Data Server,
// started on a private session bus (tests/linux/private-session.sh), into the
// same rows as a device profile that describes the same contacts.

#include "extractors/ContactExtractor.hpp"
#include "extractors/ContactGroupExtractor.hpp"
#include "platform/linux/GObjectRef.hpp"
#include "platform/linux/LinuxPlatform.hpp"

#include "SectionJson.hpp"

#include <libebook/libebook.h>

#include <gtest/gtest.h>

namespace tavrin {
namespace {

using platform::GErrorRef;
using platform::GObjectRef;

// The contacts, as vCards written by other programs would hold them.
constexpr const char* cards[] = {
    "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:alice\r\nFN:Alice\r\n"
    "N:Liddell;Alice;Pleasance;Ms;\r\nNICKNAME:Al\r\nX-MAIDENNAME:Kingsley\r\n"
    "X-PHONETIC-FIRST-NAME:A-lis\r\nORG:Wonderland Ltd;Research\r\nTITLE:Explorer\r\n"
    "NOTE:met at the tea party\r\nBDAY:1990-06-15\r\n"
    "TEL;TYPE=CELL:+44 1\r\nTEL;TYPE=HOME,FAX:+44 2\r\nTEL;TYPE=X-EVOLUTION-CALLBACK:+44 3\r\n"
    "EMAIL;TYPE=WORK,INTERNET:alice@example.org\r\nEMAIL:alice@example.net\r\n"
    "URL:https://example.org/alice\r\n"
    "ADR;TYPE=HOME:;;1 Rabbit Hole;Oxford;;OX1;United Kingdom\r\n"
    "X-JABBER;TYPE=HOME:alice@jabber.example\r\nX-EVOLUTION-SPOUSE:Bob\r\n"
    "X-SOCIALPROFILE;TYPE=twitter;X-USER=alice:https://twitter.com/alice\r\n"
    "CATEGORIES:Family,Friends\r\nEND:VCARD",
    "BEGIN:VCARD\r\nVERSION:3.0\r\nUID:company\r\nFN:Acme\r\nX-ADDRESSBOOKSERVER-KIND:org\r\n"
    "ORG:Acme\r\nPHOTO;VALUE=uri:https://example.org/acme.png\r\nTEL;TYPE=WORK:0\r\n"
    "CATEGORIES:Suppliers,Family\r\nEND:VCARD",
};

// Adds the cards to the built-in address book through EDS's own client.
void addCards() {
  GError* raw = nullptr;
  const GObjectRef<ESourceRegistry> registry(e_source_registry_new_sync(nullptr, &raw));
  GErrorRef error(raw);
  ASSERT_TRUE(registry) << error->message;
  const GObjectRef<ESource> book(e_source_registry_ref_builtin_address_book(registry.get()));
  const GObjectRef<EClient> client(
      e_book_client_connect_sync(book.get(), static_cast<guint32>(-1), nullptr, &raw));
  error.reset(raw);
  ASSERT_TRUE(client) << error->message;
  GSList* contacts = nullptr;
  for (const char* card : cards)
    contacts = g_slist_append(contacts, e_contact_new_from_vcard(card));
  const gboolean added = e_book_client_add_contacts_sync(
      E_BOOK_CLIENT(client.get()), contacts, E_BOOK_OPERATION_FLAG_NONE, nullptr, nullptr, &raw);
  g_slist_free_full(contacts, g_object_unref);
  error.reset(raw);
  ASSERT_TRUE(added) << error->message;
}

nlohmann::json groupRows(platform::Platform& phone) {
  return sectionValues(ContactGroupExtractor("ContactGroups", {}, phone).extract());
}

TEST(EdsAddressBook, RowsMatchTheProfileOfTheSameContacts) {
  ASSERT_NO_FATAL_FAILURE(addCards());
  platform::LinuxPlatform phone("eds-test", {},
                                [](const std::string& store) { return store == "contacts"; });
  bool granted = false;
  phone.contacts().requestAccess(0, [&](bool answer, auto) { granted = answer; });
  ASSERT_TRUE(granted);

  const auto profile = loadTestProfile("linux-address-book.json");
  EXPECT_EQ(sectionValues(ContactExtractor(phone).extract()),
            sectionValues(ContactExtractor(*profile).extract()));
  EXPECT_EQ(groupRows(phone), groupRows(*profile));
}

}  // namespace
}  // namespace tavrin
