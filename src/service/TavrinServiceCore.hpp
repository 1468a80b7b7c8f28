#pragma once

#include "codec/RawDeflate.hpp"
#include "collection/DataExtractorManager.hpp"
#include "net/CurlTransport.hpp"
#include "net/RestService.hpp"

#include <tavrin/options.hpp>

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace tavrin {

// How a run encodes and sends its dataset. The defaults are the library's; the
// benchmarks run the alternatives beside them to measure what the defaults buy.
struct RunEngines {
  DeflateEngine deflate = DeflateEngine::libdeflate;
  CurlTransport::Connections connections = CurlTransport::Connections::kept;
};

// The collection run behind TavrinService: owns the extraction manager and the
// REST client, and drives permissions, uniqueness check, extraction, JSON,
// compression, base64 and upload in that order.
class TavrinServiceCore {
 public:
  // Sees the dataset's JSON text once it is written, before it is compressed.
  using DatasetObserver = std::function<void(std::string_view json)>;

  // Builds the manager, checks the URL, creates the client and logs in, in that
  // order. Throws TavrinError: invalidInput "Url is incorrect" before any
  // traffic, or the login's error.
  TavrinServiceCore(std::string url, std::string authKey, ServiceOptions options,
                    RunEngines engines = {});

  // One collection run; returns the server's answer to the upload. Throws
  // TavrinError, or JsonWriteError when the dataset cannot be written as JSON.
  // `onDataset`, when set, is handed the JSON that is about to be uploaded.
  std::string collectData(const std::string& recordNumber, const DatasetObserver& onDataset = {});

 private:
  // What a run uploads, made between the uniqueness check and the upload: the
  // sources' dataset as JSON, handed to `onDataset`, then its payload.
  std::string encodedDataset(const DatasetObserver& onDataset);

  std::shared_ptr<platform::Platform> _platform;
  std::shared_ptr<CollectionObserver> _observer;
  DeflateEngine _deflateEngine;
  std::string _url;
  std::unique_ptr<RestService> _restService;
  DataExtractorManager dataExtractorManager;
};

}  // namespace tavrin
