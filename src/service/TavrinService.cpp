#include <tavrin/service.hpp>

#include "collection/DatasetPipeline.hpp"
#include "service/TavrinServiceCore.hpp"

namespace tavrin {

TavrinService::TavrinService(std::string url, std::string authKey)
    : TavrinService(std::move(url), std::move(authKey), ServiceOptions{}) {}

TavrinService::TavrinService(std::string url, std::string authKey, const ServiceOptions& options)
    : _tavrinService(
          std::make_unique<TavrinServiceCore>(std::move(url), std::move(authKey), options)) {}

TavrinService::~TavrinService() = default;

std::string TavrinService::collectData(const std::string& recordNumber) {
  return _tavrinService->collectData(recordNumber);
}

std::future<std::string> TavrinService::collectDataAsync(std::string recordNumber) {
  return _tavrinService->collectDataAsync(std::move(recordNumber));
}

void TavrinService::cancel() noexcept { _tavrinService->cancel(); }

std::string TavrinService::previewDataset() { return _tavrinService->previewDataset(); }

std::string previewDataset(const ServiceOptions& options) {
  checkDeadline(options);
  const auto device = chosenPlatform(options);
  DataExtractorManager manager(device);
  const RunEvents events(options.observer(), options.log());
  manager.setEvents(events);
  RunStop stop;
  stop.beginRun(options.deadline());
  const RunScope scope(stop);
  return DatasetPipeline::previewJson(*device, manager);
}

}  // namespace tavrin
