#include "platform/linux/GObjectRef.hpp"
#include "platform/linux/LinuxContactStore.hpp"
#include "platform/linux/StoreConsent.hpp"
#include "platform/linux/edsContact.hpp"
#include "platform/linux/edsSources.hpp"

#include <tavrin/platform/Platform.hpp>

#include <algorithm>
#include <map>
#include <set>

namespace tavrin::platform {
namespace {

using Card = GObjectRef<EContact>;

struct AddressBook {
  std::string uid;
  std::vector<Card> cards;  // Sorted by the contacts' UID, the order of every read.
};

const char* contactUid(EContact* card) {
  const auto* uid = static_cast<const char*>(e_contact_get_const(card, E_CONTACT_UID));
  return uid != nullptr ? uid : "";
}

// Every contact of one address book.
std::variant<AddressBook, PlatformError> readBook(ESource* source) {
  AddressBook book{e_source_get_uid(source), {}};
  GError* raw = nullptr;
  const GObjectRef<EClient> client(e_book_client_connect_sync(source, edsNoWait, nullptr, &raw));
  GErrorRef error(raw);
  if (!client) return errorOf(error, "The address book cannot be opened");
  GSList* found = nullptr;
  EBookQuery* query = e_book_query_any_field_contains("");
  const GCharRef everything(e_book_query_to_string(query));
  e_book_query_unref(query);
  if (!e_book_client_get_contacts_sync(E_BOOK_CLIENT(client.get()), everything.get(), &found,
                                       nullptr, &raw)) {
    error.reset(raw);
    return errorOf(error, "The address book cannot be read");
  }
  for (GSList* item = found; item != nullptr; item = item->next) {
    book.cards.emplace_back(static_cast<EContact*>(item->data));
  }
  g_slist_free(found);
  std::sort(book.cards.begin(), book.cards.end(), [](const Card& a, const Card& b) {
    return std::string_view(contactUid(a.get())) < contactUid(b.get());
  });
  return book;
}

// Every enabled address book, in the order of their UIDs.
std::variant<std::vector<AddressBook>, PlatformError> readAddressBooks(SourceRegistry& list) {
  auto registry = list.get();
  if (auto* failure = std::get_if<PlatformError>(&registry)) return std::move(*failure);
  const auto sources =
      enabledSources(std::get<ESourceRegistry*>(registry), E_SOURCE_EXTENSION_ADDRESS_BOOK);
  std::vector<AddressBook> books;
  for (const auto& source : sources) {
    auto book = readBook(source.get());
    if (auto* failure = std::get_if<PlatformError>(&book)) return std::move(*failure);
    books.push_back(std::move(std::get<AddressBook>(book)));
  }
  return books;
}

// A group's identifier: a digest of its name, which itself stays on the device.
std::string groupIdentifier(const std::string& name) {
  const GCharRef digest(g_compute_checksum_for_string(G_CHECKSUM_SHA256, name.c_str(), -1));
  return std::string(digest.get(), 32);
}

// Evolution Data Server's address books. Every read opens the books afresh, so
// it sees the contacts as they are now.
class EdsContactStore final : public ConsentedStore<ContactStore> {
 public:
  using ConsentedStore::ConsentedStore;

  std::optional<PlatformError> enumerateContacts(
      const std::vector<std::string>&, const std::function<void(const Contact&)>& block) override {
    auto books = readAddressBooks(_registry);
    if (auto* failure = std::get_if<PlatformError>(&books)) return std::move(*failure);
    for (const AddressBook& book : std::get<std::vector<AddressBook>>(books)) {
      for (const Card& card : book.cards) {
        if (stopRequested()) return std::nullopt;
        block(contactFromVCard(card.get(), book.uid + "/" + contactUid(card.get())));
      }
    }
    return std::nullopt;
  }

  // The groups are the contacts' categories, which is what GNOME Contacts shows
  // as groups: one group per category name over all address books, by name.
  std::variant<std::vector<ContactGroup>, PlatformError> groups() override {
    auto books = readAddressBooks(_registry);
    if (auto* failure = std::get_if<PlatformError>(&books)) return std::move(*failure);
    std::set<std::string> names;
    for (const AddressBook& book : std::get<std::vector<AddressBook>>(books)) {
      for (const Card& card : book.cards) {
        auto* categories = static_cast<GList*>(e_contact_get(card.get(), E_CONTACT_CATEGORY_LIST));
        for (GList* item = categories; item != nullptr; item = item->next) {
          names.emplace(static_cast<const char*>(item->data));
        }
        g_list_free_full(categories, g_free);
      }
    }
    std::vector<ContactGroup> result;
    result.reserve(names.size());
    for (const std::string& name : names) result.push_back({groupIdentifier(name), name});
    return result;
  }

 private:
  SourceRegistry _registry;
};

}  // namespace

std::unique_ptr<ContactStore> makeLinuxContactStore(std::shared_ptr<HostConsent> consent) {
  return std::make_unique<EdsContactStore>(StoreConsent("contacts", std::move(consent)));
}

}  // namespace tavrin::platform
