#pragma once

#include <tavrin/platform/AccessHandler.hpp>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace tavrin::platform {

// What the host application's user allows it to read, among the stores the
// system leaves to the host (Linux asks the user nothing itself). A store is
// not determined until the host's callback answers for it; the answer is kept
// in the application's consent file, so that later runs find it decided, as
// a phone keeps an answer to its prompt. Without a callback, or when it
// throws, nobody has answered: the store is denied for this object only and
// stays undetermined in the file.
class HostConsent {
 public:
  // `file` keeps the answers across runs; empty: nothing is kept. An
  // unreadable or malformed file holds no answers.
  HostConsent(ConsentCallback callback, std::filesystem::path file);

  // authorized or denied once answered, else notDetermined.
  std::int64_t status(const std::string& store) const;
  // Asks the callback on the calling thread unless the store is decided, and
  // returns the status that follows. A file that cannot be written keeps the
  // answer for this object only.
  std::int64_t request(const std::string& store);

  // The consent file of `application` under the state home
  // ($XDG_STATE_HOME/tavrinsdk/consent/NAME, with every byte outside
  // [A-Za-z0-9_.-] and a leading dot written as %XX); empty when there is no
  // state home or the name does not fit a file name.
  static std::filesystem::path fileFor(const std::filesystem::path& stateHome,
                                       const std::string& application);

 private:
  ConsentCallback _callback;
  std::filesystem::path _file;
  std::map<std::string, std::int64_t> _statuses;
};

}  // namespace tavrin::platform
