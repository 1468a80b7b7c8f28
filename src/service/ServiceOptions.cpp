#include <tavrin/options.hpp>

namespace tavrin {

struct ServiceOptions::Settings {
  std::shared_ptr<platform::Platform> platform;
  platform::ConsentCallback consent;
  std::string caFile;
  std::vector<std::string> resolve;
  std::string pinnedPublicKey;
  std::chrono::milliseconds requestTimeout{60000};
  std::chrono::milliseconds deadline{0};
  std::shared_ptr<CollectionObserver> observer;
  LogHandler log;
  std::string userAgent;
};

ServiceOptions::ServiceOptions() : _settings(std::make_unique<Settings>()) {}
ServiceOptions::~ServiceOptions() = default;
ServiceOptions::ServiceOptions(const ServiceOptions& other)
    : _settings(std::make_unique<Settings>(*other._settings)) {}

ServiceOptions& ServiceOptions::operator=(const ServiceOptions& other) {
  if (this != &other) *_settings = *other._settings;
  return *this;
}

ServiceOptions& ServiceOptions::setPlatform(std::shared_ptr<platform::Platform> platform) {
  _settings->platform = std::move(platform);
  return *this;
}
ServiceOptions& ServiceOptions::setConsent(platform::ConsentCallback consent) {
  _settings->consent = std::move(consent);
  return *this;
}
ServiceOptions& ServiceOptions::setCaFile(std::string caFile) {
  _settings->caFile = std::move(caFile);
  return *this;
}
ServiceOptions& ServiceOptions::setResolve(std::vector<std::string> resolve) {
  _settings->resolve = std::move(resolve);
  return *this;
}
ServiceOptions& ServiceOptions::setPinnedPublicKey(std::string pinnedPublicKey) {
  _settings->pinnedPublicKey = std::move(pinnedPublicKey);
  return *this;
}
ServiceOptions& ServiceOptions::setRequestTimeout(std::chrono::milliseconds requestTimeout) {
  _settings->requestTimeout = requestTimeout;
  return *this;
}
ServiceOptions& ServiceOptions::setDeadline(std::chrono::milliseconds deadline) {
  _settings->deadline = deadline;
  return *this;
}
ServiceOptions& ServiceOptions::setObserver(std::shared_ptr<CollectionObserver> observer) {
  _settings->observer = std::move(observer);
  return *this;
}
ServiceOptions& ServiceOptions::setLog(LogHandler log) {
  _settings->log = std::move(log);
  return *this;
}
ServiceOptions& ServiceOptions::setUserAgent(std::string userAgent) {
  _settings->userAgent = std::move(userAgent);
  return *this;
}

const std::shared_ptr<platform::Platform>& ServiceOptions::platform() const noexcept {
  return _settings->platform;
}
const platform::ConsentCallback& ServiceOptions::consent() const noexcept {
  return _settings->consent;
}
const std::string& ServiceOptions::caFile() const noexcept { return _settings->caFile; }
const std::vector<std::string>& ServiceOptions::resolve() const noexcept {
  return _settings->resolve;
}
const std::string& ServiceOptions::pinnedPublicKey() const noexcept {
  return _settings->pinnedPublicKey;
}
std::chrono::milliseconds ServiceOptions::requestTimeout() const noexcept {
  return _settings->requestTimeout;
}
std::chrono::milliseconds ServiceOptions::deadline() const noexcept { return _settings->deadline; }
const std::shared_ptr<CollectionObserver>& ServiceOptions::observer() const noexcept {
  return _settings->observer;
}
const LogHandler& ServiceOptions::log() const noexcept { return _settings->log; }
const std::string& ServiceOptions::userAgent() const noexcept { return _settings->userAgent; }

}  // namespace tavrin
