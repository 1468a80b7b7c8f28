#pragma once

#include "platform/linux/VideoDevices.hpp"

#include <tavrin/platform/CaptureDeviceSource.hpp>

#include <memory>

namespace tavrin::platform {

// What a V4L2 device says of itself as a camera, or absent when it is not a
// video capture device (a metadata, output or codec node):
//
// - name: the driver's card name; type: an external camera on USB, else a
//   built-in wide-angle camera; connected, as it opened; it delivers video.
// - position: the camera-orientation control (front, back; external and
//   absent: unspecified).
// - zoom: the absolute-zoom control, as multiples of its least value.
// - focus modes: locked with absolute focus, auto with a focus start, continuous
//   with automatic focus; focus busy; an auto-focus range restriction.
// - flash and torch: the modes of the flash LED control; the torch is active
//   and on when that mode is selected.
// - active format: the capture format's size and pixel format (as a
//   four-character code, the first character in the highest byte) and the time
//   per frame as the frame duration.
//
// Everything else keeps the port's defaults: V4L2 has no f-number, no white
// balance gain in the platform's units, no depth data and no focus point.
std::optional<CaptureDevice> describeVideoDevice(VideoDevice& device);

// The capture devices among the machine's V4L2 devices, in the order of their
// device numbers, each read afresh at every call.
class V4l2CaptureDeviceSource final : public CaptureDeviceSource {
 public:
  explicit V4l2CaptureDeviceSource(std::unique_ptr<VideoDevices> devices)
      : _devices(std::move(devices)) {}

  std::optional<std::vector<std::optional<CaptureDevice>>> devices() override;

 private:
  std::unique_ptr<VideoDevices> _devices;
};

}  // namespace tavrin::platform
