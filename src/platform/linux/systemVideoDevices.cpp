#include "platform/linux/VideoDevices.hpp"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string_view>

namespace tavrin::platform {
namespace {

class DeviceNode final : public VideoDevice {
 public:
  explicit DeviceNode(int descriptor) : _descriptor(descriptor) {}
  ~DeviceNode() override { close(_descriptor); }
  DeviceNode(const DeviceNode&) = delete;
  DeviceNode& operator=(const DeviceNode&) = delete;

  int control(unsigned long request, void* argument) override {
    int result = 0;
    do {
      result = ioctl(_descriptor, request, argument);
    } while (result == -1 && errno == EINTR);
    return result == -1 ? -1 : 0;
  }

 private:
  int _descriptor;
};

class DeviceNodes final : public VideoDevices {
 public:
  std::vector<std::string> paths() override {
    std::vector<std::pair<unsigned long, std::string>> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/dev", error), end; !error && entry != end;
         entry.increment(error)) {
      const std::string name = entry->path().filename().string();
      const std::string_view number =
          std::string_view(name).substr(std::min<std::size_t>(5, name.size()));
      if (name.rfind("video", 0) != 0 || number.empty() || number.size() > 9 ||
          number.find_first_not_of("0123456789") != std::string_view::npos) {
        continue;
      }
      found.emplace_back(std::stoul(std::string(number)), entry->path().string());
    }
    std::sort(found.begin(), found.end());
    std::vector<std::string> paths;
    paths.reserve(found.size());
    for (auto& [number, path] : found) paths.push_back(std::move(path));
    return paths;
  }

  std::unique_ptr<VideoDevice> open(const std::string& path) override {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    return std::make_unique<DeviceNode>(descriptor);
  }
};

}  // namespace

std::unique_ptr<VideoDevices> systemVideoDevices() { return std::make_unique<DeviceNodes>(); }

}  // namespace tavrin::platform
