#pragma once

#include <tavrin/platform/DeviceInfo.hpp>

#include <memory>
#include <optional>
#include <string>

namespace tavrin::platform {

// The machine's cellular modem, as far as the device facts need it.
class CellularModem {
 public:
  virtual ~CellularModem() = default;
  // The provider of the modem's SIM card, or absent without a modem and SIM.
  virtual std::optional<Carrier> carrier() = 0;
  // The technology of the network the modem uses now, named as the platform
  // names it ("CTRadioAccessTechnologyLTE"), or absent when it uses none.
  virtual std::optional<std::string> radioAccessTechnology() = 0;
};

// ModemManager's first modem with a SIM card when the library is built with
// its client, else a machine without a modem.
std::unique_ptr<CellularModem> makeCellularModem();

}  // namespace tavrin::platform
