#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tavrin::platform {

// The assignments of an os-release file: KEY=value lines whose values may be
// quoted shell-style. Lines that are not well-formed assignments are skipped.
class OsRelease {
 public:
  // Reads the file; absent when it cannot be read.
  static std::optional<OsRelease> read(const std::string& path);
  static OsRelease parse(std::string_view text);

  // The value assigned to `key`, or absent; a later assignment wins.
  std::optional<std::string> value(const std::string& key) const;

 private:
  std::map<std::string, std::string, std::less<>> _values;
};

}  // namespace tavrin::platform
