#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::platform {

// The folders the photo library is read from: the user's picture and video
// folders as xdg-user-dirs names them in `configHome`/user-dirs.dirs, else
// `home`/Pictures and `home`/Videos. A folder set to the home directory itself
// (how xdg-user-dirs disables one) is left out, and so is a second mention of
// the same folder.
std::vector<std::filesystem::path> mediaFolders(const std::filesystem::path& home,
                                                const std::filesystem::path& configHome);

// The same for the running user's home and configuration folders.
std::vector<std::filesystem::path> userMediaFolders();

// The media type (MediaType) a file's extension says it holds, or absent for a
// file the library does not list.
std::optional<std::int64_t> mediaTypeOfFile(const std::filesystem::path& file);

}  // namespace tavrin::platform
