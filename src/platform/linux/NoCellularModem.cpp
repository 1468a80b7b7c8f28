#include "platform/linux/CellularModem.hpp"

namespace tavrin::platform {
namespace {

// Built without a modem client, the library knows no carrier and no network.
class NoCellularModem final : public CellularModem {
 public:
  std::optional<Carrier> carrier() override { return std::nullopt; }
  std::optional<std::string> radioAccessTechnology() override { return std::nullopt; }
};

}  // namespace

std::unique_ptr<CellularModem> makeCellularModem() { return std::make_unique<NoCellularModem>(); }

}  // namespace tavrin::platform
