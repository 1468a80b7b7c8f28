#include <tavrin/service.hpp>

#include "service/TavrinServiceCore.hpp"

namespace tavrin {

TavrinService::TavrinService(std::string url, std::string authKey)
    : TavrinService(std::move(url), std::move(authKey), ServiceOptions{}) {}

TavrinService::TavrinService(std::string url, std::string authKey, ServiceOptions options)
    : _tavrinService(std::make_unique<TavrinServiceCore>(std::move(url), std::move(authKey),
                                                         std::move(options))) {}

TavrinService::~TavrinService() = default;

std::string TavrinService::collectData(const std::string& recordNumber) {
  return _tavrinService->collectData(recordNumber);
}

}  // namespace tavrin
