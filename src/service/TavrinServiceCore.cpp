#include "service/TavrinServiceCore.hpp"

#include "collection/DatasetPipeline.hpp"
#include "collection/PermissionHeplper.hpp"
#include "collection/StatusResource.hpp"
#include "net/RequestUrl.hpp"
#include "service/ServiceUrl.hpp"

namespace tavrin {
namespace {

std::shared_ptr<platform::Platform> platformOrLinux(std::shared_ptr<platform::Platform> chosen) {
  return chosen ? std::move(chosen) : platform::makeLinuxPlatform();
}

}  // namespace

TavrinServiceCore::TavrinServiceCore(std::string url, std::string authKey, ServiceOptions options,
                                     RunEngines engines)
    : _platform(platformOrLinux(std::move(options.platform))),
      _observer(options.observer),
      _deflateEngine(engines.deflate),
      dataExtractorManager(_platform) {
  dataExtractorManager.setObserver(_observer.get());
  // The manager exists before the URL is judged, even when it is then rejected.
  // Text around the matched service URL must not send the key elsewhere: the
  // base URL has to lead to the very host the pattern matched, with nothing
  // added (a query, a fragment or user information would come from the text
  // around it).
  const auto serviceUrl = matchedServiceUrl(url);
  if (!serviceUrl || !sameDestination(url, *serviceUrl)) {
    throw TavrinError(ErrorType::invalidInput, std::string(StatusResource::urlIncorrectMessage));
  }
  _url = std::move(url);
  _restService = std::make_unique<RestService>(
      _url, std::make_unique<CurlTransport>(options, engines.connections));
  _restService->setObserver(_observer.get());
  _restService->login(std::move(authKey));
}

std::string TavrinServiceCore::collectData(const std::string& recordNumber,
                                           const DatasetObserver& onDataset) {
  PermissionHeplper::requestPermissions(*_platform);

  RestService& client = *_restService;
  if (!client.withRelogin([&] { return client.checkUniqueness(recordNumber); })) {
    throw TavrinError(ErrorType::serverRejected,
                      std::string(StatusResource::recordNumberNotUniqueMessage));
  }

  const std::string data = encodedDataset(onDataset);
  return client.withRelogin([&] { return client.upload(data, recordNumber); });
}

std::string TavrinServiceCore::encodedDataset(const DatasetObserver& onDataset) {
  MappedBuffer json = DatasetPipeline::datasetJson(dataExtractorManager);
  if (onDataset) onDataset(json.view());
  return DatasetPipeline::uploadPayload(std::move(json), _deflateEngine);
}

}  // namespace tavrin
