#include "platform/linux/HostConsent.hpp"

#include "platform/linux/readTextFile.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <optional>
#include <sstream>
#include <string_view>

namespace tavrin::platform {
namespace {

constexpr std::size_t longestFileName = 255;

// The answers a consent file holds: one "STORE yes" or "STORE no" per line.
std::map<std::string, std::int64_t> readAnswers(const std::filesystem::path& file) {
  std::map<std::string, std::int64_t> answers;
  if (file.empty()) return answers;
  std::istringstream lines(readTextFile(file.string()).value_or(""));
  std::string store;
  std::string answer;
  while (lines >> store >> answer) {
    if (answer == "yes") answers[store] = AuthorizationStatus::authorized;
    if (answer == "no") answers[store] = AuthorizationStatus::denied;
  }
  return answers;
}

// Replaces the file as a whole, so that a reader sees the old answers or the
// new ones and never half a file. Failures leave the old file.
void writeAnswers(const std::filesystem::path& file,
                  const std::map<std::string, std::int64_t>& answers) {
  std::string text;
  for (const auto& [store, status] : answers) {
    text += store + (status == AuthorizationStatus::authorized ? " yes\n" : " no\n");
  }
  std::error_code error;
  std::filesystem::create_directories(file.parent_path(), error);
  if (error) return;
  std::string temporary = file.string() + ".XXXXXX";
  const int descriptor = mkostemp(temporary.data(), O_CLOEXEC);
  if (descriptor < 0) return;
  const bool written =
      write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  const bool closed = close(descriptor) == 0;
  if (!written || !closed || std::rename(temporary.c_str(), file.c_str()) != 0) {
    std::remove(temporary.c_str());
  }
}

}  // namespace

HostConsent::HostConsent(ConsentCallback callback, std::filesystem::path file)
    : _callback(std::move(callback)), _file(std::move(file)), _statuses(readAnswers(_file)) {}

std::int64_t HostConsent::status(const std::string& store) const {
  const auto found = _statuses.find(store);
  return found != _statuses.end() ? found->second : AuthorizationStatus::notDetermined;
}

std::int64_t HostConsent::request(const std::string& store) {
  if (const std::int64_t known = status(store); known != AuthorizationStatus::notDetermined) {
    return known;
  }
  std::optional<bool> answer;
  try {
    if (_callback) answer = _callback(store);
  } catch (...) {
    // A callback that throws has not answered.
  }
  const std::int64_t decided =
      answer.value_or(false) ? AuthorizationStatus::authorized : AuthorizationStatus::denied;
  _statuses[store] = decided;
  if (answer && !_file.empty()) {
    // Another process of the same application may have kept other answers meanwhile.
    auto kept = readAnswers(_file);
    kept[store] = decided;
    writeAnswers(_file, kept);
  }
  return decided;
}

std::filesystem::path HostConsent::fileFor(const std::filesystem::path& stateHome,
                                           const std::string& application) {
  if (stateHome.empty() || application.empty()) return {};
  std::string name;
  for (const char c : application) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       c == '_' || c == '-' || (c == '.' && !name.empty());
    if (plain) {
      name += c;
    } else {
      constexpr std::string_view hex = "0123456789ABCDEF";
      const auto byte = static_cast<unsigned char>(c);
      name += {'%', hex[byte >> 4], hex[byte & 0xF]};
    }
  }
  if (name.size() > longestFileName) return {};
  return stateHome / "tavrinsdk" / "consent" / name;
}

}  // namespace tavrin::platform
