#pragma once

#include <memory>
#include <string>
#include <vector>

namespace tavrin::platform {

// One opened V4L2 device, asked through its ioctl requests.
class VideoDevice {
 public:
  virtual ~VideoDevice() = default;
  // Runs one ioctl request on the device: 0 when it succeeded, else -1.
  virtual int control(unsigned long request, void* argument) = 0;
};

// The V4L2 devices of the machine: the seam between the camera descriptions
// and the kernel, which tests answer with recorded devices.
class VideoDevices {
 public:
  virtual ~VideoDevices() = default;
  // The device nodes, in the order of their numbers (/dev/video0, /dev/video1, ...).
  virtual std::vector<std::string> paths() = 0;
  // The device at `path` opened for queries, or null when it cannot be opened.
  virtual std::unique_ptr<VideoDevice> open(const std::string& path) = 0;
};

// The machine's /dev/video* nodes, opened read-only without blocking.
std::unique_ptr<VideoDevices> systemVideoDevices();

}  // namespace tavrin::platform
