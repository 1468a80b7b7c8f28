#include "platform/linux/mediaFolders.hpp"

#include "platform/linux/readTextFile.hpp"
#include "platform/linux/userDirectories.hpp"

#include <tavrin/platform/PhotoLibrary.hpp>

#include <algorithm>
#include <cctype>
#include <map>
#include <sstream>

namespace tavrin::platform {
namespace {

namespace fs = std::filesystem;

// One folder of user-dirs.dirs: `XDG_PICTURES_DIR="$HOME/Pictures"`. The value
// is a path relative to $HOME or an absolute one; anything else is ignored, as
// xdg-user-dir does.
std::optional<fs::path> userDir(const std::string& file, const std::string& key,
                                const fs::path& home) {
  std::istringstream lines(file);
  std::optional<fs::path> found;
  for (std::string line; std::getline(lines, line);) {
    const std::string prefix = key + "=\"";
    if (line.rfind(prefix, 0) != 0 || line.size() < prefix.size() + 1 || line.back() != '"') {
      continue;
    }
    const std::string value = line.substr(prefix.size(), line.size() - prefix.size() - 1);
    if (value.rfind("$HOME", 0) == 0) {
      found = home / fs::path(value.substr(5)).relative_path();
    } else if (!value.empty() && value.front() == '/') {
      found = fs::path(value);
    }
  }
  return found;
}

// The path without `.`, `..` and a trailing separator, so that two spellings of
// one folder compare equal.
fs::path plainPath(const fs::path& path) { return (path / "").lexically_normal().parent_path(); }

}  // namespace

std::vector<fs::path> mediaFolders(const fs::path& home, const fs::path& configHome) {
  const std::string file = readTextFile(configHome / "user-dirs.dirs").value_or("");
  std::vector<fs::path> folders;
  for (const auto& [key, fallback] :
       {std::pair{"XDG_PICTURES_DIR", "Pictures"}, std::pair{"XDG_VIDEOS_DIR", "Videos"}}) {
    const fs::path folder = plainPath(userDir(file, key, home).value_or(home / fallback));
    if (folder == plainPath(home)) continue;
    if (std::find(folders.begin(), folders.end(), folder) == folders.end()) {
      folders.push_back(folder);
    }
  }
  return folders;
}

std::vector<fs::path> userMediaFolders() {
  const char* home = std::getenv("HOME");
  if (home == nullptr || *home != '/') return {};
  const char* config = std::getenv("XDG_CONFIG_HOME");
  return mediaFolders(
      home, config != nullptr && *config == '/' ? fs::path(config) : fs::path(home) / ".config");
}

std::optional<std::int64_t> mediaTypeOfFile(const fs::path& file) {
  static const std::map<std::string, std::int64_t> types = {
      {".jpg", MediaType::image},  {".jpeg", MediaType::image}, {".png", MediaType::image},
      {".tif", MediaType::image},  {".tiff", MediaType::image}, {".webp", MediaType::image},
      {".heic", MediaType::image}, {".heif", MediaType::image}, {".avif", MediaType::image},
      {".gif", MediaType::image},  {".dng", MediaType::image},  {".cr2", MediaType::image},
      {".nef", MediaType::image},  {".arw", MediaType::image},  {".orf", MediaType::image},
      {".mp4", MediaType::video},  {".m4v", MediaType::video},  {".mov", MediaType::video},
      {".mkv", MediaType::video},  {".webm", MediaType::video}, {".avi", MediaType::video},
      {".3gp", MediaType::video},  {".ogv", MediaType::video},  {".mp3", MediaType::audio},
      {".m4a", MediaType::audio},  {".ogg", MediaType::audio},  {".opus", MediaType::audio},
      {".oga", MediaType::audio},  {".flac", MediaType::audio}, {".wav", MediaType::audio},
      {".aac", MediaType::audio},  {".amr", MediaType::audio},
  };
  std::string extension = file.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const auto found = types.find(extension);
  if (found == types.end()) return std::nullopt;
  return found->second;
}

}  // namespace tavrin::platform
