#pragma once

#include <tavrin/platform/DeviceInfo.hpp>

#include <optional>
#include <string_view>

namespace tavrin::platform {

// The identifier an application gets for this machine: stable for one
// application on one machine, different between applications, and not
// revealing the machine's own identifier (so two applications cannot join
// their records through it, and it cannot be traced back to the machine id).
class VendorIdentifier {
 public:
  // HMAC-SHA256, keyed with the 128-bit machine id, over a fixed context and
  // the application identifier; the first 16 bytes, marked as a version-4
  // UUID. `machineIdText` is the content of /etc/machine-id: 32 hexadecimal
  // digits on the first line. Absent when it is not a valid machine id
  // (missing, "uninitialized", all zero or malformed).
  static std::optional<Uuid> derive(std::string_view machineIdText,
                                    std::string_view applicationIdentifier);
};

}  // namespace tavrin::platform
