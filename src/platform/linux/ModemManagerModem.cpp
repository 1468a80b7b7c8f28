#include "platform/linux/CellularModem.hpp"
#include "platform/linux/GObjectRef.hpp"
#include "platform/linux/mobileCountry.hpp"

#include <libmm-glib.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace tavrin::platform {
namespace {

// The modem that holds a SIM card, with the connection to ModemManager that
// its proxies use.
struct Modem {
  GObjectRef<MMManager> manager;
  GObjectRef<MMObject> object;
  GObjectRef<MMModem> modem;
};

// ModemManager's modems, read afresh: the first, in the order of their D-Bus
// paths, that has a SIM card. None when ModemManager is not running; it is not
// started for this.
std::optional<Modem> modemWithSim() {
  const GObjectRef<GDBusConnection> bus(g_bus_get_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
  if (!bus) return std::nullopt;
  Modem found{
      GObjectRef<MMManager>(mm_manager_new_sync(
          bus.get(), G_DBUS_OBJECT_MANAGER_CLIENT_FLAGS_DO_NOT_AUTO_START, nullptr, nullptr)),
      nullptr, nullptr};
  if (!found.manager) return std::nullopt;
  const GCharRef owner(g_dbus_object_manager_client_get_name_owner(
      G_DBUS_OBJECT_MANAGER_CLIENT(found.manager.get())));
  if (!owner) return std::nullopt;
  GList* listed = g_dbus_object_manager_get_objects(G_DBUS_OBJECT_MANAGER(found.manager.get()));
  std::vector<GObjectRef<MMObject>> objects;
  for (GList* item = listed; item != nullptr; item = item->next) {
    objects.emplace_back(MM_OBJECT(item->data));
  }
  g_list_free(listed);
  std::sort(objects.begin(), objects.end(), [](const auto& a, const auto& b) {
    return std::strcmp(mm_object_get_path(a.get()), mm_object_get_path(b.get())) < 0;
  });
  for (auto& object : objects) {
    GObjectRef<MMModem> modem(mm_object_get_modem(object.get()));
    const char* sim = modem ? mm_modem_get_sim_path(modem.get()) : nullptr;
    if (sim != nullptr && std::strcmp(sim, "/") != 0) {
      found.object = std::move(object);
      found.modem = std::move(modem);
      return found;
    }
  }
  return std::nullopt;
}

std::optional<std::string> text(const char* value) {
  if (value == nullptr || *value == '\0') return std::nullopt;
  return value;
}

// The platform's names of the access technologies, the most advanced first.
constexpr std::array<std::pair<unsigned, const char*>, 12> technologies{{
    {MM_MODEM_ACCESS_TECHNOLOGY_5GNR, "CTRadioAccessTechnologyNR"},
    {MM_MODEM_ACCESS_TECHNOLOGY_LTE | MM_MODEM_ACCESS_TECHNOLOGY_LTE_CAT_M |
         MM_MODEM_ACCESS_TECHNOLOGY_LTE_NB_IOT,
     "CTRadioAccessTechnologyLTE"},
    {MM_MODEM_ACCESS_TECHNOLOGY_EVDOB, "CTRadioAccessTechnologyCDMAEVDORevB"},
    {MM_MODEM_ACCESS_TECHNOLOGY_EVDOA, "CTRadioAccessTechnologyCDMAEVDORevA"},
    {MM_MODEM_ACCESS_TECHNOLOGY_EVDO0, "CTRadioAccessTechnologyCDMAEVDORev0"},
    {MM_MODEM_ACCESS_TECHNOLOGY_HSUPA, "CTRadioAccessTechnologyHSUPA"},
    {MM_MODEM_ACCESS_TECHNOLOGY_HSDPA | MM_MODEM_ACCESS_TECHNOLOGY_HSPA |
         MM_MODEM_ACCESS_TECHNOLOGY_HSPA_PLUS,
     "CTRadioAccessTechnologyHSDPA"},
    {MM_MODEM_ACCESS_TECHNOLOGY_UMTS, "CTRadioAccessTechnologyWCDMA"},
    {MM_MODEM_ACCESS_TECHNOLOGY_1XRTT, "CTRadioAccessTechnologyCDMA1x"},
    {MM_MODEM_ACCESS_TECHNOLOGY_EDGE, "CTRadioAccessTechnologyEdge"},
    {MM_MODEM_ACCESS_TECHNOLOGY_GPRS, "CTRadioAccessTechnologyGPRS"},
    {MM_MODEM_ACCESS_TECHNOLOGY_GSM | MM_MODEM_ACCESS_TECHNOLOGY_GSM_COMPACT,
     "CTRadioAccessTechnologyGPRS"},
}};

// The modem of ModemManager. The carrier is the SIM card's home provider, as
// on a phone: its operator identifier (MCC and MNC) and name, else those of the
// network the modem is registered with. Every call asks ModemManager afresh.
class ModemManagerModem final : public CellularModem {
 public:
  std::optional<Carrier> carrier() override {
    const auto found = modemWithSim();
    if (!found) return std::nullopt;
    const GObjectRef<MMSim> sim(mm_modem_get_sim_sync(found->modem.get(), nullptr, nullptr));
    const GObjectRef<MMModem3gpp> network(mm_object_get_modem_3gpp(found->object.get()));
    auto code = sim ? text(mm_sim_get_operator_identifier(sim.get())) : std::nullopt;
    auto name = sim ? text(mm_sim_get_operator_name(sim.get())) : std::nullopt;
    if (!code && network) code = text(mm_modem_3gpp_get_operator_code(network.get()));
    if (!name && network) name = text(mm_modem_3gpp_get_operator_name(network.get()));
    Carrier carrier;
    carrier.carrierName = std::move(name);
    if (code && (code->size() == 5 || code->size() == 6) &&
        code->find_first_not_of("0123456789") == std::string::npos) {
      carrier.mobileCountryCode = code->substr(0, 3);
      carrier.mobileNetworkCode = code->substr(3);
      carrier.isoCountryCode = countryOfMobileCode(*carrier.mobileCountryCode);
    }
    return carrier;
  }

  std::optional<std::string> radioAccessTechnology() override {
    const auto found = modemWithSim();
    if (!found) return std::nullopt;
    const unsigned inUse = mm_modem_get_access_technologies(found->modem.get());
    for (const auto& [bits, name] : technologies) {
      if ((inUse & bits) != 0) return name;
    }
    return std::nullopt;
  }
};

}  // namespace

std::unique_ptr<CellularModem> makeCellularModem() { return std::make_unique<ModemManagerModem>(); }

}  // namespace tavrin::platform
