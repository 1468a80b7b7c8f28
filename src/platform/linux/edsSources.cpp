#include "platform/linux/edsSources.hpp"

#include <algorithm>
#include <string_view>

namespace tavrin::platform {

PlatformError errorOf(const GErrorRef& error, const char* fallback) {
  return {error && error->message != nullptr ? error->message : fallback};
}

std::variant<ESourceRegistry*, PlatformError> SourceRegistry::get() {
  if (!_registry) {
    GError* raw = nullptr;
    _registry.reset(e_source_registry_new_sync(nullptr, &raw));
    const GErrorRef error(raw);
    if (!_registry) return errorOf(error, "The list of sources cannot be read");
  }
  return _registry.get();
}

std::vector<GObjectRef<ESource>> enabledSources(ESourceRegistry* registry, const char* extension) {
  GList* sources = e_source_registry_list_enabled(registry, extension);
  std::vector<GObjectRef<ESource>> owned;
  for (GList* item = sources; item != nullptr; item = item->next) {
    owned.emplace_back(static_cast<ESource*>(item->data));
  }
  g_list_free(sources);
  std::sort(owned.begin(), owned.end(), [](const auto& a, const auto& b) {
    return std::string_view(e_source_get_uid(a.get())) < e_source_get_uid(b.get());
  });
  return owned;
}

}  // namespace tavrin::platform
