#include "platform/linux/V4l2CaptureDeviceSource.hpp"

#include "platform/linux/LinuxCaptureDeviceSource.hpp"

#include <linux/videodev2.h>

#include <cstring>

namespace tavrin::platform {
namespace {

// The platform's raw values.
constexpr std::int64_t unspecified = 0, back = 1, front = 2;
constexpr std::int64_t focusLocked = 0, focusAuto = 1, focusContinuous = 2;
constexpr std::int64_t torchOn = 1;
constexpr std::uint32_t timeValid = 1;

std::optional<v4l2_queryctrl> controlInfo(VideoDevice& device, std::uint32_t id) {
  v4l2_queryctrl info{};
  info.id = id;
  if (device.control(VIDIOC_QUERYCTRL, &info) != 0 || (info.flags & V4L2_CTRL_FLAG_DISABLED) != 0) {
    return std::nullopt;
  }
  return info;
}

std::optional<std::int32_t> controlValue(VideoDevice& device, std::uint32_t id) {
  v4l2_control value{id, 0};
  if (device.control(VIDIOC_G_CTRL, &value) != 0) return std::nullopt;
  return value.value;
}

bool hasMenuItem(VideoDevice& device, const v4l2_queryctrl& control, std::uint32_t index) {
  if (static_cast<std::int64_t>(index) < control.minimum ||
      static_cast<std::int64_t>(index) > control.maximum) {
    return false;
  }
  v4l2_querymenu item{};
  item.id = control.id;
  item.index = index;
  return device.control(VIDIOC_QUERYMENU, &item) == 0;
}

std::string fixedText(const std::uint8_t* text, std::size_t size) {
  return {reinterpret_cast<const char*>(text), strnlen(reinterpret_cast<const char*>(text), size)};
}

void readPosition(VideoDevice& device, CaptureDevice& camera) {
  if (!controlInfo(device, V4L2_CID_CAMERA_ORIENTATION)) return;
  const auto orientation = controlValue(device, V4L2_CID_CAMERA_ORIENTATION);
  if (orientation == V4L2_CAMERA_ORIENTATION_FRONT) camera.position = front;
  if (orientation == V4L2_CAMERA_ORIENTATION_BACK) camera.position = back;
}

void readZoom(VideoDevice& device, CaptureDevice& camera) {
  const auto zoom = controlInfo(device, V4L2_CID_ZOOM_ABSOLUTE);
  if (!zoom || zoom->minimum <= 0 || zoom->maximum < zoom->minimum) return;
  const double least = zoom->minimum;
  camera.minAvailableVideoZoomFactor = 1;
  camera.maxAvailableVideoZoomFactor = zoom->maximum / least;
  camera.videoZoomFactor =
      controlValue(device, V4L2_CID_ZOOM_ABSOLUTE).value_or(zoom->minimum) / least;
}

void readFocus(VideoDevice& device, CaptureDevice& camera) {
  for (const auto& [control, mode] :
       {std::pair<std::uint32_t, std::int64_t>{V4L2_CID_FOCUS_ABSOLUTE, focusLocked},
        {V4L2_CID_AUTO_FOCUS_START, focusAuto},
        {V4L2_CID_FOCUS_AUTO, focusContinuous}}) {
    if (controlInfo(device, control)) camera.supportedFocusModes.push_back(mode);
  }
  const auto status = controlValue(device, V4L2_CID_AUTO_FOCUS_STATUS);
  camera.isAdjustingFocus = status && (*status & V4L2_AUTO_FOCUS_STATUS_BUSY) != 0;
  camera.isAutoFocusRangeRestrictionSupported =
      controlInfo(device, V4L2_CID_AUTO_FOCUS_RANGE).has_value();
}

void readFlash(VideoDevice& device, CaptureDevice& camera) {
  const auto mode = controlInfo(device, V4L2_CID_FLASH_LED_MODE);
  if (!mode) return;
  camera.hasFlash = camera.isFlashAvailable = hasMenuItem(device, *mode, V4L2_FLASH_LED_MODE_FLASH);
  camera.hasTorch = camera.isTorchAvailable = hasMenuItem(device, *mode, V4L2_FLASH_LED_MODE_TORCH);
  camera.isTorchActive =
      camera.hasTorch && controlValue(device, V4L2_CID_FLASH_LED_MODE) ==
                             static_cast<std::int32_t>(V4L2_FLASH_LED_MODE_TORCH);
  if (camera.isTorchActive) camera.torchMode = torchOn;
}

void readFormat(VideoDevice& device, bool multiPlane, CaptureDevice& camera) {
  auto& format = camera.activeFormat;
  v4l2_format active{};
  active.type = multiPlane ? V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE : V4L2_BUF_TYPE_VIDEO_CAPTURE;
  if (device.control(VIDIOC_G_FMT, &active) == 0) {
    const bool plain = !multiPlane;
    format.width =
        static_cast<std::int32_t>(plain ? active.fmt.pix.width : active.fmt.pix_mp.width);
    format.height =
        static_cast<std::int32_t>(plain ? active.fmt.pix.height : active.fmt.pix_mp.height);
    // V4L2 keeps the first character in the lowest byte.
    format.mediaSubType =
        __builtin_bswap32(plain ? active.fmt.pix.pixelformat : active.fmt.pix_mp.pixelformat);
  }
  format.mediaType = 'v' << 24 | 'i' << 16 | 'd' << 8 | 'e';
  v4l2_streamparm parameters{};
  parameters.type = active.type;
  const auto& perFrame = parameters.parm.capture.timeperframe;
  if (device.control(VIDIOC_G_PARM, &parameters) == 0 &&
      (parameters.parm.capture.capability & V4L2_CAP_TIMEPERFRAME) != 0 &&
      perFrame.denominator != 0 && perFrame.denominator <= INT32_MAX) {
    format.frameDuration = {perFrame.numerator, static_cast<std::int32_t>(perFrame.denominator),
                            timeValid, 0};
  }
}

}  // namespace

std::optional<CaptureDevice> describeVideoDevice(VideoDevice& device) {
  v4l2_capability capability{};
  if (device.control(VIDIOC_QUERYCAP, &capability) != 0) return std::nullopt;
  const std::uint32_t kinds = (capability.capabilities & V4L2_CAP_DEVICE_CAPS) != 0
                                  ? capability.device_caps
                                  : capability.capabilities;
  const bool multiPlane = (kinds & V4L2_CAP_VIDEO_CAPTURE_MPLANE) != 0;
  if (!multiPlane && (kinds & V4L2_CAP_VIDEO_CAPTURE) == 0) return std::nullopt;

  CaptureDevice camera;
  const std::string bus = fixedText(capability.bus_info, sizeof capability.bus_info);
  camera.deviceType = bus.rfind("usb-", 0) == 0 ? "AVCaptureDeviceTypeExternalUnknown"
                                                : "AVCaptureDeviceTypeBuiltInWideAngleCamera";
  camera.localizedName = fixedText(capability.card, sizeof capability.card);
  camera.isConnected = true;
  camera.position = unspecified;
  camera.mediaTypes = {CaptureMediaType::video};
  readPosition(device, camera);
  readZoom(device, camera);
  readFocus(device, camera);
  readFlash(device, camera);
  readFormat(device, multiPlane, camera);
  return camera;
}

std::optional<std::vector<std::optional<CaptureDevice>>> V4l2CaptureDeviceSource::devices() {
  std::vector<std::optional<CaptureDevice>> cameras;
  for (const std::string& path : _devices->paths()) {
    const auto device = _devices->open(path);
    if (!device) continue;
    if (auto camera = describeVideoDevice(*device)) cameras.push_back(std::move(camera));
  }
  return cameras;
}

std::unique_ptr<CaptureDeviceSource> makeLinuxCaptureDeviceSource() {
  return std::make_unique<V4l2CaptureDeviceSource>(systemVideoDevices());
}

}  // namespace tavrin::platform
