#include "service/UserAgent.hpp"

#include "dataset/DeviceIdentity.hpp"

#include <tavrin/error.hpp>
#include <tavrin/version.hpp>

#include <algorithm>

namespace tavrin {
namespace {

bool printable(char c) { return c >= 0x20 && c < 0x7F; }

// A device fact as header text: whatever is not printable ASCII is left out.
std::string headerText(std::string text) {
  text.erase(std::remove_if(text.begin(), text.end(), [](char c) { return !printable(c); }),
             text.end());
  return text;
}

}  // namespace

std::string userAgent(const std::string& hostProduct, platform::DeviceInfo& device) {
  if (!std::all_of(hostProduct.begin(), hostProduct.end(), printable)) {
    throw TavrinError(ErrorType::invalidInput, "User agent must be printable ASCII");
  }
  std::string agent = hostProduct.empty() ? "" : hostProduct + " ";
  agent += "tavrinsdk/" + std::to_string(TAVRIN_VERSION_MAJOR) + "." +
           std::to_string(TAVRIN_VERSION_MINOR) + "." + std::to_string(TAVRIN_VERSION_PATCH);
  agent += " (" + headerText(device.systemName() + " " + device.systemVersion()) + "; " +
           headerText(modelIdentifier(device)) + ")";
  return agent;
}

}  // namespace tavrin
