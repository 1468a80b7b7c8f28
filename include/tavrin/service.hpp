#pragma once

#include <tavrin/export.hpp>
#include <tavrin/options.hpp>

#include <memory>
#include <string>

namespace tavrin {

class TavrinServiceCore;

/// The library's entry point: one object per base URL and key, logged in once,
/// then one collectData call per record number. Both operations block the
/// calling thread until they are done. An object must not be used from two
/// threads at once; separate objects share nothing. Not copyable or movable:
/// hold it in a smart pointer to share or pass it on.
class TAVRIN_EXPORT TavrinService {
 public:
  /// Checks the URL and logs in with the key, reading the Linux machine the
  /// library runs on. Throws TavrinError: invalidInput "Url is incorrect" before
  /// any traffic, or the login's error; no object exists then.
  TavrinService(std::string url, std::string authKey);
  /// The same, with the device, trust and timeout settings of `options`.
  TavrinService(std::string url, std::string authKey, ServiceOptions options);
  ~TavrinService();
  TavrinService(const TavrinService&) = delete;
  TavrinService& operator=(const TavrinService&) = delete;

  /// Asks for undecided permissions, checks that the record number is unused,
  /// collects the dataset and uploads it; returns the server's answer. Throws
  /// TavrinError, or JsonWriteError when the dataset cannot be written as JSON.
  /// A failed run leaves the object usable.
  std::string collectData(const std::string& recordNumber);

 private:
  std::unique_ptr<TavrinServiceCore> _tavrinService;
};

}  // namespace tavrin
