#include "extractors/CaptureDeviceExtractor.hpp"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

namespace tavrin {

namespace {

// The value `read` gives when `open`, without calling it otherwise.
template <typename Read>
auto readIf(bool open, Read read) -> std::optional<decltype(read())> {
  if (!open) return std::nullopt;
  return read();
}

template <typename List, typename Item>
bool contains(const List& list, const Item& item) {
  return std::find(list.begin(), list.end(), item) != list.end();
}

}  // namespace

Element CaptureDeviceExtractor::extract() {
  Element element(_dataSourceNameKey);
  // A platform that gives no device list at all has nothing to describe: the
  // section stays empty, as it does for a phone without capture hardware.
  const auto devices = _platform.captureDevices().devices();
  if (!devices) return element;
  for (const auto& device : *devices) {
    // Entries that are not capture devices are passed over.
    if (device) element.append(makeDeviceRow(*device));
  }
  return element;
}

Row CaptureDeviceExtractor::makeDeviceRow(const platform::CaptureDevice& device) const {
  namespace media = platform::CaptureMediaType;
  platform::DeviceInfo& system = _platform.device();
  const auto hasMediaType = [&](const char* code) { return contains(device.mediaTypes, code); };
  const auto supportsFocusMode = [&](std::int64_t mode) {
    return contains(device.supportedFocusModes, mode);
  };
  // The depth-data format is read again for every value taken from it.
  const auto fromDepthFormat = [&](bool open, auto read) {
    return readIf(open && device.activeDepthDataFormat.has_value(),
                  [&] { return read(*device.activeDepthDataFormat); });
  };
  using Depth = platform::DepthDataFormat;

  Row row;
  row.append(readIf(system.isSystemVersionAtLeast(10, 0), [&] { return device.deviceType; }));
  row.append(device.localizedName);
  row.append(device.isConnected);
  {
    const bool open = system.isSystemVersionAtLeast(13, 0);
    row.append(readIf(open, [&] { return device.isVirtualDevice; }));
    row.append(readIf(open, [&] { return device.constituentDeviceCount; }));
  }
  row.append(device.lensAperture);
  row.append(device.position);
  row.append(hasMediaType(media::video));
  row.append(hasMediaType(media::audio));
  row.append(hasMediaType(media::text));
  row.append(
      readIf(system.isSystemVersionAtLeast(11, 0), [&] { return hasMediaType(media::depthData); }));
  row.append(hasMediaType(media::closedCaption));
  row.append(hasMediaType(media::metadata));
  row.append(hasMediaType(media::metadataObject));
  row.append(hasMediaType(media::subtitle));
  row.append(hasMediaType(media::timecode));
  row.append(device.videoZoomFactor);
  {
    const bool open = system.isSystemVersionAtLeast(11, 0);
    row.append(readIf(open, [&] { return device.minAvailableVideoZoomFactor; }));
    row.append(readIf(open, [&] { return device.maxAvailableVideoZoomFactor; }));
  }
  row.append(device.isFlashAvailable);
  row.append(device.isFlashActive);
  row.append(device.isRampingVideoZoom);
  row.append(supportsFocusMode(1));
  row.append(supportsFocusMode(2));
  row.append(supportsFocusMode(0));
  row.append(device.isFocusPointOfInterestSupported);
  row.append(device.isAdjustingFocus);
  row.append(device.isSmoothAutoFocusEnabled);
  row.append(device.isSmoothAutoFocusSupported);
  row.append(device.isAutoFocusRangeRestrictionSupported);
  row.append(device.hasFlash);
  row.append(device.hasTorch);
  row.append(device.isTorchActive);
  row.append(device.isTorchAvailable);
  row.append(device.torchMode);
  row.append(device.maxWhiteBalanceGain);
  {
    const bool open = system.isSystemVersionAtLeast(13, 0);
    row.append(
        fromDepthFormat(open, [](const Depth& f) { return f.isGlobalToneMappingSupported; }));
    row.append(
        fromDepthFormat(open, [](const Depth& f) { return f.isHighestPhotoQualitySupported; }));
    row.append(fromDepthFormat(open, [](const Depth& f) { return f.isMultiCamSupported; }));
  }
  row.append(fromDepthFormat(system.isSystemVersionAtLeast(12, 0), [](const Depth& f) {
    return f.isPortraitEffectsMatteStillImageDeliverySupported;
  }));
  {
    const bool open = system.isSystemVersionAtLeast(11, 0);
    row.append(fromDepthFormat(open, [](const Depth& f) { return f.autoFocusSystem; }));
    row.append(fromDepthFormat(open, [](const Depth& f) { return f.isVideoBinned; }));
    row.append(fromDepthFormat(open, [](const Depth& f) { return f.isVideoHDRSupported; }));
  }
  {
    // Height comes before width; of the frame duration only its epoch is kept.
    const bool open = system.isSystemVersionAtLeast(13, 0);
    const platform::FormatDescription& format = device.activeFormat;
    row.append(readIf(open, [&] { return format.height; }));
    row.append(readIf(open, [&] { return format.width; }));
    row.append(readIf(open, [&] { return format.frameDuration.epoch; }));
    row.append(readIf(open, [&] { return format.frameQuanta; }));
    row.append(readIf(open, [&] { return format.mediaType; }));
    row.append(readIf(open, [&] { return format.mediaSubType; }));
  }
  return row;
}

}  // namespace tavrin
