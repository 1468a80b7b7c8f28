#include "platform/linux/mobileCountry.hpp"

#include "platform/linux/GObjectRef.hpp"

#include <cstring>

namespace tavrin::platform {
namespace {

struct Search {
  const std::string& mobileCountryCode;
  std::string country;  // Of the <country> element being read.
  std::optional<std::string> found;
};

const char* attribute(const gchar** names, const gchar** values, const char* wanted) {
  for (; *names != nullptr; ++names, ++values) {
    if (std::strcmp(*names, wanted) == 0) return *values;
  }
  return nullptr;
}

// <country code="de"> ... <network-id mcc="262" mnc="01"/> ...
void startElement(GMarkupParseContext*, const gchar* element, const gchar** names,
                  const gchar** values, gpointer data, GError**) {
  auto& search = *static_cast<Search*>(data);
  if (search.found) return;
  if (std::strcmp(element, "country") == 0) {
    const char* code = attribute(names, values, "code");
    search.country = code != nullptr ? code : "";
  } else if (std::strcmp(element, "network-id") == 0 && !search.country.empty()) {
    const char* code = attribute(names, values, "mcc");
    if (code != nullptr && search.mobileCountryCode == code) search.found = search.country;
  }
}

struct MarkupFree {
  void operator()(GMarkupParseContext* context) const { g_markup_parse_context_free(context); }
};

}  // namespace

std::optional<std::string> countryOfMobileCode(const std::string& mobileCountryCode,
                                               const std::string& database) {
  gchar* raw = nullptr;
  gsize size = 0;
  if (mobileCountryCode.empty() || !g_file_get_contents(database.c_str(), &raw, &size, nullptr)) {
    return std::nullopt;
  }
  const GCharRef text(raw);
  Search search{mobileCountryCode, {}, {}};
  static constexpr GMarkupParser parser{startElement, nullptr, nullptr, nullptr, nullptr};
  const std::unique_ptr<GMarkupParseContext, MarkupFree> context(
      g_markup_parse_context_new(&parser, G_MARKUP_DEFAULT_FLAGS, &search, nullptr));
  g_markup_parse_context_parse(context.get(), text.get(), static_cast<gssize>(size), nullptr);
  return search.found;
}

}  // namespace tavrin::platform
