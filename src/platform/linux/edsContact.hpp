#pragma once

#include <tavrin/platform/ContactStore.hpp>

#include <libebook/libebook.h>

#include <string>

namespace tavrin::platform {

// One Evolution Data Server contact as the address-book port describes it,
// read from its vCard; `identifier` names it uniquely among all address books.
Contact contactFromVCard(EContact* card, const std::string& identifier);

}  // namespace tavrin::platform
